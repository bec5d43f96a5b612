// Gray conversions: colour to luma with fixed or caller's weights, gray to
// colour, and the luma plane of packed 4:2:2.
//
// Every kernel has a scalar block form and a scalar tail form, one pixel
// each; the vector paths compute the block form for speed. Where a row
// splits between the two is the kernel's span().
#include <immintrin.h>

#include <array>
#include <cstdint>
#include <type_traits>

#include "frame/checks.h"
#include "frame/driver.h"
#include "frame/fronts.h"
#include "frame/scalar.h"
#include "frame/simd.h"

namespace h9 {
namespace {

// ---------------------------------------------------------------------------
// 8u colour to gray, 15 fraction bits.
//
// Block form (blocks of 32 and 16 pixels): each channel x gives
// (x << 8) * c >> 16 in 16-bit lanes, the three terms and 64 are added with
// unsigned saturation, shifted right by 7 and saturated to a byte.
// Tail form (the last width & 15 pixels): (R cR + G cG + B cB + 16384) >> 15
// in 32 bits, low byte stored.
struct Weights8u {
    int32_t r, g, b;
};

constexpr Weights8u kGray8u = {9798, 19235, 3736};  // sums to 32769

template <int Ch>
struct RgbToGray8u {
    using Src = uint8_t;
    using Dst = uint8_t;
    static constexpr int kSrcPix = Ch;
    static constexpr int kDstPix = 1;
    Weights8u w;

    Span span(int width, const Dst*) const { return {0, width & ~15}; }

    void block(const Src* s, Dst* d) const
    {
        uint16_t t = mulhiU16(uint16_t(s[0] << 8), uint16_t(w.r));
        t = addsU16(t, mulhiU16(uint16_t(s[1] << 8), uint16_t(w.g)));
        t = addsU16(t, mulhiU16(uint16_t(s[2] << 8), uint16_t(w.b)));
        t = addsU16(t, 64);
        *d = satU8(t >> 7);
    }

    void tail(const Src* s, Dst* d) const
    {
        const uint32_t sum = s[0] * uint32_t(w.r) + s[1] * uint32_t(w.g) + s[2] * uint32_t(w.b) + 16384u;
        *d = static_cast<uint8_t>(int32_t(sum) >> 15);
    }

    // The block form on 16-bit lanes that hold x << 8.
    template <class V>
    static V luma(V r, V g, V b, V cr, V cg, V cb)
    {
        if constexpr (sizeof(V) == 32) {
            V t = _mm256_mulhi_epu16(r, cr);
            t = _mm256_adds_epu16(t, _mm256_mulhi_epu16(g, cg));
            t = _mm256_adds_epu16(t, _mm256_mulhi_epu16(b, cb));
            t = _mm256_adds_epu16(t, _mm256_set1_epi16(64));
            return _mm256_srli_epi16(t, 7);
        } else {
            V t = _mm_mulhi_epu16(r, cr);
            t = _mm_adds_epu16(t, _mm_mulhi_epu16(g, cg));
            t = _mm_adds_epu16(t, _mm_mulhi_epu16(b, cb));
            t = _mm_adds_epu16(t, _mm_set1_epi16(64));
            return _mm_srli_epi16(t, 7);
        }
    }

