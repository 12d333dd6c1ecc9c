// SPDX-License-Identifier: MIT
// node compare.mjs WEB [PICTURE.png|jpg ...]: times the package in the folder WEB (build/web/web) and OpenCV.js
// beside each other in one page of Chromium, from pixels in the script's memory to pixels there. Prints a table.
import { readFileSync } from "node:fs";
import { createServer } from "node:http";
import { dirname, extname, join } from "node:path";
import { fileURLToPath } from "node:url";
import { chromium } from "playwright-core";

const here = dirname(fileURLToPath(import.meta.url));
const [web, ...pictures] = process.argv.slice(2);
if (pictures.length === 0) pictures.push(join(here, "../../samples/card-colour.jpg"));

const types = { ".js": "text/javascript", ".wasm": "application/wasm" };
const folders = { package: join(web, "package/dist"), opencv: join(here, "node_modules/@techstark/opencv-js/dist") };
const server = createServer((request, response) => {
    const [, space, name] = request.url.split("/");
    const body = space === "picture" ? readFileSync(pictures[+name]) : space in folders ? readFileSync(join(folders[space], name)) : "<title>compare</title>";
    response.writeHead(200, { "content-type": types[extname(request.url)] ?? "text/html" }).end(body);
});
await new Promise(ready => server.listen(0, "127.0.0.1", ready));
const browser = await chromium.launch({ executablePath: process.env.TAVRIX_BROWSER ?? "/usr/bin/chromium", args: [
    "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
    "--disable-component-update", "--disable-sync"] });
const page = await browser.newPage();
page.setDefaultTimeout(600_000);
await page.goto(`http://127.0.0.1:${server.address().port}/`);
await page.addScriptTag({ url: "/opencv/opencv.js" });
for (const [i, picture] of pictures.entries()) {
    const { width, height, rows } = await page.evaluate(measure, i);
    console.log(`${picture}: ${width} × ${height} pixels\n\n| | Tavrix | OpenCV.js | |\n|---|---:|---:|---:|`);
    for (const [name, ours, theirs] of rows) {
        console.log(`| ${name} | ${ours.toFixed(1)} ms | ${theirs.toFixed(1)} ms | ${(theirs / ours).toFixed(1)} |`);
    }
    console.log();
}
await browser.close();
server.close();

// Runs in the page.
async function measure(index) {
    const ROUNDS = 15;
    const { cv } = globalThis; // never to be awaited: its then() gives itself
    if (!cv.Mat) await new Promise(ready => cv.onRuntimeInitialized = ready);
    const { load, toRgba } = await import("/package/index.js");
    const tavrix = await load();
    const image = await createImageBitmap(await (await fetch(`/picture/${index}`)).blob());
    const pen = new OffscreenCanvas(image.width, image.height).getContext("2d");
    pen.drawImage(image, 0, 0);
    const rgba = pen.getImageData(0, 0, image.width, image.height);
    const gray = tavrix.gray(rgba);
    const bits = tavrix.binarize(gray, { mode: "otsu" });
    const { width, height } = gray;
    const inked = Uint8Array.from(toRgba(bits).data.filter((_, i) => i % 4 === 0), level => 255 - level);

    // From bytes to bytes; what a step makes is deleted as the package does by itself.
    const through = (source, type, step) => {
        const from = new cv.Mat(height, width, type), to = new cv.Mat();
        from.data.set(source);
        const result = step(from, to) ?? new Uint8Array(to.data);
        from.delete();
        to.delete();
        return result;
    };
    const square = side => cv.Mat.ones(side, side, cv.CV_8U);
    const morph = (operation, side) => (from, to) => {
        const kernel = square(side);
        cv.morphologyEx(from, to, operation, kernel);
        kernel.delete();
    };
    const boxes = (from, to) => {
        const stats = new cv.Mat(), middles = new cv.Mat(), found = [];
        cv.connectedComponentsWithStats(from, to, stats, middles, 8);
        for (let i = 1; i < stats.rows; ++i) {
            const [left, top, w, h, pixels] = stats.intPtr(i);
            found.push({ left, top, right: left + w - 1, bottom: top + h - 1, pixels });
        }
        stats.delete();
        middles.delete();
        return found;
    };
    const turn = degrees => (from, to) => {
        const turning = cv.getRotationMatrix2D(new cv.Point(width / 2, height / 2), -degrees, 1);
        const [c, s] = [Math.abs(turning.data64F[0]), Math.abs(turning.data64F[1])];
        const size = new cv.Size(Math.round(width * c + height * s), Math.round(width * s + height * c));
        turning.data64F[2] += (size.width - width) / 2;
        turning.data64F[5] += (size.height - height) / 2;
        cv.warpAffine(from, to, turning, size, cv.INTER_LINEAR, cv.BORDER_CONSTANT, new cv.Scalar(255, 255, 255, 255));
        turning.delete();
    };
    const cases = [
        ["gray of RGBA", () => tavrix.gray(rgba), () => through(rgba.data, cv.CV_8UC4, (from, to) => cv.cvtColor(from, to, cv.COLOR_RGBA2GRAY))],
        ["Otsu", () => tavrix.binarize(gray, { mode: "otsu" }),
         () => through(gray.data, cv.CV_8UC1, (from, to) => void cv.threshold(from, to, 0, 255, cv.THRESH_OTSU))],
        ["mean of 3 × 3", () => tavrix.morph(gray, "smooth"),
         () => through(gray.data, cv.CV_8UC1, (from, to) => cv.blur(from, to, new cv.Size(3, 3)))],
        ["opening, 3 × 3", () => tavrix.morph(bits, "open"), () => through(inked, cv.CV_8UC1, morph(cv.MORPH_OPEN, 3))],
        ["dilation, 15 × 15", () => tavrix.morph(bits, "dilate"), () => through(inked, cv.CV_8UC1, morph(cv.MORPH_DILATE, 15))],
        ["components", () => tavrix.components(bits), () => through(inked, cv.CV_8UC1, boxes)],
        ["rotation, gray", () => tavrix.rotate(gray, 7.5), () => through(gray.data, cv.CV_8UC1, turn(7.5))],
        ["rotation, colour", () => tavrix.rotate(rgba, 7.5), () => through(rgba.data, cv.CV_8UC4, turn(7.5))],
        ["quarter turn, gray", () => tavrix.rotate(gray, 90),
         () => through(gray.data, cv.CV_8UC1, (from, to) => cv.rotate(from, to, cv.ROTATE_90_CLOCKWISE))],
    ];
    const rows = [];
    for (const [name, ...sides] of cases) {
        const times = sides.map(() => []);
        for (let round = 0; round < ROUNDS + 3; ++round) {
            sides.forEach((side, i) => {
                const begin = performance.now();
                side();
                if (round >= 3) times[i].push(performance.now() - begin); // the first ones are compiled meanwhile
            });
            await new Promise(resume => setTimeout(resume));
        }
        rows.push([name, ...times.map(list => list.sort((a, b) => a - b)[Math.floor(list.length / 4)])]);
    }
    return { width, height, rows };
}
