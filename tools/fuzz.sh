# Explores what hostile input can do, with clang's libFuzzer.

readonly fuzz_packages=(clang libclang-rt-14-dev)
readonly fuzz_targets=(parse run restore recall filter replay report)
readonly fuzz_quiet=1800 # seconds without a new edge after which a longer search ends

# Builds fuzzers and lets them search: fuzz [MINUTES] [TARGET...]. Fails on a finding.
fuzz() {
    local minutes=30 folder=$kel_build/fuzz target found=no at_once rounds first
    local -a targets batch
    local -A process log started edges last_new
    if [[ ${1:-} =~ ^[1-9][0-9]{0,4}$ ]]; then
        minutes=$1
        shift
    fi
    targets=("$@")
    (($# > 0)) || targets=("${fuzz_targets[@]}")
    for target in "${targets[@]}"; do
        [[ " ${fuzz_targets[*]} " == *" $target "* ]] ||
            usage_error "fuzz takes a number of minutes and some of: ${fuzz_targets[*]}"
    done
    lock_build
    set_up "${fuzz_packages[@]}"
    build_preset fuzz "${targets[@]/#/kel_fuzz_}"
    unlock_build
    take_lock 7 "$folder/.fuzz-lock" "fuzzing"

    mkdir -p -- "$folder/findings"
    # As many at once as there are processors, each for its share of the time.
    at_once=$(nproc)
    rounds=$(((${#targets[@]} + at_once - 1) / at_once))
    for ((first = 0; first < ${#targets[@]}; first += at_once)); do
        batch=("${targets[@]:first:at_once}")
        for target in "${batch[@]}"; do start_fuzzer "$target" "$((minutes * 60 / rounds))"; done
        watch_fuzzers "${batch[@]}"
        for target in "${batch[@]}"; do report_fuzzer "$target"; done
        [[ $found == no ]] || exit 1
    done
}

# Starts a target in the background: start_fuzzer TARGET SECONDS
start_fuzzer() {
    local target=$1 seconds=$2 corpus=$kel_root/tests/fuzz/corpus/$1 dictionary=$1
    local -a words=()
    [[ $target != parse && $target != run ]] || dictionary=script
    dictionary=$kel_root/tests/fuzz/$dictionary.dict
    [[ ! -f $dictionary ]] || words=("-dict=$dictionary")
    log[$target]=$kel_build/log/fuzz-$target.log
    started[$target]=$SECONDS last_new[$target]=$SECONDS edges[$target]=0
    mkdir -p -- "$folder/corpus/$target" "$kel_build/log"
    : >"${log[$target]}"
    say "fuzzing: $target, for at most $((seconds / 60)) minutes"
    become_detached nice "$folder/tests/fuzz/kel_fuzz_$target" "$folder/corpus/$target" "$corpus" \
        -max_total_time="$seconds" -max_len=2048 -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
        "${words[@]}" -artifact_prefix="$folder/findings/$target-" \
        </dev/null >"${log[$target]}" 2>&1 &
    process[$target]=$!
    at_exit end_process "$!"
}

# Waits for targets and tells how far they are. Ends all of them on the first finding, and when
# none has reached a new edge for long: watch_fuzzers TARGET...
watch_fuzzers() {
    local target running quiet idle ticks=0
    exec {idle}<> <(:)
    while true; do
        running=0 quiet=yes
        for target in "$@"; do
            look_at_fuzzer "$target"
            ! kill -0 "${process[$target]}" 2>/dev/null || running=$((running + 1))
            ((SECONDS - last_new[$target] >= fuzz_quiet)) || quiet=no
            ((ticks % 6 > 0)) || say "  ... $target: ${edges[$target]} edges after $((SECONDS - started[$target])) s"
        done
        ((running > 0)) && [[ $quiet == no ]] && ! has_findings "$@" || break
        ticks=$((ticks + 1))
        read -r -t 5 -u "$idle" || true
    done
    exec {idle}>&-
    # An interrupted fuzzer still prints its sums.
    for target in "$@"; do
        kill -INT "${process[$target]}" 2>/dev/null || true
        wait "${process[$target]}" || true
        look_at_fuzzer "$target"
    done
}

# Notes when a target has reached an edge that it never had.
look_at_fuzzer() {
    local target=$1 now
    now=$(grep -aoE ' cov: [0-9]+' -- "${log[$target]}" | tail -n 1 | tr -dc 0-9) || true
    ((${now:-0} > edges[$target])) || return 0
    edges[$target]=$now last_new[$target]=$SECONDS
}

# Prints the file that holds a target's finding of this search, if there is one.
finding_of() { sed -nE "s/.*Test unit written to (.*)/\1/p" -- "${log[$1]}" | tail -n 1; }

has_findings() {
    local target
    for target in "$@"; do
        [[ -z $(finding_of "$target") ]] || return 0
    done
    return 1
}

# The sum of a target. One that ends otherwise than at its time has found something.
report_fuzzer() {
    local target=$1 executions finding quiet
    executions=$(sed -nE 's/^stat::number_of_executed_units: +//p' -- "${log[$target]}" | tail -n 1)
    finding=$(finding_of "$target")
    quiet=$((SECONDS - last_new[$target]))
    if ((quiet >= fuzz_quiet)); then
        quiet="none in the last 30 minutes"
    else
        quiet="the last new one $((quiet / 60)) min $((quiet % 60)) s before the end"
    fi
    say "fuzzing: $target: ${executions:-0} executions, ${edges[$target]} edges, $quiet"
    if [[ -n $finding ]]; then
        found=yes
        say "FOUND by $target: $finding"
        say "    replay: ${folder#"$PWD/"}/tests/fuzz/kel_fuzz_$target $finding"
    elif ((${executions:-0} == 0)); then
        found=yes
        say "FAILED: $target executed nothing, see ${log[$target]}"
    fi
}
