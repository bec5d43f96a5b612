// RGB and photo YCC: vector paths against scalar forms, both forms of every
// integer member against arithmetic written out here, where rows split,
// neutral points, clamps, rounding modes, alpha, steps, front checks and
// thread independence.
#include <xmmintrin.h>

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

TEST(Ycc, VectorPathsMatchScalarForms)
{
    sweep<Orv8u>(3, orviRGBToYCC_8u_C3R);
    sweep<Orv8u>(4, orviRGBToYCC_8u_AC4R);
    sweep<Orv16u>(3, orviRGBToYCC_16u_C3R);
    sweep<Orv16u>(4, orviRGBToYCC_16u_AC4R);
    sweep<Orv16s>(3, orviRGBToYCC_16s_C3R);
    sweep<Orv16s>(4, orviRGBToYCC_16s_AC4R);
    sweep<Orv32f>(3, orviRGBToYCC_32f_C3R);
    sweep<Orv32f>(4, orviRGBToYCC_32f_AC4R);
    sweep<Orv8u>(3, orviYCCToRGB_8u_C3R);
    sweep<Orv8u>(4, orviYCCToRGB_8u_AC4R);
    sweep<Orv16u>(3, orviYCCToRGB_16u_C3R);
    sweep<Orv16u>(4, orviYCCToRGB_16u_AC4R);
    sweep<Orv16s>(3, orviYCCToRGB_16s_C3R);
    sweep<Orv16s>(4, orviYCCToRGB_16s_AC4R);
    sweep<Orv32f>(3, orviYCCToRGB_32f_C3R);
    sweep<Orv32f>(4, orviYCCToRGB_32f_AC4R);
}

// One row of `width` copies of a pixel (alpha, if any, filled with 77).
template <class T>
std::vector<T> row(int width, int ch, std::vector<T> px, Fn<T> f)
{
    return convertRow<T>(width, ch, ch, px, f, T(77));
}

// ---------------------------------------------------------------------------
// 8u, written from the definitions with floor divisions.

int floorDiv(int64_t a, int64_t b) { return int(a >= 0 ? a / b : -((-a + b - 1) / b)); }
Orv8u sat(int v) { return Orv8u(v < 0 ? 0 : v > 255 ? 255 : v); }

std::vector<Orv8u> toYccGroup(int r, int g, int b)
{
    const int y = floorDiv(r * 4898, 256) + floorDiv(g * 9617, 256) + floorDiv(b * 1867, 256);
    return {sat(floorDiv(floorDiv(int64_t(y) * 2921, 65536), 4)),
            sat(floorDiv(floorDiv(int64_t(b * 64 - y) * 1789, 65536) + 624, 4)),
            sat(floorDiv(floorDiv(int64_t(r * 64 - y) * 2178, 65536) + 548, 4))};
}
std::vector<Orv8u> toYccTail(int r, int g, int b)
{
    const int s = r * 4898 + g * 9617 + b * 1867;
    return {Orv8u(floorDiv(int64_t(floorDiv(s, 1024)) * 2921, 65536)),
            Orv8u(floorDiv(int64_t(floorDiv(b * 16384 - s, 1024)) * 1789, 65536) + 156),
            Orv8u(floorDiv(int64_t(floorDiv(r * 16384 - s, 1024)) * 2178, 65536) + 137)};
}
std::vector<Orv8u> toRgbGroup(int y0, int u0, int v0)
{
    const int y = floorDiv(y0 * 5563, 256);
    const int c1 = floorDiv(int64_t(u0 - 156) * 128 * 18168, 65536);
    const int c2 = floorDiv(int64_t(v0 - 137) * 128 * 14921, 65536);
    return {sat(floorDiv(y + c2, 16)),
            sat(floorDiv(floorDiv(y, 2) + floorDiv(c1 * -6357, 65536) + floorDiv(c2 * -16679, 65536), 8)),
            sat(floorDiv(y + c1, 16))};
}
std::vector<Orv8u> toRgbTail(int y0, int u0, int v0)
{
    const int a = y0 * 5564, b = u0 * 9084 - 156 * 9084, c = v0 * 7460 - 137 * 7460;
    return {sat(floorDiv(a + c, 4096)),
            sat(floorDiv(a * 16 - floorDiv(b, 256) * 794 - floorDiv(c, 256) * 2084, 65536)),
            sat(floorDiv(a + b, 4096))};
}

