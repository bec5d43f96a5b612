// Images of one or more planes sharing one step, for conversions whose sides
// are interleaved (one plane) or planar (an array of plane pointers), and
// the checks that every 8-bit full-resolution conversion goes through:
// vector against scalar over the standard sweep, where the row splits
// between the block and tail forms, and the order of the argument checks.
#pragma once

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "support/image.h"

namespace orvtest {

// `count` guarded images of the same geometry; all have the same step.
struct Planes {
    std::vector<std::unique_ptr<GuardedImage>> img;
    std::vector<uint8_t*> ptr;

    int step() const { return img[0]->step(); }
    // What the function takes: the pixels of an interleaved side, the plane
    // array of a planar one.
    void* arg() { return img.size() == 1 ? static_cast<void*>(ptr[0]) : static_cast<void*>(ptr.data()); }

    void fillBytes(std::mt19937& rng)
    {
        for (auto& i : img)
            i->fillBytes(rng);
    }
    void copyFrom(const Planes& o)
    {
        for (std::size_t k = 0; k < img.size(); ++k)
            img[k]->copyFrom(*o.img[k]);
    }
    std::vector<uint8_t> pixels() const
    {
        std::vector<uint8_t> v;
        for (auto& i : img) {
            const auto p = i->pixels();
            v.insert(v.end(), p.begin(), p.end());
        }
        return v;
    }
    bool guardsIntact() const
    {
        for (auto& i : img)
            if (!i->guardsIntact())
                return false;
        return true;
    }
    // The bytes of pixel x of row y, plane after plane.
    std::vector<uint8_t> pixel(int y, int x, int pixBytes) const
    {
        std::vector<uint8_t> v;
        for (auto& i : img)
            for (int b = 0; b < pixBytes; ++b)
                v.push_back(i->row(y)[x * pixBytes + b]);
        return v;
    }
};

inline Planes makePlanes(int count, int width, int height, int pixBytes, int pad, bool negative, int slack)
{
    Planes p;
    for (int k = 0; k < count; ++k) {
        p.img.push_back(std::make_unique<GuardedImage>(width * pixBytes, height,
                                                       (negative ? -1 : 1) * (width * pixBytes + pad), slack));
        p.ptr.push_back(p.img.back()->data());
    }
    return p;
}

// One side of a conversion: plane count and bytes per pixel of each plane.
struct Side {
    int planes;
    int pixBytes;
};

using ConvCall = std::function<OrvStatus(void* src, int srcStep, void* dst, int dstStep, RoiSize roi)>;

// The checks a front function makes, named by the fault they catch.
enum class Fault { SrcNull, DstNull, Width, Height, SrcPlane0, SrcPlane1, SrcPlane2, DstPlane0, DstPlane1, DstPlane2, DstPlane3 };

// An 8-bit full-resolution conversion as the tests see it.
struct Conversion {
    std::string name;
    Side src, dst;
    ConvCall call;
    std::function<int(int)> blockEnd;  // pixels of a row that take the block form
    std::vector<Fault> checks;         // in the order the front function makes them
};

// Vector run against scalar-block run over the standard sweep: same status,
// same bytes, nothing written outside the rectangles. Both destinations start
// with the same random bytes, so kept alpha bytes are compared too. Steps
// are padded by multiples of `padUnit` bytes (the element size keeps wider
// elements aligned).
inline void expectVectorMatchesScalar(const Conversion& c, int padUnit = 1)
{
    SCOPED_TRACE(c.name);
    std::mt19937 rng(2024);
    for (const Geometry& g : standardSweep(padUnit)) {
        SCOPED_TRACE(g.str());
        Planes src = makePlanes(c.src.planes, g.width, g.height, c.src.pixBytes, g.srcPad, g.negative, g.endSlack);
        Planes dv = makePlanes(c.dst.planes, g.width, g.height, c.dst.pixBytes, g.dstPad, g.negative, g.endSlack);
        Planes ds = makePlanes(c.dst.planes, g.width, g.height, c.dst.pixBytes, g.dstPad, g.negative, g.endSlack);
        src.fillBytes(rng);
        dv.fillBytes(rng);
        ds.copyFrom(dv);
        const RoiSize roi{g.width, g.height};
        const OrvStatus sv = c.call(src.arg(), src.step(), dv.arg(), dv.step(), roi);
        OrvStatus ss;
        {
            ScalarBlocks scalar;
            ss = c.call(src.arg(), src.step(), ds.arg(), ds.step(), roi);
        }
        ASSERT_EQ(sv, orvStatusOk);
        ASSERT_EQ(ss, orvStatusOk);
        ASSERT_TRUE(src.guardsIntact());
        ASSERT_TRUE(dv.guardsIntact());
        ASSERT_TRUE(ds.guardsIntact());
        ASSERT_EQ(dv.pixels(), ds.pixels());
    }
}

// Fills every pixel with `colour` (three channels; a fourth interleaved byte
// gets 77, a plane k gets colour[k]).
inline void fillColour(Planes& p, const Side& s, std::array<uint8_t, 3> colour)
{
    for (std::size_t k = 0; k < p.img.size(); ++k) {
        GuardedImage& im = *p.img[k];
        for (int y = 0; y < im.height(); ++y)
            for (int x = 0; x < im.rowBytes(); ++x) {
                const int ch = s.planes > 1 ? int(k) : x % s.pixBytes;
                im.row(y)[x] = ch < 3 ? colour[ch] : 77;
            }
    }
}

// The destination bytes of pixel `index` of a one-row call of `width` copies
// of `colour`, over a destination that held 0xEE.
inline std::vector<uint8_t> convertColour(const Conversion& c, std::array<uint8_t, 3> colour, int width, int index)
{
    Planes src = makePlanes(c.src.planes, width, 1, c.src.pixBytes, 0, false, 0);
    Planes dst = makePlanes(c.dst.planes, width, 1, c.dst.pixBytes, 0, false, 0);
    fillColour(src, c.src, colour);
    for (auto& i : dst.img)
        i->fillValue<uint8_t>(0xEE);
    EXPECT_EQ(c.call(src.arg(), src.step(), dst.arg(), dst.step(), {width, 1}), orvStatusOk);
    return dst.pixel(0, index, c.dst.pixBytes);
}

// Where each row splits: with a colour that the block and tail forms convert
// differently, every width from 1 to 70 shows the block result exactly on
// the first blockEnd(width) pixels, in each of two rows.
inline void expectSplit(const Conversion& c)
{
    SCOPED_TRACE(c.name);
    std::mt19937 rng(99);
    std::array<uint8_t, 3> colour{};
    std::vector<uint8_t> inBlock, inTail;
    for (int tries = 0; tries < 1000 && inBlock == inTail; ++tries) {
        colour = {uint8_t(rng()), uint8_t(rng()), uint8_t(rng())};
        inBlock = convertColour(c, colour, 32, 0);  // 32 pixels: all block
        inTail = convertColour(c, colour, 1, 0);    // 1 pixel: all tail
    }
    ASSERT_NE(inBlock, inTail) << "no colour tells the forms apart";
    for (int w = 1; w <= 70; ++w) {
        Planes src = makePlanes(c.src.planes, w, 2, c.src.pixBytes, 1, false, 0);
        Planes dst = makePlanes(c.dst.planes, w, 2, c.dst.pixBytes, 3, false, 0);
        fillColour(src, c.src, colour);
        for (auto& i : dst.img)
            i->fillValue<uint8_t>(0xEE);
        ASSERT_EQ(c.call(src.arg(), src.step(), dst.arg(), dst.step(), {w, 2}), orvStatusOk);
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < w; ++x)
                ASSERT_EQ(dst.pixel(y, x, c.dst.pixBytes), x < c.blockEnd(w) ? inBlock : inTail)
                    << "width " << w << " pixel " << x;
    }
}

