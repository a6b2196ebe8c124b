#!/bin/bash
# package-test.sh BUILD
#
# Does with what scripts/package makes what its receivers do: checks the sums and the bill of materials, installs the
# MSI and removes it again. docs-test.py types the commands of the kit's README.
set -eu -o pipefail
source_dir=$(cd "$(dirname "$0")/../.." && pwd)
build=$(cd "$1" && pwd)
work=$build/package-test
rm -rf "$work"
mkdir -p "$work"

windows_path() { echo "Z:${1//\//\\}"; }

# Types standard input into Windows' command prompt on a new machine; shows what it shows.
prompt() {
  { echo @echo off; cat; } | sed 's/$/\r/' >"$work/$1.bat"
  "$source_dir/scripts/run-under-wine.sh" --prefix "$build/wineprefix" --private \
    cmd /c "$(windows_path "$work/$1.bat")" | tr -d '\r' | tee "$work/$1.txt"
}

# Fails unless the text $1 lists each of the sample's devices $2 times.
expect_devices() {
  for device in "KEL0 .*left/lamp" "KEL1 .*left/valve" "KEL2 .*left/pump"; do
    grep -c "$device" "$1" | grep -x "$2" >/dev/null || { echo "FAILED: $device"; exit 1; }
  done
}

"$source_dir/scripts/package" >"$work/package.log" || { cat "$work/package.log"; exit 1; }
cd "$source_dir/build/package"
sha256sum --quiet -c SHA256SUMS
[ "$(wc -l <SHA256SUMS)" -eq 3 ] || { echo "FAILED: there are not three files:"; cat SHA256SUMS; exit 1; }
msi=$(windows_path "$PWD/$(echo *.msi)")
cd "$work"
for zip in "$source_dir"/build/package/*.zip; do cmake -E tar xf "$zip"; done
cd vykeldevenum-*-windows-x64
bin=$(windows_path "$PWD/bin")
sha256sum --quiet -c SHA256SUMS

echo "== bill of materials"
/usr/bin/python3 - "$source_dir/tests/tool/spdx.schema.json" <<'PYTHON'
import hashlib, json, os, sys
from jsonschema import Draft202012Validator
document = json.load(open("vykeldevenum.spdx.json"))
Draft202012Validator(json.load(open(sys.argv[1]))).validate(document)
ids = {e["SPDXID"] for e in document["packages"] + document["files"]} | {document["SPDXID"]}
assert all({r["spdxElementId"], r["relatedSpdxElement"]} <= ids for r in document["relationships"])
notice = open("NOTICE").read()
for package in document["packages"][1:]:
    assert f'\n{package["name"]} {package["versionInfo"]} ({package["licenseDeclared"]})\n' in notice, package
sums = {f["fileName"]: f["checksums"][1]["checksumValue"] for f in document["files"]}
for name, value in sums.items():
    path = name if name.startswith("./bin/") else name[1:]
    assert value == hashlib.sha256(open(path, "rb").read()).hexdigest(), name
assert {"./bin/" + n for n in os.listdir("bin") if n.endswith((".dll", ".exe"))} <= sums.keys()
linked = {"CLI.hpp", "json.hpp", "libstdc++.a", "libgcc_eh.a", "libwinpthread.a", "crt2.o"}
assert linked <= {os.path.basename(n) for n in sums}
PYTHON

echo "== installer"
prompt installer <<BAT
msiexec /i $msi /qn
"C:\Program Files\Morvance\VY-KEL\vykeldev" setup --check
"C:\Program Files\Morvance\VY-KEL\vykeldev" register simulated $bin\simulated.dll
"C:\Program Files\Morvance\VY-KEL\vykeldev" list
msiexec /x $msi /qn
dir /s /b "C:\Program Files\Morvance"
reg query HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall /s
$bin\vykeldev list
BAT
! grep missing "$work/installer.txt" || { echo "FAILED: not set up"; exit 1; }
expect_devices "$work/installer.txt" 2
! grep -E 'Program Files.Morvance|Uninstall' "$work/installer.txt" || { echo "FAILED: left behind"; exit 1; }
