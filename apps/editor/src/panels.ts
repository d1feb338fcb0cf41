// The panels beside the curves: list, properties, table of keys, tools, playback.

import { type App, element, format, shorten } from "./app";
import type { Examined, Properties, Rows, Tangents } from "./bridge";
import { gutter, type Picture } from "./draw";

const typeNames = ["Fixed", "Flat", "Linear", "Smooth", "Smooth, continued", "Clamped", "Plateau"];
const typeCommands = ["fixed", "flat", "linear", "smooth", "continued", "clamped", "plateau"];

export function make<K extends keyof HTMLElementTagNameMap>(tag: K, attributes: Record<string, string> = {},
    text = ""): HTMLElementTagNameMap[K] {
    const made = document.createElement(tag);
    for (const [name, value] of Object.entries(attributes)) made.setAttribute(name, value);
    if (text) made.textContent = text;
    return made;
}

/** A number as people type it, with a comma where it can only be a decimal one; null for what is none. */
export function parse(text: string): number | null {
    const plain = text.trim();
    const isGrouped = /^[-+]?[1-9]\d{0,2},\d{3}$/.test(plain);
    const number = /^[-+]?(\d+[.,]?\d*|[.,]\d+)(e[-+]?\d+)?$/i.test(plain) ? Number(plain.replace(",", ".")) : NaN;
    return Number.isFinite(number) && !isGrouped ? number : null;
}

function nameOf(field: HTMLInputElement): string {
    const titles = field.getAttribute("aria-labelledby")?.split(" ").map((id) => element(id).textContent);
    return field.getAttribute("aria-label") ?? titles?.join(", ") ?? field.labels?.[0]?.textContent?.trim() ?? "";
}

function noNumber(name: string, text: string): string {
    const hint = text.includes(",") ? " Write 1000 for a thousand, 1.0 or 1,0 for one." : "";
    return `${name}: "${text.trim()}" is not a number.${hint}`;
}

/** The number in a field; a message names the field that has none. */
export function readNumber(app: App, field: HTMLInputElement): number | null {
    const number = parse(field.value);
    if (number === null) app.tell(noNumber(nameOf(field), field.value), true);
    return number;
}

/**
 * Makes rows of controls one stop for Tab, however many there are; the arrow keys walk from row to row. Call what it
 * returns when there are new rows.
 */
function rove(box: HTMLElement, rows: string): () => void {
    const controls = (part: Element) => [...part.querySelectorAll<HTMLElement>("button, input, select")];
    const known = new WeakSet<Element>();
    let reached: Element | null = null;
    const reach = (row: Element | null) => {
        if (reached && reached !== row) for (const control of controls(reached)) control.tabIndex = -1;
        if (row) for (const control of controls(row)) control.tabIndex = 0;
        reached = row;
    };
    box.addEventListener("focusin", (event) => reach((event.target as Element).closest(rows)));
    box.addEventListener("keydown", (event) => {
        const target = event.target as HTMLElement;
        const isNext = event.key === "ArrowDown" || (event.key === "Enter" && target.matches("input"));
        if (event.defaultPrevented || event.altKey || target.matches("select") || (!isNext && event.key !== "ArrowUp")) return;
        event.preventDefault();
        const row = target.closest(rows)!;
        const next = isNext ? row.nextElementSibling : row.previousElementSibling;
        const control = next && controls(next)[controls(row).indexOf(target)];
        control?.focus();
        if (control instanceof HTMLInputElement) control.select();
    });
    return () => {
        for (const row of box.querySelectorAll(rows)) {
            if (known.has(row)) continue;
            known.add(row);
            for (const control of controls(row)) control.tabIndex = -1;
        }
        const wanted = [":focus-within", ".active", ".selected", ":not([aria-hidden])"];
        reach(wanted.map((each) => box.querySelector(rows + each)).find((row) => row !== null) ?? null);
    };
}

/** The list of curves: shown or not, locked, colour, name, order. */
export class CurveList {
    private readonly list = element("curves");
    private readonly search = element<HTMLInputElement>("search");
    private shown = "";
    /** Of the curves in the list, by their numbers: what a row shows. */
    private rows = new Map<number, { text: string; row: HTMLLIElement }>();
    private readonly settle = rove(this.list, "li");

