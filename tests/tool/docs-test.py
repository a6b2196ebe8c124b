#!/usr/bin/env python3
# docs-test.py BUILD
#
# Does what the documents say, with the kit that kit-test.sh made for the build in BUILD:
# - types every ```cmd block into Windows' command prompt, all of one document on one new machine, in the unpacked ZIP.
#   A comment on the line before may say <!-- in bin --> (type it there), <!-- ends with N: why --> (the exit code that
#   is right), both as <!-- in bin, ends with N: why -->, or <!-- not run: why -->, which is listed;
# - finds in these blocks what only one of cmd and PowerShell 5 understands, and every block that does not say its kind;
# - finds every block after a comment <!-- from FILE --> word for word in that file; compiles every other ```cpp block,
#   and checks those that are plug-ins;
# - reads every ```json block;
# - asks the tool for the help of every `vykeldev COMMAND` and for each of its `--option`s.
# ctest sets CXX.

import json
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

source = Path(__file__).resolve().parents[2]
build = Path(sys.argv[1]).resolve()
kit, work = build / "kit-test/kit", build / "docs-test"
zips = (build / "kit-test/zips.txt").read_text().splitlines()
documents = [source / name for name in ("README.md", "cmake/kit/README.md.in", "plugins/simulated/README.md",
                                        *source.glob("bindings/*/README.md"))] + sorted(source.glob("docs/*.md"))
block = re.compile(r"^(?:<!-- ([^\n]*) -->\n)?```([^\n]*)\n(.*?)^```$", re.M | re.S)
differences = {
    r"[&|<>]": "PowerShell 5 has no &&, no || and no <, and writes UTF-16 after >",
    r"[%$]": "cmd and PowerShell name variables in different ways",
    r"['`^;,(){}@#]|\\\"|\\$": "cmd and PowerShell quote, join and end in different ways",
    r"\s-[^\s\"]*[.:]": "PowerShell 5 splits an option at a dot or colon: put it in quotes",
    r"^(call|cat|cp|del|dir|echo|export|for|if|ls|mv|rd|rem|rm|set|start|touch|type)\b": "not the same command in both",
    r"^(cd|copy|mkdir).*/": "cmd takes a slash for an option, PowerShell has no such options",
    r"^(\"|vykeldev\b|\S*/)": "both start a program of the kit only by FOLDER\\NAME, without quotes",
}
failures = []


def windows(path):
    return "Z:" + str(path).replace("/", "\\")


tool = windows(kit / "bin/vykeldev")


# Types lines into Windows' command prompt on a new machine. Returns what is shown.
def type_in(name, lines):
    batch = work / (name.replace("/", "-") + ".bat")
    batch.write_text("\r\n".join(["@echo off", f"set PATH={windows(work)};%PATH%", *lines, "exit 0", ""]))
    wine = [source / "scripts/run-under-wine.sh", "--prefix", build / "wineprefix", "--private"]
    typed = subprocess.run([*wine, "cmd", "/c", windows(batch)], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                           stderr=subprocess.STDOUT, check=False, text=True, errors="replace")
    print(f"{name}:\n{typed.stdout}")
    if typed.returncode:
        failures.append(f"{name}: the last command that is shown above fails")
    return typed.stdout


# What to type for one command, which must end with this code.
def must(command, code=0):
    return [f"echo ^> {command}", f"cmd /c {command}", f"if not %errorlevel%=={code} exit 1"]


def try_program(code):
    is_plugin = "vykel_initializePlugin" in code
    options = ["-shared", "-static", "-o", work / "plugin.dll"] if is_plugin else ["-fsyntax-only"]
    gcc = [os.environ["CXX"], "-x", "c++", "-std=c++11", "-Wall", "-Wextra", "-Werror", *options, f"-I{kit}/include", "-"]
    if subprocess.run(gcc, input=code.encode(), check=False).returncode:
        yield "has a program that does not compile"
    elif is_plugin:
        check = must(f"{tool} check {windows(work)}\\plugin.dll", 4) # it warns: no device has a number
        type_in("plug-in", [f"{tool} setup", *check])


def try_document(name, text):
    lines = []
    if re.search(r"```|\n\n    ", block.sub("", text)):
        yield "has a block without fences around it"
    for note, kind, code in block.findall(text):
        if kind not in ("cmd", "cmake", "cpp", "csharp", "ini", "json", "python", "text"):
            yield f"has a block of no known kind: {code}"
        if note.startswith("from ") and code not in (source / note[5:]).read_text():
            yield f"shows another {note[5:]}"
        if kind == "cpp":
            yield from try_program(code)
        elif kind == "json":
            json.loads(code)
        elif kind == "cmd":
            yield from (f"has '{found}': {why}" for form, why in differences.items()
                        for found in filter(re.compile(form).search, code.splitlines()))
            if note.startswith("not run: "):
                print(f"{name}: {note}: {code}")
            else:
                lines += ["cd /d %KIT%" + "\\bin" * note.startswith("in bin")]
                lines += sum((must(c, re.search(r"ends with (\d)|$", note)[1] or 0) for c in code.splitlines()), [])
    if lines:
        machine = work / name / "a kit"
        shutil.unpack_archive(next(zip for zip in zips if zip.endswith("-x64.zip")), machine)
        type_in(name, [f"set KIT={windows(next(machine.iterdir()))}", *lines])


def try_help(text):
    uses = sorted(set(re.findall(r"`(?:\.\\|bin\\)?vykeldev ([a-z]+)([^`]*)`", text)))
    shown = type_in("help", [f"{tool} {command} --help" for command in dict(uses)])
    for command, arguments in uses:
        usage = re.search(rf"^Usage: vykeldev {command} .*?(?=^Usage|\Z)|\Z", shown, re.M | re.S)[0]
        if any(word not in usage for word in ["Usage", *re.findall(r"--[a-z-]+", arguments)]):
            yield f"say `vykeldev {command}{arguments}`, but the tool knows no such command or option"


shutil.rmtree(work, ignore_errors=True)
work.mkdir()
# The readers' CMake: this machine's, for Windows. Wine starts programs of Linux, but does not wait for them.
done = windows(work / "done.bat")
(work / "cmake.bat").write_text(
    f"@echo off\r\nif exist {done} del {done}\r\nlinux.exe %*\r\n:wait\r\nif not exist {done} goto wait\r\n{done}\r\n")
(work / "linux.exe").write_text(f"""#!/bin/sh
CMAKE_TOOLCHAIN_FILE={source}/cmake/mingw-w64.cmake cmake "$@" >>{work}/cmake.log 2>&1
echo "@exit /b $?" >{work}/done && mv {work}/done {work}/done.bat
""")
(work / "linux.exe").chmod(0o755)
for document in documents:
    name = str(document.relative_to(source))
    failures += (f"{name} {failure}" for failure in try_document(name, document.read_text()))
failures += ("the documents " + failure for failure in try_help("".join(d.read_text() for d in documents)))
sys.exit("\n".join("FAILED: " + failure for failure in failures) or 0)
