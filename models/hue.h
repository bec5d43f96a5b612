// Machinery shared by the hue models (HLS and HSV): pixel layouts that read
// three channels as floats and write three results, the row runner that
// splits a row between a group form and a tail form, and the row drivers,
// which carry the caller's rounding mode into every thread they start.
//
// A form is a struct with
//   using Out = int32_t or float;     what a pixel's three results are
//   static constexpr bool kSaturate;  integer results saturate to the element
//                                     range (else the low bits are stored)
//   static std::array<Out, 3> scalar(float c0, float c1, float c2);
//   static void lanes(const __m256 in[3], V out[3]);   (optional)
// where V is __m256i (int32 results) or __m256. The inputs are the channels
// as floats (16s raised by 32768), in the order the form names them; lanes
// computes eight pixels with exactly the scalar statements.
#pragma once

#include <immintrin.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include "frame/checks.h"
#include "frame/driver.h"
#include "frame/fpmode.h"
#include "frame/scalar.h"
#include "frame/simd.h"
#include "orvcc.h"
#include "orvcore.h"

namespace h9::hue {

// ---------------------------------------------------------------------------
// Scalar images of the vector instructions the forms use.

inline float rcp(float x) { return _mm_cvtss_f32(_mm_rcp_ss(_mm_set_ss(x))); }  // rcpss, about 12 bits
inline float fma(float a, float b, float c) { return fmaf32(a, b, c); }
inline float fnma(float a, float b, float c) { return fmaf32(-a, b, c); }         // -(a b) + c, one rounding
inline float fms(float a, float b, float c) { return fmaf32(a, b, -c); }          // a b - c, one rounding

inline __m256 k8(float v) { return _mm256_set1_ps(v); }
// Lanes where m is set take b, the others a.
inline __m256 pick(__m256 a, __m256 b, __m256 m) { return _mm256_blendv_ps(a, b, m); }
inline __m256 eq(__m256 a, __m256 b) { return _mm256_cmp_ps(a, b, _CMP_EQ_OQ); }
inline __m256 lt(__m256 a, __m256 b) { return _mm256_cmp_ps(a, b, _CMP_LT_OQ); }
inline __m256 le(__m256 a, __m256 b) { return _mm256_cmp_ps(a, b, _CMP_LE_OQ); }
inline __m256 gt(__m256 a, __m256 b) { return _mm256_cmp_ps(a, b, _CMP_GT_OQ); }
// maxps / minps: the second operand where either is NaN; max3 and min3
// compare (c0, c1) first, then with c2, as the scalar forms do.
inline float max2(float a, float b) { return a > b ? a : b; }
inline float min2(float a, float b) { return a < b ? a : b; }
inline float max3(float a, float b, float c) { return max2(max2(a, b), c); }
inline float min3(float a, float b, float c) { return min2(min2(a, b), c); }
inline __m256 max3(__m256 a, __m256 b, __m256 c) { return _mm256_max_ps(_mm256_max_ps(a, b), c); }
inline __m256 min3(__m256 a, __m256 b, __m256 c) { return _mm256_min_ps(_mm256_min_ps(a, b), c); }

// ---------------------------------------------------------------------------
// Elements: to float for the arithmetic, and the stored value of an integer
// result, saturated (group forms) or its low bits (tail forms). 16s data
// carries 32768 through the arithmetic and gives it back on the way out.

template <class T>
struct Elem;

template <>
struct Elem<uint8_t> {
    static float in(uint8_t x) { return float(x); }
    static uint8_t out(int32_t v, bool sat) { return sat ? satU8(v) : uint8_t(v); }
};
template <>
struct Elem<uint16_t> {
    static float in(uint16_t x) { return float(x); }
    static uint16_t out(int32_t v, bool sat) { return sat ? satU16(v) : uint16_t(v); }
};
template <>
struct Elem<int16_t> {
    static float in(int16_t x) { return float(int32_t(x) + 32768); }
    static int16_t out(int32_t v, bool sat)
    {
        const int32_t u = int32_t(uint32_t(v) - 32768u);
        return sat ? satS16(u) : int16_t(u);
    }
};
template <>
struct Elem<float> {
    static float in(float x) { return x; }
    static float out(float v, bool) { return v; }
};

// Eight int32 results of one register to elements, pixel order kept, in the
// low 8 (16-bit) or the low 8 bytes of the lanes pattern described at each
// use. The three registers of a pixel group go through narrow3.
template <class T>
inline __m256i narrowPair(__m256i a, __m256i b, bool sat)
{
    // 16 elements of 16 bits: a's eight then b's eight, in lane order
    // (a0-3 b0-3 | a4-7 b4-7).
    if constexpr (std::is_same_v<T, int16_t>) {
        const __m256i off = _mm256_set1_epi32(-32768);
        return _mm256_packs_epi32(_mm256_add_epi32(a, off), _mm256_add_epi32(b, off));
    } else {
        if (!sat) {
            const __m256i low = _mm256_set1_epi32(0xFFFF);
            a = _mm256_and_si256(a, low);
            b = _mm256_and_si256(b, low);
        }
        return _mm256_packus_epi32(a, b);
    }
}

// ---------------------------------------------------------------------------
// Layouts. `Ch` channels interleaved (3, or 4 with the fourth not a colour),
// or three 8-bit planes. An input gives pixel i as three floats (get) and
// eight pixels as three float registers (load8); an output takes three
// results (put) or three registers of eight (store8). Interleaved three-
// channel registers hold their pixels in the rotated order of
// simd::deinterleave3x8Rotated (kRotated); the row runner reorders where an
// input and an output disagree.

// pshufb masks of eight three-byte pixels loaded as bytes 0-15 (lane 0,
// pixels 0-3) and bytes 8-23 (lane 1, pixels 4-7 from byte 4): channel `ch`
// of each lane's four pixels to the low bytes of four 32-bit words.
constexpr std::array<int8_t, 32> bytesToWords3(int ch)
{
    std::array<int8_t, 32> m{};
    for (int lane = 0; lane < 2; ++lane)
        for (int k = 0; k < 4; ++k)
            for (int b = 0; b < 4; ++b)
                m[16 * lane + 4 * k + b] = b == 0 ? int8_t(4 * lane + 3 * k + ch) : int8_t(-128);
    return m;
}
// And back: bytes c0 c0 c0 c0 c1 c1 c1 c1 c2 c2 c2 c2 (four pixels per lane)
// to twelve bytes of interleaved pixels.
constexpr std::array<int8_t, 16> wordsToBytes3()
{
    std::array<int8_t, 16> m{};
    for (int i = 0; i < 16; ++i)
        m[i] = i < 12 ? int8_t(4 * (i % 3) + i / 3) : int8_t(-128);
    return m;
}
template <std::size_t N>
inline __m256i mask256(const std::array<int8_t, N>& m)
{
    if constexpr (N == 32)
        return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(m.data()));
    else
        return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(m.data())));
}

