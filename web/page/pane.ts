// SPDX-License-Identifier: MIT
// A picture with its caption: draws the part that the view shows.
import { toRgba } from "../src/index.js";
import type { Bits } from "../src/index.js";
import type { Findings } from "./messages.js";
import type { View } from "./view.js";

const LINE_COLOUR = "#0b6bcb";
const LOGO_COLOUR = "#c2410c";
const CLEAR_FROM = 3; // device pixels a picture's pixel, from which on those are shown as squares

export interface Shown {
    width: number;
    height: number;
    preview: ImageBitmap; // the whole, reduced
    whole?: ImageBitmap | Bits;
}

export class Pane {
    readonly figure = document.createElement("figure");
    readonly caption = document.createElement("figcaption");
    findings: Findings | undefined;
    #canvas = document.createElement("canvas");
    #view: View;
    #shown: Shown | undefined;
    #isSeen = true;

    constructor(readonly name: string, view: View) {
        this.#view = view;
        this.#canvas.tabIndex = 0;
        this.#canvas.setAttribute("role", "img");
        this.#canvas.setAttribute("aria-label", name);
        this.#canvas.setAttribute("aria-describedby", "help");
        const title = document.createElement("h3");
        title.textContent = name;
        this.caption.append(title);
        this.figure.append(this.#canvas, this.caption);
        this.figure.className = "waiting";
        view.attach(this.#canvas, () => this.#sizeOf(view.zoom, 1));
        new ResizeObserver(() => this.draw()).observe(this.#canvas);
        new IntersectionObserver(entries => {
            this.#isSeen = entries.at(-1)!.isIntersecting;
            this.draw();
        }, { rootMargin: "50%" }).observe(this.#canvas);
    }

    show(shown: Shown) {
        this.close();
        this.#shown = shown;
        this.figure.classList.remove("waiting");
        this.draw();
    }

    /** Something to look at until the picture comes, as large as another's. */
    glance(preview: ImageBitmap, like: Pane) {
        const { width, height } = like.#shown!;
        this.#shown = { width, height, preview };
        this.draw();
    }

    close() {
        this.#shown?.preview.close();
        if (this.#shown?.whole instanceof ImageBitmap) this.#shown.whole.close();
        this.#shown = undefined;
    }

    draw() {
        const canvas = this.#canvas, shown = this.#shown;
        if (shown === undefined || !this.#isSeen) return;
        const ratio = devicePixelRatio;
        canvas.width = Math.max(1, Math.round(canvas.clientWidth * ratio));
        canvas.height = Math.max(1, Math.round(canvas.clientHeight * ratio));
        const pen = canvas.getContext("2d")!;
        const scale = this.#sizeOf(this.#view.zoom, ratio).width / shown.width;
        const left = canvas.width / 2 - this.#view.x * shown.width * scale;
        const top = canvas.height / 2 - this.#view.y * shown.height * scale;
        pen.imageSmoothingEnabled = scale < CLEAR_FROM;
        pen.imageSmoothingQuality = "medium";
        const whole = scale * shown.width <= shown.preview.width ? shown.preview : shown.whole ?? shown.preview;
        if (whole instanceof ImageBitmap) {
            pen.drawImage(whole, left, top, shown.width * scale, shown.height * scale);
        } else {
            const x = Math.max(0, Math.floor(-left / scale / 8) * 8), y = Math.max(0, Math.floor(-top / scale));
            const width = Math.min(shown.width, Math.ceil((canvas.width - left) / scale)) - x;
            const height = Math.min(shown.height, Math.ceil((canvas.height - top) / scale)) - y;
            const part = partOf(whole, x, y, width, height);
            pen.drawImage(part, left + x * scale, top + y * scale, width * scale, height * scale);
        }
        if (this.#view.hasMarks && this.findings !== undefined) this.#mark(pen, scale, left, top, ratio);
    }

    #mark(pen: CanvasRenderingContext2D, scale: number, left: number, top: number, ratio: number) {
        const { lines, trueLine, logo } = this.findings!;
        const frame = (box: { left: number; top: number; right: number; bottom: number }, width: number) => {
            pen.lineWidth = width * ratio;
            const out = pen.lineWidth / 2 + ratio;
            pen.strokeRect(left + box.left * scale - out, top + box.top * scale - out,
                           (box.right + 1 - box.left) * scale + 2 * out, (box.bottom + 1 - box.top) * scale + 2 * out);
        };
        pen.strokeStyle = LINE_COLOUR;
        for (const line of lines) frame(line, 1.5);
        if (trueLine !== null) frame(trueLine, 3.5);
        pen.strokeStyle = LOGO_COLOUR;
        pen.setLineDash([7 * ratio, 4 * ratio]);
        if (logo !== null) frame(logo, 2.5);
        pen.setLineDash([]);
    }

    // The whole picture's size on the canvas.
    #sizeOf(zoom: number, ratio: number): { width: number; height: number } {
        const { width, height } = this.#shown ?? { width: 1, height: 1 };
        const fit = Math.min(this.#canvas.clientWidth / width, this.#canvas.clientHeight / height);
        return { width: width * fit * zoom * ratio, height: height * fit * zoom * ratio };
    }
}

const scratch = new OffscreenCanvas(1, 1);

// Pixels from column x on, a multiple of 8.
function partOf({ width: all, bits }: Bits, x: number, y: number, width: number, height: number): OffscreenCanvas {
    const from = Math.ceil(all / 8), to = Math.ceil(width / 8);
    const part = new Uint8Array(to * height);
    for (let row = 0; row < height; ++row) {
        const first = (y + row) * from + x / 8;
        part.set(bits.subarray(first, first + to), row * to);
    }
    scratch.width = width;
    scratch.height = height;
    scratch.getContext("2d")!.putImageData(new ImageData(toRgba({ width, height, bits: part }).data, width), 0, 0);
    return scratch;
}
