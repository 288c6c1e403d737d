#!/bin/bash
# Compiler launcher of the fuzz build (clang). clang reads sources as UTF-8 and has no
# -fexec-charset but UTF-8, while our literals must be Windows-1250 bytes in the binary as they
# are in the MinGW and gcc builds. So the source of each compile is converted to Windows-1250
# into the build tree (with a #line naming the original, for messages and __FILE__), the charset
# options are dropped, and the original directory is searched for quoted includes. Headers keep
# UTF-8 only in comments, so they are compiled as they stand.
# Usage (CMake sets it): cp1250-cxx.sh COMPILER ARGS...
set -e
compiler=$1
shift
args=()
source=
object=
prev=
for a in "$@"; do
  case "$a" in
    -finput-charset=*|-fexec-charset=*) prev=$a; continue ;;
  esac
  if [ "$prev" = "-c" ]; then source=$a; fi
  if [ "$prev" = "-o" ]; then object=$a; fi
  args+=("$a")
  prev=$a
done
if [ -z "$source" ] || [ -z "$object" ] || ! [ -f "$source" ]; then
  exec "$compiler" "${args[@]}"
fi
converted="$object.cp1250${source##*/}"
converted="${converted%.*}.${source##*.}"
abs_source=$(cd "$(dirname "$source")" && pwd)/$(basename "$source")
{
  printf '#line 1 "%s"\n' "$abs_source"
  iconv -f UTF-8 -t CP1250 "$source"
} >"$converted"
final=()
for a in "${args[@]}"; do
  if [ "$a" = "$source" ]; then final+=("$converted"); else final+=("$a"); fi
done
exec "$compiler" -iquote "$(dirname "$abs_source")" -Wno-invalid-source-encoding "${final[@]}"
