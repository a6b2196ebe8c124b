"""The proof that the tests make the thread sanitizer report nothing."""

import os
import re
import subprocess

from proofs.machines import ROOT
from proofs.table import Row


QUICK = ["-R", "^(unit|transfer|plugin|library)_tests"]


def run(row: Row, full: bool) -> None:
    """Runs the tests of the library, or all, under the thread sanitizer without suppressions."""
    program = ROOT / "build" / "host-tsan" / "library_tests"
    row.expect(b"__tsan_" in program.read_bytes(), "built without the thread sanitizer")
    command = ["ctest", "--preset", "host-tsan", "-j", "2", *([] if full else QUICK)]
    ended = subprocess.run(command, cwd=ROOT, capture_output=True, text=True, errors="replace", check=False,
                           env={**os.environ, "TSAN_OPTIONS": ""})
    out = ended.stdout + ended.stderr
    reports = out.count("WARNING: ThreadSanitizer")
    counted = re.search(r"failed out of (\d+)", out)
    count = int(counted[1]) if counted else 0
    row.ran = f"{count} tests, {reports} reports, 0 suppressions"
    row.expect(ended.returncode == 0 and reports == 0, out[-2000:])
    row.expect(count >= (200 if full else 60), "too few tests ran")
