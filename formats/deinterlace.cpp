// Deinterlacing of semi-planar 4:2:0 frames (luma plane, plane of Cb Cr
// pairs): luma through a vertical [1 2 1] / 4 filter that blends each row
// with the rows of the other field, chroma rows averaged in neighbouring
// pairs. Output either stays 4:2:0 in three planes (the first byte of each
// pair to plane 1) or becomes packed Y0 Cb Y1 Cr 4:2:2.
//
// A frame comes whole or as slices, one call each: a first slice, middle
// slices, a last slice. A slice other than the first also writes the two
// luma rows and the one chroma row above it that the slice before could not
// finish; row numbers below are relative to the slice's own first row, so
// they run from -2. Nothing is kept between calls.
//
// Each output row follows one rule in the columns a wide loop covers and
// maybe another in the rest; the split column is part of the output. With
// p, c, n the rows above, at and below the output row (c and the other
// field's row o for the edges):
//   up(a, b) = (a + b + 1) >> 1            down(a, b) = (a + b) >> 1
//   edgeUp   = up(c, up(c, o))             edgeDown = (3c + o) >> 2
//   edgePlus = min(255, (3c + o + 4) >> 2)
//   midUp    = up(up(c, n), up(c, p))      midCross = up(up(p, n), c)
//   mid      = (p + 2c + n) >> 2           midPlus  = min(255, (p + 2c + n + 4) >> 2)
#include <immintrin.h>

#include <algorithm>
#include <tuple>
#include <type_traits>

#include "formats/chroma.h"
#include "frame/fronts.h"

