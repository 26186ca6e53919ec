# Draws the table of './dev bench scaling' as SVG: time for each item over the number of items, or of threads, both
# logarithmic, one panel for each family. awk -v axis=items -f bench/plot.awk build/scaling.csv
BEGIN {
    FS = ","
    split("#1f77b4 #d62728 #2ca02c #9467bd #ff7f0e #8c564b #17becf #7f7f7f #bcbd22 #e377c2", colours, " ")
    width = 380; height = 250; left = 52; top = 34; legend = 15; columns = 2
}
NR > 1 && $2 == axis {
    if (!($1 in cases)) families[++familyCount] = $1
    name = substr($0, index($0, "\"") + 1)
    name = substr(name, 1, length(name) - 1)
    series = $1 "," name
    if (!(series in points)) names[$1, ++cases[$1]] = name
    points[series] = points[series] " " $3 ":" $4
    note($1, $3, $4)
}
function lg(value) { return log(value) / log(10) }
function note(family, n, ns) {
    if (!(family in minNs) || ns < minNs[family]) minNs[family] = ns
    if (!(family in maxNs) || ns > maxNs[family]) maxNs[family] = ns
    if (!minN || n < minN) minN = n
    if (n > maxN) maxN = n
}
function floor(value,    whole) { whole = int(value); return whole > value ? whole - 1 : whole }
function x(n) { return left + (lg(n) - lg(minN)) / (lg(maxN) - lg(minN)) * (width - left - 20) }
function y(ns) { return top + (high - lg(ns)) / (high - low) * (height - top - 26) }
function text(atX, atY, anchor, what) {
    gsub(/&/, "\\&amp;", what); gsub(/</, "\\&lt;", what)
    printf "<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"%s\">%s</text>\n", atX, atY, anchor, what
}
function line(x1, y1, x2, y2) { printf "<path d=\"M%.1f %.1fL%.1f %.1f\" class=\"grid\"/>\n", x1, y1, x2, y2 }
function amount(n) { return n >= 1000000 ? n / 1000000 " M" : n >= 1000 && axis == "items" ? n / 1000 " k" : n "" }
function time(ns) { return ns >= 1000000 ? ns / 1000000 " ms" : ns >= 1000 ? ns / 1000 " us" : ns " ns" }
function panel(family,    decade, n, i, j, count, pair, at, path, colour, dash) {
    low = floor(lg(minNs[family])); high = floor(lg(maxNs[family])) + 1
    text(left, 18, "start", family)
    for (decade = low; decade <= high; ++decade) {
        line(left, y(10 ^ decade), width - 20, y(10 ^ decade))
        text(left - 6, y(10 ^ decade) + 4, "end", time(10 ^ decade))
    }
    for (n = minN; n <= maxN * 1.01; n *= axis == "items" ? 10 : 2) text(x(n), height - 8, "middle", amount(n))
    for (i = 1; i <= cases[family]; ++i) {
        count = split(substr(points[family "," names[family, i]], 2), at, " ")
        path = ""
        for (j = 1; j <= count; ++j) {
            split(at[j], pair, ":")
            path = path sprintf("%s%.1f %.1f", j == 1 ? "M" : "L", x(pair[1]), y(pair[2]))
        }
        colour = colours[(i - 1) % 10 + 1]
        dash = ""
        if (i > 10) dash = " stroke-dasharray=\"4 3\""
        printf "<path d=\"%s\" fill=\"none\" stroke=\"%s\" stroke-width=\"1.6\"%s/>\n", path, colour,
            dash
        printf "<path d=\"M%d %.1fh16\" stroke=\"%s\" stroke-width=\"2\"%s/>\n", left, height + legend * i - 4, colour,
            dash
        text(left + 22, height + legend * i, "start", names[family, i])
    }
}
END {
    for (f = 1; f <= familyCount; ++f) {
        row = int((f - 1) / columns)
        rowHeight = height + legend * cases[families[f]] + 20
        if (rowHeight > heights[row]) heights[row] = rowHeight
    }
    for (row = 0; row in heights; ++row) { starts[row] = total; total += heights[row] }
    printf "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 %d %d\" font-family=\"sans-serif\" font-size=\"11\">\n",
        width * (familyCount < columns ? familyCount : columns), total
    print "<style>.grid { stroke: #ccc; stroke-width: 0.7 } text { fill: #333 }</style>"
    print "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>"
    for (f = 1; f <= familyCount; ++f) {
        printf "<g transform=\"translate(%d %d)\">\n", (f - 1) % columns * width, starts[int((f - 1) / columns)]
        panel(families[f])
        print "</g>"
    }
    print "</svg>"
}
