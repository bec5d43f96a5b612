// RGB and CIE LUV: the cube-root table derived again from its rule, vector
// paths against scalar forms, where rows split between group and tail forms,
// known values, alpha, checks, threads and rounding modes, and the accuracy
// against the CIE formulas in double precision.
#include <immintrin.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <vector>

#include "models/powluv.h"
#include "support/typed.h"

using namespace orvtest;

namespace {

// ---------------------------------------------------------------------------
// The table.

// The float nearest a decimal string made from a double with `decimals`.
float decimals(double v, int decimals)
{
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.*f", decimals, v);
    return std::strtof(buf, nullptr);
}

h9::powluv::Pair pairOf(double x)
{
    const double c = std::pow(x, double(1.0f / 3.0f));
    const double b = 1.0 / x;
    return {decimals(c, 6), decimals(b, b < 10 ? 6 : b < 100 ? 5 : 4)};
}

TEST(PowLuv, EveryPairFollowsFromItsPoint)
{
    using namespace h9::powluv;
    for (int i = 0; i < kShortSize; ++i) {
        const Pair p = pairOf((i + 1) / 127.99805 + 0.0001);
        EXPECT_EQ(kShort[i].c, p.c) << i;
        EXPECT_EQ(kShort[i].b, p.b) << i;
    }
    for (int i = 0; i < 128; ++i) {
        const Pair p = pairOf((i + 1) / (i < 124 ? 127.99805 : 128.0) + 0.0001);
        EXPECT_EQ(kLong[i].c, p.c) << i;
        EXPECT_EQ(kLong[i].b, p.b) << i;
    }
    EXPECT_EQ(kLong[128].c, 1.0f);
    EXPECT_EQ(kLong[128].b, 1.0f);

    // Values known from the definition of the table.
    EXPECT_EQ(kShort[0].c, 0.199269f);
    EXPECT_EQ(kShort[0].b, 126.3804f);
    EXPECT_EQ(kShort[1].c, 0.250533f);
    EXPECT_EQ(kShort[1].b, 63.592041f);
    EXPECT_EQ(kShort[18].c, 0.529599f);
    const float shortTop[4][2] = {{0.992165f, 1.02388f}, {0.994803f, 1.015754f}, {0.997428f, 1.007757f}, {1.000038f, 0.999885f}};
    const float longTop[4][2] = {{0.99216f, 1.023895f}, {0.994798f, 1.01577f}, {0.997423f, 1.007772f}, {1.000033f, 0.9999f}};
    for (int k = 0; k < 4; ++k) {
        EXPECT_EQ(kShort[124 + k].c, shortTop[k][0]);
        EXPECT_EQ(kShort[124 + k].b, shortTop[k][1]);
        EXPECT_EQ(kLong[124 + k].c, longTop[k][0]);
        EXPECT_EQ(kLong[124 + k].b, longTop[k][1]);
    }
}

// ---------------------------------------------------------------------------
// Members.

template <class T>
using Fn = TypedFn<T>;

// Stored LUV of 32f around and a little beyond its range.
void fillLuv32f(GuardedImage& img, std::mt19937& rng)
{
    const int n = img.rowBytes() / 4;
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < n; ++x) {
            const double lo[3] = {-2, -140, -145}, hi[3] = {102, 225, 125};
            img.row<float>(y)[x] = float(std::uniform_real_distribution<double>(lo[x % 3], hi[x % 3])(rng));
        }
}
void fillLuv32fAC4(GuardedImage& img, std::mt19937& rng)
{
    const int n = img.rowBytes() / 4;
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < n; ++x) {
            const double lo[4] = {-2, -140, -145, 0}, hi[4] = {102, 225, 125, 1};
            img.row<float>(y)[x] = float(std::uniform_real_distribution<double>(lo[x % 4], hi[x % 4])(rng));
        }
}