namespace h9 {
namespace {

using namespace fmt;

enum class Rule { Copy, Up, Down, EdgeUp, EdgeDown, EdgePlus, MidUp, MidCross, Mid, MidPlus };

// Scalar form. Two-row rules read (c, n): the sample and the other row.
inline Orv8u apply(Rule r, int p, int c, int n)
{
    const auto up = [](int a, int b) { return (a + b + 1) >> 1; };
    switch (r) {
    case Rule::Copy: return Orv8u(c);
    case Rule::Up: return Orv8u(up(c, n));
    case Rule::Down: return Orv8u((c + n) >> 1);
    case Rule::EdgeUp: return Orv8u(up(c, up(c, n)));
    case Rule::EdgeDown: return Orv8u((3 * c + n) >> 2);
    case Rule::EdgePlus: return Orv8u(std::min(255, (3 * c + n + 4) >> 2));
    case Rule::MidUp: return Orv8u(up(up(c, n), up(c, p)));
    case Rule::MidCross: return Orv8u(up(up(p, n), c));
    case Rule::Mid: return Orv8u((p + 2 * c + n) >> 2);
    default: return Orv8u(std::min(255, (p + 2 * c + n + 4) >> 2));
    }
}

// (wp p + wc c + wn n + round) >> 2 in 16-bit lanes, packed with saturation.
inline __m256i weighted(__m256i p, __m256i c, __m256i n, int wp, int wc, int round)
{
    const __m256i z = _mm256_setzero_si256();
    const auto half = [&](__m256i (*unpack)(__m256i, __m256i)) {
        __m256i s = _mm256_add_epi16(_mm256_mullo_epi16(unpack(c, z), _mm256_set1_epi16(int16_t(wc))),
                                     _mm256_add_epi16(unpack(n, z), _mm256_set1_epi16(int16_t(round))));
        if (wp)
            s = _mm256_add_epi16(s, unpack(p, z));
        return _mm256_srli_epi16(s, 2);
    };
    return _mm256_packus_epi16(half(_mm256_unpacklo_epi8), half(_mm256_unpackhi_epi8));
}

// Vector path of the same rules on 32 samples, one instance per rule.
template <Rule R>
inline __m256i applyV(__m256i p, __m256i c, __m256i n)
{
    if constexpr (R == Rule::Copy)
        return c;
    else if constexpr (R == Rule::Up)
        return _mm256_avg_epu8(c, n);
    else if constexpr (R == Rule::Down)
        return _mm256_sub_epi8(_mm256_avg_epu8(c, n), _mm256_and_si256(_mm256_xor_si256(c, n), _mm256_set1_epi8(1)));
    else if constexpr (R == Rule::EdgeUp)
        return _mm256_avg_epu8(c, _mm256_avg_epu8(c, n));
    else if constexpr (R == Rule::EdgeDown)
        return weighted(p, c, n, 0, 3, 0);
    else if constexpr (R == Rule::EdgePlus)
        return weighted(p, c, n, 0, 3, 4);
    else if constexpr (R == Rule::MidUp)
        return _mm256_avg_epu8(_mm256_avg_epu8(c, n), _mm256_avg_epu8(c, p));
    else if constexpr (R == Rule::MidCross)
        return _mm256_avg_epu8(_mm256_avg_epu8(p, n), c);
    else if constexpr (R == Rule::Mid)
        return weighted(p, c, n, 1, 2, 0);
    else
        return weighted(p, c, n, 1, 2, 4);
}

template <Rule R>
using RuleTag = std::integral_constant<Rule, R>;

// Calls f(RuleTag<r>{}) so that a row's loop is compiled for its rule.
template <class F>
inline void withRule(Rule r, F&& f)
{
    switch (r) {
    case Rule::Copy: return f(RuleTag<Rule::Copy>{});
    case Rule::Up: return f(RuleTag<Rule::Up>{});
    case Rule::Down: return f(RuleTag<Rule::Down>{});
    case Rule::EdgeUp: return f(RuleTag<Rule::EdgeUp>{});
    case Rule::EdgeDown: return f(RuleTag<Rule::EdgeDown>{});
    case Rule::EdgePlus: return f(RuleTag<Rule::EdgePlus>{});
    case Rule::MidUp: return f(RuleTag<Rule::MidUp>{});
    case Rule::MidCross: return f(RuleTag<Rule::MidCross>{});
    case Rule::Mid: return f(RuleTag<Rule::Mid>{});
    default: return f(RuleTag<Rule::MidPlus>{});
    }
}

// The chroma rows take only these three.
template <class F>
inline void withChromaRule(Rule r, F&& f)
{
    switch (r) {
    case Rule::Copy: return f(RuleTag<Rule::Copy>{});
    case Rule::Up: return f(RuleTag<Rule::Up>{});
    default: return f(RuleTag<Rule::Down>{});
    }
}

inline __m256i load(const Orv8u* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }

// One output row's rules: `wide` below column `split`, `rest` from there on
// (columns in luma pixels). Source rows as indices relative to the slice.
struct LumaOp {
    int p, c, n;
    Rule wide, rest;
};
struct ChromaOp {
    int a, b;
    Rule wide, rest;
};

// Runs [x0, x1) by the vector step where it fits and by single units after.
template <class Vec, class Unit>
inline void segment(int x0, int x1, int step, Vec&& vec, Unit&& unit)
{
    int x = x0;
    if (!g_scalarBlocks)
        for (; x + step <= x1; x += step)
            vec(x);
    for (; x < x1; ++x)
        unit(x);
}

// ---- three planes, 4:2:0 ----------------------------------------------------
struct ToPlanes {
    Frame src;  // luma, pairs
    Frame dst;  // luma, first bytes, second bytes
    int width;

    void luma(int r, const LumaOp& op, int split) const
    {
        const Orv8u* p = rowAt(src.plane[0], src.step[0], op.p);
        const Orv8u* c = rowAt(src.plane[0], src.step[0], op.c);
        const Orv8u* n = rowAt(src.plane[0], src.step[0], op.n);
        Orv8u* d = rowAt(dst.plane[0], dst.step[0], r);
        for (const auto& [x0, x1, rule] : {std::tuple{0, split, op.wide}, std::tuple{split, width, op.rest}})
            withRule(rule, [&, x0 = x0, x1 = x1, rule = rule](auto R) {
                segment(
                    x0, x1, 32,
                    [&](int x) {
                        _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + x),
                                            applyV<R()>(load(p + x), load(c + x), load(n + x)));
                    },
                    [&](int x) { d[x] = apply(rule, p[x], c[x], n[x]); });
            });
    }

