#!/usr/bin/env bash
# Builds the DLL a second time, from a copy of the sources in another folder, and compares the two byte by byte.
set -euo pipefail

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

dll=${1:-$qel_build/bin/VarnelQELRoots.dll}
if [ "$dll" = --help ]; then
    cat <<'END'
usage: check-reproducible.sh [DLL]

Builds VarnelQELRoots.dll again, from a copy of the sources in another folder, with the preset of the given DLL (the
name of its build folder), and compares the bytes. Without a DLL it is that of the release build for Linux.

  --help     show this text
END
    exit 0
fi
[ -f "$dll" ] || fail "build $dll first"

build=$(cd "$(dirname "$dll")/.." && pwd)
preset=$(basename "$build")
copy=$build/reproducible/another/place
mkdir -p "$copy"

# With their times, so that a second run builds only what has changed.
for entry in "$qel_source"/*; do
    [ "$(basename "$entry")" = build ] || cp -Rpf "$entry" "$copy"
done

cd "$copy"
cmake --preset "$preset" -D QEL_BUILD_TESTS=OFF -D QEL_BUILD_EXAMPLES=OFF >/dev/null
cmake --build --preset "$preset" --target VarnelQELRoots >/dev/null
cmp "$dll" "$copy/build/$preset/bin/VarnelQELRoots.dll" || fail "the two DLLs differ"
echo "The same $(stat -c %s "$dll") bytes from $qel_source and $copy."
