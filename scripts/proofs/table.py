"""The table that scripts/prove prints: a row for each proof."""

import time
from collections.abc import Callable


class Row:
    """What one proof ran, and what failed. A row that did not look fails, too."""

    def __init__(self, name: str, build: str):
        self.name = name
        self.build = build
        self.ran = ""
        self.failures: list[str] = []

    def expect(self, holds: bool, otherwise: str) -> None:
        if not holds:
            self.failures.append(otherwise)

    def prove(self, proof: Callable[..., None], *arguments: object) -> "Row":
        """Runs the proof, and prints the row of the table and what failed."""
        begin = time.monotonic()
        try:
            proof(self, *arguments)
        except Exception as error:  # a proof that breaks off is a failure, and the others still run
            self.failures.append(f"{type(error).__name__}: {error}")
        self.expect(self.ran != "", "it ran nothing")
        seconds = time.monotonic() - begin
        print(f"| {self.name} | {self.build} | {self.ran} | {len(self.failures)} | {seconds:.0f} s |", flush=True)
        for failure in self.failures[:5]:
            print(f"    FAILED: {failure}", flush=True)
        return self
