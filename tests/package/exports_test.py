# Compares the symbols that the built library exports with what its headers declare, both ways, and looks at what the
# library and the executable need at run time. Arguments: the library, the executable, the source folder, the
# compiler.

import pathlib
import re
import subprocess
import sys

library, executable, source, compiler = sys.argv[1:5]


def output(*command, **options):
    return subprocess.run(command, check=True, capture_output=True, text=True, **options).stdout


# Every declaration that bears QV_API, macros expanded.
headers = sorted(pathlib.Path(source, "qv").rglob("*.h"))
text = "".join(f'#include "{header.relative_to(source)}"\n' for header in headers)
expanded = output(compiler, "-std=c++20", "-I", source, "-E", "-P", "-x", "c++", "-", input=text)
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

exported = {}
for line in output("nm", "-D", "--defined-only", "--with-symbol-versions", library).splitlines():
    name, _, version = line.split()[-1].partition("@@")
    if not name.startswith("MORVANE_"):
        exported[name] = version

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
undefined = output("nm", "-D", "--undefined-only", library)
problems += [f"undefined: {name}" for name in re.findall(r"\bqv\w+", undefined)]

# Nothing runs at load or unload but what the C compiler's own start files bring: one entry each.
for section in ".init_array", ".fini_array":
    size = re.search(re.escape(section) + r"\s+\w+\s+\w+\s+\w+\s+(\w+)", output("readelf", "-S", "-W", library))
    if size and int(size.group(1), 16) > 8:
        problems.append(f"{section} has {int(size.group(1), 16) // 8} entries")

if len(declared) < 1000:
    problems.append(f"only {len(declared)} declarations found: the headers were not read")

print(f"{len(declared)} declared, {len(exported)} exported")
print("\n".join(problems))
sys.exit(1 if problems else 0)
