# Writes the table of all public functions, and of the pairs of a form with its plain function, as C++ for the tests.
#
#     functions.py SOURCE_FOLDER COMPILER OUTPUT
#
# Each function becomes a row with its declaration and a call of it on slots. A form is found by its name: without the token
# that tells what it takes (Cstr, Leading, ...) the name is that of a plain function, and the parameters differ by just what the
# token stands for. The pair's row names for each parameter of the plain function how its argument follows from the
# arguments of the form; qv_forms_test.cpp makes them. A function with such a token and no pair is an error, unless it
# stands in ALONE.

import pathlib
import re
import subprocess
import sys

source, compiler, output = pathlib.Path(sys.argv[1]), sys.argv[2], sys.argv[3]

# What has a form's token in its name and is none.
ALONE = [
    r"qvEncoderEncodeChars",  # writes no length
    r"qvChars\w+|qvFormat\w+",  # no family has that name
    r"qv\w+(Use|UseWithRef)",  # takes the block over
    r"qv\w*Read(Bits|Byte|Bytes|Chars)|qvRandomBytes|qvDecoderTryDecodeChars",  # into an array
    r"qv(BufferBit|String|Vector)Del(Inner|Outer)|qvStringTrim(Leading|Trailing)|qvVectorCreateFromObjsCopy",  # plain itself
    r"qvStringConvertTo(Cstr|Wcstr)|qvUnicodeIsOtherFormat|qvRangeMapIntKey",  # no such token
]

TEXTS = {
    "Cstr": (["const char *", "QV_INT"], "cstr"),
    "Wcstr": (["const wchar_t *", "QV_INT"], "wcstr"),
    "Utf8": (["const char *", "QV_INT"], "cstr"),
    "Chars": (["const QV_CHAR *", "QV_INT"], "chars"),
    "CharsCopy": (["const QV_CHAR *", "QV_INT"], "chars"),
    "Char": (["QV_CHAR"], "char"),
    "Obj": (["QV_OBJ *"], "text"),
    "Format": (["QV_STRING *"], "formatted"),
    "FormatCstr": (["const char *", "QV_INT"], "formatted2"),
    "FormatWcstr": (["const wchar_t *", "QV_INT"], "formatted2"),
    "At": (["QV_INT"], "address"),
}
RANGES = {"Leading": 1, "Trailing": 1, "Inner": 2, "Outer": 2}
BYTES = {
    "Bytes": (["const void *", "QV_INT"], "bytes"),
    "BytesCopy": (["const void *", "QV_INT"], "bytes"),
    "Byte": (["uint8_t"], "byte"),
    "Bits": (["uint64_t", "QV_INT"], "lowBits"),
    "Zero": (["QV_INT"], "zero"),
    "One": (["QV_INT"], "one"),
}
BOXES = {
    "Null": ([], "null"),
    "Bool": (["QV_BOOL"], "boxedBool"),
    "Int": (["QV_INT"], "boxedInt"),
    "Real": (["QV_REAL"], "boxedReal"),
    "Sort": (["QV_SORT *"], "same"),
    "String": (["QV_STRING *"], "same"),
}


class Function:
    def __init__(self, result, name, parameters):
        self.result, self.name = " ".join(result.split()), name
        self.types, self.names = [], []
        for parameter in [] if parameters.strip() == "void" else parameters.split(","):
            kind, called = re.fullmatch(r"\s*(.*?)(\w*)\s*", parameter).groups()
            self.types.append(kind.strip() or called)
            self.names.append(called if kind.strip() else "")


