// The habits of a mouse, a pen and fingers over the curves. What is dragged, and where to, is the library's to decide.

import { type App } from "./app";
import type { Pick } from "./bridge";
import { gutter, type Picture } from "./draw";

type Gesture =
    | { kind: "pan" }
    | { kind: "marquee"; mode: "set" | "add" | "remove"; isOutside: boolean }
    | { kind: "press"; pick: Pick }
    | { kind: "drag" }
    | { kind: "time" }
    | { kind: "pinch"; distanceX: number; distanceY: number; x: number; y: number };

const slop = 3;

export class Pointer {
    private gesture: Gesture | null = null;
    private start = { x: 0, y: 0 };
    private last = { x: 0, y: 0 };
    private pending: { x: number; y: number; shift: boolean } | null = null;
    private readonly fingers = new Map<number, { x: number; y: number }>();

    constructor(private readonly app: App, private readonly picture: Picture,
        private readonly menu: (x: number, y: number) => void) {
        const canvas = picture.canvas;
        canvas.addEventListener("wheel", (event) => this.wheel(event), { passive: false });
        canvas.addEventListener("pointerdown", (event) => this.down(event));
        canvas.addEventListener("pointermove", (event) => this.move(event));
        canvas.addEventListener("pointerup", (event) => this.up(event));
        canvas.addEventListener("pointercancel", (event) => this.up(event));
        canvas.addEventListener("dblclick", (event) => this.twice(event));
        canvas.addEventListener("contextmenu", (event) => this.context(event));
        // Some systems paste on a click of the middle button, which pans here.
        canvas.addEventListener("auxclick", (event) => {
            app.ignoresPaste = event.button === 1;
            window.setTimeout(() => (app.ignoresPaste = false));
        });
        app.onStep(() => this.step());
    }

    get isDragging(): boolean {
        return this.gesture !== null && this.gesture.kind !== "press";
    }

    /** Escape: puts back what the drag has moved. False where nothing is being dragged. */
    cancel(): boolean {
        if (!this.gesture) return false;
        this.pending = null;
        if (this.gesture.kind === "drag") this.app.run("dragCancel");
        this.gesture = null;
        this.app.marquee = null;
        this.app.redraw();
        return true;
    }

    private at(event: MouseEvent): { x: number; y: number } {
        const box = this.picture.canvas.getBoundingClientRect();
        return { x: event.clientX - box.left - gutter.left, y: event.clientY - box.top - gutter.top };
    }

    private wheel(event: WheelEvent): void {
        event.preventDefault();
        const { x, y } = this.at(event);
        const unit = event.deltaMode === 1 ? 16 : event.deltaMode === 2 ? 200 : 1;
        if (event.deltaX !== 0 && !event.shiftKey && Math.abs(event.deltaX) > Math.abs(event.deltaY)) {
            this.app.pan(-event.deltaX * unit, 0);
            return;
        }
        // A pinch on a touchpad comes as a wheel with Control, in small steps.
        const turn = (event.deltaY || event.deltaX) * unit * (event.ctrlKey ? 0.01 : 0.0015);
        const factor = Math.exp(Math.max(-1, Math.min(1, turn)));
        const isBelow = y > this.app.view.height;
        this.app.zoom(x, y, event.altKey ? 1 : factor, event.shiftKey || isBelow ? 1 : factor);
    }

    /** Whether curves are drawn there, and not the velocity panel or labels. */
    private isPlot(x: number, y: number): boolean {
        const { width, height } = this.app.view;
        return x >= 0 && x <= width && y >= 0 && y <= height;
    }

    private look(x: number, y: number): Pick {
        if (!this.isPlot(x, y)) return { type: "none", curve: -1, selected: false, locked: false };
        return this.app.bridge.call<Pick>("pick", { x, y, radius: 7, mode: "look" });
    }

    private down(event: PointerEvent): void {
        const { app } = this;
        const { x, y } = this.at(event);
        this.picture.canvas.setPointerCapture(event.pointerId);
        if (event.pointerType === "touch") {
            this.fingers.set(event.pointerId, { x, y });
            if (this.fingers.size === 2) {
                this.cancel();
                this.gesture = this.pinch();
                return;
            }
        }
        if (this.gesture) return;
        this.start = this.last = { x, y };
        if (event.button === 1 || (event.button === 0 && event.altKey)) {
            event.preventDefault();
            this.gesture = { kind: "pan" };
            return;
        }
        if (event.button !== 0) return;
        if (y > app.view.height) { // the ruler, or the velocity panel over it
            this.gesture = { kind: "time" };
            this.setTime(x);
            return;
        }
        app.bridge.setView(app.view);
        const pick = this.look(x, y);
        if (pick.type === "none" || (pick.type === "curve" && event.shiftKey)) {
            const mode = event.ctrlKey || event.metaKey ? "remove" : event.shiftKey ? "add" : "set";
            this.gesture = { kind: "marquee", mode, isOutside: !this.isPlot(x, y) };
            return;
        }
        const isToggle = event.shiftKey || event.ctrlKey || event.metaKey;
        app.run("pick", { x, y, radius: 7, mode: isToggle ? "toggle" : "set", segments: pick.type === "curve" && event.ctrlKey });
        this.gesture = { kind: "press", pick };
    }

    private pinch(): Gesture {
        const [a, b] = [...this.fingers.values()] as [{ x: number; y: number }, { x: number; y: number }];
        return {
            kind: "pinch", distanceX: Math.max(30, Math.abs(a.x - b.x)), distanceY: Math.max(30, Math.abs(a.y - b.y)),
            x: (a.x + b.x) / 2, y: (a.y + b.y) / 2,
        };
    }

