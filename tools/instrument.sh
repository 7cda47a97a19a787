# COM ports of the prefix: a real device or the virtual instrument under a port's name.

readonly first_port=3 last_port=32

# Frees the ports of virtual instruments that an earlier kel, ended by force, left behind.
forget_stale_ports() {
    local link
    for link in "$WINEPREFIX"/dosdevices/com*; do
        [[ $(readlink -- "$link") != /dev/pts/* || -e $link ]] || rm -f -- "$link"
    done
}

# Takes a free port of the prefix and links it to a device; sets `port` to its name, as in COM3.
# Wine's server lays links of its own when it starts: only then is it known what is free.
claim_port() {
    local device=$1 number link
    for ((number = first_port; number <= last_port; number++)); do
        link=$WINEPREFIX/dosdevices/com$number
        if ln -s -- "$device" "$link" 2>/dev/null; then
            at_exit rm -f -- "$link"
            port=COM$number
            return
        fi
    done
    fail "no free COM port in $WINEPREFIX/dosdevices"
}

# Starts the virtual instrument behind a pseudo-terminal; sets `device` to its name. It leads a
# session of its own, so that Ctrl+C ends the script and not the instrument.
start_instrument() {
    local program=$kel_build/native/bench/instrument/virtual-instrument
    local folder link log process tries
    folder=$(mktemp -d "$kel_build/instrument.XXXXXX")
    at_exit rm -rf -- "$folder"
    link=$folder/line log=$folder/log
    become_detached "$program" --pty --link "$link" --parent $$ >"$log" 2>&1 &
    process=$!
    at_exit end_process "$process"
    for ((tries = 0; tries < 100; tries++)); do
        if [[ -L $link ]]; then
            device=$(readlink -- "$link")
            return
        fi
        kill -0 "$process" 2>/dev/null || break
        sleep 0.05
    done
    cat -- "$log" >&2
    fail "the virtual instrument did not start"
}
