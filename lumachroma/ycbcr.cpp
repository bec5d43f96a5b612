// RGB and studio-range YCbCr at full resolution, BT.601 weights: luma 16 to
// 235, chroma 16 to 240 around 128 for input spanning 0 to 255, and back.
//
// Forward weights, 16 fraction bits:
//   Y  =  16843 R + 33030 G +  6423 B, + 16
//   Cb =  -9699 R - 19071 G + 28770 B, + 128
//   Cr =  28770 R - 24117 G -  4653 B, + 128
// Inverse with Y' = Y - 16 and chroma less 128 (two sets of weights that
// differ in the last places, see kInv1 and kInv2).
//
// As in the YUV family each member pairs a block form (16-bit lanes, high
// halves of products, saturating sums) with a tail form (32-bit scalar).
#include <immintrin.h>

#include <cstdint>

#include "frame/checks.h"
#include "frame/fronts.h"
#include "lumachroma/pixels8u.h"
#include "lumachroma/ycbcrforms.h"

namespace h9 {
namespace {

using namespace px8;
using namespace ycc;

// Block form of the planar member: full 16-bit weights, rounding 128 into
// the luma sum (unsigned saturating) before >> 8, then + 16; chroma sums
// with rounding 64, arithmetic >> 7, then + 128.
struct FormFP {
    static Px scalar(int r, int g, int b)
    {
        const uint16_t y =
            addsU16(addsU16(addsU16(hiU(r << 8, 16843), hiU(g << 8, 33030)), hiU(b << 8, 6423)), 128);
        const int16_t cb = addsS16(addsS16(addsS16(hiS(r << 7, -9699), hiS(g << 7, -19071)), hiS(b << 7, 28770)), 64);
        const int16_t cr = addsS16(addsS16(addsS16(hiS(r << 7, 28770), hiS(g << 7, -24117)), hiS(b << 7, -4653)), 64);
        return {satU8(addsS16(y >> 8, 16)), satU8(addsS16(cb >> 7, 128)), satU8(addsS16(cr >> 7, 128))};
    }
    static V3 lanes(const V3& x)
    {
        const V r8 = shl<8>(x.a), g8 = shl<8>(x.b), b8 = shl<8>(x.c);
        const V r7 = shl<7>(x.a), g7 = shl<7>(x.b), b7 = shl<7>(x.c);
        const V y = addsU(addsU(addsU(hiU(r8, 16843), hiU(g8, 33030)), hiU(b8, 6423)), 128);
        const V cb = addsS(addsS(addsS(hiS(r7, -9699), hiS(g7, -19071)), hiS(b7, 28770)), 64);
        const V cr = addsS(addsS(addsS(hiS(r7, 28770), hiS(g7, -24117)), hiS(b7, -4653)), 64);
        return {addsS(srl<8>(y), 16), addsS(sra<7>(cb), 128), addsS(sra<7>(cr), 128)};
    }
};

// The interleaved inverse takes blocks of 4 pixels, except that a remainder
// of 12 past the last 16 gets only one block of 4: the last 8 + (width & 3)
// pixels then take the scalar form.
struct InverseC3Span {
    static int end(int width) { return (width & 12) == 12 ? (width & ~15) + 4 : (width & ~3); }
};

}  // namespace
}  // namespace h9

using namespace h9;
using namespace h9::px8;
using namespace h9::ycc;

// ---- RGB to YCbCr ---------------------------------------------------------
using ForwardInterleaved = Kernel<FormFB, FormFS, Blocks<16>>;

ORV_FRONT(orviRGBToYCbCr_8u_C3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    convertRows<ForwardInterleaved>(PackedRowsIn<3>{pSrc, srcStep}, PackedRowsOut<3, false, Alpha::None>{pDst, dstStep},
                                    roiSize);
    return orvStatusOk;
}

ORV_FRONT(orviRGBToYCbCr_8u_AC4R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    convertRows<ForwardInterleaved>(PackedRowsIn<4>{pSrc, srcStep},
                                    PackedRowsOut<4, false, Alpha::ZeroInBlocks>{pDst, dstStep}, roiSize);
    return orvStatusOk;
}

ORV_FRONT(orviRGBToYCbCr_8u_C3P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep, RoiSize roiSize)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    if (OrvStatus st = checkPlanes(pDst, 3))
        return st;
    convertRows<ForwardInterleaved>(PackedRowsIn<3>{pSrc, srcStep}, PlaneRowsOut{pDst, dstStep}, roiSize);
    return orvStatusOk;
}

