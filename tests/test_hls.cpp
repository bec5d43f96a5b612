// RGB and BGR to HLS and back: vector paths against scalar forms, where rows
// split between group and tail forms, the known values of the forms, hue
// boundaries, alpha, check orders, rounding mode and thread independence.
#include <cfenv>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "support/pixelrow.h"
#include "support/planes.h"

using namespace orvtest;

namespace {

using F = Fault;
using Bytes = std::vector<uint8_t>;

// The 8-bit members, with where each row's group form ends.
const std::vector<Conversion>& conversions()
{
    const std::vector<F> rect = {F::SrcNull, F::DstNull, F::Width, F::Height};
    static const std::vector<Conversion> all = {
        {"RGBToHLS_8u_C3R", {1, 3}, {1, 3}, call(orviRGBToHLS_8u_C3R), blocksOf(8), rect},
        {"RGBToHLS_8u_AC4R", {1, 4}, {1, 4}, call(orviRGBToHLS_8u_AC4R), blocksOf(4), rect},
        {"HLSToRGB_8u_C3R", {1, 3}, {1, 3}, call(orviHLSToRGB_8u_C3R), blocksOf(8), rect},
        {"HLSToRGB_8u_AC4R", {1, 4}, {1, 4}, call(orviHLSToRGB_8u_AC4R), blocksOf(8), rect},
        {"BGRToHLS_8u_AC4R", {1, 4}, {1, 4}, call(orviBGRToHLS_8u_AC4R), blocksOf(4), rect},
        {"BGRToHLS_8u_P3R", {3, 1}, {3, 1}, call(orviBGRToHLS_8u_P3R), blocksOf(4), {}},
        {"BGRToHLS_8u_P3C3R", {3, 1}, {1, 3}, call(orviBGRToHLS_8u_P3C3R), blocksOf(4), {}},
        {"BGRToHLS_8u_C3P3R", {1, 3}, {3, 1}, call(orviBGRToHLS_8u_C3P3R), blocksOf(4), {}},
        {"BGRToHLS_8u_AP4R", {4, 1}, {4, 1}, call(orviBGRToHLS_8u_AP4R), blocksOf(4), {}},
        {"BGRToHLS_8u_AP4C4R", {4, 1}, {1, 4}, call(orviBGRToHLS_8u_AP4C4R), blocksOf(4), {}},
        {"BGRToHLS_8u_AC4P4R", {1, 4}, {4, 1}, call(orviBGRToHLS_8u_AC4P4R), blocksOf(4), {}},
        {"HLSToBGR_8u_P3R", {3, 1}, {3, 1}, call(orviHLSToBGR_8u_P3R), blocksOf(4), {}},
        {"HLSToBGR_8u_P3C3R", {3, 1}, {1, 3}, call(orviHLSToBGR_8u_P3C3R), blocksOf(4), {}},
        {"HLSToBGR_8u_C3P3R", {1, 3}, {3, 1}, call(orviHLSToBGR_8u_C3P3R), blocksOf(4), {}},
        {"HLSToBGR_8u_AP4R", {4, 1}, {4, 1}, call(orviHLSToBGR_8u_AP4R), blocksOf(4), {}},
        {"HLSToBGR_8u_AP4C4R", {4, 1}, {1, 4}, call(orviHLSToBGR_8u_AP4C4R), blocksOf(4), {}},
        {"HLSToBGR_8u_AC4P4R", {1, 4}, {4, 1}, call(orviHLSToBGR_8u_AC4P4R), blocksOf(4), {}},
    };
    return all;
}

const Conversion& conv(const std::string& name) { return findConversion(conversions(), name); }
bool bgrFamily(const Conversion& c) { return c.name.find("BGR") != std::string::npos; }

// The three colour results of pixel `index` in a row of `width` copies.
Bytes colour(const std::string& name, std::array<uint8_t, 3> in, int width, int index = 0)
{
    Bytes b = convertColour(conv(name), in, width, index);
    b.resize(3);
    return b;
}

// Vector against scalar over the sweep; the BGR family takes positive steps
// only, so its sweep leaves the negative geometries out.
void sweep8u(const Conversion& c)
{
    if (!bgrFamily(c)) {
        expectVectorMatchesScalar(c);
        return;
    }
    SCOPED_TRACE(c.name);
    std::mt19937 rng(7);
    for (const Geometry& g : standardSweep(1)) {
        if (g.negative)
            continue;
        SCOPED_TRACE(g.str());
        Planes src = makePlanes(c.src.planes, g.width, g.height, c.src.pixBytes, g.srcPad, false, g.endSlack);
        Planes dv = makePlanes(c.dst.planes, g.width, g.height, c.dst.pixBytes, g.dstPad, false, g.endSlack);
        Planes ds = makePlanes(c.dst.planes, g.width, g.height, c.dst.pixBytes, g.dstPad, false, g.endSlack);
        src.fillBytes(rng);
        dv.fillBytes(rng);
        ds.copyFrom(dv);
        ASSERT_EQ(c.call(src.arg(), src.step(), dv.arg(), dv.step(), {g.width, g.height}), orvStatusOk);
        {
            ScalarBlocks scalar;
            ASSERT_EQ(c.call(src.arg(), src.step(), ds.arg(), ds.step(), {g.width, g.height}), orvStatusOk);
        }
        ASSERT_TRUE(dv.guardsIntact());
        ASSERT_TRUE(ds.guardsIntact());
        ASSERT_EQ(dv.pixels(), ds.pixels());
    }
}

template <class T>
using Fn = RowFn<T>;

template <class T>
void sweep(int ch, Fn<T> f)
{
    expectVectorMatchesScalar(ch * sizeof(T), ch * sizeof(T), sizeof(T), fillTypical<T>,
                              [&](GuardedImage& s, GuardedImage& d, RoiSize roi) {
                                  return f(s.data<T>(), s.step(), d.data<T>(), d.step(), roi);
                              });
}

TEST(Hls, VectorPathsMatchScalarForms)
{
    ThreadCount one(1);  // the always-parallel members open a region per call
    for (const Conversion& c : conversions())
        sweep8u(c);
    sweep<Orv16u>(3, orviRGBToHLS_16u_C3R);
    sweep<Orv16u>(4, orviRGBToHLS_16u_AC4R);
    sweep<Orv16s>(3, orviRGBToHLS_16s_C3R);
    sweep<Orv16s>(4, orviRGBToHLS_16s_AC4R);
    sweep<Orv32f>(3, orviRGBToHLS_32f_C3R);
    sweep<Orv32f>(4, orviRGBToHLS_32f_AC4R);
    sweep<Orv16u>(3, orviHLSToRGB_16u_C3R);
    sweep<Orv16u>(4, orviHLSToRGB_16u_AC4R);
    sweep<Orv16s>(3, orviHLSToRGB_16s_C3R);
    sweep<Orv16s>(4, orviHLSToRGB_16s_AC4R);
    sweep<Orv32f>(3, orviHLSToRGB_32f_C3R);
    sweep<Orv32f>(4, orviHLSToRGB_32f_AC4R);
}

TEST(Hls, RowsSplitAfterTheLastWholeGroup)
{
    ThreadCount one(1);  // the always-parallel members open a region per call
    for (const Conversion& c : conversions())
        expectSplit(c);
}


// Wider members: a pixel that the two forms convert differently shows the
// group result exactly on the leading whole groups of each width.
template <class T>
void expectSplitOf(int ch, int group, Fn<T> f, std::vector<T> px)
{
    const std::vector<T> g = row<T>(group, ch, px, f), t = row<T>(1, ch, px, f);
    ASSERT_NE(std::vector<T>(g.begin(), g.begin() + 3), std::vector<T>(t.begin(), t.begin() + 3));
    for (int w = 1; w <= 13; ++w) {
        const auto out = row<T>(w, ch, px, f);
        for (int i = 0; i < w; ++i)
            for (int k = 0; k < 3; ++k)
                ASSERT_EQ(out[ch * i + k], (i < w / group * group ? g : t)[k]) << w << " " << i;
    }
}

TEST(Hls, WideMembersSplitInGroupsOfFour)
{
    ThreadCount one(1);  // the always-parallel members open a region per call
    // Truncation in the tail against rounding in the group.
    expectSplitOf<Orv16u>(3, 4, orviRGBToHLS_16u_C3R, {1, 2, 2});
    expectSplitOf<Orv16s>(4, 4, orviRGBToHLS_16s_AC4R, {-32767, -32766, -32766, 0});
    // Rounded fused steps against unfused ones, found by search.
    std::mt19937 rng(3);
    auto find = [&](auto f, auto gen) {
        using T = decltype(gen());
        for (;;) {
            std::vector<T> p = {gen(), gen(), gen()};
            const auto g = row<T>(4, 3, p, f), t = row<T>(1, 3, p, f);
            if (g[0] != t[0] || g[1] != t[1] || g[2] != t[2])
                return p;
        }
    };
    const auto p16 = find(orviHLSToRGB_16u_C3R, [&] { return Orv16u(rng()); });
    expectSplitOf<Orv16u>(3, 4, orviHLSToRGB_16u_C3R, p16);
    expectSplitOf<Orv16s>(4, 4, orviHLSToRGB_16s_AC4R,
                          {Orv16s(p16[0] - 32768), Orv16s(p16[1] - 32768), Orv16s(p16[2] - 32768), 0});
    // 32f: fused group against the tail's division, found by search.
    for (;;) {
        std::vector<float> p = {std::uniform_real_distribution<float>(0, 1)(rng),
                                std::uniform_real_distribution<float>(0, 1)(rng),
                                std::uniform_real_distribution<float>(0, 1)(rng)};
        const auto g = row<Orv32f>(4, 3, p, orviHLSToRGB_32f_C3R), t = row<Orv32f>(1, 3, p, orviHLSToRGB_32f_C3R);
        if (g[0] != t[0] || g[1] != t[1] || g[2] != t[2]) {
            expectSplitOf<Orv32f>(3, 4, orviHLSToRGB_32f_C3R, p);
            expectSplitOf<Orv32f>(4, 4, orviHLSToRGB_32f_AC4R, {p[0], p[1], p[2], 0.0f});
            break;
        }
    }
}

TEST(Hls, KnownValuesAndHueBoundaries)
{
    ThreadCount one(1);  // the always-parallel members open a region per call
    // Gray: H 0, L the level, S 0, in both forms.
    for (int w : {8, 1})
        EXPECT_EQ(colour("RGBToHLS_8u_C3R", {100, 100, 100}, w), (Bytes{0, 100, 0}));
    // L = 1.5: ties to even in the groups, truncated in the C3 tail, rounded
    // in the AC4 tail.
    EXPECT_EQ(colour("RGBToHLS_8u_C3R", {1, 2, 2}, 8)[1], 2);
    EXPECT_EQ(colour("RGBToHLS_8u_C3R", {1, 2, 2}, 1)[1], 1);
    EXPECT_EQ(colour("RGBToHLS_8u_AC4R", {1, 2, 2}, 4)[1], 2);
    EXPECT_EQ(colour("RGBToHLS_8u_AC4R", {1, 2, 2}, 1)[1], 2);
    EXPECT_EQ(colour("BGRToHLS_8u_AC4R", {2, 2, 1}, 4)[1], 1);
    // Primaries at 0, 120 and 240 degrees, secondaries between; every member
    // and form. Magenta-side colours (R the maximum, G below B) wrap.
    const std::pair<std::array<uint8_t, 3>, int> primaries[] = {{{255, 0, 0}, 0}, {{0, 255, 0}, 85}, {{0, 0, 255}, 170}};
    for (const char* name : {"RGBToHLS_8u_C3R", "RGBToHLS_8u_AC4R", "BGRToHLS_8u_P3R", "BGRToHLS_8u_AC4R"}) {
        const bool bgr = std::string(name).find("BGR") == 0;
        for (int w : {8, 1}) {
            SCOPED_TRACE(std::string(name) + " width " + std::to_string(w));
            for (auto [rgb, hue] : primaries)
                EXPECT_EQ(colour(name, bgr ? std::array<uint8_t, 3>{rgb[2], rgb[1], rgb[0]} : rgb, w)[0], hue);
            for (uint8_t g : {0, 100, 254, 255})
                EXPECT_EQ(colour(name, {g, g, g}, w)[0], 0);
            const Bytes magenta = colour(name, bgr ? std::array<uint8_t, 3>{200, 0, 255} : std::array<uint8_t, 3>{255, 0, 200}, w);
            EXPECT_GT(magenta[0], 212);
            EXPECT_LE(magenta[0], 255);
            // Ties between channels: the earlier of R, G wins, so yellow
            // lies at 60 degrees from R and cyan at 180 from G.
            const Bytes yellow = colour(name, {Orv8u(bgr ? 0 : 255), 255, Orv8u(bgr ? 255 : 0)}, w);
            const Bytes cyan = colour(name, {Orv8u(bgr ? 255 : 0), 255, Orv8u(bgr ? 0 : 255)}, w);
            EXPECT_NEAR(yellow[0], 42.5, 1.0);
            EXPECT_NEAR(cyan[0], 127.5, 1.0);
        }
    }
    // L = 127.5 of a primary: 128 in the RGB groups, truncated elsewhere.
    EXPECT_EQ(colour("RGBToHLS_8u_C3R", {255, 0, 0}, 8), (Bytes{0, 128, 255}));
    EXPECT_EQ(colour("RGBToHLS_8u_C3R", {255, 0, 0}, 1)[1], 127);
    EXPECT_EQ(colour("BGRToHLS_8u_P3R", {0, 0, 255}, 4)[1], 127);
    // 16s: the achromatic H and S are the zero of the raised scale.
    for (int w : {4, 1}) {
        const auto gray = row<Orv16s>(w, 3, {5, 5, 5}, orviRGBToHLS_16s_C3R);
        for (int i = 0; i < w; ++i)
            EXPECT_EQ((std::vector<Orv16s>(gray.begin() + 3 * i, gray.begin() + 3 * i + 3)),
                      (std::vector<Orv16s>{-32768, 5, -32768}));
        const auto green = row<Orv16u>(w, 3, {0, 65535, 0}, orviRGBToHLS_16u_C3R);
        EXPECT_EQ(green[0], 21845);
        EXPECT_EQ(green[2], 65535);
    }
    // 32f: a difference up to 2^-23 is achromatic, L as usual.
    for (int w : {3, 1}) {
        const auto v = row<Orv32f>(w, 3, {0.5f, 0.5f + 1.1920929e-7f, 0.5f}, orviRGBToHLS_32f_C3R);
        EXPECT_EQ(v[0], 0.0f);
        EXPECT_EQ(v[2], 0.0f);
        EXPECT_EQ(v[1], 0.5f * (0.5f + (0.5f + 1.1920929e-7f)));
        const auto blue = row<Orv32f>(w, 3, {0.0f, 0.0f, 1.0f}, orviRGBToHLS_32f_C3R);
        EXPECT_FLOAT_EQ(blue[0], 240.0f / 360.0f);
        EXPECT_EQ(blue[1], 0.5f);
        EXPECT_EQ(blue[2], 1.0f);
    }
}

TEST(Hls, BackToRgb)
{
    ThreadCount one(1);  // the always-parallel members open a region per call
    // S = 0 gives L on all three channels; the 8u tail of the RGB family
    // goes through L / 255 * 255 and truncation and may land one below.
    for (int l = 0; l < 256; ++l) {
        const Orv8u L = Orv8u(l);
        EXPECT_EQ(colour("HLSToRGB_8u_C3R", {77, L, 0}, 8), (Bytes{L, L, L}));
        const Bytes t = colour("HLSToRGB_8u_C3R", {77, L, 0}, 1);
        EXPECT_TRUE(t == (Bytes{L, L, L}) || t == Bytes(3, Orv8u(l - 1))) << l;
        EXPECT_EQ(colour("HLSToBGR_8u_P3R", {77, L, 0}, 1), (Bytes{L, L, L}));
    }
    // Primaries and secondaries come back, in groups and tails.
    for (const char* name : {"HLSToRGB_8u_C3R", "HLSToRGB_8u_AC4R", "HLSToBGR_8u_P3C3R"}) {
        const bool bgr = std::string(name).find("BGR") != std::string::npos;
        for (int w : {8, 1}) {
            SCOPED_TRACE(std::string(name) + " width " + std::to_string(w));
            const Bytes red = colour(name, {0, 128, 255}, w), blue = colour(name, {170, 128, 255}, w);
            EXPECT_GE(bgr ? red[2] : red[0], 254);
            EXPECT_LE(bgr ? blue[2] : blue[0], 1);
            EXPECT_GE(bgr ? blue[0] : blue[2], 254);
        }
    }
    // A hue of exactly 120 degrees puts R at 240, the last segment: R = m1.
    // (The group's fused B angle keeps the few ulps of 360 / 3 above 120.)
    for (int w : {4, 1}) {
        const auto v = row<Orv32f>(w, 3, {1.0f / 3.0f, 0.5f, 1.0f}, orviHLSToRGB_32f_C3R);
        EXPECT_EQ(v[0], 0.0f);
        EXPECT_EQ(v[1], 1.0f);
        EXPECT_EQ(v[2], w == 4 ? 0.0166666684f * 3.5762787e-06f : 0.0f);
        const auto gray = row<Orv32f>(w, 3, {std::numeric_limits<float>::quiet_NaN(), 0.25f, 0.0f}, orviHLSToRGB_32f_C3R);
        EXPECT_EQ(gray, std::vector<Orv32f>(std::size_t(3 * w), 0.25f));
    }
    // 16s and 16u tails copy the stored L of a gray pixel.
    EXPECT_EQ(row<Orv16s>(1, 3, {123, -1234, -32768}, orviHLSToRGB_16s_C3R), (std::vector<Orv16s>{-1234, -1234, -1234}));
    EXPECT_EQ(row<Orv16u>(1, 3, {123, 4321, 0}, orviHLSToRGB_16u_C3R), (std::vector<Orv16u>{4321, 4321, 4321}));
}

// Independent evaluation of the 8u RGB-to-HLS forms, for random colours.
float rcpRef(float x) { return _mm_cvtss_f32(_mm_rcp_ss(_mm_set_ss(x))); }

TEST(Hls, EightBitFormsAgainstTheirDefinitions)
{
    ThreadCount one(1);  // the always-parallel members open a region per call
    std::mt19937 rng(11);
    for (int k = 0; k < 3000; ++k) {
        const int R = int(rng() % 256), G = int(rng() % 256), B = int(rng() % 256);
        const float r = float(R), g = float(G), b = float(B);
        const float mx = std::max({r, g, b}), mn = std::min({r, g, b}), sum = mx + mn, diff = mx - mn;
        const float l = 0.5f * sum;
        if (diff == 0.0f)
            continue;
        const float den = l <= 127.5f ? sum : 510.0f - sum;
        // Group: plain reciprocals, to nearest.
        const float c = rcpRef(diff) * 60.0f;
        float h = r == mx ? c * (g - b) : g == mx ? std::fma(c, b - r, 120.0f) : std::fma(r - g, c, 240.0f);
        if (h < 0.0f)
            h += 360.0f;
        const Bytes group = {Orv8u(std::nearbyint(h * 0.7083333f)), Orv8u(std::nearbyint(l)),
                             Orv8u(std::min(255.0f, std::nearbyint((rcpRef(den) * diff) * 255.0f)))};
        const Bytes g8 = row<Orv8u>(8, 3, {Orv8u(R), Orv8u(G), Orv8u(B)}, orviRGBToHLS_8u_C3R);
        ASSERT_EQ(Bytes(g8.begin(), g8.begin() + 3), group) << R << " " << G << " " << B;
        // Tail: refined, truncated.
        auto refine = [](float x) {
            const float q = rcpRef(x);
            return (q + q) - ((x * q) * q);
        };
        const float q1 = refine(diff);
        float t = r == mx ? ((g - b) * 60.0f) * q1 : g == mx ? ((b - r) * 60.0f) * q1 + 120.0f : ((r - g) * 60.0f) * q1 + 240.0f;
        if (t < 0.0f)
            t += 360.0f;
        const Bytes tail = {Orv8u(std::trunc(t * 0.7083333f)), Orv8u(std::trunc(l)),
                            Orv8u(std::trunc((diff * refine(den)) * 255.0f))};
        ASSERT_EQ(row<Orv8u>(1, 3, {Orv8u(R), Orv8u(G), Orv8u(B)}, orviRGBToHLS_8u_C3R), tail) << R << " " << G << " " << B;
    }
}

TEST(Hls, AlphaKeptOrCopied)
{
    ThreadCount one(1);  // the always-parallel members open a region per call
    // Interleaved members keep the destination's fourth byte (0xEE).
    for (const char* name : {"RGBToHLS_8u_AC4R", "HLSToRGB_8u_AC4R", "BGRToHLS_8u_AC4R"})
        for (int w : {1, 4, 9, 16, 21})
            for (int x = 0; x < w; x += 3)
                EXPECT_EQ(convertColour(conv(name), {10, 200, 30}, w, x)[3], 0xEE) << name;
    // Planar members copy the source alpha (77) whatever the layouts.
    for (const char* name : {"BGRToHLS_8u_AP4R", "BGRToHLS_8u_AP4C4R", "BGRToHLS_8u_AC4P4R", "HLSToBGR_8u_AP4R",
                             "HLSToBGR_8u_AP4C4R", "HLSToBGR_8u_AC4P4R"})
        for (int w : {1, 4, 9, 16, 21})
            for (int x = 0; x < w; x += 3)
                EXPECT_EQ(convertColour(conv(name), {10, 200, 30}, w, x)[3], 77) << name;
    // 16-bit and float interleaved members keep it too.
    std::vector<Orv16u> s16 = {1, 2, 3, 4, 500, 600, 700, 800}, d16(8, 0xBEEF);
    orviRGBToHLS_16u_AC4R(s16.data(), 16, d16.data(), 16, {2, 1});
    EXPECT_EQ(d16[3], 0xBEEF);
    EXPECT_EQ(d16[7], 0xBEEF);
    std::vector<Orv32f> sf(32, 0.3f), df(32, -7.0f);
    orviHLSToRGB_32f_AC4R(sf.data(), 128, df.data(), 128, {8, 1});
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(df[4 * i + 3], -7.0f);
}

TEST(Hls, ChecksInOrder)
{
    ThreadCount one(1);  // the always-parallel members open a region per call
    // Interleaved members: pointers, then size; steps are not looked at.
    for (const char* name : {"RGBToHLS_8u_C3R", "RGBToHLS_8u_AC4R", "HLSToRGB_8u_C3R", "HLSToRGB_8u_AC4R"})
        expectCheckOrder(conv(name));
    Orv16s s[12] = {}, d[12] = {};
    EXPECT_EQ(orviRGBToHLS_16s_C3R(s, -6, d, 0, {1, 1}), orvStatusOk);
    EXPECT_EQ(orviHLSToRGB_32f_AC4R(nullptr, 16, reinterpret_cast<Orv32f*>(d), 16, {0, 0}), orvStatusNullPointer);
    EXPECT_EQ(orviRGBToHLS_16u_AC4R(reinterpret_cast<Orv16u*>(s), 8, nullptr, 8, {0, 0}), orvStatusNullPointer);
    EXPECT_EQ(orviHLSToRGB_16s_C3R(s, 8, d, 8, {1, 0}), orvStatusBadSize);
    // The interleaved BGR member: pointers, size, then steps.
    Orv8u a[64] = {}, b[64];
    std::memset(b, 0x5a, sizeof b);
    EXPECT_EQ(orviBGRToHLS_8u_AC4R(a, 0, nullptr, 0, {0, 0}), orvStatusNullPointer);
    EXPECT_EQ(orviBGRToHLS_8u_AC4R(a, 0, b, 0, {0, 1}), orvStatusBadSize);
    EXPECT_EQ(orviBGRToHLS_8u_AC4R(a, 0, b, 16, {1, 1}), orvStatusBadStep);
    EXPECT_EQ(orviBGRToHLS_8u_AC4R(a, 16, b, -16, {1, 1}), orvStatusBadStep);
    // Planar and mixed members: top pointers, source planes, destination
    // planes (alpha included), steps, then size; each fault is tried with
    // every later one.
    for (const Conversion& c : conversions()) {
        if (!bgrFamily(c) || c.name == "BGRToHLS_8u_AC4R")
            continue;
        SCOPED_TRACE(c.name);
        Planes src = makePlanes(c.src.planes, 8, 2, c.src.pixBytes, 0, false, 0);
        Planes dst = makePlanes(c.dst.planes, 8, 2, c.dst.pixBytes, 0, false, 0);
        std::mt19937 rng(1);
        dst.fillBytes(rng);
        const Bytes before = dst.pixels();
        // Faults in check order: 0 src, 1 dst, then planes, then steps, then sizes.
        std::vector<std::pair<std::string, OrvStatus>> faults = {{"src", orvStatusNullPointer}, {"dst", orvStatusNullPointer}};
        for (int k = 0; k < c.src.planes && c.src.planes > 1; ++k)
            faults.push_back({"s" + std::to_string(k), orvStatusNullPointer});
        for (int k = 0; k < c.dst.planes && c.dst.planes > 1; ++k)
            faults.push_back({"d" + std::to_string(k), orvStatusNullPointer});
        for (const char* f : {"srcStep", "dstStep"})
            faults.push_back({f, orvStatusBadStep});
        for (const char* f : {"width", "height"})
            faults.push_back({f, orvStatusBadSize});
        auto run = [&](const std::vector<std::string>& on) {
            std::vector<uint8_t*> sp = src.ptr, dp = dst.ptr;
            void* s = c.src.planes > 1 ? static_cast<void*>(sp.data()) : sp[0];
            void* d = c.dst.planes > 1 ? static_cast<void*>(dp.data()) : dp[0];
            int ss = src.step(), ds = dst.step();
            RoiSize roi{8, 2};
            for (const std::string& f : on) {
                if (f == "src") {
                    s = nullptr;
                } else if (f == "dst") {
                    d = nullptr;
                }
                if (f[0] == 's' && f.size() == 2) sp[f[1] - '0'] = nullptr;
                else if (f[0] == 'd' && f.size() == 2) dp[f[1] - '0'] = nullptr;
                else if (f == "srcStep") ss = 0;
                else if (f == "dstStep") ds = -dst.step();
                else if (f == "width") roi.width = 0;
                else roi.height = -1;
            }
            return c.call(s, ss, d, ds, roi);
        };
        for (std::size_t i = 0; i < faults.size(); ++i)
            for (std::size_t j = i; j < faults.size(); ++j) {
                EXPECT_EQ(run({faults[i].first, faults[j].first}), faults[i].second) << faults[i].first << " " << faults[j].first;
                ASSERT_EQ(dst.pixels(), before);
            }
        EXPECT_EQ(run({}), orvStatusOk);
    }
}

// Every thread count gives the same bytes, in the caller's rounding mode,
// above and below the serial area, and the mode reaches every thread.
TEST(Hls, ThreadsFollowTheCallersRoundingMode)
{
    std::mt19937 rng(21);
    const int w = 300, h = 41;
    GuardedImage src = makeImage(w, h, 3, 0, false, 0);
    src.fillBytes(rng);
    auto run = [&](int threads, int mode, int height) {
        ThreadCount tc(threads);
        GuardedImage dst = makeImage(w, height, 3, 0, false, 0);
        const unsigned saved = _mm_getcsr();
        _MM_SET_ROUNDING_MODE(mode);
        EXPECT_EQ(orviRGBToHLS_8u_C3R(src.data(), src.step(), dst.data(), dst.step(), {w, height}), orvStatusOk);
        const unsigned after = _mm_getcsr();
        _mm_setcsr(saved);
        EXPECT_EQ(after & _MM_ROUND_MASK, unsigned(mode));
        return dst.pixels();
    };
    for (int height : {h, 3}) {
        const Bytes nearest = run(1, _MM_ROUND_NEAREST, height);
        for (int mode : {_MM_ROUND_NEAREST, _MM_ROUND_UP, _MM_ROUND_DOWN}) {
            const Bytes one = run(1, mode, height);
            EXPECT_EQ(run(2, mode, height), one);
            EXPECT_EQ(run(3, mode, height), one);
            if (mode != _MM_ROUND_NEAREST) {
                EXPECT_NE(one, nearest);
            }
        }
    }
}

}  // namespace
