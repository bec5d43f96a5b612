// The studio-range BT.601 forms that the full-resolution and the subsampled
// YCbCr families share: forward luma and chroma in 16-bit lanes (block) and
// 32-bit scalar (tail), and the inverse forms on Y' = Y - 16 and chroma less
// 128. Each form is a scalar statement per pixel and the same arithmetic on
// 16 lanes.
#pragma once

#include <cstdint>

#include "frame/checks.h"
#include "lumachroma/pixels8u.h"

namespace h9::ycc {

using namespace px8;

// Forward weights at 16 fraction bits, R, G, B.
struct Weights3 {
    int r, g, b;
};
inline constexpr Weights3 kWY = {16843, 33030, 6423};
inline constexpr Weights3 kWCb = {-9699, -19071, 28770};
inline constexpr Weights3 kWCr = {28770, -24117, -4653};

// ---------------------------------------------------------------------------
// Forward.

// Scalar form: 16 fraction bits, 0x108000 adds 16.5 and 0x808000 adds 128.5;
// the weights keep every sum within a byte, so no clamp.
struct FormFS {
    static Px scalar(int r, int g, int b)
    {
        const int y = (16843 * r + 33030 * g + 6423 * b + 0x108000) >> 16;
        const int cb = (-9699 * r - 19071 * g + 28770 * b + 0x808000) >> 16;
        const int cr = (28770 * r - 24117 * g - 4653 * b + 0x808000) >> 16;
        return {uint8_t(y), uint8_t(cb), uint8_t(cr)};
    }
};

// Block form of the interleaved members: luma on halved weights (15
// fraction bits) as unsigned high halves of x << 8, summed with unsigned
// saturation, + 2112 (16.5), >> 7; chroma as signed high halves of x << 7
// ((x * w) >> 9), + 16448 (128.5) wrapping in 16 bits, logical >> 7.
struct FormFB {
    // The luma part alone, for the subsampled members.
    static uint8_t luma(int r, int g, int b)
    {
        const uint16_t y = addsU16(addsU16(hiU(r << 8, 8422), hiU(g << 8, 16515)), hiU(b << 8, 3212));
        return satU8(addsU16(y, 2112) >> 7);
    }
    static V luma(V r, V g, V b)
    {
        return srl<7>(addsU(addsU(addsU(hiU(shl<8>(r), 8422), hiU(shl<8>(g), 16515)), hiU(shl<8>(b), 3212)), 2112));
    }
    static Px scalar(int r, int g, int b)
    {
        const int16_t cb = addsS16(addsS16(hiS(r << 7, -9699), hiS(g << 7, -19071)), hiS(b << 7, 28770));
        const int16_t cr = addsS16(addsS16(hiS(r << 7, 28770), hiS(g << 7, -24117)), hiS(b << 7, -4653));
        return {luma(r, g, b), satU8(wrap16(cb + 16448) >> 7), satU8(wrap16(cr + 16448) >> 7)};
    }
    static V3 lanes(const V3& x)
    {
        const V r7 = shl<7>(x.a), g7 = shl<7>(x.b), b7 = shl<7>(x.c);
        const V cb = addsS(addsS(hiS(r7, -9699), hiS(g7, -19071)), hiS(b7, 28770));
        const V cr = addsS(addsS(hiS(r7, 28770), hiS(g7, -24117)), hiS(b7, -4653));
        return {luma(x.a, x.b, x.c), srl<7>(add(cb, 16448)), srl<7>(add(cr, 16448))};
    }
};

// ---------------------------------------------------------------------------
// Inverse.

// Scalar forms, 16 fraction bits: IS rounds with set 1, IQ rounds with set
// 2, IU takes set 2 without rounding.
inline constexpr InverseWeights kInv1 = {76282, 16, 104593, 25689, 53279, 132184};
inline constexpr InverseWeights kInv2 = {76284, 16, 104595, 25690, 53281, 132186};
using FormIS = Inverse32<kInv1, 32768, 32768, 32768>;
using FormIQ = Inverse32<kInv2, 32768, 32768, 32768>;
using FormIU = Inverse32<kInv2, 0, 0, 0>;

// Block form of the interleaved and planar-to-interleaved members: 12
// fraction bits on 128 Y', 128 Cb', 128 Cr' (signed high halves), 3 guard
// bits, rounding 4 (IB0: the same without rounding).
template <int Rnd>
struct FormIBr {
    static Px scalar(int y, int cb, int cr)
    {
        const int y128 = (y - 16) * 128, cb128 = (cb - 128) * 128, cr128 = (cr - 128) * 128;
        const int16_t a = hiS(y128, 4769);
        return {satU8(addsS16(addsS16(a, hiS(cr128, 6537)), Rnd) >> 3),
                satU8(addsS16(subsS16(a, addsS16(hiS(cb128, 1605), hiS(cr128, 3330))), Rnd) >> 3),
                satU8(addsS16(addsS16(a, hiS(cb128, 8263)), Rnd) >> 3)};
    }
    static V3 lanes(const V3& x)
    {
        const V y128 = shl<7>(sub(x.a, 16)), cb128 = shl<7>(sub(x.b, 128)), cr128 = shl<7>(sub(x.c, 128));
        const V a = hiS(y128, 4769);
        return {sra<3>(addsS(addsS(a, hiS(cr128, 6537)), Rnd)),
                sra<3>(addsS(subsS(a, addsS(hiS(cb128, 1605), hiS(cr128, 3330))), Rnd)),
                sra<3>(addsS(addsS(a, hiS(cb128, 8263)), Rnd))};
    }
};

using FormIB = FormIBr<4>;
using FormIB0 = FormIBr<0>;

// Block form of the planar member: 13 fraction bits, 4 guard bits, no
// rounding; the green terms carry their sign in the weights.
struct FormIP {
    static Px scalar(int y, int cb, int cr)
    {
        const int y128 = (y - 16) * 128, cb128 = (cb - 128) * 128, cr128 = (cr - 128) * 128;
        const int16_t a = hiS(y128, 9536);
        return {satU8(addsS16(a, hiS(cr128, 13074)) >> 4),
                satU8(addsS16(addsS16(a, hiS(cr128, -6660)), hiS(cb128, -3203)) >> 4),
                satU8(addsS16(a, hiS(cb128, 16523)) >> 4)};
    }
    static V3 lanes(const V3& x)
    {
        const V y128 = shl<7>(sub(x.a, 16)), cb128 = shl<7>(sub(x.b, 128)), cr128 = shl<7>(sub(x.c, 128));
        const V a = hiS(y128, 9536);
        return {sra<4>(addsS(a, hiS(cr128, 13074))), sra<4>(addsS(addsS(a, hiS(cr128, -6660)), hiS(cb128, -3203))),
                sra<4>(addsS(a, hiS(cb128, 16523)))};
    }
};

// Block form of the members with a constant alpha: 13 fraction bits, 4
// guard bits, rounding 8; the green terms are subtracted.
struct FormIC {
    static Px scalar(int y, int cb, int cr)
    {
        const int y128 = (y - 16) * 128, cb128 = (cb - 128) * 128, cr128 = (cr - 128) * 128;
        const int16_t a = hiS(y128, 9535);
        return {satU8(addsS16(addsS16(a, hiS(cr128, 13074)), 8) >> 4),
                satU8(addsS16(subsS16(subsS16(a, hiS(cr128, 6660)), hiS(cb128, 3211)), 8) >> 4),
                satU8(addsS16(addsS16(a, hiS(cb128, 16523)), 8) >> 4)};
    }
    static V3 lanes(const V3& x)
    {
        const V y128 = shl<7>(sub(x.a, 16)), cb128 = shl<7>(sub(x.b, 128)), cr128 = shl<7>(sub(x.c, 128));
        const V a = hiS(y128, 9535);
        return {sra<4>(addsS(addsS(a, hiS(cr128, 13074)), 8)),
                sra<4>(addsS(subsS(subsS(a, hiS(cr128, 6660)), hiS(cb128, 3211)), 8)),
                sra<4>(addsS(addsS(a, hiS(cb128, 16523)), 8))};
    }
};

// Checks of the inverse members from full-resolution planes that test the
// plane array before the size, and the height before the width.
inline OrvStatus checkPlanesFirst(const Orv8u* const* src, const void* dst, RoiSize roi)
{
    if (!src || !dst)
        return orvStatusNullPointer;
    if (OrvStatus st = checkPlanes(src, 3))
        return st;
    if (roi.height < 1 || roi.width < 1)
        return orvStatusBadSize;
    return orvStatusOk;
}

}  // namespace h9::ycc
