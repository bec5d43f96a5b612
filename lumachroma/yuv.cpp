// RGB and YUV at full resolution: weights 0.299, 0.587, 0.114, chroma scales
// 0.492 (U) and 0.877 (V), chroma stored with an offset of 128, no range
// compression.
//
// Each member pairs a block form with a tail form (see pixels8u.h). The
// block forms are 16-bit lane arithmetic: products are the high halves of
// 16x16-bit multiplies (the input pre-shifted so that the high half is the
// wanted scale), sums saturate; their scalar statements reproduce the lanes.
// The tail forms are 32-bit fixed point with 16 fraction bits.
#include <immintrin.h>

#include <cstdint>

#include "frame/checks.h"
#include "frame/fronts.h"
#include "lumachroma/pixels8u.h"
#include "lumachroma/yuvforms.h"

namespace h9 {
namespace {

using namespace px8;
using namespace yuvforms;

// ---------------------------------------------------------------------------
// Forward.

// Block form of the interleaved and planar members. Luma weights 19595,
// 38469, 7471 (sum 65535, so white gives 254) on x << 8 with unsigned high
// halves and an unsigned saturating sum, no rounding; chroma (x * w) >> 9 as
// signed high halves of x << 7, sum >> 6, + 128.
struct FormA {
    static Px scalar(int r, int g, int b)
    {
        const uint16_t y = addsU16(addsU16(hiU(r << 8, 19595), hiU(g << 8, 38469)), hiU(b << 8, 7471));
        const int16_t u = addsS16(addsS16(hiS(r << 7, -4816), hiS(g << 7, -9469)), hiS(b << 7, 14286));
        const int16_t v = addsS16(addsS16(hiS(r << 7, 20152), hiS(g << 7, -16875)), hiS(b << 7, -3276));
        return {satU8(y >> 8), satU8(addsS16(u >> 6, 128)), satU8(addsS16(v >> 6, 128))};
    }
    static V3 lanes(const V3& x)
    {
        const V r8 = shl<8>(x.a), g8 = shl<8>(x.b), b8 = shl<8>(x.c);
        const V r7 = shl<7>(x.a), g7 = shl<7>(x.b), b7 = shl<7>(x.c);
        const V y = addsU(addsU(hiU(r8, 19595), hiU(g8, 38469)), hiU(b8, 7471));
        const V u = addsS(addsS(hiS(r7, -4816), hiS(g7, -9469)), hiS(b7, 14286));
        const V v = addsS(addsS(hiS(r7, 20152), hiS(g7, -16875)), hiS(b7, -3276));
        return {srl<8>(y), addsS(sra<6>(u), 128), addsS(sra<6>(v), 128)};
    }
};

// Tail of the interleaved members: s = 19595 R + 38470 G + 7471 B (sum
// 65536), Y = s >> 16, chroma from the differences B - Y and R - Y rounded
// with 32767, scaled by 32244 and 57475.
struct FormB {
    static Px scalar(int r, int g, int b)
    {
        const int s = 19595 * r + 38470 * g + 7471 * b;
        const int u = ((((b << 16) - s + 32767) >> 16) * 32244 >> 16) + 128;
        const int v = ((((r << 16) - s + 32767) >> 16) * 57475 >> 16) + 128;
        return {uint8_t(s >> 16), uint8_t(u), chop(v)};
    }
};

// Tail of the planar member: the block weights in 32 bits, no rounding.
struct FormC {
    static Px scalar(int r, int g, int b)
    {
        const int y = (19595 * r + 38469 * g + 7471 * b) >> 16;
        const int u = ((-4816 * r - 9469 * g + 14286 * b) >> 15) + 128;
        const int v = ((20152 * r - 16875 * g - 3276 * b) >> 15) + 128;
        return {uint8_t(y), uint8_t(u), chop(v)};
    }
};

// The members with alpha: as FormB with rounding 32768 in all three. Every
// pixel of the four-channel member takes it, computed on 32-bit lanes.
struct FormD {
    static Px scalar(int r, int g, int b)
    {
        const int s = 19595 * r + 38470 * g + 7471 * b;
        const int u = ((((b << 16) - s + 32768) >> 16) * 32244 >> 16) + 128;
        const int v = ((((r << 16) - s + 32768) >> 16) * 57475 >> 16) + 128;
        return {uint8_t((s + 32768) >> 16), uint8_t(u), chop(v)};
    }
    static W3 words(const W3& w)
    {
        const __m256i s = add32(add32(mul32(w.a, 19595), mul32(w.b, 38470)), mul32(w.c, 7471));
        const __m256i du = sra32<16>(add32(sub32(shl32<16>(w.c), s), 32768));
        const __m256i dv = sra32<16>(add32(sub32(shl32<16>(w.a), s), 32768));
        return {sra32<16>(add32(s, 32768)), add32(sra32<16>(mul32(du, 32244)), 128), add32(sra32<16>(mul32(dv, 57475)), 128)};
    }
    static V3 lanes(const V3& x) { return in32(x, words); }
};

// Source alpha bytes to the fourth plane.
void copyAlpha(const uint8_t* s, uint8_t* a, int width)
{
    for (int i = 0; i < width; ++i)
        a[i] = s[4 * i + 3];
}

}  // namespace
}  // namespace h9

