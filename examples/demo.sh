#!/usr/bin/env bash
# The demo: writes a small results file through the record store, then
# looks at it with zdb: what the file is, its tables, a few rows, a check.
# Then a model file written as objects by one process and read back by
# another, its catalogue of classes, and a table whose rows refer to lists;
# and a reader process following what a writer appends to a list.
# The files stay in BUILD/demo/ for more looks.
set -euo pipefail
build=$(cd "${1:-build}" && pwd)
zdb=$build/tools/zdb/zdb
mkdir -p "$build/demo"
cd "$build/demo"
rm -f beam.zdb beam.mdb run.mdb beam-copy.mdb

show() {
  echo
  echo "\$ zdb $*"
  "$zdb" "$@"
}

"$build/examples/results_file" beam.zdb
show info beam.zdb
show tables beam.zdb
show dump beam.zdb --table Nodes --rows 0:4
show check beam.zdb

echo
"$build/examples/model_file" write beam.mdb
"$build/examples/model_file" read beam.mdb
"$build/examples/model_file" follow run.mdb
show classes beam.mdb
show dump beam.mdb --table Step
show check beam.mdb
echo
"$build/examples/model_file" copy beam.mdb beam-copy.mdb compressed
show check beam-copy.mdb
