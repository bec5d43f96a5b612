// RGB (or BGR) and CIE L*a*b* on a D65-normalised XYZ, both directions:
// 8u, 32f, and 8-bit RGB with 16-bit Lab (8u16u, 16u8u). All run on the
// calling thread.
//
// Forward: X, Y, Z by the D65 matrix, divided by the white point (in 8u also
// by 255); f(t) is the cube root of t from the table and series, or the line
// 7.787 t + 16/116 at and below t = 0.008856; L = 116 f(Y) - 16 (903.3 Y
// below the threshold), a = 500 (f(X) - f(Y)), b = 200 (f(Y) - f(Z)).
// Reverse: cubes of (L + 16) / 116 shifted by a / 500 and -b / 200, with no
// linear segment, then the XYZ to RGB matrix.
//
// Stored scales: 32f as is; 8u L * 2.55, a + 128, b + 128; 16-bit Lab
// L * 655.35, (a + 128) * 255, (b + 128) * 255.
//
// Groups of 8 pixels (4 with 16-bit Lab) from the row start take the group
// form, fused; the rest the tail form, the same steps each rounded by itself.
// The series is evaluated in the same order in both. 8-bit results saturate
// in the group form; the forward tail keeps the low byte.
#include <bit>
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

constexpr float kThreshold = 0.008856f;

// x, y, z of one pixel or eight: X, Y, Z by the matrix (`Fused`: the group
// form's), divided by the white point. 8-bit sources (not scaled to 0..1
// first) are normalised by 255 times the white point; 32f values are cut to
// 1.0 first.
template <class S, bool Fused, class F>
inline void labNormalised(F r, F g, F b, F (&t)[3])
{
    const Matrix32f& M = kToXyz;
    const F X = Fused ? dotFused(M.c[0], r, g, b) : dotPlain(M.c[0], r, g, b);
    const F Y = Fused ? dotFused(M.c[1], r, g, b) : dotPlain(M.c[1], r, g, b);
    const F Z = Fused ? dotFused(M.c[2], r, g, b) : dotPlain(M.c[2], r, g, b);
    if constexpr (std::is_same_v<S, float>) {
        t[0] = minps(X * F(1.0521265f), F(1.0f));
        t[1] = minps(Y, F(1.0f));
        t[2] = minps(Z * F(0.9184812f), F(1.0f));
    } else {
        t[0] = X * F(0.0041259914f);
        t[1] = Y * F(0.003921569f);
        t[2] = Z * F(0.0036018905f);
    }
}

// Index of the pair (short table) for a normalised value; values from 8-bit
// samples cannot leave the table, nor can float ones above it once cut to
// 1.0.
template <class S, class F>
inline IntOf<F> labIndex(F t)
{
    if constexpr (std::is_same_v<S, float>)
        return index01AtMostOne(t);
    else
        return index01InRange(t);
}

// Cube root of a normalised value t from its pair (c, b): the offset d of t
// from c^3 relative to the point, then the root from c and d.
template <bool Short4, class F>
inline F labRootFromOffset(F c, F d)
{
    return Short4 ? rootHorner4(d, c, powluv::k4) : c * series8(d);
}
template <bool Short4, class F>
inline F labRoot(F t, F c, F b)
{
    return labRootFromOffset<Short4>(c, offsetFused(t, c, b));
}

// Whether any of x, y, z may lie at or below the threshold. Eight lanes
// compare the bit patterns as signed integers, the smallest of the three
// against the threshold's: every value at or below it, negative ones
// included, has a pattern no greater than the threshold's. Negative NaNs
// count as well; they only take the longer way, where the comparisons are
// exact.
inline bool mayBeLow(float x, float y, float z)
{
    return x <= kThreshold || y <= kThreshold || z <= kThreshold;
}
inline bool mayBeLow(F8 x, F8 y, F8 z)
{
    auto bits = [](F8 v) { return _mm256_castps_si256(v.v); };
    const __m256i least = _mm256_min_epi32(_mm256_min_epi32(bits(x), bits(y)), bits(z));
    const __m256i above = _mm256_cmpgt_epi32(least, _mm256_set1_epi32(std::bit_cast<int32_t>(kThreshold)));
    return _mm256_movemask_ps(_mm256_castsi256_ps(above)) != 0xFF;
}

