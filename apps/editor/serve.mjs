// node serve.mjs FOLDER [PORT]: serves the folder on the loopback interface and prints the address.
import { createReadStream, existsSync, statSync } from "node:fs";
import { createServer } from "node:http";
import { extname, join, normalize, resolve } from "node:path";
import { fileURLToPath } from "node:url";

const types = { ".html": "text/html; charset=utf-8", ".js": "text/javascript", ".css": "text/css" };

/** A server of the folder; nothing outside of it, and nobody but this machine. */
export function serve(folder, port) {
    const root = resolve(folder);
    const server = createServer((request, response) => {
        const { pathname } = new URL(request.url, "http://localhost");
        const file = join(root, normalize(pathname === "/" ? "/index.html" : pathname));
        if (!file.startsWith(root + "/") || !existsSync(file) || !statSync(file).isFile()) {
            response.writeHead(404).end();
            return;
        }
        response.writeHead(200, { "content-type": types[extname(file)] ?? "application/octet-stream" });
        createReadStream(file).pipe(response);
    });
    return new Promise((done) => server.listen(port, "127.0.0.1", () => done(server)));
}

if (process.argv[1] === fileURLToPath(import.meta.url)) {
    const server = await serve(process.argv[2], Number(process.argv[3] ?? 0));
    console.log(`http://127.0.0.1:${server.address().port}/ (Ctrl+C ends it)`);
}
