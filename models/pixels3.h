// Three-channel pixels as single-precision lanes, for the colour-model
// families that compute in float.
//
// h9::px3: the element conversions of 16u, 16s and 32f data, the unit
// clamp, and loads and stores of eight interleaved pixels (C3, or AC4 with
// the destination's fourth channel kept) as one register per channel. The
// loads give the eight pixels in an order of their own (the same for the
// three channels), and the matching store puts every lane back where it
// came from, so a conversion whose pixels never meet can run between them.
//
// h9::lanes: one pixel or eight with the same arithmetic. The perceptual
// conversions are long chains of single-precision steps whose order and
// rounding decide the last bit. Each chain is written once, as a template
// over its number type: `float` gives the scalar form of one pixel, F8 the
// AVX2 path of eight pixels, and both round at exactly the same places. Only
// the loads and stores differ between the two.
//
//   float / F8      values            bool / M8       comparison results
//   int32_t / I8    integers          fmadd, fmsub, fnmadd: one rounding
#pragma once

#include <immintrin.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "frame/scalar.h"
#include "frame/simd.h"

namespace h9::px3 {

// Element conversions. `in` makes a float of an element (16s data is raised
// by 32768 first, so -32768..32767 becomes 0..65535); `out` truncates a
// result and clamps it to the element's range, as narrow() does for lanes.
template <class T>
struct Elem;

template <>
struct Elem<uint16_t> {
    static float in(uint16_t x) { return float(x); }
    // Offset into the signed range, saturate, offset back in 16 bits: a
    // clamp to 0..65535 of any int32.
    static uint16_t clamp(int32_t v) { return uint16_t(uint16_t(satS16(int32_t(uint32_t(v) - 32768u))) + 32768u); }
    static uint16_t out(float t) { return clamp(cvtTrunc(t)); }
    static __m256 in(__m256i x) { return _mm256_cvtepi32_ps(x); }
    static __m256i widen(__m128i x) { return _mm256_cvtepu16_epi32(x); }
    // Two registers of eight int32 to sixteen elements, in lane order.
    static __m256i narrow(__m256i a, __m256i b)
    {
        const __m256i off = _mm256_set1_epi32(-32768);
        const __m256i v = _mm256_packs_epi32(_mm256_add_epi32(a, off), _mm256_add_epi32(b, off));
        return _mm256_xor_si256(v, _mm256_set1_epi16(int16_t(0x8000)));
    }
};

template <>
struct Elem<int16_t> {
    static float in(int16_t x) { return float(int32_t(x) + 32768); }
    // Back from the raised scale: less 32768, saturated to -32768..32767.
    static int16_t clamp(int32_t v) { return satS16(int32_t(uint32_t(v) - 32768u)); }
    static int16_t out(float t) { return clamp(cvtTrunc(t)); }
    static __m256 in(__m256i x) { return _mm256_cvtepi32_ps(_mm256_add_epi32(x, _mm256_set1_epi32(32768))); }
    static __m256i widen(__m128i x) { return _mm256_cvtepi16_epi32(x); }
    static __m256i narrow(__m256i a, __m256i b)
    {
        const __m256i off = _mm256_set1_epi32(-32768);
        return _mm256_packs_epi32(_mm256_add_epi32(a, off), _mm256_add_epi32(b, off));
    }
};

template <>
struct Elem<float> {
    static float in(float x) { return x; }
};

// Clamp to 0..1 written as the vector instructions compute it: below 0
// becomes 0, anything else the minimum of 1 and the value (minps(1, v)
// returns v when v is NaN, so a NaN passes).
inline float clampUnit(float v) { return v < 0.0f ? 0.0f : (1.0f < v ? 1.0f : v); }
// maxps(0, v) is 0 > v ? 0 : v: 0 below zero, v itself for -0, NaN and the
// rest, which is the same thing in two instructions.
inline __m256 clampUnit(__m256 v)
{
    return _mm256_min_ps(_mm256_set1_ps(1.0f), _mm256_max_ps(_mm256_setzero_ps(), v));
}

template <class T>
inline __m128i load128(const T* p)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

// ---------------------------------------------------------------------------
// C3: eight pixels, 24 elements. The order of the lanes is that of
// simd::deinterleave3x8Rotated.

template <class T>
inline void loadC3(const T* s, __m256 in[3])
{
    __m256i x[3];
    if constexpr (std::is_same_v<T, float>) {
        simd::deinterleave3x8Rotated(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(s)),
                                     _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + 8)),
                                     _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + 16)), x[0], x[1], x[2]);
        for (int k = 0; k < 3; ++k)
            in[k] = _mm256_castsi256_ps(x[k]);
    } else {
        auto load = [&](int k) { return Elem<T>::widen(load128(s + 8 * k)); };
        simd::deinterleave3x8Rotated(load(0), load(1), load(2), x[0], x[1], x[2]);
        for (int k = 0; k < 3; ++k)
            in[k] = Elem<T>::in(x[k]);
    }
}

