// Gamma correction: the four tables against their rule, all 36 members
// against a per-value reference in every layout (vector paths and scalar
// forms alike), the 32f curve and range handling, and the argument checks.
#include <cfloat>
#include <cmath>
#include <cstring>
#include <functional>
#include <random>
#include <vector>

#include "support/image.h"
#include "tone/gammatables.h"
#include "vecmath/powx.h"

using namespace orvtest;

namespace {

// ---- tables -----------------------------------------------------------------
double fwdCurve(double x) { return x < 0.018 ? 4.5 * x : 1.099 * std::pow(x, 0.45) - 0.099; }
double invCurve(double y) { return y < 0.0812 ? y / 4.5 : std::pow((y + 0.099) / 1.099, 1.0 / 0.45); }
long double fwdCurveL(long double x) { return x < 0.018L ? 4.5L * x : 1.099L * std::pow(x, 0.45L) - 0.099L; }
long double invCurveL(long double y)
{
    return y < 0.0812L ? y / 4.5L : std::pow((y + 0.099L) / 1.099L, 1.0L / 0.45L);
}

TEST(GammaTables, EightBitTablesFollowTheRuleEverywhere)
{
    for (int i = 0; i < 256; ++i) {
        EXPECT_EQ(h9::tableFwd8u[i], std::nearbyint(255.0L * fwdCurveL(i / 255.0L))) << i;
        EXPECT_EQ(h9::tableInv8u[i], std::nearbyint(255.0L * invCurveL(i / 255.0L))) << i;
    }
    const int fwd[8] = {0, 4, 9, 14, 18, 23, 27, 30}, inv[8] = {0, 0, 0, 1, 1, 1, 1, 2};
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(h9::tableFwd8u[i], fwd[i]);
        EXPECT_EQ(h9::tableInv8u[i], inv[i]);
    }
    EXPECT_EQ(h9::tableFwd8u[255], 255);
    EXPECT_EQ(h9::tableInv8u[255], 255);
}

// Every 16-bit entry re-derived at run time (double-precision curve, product
// rounded to float, then to the nearest integer), and the entries where that
// differs from the exact rule: 119 and 54, each within 0.002 of a half.
TEST(GammaTables, SixteenBitTablesAreRederivedAndDeviateWhereStated)
{
    auto check = [](const std::array<uint16_t, 65536>& table, double (*curve)(double),
                    long double (*exact)(long double), int deviations) {
        int n = 0;
        for (int i = 0; i < 65536; ++i) {
            const float product = float(65535.0 * curve(i / 65535.0));
            ASSERT_EQ(table[i], std::nearbyint(product)) << i;
            const long double v = 65535.0L * exact(i / 65535.0L);
            if (table[i] != std::nearbyint(v)) {
                ++n;
                EXPECT_LT(std::fabs(v - std::floor(v) - 0.5L), 0.002L) << i;
            }
        }
        EXPECT_EQ(n, deviations);
    };
    check(h9::tableFwd16u, fwdCurve, fwdCurveL, 119);
    check(h9::tableInv16u, invCurve, invCurveL, 54);
    EXPECT_EQ(h9::tableFwd16u[65535], 65535);
    EXPECT_EQ(h9::tableInv16u[65535], 65535);
    EXPECT_EQ(h9::tableFwd16u[0], 0);
}

// ---- the 36 members, by type ------------------------------------------------
template <class T>
struct Members {
    std::function<OrvStatus(const T*, int, T*, int, RoiSize)> c3, ac4;
    std::function<OrvStatus(T*, int, RoiSize)> c3i, ac4i;
    std::function<OrvStatus(const T* const*, int, T**, int, RoiSize)> p3;
    std::function<OrvStatus(T**, int, RoiSize)> ip3;
};

#define TABLE_MEMBERS(Dir, T)                                                                                   \
    Members<Orv##T>                                                                                             \
    {                                                                                                           \
        orviGamma##Dir##_##T##_C3R, orviGamma##Dir##_##T##_AC4R, orviGamma##Dir##_##T##_C3IR,                   \
            orviGamma##Dir##_##T##_AC4IR, orviGamma##Dir##_##T##_P3R, orviGamma##Dir##_##T##_IP3R               \
    }

