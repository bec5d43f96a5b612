// RGB (or BGR) and hue, lightness, saturation, both ways.
//
// Everything is computed in single precision. Hue is stored as a fraction of
// the circle (0..255, 0..65535, 0.0..1.0) and computed in degrees. The
// members differ in how they divide and how they return to integers, and in
// which pixels of a row get which:
//
//   RGB to HLS, 8u     whole groups (8 pixels in C3, 4 in AC4) divide by the
//                      plain approximate reciprocal (rcpps) and round to
//                      nearest; the rest refine it by one unfused Newton step
//                      and truncate (C3) or round (AC4)
//   RGB to HLS, 16-bit groups of 4 refine the reciprocal with fused steps and
//                      round; the rest refine it unfused and truncate
//   BGR to HLS         groups of 4 divide by the plain reciprocal of a
//                      denominator raised by 0.5 where it is 0, and truncate;
//                      the rest as the 16-bit tail, truncated
//   RGB to HLS, 32f    exact division everywhere
//   HLS to RGB/BGR     groups (8 pixels in 8u, 4 otherwise) with fused steps;
//                      the rest unfused, 8u RGB by exact division
//
// "Nearest" is the rounding mode of the calling thread. Group forms saturate
// what they store; tail forms store the low bits of the integer, which stay
// in range for valid input. AC4 destinations keep their fourth channel; the
// planar members with alpha copy it from the source.
#include <immintrin.h>

#include <array>
#include <cstdint>

#include "frame/checks.h"
#include "frame/fronts.h"
#include "models/hue.h"

namespace h9 {
namespace {

using namespace hue;
using I3 = std::array<int32_t, 3>;
using F3 = std::array<float, 3>;

// Scale of each element type: full scale, half and double scale (for the
// denominator of S), degrees to stored hue and back, and 1 / full scale.
struct Scale8 {
    static constexpr float kFull = 255.0f, kHalf = 127.5f, kDouble = 510.0f;
    static constexpr float kDegToH = 0.7083333f, kHToDeg = 1.4117647f, kInv = 0.003921569f;
};
struct Scale16 {
    static constexpr float kFull = 65535.0f, kHalf = 32767.5f, kDouble = 131070.0f;
    static constexpr float kDegToH = 182.04167f, kHToDeg = 0.005493248f, kInv = 1.525902e-05f;
};

enum class Conv { Nearest, Trunc };

template <Conv C>
inline int32_t conv(float x)
{
    return C == Conv::Nearest ? cvtNearest(x) : cvtTrunc(x);
}
template <Conv C>
inline __m256i conv(__m256 x)
{
    return C == Conv::Nearest ? _mm256_cvtps_epi32(x) : _mm256_cvttps_epi32(x);
}

// ---------------------------------------------------------------------------
// RGB to HLS. Shared steps: mx, mn, sum = mx + mn, diff = mx - mn,
// L = sum / 2. A pixel with diff 0 is achromatic (H = S = 0). Otherwise
// S = diff / den with den = sum up to half scale, double scale - sum above;
// the hue in degrees comes from the channel that holds the maximum, tested
// R, then G, then B:
//   R: 60 (G - B) / diff     G: 60 (B - R) / diff + 120     B: 60 (R - G) / diff + 240
// and a negative hue wraps by 360.

struct Extent {
    float mx, mn, sum, diff, l;
};
inline Extent extent(float r, float g, float b)
{
    const float mx = max3(r, g, b), mn = min3(r, g, b);
    const float sum = mx + mn;
    return {mx, mn, sum, mx - mn, 0.5f * sum};
}
struct ExtentV {
    __m256 mx, sum, diff, l, isR, isG;
};
inline ExtentV extent(const __m256 x[3])
{
    const __m256 mx = max3(x[0], x[1], x[2]), mn = min3(x[0], x[1], x[2]);
    const __m256 sum = _mm256_add_ps(mx, mn);
    return {mx, sum, _mm256_sub_ps(mx, mn), _mm256_mul_ps(k8(0.5f), sum), eq(x[0], mx), eq(x[1], mx)};
}
// The hue candidates of the three maxima, chosen R first, then G, then B.
inline __m256 byMax(const ExtentV& e, __m256 hr, __m256 hg, __m256 hb)
{
    return pick(pick(hb, hg, e.isG), hr, e.isR);
}
inline float wrapNegative(float h) { return h < 0.0f ? h + 360.0f : h; }
inline __m256 wrapNegative(__m256 h) { return pick(h, _mm256_add_ps(h, k8(360.0f)), lt(h, _mm256_setzero_ps())); }

// One fused Newton step on the plain reciprocal r of x: r - r (r x - 1).
inline float refineFused(float r, float x) { return fnma(r, fms(r, x, 1.0f), r); }
inline __m256 refineFused(__m256 r, __m256 x) { return _mm256_fnmadd_ps(r, _mm256_fmsub_ps(r, x, k8(1.0f)), r); }

// The reciprocals of the RGB family's group forms: plain in 8u, refined by
// one fused Newton step in 16u and 16s.
struct PlainRcp {
    static float of(float x) { return rcp(x); }
    static __m256 of(__m256 x) { return _mm256_rcp_ps(x); }
};
struct FusedRcp {
    static float of(float x) { return refineFused(rcp(x), x); }
    static __m256 of(__m256 x) { return refineFused(_mm256_rcp_ps(x), x); }
};

// Group form of the RGB family, to nearest:
//   S = nearest((diff 1/den) full)
//   c = (1/diff) 60; h = c (G - B), fma(c, B - R, 120) or fma(R - G, c, 240)
// with the member's reciprocal for 1/x.
template <class Sc, class Rcp>
struct ToHlsGroup {
    using Out = int32_t;
    static constexpr bool kSaturate = true;

