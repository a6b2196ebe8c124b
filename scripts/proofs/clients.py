"""Proofs with a client of the exports: lives, kills, threads."""

import random
import statistics
import subprocess

from proofs.machines import LAYOUTS, HostMachine, Machine
from proofs.table import Row


def lives(row: Row, machine: Machine, count: int) -> None:
    """Memory and handles stay the same, compared with a process that only loads and unloads the plug-ins."""
    machine.prepare().reset(4, "number")
    plugins = [machine.named(machine.library(plugin)) for plugin in machine.plugins]
    growth: list[int] = []
    for arguments in (plugins[:0], plugins):
        before, handles, after, handles_after, seen = map(
            int, machine.must("proof_client", "lives", str(count), *arguments).split())
        growth += [after - before, handles_after - handles]
        row.expect(seen == (0 if arguments else 8 * count), f"{seen} devices were seen")
    leaked, handles, floor, floor_handles = growth
    row.ran = (f"{count} lives: {leaked - floor:+d} bytes and {handles - floor_handles:+d} handles more than as many "
               "loads of the plug-ins")
    row.expect(leaked - floor < count and handles - floor_handles < 10, "memory or handles grow")


WINDOWS = ("numbering", "handing over", "saving")
STAGES = ("before", "numbering", "between", "handing over", "saving", "afterwards", "not killed")  # of a life, in order


class _Victims:
    """Clients on a machine with one layout of the legacy file, which are killed."""

    each, every = 100, 20  # giving an alias takes longest: the plug-in flushes it to the disk

    def __init__(self, row: Row, machine: Machine, layout: str):
        self.row = row
        self.machine = machine
        self.layout = layout
        self.moments: dict[str, list[float]] = {stage: [] for stage in STAGES}  # of the kills, by what they met
        self.half_files = 0
        self.durations: list[float] = []
        for _ in range(9):
            self.live()
        self.before = self.reset()
        self.expected = self.undisturbed().stdout
        self.after = machine.ini.read_bytes()
        self.numbers, self.aliases = machine.kept()
        row.expect(self.expected.endswith("code 0\n") and self.before != self.after and
                   sorted(self.numbers.values()) == list(range(2 * self.each)) and
                   len(self.aliases) == 2 * self.each // self.every, "a life that is not killed: " + self.expected)

    def reset(self) -> bytes:
        self.machine.reset(self.each, self.layout, every=self.every)
        return self.machine.ini.read_bytes()

    def live(self) -> None:
        """A life that is not killed, to see how long one takes now: the machine may do other work in between."""
        self.reset()
        self.durations.append(float(self.undisturbed().stderr.split()[-1]))

    def undisturbed(self) -> "subprocess.CompletedProcess[str]":
        """A client that nobody kills."""
        ended = self.machine.run("proof_client", "life")
        self.row.expect(ended.returncode == 0, f"an undisturbed client ended with {ended.returncode}: "
                        f"{ended.stdout[-500:]}{ended.stderr}")
        return ended

    def killed(self) -> int:
        return sum(len(self.moments[stage]) for stage in STAGES[:-1])

    def rarest(self) -> str:
        """The window that was met least."""
        return min(WINDOWS, key=lambda window: len(self.moments[window]))

    def moment(self, chance: random.Random) -> float:
        """When to kill next: at any moment, or every other time about when the window that was met least must be."""
        duration = statistics.median(self.durations[-5:])
        rarest = self.rarest()
        if chance.random() < 0.5:
            return duration * chance.uniform(0, 1.2)
        if self.moments[rarest]:
            return chance.choice(self.moments[rarest]) * chance.uniform(0.9, 1.1)
        # No kill met it yet. It lies after nearly all that came too early and before nearly all that came too late.
        place = STAGES.index(rarest)
        early = sorted(moment for stage in STAGES[:place] for moment in self.moments[stage]) or [0]
        late = sorted(moment for stage in STAGES[place + 1:] for moment in self.moments[stage]) or [duration]
        return chance.uniform(early[len(early) * 19 // 20], late[len(late) // 20])

    def window(self) -> str:
        """What the killed process was doing, by what it left."""
        numbers, aliases = self.machine.kept()
        return next(stage for stage, is_seen in (
            ("afterwards", self.machine.ini.read_bytes() != self.before),
            ("saving", len(aliases) == len(self.aliases)), ("handing over", aliases),
            ("between", len(numbers) == len(self.numbers)), ("numbering", numbers), ("before", True)) if is_seen)

    def kill(self, moment: float) -> None:
        """Kills a client so many microseconds after its start. Nothing is lost, and the next one finishes."""
        self.reset()
        ended = self.machine.run("proof_client", "life", str(int(moment)))
        if ended.returncode == 0:
            self.moments["not killed"].append(moment)
            return
        expect, machine = self.row.expect, self.machine
        expect(ended.returncode in (-9, 9), f"ended with {ended.returncode}: {ended.stderr}")
        window = self.window()
        self.moments[window].append(moment)
        temporary = machine.folder / "vykel.TMP"
        self.half_files += temporary.exists()
        numbers, aliases = machine.kept()
        text = machine.ini.read_bytes()
        expect(text == self.after or text == self.before, f"half a file after {window}")
        expect(text == self.before or aliases == self.aliases, "aliases are neither in the file nor with the devices")
        expect(numbers.items() <= self.numbers.items(), f"other numbers: {numbers}")
        out = self.undisturbed().stdout
        same = machine.ini.read_bytes() == self.after and machine.kept() == (self.numbers, self.aliases)
        expect(out == self.expected and same and not temporary.exists(),
               f"the client after a kill while {window} leaves something else: {out}")


def kills(row: Row, machine: Machine, count: int) -> None:
    """A client that is killed at any moment loses nothing, and the next one finishes."""
    machine.prepare()
    share = count // len(LAYOUTS)
    wanted = max(1, share // 100)  # kills in each window, if need be by more kills
    chance = random.Random(1)
    made = []
    for layout in LAYOUTS:
        victims = _Victims(row, machine, layout)
        made.append(victims)
        rounds = 0
        while rounds < 10 * share and (
                victims.killed() < share or len(victims.moments[victims.rarest()]) < wanted):
            rounds += 1
            if rounds % 10 == 0:
                victims.live()
            victims.kill(victims.moment(chance))
        met = len(victims.moments[victims.rarest()])
        row.expect(victims.killed() >= share and met >= wanted, f"only {victims.killed()} were killed, only {met} "
                   f"while {victims.rarest()}, with aliases by {layout}")
    hits = {stage: sum(len(each.moments[stage]) for each in made) for stage in STAGES}
    row.ran = f"{sum(each.killed() for each in made)} of {sum(hits.values())} killed: " + ", ".join(
        f"{hits[name]} {name}" for name in (*WINDOWS, "afterwards")) + (
        f"; {sum(each.half_files for each in made)} left a vykel.TMP")


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
