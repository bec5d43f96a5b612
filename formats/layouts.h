// Video frame layouts of 8-bit luma-chroma data: the chroma samplings, the
// three memory layouts (planar, semi-planar, packed 4:2:2) and their chroma
// orders, defined once for every family that reads or writes such frames.
//
// A side of a conversion is described twice:
//   - at run time by a Frame: up to three planes with their signed steps,
//     built from the exported function's arguments by the layout's side()
//     (which also reports a null pointer), and normalised so that plane 1 of
//     a planar frame is always Cb and plane 2 always Cr;
//   - at compile time by a layout type (Planar, SemiPlanar, Packed), which
//     knows where sample i of a row lies (scalar accessors) and how to move
//     whole blocks of 64 luma pixels between memory and registers (AVX2).
//
// Chroma in registers is always planar, one register of Cb and one of Cr:
// 32 samples (__m256i) for a block at half horizontal resolution, 16
// (__m128i) at quarter resolution. Luma is two registers of 32 samples.
#pragma once

#include <immintrin.h>

#include <cstdint>

#include "frame/driver.h"
#include "orvcc.h"

namespace h9::fmt {

// ---- sampling ---------------------------------------------------------------
// One chroma sample covers (1 << xShift) by (1 << yShift) luma samples.
struct Sampling {
    int xShift;
    int yShift;
};
inline constexpr Sampling k444{0, 0};
inline constexpr Sampling k422{1, 0};
inline constexpr Sampling k420{1, 1};
inline constexpr Sampling k411{2, 0};
inline constexpr Sampling k1620{2, 2};

// ---- chroma orders ----------------------------------------------------------
// Planar and semi-planar sides: which chroma comes first (plane 1 of three,
// or the first byte of each pair).
enum class ChromaOrder { CbCr, CrCb };

// Packed 4:2:2: byte positions of the two luma samples and the two chroma
// samples in each 4-byte group of two pixels.
struct PackedOrder {
    int y0, cb, y1, cr;
};
inline constexpr PackedOrder kYCbCr422{0, 1, 2, 3};  // Y0 Cb Y1 Cr
inline constexpr PackedOrder kCbYCr422{1, 0, 3, 2};  // Cb Y0 Cr Y1
inline constexpr PackedOrder kYCrCb422{0, 3, 2, 1};  // Y0 Cr Y1 Cb

// ---- run-time description ---------------------------------------------------
// Planes of one side. Planar: Y, Cb, Cr. Semi-planar: Y, Cb/Cr pairs.
// Packed: the one plane. Unused entries are null.
struct Frame {
    Orv8u* plane[3];
    int step[3];
};

// Pointers to one row of each plane: plane 0 at a luma row, planes 1 and 2
// at a chroma row.
struct Row {
    Orv8u* p[3];
};

inline Row rowOf(const Frame& f, int lumaRow, int chromaRow)
{
    Row r{};
    r.p[0] = rowAt(f.plane[0], f.step[0], lumaRow);
    for (int k = 1; k < 3; ++k)
        r.p[k] = f.plane[k] ? rowAt(f.plane[k], f.step[k], chromaRow) : nullptr;
    return r;
}

// What a layout's side() gives: the frame, or that a pointer was null.
struct Side {
    Frame frame;
    bool null;
};

// ---- layout types -----------------------------------------------------------
template <ChromaOrder O>
struct Planar {
    static constexpr bool kPacked = false;
    static Orv8u& y(const Row& r, int i) { return r.p[0][i]; }
    static Orv8u& cb(const Row& r, int c) { return r.p[1][c]; }
    static Orv8u& cr(const Row& r, int c) { return r.p[2][c]; }

    // From three plane pointers and three steps in the order of the name.
    static Side side(const Orv8u* const* p, const int* s)
    {
        if (!p || !s || !p[0] || !p[1] || !p[2])
            return {{}, true};
        constexpr int b = O == ChromaOrder::CbCr ? 1 : 2, r = 3 - b;
        return {{{const_cast<Orv8u*>(p[0]), const_cast<Orv8u*>(p[b]), const_cast<Orv8u*>(p[r])},
                 {s[0], s[b], s[r]}},
                false};
    }

    static void loadC(const Row& r, int c, __m256i& u, __m256i& v)
    {
        u = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(r.p[1] + c));
        v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(r.p[2] + c));
    }
    static void loadC(const Row& r, int c, __m128i& u, __m128i& v)
    {
        u = _mm_loadu_si128(reinterpret_cast<const __m128i*>(r.p[1] + c));
        v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(r.p[2] + c));
    }
    static void storeC(const Row& r, int c, __m256i u, __m256i v)
    {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(r.p[1] + c), u);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(r.p[2] + c), v);
    }
    static void storeC(const Row& r, int c, __m128i u, __m128i v)
    {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(r.p[1] + c), u);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(r.p[2] + c), v);
    }
};

