#!/usr/bin/env bash
# Runs clang-tidy over the C++ sources.
set -euo pipefail

usage()
{
    cat <<'TEXT'
usage: tidy.sh [--again] [--library | FILE ...]

Runs clang-tidy, with the checks of the .clang-tidy files, over the sources of the library, its tests, benchmarks and
examples, two at a time. A source that has passed is left out the next time, until it, a header or the checks change.

  --library  only the sources of the library, with the headers that they include
  --again    all of them, whether they have passed before or not
  --help     show this text

Needs clang-tidy 19 (package clang-tidy-19) and a configured build folder (build/linux-mingw-release).
TEXT
}

again=
only=
files=()
while [ $# -gt 0 ]; do
    case $1 in
        --help) usage; exit 0 ;;
        --again) again=yes; shift ;;
        --library) only=library; shift ;;
        -*) usage >&2; exit 2 ;;
        *) files+=("$(realpath -- "$1")"); shift ;;
    esac
done

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

command -v clang-tidy-19 >/dev/null || fail "clang-tidy-19 is not there; please install the package of that name"
[ -f "$qel_build/compile_commands.json" ] || fail "please configure first: cmake --preset $qel_preset"
cd "$qel_source"
stamps=$qel_build/tidy
mkdir -p "$stamps"

# The sources that the build compiles for the target named, or else for all, one a line. GoogleTest and what is
# generated are not ours; the measuring program needs a header that Clang does not have. The largest come first, so that
# none of them is left for the end.
compiled()
{
    awk -v folder="$qel_source/" -v object=" -o .*${1:-}.dir/" '
        /^ *"command":/ { wanted = $0 ~ object }
        /^ *"file":/ && wanted && split($0, part, "\"") && index(part[4], folder) == 1 {
            print substr(part[4], length(folder) + 1)
        }' "$qel_build/compile_commands.json" |
        grep '\.cpp$' | grep -Ev '^(build|tools/solver-accuracy)/' | sort -u | xargs ls -S
}

if [ ${#files[@]} -gt 0 ]; then
    files=("${files[@]#"$qel_source"/}")
elif [ "$only" = library ]; then
    mapfile -t files < <(compiled VarnelQELRoots)
else
    mapfile -t files < <(compiled)
fi
[ ${#files[@]} -gt 0 ] || fail "there are no sources in $qel_build/compile_commands.json"

# Clang refuses the one option of GCC that it does not know.
mkdir -p "$stamps/commands"
sed 's/ -femit-class-debug-always//' "$qel_build/compile_commands.json" >"$stamps/commands/compile_commands.json"

# What every result depends on.
newest=$(source_files '*.h' .clang-tidy | xargs -0 ls -t | head -n 1)

# Checks one source, silently when it passes.
check()
{
    local file=$1 more=() output
    # The paths through Boost's templates take longer than all other sources together.
    [ "$file" != src/strings/PatternSearch.cpp ] || more=(--checks=-clang-analyzer-*)
    if output=$(clang-tidy-19 -p "$stamps/commands" --quiet "${more[@]}" "$file" 2>&1); then
        mkdir -p "$stamps/$(dirname "$file")"
        touch "$stamps/$file"
    else
        printf '%s\n' "$output"
        return 1
    fi
}
export -f check
export stamps

wanted=()
for file in "${files[@]}"; do
    stamp=$stamps/$file
    if [ -n "$again" ] || [ ! "$stamp" -nt "$file" ] || [ ! "$stamp" -nt "$newest" ]; then
        wanted+=("$file")
    fi
done
if [ ${#wanted[@]} -gt 0 ]; then
    # shellcheck disable=SC2016 # the inner shell expands it
    printf '%s\0' "${wanted[@]}" | xargs -0 -n 1 -P 2 bash -c 'check "$1"' check ||
        fail "clang-tidy has something to say: correct it, or write NOLINT, the name of the check and the reason there"
fi
echo "${#files[@]} sources are tidy, ${#wanted[@]} of them looked at now"
