# Takes a picture of every window of the library, at the two usual resolutions of a screen and in a
# scheme of high contrast.

# A folder for each set, and its dots per inch.
readonly -A picture_sets=([96]=96 [144]=144 [contrast]=96)

# Writes docs/pictures/SET/WINDOW.png.
take_pictures() {
    local program=$kel_build/win32/tests/wine/pictures/kel_pictures.exe name folder
    prepare_windows kel_pictures
    for name in 96 144 contrast; do
        folder=$kel_root/docs/pictures/$name
        say "taking the pictures for docs/pictures/$name"
        mkdir -p -- "$folder"
        run_wine reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d "${picture_sets[$name]}" /f
        [[ $name != contrast ]] || run_wine regedit /S "$(windows_path "$kel_root/tools/contrast.reg")"
        stop_prefix "$WINEPREFIX"
        KEL_PICTURES_FOLDER=$(windows_path "$folder") without_locks wine "$program" --gtest_brief=1 ||
            fail "a picture could not be taken, or something is wrong with a window"
    done
}
