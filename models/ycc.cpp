// RGB and photo YCC, both directions, for 8u, 16u, 16s and 32f data in C3
// and AC4.
//
// YCC is a luma on the weights 0.299, 0.587, 0.114, scaled by 0.7132668,
// and two colour differences, B - Y scaled by 0.4368627 and R - Y by
// 0.5319216 (0.53192 in 32f), offset to 156 and 137 on the 8-bit scale
// (40092 and 35209 on the 16-bit scale, 156 / 255 and 137 / 255 in 32f).
// The way back multiplies Y by 1.3584, C1 by 2.2179 and C2 by 1.8215, and
// takes 0.194 of C1 and 0.509 of C2 away from G.
//
// Every integer member cuts a row into a leading run of whole groups (8
// pixels in 8u C3, 4 in 8u AC4 and in both 16-bit layouts) and a tail, and
// the two parts are different computations that may differ by one step:
// 8u groups work in 16-bit lanes, 8u tails in 32-bit fixed point; 16-bit
// groups round to nearest in the caller's rounding mode, 16-bit tails fold
// the rounding into a starting term and truncate. 32f has one computation.
//
// AC4: the fourth channel of the destination is never written.
#include <immintrin.h>

#include <cstdint>
#include <type_traits>

#include "frame/checks.h"
#include "frame/driver.h"
#include "frame/fronts.h"
#include "frame/scalar.h"
#include "lumachroma/pixels8u.h"
#include "models/pixels3.h"