TEST(Luv, VectorPathsMatchScalarForms)
{
    sweepTyped<Orv8u>(3, 3, orviRGBToLUV_8u_C3R);
    sweepTyped<Orv8u>(3, 3, orviBGRToLUV_8u_C3R);
    sweepTyped<Orv8u>(4, 4, orviRGBToLUV_8u_AC4R);
    sweepTyped<Orv16u>(3, 3, orviRGBToLUV_16u_C3R);
    sweepTyped<Orv16u>(4, 4, orviRGBToLUV_16u_AC4R);
    sweepTyped<Orv16s>(3, 3, orviRGBToLUV_16s_C3R);
    sweepTyped<Orv16s>(4, 4, orviRGBToLUV_16s_AC4R);
    sweepTyped<Orv32f>(3, 3, orviRGBToLUV_32f_C3R);
    sweepTyped<Orv32f>(3, 3, orviBGRToLUV_32f_C3R);
    sweepTyped<Orv32f>(4, 4, orviRGBToLUV_32f_AC4R);
    sweepTyped<Orv8u>(3, 3, orviLUVToRGB_8u_C3R);
    sweepTyped<Orv8u>(3, 3, orviLUVToBGR_8u_C3R);
    sweepTyped<Orv8u>(4, 4, orviLUVToRGB_8u_AC4R);
    sweepTyped<Orv16u>(3, 3, orviLUVToRGB_16u_C3R);
    sweepTyped<Orv16u>(4, 4, orviLUVToRGB_16u_AC4R);
    sweepTyped<Orv16s>(3, 3, orviLUVToRGB_16s_C3R);
    sweepTyped<Orv16s>(4, 4, orviLUVToRGB_16s_AC4R);
    sweepTyped<Orv32f>(3, 3, orviLUVToRGB_32f_C3R, fillLuv32f);
    sweepTyped<Orv32f>(3, 3, orviLUVToBGR_32f_C3R, fillLuv32f);
    sweepTyped<Orv32f>(4, 4, orviLUVToRGB_32f_AC4R, fillLuv32fAC4);
}

// A random pixel of T: the full integer range, 32f RGB in 0..1 or LUV.
template <class T>
std::vector<T> randomPixel(std::mt19937& rng, int ch, bool luv)
{
    std::vector<T> p(ch);
    for (int k = 0; k < ch; ++k) {
        if constexpr (std::is_floating_point_v<T>) {
            const double lo[4] = {0, -100, -100, 0}, hi[4] = {100, 150, 100, 1};
            p[k] = luv ? T(std::uniform_real_distribution<double>(lo[k], hi[k])(rng))
                       : T(std::uniform_real_distribution<double>(0, 1)(rng));
        } else {
            p[k] = T(rng());
        }
    }
    return p;
}

template <class T>
auto rgbPixel(int ch)
{
    return [ch](std::mt19937& rng) { return randomPixel<T>(rng, ch, false); };
}
template <class T>
auto luvPixel(int ch)
{
    return [ch](std::mt19937& rng) { return randomPixel<T>(rng, ch, true); };
}

