// Natural logarithm, exponential and power in double precision that the
// compiler can evaluate, for tables built at compile time.
//
// They are accurate to a few units in the last place over the arguments the
// tables need (positive normal doubles, results in the normal range), which
// is far finer than any table entry built from them can resolve.
#pragma once

#include <bit>
#include <cstdint>

namespace h9::constmath {

inline constexpr double kLn2Hi = 6.93147180369123816490e-01;  // 32 leading bits of ln 2
inline constexpr double kLn2Lo = 1.90821492927058770002e-10;  // the rest

// ln x for positive normal x: x = m 2^e with m in [sqrt(1/2), sqrt(2)), then
// ln m = 2 atanh(z), z = (m - 1) / (m + 1), by its series in z^2 (|z| < 0.172,
// so the terms up to z^23 reach far below an ulp).
constexpr double log(double x)
{
    const uint64_t b = std::bit_cast<uint64_t>(x);
    int e = int(b >> 52) - 1023;
    double m = std::bit_cast<double>((b & 0xfffffffffffffull) | 0x3ff0000000000000ull);
    if (m > 1.4142135623730951) {
        m *= 0.5;
        ++e;
    }
    const double z = (m - 1) / (m + 1), z2 = z * z;
    double p = 1.0 / 23;
    for (int k = 21; k >= 1; k -= 2)
        p = p * z2 + 1.0 / k;
    return e * kLn2Hi + (2 * z * p + e * kLn2Lo);
}

// e^t for results in the normal range: t = n ln 2 + r with |r| <= ln2 / 2,
// e^r by its Taylor series to r^12, scaled by 2^n through the exponent field.
constexpr double exp(double t)
{
    const double nn = t * 1.4426950408889634;
    const int n = int(nn + (nn < 0 ? -0.5 : 0.5));
    const double r = (t - n * kLn2Hi) - n * kLn2Lo;
    constexpr double inverseFactorial[13] = {1.0,           1.0,           1.0 / 2,        1.0 / 6,        1.0 / 24,
                                             1.0 / 120,     1.0 / 720,     1.0 / 5040,     1.0 / 40320,    1.0 / 362880,
                                             1.0 / 3628800, 1.0 / 39916800, 1.0 / 479001600};
    double s = inverseFactorial[12];
    for (int k = 11; k >= 0; --k)
        s = s * r + inverseFactorial[k];
    return s * std::bit_cast<double>(uint64_t(n + 1023) << 52);
}

// x^y for x >= 0 (0^y is 0).
constexpr double pow(double x, double y) { return x == 0 ? 0.0 : exp(y * log(x)); }

}  // namespace h9::constmath