// L, fx - fy and fy - fz from x, y, z and their roots. f(t) is the root, or
// the line at and below the threshold; where no value is that small, the
// line and the choice are left out (NaN takes the root either way).
template <class F>
inline void labFromRoots(const F (&t)[3], const F (&root)[3], F& L, F& dxy, F& dyz)
{
    if (!mayBeLow(t[0], t[1], t[2])) {
        L = root[1] * F(116.0f) - F(16.0f);
        dxy = root[0] - root[1];
        dyz = root[1] - root[2];
        return;
    }
    const auto low0 = le(t[0], F(kThreshold)), low1 = le(t[1], F(kThreshold)), low2 = le(t[2], F(kThreshold));
    const F f0 = select(low0, fmadd(F(7.787f), t[0], F(0.13793103f)), root[0]);
    const F f1 = select(low1, fmadd(F(7.787f), t[1], F(0.13793103f)), root[1]);
    const F f2 = select(low2, fmadd(F(7.787f), t[2], F(0.13793103f)), root[2]);
    L = select(low1, F(903.3f) * t[1], root[1] * F(116.0f) - F(16.0f));
    dxy = f0 - f1;
    dyz = f1 - f2;
}

// The same from x, y, z and their pairs.
template <bool Short4, class F>
inline void labFromPairs(const F (&t)[3], const F (&c)[3], const F (&b)[3], F& L, F& dxy, F& dyz)
{
    F root[3];
    for (int k = 0; k < 3; ++k)
        root[k] = labRoot<Short4>(t[k], c[k], b[k]);
    labFromRoots(t, root, L, dxy, dyz);
}

// L, fx - fy and fy - fz of one pixel or eight.
template <class S, bool Short4, bool Fused, class F>
inline void labForward(F r, F g, F b, F& L, F& dxy, F& dyz)
{
    F t[3], c[3], p[3];
    labNormalised<S, Fused>(r, g, b, t);
    for (int k = 0; k < 3; ++k)
        lookup(powluv::kShort, labIndex<S>(t[k]), c[k], p[k]);
    labFromPairs<Short4>(t, c, p, L, dxy, dyz);
}

// Stored values: 8u L * 2.55, a + 128, b + 128; 16u the same times 255 (L
// * 655.35).
template <class D, class F>
inline void labStored(F L, F dxy, F dyz, IntOf<F> (&o)[3])
{
    if constexpr (std::is_same_v<D, uint8_t>) {
        o[0] = nearestI(L * F(2.55f));
        o[1] = nearestI(dxy * F(500.0f) + F(128.0f));
        o[2] = nearestI(dyz * F(200.0f) + F(128.0f));
    } else {
        o[0] = nearestI(L * F(655.35f));
        o[1] = nearestI((dxy * F(500.0f) + F(128.0f)) * F(255.0f));
        o[2] = nearestI((dyz * F(200.0f) + F(128.0f)) * F(255.0f));
    }
}

// block, tail and vector of a three-channel kernel K over S to D: K::convert
// <Fused>(in, out) computes the results as floats, K::quantize(out, q) the
// stored integers (K::kLowByteTail: the 8-bit tail keeps the low byte rather
// than saturating).
template <class K, class S, class D>
struct ThreeChannels {
    using Src = S;
    using Dst = D;
    static constexpr int kSrcPix = 3;
    static constexpr int kDstPix = 3;

    Span span(int width, const Dst*) const { return {0, width / K::kGroup * K::kGroup}; }

    template <bool Fused>
    static void pixel(const Src* s, Dst* d)
    {
        float in[3], o[3];
        loadPixel<S, 3>(s, in);
        K::template convert<Fused>(in, o);
        if constexpr (std::is_same_v<D, float>) {
            storePixel(d, o);
        } else {
            int32_t q[3];
            K::quantize(o, q);
            if (Fused || !K::kLowByteTail) {
                storePixel(d, q);
            } else {
                for (int k = 0; k < 3; ++k)
                    d[k] = static_cast<D>(q[k]);
            }
        }
    }

    void block(const Src* s, Dst* d) const { pixel<true>(s, d); }
    void tail(const Src* s, Dst* d) const { pixel<false>(s, d); }

    // Flattened: left to itself the compiler calls the group arithmetic and
    // the table lookup out of line, passing every register through memory.
    [[gnu::flatten]] void vector(const Src* s, Dst* d, int n) const
    {
        inEights<3, 3>(s, d, n, [](const Src* s8, Dst* d8) {
            F8 in[3], o[3];
            loadPixels8<S, 3>(s8, in);
            K::template convert<true>(in, o);
            if constexpr (std::is_same_v<D, float>) {
                storePixels8<3>(d8, o);
            } else {
                I8 q[3];
                K::quantize(o, q);
                storePixels8<D, 3>(d8, q);
            }
        });
    }
};

