// RGB (or BGR) and CIE L*u*v*, both directions, for 8u, 16u, 16s and 32f
// data in C3 and AC4.
//
// Forward: X, Y, Z by the D65 matrix, L from the cube root of Y (table and
// series, linear below Y = 0.008856), u and v from the chromaticities
// 4X / D and 9Y / D, D = X + 15 Y + 3 Z, against those of the white point,
// 1 / D by the approximate reciprocal and one Newton step.
// Reverse: Y from L, X and Z from u and v, the XYZ to RGB matrix.
//
// Stored scales: 32f as is (L 0..100, u about -134..220, v about -140..122);
// 8u L * 2.55, (u + 134) * 255 / 354, (v + 140) * 255 / 262; 16u the same
// with 65535 (v with + 0.5); 16s as 16u lowered by 32768.
//
// As everywhere, whole groups of pixels from the row start (8 in C3 8u and
// 32f, 4 in AC4 and the 16-bit types) take the group form, fused, with
// approximate reciprocals; the rest of the row the tail form, written step by
// step with exact divisions in the reverse direction. The two differ in the
// last bits and, for dark pixels of the reverse direction, by more: the
// group form takes the cube also below L = 8, the tail the linear segment.
//
// AC4: the fourth channel of the destination is never written.
#include <cstdint>
#include <type_traits>

#include "frame/checks.h"
#include "frame/driver.h"
#include "frame/fronts.h"
#include "models/ciematrix.h"
#include "models/cuberoot.h"

