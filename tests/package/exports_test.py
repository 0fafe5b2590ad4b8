# Compares the symbols that the built library exports with what its headers declare, both ways, and looks at what the
# library and the executable need at run time. Finds every function that is exported: its whole name stands at its
# definition, in exactly one source. The eight standard functions of a family and the two of a character set come of one
# macro each. Arguments: the library, the executable, the source folder, the compiler.

import pathlib
import re
import subprocess
import sys

library, executable, source, compiler = sys.argv[1:5]
STANDARD = ("Sort", "Retain", "Release", "Obj", "From", "ToString", "Compare", "Equals")


def output(*command, **options):
    return subprocess.run(command, check=True, capture_output=True, text=True, **options).stdout


# Every declaration that bears QV_API, macros expanded.
headers = sorted(pathlib.Path(source, "qv").rglob("*.h"))
text = "".join(f'#include "{header.relative_to(source)}"\n' for header in headers)
expanded = output(compiler, "-std=c++20", "-DQV___INSIDE", "-I", source, "-E", "-P", "-x", "c++", "-", input=text)
mark = r'extern\s+"C"\s+__attribute__\s*\(\s*\(\s*visibility\s*\(\s*"default"\s*\)\s*\)\s*\)'
declared = set()
for declaration in re.findall(mark + r"([^;{]*)", expanded):
    name = re.search(r"\b(qv\w+)\s*\(", declaration) or re.search(r"\b(qv\w+)\s*$", declaration)
    declared.add(name.group(1))

# Everything public stands in the one include. What families are defined with does not.
everything = pathlib.Path(source, "qv", "qv.h").read_text(encoding="utf-8")
others = {"qv.h", "qv_extend.h", "qv_abort.h", "qv_atomic.h", "qv_family.h", "qv_module_record.h", "qv_ref.h"}
left_out = [
    header
    for header in headers
    if header.name not in others
    and not header.name.endswith("_private.h")
    and f'"{header.relative_to(source)}"' not in everything
]

exported, functions = {}, set()
for line in output("nm", "-D", "--defined-only", "--with-symbol-versions", library).splitlines():
    name, _, version = line.split()[-1].partition("@@")
    if not name.startswith("MORVANE_"):
        exported[name] = version
        if " T " in line and not re.fullmatch(r"qv___Charset\w+Map(ByteToChar|CharToByte)", name):
            functions.add(name)

problems = [f"not in qv.h: {header}" for header in left_out]
problems += [f"declared, not exported: {name}" for name in sorted(declared - exported.keys())]
problems += [f"exported, not declared: {name}" for name in sorted(exported.keys() - declared)]
problems += [
    f"{name} has the version {version}"
    for name, version in sorted(exported.items())
    if version != ("MORVANE_QV_PRIVATE" if name.startswith("qv___") else "MORVANE_QV_4")
]

for file, allowed in (library, r"(libc|libm|ld-linux.*)\.so"), (executable, r"(libmorvane-qv|libc|libm|ld-linux.*)\.so"):
    needed = re.findall(r"\(NEEDED\).*\[(.*)\]", output("readelf", "-d", file))
    problems += [f"{file} needs {name}" for name in needed if not re.match(allowed, name)]

# Programs call the library by the addresses of its functions, where the compiler can, not through a linkage table.
mark = output(compiler, "-I", source, "-E", "-P", "-x", "c", "-", input='#include "qv/sys/qv_types.h"\nQV_API')
if "noplt" in mark.splitlines()[-1]:
    slots = re.findall(r"JUMP_SLOT?\s.*?\b(qv\w+)", output("readelf", "-r", "-W", executable))
    problems += [f"{name} is called through the linkage table" for name in slots]

undefined = output("nm", "-D", "--undefined-only", library)
problems += [f"undefined: {name}" for name in re.findall(r"\bqv\w+", undefined)]

# Nothing runs at load or unload but what the C compiler's own start files bring: one entry each.
for section in ".init_array", ".fini_array":
    size = re.search(re.escape(section) + r"\s+\w+\s+\w+\s+\w+\s+(\w+)", output("readelf", "-S", "-W", library))
    if size and int(size.group(1), 16) > 8:
        problems.append(f"{section} has {int(size.group(1), 16) // 8} entries")

# The text of a source without comments and the preprocessor's lines, with empty string literals.
def plain(path):
    text = path.read_text(encoding="utf-8")
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.S)
    text = re.sub(r"//[^\n]*", "", text)
    text = re.sub(r'"(\\.|[^"\\\n])*"', '""', text)
    return re.sub(r"^[ \t]*#(.*\\\n)*.*$", "", text, flags=re.M)


# A definition begins in the first column: a type and the name with parameters and a body, or a row of a grid, whose macro
# takes the names of what it defines before anything else. Names there that have a body are what the row calls.
bodies, rows = {}, {}
for path in sorted(pathlib.Path(source, "qv").rglob("*.cpp")):
    text = plain(path)
    names = re.findall(r"^(?:[a-zA-Z_][\w :*<>,()]*[\s*&])?(qv\w+)\([^;{}]*\)\s*\{", text, flags=re.M)
    for name in re.findall(r"^QV___FAMILY\w*\(\s*(\w+),", text, flags=re.M):
        names += [f"qv{name}{standard}" for standard in STANDARD]
    for name in names:
        bodies.setdefault(name, []).append(path.name)
    for row in re.findall(r"^[A-Z][A-Z_0-9]*\(([^;{}()]*)", text, flags=re.M):
        for name in re.findall(r"\b(qv\w+)\b", row):
            rows.setdefault(name, []).append(path.name)
    pasted = re.findall(r"\bqv(?!___)\w*##\w+", path.read_text(encoding="utf-8"))
    problems += [f"{path.name} pastes the name of a function: {name}" for name in pasted]

defined = {**rows, **bodies}
problems += [f"no definition with its whole name: {name}" for name in sorted(functions - defined.keys())]
problems += [
    f"defined more than once: {name}: {', '.join(defined[name])}"
    for name in sorted(functions & defined.keys())
    if len(defined[name]) > 1
]

if len(declared) < 1000:
    problems.append(f"only {len(declared)} declarations found: the headers were not read")

print(f"{len(declared)} declared, {len(exported)} exported")
print("\n".join(problems))
sys.exit(1 if problems else 0)
