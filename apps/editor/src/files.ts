// Opening, saving, the clipboard, and what is kept for a reload.

import { type App, element, format } from "./app";
import type { Format } from "./bridge";
import { listenToChoice } from "./keyboard";
import { parse } from "./panels";
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

/** The document of the last visit, in the browser's own storage. */
class Store {
    private async database(): Promise<IDBDatabase> {
        return new Promise((resolve, reject) => {
            const request = indexedDB.open("fcurve-editor", 1);
            request.onupgradeneeded = () => request.result.createObjectStore("documents");
            request.onsuccess = () => resolve(request.result);
            request.onerror = () => reject(request.error);
        });
    }

    private async run<T>(mode: IDBTransactionMode, act: (store: IDBObjectStore) => IDBRequest<T>): Promise<T> {
        const database = await this.database();
        try {
            return await new Promise((resolve, reject) => {
                const transaction = database.transaction("documents", mode);
                const request = act(transaction.objectStore("documents"));
                transaction.oncomplete = () => resolve(request.result);
                transaction.onabort = transaction.onerror = () => reject(transaction.error);
            });
        } finally {
            database.close();
        }
    }

    async read(): Promise<{ name: string; bytes: Uint8Array } | undefined> {
        return this.run("readonly", (store) => store.get("last"));
    }

    async write(name: string, bytes: Uint8Array): Promise<void> {
        await this.run("readwrite", (store) => store.put({ name, bytes }, "last"));
    }

    async clear(): Promise<void> {
        await this.run("readwrite", (store) => store.delete("last"));
    }
}

export class Files {
    private name = "untitled.fcrvx";
    private formats: { read: Format[]; write: Format[] };
    private readonly store = new Store();
    private readonly dialog = element<HTMLDialogElement>("save-dialog");
    private readonly picker = element<HTMLInputElement>("file");
    private adding = false;
    private isStorable = false;
    private timer = 0;

    constructor(private readonly app: App) {
        this.formats = app.bridge.call("formats");
        element("open").addEventListener("click", () => this.choose(false));
        element("add-file").addEventListener("click", () => this.choose(true));
        element("save").addEventListener("click", () => this.save());
        this.picker.addEventListener("change", () => void this.take([...(this.picker.files ?? [])]));
        document.addEventListener("dragover", (event) => {
            if (!event.dataTransfer?.types.includes("Files")) return;
            event.preventDefault();
            document.body.classList.add("dropping");
        });
        document.addEventListener("dragleave", (event) => {
            if (!event.relatedTarget) document.body.classList.remove("dropping");
        });
        document.addEventListener("drop", (event) => {
            document.body.classList.remove("dropping");
            const files = [...(event.dataTransfer?.files ?? [])];
            if (files.length === 0) return;
            event.preventDefault();
            this.adding = event.shiftKey;
            void this.take(files);
        });
        this.clipboard();
        this.saveDialog();
        const list = element<HTMLSelectElement>("example");
        for (const name of Object.keys(examples)) list.append(new Option(name, name));
        listenToChoice(list, (name) => this.example(name));
        app.onChange(() => this.keep());
        addEventListener("beforeunload", (event) => {
            if (!this.isStorable && !app.state.clean) event.preventDefault();
        });
    }