using namespace h9;
using namespace h9::px8;

// ---- RGB to YUV -----------------------------------------------------------
ORV_FRONT(orviRGBToYUV_8u_C3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    convertRows<Kernel<FormA, FormB, Blocks<16>>>(PackedRowsIn<3>{pSrc, srcStep},
                                                  PackedRowsOut<3, false, Alpha::None>{pDst, dstStep}, roiSize);
    return orvStatusOk;
}

ORV_FRONT(orviRGBToYUV_8u_C3P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep, RoiSize roiSize)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    if (OrvStatus st = checkPlanes(pDst, 3))
        return st;
    convertRows<Kernel<FormA, FormB, Blocks<8>>>(PackedRowsIn<3>{pSrc, srcStep}, PlaneRowsOut{pDst, dstStep}, roiSize);
    return orvStatusOk;
}

ORV_FRONT(orviRGBToYUV_8u_P3R)(const Orv8u* const pSrc[3], int srcStep, Orv8u* pDst[3], int dstStep, RoiSize roiSize)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    if (OrvStatus st = checkPlanes(pSrc, 3))
        return st;
    if (OrvStatus st = checkPlanes(pDst, 3))
        return st;
    convertRows<Kernel<FormA, FormC, Blocks<16>>>(PlaneRowsIn{pSrc, srcStep}, PlaneRowsOut{pDst, dstStep}, roiSize);
    return orvStatusOk;
}

ORV_FRONT(orviRGBToYUV_8u_AC4R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    convertRows<Kernel<FormD, FormD, WholeRow>>(PackedRowsIn<4>{pSrc, srcStep},
                                                PackedRowsOut<4, false, Alpha::Keep>{pDst, dstStep}, roiSize);
    return orvStatusOk;
}

ORV_FRONT(orviRGBToYUV_8u_AC4P4R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[4], int dstStep, RoiSize roiSize)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    if (OrvStatus st = checkPlanes(pDst, 4))
        return st;
    const PackedRowsIn<4> in{pSrc, srcStep};
    const PlaneRowsOut out{pDst, dstStep};
    for (int y = 0; y < roiSize.height; ++y) {
        convertRow<Kernel<FormE, FormD, Blocks<8>>>(in(y), out(y), roiSize.width);
        copyAlpha(rowAt(pSrc, srcStep, y), rowAt(pDst[3], dstStep, y), roiSize.width);
    }
    return orvStatusOk;
}

// ---- YUV to RGB -----------------------------------------------------------
ORV_FRONT(orviYUVToRGB_8u_C3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    convertRows<Kernel<FormP, FormQ, Blocks<8>>>(PackedRowsIn<3>{pSrc, srcStep},
                                                 PackedRowsOut<3, false, Alpha::None>{pDst, dstStep}, roiSize);
    return orvStatusOk;
}

ORV_FRONT(orviYUVToRGB_8u_P3C3R)(const Orv8u* const pSrc[3], int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    if (OrvStatus st = checkPlanes(pSrc, 3))
        return st;
    convertRows<Kernel<FormR, FormS, Blocks<16>>>(PlaneRowsIn{pSrc, srcStep},
                                                  PackedRowsOut<3, false, Alpha::None>{pDst, dstStep}, roiSize);
    return orvStatusOk;
}

ORV_FRONT(orviYUVToRGB_8u_P3R)(const Orv8u* const pSrc[3], int srcStep, Orv8u* pDst[3], int dstStep, RoiSize roiSize)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    if (OrvStatus st = checkPlanes(pDst, 3))  // destination planes first
        return st;
    if (OrvStatus st = checkPlanes(pSrc, 3))
        return st;
    convertRows<Kernel<FormS, FormS, WholeRow>>(PlaneRowsIn{pSrc, srcStep}, PlaneRowsOut{pDst, dstStep}, roiSize);
    return orvStatusOk;
}

ORV_FRONT(orviYUVToRGB_8u_AC4R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    convertRows<Kernel<FormQ, FormQ, WholeRow>>(PackedRowsIn<4>{pSrc, srcStep},
                                                PackedRowsOut<4, false, Alpha::Keep>{pDst, dstStep}, roiSize);
    return orvStatusOk;
}

ORV_FRONT(orviYUVToRGB_8u_C3C4R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize,
                                 Orv8u alpha)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    convertRows<Kernel<FormT, FormU, Blocks<8>>>(PackedRowsIn<3>{pSrc, srcStep},
                                                 PackedRowsOut<4, false, Alpha::Value>{pDst, dstStep, alpha}, roiSize);
    return orvStatusOk;
}
