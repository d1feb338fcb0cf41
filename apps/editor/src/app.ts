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
        if (right - left < 1e-3) [left, right] = [left - 5, right + 5];
        const magnitude = Math.max(Math.abs(bottom), Math.abs(top));
        if (top - bottom < 1e-9 * magnitude + 1e-12) [bottom, top] = [bottom - 1, top + 1];
        const [x, y] = [(right - left) * 0.06, (top - bottom) * 0.12];
        Object.assign(this.view, { left: left - x, right: right + x, bottom: bottom - y, top: top + y });
        this.redraw();
    }

    /** Zooms about a point of the plot, in pixels; factors above 1 show more. */
    zoom(x: number, y: number, factorX: number, factorY: number): void {
        const view = this.view;
        const frame = view.left + (x / view.width) * (view.right - view.left);
        const value = view.top - (y / view.height) * (view.top - view.bottom);
        const spanX = (view.right - view.left) * factorX;
        const spanY = (view.top - view.bottom) * factorY;
        if (spanX > Math.max(1e-6, Math.abs(frame) * 1e-10) && spanX < 1e9) {
            view.left = frame - (x / view.width) * spanX;
            view.right = view.left + spanX;
        }
        if (spanY > Math.max(1e-12, Math.abs(value) * 1e-10) && spanY < 1e12) {
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

/** As few digits as tell a number to about seven places. */
export function format(value: number): string {
    if (!Number.isFinite(value)) return String(value);
    return String(Number(value.toPrecision(7)));
}
