# What Doxygen is shown of quarn.h: sections become groups, and columns within comments become paragraphs with a title.
# usage: awk -f header.awk quarn.h

function flush_block() {
    printf "%s", block
    documented = block
    block = ""
}

# Lines in two columns, with two blanks or more between them: "errors  q_error_usage: ..." becomes a paragraph with a title;
# indented, a term and its meaning, an entry of a list. A # would be taken for a link.
function add_line(line,    title, text) {
    gsub(/#[A-Z]/, "\\\\&", line)
    if (line ~ /^ \*   [^ -].*[^ ]  +[^ ]/) {
        title = text = line
        sub(/^ \* +/, "", title)
        sub(/  +.*/, "", title)
        sub(/^ \*   .*[^ ]  +/, "", text)
        block = block " * - " title ": " text "\n"
    } else if (match(line, /^ \* [A-Za-z][A-Za-z0-9_, ]*[a-z0-9]  +[^ ]/)) {
        title = substr(line, 4, RLENGTH - 4)
        sub(/ +$/, "", title)
        text = substr(line, RLENGTH)
        block = block " *\n * @par " title "\n * " text "\n"
    } else {
        block = block line "\n"
    }
}

# The overview at the top, and the table in it, which is indented deeply. (Not every awk knows intervals such as {13,}.)
NR == 1 && /^\/\*$/ {
    print "/** @file quarn.h\n * @brief The interface in C. */"
    print "/** @mainpage Quarn"
    in_overview = in_comment = 1
    next
}
in_overview && match($0, /^ \*             +[a-z]/) {
    text = term = substr($0, RLENGTH)
    sub(/^.*[^ ]  +/, "", text)
    sub(/  +.*/, "", term)
    block = block " * - " term ": " text "\n"
    in_list = 1
    next
}
in_overview && match($0, /^ \*        +[^ ]/) {
    block = block (in_list ? " *\n" : "") " * " substr($0, RLENGTH) "\n"
    in_list = 0
    next
}

# /* ---- ... * Title ... * ---- */ begins a section.
/^\/\* -----/ {
    getline title
    sub(/^ \* */, "", title)
    name = tolower(title)
    gsub(/[^a-z]+/, "_", name)
    if (grouped) print "/** @} */"
    print "/** @defgroup " name " " title
    grouped = in_section = 1
    next
}
in_section && /^ \* -+ \*\/$/ { print " * @{ */"; in_section = 0; next }
in_section { print; next }

# A comment that belongs to what follows it.
/^\/\*.*\*\/$/ {
    block = $0 "\n"
    sub(/^\/\*+/, "/**", block)
    flush_block()
    next
}
# One that stands by itself belongs to the section.
/^\/\*$/ {
    block = "/** @} */\n/** @addtogroup " name "\n *\n"
    in_comment = in_remark = 1
    next
}
/^\/\*/ {
    block = $0 "\n"
    sub(/^\/\*+/, "/**", block)
    in_comment = 1
    next
}
in_comment {
    if (in_remark && /\*\/$/) {
        $0 = " * @{ */"
        in_remark = 0
    }
    add_line($0)
    if (/\*\/$/) {
        flush_block()
        in_comment = in_overview = 0
    }
    next
}

# Functions without a comment of their own, right after others, share theirs.
/^Q_API/ && follows_function { printf "%s", documented }
/^#ifdef __cplusplus/ && grouped { print "/** @} */" }
{ print }
/^$/ { documented = ""; follows_function = 0 }
/^Q_API/ { in_function = 1 }
in_function && /;/ { follows_function = 1; in_function = 0 }