#define FLOAT_MEMBERS(Dir, lo, hi)                                                                               \
    Members<Orv32f>                                                                                             \
    {                                                                                                           \
        [=](const Orv32f* s, int ss, Orv32f* d, int ds, RoiSize r) { return orviGamma##Dir##_32f_C3R(s, ss, d, ds, r, lo, hi); }, \
        [=](const Orv32f* s, int ss, Orv32f* d, int ds, RoiSize r) { return orviGamma##Dir##_32f_AC4R(s, ss, d, ds, r, lo, hi); }, \
        [=](Orv32f* d, int ds, RoiSize r) { return orviGamma##Dir##_32f_C3IR(d, ds, r, lo, hi); },             \
        [=](Orv32f* d, int ds, RoiSize r) { return orviGamma##Dir##_32f_AC4IR(d, ds, r, lo, hi); },            \
        [=](const Orv32f* const* s, int ss, Orv32f** d, int ds, RoiSize r) {                                    \
            return orviGamma##Dir##_32f_P3R(s, ss, d, ds, r, lo, hi);                                           \
        },                                                                                                      \
        [=](Orv32f** d, int ds, RoiSize r) { return orviGamma##Dir##_32f_IP3R(d, ds, r, lo, hi); }              \
    }

// What the six members of a type wrote for one input, every buffer's bytes.
struct Outputs {
    std::vector<uint8_t> c3, c3i, ac4, ac4i, p3[3], ip3[3];
};

// Runs the six members of a type on the same pixels (C3 and P3 use the three
// colour values, AC4 adds a fourth), once with the vector paths and once with
// the scalar forms. Both runs give the same bytes; in-place members give what
// their out-of-place forms give; P3 gives what C3 gives; the destination's
// alpha stays; nothing outside a rectangle is written; and every value lies
// within `tol` of expect(value).
template <class T, class Fill, class Expect>
void checkMembers(const Members<T>& m, Fill fill, Expect expect, double tol)
{
    std::mt19937 rng(2024);
    const int e = sizeof(T);
    for (const Geometry& g : standardSweep(e)) {
        SCOPED_TRACE(g.str());
        const int w = g.width, h = g.height;
        const RoiSize roi{w, h};
        auto img = [&](int ch, int pad) { return makeImage(w, h, ch * e, pad, false, g.endSlack); };
        GuardedImage s3 = img(3, g.srcPad), s4 = img(4, g.srcPad), sp0 = img(1, g.srcPad), sp1 = img(1, g.srcPad),
                     sp2 = img(1, g.srcPad);
        GuardedImage* sp[3] = {&sp0, &sp1, &sp2};
        s4.fillBytes(rng);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                for (int c = 0; c < 3; ++c) {
                    const T v = fill(rng);
                    s3.row<T>(y)[3 * x + c] = v;
                    s4.row<T>(y)[4 * x + c] = v;
                    sp[c]->row<T>(y)[x] = v;
                }
        std::vector<uint8_t> alphaBefore;
        auto run = [&](bool scalar) {
            ScalarBlocks* sb = scalar ? new ScalarBlocks : nullptr;
            GuardedImage d3 = img(3, g.dstPad), d4 = img(4, g.dstPad), i3 = img(3, g.dstPad), i4 = img(4, g.dstPad);
            GuardedImage dp0 = img(1, g.dstPad), dp1 = img(1, g.dstPad), dp2 = img(1, g.dstPad);
            GuardedImage ip0 = img(1, g.dstPad), ip1 = img(1, g.dstPad), ip2 = img(1, g.dstPad);
            std::mt19937 noise(7);
            d4.fillBytes(noise);
            alphaBefore = d4.pixels();
            i3.copyFrom(s3);
            i4.copyFrom(s4);
            ip0.copyFrom(sp0);
            ip1.copyFrom(sp1);
            ip2.copyFrom(sp2);
            const T* srcPlanes[3] = {sp0.data<T>(), sp1.data<T>(), sp2.data<T>()};
            T* dstPlanes[3] = {dp0.data<T>(), dp1.data<T>(), dp2.data<T>()};
            T* inPlanes[3] = {ip0.data<T>(), ip1.data<T>(), ip2.data<T>()};
            EXPECT_EQ(m.c3(s3.data<T>(), s3.step(), d3.data<T>(), d3.step(), roi), orvStatusOk);
            EXPECT_EQ(m.c3i(i3.data<T>(), i3.step(), roi), orvStatusOk);
            EXPECT_EQ(m.ac4(s4.data<T>(), s4.step(), d4.data<T>(), d4.step(), roi), orvStatusOk);
            EXPECT_EQ(m.ac4i(i4.data<T>(), i4.step(), roi), orvStatusOk);
            EXPECT_EQ(m.p3(srcPlanes, sp0.step(), dstPlanes, dp0.step(), roi), orvStatusOk);
            EXPECT_EQ(m.ip3(inPlanes, ip0.step(), roi), orvStatusOk);
            delete sb;
            for (GuardedImage* im : {&s3, &s4, &d3, &d4, &i3, &i4, &sp0, &sp1, &sp2, &dp0, &dp1, &dp2, &ip0, &ip1, &ip2})
                EXPECT_TRUE(im->guardsIntact());
            return Outputs{d3.pixels(), i3.pixels(), d4.pixels(), i4.pixels(), {dp0.pixels(), dp1.pixels(), dp2.pixels()},
                           {ip0.pixels(), ip1.pixels(), ip2.pixels()}};
        };
        const Outputs v = run(false), s = run(true);
        ASSERT_EQ(v.c3, s.c3);
        ASSERT_EQ(v.ac4, s.ac4);
        ASSERT_EQ(v.ac4i, s.ac4i);
        ASSERT_EQ(v.c3, v.c3i);
        ASSERT_EQ(s.c3, s.c3i);
        for (int c = 0; c < 3; ++c) {
            ASSERT_EQ(v.p3[c], s.p3[c]);
            ASSERT_EQ(v.p3[c], v.ip3[c]);
            ASSERT_EQ(s.p3[c], s.ip3[c]);
        }
        auto at = [](const std::vector<uint8_t>& b, std::size_t i) {
            T t;
            std::memcpy(&t, b.data() + i * sizeof(T), sizeof(T));
            return t;
        };
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const std::size_t p = std::size_t(y) * w + x;
                for (int c = 0; c < 3; ++c) {
                    const T in = s3.row<T>(y)[3 * x + c];
                    const T out = at(v.c3, 3 * p + c);
                    ASSERT_EQ(std::memcmp(&out, v.p3[c].data() + p * e, e), 0) << x << "," << y;
                    ASSERT_NEAR(double(out), expect(in), tol) << "C3 " << x << "," << y << " of " << double(in);
                    ASSERT_NEAR(double(at(v.ac4, 4 * p + c)), expect(in), tol) << "AC4 " << x << "," << y;
                    ASSERT_NEAR(double(at(v.ac4i, 4 * p + c)), expect(in), tol) << "AC4I " << x << "," << y;
                }
                // Alpha: the destination's stays, the in-place one keeps the source's.
                ASSERT_EQ(std::memcmp(v.ac4.data() + (4 * p + 3) * e, alphaBefore.data() + (4 * p + 3) * e, e), 0);
                ASSERT_EQ(std::memcmp(v.ac4i.data() + (4 * p + 3) * e, &s4.row<T>(y)[4 * x + 3], e), 0);
            }
    }
}

TEST(Gamma, TableMembersLookUpEveryValueInEveryLayout)
{
    auto byte = [](std::mt19937& r) { return Orv8u(r()); };
    auto word = [](std::mt19937& r) { return Orv16u(r()); };
    checkMembers(TABLE_MEMBERS(Fwd, 8u), byte, [](Orv8u v) { return double(h9::tableFwd8u[v]); }, 0);
    checkMembers(TABLE_MEMBERS(Inv, 8u), byte, [](Orv8u v) { return double(h9::tableInv8u[v]); }, 0);
    checkMembers(TABLE_MEMBERS(Fwd, 16u), word, [](Orv16u v) { return double(h9::tableFwd16u[v]); }, 0);
    checkMembers(TABLE_MEMBERS(Inv, 16u), word, [](Orv16u v) { return double(h9::tableInv16u[v]); }, 0);
}

// The curve in double precision on x = (v - vMin) / range as the library
// forms it (a float, so that both sides take the same branch at the
// thresholds 0.018f and 0.0812f).
double fwdOnRange(float v, float lo, float hi)
{
    const float range = hi - lo, t = v - lo, x = t * (1.0f / range);
    return lo + (x < 0.018f ? 4.5 * t : (1.099 * std::pow(double(x), 0.45) - 0.099) * range);
}
double invOnRange(float v, float lo, float hi)
{
    const float range = hi - lo, t = v - lo, x = t * (1.0f / range);
    return lo + (x < 0.0812f ? t / 4.5 : std::pow((x + 0.099) / 1.099, 1.0 / 0.45) * range);
}

TEST(Gamma, FloatMembersFollowTheCurveInEveryLayout)
{
    // Data somewhat outside the range too: negative arguments take the
    // linear branch, those above the top continue the curve.
    for (auto [lo, hi] : {std::pair{0.0f, 1.0f}, std::pair{-20.0f, 235.0f}}) {
        SCOPED_TRACE(lo);
        // Now and then a value on or just below a threshold of the unit range.
        const float edges[] = {0.018f, 0.0812f, std::nextafter(0.018f, 0.0f), std::nextafter(0.0812f, 0.0f), lo, hi};
        auto fill = [lo = lo, hi = hi, &edges](std::mt19937& r) {
            if (r() % 8 == 0)
                return edges[r() % 6];
            return float(std::uniform_real_distribution<double>(lo - 0.05 * (hi - lo), hi + 0.1 * (hi - lo))(r));
        };
        const double tol = 1e-6 * (hi - lo);
        checkMembers(FLOAT_MEMBERS(Fwd, lo, hi), fill, [lo = lo, hi = hi](float v) { return fwdOnRange(v, lo, hi); }, tol);
        checkMembers(FLOAT_MEMBERS(Inv, lo, hi), fill, [lo = lo, hi = hi](float v) { return invOnRange(v, lo, hi); }, tol);
    }
}

// The AC4 inverse forms (x + 0.099) / 1.099 in double precision, rounded
// once; the other layouts in single precision, fused. A value where the two
// differ gives different powers.
TEST(Gamma, AlphaLayoutsFormTheInverseArgumentInDouble)
{
    const float inv = 1.0f;
    float v = 0.5f;
    auto single = [&](float t) { return std::fma(t, inv, 0.099f) * 0.9099181f; };
    auto twice = [&](float t) { return float(std::fma(double(t), double(inv), double(0.099f)) * double(0.9099181f)); };
    while (single(v) == twice(v))
        v = std::nextafter(v, 1.0f);
    float px3[3] = {v, v, v}, px4[4] = {v, v, v, 0}, out3[3], out4[4];
    orviGammaInv_32f_C3R(px3, 12, out3, 12, {1, 1}, 0.0f, 1.0f);
    orviGammaInv_32f_AC4R(px4, 16, out4, 16, {1, 1}, 0.0f, 1.0f);
    float p3, p4;
    const float a3 = single(v), a4 = twice(v);
    h9::orvsPowx_32f_A21(&a3, 2.2222223f, &p3, 1);
    h9::orvsPowx_32f_A21(&a4, 2.2222223f, &p4, 1);
    EXPECT_EQ(out3[0], p3);
    EXPECT_EQ(out4[0], p4);
}

TEST(Gamma, EightBitEndsAndTheTieAtOne)
{
    Orv8u px[6] = {0, 255, 1, 255, 0, 1}, out[6];
    ASSERT_EQ(orviGammaFwd_8u_C3R(px, 6, out, 6, {2, 1}), orvStatusOk);
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(out[1], 255);
    EXPECT_EQ(out[2], 4);  // 255 f(1/255) = 4.5, a tie that goes to even
    ASSERT_EQ(orviGammaInv_8u_C3R(px, 6, out, 6, {2, 1}), orvStatusOk);
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(out[1], 255);
}

// On 0..255 and on 16..235 the same curve: the ends map to themselves.
TEST(Gamma, FloatRangeEndsMapToThemselves)
{
    for (auto [lo, hi] : {std::pair{0.0f, 255.0f}, std::pair{16.0f, 235.0f}}) {
        float px[3] = {lo, hi, lo + 0.5f * (hi - lo)}, out[3];
        for (auto fn : {orviGammaFwd_32f_C3R, orviGammaInv_32f_C3R}) {
            ASSERT_EQ(fn(px, 12, out, 12, {1, 1}, lo, hi), orvStatusOk);
            EXPECT_EQ(out[0], lo);
            EXPECT_NEAR(out[1], hi, hi * 1e-6);
        }
        orviGammaFwd_32f_C3R(px, 12, out, 12, {1, 1}, lo, hi);
        EXPECT_NEAR(out[2], lo + (hi - lo) * fwdCurve(0.5), (hi - lo) * 1e-6);
    }
}

// Range, then pointers (plane pointers included), then size, then steps; a
// failing call writes nothing.
TEST(Gamma, ChecksInOrderAndNothingWrittenOnFailure)
{
    float fs[64] = {}, fd[64];
    Orv16u ws[64] = {}, wd[64];
    std::memset(fd, 0x5a, sizeof fd);
    std::memset(wd, 0x5a, sizeof wd);
    auto untouched = [&] {
        for (int i = 0; i < int(sizeof fd); ++i)
            if (reinterpret_cast<Orv8u*>(fd)[i] != 0x5a || reinterpret_cast<Orv8u*>(wd)[i % sizeof wd] != 0x5a)
                return false;
        return true;
    };
    const float* nf = nullptr;
    float* nfd = nullptr;
    // The range first, even with everything else wrong.
    EXPECT_EQ(orviGammaFwd_32f_C3R(nf, 0, nfd, 0, {0, 0}, 1.0f, 1.0f), orvStatusBadGammaRange);
    EXPECT_EQ(orviGammaInv_32f_IP3R(nullptr, 0, {0, 0}, 2.0f, 1.0f), orvStatusBadGammaRange);
    EXPECT_EQ(orviGammaInv_32f_AC4IR(fd, 16, {1, 1}, 0.5f, 0.5f), orvStatusBadGammaRange);
    // Pointers before the size, the size before the steps.
    EXPECT_EQ(orviGammaFwd_32f_C3R(nf, 12, fd, 12, {0, 1}, 0, 1), orvStatusNullPointer);
    EXPECT_EQ(orviGammaFwd_32f_C3R(fs, 12, nfd, 12, {0, 1}, 0, 1), orvStatusNullPointer);
    EXPECT_EQ(orviGammaFwd_32f_C3R(fs, 0, fd, 0, {0, 1}, 0, 1), orvStatusBadSize);
    EXPECT_EQ(orviGammaFwd_32f_C3R(fs, 0, fd, 12, {1, 0}, 0, 1), orvStatusBadSize);
    EXPECT_EQ(orviGammaFwd_32f_C3R(fs, 0, fd, 12, {1, 1}, 0, 1), orvStatusBadStep);
    EXPECT_EQ(orviGammaFwd_32f_C3R(fs, 12, fd, -12, {1, 1}, 0, 1), orvStatusBadStep);
    EXPECT_EQ(orviGammaFwd_16u_AC4R(ws, 8, wd, 0, {1, 1}), orvStatusBadStep);
    EXPECT_EQ(orviGammaInv_16u_C3IR(nullptr, 0, {0, 0}), orvStatusNullPointer);
    EXPECT_EQ(orviGammaInv_8u_AC4IR(reinterpret_cast<Orv8u*>(wd), -4, {1, 1}), orvStatusBadStep);
    // Plane pointers count as pointers: before the size.
    const float* srcPlanes[3] = {fs, nullptr, fs};
    float* dstPlanes[3] = {fd, fd + 8, fd + 16};
    EXPECT_EQ(orviGammaFwd_32f_P3R(srcPlanes, 4, dstPlanes, 4, {0, 0}, 0, 1), orvStatusNullPointer);
    srcPlanes[1] = fs;
    dstPlanes[2] = nullptr;
    EXPECT_EQ(orviGammaInv_32f_P3R(srcPlanes, 4, dstPlanes, 4, {0, 0}, 0, 1), orvStatusNullPointer);
    EXPECT_EQ(orviGammaInv_32f_P3R(nullptr, 4, dstPlanes, 4, {0, 0}, 0, 1), orvStatusNullPointer);
    dstPlanes[2] = fd + 16;
    EXPECT_EQ(orviGammaInv_32f_P3R(srcPlanes, 4, dstPlanes, 4, {-1, 1}, 0, 1), orvStatusBadSize);
    EXPECT_EQ(orviGammaInv_32f_P3R(srcPlanes, 4, dstPlanes, 0, {1, 1}, 0, 1), orvStatusBadStep);
    Orv16u* wPlanes[3] = {wd, nullptr, wd};
    EXPECT_EQ(orviGammaFwd_16u_IP3R(wPlanes, 2, {1, 1}), orvStatusNullPointer);
    EXPECT_TRUE(untouched());
}

}  // namespace
