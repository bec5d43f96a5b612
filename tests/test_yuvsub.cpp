// YUV 4:2:2 and 4:2:0 to RGB: vector paths against scalar forms over
// subsampled planes and packed pairs, where rows split between block, tail
// and lone-pixel forms, alpha, odd sizes, the whole-image names and the
// argument checks.
#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "support/planes.h"

using namespace orvtest;

namespace {

using F = Fault;
using Bytes = std::vector<uint8_t>;

// A member as the sweep sees it: 4:2:0 or 4:2:2, a packed Y0 U Y1 V source
// or three planes, and an RGB side of three planes or of dstPix-byte pixels.
using SubCall = std::function<OrvStatus(const uint8_t* const* src, const int* srcSteps, uint8_t** dst, int dstStep,
                                        RoiSize roi)>;
struct Sub {
    std::string name;
    bool is420;
    bool packed;
    int dstPix;  // 0: three planes
    SubCall call;
};

template <class D>
SubCall planar(OrvStatus (*f)(const Orv8u* const*, const int*, D, int, RoiSize))
{
    return [f](const uint8_t* const* s, const int* ss, uint8_t** d, int ds, RoiSize r) {
        if constexpr (std::is_same_v<D, Orv8u**>)
            return f(s, ss, d, ds, r);
        else
            return f(s, ss, d[0], ds, r);
    };
}

const std::vector<Sub>& members()
{
    static const std::vector<Sub> all = {
        {"YUV422ToRGB_8u_P3R", false, false, 0, planar(orviYUV422ToRGB_8u_P3R)},
        {"YUV422ToRGB_8u_P3C3R", false, false, 3, planar(orviYUV422ToRGB_8u_P3C3R)},
        {"YUV422ToRGB_8u_P3AC4R", false, false, 4, planar(orviYUV422ToRGB_8u_P3AC4R)},
        {"YUV422ToRGB_8u_C2C3R", false, true, 3,
         [](const uint8_t* const* s, const int* ss, uint8_t** d, int ds, RoiSize r) {
             return orviYUV422ToRGB_8u_C2C3R(s[0], ss[0], d[0], ds, r);
         }},
        {"YUV420ToRGB_8u_P3R", true, false, 0, planar(orviYUV420ToRGB_8u_P3R)},
        {"YUV420ToRGB_8u_P3C3R", true, false, 3, planar(orviYUV420ToRGB_8u_P3C3R)},
        {"YUV420ToRGB_8u_P3AC4R", true, false, 4, planar(orviYUV420ToRGB_8u_P3AC4R)},
        {"YUV420ToBGR_8u_P3C3R", true, false, 3, planar(orviYUV420ToBGR_8u_P3C3R)},
    };
    return all;
}

// The guarded images of one call, source and destination side.
struct Images {
    std::vector<std::unique_ptr<GuardedImage>> src, dst;

    Bytes pixels() const
    {
        Bytes v;
        for (auto& d : dst) {
            const Bytes p = d->pixels();
            v.insert(v.end(), p.begin(), p.end());
        }
        return v;
    }
    bool guardsIntact() const
    {
        for (auto* list : {&src, &dst})
            for (auto& i : *list)
                if (!i->guardsIntact())
                    return false;
        return true;
    }
};

// The images of one call: source planes (or the packed row) and the RGB side.
struct Frame : Images {
    std::vector<const uint8_t*> sp;
    std::vector<uint8_t*> dp;
    int steps[3] = {};

