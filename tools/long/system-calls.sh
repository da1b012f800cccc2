#!/usr/bin/env bash
# Lets every system call of the library fail, one by one, and brings about real failures as a user without rights.
set -euo pipefail

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/../lib.sh"

usage()
{
    cat <<'END'
usage: system-calls.sh

Builds the library and lets each call that it makes to the system fail under Wine: registry, files, ODBC, snapshots,
versions, windows, threads. Each of many equal calls is one of them, of which tools/test.sh takes only a few. Compares
results with the page docs/system-calls.md and looks for what was left open. Then the same with a full disk, read-only
files and folders, vanished files, files that others have opened and closed streams; started as root, it tries what
needs missing rights as the user nobody.

  --help  show this text

Everything is made in build/linux-mingw-release. Exit status: 0 when all results are as stated.
END
}

case ${1:-} in
    '') ;;
    --help) usage; exit 0 ;;
    *) usage >&2; exit 2 ;;
esac

# As whoever may not write into the folder: nobody where this is root, else the caller. Has a prefix of its own.
try_without_rights()
{
    local home=$long/nobody folder=$long/read-only user=() name
    rm -rf "$home"
    chmod -Rf u+w "$folder" 2>/dev/null || true
    rm -rf "$folder"
    mkdir -p "$home" "$folder"
    echo text >"$folder/there.txt"
    chmod 555 "$folder"
    if [ "$(id -u)" -eq 0 ]; then
        user=(setpriv --reuid 65534 --regid 65534 --clear-groups --)
        chown 65534:65534 "$home"
        "${user[@]}" test -x "$programs/qelRealFailuresTest.exe" ||
            fail "the user nobody cannot reach $programs: clone the repository where all may read"
    fi
    cd "$home"
    # Local, so that what the script does at its end concerns its own prefix.
    local -x HOME=$home WINEPREFIX=$home/prefix
    local result=0
    QEL_READ_ONLY_FOLDER="Z:${folder//\//\\}" run_googletest "$long/nobody.log" "${user[@]}" \
        wine "$programs/qelRealFailuresTest.exe" --gtest_filter='*MayOnlyBeRead*:ReadOnly.*' || result=1
    "${user[@]}" wineserver -k 2>/dev/null || true
    name=$(cat "$home/prefix/wineserver" 2>/dev/null) && rm -rf "/tmp/$name"
    return "$result"
}

end_everything_on_exit
install_packages build "${qel_preset%-*}" run tests
lock_build
configure -D QEL_BUILD_TESTS=ON
build qelFailingSystemCallsTest qelRealFailuresTest
start_wine "$qel_build/wine"

long=$qel_build/long/system-calls
programs=$qel_build/bin
export ODBCSYSINI=$qel_build/tests/config/odbc
mkdir -p "$long"
cd "$qel_build/tmp"

say "Failing calls"
result=0
run_googletest "$long/calls.log" wine "$programs/qelFailingSystemCallsTest.exe" --every-call || result=1
say "Real failures"
run_googletest "$long/real.log" wine "$programs/qelRealFailuresTest.exe" || result=1
say "Without rights"
try_without_rights || result=1

calls=$(sed -n 's/\r//; /^[0-9]* injections at/p' "$long/calls.log")
[ -n "$calls" ] || result=1
passed()
{
    sed -n 's/\r//; s/.*PASSED *\] \([0-9]*\) .*/\1/p' "$1"
}
real=$(passed "$long/real.log")
without_rights=$(passed "$long/nobody.log")
failed=$(cat "$long"/{calls,real,nobody}.log | grep -c '^\[  FAILED  \] .*ms)' || true)
printf 'figures: %s; %s tests of real failures, %s of them without rights; %s failed\n' "${calls:-no injections}" \
    "$((real + without_rights))" "${without_rights:-none}" "$failed"
exit "$result"