    constructor(private readonly app: App, private readonly picture: Picture) {
        this.search.addEventListener("input", () => this.show());
        element("add-curve").addEventListener("click", () => {
            app.run("addCurve", { name: `curve ${app.state.curves.length + 1}` });
        });
        element("remove-curve").addEventListener("click", () => this.remove(app.state.active));
        app.onChange(() => this.show());
        matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => this.show(true));
        this.show();
    }

    private show(always = false): void {
        const { curves, active } = this.app.state;
        const wanted = this.search.value.trim().toLowerCase();
        // Rebuilt only when it changed, so that the focus stays where it is during drags.
        const text = JSON.stringify([curves, active, wanted]);
        if ((text === this.shown && !always) || this.list.querySelector("input[type=text]")) return;
        this.shown = text;
        const focused = document.activeElement instanceof HTMLElement ? document.activeElement.id : "";
        const found = curves.map((curve, index) => [curve, index] as const)
            .filter(([curve]) => curve.name.toLowerCase().includes(wanted));
        const old = this.rows;
        this.rows = new Map(found.slice(0, 2000).map(([curve, index]) => {
            const text = JSON.stringify({ ...curve, low: 0, high: 0, isActive: index === active });
            const same = always ? undefined : old.get(index);
            return [index, same?.text === text ? same : { text, row: this.row(index) }];
        }));
        const rows = [...this.rows.values()].map(({ row }) => row);
        // Rows that are as they were stay in the page, which costs browsers much less than to take all anew.
        if (rows.length !== this.list.children.length) this.list.replaceChildren(...rows);
        else [...this.list.children].forEach((child, i) => child === rows[i] || child.replaceWith(rows[i]!));
        element<HTMLButtonElement>("remove-curve").disabled = active < 0;
        const more = found.length - rows.length;
        element("no-curves").hidden = rows.length > 0 && more === 0;
        element("no-curves").textContent = curves.length === 0
            ? "No curves yet. Open a file, drop one here, or add a curve."
            : more === 0 ? "No curve has this in its name."
            : `${more.toLocaleString("en")} more curve${more === 1 ? " is" : "s are"} not listed: search for a part of the name.`;
        if (focused) document.getElementById(focused)?.focus();
        this.settle();
    }

    private row(index: number): HTMLLIElement {
        const { app } = this;
        const curve = app.state.curves[index]!;
        const row = make("li", { draggable: "true", "data-curve": String(index) });
        if (index === app.state.active) row.classList.add("active");
        if (curve.selected) row.classList.add("selected");
        const toggle = (field: "visible" | "velocity" | "locked", label: string, on: string, off: string) => {
            const button = make("button", {
                type: "button", class: "icon", id: `${field}-${index}`, "aria-pressed": String(curve[field]),
                "aria-label": `${label} ${curve.name}`, title: label,
            });
            button.innerHTML = `<svg viewBox="0 0 16 16" aria-hidden="true"><path d="${curve[field] ? on : off}"/></svg>`;
            button.addEventListener("click", () => app.run("setCurve", { curve: index, [field]: !curve[field] }));
            return button;
        };
        const eye = "M1.5 8C4 4 12 4 14.5 8C12 12 4 12 1.5 8ZM8 6a2 2 0 1 0 .01 0Z";
        const lock = "M3.5 7.5H12.5V13.5H3.5ZM5.5 7.5V5a2.5 2.5 0 0 1 5 0V7.5";
        const open = "M3.5 7.5H12.5V13.5H3.5ZM5.5 7.5V4a2.5 2.5 0 0 1 5 -1";
        const slope = "M2 14L14 4M2 10C6 2 10 14 14 9";
        const colour = make("span", { class: "swatch" });
        colour.style.background = this.picture.shade(curve.colour);
        const name = make("button", {
            type: "button", class: "name", id: `curve-${index}`, title: `${curve.keys} keys. Double-click or F2 to rename.`,
            ...(index === app.state.active ? { "aria-current": "true" } : {}),
        }, curve.name || "(no name)");
        const value = make("span", { class: "value", "data-value": String(index) });
        name.addEventListener("click", (event) => {
            app.run("selectCurve", { curve: index, mode: event.shiftKey || event.ctrlKey ? "toggle" : "set" });
        });
        name.addEventListener("dblclick", () => this.rename(row, index));
        name.addEventListener("keydown", (event) => {
            if (event.key === "F2") this.rename(row, index);
            else if (event.key === "Delete") this.remove(index);
            else if (event.altKey && event.key === "ArrowUp" && index > 0) this.reorder(index, index - 1);
            else if (event.altKey && event.key === "ArrowDown") this.reorder(index, index + 1);
            else return;
            event.preventDefault();
            event.stopPropagation();
        });
        row.addEventListener("dragstart", (event) => {
            event.dataTransfer?.setData("application/x-curve", String(index));
        });
        row.addEventListener("dragover", (event) => {
            if (!event.dataTransfer?.types.includes("application/x-curve")) return;
            event.preventDefault();
            row.classList.add("target");
        });
        row.addEventListener("dragleave", () => row.classList.remove("target"));
        row.addEventListener("drop", (event) => {
            const from = event.dataTransfer?.getData("application/x-curve");
            if (!from) return;
            event.preventDefault();
            event.stopPropagation();
            row.classList.remove("target");
            this.reorder(Number(from), index);
        });
        const velocity = toggle("velocity", "Velocity of", slope, slope);
        velocity.classList.add("velocity");
        row.append(toggle("visible", "Show", eye, "M1.5 8C4 12 12 12 14.5 8"), colour, name, value, velocity,
            toggle("locked", "Lock", lock, open));
        return row;
    }

    private remove(index: number): void {
        const { app } = this;
        const name = app.state.curves[index]?.name;
        if (name === undefined || !app.run("removeCurve", { curve: index })) return;
        app.tell(`Deleted ${name || "the curve"}. Undo brings it back.`);
        app.drawNow();
        document.getElementById(`curve-${Math.min(index, app.state.curves.length - 1)}`)?.focus();
    }

    private reorder(from: number, to: number): void {
        const last = this.app.state.curves.length - 1;
        this.app.run("moveCurve", { curve: from, to: Math.min(to, last) });
        this.app.drawNow();
        document.getElementById(`curve-${Math.min(to, last)}`)?.focus();
    }

    private rename(row: HTMLElement, index: number): void {
        const old = this.app.state.curves[index]!.name;
        const field = make("input", { type: "text", "aria-label": "New name", value: old });
        row.querySelector(".name")!.replaceWith(field);
        field.select();
        let isOver = false;
        const finish = (name: string) => {
            if (isOver) return;
            isOver = true;
            field.remove();
            if (name !== old) this.app.run("setCurve", { curve: index, name });
            this.show(true);
            document.getElementById(`curve-${index}`)?.focus();
        };
        field.addEventListener("keydown", (event) => {
            event.stopPropagation();
            if (event.key === "Enter") finish(field.value);
            if (event.key === "Escape") finish(old);
        });
        field.addEventListener("blur", () => finish(field.value));
    }
}

