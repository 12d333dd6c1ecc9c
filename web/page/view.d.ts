export declare class View {
    #private;
    /** 1 shows the whole picture in a pane. */
    zoom: number;
    /** What lies in the middle of the pane, in shares of the picture. */
    x: number;
    y: number;
    /** Whether lines and logo are drawn. */
    hasMarks: boolean;
    constructor(changed: () => void);
    reset(): void;
    /** Zooms so that a point, in shares of the shown part from its middle, stays where it is. */
    scale(factor: number, atX?: number, atY?: number): void;
    step(direction: 1 | -1): void;
    /** Moves by shares of the shown part. */
    move(right: number, down: number): void;
    /** Lets a canvas move the view. sizeOf: the whole picture's size on it, in CSS pixels. */
    attach(canvas: HTMLCanvasElement, sizeOf: () => {
        width: number;
        height: number;
    }): void;
}
