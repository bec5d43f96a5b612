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
// the scalar form (one pixel), or vectors of one channel of 16 or 32 pixels
// in 16-bit lanes, whose wrapping sums are the low 16 bits of the exact
// ones, or in 32-bit lanes where a shift needs the bits above the sixteenth.
// A member uses 16-bit lanes only where every shifted value is exact in 16
// bits or is taken as a 16-bit value by definition, so the vector path and
// the scalar form agree for every input, and a row can split between them
// anywhere: whole vectors go through the vector path, the rest of the row
// through the scalar form. Members with byte pixels move 32 pixels a step;
// the plain and biased transforms of byte pixels have a form on bytes, the
// plain one widening its results to 16 bits only at the end.
#pragma once

#include <immintrin.h>

#include <array>
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

// A vector type holds kPixels pixels of one channel, in pixel order.

// 16 pixels in 16-bit lanes; sums wrap.
struct Lanes16 {
    static constexpr int kPixels = 16;
    __m256i v;
};
inline Lanes16 operator+(Lanes16 a, Lanes16 b) { return {_mm256_add_epi16(a.v, b.v)}; }
inline Lanes16 operator-(Lanes16 a, Lanes16 b) { return {_mm256_sub_epi16(a.v, b.v)}; }
inline Lanes16 operator+(Lanes16 a, int k) { return {_mm256_add_epi16(a.v, _mm256_set1_epi16(int16_t(k)))}; }
inline Lanes16 operator>>(Lanes16 a, int n) { return {_mm256_srai_epi16(a.v, n)}; }

// 32 pixels in 16-bit lanes, as two vectors of 16 in pixel order (lo
// pixels 0-15, hi 16-31).
struct Pair16 {
    static constexpr int kPixels = 32;
    Lanes16 lo, hi;
};
inline Pair16 operator+(Pair16 a, Pair16 b) { return {a.lo + b.lo, a.hi + b.hi}; }
inline Pair16 operator-(Pair16 a, Pair16 b) { return {a.lo - b.lo, a.hi - b.hi}; }
inline Pair16 operator+(Pair16 a, int k) { return {a.lo + k, a.hi + k}; }
inline Pair16 operator>>(Pair16 a, int n) { return {a.lo >> n, a.hi >> n}; }

// 16 pixels in 32-bit lanes: pixels 0-7, then 8-15.
struct Lanes32 {
    static constexpr int kPixels = 16;
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

// 32 pixels of unsigned bytes, in pixel order. The plain and biased
// transforms of byte samples have a form on them (see there); no operators.
struct Bytes {
    static constexpr int kPixels = 32;
    __m256i v;
};

// 32 pixels of unsigned bytes in the order that unpacking against zero
// widens into pixel order: pixels 0-7 and 16-23 in lane 0, 8-15 and 24-31
// in lane 1. Four-byte pixels come out of memory this way without a
// shuffle across lanes, and so widen with two shuffles instead of three.
struct UnpackBytes {
    static constexpr int kPixels = 32;
    __m256i v;
};

// Conversions between the vector types and the two ways channels come out
// of memory: 32 bytes, or 16 signed 16-bit elements.
inline Lanes32 widen(Lanes16 a)
{
    return {_mm256_cvtepi16_epi32(_mm256_castsi256_si128(a.v)), _mm256_cvtepi16_epi32(_mm256_extracti128_si256(a.v, 1))};
}

template <class N>
inline N fromWords(__m256i v)
{
    if constexpr (std::is_same_v<N, Lanes16>)
        return {v};
    else
        return widen(Lanes16{v});
}

template <class N>
inline N fromBytes(__m256i v)
{
    if constexpr (std::is_same_v<N, Bytes>)
        return {v};
    else
        return {{_mm256_cvtepu8_epi16(_mm256_castsi256_si128(v))}, {_mm256_cvtepu8_epi16(_mm256_extracti128_si256(v, 1))}};
}

// Bytes widened to 16-bit lanes.
inline Pair16 widen(Bytes a) { return fromBytes<Pair16>(a.v); }
inline Pair16 widen(UnpackBytes a)
{
    const __m256i z = _mm256_setzero_si256();
    return {{_mm256_unpacklo_epi8(a.v, z)}, {_mm256_unpackhi_epi8(a.v, z)}};
}

// The low 16 bits of each value.
inline __m256i toWords(Lanes16 a) { return a.v; }
inline __m256i toWords(Lanes32 a)
{
    const __m256i m = _mm256_set1_epi32(0xffff);
    const __m256i p = _mm256_packus_epi32(_mm256_and_si256(a.lo, m), _mm256_and_si256(a.hi, m));
    return _mm256_permute4x64_epi64(p, 0xD8);
}

// Each 16-bit value saturated to 0..255 (packuswb), in pixel order.
inline __m256i toBytes(Bytes a) { return a.v; }
inline __m256i toBytes(Pair16 a) { return _mm256_permute4x64_epi64(_mm256_packus_epi16(a.lo.v, a.hi.v), 0xD8); }

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
    static_assert(sizeof(P) == (std::is_same_v<N, Lanes32> ? 4 : 2), "lanes narrower than the plane");
    return x;
}

