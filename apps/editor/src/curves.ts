// The curves of a picture, from the library's numbers. Those that did not change since the last picture are kept on a canvas of
// their own, so that a drag among many curves costs what it drags.

import type { App } from "./app";
import type { View } from "./bridge";
import type { Theme } from "./draw";

type Pen = CanvasRenderingContext2D;

/** What Session::draw says of one curve. */
interface Drawn {
    curve: number;
    isPreview: boolean;
    isSelected: boolean;
    /** The place of its strokes among the numbers. */
    first: number;
    /** Its own among all that is drawn. */
    name: string;
    /** Equal where nothing in its picture differs. */
    look: string;
}

// Fewer numbers than this are drawn as fast as they are copied.
const fewNumbers = 20000;
// More curves than this get the thinnest lines, which browsers draw several times as fast as others.
const manyCurves = 30;

export class CurvePainter {
    private readonly still = document.createElement("canvas").getContext("2d")!;
    /** The curves that are not on that canvas; null where it is of no use. */
    private lively: Set<string> | null = null;
    /** Of each curve in the last picture. */
    private looks = new Map<string, string>();
    private frame = "";

    constructor(private readonly app: App, private readonly shade: (colour: string) => string) {}

    /** The pen's origin is the plot's corner, and its clip the plot. */
    draw(pen: Pen, numbers: Float64Array, view: View, theme: Theme): void {
        const isTop = (drawn: Drawn) => drawn.isPreview || drawn.isSelected || drawn.curve === this.app.state.active;
        const inOrder = this.split(numbers);
        const all = [...inOrder.filter((drawn) => !isTop(drawn)), ...inOrder.filter(isTop)];
        const ratio = pen.getTransform().a;
        const thin = all.length > manyCurves ? 1 / ratio : 1.3;
        const choose = (isWanted: (drawn: Drawn) => boolean, on: Pen) => {
            for (const drawn of all) if (isWanted(drawn)) this.drawCurve(on, numbers, drawn, view, theme, thin);
        };
        if (numbers.length < fewNumbers) {
            this.lively = null;
            choose(() => true, pen);
            return;
        }

        const frame = [view.left, view.right, view.bottom, view.top, view.width, view.height, ratio, theme.ground].join();
        const looks = new Map(all.map((drawn) => [drawn.name, drawn.look]));
        const changed = new Set([...looks].filter(([name, look]) => this.looks.get(name) !== look).map(([name]) => name));
        const isGone = [...this.looks.keys()].some((name) => !looks.has(name));
        if (frame !== this.frame || isGone || 2 * changed.size > all.length) {
            this.lively = null;
        } else if (!this.lively || [...changed].some((name) => !this.lively!.has(name))) {
            this.lively = changed;
            const { canvas } = this.still;
            canvas.width = Math.ceil(view.width * ratio);
            canvas.height = Math.ceil(view.height * ratio);
            this.still.setTransform(ratio, 0, 0, ratio, 0, 0);
            choose((drawn) => !changed.has(drawn.name), this.still);
        }
        this.looks = looks;
        this.frame = frame;
        const { lively } = this;
        if (lively) pen.drawImage(this.still.canvas, 0, 0, this.still.canvas.width / ratio, this.still.canvas.height / ratio);
        choose((drawn) => !lively || lively.has(drawn.name), pen);
    }

    private split(numbers: Float64Array): Drawn[] {
        const { curves, active } = this.app.state;
        const all: Drawn[] = [];
        let at = 0;
        const next = () => numbers[at++]!;
        while (at < numbers.length) {
            const [curve, isPreview, isSelected, stamp] = [next(), next() === 1, next() === 1, next()];
            const first = at;
            for (let strokes = next(); strokes > 0; --strokes) at += 2 + 2 * numbers[at + 1]!;
            at += 1 + 3 * numbers[at]!;
            at += 1 + 3 * numbers[at]!;
            at += 1 + 5 * numbers[at]!;
            const state = curves[curve];
            const look = [isSelected, stamp, state?.colour, state?.locked, curve === active].join();
            all.push({ curve, isPreview, isSelected, first, name: `${curve} ${isPreview}`, look });
        }
        return all;
    }

