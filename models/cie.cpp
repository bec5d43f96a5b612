// RGB and CIE XYZ (D65 white, BT.709 primaries), both directions, for 8u,
// 16u, 16s and 32f data in C3 and AC4.
//
// 8u: two fixed-point versions of each matrix. Whole groups of pixels from
// the row start (8 pixels in C3, 4 in AC4) use the group matrix, 15 or 13
// fraction bits, saturated to a byte; the rest of the row uses the tail
// matrix, 16 fraction bits. Both floor (nothing is added before the shift).
//
// 16u, 16s, 32f: single-precision matrix. Groups of 4 pixels from the row
// start are evaluated fused, t = c2 in2, t = fma(c1, in1, t),
// t = fma(c3, in3, t); the others unfused, ((c1 in1) + (c2 in2)) + (c3 in3).
// XYZ to RGB in 32f is fused for every pixel. Integer results truncate
// toward zero; 16s data carries an offset of 32768 through the arithmetic.
//
// AC4: the fourth channel of the destination is never written.
#include <immintrin.h>

#include <array>
#include <cstdint>
#include <type_traits>

#include "frame/checks.h"
#include "frame/driver.h"
#include "frame/fronts.h"
#include "frame/scalar.h"
#include "frame/simd.h"
#include "models/ciematrix.h"
#include "models/pixels3.h"

namespace h9 {
namespace {

using px3::Elem;
using px3::clampUnit;

enum class Dir { ToXyz, ToRgb };

// ---------------------------------------------------------------------------
// Coefficients, [output][input].

struct Matrix8u {
    int32_t c[3][3];
    int shift;
};

constexpr Matrix8u kToXyzGroup = {{{13515, 11717, 5912}, {6969, 23434, 2365}, {634, 3906, 31137}}, 15};
constexpr Matrix8u kToXyzTail = {{{27030, 23434, 11824}, {13937, 46868, 4729}, {1267, 7811, 62274}}, 16};
constexpr Matrix8u kToRgbGroup = {{{26546, -12591, -4083}, {-7939, 15368, 340}, {456, -1671, 8661}}, 13};
constexpr Matrix8u kToRgbTail = {
    {{212368, -100738, -32671}, {-63521, 122944, 2723}, {3646, -13372, 69291}}, 16};

template <Dir D>
constexpr const Matrix32f& floatMatrix()
{
    return D == Dir::ToXyz ? kToXyz : kToRgb;
}

// ---------------------------------------------------------------------------
// 8u.

inline int32_t dot8u(const int32_t* c, const uint8_t* s) { return c[0] * s[0] + c[1] * s[1] + c[2] * s[2]; }

// pshufb masks that turn the pixels of each 128-bit lane into 32-bit lanes:
// (in1, in2) as two 16-bit words, or (in3, 0). `first` is the byte offset of
// the lane's first pixel, `stride` the bytes per pixel.
constexpr std::array<int8_t, 16> pairMask(int first, int stride, bool third)
{
    std::array<int8_t, 16> m{};
    for (int k = 0; k < 4; ++k) {
        const int at = first + k * stride;
        m[4 * k + 0] = int8_t(third ? at + 2 : at);
        m[4 * k + 1] = -128;
        m[4 * k + 2] = third ? int8_t(-128) : int8_t(at + 1);
        m[4 * k + 3] = -128;
    }
    return m;
}

template <std::size_t N>
inline __m256i lanes(const std::array<int8_t, N>& lo, const std::array<int8_t, N>& hi)
{
    return _mm256_setr_m128i(_mm_loadu_si128(reinterpret_cast<const __m128i*>(lo.data())),
                             _mm_loadu_si128(reinterpret_cast<const __m128i*>(hi.data())));
}

template <Dir D, int Ch>
struct Xyz8u {
    using Src = uint8_t;
    using Dst = uint8_t;
    static constexpr int kSrcPix = Ch;
    static constexpr int kDstPix = Ch;
    static constexpr int kGroup = Ch == 3 ? 8 : 4;
    static constexpr const Matrix8u& kGroupM = D == Dir::ToXyz ? kToXyzGroup : kToRgbGroup;
    static constexpr const Matrix8u& kTailM = D == Dir::ToXyz ? kToXyzTail : kToRgbTail;

    Span span(int width, const Dst*) const { return {0, width / kGroup * kGroup}; }

    void block(const Src* s, Dst* d) const
    {
        for (int o = 0; o < 3; ++o)
            d[o] = satU8(dot8u(kGroupM.c[o], s) >> kGroupM.shift);
    }

