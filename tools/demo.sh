#!/usr/bin/env bash
# Sets up a small installation under Wine, lets qelDiagnose look at its data sources, and the example host number a part
# list, print section values, write the files that support asks for and show the progress of a long operation.
set -euo pipefail

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

usage()
{
    cat <<'END'
usage: demo.sh [--preset PRESET]

Builds the library, qelDiagnose and the example host for 64-bit Windows, prepares what an installation of the
application leaves on a machine (registry values, a configuration file, an ODBC driver and database files), and runs
both under Wine: qelDiagnose looks up data sources and connects to their databases for real; the host numbers a part
list, prints section values, writes and shows the files that support asks a customer for, and shows the progress of a
long operation in a dialog. A picture of that dialog is left in build/PRESET/demo/progress.png.

  --preset PRESET  build with this preset for Linux instead of linux-mingw-release
  --help           show this text

Installs those packages of tools/packages.txt that it needs and that are missing (with sudo where need be): on a bare
system about 350 MB to download and 2 GB on disk, which takes a few minutes. Everything else stays in build/ (0.8 GB).
Exit status: 0 when everything came out as it should.
END
}

while [ $# -gt 0 ]; do
    case $1 in
        --help) usage; exit 0 ;;
        --preset) [ $# -ge 2 ] || { usage >&2; exit 2; }; use_preset "$2"; shift 2 ;;
        *) usage >&2; exit 2 ;;
    esac
done

demo=$qel_build/demo
drive=$demo/drive_d # the D: of the demo
data='D:\Orvalis\Data'
default_driver='Microsoft Access Driver (*.mdb, *.accdb)'

# An empty database of the desktop format: one header page, of which the drivers read the signature and the version.
write_database()
{
    { printf '\x00\x01\x00\x00Standard Jet DB\x00\x01\x00\x00\x00'; head -c 4072 /dev/zero; } >"$1"
}

write_files()
{
    local folder=$drive/Orvalis/Data
    rm -rf "$drive"
    mkdir -p "$folder/Catalogs" "$folder/Configuration" "$folder/Lists" "$folder/Kernel/Data" \
        "$drive/Orvalis/Bin" "$drive/Orvalis/Logs"
    cp "$qel_build/bin/"{host.exe,qelDiagnose.exe,VarnelQELRoots.dll} "$drive/Orvalis/Bin"
    cp "$qel_source/examples/host/data/parts.csv" "$folder/Lists"

    write_database "$folder/Catalogs/PelionProfiles2020.mdb"
    write_database "$folder/Catalogs/SteelGrades.mdb"
    write_database "$folder/Kernel/Data/model.mdb"
    echo "This file was a database once." >"$folder/Catalogs/Damaged.mdb"

    write_configuration UTF-16 | sed 's/$/\r/' | { printf '\xFF\xFE'; iconv -f UTF-8 -t UTF-16LE; } \
        >"$folder/Configuration/DatabaseConfiguration.xml"
    write_configuration UTF-8 | sed 's/$/\r/' | { printf '\xEF\xBB\xBF'; cat; } \
        >"$folder/Configuration/DatabaseConfigurationUtf8.xml"
}

# Paths of databases are relative to the data folder.
write_configuration()
{
    cat <<END
<?xml version="1.0" encoding="$1"?>
<Configuration>
  <Orvalis>
    <DataSource Name="SteelGrades" Platform="x64"
                Value="DRIVER={$default_driver};UID=;PWD=;DBQ=Catalogs\\SteelGrades.mdb"/>
    <DataSource Platform="x64" Name="Stahlgüten"
                Value="DRIVER={$default_driver};UID=;PWD=;DBQ=Catalogs\\SteelGrades.mdb"/>
    <DataSource Value="DRIVER={Varnel ODBC Driver};UID=;PWD=;DBQ=Catalogs\\Bolts.mdb" Name="Bolts" Platform="x64"/>
    <DataSource Name="Damaged" Platform="x64" Value="DRIVER={$default_driver};UID=;PWD=;DBQ=Catalogs\\Damaged.mdb"/>
    <DataSource Name="PriceServer" Platform="x64" Value="DRIVER={Price List Driver};SERVER=prices"/>
    <DataSource Name="PlotStyles" Platform="x86"
                Value="DRIVER={$default_driver};UID=;PWD=;DBQ=Catalogs\\PlotStyles.mdb"/>
  </Orvalis>
</Configuration>
END
}

