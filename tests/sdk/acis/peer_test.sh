#!/bin/sh
# What we write is read by another implementation: an exported example has the bodies, faces and vertices that
# the mesh of it has there. What it writes in binary form is read here. Skipped (77) where python3 or its package ezdxf are missing.
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
for version in 700 21800 22300; do
    python3 - "$folder/box.sab" $version <<'PYTHON'
import sys
from ezdxf.acis.api import body_from_mesh, export_sab
from ezdxf.render import forms

box = forms.cube()
box.scale(10, 20, 30)
prism = forms.cylinder(16, radius=2, top_center=(0, 0, 5))
bodies = [body_from_mesh(mesh) for mesh in (box, prism)]
open(sys.argv[1], "wb").write(export_sab(bodies, version=int(sys.argv[2])))
PYTHON
    "$program" import "$folder/box.sab" --json >"$folder/box.json"
    python3 - "$folder/box.json" <<'PYTHON'
import json, sys

model = json.load(open(sys.argv[1]))
assert model["totals"]["parts"] == 2 and model["totals"]["triangles"] == 12 + 4 * 16 - 4, model["totals"]
assert max(abs(a - b) for a, b in zip(model["bounds"]["max"], (0.005, 0.01, 0.015))) < 1e-9, model["bounds"]
PYTHON
done