inline void storeC3(float* d, const __m256 t[3])
{
    __m256i a, b, c;
    simd::interleave3x8Rotated(_mm256_castps_si256(t[0]), _mm256_castps_si256(t[1]), _mm256_castps_si256(t[2]), a, b, c);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), a);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 8), b);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 16), c);
}

// Integer results in int32 lanes, narrowed by Elem<T>::narrow.
template <class T>
inline void storeC3(T* d, const __m256i x[3])
{
    __m256i a, b, c;
    simd::interleave3x8Rotated(x[0], x[1], x[2], a, b, c);
    const __m256i ab = _mm256_permute4x64_epi64(Elem<T>::narrow(a, b), 0xD8);
    const __m256i cc = _mm256_permute4x64_epi64(Elem<T>::narrow(c, c), 0xD8);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), ab);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 16), _mm256_castsi256_si128(cc));
}

// ---------------------------------------------------------------------------
// AC4: eight pixels, 32 elements, as four registers q0..q3 of two pixels
// each ([p0 | p1], [p2 | p3], ...). Channel c of the result holds pixels
// 0 2 4 6 | 1 3 5 7.

inline void transposeIn(__m256 q0, __m256 q1, __m256 q2, __m256 q3, __m256 in[3])
{
    const __m256 t0 = _mm256_unpacklo_ps(q0, q1);  // c0 c0 c1 c1 of p0 p2 | p1 p3
    const __m256 t1 = _mm256_unpackhi_ps(q0, q1);  // c2 c2 c3 c3
    const __m256 t2 = _mm256_unpacklo_ps(q2, q3);
    const __m256 t3 = _mm256_unpackhi_ps(q2, q3);
    in[0] = _mm256_shuffle_ps(t0, t2, 0x44);
    in[1] = _mm256_shuffle_ps(t0, t2, 0xEE);
    in[2] = _mm256_shuffle_ps(t1, t3, 0x44);
}

// The inverse; the fourth channel of each pixel is a copy of the third, to
// be replaced by the destination's.
inline void transposeOut(__m256 c0, __m256 c1, __m256 c2, __m256 q[4])
{
    const __m256 t0 = _mm256_unpacklo_ps(c0, c1);  // c0 c1 of p0, of p2 | p1, p3
    const __m256 t1 = _mm256_unpackhi_ps(c0, c1);  // p4, p6 | p5, p7
    const __m256 t2 = _mm256_unpacklo_ps(c2, c2);
    const __m256 t3 = _mm256_unpackhi_ps(c2, c2);
    q[0] = _mm256_shuffle_ps(t0, t2, 0x44);
    q[1] = _mm256_shuffle_ps(t0, t2, 0xEE);
    q[2] = _mm256_shuffle_ps(t1, t3, 0x44);
    q[3] = _mm256_shuffle_ps(t1, t3, 0xEE);
}

template <class T>
inline void loadAC4(const T* s, __m256 in[3])
{
    __m256 q[4];
    for (int k = 0; k < 4; ++k) {
        if constexpr (std::is_same_v<T, float>)
            q[k] = _mm256_loadu_ps(s + 8 * k);
        else
            q[k] = Elem<T>::in(Elem<T>::widen(load128(s + 8 * k)));
    }
    transposeIn(q[0], q[1], q[2], q[3], in);
}

inline void storeAC4(float* d, const __m256 t[3])
{
    __m256 q[4];
    transposeOut(t[0], t[1], t[2], q);
    for (int k = 0; k < 4; ++k)
        _mm256_storeu_ps(d + 8 * k, _mm256_blend_ps(q[k], _mm256_loadu_ps(d + 8 * k), 0x88));
}

