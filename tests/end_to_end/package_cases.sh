# The set-up program of build/package, in a Wine prefix of its own.

readonly uninstall_key='HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\KelUtils'

# Uses a fresh prefix; sets `installed` to the folder of the set-up program in it.
use_fresh_prefix() {
    copy_prefix "$kel_build/package-prefix"
    at_exit rm -rf -- "$WINEPREFIX"
    at_exit stop_prefix "$WINEPREFIX"
    wineserver -p >/dev/null 2>&1
    # Every user of Windows has these.
    run_wine reg add 'HKCU\Software\Classes' /f
    run_wine reg add "${uninstall_key%\\*}" /f
    installed=$(echo "$WINEPREFIX"/drive_c/users/*/AppData/Local)/Programs/KelUtils
    mkdir -p -- "${installed%/*}"
}

# Runs a set-up program or an uninstaller without its window: set_up_silently EXPECTED_CODE PROGRAM ...
set_up_silently() {
    local expected=$1 KEL_RUN=$2
    kelrun "$expected" /S "${@:3}"
}

# An older version, with a file that the newer one lacks; sets `older`.
make_older_setup() {
    local stage=$folder/older
    older=$folder/older-setup.exe
    mkdir -p -- "$stage/docs"
    cp -- "$KEL_UTILS" "$KEL_REGISTER" "$KEL_RUN" "${KEL_UTILS%.dll}.manifest" "$stage/"
    echo old >"$stage/docs/old.md"
    make_setup "$stage" 0.9.0 "$older" >"$output" 2>&1 || give_up "the older set-up program cannot be made"
}

# What an uninstaller must leave as it was: keys, values, files. Wine notes things of its own.
print_state() {
    {
        branch 'HKEY_CURRENT_USER\Software'
        branch 'HKEY_LOCAL_MACHINE\Software\Classes'
        branch 'HKEY_LOCAL_MACHINE\Software\Microsoft\Windows\CurrentVersion'
    } | sed '/^$/d; /Software\\Wine\\Temporary/d'
    find "$WINEPREFIX/drive_c" -path '*/Temp/*' -o -path '*/windows/*' -prune -o -print | sort
}

expect_version() {
    wine reg query "$uninstall_key" /v DisplayVersion 2>/dev/null </dev/null | grep -qF " $1" || give_up "not version $1"
}

# Runs an installed kelrun, and meanwhile a program that must not touch it: while_in_use COMMAND...
while_in_use() {
    local running
    instrument tcp
    KEL_RUN=$installed/kelrun.exe start_kelrun "$(script long.kel 'ver\n#WAIT 300000\n')" "${connection[@]}"
    running=$process
    wait_until "the first answer" grep -q firmware "$output"
    "$@"
    grep -qF 'is in use' "$output" || give_up "no word about the file in use"
    kill -INT "$running"
    process=$running
    finish_kelrun
    [[ $code == 4 ]] || give_up "the running program was disturbed"
}

test_installs_upgrades_and_uninstalls() {
    local version setup older installed inside KEL_RUN=$KEL_RUN
    version=$(product_version)
    setup=$package_folder/KelUtils-$version-setup.exe
    [[ -f $setup ]] || give_up "there is no ${setup##*/}: ./kel package makes it"
    make_older_setup
    use_fresh_prefix
    print_state >"$folder/before"
    run_wine regsvr32 /s "$(windows_path "$KEL_LINK")"

    set_up_silently 0 "$older"
    expect_version 0.9.0
    while_in_use set_up_silently 3 "$setup"
    expect_version 0.9.0
    [[ -f $installed/docs/old.md && ! -e $installed/keldesk.exe ]] || give_up "the older version has changed"

    set_up_silently 0 "$setup"
    expect_version "$version"
    (cd -- "$installed" && sha256sum --quiet -c SHA256SUMS) >&2 || give_up "files are missing or others"
    [[ ! -e $installed/docs/old.md ]] || give_up "a file of the older version is left"

    KEL_RUN=$installed/kelrun.exe
    kelrun 0 --version
    expect "$output" "kelrun $version"
    link_program 0 "$installed/kel_link_conformance.exe" BenchLink.Communicator
    instrument tcp
    kelrun 0 "$(windows_path "$installed/examples/deploy.kel")" "${connection[@]}"
    expect_deployment

    # A path without a blank, for an argument with one arrives in quotes that an uninstaller does not take.
    inside=${installed#"$WINEPREFIX/drive_c"}
    while_in_use set_up_silently 3 "$installed/uninstall.exe" "_?=C:${inside//\//\\}"
    (cd -- "$installed" && sha256sum --quiet -c SHA256SUMS) >&2 || give_up "files went in spite of their use"
    echo mine >"$installed/mine.kel"
    set_up_silently 0 "$installed/uninstall.exe"
    wait_until "the end of the uninstaller" [ ! -e "$installed/uninstall.exe" ]
    [[ $(ls -- "$installed") == mine.kel ]] || give_up "not only the user's file is left"
    rm -r -- "$installed"
    run_wine regsvr32 /s /u "$(windows_path "$KEL_LINK")"
    # What the user's programs remember stays.
    run_wine reg delete 'HKCU\Software\Kelvra' /f
    print_state | diff "$folder/before" - >&2 || give_up "something is left"
}

# Else two builds would give other bytes. The date in the type library counts too.
test_programs_do_not_tell_where_and_when_they_were_built() {
    local program file=$kel_build/win32
    for program in "${shipped_programs[@]}"; do
        ! grep -aqF "$kel_root" "$file/$program" "$file/$program.debug" || give_up "a folder in $program"
        [[ $(i686-w64-mingw32-objdump -p "$file/$program" | grep -cE '^Time/Date.*(1970|not present)') == 1 ]] ||
            give_up "a date in $program"
    done
    grep -aqE 'WIDL version .* 1970' "$file/server/KelUtils.dll" || give_up "a date in the type library"
}

# What protects a process from its own libraries, and what they need: the system alone.
test_programs_are_moved_in_memory_and_need_the_system_alone() {
    local program word
    for program in "${shipped_programs[@]}" bench/link/BenchLink.dll; do
        i686-w64-mingw32-objdump -p "$kel_build/win32/$program" >"$output"
        for word in '\sDYNAMIC_BASE' '\sNX_COMPAT' 'Entry 5 [0-9a-f]+ [0-9a-f]*[1-9a-f][0-9a-f]* Base' 'DLL Name'; do
            grep -qE "$word" "$output" || give_up "no $word in $program"
        done
        while read -r word; do
            [[ -e $WINEPREFIX/drive_c/windows/system32/${word,,} ]] || give_up "$program needs $word"
        done < <(sed -n 's/^.*DLL Name: //p' "$output")
        i686-w64-mingw32-objdump -h "$kel_build/win32/$program" | grep CODE >"$output"
        ! grep -v READONLY "$output" || give_up "writable code in $program"
        [[ $program == *.dll ]] || grep -aq '<requestedExecutionLevel level="asInvoker"' "$kel_build/win32/$program" ||
            give_up "no manifest in $program"
    done
    i686-w64-mingw32-objdump -p "$kel_build/win32/server/KelUtils.dll" | sed -n 's/^.*\[ *[0-9]*\] \(Dll\)/\1/p' |
        diff - <(printf 'Dll%s\n' CanUnloadNow GetClassObject RegisterServer UnregisterServer) >&2 ||
        give_up "other entry points"
}
