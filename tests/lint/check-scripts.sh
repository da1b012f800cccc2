#!/usr/bin/env bash
# Checks the scripts of a source tree without running them: bash by shellcheck, Python by its compiler.
#
# usage: check-scripts.sh FOLDER-FOR-COMPILED-FILES
set -euo pipefail

compiled=$1

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/../../tools/lib.sh"

cd "$qel_source"
command -v shellcheck >/dev/null || fail "shellcheck is not there; please install the package of that name"

bash_scripts=()
python_scripts=()
while IFS= read -r -d '' file; do
    IFS= read -r first <"$file" || true
    case $file:$first in
        *.sh:* | *:'#!'*bash*) bash_scripts+=("$file") ;;
        *.py:* | *:'#!'*python*) python_scripts+=("$file") ;;
    esac
done < <(source_files '*.sh' '*.py' run)

result=0
for file in "${bash_scripts[@]}"; do
    bash -n "$file" || result=1
done
shellcheck -x "${bash_scripts[@]}" || result=1
PYTHONPYCACHEPREFIX=$compiled python3 -W error -m py_compile "${python_scripts[@]}" || result=1
[ "$result" -eq 0 ] || fail "some scripts are not clean"
echo "${#bash_scripts[@]} bash scripts and ${#python_scripts[@]} Python scripts are clean"