/** What is wrong with a formula where this is left to read; the parser has one message for all that it cannot read. */
function reasonOf(message: string, rest: string): string {
    if (!message.includes("unknown error")) return message;
    if (rest.startsWith("\"")) return "The text in quotes has no end.";
    const number = Number(/^[\d.]+(e[-+]?\d+)?/i.exec(rest)?.[0] ?? 1);
    if (number === 0 || number === Infinity) return "The number is too large or too small.";
    const [character] = rest;
    if (character === undefined || /[\w(),+\-*/%]/.test(character)) return "The formula is too long, or nested too deeply.";
    return `"${character}" is not understood in a formula.${character === "^" ? " A power is written **." : ""}`;
}

/** What is selected, from the library's examiner: fields show mixed values as mixed, and can be typed into. */
export class PropertyPanel {
    private last: Properties | null = null;

    constructor(private readonly app: App) {
        const set = (id: string, send: (number: number, operator: string) => void) => {
            const field = element<HTMLInputElement>(id);
            const commit = () => {
                if (!field.dataset["typed"]) return;
                delete field.dataset["typed"];
                const operator = /^\s*([-+*/])=/.exec(field.value);
                const number = parse(operator ? field.value.slice(operator[0].length) : field.value);
                if (number === null) app.tell(noNumber(nameOf(field), field.value), true);
                else if (number === 0 && operator?.[1] === "/") app.tell(`${nameOf(field)}: nothing can be divided by 0.`, true);
                else send(number, operator?.[1] ?? "");
                this.last = null;
                this.show();
            };
            field.addEventListener("input", () => (field.dataset["typed"] = "yes"));
            field.addEventListener("change", commit);
            field.addEventListener("keydown", (event) => {
                if (event.key === "Enter") commit();
                if (event.key === "Escape") {
                    delete field.dataset["typed"];
                    field.blur();
                    this.last = null;
                    this.show();
                }
            });
        };
        const key = (field: "x" | "y") => (value: number, operator: string) => {
            if (operator === "*" || operator === "/") {
                const factor = operator === "*" ? value : 1 / value;
                const others = app.settings.others;
                app.run("scale", { x: 1, y: 1, [field]: factor, pivotX: 0, pivotY: 0, others });
            } else {
                const relative = operator !== "";
                const { others } = app.settings;
                app.run("setProperty", { field, value: operator === "-" ? -value : value, relative, others });
            }
        };
        set("key-x", key("x"));
        set("key-y", key("y"));
        for (const side of ["in", "out"]) {
            const which = () => (this.last?.tangents ? {} : { side });
            set(`${side}-angle`, (value) => app.run("setProperty", { field: "angle", value: (value * Math.PI) / 180, ...which() }));
            set(`${side}-weight`, (value) => app.run("setProperty", { field: "weight", value, ...which() }));
            const type = element<HTMLSelectElement>(`${side}-type`);
            type.append(make("option", { value: "", hidden: "" }));
            typeNames.forEach((name, index) => type.append(make("option", { value: String(index) }, name)));
            type.addEventListener("change", () => {
                if (!app.run("tangentType", { type: typeCommands[Number(type.value)]!, side })) this.show();
            });
        }
        for (const flag of ["breakdown", "unified", "locked"]) {
            element(`key-${flag}`).addEventListener("click", () => this.toggle(flag));
        }
        for (const flag of ["weighted", "weightLocked"]) {
            element(`handle-${flag}`).addEventListener("click", () => this.toggle(flag));
        }
        app.onChange(() => {
            this.last = null;
            this.leaveFormula();
            this.show();
        });
        this.show();
        this.formula();
    }

