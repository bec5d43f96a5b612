// Maximum, sum and mean of a float image.
//
// Rows lie at byte offsets y * srcStep from `src`; a step need not be a
// multiple of 4, so elements are read with unaligned loads.
#include <immintrin.h>

#include <cstring>
#include <limits>

#include "frame/driver.h"
#include "frame/primitives/primitives.h"

namespace h9 {
namespace {

inline const Orv32f* floatRow(const Orv32f* src, int srcStep, int y)
{
    return reinterpret_cast<const Orv32f*>(reinterpret_cast<const char*>(src) + std::ptrdiff_t(y) * srcStep);
}

inline float loadFloat(const Orv32f* p)
{
    float v;
    std::memcpy(&v, p, 4);
    return v;
}

// The running maximum: a NaN candidate never wins, a NaN running value
// never loses. maxps(v, m) computes exactly this.
inline float runningMax(float v, float m) { return v > m ? v : m; }

// Scalar form: every element in scan order.
float maxScalar(const Orv32f* src, int srcStep, int width, int height)
{
    float m = loadFloat(src);
    for (int y = 0; y < height; ++y) {
        const Orv32f* r = floatRow(src, srcStep, y);
        for (int x = 0; x < width; ++x)
            m = runningMax(loadFloat(r + x), m);
    }
    return m;
}

// Vector path: four registers of running maxima, all seeded with the first
// element, rows of 8 or more by vectors, narrower rows and row ends by
// single elements. Without NaN (which never enters a running value) the
// maximum does not depend on the order, except for the sign of a zero
// result: the scan-order result is the first zero of the image, so a zero
// result is taken from the scalar form.
float maxVector(const Orv32f* src, int srcStep, int width, int height)
{
    const float first = loadFloat(src);
    __m256 m0 = _mm256_set1_ps(first), m1 = m0, m2 = m0, m3 = m0;
    float m = first;
    for (int y = 0; y < height; ++y) {
        const Orv32f* r = floatRow(src, srcStep, y);
        int x = 0;
        if (width >= 8) {
            for (; x + 32 <= width; x += 32) {
                m0 = _mm256_max_ps(_mm256_loadu_ps(r + x), m0);
                m1 = _mm256_max_ps(_mm256_loadu_ps(r + x + 8), m1);
                m2 = _mm256_max_ps(_mm256_loadu_ps(r + x + 16), m2);
                m3 = _mm256_max_ps(_mm256_loadu_ps(r + x + 24), m3);
            }
            for (; x + 8 <= width; x += 8)
                m0 = _mm256_max_ps(_mm256_loadu_ps(r + x), m0);
        }
        for (; x < width; ++x)
            m = runningMax(loadFloat(r + x), m);
    }
    alignas(32) float lanes[32];
    _mm256_store_ps(lanes, m0);
    _mm256_store_ps(lanes + 8, m1);
    _mm256_store_ps(lanes + 16, m2);
    _mm256_store_ps(lanes + 24, m3);
    for (float v : lanes)
        m = runningMax(v, m);
    if (m == 0.0f)
        return maxScalar(src, srcStep, width, height);
    return m;
}

// The four running sums of the plain path (see the header), element x of a
// row into sum x % 4, in order.
//
// In order, the sums take one addition of four doubles per four elements,
// each waiting for the one before: the adder's latency bounds the pass
// (about 0.35 ms for a 1920x1080 image here, against 0.10 ms to read it). A
// run of n elements (n / 4 into each sum) may be added in any order where no
// addition in it rounds, for then every order gives the exact total. For a
// running sum s and the elements v of the run that go into it, let
// top = |s| + (n / 4) max|v| and P = 2^e with P <= top < 2P. No addition
// rounds when
//  - top < 2P by a margin that covers the rounding of top itself;
//  - each element is zero or at least 2^(e-29) in magnitude, so a float whose
//    own last place is at least U = 2^(e-52): a multiple of U;
//  - s is a multiple of U (tested on s / U, for |s| >= 2^(e-60) so that the
//    quotient is exact).
// Then every partial sum, in any order, is a multiple of U no larger than
// top < 2^53 U in magnitude, which a double holds exactly. Runs are 256
// elements, tested for all four sums after being added up apart; a run that
// fails (a zero, infinite or NaN sum, a tiny, infinite or NaN element, a sum
// with low bits below U) is added in order. Exact additions do not depend on
// the rounding mode either.
//
// The run loop is bound by the conversions and additions (both on the
// adder's two pipes: about 2 cycles per 8 elements here), the test costs
// about a dozen cycles a run: runs of 256 against 128 took the pass from
// 0.23 to 0.22 ms, 512 measured slower again (more runs fail and go in
// order). The in-order fallback (64 dependent additions) is cheaper than
// testing the run again in pieces. Each step also asks for the line 1 KiB
// ahead (a hint: it never faults, and reads nothing for the program); from
// the last-level cache that took the pass from 0.225 to 0.215 ms.
//
// Images without negative elements (the usual case) make their doubles
// without the converter: a float f >= 0 with bits B is, read as the double
// with bits B << 29, exactly f * 2^-896 (exponent and fraction land in
// place; subnormal floats land on subnormal doubles), and B << 29 is the
// 64-bit product of B, the low half of a 64-bit lane, by 2^29 on the
// multiplier's pipes. The run as loaded gives the even elements, the run
// loaded one float further on the odd ones (so an element must follow the
// run in the row); the sums come back by 2^896, exactly. The same bits give
// the largest element and the smallest nonzero one, and the test as above
// with the largest element finite and not negative (-0 included). In
// cycles per 8 elements in the cache, 2.09 -> 1.82. Once a run holds a
// negative element, the image's later runs take the converter. The test
// asks for P >= 2^-96: no nonzero element that passes is below 2^-125, so
// no scaled element or sum is subnormal, and modes that flush subnormals
// to zero see none.
constexpr int kRun = 256, kAhead = 1024;

struct RunTotals {
    __m256d total;
    __m256i maxBits;  // per sum, the largest |v| as float bits
    __m256i minBits;  // per sum, the smallest |v| - 1 as float bits (zero wraps to the top)
};

inline RunTotals addRun(const Orv32f* r)
{
    const __m256i magnitude = _mm256_set1_epi32(0x7fffffff), one = _mm256_set1_epi32(1);
    __m256d t0 = _mm256_setzero_pd(), t1 = t0;
    __m256i hi = _mm256_setzero_si256(), lo = _mm256_set1_epi32(-1);
#pragma GCC unroll 2
    for (int x = 0; x < kRun; x += 16) {
        _mm_prefetch(reinterpret_cast<const char*>(r + x) + kAhead, _MM_HINT_T0);
        for (int k = x; k < x + 16; k += 8) {
            const __m256i bits = _mm256_and_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(r + k)), magnitude);
            hi = _mm256_max_epu32(hi, bits);
            lo = _mm256_min_epu32(lo, _mm256_sub_epi32(bits, one));
            t0 = _mm256_add_pd(t0, _mm256_cvtps_pd(_mm_loadu_ps(r + k)));
            t1 = _mm256_add_pd(t1, _mm256_cvtps_pd(_mm_loadu_ps(r + k + 4)));
        }
    }
    return {_mm256_add_pd(t0, t1), hi, lo};
}

