#!/usr/bin/env bash
# Measures the accuracy of the cubic and the quartic solver against 113-bit arithmetic.
set -euo pipefail

usage()
{
    cat <<'END'
usage: solver-accuracy.sh [POLYNOMIALS]

Builds the library and the measuring program for 64-bit Windows, runs it under Wine with that many random polynomials
a line (20000 unless given; always the same ones), and prints the tables of docs/numerics.md.

  --help     show this text
END
}

case ${1:-} in
    --help) usage; exit 0 ;;
    *[!0-9]*) usage >&2; exit 2 ;;
esac

source=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
preset=linux-mingw-release
cd "$source"
[ -f "build/$preset/build.ninja" ] || cmake --preset "$preset" >&2
cmake --build "build/$preset" --target qelSolverAccuracy >&2
exec tools/run-wine.sh "build/$preset/bin/qelSolverAccuracy.exe" "$@"
