# What is registered, for whom, and how one learns what is wrong with it.

test_tells_which_component_is_not_registered() {
    local text library name
    text=$(script ver.kel ver)
    for library in "$KEL_UTILS=KelUtils.Preprocessor" "$KEL_LINK=BenchLink.Communicator"; do
        name=${library#*=} library=$(windows_path "${library%=*}")
        at_exit run_wine regsvr32 /s "$library"
        run_wine regsvr32 /s /u "$library"
        kelrun 5 "$text"
        expect_only_error "kelrun: $name is not registered..."
        run_wine regsvr32 /s "$library"
    done
    kelrun 5 "$text" --link Scripting.FileSystemObject
    expect_only_error 'kelrun: Scripting.FileSystemObject is of another kind...'
}

kelregister() {
    local KEL_RUN=$KEL_REGISTER
    kelrun "$@"
}

# Prints what the registry holds below a key, as text.
branch() {
    run_wine regedit /E "$(windows_path "$folder/branch.reg")" "$1"
    iconv -f UTF-16 -t UTF-8 "$folder/branch.reg" | tr -d '\r'
}

# The user's branch gets the very keys that the machine's has already, and loses them again.
test_registers_for_one_user() {
    local user='HKEY_CURRENT_USER\Software\Classes' machine='HKEY_LOCAL_MACHINE\Software\Classes' library
    run_wine reg add "$user" /f
    branch "$user" >"$folder/user"
    branch "$machine" >"$folder/machine"
    for library in "$KEL_UTILS" "$KEL_LINK"; do
        library=$(windows_path "$library")
        kelregister 0 "$library"
        expect "$output" "$library is registered for this user"
        # Without the roots, which are everybody's.
        branch "$user" | awk '/^\[/ { on = !/Classes(\\(CLSID|Interface|TypeLib))?\]$/ } on' | sed "s/^\[${user//\\/\\\\}/[${machine//\\/\\\\}/" >"$folder/registered"
        (($(grep -c '^@=' "$folder/registered") >= 20)) || give_up "only a few keys"
        awk 'NR == FNR { if (/^\[/) wanted[$0] = 1; next } /^\[/ { on = $0 in wanted } on' \
            "$folder/registered" "$folder/machine" |
            diff - "$folder/registered" >&2 || give_up "other keys than those of regsvr32"
        kelregister 0 --unregister "$library"
        branch "$user" | diff "$folder/user" - >&2 || give_up "something is left"
    done
    branch "$machine" | diff "$folder/machine" - >&2 || give_up "the machine's branch has changed"
}

# A file that is no library for it is told of; the others are registered all the same.
test_tells_which_library_cannot_be_registered() {
    local path machine message broken
    path=$folder/wide.dll
    cp -- "$KEL_UTILS" "$path"
    machine=$(($(od -An -tu4 -j60 -N4 "$path") + 4))
    printf '\x64\x86' | dd of="$path" bs=1 seek="$machine" conv=notrunc status=none
    printf 'text' >"$folder/text.dll"
    while IFS='|' read -r path message; do
        kelregister 2 "$path"
        expect_only_error "kelregister: $path cannot be $message"
    done <<ROWS
Z:\\no\\such.dll|loaded: there is no such file
$(windows_path "$folder/text.dll")|loaded: it is no library
$(windows_path "$folder/wide.dll")|loaded: it is a 64-bit library, which...
C:\\windows\\system32\\version.dll|registered: it is no library of components (it has no DllRegisterServer)
ROWS
    broken=$folder/broken.dll
    LC_ALL=C sed 's/MSFT\x02/gone\x02/' "$KEL_UTILS" >"$broken"
    broken=$(windows_path "$broken")
    kelregister 1 "$broken" 'Z:\no\such.dll'
    expect "$errors" "kelregister: $broken could not be registered: ..." 'kelregister: Z:...'
    kelregister 0 --unregister "$broken"
    kelregister 2 --undo
    kelregister 0 --help
    expect "$output" 'usage: kelregister ...'
}

test_diagnoses_what_is_missing() {
    local library link
    library=$(windows_path "$KEL_UTILS") link=$(windows_path "$KEL_LINK")
    ln -s -- "$folder" "$WINEPREFIX/dosdevices/com40"
    at_exit rm -f -- "$WINEPREFIX/dosdevices/com40"
    kelrun 0 --diagnose --port COM99
    expect "$output" 'KelUtils: registered for all users' "  $library, version 1.0..." '  18 classes, ...' \
        'Instrument link BenchLink.Communicator: registered for all users' "  $link, 32-bit" 'Serial ports: ...' 'All is well.'
    (($(wc -l <"$output") <= 10)) || give_up "too much for what is well"
    grep -q 'COM40 busy.*; COM99 absent$' "$output" || give_up "not the state of the ports"
    kelrun 5 --diagnose --link No.Such.Link
    expect "$output" 'Instrument link No.Such.Link: not registered' '  WRONG: No.Such.Link is not registered' \
        '  TO DO: register the library of the link...' 'Something is to be mended...'
    at_exit run_wine regsvr32 /s "$library"
    run_wine regsvr32 /s /u "$library"
    kelrun 5 --diagnose
    expect "$output" 'KelUtils: not registered' '  WRONG: not one of...' '  TO DO: register it: kelregister...'
}

# The manifest takes the place of the registration, beside a program that looks for it, and from
# within the library for one whose own manifest names it.
test_needs_no_registration_beside_the_manifest() {
    local library KEL_RUN=$KEL_RUN
    library=$(windows_path "$KEL_UTILS")
    cp -- "$KEL_RUN" "$folder/kelrun.exe"
    KEL_RUN=$folder/kelrun.exe
    at_exit run_wine regsvr32 /s "$library"
    run_wine regsvr32 /s /u "$library"
    kelrun 5 "$(script set.kel '@x="1"\n')"
    cp -- "$KEL_UTILS" "${KEL_UTILS%.dll}.manifest" "$folder"
    kelrun 0 "$(script set.kel '@x="1"\n')"
    kelrun 0 --diagnose
    expect "$output" "KelUtils: made known by $(windows_path "$folder/KelUtils.manifest")" \
        "  $(windows_path "$folder/KelUtils.dll"), version..." 'All is well.'
    rm -- "$folder/KelUtils.manifest"
    # In the place of the program's own manifest.
    printf "%-$(stat -c %s "$kel_root/resources/program.manifest")s" \
        "<assembly xmlns='urn:schemas-microsoft-com:asm.v1' manifestVersion='1.0'>$(blocks xml "$kel_root/docs/hosting.md" | grep -v '^-- ')</assembly>" |
        dd of="$KEL_RUN" bs=1 seek="$(grep -obaF '<?xml version' "$KEL_RUN" | cut -d: -f1)" conv=notrunc status=none
    kelrun 0 --diagnose
    expect "$output" "KelUtils: made known by $(windows_path "$folder/KelUtils.dll")" 'All is well.'
    printf '<' >"$folder/KelUtils.manifest"
    kelrun 5 "$(script set.kel '@x="1"\n')"
    expect_only_error "kelrun: $(windows_path "$folder/KelUtils.manifest"): ..."
}
