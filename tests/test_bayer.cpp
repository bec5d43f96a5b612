// Bilinear Bayer demosaicing: the rules at known values, colours of the four
// grids, zones fixed by the whole mosaic, vector path against scalar form,
// rectangles and clipping, threads, steps and the order of the checks.
#include <algorithm>
#include <random>
#include <vector>

#include "support/mosaic.h"

using namespace orvtest;

namespace {

template <class T>
using CfaFn = OrvStatus (*)(const T*, OrvRect, RoiSize, int, T*, int, OrvBayerGrid);

template <class T>
CfaFn<T> cfaToRgb()
{
    if constexpr (sizeof(T) == 1)
        return orviCFAToRGB_8u_C1C3R;
    else
        return orviCFAToRGB_16u_C1C3R;
}

// A mosaic in guarded memory.
template <class T>
struct Raw {
    Raw(int w, int h, int pad = 0, bool negative = false)
        : w(w), h(h), img(w * int(sizeof(T)), h, (negative ? -1 : 1) * (w * int(sizeof(T)) + pad))
    {
    }
    T& at(int r, int c) { return img.row<T>(r)[c]; }
    int w, h;
    GuardedImage img;
};

// The RGB output of a rectangle in guarded memory.
template <class T>
struct Rgb {
    Rgb(int w, int h, int pad = 0, bool negative = false)
        : img(3 * w * int(sizeof(T)), h, (negative ? -1 : 1) * (3 * w * int(sizeof(T)) + pad))
    {
    }
    T at(int r, int c, int ch) const { return img.row<T>(r)[3 * c + ch]; }
    GuardedImage img;
};

template <class T>
OrvStatus run(Raw<T>& src, OrvRect roi, int grid, Rgb<T>& dst)
{
    return cfaToRgb<T>()(src.img.template data<T>(), roi, {src.w, src.h}, src.img.step(), dst.img.template data<T>(),
                         dst.img.step(), grid);
}

// Whole-mosaic conversion of a small mosaic given row by row.
template <class T>
std::vector<std::vector<T>> convert(int w, int h, int grid, const std::vector<unsigned>& v)
{
    Raw<T> src(w, h);
    for (int r = 0; r < h; ++r)
        for (int c = 0; c < w; ++c)
            src.at(r, c) = T(v[r * w + c]);
    Rgb<T> dst(w, h);
    EXPECT_EQ(run(src, {0, 0, w, h}, grid, dst), orvStatusOk);
    std::vector<std::vector<T>> px;
    for (int r = 0; r < h; ++r)
        for (int c = 0; c < w; ++c)
            px.push_back({dst.at(r, c, 0), dst.at(r, c, 1), dst.at(r, c, 2)});
    return px;
}

template <class T>
class Bayer : public ::testing::Test {};
using Types = ::testing::Types<Orv8u, Orv16u>;
TYPED_TEST_SUITE(Bayer, Types);

TYPED_TEST(Bayer, CornersAndOneSidedFrame)
{
    using T = TypeParam;
    // 2x2 RGGB: every pixel is a corner.
    const auto p = convert<T>(2, 2, RGGB, {10, 21, 40, 90});
    EXPECT_EQ(p[0], (std::vector<T>{10, 31, 90}));  // G = mean2(21, 40) rounds up
    EXPECT_EQ(p[1], (std::vector<T>{10, 21, 90}));
    EXPECT_EQ(p[2], (std::vector<T>{10, 40, 90}));
    EXPECT_EQ(p[3], (std::vector<T>{10, 31, 90}));

    // Row 0 of a 3-row RGGB mosaic, red site at column 2: green weighs the
    // one vertical neighbour twice, blue is the mean of the two diagonals.
    const auto q = convert<T>(4, 3, RGGB, {0, 7, 100, 8, 0, 3, 50, 6, 0, 0, 0, 0});
    EXPECT_EQ(q[2], (std::vector<T>{100, (7 + 8 + 2 * 50 + 2) >> 2, (3 + 6 + 1) >> 1}));
    // Column 3 (last) at row 1, a blue site: green from n, s and twice w.
    EXPECT_EQ(q[7][1], (8 + 0 + 2 * 50 + 2) >> 2);
    EXPECT_EQ(q[7][2], 6);
    EXPECT_EQ(q[7][0], (100 + 0 + 1) >> 1);  // the two diagonals on the left
}

TYPED_TEST(Bayer, InteriorGreenFollowsTheEdge)
{
    using T = TypeParam;
    // 5x5 RGGB: only (2, 2), a red site, is interior.
    std::vector<unsigned> v(25, 0);
    auto set = [&](int r, int c, unsigned x) { v[r * 5 + c] = x; };
    set(1, 2, 10), set(3, 2, 21), set(2, 1, 60), set(2, 3, 81);  // n s w e
    set(1, 1, 1), set(1, 3, 2), set(3, 1, 3), set(3, 3, 5);      // diagonals
    set(2, 2, 100);
    auto at22 = [&] { return convert<T>(5, 5, RGGB, v)[12]; };
    set(0, 2, 100), set(4, 2, 100), set(2, 0, 0), set(2, 4, 200);  // changes less vertically
    EXPECT_EQ(at22(), (std::vector<T>{100, 16, 3}));                 // mean2(10, 21), mean4 of diagonals
    set(2, 0, 100), set(2, 4, 100), set(0, 2, 0), set(4, 2, 9);    // changes less horizontally
    EXPECT_EQ(at22()[1], 71);
    set(0, 2, 100), set(4, 2, 100);  // flat: the mean of all four, one rounding
    EXPECT_EQ(at22()[1], (10 + 21 + 60 + 81 + 2) >> 2);
    // The same site in row 1 of a larger mosaic has all eight neighbours but
    // is frame: no direction test there.
    if constexpr (sizeof(T) == 2) {
        const auto big = convert<T>(4, 4, RGGB, {0, 65535, 0, 0, 65535, 65535, 65535, 0, 0, 65535, 0, 0, 0, 0, 0, 0});
        EXPECT_EQ(big[5][1], 65535);  // blue site, no overflow in the 16-bit sums
    }
}

// A flat scene sampled through each grid comes back flat in every zone: the
// grid code puts each colour where the table says.
TYPED_TEST(Bayer, GridCodesPlaceTheColours)
{
    using T = TypeParam;
    const unsigned rgb[3] = {11, 120, 240};
    for (int grid = 0; grid < 4; ++grid) {
        SCOPED_TRACE(kGridNames[grid]);
        const int w = 9, h = 7;
        std::vector<unsigned> v(w * h);
        for (int r = 0; r < h; ++r)
            for (int c = 0; c < w; ++c)
                v[r * w + c] = rgb[gridChannel(grid, r, c)];
        for (const auto& px : convert<T>(w, h, grid, v))
            ASSERT_EQ(px, (std::vector<T>{T(rgb[0]), T(rgb[1]), T(rgb[2])}));
    }
}

// One rectangle of a mosaic: the vector run and the scalar run agree, neither
// writes outside the rectangle, and the output is the crop of the whole
// mosaic's output, since zones and colours follow the whole mosaic.
template <class T>
void checkRect(Raw<T>& src, const std::vector<T>& whole, OrvRect roi, int grid, int dstPad, bool negative)
{
    const int rw = std::max(0, std::min(roi.width, src.w - roi.x));
    const int rh = std::max(0, std::min(roi.height, src.h - roi.y));
    Rgb<T> dv(std::max(rw, 1), std::max(rh, 1), dstPad, negative), ds(std::max(rw, 1), std::max(rh, 1), dstPad, negative);
    dv.img.template fillValue<uint8_t>(kGuard);
    ds.img.template fillValue<uint8_t>(kGuard);
    ASSERT_EQ(run(src, roi, grid, dv), orvStatusOk);
    {
        ScalarBlocks scalar;
        ASSERT_EQ(run(src, roi, grid, ds), orvStatusOk);
    }
    ASSERT_TRUE(dv.img.guardsIntact());
    ASSERT_TRUE(ds.img.guardsIntact());
    ASSERT_EQ(dv.img.pixels(), ds.img.pixels());
    for (int r = 0; r < rh; ++r) {
        for (int c = 0; c < 3 * rw; ++c) {
            ASSERT_EQ(dv.img.template row<T>(r)[c], whole[std::size_t(roi.y + r) * 3 * src.w + 3 * roi.x + c])
                << "pixel " << r << "," << c / 3;
        }
    }
    if (rw == 0 || rh == 0) {  // nothing to write: the buffer keeps its pattern
        ASSERT_EQ(dv.img.pixels(), std::vector<uint8_t>(dv.img.pixels().size(), kGuard));
    }
}

template <class T>
std::vector<T> wholeScalar(Raw<T>& src, int grid)
{
    Rgb<T> d(src.w, src.h);
    ScalarBlocks scalar;
    EXPECT_EQ(run(src, {0, 0, src.w, src.h}, grid, d), orvStatusOk);
    std::vector<T> v;
    for (int r = 0; r < src.h; ++r)
        v.insert(v.end(), d.img.template row<T>(r), d.img.template row<T>(r) + 3 * src.w);
    return v;
}

TYPED_TEST(Bayer, VectorMatchesScalarOverWidthsAndHeights)
{
    using T = TypeParam;
    std::mt19937 rng(7);
    const int heights[] = {2, 3, 4, 5, 6, 7};
    for (int w = 2; w <= 72; ++w) {
        const int h = heights[w % 6];
        const int grid = w % 4;
        SCOPED_TRACE(std::to_string(w) + "x" + std::to_string(h) + " grid " + std::to_string(grid));
        Raw<T> src(w, h, (w % 3) * int(sizeof(T)), w % 5 == 0);
        fillTypical<T>(src.img, rng);
        const auto whole = wholeScalar(src, grid);
        checkRect(src, whole, {0, 0, w, h}, grid, (w % 2) * 3 * int(sizeof(T)), w % 5 == 0);
    }
    for (int w : {127, 131, 258, 1025}) {
        Raw<T> src(w, 9, int(sizeof(T)) * 5);
        fillTypical<T>(src.img, rng);
        for (int grid = 0; grid < 4; ++grid)
            checkRect(src, wholeScalar(src, grid), {0, 0, w, 9}, grid, 0, false);
    }
}

// Rectangles at every parity of origin, of many sizes, inside a larger
// mosaic; some run past its right or lower edge and are clipped.
TYPED_TEST(Bayer, RectanglesInsideTheMosaic)
{
    using T = TypeParam;
    std::mt19937 rng(11);
    const int W = 83, H = 12;
    Raw<T> src(W, H, 3 * int(sizeof(T)));
    fillTypical<T>(src.img, rng);
    for (int grid = 0; grid < 4; ++grid) {
        const auto whole = wholeScalar(src, grid);
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 4; ++x)
                for (int rw : {1, 3, 34, 66, 90})
                    for (int rh : {1, 2, 9, 20}) {
                        SCOPED_TRACE(std::to_string(x) + "," + std::to_string(y) + " " + std::to_string(rw) + "x" +
                                     std::to_string(rh) + " grid " + std::to_string(grid));
                        checkRect(src, whole, {x, y, rw, rh}, grid, 0, (rw + rh) % 2 == 1);
                    }
        // Near the right and lower edges, and wholly outside.
        for (OrvRect r : std::vector<OrvRect>{{W - 3, H - 3, 3, 3}, {W - 1, H - 1, 5, 5}, {W - 36, 7, 40, 2},
                                              {W, 0, 4, 4}, {0, H + 2, 4, 4}, {W + 5, H + 5, 2, 2}})
            checkRect(src, whole, r, grid, 0, false);
    }
}