    void tail(const Src* s, Dst* d) const
    {
        const int32_t a = dot8u(kTailM.c[0], s) >> 16;
        const int32_t b = dot8u(kTailM.c[1], s) >> 16;
        const int32_t c = dot8u(kTailM.c[2], s) >> 16;
        if constexpr (D == Dir::ToXyz) {
            // X and Y of the tail matrix stay within 0..254; Z reaches 277.
            d[0] = uint8_t(a);
            d[1] = uint8_t(b);
            d[2] = uint8_t(c > 255 ? 255 : c);
        } else {
            d[0] = satU8(a);
            d[1] = satU8(b);
            d[2] = satU8(c);
        }
    }

    // Eight pixels, four in each 128-bit lane, each pixel's three sums in a
    // 32-bit lane from two pmaddwd, packed back to bytes with saturation.
    void vector(const Src* s, Dst* d, int n) const
    {
        auto pairCoef = [](int o) {
            return _mm256_set1_epi32(int32_t((uint32_t(kGroupM.c[o][0]) & 0xFFFF) | (uint32_t(kGroupM.c[o][1]) << 16)));
        };
        auto thirdCoef = [](int o) { return _mm256_set1_epi32(kGroupM.c[o][2] & 0xFFFF); };
        const __m256i c01[3] = {pairCoef(0), pairCoef(1), pairCoef(2)};
        const __m256i c2[3] = {thirdCoef(0), thirdCoef(1), thirdCoef(2)};
        // C3: lane 0 loads pixels 0-3 from byte 0, lane 1 pixels 4-7 from
        // byte 8 (they start at byte 4 of that load), so no load passes the
        // group's 24 bytes.
        static constexpr int kHiFirst = Ch == 3 ? 4 : 0;
        const __m256i mPair = lanes(pairMask(0, Ch, false), pairMask(kHiFirst, Ch, false));
        const __m256i mThird = lanes(pairMask(0, Ch, true), pairMask(kHiFirst, Ch, true));
        // Bytes X0-3 Y0-3 Z0-3 Z0-3 of a lane back to pixel order.
        static constexpr std::array<int8_t, 16> kOut3 = {0, 4, 8, 1, 5, 9, 2, 6, 10, 3, 7, 11, -128, -128, -128, -128};
        static constexpr std::array<int8_t, 16> kOut4 = {0, 4, 8, -128, 1, 5, 9, -128, 2, 6, 10, -128, 3, 7, 11, -128};
        const __m256i mOut = Ch == 3 ? lanes(kOut3, kOut3) : lanes(kOut4, kOut4);
        const __m256i alpha = _mm256_set1_epi32(int32_t(0xFF000000u));
        int i = 0;
        for (; i + 8 <= n; i += 8, s += 8 * Ch, d += 8 * Ch) {
            const __m256i v = Ch == 3 ? simd::load2x128(s, s + 8) : _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s));
            const __m256i p = _mm256_shuffle_epi8(v, mPair);
            const __m256i q = _mm256_shuffle_epi8(v, mThird);
            __m256i r[3];
            for (int o = 0; o < 3; ++o)
                r[o] = _mm256_srai_epi32(_mm256_add_epi32(_mm256_madd_epi16(p, c01[o]), _mm256_madd_epi16(q, c2[o])),
                                         kGroupM.shift);
            const __m256i bytes =
                _mm256_packus_epi16(_mm256_packs_epi32(r[0], r[1]), _mm256_packs_epi32(r[2], r[2]));
            const __m256i out = _mm256_shuffle_epi8(bytes, mOut);
            if constexpr (Ch == 3) {
                const __m256i packed = _mm256_permutevar8x32_epi32(out, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7));
                _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm256_castsi256_si128(packed));
                _mm_storel_epi64(reinterpret_cast<__m128i*>(d + 16), _mm256_extracti128_si256(packed, 1));
            } else {
                const __m256i old = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(d));
                _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), _mm256_or_si256(out, _mm256_and_si256(old, alpha)));
            }
        }
        for (; i < n; ++i, s += Ch, d += Ch)  // a last group of 4 in AC4
            block(s, d);
    }
};

// ---------------------------------------------------------------------------
// 16u, 16s, 32f.

// Z of the 32f members is clamped to 0..1 with the maximum first, so a NaN
// becomes 0 (maxps(a, b) = a > b ? a : b, minps likewise); R, G and B of the
// other direction by clampUnit, which lets a NaN pass.
inline float clampZ(float z)
{
    z = z > 0.0f ? z : 0.0f;  // NaN becomes 0
    return z < 1.0f ? z : 1.0f;
}
inline __m256 clampZ(__m256 z) { return _mm256_min_ps(_mm256_max_ps(z, _mm256_setzero_ps()), _mm256_set1_ps(1.0f)); }

