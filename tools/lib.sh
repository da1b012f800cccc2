# What the scripts share; sourced, not run.
#
# Everything these scripts make lies in one build folder: the build itself, the Wine prefixes, the home folder and the
# temporary files of the programs they run. Nothing is left elsewhere, and no process outlives the script.
# shellcheck shell=bash

qel_source=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# The presets of Linux whose programs are run, the library's own first.
# shellcheck disable=SC2034
qel_presets=(linux-mingw-release linux-visualcpp-release)

# Lets everything below work in the build folder of a preset.
use_preset()
{
    qel_preset=$1
    qel_build=$qel_source/build/$qel_preset
}

use_preset "${qel_presets[0]}"

display_pid=
step_pid=

say()
{
    printf '\n== %s\n' "$*"
}

fail()
{
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

# Prints the files of the source tree whose names match one of the patterns, each followed by a zero; leaves out what
# builds have made and what belongs to git and to editors.
source_files()
{
    local names=(-name "$1")
    shift
    while [ $# -gt 0 ]; do
        names+=(-o -name "$1")
        shift
    done
    find . -mindepth 1 \( -path ./build -o -name '.?*' ! -name .ci ! -name .clang-tidy \) -prune \
        -o -type f \( "${names[@]}" \) -print0
}

# Prints the lines of packages.txt that no installed package serves, of the groups named, or of "all".
missing_packages()
{
    local wanted=" $* " group='' names name
    while read -r names; do
        if [[ $names == \[* ]]; then
            group=${names//[][]/}
        elif [[ -n $names && ($wanted == " all " || $wanted == *" $group "*) ]]; then
            for name in ${names//|/ }; do
                [ "$(dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null)" != installed ] || continue 2
            done
            printf '%s\n' "$names"
        fi
    done < <(sed 's/[[:space:]]*#.*//' "$qel_source/tools/packages.txt")
}

# Prints a package for each of the lines: the first that this release of Debian has, or else the last.
choose_packages()
{
    local line name
    for line; do
        for name in ${line//|/ }; do
            # Of a name that only other packages mention it shows nothing, and is content.
            [ -z "$(apt-cache show "$name" 2>/dev/null)" ] || break
        done
        printf '%s\n' "$name"
    done
}

# Installs what is missing of the groups named, or of "all"; touches neither the network nor apt when nothing is.
install_packages()
{
    local missing names root=()
    command -v dpkg-query >/dev/null || fail "this script needs Debian (or one of its kin): dpkg-query is not there"
    mapfile -t missing < <(missing_packages "$@")
    [ ${#missing[@]} -gt 0 ] || return 0

    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null ||
            fail "please install these packages as root:" "$(choose_packages "${missing[@]}" | tr '\n' ' ')"
        root=(sudo)
    fi
    say "Installing packages"
    # Through env, since sudo does not pass variables on.
    "${root[@]}" apt-get -q update
    mapfile -t names < <(choose_packages "${missing[@]}")
    "${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q install -y --no-install-recommends "${names[@]}"
}

# Runs a command in a process group of its own, so that all of it can be ended at any time, and waits for it.
run_step()
{
    local result=0
    setsid -- "$@" </dev/null 9>&- &
    step_pid=$!
    wait "$step_pid" || result=$?
    step_pid=
    return "$result"
}

# Keeps two scripts from working in one build folder at the same time, until this one ends.
lock_build()
{
    mkdir -p "$qel_build/tmp"
    exec 9>"$qel_build/.lock"
    if ! flock -n 9; then
        echo "Waiting for another script that uses $qel_build ..."
        flock 9
    fi
    # For the compilers as well: their temporary files too stay in the build folder.
    export TMPDIR=$qel_build/tmp
}

# Configures with the options given.
configure()
{
    say "Building ($qel_preset)"
    cd "$qel_source" || fail "there is no folder $qel_source"
    run_step cmake --preset "$qel_preset" --log-level=STATUS "$@" >"$qel_build/configure.log" 2>&1 ||
        { cat "$qel_build/configure.log"; fail "configuring failed"; }
}

# Configures for a script that runs no tests: a new build folder does without them and their packages.
configure_without_tests()
{
    if [ -f "$qel_build/build.ninja" ]; then
        configure
    else
        configure -D QEL_BUILD_TESTS=OFF
    fi
}

# Builds the targets named.
build()
{
    run_step cmake --build --preset "$qel_preset" --target "$@" || fail "building failed"
}

# Sets the variables that keep Wine inside the folder $1 (prefix $2) and make it the same on every machine.
use_wine_environment()
{
    mkdir -p "$1/home"
    # With TMPDIR the server of Debian's Wine 10 aborts. Windows programs have their temporary files in the prefix.
    unset "${!XDG_@}" WAYLAND_DISPLAY TMPDIR
    export HOME=$1/home
    # Which the ODBC manager would otherwise make in the home folder that the system knows.
    export ODBCINI=$HOME/.odbc.ini
    export WINEPREFIX=$2 WINEARCH=win64
    use_code_page "$1/locale"
    export WINEDEBUG=${WINEDEBUG:--all}
    # No menu entries on the desktop, no offers to download add-ons, no debugger for a program that crashes.
    export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-winemenubuilder.exe,mscoree,mshtml,winedbg.exe=d}
}

# Lets Wine take the ANSI code page QEL_CODE_PAGE, 1252 where that is not set. It is that of the locale, of which Wine
# reads hardly more than the name: under any name a locale that every system has serves, linked in the folder $1.
use_code_page()
{
    local locale
    unset LOCPATH LC_CTYPE LC_MESSAGES
    export LC_ALL=C.UTF-8 QEL_CODE_PAGE=${QEL_CODE_PAGE:-1252}
    case $QEL_CODE_PAGE in
        1252) return ;;
        932) locale=ja_JP.UTF-8 ;;
        # Of a language that has no ANSI code page.
        65001) locale=hi_IN.UTF-8 ;;
        *) fail "no locale is known for the code page $QEL_CODE_PAGE" ;;
    esac
    mkdir -p "$1"
    ln -sfn /usr/lib/locale/C.utf8 "$1/$locale"
    ln -sfn /usr/lib/locale/C.utf8 "$1/en_US.UTF-8"
    unset LC_ALL
    # The language of users stays. This shell has no use for the locales, and says that it cannot find them.
    export LOCPATH=$1 LC_CTYPE=$locale LC_MESSAGES=en_US.UTF-8 2>/dev/null
}

# Starts an X server on a free display. setpriv ends it even when this script is killed outright.
start_display()
{
    local number_file=$qel_build/tmp/display tries=0
    mkdir -p "$qel_build/tmp"
    rm -f "$number_file"
    setsid -- setpriv --pdeathsig TERM Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp \
        3>"$number_file" </dev/null >"$qel_build/display.log" 2>&1 9>&- &
    display_pid=$!
    until [ -s "$number_file" ]; do
        if ! kill -0 "$display_pid" 2>/dev/null || [ $((tries += 1)) -gt 300 ]; then
            fail "Xvfb did not start; see $qel_build/display.log"
        fi
        sleep 0.1
    done
    DISPLAY=:$(tr -d '[:space:]' <"$number_file")
    export DISPLAY
}

# Starts Wine in the prefix $1 on a display of its own, making the prefix first where it is not there.
start_wine()
{
    use_wine_environment "$qel_build" "$1"
    # A server left behind by a script that was killed would know no display.
    end_server
    # Before the server: one that starts without a display spoils the prefix for windows.
    start_display

    local stamp=$WINEPREFIX/.made-by version
    version="$(wine --version), with fonts"
    if [ "$(cat "$stamp" 2>/dev/null)" != "$version" ]; then
        say "Making a Wine prefix ($version)"
        rm -rf "$WINEPREFIX"
        mkdir -p "$WINEPREFIX"
        start_server
        [[ "$(run_step wine reg query 'HKLM\System\CurrentControlSet\Control\Nls\CodePage' /v ACP)" == \
            *" $QEL_CODE_PAGE"* ]] ||
            fail "$QEL_CODE_PAGE is not the ANSI code page of the prefix; see $qel_build/wine.log"
        # Nobody manages windows on this display, and Wine would wait two seconds for whoever does at every one it
        # closes.
        run_step wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >"$qel_build/wine.log" 2>&1 ||
            fail "the prefix cannot be set up; see $qel_build/wine.log"
        # Debian's Wine misses the folder of its own fonts, among them that of dialogs.
        ln -sf /usr/share/wine/fonts/*.fon "$WINEPREFIX/drive_c/windows/Fonts"
        # The registry is on disk once the server has ended.
        end_server
        printf '%s\n' "$version" >"$stamp"
    fi
    start_server
}

# Keeps the server, and what Wine starts beside a program, from program to program. "start" brings up the services and
# the desktop now: they hold on to the output they are started with, and a test's pipe would never see its end.
start_server()
{
    wineserver -p 9>&-
    run_step wine start /wait cmd /c exit >"$qel_build/wine.log" 2>&1 ||
        fail "Wine does not start: see $qel_build/wine.log"
}

# Counts single tests in the folder $1 of CTest's logs: those of GoogleTest one by one, a program of another kind as one
# test. A test that was begun and has no end took its program down, even if the exit code says that all went well: under
# Wine a program that runs out of stack ends with 0. Fails when there is such a test. A name counts once in a program:
# some tests run themselves again in a process of their own. There may be words in front of GoogleTest's, from a program
# that does not end its lines or from Wine.
count_tests()
{
    local failed_programs=/dev/null
    [ ! -f "$1/LastTestsFailed.log" ] || failed_programs=$1/LastTestsFailed.log
    awk '
        { sub(/\r$/, "") }
        FILENAME != log_file { sub(/^[0-9]+:/, ""); failed_program["\"" $0 "\""] = 1; next }
        match($0, /\[ (RUN     |      OK| SKIPPED| FAILED ) \] /) {
            $0 = substr($0, RSTART)
            test = $4
            sub(/,$/, "", test)
        }
        /^\[ RUN      \] /              { if (!(test in state)) { state[test] = "begun" } }
        /^\[       OK \] .*\([0-9]+ ms/ { state[test] = "passed" }
        /^\[  SKIPPED \] .*\([0-9]+ ms/ { state[test] = "skipped" }
        /^\[  FAILED  \] .*\([0-9]+ ms/ { state[test] = "failed" }
        /^"[^"]+" end time: /           { end_of_program(!($1 in failed_program)) }
        function end_of_program(program_passed,    name, seen, good, bad)
        {
            for (name in state)
            {
                seen++
                if (state[name] == "passed") good++
                else if (state[name] == "skipped") skipped++
                else if (!program_passed) bad++
                else if (state[name] == "begun") { bad++; ended_early = 1; print name " has no end" > "/dev/stderr" }
                delete state[name]
            }
            passed += program_passed && !seen ? 1 : good
            failed += !program_passed && !bad ? 1 : bad
        }
        END {
            printf "%d passed, %d failed%s\n", passed, failed, skipped ? ", " skipped " skipped" : ""
            exit ended_early
        }
    ' log_file="$1/LastTest.log" "$failed_programs" "$1/LastTest.log"
}

# Runs CTest with the options given and counts the single tests. Fails when CTest does, or when a test has no end.
run_ctest()
{
    local logs=$qel_build/Testing/Temporary result=0
    rm -f "$logs/LastTest.log" "$logs/LastTestsFailed.log"
    run_step ctest --preset "$qel_preset" "$@" || result=1
    [ ! -f "$logs/LastTest.log" ] || count_tests "$logs" || result=1
    return "$result"
}

# Runs a program of GoogleTest with the command given, writes what it prints to the file $1, and shows that at the end.
# Fails unless the program says that its tests have passed: the exit code alone does not tell, see count_tests.
run_googletest()
{
    local log=$1 result=0
    run_step "${@:2}" >"$log" 2>&1 || result=1
    cat "$log"
    # The second is what a program says that runs each test in a process of its own.
    if ! tail -n 20 "$log" | grep -E >/dev/null \
        '\[  PASSED  \] [1-9][0-9]* test|^[1-9][0-9]* tests, each in a process of its own: 0 failed'; then
        printf '%s: the tests have not passed\n' "$log"
        result=1
    fi
    return "$result"
}

# Runs the programs of GoogleTest, save those of the list left_out, and writes what they print to the file $1. For those
# in the list filters it passes that filter on to GoogleTest. $2 may be an expression that names have to match.
# shellcheck disable=SC2154
run_test_programs()
{
    local log=$1 wanted=${2:-.} last=$qel_build/Testing/Temporary/LastTest.log result=0 program names
    names="^($(IFS='|'; echo "${left_out[*]} ${!filters[*]}" | tr ' ' '|'))\$"
    run_tests()
    {
        run_ctest --no-tests=ignore -L '^googletest$' -R "$1" -E "$2" || result=1
        [ ! -f "$last" ] || cat "$last" >>"$log"
    }
    cd "$qel_source" || fail "there is no folder $qel_source"
    : >"$log"
    run_tests "$wanted" "$names"
    for program in "${!filters[@]}"; do
        if [[ $program =~ $wanted ]]; then
            GTEST_FILTER=${filters[$program]} run_tests "^$program\$" '^$'
        fi
    done
    return "$result"
}

# Ends the server, where one runs, and removes its folder, the one thing outside the build folder: Debian's Wine makes
# it in /tmp, writes its name down in the prefix, and leaves it there.
end_server()
{
    local name
    wineserver -k 2>/dev/null || true
    name=$(cat "$WINEPREFIX/wineserver" 2>/dev/null) || return 0
    [[ $name != wine-?????? ]] || rm -rf "/tmp/$name" "$WINEPREFIX/wineserver"
}

# Ends Wine and its display, where they run.
end_wine()
{
    if [ -n "$display_pid" ]; then
        end_server
        kill "$display_pid" 2>/dev/null || true
        display_pid=
    fi
}

# Ends every process that this script started; runs whenever it ends.
end_everything()
{
    local result=$?
    trap '' INT TERM HUP
    [ -z "$step_pid" ] || kill -TERM -- "-$step_pid" 2>/dev/null || true
    end_wine
    wait
    exit "$result"
}

end_everything_on_exit()
{
    trap end_everything EXIT
    trap 'exit 129' HUP
    trap 'exit 130' INT
    trap 'exit 143' TERM
}