// Bands of rows over threads: 1, 2, 3 and 7 threads give the same pixels,
// for bands of odd height starting on odd rows and for interiors just under
// and at the size limit of the split.
TYPED_TEST(Bayer, ThreadCountDoesNotChangeTheOutput)
{
    using T = TypeParam;
    std::mt19937 rng(3);
    struct Shape {
        int W, H;
        OrvRect roi;
    };
    const Shape shapes[] = {{196, 197, {0, 0, 196, 197}}, {195, 400, {0, 0, 195, 400}}, {300, 211, {3, 1, 250, 200}},
                            {260, 230, {1, 2, 194, 205}}};
    for (const Shape& s : shapes) {
        Raw<T> src(s.W, s.H, 2 * int(sizeof(T)));
        fillTypical<T>(src.img, rng);
        for (int n : {1, 2, 3, 7}) {
            SCOPED_TRACE(std::to_string(s.W) + "x" + std::to_string(s.H) + " threads " + std::to_string(n));
            ThreadCount threads(n);
            Rgb<T> d(s.roi.width, s.roi.height);
            ASSERT_EQ(run(src, s.roi, (s.W + n) % 4, d), orvStatusOk);
            ASSERT_TRUE(d.img.guardsIntact());
            Rgb<T> ref(s.roi.width, s.roi.height);
            {
                ThreadCount one(1);
                ScalarBlocks scalar;
                ASSERT_EQ(run(src, s.roi, (s.W + n) % 4, ref), orvStatusOk);
            }
            ASSERT_EQ(d.img.pixels(), ref.img.pixels());
        }
    }
}

