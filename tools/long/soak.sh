#!/usr/bin/env bash
# Uses the library in two processes for a long time: neither may hold more at the end than at the beginning.
set -euo pipefail

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/../lib.sh"

usage()
{
    cat <<'END'
usage: soak.sh [--minutes NUMBER]

Builds the library and lets two processes use it for that many minutes (30), again and again: thread pools, a log that
both write to and one of their own, the catalogue of data sources read anew, a tree, string lists and regular
expressions, and the progress dialog. Counts the blocks that the library holds, the handles, each asked for, and the
threads of each process, after a few rounds and at the end. None may have become more.

  --help  show this text
END
}

minutes=30
while [ $# -gt 0 ]; do
    case $1 in
        --help) usage; exit 0 ;;
        --minutes) [[ $# -ge 2 && $2 != *[!0-9]* ]] || { usage >&2; exit 2; }; minutes=$2; shift 2 ;;
        *) usage >&2; exit 2 ;;
    esac
done

end_everything_on_exit
lock_build
configure -D QEL_BUILD_TESTS=ON
build qelSoakTest
folder=$qel_source/build/long/soak
start_wine "$folder/wine"
say "Soak"
cd "$folder"
run_step wine "$qel_build/bin/qelSoakTest.exe" --seconds $((minutes * 60)) 2>&1 | tr -d '\r' | tee output.txt

# The counts of process $1 at the time $2, from "first process, before: 70 blocks, 38 handles, 2 threads, 5 rounds". A
# program that a stack overflow has ended has none at the end: Wine gives it the exit code 0.
counts()
{
    grep "^$1 process, $2: " output.txt | sed 's/.*: \(.*\), [0-9]* rounds$/\1/'
}
rounds=$(awk '/ process, after: / { sum += $(NF - 1) } END { print sum }' output.txt)
figures="$minutes minutes, $rounds rounds"
for process in first second; do
    before=$(counts $process before)
    after=$(counts $process after)
    if [ "$before" = "$after" ]; then
        figures+="; $process process: $before, before and after"
    else
        figures+="; $process process: $before before, $after after"
    fi
done
printf 'figures: %s\n' "$figures"
