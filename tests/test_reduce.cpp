// Bit-depth reduction: the generators behind the noise tables, the values
// the methods must give, vector paths against scalar forms, the work buffer,
// threads, argument checks and the one-bit packer.
#include <cmath>
#include <cstring>
#include <random>
#include <set>
#include <vector>

#include "frame/rands.h"
#include "support/image.h"

using namespace orvtest;

namespace {

// ---------------------------------------------------------------------------
// Generators

TEST(Rands, SequencesFromSeedZero)
{
    int size = 0;
    ASSERT_EQ(h9::orvsRandUniformGetSize_16s(&size), orvStatusOk);
    EXPECT_EQ(size, 48);
    ASSERT_EQ(h9::orvsRandUniformGetSize_32f(&size), orvStatusOk);
    EXPECT_EQ(size, 52);
    EXPECT_EQ(h9::orvsRandUniformGetSize_16s(nullptr), orvStatusNullPointer);

    alignas(8) uint8_t s16[48], s32[52];
    auto* st16 = reinterpret_cast<h9::RandUniformState16s*>(s16);
    auto* st32 = reinterpret_cast<h9::RandUniformState32f*>(s32);
    ASSERT_EQ(h9::orvsRandUniformInit_16s(st16, 0, 1024, 0), orvStatusOk);
    // Seeding: id 36, a = seed, b = 69069 a + 1013904243, x = 1131199209.
    int32_t word;
    std::memcpy(&word, s16, 4);
    EXPECT_EQ(word, 36);
    uint32_t x, a, b;
    std::memcpy(&x, s16 + 28, 4);
    std::memcpy(&a, s16 + 32, 4);
    std::memcpy(&b, s16 + 36, 4);
    EXPECT_EQ(x, 1131199209u);
    EXPECT_EQ(a, 0u);
    EXPECT_EQ(b, 1013904243u);

    int16_t v[8];
    ASSERT_EQ(h9::orvsRandUniform_16s(v, 8, st16), orvStatusOk);
    EXPECT_EQ(std::vector<int16_t>(v, v + 8), (std::vector<int16_t>{1, 133, 217, 413, 361, 759, 844, 242}));

    // In pieces: 3 + 5 values after a fresh seed give the same eight.
    ASSERT_EQ(h9::orvsRandUniformInit_32f(st32, -0.25f, 0.75f, 0), orvStatusOk);
    float f[8];
    ASSERT_EQ(h9::orvsRandUniform_32f(f, 3, st32), orvStatusOk);
    ASSERT_EQ(h9::orvsRandUniform_32f(f + 3, 5, st32), orvStatusOk);
    const float expect[8] = {-0x1.fe0aa8p-3f, -0x1.eade0ap-4f, -0x1.39b3c8p-5f, 0x1.39b458p-3f,
                             0x1.a5ab7ap-4f,  0x1.f6aea4p-2f,  0x1.262e3ap-1f,  -0x1.b85eaap-7f};
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(f[i], expect[i]) << i;

    // Equal limits give the limit; the wrong record is refused; checks in
    // order, nothing written.
    ASSERT_EQ(h9::orvsRandUniformInit_32f(st32, 0.5f, 0.5f, 77), orvStatusOk);
    ASSERT_EQ(h9::orvsRandUniform_32f(f, 8, st32), orvStatusOk);
    for (float e : f)
        EXPECT_EQ(e, 0.5f);
    float keep[2] = {9, 9};
    EXPECT_EQ(h9::orvsRandUniform_32f(keep, 2, reinterpret_cast<h9::RandUniformState32f*>(s16)), orvStatusBadContext);
    EXPECT_EQ(h9::orvsRandUniform_16s(v, 2, reinterpret_cast<h9::RandUniformState16s*>(s32)), orvStatusBadContext);
    EXPECT_EQ(h9::orvsRandUniform_32f(nullptr, 0, nullptr), orvStatusNullPointer);
    EXPECT_EQ(h9::orvsRandUniform_32f(keep, 0, nullptr), orvStatusNullPointer);
    EXPECT_EQ(h9::orvsRandUniform_32f(keep, 0, st32), orvStatusBadSize);
    EXPECT_EQ(keep[0], 9.0f);
    EXPECT_EQ(h9::orvsRandUniformInit_16s(nullptr, 0, 1, 0), orvStatusNullPointer);
}

// ---------------------------------------------------------------------------
// Calls through the exported names.

template <class S, class D>
using Fn = OrvStatus (*)(const S*, int, D*, int, RoiSize, int, OrvDitherType, int, Orv8u*);

// A buffer as the size query asks for it, for the current thread count.
std::vector<uint8_t> workBuffer(int ch, int width, int noise, int dtype)
{
    int size = -1;
    EXPECT_EQ(orviReduceBitsGetBufferSize(ch, {width, 1}, noise, dtype, &size), orvStatusOk);
    return std::vector<uint8_t>(std::size_t(size) + 1);
}

// One row of `width` copies of a pixel through f.
template <class S, class D>
std::vector<D> row(Fn<S, D> f, int ch, int width, std::vector<S> px, int dtype, int levels, int noise = 0,
                   int height = 1)
{
    const int layoutCh = int(px.size());
    std::vector<S> src;
    for (int i = 0; i < width * height; ++i)
        src.insert(src.end(), px.begin(), px.end());
    std::vector<D> dst(src.size(), D(0));
    auto buf = workBuffer(ch, width, noise, dtype);
    const int ss = width * layoutCh * int(sizeof(S)), ds = width * layoutCh * int(sizeof(D));
    EXPECT_EQ(f(src.data(), ss, dst.data(), ds, {width, height}, noise, dtype, levels, buf.data()), orvStatusOk);
    return dst;
}

TEST(ReduceNone, LevelsAndForms)
{
    // 256 levels give the source back, in both forms (elements 0-7 fused,
    // 8 split); 2 levels give 0 or 255.
    for (int s = 0; s < 256; ++s) {
        const auto out = row(orviReduceBits_8u_C1R, 1, 9, {Orv8u(s)}, orvDitherNone, 256);
        ASSERT_EQ(out[0], s);
        ASSERT_EQ(out[8], s);
        const auto two = row(orviReduceBits_8u_C1R, 1, 9, {Orv8u(s)}, orvDitherNone, 2);
        ASSERT_EQ(two[0], s > 127 ? 255 : 0) << s;
    }
    // White becomes 254 for 38 level counts, by truncation of 255 q.
    std::vector<int> whiteLow;
    for (int levels = 2; levels <= 256; ++levels)
        if (row(orviReduceBits_8u_C1R, 1, 8, {255}, orvDitherNone, levels)[0] == 254)
            whiteLow.push_back(levels);
    ASSERT_EQ(whiteLow.size(), 38u);
    EXPECT_EQ(std::vector<int>(whiteLow.begin(), whiteLow.begin() + 5), (std::vector<int>{42, 48, 56, 62, 83}));
    // The two forms differ for 45 (levels, value) pairs, all at levels 26
    // or more, 10 of them at 26.
    int differ = 0, at26 = 0, lowest = 1000;
    for (int levels = 2; levels <= 256; ++levels) {
        std::vector<Orv8u> src(256 * 9), dst(256 * 9);
        for (int s = 0; s < 256; ++s)
            std::fill(src.begin() + 9 * s, src.begin() + 9 * s + 9, Orv8u(s));
        ASSERT_EQ(orviReduceBits_8u_C1R(src.data(), 9, dst.data(), 9, {9, 256}, 0, orvDitherNone, levels, nullptr),
                  orvStatusOk);
        for (int s = 0; s < 256; ++s)
            if (dst[9 * s] != dst[9 * s + 8]) {
                ++differ;
                at26 += levels == 26;
                lowest = std::min(lowest, levels);
            }
    }
    EXPECT_EQ(differ, 45);
    EXPECT_EQ(at26, 10);
    EXPECT_EQ(lowest, 26);
    // Other destinations: 2 levels go to the ends of the range; noise is
    // ignored.
    EXPECT_EQ(row(orviReduceBits_16s_C1R, 1, 5, {10}, orvDitherNone, 2, 100),
              std::vector<Orv16s>(5, 32767));
    EXPECT_EQ(row(orviReduceBits_32f16u_C1R, 1, 5, {0.49f}, orvDitherNone, 2),
              std::vector<Orv16u>(5, 0));
    EXPECT_EQ(row(orviReduceBits_32f8u_C1R, 1, 5, {7.0f}, orvDitherNone, 256), std::vector<Orv8u>(5, 255));
}

TEST(ReduceBayer, ThresholdsOfTheMatrix)
{
    // 2 levels on constant 128: r = 128 against 255 k / 15, up for k 0..7.
    const int k[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
    for (int w : {4, 8, 9, 13}) {
        const auto out = row(orviReduceBits_8u_C1R, 1, w, {128}, orvDitherBayer, 2, 0, 8);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < w; ++x)
                ASSERT_EQ(out[y * w + x], k[y % 4][x % 4] < 8 ? 255 : 0) << x << "," << y;
        const auto c3 = row(orviReduceBits_8u_C3R, 3, w, {128, 128, 128}, orvDitherBayer, 2, 0, 4);
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 3 * w; ++x)
                ASSERT_EQ(c3[y * 3 * w + x], k[y % 4][(x / 3) % 4] < 8 ? 255 : 0);
    }
    // White with 8 levels: n * step is 254.99998, so the remainder passes
    // only the zero threshold (k = 0), where q overshoots to 291 and
    // saturates; elsewhere the output truncates to 254.
    const auto white = row(orviReduceBits_8u_C1R, 1, 8, {255}, orvDitherBayer, 8, 0, 4);
    for (int i = 0; i < 32; ++i)
        EXPECT_EQ(white[i], k[i / 8][i % 4] == 0 ? 255 : 254) << i;
    // 16-bit to bytes keeps the high byte of q: 256 levels, step 257.
    // 16-bit to bytes keeps the high byte of q: 256 levels, step 257, a
    // remainder of 100 moves up at k = 0 and 2, not at k = 8 and 10.
    EXPECT_EQ(row(orviReduceBits_16u8u_C1R, 1, 4, {257 * 100 + 100}, orvDitherBayer, 256),
              (std::vector<Orv8u>{101, 100, 101, 100}));
    // A white float source stays white under the widest noise.
    EXPECT_EQ(row(orviReduceBits_32f8u_C3R, 3, 9, {1.0f, 1.0f, 1.0f}, orvDitherBayer, 4, 100, 3),
              std::vector<Orv8u>(81, 255));
}

