// The vector power function: its table, vector path against scalar form at
// every length and alignment, accuracy against double precision for the two
// exponents of the gamma curve, the lanes that leave the main line, the
// argument checks and the handling of the caller's floating-point modes.
#include <immintrin.h>

#include <bit>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "support/image.h"
#include "vecmath/powx.h"

using namespace orvtest;

namespace {

constexpr float kFwd = 0.45f, kInv = 2.2222223f;
const float kInf = std::numeric_limits<float>::infinity();

uint32_t bits(float x)
{
    uint32_t b;
    std::memcpy(&b, &x, 4);
    return b;
}

TEST(PowxTable, RowsCarryMinusLogOfTheirReciprocal)
{
    const auto& t = h9::powxLogTable;
    EXPECT_EQ(t[0].logHi, 0.0f);
    EXPECT_EQ(bits(t[0].logLo), 0u);
    EXPECT_EQ(t[0].r, 1.0f);
    EXPECT_EQ(t[64].logHi, 0.693115234375f);
    EXPECT_EQ(t[64].logLo, 3.1946183e-05f);
    EXPECT_EQ(t[64].r, 0.5f);
    for (int j = 0; j <= 64; ++j) {
        EXPECT_EQ(t[j].r, std::nearbyint(256.0 / (1.0 + j / 64.0)) / 256) << j;
        EXPECT_EQ(t[j].logHi * 16384.0f, std::trunc(t[j].logHi * 16384.0f)) << j;
        const long double minusLn = -std::log((long double)t[j].r);
        EXPECT_LE(std::fabs((long double)t[j].logHi + t[j].logLo - minusLn), 2e-12L) << j;
        EXPECT_LT(minusLn - t[j].logHi, 1.0L / 16384) << j;
    }
}

// Values of every kind: mostly the gamma range, some large and tiny ones,
// and now and then a value that leaves the main line.
float anyValue(std::mt19937& rng)
{
    static const float rare[] = {0.0f, -0.0f, -0.5f, kInf, -kInf, std::numeric_limits<float>::quiet_NaN(), 1e-40f,
                                 FLT_MAX, 1.0f, 1e30f, 1e-30f, -1.0f};
    const uint32_t pick = rng() % 16;
    if (pick == 0)
        return rare[rng() % (sizeof rare / sizeof rare[0])];
    if (pick < 3) {
        const uint32_t b = 0x00800000u + rng() % 0x7e800000u;
        float x;
        std::memcpy(&x, &b, 4);
        return x;
    }
    return std::uniform_real_distribution<float>(0.0f, 1.2f)(rng);
}

// The vector path and the scalar form agree bit for bit and in their status
// over lengths 1..80 and some long ones, at every source alignment, out of
// place and in place; nothing past the array is written and nothing depends
// on the position of a value.
TEST(Powx, VectorPathMatchesScalarFormAtEveryLengthAndAlignment)
{
    std::mt19937 rng(5);
    std::vector<int> lengths;
    for (int n = 1; n <= 80; ++n)
        lengths.push_back(n);
    for (int n : {127, 128, 129, 383, 384, 1000, 4099})
        lengths.push_back(n);
    for (float y : {kFwd, kInv, -1.5f, 3.0f}) {
        for (int n : lengths) {
            for (int shift = 0; shift < 8; ++shift) {
                SCOPED_TRACE(testing::Message() << "y " << y << " n " << n << " shift " << shift);
                GuardedImage src(4 * n, 1, 4 * n, 4 * shift), dv(4 * n, 1, 4 * n, 4 * ((shift * 3) % 8)),
                    ds(4 * n, 1, 4 * n, 0), inPlace(4 * n, 1, 4 * n, 4 * shift);
                for (int i = 0; i < n; ++i)
                    src.data<float>()[i] = anyValue(rng);
                inPlace.copyFrom(src);
                const OrvStatus sv = h9::orvsPowx_32f_A21(src.data<float>(), y, dv.data<float>(), n);
                const OrvStatus si = h9::orvsPowx_32f_A21(inPlace.data<float>(), y, inPlace.data<float>(), n);
                OrvStatus ss;
                {
                    ScalarBlocks scalar;
                    ss = h9::orvsPowx_32f_A21(src.data<float>(), y, ds.data<float>(), n);
                }
                ASSERT_EQ(sv, ss);
                ASSERT_EQ(si, ss);
                ASSERT_TRUE(dv.guardsIntact());
                ASSERT_TRUE(inPlace.guardsIntact());
                ASSERT_EQ(dv.pixels(), ds.pixels());
                ASSERT_EQ(inPlace.pixels(), ds.pixels());
                if (n == 37 || n == 1000) {
                    for (int i = 0; i < n; ++i) {
                        float one;
                        h9::orvsPowx_32f_A21(&src.data<float>()[i], y, &one, 1);
                        ASSERT_EQ(bits(one), bits(dv.data<float>()[i])) << i;
                    }
                }
            }
        }
    }
}

// Long runs of arguments at the edges of the main line: where |zh| crosses
// its limit, for exponents large and small, and where the small term moves
// between head and tail near 1. Whole blocks of 32 then lie on one side or
// the other, or straddle an edge.
TEST(Powx, VectorPathMatchesScalarFormAtTheEdgesOfTheMainLine)
{
    std::vector<float> x;
    for (uint32_t b = 0x3f7dfc00u; b < 0x3f7e0400u; ++b)
        x.push_back(std::bit_cast<float>(b));
    for (uint32_t b = 0x3f81fc00u; b < 0x3f820400u; ++b)
        x.push_back(std::bit_cast<float>(b));
    const std::size_t nearOne = x.size();
    for (float y : {kInv, 3.0f, -1.5f, 60.0f, 0.001f}) {
        SCOPED_TRACE(testing::Message() << "y " << y);
        x.resize(nearOne);
        const double edge = 64.810547 / std::fabs(y);
        for (int side : {-1, 1})
            for (int t = 0; t < 4096; ++t)
                x.push_back(float(std::exp(side * edge * (0.85 + 0.2 * t / 4096))));
        std::vector<float> dv(x.size()), ds(x.size());
        const OrvStatus sv = h9::orvsPowx_32f_A21(x.data(), y, dv.data(), int(x.size()));
        OrvStatus ss;
        {
            ScalarBlocks scalar;
            ss = h9::orvsPowx_32f_A21(x.data(), y, ds.data(), int(x.size()));
        }
        ASSERT_EQ(sv, ss);
        for (std::size_t i = 0; i < x.size(); ++i)
            ASSERT_EQ(bits(dv[i]), bits(ds[i])) << i << " x " << x[i];
    }
}

// Worst relative error against double precision, over a dense sample of
// arguments from 2^-24 to 2^12, for both exponents of the gamma curve: near
// 2^-21.8, never worse than 2^-21.3.
TEST(Powx, AccuracyAgainstDoublePrecisionForTheGammaExponents)
{
    std::vector<float> x;
    for (uint32_t b = 0x33800000u; b < 0x45800000u; b += 97) {
        float v;
        std::memcpy(&v, &b, 4);
        x.push_back(v);
    }
    std::vector<float> p(x.size());
    for (float y : {kFwd, kInv}) {
        ASSERT_EQ(h9::orvsPowx_32f_A21(x.data(), y, p.data(), int(x.size())), orvStatusOk);
        double worst = 0;
        for (std::size_t i = 0; i < x.size(); ++i) {
            const double ref = std::pow(double(x[i]), double(y));
            worst = std::max(worst, std::fabs(p[i] - ref) / ref);
        }
        EXPECT_LT(worst, std::ldexp(1.0, -21) / std::pow(2.0, 0.3)) << y;
        EXPECT_GT(worst, std::ldexp(1.0, -23)) << y;
    }
    // Exact cases of the main line.
    float one = 1.0f, r;
    h9::orvsPowx_32f_A21(&one, kInv, &r, 1);
    EXPECT_EQ(r, 1.0f);
    float four = 4.0f;
    h9::orvsPowx_32f_A21(&four, 0.5f, &r, 1);
    EXPECT_NEAR(r, 2.0f, 4e-7f);
}

// The lanes that leave the main line, one by one and inside a long array.
TEST(Powx, RareLanesTakeTheDoublePrecisionPath)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    struct Case {
        float x, y, want;
        int code;
    };
    const Case cases[] = {
        {0.0f, kFwd, 0.0f, 0},          {-0.0f, kFwd, 0.0f, 0},        {-0.0f, 3.0f, -0.0f, 0},
        {0.0f, -1.0f, kInf, 19},        {-0.0f, -3.0f, -kInf, 19},     {-0.5f, kFwd, nan, 19},
        {kInf, kFwd, kInf, 0},          {kInf, -kFwd, 0.0f, 0},        {-kInf, 3.0f, -kInf, 0},
        {-kInf, kFwd, kInf, 0},         {nan, kFwd, nan, 0},           {nan, 0.0f, 1.0f, 0},
        {1.0f, nan, 1.0f, 0},           {2.0f, nan, nan, 0},           {-1.0f, kInf, 1.0f, 0},
        {-1.0f, 3.0f, -1.0f, 0},        {-2.0f, 3.0f, -8.0f, 0},       {-2.0f, 2.0f, 4.0f, 0},
        {0.5f, kInf, 0.0f, 0},          {0.5f, -kInf, kInf, 0},        {2.0f, kInf, kInf, 0},
        {2.0f, -kInf, 0.0f, 0},         {1e30f, kInv, kInf, 0},        {1e-30f, kInv, float(std::pow(1e-30f, double(kInv))), 0},
        {1e-40f, kFwd, float(std::pow(double(1e-40f), double(kFwd))), 0},
        {FLT_MAX, kFwd, float(std::pow(double(FLT_MAX), double(kFwd))), 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.x << " ^ " << c.y);
        float r = 123.0f;
        const OrvStatus st = h9::orvsPowx_32f_A21(&c.x, c.y, &r, 1);
        EXPECT_EQ(st, c.code);
        if (std::isnan(c.want)) {
            EXPECT_TRUE(std::isnan(r));
        } else {
            EXPECT_EQ(bits(r), bits(c.want));
        }
        float direct;
        EXPECT_EQ(h9::powxRareLane(c.x, c.y, &direct), c.code);
        EXPECT_EQ(bits(direct), bits(r));
    }
    // Subnormal arguments give a proper power, in the middle of a long array.
    std::vector<float> x(100, 0.25f), p(100);
    x[41] = 1e-40f;
    x[42] = -3.0f;
    EXPECT_EQ(h9::orvsPowx_32f_A21(x.data(), kFwd, p.data(), 100), 19);
    EXPECT_EQ(p[41], float(std::pow(double(1e-40f), double(kFwd))));
    EXPECT_TRUE(std::isnan(p[42]));
    EXPECT_EQ(p[40], p[43]);
    EXPECT_NEAR(p[40], std::pow(0.25, 0.45), 1e-6);
}