template <class T>
inline void storeAC4(T* d, const __m256i x[3])
{
    __m256 q[4];
    transposeOut(_mm256_castsi256_ps(x[0]), _mm256_castsi256_ps(x[1]), _mm256_castsi256_ps(x[2]), q);
    for (int k = 0; k < 4; k += 2) {
        // [p0 p2 | p1 p3] after the pack, in 64-bit quarters.
        const __m256i v = _mm256_permute4x64_epi64(
            Elem<T>::narrow(_mm256_castps_si256(q[k]), _mm256_castps_si256(q[k + 1])), 0xD8);
        __m256i* dk = reinterpret_cast<__m256i*>(d + 8 * k);
        _mm256_storeu_si256(dk, _mm256_blend_epi16(v, _mm256_loadu_si256(dk), 0x88));
    }
}

}  // namespace h9::px3

namespace h9::lanes {

struct F8 {
    __m256 v;
    F8() = default;
    F8(__m256 x) : v(x) {}
    F8(float x) : v(_mm256_set1_ps(x)) {}
};
struct M8 {
    __m256 v;
};
struct I8 {
    __m256i v;
    I8() = default;
    I8(__m256i x) : v(x) {}
    I8(int32_t x) : v(_mm256_set1_epi32(x)) {}
};

inline F8 operator+(F8 a, F8 b) { return _mm256_add_ps(a.v, b.v); }
inline F8 operator-(F8 a, F8 b) { return _mm256_sub_ps(a.v, b.v); }
inline F8 operator*(F8 a, F8 b) { return _mm256_mul_ps(a.v, b.v); }
inline F8 operator/(F8 a, F8 b) { return _mm256_div_ps(a.v, b.v); }
inline F8 operator-(F8 a) { return _mm256_xor_ps(a.v, _mm256_set1_ps(-0.0f)); }

// a * b + c, a * b - c, c - a * b, each with one rounding.
inline float fmadd(float a, float b, float c) { return fmaf32(a, b, c); }
inline float fmsub(float a, float b, float c) { return fmaf32(a, b, -c); }
inline float fnmadd(float a, float b, float c) { return fmaf32(-a, b, c); }
inline F8 fmadd(F8 a, F8 b, F8 c) { return _mm256_fmadd_ps(a.v, b.v, c.v); }
inline F8 fmsub(F8 a, F8 b, F8 c) { return _mm256_fmsub_ps(a.v, b.v, c.v); }
inline F8 fnmadd(F8 a, F8 b, F8 c) { return _mm256_fnmadd_ps(a.v, b.v, c.v); }

// The processor's approximate reciprocal (about 12 bits), and that value
// after one Newton step: r - r (r x - 1), fused twice.
inline float rcp(float x) { return _mm_cvtss_f32(_mm_rcp_ss(_mm_set_ss(x))); }
inline F8 rcp(F8 x) { return _mm256_rcp_ps(x.v); }
template <class F>
inline F rcpRefined(F x)
{
    const F r = rcp(x);
    return fnmadd(fmsub(r, x, F(1.0f)), r, r);
}

// Ordered comparisons: false where either side is NaN.
inline bool le(float a, float b) { return a <= b; }
inline bool lt(float a, float b) { return a < b; }
inline bool eq(float a, float b) { return a == b; }
inline M8 le(F8 a, F8 b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_LE_OQ)}; }
inline M8 lt(F8 a, F8 b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_LT_OQ)}; }
inline M8 eq(F8 a, F8 b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_EQ_OQ)}; }

// Whether any lane of any of three comparison results holds.
inline bool any(bool a, bool b, bool c) { return a || b || c; }
inline bool any(M8 a, M8 b, M8 c)
{
    const __m256 m = _mm256_or_ps(_mm256_or_ps(a.v, b.v), c.v);
    return !_mm256_testz_ps(m, m);
}

inline float select(bool m, float a, float b) { return m ? a : b; }
inline F8 select(M8 m, F8 a, F8 b) { return _mm256_blendv_ps(b.v, a.v, m.v); }

// minps / maxps: the second operand where the comparison fails (NaN).
inline float minps(float a, float b) { return a < b ? a : b; }
inline F8 minps(F8 a, F8 b) { return _mm256_min_ps(a.v, b.v); }
inline float absps(float a) { return std::fabs(a); }
inline F8 absps(F8 a) { return _mm256_andnot_ps(_mm256_set1_ps(-0.0f), a.v); }

