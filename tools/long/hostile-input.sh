#!/usr/bin/env bash
# Feeds everything that reads text, files or regular expressions with input made to do harm.
set -euo pipefail

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/../lib.sh"

cases=1000000
seed=1

usage()
{
    cat <<END
usage: hostile-input.sh [--cases N] [--seed N]

Changes good input at random, and gives it to whatever reads: conversions, numbers, escapes, formats, searches, tokens,
the natural order, paths; regular expressions, files, the catalogue of data sources. The DLL's memory is guarded: an
access outside a block ends the program. Results are compared with the C runtime or with the stated rules. A difference
or a crash is printed with a command line that leads there again.

  --cases N  how many for each reader in memory ($cases); one in 20 of that for regular expressions and files
  --seed N   where the random numbers begin ($seed)
  --help     show this text

Takes half an hour. Exit status: 0 when nothing was found.
END
}

while [ $# -gt 0 ]; do
    case $1 in
        --help) usage; exit 0 ;;
        --cases) [ $# -ge 2 ] || { usage >&2; exit 2; }; cases=$2; shift 2 ;;
        --seed) [ $# -ge 2 ] || { usage >&2; exit 2; }; seed=$2; shift 2 ;;
        *) usage >&2; exit 2 ;;
    esac
done

end_everything_on_exit
install_packages all
lock_build
configure -D QEL_BUILD_TESTS=ON
build qelHostileInputTest qelHostileFilesTest
start_wine "$qel_build/wine"

say "Feeding hostile input"
logs=()
result=0
for program in qelHostileInputTest qelHostileFilesTest; do
    logs+=("$qel_build/$program.log")
    run_googletest "${logs[-1]}" "$qel_source/tools/run-wine.sh" "$qel_build/bin/$program.exe" \
        --cases "$cases" --seed "$seed" || result=1
done
passed()
{
    cat "${logs[@]}" | grep -c "^\[       OK \] $1" || true
}
printf 'figures: %s readers in memory with %s cases each, %s others with %s each: %s findings\n' \
    "$(passed HostileStrings)" "$cases" "$(passed 'Hostile[PFC]')" "$((cases / 20))" \
    "$(cat "${logs[@]}" | grep -c '^step ' || true)"
exit "$result"