    static I3 scalar(float r, float g, float b)
    {
        const Extent e = extent(r, g, b);
        const int32_t l = cvtNearest(e.l);
        if (e.diff == 0.0f)
            return {0, l, 0};
        const float den = e.l <= Sc::kHalf ? e.sum : Sc::kDouble - e.sum;
        const int32_t s = cvtNearest((e.diff * Rcp::of(den)) * Sc::kFull);
        const float c = Rcp::of(e.diff) * 60.0f;
        float h;
        if (r == e.mx)
            h = c * (g - b);
        else if (g == e.mx)
            h = fma(c, b - r, 120.0f);
        else
            h = fma(r - g, c, 240.0f);
        return {cvtNearest(wrapNegative(h) * Sc::kDegToH), l, s};
    }

    static void lanes(const __m256 x[3], __m256i out[3])
    {
        const ExtentV e = extent(x);
        const __m256 den = pick(_mm256_sub_ps(k8(Sc::kDouble), e.sum), e.sum, le(e.l, k8(Sc::kHalf)));
        const __m256 s = _mm256_mul_ps(_mm256_mul_ps(e.diff, Rcp::of(den)), k8(Sc::kFull));
        const __m256 c = _mm256_mul_ps(Rcp::of(e.diff), k8(60.0f));
        const __m256 h = byMax(e, _mm256_mul_ps(c, _mm256_sub_ps(x[1], x[2])),
                               _mm256_fmadd_ps(c, _mm256_sub_ps(x[2], x[0]), k8(120.0f)),
                               _mm256_fmadd_ps(_mm256_sub_ps(x[0], x[1]), c, k8(240.0f)));
        const __m256i gray = _mm256_castps_si256(eq(e.diff, _mm256_setzero_ps()));
        out[0] = _mm256_andnot_si256(gray, _mm256_cvtps_epi32(_mm256_mul_ps(wrapNegative(h), k8(Sc::kDegToH))));
        out[1] = _mm256_cvtps_epi32(e.l);
        out[2] = _mm256_andnot_si256(gray, _mm256_cvtps_epi32(s));
    }
};

// Group form of the BGR family: a gray pixel (diff 0) raises sum and diff by
// z = 0.5 so that the plain reciprocals stay finite; everything truncates.
//   S = trunc((rcp(den) (diff + z)) 255), 0 where diff is 0
//   h = fma(60 (G - B), rcp(diff + z), 0), or with 60 (B - R) and 120, or
//       with 60 (R - G) and 240
// A gray pixel has its maximum in R and a difference of 0, so its hue is 0.
struct ToHlsGroupBgr {
    using Out = int32_t;
    static constexpr bool kSaturate = true;

    static I3 scalar(float r, float g, float b)
    {
        const Extent e = extent(r, g, b);
        const float z = e.diff == 0.0f ? 0.5f : 0.0f;
        const float sum = e.sum + z;
        const float den = e.l <= 127.5f ? sum : 510.0f - sum;
        const int32_t s = e.diff == 0.0f ? 0 : cvtTrunc((rcp(den) * (e.diff + z)) * 255.0f);
        const float q = rcp(e.diff + z);
        float h;
        if (r == e.mx)
            h = fma(60.0f * (g - b), q, 0.0f);
        else if (g == e.mx)
            h = fma(60.0f * (b - r), q, 120.0f);
        else
            h = fma(60.0f * (r - g), q, 240.0f);
        return {cvtTrunc(wrapNegative(h) * 0.7083333f), cvtTrunc(e.l), s};
    }

