// RGB and YCoCg: a luma plane Y and the orange and green chroma planes Co
// and Cg, by adds and shifts alone.
//
// The plain transform
//     Y  = (R + 2G + B + 2) >> 2
//     Co = (R - B + 1) >> 1
//     Cg = (2G - R - B + 2) >> 2
// halves its chroma with rounding so that the three planes keep the range
// of the input; its inverse G = Y + Cg, B = Y - Co - Cg, R = Y + Co - Cg
// does not return the input exactly. The reversible transform is made of
// lifting steps,
//     Co = R - B,  t = B + (Co >> 1),  Cg = G - t,  Y = t + (Cg >> 1),
// which its inverse undoes one by one in reverse order; its chroma needs one
// bit more than the input. `>>` is an arithmetic shift (toward minus
// infinity) everywhere.
//
// Narrowing is done by the store: 16-bit results keep their low 16 bits,
// 32-bit results are whole, 8-bit results are taken as signed 16-bit values
// and saturated to 0..255. In the reversible transform to 16-bit planes Co
// and Cg are also taken as 16-bit values before they are halved, so that
// the lifting pair is exact modulo 2^16 for every input.
//
// Each transform is written once, over a number type: 64-bit integers for
// the scalar form (one pixel), 16 pixels in 16-bit lanes, whose wrapping sums
// are the low 16 bits of the exact ones, or 16 pixels in 32-bit lanes where a
// shift needs the bits above the sixteenth. A member uses 16-bit lanes only
// where every shifted value is exact in 16 bits or is taken as a 16-bit
// value by definition, so the vector path and the scalar form agree for
// every input, and a row can split between them anywhere: whole blocks of 16
// pixels go through the vector path, the rest through the scalar form.
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <type_traits>

#include "frame/driver.h"
#include "frame/scalar.h"
#include "frame/simd.h"
#include "orvcc.h"