namespace h9 {
namespace {

// ---------------------------------------------------------------------------
// 8u. Group forms: 16-bit lanes; a product floor(x w / 256) of a byte is the
// high half of (x << 8) w, and floor(x w / 65536) of a signed word the high
// half of the signed product. Tail forms: 32-bit fixed point.

using px8::Px;
using px8::V;
using px8::V3;

inline V add16(V a, V b) { return _mm256_add_epi16(a, b); }
inline V sub16(V a, V b) { return _mm256_sub_epi16(a, b); }

// RGB to YCC. y = R 4898 + G 9617 + B 1867 with 6 fraction bits (at most
// 16316), Y = (y 2921 >> 16) >> 2, chroma ((x << 6) - y) scaled, offset by
// 624 and 548 (156 and 137 with 2 fraction bits), >> 2 and saturated.
struct ToYcc8Group {
    static Px scalar(int r, int g, int b)
    {
        using px8::hiS;
        using px8::hiU;
        const int y = hiU(r << 8, 4898) + hiU(g << 8, 9617) + hiU(b << 8, 1867);
        return {satU8(hiU(y, 2921) >> 2), satU8((hiS((b << 6) - y, 1789) + 624) >> 2),
                satU8((hiS((r << 6) - y, 2178) + 548) >> 2)};
    }
    static V3 lanes(const V3& x)
    {
        using namespace px8;
        const V y = add16(add16(hiU(shl<8>(x.a), 4898), hiU(shl<8>(x.b), 9617)), hiU(shl<8>(x.c), 1867));
        return {srl<2>(hiU(y, 2921)), sra<2>(add(hiS(sub16(shl<6>(x.c), y), 1789), 624)),
                sra<2>(add(hiS(sub16(shl<6>(x.a), y), 2178), 548))};
    }
};

// s = R 4898 + G 9617 + B 1867 with 14 fraction bits; nothing saturates,
// every result lies within a byte.
struct ToYcc8Tail {
    static Px scalar(int r, int g, int b)
    {
        const int s = r * 4898 + g * 9617 + b * 1867;
        return {uint8_t(((s >> 10) * 2921) >> 16), uint8_t(((((b << 14) - s) >> 10) * 1789 >> 16) + 156),
                uint8_t(((((r << 14) - s) >> 10) * 2178 >> 16) + 137)};
    }
};

// YCC to RGB with 4 fraction bits: y = Y 5563 / 256, chroma less its
// neutral point, << 7, scaled by 18168 and 14921; G takes y / 2 and the
// chroma shares -6357 and -16679 with 3 fraction bits.
struct ToRgb8Group {
    static Px scalar(int y0, int u0, int v0)
    {
        using px8::hiS;
        using px8::hiU;
        const int y = hiU(y0 << 8, 5563);
        const int c1 = hiS((u0 - 156) << 7, 18168), c2 = hiS((v0 - 137) << 7, 14921);
        return {satU8((y + c2) >> 4), satU8(((y >> 1) + hiS(c1, -6357) + hiS(c2, -16679)) >> 3), satU8((y + c1) >> 4)};
    }
    static V3 lanes(const V3& x)
    {
        using namespace px8;
        const V y = hiU(shl<8>(x.a), 5563);
        const V c1 = hiS(shl<7>(sub(x.b, 156)), 18168), c2 = hiS(shl<7>(sub(x.c, 137)), 14921);
        return {sra<4>(add16(y, c2)), sra<3>(add16(add16(sra<1>(y), hiS(c1, -6357)), hiS(c2, -16679))),
                sra<4>(add16(y, c1))};
    }
};

// 12 fraction bits; the chroma subtrahends are 156 * 9084 and 137 * 7460.
struct ToRgb8Tail {
    static Px scalar(int y0, int u0, int v0)
    {
        const int a = y0 * 5564, b = u0 * 9084 - 1417104, c = v0 * 7460 - 1022020;
        return {satU8((a + c) >> 12), satU8((a * 16 - (b >> 8) * 794 - (c >> 8) * 2084) >> 16), satU8((a + b) >> 12)};
    }
};

template <class K, int Ch>
void convert8u(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, RoiSize roi)
{
    constexpr px8::Alpha kAlpha = Ch == 4 ? px8::Alpha::Keep : px8::Alpha::None;
    const px8::PackedRowsIn<Ch> in{src, srcStep};
    const px8::PackedRowsOut<Ch, false, kAlpha> out{dst, dstStep};
    rowsAreaTested(roi.width, roi.height, 4096, [&](int y) { px8::convertRow<K>(in(y), out(y), roi.width); });
}

template <int Ch>
using ToYcc8 = px8::Kernel<ToYcc8Group, ToYcc8Tail, px8::Blocks<Ch == 3 ? 8 : 4>>;
template <int Ch>
using ToRgb8 = px8::Kernel<ToRgb8Group, ToRgb8Tail, px8::Blocks<Ch == 3 ? 8 : 4>>;

// ---------------------------------------------------------------------------
// 16u, 16s, 32f. A group form is written once over F, a float or eight float
// lanes, from the three inputs as floats (16s raised by 32768) to the three
// results before their conversion back.

using px3::Elem;

template <class F>
inline F k(float v)
{
    if constexpr (std::is_same_v<F, float>)
        return v;
    else
        return _mm256_set1_ps(v);
}
inline float mul(float a, float b) { return a * b; }
inline float sub(float a, float b) { return a - b; }
inline float fmadd(float a, float b, float c) { return fmaf32(a, b, c); }                // a b + c
inline float fnmadd(float a, float b, float c) { return fmaf32(-a, b, c); }              // c - a b
inline float fmsub(float a, float b, float c) { return fmaf32(a, b, -c); }               // a b - c
inline __m256 mul(__m256 a, __m256 b) { return _mm256_mul_ps(a, b); }
inline __m256 sub(__m256 a, __m256 b) { return _mm256_sub_ps(a, b); }
inline __m256 fmadd(__m256 a, __m256 b, __m256 c) { return _mm256_fmadd_ps(a, b, c); }
inline __m256 fnmadd(__m256 a, __m256 b, __m256 c) { return _mm256_fnmadd_ps(a, b, c); }
inline __m256 fmsub(__m256 a, __m256 b, __m256 c) { return _mm256_fmsub_ps(a, b, c); }

// How a group form's results become elements: integers round to nearest in
// the thread's mode or truncate, then clamp to the element's range; 32f
// results are kept or clamped to 0..1.
enum class Out { Nearest, Trunc, Keep, Unit };

// L = 0.114 B + (0.299 R + 0.587 G), both sums fused.
template <class F>
inline F luma(const F x[3])
{
    return fmadd(k<F>(0.114f), x[2], fmadd(k<F>(0.299f), x[0], mul(k<F>(0.587f), x[1])));
}

// 16u and 16s: C1 = (B - L) 0.4368627 + 40092, C2 = (R - L) 0.5319216 +
// 35209, fused.
struct ToYcc16Group {
    static constexpr Out kOut = Out::Nearest;
    template <class F>
    static void run(const F x[3], F o[3])
    {
        const F l = luma(x);
        o[0] = mul(k<F>(0.7132668f), l);
        o[1] = fmadd(sub(x[2], l), k<F>(0.4368627f), k<F>(40092.0f));
        o[2] = fmadd(sub(x[0], l), k<F>(0.5319216f), k<F>(35209.0f));
    }
};

// 32f: the offsets are 156 / 255 and 137 / 255, the C2 scale 0.53192.
struct ToYcc32fGroup {
    static constexpr Out kOut = Out::Keep;
    template <class F>
    static void run(const F x[3], F o[3])
    {
        const F l = luma(x);
        o[0] = mul(l, k<F>(0.7132668f));
        o[1] = fmadd(k<F>(0.4368627f), sub(x[2], l), k<F>(0.6117647f));
        o[2] = fmadd(k<F>(0.53192f), sub(x[0], l), k<F>(0.5372549f));
    }
};

// 16u: c1 = 2.2179 (C1 - 40092), c2 = 1.8215 (C2 - 35209);
// G = Y 1.3584 - 0.194 c1 - 0.509 c2, each subtraction fused.
struct ToRgb16uGroup {
    static constexpr Out kOut = Out::Nearest;
    template <class F>
    static void run(const F x[3], F o[3])
    {
        const F c1 = mul(k<F>(2.2179f), sub(x[1], k<F>(40092.0f)));
        const F c2 = mul(sub(x[2], k<F>(35209.0f)), k<F>(1.8215f));
        o[0] = fmadd(x[0], k<F>(1.3584f), c2);
        o[1] = fnmadd(c2, k<F>(0.509f), fnmadd(c1, k<F>(0.194f), mul(x[0], k<F>(1.3584f))));
        o[2] = fmadd(x[0], k<F>(1.3584f), c1);
    }
};

// 16s, inputs raised by 32768: the chroma less 35209 and 40092 is the
// signed chroma less 2441 and 7324, exactly (integers below 2^24).
// G = 1.3584 Y - (0.194 b + 0.509 a), the outer and inner sums fused.
struct ToRgb16sGroup {
    static constexpr Out kOut = Out::Trunc;
    template <class F>
    static void run(const F x[3], F o[3])
    {
        const F a = mul(sub(x[2], k<F>(35209.0f)), k<F>(1.8215f));
        const F b = mul(sub(x[1], k<F>(40092.0f)), k<F>(2.2179f));
        o[0] = fmadd(x[0], k<F>(1.3584f), a);
        o[1] = fmsub(k<F>(1.3584f), x[0], fmadd(b, k<F>(0.194f), mul(a, k<F>(0.509f))));
        o[2] = fmadd(x[0], k<F>(1.3584f), b);
    }
};

// 32f: G from t = Y 1.3584 - 0.194 c1, fused; results clamped to 0..1.
struct ToRgb32fGroup {
    static constexpr Out kOut = Out::Unit;
    template <class F>
    static void run(const F x[3], F o[3])
    {
        const F c1 = mul(sub(x[1], k<F>(0.6117647f)), k<F>(2.2179f));
        const F c2 = mul(sub(x[2], k<F>(0.5372549f)), k<F>(1.8215f));
        const F t = fnmadd(c1, k<F>(0.194f), mul(k<F>(1.3584f), x[0]));
        o[0] = fmadd(x[0], k<F>(1.3584f), c2);
        o[1] = fnmadd(c2, k<F>(0.509f), t);
        o[2] = fmadd(x[0], k<F>(1.3584f), c1);
    }
};

// Tail forms, one pixel each.

// 16u RGB to YCC: one fused chain per output from the folded matrix,
// starting from the rounding term (and the offset), truncated; the sums stay
// within 0..65535, so the low 16 bits are stored.
struct ToYcc16uTail {
    static void pixel(const uint16_t* s, uint16_t* d)
    {
        static constexpr float m[3][4] = {{0.49999f, 0.213267f, 0.418688f, 0.0813124f},
                                          {40092.5f, -0.130621f, -0.256437f, 0.387058f},
                                          {35209.5f, 0.372876f, -0.312237f, -0.0606389f}};
        const float r = s[0], g = s[1], b = s[2];
        for (int o = 0; o < 3; ++o)
            d[o] = uint16_t(cvtTrunc(fmaf32(m[o][3], b, fmaf32(m[o][2], g, fmaf32(m[o][1], r, m[o][0])))));
    }
};

// 16s RGB to YCC: L as in the group, the rounding term added fused, then
// truncated and lowered by 32768.
struct ToYcc16sTail {
    static void pixel(const int16_t* s, int16_t* d)
    {
        const float x[3] = {Elem<int16_t>::in(s[0]), Elem<int16_t>::in(s[1]), Elem<int16_t>::in(s[2])};
        const float l = luma(x);
        d[0] = int16_t(cvtTrunc(fmaf32(0.7132668f, l, 0.49999f)) - 32768);
        d[1] = int16_t(cvtTrunc(fmaf32(x[2] - l, 0.4368627f, 40092.5f)) - 32768);
        d[2] = int16_t(cvtTrunc(fmaf32(0.5319216f, x[0] - l, 35209.5f)) - 32768);
    }
};

// 16u YCC to RGB: t = 1.3584 Y + 0.49999 fused, the chroma less its neutral
// point as integers; G's shares are 1.8215 0.509 and 2.2179 0.194.
// Truncated, clamped to 0..65535.
struct ToRgb16uTail {
    static void pixel(const uint16_t* s, uint16_t* d)
    {
        const float t = fmaf32(1.3584f, float(s[0]), 0.49999f);
        const float c1 = float(int32_t(s[1]) - 40092), c2 = float(int32_t(s[2]) - 35209);
        d[0] = satU16(cvtTrunc(fmaf32(c2, 1.8215f, t)));
        d[1] = satU16(cvtTrunc(fmaf32(-c2, 0.9271435f, fmaf32(-c1, 0.4302726f, t))));
        d[2] = satU16(cvtTrunc(fmaf32(2.2179f, c1, t)));
    }
};

// 16s YCC to RGB: the group's numbers with nothing fused.
struct ToRgb16sTail {
    static void pixel(const int16_t* s, int16_t* d)
    {
        const float yf = float(int32_t(s[0]) + 32768);
        const float a = float(int32_t(s[2]) - 2441) * 1.8215f;
        const float b = float(int32_t(s[1]) - 7324) * 2.2179f;
        const float y = yf * 1.3584f;
        d[0] = Elem<int16_t>::out(y + a);
        d[1] = Elem<int16_t>::out((y - b * 0.194f) - a * 0.509f);
        d[2] = Elem<int16_t>::out(y + b);
    }
};

// One row of a 16u, 16s or 32f member: the group form over whole groups of 4
// from the row start (over the whole row in 32f), the tail form after them.
template <class T, int Ch, class Group, class Tail>
struct YccFloat {
    using Src = T;
    using Dst = T;
    static constexpr int kSrcPix = Ch;
    static constexpr int kDstPix = Ch;
    static constexpr bool kFloat = std::is_same_v<T, float>;

