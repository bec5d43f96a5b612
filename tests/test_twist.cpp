// Colour twist: vector paths against the scalar form for every member, the
// order of the arithmetic, clamping and rounding, the caller's rounding mode,
// alpha, in place, the 32f paths, and the argument checks.
#include <immintrin.h>

#include <cmath>
#include <array>
#include <cstring>
#include <memory>
#include <limits>
#include <random>
#include <vector>

#include "support/image.h"

using namespace orvtest;

namespace {

using Matrix = Orv32f[3][4];
using Rows = const Orv32f (*)[4];  // the matrix argument as the functions take it

// Weights and offsets that send a good share of the results of each type
// below and above its range as well as inside it.
const Matrix kMix8 = {{0.9f, 0.3f, -0.2f, 12.25f}, {-0.4f, 1.2f, 0.35f, -20.5f}, {0.25f, -0.6f, 1.4f, 3.5f}};
const Matrix kMix16 = {{0.9f, 0.3f, -0.2f, 3136.5f}, {-0.4f, 1.2f, 0.35f, -5248.25f}, {0.25f, -0.6f, 1.4f, 896.75f}};
const Matrix kMix32f = {{0.299f, 0.587f, 0.114f, 0.0625f},
                        {-0.168736f, -0.331264f, 0.5f, 0.5f},
                        {0.5f, -0.418688f, -0.081312f, -1.0e-3f}};

template <class T>
const Matrix& mixFor()
{
    if constexpr (std::is_same_v<T, Orv8u>)
        return kMix8;
    else if constexpr (std::is_same_v<T, float>)
        return kMix32f;
    else
        return kMix16;
}

template <class T>
void fillFor(GuardedImage& img, std::mt19937& rng)
{
    if constexpr (std::is_same_v<T, float>)
        img.fill<T>(rng, -2.0, 2.0);
    else
        img.fill<T>(rng, double(std::numeric_limits<T>::min()), double(std::numeric_limits<T>::max()));
}

template <class T>
constexpr int padUnit()
{
    return int(sizeof(T));
}

// ---------------------------------------------------------------------------
// Sweeps: the vector run and the scalar run of a member, over the standard
// geometries, give the same status and bytes and write nothing outside.

// f(src, srcStep, dst, dstStep, roi) for the interleaved members.
template <class T, class F>
void sweepInterleaved(int channels, F f)
{
    expectVectorMatchesScalar(channels * sizeof(T), channels * sizeof(T), padUnit<T>(), fillFor<T>,
                              [&](GuardedImage& s, GuardedImage& d, RoiSize roi) {
                                  return f(s.data<T>(), s.step(), d.data<T>(), d.step(), roi);
                              });
}

// f(srcDst, step, roi) for the in-place interleaved members.
template <class T, class F>
void sweepInPlace(int channels, F f)
{
    std::mt19937 rng(99);
    for (const Geometry& g : standardSweep(padUnit<T>())) {
        SCOPED_TRACE(g.str());
        GuardedImage src = makeImage(g.width, g.height, channels * sizeof(T), g.srcPad, g.negative, g.endSlack);
        GuardedImage v = makeImage(g.width, g.height, channels * sizeof(T), g.srcPad, g.negative, g.endSlack);
        GuardedImage s = makeImage(g.width, g.height, channels * sizeof(T), g.srcPad, g.negative, g.endSlack);
        fillFor<T>(src, rng);
        v.copyFrom(src);
        s.copyFrom(src);
        const RoiSize roi{g.width, g.height};
        const OrvStatus sv = f(v.data<T>(), v.step(), roi);
        OrvStatus ss;
        {
            ScalarBlocks scalar;
            ss = f(s.data<T>(), s.step(), roi);
        }
        ASSERT_EQ(sv, ss);
        ASSERT_TRUE(v.guardsIntact());
        ASSERT_TRUE(s.guardsIntact());
        ASSERT_EQ(v.pixels(), s.pixels());
        if (sv != orvStatusOk) {
            ASSERT_EQ(v.pixels(), src.pixels());
        }
    }
}

// Three planes of one geometry.
struct Planes {
    Planes(const Geometry& g, int elemBytes, int pad)
    {
        for (int k = 0; k < 3; ++k)
            img.emplace_back(new GuardedImage(g.width * elemBytes, g.height,
                                              (g.negative ? -1 : 1) * (g.width * elemBytes + pad), g.endSlack + 4 * k));
    }
    template <class T>
    std::array<T*, 3> ptrs() const
    {
        return {img[0]->data<T>(), img[1]->data<T>(), img[2]->data<T>()};
    }
    std::vector<uint8_t> pixels() const
    {
        std::vector<uint8_t> v;
        for (auto& p : img) {
            auto q = p->pixels();
            v.insert(v.end(), q.begin(), q.end());
        }
        return v;
    }
    bool guardsIntact() const
    {
        for (auto& p : img)
            if (!p->guardsIntact())
                return false;
        return true;
    }
    int step() const { return img[0]->step(); }
    std::vector<std::unique_ptr<GuardedImage>> img;
};

// f(srcPlanes, srcStep, dstPlanes, dstStep, roi); in place when `inPlace`.
template <class T, class F>
void sweepPlanar(bool inPlace, F f)
{
    std::mt19937 rng(5);
    for (const Geometry& g : standardSweep(padUnit<T>())) {
        SCOPED_TRACE(g.str());
        Planes src(g, sizeof(T), g.srcPad), v(g, sizeof(T), g.dstPad), s(g, sizeof(T), g.dstPad);
        for (int k = 0; k < 3; ++k) {
            fillFor<T>(*src.img[k], rng);
            if (inPlace) {
                v.img[k]->copyFrom(*src.img[k]);
                s.img[k]->copyFrom(*src.img[k]);
            }
        }
        const RoiSize roi{g.width, g.height};
        auto run = [&](Planes& d) {
            auto sp = inPlace ? d.ptrs<T>() : src.ptrs<T>();
            return f(sp.data(), inPlace ? d.step() : src.step(), d.ptrs<T>().data(), d.step(), roi);
        };
        const OrvStatus sv = run(v);
        OrvStatus ss;
        {
            ScalarBlocks scalar;
            ss = run(s);
        }
        ASSERT_EQ(sv, ss);
        ASSERT_TRUE(v.guardsIntact() && s.guardsIntact() && src.guardsIntact());
        ASSERT_EQ(v.pixels(), s.pixels());
    }
}

// The 3-by-4 members of one element type through all sweeps.
template <class T, class C3, class C3I, class AC4, class AC4I, class P3, class IP3>
void sweepType(C3 c3, C3I c3i, AC4 ac4, AC4I ac4i, P3 p3, IP3 ip3)
{
    const Matrix& m = mixFor<T>();
    sweepInterleaved<T>(3, [&](const T* s, int ss, T* d, int ds, RoiSize r) { return c3(s, ss, d, ds, r, m); });
    sweepInterleaved<T>(4, [&](const T* s, int ss, T* d, int ds, RoiSize r) { return ac4(s, ss, d, ds, r, m); });
    sweepInPlace<T>(3, [&](T* p, int st, RoiSize r) { return c3i(p, st, r, m); });
    sweepInPlace<T>(4, [&](T* p, int st, RoiSize r) { return ac4i(p, st, r, m); });
    sweepPlanar<T>(false, [&](T* const* s, int ss, T* const* d, int ds, RoiSize r) {
        const T* const cs[3] = {s[0], s[1], s[2]};
        T* dd[3] = {d[0], d[1], d[2]};
        return p3(cs, ss, dd, ds, r, m);
    });
    sweepPlanar<T>(true, [&](T* const*, int, T* const* d, int ds, RoiSize r) {
        T* dd[3] = {d[0], d[1], d[2]};
        return ip3(dd, ds, r, m);
    });
}

TEST(Twist, VectorPathsMatchTheScalarForm)
{
    sweepType<Orv8u>(orviColorTwist32f_8u_C3R, orviColorTwist32f_8u_C3IR, orviColorTwist32f_8u_AC4R,
                     orviColorTwist32f_8u_AC4IR, orviColorTwist32f_8u_P3R, orviColorTwist32f_8u_IP3R);
    sweepType<Orv16u>(orviColorTwist32f_16u_C3R, orviColorTwist32f_16u_C3IR, orviColorTwist32f_16u_AC4R,
                      orviColorTwist32f_16u_AC4IR, orviColorTwist32f_16u_P3R, orviColorTwist32f_16u_IP3R);
    sweepType<Orv16s>(orviColorTwist32f_16s_C3R, orviColorTwist32f_16s_C3IR, orviColorTwist32f_16s_AC4R,
                      orviColorTwist32f_16s_AC4IR, orviColorTwist32f_16s_P3R, orviColorTwist32f_16s_IP3R);
    sweepType<Orv32f>(orviColorTwist_32f_C3R, orviColorTwist_32f_C3IR, orviColorTwist_32f_AC4R,
                      orviColorTwist_32f_AC4IR, orviColorTwist_32f_P3R, orviColorTwist_32f_IP3R);
    const Orv32f m4[4][4] = {{0.5f, 0.25f, 0.125f, 0.1f}, {-1.5f, 2.0f, 0.3f, 0.7f}, {0.9f, 0.1f, -0.4f, 1.1f},
                             {0.0f, 0.0f, 0.0f, 1.0f}};
    sweepInterleaved<Orv32f>(4, [&](const Orv32f* s, int ss, Orv32f* d, int ds, RoiSize r) {
        return orviColorTwist_32f_C4R(s, ss, d, ds, r, m4);
    });
}

// ---------------------------------------------------------------------------
// The arithmetic itself, against a reference written from the definition.

template <class T>
T reference(const Matrix& m, int r, float a, float b, float c)
{
    float s = (m[r][3] + a * m[r][0]) + (c * m[r][2] + b * m[r][1]);
    if constexpr (std::is_same_v<T, float>) {
        return s;
    } else {
        const float lo = float(std::numeric_limits<T>::min()), hi = float(std::numeric_limits<T>::max());
        s = s < hi ? s : hi;
        s = s > lo ? s : lo;
        return T(std::nearbyint(s));
    }
}

// A matrix whose terms differ much in size, so that other orders of the
// additions round differently on many pixels.
struct MatrixValue {
    Matrix v;
};

template <class T>
MatrixValue orderSensitive()
{
    const float scale = std::is_same_v<T, Orv8u> ? 1.0f : std::is_same_v<T, float> ? 1.0f / 128 : 256.0f;
    return {{{0.7071068f, 1.0e-3f, 0.33333334f, 100.3f * scale},
             {1.0e-3f, 0.5773503f, 0.14285715f, -50.7f * scale},
             {0.1f, 0.2f, 0.30000001f, 0.123456f * scale}}};
}

template <class T, class F>
void expectReferenceC3(F f)
{
    const MatrixValue mv = orderSensitive<T>();
    const Matrix& m = mv.v;
    std::mt19937 rng(21);
    const int w = 67, h = 3;
    GuardedImage src = makeImage(w, h, 3 * sizeof(T), 0, false, 0), dst = makeImage(w, h, 3 * sizeof(T), 0, false, 0);
    fillFor<T>(src, rng);
    ASSERT_EQ(f(src.data<T>(), src.step(), dst.data<T>(), dst.step(), RoiSize{w, h}, m), orvStatusOk);
    int orderMatters = 0;
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const T* p = src.row<T>(y) + 3 * x;
            const float a = float(p[0]), b = float(p[1]), c = float(p[2]);
            for (int r = 0; r < 3; ++r) {
                const T expect = reference<T>(m, r, a, b, c);
                ASSERT_EQ(std::memcmp(&dst.row<T>(y)[3 * x + r], &expect, sizeof(T)), 0) << x << "," << y << " ch " << r;
                const float other = ((a * m[r][0] + b * m[r][1]) + c * m[r][2]) + m[r][3];
                const float fused = std::fma(c, m[r][2], std::fma(b, m[r][1], std::fma(a, m[r][0], m[r][3])));
                if (std::is_same_v<T, float> && (expect != other || expect != fused))
                    ++orderMatters;
            }
        }
    }
    // The float data must be able to tell the specified order from others
    // (integer results hide most one-ulp differences).
    if (std::is_same_v<T, float>) {
        EXPECT_GT(orderMatters, 10);
    }
}

