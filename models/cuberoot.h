// Cube roots of values in 0..1 by the table of starting roots and the
// binomial series of (1 + d)^(1/3), for the perceptual models. The series
// is cut after d^4, d^6 or d^8 depending on the precision the element type
// needs; each cut has its own order of evaluation, and the powers of d come
// one from the last by a rounded multiplication.
#pragma once

#include "models/pixels3.h"
#include "models/powluv.h"

namespace h9::cuberoot {

using namespace lanes;

// Index of the pair for a value on the scale 0..1: truncate(v * 127.99805),
// kept within the table for values outside 0..1 and NaN.
template <class F>
inline IntOf<F> index01(F v, int size)
{
    return clampI(truncI(v * F(127.99805f)), 0, size - 1);
}

// The same index for values already cut to at most 1.0 (NaN cut to 1.0 as
// well): the product stays below 128, so only the lower bound is left to
// apply, for negative values.
template <class F>
inline IntOf<F> index01AtMostOne(F v)
{
    return maxI(truncI(v * F(127.99805f)), 0);
}

// The same index for values known to lie in 0 .. 1.0000152 (sums of
// non-negative weights of 8-bit samples, normalised to 1 at full scale, which
// come out within a few units in the last place of 1): truncation alone stays
// within 0..127, and the vector path saves the clamp.
template <class F>
inline IntOf<F> index01InRange(F v)
{
    return truncI(v * F(127.99805f));
}

// d = (v - c^3) / x with the subtraction of (c c) c fused.
template <class F>
inline F offsetFused(F v, F c, F b)
{
    return fnmadd(c * c, c, v) * b;
}
inline float offsetPlain(float v, float c, float b) { return (v - (c * c) * c) * b; }

// Term by term from 1 upward, nothing fused, to d^N; `kAt4` is the
// coefficient that stands at d^4.
template <int N>
inline float seriesTerms(float d, float kAt4 = powluv::k4)
{
    const float k[9] = {1.0f, powluv::k1, powluv::k2, powluv::k3, kAt4, powluv::k5, powluv::k6, powluv::k7, powluv::k8};
    float s = 1.0f;
    float p = 1.0f;
    for (int n = 1; n <= N; ++n) {
        p = p * d;
        const float t = k[n] * p;
        s = (n & 1) ? s + t : s - t;
    }
    return s;
}

// Root c (1 + k1 d - k2 d^2 + k3 d^3 - kAt4 d^4) by Horner's rule from the
// top: h ends as the negated series.
template <class F>
inline F rootHorner4(F d, F c, float kAt4)
{
    F h = fmsub(d, F(kAt4), F(powluv::k3));
    h = fmadd(h, d, F(powluv::k2));
    h = fmsub(h, d, F(powluv::k1));
    h = fmsub(h, d, F(1.0f));
    return -(h * c);
}

// The series to d^6 as the odd terms less the even ones and -1.
template <class F>
inline F series6(F d)
{
    using namespace powluv;
    const F d2 = d * d, d3 = d2 * d, d4 = d3 * d, d5 = d4 * d, d6 = d5 * d;
    return fmadd(F(k1), d, fmadd(F(k3), d3, F(k5) * d5)) - fmadd(F(k2), d2, fmadd(F(k4), d4, fmsub(F(k6), d6, F(1.0f))));
}

// The series to d^8 in two halves: the terms of degree 0 and 5 to 8, and
// those of degree 1 to 4.
template <class F>
inline F series8(F d)
{
    using namespace powluv;
    const F d2 = d * d, d3 = d2 * d, d4 = d3 * d, d5 = d4 * d, d6 = d5 * d, d7 = d6 * d, d8 = d7 * d;
    const F high = fmadd(F(k5), d5, fmadd(F(k7), d7, F(1.0f))) - fmadd(F(k6), d6, F(k8) * d8);
    const F low = fmadd(F(k1), d, F(k3) * d3) - fmadd(F(k2), d2, F(k4) * d4);
    return high + low;
}

}  // namespace h9::cuberoot
