"""Prints the table of a benchmark run: medians of all repetitions, ours beside the fastest peer. Arguments: the JSON file
of the run, the line that tells the machine."""

import collections
import json
import statistics
import sys

with open(sys.argv[1], encoding="utf-8") as file:
    runs = json.load(file)["benchmarks"]

times = collections.OrderedDict()
peaks = {}
for run in runs:
    if run.get("run_type") != "iteration":
        continue
    subject, operation, given, target, who = run["name"].split("/real_time")[0].split("/manual_time")[0].split("|")
    who = who.split("/")[0]
    if "peak" in run:
        peaks.setdefault((subject, operation, given, who), []).append(run["peak"])
    scale = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[run["time_unit"]]
    times.setdefault((subject, operation, given, target), {}).setdefault(who, []).append(run["real_time"] * scale)


def text(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def cell(case, who, nanoseconds):
    """The time of one side, and the most memory that its process held where that was looked at."""
    peak = peaks.get((*case[:3], who))
    return text(nanoseconds) + (f", {max(peak):.3g} MiB" if peak else "")


print(sys.argv[2])
print()
print("| Subject | Operation | Input | Ours | Peer | Ratio | At most | |")
print("|---|---|---|---|---|---|---|---|")
for case, sides in sorted(times.items()):
    subject, operation, given, target = case
    medians = {who: statistics.median(values) for who, values in sides.items()}
    ours = medians.pop("ours")
    begin = f"| {subject} | {operation} | {given} | {cell(case, 'ours', ours)} |"
    if not medians:
        print(f"{begin} no peer here | | | |")
        continue
    peer = min(medians, key=medians.get)
    ratio = ours / medians[peer]
    goal = float(target)
    mark = "" if not goal else "met" if ratio <= goal else "missed"
    print(f"{begin} {peer} {cell(case, peer, medians[peer])} | {ratio:.2f} | {target if goal else ''} | {mark} |")