    Frame(const Sub& m, const Geometry& g)
    {
        const int sign = g.negative ? -1 : 1;
        auto add = [&](auto& list, int bytes, int rows, int pad) {
            bytes = std::max(bytes, 1);
            rows = std::max(rows, 1);
            list.push_back(std::make_unique<GuardedImage>(bytes, rows, sign * (bytes + pad), g.endSlack));
        };
        if (m.packed) {
            add(src, 2 * g.width, g.height, g.srcPad);
        } else {
            const int cw = m.is420 ? g.width / 2 : (g.width + 1) / 2, ch = m.is420 ? g.height / 2 : g.height;
            add(src, g.width, g.height, g.srcPad);
            add(src, cw, ch, g.srcPad + 1);
            add(src, cw, ch, g.srcPad + 2);
        }
        for (int k = 0; k < (m.dstPix ? 1 : 3); ++k)
            add(dst, g.width * std::max(m.dstPix, 1), g.height, g.dstPad);
        for (std::size_t k = 0; k < src.size(); ++k) {
            sp.push_back(src[k]->data());
            steps[k] = src[k]->step();
        }
        for (auto& d : dst)
            dp.push_back(d->data());
    }
    OrvStatus run(const Sub& m, RoiSize r) { return m.call(sp.data(), steps, dp.data(), dst[0]->step(), r); }
};

TEST(YuvSub, VectorPathsMatchScalarForms)
{
    std::mt19937 rng(420);
    for (const Sub& m : members()) {
        SCOPED_TRACE(m.name);
        for (const Geometry& g : standardSweep(1)) {
            SCOPED_TRACE(g.str());
            Frame v(m, g), s(m, g);
            for (std::size_t k = 0; k < v.src.size(); ++k) {
                v.src[k]->fillBytes(rng);
                s.src[k]->copyFrom(*v.src[k]);
            }
            for (std::size_t k = 0; k < v.dst.size(); ++k) {
                v.dst[k]->fillBytes(rng);
                s.dst[k]->copyFrom(*v.dst[k]);
            }
            const OrvStatus sv = v.run(m, {g.width, g.height});
            OrvStatus ss;
            {
                ScalarBlocks scalar;
                ss = s.run(m, {g.width, g.height});
            }
            ASSERT_EQ(sv, ss);
            ASSERT_TRUE(v.guardsIntact());
            ASSERT_TRUE(s.guardsIntact());
            ASSERT_EQ(v.pixels(), s.pixels());
        }
    }
}

// One colour, Y 40, U 222, V 105, over 3 rows of 35 pixels: pixels 0-31
// take the block form, 32-33 the tail form, 34 the lone-pixel form (4:2:2)
// or stay untouched with the last row (4:2:0, orvStatusOddSize). Answers
// worked out from the forms' definitions in exact integer arithmetic.
TEST(YuvSub, BlockTailAndLonePixelForms)
{
    using RGB = std::array<uint8_t, 3>;
    const RGB formR{13, 15, 230}, formP2{13, 15, 231}, noRound{13, 16, 231}, roundGB{13, 16, 231},
        roundAll{14, 16, 231}, sixteen{14, 16, 231}, lone{13, 16, 230}, untouched{0xEE, 0xEE, 0xEE};
    struct Case {
        const char* name;
        RGB block, tail, last;
    };
    const Case cases[] = {
        {"YUV422ToRGB_8u_P3R", formR, noRound, lone},      {"YUV422ToRGB_8u_P3C3R", formR, noRound, lone},
        {"YUV422ToRGB_8u_P3AC4R", sixteen, roundGB, lone}, {"YUV422ToRGB_8u_C2C3R", formR, roundAll, roundAll},
        {"YUV420ToRGB_8u_P3R", noRound, noRound, untouched}, {"YUV420ToRGB_8u_P3C3R", formR, noRound, untouched},
        {"YUV420ToRGB_8u_P3AC4R", sixteen, roundGB, untouched}, {"YUV420ToBGR_8u_P3C3R", formP2, noRound, untouched},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const Sub& m = *std::find_if(members().begin(), members().end(), [&](const Sub& s) { return s.name == c.name; });
        const int w = 35, h = 3;
        Frame f(m, {w, h, 0, 0, false, 0});
        if (m.packed)
            for (int y = 0; y < h; ++y)
                for (int x = 0; x < 2 * w; ++x)
                    f.src[0]->row(y)[x] = x % 2 == 0 ? 40 : x % 4 == 1 ? 222 : 105;
        else
            for (int k = 0; k < 3; ++k)
                f.src[k]->fillValue<uint8_t>(k == 0 ? 40 : k == 1 ? 222 : 105);
        for (auto& d : f.dst)
            d->fillValue<uint8_t>(0xEE);
        EXPECT_EQ(f.run(m, {w, h}), m.is420 ? orvStatusOddSize : orvStatusOk);
        const bool bgr = std::string(c.name).find("BGR") != std::string::npos;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                RGB e = (m.is420 && y == 2) ? untouched : x < 32 ? c.block : x < 34 ? c.tail : c.last;
                if (bgr)
                    std::swap(e[0], e[2]);
                RGB got;
                for (int k = 0; k < 3; ++k)
                    got[k] = m.dstPix ? f.dst[0]->row(y)[x * m.dstPix + k] : f.dst[k]->row(y)[x];
                ASSERT_EQ(got, e) << "row " << y << " pixel " << x;
                if (m.dstPix == 4) {
                    // 4:2:2 writes 0 everywhere, 4:2:0 only in its blocks.
                    const bool zero = m.is420 ? (y < 2 && x < 32) : true;
                    ASSERT_EQ(f.dst[0]->row(y)[4 * x + 3], zero ? 0 : 0xEE) << "alpha, row " << y << " pixel " << x;
                }
            }
    }
}

TEST(YuvSub, OnePixelWidePackedRowUsesItsChromaForUAndV)
{
    const uint8_t src[2] = {100, 200};
    uint8_t dst[3] = {};
    EXPECT_EQ(orviYUV422ToRGB_8u_C2C3R(src, 2, dst, 3, {1, 1}), orvStatusOk);
    EXPECT_EQ(Bytes(dst, dst + 3), (Bytes{182, 29, 246}));
}

