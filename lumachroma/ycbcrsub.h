// Studio-range YCbCr with subsampled chroma (4:2:2, 4:2:0, 4:1:1): the
// layouts of the subsampled sides and the row engines of both directions.
//
// Inverse: a subsampled source is read as full-resolution pixels (Y, Cb, Cr)
// whose chroma repeats over the pixels that share a sample, so the inverse
// members run on the full-resolution row machinery of pixels8u.h (block form
// over a span, tail form after it) with the source layouts below.
//
// Forward: luma is a per-pixel form; a chroma sample is formed from the
// channel sums of the pixels that share it (a pair, a 2 by 2 square, four in
// a row). The engine here walks a row (or a pair of rows) in groups: the
// block forms on vectors of 32 pixels, summing neighbouring pixels with
// multiply-adds, a last partial vector through a small planar buffer, and
// the scalar tail forms on the rest.
#pragma once

#include <immintrin.h>

#include <algorithm>
#include <array>
#include <cstdint>

#include "frame/simd.h"
#include "lumachroma/pixels8u.h"
#include "lumachroma/ycbcrforms.h"

namespace h9::ycs {

using namespace px8;
using namespace ycc;

// ---------------------------------------------------------------------------
// Byte shuffles.

inline __m128i loadu16(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline __m256i loadu32(const uint8_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
inline void storeu32(uint8_t* p, __m256i v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }

// Each of 16 bytes twice, and each of the low 8 bytes four times: the
// chroma of 32 pixels in pixel order.
inline __m256i repeat2(__m128i c) { return _mm256_set_m128i(_mm_unpackhi_epi8(c, c), _mm_unpacklo_epi8(c, c)); }
inline __m256i repeat4(__m128i c)
{
    const __m128i x = _mm_unpacklo_epi8(c, c);
    return _mm256_set_m128i(_mm_unpackhi_epi16(x, x), _mm_unpacklo_epi16(x, x));
}

inline Wide3 widen3(__m256i a, __m256i b, __m256i c) { return {widen(a), widen(b), widen(c)}; }

template <std::size_t N>
inline __m256i mask256(const std::array<int8_t, N>& m)
{
    if constexpr (N == 16)
        return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(m.data())));
    else
        return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(m.data()));
}

// ---------------------------------------------------------------------------
// Inverse sources. Each gives pixel i as (Y, Cb, Cr) (get) and 32 pixels
// from i as 16-bit lanes (load32, i even).

// Packed 4:2:2: two pixels in four bytes; the offsets of Y0, Y1, Cb and Cr
// within the four.
struct Order422 {
    int y0, y1, cb, cr;
};
inline constexpr Order422 kOrderYCbCr = {0, 2, 1, 3};
inline constexpr Order422 kOrderYCrCb = {0, 2, 3, 1};
inline constexpr Order422 kOrderCbYCr = {1, 3, 0, 2};

// pshufb mask that sorts the four pairs of a 16-byte chunk: the eight Y to
// bytes 0-7, the four Cb to 8-11, the four Cr to 12-15.
constexpr std::array<int8_t, 16> sortPairsMask(Order422 o)
{
    std::array<int8_t, 16> m{};
    for (int j = 0; j < 8; ++j)
        m[j] = int8_t(4 * (j / 2) + ((j & 1) ? o.y1 : o.y0));
    for (int j = 0; j < 4; ++j) {
        m[8 + j] = int8_t(4 * j + o.cb);
        m[12 + j] = int8_t(4 * j + o.cr);
    }
    return m;
}

// pshufb mask that repeats bytes first, first + 1, first + 2, first + 3 and
// first + 8 .. first + 11 each twice.
constexpr std::array<int8_t, 16> repeatQuadsMask(int first)
{
    std::array<int8_t, 16> m{};
    for (int j = 0; j < 16; ++j)
        m[j] = int8_t(first + (j / 2) % 4 + (j >= 8 ? 8 : 0));
    return m;
}

// pshufb mask that repeats every second byte from `first` twice.
constexpr std::array<int8_t, 16> repeatEveryOtherMask(int first)
{
    std::array<int8_t, 16> m{};
    for (int j = 0; j < 16; ++j)
        m[j] = int8_t(first + 2 * (j / 2));
    return m;
}

template <Order422 O>
struct PackedPairsIn {
    const uint8_t* p;

    Px get(int i) const
    {
        const uint8_t* q = p + 4 * (i >> 1);
        return {q[(i & 1) ? O.y1 : O.y0], q[O.cb], q[O.cr]};
    }

