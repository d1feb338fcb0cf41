// Opening, saving, the clipboard, and what is kept for a reload.

import { type App, element, format } from "./app";
import { type Format, Refusal, type View } from "./bridge";
import { listenToChoice } from "./keyboard";
import { make, parse } from "./panels";
import { type Kept, type Lost, Store } from "./store";
import ball from "../../../examples/data/ball.fcrvx";
import camera from "../../../examples/data/camera.chan";
import ends from "../../../examples/data/ends.fcrvx";
import slide from "../../../examples/data/slide.fcrvx";

export const examples: Record<string, { file: string; text: string }> = {
    ball: { file: "ball.fcrvx", text: ball },
    slide: { file: "slide.fcrvx", text: slide },
    ends: { file: "ends.fcrvx", text: ends },
    camera: { file: "camera.chan", text: camera },
};

const ownFormat = "xml";
/** The library's own: they lose nothing and need to be told nothing. */
const ownFormats = ["xml", "binary", "text"];

/** What opening a file came to: a line for people, and what did not come over. */
interface Opened {
    name: string;
    text: string;
    isGood: boolean;
    report: string[];
}

/** What goes back with an opening when it is undone. */
interface Place {
    name: string;
    fps: number;
    view: View;
    saved: Uint8Array | null;
    /** Under what the store keeps the document that the opening replaced. */
    aside: string | undefined;
}

export class Files {
    private name = "untitled.fcrvx";
    /**
     * The document as it was opened or saved, null where it never was. Only its bytes tell whether there is anything to
     * lose: for the undo stack a mere selection is a change.
     */
    private saved: Uint8Array | null = null;
    private formats: { read: Format[]; write: Format[] };
    private store: Store | null = null;
    private readonly dialog = element<HTMLDialogElement>("save-dialog");
    private readonly picker = element<HTMLInputElement>("file");
    private adding = false;
    private timer = 0;
    /** Of the openings that can be undone, and of those that can be done again. */
    private readonly past: Place[] = [];
    private future: Place[] = [];
    private report: string[] = [];

    constructor(private readonly app: App) {
        this.formats = app.bridge.call("formats");
        element("open").addEventListener("click", () => this.choose(false));
        element("add-file").addEventListener("click", () => this.choose(true));
        element("save").addEventListener("click", () => this.save());
        this.picker.addEventListener("change", () => void this.take([...(this.picker.files ?? [])], this.adding));
        const isBusy = () => document.querySelector("dialog[open]") !== null;
        document.addEventListener("dragover", (event) => {
            if (!event.dataTransfer?.types.includes("Files")) return;
            event.preventDefault();
            if (isBusy()) event.dataTransfer.dropEffect = "none";
            else document.body.classList.add("dropping");
        });
        document.addEventListener("dragleave", (event) => {
            if (!event.relatedTarget) document.body.classList.remove("dropping");
        });
        document.addEventListener("drop", (event) => {
            document.body.classList.remove("dropping");
            const files = [...(event.dataTransfer?.files ?? [])];
            if (files.length === 0) return;
            event.preventDefault();
            if (isBusy()) this.app.tell("Close the dialog first: nothing was opened.", true);
            else void this.take(files, event.shiftKey);
        });
        this.clipboard();
        this.saveDialog();
        const list = element<HTMLSelectElement>("example");
        for (const name of Object.keys(examples)) list.append(new Option(name, name));
        listenToChoice(list, (name) => this.example(name));
        element("opening").addEventListener("click", () => this.showReport());
        element("recover").addEventListener("click", () => void this.showLost());
        for (const name of ["opening", "recover"])
            element(`${name}-close`).addEventListener("click", () => element<HTMLDialogElement>(`${name}-dialog`).close());
        app.onChange(() => this.keep());
        addEventListener("pagehide", () => {
            if (document.body.dataset["kept"] === "no" && app.current.curves.length > 0) this.store?.stash(this.kept());
        });
        document.addEventListener("visibilitychange", () => {
            if (document.hidden && this.timer !== 0) void this.keepNow();
        });
        addEventListener("beforeunload", (event) => {
            if (!this.store && this.unsaved()) event.preventDefault();
        });
    }

