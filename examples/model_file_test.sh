#!/usr/bin/env bash
# The model example as the processes it is meant for: one writes the beam,
# another reads it back and compares; `follow` runs a writer and a reader
# beside each other; `copy` copies the root's rows into new files and
# `transfer` writes the model it reads into a new file through a second
# transporter, and other processes read those back. zdb finds every file
# sound. The solver's file is another model (its running step has a
# history), so reading it as the beam must fail and say where.
set -euo pipefail
model_file=$1
zdb=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# expect FILE LINE: FILE holds LINE.
expect() {
  if ! grep -qxF "$2" "$1"; then
    echo "$1 lacks the line: $2" >&2
    cat "$1" >&2
    exit 1
  fi
}

# read_back FILE: another process reads FILE as the beam, the steps' results
# each only when asked for, and zdb checks it.
read_back() {
  "$model_file" read "$1" >read.out
  expect read.out "read $1: 0 step results read with the model, 1 at the first Get of Settle's, 0 more at a \
second Get and through a copy, 2 once every step was compared"
  expect read.out "read $1: the model equals the one written; 2 Material, 36 Node and 16 element objects in memory"
  "$zdb" check "$1" >/dev/null
}

"$model_file" write beam.mdb >write.out
read_back beam.mdb
"$model_file" follow run.mdb >follow.out
expect follow.out "followed run.mdb beside its writer: after each flush and Snap the step's history held 1, 2, 3, 4 \
increments; the tip went down to -0.0084 at t=1"
"$zdb" check run.mdb >/dev/null

# The root's copies, plain and compressed.
for kind in "" compressed; do
  "$model_file" copy beam.mdb copy$kind.mdb $kind >copy.out
  grep -q ", copied once$" copy.out || { cat copy.out >&2; exit 1; }
  read_back copy$kind.mdb
done

# The model read and written again elsewhere without reading the steps'
# results, and that file once more.
"$model_file" transfer beam.mdb other.mdb >transfer.out
expect transfer.out "transferred the model of beam.mdb into other.mdb: 138 rows; the results of 2 steps copied, 0 \
step results read"
read_back other.mdb
"$model_file" transfer other.mdb third.mdb >transfer.out
read_back third.mdb

if "$model_file" read run.mdb >differs.out 2>&1; then
  echo "the solver's file read as the beam" >&2
  exit 1
fi
expect differs.out "run.mdb: the model read differs from the one written: step Release"
