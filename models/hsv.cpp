// RGB and hue, saturation, value, both ways, for 8u and 16u data in C3 and
// AC4. Single precision throughout; hue is carried in sextants (six units on
// the circle) and stored as a fraction of the circle, V is the largest
// channel in the unit of the input.
//
//   RGB to HSV, 8u    groups of 4 pixels and a tail, both dividing by the
//                     plain approximate reciprocal (rcpps), to nearest
//   RGB to HSV, 16u   one form: exact division, truncation
//   HSV to RGB        groups of 4 pixels with fused steps, a tail with every
//                     step rounded; to nearest
//
// The group and the tail of RGB to HSV 8u break ties between equal channels
// differently: the group takes the first match (R before G before B, except
// that B beats R), the tail lets a later test override an earlier one. The
// stored hue of such a pixel can differ by one between the two forms.
//
// AC4 destinations keep their fourth channel.
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

// The constants of both directions, each kept four times in a row so that a
// lane load reads it whole.
alignas(16) constexpr float kHsv[12][4] = {
    {255.0f, 255.0f, 255.0f, 255.0f},
    {42.5f, 42.5f, 42.5f, 42.5f},                        // 255 / 6: stored H per sextant
    {2.0f, 2.0f, 2.0f, 2.0f},
    {4.0f, 4.0f, 4.0f, 4.0f},
    {65535.0f, 65535.0f, 65535.0f, 65535.0f},
    {10922.5f, 10922.5f, 10922.5f, 10922.5f},            // 65535 / 6
    {1.0f, 1.0f, 1.0f, 1.0f},
    {0.016666668f, 0.016666668f, 0.016666668f, 0.016666668f},
    {1.4117647f, 1.4117647f, 1.4117647f, 1.4117647f},    // 8u: stored H to sextants, times 60
    {0.003921569f, 0.003921569f, 0.003921569f, 0.003921569f},
    {0.005493248f, 0.005493248f, 0.005493248f, 0.005493248f},  // 16u
    {1.525902e-05f, 1.525902e-05f, 1.525902e-05f, 1.525902e-05f},
};
enum HsvConst { kScale8, kPerSextant8, kTwo, kFour, kScale16, kPerSextant16, kOne, kSixtieth, kFactor8, kInv8, kFactor16, kInv16 };
constexpr float hsv(HsvConst c) { return kHsv[c][0]; }

// ---------------------------------------------------------------------------
// RGB to HSV, 8u. V = max, d = V - min; a black or gray pixel has H = S = 0.

// Tail: S = nearest((rcp(V) d) 255); with q = rcp(d), the sextant position
//   R max: (V - B) q - (V - G) q
//   G max: ((V - R) q - (V - B) q) + 2
//   B max: ((V - G) q - (V - R) q) + 4
// tested in this order, a later match overriding; y = 42.5 x, plus 255 when
// negative; H = nearest(y).
struct ToHsvTail8 {
    using Out = int32_t;
    static constexpr bool kSaturate = false;

    static I3 scalar(float r, float g, float b)
    {
        const float v = max3(r, g, b), d = v - min3(r, g, b);
        if (v == 0.0f || d == 0.0f)
            return {0, 0, int32_t(v)};
        const int32_t s = cvtNearest((rcp(v) * d) * 255.0f);
        const float q = rcp(d);
        float x = 0.0f;
        if (v == r)
            x = (v - b) * q - (v - g) * q;
        if (v == g)
            x = ((v - r) * q - (v - b) * q) + 2.0f;
        if (v == b)
            x = ((v - g) * q - (v - r) * q) + 4.0f;
        float y = x * 42.5f;
        if (y < 0.0f)
            y = y + 255.0f;
        return {cvtNearest(y), s, int32_t(v)};
    }
};

