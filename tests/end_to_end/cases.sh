# The tests: each function test_... is one. Tables have a row for each run.

readonly tab=$'\t' firmware='Kel virtual field instrument, firmware 1.0'

# The example script, command by command with its answers.
expect_deployment() {
    expect "$output" "$firmware" '>sernum' 'Serial Number: D123.' \
        '>defaults' OK '>set station Harbour_mouth-D123' OK '>clock set ...' OK \
        '>set interval 900' OK '>set declination -1.5' OK '>set burst 1024' OK '>set rate 4' OK \
        '>pressoffset set -10.132' OK '>savesetup' OK '>erase' OK '>deploy' OK '>status' \
        'Station: Harbour_mouth-D123' 'State: deployed ...' '>sleep' OK
    expect "$errors" 'kelrun: deploy.kel ran to its end (...'
    ! grep -q $'\r' "$output" || give_up "a carriage return in the dialogue"
}

test_deploys_over_pty() {
    instrument pty
    kelrun 0 "$(windows_path "$kel_root/examples/deploy.kel")" "${connection[@]}"
    expect_deployment
}

test_deploys_over_tcp() {
    instrument tcp
    kelrun 0 "$(windows_path "$kel_root/examples/deploy.kel")" "${connection[@]}"
    expect_deployment
}

# The connection of a run is the last one, also for another that names it.
test_connects_as_the_last_time() {
    local path kind
    path=$(script asks.kel 'sernum\n')
    for kind in pty tcp; do
        instrument "$kind"
        kelrun 0 "$path" "${connection[@]}"
        kelrun 0 "$path" --last
        expect "$output" 'Serial Number: D123.'
        end_process "$instrument_process"
        kelrun 3 "$path" --last --app kelrun
    done
    expect "$errors" 'kelrun: no connection: Failed to connect to 127.0.0.1 : ...'
    kelrun 3 "$path" --last --app 'never there'
    expect "$errors" "kelrun: no connection: No connection is remembered for 'never there'"
}

test_stops_failing_scripts() {
    local text place message caret path
    instrument tcp
    while IFS='|' read -r text place message caret; do
        path=$(script fails.kel "$text")
        kelrun 1 "$path" "${connection[@]}"
        expect "$output" "ERROR: $message"
        expect "$errors" "$path:$place: error: $message" "$caret" 'kelrun: fails.kel stopped on an error'
        kelrun 1 "$path" "${connection[@]}" --quiet
        [[ ! -s $output ]] || give_up "a dialogue in spite of --quiet"
        expect "$errors" "ERROR: $message" 'kelrun: fails.kel stopped on an error'
    done <<'ROWS'
ver\n%nosuch|2:2|Variable not found: nosuch| ^
@x=nosuch()|1:4|Unknown function: nosuch|   ^
@x=no|1:4|Variable not found: no|   ^ a text needs double quotes: "no"
#NOSUCH|1:1|Unknown preprocessor directive: NOSUCH|^
ROWS
    # Of a further script; and what else is to be found.
    script inner.kel 'ver\n@x=no\n' >/dev/null
    kelrun 1 "$(script fails.kel '#RUNSCRIPT inner.kel\nset %depth\n')" "${connection[@]}"
    expect "$errors" "$(windows_path "$folder/inner.kel"):2:4: error: Variable not found: no" '@x=no' \
        '   ^ a text needs double quotes: "no"' 'kelrun: fails.kel stopped on an error' \
        'kelrun: --check shows 1 warning besides'
}

