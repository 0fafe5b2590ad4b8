# Finds every function that the library exports: its whole name stands at its definition, in exactly one source. The eight
# standard functions of a family and the two of a character set come of one macro each. Arguments: the library, the source
# folder.

import pathlib
import re
import subprocess
import sys

library, source = sys.argv[1:3]
STANDARD = ("Sort", "Retain", "Release", "Obj", "From", "ToString", "Compare", "Equals")

symbols = subprocess.run(["nm", "-D", "--defined-only", library], check=True, capture_output=True, text=True).stdout
exported = {line.split()[2].partition("@")[0] for line in symbols.splitlines() if line.split()[1] == "T"}
exported = {name for name in exported if not re.fullmatch(r"qv___Charset\w+Map(ByteToChar|CharToByte)", name)}


def plain(path):
    """The text of a source without comments and the preprocessor's lines, with empty string literals."""
    text = path.read_text(encoding="utf-8")
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.S)
    text = re.sub(r"//[^\n]*", "", text)
    text = re.sub(r'"(\\.|[^"\\\n])*"', '""', text)
    return re.sub(r"^[ \t]*#(.*\\\n)*.*$", "", text, flags=re.M)


# A definition begins in the first column: a type and the name with parameters and a body, or a row of a grid, whose macro
# takes the names of what it defines before anything else. Names there that have a body are what the row calls.
bodies, rows, problems = {}, {}, []
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
problems += [f"no definition with its whole name: {name}" for name in sorted(exported - defined.keys())]
problems += [
    f"defined more than once: {name}: {', '.join(defined[name])}"
    for name in sorted(exported & defined.keys())
    if len(defined[name]) > 1
]

print(f"{len(exported)} exported, {len(exported & defined.keys())} found")
print("\n".join(problems))
sys.exit(1 if problems or len(exported) < 1500 else 0)
