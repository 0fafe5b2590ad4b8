# Compares the binary interface that the public headers declare with the one that is kept beside this file: whatever a
# program or a module was built with has to be there still. Additions pass.
#
#     abi_test.py SOURCE_FOLDER [renew]
#
# A library is made of the declarations, with functions that do nothing, and described by what its debug information tells
# of their types; that the real library exports what the headers declare is tested elsewhere. Constants are macros, of
# which debug information knows nothing, so each becomes a function that takes an enumeration of one value.
#
# `renew` writes down the interface as it is now.

import lzma
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

SKIPPED = 77
MARK = r'extern\s+__attribute__\s*\(\s*\(\s*visibility\s*\(\s*"default"\s*\)\s*\)\s*\)'
OPTIONS = ["--no-added-syms", "--no-show-locs"]

source = pathlib.Path(sys.argv[1])
kept = pathlib.Path(__file__).parent / "libmorvane-qv.so.4.abi.xz"


def run(*command, **options):
    return subprocess.run(command, capture_output=True, text=True, **options)


def checked(*command, **options):
    result = run(*command, **options)
    if result.returncode:
        sys.exit(f"{' '.join(map(str, command))}\n{result.stdout}{result.stderr}")
    return result.stdout


# The declarations of headers as C with bodies, and the constants.
def definitions(headers):
    includes = "".join(f'#include "{header.relative_to(source)}"\n' for header in headers)
    preprocess = ["gcc", "-std=c11", "-DQV___INSIDE", "-DQV_MODULE_NAME=abi", "-I", source, "-E", "-P", "-x", "c", "-"]
    text = checked(*preprocess, input=includes)
    bodies = {}
    for declaration in re.findall(rf"{MARK}([^;{{]*)", text):
        declaration = re.sub(r"__attribute__\s*\(\s*\(.*?\)\s*\)(?!\s*\))", "", declaration)
        function = re.search(r"\b(qv\w+)\s*\(", declaration)
        name = function.group(1) if function else declaration.split()[-1]
        bodies[name] = f"\n{declaration} {{ __builtin_trap(); }}" if function else f"\n{declaration};"
    text += "".join(bodies.values())

    names = set()
    for header in headers:
        names |= set(re.findall(r"^#define (QV_[A-Z0-9_]+) +\S", header.read_text(encoding="utf-8"), flags=re.M))
    rows = "".join(f"QV___ROW_{name} {name}\n" for name in sorted(names))
    for row in checked(*preprocess, input=includes + rows).splitlines():
        constant = re.fullmatch(r"QV___ROW_(\w+) ([-\dxXa-fA-FuUlL()<|~ ]+)", row)
        if constant:
            name, value = constant.groups()
            text += f"\nenum constant_{name} {{ value_{name} = {value} }};"
            text += f"\nvoid constant_{name}( enum constant_{name} value ) {{ (void)value; }}"
    return text


def library(text, path):
    code = path.with_suffix(".c")
    code.write_text(text, encoding="utf-8")
    checked("gcc", "-std=gnu11", "-w", "-g", "-O0", "-fPIC", "-shared", "-Wl,-soname,libmorvane-qv.so.4", code, "-o", path)
    return path


# What abidiff says of two interfaces; empty if whatever worked with the old one works with the new one.
def difference(old, new):
    result = run("abidiff", *OPTIONS, old, new)
    if result.returncode & 3:
        sys.exit(result.stdout + result.stderr)
    return result.stdout if result.returncode else ""


# The comparison finds what it is there for, and lets additions pass.
def check_comparison(scratch):
    names = ("qv_family.h", "qv_module_record.h", "qv_runtime.h")
    text = definitions([source / "qv/runtime" / name for name in names])
    old = library(text, scratch / "old.so")
    changes = {
        "a member more": (r"(struct QV_OBJ\s*\{)", r"\1 int more;", True),
        "another type of a parameter": (r"qvRuntimePath\( *QV_INT", "qvRuntimePath( int", True),
        "a function gone": (r"\bqvRuntimeFlags\b", "qvRuntimeOther", True),
        "another value of a constant": (r"(value_QV_RUNTIME_FLAG_SYSTEM =) \d+", r"\1 99", True),
        "a function more": (r"\Z", "\nvoid qvRuntimeMore( void ) {}", False),
    }
    for change, (pattern, replacement, is_found) in changes.items():
        changed, count = re.subn(pattern, replacement, text)
        if count == 0:
            sys.exit(f"{change}: nothing to change")
        if bool(difference(old, library(changed, scratch / "new.so"))) != is_found:
            sys.exit(f"{change}: {'not found' if is_found else 'taken for a fault'}")


if not shutil.which("abidiff") or not shutil.which("gcc") or "x86_64" not in checked("gcc", "-dumpmachine"):
    print("skipped: needs abidiff and gcc for x86-64")
    sys.exit(SKIPPED)

with tempfile.TemporaryDirectory() as folder:
    scratch = pathlib.Path(folder)
    headers = [header for header in sorted(source.rglob("*.h")) if not header.name.endswith("_private.h")]
    now = library(definitions(headers), scratch / "libmorvane-qv.so.4")

    if sys.argv[2:] == ["renew"]:
        description = checked("abidw", "--no-corpus-path", "--no-comp-dir-path", "--no-show-locs", now)
        kept.write_bytes(lzma.compress(description.encode(), preset=9))
        sys.exit()

    check_comparison(scratch)
    before = scratch / "before.abi"
    before.write_bytes(lzma.decompress(kept.read_bytes()))
    found = difference(before, now)
    print(found or "compatible")
    sys.exit(1 if found else 0)
