// SPDX-License-Identifier: MIT
// The list of results, and the package on a page and in a worker, in Chromium.
import assert from "node:assert/strict";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { pathToFileURL } from "node:url";
import { LIST, SAMPLES, WEB, decoded, launch, serve } from "./support.mjs";

let browser;
before(async () => browser = await launch());
after(() => browser?.close());

test("every export gives what it must", async () => {
    const page = await browser.newPage();
    const lines = [];
    page.on("console", message => lines.push(message.text()));
    const isDone = page.waitForEvent("console", { predicate: message => / cases$/.test(message.text()), timeout: 600_000 });
    await page.addScriptTag({ path: LIST });
    await isDone;
    assert.deepEqual(lines.filter(line => line.startsWith("FAILED")), []);
});

test("a page and a worker load the package", async () => {
    const address = await serve(join(WEB, "package/dist"));
    const card = decoded(join(SAMPLES, "card-gray.png"), "L");
    const { load } = await import(pathToFileURL(join(WEB, "package/dist/index.js")));
    const { lines, picture } = (await load()).card(card);
    const expected = [lines.length, picture.bits.reduce((sum, byte) => (sum * 31 + byte) >>> 0, 0)];
    const page = await browser.newPage();
    await page.goto(address);
    const found = await page.evaluate(async ({ address, width, height, text }) => {
        const body = `const run = async ({ width, height, text }) => {
            const { load } = await import("${address}/index.js");
            const data = Uint8Array.from(atob(text), letter => letter.charCodeAt(0));
            const { lines, picture } = (await load()).card({ width, height, data });
            return [lines.length, picture.bits.reduce((sum, byte) => (sum * 31 + byte) >>> 0, 0)];
        };`;
        const here = await new Function(`${body} return run`)()({ width, height, text });
        const script = new Blob([`${body} onmessage = async ({ data }) => postMessage(await run(data));`], { type: "text/javascript" });
        const worker = new Worker(URL.createObjectURL(script), { type: "module" });
        worker.postMessage({ width, height, text });
        return [here, await new Promise(resolve => worker.onmessage = ({ data }) => resolve(data))];
    }, { address, width: card.width, height: card.height, text: Buffer.from(card.data).toString("base64") });
    assert.deepEqual(found, [expected, expected]);
});