namespace h9 {
namespace {

using namespace lanes;
using namespace cuberoot;

template <class T>
constexpr bool kWide = sizeof(T) == 2;  // 16u and 16s

// Full scale of an integer type (the reverse direction's F).
template <class T>
constexpr float kFull = std::is_same_v<T, uint8_t> ? 255.0f : 65535.0f;

// Element values as the arithmetic takes them: 16s raised to 0..65535.
template <class T, class F>
inline F raised(F x)
{
    if constexpr (std::is_same_v<T, int16_t>)
        return x + F(32768.0f);
    else
        return x;
}

// ===========================================================================
// RGB to LUV.

constexpr float kUn = 0.197839f;  // u' and v' of the white point
constexpr float kVn = 0.468342f;
constexpr float kToUnit16 = 1.5259022e-05f;  // 1 / 65535

// Group form, the steps that need no table: Y, and u' - u'n, v' - v'n from
// X, Y, Z by the matrix and D = X + 15 Y + 3 Z. D is raised by 3 where it is
// not above 0, or (RaiseZeroOnly) where it is 0, before its reciprocal.
template <class T, bool RaiseZeroOnly, class F>
inline void luvChroma(F r, F g, F b, F& Y, F& du, F& dv)
{
    if constexpr (std::is_same_v<T, uint8_t>) {
        r = r * F(0.003921569f);
        g = g * F(0.003921569f);
        b = b * F(0.003921569f);
    }
    r = raised<T>(r);
    g = raised<T>(g);
    b = raised<T>(b);
    const F X = dotFused(kToXyz.c[0], r, g, b);
    Y = dotFused(kToXyz.c[1], r, g, b);
    const F Z = dotFused(kToXyz.c[2], r, g, b);
    const F D = fmadd(Y, F(15.0f), fmadd(Z, F(3.0f), X));
    const F Dr = select(RaiseZeroOnly ? eq(D, F(0.0f)) : le(D, F(0.0f)), D + F(3.0f), D);
    const F r1 = rcpRefined(Dr);
    du = fmsub(r1, X * F(4.0f), F(kUn));
    dv = fmsub(Y * F(9.0f), r1, F(kVn));
}

// The table of the type and the index of Y's pair in it.
template <class T>
inline const powluv::Pair* luvTable()
{
    return std::is_same_v<T, uint8_t> ? powluv::kShort : powluv::kLong.data();
}
template <class T, class F>
inline IntOf<F> luvIndex(F Y)
{
    if constexpr (kWide<T>)
        return clampI(shr(truncI(Y), 9), 0, powluv::kLongSize - 1);
    else
        return index01(Y, std::is_same_v<T, uint8_t> ? powluv::kShortSize : powluv::kLongSize);
}

// Y on the scale of the table: 0..1.
template <class T, class F>
inline F luvUnitY(F Y)
{
    return kWide<T> ? Y * F(kToUnit16) : Y;
}

// The offset of Y from the point of its pair (c, rb) in the table.
template <class T, class F>
inline F luvOffset(F Y, F c, F rb)
{
    return offsetFused(luvUnitY<T>(Y), c, rb);
}

// Group form, the rest: L from Y, the c of its pair and the offset d,
// computed for every pixel, linear or not; u and v.
template <class T, class F>
inline void luvLightness(F Y, F c, F d, F du, F dv, F& L, F& u, F& v)
{
    const F Yn = luvUnitY<T>(Y);
    F root;
    if constexpr (kWide<T>)
        root = c * series6(d);
    else if constexpr (std::is_same_v<T, uint8_t>)
        root = rootHorner4(d, c, powluv::k5);
    else
        root = c * series8(d);
    const auto linear = kWide<T> ? le(Y, F(580.37799f)) : le(Y, F(0.008856f));
    L = select(linear, Yn * F(903.3f), fmsub(root, F(116.0f), F(16.0f)));
    u = (L * F(13.0f)) * du;
    v = (L * F(13.0f)) * dv;
}

// Group form: L, u, v of one pixel or eight.
template <class T, bool RaiseZeroOnly, class F>
inline void luvGroup(F r, F g, F b, F& L, F& u, F& v)
{
    F Y, du, dv, c, rb;
    luvChroma<T, RaiseZeroOnly>(r, g, b, Y, du, dv);
    lookup(luvTable<T>(), luvIndex<T>(Y), c, rb);
    luvLightness<T>(Y, c, luvOffset<T>(Y, c, rb), du, dv, L, u, v);
}

// Stored values of the group form; integers are saturated by the store.
template <class T, class F>
inline void luvGroupOut(F L, F u, F v, IntOf<F> (&o)[3])
{
    if constexpr (std::is_same_v<T, uint8_t>) {
        o[0] = nearestI(L * F(2.55f));
        o[1] = nearestI((u + F(134.0f)) * F(0.720339f));
        o[2] = nearestI((v + F(140.0f)) * F(0.97328246f));
    } else {
        o[0] = truncI(L * F(655.35f));
        o[1] = nearestI((u + F(134.0f)) * F(185.12712f));
        o[2] = nearestI(fmadd(v + F(140.0f), F(250.13359f), F(0.5f)));
    }
}

// Tail form of one pixel, step by step, nothing fused.
template <class T>
inline void luvTail(float r, float g, float b, T* d)
{
    if constexpr (std::is_same_v<T, uint8_t>) {
        r = r * 0.003921569f;
        g = g * 0.003921569f;
        b = b * 0.003921569f;
    }
    r = raised<T>(r);
    g = raised<T>(g);
    b = raised<T>(b);
    const float X = dotPlain(kToXyz.c[0], r, g, b);
    const float Y = dotPlain(kToXyz.c[1], r, g, b);
    const float Z = dotPlain(kToXyz.c[2], r, g, b);
    const float D = (X + 15.0f * Y) + 3.0f * Z;

    float L;
    const float Yn = kWide<T> ? Y * kToUnit16 : Y;
    if (kWide<T> ? Y <= 580.37799f : Y <= 0.008856f) {
        L = 903.3f * Yn;
    } else {
        powluv::Pair p;
        float s;
        if constexpr (kWide<T>) {
            // 16u truncates Y, 16s rounds it in the current mode.
            const int32_t y = std::is_same_v<T, int16_t> ? nearestI(Y) : truncI(Y);
            p = powluv::kLong[clampI(y >> 9, 0, powluv::kLongSize - 1)];
            s = seriesTerms<6>(offsetPlain(Yn, p.c, p.b));
        } else if constexpr (std::is_same_v<T, uint8_t>) {
            p = powluv::kShort[index01(Y, powluv::kShortSize)];
            s = seriesTerms<4>(offsetPlain(Yn, p.c, p.b), powluv::k5);
        } else {
            p = powluv::kLong[index01(Y, powluv::kLongSize)];
            s = seriesTerms<8>(offsetPlain(Yn, p.c, p.b));
        }
        L = (p.c * s) * 116.0f - 16.0f;
    }

    if constexpr (kWide<T>) {
        if (D == 0.0f) {  // black: u and v go out as 0 on the integer scale
            const int32_t Lq = std::is_same_v<T, int16_t> ? nearestI(L * 655.35f) : truncI(L * 655.35f);
            d[0] = narrowTo(d, clampI(Lq, 0, 65535));
            d[1] = d[2] = narrowTo(d, 0);
            return;
        }
    }
    const float rr = rcp(D);
    const float r1 = (rr + rr) - ((D * rr) * rr);
    float up = 0.0f, vp = 0.0f;
    if (kWide<T> || Z != 0.0f) {
        up = (4.0f * X) * r1;
        vp = (9.0f * Y) * r1;
    }
    const float u = (13.0f * L) * (up - kUn);
    const float v = (13.0f * L) * (vp - kVn);

    if constexpr (std::is_same_v<T, float>) {
        d[0] = L;
        d[1] = u;
        d[2] = v;
    } else if constexpr (std::is_same_v<T, uint8_t>) {
        // The tail keeps the low byte; stored values outside 0..255 do not
        // arise from 8-bit sources.
        d[0] = uint8_t(nearestI(L * 2.55f));
        d[1] = uint8_t(nearestI((u + 134.0f) * 0.720339f));
        d[2] = uint8_t(nearestI((v + 140.0f) * 0.97328246f));
    } else {
        const float q[3] = {L * 655.35f, (u + 134.0f) * 185.12712f, (v + 140.0f) * 250.13359f + 0.5f};
        for (int k = 0; k < 3; ++k)
            d[k] = narrowTo(d, clampI(std::is_same_v<T, int16_t> ? nearestI(q[k]) : truncI(q[k]), 0, 65535));
    }
}

template <class T, int Ch, bool Bgr>
struct RgbToLuv {
    using Src = T;
    using Dst = T;
    static constexpr int kSrcPix = Ch;
    static constexpr int kDstPix = Ch;
    // 8u AC4 has no group form.
    static constexpr int kGroup = (std::is_same_v<T, uint8_t> && Ch == 4) ? 0 : (kWide<T> || Ch == 4) ? 4 : 8;
    static constexpr bool kRaiseZeroOnly = kWide<T> || Ch == 4;
    static constexpr int kR = Bgr ? 2 : 0;
    static constexpr int kB = Bgr ? 0 : 2;