// Group: a black or gray pixel (z) computes with V and d raised by 255 so
// that the reciprocals stay finite, and stores H = S = 0.
//   S = nearest(255 (rcp(Vx) dx)); q = rcp(dx); r, g, b = Vx - R, G, B
//   G max (R not): fma(q, r - b, 2)
//   B max (G not chosen): fma(-q, r - g, 4)
//   R max otherwise: fma(b, q, -(q g))
//   y = 42.5 x, or fma(42.5, x, 255) where that is negative; H = nearest(y)
struct ToHsvGroup8 {
    using Out = int32_t;
    static constexpr bool kSaturate = true;

    static I3 scalar(float r, float g, float b)
    {
        const float v = max3(r, g, b), d = v - min3(r, g, b);
        const bool z = v == 0.0f || d == 0.0f;
        const float a = z ? 255.0f : 0.0f;
        const float vx = v + a, dx = d + a;
        const float q = rcp(dx);
        const float rr = vx - r, gg = vx - g, bb = vx - b;
        const bool second = g == vx && r != vx;
        const bool third = b == vx && !second;
        const bool first = r == vx && !second && !third;
        float x;
        if (first)
            x = fms(bb, q, q * gg);
        else if (second)
            x = fma(q, rr - bb, 2.0f);
        else
            x = fnma(q, rr - gg, 4.0f);
        float y = 42.5f * x;
        if (y < 0.0f)
            y = fma(42.5f, x, 255.0f);
        const int32_t s = cvtNearest(255.0f * (rcp(vx) * dx));
        return {z ? 0 : cvtNearest(y), z ? 0 : s, int32_t(v)};
    }

    // The lanes use what holds for byte inputs: V = 0 implies d = 0; the
    // channel differences are small integers, so r - b and r - g equal
    // (Vx - R) - (Vx - B) and (Vx - R) - (Vx - G) exactly; and with R the
    // maximum, the B test alone decides between the first and third case.
    static void lanes(const __m256 x[3], __m256i out[3])
    {
        const __m256 v = max3(x[0], x[1], x[2]), d = _mm256_sub_ps(v, min3(x[0], x[1], x[2]));
        const __m256 zero = _mm256_setzero_ps();
        const __m256 z = eq(d, zero);
        const __m256 a = _mm256_and_ps(z, k8(hsv(kScale8)));
        const __m256 vx = _mm256_add_ps(v, a), dx = _mm256_add_ps(d, a);
        const __m256 q = _mm256_rcp_ps(dx);
        const __m256 isR = eq(x[0], vx), isB = eq(x[2], vx);
        const __m256 second = _mm256_andnot_ps(isR, eq(x[1], vx));
        const __m256 first = _mm256_andnot_ps(isB, isR);
        __m256 h = _mm256_fnmadd_ps(q, _mm256_sub_ps(x[1], x[0]), k8(hsv(kFour)));
        h = pick(h, _mm256_fmadd_ps(q, _mm256_sub_ps(x[2], x[0]), k8(hsv(kTwo))), second);
        h = pick(h, _mm256_fmsub_ps(_mm256_sub_ps(vx, x[2]), q, _mm256_mul_ps(q, _mm256_sub_ps(vx, x[1]))), first);
        const __m256 per = k8(hsv(kPerSextant8));
        const __m256 y0 = _mm256_mul_ps(per, h);
        const __m256 y = pick(y0, _mm256_fmadd_ps(per, h, k8(hsv(kScale8))), lt(y0, zero));
        const __m256 s = _mm256_mul_ps(k8(hsv(kScale8)), _mm256_mul_ps(_mm256_rcp_ps(vx), dx));
        const __m256i zi = _mm256_castps_si256(z);
        out[0] = _mm256_andnot_si256(zi, _mm256_cvtps_epi32(y));
        out[1] = _mm256_andnot_si256(zi, _mm256_cvtps_epi32(s));
        out[2] = _mm256_cvttps_epi32(v);
    }
};

// RGB to HSV, 16u, every pixel: exact division, truncation.
//   S = trunc(fma(d / V, 65535, 0.5)); i = 1 / d; cr, cg, cb = (V - R, G, B) i
//   x = cb - cg (R max), (cr + 2) - cb (G max), (4 - cr) + cg (B max), a
//   later match overriding; x + 2^-23 below 0 wraps by 6;
//   H = trunc(0.5 + (65535 x) / 6)
struct ToHsv16 {
    using Out = int32_t;
    static constexpr bool kSaturate = false;