// Float to integer: toward zero, or in the thread's rounding mode. Out of
// range and NaN give INT32_MIN.
inline int32_t truncI(float x) { return cvtTrunc(x); }
inline int32_t nearestI(float x) { return cvtNearest(x); }
inline I8 truncI(F8 x) { return _mm256_cvttps_epi32(x.v); }
inline I8 nearestI(F8 x) { return _mm256_cvtps_epi32(x.v); }

inline int32_t shr(int32_t a, int n) { return a >> n; }
inline I8 shr(I8 a, int n) { return _mm256_srai_epi32(a.v, n); }
inline int32_t clampI(int32_t a, int32_t lo, int32_t hi) { return a < lo ? lo : a > hi ? hi : a; }
inline I8 clampI(I8 a, int32_t lo, int32_t hi)
{
    return _mm256_min_epi32(_mm256_max_epi32(a.v, _mm256_set1_epi32(lo)), _mm256_set1_epi32(hi));
}
inline int32_t maxI(int32_t a, int32_t b) { return a > b ? a : b; }
inline I8 maxI(I8 a, int32_t b) { return _mm256_max_epi32(a.v, _mm256_set1_epi32(b)); }
inline int32_t sub(int32_t a, int32_t b) { return a - b; }
inline I8 sub(I8 a, I8 b) { return _mm256_sub_epi32(a.v, b.v); }

// The integer of each lane.
template <class F>
using IntOf = std::conditional_t<std::is_same_v<F, float>, int32_t, I8>;

// Entry `i` of a table of float pairs, both members.
template <class P>
inline void lookup(const P* table, int32_t i, float& first, float& second)
{
    first = table[i].c;
    second = table[i].b;
}
// Eight lanes whose indices lie in memory, two to each 64-bit word (lanes
// 2k and 2k + 1 in word k, as a vector store leaves them): one 64-bit load of
// each lane's pair, then the members separated by shuffles. Measured against
// two 32-bit gathers (one per member) and against two 64-bit gathers of four
// pairs each, this is as fast with one lookup a pixel and clearly faster
// with three. The indices are never negative: taken as unsigned they address
// the table without a sign extension each.
template <class P>
inline void lookupAt(const P* table, const uint64_t* at, F8& first, F8& second)
{
    static_assert(sizeof(P) == 8);
    auto two = [&](uint64_t ab) {  // first, second of two lanes
        const __m128 lo = _mm_loadl_pi(_mm_setzero_ps(), reinterpret_cast<const __m64*>(&table[uint32_t(ab)]));
        return _mm_loadh_pi(lo, reinterpret_cast<const __m64*>(&table[uint32_t(ab >> 32)]));
    };
    const __m256 even = _mm256_setr_m128(two(at[0]), two(at[2]));  // lanes 0 1 | 4 5
    const __m256 odd = _mm256_setr_m128(two(at[1]), two(at[3]));   // lanes 2 3 | 6 7
    first = _mm256_shuffle_ps(even, odd, 0x88);
    second = _mm256_shuffle_ps(even, odd, 0xDD);
}
// Indices in a register go through memory, two to a 64-bit load: one store
// and four loads cost less than eight moves from vector to general
// registers, which the compiler would otherwise choose (the empty statement
// keeps the store).
template <class P>
inline void lookup(const P* table, I8 i, F8& first, F8& second)
{
    alignas(32) uint64_t at[4];
    _mm256_store_si256(reinterpret_cast<__m256i*>(at), i.v);
    asm("" : : "m"(at));
    lookupAt(table, at, first, second);
}

// ---------------------------------------------------------------------------
// Pixels in and out. Scalar: one pixel as three floats (exact conversions of
// the elements). Vector: eight pixels as one F8 per channel, in pixel order.
// Integer results are saturated to the element's range on the way out; 16s
// results arrive on the unsigned scale 0..65535 and leave lowered by 32768.

template <class T>
inline float toFloat(T x)
{
    return static_cast<float>(x);
}

inline uint8_t narrowTo(uint8_t*, int32_t v) { return satU8(v); }
inline uint16_t narrowTo(uint16_t*, int32_t v) { return px3::Elem<uint16_t>::clamp(v); }
inline int16_t narrowTo(int16_t*, int32_t v) { return px3::Elem<int16_t>::clamp(v); }

