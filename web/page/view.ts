// SPDX-License-Identifier: MIT
// The part of the picture that all panes show, and what moves it: mouse, wheel, fingers, keys.

const STEP = 1.5; // a press of + or -
const MOST = 40; // times the whole picture
const KEY_MOVE = 0.15; // of a pane

export class View {
    /** 1 shows the whole picture in a pane. */
    zoom = 1;
    /** What lies in the middle of the pane, in shares of the picture. */
    x = 0.5;
    y = 0.5;
    /** Whether lines and logo are drawn. */
    hasMarks = true;
    #changed: () => void;

    constructor(changed: () => void) {
        this.#changed = changed;
    }

    reset() {
        this.zoom = 1;
        this.x = this.y = 0.5;
        this.#changed();
    }

    /** Zooms so that a point, in shares of the shown part from its middle, stays where it is. */
    scale(factor: number, atX = 0, atY = 0) {
        const before = this.zoom;
        this.zoom = Math.min(MOST, Math.max(1, before * factor));
        this.move(atX * (this.zoom / before - 1), atY * (this.zoom / before - 1));
    }

    step(direction: 1 | -1) {
        this.scale(direction === 1 ? STEP : 1 / STEP);
    }

    /** Moves by shares of the shown part. */
    move(right: number, down: number) {
        const within = (middle: number) => Math.min(1 - 0.5 / this.zoom, Math.max(0.5 / this.zoom, middle));
        this.x = within(this.x + right / this.zoom);
        this.y = within(this.y + down / this.zoom);
        this.#changed();
    }

    /** Lets a canvas move the view. sizeOf: the whole picture's size on it, in CSS pixels. */
    attach(canvas: HTMLCanvasElement, sizeOf: () => { width: number; height: number }) {
        const fingers = new Map<number, PointerEvent>();
        const placeOf = (event: MouseEvent) => {
            const box = canvas.getBoundingClientRect(), size = sizeOf();
            return [(event.clientX - box.left - box.width / 2) / size.width, (event.clientY - box.top - box.height / 2) / size.height] as const;
        };
        const spread = () => {
            const [a, b] = [...fingers.values()] as [PointerEvent, PointerEvent];
            return Math.hypot(a.clientX - b.clientX, a.clientY - b.clientY);
        };
        canvas.addEventListener("pointerdown", event => {
            fingers.set(event.pointerId, event);
            canvas.setPointerCapture(event.pointerId);
        });
        canvas.addEventListener("pointermove", event => {
            const before = fingers.get(event.pointerId);
            if (before === undefined) return;
            const size = sizeOf(), apart = fingers.size === 2 ? spread() : 0;
            fingers.set(event.pointerId, event);
            this.move((before.clientX - event.clientX) / size.width / fingers.size, (before.clientY - event.clientY) / size.height / fingers.size);
            if (apart > 0) this.scale(spread() / apart, ...placeOf(event));
        });
        for (const end of ["pointerup", "pointercancel"] as const) {
            canvas.addEventListener(end, event => fingers.delete(event.pointerId));
        }
        canvas.addEventListener("dblclick", event => this.scale(2, ...placeOf(event)));
        canvas.addEventListener("wheel", event => {
            if (!event.ctrlKey && !event.metaKey) return;
            event.preventDefault();
            this.scale(Math.exp(-event.deltaY / 300), ...placeOf(event));
        }, { passive: false });
        canvas.addEventListener("keydown", event => {
            const moves: Record<string, () => void> = {
                "ArrowLeft": () => this.move(-KEY_MOVE, 0), "ArrowRight": () => this.move(KEY_MOVE, 0),
                "ArrowUp": () => this.move(0, -KEY_MOVE), "ArrowDown": () => this.move(0, KEY_MOVE),
                "+": () => this.step(1), "=": () => this.step(1), "-": () => this.step(-1), "0": () => this.reset(),
            };
            const move = moves[event.key];
            if (move === undefined || event.ctrlKey || event.metaKey || event.altKey) return;
            if (this.zoom === 1 && event.key.startsWith("Arrow")) return; // the page's own scrolling
            event.preventDefault();
            move();
        });
    }
}