TEST(Twist, ResultsFollowTheUnfusedOrderClampAndNearest)
{
    expectReferenceC3<Orv8u>(orviColorTwist32f_8u_C3R);
    expectReferenceC3<Orv16u>(orviColorTwist32f_16u_C3R);
    expectReferenceC3<Orv16s>(orviColorTwist32f_16s_C3R);
    expectReferenceC3<Orv32f>(orviColorTwist_32f_C3R);
}

// One 8u pixel through a member of each layout; returns channels 0-2.
std::array<int, 3> twist8(const Matrix& m, Orv8u a, Orv8u b, Orv8u c, int width = 1)
{
    std::vector<Orv8u> s3, s4, d3(3 * width), d4(4 * width, 77), p[3] = {std::vector<Orv8u>(width, a),
                                                                        std::vector<Orv8u>(width, b),
                                                                        std::vector<Orv8u>(width, c)};
    for (int i = 0; i < width; ++i) {
        s3.insert(s3.end(), {a, b, c});
        s4.insert(s4.end(), {a, b, c, 9});
    }
    std::vector<Orv8u> q[3] = {std::vector<Orv8u>(width), std::vector<Orv8u>(width), std::vector<Orv8u>(width)};
    const Orv8u* ps[3] = {p[0].data(), p[1].data(), p[2].data()};
    Orv8u* pd[3] = {q[0].data(), q[1].data(), q[2].data()};
    EXPECT_EQ(orviColorTwist32f_8u_C3R(s3.data(), 3 * width, d3.data(), 3 * width, {width, 1}, m), orvStatusOk);
    EXPECT_EQ(orviColorTwist32f_8u_AC4R(s4.data(), 4 * width, d4.data(), 4 * width, {width, 1}, m), orvStatusOk);
    EXPECT_EQ(orviColorTwist32f_8u_P3R(ps, width, pd, width, {width, 1}, m), orvStatusOk);
    const int last = width - 1;
    for (int r = 0; r < 3; ++r) {
        EXPECT_EQ(d3[3 * last + r], d3[r]);
        EXPECT_EQ(d4[4 * last + r], d3[r]);
        EXPECT_EQ(q[r][last], d3[r]);
        EXPECT_EQ(q[r][0], d3[r]);
    }
    EXPECT_EQ(d4[3], 77);
    return {d3[0], d3[1], d3[2]};
}