    /** Switches a flag of the selected parts: on, where not all have it. */
    toggle(flag: string): void {
        const properties = this.app.bridge.call<Properties>("properties");
        if (flag === "weighted" || flag === "weightLocked") {
            const sides = properties.tangents ? [properties.tangents] : [properties.in, properties.out];
            const isOn = sides.every((side) => side?.[flag]?.value === true);
            this.app.run("tangentFlag", { flag, on: !isOn });
        } else {
            const isOn = properties.keys[flag as "breakdown" | "unified" | "locked"]?.value === true;
            this.app.run("keyFlag", { flag, on: !isOn });
        }
    }

    private show(): void {
        const properties = (this.last ??= this.app.bridge.call<Properties>("properties"));
        const { keys } = properties;
        const fill = (id: string, examined: Examined<number> | undefined, scale = 1) => {
            const field = element<HTMLInputElement>(id);
            if (field.dataset["typed"]) return;
            field.disabled = !examined;
            field.placeholder = examined?.mixed ? "mixed" : "";
            field.value = examined?.value === undefined ? "" : format(examined.value * scale);
        };
        const press = (id: string, ...examined: (Examined<boolean> | undefined)[]) => {
            const isNone = examined.every((each) => !each);
            const isOn = examined.every((each) => each?.value === true);
            const isOff = examined.every((each) => !each || each.value === false);
            const button = element<HTMLButtonElement>(id);
            button.disabled = isNone;
            button.setAttribute("aria-pressed", isNone || isOff ? "false" : isOn ? "true" : "mixed");
        };
        fill("key-x", keys.x);
        fill("key-y", keys.y);
        press("key-breakdown", keys.breakdown);
        press("key-unified", keys.unified);
        press("key-locked", keys.locked);
        const sides: [string, Tangents | undefined][] = properties.tangents
            ? [["in", undefined], ["out", properties.tangents]] : [["in", properties.in], ["out", properties.out]];
        element("out-title").textContent = properties.tangents ? "Selected handles" : "Out handle";
        element("in-row").hidden = properties.tangents !== undefined;
        for (const [side, tangents] of sides) {
            const type = element<HTMLSelectElement>(`${side}-type`);
            type.disabled = !tangents?.type;
            type.value = tangents?.type?.value === undefined ? "" : String(tangents.type.value);
            type.options[0]!.textContent = tangents?.type?.mixed ? "mixed" : "";
            fill(`${side}-angle`, tangents?.angle, 180 / Math.PI);
            fill(`${side}-weight`, tangents?.weight);
        }
        const all = properties.tangents ? [properties.tangents] : [properties.in, properties.out];
        press("handle-weighted", ...all.map((each) => each?.weighted));
        press("handle-weightLocked", ...all.map((each) => each?.weightLocked));
        const { state } = this.app;
        const selection = element("selection");
        const text = state.selectedKeys + state.selectedHandles + state.selectedSegments === 0
            ? "Nothing is selected."
            : [[state.selectedKeys, "key"], [state.selectedHandles, "handle"], [state.selectedSegments, "segment"]]
                .filter(([count]) => count !== 0)
                .map(([count, what]) => `${count} ${what}${count === 1 ? "" : "s"}`).join(", ") + " selected";
        if (selection.textContent !== text) selection.textContent = text; // it is read out
        this.showFormula();
    }