TEST(Luv, RowsSplitBetweenGroupAndTail)
{
    // In 8u the forms differ in about one colour in 24000.
    expectSplit<Orv8u>(3, 3, 8, orviRGBToLUV_8u_C3R, rgbPixel<Orv8u>(3), "orviRGBToLUV_8u_C3R", {105, 31, 0});
    expectSplit<Orv8u>(3, 3, 8, orviBGRToLUV_8u_C3R, rgbPixel<Orv8u>(3), "orviBGRToLUV_8u_C3R", {0, 31, 105});
    expectSplit<Orv8u>(4, 4, 0, orviRGBToLUV_8u_AC4R, rgbPixel<Orv8u>(4), "orviRGBToLUV_8u_AC4R");
    expectSplit<Orv16u>(3, 3, 4, orviRGBToLUV_16u_C3R, rgbPixel<Orv16u>(3), "orviRGBToLUV_16u_C3R");
    expectSplit<Orv16u>(4, 4, 4, orviRGBToLUV_16u_AC4R, rgbPixel<Orv16u>(4), "orviRGBToLUV_16u_AC4R");
    expectSplit<Orv16s>(3, 3, 4, orviRGBToLUV_16s_C3R, rgbPixel<Orv16s>(3), "orviRGBToLUV_16s_C3R");
    expectSplit<Orv16s>(4, 4, 4, orviRGBToLUV_16s_AC4R, rgbPixel<Orv16s>(4), "orviRGBToLUV_16s_AC4R");
    expectSplit<Orv32f>(3, 3, 8, orviRGBToLUV_32f_C3R, rgbPixel<Orv32f>(3), "orviRGBToLUV_32f_C3R");
    expectSplit<Orv32f>(3, 3, 8, orviBGRToLUV_32f_C3R, rgbPixel<Orv32f>(3), "orviBGRToLUV_32f_C3R");
    expectSplit<Orv32f>(4, 4, 4, orviRGBToLUV_32f_AC4R, rgbPixel<Orv32f>(4), "orviRGBToLUV_32f_AC4R");
    expectSplit<Orv8u>(3, 3, 8, orviLUVToRGB_8u_C3R, luvPixel<Orv8u>(3), "orviLUVToRGB_8u_C3R");
    expectSplit<Orv8u>(3, 3, 8, orviLUVToBGR_8u_C3R, luvPixel<Orv8u>(3), "orviLUVToBGR_8u_C3R");
    expectSplit<Orv8u>(4, 4, 4, orviLUVToRGB_8u_AC4R, luvPixel<Orv8u>(4), "orviLUVToRGB_8u_AC4R");
    expectSplit<Orv16u>(3, 3, 4, orviLUVToRGB_16u_C3R, luvPixel<Orv16u>(3), "orviLUVToRGB_16u_C3R");
    expectSplit<Orv16u>(4, 4, 4, orviLUVToRGB_16u_AC4R, luvPixel<Orv16u>(4), "orviLUVToRGB_16u_AC4R");
    expectSplit<Orv16s>(3, 3, 4, orviLUVToRGB_16s_C3R, luvPixel<Orv16s>(3), "orviLUVToRGB_16s_C3R");
    expectSplit<Orv16s>(4, 4, 4, orviLUVToRGB_16s_AC4R, luvPixel<Orv16s>(4), "orviLUVToRGB_16s_AC4R");
    expectSplit<Orv32f>(3, 3, 8, orviLUVToRGB_32f_C3R, luvPixel<Orv32f>(3), "orviLUVToRGB_32f_C3R");
    expectSplit<Orv32f>(3, 3, 8, orviLUVToBGR_32f_C3R, luvPixel<Orv32f>(3), "orviLUVToBGR_32f_C3R");
    expectSplit<Orv32f>(4, 4, 0, orviLUVToRGB_32f_AC4R, luvPixel<Orv32f>(4), "orviLUVToRGB_32f_AC4R");
}