TEST(Twist, LimitsNaNAndTiesToEven)
{
    // Offsets alone: 0.5 -> 0, 1.5 -> 2, 2.5 -> 2, in the scalar and the
    // vector part of a row.
    const Matrix ties = {{0, 0, 0, 0.5f}, {0, 0, 0, 1.5f}, {0, 0, 0, 2.5f}};
    for (int w : {1, 8, 19})
        EXPECT_EQ(twist8(ties, 1, 2, 3, w), (std::array<int, 3>{0, 2, 2})) << w;
    const Matrix ties2 = {{0, 0, 0, 254.5f}, {0, 0, 0, 253.5f}, {0, 0, 0, -0.5f}};
    EXPECT_EQ(twist8(ties2, 1, 2, 3, 9), (std::array<int, 3>{254, 254, 0}));
    // Beyond the range: the limits.
    const Matrix big = {{2, 0, 0, 0}, {0, -1, 0, 0}, {0, 0, 1, 1.0e30f}};
    EXPECT_EQ(twist8(big, 200, 10, 0, 9), (std::array<int, 3>{255, 0, 255}));
    // A NaN weight gives the upper limit in the one channel that it reaches;
    // a NaN constant too; an infinite product below gives the lower one.
    const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    const Matrix withNaN = {{1, 0, 0, 0}, {0, nan, 0, 0}, {0, 0, 1, nan}};
    EXPECT_EQ(twist8(withNaN, 10, 20, 30, 17), (std::array<int, 3>{10, 255, 255}));
    const Matrix minusInf = {{-inf, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 0, 0}};
    EXPECT_EQ(twist8(minusInf, 1, 20, 30, 17), (std::array<int, 3>{0, 20, 0}));
    // inf * 0 is NaN: the upper limit.
    EXPECT_EQ(twist8(minusInf, 0, 20, 30, 17), (std::array<int, 3>{255, 20, 0}));

    // 16u and 16s limits and ties, in a vector block and a scalar tail.
    const Matrix m16 = {{1, 0, 0, 70000}, {0, 1, 0, -0.5f}, {0, 0, 1, 0.5f}};
    std::vector<Orv16u> u(3 * 9, 1), ud(3 * 9);
    for (int i = 0; i < 9; ++i)
        u[3 * i + 2] = 2;
    ASSERT_EQ(orviColorTwist32f_16u_C3R(u.data(), 54, ud.data(), 54, {9, 1}, m16), orvStatusOk);
    for (int i : {0, 8})
        EXPECT_EQ((std::array<int, 3>{ud[3 * i], ud[3 * i + 1], ud[3 * i + 2]}), (std::array<int, 3>{65535, 0, 2}));
    const Matrix m16s = {{1, 0, 0, -40000}, {0, 1, 0, 40000}, {0, 0, 1, -0.5f}};
    std::vector<Orv16s> v(3 * 9, -3), vd(3 * 9);
    ASSERT_EQ(orviColorTwist32f_16s_C3R(v.data(), 54, vd.data(), 54, {9, 1}, m16s), orvStatusOk);
    for (int i : {0, 8})
        EXPECT_EQ((std::array<int, 3>{vd[3 * i], vd[3 * i + 1], vd[3 * i + 2]}), (std::array<int, 3>{-32768, 32767, -4}));

    // 32f: no clamp, NaN passes.
    float f[3] = {1000, 2, 3}, fd[3];
    const Matrix mf = {{1, 0, 0, 0}, {0, nan, 0, 0}, {0, 0, -1e30f, 0}};
    ASSERT_EQ(orviColorTwist_32f_C3R(f, 12, fd, 12, {1, 1}, mf), orvStatusOk);
    EXPECT_EQ(fd[0], 1000.0f);
    EXPECT_TRUE(std::isnan(fd[1]));
    EXPECT_EQ(fd[2], 3.0f * -1.0e30f);
}