test_checks_scripts_without_running_them() {
    local path text='"([^"\\[:cntrl:]]|\\(["\\nrt]|u00[0-9a-f]{2}))*"' object
    path=$(script wrong.kel 'ver\r\n\t@ü y"\001\\\\\nset ü %depth %given')
    kelrun 1 "$path" --check --port COM99 --var given=1
    diff "$output" - >&2 <<LINES || give_up "not what the check was to show"
$path:2:4: error: Invalid expression 'ü y"␁\\\\'
$tab@ü y"␁\\\\
$tab  ^
$path:3:8: warning: Variable not found: depth
set ü %depth %given
       ^
LINES
    [[ ! -s $errors ]] || give_up "words beside the check"
    kelrun 1 "$path" --check --json
    object="\\{\"file\":$text,\"line\":[0-9]+,\"column\":[0-9]+,\"severity\":$text,\"message\":$text\\}"
    diff <(sed -E "s/^$object(,?)$/object\\7/" "$output") <(printf '[\nobject,\nobject,\nobject\n]\n') >&2 || give_up "no JSON"
    grep -qF '"line":2,"column":4,"severity":"error","message":"Invalid expression '"'"'ü y\"\u0001\\\\' "$output" || give_up "no message"
    kelrun 0 "$(script warned.kel '#IF x == "1"')" --check
}

test_does_not_start_scripts_with_errors() {
    local path
    instrument tcp
    path=$(script wrong.kel 'ver\n#MSGBOX "x\n%nosuch\n')
    kelrun 1 "$path" "${connection[@]}"
    expect "$errors" "$path:2:9: error: Unterminated string" '#MSGBOX "x' '        ^' \
        'kelrun: wrong.kel was not started: it has 1 error (...' 'kelrun: --check shows 1 warning besides'
    ! grep -q 'warning:' "$errors" && [[ ! -s $output ]] || give_up "more than the error"
    kelrun 1 "$path" "${connection[@]}" --keep-going
    expect "$output" 'ERROR: Unterminated string' "$firmware" 'ERROR: Variable not found: nosuch'
}

test_answers_questions() {
    local path
    path=$(script asks.kel '#MSGBOX "Ready?"\n@depth=input("How deep", "")\n@rig=select("Rig", "a", "b c")\n')
    kelrun 0 "$path" --answer msgbox=ok --answer 'depth=12' --answer 'Rig=b c' --print-variables
    expect "$output" depth=12 'rig=b c'
    kelrun 1 "$path" --answer msgbox=ok
    expect "$errors" "$path:2:1: error: No answer was set for depth"
    kelrun 1 "$path"
    expect "$errors" "$path:1:1: error: No answer was set for msgbox"
}

test_prints_variables_also_of_a_failed_run() {
    kelrun 1 "$(script fails.kel '@x="1"\n@a=x\n%nosuch\n')" --print-variables --var 'url=http://"x"' \
        --var $'two=1\n2' --quiet
    diff "$output" - >&2 <<<$'url=http://"x"\ntwo=1␊2\nx=1\na=1' || give_up "other variables"
}

test_writes_a_transcript() {
    local inner transcript=$folder/transcript
    instrument tcp
    inner=$(script inner.kel '\n@x="1"\n%nosuch\n')
    kelrun 1 "$(script outer.kel 'ver\n#RUNSCRIPT inner.kel\n')" "${connection[@]}" \
        --transcript "$(windows_path "$transcript")"
    [[ $(grep -cE '^\{"ms":[0-9]+,"kind":"[a-z]+","text":.*,"file":.*,"line":[0-9]+(,"code":1)?\}$' "$transcript") == \
        $(wc -l <"$transcript") ]] || give_up "a line of another form"
    sed -E 's/.*"kind":"([a-z]+)","text":"(.*)","file":".*[\\](.*)","line":([0-9]+)/\1 \3:\4 \2/' "$transcript" >"$output"
    expect "$output" 'line outer.kel:1 ver}' 'sent outer.kel:1 ver}' "received outer.kel:1 $firmware\\r\\n}" \
        'line outer.kel:2 #RUNSCRIPT inner.kel}' 'line inner.kel:2 }' 'line inner.kel:3 }' \
        'echo inner.kel:3 \r\nERROR: Variable not found: nosuch}' 'result inner.kel:3 ...'
    kelrun 2 "$inner" --transcript "$(windows_path "$folder/none/transcript")"
    expect_only_error "kelrun: Z:..."
}