    void vector(const Src* s, Dst* d, int n) const
    {
        const __m256i cr = _mm256_set1_epi16(int16_t(w.r)), cg = _mm256_set1_epi16(int16_t(w.g)),
                      cb = _mm256_set1_epi16(int16_t(w.b));
        const __m256i zero = _mm256_setzero_si256();
        int i = 0;
        for (; i + 32 <= n; i += 32, s += 32 * Ch, d += 32) {
            __m256i r, g, b;
            if constexpr (Ch == 3) {
                // Lane 0 holds pixels 0-15, lane 1 pixels 16-31.
                const __m256i a0 = simd::load2x128(s, s + 48);
                const __m256i a1 = simd::load2x128(s + 16, s + 64);
                const __m256i a2 = simd::load2x128(s + 32, s + 80);
                auto gather = [&](auto m0, auto m1, auto m2) {
                    return _mm256_or_si256(_mm256_or_si256(_mm256_shuffle_epi8(a0, m0), _mm256_shuffle_epi8(a1, m1)),
                                           _mm256_shuffle_epi8(a2, m2));
                };
                r = gather(simd::gatherMask256<3, 0, 0, 1>(), simd::gatherMask256<3, 0, 1, 1>(),
                           simd::gatherMask256<3, 0, 2, 1>());
                g = gather(simd::gatherMask256<3, 1, 0, 1>(), simd::gatherMask256<3, 1, 1, 1>(),
                           simd::gatherMask256<3, 1, 2, 1>());
                b = gather(simd::gatherMask256<3, 2, 0, 1>(), simd::gatherMask256<3, 2, 1, 1>(),
                           simd::gatherMask256<3, 2, 2, 1>());
                // x << 8 in 16-bit lanes; packing lo/hi back restores the order.
                const __m256i lo = luma(_mm256_unpacklo_epi8(zero, r), _mm256_unpacklo_epi8(zero, g),
                                        _mm256_unpacklo_epi8(zero, b), cr, cg, cb);
                const __m256i hi = luma(_mm256_unpackhi_epi8(zero, r), _mm256_unpackhi_epi8(zero, g),
                                        _mm256_unpackhi_epi8(zero, b), cr, cg, cb);
                _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), _mm256_packus_epi16(lo, hi));
            } else {
                // 32-bit lanes: R, G, B each moved to bits 8-15, then packed to
                // 16 bits; the packs interleave 4-pixel groups, undone at the end.
                __m256i y[2];
                for (int h = 0; h < 2; ++h) {
                    const __m256i v0 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + 64 * h));
                    const __m256i v1 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + 64 * h + 32));
                    const __m256i m = _mm256_set1_epi32(0xff00);
                    r = _mm256_packus_epi32(_mm256_and_si256(_mm256_slli_epi32(v0, 8), m),
                                            _mm256_and_si256(_mm256_slli_epi32(v1, 8), m));
                    g = _mm256_packus_epi32(_mm256_and_si256(v0, m), _mm256_and_si256(v1, m));
                    b = _mm256_packus_epi32(_mm256_and_si256(_mm256_srli_epi32(v0, 8), m),
                                            _mm256_and_si256(_mm256_srli_epi32(v1, 8), m));
                    y[h] = luma(r, g, b, cr, cg, cb);
                }
                const __m256i packed = _mm256_packus_epi16(y[0], y[1]);
                _mm256_storeu_si256(reinterpret_cast<__m256i*>(d),
                                    _mm256_permutevar8x32_epi32(packed, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7)));
            }
        }
        if (i < n) {  // one block of 16
            const __m128i cr4 = _mm256_castsi256_si128(cr), cg4 = _mm256_castsi256_si128(cg),
                          cb4 = _mm256_castsi256_si128(cb);
            const __m128i z = _mm_setzero_si128();
            __m128i r, g, b;
            if constexpr (Ch == 3) {
                const __m128i a0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
                const __m128i a1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + 16));
                const __m128i a2 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + 32));
                auto gather = [&](auto m0, auto m1, auto m2) {
                    return _mm_or_si128(_mm_or_si128(_mm_shuffle_epi8(a0, m0), _mm_shuffle_epi8(a1, m1)),
                                        _mm_shuffle_epi8(a2, m2));
                };
                r = gather(simd::gatherMask128<3, 0, 0, 1>(), simd::gatherMask128<3, 0, 1, 1>(),
                           simd::gatherMask128<3, 0, 2, 1>());
                g = gather(simd::gatherMask128<3, 1, 0, 1>(), simd::gatherMask128<3, 1, 1, 1>(),
                           simd::gatherMask128<3, 1, 2, 1>());
                b = gather(simd::gatherMask128<3, 2, 0, 1>(), simd::gatherMask128<3, 2, 1, 1>(),
                           simd::gatherMask128<3, 2, 2, 1>());
                const __m128i lo = luma(_mm_unpacklo_epi8(z, r), _mm_unpacklo_epi8(z, g), _mm_unpacklo_epi8(z, b),
                                        cr4, cg4, cb4);
                const __m128i hi = luma(_mm_unpackhi_epi8(z, r), _mm_unpackhi_epi8(z, g), _mm_unpackhi_epi8(z, b),
                                        cr4, cg4, cb4);
                _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm_packus_epi16(lo, hi));
            } else {
                __m128i y[2];
                const __m128i m = _mm_set1_epi32(0xff00);
                for (int h = 0; h < 2; ++h) {
                    const __m128i v0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + 32 * h));
                    const __m128i v1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + 32 * h + 16));
                    r = _mm_packus_epi32(_mm_and_si128(_mm_slli_epi32(v0, 8), m), _mm_and_si128(_mm_slli_epi32(v1, 8), m));
                    g = _mm_packus_epi32(_mm_and_si128(v0, m), _mm_and_si128(v1, m));
                    b = _mm_packus_epi32(_mm_and_si128(_mm_srli_epi32(v0, 8), m), _mm_and_si128(_mm_srli_epi32(v1, 8), m));
                    y[h] = luma(r, g, b, cr4, cg4, cb4);
                }
                _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm_packus_epi16(y[0], y[1]));
            }
        }
    }
};

