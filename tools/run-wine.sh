#!/usr/bin/env bash
# Runs one of the built Windows programs under Wine, in the private prefix of its build folder.
set -euo pipefail

if [ "${1:-}" = --help ] || [ $# -eq 0 ]; then
    echo "usage: run-wine.sh PROGRAM.exe [ARGUMENT ...]"
    echo
    echo "Runs a program of a build folder (BUILD/bin/PROGRAM.exe) under Wine, in the prefix BUILD/wine or, where it is"
    echo "set, in WINEPREFIX. Windows need a display: see tools/test.sh. With QEL_MEMORY_KB the program gets at most"
    echo "that many kilobytes of addresses."
    exit 0
fi

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

build=$(cd "$(dirname "$1")/.." && pwd)
use_wine_environment "$build" "${WINEPREFIX:-$build/wine}"
# Wine knows no limit of memory for programs.
[ -z "${QEL_MEMORY_KB:-}" ] || ulimit -v "$QEL_MEMORY_KB"
exec wine "$@"
