// SPDX-License-Identifier: MIT
// All that takes time: decoding, Tavrix, previews and files.
import { encodePdf, encodePng, encodeTiff, load, modes } from "../src/index.js";
import type { BlackAndWhite, Mode, Pixels, Tavrix } from "../src/index.js";
import type { Answer, Findings, Order } from "./messages.js";

const PREVIEW_SIDE = 1600; // pixels, at most
const GLANCE_SIDE = 1100; // of the picture that gives a first impression of a large one
const GLANCE_FROM = 2_500_000; // pixels

let tavrix: Promise<Tavrix>;
let current = 0; // the picture that is worked on; an older one is given up
let results = new Map<Mode, BlackAndWhite>();

const answer = (message: Answer, moved: Transferable[] = []) => postMessage(message, { transfer: moved });

onmessage = async ({ data: order }: MessageEvent<Order>) => {
    try {
        if (order.kind === "start") await start(order.module);
        if (order.kind === "picture") await work(order.id, order.file);
        if (order.kind === "file") await makeFile(order);
    } catch (error) {
        answer({ kind: "failed", id: "id" in order ? order.id : 0, reason: error instanceof Error ? error.message : String(error) });
    }
};

async function start(module: WebAssembly.Module) {
    tavrix = load(module);
    const library = await tavrix;
    answer({ kind: "ready", modes: modes.map(mode => ({ mode, suits: library.suits(mode) })) });
    warmUp(library);
}

// The browser compiles the module's functions when they are first used, and better when they are used much.
function warmUp(library: Tavrix) {
    const pen = new OffscreenCanvas(600, 400).getContext("2d", { willReadFrequently: true })!;
    pen.font = "30px sans-serif";
    pen.fillStyle = "#fff";
    pen.fillRect(0, 0, 600, 400);
    pen.fillStyle = "#000";
    for (let y = 40; y < 400; y += 50) pen.fillText("Clean black and white", 40, y);
    library.card(library.gray(pen.getImageData(0, 0, 600, 400)));
}

async function work(id: number, file: Blob) {
    current = id;
    results = new Map();
    const library = await tavrix;
    const whole = await createImageBitmap(file).catch(() => {
        throw new Error("this browser cannot read it as a picture");
    });
    const { width, height } = whole;
    const preview = paint(whole, PREVIEW_SIDE).canvas.transferToImageBitmap();
    const first = await createImageBitmap(preview);
    answer({ kind: "original", id, width, height, preview: first }, [first]);
    if (width * height > GLANCE_FROM) {
        const { preview: glance } = reduce(library.binarize(library.gray(pixelsOf(preview, GLANCE_SIDE))));
        answer({ kind: "glance", id, preview: glance }, [glance]);
    }
    const gray = library.gray(pixelsOf(whole, Math.max(width, height)));
    answer({ kind: "original", id, width, height, preview, whole }, [preview, whole]);
    for (const mode of modes) {
        if (current !== id) return;
        const begin = performance.now();
        let found: Findings | undefined;
        let picture: BlackAndWhite;
        if (mode === "auto") {
            const card = library.card(gray);
            picture = card.picture;
            found = { lines: card.lines, trueLine: card.trueLine, logo: card.logo, components: card.components.length };
        } else {
            picture = library.binarize(gray, { mode });
        }
        const milliseconds = performance.now() - begin;
        results.set(mode, picture);
        const { preview, blackShare } = reduce(picture);
        const { width, height, bits, warnings, confidence } = picture;
        answer({ kind: "result", id, mode, bits: { width, height, bits }, preview, warnings, confidence, milliseconds, blackShare,
                 ...(found ? { findings: found } : {}) }, [preview]);
        await new Promise(resume => setTimeout(resume)); // orders may have come in
    }
    answer({ kind: "done", id });
}

// The picture on white, its longer side at most so many pixels.
function paint(picture: ImageBitmap, side: number): OffscreenCanvasRenderingContext2D {
    const ratio = Math.min(1, side / Math.max(picture.width, picture.height));
    const [width, height] = [picture.width, picture.height].map(length => Math.max(1, Math.round(length * ratio))) as [number, number];
    const pen = new OffscreenCanvas(width, height).getContext("2d", { willReadFrequently: true });
    if (pen === null) throw new Error(`${width} × ${height} pixels are more than this browser draws`);
    pen.fillStyle = "#fff";
    pen.fillRect(0, 0, width, height);
    pen.imageSmoothingQuality = "medium";
    pen.drawImage(picture, 0, 0, width, height);
    return pen;
}

function pixelsOf(picture: ImageBitmap, side: number): Pixels {
    const pen = paint(picture, side);
    const { width, height, data } = pen.getImageData(0, 0, pen.canvas.width, pen.canvas.height);
    return { width, height, data };
}

// The picture for the eye: so many pixels a side as one, gray by how many of them are black.
function reduce({ width, height, bits }: BlackAndWhite): { preview: ImageBitmap; blackShare: number } {
    const step = Math.ceil(Math.max(width, height) / PREVIEW_SIDE);
    const columns = Math.ceil(width / step), rows = Math.ceil(height / step);
    const stride = Math.ceil(width / 8);
    const shown = new ImageData(columns, rows);
    const pixels = new Uint32Array(shown.data.buffer);
    const counts = new Uint32Array(columns);
    let black = 0;
    for (let row = 0; row < rows; ++row) {
        counts.fill(0);
        const last = Math.min(height, (row + 1) * step);
        for (let y = row * step; y < last; ++y) {
            for (let byte = 0; byte < stride; ++byte) {
                let ink = ~bits[y * stride + byte]! & 0xFF;
                if (8 * byte + 8 > width) ink &= 0xFF00 >> (width - 8 * byte);
                while (ink !== 0) {
                    const bit = Math.clz32(ink) - 24;
                    ink ^= 0x80 >> bit;
                    ++counts[Math.floor((8 * byte + bit) / step)]!;
                    ++black;
                }
            }
        }
        for (let column = 0; column < columns; ++column) {
            const area = (last - row * step) * Math.min(step, width - column * step);
            const level = Math.round(255 * (1 - counts[column]! / area));
            pixels[row * columns + column] = 0xFF000000 | level * 0x010101;
        }
    }
    const canvas = new OffscreenCanvas(columns, rows);
    canvas.getContext("2d")!.putImageData(shown, 0, 0);
    return { preview: canvas.transferToImageBitmap(), blackShare: black / (width * height) };
}

async function makeFile({ id, mode, format }: Order & { kind: "file" }) {
    const picture = results.get(mode);
    if (id !== current || picture === undefined) return;
    const bytes = format === "png" ? await encodePng(picture) : format === "tiff" ? encodeTiff(picture) : encodePdf(picture);
    answer({ kind: "file", mode, format, bytes }, [bytes.buffer]);
}
