// Internal primitives: every copy and fill path writes the bytes of a plain
// copy or fill and nothing else, the dispatchers pick their paths at the
// documented thresholds, the statistics agree between vector and scalar
// forms, and the signal and 4:2:2 helpers compute what they say.
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <vector>

#include "frame/fpmode.h"
#include "frame/primitives/primitives.h"
#include "support/image.h"

using namespace orvtest;
using namespace h9;

namespace {

int32_t cacheFails(int32_t*) { return -1; }
int32_t cache8M(int32_t* p)
{
    *p = 8 << 20;
    return 0;
}
int32_t cache1M(int32_t* p)
{
    *p = 1 << 20;
    return 0;
}
int calls = 0;
int32_t cacheCounted(int32_t* p)
{
    ++calls;
    *p = 1 << 20;
    return 0;
}

// Source and destination images of one geometry, the source random, the
// destination filled with a marker.
struct Pair {
    Pair(int width, int height, int srcStep, int dstStep, int slack = 0)
        : src(width, height, srcStep, slack), dst(width, height, dstStep, slack)
    {
        std::mt19937 rng(width * 31 + height);
        src.fillBytes(rng);
        dst.fillValue<uint8_t>(0x3C);
    }
    void expectCopied() const
    {
        ASSERT_EQ(dst.pixels(), src.pixels());
        ASSERT_TRUE(dst.guardsIntact());
    }
    GuardedImage src, dst;
};

using RectFn = void (*)(const Orv8u*, int, Orv8u*, int, int, int);

TEST(Copy, EveryRectanglePathCopiesTheRectangleOnly)
{
    struct Case {
        RectFn fn;
        bool aligned;  // needs dst, dstStep 64-aligned and width % 32 == 0
    };
    const Case cases[] = {{owniCopy_8u_thin, false}, {owniCopy_8u_strm, true}, {owniCopy_8u_strmfull, false},
                          {owniCopy_8u_inv, true},   {owniCopy_8u_fwd, true},  {owniCopy_8u_fwdfull, false}};
    for (const Case& c : cases) {
        for (int w : {1, 31, 32, 63, 64, 65, 511, 512, 544, 1000, 1024}) {
            if (c.aligned && w % 32)
                continue;
            for (int h : {1, 3}) {
                for (bool neg : {false, true}) {
                    const int dstStep = c.aligned ? (w + 63) / 64 * 64 + 64 : w + 5;
                    const int slack = c.aligned ? (64 - w % 64) % 64 : w % 3;  // aligned destination rows
                    Pair p(w, h, neg ? -(w + 3) : w + 3, neg ? -dstStep : dstStep, slack);
                    c.fn(p.src.data(), p.src.step(), p.dst.data(), p.dst.step(), w, h);
                    SCOPED_TRACE(::testing::Message() << "width " << w << " height " << h << " neg " << neg);
                    p.expectCopied();
                }
            }
        }
    }
}

TEST(Copy, RectangleDispatchFollowsWidthAreaAndCache)
{
    alignas(64) static Orv8u buf[2][8192];
    const Orv8u* s = buf[0];
    const Orv8u* d = buf[1];  // 8192 bytes apart: page distance 0
    // Tight steps make one block, as long as the area fits 31 bits.
    EXPECT_EQ(chooseRectCopy(s, 100, d, 100, 100, 7, cacheFails), RectCopyPath::Block);
    EXPECT_EQ(chooseRectCopy(s, 65536, d, 65536, 65536, 32768, cacheFails), RectCopyPath::Inverse);  // 2^31
    EXPECT_EQ(chooseRectCopy(s, 65536, d, 65536, 65536, 32769, cacheFails), RectCopyPath::Stream);
    // 511 is thin, 512 is wide.
    EXPECT_EQ(chooseRectCopy(s, 600, d, 600, 511, 2, cacheFails), RectCopyPath::Thin);
    EXPECT_EQ(chooseRectCopy(s, 600, d + 1, 600, 512, 2, cacheFails), RectCopyPath::ForwardFull);
    // Aligned destination: equal steps and a small page distance go backward.
    EXPECT_EQ(chooseRectCopy(s, 1024, d, 1024, 512, 2, cacheFails), RectCopyPath::Inverse);
    EXPECT_EQ(chooseRectCopy(s + 64, 1024, d, 1024, 512, 2, cacheFails), RectCopyPath::Forward);   // -64 wraps
    EXPECT_EQ(chooseRectCopy(s, 1024, d + 160, 1024, 512, 2, cacheFails), RectCopyPath::Forward);  // 160
    EXPECT_EQ(chooseRectCopy(s, 1024, d + 128, 1024, 512, 2, cacheFails), RectCopyPath::Inverse);  // 128
    EXPECT_EQ(chooseRectCopy(s, 1056, d, 1024, 512, 2, cacheFails), RectCopyPath::Forward);
    // Streaming above 0x300000 bytes and at least half the cache.
    const int w = 1024, hAbove = 0x300000 / w + 1, hAt = 0x300000 / w;
    EXPECT_EQ(chooseRectCopy(s, 2048, d, 2048, w, hAbove, cache1M), RectCopyPath::Stream);
    EXPECT_EQ(chooseRectCopy(s, 2048, d + 32, 2048, w, hAbove, cache1M), RectCopyPath::StreamFull);
    EXPECT_EQ(chooseRectCopy(s, 2048, d, 2048, w, hAt, cache1M), RectCopyPath::Inverse);
    EXPECT_EQ(chooseRectCopy(s, 2048, d, 2048, w, hAbove, cacheFails), RectCopyPath::Inverse);
    EXPECT_EQ(chooseRectCopy(s, 8192, d, 8192, 4096, 1024, cache8M), RectCopyPath::Stream);      // 4M >= 4M
    EXPECT_EQ(chooseRectCopy(s, 8192, d, 8192, 4096, 1023, cache8M), RectCopyPath::Inverse);     // just under
    // The cache is asked only for large rectangles.
    calls = 0;
    chooseRectCopy(s, 2048, d, 2048, w, hAt, cacheCounted);
    EXPECT_EQ(calls, 0);
    chooseRectCopy(s, 2048, d, 2048, w, hAbove, cacheCounted);
    EXPECT_EQ(calls, 1);
}

TEST(Copy, EveryBlockPathCopiesTheBlockOnly)
{
    using BlockFn = void (*)(const Orv8u*, Orv8u*, std::size_t);
    for (BlockFn fn : {BlockFn(ownsCopy_8u_G9), BlockFn(ownsCopy_8u_repG9), BlockFn(blockCopyStreamed),
                       BlockFn(blockCopyBackward)}) {
        for (int n : {1, 2, 3, 4, 7, 8, 15, 16, 17, 31, 32, 33, 63, 64, 65, 127, 128, 129, 200, 4096, 32768, 40001}) {
            for (int slack : {0, 1, 13, 32}) {
                Pair p(n, 1, n, n, slack);
                fn(p.src.data(), p.dst.data(), std::size_t(n));
                SCOPED_TRACE(::testing::Message() << "n " << n << " slack " << slack);
                p.expectCopied();
            }
        }
    }
    // The aligned halves by themselves.
    for (auto fn : {ownsCopy_8u_inv, ownsCopy_8u_nt}) {
        Pair p(640, 1, 640, 640);
        fn(p.src.data(), p.dst.data(), 640);
        _mm_sfence();
        p.expectCopied();
    }
}

TEST(Copy, BlockDispatchFollowsSizeCacheAndPageDistance)
{
    alignas(64) static Orv8u buf[16384];
    const Orv8u* s = buf;
    EXPECT_EQ(chooseBlockCopy(s, buf + 8192, 32768, cacheFails), BlockCopyPath::Inverse);
    EXPECT_EQ(chooseBlockCopy(s, buf + 8192 + 159, 32768, cacheFails), BlockCopyPath::Inverse);
    EXPECT_EQ(chooseBlockCopy(s, buf + 8192 + 160, 32768, cacheFails), BlockCopyPath::Rep);
    EXPECT_EQ(chooseBlockCopy(s + 1, buf + 8192, 32768, cacheFails), BlockCopyPath::Rep);  // wraps below 0
    EXPECT_EQ(chooseBlockCopy(s, buf + 8192, 0x400001, cache8M), BlockCopyPath::Stream);
    EXPECT_EQ(chooseBlockCopy(s, buf + 8192, 0x400000, cache1M), BlockCopyPath::Inverse);
    EXPECT_EQ(chooseBlockCopy(s, buf + 8192, 0x400001, cacheFails), BlockCopyPath::Inverse);
    auto cache10M = [](int32_t* p) -> int32_t {
        *p = 10 << 20;
        return 0;
    };
    EXPECT_EQ(chooseBlockCopy(s, buf + 8192, (5 << 20) - 1, cache10M), BlockCopyPath::Inverse);
    EXPECT_EQ(chooseBlockCopy(s, buf + 8192, 5 << 20, cache10M), BlockCopyPath::Stream);
}

// The entry points over the sweep: padded, odd and negative steps.
TEST(Copy, RectangleAndSignalCopiesOverWidthsAndSteps)
{
    for (const Geometry& g : standardSweep()) {
        SCOPED_TRACE(g.str());
        const int sign = g.negative ? -1 : 1;
        for (auto fn : {orviCopy_8u_C1R, orviCopy_8u_C1R_L}) {
            Pair p(g.width, g.height, sign * (g.width + g.srcPad), sign * (g.width + g.dstPad), g.endSlack);
            ASSERT_EQ(fn(p.src.data(), p.src.step(), p.dst.data(), p.dst.step(), {g.width, g.height}), orvStatusOk);
            p.expectCopied();
        }
    }
    for (int n : {1, 100, 32767, 32768, 100000}) {
        Pair p(n, 1, n, n, 3);
        ASSERT_EQ(orvsCopy_8u(p.src.data(), p.dst.data(), n), orvStatusOk);
        p.expectCopied();
        Pair w(4 * n, 1, 4 * n, 4 * n);
        ASSERT_EQ(orvsCopy_32f(w.src.data<Orv32f>(), w.dst.data<Orv32f>(), n), orvStatusOk);
        w.expectCopied();
    }
}

TEST(Copy, ChecksInOrderAndNothingWrittenOnFailure)
{
    Orv8u s[16] = {1}, d[16];
    std::memset(d, 0x77, sizeof d);
    for (auto fn : {orviCopy_8u_C1R, orviCopy_8u_C1R_L}) {
        EXPECT_EQ(fn(nullptr, 4, nullptr, 4, {0, 0}), orvStatusNullPointer);
        EXPECT_EQ(fn(s, 4, nullptr, 4, {0, 0}), orvStatusNullPointer);
        EXPECT_EQ(fn(s, 4, d, 4, {0, 1}), orvStatusBadSize);
        EXPECT_EQ(fn(s, 4, d, 4, {1, 0}), orvStatusBadSize);
    }
    EXPECT_EQ(orviSet_8u_C1R(1, nullptr, 4, {0, 0}), orvStatusNullPointer);
    EXPECT_EQ(orviSet_8u_C1R(1, d, 4, {4, -1}), orvStatusBadSize);
    EXPECT_EQ(orvsCopy_8u(nullptr, d, 0), orvStatusNullPointer);
    EXPECT_EQ(orvsCopy_8u(s, d, 0), orvStatusBadSize);
    EXPECT_EQ(orvsCopy_32s(nullptr, nullptr, 1), orvStatusNullPointer);
    EXPECT_EQ(orvsCopy_32f(reinterpret_cast<Orv32f*>(s), reinterpret_cast<Orv32f*>(d), -3), orvStatusBadSize);
    EXPECT_EQ(orvsSet_32f(1.0f, nullptr, 0), orvStatusNullPointer);
    EXPECT_EQ(orvsSet_32f(1.0f, reinterpret_cast<Orv32f*>(d), 0), orvStatusBadSize);
    for (auto fn : {orvsAddC_32f, orvsSubC_32f})
        for (float v : {0.0f, 2.0f}) {
            EXPECT_EQ(fn(nullptr, v, reinterpret_cast<Orv32f*>(d), 0), orvStatusNullPointer);
            EXPECT_EQ(fn(reinterpret_cast<Orv32f*>(s), v, nullptr, 1), orvStatusNullPointer);
            EXPECT_EQ(fn(reinterpret_cast<Orv32f*>(s), v, reinterpret_cast<Orv32f*>(d), 0), orvStatusBadSize);
        }
    for (Orv8u b : d)
        ASSERT_EQ(b, 0x77);
}

TEST(Fill, EveryPathFillsTheRectangleOnly)
{
    using RowsFn = void (*)(Orv8u, Orv8u*, std::ptrdiff_t, std::size_t, int);
    for (RowsFn fn : {setRowsStreamed, setRowsAligned}) {
        for (int w : {1, 5, 63, 64, 65, 100, 128, 1000}) {
            for (int step : {w, w + 3, -(w + 7)}) {
                GuardedImage img(w, 3, step, w % 7);
                fn(0xE1, img.data(), step, std::size_t(w), 3);
                ASSERT_EQ(img.pixels(), std::vector<uint8_t>(std::size_t(w) * 3, 0xE1)) << w << " " << step;
                ASSERT_TRUE(img.guardsIntact());
            }
        }
    }
    using WordsFn = void (*)(int32_t, int32_t*, std::size_t);
    for (WordsFn fn : {ownsSet_32s_G9, setWordsStreamed}) {
        for (int n : {1, 7, 8, 9, 31, 32, 33, 100, 1000}) {
            GuardedImage img(4 * n, 1, 4 * n, 4 * (n % 5));
            fn(0x12345678, img.data<int32_t>(), std::size_t(n));
            std::vector<int32_t> got(n);
            std::memcpy(got.data(), img.data(), 4 * std::size_t(n));
            ASSERT_EQ(got, std::vector<int32_t>(n, 0x12345678)) << n;
            ASSERT_TRUE(img.guardsIntact());
        }
    }
    // The entry points over the sweep.
    for (const Geometry& g : standardSweep()) {
        GuardedImage img = makeImage(g.width, g.height, 1, g.dstPad, g.negative, g.endSlack);
        ASSERT_EQ(orviSet_8u_C1R(9, img.data(), img.step(), {g.width, g.height}), orvStatusOk);
        ASSERT_EQ(img.pixels(), std::vector<uint8_t>(std::size_t(g.width) * g.height, 9)) << g.str();
        ASSERT_TRUE(img.guardsIntact()) << g.str();
        GuardedImage f = makeImage(g.width, 1, 4, 0, false, 4 * (g.endSlack % 4));
        ASSERT_EQ(orvsSet_32f(-0.0f, f.data<Orv32f>(), g.width), orvStatusOk);
        for (int i = 0; i < g.width; ++i)
            ASSERT_TRUE(std::signbit(f.data<Orv32f>()[i]));
        ASSERT_TRUE(f.guardsIntact());
    }
}

TEST(Fill, DispatchFollowsSizeAndCache)
{
    EXPECT_EQ(chooseSetRect(65536, 65536, 65536, cacheFails), SetRectPath::Stream);  // 17 + 17 bits
    EXPECT_EQ(chooseSetRect(65535, 32768, 65535, cacheFails), SetRectPath::Stream);  // 16 + 16
    EXPECT_EQ(chooseSetRect(65535, 16384, 65535, cacheFails), SetRectPath::Aligned);  // 16 + 15
    EXPECT_EQ(chooseSetRect(4096, 0x600000 / 4096 + 1, 4096, cache1M), SetRectPath::Stream);
    EXPECT_EQ(chooseSetRect(4096, 0x600000 / 4096, 4096, cache1M), SetRectPath::Aligned);
    EXPECT_EQ(chooseSetRect(4096, 2048, 4096, cache8M), SetRectPath::Stream);  // 8M >= 8M
    EXPECT_EQ(chooseSetRect(4096, 2047, 4096, cache8M), SetRectPath::Aligned);
    alignas(64) static int32_t w[4];
    EXPECT_EQ(chooseSetWords(w, 0x80001, cache1M), SetWordsPath::Stream);
    EXPECT_EQ(chooseSetWords(w, 0x80000, cache1M), SetWordsPath::Plain);
    EXPECT_EQ(chooseSetWords(reinterpret_cast<char*>(w) + 2, 0x80001, cache1M), SetWordsPath::Plain);
    EXPECT_EQ(chooseSetWords(w, 0x200000, cache8M), SetWordsPath::Plain);  // cache not below the block
    EXPECT_EQ(chooseSetWords(w, 0x200001, cache8M), SetWordsPath::Stream);
    EXPECT_EQ(chooseSetWords(w, 0x200001, cacheFails), SetWordsPath::Plain);
}

// ---- statistics -----------------------------------------------------------------

template <class F>
void sweepFloats(F check)
{
    std::mt19937 rng(5);
    for (const Geometry& g : standardSweep(4)) {
        GuardedImage img = makeImage(g.width, g.height, 4, g.srcPad, g.negative, g.endSlack);
        img.fill<float>(rng, -1000, 1000);
        SCOPED_TRACE(g.str());
        check(img, RoiSize{g.width, g.height});
    }
}

TEST(Statistics, VectorPathsMatchScalarForms)
{
    sweepFloats([](GuardedImage& img, RoiSize roi) {
        float mv = 0, ms = 0;
        double sv = 0, ss = 0;
        ASSERT_EQ(orviMax_32f_C1R(img.data<Orv32f>(), img.step(), roi, &mv), orvStatusOk);
        ASSERT_EQ(orviSum_32f_C1R(img.data<Orv32f>(), img.step(), roi, &sv, 1), orvStatusOk);
        {
            ScalarBlocks scalar;
            orviMax_32f_C1R(img.data<Orv32f>(), img.step(), roi, &ms);
            orviSum_32f_C1R(img.data<Orv32f>(), img.step(), roi, &ss, 1);
        }
        ASSERT_EQ(std::memcmp(&mv, &ms, 4), 0);
        ASSERT_EQ(std::memcmp(&sv, &ss, 8), 0);
    });
}

// Wide rows are added in runs out of order where no addition rounds; data
// that makes the running sums round, cancel, cross powers of two, or meet
// zeros, tiny, infinite and NaN elements must give the in-order sums still,
// in every rounding mode.
TEST(Statistics, SumsOfWideRowsMatchTheInOrderForm)
{
    std::mt19937 rng(11);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    using Gen = std::function<float(int)>;
    const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
    const std::vector<std::pair<const char*, Gen>> kinds = {
        {"sevenths", [&](int i) { return float((uint64_t(i) * 7919) % 100000) / 7.0f; }},
        {"walk", [&](int) { return unit(rng) * 2000.0f - 1000.0f; }},
        {"integers", [&](int) { return float(int(unit(rng) * 512.0f) - 100); }},
        {"zeros", [&](int i) { return i % 3 ? (i % 2 ? 0.0f : -0.0f) : unit(rng) * 64.0f; }},
        {"spread", [&](int) { return std::ldexp(unit(rng), int(unit(rng) * 80.0f) - 40); }},
        {"tiny", [&](int i) { return i % 97 == 0 ? 1e-42f : std::ldexp(1.0f, int(unit(rng) * 8.0f)); }},
        {"huge", [&](int) { return 3e38f * unit(rng); }},
        {"special", [&](int i) { return i == 700 ? inf : i == 1500 ? nan : unit(rng); }},
        {"cancel", [&](int i) { return (i / 4) % 2 ? -float(i % 61) * 0.25f : float(i % 61) * 0.25f; }},
        // Fine low bits in the sums, then runs of coarse elements.
        {"steps", [&](int i) { return (i / 256) % 3 ? float(int(unit(rng) * 1000.0f)) * 4096.0f : unit(rng); }},
        {"edges", [&](int i) { return i % 256 < 4 ? 0.5f + unit(rng) : float(1 << (i % 24)); }},
        // Runs without negative elements first, then signed ones.
        {"late signs", [&](int i) { return i < 1100 ? unit(rng) * 100.0f : unit(rng) - 0.5f; }},
    };
    for (const auto& [name, gen] : kinds)
        for (uint32_t mode : {kRoundNearest, kRoundDown, kRoundUp, kRoundTowardZero})
            for (RoiSize roi : {RoiSize{256, 3}, RoiSize{600, 7}, RoiSize{1027, 5}}) {
                std::vector<float> v(std::size_t(roi.width) * roi.height);
                for (std::size_t i = 0; i < v.size(); ++i)
                    v[i] = gen(int(i));
                const RoundingAs rounding(mode);
                double sv = 0, ss = 0;
                orviSum_32f_C1R(v.data(), 4 * roi.width, roi, &sv, 1);
                {
                    ScalarBlocks scalar;
                    orviSum_32f_C1R(v.data(), 4 * roi.width, roi, &ss, 1);
                }
                ASSERT_EQ(std::memcmp(&sv, &ss, 8), 0) << name << " mode " << mode << " width " << roi.width << ": " << sv << " against " << ss;
            }
}

TEST(Statistics, SumsRoundStepByStepAsTheyGrow)
{
    // One running sum gets 1 + 2^-40 + 1.75 * 2^-42, then 2^11 and 2^12: in
    // order the low bits round to 2^-41 and then, a tie, up to 2^-39; added
    // at once they would round down to 2^-40.
    std::vector<float> v(2 * 260, 0.0f);
    v[0] = 1.0f;
    v[4] = 0x1p-40f;
    v[8] = 0x1p-42f;
    v[12] = 0x1p-43f;
    v[16] = 0x1p-44f;
    v[260] = 2048.0f;
    v[264] = 4096.0f;
    double s = 0;
    ASSERT_EQ(orviSum_32f_C1R(v.data(), 4 * 260, {260, 2}, &s, 1), orvStatusOk);
    EXPECT_EQ(s, 6145.0 + 0x1p-39);
}

TEST(Statistics, MaximumKeepsTheRunningValueOverNaN)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (int w : {3, 8, 40}) {
        std::vector<float> v(w, 1.0f);
        v[w / 2] = 5.0f;
        v[w - 1] = nan;
        float m = 0;
        ASSERT_EQ(orviMax_32f_C1R(v.data(), 4 * w, {w, 1}, &m), orvStatusOk);
        EXPECT_EQ(m, 5.0f) << w;
        v[0] = nan;  // a NaN first element is never replaced
        orviMax_32f_C1R(v.data(), 4 * w, {w, 1}, &m);
        EXPECT_TRUE(std::isnan(m)) << w;
        // Zeros: the first zero in scan order is the result, with its sign.
        std::vector<float> z(w, -3.0f);
        z[1] = -0.0f;
        z[w - 1] = 0.0f;
        orviMax_32f_C1R(z.data(), 4 * w, {w, 1}, &m);
        EXPECT_TRUE(m == 0.0f && std::signbit(m)) << w;
    }
}

