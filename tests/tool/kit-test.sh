#!/bin/bash
# kit-test.sh BUILD [--update]
#
# Installs the kit of the build in BUILD and does with it what its users do: builds the samples from it alone, runs
# them, follows devices with the tool. Compares what is a contract with tests/tool/golden/; --update writes that anew.
# ctest sets CC, CXX and OBJDUMP.
set -eu -o pipefail
source_dir=$(cd "$(dirname "$0")/../.." && pwd)
golden=$source_dir/tests/tool/golden
build=$(cd "$1" && pwd)
update=${2-}
work=$build/kit-test
kit=$work/kit
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")

rm -rf "$work"
mkdir -p "$work"
. "$source_dir/tests/tool/kit-environment.sh"
trap stop_environment EXIT
cd "$work"

fail() {
  echo "FAILED: $*" >&2
  exit 1
}

# Compares standard input with a file of tests/tool/golden/.
compare() {
  if [ "$update" = --update ]; then cat >"$golden/$1"; else diff -u "$golden/$1" - || fail "$1 changed"; fi
}

# Waits until a file has so many lines.
await_lines() {
  for _ in $(seq 300); do
    if [ "$(wc -l <"$1")" -ge "$2" ]; then return 0; fi
    sleep 0.1
  done
  cat "$1" >&2
  fail "$1 has no $2 lines"
}

# Gives the sample plug-in these devices, in one step.
see() {
  printf '%b\n' "$1" >devices
  mv devices plugin/simulated.devices
}

# Checks what a command of the tool wrote, one JSON document or one a line, against its schema.
validate() {
  /usr/bin/python3 - "$kit/share/vykeldevenum/schemas/$1.schema.json" "$1.json" <<'PYTHON'
import json, sys
from jsonschema import Draft202012Validator
validator = Draft202012Validator(json.load(open(sys.argv[1])))
text = open(sys.argv[2], encoding="utf-8").read()
documents = text.splitlines() if "watch" in sys.argv[1] else [text]
for document in documents:
    validator.validate(json.loads(document))
PYTHON
}

echo "== install"
cmake --install "$build" --prefix "$kit" >install.log || { cat install.log; exit 1; }

echo "== the binary contract"
if [ $windows ]; then
  "$OBJDUMP" -p "$kit/bin/vykeldevenum.dll" >objdump.txt
  grep -P 'Export Address Table \t\t00000003$' objdump.txt >/dev/null || fail "other functions are exported, too"
  awk '/Ordinal\/Name Pointer/ { names = 1; next } /^$/ { names = 0 } names { print $NF }' objdump.txt |
    compare exports.txt
  # What is asked of Windows; the C runtime's functions are the compiler's affair.
  awk '/DLL Name/ { dll = $3; if (dll == "msvcrt.dll") print dll }
       /^\t[0-9a-f]+\t/ && dll != "msvcrt.dll" { print dll, $3 }' objdump.txt | sort | compare imports.txt
  strings -e l "$kit/bin/vykeldevenum.dll" | grep -x "$version" >/dev/null || fail "no version resource $version"
else
  nm -D --defined-only "$kit/bin/libvykeldevenum.so" | awk '{ print $3 }' | sort | compare exports.txt
  nm -D "$kit/bin/libvykeldevenum.so" | grep __stack_chk_fail >/dev/null || fail "no stack protector"
fi

echo "== symbols beside what is stripped"
for file in "$library" "vykeldev$exe"; do
  "$OBJDUMP" -h "$kit/bin/$file" >sections.txt
  ! grep -q debug_info sections.txt || fail "$file is not stripped"
  if [ -e "$build/vykeldevenum.pdb" ]; then
    symbols=${file%.*}.pdb
    strings -a "$kit/bin/$file" | grep -Fx "$symbols" >/dev/null || fail "$file does not name its symbols"
    llvm-pdbutil-14 dump --modules "$kit/bin/$symbols" | grep -E '(main|DeviceEnumerator).cpp.obj' >/dev/null ||
      fail "$symbols has no symbols"
  else
    symbols=$file.debug
    grep -q gnu_debuglink sections.txt || fail "$file does not name its symbols"
    "$OBJDUMP" -h "$kit/bin/$symbols" | grep debug_info >/dev/null || fail "$symbols has no symbols"
    [ -z "$windows" ] || "$OBJDUMP" -p "$kit/bin/$file" | grep '^Time/Date.*1970' >/dev/null || fail "$file holds the time of its build"
  fi
  ! grep -aqF -e "$source_dir" -e "$build" "$kit/bin/$file" "$kit/bin/$symbols" || fail "$file names this machine's folders"
