// The menu of interpolators, with a small picture of each.

import { type App, element } from "./app";

interface Kind {
    text: string;
    name: string;
    path: string;
    isEnd?: boolean;
}

// In a box of 36 by 20; the keys stand at (6, 15) and (30, 5).
export const kinds: Kind[] = [
    { text: "bezier()", name: "Bezier", path: "M6 15C16 15 20 5 30 5" },
    { text: "linear()", name: "Linear", path: "M6 15L30 5" },
    { text: "constant()", name: "Stepped", path: "M6 15H30V5" },
    { text: "constant_next()", name: "Stepped, next value", path: "M6 15V5H30" },
    { text: "spline()", name: "Spline", path: "M6 15C12 14 14 13 18 10S24 6 30 5" },
    { text: "ease()", name: "Ease in and out", path: "M6 15C18 15 18 5 30 5" },
    { text: "easein()", name: "Ease in", path: "M6 15C20 5 26 5 30 5" },
    { text: "easeout()", name: "Ease out", path: "M6 15C10 15 16 15 30 5" },
    { text: "match()", name: "Match neighbours", path: "M1 13L6 15C14 18 20 8 30 5L35 3" },
    { text: "matchin()", name: "Match the next", path: "M6 15C12 15 20 8 30 5L35 3" },
    { text: "matchout()", name: "Match the one before", path: "M1 13L6 15C14 18 24 5 30 5" },
    { text: "cycle()", name: "Cycle", path: "M2 15L12 5V15L22 5V15L32 5", isEnd: true },
    { text: "cycle_offset()", name: "Cycle with offset", path: "M2 18L12 13V15L22 9V11L34 3", isEnd: true },
    { text: "mirror()", name: "Mirror", path: "M2 15L10 5L18 15L26 5L34 15", isEnd: true },
];

export class InterpolatorMenu {
    private readonly box = element("interpolators");
    private opener: HTMLElement | null = null;

    constructor(private readonly app: App) {
        const list = element("kinds");
        for (const kind of kinds) {
            const button = document.createElement("button");
            button.type = "button";
            button.setAttribute("role", "menuitem");
            button.tabIndex = list.childElementCount === 0 ? 0 : -1; // one stop for Tab
            button.dataset["kind"] = kind.text;
            button.innerHTML = `<svg viewBox="0 0 36 20" aria-hidden="true"><path d="${kind.path}"/></svg>`;
            button.append(kind.name);
            button.addEventListener("click", () => this.choose(kind.text));
            list.append(button);
        }
        this.box.tabIndex = -1; // a press beside the buttons leaves the focus in the menu
        this.box.addEventListener("keydown", (event) => this.key(event));
        document.addEventListener("pointerdown", (event) => {
            if (!this.box.hidden && !this.box.contains(event.target as Node)) this.close();
        });
    }

    open(x: number, y: number): void {
        this.opener = document.activeElement as HTMLElement | null;
        const { selectedKeys, selectedSegments } = this.app.current;
        const hasSegments = selectedKeys + selectedSegments > 0;
        const where = this.box.querySelector<HTMLInputElement>(`input[value="${hasSegments ? "segments" : "after"}"]`);
        if (where) where.checked = true;
        this.box.hidden = false;
        const { offsetWidth: width, offsetHeight: height } = this.box;
        this.box.style.left = `${Math.max(4, Math.min(x, innerWidth - width - 4))}px`;
        this.box.style.top = `${Math.max(4, Math.min(y, innerHeight - height - 4))}px`;
        element("kinds").querySelector("button")?.focus();
    }

    close(): boolean {
        if (this.box.hidden) return false;
        this.box.hidden = true;
        this.opener?.focus();
        return true;
    }

    private choose(text: string): void {
        const where = this.box.querySelector<HTMLInputElement>("input:checked")?.value ?? "segments";
        this.close();
        this.app.run("interpolator", { where, text });
    }

    private key(event: KeyboardEvent): void {
        const buttons = [...element("kinds").querySelectorAll("button")];
        const index = buttons.indexOf(document.activeElement as HTMLButtonElement);
        const by = { ArrowDown: 2, ArrowUp: -2, ArrowRight: 1, ArrowLeft: -1 }[event.key];
        event.stopPropagation(); // no key is a shortcut in here
        if (event.key === "Escape") this.close();
        else if (by !== undefined && index >= 0) buttons[(index + by + buttons.length) % buttons.length]!.focus();
        else {
            // Tab goes between kinds and places; beyond them it goes on from where the menu was opened.
            if (event.key === "Tab" && event.shiftKey !== index >= 0) this.close();
            return;
        }
        event.preventDefault();
    }
}