    /**
     * What the page shows first. After a reload, what it had; else the example that the address asks for; else unsaved
     * work, of this page or of one that was closed. Unsaved work that is not shown is kept, and offered.
     */
    async start(wanted: string | null): Promise<void> {
        const { app } = this;
        const example = wanted !== null && examples[wanted] ? wanted : null;
        let isShown = false;
        try {
            const { store, own, isReturn } = await Store.open();
            this.store = store;
            if (own && (isReturn || (!example && !own.clean))) isShown = this.restore(own);
            if (!isShown && !example) {
                const closed = (await store.lost()).find((each) => !each.isAside);
                if (closed && (await store.takeOver(closed.id))) isShown = this.restore(closed);
                else if (own?.clean) isShown = this.restore(own);
            }
            // What is not shown must not be overwritten by what is.
            if (!isShown && own) await store.leave();
        } catch {
            this.store = null;
        }
        if (!isShown) this.example(example ?? "ball");
        app.drawNow();
        if (!this.store) app.tell("This browser keeps nothing for this page: save before you leave.", true);
        const lost = await this.offer();
        if (lost > 0)
            app.tell(`${element("message").firstChild?.textContent ?? ""} There is other unsaved work from before.`, false,
                { text: "Recover…", run: () => void this.showLost() });
    }

    private restore(kept: Kept): boolean {
        const { isGood, text } = this.open(kept.name, kept.bytes, "restore");
        if (isGood && kept.clean) this.setSaved();
        this.app.tell(!isGood || kept.clean ? text : `Your unsaved ${kept.name} is back.`, !isGood);
        return isGood;
    }

    /** Shows how many unsaved documents can be recovered. */
    private async offer(): Promise<number> {
        const lost = (await this.store?.lost().catch(() => [])) ?? [];
        const button = element("recover");
        button.hidden = lost.length === 0;
        button.textContent = `Recover unsaved work (${lost.length})…`;
        return lost.length;
    }

    private async showLost(): Promise<void> {
        const lost = (await this.store?.lost().catch(() => [])) ?? [];
        const dialog = element<HTMLDialogElement>("recover-dialog");
        element("lost").replaceChildren(...lost.map((each) => {
            const row = make("li");
            const recover = make("button", { type: "button", "aria-label": `Recover ${each.name}` }, "Recover");
            const discard = make("button", { type: "button", "aria-label": `Discard ${each.name}` }, "Discard");
            recover.addEventListener("click", () => {
                dialog.close();
                void this.recover(each);
            });
            discard.addEventListener("click", async () => {
                await this.store?.remove(each.id).catch(() => {});
                row.remove();
                if ((await this.offer()) === 0) dialog.close();
            });
            row.append(make("span", {}, `${each.name}, ${new Date(each.time).toLocaleString()}, `
                + `${each.bytes.length.toLocaleString("en")} bytes`), recover, discard);
            return row;
        }));
        if (lost.length > 0 && !dialog.open) dialog.showModal();
    }

    private async recover(lost: Lost): Promise<void> {
        const current = this.unsaved();
        if (!this.restore(lost)) return;
        if (current) this.store?.putAside(current);
        await this.keepNow();
        if (document.body.dataset["kept"] === "yes") await this.store?.remove(lost.id).catch(() => {});
        await this.offer();
    }

    example(name: string): void {
        const example = examples[name]!;
        this.read(example.file, new TextEncoder().encode(example.text), "replace");
    }

    choose(adding: boolean): void {
        this.adding = adding;
        this.picker.value = "";
        this.picker.click();
    }

    /** Several files make one document: the first good one opens, the others are added. */
    private async take(files: File[], adding: boolean): Promise<void> {
        const all: Opened[] = [];
        for (const file of files) {
            let bytes;
            try {
                bytes = new Uint8Array(await file.arrayBuffer());
            } catch {
                all.push({ name: file.name, text: `${file.name} could not be read.`, isGood: false, report: [] });
                continue;
            }
            all.push(this.open(file.name, bytes, adding || all.some((each) => each.isGood) ? "add" : "replace"));
        }
        this.tell(all);
    }