def read():
    """All public functions by name, macros of the headers expanded."""
    headers = sorted(path for path in source.glob("qv/**/*.h") if not path.name.endswith("_private.h"))
    text = "".join(f'#include "{header.relative_to(source)}"\n' for header in headers)
    command = [compiler, "-std=c++20", "-I", str(source), "-E", "-P", "-x", "c++", "-"]
    expanded = subprocess.run(command, input=text, check=True, capture_output=True, text=True).stdout
    mark = r'extern\s+"C"\s+__attribute__\s*\(\s*\(\s*visibility\s*\(\s*"default"\s*\)\s*\)\s*\)'
    found = re.findall(mark + r"([^;{()]*?)\b(qv[A-Z]\w*)\s*\(([^)]*)\)", expanded)
    return headers, {name: Function(result, name, parameters) for result, name, parameters in found}


def derived(form, plain, ways):
    """How the arguments of `plain` follow from those of `form`, or None. `ways` tells for a parameter of the plain function
    which types of the form, and under which word, may stand for it."""
    formatted = form.types[-1:] in (["..."], ["va_list *"]) and plain.types[-1:] != form.types[-1:]
    types = form.types[:-1] if formatted else form.types

    def matches(at, of):
        if of == len(plain.types):
            if at == len(types):
                yield []
            return
        kind = plain.types[of]
        for stands, word in ways(kind, of) + [([kind], "same")]:
            if types[at : at + len(stands)] == stands:
                for rest in matches(at + len(stands), of + 1):
                    yield [(word, at)] + rest

    for match in matches(0, 0):
        changes = form.types != plain.types or any(word != "same" for word, _ in match)
        if not changes and not form.name.endswith(("Push", "Shift")):
            continue
        if not formatted or [form.names[at] for word, at in match if word.startswith("formatted")] in (["fmt"], ["format"]):
            return " ".join(f"{word}:{at}" for word, at in match)
    return None


def candidates(name):
    """The names that a plain function could have, and what may stand for what then."""

    def without(token, replacement=""):
        for found in re.finditer(token + r"(?![a-z])", name):
            yield name[: found.start()] + replacement + name[found.end() :]

    def instead(kind, types, word):
        return lambda given, of: [(types, word)] if given == kind else []

    for token, (types, word) in TEXTS.items():
        for suffix in ("", "ArgList", "Source", "Delimiter"):
            for plain in [*without(token + suffix), *(without(token, "String") if "cstr" in word else [])]:
                yield plain, instead("QV_STRING *", types, word)
    for token, count in RANGES.items():
        ways = lambda kind, of, token=token, count=count: (
            [([kind] + ["QV_INT"] * count, token.lower())]
            if kind in ("QV_STRING *", "QV_BUFFER *", "QV_VECTOR *")
            else []
        )
        for plain in without(token):
            yield plain, ways
        if token in ("Leading", "Trailing"):
            for plain in without(token, "Inner"):
                yield plain, lambda kind, of, token=token: [([], "front" if token == "Leading" else "rest")] if of == 1 else []
    for plain in without("Wcstr", "String"):
        yield plain, instead("QV_STRING *", ["const wchar_t *"], "wcstr")
    for plain in without("Wcstr"):
        yield plain, instead("QV_STRING *", ["const wchar_t *"], "wcstr")
    for plain in without("IntKey", "RangeKey"):
        yield plain, lambda kind, of: [([], "again")] if of == 2 else []
    for token, (types, word) in BYTES.items():
        for plain in without(token):
            yield plain, instead("QV_BUFFER *", types, word)
    for token, (types, word) in BOXES.items():
        for plain in without(token, "Obj"):
            yield plain, instead("QV_OBJ *", types, word)
    for plain in without("Objs"):
        yield plain, instead("QV_VECTOR *", ["QV_OBJ *const *", "QV_INT"], "objects")
    for token, word in (("Prepend", "front"), ("Append", "back")):
        for plain in without(token, "Insert"):
            yield plain, lambda kind, of, word=word: [([], word)] if of == 1 else []
    for plain in without("Push", "AppendObj"):
        yield plain, instead("", [], "")
    for plain in without("Shift", "PrependObj"):
        yield plain, instead("", [], "")