// ---------------------------------------------------------------------------
// Transforms: Trio in, Trio out, any number type.

// The plain transform of byte samples on bytes. With ~x = 255 - x and
// avg(a, b) = (a + b + 1) >> 1 (pavgb), the floor of a half sum is
// ~avg(~a, ~b), avg(~a, b) = 128 + ((b - a) >> 1), and a carry bit below a
// shift by one more drops out, so
//   Y  = (R + 2G + B + 2) >> 2          = avg(G, ~avg(~R, ~B))
//   Co = (R - B + 1) >> 1               = 128 - avg(~R, B)
//   Cg = (2G - R - B + 2) >> 2          = 128 - avg(~G, avg(R, B))
// Y is returned as it is, and for the chroma the two averages: Co and Cg
// take 256 values, -127 to 128, which no byte holds, so the subtraction
// from 128 is left to the caller.
template <class B>
inline Trio<B> plainOnBytes(const Trio<B>& p)
{
    const __m256i r = p.a.v, g = p.b.v, b = p.c.v;
    const __m256i ones = _mm256_set1_epi8(-1);
    auto inv = [&](__m256i x) { return _mm256_xor_si256(x, ones); };
    const __m256i nr = inv(r);
    const __m256i y = _mm256_avg_epu8(g, inv(_mm256_avg_epu8(nr, inv(b))));
    const __m256i co = _mm256_avg_epu8(nr, b);
    const __m256i cg = _mm256_avg_epu8(inv(g), _mm256_avg_epu8(r, b));
    return {{y}, {co}, {cg}};
}

struct PlainForward {
    template <class N>
    static Trio<N> apply(const Trio<N>& p)
    {
        const N &r = p.a, &g = p.b, &b = p.c;
        const N rb = r + b, gg = g + g;
        return {(rb + gg + 2) >> 2, (r - b + 1) >> 1, (gg - rb + 2) >> 2};
    }

    // Byte samples: the byte form, widened to 16 bits at the end.
    static Trio<Pair16> apply(const Trio<Bytes>& p) { return onBytes(p); }
    static Trio<Pair16> apply(const Trio<UnpackBytes>& p) { return onBytes(p); }

    template <class B>
    static Trio<Pair16> onBytes(const Trio<B>& p)
    {
        const Trio<B> q = plainOnBytes(p);
        auto from128 = [](B x) {
            const Pair16 w = widen(x);
            const __m256i k = _mm256_set1_epi16(128);
            return Pair16{{_mm256_sub_epi16(k, w.lo.v)}, {_mm256_sub_epi16(k, w.hi.v)}};
        };
        return {widen(q.a), from128(q.b), from128(q.c)};
    }
};

struct PlainInverse {
    template <class N>
    static Trio<N> apply(const Trio<N>& p)
    {
        const N &y = p.a, &co = p.b, &cg = p.c;
        const N t = y - cg;
        return {t + co, y + cg, t - co};
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

    // The same on bytes, without widening: 128 added to the chroma of the
    // plain byte form is 256 - avg, that is ~avg + 1, added with saturation.
    static Trio<Bytes> apply(const Trio<Bytes>& p)
    {
        const Trio<Bytes> q = plainOnBytes(p);
        const __m256i ones = _mm256_set1_epi8(-1), one = _mm256_set1_epi8(1);
        auto up = [&](Bytes x) { return Bytes{_mm256_adds_epu8(_mm256_xor_si256(x.v, ones), one)}; };
        return {q.a, up(q.b), up(q.c)};
    }
};

struct BiasedInverse {
    template <class N>
    static Trio<N> apply(const Trio<N>& p)
    {
        const N &y = p.a, &co = p.b, &cg = p.c;
        const N t = y - cg;
        return {t + co, y + cg + (-128), t - co + 256};
    }

