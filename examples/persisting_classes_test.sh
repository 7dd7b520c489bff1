#!/usr/bin/env bash
# The part of examples/persisting_classes.cpp, written by one process and
# read by another, through the typed helper and through the visitors in
# every combination: each reads the same part, and zdb finds each file
# sound. Then README.md's section "Persisting your classes": every C++
# block in it stands, line for line, in the example, so the README shows
# code that compiles and runs.
set -euo pipefail
program=$1
zdb=$2
readme=$3
source=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

part="part Bracket of Steel, corners 0 0 0 40 0 0 40 25 0, tags bolts=4 welds=2"
for writer in typed visitor; do
  "$program" write $writer $writer.prt >/dev/null
  "$zdb" check $writer.prt >/dev/null
  for reader in typed visitor; do
    "$program" read $reader $writer.prt >read.out
    if [ "$(cat read.out)" != "read $writer.prt: $part" ]; then
      echo "the $reader reader of the $writer writer's file read:" >&2
      cat read.out >&2
      exit 1
    fi
  done
done

# The section's code blocks, one file each.
awk '
  /^## / { inside = ($0 == "## Persisting your classes") }
  inside && /^```cpp$/ { block++; file = sprintf("block%02d.cpp", block); printf "" > file; next }
  inside && /^```$/ && file != "" { close(file); file = ""; next }
  file != "" { print > file }
' "$readme"
blocks=(block*.cpp)
if [ ! -e "${blocks[0]}" ]; then
  echo "$readme has no C++ blocks in \"## Persisting your classes\"" >&2
  exit 1
fi
code=$(cat "$source")
for block in "${blocks[@]}"; do
  if [[ "$code" != *"$(cat "$block")"* ]]; then
    echo "$readme: this block of \"Persisting your classes\" is not in $source:" >&2
    cat "$block" >&2
    exit 1
  fi
done
echo "${#blocks[@]} blocks of the README found in the example"
