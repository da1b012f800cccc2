#!/usr/bin/env bash
# Runs all test programs with every block of the DLL before a closed page.
set -euo pipefail

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/../lib.sh"

# What cannot be run this way, and why.
# shellcheck disable=SC2034
left_out=(
    qelUnloadTest               # loads and unloads the DLL itself, and counts what that leaves
    qelTasksUnloadTest          # likewise
    qelLoadReleaseTest          # likewise
    qelThreadsPoolSchedulesTest # likewise, and guards its blocks by a hook of its own
    qelOutOfMemoryTest          # may have 3 GB of addresses, and guarding takes 16 GB
    qelTestKitTest              # runs no code of the DLL
)

# Programs, each with GoogleTest's filter: without tests that look at the clock, which guarded memory slows down, and
# without the one that needs to see every allocation, of which the program's own hook leaves few to see.
# shellcheck disable=SC2034
declare -A filters=(
    [qelStringOperationsTest]='-*Quick*'
    [qelFailingAllocationsTest]='-*LeaveAnotherState*'
)

usage()
{
    cat <<END
usage: guarded-memory.sh [-R REGEX]

Runs the test programs with every block of memory of the DLL right before a page that nobody may touch, and closes each
block when it is freed: an access outside a block, or to a freed one, ends the program. When a string's buffer or narrow
form is freed, all of it has to be zero. Left out are single tests and, for the reasons that are given in this script,
these programs:
$(printf '  %s\n' "${left_out[@]}")

  -R REGEX  only the programs whose names match
  --help    show this text

Takes six minutes. Exit status: 0 when all tests passed and everything was wiped.
END
}

filter=
while [ $# -gt 0 ]; do
    case $1 in
        --help) usage; exit 0 ;;
        -R) [ $# -ge 2 ] || { usage >&2; exit 2; }; filter=$2; shift 2 ;;
        *) usage >&2; exit 2 ;;
    esac
done

# Adds up a column of the lines that the programs print.
sum()
{
    sed -n 's/\r$//; s/^guarded memory: \([0-9]* blocks.*\)/\1/p' "$log" |
        awk -v what="$1" '{ n = split($0, parts, ", "); for (i = 1; i <= n; i++) {
            split(parts[i], words, " "); name = substr(parts[i], length(words[1]) + 2)
            if (name == what) total += words[1] } } END { printf "%d", total }'
}

end_everything_on_exit
install_packages all
lock_build
configure -D QEL_BUILD_TESTS=ON
build testPrograms
start_wine "$qel_build/wine"

say "Running the tests in guarded memory"
log=$qel_build/guarded-memory.log
result=0
export QEL_TEST_GUARDED_MEMORY=1
run_test_programs "$log" "$filter" || result=1
programs=$(grep -c '^guarded memory: .* blocks' "$log" || true)
printf 'figures: %s processes; %s guarded blocks and %s beyond the limit; ' \
    "$programs" "$(sum blocks)" "$(sum unguarded)"
printf '%s string buffers and %s narrow forms freed, %s not wiped; %s\n' "$(sum 'string buffers')" \
    "$(sum 'narrow forms')" "$(sum 'not wiped')" "$([ "$result" -eq 0 ] && echo 'no test failed' || echo FAILED)"
exit "$result"
