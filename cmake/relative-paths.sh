#!/bin/bash
# relative-paths.sh SOURCE BUILD COMMAND...: runs a compiler or linker, and makes its absolute paths relative to
# the folder BUILD, in which it runs. clang and lld write their command lines into the symbols, which must be the
# same bytes wherever the project is.
set -eu
source=$1 build=$2
shift 2
up=$(realpath --relative-to="$build" "$source")
arguments=()
for argument; do
  case $argument in
    -ffile-prefix-map="$build"*) continue ;; # its files have relative names already
  esac
  argument=${argument//"$build/"/}
  argument=${argument//"$build"/.}
  argument=${argument//"$source/"/"$up/"}
  arguments+=("${argument//"$source"/"$up"}")
done
export CCACHE_COMPILERTYPE=other # of clang, ccache asks for colours, which the symbols would record
exec "${arguments[@]}"
