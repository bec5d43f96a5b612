// Gray family: vector paths against scalar forms, the block/tail split,
// weights, front checks and thread independence.
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "support/image.h"

using namespace orvtest;

namespace {

// f(src, srcStep, dst, dstStep, roi, extra...) over the standard sweep.
template <class S, class D, class F>
void sweep(int srcCh, int dstCh, F f)
{
    const int pad = sizeof(S) > sizeof(D) ? sizeof(S) : sizeof(D);
    expectVectorMatchesScalar(srcCh * sizeof(S), dstCh * sizeof(D), pad == 1 ? 1 : pad, fillTypical<S>,
                              [&](GuardedImage& s, GuardedImage& d, RoiSize roi) {
                                  return f(s.data<S>(), s.step(), d.data<D>(), d.step(), roi);
                              });
}

const float kUser[3] = {0.2126f, 0.7152f, 0.0722f};
const double kUser64[3] = {0.2126, 0.7152, 0.0722};

TEST(Gray, VectorPathsMatchScalarForms)
{
    sweep<Orv8u, Orv8u>(3, 1, orviRGBToGray_8u_C3C1R);
    sweep<Orv8u, Orv8u>(4, 1, orviRGBToGray_8u_AC4C1R);
    sweep<Orv16u, Orv16u>(3, 1, orviRGBToGray_16u_C3C1R);
    sweep<Orv16u, Orv16u>(4, 1, orviRGBToGray_16u_AC4C1R);
    sweep<Orv16s, Orv16s>(3, 1, orviRGBToGray_16s_C3C1R);
    sweep<Orv16s, Orv16s>(4, 1, orviRGBToGray_16s_AC4C1R);
    sweep<Orv32f, Orv32f>(3, 1, orviRGBToGray_32f_C3C1R);
    sweep<Orv32f, Orv32f>(4, 1, orviRGBToGray_32f_AC4C1R);
    auto user = [](auto fn) {
        return [fn](auto s, int ss, auto d, int ds, RoiSize r) { return fn(s, ss, d, ds, r, kUser); };
    };
    sweep<Orv8u, Orv8u>(3, 1, user(orviColorToGray_8u_C3C1R));
    sweep<Orv8u, Orv8u>(4, 1, user(orviColorToGray_8u_AC4C1R));
    sweep<Orv16u, Orv16u>(3, 1, user(orviColorToGray_16u_C3C1R));
    sweep<Orv16u, Orv16u>(4, 1, user(orviColorToGray_16u_AC4C1R));
    sweep<Orv16s, Orv16s>(3, 1, user(orviColorToGray_16s_C3C1R));
    sweep<Orv16s, Orv16s>(4, 1, user(orviColorToGray_16s_AC4C1R));
    sweep<Orv32f, Orv32f>(3, 1, user(orviColorToGray_32f_C3C1R));
    sweep<Orv32f, Orv32f>(4, 1, user(orviColorToGray_32f_AC4C1R));
    sweep<Orv64f, Orv64f>(3, 1, [](auto s, int ss, auto d, int ds, RoiSize r) {
        return orviColorToGray_64f_C3C1R(s, ss, d, ds, r, kUser64);
    });
    sweep<Orv64f, Orv64f>(4, 1, [](auto s, int ss, auto d, int ds, RoiSize r) {
        return orviColorToGray_64f_AC4C1R(s, ss, d, ds, r, nullptr);
    });
    sweep<Orv8u, Orv8u>(1, 3, orviGrayToRGB_8u_C1C3R);
    sweep<Orv16u, Orv16u>(1, 3, orviGrayToRGB_16u_C1C3R);
    sweep<Orv32f, Orv32f>(1, 3, orviGrayToRGB_32f_C1C3R);
    sweep<Orv8u, Orv8u>(1, 4, [](auto s, int ss, auto d, int ds, RoiSize r) {
        return orviGrayToRGB_8u_C1C4R(s, ss, d, ds, r, 7);
    });
    sweep<Orv16u, Orv16u>(1, 4, [](auto s, int ss, auto d, int ds, RoiSize r) {
        return orviGrayToRGB_16u_C1C4R(s, ss, d, ds, r, 0xBEEF);
    });
    sweep<Orv32f, Orv32f>(1, 4, [](auto s, int ss, auto d, int ds, RoiSize r) {
        return orviGrayToRGB_32f_C1C4R(s, ss, d, ds, r, -2.5f);
    });
    sweep<Orv8u, Orv8u>(2, 1, orviYCbCr422ToGray_8u_C2C1R);
}

// One row of `width` copies of a pixel through RGBToGray 8u C3.
std::vector<Orv8u> gray8(int width, Orv8u r, Orv8u g, Orv8u b)
{
    std::vector<Orv8u> src, dst(width);
    for (int i = 0; i < width; ++i)
        src.insert(src.end(), {r, g, b});
    EXPECT_EQ(orviRGBToGray_8u_C3C1R(src.data(), 3 * width, dst.data(), width, {width, 1}), orvStatusOk);
    return dst;
}

// Float destinations of a mebibyte or more take streaming stores from the
// first 32-byte boundary of each row: the same values as the scalar form
// whatever the row's alignment, and nothing written outside the rectangle.
TEST(Gray, LargeFloatImagesGiveTheSameValues)
{
    std::mt19937 rng(9);
    const RoiSize roi{515, 510};  // 1 MiB of destination and a little more
    for (int ch : {3, 4}) {
        SCOPED_TRACE(ch);
        GuardedImage src = makeImage(roi.width, roi.height, 4 * ch, 8, false, 0);
        GuardedImage dv = makeImage(roi.width, roi.height, 4, 4, ch == 4, 4);
        GuardedImage ds = makeImage(roi.width, roi.height, 4, 4, ch == 4, 4);
        src.fill<float>(rng, -1, 2);
        auto call = [&](GuardedImage& d) {
            return ch == 3 ? orviRGBToGray_32f_C3C1R(src.data<float>(), src.step(), d.data<float>(), d.step(), roi)
                           : orviColorToGray_32f_AC4C1R(src.data<float>(), src.step(), d.data<float>(), d.step(), roi,
                                                        kUser);
        };
        ASSERT_EQ(call(dv), orvStatusOk);
        {
            ScalarBlocks scalar;
            ASSERT_EQ(call(ds), orvStatusOk);
        }
        EXPECT_TRUE(dv.guardsIntact());
        EXPECT_EQ(dv.pixels(), ds.pixels());
    }
}

TEST(Gray, EightBitBlocksAndTailDifferWhereTheRowSplits)
{
    // (0,5,5) is 3 by the block form and 4 by the tail form; (0,60,20) 37 and 38.
    for (auto [g, b, blockY, tailY] : {std::tuple{5, 5, 3, 4}, std::tuple{60, 20, 37, 38}}) {
        EXPECT_EQ(gray8(15, 0, g, b), std::vector<Orv8u>(15, tailY));
        EXPECT_EQ(gray8(16, 0, g, b), std::vector<Orv8u>(16, blockY));
        EXPECT_EQ(gray8(32, 0, g, b), std::vector<Orv8u>(32, blockY));
        // 53 = 32 + 16 + 5: 48 block pixels, then 5 tail pixels.
        std::vector<Orv8u> mixed(48, blockY);
        mixed.resize(53, tailY);
        EXPECT_EQ(gray8(53, 0, g, b), mixed);
    }
    for (int w : {15, 16, 47, 64}) {
        EXPECT_EQ(gray8(w, 255, 255, 255), std::vector<Orv8u>(w, 255));
        EXPECT_EQ(gray8(w, 0, 0, 0), std::vector<Orv8u>(w, 0));
    }
}

TEST(Gray, UserWeightsAndDefaults)
{
    std::mt19937 rng(7);
    // A null weight pointer selects the fixed weights, in every type.
    GuardedImage s8 = makeImage(37, 3, 3, 0, false, 0), a8 = makeImage(37, 3, 1, 0, false, 0),
                 b8 = makeImage(37, 3, 1, 0, false, 0);
    s8.fillBytes(rng);
    orviRGBToGray_8u_C3C1R(s8.data(), s8.step(), a8.data(), a8.step(), {37, 3});
    orviColorToGray_8u_C3C1R(s8.data(), s8.step(), b8.data(), b8.step(), {37, 3}, nullptr);
    EXPECT_EQ(a8.pixels(), b8.pixels());
    GuardedImage sf = makeImage(37, 3, 12, 0, false, 0), af = makeImage(37, 3, 4, 0, false, 0),
                 bf = makeImage(37, 3, 4, 0, false, 0);
    sf.fill<float>(rng, -3, 3);
    orviRGBToGray_32f_C3C1R(sf.data<float>(), sf.step(), af.data<float>(), af.step(), {37, 3});
    orviColorToGray_32f_C3C1R(sf.data<float>(), sf.step(), bf.data<float>(), bf.step(), {37, 3}, nullptr);
    EXPECT_EQ(af.pixels(), bf.pixels());

    // 8u weights become trunc(c * 32768 + 0.5): 0.5 -> 16384 exactly, so
    // (R, G, B) = (200, 100, 0) with weights (0.5, 0.5, 0) is 150 in both forms.
    const float half[3] = {0.5f, 0.5f, 0.0f};
    for (int w : {1, 16}) {
        std::vector<Orv8u> src, dst(w);
        for (int i = 0; i < w; ++i)
            src.insert(src.end(), {200, 100, 0, 9});
        orviColorToGray_8u_AC4C1R(src.data(), 4 * w, dst.data(), w, {w, 1}, half);
        EXPECT_EQ(dst, std::vector<Orv8u>(w, 150)) << w;
    }
    // Weights of a third each keep white at 255 in both members.
    const float third[3] = {1.0f / 3, 1.0f / 3, 1.0f / 3};
    Orv8u px4[4] = {255, 255, 255, 0}, px3[3] = {255, 255, 255}, o3 = 0, o4 = 0;
    orviColorToGray_8u_C3C1R(px3, 3, &o3, 1, {1, 1}, third);
    orviColorToGray_8u_AC4C1R(px4, 4, &o4, 1, {1, 1}, third);
    EXPECT_EQ(o3, 255);
    EXPECT_EQ(o4, 255);

    // 32f passes values outside 0..1 through without a clamp.
    float hot[3] = {4.0f, 4.0f, 4.0f}, cold[3] = {-2.0f, -2.0f, -2.0f}, out = 0;
    orviRGBToGray_32f_C3C1R(hot, 12, &out, 4, {1, 1});
    EXPECT_GT(out, 3.99f);
    orviRGBToGray_32f_C3C1R(cold, 12, &out, 4, {1, 1});
    EXPECT_LT(out, -1.99f);
}

TEST(Gray, SixteenBitRoundingClampsAndBias)
{
    // Three -32768 are all 0 after the bias: the result is -32768 in the
    // blocks and in the tail.
    for (int w : {3, 4, 7}) {
        std::vector<Orv16s> src(3 * w, -32768), dst(w, 1);
        EXPECT_EQ(orviRGBToGray_16s_C3C1R(src.data(), 6 * w, dst.data(), 2 * w, {w, 1}), orvStatusOk);
        EXPECT_EQ(dst, std::vector<Orv16s>(w, -32768)) << w;
    }
    // 16u white stays white: the weights sum to 1 in single precision.
    for (int w : {15, 16}) {
        std::vector<Orv16u> src(3 * w, 65535), dst(w, 0);
        orviRGBToGray_16u_C3C1R(src.data(), 6 * w, dst.data(), 2 * w, {w, 1});
        EXPECT_EQ(dst, std::vector<Orv16u>(w, 65535)) << w;
    }
    // Weights summing above 1: the block path clamps, the tail keeps the
    // low 16 bits (70000 -> 4464).
    const float big[3] = {0.0f, 70000.0f / 65535.0f, 0.0f};
    for (auto [w, expect] : {std::pair{16, 65535}, std::pair{15, 70000 & 0xffff}}) {
        std::vector<Orv16u> src, dst(w, 0);
        for (int i = 0; i < w; ++i)
            src.insert(src.end(), {0, 65535, 0});
        orviColorToGray_16u_C3C1R(src.data(), 6 * w, dst.data(), 2 * w, {w, 1}, big);
        EXPECT_EQ(dst[0], expect) << w;
    }
    // The 16s members take their steps in whole elements: a byte step of 13
    // walks 12 bytes (two rows of two pixels).
    std::vector<Orv16s> src(64, 0), a(8, 0), b(8, 0);
    for (int i = 0; i < 64; ++i)
        src[i] = Orv16s(i * 1000 - 30000);
    orviRGBToGray_16s_C3C1R(src.data(), 13, a.data(), 4, {2, 2});
    orviRGBToGray_16s_C3C1R(src.data(), 12, b.data(), 4, {2, 2});
    EXPECT_EQ(a, b);
}

TEST(Gray, DoublePrecisionOrderFollowsTheDestinationAlignment)
{
    // A pixel whose two fused orders round differently.
    const double w[3] = {0.29899999499320984, 0.5870000123977661, 0.11400000005960464};
    double px[3] = {0, 0, 0};
    std::mt19937_64 rng(3);
    auto plain = [&](const double* p) { return std::fma(w[2], p[2], std::fma(w[0], p[0], p[1] * w[1])); };
    auto swapped = [&](const double* p) { return std::fma(w[0], p[0], std::fma(w[2], p[2], p[1] * w[1])); };
    do {
        for (double& v : px)
            v = std::uniform_real_distribution<double>(0, 1)(rng);
    } while (plain(px) == swapped(px));

    const int width = 11;
    std::vector<double> src;
    for (int i = 0; i < width; ++i)
        src.insert(src.end(), px, px + 3);
    alignas(32) double buf[16];
    for (int shift : {0, 1}) {
        double* dst = buf + shift;  // 16-byte aligned, then 8 past it
        ASSERT_EQ(orviColorToGray_64f_C3C1R(src.data(), 24 * width, dst, 8 * width, {width, 1}, nullptr), orvStatusOk);
        const int head = shift;
        const int blockEnd = head + ((width - head) & ~3);
        for (int i = 0; i < width; ++i) {
            const bool inBlock = i >= head && i < blockEnd;
            const double expect = (inBlock && ((i - head) & 1)) ? swapped(px) : plain(px);
            EXPECT_EQ(dst[i], expect) << "shift " << shift << " pixel " << i;
        }
    }
}

TEST(Gray, GrayToColourAndLumaOf422)
{
    Orv8u g[5] = {1, 2, 3, 4, 5}, rgba[20];
    ASSERT_EQ(orviGrayToRGB_8u_C1C4R(g, 5, rgba, 20, {5, 1}, 7), orvStatusOk);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(rgba[4 * i + 0], g[i]);
        EXPECT_EQ(rgba[4 * i + 2], g[i]);
        EXPECT_EQ(rgba[4 * i + 3], 7);
    }
    // 32f values move as bit patterns, a signalling NaN included.
    const uint32_t snan = 0x7f800001u;
    float f, out[3];
    std::memcpy(&f, &snan, 4);
    orviGrayToRGB_32f_C1C3R(&f, 4, out, 12, {1, 1});
    EXPECT_EQ(std::memcmp(&out[2], &snan, 4), 0);
    // Width 1 of packed 4:2:2 reads just the one luma byte at the page end.
    GuardedImage s = makeImage(1, 1, 1, 0, false, 0), d = makeImage(1, 1, 1, 0, false, 0);
    s.data()[0] = 77;
    ASSERT_EQ(orviYCbCr422ToGray_8u_C2C1R(s.data(), 2, d.data(), 1, {1, 1}), orvStatusOk);
    EXPECT_EQ(d.data()[0], 77);
}

