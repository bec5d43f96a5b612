// RGB and XYZ: vector paths against scalar forms, where rows split between
// group and tail forms, the float evaluation order, clamps, offsets, alpha,
// steps, front checks and thread independence.
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "support/typed.h"

using namespace orvtest;

namespace {

template <class T>
using Fn = TypedFn<T>;

template <class T>
void sweep(int ch, Fn<T> f)
{
    sweepTyped<T>(ch, ch, f);
}

TEST(Xyz, VectorPathsMatchScalarForms)
{
    sweep<Orv8u>(3, orviRGBToXYZ_8u_C3R);
    sweep<Orv8u>(4, orviRGBToXYZ_8u_AC4R);
    sweep<Orv16u>(3, orviRGBToXYZ_16u_C3R);
    sweep<Orv16u>(4, orviRGBToXYZ_16u_AC4R);
    sweep<Orv16s>(3, orviRGBToXYZ_16s_C3R);
    sweep<Orv16s>(4, orviRGBToXYZ_16s_AC4R);
    sweep<Orv32f>(3, orviRGBToXYZ_32f_C3R);
    sweep<Orv32f>(4, orviRGBToXYZ_32f_AC4R);
    sweep<Orv8u>(3, orviXYZToRGB_8u_C3R);
    sweep<Orv8u>(4, orviXYZToRGB_8u_AC4R);
    sweep<Orv16u>(3, orviXYZToRGB_16u_C3R);
    sweep<Orv16u>(4, orviXYZToRGB_16u_AC4R);
    sweep<Orv16s>(3, orviXYZToRGB_16s_C3R);
    sweep<Orv16s>(4, orviXYZToRGB_16s_AC4R);
    sweep<Orv32f>(3, orviXYZToRGB_32f_C3R);
    sweep<Orv32f>(4, orviXYZToRGB_32f_AC4R);
}

// One row of `width` copies of a pixel.
template <class T>
std::vector<T> row(int width, int ch, std::vector<T> px, Fn<T> f)
{
    return convertRow<T>(width, ch, ch, px, f);
}

TEST(Xyz, EightBitGroupsAndTail)
{
    // White: 242 255 255 by the group matrix, 242 254 255 by the tail matrix.
    const std::vector<Orv8u> group = {242, 255, 255}, tail = {242, 254, 255};
    auto pixel = [](const std::vector<Orv8u>& v, int i, int ch) {
        return std::vector<Orv8u>(v.begin() + i * ch, v.begin() + i * ch + 3);
    };
    for (int w : {1, 7, 8, 9, 16, 23}) {
        const auto v = row<Orv8u>(w, 3, {255, 255, 255}, orviRGBToXYZ_8u_C3R);
        for (int i = 0; i < w; ++i)
            EXPECT_EQ(pixel(v, i, 3), i < w / 8 * 8 ? group : tail) << w << " " << i;
    }
    for (int w : {1, 3, 4, 5, 8, 11}) {
        const auto v = row<Orv8u>(w, 4, {255, 255, 255, 9}, orviRGBToXYZ_8u_AC4R);
        for (int i = 0; i < w; ++i)
            EXPECT_EQ(pixel(v, i, 4), i < w / 4 * 4 ? group : tail) << w << " " << i;
    }
    // Floor, not rounding: (1, 0, 0) is 13515 >> 15 = 0 and 27030 >> 16 = 0.
    EXPECT_EQ(row<Orv8u>(9, 3, {1, 0, 0}, orviRGBToXYZ_8u_C3R), std::vector<Orv8u>(27, 0));
    // XYZ to RGB: the group matrix with 13 fraction bits, the tail matrix
    // with 16, both floored and clamped.
    auto ref = [](const int32_t (*m)[3], int shift, int x, int y, int z) {
        std::vector<Orv8u> out;
        for (int o = 0; o < 3; ++o) {
            const int32_t v = (m[o][0] * x + m[o][1] * y + m[o][2] * z) >> shift;
            out.push_back(Orv8u(v < 0 ? 0 : v > 255 ? 255 : v));
        }
        return out;
    };
    const int32_t g[3][3] = {{26546, -12591, -4083}, {-7939, 15368, 340}, {456, -1671, 8661}};
    const int32_t t[3][3] = {{212368, -100738, -32671}, {-63521, 122944, 2723}, {3646, -13372, 69291}};
    for (auto [x, y, z] : {std::tuple{100, 100, 100}, std::tuple{200, 50, 10}, std::tuple{10, 200, 250}}) {
        const auto v = row<Orv8u>(9, 3, {Orv8u(x), Orv8u(y), Orv8u(z)}, orviXYZToRGB_8u_C3R);
        EXPECT_EQ(pixel(v, 0, 3), ref(g, 13, x, y, z));
        EXPECT_EQ(pixel(v, 8, 3), ref(t, 16, x, y, z));
    }
    const int32_t xg[3][3] = {{13515, 11717, 5912}, {6969, 23434, 2365}, {634, 3906, 31137}};
    const int32_t xt[3][3] = {{27030, 23434, 11824}, {13937, 46868, 4729}, {1267, 7811, 62274}};
    std::mt19937 rng(6);
    for (int k = 0; k < 5000; ++k) {
        const int r = int(rng() % 256), gg = int(rng() % 256), b = int(rng() % 256);
        const auto v = row<Orv8u>(9, 3, {Orv8u(r), Orv8u(gg), Orv8u(b)}, orviRGBToXYZ_8u_C3R);
        ASSERT_EQ(pixel(v, 7, 3), ref(xg, 15, r, gg, b));
        ASSERT_EQ(pixel(v, 8, 3), ref(xt, 16, r, gg, b));
        const auto u = row<Orv8u>(5, 4, {Orv8u(r), Orv8u(gg), Orv8u(b), 0}, orviXYZToRGB_8u_AC4R);
        ASSERT_EQ(pixel(u, 3, 4), ref(g, 13, r, gg, b));
        ASSERT_EQ(pixel(u, 4, 4), ref(t, 16, r, gg, b));
    }
    // Black stays black.
    for (auto f : {orviRGBToXYZ_8u_C3R, orviXYZToRGB_8u_C3R})
        EXPECT_EQ(row<Orv8u>(9, 3, {0, 0, 0}, f), std::vector<Orv8u>(27, 0));
}

// Fused and unfused evaluation, written out independently of the library.
float fusedRef(const float* c, float a, float b, float e)
{
    return std::fma(c[2], e, std::fma(c[0], a, c[1] * b));
}
float plainRef(const float* c, float a, float b, float e)
{
    const float ab = c[0] * a + c[1] * b;
    return ab + c[2] * e;
}

const float kToXyz[3][3] = {{0.412453f, 0.357580f, 0.180423f},
                            {0.212671f, 0.715160f, 0.072169f},
                            {0.019334f, 0.119193f, 0.950227f}};
const float kToRgb[3][3] = {{3.240479f, -1.537150f, -0.498535f},
                            {-0.969256f, 1.875991f, 0.041556f},
                            {0.055648f, -0.204043f, 1.057311f}};

TEST(Xyz, FloatOrderFollowsGroupsOfFour)
{
    // Random 16u pixels until the two orders truncate to different integers
    // for X; then a row of 7 such pixels has 4 fused and 3 unfused results.
    std::mt19937 rng(2);
    std::vector<Orv16u> px(3);
    float fx = 0, px_ = 0;
    do {
        for (auto& v : px)
            v = Orv16u(rng());
        fx = fusedRef(kToXyz[0], px[0], px[1], px[2]);
        px_ = plainRef(kToXyz[0], px[0], px[1], px[2]);
    } while (std::trunc(fx) == std::trunc(px_));
    const auto out = row<Orv16u>(7, 3, px, orviRGBToXYZ_16u_C3R);
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(out[3 * i], Orv16u(i < 4 ? std::trunc(fx) : std::trunc(px_))) << i;

    // Every coefficient, fused, in both directions (widths 4 and 1).
    auto clamp01 = [](float v) { return v < 0.0f ? 0.0f : v > 1.0f ? 1.0f : v; };
    for (int k = 0; k < 100; ++k) {
        std::vector<float> p(3);
        for (auto& v : p)
            v = std::uniform_real_distribution<float>(0, 1)(rng);
        const auto x = row<Orv32f>(4, 3, p, orviRGBToXYZ_32f_C3R);
        const auto r = row<Orv32f>(1, 3, p, orviXYZToRGB_32f_C3R);
        for (int o = 0; o < 3; ++o) {
            const float e = fusedRef(kToXyz[o], p[0], p[1], p[2]);
            ASSERT_EQ(x[9 + o], o == 2 ? clamp01(e) : e);
            ASSERT_EQ(r[o], clamp01(fusedRef(kToRgb[o], p[0], p[1], p[2])));
        }
    }
    // 32f RGB to XYZ keeps the split; XYZ to RGB is fused everywhere.
    std::vector<float> f(3);
    do {
        for (auto& v : f)
            v = std::uniform_real_distribution<float>(0, 1)(rng);
    } while (fusedRef(kToXyz[1], f[0], f[1], f[2]) == plainRef(kToXyz[1], f[0], f[1], f[2]));
    const auto xyz = row<Orv32f>(5, 3, f, orviRGBToXYZ_32f_C3R);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(xyz[3 * i + 1], i < 4 ? fusedRef(kToXyz[1], f[0], f[1], f[2]) : plainRef(kToXyz[1], f[0], f[1], f[2]));
    do {
        for (auto& v : f)
            v = std::uniform_real_distribution<float>(0, 0.3f)(rng);
    } while (fusedRef(kToRgb[1], f[0], f[1], f[2]) == plainRef(kToRgb[1], f[0], f[1], f[2]) ||
             fusedRef(kToRgb[1], f[0], f[1], f[2]) <= 0.0f || fusedRef(kToRgb[1], f[0], f[1], f[2]) >= 1.0f);
    const auto rgb = row<Orv32f>(5, 3, f, orviXYZToRGB_32f_C3R);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(rgb[3 * i + 1], fusedRef(kToRgb[1], f[0], f[1], f[2])) << i;
}

TEST(Xyz, SixteenBitOffsetsAndClamps)
{
    // 16s black is -32768 in and out; 16u white clamps Z at 65535.
    for (int w : {3, 4, 9}) {
        for (auto f : {orviRGBToXYZ_16s_C3R, orviXYZToRGB_16s_C3R})
            EXPECT_EQ(row<Orv16s>(w, 3, {-32768, -32768, -32768}, f), std::vector<Orv16s>(3 * w, -32768));
        const auto white = row<Orv16u>(w, 3, {65535, 65535, 65535}, orviRGBToXYZ_16u_C3R);
        EXPECT_EQ(white[2], 65535);
        EXPECT_GE(white[1], 65534);
        EXPECT_GE(white[0], 62287);
        EXPECT_LE(white[0], 62288);
        // Pure X: R is about 3.24 X (clamped), G negative (0), B small.
        const auto rgb = row<Orv16u>(w, 3, {30000, 0, 0}, orviXYZToRGB_16u_C3R);
        EXPECT_EQ(rgb[0], 65535);
        EXPECT_EQ(rgb[1], 0);
        EXPECT_EQ(rgb[2], Orv16u(std::trunc(0.055648f * 30000.0f)));
        // 16s works around -32768: the same pixel offset by 32768 gives the
        // same result offset by 32768.
        const auto s = row<Orv16s>(w, 3, {-2768, -32768, -32768}, orviXYZToRGB_16s_C3R);
        EXPECT_EQ(s[0], 32767);
        EXPECT_EQ(s[1], -32768);
        EXPECT_EQ(s[2], Orv16s(rgb[2] - 32768));
    }
}

TEST(Xyz, FloatClampsAndNaN)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (int w : {3, 4, 5}) {
        const auto white = row<Orv32f>(w, 3, {1.0f, 1.0f, 1.0f}, orviRGBToXYZ_32f_C3R);
        EXPECT_NEAR(white[0], 0.950456f, 1e-6f);
        EXPECT_NEAR(white[1], 1.0f, 1e-6f);
        EXPECT_EQ(white[2], 1.0f);
        const auto hot = row<Orv32f>(w, 3, {2.0f, 2.0f, 2.0f}, orviRGBToXYZ_32f_C3R);
        EXPECT_GT(hot[0], 1.0f);
        EXPECT_GT(hot[1], 1.0f);
        EXPECT_EQ(hot[2], 1.0f);
        const auto cold = row<Orv32f>(w, 3, {-1.0f, -1.0f, -1.0f}, orviRGBToXYZ_32f_C3R);
        EXPECT_LT(cold[0], 0.0f);
        EXPECT_EQ(cold[2], 0.0f);
        EXPECT_FALSE(std::signbit(cold[2]));
        // NaN: X and Y pass it, Z becomes 0.
        const auto n = row<Orv32f>(w, 4, {nan, 0.5f, 0.5f, 0.0f}, orviRGBToXYZ_32f_AC4R);
        for (int i = 0; i < w; ++i) {
            EXPECT_TRUE(std::isnan(n[4 * i]));
            EXPECT_TRUE(std::isnan(n[4 * i + 1]));
            EXPECT_EQ(n[4 * i + 2], 0.0f);
        }
        // XYZ to RGB: out-of-gamut into 0..1, NaN passes through.
        const auto rgb = row<Orv32f>(w, 3, {0.9f, 0.1f, 0.0f}, orviXYZToRGB_32f_C3R);
        EXPECT_EQ(rgb[0], 1.0f);
        EXPECT_EQ(rgb[1], 0.0f);
        EXPECT_GE(rgb[2], 0.0f);
        const auto nrgb = row<Orv32f>(w, 3, {0.5f, nan, 0.5f}, orviXYZToRGB_32f_C3R);
        for (int i = 0; i < 3 * w; ++i)
            EXPECT_TRUE(std::isnan(nrgb[i]));
        for (auto f : {orviRGBToXYZ_32f_C3R, orviXYZToRGB_32f_C3R})
            EXPECT_EQ(row<Orv32f>(w, 3, {0.0f, 0.0f, 0.0f}, f), std::vector<Orv32f>(3 * w, 0.0f));
    }
}