    // Chroma output row j; split in chroma samples.
    void chroma(int j, const ChromaOp& op, int split) const
    {
        const Row a = rowOf(src, 0, op.a), b = rowOf(src, 0, op.b), d = rowOf(dst, 0, j);
        for (const auto& [x0, x1, rule] : {std::tuple{0, split, op.wide}, std::tuple{split, width / 2, op.rest}})
            withChromaRule(rule, [&, x0 = x0, x1 = x1, rule = rule](auto R) {
                segment(
                    x0, x1, 32,
                    [&](int x) {
                        __m256i ua, va, ub, vb;
                        SemiCbCr::loadC(a, x, ua, va);
                        SemiCbCr::loadC(b, x, ub, vb);
                        PlanarCbCr::storeC(d, x, applyV<R()>(ua, ua, ub), applyV<R()>(va, va, vb));
                    },
                    [&](int x) {
                        PlanarCbCr::cb(d, x) = apply(rule, 0, SemiCbCr::cb(a, x), SemiCbCr::cb(b, x));
                        PlanarCbCr::cr(d, x) = apply(rule, 0, SemiCbCr::cr(a, x), SemiCbCr::cr(b, x));
                    });
            });
    }
};

// ---- packed 4:2:2 -----------------------------------------------------------
struct ToPacked {
    Frame src;
    Frame dst;
    int width;

    // Output row r: luma and chroma both split at `split` (even).
    void row(int r, const LumaOp& l, const ChromaOp& ch, int split) const
    {
        const Orv8u* p = rowAt(src.plane[0], src.step[0], l.p);
        const Orv8u* c = rowAt(src.plane[0], src.step[0], l.c);
        const Orv8u* n = rowAt(src.plane[0], src.step[0], l.n);
        const Row a = rowOf(src, 0, ch.a), b = rowOf(src, 0, ch.b), d = rowOf(dst, r, 0);
        const std::tuple<int, int, Rule, Rule> parts[] = {{0, split / 2, l.wide, ch.wide},
                                                          {split / 2, width / 2, l.rest, ch.rest}};
        for (const auto& [x0, x1, lr, cr] : parts)
            withRule(lr, [&, x0 = x0, x1 = x1, lr = lr, cr = cr](auto L) {
                withChromaRule(cr, [&](auto C) {
                    segment(
                        x0, x1, 32,
                        [&](int x) {
                            const int i = 2 * x;
                            __m256i ua, va, ub, vb;
                            SemiCbCr::loadC(a, x, ua, va);
                            SemiCbCr::loadC(b, x, ub, vb);
                            PackedYCbCr::storeYC(d, i, applyV<L()>(load(p + i), load(c + i), load(n + i)),
                                                 applyV<L()>(load(p + i + 32), load(c + i + 32), load(n + i + 32)),
                                                 applyV<C()>(ua, ua, ub), applyV<C()>(va, va, vb));
                        },
                        [&](int x) {
                            for (int i = 2 * x; i < 2 * x + 2; ++i)
                                PackedYCbCr::y(d, i) = apply(lr, p[i], c[i], n[i]);
                            PackedYCbCr::cb(d, x) = apply(cr, 0, SemiCbCr::cb(a, x), SemiCbCr::cb(b, x));
                            PackedYCbCr::cr(d, x) = apply(cr, 0, SemiCbCr::cr(a, x), SemiCbCr::cr(b, x));
                        });
                });
            });
    }
};

constexpr int kFirst = 1, kMiddle = 4, kLast = 16, kWhole = kFirst | kMiddle | kLast;

inline LumaOp mid(int r, Rule wide, Rule rest) { return {r - 1, r, r + 1, wide, rest}; }
inline LumaOp edge(int r, int other, Rule wide, Rule rest) { return {r, r, other, wide, rest}; }

