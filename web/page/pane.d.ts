import type { Bits } from "../src/index.js";
import type { Findings } from "./messages.js";
import type { View } from "./view.js";
export interface Shown {
    width: number;
    height: number;
    preview: ImageBitmap;
    whole: ImageBitmap | Bits;
}
export declare class Pane {
    #private;
    readonly name: string;
    readonly figure: HTMLElement;
    readonly caption: HTMLElement;
    findings: Findings | undefined;
    constructor(name: string, view: View);
    show(shown: Shown): void;
    close(): void;
    draw(): void;
}