# Which Unix driver stands behind the product's driver name. It looks for its files by the Windows path as one single
# name, in the folders of MDBPATH: links of these names lead to the files of drive D:.
register_driver()
{
    local odbc=$demo/odbc path name
    rm -rf "$odbc"
    mkdir -p "$odbc/databases"
    printf '[Varnel ODBC Driver]\nDescription = Desktop databases\nDriver = libmdbodbcW.so\n' >"$odbc/odbcinst.ini"
    export ODBCSYSINI=$odbc ODBCINI=$odbc/odbc.ini MDBPATH=$odbc/databases

    while IFS= read -r -d '' path; do
        name=D:/${path#"$drive/"}
        ln -s "$path" "$odbc/databases/${name//\//\\}"
    done < <(find "$drive" -name '*.mdb' -print0)
}

set_value()
{
    run_step wine reg add "$1" /v "$2" /t "${4:-REG_SZ}" /d "$3" /f >/dev/null || fail "reg add $1 $2 failed"
}

write_registry()
{
    local product='Software\Kelvara\Orvalis\2020' connections='Software\Kelvara\Varnel\DatabaseConnections'
    ln -sfn "$drive" "$WINEPREFIX/dosdevices/d:"

    set_value "HKLM\\$product" BinPath "D:\\Orvalis\\Bin\\"
    set_value "HKLM\\$product" DataPath "$data\\"
    set_value "HKLM\\$product" Language 1033 REG_DWORD
    set_value "HKCU\\$product" Language 1031 REG_DWORD
    set_value "HKLM\\$connections" PelionProfiles2020 \
        "DRIVER={$default_driver};UID=;PWD=;DBQ=$data\\Catalogs\\PelionProfiles2020.mdb"
    set_value "HKLM\\$connections" QELMapping2020 \
        "DRIVER={$default_driver};UID=;PWD=;DBQ=$data\\Catalogs\\QELMapping2020.mdb"
    set_value 'HKLM\Software\ODBC\ODBCINST.INI\ODBC Drivers' 'Varnel ODBC Driver' Installed
}

# Runs the program $2, which should end with the exit status $3; its output goes to file $1 and to the screen, what the
# Unix driver says about failures to a log.
run_program()
{
    local output=$1 program=$2 expected=$3 status=0
    shift 3
    run_step wine "D:\\Orvalis\\Bin\\$program.exe" "$@" >"$output.raw" 2>"$output.log" || status=$?
    [ "$status" -eq "$expected" ] ||
        { cat "$output.log" >&2; fail "$program ended with $status instead of $expected"; }
    tr -d '\r' <"$output.raw" >"$output"
    rm "$output.raw"
    cat "$output"
}

# The same for the host, which should end with 0.
run_host()
{
    local output=$1
    shift
    run_program "$output" host 0 "$@"
}

# Whether the table in file $1 has a line for data source $2 with result $3 and connection test $4.
expect()
{
    local line
    line=$(grep -E "^  $2 " "$1") && [[ "$line" =~ ^\ +$2\ +x64\ +$3\ +$4\ +(DRIVER|\(none\)) ]] && return
    echo "unexpected: \"${line:-no line for $2}\" should have the result $3 and read \"$4\""
    unexpected=$((unexpected + 1))
}

# Whether file $1 has the lines that follow in the arguments, one right behind the other. Columns may be of any width.
expect_lines()
{
    local file=$1
    shift
    [[ $'\n'$(tr -s ' ' <"$file")$'\n' != *$'\n'"$(printf '%s\n' "$@")"$'\n'* ]] || return 0
    echo "unexpected: these lines are not in $file:"
    printf '  %s\n' "$@"
    unexpected=$((unexpected + 1))
}

# Takes the picture $2 of the display when the host, whose output goes to file $1, is at 40 percent. Gives up in a
# minute.
take_picture()
{
    local tries=0
    until grep -q ']  40%' "$1" 2>/dev/null; do
        [ $((tries += 1)) -le 600 ] || return 1
        sleep 0.1
    done
    import -window root -trim +repage "$2"
}

# Whether a line of file $1 matches the regular expression $2.
expect_match()
{
    ! grep -qE -- "$2" "$1" || return 0
    echo "unexpected: $1 has no line like \"$2\""
    unexpected=$((unexpected + 1))
}

end_everything_on_exit
install_packages build "${qel_preset%-*}" run demo
lock_build
configure_without_tests
build host qelDiagnose
mkdir -p "$demo"
start_wine "$demo/wine"

say "Preparing an installation in $demo"
write_files
write_registry
register_driver

names=(PelionProfiles2020 QELMapping2020 PelionCurrentProject
    SteelGrades Stahlgüten Bolts Damaged PriceServer PlotStyles)
cd "$demo"

# Not all of them can be connected to: 1.
say "qelDiagnose, configuration file in UTF-16"
run_program "$demo/utf16.txt" qelDiagnose 1 "${names[@]}"
say "qelDiagnose, configuration file in UTF-8"
run_program "$demo/utf8.txt" qelDiagnose 1 --config "$data\\Configuration\\DatabaseConfigurationUtf8.xml" "${names[@]}"

parts="$data\\Lists\\parts.csv"
say "host number"
run_host "$demo/number.txt" number --file "$parts" --limit 12
say "host section"
run_host "$demo/section.txt" section --file "$parts" "HEA 200" "IPE 300" "UPN 200" "RO 42.4x3.2"
say "host diagnose"
run_host "$demo/diagnose.txt" diagnose 'D:\Orvalis\Logs'

say "Checking"
unexpected=0
expect "$demo/utf16.txt" PelionProfiles2020 1 "connected"
expect "$demo/utf16.txt" QELMapping2020 1 "database file missing"
expect "$demo/utf16.txt" PelionCurrentProject 1 "database file missing"
expect "$demo/utf16.txt" SteelGrades 1 "connected"
expect "$demo/utf16.txt" Stahlgüten 1 "connected"
expect "$demo/utf16.txt" Bolts 1 "database file missing"
expect "$demo/utf16.txt" Damaged 1 "other failure"
expect "$demo/utf16.txt" PriceServer 0 "other failure"
expect "$demo/utf16.txt" PlotStyles 0 "not tested"
if ! diff <(grep -vE '^(Data sources|0x)' "$demo/utf16.txt") <(grep -vE '^(Data sources|0x)' "$demo/utf8.txt"); then
    echo "unexpected: the two configuration files give different tables"
    unexpected=$((unexpected + 1))
fi
expect_lines "$demo/number.txt" "A1-S235JR L 40x40x4 180 16 E EN"
expect_lines "$demo/number.txt" "A9-S235JR L 120x120x12 220 16 CH HS" "A10-S235JR L 150x150x15 1450 8 CU"
expect_lines "$demo/number.txt" "12 of 99 part numbers"
expect_lines "$demo/section.txt" "HEA 200 I 190 200 6.5 10 18 135" "IPE 300 I 300 150 7.1 10.7 15 250" \
    "UPN 200 U 200 75 8.5 11.5 11.5 155" "RO 42.4x3.2 RO 42.4 42.4 3.2 - - -"
for name in Diagnose DiagnosePerf DiagnoseModules DiagnoseObjects; do
    expect_match "$demo/diagnose.txt" ", in D:\\\\Orvalis\\\\Logs\\\\$name\.log\$"
    [ -s "$drive/Orvalis/Logs/$name.log" ] || fail "$name.log was not written"
done
time='\[[0-9]{2}:[0-9]{2}:[0-9]{2}\]'
expect_match "$demo/diagnose.txt" "^$time diagnosis begins\$"
expect_match "$demo/diagnose.txt" \
    "^$time Start = Module table : ([0-9]+)$time End = Module table : \\1 -> [0-9]+ \(Diff = [0-9]+\)\$"
expect_match "$demo/diagnose.txt" \
    '^0x[0-9a-f]{8}  0x[0-9a-f]+ +[0-9]+\.[0-9]{2}\.[0-9]{4}\.[0-9]{4} +D:\\Orvalis\\Bin\\VarnelQELRoots\.dll$'
expect_match "$demo/diagnose.txt" "^$time not destroyed: Beam\$"
[ "$unexpected" -eq 0 ] || fail "$unexpected of the results are not what they should be"
echo "Part numbers, section values and diagnoses came out as they should."
echo "All ${#names[@]} data sources came out as they should, the same with both configuration files."

say "host progress"
rm -f "$demo/progress.txt.raw" "$demo/progress.png"
take_picture "$demo/progress.txt.raw" "$demo/progress.png" 9>&- &
picture_pid=$!
run_host "$demo/progress.txt" progress --pause 50 --output "$data\\parts.txt"
wait "$picture_pid" || fail "there is no picture of the progress dialog"
[ "$(wc -l <"$drive/Orvalis/Data/parts.txt")" -eq 3000 ] || fail "the list of parts is not complete"
echo "The progress dialog is in $demo/progress.png."
