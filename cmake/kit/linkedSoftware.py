#!/usr/bin/python3
"""linkedSoftware.py OUTPUT VERSION COMPILER BINARY...

Writes OUTPUT/NOTICE and OUTPUT/vykeldevenum.spdx.json (SPDX 2.3): the software of others that is in the
binaries, with its versions, licences and checksums. The linker's map beside each BINARY (NAME.map) lists the
objects that were linked. COMPILER finds the archives that hold them; Debian's package manager names their packages.
The time in the bill is SOURCE_DATE_EPOCH.
"""
import hashlib
import json
import os
import re
import subprocess
import sys
import time
import uuid
from pathlib import Path

# What may be in the binaries: Debian's packages, and their licence as far as it is linked in.
SOFTWARE = [
    ("CLI11", ["libcli11-dev"], "BSD-3-Clause"),
    ("nlohmann-json", ["nlohmann-json3-dev"], "MIT"),
    ("GCC-runtime", ["gcc-mingw-w64-x86-64-posix", "g++-mingw-w64-x86-64-posix"],
     "GPL-3.0-or-later WITH GCC-exception-3.1"),
    ("mingw-w64-runtime", ["mingw-w64-x86-64-dev"], "ZPL-2.1 AND MIT"),
]
HEADERS_ONLY = ["libcli11-dev", "nlohmann-json3-dev"]
ARCHIVES = ["stdc++", "gcc", "gcc_eh", "winpthread", "mingw32", "mingwex", "msvcrt", "kernel32", "advapi32",
            "shell32", "version"]
OBJECT_IN_MAP = re.compile(r"^[0-9a-f]+ [0-9a-f]+ +\d+ +(\S+\.o):\(", re.M)


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def linked_files(binaries, compiler):
    """The archives and start-up objects of others from which the linker took something."""
    archives = {}
    for name in ARCHIVES:
        archive = os.path.realpath(output_of(compiler, f"-print-file-name=lib{name}.a").strip())
        for member in output_of("ar", "t", archive).split():
            archives.setdefault(member, archive)
    files = set()
    for binary in binaries:
        for name in OBJECT_IN_MAP.findall(binary.with_suffix(".map").read_text()):
            if name not in archives and not os.path.isabs(name):
                sys.exit(f"{binary.name} has {name} linked in: add its archive to ARCHIVES")
            files.add(archives.get(name) or os.path.realpath(name))
    return files


def package_of(file):
    return output_of("dpkg-query", "-S", file).split(":")[0]


def version_of(package):
    return output_of("dpkg-query", "-W", "-f", "${Version}", package)


def headers_of(package):
    names = output_of("dpkg-query", "-L", package).split()
    return [name for name in names if re.search(r"/include/.*\.hpp$", name)]


def notice(software):
    parts = ["The owner of this software sets the terms of its use before anything is published. No terms are set yet:\n"
             "nothing here permits anybody to use it, to change it or to pass it on.\n",
             "The binaries contain the following software. Where a package's text also names licences of parts\n"
             "that are not linked in, these do not apply here.\n"]
    for name, packages, licence in software:
        texts = {Path("/usr/share/doc", package, "copyright").read_text() for package in packages}
        title = f"{name} {version_of(packages[0])} ({licence})"
        parts += ["=" * 100, title, "of Debian's " + ", ".join(packages), "=" * 100 + "\n", *sorted(texts)]
    return "\n".join(parts)


class BillOfMaterials:
    """An SPDX document: our package, those of others, and the files of each."""

    def __init__(self, name, version, namespace):
        created = int(os.environ["SOURCE_DATE_EPOCH"])
        self.files, self.relationships, self.main = [], [], f"SPDXRef-{name}"
        self.document = {
            "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT",
            "name": f"{name}-{version}", "documentNamespace": uuid.uuid5(uuid.NAMESPACE_OID, namespace).urn,
            "creationInfo": {"created": time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(created)),
                             "creators": ["Organization: Morvance", "Tool: linkedSoftware.py"]},
            "packages": [], "files": self.files, "relationships": self.relationships}
        self.relate("SPDXRef-DOCUMENT", "DESCRIBES", self.main)

    def relate(self, element, relationship, other):
        self.relationships.append(
            {"spdxElementId": element, "relationshipType": relationship, "relatedSpdxElement": other})

    def add_package(self, name, version, supplier, licence, files):
        """FILES are pairs: the name within the package, and the path on this machine."""
        sums = []
        for shown, path in sorted(files):
            content = Path(path).read_bytes()
            sums.append(hashlib.sha1(content).hexdigest())
            self.files.append({
                "SPDXID": f"SPDXRef-File-{len(self.files) + 1}", "fileName": "./" + shown,
                "checksums": [{"algorithm": "SHA1", "checksumValue": sums[-1]},
                              {"algorithm": "SHA256", "checksumValue": hashlib.sha256(content).hexdigest()}],
                "licenseConcluded": "NOASSERTION", "copyrightText": "NOASSERTION"})
            self.relate(f"SPDXRef-{name}", "CONTAINS", self.files[-1]["SPDXID"])
        self.document["packages"].append({
            "SPDXID": f"SPDXRef-{name}", "name": name, "versionInfo": version,
            "supplier": f"Organization: {supplier}", "downloadLocation": "NOASSERTION", "filesAnalyzed": True,
            "packageVerificationCode": {
                "packageVerificationCodeValue": hashlib.sha1("".join(sorted(sums)).encode()).hexdigest()},
            "licenseConcluded": "NOASSERTION", "licenseDeclared": licence, "copyrightText": "NOASSERTION"})
        if f"SPDXRef-{name}" != self.main:
            self.relate(f"SPDXRef-{name}", "STATIC_LINK", self.main)


def main():
    output, version, compiler = Path(sys.argv[1]), sys.argv[2], sys.argv[3]
    binaries = [Path(name) for name in sys.argv[4:]]
    files = {package: headers_of(package) for package in HEADERS_ONLY}
    for file in linked_files(binaries, compiler):
        files.setdefault(package_of(file), []).append(file)
    unknown = set(files) - {package for _, packages, _ in SOFTWARE for package in packages}
    if unknown:
        sys.exit(f"{unknown} linked in: add it to SOFTWARE, with its licence")

    sums = [hashlib.sha256(binary.read_bytes()).hexdigest() for binary in binaries]
    bill = BillOfMaterials("vykeldevenum", version, "".join(sums))
    ours = [("bin/" + binary.name, binary) for binary in binaries]
    bill.add_package("vykeldevenum", version, "Morvance", "NOASSERTION", ours)
    for name, packages, licence in SOFTWARE:
        linked = [(file.lstrip("/"), file) for package in packages for file in files[package]]
        bill.add_package(name, version_of(packages[0]), "Debian", licence, linked)
    (output / "vykeldevenum.spdx.json").write_text(json.dumps(bill.document, indent=1) + "\n")
    (output / "NOTICE").write_text(notice(SOFTWARE))


main()
