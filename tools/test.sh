#!/usr/bin/env bash
# Builds the library and runs its tests under Wine.
set -euo pipefail

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

usage()
{
    cat <<'END'
usage: test.sh [-R REGEX]

Builds the library and its tests for 64-bit Windows and runs the tests under Wine, with a display of their own.

  -R REGEX   run only the test programs whose names match
  --help     show this text

Installs the packages of tools/packages.txt that are missing (with sudo where need be). Everything else stays in
build/. Exit status: 0 when every test has passed.
END
}

# Counts single tests in CTest's log $1: those of GoogleTest one by one, a test program of another kind as one test.
# A test that was begun and has no end is one that took its program down.
count_tests()
{
    awk '
        { sub(/\r$/, "") }
        /^\[ RUN      \] /              { begun++ }
        /^\[       OK \] .*\([0-9]+ ms/ { good++ }
        /^\[  SKIPPED \] .*\([0-9]+ ms/ { skipped++ }
        /^Test (Passed|Failed)\.$/      { end_of_program($2 == "Passed.") }
        function end_of_program(program_passed,    bad)
        {
            bad = begun - good - skipped
            if (!program_passed && bad == 0) bad = 1
            if (program_passed && begun == 0) good = 1
            passed += good; failed += bad; left_out += skipped
            begun = good = skipped = 0
        }
        END { printf "%d passed, %d failed%s\n", passed, failed, left_out ? ", " left_out " skipped" : "" }
    ' "$1"
}

filter=()
while [ $# -gt 0 ]; do
    case $1 in
        --help) usage; exit 0 ;;
        -R) [ $# -ge 2 ] || { usage >&2; exit 2; }; filter=(-R "$2"); shift 2 ;;
        *) usage >&2; exit 2 ;;
    esac
done

end_everything_on_exit
install_packages
lock_build
configure_and_build
start_wine "$qel_build/wine"

say "Running the tests"
cd "$qel_source"
result=0
run_step ctest --preset "$qel_preset" --no-tests=error "${filter[@]}" || result=$?
count_tests "$qel_build/Testing/Temporary/LastTest.log"
exit "$result"
