#!/usr/bin/env bash
# The demo: writes a small results file through the record store, then
# looks at it with zdb: what the file is, its tables, a few rows, a check;
# when the Python package was built, the tip's displacement over the load
# steps read from Python (plotted when Matplotlib is there).
# Then a model file written as objects by one process and read back by
# another, which reads the steps' results only when asked for, and written
# again into another file without them being read; a reader process
# following what a writer appends to a list; the model's catalogue of
# classes, and a table whose rows refer to maps, with one of those maps.
# The files stay in BUILD/demo/ for more looks.
set -euo pipefail
build=$(cd "${1:-build}" && pwd)
examples=$(cd "$(dirname "$0")" && pwd)
zdb=$build/tools/zdb/zdb
mkdir -p "$build/demo"
cd "$build/demo"
rm -f beam.zdb beam-tip.png beam.mdb other.mdb run.mdb beam-copy.mdb

# show ARGS: runs zdb ARGS after the command line, in a form a shell takes
# (a word that begins with # quoted).
show() {
  local words=() word
  for word in "$@"; do
    [[ $word == \#* ]] && word="\"$word\""
    words+=("$word")
  done
  echo
  echo "\$ zdb ${words[*]}"
  "$zdb" "$@"
}

"$build/examples/results_file" beam.zdb
show info beam.zdb
show tables beam.zdb
show dump beam.zdb --table Nodes --rows 0:4
show check beam.zdb
if compgen -G "$build/python/zqaromcore/_zqaromcore*.so" >/dev/null; then
  echo
  echo "\$ plot_tip_displacement.py beam.zdb"
  PYTHONPATH=$build/python /usr/bin/python3 "$examples/plot_tip_displacement.py" beam.zdb
fi

echo
"$build/examples/model_file" write beam.mdb
"$build/examples/model_file" read beam.mdb
"$build/examples/model_file" transfer beam.mdb other.mdb
"$build/examples/model_file" follow run.mdb
show classes beam.mdb
show dump beam.mdb --table Material
# The second material's parameters: the map row its reference names, and
# the table of entries that row holds.
map=$("$zdb" dump beam.mdb --table Material --rows 1:2 | sed -n 's/.*Parameters=##InternalMap\[\([0-9]*\)\].*/\1/p')
rows="$map:$((map + 1))"
show dump beam.mdb --table "##InternalMap" --rows "$rows"
parameters=$("$zdb" dump beam.mdb --table "##InternalMap" --rows "$rows" | sed -n 's/.*Target#Handle=\([0-9]*\).*/\1/p')
show dump beam.mdb --handle "$parameters"
show check beam.mdb
echo
"$build/examples/model_file" copy beam.mdb beam-copy.mdb compressed
show check beam-copy.mdb
