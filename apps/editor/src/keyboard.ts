// All shortcuts in one table, which the help shows as well.

import { type App, element } from "./app";

export interface Shortcut {
    /** As shown to people: "Ctrl+Z", "Shift+Left". Ctrl stands for the Command key, too. */
    keys: string[];
    what: string;
    run: (event: KeyboardEvent) => void;
}

const spellings: Record<string, string> = {
    ArrowLeft: "Left", ArrowRight: "Right", ArrowUp: "Up", ArrowDown: "Down", " ": "Space", Backspace: "Delete",
};

function spell(event: KeyboardEvent): string {
    const key = spellings[event.key] ?? (event.key.length === 1 ? event.key.toUpperCase() : event.key);
    const isSymbol = event.key.length === 1 && !/[a-z0-9 ]/i.test(event.key);
    return (event.ctrlKey || event.metaKey ? "Ctrl+" : "") + (event.altKey ? "Alt+" : "")
        + (event.shiftKey && !isSymbol ? "Shift+" : "") + key;
}

/** Whether the keys belong to a field into which somebody types. */
function isTyping(target: EventTarget | null): boolean {
    return target instanceof HTMLElement && target.matches("input:not([type=checkbox]):not([type=radio]), select, textarea");
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
            for (const keys of shortcut.keys) table.set(keys, shortcut);
            const keys = document.createElement("dt");
            keys.innerHTML = shortcut.keys.map((each) => `<kbd>${each}</kbd>`).join(" ");
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
        if (isTyping(event.target) && !["Escape", "Ctrl+S", "Ctrl+O"].includes(keys)) return;
        // A focused button is pressed by the space bar, as everywhere.
        if ((keys === "Space" || keys === "Enter") && event.target instanceof HTMLElement && event.target.matches("button, summary, input, a")) return;
        event.preventDefault();
        shortcut.run(event);
        app.redraw();
    });
}