    static I3 scalar(float r, float g, float b)
    {
        const float v = max3(r, g, b), d = v - min3(r, g, b);
        if (v == 0.0f || d == 0.0f)
            return {0, 0, int32_t(v)};
        const int32_t s = cvtTrunc(fma(d / v, 65535.0f, 0.5f));
        const float i = 1.0f / d;
        const float cr = (v - r) * i, cg = (v - g) * i, cb = (v - b) * i;
        float x = 0.0f;
        if (r == v)
            x = cb - cg;
        if (g == v)
            x = (cr + 2.0f) - cb;
        if (b == v)
            x = (4.0f - cr) + cg;
        if (x + 1.1920929e-7f < 0.0f)
            x = x + 6.0f;
        return {cvtTrunc(0.5f + (65535.0f * x) / 6.0f), s, int32_t(v)};
    }
};

// ---------------------------------------------------------------------------
// HSV to RGB. H at full scale counts as 0. hd = H / 60 (times 0.016666668),
// x = hd factor (stored H to sextants), n = trunc(x), f its fraction;
// Sn = S / scale, w = V Sn, p = V - w, q = V - f w, t = p + f w; the sextant
// n picks R, G, B:
//   0: V t p   1: q V p   2: p V t   3: p q V   4: t p V   5: V p q
inline std::array<float, 3> bySextant(int32_t n, float v, float p, float q, float t)
{
    switch (n) {
    case 0: return {v, t, p};
    case 1: return {q, v, p};
    case 2: return {p, v, t};
    case 3: return {p, q, v};
    case 4: return {t, p, v};
    default: return {v, p, q};
    }
}
// The rows of the table are rotations: an even sextant 2k gives (V, t, p)
// rotated right by k, an odd one 2k + 1 gives (q, V, p) rotated by k. The
// lanes pick by the bits of n (blendv reads the sign bit); n stays in 0..5.
inline void bySextant(__m256i n, __m256 v, __m256 p, __m256 q, __m256 t, __m256 out[3])
{
    auto bit = [&](int b) { return _mm256_castsi256_ps(_mm256_slli_epi32(n, 31 - b)); };
    const __m256 odd = bit(0), k1 = bit(1), k2 = bit(2);
    const __m256 a = _mm256_blendv_ps(v, q, odd), b = _mm256_blendv_ps(t, v, odd);
    out[0] = _mm256_blendv_ps(_mm256_blendv_ps(a, p, k1), b, k2);
    out[1] = _mm256_blendv_ps(_mm256_blendv_ps(b, a, k1), p, k2);
    out[2] = _mm256_blendv_ps(_mm256_blendv_ps(p, b, k1), a, k2);
}

struct Scale8 {
    static constexpr float kFull = 255.0f;
    static constexpr HsvConst kFactor = kFactor8, kInv = kInv8;
    static constexpr bool kGroupSaturates = true;
};
struct Scale16 {
    static constexpr float kFull = 65535.0f;
    static constexpr HsvConst kFactor = kFactor16, kInv = kInv16;
    static constexpr bool kGroupSaturates = false;  // low 16 bits
};

// Group: f = fma(hd, factor, -n); p = fma(-V, Sn, V); q = fma(-f, w, V);
// t = fma(f, w, p). 8u saturates, 16u stores the low bits.
template <class Sc>
struct ToRgbGroup {
    using Out = int32_t;
    static constexpr bool kSaturate = Sc::kGroupSaturates;

    static I3 scalar(float h, float s, float v)
    {
        if (h == Sc::kFull)
            h = 0.0f;
        const float hd = h * hsv(kSixtieth);
        const int32_t n = cvtTrunc(hd * hsv(Sc::kFactor));
        const float f = fms(hd, hsv(Sc::kFactor), float(n));
        const float sn = s * hsv(Sc::kInv);
        const float w = v * sn;
        const float p = fnma(v, sn, v), q = fnma(f, w, v), t = fma(f, w, p);
        const std::array<float, 3> c = bySextant(n, v, p, q, t);
        return {cvtNearest(c[0]), cvtNearest(c[1]), cvtNearest(c[2])};
    }

