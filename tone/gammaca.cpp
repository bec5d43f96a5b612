// Gamma correction with the BT.709 transfer curve, forward (linear to
// gamma-corrected) and inverse, in three element types and six layouts.
//
// 8u and 16u values go through the tables of gammatables.h. 32f values are
// taken relative to the caller's range [vMin, vMax]: with t = v - vMin and
// x = t / range, the curve is applied to x by the vector power function in
// blocks of 384 values, and the result is scaled back by the range.
//
// Every layout reduces to one of two row shapes: a plain sequence of values
// (C3 rows, three values per pixel, and the rows of each plane of P3), or
// pixels of four values of which the fourth, alpha, is never read or written
// (AC4).
#include <immintrin.h>

#include <algorithm>
#include <cstdint>

#include "frame/driver.h"
#include "frame/fronts.h"
#include "frame/primitives/primitives.h"
#include "frame/scalar.h"
#include "tone/gammatables.h"
#include "vecmath/powx.h"

namespace h9 {
namespace {

// ---------------------------------------------------------------------------
// Lookups. Every value is replaced by table[value]; blocks and tail compute
// the same.
//
// The 8u blocks look up 32 bytes at once with byte shuffles, which index
// tables of 16 entries by the low four bits of each byte. The 256 entries
// are 16 groups of 16 (by the high four bits g); a shuffle gives zero where
// bit 7 of its index is set. For bytes below 128, the index x - 16k is
// non-negative (and below 128) exactly for k <= g, so XOR-ing the shuffles
// of the differences D[k] = group k ^ group k-1 (D[0] = group 0) over
// k = 0..7 leaves group g's entry. Bytes from 128 up do the same with
// x ^ 0x80 and the groups 8..15, and bit 7 of x picks the half.
struct NibbleTables {
    alignas(16) uint8_t d[16][16];
};

constexpr NibbleTables makeNibbleTables(const std::array<uint8_t, 256>& t)
{
    NibbleTables n{};
    for (int g = 0; g < 16; ++g)
        for (int j = 0; j < 16; ++j)
            n.d[g][j] = uint8_t(t[16 * g + j] ^ (g % 8 ? t[16 * (g - 1) + j] : 0));
    return n;
}

constexpr NibbleTables kNibblesFwd8u = makeNibbleTables(tableFwd8u);
constexpr NibbleTables kNibblesInv8u = makeNibbleTables(tableInv8u);

// Thirty-two bytes through the 8u table, D broadcast from the nibble tables.
inline __m256i lookupBytes(const __m256i (&D)[16], __m256i x)
{
    const __m256i sixteen = _mm256_set1_epi8(16);
    __m256i lo = x, hi = _mm256_xor_si256(x, _mm256_set1_epi8(char(0x80)));
    __m256i rl = _mm256_shuffle_epi8(D[0], lo), rh = _mm256_shuffle_epi8(D[8], hi);
    for (int k = 1; k < 8; ++k) {
        lo = _mm256_sub_epi8(lo, sixteen);
        hi = _mm256_sub_epi8(hi, sixteen);
        rl = _mm256_xor_si256(rl, _mm256_shuffle_epi8(D[k], lo));
        rh = _mm256_xor_si256(rh, _mm256_shuffle_epi8(D[8 + k], hi));
    }
    return _mm256_blendv_epi8(rl, rh, x);
}

inline void broadcastNibbles(const NibbleTables& n, __m256i (&D)[16])
{
    for (int g = 0; g < 16; ++g)
        D[g] = _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(n.d[g])));
}

// The 16u rows have no vector path: every value costs one read of the
// table however it is issued, and those reads are the bound. One thread,
// 1920x1080, three values a pixel, vector form timed against this loop in
// the same run: the loop takes about 0.41 ns a value on random words (the
// 128 KB table mostly in the second-level cache) and 0.37 ns on a smooth
// image; two 32-bit gathers per sixteen values (aligned pairs of entries,
// then shifted; one load and one store per sixteen values) ran at 0.98-1.01x
// its speed on random words and 0.93x on the smooth image; eight lookups
// issued ahead of their stores at 0.89-0.96x; 64-bit words split into four
// lookups within noise of it. In the first-level cache a gather of eight
// costs about as long as eight lookups here.
template <class T>
struct LookupValues {
    using Src = T;
    using Dst = T;
    static constexpr int kSrcPix = 1;
    static constexpr int kDstPix = 1;
    const T* table;
    const NibbleTables* nibbles;  // 8u only

