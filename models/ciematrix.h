// The single-precision RGB-XYZ matrices (D65 white, BT.709 primaries) that
// the XYZ, LUV and Lab conversions share, [output][input].
#pragma once

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

}  // namespace h9
