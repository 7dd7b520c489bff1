#!/usr/bin/env bash
# Installs the built library into a temporary prefix, builds the consumer
# and the README's example program against it through find_package and
# runs both. Checks on the way that the installed headers hold none of a
# module's private headers and compile on their own, from the installed
# folder alone.
set -euo pipefail
build=$1
source=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$source/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/prefix" >/dev/null
include=$work/prefix/include/ZQARomCore
for header in "$include"/*.h; do
  name=$(basename "$header")
  for private in "$root"/*/*.m/LocalInterfaces/"$name"; do
    if [ -e "$private" ]; then
      echo "installed a private header: ${private#"$root"/}" >&2
      exit 1
    fi
  done
  echo "#include \"$name\"" >>"$work/every_header.cpp"
done
c++ -std=c++17 -fsyntax-only -I "$include" "$work/every_header.cpp"
# The README's example: the first C++ block after its API heading.
awk '/^## The API/ { api = 1 } api && /^```$/ && copying { exit } copying { print } api && /^```cpp$/ { copying = 1 }' \
  "$root/README.md" >"$work/readme_example.cpp"
grep -q 'int main' "$work/readme_example.cpp"
cmake -S "$source" -B "$work/build" -DCMAKE_PREFIX_PATH="$work/prefix" -DREADME_EXAMPLE="$work/readme_example.cpp" \
  ${CONSUMER_FLAGS:-} >/dev/null
cmake --build "$work/build" >/dev/null
"$work/build/consumer" "$work/job.zdb"
(cd "$work" && rm job.zdb && "$work/build/readme_example")
test -f "$work/prefix/lib/pkgconfig/ZQARomCore.pc"
# The Python package, when it was built, imports from the prefix alone and
# loads the prefix's library. Not under the sanitizers, whose runtime
# Python would need preloaded.
site=$(echo "$work"/prefix/lib/python3*/dist-packages)
if [ -d "$site/zqaromcore" ] && [ -z "${CONSUMER_FLAGS:-}" ]; then
  PYTHONPATH="$site" /usr/bin/python3 - "$work/prefix" "$work/python.zdb" <<'EOF'
import sys

import numpy as np
import zqaromcore

prefix, path = sys.argv[1:]
assert zqaromcore.__file__.startswith(prefix), zqaromcore.__file__
with zqaromcore.open(path, "w") as f:
    f.create_table("T", {"x": np.arange(3.0)})
with zqaromcore.open(path) as f:
    assert f.table("T").column("x").tolist() == [0.0, 1.0, 2.0]
with open("/proc/self/maps") as maps:
    libraries = {line.split()[-1] for line in maps if "libZBXZQARomCore" in line}
assert libraries and all(library.startswith(prefix + "/lib/") for library in libraries), libraries
EOF
fi