    Span span(int n, const Dst*) const { return {0, sizeof(T) == 1 ? n & ~31 : 0}; }
    void tail(const Src* s, Dst* d) const { *d = table[*s]; }
    void block(const Src* s, Dst* d) const { *d = table[*s]; }

    void vector(const Src* s, Dst* d, int n) const
        requires(sizeof(T) == 1)
    {
        __m256i D[16];
        broadcastNibbles(*nibbles, D);
        for (int i = 0; i < n; i += 32) {
            const __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + i), lookupBytes(D, x));
        }
    }
};

// AC4 pixels: the three colour values through the table, alpha untouched.
// The 8u blocks look up eight whole pixels as the plain rows do (the
// source's alpha gives an index whose entry is dropped) and put the
// destination's alpha back before the store.
template <class T>
struct LookupColour {
    using Src = T;
    using Dst = T;
    static constexpr int kSrcPix = 4;
    static constexpr int kDstPix = 4;
    const T* table;
    const NibbleTables* nibbles;  // 8u only

    Span span(int n, const Dst*) const { return {0, sizeof(T) == 1 ? n & ~7 : 0}; }
    void tail(const Src* s, Dst* d) const
    {
        d[0] = table[s[0]];
        d[1] = table[s[1]];
        d[2] = table[s[2]];
    }
    void block(const Src* s, Dst* d) const { tail(s, d); }

    void vector(const Src* s, Dst* d, int n) const
        requires(sizeof(T) == 1)
    {
        __m256i D[16];
        broadcastNibbles(*nibbles, D);
        const __m256i alpha = _mm256_set1_epi32(int(0xff000000u));
        for (int i = 0; i < 4 * n; i += 32) {
            const __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i));
            __m256i* out = reinterpret_cast<__m256i*>(d + i);
            _mm256_storeu_si256(out, _mm256_blendv_epi8(lookupBytes(D, x), _mm256_loadu_si256(out), alpha));
        }
    }
};

template <class T>
struct Lookup {
    const T* table;
    const NibbleTables* nibbles = nullptr;
    void values(const T* s, T* d, int n) const { runRow(LookupValues<T>{table, nibbles}, s, d, n); }
    void colour(const T* s, T* d, int width) const { runRow(LookupColour<T>{table, nibbles}, s, d, width); }
};

// ---------------------------------------------------------------------------
// 32f. One direction of the curve on values t = v - vMin, per value:
//
//   forward  argument x = t * inv                         (x = t / range)
//            power    p = x ^ 0.45
//            result   r = x < 0.018 ? 4.5 t : fma(p, 1.099, -0.099) * range
//   inverse  argument u = fma(t, inv, 0.099) * 0.9099181 ((x + 0.099) / 1.099;
//                         the AC4 members form it in double, rounded once)
//            power    p = u ^ 2.2222223
//            result   r = x < 0.0812 ? t * 0.2222222 : p * range
//
// and the value written is vMin + r. Outside 0..1 the power yields NaN for
// negative arguments, which the linear branch replaces, and above 1 the curve
// simply continues.
constexpr int kBlock = 384;

struct Range32f {
    float vMin;
    float range;
    float inv;
};