TEST(Powx, LengthThenPointersAndNothingWritten)
{
    float x[4] = {0.5f, 0.5f, 0.5f, 0.5f}, d[4] = {7, 7, 7, 7};
    EXPECT_EQ(h9::orvsPowx_32f_A21(x, kFwd, d, 0), orvStatusBadSize);
    EXPECT_EQ(h9::orvsPowx_32f_A21(nullptr, kFwd, nullptr, -1), orvStatusBadSize);
    EXPECT_EQ(h9::orvsPowx_32f_A21(nullptr, kFwd, d, 4), orvStatusNullPointer);
    EXPECT_EQ(h9::orvsPowx_32f_A21(x, kFwd, nullptr, 4), orvStatusNullPointer);
    for (float v : d)
        EXPECT_EQ(v, 7.0f);
}

uint16_t x87Word()
{
    uint16_t cw;
    asm volatile("fnstcw %0" : "=m"(cw));
    return cw;
}
void setX87Word(uint16_t cw) { asm volatile("fldcw %0" : : "m"(cw)); }

// Results do not change under the caller's round-toward-zero, flush-to-zero
// and denormals-are-zero, and the caller's words are back afterwards; with
// the default word no sticky flag is left.
TEST(Powx, CallersModesAreRestoredAndDoNotChangeResults)
{
    std::mt19937 rng(9);
    std::vector<float> x(203);
    for (float& v : x)
        v = anyValue(rng);
    x[5] = 1e-40f;  // subnormal: must not be flushed
    x[6] = 3e-39f;
    for (float y : {kFwd, kInv}) {
        std::vector<float> want(x.size()), got(x.size());
        const OrvStatus st = h9::orvsPowx_32f_A21(x.data(), y, want.data(), int(x.size()));
        EXPECT_EQ(_mm_getcsr() & 0x3f, 0u) << "sticky flags left behind";
        if (y == kFwd) {
            EXPECT_GT(want[5], 0.0f);
        }

        const uint32_t saved = _mm_getcsr();
        const uint32_t callers = (saved & ~0x6000u) | 0x6000u | 0x8000u | 0x0040u | 0x0001u;  // RZ, FTZ, DAZ, a flag
        _mm_setcsr(callers);
        const uint16_t x87 = x87Word();
        setX87Word(uint16_t(x87 & ~0x20));  // precision exception unmasked
        const OrvStatus st2 = h9::orvsPowx_32f_A21(x.data(), y, got.data(), int(x.size()));
        const uint32_t after = _mm_getcsr();
        const uint16_t x87After = x87Word();
        setX87Word(x87);
        _mm_setcsr(saved);
        EXPECT_EQ(after, callers);
        EXPECT_EQ(x87After, uint16_t(x87 & ~0x20));
        EXPECT_EQ(st, st2);
        for (std::size_t i = 0; i < x.size(); ++i)
            ASSERT_EQ(bits(got[i]), bits(want[i])) << i;
    }
}

}  // namespace