// ---------------------------------------------------------------------------
// Single-precision luma of three channels: t = G cG, t = fma(cR, R, t),
// t = fma(cB, B, t). Loads pixels as floats for every element type.
struct Weights32f {
    float r, g, b;
};

constexpr Weights32f kGray32f = {0.299f, 0.587f, 0.114f};

inline float lumaFused(float r, float g, float b, const Weights32f& w)
{
    float t = g * w.g;
    t = fmaf32(w.r, r, t);
    t = fmaf32(w.b, b, t);
    return t;
}

inline __m256 lumaFused(__m256 r, __m256 g, __m256 b, const Weights32f& w)
{
    __m256 t = _mm256_mul_ps(g, _mm256_set1_ps(w.g));
    t = _mm256_fmadd_ps(_mm256_set1_ps(w.r), r, t);
    t = _mm256_fmadd_ps(_mm256_set1_ps(w.b), b, t);
    return t;
}

// Eight pixels of R, G, B as floats. Integer elements are widened to 32 bits
// (with `bias` added, exact), floats are taken as they are.
template <class T, int Ch>
inline void load8(const T* s, __m256& r, __m256& g, __m256& b, int32_t bias = 0)
{
    if constexpr (std::is_same_v<T, float>) {
        if constexpr (Ch == 3) {
            __m256i x0, x1, x2;
            simd::deinterleave3x8(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(s)),
                                  _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + 8)),
                                  _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + 16)), x0, x1, x2);
            r = _mm256_castsi256_ps(x0);
            g = _mm256_castsi256_ps(x1);
            b = _mm256_castsi256_ps(x2);
        } else {
            auto pair = [&](int k) {
                return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(s + 4 * k)), _mm_loadu_ps(s + 4 * k + 16), 1);
            };
            simd::deinterleave4x8(pair(0), pair(1), pair(2), pair(3), r, g, b);
        }
    } else {
        auto widen = [](__m128i v) {
            return std::is_same_v<T, uint16_t> ? _mm256_cvtepu16_epi32(v) : _mm256_cvtepi16_epi32(v);
        };
        const __m256i vb = _mm256_set1_epi32(bias);
        if constexpr (Ch == 3) {
            __m256i x0, x1, x2;
            simd::deinterleave3x8(widen(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s))),
                                  widen(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s + 8))),
                                  widen(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s + 16))), x0, x1, x2);
            r = _mm256_cvtepi32_ps(_mm256_add_epi32(x0, vb));
            g = _mm256_cvtepi32_ps(_mm256_add_epi32(x1, vb));
            b = _mm256_cvtepi32_ps(_mm256_add_epi32(x2, vb));
        } else {
            auto pair = [&](int k) {
                const __m128i lo = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(s + 4 * k));
                const __m128i hi = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(s + 4 * k + 16));
                return _mm256_cvtepi32_ps(_mm256_add_epi32(widen(_mm_unpacklo_epi64(lo, hi)), vb));
            };
            simd::deinterleave4x8(pair(0), pair(1), pair(2), pair(3), r, g, b);
        }
    }
}

