#!/usr/bin/env bash
# Builds and runs the benchmarks under Wine.
set -euo pipefail

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

usage()
{
    cat <<'END'
usage: bench.sh

Builds the library and its benchmarks for 64-bit Windows and runs them under Wine: text and arrays beside those of the
C++ library, as a table of times and ratios. Each row first checks that both sides give the same result.

  --help     show this text

Installs those packages of tools/packages.txt that it needs and that are missing (with sudo where need be). Everything
else stays in build/. Exit status: 0 when all results were the same.
END
}

case ${1:-} in
    '') ;;
    --help) usage; exit 0 ;;
    *) usage >&2; exit 2 ;;
esac

end_everything_on_exit
install_packages build "${qel_preset%-*}" run
lock_build
configure_without_tests
build bench
start_wine "$qel_build/wine"

say "Timing"
run_step wine "$qel_build/bin/bench.exe"