// Null source first, then null destination, then width, then height; a
// failing call writes nothing. Every member shares the order.
TEST(Gray, FrontChecksInOrderAndNothingWrittenOnFailure)
{
    Orv8u src[64] = {}, dst[64];
    std::memset(dst, 0x5a, sizeof dst);
    const Orv8u* ns = nullptr;
    Orv8u* nd = nullptr;
    auto check = [&](auto fn) {
        EXPECT_EQ(fn(ns, nd, RoiSize{0, 0}), orvStatusNullPointer);
        EXPECT_EQ(fn(ns, dst, RoiSize{0, 0}), orvStatusNullPointer);
        EXPECT_EQ(fn(src, nd, RoiSize{0, 0}), orvStatusNullPointer);
        EXPECT_EQ(fn(src, dst, RoiSize{0, 1}), orvStatusBadSize);
        EXPECT_EQ(fn(src, dst, RoiSize{1, 0}), orvStatusBadSize);
        EXPECT_EQ(fn(src, dst, RoiSize{-1, 5}), orvStatusBadSize);
        for (Orv8u b : dst)
            ASSERT_EQ(b, 0x5a);
    };
#define CAST(T) reinterpret_cast<const T*>(s), 4, reinterpret_cast<T*>(d), 4, r
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviRGBToGray_8u_C3C1R(CAST(Orv8u)); });
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviRGBToGray_8u_AC4C1R(CAST(Orv8u)); });
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviRGBToGray_16u_C3C1R(CAST(Orv16u)); });
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviRGBToGray_16u_AC4C1R(CAST(Orv16u)); });
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviRGBToGray_16s_C3C1R(CAST(Orv16s)); });
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviRGBToGray_16s_AC4C1R(CAST(Orv16s)); });
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviRGBToGray_32f_C3C1R(CAST(Orv32f)); });
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviRGBToGray_32f_AC4C1R(CAST(Orv32f)); });
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviColorToGray_8u_C3C1R(CAST(Orv8u), kUser); });
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviColorToGray_8u_AC4C1R(CAST(Orv8u), kUser); });
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviColorToGray_16u_C3C1R(CAST(Orv16u), kUser); });
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviColorToGray_16u_AC4C1R(CAST(Orv16u), kUser); });
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviColorToGray_16s_C3C1R(CAST(Orv16s), kUser); });
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviColorToGray_16s_AC4C1R(CAST(Orv16s), kUser); });
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviColorToGray_32f_C3C1R(CAST(Orv32f), kUser); });
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviColorToGray_32f_AC4C1R(CAST(Orv32f), kUser); });
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviColorToGray_64f_C3C1R(CAST(Orv64f), kUser64); });
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviColorToGray_64f_AC4C1R(CAST(Orv64f), kUser64); });
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviGrayToRGB_8u_C1C3R(CAST(Orv8u)); });
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviGrayToRGB_16u_C1C3R(CAST(Orv16u)); });
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviGrayToRGB_32f_C1C3R(CAST(Orv32f)); });
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviGrayToRGB_8u_C1C4R(CAST(Orv8u), 1); });
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviGrayToRGB_16u_C1C4R(CAST(Orv16u), 1); });
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviGrayToRGB_32f_C1C4R(CAST(Orv32f), 1.0f); });
    check([](const Orv8u* s, Orv8u* d, RoiSize r) { return orviYCbCr422ToGray_8u_C2C1R(CAST(Orv8u)); });
#undef CAST
}

// Banded 64f: the same bytes for 1, 2, 3 and 7 threads, also on 33 rows.
TEST(Gray, DoublePrecisionBandsDoNotDependOnTheThreadCount)
{
    std::mt19937 rng(11);
    for (auto [w, h] : {std::pair{40, 33}, std::pair{64, 100}, std::pair{31, 40}}) {
        GuardedImage src = makeImage(w, h, 32, 8, false, 0);
        src.fill<double>(rng, 0, 1);
        std::vector<uint8_t> first;
        for (int n : {1, 2, 3, 7}) {
            ThreadCount threads(n);
            GuardedImage dst = makeImage(w, h, 8, 16, false, 0);
            ASSERT_EQ(orviColorToGray_64f_AC4C1R(src.data<double>(), src.step(), dst.data<double>(), dst.step(), {w, h},
                                                 kUser64),
                      orvStatusOk);
            EXPECT_TRUE(dst.guardsIntact());
            if (first.empty())
                first = dst.pixels();
            else
                EXPECT_EQ(dst.pixels(), first) << n << " threads";
        }
    }
}

}  // namespace