// Every single fault and every pair of faults: the status is that of the
// check made first, and no destination byte changes.
inline void expectCheckOrder(const Conversion& c)
{
    SCOPED_TRACE(c.name);
    const int w = 20, h = 2;
    Planes src = makePlanes(c.src.planes, w, h, c.src.pixBytes, 0, false, 0);
    Planes dst = makePlanes(c.dst.planes, w, h, c.dst.pixBytes, 0, false, 0);
    std::mt19937 rng(5);
    src.fillBytes(rng);
    dst.fillBytes(rng);
    const std::vector<uint8_t> before = dst.pixels();
    auto statusOf = [](Fault f) {
        return (f == Fault::Width || f == Fault::Height) ? orvStatusBadSize : orvStatusNullPointer;
    };
    auto run = [&](std::vector<Fault> faults, int badSize) {
        std::vector<uint8_t*> sp = src.ptr, dp = dst.ptr;
        void* s = c.src.planes > 1 ? static_cast<void*>(sp.data()) : static_cast<void*>(sp[0]);
        void* d = c.dst.planes > 1 ? static_cast<void*>(dp.data()) : static_cast<void*>(dp[0]);
        RoiSize roi{w, h};
        for (Fault f : faults) {
            switch (f) {
            case Fault::SrcNull: s = nullptr; break;
            case Fault::DstNull: d = nullptr; break;
            case Fault::Width: roi.width = badSize; break;
            case Fault::Height: roi.height = badSize; break;
            case Fault::SrcPlane0: case Fault::SrcPlane1: case Fault::SrcPlane2:
                sp[int(f) - int(Fault::SrcPlane0)] = nullptr;
                break;
            default: dp[int(f) - int(Fault::DstPlane0)] = nullptr; break;
            }
        }
        return c.call(s, src.step(), d, dst.step(), roi);
    };
    for (int bad : {0, -1}) {
        for (std::size_t i = 0; i < c.checks.size(); ++i) {
            for (std::size_t j = i; j < c.checks.size(); ++j) {
                std::vector<Fault> faults{c.checks[i]};
                if (j != i)
                    faults.push_back(c.checks[j]);
                EXPECT_EQ(run(faults, bad), statusOf(c.checks[i])) << "checks " << i << " and " << j;
                ASSERT_EQ(dst.pixels(), before);
                ASSERT_TRUE(dst.guardsIntact());
            }
        }
    }
    EXPECT_EQ(run({}, 0), orvStatusOk);
}

