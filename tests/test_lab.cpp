// RGB and CIE Lab: vector paths against scalar forms, where rows split,
// known values, the cut of 32f input at 1.0, checks, and the accuracy against
// the CIE formulas in double precision.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

#include "support/typed.h"

using namespace orvtest;

namespace {

// Stored Lab of 32f: L 0..100, a and b about -128..127, some beyond.
void fillLab32f(GuardedImage& img, std::mt19937& rng)
{
    const int n = img.rowBytes() / 4;
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < n; ++x) {
            const double lo[3] = {-2, -130, -130}, hi[3] = {102, 130, 130};
            img.row<float>(y)[x] = float(std::uniform_real_distribution<double>(lo[x % 3], hi[x % 3])(rng));
        }
}

TEST(Lab, VectorPathsMatchScalarForms)
{
    sweepTyped<Orv8u>(3, 3, orviRGBToLab_8u_C3R);
    sweepTyped<Orv8u>(3, 3, orviBGRToLab_8u_C3R);
    sweepTyped<Orv8u, Orv16u>(3, 3, orviBGRToLab_8u16u_C3R);
    sweepTyped<Orv32f>(3, 3, orviRGBToLab_32f_C3R);
    sweepTyped<Orv32f>(3, 3, orviBGRToLab_32f_C3R);
    sweepTyped<Orv8u>(3, 3, orviLabToRGB_8u_C3R);
    sweepTyped<Orv8u>(3, 3, orviLabToBGR_8u_C3R);
    sweepTyped<Orv16u, Orv8u>(3, 3, orviLabToBGR_16u8u_C3R);
    sweepTyped<Orv32f>(3, 3, orviLabToRGB_32f_C3R, fillLab32f);
    sweepTyped<Orv32f>(3, 3, orviLabToBGR_32f_C3R, fillLab32f);
}

template <class T>
auto anyPixel()
{
    return [](std::mt19937& rng) {
        std::vector<T> p(3);
        for (auto& v : p)
            v = std::is_floating_point_v<T> ? T(std::uniform_real_distribution<double>(0, 1)(rng)) : T(rng());
        return p;
    };
}

TEST(Lab, RowsSplitBetweenGroupAndTail)
{
    // In 8u the forms differ in fewer than ten colours in a million.
    expectSplit<Orv8u>(3, 3, 8, orviRGBToLab_8u_C3R, anyPixel<Orv8u>(), "orviRGBToLab_8u_C3R", {181, 64, 8});
    expectSplit<Orv8u>(3, 3, 8, orviBGRToLab_8u_C3R, anyPixel<Orv8u>(), "orviBGRToLab_8u_C3R", {8, 64, 181});
    expectSplit<Orv8u, Orv16u>(3, 3, 4, orviBGRToLab_8u16u_C3R, anyPixel<Orv8u>(), "orviBGRToLab_8u16u_C3R");
    expectSplit<Orv32f>(3, 3, 8, orviRGBToLab_32f_C3R, anyPixel<Orv32f>(), "orviRGBToLab_32f_C3R");
    expectSplit<Orv32f>(3, 3, 8, orviBGRToLab_32f_C3R, anyPixel<Orv32f>(), "orviBGRToLab_32f_C3R");
    expectSplit<Orv8u>(3, 3, 8, orviLabToRGB_8u_C3R, anyPixel<Orv8u>(), "orviLabToRGB_8u_C3R", {147, 169, 1});
    expectSplit<Orv8u>(3, 3, 8, orviLabToBGR_8u_C3R, anyPixel<Orv8u>(), "orviLabToBGR_8u_C3R", {147, 169, 1});
    expectSplit<Orv16u, Orv8u>(3, 3, 4, orviLabToBGR_16u8u_C3R, anyPixel<Orv16u>(), "orviLabToBGR_16u8u_C3R",
                               {43987, 46000, 12659});
    // 32f Lab to RGB has one form for every pixel.
    expectSplit<Orv32f>(3, 3, 0, orviLabToRGB_32f_C3R, anyPixel<Orv32f>(), "orviLabToRGB_32f_C3R");
}

