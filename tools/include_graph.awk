# Compares what the sources include with the page on the architecture: awk -f THIS PAGE INCLUDES,
# where INCLUDES has lines as grep prints them, FILE:#include "OTHER". Prints what differs.

# The room that a file stands in: the one of the table whose name is the longest beginning.
function room_of(file,    room, best) {
    best = ""
    for (room in uses)
        if (index(file, room "/") == 1 && length(room) > length(best)) best = room
    return best
}

# Whether a room uses another, itself or through those that it uses.
function reaches(room, other,    names, count, i) {
    if (room == other) return 1
    count = split(uses[room], names, " ")
    for (i = 1; i <= count; i++)
        if (reaches(names[i], other)) return 1
    return 0
}

# Where a room stands in the line of arrows; 0 for those outside it.
function layer_of(room) {
    while (room != "" && !(room in layer)) room = substr(room, 1, match(room, /\/[^\/]*$/) - 1)
    return room == "" ? 0 : layer[room]
}

function differ(text) {
    print text
    differs = 1
}

# A row of the table: | `room/` | what is there | `used`, `used` |
FNR == NR && /^\| `[^`]*\/`.*\|$/ {
    split($0, columns, /`/)
    room = substr(columns[2], 1, length(columns[2]) - 1)
    count = split($0, cells, "|")
    list = cells[count - 1]
    joins[room] = sub(/all of the above/, "", list)
    gsub(/[`,]/, "", list)
    uses[room] = joins[room] ? above list : list
    above = above " " room
}

FNR == NR && /^Arrows point one way: / {
    split($0, columns, /`/)
    depth = split(columns[2], steps, "→")
    for (i = 1; i <= depth; i++) {
        gsub(/[{},]/, " ", steps[i])
        count = split(steps[i], names, " ")
        for (j = 1; j <= count; j++) layer[names[j]] = i
    }
}

FNR == NR { next }

{
    colon = index($0, ":")
    file = substr($0, 1, colon - 1)
    split($0, columns, /"/)
    from = room_of(file)
    to = room_of(columns[2])
    if (from == "" || to == "" || from == to) next
    seen[from " " to] = 1
    if (!reaches(from, to)) differ(file ": " from " does not use " to " by the table")
    if (layer_of(from) > layer_of(to) && layer_of(to) > 0)
        differ(file ": the arrows do not lead from " from " to " to)
}

END {
    if (depth == 0) differ("the page has no line of arrows")
    for (room in uses) {
        if (joins[room]) continue # put together from those, whether it names them or not
        count = split(uses[room], names, " ")
        for (i = 1; i <= count; i++) {
            if (!(names[i] in uses)) differ("the table has no row for " names[i] ", which " room " uses")
            else if (!((room " " names[i]) in seen)) differ("no file of " room " includes any of " names[i])
        }
    }
    exit differs
}