    Span span(int width, const Dst*) const { return {0, kGroup ? width / kGroup * kGroup : 0}; }

    void block(const Src* s, Dst* d) const
    {
        float in[3], L, u, v;
        loadPixel<T, Ch>(s, in);
        luvGroup<T, kRaiseZeroOnly>(in[kR], in[1], in[kB], L, u, v);
        if constexpr (std::is_same_v<T, float>) {
            storePixel(d, {L, u, v});
        } else {
            int32_t o[3];
            luvGroupOut<T>(L, u, v, o);
            storePixel(d, o);
        }
    }

    void tail(const Src* s, Dst* d) const
    {
        float in[3];
        loadPixel<T, Ch>(s, in);
        luvTail<T>(in[kR], in[1], in[kB], d);
    }

    // Passes over runs of 64 pixels (see inRuns): Y, the chromaticity
    // offsets and the table index first; then, one group ahead of the rest,
    // the lookup and the offset from the table's point; then the series, L,
    // u, v and the stores. The table loads of one group thus go on while the
    // series of the one before fills the multipliers. The arithmetic is that
    // of block(). Flattened: left to itself the compiler calls the group
    // arithmetic and the table lookup out of line, passing every register
    // through memory.
    [[gnu::flatten]] void vector(const Src* s, Dst* d, int n) const
    {
        constexpr int kRun = 64;
        alignas(32) float y[kRun / 8][3][8];  // Y, u' - u'n, v' - v'n
        alignas(32) uint64_t at[kRun / 8][4];
        alignas(32) float cd[kRun / 8][2][8];  // c and the offset
        auto first = [&](const Src* s8, int g) {
            F8 in[3], Y, du, dv;
            loadPixels8<T, Ch>(s8, in);
            luvChroma<T, kRaiseZeroOnly>(in[kR], in[1], in[kB], Y, du, dv);
            _mm256_store_ps(y[g][0], Y.v);
            _mm256_store_ps(y[g][1], du.v);
            _mm256_store_ps(y[g][2], dv.v);
            _mm256_store_si256(reinterpret_cast<__m256i*>(at[g]), luvIndex<T>(Y).v);
        };
        auto middle = [&](int g) {
            F8 c, rb;
            lookupAt(luvTable<T>(), at[g], c, rb);
            _mm256_store_ps(cd[g][0], c.v);
            _mm256_store_ps(cd[g][1], luvOffset<T>(F8(_mm256_load_ps(y[g][0])), c, rb).v);
        };
        auto second = [&](int g, Dst* d8) {
            F8 L, u, v;
            luvLightness<T>(F8(_mm256_load_ps(y[g][0])), F8(_mm256_load_ps(cd[g][0])), F8(_mm256_load_ps(cd[g][1])),
                            F8(_mm256_load_ps(y[g][1])), F8(_mm256_load_ps(y[g][2])), L, u, v);
            if constexpr (std::is_same_v<T, float>) {
                storePixels8<Ch>(d8, {L, u, v});
            } else {
                I8 o[3];
                luvGroupOut<T>(L, u, v, o);
                storePixels8<T, Ch>(d8, o);
            }
        };
        inRuns<kRun, Ch, Ch>(s, d, n, first, middle, second);
    }
};

// ===========================================================================
// LUV to RGB.

constexpr float kLinearL = 7.9996247f;  // L where the linear segment ends
constexpr float kBlackL = 9e-05f;

// The XYZ to RGB rows applied fused, c2 Y first; `Y` is on the scale of X, Z.
template <class F>
inline void rgbFused(F X, F Y, F Z, F (&o)[3])
{
    for (int k = 0; k < 3; ++k)
        o[k] = dotFused(kToRgb.c[k], X, Y, Z);
}

// Group form of the 8-pixel members (8u and 32f C3), on the scale 0..1. Only
// L of (nearly) 0 takes the linear segment. 32f results are not clamped.
// In two halves, so that the vector path can run them as separate passes:
// the first takes L, u, v to Y, the chromaticity term a and the reciprocal q
// of the term b (b moved off zero first), the second X, Z and the matrix.
template <class T, class F>
inline void rgbEightFirst(F L, F U, F V, F& a, F& q, F& Y)
{
    constexpr bool k8u = std::is_same_v<T, uint8_t>;
    const auto z = le(L, F(kBlackL));
    const F L1 = select(z, L + F(kBlackL), L);
    F u, v, Lp, P;
    if constexpr (k8u) {
        u = fmsub(U, F(1.3882353f), F(134.0f));
        v = fmsub(V, F(1.027451f), F(140.0f));
        Lp = F(0.39215687f) * L1;
        P = fmadd(L1, F(0.39215687f), F(16.0f)) * F(0.00862069f);
    } else {
        u = U;
        v = V;
        Lp = L1;
        P = (L1 + F(16.0f)) * F(0.00862069f);
    }
    const F r = k8u ? rcp(F(13.0f) * Lp) : rcpRefined(F(13.0f) * Lp);
    a = fmadd(u, r, F(kUn));
    F b = fmadd(v, r, F(kVn));
    Y = select(z, Lp * F(0.001107052f), (P * P) * P);
    b = select(le(absps(b), F(1.1920929e-05f)), b + F(9e-05f), b);
    q = k8u ? rcp(b) : rcpRefined(b);
}

template <class T, class F>
inline void rgbEightSecond(F a, F q, F Y, F (&o)[3])
{
    constexpr bool k8u = std::is_same_v<T, uint8_t>;
    const F X = a * ((q * Y) * F(2.25f));
    const F Z = fnmadd(X, F(0.33333334f), fmsub(q, F(3.0f), F(5.0f)) * Y);
    rgbFused(X, Y, Z, o);
    if constexpr (k8u)
        for (auto& c : o)
            c = c * F(255.0f);
}

template <class T, class F>
inline void rgbGroupEight(F L, F U, F V, F (&o)[3])
{
    F a, q, Y;
    rgbEightFirst<T>(L, U, V, a, q, Y);
    rgbEightSecond<T>(a, q, Y, o);
}

// Group form of the 4-pixel members (8u AC4, 16u, 16s), on the full scale.
template <class T, class F>
inline void rgbGroupFour(F L, F U, F V, F (&o)[3])
{
    constexpr bool k8u = std::is_same_v<T, uint8_t>;
    L = raised<T>(L);
    U = raised<T>(U);
    V = raised<T>(V);
    F Lp, P, u, v;
    if constexpr (k8u) {
        const F e = select(le(L * F(0.39215687f), F(kBlackL)), F(kBlackL), F(0.0f));
        Lp = fmadd(L, F(0.39215687f), e);
        P = (Lp + F(16.0f)) * F(0.00862069f);
        u = fmsub(U, F(1.3882353f), F(134.0f));
        v = fmsub(V, F(1.027451f), F(140.0f));
    } else {
        const F L1 = select(le(L, F(kBlackL)), L + F(kBlackL), L);
        Lp = L1 * F(0.0015259022f);
        P = fmadd(L1, F(0.0015259022f), F(16.0f)) * F(0.00862069f);
        u = fmsub(U, F(0.0054016937f), F(134.0f));
        v = fmsub(V, F(0.0039978637f), F(140.0f));
    }
    const F r = k8u ? rcp(F(13.0f) * Lp) : rcpRefined(F(13.0f) * Lp);
    const F a = fmadd(u, r, F(kUn));
    F b = fmadd(v, r, F(kVn));
    const F Ys = select(le(Lp, F(kLinearL)), Lp * F(0.001107052f), (P * P) * P) * F(kFull<T>);
    b = select(le(absps(b), F(1.1920929e-05f)), b + F(9e-05f), b);
    const F q = k8u ? rcp(b) : rcpRefined(b);
    const F X = a * ((q * Ys) * F(2.25f));
    const F Z = fnmadd(X, F(0.33333334f), fmsub(q, F(3.0f), F(5.0f)) * Ys);
    rgbFused(X, Ys, Z, o);
}

// Tail form of the integer types, with exact divisions; R and G rounded by
// + 0.5 and truncation, B in double precision.
template <class T>
inline void rgbTailInt(float L, float U, float V, int32_t (&o)[3])
{
    constexpr float F = kFull<T>;
    L = raised<T>(L);
    U = raised<T>(U);
    V = raised<T>(V);
    const float Lp = (100.0f * L) / F;
    const float u = (U * 354.0f) / F - 134.0f;
    const float v = (V * 262.0f) / F - 140.0f;
    if (Lp < kBlackL) {
        o[0] = o[1] = o[2] = 0;
        return;
    }
    float Y;
    if (Lp >= kLinearL) {
        const float t = (Lp + 16.0f) / 116.0f;
        Y = (t * t) * t;
    } else {
        Y = Lp / 903.3f;
    }
    const float Ys = Y * F;
    const float a = u / (13.0f * Lp) + kUn;
    float b = v / (13.0f * Lp) + kVn;
    if (!std::is_same_v<T, uint8_t> && std::fabs(b) < 1.1920929e-07f)
        b = b + 9e-05f;
    const float t = Ys / b;
    const float X = (a * 2.25f) * t;
    const float Z = std::is_same_v<T, uint8_t> ? fnmadd(Ys, 5.0f, fmsub(t, 3.0f, X / 3.0f))
                                               : fmsub(3.0f, t, fmadd(Ys, 5.0f, X / 3.0f));
    o[0] = truncI(fnmadd(Z, 0.498535f, fnmadd(Ys, 1.53715f, fmadd(X, 3.240479f, 0.5f))));
    o[1] = truncI(fmadd(Z, 0.041556f, fmadd(Ys, 1.875991f, fmadd(X, -0.969256f, 0.5f))));
    const float q = fmsub(X, 0.055648f, Ys * 0.204043f);
    o[2] = cvtTrunc(std::fma(double(Z), 1.057311, double(q) + 0.5));
    for (auto& c : o)
        c = clampI(c, 0, int32_t(F));
}

// Tail form of 32f (and every pixel of 32f AC4), clamped to 0..1 with NaN
// passing through.
inline void rgbTail32f(float L, float u, float v, float (&o)[3])
{
    if (L < kBlackL) {
        o[0] = o[1] = o[2] = 0.0f;
        return;
    }
    float Y;
    if (L >= kLinearL) {
        const float t = (L + 16.0f) / 116.0f;
        Y = (t * t) * t;
    } else {
        Y = L / 903.3f;
    }
    const float a = u / (13.0f * L) + kUn;
    float b = v / (13.0f * L) + kVn;
    if (std::fabs(b) < 1.1920929e-07f)
        b = b + 9e-05f;
    const float t = Y / b;
    const float X = (a * 2.25f) * t;
    const float Z = fmsub(3.0f, t, fmadd(Y, 5.0f, X / 3.0f));
    o[0] = fnmadd(Z, 0.498535f, fmsub(X, 3.240479f, Y * 1.53715f));
    o[1] = fmadd(Z, 0.041556f, fmadd(Y, 1.875991f, X * -0.969256f));
    o[2] = fmadd(Z, 1.057311f, fmsub(X, 0.055648f, Y * 0.204043f));
    for (auto& c : o)
        c = c < 0.0f ? 0.0f : (1.0f < c ? 1.0f : c);
}

template <class T, int Ch, bool Bgr>
struct LuvToRgb {
    using Src = T;
    using Dst = T;
    static constexpr int kSrcPix = Ch;
    static constexpr int kDstPix = Ch;
    static constexpr bool kEight = Ch == 3 && !kWide<T>;                      // 8u, 32f C3
    static constexpr int kGroup = (std::is_same_v<T, float> && Ch == 4) ? 0  // 32f AC4: one form
                                  : kEight                              ? 8
                                                                        : 4;
    static constexpr int kR = Bgr ? 2 : 0;
    static constexpr int kB = Bgr ? 0 : 2;

