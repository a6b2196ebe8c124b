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

echo "== packed again, by somebody else, elsewhere in the world"
cp -r . "$work/release"
rm -r "$build"/*.msi "$build"/cmake/kit/{NOTICE,*.whl} "$build/docs/html"
(umask 077 && TZ=Asia/Tokyo "$source_dir/scripts/package") >"$work/package.log" || { cat "$work/package.log"; exit 1; }
cd "$source_dir/build/package"
verify() { "$source_dir/scripts/verify-release" "$work/release" .; }
verify
for file in "$work"/release/*.{msi,zip}; do
  /usr/bin/python3 -c 'import mmap, sys; f = open(sys.argv[1], "r+b"); mmap.mmap(f.fileno(), 0)[70000] ^= 1' "$file"
  ! verify >"$work/verified.txt" 2>&1 && grep "^${file##*/} differs" "$work/verified.txt" ||
    { echo "FAILED: a changed byte was not seen"; exit 1; }
done
cd "$work"
for zip in "$source_dir"/build/package/*.zip; do cmake -E tar xf "$zip"; done
cd vykeldevenum-*-windows-x64
bin=$(windows_path "$PWD/bin")
sha256sum --quiet -c SHA256SUMS
! grep -rlF "$source_dir" . || { echo "FAILED: a folder of this machine is named"; exit 1; }

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
newer=$work/newer.msi
sed 's/ Version="[0-9.]*"/ Version="99.0.0"/;s/Product Id="[^"]*/Product Id="00000000-0000-4000-8000-000000000001/' \
  "$build/cmake/kit/installer/installer.wxs" >"$work/installer.wxs"
SOURCE_DATE_EPOCH=1700000000 /usr/bin/python3 "$source_dir/cmake/kit/installer/make.py" "$newer" BEA6B1D5-C361-4EFA-88C1-7B39468AEB00 99.0.0 \
  "$work/installer.wxs" "$build"/{vykeldevenum.dll,vykeldev.exe,setup_action.dll,cmake/kit/NOTICE} "$source_dir"/docs/{*.md,pictures/*.svg}
newer=$(windows_path "$newer")
tool='"C:\Program Files\Morvance\VY-KEL\vykeldev.exe"'
uninstall='HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall'
path='reg query "HKLM\System\CurrentControlSet\Control\Session Manager\Environment" /v PATH'
prompt installer <<BAT
msiexec /i $msi /qn
$tool setup --check
$tool register simulated $bin\simulated.dll
$tool list
$path
dir /s /b "%APPDATA%\Microsoft\Windows\Start Menu\Programs"
echo == upgrade
msiexec /i $newer /qn
reg query $uninstall /s
echo == downgrade
msiexec /i $msi /qn
echo refused %errorlevel%
reg query $uninstall /s
echo == repair
del $tool
msiexec /i $newer REINSTALL=ALL REINSTALLMODE=amus /qn
$tool --version
echo == removal
msiexec /x $newer /qn
dir /s /b "C:\Program Files\Morvance"
dir /s /b "%APPDATA%\Microsoft\Windows\Start Menu\Programs"
reg query $uninstall /s
$path
$bin\vykeldev list
echo == setup fails
rmdir /s /q C:\ProgramData\Morvance
echo x >C:\ProgramData\Morvance
msiexec /i $msi /qn /l*v $(windows_path "$work/failed.log")
echo refused %errorlevel%
dir /s /b "C:\Program Files\Morvance"
reg query $uninstall /s
BAT

# The lines between "== $1" and the next one, as far as they have the pattern $2; fails unless there are $3.
expect() {
  [ "$(sed "0,/^== $1\$/d;/^== /,\$d" "$work/installer.txt" | grep -cE "$2")" -eq "$3" ] || { echo "FAILED: $1: $2"; exit 1; }
}
sed -i '1i == install' "$work/installer.txt"
expect install missing 0
expect install ';C:\\Program Files\\Morvance\\VY-KEL\\' 1
expect install 'VY-KEL command prompt.lnk' 1
expect upgrade DisplayVersion 1
expect upgrade 'DisplayVersion.*99\.0\.0|InstallLocation.*VY-KEL\\$|HelpLink.*VY-KEL\\docs\\troubleshooting.md' 3
expect downgrade 'refused 1603' 1
expect downgrade 'DisplayVersion' 1
expect repair '^vykeldev [0-9]' 1
for ended in removal 'setup fails'; do expect "$ended" 'Program Files.Morvance|command prompt|Uninstall' 0; done
expect 'setup fails' 'refused 1603' 1
grep "'C:.ProgramData.Morvance' is a file" "$work/failed.log" >/dev/null || { echo "FAILED: the log does not name the cause"; exit 1; }
expect_devices "$work/installer.txt" 2