namespace h9::ycocg {

// ---------------------------------------------------------------------------
// Number types.

// The scalar form's integers: wide enough that no sum of 32-bit plane
// values overflows.
using Int = int64_t;

// 16 pixels of one channel in 16-bit lanes, pixel order; sums wrap.
struct Lanes16 {
    __m256i v;
};
inline Lanes16 operator+(Lanes16 a, Lanes16 b) { return {_mm256_add_epi16(a.v, b.v)}; }
inline Lanes16 operator-(Lanes16 a, Lanes16 b) { return {_mm256_sub_epi16(a.v, b.v)}; }
inline Lanes16 operator+(Lanes16 a, int k) { return {_mm256_add_epi16(a.v, _mm256_set1_epi16(int16_t(k)))}; }
inline Lanes16 operator>>(Lanes16 a, int n) { return {_mm256_srai_epi16(a.v, n)}; }

// 16 pixels of one channel in 32-bit lanes: pixels 0-7, then 8-15.
struct Lanes32 {
    __m256i lo, hi;
};
inline Lanes32 operator+(Lanes32 a, Lanes32 b) { return {_mm256_add_epi32(a.lo, b.lo), _mm256_add_epi32(a.hi, b.hi)}; }
inline Lanes32 operator-(Lanes32 a, Lanes32 b) { return {_mm256_sub_epi32(a.lo, b.lo), _mm256_sub_epi32(a.hi, b.hi)}; }
inline Lanes32 operator+(Lanes32 a, int k)
{
    const __m256i c = _mm256_set1_epi32(k);
    return {_mm256_add_epi32(a.lo, c), _mm256_add_epi32(a.hi, c)};
}
inline Lanes32 operator>>(Lanes32 a, int n) { return {_mm256_srai_epi32(a.lo, n), _mm256_srai_epi32(a.hi, n)}; }

// Sign-extends 16-bit lanes to 32 bits, and keeps the low 16 bits of 32-bit
// lanes.
inline Lanes32 widen(Lanes16 a)
{
    return {_mm256_cvtepi16_epi32(_mm256_castsi256_si128(a.v)), _mm256_cvtepi16_epi32(_mm256_extracti128_si256(a.v, 1))};
}
inline Lanes16 low16(Lanes32 a)
{
    const __m256i m = _mm256_set1_epi32(0xffff);
    const __m256i p = _mm256_packus_epi32(_mm256_and_si256(a.lo, m), _mm256_and_si256(a.hi, m));
    return {_mm256_permute4x64_epi64(p, 0xD8)};
}

template <class N>
inline N as(Lanes16 a)
{
    if constexpr (std::is_same_v<N, Lanes16>)
        return a;
    else
        return widen(a);
}
inline Lanes16 as16(Lanes16 a) { return a; }
inline Lanes16 as16(Lanes32 a) { return low16(a); }

// Three channels of pixels: R, G, B on the pixel side, Y, Co, Cg on the
// plane side.
template <class N>
struct Trio {
    N a, b, c;
};

// A value taken as the plane type P: a 16-bit plane keeps the low 16 bits.
// Lanes already have the plane's width.
template <class P>
inline Int asPlane(Int x)
{
    return P(x);
}
template <class P, class N>
inline N asPlane(N x)
{
    static_assert(sizeof(P) == (std::is_same_v<N, Lanes16> ? 2 : 4), "lanes narrower than the plane");
    return x;
}

// ---------------------------------------------------------------------------
// Transforms: Trio in, Trio out, any number type.

struct PlainForward {
    template <class N>
    static Trio<N> apply(const Trio<N>& p)
    {
        const N &r = p.a, &g = p.b, &b = p.c;
        return {(r + g + g + b + 2) >> 2, (r - b + 1) >> 1, (g + g - r - b + 2) >> 2};
    }
};

struct PlainInverse {
    template <class N>
    static Trio<N> apply(const Trio<N>& p)
    {
        const N &y = p.a, &co = p.b, &cg = p.c;
        return {y + co - cg, y + cg, y - co - cg};
    }
};

// P: the plane type; Co and Cg are taken as P before they are halved.
template <class P>
struct LiftForward {
    template <class N>
    static Trio<N> apply(const Trio<N>& p)
    {
        const N &r = p.a, &g = p.b, &b = p.c;
        const N co = asPlane<P>(r - b);
        const N t = b + (co >> 1);
        const N cg = asPlane<P>(g - t);
        return {t + (cg >> 1), co, cg};
    }
};

struct LiftInverse {
    template <class N>
    static Trio<N> apply(const Trio<N>& p)
    {
        const N &y = p.a, &co = p.b, &cg = p.c;
        const N t = y - (cg >> 1);
        const N b = t - (co >> 1);
        return {b + co, cg + t, b};
    }
};

// Byte planes: the plain transform with 128 added to the chroma (saturated
// at 255 by the byte store; the sums never fall below 1).
struct BiasedForward {
    template <class N>
    static Trio<N> apply(const Trio<N>& p)
    {
        const Trio<N> q = PlainForward::apply(p);
        return {q.a, q.b + 128, q.c + 128};
    }
};

struct BiasedInverse {
    template <class N>
    static Trio<N> apply(const Trio<N>& p)
    {
        const N &y = p.a, &co = p.b, &cg = p.c;
        return {y + co - cg, y + cg + (-128), y - co - cg + 256};
    }
};

// ---------------------------------------------------------------------------
// Stores narrow a scalar result to the element type: low 16 or 32 bits, or
// for bytes a 16-bit value saturated to 0..255 (as packuswb does).
template <class T>
inline T narrow(Int x)
{
    if constexpr (std::is_same_v<T, uint8_t>)
        return satU8(int16_t(x));
    else
        return T(x);
}

// Channel S of 16 pixels out of Ch chunks of 16 bytes: bytes of
// Ch-byte pixels (all 16 pixels), or 16-bit elements of Ch-element pixels
// (lane 0 pixels 0-7, lane 1 pixels 8-15).
template <int Ch, int S>
inline __m128i gatherBytes(const __m128i* c)
{
    __m128i x = _mm_shuffle_epi8(c[0], simd::gatherMask128<Ch, S, 0, 1>());
    x = _mm_or_si128(x, _mm_shuffle_epi8(c[1], simd::gatherMask128<Ch, S, 1, 1>()));
    x = _mm_or_si128(x, _mm_shuffle_epi8(c[2], simd::gatherMask128<Ch, S, 2, 1>()));
    if constexpr (Ch == 4)
        x = _mm_or_si128(x, _mm_shuffle_epi8(c[3], simd::gatherMask128<Ch, S, 3, 1>()));
    return x;
}
template <int Ch, int S>
inline __m256i gatherWords(const __m256i* c)
{
    __m256i x = _mm256_shuffle_epi8(c[0], simd::gatherMask256<Ch, S, 0, 2>());
    x = _mm256_or_si256(x, _mm256_shuffle_epi8(c[1], simd::gatherMask256<Ch, S, 1, 2>()));
    x = _mm256_or_si256(x, _mm256_shuffle_epi8(c[2], simd::gatherMask256<Ch, S, 2, 2>()));
    if constexpr (Ch == 4)
        x = _mm256_or_si256(x, _mm256_shuffle_epi8(c[3], simd::gatherMask256<Ch, S, 3, 2>()));
    return x;
}

// Chunk K of the interleaved run from three channel registers (memory
// samples 0, 1, 2) and a register holding the fourth sample, if any.
template <int Ch, int K>
inline __m128i scatterBytes(const __m128i* c, __m128i fourth)
{
    __m128i x = _mm_shuffle_epi8(c[0], simd::scatterMask128<Ch, 0, K, 1>());
    x = _mm_or_si128(x, _mm_shuffle_epi8(c[1], simd::scatterMask128<Ch, 1, K, 1>()));
    x = _mm_or_si128(x, _mm_shuffle_epi8(c[2], simd::scatterMask128<Ch, 2, K, 1>()));
    return Ch == 4 ? _mm_or_si128(x, fourth) : x;
}
template <int Ch, int K>
inline __m256i scatterWords(const __m256i* c, __m256i fourth)
{
    __m256i x = _mm256_shuffle_epi8(c[0], simd::scatterMask256<Ch, 0, K, 2>());
    x = _mm256_or_si256(x, _mm256_shuffle_epi8(c[1], simd::scatterMask256<Ch, 1, K, 2>()));
    x = _mm256_or_si256(x, _mm256_shuffle_epi8(c[2], simd::scatterMask256<Ch, 2, K, 2>()));
    return Ch == 4 ? _mm256_or_si256(x, fourth) : x;
}

// Interleaved pixels of T (bytes or signed 16-bit), Ch samples a pixel. The
// colour lies in memory as B, G, R, or as R, G, B when Bgr is false; a fourth
// sample is never read, and on output takes `alpha`.
template <class T, int Ch, bool Bgr>
struct Pixels {
    static_assert(std::is_same_v<T, uint8_t> || std::is_same_v<T, int16_t>);
    // Memory samples of R and B.
    static constexpr int kR = Bgr ? 2 : 0;
    static constexpr int kB = 2 - kR;
};

template <class T, int Ch, bool Bgr>
struct PixelsIn : Pixels<T, Ch, Bgr> {
    using P = Pixels<T, Ch, Bgr>;
    const T* p;

