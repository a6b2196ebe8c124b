"""Proofs with processes that do the same at the same time: the tests of the library, repeated."""

import re

from proofs.machines import Machine
from proofs.table import Row


def _repeat(row: Row, machine: Machine, test: str, rounds: int, **variables: str) -> str:
    """The output of so many rounds of a test."""
    ended = machine.run("transfer_tests", f"--gtest_filter=TransferProcesses.{test}", f"--gtest_repeat={rounds}",
                        timeout=3600, **variables)
    passed = ended.stdout.count("[  PASSED  ] 1 test")
    row.expect(ended.returncode == 0, ended.stdout[-2000:] + ended.stderr[-500:])
    row.expect(passed == rounds, f"{passed} of {rounds} rounds passed")
    return ended.stdout


def numbers(row: Row, machine: Machine, rounds: int) -> None:
    """16 processes number the same devices, and some of those that hold the lock are killed: none is given twice."""
    out = _repeat(row, machine, "RivalsGiveEachNumberOnce", rounds, VYKEL_PROOF="1")
    killed = sum(map(int, re.findall(r"killed: (\d+)", out)))
    row.ran = f"16 processes x {rounds} rounds, {killed} holders of the lock killed"
    row.expect(killed >= 4 * rounds, "too few holders were killed")


def handing_over(row: Row, machine: Machine, rounds: int) -> None:
    """8 processes hand over the same aliases: each is given once, and a reader sees whole files."""
    _repeat(row, machine, "RivalsGiveEachAliasOnceAndReadersSeeWholeFiles", rounds)
    row.ran = f"8 processes x {rounds} rounds, 64 aliases each"
