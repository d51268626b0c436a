# Doxygen input filter for the public headers: their plain // comments are
# the documentation. A header's opening comment documents the file; a comment
# block that ends right above a declaration documents it; a comment behind a
# member or enumerator documents that one. Section rules ("// --- Name ---")
# and the paragraph under them stay plain comments, and the comment text is
# escaped so that Doxygen shows it as written.
function escape(text,    out, i, c, code) {
    if (text ~ /^     /) return text  # an indented example is shown verbatim
    out = ""
    code = 0
    for (i = 1; i <= length(text); i++) {
        c = substr(text, i, 1)
        if (c == "`") code = !code
        if (!code && index("\\<>&#@%$", c)) out = out "\\"
        out = out c
    }
    return out
}
function flush(doc,    i) {
    for (i = 1; i <= n; i++) {
        if (doc) {
            line = block[i]
            match(line, /^[ \t]*\/\//)
            indent = substr(line, 1, RLENGTH - 2)
            print indent "///" escape(substr(line, RLENGTH + 1))
        } else {
            print block[i]
        }
    }
    n = 0
}
BEGIN { n = 0; first = 1; plain = 0 }
/^[ \t]*\/\// {
    if (first && n == 0 && FNR == 1) { print "/// \\file"; file = 1 }
    if ($0 ~ /^[ \t]*\/\/ ---/) { flush(1); plain = 1 }
    block[++n] = $0
    next
}
{
    # The block above: the file's, a declaration's, or a plain one.
    if (n > 0) flush(!plain && (file || $0 !~ /^[ \t]*$/))
    if ($0 ~ /^[ \t]*$/) plain = 0
    file = 0
    first = 0
    # A comment behind code documents the member or enumerator on that line.
    if (match($0, /[;,{][ \t]+\/\/ /)) {
        head = substr($0, 1, RSTART)
        rest = substr($0, RSTART + 1)
        match(rest, /\/\/ /)
        $0 = head substr(rest, 1, RSTART - 1) "///< " escape(substr(rest, RSTART + 3))
    }
    print
}
END { flush(!plain) }
