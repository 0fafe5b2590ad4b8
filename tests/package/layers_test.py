# Holds the layers that docs/ARCHITECTURE.md draws: the includes of the library go down or sideways, but for the exceptions
# below; public headers stand alone; tools and examples use the public interface. Argument: the project's folder.

import fnmatch
import pathlib
import re
import sys

project = pathlib.Path(sys.argv[1])
source = project / "source" / "qv"

# From the lowest layer to the highest. A file belongs to the first of these patterns that it matches.
LAYERS = ["sys", "character data", "object core", "base", "text and streams", "product services", "all of it", "C++"]
PATTERNS = [
    ("sys", "sys/* qv_tool_private.h runtime/qv_component_private.h"),
    ("character data", "unicode/qv_unicode_tables* unicode/qv_unicode_db* unicode/qv_unicode_madb*"),
    ("character data", "unicode/qv_unicode_case.cpp unicode/qv_unicode_case_private.h"),
    ("character data", "unicode/qv_unicode_properties.* unicode/qv_unicode_cdmt.h"),
    ("character data", "unicode/qv_unicode_width_private.h unicode/qv_unicode_width_tables.cpp"),
    ("object core", "runtime/qv_family.h runtime/qv_ref.h runtime/qv_sort.h runtime/qv_obj.*"),
    ("object core", "runtime/qv_obj_private.h runtime/qv_obj_life_private.h runtime/qv_obj_batch.cpp"),
    ("object core", "runtime/qv_obj_odb.cpp runtime/qv_obj_count* runtime/qv_obj_memory* runtime/qv_module*.h"),
    ("base", "base/* runtime/qv_obj_* runtime/qv_sort.cpp runtime/qv_runtime_enum* unicode/qv_unicode_width.*"),
    ("text and streams", "unicode/* io/* charset/*"),
    ("product services", "runtime/*"),
    ("all of it", "qv.h qv_extend.h"),
    ("C++", "cpp/*.hpp qv.hpp"),
]

# Includes that go up: source, header, why.
EXCEPTIONS = [
    ("sys/qv_abort.cpp", "runtime/qv_runtime*.h", "a report names the product, in static text"),
    ("sys/qv_abort_unix.cpp", "runtime/qv_runtime.h", "asks for a flag of the run"),
    ("sys/qv_mem.cpp", "runtime/qv_runtime.h", "asks for a flag of the run"),
    ("runtime/qv_obj.cpp", "runtime/qv_runtime.h", "asks for flags of the run"),
    ("io/qv_print.cpp", "runtime/qv_runtime.h", "prints to the hook of the run"),
    ("base/qv_stack_trace*.cpp", "io/qv_print.h", "prints a trace"),
    ("base/qv_tool_switch*.cpp", "io/qv_print.h", "prints the list of tools"),
    ("base/qv_store*.cpp", "io/*.h", "reads documents through streams"),
    ("base/qv_store*.cpp", "charset/qv_charset.h", "reads documents through streams"),
    ("base/qv_string*.cpp", "unicode/qv_unicode_normalizer*.h", "normalises a String in one call"),
]

# Public headers that include more than qv/sys/qv_types.h, which itself includes nothing.
PUBLIC = {
    "qv_extend.h": {"qv.h", "runtime/qv_family.h", "runtime/qv_module_record.h", "runtime/qv_ref.h"},
    "runtime/qv_family.h": {"sys/qv_types.h", "sys/qv_abort.h", "sys/qv_atomic.h"},
    "runtime/qv_module_record.h": {"runtime/qv_family.h"},
    "runtime/qv_ref.h": {"runtime/qv_family.h"},
    "sys/qv_types.h": set(),
}
problems, needed, matched, checked = [], set(), set(), 0


def includes(path):
    return re.findall(r'^#\s*include\s*["<]qv/([^">]+)', path.read_text(encoding="utf-8"), re.M)


def is_public(header):
    return not header.endswith("_private.h")


def layer(file):
    for name, patterns in PATTERNS:
        for pattern in patterns.split():
            if fnmatch.fnmatchcase(file, pattern):
                matched.add(pattern)
                return LAYERS.index(name)
    problems.append(f"{file} is in no layer")
    return 0


for path in sorted(source.rglob("*.h*")) + sorted(source.rglob("*.cpp")):
    file = path.relative_to(source).as_posix()
    for header in includes(path):
        checked += 1
        why = [row for row in EXCEPTIONS if fnmatch.fnmatchcase(file, row[0]) and fnmatch.fnmatchcase(header, row[1])]
        if layer(header) > layer(file):
            needed.update(why)
            if not why:
                problems.append(f"{file}, in {LAYERS[layer(file)]}, includes {header} of {LAYERS[layer(header)]}")
        allowed = {header} if file == "qv.h" and is_public(header) else PUBLIC.get(file, {"sys/qv_types.h"})
        if path.suffix == ".hpp" and not is_public(header):
            problems.append(f"the public {file} includes {header}")
        if path.suffix == ".h" and is_public(file) and header not in allowed:
            problems.append(f"the public {file} includes {header}")

private = set()
for folder in "tool", "examples":
    for path in sorted((project / folder).iterdir()):
        if path.suffix in (".c", ".cpp", ".h"):
            private.update((folder, header) for header in includes(path) if not is_public(header))
if len(private) > 1 or "examples" in (folder for folder, _ in private):
    problems += [f"{folder} includes {header}" for folder, header in sorted(private)]

problems += [f"no include needs the exception {row[0]}: {row[1]}" for row in EXCEPTIONS if row not in needed]
problems += [f"no file matches {pattern}" for _, row in PATTERNS for pattern in row.split() if pattern not in matched]
if checked < 500:
    problems.append(f"only {checked} includes found: the sources were not read")

print(f"{checked} includes")
print("\n".join(problems))
sys.exit(1 if problems else 0)
