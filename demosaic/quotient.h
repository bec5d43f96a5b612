// The rounded quotient of the colour-difference demosaicing: diff / 2n for a
// count n of 1 to 8, rounded to the nearest integer with ties to even.
//
// The reference divides in single precision. For |diff| below 2^20 that is
// the exact rational rounding: diff and 2n are exact floats, the division is
// correctly rounded, and a quotient that is not a tie lies at least 1/28 from
// the nearest half, far beyond half an ulp, so the float rounding can neither
// make nor break a tie. The 16-bit lane form therefore computes the exact
// rounding in integers, which avoids the divider.
#pragma once

#include <immintrin.h>

#include <cstdint>

namespace h9 {

// Rounding to the nearest integer, ties to even, whatever the thread's mode.
inline float roundEven(float x)
{
    return _mm_cvtss_f32(_mm_round_ss(_mm_setzero_ps(), _mm_set_ss(x), _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC));
}

// (diff / twoN) in single precision, rounded to an integer.
inline int32_t roundedQuotient(int32_t diff, int32_t twoN) { return int32_t(roundEven(float(diff) / float(twoN))); }

// The same in sixteen 16-bit lanes, for |diff| up to 4080 (the 8-bit range
// of the sums) and twoN in 2, 4, ... 16.
//
// With a = |diff| and m = a + n, u = floor(m / 2n) is a / 2n rounded half
// up; a tie is m = 2n u, and there an odd u steps back to the even one. The
// sign of diff is then put back: rounding to even is symmetric. floor(m / 2n)
// is the high half of m * ceil(2^16 / 2n), exact while m * (ceil(2^16 / 2n) -
// 2^16 / 2n) stays below 2^16 / 2n, that is m below 5461 for 2n = 14, the
// tightest case.
inline __m256i roundedQuotientEpi16(__m256i diff, __m256i twoN)
{
    // ceil(2^16 / 2n) for n = 1 .. 8, as byte pairs for a lane shuffle.
    const __m256i magic = _mm256_setr_epi16(int16_t(32768), 16384, 10923, 8192, 6554, 5462, 4682, 4096, int16_t(32768),
                                            16384, 10923, 8192, 6554, 5462, 4682, 4096);
    const __m256i n = _mm256_srli_epi16(twoN, 1);
    // Bytes 2 (n - 1) and 2 (n - 1) + 1 of the table: n * 0x0202 - 0x0102.
    const __m256i index = _mm256_sub_epi16(_mm256_mullo_epi16(n, _mm256_set1_epi16(0x0202)), _mm256_set1_epi16(0x0102));
    const __m256i m = _mm256_add_epi16(_mm256_abs_epi16(diff), n);
    const __m256i u = _mm256_mulhi_epu16(m, _mm256_shuffle_epi8(magic, index));
    const __m256i tie = _mm256_cmpeq_epi16(_mm256_mullo_epi16(u, twoN), m);
    const __m256i even = _mm256_sub_epi16(u, _mm256_and_si256(tie, _mm256_and_si256(u, _mm256_set1_epi16(1))));
    return _mm256_sign_epi16(even, diff);
}

}  // namespace h9
