# From samples (kind, lines, process ns, own ns, peak bytes, script bytes) to the table. Ratios are
# taken within each round; every figure is the median of its rounds.

function median(list, count,    i, j, swap) {
    for (i = 2; i <= count; ++i)
        for (j = i; j > 1 && list[j] < list[j - 1]; --j) { swap = list[j]; list[j] = list[j - 1]; list[j - 1] = swap }
    return count % 2 ? list[(count + 1) / 2] : (list[count / 2] + list[count / 2 + 1]) / 2
}

function of(kind, lines, field,    list, i) {
    for (i = 1; i <= rounds[kind, lines]; ++i) list[i] = sample[kind, lines, field, i]
    return median(list, rounds[kind, lines])
}

function ratio(kind, other, lines,    list, i) {
    for (i = 1; i <= rounds[kind, lines]; ++i)
        list[i] = sample[kind, lines, "process", i] / sample[other, lines, "process", i]
    return median(list, rounds[kind, lines])
}

function verdict(name, value, target, unit) {
    printf "%-52s %8.2f%-2s target %6.2f%-2s %s\n", name, value, unit, target, unit, value <= target ? "met" : "MISSED"
}

{
    n = ++rounds[$1, $2]
    sample[$1, $2, "process", n] = $3 / $2
    sample[$1, $2, "own", n] = $4 / $2
    sample[$1, $2, "memory", n] = $5 / $6
    if (!($2 in seen)) { seen[$2] = 1; sizes[++count] = $2 }
}

END {
    last = sizes[count]
    print "nanoseconds a line"
    printf "%9s | %8s %8s %8s %8s | %8s %8s | %8s %8s\n", "", "whole", "process", "", "", "engine", "only", "process", "ratio"
    printf "%9s | %8s %8s %8s %8s | %8s %8s | %8s %8s\n", "lines", "native", "m4", "Lua", "Wine", "native", "Wine", "to m4", "to Lua"
    for (i = 1; i <= count; ++i) {
        l = sizes[i]
        printf "%9d | %8.0f %8.0f %8.0f %8.0f | %8.0f %8.0f | %8.2f %8.2f\n", l, of("native", l, "process"),
            of("m4", l, "process"), of("lua", l, "process"), of("wine", l, "process"), of("native", l, "own"),
            of("wine", l, "own"), ratio("native", "m4", l), ratio("native", "lua", l)
    }
    print ""
    verdict("native time of " last " lines, share of m4's", ratio("native", "m4", last), 1 / 3, "")
    verdict("native growth a line, " sizes[1] " to " last " lines", 100 * (of("native", last, "own") / of("native", sizes[1], "own") - 1), 10, " %")
    verdict("32-bit growth a line, " sizes[1] " to " last " lines", 100 * (of("wine", last, "own") / of("wine", sizes[1], "own") - 1), 10, " %")
    verdict("32-bit peak memory at " last " lines, script files", of("wine", last, "memory"), 8, "")
}