    Span span(int width, const Dst*) const { return {0, kGroup ? width / kGroup * kGroup : 0}; }

    template <class F>
    static void group(const F (&in)[3], F (&o)[3])
    {
        if constexpr (kEight)
            rgbGroupEight<T>(in[0], in[1], in[2], o);
        else
            rgbGroupFour<T>(in[0], in[1], in[2], o);
    }

    template <class F>
    static void ordered(const F (&o)[3], F (&out)[3])
    {
        out[kR] = o[0];
        out[1] = o[1];
        out[kB] = o[2];
    }

    void block(const Src* s, Dst* d) const
    {
        float in[3], o[3], out[3];
        loadPixel<T, Ch>(s, in);
        group(in, o);
        ordered(o, out);
        if constexpr (std::is_same_v<T, float>) {
            storePixel(d, out);
        } else {
            // 8-pixel 8u rounds in the current mode, the others truncate.
            const int32_t q[3] = {kEight ? nearestI(out[0]) : truncI(out[0]), kEight ? nearestI(out[1]) : truncI(out[1]),
                                  kEight ? nearestI(out[2]) : truncI(out[2])};
            storePixel(d, q);
        }
    }

    void tail(const Src* s, Dst* d) const
    {
        float in[3];
        loadPixel<T, Ch>(s, in);
        if constexpr (std::is_same_v<T, float>) {
            float o[3], out[3];
            rgbTail32f(in[0], in[1], in[2], o);
            ordered(o, out);
            storePixel(d, out);
        } else {
            int32_t o[3];
            rgbTailInt<T>(in[0], in[1], in[2], o);
            const int32_t q[3] = {o[Bgr ? 2 : 0], o[1], o[Bgr ? 0 : 2]};
            storePixel(d, q);
        }
    }