    static void lanes(const __m256 x[3], __m256i out[3])
    {
        const __m256 h = _mm256_andnot_ps(eq(x[0], k8(Sc::kFull)), x[0]);
        const __m256 s = x[1], v = x[2];
        const __m256 factor = k8(hsv(Sc::kFactor));
        const __m256 hd = _mm256_mul_ps(h, k8(hsv(kSixtieth)));
        const __m256i n = _mm256_cvttps_epi32(_mm256_mul_ps(hd, factor));
        const __m256 f = _mm256_fmsub_ps(hd, factor, _mm256_cvtepi32_ps(n));
        const __m256 sn = _mm256_mul_ps(s, k8(hsv(Sc::kInv)));
        const __m256 w = _mm256_mul_ps(v, sn);
        const __m256 p = _mm256_fnmadd_ps(v, sn, v), q = _mm256_fnmadd_ps(f, w, v), t = _mm256_fmadd_ps(f, w, p);
        __m256 c[3];
        bySextant(n, v, p, q, t, c);
        for (int k = 0; k < 3; ++k)
            out[k] = _mm256_cvtps_epi32(c[k]);
    }
};

// Tail: f = x - n and every step of p, q, t rounded by itself; a pixel with
// S = 0 stores V as it is.
template <class Sc>
struct ToRgbTail {
    using Out = int32_t;
    static constexpr bool kSaturate = false;

    static I3 scalar(float h, float s, float v)
    {
        if (h == Sc::kFull)
            h = 0.0f;
        const float hd = h * hsv(kSixtieth);
        const float x = hd * hsv(Sc::kFactor);
        const int32_t n = cvtTrunc(x);
        const float f = x - float(n);
        if (s == 0.0f)
            return {int32_t(v), int32_t(v), int32_t(v)};
        const float sn = s * hsv(Sc::kInv);
        const float w = v * sn;
        const float p = v - w;
        const float fw = f * w;
        const float q = v - fw, t = p + fw;
        const std::array<float, 3> c = bySextant(n, v, p, q, t);
        return {cvtNearest(c[0]), cvtNearest(c[1]), cvtNearest(c[2])};
    }
};

using ToHsv8u = Kernel<ToHsvGroup8, ToHsvTail8, 4>;
using ToHsv16u = Kernel<ToHsv16, ToHsv16, 1>;
template <class Sc>
using ToRgb = Kernel<ToRgbGroup<Sc>, ToRgbTail<Sc>, 4>;

}  // namespace
}  // namespace h9

using namespace h9;

#define HSV_FRONT(name, T, K, Ch)                                                      \
    ORV_FRONT(name)(const T* pSrc, int srcStep, T* pDst, int dstStep, RoiSize roiSize) \
    {                                                                                  \
        return interleavedRows<K, T, Ch>(pSrc, srcStep, pDst, dstStep, roiSize);            \
    }

HSV_FRONT(orviRGBToHSV_8u_C3R, Orv8u, ToHsv8u, 3)
HSV_FRONT(orviRGBToHSV_8u_AC4R, Orv8u, ToHsv8u, 4)
HSV_FRONT(orviRGBToHSV_16u_C3R, Orv16u, ToHsv16u, 3)
HSV_FRONT(orviRGBToHSV_16u_AC4R, Orv16u, ToHsv16u, 4)
HSV_FRONT(orviHSVToRGB_8u_C3R, Orv8u, ToRgb<Scale8>, 3)
HSV_FRONT(orviHSVToRGB_8u_AC4R, Orv8u, ToRgb<Scale8>, 4)
HSV_FRONT(orviHSVToRGB_16u_C3R, Orv16u, ToRgb<Scale16>, 3)
HSV_FRONT(orviHSVToRGB_16u_AC4R, Orv16u, ToRgb<Scale16>, 4)