    Wide3 load32(int i) const
    {
        static constexpr auto kSort = sortPairsMask(O);
        static constexpr auto kCb = repeatQuadsMask(0), kCr = repeatQuadsMask(4);
        const __m256i sort = mask256(kSort);
        const __m256i s0 = _mm256_shuffle_epi8(loadu32(p + 2 * i), sort);
        const __m256i s1 = _mm256_shuffle_epi8(loadu32(p + 2 * i + 32), sort);
        // s0 = Y 0-7, C 0-3, Y 8-15, C 4-7 (eight bytes each), s1 likewise
        // for pixels 16-31; the 64-bit unpacks and a permutation put the Y
        // and the chroma quads in order.
        const __m256i y = _mm256_permute4x64_epi64(_mm256_unpacklo_epi64(s0, s1), 0xD8);
        const __m256i c = _mm256_permute4x64_epi64(_mm256_unpackhi_epi64(s0, s1), 0xD8);
        return widen3(y, _mm256_shuffle_epi8(c, mask256(kCb)), _mm256_shuffle_epi8(c, mask256(kCr)));
    }

    // The 64 bytes of 32 pixels from i in two registers w0, w1 of whole
    // pairs. Pixel order (Quads false): w0 = pixels 0-7 | 16-23, w1 = 8-15 |
    // 24-31, the unpack order of Wide. Quad order (Quads true): w0 = 0-3,
    // 8-11 | 4-7, 12-15, w1 the same for 16-31, which packs to the order
    // that four-byte stores take without crossing lanes (storeQuads).
    template <bool Quads>
    void load64(int i, __m256i& w0, __m256i& w1) const
    {
        const uint8_t* s = p + 2 * i;
        if constexpr (Quads) {
            // A plain load of pixels 0-15 already holds 0-3 and 12-15 in
            // their places; the 16 bytes of pixels 4-11, loaded into both
            // lanes, give 8-11 to the upper half of lane 0 and 4-7 to the
            // lower half of lane 1. One blend, and no shuffle port.
            auto quads = [](const uint8_t* q) {
                const __m256i mid = _mm256_broadcastsi128_si256(loadu16(q + 8));
                return _mm256_blend_epi32(loadu32(q), mid, 0x3C);
            };
            w0 = quads(s);
            w1 = quads(s + 32);
        } else {
            w0 = simd::load2x128(s, s + 32);
            w1 = simd::load2x128(s + 16, s + 48);
        }
    }
};

// Four-byte pixels with a constant fourth byte, from channels in quad order:
// pixels 0-3, 8-11, 16-19, 24-27 in lane 0, the others in lane 1.
template <bool Swap>
inline void storeQuads(const PackedOut<4, Swap, Alpha::Value>& out, int i, __m256i x0, __m256i x1, __m256i x2)
{
    const __m256i c0 = Swap ? x2 : x0, c2 = Swap ? x0 : x2, a = _mm256_set1_epi8(char(out.alpha));
    const __m256i lo01 = _mm256_unpacklo_epi8(c0, x1), hi01 = _mm256_unpackhi_epi8(c0, x1);
    const __m256i lo2a = _mm256_unpacklo_epi8(c2, a), hi2a = _mm256_unpackhi_epi8(c2, a);
    uint8_t* d = out.p + 4 * i;
    storeu32(d, _mm256_unpacklo_epi16(lo01, lo2a));
    storeu32(d + 32, _mm256_unpackhi_epi16(lo01, lo2a));
    storeu32(d + 64, _mm256_unpacklo_epi16(hi01, hi2a));
    storeu32(d + 96, _mm256_unpackhi_epi16(hi01, hi2a));
}
template <class Out>
constexpr bool kStoresQuads = requires(const Out& o, __m256i v) { storeQuads(o, 0, v, v, v); };

// Three planes, chroma at 1/H of the width. `lastC` is the last chroma
// sample a pixel may take: pixels past the last whole group of a row take
// the samples of that group.
template <int H>
struct PlanarSubIn {
    const uint8_t* y;
    const uint8_t* cb;
    const uint8_t* cr;
    int lastC;

    Px get(int i) const
    {
        const int k = std::min(i / H, lastC);
        return {y[i], cb[k], cr[k]};
    }

    Wide3 load32(int i) const
    {
        if constexpr (H == 2)
            return widen3(loadu32(y + i), repeat2(loadu16(cb + i / 2)), repeat2(loadu16(cr + i / 2)));
        else
            return widen3(loadu32(y + i), repeat4(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(cb + i / 4))),
                          repeat4(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(cr + i / 4))));
    }

    Wide luma32(int i) const
        requires(H == 2)
    {
        return widen(loadu32(y + i));
    }
    void chroma16(int i, V& u, V& v) const
        requires(H == 2)
    {
        u = _mm256_cvtepu8_epi16(loadu16(cb + i / 2));
        v = _mm256_cvtepu8_epi16(loadu16(cr + i / 2));
    }
};

// Luma plane and one plane of chroma pairs, Cb first or Cr first.
template <bool CbFirst>
struct SemiPlanarIn {
    const uint8_t* y;
    const uint8_t* uv;

    Px get(int i) const
    {
        const uint8_t* c = uv + (i & ~1);
        return {y[i], c[CbFirst ? 0 : 1], c[CbFirst ? 1 : 0]};
    }

