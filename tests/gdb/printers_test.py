# Runs a program in gdb up to its objects and prints them, in the process and in its core dump, with the script that is
# installed, where gdb finds it by itself. Arguments: the program, the build folder, the library folder below the prefix.

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

program, build, libdir = sys.argv[1:4]
gdb = shutil.which("gdb")
if not gdb:
    sys.exit(77)

# What is printed, and the whole of what gdb says then as a regular expression.
ROWS = {
    "text": r'"tab\\t\\"\\u00e4\\U0001f600" <QV_STRING, \d references>',
    "longer": r'"x{200}"\.\.\. <QV_STRING, 1 reference>',
    "none": "NULL",
    "gone": "<given up>",
    "buffer": "00 a5 ff <QV_BUFFER, 1 reference, 3 bytes>",
    "list": r'<QV_VECTOR, 2 references, 5 elements> = \{"tab.*" <QV_STRING, \d references>, -1 <QV_BOXED_INT, \d+ '
    r"references>, 0.5 <QV_BOXED_REAL, 2 references>, true <QV_BOXED_BOOL, \d+ references>, null <QV_BOXED_NULL, "
    r"\d+ references>\}",
    "small": r'<QV_DICT, 1 reference, 2 items> = \{\["a" <QV_STRING, 1 reference>\] = -1 <.*>, \["b" <QV_STRING, '
    r"1 reference>\] = <QV_VECTOR, 2 references, 5 elements> = \{.*\}\}",
    "large": r"<QV_DICT, 1 reference, 5000 items> = \{\[1 <QV_BOXED_INT, 1 reference>\] = -1 <QV_BOXED_INT, \d+ "
    r"references>, .*\[100 <QV_BOXED_INT, 1 reference>\] = -1 <QV_BOXED_INT, \d+ references>\.\.\.\}",
    "queue": r"<QV_PRIORITY_MAP, 1 reference, 2 objects> = \{\[-7\] = \"tab.*>, \[7\] = -1 <.*>\}",
    "ranges": r"<QV_RANGE_MAP, 1 reference, 1 range> = \{\[3\.\.5\] = -1 <QV_BOXED_INT, \d+ references>\}",
    "store": r'<QV_STORE, 1 reference, 2 values, 1 sub-store> = \{net = "1" <.*>, net\. = <QV_STORE, \d references, '
    r'1 value, 0 sub-stores> = \{port = "9090" <QV_STRING, 1 reference>\}, zone = "tab.*>\}',
    "leap": "2024-02-29 12:30:00 UTC <QV_TIME, 1 reference>",
    "signal": "<QV_SIGNAL, 1 reference>",
    "sort": "<sort QV_STORE, 2 objects>",
    "module": "<module qv>",
    "value": '"in C\\+\\+" <QV_STRING, 1 reference>',
    "counts": r'<QV_DICT, 1 reference, 1 item> = \{\["one" <.*>\] = 1 <.*>\}',
    "noText": "<QV_STRING, 1 reference, damaged: no memory at 0x10>",
    "noSort": "<damaged: no object at 0x[0-9a-f]+>",
    "endless": r"<QV_VECTOR, 2 references, 9223372036854775807 elements> = \{.*(\.\.\.|damaged: no memory at .*)\}",
}
OBJECTS = [" +2 QV_STORE", "0x[0-9a-f]+ <QV_STORE, 2 references, 1 value, 0 sub-stores>"]


def run(*commands):
    prefix = f"{installed}/share/gdb/auto-load"
    found = [f"add-auto-load-scripts-directory {prefix}", f"add-auto-load-safe-path {prefix}", "set host-charset ASCII"]
    arguments = [argument for command in found for argument in ("-iex", command)]
    arguments += [argument for command in commands for argument in ("-ex", command)]
    ran = subprocess.run(
        [gdb, "-nx", "-batch", *arguments], capture_output=True, text=True, timeout=300, cwd=scratch,
        env={"LD_LIBRARY_PATH": f"{installed}/{libdir}", "PATH": "/usr/bin:/bin", "XZ_MORVANE_DATA_PATH": scratch},
    )
    return ran.stdout + ran.stderr


def check(where, output):
    for name, expected in ROWS.items():
        shown = re.search(f"^<{name}>\n\\$\\d+ = (.*)$", output, re.M)
        if not shown or not re.fullmatch(expected, shown.group(1)):
            problems.append(f"{where}: {name} is printed as {shown and shown.group(1)}, not as {expected}")
    problems.extend(f"{where}: no line {line}" for line in OBJECTS if not re.search(f"^{line}$", output, re.M))


problems = []
with tempfile.TemporaryDirectory() as scratch:
    installed = pathlib.Path(scratch, "prefix").resolve()
    subprocess.run(["cmake", "--install", build, "--prefix", installed], check=True, stdout=subprocess.DEVNULL)
    core = pathlib.Path(scratch, "core")
    prints = [command for name in ROWS for command in (f"echo <{name}>\\n", f"print {name}")]
    prints += ["qv-objects", "qv-objects QV_STORE"]

    output = run(f"file {program}", "break ready", "run", "up", *prints, f"generate-core-file {core}", "kill")
    if "ptrace" in output or "Couldn't get registers" in output:
        print(output)
        sys.exit(77)
    check("process", output)
    check("core dump", run(f"file {program}", f"core-file {core}", "up", *prints))

    if problems:
        print(output)
print("\n".join(problems))
sys.exit(bool(problems))
