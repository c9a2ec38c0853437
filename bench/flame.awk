# Draws a flame picture of `perf script -F comm,ip,sym` on standard input: a box for every function,
# above its caller, as wide as the part of all samples that were taken in it.
function draw(path, depth, x, width,    name, at, i, all, own) {
    name = path
    sub(/.*;/, "", name)
    if (depth > 0) {
        gsub(/&/, "\\&amp;", name); gsub(/</, "\\&lt;", name); gsub(/>/, "\\&gt;", name)
        printf "<g><title>%s %.1f %%</title><rect x='%.1f' y='%d' width='%.1f' height='15' " \
               "fill='hsl(%d,70%%,60%%)'/>", name, 100 * count[path] / count[""], x, \
               height - 16 * depth, width, 20 + (length(name) * 7) % 40
        if (width > 40)
            printf "<text x='%.1f' y='%d'>%s</text>", x + 2, height - 16 * depth + 11, \
                   substr(name, 1, width / 6.5)
        print "</g>"
    }
    all = split(children[path], own, "\n")
    at = x
    for (i = 2; i <= all; i++) {
        if (count[own[i]] / count[""] < 0.003)
            continue
        draw(own[i], depth + 1, at, 1000 * count[own[i]] / count[""])
        at += 1000 * count[own[i]] / count[""]
    }
}
function finish(    path, i) {
    count[""]++
    path = ""
    for (i = frames; i >= 0; i--) {
        parent = path
        path = path ";" stack[i]
        if (!(path in count))
            children[parent] = children[parent] "\n" path
        count[path]++
    }
    if (frames + 2 > deepest)
        deepest = frames + 2
    frames = -1
}
BEGIN { frames = -1 }
NF > 0 && !/^\t/ { thread = $1; next }
NF == 0 { if (frames >= 0) { stack[++frames] = thread; finish() } next }
{ sub(/^[ \t]+[0-9a-f]+ /, ""); sub(/\+0x.*/, ""); sub(/\(.*/, ""); stack[++frames] = $0 }
END {
    height = 16 * deepest + 4
    printf "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 1000 %d' font-family='sans-serif' " \
           "font-size='10'><rect width='1000' height='%d' fill='white'/>\n", height, height
    draw("", 0, 0, 1000)
    print "</svg>"
}