    // The same on bytes, without widening. Every result is a saturated
    // x + d with x and d unsigned bytes or their differences, so it is made
    // of the positive and negative parts of d: adds(subs(x, d-), d+), where
    // d+ = subs(a, b) and d- = subs(b, a) for d = a - b, one of them 0. With
    // t = Y - Cg, t+ = subs(Y, Cg), t- = subs(Cg, Y):
    //   R = t + Co               = adds(subs(Co, t-), t+)
    //   G = Y + (Cg - 128)       = adds(subs(Y, subs(128, Cg)), subs(Cg, 128))
    //   B = (t + 1) + (255 - Co) = adds(subs(~Co, subs(t-, 1)), adds(t+, subs(1, t-)))
    // where the parts of t + 1 are t- - 1 and t+ + 1 (the latter only where
    // t- is 0, and at most 256, which saturates B either way).
    static Trio<Bytes> apply(const Trio<Bytes>& p)
    {
        const __m256i y = p.a.v, co = p.b.v, cg = p.c.v;
        const __m256i one = _mm256_set1_epi8(1), half = _mm256_set1_epi8(-128);
        const __m256i tp = _mm256_subs_epu8(y, cg), tn = _mm256_subs_epu8(cg, y);
        const __m256i r = _mm256_adds_epu8(_mm256_subs_epu8(co, tn), tp);
        const __m256i g = _mm256_adds_epu8(_mm256_subs_epu8(y, _mm256_subs_epu8(half, cg)), _mm256_subs_epu8(cg, half));
        const __m256i nco = _mm256_xor_si256(co, _mm256_set1_epi8(-1));
        const __m256i b = _mm256_adds_epu8(_mm256_subs_epu8(nco, _mm256_subs_epu8(tn, one)),
                                           _mm256_adds_epu8(tp, _mm256_subs_epu8(one, tn)));
        return {{r}, {g}, {b}};
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

// Interleaved pixels move through channel registers of 32 bytes: lane 0
// holds the first half of the pixels of a vector, lane 1 the second half;
// 32 pixels of bytes or 16 pixels of 16-bit elements (EB bytes each). Each
// lane's pixels take 16 * Ch bytes of memory, in Ch chunks of 16.

// Chunk K of four-sample pixels from the channel registers of memory
// samples 0, 1, 2 and a register holding the fourth sample.
template <int K, int EB>
inline __m256i scatter4(const __m256i* c, __m256i fourth)
{
    __m256i x = _mm256_shuffle_epi8(c[0], simd::scatterMask256<4, 0, K, EB>());
    x = _mm256_or_si256(x, _mm256_shuffle_epi8(c[1], simd::scatterMask256<4, 1, K, EB>()));
    x = _mm256_or_si256(x, _mm256_shuffle_epi8(c[2], simd::scatterMask256<4, 2, K, EB>()));
    return _mm256_or_si256(x, fourth);
}

// Chunks of three-sample pixels, with a third of the shuffles: a lane
// holds n = 16 / EB elements, and as 3 and n share no factor, each element
// of a lane's 3n memory elements is the only one of its sample at its
// position modulo n. So one pshufb a channel register moves pixel i of
// memory sample s to (3i + s) mod n, where every chunk wants it, and each
// chunk picks its elements from the three by byte blends.
constexpr std::array<int8_t, 16> rotateMask(int s, int eb)
{
    std::array<int8_t, 16> m{};
    const int n = 16 / eb;
    for (int i = 0; i < n; ++i)
        for (int b = 0; b < eb; ++b)
            m[((3 * i + s) % n) * eb + b] = int8_t(i * eb + b);
    return m;
}

// All ones on the bytes of chunk K that belong to memory sample s.
constexpr std::array<int8_t, 16> sampleMask(int s, int k, int eb)
{
    std::array<int8_t, 16> m{};
    for (int j = 0; j < 16; ++j)
        m[j] = (16 * k + j) / eb % 3 == s ? int8_t(-1) : int8_t(0);
    return m;
}

// Chunk K of the pixels into chunk[K], K = 0, 1, 2.
template <int EB>
inline void interleave3(const __m256i* c, __m256i* chunk)
{
    auto mask = [](const std::array<int8_t, 16>& m) {
        return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(m.data())));
    };
    static constexpr std::array<int8_t, 16> rot[3] = {rotateMask(0, EB), rotateMask(1, EB), rotateMask(2, EB)};
    static constexpr std::array<int8_t, 16> sel[3][2] = {{sampleMask(1, 0, EB), sampleMask(2, 0, EB)},
                                                         {sampleMask(1, 1, EB), sampleMask(2, 1, EB)},
                                                         {sampleMask(1, 2, EB), sampleMask(2, 2, EB)}};
    const __m256i r0 = _mm256_shuffle_epi8(c[0], mask(rot[0]));
    const __m256i r1 = _mm256_shuffle_epi8(c[1], mask(rot[1]));
    const __m256i r2 = _mm256_shuffle_epi8(c[2], mask(rot[2]));
    for (int k = 0; k < 3; ++k)
        chunk[k] = _mm256_blendv_epi8(_mm256_blendv_epi8(r0, r1, mask(sel[k][0])), r2, mask(sel[k][1]));
}

// The inverse of rotateMask: element (3i + s) mod n of a lane back to i.
constexpr std::array<int8_t, 16> unrotateMask(int s, int eb)
{
    std::array<int8_t, 16> m{};
    const int n = 16 / eb;
    for (int i = 0; i < n; ++i)
        for (int b = 0; b < eb; ++b)
            m[i * eb + b] = int8_t(((3 * i + s) % n) * eb + b);
    return m;
}

// The chunks of 96 bytes of three-sample pixels: bytes 16k to 16k + 15 in
// lane 0 of c[k], 48 + 16k to 63 + 16k in lane 1. Whole loads at 0, 16, 32,
// 48 and 64 joined by dword blends, which any vector port runs, leave the
// shuffle ports to the gather (inserting half loads would take them).
inline void chunks3(const uint8_t* s, __m256i* c)
{
    auto at = [&](int j) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + j)); };
    const __m256i mid = at(32);
    c[0] = _mm256_blend_epi32(at(0), mid, 0xF0);
    c[1] = _mm256_blend_epi32(at(16), at(48), 0xF0);
    c[2] = _mm256_blend_epi32(mid, at(64), 0xF0);
}

