"""Reads Google Benchmark's JSON reports (one after the other), prints ratios, not times, and exits with 1 when a
promised ratio is missed or, without --partial, was not measured. With --page writes docs/performance.md, too.

Names are Operation/contender/size. `vykel` is compared with every other contender of the same operation and size:
the ratio is the other's best time divided by ours (above 1: we are faster); for `floor`, ours divided by the floor's.
Growth is the exponent k of n^k between the smallest and the largest size."""
import collections
import json
import math
import re
import sys

# What the project promises: operation, sizes, what it is compared with, the least or the most that the ratio may be.
AT_LEAST, AT_MOST = ">=", "<="
PROMISES = (
    ("Life", r"plugins:8", "floor", AT_MOST, 1.2),
    ("Number", r"devices:.*", "floor", AT_MOST, 2.0),
    ("Load", r"(sections|keys):\d+", "simpleini", AT_LEAST, 5.0),
    ("Load", r"(sections|keys):\d+", "gkeyfile", AT_LEAST, 3.0),
    ("SafeSave", r"bytes:600", "floor", AT_MOST, 1.3),
    # A search takes the same time in small and large documents, but for the processor's caches.
    ("Lookup", r"sections:n", "growth", AT_MOST, 1.3),
    ("Delete", r"sections:n", "growth", AT_MOST, 1.3),
)


def reports(text):
    decoder, position = json.JSONDecoder(), 0
    while position < len(text):
        report, position = decoder.raw_decode(text, position)
        yield report
        while position < len(text) and text[position].isspace():
            position += 1


def measured(run):
    """Bytes, or processor time. Benchmarks with manual time measure the processor time themselves."""
    by_hand = "/manual_time" in run["name"]
    return run.get("bytes", run.get("median", run["real_time" if by_hand else "cpu_time"]))


def in_order(operation, size):
    return operation, [int(part) if part.isdigit() else part for part in re.split(r"(\d+)", size)]


class Report:
    def __init__(self):
        self.best = collections.defaultdict(dict)  # (operation, size) -> contender -> best value
        self.per_byte = {}  # size -> bytes of memory per byte of file
        self.failures = []
        self.measured = collections.Counter()  # promise -> how often it was measured

    def read(self, text):
        for report in reports(text):
            for run in report["benchmarks"]:
                if run.get("error_occurred"):
                    self.failures.append(f"{run['name']}: {run['error_message']}")
                elif run.get("run_type") != "aggregate":
                    self.add(run)

    def add(self, run):
        name = re.sub(r"/(manual_time|real_time|repeats:\d+)", "", run["name"])
        operation, contender, size = name.split("/", 2)
        if contender == "vykel" and "perFileByte" in run:
            self.per_byte[size] = run["perFileByte"]
        slot = self.best[operation, size]
        slot[contender] = min(measured(run), slot.get(contender, math.inf))

    def show(self, operation, size, against, ratio, text):
        print(f"{operation:12} {size:34} {text}{self.judge(operation, size, against, ratio)}")

    def judge(self, operation, size, against, ratio):
        for promise in PROMISES:
            promised_operation, sizes, contender, limit, bound = promise
            if (promised_operation, contender) != (operation, against) or not re.fullmatch(sizes, size):
                continue
            self.measured[promise] += 1
            kept = ratio >= bound if limit == AT_LEAST else ratio <= bound
            if kept:
                return f"   ({limit} {bound})"
            self.failures.append(f"{operation} {size}: {ratio:.2f} against {against} is not {limit} {bound}")
            return f"   (MISSED: {limit} {bound})"
        return ""

    def show_ratios(self):
        for (operation, size), by_contender in sorted(self.best.items(), key=lambda item: in_order(*item[0])):
            ours = by_contender.get("vykel", math.nan)
            for contender, theirs in sorted(by_contender.items()):
                if contender == "floor":
                    self.show(operation, size, contender, ours / theirs, f"{ours / theirs:6.2f} times the floor")
                elif contender != "vykel":
                    self.show(operation, size, contender, theirs / ours,
                              f"{theirs / ours:6.1f} times better than {contender}")
        for size, value in self.per_byte.items():
            print(f"{'Memory':12} {size:34} {value:6.1f} times the file")

    def show_growth(self):
        points = collections.defaultdict(list)
        for (operation, size), by_contender in self.best.items():
            for contender in {"vykel", "floor"} & by_contender.keys():
                number = int(re.search(r"\d+", size).group())
                shape = re.sub(r"\d+", "n", size, count=1)
                points[operation, shape, contender].append((number, by_contender[contender]))
        for (operation, shape, contender), values in sorted(points.items()):
            (small, first), (large, last) = min(values), max(values)
            if large > small:
                exponent = math.log(last / first) / math.log(large / small)
                whose = "the floor grows" if contender == "floor" else "grows"
                against = "the floor's growth" if contender == "floor" else "growth"
                self.show(operation, shape, against, exponent, f"{whose} as n^{exponent:.2f} from {small} to {large}")

    def finish(self, complete):
        if complete:
            self.failures += [f"{promise[0]} {promise[1]} against {promise[2]}: not measured"
                              for promise in PROMISES if not self.measured[promise]]
        for failure in self.failures:
            print("missed:", failure, file=sys.stderr)
        return 1 if self.failures else 0


def main():
    report = Report()
    report.read(sys.stdin.read())
    report.show_ratios()
    report.show_growth()
    if "--page" in sys.argv[1:]:
        import page  # needs what only the page needs
        page.write(report.best)
    return report.finish(complete="--partial" not in sys.argv[1:])


sys.exit(main())
