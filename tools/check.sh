# Looks the code over as a model: what neither the compiler nor the tests see.

readonly check_packages=(clang clang-format clang-tidy)
readonly longest_file=500 # lines
readonly architecture_page=docs/architecture.md

# Runs every check, and fails if one of them finds something.
check_code() {
    local found=no
    lock_build
    set_up "${check_packages[@]}"
    cd -- "$kel_root"
    expect_nothing "the rooms include what the page on the architecture says" compare_rooms
    expect_nothing "no file is longer than $longest_file lines without a reason on that page" list_long_files
    expect_nothing "the code has the form of .clang-format" list_unformatted
    build_preset clang
    unlock_build
    say "ok: clang compiles the portable code without a warning"
    expect_nothing "clang-tidy finds nothing in the portable code" run_tidy
    [[ $found == no ]] || exit 1
}

# Runs a check and shows what it prints, which is to be nothing: expect_nothing PROMISE COMMAND
expect_nothing() {
    local findings
    if findings=$("$2" 2>&1) && [[ -z $findings ]]; then
        say "ok: $1"
        return
    fi
    found=yes
    printf '%s\n' "$findings"
    say "FOUND: not true that $1"
}

# The files of a kind that are ours: list_sources FIND-EXPRESSION...
list_sources() { find . -path ./build -prune -o -type f \( "$@" \) -printf '%P\n' | sort; }

compare_rooms() {
    list_sources -name '*.cpp' -o -name '*.h' | grep -v '^tests/' | tr '\n' '\0' |
        xargs -0 grep -H '^#include "' | awk -f tools/include_graph.awk "$architecture_page" -
}

# The page names a longer file, with its reason, in the paragraph on long files.
list_long_files() {
    local file lines
    while read -r lines file; do
        ((lines <= longest_file)) || grep -qF "\`$file\`" <(grep '^Longer than ' -- "$architecture_page") ||
            printf '%s: %d lines\n' "$file" "$lines"
    done < <(list_sources -name '*.cpp' -o -name '*.h' -o -name '*.idl' -o -name '*.sh' -o -name '*.awk' -o -name kel |
        tr '\n' '\0' | xargs -0 wc -l | grep -v ' total$')
}

list_unformatted() {
    list_sources -name '*.cpp' -o -name '*.h' | tr '\n' '\0' | xargs -0 clang-format --dry-run -Werror
}

# What the file of commands names is the portable code; no word of it about what is left out.
run_tidy() {
    sed -nE 's/^ *"file": "(.*)",?$/\1/p' "$kel_build/clang/compile_commands.json" | tr '\n' '\0' |
        xargs -0 -n 4 -P "$(nproc)" clang-tidy --quiet -p "$kel_build/clang" 2>/dev/null
}
