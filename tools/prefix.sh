# The private Wine prefixes below the build folder: made once, used for runs, copied for tests.

# Points Wine at a prefix, and its home and caches below the build folder.
use_prefix() {
    export WINEPREFIX=$1 WINEARCH=win32 WINEDEBUG=-all LC_ALL=C.UTF-8
    export WINEDLLOVERRIDES='winemenubuilder.exe,winedbg.exe=d'
    export HOME=$kel_build/home XDG_CACHE_HOME=$kel_build/home/.cache XDG_CONFIG_HOME=$kel_build/home/.config
    export XDG_DATA_HOME=$kel_build/home/.local/share
    unset DISPLAY WAYLAND_DISPLAY
    mkdir -p -- "$HOME"
}

# Runs a Windows program quietly.
run_wine() { without_locks wine "$@" >/dev/null 2>&1; }

# Ends the Wine server of a prefix of ours, and with it all that runs there.
stop_prefix() {
    [[ -d $1/dosdevices ]] || return 0
    WINEPREFIX=$1 wineserver -k 2>/dev/null || true
    WINEPREFIX=$1 wineserver -w 2>/dev/null || true
}

# Makes the prefix, unless it stands already.
make_prefix() {
    local prefix=$kel_build/prefix state
    state="$(wine --version) $(cat -- "$kel_root/tools/prefix.sh" "$kel_root/tools/prefix.reg" | cksum)"
    use_prefix "$prefix"
    [[ $(cat -- "$prefix/.made" 2>/dev/null) != "$state" ]] || return 0
    stop_prefix "$prefix"
    rm -rf -- "$prefix"
    logged "making the Wine prefix build/prefix" "$kel_build/log/prefix.log" fill_prefix ||
        show_failure "$kel_build/log/prefix.log" "making the Wine prefix failed"
    printf '%s\n' "$state" >"$prefix/.made"
}

# Fonts, registry and a copy of the registry as it was before any use.
fill_prefix() {
    # No offer to download what HTML and .NET programs would need.
    WINEDLLOVERRIDES="$WINEDLLOVERRIDES;mscoree,mshtml=d" wine wineboot -i &&
        cp -- /usr/share/wine/fonts/*.ttf /usr/share/wine/fonts/*.fon "$WINEPREFIX/drive_c/windows/Fonts/" &&
        wine regedit /S "$(windows_path "$kel_root/tools/prefix.reg")" &&
        wineserver -w &&
        mkdir -p -- "$WINEPREFIX/.pristine" &&
        cp -- "$WINEPREFIX"/*.reg "$WINEPREFIX/.pristine/"
}

# Prints a path of this machine as Windows programs see it; a path of theirs stays as it is.
windows_path() {
    local path=$1
    case $path in
        [A-Za-z]:* | *\\*) ;;
        /*) path=Z:${path//\//\\} ;;
        *) path=Z:${PWD//\//\\}\\${path//\//\\} ;;
    esac
    printf '%s' "$path"
}

# Registers our libraries in the prefix in use, unless these very files are.
register_libraries() {
    local state library libraries=("$kel_build/win32/server/KelUtils.dll" "$kel_build/win32/bench/link/BenchLink.dll")
    state=$(sha256sum -- "${libraries[@]}") || fail "a library to be registered is missing"
    [[ $(cat -- "$WINEPREFIX/.registered" 2>/dev/null) != "$state" ]] || return 0
    for library in "${libraries[@]}"; do
        say "registering ${library##*/}"
        run_wine regsvr32 /s "$(windows_path "$library")" ||
            fail "regsvr32 failed on $library (exit code $?)"
    done
    printf '%s\n' "$state" >"$WINEPREFIX/.registered"
}

# Makes a copy of the prefix, with the registry as it was before any use, and uses it.
copy_prefix() {
    stop_prefix "$1"
    rm -rf -- "$1"
    mkdir -- "$1"
    cp -a --reflink=auto -- "$kel_build/prefix"/{drive_c,dosdevices,.update-timestamp} "$1/"
    cp -- "$kel_build/prefix/.pristine"/*.reg "$1/"
    use_prefix "$1"
}

# A throw-away copy for the tests.
make_test_prefix() {
    say "copying the Wine prefix for the tests"
    copy_prefix "$kel_build/test-prefix"
}

# Starts a server that stays, with Wine's helpers already running and holding no pipe of ours:
# else each test would wait for the helpers that it started itself. One of them, the desktop, goes a
# second after the last window; a program with a window of its own keeps it. A server that runs
# already would not stay.
start_server() {
    stop_prefix "$WINEPREFIX"
    without_locks wineserver -p >/dev/null 2>&1 || fail "the Wine server does not start"
    become_detached wine notepad >/dev/null 2>&1 &
    at_exit end_process "$!"
    run_wine regsvr32 /s scrrun.dll
}

# Sets up and builds what opens the library's windows, in a throw-away prefix: prepare_windows TARGETS...
prepare_windows() {
    take_lock 7 "$kel_build/.test-lock" "testing"
    lock_build
    set_up
    build_preset win32 server/KelUtils.dll bench/link/BenchLink.dll "$@"
    make_prefix
    unlock_build
    make_test_prefix
    at_exit stop_prefix "$WINEPREFIX"
    register_libraries
}