// Memory sample S of three-sample pixels out of the chunks c[0..3): byte
// blends take from each chunk the elements of sample S (one chunk a
// position, as above), and one pshufb puts pixel i at element i.
template <int S, int EB>
inline __m256i gather3(const __m256i* c)
{
    auto mask = [](const std::array<int8_t, 16>& m) {
        return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(m.data())));
    };
    static constexpr std::array<int8_t, 16> sel1 = sampleMask(S, 1, EB), sel2 = sampleMask(S, 2, EB);
    static constexpr std::array<int8_t, 16> unrot = unrotateMask(S, EB);
    const __m256i x = _mm256_blendv_epi8(_mm256_blendv_epi8(c[0], c[1], mask(sel1)), c[2], mask(sel2));
    return _mm256_shuffle_epi8(x, mask(unrot));
}

// Samples 0, 1 and 2 of 32 four-byte pixels, each in the order of
// UnpackBytes. The loads put pixels 0-3, 4-7, 16-19, 20-23 in lane 0 of
// four registers and 8-11, 12-15, 24-27, 28-31 in lane 1; a pshufb groups
// each lane's four pixels by sample (four dwords), and two rounds of
// unpacks gather the dwords of a sample.
inline void samples4x32(const uint8_t* s, __m256i* out)
{
    const __m256i bySample = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15));
    __m256i v[4];
    for (int k = 0; k < 4; ++k) {
        const uint8_t* q = s + 16 * (k & 1) + 64 * (k >> 1);
        v[k] = _mm256_shuffle_epi8(simd::load2x128(q, q + 32), bySample);
    }
    const __m256i t0 = _mm256_unpacklo_epi32(v[0], v[1]), t1 = _mm256_unpackhi_epi32(v[0], v[1]);
    const __m256i t2 = _mm256_unpacklo_epi32(v[2], v[3]), t3 = _mm256_unpackhi_epi32(v[2], v[3]);
    out[0] = _mm256_unpacklo_epi64(t0, t2);
    out[1] = _mm256_unpackhi_epi64(t0, t2);
    out[2] = _mm256_unpacklo_epi64(t1, t3);
}

