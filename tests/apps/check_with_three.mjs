// Opens a world in three.js as it was written by hand and as "kestrane convert" has written it, and
// compares the two with each other and with what is in it.
//
//   node check_with_three.mjs MODULES WORLD CONVERTED
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import path from 'node:path';
import { pathToFileURL } from 'node:url';
import { gunzipSync } from 'node:zlib';

const [modules, world, converted] = process.argv.slice(2);
const imported = (file) => import(pathToFileURL(path.join(modules, 'three', file)));
const { VRMLLoader } = await imported('examples/jsm/loaders/VRMLLoader.js');

const KINDS = ['isMesh', 'isLineSegments', 'isPoints'];

function content(text) {
    const scene = new VRMLLoader().parse(text, '');
    scene.updateMatrixWorld(true);
    const objects = [];
    scene.traverse((object) => {
        const kind = KINDS.find((name) => object[name]);
        if (!kind) {
            return;
        }
        const { position, color } = object.geometry.attributes;
        objects.push({
            kind,
            name: object.name,
            matrix: object.matrixWorld.elements.map((x) => Math.fround(x)),
            index: object.geometry.index ? [...object.geometry.index.array] : null,
            position: [...position.array],
            color: color ? [...color.array] : null,
            diffuse: object.material.color ? object.material.color.toArray() : null,
            opacity: object.material.opacity,
        });
    });
    return objects;
}

const packed = readFileSync(converted);
assert.deepEqual([...packed.subarray(0, 2)], [0x1f, 0x8b], 'packed by gzip');
const before = content(readFileSync(world, 'utf8'));
const after = content(gunzipSync(packed).toString('utf8'));

const count = (kind) => after.filter((object) => object.kind === kind).length;
const vertices = (objects) => objects.map((object) => object.position.length / 3);
const faceSets = after.filter((object) => object.kind === 'isMesh' && object.color);
console.log(`${count('isMesh')} meshes, ${count('isLineSegments')} line sets, ` +
            `${count('isPoints')} point sets, vertices of coloured meshes ${vertices(faceSets)}`);
assert.equal(count('isMesh'), 8);
assert.equal(count('isLineSegments'), 1);
assert.equal(count('isPoints'), 1);
// Two triangles for a face of four corners, and each with corners of its own.
assert.deepEqual(vertices(faceSets), [18, 6, 18]);
const colours = new Set();
for (let i = 0; i < 18; ++i) {
    colours.add(faceSets[0].color.slice(3 * i, 3 * i + 3).join(' '));
}
assert.equal(colours.size, 5);
assert.equal(faceSets[0].opacity, 0.75);
assert.deepEqual(after, before);
console.log('the same before and after the conversion');
