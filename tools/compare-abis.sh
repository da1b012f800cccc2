#!/usr/bin/env bash
# Runs demo and check in both builds for Linux, by MinGW-w64 and with Visual C++'s ABI, and compares what they leave.
set -euo pipefail

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

usage()
{
    cat <<'END'
usage: compare-abis.sh

Runs tools/demo.sh with the presets linux-mingw-release and linux-visualcpp-release and compares the output of every
command, and every file that was written, byte by byte. So it does with abiCheck, a program that drives every class of
the library. Times, durations, process numbers, addresses and the system's own modules are left aside: they differ from
run to run, or because the two builds use different C runtimes. It also checks that they really do.

  --help     show this text

Installs the packages of tools/packages.txt that are missing (with sudo where need be). Everything else stays in
build/. Exit status: 0 when there is no difference.
END
}

case ${1:-} in
    '') ;;
    --help) usage; exit 0 ;;
    *) usage >&2; exit 2 ;;
esac

# Runs the demo of the current preset; its output is only shown when it fails.
run_demo()
{
    say "Running the demo ($qel_preset)"
    mkdir -p "$qel_build"
    local output=$qel_build/demo-output.txt
    run_step "$qel_source/tools/demo.sh" --preset "$qel_preset" >"$output" 2>&1 ||
        { cat "$output"; fail "the demo of $qel_preset failed"; }
    tail -n 1 "$output"
}

# Runs the check that drives every class, in the prefix and on a display of its own.
run_check()
{
    say "Running the check of every class ($qel_preset)"
    lock_build
    configure -D QEL_BUILD_TESTS=ON >/dev/null
    build abiCheck >/dev/null
    start_wine "$qel_build/wine"
    # Wine 10 adds the drivers of the ODBC manager, and so of tests that have run in this prefix before.
    run_step wine reg delete 'HKLM\Software\ODBC\ODBCINST.INI\ODBC Drivers' /f >"$qel_build/wine.log" 2>&1 || true
    run_step wine "$qel_build/bin/abiCheck.exe" >"$qel_build/abiCheck.txt" 2>"$qel_build/wine.log" ||
        { cat "$qel_build/abiCheck.txt"; fail "abiCheck of $qel_preset failed"; }
    end_wine
    exec 9>&-
    tail -n 1 "$qel_build/abiCheck.txt"
}

# Prints what a command said or a file holds, without what differs from run to run.
normalise()
{
    sed -E '
        s/\[[0-9]{2}:[0-9]{2}:[0-9]{2}\]/[TIME]/g
        s/(Start|End) = ([^:]*) : [0-9]+/\1 = \2 : CLOCK/g
        s/-> [0-9]+ \(Diff = [0-9]+\)/-> CLOCK (Diff = DURATION)/
        s/PID : [0-9]+/PID : NUMBER/
        /^0x[0-9a-f]{8,16} .*[A-Z]:\\windows\\/d
        s/^0x[0-9a-f]{8,16} +0x[0-9a-f]+ /BASE SIZE /
        /^BASE /s/ +/ /g
    ' "$1"
}

# Copies what the demo of the current preset left to the folder $1: outputs and written files, not what was put there.
collect()
{
    local demo=$qel_build/demo name
    rm -rf "$1"
    mkdir -p "$1/output"
    for name in utf16 utf8 number section diagnose progress; do
        normalise "$demo/$name.txt" >"$1/output/$name.txt"
    done
    cp "$qel_build/abiCheck.txt" "$1/output"
    while IFS= read -r -d '' name; do
        mkdir -p "$1/$(dirname "$name")"
        normalise "$demo/drive_d/$name" >"$1/$name"
    done < <(cd "$demo/drive_d" && find . -type f -not -path '*/Bin/*' -print0)
}

# The C runtime that a DLL or program asks for.
runtime_of()
{
    x86_64-w64-mingw32-objdump -p "$1" | sed -nE 's/.*DLL Name: (msvcrt|ucrtbase)\.dll.*/\1/p' | tr '\n' ' '
}

# Whether DLL and programs of the preset $1 both import the C runtime $2, and no other.
expect_runtime()
{
    printf '%s: '"$2"' \n' VarnelQELRoots.dll host.exe qelDiagnose.exe | diff - "$result/$1.runtimes" ||
        fail "the build of $1 does not use the C runtime that it is meant for"
}

end_everything_on_exit
install_packages all
result=$qel_source/build/compared-abis
for preset in "${qel_presets[@]}"; do
    use_preset "$preset"
    run_demo
    run_check
    collect "$result/$preset"
    for image in VarnelQELRoots.dll host.exe qelDiagnose.exe; do
        printf '%s: %s\n' "$image" "$(runtime_of "$qel_build/bin/$image")"
    done >"$result/$preset.runtimes"
done

say "Comparing"
expect_runtime "${qel_presets[0]}" msvcrt
expect_runtime "${qel_presets[1]}" ucrtbase
diff -r "$result/${qel_presets[0]}" "$result/${qel_presets[1]}" ||
    fail "the two builds differ (< ${qel_presets[0]}, > ${qel_presets[1]})"
count=$(find "$result/${qel_presets[0]}" -type f | wc -l)
echo "Host and check say and write the same in both builds: $count outputs and files."
