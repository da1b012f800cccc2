#!/usr/bin/env bash
# Runs all test programs with other ANSI code pages.
set -euo pipefail

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/../lib.sh"

usage()
{
    cat <<'END'
usage: code-pages.sh [--preset PRESET] [-R REGEX] [CODEPAGE...]

Runs all test programs under Wine with these ANSI code pages, each in a prefix of its own: 932, whose characters take
one or two bytes, and 65001, UTF-8. By default both.

  --preset PRESET  those of this build for Linux instead of linux-mingw-release
  -R REGEX         run only the test programs whose names match
  --help           show this text

What fails because it needs another code page stands in tests/codepages/known-differences.txt with its reason.
Exit status: 0 when only those have failed, and all of them.
END
}

filter=()
pages=()
while [ $# -gt 0 ]; do
    case $1 in
        --help) usage; exit 0 ;;
        --preset) [ $# -ge 2 ] || { usage >&2; exit 2; }; use_preset "$2"; shift 2 ;;
        -R) [ $# -ge 2 ] || { usage >&2; exit 2; }; filter=(-R "$2"); shift 2 ;;
        -*) usage >&2; exit 2 ;;
        *) pages+=("$1"); shift ;;
    esac
done
[ ${#pages[@]} -gt 0 ] || pages=(932 65001)

end_everything_on_exit
install_packages build linux-mingw run tests
lock_build
configure -D QEL_BUILD_TESTS=ON
build testPrograms

folder=$qel_build/code-pages
mkdir -p "$folder"
logs=()
for QEL_CODE_PAGE in "${pages[@]}"; do
    start_wine "$folder/$QEL_CODE_PAGE"
    say "Running the tests ($qel_preset, code page $QEL_CODE_PAGE)"
    cd "$qel_source"
    # What fails is told at the end.
    run_step ctest --preset "$qel_preset" -L googletest "${filter[@]}" --no-tests=error --quiet || true
    cp "$qel_build/Testing/Temporary/LastTest.log" "$folder/$QEL_CODE_PAGE.log"
    logs+=("$QEL_CODE_PAGE=$folder/$QEL_CODE_PAGE.log")
    end_wine
done
say "What has failed"
run_step "$qel_source/tools/code_page_report.py" "${logs[@]}"