template <class S, class D, bool Bgr>
struct RgbToLab : ThreeChannels<RgbToLab<S, D, Bgr>, S, D> {
    static constexpr bool k16 = std::is_same_v<D, uint16_t>;
    static constexpr bool kShort4 = std::is_same_v<D, uint8_t>;  // 8u: series to d^4
    static constexpr bool kLowByteTail = !k16;
    static constexpr int kGroup = k16 ? 4 : 8;
    static constexpr int kR = Bgr ? 2 : 0;
    static constexpr int kB = Bgr ? 0 : 2;

    // L, a, b of 32f; L, fx - fy, fy - fz of the integer types.
    template <bool Fused, class F>
    static void convert(const F (&in)[3], F (&o)[3])
    {
        labForward<S, kShort4, Fused>(in[kR], in[1], in[kB], o[0], o[1], o[2]);
        if constexpr (std::is_same_v<D, float>) {
            o[1] = o[1] * F(500.0f);
            o[2] = o[2] * F(200.0f);
        }
    }

    template <class F>
    static void quantize(const F (&o)[3], IntOf<F> (&q)[3])
    {
        labStored<D>(o[0], o[1], o[2], q);
    }

    // The vector path over runs of up to 64 pixels: first the normalised
    // values and their table indices of the whole run; then, one group
    // ahead of the series, the lookups and the offsets from the table's
    // points; then the series, the results and the stores. The table loads
    // of one group thus go on while the multiplications of the one before
    // fill the multipliers, and no chain from load to store is so long that
    // the processor cannot keep several groups in flight. The arithmetic is
    // that of convert() above.
    [[gnu::flatten]] void vector(const S* s, D* d, int n) const
    {
        constexpr int kRun = 64;
        alignas(32) float t[kRun / 8][3][8];
        alignas(32) uint64_t at[kRun / 8][3][4];
        alignas(32) float cs[kRun / 8][3][8];
        alignas(32) float ds[kRun / 8][3][8];
        auto first = [&](const S* s8, int g) {
            F8 in[3], x[3];
            loadPixels8<S, 3>(s8, in);
            labNormalised<S, true>(in[kR], in[1], in[kB], x);
            for (int k = 0; k < 3; ++k) {
                _mm256_store_ps(t[g][k], x[k].v);
                _mm256_store_si256(reinterpret_cast<__m256i*>(at[g][k]), labIndex<S>(x[k]).v);
            }
        };
        auto middle = [&](int g) {
            for (int k = 0; k < 3; ++k) {
                F8 c, b;
                lookupAt(powluv::kShort, at[g][k], c, b);
                _mm256_store_ps(cs[g][k], c.v);
                _mm256_store_ps(ds[g][k], offsetFused(F8(_mm256_load_ps(t[g][k])), c, b).v);
            }
        };
        auto second = [&](int g, D* d8) {
            F8 x[3], root[3], o[3];
            for (int k = 0; k < 3; ++k) {
                x[k] = _mm256_load_ps(t[g][k]);
                root[k] = labRootFromOffset<kShort4>(F8(_mm256_load_ps(cs[g][k])), F8(_mm256_load_ps(ds[g][k])));
            }
            labFromRoots(x, root, o[0], o[1], o[2]);
            if constexpr (std::is_same_v<D, float>) {
                o[1] = o[1] * F8(500.0f);
                o[2] = o[2] * F8(200.0f);
                storePixels8<3>(d8, o);
            } else {
                I8 q[3];
                quantize(o, q);
                storePixels8<D, 3>(d8, q);
            }
        };
        inRuns<kRun, 3, 3>(s, d, n, first, middle, second);
    }
};

// ---------------------------------------------------------------------------
// Lab to RGB.

// R, G, B of one pixel or eight, on the scale of X, Y, Z.
template <bool Fused, class F>
inline void labMatrix(F X, F Y, F Z, F (&o)[3])
{
    const Matrix32f& M = kToRgb;
    if constexpr (Fused) {
        for (int k = 0; k < 3; ++k)
            o[k] = dotFused(M.c[k], X, Y, Z);
    } else {
        for (int k = 0; k < 3; ++k)
            o[k] = Z * F(M.c[k][2]) + (X * F(M.c[k][0]) + Y * F(M.c[k][1]));
    }
}

// 32f: one form for every pixel, no clamp.
template <class F>
inline void labReverse32f(F L, F a, F b, F (&o)[3])
{
    const F P = (L + F(16.0f)) * F(0.00862069f);
    const F fx = fmadd(a, F(0.002f), P);
    const F fz = fmadd(F(-0.005f), b, P);
    const F X = ((fx * fx) * fx) * F(0.950456f);
    const F Y = (P * P) * P;
    const F Z = ((fz * fz) * fz) * F(1.0887539f);
    labMatrix<true>(X, Y, Z, o);
}

