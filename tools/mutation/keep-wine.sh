#!/usr/bin/env bash
# Runs a Wine of its own, in the folder named, until its input ends; prints the environment for programs, zeros between.
set -euo pipefail

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/../lib.sh"

[ $# -eq 1 ] || fail "usage: keep-wine.sh FOLDER"
qel_build=$1
mkdir -p "$qel_build"
end_everything_on_exit
start_wine "$qel_build/wine" >&2
env -0
printf 'ready=1\0'
exec 1>&-
cat >/dev/null
