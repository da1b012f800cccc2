#!/usr/bin/env bash
# Builds the library and runs its tests under Wine.
set -euo pipefail

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

usage()
{
    cat <<'END'
usage: test.sh [--preset PRESET] [-R REGEX]

Builds the library and its tests for 64-bit Windows, by MinGW-w64 and then with Visual C++'s ABI, and runs the tests of
both builds under Wine, with a display of their own. At the end tools/compare-abis.sh compares the two.

  --preset PRESET  build and test only with this preset for Linux; nothing is compared then
  -R REGEX         run only the test programs whose names match; nothing is compared then
  --help           show this text

Installs the packages of tools/packages.txt that are missing (with sudo where need be): on a bare system about 450 MB to
download and 2.6 GB on disk. Everything else stays in build/ (3.5 GB). The first run takes a quarter of an hour or more.
Exit status: 0 when every test has passed.
END
}

# Counts single tests in the folder $1 of CTest's logs: those of GoogleTest one by one, a program of another kind as one
# test. A test that was begun and has no end took its program down, even if the exit code says that all went well: under
# Wine a program that runs out of stack ends with 0. Fails when there is such a test. A name counts once in a program:
# some tests run themselves again in a process of their own. There may be words in front of GoogleTest's, from a program
# that does not end its lines or from Wine.
count_tests()
{
    local failed_programs=/dev/null
    [ ! -f "$1/LastTestsFailed.log" ] || failed_programs=$1/LastTestsFailed.log
    awk '
        { sub(/\r$/, "") }
        FILENAME != log_file { sub(/^[0-9]+:/, ""); failed_program["\"" $0 "\""] = 1; next }
        match($0, /\[ (RUN     |      OK| SKIPPED| FAILED ) \] /) {
            $0 = substr($0, RSTART)
            test = $4
            sub(/,$/, "", test)
        }
        /^\[ RUN      \] /              { if (!(test in state)) { state[test] = "begun" } }
        /^\[       OK \] .*\([0-9]+ ms/ { state[test] = "passed" }
        /^\[  SKIPPED \] .*\([0-9]+ ms/ { state[test] = "skipped" }
        /^\[  FAILED  \] .*\([0-9]+ ms/ { state[test] = "failed" }
        /^"[^"]+" end time: /           { end_of_program(!($1 in failed_program)) }
        function end_of_program(program_passed,    name, seen, good, bad)
        {
            for (name in state)
            {
                seen++
                if (state[name] == "passed") good++
                else if (state[name] == "skipped") skipped++
                else if (!program_passed) bad++
                else if (state[name] == "begun") { bad++; ended_early = 1 }
                delete state[name]
            }
            passed += program_passed && !seen ? 1 : good
            failed += !program_passed && !bad ? 1 : bad
        }
        END {
            printf "%d passed, %d failed%s\n", passed, failed, skipped ? ", " skipped " skipped" : ""
            exit ended_early
        }
    ' log_file="$1/LastTest.log" "$failed_programs" "$1/LastTest.log"
}

# Builds with the preset $1 and runs its tests, of which only those count that match the filter where there is one. Sets
# result and tests_found.
test_preset()
{
    use_preset "$1"
    lock_build
    configure -D QEL_BUILD_TESTS=ON
    build all
    start_wine "$qel_build/wine"

    say "Running the tests ($qel_preset)"
    cd "$qel_source"
    local logs=$qel_build/Testing/Temporary
    rm -f "$logs/LastTest.log" "$logs/LastTestsFailed.log"
    # TMPDIR is for what runs no Windows programs. Many tests wait more than they work, so two run at a time.
    run_step env TMPDIR="$qel_build/tmp" ctest --preset "$qel_preset" --parallel 2 --no-tests=ignore "${filter[@]}" ||
        result=1
    if [ -f "$logs/LastTest.log" ]; then
        tests_found=1
        count_tests "$logs" || result=1
    fi
    end_wine
    exec 9>&-
}

filter=()
presets=("${qel_presets[@]}")
while [ $# -gt 0 ]; do
    case $1 in
        --help) usage; exit 0 ;;
        --preset) [ $# -ge 2 ] || { usage >&2; exit 2; }; presets=("$2"); shift 2 ;;
        -R) [ $# -ge 2 ] || { usage >&2; exit 2; }; filter=(-R "$2"); shift 2 ;;
        *) usage >&2; exit 2 ;;
    esac
done

end_everything_on_exit
install_packages all
result=0
tests_found=0
for preset in "${presets[@]}"; do
    test_preset "$preset"
done
[ "$tests_found" -eq 1 ] || fail "no test was run"
if [ ${#presets[@]} -gt 1 ] && [ ${#filter[@]} -eq 0 ]; then
    run_step "$qel_source/tools/compare-abis.sh" || result=1
fi
exit "$result"