// 16u: blocks of 16 round to nearest and clamp to 0..65535; the tail
// (width & 15) stores the low 16 bits of the rounded value.
template <int Ch>
struct RgbToGray16u {
    using Src = uint16_t;
    using Dst = uint16_t;
    static constexpr int kSrcPix = Ch;
    static constexpr int kDstPix = 1;
    Weights32f w;

    Span span(int width, const Dst*) const { return {0, width & ~15}; }
    float luma(const Src* s) const { return lumaFused(float(s[0]), float(s[1]), float(s[2]), w); }
    void block(const Src* s, Dst* d) const { *d = satU16(cvtNearest(luma(s))); }
    void tail(const Src* s, Dst* d) const { *d = static_cast<uint16_t>(cvtNearest(luma(s))); }

    void vector(const Src* s, Dst* d, int n) const
    {
        for (int i = 0; i < n; i += 16, s += 16 * Ch, d += 16) {
            __m256i y[2];
            for (int h = 0; h < 2; ++h) {
                __m256 r, g, b;
                load8<uint16_t, Ch>(s + 8 * Ch * h, r, g, b);
                y[h] = _mm256_cvtps_epi32(lumaFused(r, g, b, w));
            }
            const __m256i packed = _mm256_permute4x64_epi64(_mm256_packus_epi32(y[0], y[1]), 0xD8);
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), packed);
        }
    }
};

// 32f: blocks of 8 and the tail compute alike; no clamp.
template <int Ch>
struct RgbToGray32f {
    using Src = float;
    using Dst = float;
    static constexpr int kSrcPix = Ch;
    static constexpr int kDstPix = 1;
    Weights32f w;

    Span span(int width, const Dst*) const { return {0, width & ~7}; }
    void block(const Src* s, Dst* d) const { *d = lumaFused(s[0], s[1], s[2], w); }
    void tail(const Src* s, Dst* d) const { *d = lumaFused(s[0], s[1], s[2], w); }

    bool stream = false;  // streaming stores where the destination is aligned

    // With streaming stores, single pixels (same arithmetic) up to the first
    // destination address aligned to 32 bytes and after the last whole 8.
    void vector(const Src* s, Dst* d, int n) const
    {
        int i = 0;
        auto eights = [&](auto store) {
            for (; i + 8 <= n; i += 8, s += 8 * Ch, d += 8) {
                __m256 r, g, b;
                load8<float, Ch>(s, r, g, b);
                store(d, lumaFused(r, g, b, w));
            }
        };
        if (stream && reinterpret_cast<uintptr_t>(d) % 4 == 0) {
            for (; i < n && reinterpret_cast<uintptr_t>(d) % 32 != 0; ++i, s += Ch, ++d)
                block(s, d);
            eights([](float* p, __m256 v) { _mm256_stream_ps(p, v); });
        }
        eights([](float* p, __m256 v) { _mm256_storeu_ps(p, v); });
        for (; i < n; ++i, s += Ch, ++d)
            block(s, d);
    }
};

// 16s: each channel is biased by 32768 (exact) before the float arithmetic.
// Blocks of 4 use the fused order, subtract the bias and saturate; the tail
// (width & 3) uses unfused (R cR + G cG) + B cB and stores the low 16 bits.
template <int Ch>
struct RgbToGray16s {
    using Src = int16_t;
    using Dst = int16_t;
    static constexpr int kSrcPix = Ch;
    static constexpr int kDstPix = 1;
    Weights32f w;

    static float biased(int16_t x) { return float(int32_t(x) + 32768); }
    static int32_t unbias(int32_t v) { return int32_t(uint32_t(v) - 32768u); }  // wraps like psubd

    Span span(int width, const Dst*) const { return {0, width & ~3}; }

    void block(const Src* s, Dst* d) const
    {
        *d = satS16(unbias(cvtNearest(lumaFused(biased(s[0]), biased(s[1]), biased(s[2]), w))));
    }
    void tail(const Src* s, Dst* d) const
    {
        const float t = (biased(s[0]) * w.r + biased(s[1]) * w.g) + biased(s[2]) * w.b;
        *d = static_cast<int16_t>(unbias(cvtNearest(t)));
    }

