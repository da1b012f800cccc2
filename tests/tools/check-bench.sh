#!/usr/bin/env bash
# Checks the benchmarks themselves, with rows of known result: the JSON of a run, exit codes, page and charts.
#
# usage: check-bench.sh PROGRAM FOLDER [EMULATOR ...]     PROGRAM is bench.exe, FOLDER takes the results
set -euo pipefail

program=$1
folder=$2
shift 2

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/../../tools/lib.sh"

# The one for which Debian has the charts, whatever else is called python3.
python=/usr/bin/python3
report=$qel_source/tools/bench_report.py
rm -rf "$folder"
mkdir -p "$folder"
cd "$folder"
export QEL_BENCH_SELF_TEST=1

# Runs the rows that match $1, with further arguments for the report; prints the exit status.
status()
{
    local filter=$1 result=0
    shift
    "$python" -B "$report" --program "$emulated" --argument=--filter "--argument=$filter" --argument=--rounds \
        --argument=9 "$@" >>output.txt || result=$?
    echo "$result"
}
emulated="$* $program"

expect()
{
    [ "$2" = "$3" ] || { cat output.txt; fail "$1: exit status $2 where $3 was expected"; }
}

expect "a bar that is met" "$(status '^self-test: a quarter' --check)" 0
expect "a bar that is missed, unchecked" "$(status '^self-test: four times')" 0
expect "a bar that is missed" "$(status '^self-test: four times' --check)" 1
expect "results that differ" "$(status '^self-test: another')" 1
expect "an exponent that is missed" "$(status '^self-test: work that squares' --argument=--growth --check)" 1
expect "a filter that nothing matches" "$(status '^no such row$' 2>/dev/null)" 1
expect "a row of the library" \
    "$(status '^(strings: copy, 29 units, std::wstring|self-test: (four|work))' --argument=--all --save run.json)" 0

"$python" -B "$report" --from run.json --json --page page >again.json
cmp run.json again.json
"$python" -B "$report" --from run.json --page once-more >/dev/null
diff -r page once-more

"$python" -B - <<'END'
import json

with open('run.json', encoding='utf-8') as file:
    run = json.load(file)
copy, slow = run['rows']
assert (copy['name'], copy['same']) == ('copy', 1), copy
assert copy['ratio'] < 1 and copy['low'] <= copy['ratio'] <= copy['high'], copy
assert 2 < slow['ratio'] < 8, slow
assert run['machine']['processor'] and run['machine']['compiler'], run['machine']
squares, proportional = run['growth']
assert squares['exponent'] > proportional['exponent'] + 0.4, run['growth']
END

grep -q 'It does four times the work' page/performance.md || fail "the page does not say why a row loses"
for chart in page/performance-strings.svg page/performance-self-test.svg; do
    grep -q '<svg' "$chart" || fail "$chart is no chart"
done
echo "exit codes, JSON, page and charts are as they should be"
