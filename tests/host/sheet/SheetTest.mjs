// SPDX-License-Identifier: MIT
// The page of `tavrix compare`: valid, and in headless Chromium what people see of it, with a mouse, with
// keys, through a screen reader, as wide as a desk's screen and as narrow as a telephone's.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { copyFileSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { HtmlValidate } from "html-validate";
import { chromium } from "playwright-core";

const MODES = ["local", "otsu", "midrange", "peaks", "gradient", "regions", "isodata", "lines", "sharp"];
const CARD = join(process.env.TAVRIX_SAMPLES, "card-colour.jpg");
const CARD_WIDTH = 1150, CARD_HEIGHT = 760;
const AXE = createRequire(import.meta.url).resolve("axe-core/axe.min.js");
const folder = mkdtempSync(join(tmpdir(), "tavrix-sheet-"));
const tavrix = (...words) => execFileSync(process.env.TAVRIX_COMMAND, words, { cwd: folder, encoding: "utf8" });
let browser;

before(async () => {
    browser = await chromium.launch({
        executablePath: process.env.TAVRIX_BROWSER,
        args: ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
               "--disable-background-networking", "--disable-component-update", "--disable-sync"],
    });
});
after(async () => {
    await browser?.close();
    rmSync(folder, { recursive: true, force: true });
});

async function open(sheet, width) {
    const page = await browser.newPage({ viewport: { width, height: 800 } });
    await page.goto(`file://${folder}/${sheet}`);
    return page;
}

async function checkIsAccessible(page) {
    await page.addScriptTag({ path: AXE });
    const { violations } = await page.evaluate(() => axe.run());
    assert.deepEqual(violations.map(({ id, nodes }) => [id, nodes[0].html.slice(0, 200)]), []);
}

async function checkFits(page) {
    const [content, window] = await page.evaluate(() => [document.documentElement.scrollWidth, innerWidth]);
    assert.ok(content <= window, `${content} pixels wide in a window of ${window}`);
}

// For every figure its name, whether its picture is on screen, the picture's size and share of dark pixels
// in per cent, and the numbers of the caption.
const figures = page => page.evaluate(() => [...document.querySelectorAll("figure")].map(figure => {
    const image = figure.querySelector("img"), box = image.getBoundingClientRect();
    const canvas = Object.assign(document.createElement("canvas"), { width: image.naturalWidth, height: image.naturalHeight });
    const pen = canvas.getContext("2d");
    pen.drawImage(image, 0, 0);
    const dark = pen.getImageData(0, 0, canvas.width, canvas.height).data.filter((v, i) => i % 4 === 0 && v < 128).length;
    return {
        name: figure.querySelector("h3").innerText, isSeen: box.width > 100 && box.height > 60,
        size: [image.naturalWidth, image.naturalHeight], dark: (100 * dark / (canvas.width * canvas.height)).toFixed(2),
        numbers: [...figure.querySelectorAll("dd")].map(e => e.innerText),
    };
}));

test("a card on a desk and on a telephone", async () => {
    const name = 'card & <b>"1" with a name that is much too long for one line of a telephone_or_any_other_line.jpg';
    copyFileSync(CARD, join(folder, name));
    tavrix("compare", name, "-o", "card.html");
    for (const width of [1280, 360]) {
        const page = await open("card.html", width);
        assert.equal(await page.title(), name);
        assert.equal(await page.innerText("h2"), "1150 \u00d7 760 pixels, 300 dots per inch");
        await checkFits(page);
        await checkIsAccessible(page);
        const seen = await figures(page);
        assert.deepEqual(seen.map(figure => figure.name.split(" ").at(-1)), ["original", "auto", ...MODES]);
        for (const { name, isSeen, size, dark, numbers } of seen) {
            assert.deepEqual([isSeen, ...size], [true, CARD_WIDTH, CARD_HEIGHT], name);
            if (name === "original" || width === 360) continue;
            assert.equal(numbers[0], `${dark} %`, "the caption tells what the picture shows");
            assert.match(tavrix("components", "-m", name.split(" ")[0], CARD), new RegExp(`, ${numbers[1]} components\n`));
            assert.match(numbers[2], /^\d+\.\d ms$/);
        }
        const fetched = () => performance.getEntriesByType("resource").filter(e => !e.name.startsWith("data:")).length;
        assert.equal(await page.evaluate(fetched), 0, "the page needs nothing beside it");
        await page.close();
    }
});

test("keys and clicks show a picture in full size", async () => {
    tavrix("compare", CARD, "-o", "keys.html");
    for (const width of [1280, 360]) {
        const page = await open("keys.html", width);
        const third = page.locator("figure").nth(2).locator("img");
        const shownWidth = async () => Math.round((await third.boundingBox()).width);
        const small = await shownWidth();
        for (let i = 0; i < 3; ++i) await page.keyboard.press("Tab");
        assert.notEqual(await third.evaluate(e => getComputedStyle(e).outlineStyle), "none", "the focus is seen");
        for (const [change, full] of [[() => page.keyboard.press("Space"), true], [() => page.keyboard.press("Space"), false],
                                      [() => third.click(), true]]) {
            await change();
            assert.equal(await shownWidth(), full ? CARD_WIDTH + 2 : small);
            await checkFits(page);
        }
        await checkIsAccessible(page);
        await page.close();
    }
});

test("several pages, one of them 1-bit", async () => {
    const gray = Buffer.concat([Buffer.from("P5 40 30 255\n"), Buffer.alloc(1200).map((_, i) => i * 7)]);
    writeFileSync(join(folder, "pages.pnm"), Buffer.concat([gray, Buffer.from("P1 2 1 0 1\n"), gray]));
    tavrix("compare", "pages.pnm", "-o", "./");
    const page = await open("pages.html", 360);
    assert.deepEqual((await figures(page)).map(figure => figure.numbers.length),
                     [0, 3, ...MODES.map(() => 3), 0, 0, 3, ...MODES.map(() => 3)]);
    assert.match(await page.innerText("section:nth-of-type(2)"), /^Page 2: 2 \u00d7 1 pixels\s+original\s+1 bit already/);
    await checkFits(page);
    await checkIsAccessible(page);
});

test("the pages are valid", async () => {
    const checker = new HtmlValidate({ extends: ["html-validate:standard"] });
    for (const sheet of ["card.html", "pages.html"]) {
        const { results } = await checker.validateString(readFileSync(join(folder, sheet), "utf8"));
        assert.deepEqual(results.flatMap(result => result.messages.map(m => `${m.line}: ${m.ruleId}: ${m.message}`)), []);
    }
});