    Wide3 load32(int i) const
    {
        static constexpr auto kFirst = repeatEveryOtherMask(0), kSecond = repeatEveryOtherMask(1);
        const __m256i c = loadu32(uv + i);
        const __m256i first = _mm256_shuffle_epi8(c, mask256(kFirst)), second = _mm256_shuffle_epi8(c, mask256(kSecond));
        return widen3(loadu32(y + i), CbFirst ? first : second, CbFirst ? second : first);
    }

    Wide luma32(int i) const { return widen(loadu32(y + i)); }
    void chroma16(int i, V& cb, V& cr) const
    {
        const __m256i c = loadu32(uv + i);
        const V first = _mm256_and_si256(c, k16(0xFF)), second = _mm256_srli_epi16(c, 8);
        cb = CbFirst ? first : second;
        cr = CbFirst ? second : first;
    }
};

// ---------------------------------------------------------------------------
// Inverse block forms split into a luma term and three chroma terms, joined
// per pixel: R = (a + r) >> S, G = (a - g) >> S (or a + g where the green
// weights carry their sign), B = (a + b) >> S. The chroma terms are then
// formed once per chroma sample and shared by every pixel (and row) that
// repeats it. The results are those of the forms' `lanes`: in the forms
// with saturating adds no partial sum comes near the 16-bit limits (luma
// terms below 4500, chroma terms below 4200 in size), so the adds are exact
// and neither their order nor the place of the rounding term matters; the
// other forms wrap, which is order-free too.

// The weights of a split form whose green terms are subtracted, for the
// engine on packed pairs below: luma on 128 Y' (or 16 Y where wy is 0),
// chroma on 128 Cb' and 128 Cr', and the rounding term of the luma term.
struct SplitWeights {
    int wy, wrv, wgu, wgv, wbu, rnd;
};

// Studio-range luma at 12 fraction bits, rounding Rnd, 3 guard bits.
template <int Rnd>
struct SplitIB : FormIBr<Rnd> {
    static constexpr int kShift = 3;
    static constexpr bool kAddG = false;
    static constexpr SplitWeights kWeights = {4769, 6537, 1605, 3330, 8263, Rnd};
    static V lumaTerm(V y) { return add(hiS(shl<7>(sub(y, 16)), 4769), Rnd); }
    static V3 chromaTerms(V cb, V cr)
    {
        const V cb128 = shl<7>(sub(cb, 128)), cr128 = shl<7>(sub(cr, 128));
        return {hiS(cr128, 6537), _mm256_add_epi16(hiS(cb128, 1605), hiS(cr128, 3330)), hiS(cb128, 8263)};
    }
};

// 13 fraction bits, 4 guard bits, rounding 8.
struct SplitIC : FormIC {
    static constexpr int kShift = 4;
    static constexpr bool kAddG = false;
    static constexpr SplitWeights kWeights = {9535, 13074, 3211, 6660, 16523, 8};
    static V lumaTerm(V y) { return add(hiS(shl<7>(sub(y, 16)), 9535), 8); }
    static V3 chromaTerms(V cb, V cr)
    {
        const V cb128 = shl<7>(sub(cb, 128)), cr128 = shl<7>(sub(cr, 128));
        return {hiS(cr128, 13074), _mm256_add_epi16(hiS(cr128, 6660), hiS(cb128, 3211)), hiS(cb128, 16523)};
    }
};

template <class B>
inline V3 joinTerms(V a, const V3& t)
{
    const V g = B::kAddG ? _mm256_add_epi16(a, t.b) : _mm256_sub_epi16(a, t.b);
    return {_mm256_srai_epi16(_mm256_add_epi16(a, t.a), B::kShift), _mm256_srai_epi16(g, B::kShift),
            _mm256_srai_epi16(_mm256_add_epi16(a, t.c), B::kShift)};
}

template <class B, class In>
constexpr bool kSplits = requires(const In& in, V v) {
    B::chromaTerms(v, v);
    in.chroma16(0, v, v);
};

// Packed pairs in place. Read as 16-bit lanes, a pair is two lanes, each
// one pixel's luma byte beside one chroma byte (Cb in one lane, Cr in the
// other), so luma and chroma need no sorting: a byte multiply-add with 128
// on one byte and 0 on the other, after the bytes are flipped to v - 128,
// gives 128 (v - 128) of either byte in every lane (at most 16384 in size,
// no saturation). One product per lane gives the Cb term in the Cb lane and
// the Cr term in the Cr lane (red and blue; green's two parts likewise), and
// a byte shuffle repeats a lane over the pair or swaps the two. Where the
// rounding term is half the last step, (x + rnd) >> S is one rounding
// multiply-high by 2^(15 - S): (x 2^(15 - S) + 2^14) >> 15. The sums are the
// forms' own, exact in 16 bits (see above), so the bytes are the same.
template <class B>
constexpr bool halfRounding()
{
    if constexpr (requires { B::kWeights; })
        return B::kWeights.rnd == (1 << (B::kShift - 1)) && !B::kAddG;
    else
        return false;
}
template <class B>
constexpr bool kPairLanes = halfRounding<B>();

