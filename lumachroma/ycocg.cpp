// RGB and YCoCg, plain and reversible (the transforms and their number types
// are in ycocg.h). Every member runs on the caller's thread.
#include "lumachroma/ycocg.h"

#include "frame/checks.h"
#include "frame/fronts.h"

namespace h9 {
namespace {

using namespace ycocg;

// Null pointers first: the two given, in the order given, then the three
// planes; then, where the member tests sizes at all, height and width below
// 1. The members that do not test sizes convert nothing for such a size.
template <class P>
OrvStatus checkYCoCg(const void* first, const void* second, P* const* planes, RoiSize roi, bool sized)
{
    if (!first || !second)
        return orvStatusNullPointer;
    if (OrvStatus st = checkPlanes(planes, 3))
        return st;
    if (sized && (roi.height < 1 || roi.width < 1))
        return orvStatusBadSize;
    return orvStatusOk;
}

enum class Checks {
    Unsized,        // pointers only
    Sized,          // pointers, source first, then sizes
    DstFirstSized,  // pointers, destination first, then sizes
};

// Interleaved pixels of T with Ch samples to three planes of P.
template <class Form, class N, int Ch, bool Bgr = true, class T, class P>
OrvStatus toPlanes(const T* src, int srcStep, P* const dst[3], int dstStep, RoiSize roi, Checks checks)
{
    const OrvStatus st = checks == Checks::DstFirstSized ? checkYCoCg(dst, src, dst, roi, true)
                                                         : checkYCoCg(src, dst, dst, roi, checks == Checks::Sized);
    if (st != orvStatusOk)
        return st;
    convertRows<Form, N>(PixelsIn<T, Ch, Bgr>{{}, src}, srcStep, PlanesOut<P>{{dst[0], dst[1], dst[2]}}, dstStep,
                         roi);
    return orvStatusOk;
}

// Three planes of P to interleaved pixels of T with Ch samples.
template <class Form, class N, int Ch, bool Bgr = true, class P, class T>
OrvStatus fromPlanes(const P* const src[3], int srcStep, T* dst, int dstStep, RoiSize roi, Checks checks,
                     T alpha = 0)
{
    if (OrvStatus st = checkYCoCg(src, dst, src, roi, checks == Checks::Sized))
        return st;
    convertRows<Form, N>(PlanesIn<P>{{src[0], src[1], src[2]}}, srcStep, PixelsOut<T, Ch, Bgr>{{}, dst, alpha},
                         dstStep, roi);
    return orvStatusOk;
}

constexpr Checks kUnsized = Checks::Unsized;
constexpr Checks kSized = Checks::Sized;
constexpr Checks kDstFirst = Checks::DstFirstSized;

}  // namespace
}  // namespace h9

using namespace h9;
using namespace h9::ycocg;

// ---- plain ------------------------------------------------------------------
ORV_FRONT(orviBGRToYCoCg_8u16s_C3P3R)(const Orv8u* pSrc, int srcStep, Orv16s* pDst[3], int dstStep, RoiSize roiSize)
{
    return toPlanes<PlainForward, Bytes, 3>(pSrc, srcStep, pDst, dstStep, roiSize, kDstFirst);
}
ORV_FRONT(orviBGRToYCoCg_8u16s_C4P3R)(const Orv8u* pSrc, int srcStep, Orv16s* pDst[3], int dstStep, RoiSize roiSize)
{
    return toPlanes<PlainForward, UnpackBytes, 4>(pSrc, srcStep, pDst, dstStep, roiSize, kDstFirst);
}
// The sums of 16-bit samples need 18 bits before the shift: 32-bit lanes.
ORV_FRONT(orviSBGRToYCoCg_16s_C3P3R)(const Orv16s* pSrc, int srcStep, Orv16s* pDst[3], int dstStep, RoiSize roiSize)
{
    return toPlanes<PlainForward, Lanes32, 3>(pSrc, srcStep, pDst, dstStep, roiSize, kDstFirst);
}
ORV_FRONT(orviSBGRToYCoCg_16s_C4P3R)(const Orv16s* pSrc, int srcStep, Orv16s* pDst[3], int dstStep, RoiSize roiSize)
{
    return toPlanes<PlainForward, Lanes32, 4>(pSrc, srcStep, pDst, dstStep, roiSize, kDstFirst);
}
ORV_FRONT(orviSBGRToYCoCg_16s32s_C3P3R)(const Orv16s* pSrc, int srcStep, Orv32s* pDst[3], int dstStep,
                                        RoiSize roiSize)
{
    return toPlanes<PlainForward, Lanes32, 3>(pSrc, srcStep, pDst, dstStep, roiSize, kDstFirst);
}
ORV_FRONT(orviSBGRToYCoCg_16s32s_C4P3R)(const Orv16s* pSrc, int srcStep, Orv32s* pDst[3], int dstStep,
                                        RoiSize roiSize)
{
    return toPlanes<PlainForward, Lanes32, 4>(pSrc, srcStep, pDst, dstStep, roiSize, kUnsized);
}