    private setTime(x: number): void {
        const frame = this.app.toFrame(x);
        this.app.frame = this.app.settings.snap ? Math.round(frame) : frame;
        this.app.redraw();
    }

    private move(event: PointerEvent): void {
        const { app } = this;
        const { x, y } = this.at(event);
        if (this.fingers.has(event.pointerId)) this.fingers.set(event.pointerId, { x, y });
        const gesture = this.gesture;
        if (!gesture) {
            this.point(x, y);
            return;
        }
        if (gesture.kind === "pinch") {
            if (this.fingers.size < 2) return;
            const now = this.pinch() as Extract<Gesture, { kind: "pinch" }>;
            app.pan(now.x - gesture.x, now.y - gesture.y);
            app.zoom(now.x, now.y, gesture.distanceX / now.distanceX, gesture.distanceY / now.distanceY);
            this.gesture = now;
            return;
        }
        if (gesture.kind === "pan") {
            app.pan(x - this.last.x, y - this.last.y);
        } else if (gesture.kind === "time") {
            this.setTime(x);
        } else if (gesture.kind === "marquee") {
            app.marquee = this.box(x, y);
            app.redraw();
        } else {
            if (gesture.kind === "press") {
                if (Math.hypot(x - this.start.x, y - this.start.y) < slop) return;
                if (!this.begin(gesture.pick)) return;
            }
            this.pending = { x, y, shift: event.shiftKey };
            app.redraw();
        }
        this.last = { x, y };
    }

    /** From the press to here, as far as curves are seen. */
    private box(x: number, y: number): { x0: number; y0: number; x1: number; y1: number } {
        const { width, height } = this.app.view;
        const across = (at: number) => Math.max(0, Math.min(width, at));
        const down = (at: number) => Math.max(0, Math.min(height, at));
        return { x0: across(this.start.x), y0: down(this.start.y), x1: across(x), y1: down(y) };
    }

    /** The shape of the pointer tells what a press would take. */
    private point(x: number, y: number): void {
        const pick = this.look(x, y);
        const cursors = { none: "default", key: "move", handle: "crosshair", segment: "pointer", curve: "pointer" };
        this.picture.canvas.style.cursor = y > this.app.view.height ? "ew-resize" : cursors[pick.type];
    }

    private begin(pick: Pick): boolean {
        const { app } = this;
        const { settings } = app;
        const steps = { frameStep: settings.snap ? 1 : 0, valueStep: app.snapStep(pick.curve), others: settings.others };
        if (pick.type === "handle") {
            const begun = app.run("dragBegin", { what: "handle", x: this.start.x, y: this.start.y });
            this.gesture = begun ? { kind: "drag" } : null;
            return begun !== null;
        }
        if (pick.type !== "key" && app.current.selectedKeys === 0) {
            this.gesture = { kind: "marquee", mode: "set", isOutside: false };
            return false;
        }
        const what = settings.scaling && pick.type === "key" ? "scale" : "keys";
        const begun = app.run("dragBegin", { what, x: this.start.x, y: this.start.y, curve: pick.curve, ...steps });
        this.gesture = begun ? { kind: "drag" } : null;
        return begun !== null;
    }

    /** One step of the drag for each picture, however many moves the pointer made. */
    private step(): void {
        const { app, gesture, pending } = this;
        if (!pending || !gesture) return;
        this.pending = null;
        let { x, y } = pending;
        if (pending.shift) {
            if (Math.abs(x - this.start.x) > Math.abs(y - this.start.y)) y = this.start.y;
            else x = this.start.x;
        }
        app.run("dragTo", { x, y });
    }

    private up(event: PointerEvent): void {
        const { app, gesture } = this;
        this.fingers.delete(event.pointerId);
        if (!gesture || (gesture.kind === "pinch" && this.fingers.size > 0)) return;
        const { x, y } = this.at(event);
        if (gesture.kind === "marquee") {
            app.marquee = null;
            if (Math.hypot(x - this.start.x, y - this.start.y) < slop) {
                if (gesture.mode === "set" && !gesture.isOutside) app.run("selectNone");
            } else {
                app.run("marquee", { ...this.box(x, y), mode: gesture.mode });
            }
        } else if (gesture.kind === "drag") {
            this.step();
            app.run("dragEnd");
        }
        this.gesture = null;
        app.redraw();
    }

    private twice(event: MouseEvent): void {
        const { app } = this;
        const { x, y } = this.at(event);
        if (!this.isPlot(x, y)) return;
        app.bridge.setView(app.view);
        const pick = this.look(x, y);
        if (pick.type === "key" || pick.type === "handle") return;
        const frame = app.settings.snap ? Math.round(app.toFrame(x)) : app.toFrame(x);
        if (pick.type === "curve") app.addKey({ curve: pick.curve, frame });
        else if (app.state.active >= 0)
            app.addKey({ curve: app.state.active, frame, y, valueStep: app.snapStep(app.state.active) });
    }

    private context(event: MouseEvent): void {
        event.preventDefault();
        const { x, y } = this.at(event);
        this.app.bridge.setView(this.app.view);
        const pick = this.look(x, y);
        if (pick.type === "curve") this.app.run("pick", { x, y, radius: 7, mode: "set", segments: true });
        else if (pick.type === "key") this.app.run("pick", { x, y, radius: 7, mode: "set" });
        this.app.drawNow();
        this.menu(event.clientX, event.clientY);
    }
}
