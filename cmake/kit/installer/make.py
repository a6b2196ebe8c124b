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
import uuid
from pathlib import Path

import olefile

# Actions that set a property, and what they set it to.
PROPERTIES = {"ARPINSTALLLOCATION": "[INSTALLDIR]",
              "ARPHELPLINK": r"[INSTALLDIR]docs\troubleshooting.md",
              "Setup": "[#Tool]"}  # what the action of this name gets
# When they run: after the folders are known.
FIRST_PROPERTY = 1010
ENVIRONMENT = """Environment\tName\tValue\tComponent_
s72\tl255\tL255\ts72
Environment\tEnvironment
Path\t=-*PATH\t[~];[INSTALLDIR]\tTool
"""  # for the machine (*), removed with the component (-), behind what is there ([~])


def statements():
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


def finish_tables(msi):
    """Adds what wixl cannot write."""
    table = msi.with_name("Environment.idt")
    table.write_bytes(ENVIRONMENT.replace("\n", "\r\n").encode())
    subprocess.run(["msibuild", msi, "-i", table], check=True)
    for statement in statements():
        subprocess.run(["msibuild", msi, "-q", statement], check=True)


def fix_summary(msi, code, seconds):
    """Gives the package a code and times that depend on nothing else."""
    stream = "\x05SummaryInformation"
    time = (seconds * 10_000_000 + 116_444_736_000_000_000).to_bytes(8, "little")  # from 1601 on
    with olefile.OleFileIO(msi, write_mode=True) as file:
        summary = bytearray(file.openstream(stream).read())
        old = file.get_metadata()
        at = summary.index(old.revision_number)
        summary[at:at + 38] = f"{{{code}}}".upper().encode()
        times = 0
        for at in range(0, len(summary) - 11, 4):
            if summary[at:at + 4] == b"\x40\0\0\0":  # the type of a time
                summary[at + 4:at + 12] = time
                times += 1
        if times != 2:
            sys.exit(f"{msi} has {times} times instead of two")
        file.write_stream(stream, bytes(summary))


def main(msi, family, version, *sources):
    seconds = int(os.environ["SOURCE_DATE_EPOCH"])
    content = hashlib.sha256(version.encode())
    with tempfile.TemporaryDirectory() as folder:
        for source in sources:
            content.update(Path(source).read_bytes())
            copy = shutil.copy(source, folder)
            os.utime(copy, (seconds, seconds))  # the cabinet holds it, as local time
        subprocess.run(["wixl", "-a", "x64", "-o", "made.msi", Path(sources[0]).name], check=True, cwd=folder,
                       env={**os.environ, "TZ": "UTC"})
        made = Path(folder, "made.msi")
        finish_tables(made)
        fix_summary(str(made), uuid.uuid5(uuid.UUID(family), content.hexdigest()), seconds)
        shutil.copy(made, msi)


main(*sys.argv[1:])
