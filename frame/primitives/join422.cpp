// Planar 4:2:2 (Y at full width, Cb and Cr at half width) to packed
// Y0 Cb Y1 Cr and back. Each row holds width / 2 pixel pairs; an odd last
// column is neither read nor written.
#include <immintrin.h>

#include "frame/driver.h"
#include "frame/primitives/primitives.h"

namespace h9 {
namespace {

// One pair, both directions.
inline void joinPair(const Orv8u* y, const Orv8u* cb, const Orv8u* cr, Orv8u* d, int i)
{
    d[4 * i + 0] = y[2 * i];
    d[4 * i + 1] = cb[i];
    d[4 * i + 2] = y[2 * i + 1];
    d[4 * i + 3] = cr[i];
}

inline void splitPair(const Orv8u* s, Orv8u* y, Orv8u* cb, Orv8u* cr, int i)
{
    y[2 * i] = s[4 * i + 0];
    cb[i] = s[4 * i + 1];
    y[2 * i + 1] = s[4 * i + 2];
    cr[i] = s[4 * i + 3];
}

// 16 pairs a step: 32 luma bytes, 16 of each chroma, 64 packed bytes.
void joinRow(const Orv8u* y, const Orv8u* cb, const Orv8u* cr, Orv8u* d, int pairs)
{
    int i = 0;
    if (!g_scalarBlocks) {
        for (; i + 16 <= pairs; i += 16) {
            const __m128i y0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(y + 2 * i));
            const __m128i y1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(y + 2 * i + 16));
            const __m128i u = _mm_loadu_si128(reinterpret_cast<const __m128i*>(cb + i));
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(cr + i));
            const __m128i uv0 = _mm_unpacklo_epi8(u, v), uv1 = _mm_unpackhi_epi8(u, v);
            // Luma pairs as 16-bit words interleaved with chroma pairs.
            __m128i* out = reinterpret_cast<__m128i*>(d + 4 * i);
            const __m128i a = _mm_unpacklo_epi16(y0, uv0);  // Y0 Y1 Cb Cr of pairs 0-3
            const __m128i b = _mm_unpackhi_epi16(y0, uv0);
            const __m128i c = _mm_unpacklo_epi16(y1, uv1);
            const __m128i e = _mm_unpackhi_epi16(y1, uv1);
            // Y0 Y1 Cb Cr -> Y0 Cb Y1 Cr within each 4-byte group.
            const __m128i m = _mm_setr_epi8(0, 2, 1, 3, 4, 6, 5, 7, 8, 10, 9, 11, 12, 14, 13, 15);
            _mm_storeu_si128(out, _mm_shuffle_epi8(a, m));
            _mm_storeu_si128(out + 1, _mm_shuffle_epi8(b, m));
            _mm_storeu_si128(out + 2, _mm_shuffle_epi8(c, m));
            _mm_storeu_si128(out + 3, _mm_shuffle_epi8(e, m));
        }
    }
    for (; i < pairs; ++i)
        joinPair(y, cb, cr, d, i);
}

void splitRow(const Orv8u* s, Orv8u* y, Orv8u* cb, Orv8u* cr, int pairs)
{
    int i = 0;
    if (!g_scalarBlocks) {
        // Per 16 packed bytes: luma to bytes 0-7, Cb to 8-11, Cr to 12-15.
        const __m128i m = _mm_setr_epi8(0, 2, 4, 6, 8, 10, 12, 14, 1, 5, 9, 13, 3, 7, 11, 15);
        for (; i + 16 <= pairs; i += 16) {
            const __m128i* in = reinterpret_cast<const __m128i*>(s + 4 * i);
            const __m128i a = _mm_shuffle_epi8(_mm_loadu_si128(in), m);
            const __m128i b = _mm_shuffle_epi8(_mm_loadu_si128(in + 1), m);
            const __m128i c = _mm_shuffle_epi8(_mm_loadu_si128(in + 2), m);
            const __m128i e = _mm_shuffle_epi8(_mm_loadu_si128(in + 3), m);
            // a = Y(8) U(4) V(4) for pairs 0-3, b for 4-7, ...
            const __m128i ab = _mm_unpacklo_epi64(a, b), cd = _mm_unpacklo_epi64(c, e);
            const __m128i abc = _mm_unpackhi_epi32(a, b), cde = _mm_unpackhi_epi32(c, e);  // U0 U1 V0 V1
            _mm_storeu_si128(reinterpret_cast<__m128i*>(y + 2 * i), ab);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(y + 2 * i + 16), cd);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(cb + i), _mm_unpacklo_epi64(abc, cde));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(cr + i), _mm_unpackhi_epi64(abc, cde));
        }
    }
    for (; i < pairs; ++i)
        splitPair(s, y, cb, cr, i);
}

}  // namespace

void Join422_8u_W7(const Orv8u* const src[3], const int srcStep[3], Orv8u* dst, int dstStep, int width, int height)
{
    const int pairs = width / 2;
    for (int r = 0; r < height; ++r)
        joinRow(rowAt(src[0], srcStep[0], r), rowAt(src[1], srcStep[1], r), rowAt(src[2], srcStep[2], r),
                rowAt(dst, dstStep, r), pairs);
}

void Split422_8u_W7(const Orv8u* src, int srcStep, Orv8u* const dst[3], const int dstStep[3], int width, int height)
{
    const int pairs = width / 2;
    for (int r = 0; r < height; ++r)
        splitRow(rowAt(src, srcStep, r), rowAt(dst[0], dstStep[0], r), rowAt(dst[1], dstStep[1], r),
                 rowAt(dst[2], dstStep[2], r), pairs);
}

}  // namespace h9