// Sorts the 32 bytes of a register, per 128-bit lane, into its 8 even bytes
// then its 8 odd bytes.
inline __m256i evenOddPerLane(__m256i a)
{
    const __m256i m = _mm256_setr_epi8(0, 2, 4, 6, 8, 10, 12, 14, 1, 3, 5, 7, 9, 11, 13, 15,  //
                                       0, 2, 4, 6, 8, 10, 12, 14, 1, 3, 5, 7, 9, 11, 13, 15);
    return _mm256_shuffle_epi8(a, m);
}

template <ChromaOrder O>
struct SemiPlanar {
    static constexpr bool kPacked = false;
    static constexpr int kFirst = O == ChromaOrder::CbCr ? 0 : 1;
    static Orv8u& y(const Row& r, int i) { return r.p[0][i]; }
    static Orv8u& cb(const Row& r, int c) { return r.p[1][2 * c + kFirst]; }
    static Orv8u& cr(const Row& r, int c) { return r.p[1][2 * c + 1 - kFirst]; }

    // From the luma pointer and step, then the pair plane's pointer and step.
    static Side side(const Orv8u* y, int ys, const Orv8u* uv, int uvs)
    {
        if (!y || !uv)
            return {{}, true};
        return {{{const_cast<Orv8u*>(y), const_cast<Orv8u*>(uv), nullptr}, {ys, uvs, 0}}, false};
    }

    // 32 pairs: 64 bytes.
    static void loadC(const Row& r, int c, __m256i& u, __m256i& v)
    {
        split(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(r.p[1] + 2 * c)),
              _mm256_loadu_si256(reinterpret_cast<const __m256i*>(r.p[1] + 2 * c + 32)), u, v);
    }
    // 32 pairs held in two registers, as 32 Cb and 32 Cr.
    static void split(__m256i lo, __m256i hi, __m256i& u, __m256i& v)
    {
        const __m256i a = evenOddPerLane(lo);
        const __m256i b = evenOddPerLane(hi);
        // 64-bit quarters in order 0, 2, 1, 3 restore the sample order.
        const __m256i first = _mm256_permute4x64_epi64(_mm256_unpacklo_epi64(a, b), 0xD8);
        const __m256i second = _mm256_permute4x64_epi64(_mm256_unpackhi_epi64(a, b), 0xD8);
        u = kFirst == 0 ? first : second;
        v = kFirst == 0 ? second : first;
    }
    // 16 pairs: 32 bytes.
    static void loadC(const Row& r, int c, __m128i& u, __m128i& v)
    {
        const __m256i a = _mm256_permute4x64_epi64(
            evenOddPerLane(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(r.p[1] + 2 * c))), 0xD8);
        const __m128i first = _mm256_castsi256_si128(a), second = _mm256_extracti128_si256(a, 1);
        u = kFirst == 0 ? first : second;
        v = kFirst == 0 ? second : first;
    }
    static void storeC(const Row& r, int c, __m256i u, __m256i v)
    {
        const __m256i a = _mm256_permute4x64_epi64(kFirst == 0 ? u : v, 0xD8);
        const __m256i b = _mm256_permute4x64_epi64(kFirst == 0 ? v : u, 0xD8);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(r.p[1] + 2 * c), _mm256_unpacklo_epi8(a, b));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(r.p[1] + 2 * c + 32), _mm256_unpackhi_epi8(a, b));
    }
    static void storeC(const Row& r, int c, __m128i u, __m128i v)
    {
        const __m128i a = kFirst == 0 ? u : v, b = kFirst == 0 ? v : u;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(r.p[1] + 2 * c), _mm_unpacklo_epi8(a, b));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(r.p[1] + 2 * c + 16), _mm_unpackhi_epi8(a, b));
    }
};

// Packed 4:2:2, one plane; always half horizontal chroma resolution.
template <const PackedOrder& O>
struct Packed {
    static constexpr bool kPacked = true;
    static Orv8u& y(const Row& r, int i) { return r.p[0][4 * (i >> 1) + ((i & 1) ? O.y1 : O.y0)]; }
    static Orv8u& cb(const Row& r, int c) { return r.p[0][4 * c + O.cb]; }
    static Orv8u& cr(const Row& r, int c) { return r.p[0][4 * c + O.cr]; }

    static Side side(const Orv8u* p, int s)
    {
        if (!p)
            return {{}, true};
        return {{{const_cast<Orv8u*>(p), nullptr, nullptr}, {s, 0, 0}}, false};
    }