ORV_FRONT(orviRGBToYCbCr_8u_AC4P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep, RoiSize roiSize)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    if (OrvStatus st = checkPlanes(pDst, 3))
        return st;
    convertRows<ForwardInterleaved>(PackedRowsIn<4>{pSrc, srcStep}, PlaneRowsOut{pDst, dstStep}, roiSize);
    return orvStatusOk;
}

ORV_FRONT(orviRGBToYCbCr_8u_P3R)(const Orv8u* const pSrc[3], int srcStep, Orv8u* pDst[3], int dstStep,
                                 RoiSize roiSize)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    if (OrvStatus st = checkPlanes(pSrc, 3))
        return st;
    if (OrvStatus st = checkPlanes(pDst, 3))
        return st;
    convertRows<Kernel<FormFP, FormFS, Blocks<8>>>(PlaneRowsIn{pSrc, srcStep}, PlaneRowsOut{pDst, dstStep}, roiSize);
    return orvStatusOk;
}

// ---- YCbCr to RGB ---------------------------------------------------------
ORV_FRONT(orviYCbCrToRGB_8u_C3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    convertRows<Kernel<FormIB, FormIS, InverseC3Span>>(PackedRowsIn<3>{pSrc, srcStep},
                                                       PackedRowsOut<3, false, Alpha::None>{pDst, dstStep}, roiSize);
    return orvStatusOk;
}

ORV_FRONT(orviYCbCrToRGB_8u_P3C3R)(const Orv8u* const pSrc[3], int srcStep, Orv8u* pDst, int dstStep,
                                   RoiSize roiSize)
{
    if (OrvStatus st = checkPlanesFirst(pSrc, pDst, roiSize))
        return st;
    convertRows<Kernel<FormIB, FormIS, Blocks<4>>>(PlaneRowsIn{pSrc, srcStep},
                                                   PackedRowsOut<3, false, Alpha::None>{pDst, dstStep}, roiSize);
    return orvStatusOk;
}

ORV_FRONT(orviYCbCrToBGR_8u_P3C3R)(const Orv8u* const pSrc[3], int srcStep, Orv8u* pDst, int dstStep,
                                   RoiSize roiSize)
{
    if (OrvStatus st = checkPlanesFirst(pSrc, pDst, roiSize))
        return st;
    convertRows<Kernel<FormIB, FormIS, Blocks<4>>>(PlaneRowsIn{pSrc, srcStep},
                                                   PackedRowsOut<3, true, Alpha::None>{pDst, dstStep}, roiSize);
    return orvStatusOk;
}

ORV_FRONT(orviYCbCrToRGB_8u_P3R)(const Orv8u* const pSrc[3], int srcStep, Orv8u* pDst[3], int dstStep,
                                 RoiSize roiSize)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    if (OrvStatus st = checkPlanes(pDst, 3))  // destination planes first
        return st;
    if (OrvStatus st = checkPlanes(pSrc, 3))
        return st;
    convertRows<Kernel<FormIP, FormIQ, Blocks<4>>>(PlaneRowsIn{pSrc, srcStep}, PlaneRowsOut{pDst, dstStep}, roiSize);
    return orvStatusOk;
}

ORV_FRONT(orviYCbCrToRGB_8u_AC4R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    convertRows<Kernel<FormIU, FormIU, WholeRow>>(PackedRowsIn<4>{pSrc, srcStep},
                                                  PackedRowsOut<4, false, Alpha::Keep>{pDst, dstStep}, roiSize);
    return orvStatusOk;
}

ORV_FRONT(orviYCbCrToRGB_8u_P3C4R)(const Orv8u* const pSrc[3], int srcStep, Orv8u* pDst, int dstStep,
                                   RoiSize roiSize, Orv8u alpha)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    if (OrvStatus st = checkPlanes(pSrc, 3))
        return st;
    convertRows<Kernel<FormIC, FormIS, Blocks<8>>>(PlaneRowsIn{pSrc, srcStep},
                                                   PackedRowsOut<4, false, Alpha::Value>{pDst, dstStep, alpha}, roiSize);
    return orvStatusOk;
}

ORV_FRONT(orviYCbCrToBGR_8u_P3C4R)(const Orv8u* const pSrc[3], int srcStep, Orv8u* pDst, int dstStep,
                                   RoiSize roiSize, Orv8u alpha)
{
    if (OrvStatus st = checkPlanesFirst(pSrc, pDst, roiSize))
        return st;
    convertRows<Kernel<FormIC, FormIC, WholeRow>>(PlaneRowsIn{pSrc, srcStep},
                                                  PackedRowsOut<4, true, Alpha::Value>{pDst, dstStep, alpha}, roiSize);
    return orvStatusOk;
}