template <class T, Dir D, int Ch>
struct XyzFloat {
    using Src = T;
    using Dst = T;
    static constexpr int kSrcPix = Ch;
    static constexpr int kDstPix = Ch;
    static constexpr bool kAllFused = std::is_same_v<T, float> && D == Dir::ToRgb;
    static constexpr const Matrix32f& M = floatMatrix<D>();

    Span span(int width, const Dst*) const { return {0, kAllFused ? width : width & ~3}; }

    static float fused(const float* c, float a, float b, float e)
    {
        float t = c[1] * b;
        t = fmaf32(c[0], a, t);
        t = fmaf32(c[2], e, t);
        return t;
    }
    static float unfused(const float* c, float a, float b, float e) { return ((c[0] * a) + (c[1] * b)) + (c[2] * e); }

    static void store(const float* t, Dst* d)
    {
        if constexpr (std::is_same_v<T, float>) {
            if constexpr (D == Dir::ToXyz) {
                d[0] = t[0];
                d[1] = t[1];
                d[2] = clampZ(t[2]);
            } else {
                d[0] = clampUnit(t[0]);
                d[1] = clampUnit(t[1]);
                d[2] = clampUnit(t[2]);
            }
        } else {
            d[0] = Elem<T>::out(t[0]);
            d[1] = Elem<T>::out(t[1]);
            d[2] = Elem<T>::out(t[2]);
        }
    }

    void block(const Src* s, Dst* d) const
    {
        const float a = Elem<T>::in(s[0]), b = Elem<T>::in(s[1]), e = Elem<T>::in(s[2]);
        const float t[3] = {fused(M.c[0], a, b, e), fused(M.c[1], a, b, e), fused(M.c[2], a, b, e)};
        store(t, d);
    }

    void tail(const Src* s, Dst* d) const
    {
        const float a = Elem<T>::in(s[0]), b = Elem<T>::in(s[1]), e = Elem<T>::in(s[2]);
        const float t[3] = {unfused(M.c[0], a, b, e), unfused(M.c[1], a, b, e), unfused(M.c[2], a, b, e)};
        store(t, d);
    }

    void vector(const Src* s, Dst* d, int n) const
    {
        int i = 0;
        if constexpr (Ch == 3) {
            // The next eight pixels are loaded and sorted before this eight's
            // sums, so that each step's chain of dependent operations starts
            // a step early (in the cache, 32f C3 0.49 -> 0.40 ns a pixel, 16u C3
            // 0.64 -> 0.55).
            __m256 next[3];
            if (n >= 8)
                px3::loadC3(s, next);
            for (; i + 8 <= n; i += 8, s += 24, d += 24) {
                const __m256 in[3] = {next[0], next[1], next[2]};
                if (i + 16 <= n)
                    px3::loadC3(s + 24, next);
                planar8(in, d);
            }
        } else {
            for (; i + 2 <= n; i += 2, s += 8, d += 8)
                pixels2(s, d);
        }
        for (; i < n; ++i, s += Ch, d += Ch)
            block(s, d);
    }

    // C3: eight pixels as one register per channel (in the rotated order of
    // the shuffles; every pixel is converted by itself).
    static void planar8(const __m256 in[3], Dst* d)
    {
        __m256 t[3];
        for (int o = 0; o < 3; ++o) {
            t[o] = _mm256_mul_ps(_mm256_set1_ps(M.c[o][1]), in[1]);
            t[o] = _mm256_fmadd_ps(_mm256_set1_ps(M.c[o][0]), in[0], t[o]);
            t[o] = _mm256_fmadd_ps(_mm256_set1_ps(M.c[o][2]), in[2], t[o]);
        }
        if constexpr (std::is_same_v<T, float>) {
            if constexpr (D == Dir::ToXyz) {
                t[2] = clampZ(t[2]);
            } else {
                for (auto& v : t)
                    v = clampUnit(v);
            }
            px3::storeC3(d, t);
        } else {
            const __m256i x[3] = {_mm256_cvttps_epi32(t[0]), _mm256_cvttps_epi32(t[1]), _mm256_cvttps_epi32(t[2])};
            px3::storeC3(d, x);
        }
    }

