// SPDX-License-Identifier: MIT
// The package as npm packs and installs it, under Node: what it gives beside the command, what it refuses, the
// files that it writes as other programs read them.
import assert from "node:assert/strict";
import { existsSync, mkdirSync, readFileSync, statSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { before, test } from "node:test";
import { pathToFileURL } from "node:url";
import { SAMPLES, SOURCE, WEB, decoded, folder, python, run } from "./support.mjs";

const MOST_BYTES = 250_000;
const COMMAND = process.env.TAVRIX_COMMAND ?? join(SOURCE, "build/release/host/tavrix");
let tavrix, library;

before(async () => {
    const [{ filename }] = JSON.parse(run("npm", "pack", "--json", join(WEB, "package")));
    assert.ok(statSync(join(folder, filename)).size < MOST_BYTES, "the packed size");
    writeFileSync(join(folder, "package.json"), "{}");
    run("npm", "install", "--offline", "--no-audit", "--no-fund", `./${filename}`);
    library = await import(pathToFileURL(join(folder, "node_modules/tavrix/dist/index.js")));
    tavrix = await library.load();
});

test("the version and the types", () => {
    const { version, dependencies } = JSON.parse(readFileSync(join(folder, "node_modules/tavrix/package.json"), "utf8"));
    assert.match(readFileSync(join(SOURCE, "CMakeLists.txt"), "utf8"), new RegExp(`VERSION ${version} `));
    assert.equal(dependencies, undefined);
    writeFileSync(join(folder, "host.mts"), `import { load, type Card, type Mode } from "tavrix";
        const mode: Mode = "otsu";
        const card: Card = (await load()).card({ width: 1, height: 1, data: new Uint8Array(4) }, { mode });
        const left: number | undefined = card.logo?.left;
        // @ts-expect-error
        (await load()).binarize(card.picture, { mode: "best" }), left;`);
    run(process.execPath, join(SOURCE, "web/node_modules/typescript/bin/tsc"), "--noEmit", "--strict", "--target", "es2022",
        "--lib", "es2022,dom", "--module", "nodenext", "host.mts");
});

test("a card is what the command says", { skip: !existsSync(COMMAND) && "needs the command in build/release" }, () => {
    python("-c", "import sys; from PIL import Image; Image.open(sys.argv[1]).save('card.png')", join(SAMPLES, "card-colour.jpg"));
    const card = decoded("card.png");
    for (const mode of library.modes) {
        run(COMMAND, "binarize", "-m", mode, "card.png", "-o", `${mode}.png`);
        assert.ok(Buffer.from(tavrix.binarize(card, { mode }).bits).equals(decoded(`${mode}.png`).data), mode);
    }
    const said = JSON.parse(run(COMMAND, "card", "card.png"));
    const { lines, trueLine, logo, components } = tavrix.card(card);
    assert.deepEqual(lines, said.lines.map(({ box, characterHeight = 0, components }) =>
        ({ ...box, height: characterHeight, components: components.map(({ box }) => box) })));
    assert.deepEqual({ trueLine, logo }, { trueLine: said.trueLine, logo: said.logo });
    const all = JSON.parse(run(COMMAND, "components", "--json", "card.png")).blocks.flatMap(block => block.lines)
        .flatMap(line => line.components).map(({ box, pixels }) => ({ ...box, pixels }));
    assert.deepEqual(components, all);
    run(COMMAND, "rotate", "--angle", "-7.5", "card.png", "-o", "turned.png");
    assert.ok(Buffer.from(tavrix.rotate(card, -7.5).data).equals(decoded("turned.png", "RGBA").data), "rotate");
    run(COMMAND, "morph", "--op", "sharpen", "card.png", "-o", "sharp.png");
    assert.ok(Buffer.from(tavrix.morph(card, "sharpen").data).equals(decoded("sharp.png").data), "sharpen");
});

test("small pictures", () => {
    const gray = { width: 3, height: 2, data: Uint8Array.of(0, 200, 255, 250, 10, 240) };
    const bits = tavrix.binarize(gray, { mode: "isodata" });
    assert.deepEqual([bits.width, bits.height, ...bits.bits], [3, 2, 0b01100000, 0b10100000]);
    assert.deepEqual([...tavrix.turn(bits, "right").bits], [0b10000000, 0b01000000, 0b11000000]);
    assert.deepEqual([...tavrix.turn(bits, "half", { left: 1, top: 1, right: 2, bottom: 1 }).bits], [0b10000000]);
    assert.deepEqual([...tavrix.rotate(gray, 90).data], [250, 0, 10, 200, 240, 255]);
    assert.deepEqual([tavrix.pad(bits).width, tavrix.pad(bits).height], [73, 72]);
    assert.deepEqual(tavrix.components(bits), [{ left: 0, top: 0, right: 1, bottom: 1, pixels: 2 }]);
    assert.deepEqual([...library.toRgba(bits).data.slice(0, 8)], [0, 0, 0, 255, 255, 255, 255, 255]);
    const clear = { width: 2, height: 1, data: Uint8ClampedArray.of(9, 9, 9, 0, 255, 0, 0, 255) };
    assert.deepEqual([...tavrix.gray(clear).data], [255, 76], "a transparent pixel lies on white");
});

test("what cannot be done says why, and nothing is lost by it", () => {
    const picture = { width: 3, height: 4, data: new Uint8Array(12) };
    const bits = { width: 3, height: 4, bits: new Uint8Array(4) };
    for (const [call, words] of [
        [() => tavrix.binarize(picture, { mode: "best" }), /no mode "best": one of auto, local/],
        [() => tavrix.binarize(picture, { byBlocks: true }), /auto has no block-wise/],
        [() => tavrix.binarize({ ...picture, data: new Uint8Array(5) }), /5 bytes for 3 × 4 pixels: it must be 12, 36, 48/],
        [() => tavrix.binarize({ ...picture, data: [0] }), /must be a Uint8Array/],
        [() => tavrix.card({ ...picture, width: 40000 }), /40000 × 4 pixels: sides must be 1 to 32767/],
        [() => tavrix.morph(picture, "open"), /binarize first/],
        [() => tavrix.morph(bits, "edge"), /takes gray/],
        [() => tavrix.turn(bits, "right", { left: 0, top: 0, right: 3, bottom: 3 }), /not within 3 × 4/],
        [() => tavrix.rotate(picture, NaN), /no angle/],
        [() => tavrix.rotate({ width: 32767, height: 16000, data: new Uint8Array(32767 * 16000) }, 45), /needs more memory|refused/],
    ]) assert.throws(call, error => error instanceof library.TavrixError && words.test(error.message), String(call));
    assert.equal(tavrix.binarize(picture, { mode: "otsu" }).bits.length, 4);
});

test("memory is given back", () => {
    const picture = { width: 2000, height: 1500, data: new Uint8Array(3_000_000).map((_, i) => i * 7) };
    const held = () => process.memoryUsage().rss;
    for (let i = 0; i < 5; ++i) tavrix.binarize(picture, { mode: "otsu" });
    const before = held();
    for (let i = 0; i < 60; ++i) tavrix.binarize(picture, { mode: "otsu" });
    assert.ok(held() - before < 100e6, "60 pictures of 3 MB leave less than 100 MB");
});

test("TIFF, PNG and PDF are what was written", async () => {
    let state = 1;
    const draw = () => (state = state * 1103515245 + 12345 & 0x7FFFFFFF) >> 16;
    const make = (width, height, isWhite) => {
        const bits = new Uint8Array(Math.ceil(width / 8) * height);
        for (let y = 0; y < height; ++y) {
            for (let x = 0; x < width; ++x) if (isWhite(x, y)) bits[y * Math.ceil(width / 8) + (x >> 3)] |= 0x80 >> x % 8;
        }
        return { width, height, bits };
    };
    const pictures = [make(5300, 5300, (x, y) => x < y === (y % 2 === 0)), // every length of run in both colours
                      make(1, 1, () => true), make(1, 3, () => false), make(70, 9, () => true), make(64, 9, () => false)];
    for (const share of [2, 7, 60]) {
        for (const width of [7, 8, 33, 500]) pictures.push(make(width, 40, () => draw() % share !== 0));
    }
    mkdirSync(join(folder, "files"));
    for (const [i, picture] of pictures.entries()) {
        const place = join(folder, "files", String(i));
        writeFileSync(`${place}.bits`, picture.bits);
        writeFileSync(`${place}.tif`, library.encodeTiff(picture, { dpi: 300 }));
        writeFileSync(`${place}.png`, await library.encodePng(picture, { dpi: 300 }));
    }
    python("-c", `from PIL import Image
import pathlib
for path in pathlib.Path("files").glob("*.*[fg]"):
    image = Image.open(path)
    assert image.mode == "1" and round(image.info["dpi"][0]) == 300, (path, image.mode)
    assert path.suffix == ".png" or image.info["compression"] == "group4"
    assert image.tobytes() == path.with_suffix(".bits").read_bytes(), path`);
    const [page, other] = [pictures.at(-1), pictures[3]];
    writeFileSync(join(folder, "both.pdf"), library.encodePdf([page, other], { dpi: 72 }));
    run("pdfimages", "-png", "both.pdf", "page");
    for (const [i, picture] of [page, other].entries()) {
        const shown = decoded(`page-00${i}.png`);
        assert.deepEqual([shown.width, shown.height], [picture.width, picture.height]);
        assert.ok(Buffer.from(shown.data).equals(picture.bits), `page ${i + 1}`);
    }
});
