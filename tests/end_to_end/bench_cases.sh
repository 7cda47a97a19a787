# The virtual instrument as its users start it: its lines and its options.

# Connects to the instrument on the network; sets `line`, on which it is told, and `heard`.
open_connection() {
    exec {line}<>"/dev/tcp/127.0.0.1/${connection[1]##*:}"
    heard=$line
}

# The same on a terminal, which the shell would change if it read from it.
open_terminal() {
    exec {line}<>"$1"
    exec {heard}< <(exec cat <&"$line")
    listener=$!
    at_exit end_process "$listener"
}

close_terminal() {
    end_process "$listener"
    exec {line}>&- {heard}<&-
}

# Says something, with the escapes of printf, and expects what comes up to the prompt.
expect_reply() {
    local reply=''
    printf '%b' "$1" >&"$line"
    IFS= read -r -t "$patience" -d '>' reply <&"$heard" || true
    # shellcheck disable=SC2053 # a pattern
    [[ $reply == $2 ]] || give_up "no answer to '$1': $(printf '%q' "$reply")"
}

# A command, without its end, is echoed before its answer.
expect_answer() { expect_reply "$1\\r" "$1"$'\r\n'"$2"$'\r\n'; }

expect_end_of_instrument() {
    process=$instrument_process
    wait_until "the end of the instrument" has_ended
    code=0
    wait "$process" || code=$?
    [[ $code == 0 ]] || give_up "the instrument failed"
}

test_an_instrument_serves_a_terminal_that_is_closed_and_reopened() {
    local line heard listener
    instrument pty --link "$folder/port" --state "$folder/state" --asleep
    [[ $(readlink -- "$folder/port") == "$(head -n 1 -- "$folder/address")" ]] || give_up "a link to something else"
    open_terminal "$folder/port"
    [[ $(stty -a <&"$line") == *-icanon*' -echo '* ]] || give_up "the terminal echoes or waits for lines"
    expect_reply '\0' $'*firmware 1.0\r\n'
    expect_answer 'set station Pier' OK
    close_terminal
    open_terminal "$folder/port"
    expect_answer 'get station' Pier
    expect_answer savesetup OK
    expect_answer 'set station Other' OK
    expect_answer restoresetup OK
    expect_answer 'get station' Pier
    kill "$instrument_process"
    expect_end_of_instrument
    [[ ! -L $folder/port ]] || give_up "the link is left"
    instrument tcp --state "$folder/state"
    open_connection
    expect_answer 'get station' Pier
}

test_an_instrument_serves_one_client_after_the_other() {
    local line heard first
    instrument tcp --vanish-after 2 --transcript "$folder/transcript"
    open_connection
    expect_reply 'ver\rhalf' $'ver\r\n*'
    first=$line
    open_connection
    exec {first}>&-
    expect_answer 'get rate' 2
    expect_reply '' ''
    expect_end_of_instrument
    grep -qF ' < get rate\r' "$folder/transcript" || give_up "no transcript"
}

test_an_instrument_lets_in_who_tells_its_gateway_the_password() {
    local line heard
    instrument tcp --gateway 'open sesame'
    open_connection
    expect_reply 'KELGATE\n' $'REFUSED\r\n'
    open_connection
    expect_reply 'KELGATE open sesame\r\nget rate\r' $'READY\r\nget rate\r\n2\r\n'
}

test_an_instrument_is_given_what_the_services_find() {
    local line heard
    instrument tcp --time-scale 1 --card empty --access-code -5 --bad-cell 1 --no-compass \
        --pressure-ramp 1000 --pressure-noise 0 --fail-after 6
    open_connection
    expect_answer card $'Files: 0\r\nUsed: 0\r\nCapacity: 8589934592\r\nRate: 57600'
    expect_answer compass 'ERROR: no compass'
    expect_answer 'firmware begin main -5' OK
    expect_answer 'firmware write 0 4b6550' OK
    expect_answer 'firmware read main 0 2' $'DATA 2 188B2170\r\nKd'
    printf 'pressure collect\r' >&"$line"
    sleep 0.6
    expect_reply '\r' $'pressure collect\r\nOK\r\n260.1* dbar\r\n\r\n'
    expect_answer ver 'ERROR: out of order'
}

test_an_instrument_ends_with_its_parent() {
    local parent
    instrument tcp
    parent=$instrument_process
    "$KEL_VIRTUAL_INSTRUMENT" --pty --parent "$parent" >"$folder/child" &
    instrument_process=$!
    at_exit end_process "$instrument_process"
    wait_until "the child's address" grep -q . "$folder/child"
    kill "$parent"
    expect_end_of_instrument
}

test_an_instrument_refuses_what_it_cannot_serve() {
    local expected arguments
    printf 'interval=60\n' >"$folder/occupied"
    printf 'interval=none\n' >"$folder/broken"
    cd -- "$folder"
    while read -r expected arguments; do
        code=0
        eval "timeout $patience \"\$KEL_VIRTUAL_INSTRUMENT\" $arguments" >/dev/null 2>&1 || code=$?
        [[ $code == "$expected" ]] || give_up "exit code $code instead of $expected: $arguments"
    done <<'ROWS'
2
2 --pty --tcp 0
2 --tcp 65536
2 --tcp
2 --pty --garble 1.5
2 --pty surplus
2 --pty --gateway ''
2 --tcp 0 --gateway-fault hang
2 --tcp 0 --gateway '' --gateway-fault sulk
2 --pty --card sulky
2 --pty --bad-cell 262144
1 --tcp 0 --listen nowhere
1 --pty --link occupied
1 --pty --state broken
0 --help
ROWS
    grep -qF 'unknown option -xy ' < <("$KEL_VIRTUAL_INSTRUMENT" --pty -xy 2>&1) || give_up "another option is named"
    [[ -f occupied && ! -L occupied ]] || give_up "a file was replaced"
}
