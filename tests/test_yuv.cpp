// RGB and YUV at full resolution: vector paths against scalar forms, where
// each row splits between its forms, the concrete values of the forms, the
// alpha rules and the order of the argument checks.
#include <array>
#include <map>
#include <string>
#include <utility>
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

const Conversion& conv(const std::string& name) { return findConversion(conversions(), name); }

// The first three destination bytes of pixel `index` in a row of `width`.
Bytes colour(const std::string& name, std::array<uint8_t, 3> in, int width, int index = 0)
{
    Bytes b = convertColour(conv(name), in, width, index);
    b.resize(3);
    return b;
}

// Known answers of every form, worked out from the definitions of the forms
// with exact integer arithmetic, for a few colours (the last four sit on
// rounding ties of some scalar forms), in R, G, B order.
using Answers = ColourSet<10>;

const Answers kColours = {{{12, 200, 77}, {255, 0, 128}, {90, 90, 250}, {200, 17, 230}, {128, 60, 0},
                          {16, 240, 16}, {1, 53, 185}, {12, 64, 196}, {145, 109, 134}, {36, 141, 29}}};

const std::map<std::string, Answers> kForms = {
    {"A", {{{129, 102, 24}, {90, 146, 255}, {108, 197, 111}, {95, 193, 219}, {73, 91, 175},
             {147, 63, 12}, {52, 193, 82}, {63, 193, 82}, {122, 133, 147}, {96, 94, 74}}}},
    {"B", {{{129, 101, 24}, {90, 146, 255}, {108, 197, 112}, {95, 193, 219}, {73, 92, 176},
             {147, 63, 13}, {52, 192, 82}, {63, 192, 82}, {122, 133, 147}, {96, 94, 74}}}},
    {"C", {{{129, 102, 24}, {90, 146, 255}, {108, 197, 112}, {95, 193, 219}, {73, 91, 175},
             {147, 63, 12}, {52, 193, 82}, {63, 193, 82}, {122, 133, 147}, {96, 94, 74}}}},
    {"D", {{{130, 101, 24}, {91, 146, 255}, {108, 197, 112}, {96, 193, 219}, {73, 92, 176},
             {147, 63, 13}, {53, 193, 83}, {64, 193, 83}, {123, 133, 147}, {97, 94, 74}}}},
    {"E", {{{129, 102, 24}, {91, 146, 255}, {108, 197, 112}, {95, 194, 219}, {73, 91, 175},
             {147, 63, 13}, {52, 193, 82}, {63, 193, 82}, {122, 133, 148}, {96, 94, 74}}}},
    {"P", {{{0, 12, 158}, {255, 255, 0}, {229, 33, 12}, {255, 183, 0}, {0, 228, 0},
             {0, 36, 243}, {65, 0, 0}, {89, 0, 0}, {151, 148, 106}, {0, 87, 62}}}},
    {"Q", {{{0, 13, 158}, {255, 255, 0}, {229, 34, 13}, {255, 184, 0}, {0, 229, 0},
             {0, 36, 244}, {66, 0, 0}, {90, 0, 0}, {152, 148, 106}, {0, 88, 62}}}},
    {"R", {{{0, 13, 158}, {255, 255, 0}, {229, 33, 12}, {255, 184, 0}, {0, 228, 0},
             {0, 36, 243}, {65, 0, 0}, {89, 0, 0}, {151, 148, 106}, {0, 88, 62}}}},
    {"S", {{{0, 13, 158}, {255, 255, 0}, {229, 34, 12}, {255, 184, 0}, {0, 229, 0},
             {0, 36, 243}, {65, 0, 0}, {89, 0, 0}, {151, 148, 106}, {0, 88, 62}}}},
    {"T", {{{0, 14, 158}, {255, 255, 0}, {229, 34, 13}, {255, 185, 0}, {0, 229, 0},
             {0, 37, 244}, {66, 0, 0}, {90, 0, 0}, {152, 149, 106}, {0, 89, 62}}}},
    {"U", {{{0, 13, 158}, {255, 255, 0}, {229, 34, 13}, {255, 184, 0}, {0, 229, 0},
             {0, 37, 244}, {66, 0, 0}, {90, 0, 0}, {152, 149, 106}, {0, 88, 62}}}},
};

// The block and tail form of each member.

const FormMember kMembers[] = {
    {"RGBToYUV_8u_C3R", "A", "B"},
    {"RGBToYUV_8u_C3P3R", "A", "B"},
    {"RGBToYUV_8u_P3R", "A", "C"},
    {"RGBToYUV_8u_AC4R", "D", "D"},
    {"RGBToYUV_8u_AC4P4R", "E", "D"},
    {"YUVToRGB_8u_C3R", "P", "Q"},
    {"YUVToRGB_8u_P3C3R", "R", "S"},
    {"YUVToRGB_8u_P3R", "S", "S"},
    {"YUVToRGB_8u_AC4R", "Q", "Q"},
    {"YUVToRGB_8u_C3C4R", "T", "U"},
};

TEST(Yuv, KnownAnswersOfEveryForm)
{
    expectKnownAnswers(conversions(), kMembers, kColours, kForms);
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

}  // namespace
