// Deinterlacing of semi-planar 4:2:0 frames, whole or in slices: vector path
// against scalar form for every slice kind, the values the rules give at
// the edges, slices fitting together, and slices against the whole frame
// where their rules agree.
#include <gtest/gtest.h>

#include <functional>

#include "orvcc.h"
#include "support/video.h"

using namespace orvtest;

namespace {

const VideoFormat kNV12{1, 1, Lay::P2}, kPlanes{1, 1, Lay::P3}, kPacked{1, 0, Lay::C2, "YCbCr"};

struct Member {
    const char* name;
    VideoFormat dst;
    std::function<OrvStatus(VideoFrame&, int row, VideoFrame&, RoiSize, int flag)> call;
};

// Calls on the slice that starts at luma row `row` of both frames.
const Member kMembers[] = {
    {"orviYCbCr420ToYCrCb420_Filter_8u_P2P3R", kPlanes,
     [](VideoFrame& s, int row, VideoFrame& d, RoiSize roi, int flag) {
         Orv8u* planes[3];
         for (int k = 0; k < 3; ++k)
             planes[k] = d.plane(k) + (k ? row / 2 : row) * d.step(k);
         return orviYCbCr420ToYCrCb420_Filter_8u_P2P3R(s.plane(0) + row * s.step(0), s.step(0),
                                                       s.plane(1) + row / 2 * s.step(1), s.step(1), planes,
                                                       d.steps(), roi, flag);
     }},
    {"orviYCbCr420ToYCbCr422_Filter_8u_P2C2R", kPacked,
     [](VideoFrame& s, int row, VideoFrame& d, RoiSize roi, int flag) {
         return orviYCbCr420ToYCbCr422_Filter_8u_P2C2R(s.plane(0) + row * s.step(0), s.step(0),
                                                       s.plane(1) + row / 2 * s.step(1), s.step(1),
                                                       d.plane(0) + row * d.step(0), d.step(0), roi, flag);
     }},
};

// Cuts a frame into slices of the given heights and runs them in order;
// returns false if a call fails. A slice after the first reads three luma
// rows above itself, so a first slice followed by others has 4 rows or more.
bool runSlices(const Member& m, VideoFrame& s, VideoFrame& d, int width, const std::vector<int>& heights)
{
    int row = 0;
    for (std::size_t i = 0; i < heights.size(); ++i) {
        const int flag = i == 0 ? 1 : i + 1 == heights.size() ? 16 : 4;
        if (m.call(s, row, d, {width, heights[i]}, flag) != orvStatusOk)
            return false;
        row += heights[i];
    }
    return true;
}

// Vector path against scalar form for whole frames and for slices, odd and
// even sizes, 16-byte aligned (the aligned family where the width allows)
// and shifted planes; nothing written outside the frame.
TEST(Deinterlace, VectorMatchesScalar)
{
    std::mt19937 rng(17);
    for (const Member& m : kMembers) {
        SCOPED_TRACE(m.name);
        for (int width : {2, 3, 15, 16, 17, 31, 33, 63, 64, 65, 66, 96, 127, 128, 200, 1920}) {
            for (const std::vector<int>& cut :
                 std::vector<std::vector<int>>{{2}, {3}, {4}, {7}, {16}, {4, 2}, {4, 6, 2}, {16, 16, 16}, {6, 8, 4, 5}}) {
                int height = 0;
                for (int h : cut)
                    height += h & ~1;
                SCOPED_TRACE(std::to_string(width) + " wide, " + std::to_string(cut.size()) + " slices of " +
                             std::to_string(cut[0]));
                const int pad = width % 2 ? 5 : 64 - width % 64;  // even widths: steps multiples of 64
                VideoFrame s(kNV12, width, height, pad, false, 0);
                VideoFrame dv(m.dst, width, height, pad, false, width % 3);
                VideoFrame ds(m.dst, width, height, pad, false, width % 3);
                s.fill(rng);
                dv.fill(rng);
                ds.copyFrom(dv);
                std::vector<int> heights = cut;
                for (int& h : heights)
                    h &= ~1;
                heights.back() = cut.back();
                if (cut.size() == 1) {
                    ASSERT_EQ(m.call(s, 0, dv, {width, cut[0]}, 21), orvStatusOk);
                    ScalarBlocks scalar;
                    ASSERT_EQ(m.call(s, 0, ds, {width, cut[0]}, 21), orvStatusOk);
                } else {
                    ASSERT_TRUE(runSlices(m, s, dv, width, heights));
                    ScalarBlocks scalar;
                    ASSERT_TRUE(runSlices(m, s, ds, width, heights));
                }
                ASSERT_TRUE(dv.guardsIntact());
                ASSERT_TRUE(ds.guardsIntact());
                ASSERT_EQ(dv.pixels(), ds.pixels());
            }
        }
    }
}

// Slices fit together without a gap and agree with the whole frame except
// where their rules differ: the frame's top and bottom rows, and for the
// planar output the last chroma row. Aligned planes and 16-row slices take
// the aligned family, whose wide rules cover every column.
TEST(Deinterlace, SlicesAgreeWithWholeFrame)
{
    std::mt19937 rng(23);
    const int width = 128, height = 64;
    const std::vector<std::vector<int>> cuts = {{16, 48}, {32, 32}, {48, 16}, {16, 16, 32}, {16, 32, 16}, {16, 16, 16, 16}};
    for (const Member& m : kMembers) {
        SCOPED_TRACE(m.name);
        const bool planar = m.dst.lay == Lay::P3;
        VideoFrame s(kNV12, width, height);
        s.fill(rng);
        VideoFrame whole(m.dst, width, height);
        ASSERT_EQ(m.call(s, 0, whole, {width, height}, 21), orvStatusOk);
        for (const auto& cut : cuts) {
            VideoFrame d(m.dst, width, height);
            ASSERT_TRUE(runSlices(m, s, d, width, cut));
            // The packed output's wide loops end at the frame edges in other rules.
            const int skip = planar ? 1 : 2;
            for (int r = skip; r < height - skip; ++r)
                for (int x = 0; x < width; ++x)
                    ASSERT_EQ(d.y(x, r), whole.y(x, r)) << "row " << r << " column " << x;
            const int chromaRows = planar ? height / 2 - 1 : height - 2;
            for (int r = planar ? 0 : 2; r < chromaRows; ++r)
                for (int c = 0; c < width / 2; ++c)
                    for (int which = 0; which < 2; ++which)
                        ASSERT_EQ(d.chroma(which, c, r), whole.chroma(which, c, r)) << "chroma row " << r;
        }
    }
}

// The edge values of the rules and the flags that do nothing.
TEST(Deinterlace, EdgesAndFlags)
{
    for (const Member& m : kMembers) {
        SCOPED_TRACE(m.name);
        // Height 2, whole frame: (3c + o + 4) >> 2 saturates at 255; 100 gives 101.
        for (auto [in, out] : {std::pair{255, 255}, std::pair{100, 101}}) {
            VideoFrame s(kNV12, 4, 2), d(m.dst, 4, 2);
            for (int r = 0; r < 2; ++r)
                for (int x = 0; x < 4; ++x)
                    s.y(x, r) = uint8_t(in);
            ASSERT_EQ(m.call(s, 0, d, {4, 2}, 21), orvStatusOk);
            for (int r = 0; r < 2; ++r)
                EXPECT_EQ(d.y(3, r), out);
        }
        std::mt19937 rng(31);
        VideoFrame s(kNV12, 40, 12);
        s.fill(rng);
        for (int flag : {0, 2, 5, 17, 20}) {
            VideoFrame d(m.dst, 40, 12);
            const auto before = d.pixels();
            EXPECT_EQ(m.call(s, 0, d, {40, 12}, flag), orvStatusOk);
            EXPECT_EQ(d.pixels(), before) << flag;
        }
        VideoFrame a(m.dst, 40, 12), b(m.dst, 40, 12);
        ASSERT_EQ(m.call(s, 0, a, {40, 12}, 21), orvStatusOk);
        ASSERT_EQ(m.call(s, 0, b, {40, 12}, 23), orvStatusOk);
        EXPECT_EQ(a.pixels(), b.pixels());
    }
}

// The last slice of the general family averages the same two chroma rows
// down for its two bottom rows.
TEST(Deinterlace, LastChromaRowsEqual)
{
    std::mt19937 rng(41);
    VideoFrame s(kNV12, 34, 12), d(kPlanes, 34, 12);
    s.fill(rng);
    ASSERT_TRUE(runSlices(kMembers[0], s, d, 34, {6, 6}));
    for (int c = 0; c < 17; ++c)
        for (int which = 0; which < 2; ++which) {
            const int a = s.chroma(which, c, 4), b = s.chroma(which, c, 5);
            EXPECT_EQ(d.chroma(which, c, 5), (a + b) >> 1);
            EXPECT_EQ(d.chroma(which, c, 4), (a + b) >> 1);
        }
}

// Pointers, then sizes; the planar member checks its planes after a first size test.
TEST(Deinterlace, ChecksInOrder)
{
    VideoFrame s(kNV12, 8, 8), d3(kPlanes, 8, 8), d2(kPacked, 8, 8);
    Orv8u* planes[3] = {d3.plane(0), nullptr, d3.plane(2)};
    EXPECT_EQ(orviYCbCr420ToYCrCb420_Filter_8u_P2P3R(nullptr, 8, s.plane(1), 8, d3.planes(), d3.steps(), {0, 0}, 21),
              orvStatusNullPointer);
    EXPECT_EQ(orviYCbCr420ToYCrCb420_Filter_8u_P2P3R(s.plane(0), 8, s.plane(1), 8, planes, d3.steps(), {0, 8}, 21),
              orvStatusBadSize);
    EXPECT_EQ(orviYCbCr420ToYCrCb420_Filter_8u_P2P3R(s.plane(0), 8, s.plane(1), 8, planes, d3.steps(), {1, 8}, 21),
              orvStatusNullPointer);
    EXPECT_EQ(orviYCbCr420ToYCrCb420_Filter_8u_P2P3R(s.plane(0), 8, s.plane(1), 8, d3.planes(), d3.steps(), {1, 8}, 21),
              orvStatusBadSize);
    EXPECT_EQ(orviYCbCr420ToYCbCr422_Filter_8u_P2C2R(s.plane(0), 8, nullptr, 8, d2.plane(0), 16, {0, 0}, 21),
              orvStatusNullPointer);
    EXPECT_EQ(orviYCbCr420ToYCbCr422_Filter_8u_P2C2R(s.plane(0), 8, s.plane(1), 8, d2.plane(0), 16, {8, 1}, 21),
              orvStatusBadSize);
}

}  // namespace