    // Per 4-byte group: the group's bytes to Y0 Y1 Cb Cr, and back.
    static __m256i toYYUV()
    {
        const int8_t a = O.y0, b = O.y1, c = O.cb, d = O.cr;
        return _mm256_setr_epi8(a, b, a + 4, b + 4, a + 8, b + 8, a + 12, b + 12, c, c + 4, c + 8, c + 12, d, d + 4,
                                d + 8, d + 12, a, b, a + 4, b + 4, a + 8, b + 8, a + 12, b + 12, c, c + 4, c + 8,
                                c + 12, d, d + 4, d + 8, d + 12);
    }
    static __m256i fromYYUV()
    {
        int8_t m[32];
        for (int g = 0; g < 8; ++g) {
            m[4 * g + O.y0] = int8_t(4 * (g & 3) + 0);
            m[4 * g + O.y1] = int8_t(4 * (g & 3) + 1);
            m[4 * g + O.cb] = int8_t(4 * (g & 3) + 2);
            m[4 * g + O.cr] = int8_t(4 * (g & 3) + 3);
        }
        return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(m));
    }

    // 64 pixels at luma index i: 128 bytes.
    static void loadYC(const Row& r, int i, __m256i& y0, __m256i& y1, __m256i& u, __m256i& v)
    {
        const __m256i* p = reinterpret_cast<const __m256i*>(r.p[0] + 2 * i);
        const __m256i m = toYYUV();
        // Each lane: luma of 8 pixels, then 4 Cb, then 4 Cr.
        const __m256i a = _mm256_shuffle_epi8(_mm256_loadu_si256(p), m);
        const __m256i b = _mm256_shuffle_epi8(_mm256_loadu_si256(p + 1), m);
        const __m256i c = _mm256_shuffle_epi8(_mm256_loadu_si256(p + 2), m);
        const __m256i d = _mm256_shuffle_epi8(_mm256_loadu_si256(p + 3), m);
        y0 = _mm256_permute4x64_epi64(_mm256_unpacklo_epi64(a, b), 0xD8);
        y1 = _mm256_permute4x64_epi64(_mm256_unpacklo_epi64(c, d), 0xD8);
        // Chroma in 4-sample groups 0 2 4 6 | 1 3 5 7 after the unpacks.
        const __m256i ab = _mm256_unpackhi_epi32(a, b), cd = _mm256_unpackhi_epi32(c, d);
        const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
        u = _mm256_permutevar8x32_epi32(_mm256_unpacklo_epi64(ab, cd), order);
        v = _mm256_permutevar8x32_epi32(_mm256_unpackhi_epi64(ab, cd), order);
    }
    static void storeYC(const Row& r, int i, __m256i y0, __m256i y1, __m256i u, __m256i v)
    {
        __m256i* p = reinterpret_cast<__m256i*>(r.p[0] + 2 * i);
        const __m256i m = fromYYUV();
        const __m256i uq = _mm256_permute4x64_epi64(u, 0xD8), vq = _mm256_permute4x64_epi64(v, 0xD8);
        // Chroma pairs of pixels 0-31 and 32-63, lane by lane with the luma.
        const __m256i uvA = _mm256_unpacklo_epi8(uq, vq), uvB = _mm256_unpackhi_epi8(uq, vq);
        const __m256i a0 = _mm256_shuffle_epi8(_mm256_unpacklo_epi16(y0, uvA), m);  // px 0-7 | 16-23
        const __m256i a1 = _mm256_shuffle_epi8(_mm256_unpackhi_epi16(y0, uvA), m);  // px 8-15 | 24-31
        const __m256i b0 = _mm256_shuffle_epi8(_mm256_unpacklo_epi16(y1, uvB), m);
        const __m256i b1 = _mm256_shuffle_epi8(_mm256_unpackhi_epi16(y1, uvB), m);
        _mm256_storeu_si256(p, _mm256_permute2x128_si256(a0, a1, 0x20));
        _mm256_storeu_si256(p + 1, _mm256_permute2x128_si256(a0, a1, 0x31));
        _mm256_storeu_si256(p + 2, _mm256_permute2x128_si256(b0, b1, 0x20));
        _mm256_storeu_si256(p + 3, _mm256_permute2x128_si256(b0, b1, 0x31));
    }
};

// Luma of 64 pixels of a planar or semi-planar row.
inline void loadY(const Row& r, int i, __m256i& y0, __m256i& y1)
{
    y0 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(r.p[0] + i));
    y1 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(r.p[0] + i + 32));
}
inline void storeY(const Row& r, int i, __m256i y0, __m256i y1)
{
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(r.p[0] + i), y0);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(r.p[0] + i + 32), y1);
}

// The layouts under the names the conversions use.
using PlanarCbCr = Planar<ChromaOrder::CbCr>;
using PlanarCrCb = Planar<ChromaOrder::CrCb>;
using SemiCbCr = SemiPlanar<ChromaOrder::CbCr>;
using SemiCrCb = SemiPlanar<ChromaOrder::CrCb>;
using PackedYCbCr = Packed<kYCbCr422>;
using PackedCbYCr = Packed<kCbYCr422>;
using PackedYCrCb = Packed<kYCrCb422>;

}  // namespace h9::fmt