template <class T, int Ch>
inline void loadPixel(const T* s, float (&v)[3])
{
    for (int k = 0; k < 3; ++k)
        v[k] = toFloat(s[k]);
}
template <class T>
inline void storePixel(T* d, const int32_t (&v)[3])
{
    for (int k = 0; k < 3; ++k)
        d[k] = narrowTo(d, v[k]);
}
inline void storePixel(float* d, const float (&v)[3])
{
    for (int k = 0; k < 3; ++k)
        d[k] = v[k];
}

namespace detail {

// pshufb mask taking channel `ch` of four pixels `stride` bytes apart,
// starting at byte `first`, into the low byte of four 32-bit lanes.
inline __m128i byteChannel(int first, int stride, int ch)
{
    alignas(16) int8_t m[16];
    for (int p = 0; p < 4; ++p) {
        m[4 * p] = int8_t(first + p * stride + ch);
        m[4 * p + 1] = m[4 * p + 2] = m[4 * p + 3] = -128;
    }
    return _mm_load_si128(reinterpret_cast<const __m128i*>(m));
}

// Three channels of eight 32-bit elements, in order, back to a (elements
// 0-7), b (8-15), c (16-23): the inverse of simd::deinterleave3x8.
inline void interleave3x8(__m256i x0, __m256i x1, __m256i x2, __m256i& a, __m256i& b, __m256i& c)
{
    const __m256i u0 = _mm256_permutevar8x32_epi32(x0, _mm256_setr_epi32(0, 3, 6, 1, 4, 7, 2, 5));
    const __m256i u1 = _mm256_permutevar8x32_epi32(x1, _mm256_setr_epi32(5, 0, 3, 6, 1, 4, 7, 2));
    const __m256i u2 = _mm256_permutevar8x32_epi32(x2, _mm256_setr_epi32(2, 5, 0, 3, 6, 1, 4, 7));
    a = _mm256_blend_epi32(_mm256_blend_epi32(u0, u1, 0x92), u2, 0x24);
    b = _mm256_blend_epi32(_mm256_blend_epi32(u0, u1, 0x24), u2, 0x49);
    c = _mm256_blend_epi32(_mm256_blend_epi32(u0, u1, 0x49), u2, 0x92);
}

// Four-channel 32-bit pixels: channels in order to o[k] = [pixel 2k |
// pixel 2k + 1], fourth channel 0.
inline void join4x8(const __m256 (&x)[3], __m256 (&o)[4])
{
    const __m256 z = _mm256_setzero_ps();
    const __m256 t0 = _mm256_unpacklo_ps(x[0], x[1]);
    const __m256 t1 = _mm256_unpackhi_ps(x[0], x[1]);
    const __m256 t2 = _mm256_unpacklo_ps(x[2], z);
    const __m256 t3 = _mm256_unpackhi_ps(x[2], z);
    const __m256 w0 = _mm256_shuffle_ps(t0, t2, 0x44);
    const __m256 w1 = _mm256_shuffle_ps(t0, t2, 0xEE);
    const __m256 w2 = _mm256_shuffle_ps(t1, t3, 0x44);
    const __m256 w3 = _mm256_shuffle_ps(t1, t3, 0xEE);
    o[0] = _mm256_permute2f128_ps(w0, w1, 0x20);
    o[1] = _mm256_permute2f128_ps(w2, w3, 0x20);
    o[2] = _mm256_permute2f128_ps(w0, w1, 0x31);
    o[3] = _mm256_permute2f128_ps(w2, w3, 0x31);
}

inline __m256i widen(const uint16_t* p) { return _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))); }
inline __m256i widen(const int16_t* p) { return _mm256_cvtepi16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))); }

// Sixteen 32-bit results (a then b) to sixteen 16-bit elements in order.
inline __m256i narrow16(uint16_t*, __m256i a, __m256i b)
{
    return _mm256_permute4x64_epi64(_mm256_packus_epi32(a, b), 0xD8);
}
inline __m256i narrow16(int16_t*, __m256i a, __m256i b)
{
    auto lower = [](__m256i v) {
        const __m256i c = _mm256_min_epi32(_mm256_max_epi32(v, _mm256_setzero_si256()), _mm256_set1_epi32(65535));
        return _mm256_sub_epi32(c, _mm256_set1_epi32(32768));
    };
    return _mm256_permute4x64_epi64(_mm256_packs_epi32(lower(a), lower(b)), 0xD8);
}

}  // namespace detail