TEST(Xyz, AlphaIsNeverWritten)
{
    expectAlphaKept<Orv8u>(orviRGBToXYZ_8u_AC4R);
    expectAlphaKept<Orv8u>(orviXYZToRGB_8u_AC4R);
    expectAlphaKept<Orv16u>(orviRGBToXYZ_16u_AC4R);
    expectAlphaKept<Orv16u>(orviXYZToRGB_16u_AC4R);
    expectAlphaKept<Orv16s>(orviRGBToXYZ_16s_AC4R);
    expectAlphaKept<Orv16s>(orviXYZToRGB_16s_AC4R);
    expectAlphaKept<Orv32f>(orviRGBToXYZ_32f_AC4R);
    expectAlphaKept<Orv32f>(orviXYZToRGB_32f_AC4R);
}

TEST(Xyz, StepsRoundDownToWholeElements)
{
    std::vector<Orv16u> src(64), a(64, 0), b(64, 0);
    for (int i = 0; i < 64; ++i)
        src[i] = Orv16u(i * 1000);
    orviRGBToXYZ_16u_C3R(src.data(), 13, a.data(), 15, {2, 2});
    orviRGBToXYZ_16u_C3R(src.data(), 12, b.data(), 14, {2, 2});
    EXPECT_EQ(a, b);
    std::vector<Orv32f> fs(64), fa(64, 0), fb(64, 0);
    for (int i = 0; i < 64; ++i)
        fs[i] = float(i) / 64;
    orviXYZToRGB_32f_AC4R(fs.data(), 35, fa.data(), 39, {2, 2});
    orviXYZToRGB_32f_AC4R(fs.data(), 32, fb.data(), 36, {2, 2});
    EXPECT_EQ(fa, fb);
}

