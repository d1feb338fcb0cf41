// node gltf.mjs FOLDER: the files of FOLDER/samples.json pass the Khronos validator without errors and warnings, and what
// three.js plays, or for pointers what the accessors say, are the values that stand there.
import { readFileSync } from "node:fs";
import validator from "gltf-validator";
import { AnimationMixer } from "three";
import { GLTFLoader } from "three/examples/jsm/loaders/GLTFLoader.js";

globalThis.ProgressEvent ??= class extends Event {}; // of browsers; three.js sends some while it loads
const folder = process.argv[2];
console.warn = () => {}; // of pointers, which three.js does not play
let compared = 0;
let worst = 0; // as a share of what is allowed

function compare(found, row, what, isRotation) {
    let off = Infinity;
    for (const sign of isRotation ? [1, -1] : [1])
        off = Math.min(off, Math.max(...row.slice(2).map((value, i) => Math.abs(sign * found[i] - value))));
    compared += row.length - 2;
    if (off > 0) worst = Math.max(worst, off / row[1]);
    if (!(off <= row[1])) throw new Error(`${what} at frame ${row[0]}: ${found}, expected ${row.slice(2)} within ${row[1]}`);
}

function split(bytes) {
    if (bytes.readUInt32LE(0) !== 0x46546c67) {
        const json = JSON.parse(bytes);
        return { json, data: json.buffers.length ? Buffer.from(json.buffers[0].uri.split(",")[1], "base64") : null };
    }
    const length = bytes.readUInt32LE(12);
    return { json: JSON.parse(bytes.subarray(20, 20 + length)), data: bytes.subarray(28 + length) };
}

// A sampler by itself, for what three.js does not play.
function valueAt({ json, data }, sampler, t) {
    const numbers = (index) => {
        const accessor = json.accessors[index];
        const start = (json.bufferViews[accessor.bufferView].byteOffset ?? 0) + (accessor.byteOffset ?? 0);
        return Array.from({ length: accessor.count }, (_, i) => data.readFloatLE(start + 4 * i));
    };
    const [times, values] = [numbers(sampler.input), numbers(sampler.output)];
    const isCubic = sampler.interpolation === "CUBICSPLINE";
    const at = (k, part) => (isCubic ? values[3 * k + part] : values[k]);
    let k = times.length - 1;
    while (k > 0 && times[k] > t) --k;
    if (t < times[0] || k === times.length - 1 || sampler.interpolation === "STEP") return at(k, 1);
    const width = times[k + 1] - times[k];
    const s = (t - times[k]) / width;
    if (!isCubic) return at(k, 1) + s * (at(k + 1, 1) - at(k, 1));
    return (2 * s ** 3 - 3 * s ** 2 + 1) * at(k, 1) + width * (s ** 3 - 2 * s ** 2 + s) * at(k, 2)
        + (3 * s ** 2 - 2 * s ** 3) * at(k + 1, 1) + width * (s ** 3 - s ** 2) * at(k + 1, 0);
}

const properties = {
    translation: (node) => node.position.toArray(),
    rotation: (node) => node.quaternion.toArray(),
    scale: (node) => node.scale.toArray(),
    weights: (node) => [...node.morphTargetInfluences],
};

const samples = JSON.parse(readFileSync(`${folder}/samples.json`));
for (const { file, channels } of samples) {
    const bytes = readFileSync(`${folder}/${file}`);
    const { issues } = await validator.validateBytes(new Uint8Array(bytes));
    if (issues.numErrors || issues.numWarnings)
        throw new Error(`${file}: ${JSON.stringify(issues.messages.filter((issue) => issue.severity < 2).slice(0, 5))}`);

    const parts = split(bytes);
    const animation = parts.json.animations[0];
    const rate = animation.extras.frame_rate;
    const offset = animation.extras.frame_offset ?? 0;
    const buffer = bytes.buffer.slice(bytes.byteOffset, bytes.byteOffset + bytes.length);
    const loaded = await new GLTFLoader().parseAsync(buffer, "");
    const mixer = new AnimationMixer(loaded.scene);
    if (loaded.animations.length) mixer.clipAction(loaded.animations[0]).play();
    for (const { node, path, rows } of channels) {
        const index = parts.json.nodes.findIndex((one) => one.name === node);
        const object = await loaded.parser.getDependency("node", index);
        const pointer = `/nodes/${index}/extras/${path}`;
        const channel = animation.channels.find(({ target }) => target.extensions?.KHR_animation_pointer.pointer === pointer);
        if (!channel && !properties[path]) throw new Error(`${file}: no channel of ${pointer}`);
        for (const row of rows) {
            const t = (row[0] - offset) / rate;
            if (channel) {
                compare([valueAt(parts, animation.samplers[channel.sampler], t)], row, `${file}, ${pointer}`);
                continue;
            }
            mixer.setTime(t);
            compare(properties[path](object), row, `${file}, ${node} ${path}`, path === "rotation");
        }
    }
}
console.log(`${samples.length} files, ${compared} numbers, at most ${worst.toFixed(3)} of what is allowed off`);
if (compared < 5000) throw new Error("too few");
