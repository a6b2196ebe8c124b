"""Proofs with a client of the exports: lives, kills, threads, readers of the legacy file."""

import random
import statistics

from proofs.machines import LAYOUTS, HostMachine, Machine
from proofs.table import Row


def lives(row: Row, machine: Machine, count: int) -> None:
    """Memory and handles stay the same, compared with a process that only loads and unloads the plug-ins."""
    machine.prepare().reset(4, "number")
    plugins = [machine.named(machine.library(plugin)) for plugin in machine.plugins]
    growth = []
    nothing: list[str] = []
    for arguments in (nothing, plugins):
        lines = machine.must("proof_client", "lives", str(count), *arguments).split("\n")
        (before, handles), (after, handles_after) = ([int(word) for word in line.split()] for line in lines[:2])
        growth.append((after - before, handles_after - handles))
        row.expect(int(lines[2]) == (0 if arguments else 8 * count), f"{lines[2]} devices were seen")
    (leaked, handles), (floor, floor_handles) = growth
    row.ran = f"{count} lives: {leaked:+d} bytes, {handles:+d} handles; only loading: {floor:+d}, {floor_handles:+d}"
    row.expect(leaked - floor < count, "memory grows")
    row.expect(handles - floor_handles < 10, "handles grow")


def _window(machine: Machine, before: bytes, devices: int, given: int) -> str:
    """What the killed process was doing, by what it left."""
    numbers, aliases = machine.kept()
    if machine.ini.read_bytes() != before:
        return "afterwards"
    if len(aliases) == given:
        return "saving"
    if aliases:
        return "handing over"
    if len(numbers) == devices:
        return "between"
    return "numbering" if numbers else "before"


WINDOWS = ("numbering", "handing over", "saving")


def _moment(chance: random.Random, duration: float, moments: dict[str, list[float]]) -> float:
    """When to kill next: at any moment, or every other time about when a kill met the window that was met least."""
    rarest = moments[min(WINDOWS, key=lambda window: len(moments[window]))]
    if chance.random() < 0.5:
        return duration * chance.uniform(0, 1.2)
    if not rarest:
        return duration * chance.random() ** 3  # the numbering is short and early
    return chance.choice(rarest) * chance.uniform(0.9, 1.1)


def kills(row: Row, machine: Machine, count: int) -> None:
    """A client that is killed at any moment loses nothing, and the next one finishes."""
    each, every = 100, 20  # giving an alias takes longest: the plug-in flushes it to the disk
    devices, entries = 2 * each, 2 * each // every
    machine.prepare()
    hits: dict[str, int] = {}
    half_files = 0
    share = count // len(LAYOUTS)
    wanted = max(1, share // 100)  # kills in each window, if need be by more rounds
    chance = random.Random(1)
    for layout in LAYOUTS:
        def reset() -> bytes:
            machine.reset(each, layout, every=every)
            return machine.ini.read_bytes()

        durations = []
        for _ in range(9):
            before = reset()
            whole = machine.run("proof_client", "life")
            durations.append(float(whole.stderr))
        expected, after = whole.stdout, machine.ini.read_bytes()
        row.expect(expected.endswith("code 0\n") and before != after, "the life that is not killed: " + expected)
        numbers, aliases = machine.kept()
        row.expect(sorted(numbers.values()) == list(range(devices)) and len(aliases) == entries, "not all was done")
        duration = statistics.median(durations)
        moments: dict[str, list[float]] = {window: [] for window in WINDOWS}
        rounds = 0
        while rounds < share or (rounds < 3 * share and min(map(len, moments.values())) < wanted):
            rounds += 1
            reset()
            moment = _moment(chance, duration, moments)
            ended = machine.run("proof_client", "life", str(int(moment)))
            if ended.returncode == 0:
                hits["not killed"] = hits.get("not killed", 0) + 1
                continue
            row.expect(ended.returncode in (-9, 9), f"ended with {ended.returncode}: {ended.stderr}")
            window = _window(machine, before, devices, entries)
            hits[window] = hits.get(window, 0) + 1
            moments.get(window, []).append(moment)
            half_files += machine.folder.joinpath("vykel.TMP").exists()
            left, given = machine.kept()
            text = machine.ini.read_bytes()
            row.expect(text in (before, after), f"half a file after {window}")
            row.expect(text == before or given == aliases, "aliases are neither in the file nor with the devices")
            row.expect(left.items() <= numbers.items(), f"other numbers: {left}")
            next_one = machine.run("proof_client", "life")
            row.expect(next_one.stdout == expected, f"after a kill while {window}: {next_one.stdout}")
            row.expect(machine.ini.read_bytes() == after, f"the file after a kill while {window}")
            row.expect(machine.kept() == (numbers, aliases), f"what is kept after a kill while {window}")
            row.expect(not machine.folder.joinpath("vykel.TMP").exists(), "vykel.TMP stays")
    killed = sum(hits.values()) - hits.get("not killed", 0)
    row.ran = f"{killed} of {sum(hits.values())} killed: " + ", ".join(
        f"{hits.get(name, 0)} {name}" for name in (*WINDOWS, "afterwards")) + f"; {half_files} left a vykel.TMP"
    for window in WINDOWS:
        row.expect(hits.get(window, 0) >= len(LAYOUTS) * wanted, f"only {hits.get(window, 0)} kills while {window}")
    row.expect(killed >= count // 2, "too few were killed")


def threads(row: Row, count: int, each: int) -> None:
    """Lives in many threads at once, under the thread sanitizer."""
    machine = HostMachine("threads", "host-tsan")
    machine.prepare().reset(4, "number")
    program = machine.build / "proof_client"
    row.expect(b"__tsan_" in program.read_bytes(), "built without the thread sanitizer")
    ended = machine.run("proof_client", "threads", str(count), str(each), timeout=3600, TSAN_OPTIONS="")
    reports = ended.stderr.count("WARNING: ThreadSanitizer")
    row.ran = f"{count} threads x {each} lives, {reports} reports, 0 suppressions"
    row.expect(ended.returncode == 0 and reports == 0, ended.stderr[:2000])
    row.expect(ended.stdout.split() == [str(8 * count * each), "0"], f"devices and failures: {ended.stdout}")


def reader(row: Row, machine: Machine, count: int) -> None:
    """A program that holds the legacy file open sees the old or the new one; the refresh after it finishes."""
    machine.prepare().reset(10, "number", "".join(f"key{i}={'v' * 60}\n" for i in range(2000)))
    copies = [machine.drive / "proof" / name for name in ("old.ini", "new.ini")]
    copies[0].write_bytes(machine.ini.read_bytes())
    machine.must("proof_client", "life")
    copies[1].write_bytes(machine.ini.read_bytes())
    out = machine.must("proof_client", "saves", str(count), *map(machine.named, [machine.ini, *copies]))
    refused, old, new, wrong = map(int, out.split())
    row.ran = f"{count} saves, {refused} refused and tried again; the reader saw {old} old, {new} new, {wrong} others"
    row.expect(wrong == 0, "half a file, or another one")
    row.expect(min(old, new) >= count // 50, "the reader did not see both")
    if not isinstance(machine, HostMachine):  # only Windows refuses to replace an open file
        row.expect(refused >= count // 50, "no save met the reader")