TEST(YuvSub, OddAndSmallSizes)
{
    // 4:2:0 on one column: nothing to convert, reported as odd; the BGR
    // member needs a whole square.
    uint8_t y[4] = {1, 2, 3, 4}, u[1] = {9}, v[1] = {9};
    const uint8_t* src[3] = {y, u, v};
    const int steps[3] = {1, 1, 1};
    Bytes dst(12, 0xEE);
    EXPECT_EQ(orviYUV420ToRGB_8u_P3C3R(src, steps, dst.data(), 3, {1, 4}), orvStatusOddSize);
    EXPECT_EQ(dst, Bytes(12, 0xEE));
    EXPECT_EQ(orviYUV420ToBGR_8u_P3C3R(src, steps, dst.data(), 3, {1, 4}), orvStatusBadSize);
    EXPECT_EQ(orviYUV420ToBGR_8u_P3C3R(src, steps, dst.data(), 3, {4, 1}), orvStatusBadSize);
    // 3 by 3 planar: one square of four pixels, all with the same chroma.
    uint8_t y9[9] = {50, 50, 7, 50, 50, 7, 7, 7, 7}, u1[1] = {90}, v1[1] = {200};
    const uint8_t* src9[3] = {y9, u1, v1};
    const int steps9[3] = {3, 1, 1};
    Bytes planes[3] = {Bytes(9, 0xEE), Bytes(9, 0xEE), Bytes(9, 0xEE)};
    uint8_t* dst9[3] = {planes[0].data(), planes[1].data(), planes[2].data()};
    EXPECT_EQ(orviYUV420ToRGB_8u_P3R(src9, steps9, dst9, 3, {3, 3}), orvStatusOddSize);
    for (const Bytes& p : planes) {
        EXPECT_EQ(p[0], p[1]);
        EXPECT_EQ(p[0], p[3]);
        EXPECT_EQ(p[0], p[4]);
        for (int i : {2, 5, 6, 7, 8})
            EXPECT_EQ(p[i], 0xEE);
    }
}

// The whole-image names convert as the stepped ones with tight steps; an
// even-width 4:2:2 image of 256 pixels or more as one long row, which moves
// the block part across row ends.
TEST(YuvSub, WholeImagesAreTightlyPacked)
{
    std::mt19937 rng(7);
    for (RoiSize r : {RoiSize{20, 13}, RoiSize{7, 5}, RoiSize{16, 8}, RoiSize{66, 9}}) {
        SCOPED_TRACE(std::to_string(r.width) + "x" + std::to_string(r.height));
        for (bool is420 : {false, true}) {
            const int cw = is420 ? r.width / 2 : (r.width + 1) / 2, ch = is420 ? r.height / 2 : r.height;
            Bytes planes[3] = {Bytes(r.width * r.height), Bytes(cw * ch), Bytes(cw * ch)};
            for (Bytes& p : planes)
                for (auto& b : p)
                    b = uint8_t(rng());
            const uint8_t* src[3] = {planes[0].data(), planes[1].data(), planes[2].data()};
            const int steps[3] = {r.width, cw, cw};
            const int n = r.width * r.height;
            Bytes a(3 * n, 1), b(3 * n, 1), pa(3 * n, 2), pb(3 * n, 2);
            uint8_t* da[3] = {pa.data(), pa.data() + n, pa.data() + 2 * n};
            uint8_t* db[3] = {pb.data(), pb.data() + n, pb.data() + 2 * n};
            if (is420) {
                EXPECT_EQ(orviYUV420ToRGB_8u_P3C3(src, a.data(), r), orviYUV420ToRGB_8u_P3C3R(src, steps, b.data(), 3 * r.width, r));
                EXPECT_EQ(orviYUV420ToRGB_8u_P3(src, da, r), orviYUV420ToRGB_8u_P3R(src, steps, db, r.width, r));
            } else {
                const RoiSize as = (r.width % 2 == 0 && n >= 256) ? RoiSize{n, 1} : r;
                EXPECT_EQ(orviYUV422ToRGB_8u_P3C3(src, a.data(), r), orviYUV422ToRGB_8u_P3C3R(src, steps, b.data(), 3 * r.width, as));
                EXPECT_EQ(orviYUV422ToRGB_8u_P3(src, da, r), orviYUV422ToRGB_8u_P3R(src, steps, db, r.width, as));
            }
            EXPECT_EQ(a, b);
            EXPECT_EQ(pa, pb);
        }
    }
}