    /** True where the bytes are curves; otherwise the document stays as it is, and a message says what is wrong. */
    read(name: string, bytes: Uint8Array, mode: "replace" | "add"): boolean {
        const opened = this.open(name, bytes, mode);
        this.tell([opened]);
        return opened.isGood;
    }

    private open(name: string, bytes: Uint8Array, mode: "replace" | "add" | "restore"): Opened {
        const { app } = this;
        const before = this.place();
        const unsaved = mode === "replace" ? this.unsaved() : undefined;
        let found;
        try {
            app.bridge.setInput(bytes);
            found = app.bridge.call<{ format: string; curves: number; report: string[]; frameRate: string }>("open", { name, mode });
        } catch (error) {
            if (!(error instanceof Refusal)) throw error;
            return { name, text: error.message, isGood: false, report: [] };
        }
        if (mode === "replace") {
            this.past.push({ ...before, aside: this.putAside(unsaved) });
            this.future = [];
        } else if (mode === "restore") {
            this.past.length = this.future.length = 0;
        }
        if (mode !== "add") {
            this.name = name;
            this.saved = mode === "replace" ? this.bytes() : null;
        }
        const rate = parse(found.frameRate);
        if (mode !== "add" && rate !== null && rate > 0 && rate <= 1000) this.setRate(rate);
        this.showName();
        app.drawNow();
        app.frameBox("all");
        return {
            name, text: `${name}: ${found.curves} curve${found.curves === 1 ? "" : "s"} (${found.format}).`, isGood: true,
            report: found.report,
        };
    }

    private setRate(rate: number): void {
        this.app.settings.fps = rate;
        element<HTMLInputElement>("fps").value = format(rate);
    }

    private showName(clean = true): void {
        element("document-name").textContent = this.name;
        document.title = `${clean ? "" : "• "}${this.name} – Curve editor`;
    }

    /** Errors first; what did not come over in short, the whole of it by a button. */
    private tell(all: Opened[]): void {
        const bad = all.filter((each) => !each.isGood).map((each) => each.text);
        const good = all.filter((each) => each.isGood);
        this.report = [...bad, ...good.flatMap(({ name, report }) =>
            report.map((loss) => (all.length > 1 ? `${name}: ${loss}` : loss)))];
        const lines = [...bad, ...good.map(({ text, report }) => text + (report.length === 0 ? ""
            : ` Not all came over: ${report.slice(0, 2).join("; ")}${report.length > 2 ? ` and ${report.length - 2} more.` : "."}`))];
        const button = element("opening");
        button.hidden = good.length === 0 ? bad.length < 2 : this.report.length === 0;
        button.textContent = bad.length > 0 ? `Not opened: ${bad.length}…` : `What did not come over (${this.report.length})…`;
        this.app.tell(lines.join("\n"), bad.length > 0,
            button.hidden ? undefined : { text: "Show all…", run: () => this.showReport() });
    }

    private showReport(): void {
        const most = 5000;
        const lines = this.report.slice(0, most);
        if (this.report.length > most) lines.push(`and ${this.report.length - most} more`);
        element("report").replaceChildren(...lines.map((line) => make("li", {}, line)));
        element<HTMLDialogElement>("opening-dialog").showModal();
    }

    private place(): Place {
        const { app } = this;
        return { name: this.name, fps: app.settings.fps, view: { ...app.view }, saved: this.saved, aside: undefined };
    }

    /** Undoes or does again; the name, the rate and the view go with the opening of a file. */
    step(command: "undo" | "redo"): void {
        const { app } = this;
        const before = this.place();
        const isOpening = app.current[command] === "Open file";
        const unsaved = isOpening && command === "redo" ? this.unsaved() : undefined;
        if (!app.run<{ done?: boolean }>(command)?.done || !isOpening) return;
        const [from, to] = command === "undo" ? [this.past, this.future] : [this.future, this.past];
        const place = from.pop();
        if (!place) return;
        if (place.aside !== undefined) void this.store?.remove(place.aside).then(() => this.offer()).catch(() => {});
        to.push({ ...before, aside: this.putAside(unsaved) });
        this.name = place.name;
        this.setRate(place.fps);
        const { left, right, bottom, top } = place.view;
        Object.assign(app.view, { left, right, bottom, top });
        this.saved = place.saved;
        this.showName();
    }

