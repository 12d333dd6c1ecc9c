// SPDX-License-Identifier: MIT
// What the page and its worker say to each other.
import type { Bits, Box, Mode } from "../src/index.js";

export type FileFormat = "png" | "tiff" | "pdf";

export type Order =
    | { kind: "start"; module: WebAssembly.Module }
    | { kind: "picture"; id: number; file: Blob }
    | { kind: "file"; id: number; mode: Mode; format: FileFormat };

export interface Findings {
    lines: readonly Box[];
    trueLine: Box | null;
    logo: Box | null;
    components: number;
}

export type Answer =
    | { kind: "ready"; modes: readonly { mode: Mode; suits: string }[] }
    | { kind: "original"; id: number; width: number; height: number; preview: ImageBitmap; whole?: ImageBitmap }
    | { kind: "glance"; id: number; preview: ImageBitmap } // the automatic result of a reduced picture
    | { kind: "result"; id: number; mode: Mode; bits: Bits; preview: ImageBitmap; warnings: readonly string[];
        confidence: number | undefined; milliseconds: number; blackShare: number; findings?: Findings }
    | { kind: "done"; id: number }
    | { kind: "failed"; id: number; reason: string }
    | { kind: "file"; mode: Mode; format: FileFormat; bytes: Uint8Array<ArrayBuffer> };