TEST(Statistics, SumsRunFourWaysFromSeventeenElements)
{
    // 2^53 + 1 + 1 in one running sum loses both ones; in four sums the ones
    // land in other sums and survive.
    auto sum = [](int w, int hint) {
        std::vector<float> v(w, 0.0f);
        v[0] = 9007199254740992.0f;  // 2^53
        v[1] = 1.0f;
        v[5] = 1.0f;
        double s = 0;
        EXPECT_EQ(orviSum_32f_C1R(v.data(), 4 * w, {w, 1}, &s, hint), orvStatusOk);
        return s;
    };
    EXPECT_EQ(sum(16, 1), 9007199254740992.0);
    EXPECT_EQ(sum(17, 1), 9007199254740994.0);
    EXPECT_EQ(sum(17, 0), 9007199254740994.0);
    EXPECT_EQ(sum(17, 2), 9007199254740992.0);
    // The mean of one element is that element in double.
    const float one = 0.1f;
    double mean = 0;
    ASSERT_EQ(orviMean_32f_C1R(&one, 4, {1, 1}, &mean, 1), orvStatusOk);
    EXPECT_EQ(mean, double(0.1f));
    const float four[4] = {1, 2, 3, 4};
    orviMean_32f_C1R(four, 8, {2, 2}, &mean, 1);
    EXPECT_EQ(mean, 2.5);
}

