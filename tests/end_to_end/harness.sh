# What the tests are written with: an instrument, a run of kelrun, and what is expected of it.

readonly time_scale=10 # how much faster than real time the link and the instrument work
readonly patience=30   # seconds; only a failing test waits that long

export KEL_BENCH_TIME_SCALE=$time_scale
folder=$(mktemp -d)
at_exit rm -rf -- "$folder"
output=$folder/output errors=$folder/errors
code='' process=''

# Ends the test, with all that is known about the last run.
give_up() {
    printf 'FAILED: %s\nexit code: %s\n' "$*" "$code" >&2
    head -n 60 -- "$output" "$errors" >&2 || true
    exit 1
}

# Waits until a command succeeds: wait_until WHAT COMMAND...
wait_until() {
    local what=$1 end=$((SECONDS + patience))
    shift
    until "$@"; do
        ((SECONDS < end)) || give_up "waited in vain for $what"
        sleep 0.02
    done
}

# Starts the virtual instrument with further options; sets `connection` to the options of kelrun,
# and `instrument_process`.
instrument() {
    local kind=$1 transport address
    shift
    case $kind in
        pty) transport=(--pty) ;;
        tcp) transport=(--tcp 0) ;;
    esac
    rm -f -- "$folder/address" # of an earlier one
    become_detached "$KEL_VIRTUAL_INSTRUMENT" "${transport[@]}" --time-scale "$time_scale" \
        --parent $$ "$@" >"$folder/address" 2>"$folder/instrument" &
    instrument_process=$!
    at_exit end_process "$instrument_process"
    wait_until "the address of the instrument" grep -q . "$folder/address"
    address=$(head -n 1 -- "$folder/address")
    case $kind in
        pty) claim_port "$address" && connection=(--port "$port") ;;
        tcp) connection=(--tcp "127.0.0.1:${address##*:}") ;;
    esac
}

# Writes a script, with the escapes of printf, and prints its path: script NAME TEXT
script() {
    printf '%b' "$2" >"$folder/$1"
    windows_path "$folder/$1"
}

# Begins a run; sets `process`.
start_kelrun() {
    code=running
    become_detached wine "$KEL_RUN" "$@" >"$output" 2>"$errors" &
    process=$!
    at_exit end_process "$process"
}

has_ended() { ! kill -0 "$process" 2>/dev/null; }

# Waits for the end of the run; sets `code`.
finish_kelrun() {
    wait_until "the end of kelrun" has_ended
    code=0
    wait "$process" || code=$?
}

# Runs to the end: kelrun EXPECTED_CODE ARGUMENTS...
kelrun() {
    local expected=$1
    shift
    start_kelrun "$@"
    finish_kelrun
    [[ $code == "$expected" ]] || give_up "exit code $code instead of $expected: kelrun $*"
}

# Runs a program that checks links: link_program EXPECTED_CODE PROGRAM ARGUMENTS...
link_program() {
    local expected=$1
    shift
    code=0
    wine "$@" 2>"$errors" | tr -d '\r' >"$output" || code=$?
    [[ $code == "$expected" ]] || give_up "exit code $code instead of $expected: $*"
}

# Expects lines in a file, in this order; others may stand between them. A line is whole, or ends
# in ... for any rest: expect FILE LINE...
expect() {
    local file=$1 line
    shift
    while (($# > 0)) && { IFS= read -r line || [[ -n $line ]]; }; do
        if [[ $line == "$1" ]] || [[ $1 == *... && $line == "${1%...}"* ]]; then
            shift
        fi
    done <"$file"
    (($# == 0)) || give_up "no line '$1' in ${file##*/}"
}

# Expects one line on standard error and nothing else.
expect_only_error() {
    expect "$errors" "$1"
    [[ $(grep -c . "$errors") == 1 && ! -s $output ]] || give_up "more than '$1'"
}
