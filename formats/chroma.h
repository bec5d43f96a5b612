// Kernels of the chroma format conversions: frames of 8-bit luma and chroma
// moved between samplings and layouts without arithmetic on the samples.
//
// Every such conversion is one horizontal shape applied to chroma rows:
//   Copy        dst[c] = src[c]                 (same horizontal sampling)
//   Drop        dst[c] = src[2c + phase]        (half the chroma columns)
//   Interleave  dst[2c] = a[c], dst[2c+1] = b[c] (two rows side by side, or
//                                                 one row with itself)
//   Blend       dst[c] = (wa a[c] + wb b[c] + round) >> shift (two rows)
// and a vertical rule, a plan per destination row; for the plain conversions
// it follows from the two samplings alone: destination
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

enum class Shape { Copy, Drop, Interleave, Blend };

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

// Blend weights: dst = (a * A + b * B + (1 << shift >> 1)) >> shift.
struct Weights {
    int a, b, shift;
};

// What a destination luma row does: its chroma (if it starts a destination
// chroma row), the source chroma rows it reads, the Drop phase, the Blend
// weights.
struct RowPlan {
    bool chroma;
    int dstRow;
    int srcRow;
    int srcRow2;
    int phase;
    Weights w;
};

// The plan that follows from the two samplings alone.
template <Sampling SS, Sampling DS, Shape K>
RowPlan samplingPlan(int y)
{
    constexpr int sy = SS.yShift, dy = DS.yShift;
    RowPlan p{};
    p.chroma = (y & ((1 << dy) - 1)) == 0;
    p.dstRow = y >> dy;
    p.srcRow = (p.dstRow << dy) >> sy;
    p.srcRow2 = p.srcRow + (K == Shape::Interleave && dy > sy ? 1 : 0);
    p.phase = K == Shape::Drop && sy > dy ? (y >> dy) & 1 : 0;
    return p;
}

// Source chroma row r of a frame; a packed frame has it in its one plane.
template <class S>
inline Row chromaRowOf(const Frame& f, int r)
{
    return S::kPacked ? rowOf(f, r, 0) : rowOf(f, 0, r);
}

template <class S, class D, Shape K, Sampling SS, Sampling DS>
struct ChromaKernel {
    static_assert(SS.xShift >= 1 && SS.xShift <= 2 && DS.xShift >= 1 && DS.xShift <= 2);
    // Luma rides along with chroma only where a side is packed.
    static constexpr bool kLuma = S::kPacked || D::kPacked;
    static constexpr int kUnit = 1 << DS.xShift;  // luma pixels per destination chroma sample
    // A packed source whose chroma rows differ from its luma row is read twice.
    static constexpr bool kSplitRows = S::kPacked && K == Shape::Blend;

    // Scalar form: destination chroma sample c and the luma it covers. sl is
    // the source luma row, sa and sb the source chroma rows.
    static void unit(const Row& sl, const Row& sa, const Row& sb, const Row& d, int c, const RowPlan& p)
    {
        if constexpr (kLuma)
            for (int k = 0; k < kUnit; ++k)
                D::y(d, c * kUnit + k) = S::y(sl, c * kUnit + k);
        if (!p.chroma)
            return;
        if constexpr (K == Shape::Copy) {
            D::cb(d, c) = S::cb(sa, c);
            D::cr(d, c) = S::cr(sa, c);
        } else if constexpr (K == Shape::Drop) {
            D::cb(d, c) = S::cb(sa, 2 * c + p.phase);
            D::cr(d, c) = S::cr(sa, 2 * c + p.phase);
        } else if constexpr (K == Shape::Interleave) {
            const Row& r = (c & 1) ? sb : sa;
            D::cb(d, c) = S::cb(r, c >> 1);
            D::cr(d, c) = S::cr(r, c >> 1);
        } else {
            const int round = (1 << p.w.shift) >> 1;
            D::cb(d, c) = Orv8u((p.w.a * S::cb(sa, c) + p.w.b * S::cb(sb, c) + round) >> p.w.shift);
            D::cr(d, c) = Orv8u((p.w.a * S::cr(sa, c) + p.w.b * S::cr(sb, c) + round) >> p.w.shift);
        }
    }

    // Weighted sum of two rows of 32 samples, in 16-bit lanes by byte-pair
    // multiply-adds; weights up to 8 keep every sum below 2^11.
    static __m256i blend(__m256i a, __m256i b, const Weights& w)
    {
        const __m256i wab = _mm256_set1_epi16(int16_t((w.b << 8) | w.a));
        const __m256i round = _mm256_set1_epi16(int16_t((1 << w.shift) >> 1));
        const __m128i shift = _mm_cvtsi32_si128(w.shift);
        const __m256i lo = _mm256_add_epi16(_mm256_maddubs_epi16(_mm256_unpacklo_epi8(a, b), wab), round);
        const __m256i hi = _mm256_add_epi16(_mm256_maddubs_epi16(_mm256_unpackhi_epi8(a, b), wab), round);
        return _mm256_packus_epi16(_mm256_srl_epi16(lo, shift), _mm256_srl_epi16(hi, shift));
    }