TEST(Ycc, EightBitGroupsAndTails)
{
    // Gray and white keep the chroma neutral in both forms.
    const std::vector<Orv8u> gray = {91, 156, 137}, white = {181, 156, 137};
    for (int w : {1, 7, 8, 9, 17}) {
        const auto g3 = row<Orv8u>(w, 3, {128, 128, 128}, orviRGBToYCC_8u_C3R);
        const auto w4 = row<Orv8u>(w, 4, {255, 255, 255, 1}, orviRGBToYCC_8u_AC4R);
        const auto back = row<Orv8u>(w, 4, {255, 156, 137, 1}, orviYCCToRGB_8u_AC4R);
        for (int i = 0; i < w; ++i) {
            EXPECT_EQ(pixelOf(g3, i, 3), gray) << w << " " << i;
            EXPECT_EQ(pixelOf(w4, i, 4), white) << w << " " << i;
            EXPECT_EQ(pixelOf(back, i, 4), std::vector<Orv8u>(3, 255)) << w << " " << i;
        }
    }
    // Random pixels: the last pixel of the leading run and the first of the
    // tail, in rows of 9 (C3) and 5 (AC4), and a row below the group size.
    std::mt19937 rng(14);
    for (int n = 0; n < 4000; ++n) {
        const int a = int(rng() % 256), b = int(rng() % 256), c = int(rng() % 256);
        const std::vector<Orv8u> p3 = {Orv8u(a), Orv8u(b), Orv8u(c)}, p4 = {Orv8u(a), Orv8u(b), Orv8u(c), 0};
        auto fwd = row<Orv8u>(9, 3, p3, orviRGBToYCC_8u_C3R);
        ASSERT_EQ(pixelOf(fwd, 7, 3), toYccGroup(a, b, c)) << a << " " << b << " " << c;
        ASSERT_EQ(pixelOf(fwd, 8, 3), toYccTail(a, b, c)) << a << " " << b << " " << c;
        fwd = row<Orv8u>(5, 4, p4, orviRGBToYCC_8u_AC4R);
        ASSERT_EQ(pixelOf(fwd, 3, 4), toYccGroup(a, b, c));
        ASSERT_EQ(pixelOf(fwd, 4, 4), toYccTail(a, b, c));
        auto inv = row<Orv8u>(9, 3, p3, orviYCCToRGB_8u_C3R);
        ASSERT_EQ(pixelOf(inv, 7, 3), toRgbGroup(a, b, c)) << a << " " << b << " " << c;
        ASSERT_EQ(pixelOf(inv, 8, 3), toRgbTail(a, b, c)) << a << " " << b << " " << c;
        inv = row<Orv8u>(3, 4, p4, orviYCCToRGB_8u_AC4R);
        ASSERT_EQ(pixelOf(inv, 0, 4), toRgbTail(a, b, c));
    }
}

// ---------------------------------------------------------------------------
// 16u, 16s, 32f, written from the definitions.

float fma3(float a, float b, float c) { return std::fma(a, b, c); }
float lumaRef(float r, float g, float b) { return fma3(0.114f, b, fma3(0.299f, r, 0.587f * g)); }
int nearest(float v) { return int(std::nearbyint(v)); }
Orv16u clampU(long v) { return Orv16u(v < 0 ? 0 : v > 65535 ? 65535 : v); }
Orv16s clampS(long v) { return Orv16s(v < -32768 ? -32768 : v > 32767 ? 32767 : v); }

