#!/bin/sh
# What we write is read whole by another implementation: counts, names, looks, places of an exported example.
# Skipped (77) where node or its package rhino3dm are missing; NODE_PATH may say where the package is.
#
#     peer_test.sh PROGRAM SOURCE_DIR
set -eu
program=$1
source_dir=$2
command -v node >/dev/null && node -e 'require("rhino3dm")' 2>/dev/null || exit 77
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
"$program" convert "$source_dir/examples/pump.step" "$folder/pump.3dm" --unit in >/dev/null
"$program" import "$folder/pump.3dm" --json >"$folder/pump.json"
node "$source_dir/tests/sdk/rhino/peer_test.js" "$folder/pump.3dm" "$folder/pump.json"
