// node run.mjs FOLDER [NAME]: the habits of the graph editor in a real browser, by real mouse and keys, checked by what
// the document holds afterwards. FOLDER is what scripts/editor.sh --build leaves. Pictures go to out/editor-shots.
import assert from "node:assert/strict";
import { mkdirSync, readFileSync, readdirSync, statSync } from "node:fs";
import { join, resolve } from "node:path";
import { pathToFileURL } from "node:url";
import { gzipSync } from "node:zlib";
import { serve } from "../serve.mjs";
import { Editor, launch } from "./page.mjs";

const folder = resolve(process.argv[2] ?? "../../out/editor");
const only = process.argv[3];
const shots = resolve(folder, "../editor-shots");
mkdirSync(shots, { recursive: true });
const examples = new URL("../../../examples/data/", import.meta.url);
const near = (actual, wanted, room, what = "") =>
    assert.ok(Math.abs(actual - wanted) <= room, `${what}: ${actual} instead of ${wanted}`);

const tests = {
    async "a click selects, with shift more, on nothing none"(editor) {
        const keys = await editor.keys();
        await editor.click(keys[2].x, keys[2].y);
        assert.equal((await editor.state()).selectedKeys, 1);
        assert.ok((await editor.state()).clean, "nothing to save");
        await editor.click(keys[4].x, keys[4].y, { modifiers: ["Shift"] });
        assert.deepEqual((await editor.keys()).map((key, i) => key.selected && i).filter(Number.isInteger), [2, 4]);
        await editor.click(keys[4].x, keys[4].y, { modifiers: ["Shift"] });
        assert.equal((await editor.state()).selectedKeys, 1);
        await editor.click(60, 8);
        assert.equal((await editor.state()).selectedKeys, 0);
    },

    async "a box selects"(editor) {
        await editor.drag([15, 9], [42, 3]);
        assert.deepEqual((await editor.keys()).filter((key) => key.selected).map((key) => key.x), [22, 38]);
        await editor.drag([47, 3], [53, 1.3]);
        assert.deepEqual((await editor.keys()).filter((key) => key.selected).map((key) => key.x), [50]);
    },

    async "keys are dragged, to whole frames, and undone"(editor) {
        const before = await editor.document();
        const [, , key] = await editor.keys();
        await editor.drag([key.x, key.y], [key.x + 3.3, key.y + 2]);
        const moved = (await editor.keys())[2];
        assert.equal(moved.x, key.x + 3);
        near(moved.y, key.y + 2, 0.05, "value");
        await editor.press("Control+z");
        assert.equal(await editor.document(), before);
        await editor.press("Control+Shift+z");
        assert.equal((await editor.keys())[2].x, key.x + 3);
        await editor.press("Control+z", "s");
        await editor.drag([key.x, key.y], [key.x + 3.3, key.y + 2]);
        near((await editor.keys())[2].x, key.x + 3.3, 0.1, "free frame");
        await editor.press("Control+z", "s", "Shift+S");
        await editor.page.fill("#value-step", "0.5");
        await editor.page.focus("#plot");
        await editor.drag([key.x, key.y], [key.x, key.y + 2.2]);
        assert.equal((await editor.keys())[2].y, Math.round((key.y + 2.2) * 2) / 2, "a value of the grid");
        await editor.press("Shift+S");
    },

    async "shift keeps a drag to one direction, and Escape puts it back"(editor) {
        const before = await editor.document();
        const [, , key] = await editor.keys();
        await editor.drag([key.x, key.y], [key.x + 1, key.y + 3], { modifiers: ["Shift"] });
        const moved = (await editor.keys())[2];
        assert.equal(moved.x, key.x);
        near(moved.y, key.y + 3, 0.05);
        await editor.press("Control+z");
        await editor.drag([key.x, key.y], [key.x + 3, key.y + 3], { release: false });
        assert.notEqual(await editor.document(), before);
        await editor.press("Escape");
        await editor.page.mouse.up();
        assert.equal(await editor.document(), before);
    },

    async "keys stop at others, cross them, or push them along"(editor) {
        const [, , key, next] = await editor.keys();
        await editor.drag([key.x, key.y], [next.x + 5, key.y]);
        assert.ok((await editor.keys())[2].x < next.x);
        await editor.press("Control+z");
        await editor.page.selectOption("#others", "ripple");
        await editor.drag([key.x, key.y], [key.x + 10, key.y]);
        assert.equal((await editor.keys())[3].x, next.x + 10);
        await editor.press("Control+z");
        await editor.page.selectOption("#others", "cross");
        await editor.drag([key.x, key.y], [next.x + 5, key.y]);
        assert.equal((await editor.keys())[3].x, next.x + 5);
        await editor.page.selectOption("#others", "stop");
    },

    async "handles are dragged"(editor) {
        const [key] = await editor.keys();
        await editor.click(key.x, key.y);
        const tip = await editor.page.evaluate(() => {
            // The first curve's first out handle, where it is drawn.
            const numbers = [...window.editor.bridge.draw(window.editor.app.view, 0)];
            let at = 4;
            for (let strokes = numbers[at++]; strokes > 0; --strokes) at += 2 + 2 * numbers[at + 1];
            at += 1 + 3 * numbers[at];
            at += 1 + 3 * numbers[at];
            const handles = numbers.slice(at + 1, at + 1 + 5 * numbers[at]);
            const box = document.getElementById("plot").getBoundingClientRect();
            for (let i = 0; i < handles.length; i += 5)
                if (handles[i + 2] > handles[i] + 5) return { x: box.left + 58 + handles[i + 2], y: box.top + 8 + handles[i + 3] };
            return null;
        });
        await editor.dragPixels(tip, { x: tip.x + 10, y: tip.y + 60 });
        const properties = await editor.call("properties");
        assert.ok(properties.tangents || properties.out, "a handle or its key is selected");
        const text = await editor.document();
        assert.match(text, /out fixed \S+ -\d/);
        await editor.press("Control+z");
        assert.notEqual(await editor.document(), text);
        // Upright and across its key: as steep as it may be, and in sight.
        const { x } = await editor.at(key.x, key.y);
        for (const aside of [2, 0, -40]) {
            await editor.dragPixels(tip, { x: x + aside, y: tip.y + 60 });
            const { view, lowest } = await editor.page.evaluate(() => ({
                view: window.editor.app.view,
                lowest: Math.min(...Array.from({ length: 70 }, (_, i) => window.editor.bridge.values(i)[0])),
            }));
            assert.ok(lowest > view.bottom - 10, `the curve comes down to ${lowest}`);
            assert.ok((await editor.call("properties")).tangents.angle.value < 0);
            await editor.press("Control+z");
        }
        await editor.click(key.x, key.y);
        const before = await editor.document();
        for (const angle of ["90", "180"]) {
            await editor.fill("out-angle", angle);
            assert.match(await editor.message(), /between -90 and 90/);
        }
        assert.equal(await editor.document(), before);
    },

    async "what is outside the plot is not grabbed"(editor) {
        const before = await editor.document();
        await editor.press("v");
        await editor.page.evaluate(() => {
            Object.assign(window.editor.app.view, { bottom: 2, top: 11, left: 23 });
            window.editor.app.redraw();
        });
        await editor.settle();
        for (const [frame, value] of [[31, 0], [22, 5.625]]) { // under the velocity panel, over the labels
            const from = await editor.at(frame, value);
            await editor.dragPixels(from, { x: from.x + 30, y: from.y + 20 });
            await editor.page.mouse.dblclick(from.x, from.y);
            await editor.settle();
            assert.equal((await editor.state()).selectedKeys, 0);
        }
        await editor.press("v");
        assert.equal(await editor.document(), before);
    },

    async "a double click adds a key and keeps the shape"(editor) {
        const values = () => editor.page.evaluate(() => Array.from({ length: 70 }, (_, i) => window.editor.bridge.values(i + 0.3)[0]));
        const before = await values();
        const value = await editor.page.evaluate(() => window.editor.bridge.values(17)[0]);
        const { x, y } = await editor.at(17, value);
        await editor.page.mouse.dblclick(x, y);
        await editor.settle();
        const keys = await editor.keys();
        assert.ok(keys.some((key) => key.x === 17));
        (await values()).forEach((after, i) => near(after, before[i], 1e-9, `frame ${i}`));
        await editor.press("Delete");
        assert.ok(!(await editor.keys()).some((key) => key.x === 17));
    },

    async "buttons and keys set tangents"(editor) {
        const [, , key] = await editor.keys();
        await editor.click(key.x, key.y);
        const numbers = { smooth: 3, clamped: 5, plateau: 6, linear: 2, flat: 1, fixed: 0 };
        let digit = 1;
        for (const [name, type] of Object.entries(numbers)) {
            await editor.press(String(digit++));
            assert.equal((await editor.keys())[2].out, type, name);
            await editor.press("6");
            await editor.page.click(`[data-tangent=${name}]`);
            assert.equal((await editor.keys())[2].in, type, name);
        }
        await editor.page.click("[data-tangent=stepped]");
        assert.equal((await editor.keys())[2].kind, "constant()");
        await editor.reset("ends");
        const end = (await editor.keys()).at(-1).kind;
        await editor.press("Control+a", "7");
        assert.equal((await editor.keys())[0].kind, "constant()");
        assert.equal((await editor.keys()).at(-1).kind, end, "what comes after the last key");
    },

    async "flags of keys and handles"(editor) {
        const [, , key] = await editor.keys();
        await editor.click(key.x, key.y);
        for (const [shortcut, word] of [["b", "breakdown"], ["l", "locked"]]) {
            await editor.press(shortcut);
            assert.match(await editor.document(), new RegExp(`key ${key.x} \\S+ .*${word}`), word);
            await editor.press(shortcut);
        }
        const unified = await editor.page.getAttribute("#key-unified", "aria-pressed");
        await editor.press("u");
        assert.notEqual(await editor.page.getAttribute("#key-unified", "aria-pressed"), unified);
        await editor.page.click("#handle-weighted");
        await editor.page.click("#handle-weightLocked");
        assert.match(await editor.document(), /weighted weightLocked/);
        assert.equal(await editor.page.getAttribute("#handle-weighted", "aria-pressed"), "true");
    },

    async "locked keys stay"(editor) {
        const [, , key] = await editor.keys();
        await editor.click(key.x, key.y);
        await editor.press("l");
        const before = await editor.document();
        await editor.drag([key.x, key.y], [key.x + 4, key.y + 2]);
        assert.equal(await editor.document(), before);
        assert.match(await editor.message(), /locked/);
    },

    async "the menu sets interpolators of segments and of both ends"(editor) {
        const [, , key] = await editor.keys();
        await editor.click(key.x, key.y, { button: "right" });
        await editor.press("Delete", "Tab");
        assert.ok(await editor.page.isHidden("#interpolators"));
        assert.equal((await editor.keys())[2].x, key.x, "Delete is no shortcut in the menu");
        await editor.click(key.x, key.y, { button: "right" });
        await editor.page.click("[data-kind='linear()']");
        assert.equal((await editor.keys())[2].kind, "linear()");
        for (const [where, kind] of [["before", "mirror()"], ["after", "cycle_offset()"]]) {
            await editor.press("i");
            await editor.page.check(`#interpolators input[value=${where}]`);
            await editor.page.click(`[data-kind='${kind}']`);
            await editor.settle();
            assert.equal((await editor.call("properties"))[where].value, kind);
        }
        // The keyboard alone.
        await editor.page.focus("#plot");
        await editor.press("i", "ArrowRight", "Enter");
        assert.equal((await editor.keys())[2].kind, "linear()");
    },

    async "a formula, and what is wrong with it"(editor) {
        const [, , key] = await editor.keys();
        await editor.click(key.x, key.y);
        await editor.page.fill("#formula", "sin(x) + * 2");
        const [mark, reason] = (await editor.page.textContent("#formula-error")).split("\n");
        assert.equal(mark, `${" ".repeat(9)}^`);
        assert.ok(reason.length > 5);
        await editor.page.fill("#formula", `${"1 + ".repeat(12)}é${" + 1".repeat(20)}`);
        const place = await editor.page.evaluate(async () => {
            const field = document.getElementById("formula");
            const pen = document.createElement("canvas").getContext("2d");
            pen.font = getComputedStyle(field).font;
            field.scrollLeft = pen.measureText("1 + ".repeat(12)).width - 100;
            await new Promise((done) => field.addEventListener("scroll", () => requestAnimationFrame(done), { once: true }));
            const mark = document.createRange();
            mark.selectNodeContents(document.getElementById("formula-mark"));
            return mark.getBoundingClientRect().right - pen.measureText("^").width - field.getBoundingClientRect().left;
        });
        near(place, 109, 2, "the mark, where the field is scrolled to");
        assert.match(await editor.page.textContent("#formula-reason"), /"é"/);
        await editor.page.fill("#formula", "sin(x) + * 2");
        await editor.page.press("#formula", "Enter");
        assert.equal((await editor.keys())[2].kind, "bezier()");
        await editor.fill("formula", "sin(x) + 2");
        assert.equal((await editor.keys())[2].kind, "sin(x) + 2");
        assert.ok(await editor.page.isHidden("#formula-error"));
    },

    async "copy, cut and paste by the system's clipboard"(editor) {
        const keys = await editor.keys();
        await editor.click(keys[0].x, keys[0].y);
        await editor.click(keys[2].x, keys[2].y, { modifiers: ["Shift"] });
        await editor.press("Control+c");
        await editor.fill("frame", "100");
        await editor.page.focus("#plot");
        await editor.press("Control+v");
        assert.deepEqual((await editor.keys()).slice(-2).map((key) => key.x), [100, 121]);
        assert.deepEqual((await editor.keys()).slice(-2).map((key) => key.y), [keys[0].y, keys[2].y]);
        await editor.press("Control+x");
        assert.equal((await editor.keys()).length, keys.length);
        await editor.press("Control+v");
        assert.equal((await editor.keys()).length, keys.length + 2);
        const text = await editor.document();
        for (const only of [text, text.slice(0, text.indexOf("\ncurve squash"))]) {
            await editor.reset("slide");
            await editor.page.evaluate((only) => navigator.clipboard.writeText(only), only);
            await editor.press("Control+v");
            assert.equal(await editor.document(), `${only.trimEnd()}\n`, "a document is opened");
        }
    },

    async "arrow keys move, and follow each other in one step"(editor) {
        const [, , key] = await editor.keys();
        await editor.click(key.x, key.y);
        const before = await editor.document();
        await editor.press("ArrowRight", "ArrowRight", "ArrowRight");
        assert.equal((await editor.keys())[2].x, key.x + 3);
        await editor.press("ArrowUp");
        assert.ok((await editor.keys())[2].y > key.y);
        await editor.press("Control+z");
        assert.equal(await editor.document(), before);
        await editor.press(".");
        assert.ok((await editor.keys())[3].selected);
        await editor.press(",", ",");
        assert.ok((await editor.keys())[1].selected);
        await editor.press("Control+a");
        assert.equal((await editor.state()).selectedKeys, 31);
        await editor.press("Escape");
        await editor.click(key.x, key.y);
        await editor.press("Shift+ArrowRight");
        assert.equal((await editor.keys())[2].x, 30, "the last whole frame before the next key");
    },

    async "scaling about the far end"(editor) {
        const keys = await editor.keys();
        await editor.drag([15, 9], [42, 3]);
        await editor.press("t", "s");
        await editor.drag([38, keys[4].y], [42, keys[4].y]);
        await editor.press("t", "s");
        const after = await editor.keys();
        near(after[2].x, 22, 1e-9);
        near(after[4].x, 42, 0.2);
        // By keys: the farthest from the cursor by a frame, the other in proportion.
        await editor.fill("frame", "12");
        await editor.page.focus("#plot");
        await editor.press("t", "ArrowRight", "t");
        const scaled = await editor.keys();
        near(scaled[4].x, Math.round(after[4].x + 1), 1e-9);
        near(scaled[2].x, 12 + (10 * (scaled[4].x - 12)) / (after[4].x - 12), 1e-9);
    },

    async "handles and segments by the keyboard"(editor) {
        const [, , key] = await editor.keys();
        await editor.fill("frame", String(key.x - 3));
        await editor.page.focus("#plot");
        await editor.press("Escape", ".");
        assert.ok((await editor.keys())[2].selected, "the next key from the cursor");
        await editor.press("h");
        assert.equal((await editor.state()).selectedHandles, 1);
        await editor.press("ArrowUp", "ArrowUp");
        const angle = Number(await editor.page.inputValue("#out-angle"));
        assert.equal((await editor.keys())[2].in, 0);
        assert.equal((await editor.keys())[2].y, key.y);
        await editor.press("Control+z", "h");
        assert.notEqual(Number(await editor.page.inputValue("#out-angle")), angle);
        await editor.press("h", "g", ">");
        assert.equal((await editor.state()).selectedSegments, 2);
        await editor.fill("formula", "linear");
        assert.deepEqual((await editor.keys()).slice(2, 4).map(({ kind }) => kind), ["linear()", "linear()"]);
        await editor.press("Control+z"); // from the field, which has nothing of its own to undo
        assert.equal((await editor.keys())[2].kind, key.kind);
    },

    async "tools show what they would do, then do it"(editor) {
        await editor.page.click("#tool-panel summary");
        for (const tool of ["bake", "smooth", "fit", "reduce"]) {
            await editor.reset("ball");
            const before = await editor.document();
            await editor.page.selectOption("#tool", tool);
            await editor.page.click("#tool-preview");
            const result = await editor.page.textContent("#tool-result");
            assert.match(result, /keys become \d+\. Largest change/);
            assert.equal(await editor.document(), before);
            await editor.page.click("#tools [type=submit]");
            await editor.settle();
            const { keys } = (await editor.state()).curves[0];
            assert.equal(keys, Number(/become (\d+)/.exec(result)[1]), tool);
            await editor.page.focus("#plot");
            await editor.press("Control+z");
            assert.equal(await editor.document(), before);
        }
        await editor.page.click("#tool-panel summary");
    },

    async "the list hides, locks, renames, finds and reorders"(editor) {
        await editor.page.click("#visible-1");
        assert.match(await editor.document(), /curve squash \{\s+hidden/);
        await editor.page.click("#visible-1");
        await editor.page.click("#locked-1");
        assert.match(await editor.document(), /curve squash \{\s+locked/);
        await editor.page.click("#locked-1");
        await editor.page.dblclick("#curve-1");
        await editor.page.keyboard.type("flatness");
        await editor.press("Enter");
        assert.equal((await editor.state()).curves[1].name, "flatness");
        await editor.page.fill("#search", "flat");
        await editor.settle();
        assert.equal(await editor.page.locator("#curves li").count(), 1);
        await editor.page.fill("#search", "");
        await editor.page.focus("#curve-1");
        await editor.press("Alt+ArrowUp");
        assert.deepEqual((await editor.state()).curves.map((curve) => curve.name), ["flatness", "height"]);
        await editor.page.dragAndDrop("#curves li:nth-child(2)", "#curves li:nth-child(1)");
        await editor.settle();
        assert.deepEqual((await editor.state()).curves.map((curve) => curve.name), ["height", "flatness"]);
        await editor.page.click("#add-curve");
        await editor.settle();
        assert.equal((await editor.state()).curves.length, 3);
        await editor.page.click("#remove-curve");
        assert.deepEqual((await editor.state()).curves.map((curve) => curve.name), ["height", "flatness"]);
        await editor.page.focus("#plot");
        await editor.press("v");
        await editor.page.click("#velocity-1");
        const shown = await editor.page.evaluate(() => [...window.editor.bridge.draw(window.editor.app.view, 1)][0]);
        assert.equal(shown, 1, "the velocity of that curve alone");
        await editor.press("v");
    },

    async "of thousands of curves the list tells what it leaves out"(editor) {
        const curves = Array.from({ length: 2002 }, (_, i) => `curve c${i} {\nsegment linear() {\n}\n}`);
        await editor.drop([{ name: "many.fcrvt", bytes: Buffer.from(`fcurvetext 1.0\n${curves.join("\n")}\n`) }]);
        assert.equal(await editor.page.locator("#curves li").count(), 2000);
        assert.match(await editor.page.textContent("#no-curves"), /^2 more curves are not listed/);
        const rows = await editor.page.$$("#curves li:nth-child(-n+3)");
        await editor.page.focus("#plot");
        await editor.press("PageDown");
        const isKept = (row) => row.evaluate((each) => each.isConnected);
        assert.deepEqual(await Promise.all(rows.map(isKept)), [false, false, true], "only rows that changed are new");
        assert.equal(await editor.page.getAttribute("#curve-1", "aria-current"), "true");
        await editor.page.fill("#search", "c2001");
        await editor.settle();
        assert.ok(await editor.page.isVisible("#curve-2001"));
        await editor.page.fill("#search", "");
    },

    async "fields show what is common, and set it"(editor) {
        const keys = await editor.keys();
        await editor.click(keys[0].x, keys[0].y);
        await editor.click(keys[2].x, keys[2].y, { modifiers: ["Shift"] });
        assert.equal(await editor.page.getAttribute("#key-x", "placeholder"), "mixed");
        await editor.fill("key-y", "4.25");
        for (const i of [0, 2]) assert.equal((await editor.keys())[i].y, 4.25);
        assert.equal(await editor.page.inputValue("#key-y"), "4.25");
        await editor.fill("key-x", "+=2");
        assert.equal((await editor.keys())[2].x, keys[2].x + 2);
        await editor.fill("key-y", "*=2");
        for (const i of [0, 2]) assert.equal((await editor.keys())[i].y, 8.5);
        await editor.fill("key-y", "/=2");
        for (const text of ["much", "1,000", "0x10", "/=0"]) {
            await editor.fill("key-y", text);
            assert.match(await editor.message(), /^Value of the selected keys: /, text);
            assert.equal((await editor.keys())[0].y, 4.25);
        }
        await editor.fill("key-y", "1,5");
        assert.equal((await editor.keys())[0].y, 1.5);
    },

    async "a typed frame passes other keys, pushes them, or is refused"(editor) {
        const frames = async () => (await editor.keys()).map((key) => key.x);
        const [, , key] = await editor.keys();
        await editor.click(key.x, key.y);
        const before = await frames();
        for (const [id, text] of [["key-x", "40"], ["key-x", "+=18"], ["cell-2-x", "40"], ["key-x", "31"]]) {
            await editor.fill(id, text);
            assert.match(await editor.message(), /in the way/, `${id} ${text}`);
            assert.deepEqual(await frames(), before);
        }
        for (const [others, wanted] of [["cross", [1, 13, 31, 38, 40, 45]], ["ripple", [1, 13, 40, 49, 56, 63]]])
            for (const [id, text] of [["key-x", "40"], ["key-x", "+=18"], ["cell-2-x", "40"]]) {
                await editor.page.selectOption("#others", others);
                await editor.fill(id, text);
                assert.deepEqual((await frames()).slice(0, 6), wanted, `${id} ${text} ${others}`);
                await editor.page.focus("#plot");
                await editor.press("Control+z");
            }
        await editor.page.selectOption("#others", "stop");
    },

    async "what is typed goes to the key that it was typed for"(editor) {
        const keys = await editor.keys();
        for (const [id, text, read, wanted] of [
            ["key-y", "5.5", (key) => key.y, 5.5], ["formula", "linear()", (key) => key.kind, "linear()"],
            ["cell-2-y", "7.5", (key) => key.y, 7.5],
        ]) {
            await editor.click(keys[2].x, keys[2].y);
            const [, , , , other] = await editor.keys();
            await editor.page.fill(`#${id}`, text);
            await editor.click(keys[4].x, keys[4].y);
            const after = await editor.keys();
            assert.equal(read(after[2]), wanted, id);
            assert.deepEqual({ ...after[4], selected: false }, other, id);
            await editor.press("Control+z", "Control+z");
            assert.equal(read((await editor.keys())[2]), read(keys[2]));
        }
        await editor.click(keys[2].x, keys[2].y);
        await editor.page.fill("#key-y", "9");
        await editor.page.press("#key-y", "Escape");
        await editor.click(keys[4].x, keys[4].y);
        assert.equal((await editor.keys())[2].y, keys[2].y, "Escape leaves it out");
    },

    async "the table can be typed into"(editor) {
        await editor.page.fill("#cell-2-y", "7.5");
        await editor.page.press("#cell-2-y", "Enter");
        await editor.settle();
        assert.equal((await editor.keys())[2].y, 7.5);
        await editor.page.fill("#cell-2-x", "23");
        await editor.page.press("#cell-2-x", "Enter");
        await editor.settle();
        assert.equal((await editor.keys())[2].x, 23);
        await editor.page.selectOption("#cell-2-in", "plateau");
        await editor.page.fill("#cell-2-kind", "ease");
        await editor.page.press("#cell-2-kind", "Enter");
        await editor.settle();
        const { in: type, kind } = (await editor.keys())[2];
        assert.deepEqual([type, kind], [6, "ease()"]);
        await editor.page.fill("#cell-2-kind", "eas(");
        await editor.page.press("#cell-2-kind", "Enter");
        assert.match(await editor.message(), /"eas\(" is not a valid formula/);
        assert.equal((await editor.keys())[2].kind, "ease()");
    },

    async "wheel, pan, frames and scales"(editor) {
        const view = () => editor.page.evaluate(() => ({ ...window.editor.app.view }));
        const before = await view();
        const keys = await editor.keys();
        const { x, y } = await editor.at(38, 3);
        await editor.page.mouse.move(x, y);
        await editor.page.mouse.wheel(0, -300);
        await editor.page.waitForFunction((right) => window.editor.app.view.right < right, before.right);
        const there = await editor.at(38, 3);
        near(there.x, x, 0.5, "the point under the pointer");
        near(there.y, y, 0.5, "the point under the pointer");
        await editor.dragPixels({ x, y }, { x: x + 80, y: y + 40 }, { button: "middle" });
        near((await editor.at(38, 3)).x, x + 80, 0.5, "panned");
        assert.equal((await editor.keys()).length, keys.length, "the middle button pastes nothing");
        const key = keys[2];
        await editor.press("a");
        await editor.click(key.x, key.y);
        await editor.press("f");
        assert.ok((await view()).right - (await view()).left < 20);
        await editor.press("a", "n");
        assert.ok((await editor.state()).separate);
        near((await view()).top, 1.12, 0.01, "scales of their own");
        await editor.press("n", "v");
        assert.equal(await editor.page.getAttribute("#velocity", "aria-pressed"), "true");
        await editor.press("v");
    },

    async "any number has room, on the axes and in the table"(editor) {
        for (const [value, shown] of [[1000000.25, /^(1e6|1000000…)$/], [12345678.5, /^1\.23\d*e7$/], [1.7e308, /^[12](\.\d)?e308$/]]) {
            const parts = ["", `key 86400.25 ${value}`, `key 86401 ${value / 2}`].join("\nsegment linear() {\n}\n");
            const text = `fcurvetext 1.0\ncurve far {${parts}\nsegment linear() {\n}\n}\n`;
            await editor.drop([{ name: "far.fcrvt", bytes: Buffer.from(text) }]);
            const far = await editor.page.inputValue("#cell-0-y");
            assert.match(far, shown);
            await editor.page.focus("#cell-0-y");
            assert.equal(Number(await editor.page.inputValue("#cell-0-y")), value);
            const room = await editor.page.evaluate(() => {
                const { app: { view }, gutter, bridge, picture } = window.editor;
                const pen = picture.canvas.getContext("2d");
                const scale = view.top > 1e299 ? 1e20 : 1;
                const { marks } = bridge.call("axis", { low: view.bottom / scale, high: view.top / scale, most: Math.floor(view.height / 44) });
                return marks.length > 2 ? gutter.left - Math.max(...marks.map(([, label]) => pen.measureText(label).width)) : -1;
            });
            assert.ok(room > 8, `the labels of ${value} have room: ${room}`);
            const { x, y } = await editor.at(86400.25, value);
            await editor.page.mouse.click(x, y);
            assert.equal((await editor.state()).selectedKeys, 1, "a key is where it is drawn");
        }
    },

    async "all of the page is in windows of all sizes"(editor) {
        const size = editor.page.viewportSize();
        for (const [width, height] of [[1280, 900], [1280, 620], [1024, 700], [640, 800]]) {
            await editor.page.setViewportSize({ width, height });
            await editor.settle();
            const found = await editor.page.evaluate(() => {
                const ball = document.getElementById("ball");
                return {
                    page: [document.documentElement.scrollWidth, document.documentElement.scrollHeight],
                    plot: document.getElementById("plot").clientHeight / innerHeight,
                    ball: ball.height - Math.round(ball.clientHeight * devicePixelRatio),
                    cut: [...document.querySelectorAll("header button, #playback label, th")]
                        .filter((each) => each.scrollWidth > each.clientWidth + 1 && each.clientWidth > 0).map((each) => each.textContent),
                };
            });
            assert.deepEqual(found.page, [width, height]);
            assert.deepEqual(found.cut, []);
            assert.equal(found.ball, 0, "a round ball");
            assert.ok(found.plot > 0.33, `${found.plot} of the height for the graph`);
        }
        await editor.page.setViewportSize(size);
        await editor.settle();
    },

    async "two fingers zoom"(editor, context) {
        const { x, y } = await editor.at(38, 5);
        const session = await context.newCDPSession(editor.page);
        const touch = (type, distance) => session.send("Input.dispatchTouchEvent", {
            type, touchPoints: type === "touchEnd" ? [] : [{ x: x - distance, y, id: 1 }, { x: x + distance, y, id: 2 }],
        });
        const before = await editor.page.evaluate(() => window.editor.app.view.right - window.editor.app.view.left);
        await touch("touchStart", 50);
        for (const distance of [60, 80, 100]) await touch("touchMove", distance);
        await touch("touchEnd", 100);
        await editor.settle();
        const after = await editor.page.evaluate(() => window.editor.app.view.right - window.editor.app.view.left);
        near(after / before, 0.5, 0.05, "twice the distance");
    },

    async "playing moves the cursor"(editor) {
        await editor.fill("frame", "5");
        await editor.page.focus("#plot");
        await editor.press(" ");
        await editor.page.waitForFunction(() => window.editor.app.frame > 6);
        await editor.press(" ");
        assert.equal(await editor.page.getAttribute("#play", "aria-pressed"), "false");
        const value = await editor.page.textContent("[data-value='0']");
        assert.ok(value.length > 0);
    },

    async "a document is saved after its losses were shown"(editor) {
        const before = await editor.document("xml");
        await editor.press("Control+s");
        await editor.page.selectOption("#save-format", "css_easings");
        assert.ok((await editor.page.locator("#losses li").count()) > 0);
        await editor.page.selectOption("#save-format", "lottie");
        const sizes = [];
        for (const rate of ["24", "100"]) {
            await editor.page.fill("#save-rate", rate);
            await editor.page.press("#save-rate", "Tab");
            sizes.push(await editor.page.textContent("#save-size"));
        }
        assert.notEqual(sizes[0], sizes[1], "another rate, another document");
        await editor.page.fill("#save-rate", "abc");
        await editor.page.press("#save-rate", "Tab");
        assert.match(await editor.page.textContent("#save-size"), /"abc" is not a number/);
        assert.ok(await editor.page.isDisabled("#save-now"));
        await editor.page.fill("#save-name", "my.shot.json");
        await editor.page.fill("#save-rate", "25");
        await editor.page.press("#save-rate", "Tab");
        assert.equal(await editor.page.inputValue("#save-name"), "my.shot.json");
        await editor.drop([{ name: "slide.fcrvx", bytes: readFileSync(new URL("slide.fcrvx", examples)) }]);
        assert.equal(await editor.document("xml"), before, "nothing is opened while the dialog is");
        await editor.page.selectOption("#save-format", "xml");
        assert.match(await editor.page.textContent("#save-size"), /Nothing is lost/);
        const [download] = await Promise.all([editor.page.waitForEvent("download"), editor.page.click("#save-now")]);
        assert.equal(download.suggestedFilename(), "my.shot.fcrvx");
        assert.equal(readFileSync(await download.path(), "latin1"), before);
        await editor.settle();
        assert.ok((await editor.state()).clean);
    },

    async "files are opened by the button and dropped, and opening can be undone"(editor) {
        const before = await editor.document();
        const [chooser] = await Promise.all([editor.page.waitForEvent("filechooser"), editor.page.click("#open")]);
        await chooser.setFiles(new URL("camera.chan", examples).pathname);
        await editor.page.waitForFunction(() => document.getElementById("document-name").textContent === "camera.chan");
        assert.notEqual(await editor.document(), before);
        await editor.page.focus("#plot");
        await editor.press("Control+z");
        assert.equal(await editor.document(), before);
        const count = (await editor.state()).curves.length;
        await editor.drop([{ name: "slide.fcrvx", bytes: readFileSync(new URL("slide.fcrvx", examples)) }], true);
        assert.ok((await editor.state()).curves.length > count);
    },

    async "hostile files give a message and lose nothing"(editor) {
        const before = await editor.document();
        const random = Uint8Array.from({ length: 5000 }, (_, i) => (i * i * 31 + i * 7) % 256);
        const good = readFileSync(new URL("ball.fcrvx", examples));
        const hostile = {
            "empty.fcrvx": "", "random.bin": random, "cut.fcrvx": good.subarray(0, good.length / 2),
            "bomb.fcrvx": '<?xml version="1.0"?><!DOCTYPE a [<!ENTITY b "bbbbbbbb">]><fcurves>&b;</fcurves>',
            "deep.json": "[".repeat(100000), "long.fcrvt": `fcurvetext 1.0\ncurve "${"x".repeat(2000000)}" {`,
            "count.fcrvb": Buffer.concat([Buffer.from("Crvs"), Buffer.alloc(64, 0xff)]),
            "name<img src=x onerror=alert(1)>.txt": "nothing",
        };
        for (const [name, content] of Object.entries(hostile)) {
            await editor.page.evaluate(() => (document.getElementById("message").hidden = true));
            await editor.drop([{ name, bytes: Buffer.from(content) }]);
            assert.ok((await editor.message()).includes(name), `${name}: ${await editor.message()}`);
            assert.ok(await editor.page.evaluate(() => document.getElementById("message").classList.contains("error")), name);
            assert.equal(await editor.document(), before, name);
        }
    },

    async "of several files the first good one opens, and all errors stay"(editor) {
        const slide = readFileSync(new URL("slide.fcrvx", examples));
        await editor.discard();
        await editor.click(22, (await editor.keys())[2].y); // a selection is nothing to lose
        await editor.drop([{ name: "bad.fcrvx", bytes: Buffer.from("junk") }, { name: "slide.fcrvx", bytes: slide },
            { name: "worse.json", bytes: Buffer.from("[") }]);
        await editor.page.waitForFunction(() => document.getElementById("message").textContent.includes("worse.json"));
        for (const name of ["bad.fcrvx", "slide.fcrvx: 3 curves"]) assert.ok((await editor.message()).includes(name), name);
        assert.equal(await editor.page.textContent("#document-name"), "slide.fcrvx");
        assert.equal((await editor.state()).curves.length, 3);
        await editor.page.click("#opening");
        assert.equal(await editor.page.locator("#report li").count(), 2);
        await editor.press("Escape", "Control+z");
        assert.equal(await editor.page.textContent("#document-name"), "ball.fcrvx");
        assert.ok(await editor.page.isHidden("#recover"));
    },

    async "unsaved work outlives reloads, links and other tabs"(editor, context) {
        const { page } = editor;
        const offer = () => page.waitForSelector("#recover:not([hidden])", { state: "attached" });
        await editor.discard();
        await page.goto(`${address}?example=ball`);
        await editor.ready();
        const [, , key, , other] = await editor.keys();
        await editor.drag([key.x, key.y], [key.x + 3, key.y + 2]);
        const work = await editor.document();
        await page.reload(); // before anything is kept in the background
        await editor.ready();
        assert.equal(await editor.document(), work, "an edited example");
        await page.goto(`${address}?example=slide`);
        await editor.ready();
        assert.equal((await editor.state()).curves.length, 3);
        await offer();
        await page.goBack();
        await editor.ready();
        assert.equal(await editor.document(), work, "on the way back");
        await page.goto(address);
        await editor.ready();
        assert.equal(await editor.document(), work, "after a link");
        assert.match(await editor.message(), /back/);

        const second = await Editor.open(context, address, editor.problems);
        await second.click(other.x, other.y);
        await second.page.waitForSelector("body[data-kept=yes]", { state: "attached" });
        await page.reload();
        await editor.ready();
        assert.equal(await editor.document(), work, "after a click in another tab");
        await second.drag([other.x, other.y], [other.x + 2, other.y]);
        const others = await second.document();
        await second.page.close({ runBeforeUnload: true });
        await page.reload();
        await editor.ready();
        await offer();
        await page.click("#recover");
        await page.click("#lost button");
        await page.waitForFunction(() => document.getElementById("message").textContent.includes("back"));
        assert.equal(await editor.document(), others, "of a closed tab");
        await editor.reset("slide");
        assert.equal(await editor.discard(), 2, "what was replaced");
    },

    async "everything has a name and can be reached by the keyboard"(editor) {
        const nameless = await editor.page.evaluate(() => [...document.querySelectorAll("button, input, select, canvas, [role]")]
            .filter((control) => !(control.textContent.trim() || control.getAttribute("aria-label") || control.title
                || control.labels?.length || control.getAttribute("aria-labelledby")))
            .map((control) => control.outerHTML.slice(0, 80))
            .filter((html) => !/id="(message|tool-result|save-size|formula-error)"/.test(html)));
        assert.deepEqual(nameless, []);
        const names = await editor.page.evaluate(() => [...document.querySelectorAll("#playback input, #right input, #right select")]
            .map((field) => field.getAttribute("aria-label") ?? (field.getAttribute("aria-labelledby") ?? "").split(" ")
                .map((id) => document.getElementById(id)?.textContent).join(" ")).filter(Boolean));
        assert.equal(new Set(names).size, names.length, names.join());
        await editor.page.focus("#example");
        await editor.press("ArrowDown", "ArrowDown");
        assert.equal((await editor.state()).curves.length, 2, "walking opens nothing");
        await editor.press("Enter");
        assert.equal((await editor.state()).curves.length, 3);
        await editor.reset();
        const [, , key] = await editor.keys();
        await editor.click(key.x, key.y); // fields are for what is selected
        const reached = new Set();
        await editor.page.focus("#open");
        for (let i = 0; i < 90; ++i) {
            reached.add(await editor.page.evaluate(() => document.activeElement?.id));
            await editor.page.keyboard.press("Tab");
        }
        for (const id of ["save", "undo", "snap", "help", "search", "plot", "play", "formula", "key-x"])
            assert.ok(reached.has(id), `Tab reaches ${id}`);
        await editor.page.focus("#plot");
        await editor.press("?");
        assert.ok(await editor.page.isVisible("#help-dialog"));
        await editor.press("Escape");
        assert.ok(await editor.page.isHidden("#help-dialog"));
    },

    async "memory stays level over 1000 drags and undos"(editor) {
        const grown = await editor.page.evaluate(() => {
            const { bridge } = window.editor;
            bridge.call("selectAll");
            const round = (times) => {
                for (let i = 0; i < times; ++i) {
                    bridge.call("dragBegin", { what: "keys" });
                    for (let step = 1; step <= 5; ++step) bridge.call("dragTo", { x: step, y: step });
                    bridge.call("dragEnd");
                    bridge.call("undo");
                }
            };
            round(200);
            const before = bridge.memory;
            round(1000);
            return bridge.memory - before;
        });
        assert.equal(grown, 0);
    },
};

/** Ten states, to be looked at. */
async function takeShots(editor) {
    const shot = (name) => editor.page.screenshot({ path: join(shots, `${name}.png`) });
    const select = async (list) => {
        const keys = await editor.keys();
        for (const [n, i] of list.entries()) await editor.click(keys[i].x, keys[i].y, { modifiers: n ? ["Shift"] : [] });
    };
    const quiet = () => editor.page.evaluate(() => (document.getElementById("message").hidden = true));
    await editor.reset("ball");
    await quiet();
    await select([2]);
    await shot("1-key");
    await editor.reset("camera");
    await quiet();
    await shot("2-camera");
    await editor.press("n", "Control+a");
    await shot("3-separate");
    await editor.press("n");
    await editor.reset("ends");
    await editor.press("v");
    await quiet();
    await editor.page.mouse.move(600, 300);
    await editor.page.mouse.wheel(0, 500);
    await editor.settle();
    await shot("4-velocity");
    await editor.press("v");
    await editor.reset("ball");
    await editor.page.click("#tool-panel summary");
    await editor.page.selectOption("#tool", "smooth");
    await editor.page.click("#tool-preview");
    await quiet();
    await shot("5-preview");
    await editor.press("Escape");
    await editor.page.click("#tool-panel summary");
    await select([2, 3]);
    await editor.press("i");
    await shot("6-menu");
    await editor.press("Escape");
    await editor.page.fill("#formula", "sin(x * 0.3) + * 2");
    await shot("7-formula");
    await editor.page.press("#formula", "Escape");
    await editor.press("Control+s");
    await editor.page.selectOption("#save-format", "css_easings");
    await shot("8-save");
    await editor.press("Escape");
    await editor.page.focus("#plot");
    await editor.press("?");
    await shot("9-help");
    await editor.press("Escape");
    const dark = await launch({ colorScheme: "dark", deviceScaleFactor: 2 });
    try {
        const other = await Editor.open(dark, `${editor.page.url().split("?")[0]}?example=ball`, editor.problems);
        await other.click(22, (await other.keys())[2].y);
        await other.page.evaluate(() => (document.getElementById("message").hidden = true));
        await other.page.screenshot({ path: join(shots, "10-dark.png") });
    } finally {
        await dark.close();
    }
}

const size = gzipSync(Buffer.concat(readdirSync(folder).filter((name) => statSync(join(folder, name)).isFile())
    .map((name) => readFileSync(join(folder, name)))), { level: 9 }).length;
assert.ok(size <= 900000, `the page is ${size} bytes compressed`);

const server = await serve(folder, 0);
const address = `http://127.0.0.1:${server.address().port}/`;
const context = await launch({ hasTouch: true });
const problems = [];
let failed = 0;
try {
    await context.grantPermissions(["clipboard-read", "clipboard-write"], { origin: address });
    const editor = await Editor.open(context, `${address}?example=ball`, problems);
    for (const [name, test] of Object.entries(tests)) {
        if (only && !name.includes(only)) continue;
        try {
            await editor.reset();
            await test(editor, context);
            console.log(`ok      ${name}`);
        } catch (error) {
            ++failed;
            console.log(`FAILED  ${name}\n${error.stack ?? error}`);
            await editor.page.screenshot({ path: join(shots, `failed-${failed}.png`) });
        }
    }
    if (!only || only === "shots") await takeShots(editor);
    // The same files from the disk, without a server.
    const local = await Editor.open(context, pathToFileURL(join(folder, "index.html")).href, problems);
    assert.ok((await local.keys()).length > 0);
} finally {
    await context.close();
    server.close();
}
if (problems.length > 0) console.log(`The page had problems:\n${problems.join("\n")}`);
console.log(`${size} bytes compressed; pictures in ${shots}`);
process.exit(failed > 0 || problems.length > 0 ? 1 : 0);
