#!/usr/bin/env bash
# Runs all test programs with a DLL that stops at undefined behaviour.
set -euo pipefail

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/../lib.sh"

# What cannot be run this way, and why.
# shellcheck disable=SC2034
left_out=(
    qelTestKitTest # runs no code of the DLL
)

# Tests that cannot be run this way: program, and GoogleTest's filter for it. The first gives the DLL text at odd
# addresses, which it reads as the machine does and C++ does not allow; the second needs frames on the stack as small as
# those of the product.
# shellcheck disable=SC2034
declare -A filters=(
    [qelStringsTest]='-qelStringGuard.ForeignTextIsMeasuredAtAnyAddress'
    [qelPatternTest]='-qelRegExWrapperLimits.LeaveRoomForARepeatedGroupOnTheLongestText'
)

usage()
{
    cat <<END
usage: traps.sh [-R REGEX]

Builds the DLL so that it stops at undefined behaviour, an overflow or a misaligned access say, and runs the test
programs with it. The tests themselves are built as usual. What is left out: ${left_out[*]}, and of two programs one
test each, for the reasons that are given in this script.

  -R REGEX  only the programs whose names match
  --help    show this text

Needs a build folder of its own, build/linux-mingw-traps (2 GB). Takes ten minutes, the first time twenty. Exit status:
0 when all tests passed.
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

end_everything_on_exit
install_packages all
use_preset linux-mingw-traps
lock_build
configure -D QEL_BUILD_TESTS=ON
build testPrograms
start_wine "$qel_build/wine"

say "Running the tests with traps"
log=$qel_build/traps.log
result=0
run_test_programs "$log" "$filter" || result=1
# An illegal instruction is what a trap is made of. Death tests want theirs.
traps=$(awk '/^\[ RUN/ { wanted = /DeathTest/ } /illegal instruction|c000001d/ && !wanted { found++ }
    END { print found + 0 }' "$log")
[ "$traps" -gt 0 ] || traps=none
printf 'figures: %s programs, %s tests passed, %s stopped; %s tests left out with their reason\n' \
    "$(grep -c '^".*" end time:' "$log" || true)" "$(grep -c '^\[       OK \]' "$log" || true)" "$traps" \
    "${#filters[@]}"
exit "$result"
