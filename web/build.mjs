// SPDX-License-Identifier: MIT
// node build.mjs MODULE OUTPUT: checks the types, then makes OUTPUT/package, ready for npm pack, and
// OUTPUT/tavrix.html, the page with everything in it.
import { execFileSync } from "node:child_process";
import { createHash } from "node:crypto";
import { cpSync, mkdirSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { dirname, join, resolve } from "node:path";
import { fileURLToPath } from "node:url";
import { build } from "esbuild";

const here = dirname(fileURLToPath(import.meta.url));
const [module, output] = process.argv.slice(2).map(path => resolve(path));
const common = { bundle: true, target: "es2022", write: false, external: ["node:*"], logLevel: "warning", absWorkingDir: here };
const tsc = (...words) => execFileSync(process.execPath, [join(here, "node_modules/typescript/bin/tsc"), ...words], { stdio: "inherit" });

async function bundle(path, options) {
    const { outputFiles } = await build({ ...common, entryPoints: [join(here, path)], ...options });
    return outputFiles[0].text;
}

async function makePackage() {
    const folder = join(output, "package");
    rmSync(folder, { recursive: true, force: true });
    mkdirSync(join(folder, "dist"), { recursive: true });
    writeFileSync(join(folder, "dist/index.js"),
                  await bundle("src/index.ts", { format: "esm", platform: "neutral" }));
    tsc("-p", join(here, "src"), "--outDir", join(folder, "dist"));
    cpSync(module, join(folder, "dist/tavrix.wasm"));
    for (const name of ["package.json", "README.md", "../LICENSE"]) cpSync(join(here, name), join(folder, name.replace("../", "")));
}

// A policy that lets nothing in or out but what the page brings: its own script and style, by their digests,
// workers and pictures that it makes itself, and WebAssembly.
function policyOf(script, style) {
    const digest = text => `'sha256-${createHash("sha256").update(text).digest("base64")}'`;
    return ["default-src 'none'", `script-src ${digest(script)} 'wasm-unsafe-eval'`, `style-src ${digest(style)}`,
            "worker-src blob:", "img-src blob: data:", "base-uri 'none'", "form-action 'none'"].join("; ");
}

async function makePage() {
    const classic = { format: "iife", minify: true };
    const nowhere = { "import.meta.url": '""' }; // the page hands the module over
    const worker = await bundle("page/worker.ts", { ...classic, define: nowhere });
    const script = await bundle("page/page.ts", { ...classic, define: { ...nowhere, WORKER_SCRIPT: JSON.stringify(worker) } });
    const style = await bundle("page/page.css", { minify: true });
    const parts = {
        POLICY: policyOf(script, style), STYLE: style, SCRIPT: script, MODULE: readFileSync(module).toString("base64"),
    };
    const page = readFileSync(join(here, "page/page.html"), "utf8").replace(/\{\{(\w+)\}\}/g, (_, name) => parts[name]);
    writeFileSync(join(output, "tavrix.html"), page);
}

tsc("-p", here);
await makePackage();
await makePage();
