# Configures and builds with the presets: the product for 32-bit Windows, the portable core natively.

# Prints the preset's name; the integration machine's twin has warnings as errors.
preset_name() {
    if [[ ${CI:-} == true ]]; then
        printf 'ci-%s' "$1"
    else
        printf '%s' "$1"
    fi
}

# Configures a preset, unless its folder already was with the same presets in the same place.
configure() {
    local folder=$kel_build/$1 preset state
    preset=$(preset_name "$1")
    state="$kel_root $preset $(cksum <"$kel_root/CMakePresets.json") $(cksum <"$kel_root/cmake/mingw-i686.cmake")"
    if [[ -e $folder/build.ninja && $(cat -- "$folder/.configured" 2>/dev/null) == "$state" ]]; then
        return
    fi
    # A cache that was made elsewhere (the folder was moved or copied) is of no use.
    if [[ -e $folder/CMakeCache.txt ]] && ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$kel_root" "$folder/CMakeCache.txt"; then
        rm -rf -- "$folder"
    fi
    rm -f -- "$folder/.configured"
    logged "configuring $1" "$kel_build/log/$1-configure.log" run_cmake --preset "$preset" ||
        show_failure "$kel_build/log/$1-configure.log" "configuring $1 failed"
    printf '%s\n' "$state" >"$folder/.configured"
}

# CMake looks for its presets in the current folder.
run_cmake() (
    cd -- "$kel_root"
    exec cmake "$@"
)

# Builds a preset, or only some of its files: build_preset PRESET [FILE...]
build_preset() {
    local name=$1 log=$kel_build/log/$1-build.log target targets=() warnings
    shift
    for target in "$@"; do
        targets+=(--target "$target")
    done
    configure "$name"
    logged "building $name" "$log" run_cmake --build --preset "$(preset_name "$name")" --parallel "$(nproc)" "${targets[@]}" ||
        show_failure "$log" "building $name failed"
    warnings=$(grep -c ' warning: ' -- "$log") || true
    ((warnings == 0)) || say "$warnings warnings, see $log"
}

# Shows what a failed step had to say, and ends.
show_failure() {
    local log=$1 from
    from=$(grep -n -m 1 -E '^(FAILED:|CMake Error)' -- "$log" | cut -d: -f1) || true
    if [[ -n $from ]]; then
        tail -n "+$from" -- "$log" | head -n 60 >&2
    else
        tail -n 40 -- "$log" >&2
    fi
    fail "$2; all of it is in $log"
}

# Everything there is.
build_all() {
    build_preset native
    build_preset win32
}