    static void lanes(const __m256 x[3], __m256i out[3])
    {
        const ExtentV e = extent(x);
        const __m256 gray = eq(e.diff, _mm256_setzero_ps());
        const __m256 z = _mm256_and_ps(gray, k8(0.5f));
        const __m256 sum = _mm256_add_ps(e.sum, z);
        const __m256 den = pick(_mm256_sub_ps(k8(510.0f), sum), sum, le(e.l, k8(127.5f)));
        const __m256 s = _mm256_mul_ps(_mm256_mul_ps(_mm256_rcp_ps(den), _mm256_add_ps(e.diff, z)), k8(255.0f));
        const __m256 q = _mm256_rcp_ps(_mm256_add_ps(e.diff, z));
        const __m256 sixty = k8(60.0f);
        const __m256 h = byMax(e, _mm256_fmadd_ps(_mm256_mul_ps(sixty, _mm256_sub_ps(x[1], x[2])), q, _mm256_setzero_ps()),
                               _mm256_fmadd_ps(_mm256_mul_ps(sixty, _mm256_sub_ps(x[2], x[0])), q, k8(120.0f)),
                               _mm256_fmadd_ps(_mm256_mul_ps(sixty, _mm256_sub_ps(x[0], x[1])), q, k8(240.0f)));
        out[0] = _mm256_cvttps_epi32(_mm256_mul_ps(wrapNegative(h), k8(0.7083333f)));
        out[1] = _mm256_cvttps_epi32(e.l);
        out[2] = _mm256_andnot_si256(_mm256_castps_si256(gray), _mm256_cvttps_epi32(s));
    }
};

// One unfused Newton step on the plain reciprocal r of x: 2r - (x r) r.
inline float refinePlain(float r, float x) { return (r + r) - ((x * r) * r); }

// Tail form of every integer RGB-to-HLS member: unfused refined reciprocals,
// integers by C, low bits stored.
template <class Sc, Conv C>
struct ToHlsTail {
    using Out = int32_t;
    static constexpr bool kSaturate = false;

    static I3 scalar(float r, float g, float b)
    {
        const Extent e = extent(r, g, b);
        const int32_t l = conv<C>(e.l);
        if (e.diff == 0.0f)
            return {0, l, 0};
        const float den = e.l <= Sc::kHalf ? e.sum : Sc::kDouble - e.sum;
        const int32_t s = conv<C>((e.diff * refinePlain(rcp(den), den)) * Sc::kFull);
        const float q = refinePlain(rcp(e.diff), e.diff);
        float h;
        if (r == e.mx)
            h = ((g - b) * 60.0f) * q;
        else if (g == e.mx)
            h = ((b - r) * 60.0f) * q + 120.0f;
        else
            h = ((r - g) * 60.0f) * q + 240.0f;
        return {conv<C>(wrapNegative(h) * Sc::kDegToH), l, s};
    }
};

// 32f, every pixel: exact division. Achromatic where diff is not above
// 2^-23 (or is NaN).
//   S = diff / sum up to L = 0.5, diff / (2 - sum) above
//   h = ((G - B) 60) / diff, ((B - R) 60) / diff + 120, ((R - G) 60) / diff + 240
//   H = h / 360
struct ToHls32f {
    using Out = float;
    static constexpr bool kSaturate = false;

    static F3 scalar(float r, float g, float b)
    {
        const Extent e = extent(r, g, b);
        if (!(e.diff > 1.1920929e-7f))
            return {0.0f, e.l, 0.0f};
        const float s = e.l <= 0.5f ? e.diff / e.sum : e.diff / (2.0f - e.sum);
        float h;
        if (r == e.mx)
            h = ((g - b) * 60.0f) / e.diff;
        else if (g == e.mx)
            h = ((b - r) * 60.0f) / e.diff + 120.0f;
        else
            h = ((r - g) * 60.0f) / e.diff + 240.0f;
        return {wrapNegative(h) / 360.0f, e.l, s};
    }

