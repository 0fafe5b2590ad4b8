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
    r"qv(BufferBit|String|Vector)Del(Inner|Outer)|qvVectorOrderInner\w*|qvStringTrim(Leading|Trailing)|qvVectorCreateFromObjsCopy",  # plain itself
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

# The token of a form, what the plain function's name has in its place, which of its parameters differs, by its type or its
# number, and the types and the word of what stands for it.
RULES = [
    ("Wcstr", "", "QV_STRING *", ["const wchar_t *"], "wcstr"),
    ("Wcstr", "String", "QV_STRING *", ["const wchar_t *"], "wcstr"),
    ("Leading", "Inner", 1, [], "front"),
    ("Trailing", "Inner", 1, [], "rest"),
    ("Prepend", "Insert", 1, [], "front"),
    ("Append", "Insert", 1, [], "back"),
    ("IntKey", "RangeKey", 2, [], "again"),
    ("Push", "AppendObj", None, [], ""),
    ("Shift", "PrependObj", None, [], ""),
    ("Bytes", "", "QV_BUFFER *", ["const void *", "QV_INT"], "bytes"),
    ("BytesCopy", "", "QV_BUFFER *", ["const void *", "QV_INT"], "bytes"),
    ("Byte", "", "QV_BUFFER *", ["uint8_t"], "byte"),
    ("Bits", "", "QV_BUFFER *", ["uint64_t", "QV_INT"], "lowBits"),
    ("Zero", "", "QV_BUFFER *", ["QV_INT"], "zero"),
    ("One", "", "QV_BUFFER *", ["QV_INT"], "one"),
    ("Null", "Obj", "QV_OBJ *", [], "null"),
    ("Bool", "Obj", "QV_OBJ *", ["QV_BOOL"], "boxedBool"),
    ("Int", "Obj", "QV_OBJ *", ["QV_INT"], "boxedInt"),
    ("Real", "Obj", "QV_OBJ *", ["QV_REAL"], "boxedReal"),
    ("Sort", "Obj", "QV_OBJ *", ["QV_SORT *"], "same"),
    ("String", "Obj", "QV_OBJ *", ["QV_STRING *"], "same"),
    ("Objs", "", "QV_VECTOR *", ["QV_OBJ *const *", "QV_INT"], "objects"),
]
for token, (types, word) in TEXTS.items():
    RULES += [(token + suffix, "", "QV_STRING *", types, word) for suffix in ("", "ArgList", "Source", "Delimiter")]
    RULES += [(token, "String", "QV_STRING *", types, word)] if "cstr" in word else []
for token, count in ("Leading", 1), ("Trailing", 1), ("Inner", 2), ("Outer", 2):
    for kind in "QV_STRING *", "QV_BUFFER *", "QV_VECTOR *":
        RULES.append((token, "", kind, [kind] + ["QV_INT"] * count, token.lower()))


class Function:
    def __init__(self, result, name, parameters):
        self.result, self.name = " ".join(result.split()), name
        self.types, self.names = [], []
        for parameter in [] if parameters.strip() == "void" else parameters.split(","):
            kind, called = re.fullmatch(r"\s*(.*?)(\w*)\s*", parameter).groups()
            self.types.append(kind.strip() or called)
            self.names.append(called if kind.strip() else "")


# All public functions by name, macros of the headers expanded.
def read():
    headers = sorted(path for path in source.glob("qv/**/*.h") if not path.name.endswith("_private.h"))
    text = "".join(f'#include "{header.relative_to(source)}"\n' for header in headers)
    command = [compiler, "-std=c++20", "-DQV___INSIDE", "-I", str(source), "-E", "-P", "-x", "c++", "-"]
    expanded = subprocess.run(command, input=text, check=True, capture_output=True, text=True).stdout
    mark = r'extern\s+"C"\s+__attribute__\s*\(\s*\(\s*visibility\s*\(\s*"default"\s*\)\s*\)\s*\)'
    found = re.findall(mark + r"([^;{()]*?)\b(qv[A-Z]\w*)\s*\(([^)]*)\)", expanded)
    return headers, {name: Function(result, name, parameters) for result, name, parameters in found}


# How the arguments of `plain` follow from those of `form` by a rule, or None.
def derived(form, plain, differs, stands_for, word):
    formatted = form.types[-1:] in (["..."], ["va_list *"]) and plain.types[-1:] != form.types[-1:]
    types = form.types[:-1] if formatted else form.types

    def matches(at, of):
        if of == len(plain.types):
            if at == len(types):
                yield []
            return
        kind = plain.types[of]
        for stands, how in ([(stands_for, word)] if differs in (kind, of) else []) + [([kind], "same")]:
            if types[at : at + len(stands)] == stands:
                for rest in matches(at + len(stands), of + 1):
                    yield [(how, at)] + rest

    for match in matches(0, 0):
        changes = form.types != plain.types or any(how != "same" for how, _ in match)
        if not changes and not form.name.endswith(("Push", "Shift")):
            continue
        if not formatted or [form.names[at] for how, at in match if how.startswith("formatted")] in (["fmt"], ["format"]):
            return " ".join(f"{how}:{at}" for how, at in match)
    return None


headers, functions = read()
pairs, lost = [], []
tokens = r"(Cstr|Wcstr|Format|Leading|Trailing|Inner|Outer|Objs|Chars|Bytes|(Null|Bool|Int|Real|Sort|String)Key)(?![a-z])"

for form in functions.values():
    found = []
    if re.fullmatch(r"qv\w+(Retain|Release|Sort|Obj|From|ToString|Compare)", form.name) and len(form.types) < 3 and not re.search(r"(Insert|Prepend|Append|Del|Has|Set)\w+$", form.name):
        continue
    for token, replacement, *rule in RULES:
        for at in re.finditer(token + r"(?![a-z])", form.name):
            plain = functions.get(form.name[: at.start()] + replacement + form.name[at.end() :])
            words = plain and plain is not form and derived(form, plain, *rule)
            if words:
                found.append((form.name, plain.name, words))
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
