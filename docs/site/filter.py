#!/usr/bin/env python3
"""What the generator of the pages reads in place of a file: a header with its page of the reference around it and the eight
functions of its families written out; a chapter with its links made for pages. Argument: the file; with --topics, the
topics of the reference instead."""

import html
import pathlib
import re
import sys

SITE = pathlib.Path(__file__).resolve().parent
FAMILY = re.compile(r"^QV_FAMILY\( (\w+), (\w+) \)(.*)$", re.M)
GROUP = re.compile(r"^/\*\* @\{ \*/\n(/\*\*.*?\*/\n)(.*?)^/\*\* @\} \*/$", re.M | re.S)

FUNCTIONS = [
    ("QV_SORT *", "Sort", "void", "The family's sort, borrowed. It lives as long as the process."),
    ("void ", "Retain", "{0} *obj", "Takes one more reference. Null ends the process."),
    ("void ", "Release", "{0} *obj", "Gives a reference up; with the last one the object ends. Null ends the process."),
    ("QV_OBJ *", "Obj", "{0} *obj", "The object as one of any family, without a new reference. Null stays null."),
    ("{0} *", "From", "QV_OBJ *obj", "The object as one of this family, without a new reference. Null stays null; an object "
     "of another family ends the process."),
    ("QV_STRING *", "ToString", "{0} *obj", "A new text of the object, owned by the caller. Null ends the process."),
    ("QV_INT ", "Compare", "{0} *objA, {0} *objB", "The order of two objects: -1, 0 or 1. Null ends the process."),
    ("QV_BOOL ", "Equals", "{0} *objA, {0} *objB", "True if two objects compare equal. Null ends the process."),
]


def topics():
    """Each topic with its name, its folders and what it is about, and each header with its topic and its page's name."""
    found, headers = [], {}
    for line in SITE.joinpath("topics.txt").read_text(encoding="utf-8").splitlines():
        if line.startswith("#"):
            continue
        if not line.startswith(" "):
            name, folders, about, chapters = re.fullmatch(r"(.*) \[(.*)\] (.*?\.)(?: \((.*)\))?", line).groups()
            links = [f"@ref md_docs_manual_{chapter.replace('-', '_')}" for chapter in (chapters or "").split()]
            about += "\n\nIn the manual: " + ", ".join(links) if links else ""
            found.append((f"topic_{len(found)}", name, folders.split(), about))
        else:
            header, title = line.split(None, 1)
            headers[header] = (found[-1][0], title)
    return found, headers


def header(path, text):
    found, headers = topics()
    families = FAMILY.findall(text)
    topic = next((topic[0] for topic in found if path.parent.name in topic[2]), found[0][0])
    title = families[0][0] if len(families) == 1 else path.name
    topic, title = headers.get(path.name, (topic, title))
    page = "page_" + path.name.replace(".", "_")

    # The essay of the header is that of its page; what follows in the file stands on it.
    start = text.index("/** @file")
    end = text.index("*/", start)
    essay = re.sub(r"^    ", "", text[start + len("/** @file") : end].strip("\n"), flags=re.M).rstrip()
    essay = re.sub(r"(\n\n)([A-Z]\w*(?: \w+){0,2}\.) (?=[A-Z`0])", r"\1<b>\2</b> ", essay)
    essay = re.sub(r"\n\n((?:    .*\n|\n(?=    ))+)", code, essay + "\n").rstrip()
    place = path.as_posix().partition("source/")[2]
    essay = f"/** @addtogroup {page} {title}\n@ingroup {topic}\n\n{essay}\n\nHeader: `{place}` */"
    text = text[:start] + essay + f"\n/** @addtogroup {page}\n@{{ */" + text[end + 2 :]
    text = re.sub(r"^( *)private:\n.*?^(?=\1\};$)", "/** @cond */\n\\g<0>/** @endcond */\n", text, flags=re.M | re.S)
    if path.suffix == ".h":
        text = GROUP.sub(each_commented, text)
        text = FAMILY.sub(lambda match: family(*match.groups()), text)
    last = text.rstrip().rindex("\n")
    return text[:last] + "\n/** @} */" + text[last:]


def code(match):
    """An indented block as code, which gets links, unless it is a table."""
    block = match[1]
    return f"\n@code{{.cpp}}\n{block}@endcode\n" if re.search(r";( *//.*)?$", block, re.M) else match[0]


def each_commented(group):
    """A group of declarations, each with the comment that they share unless it has one of its own."""
    comment, declarations = group.groups()
    return re.sub(r"^(?=(?:QV_API(?:_DATA)?|static inline|typedef|#define) (?!.*/\*\*<))", lambda match: comment, declarations, flags=re.M)


def family(name, type_, rest):
    lines = [f"/** @name The functions of every family\n{rest.strip()} @{{ */"]
    for result, function, arguments, comment in FUNCTIONS:
        lines.append(f"/** {comment} */ {result.format(type_)}qv{name}{function}( {arguments.format(type_)} );")
    return "\n".join(lines + ["/** @} */"])


def fence(match):
    """A block of a chapter: code gets links, all else none."""
    language = ".cpp" if match[1] in ("c", "cpp") else ".unparsed"
    return f"@code{{{language}}}\n{match[2]}@endcode"


def percent(text):
    """Names of conversions, of which the generator would take the percent signs for its own."""
    escaped = lambda code: html.escape(code).replace("%", "\\%")
    return re.sub(r"`([^`\n]*%[^`\n]*)`", lambda match: f"<code>{escaped(match[1])}</code>", text)


def chapter(path, text):
    text = re.sub(r"^<!--.*?-->\n", "", text, flags=re.M)
    text = re.sub(r"^```(\w*)\n(.*?)^```$", fence, text, flags=re.M | re.S)
    text = re.sub(r"\[([^\]\n]*)\n([^\]\n]*\]\()", r"\n[\1 \2", text)
    text = re.sub(r"`(qv\w+\(\))`", r"<code>\1</code>", text)
    text = re.sub(r"\]\((?:\.\./)*source/qv/(?:\w+/)*(\w+)\.(h|hpp)\)", r"](@ref page_\1_\2)", text)
    return text


def main():
    if sys.argv[1] == "--topics":
        found, headers = topics()
        for identifier, name, _, about in found:
            print(f"/** @defgroup {identifier} {name}\n{about} */")
        for name, (topic, title) in headers.items():
            print(f"/** @defgroup page_{name.replace('.', '_')} {title}\n@ingroup {topic} */")
        return
    path = pathlib.Path(sys.argv[1])
    text = path.read_text(encoding="utf-8")
    print(percent(chapter(path, text) if path.suffix == ".md" else header(path, text)), end="")


main()
