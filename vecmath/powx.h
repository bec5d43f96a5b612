// The vector power function: each element of a float array raised to one
// float exponent, to about 21.8 good bits.
//
// A single-precision main line takes every lane whose argument is a positive
// normal float (and whose result stays well inside the float range); the
// other lanes are recomputed one by one in double precision. The call runs in
// round-to-nearest with gradual underflow whatever the caller has set, and
// leaves the caller's control words and no sticky flags behind.
#pragma once

#include <array>
#include <cstdint>

#include "orvcc.h"
#include "vecmath/constmath.h"

namespace h9 {

// Status of a call in which at least one lane met a singular case (a pole or
// a negative base with a non-integer exponent). The destination is complete.
inline constexpr OrvStatus kPowxSingular = 19;

// Row j of the logarithm table, j = 0..64: r approximates 1 / (1 + j/64) with
// 8 fraction bits, and logHi + logLo carries -ln(r); logHi is -ln(r) cut to a
// multiple of 2^-14 (so that k ln2_hi + logHi + u stays exact), logLo the
// rest as a float.
struct PowxLogRow {
    float logHi;
    float logLo;
    float r;
};

constexpr std::array<PowxLogRow, 65> makePowxLogTable()
{
    std::array<PowxLogRow, 65> t{};
    for (int j = 0; j <= 64; ++j) {
        const double r = double(int64_t(16384.0 / (64 + j) + 0.5)) / 256;  // round(256 / (1 + j/64)) / 256
        const double minusLn = 0.0 - constmath::log(r);  // +0 for r = 1
        const double hi = double(int64_t(minusLn * 16384)) / 16384;
        t[j] = {float(hi), float(minusLn - hi), float(r)};
    }
    return t;
}

inline constexpr std::array<PowxLogRow, 65> powxLogTable = makePowxLogTable();

// The exponent as the main line uses it: split into a head of 12 bits and a
// tail, y = yh + yl exactly.
struct PowxExponent {
    float y;
    float yh;
    float yl;
    bool finite;
};

PowxExponent powxSplit(float y);

// One lane of the main line (scalar form). `zh` receives the head of
// y ln(x), which decides whether the lane must leave the main line.
float powxMainLine(float x, const PowxExponent& y, float& zh);

// True for a lane that the main line cannot take: x zero, negative,
// subnormal, infinite, NaN or the largest finite float; y not finite; or
// |zh| above 64.810547.
bool powxLeavesMainLine(float x, const PowxExponent& y, float zh);

// One lane in double precision, rounded once to float. Returns 0, or
// kPowxSingular for a pole (zero to a negative power) or a negative base with
// a non-integer exponent.
int powxRareLane(float x, float y, float* result);

// dst[i] = src[i] ^ y for i < length. Returns orvStatusBadSize for a length
// below 1, then orvStatusNullPointer for a null array, else 0 or
// kPowxSingular. src and dst may be the same array.
OrvStatus orvsPowx_32f_A21(const float* src, float y, float* dst, int length);

}  // namespace h9