ORV_FRONT(orviYCoCgToBGR_16s8u_P3C3R)(const Orv16s* const pSrc[3], int srcStep, Orv8u* pDst, int dstStep,
                                      RoiSize roiSize)
{
    return fromPlanes<PlainInverse, Pair16, 3>(pSrc, srcStep, pDst, dstStep, roiSize, kUnsized);
}
ORV_FRONT(orviYCoCgToBGR_16s8u_P3C4R)(const Orv16s* const pSrc[3], int srcStep, Orv8u* pDst, int dstStep,
                                      RoiSize roiSize, Orv8u alpha)
{
    return fromPlanes<PlainInverse, Pair16, 4>(pSrc, srcStep, pDst, dstStep, roiSize, kUnsized, alpha);
}
ORV_FRONT(orviYCoCgToSBGR_16s_P3C3R)(const Orv16s* const pSrc[3], int srcStep, Orv16s* pDst, int dstStep,
                                     RoiSize roiSize)
{
    return fromPlanes<PlainInverse, Lanes16, 3>(pSrc, srcStep, pDst, dstStep, roiSize, kUnsized);
}
ORV_FRONT(orviYCoCgToSBGR_16s_P3C4R)(const Orv16s* const pSrc[3], int srcStep, Orv16s* pDst, int dstStep,
                                     RoiSize roiSize, Orv16s alpha)
{
    return fromPlanes<PlainInverse, Lanes16, 4>(pSrc, srcStep, pDst, dstStep, roiSize, kSized, alpha);
}
ORV_FRONT(orviYCoCgToSBGR_32s16s_P3C3R)(const Orv32s* const pSrc[3], int srcStep, Orv16s* pDst, int dstStep,
                                        RoiSize roiSize)
{
    return fromPlanes<PlainInverse, Lanes32, 3>(pSrc, srcStep, pDst, dstStep, roiSize, kSized);
}
ORV_FRONT(orviYCoCgToSBGR_32s16s_P3C4R)(const Orv32s* const pSrc[3], int srcStep, Orv16s* pDst, int dstStep,
                                        RoiSize roiSize, Orv16s alpha)
{
    return fromPlanes<PlainInverse, Lanes32, 4>(pSrc, srcStep, pDst, dstStep, roiSize, kSized, alpha);
}