    void vector(const Src* s, Dst* d, int n) const
    {
        int i = 0;
        for (; i + 8 <= n; i += 8, s += 8 * Ch, d += 8) {
            __m256 r, g, b;
            load8<int16_t, Ch>(s, r, g, b, 32768);
            const __m256i y = _mm256_sub_epi32(_mm256_cvtps_epi32(lumaFused(r, g, b, w)), _mm256_set1_epi32(32768));
            const __m128i packed = _mm_packs_epi32(_mm256_castsi256_si128(y), _mm256_extracti128_si256(y, 1));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d), packed);
        }
        for (; i < n; ++i, s += Ch, ++d)  // a last block of 4
            block(s, d);
    }
};

// ---------------------------------------------------------------------------
// 64f, per pixel in double: t = G cG, t = fma(cR, R, t), t = fma(cB, B, t).
// The row starts with one pixel when the destination address is 8 mod 16,
// then blocks of 8 and 4 pixels in which every second pixel takes its two
// fused steps in the other order (B before R); pairs and singles after the
// blocks take the plain order.
struct Weights64f {
    double r, g, b;
};

template <int Ch>
struct ColorToGray64f {
    using Src = double;
    using Dst = double;
    static constexpr int kSrcPix = Ch;
    static constexpr int kDstPix = 1;
    Weights64f w;

    Span span(int width, const Dst* d) const
    {
        const int head = (reinterpret_cast<uintptr_t>(d) % 16 >= 8 && width > 0) ? 1 : 0;
        return {head, head + ((width - head) & ~3)};
    }
    void tail(const Src* s, Dst* d) const
    {
        double t = s[1] * w.g;
        t = fmaf64(w.r, s[0], t);
        t = fmaf64(w.b, s[2], t);
        *d = t;
    }
    void block(const Src* s, Dst* d, int j) const
    {
        if ((j & 1) == 0)
            return tail(s, d);
        double t = s[1] * w.g;
        t = fmaf64(w.b, s[2], t);
        t = fmaf64(w.r, s[0], t);
        *d = t;
    }
};

// ---------------------------------------------------------------------------
// Gray to colour: every channel takes the gray value; C1C4 puts the caller's
// alpha in the fourth. Elements are moved as bit patterns.
template <class T, int Ch>
struct GrayToRgb {
    using Src = T;
    using Dst = T;
    static constexpr int kSrcPix = 1;
    static constexpr int kDstPix = Ch;
    T alpha;

    Span span(int width, const Dst*) const
    {
        return std::is_same_v<T, uint8_t> ? Span{0, width & ~15} : Span{0, 0};
    }
    void tail(const Src* s, Dst* d) const
    {
        d[0] = d[1] = d[2] = *s;
        if constexpr (Ch == 4)
            d[3] = alpha;
    }
    void block(const Src* s, Dst* d) const { tail(s, d); }

    void vector(const Src* s, Dst* d, int n) const
        requires std::is_same_v<T, uint8_t>
    {
        const __m128i a = _mm_set1_epi8(char(alpha));
        for (int i = 0; i < n; i += 16, s += 16, d += 16 * Ch) {
            const __m128i g = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
            if constexpr (Ch == 3) {
                // Output byte k of chunk c repeats gray value (16 c + k) / 3.
                static constexpr auto spread = [] {
                    std::array<std::array<int8_t, 16>, 3> m{};
                    for (int c = 0; c < 3; ++c)
                        for (int k = 0; k < 16; ++k)
                            m[c][k] = int8_t((16 * c + k) / 3);
                    return m;
                }();
                const __m128i m0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(spread[0].data()));
                const __m128i m1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(spread[1].data()));
                const __m128i m2 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(spread[2].data()));
                _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm_shuffle_epi8(g, m0));
                _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 16), _mm_shuffle_epi8(g, m1));
                _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 32), _mm_shuffle_epi8(g, m2));
            } else {
                const __m128i gg0 = _mm_unpacklo_epi8(g, g), gg1 = _mm_unpackhi_epi8(g, g);
                const __m128i ga0 = _mm_unpacklo_epi8(g, a), ga1 = _mm_unpackhi_epi8(g, a);
                _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm_unpacklo_epi16(gg0, ga0));
                _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 16), _mm_unpackhi_epi16(gg0, ga0));
                _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 32), _mm_unpacklo_epi16(gg1, ga1));
                _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 48), _mm_unpackhi_epi16(gg1, ga1));
            }
        }
    }
};

