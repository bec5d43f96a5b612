// RGB to HSV and back: vector paths against scalar forms, where rows split,
// sextant boundaries and ties, the full-scale hue, gray pixels, the exact
// 16u form, alpha, checks and thread independence.
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "support/pixelrow.h"
#include "support/planes.h"

using namespace orvtest;

namespace {

using F = Fault;
using Bytes = std::vector<uint8_t>;

const std::vector<Conversion>& conversions()
{
    const std::vector<F> rect = {F::SrcNull, F::DstNull, F::Width, F::Height};
    static const std::vector<Conversion> all = {
        {"RGBToHSV_8u_C3R", {1, 3}, {1, 3}, call(orviRGBToHSV_8u_C3R), blocksOf(4), rect},
        {"RGBToHSV_8u_AC4R", {1, 4}, {1, 4}, call(orviRGBToHSV_8u_AC4R), blocksOf(4), rect},
        {"HSVToRGB_8u_C3R", {1, 3}, {1, 3}, call(orviHSVToRGB_8u_C3R), blocksOf(4), rect},
        {"HSVToRGB_8u_AC4R", {1, 4}, {1, 4}, call(orviHSVToRGB_8u_AC4R), blocksOf(4), rect},
    };
    return all;
}

template <class T>
using Fn = RowFn<T>;

// The first pixel's three results by the group form (a row of 4) and by the
// tail form (a row of 1).
template <class T>
std::vector<T> group(std::vector<T> px, Fn<T> f)
{
    auto v = row<T>(4, 3, px, f);
    v.resize(3);
    return v;
}
template <class T>
std::vector<T> tail(std::vector<T> px, Fn<T> f)
{
    return row<T>(1, 3, px, f);
}

TEST(Hsv, VectorPathsMatchScalarForms)
{
    for (const Conversion& c : conversions())
        expectVectorMatchesScalar(c);
    for (int ch : {3, 4}) {
        const Fn<Orv16u> f = ch == 3 ? orviHSVToRGB_16u_C3R : orviHSVToRGB_16u_AC4R;
        expectVectorMatchesScalar(ch * 2, ch * 2, 2, fillTypical<Orv16u>, [&](GuardedImage& s, GuardedImage& d, RoiSize roi) {
            return f(s.data<Orv16u>(), s.step(), d.data<Orv16u>(), d.step(), roi);
        });
    }
}

// A pixel the two forms convert differently shows the group result exactly
// on the leading whole groups of 4 of each width, C3 and AC4.
template <class T>
void expectSplitOf(Fn<T> c3, Fn<T> ac4, std::vector<T> p)
{
    const auto g = group<T>(p, c3), t = tail<T>(p, c3);
    ASSERT_NE(g, t);
    for (int ch : {3, 4}) {
        std::vector<T> px = p;
        if (ch == 4)
            px.push_back(0);
        for (int w = 1; w <= 11; ++w) {
            const auto out = row<T>(w, ch, px, ch == 3 ? c3 : ac4);
            for (int i = 0; i < w; ++i)
                ASSERT_EQ(std::vector<T>(out.begin() + ch * i, out.begin() + ch * i + 3), i < (w & ~3) ? g : t)
                    << ch << " " << w << " " << i;
        }
    }
}

// Random pixels until the forms disagree.
template <class T>
std::vector<T> telling(Fn<T> f, uint32_t seed)
{
    std::mt19937 rng(seed);
    for (;;) {
        const std::vector<T> p = {T(rng()), T(rng()), T(rng())};
        if (group<T>(p, f) != tail<T>(p, f))
            return p;
    }
}

TEST(Hsv, RowsSplitAfterTheLastGroupOfFour)
{
    expectSplitOf<Orv8u>(orviRGBToHSV_8u_C3R, orviRGBToHSV_8u_AC4R, telling<Orv8u>(orviRGBToHSV_8u_C3R, 1));
    expectSplitOf<Orv8u>(orviHSVToRGB_8u_C3R, orviHSVToRGB_8u_AC4R, telling<Orv8u>(orviHSVToRGB_8u_C3R, 2));
    expectSplitOf<Orv16u>(orviHSVToRGB_16u_C3R, orviHSVToRGB_16u_AC4R, telling<Orv16u>(orviHSVToRGB_16u_C3R, 3));
}

float rcpRef(float x) { return _mm_cvtss_f32(_mm_rcp_ss(_mm_set_ss(x))); }

TEST(Hsv, SextantsGraysAndTies)
{
    for (auto form : {group<Orv8u>, tail<Orv8u>}) {
        // Black and grays: H = S = 0, V the level.
        for (int g : {0, 1, 128, 255})
            EXPECT_EQ(form({Orv8u(g), Orv8u(g), Orv8u(g)}, orviRGBToHSV_8u_C3R), (Bytes{0, 0, Orv8u(g)}));
        // Primaries at sextants 0, 2 and 4.
        EXPECT_EQ(form({255, 0, 0}, orviRGBToHSV_8u_C3R)[0], 0);
        EXPECT_EQ(form({0, 255, 0}, orviRGBToHSV_8u_C3R)[0], 85);
        EXPECT_EQ(form({0, 0, 200}, orviRGBToHSV_8u_C3R)[0], 170);
        EXPECT_EQ(form({0, 0, 200}, orviRGBToHSV_8u_C3R)[2], 200);
        // R the maximum and G below B: a negative position wraps by 255.
        const Orv8u h = form({255, 0, 128}, orviRGBToHSV_8u_C3R)[0];
        EXPECT_GE(h, 212);
        EXPECT_LE(h, 255);
    }
    // Ties: G and B equal and largest. The group takes G's formula, the tail
    // lets B's override it; with q = rcp(255) the two land on either side of
    // 127.5 unless 255 q is exactly 1.
    const float q = rcpRef(255.0f);
    EXPECT_EQ(group<Orv8u>({0, 255, 255}, orviRGBToHSV_8u_C3R)[0], Orv8u(std::nearbyint(42.5f * std::fma(q, 255.0f, 2.0f))));
    EXPECT_EQ(tail<Orv8u>({0, 255, 255}, orviRGBToHSV_8u_C3R)[0], Orv8u(std::nearbyint(((0.0f - 255.0f * q) + 4.0f) * 42.5f)));
    // R and G equal: the group keeps R's formula, the tail takes G's.
    EXPECT_EQ(group<Orv8u>({255, 255, 0}, orviRGBToHSV_8u_C3R)[0], Orv8u(std::nearbyint(42.5f * std::fma(255.0f, q, -(q * 0.0f)))));
    EXPECT_EQ(tail<Orv8u>({255, 255, 0}, orviRGBToHSV_8u_C3R)[0], Orv8u(std::nearbyint(((0.0f - 255.0f * q) + 2.0f) * 42.5f)));

    // 16u: x = 0, 2, 4 for the primaries.
    EXPECT_EQ(tail<Orv16u>({65535, 0, 0}, orviRGBToHSV_16u_C3R), (std::vector<Orv16u>{0, 65535, 65535}));
    EXPECT_EQ(tail<Orv16u>({0, 65535, 0}, orviRGBToHSV_16u_C3R)[0], 21845);
    EXPECT_EQ(tail<Orv16u>({0, 0, 65535}, orviRGBToHSV_16u_C3R)[0], 43690);
    EXPECT_EQ(row<Orv16u>(1, 4, {700, 700, 700, 9}, orviRGBToHSV_16u_AC4R), (std::vector<Orv16u>{0, 0, 700, 0}));
}

// The 16u form written out with exact division.
TEST(Hsv, SixteenBitFormAgainstItsDefinition)
{
    std::mt19937 rng(5);
    for (int k = 0; k < 20000; ++k) {
        int c[3] = {int(rng() % 65536), int(rng() % 65536), int(rng() % 65536)};
        if (k % 4 == 0)
            c[k % 3] = c[(k + 1) % 3];  // ties
        const int v = std::max({c[0], c[1], c[2]}), d = v - std::min({c[0], c[1], c[2]});
        std::vector<Orv16u> e = {0, 0, Orv16u(v)};
        if (v != 0 && d != 0) {
            const float i = 1.0f / float(d);
            const float cr = float(v - c[0]) * i, cg = float(v - c[1]) * i, cb = float(v - c[2]) * i;
            float x = 0.0f;
            if (c[0] == v)
                x = cb - cg;
            if (c[1] == v)
                x = (cr + 2.0f) - cb;
            if (c[2] == v)
                x = (4.0f - cr) + cg;
            if (x + 1.1920929e-7f < 0.0f)
                x += 6.0f;
            e[0] = Orv16u(std::trunc(0.5f + (65535.0f * x) / 6.0f));
            e[1] = Orv16u(std::trunc(std::fma(float(d) / float(v), 65535.0f, 0.5f)));
        }
        ASSERT_EQ(tail<Orv16u>({Orv16u(c[0]), Orv16u(c[1]), Orv16u(c[2])}, orviRGBToHSV_16u_C3R), e)
            << c[0] << " " << c[1] << " " << c[2];
    }
}

TEST(Hsv, BackToRgb)
{
    std::mt19937 rng(6);
    for (auto form : {group<Orv8u>, tail<Orv8u>}) {
        // Full-scale hue is hue 0, not a sixth sextant.
        for (int k = 0; k < 200; ++k) {
            const Orv8u s = Orv8u(rng()), v = Orv8u(rng());
            EXPECT_EQ(form({255, s, v}, orviHSVToRGB_8u_C3R), form({0, s, v}, orviHSVToRGB_8u_C3R));
            EXPECT_EQ(form({Orv8u(k), 0, v}, orviHSVToRGB_8u_C3R), (Bytes{v, v, v}));
        }
        // Sextant starts: red, yellow-ish, green, cyan-ish, blue, magenta.
        EXPECT_EQ(form({0, 255, 200}, orviHSVToRGB_8u_C3R), (Bytes{200, 0, 0}));
        EXPECT_EQ(form({85, 255, 200}, orviHSVToRGB_8u_C3R)[1], 200);
        EXPECT_EQ(form({170, 255, 200}, orviHSVToRGB_8u_C3R)[2], 200);
    }
    for (auto form : {group<Orv16u>, tail<Orv16u>}) {
        EXPECT_EQ(form({65535, 1000, 40000}, orviHSVToRGB_16u_C3R), form({0, 1000, 40000}, orviHSVToRGB_16u_C3R));
        EXPECT_EQ(form({12345, 0, 40000}, orviHSVToRGB_16u_C3R), (std::vector<Orv16u>{40000, 40000, 40000}));
        EXPECT_EQ(form({0, 65535, 65535}, orviHSVToRGB_16u_C3R), (std::vector<Orv16u>{65535, 0, 0}));
    }
    // Round trip of grays, both directions and forms.
    for (int g = 0; g < 256; g += 15) {
        for (auto form : {group<Orv8u>, tail<Orv8u>}) {
            const Bytes gray = {Orv8u(g), Orv8u(g), Orv8u(g)};
            EXPECT_EQ(form(form(gray, orviRGBToHSV_8u_C3R), orviHSVToRGB_8u_C3R), gray);
        }
    }
}

TEST(Hsv, AlphaChecksAndThreads)
{
    for (const Conversion& c : conversions()) {
        expectCheckOrder(c);
        if (c.dst.pixBytes == 4) {
            for (int w : {1, 4, 7, 13})
                for (int x = 0; x < w; x += 2)
                    EXPECT_EQ(convertColour(c, {30, 200, 90}, w, x)[3], 0xEE) << c.name;
        }
    }
    std::vector<Orv16u> s16(16, 999), d16(16, 0xBEEF);
    orviRGBToHSV_16u_AC4R(s16.data(), 32, d16.data(), 32, {4, 1});
    orviHSVToRGB_16u_AC4R(s16.data(), 32, d16.data(), 32, {4, 1});
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(d16[4 * i + 3], 0xBEEF);
    EXPECT_EQ(orviRGBToHSV_16u_C3R(s16.data(), 8, nullptr, 8, {0, 0}), orvStatusNullPointer);
    EXPECT_EQ(orviHSVToRGB_16u_AC4R(s16.data(), -8, d16.data(), 0, {1, 0}), orvStatusBadSize);

    // The same bytes on any thread count, in the caller's rounding mode.
    std::mt19937 rng(9);
    const int w = 250, h = 37;
    GuardedImage src = makeImage(w, h, 3, 0, false, 0);
    src.fillBytes(rng);
    for (auto f : {orviRGBToHSV_8u_C3R, orviHSVToRGB_8u_C3R}) {
        Bytes first;
        for (int threads : {1, 2, 3}) {
            ThreadCount tc(threads);
            GuardedImage dst = makeImage(w, h, 3, 0, false, 0);
            const unsigned saved = _mm_getcsr();
            _MM_SET_ROUNDING_MODE(_MM_ROUND_UP);
            EXPECT_EQ(f(src.data(), src.step(), dst.data(), dst.step(), {w, h}), orvStatusOk);
            _mm_setcsr(saved);
            if (first.empty())
                first = dst.pixels();
            else
                EXPECT_EQ(dst.pixels(), first) << threads;
        }
    }
}

}  // namespace