    static void lanes(const __m256 x[3], __m256 out[3])
    {
        const ExtentV e = extent(x);
        const __m256 den = pick(_mm256_sub_ps(k8(2.0f), e.sum), e.sum, le(e.l, k8(0.5f)));
        const __m256 s = _mm256_div_ps(e.diff, den);
        const __m256 sixty = k8(60.0f);
        auto part = [&](__m256 a, __m256 b) { return _mm256_div_ps(_mm256_mul_ps(_mm256_sub_ps(a, b), sixty), e.diff); };
        const __m256 h = byMax(e, part(x[1], x[2]), _mm256_add_ps(part(x[2], x[0]), k8(120.0f)),
                               _mm256_add_ps(part(x[0], x[1]), k8(240.0f)));
        const __m256 chroma = gt(e.diff, k8(1.1920929e-7f));
        out[0] = _mm256_and_ps(chroma, _mm256_div_ps(wrapNegative(h), k8(360.0f)));
        out[1] = e.l;
        out[2] = _mm256_and_ps(chroma, s);
    }
};

// ---------------------------------------------------------------------------
// HLS to RGB. With Ln, Sn the lightness and saturation as fractions:
//   m2 = Ln + Ln Sn up to Ln = 0.5, Ln + Sn - Ln Sn above; m1 = 2 Ln - m2;
//   d = m2 - m1
// A channel at hue angle h (degrees) is m1 + d h / 60 below 60, m2 below 180,
// m1 + d (240 - h) / 60 below 240, m1 from there (NaN included). R is read at
// the hue + 120 (less 360 above 360), G at the hue, B at the hue - 120 (plus
// 360 below 0). With S = 0 every channel is L.

inline float wrapAbove(float h) { return h > 360.0f ? h - 360.0f : h; }
inline float wrapBelow(float h) { return h < 0.0f ? h + 360.0f : h; }
inline __m256 wrapAbove(__m256 h) { return pick(h, _mm256_sub_ps(h, k8(360.0f)), gt(h, k8(360.0f))); }
inline __m256 wrapBelow(__m256 h) { return pick(h, _mm256_add_ps(h, k8(360.0f)), lt(h, _mm256_setzero_ps())); }

// The segment of the hue circle: rising and falling are the two edge values
// the form computed for this channel.
inline float segment(float h, float m1, float m2, float rising, float falling)
{
    if (h < 60.0f)
        return rising;
    if (h < 180.0f)
        return m2;
    if (h < 240.0f)
        return falling;
    return m1;
}
inline __m256 segment(__m256 h, __m256 m1, __m256 m2, __m256 rising, __m256 falling)
{
    __m256 v = pick(m1, falling, lt(h, k8(240.0f)));
    v = pick(v, m2, lt(h, k8(180.0f)));
    return pick(v, rising, lt(h, k8(60.0f)));
}

// The hue angles of the group forms from degrees t = H kH: R at
// fma(H, kH, 120), G at t, B at fma(H, kH, -120), and for the falling edge of
// G, fma(-H, kH, 240); R and B fall at 240 - h.
struct Angles {
    float h[3], fall[3];
};
inline Angles groupAngles(float hue, float kH)
{
    const float hr = wrapAbove(fma(hue, kH, 120.0f)), hg = hue * kH, hb = wrapBelow(fma(hue, kH, -120.0f));
    return {{hr, hg, hb}, {240.0f - hr, fnma(hue, kH, 240.0f), 240.0f - hb}};
}
struct AnglesV {
    __m256 h[3], fall[3];
};
inline AnglesV groupAngles(__m256 hue, __m256 kH)
{
    const __m256 hr = wrapAbove(_mm256_fmadd_ps(hue, kH, k8(120.0f)));
    const __m256 hb = wrapBelow(_mm256_fmsub_ps(hue, kH, k8(120.0f)));
    const __m256 k240 = k8(240.0f);
    return {{hr, _mm256_mul_ps(hue, kH), hb},
            {_mm256_sub_ps(k240, hr), _mm256_fnmadd_ps(hue, kH, k240), _mm256_sub_ps(k240, hb)}};
}
// Tail angles, each step rounded: t = H kH, t + 120, t - 120, and 240 - h.
inline Angles tailAngles(float hd)
{
    const float hr = wrapAbove(hd + 120.0f), hb = wrapBelow(hd - 120.0f);
    return {{hr, hd, hb}, {240.0f - hr, 240.0f - hd, 240.0f - hb}};
}

constexpr float kSixtieth = 0.016666668f;

// Group form of the RGB family, 8u, 16u, 16s; to nearest, saturated.
//   Ln = L k; t = Ln (S k); e = t up to 0.5, else fma(S, k, -t);
//   m2 = fma(k, L, e); m1 = fma(Ln, 2, -m2)
//   value = fma(h d, 1/60, m1) rising, fma(d fall, 1/60, m1) falling
template <class Sc>
struct ToRgbGroup {
    using Out = int32_t;
    static constexpr bool kSaturate = true;

    static I3 scalar(float hue, float l, float s)
    {
        const float k = Sc::kInv;
        const float ln = l * k;
        const float t = ln * (s * k);
        const float m2 = fma(k, l, ln <= 0.5f ? t : fms(s, k, t));
        const float m1 = fms(ln, 2.0f, m2);
        const float d = m2 - m1;
        const Angles a = groupAngles(hue, Sc::kHToDeg);
        I3 out;
        for (int c = 0; c < 3; ++c) {
            const float h = a.h[c];
            const float v = segment(h, m1, m2, fma(h * d, kSixtieth, m1), fma(d * a.fall[c], kSixtieth, m1));
            out[c] = cvtNearest(v * Sc::kFull);
        }
        return out;
    }

