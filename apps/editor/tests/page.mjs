// What the tests need of the page: a browser, real input at places given in frames and values, and what would be saved.
import { chromium } from "playwright-core";
import { mkdtempSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";

const arguments_ = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
    "--disable-background-networking", "--disable-component-update", "--disable-sync"];

/** A browser with an empty profile of its own. */
export async function launch(options = {}) {
    const profile = mkdtempSync(join(tmpdir(), "editor-test-"));
    return chromium.launchPersistentContext(profile, {
        executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium", args: arguments_, acceptDownloads: true,
        viewport: { width: 1280, height: 760 }, ...options,
    });
}

export class Editor {
    constructor(page, problems) {
        this.page = page;
        this.problems = problems;
    }

    /** Opens the page; whatever it logs as an error, or asks of another server, is a problem. */
    static async open(context, address, problems) {
        const page = await context.newPage();
        page.setDefaultTimeout(60000);
        page.on("console", (message) => {
            if (["error", "warning"].includes(message.type())) problems.push(`console: ${message.text()}`);
        });
        page.on("pageerror", (error) => problems.push(`page: ${error.message}`));
        page.on("request", (request) => {
            const url = request.url();
            const isOwn = url.startsWith(new URL(address).origin) || /^(data|blob|file):/.test(url);
            if (!isOwn) problems.push(`request to ${url}`);
        });
        await page.goto(address);
        const editor = new Editor(page, problems);
        await editor.ready();
        return editor;
    }

    async ready() {
        await this.page.waitForSelector("body[data-ready]", { state: "attached" });
    }

    call(command, values = {}) {
        return this.page.evaluate(([command, values]) => window.editor.bridge.call(command, values), [command, values]);
    }

    /** What would be saved: as text, which shows each part on a line. */
    async document(format = "text") {
        return this.page.evaluate((format) => {
            window.editor.bridge.call("save", { format });
            return new TextDecoder("latin1").decode(window.editor.bridge.output());
        }, format);
    }

    async keys(curve = 0) {
        return (await this.call("rows", { curve, first: 0, count: 1000 })).rows;
    }

    state() {
        return this.call("state");
    }

    /** Waits for two pictures: all that was done so far is drawn and in the panels. */
    async settle() {
        await this.page.evaluate(() => new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done))));
    }

    /** A page's pixel for a frame and a value. */
    async at(frame, value) {
        return this.page.evaluate(([frame, value]) => {
            const { app: { view }, gutter } = window.editor;
            const box = document.getElementById("plot").getBoundingClientRect();
            return {
                x: box.left + gutter.left + ((frame - view.left) / (view.right - view.left)) * view.width,
                y: box.top + gutter.top + ((view.top - value) / (view.top - view.bottom)) * view.height,
            };
        }, [frame, value]);
    }

    async click(frame, value, options = {}) {
        const { x, y } = await this.at(frame, value);
        const { modifiers = [], ...rest } = options;
        for (const key of modifiers) await this.page.keyboard.down(key);
        await this.page.mouse.click(x, y, rest);
        for (const key of modifiers) await this.page.keyboard.up(key);
        await this.settle();
    }

    /** Drags from one pixel to another, in steps, each of which is drawn. */
    async dragPixels(from, to, { modifiers = [], button = "left", release = true } = {}) {
        const { mouse, keyboard } = this.page;
        await mouse.move(from.x, from.y);
        await mouse.down({ button });
        for (const key of modifiers) await keyboard.down(key);
        for (let i = 1; i <= 4; ++i) {
            await mouse.move(from.x + ((to.x - from.x) * i) / 4, from.y + ((to.y - from.y) * i) / 4);
            await this.settle();
        }
        if (release) await mouse.up({ button });
        for (const key of modifiers) await keyboard.up(key);
        await this.settle();
    }

    async drag(from, to, options) {
        return this.dragPixels(await this.at(...from), await this.at(...to), options);
    }

    async press(...keys) {
        for (const key of keys) await this.page.keyboard.press(key);
        await this.settle();
    }

    /** Files as if dropped from the desktop. */
    async drop(files, shift = false) {
        await this.page.evaluate(([files, shift]) => {
            const transfer = new DataTransfer();
            for (const { name, bytes } of files) transfer.items.add(new File([new Uint8Array(bytes)], name));
            const event = new DragEvent("drop", { dataTransfer: transfer, bubbles: true, cancelable: true, shiftKey: shift });
            document.getElementById("plot").dispatchEvent(event);
        }, [files.map(({ name, bytes }) => ({ name, bytes: [...bytes] })), shift]);
        await this.page.waitForSelector("#message:not([hidden])");
        await this.settle();
    }

    async message() {
        return (await this.page.textContent("#message")) ?? "";
    }

    async fill(id, text) {
        await this.page.fill(`#${id}`, text);
        await this.page.press(`#${id}`, "Enter");
        await this.settle();
    }

    /** Discards what is offered for recovery; the result is how much that was. */
    async discard() {
        if (await this.page.isHidden("#recover")) return 0;
        await this.page.click("#recover");
        await this.page.waitForSelector("#recover-dialog[open]");
        const rows = await this.page.$$("#lost li");
        for (const row of rows) {
            await (await row.$("button:last-child")).click();
            await row.waitForElementState("hidden");
        }
        return rows.length;
    }

    /** Fresh state: one of the examples, nothing selected, everything in view. */
    async reset(example = "ball") {
        await this.page.keyboard.press("Escape");
        await this.page.selectOption("#example", example);
        await this.settle();
        await this.page.focus("#plot");
        await this.press("a");
    }
}
