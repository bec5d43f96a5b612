// Three-channel pixels of 16u, 16s and 32f data as single-precision lanes:
// the element conversions, the unit clamp, and loads and stores of eight
// interleaved pixels (C3, or AC4 with the destination's fourth channel kept)
// as one register per channel. The colour-model families that compute in
// float share these.
//
// The loads give the eight pixels in an order of their own (the same for
// the three channels), and the matching store puts every lane back where it
// came from, so a conversion whose pixels never meet can run between them.
#pragma once

#include <immintrin.h>

#include <cstdint>
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
