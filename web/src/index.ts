// SPDX-License-Identifier: MIT
// Tavrix as a package: clean black and white, components, text lines and the logo from pictures of business
// cards and similar small documents. Runs in browsers, workers and Node; see README.md.
import { Core, TavrixError, rowBytes } from "./core.js";
import type { Layout, Work } from "./core.js";

export { TavrixError };
export { encodePdf, encodePng, encodeTiff, faxRows } from "./formats.js";
export type { FileOptions } from "./formats.js";

/** Pixels as a canvas or a decoder gives them, rows from the top: gray, RGB or RGBA by the number of bytes. */
export interface Pixels {
    readonly width: number;
    readonly height: number;
    readonly data: Uint8Array | Uint8ClampedArray;
}

/** Black and white: rows from the top of whole bytes, the leftmost pixel in the highest bit, 1 is white. */
export interface Bits {
    readonly width: number;
    readonly height: number;
    readonly bits: Uint8Array;
}

export interface BlackAndWhite extends Bits {
    /** What may have got lost, in plain words; mostly empty. */
    readonly warnings: readonly string[];
    /** Of the automatic mode: the share of the black pixels that belong to letters in rows, 0 to 1. */
    readonly confidence?: number;
}

/** Inclusive columns and rows, row 0 on top. */
export interface Box {
    readonly left: number;
    readonly top: number;
    readonly right: number;
    readonly bottom: number;
}

export interface Component extends Box {
    /** Black ones. */
    readonly pixels: number;
}

export interface Line extends Box {
    /** Of its characters, in pixels; 0 where not measured. */
    readonly height: number;
    readonly components: readonly Box[];
}

export interface Card {
    readonly picture: BlackAndWhite;
    readonly components: readonly Component[];
    /** Text lines, from top to bottom. */
    readonly lines: readonly Line[];
    /** The main text line. */
    readonly trueLine: Box | null;
    readonly logo: Box | null;
}

const MODES = { auto: -1, local: 0, otsu: 1, midrange: 2, peaks: 3, gradient: 4, regions: 5, isodata: 6, lines: 8, sharp: 9 };
const TURNS = { none: 0, right: 1, half: 2, left: 3, flip: 4, mirror: 5 };
const FILTERS = { edge: 0, open: 1, close: 2, smooth: 3, sharpen: 4, dilate: 5 };
const BIT_FILTERS = ["open", "close", "dilate"];
const MAX_SIDE = 32767; // pixels

export type Mode = keyof typeof MODES;
/** A quarter to the right, half a turn, a quarter to the left, upside down, or mirrored and then to the left. */
export type TurnCode = keyof typeof TURNS;
export type Filter = keyof typeof FILTERS;

/** The automatic mode first. */
export const modes = Object.keys(MODES) as readonly Mode[];

export interface BinarizeOptions {
    mode?: Mode;
    /** The block-wise variant of the mode; neither "auto" nor "sharp" has one. */
    byBlocks?: boolean;
}

export type Source = string | URL | Response | BufferSource | WebAssembly.Module;

/** Loads the module: the tavrix.wasm beside this file, or what is named. */
export async function load(source: Source = new URL("tavrix.wasm", import.meta.url)): Promise<Tavrix> {
    return new Tavrix(new Core(await compile(source)));
}

async function compile(source: Source): Promise<WebAssembly.Module> {
    if (source instanceof WebAssembly.Module) return source;
    if (source instanceof ArrayBuffer || ArrayBuffer.isView(source)) return WebAssembly.compile(source);
    const url = source instanceof Response ? source.url : String(source);
    if (url.startsWith("file:") && typeof window === "undefined") {
        const { readFile } = await import(/* webpackIgnore: true */ "node:fs/promises");
        return WebAssembly.compile(await readFile(new URL(url)));
    }
    const answer = source instanceof Response ? source : await fetch(url);
    if (!answer.ok) throw new TavrixError(`${url} cannot be loaded: ${answer.status} ${answer.statusText}`);
    return WebAssembly.compile(await answer.arrayBuffer());
}

/** One module. Calls run on the caller's thread: use one in a worker for large pictures. */
export class Tavrix {
    #core: Core;

    /** Use load. */
    constructor(core: Core) {
        this.#core = core;
    }

    /** What pictures a mode is for, in words. */
    suits(mode: Mode): string {
        return this.#core.suits(codeOf(MODES, mode, "mode"));
    }

