// SPDX-License-Identifier: MIT
// The page in Chromium, opened from disk: what people see of it, with a mouse, with keys, on a desk and on a
// telephone, by day and by night.
import assert from "node:assert/strict";
import { readFileSync, writeFileSync } from "node:fs";
import { createRequire } from "node:module";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { pathToFileURL } from "node:url";
import { HtmlValidate } from "html-validate";
import { SAMPLES, WEB, decoded, folder, launch } from "./support.mjs";

const PAGE = join(WEB, "tavrix.html");
const CARD = join(SAMPLES, "card-gray.png");
const AXE = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");
const TIMEOUT = 300_000;
const { load, modes, encodeTiff } = await import(pathToFileURL(join(WEB, "package/dist/index.js")));

let browser;
before(async () => browser = await launch());
after(() => browser?.close());

async function open(options = {}) {
    const context = await browser.newContext({ viewport: { width: 1280, height: 900 }, ...options });
    const page = await context.newPage();
    page.setDefaultTimeout(TIMEOUT);
    page.requests = [];
    page.problems = [];
    page.on("request", request => page.requests.push(request.url()));
    page.on("console", message => page.problems.push(message.text()));
    page.on("pageerror", error => page.problems.push(error.message));
    await page.goto(pathToFileURL(PAGE).href);
    await page.waitForSelector("html[data-ready]");
    return page;
}

const waitForAll = page => page.waitForFunction(() => document.querySelector("#status").textContent.includes("every mode in"));
const choose = async (page, path = CARD) => {
    await page.setInputFiles("#choose", path);
    await waitForAll(page);
};

// Axe runs in a world of its own, which the page's policy does not bind.
async function checkIsAccessible(page) {
    const session = await page.context().newCDPSession(page);
    const { frameTree } = await session.send("Page.getFrameTree");
    const { executionContextId } = await session.send("Page.createIsolatedWorld", { frameId: frameTree.frame.id });
    const evaluate = expression => session.send("Runtime.evaluate",
        { expression, contextId: executionContextId, awaitPromise: true, returnByValue: true });
    await evaluate(AXE);
    const { result } = await evaluate("axe.run().then(({ violations }) => violations.map(v => [v.id, v.nodes[0].html.slice(0, 200)]))");
    assert.deepEqual(result.value, []);
}

async function checkFits(page) {
    const [content, window] = await page.evaluate(() => [document.documentElement.scrollWidth, innerWidth]);
    assert.ok(content <= window, `${content} pixels wide in a window of ${window}`);
}

// What the panes show, as digests.
const shown = page => page.evaluate(async () => {
    await new Promise(resume => requestAnimationFrame(() => requestAnimationFrame(resume)));
    return [...document.querySelectorAll("canvas")].slice(0, 4).map(canvas => {
        const { data } = canvas.getContext("2d").getImageData(0, 0, canvas.width, canvas.height);
        return data.reduce((sum, byte) => (sum * 31 + byte) >>> 0, 0);
    });
});

test("a card on a desk and on a telephone, by day and by night", async () => {
    for (const [width, colorScheme] of [[1280, "light"], [360, "dark"], [360, "light"], [1280, "dark"]]) {
        const page = await open({ viewport: { width, height: 800 }, colorScheme });
        await checkFits(page);
        await checkIsAccessible(page);
        await choose(page);
        assert.deepEqual(await page.locator("h3").allInnerTexts(), ["auto", "original", ...modes.slice(1)]);
        assert.match(await page.innerText("figure:first-of-type"), /\d+ text lines/);
        assert.equal(await page.locator(".waiting").count(), 0);
        await checkFits(page);
        await checkIsAccessible(page);
        assert.deepEqual(page.requests.filter(url => !/^(file|blob|data):/.test(url)), []);
        assert.deepEqual(page.problems, []);
        await page.context().close();
    }
});

test("nothing gets out", async () => {
    const page = await open();
    const blocked = await page.evaluate(async () => {
        const blocked = new Promise(resolve => addEventListener("securitypolicyviolation", event => resolve(event.violatedDirective)));
        await fetch("http://127.0.0.1:9/").catch(() => {});
        return blocked;
    });
    assert.equal(blocked, "connect-src");
    await page.context().close();
});

test("files are the results", async () => {
    const page = await open();
    await choose(page);
    const result = (await load()).binarize(decoded(CARD, "L"), { mode: "otsu" });
    for (const [format, ending] of [["PNG", "png"], ["TIFF", "tif"], ["PDF", "pdf"]]) {
        const [file] = await Promise.all([page.waitForEvent("download"), page.click(`[aria-label="Download otsu as ${format}"]`)]);
        assert.equal(file.suggestedFilename(), `card-gray-otsu.${ending}`);
        const path = join(folder, file.suggestedFilename());
        await file.saveAs(path);
        if (format === "PDF") assert.match(readFileSync(path, "latin1"), /^%PDF-1\.4[^]*CCITTFaxDecode[^]*%%EOF\n$/);
        else assert.ok(Buffer.from(decoded(path).data).equals(result.bits), format);
        if (format === "TIFF") assert.ok(readFileSync(path).equals(encodeTiff(result)));
    }
    await page.context().close();
});

