# Shows Doxygen the plain comments of our headers. A filter for its INPUT_FILTER: awk -f headerComments.awk header.h
#
# - The comment that opens a header documents the file, and the class that has no comment of its own.
# - A comment above a declaration documents it and all that follow without a blank line and without an own comment.
# - A comment behind a declaration documents that one; an empty one repeats the one above.
# - "// ---- Title. Text" names a section of a class.
# - What is deleted or defaulted says so by itself.
# - NOLINT is left out.
#
# Each line stays in its place, so that warnings and links name the header's own lines. Comments inside functions stay
# as they are.

# The text with what Doxygen would take for a command, a tag or a heading taken literally. Indented code and what
# stands in quotes need nothing.
function literal(text,    piece, count, i, out) {
    if (text ~ /^     /) return text
    count = split(text, piece, "\"")
    for (i = 1; i <= count; ++i) {
        if (i % 2 == 1 || i == count) gsub(/[\\@<>#%|]/, "\\\\&", piece[i])
        out = out (i > 1 ? "\"" : "") piece[i]
    }
    return out
}

# Where the code of a line ends and its comment begins; 0 without one.
function commentStart(line,    i, c, quote) {
    for (i = 1; i <= length(line); ++i) {
        c = substr(line, i, 1)
        if (quote != "") {
            if (c == "\\") ++i
            else if (c == quote) quote = ""
        } else if (c == "\"" || (c == "'" && substr(line, i - 1, 1) !~ /[0-9]/)) quote = c
        else if (c == "/" && substr(line, i + 1, 1) == "/") return i
    }
    return 0
}

# What a brace opens, by the declaration in front of it: names of a type or namespace, or the body of a function.
function scopeOf(text) {
    gsub(/template *<[^{]*> */, " ", text)
    gsub(/XO_[A-Z_]*\([^()]*(\([^()]*\)[^()]*)*\)/, " ", text)
    if (text ~ /(^|[^A-Za-z_])enum[^A-Za-z_]/) return "enum"
    if (text ~ /(^|[^A-Za-z_])(namespace|class|struct|union)[^A-Za-z_]/ && text !~ /\(/) return "names"
    return "body"
}

function inNames() { return depth == 0 || scope[depth] != "body" }

# Follows the braces and parentheses of a line of code, to know where declarations begin and end.
function follow(code,    i, c) {
    for (i = 1; i <= length(code); ++i) {
        c = substr(code, i, 1)
        if (c == "\"") {
            while (++i <= length(code) && substr(code, i, 1) != "\"") if (substr(code, i, 1) == "\\") ++i
        } else if (c == "'" && substr(code, i - 1, 1) !~ /[0-9]/) {
            while (++i <= length(code) && substr(code, i, 1) != "'") if (substr(code, i, 1) == "\\") ++i
        } else if (c == "{") {
            scope[++depth] = parens > 0 ? "body" : scopeOf(statement)
            if (scope[depth] != "body") { statement = ""; shared = "" }
        } else if (c == "}") {
            if (scope[depth--] != "body" || (inNames() && parens == 0)) statement = inNames() ? "}" : statement
        } else if (c == "(") ++parens
        else if (c == ")") --parens
        else if (inNames() && parens == 0 && (c == ";" || (c == "," && scope[depth] == "enum"))) { statement = ""; continue }
        if (inNames() && c !~ /[{}]/) statement = statement c
    }
    if (statement ~ /^}? *$/) statement = ""
    else statement = statement " "
}

BEGIN { opening = 1 }
FNR == 1 { name = FILENAME; sub(/.*\//, "", name) }

# The opening comment.
opening && /^\/\// {
    held[++heldCount] = $0
    next
}
opening {
    opening = 0
    for (i = 1; i <= heldCount; ++i)
        print "///" literal(substr(held[i], 3))
    guard = /^#ifndef/
    if (guard) { print "/// \\file"; next }  # in the line of the include guard, whose place "#if 1" takes
}
guard { guard = 0; print "#if 1"; next }

# Blank lines end a group.
/^ *$/ {
    shared = ""
    afterTrailing = 0
    print
    next
}

/^ *#/ || inMacro {
    inMacro = /\\$/
    print
    next
}

# What clang-tidy is told.
/^ *\/\/ NOLINT/ { print ""; next }

# A comment of its own line.
/^ *\/\// {
    if (!inNames() || statement != "") { print; next }
    match($0, /^ */)
    indent = substr($0, 1, RLENGTH)
    text = substr($0, RLENGTH + 3)
    if (afterTrailing && RLENGTH > declarationIndent) {  # goes on from the line above
        trailing = trailing " \\nl" literal(text)
        print indent "///<" literal(text)
        next
    }
    if (text ~ /^ ----/) {
        gsub(/^ -+ | -+$/, "", text)
        dot = index(text, ". ")
        title = dot ? substr(text, 1, dot - 1) : text
        sub(/\.$/, "", title)
        print indent (sectionDepth == depth ? "/** @} */ " : "") "/** @name " title (dot ? " \\nl " literal(substr(text, dot + 2)) : "") "\\nl @{ */"
        sectionDepth = depth
        next
    }
    if (!lastWasComment) shared = ""
    copied = literal(text)
    sub(/^ - /, " \\nl \\- ", copied)  # a list does not survive on one line
    shared = shared (lastWasComment ? " \\nl" : "") copied
    lastWasComment = 1
    print indent "///" literal(text)
    next
}

/^ *(public|protected|private):/ {
    shared = ""
    print
    next
}

# Doxygen takes an alias for a namespace of the same name within itself.
/^ *namespace [A-Za-z]+ = / {
    print ""
    next
}

# Code.
{
    at = commentStart($0)
    code = at ? substr($0, 1, at - 1) : $0
    comment = at ? substr($0, at + 2) : ""
    if (comment ~ /^ NOLINT/) at = 0
    begins = inNames() && statement == "" && code !~ /^ *}/
    names = inNames() && scope[depth] != "body"
    before = ""
    match(code, /^ */)
    if (begins) {
        declarationIndent = RLENGTH
        if (!lastWasComment && !at) {
            if (shared != "") before = "/**" shared " */ "
            else if (code ~ /= delete;/) before = "/** Does not exist. */ "
            else if (code ~ /= default;/) before = "/** As the compiler makes it. */ "
            else if (code ~ /^(template <[^>]*> )?(class|struct) .*{/) before = "/** \\copydoc " name " */ "
        }
    }
    if (code ~ /^ *} *;/ && sectionDepth == depth && depth > 0) {
        before = "/** @} */ "
        sectionDepth = 0
    }
    lastWasComment = 0
    afterTrailing = 0
    if (at && names && depth > 0 && code !~ /^ *}/) {
        if (comment !~ /^ *$/) trailing = literal(comment)
        comment = "///<" trailing
        afterTrailing = 1
    } else comment = at ? "//" comment : ""
    print substr(code, 1, RLENGTH) before substr(code, RLENGTH + 1) comment
    follow(code)
}