TEST(ReduceBayer, NoiseMovesOnlyThresholdsNearTheRemainder)
{
    // 1 percent of noise changes a pixel only where its remainder lies within
    // 1 percent of a step of its matrix threshold.
    const int w = 64, h = 16;
    std::mt19937 rng(3);
    std::vector<Orv8u> src(w * h), plain(w * h), noisy(w * h);
    for (auto& v : src)
        v = Orv8u(rng());
    auto buf = workBuffer(1, w, 1, orvDitherBayer);
    ASSERT_EQ(orviReduceBits_8u_C1R(src.data(), w, plain.data(), w, {w, h}, 0, orvDitherBayer, 5, nullptr), orvStatusOk);
    ASSERT_EQ(orviReduceBits_8u_C1R(src.data(), w, noisy.data(), w, {w, h}, 1, orvDitherBayer, 5, buf.data()),
              orvStatusOk);
    const int k[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
    const float step = 63.75f;
    int changed = 0;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const float r = std::fmod(float(src[y * w + x]), step);
            const float t = step * k[y % 4][x % 4] / 15.0f;
            if (std::fabs(r - t) > 0.011f * step) {
                ASSERT_EQ(plain[y * w + x], noisy[y * w + x]) << x << "," << y;
            }
            changed += plain[y * w + x] != noisy[y * w + x];
        }
    EXPECT_GT(changed, 0);
}

