// Checks for conversions of the shape f(src, srcStep, dst, dstStep, roi)
// between interleaved images of typed elements (8u, 16u, 16s, 32f), with
// `sch` source and `dch` destination channels.
#pragma once

#include <cstring>
#include <random>
#include <type_traits>
#include <vector>

#include "support/image.h"

namespace orvtest {

template <class S, class D = S>
using TypedFn = OrvStatus (*)(const S*, int, D*, int, RoiSize);

// Vector against scalar forms over the standard sweep; `fill` fills the
// source (default: fillTypical of S).
template <class S, class D = S, class Fill>
void sweepTyped(int sch, int dch, TypedFn<S, D> f, Fill fill)
{
    expectVectorMatchesScalar(sch * sizeof(S), dch * sizeof(D), sizeof(S) > sizeof(D) ? sizeof(S) : sizeof(D), fill,
                              [&](GuardedImage& s, GuardedImage& d, RoiSize roi) {
                                  return f(s.data<S>(), s.step(), d.data<D>(), d.step(), roi);
                              });
}
template <class S, class D = S>
void sweepTyped(int sch, int dch, TypedFn<S, D> f)
{
    sweepTyped<S, D>(sch, dch, f, fillTypical<S>);
}

// One row of `width` copies of a pixel, converted over a destination filled
// with `background` (what channels the conversion leaves alone keep).
template <class S, class D = S>
std::vector<D> convertRow(int width, int sch, int dch, const std::vector<S>& px, TypedFn<S, D> f,
                          D background = D(0))
{
    std::vector<S> src;
    std::vector<D> dst(std::size_t(width) * dch, background);
    for (int i = 0; i < width; ++i)
        src.insert(src.end(), px.begin(), px.end());
    EXPECT_EQ(f(src.data(), width * sch * int(sizeof(S)), dst.data(), width * dch * int(sizeof(D)), {width, 1}),
              orvStatusOk);
    return dst;
}

// Channels 0..2 of pixel i of a converted row.
template <class D>
std::vector<D> pixelOf(const std::vector<D>& row, int i, int ch)
{
    return std::vector<D>(row.begin() + i * ch, row.begin() + i * ch + 3);
}

// Rows of copies of a pixel that the two forms convert differently: the
// first width / group * group pixels come out as the group form, the rest as
// the tail form (every pixel as the tail form when there is no group form).
// `gen(rng)` draws pixels until one tells the forms apart; where they rarely
// differ, `known` gives such a pixel.
template <class S, class D = S, class Gen>
void expectSplit(int sch, int dch, int group, TypedFn<S, D> f, Gen gen, const char* name, std::vector<S> known = {})
{
    SCOPED_TRACE(name);
    std::mt19937 rng(17);
    std::vector<S> px;
    std::vector<D> inGroup, inTail;
    for (int tries = 0; tries < 2000 && inGroup == inTail; ++tries) {
        px = known.empty() ? gen(rng) : known;
        inGroup = pixelOf(convertRow<S, D>(group ? group : 1, sch, dch, px, f), 0, dch);
        inTail = pixelOf(convertRow<S, D>(1, sch, dch, px, f), 0, dch);
        if (!group)
            break;
    }
    ASSERT_TRUE(group == 0 || inGroup != inTail) << "no pixel tells the forms apart";
    for (int w = 1; w <= 3 * (group > 4 ? group : 4) + 3; ++w) {
        const auto out = convertRow<S, D>(w, sch, dch, px, f);
        for (int i = 0; i < w; ++i)
            ASSERT_EQ(pixelOf(out, i, dch), group && i < w / group * group ? inGroup : inTail)
                << "width " << w << " pixel " << i;
    }
}

// The destination's fourth channel keeps its bytes in an AC4 member.
template <class T>
void expectAlphaKept(TypedFn<T> f)
{
    std::mt19937 rng(8);
    for (int w : {1, 3, 4, 5, 8, 13, 40}) {
        GuardedImage src = makeImage(w, 2, 4 * sizeof(T), 0, false, 0);
        GuardedImage dst = makeImage(w, 2, 4 * sizeof(T), 0, false, 0);
        fillTypical<T>(src, rng);
        dst.fillBytes(rng);
        const std::vector<uint8_t> before = dst.pixels();
        ASSERT_EQ(f(src.data<T>(), src.step(), dst.data<T>(), dst.step(), {w, 2}), orvStatusOk);
        const std::vector<uint8_t> after = dst.pixels();
        for (std::size_t p = 0; p < after.size(); p += 4 * sizeof(T))
            ASSERT_EQ(std::memcmp(&after[p + 3 * sizeof(T)], &before[p + 3 * sizeof(T)], sizeof(T)), 0) << w;
    }
}

// Null pointers first, then width, then height; nothing written on failure.
template <class S, class D = S>
void expectFrontChecks(TypedFn<S, D> f)
{
    alignas(16) uint8_t src[256] = {}, dst[256];
    std::memset(dst, 0x5a, sizeof dst);
    auto* s = reinterpret_cast<const S*>(src);
    auto* d = reinterpret_cast<D*>(dst);
    EXPECT_EQ(f(nullptr, 16, nullptr, 16, RoiSize{0, 0}), orvStatusNullPointer);
    EXPECT_EQ(f(nullptr, 16, d, 16, RoiSize{0, 0}), orvStatusNullPointer);
    EXPECT_EQ(f(s, 16, nullptr, 16, RoiSize{0, 0}), orvStatusNullPointer);
    EXPECT_EQ(f(s, 16, d, 16, RoiSize{0, 0}), orvStatusBadSize);
    EXPECT_EQ(f(s, 16, d, 16, RoiSize{0, 1}), orvStatusBadSize);
    EXPECT_EQ(f(s, 16, d, 16, RoiSize{1, 0}), orvStatusBadSize);
    EXPECT_EQ(f(s, 16, d, 16, RoiSize{-1, 5}), orvStatusBadSize);
    for (uint8_t b : dst)
        ASSERT_EQ(b, 0x5a);
}

// Serial up to 4096 pixels, rows over threads above: the same bytes for
// every thread count in `counts`, on both sides of the line.
template <class T, class Fill>
void expectThreadIndependent(int ch, TypedFn<T> f, Fill fill, std::initializer_list<int> counts = {1, 2, 3, 5})
{
    std::mt19937 rng(21);
    for (auto [w, h] : {std::pair{64, 64}, std::pair{4097, 1}, std::pair{5000, 1}, std::pair{37, 111}, std::pair{200, 64}}) {
        GuardedImage src = makeImage(w, h, ch * sizeof(T), 2 * sizeof(T), false, 0);
        fill(src, rng);
        std::vector<uint8_t> first;
        for (int n : counts) {
            ThreadCount threads(n);
            GuardedImage dst = makeImage(w, h, ch * sizeof(T), 4 * sizeof(T), h % 2 == 1, 0);
            ASSERT_EQ(f(src.data<T>(), src.step(), dst.data<T>(), dst.step(), {w, h}), orvStatusOk);
            ASSERT_TRUE(dst.guardsIntact());
            if (first.empty())
                first = dst.pixels();
            else
                ASSERT_EQ(dst.pixels(), first) << w << "x" << h << ", " << n << " threads";
        }
    }
}
template <class T>
void expectThreadIndependent(int ch, TypedFn<T> f)
{
    expectThreadIndependent<T>(ch, f, fillTypical<T>);
}

}  // namespace orvtest