    /** A formula that could not be taken, and was left standing, does not wait for another key. */
    private leaveFormula(): void {
        const field = element<HTMLInputElement>("formula");
        if (!field.dataset["typed"] || field === document.activeElement) return;
        delete field.dataset["typed"];
        this.app.tell(`"${field.value}" is not a valid formula, and was left out.`, true);
    }

    private showFormula(): void {
        const field = element<HTMLInputElement>("formula");
        if (field.dataset["typed"] || !this.last) return;
        const where = element<HTMLSelectElement>("formula-where").value;
        const examined = where === "before" ? this.last.before : where === "after" ? this.last.after : this.last.expression;
        field.disabled = !examined;
        field.placeholder = examined?.mixed ? "mixed" : examined ? "" : "select a key or a segment";
        field.value = examined?.value ?? "";
        this.check();
    }

    /** The parser's message, with a mark under the character that it is about. */
    private check(): boolean {
        const field = element<HTMLInputElement>("formula");
        const box = element("formula-error");
        const found = field.value === "" ? {}
            : this.app.bridge.call<{ message?: string; position?: number }>("checkFormula", { text: field.value });
        box.hidden = found.message === undefined;
        field.setAttribute("aria-invalid", String(!box.hidden));
        if (found.message === undefined) return true;
        element("formula-mark").textContent = `${" ".repeat(found.position ?? 0)}^\n`;
        element("formula-reason").textContent = reasonOf(found.message, field.value.slice(found.position ?? 0));
        this.placeMark(field.value.slice(0, found.position ?? 0));
        return false;
    }

    /** Under the character after these, however far the field is scrolled; at its edge for one out of sight. */
    private placeMark(before: string): void {
        const field = element<HTMLInputElement>("formula");
        const mark = element("formula-mark");
        const pen = document.createElement("canvas").getContext("2d")!;
        pen.font = getComputedStyle(field).font;
        const room = field.clientWidth - 18 - pen.measureText("^").width;
        const place = Math.max(0, Math.min(room, pen.measureText(before).width - field.scrollLeft));
        mark.style.marginLeft = `${place - pen.measureText(" ".repeat(before.length)).width}px`;
    }

    private formula(): void {
        const field = element<HTMLInputElement>("formula");
        const where = element<HTMLSelectElement>("formula-where");
        where.addEventListener("change", () => {
            delete field.dataset["typed"];
            this.showFormula();
        });
        field.addEventListener("input", () => {
            field.dataset["typed"] = "yes";
            this.check();
        });
        const commit = () => {
            if (!field.dataset["typed"] || !this.check() || field.value === "") return;
            delete field.dataset["typed"];
            if (!this.app.run("interpolator", { where: where.value, text: field.value })) this.showFormula();
        };
        field.addEventListener("change", commit);
        field.addEventListener("keydown", (event) => {
            if (event.key === "Enter") commit();
            if (event.key !== "Escape") return;
            delete field.dataset["typed"];
            field.blur();
            this.showFormula();
        });
        field.addEventListener("scroll", () => {
            if (!element("formula-error").hidden) this.check();
        });
    }
}

