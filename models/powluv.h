// The cube-root table of the perceptual models and the series that finishes
// each root.
//
// Pair i, from 0, stands for the point x = (i + 1) / 127.99805 + 0.0001, just
// above the top of the interval of values that truncate(v * 127.99805) sends
// to i: c is the cube root of x to six decimals, b is 1 / x to seven
// significant digits (a leading zero of a value below 1 counts). A value v of
// that interval has v = c^3 (1 + d) with d = (v - c^3) / x, a small negative
// number, and its root is c (1 + d)^(1/3), a binomial series in d.
//
// Every pair is the float nearest those decimals. They come from x formed in
// double and the root taken in double as x to the power of the float nearest
// 1/3; the tests derive every pair again this way.
//
// The short table has 128 pairs. The long one, for data that reaches the
// interval's top through integer truncation of 16-bit values (index v >> 9
// of v in 0..65535), replaces pairs 124 to 127 by those of the points
// (i + 1) / 128 + 0.0001 and adds pair 128, (1, 1), for values that round up
// to the top of the scale.
#pragma once

#include <array>

namespace h9::powluv {

struct Pair {
    float c;  // starting root
    float b;  // reciprocal of the point whose root c is
};

alignas(64) inline constexpr Pair kShort[128] = {
    {0.199269f, 126.3804f}, {0.250533f, 63.59204f}, {0.286586f, 42.48475f}, {0.315317f, 31.89744f},
    {0.339593f, 25.53424f}, {0.360820f, 21.28760f}, {0.379807f, 18.25206f}, {0.397064f, 15.97420f},
    {0.412939f, 14.20181f}, {0.427678f, 12.78344f}, {0.441467f, 11.62266f}, {0.454444f, 10.65514f},
    {0.466719f, 9.836319f}, {0.478381f, 9.134367f}, {0.489500f, 8.525928f}, {0.500136f, 7.993483f},
    {0.510337f, 7.523632f}, {0.520147f, 7.105950f}, {0.529599f, 6.732204f}, {0.538726f, 6.395809f},
    {0.547554f, 6.091432f}, {0.556106f, 5.814710f}, {0.564402f, 5.562037f}, {0.572462f, 5.330409f},
    {0.580301f, 5.117302f}, {0.587933f, 4.920580f}, {0.595372f, 4.738422f}, {0.602630f, 4.569270f},
    {0.609718f, 4.411779f}, {0.616644f, 4.264782f}, {0.623418f, 4.127265f}, {0.630048f, 3.998340f},
    {0.636541f, 3.877225f}, {0.642904f, 3.763232f}, {0.649144f, 3.655750f}, {0.655266f, 3.554238f},
    {0.661276f, 3.458210f}, {0.667179f, 3.367236f}, {0.672979f, 3.280924f}, {0.678680f, 3.198928f},
    {0.684288f, 3.120929f}, {0.689805f, 3.046644f}, {0.695235f, 2.975813f}, {0.700581f, 2.908201f},
    {0.705848f, 2.843592f}, {0.711036f, 2.781792f}, {0.716150f, 2.722621f}, {0.721193f, 2.665915f},
    {0.726165f, 2.611523f}, {0.731071f, 2.559306f}, {0.735911f, 2.509136f}, {0.740689f, 2.460895f},
    {0.745405f, 2.414474f}, {0.750063f, 2.369773f}, {0.754664f, 2.326696f}, {0.759209f, 2.285157f},
    {0.763700f, 2.245076f}, {0.768140f, 2.206376f}, {0.772528f, 2.168988f}, {0.776867f, 2.132846f},
    {0.781159f, 2.097888f}, {0.785403f, 2.064059f}, {0.789602f, 2.031302f}, {0.793757f, 1.999570f},
    {0.797869f, 1.968813f}, {0.801939f, 1.938988f}, {0.805969f, 1.910054f}, {0.809958f, 1.881970f},
    {0.813908f, 1.854700f}, {0.817821f, 1.828209f}, {0.821696f, 1.802464f}, {0.825535f, 1.777435f},
    {0.829339f, 1.753091f}, {0.833108f, 1.729404f}, {0.836843f, 1.706349f}, {0.840545f, 1.683901f},
    {0.844215f, 1.662036f}, {0.847854f, 1.640731f}, {0.851461f, 1.619966f}, {0.855038f, 1.599720f},
    {0.858585f, 1.579973f}, {0.862104f, 1.560708f}, {0.865593f, 1.541907f}, {0.869055f, 1.523554f},
    {0.872490f, 1.505633f}, {0.875897f, 1.488128f}, {0.879279f, 1.471026f}, {0.882634f, 1.454312f},
    {0.885965f, 1.437974f}, {0.889270f, 1.421998f}, {0.892551f, 1.406374f}, {0.895808f, 1.391090f},
    {0.899042f, 1.376134f}, {0.902252f, 1.361496f}, {0.905440f, 1.347166f}, {0.908605f, 1.333135f},
    {0.911749f, 1.319393f}, {0.914871f, 1.305932f}, {0.917972f, 1.292742f}, {0.921052f, 1.279817f},
    {0.924111f, 1.267147f}, {0.927151f, 1.254725f}, {0.930171f, 1.242545f}, {0.933171f, 1.230599f},
    {0.936152f, 1.218880f}, {0.939114f, 1.207383f}, {0.942058f, 1.196100f}, {0.944983f, 1.185027f},
    {0.947890f, 1.174156f}, {0.950780f, 1.163483f}, {0.953652f, 1.153003f}, {0.956507f, 1.142709f},
    {0.959345f, 1.132598f}, {0.962166f, 1.122664f}, {0.964971f, 1.112903f}, {0.967760f, 1.103310f},
    {0.970532f, 1.093881f}, {0.973289f, 1.084612f}, {0.976031f, 1.075498f}, {0.978757f, 1.066537f},
    {0.981468f, 1.057723f}, {0.984164f, 1.049054f}, {0.986845f, 1.040526f}, {0.989512f, 1.032136f},
    {0.992165f, 1.023880f}, {0.994803f, 1.015754f}, {0.997428f, 1.007757f}, {1.000038f, 0.999885f},
};

inline constexpr int kShortSize = 128;
inline constexpr int kLongSize = 129;

alignas(64) inline constexpr std::array<Pair, kLongSize> kLong = [] {
    std::array<Pair, kLongSize> t{};
    for (int i = 0; i < 124; ++i)
        t[i] = kShort[i];
    t[124] = {0.99216f, 1.023895f};
    t[125] = {0.994798f, 1.01577f};
    t[126] = {0.997423f, 1.007772f};
    t[127] = {1.000033f, 0.9999f};
    t[128] = {1.0f, 1.0f};
    return t;
}();

// Coefficients of (1 + d)^(1/3) = 1 + k1 d - k2 d^2 + k3 d^3 - k4 d^4 + ...
inline constexpr float k1 = 0.33333334f;   // 1/3
inline constexpr float k2 = 0.11111111f;   // 1/9
inline constexpr float k3 = 0.061728396f;  // 5/81
inline constexpr float k4 = 0.041152265f;  // 10/243
inline constexpr float k5 = 0.030178327f;  // 22/729
inline constexpr float k6 = 0.023472032f;  // 154/6561
inline constexpr float k7 = 0.01900117f;   // 374/19683
inline constexpr float k8 = 0.015834307f;  // 935/59049

}  // namespace h9::powluv
