// Compares a 3DM file, as the npm package rhino3dm reads it, with our own reading of it as JSON.
const rhino3dm = require("rhino3dm");
const fs = require("fs");
const assert = require("assert");

rhino3dm().then((r) => {
    const [path, json] = process.argv.slice(2);
    const ours = JSON.parse(fs.readFileSync(json));
    const file = r.File3dm.fromByteArray(new Uint8Array(fs.readFileSync(path)));
    assert(file, "the peer cannot read the file");
    assert.equal(file.settings().modelUnitSystem, r.UnitSystem.Inches);

    const objects = new Map();
    for (let i = 0; i < file.objects().count; ++i) {
        const object = file.objects().get(i);
        const [geometry, attributes] = [object.geometry(), object.attributes()];
        assert(geometry.isValid, "invalid: " + attributes.name);
        objects.set(attributes.id, { geometry, attributes });
    }
    const definitions = new Map();
    for (let i = 0; i < file.instanceDefinitions().count; ++i) {
        const definition = file.instanceDefinitions().get(i);
        definitions.set(definition.id, definition);
    }

    // unfolds blocks as a reader does
    const totals = { triangles: 0, low: [Infinity, Infinity, Infinity], high: [-Infinity, -Infinity, -Infinity] };
    const colours = new Set();
    const add = ({ geometry, attributes }, transforms) => {
        if (geometry instanceof r.InstanceReference) {
            definitions.get(geometry.parentIdefId).getObjectIds().forEach((id) =>
                add(objects.get(id), [geometry.xform, ...transforms]));
            return;
        }
        for (let i = 0; i < geometry.faces().count; ++i) {
            const face = geometry.faces().get(i);
            totals.triangles += face[2] === face[3] ? 1 : 2;
        }
        for (let i = 0; i < geometry.vertices().count; ++i) {
            let p = geometry.vertices().point3dAt ? geometry.vertices().point3dAt(i) : geometry.vertices().get(i);
            for (const transform of transforms) {
                const m = transform.toFloatArray(true);
                p = [0, 4, 8].map((row) => m[row] * p[0] + m[row + 1] * p[1] + m[row + 2] * p[2] + m[row + 3]);
            }
            p.forEach((value, axis) => {
                totals.low[axis] = Math.min(totals.low[axis], value * 0.0254);
                totals.high[axis] = Math.max(totals.high[axis], value * 0.0254);
            });
        }
        const material = file.materials().get(attributes.materialIndex);
        colours.add(JSON.stringify(material.diffuseColor));
        assert(geometry.normals().count === geometry.vertices().count);
    };
    for (const object of objects.values()) {
        if (!object.attributes.isInstanceDefinitionObject) {
            add(object, []);
        }
    }
    assert.equal(totals.triangles, ours.totals.triangles);
    assert.equal(colours.size, ours.totals.materials);
    for (let axis = 0; axis < 3; ++axis) {
        assert(Math.abs(totals.low[axis] - ours.bounds.min[axis]) < 1e-6);
        assert(Math.abs(totals.high[axis] - ours.bounds.max[axis]) < 1e-6);
    }
    const names = new Set([...definitions.values()].map((definition) => definition.name));
    assert.equal(names.size, definitions.size, "blocks of the same name");
    assert(names.has("Gehäuse") && names.has("叶轮"));
    console.log(`${totals.triangles} triangles, ${definitions.size} blocks, ${colours.size} materials`);
}).catch((error) => {
    console.error(String(error));
    process.exit(1);
});
