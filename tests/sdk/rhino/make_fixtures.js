// Writes the fixtures of this folder with the npm package rhino3dm, an implementation that is not ours:
//
//     npm install rhino3dm && node make_fixtures.js OUTPUT_FOLDER
const rhino3dm = require("rhino3dm");
const fs = require("fs");

rhino3dm().then((r) => {
    for (const version of [3, 8]) {
        const file = new r.File3dm();
        file.settings().modelUnitSystem = r.UnitSystem.Inches;
        file.strings().set("document key", "Wert ✓");
        file.applicationName = "fixture";

        const addLayer = (name, parent, color, visible = true) => {
            const layer = new r.Layer();
            layer.name = name;
            layer.color = color;
            layer.visible = visible;
            if (parent !== null) {
                layer.parentLayerId = file.layers().get(parent).id;
            }
            return file.layers().add(layer);
        };
        const green = { r: 25, g: 150, b: 50, a: 255 };
        addLayer("Teile 部品", null, green);
        addLayer("Schrauben", 0, { r: 0, g: 0, b: 0, a: 255 });
        addLayer("unsichtbar", null, green, false);

        const material = new r.Material();
        material.name = "Glas";
        material.diffuseColor = { r: 204, g: 51, b: 102, a: 255 };
        material.transparency = 0.25;
        const texture = new r.Texture();
        texture.fileName = "wood.png";
        material.setBitmapTexture(texture);
        file.materials().add(material);

        const attributes = (name, layer, change = () => {}) => {
            const result = new r.ObjectAttributes();
            result.name = name;
            result.layerIndex = layer;
            change(result);
            return result;
        };
        const mesh = new r.Mesh();
        [[0, 0, 0], [1, 0, 0], [1, 1, 0], [0, 1, 0], [2, 0, 0]].forEach((p) => mesh.vertices().add(...p));
        mesh.faces().addQuadFace(0, 1, 2, 3);
        mesh.faces().addTriFace(1, 4, 2);
        mesh.normals().computeNormals();

        const objects = file.objects();
        objects.addMesh(mesh, attributes("Netz", 0, (a) => {
            a.materialIndex = 0;
            a.materialSource = r.ObjectMaterialSource.MaterialFromObject;
            a.setUserString("Schlüssel", "Wért");
        }));
        objects.addBrep(new r.Sphere([0, 0, 0], 2).toBrep(), attributes("sphere", 1));
        const tube = new r.Cylinder(new r.Circle([0, 0, 0], 1), 3);
        objects.addBrep(r.Brep.createFromCylinder(tube, true, true), attributes("cylinder", 1));
        if (version >= 5) {
            const profile = new r.Polyline(4);
            [[0, 0, 0], [2, 0, 0], [0, 1, 0], [0, 0, 0]].forEach((p) => profile.add(...p));
            objects.addExtrusion(r.Extrusion.create(profile.toPolylineCurve(), 5, true),
                attributes("extrusion", 0));
        }
        objects.addLine([0, 0, 0], [3, 4, 0]);
        objects.addPoint([7, 8, 9]);
        objects.addMesh(mesh, attributes("versteckt", 0, (a) => (a.mode = r.ObjectMode.Hidden)));
        objects.addMesh(mesh, attributes("auf unsichtbar", 2));

        const member = attributes("", 0, (a) => {
            a.objectColor = { r: 255, g: 153, b: 0, a: 255 };
            a.colorSource = r.ObjectColorSource.ColorFromObject;
        });
        file.instanceDefinitions().add("Block", "ein Block", "", "", [0, 0, 0], [mesh], [member]);
        const id = file.instanceDefinitions().get(0).id;
        for (let i = 1; i <= 2; ++i) {
            objects.add(new r.InstanceReference(id, r.Transform.translationXYZ(10 * i, 0, 0)),
                attributes("place " + i, 1));
        }
        const options = new r.File3dmWriteOptions();
        options.version = version;
        options.saveUserData = true;
        fs.writeFileSync(`${process.argv[2]}/v${version}.3dm`, Buffer.from(file.toByteArrayOptions(options)));
    }
}).catch((error) => {
    console.error(String(error));
    process.exit(1);
});