struct Forward {
    static constexpr float kExponent = 0.45f;
    static float argument(float t, const Range32f& g) { return t * g.inv; }
    static float argumentAC4(float t, const Range32f& g) { return argument(t, g); }
    static float result(float t, float p, const Range32f& g)
    {
        const float x = t * g.inv;
        return x < 0.018f ? 4.5f * t : fmaf32(p, 1.099f, -0.099f) * g.range;
    }
    static __m256 argument(__m256 t, const Range32f& g) { return _mm256_mul_ps(t, _mm256_set1_ps(g.inv)); }
    static __m256 argumentAC4(__m256 t, const Range32f& g) { return argument(t, g); }
    static __m256 result(__m256 t, __m256 p, const Range32f& g)
    {
        const __m256 x = _mm256_mul_ps(t, _mm256_set1_ps(g.inv));
        const __m256 linear = _mm256_mul_ps(_mm256_set1_ps(4.5f), t);
        const __m256 curve = _mm256_mul_ps(_mm256_fmadd_ps(p, _mm256_set1_ps(1.099f), _mm256_set1_ps(-0.099f)),
                                           _mm256_set1_ps(g.range));
        return _mm256_blendv_ps(curve, linear, _mm256_cmp_ps(x, _mm256_set1_ps(0.018f), _CMP_LT_OQ));
    }
};

struct Inverse {
    static constexpr float kExponent = 2.2222223f;
    static float argument(float t, const Range32f& g) { return fmaf32(t, g.inv, 0.099f) * 0.9099181f; }
    static float argumentAC4(float t, const Range32f& g)  // in double, rounded once
    {
        return float(fmaf64(double(t), double(g.inv), double(0.099f)) * double(0.9099181f));
    }
    static float result(float t, float p, const Range32f& g)
    {
        const float x = t * g.inv;
        return x < 0.0812f ? t * 0.2222222f : p * g.range;
    }
    static __m256 argument(__m256 t, const Range32f& g)
    {
        return _mm256_mul_ps(_mm256_fmadd_ps(t, _mm256_set1_ps(g.inv), _mm256_set1_ps(0.099f)),
                             _mm256_set1_ps(0.9099181f));
    }
    // Four lanes of double at a time, each rounded once to float at the end.
    static __m256 argumentAC4(__m256 t, const Range32f& g)
    {
        auto half = [&](__m128 x) {
            const __m256d u = _mm256_fmadd_pd(_mm256_cvtps_pd(x), _mm256_set1_pd(double(g.inv)), _mm256_set1_pd(double(0.099f)));
            return _mm256_cvtpd_ps(_mm256_mul_pd(u, _mm256_set1_pd(double(0.9099181f))));
        };
        return _mm256_set_m128(half(_mm256_extractf128_ps(t, 1)), half(_mm256_castps256_ps128(t)));
    }
    static __m256 result(__m256 t, __m256 p, const Range32f& g)
    {
        const __m256 x = _mm256_mul_ps(t, _mm256_set1_ps(g.inv));
        const __m256 linear = _mm256_mul_ps(t, _mm256_set1_ps(0.2222222f));
        const __m256 curve = _mm256_mul_ps(p, _mm256_set1_ps(g.range));
        return _mm256_blendv_ps(curve, linear, _mm256_cmp_ps(x, _mm256_set1_ps(0.0812f), _CMP_LT_OQ));
    }
};

// arg[i] = argument(t[i]) for i < n (argumentAC4 for the alpha layouts):
// eight at a time, then one by one.
template <class Dir, bool AC4 = false>
void argumentPass(const float* t, float* arg, int n, const Range32f& g)
{
    int i = 0;
    if (!g_scalarBlocks)
        for (; i + 8 <= n; i += 8) {
            const __m256 v = _mm256_loadu_ps(t + i);
            _mm256_storeu_ps(arg + i, AC4 ? Dir::argumentAC4(v, g) : Dir::argument(v, g));
        }
    for (; i < n; ++i)
        arg[i] = AC4 ? Dir::argumentAC4(t[i], g) : Dir::argument(t[i], g);
}

// AC4 pixels to and from runs of three values. Two pixels a step; each step
// moves eight floats of the run, of which the last two are overwritten by
// the next step or lie in the run's two spare floats.
constexpr int kSpare = 2;

