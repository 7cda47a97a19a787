# Runs the desktop host, against the virtual instrument or a real one, on the user's display.

# Options that take a value; what only this machine knows is translated.
start_desk() {
    local display=${DISPLAY:-} authority=${XAUTHORITY:-$HOME/.Xauthority}
    local program=$kel_build/win32/hosts/keldesk/keldesk.exe device='' port='' options=() has_target=no
    while (($# > 0)); do
        case $1 in
            --port | --tcp | --baud | --link)
                (($# > 1)) || usage_error "$1 needs a value"
                [[ $1 == --baud || $1 == --link ]] || has_target=yes
                if [[ $1 == --port && $2 == */* ]]; then device=$2; else options+=("$1" "$2"); fi
                shift
                ;;
            -*) usage_error "desk has no option $1" ;;
            *) options+=("$(windows_path "$1")") ;;
        esac
        shift
    done
    [[ -z $device || -c $device ]] || { say "no such device: $device"; exit 3; }
    check_display "$display"

    lock_build
    set_up
    [[ $has_target == yes ]] || build_preset native bench/instrument/virtual-instrument
    build_preset win32 server/KelUtils.dll bench/link/BenchLink.dll hosts/keldesk/keldesk.exe
    make_prefix
    enter_prefix
    register_libraries
    unlock_build

    if [[ $has_target == no ]]; then
        say "starting the virtual instrument"
        start_instrument
    fi
    if [[ -n $device ]]; then
        claim_port "$(realpath -- "$device")"
        options+=(--port "$port")
    fi
    # The prefix needs no display; this one desktop has one.
    export DISPLAY=$display XAUTHORITY=$authority
    say "starting keldesk${port:+ on $port}"
    without_locks wine explorer "/desktop=keldesk,$desk_size,x11" "$(windows_path "$program")" "${options[@]}"
}

readonly desk_size=1000x700

# Tells what is missing before anything is built.
check_display() {
    local number=${1#*:}
    if [[ -z $1 ]]; then
        say "keldesk needs an X display, and DISPLAY is not set. In a graphical session it is;"
        say "elsewhere 'xvfb-run -a ./kel desk' gives it one that nobody sees."
        exit 2
    fi
    if [[ $1 == :* && ! -S /tmp/.X11-unix/X${number%%.*} ]]; then
        say "keldesk needs an X display, and $1 (DISPLAY) does not answer."
        exit 2
    fi
}
