#!/usr/bin/env bash
# Installs the built library into a temporary prefix, builds the consumer
# against it through find_package and runs it.
set -euo pipefail
build=$1
source=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/prefix" >/dev/null
cmake -S "$source" -B "$work/build" -DCMAKE_PREFIX_PATH="$work/prefix" ${CONSUMER_FLAGS:-} >/dev/null
cmake --build "$work/build" >/dev/null
"$work/build/consumer" "$work/value.bin"
test -f "$work/prefix/lib/pkgconfig/ZQARomCore.pc"
