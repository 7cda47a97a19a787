# Counts which lines and branches of the script engine the portable tests run.

readonly coverage_packages=(clang-14 llvm-14 libclang-rt-14-dev)
readonly covered_folder=script/engine

# Builds the portable tests with clang's counters, runs them and shows what they leave out.
measure_coverage() {
    local program=$kel_build/coverage/tests/core/kel_core_tests profile=$kel_build/coverage/profile
    lock_build
    set_up "${coverage_packages[@]}"
    build_preset coverage kel_core_tests
    unlock_build

    say "testing: the portable core, with counters"
    # Left out: programs that tests start would write counts into the same file, and what a fuzzer
    # found is replayed without a look at the results.
    LLVM_PROFILE_FILE=$profile.profraw timeout 300 "$program" --gtest_brief=1 \
        --gtest_filter='-VirtualInstrument.*:*Corpus*' >&2 ||
        fail "the tests failed; nothing was counted"
    llvm-profdata-14 merge -sparse -o "$profile.profdata" "$profile.profraw"
    llvm-cov-14 export -format=lcov -instr-profile="$profile.profdata" "$program" \
        "$kel_root/$covered_folder" >"$profile.lcov"
    show_coverage <"$profile.lcov"
}

# From the counters in lcov's form to a table with a row for each file, and the places that were
# not reached. An instance of a template that leaves out a branch does not count where another
# instance takes it.
show_coverage() {
    awk -v root="$kel_root/" '
        function share(part, all) { return sprintf("%5d of %5d %6.1f %%", part, all, all ? 100 * part / all : 100) }
        function row(name, l, lines, b, branches) {
            return sprintf("%-40s %s   %s", name, share(l, lines), share(b, branches))
        }
        /^SF:/ { file = substr($0, 4); sub("^" root, "", file); files[++count] = file }
        /^DA:/ {
            split(substr($0, 4), part, ",")
            ++lines[file]
            if (part[2] > 0) ++hit[file]; else missed[++misses] = file ":" part[1] ": line not reached"
        }
        /^BRDA:/ {
            split(substr($0, 6), part, ",")
            place = file ":" part[1]
            key = place SUBSEP part[2] SUBSEP part[3]
            if (!(key in taken)) { order[++keys] = key; taken[key] = 0; of[key] = file; at[key] = place; way[key] = part[3] }
            if (part[4] != "-") taken[key] += part[4]
        }
        END {
            for (i = 1; i <= keys; ++i) {
                key = order[i]
                ++branches[of[key]]
                if (taken[key] > 0) ++branchHit[of[key]]
                else missed[++misses] = at[key] ": condition never " (way[key] % 2 ? "false" : "true")
            }
            printf "%-40s %23s   %23s\n", "file", "lines", "branches"
            fflush()
            for (i = 1; i <= count; ++i) {
                file = files[i]
                print row(file, hit[file], lines[file], branchHit[file], branches[file]) | "sort"
                allHit += hit[file]; all += lines[file]; allBranchHit += branchHit[file]; allBranches += branches[file]
            }
            close("sort")
            print row("all", allHit, all, allBranchHit, allBranches)
            if (misses) print "\nnot covered:"
            for (i = 1; i <= misses; ++i) print missed[i]
        }'
}
