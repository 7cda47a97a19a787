# From a figure and its rounds in milliseconds, a line each, to the table. The worst round decides.

BEGIN {
    title["first-byte"] = "first byte of 1 MB of script after the call"; target["first-byte"] = 50
    title["next-line"] = "from OK to the next line, beyond the waits"; target["next-line"] = 5
    split("#WAIT #WAIT_OK #WAIT_PROMPT", waits)
    for (i in waits) { title[waits[i]] = "cancel during " waits[i]; target[waits[i]] = 1000 }
    title["many-options"] = "a dialog of 10,000 options"; target["many-options"] = 500
    print "\nmilliseconds"
    printf "%-46s %9s %9s %9s\n", "", "median", "worst", "target"
}
{
    for (i = 2; i <= NF; ++i) list[i - 1] = $i + 0
    n = NF - 1
    for (i = 2; i <= n; ++i)
        for (j = i; j > 1 && list[j] < list[j - 1]; --j) { swap = list[j]; list[j] = list[j - 1]; list[j - 1] = swap }
    printf "%-46s %9.1f %9.1f %9d  %s\n", title[$1], list[int((n + 1) / 2)], list[n], target[$1],
        list[n] <= target[$1] ? "met" : "MISSED"
}