// Whether the wide loops of the planar output may take the aligned family.
bool alignedFamily(const Orv8u* y, int ys, const Orv8u* uv, int uvs, Orv8u* const* d, const int* ds, int width,
                   int height)
{
    const auto a16 = [](const void* p) { return reinterpret_cast<uintptr_t>(p) % 16 == 0; };
    return (width & 0x3E) == 0 && height % 16 == 0 && ys % 16 == 0 && uvs % 32 == 0 && ds[0] % 32 == 0 &&
           ds[1] % 32 == 0 && ds[2] % 32 == 0 && a16(y) && a16(uv) && a16(d[0]) && a16(d[1]) && a16(d[2]);
}

void deinterlaceToPlanes(const ToPlanes& k, int h, int flag, bool aligned)
{
    const int w = k.width, K = h / 2, w16 = w / 16 * 16, c16 = w / 2 / 16 * 16;
    using R = Rule;
    if (flag == kWhole) {
        if (h == 2) {
            k.luma(0, edge(0, 1, R::EdgePlus, R::EdgePlus), w);
            k.luma(1, edge(1, 0, R::EdgePlus, R::EdgePlus), w);
            k.chroma(0, {0, 0, R::Copy, R::Copy}, 0);
            return;
        }
        k.luma(0, edge(0, 1, R::EdgeDown, R::EdgeDown), w);
        for (int r = 1; r <= h - 2; ++r)
            k.luma(r, mid(r, R::MidUp, R::Mid), w16);
        k.luma(h - 1, edge(h - 1, h - 2, R::EdgeDown, R::EdgeDown), w);
        for (int j = 0; j <= K - 2; ++j)
            k.chroma(j, {j, j + 1, R::Up, R::Down}, c16);
        k.chroma(K - 1, {K - 1, K - 2, R::Down, R::Down}, 0);
        return;
    }
    // Aligned: the wide rules everywhere.
    const int ws = aligned ? w : w16, cs = aligned ? w / 2 : c16;
    const Rule up = R::Up, upRest = aligned ? R::Up : R::Down;
    if (flag == kFirst) {
        k.luma(0, edge(0, 1, R::EdgeUp, R::EdgeDown), ws);
        for (int r = 1; r <= h - 3; ++r)
            k.luma(r, aligned ? mid(r, R::MidUp, R::MidUp) : mid(r, R::MidCross, R::Mid), ws);
        for (int j = 0; j <= K - 2; ++j)
            k.chroma(j, {j, j + 1, up, upRest}, cs);
    } else if (flag == kMiddle) {
        for (int r = -2; r <= h - 3; ++r)
            k.luma(r, mid(r, R::MidUp, aligned ? R::MidUp : R::Mid), ws);
        for (int j = -1; j <= K - 2; ++j)
            k.chroma(j, {j, j + 1, up, upRest}, cs);
    } else {
        const Rule l = aligned ? R::MidUp : R::Mid, c = aligned ? R::Up : R::Down;
        for (int r = -2; r <= h - 2; ++r)
            k.luma(r, mid(r, l, l), w);
        const Rule e = aligned ? R::EdgeUp : R::EdgeDown;
        k.luma(h - 1, edge(h - 1, h - 2, e, e), w);
        for (int j = -1; j <= K - 2; ++j)
            k.chroma(j, {j, j + 1, c, c}, 0);
        k.chroma(K - 1, {K - 1, K - 2, c, c}, 0);
    }
}