TEST(Twist, InPlaceEqualsOutOfPlace)
{
    // A matrix that mixes all channels: a form that stored a result before
    // reading the pixel's other inputs would differ.
    const Matrix m = {{0.1f, 0.5f, 0.4f, 1}, {0.7f, 0.2f, 0.1f, 2}, {0.3f, 0.3f, 0.4f, 3}};
    std::mt19937 rng(8);
    for (int w : {1, 7, 8, 9, 33}) {
        for (bool scalar : {false, true}) {
            std::unique_ptr<ScalarBlocks> sb(scalar ? new ScalarBlocks : nullptr);
            std::vector<Orv8u> s3(3 * w), s4(4 * w), d3(3 * w), d4(4 * w);
            for (auto& x : s3)
                x = Orv8u(rng());
            for (auto& x : s4)
                x = Orv8u(rng());
            d4 = s4;
            orviColorTwist32f_8u_C3R(s3.data(), 3 * w, d3.data(), 3 * w, {w, 1}, m);
            orviColorTwist32f_8u_AC4R(s4.data(), 4 * w, d4.data(), 4 * w, {w, 1}, m);
            orviColorTwist32f_8u_C3IR(s3.data(), 3 * w, {w, 1}, m);
            orviColorTwist32f_8u_AC4IR(s4.data(), 4 * w, {w, 1}, m);
            EXPECT_EQ(s3, d3) << w;
            EXPECT_EQ(s4, d4) << w;

            std::vector<float> f(3 * w), g(3 * w);
            for (auto& x : f)
                x = float(rng() % 1000) / 7.0f;
            std::vector<float> p0(f.begin(), f.begin() + w), p1(f.begin() + w, f.begin() + 2 * w),
                p2(f.begin() + 2 * w, f.end());
            std::vector<float> q0(w), q1(w), q2(w);
            const float* ps[3] = {p0.data(), p1.data(), p2.data()};
            float* pd[3] = {q0.data(), q1.data(), q2.data()};
            float* pi[3] = {p0.data(), p1.data(), p2.data()};
            orviColorTwist_32f_P3R(ps, 4 * w, pd, 4 * w, {w, 1}, m);
            orviColorTwist_32f_IP3R(pi, 4 * w, {w, 1}, m);
            EXPECT_EQ(p0, q0);
            EXPECT_EQ(p1, q1);
            EXPECT_EQ(p2, q2);
        }
    }
}