    template <class F>
    static void store8(const F (&o)[3], Dst* d8)
    {
        F out[3];
        ordered(o, out);
        if constexpr (std::is_same_v<T, float>) {
            storePixels8<Ch>(d8, out);
        } else {
            I8 q[3];
            for (int k = 0; k < 3; ++k)
                q[k] = kEight ? nearestI(out[k]) : truncI(out[k]);
            storePixels8<T, Ch>(d8, q);
        }
    }

    // Flattened: left to itself the compiler calls the group arithmetic and
    // the table lookup out of line, passing every register through memory.
    // The 8-pixel members go over runs of 64 pixels (see inRuns): a, q and Y
    // of the whole run first, then X, Z, the matrix and the stores. One pass
    // from load to store chains two reciprocals with their Newton steps, the
    // cube and the matrix, too long for the processor to keep more than about
    // two groups in flight; the halves overlap across groups. The arithmetic
    // is that of block().
    [[gnu::flatten]] void vector(const Src* s, Dst* d, int n) const
    {
        if constexpr (kEight) {
            constexpr int kRun = 64;
            alignas(32) float t[kRun / 8][3][8];  // a, q, Y
            auto first = [&](const Src* s8, int g) {
                F8 in[3], a, q, Y;
                loadPixels8<T, Ch>(s8, in);
                rgbEightFirst<T>(in[0], in[1], in[2], a, q, Y);
                _mm256_store_ps(t[g][0], a.v);
                _mm256_store_ps(t[g][1], q.v);
                _mm256_store_ps(t[g][2], Y.v);
            };
            auto second = [&](int g, Dst* d8) {
                F8 o[3];
                rgbEightSecond<T>(F8(_mm256_load_ps(t[g][0])), F8(_mm256_load_ps(t[g][1])),
                                  F8(_mm256_load_ps(t[g][2])), o);
                store8(o, d8);
            };
            inRuns<kRun, Ch, Ch>(s, d, n, first, second);
        } else {
            inEights<Ch, Ch>(s, d, n, [](const Src* s8, Dst* d8) {
                F8 in[3], o[3];
                loadPixels8<T, Ch>(s8, in);
                group(in, o);
                store8(o, d8);
            });
        }
    }
};

// ===========================================================================
// Drivers. `Shift` rounds the byte steps down to whole elements first (by 1
// for 16-bit data, 2 for floats); 0 takes them as they are.

template <int Shift>
inline int wholeSteps(int step)
{
    return (step >> Shift) << Shift;
}

template <class K, int Shift>
OrvStatus serialLuv(const typename K::Src* src, int srcStep, typename K::Dst* dst, int dstStep, RoiSize roi)
{
    if (OrvStatus st = checkRect(src, dst, roi))
        return st;
    rowsSerial(K{}, src, wholeSteps<Shift>(srcStep), dst, wholeSteps<Shift>(dstStep), roi.width, roi.height);
    return orvStatusOk;
}

template <class K, int Shift>
OrvStatus threadedLuv(const typename K::Src* src, int srcStep, typename K::Dst* dst, int dstStep, RoiSize roi)
{
    if (OrvStatus st = checkRect(src, dst, roi))
        return st;
    const int ss = wholeSteps<Shift>(srcStep), ds = wholeSteps<Shift>(dstStep);
    const K k{};
    // Results to nearest follow the caller's rounding mode on every thread.
    rowsAreaTestedInCallersRounding(roi.width, roi.height, 4096,
                                    [&](int y) { runRow(k, rowAt(src, ss, y), rowAt(dst, ds, y), roi.width); });
    return orvStatusOk;
}

}  // namespace
}  // namespace h9