template <class T, int Ch>
struct Packed {
    using Elt = T;
    static constexpr bool kBytes3 = Ch == 3 && sizeof(T) == 1;
    static constexpr bool kRotated = Ch == 3 && !kBytes3;
    T* p;

    std::array<float, 3> get(int i) const
    {
        const T* s = p + Ch * i;
        return {Elem<std::remove_const_t<T>>::in(s[0]), Elem<std::remove_const_t<T>>::in(s[1]),
                Elem<std::remove_const_t<T>>::in(s[2])};
    }

    template <class R>
    void put(int i, const std::array<R, 3>& v, bool sat) const
    {
        T* d = p + Ch * i;
        for (int c = 0; c < 3; ++c)
            d[c] = Elem<T>::out(v[c], sat);
    }

    // Pixels as int32 or float bits of eight lanes, natural or rotated order.
    void load8(int i, __m256 x[3]) const
    {
        using E = std::remove_const_t<T>;
        const T* s = p + Ch * i;
        if constexpr (kBytes3) {
            static constexpr auto m0 = bytesToWords3(0), m1 = bytesToWords3(1), m2 = bytesToWords3(2);
            const __m256i v = simd::load2x128(s, s + 8);
            x[0] = _mm256_cvtepi32_ps(_mm256_shuffle_epi8(v, mask256(m0)));
            x[1] = _mm256_cvtepi32_ps(_mm256_shuffle_epi8(v, mask256(m1)));
            x[2] = _mm256_cvtepi32_ps(_mm256_shuffle_epi8(v, mask256(m2)));
        } else if constexpr (Ch == 3) {
            __m256i a, b, c;
            if constexpr (std::is_same_v<E, float>) {
                a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s));
                b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + 8));
                c = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + 16));
            } else {
                auto widen = [&](int k) { return widen8(s + 8 * k); };
                a = widen(0);
                b = widen(1);
                c = widen(2);
            }
            __m256i x0, x1, x2;
            simd::deinterleave3x8Rotated(a, b, c, x0, x1, x2);
            x[0] = toFloat(x0);
            x[1] = toFloat(x1);
            x[2] = toFloat(x2);
        } else if constexpr (std::is_same_v<E, uint8_t>) {
            const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s));
            const __m256i m = _mm256_set1_epi32(0xFF);
            for (int c = 0; c < 3; ++c)
                x[c] = _mm256_cvtepi32_ps(_mm256_and_si256(_mm256_srli_epi32(v, 8 * c), m));
        } else if constexpr (std::is_same_v<E, float>) {
            auto pair = [&](int k) { return _mm256_loadu2_m128(s + 16 + 4 * k, s + 4 * k); };  // [p k | p k+4]
            simd::deinterleave4x8(pair(0), pair(1), pair(2), pair(3), x[0], x[1], x[2]);
        } else {
            // 16-bit: [p0 p1 | p4 p5] and [p2 p3 | p6 p7], widened by unpacking
            // with zero (16s first moved up by 32768: the sign bit flipped).
            __m256i a = simd::load2x128(s, s + 16), b = simd::load2x128(s + 8, s + 24);
            if constexpr (std::is_same_v<E, int16_t>) {
                const __m256i flip = _mm256_set1_epi16(int16_t(0x8000));
                a = _mm256_xor_si256(a, flip);
                b = _mm256_xor_si256(b, flip);
            }
            const __m256i z = _mm256_setzero_si256();
            auto f = [](__m256i v) { return _mm256_cvtepi32_ps(v); };
            simd::deinterleave4x8(f(_mm256_unpacklo_epi16(a, z)), f(_mm256_unpackhi_epi16(a, z)),
                                  f(_mm256_unpacklo_epi16(b, z)), f(_mm256_unpackhi_epi16(b, z)), x[0], x[1], x[2]);
        }
    }

    // Three registers of results (int32 for integer elements, float for
    // 32f) to eight pixels; a fourth channel keeps what it held.
    template <class V>
    void store8(int i, const V r[3], bool sat) const
    {
        T* d = p + Ch * i;
        if constexpr (kBytes3) {
            // r0 0-3, r1 0-3, r2 0-3 (twice) per lane, saturated; interleaved
            // to twelve bytes per lane, then the two lanes joined.
            static constexpr auto m = wordsToBytes3();
            const __m256i bytes = _mm256_packus_epi16(_mm256_packs_epi32(r[0], r[1]), _mm256_packs_epi32(r[2], r[2]));
            const __m256i v = _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(bytes, mask256(m)),
                                                          _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm256_castsi256_si128(v));
            _mm_storel_epi64(reinterpret_cast<__m128i*>(d + 16), _mm256_extracti128_si256(v, 1));
        } else if constexpr (Ch == 3) {
            __m256i a, b, c;
            simd::interleave3x8Rotated(bits(r[0]), bits(r[1]), bits(r[2]), a, b, c);
            if constexpr (std::is_same_v<T, float>) {
                _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), a);
                _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 8), b);
                _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 16), c);
            } else {
                const __m256i ab = _mm256_permute4x64_epi64(narrowPair<T>(a, b, sat), 0xD8);
                const __m256i cc = _mm256_permute4x64_epi64(narrowPair<T>(c, c, sat), 0xD8);
                _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), ab);
                _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 16), _mm256_castsi256_si128(cc));
            }
        } else if constexpr (std::is_same_v<T, uint8_t>) {
            auto clamp = [](__m256i x) {
                return _mm256_min_epi32(_mm256_max_epi32(x, _mm256_setzero_si256()), _mm256_set1_epi32(255));
            };
            const __m256i v = _mm256_or_si256(_mm256_or_si256(clamp(r[0]), _mm256_slli_epi32(clamp(r[1]), 8)),
                                              _mm256_slli_epi32(clamp(r[2]), 16));
            __m256i* dv = reinterpret_cast<__m256i*>(d);
            _mm256_storeu_si256(dv, _mm256_blendv_epi8(v, _mm256_loadu_si256(dv), _mm256_set1_epi32(int32_t(0xFF000000u))));
        } else {
            // Pixel k's channels in one 128-bit half: q[k] = [p k | p k+4].
            const __m256i x0 = bits(r[0]), x1 = bits(r[1]), x2 = bits(r[2]), z = _mm256_setzero_si256();
            const __m256i t0 = _mm256_unpacklo_epi32(x0, x1), t1 = _mm256_unpackhi_epi32(x0, x1);
            const __m256i t2 = _mm256_unpacklo_epi32(x2, z), t3 = _mm256_unpackhi_epi32(x2, z);
            const __m256i q[4] = {_mm256_unpacklo_epi64(t0, t2), _mm256_unpackhi_epi64(t0, t2),
                                  _mm256_unpacklo_epi64(t1, t3), _mm256_unpackhi_epi64(t1, t3)};
            if constexpr (std::is_same_v<T, float>) {
                for (int k = 0; k < 4; k += 2) {
                    auto store = [&](int at, __m256i v) {
                        __m256* dv = reinterpret_cast<__m256*>(d + at);
                        _mm256_storeu_ps(reinterpret_cast<float*>(dv),
                                         _mm256_blend_ps(_mm256_castsi256_ps(v), _mm256_loadu_ps(reinterpret_cast<float*>(dv)), 0x88));
                    };
                    store(4 * k, _mm256_permute2x128_si256(q[k], q[k + 1], 0x20));       // p k, p k+1
                    store(16 + 4 * k, _mm256_permute2x128_si256(q[k], q[k + 1], 0x31));  // p k+4, p k+5
                }
            } else {
                const __m256i w01 = narrowPair<T>(q[0], q[1], sat);  // p0 p1 | p4 p5
                const __m256i w23 = narrowPair<T>(q[2], q[3], sat);  // p2 p3 | p6 p7
                auto store = [&](int at, __m128i v) {
                    __m128i* dv = reinterpret_cast<__m128i*>(d + at);
                    _mm_storeu_si128(dv, _mm_blend_epi16(v, _mm_loadu_si128(dv), 0x88));
                };
                store(0, _mm256_castsi256_si128(w01));
                store(8, _mm256_castsi256_si128(w23));
                store(16, _mm256_extracti128_si256(w01, 1));
                store(24, _mm256_extracti128_si256(w23, 1));
            }
        }
    }

