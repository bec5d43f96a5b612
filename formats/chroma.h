// Kernels of the chroma format conversions: frames of 8-bit luma and chroma
// moved between samplings and layouts without arithmetic on the samples.
//
// Every such conversion is one horizontal shape applied to chroma rows:
//   Copy        dst[c] = src[c]                 (same horizontal sampling)
//   Drop        dst[c] = src[2c + phase]        (half the chroma columns)
//   Interleave  dst[2c] = a[c], dst[2c+1] = b[c] (two rows side by side, or
//                                                 one row with itself)
// and a vertical rule that follows from the two samplings alone: destination
// chroma row r starts at luma row r << dy and reads source chroma row
// (r << dy) >> sy; Interleave takes the next source row as its second row
// when the destination is coarser vertically, Drop picks its phase from the
// luma row when the source is. Luma is copied unchanged.
//
// Where neither side is packed, luma plane rows go through the row copy of
// the primitives and the kernels move chroma only; a packed side carries
// luma and chroma in the same bytes, and then the kernel moves both.
#pragma once

#include <immintrin.h>

#include <algorithm>

#include "formats/layouts.h"
#include "frame/driver.h"
#include "frame/primitives/primitives.h"

namespace h9::fmt {

enum class Shape { Copy, Drop, Interleave };

// Half of 32 chroma samples: those at 2k + phase.
inline __m128i dropHalf(__m256i a, int phase)
{
    const __m256i e = evenOddPerLane(a);
    return _mm256_castsi256_si128(phase ? _mm256_permute4x64_epi64(e, 0xDD) : _mm256_permute4x64_epi64(e, 0x88));
}

// a[0] b[0] a[1] b[1] ... for 16 samples of each.
inline __m256i interleave16(__m128i a, __m128i b)
{
    return _mm256_set_m128i(_mm_unpackhi_epi8(a, b), _mm_unpacklo_epi8(a, b));
}

// Chroma registers of 64 luma pixels at a horizontal sampling.
template <int XShift>
struct ChromaRegOf;
template <>
struct ChromaRegOf<1> {
    using type = __m256i;
};
template <>
struct ChromaRegOf<2> {
    using type = __m128i;
};
template <int XShift>
using ChromaReg = typename ChromaRegOf<XShift>::type;

template <class S, class D, Shape K, Sampling SS, Sampling DS>
struct ChromaKernel {
    static_assert(SS.xShift >= 1 && SS.xShift <= 2 && DS.xShift >= 1 && DS.xShift <= 2);
    // Luma rides along with chroma only where a side is packed.
    static constexpr bool kLuma = S::kPacked || D::kPacked;
    static constexpr int kUnit = 1 << DS.xShift;  // luma pixels per destination chroma sample

    // Scalar form: destination chroma sample c and the luma it covers.
    static void unit(const Row& s, const Row& s2, const Row& d, int c, int phase, bool chroma)
    {
        if constexpr (kLuma)
            for (int k = 0; k < kUnit; ++k)
                D::y(d, c * kUnit + k) = S::y(s, c * kUnit + k);
        if (!chroma)
            return;
        if constexpr (K == Shape::Copy) {
            D::cb(d, c) = S::cb(s, c);
            D::cr(d, c) = S::cr(s, c);
        } else if constexpr (K == Shape::Drop) {
            D::cb(d, c) = S::cb(s, 2 * c + phase);
            D::cr(d, c) = S::cr(s, 2 * c + phase);
        } else {
            const Row& r = (c & 1) ? s2 : s;
            D::cb(d, c) = S::cb(r, c >> 1);
            D::cr(d, c) = S::cr(r, c >> 1);
        }
    }

    // Vector path: 64 luma pixels from luma index i.
    static void block(const Row& s, const Row& s2, const Row& d, int i, int phase, bool chroma)
    {
        __m256i y0 = _mm256_setzero_si256(), y1 = y0;
        ChromaReg<SS.xShift> u{}, v{};
        if constexpr (S::kPacked) {
            S::loadYC(s, i, y0, y1, u, v);
        } else {
            if constexpr (kLuma)
                loadY(s, i, y0, y1);
            if (chroma)
                S::loadC(s, i >> SS.xShift, u, v);
        }
        ChromaReg<DS.xShift> U{}, V{};
        if (chroma) {
            if constexpr (K == Shape::Copy) {
                U = u;
                V = v;
            } else if constexpr (K == Shape::Drop) {
                U = dropHalf(u, phase);
                V = dropHalf(v, phase);
            } else {
                ChromaReg<SS.xShift> u2 = u, v2 = v;
                if (s2.p[1] != s.p[1])
                    S::loadC(s2, i >> SS.xShift, u2, v2);
                U = interleave16(u, u2);
                V = interleave16(v, v2);
            }
        }
        if constexpr (D::kPacked) {
            D::storeYC(d, i, y0, y1, U, V);
        } else {
            if constexpr (kLuma)
                storeY(d, i, y0, y1);
            if (chroma)
                D::storeC(d, i >> DS.xShift, U, V);
        }
    }

    // One row: `width` luma pixels, a whole number of destination units.
    static void row(const Row& s, const Row& s2, const Row& d, int width, int phase, bool chroma)
    {
        const int n = width / kUnit;
        constexpr int perBlock = 64 / kUnit;
        int c = 0;
        if (!g_scalarBlocks)
            for (; c + perBlock <= n; c += perBlock)
                block(s, s2, d, c * kUnit, phase, chroma);
        for (; c < n; ++c)
            unit(s, s2, d, c, phase, chroma);
    }

    // A frame of width x height luma pixels, whole sampling blocks on both
    // sides. `stream` goes to the luma row copies.
    static void frame(const Frame& sf, const Frame& df, int width, int height, bool stream)
    {
        constexpr int sy = SS.yShift, dy = DS.yShift;
        for (int y = 0; y < height; ++y) {
            const bool chroma = (y & ((1 << dy) - 1)) == 0;
            const int dr = y >> dy;
            const int sr = (dr << dy) >> sy;
            const Row s = rowOf(sf, y, sr);
            const Row d = rowOf(df, y, dr);
            if constexpr (!kLuma)
                ownccCopy_8u_C1_W7(s.p[0], d.p[0], width, stream);
            if (!kLuma && !chroma)
                continue;
            int phase = 0;
            Row s2 = s;
            if constexpr (K == Shape::Drop)
                phase = sy > dy ? (y >> dy) & 1 : 0;
            if constexpr (K == Shape::Interleave)
                if (dy > sy && chroma)
                    s2 = rowOf(sf, y, sr + 1);
            row(s, s2, d, width, phase, chroma);
        }
    }
};

}  // namespace h9::fmt
