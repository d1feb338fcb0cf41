// Puts the page together.

import { App, element, format } from "./app";
import { Bridge } from "./bridge";
import { gutter, Picture } from "./draw";
import { Files } from "./files";
import { commitBeforePresses, listen, returnFocus } from "./keyboard";
import { InterpolatorMenu } from "./menu";
import { CurveList, KeyTable, Playback, PropertyPanel, readNumber, Tools } from "./panels";
import { Pointer } from "./pointer";
import { measure } from "./measure";

async function start(): Promise<void> {
    const bridge = await Bridge.load();
    const app = new App(bridge);
    const picture = new Picture(app);
    const menu = new InterpolatorMenu(app);
    const pointer = new Pointer(app, picture, (x, y) => menu.open(x, y));
    const properties = new PropertyPanel(app);
    new CurveList(app, picture);
    new KeyTable(app);
    const tools = new Tools(app);
    const playback = new Playback(app, picture);
    const files = new Files(app);

    const press = (id: string, isOn: boolean) => element(id).setAttribute("aria-pressed", String(isOn));
    const { settings } = app;
    const actions: Record<string, () => void> = {
        undo: () => files.step("undo"),
        redo: () => files.step("redo"),
        delete: () => {
            const { selectedKeys, curves } = app.current;
            const isCurve = selectedKeys === 0 && curves.some((curve) => curve.selected);
            if (isCurve) {
                app.tell("No key is selected. A whole curve goes by Delete in the list of curves.", true);
                return;
            }
            const removed = app.run<{ keys: number; kept: number }>("removeKeys");
            if (removed && removed.kept > 0) app.tell(`${removed.keys} deleted; ${removed.kept} locked and kept.`);
        },
        "frame-all": () => app.frameBox("all"),
        "frame-selected": () => app.frameBox("selected"),
        snap: () => press("snap", (settings.snap = !settings.snap)),
        "snap-values": () => press("snap-values", (settings.snapValues = !settings.snapValues)),
        scaling: () => press("scaling", (settings.scaling = !settings.scaling)),
        velocity: () => {
            press("velocity", (settings.velocity = !settings.velocity));
            document.body.classList.toggle("velocity", settings.velocity);
        },
        separate: () => {
            app.run("options", { separate: !app.state.separate });
            app.drawNow();
            press("separate", app.state.separate);
            app.frameBox("all");
        },
        interpolator: () => {
            const box = element("interpolator").getBoundingClientRect();
            menu.open(box.left, box.bottom + 4);
        },
        help: () => element<HTMLDialogElement>("help-dialog").showModal(),
    };
    const act = (name: string) => {
        actions[name]!();
        app.redraw();
    };
    for (const name of Object.keys(actions)) element(name).addEventListener("click", () => act(name));
    element<HTMLSelectElement>("others").addEventListener("change", (event) => {
        settings.others = (event.target as HTMLSelectElement).value as typeof settings.others;
    });
    const step = element<HTMLInputElement>("value-step");
    step.addEventListener("change", () => {
        const value = step.value.trim() === "" ? 0 : readNumber(app, step);
        if (value !== null) settings.valueStep = Math.max(0, value);
        step.value = settings.valueStep > 0 ? format(settings.valueStep) : "";
    });
    returnFocus(picture.canvas);
    commitBeforePresses();
    for (const button of document.querySelectorAll<HTMLButtonElement>("[data-tangent]"))
        button.addEventListener("click", () => app.run("tangentType", { type: button.dataset["tangent"] }));
    element("help-close").addEventListener("click", () => element<HTMLDialogElement>("help-dialog").close());
    app.onChange(() => {
        const { canUndo, canRedo, undo, redo } = app.state;
        for (const [id, can, name] of [["undo", canUndo, undo], ["redo", canRedo, redo]] as const) {
            element<HTMLButtonElement>(id).disabled = !can;
            element(id).title = can && name ? `${id === "undo" ? "Undo" : "Redo"}: ${name}` : "";
        }
    });

    const nudge = (x: number, y: number, event: KeyboardEvent) => {
        const { selectedKeys, selectedHandles } = app.current;
        if (selectedKeys + selectedHandles === 0) {
            app.pan(-x * app.view.width * 0.05, y * app.view.height * 0.05);
            return;
        }
        const times = event.shiftKey ? 10 : 1;
        const command = settings.scaling && selectedKeys > 0 ? "stretch" : "nudge";
        const { others, snap } = settings;
        app.run(command, { x: x * times, y: y * times * app.fineStep, others, frameStep: snap ? 1 : 0, frame: app.frame });
    };
    const stepKey = (by: number, add = false) => {
        const key = app.run<{ x: number } | null>("stepKey", { by, add, frame: app.frame });
        if (!key) return;
        app.frame = key.x;
        const { view } = app;
        if (key.x < view.left || key.x > view.right)
            app.pan(((view.left + view.right) / 2 - key.x) / (view.right - view.left) * view.width, 0);
    };
    const stepCurve = (by: number) => {
        const curve = app.state.active + by;
        if (curve >= 0 && curve < app.state.curves.length) app.run("selectCurve", { curve });
    };
    const moveTime = (by: number) => (app.frame = Math.round(app.frame) + by);
    const centre = (x: number, y = x) => app.zoom(app.view.width / 2, app.view.height / 2, x, y);
    const tangent = (type: string) => () => app.run("tangentType", { type });
    const goTo = (id: string) => () => {
        const field = element<HTMLInputElement>(id);
        if (field.disabled) app.tell(id === "formula" ? "Select a segment, or the key where it starts." : "Select a key first.", true);
        field.select();
    };
    listen(app, [
        ["Look", [
            { keys: ["A", "Home"], what: "Frame all", run: () => act("frame-all") },
            { keys: ["F"], what: "Frame the selection", run: () => act("frame-selected") },
            { keys: ["+", "="], what: "Zoom in", run: () => centre(0.8) },
            { keys: ["-"], what: "Zoom out", run: () => centre(1.25) },
            { keys: ["Ctrl+Right", "Ctrl+Left"], what: "Zoom in and out in time alone", run: (e) => centre(e.key === "ArrowRight" ? 0.8 : 1.25, 1) },
            { keys: ["Ctrl+Up", "Ctrl+Down"], what: "Zoom in and out in values alone", run: (e) => centre(1, e.key === "ArrowUp" ? 0.8 : 1.25) },
            { keys: ["N"], what: "Separate scales", run: () => act("separate") },
            { keys: ["V"], what: "Velocity panel", run: () => act("velocity") },
            { keys: ["Alt+Left"], what: "One frame back", run: () => moveTime(-1) },
            { keys: ["Alt+Right"], what: "One frame on", run: () => moveTime(1) },
            { keys: ["Space"], what: "Play or stop", run: () => playback.toggle() },
        ]],
        ["Select", [
            { keys: ["Ctrl+A"], what: "All keys", run: () => app.run("selectAll") },
            { keys: ["Shift+A"], what: "All keys of the active curve", run: () => {
                if (app.state.active >= 0) app.run("selectAll", { curve: app.state.active });
            } },
            { keys: ["PageUp"], what: "The curve before", run: () => stepCurve(-1) },
            { keys: ["PageDown"], what: "The next curve", run: () => stepCurve(1) },
            { keys: ["Escape"], what: "Leave a field; cancel a drag or a preview; select nothing", run: () => {
                if (!pointer.cancel() && !menu.close() && !tools.end()) app.run("selectNone");
            } },
            { keys: [","], what: "The key, handle or segment before", run: () => stepKey(-1) },
            { keys: ["."], what: "The next key, handle or segment", run: () => stepKey(1) },
            { keys: ["<", ">"], what: "Those in addition", run: (e) => stepKey(e.key === ">" ? 1 : -1, true) },
            { keys: ["Ctrl+Click"], what: "On a key: to the selection, or out of it; on a curve: its segment" },
            { keys: ["Ctrl+Drag"], what: "A box that takes keys out of the selection" },
            { keys: ["H"], what: "The keys' in handles, their out handles, the keys again", run: () => app.run("selectHandles") },
            { keys: ["G"], what: "The segments after the keys, the keys again", run: () => app.run("selectSegments") },
        ]],
        ["Keys and handles", [
            { keys: ["Left", "Shift+Left"], what: "A frame back; with Shift ten", run: (e) => nudge(-1, 0, e) },
            { keys: ["Right", "Shift+Right"], what: "A frame on; with Shift ten", run: (e) => nudge(1, 0, e) },
            { keys: ["Up", "Shift+Up"], what: "Raise; with Shift ten times as much", run: (e) => nudge(0, 1, e) },
            { keys: ["Down", "Shift+Down"], what: "Lower; with Shift ten times as much", run: (e) => nudge(0, -1, e) },
            { keys: ["K"], what: "Add a key at the cursor, which keeps the shape", run: () => app.addKey({ frame: app.frame }) },
            { keys: ["Delete"], what: "Delete the keys", run: () => act("delete") },
            { keys: ["Ctrl+C", "Ctrl+X"], what: "Copy, cut the keys" },
            { keys: ["Ctrl+V"], what: "Paste keys at the cursor; open a document that was copied as text" },
            { keys: ["S"], what: "Snap to whole frames", run: () => act("snap") },
            { keys: ["Shift+S"], what: "Snap values to the step", run: () => act("snap-values") },
            { keys: ["T"], what: "Scale instead of move: a drag about the far corner, arrows about the cursor", run: () => act("scaling") },
            { keys: ["B"], what: "Breakdown", run: () => properties.toggle("breakdown") },
            { keys: ["L"], what: "Lock or unlock", run: () => properties.toggle("locked") },
            { keys: ["I"], what: "Interpolator menu", run: () => act("interpolator") },
        ]],
        ["Tangents", [
            { keys: ["1"], what: "Smooth", run: tangent("smooth") },
            { keys: ["2"], what: "Clamped", run: tangent("clamped") },
            { keys: ["3"], what: "Plateau", run: tangent("plateau") },
            { keys: ["4"], what: "Linear", run: tangent("linear") },
            { keys: ["5"], what: "Flat", run: tangent("flat") },
            { keys: ["6"], what: "Fixed", run: tangent("fixed") },
            { keys: ["7"], what: "Stepped", run: tangent("stepped") },
            { keys: ["U"], what: "Unify or break", run: () => properties.toggle("unified") },
            { keys: ["W"], what: "Weighted", run: () => properties.toggle("weighted") },
            { keys: ["Shift+W"], what: "Lock the length", run: () => properties.toggle("weightLocked") },
        ]],
        ["Go to", [
            { keys: ["Enter"], what: "The frame and value of the selected keys", run: goTo("key-x") },
            { keys: ["E"], what: "The formula", run: goTo("formula") },
            { keys: ["R"], what: "Bake, smooth, fit, reduce", run: () => {
                element<HTMLDetailsElement>("tool-panel").open = true;
                element("tool").focus();
            } },
            { keys: ["D"], what: "The table of keys", run: () => document.querySelector<HTMLElement>("#rows input")?.focus() },
            { keys: ["C"], what: "The list of curves", run: () => document.getElementById(`curve-${app.state.active}`)?.focus() },
        ]],
        ["Document", [
            { keys: ["Ctrl+Z"], what: "Undo", run: () => act("undo") },
            { keys: ["Ctrl+Shift+Z", "Ctrl+Y"], what: "Redo", run: () => act("redo") },
            { keys: ["Ctrl+O"], what: "Open", run: () => files.choose(false) },
            { keys: ["Ctrl+S"], what: "Save", run: () => files.save() },
            { keys: ["?"], what: "This help", run: () => act("help") },
        ]],
    ]);
    // For the tests and the curious: all that the page knows.
    Object.assign(window, { editor: { app, bridge, picture, gutter } });
    const address = new URLSearchParams(location.search);
    if (address.has("measure")) {
        await measure(app, picture, Number(address.get("measure")) || 100000);
    } else {
        await files.start(address.get("example"));
    }
    element("loading").remove();
    document.body.dataset["ready"] = "yes";
}

start().catch((error: unknown) => {
    const box = element("loading");
    box.textContent = `The editor could not start: ${error instanceof Error ? error.message : String(error)}`;
    box.setAttribute("role", "alert");
});
