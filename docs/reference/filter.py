"""What Doxygen reads instead of the public header, whose comments are plain: the same text with the marks that
Doxygen wants. A comment documents each of the declarations that follow it without an empty line between; one that
stands alone belongs to its section; one behind a field or a name documents that.

    filter.py LumenforgeMetaLib.h
"""
import re, sys

SECTION = re.compile(r"/\* -{20,}\n \* (.*)\n \* -{20,} \*/")
DECLARATION = r"(?:LUMENFORGE_API |enum |typedef )[^;{]*(?:\{[^}]*\})?[^;]*;\n|#define [^\n]*\n"
COMMENTED = re.compile(r"^/\*(?!\*)((?:(?!\*/).)*)\*/\n((?:%s)*)" % DECLARATION, re.S | re.M)
ITEM = re.compile(r"^( +)(all|-?\d+(?:, -?\d+)*|-xmpLength|\[\d\])  +(\S.*)|^( +)(for [-\w]+:) (.*)")
PARAMETERS = re.compile(r"^(?=`\w+`(?:, `\w+`)*: )", re.M)


def group(title):
    return "lumenforge_" + re.sub(r"\W+", "_", title.lower())


def escaped(text):
    parts = re.split(r"(`[^`]*`)", text)  # code stands as it is
    parts[::2] = [re.sub(r"([<>#%@\\*])", r"\\\1", part) for part in parts[::2]]
    return "".join(parts)


def marked_up(comment):
    """Lines that begin with a number and two blanks become a list, with what is indented further; a parameter
    begins a paragraph."""
    lines, depth = [], None
    for line in comment.split("\n"):
        line = escaped(re.sub(r"^ \* ?", "", line).rstrip())
        if item := ITEM.match(line):
            if depth is None:
                lines.append("")
            at, name, text = (part for part in item.groups() if part is not None)
            depth, line = len(at), "- **%s** %s" % (name, text)
        elif depth is not None and len(line) - len(line.lstrip()) > depth:
            line = "  " + line.strip()
        elif depth is not None:
            lines.append("")
            depth = None
        lines.append(line)
    return PARAMETERS.sub("\n", "\n".join(lines))


def documented(match):
    if section := SECTION.match(match[0]):  # a group, which ends where the next begins
        end = "/** @} */\n" if SECTION.search(text, 0, match.start()) else ""
        return end + "/** \\defgroup %s %s\n@{ */\n" % (group(section[1]), section[1])
    words = marked_up(match[1]) + "*/\n"
    if match.start() == text.index("/*"):
        return "/** \\mainpage LumenforgeMetaLib\n" + words
    if not match[2]:
        there = "/** \\addtogroup %s\n" % group(SECTION.findall(text, 0, match.start())[-1])
        return "/** @} */\n" + there + words + there + "@{ */\n"
    return "\n".join("/** " + words + declaration for declaration in re.findall(DECLARATION, match[2]))


with open(sys.argv[1], encoding="utf-8") as file:
    text = re.sub(r"(?<=[;,\w]) +/\*(?= )", " /**<", file.read())
text = text.replace("/**< '", "/**< \\e '")  # a line that begins with a quote is a command to man
result = COMMENTED.sub(documented, text)
end = result.rindex("#ifdef __cplusplus")
print("/** \\file\n\\brief The records, functions and results of the library. */\n" + result[:end] + "/** @} */\n" + result[end:])