TEST(Luv, BlackWhiteAndChannelOrder)
{
    for (int w : {1, 8, 9}) {
        // Black: L 0, u and v at the stored neutral 97 and 136, in both forms.
        const auto black = convertRow<Orv8u>(w, 3, 3, {0, 0, 0}, orviRGBToLUV_8u_C3R);
        for (int i = 0; i < w; ++i)
            EXPECT_EQ(pixelOf(black, i, 3), (std::vector<Orv8u>{0, 97, 136}));
        // White: L 255 and the neutral chroma, to one step.
        const auto white = convertRow<Orv8u>(w, 3, 3, {255, 255, 255}, orviRGBToLUV_8u_C3R);
        for (int i = 0; i < w; ++i) {
            EXPECT_NEAR(white[3 * i], 255, 1);
            EXPECT_NEAR(white[3 * i + 1], 97, 1);
            EXPECT_NEAR(white[3 * i + 2], 136, 1);
        }
        const auto blackAc4 = convertRow<Orv8u>(w, 4, 4, {0, 0, 0, 0}, orviRGBToLUV_8u_AC4R);
        EXPECT_EQ(pixelOf(blackAc4, w - 1, 4), (std::vector<Orv8u>{0, 97, 136}));
    }
    // 16-bit black: the group form stores the neutral chroma, the tail 0.
    const auto b16 = convertRow<Orv16u>(9, 3, 3, {0, 0, 0}, orviRGBToLUV_16u_C3R);
    EXPECT_EQ(pixelOf(b16, 7, 3), (std::vector<Orv16u>{0, 24807, 35019}));
    EXPECT_EQ(pixelOf(b16, 8, 3), (std::vector<Orv16u>{0, 0, 0}));
    const auto b16s = convertRow<Orv16s>(9, 3, 3, {-32768, -32768, -32768}, orviRGBToLUV_16s_C3R);
    EXPECT_EQ(pixelOf(b16s, 7, 3), (std::vector<Orv16s>{-32768, 24807 - 32768, 35019 - 32768}));
    EXPECT_EQ(pixelOf(b16s, 8, 3), (std::vector<Orv16s>{-32768, -32768, -32768}));

    // 32f has no clamp: saturated green has a negative u; BGR swaps R and B.
    const auto green = convertRow<Orv32f>(9, 3, 3, {0.0f, 1.0f, 0.0f}, orviRGBToLUV_32f_C3R);
    EXPECT_LT(green[1], -50.0f);
    EXPECT_LT(green[3 * 8 + 1], -50.0f);
    for (int w : {8, 9}) {
        const auto rgb = convertRow<Orv32f>(w, 3, 3, {0.9f, 0.2f, 0.1f}, orviRGBToLUV_32f_C3R);
        const auto bgr = convertRow<Orv32f>(w, 3, 3, {0.1f, 0.2f, 0.9f}, orviBGRToLUV_32f_C3R);
        EXPECT_EQ(rgb, bgr);
        const auto luv = pixelOf(rgb, 0, 3);
        const auto back = convertRow<Orv32f>(w, 3, 3, luv, orviLUVToRGB_32f_C3R);
        const auto backBgr = convertRow<Orv32f>(w, 3, 3, luv, orviLUVToBGR_32f_C3R);
        for (int i = 0; i < w; ++i) {
            EXPECT_NEAR(back[3 * i], 0.9f, 2e-3f);
            EXPECT_NEAR(back[3 * i + 2], 0.1f, 2e-3f);
            EXPECT_EQ(back[3 * i], backBgr[3 * i + 2]);
            EXPECT_EQ(back[3 * i + 2], backBgr[3 * i]);
        }
    }
    // L of 0 gives black in every reverse member and both forms.
    for (int w : {1, 8, 9}) {
        EXPECT_EQ(convertRow<Orv8u>(w, 3, 3, {0, 97, 136}, orviLUVToRGB_8u_C3R), std::vector<Orv8u>(3 * w, 0));
        EXPECT_EQ(pixelOf(convertRow<Orv8u>(w, 4, 4, {0, 97, 136, 0}, orviLUVToRGB_8u_AC4R), w - 1, 4),
                  std::vector<Orv8u>(3, 0));
        EXPECT_EQ(convertRow<Orv16u>(w, 3, 3, {0, 24807, 35019}, orviLUVToRGB_16u_C3R), std::vector<Orv16u>(3 * w, 0));
        EXPECT_EQ(convertRow<Orv16s>(w, 3, 3, {-32768, 24807 - 32768, 35019 - 32768}, orviLUVToRGB_16s_C3R),
                  std::vector<Orv16s>(3 * w, -32768));
        // 32f: the group form lifts L of 0 to 9e-05 and does not clamp.
        for (float c : convertRow<Orv32f>(w, 3, 3, {0.0f, 0.0f, 0.0f}, orviLUVToRGB_32f_C3R))
            EXPECT_NEAR(c, 0.0f, 1e-6f);
        EXPECT_EQ(convertRow<Orv32f>(w, 4, 4, {0.0f, 0.0f, 0.0f, 0.0f}, orviLUVToRGB_32f_AC4R),
                  std::vector<Orv32f>(4 * w, 0.0f));
    }
}

TEST(Luv, DarkPixelsOfTheReverseGroupTakeTheCube)
{
    // L = 5 (below the change-over at 8), neutral: the tail's Y is 5 / 903.3,
    // 0.00554, the group's ((5 + 16) / 116)^3, 0.00593, and grey R = G = B
    // follows Y.
    const auto out = convertRow<Orv32f>(9, 3, 3, {5.0f, 0.0f, 0.0f}, orviLUVToRGB_32f_C3R);
    for (int k = 0; k < 3; ++k) {
        EXPECT_NEAR(out[k], std::pow(21.0 / 116, 3), 2e-5);
        EXPECT_NEAR(out[24 + k], 5 / 903.3, 2e-5);
    }
}