inline void packColour(const float* s, float* t, int np, float vMin)
{
    int i = 0;
    if (!g_scalarBlocks) {
        // The two spare lanes repeat a colour value, so alpha takes no part.
        const __m256i order = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 6, 6);
        const __m256 lo = _mm256_set1_ps(vMin);
        for (; i + 2 <= np; i += 2)
            _mm256_storeu_ps(t + 3 * i, _mm256_sub_ps(_mm256_permutevar8x32_ps(_mm256_loadu_ps(s + 4 * i), order), lo));
    }
    for (; i < np; ++i)
        for (int c = 0; c < 3; ++c)
            t[3 * i + c] = s[4 * i + c] - vMin;
}

inline void unpackColour(const float* t, float* d, int np, float vMin)
{
    int i = 0;
    if (!g_scalarBlocks) {
        const __m256i order = _mm256_setr_epi32(0, 1, 2, 2, 3, 4, 5, 5);
        const __m256 lo = _mm256_set1_ps(vMin);
        for (; i + 2 <= np; i += 2) {
            const __m256 v = _mm256_add_ps(lo, _mm256_permutevar8x32_ps(_mm256_loadu_ps(t + 3 * i), order));
            _mm256_storeu_ps(d + 4 * i, _mm256_blend_ps(v, _mm256_loadu_ps(d + 4 * i), 0x88));
        }
    }
    for (; i < np; ++i)
        for (int c = 0; c < 3; ++c)
            d[4 * i + c] = vMin + t[3 * i + c];
}

// out[i] = result(t[i], p[i]); out may be t.
template <class Dir>
void resultPass(const float* t, const float* p, float* out, int n, const Range32f& g)
{
    int i = 0;
    if (!g_scalarBlocks)
        for (; i + 8 <= n; i += 8)
            _mm256_storeu_ps(out + i, Dir::result(_mm256_loadu_ps(t + i), _mm256_loadu_ps(p + i), g));
    for (; i < n; ++i)
        out[i] = Dir::result(t[i], p[i], g);
}

template <class Dir>
struct Curve32f {
    Range32f g;

    // A plain row of n values. The destination row holds t = v - vMin, then
    // r, then vMin + r, so in-place rows need nothing else.
    void values(const float* s, float* d, int n) const
    {
        orvsSubC_32f(s, g.vMin, d, n);
        float arg[kBlock], p[kBlock];
        for (int b = 0; b < n; b += kBlock) {
            const int m = std::min(kBlock, n - b);
            argumentPass<Dir>(d + b, arg, m, g);
            orvsPowx_32f_A21(arg, Dir::kExponent, p, m);
            resultPass<Dir>(d + b, p, d + b, m, g);
        }
        orvsAddC_32f(d, g.vMin, d, n);
    }

    // AC4 pixels in blocks of 128: the colour values are gathered into 384
    // values, and vMin + r is written back; alpha is neither read nor written.
    void colour(const float* s, float* d, int width) const
    {
        constexpr int kPixels = kBlock / 3;
        float t[kBlock + kSpare] = {}, arg[kBlock], p[kBlock];
        for (int b = 0; b < width; b += kPixels) {
            const int np = std::min(kPixels, width - b);
            const int m = 3 * np;
            packColour(s + 4 * b, t, np, g.vMin);
            argumentPass<Dir, true>(t, arg, m, g);
            orvsPowx_32f_A21(arg, Dir::kExponent, p, m);
            resultPass<Dir>(t, p, t, m, g);
            unpackColour(t, d + 4 * b, np, g.vMin);
        }
    }
};

// ---------------------------------------------------------------------------
// Drivers. All members work row by row on the caller's thread.
// C3: rows of plain values; AC4: pixels with alpha; P3: three planes.
enum class Layout { C3, AC4, P3 };

// Checks after the 32f range: pointers (the plane pointers included, source
// before destination), then the size, then the steps.
inline OrvStatus checkSizeAndSteps(RoiSize roi, int srcStep, int dstStep)
{
    if (roi.width < 1 || roi.height < 1)
        return orvStatusBadSize;
    if (srcStep < 1 || dstStep < 1)
        return orvStatusBadStep;
    return orvStatusOk;
}

