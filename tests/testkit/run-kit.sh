#!/usr/bin/env bash
# Unpacks the test kit into a new folder among the temporary files, with a blank in its path, runs its command file
# under Wine, and checks what that says and what it leaves.
set -euo pipefail

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/../../tools/lib.sh"

if [ $# -ne 1 ] || [ "$1" = --help ]; then
    echo "usage: run-kit.sh ZIP"
    echo
    echo "ZIP is the kit. WINEPREFIX names the prefix that it runs in, ODBCSYSINI the ODBC drivers of that machine."
    exit 2
fi
zip=$(realpath "$1")

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
use_wine_environment "$folder" "$WINEPREFIX"
mkdir "$folder/a kit"
(cd "$folder/a kit" && cmake -E tar xf "$zip")
kit="$folder/a kit/$(basename "$zip" .zip)"

# What the kit should leave as it was.
show_registry()
{
    local key
    for key in 'HKLM\Software\ODBC\ODBCINST.INI\ODBC Drivers' 'HKCU\Software\Kelvara' 'HKLM\Software\Kelvara'; do
        wine reg query "$key" /s 2>&1 || true
    done
}
show_files()
{
    (cd "$kit" && find . -path ./results -prune -o -type f -print | sort)
}

show_registry >"$folder/registry-before"
show_files >"$folder/files-before"
result=0
wine cmd /c "$(winepath -w "$kit/run-tests.cmd")" all </dev/null >"$folder/output" || result=$?
tr -d '\r' <"$folder/output"

[ "$result" -eq 0 ] || fail "run-tests.cmd ended with $result"
tail -n 3 "$folder/output" | tr -d '\r' | head -n 1 | grep -qx PASSED || fail "the summary does not end with PASSED"
grep -q ' 0 programs not run' "$kit/results/summary.txt" || fail "not every program has run"
show_registry | diff "$folder/registry-before" - || fail "the kit has not left the registry as it was"
show_files | diff "$folder/files-before" - || fail "the kit has written beside its folder of results"
[ -z "$(ls -A "$kit/results/work")" ] || fail "the tests have left files: $(ls -A "$kit/results/work")"