TEST(Statistics, ChecksInOrder)
{
    const float v[4] = {1, 2, 3, 4};
    float m = 7;
    double s = 7;
    EXPECT_EQ(orviMax_32f_C1R(nullptr, 4, {0, 0}, nullptr), orvStatusNullPointer);
    EXPECT_EQ(orviMax_32f_C1R(v, 4, {0, 0}, nullptr), orvStatusNullPointer);
    EXPECT_EQ(orviMax_32f_C1R(v, 4, {0, 1}, &m), orvStatusBadSize);
    EXPECT_EQ(orviMax_32f_C1R(v, 4, {1, 0}, &m), orvStatusBadSize);
    EXPECT_EQ(orviSum_32f_C1R(nullptr, 4, {0, 0}, nullptr, 1), orvStatusNullPointer);
    EXPECT_EQ(orviSum_32f_C1R(v, 4, {0, 0}, nullptr, 1), orvStatusNullPointer);
    EXPECT_EQ(orviSum_32f_C1R(v, 4, {1, 0}, &s, 1), orvStatusBadSize);
    EXPECT_EQ(orviMean_32f_C1R(nullptr, 4, {0, 0}, nullptr, 1), orvStatusNullPointer);
    EXPECT_EQ(orviMean_32f_C1R(nullptr, 4, {1, 1}, &s, 1), orvStatusNullPointer);
    EXPECT_EQ(orviMean_32f_C1R(v, 4, {0, 1}, &s, 1), orvStatusBadSize);
    EXPECT_EQ(m, 7.0f);
    EXPECT_EQ(s, 7.0);
}

