// The BT.709 transfer curve and its lookup tables.
//
//   forward  f(x) = 4.5 x                     for x < 0.018
//                 = 1.099 x^0.45 - 0.099      otherwise
//   inverse  g(y) = y / 4.5                   for y < 0.0812
//                 = ((y + 0.099) / 1.099)^(1 / 0.45)  otherwise
//
// (0.0812 rather than 4.5 * 0.018: the two branches of f do not quite meet,
// and 0.0812 lies where their inverses change over.)
//
// Entry i of a table of top value N (255 or 65535) is the nearest integer,
// ties to even, of N * curve(i / N), where the curve is evaluated in double
// precision and the product is rounded to single precision before the
// integer rounding. That single-precision step matters only for products
// that lie within about 0.002 of a half (half an ulp of a float near 65535):
// they become exact halves and go to the even side. It decides 119 entries
// of the 16-bit forward table and 54 of the inverse one; no 8-bit entry.
//
// The tables are computed by the compiler; nothing is built at run time.
#pragma once

#include <array>
#include <cstdint>

#include "vecmath/constmath.h"

namespace h9 {

constexpr double gammaFwdCurve(double x) { return x < 0.018 ? 4.5 * x : 1.099 * constmath::pow(x, 0.45) - 0.099; }
constexpr double gammaInvCurve(double y)
{
    return y < 0.0812 ? y / 4.5 : constmath::pow((y + 0.099) / 1.099, 1.0 / 0.45);
}

// Nearest integer of a non-negative float, ties to even.
constexpr uint32_t roundHalfEven(float v)
{
    uint32_t i = uint32_t(v);
    const float fraction = v - float(i);
    if (fraction > 0.5f || (fraction == 0.5f && (i & 1)))
        ++i;
    return i;
}

constexpr uint32_t gammaEntry(double (*curve)(double), int top, int i)
{
    return roundHalfEven(float(double(top) * curve(double(i) / double(top))));
}

// Entries [first, first + Count) of a table; the 16-bit tables are built in
// pieces so that each stays within the compiler's evaluation budget.
template <class T, int Count>
constexpr std::array<T, Count> gammaEntries(double (*curve)(double), int top, int first)
{
    std::array<T, Count> t{};
    for (int i = 0; i < Count; ++i)
        t[i] = T(gammaEntry(curve, top, first + i));
    return t;
}

inline constexpr std::array<uint8_t, 256> tableFwd8u = gammaEntries<uint8_t, 256>(gammaFwdCurve, 255, 0);
inline constexpr std::array<uint8_t, 256> tableInv8u = gammaEntries<uint8_t, 256>(gammaInvCurve, 255, 0);

// Defined in gammatables.cpp (their evaluation takes the compiler a while).
extern const std::array<uint16_t, 65536> tableFwd16u;
extern const std::array<uint16_t, 65536> tableInv16u;

}  // namespace h9
