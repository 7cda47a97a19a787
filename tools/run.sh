# Runs an instrument script through kelrun, against the virtual instrument or a real one.

# Reads the arguments of `run`; sets script, diagnose, device, port, tcp, needs_line, options, for what
# stands after `--`, arguments, and last_flag, the last option that was taken as one without a value. Only
# what this machine sees differently from Windows programs is looked at, the rest is kelrun's affair.
read_run_arguments() {
    script='' diagnose='' last_flag='' device='' port='' tcp='' needs_line=yes options=() arguments=()
    while (($# > 0)); do
        if [[ $1 == -- ]]; then
            shift
            [[ -n $script ]] || { script=${1:-}; shift "$(($# > 0))"; }
            arguments=("$@")
            break
        fi
        if [[ $1 == --?*=* ]]; then
            set -- "${1%%=*}" "${1#*=}" "${@:2}"
        fi
        case $1 in
            --port | --tcp | --baud | --app | --link | --var | --answer | --host | --script-path | --system-path | --transcript | --report | --record | --replay | --speed)
                (($# > 1)) || usage_error "$1 needs a value"
                read_run_option "$1" "$2"
                shift
                ;;
            --last) needs_line=last options+=("$1") ;;
            --diagnose) needs_line=no diagnose=yes options+=("$1") ;;
            --check | --help | --version) needs_line=no options+=("$1") ;;
            -*) options+=("$1") last_flag=$1 ;;
            *)
                [[ -z $script ]] || usage_error "one script at a time: $script or $1"
                script=$1
                ;;
        esac
        shift
    done
    script=${script:-$kel_root/examples/deploy.kel}
    # A device that nobody opens need not be there. Devices and the virtual instrument get the first
    # port unless other runs use it, so a recording was most likely made there.
    case $needs_line in
        no) device='' ;;
        last) [[ -z $port$device$tcp ]] || usage_error "--last or a connection, not both" ;;
        replay)
            device=''
            [[ -n $port$tcp ]] || port=COM$first_port
            ;;
    esac
}

read_run_option() {
    case $1 in
        --port | --tcp) [[ -z $port$device$tcp ]] || usage_error "one --port or --tcp at a time" ;;
    esac
    case $1 in
        --replay)
            [[ $needs_line == no ]] || needs_line=replay
            options+=("$1" "$(windows_path "$2")")
            ;;
        --port) if [[ $2 == */* ]]; then device=$2; else port=$2; fi ;;
        --tcp) tcp=$2 ;;
        --host | --script-path | --system-path | --transcript | --report | --record) options+=("$1" "$(windows_path "$2")") ;;
        *) options+=("$1" "$2") ;;
    esac
}

# Tells what cannot work before anything is built.
check_run_arguments() {
    [[ $script == [A-Za-z]:* || -f $script && -r $script ]] ||
        usage_error "cannot read the script $script${last_flag:+; ./kel run --help tells whether $last_flag takes a value}"
    [[ -z $device || -c $device ]] || { say "no such device: $device"; exit 3; }
    [[ -z $device || -r $device && -w $device ]] || { say "no permission to use $device"; exit 3; }
}

# Sets up and builds what a run needs, then runs; ends with the exit code of kelrun.
run_script() {
    local script diagnose last_flag device port tcp needs_line options arguments program=$kel_build/win32/hosts/kelrun/kelrun.exe
    read_run_arguments "$@"
    check_run_arguments

    lock_build
    set_up
    [[ -n $port$device$tcp || $needs_line == no || $needs_line == last ]] || build_preset native bench/instrument/virtual-instrument
    build_preset win32 server/KelUtils.dll bench/link/BenchLink.dll hosts/kelrun/kelrun.exe
    make_prefix
    enter_prefix
    register_libraries
    unlock_build

    [[ -z $diagnose ]] || run_program "$program" "${options[@]}"
    if [[ $needs_line == no || $needs_line == last ]]; then
        run_program "$program" "$(script_name)" "${options[@]}" -- "${arguments[@]}"
    fi
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
    say "running ${script#"$kel_root/"} on ${tcp:-$port${device:+ ($device)}}"
    run_program "$program" "$(script_name)" "${options[@]}" -- "${arguments[@]}"
}

# Prints the script's name for kelrun, which tells of mistakes by it: a relative one stays as the user
# and his editor know it.
script_name() {
    case $script in
        /* | -* | *\\* | [A-Za-z]:*) windows_path "$script" ;;
        *) printf '%s' "$script" ;;
    esac
}

# Uses the prefix together with other runs; the last one to leave ends the Wine server.
enter_prefix() {
    use_prefix "$kel_build/prefix"
    exec 8>"$kel_build/.prefix-lock"
    flock -s 8
    at_exit leave_prefix
    forget_stale_ports
    run_wine cmd /c exit || fail "Wine does not start in $WINEPREFIX (exit code $?)"
}

leave_prefix() {
    ! flock -n 8 || stop_prefix "$WINEPREFIX"
}

# Runs a Windows program and ends with its exit code. Ctrl+C reaches it as a request, also the
# second one; the third one ends it by force. On a terminal Wine would put escapes around each
# character: it gets pipes, a single one where both outputs go to the same place, to keep their
# order.
run_program() {
    local process printers output errors code signals=0 seen
    exec {output}> >(become_detached cat)
    printers=($!)
    if [[ /dev/fd/1 -ef /dev/fd/2 ]]; then
        exec {errors}>&"$output"
    else
        exec {errors}> >(become_detached cat >&2)
        printers+=($!)
    fi
    trap 'signals=$((signals + 1)); interrupt_program' INT TERM HUP
    become_detached wine "$@" >&"$output" 2>&"$errors" {output}>&- {errors}>&- &
    process=$!
    exec {output}>&- {errors}>&-
    while true; do
        seen=$signals code=0
        wait "$process" || code=$?
        ((signals > seen)) || break
    done
    wait "${printers[@]}" || true
    exit "$code"
}

# Passes an interrupt on to the running program.
interrupt_program() {
    if ((signals <= 2)); then
        kill -INT "$process"
    else
        kill -KILL "$process"
    fi 2>/dev/null || true
}
