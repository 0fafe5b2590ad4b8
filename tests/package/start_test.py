# Finds a list of the functions of a start that has gone out of date: names that the library no longer has; and functions
# of the C library that the first call would bind, though they should be bound before. Arguments: the library, the list,
# the source that takes the functions' addresses. Skips a library that was linked without the list.

import re
import subprocess
import sys

library, names, source = sys.argv[1:4]


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


if ".text.start" not in output("readelf", "-SW", library):
    sys.exit(77)

known = {line.split()[-1].partition("@")[0] for line in output("nm", library).splitlines()}
known |= {re.sub(r"\.(localalias|constprop|isra|part|cold).*", "", name) for name in known}
with open(names, encoding="utf-8") as file:
    listed = re.findall(r"\*\(\.text\.(\S+) ", file.read())
gone = [name for name in listed if name not in known]

if len(gone) * 5 > len(listed):
    print("generators/start_order.py should run again, as these functions are gone:", *gone, sep="\n")
    sys.exit(1)

# That source is in libraries for x86-64 only.
if "bindWithLibrary" in output("nm", "-C", library):
    with open(source, encoding="utf-8") as file:
        taken = set(re.findall(r"\w+", file.read().partition("takeAddresses(\n")[2]))
    late = taken.intersection(re.findall(r"JUMP_SLO\S* +\S+ (\w+)", output("readelf", "-rW", library)))
    if late or "malloc" not in taken:
        print("not bound when the library is loaded:", *sorted(late), sep="\n")
        sys.exit(1)
