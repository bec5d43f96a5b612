// Tone mapping: vector paths against the scalar form, statuses, the gain and
// its conversion, wrapping against clamping, the source row rule, overlap.
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "frame/primitives/primitives.h"
#include "support/image.h"

using namespace orvtest;

namespace {

using Fn = OrvStatus (*)(const Orv32f*, int, Orv8u*, int, RoiSize);

TEST(ToneMap, VectorPathsMatchScalarForm)
{
    for (Fn f : {orviToneMapLinear_32f8u_C1R, orviToneMapMean_32f8u_C1R}) {
        for (auto [lo, hi] : {std::pair{0.0, 1000.0}, std::pair{-50.0, 3.0e9}, std::pair{-1.0, 1.0}}) {
            expectVectorMatchesScalar(
                4, 1, 4, [&](GuardedImage& img, std::mt19937& rng) { img.fill<float>(rng, lo, hi); },
                [&](GuardedImage& s, GuardedImage& d, RoiSize roi) {
                    return f(s.data<Orv32f>(), s.step(), d.data(), d.step(), roi);
                });
        }
    }
}

// One row through a tone map.
std::vector<Orv8u> map(Fn f, std::vector<float> v, OrvStatus expect = orvStatusOk)
{
    const int w = int(v.size());
    std::vector<Orv8u> out(w, 0x77);
    EXPECT_EQ(f(v.data(), 4 * w, out.data(), w, {w, 1}), expect);
    return out;
}

TEST(ToneMap, StatusesAndFills)
{
    for (Fn f : {orviToneMapLinear_32f8u_C1R, orviToneMapMean_32f8u_C1R}) {
        // All negative: nothing done, destination as it was.
        EXPECT_EQ(map(f, {-1.0f, -2.0f, -0.5f}, orvStatusNothingDone), std::vector<Orv8u>(3, 0x77));
        // Zeros or values no larger than the smallest normal: zeros.
        EXPECT_EQ(map(f, std::vector<float>(40, 0.0f)), std::vector<Orv8u>(40, 0));
        EXPECT_EQ(map(f, {1.0e-39f, 1.17549435e-38f, 0.0f}), std::vector<Orv8u>(3, 0));
    }
    // The mean form tests twice the mean: mean 0 with signs mixed fills 0.
    EXPECT_EQ(map(orviToneMapMean_32f8u_C1R, {-3.0f, 3.0f, 5.0f, -5.0f}), std::vector<Orv8u>(4, 0));
    // A NaN first element is the maximum: zeros.
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(map(orviToneMapLinear_32f8u_C1R, {nan, 5.0f, 7.0f}), std::vector<Orv8u>(3, 0));
}

TEST(ToneMap, LinearGainWrapsWithoutClamp)
{
    // Maximum 85: gain 3 exactly; -1 gives -3, stored as 253.
    EXPECT_EQ(map(orviToneMapLinear_32f8u_C1R, {85.0f, -1.0f, 10.0f, 0.5f}), (std::vector<Orv8u>{255, 253, 30, 1}));
    // The maximum maps to 255 or, where 255 / m * m falls short, to 254.
    std::mt19937 rng(3);
    int seen254 = 0, seen255 = 0;
    for (int k = 0; k < 2000; ++k) {
        const float m = std::uniform_real_distribution<float>(1.0f, 1000.0f)(rng);
        const float gain = 255.0f / m;
        const Orv8u expect = gain * m < 255.0f ? 254 : 255;
        (expect == 254 ? seen254 : seen255)++;
        for (int w : {1, 9, 33}) {
            std::vector<float> v(w, m / 2);
            v[w - 1] = m;
            ASSERT_EQ(map(orviToneMapLinear_32f8u_C1R, v)[w - 1], expect) << m;
        }
    }
    EXPECT_GT(seen254, 0);
    EXPECT_GT(seen255, 0);
    // Infinity: gain 0, every result 0 (infinity times 0 is NaN, cut to -2^31).
    const float inf = std::numeric_limits<float>::infinity();
    EXPECT_EQ(map(orviToneMapLinear_32f8u_C1R, {inf, 1.0f, 100.0f, -4.0f, 1.0f, 2.0f, 3.0f, 4.0f, 5.0f}),
              std::vector<Orv8u>(9, 0));
}

TEST(ToneMap, MeanGainClamps)
{
    // Mean 10, twice the mean 20: values at or above 20 give 255, negative 0.
    std::vector<float> v = {20.0f, 40.0f, -20.0f, 0.0f, 10.0f, 5.0f, 25.0f, 40.0f, -30.0f, 10.0f};
    std::vector<Orv8u> expect = {255, 255, 0, 0, 127, 63, 255, 255, 0, 127};
    for (int rep : {1, 4}) {  // 10 and 40 values: single and vector paths
        std::vector<float> in;
        std::vector<Orv8u> out;
        for (int r = 0; r < rep; ++r) {
            in.insert(in.end(), v.begin(), v.end());
            out.insert(out.end(), expect.begin(), expect.end());
        }
        EXPECT_EQ(map(orviToneMapMean_32f8u_C1R, in), out);
    }
    // One pixel: linear 255 or 254, mean 127 (127.5 cut).
    for (float x : {1.0f, 3.0f, 0.1f, 12345.678f}) {
        const Orv8u lin = map(orviToneMapLinear_32f8u_C1R, {x})[0];
        EXPECT_TRUE(lin == 255 || lin == 254) << x;
        EXPECT_EQ(map(orviToneMapMean_32f8u_C1R, {x})[0], 127) << x;
    }
    // An extreme value past 2^31 / gain gives 0 in both forms, not 255.
    // Linear: a negative value far past -2^31 / gain also gives 0.
    EXPECT_EQ(map(orviToneMapLinear_32f8u_C1R, {1.0f, -1.0e12f}), (std::vector<Orv8u>{255, 0}));
    std::vector<float> spike(40, 1.0f);
    spike[17] = 1.0e12f;  // mean about 2.5e10: gain about 5e-9; p of 1e12 about 5100
    const auto mean = map(orviToneMapMean_32f8u_C1R, spike);
    EXPECT_EQ(mean[17], 255);
    std::vector<float> wide(40, 1.0f);
    wide[5] = 1.0e12f;
    wide[6] = -1.0e12f;  // mean 38/40: gain about 134, 1e12 * 134 overflows
    const auto w = map(orviToneMapMean_32f8u_C1R, wide);
    EXPECT_EQ(w[5], 0);
    EXPECT_EQ(w[6], 0);
    EXPECT_EQ(w[0], Orv8u(float(255.0 / 1.9)));
}

TEST(ToneMap, SourceRowsStartAtTheStepRoundedDownPerRow)
{
    // A step of 4 * 5 + 2 bytes: row y starts at float floor(y * 22 / 4).
    const int w = 5, h = 4, step = 22;
    std::vector<float> buf(64);
    for (int i = 0; i < 64; ++i)
        buf[i] = float(i % 13) + 1.0f;
    for (Fn f : {orviToneMapLinear_32f8u_C1R, orviToneMapMean_32f8u_C1R}) {
        const bool linear = f == orviToneMapLinear_32f8u_C1R;
        std::vector<Orv8u> out(w * h, 0);
        ASSERT_EQ(f(buf.data(), step, out.data(), w, {w, h}), orvStatusOk);
        // The statistic is taken over rows at byte offsets y * step.
        float gain;
        if (linear) {
            float m = 0;
            h9::orviMax_32f_C1R(buf.data(), step, {w, h}, &m);
            gain = 255.0f / m;
        } else {
            double mean = 0;
            h9::orviMean_32f_C1R(buf.data(), step, {w, h}, &mean, 1);
            gain = float(255.0 / (mean + mean));
        }
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const long p = std::lround(std::trunc(gain * buf[y * step / 4 + x]));
                const Orv8u e = linear ? Orv8u(p) : Orv8u(p < 0 ? 0 : p > 255 ? 255 : p);
                EXPECT_EQ(out[y * w + x], e) << y << " " << x;
            }
    }
}

