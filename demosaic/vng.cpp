// Bayer mosaic to BGRA by a variable number of gradients, with optional
// gains; the alpha element of the destination is never computed.
//
// At each interior pixel (two pixels from every edge of the mosaic) eight
// directional gradients are measured over the 5x5 neighbourhood, the
// directions below a threshold are selected, and each missing colour is the
// pixel's own sample plus the mean colour difference over those directions.
// The two outer rows and columns are then copied from the nearest interior
// pixel. Steps are byte distances for both types.
//
// One pixel's arithmetic is written once, as a template over the lane type
// and the site class: int32_t for the scalar form, sixteen 16-bit (8u) or
// eight 32-bit (16u) AVX2 lanes for the vector path, whose registers hold
// every other pixel so that all lanes are of one class. Both forms agree to
// the bit wherever a row splits between them.
#include <immintrin.h>

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "demosaic/mosaic.h"
#include "demosaic/quotient.h"
#include "frame/driver.h"
#include "frame/fronts.h"
#include "frame/primitives/primitives.h"

namespace h9 {
namespace {

// ---- lane operations: scalar ----------------------------------------------
// Masks are -1 (true) or 0.

using h9::roundEven;
using h9::roundedQuotient;

inline int32_t absDiff(int32_t a, int32_t b) { return a > b ? a - b : b - a; }
inline int32_t twice(int32_t a) { return a << 1; }
inline int32_t half(int32_t a) { return a >> 1; }
inline int32_t below(int32_t a, int32_t b) { return a < b ? -1 : 0; }
inline int32_t keep(int32_t m, int32_t a) { return m & a; }
inline int32_t lanesMin(int32_t a, int32_t b) { return a < b ? a : b; }
inline int32_t lanesMax(int32_t a, int32_t b) { return a > b ? a : b; }

// Clamp to [0, hi]; a NaN becomes 0, as the vector max instruction does it.
inline float clampF(float x, float hi)
{
    x = x > 0.0f ? x : 0.0f;
    return x < hi ? x : hi;
}
inline int32_t clampI(int32_t x, int32_t hi) { return x < 0 ? 0 : x > hi ? hi : x; }
inline int32_t applyGain(int32_t v, float gain, float hi) { return int32_t(clampF(roundEven(float(v) * gain), hi)); }

// ---- lane operations: eight 32-bit AVX2 lanes -----------------------------

struct Lanes8 {
    __m256i v;
};
inline Lanes8 operator+(Lanes8 a, Lanes8 b) { return {_mm256_add_epi32(a.v, b.v)}; }
inline Lanes8 operator-(Lanes8 a, Lanes8 b) { return {_mm256_sub_epi32(a.v, b.v)}; }
inline Lanes8 absDiff(Lanes8 a, Lanes8 b) { return {_mm256_abs_epi32(_mm256_sub_epi32(a.v, b.v))}; }
inline Lanes8 twice(Lanes8 a) { return {_mm256_slli_epi32(a.v, 1)}; }
inline Lanes8 half(Lanes8 a) { return {_mm256_srai_epi32(a.v, 1)}; }
inline Lanes8 below(Lanes8 a, Lanes8 b) { return {_mm256_cmpgt_epi32(b.v, a.v)}; }
inline Lanes8 keep(Lanes8 m, Lanes8 a) { return {_mm256_and_si256(m.v, a.v)}; }
inline Lanes8 lanesMin(Lanes8 a, Lanes8 b) { return {_mm256_min_epi32(a.v, b.v)}; }
inline Lanes8 lanesMax(Lanes8 a, Lanes8 b) { return {_mm256_max_epi32(a.v, b.v)}; }

inline __m256 roundEven(__m256 x) { return _mm256_round_ps(x, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC); }
inline Lanes8 roundedQuotient(Lanes8 diff, Lanes8 twoN)
{
    return {_mm256_cvttps_epi32(roundEven(_mm256_div_ps(_mm256_cvtepi32_ps(diff.v), _mm256_cvtepi32_ps(twoN.v))))};
}
inline Lanes8 clampI(Lanes8 x, int32_t hi)
{
    return {_mm256_min_epi32(_mm256_max_epi32(x.v, _mm256_setzero_si256()), _mm256_set1_epi32(hi))};
}
inline Lanes8 applyGain(Lanes8 v, float gain, float hi)
{
    const __m256 x = roundEven(_mm256_mul_ps(_mm256_cvtepi32_ps(v.v), _mm256_set1_ps(gain)));
    return {_mm256_cvttps_epi32(_mm256_min_ps(_mm256_max_ps(x, _mm256_setzero_ps()), _mm256_set1_ps(hi)))};
}

// ---- lane operations: sixteen 16-bit AVX2 lanes, for 8u ------------------
// Gradients, sums and their differences stay below 2^12 for 8u, so 16-bit
// lanes hold them exactly; the quotient is exact in integers, and the gains
// go through two halves of eight 32-bit lanes.

struct Lanes16 {
    __m256i v;
};
inline Lanes16 operator+(Lanes16 a, Lanes16 b) { return {_mm256_add_epi16(a.v, b.v)}; }
inline Lanes16 operator-(Lanes16 a, Lanes16 b) { return {_mm256_sub_epi16(a.v, b.v)}; }
inline Lanes16 absDiff(Lanes16 a, Lanes16 b) { return {_mm256_abs_epi16(_mm256_sub_epi16(a.v, b.v))}; }
inline Lanes16 twice(Lanes16 a) { return {_mm256_slli_epi16(a.v, 1)}; }
inline Lanes16 half(Lanes16 a) { return {_mm256_srai_epi16(a.v, 1)}; }
inline Lanes16 below(Lanes16 a, Lanes16 b) { return {_mm256_cmpgt_epi16(b.v, a.v)}; }
inline Lanes16 keep(Lanes16 m, Lanes16 a) { return {_mm256_and_si256(m.v, a.v)}; }
inline Lanes16 lanesMin(Lanes16 a, Lanes16 b) { return {_mm256_min_epi16(a.v, b.v)}; }
inline Lanes16 lanesMax(Lanes16 a, Lanes16 b) { return {_mm256_max_epi16(a.v, b.v)}; }

inline Lanes8 lowHalf(Lanes16 a) { return {_mm256_cvtepi16_epi32(_mm256_castsi256_si128(a.v))}; }
inline Lanes8 highHalf(Lanes16 a) { return {_mm256_cvtepi16_epi32(_mm256_extracti128_si256(a.v, 1))}; }
inline Lanes16 join(Lanes8 lo, Lanes8 hi) { return {_mm256_permute4x64_epi64(_mm256_packs_epi32(lo.v, hi.v), 0xd8)}; }

inline Lanes16 roundedQuotient(Lanes16 diff, Lanes16 twoN) { return {roundedQuotientEpi16(diff.v, twoN.v)}; }
inline Lanes16 clampI(Lanes16 x, int32_t hi)
{
    return {_mm256_min_epi16(_mm256_max_epi16(x.v, _mm256_setzero_si256()), _mm256_set1_epi16(int16_t(hi)))};
}
inline Lanes16 applyGain(Lanes16 v, float gain, float hi)
{
    return join(applyGain(lowHalf(v), gain, hi), applyGain(highHalf(v), gain, hi));
}

inline void splat(int32_t& x, int32_t k) { x = k; }
inline void splat(Lanes8& x, int32_t k) { x = {_mm256_set1_epi32(k)}; }
inline void splat(Lanes16& x, int32_t k) { x = {_mm256_set1_epi16(int16_t(k))}; }

// ---- one pixel --------------------------------------------------------------

// B, G, R of the pixel(s) whose samples `at(i, j)` gives (i rows down, j
// columns right), all of one site class: green sites when `Green`, red or
// blue sites otherwise. `redRow` says whether the row holds red sites.
template <bool Green, class V, class At>
__attribute__((always_inline)) inline void vngPixel(At at, bool redRow, int32_t hi, const float* gains, V& b, V& g, V& r)
{
    // A pair is taken in one order whichever way it is written, so that the
    // pairs shared by two directions, or by neighbouring pixels computed
    // together, are computed once.
    auto d = [&](int i0, int j0, int i1, int j1) {
        return i0 < i1 || (i0 == i1 && j0 < j1) ? absDiff(at(i0, j0), at(i1, j1)) : absDiff(at(i1, j1), at(i0, j0));
    };
    const V p = at(0, 0);

    // Gradients, the weights doubled to whole numbers.
    V grad[8];
    grad[0] = twice(d(-1, 0, 1, 0) + d(-2, 0, 0, 0)) + d(-1, -1, 1, -1) + d(-1, 1, 1, 1) + d(-2, -1, 0, -1) + d(-2, 1, 0, 1);
    grad[1] = twice(d(0, 1, 0, -1) + d(0, 2, 0, 0)) + d(-1, 1, -1, -1) + d(1, 1, 1, -1) + d(-1, 2, -1, 0) + d(1, 2, 1, 0);
    grad[2] = twice(d(1, 0, -1, 0) + d(2, 0, 0, 0)) + d(1, 1, -1, 1) + d(1, -1, -1, -1) + d(2, 1, 0, 1) + d(2, -1, 0, -1);
    grad[3] = twice(d(0, -1, 0, 1) + d(0, -2, 0, 0)) + d(-1, -1, -1, 1) + d(1, -1, 1, 1) + d(-1, -2, -1, 0) + d(1, -2, 1, 0);
    if constexpr (Green) {
        // Diagonals at a green site: four pairs of equal weight.
        grad[4] = twice(d(0, -1, -2, 1) + d(1, 0, -1, 2) + d(0, 0, -2, 2) + d(1, -1, -1, 1));
        grad[5] = twice(d(0, -1, 2, 1) + d(-1, 0, 1, 2) + d(-1, -1, 1, 1) + d(0, 0, 2, 2));
        grad[6] = twice(d(-2, -2, 0, 0) + d(-1, -1, 1, 1) + d(-1, -2, 1, 0) + d(-2, -1, 0, 1));
        grad[7] = twice(d(2, -1, 0, 1) + d(-1, 0, 1, -2) + d(0, 0, 2, -2) + d(-1, 1, 1, -1));
    } else {
        // Diagonals at a red or blue site.
        grad[4] = twice(d(-1, 1, 1, -1) + d(-2, 2, 0, 0)) + d(-1, 0, 0, -1) + d(0, 1, 1, 0) + d(-2, 1, -1, 0) + d(-1, 2, 0, 1);
        grad[5] = twice(d(1, 1, -1, -1) + d(2, 2, 0, 0)) + d(0, -1, 1, 0) + d(-1, 0, 0, 1) + d(1, 2, 0, 1) + d(2, 1, 1, 0);
        grad[6] = twice(d(-1, -1, 1, 1) + d(-2, -2, 0, 0)) + d(0, -1, 1, 0) + d(-1, 0, 0, 1) + d(-1, -2, 0, -1) + d(-2, -1, -1, 0);
        grad[7] = twice(d(1, -1, -1, 1) + d(2, -2, 0, 0)) + d(1, 0, 0, 1) + d(0, -1, -1, 0) + d(2, -1, 1, 0) + d(1, -2, 0, -1);
    }

    // Threshold: the least gradient plus half the greatest, at least plus 1.
    V gmin = grad[0], gmax = grad[0];
    for (int k = 1; k < 8; ++k) {
        gmin = lanesMin(gmin, grad[k]);
        gmax = lanesMax(gmax, grad[k]);
    }
    V one, zero;
    splat(one, 1);
    splat(zero, 0);
    const V threshold = gmin + lanesMax(half(gmax), one);

    // Twice the estimates of each direction: the pixel's own colour, then
    // the two others. At a red or blue site the others are green and the
    // opposite colour; at a green site the row's colour and the column's.
    auto sum2 = [&](int i0, int j0, int i1, int j1) { return at(i0, j0) + at(i1, j1); };
    auto sum4h = [&](int i0, int j0, int i1, int j1, int i2, int j2, int i3, int j3) {
        return half(at(i0, j0) + at(i1, j1) + at(i2, j2) + at(i3, j3));
    };
    V own[8], first[8], second[8];
    // N, E, S, W: the same own pairs at both sites.
    own[0] = sum2(-2, 0, 0, 0);
    own[1] = sum2(0, 0, 0, 2);
    own[2] = sum2(0, 0, 2, 0);
    own[3] = sum2(0, -2, 0, 0);
    first[1] = twice(at(0, 1));
    first[3] = twice(at(0, -1));
    if constexpr (Green) {
        own[4] = twice(at(-1, 1));
        own[5] = twice(at(1, 1));
        own[6] = twice(at(-1, -1));
        own[7] = twice(at(1, -1));
        first[0] = sum2(-2, -1, -2, 1);
        first[2] = sum2(2, -1, 2, 1);
        first[4] = sum2(-2, 1, 0, 1);
        first[5] = sum2(0, 1, 2, 1);
        first[6] = sum2(-2, -1, 0, -1);
        first[7] = sum2(0, -1, 2, -1);
        second[0] = twice(at(-1, 0));
        second[1] = sum2(-1, 2, 1, 2);
        second[2] = twice(at(1, 0));
        second[3] = sum2(-1, -2, 1, -2);
        second[4] = sum2(-1, 0, -1, 2);
        second[5] = sum2(1, 0, 1, 2);
        second[6] = sum2(-1, -2, -1, 0);
        second[7] = sum2(1, -2, 1, 0);
    } else {
        own[4] = sum2(-2, 2, 0, 0);
        own[5] = sum2(0, 0, 2, 2);
        own[6] = sum2(-2, -2, 0, 0);
        own[7] = sum2(0, 0, 2, -2);
        first[0] = twice(at(-1, 0));
        first[2] = twice(at(1, 0));
        first[4] = sum4h(-2, 1, -1, 0, -1, 2, 0, 1);
        first[5] = sum4h(0, 1, 1, 0, 1, 2, 2, 1);
        first[6] = sum4h(-2, -1, -1, -2, -1, 0, 0, -1);
        first[7] = sum4h(0, -1, 1, -2, 1, 0, 2, -1);
        second[0] = sum2(-1, -1, -1, 1);
        second[1] = sum2(-1, 1, 1, 1);
        second[2] = sum2(1, -1, 1, 1);
        second[3] = sum2(-1, -1, 1, -1);
        second[4] = twice(at(-1, 1));
        second[5] = twice(at(1, 1));
        second[6] = twice(at(-1, -1));
        second[7] = twice(at(1, -1));
    }
    V so = zero, s1 = zero, s2 = zero, n = zero;
    for (int k = 0; k < 8; ++k) {
        const V sel = below(grad[k], threshold);
        so = so + keep(sel, own[k]);
        s1 = s1 + keep(sel, first[k]);
        s2 = s2 + keep(sel, second[k]);
        n = n - sel;
    }
    const V twoN = twice(n);
    const V v1 = clampI(p + roundedQuotient(s1 - so, twoN), hi);
    const V v2 = clampI(p + roundedQuotient(s2 - so, twoN), hi);

    // Red or blue site: own colour p, green v1, opposite v2.
    // Green site: green p, row colour v1, column colour v2.
    g = Green ? p : v1;
    const V rowColour = Green ? v1 : p;  // the colour of the row's red or blue sites
    r = redRow ? rowColour : v2;
    b = redRow ? v2 : rowColour;
    if (gains) {
        b = applyGain(b, gains[0], float(hi));
        g = applyGain(g, gains[1], float(hi));
        r = applyGain(r, gains[2], float(hi));
    }
}

// ---- rows -------------------------------------------------------------------

template <class T>
inline T loadElem(const T* p)
{
    T v;
    std::memcpy(&v, p, sizeof(T));
    return v;
}
template <class T>
inline void storeElem(T* p, int32_t v)
{
    const T x = static_cast<T>(v);
    std::memcpy(p, &x, sizeof(T));
}

// The vector lanes of each type: sixteen 16-bit lanes for 8u, eight 32-bit
// lanes for 16u. A register holds every other pixel, so that all its lanes
// are of one site class: one load of twice as many elements yields the even
// columns in the low half of each lane and the odd ones in the high half.
template <class T>
struct VngLanes;
template <>
struct VngLanes<uint8_t> {
    using V = Lanes16;
    static constexpr int kCount = 16;
    static __m256i loadPairs(const uint8_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
    static V even(__m256i x) { return {_mm256_and_si256(x, _mm256_set1_epi16(0xff))}; }
    static V odd(__m256i x) { return {_mm256_srli_epi16(x, 8)}; }
    // Back to elements: bytes, then byte pairs, then pixels.
    static __m256i merge(V e, V o) { return _mm256_or_si256(e.v, _mm256_slli_epi16(o.v, 8)); }
    static __m256i unpackLo(__m256i a, __m256i b) { return _mm256_unpacklo_epi8(a, b); }
    static __m256i unpackHi(__m256i a, __m256i b) { return _mm256_unpackhi_epi8(a, b); }
    static __m256i unpackLo2(__m256i a, __m256i b) { return _mm256_unpacklo_epi16(a, b); }
    static __m256i unpackHi2(__m256i a, __m256i b) { return _mm256_unpackhi_epi16(a, b); }
    static __m256i keepAlpha() { return _mm256_set1_epi32(int32_t(0xff000000u)); }
};
template <>
struct VngLanes<uint16_t> {
    using V = Lanes8;
    static constexpr int kCount = 8;
    static __m256i loadPairs(const uint16_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
    static V even(__m256i x) { return {_mm256_and_si256(x, _mm256_set1_epi32(0xffff))}; }
    static V odd(__m256i x) { return {_mm256_srli_epi32(x, 16)}; }
    static __m256i merge(V e, V o) { return _mm256_or_si256(e.v, _mm256_slli_epi32(o.v, 16)); }
    static __m256i unpackLo(__m256i a, __m256i b) { return _mm256_unpacklo_epi16(a, b); }
    static __m256i unpackHi(__m256i a, __m256i b) { return _mm256_unpackhi_epi16(a, b); }
    static __m256i unpackLo2(__m256i a, __m256i b) { return _mm256_unpacklo_epi32(a, b); }
    static __m256i unpackHi2(__m256i a, __m256i b) { return _mm256_unpackhi_epi32(a, b); }
    static __m256i keepAlpha() { return _mm256_set1_epi64x(int64_t(0xffff000000000000ull)); }
};

// Pixels into BGRA, keeping the alpha already there.
inline void storeAlphaKept(__m256i* q, __m256i bgr, __m256i keepAlpha)
{
    _mm256_storeu_si256(q, _mm256_or_si256(bgr, _mm256_and_si256(_mm256_loadu_si256(q), keepAlpha)));
}
// A run of pixels from four registers whose low halves hold the run's first
// half, in order, and whose high halves hold its second half.
inline void storeQuarters(void* d, __m256i q0, __m256i q1, __m256i q2, __m256i q3, __m256i keepAlpha)
{
    auto* q = static_cast<__m256i*>(d);
    storeAlphaKept(q, _mm256_permute2x128_si256(q0, q1, 0x20), keepAlpha);
    storeAlphaKept(q + 1, _mm256_permute2x128_si256(q2, q3, 0x20), keepAlpha);
    storeAlphaKept(q + 2, _mm256_permute2x128_si256(q0, q1, 0x31), keepAlpha);
    storeAlphaKept(q + 3, _mm256_permute2x128_si256(q2, q3, 0x31), keepAlpha);
}
// B, G, R of even (e) and odd (o) pixels into BGRA, keeping the alpha: each
// colour's even and odd lanes merged into elements in pixel order (within
// each 128-bit half), then B with G and R with zero interleaved, then the
// two pairs into whole pixels.
template <class T, class V>
inline void storeLanes(T* d, V be, V ge, V re, V bo, V go, V ro)
{
    using L = VngLanes<T>;
    const __m256i b = L::merge(be, bo), g = L::merge(ge, go), r = L::merge(re, ro);
    const __m256i zero = _mm256_setzero_si256();
    const __m256i bgLo = L::unpackLo(b, g), bgHi = L::unpackHi(b, g);
    const __m256i rLo = L::unpackLo(r, zero), rHi = L::unpackHi(r, zero);
    // For 8u: pixels 0-3 | 16-19, 4-7 | 20-23, 8-11 | 24-27, 12-15 | 28-31.
    storeQuarters(d, L::unpackLo2(bgLo, rLo), L::unpackHi2(bgLo, rLo), L::unpackLo2(bgHi, rHi), L::unpackHi2(bgHi, rHi),
                  L::keepAlpha());
}

// Even and odd pixels of one register pair: even lanes at sites of class
// `EvenGreen`, odd lanes at the other class. The neighbourhoods are computed
// side by side so that the pairs the two classes share are measured once.
template <bool EvenGreen, class T, class V>
inline void vngPairs(const V (&nb)[5][6], bool redRow, const float* gains, T* d)
{
    constexpr int32_t hi = (1 << (8 * sizeof(T))) - 1;
    // nb[i][k]: row i - 2, column offset k - 2 from the even pixel.
    auto atE = [&](int i, int j) { return nb[i + 2][j + 2]; };
    auto atO = [&](int i, int j) { return nb[i + 2][j + 3]; };
    V be, ge, re, bo, go, ro;
    vngPixel<EvenGreen>(atE, redRow, hi, gains, be, ge, re);
    vngPixel<!EvenGreen>(atO, redRow, hi, gains, bo, go, ro);
    storeLanes(d, be, ge, re, bo, go, ro);
}

// Interior row `r`, columns [x0, x0 + width), into `d` (four elements a
// pixel). The vector path takes whole register pairs of pixels from x0 on and
// a last pair that overlaps them; the scalar form takes rows narrower than a
// pair.
template <class T>
void vngRow(const T* src, int srcStep, const Grid& grid, int r, int x0, int width, const float* gains, T* d)
{
    constexpr int32_t hi = (1 << (8 * sizeof(T))) - 1;
    const bool redRow = grid.redRowAt(r);
    using L = VngLanes<T>;
    using V = typename L::V;
    constexpr int kStep = 2 * L::kCount;
    const int nv = g_scalarBlocks ? 0 : width / kStep * kStep;
    auto block = [&](int i) {
        const int c = x0 + i;
        // Columns c - 2 .. c + 2 * kCount + 1, as even and odd lanes.
        V nb[5][6];
        for (int di = 0; di < 5; ++di) {
            const T* s = rowAt(src, srcStep, r + di - 2) + c;
            for (int k = 0; k < 3; ++k) {
                const __m256i x = L::loadPairs(s + 2 * k - 2);
                nb[di][2 * k] = L::even(x);
                nb[di][2 * k + 1] = L::odd(x);
            }
        }
        if (grid.colourSiteAt(r, c))
            vngPairs<false>(nb, redRow, gains, d + 4 * i);
        else
            vngPairs<true>(nb, redRow, gains, d + 4 * i);
    };
    for (int i = 0; i < nv; i += kStep)
        block(i);
    if (nv > 0 && nv < width) {
        // The last pixels as one more pair ending at the row's end; it
        // recomputes some pixels of the previous one, to the same values.
        block(width - kStep);
        return;
    }
    for (int i = nv; i < width; ++i) {
        const int c = x0 + i;
        int32_t nb[5][5];
        for (int di = 0; di < 5; ++di)
            for (int dj = 0; dj < 5; ++dj)
                nb[di][dj] = loadElem(rowAt(src, srcStep, r + di - 2) + c + dj - 2);
        auto at = [&](int di, int dj) { return nb[di + 2][dj + 2]; };
        int32_t b, g, rr;
        if (grid.colourSiteAt(r, c))
            vngPixel<false>(at, redRow, hi, gains, b, g, rr);
        else
            vngPixel<true>(at, redRow, hi, gains, b, g, rr);
        storeElem(d + 4 * i, b);
        storeElem(d + 4 * i + 1, g);
        storeElem(d + 4 * i + 2, rr);
    }
}

template <class T>
OrvStatus ownCFAToBGRA_VNG(const T* src, OrvRect roi, RoiSize size, int srcStep, const float* scale, T* dst, int dstStep,
                           int grid)
{
    if (!src || !dst)
        return orvStatusNullPointer;
    if (size.width < 5 || size.height < 5)
        return orvStatusBadSize;
    if (!Grid::valid(grid))
        return orvStatusBadArgument;
    if (roi.width < 1 || roi.height < 1)
        return orvStatusOk;
    const int xEnd = roi.x + roi.width, yEnd = roi.y + roi.height;
    const int x0 = std::max(roi.x, 2), y0 = std::max(roi.y, 2);
    const int x1 = std::min(xEnd - 1, size.width - 3), y1 = std::min(yEnd - 1, size.height - 3);
    // A rectangle without an interior pixel has nothing to replicate from:
    // it is left as it is.
    if (x1 < x0 || y1 < y0)
        return orvStatusOk;
    const Grid g = Grid::of(grid);
    auto out = [&](int r, int c) { return rowAt(dst, dstStep, r - roi.y) + 4 * (c - roi.x); };
    for (int r = y0; r <= y1; ++r)
        vngRow(src, srcStep, g, r, x0, x1 - x0 + 1, scale, out(r, x0));

    // The frame of the rectangle: whole output pixels of the nearest
    // interior pixel, alpha included; columns over the interior rows first,
    // then rows over the whole width.
    constexpr int px = 4 * sizeof(T);
    auto copy = [&](int fromR, int fromC, int toR, int toC, int w, int h) {
        orviCopy_8u_C1R_L(reinterpret_cast<const Orv8u*>(out(fromR, fromC)), dstStep,
                          reinterpret_cast<Orv8u*>(out(toR, toC)), dstStep, {w * px, h});
    };
    const int ih = y1 - y0 + 1;
    if (roi.x == 0)
        copy(y0, x0, y0, 0, 1, ih);
    if (roi.x < 2)
        copy(y0, x0, y0, 1, 1, ih);
    if (x1 + 1 < xEnd)
        copy(y0, x1, y0, x1 + 1, 1, ih);
    if (x1 + 2 < xEnd)
        copy(y0, x1, y0, x1 + 2, 1, ih);
    const int fx = std::max(roi.x, x0 - 2), fw = std::min(xEnd, x1 + 3) - fx;
    if (roi.y == 0)
        copy(y0, fx, 0, fx, fw, 1);
    if (roi.y < 2)
        copy(y0, fx, 1, fx, fw, 1);
    if (y1 + 1 < yEnd)
        copy(y1, fx, y1 + 1, fx, fw, 1);
    if (y1 + 2 < yEnd)
        copy(y1, fx, y1 + 2, fx, fw, 1);
    return orvStatusOk;
}

}  // namespace
}  // namespace h9

using namespace h9;

ORV_FRONT(orviCFAToBGRA_VNG_8u_C1C4R_L)(const Orv8u* pSrc, OrvRect srcRoi, RoiSize srcSize, int srcStep,
                                        const Orv32f scale[3], Orv8u* pDst, int dstStep, OrvBayerGrid grid)
{
    return ownCFAToBGRA_VNG(pSrc, srcRoi, srcSize, srcStep, scale, pDst, dstStep, grid);
}

ORV_FRONT(orviCFAToBGRA_VNG_16u_C1C4R_L)(const Orv16u* pSrc, OrvRect srcRoi, RoiSize srcSize, int srcStep,
                                         const Orv32f scale[3], Orv16u* pDst, int dstStep, OrvBayerGrid grid)
{
    return ownCFAToBGRA_VNG(pSrc, srcRoi, srcSize, srcStep, scale, pDst, dstStep, grid);
}