test_writes_a_report() {
    local report=$folder/report.html
    instrument tcp
    kelrun 1 "$(script hostile.kel 'ver\nset station <b>&\n%nosuch\n')" "${connection[@]}" \
        --report "$(windows_path "$report")"
    expect "$report" "<dt>Connection<dd>${connection[1]}" \
        '<dt>Result<dd class="failed">Failed (exit code 1): Z:...'
    sed -E 's/<td>[0-9:.]+<td>/<td>/' "$report" >"$output"
    expect "$output" '<tr class="line"><td>1<td>line<td>ver</tr>' '<tr class="sent"><td>1<td>sent<td>ver</tr>' \
        "<tr class=\"received\"><td>1<td>received<td>$firmware</tr>" \
        '<tr class="sent"><td>2<td>sent<td>set station &lt;b&gt;&amp;</tr>' \
        '<tr class="error"><td>3:2<td>error<td>Variable not found: nosuch</tr>' \
        '<tr class="result"><td>3<td>result<td>...' '</table>' '</body>' '</html>'

    # What has happened so far is there, whatever becomes of kelrun.
    start_kelrun "$(script long.kel 'ver\n#WAIT 3000\n')" "${connection[@]}" --report "$(windows_path "$report")"
    wait_until "the second line" grep -qF '<td>line<td>#WAIT 3000</tr>' "$report"
    end_process "$process"
    expect "$report" '<dt>Result<dd class="failed">Not ended: ...' '</html>'

    kelrun 1 "$(script wrong.kel '#MSGBOX "x\n')" --report "$(windows_path "$report")"
    grep -qF '<td>1:9<td>error<td>Unterminated string</tr>' "$report" || give_up "no error of the check"
}

# Libraries stand in the current folder under the names of those that are wanted.
test_takes_no_library_from_the_current_folder() {
    local name here=$folder/here path
    mkdir -- "$here" "$folder/alone"
    for name in KelTrace atl comctl32 comdlg32 gdiplus msvcrt oleaut32 uxtheme version winspool; do
        cp -- "$KEL_LINK" "$here/$name.dll"
    done
    cp -- "$KEL_RUN" "$folder/alone"
    path=$(script empty.kel '@x="1"\n')
    cd -- "$here"
    WINEDEBUG=+loaddll kelrun 0 "$path"
    grep -qiF '\KelUtils.dll' "$errors" || give_up "what is loaded is not told"
    ! grep -iF '\here\' "$errors" || give_up "a library of the current folder was loaded"
    KEL_RUN=$folder/alone/kelrun.exe kelrun 5 "$path" --record "$(windows_path "$folder/recording")"
    expect_only_error 'kelrun: KelTrace.dll beside kelrun cannot be loaded: ...'
}

# A replay needs no instrument; a changed script is told where it leaves the recording.
test_records_and_replays() {
    local path recording dialogue=$folder/dialogue
    recording=$(windows_path "$folder/recording")
    instrument tcp
    path=$(script ver.kel 'ver\n#WAIT 5\nsernum\n')
    kelrun 0 "$path" "${connection[@]}" --record "$recording"
    expect "$output" "$firmware" 'Serial Number: D123.'
    cp -- "$output" "$dialogue"
    end_process "$instrument_process"
    kelrun 0 "$path" "${connection[@]}" --replay "$recording" --speed 0
    diff "$dialogue" "$output" >&2 || give_up "another dialogue"
    kelrun 1 "$(script ver.kel 'ver\n#WAIT 5\nstatus\n')" "${connection[@]}" --replay "$recording" --speed 0
    expect "$errors" "$path:3: error: The replay leaves its recording at $path, line 3: ..."
    [[ $(grep -c 'leaves its recording' "$errors") == 1 ]] || give_up "the difference is told twice"
    kelrun 1 "$(script ver.kel 'ver\n')" "${connection[@]}" --replay "$recording" --speed 0
    expect "$errors" "kelrun: The replay leaves its recording at $path, line 1: ..."
    kelrun 2 "$path" --replay "$path"
    expect_only_error "kelrun: $path: ..."
}

