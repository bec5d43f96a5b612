// The inverse forms of RGB and YUV (weights 0.299, 0.587, 0.114; U scaled
// by 0.492, V by 0.877, both stored with an offset of 128), shared by the
// full-resolution and the subsampled conversions. Each form is a scalar
// statement per pixel (`scalar`) and the same arithmetic on 16 pixels of
// 16-bit lanes (`lanes`); see pixels8u.h.
#pragma once

#include "lumachroma/pixels8u.h"

namespace h9::yuvforms {

using namespace px8;

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