// Check order through the full-resolution harness (chroma planes allocated
// at full size, which covers every sampling).
TEST(YuvSub, CheckOrderAndNothingWrittenOnFailure)
{
    const std::vector<Fault> planar = {F::SrcNull, F::DstNull, F::Width, F::Height, F::SrcPlane0, F::SrcPlane1,
                                       F::SrcPlane2, F::DstPlane0, F::DstPlane1, F::DstPlane2};
    const std::vector<Fault> toPixels = {F::SrcNull, F::DstNull, F::Width, F::Height, F::SrcPlane0, F::SrcPlane1,
                                         F::SrcPlane2};
    auto toPlanes = [](OrvStatus (*f)(const Orv8u* const*, const int*, Orv8u**, int, RoiSize)) -> ConvCall {
        return [f](void* s, int ss, void* d, int ds, RoiSize r) {
            const int steps[3] = {ss, ss, ss};
            return f(static_cast<const Orv8u* const*>(s), steps, static_cast<Orv8u**>(d), ds, r);
        };
    };
    auto toPacked = [](OrvStatus (*f)(const Orv8u* const*, const int*, Orv8u*, int, RoiSize)) -> ConvCall {
        return [f](void* s, int ss, void* d, int ds, RoiSize r) {
            const int steps[3] = {ss, ss, ss};
            return f(static_cast<const Orv8u* const*>(s), steps, static_cast<Orv8u*>(d), ds, r);
        };
    };
    const std::vector<Conversion> all = {
        {"YUV422ToRGB_8u_P3R", {3, 1}, {3, 1}, toPlanes(orviYUV422ToRGB_8u_P3R), wholeRow, planar},
        {"YUV422ToRGB_8u_P3", {3, 1}, {3, 1},
         [](void* s, int, void* d, int, RoiSize r) {
             return orviYUV422ToRGB_8u_P3(static_cast<const Orv8u* const*>(s), static_cast<Orv8u**>(d), r);
         },
         wholeRow, planar},
        {"YUV422ToRGB_8u_P3C3R", {3, 1}, {1, 3}, toPacked(orviYUV422ToRGB_8u_P3C3R), wholeRow, toPixels},
        {"YUV422ToRGB_8u_P3C3", {3, 1}, {1, 3},
         [](void* s, int, void* d, int, RoiSize r) {
             return orviYUV422ToRGB_8u_P3C3(static_cast<const Orv8u* const*>(s), static_cast<Orv8u*>(d), r);
         },
         wholeRow, toPixels},
        {"YUV422ToRGB_8u_P3AC4R", {3, 1}, {1, 4}, toPacked(orviYUV422ToRGB_8u_P3AC4R), wholeRow, toPixels},
        {"YUV422ToRGB_8u_C2C3R", {1, 2}, {1, 3}, call(orviYUV422ToRGB_8u_C2C3R), wholeRow,
         {F::SrcNull, F::DstNull, F::Width, F::Height}},
        {"YUV420ToRGB_8u_P3R", {3, 1}, {3, 1}, toPlanes(orviYUV420ToRGB_8u_P3R), wholeRow, planar},
        {"YUV420ToRGB_8u_P3", {3, 1}, {3, 1},
         [](void* s, int, void* d, int, RoiSize r) {
             return orviYUV420ToRGB_8u_P3(static_cast<const Orv8u* const*>(s), static_cast<Orv8u**>(d), r);
         },
         wholeRow, planar},
        {"YUV420ToRGB_8u_P3C3R", {3, 1}, {1, 3}, toPacked(orviYUV420ToRGB_8u_P3C3R), wholeRow, toPixels},
        {"YUV420ToRGB_8u_P3C3", {3, 1}, {1, 3},
         [](void* s, int, void* d, int, RoiSize r) {
             return orviYUV420ToRGB_8u_P3C3(static_cast<const Orv8u* const*>(s), static_cast<Orv8u*>(d), r);
         },
         wholeRow, toPixels},
        {"YUV420ToRGB_8u_P3AC4R", {3, 1}, {1, 4}, toPacked(orviYUV420ToRGB_8u_P3AC4R), wholeRow, toPixels},
        {"YUV420ToBGR_8u_P3C3R", {3, 1}, {1, 3}, toPacked(orviYUV420ToBGR_8u_P3C3R), wholeRow, toPixels},
    };
    for (const Conversion& c : all)
        expectCheckOrder(c);
}

// RGB to 4:2:0 by the scalar form: a 3 by 3 image gives one square (Y of
// each pixel, one U and V), the last row and column stay untouched. Answers
// worked out from the form in exact integer arithmetic; pure red takes V
// 285, clamped.
TEST(YuvSub, RgbTo420SquaresByTheScalarForm)
{
    const uint8_t rgb[4][3] = {{200, 10, 30}, {12, 250, 90}, {255, 255, 255}, {0, 0, 0}};
    Bytes planes[3] = {Bytes(9, 7), Bytes(9, 8), Bytes(9, 9)}, bgra(36);
    for (int i = 0; i < 9; ++i) {
        const int sq = (i / 3 < 2 && i % 3 < 2) ? (i / 3) * 2 + i % 3 : 3;
        for (int k = 0; k < 3; ++k) {
            planes[k][i] = rgb[sq][k];
            bgra[4 * i + 2 - k] = rgb[sq][k];
        }
        bgra[4 * i + 3] = uint8_t(37 * i);
    }
    const uint8_t* src[3] = {planes[0].data(), planes[1].data(), planes[2].data()};
    auto run = [&](auto&& f) {
        Bytes out[3] = {Bytes(9, 0xEE), Bytes(2, 0xEE), Bytes(2, 0xEE)};
        uint8_t* dst[3] = {out[0].data(), out[1].data(), out[2].data()};
        const int steps[3] = {3, 1, 1};
        EXPECT_EQ(f(dst, steps), orvStatusOddSize);
        return std::vector<Bytes>{out[0], out[1], out[2]};
    };
    const std::vector<Bytes> expected = {Bytes{69, 160, 0xEE, 255, 0, 0xEE, 0xEE, 0xEE, 0xEE}, Bytes{114, 0xEE},
                                         Bytes{124, 0xEE}};
    EXPECT_EQ(run([&](uint8_t** d, const int* st) { return orviRGBToYUV420_8u_P3R(src, 3, d, const_cast<int*>(st), {3, 3}); }),
              expected);
    EXPECT_EQ(run([&](uint8_t** d, const int* st) {
                  return orviBGRToYUV420_8u_AC4P3R(bgra.data(), 12, d, const_cast<int*>(st), {3, 3});
              }),
              expected);

    // Pure red over a tight 4 by 2 image.
    Bytes red[3] = {Bytes(8, 255), Bytes(8, 0), Bytes(8, 0)}, out[3] = {Bytes(8), Bytes(2), Bytes(2)};
    const uint8_t* rs[3] = {red[0].data(), red[1].data(), red[2].data()};
    uint8_t* rd[3] = {out[0].data(), out[1].data(), out[2].data()};
    EXPECT_EQ(orviRGBToYUV420_8u_P3(rs, rd, {4, 2}), orvStatusOk);
    EXPECT_EQ(out[0], Bytes(8, 76));
    EXPECT_EQ(out[1], (Bytes{90, 90}));
    EXPECT_EQ(out[2], (Bytes{255, 255}));
}