TEST(Lab, KnownValues)
{
    for (int w : {1, 8, 9}) {
        const auto black = convertRow<Orv8u>(w, 3, 3, {0, 0, 0}, orviRGBToLab_8u_C3R);
        for (int i = 0; i < w; ++i)
            EXPECT_EQ(pixelOf(black, i, 3), (std::vector<Orv8u>{0, 128, 128}));
        const auto white = convertRow<Orv8u>(w, 3, 3, {255, 255, 255}, orviRGBToLab_8u_C3R);
        for (int i = 0; i < w; ++i) {
            EXPECT_EQ(white[3 * i], 255);
            EXPECT_NEAR(white[3 * i + 1], 128, 1);
            EXPECT_NEAR(white[3 * i + 2], 128, 1);
        }
        // 16-bit Lab of white: L at the top, neutral a and b at 128 * 255.
        const auto white16 = convertRow<Orv8u, Orv16u>(w, 3, 3, {255, 255, 255}, orviBGRToLab_8u16u_C3R);
        EXPECT_GE(white16[0], 65500);
        EXPECT_NEAR(white16[1], 32640, 300);
        // White comes back; black as 1, the cube of 16 / 116 times 255 (no
        // linear segment in the reverse).
        EXPECT_EQ(convertRow<Orv8u>(w, 3, 3, {0, 128, 128}, orviLabToRGB_8u_C3R), std::vector<Orv8u>(3 * w, 1));
        for (Orv8u c : convertRow<Orv8u>(w, 3, 3, {255, 128, 128}, orviLabToBGR_8u_C3R))
            EXPECT_NEAR(c, 255, 1);
    }
    // 32f values above 1.0 are cut to 1.0 before the table: any brighter
    // grey converts as the same white.
    for (int w : {1, 8}) {
        const auto a = convertRow<Orv32f>(w, 3, 3, {1.2f, 1.2f, 1.2f}, orviRGBToLab_32f_C3R);
        const auto b = convertRow<Orv32f>(w, 3, 3, {7.0f, 3.0f, 1.5f}, orviRGBToLab_32f_C3R);
        EXPECT_EQ(a, b);
        EXPECT_NEAR(a[0], 100.0f, 0.01f);
    }
    // The reverse has no clamp and no linear segment: an out-of-gamut
    // colour leaves 0..1, and L of 1 comes back as the cube of 17 / 116.
    for (int w : {1, 8}) {
        const auto rgb = convertRow<Orv32f>(w, 3, 3, {50.0f, 100.0f, -100.0f}, orviLabToRGB_32f_C3R);
        EXPECT_LT(rgb[1], 0.0f);
        EXPECT_GT(rgb[2], 1.0f);
        const auto dark = convertRow<Orv32f>(w, 3, 3, {1.0f, 0.0f, 0.0f}, orviLabToBGR_32f_C3R);
        EXPECT_NEAR(dark[1], std::pow(17.0 / 116, 3), 1e-5);
    }
    // The channel order flag.
    for (int w : {1, 8}) {
        const auto rgb = convertRow<Orv8u>(w, 3, 3, {200, 40, 10}, orviRGBToLab_8u_C3R);
        EXPECT_EQ(rgb, convertRow<Orv8u>(w, 3, 3, {10, 40, 200}, orviBGRToLab_8u_C3R));
        const auto back = convertRow<Orv8u>(w, 3, 3, {Orv8u(rgb[0]), Orv8u(rgb[1]), Orv8u(rgb[2])}, orviLabToRGB_8u_C3R);
        const auto backBgr = convertRow<Orv8u>(w, 3, 3, {Orv8u(rgb[0]), Orv8u(rgb[1]), Orv8u(rgb[2])}, orviLabToBGR_8u_C3R);
        EXPECT_NEAR(back[0], 200, 3);
        EXPECT_NEAR(back[2], 10, 3);
        EXPECT_EQ(back[0], backBgr[2]);
    }
}

