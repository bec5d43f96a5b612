// RGB and studio-range YCbCr at full resolution: vector paths against scalar
// forms, where each row splits between its forms, the range ends, the alpha
// rules and the order of the argument checks.
#include <array>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "support/planes.h"

using namespace orvtest;

namespace {

using F = Fault;
using Bytes = std::vector<uint8_t>;

// Blocks of 4, but a remainder of 12 past the last 16 gets one block of 4.
int inverseC3End(int w) { return (w & 12) == 12 ? (w & ~15) + 4 : (w & ~3); }

const std::vector<Conversion>& conversions()
{
    const std::vector<F> rect = {F::SrcNull, F::DstNull, F::Width, F::Height};
    const std::vector<F> toPlanes = {F::SrcNull, F::DstNull, F::Width, F::Height, F::DstPlane0, F::DstPlane1, F::DstPlane2};
    const std::vector<F> fromPlanes = {F::SrcNull, F::DstNull, F::Width, F::Height, F::SrcPlane0, F::SrcPlane1, F::SrcPlane2};
    const std::vector<F> planesFirst = {F::SrcNull, F::DstNull, F::SrcPlane0, F::SrcPlane1, F::SrcPlane2, F::Height, F::Width};
    static const std::vector<Conversion> all = {
        {"RGBToYCbCr_8u_C3R", {1, 3}, {1, 3}, call(orviRGBToYCbCr_8u_C3R), blocksOf(16), rect},
        {"RGBToYCbCr_8u_AC4R", {1, 4}, {1, 4}, call(orviRGBToYCbCr_8u_AC4R), blocksOf(16), rect},
        {"RGBToYCbCr_8u_C3P3R", {1, 3}, {3, 1}, call(orviRGBToYCbCr_8u_C3P3R), blocksOf(16), toPlanes},
        {"RGBToYCbCr_8u_AC4P3R", {1, 4}, {3, 1}, call(orviRGBToYCbCr_8u_AC4P3R), blocksOf(16), toPlanes},
        {"RGBToYCbCr_8u_P3R", {3, 1}, {3, 1}, call(orviRGBToYCbCr_8u_P3R), blocksOf(8),
         {F::SrcNull, F::DstNull, F::Width, F::Height, F::SrcPlane0, F::SrcPlane1, F::SrcPlane2, F::DstPlane0,
          F::DstPlane1, F::DstPlane2}},
        {"YCbCrToRGB_8u_C3R", {1, 3}, {1, 3}, call(orviYCbCrToRGB_8u_C3R), inverseC3End, rect},
        {"YCbCrToRGB_8u_P3C3R", {3, 1}, {1, 3}, call(orviYCbCrToRGB_8u_P3C3R), blocksOf(4), planesFirst},
        {"YCbCrToBGR_8u_P3C3R", {3, 1}, {1, 3}, call(orviYCbCrToBGR_8u_P3C3R), blocksOf(4), planesFirst},
        {"YCbCrToRGB_8u_P3R", {3, 1}, {3, 1}, call(orviYCbCrToRGB_8u_P3R), blocksOf(4),
         {F::SrcNull, F::DstNull, F::Width, F::Height, F::DstPlane0, F::DstPlane1, F::DstPlane2, F::SrcPlane0,
          F::SrcPlane1, F::SrcPlane2}},
        {"YCbCrToRGB_8u_AC4R", {1, 4}, {1, 4}, call(orviYCbCrToRGB_8u_AC4R), wholeRow, rect},
        {"YCbCrToRGB_8u_P3C4R", {3, 1}, {1, 4}, call(orviYCbCrToRGB_8u_P3C4R, Orv8u(9)), blocksOf(8), fromPlanes},
        {"YCbCrToBGR_8u_P3C4R", {3, 1}, {1, 4}, call(orviYCbCrToBGR_8u_P3C4R, Orv8u(255)), wholeRow, planesFirst},
    };
    return all;
}

const Conversion& conv(const std::string& name) { return findConversion(conversions(), name); }

Bytes colour(const std::string& name, std::array<uint8_t, 3> in, int width, int index = 0)
{
    Bytes b = convertColour(conv(name), in, width, index);
    b.resize(3);
    return b;
}

// Known answers of every form, worked out from the definitions of the forms
// with exact integer arithmetic, for a few colours (all but the first four sit on
// rounding ties of the scalar forms), in R, G, B order.
using Answers = std::array<std::array<uint8_t, 3>, 13>;

const Answers kColours = {{{12, 200, 77}, {255, 0, 128}, {90, 90, 250}, {16, 240, 16}, {17, 233, 201},
                          {215, 63, 227}, {8, 221, 235}, {164, 112, 120}, {159, 220, 150}, {116, 193, 236},
                          {111, 35, 148}, {91, 130, 160}, {58, 164, 124}}};

const std::map<std::string, Answers> kForms = {
    {"FS", {{{127, 102, 54}, {94, 146, 231}, {109, 198, 117}, {143, 63, 46}, {158, 146, 35},
              {125, 178, 183}, {152, 166, 34}, {126, 124, 150}, {182, 106, 106}, {166, 158, 91},
              {77, 166, 153}, {121, 147, 109}, {126, 126, 84}}}},
    {"FB", {{{127, 102, 54}, {94, 146, 231}, {109, 198, 117}, {143, 63, 46}, {157, 146, 35},
              {125, 177, 183}, {152, 166, 33}, {126, 124, 150}, {182, 106, 106}, {166, 158, 91},
              {77, 166, 153}, {121, 147, 109}, {126, 126, 84}}}},
    {"FP", {{{127, 102, 54}, {94, 146, 231}, {109, 198, 117}, {143, 63, 46}, {157, 146, 35},
              {125, 177, 183}, {152, 166, 33}, {126, 124, 150}, {182, 106, 106}, {166, 158, 91},
              {77, 166, 153}, {121, 147, 109}, {126, 126, 84}}}},
    {"IS", {{{0, 9, 141}, {255, 255, 20}, {255, 2, 9}, {0, 47, 226}, {118, 0, 213},
              {255, 177, 101}, {161, 0, 178}, {160, 185, 140}, {202, 113, 255}, {255, 3, 248},
              {142, 131, 0}, {138, 60, 91}, {43, 38, 121}}}},
    {"IQ", {{{0, 9, 141}, {255, 255, 20}, {255, 2, 9}, {0, 47, 226}, {118, 0, 213},
              {255, 177, 101}, {161, 0, 178}, {160, 185, 140}, {202, 113, 255}, {255, 3, 248},
              {143, 131, 0}, {138, 61, 91}, {43, 38, 122}}}},
    {"IU", {{{0, 8, 140}, {255, 255, 20}, {255, 1, 9}, {0, 47, 225}, {117, 0, 212},
              {255, 176, 100}, {161, 0, 178}, {159, 185, 140}, {201, 112, 255}, {255, 3, 247},
              {142, 130, 0}, {138, 60, 91}, {42, 38, 121}}}},
    {"IB", {{{0, 9, 140}, {255, 255, 20}, {255, 2, 9}, {0, 47, 226}, {118, 0, 213},
              {255, 177, 100}, {161, 0, 178}, {159, 185, 140}, {201, 113, 255}, {255, 3, 248},
              {142, 131, 0}, {138, 61, 91}, {42, 38, 121}}}},
    {"IP", {{{0, 8, 140}, {255, 255, 20}, {255, 1, 9}, {0, 47, 225}, {117, 0, 212},
              {255, 176, 100}, {161, 0, 178}, {159, 185, 139}, {201, 112, 255}, {255, 3, 247},
              {142, 130, 0}, {138, 60, 91}, {42, 38, 121}}}},
    {"IC", {{{0, 9, 141}, {255, 255, 20}, {255, 2, 9}, {0, 47, 226}, {118, 0, 213},
              {255, 177, 100}, {161, 0, 178}, {159, 185, 140}, {202, 113, 255}, {255, 3, 247},
              {142, 131, 0}, {138, 61, 91}, {42, 38, 121}}}},
};

// The block and tail form of each member.

const FormMember kMembers[] = {
    {"RGBToYCbCr_8u_C3R", "FB", "FS"},
    {"RGBToYCbCr_8u_AC4R", "FB", "FS"},
    {"RGBToYCbCr_8u_C3P3R", "FB", "FS"},
    {"RGBToYCbCr_8u_AC4P3R", "FB", "FS"},
    {"RGBToYCbCr_8u_P3R", "FP", "FS"},
    {"YCbCrToRGB_8u_C3R", "IB", "IS"},
    {"YCbCrToRGB_8u_P3C3R", "IB", "IS"},
    {"YCbCrToBGR_8u_P3C3R", "IB", "IS"},
    {"YCbCrToRGB_8u_P3R", "IP", "IQ"},
    {"YCbCrToRGB_8u_AC4R", "IU", "IU"},
    {"YCbCrToRGB_8u_P3C4R", "IC", "IS"},
    {"YCbCrToBGR_8u_P3C4R", "IC", "IC"},
};

TEST(YCbCr, KnownAnswersOfEveryForm)
{
    expectKnownAnswers(conversions(), kMembers, kColours, kForms);
}

TEST(YCbCr, VectorPathsMatchScalarForms)
{
    for (const auto& c : conversions())
        expectVectorMatchesScalar(c);
}

TEST(YCbCr, RowsSplitBetweenBlockAndTailForms)
{
    for (const auto& c : conversions())
        if (c.blockEnd(37) != 37)
            expectSplit(c);
}

TEST(YCbCr, CheckOrderAndNothingWrittenOnFailure)
{
    for (const auto& c : conversions())
        expectCheckOrder(c);
}

TEST(YCbCr, RangeEnds)
{
    for (const auto& c : conversions()) {
        const bool forward = c.name.rfind("RGBToYCbCr", 0) == 0;
        const bool bgr = c.name.find("ToBGR") != std::string::npos;
        for (int w : {1, 4, 8, 16, 32}) {
            if (forward) {
                EXPECT_EQ(colour(c.name, {0, 0, 0}, w), (Bytes{16, 128, 128})) << c.name << " " << w;
                EXPECT_EQ(colour(c.name, {255, 255, 255}, w), (Bytes{235, 128, 128})) << c.name << " " << w;
            } else {
                EXPECT_EQ(colour(c.name, {16, 128, 128}, w), (Bytes{0, 0, 0})) << c.name << " " << w;
                // White: the forms without a rounding term (the block form of
                // the planar member and every pixel of AC4R) stop at 254.
                const bool truncates = c.name == "YCbCrToRGB_8u_AC4R" || (c.name == "YCbCrToRGB_8u_P3R" && w >= 4);
                const uint8_t top = truncates ? 254 : 255;
                EXPECT_EQ(colour(c.name, {235, 128, 128}, w), (Bytes{top, top, top})) << c.name << " " << w;
                // Luma below 16 clamps at 0; strong Cr gives red, in memory
                // order of the destination.
                EXPECT_EQ(colour(c.name, {0, 128, 128}, w), (Bytes{0, 0, 0})) << c.name;
                const Bytes red = colour(c.name, {81, 90, 255}, w);
                EXPECT_EQ(red[bgr ? 2 : 0], 255) << c.name << " " << w;
                EXPECT_EQ(red[1], 0) << c.name << " " << w;
            }
        }
    }
}

TEST(YCbCr, AlphaRules)
{
    // RGBToYCbCr AC4R: 0 in the block part, untouched in the last width & 15.
    const Conversion& fwd = conv("RGBToYCbCr_8u_AC4R");
    for (int x = 0; x < 20; ++x)
        EXPECT_EQ(convertColour(fwd, {1, 2, 3}, 20, x)[3], x < 16 ? 0 : 0xEE) << x;
    EXPECT_EQ(convertColour(fwd, {1, 2, 3}, 15, 0)[3], 0xEE);
    // YCbCrToRGB AC4R leaves the fourth byte alone.
    for (int w : {1, 16, 21})
        for (int x : {0, w - 1})
            EXPECT_EQ(convertColour(conv("YCbCrToRGB_8u_AC4R"), {100, 100, 100}, w, x)[3], 0xEE);
    // The P3C4 members write the caller's alpha in every pixel.
    for (int w : {1, 7, 8, 13})
        for (int x = 0; x < w; ++x) {
            EXPECT_EQ(convertColour(conv("YCbCrToBGR_8u_P3C4R"), {100, 100, 100}, w, x)[3], 255);
            EXPECT_EQ(convertColour(conv("YCbCrToRGB_8u_P3C4R"), {100, 100, 100}, w, x)[3], 9);
        }
}

}  // namespace
