// The four planar conversions between 4:2:0 and 4:1:1 or the 4x4 sampling
// that accept whole blocks only: a width or height that is no multiple of the
// block is refused, not rounded. Luma goes through the rectangle copy; each
// chroma plane through its own plane kernel.
//
// Three of them average neighbouring samples. The leading columns of a row,
// those that the 16- or 32-sample vector steps cover, round the average up,
// (a + b + 1) >> 1, the byte average of the vector unit; the remaining
// columns round it down, (a + b) >> 1. Where the split lies is part of the
// output: span() gives it, and the scalar block form rounds as the vector
// path does.
#include <immintrin.h>

#include "formats/chroma.h"
#include "frame/fronts.h"

namespace h9 {
namespace {

using namespace fmt;

inline Orv8u avgUp(int a, int b) { return Orv8u((a + b + 1) >> 1); }
inline Orv8u avgDown(int a, int b) { return Orv8u((a + b) >> 1); }

inline __m256i load32(const Orv8u* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
inline __m128i load16(const Orv8u* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline void store32(Orv8u* p, __m256i v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
inline void store16(Orv8u* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }

// 32 even samples of 64.
inline __m256i evenOf64(const Orv8u* p)
{
    return _mm256_set_m128i(dropHalf(load32(p + 32), 0), dropHalf(load32(p), 0));
}

// ---- 4:2:0 to 4:1:1 ---------------------------------------------------------
// n = width / 4 output columns, R = height / 2 source rows. Even output rows
// take the even source columns; odd output rows the average of them with the
// next source row, the last one a copy. Rounding up for c below
// 32 * floor(n / 32).
inline int span420To411(int n) { return n / 32 * 32; }

void plane420To411(const Orv8u* src, int srcStep, Orv8u* dst, int dstStep, int height, int width)
{
    const int n = width / 4, rows = height / 2, up = span420To411(n);
    for (int r = 0; r < rows; ++r) {
        const Orv8u* s = rowAt(src, srcStep, r);
        const Orv8u* t = rowAt(src, srcStep, r + 1 < rows ? r + 1 : r);
        Orv8u* d0 = rowAt(dst, dstStep, 2 * r);
        Orv8u* d1 = rowAt(dst, dstStep, 2 * r + 1);
        const bool last = r + 1 == rows;
        int c = 0;
        if (!g_scalarBlocks) {
            for (; c < up; c += 32) {
                const __m256i a = evenOf64(s + 2 * c);
                store32(d0 + c, a);
                store32(d1 + c, last ? a : _mm256_avg_epu8(a, evenOf64(t + 2 * c)));
            }
        }
        for (; c < n; ++c) {
            const int a = s[2 * c];
            d0[c] = Orv8u(a);
            d1[c] = last ? Orv8u(a) : c < up ? avgUp(a, t[2 * c]) : avgDown(a, t[2 * c]);
        }
    }
}

// ---- 4:1:1 to 4:2:0 ---------------------------------------------------------
// n = width / 4 source columns; the even source rows. Output column 2c is the
// sample, 2c + 1 its average with the right neighbour (a copy in the last
// column). Rounding up for c below 16 * floor((n - 1) / 16).
inline int span411To420(int n) { return (n - 1) / 16 * 16; }

void plane411To420(const Orv8u* src, int srcStep, Orv8u* dst, int dstStep, int height, int width)
{
    const int n = width / 4, up = span411To420(n);
    for (int r = 0; r < height / 2; ++r) {
        const Orv8u* s = rowAt(src, srcStep, 2 * r);
        Orv8u* d = rowAt(dst, dstStep, r);
        int c = 0;
        if (!g_scalarBlocks) {
            for (; c < up; c += 16) {
                const __m128i a = load16(s + c);
                store32(d + 2 * c, interleave16(a, _mm_avg_epu8(a, load16(s + c + 1))));
            }
        }
        for (; c < n; ++c) {
            d[2 * c] = s[c];
            d[2 * c + 1] = c + 1 == n ? s[c] : c < up ? avgUp(s[c], s[c + 1]) : avgDown(s[c], s[c + 1]);
        }
    }
}

// ---- 4:2:0 to one sample per 4x4 block --------------------------------------
void plane420To1620(const Orv8u* src, int srcStep, Orv8u* dst, int dstStep, int height, int width)
{
    const int n = width / 4;
    for (int r = 0; r < height / 4; ++r) {
        const Orv8u* s = rowAt(src, srcStep, 2 * r);
        Orv8u* d = rowAt(dst, dstStep, r);
        int c = 0;
        if (!g_scalarBlocks)
            for (; c + 32 <= n; c += 32)
                store32(d + c, evenOf64(s + 2 * c));
        for (; c < n; ++c)
            d[c] = s[2 * c];
    }
}

// ---- one sample per 4x4 block to 4:2:0, bilinear ----------------------------
// R = height / 4 and n = width / 4 source rows and columns. Output rows 2r and
// 2r + 1 come from source rows r and r + 1; the last source row and column
// have no lower or right neighbour and repeat themselves. Rounding as in
// 4:1:1 to 4:2:0; the last column's vertical average rounds down.
void plane1620To420(const Orv8u* src, int srcStep, Orv8u* dst, int dstStep, int height, int width)
{
    const int n = width / 4, rows = height / 4, up = span411To420(n);
    for (int r = 0; r < rows; ++r) {
        const bool last = r + 1 == rows;
        const Orv8u* s = rowAt(src, srcStep, r);
        const Orv8u* t = rowAt(src, srcStep, last ? r : r + 1);
        Orv8u* d0 = rowAt(dst, dstStep, 2 * r);
        Orv8u* d1 = rowAt(dst, dstStep, 2 * r + 1);
        int c = 0;
        if (!g_scalarBlocks) {
            for (; c < up; c += 16) {
                const __m128i a = load16(s + c), ar = _mm_avg_epu8(a, load16(s + c + 1));
                store32(d0 + 2 * c, interleave16(a, ar));
                if (last) {
                    store32(d1 + 2 * c, interleave16(a, a));
                } else {
                    const __m128i b = load16(t + c), br = _mm_avg_epu8(b, load16(t + c + 1));
                    store32(d1 + 2 * c, interleave16(_mm_avg_epu8(a, b), _mm_avg_epu8(ar, br)));
                }
            }
        }
        for (; c < n; ++c) {
            const bool right = c + 1 < n;
            const auto avg = [&](int a, int b) { return c < up ? avgUp(a, b) : avgDown(a, b); };
            const int a = s[c];
            d0[2 * c] = Orv8u(a);
            d0[2 * c + 1] = right ? avg(a, s[c + 1]) : Orv8u(a);
            if (last) {
                d1[2 * c] = d1[2 * c + 1] = Orv8u(a);
            } else if (!right) {
                d1[2 * c] = d1[2 * c + 1] = avgDown(a, t[c]);
            } else {
                d1[2 * c] = avg(a, t[c]);
                d1[2 * c + 1] = avg(avg(a, s[c + 1]), avg(t[c], t[c + 1]));
            }
        }
    }
}

using PlaneKernel = void (*)(const Orv8u*, int, Orv8u*, int, int, int);

// Pointers, then the block sizes: width a multiple of 4, height a multiple
// of `heightBlock`; then luma by the rectangle copy and chroma plane by plane.
OrvStatus convertPlanes(const Orv8u* const* src, const int* srcStep, Orv8u* const* dst, const int* dstStep,
                        RoiSize roi, int heightBlock, PlaneKernel kernel)
{
    if (PlanarCbCr::side(src, srcStep).null || PlanarCbCr::side(dst, dstStep).null)
        return orvStatusNullPointer;
    if (roi.width < 4 || roi.width % 4)
        return orvStatusBadSize;
    if (roi.height < heightBlock || roi.height % heightBlock)
        return orvStatusBadSize;
    orviCopy_8u_C1R(src[0], srcStep[0], dst[0], dstStep[0], roi);
    for (int k = 1; k < 3; ++k)
        kernel(src[k], srcStep[k], dst[k], dstStep[k], roi.height, roi.width);
    return orvStatusOk;
}

}  // namespace
}  // namespace h9

ORV_FRONT(orviYCbCr420To411_8u_P3R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst[3],
                                   int dstStep[3], RoiSize roiSize)
{
    return h9::convertPlanes(pSrc, srcStep, pDst, dstStep, roiSize, 2, h9::plane420To411);
}
ORV_FRONT(orviYCbCr411To420_8u_P3R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst[3],
                                   int dstStep[3], RoiSize roiSize)
{
    return h9::convertPlanes(pSrc, srcStep, pDst, dstStep, roiSize, 4, h9::plane411To420);
}
ORV_FRONT(orviYCbCr420To1620_8u_P3R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst[3],
                                    int dstStep[3], RoiSize roiSize)
{
    return h9::convertPlanes(pSrc, srcStep, pDst, dstStep, roiSize, 4, h9::plane420To1620);
}
ORV_FRONT(orviYCbCr1620To420_8u_P3R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst[3],
                                    int dstStep[3], RoiSize roiSize)
{
    return h9::convertPlanes(pSrc, srcStep, pDst, dstStep, roiSize, 4, h9::plane1620To420);
}