TEST(Lab, FrontChecksInOrderAndNothingWrittenOnFailure)
{
    for (auto f : {orviRGBToLab_8u_C3R, orviBGRToLab_8u_C3R, orviLabToRGB_8u_C3R, orviLabToBGR_8u_C3R})
        expectFrontChecks<Orv8u>(f);
    for (auto f : {orviRGBToLab_32f_C3R, orviBGRToLab_32f_C3R, orviLabToRGB_32f_C3R, orviLabToBGR_32f_C3R})
        expectFrontChecks<Orv32f>(f);
    expectFrontChecks<Orv8u, Orv16u>(orviBGRToLab_8u16u_C3R);
    expectFrontChecks<Orv16u, Orv8u>(orviLabToBGR_16u8u_C3R);
}

// ---------------------------------------------------------------------------
// Accuracy, as for LUV: worst difference per channel from the CIE formulas
// in double precision, on the stored scale.

double fOf(double t) { return t > 0.008856 ? std::cbrt(t) : 7.787 * t + 16.0 / 116; }
double fInv(double f) { return f > 6.0 / 29 ? f * f * f : (f - 16.0 / 116) / 7.787; }

void labOf(const double (&rgb)[3], double (&lab)[3])
{
    const double X = 0.412453 * rgb[0] + 0.357580 * rgb[1] + 0.180423 * rgb[2];
    const double Y = 0.212671 * rgb[0] + 0.715160 * rgb[1] + 0.072169 * rgb[2];
    const double Z = 0.019334 * rgb[0] + 0.119193 * rgb[1] + 0.950227 * rgb[2];
    const double fx = fOf(X / 0.950456), fy = fOf(Y), fz = fOf(Z / 1.088754);
    lab[0] = Y > 0.008856 ? 116 * std::cbrt(Y) - 16 : 903.3 * Y;
    lab[1] = 500 * (fx - fy);
    lab[2] = 200 * (fy - fz);
}

void rgbOf(const double (&lab)[3], double (&rgb)[3])
{
    const double P = (lab[0] + 16) / 116;
    const double X = 0.950456 * fInv(P + lab[1] / 500), Y = fInv(P), Z = 1.088754 * fInv(P - lab[2] / 200);
    rgb[0] = 3.240479 * X - 1.537150 * Y - 0.498535 * Z;
    rgb[1] = -0.969256 * X + 1.875991 * Y + 0.041556 * Z;
    rgb[2] = 0.055648 * X - 0.204043 * Y + 1.057311 * Z;
}

// Stored Lab = (value + offset) * scale.
template <class T>
void labScale(double (&off)[3], double (&scale)[3])
{
    const bool f = std::is_same_v<T, Orv32f>, w = std::is_same_v<T, Orv16u>;
    off[0] = 0, off[1] = off[2] = f ? 0 : 128;
    scale[0] = f ? 1 : w ? 655.35 : 2.55;
    scale[1] = scale[2] = w ? 255 : 1;
}

// Converts the pixels as whole groups (one row) and as tails (rows of
// group - 1 pixels) and prints the worst error of each channel.
template <class S, class D, class Ref>
void measure(const char* name, int group, TypedFn<S, D> f, const std::vector<S>& src, Ref ref, double bound)
{
    const int n = int(src.size()) / 3 / (group - 1) / group * (group - 1) * group;
    std::vector<D> dst(src.size());
    for (int form = 0; form < 2; ++form) {
        const int w = form == 0 ? n : group - 1;
        ASSERT_EQ(f(src.data(), w * 3 * int(sizeof(S)), dst.data(), w * 3 * int(sizeof(D)), {w, n / w}), orvStatusOk);
        double worst[3] = {0, 0, 0};
        for (int i = 0; i < n; ++i) {
            double r[3];
            ref(&src[3 * i], r);
            for (int k = 0; k < 3; ++k)
                worst[k] = std::max(worst[k], std::fabs(double(dst[3 * i + k]) - r[k]));
        }
        std::printf("  %-22s %-5s worst |error| %.4g  %.4g  %.4g\n", name, form == 0 ? "group" : "tail", worst[0],
                    worst[1], worst[2]);
        for (double e : worst)
            EXPECT_LT(e, bound) << name;
    }
}

