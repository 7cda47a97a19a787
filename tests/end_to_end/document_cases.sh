# What the documents show, and the programs that try a link by the rules in them.

# Prints the blocks of a language in a page, each followed by a line of its own.
blocks() { awk -v fence="\`\`\`$1" '$0 == "```" && on { on = 0; print "-- end" } on; $0 == fence { on = 1 }' "$2"; }

# Prints the text blocks that follow blocks of a language.
blocks_after() {
    awk -v fence="\`\`\`$1" '$0 == fence { due = 1 } $0 == "```" && on { on = 0; print "-- end" } on
        $0 == "```text" && due { on = 1; due = 0 }' "$2"
}

# Every JScript client in the documents prints what the block after it says. Those that wait for a
# user are not marked as "js" and do not run here.
test_documented_clients() {
    local page script=$folder/client.js count=0
    for page in README.md docs/hosting.md; do
        : >"$output"
        while IFS= read -r line; do
            if [[ $line == '-- end' ]]; then
                wine cscript //nologo "$(windows_path "$script")" </dev/null 2>"$errors" | tr -d '\r' >>"$output"
                printf -- '-- end\n' >>"$output"
                : >"$script"
                count=$((count + 1))
            else
                printf '%s\r\n' "$line" >>"$script"
            fi
        done < <(blocks js "$kel_root/$page")
        blocks_after js "$kel_root/$page" | diff - "$output" >&2 || give_up "a client in $page prints something else"
    done
    ((count >= 10)) || give_up "only $count clients were found"
}

test_the_page_of_members_is_current() {
    print_members | diff "$members_page" - >&2 || give_up "./kel members writes another page"
    comm -23 <(awk '$2 ~ /^(get|put|putref|call)$/ { print $3 }' "$kel_root/tests/wine/server/type_library.txt" | sort -u) \
        <(sed -nE 's/^\| `([A-Za-z_0-9]+).*/\1/p' "$members_page" | sort -u) >"$output"
    [[ ! -s $output ]] || give_up "members are missing"
}

# Both ways to the instrument, at the speed of the clock, on the network with further options; sets
# `serial` and `network`.
connect_both_ways() {
    unset KEL_BENCH_TIME_SCALE
    instrument pty
    serial=$port
    instrument tcp "$@"
    network=("${connection[1]%:*}" "${connection[1]#*:}")
}

# The rules for links, and that they find faults.
test_the_bench_link_keeps_the_rules() {
    local serial network
    connect_both_ways --gateway ''
    link_program 0 "$KEL_LINK_CONFORMANCE" BenchLink.Communicator --serial "$serial" \
        --network "gate:${network[0]}" "${network[1]}" --echoing
    ! grep -v ': ok$' "$output" || give_up "not all rules were kept"
    (($(grep -c '^serial, .* ok$' "$output") >= 20)) || give_up "rules are missing"
    link_program 0 "$KEL_LINK_CONFORMANCE" BenchLink.Communicator
    expect "$output" 'network, every received byte is echoed once, ...'
    link_program 2 "$KEL_LINK_CONFORMANCE" No.Such.Link
    instrument tcp --silent
    link_program 1 "$KEL_LINK_CONFORMANCE" BenchLink.Communicator --network 127.0.0.1 \
        "${connection[1]#*:}" --echoing
    [[ $(grep -c ': MEND: ' "$output") == 1 ]] || give_up "no word about the silent instrument, or many"
}

test_the_rules_find_faults_of_a_link() {
    local serial network
    connect_both_ways
    link_program 0 "$KEL_LINK_FAULTS" BenchLink.Communicator "$serial" "${network[@]}"
    (($(grep -c '^found: ' "$output") >= 30)) || give_up "faults were left out"
}