TEST(Luv, AlphaIsNeverWritten)
{
    expectAlphaKept<Orv8u>(orviRGBToLUV_8u_AC4R);
    expectAlphaKept<Orv16u>(orviRGBToLUV_16u_AC4R);
    expectAlphaKept<Orv16s>(orviRGBToLUV_16s_AC4R);
    expectAlphaKept<Orv32f>(orviRGBToLUV_32f_AC4R);
    expectAlphaKept<Orv8u>(orviLUVToRGB_8u_AC4R);
    expectAlphaKept<Orv16u>(orviLUVToRGB_16u_AC4R);
    expectAlphaKept<Orv16s>(orviLUVToRGB_16s_AC4R);
    expectAlphaKept<Orv32f>(orviLUVToRGB_32f_AC4R);
}

TEST(Luv, FrontChecksInOrderAndNothingWrittenOnFailure)
{
    for (auto f : {orviRGBToLUV_8u_C3R, orviBGRToLUV_8u_C3R, orviRGBToLUV_8u_AC4R, orviLUVToRGB_8u_C3R,
                   orviLUVToBGR_8u_C3R, orviLUVToRGB_8u_AC4R})
        expectFrontChecks<Orv8u>(f);
    for (auto f : {orviRGBToLUV_16u_C3R, orviRGBToLUV_16u_AC4R, orviLUVToRGB_16u_C3R, orviLUVToRGB_16u_AC4R})
        expectFrontChecks<Orv16u>(f);
    for (auto f : {orviRGBToLUV_16s_C3R, orviRGBToLUV_16s_AC4R, orviLUVToRGB_16s_C3R, orviLUVToRGB_16s_AC4R})
        expectFrontChecks<Orv16s>(f);
    for (auto f : {orviRGBToLUV_32f_C3R, orviBGRToLUV_32f_C3R, orviRGBToLUV_32f_AC4R, orviLUVToRGB_32f_C3R,
                   orviLUVToBGR_32f_C3R, orviLUVToRGB_32f_AC4R})
        expectFrontChecks<Orv32f>(f);
}

TEST(Luv, SixteenBitStepsRoundDownToWholeElements)
{
    std::vector<Orv16u> src(64), a(64, 0), b(64, 0);
    for (int i = 0; i < 64; ++i)
        src[i] = Orv16u(i * 1000);
    orviRGBToLUV_16u_C3R(src.data(), 13, a.data(), 15, {2, 2});
    orviRGBToLUV_16u_C3R(src.data(), 12, b.data(), 14, {2, 2});
    EXPECT_EQ(a, b);
    std::vector<Orv32f> fs(64), fa(64, 0), fb(64, 0);
    for (int i = 0; i < 64; ++i)
        fs[i] = float(i);
    orviLUVToRGB_32f_AC4R(fs.data(), 35, fa.data(), 39, {2, 2});
    orviLUVToRGB_32f_AC4R(fs.data(), 32, fb.data(), 36, {2, 2});
    EXPECT_EQ(fa, fb);
}

TEST(Luv, OutputDoesNotDependOnTheThreadCount)
{
    const std::initializer_list<int> counts = {1, 2, 3, 7};
    expectThreadIndependent<Orv16u>(3, orviRGBToLUV_16u_C3R, fillTypical<Orv16u>, counts);
    expectThreadIndependent<Orv16s>(4, orviRGBToLUV_16s_AC4R, fillTypical<Orv16s>, counts);
    expectThreadIndependent<Orv32f>(3, orviBGRToLUV_32f_C3R, fillTypical<Orv32f>, counts);
    expectThreadIndependent<Orv8u>(4, orviLUVToRGB_8u_AC4R, fillTypical<Orv8u>, counts);
    expectThreadIndependent<Orv16s>(3, orviLUVToRGB_16s_C3R, fillTypical<Orv16s>, counts);
}