test_refuses_wrong_usage_and_unreadable_files() {
    local missing arguments message
    missing=$(windows_path "$folder/missing.kel")
    mkdir -- "$folder/folder.kel"
    while IFS='|' read -r message arguments; do
        eval "kelrun 2 $arguments"
        expect_only_error "kelrun: $message..."
    done <<'ROWS'
which script?|
there is no option --prot|a.kel --prot COM3
--var a: a character is not in|"$(script a.kel ver)" --var a=漢
--answer a: a character is not in|"$(script a.kel ver)" --answer a=漢
Z:|"$missing"
Z:|"$(windows_path "$folder/folder.kel")"
Z:|"$(script half.kel '\0377\0376v')"
Z:|"$(script binary.kel 'MZ\0000')"
ROWS
    kelrun 2 "$missing"
    expect_only_error "kelrun: $missing cannot be read: there is no such file"
    kelrun 0 --help
    expect "$output" 'usage: kelrun SCRIPT [OPTIONS]...'
}

test_reports_what_it_cannot_connect_to() {
    local text where reason
    ln -s -- "$folder" "$WINEPREFIX/dosdevices/com40"
    at_exit rm -f -- "$WINEPREFIX/dosdevices/com40"
    text=$(script ver.kel ver)
    while IFS='|' read -r where reason; do
        kelrun 3 "$text" "${where% *}" "${where#* }"
        expect_only_error "kelrun: no connection: $reason..."
    done <<'ROWS'
--port COM99|COM99: there is no such port
--port COM40|COM40: the port is busy
--tcp 127.0.0.1:1|127.0.0.1:1: connection refused
--tcp no.such.host.invalid:80|no.such.host.invalid:80: unknown host
--tcp localhost|'localhost' is not HOST:PORT
ROWS
}

test_tells_why_a_gateway_lets_nobody_in() {
    local fault reason
    while IFS='|' read -r fault reason; do
        instrument tcp --gateway '' --gateway-fault "$fault"
        kelrun 3 "$(script ver.kel ver)" --tcp "gate:${connection[1]}"
        expect_only_error "kelrun: no connection: gate:${connection[1]}: $reason..."
    done <<'ROWS'
refuse|connection refused
drop|the other end closed the connection
hang|no answer
ROWS
}

test_cancels_at_the_first_interrupt() {
    instrument tcp
    start_kelrun "$(script long.kel 'ver\n#WAIT 300000\nsernum\n')" "${connection[@]}"
    wait_until "the first answer" grep -q firmware "$output"
    kill -INT "$process"
    finish_kelrun
    [[ $code == 4 ]] || give_up "not cancelled"
    expect "$output" 'ERROR: Execution cancelled!'
    expect "$errors" 'kelrun: long.kel was cancelled after ...'
    ! grep -q sernum "$output" || give_up "went on after the interrupt"
}

# A word of a host script that hangs does not look whether the run was cancelled.
test_ends_at_the_second_interrupt() {
    local host
    host=$(script host.js "function f() { dialogue.print('ready'); while (true) {} }\nextender.SetHandlers(f, f);\nextender.InstallDirective('HANG');\n")
    instrument tcp
    start_kelrun "$(script hangs.kel '#HANG\n')" "${connection[@]}" --host "$host"
    wait_until "the host script" grep -q ready "$output"
    wait_until "the end" interrupt_again
    finish_kelrun
    [[ $code == 4 && ! -s $errors ]] || give_up "not ended by the second interrupt"
}