void deinterlaceToPacked(const ToPacked& k, int h, int flag)
{
    const int w = k.width, K = h / 2, w8 = w / 8 * 8, w32 = w / 32 * 32;
    using R = Rule;
    const auto pairs = [&](int r0, int r1, Rule restL, Rule restC) {
        for (int r = r0; r <= r1; ++r) {
            const int j = r >> 1;  // floor, also for the rows above the slice
            k.row(r, mid(r, R::MidUp, restL), {j, j + 1, R::Up, restC}, w32);
        }
    };
    if (flag == kWhole) {
        if (h == 2) {
            k.row(0, edge(0, 1, R::EdgePlus, R::EdgePlus), {0, 0, R::Copy, R::Copy}, w);
            k.row(1, edge(1, 0, R::EdgePlus, R::EdgePlus), {0, 0, R::Copy, R::Copy}, w);
            return;
        }
        k.row(0, edge(0, 1, R::EdgePlus, R::EdgePlus), {0, 1, R::Down, R::Down}, w);
        k.row(1, mid(1, R::MidPlus, R::MidPlus), {0, 1, R::Down, R::Down}, w);
        pairs(2, h - 3, R::MidPlus, R::Down);
        const ChromaOp last{K - 1, K - 2, R::Down, R::Down};
        k.row(h - 2, mid(h - 2, R::MidPlus, R::MidPlus), last, w);
        k.row(h - 1, edge(h - 1, h - 2, R::EdgePlus, R::EdgePlus), last, w);
        return;
    }
    if (flag == kFirst) {
        k.row(0, edge(0, 1, R::EdgeUp, R::EdgeDown), {0, 1, R::Up, R::Down}, w8);
        k.row(1, mid(1, R::MidUp, R::Mid), {0, 1, R::Up, R::Down}, w8);
        pairs(2, h - 3, R::Mid, R::Down);
        return;
    }
    pairs(-2, h - 3, R::Mid, R::Down);
    if (flag == kLast) {
        const ChromaOp last{K - 1, K - 2, R::Up, R::Down};
        k.row(h - 2, mid(h - 2, R::MidUp, R::Mid), last, w8);
        k.row(h - 1, edge(h - 1, h - 2, R::EdgeUp, R::EdgeDown), last, w8);
    }
}

// The flags that do something: whole frame (all three bits), or exactly one.
inline int sliceKind(int flag)
{
    if ((flag & kWhole) == kWhole)
        return kWhole;
    return flag == kFirst || flag == kMiddle || flag == kLast ? flag : 0;
}

}  // namespace
}  // namespace h9

using namespace h9::fmt;

ORV_FRONT(orviYCbCr420ToYCrCb420_Filter_8u_P2P3R)(const Orv8u* pSrcY, int srcYStep, const Orv8u* pSrcUV,
                                                 int srcUVStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize,
                                                 int sliceFlag)
{
    if (!pSrcY || !pSrcUV || !pDst)
        return orvStatusNullPointer;
    if (roiSize.width < 1 || roiSize.height < 1)
        return orvStatusBadSize;
    if (!pDst[0] || !pDst[1] || !pDst[2] || !dstStep)
        return orvStatusNullPointer;
    if (roiSize.width < 2 || roiSize.height < 2)
        return orvStatusBadSize;
    const int kind = h9::sliceKind(sliceFlag);
    if (!kind)
        return orvStatusOk;
    const int w = roiSize.width & ~1, h = roiSize.height & ~1;
    const h9::ToPlanes k{SemiCbCr::side(pSrcY, srcYStep, pSrcUV, srcUVStep).frame,
                         PlanarCbCr::side(pDst, dstStep).frame, w};
    const bool aligned = kind != h9::kWhole && h9::alignedFamily(pSrcY, srcYStep, pSrcUV, srcUVStep, pDst, dstStep,
                                                                 roiSize.width, h);
    h9::deinterlaceToPlanes(k, h, kind, aligned);
    return orvStatusOk;
}

ORV_FRONT(orviYCbCr420ToYCbCr422_Filter_8u_P2C2R)(const Orv8u* pSrcY, int srcYStep, const Orv8u* pSrcUV,
                                                 int srcUVStep, Orv8u* pDst, int dstStep, RoiSize roiSize,
                                                 int sliceFlag)
{
    if (!pSrcY || !pSrcUV || !pDst)
        return orvStatusNullPointer;
    if (roiSize.width < 2 || roiSize.height < 2)
        return orvStatusBadSize;
    const int kind = h9::sliceKind(sliceFlag);
    if (!kind)
        return orvStatusOk;
    const h9::ToPacked k{SemiCbCr::side(pSrcY, srcYStep, pSrcUV, srcUVStep).frame,
                         PackedYCbCr::side(pDst, dstStep).frame, roiSize.width & ~1};
    h9::deinterlaceToPacked(k, roiSize.height & ~1, kind);
    return orvStatusOk;
}
