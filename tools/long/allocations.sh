#!/usr/bin/env bash
# Fails each allocation of each exported operation.
set -euo pipefail

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/../lib.sh"

usage()
{
    cat <<'END'
usage: allocations.sh

Calls every exported operation of the library with each of its allocations failing: only that one, and that one and all
later ones; in a process that has used the operation before, and as the first thing in a process of its own. Nothing may
crash or leak, what can be seen afterwards is as before or as after the operation (or as its documentation says), and
the operation succeeds the next time. Then it fills the memory of processes for real. About ten minutes.

  --help  show this text

Exit status: 0 when all is as it should be.
END
}

case ${1:-} in
    '') ;;
    --help) usage; exit 0 ;;
    *) usage >&2; exit 2 ;;
esac

end_everything_on_exit
lock_build
configure -D QEL_BUILD_TESTS=ON
build qelFailingAllocationsTest qelOutOfMemoryTest
start_wine "$qel_build/wine"

say "Filling the memory"
QEL_MEMORY_KB=3000000 run_googletest "$qel_build/out-of-memory.log" \
    "$qel_source/tools/run-wine.sh" "$qel_build/bin/qelOutOfMemoryTest.exe"
say "Failing allocations"
run_googletest "$qel_build/allocations.log" \
    "$qel_source/tools/run-wine.sh" "$qel_build/bin/qelFailingAllocationsTest.exe" --whole