// The fourth element of every AC4 destination pixel keeps its value, in all
// four element types, in place and not.
template <class T, class F, class FI>
void expectAlphaKept(F f, FI fi)
{
    std::mt19937 rng(4);
    for (int w : {1, 8, 13, 64}) {
        GuardedImage s = makeImage(w, 2, 4 * sizeof(T), 0, false, 0), d = makeImage(w, 2, 4 * sizeof(T), 8, false, 0);
        fillFor<T>(s, rng);
        fillFor<T>(d, rng);
        const auto before = d.pixels(), srcBefore = s.pixels();
        ASSERT_EQ(f(s.data<T>(), s.step(), d.data<T>(), d.step(), RoiSize{w, 2}, mixFor<T>()), orvStatusOk);
        ASSERT_EQ(fi(s.data<T>(), s.step(), RoiSize{w, 2}, mixFor<T>()), orvStatusOk);
        const auto after = d.pixels(), srcAfter = s.pixels();
        const size_t e = sizeof(T);
        for (size_t px = 0; px < after.size() / (4 * e); ++px) {
            EXPECT_EQ(std::memcmp(&after[(4 * px + 3) * e], &before[(4 * px + 3) * e], e), 0) << w << " px " << px;
            EXPECT_EQ(std::memcmp(&srcAfter[(4 * px + 3) * e], &srcBefore[(4 * px + 3) * e], e), 0) << w;
            // The three others are the same, in place or not.
            EXPECT_EQ(std::memcmp(&after[4 * px * e], &srcAfter[4 * px * e], 3 * e), 0) << w << " px " << px;
        }
    }
}

TEST(Twist, AlphaIsKept)
{
    expectAlphaKept<Orv8u>(orviColorTwist32f_8u_AC4R, orviColorTwist32f_8u_AC4IR);
    expectAlphaKept<Orv16u>(orviColorTwist32f_16u_AC4R, orviColorTwist32f_16u_AC4IR);
    expectAlphaKept<Orv16s>(orviColorTwist32f_16s_AC4R, orviColorTwist32f_16s_AC4IR);
    expectAlphaKept<Orv32f>(orviColorTwist_32f_AC4R, orviColorTwist_32f_AC4IR);
}

// ---------------------------------------------------------------------------
// The caller's rounding mode.

constexpr uint32_t kRcMask = 0x6000, kTowardZero = 0x6000, kUp = 0x4000, kFlags = 0x3f;

class Csr {
public:
    explicit Csr(uint32_t word) : saved_(_mm_getcsr()) { _mm_setcsr(word); }
    ~Csr() { _mm_setcsr(saved_); }
    uint32_t saved() const { return saved_; }

private:
    uint32_t saved_;
};

TEST(Twist, IntegerMembersRoundToNearestInAnyCallerMode)
{
    // 1.7 + 0 and 2.5 + 0: truncation would give 1 and 2, rounding up 2 and 3.
    const Matrix m = {{0.5f, 0, 0, 0.2f}, {0, 0.5f, 0, 0}, {0, 0, 1, -0.5f}};
    const uint32_t base = _mm_getcsr() & ~(kRcMask | kFlags);
    for (uint32_t mode : {kTowardZero, kUp, 0x2000u}) {
        SCOPED_TRACE(mode);
        for (int w : {1, 16}) {
            std::vector<Orv8u> s, d(3 * w);
            for (int i = 0; i < w; ++i)
                s.insert(s.end(), {3, 5, 1});
            const uint32_t word = base | mode;
            uint32_t after;
            {
                Csr csr(word);
                ASSERT_EQ(orviColorTwist32f_8u_C3R(s.data(), 3 * w, d.data(), 3 * w, {w, 1}, m), orvStatusOk);
                after = _mm_getcsr();
            }
            // Back to the caller's whole word, flags raised inside included.
            EXPECT_EQ(after, word);
            for (int i = 0; i < w; ++i)
                EXPECT_EQ((std::array<int, 3>{d[3 * i], d[3 * i + 1], d[3 * i + 2]}), (std::array<int, 3>{2, 2, 0}));
        }
        // 16-bit and planar members too.
        std::vector<Orv16s> s16 = {3, 5, 1}, d16(3);
        std::vector<Orv16u> pl[3] = {{3}, {5}, {1}};
        const Orv16u* ps[3] = {pl[0].data(), pl[1].data(), pl[2].data()};
        Orv16u o[3];
        Orv16u* pd[3] = {&o[0], &o[1], &o[2]};
        {
            Csr csr(base | mode);
            orviColorTwist32f_16s_C3R(s16.data(), 6, d16.data(), 6, {1, 1}, m);
            orviColorTwist32f_16u_P3R(ps, 2, pd, 2, {1, 1}, m);
            EXPECT_EQ(_mm_getcsr() & kRcMask, mode);
        }
        EXPECT_EQ(d16, (std::vector<Orv16s>{2, 2, 0}));
        EXPECT_EQ((std::array<int, 3>{o[0], o[1], o[2]}), (std::array<int, 3>{2, 2, 0}));
    }
    // With nearest already set nothing is restored: a flag raised by the
    // conversion (inexact) stays raised.
    {
        Csr csr(base);
        Orv8u px[3] = {3, 5, 1}, out[3];
        ASSERT_EQ(orviColorTwist32f_8u_C3R(px, 3, out, 3, {1, 1}, m), orvStatusOk);
        EXPECT_EQ(_mm_getcsr() & kRcMask, 0u);
        EXPECT_NE(_mm_getcsr() & 0x20, 0u);
    }
    // A failing call does not touch the mode.
    {
        Csr csr(base | kTowardZero);
        EXPECT_EQ(orviColorTwist32f_8u_C3R(nullptr, 3, nullptr, 3, {1, 1}, m), orvStatusNullPointer);
        EXPECT_EQ(_mm_getcsr(), base | kTowardZero);
    }
}

