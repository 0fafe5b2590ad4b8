# Finds a list of the functions of a start that has gone out of date: names that the library no longer has. Arguments: the
# library, the list. Skips a library that was linked without it.

import re
import subprocess
import sys

library, names = sys.argv[1:3]


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