headers, functions = read()
pairs, lost = [], []
tokens = r"(Cstr|Wcstr|Format|Leading|Trailing|Inner|Outer|Objs|Chars|Bytes|(Null|Bool|Int|Real|Sort|String)Key)(?![a-z])"

for form in functions.values():
    found = []
    if re.fullmatch(r"qv\w+(Retain|Release|Sort|Obj|From|ToString|Compare)", form.name) and len(form.types) < 3 and not re.search(r"(Insert|Prepend|Append|Del|Has|Set)\w+$", form.name):
        continue
    for name, ways in candidates(form.name):
        plain = functions.get(name)
        words = plain and name != form.name and derived(form, plain, ways)
        if words:
            found.append((form.name, name, words))
    # Bytes count as eight bits each.
    plain = functions.get(re.sub("^qvBuffer", "qvBufferBit", form.name))
    if plain and plain is not form and plain.types == form.types:
        units = [called.startswith("bit") and form.names[i].startswith("byte") for i, called in enumerate(plain.names)]
        if any(units):
            found.append((form.name, plain.name, " ".join(f"{'times8' if unit else 'same'}:{i}" for i, unit in enumerate(units))))
    # What has something is what gives it.
    plain = functions.get(re.sub("Has(?=[A-Z])", "", form.name, 1))
    if plain and plain is not form and plain.types == form.types and plain.result.endswith("*"):
        found.append((form.name, plain.name, " ".join(f"same:{i}" for i in range(len(plain.types)))))
    pairs += dict.fromkeys(found)
    if not found and re.search(tokens, form.name) and not any(re.fullmatch(alone, form.name) for alone in ALONE):
        lost.append(form.name)

if lost:
    sys.exit("no plain form found for: " + ", ".join(lost))


def call(function):
    arguments = [
        f"a[{i}].r" if kind == "QV_REAL" else f"({kind})a[{i}].p" if "*" in kind or kind.endswith("_FUNC") else f"({kind})a[{i}].i"
        for i, kind in enumerate(function.types)
        if kind != "..."
    ]
    count = len(function.types)
    if function.types[-1:] == ["..."]:
        arguments += [f"a[{count - 1}].i", f"a[{count}].p"]
    elif function.types[-1:] == ["va_list *"]:
        arguments[-1] = "list"
    invoked = f"{function.name}( {', '.join(arguments)} )" if arguments else f"{function.name}()"
    if function.result == "void":
        body = f"{invoked}; return Slot();"
    elif function.result == "QV_REAL":
        body = f"Slot s; s.r = {invoked}; return s;"
    else:
        body = f"Slot s; s.{'p = (void *)' if '*' in function.result else 'i = '}{invoked}; return s;"
    if function.types[-1:] == ["va_list *"]:
        return f"[]( Slot *a ) {{ return withList( []( Slot *a, va_list *list ) {{ {body} }}, a, a[{count - 1}].i, a[{count}].p ); }}"
    return f"[]( Slot *a ) {{ {body} }}"


with open(output, "w", encoding="utf-8") as out:
    out.write('// Written by functions.py.\n\n#include "qv_functions.h"\n\n')
    out.writelines(f'#include "{header.relative_to(source)}"\n' for header in headers)
    out.write("\nusing namespace qv::test;\n\nconst Function qv::test::FUNCTIONS[] = {\n")
    for function in functions.values():
        words = "|".join([function.result] + [f"{kind}|{name}" for kind, name in zip(function.types, function.names)])
        out.write(f'    {{ "{function.name}", "{words}", {call(function)} }},\n')
    out.write("};\n\nconst Form qv::test::FORMS[] = {\n")
    out.writelines(f'    {{ "{form}", "{plain}", "{words}" }},\n' for form, plain, words in pairs)
    out.write("};\n\nconst size_t qv::test::FUNCTION_COUNT = std::size( FUNCTIONS );\n")
    out.write("const size_t qv::test::FORM_COUNT = std::size( FORMS );\n")