// pshufb mask that repeats lane `lane` (0 or 1) of each pair of 16-bit lanes
// over the pair, or (lane -1) swaps the two.
constexpr std::array<int8_t, 16> pairLaneMask(int lane)
{
    std::array<int8_t, 16> m{};
    for (int j = 0; j < 16; ++j) {
        const int from = lane < 0 ? ((j >> 1) & 1) ^ 1 : lane;
        m[j] = int8_t(4 * (j / 4) + 2 * from + (j & 1));
    }
    return m;
}

// The two 16-bit weights of a pair, the Cb lane's and the Cr lane's.
template <Order422 O>
inline __m256i pairWeights(int wcb, int wcr)
{
    const int lo = (O.cb & 2) ? wcr : wcb, hi = (O.cb & 2) ? wcb : wcr;
    return _mm256_set1_epi32(int32_t(uint32_t(uint16_t(lo)) | (uint32_t(uint16_t(hi)) << 16)));
}

// R, G, B of the 16 pixels of w (whole pairs) by the split form B, in the
// lane order of w.
template <class B, Order422 O>
inline V3 pairLanes(__m256i w)
{
    constexpr SplitWeights k = B::kWeights;
    static constexpr auto kRepeatCb = pairLaneMask(O.cb >> 1), kRepeatCr = pairLaneMask(O.cr >> 1);
    static constexpr auto kSwap = pairLaneMask(-1);
    const int16_t lumaByte = O.y0 == 0 ? 0x0080 : int16_t(0x8000), chromaByte = O.y0 == 0 ? int16_t(0x8000) : 0x0080;
    const __m256i x = _mm256_xor_si256(w, _mm256_set1_epi8(char(0x80)));
    const V c = _mm256_maddubs_epi16(k16(chromaByte), x);
    V a;
    if constexpr (k.wy == 0)
        a = add(_mm256_maddubs_epi16(k16(O.y0 == 0 ? 0x0010 : 0x1000), x), 2048);  // 16 Y
    else
        a = hiS(add(_mm256_maddubs_epi16(k16(lumaByte), x), 14336), k.wy);  // 128 (Y - 16)
    const V rb = _mm256_mulhi_epi16(c, pairWeights<O>(k.wbu, k.wrv));
    const V g = _mm256_mulhi_epi16(c, pairWeights<O>(k.wgu, k.wgv));
    const V r = _mm256_add_epi16(a, _mm256_shuffle_epi8(rb, mask256(kRepeatCr)));
    const V gg = _mm256_sub_epi16(_mm256_sub_epi16(a, g), _mm256_shuffle_epi8(g, mask256(kSwap)));
    const V b = _mm256_add_epi16(a, _mm256_shuffle_epi8(rb, mask256(kRepeatCb)));
    const V m = k16(1 << (15 - B::kShift));
    return {_mm256_mulhrs_epi16(r, m), _mm256_mulhrs_epi16(gg, m), _mm256_mulhrs_epi16(b, m)};
}

// 32 pixels of one packed row from pixel i by pairLanes.
template <class B, Order422 O, class Out>
[[gnu::always_inline]] inline void pairBlock(const PackedPairsIn<O>& in, const Out& out, int i)
{
    constexpr bool kQuads = kStoresQuads<Out>;
    __m256i w0, w1;
    in.template load64<kQuads>(i, w0, w1);
    const V3 x = pairLanes<B, O>(w0), y = pairLanes<B, O>(w1);
    const __m256i c0 = packBytes({x.a, y.a}), c1 = packBytes({x.b, y.b}), c2 = packBytes({x.c, y.c});
    if constexpr (kQuads)
        storeQuads(out, i, c0, c1, c2);
    else
        out.store32(i, c0, c1, c2);
}

// Whole vectors of 32 pixels of one packed row, up to `end`; two a step,
// which gives the scheduler two independent chains of multiplies.
template <class B, Order422 O, class Out>
[[gnu::flatten]] inline int pairBlocks(const PackedPairsIn<O>& src, const Out& dst, int end)
{
    // Local copies: the compiler keeps the pointers and the alpha byte in
    // registers instead of reading them back after every store.
    const PackedPairsIn<O> in = src;
    const Out out = dst;
    int i = 0;
    for (; i + 64 <= end; i += 64) {
        pairBlock<B>(in, out, i);
        pairBlock<B>(in, out, i + 32);
    }
    if (i + 32 <= end) {
        pairBlock<B>(in, out, i);
        i += 32;
    }
    return i;
}

template <class B, class In, class Out>
constexpr bool kPairBlocks = kPairLanes<B> && requires(const In& in, const Out& out) { pairBlocks<B>(in, out, 0); };