private:
    // Eight elements from 8 (8u) or 16 (16-bit) bytes to int32 lanes.
    static __m256i widen8(const T* s)
    {
        using E = std::remove_const_t<T>;
        if constexpr (std::is_same_v<E, uint8_t>)
            return _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(s)));
        else if constexpr (std::is_same_v<E, uint16_t>)
            return _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s)));
        else
            return _mm256_add_epi32(_mm256_cvtepi16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s))),
                                    _mm256_set1_epi32(32768));
    }
    static __m256 toFloat(__m256i v)
    {
        if constexpr (std::is_same_v<std::remove_const_t<T>, float>)
            return _mm256_castsi256_ps(v);
        else
            return _mm256_cvtepi32_ps(v);
    }
    static __m256i bits(__m256i v) { return v; }
    static __m256i bits(__m256 v) { return _mm256_castps_si256(v); }
};

// Three 8-bit planes.
template <class T>
struct Planes3 {
    using Elt = T;
    static constexpr bool kRotated = false;
    T* p[3];

    std::array<float, 3> get(int i) const { return {float(p[0][i]), float(p[1][i]), float(p[2][i])}; }

    void put(int i, const std::array<int32_t, 3>& v, bool sat) const
    {
        for (int c = 0; c < 3; ++c)
            p[c][i] = Elem<uint8_t>::out(v[c], sat);
    }

