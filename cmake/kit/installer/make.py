#!/usr/bin/python3
"""make.py MSI FAMILY VERSION WXS FILE...

Makes the installer MSI from the description WXS and the files that it names, by wixl and msibuild: the same bytes
whenever and wherever it is made. FAMILY is the upgrade code of all releases. Times are those of SOURCE_DATE_EPOCH.
"""
import hashlib
import os
import shutil
import subprocess
import sys
import tempfile
import time
import uuid
from pathlib import Path

# Actions that set a property, and what they set it to.
PROPERTIES = {"ARPINSTALLLOCATION": "[INSTALLDIR]",
              "ARPHELPLINK": r"[INSTALLDIR]docs\troubleshooting.md",
              "Setup": "[#Tool]"}  # what the action of this name gets
# When they run: after the folders are known.
FIRST_PROPERTY = 1010
# For the machine (*), removed with the component (-), behind what is there ([~]).
ENVIRONMENT = ["Environment\tName\tValue\tComponent_", "s72\tl255\tL255\ts72", "Environment\tEnvironment",
               "Path\t=-*PATH\t[~];[INSTALLDIR]\tTool"]


def statements(version):
    """What to change in the tables."""
    sequence = "INSERT INTO `InstallExecuteSequence` (`Action`, `Condition`, `Sequence`) VALUES ('{}', '', {})"
    for i, (name, value) in enumerate(PROPERTIES.items()):
        yield ("INSERT INTO `CustomAction` (`Action`, `Type`, `Source`, `Target`) "
               f"VALUES ('Set{name}', 51, '{name}', '{value}')")
        yield sequence.format(f"Set{name}", FIRST_PROPERTY + i)
    yield sequence.format("RemoveEnvironmentStrings", 3300)
    yield sequence.format("WriteEnvironmentStrings", 5200)
    # Within the transaction: an older release is back when the new one fails.
    yield "UPDATE `InstallExecuteSequence` SET `Sequence` = 1501 WHERE `Action` = 'RemoveExistingProducts'"
    # Windows keeps a file that has a version rather than replace it by one that seems to have none.
    for binary in ("Library", "Tool"):
        yield f"UPDATE `File` SET `Version` = '{version}.0', `Language` = '1033' WHERE `File` = '{binary}'"
        yield f"DELETE FROM `MsiFileHash` WHERE `File_` = '{binary}'"


def summary(code, seconds):
    """The package's code and times, which wixl takes at random and from the clock."""
    at = time.strftime("%Y/%m/%d %H:%M:%S", time.gmtime(seconds))
    return ["PropertyId\tValue", "i2\tl255", "_SummaryInformation\tPropertyId",
            f"9\t{{{code}}}".upper(), f"12\t{at}", f"13\t{at}"]


def main(msi, family, version, *sources):
    seconds = int(os.environ["SOURCE_DATE_EPOCH"])
    environment = {**os.environ, "TZ": "UTC"}  # the cabinet and the summary hold local times
    content = hashlib.sha256(version.encode())
    with tempfile.TemporaryDirectory() as folder:
        for source in (__file__, *sources):
            content.update(Path(source).read_bytes())
            copy = shutil.copy(source, folder)
            os.utime(copy, (seconds, seconds))
        subprocess.run(["wixl", "-a", "x64", "-o", "made.msi", Path(sources[0]).name], check=True, cwd=folder,
                       env=environment)
        code = uuid.uuid5(uuid.UUID(family), content.hexdigest())
        tables = {"Environment.idt": ENVIRONMENT, "_SummaryInformation.idt": summary(code, seconds)}
        for name, lines in tables.items():
            Path(folder, name).write_bytes("".join(line + "\r\n" for line in lines).encode())
            subprocess.run(["msibuild", "made.msi", "-i", name], check=True, cwd=folder, env=environment)
        subprocess.run(["msibuild", "made.msi", "-q", *statements(version)], check=True, cwd=folder, env=environment)
        shutil.copy(Path(folder, "made.msi"), msi)


main(*sys.argv[1:])
