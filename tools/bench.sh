#!/usr/bin/env bash
# Times the library beside what a user would pick instead, under Wine.
set -euo pipefail

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

usage()
{
    cat <<'END'
usage: bench.sh [--filter REGEX] [--growth] [--json] [--check] [--chart] [--rounds N]
       bench.sh --from FILE [--json] [--check] [--chart]

Builds the library and its benchmarks for 64-bit Windows and runs them under Wine, each operation in turns with its
peers, in many short rounds. Prints for each row the medians of both sides, the median of their ratios with its spread
of 10 to 90 %, the greatest ratio that is good enough (the bar), and whether it is met: "close" is a bar that is missed
by less than the spread. Each row first checks that both sides give the same result.

  --filter REGEX  only rows whose "family: name, size, peer" matches, in any letter case
  --growth        how the cost grows from 1,024 to 32,768 units, as a fitted exponent, in place of the rows
  --json          print JSON in place of the table
  --check         fail when a bar is missed by more than the spread
  --chart         measure rows and growth, and write docs/performance.md with its charts; with --filter, into
                  build/linux-mingw-release/bench/
  --rounds N      at most so many rounds for each row, 101 otherwise
  --from FILE     measure nothing: show a run that was kept
  --help          show this text

The last run is kept in build/linux-mingw-release/bench/last.json. A whole run takes some minutes; close other programs.
Installs those packages of tools/packages.txt that it needs and that are missing (with sudo where need be), and fetches
the sources of one peer, pugixml, from Debian. Everything else stays in build/. Exit status: 0 when all results were the
same and, with --check, all bars were met; else 1.
END
}

filter=
growth=
chart=
from=
programs=()
report=()
while [ $# -gt 0 ]; do
    case $1 in
        --help) usage; exit 0 ;;
        --json | --check) report+=("$1"); shift ;;
        --growth) growth=yes; programs+=(--growth); shift ;;
        --chart) chart=yes; shift ;;
        --filter | --rounds | --from)
            [ $# -gt 1 ] || fail "a value is missing behind $1"
            case $1 in
                --from) from=$(realpath -- "$2") ;;
                --filter) filter=$2; programs+=("$1" "$2") ;;
                *) programs+=("$1" "$2") ;;
            esac
            shift 2 ;;
        *) usage >&2; exit 2 ;;
    esac
done
[ -z "$chart" ] || [ -z "$growth" ] || fail "--chart measures growth anyway: leave --growth out"

kept=$qel_build/bench
# The one for which Debian has the charts, whatever else is called python3.
python=/usr/bin/python3
if [ -n "$chart" ]; then
    programs+=(--all)
    report+=(--page "$([ -n "$filter" ] && echo "$kept" || echo "$qel_source/docs")")
fi

if [ -n "$from" ]; then
    exec "$python" "$qel_source/tools/bench_report.py" --from "$from" "${report[@]}"
fi

# The sources of pugixml, which Debian has as a library for Linux only. A list of packages of its own, so that the one
# of the system stays as it is.
fetch_pugixml()
{
    local folder=$qel_build/pugixml apt
    compgen -G "$folder/pugixml-*/src/pugixml.cpp" >/dev/null && return 0

    say "Fetching the sources of pugixml"
    rm -rf "$folder"
    mkdir -p "$folder/lists/partial" "$folder/cache/archives/partial"
    # shellcheck source=/dev/null
    echo "deb-src http://deb.debian.org/debian $(. /etc/os-release && echo "$VERSION_CODENAME") main" \
        >"$folder/sources.list"
    apt=(-q -o "Dir::Etc::SourceList=$folder/sources.list" -o Dir::Etc::SourceParts=-
        -o "Dir::State::Lists=$folder/lists" -o "Dir::Cache=$folder/cache" -o APT::Sandbox::User=)
    apt-get "${apt[@]}" update
    (cd "$folder" && apt-get "${apt[@]}" source --download-only pugixml)
    tar -xf "$folder"/pugixml_*.orig.tar.* -C "$folder"
    rm -rf "$folder/lists" "$folder/cache"
}

# Nothing but the result on standard output.
prepare()
{
    install_packages build "${qel_preset%-*}" run bench
    fetch_pugixml
    configure_without_tests
    build bench benchLoad
    start_wine "$qel_build/wine"
}

end_everything_on_exit
lock_build
prepare >&2
mkdir -p "$kept"
cd "$qel_build/tmp"
say "Timing" >&2
run_step "$python" "$qel_source/tools/bench_report.py" --save "$kept/last.json" "${report[@]}" \
    --program "wine $qel_build/bin/bench.exe" --program "wine $qel_build/bin/benchLoad.exe" \
    "${programs[@]/#/--argument=}"
