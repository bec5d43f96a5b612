// Chroma format conversions: every member against its sample rule over odd
// and even sizes, padded and negative steps, vector path against scalar
// form; the argument checks in order; lossless round trips.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "orvcc.h"
#include "support/video.h"

using namespace orvtest;

namespace {

using Call = std::function<OrvStatus(VideoFrame&, VideoFrame&, RoiSize)>;

struct Member {
    const char* name;
    Call call;
    VideoFormat src, dst;
    // '=' copy; 'A' to 'F' the resampling rules; 'G', 'H', 'J', 'K' the
    // members that take whole blocks only.
    char rule;
    int minHeight;  // 0: no test of the height
};

const VideoFormat P3_420{1, 1, Lay::P3}, P3_420r{1, 1, Lay::P3, "YCrCb"};
const VideoFormat P2_420{1, 1, Lay::P2}, P2_420r{1, 1, Lay::P2, "YCrCb"};
const VideoFormat P3_422{1, 0, Lay::P3}, P3_422r{1, 0, Lay::P3, "YCrCb"};
const VideoFormat P3_411{2, 0, Lay::P3}, P2_411{2, 0, Lay::P2};
const VideoFormat C2_YCbCr{1, 0, Lay::C2, "YCbCr"}, C2_CbYCr{1, 0, Lay::C2, "CbYCr"}, C2_YCrCb{1, 0, Lay::C2, "YCrCb"};
const VideoFormat P3_1620{2, 2, Lay::P3};

#define M(fn, SK, DK) \
    #fn, [](VideoFrame& s, VideoFrame& d, RoiSize r) { return fn(VIDEO_ARGS_##SK(s), VIDEO_ARGS_##DK(d), r); }

// clang-format off
const std::vector<Member>& members()
{
    static const std::vector<Member> m = {
        {M(orviYCbCr420_8u_P2P3R, P2, P3), P2_420, P3_420, '=', 2},
        {M(orviYCbCr420_8u_P3P2R, P3, P2), P3_420, P2_420, '=', 2},
        // first byte of a pair to plane 1 and back, whatever the names say
        {M(orviYCbCr420ToYCrCb420_8u_P2P3R, P2, P3), P2_420, P3_420, '=', 2},
        {M(orviYCrCb420ToYCbCr420_8u_P3P2R, P3, P2), P3_420r, P2_420, '=', 2},
        {M(orviYCbCr411_8u_P2P3R, P2, P3), P2_411, P3_411, '=', 0},
        {M(orviYCbCr411_8u_P3P2R, P3, P2), P3_411, P2_411, '=', 0},
        {M(orviYCbCr422_8u_C2P3R, C2, P3), C2_YCbCr, P3_422, '=', 1},
        {M(orviYCbCr422_8u_P3C2R, P3, C2), P3_422, C2_YCbCr, '=', 1},
        {M(orviYCbCr422ToCbYCr422_8u_C2R, C2, C2), C2_YCbCr, C2_CbYCr, '=', 1},
        {M(orviYCbCr422ToCbYCr422_8u_P3C2R, P3, C2), P3_422, C2_CbYCr, '=', 1},
        {M(orviCbYCr422ToYCbCr422_8u_C2R, C2, C2), C2_CbYCr, C2_YCbCr, '=', 1},
        {M(orviCbYCr422ToYCbCr422_8u_C2P3R, C2, P3), C2_CbYCr, P3_422, '=', 1},
        {M(orviYCbCr422ToYCrCb422_8u_C2R, C2, C2), C2_YCbCr, C2_YCrCb, '=', 0},
        {M(orviYCbCr422ToYCrCb422_8u_P3C2R, P3, C2), P3_422, C2_YCrCb, '=', 0},
        {M(orviYCrCb422ToYCbCr422_8u_C2P3R, C2, P3), C2_YCrCb, P3_422, '=', 1},
        {M(orviYCbCr422ToYCbCr420_8u_P3R, P3, P3), P3_422, P3_420, 'A', 2},
        {M(orviYCbCr422ToYCbCr420_8u_P3P2R, P3, P2), P3_422, P2_420, 'A', 2},
        {M(orviYCbCr422ToYCbCr420_8u_C2P3R, C2, P3), C2_YCbCr, P3_420, 'A', 2},
        {M(orviYCbCr422ToYCbCr420_8u_C2P2R, C2, P2), C2_YCbCr, P2_420, 'A', 2},
        {M(orviCbYCr422ToYCbCr420_8u_C2P3R, C2, P3), C2_CbYCr, P3_420, 'A', 2},
        {M(orviCbYCr422ToYCbCr420_8u_C2P2R, C2, P2), C2_CbYCr, P2_420, 'A', 2},
        {M(orviCbYCr422ToYCrCb420_8u_C2P3R, C2, P3), C2_CbYCr, P3_420r, 'A', 2},
        {M(orviYCbCr422ToYCrCb420_8u_C2P3R, C2, P3), C2_YCbCr, P3_420r, 'A', 2},
        {M(orviYCbCr422ToYCrCb420_8u_C2P2R, C2, P2), C2_YCbCr, P2_420r, 'A', 2},
        {M(orviYCrCb422ToYCbCr420_8u_C2P3R, C2, P3), C2_YCrCb, P3_420, 'A', 2},
        {M(orviYCbCr420ToYCbCr422_8u_P3R, P3, P3), P3_420, P3_422, 'B', 2},
        {M(orviYCbCr420ToYCbCr422_8u_P2P3R, P2, P3), P2_420, P3_422, 'B', 2},
        {M(orviYCbCr420ToYCbCr422_8u_P2C2R, P2, C2), P2_420, C2_YCbCr, 'B', 2},
        {M(orviYCbCr420ToCbYCr422_8u_P2C2R, P2, C2), P2_420, C2_CbYCr, 'B', 2},
        {M(orviYCrCb420ToYCbCr422_8u_P3R, P3, P3), P3_420r, P3_422, 'B', 2},
        {M(orviYCrCb420ToYCbCr422_8u_P3C2R, P3, C2), P3_420r, C2_YCbCr, 'B', 2},
        {M(orviYCrCb420ToCbYCr422_8u_P3C2R, P3, C2), P3_420r, C2_CbYCr, 'B', 2},
        {M(orviYCbCr422ToYCbCr411_8u_P3R, P3, P3), P3_422, P3_411, 'C', 0},
        {M(orviYCbCr422ToYCbCr411_8u_P3P2R, P3, P2), P3_422, P2_411, 'C', 0},
        {M(orviYCbCr422ToYCbCr411_8u_C2P3R, C2, P3), C2_YCbCr, P3_411, 'C', 1},
        {M(orviYCbCr422ToYCbCr411_8u_C2P2R, C2, P2), C2_YCbCr, P2_411, 'C', 0},
        {M(orviCbYCr422ToYCbCr411_8u_C2P3R, C2, P3), C2_CbYCr, P3_411, 'C', 0},
        {M(orviYCrCb422ToYCbCr411_8u_C2P3R, C2, P3), C2_YCrCb, P3_411, 'C', 0},
        {M(orviYCbCr411ToYCbCr422_8u_P3R, P3, P3), P3_411, P3_422, 'D', 0},
        {M(orviYCbCr411ToYCbCr422_8u_P3C2R, P3, C2), P3_411, C2_YCbCr, 'D', 0},
        {M(orviYCbCr411ToYCbCr422_8u_P2P3R, P2, P3), P2_411, P3_422, 'D', 0},
        {M(orviYCbCr411ToYCbCr422_8u_P2C2R, P2, C2), P2_411, C2_YCbCr, 'D', 0},
        {M(orviYCbCr411ToYCrCb422_8u_P3R, P3, P3), P3_411, P3_422r, 'D', 0},
        {M(orviYCbCr411ToYCrCb422_8u_P3C2R, P3, C2), P3_411, C2_YCrCb, 'D', 0},
        {M(orviYCbCr411ToYCbCr420_8u_P3R, P3, P3), P3_411, P3_420, 'E', 2},
        {M(orviYCbCr411ToYCbCr420_8u_P3P2R, P3, P2), P3_411, P2_420, 'E', 2},
        {M(orviYCbCr411ToYCbCr420_8u_P2P3R, P2, P3), P2_411, P3_420, 'E', 2},
        {M(orviYCbCr411ToYCrCb420_8u_P2P3R, P2, P3), P2_411, P3_420r, 'E', 2},
        {M(orviYCbCr420ToYCbCr411_8u_P2P3R, P2, P3), P2_420, P3_411, 'F', 2},
        {M(orviYCbCr420ToYCbCr411_8u_P3P2R, P3, P2), P3_420, P2_411, 'F', 2},
        {M(orviYCrCb420ToYCbCr411_8u_P3P2R, P3, P2), P3_420r, P2_411, 'F', 2},
        {M(orviYCbCr420To411_8u_P3R, P3, P3), P3_420, P3_411, 'G', 2},
        {M(orviYCbCr411To420_8u_P3R, P3, P3), P3_411, P3_420, 'H', 4},
        {M(orviYCbCr420To1620_8u_P3R, P3, P3), P3_420, P3_1620, 'J', 4},
        {M(orviYCbCr1620To420_8u_P3R, P3, P3), P3_1620, P3_420, 'K', 4},
    };
    return m;
}
// clang-format on

bool strict(const Member& m) { return m.rule >= 'G' && m.rule <= 'K'; }
int minWidth(const Member& m) { return (m.src.xs == 2 || m.dst.xs == 2) ? 4 : 2; }

// What the call must return, and the rectangle it converts.
OrvStatus expectedStatus(const Member& m, RoiSize roi, int& w, int& h)
{
    const int mw = minWidth(m);
    if (strict(m)) {
        w = roi.width;
        h = roi.height;
        return (w < 4 || w % 4 || h < m.minHeight || h % m.minHeight) ? orvStatusBadSize : orvStatusOk;
    }
    if (roi.width < mw || (m.minHeight && roi.height < m.minHeight))
        return orvStatusBadSize;
    w = roi.width / mw * mw;
    const int hb = 1 << std::max(m.src.ys, m.dst.ys);
    h = roi.height > 0 ? roi.height / hb * hb : 0;
    if (std::string(m.name) == "orviYCbCr422ToCbYCr422_8u_P3C2R" && roi.width % 2)
        return orvStatusOddSize;
    return orvStatusOk;
}

int avg(int a, int b, bool up) { return (a + b + up) >> 1; }

// Destination chroma sample (c, r) of a member, from the source frame.
int chromaRule(const Member& m, const VideoFrame& s, int which, int c, int r, int w, int h)
{
    auto S = [&](int cc, int rr) { return int(s.chroma(which, cc, rr)); };
    const int n = w / 4;
    switch (m.rule) {
    case '=': return S(c, r);
    case 'A': return S(c, 2 * r);
    case 'B': return S(c, r / 2);
    case 'C': return S(2 * c, r);
    case 'D': return S(c / 2, r);
    case 'E': return S(c / 2, 2 * r + c % 2);
    case 'F': return S(2 * c + r % 2, r / 2);
    case 'J': return S(2 * c, 2 * r);
    case 'G': {
        const int sr = r / 2, rows = h / 2;
        if (r % 2 == 0 || sr == rows - 1)
            return S(2 * c, sr);
        return avg(S(2 * c, sr), S(2 * c, sr + 1), c < n / 32 * 32);
    }
    case 'H': {
        const int sc = c / 2;
        if (c % 2 == 0 || sc == n - 1)
            return S(sc, 2 * r);
        return avg(S(sc, 2 * r), S(sc + 1, 2 * r), sc < (n - 1) / 16 * 16);
    }
    default: {  // 'K'
        const int sc = c / 2, sr = r / 2, rows = h / 4;
        const bool up = sc < (n - 1) / 16 * 16, right = sc + 1 < n, below = sr + 1 < rows;
        const int a = S(sc, sr);
        if (r % 2 == 0)
            return c % 2 == 0 || !right ? a : avg(a, S(sc + 1, sr), up);
        if (!below)
            return a;
        if (!right)
            return avg(a, S(sc, sr + 1), false);
        if (c % 2 == 0)
            return avg(a, S(sc, sr + 1), up);
        return avg(avg(a, S(sc + 1, sr), up), avg(S(sc, sr + 1), S(sc + 1, sr + 1), up), up);
    }
    }
}

// The destination after a successful call: luma copied, chroma by the rule,
// everything else as it was.
void applyRule(const Member& m, const VideoFrame& s, VideoFrame& d, int w, int h)
{
    for (int r = 0; r < h; ++r)
        for (int x = 0; x < w; ++x)
            d.y(x, r) = s.y(x, r);
    const int cw = w >> m.dst.xs, ch = h >> m.dst.ys;
    for (int which = 0; which < 2; ++which)
        for (int r = 0; r < ch; ++r)
            for (int c = 0; c < cw; ++c)
                d.chroma(which, c, r) = uint8_t(chromaRule(m, s, which, c, r, w, h));
}

struct Geo {
    int w, h, pad;
    bool negative;
};

std::vector<Geo> sweep()
{
    std::vector<Geo> g;
    // Widths that are multiples of 4 get heights of whole 4-row blocks, so
    // that the members taking whole blocks only convert something too.
    const int heights[] = {1, 2, 3, 5, 6, 7};
    for (int w = 1; w <= 72; ++w) {
        const int h = w % 4 ? heights[w % 6] : w % 12 == 0 ? 12 : w % 8 ? 4 : 8;
        g.push_back({w, h, w % 2 ? 0 : 3 + w % 5, w % 3 == 0});
    }
    for (int w : {124, 128, 132, 255, 256, 260, 1000, 1920})
        g.push_back({w, w % 8 ? 4 : 8, 7, w % 3 == 0});
    // Unpadded planes, whose luma rows are one run of bytes.
    for (int w : {64, 96, 1920})
        g.push_back({w, 8, 0, false});
    return g;
}

// The member's rule over the sweep (its geometries at least `minWidth`
// wide), its vector path against its scalar form, nothing written outside
// the converted rectangle.
void followRules(std::mt19937& rng, int minWidth)
{
    for (const Member& m : members()) {
        SCOPED_TRACE(m.name);
        for (const Geo& g : sweep()) {
            if (g.w < minWidth)
                continue;
            SCOPED_TRACE(std::to_string(g.w) + "x" + std::to_string(g.h) + " pad " + std::to_string(g.pad) +
                         (g.negative ? " neg" : ""));
            VideoFrame src(m.src, g.w, g.h, g.pad, g.negative, g.pad % 4);
            VideoFrame dv(m.dst, g.w, g.h, g.pad, g.negative, g.w % 5);
            VideoFrame ds(m.dst, g.w, g.h, g.pad, g.negative, g.w % 5);
            VideoFrame ex(m.dst, g.w, g.h, g.pad, g.negative, 0);
            src.fill(rng);
            dv.fill(rng);
            ds.copyFrom(dv);
            ex.copyFrom(dv);
            int w = 0, h = 0;
            const OrvStatus want = expectedStatus(m, {g.w, g.h}, w, h);
            if (want >= 0)
                applyRule(m, src, ex, w, h);
            expectConversion(m.call, src, dv, ds, ex, {g.w, g.h}, want);
        }
    }
}

TEST(ChromaFormats, EveryMemberFollowsItsRule)
{
    std::mt19937 rng(7);
    followRules(rng, 1);
}

// Luma rows copied with streaming stores (forced here; by their rule only in
// frames larger than the cache) give the same bytes.
TEST(ChromaFormats, StreamingStoresGiveTheSameBytes)
{
    std::mt19937 rng(8);
    StreamStores policy(true);
    followRules(rng, 60);
}

// Every pointer, array elements included, before any size; then the width,
// then the height; a failing call writes nothing.
TEST(ChromaFormats, ChecksInOrder)
{
    for (const Member& m : members()) {
        SCOPED_TRACE(m.name);
        expectNullsBeforeSizes(m.call, m.src, m.dst, {0, 0}, false);
        expectNullsBeforeSizes(m.call, m.src, m.dst, {0, -1}, true);
        const auto none = [](VideoFrame&, VideoFrame&) {};
        const auto fault = [&](RoiSize roi, OrvStatus want) { expectFault(m.call, m.src, m.dst, none, roi, want); };
        fault({minWidth(m) - 1, 8}, orvStatusBadSize);
        if (m.minHeight)
            fault({8, m.minHeight - 1}, orvStatusBadSize);
        else
            for (int h : {0, -1})
                fault({8, h}, orvStatusOk);
        if (strict(m)) {
            fault({6, 8}, orvStatusBadSize);
            fault({8, m.minHeight + 1}, orvStatusBadSize);
        }
    }
}

OrvStatus callByName(const char* name, VideoFrame& s, VideoFrame& d, RoiSize roi)
{
    for (const Member& m : members())
        if (std::string(m.name) == name)
            return m.call(s, d, roi);
    ADD_FAILURE() << name;
    return orvStatusBadArgument;
}

const Member& byName(const char* name)
{
    for (const Member& m : members())
        if (std::string(m.name) == name)
            return m;
    throw std::runtime_error(name);
}

// A layout change and its inverse give back the frame, as does 4:1:1 to
// 4:2:0 and back.
TEST(ChromaFormats, LosslessRoundTrips)
{
    const std::pair<const char*, const char*> pairs[] = {
        {"orviYCbCr420_8u_P2P3R", "orviYCbCr420_8u_P3P2R"},
        {"orviYCbCr411_8u_P2P3R", "orviYCbCr411_8u_P3P2R"},
        {"orviYCbCr422_8u_C2P3R", "orviYCbCr422_8u_P3C2R"},
        {"orviYCbCr422ToCbYCr422_8u_C2R", "orviCbYCr422ToYCbCr422_8u_C2R"},
        {"orviCbYCr422ToYCbCr422_8u_C2P3R", "orviYCbCr422ToCbYCr422_8u_P3C2R"},
        {"orviYCrCb422ToYCbCr422_8u_C2P3R", "orviYCbCr422ToYCrCb422_8u_P3C2R"},
        {"orviYCbCr411ToYCbCr420_8u_P3P2R", "orviYCbCr420ToYCbCr411_8u_P2P3R"},
        {"orviYCbCr411ToYCbCr420_8u_P2P3R", "orviYCbCr420ToYCbCr411_8u_P3P2R"},
    };
    std::mt19937 rng(11);
    for (const auto& [there, back] : pairs) {
        SCOPED_TRACE(there);
        for (RoiSize roi : {RoiSize{4, 2}, RoiSize{132, 6}, RoiSize{1920, 4}}) {
            VideoFrame a(byName(there).src, roi.width, roi.height);
            VideoFrame b(byName(there).dst, roi.width, roi.height, 5, true);
            VideoFrame c(byName(back).dst, roi.width, roi.height);
            a.fill(rng);
            ASSERT_EQ(callByName(there, a, b, roi), orvStatusOk);
            ASSERT_EQ(callByName(back, b, c, roi), orvStatusOk);
            EXPECT_EQ(c.pixels(), a.pixels());
        }
    }
}

// The averaging members round up where the vector steps reach and down in
// the last columns: 10 and 13 give 12 in one place and 11 in the other.
TEST(ChromaFormats, AverageRoundsUpInVectorPartOnly)
{
    for (int width : {64, 68, 256}) {
        VideoFrame s(P3_411, width, 4), d(P3_420, width, 4);
        const int n = width / 4;
        for (int which = 0; which < 2; ++which)
            for (int c = 0; c < n; ++c)
                s.chroma(which, c, 0) = c % 2 ? 13 : 10;
        ASSERT_EQ(orviYCbCr411To420_8u_P3R(s.planes(), s.steps(), d.planes(), d.steps(), {width, 4}), orvStatusOk);
        const int vectorPart = (n - 1) / 16 * 16;
        EXPECT_EQ(vectorPart, width == 64 ? 0 : width == 68 ? 16 : 48);
        for (int c = 0; c + 1 < n; ++c)
            EXPECT_EQ(d.chroma(0, 2 * c + 1, 0), c < vectorPart ? 12 : 11) << width << " column " << c;
    }
    // 4x4 from 1620: one sample fills its 2x2 block.
    VideoFrame s(P3_1620, 4, 4), d(P3_420, 4, 4);
    s.chroma(0, 0, 0) = 77;
    s.chroma(1, 0, 0) = 99;
    ASSERT_EQ(orviYCbCr1620To420_8u_P3R(s.planes(), s.steps(), d.planes(), d.steps(), {4, 4}), orvStatusOk);
    for (int r = 0; r < 2; ++r)
        for (int c = 0; c < 2; ++c) {
            EXPECT_EQ(d.chroma(0, c, r), 77);
            EXPECT_EQ(d.chroma(1, c, r), 99);
        }
}

}  // namespace