// ---- signals ----------------------------------------------------------------------

TEST(Signal, AddAndSubtractAConstant)
{
    std::mt19937 rng(9);
    for (int n = 1; n <= 80; ++n) {
        for (float c : {0.75f, -3.5f, 1e-30f}) {
            GuardedImage src(4 * n, 1, 4 * n), a(4 * n, 1, 4 * n, n % 3 * 4), b(4 * n, 1, 4 * n);
            src.fill<float>(rng, -10, 10);
            for (auto [fn, add] : {std::pair{&orvsAddC_32f, true}, std::pair{&orvsSubC_32f, false}}) {
                ASSERT_EQ(fn(src.data<Orv32f>(), c, a.data<Orv32f>(), n), orvStatusOk);
                {
                    ScalarBlocks scalar;
                    fn(src.data<Orv32f>(), c, b.data<Orv32f>(), n);
                }
                ASSERT_EQ(a.pixels(), b.pixels()) << n;
                ASSERT_TRUE(a.guardsIntact());
                for (int i = 0; i < n; ++i) {
                    const float x = src.data<Orv32f>()[i];
                    ASSERT_EQ(a.data<Orv32f>()[i], add ? c + x : x - c);
                }
            }
        }
    }
    // A constant of 0 copies bit patterns: a signalling NaN keeps its payload,
    // -0.0 its sign.
    const uint32_t bits[3] = {0x7f800001u, 0x80000000u, 0x3f800000u};
    float src[3], dst[3];
    std::memcpy(src, bits, sizeof src);
    for (auto fn : {orvsAddC_32f, orvsSubC_32f}) {
        ASSERT_EQ(fn(src, 0.0f, dst, 3), orvStatusOk);
        EXPECT_EQ(std::memcmp(dst, bits, sizeof bits), 0);
    }
}