// The caller's rounding mode holds in every thread of a region and is the
// caller's again after the call.
TEST(Luv, ThreadsRoundInTheCallersMode)
{
    const uint32_t saved = _mm_getcsr();
    const int w = 300, h = 40;
    GuardedImage src = makeImage(w, h, 6, 0, false, 0);
    std::mt19937 rng(4);
    fillTypical<Orv16s>(src, rng);
    auto run = [&](int threads) {
        ThreadCount n(threads);
        GuardedImage dst = makeImage(w, h, 6, 0, false, 0);
        EXPECT_EQ(orviRGBToLUV_16s_C3R(src.data<Orv16s>(), src.step(), dst.data<Orv16s>(), dst.step(), {w, h}),
                  orvStatusOk);
        return dst.pixels();
    };
    const auto nearest = run(1);
    for (uint32_t mode : {h9::kRoundDown, h9::kRoundUp, h9::kRoundTowardZero}) {
        const uint32_t word = (saved & ~h9::kRoundingMask) | mode;
        _mm_setcsr(word);
        const auto one = run(1);
        const auto seven = run(7);
        const uint32_t after = _mm_getcsr();
        _mm_setcsr(saved);
        EXPECT_EQ(after, word);
        EXPECT_NE(one, nearest) << mode;
        EXPECT_EQ(one, seven) << mode;
    }
}

// ---------------------------------------------------------------------------
// Accuracy: the worst difference per channel from the CIE formulas in double
// precision, on the stored scale, for each form. Printed for the record; the
// bounds only catch gross faults.

struct Luvd {
    double L, u, v;
};

Luvd luvOf(double r, double g, double b)
{
    const double X = 0.412453 * r + 0.357580 * g + 0.180423 * b;
    const double Y = 0.212671 * r + 0.715160 * g + 0.072169 * b;
    const double Z = 0.019334 * r + 0.119193 * g + 0.950227 * b;
    const double D = X + 15 * Y + 3 * Z;
    const double L = Y > 0.008856 ? 116 * std::cbrt(Y) - 16 : 903.3 * Y;
    if (D == 0)
        return {L, 0, 0};
    return {L, 13 * L * (4 * X / D - 0.197839), 13 * L * (9 * Y / D - 0.468342)};
}

void rgbOf(const Luvd& c, double (&rgb)[3])
{
    if (c.L <= 0) {
        rgb[0] = rgb[1] = rgb[2] = 0;
        return;
    }
    const double Y = c.L >= 7.9996247 ? std::pow((c.L + 16) / 116, 3) : c.L / 903.3;
    const double up = c.u / (13 * c.L) + 0.197839, vp = c.v / (13 * c.L) + 0.468342;
    const double X = Y * 9 * up / (4 * vp), Z = Y * (12 - 3 * up - 20 * vp) / (4 * vp);
    rgb[0] = 3.240479 * X - 1.537150 * Y - 0.498535 * Z;
    rgb[1] = -0.969256 * X + 1.875991 * Y + 0.041556 * Z;
    rgb[2] = 0.055648 * X - 0.204043 * Y + 1.057311 * Z;
}

// Stored scale of each type: value = (x + offset) * scale.
template <class T>
void luvScale(double (&off)[3], double (&scale)[3])
{
    const double full = std::is_same_v<T, Orv8u> ? 255.0 : 65535.0;
    off[0] = 0, off[1] = 134, off[2] = 140;
    scale[0] = full / 100, scale[1] = full / 354, scale[2] = full / 262;
    if constexpr (std::is_same_v<T, Orv32f>)
        off[1] = off[2] = 0, scale[0] = scale[1] = scale[2] = 1;
}

// Converts `n` pixels once as whole groups (one row) and once as tails (rows
// of group - 1 pixels), and hands both to `measure` (name, destination).
template <class T, class Measure>
void bothForms(int ch, int group, Fn<T> f, const std::vector<T>& src, Measure measure)
{
    const int n = int(src.size()) / ch / (group - 1) * (group - 1);
    std::vector<T> dst(src.size());
    ASSERT_EQ(f(src.data(), n * ch * int(sizeof(T)), dst.data(), n * ch * int(sizeof(T)), {n / group * group, 1}),
              orvStatusOk);
    measure("group", dst, n / group * group);
    const int w = group - 1, step = w * ch * int(sizeof(T));
    ASSERT_EQ(f(src.data(), step, dst.data(), step, {w, n / w}), orvStatusOk);
    measure("tail", dst, n);
}

