#!/usr/bin/env bash
# Loads and releases the library many times, and ends processes at bad moments.
set -euo pipefail

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/../lib.sh"

usage()
{
    cat <<'END'
usage: load-release.sh [--cycles NUMBER] [--rounds NUMBER]

Builds the library. Then loads it, uses a thread pool and releases it that many times (1000) in one process: no handle
and no thread may be left. Then ends processes that many times (10) in each of 48 ways: with workers at work or from a
task, during the writing of a log, while threads read the registry, with the progress dialog open, with a module that
uses the library in DllMain; by ExitProcess, TerminateProcess, exit and abort, on the main thread and on another. One
that lives longer than 30 seconds hangs, and each has to end with the exit code of its way.

  --help  show this text
END
}

cycles=1000
rounds=10
while [ $# -gt 0 ]; do
    [[ $1 == --help || ($# -ge 2 && $2 != *[!0-9]*) ]] || { usage >&2; exit 2; }
    case $1 in
        --help) usage; exit 0 ;;
        --cycles) cycles=$2; shift 2 ;;
        --rounds) rounds=$2; shift 2 ;;
        *) usage >&2; exit 2 ;;
    esac
done

end_everything_on_exit
lock_build
configure -D QEL_BUILD_TESTS=ON
build qelLoadReleaseTest qelProcessEndTest
folder=$qel_source/build/long/load-release
start_wine "$folder/wine"
cd "$folder"
say "Load and release"
run_step wine "$qel_build/bin/qelLoadReleaseTest.exe" --cycles "$cycles" 2>&1 | tr -d '\r' | tee cycles.txt
say "The end of processes"
run_step wine "$qel_build/bin/qelProcessEndTest.exe" --rounds "$rounds" 2>&1 | tr -d '\r' | tee ends.txt
# A program that a stack overflow has ended fails here: Wine gives it the exit code 0.
cycled=$(grep ' cycles: ' cycles.txt)
ended=$(grep ' processes ended' ends.txt)
printf 'figures: %s; %s at bad moments, none hung\n' "$cycled" "$ended"