std::vector<Orv16u> toYcc16uGroup(float r, float g, float b)
{
    const float l = lumaRef(r, g, b);
    return {clampU(nearest(0.7132668f * l)), clampU(nearest(fma3(b - l, 0.4368627f, 40092.0f))),
            clampU(nearest(fma3(r - l, 0.5319216f, 35209.0f)))};
}
std::vector<Orv16u> toYcc16uTail(float r, float g, float b)
{
    auto chain = [&](float t, float cr, float cg, float cb) {
        return Orv16u(long(std::trunc(fma3(cb, b, fma3(cg, g, fma3(cr, r, t))))));
    };
    return {chain(0.49999f, 0.213267f, 0.418688f, 0.0813124f), chain(40092.5f, -0.130621f, -0.256437f, 0.387058f),
            chain(35209.5f, 0.372876f, -0.312237f, -0.0606389f)};
}
std::vector<Orv16u> toRgb16uGroup(float y, float u, float v)
{
    const float c1 = 2.2179f * (u - 40092.0f), c2 = (v - 35209.0f) * 1.8215f;
    return {clampU(nearest(fma3(y, 1.3584f, c2))),
            clampU(nearest(fma3(-c2, 0.509f, fma3(-c1, 0.194f, y * 1.3584f)))),
            clampU(nearest(fma3(y, 1.3584f, c1)))};
}
std::vector<Orv16u> toRgb16uTail(int y, int u, int v)
{
    const float t = fma3(1.3584f, float(y), 0.49999f), c1 = float(u - 40092), c2 = float(v - 35209);
    return {clampU(long(std::trunc(fma3(c2, 1.8215f, t)))),
            clampU(long(std::trunc(fma3(-c2, 0.9271435f, fma3(-c1, 0.4302726f, t))))),
            clampU(long(std::trunc(fma3(2.2179f, c1, t))))};
}
std::vector<Orv16s> toYcc16sTail(int r, int g, int b)
{
    const float fr = float(r + 32768), fg = float(g + 32768), fb = float(b + 32768), l = lumaRef(fr, fg, fb);
    return {Orv16s(long(std::trunc(fma3(0.7132668f, l, 0.49999f))) - 32768),
            Orv16s(long(std::trunc(fma3(fb - l, 0.4368627f, 40092.5f))) - 32768),
            Orv16s(long(std::trunc(fma3(0.5319216f, fr - l, 35209.5f))) - 32768)};
}
std::vector<Orv16s> toRgb16s(int y, int u, int v, bool group)
{
    const float yf = float(y + 32768), a = float(v - 2441) * 1.8215f, b = float(u - 7324) * 2.2179f;
    float r, g, bl;
    if (group) {
        r = fma3(yf, 1.3584f, a);
        bl = fma3(yf, 1.3584f, b);
        g = fma3(1.3584f, yf, -fma3(b, 0.194f, a * 0.509f));
    } else {
        const float yy = yf * 1.3584f;
        r = yy + a;
        bl = yy + b;
        g = (yy - b * 0.194f) - a * 0.509f;
    }
    return {clampS(long(std::trunc(r)) - 32768), clampS(long(std::trunc(g)) - 32768), clampS(long(std::trunc(bl)) - 32768)};
}

TEST(Ycc, SixteenBitGroupsAndTails)
{
    std::mt19937 rng(41);
    for (int n = 0; n < 4000; ++n) {
        const int a = int(rng() % 65536), b = int(rng() % 65536), c = int(rng() % 65536);
        const std::vector<Orv16u> p = {Orv16u(a), Orv16u(b), Orv16u(c), 0};
        const std::vector<Orv16s> q = {Orv16s(a - 32768), Orv16s(b - 32768), Orv16s(c - 32768), 0};
        for (int ch : {3, 4}) {
            const std::vector<Orv16u> pu(p.begin(), p.begin() + ch);
            const std::vector<Orv16s> ps(q.begin(), q.begin() + ch);
            auto u = row<Orv16u>(5, ch, pu, ch == 3 ? orviRGBToYCC_16u_C3R : orviRGBToYCC_16u_AC4R);
            ASSERT_EQ(pixelOf(u, 3, ch), toYcc16uGroup(float(a), float(b), float(c))) << a << " " << b << " " << c;
            ASSERT_EQ(pixelOf(u, 4, ch), toYcc16uTail(float(a), float(b), float(c))) << a << " " << b << " " << c;
            u = row<Orv16u>(5, ch, pu, ch == 3 ? orviYCCToRGB_16u_C3R : orviYCCToRGB_16u_AC4R);
            ASSERT_EQ(pixelOf(u, 3, ch), toRgb16uGroup(float(a), float(b), float(c))) << a << " " << b << " " << c;
            ASSERT_EQ(pixelOf(u, 4, ch), toRgb16uTail(a, b, c)) << a << " " << b << " " << c;
            // 16s: the 16u group on raised inputs, lowered with saturation.
            auto s = row<Orv16s>(5, ch, ps, ch == 3 ? orviRGBToYCC_16s_C3R : orviRGBToYCC_16s_AC4R);
            std::vector<Orv16s> lowered;
            for (Orv16u v : toYcc16uGroup(float(a), float(b), float(c)))
                lowered.push_back(Orv16s(v - 32768));
            ASSERT_EQ(pixelOf(s, 3, ch), lowered);
            ASSERT_EQ(pixelOf(s, 4, ch), toYcc16sTail(a - 32768, b - 32768, c - 32768));
            s = row<Orv16s>(5, ch, ps, ch == 3 ? orviYCCToRGB_16s_C3R : orviYCCToRGB_16s_AC4R);
            ASSERT_EQ(pixelOf(s, 3, ch), toRgb16s(a - 32768, b - 32768, c - 32768, true));
            ASSERT_EQ(pixelOf(s, 4, ch), toRgb16s(a - 32768, b - 32768, c - 32768, false));
        }
    }
    // The neutral chroma of 16-bit data is 40092 and 35209 (156 and 137
    // times 257); below a group only the tail form runs.
    for (int w : {1, 3, 4, 7}) {
        const auto g = row<Orv16u>(w, 4, {30000, 30000, 30000, 5}, orviRGBToYCC_16u_AC4R);
        for (int i = 0; i < w; ++i) {
            EXPECT_EQ(g[4 * i + 1], 40092);
            EXPECT_EQ(g[4 * i + 2], 35209);
            EXPECT_EQ(g[4 * i + 3], 77);
        }
    }
}

