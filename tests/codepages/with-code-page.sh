#!/usr/bin/env bash
# Runs a built program under Wine with another ANSI code page.
set -euo pipefail

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/../../tools/lib.sh"

[ $# -ge 3 ] || fail "usage: with-code-page.sh CODEPAGE FOLDER PROGRAM.exe [ARGUMENT ...]"
QEL_CODE_PAGE=$1
qel_build=$2
shift 2

end_everything_on_exit
start_wine "$qel_build/wine"
run_step wine "$@"
