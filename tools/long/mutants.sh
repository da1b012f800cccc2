#!/usr/bin/env bash
# Changes the sources in many places, one at a time, and runs the tests: do they notice?
set -euo pipefail

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/../lib.sh"

usage()
{
    cat <<'END'
usage: mutants.sh [OPTION...]

Builds the library with its tests, then runs tools/mutants.py with the options: 500 mutants on both cores take about an
hour, a sample (--count 40) six minutes. A run that was broken off goes on where it was.

END
    "$qel_source/tools/mutants.py" --help
}

case ${1:-} in
    --help) usage; exit 0 ;;
esac

end_everything_on_exit
lock_build
configure -D QEL_BUILD_TESTS=ON
build all
say "Mutants"
exec "$qel_source/tools/mutants.py" --build "$qel_build" "$@"
