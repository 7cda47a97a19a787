# Repeats often what the tests do a few times.

readonly soak_openings=1000

# Opens and closes every window and looks for what is left behind.
soak() {
    prepare_windows ui_wine_tests
    say "opening every window $soak_openings times"
    KEL_OPENING_ROUNDS=$soak_openings without_locks wine "$kel_build/win32/tests/wine/ui/ui_wine_tests.exe" \
        --gtest_filter='*OpeningsTest*' 2>&1 || fail "something was left behind"
}
