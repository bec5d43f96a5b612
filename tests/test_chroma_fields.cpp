// Chroma resampled by filters: the four-tap 4:2:0 to 4:2:2 interpolation and
// the field-by-field interlaced conversions, against their row formulas over
// odd and even sizes, vector path against scalar form, on several threads.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "orvcc.h"
#include "support/video.h"

using namespace orvtest;

namespace {

using Call = std::function<OrvStatus(VideoFrame&, VideoFrame&, RoiSize)>;

enum class Kind { Filter, Up, Down };  // four-tap 420 to 422; interlaced 420 to 422; 422 to 420

struct Member {
    const char* name;
    Call call;
    VideoFormat src, dst;
    Kind kind;
};

const VideoFormat P3_420{1, 1, Lay::P3}, P3_420r{1, 1, Lay::P3, "YCrCb"}, P2_420{1, 1, Lay::P2};
const VideoFormat P3_422{1, 0, Lay::P3}, C2_CbYCr{1, 0, Lay::C2, "CbYCr"};

#define M(fn, SK, DK) \
    #fn, [](VideoFrame& s, VideoFrame& d, RoiSize r) { return fn(VIDEO_ARGS_##SK(s), VIDEO_ARGS_##DK(d), r); }

const std::vector<Member>& members()
{
    static const std::vector<Member> m = {
        {M(orviYCbCr420ToYCbCr422_Filter_8u_P3R, P3, P3), P3_420, P3_422, Kind::Filter},
        {M(orviYCrCb420ToYCbCr422_Filter_8u_P3R, P3, P3), P3_420r, P3_422, Kind::Filter},
        {M(orviYCbCr420ToYCbCr422_Filter_8u_P2P3R, P2, P3), P2_420, P3_422, Kind::Filter},
        {M(orviYCbCr420To422_Interlace_8u_P3R, P3, P3), P3_420, P3_422, Kind::Up},
        {M(orviYCbCr420ToCbYCr422_Interlace_8u_P3C2R, P3, C2), P3_420, C2_CbYCr, Kind::Up},
        {M(orviYCbCr422To420_Interlace_8u_P3R, P3, P3), P3_422, P3_420, Kind::Down},
        {M(orviCbYCr422ToYCbCr420_Interlace_8u_C2P3R, C2, P3), C2_CbYCr, P3_420, Kind::Down},
    };
    return m;
}

int heightBlock(const Member& m) { return m.kind == Kind::Filter ? 8 : 4; }

OrvStatus expectedStatus(const Member& m, RoiSize roi, int& w, int& h)
{
    const int hb = heightBlock(m);
    if (roi.width < 2 || roi.height < hb)
        return orvStatusBadSize;
    w = roi.width & ~1;
    h = roi.height / hb * hb;
    if (m.kind != Kind::Filter && (w != roi.width || h != roi.height))
        return orvStatusOddSize;
    return orvStatusOk;
}

// Destination chroma row r, sample c, from the formulas.
int chromaRule(const Member& m, const VideoFrame& s, int which, int c, int r, int h)
{
    auto S = [&](int rr) { return int(s.chroma(which, c, rr)); };
    const int rows = h / 2;
    switch (m.kind) {
    case Kind::Filter: {
        if (r % 2 == 0)
            return S(r / 2);
        const int k = r / 2;
        auto E = [&](int i) { return S(std::clamp(i, 0, rows - 1)); };
        return std::clamp((9 * (E(k) + E(k + 1)) - E(k - 1) - E(k + 2) + 8) >> 4, 0, 255);
    }
    case Kind::Up: {
        if (r < 2)
            return S(r);
        if (r >= h - 2)
            return S(rows - 2 + r - (h - 2));
        const int i = (r - 2) / 4 * 2;
        switch ((r - 2) % 4) {
        case 0: return (5 * S(i) + 3 * S(i + 2) + 4) >> 3;
        case 1: return (7 * S(i + 1) + S(i + 3) + 4) >> 3;
        case 2: return (S(i) + 7 * S(i + 2) + 4) >> 3;
        default: return (3 * S(i + 1) + 5 * S(i + 3) + 4) >> 3;
        }
    }
    default: {
        const int i = r / 2;
        return r % 2 ? (S(4 * i + 1) + 3 * S(4 * i + 3) + 2) >> 2 : (3 * S(4 * i) + S(4 * i + 2) + 2) >> 2;
    }
    }
}

void applyRule(const Member& m, const VideoFrame& s, VideoFrame& d, int w, int h)
{
    for (int r = 0; r < h; ++r)
        for (int x = 0; x < w; ++x)
            d.y(x, r) = s.y(x, r);
    for (int which = 0; which < 2; ++which)
        for (int r = 0; r < h >> m.dst.ys; ++r)
            for (int c = 0; c < w / 2; ++c)
                d.chroma(which, c, r) = uint8_t(chromaRule(m, s, which, c, r, h));
}

// Every member against its formulas, vector against scalar, nothing written
// beyond the rounded rectangle.
TEST(ChromaFields, EveryMemberFollowsItsFormulas)
{
    std::mt19937 rng(5);
    for (const Member& m : members()) {
        SCOPED_TRACE(m.name);
        std::vector<std::array<int, 3>> geos;  // width, height, pad
        const int heights[] = {3, 4, 7, 8, 9, 12, 15, 16, 20, 24};
        for (int w = 1; w <= 70; ++w)
            geos.push_back({w, heights[w % 10], w % 2 ? 0 : 3});
        for (int w : {127, 128, 130, 255, 256, 1920})
            geos.push_back({w, 16 + w % 5, 5});
        for (const auto& [gw, gh, pad] : geos) {
            SCOPED_TRACE(std::to_string(gw) + "x" + std::to_string(gh));
            const bool neg = gw % 3 == 0;
            VideoFrame src(m.src, gw, gh, pad, neg), dv(m.dst, gw, gh, pad, neg, gw % 7), ds(m.dst, gw, gh, pad, neg),
                ex(m.dst, gw, gh, pad, neg);
            src.fill(rng);
            dv.fill(rng);
            ds.copyFrom(dv);
            ex.copyFrom(dv);
            int w = 0, h = 0;
            const OrvStatus want = expectedStatus(m, {gw, gh}, w, h);
            if (want >= 0)
                applyRule(m, src, ex, w, h);
            expectConversion(m.call, src, dv, ds, ex, {gw, gh}, want);
        }
    }
}

// Pointers, array elements included, before sizes; nothing written on failure.
TEST(ChromaFields, ChecksInOrder)
{
    for (const Member& m : members()) {
        SCOPED_TRACE(m.name);
        expectNullsBeforeSizes(m.call, m.src, m.dst, {1, 0}, true);
        const auto none = [](VideoFrame&, VideoFrame&) {};
        expectFault(m.call, m.src, m.dst, none, {1, 8}, orvStatusBadSize);
        expectFault(m.call, m.src, m.dst, none, {8, heightBlock(m) - 1}, orvStatusBadSize);
    }
}

// The saturation of the four-tap filter over a hard edge.
TEST(ChromaFields, FourTapSaturatesOverAnEdge)
{
    VideoFrame s(P3_420, 2, 8), d(P3_422, 2, 8);
    const uint8_t e[4] = {0, 0, 255, 255};
    for (int k = 0; k < 4; ++k)
        s.chroma(0, 0, k) = s.chroma(1, 0, k) = e[k];
    ASSERT_EQ(orviYCbCr420ToYCbCr422_Filter_8u_P3R(s.planes(), s.steps(), d.planes(), d.steps(), {2, 8}),
              orvStatusOk);
    const int odd[4] = {0, 128, 255, 255};
    for (int k = 0; k < 4; ++k) {
        EXPECT_EQ(d.chroma(0, 0, 2 * k), e[k]);
        EXPECT_EQ(d.chroma(0, 0, 2 * k + 1), odd[k]) << k;
    }
}

// Two fields of different flat colours stay apart in both directions.
TEST(ChromaFields, FieldsNeverMix)
{
    for (const Member& m : members()) {
        if (m.kind == Kind::Filter)
            continue;
        SCOPED_TRACE(m.name);
        const int w = 64, h = 16;
        VideoFrame s(m.src, w, h), d(m.dst, w, h);
        for (int r = 0; r < h >> m.src.ys; ++r)
            for (int c = 0; c < w / 2; ++c)
                s.chroma(0, c, r) = s.chroma(1, c, r) = r % 2 ? 200 : 30;
        ASSERT_EQ(m.call(s, d, {w, h}), orvStatusOk);
        for (int r = 0; r < h >> m.dst.ys; ++r)
            for (int c = 0; c < w / 2; ++c)
                ASSERT_EQ(d.chroma(1, c, r), r % 2 ? 200 : 30) << r;
    }
}

// The banded drivers give the same bytes on any number of threads.
TEST(ChromaFields, InterlaceIndependentOfThreadCount)
{
    std::mt19937 rng(21);
    for (const Member& m : members()) {
        if (m.kind == Kind::Filter)
            continue;
        SCOPED_TRACE(m.name);
        for (RoiSize roi : {RoiSize{128, 132}, RoiSize{131, 150}, RoiSize{256, 404}}) {
            VideoFrame s(m.src, roi.width, roi.height), ex(m.dst, roi.width, roi.height);
            s.fill(rng);
            int w = 0, h = 0;
            expectedStatus(m, roi, w, h);
            applyRule(m, s, ex, w, h);
            const std::vector<uint8_t> first = ex.pixels();
            for (int threads : {1, 2, 3, 7}) {
                ThreadCount tc(threads);
                VideoFrame d(m.dst, roi.width, roi.height);
                ASSERT_GE(m.call(s, d, roi), 0);
                ASSERT_EQ(d.pixels(), first) << threads << " threads";
            }
        }
    }
}

}  // namespace
