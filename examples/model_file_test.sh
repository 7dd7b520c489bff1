#!/usr/bin/env bash
# The model example as the processes it is meant for: one writes the beam,
# another reads it back and compares; `follow` runs a writer and a reader
# beside each other. zdb finds both files sound. The solver's file is
# another model (its running step has a history), so reading it as the beam
# must fail and say where.
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

"$model_file" write beam.mdb >write.out
"$model_file" read beam.mdb >read.out
expect read.out "read beam.mdb: the model equals the one written; 2 Material objects and 36 Node objects in memory"
"$model_file" follow run.mdb >follow.out
expect follow.out "followed run.mdb beside its writer: after each flush and Snap the step's history held 1, 2, 3, 4 \
increments; the tip went down to -0.0084 at t=1"
"$zdb" check beam.mdb >/dev/null
"$zdb" check run.mdb >/dev/null

# The root's copies, plain and compressed, read as the beam and check clean.
for kind in "" compressed; do
  "$model_file" copy beam.mdb copy$kind.mdb $kind >copy.out
  grep -q ", copied once$" copy.out || { cat copy.out >&2; exit 1; }
  "$model_file" read copy$kind.mdb >read.out
  expect read.out "read copy$kind.mdb: the model equals the one written; 2 Material objects and 36 Node objects in memory"
  "$zdb" check copy$kind.mdb >/dev/null
done

if "$model_file" read run.mdb >differs.out 2>&1; then
  echo "the solver's file read as the beam" >&2
  exit 1
fi
expect differs.out "run.mdb: the model read differs from the one written: step Release"
