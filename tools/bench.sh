# Measures the script engine beside m4 and Lua, and what a user feels of it through COM.

readonly bench_packages=(m4 lua5.4)
readonly bench_rounds=5
readonly bench_sizes=(10000 100000 1000000)

# Builds, compares the outputs of all, measures and prints the tables. A missed target is told and
# is no failure.
run_bench() {
    local folder=$kel_build/bench/runs native=$kel_build/bench/bench/speed/kel_speed
    local windows=$kel_build/win32/bench/speed samples=$kel_build/bench/runs/samples
    lock_build
    set_up "${bench_packages[@]}"
    ! is_emulated || say "32-bit programs are emulated here: what is measured under Wine says nothing about the product"
    build_preset bench kel_speed
    build_preset native bench/instrument/virtual-instrument
    build_preset win32 server/KelUtils.dll bench/link/BenchLink.dll bench/speed/kel_speed.exe bench/speed/kel_reaction.exe bench/speed/kel_recorder.exe bench/speed/kel_pane.exe
    make_prefix
    enter_prefix
    register_libraries
    unlock_build
    take_lock 7 "$kel_build/bench/.lock" "measuring"

    mkdir -p -- "$folder"
    local lines language
    for lines in "${bench_sizes[@]}"; do
        for language in kel m4 lua; do
            awk -v language="$language" -v lines="$lines" -f "$kel_root/bench/speed/generate.awk" \
                </dev/null >"$folder/$lines.$language"
        done
    done
    compare_outputs
    : >"$samples"
    measure_speed
    awk -f "$kel_root/bench/speed/speed_table.awk" "$samples"
    measure_reactions
    awk -f "$kel_root/bench/speed/reaction_table.awk" "$folder/reactions"
}

# Runs one of the four over its script: run_speed KIND LINES OUTPUT. What kel_speed measured itself
# goes to its standard output.
run_speed() {
    local script=$folder/$2
    case $1 in
        native) "$native" "$script.kel" "$3" ;;
        wine) without_locks wine "$windows/kel_speed.exe" "$(windows_path "$script.kel")" "$(windows_path "$3")" 2>/dev/null ;;
        m4) m4 "$script.m4" >"$3" ;;
        lua) lua5.4 "$script.lua" >"$3" ;;
    esac
}

# Nothing is timed before all have done the same work.
compare_outputs() {
    local lines kind
    say "comparing the outputs of the engine, m4 and Lua"
    for lines in "${bench_sizes[@]}"; do
        for kind in native wine m4 lua; do
            run_speed "$kind" "$lines" "$folder/output.$kind" >/dev/null || fail "$kind failed on $lines lines"
            cmp -s -- "$folder/output.native" "$folder/output.$kind" || fail "$kind gives another output on $lines lines"
        done
    done
}

# Writes a line for each run: kind, lines, nanoseconds of the process, those that the program counted
# itself, peak memory, size of the script. The kinds take turns.
measure_speed() {
    local lines round kind before after own
    for lines in "${bench_sizes[@]}"; do
        say "measuring $lines lines, $bench_rounds rounds"
        for ((round = 0; round < bench_rounds; ++round)); do
            for kind in native m4 lua wine; do
                before=${EPOCHREALTIME/[.,]/}
                run_speed "$kind" "$lines" "$folder/output.$kind" >"$folder/own"
                after=${EPOCHREALTIME/[.,]/}
                read -r own <"$folder/own" || own='0 0'
                printf '%s %s %s %s %s\n' "$kind" "$lines" "$(((after - before) * 1000))" "${own//$'\r'/}" \
                    "$(stat -c %s -- "$folder/$lines.kel")" >>"$samples"
            done
        done
    done
}

# The first megabyte of the longest script, to whole lines, is what the first byte is waited for.
measure_reactions() {
    say "measuring through COM and the output pane (four minutes)"
    head -c 1048576 -- "$folder/1000000.kel" | sed '$d' >"$folder/megabyte.kel"
    : >"$folder/reactions"
    measure_windows kel_reaction "$(windows_path "$folder/megabyte.kel")"
    measure_recorder
    measure_windows kel_pane
}

# Adds the figures that one of the Windows programs prints: measure_windows PROGRAM [ARGUMENT].
measure_windows() {
    local program=$1
    shift
    without_locks timeout 900 wine "$windows/$program.exe" "$@" </dev/null 2>"$kel_build/log/$program.log" |
        tr -d '\r' >>"$folder/reactions" ||
        show_failure "$kel_build/log/$program.log" "the measurement of $program failed"
}

# The recorder's dialog on two instruments: one with many files, one with a large one.
measure_recorder() {
    local card address tries ports=()
    mkdir -p -- "$folder/card"
    for card in many large; do
        become_detached "$kel_build/native/bench/instrument/virtual-instrument" --tcp 0 --card "$card" --parent $$ \
            >"$folder/address.$card" 2>&1 </dev/null &
        at_exit end_process $!
        for ((tries = 0; tries < 1500; tries++)); do
            [[ ! -s $folder/address.$card ]] || break
            sleep 0.02
        done
        address=$(head -n 1 -- "$folder/address.$card")
        [[ $address =~ ^[0-9]+$ ]] || fail "the virtual instrument does not start: $address"
        ports+=("$address")
    done
    measure_windows kel_recorder "${ports[@]}" "$(windows_path "$folder/card")"
    rm -rf -- "$folder/card"
}