TEST(Twist, FloatMembersKeepTheCallersMode)
{
    // 1/3 + 1/3 rounds differently upward and to nearest: the float members
    // compute in the caller's mode and leave it as it is.
    const Matrix m = {{1.0f / 3, 0, 0, 1.0f / 3}, {0, 1.0f / 3, 0, 0.1f}, {0, 0, 1.0f / 3, 0.2f}};
    float px[3] = {1, 1, 1}, nearest[3], up[3];
    ASSERT_EQ(orviColorTwist_32f_C3R(px, 12, nearest, 12, {1, 1}, m), orvStatusOk);
    const uint32_t word = (_mm_getcsr() & ~kRcMask) | kUp;
    {
        Csr csr(word);
        ASSERT_EQ(orviColorTwist_32f_C3R(px, 12, up, 12, {1, 1}, m), orvStatusOk);
        EXPECT_EQ(_mm_getcsr() & ~kFlags, word & ~kFlags);
    }
    EXPECT_NE(std::memcmp(nearest, up, sizeof up), 0);
}

// ---------------------------------------------------------------------------
// The paths of the 32f C3 and C4 members give the same values.

std::vector<float> randomFloats(size_t n, uint32_t seed)
{
    std::mt19937 rng(seed);
    std::vector<float> v(n);
    for (auto& x : v)
        x = std::uniform_real_distribution<float>(-4, 4)(rng);
    return v;
}

// The image in a buffer with `stepFloats` per row, starting `offset` floats
// past a 64-byte boundary; returns the rows' values after the call.
template <int Ch, class F>
std::vector<float> runLaidOut(const std::vector<float>& pixels, int w, int h, int stepFloats, int srcOffset,
                              int dstOffset, F f)
{
    std::vector<float> sbuf(size_t(stepFloats) * h + 32, 0), dbuf(size_t(stepFloats) * h + 32, 0);
    auto aligned = [](std::vector<float>& b, int off) {
        const uintptr_t a = reinterpret_cast<uintptr_t>(b.data());
        return b.data() + ((64 - a % 64) % 64) / 4 + off;
    };
    float* s = aligned(sbuf, srcOffset);
    float* d = aligned(dbuf, dstOffset);
    for (int y = 0; y < h; ++y)
        std::memcpy(s + size_t(y) * stepFloats, &pixels[size_t(y) * w * Ch], sizeof(float) * w * Ch);
    EXPECT_EQ(f(s, 4 * stepFloats, d, 4 * stepFloats, RoiSize{w, h}), orvStatusOk);
    std::vector<float> out;
    for (int y = 0; y < h; ++y)
        out.insert(out.end(), d + size_t(y) * stepFloats, d + size_t(y) * stepFloats + w * Ch);
    return out;
}