TEST(ReduceDiffusion, ValuesItMustGive)
{
    // Constant 128, 2 levels: 255, then the carried error pulls down to 0,
    // then up again.
    const auto fs = row(orviReduceBits_8u_C1R, 1, 6, {128}, orvDitherFloydSteinberg, 2);
    EXPECT_EQ(std::vector<Orv8u>(fs.begin(), fs.begin() + 3), (std::vector<Orv8u>{255, 0, 255}));
    // One pixel is the nearest level, an exact half going down.
    for (int dt : {1, 2, 3}) {
        EXPECT_EQ(row(orviReduceBits_8u_C1R, 1, 1, {51}, dt, 6)[0], 51);
        EXPECT_EQ(row(orviReduceBits_8u_C1R, 1, 1, {76}, dt, 6)[0], 51);  // 25.5 remainder: down
        EXPECT_EQ(row(orviReduceBits_8u_C1R, 1, 1, {77}, dt, 6)[0], 102);
        // All levels: integer sources come back unchanged.
        std::vector<Orv8u> src(300), dst(300);
        for (int i = 0; i < 300; ++i)
            src[i] = Orv8u(i * 7);
        auto buf = workBuffer(1, 30, 0, dt);
        ASSERT_EQ(orviReduceBits_8u_C1R(src.data(), 30, dst.data(), 30, {30, 10}, 0, dt, 256, buf.data()), orvStatusOk);
        EXPECT_EQ(src, dst);
    }
    // 16s to bytes: Floyd-Steinberg adds one half before the shift, the
    // wider kernels do not. 256 levels: step 257; -32768 + 257 * 3 + 128
    // keeps q = 771 + 128 = 899 ... one pixel: q is the level itself.
    const Orv16s s = Orv16s(-32768 + 257 * 3 + 128);  // r = 128 < half step: q = 771, (771 + .5) >> 8 = 3
    EXPECT_EQ(row(orviReduceBits_16s8u_C1R, 1, 1, {s}, 1, 256)[0], 3);
    const Orv16s s2 = Orv16s(-32768 + 255);  // q = 0 or 257: r = 255 > 128.5, up: 257 >> 8 = 1
    EXPECT_EQ(row(orviReduceBits_16s8u_C1R, 1, 1, {s2}, 3, 256)[0], 1);
    // A white area passes no error: the pixel after it is its own level.
    const auto wb = row(orviReduceBits_8u_C1R, 1, 2, {255}, 1, 3);
    EXPECT_EQ(wb, (std::vector<Orv8u>{255, 255}));
    // Float Floyd-Steinberg: below 2^-23 counts as zero.
    EXPECT_EQ(row(orviReduceBits_32f8u_C1R, 1, 3, {1e-8f}, 1, 4), std::vector<Orv8u>(3, 0));
}