TEST(Signal, ChromaRowCopyWithAndWithoutStreaming)
{
    for (int n = 1; n <= 200; n += (n < 70 ? 1 : 13)) {
        for (int stream : {0, 1}) {
            for (int slack : {0, 5, 16}) {
                Pair p(n, 1, n, n, slack);
                ownccCopy_8u_C1_W7(p.src.data(), p.dst.data(), n, stream);
                SCOPED_TRACE(::testing::Message() << n << " " << stream << " " << slack);
                p.expectCopied();
            }
        }
    }
    // Source just below the destination (src - dst in 65216..65520 mod 2^16):
    // ordinary stores, same bytes.
    alignas(64) static Orv8u buf[4096];
    for (int i = 0; i < 4096; ++i)
        buf[i] = Orv8u(i * 7);
    std::vector<Orv8u> expect(buf, buf + 1000);
    ownccCopy_8u_C1_W7(buf, buf + 2000, 1000, 1);
    EXPECT_EQ(std::vector<Orv8u>(buf + 2000, buf + 3000), expect);
    ownccCopy_8u_C1_W7(buf + 2000, buf + 2300, 200, 1);  // src - dst = -300
    EXPECT_EQ(std::vector<Orv8u>(buf + 2300, buf + 2500), std::vector<Orv8u>(buf, buf + 200));
}

