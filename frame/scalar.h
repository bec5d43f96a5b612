// Scalar statements with the exact semantics of the vector instructions they
// stand for, so that a scalar form and its vector path agree to the bit.
#pragma once

#include <immintrin.h>

#include <cmath>
#include <cstdint>

namespace h9 {

// Float to int32 in the thread's current rounding mode (cvtss2si); out of
// range and NaN give INT32_MIN, as the vector conversion does.
inline int32_t cvtNearest(float x) { return _mm_cvtss_si32(_mm_set_ss(x)); }
inline int32_t cvtNearest(double x) { return _mm_cvtsd_si32(_mm_set_sd(x)); }

// Float to int32 toward zero (cvttss2si); out of range and NaN give INT32_MIN.
inline int32_t cvtTrunc(float x) { return _mm_cvttss_si32(_mm_set_ss(x)); }
inline int32_t cvtTrunc(double x) { return _mm_cvttsd_si32(_mm_set_sd(x)); }

// A value held in a register, so that the compiler cannot fold its load into
// the memory operand of a scalar fused multiply-add. The emulator that runs
// the 32-bit build reads more than the element for such an operand and
// faults where the element ends a row at a page; on x86-64 nothing is held.
template <typename T>
inline T inRegister(T v)
{
#if defined(__i386__)
    __asm__("" : "+x"(v));
#endif
    return v;
}

// One rounding for a*b + c.
inline float fmaf32(float a, float b, float c) { return std::fma(inRegister(a), inRegister(b), inRegister(c)); }
inline double fmaf64(double a, double b, double c) { return std::fma(inRegister(a), inRegister(b), inRegister(c)); }

// Saturations of the pack instructions.
inline uint8_t satU8(int32_t v) { return static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v); }
inline int16_t satS16(int32_t v) { return static_cast<int16_t>(v < -32768 ? -32768 : v > 32767 ? 32767 : v); }
inline uint16_t satU16(int32_t v) { return static_cast<uint16_t>(v < 0 ? 0 : v > 65535 ? 65535 : v); }

// 16-bit lane arithmetic: saturating unsigned add, high half of an unsigned
// and of a signed 16x16 product.
inline uint16_t addsU16(uint16_t a, uint16_t b)
{
    const uint32_t s = uint32_t(a) + b;
    return static_cast<uint16_t>(s > 65535 ? 65535 : s);
}
inline uint16_t mulhiU16(uint16_t a, uint16_t b) { return static_cast<uint16_t>((uint32_t(a) * b) >> 16); }
inline int16_t mulhiS16(int16_t a, int16_t b) { return static_cast<int16_t>((int32_t(a) * b) >> 16); }

}  // namespace h9