// ---------------------------------------------------------------------------
// Vector paths against scalar forms, every pair and layout, plain and noise.

// Over the standard geometries: every method, with and without noise, as a
// vector run and a scalar-form run (for error diffusion: four rows at once
// against one row at a time).
template <class S, class D>
void sweepPair(Fn<S, D> c1, Fn<S, D> c3, Fn<S, D> ac4, Fn<S, D> c4, int levels)
{
    const std::pair<Fn<S, D>, int> fns[] = {{c1, 1}, {c3, 3}, {ac4, 4}, {c4, 4}};
    std::mt19937 rng(12345);
    ThreadCount one(1);  // threads have their own test; regions cost here
    std::vector<Geometry> geometries = standardSweep(int(sizeof(S) * sizeof(D)));
    // Taller: error diffusion runs bands of 16 rows and of 8, then single
    // rows.
    for (int w : {1, 2, 3, 6, 17, 300})
        geometries.push_back({w, w % 2 ? 40 : 37, 0, 2 * int(sizeof(S) * sizeof(D)), w % 2 == 0, 0});
    for (const Geometry& g : geometries) {
        for (auto [f, ch] : fns) {
            SCOPED_TRACE(testing::Message() << g.str() << ", " << ch << " channels");
            GuardedImage src = makeImage(g.width, g.height, ch * sizeof(S), g.srcPad, g.negative, g.endSlack);
            GuardedImage dv = makeImage(g.width, g.height, ch * sizeof(D), g.dstPad, g.negative, g.endSlack);
            GuardedImage ds = makeImage(g.width, g.height, ch * sizeof(D), g.dstPad, g.negative, g.endSlack);
            fillTypical<S>(src, rng);
            for (auto [dtype, noise] : {std::pair{0, 0}, std::pair{4, 0}, std::pair{4, 37}, std::pair{1, 0},
                                        std::pair{2, 0}, std::pair{3, 25}, std::pair{1, 60}}) {
                auto buf = workBuffer(ch, g.width, noise, dtype);
                auto call = [&](GuardedImage& d) {
                    return f(src.data<S>(), src.step(), d.data<D>(), d.step(), {g.width, g.height}, noise, dtype,
                             levels, buf.data() + 1);
                };
                ASSERT_EQ(call(dv), orvStatusOk);
                {
                    ScalarBlocks scalar;
                    ASSERT_EQ(call(ds), orvStatusOk);
                }
                ASSERT_EQ(dv.pixels(), ds.pixels()) << "dither " << dtype << " noise " << noise;
            }
            ASSERT_TRUE(dv.guardsIntact());
            ASSERT_TRUE(ds.guardsIntact());
        }
    }
}

