# Writes source/qv/qv_start.ld, the functions that the start and the stop of the library run, for the linker, which puts
# them side by side. Lets a program that does nothing else run step by step, and notes which functions it comes through.
# Arguments: such a program (bench/process_start.c) and the library that it loads, both built for release. On x86-64 only;
# the names hold everywhere. To be run again when many of them have changed, which tests/package/start_test.py tells.

import bisect
import ctypes
import os
import pathlib
import re
import subprocess
import sys

program, library = sys.argv[1:3]
TRACEME, PEEKUSER, SINGLESTEP = 0, 3, 9
RIP = 16 * 8  # where the system keeps the instruction pointer of a process that has stopped

libc = ctypes.CDLL(None, use_errno=True)
libc.ptrace.restype = ctypes.c_long
libc.ptrace.argtypes = [ctypes.c_long, ctypes.c_long, ctypes.c_void_p, ctypes.c_void_p]


def mapping(process):
    """Where the library lies in memory, or nothing before it is loaded."""
    name = os.path.realpath(library)
    lines = pathlib.Path(f"/proc/{process}/maps").read_text(encoding="utf-8").splitlines()
    ranges = [line.split()[0].split("-") for line in lines if line.endswith(name)]
    return (int(ranges[0][0], 16), int(ranges[-1][1], 16)) if len(ranges) > 3 else None


process = os.fork()
if process == 0:
    libc.ptrace(TRACEME, 0, None, None)
    os.execv(program, [program])
os.waitpid(process, 0)

steps, place, addresses = 0, None, set()
while libc.ptrace(SINGLESTEP, process, None, None) == 0:
    if not os.WIFSTOPPED(os.waitpid(process, 0)[1]):
        break
    steps += 1
    if place is None and steps % 256 == 0:
        place = mapping(process)
    if place:
        address = libc.ptrace(PEEKUSER, process, RIP, None)
        if place[0] <= address < place[1]:
            addresses.add(address - place[0])

symbols = []
for line in subprocess.run(["nm", "-S", library], check=True, capture_output=True, text=True).stdout.splitlines():
    fields = line.split()
    if len(fields) == 4 and fields[2] in "tTwW":
        symbols.append((int(fields[0], 16), int(fields[1], 16), fields[3].split("@")[0]))
symbols.sort()

names = set()
for address in addresses:
    last = bisect.bisect_right(symbols, (address, 1 << 62)) - 1
    for begin, size, name in symbols[max(last - 8, 0) : last + 1]:
        if begin <= address < begin + size:
            names.add(re.sub(r"\.(localalias|constprop|isra|part|cold).*", "", name))

lines = [
    "/* The functions that the start and the stop of the library run, side by side: of its code a process then reads 50",
    "   kilobytes, not a tenth of each of a dozen places. Made by generators/start_order.py. A name that no longer exists",
    "   does no harm, nor does one that is missing. */",
    "",
    "SECTIONS",
    "{",
    "    .text.start :",
    "    {",
    *(f"        *(.text.{name} .text.{name}.*)" for name in sorted(names)),
    "    }",
    "}",
    "INSERT BEFORE .text;",
]
target = pathlib.Path(__file__).parent.parent / "source" / "qv" / "qv_start.ld"
target.write_text("\n".join(lines) + "\n", encoding="utf-8")
print(f"{steps} steps, {len(names)} functions")
