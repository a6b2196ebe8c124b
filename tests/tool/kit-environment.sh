# Sourced by the tests of the kit: a private machine for the kit in $kit, and how programs run on it.
if [ -e "$build/vykeldevenum.dll" ]; then
  windows=yes rpath='' exe=.exe module=.dll library=vykeldevenum.dll
  runner=("$source_dir/scripts/run-under-wine.sh" --prefix "$build/kit-wine")
  data=$build/kit-wine/drive_c/ProgramData
  "${runner[@]}" "$build/vykeldev.exe" unregister sample >/dev/null 2>&1 || true # left by an earlier run
else
  windows='' rpath=yes exe='' module=.so library=libvykeldevenum.so
  runner=(env "WINHOST_ROOT=$work/machine")
  data=$work/machine/c/ProgramData
fi
rm -rf "$data/Morvance"
mkdir -p "$data"

run() { "${runner[@]}" "$@"; }
vykeldev() { run "$kit/bin/vykeldev$exe" "$@"; }
stop_environment() { [ -z "$windows" ] || "${runner[@]}" --stop; }
