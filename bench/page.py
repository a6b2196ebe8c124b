"""Writes what scripts/bench has measured into docs/performance.md, between two marks, and draws it as a picture."""
import re
import subprocess
from pathlib import Path

import matplotlib

matplotlib.use("svg")
from matplotlib import pyplot  # after the choice of the backend

DOCS = Path(__file__).parent.parent / "docs"
PICTURE = DOCS / "pictures/performance.svg"
FLOORS = (  # size, floor, and what the ratio means for a user, of each operation that is compared with a floor
    ("Life", "plugins:1", "a client's life with 1 plug-in", "loading it by hand",
     "two locks and the reading of `vykel.ini` come on top, once"),
    ("Life", "plugins:8", "a client's life with 8 plug-ins", "loading them by hand",
     "with more plug-ins they hardly count: a client starts as fast as its plug-ins"),
    ("List", "plugins:8", "`vykeldev list` with 8 plug-ins", "a program that only loads the DLL",
     "the tool is two processes, so that no plug-in can harm it; so call it for a whole list"),
    ("Number", "devices:100000/oneInNumbered:0", "numbering 100,000 new devices", "asking and sorting them",
     "other processes wait at the lock hardly longer than the devices need"),
    ("Transfer", "devices:100000/byToken:1", "moving 50,000 of 100,000 aliases by token",
     "reading and writing the file", "each alias moves once; later refreshes only read the file"),
    ("Transfer", "devices:100000/byToken:0", "the same by resource name", "reading and writing the file", "the same"),
    ("SafeSave", "bytes:600", "replacing a file of 600 bytes", "the same calls by hand",
     "a crash loses nothing, and that costs these calls only"),
)
PEERS = (  # the same of each that is compared with another library
    ("Load", "bytes:600", "reading 600 bytes", "simpleini", "the usual size; it is a small part of a refresh"),
    ("Load", "sections:100000", "reading 100,000 sections", "simpleini", "a huge `vykel.ini` holds no client up"),
    ("Load", "sections:100000", "reading 100,000 sections", "gkeyfile", "the same"),
    ("Load", "sections:100000", "reading 100,000 sections", "inih", "the same"),
    ("Lookup", "sections:100000", "finding each of 300,000 keys", "simpleini", "a device finds its alias at once"),
    ("Lookup", "sections:100000", "finding each of 300,000 keys", "gkeyfile", "the same"),
    ("Delete", "sections:100000", "deleting all of 100,000 sections", "simpleini", "an alias that has moved leaves at once"),
    ("Save", "bytes:600", "writing 600 bytes in place", "simpleini",
     "the library never writes `vykel.ini` in place; it replaces it"),
    ("Save", "sections:100000", "writing 100,000 sections", "gkeyfile", "a huge `vykel.ini` holds no client up"),
    ("Memory", "sections:100000", "memory for 100,000 sections", "simpleini", "a huge `vykel.ini` does not fill the memory"),
)
NAMES = {"simpleini": "SimpleIni", "gkeyfile": "GKeyFile", "inih": "inih"}
PACKAGES = {"SimpleIni": "libsimpleini-dev", "GLib": "libglib2.0-dev", "inih": "libinih-dev",
            "Google Benchmark": "libbenchmark-dev", "gcc": "g++"}
STYLE = """<style>
  @media (prefers-color-scheme: dark) {
   text { fill: #e6edf3 !important }
   path[style*="fill: #ffffff"] { fill: #0d1117 !important }
   [style*="stroke: #000000"] { stroke: #9198a1 !important }
  }
 </style>
 """


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout.strip()


def conditions():
    model = re.search(r"model name\s*: (.*)", Path("/proc/cpuinfo").read_text())[1]
    versions = ", ".join(f"{name} {output_of('dpkg-query', '-W', '-f=${Version}', package)}"
                         for name, package in PACKAGES.items())
    return f"Measured on the host build, on {output_of('nproc')} cores of {model}; {versions}."


def ratio_to_floor(best, operation, size):
    return best[operation, size]["vykel"] / best[operation, size]["floor"]


def ratio_to_peer(best, operation, size, peer):
    return best[operation, size][peer] / best[operation, size]["vykel"]


def table(best):
    yield from (conditions(), "", "| what | compared with | takes | what that means |", "|---|---|---|---|")
    for operation, size, what, floor, meaning in FLOORS:
        yield f"| {what} | {floor} | {ratio_to_floor(best, operation, size):.2f} times as long | {meaning} |"
    yield from ("", "| what | compared with | is | what that means |", "|---|---|---|---|")
    for operation, size, what, peer, meaning in PEERS:
        ratio = ratio_to_peer(best, operation, size, peer)
        verdict = f"{ratio:.1f} times better" if ratio >= 1 else f"{1 / ratio:.1f} times worse"
        yield f"| {what} | {NAMES[peer]} | {verdict} | {meaning} |"


def draw_bars(axis, names, ratios, colour, label):
    names = [name.replace("`", "") for name in names]
    bars = axis.barh(range(len(names)), [ratio - 1 for ratio in ratios], left=1, color=colour, height=0.6)
    axis.bar_label(bars, [f"{ratio:.2f}" if ratio < 2 else f"{ratio:.1f}" for ratio in ratios], padding=4)
    axis.set_yticks(range(len(names)), names)
    axis.invert_yaxis()
    axis.set_xscale("log")
    axis.set_xticks([], minor=True)
    axis.set_xticks([0.25, 0.5, 1, 2, 4, 8, 16], ["1/4", "1/2", "1", "2", "4", "8", "16"])
    axis.set_xlim(0.18, 24)
    axis.axvline(1, color="#808080", linewidth=1)
    axis.set_title(label, loc="left", fontsize=10, fontweight="bold")
    axis.spines[["top", "right", "left"]].set_visible(False)
    axis.tick_params(left=False)


def draw(best):
    # The same measurements give the same bytes: identifiers from a fixed salt, no date, no name of a program.
    matplotlib.rcParams.update({"svg.hashsalt": "vykel", "svg.fonttype": "none", "font.size": 9})
    figure, (floors, peers) = pyplot.subplots(2, 1, figsize=(8.2, 6), layout="constrained",
                                              height_ratios=(len(FLOORS), len(PEERS)))
    figure.get_layout_engine().set(w_pad=0.15, h_pad=0.15)
    draw_bars(floors, [row[2] for row in FLOORS], [ratio_to_floor(best, *row[:2]) for row in FLOORS], "#bf6b1f",
              "times as long as the floor: 1 is best")
    draw_bars(peers, [f"{row[2]}, {NAMES[row[3]]}" for row in PEERS],
              [ratio_to_peer(best, *row[:2], row[3]) for row in PEERS], "#3d85c6",
              "times better than the other library; left of 1 that one is better")
    figure.savefig(PICTURE, metadata={"Date": None, "Creator": None, "Title": "Ratios to floors and other libraries"})
    picture = PICTURE.read_text().replace("<svg ", '<svg role="img" ', 1).replace("<defs>", STYLE + "<defs>", 1)
    PICTURE.write_text("".join(line.rstrip() + "\n" for line in picture.splitlines()))


def write(best):
    page = DOCS / "performance.md"
    before, rest = page.read_text().split("<!-- measured -->\n")
    _, after = rest.split("<!-- end -->")
    page.write_text(before + "<!-- measured -->\n" + "\n".join(table(best)) + "\n<!-- end -->" + after)
    draw(best)
