# The page of all members, made of the descriptions of the interfaces.

readonly members_page=$kel_root/docs/members.md

print_members() { awk -f "$kel_root/tools/members.awk" "$kel_root"/interfaces/*.idl; }

write_members() {
    print_members >"$members_page.new"
    mv -- "$members_page.new" "$members_page"
    say "wrote docs/members.md"
}
