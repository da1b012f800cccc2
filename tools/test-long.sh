#!/usr/bin/env bash
# Runs the long tests, one after another: a night's work.
set -euo pipefail

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

names=(coverage code-pages allocations system-calls guarded-memory traps hostile-input models schedules load-release
    soak mutants)

usage()
{
    cat <<'END'
usage: test-long.sh [--record] [NAME...]

Runs the long tests with these names, or all of them: those that take too long for tools/test.sh, which holds samples of
them. Each is a script of its own, tools/long/NAME.sh, with a --help. Its output goes to build/long/NAME.log as well.

  --record  put the figures of those that have passed into the table of docs/testing.md, beside commit and day
  --help    show this text

END
    printf 'Names: %s\nExit status: 0 when all of them have passed.\n' "${names[*]}"
}

record=
chosen=()
while [ $# -gt 0 ]; do
    case $1 in
        --help) usage; exit 0 ;;
        --record) record=1; shift ;;
        -*) usage >&2; exit 2 ;;
        *) [ -f "$qel_source/tools/long/$1.sh" ] || { usage >&2; exit 2; }; chosen+=("$1"); shift ;;
    esac
done
[ ${#chosen[@]} -gt 0 ] || chosen=("${names[@]}")

logs=$qel_source/build/long
mkdir -p "$logs"
summary=()
result=0
for name in "${chosen[@]}"; do
    say "$name"
    outcome=passed
    "$qel_source/tools/long/$name.sh" 2>&1 </dev/null | tee "$logs/$name.log" || { outcome=FAILED; result=1; }
    # A test says what came out of it in its last line of this form.
    figures=$(sed -n 's/\r$//; s/^figures: //p' "$logs/$name.log" | tail -1)
    [ -n "$figures" ] || { outcome=FAILED; result=1; }
    summary+=("$(printf '%-15s %s: %s' "$name" "$outcome" "${figures:-no figures}")")
    if [ -n "$record" ] && [ "$outcome" = passed ]; then
        "$qel_source/tools/record_figures.py" "$name" "$figures"
    elif [ -n "$record" ]; then
        echo "Nothing is recorded of $name."
    fi
done
say "Long tests"
printf '%s\n' "${summary[@]}"
exit "$result"
