// SPDX-License-Identifier: MIT
// The WebAssembly module and its memory. Everything that a call takes there is given back before it returns.

/** What Tavrix cannot do, in words for the person who asked for it. */
export class TavrixError extends Error {
    override name = "TavrixError";
}

export type Work = number;

/** How pixels lie in memory: bytes a pixel, or 0 for bits. */
export type Layout = 0 | 1 | 3 | 4;

interface Exports {
    memory: WebAssembly.Memory;
    _initialize(): void;
    Allocate(bytes: number): number;
    Free(address: number): void;
    Begin(width: number, height: number, bitCount: number): Work;
    End(work: Work): void;
    Put(work: Work, first: number, count: number, layout: Layout, pixels: number): number;
    Get(work: Work, first: number, count: number, pixels: number): void;
    Width(work: Work): number;
    Height(work: Work): number;
    Depth(work: Work): number;
    Confidence(work: Work): number;
    Numbers(work: Work): number;
    NumberCount(work: Work): number;
    Warning(work: Work, index: number): number;
    Reason(): number;
    Suits(mode: number): number;
    ToBits(work: Work, mode: number, byBlocks: number): number;
    Components(work: Work, mode: number): number;
    Card(work: Work, mode: number): number;
    Turn(work: Work, degrees: number): number;
    TurnBox(work: Work, left: number, top: number, right: number, bottom: number, code: number): number;
    Morph(work: Work, operation: number): number;
    AddMargin(work: Work): number;
}

const NO_MEMORY = 1;
const STRIP_BYTES = 1 << 20; // pixels cross over in strips of about that size
const KEPT_BYTES = 512 << 20; // memory of a module only grows: one that has grown beyond that is replaced

// The library asks its system for nothing but memory. Files that it would write and words that it would
// print have nowhere to go.
function imports(module: WebAssembly.Module): WebAssembly.Imports {
    const NOT_THERE = 52;
    const found: Record<string, Record<string, (...words: number[]) => number>> = {};
    for (const { module: space, name } of WebAssembly.Module.imports(module)) {
        (found[space] ??= {})[name] = () => (space === "env" ? -NOT_THERE : NOT_THERE);
    }
    return found;
}

export class Core {
    #module: WebAssembly.Module;
    #exports!: Exports;

    constructor(module: WebAssembly.Module) {
        this.#module = module;
        this.#renew();
    }

    #renew() {
        this.#exports = new WebAssembly.Instance(this.#module, imports(this.#module)).exports as unknown as Exports;
        this.#exports._initialize();
    }

    /** Runs a body on a new picture, which is gone afterwards. */
    work<Result>(width: number, height: number, bitCount: number, body: (exports: Exports, work: Work) => Result): Result {
        try {
            const work = this.#exports.Begin(width, height, bitCount) >>> 0;
            if (work === 0) this.check(NO_MEMORY, width, height);
            try {
                return body(this.#exports, work);
            } finally {
                this.#exports.End(work);
            }
        } catch (error) {
            // The module itself gave up: what it holds is of no more use.
            if (!(error instanceof TavrixError)) this.#renew();
            throw error;
        } finally {
            if (this.#exports.memory.buffer.byteLength > KEPT_BYTES) this.#renew();
        }
    }

    check(status: number, width: number, height: number) {
        if (status === 0) return;
        throw new TavrixError(status === NO_MEMORY ? `a picture of ${width} × ${height} pixels needs more memory than there is`
                                                   : this.#text(this.#exports.Reason()));
    }

    put(work: Work, width: number, height: number, layout: Layout, pixels: ArrayLike<number> & ArrayBufferView) {
        const bytes = new Uint8Array(pixels.buffer, pixels.byteOffset, pixels.byteLength);
        this.#strips(width, height, layout, (address, first, count, stride) => {
            this.#bytes(address, count * stride).set(bytes.subarray(first * stride, (first + count) * stride));
            this.check(this.#exports.Put(work, first, count, layout, address), width, height);
        });
    }

    get(work: Work): { width: number; height: number; layout: Layout; pixels: Uint8ClampedArray<ArrayBuffer> } {
        const width = this.#exports.Width(work);
        const height = this.#exports.Height(work);
        const layout = ({ 1: 0, 8: 1, 24: 4 } as const)[this.#exports.Depth(work) as 1 | 8 | 24];
        const pixels = new Uint8ClampedArray(rowBytes(layout, width) * height);
        this.#strips(width, height, layout, (address, first, count, stride) => {
            this.#exports.Get(work, first, count, address);
            pixels.set(this.#bytes(address, count * stride), first * stride);
        });
        return { width, height, layout, pixels };
    }

    numbers(work: Work): Int32Array {
        const first = this.#exports.Numbers(work) >>> 0;
        return new Int32Array(this.#exports.memory.buffer, first, this.#exports.NumberCount(work)).slice();
    }

    suits(mode: number): string {
        return this.#text(this.#exports.Suits(mode));
    }

    warnings(work: Work): string[] {
        const found = [];
        for (let address; (address = this.#exports.Warning(work, found.length)) !== 0;) found.push(this.#text(address));
        return found;
    }

    #strips(width: number, height: number, layout: Layout,
            body: (address: number, first: number, count: number, stride: number) => void) {
        const stride = rowBytes(layout, width);
        const most = Math.max(1, Math.min(height, Math.floor(STRIP_BYTES / stride)));
        const address = this.#exports.Allocate(most * stride) >>> 0;
        if (address === 0) this.check(NO_MEMORY, width, height);
        try {
            for (let first = 0; first < height; first += most) body(address, first, Math.min(most, height - first), stride);
        } finally {
            this.#exports.Free(address);
        }
    }

    #bytes(address: number, count: number) {
        return new Uint8Array(this.#exports.memory.buffer, address, count);
    }

    #text(address: number): string {
        const from = address >>> 0;
        const bytes = new Uint8Array(this.#exports.memory.buffer, from);
        return new TextDecoder().decode(bytes.slice(0, bytes.indexOf(0)));
    }
}

export function rowBytes(layout: Layout, width: number): number {
    return layout === 0 ? Math.ceil(width / 8) : width * layout;
}