// The luma byte of every two-byte 4:2:2 pixel; chroma is never used.
struct YCbCr422ToGray {
    using Src = uint8_t;
    using Dst = uint8_t;
    static constexpr int kSrcPix = 2;
    static constexpr int kDstPix = 1;

    Span span(int width, const Dst*) const { return {0, width & ~31}; }
    void tail(const Src* s, Dst* d) const { *d = s[0]; }
    void block(const Src* s, Dst* d) const { *d = s[0]; }
    void vector(const Src* s, Dst* d, int n) const
    {
        const __m256i m = _mm256_set1_epi16(0x00ff);
        for (int i = 0; i < n; i += 32, s += 64, d += 32) {
            const __m256i a = _mm256_and_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(s)), m);
            const __m256i b = _mm256_and_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + 32)), m);
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), 0xD8));
        }
    }
};

// ---------------------------------------------------------------------------
// Drivers.

template <class K>
OrvStatus convertRows(const K& k, const typename K::Src* src, int srcStep, typename K::Dst* dst, int dstStep, RoiSize roi)
{
    if (OrvStatus st = checkRect(src, dst, roi))
        return st;
    rowsSerial(k, src, srcStep, dst, dstStep, roi.width, roi.height);
    return orvStatusOk;
}

// 32f: streaming stores from a destination of 1 MiB on. The output is read
// from the cache by nobody before the call returns, and ordinary stores first
// read every destination line; measured here (one thread, C3, old against
// streaming in the same run, medians of 7 rounds): 640x480 0.064 -> 0.060 ms,
// 1280x720 0.223 -> 0.189, 1920x1080 0.802 -> 0.622, 3840x2160 4.11 -> 3.16;
// 512x512 (1 MiB) 0.058 -> 0.055; 128x128 the same.
template <int Ch>
OrvStatus convertRows32f(Weights32f w, const float* src, int srcStep, float* dst, int dstStep, RoiSize roi)
{
    if (OrvStatus st = checkRect(src, dst, roi))
        return st;
    RgbToGray32f<Ch> k{w};
    k.stream = streamStores(4LL * roi.width * roi.height >= (1LL << 20));
    rowsSerial(k, src, srcStep, dst, dstStep, roi.width, roi.height);
    if (k.stream)
        _mm_sfence();
    return orvStatusOk;
}

// 16s takes its steps in elements: an odd byte step rounds down to even.
template <int Ch>
OrvStatus myRGBToGray16s(const int16_t* src, int srcStep, int16_t* dst, int dstStep, RoiSize roi, Weights32f w)
{
    if (OrvStatus st = checkRect(src, dst, roi))
        return st;
    const int srcElems = srcStep >> 1, dstElems = dstStep >> 1;
    rowsSerial(RgbToGray16s<Ch>{w}, src, srcElems * 2, dst, dstElems * 2, roi.width, roi.height);
    return orvStatusOk;
}

// 64f: bands of rows over threads unless the image is small or one thread
// is all there is.
template <int Ch>
OrvStatus ownColorToGray64f(const double* src, int srcStep, double* dst, int dstStep, RoiSize roi, const double* c)
{
    if (OrvStatus st = checkRect(src, dst, roi))
        return st;
    const ColorToGray64f<Ch> k{c ? Weights64f{c[0], c[1], c[2]}
                                 : Weights64f{double(kGray32f.r), double(kGray32f.g), double(kGray32f.b)}};
    auto worker = [&](int first, int rows) {
        rowsSerial(k, rowAt(src, srcStep, first), srcStep, rowAt(dst, dstStep, first), dstStep, roi.width, rows);
    };
    const int n = ownGetNumThreads();
    if (n == 1 || roi.width < 32 || roi.height < 32)
        worker(0, roi.height);
    else
        bands(roi.height, n, EvenBands{roi.height}, worker);
    return orvStatusOk;
}

