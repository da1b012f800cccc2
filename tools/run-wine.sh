#!/usr/bin/env bash
# Runs one of the built Windows programs under Wine, in the private prefix of its build folder.
set -euo pipefail

if [ "${1:-}" = --help ] || [ $# -eq 0 ]; then
  echo "usage: run-wine.sh PROGRAM.exe [ARGUMENT ...]"
  exit 0
fi

build=$(cd "$(dirname "$1")/.." && pwd)
export WINEPREFIX=${WINEPREFIX:-$build/wine}
export WINEARCH=win64 WINEDEBUG=${WINEDEBUG:--all}
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-winemenubuilder.exe,mscoree,mshtml,winedbg.exe=d}
export LC_ALL=C.UTF-8
exec wine "$@"