    /** What the page shows first: an example that the address asks for, else the document of the last visit. */
    async start(wanted: string | null): Promise<void> {
        let kept;
        try {
            kept = await this.store.read();
            this.isStorable = true;
        } catch {
            this.app.tell("This browser keeps nothing for this page: save before you leave.");
        }
        if (wanted !== null && examples[wanted]) {
            this.example(wanted);
        } else if (kept && this.read(kept.name, kept.bytes, "restore")) {
            this.app.tell("Your document of last time is back.");
        } else {
            this.example("ball");
        }
        this.app.drawNow();
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

    private async take(files: File[]): Promise<void> {
        for (const file of files) {
            let bytes;
            try {
                bytes = new Uint8Array(await file.arrayBuffer());
            } catch {
                this.app.tell(`${file.name} could not be read.`, true);
                continue;
            }
            // Several files make one document.
            this.read(file.name, bytes, this.adding || file !== files[0] ? "add" : "replace");
        }
        this.adding = false;
    }

    /** True where the bytes are curves; otherwise the document stays as it is, and a message says what is wrong. */
    read(name: string, bytes: Uint8Array, mode: "replace" | "add" | "restore"): boolean {
        const { app } = this;
        app.bridge.setInput(bytes);
        const found = app.run<{ format: string; curves: number; report: string[]; frameRate: string }>("open", { name, mode });
        if (!found) return false;
        const rate = parse(found.frameRate);
        if (mode !== "add" && rate !== null && rate > 0 && rate <= 1000) {
            app.settings.fps = rate;
            element<HTMLInputElement>("fps").value = format(rate);
        }
        if (mode !== "add") this.name = name;
        element("document-name").textContent = this.name;
        app.drawNow();
        app.frameBox("all");
        app.tell(`${name}: ${found.curves} curve${found.curves === 1 ? "" : "s"} (${found.format}).`
            + (found.report.length > 0 ? ` Not all came over: ${found.report.slice(0, 3).join("; ")}`
                + (found.report.length > 3 ? ` and ${found.report.length - 3} more.` : ".") : ""));
        return true;
    }

    save(): void {
        this.report();
        this.dialog.showModal();
    }

    private saveDialog(): void {
        const list = element<HTMLSelectElement>("save-format");
        for (const each of this.formats.write)
            list.append(new Option(`${each.title} (.${each.extension})`, each.name));
        list.value = ownFormat;
        for (const id of ["save-format", "save-rate", "save-tolerance"])
            element(id).addEventListener("change", () => this.report());
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

    /** What is asked of the writer; fields that hold no number leave it to the document. */
    private get options(): { format: string; frameRate: number; tolerance: number } {
        const number = (id: string) => {
            const field = element<HTMLInputElement>(id);
            const value = field.value.trim() === "" ? 0 : parse(field.value);
            field.setAttribute("aria-invalid", String(value === null || value < 0));
            return ownFormats.includes(this.format.name) ? 0 : Math.max(0, value ?? 0);
        };
        return { format: this.format.name, frameRate: number("save-rate"), tolerance: number("save-tolerance") / 100 };
    }

    /** What the chosen format loses, before anything is saved. */
    private report(): void {
        const list = element("losses");
        const button = element<HTMLButtonElement>("save-now");
        const text = element("save-size");
        list.replaceChildren();
        element("save-options").hidden = ownFormats.includes(this.format.name);
        try {
            const { size, report } = this.app.bridge.call<{ size: number; report: string[] }>("save", this.options);
            text.textContent = `${size.toLocaleString("en")} bytes. `
                + (report.length === 0 ? "Nothing is lost." : "What this format cannot say:");
            for (const loss of report.slice(0, 500)) {
                const item = document.createElement("li");
                item.textContent = loss;
                list.append(item);
            }
            button.disabled = false;
        } catch (error) {
            text.textContent = error instanceof Error ? error.message : String(error);
            button.disabled = true;
        }
        element<HTMLInputElement>("save-name").value = this.name.replace(/\.[^.]*$/, "") + "." + this.format.extension;
    }

    private download(): void {
        const { app } = this;
        const done = app.run<{ report: string[] }>("save", this.options);
        if (!done) return;
        const link = document.createElement("a");
        link.href = URL.createObjectURL(new Blob([app.bridge.output()]));
        link.download = element<HTMLInputElement>("save-name").value || "curves";
        link.click();
        window.setTimeout(() => URL.revokeObjectURL(link.href), 60000);
        this.dialog.close();
        if (ownFormats.includes(this.format.name) && done.report.length === 0) app.run("saved");
        app.tell(`Saved as ${link.download}.`);
    }

    /** Keeps the document for the next visit, soon after it changed. */
    private keep(): void {
        document.title = `${this.app.state.clean ? "" : "• "}${this.name} – Curve editor`;
        if (!this.isStorable) return;
        document.body.dataset["kept"] = "no";
        window.clearTimeout(this.timer);
        this.timer = window.setTimeout(async () => {
            try {
                const revision = this.app.bridge.revision;
                this.app.bridge.call("save", { format: "binary" }); // the fastest, without loss
                await this.store.write(this.name, this.app.bridge.output());
                if (revision === this.app.bridge.revision) document.body.dataset["kept"] = "yes";
            } catch {
                this.isStorable = false;
                this.app.tell("The browser could not keep a copy of the document: save it before you leave.", true);
            }
        }, 400);
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
            if (files.length > 0) void this.take(files);
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
