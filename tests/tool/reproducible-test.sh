#!/bin/bash
# reproducible-test.sh BUILD PRESET: builds the library once more, in another folder, and compares it and its
# symbols byte for byte with those in BUILD.
set -eu
source_dir=$(cd "$(dirname "$0")/../.." && pwd)
build=$(cd "$1" && pwd)
work=$build/reproducible-test/in/another/folder
rm -rf "$build/reproducible-test"
mkdir -p "$work"
(cd "$source_dir" && cp -r CMake* cmake docs fuzz includes plugins samples scripts source tests tools "$work")
cd "$work"
{ cmake --preset "$2" && cmake --build --preset "$2" --target vykeldevenum; } >build.log 2>&1 || { cat build.log; exit 1; }
for file in "$build"/vykeldevenum.{dll,pdb}; do cmp "$file" "build/$2/${file##*/}"; done