TEST(Ycc, GroupsRoundInTheCallersModeAndTailsDoNot)
{
    // A 16u pixel whose group Y lies strictly between two integers: round-up
    // moves it, the tail (which truncates) stays; the caller's mode is
    // untouched afterwards.
    std::mt19937 rng(3);
    std::vector<Orv16u> px(3);
    float y = 0;
    do {
        for (auto& v : px)
            v = Orv16u(rng());
        y = 0.7132668f * lumaRef(px[0], px[1], px[2]);
    } while (y == std::floor(y) || y - std::floor(y) > 0.4f);
    const uint32_t saved = _mm_getcsr();
    const auto nearestRow = row<Orv16u>(5, 3, px, orviRGBToYCC_16u_C3R);
    _mm_setcsr((saved & ~0x6000u) | 0x4000u);
    const auto upRow = row<Orv16u>(5, 3, px, orviRGBToYCC_16u_C3R);
    EXPECT_EQ(_mm_getcsr() & 0x6000u, 0x4000u);
    _mm_setcsr(saved);
    EXPECT_EQ(nearestRow[0], Orv16u(std::floor(y)));
    EXPECT_EQ(upRow[0], Orv16u(std::ceil(y)));
    EXPECT_EQ(upRow[12], nearestRow[12]);
}

// ---------------------------------------------------------------------------
// 32f.

TEST(Ycc, FloatValuesClampsAndNaN)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    std::mt19937 rng(5);
    std::uniform_real_distribution<float> unit(-0.2f, 1.2f);
    for (int n = 0; n < 300; ++n) {
        const float r = unit(rng), g = unit(rng), b = unit(rng);
        const int w = 1 + n % 11;
        const auto f = row<Orv32f>(w, 3, {r, g, b}, orviRGBToYCC_32f_C3R);
        const float l = lumaRef(r, g, b);
        const std::vector<float> want = {l * 0.7132668f, fma3(0.4368627f, b - l, 0.6117647f),
                                         fma3(0.53192f, r - l, 0.5372549f)};
        const auto i = row<Orv32f>(w, 4, {r, g, b, 0.5f}, orviYCCToRGB_32f_AC4R);
        const float c1 = (g - 0.6117647f) * 2.2179f, c2 = (b - 0.5372549f) * 1.8215f;
        const float t = fma3(-c1, 0.194f, 1.3584f * r);
        auto clamp = [](float v) { return v < 0.0f ? 0.0f : v > 1.0f ? 1.0f : v; };
        const std::vector<float> back = {clamp(fma3(r, 1.3584f, c2)), clamp(fma3(-c2, 0.509f, t)),
                                         clamp(fma3(r, 1.3584f, c1))};
        for (int k = 0; k < w; ++k) {
            ASSERT_EQ(pixelOf(f, k, 3), want) << n;
            ASSERT_EQ(pixelOf(i, k, 4), back) << n;
            ASSERT_EQ(i[4 * k + 3], 77.0f);
        }
    }
    for (int w : {3, 8, 9}) {
        // RGB to YCC keeps values outside 0..1; the way back clamps them.
        const auto hot = row<Orv32f>(w, 3, {2.0f, 2.0f, 2.0f}, orviRGBToYCC_32f_C3R);
        EXPECT_GT(hot[0], 1.0f);
        const auto cold = row<Orv32f>(w, 3, {1.0f, 0.0f, 0.0f}, orviRGBToYCC_32f_C3R);
        EXPECT_LT(cold[1], 0.6117647f);
        const auto back = row<Orv32f>(w, 3, {0.5f, 0.0f, 1.0f}, orviYCCToRGB_32f_C3R);
        EXPECT_EQ(back[0], 1.0f);
        EXPECT_EQ(back[2], 0.0f);
        EXPECT_FALSE(std::signbit(back[2]));
        const auto n = row<Orv32f>(w, 3, {nan, 0.6117647f, 0.5372549f}, orviYCCToRGB_32f_C3R);
        for (int k = 0; k < 3 * w; ++k)
            EXPECT_TRUE(std::isnan(n[k]));
    }
}