TEST(Signal, Join422AndSplit422)
{
    std::mt19937 rng(4);
    for (int w = 2; w <= 70; ++w) {
        const int h = 3, cw = w / 2;
        GuardedImage y(w, h, w + 3), cb(cw, h, cw + 1), cr(cw, h, -(cw + 2)), packed(4 * cw, h, 4 * cw + 5);
        y.fillBytes(rng);
        cb.fillBytes(rng);
        cr.fillBytes(rng);
        const Orv8u* planes[3] = {y.data(), cb.data(), cr.data()};
        const int steps[3] = {y.step(), cb.step(), cr.step()};
        Join422_8u_W7(planes, steps, packed.data(), packed.step(), w, h);
        ASSERT_TRUE(packed.guardsIntact());
        for (int r = 0; r < h; ++r)
            for (int i = 0; i < cw; ++i) {
                const Orv8u* p = packed.row(r) + 4 * i;
                ASSERT_EQ(p[0], y.row(r)[2 * i]);
                ASSERT_EQ(p[1], cb.row(r)[i]);
                ASSERT_EQ(p[2], y.row(r)[2 * i + 1]);
                ASSERT_EQ(p[3], cr.row(r)[i]);
            }
        // And back; an odd last luma column is left alone.
        GuardedImage y2(w, h, w), cb2(cw, h, cw + 4), cr2(cw, h, cw);
        y2.fillValue<uint8_t>(0xEE);
        Orv8u* out[3] = {y2.data(), cb2.data(), cr2.data()};
        const int outSteps[3] = {y2.step(), cb2.step(), cr2.step()};
        Split422_8u_W7(packed.data(), packed.step(), out, outSteps, w, h);
        for (int r = 0; r < h; ++r) {
            ASSERT_EQ(std::memcmp(y2.row(r), y.row(r), 2 * cw), 0) << w;
            ASSERT_EQ(y2.row(r)[w - 1], w % 2 ? 0xEE : y.row(r)[w - 1]);
            ASSERT_EQ(std::memcmp(cb2.row(r), cb.row(r), cw), 0);
            ASSERT_EQ(std::memcmp(cr2.row(r), cr.row(r), cw), 0);
        }
        ASSERT_TRUE(y2.guardsIntact() && cb2.guardsIntact() && cr2.guardsIntact());
    }
}

}  // namespace