    save(): void {
        element<HTMLInputElement>("save-name").value = this.name;
        this.rename();
        this.check();
        this.dialog.showModal();
    }

    /** The extension follows the format; the rest of the name is the user's. */
    private rename(): void {
        const field = element<HTMLInputElement>("save-name");
        const known = [...this.formats.read, ...this.formats.write].map((each) => each.extension.toLowerCase());
        const dot = field.value.lastIndexOf(".");
        const hasKnown = dot > 0 && known.includes(field.value.slice(dot + 1).toLowerCase());
        field.value = `${(hasKnown ? field.value.slice(0, dot) : field.value).trim() || "curves"}.${this.format.extension}`;
    }

    private saveDialog(): void {
        const list = element<HTMLSelectElement>("save-format");
        for (const each of this.formats.write)
            list.append(new Option(`${each.title} (.${each.extension})`, each.name));
        list.value = ownFormat;
        list.addEventListener("change", () => this.rename());
        for (const id of ["save-format", "save-rate", "save-tolerance"])
            element(id).addEventListener("change", () => this.check());
        element("save-form").addEventListener("submit", (event) => {
            event.preventDefault();
            this.download();
        });
        element("save-cancel").addEventListener("click", () => this.dialog.close());
    }

    private get format(): Format {
        const name = element<HTMLSelectElement>("save-format").value;
        return this.formats.write.find((each) => each.name === name)!;
    }

    /** What is asked of the writer; empty fields leave it to the document. Null, with a message, where one is not a number. */
    private options(): { format: string; frameRate: number; tolerance: number } | null {
        const isOwn = ownFormats.includes(this.format.name);
        const wrong: string[] = [];
        const number = (id: string) => {
            const field = element<HTMLInputElement>(id);
            const text = field.value.trim();
            const value = isOwn || text === "" ? 0 : parse(text);
            const isWrong = value === null || value < 0;
            field.setAttribute("aria-invalid", String(isWrong));
            if (isWrong) wrong.push(`${field.labels![0]!.textContent}: "${text}" is not a number above 0.`);
            return value ?? 0;
        };
        const [frameRate, tolerance] = [number("save-rate"), number("save-tolerance") / 100];
        if (wrong.length > 0) element("save-size").textContent = wrong.join(" ");
        return wrong.length > 0 ? null : { format: this.format.name, frameRate, tolerance };
    }

    /** What the chosen format loses, before anything is saved. */
    private check(): void {
        const list = element("losses");
        const button = element<HTMLButtonElement>("save-now");
        const text = element("save-size");
        list.replaceChildren();
        element("save-options").hidden = ownFormats.includes(this.format.name);
        const options = this.options();
        button.disabled = options === null;
        if (!options) return;
        try {
            const { size, report } = this.app.bridge.call<{ size: number; report: string[] }>("save", options);
            text.textContent = `${size.toLocaleString("en")} bytes. `
                + (report.length === 0 ? "Nothing is lost." : "What this format cannot say:");
            list.append(...report.slice(0, 500).map((loss) => make("li", {}, loss)));
            if (report.length > 500) list.append(make("li", {}, `and ${report.length - 500} more`));
        } catch (error) {
            text.textContent = error instanceof Error ? error.message : String(error);
            button.disabled = true;
        }
    }

    private download(): void {
        const { app } = this;
        const options = this.options();
        const done = options && app.run<{ report: string[] }>("save", options);
        if (!done) return;
        const name = element<HTMLInputElement>("save-name").value.trim();
        const link = document.createElement("a");
        link.href = URL.createObjectURL(new Blob([app.bridge.output()]));
        link.download = name.includes(".") ? name : `${name || "curves"}.${this.format.extension}`;
        link.click();
        window.setTimeout(() => URL.revokeObjectURL(link.href), 60000);
        this.dialog.close();
        if (ownFormats.includes(this.format.name) && done.report.length === 0) this.setSaved();
        app.tell(`Saved as ${link.download}.`);
    }