    void load8(int i, __m256 x[3]) const
    {
        for (int c = 0; c < 3; ++c)
            x[c] = _mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p[c] + i))));
    }

    // a0-3 b0-3 c0-3 c0-3 | a4-7 b4-7 c4-7 c4-7, saturated, then gathered.
    void store8(int i, const __m256i r[3], bool) const
    {
        const __m256i bytes = _mm256_packus_epi16(_mm256_packs_epi32(r[0], r[1]), _mm256_packs_epi32(r[2], r[2]));
        const __m256i v = _mm256_permutevar8x32_epi32(bytes, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
        const __m128i lo = _mm256_castsi256_si128(v);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(p[0] + i), lo);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(p[1] + i), _mm_unpackhi_epi64(lo, lo));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(p[2] + i), _mm256_extracti128_si256(v, 1));
    }
};

// An 8-bit alpha channel beside the colour: a plane (stride 1) or the fourth
// byte of interleaved pixels (stride 4).
struct AlphaAt {
    const uint8_t* src;
    int srcStride;
    uint8_t* dst;
    int dstStride;
    void copy(int width) const
    {
        for (int i = 0; i < width; ++i)
            dst[i * dstStride] = src[i * srcStride];
    }
};

// ---------------------------------------------------------------------------
// The row runner.

