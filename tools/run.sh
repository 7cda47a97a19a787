# Runs an instrument script through kelrun, against the virtual instrument or a real one.

# Reads the arguments of `run`; sets script, device, port, tcp and options.
read_run_arguments() {
    script='' device='' port='' tcp='' options=()
    while (($# > 0)); do
        case $1 in
            --port | --tcp | --baud | --link | --var | --script-path | --system-path)
                (($# > 1)) || usage_error "$1 needs a value"
                ;;
        esac
        case $1 in
            --port)
                if [[ $2 == */* ]]; then device=$2; else port=$2; fi
                shift
                ;;
            --tcp)
                tcp=$2
                shift
                ;;
            --script-path | --system-path)
                options+=("$1" "$(windows_path "$2")")
                shift
                ;;
            --baud | --link | --var)
                options+=("$1" "$2")
                shift
                ;;
            -*) options+=("$1") ;;
            *)
                [[ -z $script ]] || usage_error "one script at a time: $script or $1"
                script=$1
                ;;
        esac
        shift
    done
    script=${script:-$kel_root/examples/deploy.kel}
}

# Tells what cannot work before anything is built.
check_run_arguments() {
    [[ -z $tcp || -z $port$device ]] || usage_error "--port and --tcp exclude each other"
    [[ $script == [A-Za-z]:* || -f $script && -r $script ]] || usage_error "cannot read $script"
    [[ -z $device || -c $device ]] || { say "no such device: $device"; exit 3; }
    [[ -z $device || -r $device && -w $device ]] || { say "no permission to use $device"; exit 3; }
}

# Sets up and builds what a run needs, then runs; ends with the exit code of kelrun.
run_script() {
    local script device port tcp options program=$kel_build/win32/hosts/kelrun/kelrun.exe
    read_run_arguments "$@"
    check_run_arguments

    lock_build
    set_up
    [[ -n $port$device$tcp ]] || build_preset native bench/instrument/virtual-instrument
    build_preset win32 server/KelUtils.dll bench/link/BenchLink.dll hosts/kelrun/kelrun.exe
    make_prefix
    enter_prefix
    register_libraries
    unlock_build

    if [[ -n $tcp ]]; then
        options+=(--tcp "$tcp")
    else
        if [[ -z $port$device ]]; then
            say "starting the virtual instrument"
            start_instrument
        fi
        [[ -z $device ]] || claim_port "$(realpath -- "$device")"
        options+=(--port "$port")
    fi
    say "running $script on ${tcp:-$port${device:+ ($device)}}"
    run_program "$program" "$(windows_path "$script")" "${options[@]}"
}

# Uses the prefix together with other runs; the last one to leave ends the Wine server.
enter_prefix() {
    use_prefix "$kel_build/prefix"
    exec 8>"$kel_build/.prefix-lock"
    if flock -n 8; then
        forget_stale_ports
    fi
    flock -s 8
    at_exit leave_prefix
    run_wine cmd /c exit || fail "Wine does not start in $WINEPREFIX (exit code $?)"
}

leave_prefix() {
    ! flock -n 8 || stop_prefix "$WINEPREFIX"
}

# Runs a Windows program and ends with its exit code. Ctrl+C reaches it as a polite request, the
# second one ends it. On a terminal Wine would put escapes around each character: it gets a pipe.
run_program() {
    local process printer sink code signals=0 seen
    exec {sink}> >(trap '' INT TERM HUP; become_detached cat)
    printer=$!
    trap 'signals=$((signals + 1)); interrupt_program' INT TERM HUP
    become_detached wine "$@" >&"$sink" 2>&1 {sink}>&- &
    process=$!
    exec {sink}>&-
    while true; do
        seen=$signals code=0
        wait "$process" || code=$?
        ((signals > seen)) || break
    done
    wait "$printer" || true
    exit "$code"
}

# Passes an interrupt on to the running program.
interrupt_program() {
    if ((signals == 1)); then
        kill -INT "$process"
    else
        kill -KILL "$process"
    fi 2>/dev/null || true
}