// ---- RGB to YUV --------------------------------------------------------------

// A forward member as the tests see it: RGB planes, RGB bytes or BGRA source
// with one step; Y, U, V planes with three steps or packed Y0 U Y1 V out.
enum class RgbSrc { Planes, Rgb, Bgra };
using FwdCall = std::function<OrvStatus(const uint8_t* const* src, int srcStep, uint8_t* const* dst, int* dstSteps,
                                        RoiSize roi)>;
struct Fwd {
    std::string name;
    bool is420;
    RgbSrc src;
    bool packed;
    FwdCall call;
};

const std::vector<Fwd>& forwardMembers()
{
    auto planesIn = [](auto f) -> FwdCall {
        return [f](const uint8_t* const* s, int ss, uint8_t* const* d, int* ds, RoiSize r) {
            return f(s, ss, const_cast<uint8_t**>(d), ds, r);
        };
    };
    auto bytesIn = [](auto f) -> FwdCall {
        return [f](const uint8_t* const* s, int ss, uint8_t* const* d, int* ds, RoiSize r) {
            return f(s[0], ss, const_cast<uint8_t**>(d), ds, r);
        };
    };
    static const std::vector<Fwd> all = {
        {"RGBToYUV422_8u_P3R", false, RgbSrc::Planes, false, planesIn(orviRGBToYUV422_8u_P3R)},
        {"RGBToYUV422_8u_C3P3R", false, RgbSrc::Rgb, false, bytesIn(orviRGBToYUV422_8u_C3P3R)},
        {"RGBToYUV422_8u_C3C2R", false, RgbSrc::Rgb, true,
         [](const uint8_t* const* s, int ss, uint8_t* const* d, int* ds, RoiSize r) {
             return orviRGBToYUV422_8u_C3C2R(s[0], ss, d[0], ds[0], r);
         }},
        {"RGBToYUV420_8u_P3R", true, RgbSrc::Planes, false, planesIn(orviRGBToYUV420_8u_P3R)},
        {"RGBToYUV420_8u_C3P3R", true, RgbSrc::Rgb, false, bytesIn(orviRGBToYUV420_8u_C3P3R)},
        {"BGRToYUV420_8u_AC4P3R", true, RgbSrc::Bgra, false, bytesIn(orviBGRToYUV420_8u_AC4P3R)},
    };
    return all;
}
const Fwd& forwardMember(const std::string& name)
{
    return *std::find_if(forwardMembers().begin(), forwardMembers().end(), [&](const Fwd& f) { return f.name == name; });
}

// The images of one forward call. Aligned: every row start and step a
// multiple of 16 (the images are placed so that their last byte ends a
// 16-byte unit below the guard page), which selects the kernels for aligned
// arguments where a member has them.
struct FwdFrame : Images {
    std::vector<const uint8_t*> sp;
    std::vector<uint8_t*> dp;
    int dstSteps[3] = {};

    FwdFrame(const Fwd& m, const Geometry& g, bool aligned = false)
    {
        const int sign = g.negative ? -1 : 1;
        auto add = [&](auto& list, int bytes, int rows, int pad) {
            bytes = std::max(bytes, 1);
            rows = std::max(rows, 1);
            int step = bytes + pad, slack = g.endSlack;
            if (aligned) {
                step = (step + 15) & ~15;
                slack = (16 - bytes % 16) % 16;
            }
            list.push_back(std::make_unique<GuardedImage>(bytes, rows, sign * step, slack));
        };
        const int w = g.width, h = g.height;
        if (m.src == RgbSrc::Planes)
            for (int k = 0; k < 3; ++k)
                add(src, w, h, g.srcPad);
        else
            add(src, w * (m.src == RgbSrc::Rgb ? 3 : 4), h, g.srcPad);
        if (m.packed) {
            add(dst, 2 * w, h, g.dstPad);
        } else {
            const int cw = m.is420 ? w / 2 : (w + 1) / 2, ch = m.is420 ? h / 2 : h;
            add(dst, w, h, g.dstPad);
            add(dst, cw, ch, g.dstPad + 1);
            add(dst, cw, ch, g.dstPad + 2);
        }
        for (auto& i : src)
            sp.push_back(i->data());
        for (std::size_t k = 0; k < dst.size(); ++k) {
            dp.push_back(dst[k]->data());
            dstSteps[k] = dst[k]->step();
        }
    }
    OrvStatus run(const Fwd& m, RoiSize r) { return m.call(sp.data(), src[0]->step(), dp.data(), dstSteps, r); }
};