// Eight pixels of channels 0, 1, 2 as floats.
template <class T, int Ch>
inline void loadPixels8(const T* s, F8 (&v)[3])
{
    if constexpr (std::is_same_v<T, uint8_t>) {
        // Four pixels per 128-bit lane; for C3 the upper lane loads from
        // byte 8 so that nothing past the 24 bytes of the pixels is read.
        constexpr int hiFirst = Ch == 3 ? 4 : 0;
        const __m256i x = Ch == 3 ? _mm256_setr_m128i(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s)),
                                                      _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + 8)))
                                  : _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s));
        for (int k = 0; k < 3; ++k) {
            const __m256i m = _mm256_setr_m128i(detail::byteChannel(0, Ch, k), detail::byteChannel(hiFirst, Ch, k));
            v[k] = _mm256_cvtepi32_ps(_mm256_shuffle_epi8(x, m));
        }
    } else if constexpr (Ch == 3 && std::is_same_v<T, float>) {
        // Float pixels only meet float stores: the lanes may come in the
        // order of px3::loadC3, which storePixels8 undoes.
        __m256 x[3];
        px3::loadC3(s, x);
        for (int k = 0; k < 3; ++k)
            v[k] = x[k];
    } else if constexpr (Ch == 3) {
        // 16-bit pixels in order: they may meet 8-bit stores.
        __m256i x[3];
        simd::deinterleave3x8(detail::widen(s), detail::widen(s + 8), detail::widen(s + 16), x[0], x[1], x[2]);
        for (int k = 0; k < 3; ++k)
            v[k] = _mm256_cvtepi32_ps(x[k]);
    } else {
        __m256 w[4], x[3];
        for (int k = 0; k < 4; ++k) {
            if constexpr (std::is_same_v<T, float>) {
                w[k] = _mm256_setr_m128(_mm_loadu_ps(s + 4 * k), _mm_loadu_ps(s + 16 + 4 * k));
            } else {
                const __m128i lo = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(s + 4 * k));
                const __m128i hi = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(s + 16 + 4 * k));
                const __m256i wide = std::is_same_v<T, int16_t> ? _mm256_cvtepi16_epi32(_mm_unpacklo_epi64(lo, hi))
                                                                : _mm256_cvtepu16_epi32(_mm_unpacklo_epi64(lo, hi));
                w[k] = _mm256_cvtepi32_ps(wide);
            }
        }
        // w[k] = [pixel k | pixel k + 4]: the transposition gives the pixels
        // in order.
        px3::transposeIn(w[0], w[1], w[2], w[3], x);
        for (int k = 0; k < 3; ++k)
            v[k] = x[k];
    }
}

// Eight pixels of integer results (channels 0, 1, 2) to T, saturated; the
// fourth channel of AC4 keeps what the destination held.
template <class T, int Ch>
inline void storePixels8(T* d, const I8 (&v)[3])
{
    if constexpr (std::is_same_v<T, uint8_t>) {
        const __m256i bytes = _mm256_packus_epi16(_mm256_packs_epi32(v[0].v, v[1].v), _mm256_packs_epi32(v[2].v, v[2].v));
        // Bytes c0 0-3, c1 0-3, c2 0-3 of each lane back to pixel order.
        if constexpr (Ch == 3) {
            const __m128i m = _mm_setr_epi8(0, 4, 8, 1, 5, 9, 2, 6, 10, 3, 7, 11, -128, -128, -128, -128);
            const __m256i out = _mm256_shuffle_epi8(bytes, _mm256_setr_m128i(m, m));
            const __m256i packed = _mm256_permutevar8x32_epi32(out, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm256_castsi256_si128(packed));
            _mm_storel_epi64(reinterpret_cast<__m128i*>(d + 16), _mm256_extracti128_si256(packed, 1));
        } else {
            const __m128i m = _mm_setr_epi8(0, 4, 8, -128, 1, 5, 9, -128, 2, 6, 10, -128, 3, 7, 11, -128);
            const __m256i out = _mm256_shuffle_epi8(bytes, _mm256_setr_m128i(m, m));
            const __m256i alpha = _mm256_set1_epi32(int32_t(0xFF000000u));
            const __m256i old = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(d));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), _mm256_or_si256(out, _mm256_and_si256(old, alpha)));
        }
    } else if constexpr (Ch == 3) {
        __m256i a, b, c;
        detail::interleave3x8(v[0].v, v[1].v, v[2].v, a, b, c);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), detail::narrow16(d, a, b));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 16), _mm256_castsi256_si128(detail::narrow16(d, c, c)));
    } else {
        const __m256 x[3] = {_mm256_castsi256_ps(v[0].v), _mm256_castsi256_ps(v[1].v), _mm256_castsi256_ps(v[2].v)};
        __m256 o[4];
        detail::join4x8(x, o);
        for (int k = 0; k < 2; ++k) {
            const __m256i e = detail::narrow16(d, _mm256_castps_si256(o[2 * k]), _mm256_castps_si256(o[2 * k + 1]));
            const __m256i old = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(d + 16 * k));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 16 * k), _mm256_blend_epi16(e, old, 0x88));
        }
    }
}