// Whole vectors of 32 pixels of K rows that share their chroma (4:2:0 pairs
// of rows, or one row), by the split form B, up to `end`; returns where the
// vectors stopped (0 when the scalar forms are asked for).
template <class B, std::size_t K, class In, class Out>
[[gnu::flatten]] inline int splitBlocks(const std::array<In, K>& in, const std::array<Out, K>& out, int end)
{
    if (g_scalarBlocks)
        return 0;
    if constexpr (K == 1 && kPairBlocks<B, In, Out>) {
        return pairBlocks<B>(in[0], out[0], end);
    } else {
        int i = 0;
        for (; i + 32 <= end; i += 32) {
            V cb, cr;
            in[0].chroma16(i, cb, cr);
            const V3 t = B::chromaTerms(cb, cr);
            // Each term twice, in the pixel order of Wide.
            const V3 lo = {_mm256_unpacklo_epi16(t.a, t.a), _mm256_unpacklo_epi16(t.b, t.b), _mm256_unpacklo_epi16(t.c, t.c)};
            const V3 hi = {_mm256_unpackhi_epi16(t.a, t.a), _mm256_unpackhi_epi16(t.b, t.b), _mm256_unpackhi_epi16(t.c, t.c)};
            for (std::size_t k = 0; k < K; ++k) {
                const Wide y = in[k].luma32(i);
                const V3 l = joinTerms<B>(B::lumaTerm(y.lo), lo), h = joinTerms<B>(B::lumaTerm(y.hi), hi);
                out[k].store32(i, packBytes({l.a, h.a}), packBytes({l.b, h.b}), packBytes({l.c, h.c}));
            }
        }
        return i;
    }
}

// K rows sharing their chroma by the kernel Kr: the block form over
// [0, spanEnd) (split vectors where form and layout allow, the rest as in
// the full-resolution rows), the tail form after it.
template <class Kr, std::size_t K, class In, class Out>
inline void convertSubRows(const std::array<In, K>& in, const std::array<Out, K>& out, int width)
{
    using B = typename Kr::Block;
    const int end = Kr::spanEnd(width);
    int i = 0;
    if constexpr (kSplits<B, In> || kPairBlocks<B, In, Out>)
        i = splitBlocks<B>(in, out, end);
    for (std::size_t k = 0; k < K; ++k) {
        blockSpan<B>(in[k], out[k], i, end);
        tailSpan<typename Kr::Tail>(in[k], out[k], end, width);
    }
}

// ---------------------------------------------------------------------------
// Forward sources: the pixels8u layouts, read as R, G, B whatever the byte
// order (Bgr: the first byte is B).
template <class In, bool Bgr>
struct RgbIn {
    In in;

    Px get(int i) const
    {
        Px p = in.get(i);
        if constexpr (Bgr)
            std::swap(p[0], p[2]);
        return p;
    }
    Wide3 load32(int i) const
    {
        Wide3 w = in.load32(i);
        if constexpr (Bgr)
            std::swap(w.a, w.c);
        return w;
    }
    Bytes3 bytes32(int i) const
        requires requires(In x) { x.bytes32(0); }
    {
        Bytes3 x = in.bytes32(i);
        if constexpr (Bgr)
            std::swap(x.a, x.c);
        return x;
    }
};

// ---------------------------------------------------------------------------
// Forward forms. A form set F gives
//   uint8_t F::yBlock(int r, int g, int b)   V F::yBlock(V r, V g, V b)
//   uint8_t F::yTail(int r, int g, int b, int pos)   (pos: place in the group)
//   C2 F::cBlock(int sr, int sg, int sb)    void F::cBlock(V sr, V sg, V sb, V& cb, V& cr)
//   C2 F::cTail(int sr, int sg, int sb)
// on the channel sums sr, sg, sb of the pixels that share the sample.
struct C2 {
    uint8_t cb, cr;
};

// A forward matrix as data: the weights and offsets of the scalar forms (16
// fraction bits) and of the block forms (16-bit lanes), and the range of the
// results. With the range 0 .. 255 the scalar results are kept to 8 bits (the
// weights keep them in range, and the chroma offsets give 128 only modulo
// 256); a narrower range clamps both forms.
struct ForwardMatrix {
    Weights3 y, cb, cr;  // scalar weights, 16 fraction bits
    int yOffset;         // scalar luma offset (with its rounding)
    int cOffset2;        // scalar chroma offset on sums of two, >> 17
    int cOffset4;        // scalar chroma offset on sums of four, >> 18
    Weights3 yBlock;     // block luma: (x << 8) * w >> 16, unsigned, summed saturating
    int yBlockOffset;    // then + offset (saturating), >> 7
    Weights3 cbBlock, crBlock;  // block chroma: ((s << pre) * w) >> 16 each
    bool negateAfter;    // negative weights: product on |w| truncated, then subtracted
    int cBlockOffset;    // + offset, 16-bit wrap, logical >> cBlockShift
    int cBlockShift;
    int lo, hi;          // range of the results
};

// Studio-range BT.601.
inline constexpr ForwardMatrix k601 = {kWY, kWCb, kWCr, 0x108000, -0xFFC000, -0x1FF8000, {8422, 16515, 3212}, 2112,
                                       kWCb, kWCr, false, 16448, 7, 0, 255};

