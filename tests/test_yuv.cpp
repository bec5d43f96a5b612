// RGB and YUV at full resolution: vector paths against scalar forms, where
// each row splits between its forms, the concrete values of the forms, the
// alpha rules and the order of the argument checks.
#include <array>
#include <vector>

#include "lumachroma/pixels8u.h"
#include "support/planes.h"

using namespace orvtest;

namespace {

using F = Fault;
using Bytes = std::vector<uint8_t>;

const std::vector<Conversion>& conversions()
{
    static const std::vector<Conversion> all = {
        {"RGBToYUV_8u_C3R", {1, 3}, {1, 3}, call(orviRGBToYUV_8u_C3R), blocksOf(16),
         {F::SrcNull, F::DstNull, F::Width, F::Height}},
        {"RGBToYUV_8u_C3P3R", {1, 3}, {3, 1}, call(orviRGBToYUV_8u_C3P3R), blocksOf(8),
         {F::SrcNull, F::DstNull, F::Width, F::Height, F::DstPlane0, F::DstPlane1, F::DstPlane2}},
        {"RGBToYUV_8u_P3R", {3, 1}, {3, 1}, call(orviRGBToYUV_8u_P3R), blocksOf(16),
         {F::SrcNull, F::DstNull, F::Width, F::Height, F::SrcPlane0, F::SrcPlane1, F::SrcPlane2, F::DstPlane0,
          F::DstPlane1, F::DstPlane2}},
        {"RGBToYUV_8u_AC4R", {1, 4}, {1, 4}, call(orviRGBToYUV_8u_AC4R), wholeRow,
         {F::SrcNull, F::DstNull, F::Width, F::Height}},
        {"RGBToYUV_8u_AC4P4R", {1, 4}, {4, 1}, call(orviRGBToYUV_8u_AC4P4R), blocksOf(8),
         {F::SrcNull, F::DstNull, F::Width, F::Height, F::DstPlane0, F::DstPlane1, F::DstPlane2, F::DstPlane3}},
        {"YUVToRGB_8u_C3R", {1, 3}, {1, 3}, call(orviYUVToRGB_8u_C3R), blocksOf(8),
         {F::SrcNull, F::DstNull, F::Width, F::Height}},
        {"YUVToRGB_8u_P3C3R", {3, 1}, {1, 3}, call(orviYUVToRGB_8u_P3C3R), blocksOf(16),
         {F::SrcNull, F::DstNull, F::Width, F::Height, F::SrcPlane0, F::SrcPlane1, F::SrcPlane2}},
        {"YUVToRGB_8u_P3R", {3, 1}, {3, 1}, call(orviYUVToRGB_8u_P3R), wholeRow,
         {F::SrcNull, F::DstNull, F::Width, F::Height, F::DstPlane0, F::DstPlane1, F::DstPlane2, F::SrcPlane0,
          F::SrcPlane1, F::SrcPlane2}},
        {"YUVToRGB_8u_AC4R", {1, 4}, {1, 4}, call(orviYUVToRGB_8u_AC4R), wholeRow,
         {F::SrcNull, F::DstNull, F::Width, F::Height}},
        {"YUVToRGB_8u_C3C4R", {1, 3}, {1, 4}, call(orviYUVToRGB_8u_C3C4R, Orv8u(200)), blocksOf(8),
         {F::SrcNull, F::DstNull, F::Width, F::Height}},
    };
    return all;
}

const Conversion& conv(const std::string& name)
{
    for (const auto& c : conversions())
        if (c.name == name)
            return c;
    ADD_FAILURE() << name;
    return conversions()[0];
}

// The first three destination bytes of pixel `index` in a row of `width`.
Bytes colour(const std::string& name, std::array<uint8_t, 3> in, int width, int index = 0)
{
    Bytes b = convertColour(conv(name), in, width, index);
    b.resize(3);
    return b;
}

TEST(Yuv, VectorPathsMatchScalarForms)
{
    for (const auto& c : conversions())
        expectVectorMatchesScalar(c);
}

TEST(Yuv, RowsSplitBetweenBlockAndTailForms)
{
    for (const auto& c : conversions())
        if (c.blockEnd(37) != 37)
            expectSplit(c);
}

TEST(Yuv, CheckOrderAndNothingWrittenOnFailure)
{
    for (const auto& c : conversions())
        expectCheckOrder(c);
}

TEST(Yuv, ForwardValues)
{
    const std::array<uint8_t, 3> white{255, 255, 255}, green{0, 255, 0}, red{255, 0, 0};
    // White: the block weights add up to 65535, the tail's to 65536.
    EXPECT_EQ(colour("RGBToYUV_8u_C3R", white, 16), (Bytes{254, 127, 127}));
    EXPECT_EQ(colour("RGBToYUV_8u_C3R", white, 15), (Bytes{255, 128, 128}));
    EXPECT_EQ(colour("RGBToYUV_8u_C3P3R", white, 8), (Bytes{254, 127, 127}));
    EXPECT_EQ(colour("RGBToYUV_8u_C3P3R", white, 7), (Bytes{255, 128, 128}));
    EXPECT_EQ(colour("RGBToYUV_8u_P3R", white, 15), (Bytes{254, 128, 128}));
    EXPECT_EQ(colour("RGBToYUV_8u_AC4R", white, 20), (Bytes{255, 128, 128}));
    // Pure green: rounding makes the four-channel member one higher.
    EXPECT_EQ(colour("RGBToYUV_8u_AC4R", green, 20), (Bytes{150, 54, 0}));
    EXPECT_EQ(colour("RGBToYUV_8u_C3R", green, 16), (Bytes{149, 54, 0}));
    EXPECT_EQ(colour("RGBToYUV_8u_C3R", green, 1), (Bytes{149, 54, 0}));
    // Pure red is the same in every form; V reaches the top clamp.
    for (const char* name : {"RGBToYUV_8u_C3R", "RGBToYUV_8u_C3P3R", "RGBToYUV_8u_P3R", "RGBToYUV_8u_AC4R",
                             "RGBToYUV_8u_AC4P4R"})
        for (int w : {1, 16})
            EXPECT_EQ(colour(name, red, w), (Bytes{76, 90, 255})) << name << " width " << w;
    // Black is 0 with chroma at 128, except in the doubled-scale block form,
    // whose + 1 in the luma sum pulls both chroma values down to 127.
    for (const char* name : {"RGBToYUV_8u_C3R", "RGBToYUV_8u_C3P3R", "RGBToYUV_8u_P3R", "RGBToYUV_8u_AC4R"}) {
        for (int w : {1, 16}) {
            EXPECT_EQ(colour(name, {0, 0, 0}, w), (Bytes{0, 128, 128})) << name;
        }
    }
    EXPECT_EQ(colour("RGBToYUV_8u_AC4P4R", {0, 0, 0}, 7), (Bytes{0, 128, 128}));
    EXPECT_EQ(colour("RGBToYUV_8u_AC4P4R", {0, 0, 0}, 8), (Bytes{0, 127, 127}));
}

TEST(Yuv, InverseValues)
{
    for (const auto& c : conversions()) {
        if (c.name.rfind("YUVToRGB", 0) != 0)
            continue;
        for (int w : {1, 16}) {
            EXPECT_EQ(colour(c.name, {100, 128, 128}, w), (Bytes{100, 100, 100})) << c.name;
            EXPECT_EQ(colour(c.name, {255, 128, 128}, w), (Bytes{255, 255, 255})) << c.name;
            EXPECT_EQ(colour(c.name, {0, 128, 128}, w), (Bytes{0, 0, 0})) << c.name;
            // Strong chroma clamps at both ends: V 255 drives R above 255,
            // U 0 drives B below 0.
            const Bytes sat = colour(c.name, {128, 0, 255}, w);
            EXPECT_EQ(sat[0], 255) << c.name;
            EXPECT_EQ(sat[2], 0) << c.name;
        }
    }
}

TEST(Yuv, AlphaRules)
{
    // RGBToYUV AC4R and YUVToRGB AC4R keep the destination's fourth bytes.
    for (const char* name : {"RGBToYUV_8u_AC4R", "YUVToRGB_8u_AC4R"})
        for (int w : {1, 17, 40})
            for (int x : {0, w - 1})
                EXPECT_EQ(convertColour(conv(name), {10, 20, 30}, w, x)[3], 0xEE) << name;
    // C3C4R writes the caller's alpha in the block part and the tail.
    for (int w : {1, 8, 13})
        for (int x : {0, w - 1})
            EXPECT_EQ(convertColour(conv("YUVToRGB_8u_C3C4R"), {10, 20, 30}, w, x)[3], 200);
    // AC4P4R copies each source alpha byte to the fourth plane.
    for (int w : {3, 8, 21}) {
        Planes src = makePlanes(1, w, 2, 4, 0, false, 0), dst = makePlanes(4, w, 2, 1, 0, false, 0);
        std::mt19937 rng(3);
        src.fillBytes(rng);
        ASSERT_EQ(orviRGBToYUV_8u_AC4P4R(src.ptr[0], src.step(), dst.ptr.data(), dst.step(), {w, 2}), orvStatusOk);
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < w; ++x)
                EXPECT_EQ(dst.img[3]->row(y)[x], src.img[0]->row(y)[4 * x + 3]);
    }
}

TEST(Yuv, ClampTableFollowsItsRule)
{
    for (int i = -h9::kChopOrigin; i < h9::kChopSize - h9::kChopOrigin; ++i)
        ASSERT_EQ(h9::chop(i), i < 0 ? 0 : i > 255 ? 255 : i) << i;
}

TEST(Yuv, NegativeStepsWalkUpward)
{
    // Two rows with a negative step: row 1 lies below row 0 in memory.
    std::vector<Orv8u> buf(2 * 48), out(2 * 48, 0);
    for (int i = 0; i < 48; ++i) {
        buf[48 + i] = 255;  // row 0 (upper address): white
        buf[i] = 0;         // row 1: black
    }
    ASSERT_EQ(orviRGBToYUV_8u_C3R(buf.data() + 48, -48, out.data() + 48, -48, {16, 2}), orvStatusOk);
    EXPECT_EQ(out[48], 254);
    EXPECT_EQ(out[0], 0);
}

}  // namespace