TEST(ToneMap, OverlappingRowsGoLeftToRight)
{
    std::mt19937 rng(17);
    for (Fn f : {orviToneMapLinear_32f8u_C1R, orviToneMapMean_32f8u_C1R}) {
        for (int w : {3, 8, 40, 77}) {
            std::vector<float> src(w * 3);
            for (auto& v : src)
                v = std::uniform_real_distribution<float>(0, 100)(rng);
            std::vector<Orv8u> expect(w * 3);
            ASSERT_EQ(f(src.data(), 4 * w, expect.data(), w, {w, 3}), orvStatusOk);
            // The destination over the source, same step.
            std::vector<float> inplace = src;
            Orv8u* d = reinterpret_cast<Orv8u*>(inplace.data());
            ASSERT_EQ(f(inplace.data(), 4 * w, d, 4 * w, {w, 3}), orvStatusOk);
            for (int y = 0; y < 3; ++y)
                ASSERT_EQ(std::memcmp(d + 4 * w * y, expect.data() + w * y, w), 0) << w;
            // A destination 100 bytes ahead of its source row: values still
            // to be read are overwritten on the way, exactly as a left to
            // right walk over single values does.
            std::vector<float> buf = src, sim = src;
            float gain;
            if (f == orviToneMapLinear_32f8u_C1R) {
                float m = 0;
                h9::orviMax_32f_C1R(src.data(), 4 * w, {w, 1}, &m);
                gain = 255.0f / m;
            } else {
                double mean = 0;
                h9::orviMean_32f_C1R(src.data(), 4 * w, {w, 1}, &mean, 1);
                gain = float(255.0 / (mean + mean));
            }
            Orv8u* simBytes = reinterpret_cast<Orv8u*>(sim.data()) + 100;
            for (int x = 0; x < w && 100 + x < 4 * 3 * w; ++x) {
                float v;
                std::memcpy(&v, reinterpret_cast<Orv8u*>(sim.data()) + 4 * x, 4);
                const float p = std::trunc(gain * v);
                const long i = std::isfinite(p) && std::fabs(p) < 2147483648.0f ? long(p) : long(INT32_MIN);
                simBytes[x] = f == orviToneMapLinear_32f8u_C1R ? Orv8u(i) : Orv8u(i < 0 ? 0 : i > 255 ? 255 : i);
            }
            if (100 + w <= 4 * 3 * w) {
                ASSERT_EQ(f(buf.data(), 4 * w, reinterpret_cast<Orv8u*>(buf.data()) + 100, 4 * w, {w, 1}), orvStatusOk);
                ASSERT_EQ(std::memcmp(buf.data(), sim.data(), 4 * 3 * w), 0) << w;
            }
        }
    }
}

TEST(ToneMap, ChecksInOrderAndNothingWrittenOnFailure)
{
    const float src[4] = {1, 2, 3, 4};
    Orv8u dst[4] = {9, 9, 9, 9};
    for (Fn f : {orviToneMapLinear_32f8u_C1R, orviToneMapMean_32f8u_C1R}) {
        EXPECT_EQ(f(nullptr, 4, nullptr, 4, {0, 0}), orvStatusNullPointer);
        EXPECT_EQ(f(nullptr, 4, dst, 4, {0, 0}), orvStatusNullPointer);
        EXPECT_EQ(f(src, 4, nullptr, 4, {0, 0}), orvStatusNullPointer);
        EXPECT_EQ(f(src, 4, dst, 4, {0, 1}), orvStatusBadSize);
        EXPECT_EQ(f(src, 4, dst, 4, {1, 0}), orvStatusBadSize);
        EXPECT_EQ(f(src, 4, dst, 4, {1, -1}), orvStatusBadSize);
    }
    for (Orv8u b : dst)
        EXPECT_EQ(b, 9);
}

}  // namespace