function widthOfDigit(): number {
    const pen = document.createElement("canvas").getContext("2d")!;
    pen.font = getComputedStyle(document.body).font;
    return pen.measureText("0").width;
}

/** The active curve's keys; as many rows as fit are made. */
export class KeyTable {
    private readonly box = element("table-box");
    private readonly body = element("rows");
    private readonly rowHeight = 26;
    private readonly heads = this.box.querySelectorAll("th");
    private readonly digit = widthOfDigit();
    private readonly settle = rove(this.body, "tr");
    /** What the rows show: as long as that stays, they do, since making them costs as much as a picture. */
    private shown = "";

    constructor(private readonly app: App) {
        this.box.addEventListener("scroll", () => this.show());
        new ResizeObserver(() => this.show()).observe(this.box);
        app.onChange(() => this.show());
        this.show();
    }

    private show(): void {
        if (this.body.contains(document.activeElement) && this.body.querySelector("[data-typed]")) return;
        const { active, curves } = this.app.state;
        const title = element("table-title");
        title.textContent = active >= 0 ? `Keys of ${curves[active]!.name || "(no name)"}` : "Keys";
        if (active < 0) {
            this.body.replaceChildren();
            this.shown = "";
            return;
        }
        const room = (column: number) => Math.max(5, Math.floor((this.heads[column]!.clientWidth - 12) / this.digit));
        const [roomX, roomY] = [room(1), room(2)];
        const first = Math.max(0, Math.floor(this.box.scrollTop / this.rowHeight) - 2);
        const count = Math.ceil(this.box.clientHeight / this.rowHeight) + 4;
        const table = this.app.bridge.call<Rows>("rows", { curve: active, first, count });
        const shown = JSON.stringify([active, table, roomX, roomY]);
        if (shown === this.shown) return;
        this.shown = shown;
        const focus = this.body.contains(document.activeElement) ? document.activeElement!.id : "";
        const spacer = (rows: number) => {
            const row = make("tr", { "aria-hidden": "true" });
            row.style.height = `${Math.max(0, rows) * this.rowHeight}px`;
            return row;
        };
        const rows = table.rows.map((key, i) => {
            const number = table.first + i;
            const row = make("tr", { class: key.selected ? "selected" : "" });
            const label = make("button", { type: "button", class: "name", id: `row-${number}`, "aria-label": `Select key ${number + 1}` }, String(number + 1));
            label.addEventListener("click", (event) => {
                this.app.run("selectKey", { curve: active, key: number, mode: event.shiftKey || event.ctrlKey ? "add" : "set" });
            });
            const cells: HTMLElement[] = [label];
            const what = `of key ${number + 1}`;
            cells.push(this.number(active, number, "x", key.x, roomX, `Frame ${what}`),
                this.number(active, number, "y", key.y, roomY, `Value ${what}`),
                this.type(active, number, "in", key.in, `In tangent ${what}`),
                this.type(active, number, "out", key.out, `Out tangent ${what}`),
                this.field(active, number, "kind", key.kind, `Interpolator after key ${number + 1}`, (text) => text.trim() || null));
            for (const cell of cells) {
                const td = make("td");
                td.append(cell);
                row.append(td);
            }
            return row;
        });
        this.body.replaceChildren(spacer(table.first), ...rows, spacer(table.size - table.first - table.rows.length));
        const again = focus ? document.getElementById(focus) : null;
        again?.focus();
        if (again instanceof HTMLInputElement) again.select();
        this.settle();
    }

    /** As much of a number as the cell has room for; all of it while it has the focus. */
    private number(curve: number, key: number, name: string, value: number, room: number, label: string): HTMLElement {
        const [full, short] = [String(value), shorten(value, room)];
        const field = this.field(curve, key, name, full, label, (text) => {
            const number = parse(text);
            if (number === null) this.app.tell(noNumber(label, text), true);
            return number;
        });
        field.inputMode = "decimal";
        field.value = short;
        field.addEventListener("focus", () => (field.value = full));
        field.addEventListener("blur", () => {
            if (!field.dataset["typed"]) field.value = short;
        });
        return field;
    }

