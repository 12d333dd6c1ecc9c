// SPDX-License-Identifier: MIT
#include "geometry/TurnKernels.h"

#include <cstring>

#include "platform/Vectors.h"

namespace tavrix {
namespace {

#ifndef TAVRIX_PLAIN_KERNELS
constexpr int kStrip = 16;  // bytes of a row that one transposition takes

// One vector holds strips of one row, or of two rows 16 apart; after a transposition, a byte of each row.
#ifdef __AVX2__
using RowBits = std::uint32_t;
#else
using RowBits = std::uint16_t;
#endif
inline Vector LoadStrips(const Byte* row, [[maybe_unused]] const Byte* sixteenAfter) {
#ifdef __AVX2__
    return _mm256_inserti128_si256(_mm256_castsi128_si256(Load16(row)), Load16(sixteenAfter), 1);
#else
    return Load16(row);
#endif
}
constexpr int kRows = 8 * sizeof(RowBits);

[[gnu::always_inline]] inline void Interleave(const Vector from[kStrip], Vector to[kStrip]) {
#pragma GCC unroll 8
    for (int i = 0; i < kStrip / 2; ++i) {
        to[2 * i] = TAVRIX_VECTOR(unpacklo_epi8)(from[i], from[i + kStrip / 2]);
        to[2 * i + 1] = TAVRIX_VECTOR(unpackhi_epi8)(from[i], from[i + kStrip / 2]);
    }
}

// Transposes the bytes of 16 x 16 squares: afterwards vector i holds byte i of every row. Interleaving
// vector i with vector i + 8, four times over, moves every byte to its place (after Eklundh, 1972).
[[gnu::always_inline]] inline void TransposeSquares(Vector v[kStrip]) {
    Vector w[kStrip];
    Interleave(v, w);
    Interleave(w, v);
    Interleave(v, w);
    Interleave(w, v);
}

// kStrip columns of kRows rows.
void TransposeTile(const Byte* source, std::ptrdiff_t sourceStride, Byte* target,
                   std::ptrdiff_t targetStride) {
    Vector v[kStrip];
#pragma GCC unroll 16
    for (int i = 0; i < kStrip; ++i) {
        v[i] = LoadStrips(source + sourceStride * i, source + sourceStride * ((i + 16) % kRows));
    }
    TransposeSquares(v);
#pragma GCC unroll 16
    for (int i = 0; i < kStrip; ++i) Store(target + targetStride * i, v[i]);
}
#endif

constexpr std::uint64_t kEveryByte = 0x0101010101010101;

// Eight bytes in reverse order, and the bits of each as well.
std::uint64_t Reversed(std::uint64_t bits) {
    bits = (bits >> 4 & 0x0F0F0F0F0F0F0F0F) | (bits & 0x0F0F0F0F0F0F0F0F) << 4;
    bits = (bits >> 2 & 0x3333333333333333) | (bits & 0x3333333333333333) << 2;
    bits = (bits >> 1 & 0x5555555555555555) | (bits & 0x5555555555555555) << 1;
    return __builtin_bswap64(bits);
}

void CopyBits(const Byte* source, int first, int count, Byte* target) {
    const Byte* from = source + first / 8;
    const int shift = first % 8;
    const int last = (count - 1) / 8;  // index of the last target byte
    if (shift == 0) {
        std::memcpy(target, from, static_cast<std::size_t>(last) + 1);
    } else {
        for (int i = 0; i < last; ++i) {
            target[i] = static_cast<Byte>((from[i] << 8 | from[i + 1]) >> (8 - shift));
        }
        const bool hasNext = shift + count > 8 * (last + 1);
        target[last] = static_cast<Byte>((from[last] << 8 | (hasNext ? from[last + 1] : 0)) >> (8 - shift));
    }
    if (count % 8 != 0) target[last] = static_cast<Byte>(target[last] & 0xFF00 >> count % 8);
}

void ReverseBits(const Byte* source, int first, int count, Byte* target) {
    // Words of the source from its end; where they start inside a byte, each byte is put together from two.
    const int end = first + count, shift = end % 8, whole = count / 64;
    const std::uint64_t high = kEveryByte * (0xFFu << shift & 0xFFu),
                        low = kEveryByte * (0xFFu >> (8 - shift));
    const Byte* from = source + end / 8;
    const Byte* next = shift != 0 ? from + 1 : from;
    for (int i = 0; i < whole; ++i) {
        std::uint64_t word, following;
        std::memcpy(&word, from - 8 * (i + 1), sizeof word);
        std::memcpy(&following, next - 8 * (i + 1), sizeof following);
        word = Reversed((word << shift & high) | (following >> (8 - shift) & low));
        std::memcpy(target + 8 * i, &word, sizeof word);
    }
    if (const int rest = count % 64; rest != 0) {
        Byte bytes[8] = {};
        CopyBits(source, first, rest, bytes);
        std::uint64_t word;
        std::memcpy(&word, bytes, sizeof word);
        word = __builtin_bswap64(__builtin_bswap64(Reversed(word)) << (64 - rest));
        std::memcpy(target + 8 * whole, &word, static_cast<std::size_t>(rest + 7) / 8);
    }
}

#ifdef TAVRIX_PLAIN_KERNELS
void TransposeBits(const Byte* source, std::ptrdiff_t sourceStride, int width, int height, Byte* target,
                   std::ptrdiff_t targetStride) {
    const int whole = (height + 31) / 32 * 32;
    for (int x = 0; x < width; ++x) {
        unsigned byte = 0;
        for (int y = 0; y < whole; ++y) {
            const unsigned bits = y < height ? source[sourceStride * y + x / 8] : 0;
            byte = byte << 1 | (bits >> (7 - x % 8) & 1);
            if (y % 8 == 7) target[targetStride * x + y / 8] = static_cast<Byte>(byte);
        }
    }
}
#else
void TransposeBits(const Byte* source, std::ptrdiff_t sourceStride, int width, int height, Byte* target,
                   std::ptrdiff_t targetStride) {
    static constexpr Byte kBlank[kStrip] = {};
    Byte padded[kRows][kStrip] = {};
    for (int y0 = 0; y0 < height; y0 += kRows) {
        for (int x0 = 0; x0 < width; x0 += 8 * kStrip) {
            const int columns = width - x0 < 8 * kStrip ? width - x0 : 8 * kStrip;
            const int bytes = (columns + 7) / 8;
            // The top bits of a vector give a number whose lowest bit is lane 0, while the first of eight
            // rows belongs in the highest bit of a byte.
            const Byte* rows[kRows];
            for (int i = 0; i < kRows; ++i) {
                const int y = y0 + (i ^ 7);
                rows[i] = y < height ? source + sourceStride * y + x0 / 8 : kBlank;
                if (bytes < kStrip && y < height) {
                    std::memcpy(padded[i], rows[i], static_cast<std::size_t>(bytes));
                    rows[i] = padded[i];
                }
            }
            Vector v[kStrip];
#pragma GCC unroll 16
            for (int i = 0; i < kStrip; ++i) v[i] = LoadStrips(rows[i], rows[(i + 16) % kRows]);
            TransposeSquares(v);
            Byte* to = target + targetStride * x0 + y0 / 8;
            for (int byte = 0; byte < bytes; ++byte) {
                const int bits = columns - 8 * byte < 8 ? columns - 8 * byte : 8;
                Vector column = v[byte];
                for (int bit = 0; bit < bits; ++bit) {
                    const RowBits word = static_cast<RowBits>(TAVRIX_VECTOR(movemask_epi8)(column));
                    std::memcpy(to, &word, sizeof word);
                    to += targetStride;
                    column = TAVRIX_VECTOR(add_epi8)(column, column);
                }
            }
        }
    }
    // A last half word that no row reached.
    const int written = (height + kRows - 1) / kRows * kRows;
    const int whole = (height + 31) / 32 * 32;
    for (int x = 0; x < width && written < whole; ++x) {
        std::memset(target + targetStride * x + written / 8, 0,
                    static_cast<std::size_t>(whole - written) / 8);
    }
}
#endif

void TransposeBytes(const Byte* source, std::ptrdiff_t sourceStride, int width, int height, Byte* target,
                    std::ptrdiff_t targetStride) {
#ifndef TAVRIX_PLAIN_KERNELS
    if (width >= kStrip && height >= kRows) {
        // In bands of rows, so that a column becomes a run of whole cache lines of the target, while the
        // lines that are read stay in the first cache; the last tile of a row or column overlaps the one
        // before.
        constexpr int kBand = 256;
        for (int top = 0; top < height; top += kBand) {
            for (int column = 0; column < width; column += kStrip) {
                const int x = column < width - kStrip ? column : width - kStrip;
                for (int row = top; row < top + kBand && row < height; row += kRows) {
                    const int y = row < height - kRows ? row : height - kRows;
                    TransposeTile(source + sourceStride * y + x, sourceStride, target + targetStride * x + y,
                                  targetStride);
                }
            }
        }
        return;
    }
#endif
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) target[targetStride * x + y] = source[sourceStride * y + x];
    }
}

}  // namespace

const TurnKernels TurnKernels::TAVRIX_KERNEL_LEVEL{.copyBits = CopyBits,
                                                   .reverseBits = ReverseBits,
                                                   .transposeBits = TransposeBits,
                                                   .transposeBytes = TransposeBytes};

}  // namespace tavrix