// A kernel: the group form over the leading whole groups of a row, the tail
// form over the rest. A kernel of one form names it twice with Group = 1.
template <class GroupForm, class TailForm, int Group>
struct Kernel {
    using G = GroupForm;
    using T = TailForm;
    static int groupEnd(int width) { return width / Group * Group; }
};

// Reorders three registers of pixels between the rotated and the natural
// order. Lane j of a rotated register holds pixel (0 3 6 1 4 7 2 5)[j]; that
// permutation is its own inverse, so one index serves both ways.
inline void reorder(__m256 x[3])
{
    const __m256i idx = _mm256_setr_epi32(0, 3, 6, 1, 4, 7, 2, 5);
    for (int c = 0; c < 3; ++c)
        x[c] = _mm256_permutevar8x32_ps(x[c], idx);
}

template <class Form>
using Results = std::array<typename Form::Out, 3>;

template <class R>
struct LanesOf {
    using type = __m256i;
};
template <>
struct LanesOf<float> {
    using type = __m256;
};
template <class Form>
using Lanes = typename LanesOf<typename Form::Out>::type;

// Order of the form's channels against the layout's: Swap reads and writes
// channel 0 of the form at channel 2 of memory (BGR sides).
template <class Form, bool SwapIn, bool SwapOut, class In, class Out>
inline void scalarPixel(const In& in, const Out& out, int i)
{
    const std::array<float, 3> s = in.get(i);
    Results<Form> r = SwapIn ? Form::scalar(s[2], s[1], s[0]) : Form::scalar(s[0], s[1], s[2]);
    if constexpr (SwapOut)
        std::swap(r[0], r[2]);
    out.put(i, r, Form::kSaturate);
}