    private type(curve: number, key: number, name: string, value: number, label: string): HTMLElement {
        const list = make("select", { id: `cell-${key}-${name}`, "aria-label": label, title: typeNames[value] ?? "" });
        typeNames.forEach((each, index) => list.append(new Option(each, typeCommands[index], false, index === value)));
        list.addEventListener("change", () => {
            const done = this.app.run("setRow", { curve, key, field: name, value: list.value });
            if (!done) list.value = typeCommands[value] ?? "";
        });
        return list;
    }

    /** A cell to type into; `read` makes what is sent, or null where there is nothing to send. */
    private field(curve: number, key: number, name: string, text: string, label: string,
        read: (text: string) => string | number | null): HTMLInputElement {
        const field = make("input", { type: "text", id: `cell-${key}-${name}`, value: text, "aria-label": label, title: text });
        const commit = () => {
            if (!field.dataset["typed"]) return;
            const value = read(field.value);
            delete field.dataset["typed"];
            // The rows are made anew with the next picture, when the focus has gone where it was on its way to.
            field.value = text;
            const { others } = this.app.settings;
            if (value !== null) this.app.run("setRow", { curve, key, field: name, value, others });
        };
        field.addEventListener("input", () => (field.dataset["typed"] = "yes"));
        field.addEventListener("change", commit);
        field.addEventListener("keydown", (event) => {
            if (["ArrowDown", "ArrowUp", "Enter"].includes(event.key)) commit();
            if (event.key !== "Escape") return;
            delete field.dataset["typed"];
            field.value = text;
        });
        return field;
    }
}

/** Bake, smooth, fit, reduce: what would become of the curves is drawn before anything changes. */
export class Tools {
    private isShown = false;
    private isOwn = false; // the change that is heard is the preview's own

    constructor(private readonly app: App) {
        const form = element<HTMLFormElement>("tools");
        const tool = element<HTMLSelectElement>("tool");
        const fit = () => {
            const used: Record<string, string[]> = {
                bake: ["step"], smooth: ["step", "width", "filter"], fit: ["step", "tolerance", "weighted", "broken"],
                reduce: ["tolerance", "weighted", "broken"],
            };
            for (const name of ["step", "width", "filter", "tolerance", "weighted", "broken"])
                element(`tool-${name}-row`).hidden = !used[tool.value]!.includes(name);
        };
        fit();
        form.addEventListener("input", () => {
            fit();
            if (this.isShown) this.preview();
        });
        form.addEventListener("submit", (event) => {
            event.preventDefault();
            const values = this.values();
            const done = values && app.run<{ curves: number }>("apply", values);
            if (done) {
                this.end();
                app.tell(`Done: ${done.curves} curve${done.curves === 1 ? "" : "s"}.`);
            }
        });
        element("tool-preview").addEventListener("click", () => (this.isShown ? this.end() : this.preview()));
        app.onChange(() => {
            if (this.isShown && !this.isOwn) this.preview();
            this.isOwn = false;
        });
    }

    private values(): Record<string, string | number | boolean> | null {
        const number = (id: string) => {
            const field = element<HTMLInputElement>(id);
            const value = parse(field.checkVisibility() ? field.value : field.defaultValue);
            if (value === null) element("tool-result").textContent = noNumber(nameOf(field), field.value);
            return value;
        };
        const [step, width, tolerance] = [number("tool-step"), number("tool-width"), number("tool-tolerance")];
        if (step === null || width === null || tolerance === null) return null;
        return {
            tool: element<HTMLSelectElement>("tool").value, step, width: Math.round(width), tolerance,
            filter: Number(element<HTMLSelectElement>("tool-filter").value),
            weighted: element<HTMLInputElement>("tool-weighted").checked,
            broken: element<HTMLInputElement>("tool-broken").checked,
        };
    }

