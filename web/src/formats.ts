// SPDX-License-Identifier: MIT
// Black and white pictures as files: PNG, TIFF and PDF with Group 4.
import { faxRows } from "./fax.js";
import type { Bits } from "./index.js";

export { faxRows };

export interface FileOptions {
    /** Dots per inch; left out where unknown, which PDF takes for 300. */
    dpi?: number;
}

const METRES_PER_INCH = 0.0254;
const POINTS_PER_INCH = 72;
const USUAL_DPI = 300;

/** A 1-bit PNG file. */
export async function encodePng({ width, height, bits }: Bits, { dpi }: FileOptions = {}): Promise<Uint8Array<ArrayBuffer>> {
    const stride = Math.ceil(width / 8);
    const rows = new Uint8Array((stride + 1) * height); // a byte before each row: not filtered
    for (let y = 0; y < height; ++y) rows.set(bits.subarray(y * stride, (y + 1) * stride), y * (stride + 1) + 1);
    const head = new DataView(new ArrayBuffer(13));
    head.setUint32(0, width);
    head.setUint32(4, height);
    head.setUint8(8, 1);
    const density = new DataView(new ArrayBuffer(9));
    const perMetre = Math.round((dpi ?? 0) / METRES_PER_INCH);
    density.setUint32(0, perMetre);
    density.setUint32(4, perMetre);
    density.setUint8(8, 1);
    const packed = new Response(new Blob([rows]).stream().pipeThrough(new CompressionStream("deflate")));
    return joined([new Uint8Array([0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A]), chunk("IHDR", new Uint8Array(head.buffer)),
                   ...(dpi ? [chunk("pHYs", new Uint8Array(density.buffer))] : []),
                   chunk("IDAT", new Uint8Array(await packed.arrayBuffer())), chunk("IEND", new Uint8Array())]);
}

function chunk(name: string, data: Uint8Array): Uint8Array {
    const body = joined([new TextEncoder().encode(name), data]);
    const ends = new DataView(new ArrayBuffer(8));
    ends.setUint32(0, data.length);
    ends.setUint32(4, checksum(body));
    return joined([new Uint8Array(ends.buffer, 0, 4), body, new Uint8Array(ends.buffer, 4)]);
}

// The cyclic redundancy check of PNG, a table entry a byte.
const CRC_TABLE = Int32Array.from({ length: 256 }, (_, byte) => {
    for (let bit = 0; bit < 8; ++bit) byte = byte >>> 1 ^ (byte & 1 ? 0xEDB88320 : 0);
    return byte;
});

function checksum(bytes: Uint8Array): number {
    let sum = -1;
    for (const byte of bytes) sum = sum >>> 8 ^ CRC_TABLE[(sum ^ byte) & 0xFF]!;
    return ~sum >>> 0;
}

/** A TIFF file of one page with Group 4. */
export function encodeTiff({ width, height, bits }: Bits, { dpi }: FileOptions = {}): Uint8Array<ArrayBuffer> {
    const SHORT = 3, LONG = 4, RATIONAL = 5;
    const data = faxRows(bits, width, height);
    const entries: [tag: number, type: number, value: number][] = [
        [256, LONG, width], [257, LONG, height], [258, SHORT, 1], [259, SHORT, 4], [262, SHORT, 0], [273, LONG, 0],
        [277, SHORT, 1], [278, LONG, height], [279, LONG, data.length],
        ...(dpi ? [[282, RATIONAL, 0], [283, RATIONAL, 0], [296, SHORT, 2]] as [number, number, number][] : []),
    ];
    const tableEnd = 8 + 2 + 12 * entries.length + 4;
    const dataStart = tableEnd + (dpi ? 8 : 0);
    const head = new DataView(new ArrayBuffer(dataStart));
    head.setUint32(0, 0x49492A00); // "II", 42
    head.setUint32(4, 8, true);
    head.setUint16(8, entries.length, true);
    entries.forEach(([tag, type, value], i) => {
        const at = 10 + 12 * i;
        head.setUint16(at, tag, true);
        head.setUint16(at + 2, type, true);
        head.setUint32(at + 4, 1, true);
        head.setUint32(at + 8, tag === 273 ? dataStart : type === RATIONAL ? tableEnd : value, true);
    });
    if (dpi) {
        const FRACTIONS = 1000;
        head.setUint32(tableEnd, Math.round(dpi * FRACTIONS), true);
        head.setUint32(tableEnd + 4, FRACTIONS, true);
    }
    return joined([new Uint8Array(head.buffer), data]);
}

