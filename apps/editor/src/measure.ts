// index.html?measure=100000: drags one key among so many, and prints what each picture cost.

import { type App, element } from "./app";
import type { Picture } from "./draw";

const pictures = 240;

export async function measure(app: App, picture: Picture, keys: number): Promise<void> {
    app.run("fill", { keys });
    app.drawNow();
    const lines = [];
    for (const [title, left, right] of [["all keys in view", -0.02 * keys, 1.02 * keys], ["100 keys in view", keys / 2 - 50, keys / 2 + 50]] as const) {
        Object.assign(app.view, { left, right, bottom: -25, top: 25 });
        app.run("selectKey", { curve: 0, key: Math.floor(keys / 2) });
        app.drawNow();
        const { width, height } = app.view;
        app.run("dragBegin", { what: "keys", x: width / 2, y: height / 2 });
        const work: number[] = [];
        const library: number[] = [];
        const began = performance.now();
        for (let i = 0; i < pictures; ++i) {
            await new Promise(requestAnimationFrame);
            const start = performance.now();
            app.run("dragTo", { x: width / 2 + 2 * Math.sin(i / 10), y: height * (0.5 + 0.3 * Math.sin(i / 20)) });
            const edited = performance.now();
            app.drawNow();
            work.push(performance.now() - start);
            library.push(edited - start + picture.cost.library);
        }
        const seconds = (performance.now() - began) / 1000;
        app.run("dragEnd");
        const at = (list: number[], part: number) => [...list].sort((a, b) => a - b)[Math.floor((list.length - 1) * part)]!;
        lines.push(`${keys} keys, ${title}: ${(pictures / seconds).toFixed(1)} pictures a second; a picture takes `
            + `${at(work, 0.5).toFixed(2)} ms (median), ${at(work, 0.95).toFixed(2)} ms (95 %), `
            + `of which the library ${at(library, 0.5).toFixed(2)} ms and ${at(library, 0.95).toFixed(2)} ms`);
    }
    const box = element("message");
    box.hidden = false;
    box.textContent = lines.join("\n");
    console.log(lines.join("\n"));
}