// Vector paths against the scalar forms over the standard sweep, with the
// interleaved 4:2:2 and 4:2:0 members also over aligned images.
TEST(YuvSub, RgbToYuvVectorPathsMatchScalarForms)
{
    std::mt19937 rng(4200);
    for (const Fwd& m : forwardMembers()) {
        for (bool aligned : {false, true}) {
            if (aligned && m.src != RgbSrc::Rgb)
                continue;
            SCOPED_TRACE(m.name + (aligned ? " aligned" : ""));
            for (const Geometry& g : standardSweep(1)) {
                SCOPED_TRACE(g.str());
                FwdFrame v(m, g, aligned), s(m, g, aligned);
                for (std::size_t k = 0; k < v.src.size(); ++k) {
                    v.src[k]->fillBytes(rng);
                    s.src[k]->copyFrom(*v.src[k]);
                }
                const OrvStatus sv = v.run(m, {g.width, g.height});
                OrvStatus ss;
                {
                    ScalarBlocks scalar;
                    ss = s.run(m, {g.width, g.height});
                }
                ASSERT_EQ(sv, (m.is420 && ((g.width | g.height) & 1)) ? orvStatusOddSize : orvStatusOk);
                ASSERT_EQ(sv, ss);
                ASSERT_TRUE(v.guardsIntact());
                ASSERT_TRUE(s.guardsIntact());
                ASSERT_EQ(v.pixels(), s.pixels());
            }
        }
    }
}

// The four-byte-pixel blocks split each pixel's channels by masks, shifts and
// byte multiply-adds at eight places in a register. Every value of every
// channel at every place of a register, in both rows of a square, by the
// vector path against the scalar form; 255 in all channels for the largest
// sums.
TEST(YuvSub, BgraBlocksTakeEveryChannelValueAtEveryPlace)
{
    const Fwd& m = forwardMember("BGRToYUV420_8u_AC4P3R");
    const int w = 256, h = 18;
    FwdFrame v(m, {w, h, 0, 0, false, 0}), s(m, {w, h, 0, 0, false, 0});
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            uint8_t* p = v.src[0]->row(y) + 4 * x;
            const bool white = y >= 16 && x < 64;
            p[0] = white ? 255 : uint8_t(x + 31 * y);
            p[1] = white ? 255 : uint8_t(3 * x + 5 * y);
            p[2] = white ? 255 : uint8_t(5 * x + 3 * y + 100);
            p[3] = uint8_t(x ^ y);
        }
    s.src[0]->copyFrom(*v.src[0]);
    ASSERT_EQ(v.run(m, {w, h}), orvStatusOk);
    {
        ScalarBlocks scalar;
        ASSERT_EQ(s.run(m, {w, h}), orvStatusOk);
    }
    EXPECT_EQ(v.pixels(), s.pixels());
}

// Two pixel colours in turn along 35 pixels: pixels 0-31 take the block
// form, pairs 32-33 the tail form, and pixel 34 (the first colour) the
// lone-pixel form in 4:2:2. The two colours tell the forms apart in Y, U
// and V; answers worked out from the forms in exact integer arithmetic.
TEST(YuvSub, RgbTo422BlockTailAndLonePixelForms)
{
    using Yuv2 = std::array<int, 4>;  // Y of both pixels, U, V
    const uint8_t colour[2][3] = {{14, 153, 228}, {68, 134, 63}};
    const Yuv2 tailPlanes{119, 106, 143, 64}, tailPacked{120, 106, 143, 64};
    const Yuv2 lone{119, -1, 181, 35};
    struct Case {
        const char* name;
        bool aligned;
        Yuv2 block, tail;
    };
    const Case cases[] = {
        {"RGBToYUV422_8u_C3P3R", false, {119, 105, 144, 65}, tailPlanes},
        {"RGBToYUV422_8u_C3P3R", true, {120, 106, 143, 64}, tailPlanes},
        {"RGBToYUV422_8u_P3R", false, {120, 105, 144, 65}, tailPlanes},
        {"RGBToYUV422_8u_C3C2R", false, {119, 106, 144, 65}, tailPacked},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.name) + (c.aligned ? " aligned" : ""));
        const Fwd& m = forwardMember(c.name);
        const int w = 35, h = 2;
        FwdFrame f(m, {w, h, 0, 0, false, 0}, c.aligned);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                for (int k = 0; k < 3; ++k) {
                    if (m.src == RgbSrc::Planes)
                        f.src[k]->row(y)[x] = colour[x & 1][k];
                    else
                        f.src[0]->row(y)[3 * x + k] = colour[x & 1][k];
                }
        for (auto& d : f.dst)
            d->fillValue<uint8_t>(0xEE);
        EXPECT_EQ(f.run(m, {w, h}), orvStatusOk);
        for (int y = 0; y < h; ++y)
            for (int j = 0; j < 18; ++j) {
                const Yuv2& e = j < 16 ? c.block : j < 17 ? c.tail : lone;
                const uint8_t* row = f.dst[0]->row(y);
                Yuv2 got;
                if (m.packed)  // a lone last pixel has no byte for V
                    got = {row[4 * j], j < 17 ? row[4 * j + 2] : -1, row[4 * j + 1], j < 17 ? row[4 * j + 3] : e[3]};
                else
                    got = {row[2 * j], j < 17 ? row[2 * j + 1] : -1, f.dst[1]->row(y)[j], f.dst[2]->row(y)[j]};
                ASSERT_EQ(got, e) << "row " << y << " pair " << j;
            }
        ASSERT_TRUE(f.guardsIntact());
    }
}