    private drawCurve(pen: Pen, numbers: Float64Array, drawn: Drawn, view: View, theme: Theme, thin: number): void {
        const { curve, isPreview, isSelected } = drawn;
        const { curves, active } = this.app.state;
        const colour = this.shade(curves[curve]?.colour ?? "#444444");
        const isLocked = curves[curve]?.locked ?? false;
        let at = drawn.first;
        const next = () => numbers[at++]!;
        for (let strokes = next(); strokes > 0; --strokes) {
            const place = next();
            pen.strokeStyle = place === 3 ? theme.outside : isPreview ? theme.preview : colour;
            pen.lineWidth = isPreview ? 2.5 : isSelected || curve === active ? 2.2 : thin;
            pen.globalAlpha = place === 1 ? (isLocked ? 0.55 : 1) : 0.6;
            pen.setLineDash(isPreview ? [6, 3] : place === 1 ? [] : [5, 4]);
            const count = next();
            // Where the line goes up and down in every column, bars cover the same pixels, and are drawn much faster.
            if (count > 2 * view.width) {
                drawBars(pen, numbers, at, count);
                at += 2 * count;
                continue;
            }
            pen.beginPath();
            pen.moveTo(next(), next());
            for (let i = 1; i < count; ++i) pen.lineTo(next(), next());
            pen.stroke();
        }
        pen.strokeStyle = colour;
        pen.lineWidth = 1;
        pen.setLineDash([1.5, 3]);
        for (let jumps = next(); jumps > 0; --jumps) {
            const x = next();
            pen.beginPath();
            pen.moveTo(x, next());
            pen.lineTo(x, next());
            pen.stroke();
        }
        pen.setLineDash([]);
        pen.globalAlpha = 1;
        const keys = next();
        const firstKey = at;
        at += keys * 3;
        for (let handles = next(); handles > 0; --handles) {
            const [x, y, tipX, tipY] = [next(), next(), next(), next()];
            const isChosen = next() === 1;
            pen.strokeStyle = isChosen ? theme.selected : theme.handle;
            pen.fillStyle = isChosen ? theme.selected : theme.ground;
            pen.lineWidth = 1;
            pen.beginPath();
            pen.moveTo(x, y);
            pen.lineTo(tipX, tipY);
            pen.stroke();
            pen.beginPath();
            pen.arc(tipX, tipY, 3.2, 0, 7);
            pen.fill();
            pen.stroke();
        }
        const size = keys * 14 > view.width ? 2.5 : 4;
        const shown = numbers.subarray(firstKey, firstKey + 3 * keys);
        drawKeys(pen, shown, false, colour, size, theme.ground);
        drawKeys(pen, shown, true, theme.selected, size + 1, theme.preview);
    }
}

function drawBars(pen: Pen, numbers: Float64Array, first: number, count: number): void {
    pen.fillStyle = pen.strokeStyle;
    let column = Math.floor(numbers[first]!);
    let low = numbers[first + 1]!;
    let high = low;
    for (let at = first + 2; at < first + 2 * count; at += 2) {
        const x = Math.floor(numbers[at]!);
        const y = numbers[at + 1]!;
        if (x !== column) {
            pen.fillRect(column, low, 1, Math.max(1, high - low));
            low = high = numbers[at - 1]!; // joined to where the line was
            column = x;
        }
        low = Math.min(low, y);
        high = Math.max(high, y);
    }
    pen.fillRect(column, low, 1, Math.max(1, high - low));
}

/** The selected keys or the others, in one path: x, y and flags of each. */
function drawKeys(pen: Pen, keys: Float64Array, areChosen: boolean, colour: string, size: number, edge: string): void {
    const marks = new Path2D();
    const locks = new Path2D();
    for (let at = 0; at < keys.length; at += 3) {
        const [x, y, flags] = [keys[at]!, keys[at + 1]!, keys[at + 2]!];
        if (((flags & 1) !== 0) !== areChosen) continue;
        if (flags & 2) {
            marks.moveTo(x, y - size - 1);
            marks.lineTo(x + size + 1, y);
            marks.lineTo(x, y + size + 1);
            marks.lineTo(x - size - 1, y);
            marks.closePath();
        } else {
            marks.rect(x - size, y - size, 2 * size, 2 * size);
        }
        if (flags & 4) {
            locks.moveTo(x - 7, y + 9);
            locks.lineTo(x + 7, y + 9);
        }
    }
    pen.fillStyle = colour;
    pen.strokeStyle = edge;
    pen.lineWidth = 1;
    pen.fill(marks);
    pen.stroke(marks);
    pen.strokeStyle = colour;
    pen.lineWidth = 2;
    pen.stroke(locks);
}