/** A PDF file with a page a picture, as large as the pictures are in print. */
export function encodePdf(pictures: Bits | readonly Bits[], { dpi = USUAL_DPI }: FileOptions = {}): Uint8Array<ArrayBuffer> {
    const pages = "bits" in pictures ? [pictures] : pictures;
    const writer = new PdfWriter();
    const numberOf = (page: number, part: number) => 3 + 3 * page + part;
    writer.object("<</Type/Catalog/Pages 2 0 R>>");
    writer.object(`<</Type/Pages/Count ${pages.length}/Kids[${pages.map((_, i) => `${numberOf(i, 0)} 0 R`).join(" ")}]>>`);
    pages.forEach(({ width, height, bits }, i) => {
        const [w, h] = [width, height].map(side => +(side * POINTS_PER_INCH / dpi).toFixed(3));
        writer.object(`<</Type/Page/Parent 2 0 R/MediaBox[0 0 ${w} ${h}]/Contents ${numberOf(i, 1)} 0 R` +
                      `/Resources<</XObject<</I ${numberOf(i, 2)} 0 R>>>>>>`);
        writer.stream("", new TextEncoder().encode(`${w} 0 0 ${h} 0 0 cm /I Do`));
        writer.stream(`/Type/XObject/Subtype/Image/Width ${width}/Height ${height}/ColorSpace/DeviceGray/BitsPerComponent 1` +
                      `/Filter/CCITTFaxDecode/DecodeParms<</K -1/Columns ${width}/Rows ${height}>>`, faxRows(bits, width, height));
    });
    return writer.finish();
}

class PdfWriter {
    #parts: Uint8Array[] = [];
    #length = 0;
    #places: number[] = [];

    constructor() {
        this.#add("%PDF-1.4\n%\u00E2\u00E3\n"); // letters beyond ASCII say that the file is binary
    }

    object(text: string) {
        this.#places.push(this.#length);
        this.#add(`${this.#places.length} 0 obj\n${text}\nendobj\n`);
    }

    stream(dictionary: string, data: Uint8Array) {
        this.#places.push(this.#length);
        this.#add(`${this.#places.length} 0 obj\n<<${dictionary}/Length ${data.length}>>\nstream\n`);
        this.#add(data);
        this.#add("\nendstream\nendobj\n");
    }

    finish(): Uint8Array<ArrayBuffer> {
        const start = this.#length;
        const count = this.#places.length + 1;
        const lines = this.#places.map(place => `${String(place).padStart(10, "0")} 00000 n \n`);
        this.#add(`xref\n0 ${count}\n0000000000 65535 f \n${lines.join("")}` +
                  `trailer\n<</Size ${count}/Root 1 0 R>>\nstartxref\n${start}\n%%EOF\n`);
        return joined(this.#parts);
    }

    #add(part: string | Uint8Array) {
        const bytes = typeof part === "string" ? new TextEncoder().encode(part) : part;
        this.#parts.push(bytes);
        this.#length += bytes.length;
    }
}

function joined(parts: readonly Uint8Array[]): Uint8Array<ArrayBuffer> {
    const whole = new Uint8Array(parts.reduce((sum, part) => sum + part.length, 0));
    parts.reduce((at, part) => (whole.set(part, at), at + part.length), 0);
    return whole;
}