    template <class V>
    static void loadChroma(const Row& r, int i, V& u, V& v)
    {
        if constexpr (S::kPacked) {
            __m256i y0, y1;
            S::loadYC(r, i, y0, y1, u, v);
        } else {
            S::loadC(r, i >> SS.xShift, u, v);
        }
    }

    // Vector path: 64 luma pixels from luma index i.
    static void block(const Row& sl, const Row& sa, const Row& sb, const Row& d, int i, const RowPlan& p)
    {
        __m256i y0 = _mm256_setzero_si256(), y1 = y0;
        ChromaReg<SS.xShift> u{}, v{};
        if constexpr (S::kPacked && !kSplitRows) {
            S::loadYC(sl, i, y0, y1, u, v);
        } else {
            if constexpr (S::kPacked) {
                S::loadYC(sl, i, y0, y1, u, v);
            } else if constexpr (kLuma) {
                loadY(sl, i, y0, y1);
            }
            if (p.chroma)
                loadChroma(sa, i, u, v);
        }
        ChromaReg<DS.xShift> U{}, V{};
        if (p.chroma) {
            if constexpr (K == Shape::Copy) {
                U = u;
                V = v;
            } else if constexpr (K == Shape::Drop) {
                U = dropHalf(u, p.phase);
                V = dropHalf(v, p.phase);
            } else if constexpr (K == Shape::Interleave) {
                ChromaReg<SS.xShift> u2 = u, v2 = v;
                if (sb.p[1] != sa.p[1])
                    loadChroma(sb, i, u2, v2);
                U = interleave16(u, u2);
                V = interleave16(v, v2);
            } else {
                ChromaReg<SS.xShift> u2, v2;
                loadChroma(sb, i, u2, v2);
                U = blend(u, u2, p.w);
                V = blend(v, v2, p.w);
            }
        }
        if constexpr (D::kPacked) {
            D::storeYC(d, i, y0, y1, U, V);
        } else {
            if constexpr (kLuma)
                storeY(d, i, y0, y1);
            if (p.chroma)
                D::storeC(d, i >> DS.xShift, U, V);
        }
    }

    // One row: `width` luma pixels, a whole number of destination units.
    static void row(const Row& sl, const Row& sa, const Row& sb, const Row& d, int width, const RowPlan& p)
    {
        const int n = width / kUnit;
        constexpr int perBlock = 64 / kUnit;
        int c = 0;
        if (!g_scalarBlocks)
            for (; c + perBlock <= n; c += perBlock)
                block(sl, sa, sb, d, c * kUnit, p);
        for (; c < n; ++c)
            unit(sl, sa, sb, d, c, p);
    }

    // Destination luma rows [y0, y1) of a frame `width` pixels wide (whole
    // sampling blocks on both sides), each as plan(y) says. `stream` goes to
    // the luma row copies.
    template <class Plan>
    static void rows(const Frame& sf, const Frame& df, int width, int y0, int y1, Plan&& plan, bool stream)
    {
        // Luma planes without padding on either side are one run of bytes:
        // one copy moves the rows without a per-row start and end.
        const bool oneRun = !kLuma && !stream && sf.step[0] == width && df.step[0] == width;
        if (oneRun && y1 > y0)
            ownsCopy_8u_repG9(rowOf(sf, y0, 0).p[0], rowOf(df, y0, 0).p[0], std::size_t(width) * std::size_t(y1 - y0));
        for (int y = y0; y < y1; ++y) {
            const RowPlan p = plan(y);
            const Row sl = rowOf(sf, y, 0);
            const Row d = rowOf(df, y, p.dstRow);
            if (!kLuma && !oneRun)
                ownccCopy_8u_C1_W7(sl.p[0], d.p[0], width, stream);
            if (!kLuma && !p.chroma)
                continue;
            const Row sa = p.chroma ? chromaRowOf<S>(sf, p.srcRow) : sl;
            const Row sb = p.chroma && p.srcRow2 != p.srcRow ? chromaRowOf<S>(sf, p.srcRow2) : sa;
            row(sl, sa, sb, d, width, p);
        }
    }

    static void frame(const Frame& sf, const Frame& df, int width, int height, bool stream)
    {
        rows(sf, df, width, 0, height, samplingPlan<SS, DS, K>, stream);
    }
};

}  // namespace h9::fmt
