# Reads the machine's own package sources and prints the main suites among them.

# Prints, in the .sources format, every source in /etc/apt (both formats) that offers the
# component main of this release or of its updates; the security suite is left out.
write_main_sources() {
    local release files
    release=$(. /etc/os-release && printf '%s' "${VERSION_CODENAME:-}")
    shopt -s nullglob
    files=(/etc/apt/sources.list /etc/apt/sources.list.d/*.list /etc/apt/sources.list.d/*.sources)
    shopt -u nullglob
    # Each file is followed by an empty line, so that the last stanza of a file ends there.
    for file in "${files[@]}"; do
        [[ -r $file ]] || continue
        awk -v release="$release" -v format="${file##*.}" "$main_sources_program" "$file"
    done
}

readonly main_sources_program='
function has(words, word,    list, count, i) {
    count = split(words, list)
    for (i = 1; i <= count; i++) if (list[i] == word) return 1
    return 0
}

function wanted(suite,    base) {
    base = suite
    sub(/-updates$/, "", base)
    return base == release || base ~ /^(old)*stable$/
}

function finish(    list, count, i, suites) {
    count = split(field["suites"], list)
    for (i = 1; i <= count; i++) if (wanted(list[i])) suites = suites " " list[i]
    if (has(field["types"], "deb") && has(field["components"], "main") && suites != "" &&
        field["uris"] !~ /cdrom:/ && tolower(field["enabled"]) !~ /no|false|off|0/) {
        print "Types: deb\nURIs:" field["uris"] "\nSuites:" suites "\nComponents: main"
        if (field["signed-by"] != "") print "Signed-By:" field["signed-by"]
        if (field["trusted"] != "") print "Trusted:" field["trusted"]
        print ""
    }
    split("", field)
}

format == "list" && /^[ \t]*deb[ \t]/ {
    line = $0
    sub(/#.*/, "", line)
    if (match(line, /\[[^]]*\]/) && line !~ /cdrom:/) {
        count = split(substr(line, RSTART + 1, RLENGTH - 2), options)
        for (i = 1; i <= count; i++) {
            split(options[i], pair, "=")
            field[tolower(pair[1])] = " " pair[2]
        }
        line = substr(line, 1, RSTART - 1) substr(line, RSTART + RLENGTH)
    }
    count = split(line, word)
    field["types"] = "deb"
    field["uris"] = " " word[2]
    field["suites"] = word[3]
    for (i = 4; i <= count; i++) field["components"] = field["components"] " " word[i]
    finish()
}

format == "sources" && /^#/ { next }
format == "sources" && /^[ \t]*$/ { finish(); next }
format == "sources" && /^[ \t]/ { field[name] = field[name] "\n" $0; next }
format == "sources" {
    name = tolower(substr($0, 1, index($0, ":") - 1))
    field[name] = substr($0, index($0, ":") + 1)
}
END { if (format == "sources") finish() }
'