// ---------------------------------------------------------------------------
// Alpha, steps, fronts, threads.

template <class T>
void expectAlphaKept(Fn<T> f)
{
    std::mt19937 rng(8);
    for (int w : {1, 3, 4, 5, 8, 13, 40, 77}) {
        GuardedImage src = makeImage(w, 2, 4 * sizeof(T), 0, false, 0);
        GuardedImage dst = makeImage(w, 2, 4 * sizeof(T), 0, false, 0);
        fillTypical<T>(src, rng);
        dst.fillBytes(rng);
        const std::vector<uint8_t> before = dst.pixels();
        ASSERT_EQ(f(src.data<T>(), src.step(), dst.data<T>(), dst.step(), {w, 2}), orvStatusOk);
        const std::vector<uint8_t> after = dst.pixels();
        for (std::size_t p = 0; p < after.size(); p += 4 * sizeof(T))
            ASSERT_EQ(std::memcmp(&after[p + 3 * sizeof(T)], &before[p + 3 * sizeof(T)], sizeof(T)), 0) << w;
    }
}

TEST(Ycc, AlphaIsNeverWritten)
{
    expectAlphaKept<Orv8u>(orviRGBToYCC_8u_AC4R);
    expectAlphaKept<Orv8u>(orviYCCToRGB_8u_AC4R);
    expectAlphaKept<Orv16u>(orviRGBToYCC_16u_AC4R);
    expectAlphaKept<Orv16u>(orviYCCToRGB_16u_AC4R);
    expectAlphaKept<Orv16s>(orviRGBToYCC_16s_AC4R);
    expectAlphaKept<Orv16s>(orviYCCToRGB_16s_AC4R);
    expectAlphaKept<Orv32f>(orviRGBToYCC_32f_AC4R);
    expectAlphaKept<Orv32f>(orviYCCToRGB_32f_AC4R);
}

TEST(Ycc, StepsRoundDownToWholeElements)
{
    std::vector<Orv16s> src(64), a(64, 0), b(64, 0);
    for (int i = 0; i < 64; ++i)
        src[i] = Orv16s(i * 1000 - 30000);
    orviYCCToRGB_16s_C3R(src.data(), 13, a.data(), 15, {2, 2});
    orviYCCToRGB_16s_C3R(src.data(), 12, b.data(), 14, {2, 2});
    EXPECT_EQ(a, b);
    std::vector<Orv32f> fs(64), fa(64, 0), fb(64, 0);
    for (int i = 0; i < 64; ++i)
        fs[i] = float(i) / 64;
    orviRGBToYCC_32f_AC4R(fs.data(), 35, fa.data(), 39, {2, 2});
    orviRGBToYCC_32f_AC4R(fs.data(), 32, fb.data(), 36, {2, 2});
    EXPECT_EQ(fa, fb);
}

