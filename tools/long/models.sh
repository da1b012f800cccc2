#!/usr/bin/env bash
# Compares each class with a plain model of it, over many random operations.
set -euo pipefail

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/../lib.sh"

operations=1000000
seed=1

usage()
{
    cat <<END
usage: models.sh [--operations N] [--seed N]

Does random operations on strings, arrays, lists of strings, trees, counters, number creators and the progress manager,
and on a plain model of each, and compares all that can be seen of both after each operation, physical lengths included.
A difference is printed with a command line that leads there again.

  --operations N  how many on each class ($operations)
  --seed N        where the random numbers begin ($seed)
  --help          show this text

Takes a minute. Exit status: 0 when there was no difference.
END
}

while [ $# -gt 0 ]; do
    case $1 in
        --help) usage; exit 0 ;;
        --operations) [ $# -ge 2 ] || { usage >&2; exit 2; }; operations=$2; shift 2 ;;
        --seed) [ $# -ge 2 ] || { usage >&2; exit 2; }; seed=$2; shift 2 ;;
        *) usage >&2; exit 2 ;;
    esac
done

end_everything_on_exit
install_packages all
lock_build
configure -D QEL_BUILD_TESTS=ON
build qelModelTest
start_wine "$qel_build/wine"

say "Comparing with models"
log=$qel_build/models.log
result=0
run_googletest "$log" "$qel_source/tools/run-wine.sh" "$qel_build/bin/qelModelTest.exe" \
    --operations "$operations" --seed "$seed" || result=1
# Each test is a model; the tests of one class are a test suite.
models=$(grep -c '^\[ RUN  ' "$log" || true)
classes=$(grep -c '^\[-*\] .* ms total)' "$log" || true)
printf 'figures: %s operations for each of %s models of %s classes: %s differences\n' \
    "$operations" "$models" "$classes" "$(grep -c '^step ' "$log" || true)"
exit "$result"