// BT.709 in studio range: block chroma products on the positive weight,
// truncated, then subtracted.
inline constexpr ForwardMatrix k709Studio = {{11993, 40239, 4063}, {-6619, -22151, 28770}, {28770, -26149, -2621},
                                             0x108000, -0xFFC000, -0x1FF8000, {5997, 20120, 2032}, 2112,
                                             {-6619, -22151, 28770}, {28770, -26149, -2621}, true, 16448, 7, 0, 255};

// BT.709 with full-scale luma (no offset of 16), results kept in 1 .. 254;
// block chroma weights at 15 fraction bits, + 8224 (128.5), >> 6.
inline constexpr ForwardMatrix k709Full = {{13959, 46858, 4719}, {-7668, -25821, 33489}, {33489, -30409, -3080},
                                           32768, 0x1010000, 0x2020000, {6980, 23429, 2359}, 64,
                                           {-3834, -12911, 16744}, {16744, -15204, -1540}, false, 8224, 6, 1, 254};

// The forms of a matrix M on groups whose sums are pre-shifted by Pre
// (6 for sums of two pixels, 5 for sums of four).
template <ForwardMatrix M, int Pre>
struct FormsOf {
    static constexpr bool kKeep8 = M.lo == 0 && M.hi == 255;
    static uint8_t range(int v) { return kKeep8 ? uint8_t(v) : uint8_t(std::clamp(v, M.lo, M.hi)); }
    static V range(V v)
    {
        if constexpr (kKeep8)
            return v;
        else
            return _mm256_min_epi16(_mm256_max_epi16(v, k16(M.lo)), k16(M.hi));
    }

    static uint8_t yBlock(int r, int g, int b)
    {
        const uint16_t t = addsU16(addsU16(hiU(r << 8, M.yBlock.r), hiU(g << 8, M.yBlock.g)), hiU(b << 8, M.yBlock.b));
        return range(satU8(addsU16(t, M.yBlockOffset) >> 7));
    }
    static V yBlock(V r, V g, V b) { return yBlock8(shl<8>(r), shl<8>(g), shl<8>(b)); }
    // The same on the channels already shifted up by 8.
    static V yBlock8(V r8, V g8, V b8)
    {
        const V t = addsU(addsU(hiU(r8, M.yBlock.r), hiU(g8, M.yBlock.g)), hiU(b8, M.yBlock.b));
        return range(srl<7>(addsU(t, M.yBlockOffset)));
    }
    static uint8_t yTail(int r, int g, int b, int) { return range((r * M.y.r + g * M.y.g + b * M.y.b + M.yOffset) >> 16); }

    static int term(int s, int w) { return (M.negateAfter && w < 0) ? -hiS(s << Pre, -w) : hiS(s << Pre, w); }
    static V term(V s, int w)
    {
        return (M.negateAfter && w < 0) ? _mm256_sub_epi16(_mm256_setzero_si256(), hiS(shl<Pre>(s), -w)) : hiS(shl<Pre>(s), w);
    }
    static uint8_t cOne(int sr, int sg, int sb, Weights3 w)
    {
        const uint16_t t = wrap16(term(sr, w.r) + term(sg, w.g) + term(sb, w.b));
        return range(satU8(wrap16(t + M.cBlockOffset) >> M.cBlockShift));
    }
    static V cOne(V sr, V sg, V sb, Weights3 w)
    {
        const V t = _mm256_add_epi16(_mm256_add_epi16(term(sr, w.r), term(sg, w.g)), term(sb, w.b));
        return range(_mm256_srli_epi16(add(t, M.cBlockOffset), M.cBlockShift));
    }
    static C2 cBlock(int sr, int sg, int sb) { return {cOne(sr, sg, sb, M.cbBlock), cOne(sr, sg, sb, M.crBlock)}; }
    static void cBlock(V sr, V sg, V sb, V& cb, V& cr)
    {
        cb = cOne(sr, sg, sb, M.cbBlock);
        cr = cOne(sr, sg, sb, M.crBlock);
    }

    static uint8_t cTailOne(int sr, int sg, int sb, Weights3 w)
    {
        const int v = sr * w.r + sg * w.g + sb * w.b;
        return range(Pre == 6 ? (v + M.cOffset2) >> 17 : (v + M.cOffset4) >> 18);
    }
    static C2 cTail(int sr, int sg, int sb) { return {cTailOne(sr, sg, sb, M.cb), cTailOne(sr, sg, sb, M.cr)}; }
};

// The forms of most BT.601 members: sums of two pixels (Pair) or of four (Quad).
using FormsPair = FormsOf<k601, 6>;
using FormsQuad = FormsOf<k601, 5>;

// ---------------------------------------------------------------------------
// Forward destinations. Each takes luma pixel i of row k (y), chroma
// sample j (c), and 32 pixels from i: luma bytes per row and the chroma
// samples, Cb in the low and Cr in the high half of `c` (store32).

// Three planes, chroma at 1/H of the width, K luma rows per chroma row.
template <int H, int K>
struct PlanarSubOut {
    uint8_t* y[K];
    uint8_t* cb;
    uint8_t* cr;

