// Chroma format conversions between 4:2:2, 4:2:0 and 4:1:1 frames in planar,
// semi-planar and packed layouts: one line per exported function, naming the
// two layouts, the two samplings, the kernel shape and the size rules.
//
// Sizes: the width is rounded down to a multiple of 2 (of 4 where a side is
// 4:1:1) and the height to a multiple of 2 where a side is 4:2:0; samples
// beyond the rounded rectangle are neither read nor written. Every pointer,
// the plane and step arrays and their elements included, is checked before
// any size. A function without a least height converts nothing for a height
// of 0 or less and reports success.
#include "formats/chroma.h"
#include "frame/fronts.h"

namespace h9 {
namespace {

using namespace fmt;

// When the luma row copies take streaming stores: never, from 348603 pixels
// on, or above 524288 pixels. Either choice gives the same bytes.
enum class Stream { Never, From348603, Above524288 };

struct Rule {
    Sampling src, dst;
    int minHeight;  // 0: the height is not tested
    Stream stream = Stream::Never;
};

template <class S, class D, Shape K, Rule R>
OrvStatus convert(const Side& s, const Side& d, RoiSize roi)
{
    if (s.null || d.null)
        return orvStatusNullPointer;
    const int unitW = (R.src.xShift == 2 || R.dst.xShift == 2) ? 4 : 2;
    if (roi.width < unitW)
        return orvStatusBadSize;
    if (R.minHeight > 0 && roi.height < R.minHeight)
        return orvStatusBadSize;
    const int unitH = 1 << std::max(R.src.yShift, R.dst.yShift);
    const int width = roi.width & -unitW;
    const int height = roi.height & -unitH;
    if (height <= 0)
        return orvStatusOk;
    const int32_t area = area32(width, height);
    const bool stream = (R.stream == Stream::From348603 && area >= 348603) ||
                        (R.stream == Stream::Above524288 && area > 524288);
    ChromaKernel<S, D, K, R.src, R.dst>::frame(s.frame, d.frame, width, height, stream);
    return orvStatusOk;
}

// The rules of the member table.
constexpr Rule kCopy420{k420, k420, 2};
constexpr Rule kCopy411{k411, k411, 0};
constexpr Rule kCopy411Stream{k411, k411, 0, Stream::From348603};
constexpr Rule kCopy422{k422, k422, 1};
constexpr Rule kCopy422AnyHeight{k422, k422, 0};
constexpr Rule k422To420{k422, k420, 2};
constexpr Rule k422To420Stream{k422, k420, 2, Stream::From348603};
constexpr Rule k420To422{k420, k422, 2};
constexpr Rule k422To411{k422, k411, 0};
constexpr Rule k422To411Stream{k422, k411, 0, Stream::Above524288};
constexpr Rule k422To411MinH1{k422, k411, 1};
constexpr Rule k411To422{k411, k422, 0};
constexpr Rule k411To422Stream{k411, k422, 0, Stream::From348603};
constexpr Rule k411To420{k411, k420, 2};
constexpr Rule k411To420Stream{k411, k420, 2, Stream::From348603};
constexpr Rule k420To411{k420, k411, 2};

}  // namespace
}  // namespace h9

using namespace h9::fmt;

// Argument lists of the three layouts, source and destination side.
#define SRC_P3 const Orv8u* const pSrc[3], const int srcStep[3]
#define SRC_P2 const Orv8u *pSrcY, int srcYStep, const Orv8u *pSrcUV, int srcUVStep
#define SRC_C2 const Orv8u *pSrc, int srcStep
#define DST_P3 Orv8u *pDst[3], int dstStep[3]
#define DST_P2 Orv8u *pDstY, int dstYStep, Orv8u *pDstUV, int dstUVStep
#define DST_C2 Orv8u *pDst, int dstStep
#define SRC_P3_ARGS pSrc, srcStep
#define SRC_P2_ARGS pSrcY, srcYStep, pSrcUV, srcUVStep
#define SRC_C2_ARGS pSrc, srcStep
#define DST_P3_ARGS pDst, dstStep
#define DST_P2_ARGS pDstY, dstYStep, pDstUV, dstUVStep
#define DST_C2_ARGS pDst, dstStep