    Span span(int width, const Dst*) const { return {0, kFloat ? width : width & ~3}; }

    void block(const Src* s, Dst* d) const
    {
        const float x[3] = {Elem<T>::in(s[0]), Elem<T>::in(s[1]), Elem<T>::in(s[2])};
        float o[3];
        Group::run(x, o);
        for (int c = 0; c < 3; ++c) {
            if constexpr (Group::kOut == Out::Keep)
                d[c] = o[c];
            else if constexpr (Group::kOut == Out::Unit)
                d[c] = px3::clampUnit(o[c]);
            else if constexpr (Group::kOut == Out::Nearest)
                d[c] = Elem<T>::clamp(cvtNearest(o[c]));
            else
                d[c] = Elem<T>::out(o[c]);
        }
    }

    void tail(const Src* s, Dst* d) const
    {
        if constexpr (kFloat)
            block(s, d);  // never reached: 32f rows have no tail
        else
            Tail::pixel(s, d);
    }

    void vector(const Src* s, Dst* d, int n) const
    {
        int i = 0;
        for (; i + 8 <= n; i += 8, s += 8 * Ch, d += 8 * Ch) {
            __m256 x[3], o[3];
            if constexpr (Ch == 3)
                px3::loadC3(s, x);
            else
                px3::loadAC4(s, x);
            Group::run(x, o);
            if constexpr (kFloat) {
                if constexpr (Group::kOut == Out::Unit)
                    for (auto& v : o)
                        v = px3::clampUnit(v);
                if constexpr (Ch == 3)
                    px3::storeC3(d, o);
                else
                    px3::storeAC4(d, o);
            } else {
                __m256i r[3];
                for (int c = 0; c < 3; ++c)
                    r[c] = Group::kOut == Out::Nearest ? _mm256_cvtps_epi32(o[c]) : _mm256_cvttps_epi32(o[c]);
                if constexpr (Ch == 3)
                    px3::storeC3(d, r);
                else
                    px3::storeAC4(d, r);
            }
        }
        for (; i < n; ++i, s += Ch, d += Ch)  // a last group of 4, or the last pixels of a 32f row
            block(s, d);
    }
};

// Byte steps rounded down to whole elements; rows over threads above 4096
// pixels, each thread in the caller's rounding mode.
template <class K>
void convertFloat(const typename K::Src* src, int srcStep, typename K::Dst* dst, int dstStep, RoiSize roi)
{
    constexpr int shift = sizeof(typename K::Src) == 2 ? 1 : 2;
    const int ss = (srcStep >> shift) * int(sizeof(typename K::Src));
    const int ds = (dstStep >> shift) * int(sizeof(typename K::Dst));
    const K k{};
    rowsAreaTestedInCallersRounding(roi.width, roi.height, 4096,
                                    [&](int y) { runRow(k, rowAt(src, ss, y), rowAt(dst, ds, y), roi.width); });
}

template <class T>
struct Members;
template <>
struct Members<uint16_t> {
    using ToYccGroup = ToYcc16Group;
    using ToYccTail = ToYcc16uTail;
    using ToRgbGroup = ToRgb16uGroup;
    using ToRgbTail = ToRgb16uTail;
};
template <>
struct Members<int16_t> {
    using ToYccGroup = ToYcc16Group;
    using ToYccTail = ToYcc16sTail;
    using ToRgbGroup = ToRgb16sGroup;
    using ToRgbTail = ToRgb16sTail;
};
template <>
struct Members<float> {
    using ToYccGroup = ToYcc32fGroup;
    using ToYccTail = void;
    using ToRgbGroup = ToRgb32fGroup;
    using ToRgbTail = void;
};

template <class T, int Ch>
using ToYccF = YccFloat<T, Ch, typename Members<T>::ToYccGroup, typename Members<T>::ToYccTail>;
template <class T, int Ch>
using ToRgbF = YccFloat<T, Ch, typename Members<T>::ToRgbGroup, typename Members<T>::ToRgbTail>;

template <class T, int Ch, bool ToYcc>
OrvStatus convertYcc(const T* src, int srcStep, T* dst, int dstStep, RoiSize roi)
{
    if (OrvStatus st = checkRect(src, dst, roi))
        return st;
    if constexpr (std::is_same_v<T, uint8_t>)
        convert8u<std::conditional_t<ToYcc, ToYcc8<Ch>, ToRgb8<Ch>>, Ch>(src, srcStep, dst, dstStep, roi);
    else
        convertFloat<std::conditional_t<ToYcc, ToYccF<T, Ch>, ToRgbF<T, Ch>>>(src, srcStep, dst, dstStep, roi);
    return orvStatusOk;
}

}  // namespace
}  // namespace h9

