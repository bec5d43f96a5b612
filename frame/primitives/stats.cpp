// Maximum, sum and mean of a float image.
//
// Rows lie at byte offsets y * srcStep from `src`; a step need not be a
// multiple of 4, so elements are read with unaligned loads.
#include <immintrin.h>

#include <cstring>

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

// The four running sums of the plain path (see the header).
double sumFourWays(const Orv32f* src, int srcStep, int width, int height)
{
    alignas(32) double s[4] = {0.0, 0.0, 0.0, 0.0};
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