// name, source layout kind and type, destination layout kind and type, shape, rule
#define CHROMA(name, SK, S, DK, D, K, R)                                                   \
    ORV_FRONT(name)(SRC_##SK, DST_##DK, RoiSize roiSize)                                   \
    {                                                                                      \
        return h9::convert<S, D, Shape::K, h9::R>(S::side(SRC_##SK##_ARGS), D::side(DST_##DK##_ARGS), roiSize); \
    }

// ---- copies: layout and chroma order only ----------------------------------
CHROMA(orviYCbCr420_8u_P2P3R, P2, SemiCbCr, P3, PlanarCbCr, Copy, kCopy420)
CHROMA(orviYCbCr420_8u_P3P2R, P3, PlanarCbCr, P2, SemiCbCr, Copy, kCopy420)
// First byte of each pair to plane 1, second to plane 2, and back.
CHROMA(orviYCbCr420ToYCrCb420_8u_P2P3R, P2, SemiCbCr, P3, PlanarCbCr, Copy, kCopy420)
CHROMA(orviYCrCb420ToYCbCr420_8u_P3P2R, P3, PlanarCrCb, P2, SemiCbCr, Copy, kCopy420)
CHROMA(orviYCbCr411_8u_P2P3R, P2, SemiCbCr, P3, PlanarCbCr, Copy, kCopy411)
CHROMA(orviYCbCr411_8u_P3P2R, P3, PlanarCbCr, P2, SemiCbCr, Copy, kCopy411Stream)
CHROMA(orviYCbCr422_8u_C2P3R, C2, PackedYCbCr, P3, PlanarCbCr, Copy, kCopy422)
CHROMA(orviYCbCr422_8u_P3C2R, P3, PlanarCbCr, C2, PackedYCbCr, Copy, kCopy422)
CHROMA(orviYCbCr422ToCbYCr422_8u_C2R, C2, PackedYCbCr, C2, PackedCbYCr, Copy, kCopy422)
CHROMA(orviCbYCr422ToYCbCr422_8u_C2R, C2, PackedCbYCr, C2, PackedYCbCr, Copy, kCopy422)
CHROMA(orviCbYCr422ToYCbCr422_8u_C2P3R, C2, PackedCbYCr, P3, PlanarCbCr, Copy, kCopy422)
CHROMA(orviYCbCr422ToYCrCb422_8u_C2R, C2, PackedYCbCr, C2, PackedYCrCb, Copy, kCopy422AnyHeight)
CHROMA(orviYCbCr422ToYCrCb422_8u_P3C2R, P3, PlanarCbCr, C2, PackedYCrCb, Copy, kCopy422AnyHeight)
CHROMA(orviYCrCb422ToYCbCr422_8u_C2P3R, C2, PackedYCrCb, P3, PlanarCbCr, Copy, kCopy422)

// The even part of an odd width is converted, and the odd width reported.
ORV_FRONT(orviYCbCr422ToCbYCr422_8u_P3C2R)(SRC_P3, DST_C2, RoiSize roiSize)
{
    const OrvStatus st = h9::convert<PlanarCbCr, PackedCbYCr, Shape::Copy, h9::kCopy422>(
        PlanarCbCr::side(SRC_P3_ARGS), PackedCbYCr::side(DST_C2_ARGS), roiSize);
    return st == orvStatusOk && (roiSize.width & 1) ? orvStatusOddSize : st;
}

// ---- 4:2:2 to 4:2:0: chroma of the odd rows dropped -------------------------
CHROMA(orviYCbCr422ToYCbCr420_8u_P3R, P3, PlanarCbCr, P3, PlanarCbCr, Copy, k422To420Stream)
CHROMA(orviYCbCr422ToYCbCr420_8u_P3P2R, P3, PlanarCbCr, P2, SemiCbCr, Copy, k422To420)
CHROMA(orviYCbCr422ToYCbCr420_8u_C2P3R, C2, PackedYCbCr, P3, PlanarCbCr, Copy, k422To420)
CHROMA(orviYCbCr422ToYCbCr420_8u_C2P2R, C2, PackedYCbCr, P2, SemiCbCr, Copy, k422To420)
CHROMA(orviCbYCr422ToYCbCr420_8u_C2P3R, C2, PackedCbYCr, P3, PlanarCbCr, Copy, k422To420)
CHROMA(orviCbYCr422ToYCbCr420_8u_C2P2R, C2, PackedCbYCr, P2, SemiCbCr, Copy, k422To420)
CHROMA(orviCbYCr422ToYCrCb420_8u_C2P3R, C2, PackedCbYCr, P3, PlanarCrCb, Copy, k422To420)
CHROMA(orviYCbCr422ToYCrCb420_8u_C2P3R, C2, PackedYCbCr, P3, PlanarCrCb, Copy, k422To420)
CHROMA(orviYCbCr422ToYCrCb420_8u_C2P2R, C2, PackedYCbCr, P2, SemiCrCb, Copy, k422To420)
CHROMA(orviYCrCb422ToYCbCr420_8u_C2P3R, C2, PackedYCrCb, P3, PlanarCbCr, Copy, k422To420)

// ---- 4:2:0 to 4:2:2: each chroma row twice ----------------------------------
CHROMA(orviYCbCr420ToYCbCr422_8u_P3R, P3, PlanarCbCr, P3, PlanarCbCr, Copy, k420To422)
CHROMA(orviYCbCr420ToYCbCr422_8u_P2P3R, P2, SemiCbCr, P3, PlanarCbCr, Copy, k420To422)
CHROMA(orviYCbCr420ToYCbCr422_8u_P2C2R, P2, SemiCbCr, C2, PackedYCbCr, Copy, k420To422)
CHROMA(orviYCbCr420ToCbYCr422_8u_P2C2R, P2, SemiCbCr, C2, PackedCbYCr, Copy, k420To422)
CHROMA(orviYCrCb420ToYCbCr422_8u_P3R, P3, PlanarCrCb, P3, PlanarCbCr, Copy, k420To422)
CHROMA(orviYCrCb420ToYCbCr422_8u_P3C2R, P3, PlanarCrCb, C2, PackedYCbCr, Copy, k420To422)
CHROMA(orviYCrCb420ToCbYCr422_8u_P3C2R, P3, PlanarCrCb, C2, PackedCbYCr, Copy, k420To422)

// ---- 4:2:2 to 4:1:1: chroma of the odd columns dropped ----------------------
CHROMA(orviYCbCr422ToYCbCr411_8u_P3R, P3, PlanarCbCr, P3, PlanarCbCr, Drop, k422To411Stream)
CHROMA(orviYCbCr422ToYCbCr411_8u_P3P2R, P3, PlanarCbCr, P2, SemiCbCr, Drop, k422To411)
CHROMA(orviYCbCr422ToYCbCr411_8u_C2P3R, C2, PackedYCbCr, P3, PlanarCbCr, Drop, k422To411MinH1)
CHROMA(orviYCbCr422ToYCbCr411_8u_C2P2R, C2, PackedYCbCr, P2, SemiCbCr, Drop, k422To411)
CHROMA(orviCbYCr422ToYCbCr411_8u_C2P3R, C2, PackedCbYCr, P3, PlanarCbCr, Drop, k422To411)
CHROMA(orviYCrCb422ToYCbCr411_8u_C2P3R, C2, PackedYCrCb, P3, PlanarCbCr, Drop, k422To411)

// ---- 4:1:1 to 4:2:2: each chroma sample twice -------------------------------
CHROMA(orviYCbCr411ToYCbCr422_8u_P3R, P3, PlanarCbCr, P3, PlanarCbCr, Interleave, k411To422)
CHROMA(orviYCbCr411ToYCbCr422_8u_P3C2R, P3, PlanarCbCr, C2, PackedYCbCr, Interleave, k411To422)
CHROMA(orviYCbCr411ToYCbCr422_8u_P2P3R, P2, SemiCbCr, P3, PlanarCbCr, Interleave, k411To422Stream)
CHROMA(orviYCbCr411ToYCbCr422_8u_P2C2R, P2, SemiCbCr, C2, PackedYCbCr, Interleave, k411To422)
CHROMA(orviYCbCr411ToYCrCb422_8u_P3R, P3, PlanarCbCr, P3, PlanarCrCb, Interleave, k411To422)
CHROMA(orviYCbCr411ToYCrCb422_8u_P3C2R, P3, PlanarCbCr, C2, PackedYCrCb, Interleave, k411To422)

// ---- 4:1:1 to 4:2:0: two chroma rows side by side, without loss -------------
CHROMA(orviYCbCr411ToYCbCr420_8u_P3R, P3, PlanarCbCr, P3, PlanarCbCr, Interleave, k411To420)
CHROMA(orviYCbCr411ToYCbCr420_8u_P3P2R, P3, PlanarCbCr, P2, SemiCbCr, Interleave, k411To420Stream)
CHROMA(orviYCbCr411ToYCbCr420_8u_P2P3R, P2, SemiCbCr, P3, PlanarCbCr, Interleave, k411To420)
CHROMA(orviYCbCr411ToYCrCb420_8u_P2P3R, P2, SemiCbCr, P3, PlanarCrCb, Interleave, k411To420)

// ---- 4:2:0 to 4:1:1: the exact inverse, even columns to even rows -----------
CHROMA(orviYCbCr420ToYCbCr411_8u_P2P3R, P2, SemiCbCr, P3, PlanarCbCr, Drop, k420To411)
CHROMA(orviYCbCr420ToYCbCr411_8u_P3P2R, P3, PlanarCbCr, P2, SemiCbCr, Drop, k420To411)
CHROMA(orviYCrCb420ToYCbCr411_8u_P3P2R, P3, PlanarCrCb, P2, SemiCbCr, Drop, k420To411)
