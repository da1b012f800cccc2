#!/usr/bin/env bash
# Runs a built program under Wine on a screen of another resolution.
set -euo pipefail

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/../../tools/lib.sh"

[ $# -eq 3 ] || fail "usage: at-resolution.sh DPI PROGRAM.exe FOLDER"
dpi=$1
program=$2
# A prefix of its own: Wine reads the resolution, and chooses its fonts by it, when its server starts.
qel_build=$3

end_everything_on_exit
start_wine "$qel_build/wine"
key='HKCU\Control Panel\Desktop'
if [[ "$(run_step wine reg query "$key" /v LogPixels 2>&1)" != *"$(printf '0x%x' "$dpi")"* ]]; then
    run_step wine reg add "$key" /v LogPixels /t REG_DWORD /d "$dpi" /f >"$qel_build/wine.log" 2>&1
    wineserver -k
    start_server
fi
run_step wine "$program"
