#!/usr/bin/env bash
# Lays out the C++ files as .clang-format says.
set -euo pipefail

usage()
{
    cat <<'TEXT'
usage: format.sh [--check] [FILE ...]

Lays out the C++ files named, or all of the tree, as .clang-format says.

  --check    change nothing; list the places that would change, and fail when there are any
  --help     show this text

Needs clang-format 19 (package clang-format-19): another version lays out some lines differently.
TEXT
}

mode=(-i)
files=()
while [ $# -gt 0 ]; do
    case $1 in
        --help) usage; exit 0 ;;
        --check) mode=(--dry-run --Werror); shift ;;
        -*) usage >&2; exit 2 ;;
        *) files+=("$(realpath -- "$1")"); shift ;;
    esac
done

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

command -v clang-format-19 >/dev/null || fail "clang-format-19 is not there; please install the package of that name"
cd "$qel_source"
[ ${#files[@]} -gt 0 ] || mapfile -d '' files < <(source_files '*.cpp' '*.h')
# Four at a time: each file takes a few milliseconds, some of the tests much longer.
printf '%s\0' "${files[@]}" | xargs -0 -n 8 -P 4 clang-format-19 --style=file "${mode[@]}" ||
    fail "${#files[@]} files were looked at, and some are not laid out as .clang-format says; tools/format.sh does that"
