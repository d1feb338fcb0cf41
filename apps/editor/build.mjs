// node build.mjs MODULE OUTPUT: packs the page with the module's bridge.js and bridge.wasm into static files.
import { build } from "esbuild";
import { cpSync, mkdirSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { dirname, join, resolve } from "node:path";
import { fileURLToPath } from "node:url";
import { gzipSync } from "node:zlib";

const here = dirname(fileURLToPath(import.meta.url));
const [moduleFolder, output] = process.argv.slice(2).map((name) => resolve(name));
rmSync(output, { recursive: true, force: true });
mkdirSync(output, { recursive: true });
const packed = join(moduleFolder, "bridge.wasm.gz");
writeFileSync(packed, gzipSync(readFileSync(join(moduleFolder, "bridge.wasm")), { level: 9 }));
cpSync(join(here, "static"), output, { recursive: true });
await build({
    entryPoints: [join(here, "src/main.ts")],
    outfile: join(output, "editor.js"),
    bundle: true,
    minify: true,
    format: "iife",
    target: "es2022",
    // Classic scripts may be loaded from file:, modules and .wasm files may not; so everything is in one script.
    loader: { ".gz": "binary", ".fcrvx": "text", ".chan": "text" },
    alias: { "bridge-module": join(moduleFolder, "bridge.js"), "bridge.wasm.gz": packed },
    define: { "import.meta.url": "location.href" },
    logLevel: "warning",
});