template <class Form, bool SwapIn, bool SwapOut>
inline void lanesOf(__m256 x[3], Lanes<Form> r[3])
{
    if constexpr (SwapIn)
        std::swap(x[0], x[2]);
    Form::lanes(x, r);
    if constexpr (SwapOut)
        std::swap(r[0], r[2]);
}

// One row: [0, groupEnd) by the group form, eight pixels per step through
// its lanes (a last partial step goes through a small planar buffer) or, with
// the test switch, by its scalar statement; then the tail form.
template <class K, bool SwapIn, bool SwapOut, class In, class Out>
inline void hueRow(const In& in, const Out& out, int width)
{
    using G = typename K::G;
    using T = typename K::T;
    const int end = K::groupEnd(width);
    int i = 0;
    if constexpr (requires(__m256 * x, Lanes<G> * r) { G::lanes(x, r); }) {
        if (!g_scalarBlocks) {
            for (; i + 8 <= end; i += 8) {
                __m256 x[3];
                in.load8(i, x);
                if constexpr (In::kRotated != Out::kRotated)
                    reorder(x);
                Lanes<G> r[3];
                lanesOf<G, SwapIn, SwapOut>(x, r);
                out.store8(i, r, G::kSaturate);
            }
            if (i < end) {
                alignas(32) float buf[3][8] = {};
                for (int j = 0; i + j < end; ++j) {
                    const std::array<float, 3> s = in.get(i + j);
                    for (int c = 0; c < 3; ++c)
                        buf[c][j] = s[c];
                }
                __m256 x[3] = {_mm256_load_ps(buf[0]), _mm256_load_ps(buf[1]), _mm256_load_ps(buf[2])};
                Lanes<G> r[3];
                lanesOf<G, SwapIn, SwapOut>(x, r);
                alignas(32) typename G::Out res[3][8];
                for (int c = 0; c < 3; ++c)
                    std::memcpy(res[c], &r[c], sizeof r[c]);
                for (int j = 0; i < end; ++i, ++j)
                    out.put(i, Results<G>{res[0][j], res[1][j], res[2][j]}, G::kSaturate);
            }
        }
    }
    for (; i < end; ++i)
        scalarPixel<G, SwapIn, SwapOut>(in, out, i);
    for (; i < width; ++i)
        scalarPixel<T, SwapIn, SwapOut>(in, out, i);
}

// ---------------------------------------------------------------------------
// Drivers. Integer results to nearest follow the rounding mode of the calling
// thread; a parallel region gives each of its threads the caller's rounding
// mode for the length of the call and then its own back, so the output never
// depends on the thread count.

// Up to 4096 pixels on the caller's thread, above that rows over threads.
template <class Body>
inline void rowsAboveArea(int width, int height, Body&& body)
{
    rowsAreaTestedInCallersRounding(width, height, 4096, body);
}

// The interleaved members: source and destination pointers, then the size;
// steps are rounded down to whole elements and not checked.
template <class K, class T, int Ch>
OrvStatus interleavedRows(const T* src, int srcStep, T* dst, int dstStep, RoiSize roi)
{
    if (OrvStatus st = checkRect(src, dst, roi))
        return st;
    constexpr int shift = sizeof(T) == 1 ? 0 : sizeof(T) == 2 ? 1 : 2;
    const int ss = (srcStep >> shift) * int(sizeof(T));
    const int ds = (dstStep >> shift) * int(sizeof(T));
    rowsAboveArea(roi.width, roi.height, [&](int y) {
        hueRow<K, false, false>(Packed<const T, Ch>{rowAt(src, ss, y)}, Packed<T, Ch>{rowAt(dst, ds, y)}, roi.width);
    });
    return orvStatusOk;
}

}  // namespace h9::hue