TEST(Twist, Float3ChannelPathsAgree)
{
    const Matrix& m = kMix32f;
    auto c3r = [&](const float* s, int ss, float* d, int ds, RoiSize r) { return orviColorTwist_32f_C3R(s, ss, d, ds, r, m); };
    // 11664 x 1 is 34992 values (ordinary stores), 11665 x 1 above (streaming);
    // 972 x 12 and 973 x 12 on both sides as images.
    for (auto [w, h] : {std::pair{11664, 1}, std::pair{11665, 1}, std::pair{972, 12}, std::pair{973, 12},
                        std::pair{5, 7}, std::pair{64, 64}}) {
        SCOPED_TRACE(std::to_string(w) + "x" + std::to_string(h));
        const auto px = randomFloats(size_t(w) * h * 3, w + h);
        const auto tight = runLaidOut<3>(px, w, h, 3 * w, 0, 0, c3r);        // contiguous
        const auto padded = runLaidOut<3>(px, w, h, 3 * w + 4, 0, 0, c3r);    // row by row
        const auto shifted = runLaidOut<3>(px, w, h, 3 * w + 1, 1, 2, c3r);   // unaligned rows
        const auto odd = runLaidOut<3>(px, w, h, 3 * w, 3, 1, c3r);           // contiguous, unaligned
        EXPECT_EQ(tight, padded);
        EXPECT_EQ(tight, shifted);
        EXPECT_EQ(tight, odd);
        // In place gives the same values too.
        auto ip = px;
        ASSERT_EQ(orviColorTwist_32f_C3IR(ip.data(), 12 * w, {w, h}, m), orvStatusOk);
        EXPECT_EQ(tight, ip);
        std::vector<float> scalarRun;
        {
            ScalarBlocks scalar;
            scalarRun = runLaidOut<3>(px, w, h, 3 * w, 0, 0, c3r);
        }
        EXPECT_EQ(tight, scalarRun);
    }
}

TEST(Twist, Float4ChannelFusedOrderAndPaths)
{
    const Orv32f m[4][4] = {{0.70710677f, 0.33333334f, 1.0e-3f, 3.1f},
                            {-1.5f, 2.0f, 0.3f, 0.7f},
                            {0.9f, 0.1f, -0.4f, 1.1f},
                            {0.125f, 0.0f, 0.0f, 1.0f}};
    auto c4r = [&](const float* s, int ss, float* d, int ds, RoiSize r) { return orviColorTwist_32f_C4R(s, ss, d, ds, r, m); };
    const int w = 45, h = 5;
    const auto px = randomFloats(size_t(w) * h * 4, 17);
    const auto out = runLaidOut<4>(px, w, h, 4 * w, 0, 0, c4r);
    int fusedMatters = 0;
    for (size_t i = 0; i < out.size() / 4; ++i) {
        const float* p = &px[4 * i];
        for (int r = 0; r < 4; ++r) {
            float t = p[1] * m[r][1];
            t = std::fma(p[0], m[r][0], t);
            t = std::fma(p[2], m[r][2], t);
            t = std::fma(p[3], m[r][3], t);
            ASSERT_EQ(out[4 * i + r], t) << i << " ch " << r;
            if (t != ((p[1] * m[r][1] + p[0] * m[r][0]) + p[2] * m[r][2]) + p[3] * m[r][3])
                ++fusedMatters;
        }
    }
    EXPECT_GT(fusedMatters, 10);
    // Aligned (streaming) and unaligned rows, contiguous and wider steps.
    EXPECT_EQ(out, runLaidOut<4>(px, w, h, 4 * w + 4, 0, 0, c4r));
    EXPECT_EQ(out, runLaidOut<4>(px, w, h, 4 * w + 4, 0, 1, c4r));
    EXPECT_EQ(out, runLaidOut<4>(px, w, h, 4 * w + 1, 0, 0, c4r));
    EXPECT_EQ(out, runLaidOut<4>(px, w, h, 4 * w, 2, 0, c4r));
    EXPECT_EQ(out, runLaidOut<4>(px, w, h, 4 * w, 4, 4, c4r));
}

// ---------------------------------------------------------------------------
// Checks: pointers (the matrix too), then size, then steps below 1; nothing
// written and nothing read on failure.

template <class T>
struct CheckBuffers {
    CheckBuffers()
    {
        std::memset(src, 0x11, sizeof src);
        std::memset(dst, 0x5a, sizeof dst);
    }
    bool untouched() const
    {
        for (size_t i = 0; i < sizeof dst; ++i)
            if (reinterpret_cast<const uint8_t*>(dst)[i] != 0x5a ||
                reinterpret_cast<const uint8_t*>(src)[i] != 0x11)
                return false;
        return true;
    }
    T src[64];
    T dst[64];
};

// f(src, srcStep, dst, dstStep, roi, twist) with src, dst, twist nullable.
template <class T, class F>
void expectCheckOrder(F f, bool inPlace = false)
{
    CheckBuffers<T> b;
    const Matrix& m = mixFor<T>();
    const T* s = b.src;
    T* d = b.dst;
    EXPECT_EQ(f(nullptr, 0, nullptr, 0, RoiSize{0, 0}, nullptr), orvStatusNullPointer);
    EXPECT_EQ(f(nullptr, 16, d, 16, RoiSize{1, 1}, m), orvStatusNullPointer);
    if (!inPlace) {
        EXPECT_EQ(f(s, 16, nullptr, 16, RoiSize{1, 1}, m), orvStatusNullPointer);
    }
    EXPECT_EQ(f(s, 16, d, 16, RoiSize{1, 1}, nullptr), orvStatusNullPointer);
    EXPECT_EQ(f(s, 16, d, 16, RoiSize{0, 1}, nullptr), orvStatusNullPointer);
    EXPECT_EQ(f(s, 0, d, -1, RoiSize{0, 1}, m), orvStatusBadSize);
    EXPECT_EQ(f(s, 0, d, 0, RoiSize{1, 0}, m), orvStatusBadSize);
    EXPECT_EQ(f(s, 16, d, 16, RoiSize{-3, 2}, m), orvStatusBadSize);
    EXPECT_EQ(f(s, 0, d, 16, RoiSize{1, 1}, m), orvStatusBadStep);
    if (!inPlace) {
        EXPECT_EQ(f(s, 16, d, 0, RoiSize{1, 1}, m), orvStatusBadStep);
    }
    EXPECT_EQ(f(s, -16, d, 16, RoiSize{1, 2}, m), orvStatusBadStep);
    EXPECT_TRUE(b.untouched());
    EXPECT_EQ(f(s, 1, d, 1, RoiSize{1, 1}, m), orvStatusOk);  // any positive step
}

