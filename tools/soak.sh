# Repeats for long what the tests do a few times, and prints what came of it.

readonly soak_openings=1000
readonly soak_minutes=30

# Opens and closes every window, lets every call of the platform fail, makes every component, and runs
# scripts for half an hour, beside instruments in trouble; looks for what is left behind.
soak() {
    prepare_windows ui_wine_tests server_wine_tests service_wine_tests
    start_server
    local failures=0
    soak_part "every window opened $soak_openings times" ui '*OpeningsTest*' KEL_OPENING_ROUNDS="$soak_openings"
    soak_part "every component made $soak_openings times" server '*MadeAgainAndAgain*' KEL_OPENING_ROUNDS="$soak_openings"
    soak_part "every call of the platform fails under every window" ui '*PlatformFaultsTest*' KEL_EVERY_FAULT=1
    soak_part "instruments in every mood after every command" service '*TroubledInstruments*' KEL_EVERY_TROUBLE=1
    soak_part "the recorder's download cancelled at 200 random moments" service '*CancelledAtAnyMoment*' KEL_RECORDER_ROUNDS=200
    soak_part "scripts beside a terminal for $soak_minutes minutes" service 'LongRunTest.*' KEL_SOAK_MINUTES="$soak_minutes"
    ((failures == 0)) || fail "$failures of the parts above found something"
}

# Runs tests of a room in a soaking way: soak_part WHAT ROOM TESTS NAME=VALUE.
soak_part() {
    local what=$1 program=$kel_build/win32/tests/wine/$2/$2_wine_tests.exe start=$SECONDS code=0
    local log=$kel_build/log/soak-$2-${3//[^A-Za-z]/}.log # a room may have several parts
    without_locks env "$4" wine "$program" --gtest_filter="$3" >"$log" 2>&1 || code=$?
    # A filter that fits nothing proves nothing.
    grep -q '^\[  PASSED  \] [1-9]' -- "$log" || code=1
    grep -E '^([0-9]+ runs|cancel): ' -- "$log" || true
    if ((code == 0)); then
        printf '%-64s nothing found  %5d s\n' "$what" "$((SECONDS - start))"
    else
        printf '%-64s FAILED         %5d s\n' "$what" "$((SECONDS - start))"
        grep -B 20 -E '^\[  FAILED' -- "$log" | head -n 60 >&2 || tail -n 20 -- "$log" >&2
        failures=$((failures + 1))
    fi
}
