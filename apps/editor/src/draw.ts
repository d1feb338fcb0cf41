// The picture: grid, axes, curves, keys, handles, cursor. All points come from the library in pixels of the plot.

import { type App, element, format } from "./app";
import type { View } from "./bridge";
import { CurvePainter } from "./curves";

/** Around the plot; the left one grows with the labels of the values. */
export const gutter = { left: 58, bottom: 26, top: 8, right: 10 };
const leastGutter = gutter.left;
const font = "12px system-ui, sans-serif";

interface Ticks {
    marks: [number, string][];
    exponent: number;
}

export interface Theme {
    ground: string;
    grid: string;
    zero: string;
    text: string;
    handle: string;
    selected: string;
    preview: string;
    cursor: string;
    outside: string;
    isDark: boolean;
}

export class Picture {
    readonly canvas = element<HTMLCanvasElement>("plot");
    private readonly context = this.canvas.getContext("2d")!;
    private theme = this.readTheme();
    private readonly shades = new Map<string, string>();
    private readonly painters: CurvePainter[];
    /** Of the last picture: how long the library took, and the drawing. */
    readonly cost = { library: 0, canvas: 0 };

    constructor(private readonly app: App) {
        this.painters = [0, 1].map(() => new CurvePainter(app, (colour) => this.shade(colour)));
        new ResizeObserver(() => this.resize()).observe(this.canvas.parentElement!);
        matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => {
            this.theme = this.readTheme();
            this.shades.clear();
            app.redraw();
        });
        this.resize();
        app.onDraw(() => this.draw());
    }

    /** The height of the velocity panel; 0 without one. */
    get panel(): number {
        return this.app.settings.velocity ? Math.round(this.canvas.clientHeight * 0.28) : 0;
    }

    resize(): void {
        const { clientWidth, clientHeight } = this.canvas.parentElement!;
        const ratio = window.devicePixelRatio || 1;
        this.canvas.style.width = `${clientWidth}px`;
        this.canvas.style.height = `${clientHeight}px`;
        this.canvas.width = Math.max(1, Math.round(clientWidth * ratio));
        this.canvas.height = Math.max(1, Math.round(clientHeight * ratio));
        this.layout();
        this.app.redraw();
    }

    layout(): void {
        const { clientWidth, clientHeight } = this.canvas.parentElement!;
        this.app.view.width = Math.max(50, clientWidth - gutter.left - gutter.right);
        this.app.view.height = Math.max(50, clientHeight - gutter.top - gutter.bottom - this.panel);
    }

    private readTheme(): Theme {
        const style = getComputedStyle(document.documentElement);
        const colour = (name: string) => style.getPropertyValue(`--${name}`).trim();
        return {
            ground: colour("plot"), grid: colour("grid"), zero: colour("zero"), text: colour("faint"),
            handle: colour("handle"), selected: colour("selected"), preview: colour("preview"), cursor: colour("cursor"), outside: colour("outside"),
            isDark: matchMedia("(prefers-color-scheme: dark)").matches,
        };
    }

    /** The tool's colours are made for a light ground; on a dark one the dark ones are mixed with white. */
    shade(colour: string): string {
        if (!this.theme.isDark) return colour;
        let shade = this.shades.get(colour);
        if (shade === undefined) {
            const parts = [1, 3, 5].map((at) => parseInt(colour.slice(at, at + 2), 16));
            const light = (0.3 * parts[0]! + 0.59 * parts[1]! + 0.11 * parts[2]!) / 255;
            const mix = Math.max(0, 0.62 - light) * 1.1;
            shade = `rgb(${parts.map((part) => Math.round(part + (255 - part) * mix)).join(" ")})`;
            this.shades.set(colour, shade);
        }
        return shade;
    }

    private draw(): void {
        this.layout();
        const { app, context: pen } = this;
        const { view } = app;
        app.bridge.setView(view);
        const below = app.settings.velocity ? this.viewBelow(view) : null;
        const up = this.valueTicks(view, !app.state.separate);
        const upBelow = below && this.valueTicks(below, true);
        this.makeRoom([up, ...(upBelow ? [upBelow] : [])]);
        const across = this.frameTicks(view);
        const ratio = window.devicePixelRatio || 1;
        pen.setTransform(ratio, 0, 0, ratio, 0, 0);
        pen.fillStyle = this.theme.ground;
        pen.fillRect(0, 0, this.canvas.width, this.canvas.height);

        this.cost.library = 0;
        const began = performance.now();
        this.drawPlot(view, gutter.top, 0, across, up);
        if (below && upBelow) this.drawPlot({ ...below, width: view.width }, gutter.top + view.height + 14, 1, across, upBelow);
        this.drawFrames(view, across);
        this.cost.canvas = performance.now() - began - this.cost.library;
    }

    /** The velocity panel, in which whatever there is has room. */
    private viewBelow(view: View): View {
        const range = this.app.bridge.call<{ low: number; high: number }>("velocityRange");
        const most = Number.MAX_VALUE / 4;
        range.low = Math.max(-most, range.low);
        range.high = Math.min(most, range.high);
        const room = (range.high - range.low) * 0.1;
        return { ...view, bottom: range.low - room, top: range.high + room, height: this.panel - 14 };
    }

    private ticks(low: number, high: number, most: number): Ticks {
        // The library marks axes up to 1e300; doubles go on a little.
        const unit = Math.max(Math.abs(low), Math.abs(high)) > 1e299 ? 1e20 : 1;
        const { marks, exponent } = this.app.bridge.call<Ticks>("axis", { low: low / unit, high: high / unit, most });
        if (unit === 1) return { marks, exponent };
        return { marks: marks.map(([value, label]) => [value * unit, label]), exponent: exponent + 20 };
    }

    /** Of a shared scale, or in per cent of each curve's own range. */
    private valueTicks(view: View, isShared: boolean): Ticks {
        const unit = isShared ? 1 : 100;
        const most = Math.max(2, Math.floor(view.height / 44));
        const { marks, exponent } = this.ticks(view.bottom * unit, view.top * unit, most);
        return isShared ? { marks, exponent } : { marks: marks.map(([value, label]) => [value / unit, `${label} %`]), exponent };
    }

    /** As many as have room beside each other. */
    private frameTicks(view: View): Ticks {
        let most = Math.max(2, Math.floor(view.width / 80));
        for (;;) {
            const found = this.ticks(view.left, view.right, most);
            const widest = this.widest(found) + 14;
            const step = found.marks.length > 1 ? found.marks[1]![0] - found.marks[0]![0] : Infinity;
            if (most <= 2 || (step / (view.right - view.left)) * view.width >= widest) return found;
            most = Math.max(2, Math.min(most - 1, Math.floor(view.width / widest)));
        }
    }

    private widest({ marks }: Ticks): number {
        this.context.font = font;
        return Math.max(0, ...marks.map(([, label]) => this.context.measureText(label).width));
    }

    /** In steps, and not back for a little, so that the curves stand still while one zooms. */
    private makeRoom(all: Ticks[]): void {
        const wanted = Math.max(leastGutter, Math.ceil((Math.max(...all.map((each) => this.widest(each))) + 14) / 8) * 8);
        if (wanted <= gutter.left && wanted > gutter.left - 24 && wanted > leastGutter) return;
        gutter.left = wanted;
        this.layout();
    }

    private drawFrames(view: View, ticks: Ticks): void {
        const pen = this.context;
        const bottom = this.canvas.clientHeight - gutter.bottom;
        pen.font = font;
        pen.fillStyle = this.theme.text;
        pen.textBaseline = "top";
        if (ticks.exponent !== 0) {
            pen.textAlign = "right";
            pen.fillText(`×10^${ticks.exponent}`, gutter.left + view.width - 4, bottom - 18);
        }
        pen.textAlign = "center";
        const x = gutter.left + ((this.app.frame - view.left) / (view.right - view.left)) * view.width;
        const isShown = x >= gutter.left - 1 && x <= gutter.left + view.width + 1;
        const current = format(Math.round(this.app.frame * 100) / 100);
        const width = pen.measureText(current).width + 10;
        const inside = (at: number, room: number) => Math.min(this.canvas.clientWidth - 2 - room / 2, Math.max(2 + room / 2, at));
        for (const [frame, label] of ticks.marks) {
            const room = pen.measureText(label).width;
            const at = inside(gutter.left + ((frame - view.left) / (view.right - view.left)) * view.width, room);
            if (!isShown || Math.abs(at - inside(x, width)) > (width + room) / 2) pen.fillText(label, at, bottom + 6);
        }
        if (!isShown) return;
        pen.strokeStyle = this.theme.cursor;
        pen.lineWidth = 1.5;
        pen.beginPath();
        pen.moveTo(x, gutter.top);
        pen.lineTo(x, bottom);
        pen.stroke();
        pen.fillStyle = this.theme.cursor;
        pen.beginPath();
        pen.roundRect(inside(x, width) - width / 2, bottom + 3, width, 18, 4);
        pen.fill();
        pen.fillStyle = this.theme.ground;
        pen.fillText(current, inside(x, width), bottom + 6);
    }

    private drawPlot(view: View, top: number, quantity: number, across: Ticks, up: Ticks): void {
        const pen = this.context;
        const toX = (frame: number) => ((frame - view.left) / (view.right - view.left)) * view.width;
        const toY = (value: number) => ((view.top - value) / (view.top - view.bottom)) * view.height;
        pen.save();
        pen.translate(gutter.left, top);

        pen.lineWidth = 1;
        const line = (x0: number, y0: number, x1: number, y1: number, isZero: boolean) => {
            pen.strokeStyle = isZero ? this.theme.zero : this.theme.grid;
            pen.beginPath();
            pen.moveTo(x0, y0);
            pen.lineTo(x1, y1);
            pen.stroke();
        };
        for (const [frame] of across.marks) {
            const x = Math.round(toX(frame)) + 0.5;
            line(x, 0, x, view.height, frame === 0);
        }
        pen.font = font;
        pen.textAlign = "right";
        pen.textBaseline = "middle";
        for (const [value, label] of up.marks) {
            const y = Math.round(toY(value)) + 0.5;
            line(0, y, view.width, y, value === 0);
            pen.fillStyle = this.theme.text;
            if (y > 6 && y < view.height - 4) pen.fillText(label, -8, y);
        }
        pen.textAlign = "left";
        pen.textBaseline = "top";
        if (up.exponent !== 0) pen.fillText(`×10^${up.exponent}`, 4, 2);
        if (quantity > 0) pen.fillText("velocity, per frame", 6, 4);
        pen.strokeStyle = this.theme.zero;
        pen.strokeRect(0.5, 0.5, view.width - 1, view.height - 1);

        pen.beginPath();
        pen.rect(0, 0, view.width, view.height);
        pen.clip();
        const began = performance.now();
        if (quantity === 0) this.app.bridge.setView(view);
        const numbers = this.app.bridge.draw(view, quantity);
        this.cost.library += performance.now() - began;
        this.painters[quantity]!.draw(pen, numbers, view, this.theme);
        const marquee = this.app.marquee;
        if (marquee && quantity === 0) {
            pen.fillStyle = this.theme.selected;
            pen.globalAlpha = 0.12;
            pen.fillRect(marquee.x0, marquee.y0, marquee.x1 - marquee.x0, marquee.y1 - marquee.y0);
            pen.globalAlpha = 1;
            pen.strokeStyle = this.theme.selected;
            pen.lineWidth = 1;
            pen.strokeRect(marquee.x0, marquee.y0, marquee.x1 - marquee.x0, marquee.y1 - marquee.y0);
        }
        pen.restore();
    }
}
