#!/bin/bash
# docs-test.sh BUILD
#
# Does what README.md and docs/*.md say, in the kit that kit-test.sh installed for the build in BUILD:
# - runs every ```sh block, all of one document in one copy of the kit; a comment <!-- not run: why --> on the line
#   before excepts a block;
# - finds every block behind a comment <!-- from FILE --> word for word in that file; compiles every other ```cpp block,
#   and checks those that are plug-ins;
# - asks the tool for the help of every `vykeldev COMMAND` and for each of its `--option`s.
# ctest sets CXX.
set -eu -o pipefail
source_dir=$(cd "$(dirname "$0")/../.." && pwd)
build=$(cd "$1" && pwd)
kit=$build/kit-test/kit
work=$build/docs-test
rm -rf "$work"
mkdir -p "$work/bin"
. "$source_dir/tests/tool/kit-environment.sh"
trap stop_environment EXIT

# The commands of the documents are typed on Windows; here the environment makes them do the same.
printf '#!/bin/sh\nexec %s "$@"\n' "$(printf '%q ' "${runner[@]}" "$kit/bin/vykeldev$exe")" >"$work/bin/vykeldev"
chmod +x "$work/bin/vykeldev"
export PATH=$work/bin:$PATH CMAKE_GENERATOR=Ninja CMAKE_TOOLCHAIN_FILE=$source_dir/cmake/mingw-w64.cmake

vykeldev setup >/dev/null

# Writes the blocks of one document to files: block-1.sh, code-2.cpp, and from-3.txt with its origin in from-3.file.
extract() {
  awk -v dir="$2" '
    /^```/ && inside { inside = 0; next }
    inside { print > file; next }
    /^```/ {
      inside = 1; n++
      file = "/dev/null"
      if (note ~ /^<!-- from /) { file = dir "/from-" n ".txt"; split(note, word, " "); print word[3] > (dir "/from-" n ".file") }
      else if ($0 == "```cpp") file = dir "/code-" n ".cpp"
      else if ($0 == "```sh" && note !~ /^<!-- not run: /) file = dir "/block-" sprintf("%02d", n) ".sh"
    }
    { note = $0 }' "$1"
}

failed=0
fail() {
  echo "FAILED: $*" >&2
  failed=1
}

for document in "$source_dir"/README.md "$source_dir"/docs/*.md; do
  [ -e "$document" ] || continue
  name=$(basename "$document" .md)
  blocks=$work/$name.blocks
  mkdir -p "$blocks"
  extract "$document" "$blocks"
  for text in "$blocks"/from-*.txt; do
    [ -e "$text" ] || continue
    file=$(cat "${text%.txt}.file")
    /usr/bin/python3 -c 'import sys; t, f = (open(n).read() for n in sys.argv[1:]); sys.exit(t not in f)' \
      "$text" "$source_dir/$file" || fail "$name.md shows another $file"
  done
  for code in "$blocks"/code-*.cpp; do
    [ ! -e "$code" ] || "$CXX" -std=c++11 -Wall -Wextra -Werror -fsyntax-only -I"$kit/include" "$code" ||
      fail "a program of $name.md does not compile"
    [ -e "$code" ] && grep -q vykel_initializePlugin "$code" || continue
    "$CXX" -shared ${rpath:+-fPIC} ${windows:+-static} -I"$kit/include" "$code" -o "$work/plugin$module" &&
      (cd "$work" && vykeldev check plugin$module >check.log || [ $? -eq 4 ]) ||
      { cat "$work/check.log" >&2; fail "a plug-in of $name.md is not right"; }
  done
  if compgen -G "$blocks/block-*.sh" >/dev/null; then
    cp -r "$kit" "$work/$name"
    for block in "$blocks"/block-*.sh; do
      (cd "$work/$name" && sh -eu "$block") >"$block.log" 2>&1 </dev/null ||
        { cat "$block" "$block.log" >&2; fail "a block of $name.md"; }
    done
  fi
  echo "$name.md: $(find "$blocks" -name '*.sh' | wc -l) blocks run"
done

grep -ohE '`vykeldev [a-z]+[^`]*`' "$source_dir"/docs/*.md "$source_dir"/README.md 2>/dev/null | tr -d '`' | sort -u |
  while read -r _ command arguments; do
    help=$(vykeldev "$command" --help </dev/null) || true
    grep -q "^Usage: vykeldev $command " <<<"$help" || { echo "vykeldev $command"; continue; }
    for word in $arguments; do
      case $word in --*) grep -qe "$word" <<<"$help" || echo "vykeldev $command $word" ;; esac
    done
  done >"$work/unknown"
[ ! -s "$work/unknown" ] || fail "documented, but unknown to the tool: $(cat "$work/unknown")"
exit $failed
