// Demosaicing by a variable number of gradients: a worked pixel, flat scenes
// through the four grids, gains and clamps, alpha, the replicated frame,
// vector path against scalar form over rectangles and steps, check order.
#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "demosaic/quotient.h"
#include "support/mosaic.h"

using namespace orvtest;

namespace {

template <class T>
using VngFn = OrvStatus (*)(const T*, OrvRect, RoiSize, int, const Orv32f*, T*, int, OrvBayerGrid);

template <class T>
VngFn<T> vng()
{
    if constexpr (sizeof(T) == 1)
        return orviCFAToBGRA_VNG_8u_C1C4R_L;
    else
        return orviCFAToBGRA_VNG_16u_C1C4R_L;
}

template <class T>
struct Call {
    int W, H;
    OrvRect roi;
    int grid;
    const float* gains = nullptr;
};

// Runs a call on `src` into a fresh destination whose bytes start as 0x5A
// (so alpha is 0x5A or 0x5A5A), returns it.
template <class T>
std::unique_ptr<GuardedImage> run(const GuardedImage& src, const Call<T>& c, int dstPad = 0, bool negative = false)
{
    const int rowBytes = 4 * c.roi.width * int(sizeof(T));
    auto dst = std::make_unique<GuardedImage>(rowBytes, c.roi.height, (negative ? -1 : 1) * (rowBytes + dstPad));
    for (int r = 0; r < c.roi.height; ++r)
        std::memset(dst->row(r), 0x5A, rowBytes);
    EXPECT_EQ(vng<T>()(reinterpret_cast<const T*>(src.data()), c.roi, {c.W, c.H}, src.step(), c.gains,
                       reinterpret_cast<T*>(dst->data()), dst->step(), c.grid),
              orvStatusOk);
    return dst;
}

template <class T>
class Vng : public ::testing::Test {};
using Types = ::testing::Types<Orv8u, Orv16u>;
TYPED_TEST_SUITE(Vng, Types);

TYPED_TEST(Vng, WorkedPixelFillsTheWholeFiveByFive)
{
    using T = TypeParam;
    GuardedImage src(5 * sizeof(T), 5, 5 * sizeof(T));
    const unsigned v[25] = {10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 120, 135,
                            140, 150, 160, 170, 180, 190, 200, 210, 220, 230, 240, 250};
    for (int i = 0; i < 25; ++i)
        put<T>(src, i / 5, i % 5, T(v[i]));
    // Gradients 810 150 790 170 490 710 730 470: E, W, NE and SW selected;
    // q = -20 / 8 = -2.5 rounds to even, -2.
    const auto dst = run<T>(src, {5, 5, {0, 0, 5, 5}, RGGB});
    const T alpha = sizeof(T) == 1 ? T(0x5A) : T(0x5A5A);
    for (int r = 0; r < 5; ++r)
        for (int c = 0; c < 5; ++c) {
            SCOPED_TRACE(std::to_string(r) + "," + std::to_string(c));
            EXPECT_EQ(get<T>(*dst, r, 4 * c + 0), 133);
            EXPECT_EQ(get<T>(*dst, r, 4 * c + 1), 133);
            EXPECT_EQ(get<T>(*dst, r, 4 * c + 2), 135);
            EXPECT_EQ(get<T>(*dst, r, 4 * c + 3), alpha);
        }
}

// A scene of one colour sampled through each grid comes back as that colour:
// every gradient is 0, all eight directions count, and each colour lands
// where the grid code puts it. Gains scale, round to even and saturate.
TYPED_TEST(Vng, FlatScenesGridsAndGains)
{
    using T = TypeParam;
    const unsigned bgr[3] = {30, 200, 101};
    const int W = 21, H = 9;
    for (int grid = 0; grid < 4; ++grid) {
        SCOPED_TRACE(kGridNames[grid]);
        GuardedImage src(W * sizeof(T), H, W * sizeof(T));
        sample<T>(src, W, H, grid, [&](int, int, int ch) { return bgr[2 - ch]; });
        const float unit[3] = {1.0f, 1.0f, 1.0f}, gains[3] = {0.5f, 1.5f, std::numeric_limits<float>::infinity()};
        const auto plain = run<T>(src, {W, H, {0, 0, W, H}, grid});
        const auto ones = run<T>(src, {W, H, {0, 0, W, H}, grid, unit});
        const auto scaled = run<T>(src, {W, H, {0, 0, W, H}, grid, gains});
        EXPECT_EQ(plain->pixels(), ones->pixels());
        const T hi = sizeof(T) == 1 ? 255 : 65535;
        for (int r = 0; r < H; ++r)
            for (int c = 0; c < W; ++c) {
                ASSERT_EQ(get<T>(*plain, r, 4 * c + 0), bgr[0]);
                ASSERT_EQ(get<T>(*plain, r, 4 * c + 1), bgr[1]);
                ASSERT_EQ(get<T>(*plain, r, 4 * c + 2), bgr[2]);
                ASSERT_EQ(get<T>(*scaled, r, 4 * c + 0), 15);
                ASSERT_EQ(get<T>(*scaled, r, 4 * c + 1), sizeof(T) == 1 ? 255 : 300);
                ASSERT_EQ(get<T>(*scaled, r, 4 * c + 2), hi);  // an infinite gain saturates
            }
    }
}

// One rectangle: vector and scalar runs agree, nothing outside the rectangle
// changes, interior pixels match the whole mosaic's output, and frame pixels
// are copies of their nearest interior pixel, alpha included.
template <class T>
void checkRect(const GuardedImage& src, const GuardedImage& whole, const Call<T>& c, int dstPad, bool negative)
{
    const auto dv = run<T>(src, c, dstPad, negative);
    std::unique_ptr<GuardedImage> ds;
    {
        ScalarBlocks scalar;
        ds = run<T>(src, c, dstPad, negative);
    }
    ASSERT_TRUE(dv->guardsIntact());
    ASSERT_EQ(dv->pixels(), ds->pixels());
    const int x0 = std::max(c.roi.x, 2), y0 = std::max(c.roi.y, 2);
    const int x1 = std::min(c.roi.x + c.roi.width - 1, c.W - 3), y1 = std::min(c.roi.y + c.roi.height - 1, c.H - 3);
    for (int r = 0; r < c.roi.height; ++r)
        for (int k = 0; k < c.roi.width; ++k) {
            const int ar = r + c.roi.y, ac = k + c.roi.x;
            const int nr = std::clamp(ar, y0, y1), nc = std::clamp(ac, x0, x1);
            for (int e = 0; e < 4; ++e) {
                const T got = get<T>(*dv, r, 4 * k + e);
                ASSERT_EQ(got, get<T>(*dv, nr - c.roi.y, 4 * (nc - c.roi.x) + e)) << ar << "," << ac;
                if (e < 3) {
                    ASSERT_EQ(got, get<T>(whole, nr, 4 * nc + e)) << ar << "," << ac;
                }
            }
        }
}

TYPED_TEST(Vng, VectorMatchesScalarOverRectanglesAndSteps)
{
    using T = TypeParam;
    std::mt19937 rng(21);
    const float gains[3] = {0.75f, 1.25f, 1.5f};
    // Whole mosaics of many widths, odd byte steps included.
    for (int w = 5; w <= 44; ++w) {
        const int h = 5 + w % 4;
        SCOPED_TRACE("width " + std::to_string(w));
        GuardedImage src(w * sizeof(T), h, int(w * sizeof(T)) + (w % 3), w % 3);
        fillTypical<T>(src, rng);
        const Call<T> c{w, h, {0, 0, w, h}, w % 4, w % 2 ? gains : nullptr};
        const auto whole = run<T>(src, c);
        checkRect<T>(src, *whole, c, w % 5, w % 7 == 0);
    }
    // Rectangles at every parity inside a larger mosaic; some have no frame
    // on a side, some reach the mosaic's edges.
    const int W = 61, H = 14;
    GuardedImage src(W * sizeof(T), H, W * sizeof(T) + 3, 0);
    fillTypical<T>(src, rng);
    for (int grid = 0; grid < 4; ++grid) {
        const auto whole = run<T>(src, {W, H, {0, 0, W, H}, grid});
        for (int y : {0, 1, 2, 3})
            for (int x : {0, 1, 2, 3})
                for (int rw : {1, 2, 9, 40, W - x})
                    for (int rh : {1, 4, H - y}) {
                        SCOPED_TRACE(std::to_string(x) + "," + std::to_string(y) + " " + std::to_string(rw) + "x" +
                                     std::to_string(rh) + " grid " + std::to_string(grid));
                        if (std::min(x + rw - 1, W - 3) < std::max(x, 2) || std::min(y + rh - 1, H - 3) < std::max(y, 2))
                            continue;  // no interior pixel
                        checkRect<T>(src, *whole, {W, H, {x, y, rw, rh}, grid}, 2, (x + y) % 2 == 1);
                    }
    }
}

TYPED_TEST(Vng, ChecksInOrderAndNothingWrittenOnFailure)
{
    using T = TypeParam;
    GuardedImage src(8 * sizeof(T), 8, 8 * sizeof(T)), dst(32 * sizeof(T), 8, 32 * sizeof(T));
    const auto before = dst.pixels();
    const T* s = src.data<T>();
    T* d = dst.data<T>();
    const OrvRect roi{0, 0, 8, 8};
    const auto f = vng<T>();
    EXPECT_EQ(f(nullptr, roi, {4, 8}, src.step(), nullptr, d, dst.step(), 9), orvStatusNullPointer);
    EXPECT_EQ(f(s, roi, {4, 8}, src.step(), nullptr, nullptr, dst.step(), 9), orvStatusNullPointer);
    EXPECT_EQ(f(s, roi, {4, 8}, src.step(), nullptr, d, dst.step(), 9), orvStatusBadSize);
    EXPECT_EQ(f(s, roi, {8, 4}, src.step(), nullptr, d, dst.step(), 9), orvStatusBadSize);
    EXPECT_EQ(f(s, roi, {8, 8}, src.step(), nullptr, d, dst.step(), 4), orvStatusBadArgument);
    EXPECT_EQ(f(s, {0, 0, 0, 8}, {8, 8}, src.step(), nullptr, d, dst.step(), 0), orvStatusOk);
    EXPECT_EQ(f(s, {0, 0, 8, 0}, {8, 8}, src.step(), nullptr, d, dst.step(), 0), orvStatusOk);
    EXPECT_EQ(dst.pixels(), before);
}

// The integer quotient of the 16-bit lanes equals the single-precision
// division of the scalar form for every count and every difference the 8-bit
// sums can reach, ties to even included.
TEST(VngQuotient, IntegerLanesMatchFloatDivisionOverTheWholeRange)
{
    for (int twoN = 2; twoN <= 16; twoN += 2)
        for (int d0 = -4080; d0 <= 4080; d0 += 16) {
            alignas(32) int16_t diff[16], got[16];
            for (int i = 0; i < 16; ++i)
                diff[i] = int16_t(d0 + i);
            _mm256_store_si256(reinterpret_cast<__m256i*>(got),
                               h9::roundedQuotientEpi16(_mm256_load_si256(reinterpret_cast<const __m256i*>(diff)),
                                                        _mm256_set1_epi16(int16_t(twoN))));
            for (int i = 0; i < 16; ++i) {
                if (diff[i] <= 4080) {
                    ASSERT_EQ(got[i], h9::roundedQuotient(diff[i], twoN)) << diff[i] << " / " << twoN;
                }
            }
        }
}

}  // namespace