# As long as no run has begun, the first one does.
test_ends_at_an_interrupt_before_the_run() {
    local host
    host=$(script host.js "dialogue.print('ready'); while (true) {}\n")
    instrument tcp
    start_kelrun "$(script waits.kel 'status\n')" "${connection[@]}" --host "$host"
    wait_until "the host script" grep -q ready "$output"
    kill -INT "$process"
    finish_kelrun
    [[ $code == 4 && ! -s $errors ]] || give_up "not ended as cancelled, but with $code"
}

interrupt_again() {
    kill -INT "$process" 2>/dev/null || true
    has_ended
}

# A form or a message box is closed by one, whether it is open already or about to open.
test_closes_a_form_at_the_first_interrupt() {
    local block
    instrument tcp
    for block in '#DIALOG "Form"\nn=SERIALNUMBER()\nn=input("Number")\n#ENDDIALOG' '#MSGBOX (SERIALNUMBER())'; do
        start_kelrun "$(script form.kel "$block\nstatus\n")" "${connection[@]}" --interactive
        wait_until "the instrument's answer" grep -q 'Serial Number' "$output"
        kill -INT "$process"
        finish_kelrun
        [[ $code == 4 ]] || give_up "not cancelled"
        expect "$errors" 'kelrun: form.kel was cancelled after ...'
        ! grep -q State: "$output" || give_up "went on after the interrupt"
    done
}

# kel passes options on, but has to tell a value from the name of the script.
test_kel_knows_which_options_take_a_value() {
    local option count=0
    while read -r option; do
        "$kel_root/kel" run no.kel "$option" 2>"$errors" && give_up "a run without a script"
        expect "$errors" "kel: $option needs a value..."
        count=$((count + 1))
    done < <(sed -nE 's/^    \{"(--[a-z-]+)", "[A-Z].*/\1/p' "$kel_root/hosts/kelrun/model/options.cpp")
    ((count >= 14)) || give_up "only $count options were found"
}

# What a newcomer types; kel itself is tested nowhere else.
test_runs_by_the_one_command() {
    code=0
    env -u KEL_BENCH_TIME_SCALE "$kel_root/kel" run "$kel_root/examples/set-clock.kel" \
        >"$output" 2>"$errors" || code=$?
    [[ $code == 0 ]] || give_up "kel run failed"
    expect "$output" '>clock set ...' OK
    expect "$errors" 'kel: running examples/set-clock.kel on COM...' 'kelrun: set-clock.kel ran to its end (...'
}

# What changes from run to run, such as the date, is the same in every dialogue.
steady_dialogue() {
    sed -E 's#[0-9]{4}/[0-9]{2}/[0-9]{2} [0-9:]{8}#DATE TIME#g; s/^COM[0-9]+:/COM:/; s/[0-9]+\.[0-9]{3} dbar [0-9. -]+ deg/READING/; /^>?clock set/s#[0-9/]+ [0-9:]+$#DATE TIME#'
}

# Each example, with its options, has the dialogue that stands in the file of its name.
test_runs_the_examples() {
    local name options
    while IFS='|' read -r name options; do
        instrument pty
        # Unquoted: the options are words without blanks.
        kelrun 0 "$(windows_path "$kel_root/examples/$name.kel")" "${connection[@]}" $options
        steady_dialogue <"$output" | diff "$kel_root/tests/end_to_end/examples/$name.txt" - >&2 ||
            give_up "another dialogue of $name"
        end_process "$instrument_process"
    done <<'ROWS'
deploy|
deploy-form|--answer place=Pier --answer plan=average --answer interval=600 --answer declination=2.5 --answer erase=1
set-clock|
change-baud|
offsets|
mission|
acceptance|--answer msgbox=ok --answer tester=Ada --answer level=yes
ROWS
}

