// 4:2:0 and 4:2:2 for interlaced frames: even rows belong to one field, odd
// rows to the other, and each field's chroma is resampled by itself, every
// destination row a weighted sum of two source rows of its own field with
// weights that follow the vertical chroma positions inside the field.
//
// The width is rounded down to even and the height H down to a multiple of
// 4; a call that rounded reports it. Rows run in bands on several threads
// for frames at least 128 pixels wide and more than 128 rows high; every
// destination row depends on source rows only, so the bands never meet.
#include "formats/chroma.h"
#include "frame/fronts.h"

namespace h9 {
namespace {

using namespace fmt;

// 4:2:0 to 4:2:2. Source chroma has H / 2 rows. The first two and the last
// two destination rows copy the first and last source row of their field;
// in between, groups of four rows from source rows i .. i + 3 (i even):
//   2i+2: (5 S[i] + 3 S[i+2]) / 8      2i+3: (7 S[i+1] + S[i+3]) / 8
//   2i+4: (S[i] + 7 S[i+2]) / 8        2i+5: (3 S[i+1] + 5 S[i+3]) / 8
// each rounded by adding 4 before the shift.
struct Plan420To422 {
    int height;
    RowPlan operator()(int y) const
    {
        RowPlan p{};
        p.chroma = true;
        p.dstRow = y;
        if (y < 2 || y >= height - 2) {
            p.srcRow = p.srcRow2 = y < 2 ? y : height / 2 - 2 + (y - (height - 2));
            p.w = {1, 0, 0};
            return p;
        }
        static constexpr Weights kW[4] = {{5, 3, 3}, {7, 1, 3}, {1, 7, 3}, {3, 5, 3}};
        const int j = y - 2, i = j / 4 * 2, m = j % 4;
        p.srcRow = i + (m & 1);
        p.srcRow2 = p.srcRow + 2;
        p.w = kW[m];
        return p;
    }
};

// 4:2:2 to 4:2:0: in each group of four source rows 4i .. 4i + 3, the even
// rows make destination row 2i and the odd rows row 2i + 1, the nearer row
// weighted 3: (3 S[4i] + S[4i+2] + 2) / 4 and (S[4i+1] + 3 S[4i+3] + 2) / 4.
struct Plan422To420 {
    RowPlan operator()(int y) const
    {
        RowPlan p{};
        p.chroma = (y & 1) == 0;
        p.dstRow = y / 2;
        const int i = y / 4, odd = (y / 2) & 1;
        p.srcRow = 4 * i + odd;
        p.srcRow2 = p.srcRow + 2;
        p.w = odd ? Weights{1, 3, 2} : Weights{3, 1, 2};
        return p;
    }
};

template <class S, class D, Sampling SS, Sampling DS>
OrvStatus interlace(const Side& s, const Side& d, RoiSize roi)
{
    if (s.null || d.null)
        return orvStatusNullPointer;
    if (roi.width < 2 || roi.height < 4)
        return orvStatusBadSize;
    const int width = roi.width & ~1, height = roi.height & ~3;
    using Kernel = ChromaKernel<S, D, Shape::Blend, SS, DS>;
    constexpr bool toHalfHeight = DS.yShift > SS.yShift;
    const auto run = [&](int y0, int y1) {
        if constexpr (toHalfHeight)
            Kernel::rows(s.frame, d.frame, width, y0, y1, Plan422To420{}, false);
        else
            Kernel::rows(s.frame, d.frame, width, y0, y1, Plan420To422{height}, false);
    };
    const int threads = ownGetNumThreads();
    if (threads < 2 || width < 128 || height < 129) {
        run(0, height);
    } else if constexpr (toHalfHeight) {
        // Bands of whole groups of four rows; the last takes the remainder.
        bands(height, threads, [&](int n) { return ((height >> 2) / n) * 4; },
              [&](int first, int rows) { run(first, first + rows); });
    } else {
        // Rows 2 .. H - 3 are shared out; the first band also does rows 0
        // and 1, the last band rows H - 2 and H - 1.
        const int middle = height - 4;
        bands(middle, threads, [&](int n) { return ((middle >> 2) / n) * 4; },
              [&](int first, int rows) {
                  const int y0 = first == 0 ? 0 : 2 + first;
                  const int y1 = first + rows == middle ? height : 2 + first + rows;
                  run(y0, y1);
              });
    }
    return (roi.width & 1) || (roi.height & 3) ? orvStatusOddSize : orvStatusOk;
}

}  // namespace
}  // namespace h9

using namespace h9::fmt;

ORV_FRONT(orviYCbCr420To422_Interlace_8u_P3R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst[3],
                                             int dstStep[3], RoiSize roiSize)
{
    return h9::interlace<PlanarCbCr, PlanarCbCr, k420, k422>(PlanarCbCr::side(pSrc, srcStep),
                                                             PlanarCbCr::side(pDst, dstStep), roiSize);
}
ORV_FRONT(orviYCbCr420ToCbYCr422_Interlace_8u_P3C2R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst,
                                                    int dstStep, RoiSize roiSize)
{
    return h9::interlace<PlanarCbCr, PackedCbYCr, k420, k422>(PlanarCbCr::side(pSrc, srcStep),
                                                              PackedCbYCr::side(pDst, dstStep), roiSize);
}
ORV_FRONT(orviYCbCr422To420_Interlace_8u_P3R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst[3],
                                             int dstStep[3], RoiSize roiSize)
{
    return h9::interlace<PlanarCbCr, PlanarCbCr, k422, k420>(PlanarCbCr::side(pSrc, srcStep),
                                                             PlanarCbCr::side(pDst, dstStep), roiSize);
}
ORV_FRONT(orviCbYCr422ToYCbCr420_Interlace_8u_C2P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep[3],
                                                    RoiSize roiSize)
{
    return h9::interlace<PackedCbYCr, PlanarCbCr, k422, k420>(PackedCbYCr::side(pSrc, srcStep),
                                                              PlanarCbCr::side(pDst, dstStep), roiSize);
}
