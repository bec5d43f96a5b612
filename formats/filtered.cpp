// 4:2:0 to 4:2:2 with the new chroma rows interpolated rather than repeated:
// even destination rows copy the source chroma rows, odd ones take the
// four-tap filter -1 9 9 -1 over 16 across the source rows around them.
//
// The width is rounded down to even and the height down to a multiple of 8;
// rows beyond stay unwritten. Source chroma row indices outside the frame are
// clamped to its first and last rows.
#include <immintrin.h>

#include <type_traits>

#include "formats/chroma.h"
#include "frame/fronts.h"
#include "frame/scalar.h"

namespace h9 {
namespace {

using namespace fmt;

// Odd destination chroma rows from the source rows k - 1, k, k + 1, k + 2.
template <class S>
struct FourTap {
    static Orv8u tap(int a, int b, int c, int d) { return satU8((9 * (b + c) - a - d + 8) >> 4); }

    static void unit(const Row (&e)[4], const Row& d, int c)
    {
        PlanarCbCr::cb(d, c) = tap(S::cb(e[0], c), S::cb(e[1], c), S::cb(e[2], c), S::cb(e[3], c));
        PlanarCbCr::cr(d, c) = tap(S::cr(e[0], c), S::cr(e[1], c), S::cr(e[2], c), S::cr(e[3], c));
    }

    // In 16-bit lanes: the largest sum, 9 * 510 + 8, fits; the arithmetic
    // shift keeps negative sums negative for the saturating pack.
    static __m256i half(__m256i a, __m256i b, __m256i c, __m256i d)
    {
        const __m256i t = _mm256_mullo_epi16(_mm256_add_epi16(b, c), _mm256_set1_epi16(9));
        const __m256i u = _mm256_sub_epi16(_mm256_add_epi16(t, _mm256_set1_epi16(8)), _mm256_add_epi16(a, d));
        return _mm256_srai_epi16(u, 4);
    }
    static __m256i taps(__m256i a, __m256i b, __m256i c, __m256i d)
    {
        const __m256i z = _mm256_setzero_si256();
        const __m256i lo = half(_mm256_unpacklo_epi8(a, z), _mm256_unpacklo_epi8(b, z), _mm256_unpacklo_epi8(c, z),
                                _mm256_unpacklo_epi8(d, z));
        const __m256i hi = half(_mm256_unpackhi_epi8(a, z), _mm256_unpackhi_epi8(b, z), _mm256_unpackhi_epi8(c, z),
                                _mm256_unpackhi_epi8(d, z));
        return _mm256_packus_epi16(lo, hi);
    }

    // n chroma samples of a row.
    static void row(const Row (&e)[4], const Row& d, int n)
    {
        int c = 0;
        if (!g_scalarBlocks) {
            for (; c + 32 <= n; c += 32) {
                __m256i u, v;
                if constexpr (std::is_same_v<S, SemiCbCr>) {
                    // The taps treat every byte alike: filter the pairs as
                    // they lie and separate Cb from Cr once, in the result.
                    const auto at = [&](int k, int half) {
                        return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(e[k].p[1] + 2 * c + 32 * half));
                    };
                    SemiCbCr::split(taps(at(0, 0), at(1, 0), at(2, 0), at(3, 0)),
                                    taps(at(0, 1), at(1, 1), at(2, 1), at(3, 1)), u, v);
                } else {
                    __m256i us[4], vs[4];
                    for (int k = 0; k < 4; ++k)
                        S::loadC(e[k], c, us[k], vs[k]);
                    u = taps(us[0], us[1], us[2], us[3]);
                    v = taps(vs[0], vs[1], vs[2], vs[3]);
                }
                PlanarCbCr::storeC(d, c, u, v);
            }
        }
        for (; c < n; ++c)
            unit(e, d, c);
    }
};

template <class S>
OrvStatus filter420To422(const Side& s, const Side& d, RoiSize roi)
{
    if (s.null || d.null)
        return orvStatusNullPointer;
    if (roi.width < 2 || roi.height < 8)
        return orvStatusBadSize;
    const int width = roi.width & ~1, height = roi.height & ~7, rows = height / 2;
    // Luma, and the even rows as copies of the source rows.
    ChromaKernel<S, PlanarCbCr, Shape::Copy, k420, k422>::rows(
        s.frame, d.frame, width, 0, height,
        [](int y) {
            RowPlan p{};
            p.chroma = (y & 1) == 0;
            p.dstRow = y;
            p.srcRow = p.srcRow2 = y / 2;
            return p;
        },
        false);
    for (int k = 0; k < rows; ++k) {
        const auto at = [&](int r) { return rowOf(s.frame, 0, std::clamp(r, 0, rows - 1)); };
        const Row e[4] = {at(k - 1), at(k), at(k + 1), at(k + 2)};
        FourTap<S>::row(e, rowOf(d.frame, 0, 2 * k + 1), width / 2);
    }
    return orvStatusOk;
}

}  // namespace
}  // namespace h9

using namespace h9::fmt;

ORV_FRONT(orviYCbCr420ToYCbCr422_Filter_8u_P3R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst[3],
                                               int dstStep[3], RoiSize roiSize)
{
    return h9::filter420To422<PlanarCbCr>(PlanarCbCr::side(pSrc, srcStep), PlanarCbCr::side(pDst, dstStep), roiSize);
}
ORV_FRONT(orviYCrCb420ToYCbCr422_Filter_8u_P3R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst[3],
                                               int dstStep[3], RoiSize roiSize)
{
    return h9::filter420To422<PlanarCbCr>(PlanarCrCb::side(pSrc, srcStep), PlanarCbCr::side(pDst, dstStep), roiSize);
}
ORV_FRONT(orviYCbCr420ToYCbCr422_Filter_8u_P2P3R)(const Orv8u* pSrcY, int srcYStep, const Orv8u* pSrcUV,
                                                 int srcUVStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize)
{
    return h9::filter420To422<SemiCbCr>(SemiCbCr::side(pSrcY, srcYStep, pSrcUV, srcUVStep),
                                        PlanarCbCr::side(pDst, dstStep), roiSize);
}
