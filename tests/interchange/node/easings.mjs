// node easings.mjs TOOL DATA: values of CSS easings and of Lottie keyframes as bezier-easing computes them, against those
// of fcurvetool. Curves of files go out as Lottie and CSS first.
import bezier from "bezier-easing";
import { execFileSync } from "node:child_process";
import { readFileSync, writeFileSync } from "node:fs";

const [tool, data] = process.argv.slice(2);
const run = (...words) => execFileSync(tool, words, { encoding: "utf8", maxBuffer: 1 << 28, stdio: ["ignore", "pipe", "ignore"] });

let compared = 0;
let worst = 0;
function compare(found, expected, size, what) {
    const off = Math.abs(found - expected) / size;
    worst = Math.max(worst, off);
    if (++compared && !(off <= 1e-5)) throw new Error(`${what}: ${found}, expected ${expected}`);
}

// {name: [[frame, value], ...]}
function sample(file, ...options) {
    const [head, ...rows] = run("sample", file, ...options).trim().split("\n").map((row) => row.split(","));
    const table = {};
    head.slice(1).forEach((name, i) => { table[name] = rows.map((row) => [Number(row[0]), Number(row[i + 1])]); });
    return table;
}

// 1. Easings of a style sheet, at every half per cent.
let seed = 1;
const random = () => (seed = (seed * 48271) % 2147483647) / 2147483647;
const easings = Array.from({ length: 300 }, () => [random(), 3 * random() - 1, random(), 3 * random() - 1]);
writeFileSync("in.easings", easings.map((e) => `cubic-bezier(${e.join(", ")})\n`).join(""));
const table = sample("in.easings", "--from", "0", "--to", "100", "--step", "0.5");
easings.forEach((e, i) => {
    const ease = bezier(...e);
    for (const [x, y] of table[String(i + 1)]) compare(y, ease(x / 100), 1, `easing ${e} at ${x}`);
});

// 2. What is written of curves: keyframes of Lottie, by the segments' own easings.
function valueAt(keyframes, t) {
    let i = keyframes.length - 1;
    while (i > 0 && keyframes[i].t > t) --i;
    const [from, to] = [keyframes[i], keyframes[i + 1]];
    if (!to || from.h || t < from.t) return from.s[0];
    const ease = bezier(from.o.x, from.o.y, from.i.x, from.i.y);
    return from.s[0] + (to.s[0] - from.s[0]) * ease((t - from.t) / (to.t - from.t));
}
for (const file of ["ball.fcrvx", "slide.fcrvx"]) {
    run("convert", `${data}/${file}`, "out.json");
    const properties = {};
    for (const layer of JSON.parse(readFileSync("out.json", "utf8")).layers)
        for (const effect of layer.ef ?? []) properties[effect.nm] = effect.ef[0].v.k;
    const values = sample(`${data}/${file}`, "--step", "0.5");
    for (const [name, keyframes] of Object.entries(properties)) {
        const size = Math.max(...keyframes.map((k) => k.s[0])) - Math.min(...keyframes.map((k) => k.s[0])) || 1;
        for (const [x, y] of values[name]) compare(valueAt(keyframes, x), y, size, `${file}, ${name} at ${x}`);
    }
}

// 3. Easings come back from what is written of them.
run("convert", "in.easings", "again.easings");
const numbers = (text) => text.match(/-?[\d.]+(?:e-?\d+)?/g).map(Number);
const again = readFileSync("again.easings", "utf8").trim().split("\n");
easings.forEach((e, i) => numbers(again[i].slice(0, again[i].indexOf(")"))).forEach((number, j) =>
    compare(number, e[j], 1e-5, `easing ${i + 1} written again`)));

console.log(`${compared} numbers compared, at most ${worst.toExponential(1)} off`);
if (compared < 60000) throw new Error("too few");