TEST(Xyz, FrontChecksInOrderAndNothingWrittenOnFailure)
{
    for (auto fn : {orviRGBToXYZ_8u_C3R, orviRGBToXYZ_8u_AC4R, orviXYZToRGB_8u_C3R, orviXYZToRGB_8u_AC4R})
        expectFrontChecks<Orv8u>(fn);
    for (auto fn : {orviRGBToXYZ_16u_C3R, orviRGBToXYZ_16u_AC4R, orviXYZToRGB_16u_C3R, orviXYZToRGB_16u_AC4R})
        expectFrontChecks<Orv16u>(fn);
    for (auto fn : {orviRGBToXYZ_16s_C3R, orviRGBToXYZ_16s_AC4R, orviXYZToRGB_16s_C3R, orviXYZToRGB_16s_AC4R})
        expectFrontChecks<Orv16s>(fn);
    for (auto fn : {orviRGBToXYZ_32f_C3R, orviRGBToXYZ_32f_AC4R, orviXYZToRGB_32f_C3R, orviXYZToRGB_32f_AC4R})
        expectFrontChecks<Orv32f>(fn);
}

TEST(Xyz, OutputDoesNotDependOnTheThreadCount)
{
    expectThreadIndependent<Orv8u>(3, orviRGBToXYZ_8u_C3R);
    expectThreadIndependent<Orv8u>(4, orviXYZToRGB_8u_AC4R);
    expectThreadIndependent<Orv16s>(3, orviXYZToRGB_16s_C3R);
    expectThreadIndependent<Orv32f>(4, orviRGBToXYZ_32f_AC4R);
    expectThreadIndependent<Orv32f>(3, orviXYZToRGB_32f_C3R);
}

}  // namespace