// A run without negative elements (see above); its totals are only valid
// where finiteNonNegative holds.
inline RunTotals addNonNegativeRun(const Orv32f* r)
{
    const __m256i one = _mm256_set1_epi32(1), shift = _mm256_set1_epi64x(1LL << 29);
    __m256d e0 = _mm256_setzero_pd(), o0 = e0, e1 = e0, o1 = e0;  // e: sums 0 2 0 2, o: sums 1 3 1 3
    __m256i hi = _mm256_setzero_si256(), lo = _mm256_set1_epi32(-1);
    auto load = [&](int k) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(r + k)); };
#pragma GCC unroll 2
    for (int x = 0; x < kRun; x += 16) {
        _mm_prefetch(reinterpret_cast<const char*>(r + x) + kAhead, _MM_HINT_T0);
        const __m256i a = load(x), b = load(x + 8);
        hi = _mm256_max_epu32(hi, _mm256_max_epu32(a, b));
        lo = _mm256_min_epu32(lo, _mm256_min_epu32(_mm256_sub_epi32(a, one), _mm256_sub_epi32(b, one)));
        e0 = _mm256_add_pd(e0, _mm256_castsi256_pd(_mm256_mul_epu32(a, shift)));
        o0 = _mm256_add_pd(o0, _mm256_castsi256_pd(_mm256_mul_epu32(load(x + 1), shift)));
        e1 = _mm256_add_pd(e1, _mm256_castsi256_pd(_mm256_mul_epu32(b, shift)));
        o1 = _mm256_add_pd(o1, _mm256_castsi256_pd(_mm256_mul_epu32(load(x + 9), shift)));
    }
    const __m256d e = _mm256_add_pd(e0, e1), o = _mm256_add_pd(o0, o1);
    const __m128d e2 = _mm_add_pd(_mm256_castpd256_pd128(e), _mm256_extractf128_pd(e, 1));  // sums 0 2
    const __m128d o2 = _mm_add_pd(_mm256_castpd256_pd128(o), _mm256_extractf128_pd(o, 1));  // sums 1 3
    const __m256d t = _mm256_set_m128d(_mm_unpackhi_pd(e2, o2), _mm_unpacklo_pd(e2, o2));
    return {_mm256_mul_pd(t, _mm256_set1_pd(0x1p896)), hi, lo};
}

