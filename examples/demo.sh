#!/usr/bin/env bash
# The demo: writes a small results file through the record store, then
# looks at it with zdb: what the file is, its tables, a few rows, a check.
# The file stays in BUILD/demo/beam.zdb for more looks.
set -euo pipefail
build=$(cd "${1:-build}" && pwd)
zdb=$build/tools/zdb/zdb
mkdir -p "$build/demo"
cd "$build/demo"
rm -f beam.zdb

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
