// Colour twist: vector paths against the scalar form for all 25 members, the
// order of the arithmetic, limits and ties, the caller's rounding mode, alpha,
// in place, the paths of the 32f members, and the argument checks.
#include <immintrin.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>

#include "support/image.h"

using namespace orvtest;

namespace {

using Matrix = Orv32f[3][4];
using Imgs = std::vector<std::unique_ptr<GuardedImage>>;

// Results of each type fall below, inside and above its range.
const Matrix kMix8 = {{0.9f, 0.3f, -0.2f, 12.25f}, {-0.4f, 1.2f, 0.35f, -20.5f}, {0.25f, -0.6f, 1.4f, 3.5f}};
const Matrix kMix16 = {{0.9f, 0.3f, -0.2f, 3136.5f}, {-0.4f, 1.2f, 0.35f, -5248.25f}, {0.25f, -0.6f, 1.4f, 896.75f}};
const Matrix kMix32 = {{0.299f, 0.587f, 0.114f, 0.0625f}, {-0.168736f, -0.331264f, 0.5f, 0.5f},
                       {0.5f, -0.418688f, -0.081312f, -1.0e-3f}};
const Orv32f kMix4[4][4] = {{0.70710677f, 0.33333334f, 1.0e-3f, 3.1f}, {-1.5f, 2.0f, 0.3f, 0.7f},
                            {0.9f, 0.1f, -0.4f, 1.1f}, {0.125f, 0.0f, 0.0f, 1.0f}};

template <class T>
void fill(GuardedImage& img, std::mt19937& rng)
{
    if constexpr (std::is_same_v<T, float>)
        img.fill<T>(rng, -2.0, 2.0);
    else
        img.fill<T>(rng, double(std::numeric_limits<T>::min()), double(std::numeric_limits<T>::max()));
}

// f(src, dst, roi) over the standard sweep with `planes` images a side of
// `ch` elements per pixel, run by the vector path and by the scalar form:
// same status and bytes, nothing written outside. In place, dst starts as a
// copy of src. With `alpha`, the fourth element of every dst pixel is kept.
template <class T, class F>
void sweep(int planes, int ch, bool inPlace, bool alpha, F f)
{
    std::mt19937 rng(12345);
    for (const Geometry& g : standardSweep(sizeof(T))) {
        SCOPED_TRACE(g.str());
        const int sign = g.negative ? -1 : 1, row = g.width * ch * sizeof(T);
        Imgs src, v, s;
        for (int k = 0; k < planes; ++k) {
            src.emplace_back(new GuardedImage(row, g.height, sign * (row + g.srcPad), g.endSlack + 4 * k));
            v.emplace_back(new GuardedImage(row, g.height, sign * (row + g.dstPad), g.endSlack + 8 * k));
            s.emplace_back(new GuardedImage(row, g.height, sign * (row + g.dstPad), g.endSlack + 8 * k));
            fill<T>(*src[k], rng);
            if (inPlace) {
                v[k]->copyFrom(*src[k]);
                s[k]->copyFrom(*src[k]);
            }
        }
        const auto before = v[0]->pixels();
        const OrvStatus sv = f(src, v, RoiSize{g.width, g.height});
        OrvStatus ss;
        {
            ScalarBlocks scalar;
            ss = f(src, s, RoiSize{g.width, g.height});
        }
        ASSERT_EQ(sv, ss);
        for (int k = 0; k < planes; ++k) {
            ASSERT_TRUE(v[k]->guardsIntact() && s[k]->guardsIntact() && src[k]->guardsIntact());
            ASSERT_EQ(v[k]->pixels(), s[k]->pixels());
        }
        const auto after = v[0]->pixels();
        for (size_t i = 3 * sizeof(T); alpha && i < after.size(); i += 4 * sizeof(T))
            ASSERT_EQ(std::memcmp(&after[i], &before[i], sizeof(T)), 0) << i;
    }
}

// The six 3-by-4 members of one element type.
template <class T, class C3, class C3I, class AC4, class AC4I, class P3, class IP3>
void sweepType(const Matrix& m, C3 c3, C3I c3i, AC4 ac4, AC4I ac4i, P3 p3, IP3 ip3)
{
    auto at = [](Imgs& i, int k) { return i[k]->data<T>(); };
    sweep<T>(1, 3, false, false,
             [&](Imgs& s, Imgs& d, RoiSize r) { return c3(at(s, 0), s[0]->step(), at(d, 0), d[0]->step(), r, m); });
    sweep<T>(1, 4, false, true,
             [&](Imgs& s, Imgs& d, RoiSize r) { return ac4(at(s, 0), s[0]->step(), at(d, 0), d[0]->step(), r, m); });
    sweep<T>(1, 3, true, false, [&](Imgs&, Imgs& d, RoiSize r) { return c3i(at(d, 0), d[0]->step(), r, m); });
    sweep<T>(1, 4, true, true, [&](Imgs&, Imgs& d, RoiSize r) { return ac4i(at(d, 0), d[0]->step(), r, m); });
    sweep<T>(3, 1, false, false, [&](Imgs& s, Imgs& d, RoiSize r) {
        const T* sp[3] = {at(s, 0), at(s, 1), at(s, 2)};
        T* dp[3] = {at(d, 0), at(d, 1), at(d, 2)};
        return p3(sp, s[0]->step(), dp, d[0]->step(), r, m);
    });
    sweep<T>(3, 1, true, false, [&](Imgs&, Imgs& d, RoiSize r) {
        T* dp[3] = {at(d, 0), at(d, 1), at(d, 2)};
        return ip3(dp, d[0]->step(), r, m);
    });
}

TEST(Twist, VectorPathsMatchTheScalarForm)
{
    sweepType<Orv8u>(kMix8, orviColorTwist32f_8u_C3R, orviColorTwist32f_8u_C3IR, orviColorTwist32f_8u_AC4R,
                     orviColorTwist32f_8u_AC4IR, orviColorTwist32f_8u_P3R, orviColorTwist32f_8u_IP3R);
    sweepType<Orv16u>(kMix16, orviColorTwist32f_16u_C3R, orviColorTwist32f_16u_C3IR, orviColorTwist32f_16u_AC4R,
                      orviColorTwist32f_16u_AC4IR, orviColorTwist32f_16u_P3R, orviColorTwist32f_16u_IP3R);
    sweepType<Orv16s>(kMix16, orviColorTwist32f_16s_C3R, orviColorTwist32f_16s_C3IR, orviColorTwist32f_16s_AC4R,
                      orviColorTwist32f_16s_AC4IR, orviColorTwist32f_16s_P3R, orviColorTwist32f_16s_IP3R);
    sweepType<Orv32f>(kMix32, orviColorTwist_32f_C3R, orviColorTwist_32f_C3IR, orviColorTwist_32f_AC4R,
                      orviColorTwist_32f_AC4IR, orviColorTwist_32f_P3R, orviColorTwist_32f_IP3R);
    sweep<Orv32f>(1, 4, false, false, [&](Imgs& s, Imgs& d, RoiSize r) {
        return orviColorTwist_32f_C4R(s[0]->data<float>(), s[0]->step(), d[0]->data<float>(), d[0]->step(), r, kMix4);
    });
}

// The float results follow (t3 + a t0) + (c t2 + b t1) unfused, and the 4x4
// member t = p1 w1, then p0, p2, p3 fused, on data where other orders differ.
TEST(Twist, FloatResultsFollowTheOrderOfTheArithmetic)
{
    const Matrix m = {{0.7071068f, 1.0e-3f, 0.33333334f, 0.78f}, {1.0e-3f, 0.5773503f, 0.14285715f, -0.39f},
                      {0.1f, 0.2f, 0.30000001f, 9.6e-4f}};
    std::mt19937 rng(21);
    std::vector<float> px(4 * 67), out3(3 * 67), out4(4 * 67);
    for (float& x : px)
        x = std::uniform_real_distribution<float>(-4, 4)(rng);
    ASSERT_EQ(orviColorTwist_32f_C3R(px.data(), 12 * 67, out3.data(), 12 * 67, {67, 1}, m), orvStatusOk);
    ASSERT_EQ(orviColorTwist_32f_C4R(px.data(), 16 * 67, out4.data(), 16 * 67, {67, 1}, kMix4), orvStatusOk);
    int others3 = 0, others4 = 0;
    for (int i = 0; i < 67; ++i) {
        const float a = px[3 * i], b = px[3 * i + 1], c = px[3 * i + 2];
        const float* p = &px[4 * i];
        for (int r = 0; r < 3; ++r) {
            ASSERT_EQ(out3[3 * i + r], (m[r][3] + a * m[r][0]) + (c * m[r][2] + b * m[r][1])) << i;
            others3 += out3[3 * i + r] != ((a * m[r][0] + b * m[r][1]) + c * m[r][2]) + m[r][3];
        }
        for (int r = 0; r < 4; ++r) {
            const float* w = kMix4[r];
            const float t = std::fma(p[3], w[3], std::fma(p[2], w[2], std::fma(p[0], w[0], p[1] * w[1])));
            ASSERT_EQ(out4[4 * i + r], t) << i;
            others4 += t != ((p[1] * w[1] + p[0] * w[0]) + p[2] * w[2]) + p[3] * w[3];
        }
    }
    EXPECT_GT(others3, 10);
    EXPECT_GT(others4, 10);
}

// `width` copies of one 8u pixel through C3R; returns the last pixel.
std::array<int, 3> twist8(const Matrix& m, std::array<Orv8u, 3> px, int width)
{
    std::vector<Orv8u> s, d(3 * width);
    for (int i = 0; i < width; ++i)
        s.insert(s.end(), px.begin(), px.end());
    EXPECT_EQ(orviColorTwist32f_8u_C3R(s.data(), 3 * width, d.data(), 3 * width, {width, 1}, m), orvStatusOk);
    return {d[3 * width - 3], d[3 * width - 2], d[3 * width - 1]};
}

TEST(Twist, LimitsNaNAndTiesToEven)
{
    const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    using R = std::array<int, 3>;
    for (int w : {1, 9, -1, -9}) {  // the vector path, then (w < 0) the scalar form
        std::unique_ptr<ScalarBlocks> scalar(w < 0 ? new ScalarBlocks : nullptr);
        w = std::abs(w);
        SCOPED_TRACE(w);
        EXPECT_EQ(twist8({{0, 0, 0, 0.5f}, {0, 0, 0, 1.5f}, {0, 0, 0, 2.5f}}, {1, 2, 3}, w), (R{0, 2, 2}));
        EXPECT_EQ(twist8({{0, 0, 0, 254.5f}, {0, 0, 0, 253.5f}, {0, 0, 0, -0.5f}}, {1, 2, 3}, w), (R{254, 254, 0}));
        EXPECT_EQ(twist8({{2, 0, 0, 0}, {0, -1, 0, 0}, {0, 0, 1, 1.0e30f}}, {200, 10, 0}, w), (R{255, 0, 255}));
        // Sums beyond the int32 range, and just inside it.
        EXPECT_EQ(twist8({{0, 0, 0, 3.0e9f}, {0, 0, 0, -3.0e9f}, {0, 0, 0, 2.0e9f}}, {1, 2, 3}, w), (R{255, 0, 255}));
        EXPECT_EQ(twist8({{1.0e6f, 0, 0, 0}, {0, 0, -1.0e6f, 0}, {0, 0, 0, 5.0e8f}}, {250, 2, 9}, w), (R{255, 0, 255}));
        // NaN gives the upper limit where it reaches: a weight, a constant,
        // and 0 times infinity; minus infinity the lower one.
        EXPECT_EQ(twist8({{1, 0, 0, 0}, {0, nan, 0, 0}, {0, 0, 1, nan}}, {10, 20, 30}, w), (R{10, 255, 255}));
        EXPECT_EQ(twist8({{-inf, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 0, -1.0e30f}}, {1, 20, 30}, w), (R{0, 20, 0}));
        EXPECT_EQ(twist8({{-inf, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 0, 0}}, {0, 20, 30}, w), (R{255, 20, 0}));
    }
    // 16-bit limits and ties, nine pixels, by both paths.
    const Matrix mu = {{1, 0, 0, 70000}, {0, 1, 0, -0.5f}, {0, 0, 1, 0.5f}};
    const Matrix ms = {{1, 0, 0, -40000}, {0, 1, 0, 40000}, {0, 0, 1, -0.5f}};
    for (bool viaScalar : {false, true}) {
        std::unique_ptr<ScalarBlocks> scalar(viaScalar ? new ScalarBlocks : nullptr);
        std::vector<Orv16u> u(27, 2), ud(27);
        std::vector<Orv16s> v(27, -3), vd(27);
        ASSERT_EQ(orviColorTwist32f_16u_C3R(u.data(), 54, ud.data(), 54, {9, 1}, mu), orvStatusOk);
        ASSERT_EQ(orviColorTwist32f_16s_C3R(v.data(), 54, vd.data(), 54, {9, 1}, ms), orvStatusOk);
        for (int i : {0, 8}) {
            EXPECT_EQ((R{ud[3 * i], ud[3 * i + 1], ud[3 * i + 2]}), (R{65535, 2, 2}));
            EXPECT_EQ((R{vd[3 * i], vd[3 * i + 1], vd[3 * i + 2]}), (R{-32768, 32767, -4}));
        }
    }
}

// A form that stored a result before reading the pixel's other inputs would
// differ in place.
TEST(Twist, InPlaceEqualsOutOfPlace)
{
    std::mt19937 rng(8);
    for (int w : {1, 9, 33}) {
        for (bool scalar : {false, true}) {
            std::unique_ptr<ScalarBlocks> sb(scalar ? new ScalarBlocks : nullptr);
            std::vector<Orv8u> s(4 * w), d(4 * w);
            std::vector<float> f(3 * w), g(3 * w);
            for (auto& x : s)
                x = Orv8u(rng());
            for (auto& x : f)
                x = float(rng() % 1000) / 7.0f;
            orviColorTwist32f_8u_C3R(s.data(), 3 * w, d.data(), 3 * w, {w, 1}, kMix8);
            orviColorTwist32f_8u_C3IR(s.data(), 3 * w, {w, 1}, kMix8);
            EXPECT_TRUE(std::equal(d.begin(), d.begin() + 3 * w, s.begin())) << w;
            const float* sp[3] = {&f[0], &f[w], &f[2 * w]};
            float* dp[3] = {&g[0], &g[w], &g[2 * w]};
            float* ip[3] = {&f[0], &f[w], &f[2 * w]};
            orviColorTwist_32f_P3R(sp, 4 * w, dp, 4 * w, {w, 1}, kMix32);
            orviColorTwist_32f_IP3R(ip, 4 * w, {w, 1}, kMix32);
            EXPECT_EQ(f, g) << w;
        }
    }
}

class Csr {
public:
    explicit Csr(uint32_t word) : saved_(_mm_getcsr()) { _mm_setcsr(word); }
    ~Csr() { _mm_setcsr(saved_); }

private:
    uint32_t saved_;
};

TEST(Twist, IntegerResultsAreNearestInAnyCallerModeAndTheModeIsKept)
{
    // 1.7, 2.5 and 0.5: toward zero, up and down each round one differently.
    const Matrix m = {{0.5f, 0, 0, 0.2f}, {0, 0.5f, 0, 0}, {0, 0, 1, -0.5f}};
    const uint32_t base = _mm_getcsr() & ~0x603fu;  // nearest, no flags raised
    for (uint32_t mode : {0x6000u, 0x4000u, 0x2000u}) {
        for (int w : {1, 8}) {
            std::vector<Orv8u> s(3 * w, 0), d(3 * w);
            for (int i = 0; i < w; ++i)
                s[3 * i] = 3, s[3 * i + 1] = 5, s[3 * i + 2] = 1;
            std::vector<Orv16s> s16(s.begin(), s.end()), d16(3 * w);
            uint32_t after;
            {
                Csr csr(base | mode);
                ASSERT_EQ(orviColorTwist32f_8u_C3R(s.data(), 3 * w, d.data(), 3 * w, {w, 1}, m), orvStatusOk);
                ASSERT_EQ(orviColorTwist32f_16s_C3IR(s16.data(), 6 * w, {w, 1}, m), orvStatusOk);
                after = _mm_getcsr();
            }
            // The caller's whole word is back, flags raised inside undone.
            EXPECT_EQ(after, base | mode) << mode;
            EXPECT_EQ((std::array<int, 3>{d[3 * w - 3], d[3 * w - 2], d[3 * w - 1]}), (std::array<int, 3>{2, 2, 0}));
            EXPECT_EQ((std::array<int, 3>{s16[3 * w - 3], s16[3 * w - 2], s16[3 * w - 1]}), (std::array<int, 3>{2, 2, 0}));
        }
    }
    // With nearest set nothing is restored: the inexact flag stays raised.
    {
        Csr csr(base);
        Orv8u px[3] = {3, 5, 1};
        ASSERT_EQ(orviColorTwist32f_8u_C3IR(px, 3, {1, 1}, m), orvStatusOk);
        EXPECT_EQ(_mm_getcsr() & 0x6020u, 0x20u);
    }
    // A failing call does not touch the mode; a float member never does, and
    // it computes in the caller's mode (1/3 + 0.1 and 1/3 + 0.2 round).
    const Matrix thirds = {{1.0f / 3, 0, 0, 1.0f / 3}, {0, 1.0f / 3, 0, 0.1f}, {0, 0, 1.0f / 3, 0.2f}};
    float f[3] = {1, 1, 1}, nearest[3], up[3];
    orviColorTwist_32f_C3R(f, 12, nearest, 12, {1, 1}, thirds);
    Csr csr(base | 0x4000);
    EXPECT_EQ(orviColorTwist32f_8u_C3R(nullptr, 3, nullptr, 3, {1, 1}, m), orvStatusNullPointer);
    EXPECT_EQ(_mm_getcsr(), base | 0x4000);
    orviColorTwist_32f_C3R(f, 12, up, 12, {1, 1}, thirds);
    EXPECT_EQ(_mm_getcsr() & 0x6000u, 0x4000u);
    EXPECT_NE(std::memcmp(up, nearest, sizeof up), 0);
}

// The image laid in a buffer with `step` floats a row, `off` floats past a
// 64-byte boundary (dst `doff`); returns the rows of the result.
template <int Ch, class F>
std::vector<float> laidOut(const std::vector<float>& px, int w, int h, int step, int off, int doff, F f)
{
    std::vector<float> sb(size_t(step) * h + 32), db(size_t(step) * h + 32);
    auto at = [](std::vector<float>& b, int o) { return b.data() + (64 - uintptr_t(b.data()) % 64) % 64 / 4 + o; };
    float *s = at(sb, off), *d = at(db, doff);
    for (int y = 0; y < h; ++y)
        std::memcpy(s + size_t(y) * step, &px[size_t(y) * w * Ch], 4 * w * Ch);
    EXPECT_EQ(f(s, 4 * step, d, 4 * step, RoiSize{w, h}), orvStatusOk);
    std::vector<float> out;
    for (int y = 0; y < h; ++y)
        out.insert(out.end(), d + size_t(y) * step, d + size_t(y) * step + w * Ch);
    return out;
}

// Contiguous or row by row, ordinary or streaming stores, aligned or not,
// in place or not: the values of the scalar form.
TEST(Twist, FloatPathsGiveTheSameValues)
{
    auto c3 = [](const float* s, int ss, float* d, int ds, RoiSize r) {
        return orviColorTwist_32f_C3R(s, ss, d, ds, r, kMix32);
    };
    auto c4 = [](const float* s, int ss, float* d, int ds, RoiSize r) {
        return orviColorTwist_32f_C4R(s, ss, d, ds, r, kMix4);
    };
    std::mt19937 rng(3);
    for (auto [w, h] : {std::pair{11665, 1}, std::pair{973, 12}, std::pair{64, 3}, std::pair{5, 7}}) {
        SCOPED_TRACE(std::to_string(w) + "x" + std::to_string(h));
        std::vector<float> px(size_t(4) * w * h);
        for (float& x : px)
            x = std::uniform_real_distribution<float>(-4, 4)(rng);
        std::vector<float> ref3, ref4;
        {
            ScalarBlocks scalar;
            ref3 = laidOut<3>(px, w, h, 3 * w, 0, 0, c3);
            ref4 = laidOut<4>(px, w, h, 4 * w, 0, 0, c4);
        }
        for (bool stream : {false, true}) {
            SCOPED_TRACE(stream ? "streaming" : "ordinary");
            StreamStores policy(stream);
            EXPECT_EQ(ref3, laidOut<3>(px, w, h, 3 * w, 0, 0, c3));
            EXPECT_EQ(ref3, laidOut<3>(px, w, h, 3 * w + 4, 0, 0, c3));
            EXPECT_EQ(ref3, laidOut<3>(px, w, h, 3 * w + 1, 1, 2, c3));
            EXPECT_EQ(ref3, laidOut<3>(px, w, h, 3 * w, 3, 1, c3));
            auto ip = std::vector<float>(px.begin(), px.begin() + 3 * w * h);
            ASSERT_EQ(orviColorTwist_32f_C3IR(ip.data(), 12 * w, {w, h}, kMix32), orvStatusOk);
            EXPECT_EQ(ref3, ip);
            EXPECT_EQ(ref4, laidOut<4>(px, w, h, 4 * w, 0, 0, c4));
            EXPECT_EQ(ref4, laidOut<4>(px, w, h, 4 * w + 4, 0, 0, c4));
            EXPECT_EQ(ref4, laidOut<4>(px, w, h, 4 * w + 4, 0, 1, c4));
            EXPECT_EQ(ref4, laidOut<4>(px, w, h, 4 * w, 2, 2, c4));
            EXPECT_EQ(ref4, laidOut<4>(px, w, h, 4 * w + 1, 4, 4, c4));
        }
    }
}

// Pointers (the matrix and each plane too), then size, then steps below 1;
// a failing call writes nothing. f(src, srcStep, dst, dstStep, roi, twist).
template <class T, class F>
void expectChecks(F f, bool inPlace)
{
    T src[64], dst[64];
    std::memset(src, 0x11, sizeof src);
    std::memset(dst, 0x5a, sizeof dst);
    const Matrix& m = kMix8;
    EXPECT_EQ(f(nullptr, 0, dst, 0, RoiSize{0, 0}, m), orvStatusNullPointer);
    EXPECT_EQ(f(src, 0, dst, 0, RoiSize{0, 0}, nullptr), orvStatusNullPointer);
    if (!inPlace) {
        EXPECT_EQ(f(src, 0, nullptr, 0, RoiSize{0, 0}, m), orvStatusNullPointer);
    }
    EXPECT_EQ(f(src, 0, dst, 0, RoiSize{0, 1}, m), orvStatusBadSize);
    EXPECT_EQ(f(src, 0, dst, 0, RoiSize{3, -1}, m), orvStatusBadSize);
    EXPECT_EQ(f(src, 0, dst, 16, RoiSize{1, 1}, m), orvStatusBadStep);
    EXPECT_EQ(f(src, -16, dst, 16, RoiSize{1, 2}, m), orvStatusBadStep);
    if (!inPlace) {
        EXPECT_EQ(f(src, 16, dst, 0, RoiSize{1, 1}, m), orvStatusBadStep);
    }
    for (size_t i = 0; i < sizeof src; ++i)
        ASSERT_TRUE(reinterpret_cast<uint8_t*>(src)[i] == 0x11 && reinterpret_cast<uint8_t*>(dst)[i] == 0x5a);
    EXPECT_EQ(f(src, 1, dst, 1, RoiSize{1, 1}, m), orvStatusOk);  // any positive step
}

using Rows = const Orv32f (*)[4];

// Plane arguments for a base pointer: three planes 16 elements apart. For a
// null base, plane k is null (k < 3), or the array itself is (k == 3).
template <class T>
struct PlaneArgs {
    PlaneArgs(T* base, int k)
    {
        static T other[48];
        for (int i = 0; i < 3; ++i)
            p[i] = base ? base + 16 * i : i == k ? nullptr : other + 16 * i;
        arg = (base || k < 3) ? p : nullptr;
    }
    T* p[3];
    T** arg;
};

template <class T, class C3, class C3I, class AC4, class AC4I, class P3, class IP3>
void checkType(C3 c3, C3I c3i, AC4 ac4, AC4I ac4i, P3 p3, IP3 ip3)
{
    expectChecks<T>(c3, false);
    expectChecks<T>(ac4, false);
    // In place: one pointer and one step.
    expectChecks<T>([&](T* s, int ss, T*, int, RoiSize r, Rows m) { return c3i(s, ss, r, m); }, true);
    expectChecks<T>([&](T* s, int ss, T*, int, RoiSize r, Rows m) { return ac4i(s, ss, r, m); }, true);
    for (int k = 0; k < 4; ++k) {
        expectChecks<T>([&](T* s, int ss, T* d, int ds, RoiSize r, Rows m) {
            return p3(PlaneArgs<T>(s, k).arg, ss, PlaneArgs<T>(d, k).arg, ds, r, m);
        }, false);
        expectChecks<T>([&](T* s, int ss, T*, int, RoiSize r, Rows m) { return ip3(PlaneArgs<T>(s, k).arg, ss, r, m); },
                        true);
    }
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
    expectChecks<Orv32f>([](Orv32f* s, int ss, Orv32f* d, int ds, RoiSize r, Rows m) {
        return orviColorTwist_32f_C4R(s, ss, d, ds, r, m ? kMix4 : nullptr);
    }, false);
}

}  // namespace