TYPED_TEST(Bayer, ChecksInOrderAndNothingWrittenOnFailure)
{
    using T = TypeParam;
    Raw<T> src(8, 8);
    Rgb<T> dst(8, 8);
    const auto before = dst.img.pixels();
    const T* s = src.img.template data<T>();
    T* d = dst.img.template data<T>();
    const int ss = src.img.step(), ds = dst.img.step();
    const OrvRect roi{0, 0, 8, 8};
    const auto f = cfaToRgb<T>();
    EXPECT_EQ(f(nullptr, roi, {1, 8}, ss, nullptr, ds, 9), orvStatusNullPointer);
    EXPECT_EQ(f(s, roi, {1, 8}, ss, nullptr, ds, 9), orvStatusNullPointer);
    EXPECT_EQ(f(s, roi, {1, 8}, ss, d, ds, 9), orvStatusBadSize);
    EXPECT_EQ(f(s, roi, {8, 1}, ss, d, ds, 9), orvStatusBadSize);
    EXPECT_EQ(f(s, roi, {8, 8}, ss, d, ds, 4), orvStatusBadArgument);
    EXPECT_EQ(f(s, roi, {8, 8}, ss, d, ds, -1), orvStatusBadArgument);
    EXPECT_EQ(dst.img.pixels(), before);
    EXPECT_EQ(f(s, {0, 0, 1, 1}, {2, 2}, ss, d, ds, 0), orvStatusOk);  // smallest mosaic, smallest rectangle
}

// 16u steps are element counts: the low bit of an odd byte step is dropped.
TEST(Bayer16u, OddByteStepsRoundDown)
{
    std::mt19937 rng(5);
    const int w = 40, h = 9;
    Raw<Orv16u> src(w, h, 4);
    fillTypical<Orv16u>(src.img, rng);
    Rgb<Orv16u> a(w, h, 6), b(w, h, 6);
    const OrvRect roi{0, 0, w, h};
    ASSERT_EQ(orviCFAToRGB_16u_C1C3R(src.img.data<Orv16u>(), roi, {w, h}, src.img.step(), a.img.data<Orv16u>(),
                                     a.img.step(), 2),
              orvStatusOk);
    ASSERT_EQ(orviCFAToRGB_16u_C1C3R(src.img.data<Orv16u>(), roi, {w, h}, src.img.step() + 1, b.img.data<Orv16u>(),
                                     b.img.step() + 1, 2),
              orvStatusOk);
    EXPECT_EQ(a.img.pixels(), b.img.pixels());
}

}  // namespace
