// All shortcuts in one table, which the help shows as well.

import { type App, element } from "./app";

export interface Shortcut {
    /** As shown to people: "Ctrl+Z", "Shift+Left". Ctrl stands for the Command key, too. */
    keys: string[];
    what: string;
    /** Without it the shortcut is the browser's or the pointer's, and only shown in the help. */
    run?: (event: KeyboardEvent) => void;
}

const spellings: Record<string, string> = {
    ArrowLeft: "Left", ArrowRight: "Right", ArrowUp: "Up", ArrowDown: "Down", " ": "Space", Backspace: "Delete",
};

function spell(event: KeyboardEvent): string {
    const key = spellings[event.key] ?? (event.key.length === 1 ? event.key.toUpperCase() : event.key);
    const isSymbol = event.key.length === 1 && !/[a-z0-9 ]/i.test(event.key);
    // Many keyboards need AltGr for a symbol, and Windows tells that as Control and Alt.
    const isPlain = event.getModifierState("AltGraph");
    return (!isPlain && (event.ctrlKey || event.metaKey) ? "Ctrl+" : "") + (!isPlain && event.altKey ? "Alt+" : "")
        + (event.shiftKey && !isSymbol ? "Shift+" : "") + key;
}

/** Whether the keys belong to a field into which somebody types. */
function isTyping(target: EventTarget | null, keys: string): boolean {
    if (!(target instanceof HTMLElement)) return false;
    if (!target.matches("input:not([type=checkbox]):not([type=radio]), select, textarea")) return false;
    if (["Ctrl+S", "Ctrl+O"].includes(keys)) return false;
    // A field that was committed, and holds nothing new, has nothing of its own to undo.
    const isUndo = ["Ctrl+Z", "Ctrl+Shift+Z", "Ctrl+Y"].includes(keys);
    return !isUndo || target.dataset["typed"] !== undefined || target.matches("[type=search]");
}

/**
 * What was clicked gives the focus back, so that the next key goes to the curves and not to a button or a menu; who
 * came there by the keyboard stays.
 */
export function returnFocus(canvas: HTMLElement): void {
    let isPointer = false;
    document.addEventListener("pointerdown", () => (isPointer = true), true);
    document.addEventListener("keydown", () => (isPointer = false), true);
    const bar = document.querySelector("header")!;
    const leave = (event: Event) => {
        if (!isPointer || !(event.target instanceof Element)) return;
        const isMenu = event.target.closest("#interpolator, #help, #save") !== null;
        if (!isMenu && event.target.closest(event.type === "click" ? "button" : "select")) canvas.focus();
    };
    for (const type of ["click", "change"]) {
        bar.addEventListener(type, leave);
        document.getElementById("playback")!.addEventListener(type, leave);
    }
}

/** What was typed goes where it was meant for: before a press elsewhere, or a dropped file, selects something else. */
export function commitBeforePresses(): void {
    const commit = (event: Event) => {
        const field = document.activeElement;
        if (field instanceof HTMLInputElement && field.type === "text" && field !== event.target) field.blur();
    };
    for (const type of ["pointerdown", "drop"]) document.addEventListener(type, commit, true);
}

/** A list whose choice does something: the arrow keys only walk through it, and Enter chooses. */
export function listenToChoice(list: HTMLSelectElement, choose: (value: string) => void): void {
    let isWalking = false;
    const take = () => {
        const { value } = list;
        list.value = "";
        if (value) choose(value);
    };
    list.addEventListener("keydown", (event) => {
        isWalking = !event.altKey && !["Enter", " ", "F4"].includes(event.key);
        if (event.key !== "Enter") return;
        event.preventDefault();
        take();
    });
    list.addEventListener("change", () => {
        if (!isWalking) take();
    });
    list.addEventListener("pointerdown", () => (isWalking = false));
    list.addEventListener("blur", () => {
        isWalking = false;
        list.value = "";
    });
}

export function listen(app: App, groups: [string, Shortcut[]][]): void {
    const table = new Map<string, Shortcut>();
    const help = element("shortcuts");
    for (const [title, shortcuts] of groups) {
        const section = document.createElement("section");
        const heading = document.createElement("h3");
        heading.textContent = title;
        const list = document.createElement("dl");
        for (const shortcut of shortcuts) {
            if (shortcut.run) for (const keys of shortcut.keys) table.set(keys, shortcut);
            const keys = document.createElement("dt");
            for (const each of shortcut.keys) {
                const key = document.createElement("kbd");
                key.textContent = each;
                keys.append(key, " ");
            }
            const what = document.createElement("dd");
            what.textContent = shortcut.what;
            list.append(keys, what);
        }
        section.append(heading, list);
        help.append(section);
    }
    document.addEventListener("keydown", (event) => {
        if (event.defaultPrevented || document.querySelector("dialog[open]")) return;
        const keys = spell(event);
        const shortcut = table.get(keys);
        if (!shortcut) return;
        if (isTyping(event.target, keys)) {
            // Escape leaves the field, whose own listener has put back what was typed; the next one is for the curves.
            const isFilled = event.target instanceof HTMLInputElement && event.target.type === "search" && event.target.value;
            if (keys === "Escape" && !isFilled) element("plot").focus();
            return;
        }
        // A focused button is pressed by the space bar, as everywhere.
        if ((keys === "Space" || keys === "Enter") && event.target instanceof HTMLElement && event.target.matches("button, summary, input, a")) return;
        event.preventDefault();
        // Held down, arrows and the like go on; what switches would only flicker.
        if (event.repeat && /^(Shift\+)?(Space|[A-Z0-9?])$/.test(keys)) return;
        shortcut.run?.(event);
        app.redraw();
    });
}
