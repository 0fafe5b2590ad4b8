"""Prints the table of benchmark runs. Arguments: the line that tells the machine, and the JSON files of the runs.

A ratio is our median of a run over that of the fastest peer. A row is met if in every run the ratio stays a tenth below
what it may be at most, close if it stays below in the middle of the runs only, and missed otherwise: below the bound
where what is asked is less than what the machine takes for the part that nobody can leave out."""

import json
import statistics
import sys

SCALES = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
TO_SPARE = 0.9


def read(path):
    """The medians of a run, and the peaks: {(subject, operation, input, target): {side: (nanoseconds, MiB or 0)}}."""
    with open(path, encoding="utf-8") as file:
        runs = [run for run in json.load(file)["benchmarks"] if run.get("run_type") == "iteration"]
    sides = {}
    for run in runs:
        *case, side = run["name"].split("/real_time")[0].split("/manual_time")[0].split("|")
        times, peaks = sides.setdefault(tuple(case), {}).setdefault(side.split("/")[0], ([], []))
        times.append(run["real_time"] * SCALES[run["time_unit"]])
        peaks.append(run.get("peak", 0))
    return {
        case: {side: (statistics.median(times), max(peaks)) for side, (times, peaks) in found.items()}
        for case, found in sides.items()
    }


def text(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def cell(sides, of_memory=False):
    """The time of one side in the middle of the runs, and the most memory that it held where that was looked at."""
    peak = max(peak for _, peak in sides)
    if of_memory:
        return f"{peak:.3g} MiB"
    return text(statistics.median(time for time, _ in sides)) + (f", {peak:.3g} MiB" if peak else "")


def best(run, measure):
    return min(
        (side for side in run if side != "ours" and not side.startswith("bound: ")), key=lambda side: run[side][measure]
    )


def row(case, runs):
    subject, operation, given, target = case
    goal = float(target)
    measure = 1 if operation.startswith("memory") else 0
    bounds = [side for side in runs[0] if side.startswith("bound: ")]
    bound = f"{bounds[0][7:]} {cell([run[bounds[0]] for run in runs])}" if bounds else ""
    begin = f"| {subject} | {operation} | {given} | {cell([run['ours'] for run in runs], measure)} | {bound} |"
    if len(runs[0]) == 1 + len(bounds):
        return f"{begin} no peer here | | | |"
    peer = statistics.mode(best(run, measure) for run in runs)
    ratios = sorted(run["ours"][measure] / run[best(run, measure)][measure] for run in runs)
    middle = statistics.median(ratios)
    mark = "" if not goal else "met" if ratios[-1] <= goal * TO_SPARE else "close" if middle <= goal else "missed"

    if mark == "missed" and bounds:
        if statistics.median(run[bounds[0]][measure] / run[peer][measure] for run in runs) > goal:
            mark = "missed, asked below the bound"

    spread = f"{middle:.2f}" if len(runs) == 1 else f"{middle:.2f} ({ratios[0]:.2f} to {ratios[-1]:.2f})"
    return f"{begin} {peer} {cell([run[peer] for run in runs], measure)} | {spread} | {target if goal else ''} | {mark} |"


def kind(runs):
    """How fast two libraries are here that hosts differ in most."""
    told = []
    for case, side, name, limit in (
        (("monitor", "enter and leave", "nobody else there"), "pthread mutex", "a thousand turns of a pthread mutex", 12e3),
        (("Normal form", "NFC of normal text", "Vietnamese, 32 KiB"), "ICU, 16 bits", "ICU's NFC of Vietnamese", 12e3),
    ):
        found = [sides[side] for run in runs for key, sides in run.items() if key[:3] == case and side in sides]
        if found:
            time = statistics.median(time for time, _ in found)
            told.append(f"{name} {text(time)} ({'fast' if time < limit else 'slow'})")
    return ", ".join(told)


tables = [read(path) for path in sys.argv[2:]]
print(sys.argv[1])
print("The kind of host, told by what differs most between hosts: " + (kind(tables) or "not measured") + ".")
print()
print("| Subject | Operation | Input | Ours | Bound | Fastest peer | Ratio | At most | |")
print("|---|---|---|---|---|---|---|---|---|")
for case in sorted(tables[0]):
    print(row(case, [table[case] for table in tables]))