// Whether the largest element, as float bits, is finite and not negative.
inline bool finiteNonNegative(const RunTotals& t)
{
    const __m128i hi = _mm_max_epu32(_mm256_castsi256_si128(t.maxBits), _mm256_extracti128_si256(t.maxBits, 1));
    return _mm_movemask_epi8(_mm_cmpeq_epi32(_mm_min_epu32(hi, _mm_set1_epi32(0x7f7fffff)), hi)) == 0xffff;
}

// Whether s + the run's total equals the in-order sums, for all four sums.
inline bool runIsExact(__m256d s, const RunTotals& t)
{
    const __m128i hi = _mm_max_epu32(_mm256_castsi256_si128(t.maxBits), _mm256_extracti128_si256(t.maxBits, 1));
    const __m128i lo = _mm_min_epu32(_mm256_castsi256_si128(t.minBits), _mm256_extracti128_si256(t.minBits, 1));
    const __m256d mag = _mm256_andnot_pd(_mm256_set1_pd(-0.0), s);
    const __m256d top = _mm256_add_pd(mag, _mm256_mul_pd(_mm256_set1_pd(kRun / 4), _mm256_cvtps_pd(_mm_castsi128_ps(hi))));
    const __m256d p = _mm256_and_pd(top, _mm256_set1_pd(std::numeric_limits<double>::infinity()));  // P
    const __m256d fits = _mm256_and_pd(
        _mm256_and_pd(_mm256_cmp_pd(p, _mm256_set1_pd(0x1p-96), _CMP_GE_OQ), _mm256_cmp_pd(p, _mm256_set1_pd(0x1p155), _CMP_LE_OQ)),
        _mm256_and_pd(_mm256_cmp_pd(top, _mm256_mul_pd(p, _mm256_set1_pd(2.0 - 0x1p-49)), _CMP_LT_OQ),
                      _mm256_cmp_pd(mag, _mm256_mul_pd(p, _mm256_set1_pd(0x1p-60)), _CMP_GE_OQ)));
    // s / U = s 2^52 / P; P is a power of two, so 2^52 / P by its exponent.
    const __m256d perUnit = _mm256_castsi256_pd(_mm256_sub_epi64(_mm256_set1_epi64x(2098LL << 52), _mm256_castpd_si256(p)));
    const __m256d q = _mm256_mul_pd(s, perUnit);
    const __m256d whole = _mm256_cmp_pd(_mm256_round_pd(q, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC), q, _CMP_EQ_OQ);
    const bool sumsFit = _mm256_movemask_pd(_mm256_and_pd(fits, whole)) == 0xf;
    // 2^(e-29) as a float, normal in the range tested above; no element other
    // than zero below it: min(|v| - 1) >= 2^(e-29) - 1.
    const __m128i least = _mm_castps_si128(_mm256_cvtpd_ps(_mm256_mul_pd(p, _mm256_set1_pd(0x1p-29))));
    const __m128i large = _mm_cmpeq_epi32(_mm_max_epu32(lo, _mm_sub_epi32(least, _mm_set1_epi32(1))), lo);
    return sumsFit & (_mm_movemask_epi8(large) == 0xffff);
}

