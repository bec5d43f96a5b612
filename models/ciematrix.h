// The single-precision RGB-XYZ matrices (D65 white, BT.709 primaries) that
// the XYZ, LUV and Lab conversions share, [output][input].
#pragma once

#include "models/pixels3.h"

namespace h9 {

struct Matrix32f {
    float c[3][3];
};

// Rows sum to the white point 0.950456, 1.0, 1.088754.
inline constexpr Matrix32f kToXyz = {{{0.412453f, 0.357580f, 0.180423f},
                                      {0.212671f, 0.715160f, 0.072169f},
                                      {0.019334f, 0.119193f, 0.950227f}}};
inline constexpr Matrix32f kToRgb = {{{3.240479f, -1.537150f, -0.498535f},
                                      {-0.969256f, 1.875991f, 0.041556f},
                                      {0.055648f, -0.204043f, 1.057311f}}};

// One row of a matrix on one pixel or eight, fused: c2 in2 rounded, then
// c1 in1 and c3 in3 added each with one rounding.
template <class F>
inline F dotFused(const float* c, F a, F b, F e)
{
    using namespace lanes;
    return fmadd(e, F(c[2]), fmadd(a, F(c[0]), b * F(c[1])));
}

// The same row step by step: (c1 in1 + c2 in2) + c3 in3.
template <class F>
inline F dotPlain(const float* c, F a, F b, F e)
{
    return (a * F(c[0]) + b * F(c[1])) + e * F(c[2]);
}

}  // namespace h9
