"""Proofs with calls of the system, and allocations, that fail."""

import json
import re
from concurrent.futures import ThreadPoolExecutor

from proofs.machines import LAYOUTS, HostMachine, Machine
from proofs.table import Row

# What a call of the system may report; 0 is what the call itself would most likely report.
ERRORS = (0, 2, 3, 4, 5, 8, 32, 33, 112, 87, 122, 234, 1117, 259, 997)
DEVICES = 2  # of each plug-in


def library(row: Row, machine: Machine, errors: str) -> None:
    """The tests in which calls of the system and allocations fail; in three scenarios, each of them."""
    (machine.root / "tmp").mkdir(parents=True)
    ended = machine.run("fault_tests", timeout=7200, TMPDIR=str(machine.root / "tmp"),
                        **({"VYKEL_PROOF": errors} if errors else {}))
    struck = [(int(calls), int(allocations))
              for calls, allocations in re.findall(r"struck: (\d+) calls, (\d+) allocations", ended.stdout)]
    calls, allocations = sum(each[0] for each in struck), sum(each[1] for each in struck)
    row.ran = f"{len(struck)} scenarios: {calls} calls of the system and {allocations} allocations failed, " + (
        "14 error codes" if errors else "natural error codes")
    row.expect(ended.returncode == 0, ended.stdout[-2000:] + ended.stderr)
    row.expect(len(struck) == 3 and calls >= (3000 if errors else 200) and allocations >= 600, "too few were struck")


def _is_json(text: str) -> bool:
    try:
        return bool(json.loads(text))
    except ValueError:
        return False


class _Command:
    """A command of the tool on a machine of its own, and what it gives when nothing fails."""

    def __init__(self, arguments: tuple[str, ...], layout: str):
        self.name = arguments[0]
        self.layout = layout
        self.machine = HostMachine(f"tool/{self.name}-{layout}").prepare()
        path = self.machine.library("left")
        self.arguments = tuple(str(path) if word == "PATH" else word for word in arguments)
        self.log = self.machine.root / "struck"
        self.points = 0
        self.kinds: set[str] = set()
        self.failures: list[str] = []
        self.reset()
        self.before = self.machine.ini.read_bytes()
        self.listed = self.machine.must("vykeldev", "list", "--json")
        self.after = self.machine.ini.read_bytes()
        self.aliases = self.machine.kept()[1]

    def reset(self) -> None:
        # With numbers: the plug-ins that can be loaded number their devices first, so the numbers would differ.
        self.machine.reset(DEVICES, self.layout, numbered=True)
        self.log.unlink(missing_ok=True)

    def strike(self, fault: str) -> bool:
        """Runs the command with a fault; says whether it struck. Afterwards everything still works."""
        self.reset()
        ended = self.machine.run("vykeldev", *self.arguments, timeout=60, WINHOST_FAULT=fault,
                                 WINHOST_FAULT_LOG=str(self.log))
        struck = self.log.read_text().split() if self.log.exists() else []
        self.points += bool(struck)
        self.kinds.update(struck)
        text = self.machine.ini.read_bytes().decode()
        kept = self.machine.kept()[1]
        lost = [alias for token, alias in self.aliases.items()
                if kept.get(token) != alias and not re.search(rf"\b{alias}\b", text)]
        if self.name in ("setup", "register"):
            self.machine.register()
        again = self.machine.run("vykeldev", "list", "--json")
        output = ended.stdout + ended.stderr
        wrong = [what for is_wrong, what in (
            (ended.returncode not in (0, 1, 3, 4, 5), f"exit code {ended.returncode}"),
            (ended.returncode != 0 and not output, "fails without a word"),
            ("\0" in output, "prints zero bytes"),
            ("--json" in self.arguments and (ended.stdout or ended.returncode == 0) and not _is_json(ended.stdout),
             "prints no JSON: " + ended.stdout[-200:]),
            (lost or "me=1" not in text or (self.name != "list" and text.encode() != self.before),
             f"lost: {lost} of {text}"),
            (again.stdout != self.listed or self.machine.ini.read_bytes() != self.after,
             "the list after it differs: " + again.stdout + again.stderr)) if is_wrong]
        self.failures += [f"{self.name} with {fault} ({' '.join(struck[:3])}): {each}" for each in wrong]
        return bool(struck)

    def walk(self, errors: tuple[int, ...], step: int) -> "_Command":
        for error in errors:
            suffix = f":{error}" if error else ""
            for effect in ("fail", "onward"):
                nth = 1
                while self.strike(f"Any:{nth}:{effect}{suffix}"):
                    nth += step
            for kind in sorted(self.kinds) if error else ():
                self.strike(f"{kind}:1:onward{suffix}")
        return self


def tool(row: Row, full: bool) -> None:
    """Commands of the tool while each call of the system fails: a known exit code, a word, nothing lost."""
    commands = (("list", "--json"), ("list",), ("aliases", "--json"), ("doctor", "--json"), ("setup",),
                ("register", "left", "PATH"))
    made = [_Command(arguments, LAYOUTS[i % 2]) for i, arguments in enumerate(commands)]
    with ThreadPoolExecutor(2) as pool:
        walks = [pool.submit(command.walk, ERRORS if full else (0,), 1 if full else 7) for command in made]
    for walk in walks:
        row.failures += walk.result().failures
    points = ", ".join(f"{command.points} of {' '.join(command.arguments[:2])}" for command in made)
    kinds = set().union(*(command.kinds for command in made))
    row.ran = f"{sum(command.points for command in made)} runs in which a call failed: {points}; " \
              f"{len(kinds)} kinds of calls"
    row.expect(min(command.points for command in made) >= 10 and len(kinds) >= 25,
               f"too little was struck: {points}, {sorted(kinds)}")