test("keys, wheel and buttons move all pictures together", async () => {
    const page = await open();
    await choose(page);
    const whole = await shown(page);
    await page.focus("figure canvas");
    assert.notEqual(await page.evaluate(() => getComputedStyle(document.activeElement).outlineStyle), "none", "the focus is seen");
    const differ = async (before, what) => {
        const now = await shown(page);
        now.forEach((digest, i) => assert.notEqual(digest, before[i], `${what}: pane ${i}`));
        return now;
    };
    for (let i = 0; i < 3; ++i) await page.keyboard.press("+");
    assert.equal(await page.innerText("#zoom"), "338 %");
    const larger = await differ(whole, "+");
    await page.keyboard.press("ArrowRight");
    const right = await differ(larger, "right");
    await page.locator("canvas").nth(1).hover();
    await page.mouse.down();
    await page.mouse.move(200, 300, { steps: 3 });
    await page.mouse.up();
    await differ(right, "dragged");
    await page.keyboard.press("0");
    assert.deepEqual(await shown(page), whole);
    await page.uncheck("#marks");
    const bare = await shown(page);
    assert.deepEqual([bare[0] !== whole[0], bare[1] !== whole[1], bare[2] === whole[2]], [true, true, true]);
    await page.click("#larger");
    await page.click("#whole");
    await page.keyboard.down("Control");
    await page.locator("canvas").nth(2).hover();
    await page.mouse.wheel(0, -300);
    await page.keyboard.up("Control");
    await page.waitForFunction(() => document.querySelector("#zoom").textContent !== "100 %");
    await page.context().close();
});

// As a person does it: files that come in through an event of the page.
const give = (page, event, name, content) => page.evaluate(async ({ event, name, content }) => {
    const data = new DataTransfer();
    data.items.add(new File([content instanceof Array ? new Uint8Array(content) : content], name));
    const options = { bubbles: true, cancelable: true };
    document.body.dispatchEvent(event === "drop" ? new DragEvent("drop", { ...options, dataTransfer: data })
                                                 : new ClipboardEvent("paste", { ...options, clipboardData: data }));
}, { event, name, content });

test("what is no picture is said so, and the next one works", async () => {
    const page = await open();
    writeFileSync(join(folder, "notes.txt"), "no picture");
    await give(page, "drop", "notes.txt", "no picture");
    await page.waitForSelector("#problem:not([hidden])");
    assert.equal(await page.innerText("#problem"), "notes.txt: this browser cannot read it as a picture.");
    await checkIsAccessible(page);
    await give(page, "paste", "pasted.png", [...readFileSync(CARD)]);
    await waitForAll(page);
    assert.equal(await page.innerText("#name"), "pasted.png");
    assert.ok(await page.isHidden("#problem"));
    await page.context().close();
});

test("a photograph of 12 megapixels shows an impression first, and never stalls the page", async t => {
    const page = await open();
    const photograph = await page.evaluate(async card => {
        const bytes = Uint8Array.from(atob(card), letter => letter.charCodeAt(0));
        const image = await createImageBitmap(new Blob([bytes]));
        const canvas = new OffscreenCanvas(4000, 3000);
        const pen = canvas.getContext("2d");
        pen.drawImage(image, 0, 0, 4000, 3000);
        window.longest = 0;
        const blob = await canvas.convertToBlob({ type: "image/jpeg", quality: 0.9 });
        new PerformanceObserver(list => list.getEntries().forEach(({ duration }) => window.longest = Math.max(window.longest, duration)))
            .observe({ entryTypes: ["longtask"] });
        const data = new DataTransfer();
        data.items.add(new File([blob], "photograph.jpg"));
        document.body.dispatchEvent(new DragEvent("drop", { bubbles: true, cancelable: true, dataTransfer: data }));
        return blob.size;
    }, readFileSync(CARD).toString("base64"));
    assert.ok(photograph > 100_000);
    await waitForAll(page);
    const { glance, automatic } = await page.evaluate(() => document.documentElement.dataset);
    assert.ok(+glance < +automatic);
    const status = await page.innerText("#status");
    t.diagnostic(`first result after ${glance} ms, the whole automatic one after ${automatic} ms; ${status} ` +
                 `longest task of the page ${Math.round(await page.evaluate(() => window.longest))} ms`);
    await page.context().close();
});

test("the page is valid", async () => {
    const checker = new HtmlValidate({ extends: ["html-validate:recommended"] });
    const html = readFileSync(PAGE, "utf8").replace(/(<script[^>]*>)[^]*?(?=<\/script>)/g, "$1");
    const { results } = await checker.validateString(html);
    assert.deepEqual(results.flatMap(result => result.messages.map(m => `${m.line}: ${m.ruleId}: ${m.message}`)), []);
});