    /** Keeps the document for the next visit, soon after it changed. */
    private keep(): void {
        document.body.dataset["kept"] = "no";
        window.clearTimeout(this.timer);
        this.timer = window.setTimeout(() => void this.keepNow(), 400);
    }

    private async keepNow(): Promise<void> {
        window.clearTimeout(this.timer);
        this.timer = 0;
        const { bridge } = this.app;
        const kept = this.kept();
        this.showName(kept.clean);
        // An empty document could not be read again; what was there before is worth more.
        if (!this.store || this.app.current.curves.length === 0) return;
        try {
            const revision = bridge.revision;
            await this.store.write(kept);
            if (revision === bridge.revision) document.body.dataset["kept"] = "yes";
        } catch {
            this.store = null;
            this.app.tell("The browser could not keep a copy of the document: save it before you leave.", true);
        }
    }

    private bytes(): Uint8Array {
        this.app.bridge.call("save", { format: "binary" }); // the fastest, without loss
        return this.app.bridge.output();
    }

    private setSaved(): void {
        this.saved = this.bytes();
        this.app.run("saved");
    }

    private kept(): Kept {
        const bytes = this.bytes();
        const { saved } = this;
        const clean = saved !== null && saved.length === bytes.length && saved.every((byte, i) => byte === bytes[i]);
        return { name: this.name, bytes, time: Date.now(), clean };
    }

    /** The document, where it would be lost if another took its place. */
    private unsaved(): Kept | undefined {
        const { clean, curves } = this.app.current;
        const kept = clean || curves.length === 0 ? undefined : this.kept();
        return kept?.clean ? undefined : kept;
    }

    private putAside(unsaved: Kept | undefined): string | undefined {
        const id = unsaved && this.store?.putAside(unsaved);
        if (id !== undefined) void this.offer();
        return id;
    }

    private clipboard(): void {
        const { app } = this;
        const isText = () => {
            const focus = document.activeElement;
            return (focus instanceof HTMLInputElement && /text|search/.test(focus.type)) || document.querySelector("dialog[open]") !== null;
        };
        for (const kind of ["copy", "cut"] as const) {
            document.addEventListener(kind, (event) => {
                if (isText()) return;
                event.preventDefault();
                const clip = app.run<{ text: string; keys: number }>(kind);
                if (!clip) return;
                event.clipboardData?.setData("text/plain", clip.text);
                app.tell(`${clip.keys} key${clip.keys === 1 ? "" : "s"} ${kind === "cut" ? "cut" : "copied"}.`);
            });
        }
        document.addEventListener("paste", (event) => {
            if (isText() || app.ignoresPaste) return;
            event.preventDefault();
            const files = [...(event.clipboardData?.files ?? [])];
            if (files.length > 0) void this.take(files, false);
            else this.paste(event.clipboardData?.getData("text/plain") ?? "");
        });
    }

    /** Copied keys, which the bridge marks by a comment, go to the cursor; any document that is pasted is opened. */
    paste(text: string): void {
        const { app } = this;
        if (text.trim() === "") {
            app.tell("There is nothing to paste.", true);
        } else if (/^\s*# copied keys/i.test(text) && app.state.curves.length > 0) {
            const mode = element<HTMLSelectElement>("paste-mode").value;
            const pasted = app.run<{ keys: number; unmatched: string[] }>("paste", { text, mode, frame: app.frame });
            if (pasted) app.tell(`${pasted.keys} key${pasted.keys === 1 ? "" : "s"} pasted at frame ${app.frame}.`
                + (pasted.unmatched.length > 0 ? ` No curve here is called ${pasted.unmatched.join(", ")}.` : ""));
        } else {
            this.read("pasted text", new TextEncoder().encode(text), "replace");
        }
    }
}