// Samples 0, 1 and 2 of 16 four-sample pixels of signed 16-bit elements,
// as Lanes32 or Lanes16. A pixel is two dwords, samples 1:0 and 3:2. With
// pixels 0-1 in lane 0 of one register and 2-3 in lane 0 of another, one
// shufps takes the first dwords of pixels 0-3 in order and one the second
// dwords, and lane 1 does the same for the pixels loaded there: 4-7 for
// Lanes32, 8-11 for Lanes16. Shifts then sign-extend each half of a dword,
// which is Lanes32 as it stands; for Lanes16 a saturating pack (exact, the
// values are 16-bit) joins pixels 0-3 and 4-7 in lane 0 and 8-11 and 12-15
// in lane 1, pixel order again. Picking words with byte shuffles took
// twelve shuffles and nine ORs for 16 pixels, and six more to widen.
template <class N>
inline void samples4x16(const uint8_t* s, N* out)
{
    constexpr bool kNarrow = std::is_same_v<N, Lanes16>;
    // Byte offsets of the pixels loaded into lane 1, and of the second
    // group of registers.
    constexpr int kLane1 = kNarrow ? 64 : 32, kGroup = kNarrow ? 32 : 64;
    __m256i first[2], second[2];
    for (int h = 0; h < 2; ++h) {
        const uint8_t* q = s + kGroup * h;
        const __m256 a = _mm256_castsi256_ps(simd::load2x128(q, q + kLane1));
        const __m256 b = _mm256_castsi256_ps(simd::load2x128(q + 16, q + 16 + kLane1));
        first[h] = _mm256_castps_si256(_mm256_shuffle_ps(a, b, 0x88));
        second[h] = _mm256_castps_si256(_mm256_shuffle_ps(a, b, 0xDD));
    }
    auto low = [](__m256i x) { return _mm256_srai_epi32(_mm256_slli_epi32(x, 16), 16); };
    auto high = [](__m256i x) { return _mm256_srai_epi32(x, 16); };
    auto make = [](__m256i x0, __m256i x1) {
        if constexpr (kNarrow)
            return Lanes16{_mm256_packs_epi32(x0, x1)};
        else
            return Lanes32{x0, x1};
    };
    out[0] = make(low(first[0]), low(first[1]));
    out[1] = make(high(first[0]), high(first[1]));
    out[2] = make(low(second[0]), low(second[1]));
}

// Interleaved pixels of T (bytes or signed 16-bit), Ch samples a pixel. The
// colour lies in memory as B, G, R, or as R, G, B when Bgr is false; a fourth
// sample is never read, and on output takes `alpha`. Bytes travel as Bytes,
// Pair16 (32 pixels), 16-bit samples as Lanes16 or Lanes32
// (16 pixels).
template <class T, int Ch, bool Bgr>
struct Pixels {
    static_assert(std::is_same_v<T, uint8_t> || std::is_same_v<T, int16_t>);
    static constexpr int kEB = sizeof(T);
    // Memory samples of R and B.
    static constexpr int kR = Bgr ? 2 : 0;
    static constexpr int kB = 2 - kR;

