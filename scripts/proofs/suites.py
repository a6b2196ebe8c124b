"""The proof that the tests make the thread sanitizer report nothing."""

import os
import re
import subprocess

from proofs.machines import ROOT, WORK
from proofs.table import Row


QUICK = ["-R", "^(unit|transfer|plugin|library)_tests"]
REPORTS = "tsan-report"


def run(row: Row, full: bool) -> None:
    """Runs the tests of the library, or all, under the thread sanitizer without suppressions."""
    program = ROOT / "build" / "host-tsan" / "library_tests"
    row.expect(b"__tsan_" in program.read_bytes(), "built without the thread sanitizer")
    for old in WORK.glob(REPORTS + ".*"):
        old.unlink()
    # Each process writes its own file: the tests and the tool read what their children print. At its end a process
    # waits for late reports, by default for a second, and the tests start thousands.
    options = f'atexit_sleep_ms=20 log_path="{WORK / REPORTS}"'
    command = ["ctest", "--preset", "host-tsan", "-j", "2", *([] if full else QUICK)]
    ended = subprocess.run(command, cwd=ROOT, capture_output=True, text=True, errors="replace", check=False,
                           env={**os.environ, "TSAN_OPTIONS": options})
    out = ended.stdout + ended.stderr
    reports = [file.read_text(errors="replace") for file in WORK.glob(REPORTS + ".*")]
    counted = re.search(r"failed out of (\d+)", out)
    count = int(counted[1]) if counted else 0
    row.ran = f"{count} tests, {len(reports)} reports, 0 suppressions"
    row.expect(ended.returncode == 0, out[-2000:])
    row.expect(not reports, "".join(reports)[:2000])
    row.expect(count >= (200 if full else 60), "too few tests ran")