TEST(Ycc, FrontChecksInOrderAndNothingWrittenOnFailure)
{
    alignas(16) Orv8u src[64] = {}, dst[64];
    std::memset(dst, 0x5a, sizeof dst);
    auto check = [&](auto fn, auto* s, auto* d) {
        using S = std::remove_pointer_t<decltype(s)>;
        using D = std::remove_pointer_t<decltype(d)>;
        EXPECT_EQ(fn(static_cast<const S*>(nullptr), 16, static_cast<D*>(nullptr), 16, RoiSize{0, 0}), orvStatusNullPointer);
        EXPECT_EQ(fn(s, 16, static_cast<D*>(nullptr), 16, RoiSize{0, 0}), orvStatusNullPointer);
        EXPECT_EQ(fn(s, 16, d, 16, RoiSize{0, 1}), orvStatusBadSize);
        EXPECT_EQ(fn(s, 16, d, 16, RoiSize{1, 0}), orvStatusBadSize);
        EXPECT_EQ(fn(s, 16, d, 16, RoiSize{-1, 5}), orvStatusBadSize);
        for (Orv8u b : dst)
            ASSERT_EQ(b, 0x5a);
    };
    auto* s16 = reinterpret_cast<Orv16u*>(src);
    auto* d16 = reinterpret_cast<Orv16u*>(dst);
    auto* s16s = reinterpret_cast<Orv16s*>(src);
    auto* d16s = reinterpret_cast<Orv16s*>(dst);
    auto* sf = reinterpret_cast<Orv32f*>(src);
    auto* df = reinterpret_cast<Orv32f*>(dst);
    for (auto fn : {orviRGBToYCC_8u_C3R, orviRGBToYCC_8u_AC4R, orviYCCToRGB_8u_C3R, orviYCCToRGB_8u_AC4R})
        check(fn, src, dst);
    for (auto fn : {orviRGBToYCC_16u_C3R, orviRGBToYCC_16u_AC4R, orviYCCToRGB_16u_C3R, orviYCCToRGB_16u_AC4R})
        check(fn, s16, d16);
    for (auto fn : {orviRGBToYCC_16s_C3R, orviRGBToYCC_16s_AC4R, orviYCCToRGB_16s_C3R, orviYCCToRGB_16s_AC4R})
        check(fn, s16s, d16s);
    for (auto fn : {orviRGBToYCC_32f_C3R, orviRGBToYCC_32f_AC4R, orviYCCToRGB_32f_C3R, orviYCCToRGB_32f_AC4R})
        check(fn, sf, df);
}

// Serial up to 4096 pixels, rows over threads above: the same bytes for any
// thread count, also when the caller rounds other than to nearest.
template <class T>
void expectThreadIndependent(int ch, Fn<T> f, uint32_t rounding)
{
    std::mt19937 rng(21);
    for (auto [w, h] : {std::pair{64, 64}, std::pair{4097, 1}, std::pair{37, 111}, std::pair{200, 64}}) {
        GuardedImage src = makeImage(w, h, ch * sizeof(T), 2 * sizeof(T), false, 0);
        fillTypical<T>(src, rng);
        std::vector<uint8_t> first;
        for (int n : {1, 2, 3}) {
            ThreadCount threads(n);
            GuardedImage dst = makeImage(w, h, ch * sizeof(T), 4 * sizeof(T), h % 2 == 1, 0);
            const uint32_t saved = _mm_getcsr();
            _mm_setcsr((saved & ~0x6000u) | rounding);
            const OrvStatus st = f(src.data<T>(), src.step(), dst.data<T>(), dst.step(), {w, h});
            const uint32_t after = _mm_getcsr();
            _mm_setcsr(saved);
            ASSERT_EQ(st, orvStatusOk);
            ASSERT_EQ(after & 0x6000u, rounding);
            ASSERT_TRUE(dst.guardsIntact());
            if (first.empty())
                first = dst.pixels();
            else
                ASSERT_EQ(dst.pixels(), first) << w << "x" << h << ", " << n << " threads";
        }
    }
}

TEST(Ycc, OutputDoesNotDependOnTheThreadCount)
{
    expectThreadIndependent<Orv8u>(3, orviRGBToYCC_8u_C3R, 0);
    expectThreadIndependent<Orv16u>(3, orviRGBToYCC_16u_C3R, 0x2000);
    expectThreadIndependent<Orv16u>(4, orviYCCToRGB_16u_AC4R, 0x4000);
    expectThreadIndependent<Orv16s>(3, orviRGBToYCC_16s_C3R, 0x6000);
    expectThreadIndependent<Orv32f>(4, orviYCCToRGB_32f_AC4R, 0);
}

}  // namespace
