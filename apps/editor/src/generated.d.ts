// What scripts/editor.sh makes or takes from elsewhere in the repository, and esbuild packs into the page.

declare module "bridge-module" {
    /** The part of Emscripten's module that the page uses. */
    export interface BridgeModule {
        HEAPU8: Uint8Array;
        HEAPF64: Float64Array;
        ccall(name: string, result: "number" | "string" | null, types: string[], values: unknown[]): unknown;
        _malloc(size: number): number;
        _free(address: number): void;
        _editor_input(address: number, size: number): void;
        _editor_output(): number;
        _editor_output_size(): number;
        _editor_view(left: number, right: number, bottom: number, top: number, width: number, height: number): void;
        _editor_draw(left: number, right: number, bottom: number, top: number, width: number, height: number,
            quantity: number): number;
        _editor_draw_size(): number;
        _editor_values(frame: number): number;
        _editor_revision(): number;
    }
    export default function create(options: { wasmBinary: Uint8Array }): Promise<BridgeModule>;
}

declare module "*.gz" {
    const bytes: Uint8Array<ArrayBuffer>;
    export default bytes;
}

declare module "*.fcrvx" {
    const text: string;
    export default text;
}

declare module "*.chan" {
    const text: string;
    export default text;
}
