// Adaptive homogeneity demosaicing: flat and one-colour scenes through the
// four grids and the mirrored edges, the direction chosen at stripes, the
// work buffer's bounds, clipping, and the order of the checks.
#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "support/mosaic.h"

using namespace orvtest;

namespace {

template <class T>
using AhdFn = OrvStatus (*)(const T*, OrvRect, RoiSize, int, T*, int, OrvBayerGrid, Orv8u*, int);

template <class T>
AhdFn<T> ahd()
{
    if constexpr (sizeof(T) == 1)
        return orviDemosaicAHD_8u_C1C3R;
    else
        return orviDemosaicAHD_16u_C1C3R;
}

// Runs a call with a work buffer of exactly 30 rows of max(w, 6) + 8
// elements against a protected page (plus `tmpPad` bytes between rows), and
// checks that neither buffer is touched outside its rows.
template <class T>
std::unique_ptr<GuardedImage> run(const GuardedImage& src, int W, int H, OrvRect roi, int grid, int tmpPad = 1)
{
    const int x = std::max(roi.x, 0), y = std::max(roi.y, 0);
    const int w = std::max(1, std::min(roi.width, W - x)), h = std::max(1, std::min(roi.height, H - y));
    const int tmpRow = (std::max(w, 6) + 8) * int(sizeof(T));
    GuardedImage tmp(tmpRow, 30, tmpRow + tmpPad);
    auto dst = std::make_unique<GuardedImage>(3 * w * int(sizeof(T)), h, 3 * w * int(sizeof(T)) + 1);
    EXPECT_EQ(ahd<T>()(reinterpret_cast<const T*>(src.data()), roi, {W, H}, src.step(),
                       reinterpret_cast<T*>(dst->data()), dst->step(), grid, tmp.data(), tmp.step()),
              orvStatusOk);
    EXPECT_TRUE(tmp.guardsIntact());
    EXPECT_TRUE(dst->guardsIntact());
    return dst;
}

template <class T>
class Ahd : public ::testing::Test {};
using Types = ::testing::Types<Orv8u, Orv16u>;
TYPED_TEST_SUITE(Ahd, Types);

// A scene of one colour comes back as that colour everywhere, through every
// grid, for mosaics from the smallest (all mirrored) up, and for rectangles
// at every parity, clipped or with a negative origin.
TYPED_TEST(Ahd, OneColourScenes)
{
    using T = TypeParam;
    const unsigned rgb[3] = {sizeof(T) == 1 ? 250u : 64000u, 7, 130};
    const std::pair<int, int> sizes[] = {{5, 5}, {6, 9}, {12, 12}, {23, 17}};
    const OrvRect rects[] = {{0, 0, 100, 100}, {-3, -1, 10, 4}, {5, 5, 2, 2}, {1, 2, 3, 11}, {3, 3, 30, 30}, {4, 0, 15, 9}};
    for (auto [W, H] : sizes)
        for (int grid = 0; grid < 4; ++grid) {
            GuardedImage src(W * sizeof(T), H, W * sizeof(T) + 3);
            sample<T>(src, W, H, grid, [&](int, int, int ch) { return rgb[ch]; });
            for (const OrvRect& roi : rects) {
                SCOPED_TRACE(std::to_string(W) + "x" + std::to_string(H) + " " + kGridNames[grid] + " at " +
                             std::to_string(roi.x) + "," + std::to_string(roi.y));
                if (std::max(roi.x, 0) >= W || std::max(roi.y, 0) >= H)
                    continue;
                const auto dst = run<T>(src, W, H, roi, grid);
                for (int r = 0; r < dst->height(); ++r)
                    for (int i = 0; i < dst->rowBytes() / int(sizeof(T)); ++i)
                        ASSERT_EQ(get<T>(*dst, r, i), rgb[i % 3]) << r << "," << i / 3;
            }
        }
}

// Gray stripes: along the stripes the H (rows) or V (columns) candidate is
// exact, and the homogeneity map must pick it.
TYPED_TEST(Ahd, StripesChooseTheirDirection)
{
    using T = TypeParam;
    const int W = 32, H = 24;
    const unsigned scale = sizeof(T) == 1 ? 1 : 250;
    for (bool rows : {true, false}) {
        for (int grid = 0; grid < 4; ++grid) {
            SCOPED_TRACE(std::string(rows ? "horizontal " : "vertical ") + kGridNames[grid]);
            auto level = [&](int r, int c) { return scale * (((rows ? r : c) / 3) % 2 ? 200u : 40u); };
            GuardedImage src(W * sizeof(T), H, W * sizeof(T));
            sample<T>(src, W, H, grid, [&](int r, int c, int) { return level(r, c); });
            const auto dst = run<T>(src, W, H, {0, 0, W, H}, grid);
            for (int r = 4; r < H - 4; ++r)
                for (int c = 4; c < W - 4; ++c)
                    for (int ch = 0; ch < 3; ++ch)
                        ASSERT_EQ(get<T>(*dst, r, 3 * c + ch), level(r, c)) << r << "," << c;
        }
    }
}

// Random mosaics: the pixels do not depend on the work buffer's step, and
// rectangles at several parities, whose strips overlap or reach past them,
// stay inside both buffers.
TYPED_TEST(Ahd, RectanglesAndWorkBuffer)
{
    using T = TypeParam;
    std::mt19937 rng(9);
    for (int W : {5, 7, 13, 40}) {
        const int H = 5 + W % 7;
        GuardedImage src(W * sizeof(T), H, W * sizeof(T) + 1);
        fillTypical<T>(src, rng);
        for (int grid = 0; grid < 4; ++grid) {
            const auto a = run<T>(src, W, H, {0, 0, W, H}, grid, 0);
            const auto b = run<T>(src, W, H, {0, 0, W, H}, grid, 3);
            ASSERT_EQ(a->pixels(), b->pixels());
            for (int x : {0, 1, 2, 5, 6})
                for (int y : {0, 1, 4, 5})
                    run<T>(src, W, H, {x, y, W - 2, H - 1}, grid);
        }
    }
}

// The interior's vector path against the scalar form, bit for bit: widths
// whose interiors end at every lane of a register, all grids, rectangles at
// both parities inside a larger mosaic and clipped by it, on noise (clamps,
// 16u chroma wrap) and on flat scenes with sparse spikes, where S is 0 over
// long runs and the running value crosses registers.
TYPED_TEST(Ahd, VectorMatchesScalar)
{
    using T = TypeParam;
    std::mt19937 rng(12);
    const unsigned hi = sizeof(T) == 1 ? 255 : 65535;
    for (int W : {14, 17, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 38, 45, 77, 300}) {
        const int H = W > 100 ? 90 : 12 + W % 5;
        for (bool sparse : {false, true}) {
            GuardedImage src(W * sizeof(T), H, W * sizeof(T) + 3);
            if (sparse) {
                // Short strokes along rows or columns on a flat field: the
                // map is 0 away from them and takes a sign near them.
                for (int r = 0; r < H; ++r)
                    for (int c = 0; c < W; ++c)
                        put<T>(src, r, c, T(hi / 3 + rng() % 3));
                for (int k = 0; k < W * H / 40; ++k) {
                    const bool across = rng() % 2;
                    const int r0 = int(rng() % H), c0 = int(rng() % W);
                    const T level = T(rng() % (hi + 1));
                    for (int i = 0; i < 3; ++i)
                        put<T>(src, std::min(H - 1, r0 + (across ? 0 : i)), std::min(W - 1, c0 + (across ? i : 0)), level);
                }
            } else {
                fillTypical<T>(src, rng);
            }
            for (int grid = 0; grid < 4; ++grid) {
                const OrvRect rects[] = {{0, 0, W, H}, {1, 1, W - 3, H - 2}, {-2, 3, W, H}, {6, 5, W - 11, H - 10}, {3, 0, W, 7}};
                for (const OrvRect& roi : rects) {
                    SCOPED_TRACE(std::to_string(W) + "x" + std::to_string(H) + " " + kGridNames[grid] + " at " +
                                 std::to_string(roi.x) + "," + std::to_string(roi.y) + (sparse ? " sparse" : ""));
                    const auto v = run<T>(src, W, H, roi, grid);
                    std::unique_ptr<GuardedImage> s;
                    {
                        ScalarBlocks scalar;
                        s = run<T>(src, W, H, roi, grid);
                    }
                    ASSERT_EQ(v->pixels(), s->pixels());
                }
            }
        }
    }
}

TYPED_TEST(Ahd, ChecksInOrderAndNothingWrittenOnFailure)
{
    using T = TypeParam;
    GuardedImage src(8 * sizeof(T), 8, 8 * sizeof(T)), dst(24 * sizeof(T), 8, 24 * sizeof(T)), tmp(64, 30, 64);
    const auto before = dst.pixels();
    const auto tmpBefore = tmp.pixels();
    const T* s = src.data<T>();
    T* d = dst.data<T>();
    const OrvRect roi{0, 0, 8, 8};
    const auto f = ahd<T>();
    const int ss = src.step(), ds = dst.step();
    EXPECT_EQ(f(nullptr, roi, {4, 8}, ss, d, ds, 9, tmp.data(), 64), orvStatusNullPointer);
    EXPECT_EQ(f(s, roi, {4, 8}, ss, nullptr, ds, 9, tmp.data(), 64), orvStatusNullPointer);
    EXPECT_EQ(f(s, roi, {4, 8}, ss, d, ds, 9, nullptr, 64), orvStatusBadSize);
    EXPECT_EQ(f(s, roi, {8, 4}, ss, d, ds, 9, nullptr, 64), orvStatusBadSize);
    EXPECT_EQ(f(s, roi, {8, 8}, ss, d, ds, -1, nullptr, 64), orvStatusBadArgument);
    EXPECT_EQ(f(s, {8, 0, 4, 4}, {8, 8}, ss, d, ds, 0, tmp.data(), 64), orvStatusOk);   // wholly outside
    EXPECT_EQ(f(s, {-5, 0, 0, 4}, {8, 8}, ss, d, ds, 0, tmp.data(), 64), orvStatusOk);  // empty
    EXPECT_EQ(dst.pixels(), before);
    EXPECT_EQ(tmp.pixels(), tmpBefore);
}

}  // namespace
