# How kel speaks, fails, waits for its turn and tidies up behind itself.

readonly kel_failure=70 # exit code of kel's own failures, apart from those of the programs it runs
exit_commands=()        # run at the end, the last one first

# Tells in one short line what is being done.
say() { printf 'kel: %s\n' "$*" >&2; }

# Tells why it cannot go on and ends.
fail() {
    say "$@"
    exit "$kel_failure"
}

# Ends because of the way kel was called.
usage_error() {
    say "$1; './kel help' lists what there is"
    exit 2
}

# Remembers a command for the end of kel, however that comes.
at_exit() { exit_commands+=("$(printf '%q ' "$@")"); }

run_exit_commands() {
    local code=$? index
    trap '' INT TERM HUP
    for ((index = ${#exit_commands[@]} - 1; index >= 0; index--)); do
        eval "${exit_commands[index]}" || true
    done
    exit "$code"
}

trap run_exit_commands EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM

# Ends a process that kel started, by its id, and waits until it is gone.
end_process() {
    kill "$1" 2>/dev/null || return 0
    wait "$1" 2>/dev/null || true
}

# Shows every 15 seconds how far a log has come, so that no minute is silent. Runs in a process
# of its own and waits with a builtin: a `sleep` would outlive it. Ends with the process that it
# reports for, which may be one that nobody tidies up behind: report_progress LOG PROCESS
report_progress() {
    local log=$1 idle last
    trap - EXIT
    exec {idle}<> <(:)
    while true; do
        read -r -t 15 -u "$idle" || true
        kill -0 "$2" 2>/dev/null || return 0
        last=$(tail -n 1 -- "$log" 2>/dev/null | tr -d '\r' | cut -c 1-72)
        [[ -z $last ]] || say "  ... $last"
    done
}

# Runs a command with its output in a log: logged LABEL LOG COMMAND...
logged() {
    local label=$1 log=$2 code=0 owner=$BASHPID reporter
    shift 2
    say "$label"
    mkdir -p -- "${log%/*}"
    printf '%q ' "$@" >"$log"
    echo >>"$log"
    report_progress "$log" "$owner" &
    reporter=$!
    at_exit end_process "$reporter"
    without_locks "$@" >>"$log" 2>&1 || code=$?
    end_process "$reporter"
    unset 'exit_commands[-1]'
    return "$code"
}

# Takes a lock, waiting for another kel that has it: take_lock DESCRIPTOR FILE WHAT
take_lock() {
    mkdir -p -- "${2%/*}"
    eval "exec $1>\"\$2\""
    flock -n "$1" && return
    say "waiting for another kel that is $3 in this folder"
    flock "$1"
}

# Only one kel sets up or builds in a folder.
lock_build() { take_lock 9 "$kel_build/.lock" "building"; }

# Lets the next kel build.
unlock_build() { exec 9>&-; }

# Becomes a program in a session of its own, out of the terminal's reach, without the locks of kel.
# For a background process: its id is then the program's.
become_detached() { exec setsid "$@" 7>&- 8>&- 9>&-; }

# Runs a program without the locks of kel (7 tests, 8 prefix, 9 build): what it leaves running,
# such as Wine's server, would keep them.
without_locks() { "$@" 7>&- 8>&- 9>&-; }