    /** The picture in black and white; one that is so already comes back as it is. */
    binarize(picture: Pixels | Bits, { mode = "auto", byBlocks = false }: BinarizeOptions = {}): BlackAndWhite {
        const code = codeOf(MODES, mode, "mode");
        if (byBlocks && (mode === "auto" || mode === "sharp")) throw new TavrixError(`mode ${mode} has no block-wise variant`);
        return this.#run(picture, grayDepth, (exports, work, check) => {
            check(exports.ToBits(work, code, Number(byBlocks)));
            return this.#blackAndWhite(exports.Confidence(work), work);
        });
    }

    /** All that Tavrix finds on a card. */
    card(picture: Pixels | Bits, { mode = "auto" }: { mode?: Mode } = {}): Card {
        const code = codeOf(MODES, mode, "mode");
        return this.#run(picture, grayDepth, (exports, work, check) => {
            check(exports.Card(work, code));
            const reader = new Reader(this.#core.numbers(work));
            return {
                picture: this.#blackAndWhite(exports.Confidence(work), work),
                components: reader.list(() => reader.component()),
                lines: reader.list(() => ({
                    ...reader.box(), height: reader.next(),
                    components: reader.list(() => reader.component()).map(({ pixels: _, ...box }) => box),
                })),
                trueLine: reader.next() !== 0 ? reader.box() : null,
                logo: reader.next() !== 0 ? reader.box() : null,
            };
        });
    }

    /** The 8-connected black components; a picture that is not black and white is made so first. */
    components(picture: Pixels | Bits, { mode = "auto" }: { mode?: Mode } = {}): Component[] {
        const code = codeOf(MODES, mode, "mode");
        return this.#run(picture, grayDepth, (exports, work, check) => {
            check(exports.Components(work, code));
            const reader = new Reader(this.#core.numbers(work));
            return reader.list(() => reader.component());
        });
    }

    /** Luminance, a byte a pixel. */
    gray(picture: Pixels): Pixels {
        return this.#run(picture, grayDepth, (_exports, work) => this.#pixels(work));
    }

    /**
     * Turns by any angle, clockwise as seen, onto white: RGBA for colour, gray for gray. Multiples of 90 degrees
     * are exact.
     */
    rotate(picture: Pixels, degrees: number): Pixels {
        if (!Number.isFinite(degrees)) throw new TavrixError(`${degrees} is no angle in degrees`);
        return this.#run(picture, ownDepth, (exports, work, check) => {
            check(exports.Turn(work, degrees));
            return this.#pixels(work);
        });
    }

    /** Cuts a box out of a black and white picture, all of it unless one is given, and turns it. */
    turn(picture: Bits, code: TurnCode, box?: Box): Bits {
        const number = codeOf(TURNS, code, "turn");
        if (!isBits(picture)) throw new TavrixError("turn takes black and white pictures; rotate takes the others");
        const { left, top, right, bottom } = box ?? { left: 0, top: 0, right: picture.width - 1, bottom: picture.height - 1 };
        if (!(left <= right && top <= bottom && left >= 0 && top >= 0 && right < picture.width && bottom < picture.height)) {
            throw new TavrixError(`the box ${left},${top} to ${right},${bottom} is not within ${picture.width} × ${picture.height} pixels`);
        }
        return this.#run(picture, ownDepth, (exports, work, check) => {
            check(exports.TurnBox(work, left, top, right, bottom, number));
            return this.#bits(work);
        });
    }

    /** A neighbourhood operation: edge, smooth and sharpen of gray; open, close and dilate of black and white. */
    morph(picture: Bits, filter: "open" | "close" | "dilate"): Bits;
    morph(picture: Pixels, filter: "edge"): Bits;
    morph(picture: Pixels, filter: "smooth" | "sharpen"): Pixels;
    morph(picture: Pixels | Bits, filter: Filter): Pixels | Bits {
        const code = codeOf(FILTERS, filter, "filter");
        const wantsBits = BIT_FILTERS.includes(filter);
        if (wantsBits !== isBits(picture)) {
            throw new TavrixError(`${filter} takes ${wantsBits ? "black and white pictures: binarize first" : "gray or colour pictures"}`);
        }
        return this.#run(picture, grayDepth, (exports, work, check) => {
            check(exports.Morph(work, code));
            return exports.Depth(work) === 1 ? this.#bits(work) : this.#pixels(work);
        });
    }

    /** A white margin around a black and white picture: 5 pixels, more where its smaller side is below 32. */
    pad(picture: Bits): Bits {
        if (!isBits(picture)) throw new TavrixError("pad takes black and white pictures: binarize first");
        return this.#run(picture, ownDepth, (exports, work, check) => {
            check(exports.AddMargin(work));
            return this.#bits(work);
        });
    }

    #run<Result>(picture: Pixels | Bits, depthOf: (layout: Layout) => number,
                 body: (exports: Parameters<Parameters<Core["work"]>[3]>[0], work: Work, check: (status: number) => void) => Result) {
        const layout = layoutOf(picture);
        const { width, height } = picture;
        return this.#core.work(width, height, depthOf(layout), (exports, work) => {
            this.#core.put(work, width, height, layout, isBits(picture) ? picture.bits : picture.data);
            return body(exports, work, status => this.#core.check(status, width, height));
        });
    }

    #bits(work: Work): Bits {
        const { width, height, pixels } = this.#core.get(work);
        return { width, height, bits: new Uint8Array(pixels.buffer) };
    }

    #blackAndWhite(confidence: number, work: Work): BlackAndWhite {
        return { ...this.#bits(work), warnings: this.#core.warnings(work), ...(confidence >= 0 ? { confidence } : {}) };
    }

    #pixels(work: Work): Pixels {
        const { width, height, pixels } = this.#core.get(work);
        return { width, height, data: pixels };
    }
}

