"""Machines to prove things on: a registry, a drive C with the configuration folder, and sample plug-ins."""

import os
import re
import shutil
import subprocess
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
WORK = ROOT / "build" / "proof"
LAYOUTS = ("number", "token")


class Machine:
    """A machine with the plug-ins left and right. Each build has another kind of machine."""

    build: Path
    root: Path
    suffix: str
    drive: Path
    plugins = ("left", "right")

    def command(self, program: str) -> list[str]:
        raise NotImplementedError

    def named(self, path: Path) -> str:
        """The name of a file for programs that run on the machine."""
        return str(path)

    def environment(self) -> dict[str, str]:
        return {}

    def run(self, program: str, *arguments: str, timeout: float = 600,
            **variables: str) -> "subprocess.CompletedProcess[str]":
        """Runs a built program to its end; its output is text without carriage returns."""
        command = self.command(program) + list(arguments)
        ended = subprocess.run(
            command, capture_output=True, timeout=timeout, stdin=subprocess.DEVNULL, cwd=WORK, check=False,
            env={**os.environ, **self.environment(), **variables})
        out, error = (text.decode().replace("\r", "") for text in (ended.stdout, ended.stderr))
        return subprocess.CompletedProcess(command, ended.returncode, out, error)

    def must(self, program: str, *arguments: str, **variables: str) -> str:
        ended = self.run(program, *arguments, timeout=600, **variables)
        if ended.returncode != 0:
            raise RuntimeError(f"{program} {' '.join(arguments)}: {ended.returncode} {ended.stdout}{ended.stderr}")
        return ended.stdout

    @property
    def folder(self) -> Path:
        return self.drive / "ProgramData" / "Morvance" / "VY-KEL"

    @property
    def ini(self) -> Path:
        return self.folder / "vykel.ini"

    def library(self, plugin: str) -> Path:
        return self.drive / "proof" / (plugin + self.suffix)

    def numbers(self, plugin: str) -> Path:
        return self.folder / (plugin + ".numbers")

    def prepare(self) -> "Machine":
        """Sets the machine up, with the plug-ins registered."""
        (self.drive / "proof").mkdir(parents=True, exist_ok=True)
        (self.drive / "ProgramData").mkdir(exist_ok=True)
        for plugin in self.plugins:
            shutil.copy(self.build / ("simulated" + self.suffix), self.library(plugin))
        self.register()
        return self

    def register(self) -> None:
        self.must("vykeldev", "setup")
        for plugin in self.plugins:
            self.must("vykeldev", "register", plugin, self.named(self.library(plugin)))

    def reset(self, count: int, layout: str, padding: str = "", every: int = 1, numbered: bool = False) -> None:
        """Gives each plug-in so many devices without alias, with or without number, and the legacy file an alias
        for each device, or only for the first and each `every`-th after it."""
        for place, plugin in enumerate(self.plugins):
            self.numbers(plugin).unlink(missing_ok=True)
            text = "".join(f'token="{plugin}/{i}" alias=""' + (f" number={place * count + i}" if numbered else "") + "\n"
                           for i in range(count))
            self.library(plugin).with_suffix(".devices").write_bytes(text.encode())
        self.folder.joinpath("vykel.TMP").unlink(missing_ok=True)
        self.ini.write_bytes(self.legacy(count, layout, padding, every).encode())

    def legacy(self, count: int, layout: str, padding: str, every: int) -> str:
        tokens = [f"{plugin}/{i}" for plugin in self.plugins for i in range(count)]
        if layout == "number":
            keys = "".join(f"Alias{n}=KEL{n}\n" for n in range(0, len(tokens), every))
            return f"[Aliases]\n{keys}[Keep]\nme=1\n{padding}"
        sections = "".join(f"[Alias{n}]\nAlias=Alias{n}\nPersistentToken={token}\nLocal=True\n"
                           for n, token in enumerate(tokens[::every]))
        return f"[General]\nMajorVersion=15\nMinorVersion=0\n[Keep]\nme=1\n{padding}{sections}"

    def kept(self) -> tuple[dict[str, int], dict[str, str]]:
        """What the plug-ins keep: the number and the alias of each token that has one."""
        numbers: dict[str, int] = {}
        aliases: dict[str, str] = {}
        for plugin in self.plugins:
            for path in (self.library(plugin).with_suffix(".devices"), self.numbers(plugin)):
                for line in path.read_text().splitlines() if path.exists() else ():
                    token = re.search(r'token="([^"]*)"', line)
                    if token is None:
                        continue
                    if number := re.search(r"\bnumber=(\d+)", line):
                        numbers[token[1]] = int(number[1])
                    if alias := re.search(r'\balias="([^"]+)"', line):
                        aliases[token[1]] = alias[1]
        return numbers, aliases


class HostMachine(Machine):
    """The host build over winhost: the machine is a folder."""

    suffix = ".so"
    preset = "host"  # of the build to prove

    def __init__(self, name: str, build: str = ""):
        self.build = ROOT / "build" / (build or self.preset)
        self.root = WORK / name
        shutil.rmtree(self.root, ignore_errors=True)
        self.drive = self.root / "c"

    def command(self, program: str) -> list[str]:
        # A machine of another build needs the tool only to be prepared.
        return [str((ROOT / "build" / self.preset if program == "vykeldev" else self.build) / program)]

    def environment(self) -> dict[str, str]:
        return {"WINHOST_ROOT": str(self.root)}


class WineMachine(Machine):
    """The Windows build under Wine. There is one; a new one forgets what the last one left."""

    suffix = ".dll"
    build = ROOT / "build" / "windows-clang"
    prefix = WORK / "wine"
    drive = prefix / "drive_c"

    def __init__(self, name: str = ""):
        self.run("vykeldev", "--version")  # makes the prefix when there is none
        for folder in ("proof", "ProgramData/Morvance"):
            shutil.rmtree(self.drive / folder, ignore_errors=True)

    @classmethod
    def runner(cls) -> list[str]:
        return [str(ROOT / "scripts" / "run-under-wine.sh"), "--prefix", str(cls.prefix)]

    @classmethod
    def stop(cls) -> None:
        if cls.prefix.exists():
            subprocess.run(cls.runner() + ["--stop"], check=False, capture_output=True)

    def command(self, program: str) -> list[str]:
        return self.runner() + [str(self.build / (program + ".exe"))]

    def named(self, path: Path) -> str:
        return "C:\\" + str(path.relative_to(self.drive)).replace("/", "\\")