# Whether the answer or the line that waits for it comes first is a matter of time.
expect_dialogue_of_host() {
    expect "$output" 'Line 5'
    grep -v '^Line 5$' "$output" | diff "$kel_root/tests/end_to_end/examples/host-offset.txt" - >&2 ||
        give_up "another dialogue"
}

# The example of a host script, as the manual shows it; recorded and replayed.
test_runs_with_a_host_script() {
    local recording example=$kel_root/examples/host
    recording=$(windows_path "$folder/recording")
    diff <(blocks javascript "$kel_root/docs/kelrun.md") <(cat "$example/units.js" && echo '-- end') >&2 ||
        give_up "the manual shows another script"
    set -- "$(windows_path "$example/offset.kel")" --host "$(windows_path "$example/units.js")"
    instrument pty
    kelrun 0 "$@" "${connection[@]}" --record "$recording" --transcript "$(windows_path "$folder/transcript")" -- 14.7
    expect_dialogue_of_host
    grep -q '"kind":"received","text":"Line 4' "$folder/transcript" || give_up "not in the transcript"
    kelrun 1 "$@" "${connection[@]}" -- nothing
    expect "$output" 'pressoffset set NaN' 'Line 5 went wrong: ...' '3 lines ran, the last one failed'
    end_process "$instrument_process"
    kelrun 0 "$@" "${connection[@]}" --replay "$recording" --speed 0 -- 14.7
    expect_dialogue_of_host
    kelrun 0 "$@" "${connection[@]}" --replay "$recording" --speed 0 --quiet -- 14.7
    [[ ! -s $output && ! -s $errors ]] || give_up "words in spite of --quiet"
    kelrun 1 "$@" "${connection[@]}" --replay "$recording" --speed 0 -- 10
    kelrun 0 "$1" --check
    grep -q 'Unknown function: dbar' "$output" || give_up "dbar is known without its script"
    kelrun 0 "$@" --check --json
    [[ $(<"$output") == $'[\n]' ]] || give_up "more than the check"
}

# What a host script does beside adding the words tide and ODD.
test_tells_errors_of_a_host_script() {
    local expected place text path host
    path=$(script asks.kel '@x=tide()\n#ODD\n@z=tide()\n')
    while IFS='|' read -r expected place text; do
        host=$(script host.js "function f(n) { return 1; }\nextender.SetHandlers(f, f);\nextender.InstallFunction('tide'); extender.InstallDirective('ODD');\n$text")
        kelrun "$expected" "$path" --host "$host" --print-variables
        expect "$errors" "${place/#HOST/$host}"
    done <<'ROWS'
0|kelrun: asks.kel ran to its end...|
1|HOST:4:9: error: Syntax error|var a = ;
1|HOST:5:3: error: Object expected|\n  noSuch();
1|HOST:5:3: error: no tide|function onRunStarted() {\n  throw new Error('no tide');\n}
1|HOST:4:53: error: no tide|function onLineStarted(file, line) { if (line == 3) throw new Error('no tide'); }
1|HOST:4:34: error: Object expected|function onRunEnded(succeeded) { noSuch(); }
1|HOST:4:19: error: 'nothing'...|f = function () { return nothing.here; };\nextender.SetHandlers(f, f);
1|HOST:4:1: error: The command line has no argument 0|commandLine.Item(0);
ROWS
    ! grep -q . "$output" || give_up "ran in spite of the error"
    host=$(script host.js "dialogue.print('ready');")
    path=$(script sets.kel '@x="1"\n')
    kelrun 0 "$path" --host "$host"
    expect "$output" ready
    kelrun 0 "$path" --host "$host" --check
    expect "$errors" ready
    [[ ! -s $output ]] || give_up "more than the check"
    host=$(windows_path "$folder/missing.js")
    kelrun 2 "$path" --host "$host"
    expect_only_error "kelrun: $host cannot be read: there is no such file"
}