template <class T>
OrvStatus checkGamma(const T* src, int srcStep, const T* dst, int dstStep, RoiSize roi)
{
    if (!src || !dst)
        return orvStatusNullPointer;
    return checkSizeAndSteps(roi, srcStep, dstStep);
}

template <class T>
OrvStatus checkGamma(const T* const* src, int srcStep, const T* const* dst, int dstStep, RoiSize roi)
{
    if (!src || !src[0] || !src[1] || !src[2])
        return orvStatusNullPointer;
    if (!dst || !dst[0] || !dst[1] || !dst[2])
        return orvStatusNullPointer;
    return checkSizeAndSteps(roi, srcStep, dstStep);
}

template <Layout L, class Op, class T>
OrvStatus myGamma(const Op& op, const T* src, int srcStep, T* dst, int dstStep, RoiSize roi)
{
    if (OrvStatus st = checkGamma(src, srcStep, dst, dstStep, roi))
        return st;
    for (int y = 0; y < roi.height; ++y) {
        if constexpr (L == Layout::C3)
            op.values(rowAt(src, srcStep, y), rowAt(dst, dstStep, y), 3 * roi.width);
        else
            op.colour(rowAt(src, srcStep, y), rowAt(dst, dstStep, y), roi.width);
    }
    return orvStatusOk;
}

template <class Op, class T>
OrvStatus myGammaPlanes(const Op& op, const T* const* src, int srcStep, T* const* dst, int dstStep, RoiSize roi)
{
    if (OrvStatus st = checkGamma<T>(src, srcStep, dst, dstStep, roi))
        return st;
    for (int y = 0; y < roi.height; ++y)
        for (int c = 0; c < 3; ++c)
            op.values(rowAt(src[c], srcStep, y), rowAt(dst[c], dstStep, y), roi.width);
    return orvStatusOk;
}

constexpr Lookup<uint8_t> kFwd8u{tableFwd8u.data(), &kNibblesFwd8u};
constexpr Lookup<uint8_t> kInv8u{tableInv8u.data(), &kNibblesInv8u};
const Lookup<uint16_t> kFwd16u{tableFwd16u.data()};
const Lookup<uint16_t> kInv16u{tableInv16u.data()};

// The range is checked before anything else.
template <class Dir, Layout L, class S, class D>
OrvStatus myGamma32f(S src, int srcStep, D dst, int dstStep, RoiSize roi, float vMin, float vMax)
{
    const float range = vMax - vMin;
    if (range <= 0.0f)
        return orvStatusBadGammaRange;
    const Curve32f<Dir> op{{vMin, range, 1.0f / range}};
    if constexpr (L == Layout::P3)
        return myGammaPlanes(op, src, srcStep, dst, dstStep, roi);
    else
        return myGamma<L>(op, src, srcStep, dst, dstStep, roi);
}

}  // namespace
}  // namespace h9

using namespace h9;

