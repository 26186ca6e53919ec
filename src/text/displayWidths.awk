# Makes displayWidths.inc from the Unicode character database. './dev unicode' runs it over EastAsianWidth.txt,
# extracted/DerivedGeneralCategory.txt and emoji/emoji-data.txt, in this order: of the rules about one code point the
# last one wins.
#
# A code point's properties are one byte: its width (0, 1 or 2) and the bits below. The table has two stages: for each
# block of code points the number of its pattern, and the patterns.

BEGIN {
    FS = "[ \t]*[;#][ \t]*"
    block = 128
    last = 1114111
    blocks = patterns = 0
    EMOJI = 4; PICTOGRAPHIC = 8; MODIFIER_BASE = 16
}

function fromHex(digits,    i, value) {
    value = 0
    for (i = 1; i <= length(digits); ++i)
        value = value * 16 + index("0123456789ABCDEF", toupper(substr(digits, i, 1))) - 1
    return value
}

# "1F600" or "1F600..1F64F" into from and to.
function readRange(text,    ends) {
    split(text, ends, /\.\./)
    from = fromHex(ends[1])
    to = ends[2] == "" ? from : fromHex(ends[2])
}

function setWidth(range, value,    code) {
    readRange(range)
    for (code = from; code <= to; ++code) width[code] = value
}

function setFlag(range, flag,    code) {
    readRange(range)
    for (code = from; code <= to; ++code) flags[code] += flag
}

FNR == 1 { ++file; sources = sources "\n//   " substr($0, 3) }
/^# (Used with Emoji )?Version/ { sources = sources ", " substr($0, 3) }
/^#/ || NF < 2 { next }
file == 1 && ($2 == "W" || $2 == "F") { setWidth($1, 2) }
file == 2 && ($2 == "Mn" || $2 == "Me" || $2 == "Cf") { setWidth($1, 0) }
file == 3 && $2 == "Emoji" { setFlag($1, EMOJI) }
file == 3 && $2 == "Extended_Pictographic" { setFlag($1, PICTOGRAPHIC) }
file == 3 && $2 == "Emoji_Modifier_Base" { setFlag($1, MODIFIER_BASE) }

function printNumbers(name, type, numbers, count,    i, line) {
    printf "constexpr %s %s[%d] = {\n", type, name, count
    line = "    "
    for (i = 0; i < count; ++i) {
        if (length(line) + length(numbers[i]) + 1 > 120) { print line; line = "    " }
        line = line numbers[i] ","
    }
    print line "\n};"
}

END {
    # Vowels and final consonants of Hangul, which join the syllable before them.
    setWidth("1160..11FF", 0); setWidth("D7B0..D7C6", 0); setWidth("D7CB..D7FB", 0)
    # The soft hyphen, and signs that stand before digits or beneath them: terminals give each a column.
    count = split("00AD 0600..0605 06DD 070F 0890..0891 08E2 110BD 110CD", visible, " ")
    for (i = 1; i <= count; ++i) setWidth(visible[i], 1)
    # Control characters.
    setWidth("0000..001F", 0); setWidth("007F..009F", 0)

    for (start = 0; start <= last; start += block) {
        pattern = ""
        for (code = start; code < start + block; ++code)
            pattern = pattern ((code in width ? width[code] : 1) + flags[code]) " "
        if (!(pattern in number)) {
            number[pattern] = patterns
            split(pattern, values, " ")
            for (i = 1; i <= block; ++i) properties[patterns * block + i - 1] = values[i]
            ++patterns
        }
        patternOf[blocks++] = number[pattern]
    }
    if (patterns > 256) { print "displayWidths.awk: more than 256 patterns" >"/dev/stderr"; exit 1 }

    print "// Made by './dev unicode' from the Unicode character database; see displayWidths.awk. Sources:" sources
    print "// Copyright (c) Unicode, Inc. Distributed under the terms of use in https://www.unicode.org/copyright.html"
    printf "\nconstexpr unsigned kBlockSize = %d;\n", block
    printf "constexpr unsigned char kEmoji = %d;\n", EMOJI
    printf "constexpr unsigned char kPictographic = %d;\n", PICTOGRAPHIC
    printf "constexpr unsigned char kModifierBase = %d;\n\n", MODIFIER_BASE
    printNumbers("kPatternOfBlock", "unsigned char", patternOf, blocks)
    print ""
    printNumbers("kProperties", "unsigned char", properties, patterns * block)
}