    static void lanes(const __m256 x[3], __m256i out[3])
    {
        const __m256 k = k8(Sc::kInv);
        const __m256 ln = _mm256_mul_ps(x[1], k);
        const __m256 t = _mm256_mul_ps(ln, _mm256_mul_ps(x[2], k));
        const __m256 e = pick(_mm256_fmsub_ps(x[2], k, t), t, le(ln, k8(0.5f)));
        const __m256 m2 = _mm256_fmadd_ps(k, x[1], e);
        const __m256 m1 = _mm256_fmsub_ps(ln, k8(2.0f), m2);
        const __m256 d = _mm256_sub_ps(m2, m1);
        const AnglesV a = groupAngles(x[0], k8(Sc::kHToDeg));
        const __m256 sixtieth = k8(kSixtieth);
        for (int c = 0; c < 3; ++c) {
            const __m256 h = a.h[c];
            const __m256 v = segment(h, m1, m2, _mm256_fmadd_ps(_mm256_mul_ps(h, d), sixtieth, m1),
                                     _mm256_fmadd_ps(_mm256_mul_ps(d, a.fall[c]), sixtieth, m1));
            out[c] = _mm256_cvtps_epi32(_mm256_mul_ps(v, k8(Sc::kFull)));
        }
    }
};

// Group form of the BGR family: truncated, saturated.
//   Ln = k L; Sn = k S; t = Ln Sn; m2 = fma(L, k, t) up to 0.5, else
//   fma(k, L + S, -t); m1 = fma(Ln, 2, -m2)
//   value = fma(d, 1/60 h, m1) rising, fma(d, 1/60 fall, m1) falling
struct ToBgrGroup {
    using Out = int32_t;
    static constexpr bool kSaturate = true;

    static I3 scalar(float hue, float l, float s)
    {
        const float k = Scale8::kInv;
        const float ln = k * l, sn = k * s;
        const float t = ln * sn;
        const float m2 = ln <= 0.5f ? fma(l, k, t) : fms(k, l + s, t);
        const float m1 = fms(ln, 2.0f, m2);
        const float d = m2 - m1;
        const Angles a = groupAngles(hue, Scale8::kHToDeg);
        I3 out;
        for (int c = 0; c < 3; ++c) {
            const float h = a.h[c];
            const float v = segment(h, m1, m2, fma(d, kSixtieth * h, m1), fma(d, kSixtieth * a.fall[c], m1));
            out[c] = cvtTrunc(v * 255.0f);
        }
        return out;
    }

    static void lanes(const __m256 x[3], __m256i out[3])
    {
        const __m256 k = k8(Scale8::kInv);
        const __m256 ln = _mm256_mul_ps(k, x[1]), sn = _mm256_mul_ps(k, x[2]);
        const __m256 t = _mm256_mul_ps(ln, sn);
        const __m256 m2 = pick(_mm256_fmsub_ps(k, _mm256_add_ps(x[1], x[2]), t), _mm256_fmadd_ps(x[1], k, t),
                               le(ln, k8(0.5f)));
        const __m256 m1 = _mm256_fmsub_ps(ln, k8(2.0f), m2);
        const __m256 d = _mm256_sub_ps(m2, m1);
        const AnglesV a = groupAngles(x[0], k8(Scale8::kHToDeg));
        const __m256 sixtieth = k8(kSixtieth);
        for (int c = 0; c < 3; ++c) {
            const __m256 h = a.h[c];
            const __m256 v = segment(h, m1, m2, _mm256_fmadd_ps(d, _mm256_mul_ps(sixtieth, h), m1),
                                     _mm256_fmadd_ps(d, _mm256_mul_ps(sixtieth, a.fall[c]), m1));
            out[c] = _mm256_cvttps_epi32(_mm256_mul_ps(v, k8(255.0f)));
        }
    }
};

// Tail form of the RGB family, 8u: exact divisions, truncated.
//   Ln = L / 255; Sn = S / 255; hue = (360 H) / 255
//   m2 = fma(Ln, Sn, Ln) or fma(-Ln, Sn, Ln + Sn); m1 = fma(Ln, 2, -m2)
//   value = m1 + (d h) / 60, m1 + (d (240 - h)) / 60
// Gray pixels go through the same arithmetic, so L / 255 * 255 may truncate
// to one below L.
struct ToRgbTail8 {
    using Out = int32_t;
    static constexpr bool kSaturate = false;

