# Runs all tests and adds up what they say.

passed=0 failed=0 skipped=0

# Prints the sum; as the very last line, however the tests end.
print_sum() {
    ((passed + failed > 0)) || failed=1 # nothing that ran is no success
    if ((skipped > 0)); then
        printf '%d passed, %d failed, %d skipped\n' "$passed" "$failed" "$skipped"
    else
        printf '%d passed, %d failed\n' "$passed" "$failed"
    fi
}

# Set-up, build, all tests; fails if any does.
run_tests() {
    local prefix_maker program
    at_exit finish_tests
    ended_early=yes
    take_lock 7 "$kel_build/.test-lock" "testing"
    lock_build
    set_up "${package_tools[@]}"
    # Making the prefix is waiting for the most part.
    make_prefix &
    prefix_maker=$!
    at_exit end_process "$prefix_maker"
    build_all
    logged "making the set-up program" "$kel_build/log/package.log" pack_setup ||
        show_failure "$kel_build/log/package.log" "making the set-up program failed"
    wait "$prefix_maker" || exit
    unset 'exit_commands[-1]' # its id may be another's from now on
    unlock_build

    run_test_program "the portable core, natively" "$kel_build/native/tests/core/kel_core_tests"
    make_test_prefix
    at_exit stop_prefix "$WINEPREFIX"
    start_server
    register_libraries
    run_test_program "the portable core as 32-bit code" wine "$kel_build/win32/tests/core/kel_core_tests.exe"
    for program in "$kel_build"/win32/tests/wine/*/*_wine_tests.exe; do
        run_test_program "$(basename -- "${program%_wine_tests.exe}")" wine "$program"
    done
    [[ ! -d $kel_root/tests/end_to_end ]] || run_ctest win32 "end to end" --parallel 2 --label-regex end_to_end
    ended_early=no
    ((failed == 0)) || exit 1
}

# The last act of the test verb: a run that did not come to its end counts as a failure.
finish_tests() {
    [[ $ended_early == no ]] || failed=$((failed + 1))
    print_sum
}

# Runs a program that holds many quick tests, all in one process, and counts them. What it leaves
# unreported, for it crashed, counts as a failure: run_test_program WHAT COMMAND...
run_test_program() {
    local what=$1 report=$kel_build/reports/${1//[^A-Za-z0-9]/-}.xml output code=0
    shift
    say "testing: $what"
    mkdir -p -- "${report%/*}"
    rm -f -- "$report"
    output=$report
    [[ $1 != wine ]] || output=$(windows_path "$report")
    GTEST_OUTPUT=xml:$output without_locks timeout 300 "$@" --gtest_brief=1 2>&1 || code=$?
    count_test_program "$report" "$code"
}

# Adds the counts of a program's own report.
count_test_program() {
    local report=$1 code=$2 ran=0 bad=0
    if [[ -r $report ]]; then
        ran=$(count_lines '<testcase .* status="run"' "$report")
        bad=$(sed -nE 's/^<testsuites .* failures="([0-9]+)".*/\1/p' "$report")
    fi
    ((code == 0 || bad > 0)) || bad=1
    ((ran > 0)) || bad=1
    passed=$((passed + ran - (ran > 0 ? bad : 0))) failed=$((failed + bad))
}

# Runs some tests of a build folder and counts them: run_ctest FOLDER WHAT [CTEST OPTIONS...]
run_ctest() {
    local folder=$kel_build/$1 what=$2 report=$kel_build/reports/$1-${2//[^A-Za-z0-9]/-}.xml code=0 counts
    shift 2
    say "testing: $what"
    mkdir -p -- "${report%/*}"
    rm -f -- "$report"
    without_locks ctest --test-dir "$folder" --timeout 120 --output-on-failure --no-tests=error \
        --output-junit "$report" "$@" 2>&1 || code=$?
    count_report "$report" "$code"
}

# Adds the counts of a report. A test whose program is missing counts as failed, and so does a
# runner that fails without a failed test.
count_report() {
    local report=$1 code=$2 ran=0 bad=0 left=0
    if [[ -r $report ]]; then
        ran=$(count_lines '<testcase .* status="run"' "$report")
        left=$(count_lines '<testcase .* status="disabled"|<skipped message="SKIP_' "$report")
        bad=$(($(count_lines '<testcase ' "$report") - ran - left))
    fi
    ((code == 0 || bad > 0)) || bad=1
    ((ran + bad > 0)) || bad=1
    passed=$((passed + ran)) failed=$((failed + bad)) skipped=$((skipped + left))
}

# Prints how many lines of a file match.
count_lines() { grep -cE -- "$1" "$2" || true; }
