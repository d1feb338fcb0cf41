// The library, compiled to WebAssembly, behind a few typed calls. Nothing here knows how a curve runs.

import create, { type BridgeModule } from "bridge-module";
import packed from "bridge.wasm.gz";

export interface View {
    left: number;
    right: number;
    bottom: number;
    top: number;
    width: number;
    height: number;
}

export type Arguments = Record<string, string | number | boolean | undefined>;

/** What the library refused, in words for people. */
export class Refusal extends Error {}

export interface CurveState {
    name: string;
    colour: string;
    /** What 0 and 1 of the axis are in its values: its range, with separate scales. */
    low: number;
    high: number;
    visible: boolean;
    locked: boolean;
    velocity: boolean;
    selected: boolean;
    keys: number;
}

export interface State {
    curves: CurveState[];
    active: number;
    canUndo: boolean;
    canRedo: boolean;
    undo: string;
    redo: string;
    clean: boolean;
    separate: boolean;
    selectedKeys: number;
    selectedHandles: number;
    selectedSegments: number;
    undoBytes: number;
}

export interface Pick {
    type: "none" | "key" | "handle" | "segment" | "curve";
    curve: number;
    x?: number;
    y?: number;
    selected: boolean;
    locked: boolean;
}

/** null: no part is selected; mixed: they differ. */
export type Examined<T> = null | { value: T; mixed?: undefined } | { mixed: true; value?: undefined };

export interface Tangents {
    type: Examined<number>;
    angle: Examined<number>;
    weight: Examined<number>;
    weighted: Examined<boolean>;
    weightLocked: Examined<boolean>;
}

export interface Properties {
    keys: {
        count: number;
        x: Examined<number>;
        y: Examined<number>;
        breakdown: Examined<boolean>;
        unified: Examined<boolean>;
        locked: Examined<boolean>;
    };
    tangents?: Tangents;
    in?: Tangents;
    out?: Tangents;
    expression?: Examined<string>;
    before: Examined<string>;
    after: Examined<string>;
}

export interface Rows {
    size: number;
    first: number;
    rows: { x: number; y: number; in: number; out: number; kind: string; selected: boolean }[];
}

export interface Format {
    name: string;
    title: string;
    extension: string;
}

export class Bridge {
    private constructor(private readonly module: BridgeModule) {}

    static async load(): Promise<Bridge> {
        const stream = new Blob([packed]).stream().pipeThrough(new DecompressionStream("gzip"));
        const bytes = new Uint8Array(await new Response(stream).arrayBuffer());
        return new Bridge(await create({ wasmBinary: bytes }));
    }

    /** Throws Refusal with the library's message. */
    call<T>(command: string, values: Arguments = {}): T {
        const text = this.module.ccall("editor_call", "string", ["string", "string"], [command, JSON.stringify(values)]);
        const result = JSON.parse(text as string) as { error?: string } | null;
        if (result?.error !== undefined) throw new Refusal(result.error);
        return result as T;
    }

    /** Hands over the bytes that "open" reads next. */
    setInput(bytes: Uint8Array): void {
        const address = this.module._malloc(Math.max(1, bytes.length));
        this.module.HEAPU8.set(bytes, address);
        this.module._editor_input(address, bytes.length);
        this.module._free(address);
    }

    /** A copy of the bytes that "save" made. */
    output(): Uint8Array<ArrayBuffer> {
        const address = this.module._editor_output();
        return new Uint8Array(this.module.HEAPU8.slice(address, address + this.module._editor_output_size()));
    }

    setView(view: View): void {
        this.module._editor_view(view.left, view.right, view.bottom, view.top, view.width, view.height);
    }

    /** Numbers as Session::draw lists them; good until the next call. */
    draw(view: View, quantity: number): Float64Array {
        const address = this.module._editor_draw(view.left, view.right, view.bottom, view.top, view.width, view.height,
            quantity);
        return this.module.HEAPF64.subarray(address / 8, address / 8 + this.module._editor_draw_size());
    }

    /** The values of all curves; good until the next call. */
    values(frame: number): Float64Array {
        const address = this.module._editor_values(frame);
        return this.module.HEAPF64.subarray(address / 8, address / 8 + this.module._editor_draw_size());
    }

    get revision(): number {
        return this.module._editor_revision();
    }

    get memory(): number {
        return this.module.HEAPU8.length;
    }
}