Weights32f userWeights(const float* c) { return c ? Weights32f{c[0], c[1], c[2]} : kGray32f; }

// Caller's 8u weights in 15 fraction bits, trunc(c * 32768 + 0.5): the C3
// member rounds once (fused, single precision), the AC4 member in double.
Weights8u userWeights8uFused(const float* c)
{
    if (!c)
        return kGray8u;
    auto q = [](float x) { return cvtTrunc(fmaf32(x, 32768.0f, 0.5f)); };
    return {q(c[0]), q(c[1]), q(c[2])};
}
Weights8u userWeights8uDouble(const float* c)
{
    if (!c)
        return kGray8u;
    auto q = [](float x) { return cvtTrunc(double(x) * 32768.0 + 0.5); };
    return {q(c[0]), q(c[1]), q(c[2])};
}

}  // namespace
}  // namespace h9

using namespace h9;

// ---- fixed weights ----------------------------------------------------------
ORV_FRONT(orviRGBToGray_8u_C3C1R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    return convertRows(RgbToGray8u<3>{kGray8u}, pSrc, srcStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviRGBToGray_8u_AC4C1R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    return convertRows(RgbToGray8u<4>{kGray8u}, pSrc, srcStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviRGBToGray_16u_C3C1R)(const Orv16u* pSrc, int srcStep, Orv16u* pDst, int dstStep, RoiSize roiSize)
{
    return convertRows(RgbToGray16u<3>{kGray32f}, pSrc, srcStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviRGBToGray_16u_AC4C1R)(const Orv16u* pSrc, int srcStep, Orv16u* pDst, int dstStep, RoiSize roiSize)
{
    return convertRows(RgbToGray16u<4>{kGray32f}, pSrc, srcStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviRGBToGray_16s_C3C1R)(const Orv16s* pSrc, int srcStep, Orv16s* pDst, int dstStep, RoiSize roiSize)
{
    return myRGBToGray16s<3>(pSrc, srcStep, pDst, dstStep, roiSize, kGray32f);
}
ORV_FRONT(orviRGBToGray_16s_AC4C1R)(const Orv16s* pSrc, int srcStep, Orv16s* pDst, int dstStep, RoiSize roiSize)
{
    return myRGBToGray16s<4>(pSrc, srcStep, pDst, dstStep, roiSize, kGray32f);
}
ORV_FRONT(orviRGBToGray_32f_C3C1R)(const Orv32f* pSrc, int srcStep, Orv32f* pDst, int dstStep, RoiSize roiSize)
{
    return convertRows32f<3>(kGray32f, pSrc, srcStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviRGBToGray_32f_AC4C1R)(const Orv32f* pSrc, int srcStep, Orv32f* pDst, int dstStep, RoiSize roiSize)
{
    return convertRows32f<4>(kGray32f, pSrc, srcStep, pDst, dstStep, roiSize);
}

// ---- caller's weights (null selects the fixed ones) --------------------------
ORV_FRONT(orviColorToGray_8u_C3C1R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize,
                                    const Orv32f coeffs[3])
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    return convertRows(RgbToGray8u<3>{userWeights8uFused(coeffs)}, pSrc, srcStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviColorToGray_8u_AC4C1R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize,
                                     const Orv32f coeffs[3])
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    return convertRows(RgbToGray8u<4>{userWeights8uDouble(coeffs)}, pSrc, srcStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviColorToGray_16u_C3C1R)(const Orv16u* pSrc, int srcStep, Orv16u* pDst, int dstStep, RoiSize roiSize,
                                     const Orv32f coeffs[3])
{
    return convertRows(RgbToGray16u<3>{userWeights(coeffs)}, pSrc, srcStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviColorToGray_16u_AC4C1R)(const Orv16u* pSrc, int srcStep, Orv16u* pDst, int dstStep, RoiSize roiSize,
                                      const Orv32f coeffs[3])
{
    return convertRows(RgbToGray16u<4>{userWeights(coeffs)}, pSrc, srcStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviColorToGray_16s_C3C1R)(const Orv16s* pSrc, int srcStep, Orv16s* pDst, int dstStep, RoiSize roiSize,
                                     const Orv32f coeffs[3])
{
    return myRGBToGray16s<3>(pSrc, srcStep, pDst, dstStep, roiSize, userWeights(coeffs));
}
ORV_FRONT(orviColorToGray_16s_AC4C1R)(const Orv16s* pSrc, int srcStep, Orv16s* pDst, int dstStep, RoiSize roiSize,
                                      const Orv32f coeffs[3])
{
    return myRGBToGray16s<4>(pSrc, srcStep, pDst, dstStep, roiSize, userWeights(coeffs));
}
ORV_FRONT(orviColorToGray_32f_C3C1R)(const Orv32f* pSrc, int srcStep, Orv32f* pDst, int dstStep, RoiSize roiSize,
                                     const Orv32f coeffs[3])
{
    return convertRows32f<3>(userWeights(coeffs), pSrc, srcStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviColorToGray_32f_AC4C1R)(const Orv32f* pSrc, int srcStep, Orv32f* pDst, int dstStep, RoiSize roiSize,
                                      const Orv32f coeffs[3])
{
    return convertRows32f<4>(userWeights(coeffs), pSrc, srcStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviColorToGray_64f_C3C1R)(const Orv64f* pSrc, int srcStep, Orv64f* pDst, int dstStep, RoiSize roiSize,
                                     const Orv64f coeffs[3])
{
    return ownColorToGray64f<3>(pSrc, srcStep, pDst, dstStep, roiSize, coeffs);
}
ORV_FRONT(orviColorToGray_64f_AC4C1R)(const Orv64f* pSrc, int srcStep, Orv64f* pDst, int dstStep, RoiSize roiSize,
                                      const Orv64f coeffs[3])
{
    return ownColorToGray64f<4>(pSrc, srcStep, pDst, dstStep, roiSize, coeffs);
}

// ---- gray to colour, luma of 4:2:2 -----------------------------------------
ORV_FRONT(orviGrayToRGB_8u_C1C3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    return convertRows(GrayToRgb<uint8_t, 3>{0}, pSrc, srcStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviGrayToRGB_16u_C1C3R)(const Orv16u* pSrc, int srcStep, Orv16u* pDst, int dstStep, RoiSize roiSize)
{
    return convertRows(GrayToRgb<uint16_t, 3>{0}, pSrc, srcStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviGrayToRGB_32f_C1C3R)(const Orv32f* pSrc, int srcStep, Orv32f* pDst, int dstStep, RoiSize roiSize)
{
    return convertRows(GrayToRgb<uint32_t, 3>{0}, reinterpret_cast<const uint32_t*>(pSrc), srcStep,
                       reinterpret_cast<uint32_t*>(pDst), dstStep, roiSize);
}
ORV_FRONT(orviGrayToRGB_8u_C1C4R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize, Orv8u alpha)
{
    return convertRows(GrayToRgb<uint8_t, 4>{alpha}, pSrc, srcStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviGrayToRGB_16u_C1C4R)(const Orv16u* pSrc, int srcStep, Orv16u* pDst, int dstStep, RoiSize roiSize,
                                   Orv16u alpha)
{
    return convertRows(GrayToRgb<uint16_t, 4>{alpha}, pSrc, srcStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviGrayToRGB_32f_C1C4R)(const Orv32f* pSrc, int srcStep, Orv32f* pDst, int dstStep, RoiSize roiSize,
                                   Orv32f alpha)
{
    uint32_t bits;
    __builtin_memcpy(&bits, &alpha, sizeof bits);
    return convertRows(GrayToRgb<uint32_t, 4>{bits}, reinterpret_cast<const uint32_t*>(pSrc), srcStep,
                       reinterpret_cast<uint32_t*>(pDst), dstStep, roiSize);
}
ORV_FRONT(orviYCbCr422ToGray_8u_C2C1R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    return convertRows(YCbCr422ToGray{}, pSrc, srcStep, pDst, dstStep, roiSize);
}