template <class T>
void forwardAccuracy(const char* name, int group, Fn<T> f)
{
    std::mt19937 rng(77);
    const int n = 50400;
    const double full = std::is_same_v<T, Orv32f> ? 1.0 : std::is_same_v<T, Orv8u> ? 255.0 : 65535.0;
    std::vector<T> src(3 * n);
    for (auto& v : src)
        v = std::is_same_v<T, Orv32f> ? T(std::uniform_real_distribution<double>(0, 1)(rng)) : T(rng() % (int(full) + 1));
    double off[3], scale[3];
    luvScale<T>(off, scale);
    bothForms<T>(3, group, f, src, [&](const char* form, const std::vector<T>& dst, int count) {
        double worst[3] = {0, 0, 0};
        for (int i = 0; i < count; ++i) {
            const Luvd c = luvOf(src[3 * i] / full, src[3 * i + 1] / full, src[3 * i + 2] / full);
            const double ref[3] = {c.L, c.u, c.v};
            for (int k = 0; k < 3; ++k)
                worst[k] = std::max(worst[k], std::fabs(double(dst[3 * i + k]) - (ref[k] + off[k]) * scale[k]));
        }
        std::printf("  %-22s %-5s worst |error| L %.4g  u %.4g  v %.4g\n", name, form, worst[0], worst[1], worst[2]);
        const double bound = std::is_same_v<T, Orv32f> ? 0.05 : 2.0;
        for (double e : worst)
            EXPECT_LT(e, bound) << name << " " << form;
    });
}

template <class T>
void reverseAccuracy(const char* name, int group, Fn<T> f)
{
    std::mt19937 rng(78);
    const int n = 50400;
    const double full = std::is_same_v<T, Orv32f> ? 1.0 : std::is_same_v<T, Orv8u> ? 255.0 : 65535.0;
    double off[3], scale[3];
    luvScale<T>(off, scale);
    // Stored LUV of in-gamut colours with L of at least 1.
    std::vector<T> src;
    while (int(src.size()) < 3 * n) {
        double rgb[3];
        for (auto& v : rgb)
            v = std::uniform_real_distribution<double>(0, 1)(rng);
        const Luvd c = luvOf(rgb[0], rgb[1], rgb[2]);
        if (c.L < 1)
            continue;
        const double stored[3] = {(c.L + off[0]) * scale[0], (c.u + off[1]) * scale[1], (c.v + off[2]) * scale[2]};
        for (double s : stored)
            src.push_back(std::is_same_v<T, Orv32f> ? T(s) : T(std::lround(s)));
    }
    bothForms<T>(3, group, f, src, [&](const char* form, const std::vector<T>& dst, int count) {
        double worst[3] = {0, 0, 0};
        for (int i = 0; i < count; ++i) {
            const Luvd c = {double(src[3 * i]) / scale[0] - off[0], double(src[3 * i + 1]) / scale[1] - off[1],
                            double(src[3 * i + 2]) / scale[2] - off[2]};
            double rgb[3];
            rgbOf(c, rgb);
            for (int k = 0; k < 3; ++k) {
                const double ref = std::clamp(rgb[k], 0.0, 1.0) * full;
                const double got = std::clamp(double(dst[3 * i + k]), 0.0, full);
                worst[k] = std::max(worst[k], std::fabs(got - ref));
            }
        }
        std::printf("  %-22s %-5s worst |error| R %.4g  G %.4g  B %.4g\n", name, form, worst[0], worst[1], worst[2]);
        const double bound = std::is_same_v<T, Orv32f> ? 0.01 : full / 100;
        for (double e : worst)
            EXPECT_LT(e, bound) << name << " " << form;
    });
}

TEST(Luv, AccuracyAgainstTheDoubleFormula)
{
    std::printf("  stored units (8u: 0..255, 16u: 0..65535, 32f: L 0..100 and RGB 0..1)\n");
    forwardAccuracy<Orv8u>("RGBToLUV_8u_C3R", 8, orviRGBToLUV_8u_C3R);
    forwardAccuracy<Orv16u>("RGBToLUV_16u_C3R", 4, orviRGBToLUV_16u_C3R);
    forwardAccuracy<Orv32f>("RGBToLUV_32f_C3R", 8, orviRGBToLUV_32f_C3R);
    reverseAccuracy<Orv8u>("LUVToRGB_8u_C3R", 8, orviLUVToRGB_8u_C3R);
    reverseAccuracy<Orv16u>("LUVToRGB_16u_C3R", 4, orviLUVToRGB_16u_C3R);
    reverseAccuracy<Orv32f>("LUVToRGB_32f_C3R", 8, orviLUVToRGB_32f_C3R);
}

}  // namespace
