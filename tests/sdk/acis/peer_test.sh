#!/bin/sh
# What we write is read by another implementation: an exported example has the bodies, faces and vertices that
# the mesh of it has there. Skipped (77) where python3 or its package ezdxf are missing.
#
#     peer_test.sh PROGRAM SOURCE_DIR
set -eu
program=$1
source_dir=$2
command -v python3 >/dev/null && python3 -c 'import ezdxf.acis.api' 2>/dev/null || exit 77
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
"$program" convert "$source_dir/examples/pump.step" "$folder/pump.sat" --unit in >/dev/null
python3 - "$folder/pump.sat" <<'PYTHON'
import sys
from ezdxf.acis.api import load, mesh_from_body

text = open(sys.argv[1], encoding="utf-8").read()
bodies = load(text)
assert len(bodies) == int(text.split()[2]) > 0, len(bodies)
faces = vertices = 0
for body in bodies:
    for mesh in mesh_from_body(body, merge_lumps=False):
        faces += len(mesh.faces)
        vertices += len(mesh.vertices)
assert faces > 0 and vertices > 0
print(len(bodies), "bodies", faces, "faces", vertices, "vertices")
PYTHON
