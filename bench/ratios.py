"""Reads Google Benchmark's JSON reports (one after the other) and prints ratios, not times.

Names are Operation/contender/size...; the contender `vykel` is held against every other one of the same
operation and size: the ratio is the other's best time by ours (above 1: we are faster), or, against `floor`,
ours by the floor's. Growth is the exponent k of n^k between the smallest and the largest size."""
import collections
import json
import math
import re
import sys


def reports(text):
    decoder, position = json.JSONDecoder(), 0
    while position < len(text):
        report, position = decoder.raw_decode(text, position)
        yield report
        while position < len(text) and text[position].isspace():
            position += 1


per_byte = {}  # size -> bytes of memory per byte of file


def best_times():
    times = collections.defaultdict(dict)  # (operation, size) -> contender -> best
    for report in reports(sys.stdin.read()):
        for run in report["benchmarks"]:
            if run.get("run_type") == "aggregate" or run.get("error_occurred"):
                continue
            name = re.sub(r"/(manual_time|real_time|repeats:\d+)", "", run["name"])
            operation, contender, size = name.split("/", 2)
            value = run.get("bytes", run["real_time"])
            if contender == "vykel" and "perFileByte" in run:
                per_byte[size] = run["perFileByte"]
            slot = times[operation, size]
            slot[contender] = min(value, slot.get(contender, math.inf))
    return times


def number_in(size):
    return int(re.search(r"(\d+)", size).group(1))


def main():
    times = best_times()
    growth = collections.defaultdict(list)
    for (operation, size), by_contender in times.items():
        ours = by_contender.pop("vykel", None)
        if ours is None:
            continue
        growth[operation, re.sub(r"\d+", "n", size, count=1)].append((number_in(size), ours))
        for contender, theirs in by_contender.items():
            if contender == "floor":
                print(f"{operation:12} {size:34} {ours / theirs:6.2f} times the floor")
            else:
                print(f"{operation:12} {size:34} {theirs / ours:6.1f} times better than {contender}")
    for size, value in per_byte.items():
        print(f"Memory       {size:34} {value:6.1f} times the file")
    for (operation, size), points in growth.items():
        points.sort()
        (small, first), (large, last) = points[0], points[-1]
        if large > small:
            exponent = math.log(last / first) / math.log(large / small)
            print(f"{operation:12} {size:34} grows as n^{exponent:.2f} from {small} to {large}")


main()