    void putY(int k, int i, uint8_t v) const { y[k][i] = v; }
    void putC(int j, C2 c) const
    {
        cb[j] = c.cb;
        cr[j] = c.cr;
    }
    void store32(int i, const __m256i (&ys)[K], __m256i c) const
    {
        for (int k = 0; k < K; ++k)
            storeu32(y[k] + i, ys[k]);
        if constexpr (H == 2) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(cb + i / 2), _mm256_castsi256_si128(c));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(cr + i / 2), _mm256_extracti128_si256(c, 1));
        } else {
            _mm_storel_epi64(reinterpret_cast<__m128i*>(cb + i / 4), _mm256_castsi256_si128(c));
            _mm_storel_epi64(reinterpret_cast<__m128i*>(cr + i / 4), _mm256_extracti128_si256(c, 1));
        }
    }
};

// Two luma rows and one row of chroma pairs, Cb first.
struct SemiPlanarOut {
    uint8_t* y[2];
    uint8_t* uv;

    void putY(int k, int i, uint8_t v) const { y[k][i] = v; }
    void putC(int j, C2 c) const
    {
        uv[2 * j] = c.cb;
        uv[2 * j + 1] = c.cr;
    }
    void store32(int i, const __m256i (&ys)[2], __m256i c) const
    {
        storeu32(y[0] + i, ys[0]);
        storeu32(y[1] + i, ys[1]);
        const __m128i cb = _mm256_castsi256_si128(c), cr = _mm256_extracti128_si256(c, 1);
        storeu32(uv + i, _mm256_set_m128i(_mm_unpackhi_epi8(cb, cr), _mm_unpacklo_epi8(cb, cr)));
    }
};

// Packed 4:2:2 in the byte order O.
template <Order422 O>
struct PackedPairsOut {
    uint8_t* p;

    void putY(int, int i, uint8_t v) const { p[4 * (i >> 1) + ((i & 1) ? O.y1 : O.y0)] = v; }
    void putC(int j, C2 c) const
    {
        p[4 * j + O.cb] = c.cb;
        p[4 * j + O.cr] = c.cr;
    }
    // Luma bytes y (pixel order) and the chroma of the 16 pairs, Cb in the
    // low half of c and Cr in the high half, to 64 bytes.
    static void interleave(uint8_t* d, __m256i y, __m256i c)
    {
        const __m128i cb = _mm256_castsi256_si128(c), cr = _mm256_extracti128_si256(c, 1);
        const __m128i first = O.cb < O.cr ? cb : cr, second = O.cb < O.cr ? cr : cb;
        const __m256i cc = _mm256_set_m128i(_mm_unpackhi_epi8(first, second), _mm_unpacklo_epi8(first, second));
        const bool yFirst = O.y0 == 0;
        const __m256i u0 = yFirst ? _mm256_unpacklo_epi8(y, cc) : _mm256_unpacklo_epi8(cc, y);
        const __m256i u1 = yFirst ? _mm256_unpackhi_epi8(y, cc) : _mm256_unpackhi_epi8(cc, y);
        storeu32(d, _mm256_permute2x128_si256(u0, u1, 0x20));
        storeu32(d + 32, _mm256_permute2x128_si256(u0, u1, 0x31));
    }
    void store32(int i, const __m256i (&ys)[1], __m256i c) const { interleave(p + 2 * i, ys[0], c); }
};

// ---------------------------------------------------------------------------
// The forward engine.

// Channel sums of neighbouring pixels: 32 pixels of one channel (in the
// unpack order of Wide) to the 16 sums of pairs in order.
inline V pairSums(const Wide& w)
{
    const __m256i ones = _mm256_set1_epi16(1);
    return _mm256_packs_epi32(_mm256_madd_epi16(w.lo, ones), _mm256_madd_epi16(w.hi, ones));
}
// Pair sums to the 8 sums of four, in order, in lanes 0-7.
inline V quadSums(V pairs)
{
    const __m256i q = _mm256_madd_epi16(pairs, _mm256_set1_epi16(1));
    return _mm256_permute4x64_epi64(_mm256_packs_epi32(q, q), 0x08);
}

// 32 pixels of K rows through the block forms: luma bytes of each row, and
// the chroma samples of the groups of H by K pixels, Cb in the low half of
// `c`, Cr in the high half.
template <class F, int H, int K>
[[gnu::flatten]] inline void block32(const Wide3 (&x)[K], __m256i (&ys)[K], __m256i& c)
{
    Wide s[3];
    for (int k = 0; k < K; ++k) {
        ys[k] = packBytes({F::yBlock(x[k].a.lo, x[k].b.lo, x[k].c.lo), F::yBlock(x[k].a.hi, x[k].b.hi, x[k].c.hi)});
        const Wide* ch[3] = {&x[k].a, &x[k].b, &x[k].c};
        for (int j = 0; j < 3; ++j)
            s[j] = k == 0 ? *ch[j] : Wide{_mm256_add_epi16(s[j].lo, ch[j]->lo), _mm256_add_epi16(s[j].hi, ch[j]->hi)};
    }
    V sr = pairSums(s[0]), sg = pairSums(s[1]), sb = pairSums(s[2]);
    if constexpr (H == 4) {
        sr = quadSums(sr);
        sg = quadSums(sg);
        sb = quadSums(sb);
    }
    V cb, cr;
    F::cBlock(sr, sg, sb, cb, cr);
    c = _mm256_permute4x64_epi64(_mm256_packus_epi16(cb, cr), 0xD8);
}

