"""The proof that the Windows build and the host build do the same."""

import json
import re

from proofs.machines import ROOT, HostMachine, Machine, WineMachine
from proofs.table import Row

COMMANDS = (("vykeldev", "aliases", "--json"), ("proof_client", "life"), ("vykeldev", "list", "--json"),
            ("vykeldev", "aliases", "--json"))


def _outcome(machine: Machine, scenario: dict[str, str]) -> list[tuple[object, ...]]:
    """The exit codes and outputs of the commands, and the files after them."""
    machine.reset(0, "number")
    machine.ini.unlink()
    for plugin in machine.plugins:
        machine.library(plugin).with_suffix(".devices").write_bytes(scenario[plugin].encode())
    if "legacy" in scenario:
        machine.ini.write_bytes(scenario["legacy"].encode())
    outcome: list[tuple[object, ...]] = []
    for command in COMMANDS:
        ended = machine.run(*command)
        # Of the path of a device's plug-in, only the name is the same.
        shown = re.sub(r'"plugin": ".*?(\w+)\.(so|dll)"', r'"plugin": "\1"', ended.stdout)
        outcome.append((" ".join(command), ended.returncode, shown))
    for path in (machine.ini, *map(machine.numbers, machine.plugins)):
        outcome.append((path.name, path.read_bytes() if path.exists() else None))
    return outcome


def same(row: Row) -> None:
    """Each scenario gives the same codes, JSON and bytes of files on both builds."""
    scenarios = json.loads((ROOT / "tests" / "proof" / "scenarios.json").read_text())
    machines = [HostMachine("builds").prepare(), WineMachine().prepare()]
    compared = moved = 0
    for scenario in scenarios:
        host, windows = (_outcome(machine, scenario) for machine in machines)
        compared += len(host)
        moved += host[4][1] != (scenario["legacy"].encode() if "legacy" in scenario else None)
        for one, other in zip(host, windows):
            row.expect(one == other, f"{scenario['name']}: {one} on the host, {other} on Windows")
    row.ran = f"{len(scenarios)} scenarios, {compared} outputs and files compared, {moved} legacy files were changed"
    row.expect(moved >= 3, "too few legacy files were changed")
