// YCoCg: vector paths against the scalar form, the round trips of the
// reversible pairs, the ranges and the one-step loss of the plain transform,
// known values with the narrowing rules, alpha, and the argument checks.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "support/planes.h"

using namespace orvtest;

namespace {

using F = Fault;
using Int = long long;
using Trio = std::array<Int, 3>;

template <class S, class D, class A>
ConvCall callAlpha(OrvStatus (*f)(S, int, D, int, RoiSize, A), A alpha)
{
    return [f, alpha](void* s, int ss, void* d, int ds, RoiSize r) {
        return f(static_cast<S>(s), ss, static_cast<D>(d), ds, r, alpha);
    };
}

// Check orders: pointers (destination first in some forward members), then
// planes, then height and width where the member tests sizes at all.
const std::vector<Fault> kDstFirst = {F::DstNull, F::SrcNull, F::DstPlane0, F::DstPlane1, F::DstPlane2, F::Height, F::Width};
const std::vector<Fault> kFwdSized = {F::SrcNull, F::DstNull, F::DstPlane0, F::DstPlane1, F::DstPlane2, F::Height, F::Width};
const std::vector<Fault> kFwdUnsized = {F::SrcNull, F::DstNull, F::DstPlane0, F::DstPlane1, F::DstPlane2};
const std::vector<Fault> kInvSized = {F::SrcNull, F::DstNull, F::SrcPlane0, F::SrcPlane1, F::SrcPlane2, F::Height, F::Width};
const std::vector<Fault> kInvUnsized = {F::SrcNull, F::DstNull, F::SrcPlane0, F::SrcPlane1, F::SrcPlane2};

// Each member with its sides (planes, bytes per pixel) and the widest
// element, which sets the padding granule of the sweep.
struct Member {
    Conversion c;
    int elem;
};

const std::vector<Member>& members()
{
    auto m = [](const char* name, Side s, Side d, ConvCall f, std::vector<Fault> checks, int elem) {
        return Member{{name, s, d, std::move(f), wholeRow, std::move(checks)}, elem};
    };
    const Side bgr3{1, 3}, bgr4{1, 4}, s3{1, 6}, s4{1, 8}, p8{3, 1}, p16{3, 2}, p32{3, 4};
    static const std::vector<Member> all = {
        m("BGRToYCoCg_8u16s_C3P3R", bgr3, p16, call(orviBGRToYCoCg_8u16s_C3P3R), kDstFirst, 2),
        m("BGRToYCoCg_8u16s_C4P3R", bgr4, p16, call(orviBGRToYCoCg_8u16s_C4P3R), kDstFirst, 2),
        m("SBGRToYCoCg_16s_C3P3R", s3, p16, call(orviSBGRToYCoCg_16s_C3P3R), kDstFirst, 2),
        m("SBGRToYCoCg_16s_C4P3R", s4, p16, call(orviSBGRToYCoCg_16s_C4P3R), kDstFirst, 2),
        m("SBGRToYCoCg_16s32s_C3P3R", s3, p32, call(orviSBGRToYCoCg_16s32s_C3P3R), kDstFirst, 4),
        m("SBGRToYCoCg_16s32s_C4P3R", s4, p32, call(orviSBGRToYCoCg_16s32s_C4P3R), kFwdUnsized, 4),
        m("BGRToYCoCg_Rev_8u16s_C3P3R", bgr3, p16, call(orviBGRToYCoCg_Rev_8u16s_C3P3R), kDstFirst, 2),
        m("BGRToYCoCg_Rev_8u16s_C4P3R", bgr4, p16, call(orviBGRToYCoCg_Rev_8u16s_C4P3R), kDstFirst, 2),
        m("SBGRToYCoCg_Rev_16s_C3P3R", s3, p16, call(orviSBGRToYCoCg_Rev_16s_C3P3R), kFwdUnsized, 2),
        m("SBGRToYCoCg_Rev_16s_C4P3R", s4, p16, call(orviSBGRToYCoCg_Rev_16s_C4P3R), kFwdUnsized, 2),
        m("SBGRToYCoCg_Rev_16s32s_C3P3R", s3, p32, call(orviSBGRToYCoCg_Rev_16s32s_C3P3R), kDstFirst, 4),
        m("SBGRToYCoCg_Rev_16s32s_C4P3R", s4, p32, call(orviSBGRToYCoCg_Rev_16s32s_C4P3R), kFwdUnsized, 4),
        m("RGBToYCoCg_8u_C3P3R", bgr3, p8, call(orviRGBToYCoCg_8u_C3P3R), kFwdSized, 1),
        m("YCoCgToBGR_16s8u_P3C3R", p16, bgr3, call(orviYCoCgToBGR_16s8u_P3C3R), kInvUnsized, 2),
        m("YCoCgToBGR_16s8u_P3C4R", p16, bgr4, callAlpha(orviYCoCgToBGR_16s8u_P3C4R, Orv8u(200)), kInvUnsized, 2),
        m("YCoCgToSBGR_16s_P3C3R", p16, s3, call(orviYCoCgToSBGR_16s_P3C3R), kInvUnsized, 2),
        m("YCoCgToSBGR_16s_P3C4R", p16, s4, callAlpha(orviYCoCgToSBGR_16s_P3C4R, Orv16s(-2)), kInvSized, 2),
        m("YCoCgToSBGR_32s16s_P3C3R", p32, s3, call(orviYCoCgToSBGR_32s16s_P3C3R), kInvSized, 4),
        m("YCoCgToSBGR_32s16s_P3C4R", p32, s4, callAlpha(orviYCoCgToSBGR_32s16s_P3C4R, Orv16s(7)), kInvSized, 4),
        m("YCoCgToBGR_Rev_16s8u_P3C3R", p16, bgr3, call(orviYCoCgToBGR_Rev_16s8u_P3C3R), kInvUnsized, 2),
        m("YCoCgToBGR_Rev_16s8u_P3C4R", p16, bgr4, callAlpha(orviYCoCgToBGR_Rev_16s8u_P3C4R, Orv8u(1)), kInvUnsized, 2),
        m("YCoCgToSBGR_Rev_16s_P3C3R", p16, s3, call(orviYCoCgToSBGR_Rev_16s_P3C3R), kInvUnsized, 2),
        m("YCoCgToSBGR_Rev_16s_P3C4R", p16, s4, callAlpha(orviYCoCgToSBGR_Rev_16s_P3C4R, Orv16s(-32768)), kInvUnsized, 2),
        m("YCoCgToSBGR_Rev_32s16s_P3C3R", p32, s3, call(orviYCoCgToSBGR_Rev_32s16s_P3C3R), kInvUnsized, 4),
        m("YCoCgToSBGR_Rev_32s16s_P3C4R", p32, s4, callAlpha(orviYCoCgToSBGR_Rev_32s16s_P3C4R, Orv16s(300)), kInvUnsized, 4),
        m("YCoCgToRGB_8u_P3C3R", p8, bgr3, call(orviYCoCgToRGB_8u_P3C3R), kInvUnsized, 1),
    };
    return all;
}

TEST(YCoCg, VectorPathsMatchScalarFormOnRandomData)
{
    // Random bytes reach every 16- and 32-bit value, the overflowing ones too.
    for (const Member& m : members())
        expectVectorMatchesScalar(m.c, m.elem);
}

TEST(YCoCg, CheckOrderAndNothingWrittenOnFailure)
{
    for (const Member& m : members())
        expectCheckOrder(m.c);
}

TEST(YCoCg, MembersWithoutSizeTestConvertNothingForEmptySizes)
{
    for (const Member& m : members()) {
        if (std::find(m.c.checks.begin(), m.c.checks.end(), F::Width) != m.c.checks.end())
            continue;
        SCOPED_TRACE(m.c.name);
        Planes src = makePlanes(m.c.src.planes, 4, 2, m.c.src.pixBytes, 0, false, 0);
        Planes dst = makePlanes(m.c.dst.planes, 4, 2, m.c.dst.pixBytes, 0, false, 0);
        std::mt19937 rng(3);
        src.fillBytes(rng);
        dst.fillBytes(rng);
        const auto before = dst.pixels();
        for (RoiSize r : {RoiSize{0, 2}, RoiSize{4, 0}, RoiSize{-1, 2}, RoiSize{4, -3}})
            EXPECT_EQ(m.c.call(src.arg(), src.step(), dst.arg(), dst.step(), r), orvStatusOk);
        EXPECT_EQ(dst.pixels(), before);
    }
}

// ---------------------------------------------------------------------------
// One row of 17 copies of a pixel (16 through the vector path, one through
// the scalar form), every pixel checked against the first. A four-sample
// source holds a different fourth sample in every pixel; a four-sample
// destination must hold `alpha` there.

template <class T, class P>
Trio toPlanes(OrvStatus (*f)(const T*, int, P* [3], int, RoiSize), int ch, Trio px)
{
    const int w = 17;
    std::vector<T> src(std::size_t(w) * ch);
    for (int i = 0; i < w; ++i) {
        for (int k = 0; k < 3; ++k)
            src[i * ch + k] = T(px[k]);
        if (ch == 4)
            src[i * ch + 3] = T(i * 1237);
    }
    std::vector<P> planes[3] = {std::vector<P>(w), std::vector<P>(w), std::vector<P>(w)};
    P* dst[3] = {planes[0].data(), planes[1].data(), planes[2].data()};
    EXPECT_EQ(f(src.data(), w * ch * int(sizeof(T)), dst, w * int(sizeof(P)), {w, 1}), orvStatusOk);
    for (int k = 0; k < 3; ++k)
        for (int i = 1; i < w; ++i)
            EXPECT_EQ(planes[k][i], planes[k][0]) << "plane " << k << " pixel " << i;
    return {planes[0][0], planes[1][0], planes[2][0]};
}

template <class P, class T, class... A>
Trio fromPlanes(OrvStatus (*f)(const P* const[3], int, T*, int, RoiSize, A...), int ch, Trio yuv, A... alpha)
{
    const int w = 17;
    std::vector<P> planes[3] = {std::vector<P>(w, P(yuv[0])), std::vector<P>(w, P(yuv[1])), std::vector<P>(w, P(yuv[2]))};
    const P* src[3] = {planes[0].data(), planes[1].data(), planes[2].data()};
    std::vector<T> dst(std::size_t(w) * ch, T(99));
    EXPECT_EQ(f(src, w * int(sizeof(P)), dst.data(), w * ch * int(sizeof(T)), {w, 1}, alpha...), orvStatusOk);
    for (int i = 0; i < w; ++i) {
        for (int k = 0; k < 3; ++k)
            EXPECT_EQ(dst[i * ch + k], dst[k]) << "sample " << k << " pixel " << i;
        if constexpr (sizeof...(A) == 1) {
            EXPECT_EQ(dst[i * ch + 3], (alpha, ...)) << "pixel " << i;
        }
    }
    return {dst[0], dst[1], dst[2]};
}

// Pixels are given and returned in memory order: B, G, R, except for the
// biased byte members (R, G, B). Planes are Y, Co, Cg.
TEST(YCoCg, KnownValuesOfEveryMember)
{
    // B 10, G 20, R 200: plain (63, 95, -42), lifting Co 190, t 105, Cg -85, Y 62.
    const Trio px{10, 20, 200}, plain{63, 95, -42}, lift{62, 190, -85};
    EXPECT_EQ(toPlanes(orviBGRToYCoCg_8u16s_C3P3R, 3, px), plain);
    EXPECT_EQ(toPlanes(orviBGRToYCoCg_8u16s_C4P3R, 4, px), plain);
    EXPECT_EQ(toPlanes(orviSBGRToYCoCg_16s_C3P3R, 3, px), plain);
    EXPECT_EQ(toPlanes(orviSBGRToYCoCg_16s_C4P3R, 4, px), plain);
    EXPECT_EQ(toPlanes(orviSBGRToYCoCg_16s32s_C3P3R, 3, px), plain);
    EXPECT_EQ(toPlanes(orviSBGRToYCoCg_16s32s_C4P3R, 4, px), plain);
    EXPECT_EQ(toPlanes(orviBGRToYCoCg_Rev_8u16s_C3P3R, 3, px), lift);
    EXPECT_EQ(toPlanes(orviBGRToYCoCg_Rev_8u16s_C4P3R, 4, px), lift);
    EXPECT_EQ(toPlanes(orviSBGRToYCoCg_Rev_16s_C3P3R, 3, px), lift);
    EXPECT_EQ(toPlanes(orviSBGRToYCoCg_Rev_16s_C4P3R, 4, px), lift);
    EXPECT_EQ(toPlanes(orviSBGRToYCoCg_Rev_16s32s_C3P3R, 3, px), lift);
    EXPECT_EQ(toPlanes(orviSBGRToYCoCg_Rev_16s32s_C4P3R, 4, px), lift);
    EXPECT_EQ(toPlanes(orviRGBToYCoCg_8u_C3P3R, 3, Trio{200, 20, 10}), (Trio{63, 223, 86}));

    // The plain inverse loses one step of G; the lifting one is exact.
    const Trio back{10, 21, 200};
    EXPECT_EQ(fromPlanes(orviYCoCgToBGR_16s8u_P3C3R, 3, plain), back);
    EXPECT_EQ(fromPlanes(orviYCoCgToBGR_16s8u_P3C4R, 4, plain, Orv8u(200)), back);
    EXPECT_EQ(fromPlanes(orviYCoCgToSBGR_16s_P3C3R, 3, plain), back);
    EXPECT_EQ(fromPlanes(orviYCoCgToSBGR_16s_P3C4R, 4, plain, Orv16s(-5)), back);
    EXPECT_EQ(fromPlanes(orviYCoCgToSBGR_32s16s_P3C3R, 3, plain), back);
    EXPECT_EQ(fromPlanes(orviYCoCgToSBGR_32s16s_P3C4R, 4, plain, Orv16s(32767)), back);
    EXPECT_EQ(fromPlanes(orviYCoCgToBGR_Rev_16s8u_P3C3R, 3, lift), px);
    EXPECT_EQ(fromPlanes(orviYCoCgToBGR_Rev_16s8u_P3C4R, 4, lift, Orv8u(0)), px);
    EXPECT_EQ(fromPlanes(orviYCoCgToSBGR_Rev_16s_P3C3R, 3, lift), px);
    EXPECT_EQ(fromPlanes(orviYCoCgToSBGR_Rev_16s_P3C4R, 4, lift, Orv16s(1)), px);
    EXPECT_EQ(fromPlanes(orviYCoCgToSBGR_Rev_32s16s_P3C3R, 3, lift), px);
    EXPECT_EQ(fromPlanes(orviYCoCgToSBGR_Rev_32s16s_P3C4R, 4, lift, Orv16s(-1)), px);
    EXPECT_EQ(fromPlanes(orviYCoCgToRGB_8u_P3C3R, 3, Trio{63, 223, 86}), (Trio{200, 21, 10}));

    // R 1 alone: Y 0, Co 1, Cg 0, and back B -1, G 0, R 1.
    EXPECT_EQ(toPlanes(orviSBGRToYCoCg_16s_C3P3R, 3, Trio{0, 0, 1}), (Trio{0, 1, 0}));
    EXPECT_EQ(fromPlanes(orviYCoCgToSBGR_16s_P3C3R, 3, Trio{0, 1, 0}), (Trio{-1, 0, 1}));
    // Pure red on byte planes: Co 256 saturates; back B is 1.
    EXPECT_EQ(toPlanes(orviRGBToYCoCg_8u_C3P3R, 3, Trio{255, 0, 0}), (Trio{64, 255, 64}));
    EXPECT_EQ(fromPlanes(orviYCoCgToRGB_8u_P3C3R, 3, Trio{64, 255, 64}), (Trio{255, 0, 1}));
}

TEST(YCoCg, SixteenBitOverflowKeepsLowBits)
{
    // The two plain results that leave 16 bits: Co of R 32767, B -32768 and
    // Cg of G 32767, R = B = -32768 are 32768, stored as -32768.
    EXPECT_EQ(toPlanes(orviSBGRToYCoCg_16s_C3P3R, 3, Trio{-32768, 0, 32767}), (Trio{0, -32768, 0}));
    EXPECT_EQ(toPlanes(orviSBGRToYCoCg_16s32s_C3P3R, 3, Trio{-32768, 0, 32767}), (Trio{0, 32768, 0}));
    EXPECT_EQ(toPlanes(orviSBGRToYCoCg_16s_C4P3R, 4, Trio{-32768, 32767, -32768}), (Trio{0, 0, -32768}));
    EXPECT_EQ(toPlanes(orviSBGRToYCoCg_16s32s_C4P3R, 4, Trio{-32768, 32767, -32768}), (Trio{0, 0, 32768}));
    // Lifting to 16 bits takes Co = R - B as 16 bits (-1) before halving it;
    // to 32 bits it stays 65535.
    EXPECT_EQ(toPlanes(orviSBGRToYCoCg_Rev_16s_C3P3R, 3, Trio{-32768, 0, 32767}), (Trio{16383, -1, -32767}));
    EXPECT_EQ(toPlanes(orviSBGRToYCoCg_Rev_16s32s_C3P3R, 3, Trio{-32768, 0, 32767}), (Trio{-1, 65535, 1}));
    // Bytes are formed as 16-bit values, then saturated: G = 32767 + 1 wraps
    // to -32768 and gives 0.
    EXPECT_EQ(fromPlanes(orviYCoCgToBGR_16s8u_P3C3R, 3, Trio{32767, 0, 1}), (Trio{255, 0, 255}));
    // 32-bit planes keep the low 16 bits of each result.
    EXPECT_EQ(fromPlanes(orviYCoCgToSBGR_32s16s_P3C3R, 3, Trio{65536 + 5, 0, 0}), (Trio{5, 5, 5}));
    // Halving 32-bit chroma uses its bits above 16: Co 65538 gives
    // B = -32769 and R = 32769, stored as 32767 and -32767.
    EXPECT_EQ(fromPlanes(orviYCoCgToSBGR_Rev_32s16s_P3C3R, 3, Trio{0, 65538, 0}), (Trio{32767, 0, -32767}));
}

// ---------------------------------------------------------------------------
// Round trips and ranges.

// Every byte triple, one row of 65536 pixels for each R (B and G vary
// along the row): the lifting pair returns it, by the vector path and by the
// scalar form; the plain pair keeps Y in 0..255 and the chroma in -127..128
// and loses at most one step; the plain members from bytes and the byte-plane
// members, whose vector paths have their own arithmetic on bytes, agree with
// their scalar forms on every input.
TEST(YCoCg, EveryByteTriple)
{
    const int w = 65536;
    using Bytes = std::vector<uint8_t>;
    Bytes src(3 * w), back(3 * w);
    std::vector<int16_t> planes[3] = {std::vector<int16_t>(w), std::vector<int16_t>(w), std::vector<int16_t>(w)};
    int16_t* p[3] = {planes[0].data(), planes[1].data(), planes[2].data()};
    const int16_t* cp[3] = {p[0], p[1], p[2]};
    // Byte planes: the triple taken as Y, Co, Cg, and the forward results
    // and inverse results of the vector path [0] and the scalar form [1].
    Bytes yuv[3] = {Bytes(w), Bytes(w), Bytes(w)};
    Bytes fwd[2][3] = {{Bytes(w), Bytes(w), Bytes(w)}, {Bytes(w), Bytes(w), Bytes(w)}};
    Bytes rgb[2] = {Bytes(3 * w), Bytes(3 * w)};
    std::vector<int16_t> plain[2][3];
    for (auto& mode : plain)
        for (auto& plane : mode)
            plane.resize(w);
    const uint8_t* yuvIn[3] = {yuv[0].data(), yuv[1].data(), yuv[2].data()};
    int lo[3] = {1000, 1000, 1000}, hi[3] = {-1000, -1000, -1000}, worst = 0;
    for (int r = 0; r < 256; ++r) {
        for (int i = 0; i < w; ++i) {
            src[3 * i] = yuv[0][i] = uint8_t(i);
            src[3 * i + 1] = yuv[1][i] = uint8_t(i >> 8);
            src[3 * i + 2] = yuv[2][i] = uint8_t(r);
        }
        for (int scalar = 0; scalar < 2; ++scalar) {
            std::optional<ScalarBlocks> guard;
            if (scalar)
                guard.emplace();
            ASSERT_EQ(orviBGRToYCoCg_Rev_8u16s_C3P3R(src.data(), 3 * w, p, 2 * w, {w, 1}), orvStatusOk);
            ASSERT_EQ(orviYCoCgToBGR_Rev_16s8u_P3C3R(cp, 2 * w, back.data(), 3 * w, {w, 1}), orvStatusOk);
            ASSERT_EQ(back, src) << "R " << r << (scalar ? " scalar" : " vector");
            uint8_t* f[3] = {fwd[scalar][0].data(), fwd[scalar][1].data(), fwd[scalar][2].data()};
            ASSERT_EQ(orviRGBToYCoCg_8u_C3P3R(src.data(), 3 * w, f, w, {w, 1}), orvStatusOk);
            ASSERT_EQ(orviYCoCgToRGB_8u_P3C3R(yuvIn, w, rgb[scalar].data(), 3 * w, {w, 1}), orvStatusOk);
            int16_t* q[3] = {plain[scalar][0].data(), plain[scalar][1].data(), plain[scalar][2].data()};
            ASSERT_EQ(orviBGRToYCoCg_8u16s_C3P3R(src.data(), 3 * w, q, 2 * w, {w, 1}), orvStatusOk);
        }
        for (int k = 0; k < 3; ++k) {
            ASSERT_EQ(fwd[0][k], fwd[1][k]) << "B " << r << " plane " << k;
            ASSERT_EQ(plain[0][k], plain[1][k]) << "R " << r << " plane " << k;
        }
        ASSERT_EQ(rgb[0], rgb[1]) << "Cg " << r;

        const int16_t* cq[3] = {plain[0][0].data(), plain[0][1].data(), plain[0][2].data()};
        for (int k = 0; k < 3; ++k) {
            const auto [mn, mx] = std::minmax_element(plain[0][k].begin(), plain[0][k].end());
            lo[k] = std::min<int>(lo[k], *mn);
            hi[k] = std::max<int>(hi[k], *mx);
        }
        ASSERT_EQ(orviYCoCgToBGR_16s8u_P3C3R(cq, 2 * w, back.data(), 3 * w, {w, 1}), orvStatusOk);
        for (int i = 0; i < 3 * w; ++i)
            worst = std::max(worst, std::abs(back[i] - src[i]));
    }
    EXPECT_EQ(lo[0], 0);
    EXPECT_EQ(hi[0], 255);
    for (int k : {1, 2}) {
        EXPECT_EQ(lo[k], -127);
        EXPECT_EQ(hi[k], 128);
    }
    EXPECT_EQ(worst, 1);
}

// Signed 16-bit triples, the corners of the range and random ones: the
// lifting pair to 32-bit planes returns them exactly, and so does the pair
// to 16-bit planes, whose lifting steps are exact modulo 2^16. The plain
// transform to 16 bits is the low half of the one to 32 bits.
TEST(YCoCg, SixteenBitTriplesRoundTrip)
{
    std::vector<int16_t> src;
    const int16_t corners[] = {-32768, -32767, -16385, -1, 0, 1, 16384, 32766, 32767};
    for (int16_t b : corners)
        for (int16_t g : corners)
            for (int16_t r : corners)
                src.insert(src.end(), {b, g, r, int16_t(src.size())});
    std::mt19937 rng(16);
    while (src.size() < 4 * 4096)
        src.push_back(int16_t(rng()));
    const int w = int(src.size() / 4);
    std::vector<int32_t> wide[3] = {std::vector<int32_t>(w), std::vector<int32_t>(w), std::vector<int32_t>(w)};
    std::vector<int16_t> narrow[3] = {std::vector<int16_t>(w), std::vector<int16_t>(w), std::vector<int16_t>(w)};
    int32_t* pw[3] = {wide[0].data(), wide[1].data(), wide[2].data()};
    int16_t* pn[3] = {narrow[0].data(), narrow[1].data(), narrow[2].data()};
    const int32_t* cw[3] = {pw[0], pw[1], pw[2]};
    const int16_t* cn[3] = {pn[0], pn[1], pn[2]};
    std::vector<int16_t> back(src.size());
    auto expectBack = [&](const char* what) {
        for (int i = 0; i < w; ++i)
            for (int k = 0; k < 3; ++k)
                ASSERT_EQ(back[4 * i + k], src[4 * i + k]) << what << " pixel " << i;
    };
    ASSERT_EQ(orviSBGRToYCoCg_Rev_16s32s_C4P3R(src.data(), 8 * w, pw, 4 * w, {w, 1}), orvStatusOk);
    ASSERT_EQ(orviYCoCgToSBGR_Rev_32s16s_P3C4R(cw, 4 * w, back.data(), 8 * w, {w, 1}, Orv16s(0)), orvStatusOk);
    expectBack("32-bit planes");
    ASSERT_EQ(orviSBGRToYCoCg_Rev_16s_C4P3R(src.data(), 8 * w, pn, 2 * w, {w, 1}), orvStatusOk);
    ASSERT_EQ(orviYCoCgToSBGR_Rev_16s_P3C4R(cn, 2 * w, back.data(), 8 * w, {w, 1}, Orv16s(0)), orvStatusOk);
    expectBack("16-bit planes");

    ASSERT_EQ(orviSBGRToYCoCg_16s32s_C4P3R(src.data(), 8 * w, pw, 4 * w, {w, 1}), orvStatusOk);
    ASSERT_EQ(orviSBGRToYCoCg_16s_C4P3R(src.data(), 8 * w, pn, 2 * w, {w, 1}), orvStatusOk);
    for (int k = 0; k < 3; ++k)
        for (int i = 0; i < w; ++i) {
            ASSERT_EQ(narrow[k][i], int16_t(wide[k][i])) << "plane " << k << " pixel " << i;
            ASSERT_GE(wide[k][i], k ? -32767 : -32768);
            ASSERT_LE(wide[k][i], k ? 32768 : 32767);
        }
}

}  // namespace
