# Packs the test programs with what they read, to be run on Windows by packaging/selftest.cmd.

# Sets up, builds and packs them.
pack_selftest() {
    local folder
    folder=$package_folder/KelUtils-$(product_version)-selftest
    lock_build
    set_up "${package_tools[@]}"
    build_preset win32
    logged "packing the self-test" "$kel_build/log/selftest.log" fill_selftest "$folder" ||
        show_failure "$kel_build/log/selftest.log" "packing the self-test failed"
    say "packed into build/package/${folder##*/}.zip: unpack it on Windows and start selftest.cmd"
}

# The folders are those of the project and of its build, by which the programs find things.
fill_selftest() {
    rm -rf -- "$1"
    mkdir -p -- "$1" && cp -- "$kel_root/LICENSE" "$kel_root"/packaging/selftest.{cmd,js} "$1/" || return
    (cd -- "$kel_root" && find tests -type f ! -name '*.cpp' ! -name '*.h' ! -name CMakeLists.txt) |
        copy_below "$kel_root" "$1" || return
    list_test_programs >"$1/tests.txt" &&
        printf '%s\n' "${shipped_programs[@]}" server/KelUtils.manifest bench/link/BenchLink.dll hosts/kelrun/KelTrace.dll |
        cat - "$1/tests.txt" | copy_below "$kel_build/win32" "$1/win32" || return
    copy_read_files "$1" || return
    # As Windows writes it.
    sed -i 's#^#win32/#; s#/#\\#g; s#$#\r#' "$1/tests.txt" || return
    make_archive "$1" "$1.zip" && sum_up_archives
}

# Copies what tests read besides their own folder, all that they may read. A program among it has
# been packed with the others: copy_read_files TO
copy_read_files() {
    local name
    while IFS= read -r name; do
        if [[ -e $kel_root/$name ]]; then
            copy_below "$kel_root" "$1" <<<"$name" || return
        elif [[ ! -e $1/win32/$name ]]; then
            printf 'tests read %s, which is not packed\n' "$name" >&2
            return 1
        fi
    done < <(grep -v '^#' -- "$kel_root/tests/support/read_files.txt")
}

list_test_programs() { (cd -- "$kel_build/win32" && find tests/core tests/wine -name '*_tests.exe' | sort); }

# Copies files, whose names stand on standard input, with their folders: copy_below FROM TO
copy_below() { mkdir -p -- "$2" && tar -C "$1" -c -T - | tar -C "$2" -x; }
