#!/usr/bin/env bash
# Counts what of the library its own tests reach.
set -euo pipefail

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/../lib.sh"

usage()
{
    cat <<'ENDOFTEXT'
usage: coverage.sh [--branches] [--report]

Builds the library with counters (preset linux-mingw-coverage), runs all test programs, and says which lines and
functions they have not reached. Left out are edges that only an exception takes, and whether what is deleted is null:
the compiler asks that.

  --branches  show the branches too that were not taken
  --report    report on the last run again, without building or running anything
  --help      show this text

Every unreached line stands in tests/coverage/unreached.txt with its reason. Takes some ten minutes.
Exit status: 0 when all tests have passed, no unreached line or function is without a reason, no reason is without its
line, and 98 % of the branches were taken.
ENDOFTEXT
}

options=()
run=1
while [ $# -gt 0 ]; do
    case $1 in
        --help) usage; exit 0 ;;
        --branches) options+=(--branches); shift ;;
        --report) run=; shift ;;
        *) usage >&2; exit 2 ;;
    esac
done

end_everything_on_exit
use_preset linux-mingw-coverage
lock_build
if [ -n "$run" ]; then
    install_packages build linux-mingw run tests
    configure -D QEL_BUILD_TESTS=ON
    build testPrograms printDialogPlaces
    find "$qel_build" -name '*.gcda' -delete
    start_wine "$qel_build/wine"

    say "Running the tests ($qel_preset)"
    cd "$qel_source"
    # The counters are added up in files, whose names the library knows as those of the build.
    export GCOV_PREFIX=Z:
    run_ctest -L "googletest|prefixes" --no-tests=error || fail "some tests failed"
    end_wine
fi
say "What was not reached"
run_step "$qel_source/tools/coverage_report.py" "${options[@]}" "$qel_build"
