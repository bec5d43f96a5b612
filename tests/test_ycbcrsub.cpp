// RGB and studio-range YCbCr with subsampled chroma, both directions: vector
// paths against scalar forms over many geometries, the order of the
// argument checks, odd sizes, byte orders, alpha, and known answers worked
// out by hand from the definitions of the forms.
#include <array>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "support/planes.h"

using namespace orvtest;

namespace {

// ---------------------------------------------------------------------------
// A plane of a subsampled image: bytes of a row for a width, rows for a
// height.
struct Shape {
    std::function<int(int)> bytes;
    int rowDiv = 1;
};
const Shape kC3{[](int w) { return 3 * w; }}, kC4{[](int w) { return 4 * w; }}, kC2{[](int w) { return 2 * w; }};
const Shape kLuma{[](int w) { return w; }};
const Shape kHalf{[](int w) { return w / 2; }}, kQuarter{[](int w) { return w / 4; }};
const Shape kHalf420{[](int w) { return w / 2; }, 2}, kPairs420{[](int w) { return w / 2 * 2; }, 2};

// The arguments of a call; the flags stand for null arrays.
struct Args {
    std::array<uint8_t*, 3> s{}, d{};
    std::array<int, 3> ss{}, ds{};
    bool srcArrayNull = false, dstArrayNull = false, srcStepsNull = false, dstStepsNull = false;
    RoiSize roi{};