    static I3 scalar(float hue, float l, float s)
    {
        const float ln = l / 255.0f, sn = s / 255.0f;
        const float m2 = ln <= 0.5f ? fma(ln, sn, ln) : fnma(ln, sn, ln + sn);
        const float m1 = fms(ln, 2.0f, m2);
        const float d = m2 - m1;
        const Angles a = tailAngles((360.0f * hue) / 255.0f);
        I3 out;
        for (int c = 0; c < 3; ++c) {
            const float h = a.h[c];
            const float v = segment(h, m1, m2, m1 + (d * h) / 60.0f, m1 + (d * a.fall[c]) / 60.0f);
            out[c] = cvtTrunc(255.0f * v);
        }
        return out;
    }
};

// Tail form of 16u, 16s (to nearest) and of the BGR family (truncated,
// saturated): nothing fused; a gray pixel copies its stored L.
//   Ln = L k; Sn = S k; hue = H kH
//   m2 = Ln + Ln Sn or (Ln + Sn) - Ln Sn; m1 = (Ln + Ln) - m2
//   value = (h 0.01666667) d + m1, ((240 - h) 0.01666667) d + m1
template <class Sc, Conv C, bool Sat>
struct ToRgbTail {
    using Out = int32_t;
    static constexpr bool kSaturate = Sat;

    static I3 scalar(float hue, float l, float s)
    {
        if (s == 0.0f) {
            const int32_t v = int32_t(l);
            return {v, v, v};
        }
        const float ln = l * Sc::kInv, sn = s * Sc::kInv;
        const float m2 = ln <= 0.5f ? ln + ln * sn : (ln + sn) - ln * sn;
        const float m1 = (ln + ln) - m2;
        const float d = m2 - m1;
        const Angles a = tailAngles(hue * Sc::kHToDeg);
        I3 out;
        for (int c = 0; c < 3; ++c) {
            const float h = a.h[c];
            const float v = segment(h, m1, m2, (h * 0.01666667f) * d + m1, (a.fall[c] * 0.01666667f) * d + m1);
            out[c] = conv<C>(v * Sc::kFull);
        }
        return out;
    }
};

// 32f group form (4 pixels), values stored as they are.
//   m2 = fma(L, S, L) up to 0.5, else fma(-S, L - 1, L); m1 = fma(L, 2, -m2)
//   angles from 360 H as in the integer groups
//   value = fma(d, h / 60, m1), fma(d, (240 - h) / 60, m1) with 1/60 = 0.016666668
struct ToRgbGroup32f {
    using Out = float;
    static constexpr bool kSaturate = false;

    static F3 scalar(float hue, float l, float s)
    {
        if (s == 0.0f)
            return {l, l, l};
        const float m2 = l <= 0.5f ? fma(l, s, l) : fnma(s, l - 1.0f, l);
        const float m1 = fms(l, 2.0f, m2);
        const float d = m2 - m1;
        const Angles a = groupAngles(hue, 360.0f);
        F3 out;
        for (int c = 0; c < 3; ++c) {
            const float h = a.h[c];
            out[c] = segment(h, m1, m2, fma(d, h * kSixtieth, m1), fma(d, kSixtieth * a.fall[c], m1));
        }
        return out;
    }

    static void lanes(const __m256 x[3], __m256 out[3])
    {
        const __m256 l = x[1], s = x[2];
        const __m256 m2 = pick(_mm256_fnmadd_ps(s, _mm256_sub_ps(l, k8(1.0f)), l), _mm256_fmadd_ps(l, s, l),
                               le(l, k8(0.5f)));
        const __m256 m1 = _mm256_fmsub_ps(l, k8(2.0f), m2);
        const __m256 d = _mm256_sub_ps(m2, m1);
        const AnglesV a = groupAngles(x[0], k8(360.0f));
        const __m256 sixtieth = k8(kSixtieth);
        const __m256 gray = eq(s, _mm256_setzero_ps());
        for (int c = 0; c < 3; ++c) {
            const __m256 h = a.h[c];
            const __m256 v = segment(h, m1, m2, _mm256_fmadd_ps(d, _mm256_mul_ps(h, sixtieth), m1),
                                     _mm256_fmadd_ps(d, _mm256_mul_ps(sixtieth, a.fall[c]), m1));
            out[c] = pick(v, l, gray);
        }
    }
};

// 32f tail form.
//   m2 = fma(L, S, L) or fma(-S, L, L + S); m1 = fma(L, 2, -m2)
//   hue = 360 H, unfused angles; value = m1 + (d h) / 60, m1 + (d (240 - h)) / 60
struct ToRgbTail32f {
    using Out = float;
    static constexpr bool kSaturate = false;