// Adapters from an exported function to a ConvCall.
// The conversion of that name in a family's list.
inline const Conversion& findConversion(const std::vector<Conversion>& all, const std::string& name)
{
    for (const auto& c : all)
        if (c.name == name)
            return c;
    ADD_FAILURE() << name;
    return all[0];
}

// Known answers: for each member, the colour of pixel 0 in a row of 32 takes
// the member's block form and a row of one pixel its tail form; `forms`
// gives each form's R, G, B answer for each of `colours`. BGR members see
// the answer with R and B swapped.
struct FormMember {
    const char* name;
    const char* block;
    const char* tail;
};

template <std::size_t N>
using ColourSet = std::array<std::array<uint8_t, 3>, N>;

template <std::size_t N, class Members>
void expectKnownAnswers(const std::vector<Conversion>& all, const Members& members, const ColourSet<N>& colours,
                        const std::map<std::string, ColourSet<N>>& forms)
{
    for (const FormMember& m : members) {
        const bool bgr = std::string(m.name).find("ToBGR") != std::string::npos;
        for (std::size_t i = 0; i < N; ++i) {
            for (auto [width, form] : {std::pair{32, m.block}, std::pair{1, m.tail}}) {
                auto e = forms.at(form)[i];
                if (bgr)
                    std::swap(e[0], e[2]);
                std::vector<uint8_t> got = convertColour(findConversion(all, m.name), colours[i], width, 0);
                got.resize(3);
                EXPECT_EQ(got, (std::vector<uint8_t>{e[0], e[1], e[2]})) << m.name << " form " << form << " colour " << i;
            }
        }
    }
}

template <class S, class D>
ConvCall call(OrvStatus (*f)(S, int, D, int, RoiSize))
{
    return [f](void* s, int ss, void* d, int ds, RoiSize r) { return f(static_cast<S>(s), ss, static_cast<D>(d), ds, r); };
}
template <class S, class D>
ConvCall call(OrvStatus (*f)(S, int, D, int, RoiSize, Orv8u), Orv8u alpha)
{
    return [f, alpha](void* s, int ss, void* d, int ds, RoiSize r) {
        return f(static_cast<S>(s), ss, static_cast<D>(d), ds, r, alpha);
    };
}

// Span rules.
inline std::function<int(int)> blocksOf(int n)
{
    return [n](int w) { return w & ~(n - 1); };
}
inline int wholeRow(int w) { return w; }

}  // namespace orvtest
