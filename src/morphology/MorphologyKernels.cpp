// SPDX-License-Identifier: MIT
#include "morphology/MorphologyKernels.h"

#include <cstring>

namespace tavrix {
namespace {

using Byte = std::uint8_t;
using Word = std::uint64_t;  // 64 pixels, the first one in the highest bit

constexpr int kRing = 16;  // rows kept while a square passes

Word ReadWord(const Byte* from) {
    Word word;
    std::memcpy(&word, from, sizeof word);
    return __builtin_bswap64(word);
}

void WriteWord(Word word, Byte* to) {
    word = __builtin_bswap64(word);
    std::memcpy(to, &word, sizeof word);
}

// A square of side 2 * kHalf - 1 is the overlap of two runs of kHalf pixels in each direction, and a run
// of 2 n pixels is made from two of n, so that log2(kHalf) + 1 steps do. (Doubling as in van Herk, 1992,
// and Gil and Werman, 1993, on 64 pixels at a time.)
//
// kFlip 0: a result bit is set where every bit of the square is, bits outside counting as set. kFlip ~0:
// the same for cleared bits, and bits outside count as set still.
template <int kHalf, Word kFlip>
class Spreading {
  public:
    Spreading(const BitRows& all, Word* scratch)
        : rows(all),
          count(all.width / 64 + (all.width % 64 != 0 ? 1 : 0)),
          padded((count + 3) / 4 * 4),
          lastMask(all.width % 64 != 0 ? ~(~Word{0} >> all.width % 64) : ~Word{0}) {
        const int step = padded + 4;
        pixels = scratch;
        runs = scratch + step;
        out = scratch + 2 * step;
        for (int i = 0; i < kRing; ++i) ring[i] = scratch + (3 + i) * step;
        for (int i = 0; i < (3 + kRing) * step; ++i) scratch[i] = kOutside;
    }

    void Run() {
        for (int y = 0; y < rows.height + kRadius; ++y) {
            if (y < rows.height) {
                Load(y);
                AcrossColumns(ring[y % kRing]);
            } else {
                for (int i = 0; i < padded; ++i) ring[y % kRing][i] = kOutside;
            }
            AcrossRows(y);
            if (y >= kRadius) Store(y - kRadius);
        }
    }

  private:
    static constexpr int kRadius = kHalf - 1;
    static constexpr Word kOutside = ~kFlip;

    // pixels[1] is the row's first word; the words around it are outside.
    void Load(int y) {
        const Byte* row = rows.source + rows.stride * y;
        const int whole = rows.width / 64;
        for (int i = 0; i < whole; ++i) pixels[1 + i] = ReadWord(row + 8 * i) ^ kFlip;
        if (whole == count) return;
        Byte last[8] = {};
        std::memcpy(last, row + 8 * whole, static_cast<std::size_t>(rows.width % 64 + 7) / 8);
        pixels[count] = ((ReadWord(last) ^ kFlip) & lastMask) | (kOutside & ~lastMask);
    }

    // runs[i]: pixels whose run to the right is complete; then the overlap with the run kRadius further left.
    void AcrossColumns(Word* __restrict target) {
        const Word* __restrict from = pixels;
        Word* __restrict to = runs;
        for (int i = 0; i <= padded; ++i) {
            Word word = from[i], next = from[i + 1];
            for (int n = 1; n < kHalf; n *= 2) {
                word &= word << n | next >> (64 - n);
                next &= next << n;
            }
            to[i] = word;
        }
        for (int i = 0; i < padded; ++i) {
            target[i] = to[i + 1] & (to[i + 1] >> kRadius | to[i] << (64 - kRadius));
        }
    }

    // The same upward: the newest row completes runs of 2, 4, 8 rows that start 1, 3, 7 rows before it.
    void AcrossRows(int y) {
        const Word* __restrict newest = ring[y % kRing];
        Word* __restrict of2 = ring[(y + kRing - 1) % kRing];
        Word* __restrict result = out;
        if constexpr (kHalf == 2) {
            const Word* __restrict start = ring[(y + kRing - 2) % kRing];
            for (int i = 0; i < padded; ++i) {
                of2[i] &= newest[i];
                result[i] = start[i] & of2[i];
            }
        } else {
            static_assert(kHalf == 8);
            Word* __restrict of4 = ring[(y + kRing - 3) % kRing];
            Word* __restrict of8 = ring[(y + kRing - 7) % kRing];
            const Word* __restrict start = ring[(y + kRing - 14) % kRing];
            for (int i = 0; i < padded; ++i) {
                of2[i] &= newest[i];
                of4[i] &= of2[i];
                of8[i] &= of4[i];
                result[i] = start[i] & of8[i];
            }
        }
    }

    void Store(int y) {
        Byte* row = rows.target + rows.stride * y;
        const int whole = rows.width / 64;
        for (int i = 0; i < whole; ++i) WriteWord(out[i] ^ kFlip, row + 8 * i);
        if (whole == count) return;
        Byte last[8] = {};
        const std::size_t bytes = static_cast<std::size_t>(rows.width % 64 + 7) / 8;
        std::memcpy(last, row + 8 * whole, bytes);
        WriteWord(((out[whole] ^ kFlip) & lastMask) | (ReadWord(last) & ~lastMask), last);
        std::memcpy(row + 8 * whole, last, bytes);
    }

    const BitRows& rows;
    const int count;   // words of a row
    const int padded;  // the same for whole vectors
    const Word lastMask;
    Word* pixels;
    Word* runs;
    Word* out;
    Word* ring[kRing];
};

template <Word kFlip>
void Spread(const BitRows& rows, int radius, Word* scratch) {
    if (radius == 1) {
        Spreading<2, kFlip>(rows, scratch).Run();
    } else {
        Spreading<8, kFlip>(rows, scratch).Run();
    }
}

void SpreadBlack(const BitRows& rows, int radius, Word* scratch) {
    Spread<0>(rows, radius, scratch);
}

void SpreadWhite(const BitRows& rows, int radius, Word* scratch) {
    Spread<~Word{0}>(rows, radius, scratch);
}

}  // namespace

const MorphologyKernels MorphologyKernels::TAVRIX_KERNEL_LEVEL{.spreadBlack = SpreadBlack,
                                                               .spreadWhite = SpreadWhite};

}  // namespace tavrix
