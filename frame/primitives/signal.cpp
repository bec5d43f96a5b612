// A constant added to or subtracted from a float signal.
//
// One rounding per element, in the written operand order; a constant of 0
// copies the elements bit for bit instead (a NaN keeps its payload, -0.0 its
// sign).
#include <immintrin.h>

#include "frame/driver.h"
#include "frame/primitives/primitives.h"

namespace h9 {
namespace {

struct AddC {
    static float scalar(float x, float c) { return c + x; }
    static __m256 vector(__m256 x, __m256 c) { return _mm256_add_ps(c, x); }
};

struct SubC {
    static float scalar(float x, float c) { return x - c; }
    static __m256 vector(__m256 x, __m256 c) { return _mm256_sub_ps(x, c); }
};

template <class Op>
void applyConstant(const Orv32f* src, float value, Orv32f* dst, int length)
{
    int i = 0;
    if (!g_scalarBlocks) {
        const __m256 c = _mm256_set1_ps(value);
        for (; i + 32 <= length; i += 32) {
            const __m256 a = _mm256_loadu_ps(src + i), b = _mm256_loadu_ps(src + i + 8);
            const __m256 e = _mm256_loadu_ps(src + i + 16), f = _mm256_loadu_ps(src + i + 24);
            _mm256_storeu_ps(dst + i, Op::vector(a, c));
            _mm256_storeu_ps(dst + i + 8, Op::vector(b, c));
            _mm256_storeu_ps(dst + i + 16, Op::vector(e, c));
            _mm256_storeu_ps(dst + i + 24, Op::vector(f, c));
        }
        for (; i + 8 <= length; i += 8)
            _mm256_storeu_ps(dst + i, Op::vector(_mm256_loadu_ps(src + i), c));
    }
    for (; i < length; ++i)
        dst[i] = Op::scalar(src[i], value);
}

}  // namespace

OrvStatus orvsAddC_32f(const Orv32f* src, Orv32f value, Orv32f* dst, int length)
{
    if (value == 0.0f)
        return orvsCopy_32s(reinterpret_cast<const Orv32s*>(src), reinterpret_cast<Orv32s*>(dst), length);
    if (!src || !dst)
        return orvStatusNullPointer;
    if (length < 1)
        return orvStatusBadSize;
    applyConstant<AddC>(src, value, dst, length);
    return orvStatusOk;
}

OrvStatus orvsSubC_32f(const Orv32f* src, Orv32f value, Orv32f* dst, int length)
{
    if (value == 0.0f)
        return orvsCopy_32f(src, dst, length);
    if (!src || !dst)
        return orvStatusNullPointer;
    if (length < 1)
        return orvStatusBadSize;
    applyConstant<SubC>(src, value, dst, length);
    return orvStatusOk;
}

}  // namespace h9