    PixelsIn row(int y, int step) const { return {{}, rowAt(p, step, y)}; }

    Trio<Int> get(int i) const
    {
        const T* s = p + Ch * i;
        return {s[P::kR], s[1], s[P::kB]};
    }

    template <class N>
    Trio<N> load(int i) const
    {
        const T* s = p + Ch * i;
        if constexpr (sizeof(T) == 1) {
            __m128i c[Ch];
            for (int k = 0; k < Ch; ++k)
                c[k] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + 16 * k));
            auto widen8 = [](__m128i x) { return as<N>(Lanes16{_mm256_cvtepu8_epi16(x)}); };
            return {widen8(gatherBytes<Ch, P::kR>(c)), widen8(gatherBytes<Ch, 1>(c)), widen8(gatherBytes<Ch, P::kB>(c))};
        } else {
            __m256i c[Ch];
            for (int k = 0; k < Ch; ++k)
                c[k] = simd::load2x128(s + 8 * k, s + 8 * Ch + 8 * k);
            return {as<N>(Lanes16{gatherWords<Ch, P::kR>(c)}), as<N>(Lanes16{gatherWords<Ch, 1>(c)}),
                    as<N>(Lanes16{gatherWords<Ch, P::kB>(c)})};
        }
    }
};

template <class T, int Ch, bool Bgr>
struct PixelsOut : Pixels<T, Ch, Bgr> {
    using P = Pixels<T, Ch, Bgr>;
    T* p;
    T alpha = 0;

    PixelsOut row(int y, int step) const { return {{}, rowAt(p, step, y), alpha}; }

    void put(int i, const Trio<Int>& v) const
    {
        T* d = p + Ch * i;
        d[P::kR] = narrow<T>(v.a);
        d[1] = narrow<T>(v.b);
        d[P::kB] = narrow<T>(v.c);
        if constexpr (Ch == 4)
            d[3] = alpha;
    }

