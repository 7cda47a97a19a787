# From a figure and its rounds, a line each, to the table: milliseconds first, then what its title says. The worst round decides.

BEGIN {
    title["first-byte"] = "first byte of 1 MB of script after the call"; target["first-byte"] = 50
    title["next-line"] = "from OK to the next line, beyond the waits"; target["next-line"] = 5
    split("#WAIT #WAIT_OK #WAIT_PROMPT", waits)
    for (i in waits) { title[waits[i]] = "cancel during " waits[i]; target[waits[i]] = 1000 }
    title["many-options"] = "a dialog of 10,000 options"; target["many-options"] = 500
    title["many-connections"] = "a dialog of 1,000 connections"; target["many-connections"] = 1000
    title["recorder-listing"] = "10,000 files on a card, beyond the link"; target["recorder-listing"] = 500
    title["recorder-answers"] = "99 of 100 answers during a download"; target["recorder-answers"] = 50
    title["pieces-64"] = "64-byte pieces, times as fast as bare"; target["pieces-64"] = 10; isLeast["pieces-64"] = 1
    title["pieces-256"] = "256-byte pieces, times as fast as bare"; target["pieces-256"] = 10; isLeast["pieces-256"] = 1
    title["megabytes"] = "a megabyte at the limit, % over the last one"; target["megabytes"] = 20
    title["answers"] = "99 of 100 answers at 115 KB/s, milliseconds"; target["answers"] = 50
    title["rate"] = "KB/s taken of 115 while it answers"; target["rate"] = 110; isLeast["rate"] = 1
    title["idle"] = "an idle terminal, % of a core"; target["idle"] = 1
    print "\nmilliseconds"
    printf "%-46s %9s %9s %9s\n", "", "median", "worst", "target"
}
$1 == "pieces-64" { print "\noutput pane" }
{
    for (i = 2; i <= NF; ++i) list[i - 1] = $i + 0
    n = NF - 1
    for (i = 2; i <= n; ++i)
        for (j = i; j > 1 && list[j] < list[j - 1]; --j) { swap = list[j]; list[j] = list[j - 1]; list[j - 1] = swap }
    worst = isLeast[$1] ? list[1] : list[n]
    isMet = isLeast[$1] ? worst >= target[$1] : worst <= target[$1]
    printf "%-46s %9.1f %9.1f %9d  %s\n", title[$1], list[int((n + 1) / 2)], worst, target[$1], isMet ? "met" : "MISSED"
}
