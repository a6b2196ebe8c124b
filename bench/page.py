"""Writes what scripts/bench has measured into docs/performance.md, between two marks, and draws it as a picture."""
import re
import subprocess
from pathlib import Path

import matplotlib

DOCS = Path(__file__).parent.parent / "docs"
PICTURE = "pictures/performance.svg"
# What a ratio means for a user: operation, size, what it is compared with.
MEANINGS = (
    ("Life", "plugins:8", "floor", "A whole life of a client (initialise, list, refresh, release, finalise) with 8 plug-ins, "
     "against finding and loading them by hand"),
    ("List", "plugins:8", "floor", "`vykeldev list`, against a program that only loads the library; the tool starts a second "
     "process, so that no plug-in can harm it"),
    ("Number", "devices:100000/oneInNumbered:0", "floor", "Numbering 100,000 new devices, against asking and sorting them"),
    ("Transfer", "devices:100000/byToken:0", "floor", "Moving 100,000 aliases by resource name, against reading, comparing "
     "and setting them"),
    ("Transfer", "devices:100000/byToken:1", "floor", "Moving 100,000 aliases by token, against the same"),
    ("SafeSave", "bytes:600", "floor", "Saving a usual file of 600 bytes so that a crash loses nothing, against doing "
     "the same by hand"),
    ("Load", "bytes:600", "simpleini", "Reading a usual file of 600 bytes, against SimpleIni"),
    ("Load", "sections:100000", "simpleini", "Reading 100,000 sections, against SimpleIni"),
    ("Load", "sections:100000", "gkeyfile", "the same, against GKeyFile"),
    ("Load", "sections:100000", "inih", "the same, against inih"),
    ("Lookup", "sections:100000", "simpleini", "Finding a value among 100,000 sections, against SimpleIni"),
    ("Lookup", "sections:100000", "gkeyfile", "the same, against GKeyFile"),
    ("Delete", "sections:100000", "simpleini", "Deleting an entry among 100,000 sections, against SimpleIni"),
    ("Save", "bytes:600", "simpleini", "Writing a usual file of 600 bytes, against SimpleIni, which checks less"),
    ("Save", "sections:100000", "gkeyfile", "Writing 100,000 sections, against GKeyFile"),
    ("Memory", "sections:100000", "simpleini", "Memory for 100,000 sections, against SimpleIni"),
)
PEERS = {"SimpleIni": "libsimpleini-dev", "GKeyFile (GLib)": "libglib2.0-dev", "inih": "libinih-dev",
         "Google Benchmark": "libbenchmark-dev", "gcc": "g++"}


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def machine():
    model = re.search(r"model name\s*: (.*)", Path("/proc/cpuinfo").read_text()).group(1)
    versions = ", ".join(f"{name} {output_of('dpkg-query', '-W', '-f=${Version}', package)}"
                         for name, package in PEERS.items())
    return f"Measured on {output_of('nproc').strip()} cores of {model}, the host build, with {versions}."


def rows(best):
    """(meaning, ratio, whether it is a share of a floor), a small ratio of a floor and a large one of a peer being good."""
    for operation, size, against, meaning in MEANINGS:
        ours, theirs = best[operation, size]["vykel"], best[operation, size][against]
        is_floor = against == "floor"
        yield meaning, ours / theirs if is_floor else theirs / ours, is_floor


def write_table(measured):
    page = DOCS / "performance.md"
    lines = [machine(), "", "| what | ratio |", "|---|---|"]
    for meaning, ratio, is_floor in measured:
        text = (f"{ratio:.2f} times as long" if is_floor else
                f"{ratio:.1f} times better" if ratio >= 1 else f"{1 / ratio:.1f} times worse")
        lines.append(f"| {meaning} | {text} |")
    table = "\n".join(lines) + "\n"
    text = re.sub(r"(<!-- measured -->\n).*?(<!-- end -->)", lambda match: match.group(1) + table + match.group(2),
                  page.read_text(), flags=re.S)
    page.write_text(text)


def draw(measured):
    matplotlib.use("svg")
    matplotlib.rcParams.update({"svg.hashsalt": "vykel", "svg.fonttype": "none", "font.size": 9, "font.family": "sans-serif"})
    from matplotlib import pyplot
    figure, axis = pyplot.subplots(figsize=(8.5, 5), layout="constrained")
    names = [meaning.split(", against")[0].split(" (")[0].replace("`", "") + (
        "" if is_floor else ", " + meaning.split("against ")[1].split(",")[0]) for meaning, _, is_floor in measured]
    bars = axis.barh(range(len(measured), 0, -1), [ratio - 1 for _, ratio, _ in measured], left=1,
                     color=["#d08030" if is_floor else "#3d85c6" for _, _, is_floor in measured])
    axis.bar_label(bars, [f"{ratio:.2g}" for _, ratio, _ in measured], padding=3)
    axis.set_yticks(range(len(measured), 0, -1), names)
    axis.set_xscale("log")
    axis.set_xticks([0.5, 1, 2, 5, 10, 20], ["0.5", "1", "2", "5", "10", "20"])
    axis.set_xlim(0.2, 25)
    axis.axvline(1, color="#808080", linewidth=1)
    axis.set_xlabel("orange: times as long as the floor, 1 is best\nblue: times better than the peer")
    for side in ("top", "right"):
        axis.spines[side].set_visible(False)
    figure.savefig(DOCS / PICTURE, transparent=True, metadata={"Date": None, "Creator": None})
    picture = (DOCS / PICTURE).read_text()
    dark = "<style>@media (prefers-color-scheme: dark) { text { fill: #e0e0e0 !important } path { stroke: #a0a0a0 } }</style>"
    (DOCS / PICTURE).write_text(picture.replace("<defs>", dark + "\n <defs>", 1))


def write(best):
    measured = list(rows(best))
    write_table(measured)
    draw(measured)
