// What all parts of the page share: the document, the view, the settings, and the one loop that draws.

import { type Arguments, type Bridge, type State, Refusal, type View } from "./bridge";

export interface Settings {
    snap: boolean;
    snapValues: boolean;
    /** 0: a tenth of what the axis is labelled with. */
    valueStep: number;
    velocity: boolean;
    others: "stop" | "cross" | "ripple";
    scaling: boolean;
    fps: number;
}

type Listener = () => void;

export class App {
    readonly view: View = { left: -5, right: 105, bottom: -1.2, top: 1.2, width: 100, height: 100 };
    readonly settings: Settings = { snap: true, snapValues: false, valueStep: 0, velocity: false, others: "stop", scaling: false, fps: 24 };
    state: State;
    frame = 0;
    playing = false;
    /** The marquee, in pixels of the plot. */
    marquee: { x0: number; y0: number; x1: number; y1: number } | null = null;
    /** While a paste is none that was asked for. */
    ignoresPaste = false;
    private revision = -1;
    private isWaiting = false;
    private readonly changed: Listener[] = [];
    private readonly steps: Listener[] = [];
    private readonly drawn: Listener[] = [];

    constructor(readonly bridge: Bridge) {
        this.state = bridge.call<State>("state");
    }

    /** Called when the document or its selection changed. */
    onChange(listener: Listener): void {
        this.changed.push(listener);
    }

    /** Called before each picture, for what moves with it. */
    onStep(listener: Listener): void {
        this.steps.push(listener);
    }

    /** Called for each picture. */
    onDraw(listener: Listener): void {
        this.drawn.push(listener);
    }

    /** A command; a refusal is shown near the curves, and gives null. */
    run<T = object>(command: string, values: Arguments = {}): T | null {
        try {
            this.bridge.setView(this.view);
            const result = this.bridge.call<T>(command, values);
            this.redraw();
            return result;
        } catch (error) {
            if (!(error instanceof Refusal)) throw error;
            this.redraw();
            this.tell(error.message, true);
            return null;
        }
    }

    /** The state as of now; `state` is that of the last picture, and what was pressed since may have changed it. */
    get current(): State {
        return this.bridge.revision === this.revision ? this.state : this.bridge.call<State>("state");
    }

    redraw(): void {
        if (this.isWaiting) return;
        this.isWaiting = true;
        requestAnimationFrame(() => this.drawNow());
    }

    drawNow(): void {
        for (const listener of this.steps) listener();
        this.isWaiting = false;
        if (this.bridge.revision !== this.revision) {
            this.revision = this.bridge.revision;
            this.state = this.bridge.call<State>("state");
            for (const listener of this.changed) listener();
        }
        for (const listener of this.drawn) listener();
    }

    private timer = 0;

    /** A message above the curves; errors, and those with something to press, stay longer. */
    tell(message: string, isError = false, action?: { text: string; run: () => void }): void {
        const box = element("message");
        box.textContent = message;
        if (action) {
            const button = document.createElement("button");
            button.type = "button";
            button.textContent = action.text;
            button.addEventListener("click", () => {
                box.hidden = true;
                action.run();
            });
            box.append(" ", button);
        }
        box.classList.toggle("error", isError);
        box.hidden = message === "";
        window.clearTimeout(this.timer);
        if (message) this.timer = window.setTimeout(() => (box.hidden = true), isError || action ? 12000 : 5000);
    }

    /** Shows a box of frames and values with some room around it. */
    frameBox(what: "all" | "selected"): void {
        const box = this.run<{ left: number; right: number; bottom: number; top: number } | null>("frame", { what });
        if (!box) return;
        let { left, right, bottom, top } = box;
        const widen = (from: number, to: number, least: number, flat: number, part: number): [number, number] => {
            const room = to - from < least ? Math.max(flat, Math.max(Math.abs(from), Math.abs(to)) * 1e-6) : 0;
            const [low, high] = [from - room, to + room];
            const [wideLow, wideHigh] = [low - (high - low) * part, high + (high - low) * part];
            if (Number.isFinite(wideHigh - wideLow)) return [wideLow, wideHigh];
            // What spans more than doubles can hold is shown as far as that goes.
            const most = Number.MAX_VALUE / 2;
            return Number.isFinite(high - low) ? [low, high] : [Math.max(-most, low), Math.min(most, high)];
        };
        const magnitude = Math.max(Math.abs(bottom), Math.abs(top));
        [left, right] = widen(left, right, 1e-3, 5, 0.06);
        [bottom, top] = widen(bottom, top, 1e-9 * magnitude + 1e-12, 1, 0.12);
        Object.assign(this.view, { left, right, bottom, top });
        this.redraw();
    }