    private preview(): void {
        const values = this.values();
        if (!values) return;
        const found = this.app.run<{ keysBefore: number; keysAfter: number; difference: number; differenceAt: number }>("preview", values);
        this.isShown = found !== null;
        this.isOwn = true;
        element("tool-preview").setAttribute("aria-pressed", String(this.isShown));
        element("tool-result").textContent = found
            ? `${found.keysBefore} keys become ${found.keysAfter}. Largest change ${format(found.difference)}`
                + (found.difference > 0 ? `, at frame ${format(found.differenceAt)}.` : ".")
            : "";
    }

    end(): boolean {
        if (!this.isShown) return false;
        this.isShown = false;
        this.app.run("endPreview");
        element("tool-preview").setAttribute("aria-pressed", "false");
        element("tool-result").textContent = "";
        return true;
    }
}

/** The cursor in time, playing, and a ball at the height of the active curve's value. */
export class Playback {
    private readonly ball = element<HTMLCanvasElement>("ball");
    private began = 0;
    private from = 0;

    constructor(private readonly app: App, private readonly picture: Picture) {
        element("play").addEventListener("click", () => this.toggle());
        const frame = element<HTMLInputElement>("frame");
        frame.addEventListener("change", () => {
            const value = readNumber(app, frame);
            if (value !== null) app.frame = value;
            frame.value = format(app.frame);
            app.redraw();
        });
        const fps = element<HTMLInputElement>("fps");
        fps.addEventListener("change", () => {
            const value = readNumber(app, fps);
            if (value !== null && value > 0 && value <= 1000) app.settings.fps = value;
            else if (value !== null) app.tell("Frames a second: more than 0, and at most 1000.", true);
            fps.value = format(app.settings.fps);
        });
        app.onDraw(() => this.show());
    }

    toggle(): void {
        const { app } = this;
        app.playing = !app.playing;
        element("play").setAttribute("aria-pressed", String(app.playing));
        let shown = NaN;
        const step = () => {
            if (!app.playing) return;
            // From where somebody has put the cursor meanwhile, too.
            if (app.frame !== shown) [this.began, this.from] = [performance.now(), app.frame];
            const [first, last] = this.range();
            const frames = ((performance.now() - this.began) / 1000) * app.settings.fps;
            app.frame = first + ((((this.from - first + frames) % (last - first)) + (last - first)) % (last - first));
            shown = app.frame;
            app.redraw();
            requestAnimationFrame(step);
        };
        step();
    }

    /** What is played: the frames in view. */
    private range(): [number, number] {
        const { left, right } = this.app.view;
        return [left, right];
    }

    private show(): void {
        const { app } = this;
        const field = element<HTMLInputElement>("frame");
        if (document.activeElement !== field) field.value = format(Math.round(app.frame * 1000) / 1000);
        const values = app.bridge.values(app.frame);
        for (const cell of document.querySelectorAll<HTMLElement>("#curves [data-value]")) {
            const text = shorten(Number((values[Number(cell.dataset["value"])] ?? 0).toPrecision(5)), 7);
            if (cell.textContent !== text) cell.textContent = text;
        }
        const value = values[app.state.active] ?? 0;

        const ratio = devicePixelRatio || 1;
        const { clientWidth: width, clientHeight: height } = this.ball;
        if (width === 0) return;
        if (this.ball.width !== Math.round(width * ratio) || this.ball.height !== Math.round(height * ratio)) {
            this.ball.width = Math.round(width * ratio);
            this.ball.height = Math.round(height * ratio);
        }
        const pen = this.ball.getContext("2d")!;
        pen.setTransform(ratio, 0, 0, ratio, 0, 0);
        pen.clearRect(0, 0, width, height);
        const curve = app.state.curves[app.state.active];
        if (!curve) return;
        // As high as the value is in the plot.
        const { view } = app;
        const place = (value - curve.low) / (curve.high - curve.low);
        const plot = this.picture.canvas.getBoundingClientRect().top - this.ball.getBoundingClientRect().top + gutter.top;
        const wanted = plot + ((view.top - place) / (view.top - view.bottom)) * view.height;
        const y = Math.min(Math.min(height, plot + view.height) - 9, Math.max(9, wanted));
        pen.fillStyle = this.picture.shade(curve.colour);
        pen.beginPath();
        pen.arc(width / 2, y, 8, 0, 7);
        pen.fill();
    }
}