/** The picture as a canvas takes it: new ImageData(rgba.data, rgba.width). */
export function toRgba({ width, height, bits }: Bits): { width: number; height: number; data: Uint8ClampedArray<ArrayBuffer> } {
    const pixels = new Uint32Array(width * height);
    const view = new DataView(new ArrayBuffer(4));
    view.setUint32(0, 0x000000FF);
    const black = new Uint32Array(view.buffer)[0]!;
    const stride = rowBytes(0, width);
    for (let y = 0, to = 0; y < height; ++y) {
        for (let x = 0; x < width; ++x) pixels[to++] = bits[y * stride + (x >> 3)]! & 0x80 >> (x & 7) ? 0xFFFFFFFF : black;
    }
    return { width, height, data: new Uint8ClampedArray(pixels.buffer) };
}

const grayDepth = (layout: Layout) => (layout === 0 ? 1 : 8);
const ownDepth = (layout: Layout) => (layout === 0 ? 1 : layout === 1 ? 8 : 24);

function isBits(picture: Pixels | Bits): picture is Bits {
    return "bits" in picture;
}

function codeOf(codes: Record<string, number>, name: string, kind: string): number {
    if (Object.hasOwn(codes, name)) return codes[name]!;
    throw new TavrixError(`there is no ${kind} ${JSON.stringify(name)}: one of ${Object.keys(codes).join(", ")}`);
}

// A picture's layout, once everything about it fits.
function layoutOf(picture: Pixels | Bits): Layout {
    const { width, height } = picture;
    const isSide = (side: unknown) => Number.isInteger(side) && (side as number) >= 1 && (side as number) <= MAX_SIDE;
    if (!isSide(width) || !isSide(height)) {
        throw new TavrixError(`a picture of ${width} × ${height} pixels: sides must be 1 to ${MAX_SIDE}`);
    }
    const data = isBits(picture) ? picture.bits : picture.data;
    if (!(data instanceof Uint8Array || data instanceof Uint8ClampedArray)) {
        throw new TavrixError("pixels must be a Uint8Array or a Uint8ClampedArray");
    }
    const layouts: Layout[] = isBits(picture) ? [0] : [1, 3, 4];
    const found = layouts.find(layout => data.length === rowBytes(layout, width) * height);
    if (found === undefined) {
        const wanted = isBits(picture) ? `${rowBytes(0, width) * height}`
                                       : `${layouts.map(layout => layout * width * height).join(", ")} (gray, RGB, RGBA)`;
        throw new TavrixError(`${data.length} bytes for ${width} × ${height} pixels: it must be ${wanted}`);
    }
    return found;
}

// Reads what the module wrote, number by number.
class Reader {
    #numbers: Int32Array;
    #at = 0;

    constructor(numbers: Int32Array) {
        this.#numbers = numbers;
    }

    next(): number {
        return this.#numbers[this.#at++]!;
    }

    box(): Box {
        return { left: this.next(), top: this.next(), right: this.next(), bottom: this.next() };
    }

    component(): Component {
        return { ...this.box(), pixels: this.next() };
    }

    list<Item>(read: () => Item): Item[] {
        return Array.from({ length: this.next() }, read);
    }
}