// One square of four colours repeated over 35 by 3 pixels: squares 0-15 by
// the block form, square 16 by the tail, the last column and row untouched.
// The planar member takes the 16-bit square form everywhere, BGRA its
// doubled-scale block (one less in the first Y) and that form in the tail;
// pure red takes V above 255, clamped, in every form.
TEST(YuvSub, RgbTo420BlockAndTailForms)
{
    static const uint8_t kRed[3] = {255, 0, 0};
    const uint8_t colour[2][2][3] = {{{10, 248, 153}, {80, 1, 243}}, {{197, 82, 112}, {170, 107, 47}}};
    using Square = std::array<int, 6>;  // Y of the four pixels, U, V
    struct Case {
        const char* name;
        Square block, tail;
    };
    const Case cases[] = {
        {"RGBToYUV420_8u_C3P3R", {165, 52, 119, 119, 140, 128}, {166, 52, 119, 118, 139, 127}},
        {"RGBToYUV420_8u_P3R", {166, 52, 119, 118, 140, 128}, {166, 52, 119, 118, 140, 128}},
        {"BGRToYUV420_8u_AC4P3R", {165, 52, 119, 118, 140, 128}, {166, 52, 119, 118, 140, 128}},
    };
    for (bool red : {false, true})
        for (const Case& c : cases) {
            SCOPED_TRACE(std::string(c.name) + (red ? " red" : ""));
            const Fwd& m = forwardMember(c.name);
            const int w = 35, h = 3;
            for (bool aligned : {false, true}) {
                FwdFrame f(m, {w, h, 0, 0, false, 0}, aligned);
                for (int y = 0; y < h; ++y)
                    for (int x = 0; x < w; ++x) {
                        const uint8_t* p = red ? kRed : colour[y & 1][x & 1];
                        for (int k = 0; k < 3; ++k) {
                            if (m.src == RgbSrc::Planes)
                                f.src[k]->row(y)[x] = p[k];
                            else if (m.src == RgbSrc::Rgb)
                                f.src[0]->row(y)[3 * x + k] = p[k];
                            else
                                f.src[0]->row(y)[4 * x + 2 - k] = p[k];
                        }
                    }
                for (auto& d : f.dst)
                    d->fillValue<uint8_t>(0xEE);
                EXPECT_EQ(f.run(m, {w, h}), orvStatusOddSize);
                for (int j = 0; j < 17; ++j) {
                    const Square e = red ? Square{76, 76, 76, 76, 90, 255} : j < 16 ? c.block : c.tail;
                    const Square got = {f.dst[0]->row(0)[2 * j], f.dst[0]->row(0)[2 * j + 1], f.dst[0]->row(1)[2 * j],
                                        f.dst[0]->row(1)[2 * j + 1], f.dst[1]->row(0)[j], f.dst[2]->row(0)[j]};
                    ASSERT_EQ(got, e) << "square " << j << (aligned ? " aligned" : "");
                }
                for (int y = 0; y < h; ++y)
                    ASSERT_EQ(f.dst[0]->row(y)[34], 0xEE);
                for (int x = 0; x < w; ++x)
                    ASSERT_EQ(f.dst[0]->row(2)[x], 0xEE);
            }
        }
}

// The whole-image forward names convert as the stepped ones with tight
// steps; an even-width 4:2:2 image of 256 pixels or more as one long row.
// Offsets 0 and 1 from a 16-byte boundary reach both kernels where
// alignment selects one.
TEST(YuvSub, RgbToYuvWholeImagesAreTightlyPacked)
{
    std::mt19937 rng(11);
    for (RoiSize r : {RoiSize{20, 13}, RoiSize{7, 5}, RoiSize{16, 16}, RoiSize{66, 9}, RoiSize{64, 6}})
        for (int offset : {0, 1}) {
            SCOPED_TRACE(std::to_string(r.width) + "x" + std::to_string(r.height) + " offset " + std::to_string(offset));
            const int n = r.width * r.height;
            const bool oneRow = r.width % 2 == 0 && n >= 256;
            auto buffer = [&](int bytes) {
                auto b = std::make_shared<Bytes>(bytes + 32);
                for (auto& x : *b)
                    x = uint8_t(rng());
                return b;
            };
            auto at = [&](const std::shared_ptr<Bytes>& b) {
                return reinterpret_cast<uint8_t*>((reinterpret_cast<uintptr_t>(b->data()) + 15) & ~uintptr_t(15)) + offset;
            };
            const auto rgb = buffer(3 * n);
            const uint8_t* planes[3] = {at(rgb), at(rgb) + n, at(rgb) + 2 * n};
            for (bool is420 : {false, true}) {
                const int cw = is420 ? r.width / 2 : (r.width + 1) / 2, ch = is420 ? r.height / 2 : r.height;
                const int ybytes = n, cbytes = cw * ch;
                auto out = [&] {
                    auto b = buffer(ybytes + 2 * cbytes);
                    return std::make_pair(b, std::array<uint8_t*, 3>{at(b), at(b) + ybytes, at(b) + ybytes + cbytes});
                };
                auto [a, pa] = out();
                auto [b, pb] = out();
                std::copy(a->begin(), a->end(), b->begin());
                if (is420) {
                    int steps[3] = {r.width, cw, cw};
                    EXPECT_EQ(orviRGBToYUV420_8u_C3P3(at(rgb), pa.data(), r),
                              orviRGBToYUV420_8u_C3P3R(at(rgb), 3 * r.width, pb.data(), steps, r));
                } else {
                    const RoiSize as = oneRow ? RoiSize{n, 1} : r;
                    int steps[3] = {as.width, (as.width + 1) / 2, (as.width + 1) / 2};
                    EXPECT_EQ(orviRGBToYUV422_8u_C3P3(at(rgb), pa.data(), r),
                              orviRGBToYUV422_8u_C3P3R(at(rgb), 3 * as.width, pb.data(), steps, as));
                    EXPECT_EQ(*a, *b);
                    EXPECT_EQ(orviRGBToYUV422_8u_P3(planes, pa.data(), r),
                              orviRGBToYUV422_8u_P3R(planes, as.width, pb.data(), steps, as));
                }
                EXPECT_EQ(*a, *b);
            }
        }
}

