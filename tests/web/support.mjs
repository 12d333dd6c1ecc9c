// SPDX-License-Identifier: MIT
// What the tests of the package and of the page share.
import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync } from "node:fs";
import { createServer } from "node:http";
import { tmpdir } from "node:os";
import { extname, join } from "node:path";
import { after } from "node:test";
import { chromium } from "playwright-core";

export const { TAVRIX_WEB: WEB, TAVRIX_SOURCE: SOURCE, TAVRIX_LIST: LIST, TAVRIX_PYTHON: PYTHON } = process.env;
export const SAMPLES = join(SOURCE, "samples");

export const folder = mkdtempSync(join(tmpdir(), "tavrix-web-"));
after(() => rmSync(folder, { recursive: true, force: true }));

export const run = (program, ...words) => execFileSync(program, words, { cwd: folder, encoding: "utf8", stdio: ["ignore", "pipe", "inherit"], maxBuffer: 1 << 28 });
export const python = (...words) => execFileSync(PYTHON, words, { cwd: folder, maxBuffer: 1 << 28 });

// A picture's file as another decoder reads it.
export function decoded(path, mode) {
    const program = "import sys\nfrom PIL import Image\nimage = Image.open(sys.argv[1])\nmode = image.mode\n" +
        "image = image.convert(sys.argv[2]) if len(sys.argv) > 2 else image\n" +
        "print(*image.size, mode, *(round(n) for n in image.info.get('dpi', ())), flush=True)\nsys.stdout.buffer.write(image.tobytes())";
    const output = python("-c", program, path, ...(mode ? [mode] : []));
    const end = output.indexOf(10);
    const [width, height, kind, dpi] = output.subarray(0, end).toString().trim().split(" ");
    return { width: +width, height: +height, mode: kind, dpi: dpi && +dpi, data: new Uint8Array(output.subarray(end + 1)) };
}

export const launch = () => chromium.launch({
    executablePath: process.env.TAVRIX_BROWSER,
    args: ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
           "--disable-background-networking", "--disable-component-update", "--disable-sync"],
});

// Serves a folder on this machine until the tests end; gives its address.
export async function serve(root) {
    const types = { ".js": "text/javascript", ".wasm": "application/wasm", ".html": "text/html" };
    const server = createServer((request, response) => {
        try {
            const body = request.url === "/" ? "<!DOCTYPE html><title>test</title>" : readFileSync(join(root, request.url));
            response.writeHead(200, { "content-type": types[extname(request.url)] ?? "text/html" }).end(body);
        } catch {
            response.writeHead(404).end();
        }
    });
    await new Promise(ready => server.listen(0, "127.0.0.1", ready));
    after(() => server.close());
    return `http://127.0.0.1:${server.address().port}`;
}
