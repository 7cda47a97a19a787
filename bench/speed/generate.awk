# Writes one logical script in one of three languages: half of the lines are sent and hold a
# variable, a quarter are conditions, a quarter assignments. Every other condition is false.
#
#   awk -v language=kel|m4|lua -v lines=N -f generate.awk </dev/null

function assignment(name, value) {
    if (language == "kel") print "@" name "=\"" value "\""
    if (language == "m4") print "define(`" name "', `" value "')dnl"
    if (language == "lua") print name " = \"" value "\""
}

# A sent line: its words, then a variable.
function sent(words, name) {
    if (language == "kel") print words " %" name
    if (language == "m4") print words " " name
    if (language == "lua") print "write(\"" words " \", " name ", \"\\n\")"
}

function condition(name, value) {
    if (language == "kel") print "#IF " name " == \"" value "\""
    if (language == "m4") print "ifelse(" name ", `" value "', `dnl"
    if (language == "lua") print "if " name " == \"" value "\" then"
}

function conditionEnd() {
    if (language == "kel") print "#ENDIF"
    if (language == "m4") print "')dnl"
    if (language == "lua") print "end"
}

BEGIN {
    if (language == "lua") printf "local write = io.write; " # no line of its own
    for (i = 0; i < lines / 8; ++i) {
        value = i % 1000
        assignment("vdepth", value)
        sent("setdepth", "vdepth")
        condition("vdepth", i % 2 ? value : "none")
        sent("note the sensor hangs at", "vdepth")
        conditionEnd()
        assignment("vinterval", value + 5)
        sent("setinterval", "vinterval")
        sent("note samples are taken every", "vinterval")
    }
}