// The same from the channel bytes of K rows: luma from the bytes unpacked
// into the high halves of 16-bit lanes (the channels shifted up by 8, as the
// luma forms want them), the sums of pairs by a byte multiply-add.
template <class F, int H, int K>
[[gnu::flatten]] inline void block32(const Bytes3 (&x)[K], __m256i (&ys)[K], __m256i& c)
{
    const __m256i z = _mm256_setzero_si256(), ones = _mm256_set1_epi8(1);
    V s[3];
    for (int k = 0; k < K; ++k) {
        auto lo = [&](__m256i v) { return _mm256_unpacklo_epi8(z, v); };
        auto hi = [&](__m256i v) { return _mm256_unpackhi_epi8(z, v); };
        ys[k] = _mm256_packus_epi16(F::yBlock8(lo(x[k].a), lo(x[k].b), lo(x[k].c)),
                                    F::yBlock8(hi(x[k].a), hi(x[k].b), hi(x[k].c)));
        const __m256i ch[3] = {x[k].a, x[k].b, x[k].c};
        for (int j = 0; j < 3; ++j) {
            const V pairs = _mm256_maddubs_epi16(ch[j], ones);
            s[j] = k == 0 ? pairs : _mm256_add_epi16(s[j], pairs);
        }
    }
    if constexpr (H == 4)
        for (V& v : s)
            v = quadSums(v);
    V cb, cr;
    F::cBlock(s[0], s[1], s[2], cb, cr);
    c = _mm256_permute4x64_epi64(_mm256_packus_epi16(cb, cr), 0xD8);
}

// One group of H by K pixels from pixel i by the block (Block) or tail forms.
template <class F, int H, int K, bool Block, class In, class Out>
inline void group(const std::array<In, K>& in, const Out& out, int i)
{
    int s[3] = {0, 0, 0};
    for (int k = 0; k < K; ++k)
        for (int h = 0; h < H; ++h) {
            const Px p = in[k].get(i + h);
            out.putY(k, i + h, Block ? F::yBlock(p[0], p[1], p[2]) : F::yTail(p[0], p[1], p[2], h));
            s[0] += p[0];
            s[1] += p[1];
            s[2] += p[2];
        }
    out.putC(i / H, Block ? F::cBlock(s[0], s[1], s[2]) : F::cTail(s[0], s[1], s[2]));
}

// One row (K rows for one chroma row) of `width` pixels, whole groups only:
// the block forms on [0, end), the tail forms on the rest.
template <class F, int H, int K, class In, class Out>
[[gnu::flatten]] inline void forwardRow(const std::array<In, K>& in, const Out& out, int end, int width)
{
    int i = 0;
    if (g_scalarBlocks) {
        for (; i < end; i += H)
            group<F, H, K, true>(in, out, i);
    } else {
        for (; i + 32 <= end; i += 32) {
            __m256i ys[K], c;
            if constexpr (requires { in[0].bytes32(0); }) {
                Bytes3 x[K];
                for (int k = 0; k < K; ++k)
                    x[k] = in[k].bytes32(i);
                block32<F, H, K>(x, ys, c);
            } else {
                Wide3 x[K];
                for (int k = 0; k < K; ++k)
                    x[k] = in[k].load32(i);
                block32<F, H, K>(x, ys, c);
            }
            out.store32(i, ys, c);
        }
        if (i < end) {
            // The last pixels of the block part through a planar buffer.
            const int n = end - i;
            alignas(32) uint8_t buf[K][3][32] = {};
            Wide3 x[K];
            for (int k = 0; k < K; ++k) {
                for (int j = 0; j < n; ++j) {
                    const Px p = in[k].get(i + j);
                    buf[k][0][j] = p[0];
                    buf[k][1][j] = p[1];
                    buf[k][2][j] = p[2];
                }
                x[k] = PlanesIn{{buf[k][0], buf[k][1], buf[k][2]}}.load32(0);
            }
            __m256i ys[K], c;
            block32<F, H, K>(x, ys, c);
            alignas(32) uint8_t yb[K][32], cb[32];
            for (int k = 0; k < K; ++k) {
                storeu32(yb[k], ys[k]);
                for (int j = 0; j < n; ++j)
                    out.putY(k, i + j, yb[k][j]);
            }
            storeu32(cb, c);
            for (int j = 0; j < n / H; ++j)
                out.putC(i / H + j, C2{cb[j], cb[16 + j]});
            i = end;
        }
    }
    for (; i < width; i += H)
        group<F, H, K, false>(in, out, i);
}

}  // namespace h9::ycs