    /** Zooms about a point of the plot, in pixels; factors above 1 show more. */
    zoom(x: number, y: number, factorX: number, factorY: number): void {
        const view = this.view;
        const frame = view.left + (x / view.width) * (view.right - view.left);
        const value = view.top - (y / view.height) * (view.top - view.bottom);
        const spanX = (view.right - view.left) * factorX;
        const spanY = (view.top - view.bottom) * factorY;
        // Where a document led beyond these bounds, there is a way back.
        if ((spanX > Math.max(1e-6, Math.abs(frame) * 1e-10) || factorX > 1) && (spanX < 1e9 || factorX < 1)) {
            view.left = frame - (x / view.width) * spanX;
            view.right = view.left + spanX;
        }
        if ((spanY > Math.max(1e-12, Math.abs(value) * 1e-10) || factorY > 1) && (spanY < 1e12 || factorY < 1)) {
            view.top = value + (y / view.height) * spanY;
            view.bottom = view.top - spanY;
        }
        this.redraw();
    }

    pan(x: number, y: number): void {
        const view = this.view;
        const frames = (x / view.width) * (view.right - view.left);
        const values = (y / view.height) * (view.top - view.bottom);
        view.left -= frames;
        view.right -= frames;
        view.top += values;
        view.bottom += values;
        this.redraw();
    }

    /** A step of values for the keyboard and for snapping: a tenth of the finest label of the axis. */
    get fineStep(): number {
        return 10 ** Math.floor(Math.log10((this.view.top - this.view.bottom) / 10)) / 10;
    }

    /** To what the values of a curve are snapped, in its own unit; 0 where they are not. */
    snapStep(curve: number): number {
        const { settings, state } = this;
        if (!settings.snapValues) return 0;
        if (settings.valueStep > 0) return settings.valueStep;
        const own = state.separate ? state.curves[curve] : undefined;
        return own ? 10 ** Math.round(Math.log10(this.fineStep * (own.high - own.low))) : this.fineStep;
    }

    /** A key at a place of the plot, or without a height on the curve, which then keeps its shape where it can. */
    addKey(values: Arguments): void {
        const added = this.run<{ change: number }>("addKey", values);
        if (added && added.change > 1e-6 * (this.view.top - this.view.bottom))
            this.tell(`The curve could not keep its shape with a key here: it changes by ${format(added.change)}, or more far away.`);
    }

    toFrame(x: number): number {
        return this.view.left + (x / this.view.width) * (this.view.right - this.view.left);
    }
}

export function element<T extends HTMLElement = HTMLElement>(id: string): T {
    const found = document.getElementById(id);
    if (!found) throw new Error(`The page has no element ${id}.`);
    return found as T;
}

/**
 * A number in so many characters, if need be with an exponent; not a digit of its size is left out, and a whole
 * number that is shown for a broken one has an ellipsis.
 */
export function shorten(value: number, most: number): string {
    for (let digits = 7; digits > 0; --digits) {
        const plain = String(Number(value.toPrecision(digits))).replace("e+", "e");
        const isWhole = Math.abs(value) < 10 ** digits || value === Number(plain);
        const isCut = Number.isInteger(Number(plain)) && !Number.isInteger(value) && Math.abs(value) >= 1;
        const shown = isCut ? `${Math.trunc(value)}…` : plain;
        if (shown.length <= most && isWhole) return shown;
        const scientific = value.toExponential(digits - 1).replace(/\.?0*e\+?/, "e");
        if (scientific.length <= most) return scientific;
    }
    return value.toExponential(0).replace("e+", "e");
}

/** As few digits as tell a number to about seven places. */
export function format(value: number): string {
    if (!Number.isFinite(value)) return String(value);
    return String(Number(value.toPrecision(7)));
}
