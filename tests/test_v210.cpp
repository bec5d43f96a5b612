// Ten-bit v210 readers: vector path against scalar form, the words a row
// may read, every pixel position of a group, ignored top bits, the colour
// packing and the argument checks.
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "support/image.h"

using namespace orvtest;

namespace {

using Fn = OrvStatus (*)(const Orv32u*, int, Orv16u*, int, RoiSize);
struct Member {
    const char* name;
    Fn f;
    bool colour;
};
const Member kMembers[] = {
    {"Gray", orviYUV422v210ToGray_709HDTV_32u16u_C3C1, false},
    {"RGB", orviYUV422v210ToRGB_709HDTV_32u16u_C3, true},
    {"BGR", orviYUV422v210ToBGR_709HDTV_32u16u_C3, true},
};

// The words of a group of six pixels holding each pixel's luma, and the
// words holding its pair's Cb and Cr (from the layout of the format).
constexpr int kYWord[6] = {0, 1, 1, 2, 3, 3};
constexpr int kCbWord[6] = {0, 0, 1, 1, 2, 2};
constexpr int kCrWord[6] = {0, 0, 2, 2, 3, 3};

// Bytes a row of `width` pixels needs: 32 per twelve, then up to the last
// word that a remaining pixel reads.
int rowBytes(int width, bool colour)
{
    int words = 8 * (width / 12);
    for (int j = 0; j < width % 12; ++j) {
        const int base = 8 * (width / 12) + 4 * (j / 6), k = j % 6;
        int last = base + kYWord[k];
        if (colour)
            last = std::max({last, base + kCbWord[k], base + kCrWord[k]});
        words = std::max(words, last + 1);
    }
    return 4 * words;
}

uint32_t word(int a, int b, int c, int top = 0) { return uint32_t(a) | uint32_t(b) << 10 | uint32_t(c) << 20 | uint32_t(top) << 30; }

std::vector<uint16_t> convert(const Member& m, const std::vector<uint32_t>& words, int width)
{
    GuardedImage src(int(words.size()) * 4, 1, int(words.size()) * 4);
    std::memcpy(src.data(), words.data(), words.size() * 4);
    GuardedImage dst(2 * width, 1, 2 * width);
    EXPECT_EQ(m.f(src.data<Orv32u>(), src.step(), dst.data<Orv16u>(), dst.step(), {width, 1}), orvStatusOk);
    std::vector<uint16_t> out(width);
    std::memcpy(out.data(), dst.data(), 2 * width);
    return out;
}

TEST(V210, VectorPathMatchesScalarForm)
{
    std::mt19937 rng(3);
    for (const Member& m : kMembers) {
        SCOPED_TRACE(m.name);
        for (const Geometry& g : standardSweep(1)) {
            SCOPED_TRACE(g.str());
            const int sb = rowBytes(g.width, m.colour);
            GuardedImage src(sb, g.height, (g.negative ? -1 : 1) * (sb + g.srcPad), g.endSlack);
            GuardedImage dv(2 * g.width, g.height, (g.negative ? -1 : 1) * (2 * g.width + g.dstPad), g.endSlack);
            GuardedImage ds(2 * g.width, g.height, (g.negative ? -1 : 1) * (2 * g.width + g.dstPad), g.endSlack);
            src.fillBytes(rng);
            if (g.negative) {
                // Negative steps are refused; the same rows with positive steps.
                ASSERT_EQ(m.f(src.data<Orv32u>(), src.step(), dv.data<Orv16u>(), dv.step(), {g.width, g.height}),
                          orvStatusBadSize);
                continue;
            }
            const RoiSize roi{g.width, g.height};
            ASSERT_EQ(m.f(src.data<Orv32u>(), src.step(), dv.data<Orv16u>(), dv.step(), roi), orvStatusOk);
            {
                ScalarBlocks scalar;
                ASSERT_EQ(m.f(src.data<Orv32u>(), src.step(), ds.data<Orv16u>(), ds.step(), roi), orvStatusOk);
            }
            ASSERT_TRUE(src.guardsIntact());
            ASSERT_TRUE(dv.guardsIntact());
            ASSERT_TRUE(ds.guardsIntact());
            ASSERT_EQ(dv.pixels(), ds.pixels());
        }
    }
}

// A group whose every sample differs: the luma of every position, the
// chroma of every pair (with Y 0 and Cb, Cr above 512, B and R are the
// rounded 1.816 u and 1.540 v, G clamps at 0), with the top bits set.
TEST(V210, EveryPositionOfAGroup)
{
    std::vector<uint32_t> group(8);
    int ys[12], cbs[6], crs[6];
    for (int j = 0; j < 12; ++j)
        ys[j] = 1000 - 37 * j;
    for (int k = 0; k < 6; ++k) {
        cbs[k] = 513 + 3 * k;
        crs[k] = 514 + 3 * k;
    }
    for (int h = 0; h < 2; ++h) {
        const int* y = ys + 6 * h;
        const int* cb = cbs + 3 * h;
        const int* cr = crs + 3 * h;
        group[4 * h + 0] = word(cb[0], y[0], cr[0], 3);
        group[4 * h + 1] = word(y[1], cb[1], y[2], 2);
        group[4 * h + 2] = word(cr[1], y[3], cb[2], 1);
        group[4 * h + 3] = word(y[4], cr[2], y[5], 3);
    }
    const auto gray = convert(kMembers[0], group, 12);
    for (int j = 0; j < 12; ++j)
        EXPECT_EQ(gray[j], ys[j]) << j;
    // Luma 0 everywhere for the colour check.
    std::vector<uint32_t> dark(8);
    for (int h = 0; h < 2; ++h) {
        const int* cb = cbs + 3 * h;
        const int* cr = crs + 3 * h;
        dark[4 * h + 0] = word(cb[0], 0, cr[0], 3);
        dark[4 * h + 1] = word(0, cb[1], 0, 2);
        dark[4 * h + 2] = word(cr[1], 0, cb[2], 1);
        dark[4 * h + 3] = word(0, cr[2], 0, 3);
    }
    for (int width : {12, 11, 7, 1}) {
        const auto rgb = convert(kMembers[1], dark, width);
        const auto bgr = convert(kMembers[2], dark, width);
        for (int j = 0; j < width; ++j) {
            const int b = int(std::nearbyint(1.816 * (cbs[j / 2] - 512)));
            const int r = int(std::nearbyint(1.540 * (crs[j / 2] - 512)));
            EXPECT_EQ(rgb[j], r | b << 11) << width << " " << j;
            EXPECT_EQ(bgr[j], b | r << 11) << width << " " << j;
        }
    }
}

TEST(V210, ColourPackingAndClamps)
{
    // Y 20, chroma 512: R, G, B of 20. Y 100: clamped to 31, 63, 31.
    for (int y : {20, 100}) {
        const std::vector<uint32_t> g = {word(512, y, 512), word(y, 512, y), word(512, y, 512), word(y, 512, y)};
        const int c5 = std::min(y, 31), c6 = std::min(y, 63);
        for (uint16_t v : convert(kMembers[1], g, 6))
            EXPECT_EQ(v, c5 | c6 << 5 | c5 << 11) << y;
    }
    // Gray of Y 0 and 1023.
    const std::vector<uint32_t> extremes = {word(512, 0, 512), word(1023, 512, 0), word(512, 1023, 512), word(0, 512, 1023)};
    EXPECT_EQ(convert(kMembers[0], extremes, 6), (std::vector<uint16_t>{0, 1023, 0, 1023, 0, 1023}));
}

TEST(V210, CheckOrder)
{
    GuardedImage src(64, 2, 64), dst(48, 2, 48);
    std::mt19937 rng(1);
    src.fillBytes(rng);
    for (const Member& m : kMembers) {
        const auto before = dst.pixels();
        const Orv32u* s = src.data<Orv32u>();
        Orv16u* d = dst.data<Orv16u>();
        EXPECT_EQ(m.f(nullptr, 0, nullptr, 0, {0, 0}), orvStatusNullPointer);
        EXPECT_EQ(m.f(s, 0, nullptr, 0, {0, 0}), orvStatusNullPointer);
        EXPECT_EQ(m.f(s, 0, d, 0, {0, 0}), orvStatusBadSize);
        EXPECT_EQ(m.f(s, 64, d, 48, {12, 0}), orvStatusBadSize);
        EXPECT_EQ(m.f(s, 0, d, 48, {12, 2}), orvStatusBadSize);
        EXPECT_EQ(m.f(s, 64, d, 0, {12, 2}), orvStatusBadSize);  // a zero dstStep
        EXPECT_EQ(dst.pixels(), before);
        EXPECT_EQ(m.f(s, 64, d, 48, {12, 2}), orvStatusOk);
    }
}

}  // namespace