// ---- reversible ---------------------------------------------------------------
ORV_FRONT(orviBGRToYCoCg_Rev_8u16s_C3P3R)(const Orv8u* pSrc, int srcStep, Orv16s* pDst[3], int dstStep,
                                          RoiSize roiSize)
{
    return toPlanes<LiftForward<int16_t>, Pair16, 3>(pSrc, srcStep, pDst, dstStep, roiSize, kDstFirst);
}
ORV_FRONT(orviBGRToYCoCg_Rev_8u16s_C4P3R)(const Orv8u* pSrc, int srcStep, Orv16s* pDst[3], int dstStep,
                                          RoiSize roiSize)
{
    return toPlanes<LiftForward<int16_t>, Pair16, 4>(pSrc, srcStep, pDst, dstStep, roiSize, kDstFirst);
}
ORV_FRONT(orviSBGRToYCoCg_Rev_16s_C3P3R)(const Orv16s* pSrc, int srcStep, Orv16s* pDst[3], int dstStep,
                                         RoiSize roiSize)
{
    return toPlanes<LiftForward<int16_t>, Lanes16, 3>(pSrc, srcStep, pDst, dstStep, roiSize, kUnsized);
}
ORV_FRONT(orviSBGRToYCoCg_Rev_16s_C4P3R)(const Orv16s* pSrc, int srcStep, Orv16s* pDst[3], int dstStep,
                                         RoiSize roiSize)
{
    return toPlanes<LiftForward<int16_t>, Lanes16, 4>(pSrc, srcStep, pDst, dstStep, roiSize, kUnsized);
}
ORV_FRONT(orviSBGRToYCoCg_Rev_16s32s_C3P3R)(const Orv16s* pSrc, int srcStep, Orv32s* pDst[3], int dstStep,
                                            RoiSize roiSize)
{
    return toPlanes<LiftForward<int32_t>, Lanes32, 3>(pSrc, srcStep, pDst, dstStep, roiSize, kDstFirst);
}
ORV_FRONT(orviSBGRToYCoCg_Rev_16s32s_C4P3R)(const Orv16s* pSrc, int srcStep, Orv32s* pDst[3], int dstStep,
                                            RoiSize roiSize)
{
    return toPlanes<LiftForward<int32_t>, Lanes32, 4>(pSrc, srcStep, pDst, dstStep, roiSize, kUnsized);
}

ORV_FRONT(orviYCoCgToBGR_Rev_16s8u_P3C3R)(const Orv16s* const pSrc[3], int srcStep, Orv8u* pDst, int dstStep,
                                          RoiSize roiSize)
{
    return fromPlanes<LiftInverse, Pair16, 3>(pSrc, srcStep, pDst, dstStep, roiSize, kUnsized);
}
ORV_FRONT(orviYCoCgToBGR_Rev_16s8u_P3C4R)(const Orv16s* const pSrc[3], int srcStep, Orv8u* pDst, int dstStep,
                                          RoiSize roiSize, Orv8u alpha)
{
    return fromPlanes<LiftInverse, Pair16, 4>(pSrc, srcStep, pDst, dstStep, roiSize, kUnsized, alpha);
}
ORV_FRONT(orviYCoCgToSBGR_Rev_16s_P3C3R)(const Orv16s* const pSrc[3], int srcStep, Orv16s* pDst, int dstStep,
                                         RoiSize roiSize)
{
    return fromPlanes<LiftInverse, Lanes16, 3>(pSrc, srcStep, pDst, dstStep, roiSize, kUnsized);
}
ORV_FRONT(orviYCoCgToSBGR_Rev_16s_P3C4R)(const Orv16s* const pSrc[3], int srcStep, Orv16s* pDst, int dstStep,
                                         RoiSize roiSize, Orv16s alpha)
{
    return fromPlanes<LiftInverse, Lanes16, 4>(pSrc, srcStep, pDst, dstStep, roiSize, kUnsized, alpha);
}
// Halving 32-bit chroma needs its bits above the sixteenth: 32-bit lanes.
ORV_FRONT(orviYCoCgToSBGR_Rev_32s16s_P3C3R)(const Orv32s* const pSrc[3], int srcStep, Orv16s* pDst, int dstStep,
                                            RoiSize roiSize)
{
    return fromPlanes<LiftInverse, Lanes32, 3>(pSrc, srcStep, pDst, dstStep, roiSize, kUnsized);
}
ORV_FRONT(orviYCoCgToSBGR_Rev_32s16s_P3C4R)(const Orv32s* const pSrc[3], int srcStep, Orv16s* pDst, int dstStep,
                                            RoiSize roiSize, Orv16s alpha)
{
    return fromPlanes<LiftInverse, Lanes32, 4>(pSrc, srcStep, pDst, dstStep, roiSize, kUnsized, alpha);
}

// ---- byte planes, chroma biased by 128 (R, G, B pixels) --------------------
ORV_FRONT(orviRGBToYCoCg_8u_C3P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep, RoiSize roiSize)
{
    return toPlanes<BiasedForward, Bytes, 3, false>(pSrc, srcStep, pDst, dstStep, roiSize, kSized);
}
ORV_FRONT(orviYCoCgToRGB_8u_P3C3R)(const Orv8u* const pSrc[3], int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    return fromPlanes<BiasedInverse, Bytes, 3, false>(pSrc, srcStep, pDst, dstStep, roiSize, kUnsized);
}