template <class S, class D>
void forwardAccuracy(const char* name, int group, TypedFn<S, D> f, bool bgr)
{
    std::mt19937 rng(77);
    const double full = std::is_same_v<S, Orv32f> ? 1.0 : 255.0;
    std::vector<S> src(3 * 50400);
    for (auto& v : src)
        v = std::is_same_v<S, Orv32f> ? S(std::uniform_real_distribution<double>(0, 1)(rng)) : S(rng() % 256);
    double off[3], scale[3];
    labScale<D>(off, scale);
    measure<S, D>(name, group, f, src, [&](const S* p, double (&r)[3]) {
        const double rgb[3] = {p[bgr ? 2 : 0] / full, p[1] / full, p[bgr ? 0 : 2] / full};
        labOf(rgb, r);
        for (int k = 0; k < 3; ++k)
            r[k] = (r[k] + off[k]) * scale[k];
    }, std::is_same_v<D, Orv32f> ? 0.01 : std::is_same_v<D, Orv16u> ? 300 : 1.5);
}

template <class S, class D>
void reverseAccuracy(const char* name, int group, TypedFn<S, D> f, bool bgr)
{
    std::mt19937 rng(78);
    const double full = std::is_same_v<D, Orv32f> ? 1.0 : 255.0;
    double off[3], scale[3];
    labScale<S>(off, scale);
    std::vector<S> src;
    while (src.size() < 3 * 50400) {
        double rgb[3], lab[3];
        for (auto& v : rgb)
            v = std::uniform_real_distribution<double>(0, 1)(rng);
        labOf(rgb, lab);
        if (lab[0] < 8)  // the reverse has no linear segment; darker pixels measure that, not the arithmetic
            continue;
        for (int k = 0; k < 3; ++k) {
            const double s = (lab[k] + off[k]) * scale[k];
            src.push_back(std::is_same_v<S, Orv32f> ? S(s) : S(std::lround(s)));
        }
    }
    measure<S, D>(name, group, f, src, [&](const S* p, double (&r)[3]) {
        double lab[3], rgb[3];
        for (int k = 0; k < 3; ++k)
            lab[k] = p[k] / scale[k] - off[k];
        rgbOf(lab, rgb);
        for (int k = 0; k < 3; ++k) {
            const double v = rgb[bgr ? 2 - k : k] * full;
            r[k] = std::is_same_v<D, Orv32f> ? v : std::clamp(v, 0.0, full);
        }
    }, std::is_same_v<D, Orv32f> ? 0.01 : 1.5);
}

TEST(Lab, AccuracyAgainstTheDoubleFormula)
{
    std::printf("  stored units (8u: 0..255, 16u: 0..65535, 32f: L 0..100 and RGB 0..1)\n");
    forwardAccuracy<Orv8u, Orv8u>("RGBToLab_8u_C3R", 8, orviRGBToLab_8u_C3R, false);
    forwardAccuracy<Orv8u, Orv16u>("BGRToLab_8u16u_C3R", 4, orviBGRToLab_8u16u_C3R, true);
    forwardAccuracy<Orv32f, Orv32f>("RGBToLab_32f_C3R", 8, orviRGBToLab_32f_C3R, false);
    reverseAccuracy<Orv8u, Orv8u>("LabToRGB_8u_C3R", 8, orviLabToRGB_8u_C3R, false);
    reverseAccuracy<Orv16u, Orv8u>("LabToBGR_16u8u_C3R", 4, orviLabToBGR_16u8u_C3R, true);
    reverseAccuracy<Orv32f, Orv32f>("LabToRGB_32f_C3R", 8, orviLabToRGB_32f_C3R, false);
}

}  // namespace