TEST(YuvSub, RgbToYuvCheckOrder)
{
    auto toYuv = [](OrvStatus (*f)(const Orv8u* const*, int, Orv8u**, int*, RoiSize)) -> ConvCall {
        return [f](void* s, int ss, void* d, int ds, RoiSize r) {
            int steps[3] = {ds, ds, ds};
            return f(static_cast<const Orv8u* const*>(s), ss, static_cast<Orv8u**>(d), steps, r);
        };
    };
    auto fromBytes = [](OrvStatus (*f)(const Orv8u*, int, Orv8u**, int*, RoiSize)) -> ConvCall {
        return [f](void* s, int ss, void* d, int ds, RoiSize r) {
            int steps[3] = {ds, ds, ds};
            return f(static_cast<const Orv8u*>(s), ss, static_cast<Orv8u**>(d), steps, r);
        };
    };
    const std::vector<Fault> planar = {F::SrcNull, F::DstNull, F::Width, F::Height, F::SrcPlane0, F::SrcPlane1,
                                       F::SrcPlane2, F::DstPlane0, F::DstPlane1, F::DstPlane2};
    const std::vector<Fault> toPlanes = {F::SrcNull, F::DstNull, F::Width, F::Height, F::DstPlane0, F::DstPlane1,
                                         F::DstPlane2};
    const std::vector<Conversion> all = {
        {"RGBToYUV420_8u_P3R", {3, 1}, {3, 1}, toYuv(orviRGBToYUV420_8u_P3R), wholeRow, planar},
        {"RGBToYUV420_8u_P3", {3, 1}, {3, 1},
         [](void* s, int, void* d, int, RoiSize r) {
             return orviRGBToYUV420_8u_P3(static_cast<const Orv8u* const*>(s), static_cast<Orv8u**>(d), r);
         },
         wholeRow, planar},
        {"BGRToYUV420_8u_AC4P3R", {1, 4}, {3, 1},
         [](void* s, int ss, void* d, int ds, RoiSize r) {
             int steps[3] = {ds, ds, ds};
             return orviBGRToYUV420_8u_AC4P3R(static_cast<const Orv8u*>(s), ss, static_cast<Orv8u**>(d), steps, r);
         },
         wholeRow, {F::SrcNull, F::DstNull, F::Width, F::Height, F::DstPlane0, F::DstPlane1, F::DstPlane2}},
        {"RGBToYUV422_8u_P3R", {3, 1}, {3, 1}, toYuv(orviRGBToYUV422_8u_P3R), wholeRow, planar},
        {"RGBToYUV422_8u_P3", {3, 1}, {3, 1},
         [](void* s, int, void* d, int, RoiSize r) {
             return orviRGBToYUV422_8u_P3(static_cast<const Orv8u* const*>(s), static_cast<Orv8u**>(d), r);
         },
         wholeRow, planar},
        {"RGBToYUV422_8u_C3P3R", {1, 3}, {3, 1}, fromBytes(orviRGBToYUV422_8u_C3P3R), wholeRow, toPlanes},
        {"RGBToYUV422_8u_C3P3", {1, 3}, {3, 1},
         [](void* s, int, void* d, int, RoiSize r) {
             return orviRGBToYUV422_8u_C3P3(static_cast<const Orv8u*>(s), static_cast<Orv8u**>(d), r);
         },
         wholeRow, toPlanes},
        {"RGBToYUV422_8u_C3C2R", {1, 3}, {1, 2}, call(orviRGBToYUV422_8u_C3C2R), wholeRow,
         {F::SrcNull, F::DstNull, F::Width, F::Height}},
        {"RGBToYUV420_8u_C3P3R", {1, 3}, {3, 1}, fromBytes(orviRGBToYUV420_8u_C3P3R), wholeRow, toPlanes},
        {"RGBToYUV420_8u_C3P3", {1, 3}, {3, 1},
         [](void* s, int, void* d, int, RoiSize r) {
             return orviRGBToYUV420_8u_C3P3(static_cast<const Orv8u*>(s), static_cast<Orv8u**>(d), r);
         },
         wholeRow, toPlanes},
    };
    for (const Conversion& c : all)
        expectCheckOrder(c);
}

}  // namespace
