// SPDX-License-Identifier: MIT
// Black and white rows in the code of ITU-T Recommendation T.6, which TIFF calls Group 4.

const words = (text: string) => text.split(/\s+/).map(code => [parseInt(code, 2), code.length] as const);

// Codes of the Recommendation T.4: runs of 0 to 63 pixels, of multiples of 64 up to 1728, and for both colours
// on up to 2560.
const WHITE = words(`00110101 000111 0111 1000 1011 1100 1110 1111 10011 10100 00111 01000 001000 000011 110100 110101
    101010 101011 0100111 0001100 0001000 0010111 0000011 0000100 0101000 0101011 0010011 0100100 0011000 00000010
    00000011 00011010 00011011 00010010 00010011 00010100 00010101 00010110 00010111 00101000 00101001 00101010
    00101011 00101100 00101101 00000100 00000101 00001010 00001011 01010010 01010011 01010100 01010101 00100100
    00100101 01011000 01011001 01011010 01011011 01001010 01001011 00110010 00110011 00110100
    11011 10010 010111 0110111 00110110 00110111 01100100 01100101 01101000 01100111 011001100 011001101 011010010
    011010011 011010100 011010101 011010110 011010111 011011000 011011001 011011010 011011011 010011000 010011001
    010011010 011000 010011011`);
const BLACK = words(`0000110111 010 11 10 011 0011 0010 00011 000101 000100 0000100 0000101 0000111 00000100 00000111
    000011000 0000010111 0000011000 0000001000 00001100111 00001101000 00001101100 00000110111 00000101000 00000010111
    00000011000 000011001010 000011001011 000011001100 000011001101 000001101000 000001101001 000001101010 000001101011
    000011010010 000011010011 000011010100 000011010101 000011010110 000011010111 000001101100 000001101101
    000011011010 000011011011 000001010100 000001010101 000001010110 000001010111 000001100100 000001100101
    000001010010 000001010011 000000100100 000000110111 000000111000 000000100111 000000101000 000001011000
    000001011001 000000101011 000000101100 000001011010 000001100110 000001100111
    0000001111 000011001000 000011001001 000001011011 000000110011 000000110100 000000110101 0000001101100 0000001101101
    0000001001010 0000001001011 0000001001100 0000001001101 0000001110010 0000001110011 0000001110100 0000001110101
    0000001110110 0000001110111 0000001010010 0000001010011 0000001010100 0000001010101 0000001011010 0000001011011
    0000001100100 0000001100101`);
const LONG = words(`00000001000 00000001100 00000001101 000000010010 000000010011 000000010100 000000010101 000000010110
    000000010111 000000011100 000000011101 000000011110 000000011111`);
const LONGEST = 2560;
const FIRST_LONG = 1792;
const PASS = [0b0001, 4] as const;
const HORIZONTAL = [0b001, 3] as const;
// A change 3 to the left of the one above it, up to 3 to the right.
const VERTICAL = words("0000010 000010 010 1 011 000011 0000011");
const END_OF_LINE = [1, 12] as const;

class BitWriter {
    #bytes = new Uint8Array(1 << 16);
    #length = 0;
    #pending = 0;
    #count = 0;

    put([code, length]: readonly [number, number]) {
        this.#pending = this.#pending << length | code;
        this.#count += length;
        while (this.#count >= 8) {
            this.#count -= 8;
            this.#add(this.#pending >> this.#count);
            this.#pending &= (1 << this.#count) - 1;
        }
    }

    run(length: number, isBlack: boolean) {
        const codes = isBlack ? BLACK : WHITE;
        for (; length > LONGEST + 63; length -= LONGEST) this.put(LONG[LONG.length - 1]!);
        if (length >= FIRST_LONG) {
            this.put(LONG[(length - FIRST_LONG) >> 6]!);
        } else if (length >= 64) {
            this.put(codes[63 + (length >> 6)]!);
        }
        this.put(codes[length & 63]!);
    }

    finish(): Uint8Array<ArrayBuffer> {
        if (this.#count > 0) this.#add(this.#pending << (8 - this.#count));
        return this.#bytes.slice(0, this.#length);
    }

    #add(byte: number) {
        if (this.#length === this.#bytes.length) {
            const longer = new Uint8Array(2 * this.#length);
            longer.set(this.#bytes);
            this.#bytes = longer;
        }
        this.#bytes[this.#length++] = byte;
    }
}

// The columns where the colour changes, the first from white to black; `width` twice at the end. Gives how
// many there are.
function findChanges(bits: Uint8Array, first: number, width: number, changes: Int32Array): number {
    let count = 0;
    let colour = 0xFF; // white
    for (let byte = 0; 8 * byte < width; ++byte) {
        const valid = width - 8 * byte;
        let differs = bits[first + byte]! ^ colour;
        if (valid < 8) differs &= 0xFF00 >> valid;
        while (differs !== 0) {
            const bit = Math.clz32(differs) - 24;
            changes[count++] = 8 * byte + bit;
            colour ^= 0xFF;
            differs = ~differs & (0xFF >> bit);
            if (valid < 8) differs &= 0xFF00 >> valid;
        }
    }
    changes[count] = changes[count + 1] = changes[count + 2] = width;
    return count;
}

function putRow(writer: BitWriter, row: Int32Array, above: Int32Array, width: number) {
    let at = -1; // the last column that is coded
    let next = 0; // the row's first change after it
    let over = 0; // the first change above after it that goes the same way: even ones go from white to black
    while (at < width) {
        while (above[over]! <= at && above[over]! < width) over += 2;
        const change = row[next]!;
        const offset = change - above[over]!;
        if (above[over + 1]! < change) {
            writer.put(PASS);
            at = above[over + 1]!;
        } else if (offset >= -3 && offset <= 3) {
            writer.put(VERTICAL[offset + 3]!);
            at = change;
            ++next;
            over = over === 0 ? 1 : over - 1;
        } else {
            const isBlack = next % 2 === 1;
            const end = row[next + 1]!;
            writer.put(HORIZONTAL);
            writer.run(change - Math.max(at, 0), isBlack);
            writer.run(end - change, !isBlack);
            at = end;
            next += 2;
        }
    }
}

/** The picture's rows as one block of Group 4, white 0. */
export function faxRows(bits: Uint8Array, width: number, height: number): Uint8Array<ArrayBuffer> {
    const writer = new BitWriter();
    const stride = Math.ceil(width / 8);
    let above = new Int32Array(width + 3).fill(width);
    let row = new Int32Array(width + 3);
    for (let y = 0; y < height; ++y) {
        findChanges(bits, y * stride, width, row);
        putRow(writer, row, above, width);
        [above, row] = [row, above];
    }
    writer.put(END_OF_LINE);
    writer.put(END_OF_LINE);
    return writer.finish();
}