using namespace h9;

#define YCC_FRONT(name, T, Ch, ToYcc)                                                  \
    ORV_FRONT(name)(const T* pSrc, int srcStep, T* pDst, int dstStep, RoiSize roiSize) \
    {                                                                                  \
        return convertYcc<T, Ch, ToYcc>(pSrc, srcStep, pDst, dstStep, roiSize);        \
    }

YCC_FRONT(orviRGBToYCC_8u_C3R, Orv8u, 3, true)
YCC_FRONT(orviRGBToYCC_8u_AC4R, Orv8u, 4, true)
YCC_FRONT(orviRGBToYCC_16u_C3R, Orv16u, 3, true)
YCC_FRONT(orviRGBToYCC_16u_AC4R, Orv16u, 4, true)
YCC_FRONT(orviRGBToYCC_16s_C3R, Orv16s, 3, true)
YCC_FRONT(orviRGBToYCC_16s_AC4R, Orv16s, 4, true)
YCC_FRONT(orviRGBToYCC_32f_C3R, Orv32f, 3, true)
YCC_FRONT(orviRGBToYCC_32f_AC4R, Orv32f, 4, true)
YCC_FRONT(orviYCCToRGB_8u_C3R, Orv8u, 3, false)
YCC_FRONT(orviYCCToRGB_8u_AC4R, Orv8u, 4, false)
YCC_FRONT(orviYCCToRGB_16u_C3R, Orv16u, 3, false)
YCC_FRONT(orviYCCToRGB_16u_AC4R, Orv16u, 4, false)
YCC_FRONT(orviYCCToRGB_16s_C3R, Orv16s, 3, false)
YCC_FRONT(orviYCCToRGB_16s_AC4R, Orv16s, 4, false)
YCC_FRONT(orviYCCToRGB_32f_C3R, Orv32f, 3, false)
YCC_FRONT(orviYCCToRGB_32f_AC4R, Orv32f, 4, false)
