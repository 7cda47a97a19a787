# Writes the page of all members from the interface descriptions: awk -f members.awk *.idl
# One attribute list stands before each item; a member and its declaration have a line each.

function help_of(line) {
    return match(line, /helpstring\(".*"\)/) ? substr(line, RSTART + 12, RLENGTH - 14) : ""
}

# The type of the type library as script authors know it.
function type_of(type) {
    gsub(/[* ]+$/, "", type)
    if (type == "BSTR") return "text"
    if (type == "VARIANT_BOOL") return "boolean"
    if (type == "VARIANT") return "any"
    if (type == "DATE") return "date"
    if (type == "IDispatch" || type == "IUnknown") return "object"
    return type ~ /^(long|int|double|unsigned char|OLE_COLOR|hyper)$/ ? "number" : type
}

# Adds a declaration, `[in] long nIndex, [out, retval] BSTR* psName` and so on, to its member.
function add_member(line,    name, parameters, count, i, parts, words, given, result, value) {
    name = line
    sub(/\(.*/, "", name)
    result = name ~ /^(HRESULT|void) / ? "" : type_of(substr(name, 1, index(name, " ") - 1))
    sub(/^.* /, "", name)
    parameters = substr(line, index(line, "(") + 1)
    sub(/\);$/, "", parameters)
    gsub(/out, retval/, "retval", parameters)
    count = split(parameters, parts, ", ")
    for (i = 1; i <= count; i++) {
        words = parts[i]
        sub(/^\[[a-z]+\] */, "", words)
        value = words
        sub(/^.*[ *]/, "", value)
        sub(/[^ *]+$/, "", words)
        if (parts[i] ~ /^\[retval\]/) result = type_of(words)
        # What is put is no parameter, but the property's type.
        else if (i == count && attributes ~ /propput/) result = type_of(words)
        else given = given (given == "" ? "" : ", ") (parts[i] ~ /^\[out\]/ ? "out " : "") value ": " type_of(words)
    }
    if (!((item, name) in text)) names[item] = names[item] " " name
    text[item, name] = name (given == "" && attributes ~ /prop/ ? "" : "(" given ")") (result == "" ? "" : ": " result)
    use = attributes ~ /propget/ ? "read" : attributes ~ /propput/ ? "write" : kind[item] == "dispinterface" ? "event" : "method"
    if (!((item, name, use) in known)) uses[item, name] = uses[item, name] (uses[item, name] == "" ? "" : ", ") use
    known[item, name, use] = 1
    meaning[item, name] = help_of(attributes)
}

function print_interface(name,    count, i, list, entry) {
    if (!(name in kind) || (name in shown)) return
    shown[name] = documented[name] = 1
    if (base[name] != "") print_interface(base[name])
    count = split(names[name], list, " ")
    if (count == 0) return
    printf "\n`%s`: %s%s.\n\n| Member | Use | Meaning |\n|---|---|---|\n", name, title[name], \
        base[name] == "IUnknown" ? " (not for script languages)" : ""
    for (i = 1; i <= count; i++) {
        entry = meaning[name, list[i]]
        gsub(/\|/, "\\|", entry)
        use = uses[name, list[i]] == "write, read" ? "read, write" : uses[name, list[i]]
        printf "| `%s` | %s | %s |\n", text[name, list[i]], use, entry
    }
}

# A class is told of only when it has members.
function print_class(name,    count, i, list, any) {
    count = split(interfaces[name], list, " ")
    for (i = 1; i <= count; i++) any = any names[list[i]] names[base[list[i]]]
    if (any == "") return
    printf "\n## %s\n\n%s.\n", name, title[name]
    split("", shown)
    for (i = 1; i <= count; i++) print_interface(list[i])
}

/^\[/ || /^    \[(prop|id)/ { attributes = "" }
/helpstring\("/ || /^    \[/ { attributes = attributes $0 }
/^(interface|dispinterface) [A-Za-z_0-9]+( : [A-Za-z0-9]+)?$/ {
    item = $2
    kind[item] = $1
    base[item] = $4
    title[item] = help_of(attributes)
    items[++item_count] = item
}
/^coclass / {
    item = $2
    title[item] = help_of(attributes)
    classes[++class_count] = item
}
/^typedef enum / {
    item = $3
    enumerations[++enumeration_count] = item
    title[item] = help_of(attributes)
}
/^    .*interface [A-Za-z_0-9]+;$/ {
    sub(/;$/, "", $NF)
    interfaces[item] = interfaces[item] " " $NF
}
/^    [A-Za-z_]+ = [0-9]+,?$/ { names[item] = names[item] (names[item] == "" ? "" : ", ") "`" $1 "` " $3 + 0 }
/^    [A-Za-z_]+ [A-Za-z_0-9]+\(.*\);$/ { add_member(substr($0, 5)) }

END {
    print "# Members\n"
    print "All components with the interfaces that they answer, then the other objects. `./kel members` writes this page from the help strings in `interfaces/`, which object browsers show too; [Using KelUtils from a program](hosting.md) tells what the components are for. In script languages an object has the members of all its interfaces; `write` alone is a property that is only put, `out` a parameter that gives something back. Indices begin at 0."
    for (n = 1; n <= class_count; n++) print_class(classes[n])
    print "\n## Other objects"
    for (n = 1; n <= item_count; n++) {
        split("", shown)
        for (name in documented) shown[name] = 1
        print_interface(items[n])
    }
    print "\n## Enumerations\n"
    for (n = 1; n <= enumeration_count; n++) printf "`%s`: %s. %s.\n", enumerations[n], title[enumerations[n]], names[enumerations[n]]
}