using namespace h9;

#define LUV_FRONT(name, T, driver, ...)                                                \
    ORV_FRONT(name)(const T* pSrc, int srcStep, T* pDst, int dstStep, RoiSize roiSize) \
    {                                                                                  \
        return driver<__VA_ARGS__>(pSrc, srcStep, pDst, dstStep, roiSize);             \
    }

LUV_FRONT(orviRGBToLUV_8u_C3R, Orv8u, serialLuv, RgbToLuv<uint8_t, 3, false>, 0)
LUV_FRONT(orviBGRToLUV_8u_C3R, Orv8u, serialLuv, RgbToLuv<uint8_t, 3, true>, 0)
LUV_FRONT(orviRGBToLUV_8u_AC4R, Orv8u, serialLuv, RgbToLuv<uint8_t, 4, false>, 0)
LUV_FRONT(orviRGBToLUV_16u_C3R, Orv16u, threadedLuv, RgbToLuv<uint16_t, 3, false>, 1)
LUV_FRONT(orviRGBToLUV_16u_AC4R, Orv16u, threadedLuv, RgbToLuv<uint16_t, 4, false>, 1)
LUV_FRONT(orviRGBToLUV_16s_C3R, Orv16s, threadedLuv, RgbToLuv<int16_t, 3, false>, 1)
LUV_FRONT(orviRGBToLUV_16s_AC4R, Orv16s, threadedLuv, RgbToLuv<int16_t, 4, false>, 1)
LUV_FRONT(orviRGBToLUV_32f_C3R, Orv32f, threadedLuv, RgbToLuv<float, 3, false>, 0)
LUV_FRONT(orviBGRToLUV_32f_C3R, Orv32f, threadedLuv, RgbToLuv<float, 3, true>, 0)
LUV_FRONT(orviRGBToLUV_32f_AC4R, Orv32f, threadedLuv, RgbToLuv<float, 4, false>, 0)
LUV_FRONT(orviLUVToRGB_8u_C3R, Orv8u, serialLuv, LuvToRgb<uint8_t, 3, false>, 0)
LUV_FRONT(orviLUVToBGR_8u_C3R, Orv8u, serialLuv, LuvToRgb<uint8_t, 3, true>, 0)
LUV_FRONT(orviLUVToRGB_8u_AC4R, Orv8u, threadedLuv, LuvToRgb<uint8_t, 4, false>, 0)
LUV_FRONT(orviLUVToRGB_16u_C3R, Orv16u, threadedLuv, LuvToRgb<uint16_t, 3, false>, 1)
LUV_FRONT(orviLUVToRGB_16u_AC4R, Orv16u, threadedLuv, LuvToRgb<uint16_t, 4, false>, 1)
LUV_FRONT(orviLUVToRGB_16s_C3R, Orv16s, threadedLuv, LuvToRgb<int16_t, 3, false>, 1)
LUV_FRONT(orviLUVToRGB_16s_AC4R, Orv16s, threadedLuv, LuvToRgb<int16_t, 4, false>, 1)
LUV_FRONT(orviLUVToRGB_32f_C3R, Orv32f, serialLuv, LuvToRgb<float, 3, false>, 0)
LUV_FRONT(orviLUVToBGR_32f_C3R, Orv32f, serialLuv, LuvToRgb<float, 3, true>, 0)
LUV_FRONT(orviLUVToRGB_32f_AC4R, Orv32f, serialLuv, LuvToRgb<float, 4, false>, 2)