    static F3 scalar(float hue, float l, float s)
    {
        if (s == 0.0f)
            return {l, l, l};
        const float m2 = l <= 0.5f ? fma(l, s, l) : fnma(s, l, l + s);
        const float m1 = fms(l, 2.0f, m2);
        const float d = m2 - m1;
        const Angles a = tailAngles(hue * 360.0f);
        F3 out;
        for (int c = 0; c < 3; ++c) {
            const float h = a.h[c];
            out[c] = segment(h, m1, m2, m1 + (d * h) / 60.0f, m1 + (d * a.fall[c]) / 60.0f);
        }
        return out;
    }
};

// ---------------------------------------------------------------------------
// Kernels of the members.

template <int Ch>
using ToHls8u = Kernel<ToHlsGroup<Scale8, PlainRcp>, ToHlsTail<Scale8, Ch == 3 ? Conv::Trunc : Conv::Nearest>, Ch == 3 ? 8 : 4>;
using ToHls16 = Kernel<ToHlsGroup<Scale16, FusedRcp>, ToHlsTail<Scale16, Conv::Trunc>, 4>;
using ToHls32 = Kernel<ToHls32f, ToHls32f, 1>;
using BgrToHls = Kernel<ToHlsGroupBgr, ToHlsTail<Scale8, Conv::Trunc>, 4>;
using ToRgb8u = Kernel<ToRgbGroup<Scale8>, ToRgbTail8, 8>;
using ToRgb16 = Kernel<ToRgbGroup<Scale16>, ToRgbTail<Scale16, Conv::Nearest, false>, 4>;
using ToRgb32 = Kernel<ToRgbGroup32f, ToRgbTail32f, 4>;
using HlsToBgr = Kernel<ToBgrGroup, ToRgbTail<Scale8, Conv::Trunc, true>, 4>;

// ---------------------------------------------------------------------------
// Drivers.

// The BGR family. A side is interleaved (3 or 4 bytes a pixel) or planar (3
// planes, or 4 with alpha), one step for all its planes.
template <class E, int Ch>
struct PackedSide {
    E* p;
    int step;
    static constexpr bool kAlpha = Ch == 4;
    static constexpr int kPlanes = 0;
    Packed<E, Ch> row(int y) const { return {rowAt(p, step, y)}; }
    E* alpha(int y) const { return rowAt(p, step, y) + 3; }
    static constexpr int kAlphaStride = 4;
};
template <class E, int N>
struct PlaneSide {
    E* const* p;
    int step;
    static constexpr bool kAlpha = N == 4;
    static constexpr int kPlanes = N;
    Planes3<E> row(int y) const { return {{rowAt(p[0], step, y), rowAt(p[1], step, y), rowAt(p[2], step, y)}}; }
    E* alpha(int y) const { return rowAt(p[3], step, y); }
    static constexpr int kAlphaStride = 1;
};

enum class Rows { Parallel, Serial };

// Checks of the planar and mixed members, in order: the two top pointers,
// the source planes, the destination planes, the steps, the size.
template <class K, bool ToHls, Rows R, class In, class Out>
OrvStatus bgrFamily(const void* src, const In& in, const void* dst, const Out& out, RoiSize roi)
{
    if (!src || !dst)
        return orvStatusNullPointer;
    if constexpr (In::kPlanes > 0)
        if (OrvStatus st = checkPlanes(in.p, In::kPlanes))
            return st;
    if constexpr (Out::kPlanes > 0)
        if (OrvStatus st = checkPlanes(out.p, Out::kPlanes))
            return st;
    if (in.step < 1 || out.step < 1)
        return orvStatusBadStep;
    if (roi.width < 1 || roi.height < 1)
        return orvStatusBadSize;
    auto row = [&](int y) {
        hueRow<K, ToHls, !ToHls>(in.row(y), out.row(y), roi.width);
        if constexpr (In::kAlpha && Out::kAlpha)
            AlphaAt{in.alpha(y), In::kAlphaStride, out.alpha(y), Out::kAlphaStride}.copy(roi.width);
    };
    if constexpr (R == Rows::Serial) {
        for (int y = 0; y < roi.height; ++y)
            row(y);
    } else {
        rowsParallelInCallersRounding(roi.height, row);
    }
    return orvStatusOk;
}

}  // namespace
}  // namespace h9

using namespace h9;

#define HLS_FRONT(name, T, K, Ch)                                                      \
    ORV_FRONT(name)(const T* pSrc, int srcStep, T* pDst, int dstStep, RoiSize roiSize) \
    {                                                                                  \
        return interleavedRows<K, T, Ch>(pSrc, srcStep, pDst, dstStep, roiSize);           \
    }