// The 36 front functions: for each direction and type, C3R, C3IR, AC4R,
// AC4IR, P3R, IP3R. The in-place members are their out-of-place forms with
// one buffer and one step.
#define ORV_GAMMA_TABLE(Dir, T, op)                                                                                  \
    ORV_FRONT(orviGamma##Dir##_##T##_C3R)(const Orv##T* pSrc, int srcStep, Orv##T* pDst, int dstStep, RoiSize roiSize) \
    {                                                                                                                \
        return myGamma<Layout::C3>(op, pSrc, srcStep, pDst, dstStep, roiSize);                                       \
    }                                                                                                                \
    ORV_FRONT(orviGamma##Dir##_##T##_C3IR)(Orv##T * pSrcDst, int srcDstStep, RoiSize roiSize)                        \
    {                                                                                                                \
        return myGamma<Layout::C3>(op, pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize);                           \
    }                                                                                                                \
    ORV_FRONT(orviGamma##Dir##_##T##_AC4R)(const Orv##T* pSrc, int srcStep, Orv##T* pDst, int dstStep, RoiSize roiSize) \
    {                                                                                                                \
        return myGamma<Layout::AC4>(op, pSrc, srcStep, pDst, dstStep, roiSize);                                      \
    }                                                                                                                \
    ORV_FRONT(orviGamma##Dir##_##T##_AC4IR)(Orv##T * pSrcDst, int srcDstStep, RoiSize roiSize)                       \
    {                                                                                                                \
        return myGamma<Layout::AC4>(op, pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize);                          \
    }                                                                                                                \
    ORV_FRONT(orviGamma##Dir##_##T##_P3R)(const Orv##T* const pSrc[3], int srcStep, Orv##T* pDst[3], int dstStep,    \
                                          RoiSize roiSize)                                                           \
    {                                                                                                                \
        return myGammaPlanes(op, pSrc, srcStep, pDst, dstStep, roiSize);                                       \
    }                                                                                                                \
    ORV_FRONT(orviGamma##Dir##_##T##_IP3R)(Orv##T * pSrcDst[3], int srcDstStep, RoiSize roiSize)                     \
    {                                                                                                                \
        return myGammaPlanes(op, pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize);                           \
    }

ORV_GAMMA_TABLE(Fwd, 8u, kFwd8u)
ORV_GAMMA_TABLE(Inv, 8u, kInv8u)
ORV_GAMMA_TABLE(Fwd, 16u, kFwd16u)
ORV_GAMMA_TABLE(Inv, 16u, kInv16u)
#undef ORV_GAMMA_TABLE

#define ORV_GAMMA_32F(Dir, Curve)                                                                                    \
    ORV_FRONT(orviGamma##Dir##_32f_C3R)(const Orv32f* pSrc, int srcStep, Orv32f* pDst, int dstStep, RoiSize roiSize, \
                                        Orv32f vMin, Orv32f vMax)                                                    \
    {                                                                                                                \
        return myGamma32f<Curve, Layout::C3>(pSrc, srcStep, pDst, dstStep, roiSize, vMin, vMax);                     \
    }                                                                                                                \
    ORV_FRONT(orviGamma##Dir##_32f_C3IR)(Orv32f * pSrcDst, int srcDstStep, RoiSize roiSize, Orv32f vMin, Orv32f vMax) \
    {                                                                                                                \
        return myGamma32f<Curve, Layout::C3>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, vMin, vMax);         \
    }                                                                                                                \
    ORV_FRONT(orviGamma##Dir##_32f_AC4R)(const Orv32f* pSrc, int srcStep, Orv32f* pDst, int dstStep, RoiSize roiSize, \
                                         Orv32f vMin, Orv32f vMax)                                                   \
    {                                                                                                                \
        return myGamma32f<Curve, Layout::AC4>(pSrc, srcStep, pDst, dstStep, roiSize, vMin, vMax);                    \
    }                                                                                                                \
    ORV_FRONT(orviGamma##Dir##_32f_AC4IR)(Orv32f * pSrcDst, int srcDstStep, RoiSize roiSize, Orv32f vMin,           \
                                          Orv32f vMax)                                                               \
    {                                                                                                                \
        return myGamma32f<Curve, Layout::AC4>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, vMin, vMax);        \
    }                                                                                                                \
    ORV_FRONT(orviGamma##Dir##_32f_P3R)(const Orv32f* const pSrc[3], int srcStep, Orv32f* pDst[3], int dstStep,      \
                                        RoiSize roiSize, Orv32f vMin, Orv32f vMax)                                   \
    {                                                                                                                \
        return myGamma32f<Curve, Layout::P3>(pSrc, srcStep, pDst, dstStep, roiSize, vMin, vMax);                     \
    }                                                                                                                \
    ORV_FRONT(orviGamma##Dir##_32f_IP3R)(Orv32f * pSrcDst[3], int srcDstStep, RoiSize roiSize, Orv32f vMin,         \
                                         Orv32f vMax)                                                                \
    {                                                                                                                \
        return myGamma32f<Curve, Layout::P3>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, vMin, vMax);         \
    }

ORV_GAMMA_32F(Fwd, Forward)
ORV_GAMMA_32F(Inv, Inverse)
#undef ORV_GAMMA_32F