#define SWEEP(pair, S, D, levels)                                                                            \
    sweepPair<S, D>(orviReduceBits_##pair##_C1R, orviReduceBits_##pair##_C3R, orviReduceBits_##pair##_AC4R, \
                    orviReduceBits_##pair##_C4R, levels)

TEST(ReduceVector, MatchesScalarForms)
{
    SWEEP(8u, Orv8u, Orv8u, 7);
    SWEEP(16u, Orv16u, Orv16u, 300);
    SWEEP(16s, Orv16s, Orv16s, 1000);
    SWEEP(16u8u, Orv16u, Orv8u, 17);
    SWEEP(16s8u, Orv16s, Orv8u, 256);
    SWEEP(32f8u, Orv32f, Orv8u, 5);
    SWEEP(32f16u, Orv32f, Orv16u, 4097);
    SWEEP(32f16s, Orv32f, Orv16s, 33);
}

// Bytes go through a map fitted per call where the levels are few; every
// byte value at every level count, plain and ordered, against the scalar
// form, on images large enough to take the map.
TEST(ReduceVector, ByteMapsAtEveryLevelCount)
{
    ThreadCount one(1);
    std::mt19937 rng(7);
    const std::pair<Fn<Orv8u, Orv8u>, int> fns[] = {{orviReduceBits_8u_C1R, 1},
                                                    {orviReduceBits_8u_C3R, 3},
                                                    {orviReduceBits_8u_AC4R, 4},
                                                    {orviReduceBits_8u_C4R, 4}};
    for (auto [f, ch] : fns) {
        const int w = 301, h = 32;  // the last pixel of a row takes the other form in C1
        GuardedImage src = makeImage(w, h, ch, 5, false, 0);
        fillTypical<Orv8u>(src, rng);
        for (int y = 0; y < 16; ++y)  // every value at every place in the matrix
            for (int i = 0; i < w * ch; ++i)
                src.data<Orv8u>()[y * src.step() + i] = Orv8u(i + 41 * y + y / 4);
        for (int dtype : {orvDitherNone, orvDitherBayer}) {
            for (int levels = 2; levels <= 256; levels += levels < 80 ? 1 : 44) {
                GuardedImage dv = makeImage(w, h, ch, 3, false, 0), ds = makeImage(w, h, ch, 3, false, 0);
                auto call = [&](GuardedImage& d) {
                    return f(src.data<Orv8u>(), src.step(), d.data<Orv8u>(), d.step(), {w, h}, 0, dtype, levels,
                             nullptr);
                };
                ASSERT_EQ(call(dv), orvStatusOk);
                {
                    ScalarBlocks scalar;
                    ASSERT_EQ(call(ds), orvStatusOk);
                }
                ASSERT_EQ(dv.pixels(), ds.pixels()) << ch << " channels, dither " << dtype << ", levels " << levels;
                ASSERT_TRUE(dv.guardsIntact());
            }
        }
    }
}

// ---------------------------------------------------------------------------
// Threads

// Runs f on a w x h image of random data for a thread count, with a buffer
// sized under that count.
template <class S, class D>
std::vector<uint8_t> runThreads(Fn<S, D> f, int ch, int w, int h, int threads, int dtype, int noise)
{
    ThreadCount tc(threads);
    std::mt19937 rng(w * 31 + h);
    GuardedImage src = makeImage(w, h, ch * sizeof(S), 0, false, 0);
    GuardedImage dst = makeImage(w, h, ch * sizeof(D), 0, false, 0);
    fillTypical<S>(src, rng);
    auto buf = workBuffer(ch == 4 ? 4 : ch, w, noise, dtype);
    EXPECT_EQ(f(src.data<S>(), src.step(), dst.data<D>(), dst.step(), {w, h}, noise, dtype, 9, buf.data()),
              orvStatusOk);
    EXPECT_TRUE(dst.guardsIntact());
    return dst.pixels();
}

TEST(ReduceThreads, OrderedAndPlainDoNotDependOnThreads)
{
    for (auto [w, h] : {std::pair{96, 96}, std::pair{97, 96}, std::pair{9217, 1}, std::pair{40, 300}}) {
        for (auto [dtype, noise] : {std::pair{0, 0}, std::pair{4, 0}, std::pair{4, 50}}) {
            const auto ref8 = runThreads(orviReduceBits_8u_C3R, 3, w, h, 1, dtype, noise);
            const auto ref4 = runThreads(orviReduceBits_32f16s_C4R, 4, w, h, 1, dtype, noise);
            for (int n : {2, 3, 7}) {
                ASSERT_EQ(runThreads(orviReduceBits_8u_C3R, 3, w, h, n, dtype, noise), ref8);
                ASSERT_EQ(runThreads(orviReduceBits_32f16s_C4R, 4, w, h, n, dtype, noise), ref4);
            }
        }
    }
}

// Channel c of an interleaved 8-bit image.
std::vector<uint8_t> channel(const std::vector<uint8_t>& px, int ch, int c)
{
    std::vector<uint8_t> out;
    for (std::size_t i = c; i < px.size(); i += ch)
        out.push_back(px[i]);
    return out;
}

TEST(ReduceThreads, DiffusionFollowsTheSectionPlan)
{
    for (int dtype : {1, 2, 3}) {
        for (int noise : {0, 20}) {
            // One channel: the same on any thread count.
            const auto one = runThreads(orviReduceBits_8u_C1R, 1, 50, 20, 1, dtype, noise);
            for (int n : {2, 3, 7})
                ASSERT_EQ(runThreads(orviReduceBits_8u_C1R, 1, 50, 20, n, dtype, noise), one);
            // C3: sections {0,1},{2} on 2 threads against {0},{1},{2} on 3
            // or more: only channel 1 differs.
            const auto c3two = runThreads(orviReduceBits_8u_C3R, 3, 50, 20, 2, dtype, noise);
            const auto c3three = runThreads(orviReduceBits_8u_C3R, 3, 50, 20, 3, dtype, noise);
            EXPECT_EQ(runThreads(orviReduceBits_8u_C3R, 3, 50, 20, 7, dtype, noise), c3three);
            EXPECT_EQ(runThreads(orviReduceBits_8u_C3R, 3, 50, 20, 2, dtype, noise), c3two);
            EXPECT_EQ(channel(c3two, 3, 0), channel(c3three, 3, 0));
            EXPECT_EQ(channel(c3two, 3, 2), channel(c3three, 3, 2));
            EXPECT_NE(channel(c3two, 3, 1), channel(c3three, 3, 1));
            // One thread: one pass, every channel after the first carries
            // the errors of the one before.
            const auto c3one = runThreads(orviReduceBits_8u_C3R, 3, 50, 20, 1, dtype, noise);
            EXPECT_EQ(channel(c3one, 3, 0), channel(c3three, 3, 0));
            EXPECT_EQ(channel(c3one, 3, 1), channel(c3two, 3, 1));
            EXPECT_NE(channel(c3one, 3, 2), channel(c3three, 3, 2));
            // C4: {0,1},{2},{3} on 3 threads; four or more all alike.
            const auto c4three = runThreads(orviReduceBits_8u_C4R, 4, 50, 20, 3, dtype, noise);
            const auto c4four = runThreads(orviReduceBits_8u_C4R, 4, 50, 20, 4, dtype, noise);
            EXPECT_EQ(runThreads(orviReduceBits_8u_C4R, 4, 50, 20, 7, dtype, noise), c4four);
            for (int c : {0, 2, 3})
                EXPECT_EQ(channel(c4three, 4, c), channel(c4four, 4, c));
            EXPECT_NE(channel(c4three, 4, 1), channel(c4four, 4, 1));
        }
    }
}

// ---------------------------------------------------------------------------
// Work buffer

TEST(ReduceBuffer, SizeQuery)
{
    int size = -1;
    EXPECT_EQ(orviReduceBitsGetBufferSize(1, {10, 0}, 0, 1, nullptr), orvStatusNullPointer);
    EXPECT_EQ(orviReduceBitsGetBufferSize(5, {0, 0}, 200, 9, &size), orvStatusBadSize);
    EXPECT_EQ(orviReduceBitsGetBufferSize(5, {10, 0}, 200, 9, &size), orvStatusBadChannels);
    EXPECT_EQ(orviReduceBitsGetBufferSize(9, {10, 0}, 101, 9, &size), orvStatusBadNoise);
    EXPECT_EQ(orviReduceBitsGetBufferSize(9, {10, 0}, -1, 9, &size), orvStatusBadNoise);
    EXPECT_EQ(orviReduceBitsGetBufferSize(9, {10, 0}, 100, 9, &size), orvStatusBadDitherType);
    EXPECT_EQ(size, -1);
    for (int threads : {1, 2, 3, 4, 7}) {
        ThreadCount tc(threads);
        const int t = std::min(threads, 4);
        for (int ch : {1, 3, 4, 9}) {
            auto q = [&](int noise, int dtype) {
                EXPECT_EQ(orviReduceBitsGetBufferSize(ch, {100, 0}, noise, dtype, &size), orvStatusOk);
                return size;
            };
            EXPECT_EQ(q(0, 0), 0);
            EXPECT_EQ(q(100, 0), 0);
            EXPECT_EQ(q(0, 4), 0);
            EXPECT_EQ(q(1, 4), 6144 + 48 + 64 + 64);
            EXPECT_EQ(q(0, 1), (8 * 100 + 16) * t + 64);
            EXPECT_EQ(q(0, 2), (12 * 100 + 48) * t + 64);
            EXPECT_EQ(q(5, 3), (12 * 100 + 48) * t + 6144 + 48 + 64 + 64);
        }
    }
}

TEST(ReduceBuffer, NothingOutsideTheReportedSize)
{
    // The buffer ends at a protected page and is filled with guard bytes
    // before it; every start alignment.
    for (int threads : {1, 4}) {
        ThreadCount tc(threads);
        for (auto [dtype, noise] : {std::pair{1, 0}, std::pair{2, 0}, std::pair{3, 9}, std::pair{1, 100}, std::pair{4, 1}}) {
            for (int ch : {1, 3, 4}) {
                const int w = 33, h = 7;
                int size = 0;
                ASSERT_EQ(orviReduceBitsGetBufferSize(ch, {w, h}, noise, dtype, &size), orvStatusOk);
                for (int slack = 0; slack < 64; slack += 9) {
                    GuardedImage buf(size, 1, size, slack);
                    std::vector<Orv16u> src(w * h * ch, 40000);
                    std::vector<Orv8u> dst(w * h * ch);
                    auto f = ch == 1 ? orviReduceBits_16u8u_C1R : ch == 3 ? orviReduceBits_16u8u_C3R : orviReduceBits_16u8u_C4R;
                    ASSERT_EQ(f(src.data(), w * ch * 2, dst.data(), w * ch, {w, h}, noise, dtype, 3, buf.data()), orvStatusOk);
                    ASSERT_TRUE(buf.guardsIntact());
                }
            }
        }
    }
}

// ---------------------------------------------------------------------------
// Checks, alpha, repeatability

TEST(ReduceFront, ChecksInOrderNothingWritten)
{
    Orv8u src[64] = {}, dst[64];
    std::memset(dst, 0x5a, sizeof dst);
    auto f = orviReduceBits_8u_C3R;
    EXPECT_EQ(f(nullptr, 3, dst, 3, {0, 0}, 200, 9, 1, nullptr), orvStatusNullPointer);
    EXPECT_EQ(f(src, 3, nullptr, 3, {0, 0}, 200, 9, 1, nullptr), orvStatusNullPointer);
    EXPECT_EQ(f(src, 3, dst, 3, {0, 1}, 200, 9, 1, nullptr), orvStatusBadSize);
    EXPECT_EQ(f(src, 3, dst, 3, {1, 0}, 200, 9, 1, nullptr), orvStatusBadSize);
    EXPECT_EQ(f(src, 3, dst, 3, {1, 1}, 101, 9, 1, nullptr), orvStatusBadNoise);
    EXPECT_EQ(f(src, 3, dst, 3, {1, 1}, -1, 0, 4, nullptr), orvStatusBadNoise);
    EXPECT_EQ(f(src, 3, dst, 3, {1, 1}, 0, 9, 1, nullptr), orvStatusBadLevels);
    EXPECT_EQ(f(src, 3, dst, 3, {1, 1}, 0, 9, 257, nullptr), orvStatusBadLevels);
    EXPECT_EQ(f(src, 3, dst, 3, {1, 1}, 0, 9, 256, nullptr), orvStatusBadDitherType);
    EXPECT_EQ(f(src, 3, dst, 3, {1, 1}, 0, -1, 256, nullptr), orvStatusBadDitherType);
    // The work buffer: needed by diffusion and every noise form.
    for (int dt : {1, 2, 3})
        EXPECT_EQ(f(src, 3, dst, 3, {1, 1}, 0, dt, 2, nullptr), orvStatusNullPointer);
    EXPECT_EQ(f(src, 3, dst, 3, {1, 1}, 1, 4, 2, nullptr), orvStatusNullPointer);
    EXPECT_EQ(orviReduceBits_16u_C1R(reinterpret_cast<Orv16u*>(src), 2, reinterpret_cast<Orv16u*>(dst), 2, {1, 1}, 0,
                                     0, 65537, nullptr), orvStatusBadLevels);
    for (Orv8u b : dst)
        ASSERT_EQ(b, 0x5a);
    // Not needed by the plain quantiser and plain ordered dither.
    EXPECT_EQ(f(src, 3, dst, 3, {1, 1}, 100, 0, 2, nullptr), orvStatusOk);
    EXPECT_EQ(f(src, 3, dst, 3, {1, 1}, 0, 4, 2, nullptr), orvStatusOk);
    EXPECT_EQ(orviReduceBits_16u_C1R(reinterpret_cast<Orv16u*>(src), 2, reinterpret_cast<Orv16u*>(dst), 2, {1, 1}, 0,
                                     0, 65536, nullptr), orvStatusOk);
}

TEST(ReduceFront, AlphaKeptAndCallsRepeat)
{
    std::mt19937 rng(5);
    const int w = 37, h = 5;
    for (auto [dtype, noise] : {std::pair{0, 0}, std::pair{1, 0}, std::pair{2, 30}, std::pair{3, 0}, std::pair{4, 0}, std::pair{4, 60}}) {
        std::vector<Orv32f> src(w * h * 4);
        for (auto& v : src)
            v = std::uniform_real_distribution<float>(0, 1)(rng);
        std::vector<Orv16u> a(w * h * 4), b(w * h * 4, 7);
        for (auto& v : a)
            v = Orv16u(rng());
        const auto before = a;
        auto buf = workBuffer(9, w, noise, dtype);
        ASSERT_EQ(orviReduceBits_32f16u_AC4R(src.data(), w * 16, a.data(), w * 8, {w, h}, noise, dtype, 6, buf.data()), orvStatusOk);
        for (std::size_t i = 3; i < a.size(); i += 4)
            ASSERT_EQ(a[i], before[i]);
        // Same call again, into another destination: the same levels.
        ASSERT_EQ(orviReduceBits_32f16u_AC4R(src.data(), w * 16, b.data(), w * 8, {w, h}, noise, dtype, 6, buf.data()), orvStatusOk);
        for (std::size_t i = 0; i < a.size(); ++i)
            if (i % 4 != 3) {
                ASSERT_EQ(a[i], b[i]) << i;
            }
    }
}

// ---------------------------------------------------------------------------
// One bit per pixel

TEST(ReduceOneBit, ThresholdAndPlacement)
{
    const Orv8u src[10] = {0, 200, 10, 11, 255, 10, 0, 12, 99, 10};
    for (int off : {0, 3, 8, 11}) {
        Orv8u dst[3] = {0x5A, 0x5A, 0x5A};
        ASSERT_EQ(orviReduceBits_8u1u_C1R(src, 10, dst, 3, off, {10, 1}, 0, 0, 0, 10, nullptr), orvStatusOk);
        // Bits 0 1 0 1 1 0 0 1 1 0 (above 10), from bit 7 - off % 8.
        const uint32_t bits = 0x166u;  // 0101100110
        uint32_t want = 0x5A5A5A;
        for (int i = 0; i < 10; ++i) {
            const int pos = 23 - (off % 8) - i;
            want = (want & ~(1u << pos)) | (((bits >> (9 - i)) & 1u) << pos);
        }
        EXPECT_EQ((uint32_t(dst[0]) << 16) | (uint32_t(dst[1]) << 8) | dst[2], want) << off;
    }
    // A width inside the first byte keeps the bits on both sides.
    Orv8u one = 0xFF;
    const Orv8u zeros[2] = {0, 0};
    ASSERT_EQ(orviReduceBits_8u1u_C1R(zeros, 2, &one, 1, 2, {2, 1}, 0, 0, 0, 0, nullptr), orvStatusOk);
    EXPECT_EQ(one, 0xCF);
    // Checks.
    EXPECT_EQ(orviReduceBits_8u1u_C1R(nullptr, 2, &one, 1, 0, {0, 1}, 0, 0, 0, 0, nullptr), orvStatusNullPointer);
    EXPECT_EQ(orviReduceBits_8u1u_C1R(zeros, 2, &one, 1, -1, {1, 1}, 0, 0, 0, 0, nullptr), orvStatusBadSize);
    EXPECT_EQ(orviReduceBits_8u1u_C1R(zeros, 2, &one, 1, 0, {1, 1}, 0, 0, 1, 0, nullptr), orvStatusBadDitherType);
    EXPECT_EQ(orviReduceBits_8u1u_C1R(zeros, 2, &one, 1, 0, {1, 1}, 0, 0, 3, 0, nullptr), orvStatusNullPointer);
    EXPECT_EQ(one, 0xCF);
}

TEST(ReduceOneBit, StuckiInFixedPoint)
{
    const int w = 40, h = 12;
    std::vector<Orv8u> buf(12 * w + 48 + 64);
    // Black stays black at threshold 0.
    std::vector<Orv8u> src(w * h, 0), dst(5 * h, 0xFF);
    ASSERT_EQ(orviReduceBits_8u1u_C1R(src.data(), w, dst.data(), 5, 0, {w, h}, 0, 0, 3, 0, buf.data()), orvStatusOk);
    EXPECT_EQ(dst, std::vector<Orv8u>(5 * h, 0));
    // Mid gray at threshold 127 comes out near half ones; the first pixel
    // (acc = 128 << 13 above 127 << 13) is one, the second gets its error.
    std::fill(src.begin(), src.end(), 128);
    ASSERT_EQ(orviReduceBits_8u1u_C1R(src.data(), w, dst.data(), 5, 0, {w, h}, 0, 0, 3, 127, buf.data()), orvStatusOk);
    int ones = 0;
    for (Orv8u b : dst)
        ones += __builtin_popcount(b);
    EXPECT_NEAR(ones, w * h / 2, w * h / 20);
    EXPECT_EQ(dst[0] >> 6, 2);
}

}  // namespace