template <int Ch>
inline void storePixels8(float* d, const F8 (&v)[3])
{
    if constexpr (Ch == 3) {
        const __m256 x[3] = {v[0].v, v[1].v, v[2].v};
        px3::storeC3(d, x);
    } else {
        const __m256 x[3] = {v[0].v, v[1].v, v[2].v};
        __m256 o[4];
        detail::join4x8(x, o);
        for (int k = 0; k < 4; ++k)
            _mm256_storeu_ps(d + 8 * k, _mm256_blend_ps(o[k], _mm256_loadu_ps(d + 8 * k), 0x88));
    }
}

// Runs `eight(s, d)` over n pixels, eight at a time; a last run of fewer
// than eight goes through a zero-padded copy on the stack (the destination's
// bytes are copied in first so that kept channels stay as they were).
template <int SrcPix, int DstPix, class S, class D, class Eight>
inline void inEights(const S* s, D* d, int n, Eight&& eight)
{
    for (; n >= 8; n -= 8, s += 8 * SrcPix, d += 8 * DstPix)
        eight(s, d);
    if (n > 0) {
        S sb[8 * SrcPix] = {};
        D db[8 * DstPix] = {};
        std::memcpy(sb, s, sizeof(S) * SrcPix * n);
        std::memcpy(db, d, sizeof(D) * DstPix * n);
        eight(sb, db);
        std::memcpy(d, db, sizeof(D) * DstPix * n);
    }
}

// Passes over runs of up to `Run` pixels: `first(s, g)` over the groups of
// eight of a run (g counts the groups of the run from 0), then `middle(g)`
// and `second(g, d)`, the middle step kept one group ahead: middle(g + 1)
// comes just before second(g), so that its loads proceed while the
// processor works through the other's multiplications. A chain from load to
// store that is too long for the processor to keep several groups in flight
// splits this way into short ones, with what one step leaves for the next
// (indexed by g) between them. A last group of fewer than eight goes
// through zero-padded copies as in inEights.
template <int Run, int SrcPix, int DstPix, class S, class D, class First, class Middle, class Second>
inline void inRuns(const S* s, D* d, int n, First&& first, Middle&& middle, Second&& second)
{
    static_assert(Run % 8 == 0);
    for (; n > 0; n -= Run, s += Run * SrcPix, d += Run * DstPix) {
        const int m = n < Run ? n : Run;
        const int whole = m / 8, rest = m % 8, groups = whole + (rest != 0);
        for (int g = 0; g < whole; ++g)
            first(s + 8 * SrcPix * g, g);
        if (rest) {
            S sb[8 * SrcPix] = {};
            std::memcpy(sb, s + 8 * SrcPix * whole, sizeof(S) * SrcPix * rest);
            first(sb, whole);
        }
        middle(0);
        for (int g = 0; g < whole; ++g) {
            if (g + 1 < groups)
                middle(g + 1);
            second(g, d + 8 * DstPix * g);
        }
        if (rest) {
            D db[8 * DstPix] = {};
            std::memcpy(db, d + 8 * DstPix * whole, sizeof(D) * DstPix * rest);
            second(whole, db);
            std::memcpy(d + 8 * DstPix * whole, db, sizeof(D) * DstPix * rest);
        }
    }
}
template <int Run, int SrcPix, int DstPix, class S, class D, class First, class Second>
inline void inRuns(const S* s, D* d, int n, First&& first, Second&& second)
{
    inRuns<Run, SrcPix, DstPix>(s, d, n, first, [](int) {}, second);
}

}  // namespace h9::lanes
