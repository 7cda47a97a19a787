# Makes what is given to others, below build/package: a set-up program, archives and checksums. The
# same sources give the same bytes.

readonly package_tools=(nsis zip) # what it needs to be installed besides
readonly shipped_programs=(
    server/KelUtils.dll hosts/trace/KelTrace.dll
    hosts/kelrun/kelrun.exe hosts/keldesk/keldesk.exe hosts/kelregister/kelregister.exe
    hosts/conformance/kel_link_conformance.exe
)
readonly package_folder=$kel_build/package

# Prints the version, which stands in one place.
product_version() { sed -nE 's/^project\(KelUtils VERSION ([0-9.]+) .*/\1/p' "$kel_root/CMakeLists.txt"; }

# Prints the time that all files get, in seconds: that of the last commit, unless SOURCE_DATE_EPOCH
# names another.
package_time() {
    printf '%s' "${SOURCE_DATE_EPOCH:-$(git -C "$kel_root" log -1 --format=%ct 2>/dev/null || echo 946684800)}"
}

# Sets up, builds and packs.
package() {
    lock_build
    set_up "${package_tools[@]}"
    build_preset win32 "${shipped_programs[@]}"
    logged "packing" "$kel_build/log/package.log" pack ||
        show_failure "$kel_build/log/package.log" "packing failed"
    say "packed into build/package:"
    (cd -- "$package_folder" && ls -- *.exe *.zip SHA256SUMS)
}

# Fills build/package with the programs that are built.
pack() {
    local name
    name=$package_folder/KelUtils-$(product_version)
    rm -rf -- "$name-symbols" &&
        pack_setup &&
        stage_symbols "$name-symbols" &&
        make_archive "$name" "$name-win32.zip" &&
        make_archive "$name-symbols" "$name-symbols.zip" &&
        sum_up_archives
}

# Makes the set-up program only.
pack_setup() {
    local version folder
    version=$(product_version)
    folder=$package_folder/KelUtils-$version
    rm -rf -- "$folder" &&
        stage "$folder" &&
        make_setup "$folder" "$version" "$folder-setup.exe"
}

# Puts what is installed into a folder. The run-time libraries are part of every program, and their
# terms ask to be passed on.
stage() {
    mkdir -p -- "$1/interfaces" "$1/licences" &&
        copy_programs '' "$1" &&
        cp -- "$kel_build/win32/server/KelUtils.manifest" "$kel_root/README.md" "$kel_root/LICENSE" "$1/" &&
        cp -- "$kel_build"/win32/interfaces/KelUtils{.tlb,.h,_i.c} "$kel_root"/interfaces/*.idl "$1/interfaces/" &&
        cp -r -- "$kel_root/docs" "$kel_root/examples" "$1/" &&
        cp -- /usr/share/doc/mingw-w64-common/copyright "$1/licences/mingw-w64.txt" &&
        cp -- /usr/share/doc/gcc-mingw-w64-base/copyright "$1/licences/gcc.txt" &&
        sum_up "$1"
}

stage_symbols() { mkdir -p -- "$1" && copy_programs .debug "$1" && sum_up "$1"; }

# Copies the programs or what stands beside each of them: copy_programs ENDING FOLDER
copy_programs() {
    local -a files=("${shipped_programs[@]/#/$kel_build/win32/}")
    cp -- "${files[@]/%/$1}" "$2/"
}

# Prints all files below a folder, by their paths in it, always in the same order.
files_below() { (cd -- "$1" && find . -type f -printf '%P\n' | LC_ALL=C sort); }

# Writes the checksums of all files of a folder into it.
sum_up() (
    cd -- "$1" &&
        rm -f -- SHA256SUMS &&
        files_below . | xargs -d '\n' sha256sum -- >"$1.sums" &&
        mv -- "$1.sums" SHA256SUMS
)

# Of what there is: each verb makes some of the files only.
sum_up_archives() (
    cd -- "$package_folder" &&
        find . -maxdepth 1 \( -name 'KelUtils-*.exe' -o -name 'KelUtils-*.zip' \) -printf '%P\n' | LC_ALL=C sort |
        xargs -d '\n' sha256sum -- >SHA256SUMS
)

# Gives all files of a folder the time of the package, and the rights that archives keep.
level_files() { find "$1" -exec touch -h -d "@$(package_time)" {} + -exec chmod u=rwX,go=rX {} +; }

# make_archive FOLDER ARCHIVE
make_archive() {
    level_files "$1" &&
        rm -f -- "$2" &&
        (cd -- "${1%/*}" && files_below "${1##*/}" | sed "s#^#${1##*/}/#" | TZ=UTC zip -q -9 -X -@ "$2")
}

# Compiles the set-up program that installs a folder: make_setup FOLDER VERSION OUTPUT
make_setup() {
    level_files "$1" &&
        write_lists "$1" >"$3.nsh" &&
        makensis -V2 -INPUTCHARSET UTF8 "-DLISTS=$3.nsh" "-DVERSION=$2" "-DOUTPUT=$3" "$kel_root/packaging/setup.nsi" &&
        rm -f -- "$3.nsh"
}

# Writes the macros that name the files of a folder: to install, to remove, to look whether they are
# in use. A folder goes after those in it.
write_lists() {
    local file
    printf '!macro InstallFiles\n'
    while IFS= read -r file; do
        printf 'SetOutPath "$INSTDIR%s"\nFile "%s"\n' "$(windows_folder "$file")" "$1/$file"
    done < <(files_below "$1")
    printf 'SetOutPath "$INSTDIR"\n!macroend\n!macro RemoveFiles\n'
    files_below "$1" | sed 's#/#\\#g; s#.*#Delete "$INSTDIR\\&"#'
    find "$1" -mindepth 1 -type d -printf '%P\n' | LC_ALL=C sort -r | sed 's#/#\\#g; s#.*#RMDir "$INSTDIR\\&"#'
    printf '!macroend\n!macro EachProgram MACRO\n'
    files_below "$1" | sed -n 's#.*\.\(dll\|exe\)$#!insertmacro ${MACRO} "&"#p'
    printf '!macroend\n'
}

# Prints the folder part of a path, as Windows appends it; nothing for a file without a folder.
windows_folder() {
    [[ $1 != */* ]] || tr / '\\' <<<"/${1%/*}"
}
