#!/usr/bin/env bash
# Installs the build into a fresh prefix, builds a small program against the package and runs it there.
# install_test.sh BUILD_DIR SOURCE_DIR
set -euo pipefail
build=$1 source=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cmake --install "$build" --prefix "$scratch/prefix" >/dev/null
cmake -S "$source/tests/apps/consumer" -B "$scratch/build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_PREFIX_PATH="$scratch/prefix" >"$scratch/log" 2>&1 || { cat "$scratch/log"; exit 1; }
cmake --build "$scratch/build" >"$scratch/log" 2>&1 || { cat "$scratch/log"; exit 1; }
"$scratch/build/consumer" "$source/examples/pump.step"
"$scratch/prefix/bin/zemtar-cad" formats >/dev/null