# Without an instrument; the file was written by --record.
test_replays_an_example() {
    local recording changed
    recording=$(windows_path "$kel_root/tests/end_to_end/examples/offsets.trace")
    kelrun 0 "$(windows_path "$kel_root/examples/offsets.kel")" --port COM3 --replay "$recording" --speed 0
    steady_dialogue <"$output" | diff "$kel_root/tests/end_to_end/examples/offsets.txt" - >&2 ||
        give_up "another dialogue"
    changed=$(script offsets.kel "$(sed s/10.132/10.2/ "$kel_root/examples/offsets.kel")")
    kelrun 1 "$changed" --port COM3 --replay "$recording" --speed 0
    expect "$errors" "$changed:15: error: The replay leaves its recording..."
}

test_reads_every_encoding_and_line_end() {
    local encoding mark end path
    instrument tcp
    while IFS='|' read -r encoding mark end; do
        path=$(script text.utf8 "${mark}set station Süd$end//$end${end}ver$end")
        iconv -f UTF-8 -t "$encoding" "$folder/text.utf8" >"$folder/text.kel"
        kelrun 0 "${path%utf8}kel" "${connection[@]}"
        expect "$output" 'set station Süd' OK '>ver' "$firmware"
    done <<'ROWS'
UTF-8||\n
UTF-8|\ufeff|\r\n
UTF-16LE|\ufeff|\r\n
UTF-16BE|\ufeff|\n
CP1252||\r
ROWS
}

test_gives_up_waiting_for_a_silent_instrument() {
    instrument tcp --silent
    kelrun 1 "$(script ver.kel 'ver\n#WAIT_OK 1\nver\n')" "${connection[@]}"
    expect "$errors" 'kelrun: ver.kel stopped on an error'
}

test_survives_an_instrument_that_vanishes() {
    local kind
    for kind in tcp pty; do
        instrument "$kind" --vanish-after 2
        kelrun 1 "$(script ver.kel 'ver\nsernum\nver\nver\n')" "${connection[@]}"
        expect "$output" "$firmware"
        expect "$errors" 'kelrun: ver.kel stopped on an error'
    done
}

test_survives_a_garbling_instrument() {
    local seed
    for seed in 1 2 3; do
        instrument tcp --garble 0.5 --seed "$seed"
        kelrun 0 "$(script ver.kel 'ver\nstatus\nsernum\n')" "${connection[@]}"
        [[ -s $output ]] || give_up "no dialogue"
        ! LC_ALL=C grep -q $'[\x01-\x08\x0b-\x1f\x7f]' "$output" || give_up "control characters"
        kelrun 1 "$(script ok.kel 'status\n#WAIT_OK 1\n')" "${connection[@]}"
    done
}

test_sets_variables_and_finds_scripts() {
    instrument tcp
    mkdir -- "$folder/inner"
    script inner/inner.kel '#IF empty == ""\nset station %place\n#WAIT_OK 3\n#ENDIF\n' >/dev/null
    kelrun 0 "$(script outer.kel '#RUNSCRIPT inner.kel\n')" "${connection[@]}" --var empty= \
        --var 'place=Pier 7' --script-path "$(windows_path "$folder/inner")"
    expect "$output" 'set station Pier 7' OK
}

test_runs_without_a_connection() {
    kelrun 0 "$(script expressions.kel '@x="1"\n#IF x == "1"\n@y=x\n#ENDIF\n')"
    expect_only_error 'kelrun: expressions.kel ran to its end (...'
    kelrun 0 "$(script expressions.kel '@x="1"\n')" --quiet
    [[ ! -s $errors ]] || give_up "closing words in spite of --quiet"
    kelrun 1 "$(script ver.kel '@x="1"\nver\n')"
    expect "$errors" "$(windows_path "$folder/ver.kel"):2: error: The port is not open (IKelStream, 0x80004005)" ver \
        'kelrun: ver.kel stopped on an error (neither --port nor --tcp was given)'
}
