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

// The images of one call: source planes (or the packed row) and the RGB side.
struct Frame {
    std::vector<std::unique_ptr<GuardedImage>> src, dst;
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

// RGB to 4:2:0: the vector path of the square form against the form, over
// the standard sweep of planar and four-byte sources.
TEST(YuvSub, RgbTo420VectorPathMatchesScalarForm)
{
    std::mt19937 rng(4200);
    for (bool planarSrc : {true, false}) {
        for (const Geometry& g : standardSweep(1)) {
            SCOPED_TRACE(g.str() + (planarSrc ? " planar" : " bgra"));
            const int sign = g.negative ? -1 : 1;
            auto image = [&](int bytes, int rows, int pad) {
                bytes = std::max(bytes, 1);
                rows = std::max(rows, 1);
                return std::make_unique<GuardedImage>(bytes, rows, sign * (bytes + pad), g.endSlack);
            };
            std::vector<std::unique_ptr<GuardedImage>> src;
            for (int k = 0; k < (planarSrc ? 3 : 1); ++k) {
                src.push_back(image(g.width * (planarSrc ? 1 : 4), g.height, g.srcPad));
                src.back()->fillBytes(rng);
            }
            Bytes out[2];
            for (int scalar = 0; scalar < 2; ++scalar) {
                std::unique_ptr<GuardedImage> dst[3] = {image(g.width, g.height, g.dstPad),
                                                        image(g.width / 2, g.height / 2, g.dstPad + 1),
                                                        image(g.width / 2, g.height / 2, g.dstPad + 2)};
                uint8_t* d[3] = {dst[0]->data(), dst[1]->data(), dst[2]->data()};
                int steps[3] = {dst[0]->step(), dst[1]->step(), dst[2]->step()};
                std::optional<ScalarBlocks> guard;
                if (scalar)
                    guard.emplace();
                const uint8_t* sp[3] = {src[0]->data(), planarSrc ? src[1]->data() : nullptr,
                                        planarSrc ? src[2]->data() : nullptr};
                const OrvStatus st = planarSrc ? orviRGBToYUV420_8u_P3R(sp, src[0]->step(), d, steps, {g.width, g.height})
                                               : orviBGRToYUV420_8u_AC4P3R(sp[0], src[0]->step(), d, steps,
                                                                           {g.width, g.height});
                EXPECT_EQ(st, ((g.width | g.height) & 1) ? orvStatusOddSize : orvStatusOk);
                for (auto& im : dst) {
                    ASSERT_TRUE(im->guardsIntact());
                    const Bytes p = im->pixels();
                    out[scalar].insert(out[scalar].end(), p.begin(), p.end());
                }
            }
            ASSERT_EQ(out[0], out[1]);
        }
    }
}

TEST(YuvSub, RgbTo420CheckOrder)
{
    auto toYuv = [](OrvStatus (*f)(const Orv8u* const*, int, Orv8u**, int*, RoiSize)) -> ConvCall {
        return [f](void* s, int ss, void* d, int ds, RoiSize r) {
            int steps[3] = {ds, ds, ds};
            return f(static_cast<const Orv8u* const*>(s), ss, static_cast<Orv8u**>(d), steps, r);
        };
    };
    const std::vector<Fault> planar = {F::SrcNull, F::DstNull, F::Width, F::Height, F::SrcPlane0, F::SrcPlane1,
                                       F::SrcPlane2, F::DstPlane0, F::DstPlane1, F::DstPlane2};
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
    };
    for (const Conversion& c : all)
        expectCheckOrder(c);
}

}  // namespace