    template <class N>
    static N from(__m256i v)
    {
        if constexpr (kEB == 1)
            return fromBytes<N>(v);
        else
            return fromWords<N>(v);
    }
    template <class N>
    static __m256i to(const N& v)
    {
        if constexpr (kEB == 1)
            return toBytes(v);
        else
            return toWords(v);
    }
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
        static_assert(N::kPixels * P::kEB == 32);
        const uint8_t* s = reinterpret_cast<const uint8_t*>(p + Ch * i);
        if constexpr (P::kEB == 1) {
            // Byte pixels take the least arithmetic, so here the loads wait
            // most on memory: ask for the pixels of 16 steps ahead now (two
            // cache lines cover the 96 or 128 bytes a step reads).
            _mm_prefetch(reinterpret_cast<const char*>(s) + 512 * Ch, _MM_HINT_T0);
            _mm_prefetch(reinterpret_cast<const char*>(s) + 512 * Ch + 64, _MM_HINT_T0);
        }
        if constexpr (Ch == 4 && P::kEB == 1) {
            static_assert(std::is_same_v<N, UnpackBytes> || std::is_same_v<N, Pair16>);
            __m256i c[3];
            samples4x32(s, c);
            auto from = [](__m256i x) {
                if constexpr (std::is_same_v<N, UnpackBytes>)
                    return UnpackBytes{x};
                else
                    return widen(UnpackBytes{x});
            };
            return {from(c[P::kR]), from(c[1]), from(c[P::kB])};
        } else if constexpr (Ch == 4 && P::kEB == 2) {
            N c[3];
            samples4x16(s, c);
            return {c[P::kR], c[1], c[P::kB]};
        } else {
            static_assert(Ch == 3);
            __m256i c[3];
            chunks3(s, c);
            return {P::template from<N>(gather3<P::kR, P::kEB>(c)), P::template from<N>(gather3<1, P::kEB>(c)),
                    P::template from<N>(gather3<P::kB, P::kEB>(c))};
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
        static_assert(N::kPixels * P::kEB == 32);
        uint8_t* d = reinterpret_cast<uint8_t*>(p + Ch * i);
        // Channel registers in memory order, and the fourth sample.
        const __m256i c[3] = {P::to(Bgr ? v.c : v.a), P::to(v.b), P::to(Bgr ? v.a : v.c)};
        const __m256i a = P::kEB == 1 ? _mm256_set1_epi32(int32_t(uint32_t(uint8_t(alpha)) << 24))
                                      : _mm256_set1_epi64x(int64_t(uint64_t(uint16_t(alpha)) << 48));
        auto put = [&](int k, __m256i x) {
            _mm256_storeu2_m128i(reinterpret_cast<__m128i*>(d + 16 * Ch + 16 * k), reinterpret_cast<__m128i*>(d + 16 * k), x);
        };
        if constexpr (Ch == 3) {
            // The chunks hold bytes 16k.. and 48 + 16k.. of the 96; whole
            // 32-byte stores take them two lanes at a time.
            __m256i k[3];
            interleave3<P::kEB>(c, k);
            auto at = [&](int j, __m256i x) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + j), x); };
            at(0, _mm256_permute2x128_si256(k[0], k[1], 0x20));
            at(32, _mm256_blend_epi32(k[2], k[0], 0xF0));
            at(64, _mm256_permute2x128_si256(k[1], k[2], 0x31));
        } else {
            put(0, scatter4<0, P::kEB>(c, a));
            put(1, scatter4<1, P::kEB>(c, a));
            put(2, scatter4<2, P::kEB>(c, a));
            put(3, scatter4<3, P::kEB>(c, a));
        }
    }
};

// Three planes of T (bytes, signed 16-bit or signed 32-bit) sharing a step.
// Byte planes travel as Bytes or Pair16, 16-bit ones as
// Lanes16, Lanes32 or Pair16, 32-bit ones as Lanes32.
template <class T, class N>
inline N loadPlane(const T* s)
{
    auto at = [&](int j) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + j)); };
    if constexpr (std::is_same_v<T, uint8_t>)
        return fromBytes<N>(at(0));
    else if constexpr (std::is_same_v<T, int16_t> && std::is_same_v<N, Pair16>)
        return {{at(0)}, {at(16)}};
    else if constexpr (std::is_same_v<T, int16_t>)
        return fromWords<N>(at(0));
    else
        return Lanes32{at(0), at(8)};
}

template <class T, class N>
inline void storePlane(T* d, const N& v)
{
    auto at = [&](int j, __m256i x) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + j), x); };
    if constexpr (std::is_same_v<T, uint8_t>) {
        at(0, toBytes(v));
    } else if constexpr (std::is_same_v<T, int16_t> && std::is_same_v<N, Pair16>) {
        at(0, v.lo.v);
        at(16, v.hi.v);
    } else if constexpr (std::is_same_v<T, int16_t>) {
        at(0, toWords(v));
    } else {
        at(0, v.lo);
        at(8, v.hi);
    }
}

template <class T>
struct PlanesIn {
    const T* p[3];

    PlanesIn row(int y, int step) const { return {{rowAt(p[0], step, y), rowAt(p[1], step, y), rowAt(p[2], step, y)}}; }

    Trio<Int> get(int i) const { return {p[0][i], p[1][i], p[2][i]}; }

    template <class N>
    Trio<N> load(int i) const
    {
        return {loadPlane<T, N>(p[0] + i), loadPlane<T, N>(p[1] + i), loadPlane<T, N>(p[2] + i)};
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
        storePlane(p[0] + i, v.a);
        storePlane(p[1] + i, v.b);
        storePlane(p[2] + i, v.c);
    }
};

// ---------------------------------------------------------------------------
// One row: whole vectors of N::kPixels pixels by the vector path (or by the
// scalar form when the test switch asks for it), the rest by the scalar
// form.
template <class Form, class N, class In, class Out>
inline void convertRow(const In& in, const Out& out, int width)
{
    int i = 0;
    if (!g_scalarBlocks)
        for (; i + N::kPixels <= width; i += N::kPixels)
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
