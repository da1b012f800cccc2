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
download and 2.6 GB on disk. Everything else stays in build/ (3.5 GB). The first run takes a quarter of an hour.
Exit status: 0 when every test has passed.
END
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
    # TMPDIR is for what runs no Windows programs. Many tests wait more than they work, so two run at a time.
    TMPDIR=$qel_build/tmp run_ctest --parallel 2 --no-tests=ignore "${filter[@]}" || result=1
    [ ! -f "$qel_build/Testing/Temporary/LastTest.log" ] || tests_found=1
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
