// Forms of RGB and YUV (weights 0.299, 0.587, 0.114; U scaled by 0.492, V
// by 0.877, both stored with an offset of 128) shared by the full-resolution
// and the subsampled conversions. Each form is a scalar statement per pixel
// (`scalar`) and the same arithmetic on 16 pixels of 16-bit lanes (`lanes`);
// see pixels8u.h.
#pragma once

#include "lumachroma/pixels8u.h"

namespace h9::yuvforms {

using namespace px8;

// Forward block form on doubled scale, in 16-bit lanes with signed high
// halves. Each channel enters times four: luma terms (4x * w) >> 16 with
// 9798 (R), 3736 (B), 19235 (G), S = their sum + 1, Y = S >> 1; a chroma
// value from a channel times four, x4, and S: ((x4 + 1) >> 1) - S, the
// channel less luma on the doubled scale, times 16121 (U) or 28737 (V) on
// the high half, + 128. The steps are public so that a caller with
// several pixels per chroma sample can feed chroma the sum of four
// channel values (four times their mean, the x4 of one pixel) and a mean S.
struct FormE {
    static constexpr int kR = 9798, kG = 19235, kB = 3736, kU = 16121, kV = 28737;

    static int16_t sum(int r4, int g4, int b4)
    {
        return addsS16(addsS16(addsS16(hiS(r4, kR), hiS(b4, kB)), hiS(g4, kG)), 1);
    }
    static uint8_t y(int s) { return satU8(s >> 1); }
    static uint8_t chroma(int x4, int s, int w) { return satU8(addsS16(hiS(subsS16(addsS16(x4, 1) >> 1, s), w), 128)); }
    static Px scalar(int r, int g, int b)
    {
        const int16_t s = sum(r << 2, g << 2, b << 2);
        return {y(s), chroma(b << 2, s, kU), chroma(r << 2, s, kV)};
    }

    // The lanes leave the final saturation to the byte pack.
    static V chroma(V x4, V s, int w) { return addsS(hiS(subsS(sra<1>(addsS(x4, 1)), s), w), 128); }
    static V3 lanes(const V3& x)
    {
        const V r4 = shl<2>(x.a), g4 = shl<2>(x.b), b4 = shl<2>(x.c);
        const V s = addsS(addsS(addsS(hiS(r4, kR), hiS(b4, kB)), hiS(g4, kG)), 1);
        return {sra<1>(s), chroma(b4, s, kU), chroma(r4, s, kV)};
    }
};

// u = U - 128, v = V - 128.

// Block form of the interleaved member: weights with 13 fraction bits on
// 8u, 8v: Y + ((8v * 9339) >> 16) and so on.
struct FormP {
    static Px scalar(int y, int cu, int cv)
    {
        const int u8 = (cu - 128) * 8, v8 = (cv - 128) * 8;
        return {satU8(addsS16(y, hiS(v8, 9339))), satU8(addsS16(addsS16(y, hiS(u8, -3228)), hiS(v8, -4760))),
                satU8(addsS16(y, hiS(u8, 16646)))};
    }
    static V3 lanes(const V3& x)
    {
        const V u8 = shl<3>(sub(x.b, 128)), v8 = shl<3>(sub(x.c, 128));
        return {addsS(x.a, hiS(v8, 9339)), addsS(addsS(x.a, hiS(u8, -3228)), hiS(v8, -4760)), addsS(x.a, hiS(u8, 16646))};
    }
};

// Block form of the planar-to-interleaved member, on doubled scale: 2Y plus
// high halves of 16u, 16v times weights with 13 fraction bits, shifted back
// by one, no rounding. Form R takes each weight of form P one less in its
// last place.
template <int Rv, int Gu, int Gv, int Bu>
struct Doubled {
    static Px scalar(int y, int cu, int cv)
    {
        const int u16 = (cu - 128) * 16, v16 = (cv - 128) * 16, y2 = 2 * y;
        return {satU8(addsS16(y2, hiS(v16, Rv)) >> 1), satU8(addsS16(addsS16(y2, hiS(u16, Gu)), hiS(v16, Gv)) >> 1),
                satU8(addsS16(y2, hiS(u16, Bu)) >> 1)};
    }
    static V3 lanes(const V3& x)
    {
        const V u16 = shl<4>(sub(x.b, 128)), v16 = shl<4>(sub(x.c, 128)), y2 = shl<1>(x.a);
        return {sra<1>(addsS(y2, hiS(v16, Rv))), sra<1>(addsS(addsS(y2, hiS(u16, Gu)), hiS(v16, Gv))),
                sra<1>(addsS(y2, hiS(u16, Bu)))};
    }
};
using FormR = Doubled<9338, -3227, -4759, 16645>;

// Block form of the member with a constant alpha: 3 guard bits, rounding 4.
struct FormT {
    static Px scalar(int y, int cu, int cv)
    {
        const int u128 = (cu - 128) * 128, v128 = (cv - 128) * 128, y8 = 8 * y;
        return {satU8(addsS16(addsS16(y8, hiS(v128, 4669)), 4) >> 3),
                satU8(addsS16(subsS16(subsS16(y8, hiS(v128, 2380)), hiS(u128, 1614)), 4) >> 3),
                satU8(addsS16(addsS16(y8, hiS(u128, 8323)), 4) >> 3)};
    }
    static V3 lanes(const V3& x)
    {
        const V u128 = shl<7>(sub(x.b, 128)), v128 = shl<7>(sub(x.c, 128)), y8 = shl<3>(x.a);
        return {sra<3>(addsS(addsS(y8, hiS(v128, 4669)), 4)),
                sra<3>(addsS(subsS(subsS(y8, hiS(v128, 2380)), hiS(u128, 1614)), 4)),
                sra<3>(addsS(addsS(y8, hiS(u128, 8323)), 4))};
    }
};

// The scalar inverses, 16 fraction bits: Q rounds R and B but not G, S
// rounds nothing with each weight one less, U rounds all three.
constexpr InverseWeights kYuvInv = {65536, 0, 74711, 25821, 38076, 133169};
constexpr InverseWeights kYuvInvLow = {65536, 0, 74710, 25820, 38075, 133168};
using FormQ = Inverse32<kYuvInv, 32768, 0, 32768>;
using FormS = Inverse32<kYuvInvLow, 0, 0, 0>;
using FormU = Inverse32<kYuvInv, 32768, 32768, 32768>;

}  // namespace h9::yuvforms