    const Orv8u* const* srcArray() const { return srcArrayNull ? nullptr : s.data(); }
    Orv8u** dstArray() { return dstArrayNull ? nullptr : d.data(); }
    const int* srcSteps() const { return srcStepsNull ? nullptr : ss.data(); }
    int* dstSteps() { return dstStepsNull ? nullptr : ds.data(); }
};

enum class SubFault { Src, SrcUV, Dst, DstUV, Width, Height, SrcPlane0, SrcPlane1, SrcPlane2, DstPlane0, DstPlane1, DstPlane2, SrcSteps, DstSteps };
using F = SubFault;

struct Member {
    std::string name;
    std::vector<Shape> src, dst;
    std::function<OrvStatus(Args&)> call;
    std::vector<F> checks;
    int minWidth = 1;
    bool srcArray = false, dstArray = false;  // planes passed as an array
};

// Adapters from each shape of exported function.
using Fwd = OrvStatus (*)(const Orv8u*, int, Orv8u*, int, RoiSize);
using FwdP3 = OrvStatus (*)(const Orv8u*, int, Orv8u* [3], int[3], RoiSize);
using FwdP2 = OrvStatus (*)(const Orv8u*, int, Orv8u*, int, Orv8u*, int, RoiSize);
using FromP3 = OrvStatus (*)(const Orv8u* const[3], int, Orv8u*, int, RoiSize);
using InvP3 = OrvStatus (*)(const Orv8u* const[3], const int[3], Orv8u*, int, RoiSize);
using InvP3A = OrvStatus (*)(const Orv8u* const[3], const int[3], Orv8u*, int, RoiSize, Orv8u);
using InvP2 = OrvStatus (*)(const Orv8u*, int, const Orv8u*, int, Orv8u*, int, RoiSize);
using InvP2A = OrvStatus (*)(const Orv8u*, int, const Orv8u*, int, Orv8u*, int, RoiSize, Orv8u);
using InvA = OrvStatus (*)(const Orv8u*, int, Orv8u*, int, RoiSize, Orv8u);
using ToP3 = OrvStatus (*)(const Orv8u*, int, Orv8u* [3], int, RoiSize);

const std::vector<F> kRect = {F::Src, F::Dst, F::Width, F::Height};
const std::vector<F> kToP3 = {F::Src, F::Dst, F::Width, F::Height, F::DstPlane0, F::DstPlane1, F::DstPlane2, F::DstSteps};
const std::vector<F> kFromP3 = {F::Src, F::Dst, F::Width, F::Height, F::SrcPlane0, F::SrcPlane1, F::SrcPlane2, F::SrcSteps};
const std::vector<F> kFromP3Step = {F::Src, F::Dst, F::Width, F::Height, F::SrcPlane0, F::SrcPlane1, F::SrcPlane2};
const std::vector<F> kToP2 = {F::Dst, F::DstUV, F::Src, F::Width, F::Height};
const std::vector<F> kToP2SourceFirst = {F::Src, F::Dst, F::DstUV, F::Width, F::Height};
const std::vector<F> kFromP2 = {F::Src, F::SrcUV, F::Dst, F::Width, F::Height};
const std::vector<F> kFromP2SizeFirst = {F::Width, F::Height, F::Src, F::SrcUV, F::Dst};
const std::vector<F> kC2ToP3 = {F::Src, F::Dst, F::Width, F::Height, F::DstPlane0, F::DstPlane1, F::DstPlane2};

Member fwd(std::string n, Fwd f, Shape s, int minW = 1)
{
    return {n, {s}, {kC2}, [f](Args& a) { return f(a.s[0], a.ss[0], a.d[0], a.ds[0], a.roi); }, kRect, minW};
}
Member fwdP3(std::string n, FwdP3 f, Shape s, Shape chroma, int minW = 1)
{
    return {n, {s}, {kLuma, chroma, chroma},
            [f](Args& a) { return f(a.s[0], a.ss[0], a.dstArray(), a.dstSteps(), a.roi); }, kToP3, minW, false, true};
}
Member fwdP2(std::string n, FwdP2 f, Shape s, const std::vector<F>& checks = kToP2)
{
    return {n, {s}, {kLuma, kPairs420},
            [f](Args& a) { return f(a.s[0], a.ss[0], a.d[0], a.ds[0], a.d[1], a.ds[1], a.roi); }, checks};
}
// Full-resolution planes with one step: the plane array before the sizes,
// height before width.
Member fullP3(std::string n, std::function<OrvStatus(Args&)> f, Shape d)
{
    return {n, {kLuma, kLuma, kLuma}, {d}, f,
            {F::Src, F::Dst, F::SrcPlane0, F::SrcPlane1, F::SrcPlane2, F::Height, F::Width}, 1, true};
}
Member fromP3(std::string n, FromP3 f)
{
    return {n, {kLuma, kLuma, kLuma}, {kC2},
            [f](Args& a) { return f(a.srcArray(), a.ss[0], a.d[0], a.ds[0], a.roi); }, kFromP3Step, 1, true};
}
Member inv(std::string n, Fwd f, Shape d, int minW = 1)
{
    return {n, {kC2}, {d}, [f](Args& a) { return f(a.s[0], a.ss[0], a.d[0], a.ds[0], a.roi); }, kRect, minW};
}
Member invA(std::string n, InvA f, Shape d, Orv8u alpha)
{
    return {n, {kC2}, {d}, [f, alpha](Args& a) { return f(a.s[0], a.ss[0], a.d[0], a.ds[0], a.roi, alpha); }, kRect};
}
Member toP3(std::string n, ToP3 f)
{
    return {n, {kC2}, {kLuma, kLuma, kLuma},
            [f](Args& a) { return f(a.s[0], a.ss[0], a.dstArray(), a.ds[0], a.roi); }, kC2ToP3, 1, false, true};
}
Member invP3(std::string n, InvP3 f, Shape chroma, Shape d, int minW = 1)
{
    return {n, {kLuma, chroma, chroma}, {d},
            [f](Args& a) { return f(a.srcArray(), a.srcSteps(), a.d[0], a.ds[0], a.roi); }, kFromP3, minW, true};
}
Member invP3A(std::string n, InvP3A f, Shape chroma, Shape d, Orv8u alpha, int minW = 1)
{
    return {n, {kLuma, chroma, chroma}, {d},
            [f, alpha](Args& a) { return f(a.srcArray(), a.srcSteps(), a.d[0], a.ds[0], a.roi, alpha); }, kFromP3, minW,
            true};
}
Member invP2(std::string n, InvP2 f, Shape d)
{
    return {n, {kLuma, kPairs420}, {d},
            [f](Args& a) { return f(a.s[0], a.ss[0], a.s[1], a.ss[1], a.d[0], a.ds[0], a.roi); }, kFromP2};
}
Member invP2A(std::string n, InvP2A f, Shape d, Orv8u alpha, bool sizesFirst = false)
{
    return {n, {kLuma, kPairs420}, {d},
            [f, alpha](Args& a) { return f(a.s[0], a.ss[0], a.s[1], a.ss[1], a.d[0], a.ds[0], a.roi, alpha); },
            sizesFirst ? kFromP2SizeFirst : kFromP2};
}

const std::vector<Member>& conversions()
{
    static const std::vector<Member> all = [] {
        std::vector<Member> v = {
            fwdP3("RGBToYCbCr422_8u_C3P3R", orviRGBToYCbCr422_8u_C3P3R, kC3, kHalf, 2),
            fwdP3("BGRToYCbCr422_8u_C3P3R", orviBGRToYCbCr422_8u_C3P3R, kC3, kHalf, 2),
            fwdP3("BGRToYCbCr422_8u_AC4P3R", orviBGRToYCbCr422_8u_AC4P3R, kC4, kHalf, 2),
            fwd("RGBToYCbCr422_8u_C3C2R", orviRGBToYCbCr422_8u_C3C2R, kC3),
            fwd("BGRToYCbCr422_8u_C3C2R", orviBGRToYCbCr422_8u_C3C2R, kC3, 2),
            fwd("BGRToYCbCr422_8u_AC4C2R", orviBGRToYCbCr422_8u_AC4C2R, kC4, 2),
            fwd("RGBToYCrCb422_8u_C3C2R", orviRGBToYCrCb422_8u_C3C2R, kC3),
            fwd("BGRToCbYCr422_8u_AC4C2R", orviBGRToCbYCr422_8u_AC4C2R, kC4),
            fwd("RGBToCbYCr422_8u_C3C2R", orviRGBToCbYCr422_8u_C3C2R, kC3),
            fwd("RGBToCbYCr422Gamma_8u_C3C2R", orviRGBToCbYCr422Gamma_8u_C3C2R, kC3),
            fromP3("RGBToYCbCr422_8u_P3C2R", orviRGBToYCbCr422_8u_P3C2R),
            fromP3("RGBToYCrCb422_8u_P3C2R", orviRGBToYCrCb422_8u_P3C2R),
            fwdP3("RGBToYCbCr420_8u_C3P3R", orviRGBToYCbCr420_8u_C3P3R, kC3, kHalf420),
            fwdP3("BGRToYCbCr420_8u_C3P3R", orviBGRToYCbCr420_8u_C3P3R, kC3, kHalf420),
            fwdP3("BGRToYCrCb420_8u_C3P3R", orviBGRToYCrCb420_8u_C3P3R, kC3, kHalf420),
            fwdP3("BGRToYCbCr420_8u_AC4P3R", orviBGRToYCbCr420_8u_AC4P3R, kC4, kHalf420),
            fwdP3("BGRToYCrCb420_8u_AC4P3R", orviBGRToYCrCb420_8u_AC4P3R, kC4, kHalf420),
            fwdP3("RGBToYCrCb420_8u_AC4P3R", orviRGBToYCrCb420_8u_AC4P3R, kC4, kHalf420),
            fwdP2("RGBToYCbCr420_8u_C3P2R", orviRGBToYCbCr420_8u_C3P2R, kC3),
            fwdP2("BGRToYCbCr420_8u_C3P2R", orviBGRToYCbCr420_8u_C3P2R, kC3),
            fwdP2("RGBToYCbCr420_8u_C4P2R", orviRGBToYCbCr420_8u_C4P2R, kC4),
            fwdP2("BGRToYCbCr420_8u_AC4P2R", orviBGRToYCbCr420_8u_AC4P2R, kC4),
            fwdP3("BGRToYCbCr411_8u_C3P3R", orviBGRToYCbCr411_8u_C3P3R, kC3, kQuarter, 4),
            fwdP3("BGRToYCbCr411_8u_AC4P3R", orviBGRToYCbCr411_8u_AC4P3R, kC4, kQuarter, 4),

            inv("YCbCr422ToRGB_8u_C2C3R", orviYCbCr422ToRGB_8u_C2C3R, kC3),
            inv("YCbCr422ToBGR_8u_C2C3R", orviYCbCr422ToBGR_8u_C2C3R, kC3, 2),
            inv("YCrCb422ToRGB_8u_C2C3R", orviYCrCb422ToRGB_8u_C2C3R, kC3),
            inv("YCrCb422ToBGR_8u_C2C3R", orviYCrCb422ToBGR_8u_C2C3R, kC3),
            inv("CbYCr422ToRGB_8u_C2C3R", orviCbYCr422ToRGB_8u_C2C3R, kC3),
            invA("YCbCr422ToRGB_8u_C2C4R", orviYCbCr422ToRGB_8u_C2C4R, kC4, 7),
            invA("YCbCr422ToBGR_8u_C2C4R", orviYCbCr422ToBGR_8u_C2C4R, kC4, 8),
            invA("YCrCb422ToRGB_8u_C2C4R", orviYCrCb422ToRGB_8u_C2C4R, kC4, 9),
            invA("YCrCb422ToBGR_8u_C2C4R", orviYCrCb422ToBGR_8u_C2C4R, kC4, 10),
            invA("CbYCr422ToBGR_8u_C2C4R", orviCbYCr422ToBGR_8u_C2C4R, kC4, 11),
            toP3("YCbCr422ToRGB_8u_C2P3R", orviYCbCr422ToRGB_8u_C2P3R),
            toP3("YCrCb422ToRGB_8u_C2P3R", orviYCrCb422ToRGB_8u_C2P3R),
            invP3("YCbCr422ToRGB_8u_P3C3R", orviYCbCr422ToRGB_8u_P3C3R, kHalf, kC3, 2),
            invP3("YCbCr422ToBGR_8u_P3C3R", orviYCbCr422ToBGR_8u_P3C3R, kHalf, kC3, 2),
            invP3("YCbCr420ToRGB_8u_P3C3R", orviYCbCr420ToRGB_8u_P3C3R, kHalf420, kC3),
            invP3("YCbCr420ToBGR_8u_P3C3R", orviYCbCr420ToBGR_8u_P3C3R, kHalf420, kC3),
            invP3A("YCbCr420ToBGR_8u_P3C4R", orviYCbCr420ToBGR_8u_P3C4R, kHalf420, kC4, 12),
            invP3A("YCrCb420ToRGB_8u_P3C4R", orviYCrCb420ToRGB_8u_P3C4R, kHalf420, kC4, 13),
            invP3A("YCrCb420ToBGR_Filter_8u_P3C4R", orviYCrCb420ToBGR_Filter_8u_P3C4R, kHalf420, kC4, 14),
            invP2("YCbCr420ToRGB_8u_P2C3R", orviYCbCr420ToRGB_8u_P2C3R, kC3),
            invP2("YCbCr420ToBGR_8u_P2C3R", orviYCbCr420ToBGR_8u_P2C3R, kC3),
            invP2("YCrCb420ToRGB_8u_P2C3R", orviYCrCb420ToRGB_8u_P2C3R, kC3),
            invP2("YCrCb420ToBGR_8u_P2C3R", orviYCrCb420ToBGR_8u_P2C3R, kC3),
            invP2A("YCbCr420ToRGB_8u_P2C4R", orviYCbCr420ToRGB_8u_P2C4R, kC4, 15),
            invP2A("YCbCr420ToBGR_8u_P2C4R", orviYCbCr420ToBGR_8u_P2C4R, kC4, 16),
            invP2A("YCrCb420ToRGB_8u_P2C4R", orviYCrCb420ToRGB_8u_P2C4R, kC4, 17, true),
            invP2A("YCrCb420ToBGR_8u_P2C4R", orviYCrCb420ToBGR_8u_P2C4R, kC4, 18, true),
            invP3("YCbCr411ToBGR_8u_P3C3R", orviYCbCr411ToBGR_8u_P3C3R, kQuarter, kC3, 4),
            invP3A("YCbCr411ToBGR_8u_P3C4R", orviYCbCr411ToBGR_8u_P3C4R, kQuarter, kC4, 19, 4),

            fwd("BGRToCbYCr422_709HDTV_8u_C3C2R", orviBGRToCbYCr422_709HDTV_8u_C3C2R, kC3),
            fwd("BGRToCbYCr422_709HDTV_8u_AC4C2R", orviBGRToCbYCr422_709HDTV_8u_AC4C2R, kC4),
            fwdP3("BGRToYCbCr420_709HDTV_8u_AC4P3R", orviBGRToYCbCr420_709HDTV_8u_AC4P3R, kC4, kHalf420),
            fwdP3("BGRToYCbCr420_709CSC_8u_C3P3R", orviBGRToYCbCr420_709CSC_8u_C3P3R, kC3, kHalf420),
            fwdP3("BGRToYCbCr420_709CSC_8u_AC4P3R", orviBGRToYCbCr420_709CSC_8u_AC4P3R, kC4, kHalf420),
            fwdP3("BGRToYCrCb420_709CSC_8u_C3P3R", orviBGRToYCrCb420_709CSC_8u_C3P3R, kC3, kHalf420),
            fwdP3("BGRToYCrCb420_709CSC_8u_AC4P3R", orviBGRToYCrCb420_709CSC_8u_AC4P3R, kC4, kHalf420),
            fwdP2("BGRToYCbCr420_709CSC_8u_C3P2R", orviBGRToYCbCr420_709CSC_8u_C3P2R, kC3, kToP2SourceFirst),
            fwdP2("BGRToYCbCr420_709CSC_8u_AC4P2R", orviBGRToYCbCr420_709CSC_8u_AC4P2R, kC4, kToP2SourceFirst),
            inv("CbYCr422ToBGR_709HDTV_8u_C2C3R", orviCbYCr422ToBGR_709HDTV_8u_C2C3R, kC3),
            invA("CbYCr422ToBGR_709HDTV_8u_C2C4R", orviCbYCr422ToBGR_709HDTV_8u_C2C4R, kC4, 20),
            invP3A("YCbCr420ToBGR_709HDTV_8u_P3C4R", orviYCbCr420ToBGR_709HDTV_8u_P3C4R, kHalf420, kC4, 21),
            invP3("YCbCr420ToBGR_709CSC_8u_P3C3R", orviYCbCr420ToBGR_709CSC_8u_P3C3R, kHalf420, kC3),
            fullP3("YCbCrToBGR_709CSC_8u_P3C3R", [](Args& a) {
                return orviYCbCrToBGR_709CSC_8u_P3C3R(a.srcArray(), a.ss[0], a.d[0], a.ds[0], a.roi);
            }, kC3),
            fullP3("YCbCrToBGR_709CSC_8u_P3C4R", [](Args& a) {
                return orviYCbCrToBGR_709CSC_8u_P3C4R(a.srcArray(), a.ss[0], a.d[0], a.ds[0], a.roi, 22);
            }, kC4),
        };
        return v;
    }();
    return all;
}

const Member& conv(const std::string& name)
{
    for (const auto& c : conversions())
        if (c.name == name)
            return c;
    ADD_FAILURE() << name;
    return conversions()[0];
}

// ---------------------------------------------------------------------------
// Images of a side, laid per geometry: one guarded image per plane, each of
// its own size.
Planes makeSide(const std::vector<Shape>& shapes, int w, int h, int pad, bool negative, int slack)
{
    Planes p;
    for (const Shape& s : shapes) {
        const int bytes = s.bytes(w);
        const int step = bytes + pad;
        p.img.push_back(std::make_unique<GuardedImage>(bytes, h / s.rowDiv, negative ? -step : step, slack));
        p.ptr.push_back(p.img.back()->data());
    }
    return p;
}

void into(const Planes& p, std::array<uint8_t*, 3>& ptr, std::array<int, 3>& steps)
{
    for (std::size_t k = 0; k < p.img.size(); ++k) {
        ptr[k] = p.ptr[k];
        steps[k] = p.img[k]->step();
    }
}

struct Call {
    Planes src, dst;
    Args args;
    Call(const Member& c, int w, int h, int srcPad = 0, int dstPad = 0, bool negative = false, int slack = 0)
        : src(makeSide(c.src, w, h, srcPad, negative, slack)), dst(makeSide(c.dst, w, h, dstPad, negative, slack))
    {
        into(src, args.s, args.ss);
        into(dst, args.d, args.ds);
        args.roi = {w, h};
    }
};

TEST(YCbCrSub, VectorPathsMatchScalarForms)
{
    std::mt19937 rng(77);
    for (const Member& c : conversions()) {
        SCOPED_TRACE(c.name);
        const std::vector<Geometry> sweep = standardSweep(1);
        for (std::size_t n = 0; n < sweep.size(); ++n) {
            // Of the two geometries of each small width, one in turn (53
            // members make the full sweep slow); all the large widths.
            const Geometry& g = sweep[n];
            if (g.width <= 72 && (n + g.width / 2) % 2)
                continue;
            SCOPED_TRACE(g.str());
            Call v(c, g.width, g.height, g.srcPad, g.dstPad, g.negative, g.endSlack);
            Call s(c, g.width, g.height, g.srcPad, g.dstPad, g.negative, g.endSlack);
            v.src.fillBytes(rng);
            s.src.copyFrom(v.src);
            v.dst.fillBytes(rng);
            s.dst.copyFrom(v.dst);
            const OrvStatus sv = c.call(v.args);
            OrvStatus ss;
            {
                ScalarBlocks scalar;
                ss = c.call(s.args);
            }
            ASSERT_EQ(sv, ss);
            ASSERT_TRUE(sv >= 0 || g.width < c.minWidth);
            ASSERT_TRUE(v.src.guardsIntact());
            ASSERT_TRUE(v.dst.guardsIntact());
            ASSERT_TRUE(s.dst.guardsIntact());
            ASSERT_EQ(v.dst.pixels(), s.dst.pixels());
        }
    }
}

// Every single fault and every pair: the status of the check made first,
// no destination byte changed.
TEST(YCbCrSub, CheckOrderAndNothingWrittenOnFailure)
{
    std::mt19937 rng(5);
    for (const Member& c : conversions()) {
        SCOPED_TRACE(c.name);
        Call call(c, 20, 4);
        call.src.fillBytes(rng);
        call.dst.fillBytes(rng);
        const std::vector<uint8_t> before = call.dst.pixels();
        auto run = [&](std::vector<F> faults, int badSize) {
            Args a = call.args;
            for (F f : faults) {
                switch (f) {
                case F::Src: (c.srcArray ? a.srcArrayNull = true : (a.s[0] = nullptr, true)); break;
                case F::SrcUV: a.s[1] = nullptr; break;
                case F::Dst: (c.dstArray ? a.dstArrayNull = true : (a.d[0] = nullptr, true)); break;
                case F::DstUV: a.d[1] = nullptr; break;
                case F::Width: a.roi.width = badSize; break;
                case F::Height: a.roi.height = badSize < 1 ? badSize : 0; break;
                case F::SrcPlane0: case F::SrcPlane1: case F::SrcPlane2: a.s[int(f) - int(F::SrcPlane0)] = nullptr; break;
                case F::DstPlane0: case F::DstPlane1: case F::DstPlane2: a.d[int(f) - int(F::DstPlane0)] = nullptr; break;
                case F::SrcSteps: a.srcStepsNull = true; break;
                case F::DstSteps: a.dstStepsNull = true; break;
                }
            }
            return c.call(a);
        };
        auto statusOf = [](F f) { return (f == F::Width || f == F::Height) ? orvStatusBadSize : orvStatusNullPointer; };
        for (int bad : {c.minWidth - 1, -1}) {
            for (std::size_t i = 0; i < c.checks.size(); ++i)
                for (std::size_t j = i; j < c.checks.size(); ++j) {
                    std::vector<F> faults{c.checks[i]};
                    if (j != i)
                        faults.push_back(c.checks[j]);
                    EXPECT_EQ(run(faults, bad), statusOf(c.checks[i])) << "checks " << i << " and " << j;
                    ASSERT_EQ(call.dst.pixels(), before);
                }
        }
        EXPECT_GE(run({}, 0), 0);
    }
}

// ---------------------------------------------------------------------------
// One call on given source planes (rows of bytes) over destinations that
// hold 0xEE; returns the status and the destination planes' rows.
using Rows = std::vector<std::vector<uint8_t>>;
struct Result {
    OrvStatus status;
    std::vector<Rows> planes;
};

Result run(const std::string& name, int w, int h, const std::vector<Rows>& src)
{
    const Member& c = conv(name);
    Call call(c, w, h);
    for (std::size_t k = 0; k < src.size(); ++k)
        for (std::size_t y = 0; y < src[k].size(); ++y)
            std::copy(src[k][y].begin(), src[k][y].end(), call.src.img[k]->row(int(y)));
    for (auto& i : call.dst.img)
        i->fillValue<uint8_t>(0xEE);
    Result r{c.call(call.args), {}};
    for (auto& i : call.dst.img) {
        Rows rows;
        for (int y = 0; y < i->height(); ++y)
            rows.emplace_back(i->row(y), i->row(y) + i->rowBytes());
        r.planes.push_back(rows);
    }
    return r;
}

using B = std::vector<uint8_t>;
// A row of interleaved pixels, `count` of them, cycling through `colours`.
B cycle(std::vector<B> colours, int count, int channels = 3)
{
    B row;
    for (int i = 0; i < count; ++i)
        for (int ch = 0; ch < channels; ++ch)
            row.push_back(ch < 3 ? colours[i % colours.size()][ch] : 99);
    return row;
}
const B kP0 = {200, 30, 100}, kP1 = {10, 240, 60}, kP2 = {90, 90, 250}, kP3 = {255, 128, 0};

// Known answers, worked out from the definitions with exact integer
// arithmetic; colours chosen where block and scalar forms differ.
TEST(YCbCrSub, ForwardKnownAnswers)
{
    // Pair sums: scalar form on a row of 2, block form on a row of 16.
    auto pair = run("RGBToYCbCr422_8u_C3P3R", 2, 1, {{cycle({kP0, kP1}, 2)}});
    EXPECT_EQ(pair.planes[0][0], (B{92, 145}));
    EXPECT_EQ(pair.planes[1][0][0], 108);
    EXPECT_EQ(pair.planes[2][0][0], 118);
    pair = run("RGBToYCbCr422_8u_C3P3R", 16, 1, {{cycle({kP0, kP1}, 16)}});
    EXPECT_EQ(pair.planes[1][0][0], 108);
    EXPECT_EQ(pair.planes[2][0][0], 119);
    // Square sums, into planes and into a plane of pairs (its own forms).
    const std::vector<Rows> square2 = {{cycle({kP0, kP1}, 2), cycle({kP2, kP3}, 2)}};
    const std::vector<Rows> square16 = {{cycle({kP0, kP1}, 16), cycle({kP2, kP3}, 16)}};
    auto semi = run("RGBToYCbCr420_8u_C3P2R", 2, 2, square2);
    EXPECT_EQ(semi.planes[0], (Rows{{92, 145}, {109, 146}}));
    EXPECT_EQ(semi.planes[1][0], (B{117, 136}));
    semi = run("RGBToYCbCr420_8u_C3P2R", 16, 2, square16);
    EXPECT_EQ((B{semi.planes[1][0][0], semi.planes[1][0][1]}), (B{117, 136}));
    auto planar = run("RGBToYCbCr420_8u_C3P3R", 16, 2, square16);
    EXPECT_EQ(planar.planes[1][0][0], 117);
    EXPECT_EQ(planar.planes[2][0][0], 137);
    // Three-tap chroma: scalar pairs and a lone pixel, and the block form.
    auto tap = run("RGBToCbYCr422_8u_C3C2R", 5, 1, {{cycle({kP0, kP1, kP2, kP3, {40, 50, 60}}, 5)}});
    EXPECT_EQ(tap.planes[0][0], (B{120, 92, 141, 145, 133, 109, 116, 146, 134, 57}));
    tap = run("RGBToCbYCr422_8u_C3C2R", 16, 1, {{cycle({kP0, kP1, kP2, kP3}, 16)}});
    EXPECT_EQ(B(tap.planes[0][0].begin(), tap.planes[0][0].begin() + 8), (B{120, 92, 141, 145, 133, 109, 116, 146}));
    // Planar source: unequal rounding of the pair's two lumas, the lone
    // pixel's chroma from itself.
    auto fromPlanes = run("RGBToYCbCr422_8u_P3C2R", 3, 1, {{{200, 10, 90}}, {{30, 240, 90}}, {{100, 60, 250}}});
    EXPECT_EQ(fromPlanes.planes[0][0], (B{92, 108, 145, 119, 109, 198}));
    // Gamma, then the 15-bit three-tap filter.
    auto gamma = run("RGBToCbYCr422Gamma_8u_C3C2R", 3, 1, {{cycle({kP0, kP1, kP2}, 3)}});
    EXPECT_EQ(gamma.planes[0][0], (B{128, 131, 136, 163, 173, 155}));
    // Lone pixels of the packed members: luma and Cb from the pixel alone.
    EXPECT_EQ(run("RGBToYCrCb422_8u_C3C2R", 1, 1, {{kP0}}).planes[0][0], (B{92, 133}));
    EXPECT_EQ(run("BGRToCbYCr422_8u_AC4C2R", 1, 1, {{{100, 30, 200, 0}}}).planes[0][0], (B{134, 92}));
}

TEST(YCbCrSub, InverseKnownAnswers)
{
    const B pairs = {100, 60, 180, 200, 30, 240};  // Y0 Cb Y1 Cr, then a lone Y and Cb
    // Into planes: the scalar form on raw samples for widths below 4, the
    // lone pixel taking the Cr of the pair before.
    auto planes = run("YCbCr422ToRGB_8u_C2P3R", 3, 1, {{pairs}});
    EXPECT_EQ(planes.planes[0][0], (B{212, 255, 131}));
    EXPECT_EQ(planes.planes[1][0], (B{65, 159, 0}));
    EXPECT_EQ(planes.planes[2][0], (B{0, 53, 242}));
    EXPECT_EQ(run("YCbCr422ToRGB_8u_C2C3R", 3, 1, {{pairs}}).planes[0][0], (B{213, 66, 0, 255, 159, 54, 131, 0, 242}));
    // Raw-sample block form with folded offsets; alpha in every pixel.
    auto raw = run("YCbCr420ToBGR_8u_P3C4R", 2, 2, {{{100, 100}, {100, 100}}, {{60}}, {{200}}});
    EXPECT_EQ(raw.planes[0][1], (B{0, 66, 213, 12, 0, 66, 213, 12}));
    // 4:1:1: two pixels past the last group of four take its chroma.
    auto quad = run("YCbCr411ToBGR_8u_P3C3R", 6, 1, {{{100, 100, 100, 100, 30, 30}}, {{60}}, {{200}}});
    EXPECT_EQ(B(quad.planes[0][0].begin() + 9, quad.planes[0][0].end()), (B{0, 66, 213, 0, 0, 131, 0, 0, 131}));
    // The filter: the odd pixel of a pair takes the rounded mean of its
    // chroma and the next, the last pair its own; no vertical filter.
    auto filtered = run("YCrCb420ToBGR_Filter_8u_P3C4R", 4, 2, {{B(4, 100), B(4, 100)}, {{200, 150}}, {{60, 100}}});
    for (int y = 0; y < 2; ++y)
        EXPECT_EQ(filtered.planes[0][y], (B{0, 65, 212, 14, 0, 78, 172, 14, 41, 90, 132, 14, 41, 90, 132, 14}));
}

TEST(YCbCrSub, OddSizesAndMinimumWidths)
{
    // 2 by 2 white into 4:2:0: four Y of 235, one Cb and Cr of 128.
    auto white = run("RGBToYCbCr420_8u_C3P3R", 2, 2, {{B(6, 255), B(6, 255)}});
    EXPECT_EQ(white.status, orvStatusOk);
    EXPECT_EQ(white.planes[0], (Rows{{235, 235}, {235, 235}}));
    EXPECT_EQ(white.planes[1][0], (B{128}));
    EXPECT_EQ(white.planes[2][0], (B{128}));
    // 4:1:1 with width 6: four luma samples a row, one chroma sample.
    auto six = run("BGRToYCbCr411_8u_C3P3R", 6, 2, {{B(18, 50), B(18, 50)}});
    EXPECT_EQ(six.status, orvStatusOddSize);
    for (int y = 0; y < 2; ++y) {
        EXPECT_EQ(six.planes[0][y][3] != 0xEE, true);
        EXPECT_EQ(B(six.planes[0][y].begin() + 4, six.planes[0][y].end()), (B{0xEE, 0xEE}));
    }
    // 4:2:0 back to RGB, 3 by 3: a 2 by 2 part written.
    auto odd = run("YCbCr420ToRGB_8u_P3C3R", 3, 3, {{B(3, 100), B(3, 100), B(3, 100)}, {{60}}, {{200}}});
    EXPECT_EQ(odd.status, orvStatusOddSize);
    EXPECT_EQ(odd.planes[0][0], (B{213, 66, 0, 213, 66, 0, 0xEE, 0xEE, 0xEE}));
    EXPECT_EQ(odd.planes[0][2], B(9, 0xEE));
    // Width 1: refused by the BGR member, converted by the RGB one.
    EXPECT_EQ(run("YCbCr422ToBGR_8u_C2C3R", 1, 1, {{{100, 60}}}).status, orvStatusBadSize);
    auto one = run("YCbCr422ToRGB_8u_C2C3R", 1, 1, {{{100, 60}}});
    EXPECT_EQ(one.status, orvStatusOk);
    EXPECT_EQ(one.planes[0][0][0], 0);  // Cb 60 stands for Cr too
}

TEST(YCbCrSub, LonePixelFourthByte)
{
    const B three = {100, 60, 180, 200, 30, 240};
    EXPECT_EQ(run("YCbCr422ToRGB_8u_C2C4R", 3, 1, {{three}}).planes[0][0][11], 0xEE);
    EXPECT_EQ(run("YCrCb422ToBGR_8u_C2C4R", 3, 1, {{three}}).planes[0][0][11], 0xEE);
    EXPECT_EQ(run("CbYCr422ToBGR_8u_C2C4R", 3, 1, {{three}}).planes[0][0][11], 11);
    // The lone pixel of the YCbCr members takes its own byte for both
    // chroma components, the YCrCb members the pair before for the other.
    const B own = run("YCbCr422ToRGB_8u_C2C4R", 3, 1, {{three}}).planes[0][0];
    const B before = run("YCrCb422ToRGB_8u_C2C4R", 3, 1, {{three}}).planes[0][0];
    EXPECT_EQ(B(own.begin() + 8, own.begin() + 11), (B{195, 0, 242}));     // Cb 240, Cr 240
    EXPECT_EQ(B(before.begin() + 8, before.begin() + 11), (B{195, 0, 162}));  // Cr 240, Cb 200
}

// The three-tap member and the pair member agree on flat colour away from
// the first pair, and differ at an edge.
TEST(YCbCrSub, ThreeTapAgainstPairChroma)
{
    for (int w : {8, 40}) {
        const B flat = cycle({{70, 140, 210}}, w);
        const B tap = run("RGBToCbYCr422_8u_C3C2R", w, 1, {{flat}}).planes[0][0];
        const B pair = run("RGBToYCbCr422_8u_C3C2R", w, 1, {{flat}}).planes[0][0];
        for (int k = 1; k < w / 2; ++k) {
            EXPECT_NEAR(tap[4 * k], pair[4 * k + 1], 1) << w << " " << k;
            EXPECT_NEAR(tap[4 * k + 2], pair[4 * k + 3], 1) << w << " " << k;
        }
        B edge = flat;
        for (int i = 3 * (w / 2 + 1); i < int(edge.size()); ++i)
            edge[i] = 255 - edge[i];
        const B tapEdge = run("RGBToCbYCr422_8u_C3C2R", w, 1, {{edge}}).planes[0][0];
        const B pairEdge = run("RGBToYCbCr422_8u_C3C2R", w, 1, {{edge}}).planes[0][0];
        const int k = w / 4;  // the pair whose odd pixel starts the edge
        EXPECT_GT(std::abs(tapEdge[4 * k] - pairEdge[4 * k + 1]), 4) << w;
    }
}

// BT.709: the range ends, and known answers of the studio-range forms
// (chroma products subtracted on positive weights) and the full-scale ones.
TEST(YCbCrSub, Bt709)
{
    const B black(6, 0), white(6, 255);
    const B fullBlack = run("BGRToCbYCr422_709HDTV_8u_C3C2R", 2, 1, {{black}}).planes[0][0];
    EXPECT_EQ(fullBlack, (B{128, 1, 128, 1}));
    EXPECT_EQ(run("BGRToCbYCr422_709HDTV_8u_C3C2R", 2, 1, {{white}}).planes[0][0], (B{128, 254, 128, 254}));
    auto csc = run("BGRToYCbCr420_709CSC_8u_C3P3R", 2, 2, {{white, white}});
    EXPECT_EQ(csc.planes[0], (Rows{{235, 235}, {235, 235}}));
    EXPECT_EQ(csc.planes[1][0], (B{128}));
    EXPECT_EQ(csc.planes[2][0], (B{128}));
    for (int y : {0, 255}) {
        auto back = run("YCbCr420ToBGR_709HDTV_8u_P3C4R", 2, 2, {{B(2, uint8_t(y)), B(2, uint8_t(y))}, {{128}}, {{128}}});
        EXPECT_EQ(back.planes[0][1], (B{uint8_t(y), uint8_t(y), uint8_t(y), 21, uint8_t(y), uint8_t(y), uint8_t(y), 21}));
    }
    // A square of four colours (given as B, G, R) in the scalar and block forms.
    auto bgr = [](const B& p) { return B{p[2], p[1], p[0]}; };
    const std::vector<Rows> sq2 = {{cycle({bgr(kP0), bgr(kP1)}, 2), cycle({bgr(kP2), bgr(kP3)}, 2)}};
    const std::vector<Rows> sq16 = {{cycle({bgr(kP0), bgr(kP1)}, 16), cycle({bgr(kP2), bgr(kP3)}, 16)}};
    auto tail = run("BGRToYCbCr420_709CSC_8u_C3P3R", 2, 2, sq2);
    EXPECT_EQ(tail.planes[0], (Rows{{77, 169}, {103, 141}}));
    EXPECT_EQ((B{tail.planes[1][0][0], tail.planes[2][0][0]}), (B{117, 136}));
    auto block = run("BGRToYCbCr420_709CSC_8u_C3P2R", 16, 2, sq16);
    EXPECT_EQ((B{block.planes[1][0][0], block.planes[1][0][1]}), (B{118, 136}));
    // Full-scale pairs: luma and chroma kept in 1 .. 254, saturated blue
    // giving 254 by the 16-bit wrap.
    EXPECT_EQ(run("BGRToCbYCr422_709HDTV_8u_C3C2R", 2, 1, {{cycle({bgr(kP0), bgr(kP1)}, 2)}}).planes[0][0], (B{103, 71, 115, 178}));
    EXPECT_EQ(run("BGRToCbYCr422_709HDTV_8u_C3C2R", 2, 1, {{cycle({{255, 0, 0}}, 2)}}).planes[0][0][0], 254);
    // Inverse: full-scale block form from 16 pixels, scalar form on one;
    // the studio-range 4:2:0 block form without rounding.
    const B cbycr = {60, 100, 200, 100};
    const B pairs16 = cycle({cbycr}, 8, 4);
    const B blockRow = run("CbYCr422ToBGR_709HDTV_8u_C2C3R", 16, 1, {{pairs16}}).planes[0][0];
    EXPECT_EQ(B(blockRow.begin(), blockRow.begin() + 3), (B{0, 80, 211}));
    EXPECT_EQ(run("CbYCr422ToBGR_709HDTV_8u_C2C3R", 2, 1, {{cbycr}}).planes[0][0], (B{0, 79, 211, 0, 79, 211}));
    auto studio = run("YCbCr420ToBGR_709CSC_8u_P3C3R", 16, 2, {{B(16, 100), B(16, 100)}, {B(8, 60)}, {B(8, 200)}});
    EXPECT_EQ(B(studio.planes[0][0].begin(), studio.planes[0][0].begin() + 3), (B{0, 73, 226}));
    auto full = run("YCbCrToBGR_709CSC_8u_P3C3R", 16, 1, {{B(16, 100)}, {B(16, 60)}, {B(16, 200)}});
    EXPECT_EQ(B(full.planes[0][0].begin(), full.planes[0][0].begin() + 3), (B{0, 74, 227}));
}

}  // namespace