double sumFourWays(const Orv32f* src, int srcStep, int width, int height)
{
    alignas(32) double s[4] = {0.0, 0.0, 0.0, 0.0};
    bool signedData = false;
    for (int y = 0; y < height; ++y) {
        const Orv32f* r = floatRow(src, srcStep, y);
        int x = 0;
        if (width < 17) {
            for (; x < width; ++x)
                s[0] += double(loadFloat(r + x));
            continue;
        }
        if (!g_scalarBlocks) {
            __m256d acc = _mm256_load_pd(s);
            for (; x + kRun <= width; x += kRun) {
                RunTotals t;
                if (!signedData && x + kRun < width) {
                    t = addNonNegativeRun(r + x);
                    signedData = !finiteNonNegative(t);
                }
                if (signedData || x + kRun == width)
                    t = addRun(r + x);
                if (runIsExact(acc, t)) {
                    acc = _mm256_add_pd(acc, t.total);
                } else {
                    for (int k = x; k < x + kRun; k += 4)
                        acc = _mm256_add_pd(acc, _mm256_cvtps_pd(_mm_loadu_ps(r + k)));
                }
            }
            for (; x + 4 <= width; x += 4)
                acc = _mm256_add_pd(acc, _mm256_cvtps_pd(_mm_loadu_ps(r + x)));
            _mm256_store_pd(s, acc);
        }
        for (; x < width; ++x)
            s[x % 4] += double(loadFloat(r + x));
    }
    return (s[0] + s[1]) + (s[2] + s[3]);
}

double sumInOrder(const Orv32f* src, int srcStep, int width, int height)
{
    double s = 0.0;
    for (int y = 0; y < height; ++y) {
        const Orv32f* r = floatRow(src, srcStep, y);
        for (int x = 0; x < width; ++x)
            s += double(loadFloat(r + x));
    }
    return s;
}

}  // namespace

OrvStatus orviMax_32f_C1R(const Orv32f* src, int srcStep, RoiSize roi, Orv32f* max)
{
    if (!src || !max)
        return orvStatusNullPointer;
    if (roi.width < 1 || roi.height < 1)
        return orvStatusBadSize;
    *max = g_scalarBlocks ? maxScalar(src, srcStep, roi.width, roi.height)
                          : maxVector(src, srcStep, roi.width, roi.height);
    return orvStatusOk;
}

OrvStatus orviSum_32f_C1R(const Orv32f* src, int srcStep, RoiSize roi, Orv64f* sum, int hint)
{
    if (!src || !sum)
        return orvStatusNullPointer;
    if (roi.width < 1 || roi.height < 1)
        return orvStatusBadSize;
    *sum = hint == 2 ? sumInOrder(src, srcStep, roi.width, roi.height)
                     : sumFourWays(src, srcStep, roi.width, roi.height);
    return orvStatusOk;
}

OrvStatus orviMean_32f_C1R(const Orv32f* src, int srcStep, RoiSize roi, Orv64f* mean, int hint)
{
    if (!mean)
        return orvStatusNullPointer;
    double sum = 0.0;
    const OrvStatus st = orviSum_32f_C1R(src, srcStep, roi, &sum, hint);
    if (st == orvStatusOk)
        *mean = sum / (double(roi.width) * double(roi.height));
    return st;
}

}  // namespace h9
