#!/usr/bin/env python3
"""Prints a C header with its plain comments turned into Doxygen's, so that the header itself can be
read, and is written, without markup:

    a comment right above a declaration, or behind a field    documents it
    "/* ---- Groups ---- */" and the comment after it          open a section
    the first comment                                          documents the file
    "name  What it is." in a paragraph of its own              an item of a list
    a paragraph indented by two or more                        is kept as it stands
"""

import re
import sys

BLOCK = re.compile(r"^/\*.*?\*/", re.S | re.M)
SECTION = re.compile(r"^/\* -+ (.+?) -+ \*/$")
ITEM = re.compile(r"^([a-z]\w*(?:, [a-z]\w*)*) {2,}(\S.*)$")


def paragraphs_of(comment):
    """The text of a comment without its stars, as lists of lines."""
    text = comment[2:-2]
    lines = [re.sub(r"^ \* ?", "", line).rstrip() for line in text.split("\n")]
    lines[0] = lines[0].strip()
    return [part.split("\n") for part in re.split(r"\n\s*\n", "\n".join(lines).strip("\n"))]


def marked_up(lines):
    if all(line.startswith("  ") for line in lines):
        return ["@code{.unparsed}"] + lines + ["@endcode"]
    if not ITEM.match(lines[0]):
        return lines
    out = []
    for line in lines:
        item = ITEM.match(line)
        out.append(f"- `{item[1]}`: {item[2]}" if item else "  " + line.strip())
    return out


def documentation(comment, opening="", closing=""):
    body = "\n\n".join("\n".join(marked_up(lines)) for lines in paragraphs_of(comment))
    body = body.replace("\n@endcode\n\n@code{.unparsed}\n", "\n\n")
    return f"/** {opening}{body}\n{closing}*/"


def filtered(text):
    out = []
    position = 0
    section = None  # the title that waits for its comment
    is_open = False
    for number, block in enumerate(BLOCK.finditer(text)):
        out.append(text[position:block.start()])
        position = block.end()
        title = SECTION.match(block[0])
        stands_alone = text[position:position + 2] == "\n\n"
        if title:
            section = title[1]
            out.append("/** @} */" if is_open else "")
            is_open = False
        elif number == 0:
            out.append(documentation(block[0], "@file\n"))
        elif section and stands_alone:
            out.append(documentation(block[0], f"@name {section}\n", "@{ "))
            section, is_open = None, True
        elif not stands_alone:
            if section:
                out.append(f"/** @name {section}\n@{{ */\n")
                section, is_open = None, True
            out.append(documentation(block[0]))
        else:
            out.append(block[0])
    result = "".join(out) + text[position:]
    result = re.sub(r"([;,]\s*)/\* (.*?) \*/", r"\1/**< \2 */", result)
    result = re.sub(r"^( +)/\* (.*?) \*/$", r"\1/** \2 */", result, flags=re.M)
    return result + ("\n/** @} */\n" if is_open else "")


if __name__ == "__main__":
    with open(sys.argv[1], encoding="utf-8") as header:
        sys.stdout.write(filtered(header.read()))