HLS_FRONT(orviRGBToHLS_8u_C3R, Orv8u, ToHls8u<3>, 3)
HLS_FRONT(orviRGBToHLS_8u_AC4R, Orv8u, ToHls8u<4>, 4)
HLS_FRONT(orviRGBToHLS_16u_C3R, Orv16u, ToHls16, 3)
HLS_FRONT(orviRGBToHLS_16u_AC4R, Orv16u, ToHls16, 4)
HLS_FRONT(orviRGBToHLS_16s_C3R, Orv16s, ToHls16, 3)
HLS_FRONT(orviRGBToHLS_16s_AC4R, Orv16s, ToHls16, 4)
HLS_FRONT(orviRGBToHLS_32f_C3R, Orv32f, ToHls32, 3)
HLS_FRONT(orviRGBToHLS_32f_AC4R, Orv32f, ToHls32, 4)
HLS_FRONT(orviHLSToRGB_8u_C3R, Orv8u, ToRgb8u, 3)
HLS_FRONT(orviHLSToRGB_8u_AC4R, Orv8u, ToRgb8u, 4)
HLS_FRONT(orviHLSToRGB_16u_C3R, Orv16u, ToRgb16, 3)
HLS_FRONT(orviHLSToRGB_16u_AC4R, Orv16u, ToRgb16, 4)
HLS_FRONT(orviHLSToRGB_16s_C3R, Orv16s, ToRgb16, 3)
HLS_FRONT(orviHLSToRGB_16s_AC4R, Orv16s, ToRgb16, 4)
HLS_FRONT(orviHLSToRGB_32f_C3R, Orv32f, ToRgb32, 3)
HLS_FRONT(orviHLSToRGB_32f_AC4R, Orv32f, ToRgb32, 4)

// The interleaved BGR member checks the size before the steps.
ORV_FRONT(orviBGRToHLS_8u_AC4R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    if (srcStep < 1 || dstStep < 1)
        return orvStatusBadStep;
    rowsParallelInCallersRounding(roiSize.height, [&](int y) {
        hueRow<BgrToHls, true, false>(Packed<const Orv8u, 4>{rowAt(pSrc, srcStep, y)},
                                      Packed<Orv8u, 4>{rowAt(pDst, dstStep, y)}, roiSize.width);
    });
    return orvStatusOk;
}

using SrcC3 = PackedSide<const Orv8u, 3>;
using SrcC4 = PackedSide<const Orv8u, 4>;
using SrcP3 = PlaneSide<const Orv8u, 3>;
using SrcP4 = PlaneSide<const Orv8u, 4>;
using DstC3 = PackedSide<Orv8u, 3>;
using DstC4 = PackedSide<Orv8u, 4>;
using DstP3 = PlaneSide<Orv8u, 3>;
using DstP4 = PlaneSide<Orv8u, 4>;

#define BGR_FRONT(name, SrcArg, DstArg, K, ToHls, R, InSide, OutSide)                                          \
    ORV_FRONT(name)(SrcArg pSrc, int srcStep, DstArg pDst, int dstStep, RoiSize roiSize)                        \
    {                                                                                                          \
        return bgrFamily<K, ToHls, Rows::R>(pSrc, InSide{pSrc, srcStep}, pDst, OutSide{pDst, dstStep}, roiSize); \
    }

using Planes = const Orv8u* const*;
using OutPlanes = Orv8u**;

BGR_FRONT(orviBGRToHLS_8u_P3R, Planes, OutPlanes, BgrToHls, true, Parallel, SrcP3, DstP3)
BGR_FRONT(orviBGRToHLS_8u_P3C3R, Planes, Orv8u*, BgrToHls, true, Parallel, SrcP3, DstC3)
BGR_FRONT(orviBGRToHLS_8u_C3P3R, const Orv8u*, OutPlanes, BgrToHls, true, Parallel, SrcC3, DstP3)
BGR_FRONT(orviBGRToHLS_8u_AP4R, Planes, OutPlanes, BgrToHls, true, Parallel, SrcP4, DstP4)
BGR_FRONT(orviBGRToHLS_8u_AP4C4R, Planes, Orv8u*, BgrToHls, true, Parallel, SrcP4, DstC4)
BGR_FRONT(orviBGRToHLS_8u_AC4P4R, const Orv8u*, OutPlanes, BgrToHls, true, Parallel, SrcC4, DstP4)
BGR_FRONT(orviHLSToBGR_8u_P3R, Planes, OutPlanes, HlsToBgr, false, Parallel, SrcP3, DstP3)
BGR_FRONT(orviHLSToBGR_8u_P3C3R, Planes, Orv8u*, HlsToBgr, false, Serial, SrcP3, DstC3)
BGR_FRONT(orviHLSToBGR_8u_C3P3R, const Orv8u*, OutPlanes, HlsToBgr, false, Parallel, SrcC3, DstP3)
BGR_FRONT(orviHLSToBGR_8u_AP4R, Planes, OutPlanes, HlsToBgr, false, Parallel, SrcP4, DstP4)
BGR_FRONT(orviHLSToBGR_8u_AP4C4R, Planes, Orv8u*, HlsToBgr, false, Parallel, SrcP4, DstC4)
BGR_FRONT(orviHLSToBGR_8u_AC4P4R, const Orv8u*, OutPlanes, HlsToBgr, false, Parallel, SrcC4, DstP4)