template <class T, class C3, class C3I, class AC4, class AC4I, class P3, class IP3>
void checkType(C3 c3, C3I c3i, AC4 ac4, AC4I ac4i, P3 p3, IP3 ip3)
{
    expectCheckOrder<T>(c3);
    expectCheckOrder<T>(ac4);
    // In place: one pointer and one step.
    expectCheckOrder<T>([&](const T* s, int ss, T* d, int, RoiSize r, Rows m) {
        return c3i(s ? const_cast<T*>(s) : nullptr, ss, r, m);
    }, true);
    expectCheckOrder<T>([&](const T* s, int ss, T* d, int, RoiSize r, Rows m) {
        return ac4i(s ? const_cast<T*>(s) : nullptr, ss, r, m);
    }, true);
    // Planar: the arrays and each plane pointer.
    expectCheckOrder<T>([&](const T* s, int ss, T* d, int ds, RoiSize r, Rows m) {
        const T* sp[3] = {s, s + 16, s + 32};
        T* dp[3] = {d, d ? d + 16 : nullptr, d ? d + 32 : nullptr};
        return p3(sp, ss, dp, ds, r, m);
    });
    expectCheckOrder<T>([&](const T* s, int ss, T* d, int, RoiSize r, Rows m) {
        T* p = const_cast<T*>(s);
        T* sp[3] = {p, p ? p + 16 : nullptr, p ? p + 32 : nullptr};
        return ip3(sp, ss, r, m);
    }, true);
    CheckBuffers<T> b;
    const T* sp[3] = {b.src, nullptr, b.src};
    T* dp[3] = {b.dst, b.dst, nullptr};
    T* ok[3] = {b.dst, b.dst + 16, b.dst + 32};
    const T* okc[3] = {b.src, b.src + 16, b.src + 32};
    EXPECT_EQ(p3(nullptr, 16, ok, 16, RoiSize{1, 1}, mixFor<T>()), orvStatusNullPointer);
    EXPECT_EQ(p3(okc, 16, nullptr, 16, RoiSize{1, 1}, mixFor<T>()), orvStatusNullPointer);
    EXPECT_EQ(p3(sp, 16, ok, 16, RoiSize{0, 0}, mixFor<T>()), orvStatusNullPointer);
    EXPECT_EQ(p3(okc, 16, dp, 16, RoiSize{0, 0}, mixFor<T>()), orvStatusNullPointer);
    EXPECT_EQ(ip3(nullptr, 16, RoiSize{1, 1}, mixFor<T>()), orvStatusNullPointer);
    EXPECT_EQ(ip3(dp, 16, RoiSize{0, 0}, mixFor<T>()), orvStatusNullPointer);
    EXPECT_TRUE(b.untouched());
}

TEST(Twist, ChecksInOrderAndNothingWrittenOnFailure)
{
    checkType<Orv8u>(orviColorTwist32f_8u_C3R, orviColorTwist32f_8u_C3IR, orviColorTwist32f_8u_AC4R,
                     orviColorTwist32f_8u_AC4IR, orviColorTwist32f_8u_P3R, orviColorTwist32f_8u_IP3R);
    checkType<Orv16u>(orviColorTwist32f_16u_C3R, orviColorTwist32f_16u_C3IR, orviColorTwist32f_16u_AC4R,
                      orviColorTwist32f_16u_AC4IR, orviColorTwist32f_16u_P3R, orviColorTwist32f_16u_IP3R);
    checkType<Orv16s>(orviColorTwist32f_16s_C3R, orviColorTwist32f_16s_C3IR, orviColorTwist32f_16s_AC4R,
                      orviColorTwist32f_16s_AC4IR, orviColorTwist32f_16s_P3R, orviColorTwist32f_16s_IP3R);
    checkType<Orv32f>(orviColorTwist_32f_C3R, orviColorTwist_32f_C3IR, orviColorTwist_32f_AC4R,
                      orviColorTwist_32f_AC4IR, orviColorTwist_32f_P3R, orviColorTwist_32f_IP3R);
    const Orv32f m4[4][4] = {};
    expectCheckOrder<Orv32f>([&](const float* s, int ss, float* d, int ds, RoiSize r, Rows m) {
        return orviColorTwist_32f_C4R(s, ss, d, ds, r, m ? m4 : nullptr);
    });
}

}  // namespace
