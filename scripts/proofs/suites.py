"""Proofs with the tests of the library: repeated, with processes that do the same at the same time, and under the
thread sanitizer."""

import os
import re
import subprocess

from proofs.machines import ROOT, WORK, Machine
from proofs.table import Row


def _repeat(row: Row, machine: Machine, test: str, rounds: int, **variables: str) -> str:
    """The output of so many rounds of a test."""
    ended = machine.run("transfer_tests", f"--gtest_filter=TransferProcesses.{test}", f"--gtest_repeat={rounds}",
                        timeout=3600, **variables)
    passed = ended.stdout.count("[  PASSED  ] 1 test")
    row.expect(ended.returncode == 0 and passed == rounds,
               f"{passed} of {rounds} rounds passed: {ended.stdout[-2000:]}{ended.stderr[-500:]}")
    return ended.stdout


def numbers(row: Row, machine: Machine, rounds: int) -> None:
    """16 processes number the same devices, and some of those that hold the lock are killed: none is given twice."""
    out = _repeat(row, machine, "RivalsGiveEachNumberOnce", rounds, VYKEL_PROOF="1")
    killed = sum(map(int, re.findall(r"killed: (\d+)", out)))
    row.ran = f"16 processes x {rounds} rounds, {killed} holders of the lock killed"
    row.expect(killed >= 4 * rounds, "too few holders were killed")


def handing_over(row: Row, machine: Machine, rounds: int) -> None:
    """8 processes hand over the same aliases: each is given once, and a reader sees whole files."""
    _repeat(row, machine, "RivalsGiveEachAliasOnceAndReadersSeeWholeFiles", rounds, VYKEL_PROOF="1")
    row.ran = f"8 processes x {rounds} rounds, 64 aliases each"


def run(row: Row, full: bool) -> None:
    """Runs the tests of the library, or all, under the thread sanitizer without suppressions."""
    program = ROOT / "build" / "host-tsan" / "library_tests"
    row.expect(b"__tsan_" in program.read_bytes(), "built without the thread sanitizer")
    for old in WORK.glob("tsan-report.*"):
        old.unlink()
    # Each process writes its own file: the tests and the tool read what their children print. At its end a process
    # waits for late reports, by default for a second, and the tests start thousands.
    options = f'atexit_sleep_ms=20 log_path="{WORK}/tsan-report"'
    quick = [] if full else ["-R", "^(unit|transfer|plugin|library)_tests"]
    command = ["ctest", "--preset", "host-tsan", "-j", "2", *quick]
    ended = subprocess.run(command, cwd=ROOT, capture_output=True, text=True, errors="replace", check=False,
                           env={**os.environ, "TSAN_OPTIONS": options})
    out = ended.stdout + ended.stderr
    reports = [file.read_text(errors="replace") for file in WORK.glob("tsan-report.*")]
    count = sum(map(int, re.findall(r"failed out of (\d+)", out)))
    row.ran = f"{count} tests, {len(reports)} reports, 0 suppressions"
    row.expect(ended.returncode == 0 and not reports, out[-2000:] + "".join(reports)[:2000])
    row.expect(count >= (180 if full else 50), "too few tests ran")
