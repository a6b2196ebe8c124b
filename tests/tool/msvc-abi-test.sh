#!/bin/bash
# msvc-abi-test.sh BUILD
#
# Builds the sample client and the plug-in of docs/plugin-authors.md with clang in Microsoft's ABI, as a Windows user
# would with a generator for several configurations: from the kit that kit-test.sh installed for the build in BUILD.
# Runs them with its DLL.
set -eu -o pipefail
source_dir=$(cd "$(dirname "$0")/../.." && pwd)
build=$(cd "$1" && pwd)
kit=$build/kit-test/kit
work=$build/msvc-abi-test
rm -rf "$work"
mkdir -p "$work"
. "$source_dir/tests/tool/kit-environment.sh"
trap stop_environment EXIT
cd "$work"

sed -n '/^## A plug-in/,/^## /p' "$source_dir/docs/plugin-authors.md" | sed -n '/^```cpp$/,/^```$/{//!p}' >plugin.cpp

llvm=/usr/lib/llvm-14/bin
cmake -S "$source_dir/tests/tool/msvc-abi" -B build -G "Ninja Multi-Config" -DCMAKE_PREFIX_PATH="$kit" \
  -DCMAKE_SYSTEM_NAME=Windows -DCMAKE_CXX_COMPILER=$llvm/clang++ -DCMAKE_CXX_COMPILER_TARGET=x86_64-pc-windows-msvc \
  -DCMAKE_RC_COMPILER=$llvm/llvm-rc -DCMAKE_MT=$llvm/llvm-mt -DCMAKE_CXX_STANDARD_LIBRARIES= \
  -DCMAKE_TRY_COMPILE_TARGET_TYPE=STATIC_LIBRARY -DPLUGIN_SOURCE="$work/plugin.cpp" \
  -DMSVCRT="$("$CXX" -print-file-name=libmsvcrt.a)" >cmake.log 2>&1 || { cat cmake.log; exit 1; }
for configuration in Release Debug; do
  cmake --build build --config $configuration --verbose >build.log || { cat build.log; exit 1; }
  runtime=libcmt
  [ $configuration = Release ] || runtime=libcmtd
  grep -e "--dependent-lib=$runtime .*plugin.cpp$" build.log >/dev/null || { cat build.log; exit 1; }
  grep 'client.*/lib/vykeldevenum\.lib' build.log >/dev/null || { cat build.log; exit 1; }
  cp "$kit/bin/vykeldevenum.dll" build/$configuration
  vykeldev register sample build/$configuration/plugin.dll >/dev/null
  run build/$configuration/client.exe | tr -d '\r' | diff -u - <(echo 'KEL0  takes no alias  lamp-1')
done
vykeldev unregister sample >/dev/null