    // AC4: two pixels a register, [R G B A | R G B A]; every lane computes
    // one output from broadcast inputs and a column of the matrix, and the
    // fourth lane (junk) is replaced by the destination's alpha.
    static void pixels2(const Src* s, Dst* d)
    {
        __m256 v;
        if constexpr (std::is_same_v<T, float>)
            v = _mm256_loadu_ps(s);
        else
            v = Elem<T>::in(Elem<T>::widen(px3::load128(s)));
        auto column = [](int k) { return _mm256_setr_ps(M.c[0][k], M.c[1][k], M.c[2][k], 0.0f, M.c[0][k], M.c[1][k], M.c[2][k], 0.0f); };
        __m256 t = _mm256_mul_ps(column(1), _mm256_permute_ps(v, 0x55));
        t = _mm256_fmadd_ps(column(0), _mm256_permute_ps(v, 0x00), t);
        t = _mm256_fmadd_ps(column(2), _mm256_permute_ps(v, 0xAA), t);
        if constexpr (std::is_same_v<T, float>) {
            if constexpr (D == Dir::ToXyz)
                t = _mm256_blend_ps(t, clampZ(t), 0x44);
            else
                t = clampUnit(t);
            _mm256_storeu_ps(d, _mm256_blend_ps(t, _mm256_loadu_ps(d), 0x88));
        } else {
            const __m256i x = _mm256_cvttps_epi32(t);
            const __m128i packed = _mm256_castsi256_si128(_mm256_permute4x64_epi64(Elem<T>::narrow(x, x), 0x08));
            const __m128i old = _mm_loadu_si128(reinterpret_cast<const __m128i*>(d));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm_blend_epi16(packed, old, 0x88));
        }
    }
};

// ---------------------------------------------------------------------------
// Driver: byte steps rounded down to whole elements, rows over threads above
// 4096 pixels.

template <class K>
OrvStatus convertXyz(const K& k, const typename K::Src* src, int srcStep, typename K::Dst* dst, int dstStep, RoiSize roi)
{
    if (OrvStatus st = checkRect(src, dst, roi))
        return st;
    constexpr int shift = sizeof(typename K::Src) == 1 ? 0 : sizeof(typename K::Src) == 2 ? 1 : 2;
    const int ss = (srcStep >> shift) * int(sizeof(typename K::Src));
    const int ds = (dstStep >> shift) * int(sizeof(typename K::Dst));
    rowsAreaTested(k, src, ss, dst, ds, roi.width, roi.height, 4096);
    return orvStatusOk;
}

}  // namespace
}  // namespace h9

using namespace h9;

// Front functions: checks, then the driver with the member's kernel.
#define XYZ_FRONT(name, T, ...)                                                        \
    ORV_FRONT(name)(const T* pSrc, int srcStep, T* pDst, int dstStep, RoiSize roiSize) \
    {                                                                                  \
        return convertXyz(__VA_ARGS__{}, pSrc, srcStep, pDst, dstStep, roiSize);       \
    }

XYZ_FRONT(orviRGBToXYZ_8u_C3R, Orv8u, Xyz8u<Dir::ToXyz, 3>)
XYZ_FRONT(orviRGBToXYZ_8u_AC4R, Orv8u, Xyz8u<Dir::ToXyz, 4>)
XYZ_FRONT(orviRGBToXYZ_16u_C3R, Orv16u, XyzFloat<uint16_t, Dir::ToXyz, 3>)
XYZ_FRONT(orviRGBToXYZ_16u_AC4R, Orv16u, XyzFloat<uint16_t, Dir::ToXyz, 4>)
XYZ_FRONT(orviRGBToXYZ_16s_C3R, Orv16s, XyzFloat<int16_t, Dir::ToXyz, 3>)
XYZ_FRONT(orviRGBToXYZ_16s_AC4R, Orv16s, XyzFloat<int16_t, Dir::ToXyz, 4>)
XYZ_FRONT(orviRGBToXYZ_32f_C3R, Orv32f, XyzFloat<float, Dir::ToXyz, 3>)
XYZ_FRONT(orviRGBToXYZ_32f_AC4R, Orv32f, XyzFloat<float, Dir::ToXyz, 4>)
XYZ_FRONT(orviXYZToRGB_8u_C3R, Orv8u, Xyz8u<Dir::ToRgb, 3>)
XYZ_FRONT(orviXYZToRGB_8u_AC4R, Orv8u, Xyz8u<Dir::ToRgb, 4>)
XYZ_FRONT(orviXYZToRGB_16u_C3R, Orv16u, XyzFloat<uint16_t, Dir::ToRgb, 3>)
XYZ_FRONT(orviXYZToRGB_16u_AC4R, Orv16u, XyzFloat<uint16_t, Dir::ToRgb, 4>)
XYZ_FRONT(orviXYZToRGB_16s_C3R, Orv16s, XyzFloat<int16_t, Dir::ToRgb, 3>)
XYZ_FRONT(orviXYZToRGB_16s_AC4R, Orv16s, XyzFloat<int16_t, Dir::ToRgb, 4>)
XYZ_FRONT(orviXYZToRGB_32f_C3R, Orv32f, XyzFloat<float, Dir::ToRgb, 3>)
XYZ_FRONT(orviXYZToRGB_32f_AC4R, Orv32f, XyzFloat<float, Dir::ToRgb, 4>)
