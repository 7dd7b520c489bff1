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