done

echo "== samples, from the kit alone"
for sample in plugin plugin-c client client-c; do
  cmake -S "$kit/share/vykeldevenum/samples/$sample" -B $sample -G Ninja -DCMAKE_PREFIX_PATH="$kit" \
    -DCMAKE_C_COMPILER="$CC" -DCMAKE_CXX_COMPILER="$CXX" ${windows:+-DCMAKE_SYSTEM_NAME=Windows} >$sample.log &&
    cmake --build $sample >>$sample.log || { cat $sample.log; fail "sample $sample"; }
done
export PKG_CONFIG_LIBDIR=$kit/lib/pkgconfig
[ "$(pkg-config --modversion vykeldevenum)" = "$version" ] || fail "pkg-config has another version"
"$CXX" -std=c++11 -pedantic-errors -Wall -Wextra -Werror "$kit/share/vykeldevenum/samples/client/main.cpp" $(pkg-config --cflags --libs vykeldevenum) \
  -o "$kit/bin/client$exe" ${rpath:+"-Wl,-rpath,$kit/bin"}

echo "== what they show"
[ "$(vykeldev --version | tr -d '\r')" = "vykeldev $version" ] || fail "vykeldev has another version"
see 'token=b token2=same number=9\ntoken=a token2=same number=8 alias=""' # doctor and check warn of equal tokens
for file in $module .devices; do cp plugin/simulated$file plugin/checked$file; done # check stores numbers
vykeldev setup >/dev/null
vykeldev register sample plugin/simulated$module >/dev/null
printf 'KEL9  takes no alias  b\nKEL8    a\n' >expected.txt
for client in client/client$exe client-c/client-c$exe "$kit/bin/client$exe"; do
  run "$client" | tr -d '\r' | diff -u expected.txt - || fail "$client"
done
for command in setup list plugins aliases doctor check; do
  argument=
  if [ $command = check ]; then argument=plugin/checked$module; fi
  status=0
  vykeldev $command --json $argument >$command.json || status=$?
  case $command-$status in *-0 | aliases-3 | doctor-4 | check-4) ;; *) cat $command.json >&2; fail "$command ended with $status" ;; esac
  validate $command
done

echo "== watch"
see 'token=c token2="c 2"\ntoken=d token2="d 2"'
touch watch.json # the program in the background may begin late
"${runner[@]}" "$kit/bin/vykeldev$exe" watch --json --format 2 --interval 0.01 >watch.json &
watch=$!
trap 'kill $watch 2>/dev/null || true; stop_environment' EXIT
await_lines watch.json 2
/usr/bin/python3 "$source_dir/tests/tool/watch-test.py" change "$data/Morvance/VY-KEL"
vykeldev list --json --format 2 >list.json
sleep 1 # for the last change
kill -INT $watch # Wine makes it a Ctrl-C
code=0
wait $watch || code=$?
[ $code = 130 ] || fail "watch ended with $code"
trap stop_environment EXIT
validate watch
/usr/bin/python3 "$source_dir/tests/tool/watch-test.py" fold || fail "watch reported something else"

echo "== ZIP"
(cd "$build" && cpack --config CPackConfig.cmake) >cpack.log || { cat cpack.log; exit 1; }
sed -n 's/^CPack: - package: \(.*\) generated\.$/\1/p' cpack.log | sort >zips.txt
while read -r zip; do cmake -E tar tf "$zip"; done <zips.txt | grep -v '/$' | sed 's,^[^/]*/,,' | sort >zipped.txt
(cd "$kit" && find . -type f ! -name "client$exe") | sed 's,^\./,,' | sort | diff -u - zipped.txt || fail "the ZIPs are another kit"
cmake -E tar tf "$(grep -e -symbols zips.txt)" | grep -cE '\.(pdb|debug)$' | grep -x 3 >/dev/null || fail "symbols are missing"
