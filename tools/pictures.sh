# Takes a picture of every window of the library, at the two usual resolutions of a screen.

readonly picture_resolutions=(96 144) # dots per inch

# Writes docs/pictures/RESOLUTION/WINDOW.png.
take_pictures() {
    local program=$kel_build/win32/tests/wine/pictures/kel_pictures.exe resolution folder
    prepare_windows kel_pictures
    for resolution in "${picture_resolutions[@]}"; do
        folder=$kel_root/docs/pictures/$resolution
        say "taking the pictures at $resolution dots per inch"
        mkdir -p -- "$folder"
        run_wine reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d "$resolution" /f
        stop_prefix "$WINEPREFIX"
        KEL_PICTURES_FOLDER=$(windows_path "$folder") without_locks wine "$program" --gtest_brief=1 ||
            fail "a picture could not be taken"
    done
}