    template <class N>
    void store(int i, const Trio<N>& v) const
    {
        T* d = p + Ch * i;
        // Channel registers in memory order.
        const Lanes16 m[3] = {as16(Bgr ? v.c : v.a), as16(v.b), as16(Bgr ? v.a : v.c)};
        if constexpr (sizeof(T) == 1) {
            // Each channel saturated to 16 bytes in pixel order, then spread.
            __m128i c[3];
            for (int k = 0; k < 3; ++k)
                c[k] = _mm_packus_epi16(_mm256_castsi256_si128(m[k].v), _mm256_extracti128_si256(m[k].v, 1));
            const __m128i a = _mm_set1_epi32(int32_t(uint32_t(alpha) << 24));
            auto put16 = [&](int k, __m128i x) { _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 16 * k), x); };
            put16(0, scatterBytes<Ch, 0>(c, a));
            put16(1, scatterBytes<Ch, 1>(c, a));
            put16(2, scatterBytes<Ch, 2>(c, a));
            if constexpr (Ch == 4)
                put16(3, scatterBytes<Ch, 3>(c, a));
        } else {
            // Lane 0 holds pixels 0-7, lane 1 pixels 8-15.
            const __m256i c[3] = {m[0].v, m[1].v, m[2].v};
            const __m256i a = _mm256_set1_epi64x(int64_t(uint64_t(uint16_t(alpha)) << 48));
            auto put32 = [&](int k, __m256i x) {
                _mm256_storeu2_m128i(reinterpret_cast<__m128i*>(d + 8 * Ch + 8 * k), reinterpret_cast<__m128i*>(d + 8 * k), x);
            };
            put32(0, scatterWords<Ch, 0>(c, a));
            put32(1, scatterWords<Ch, 1>(c, a));
            put32(2, scatterWords<Ch, 2>(c, a));
            if constexpr (Ch == 4)
                put32(3, scatterWords<Ch, 3>(c, a));
        }
    }
};

// Three planes of T (bytes, signed 16-bit or signed 32-bit) sharing a step.
template <class T>
struct PlanesIn {
    const T* p[3];

    PlanesIn row(int y, int step) const { return {{rowAt(p[0], step, y), rowAt(p[1], step, y), rowAt(p[2], step, y)}}; }

    Trio<Int> get(int i) const { return {p[0][i], p[1][i], p[2][i]}; }

    template <class N>
    Trio<N> load(int i) const
    {
        auto plane = [&](int k) {
            const T* s = p[k] + i;
            if constexpr (std::is_same_v<T, uint8_t>) {
                return as<N>(Lanes16{_mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s)))});
            } else if constexpr (std::is_same_v<T, int16_t>) {
                return as<N>(Lanes16{_mm256_loadu_si256(reinterpret_cast<const __m256i*>(s))});
            } else {
                static_assert(std::is_same_v<N, Lanes32>, "32-bit planes need 32-bit lanes");
                return Lanes32{_mm256_loadu_si256(reinterpret_cast<const __m256i*>(s)),
                               _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + 8))};
            }
        };
        return {plane(0), plane(1), plane(2)};
    }
};

template <class T>
struct PlanesOut {
    T* p[3];

    PlanesOut row(int y, int step) const { return {{rowAt(p[0], step, y), rowAt(p[1], step, y), rowAt(p[2], step, y)}}; }

    void put(int i, const Trio<Int>& v) const
    {
        p[0][i] = narrow<T>(v.a);
        p[1][i] = narrow<T>(v.b);
        p[2][i] = narrow<T>(v.c);
    }

    template <class N>
    void store(int i, const Trio<N>& v) const
    {
        auto plane = [&](int k, const N& x) {
            T* d = p[k] + i;
            if constexpr (std::is_same_v<T, uint8_t>) {
                const Lanes16 w = as16(x);
                _mm_storeu_si128(reinterpret_cast<__m128i*>(d),
                                 _mm_packus_epi16(_mm256_castsi256_si128(w.v), _mm256_extracti128_si256(w.v, 1)));
            } else if constexpr (std::is_same_v<T, int16_t>) {
                _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), as16(x).v);
            } else {
                static_assert(std::is_same_v<N, Lanes32>, "32-bit planes need 32-bit lanes");
                _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), x.lo);
                _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 8), x.hi);
            }
        };
        plane(0, v.a);
        plane(1, v.b);
        plane(2, v.c);
    }
};

// ---------------------------------------------------------------------------
// One row: whole blocks of 16 pixels by the vector path on lanes N (or by
// the scalar form when the test switch asks for it), the rest by the scalar
// form.
template <class Form, class N, class In, class Out>
inline void convertRow(const In& in, const Out& out, int width)
{
    int i = 0;
    if (!g_scalarBlocks)
        for (; i + 16 <= width; i += 16)
            out.store(i, Form::apply(in.template load<N>(i)));
    for (; i < width; ++i)
        out.put(i, Form::apply(in.get(i)));
}

// The serial driver of every member: one row after the other.
template <class Form, class N, class In, class Out>
inline void convertRows(const In& in, int srcStep, const Out& out, int dstStep, RoiSize roi)
{
    for (int y = 0; y < roi.height; ++y)
        convertRow<Form, N>(in.row(y, srcStep), out.row(y, dstStep), roi.width);
}

}  // namespace h9::ycocg