// 8-bit RGB from 8u or 16u Lab, on the scale 0..255; `Fused`: group form.
template <class S, bool Fused, class F>
inline void labReverse8(F L, F A, F B, F (&o)[3])
{
    constexpr bool k16 = std::is_same_v<S, uint16_t>;
    const F sL(k16 ? 0.0015259022f : 0.39215687f);
    F P, ad, bd, fx, fz;
    if constexpr (Fused) {
        P = fmadd(L, sL, F(16.0f)) * F(0.00862069f);
        ad = k16 ? fmsub(A, F(0.003921569f), F(128.0f)) : A - F(128.0f);
        bd = k16 ? fmsub(B, F(0.003921569f), F(128.0f)) : B - F(128.0f);
        fx = fmadd(ad, F(0.002f), P);
        fz = fnmadd(bd, F(0.005f), P);
    } else {
        P = (L * sL + F(16.0f)) * F(0.00862069f);
        ad = k16 ? A * F(0.003921569f) - F(128.0f) : A - F(128.0f);
        bd = k16 ? B * F(0.003921569f) - F(128.0f) : B - F(128.0f);
        fx = P + ad * F(0.002f);
        fz = P - bd * F(0.005f);
    }
    const F Y = ((P * P) * P) * F(255.0f);
    const F X = ((fx * fx) * fx) * F(242.366f);
    const F Z = ((fz * fz) * fz) * F(277.632f);
    labMatrix<Fused>(X, Y, Z, o);
}

template <class S, class D, bool Bgr>
struct LabToRgb : ThreeChannels<LabToRgb<S, D, Bgr>, S, D> {
    static constexpr bool kLowByteTail = false;
    static constexpr int kGroup = std::is_same_v<S, uint16_t> ? 4 : 8;
    static constexpr int kR = Bgr ? 2 : 0;
    static constexpr int kB = Bgr ? 0 : 2;

    template <bool Fused, class F>
    static void convert(const F (&in)[3], F (&out)[3])
    {
        F o[3];
        if constexpr (std::is_same_v<S, float>)
            labReverse32f(in[0], in[1], in[2], o);
        else
            labReverse8<S, Fused>(in[0], in[1], in[2], o);
        out[kR] = o[0];
        out[1] = o[1];
        out[kB] = o[2];
    }

    // Nearest, saturated by the store.
    template <class F>
    static void quantize(const F (&o)[3], IntOf<F> (&q)[3])
    {
        for (int k = 0; k < 3; ++k)
            q[k] = nearestI(o[k]);
    }
};

// Every member loops over its rows on the calling thread with the byte
// steps as given.
template <class K>
OrvStatus convertLab(const typename K::Src* src, int srcStep, typename K::Dst* dst, int dstStep, RoiSize roi)
{
    if (OrvStatus st = checkRect(src, dst, roi))
        return st;
    rowsSerial(K{}, src, srcStep, dst, dstStep, roi.width, roi.height);
    return orvStatusOk;
}

}  // namespace
}  // namespace h9

using namespace h9;

#define LAB_FRONT(name, S, D, ...)                                                     \
    ORV_FRONT(name)(const S* pSrc, int srcStep, D* pDst, int dstStep, RoiSize roiSize) \
    {                                                                                  \
        return convertLab<__VA_ARGS__>(pSrc, srcStep, pDst, dstStep, roiSize);         \
    }

LAB_FRONT(orviRGBToLab_8u_C3R, Orv8u, Orv8u, RgbToLab<uint8_t, uint8_t, false>)
LAB_FRONT(orviBGRToLab_8u_C3R, Orv8u, Orv8u, RgbToLab<uint8_t, uint8_t, true>)
LAB_FRONT(orviBGRToLab_8u16u_C3R, Orv8u, Orv16u, RgbToLab<uint8_t, uint16_t, true>)
LAB_FRONT(orviRGBToLab_32f_C3R, Orv32f, Orv32f, RgbToLab<float, float, false>)
LAB_FRONT(orviBGRToLab_32f_C3R, Orv32f, Orv32f, RgbToLab<float, float, true>)
LAB_FRONT(orviLabToRGB_8u_C3R, Orv8u, Orv8u, LabToRgb<uint8_t, uint8_t, false>)
LAB_FRONT(orviLabToBGR_8u_C3R, Orv8u, Orv8u, LabToRgb<uint8_t, uint8_t, true>)
LAB_FRONT(orviLabToBGR_16u8u_C3R, Orv16u, Orv8u, LabToRgb<uint16_t, uint8_t, true>)
LAB_FRONT(orviLabToRGB_32f_C3R, Orv32f, Orv32f, LabToRgb<float, float, false>)
LAB_FRONT(orviLabToBGR_32f_C3R, Orv32f, Orv32f, LabToRgb<float, float, true>)
