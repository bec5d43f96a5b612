// Eight-bit, three-channel conversions at full resolution: the clamp table,
// 16-bit lane arithmetic with its exact scalar counterparts, the pixel
// layouts (interleaved or planar, with their alpha rules) and the one row
// runner that the YUV and YCbCr families share.
//
// A conversion is a kernel made of two forms, each a struct with a scalar
// statement per pixel (`scalar`) and, where the form runs on vectors, the same
// arithmetic on a vector of 16 pixels (`lanes`; the row runner feeds it two
// vectors per step of 32 pixels). Forms written in 32-bit arithmetic also
// offer `words`, eight pixels in 32-bit lanes. The kernel's span rule says how
// many leading pixels of a row take the block form; the rest take the tail
// form. The row runner applies this split once for every kernel and layout.
#pragma once

#include <immintrin.h>

#include <array>
#include <cstdint>

#include "frame/driver.h"
#include "frame/scalar.h"
#include "frame/simd.h"
#include "orvcc.h"

namespace h9 {

// ---------------------------------------------------------------------------
// The clamp table: 1000 bytes with the origin at byte 370, so it takes
// indices -370 .. 629; below 0 it gives 0, above 255 it gives 255.
inline constexpr int kChopOrigin = 370;
inline constexpr int kChopSize = 1000;
inline constexpr std::array<uint8_t, kChopSize> kChopTable = [] {
    std::array<uint8_t, kChopSize> t{};
    for (int i = 0; i < kChopSize; ++i) {
        const int v = i - kChopOrigin;
        t[i] = uint8_t(v < 0 ? 0 : v > 255 ? 255 : v);
    }
    return t;
}();
inline uint8_t chop(int i) { return kChopTable[kChopOrigin + i]; }

namespace px8 {

using Px = std::array<uint8_t, 3>;

// ---------------------------------------------------------------------------
// Scalar images of the 16-bit lane instructions not already in scalar.h.
inline int16_t addsS16(int32_t a, int32_t b) { return satS16(a + b); }                        // paddsw
inline int16_t subsS16(int32_t a, int32_t b) { return satS16(a - b); }                        // psubsw
inline uint16_t wrap16(int32_t v) { return static_cast<uint16_t>(v); }                        // paddw
inline uint16_t hiU(int x, int w) { return mulhiU16(uint16_t(x), uint16_t(w)); }              // pmulhuw
inline int16_t hiS(int x, int w) { return mulhiS16(int16_t(x), int16_t(w)); }                 // pmulhw

// ---------------------------------------------------------------------------
// 16 pixels of one channel in 16-bit lanes.
using V = __m256i;

struct V3 {
    V a, b, c;
};

inline V k16(int w) { return _mm256_set1_epi16(int16_t(w)); }
inline V hiU(V x, int w) { return _mm256_mulhi_epu16(x, k16(w)); }
inline V hiS(V x, int w) { return _mm256_mulhi_epi16(x, k16(w)); }
inline V addsU(V a, V b) { return _mm256_adds_epu16(a, b); }
inline V addsU(V a, int w) { return _mm256_adds_epu16(a, k16(w)); }
inline V addsS(V a, V b) { return _mm256_adds_epi16(a, b); }
inline V addsS(V a, int w) { return _mm256_adds_epi16(a, k16(w)); }
inline V subsS(V a, V b) { return _mm256_subs_epi16(a, b); }
inline V add(V a, int w) { return _mm256_add_epi16(a, k16(w)); }
inline V sub(V a, int w) { return _mm256_sub_epi16(a, k16(w)); }
template <int N>
inline V shl(V a) { return _mm256_slli_epi16(a, N); }
template <int N>
inline V sra(V a) { return _mm256_srai_epi16(a, N); }
template <int N>
inline V srl(V a) { return _mm256_srli_epi16(a, N); }

// Forms written in 32-bit arithmetic run on two halves of eight 32-bit lanes;
// their results (at most a few hundred either side of the byte range) narrow
// back to 16-bit lanes without loss.
struct W3 {
    __m256i a, b, c;
};

template <class F>
inline V3 in32(const V3& x, F f)
{
    auto lo = [](V v) { return _mm256_cvtepu16_epi32(_mm256_castsi256_si128(v)); };
    auto hi = [](V v) { return _mm256_cvtepu16_epi32(_mm256_extracti128_si256(v, 1)); };
    const W3 l = f(W3{lo(x.a), lo(x.b), lo(x.c)});
    const W3 h = f(W3{hi(x.a), hi(x.b), hi(x.c)});
    auto narrow = [](__m256i a, __m256i b) { return _mm256_permute4x64_epi64(_mm256_packs_epi32(a, b), 0xD8); };
    return {narrow(l.a, h.a), narrow(l.b, h.b), narrow(l.c, h.c)};
}

inline __m256i k32(int w) { return _mm256_set1_epi32(w); }
inline __m256i mul32(__m256i a, int w) { return _mm256_mullo_epi32(a, k32(w)); }
inline __m256i add32(__m256i a, __m256i b) { return _mm256_add_epi32(a, b); }
inline __m256i add32(__m256i a, int w) { return _mm256_add_epi32(a, k32(w)); }
inline __m256i sub32(__m256i a, __m256i b) { return _mm256_sub_epi32(a, b); }
template <int N>
inline __m256i shl32(__m256i a) { return _mm256_slli_epi32(a, N); }
template <int N>
inline __m256i sra32(__m256i a) { return _mm256_srai_epi32(a, N); }

// 32 pixels of one channel in two vectors of 16-bit lanes, in the order of
// the byte unpacks: `lo` holds pixels 0-7 and 16-23, `hi` pixels 8-15 and
// 24-31. Every form works lane by lane, so the order only has to be undone
// by the pack at the end (packBytes).
struct Wide {
    V lo, hi;
};
struct Wide3 {
    Wide a, b, c;
};

inline Wide widen(__m256i bytes)
{
    const __m256i z = _mm256_setzero_si256();
    return {_mm256_unpacklo_epi8(bytes, z), _mm256_unpackhi_epi8(bytes, z)};
}

// Back to 32 bytes in pixel order, saturated to 0 .. 255 (packuswb).
inline __m256i packBytes(const Wide& w) { return _mm256_packus_epi16(w.lo, w.hi); }

// ---------------------------------------------------------------------------
// The scalar inverse of both families, 16 fraction bits in 32-bit arithmetic:
//   R = chop[(wy (Y - y0) + wrv v + rR) >> 16]
//   G = chop[(wy (Y - y0) - wgu u - wgv v + rG) >> 16]
//   B = chop[(wy (Y - y0) + wbu u + rB) >> 16]
// with u and v the chroma less 128. (A clamp by comparison gives the same
// bytes as the table.) The lanes compute the same sums on 32-bit words.
struct InverseWeights {
    int wy, y0, wrv, wgu, wgv, wbu;
};

template <InverseWeights W, int RndR, int RndG, int RndB>
struct Inverse32 {
    static Px scalar(int y, int cu, int cv)
    {
        const int yy = W.wy * (y - W.y0), u = cu - 128, v = cv - 128;
        return {chop((yy + W.wrv * v + RndR) >> 16), chop((yy - W.wgu * u - W.wgv * v + RndG) >> 16),
                chop((yy + W.wbu * u + RndB) >> 16)};
    }
    static W3 words(const W3& w)
    {
        const __m256i yy = mul32(add32(w.a, -W.y0), W.wy), u = add32(w.b, -128), v = add32(w.c, -128);
        return {sra32<16>(add32(add32(yy, mul32(v, W.wrv)), RndR)),
                sra32<16>(add32(sub32(sub32(yy, mul32(u, W.wgu)), mul32(v, W.wgv)), RndG)),
                sra32<16>(add32(add32(yy, mul32(u, W.wbu)), RndB))};
    }
    static V3 lanes(const V3& x) { return in32(x, words); }
};

// ---------------------------------------------------------------------------
// Span rules: how many leading pixels of a row of `width` take the block form.
template <int Block>
struct Blocks {
    static int end(int width) { return width & ~(Block - 1); }
};
struct WholeRow {
    static int end(int width) { return width; }
};

// A kernel: the block form over the span, the tail form after it.
template <class BlockForm, class TailForm, class SpanRule>
struct Kernel {
    using Block = BlockForm;
    using Tail = TailForm;
    static int spanEnd(int width) { return SpanRule::end(width); }
};

// ---------------------------------------------------------------------------
// Layouts. An input gives a pixel's three channels as bytes (get) and 32
// pixels as 16-bit lanes (load32); an output takes three bytes (put) or 32
// pixels as three byte vectors in pixel order (store32). `block` tells an
// output whether the pixel lies in the block part of the row, for alpha
// rules that differ there.

// Three-byte pixels, 16 of them in three 16-byte chunks: byte p of chunk k
// belongs to channel (k + p) % 3 (16 is 1 modulo 3), so each channel's
// bytes sit at different positions in the three chunks. Two byte blends
// gather a channel's 16 bytes into one register and one shuffle sorts them;
// a store runs the other way round.

// Blend mask: the positions where chunk k holds channel ch.
constexpr std::array<int8_t, 16> shareMask(int ch, int k)
{
    std::array<int8_t, 16> m{};
    for (int p = 0; p < 16; ++p)
        m[p] = (k + p) % 3 == ch ? int8_t(-128) : int8_t(0);
    return m;
}
// Shuffle that sorts the blended bytes of channel ch into pixel order.
constexpr std::array<int8_t, 16> sortThirdsMask(int ch)
{
    std::array<int8_t, 16> m{};
    for (int i = 0; i < 16; ++i)
        m[i] = int8_t((3 * i + ch) % 16);
    return m;
}
// Shuffle that puts pixel bytes of channel ch at their positions in the
// chunks.
constexpr std::array<int8_t, 16> spreadThirdsMask(int ch)
{
    std::array<int8_t, 16> m{};
    for (int p = 0; p < 16; ++p) {
        const int k = ((ch - p) % 3 + 3) % 3;
        m[p] = int8_t((16 * k + p - ch) / 3);
    }
    return m;
}

template <const std::array<int8_t, 16>& M>
inline __m256i bytesMask()
{
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(M.data())));
}

template <int Ch>
struct ThirdsMasks {
    static constexpr auto kShare1 = shareMask(Ch, 1), kShare2 = shareMask(Ch, 2);
    static constexpr auto kSort = sortThirdsMask(Ch), kSpread = spreadThirdsMask(Ch);
};

// Channel Ch of 16 pixels per lane from the chunks a0, a1, a2 of each lane.
template <int Ch>
inline __m256i gatherThirds(__m256i a0, __m256i a1, __m256i a2)
{
    using M = ThirdsMasks<Ch>;
    const __m256i v = _mm256_blendv_epi8(_mm256_blendv_epi8(a0, a1, bytesMask<M::kShare1>()), a2, bytesMask<M::kShare2>());
    return _mm256_shuffle_epi8(v, bytesMask<M::kSort>());
}

// The same, sorted straight into 16-bit words (a zero high byte each):
// pixels 0-7 of each lane in `lo`, 8-15 in `hi`, the unpack order of Wide.
constexpr std::array<int8_t, 16> sortThirdsWordsMask(int ch, int half)
{
    std::array<int8_t, 16> m{};
    for (int i = 0; i < 8; ++i) {
        m[2 * i] = int8_t((3 * (8 * half + i) + ch) % 16);
        m[2 * i + 1] = -128;
    }
    return m;
}
template <int Ch>
struct ThirdsWordsMasks {
    static constexpr auto kLo = sortThirdsWordsMask(Ch, 0), kHi = sortThirdsWordsMask(Ch, 1);
};
template <int Ch>
inline Wide gatherThirdsWide(__m256i a0, __m256i a1, __m256i a2)
{
    using M = ThirdsMasks<Ch>;
    const __m256i v = _mm256_blendv_epi8(_mm256_blendv_epi8(a0, a1, bytesMask<M::kShare1>()), a2, bytesMask<M::kShare2>());
    return {_mm256_shuffle_epi8(v, bytesMask<ThirdsWordsMasks<Ch>::kLo>()),
            _mm256_shuffle_epi8(v, bytesMask<ThirdsWordsMasks<Ch>::kHi>())};
}

// Chunk K of each lane from the three channels, each already spread.
template <int K>
inline __m256i chunkOfThirds(__m256i s0, __m256i s1, __m256i s2)
{
    static constexpr auto kFrom1 = shareMask(1, K), kFrom2 = shareMask(2, K);
    return _mm256_blendv_epi8(_mm256_blendv_epi8(s0, s1, bytesMask<kFrom1>()), s2, bytesMask<kFrom2>());
}

// Three channels of 32 pixels as bytes, pixels 0-15 in lane 0 and 16-31 in
// lane 1.
struct Bytes3 {
    __m256i a, b, c;
};

// Interleaved pixels of Ch bytes (3, or 4 with a fourth byte not used).
template <int Ch>
struct PackedIn {
    const uint8_t* p;

    Px get(int i) const { return {p[Ch * i], p[Ch * i + 1], p[Ch * i + 2]}; }

    // Four-byte pixels also load as eight pixels of 32-bit words, for forms
    // written in 32-bit arithmetic.
    static constexpr bool kWords = Ch == 4;
    W3 load8(int i) const
        requires(Ch == 4)
    {
        const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 4 * i));
        const __m256i m = _mm256_set1_epi32(0xff);
        return {_mm256_and_si256(v, m), _mm256_and_si256(_mm256_srli_epi32(v, 8), m),
                _mm256_and_si256(_mm256_srli_epi32(v, 16), m)};
    }

    // Lane 0 gathers pixels 0-15 from bytes 0-47, lane 1 pixels 16-31 from
    // bytes 48-95.
    Bytes3 bytes32(int i) const
        requires(Ch == 3)
    {
        const uint8_t* s = p + 3 * i;
        const __m256i a0 = simd::load2x128(s, s + 48);
        const __m256i a1 = simd::load2x128(s + 16, s + 64);
        const __m256i a2 = simd::load2x128(s + 32, s + 80);
        return {gatherThirds<0>(a0, a1, a2), gatherThirds<1>(a0, a1, a2), gatherThirds<2>(a0, a1, a2)};
    }

    Wide3 load32(int i) const
    {
        const uint8_t* s = p + Ch * i;
        if constexpr (Ch == 3) {
            const __m256i a0 = simd::load2x128(s, s + 48);
            const __m256i a1 = simd::load2x128(s + 16, s + 64);
            const __m256i a2 = simd::load2x128(s + 32, s + 80);
            return {gatherThirdsWide<0>(a0, a1, a2), gatherThirdsWide<1>(a0, a1, a2), gatherThirdsWide<2>(a0, a1, a2)};
        } else {
            // Four pixels per 128-bit half, paired so that packing the 32-bit
            // words of a channel to 16 bits lands in the unpack order.
            const __m256i w0 = simd::load2x128(s, s + 64), w1 = simd::load2x128(s + 16, s + 80);
            const __m256i w2 = simd::load2x128(s + 32, s + 96), w3 = simd::load2x128(s + 48, s + 112);
            const __m256i m = _mm256_set1_epi32(0xff);
            auto channel = [&](int shift) {
                auto c = [&](__m256i w) { return _mm256_and_si256(_mm256_srli_epi32(w, shift), m); };
                return Wide{_mm256_packus_epi32(c(w0), c(w1)), _mm256_packus_epi32(c(w2), c(w3))};
            };
            return {channel(0), channel(8), channel(16)};
        }
    }
};

// Three planes.
struct PlanesIn {
    const uint8_t* p[3];

    Px get(int i) const { return {p[0][i], p[1][i], p[2][i]}; }

    Bytes3 bytes32(int i) const
    {
        auto plane = [&](int k) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p[k] + i)); };
        return {plane(0), plane(1), plane(2)};
    }

    Wide3 load32(int i) const
    {
        auto plane = [&](int k) { return widen(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p[k] + i))); };
        return {plane(0), plane(1), plane(2)};
    }
};

// What an interleaved output does with its fourth byte.
enum class Alpha {
    None,          // three-byte pixels
    Keep,          // the fourth byte keeps what it held
    Value,         // the fourth byte takes `alpha`
    ZeroInBlocks,  // 0 in the block part of the row, kept in the tail
};

// Interleaved output; Swap stores the channels in reverse order (BGR).
template <int Ch, bool Swap, Alpha A>
struct PackedOut {
    uint8_t* p;
    uint8_t alpha = 0;

    void put(int i, const Px& v, bool block) const
    {
        uint8_t* d = p + Ch * i;
        d[0] = v[Swap ? 2 : 0];
        d[1] = v[1];
        d[2] = v[Swap ? 0 : 2];
        if constexpr (A == Alpha::Value)
            d[3] = alpha;
        else if constexpr (A == Alpha::ZeroInBlocks)
            if (block)
                d[3] = 0;
    }

    // Eight pixels from 32-bit words, each clamped to 0 .. 255.
    static constexpr bool kWords = Ch == 4;
    void store8(int i, const W3& w) const
        requires(Ch == 4)
    {
        auto clamp = [](__m256i x) { return _mm256_min_epi32(_mm256_max_epi32(x, _mm256_setzero_si256()), k32(255)); };
        const __m256i c0 = clamp(Swap ? w.c : w.a), c1 = clamp(w.b), c2 = clamp(Swap ? w.a : w.c);
        __m256i v = _mm256_or_si256(_mm256_or_si256(c0, _mm256_slli_epi32(c1, 8)), _mm256_slli_epi32(c2, 16));
        __m256i* d = reinterpret_cast<__m256i*>(p + 4 * i);
        if constexpr (A == Alpha::Keep)
            v = _mm256_or_si256(v, _mm256_and_si256(_mm256_loadu_si256(d), k32(int32_t(0xff000000u))));
        else if constexpr (A == Alpha::Value)
            v = _mm256_or_si256(v, k32(int32_t(uint32_t(alpha) << 24)));
        _mm256_storeu_si256(d, v);
    }

    // c0, c1, c2: the channels in R, G, B order, pixels 0-15 in lane 0 and
    // 16-31 in lane 1.
    void store32(int i, __m256i x0, __m256i x1, __m256i x2) const
    {
        uint8_t* d = p + Ch * i;
        const __m256i c0 = Swap ? x2 : x0, c1 = x1, c2 = Swap ? x0 : x2;
        if constexpr (Ch == 3) {
            const __m256i s0 = _mm256_shuffle_epi8(c0, bytesMask<ThirdsMasks<0>::kSpread>());
            const __m256i s1 = _mm256_shuffle_epi8(c1, bytesMask<ThirdsMasks<1>::kSpread>());
            const __m256i s2 = _mm256_shuffle_epi8(c2, bytesMask<ThirdsMasks<2>::kSpread>());
            auto store = [&](int k, __m256i v) {
                _mm256_storeu2_m128i(reinterpret_cast<__m128i*>(d + 48 + 16 * k), reinterpret_cast<__m128i*>(d + 16 * k), v);
            };
            store(0, chunkOfThirds<0>(s0, s1, s2));
            store(1, chunkOfThirds<1>(s0, s1, s2));
            store(2, chunkOfThirds<2>(s0, s1, s2));
        } else {
            const __m256i a = A == Alpha::Value ? _mm256_set1_epi8(char(alpha)) : _mm256_setzero_si256();
            const __m256i lo01 = _mm256_unpacklo_epi8(c0, c1), hi01 = _mm256_unpackhi_epi8(c0, c1);
            const __m256i lo2a = _mm256_unpacklo_epi8(c2, a), hi2a = _mm256_unpackhi_epi8(c2, a);
            // Four pixels per lane: q0 = pixels 0-3 | 16-19, q1 = 4-7 | 20-23,
            // q2 = 8-11 | 24-27, q3 = 12-15 | 28-31.
            const __m256i q0 = _mm256_unpacklo_epi16(lo01, lo2a), q1 = _mm256_unpackhi_epi16(lo01, lo2a);
            const __m256i q2 = _mm256_unpacklo_epi16(hi01, hi2a), q3 = _mm256_unpackhi_epi16(hi01, hi2a);
            const __m256i out[4] = {_mm256_permute2x128_si256(q0, q1, 0x20), _mm256_permute2x128_si256(q2, q3, 0x20),
                                    _mm256_permute2x128_si256(q0, q1, 0x31), _mm256_permute2x128_si256(q2, q3, 0x31)};
            for (int k = 0; k < 4; ++k) {
                __m256i* dk = reinterpret_cast<__m256i*>(d + 32 * k);
                if constexpr (A == Alpha::Keep) {
                    // The fourth byte of each pixel is taken back from the destination.
                    const __m256i keep = _mm256_set1_epi32(int32_t(0xff000000u));
                    _mm256_storeu_si256(dk, _mm256_blendv_epi8(out[k], _mm256_loadu_si256(dk), keep));
                } else {
                    _mm256_storeu_si256(dk, out[k]);
                }
            }
        }
    }
};

// Three planes.
struct PlanesOut {
    uint8_t* p[3];

    void put(int i, const Px& v, bool) const
    {
        p[0][i] = v[0];
        p[1][i] = v[1];
        p[2][i] = v[2];
    }
    void store32(int i, __m256i c0, __m256i c1, __m256i c2) const
    {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p[0] + i), c0);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p[1] + i), c1);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p[2] + i), c2);
    }
};

// 32 pixels through a block form: both halves of the lanes, then packed.
// Flattened: the loads, the form and the stores are one stretch of register
// code, not calls that pass vectors through memory.
template <class Form, class In, class Out>
[[gnu::flatten]] inline void blockOf32(const In& in, const Out& out, int i)
{
    const Wide3 x = in.load32(i);
    const V3 lo = Form::lanes(V3{x.a.lo, x.b.lo, x.c.lo});
    const V3 hi = Form::lanes(V3{x.a.hi, x.b.hi, x.c.hi});
    out.store32(i, packBytes({lo.a, hi.a}), packBytes({lo.b, hi.b}), packBytes({lo.c, hi.c}));
}

// Whether a layout moves eight pixels as 32-bit words (load8, store8).
template <class L>
constexpr bool takesWords()
{
    if constexpr (requires { L::kWords; })
        return L::kWords;
    else
        return false;
}

// ---------------------------------------------------------------------------
// Pixels [begin, end) of a row by the block form B: by vectors of 32 pixels
// (or of eight 32-bit words, where form and layouts allow it) and one
// partial vector that goes through a small planar buffer, or by the scalar
// block form when the test switch asks for it.
template <class B, class In, class Out>
inline void blockSpan(const In& in, const Out& out, int begin, int end)
{
    int i = begin;
    if (g_scalarBlocks) {
        for (; i < end; ++i) {
            const Px s = in.get(i);
            out.put(i, B::scalar(s[0], s[1], s[2]), true);
        }
        return;
    }
    if constexpr (requires { B::words; } && takesWords<In>() && takesWords<Out>()) {
        for (; i + 8 <= end; i += 8)
            out.store8(i, B::words(in.load8(i)));
    }
    for (; i + 32 <= end; i += 32)
        blockOf32<B>(in, out, i);
    if (i < end) {
        const int n = end - i;
        alignas(32) uint8_t buf[3][32] = {};
        for (int j = 0; j < n; ++j) {
            const Px s = in.get(i + j);
            buf[0][j] = s[0];
            buf[1][j] = s[1];
            buf[2][j] = s[2];
        }
        blockOf32<B>(PlanesIn{{buf[0], buf[1], buf[2]}}, PlanesOut{{buf[0], buf[1], buf[2]}}, 0);
        for (int j = 0; j < n; ++j)
            out.put(i + j, Px{buf[0][j], buf[1][j], buf[2][j]}, true);
    }
}

// Pixels [begin, end) of a row by the scalar tail form T.
template <class T, class In, class Out>
inline void tailSpan(const In& in, const Out& out, int begin, int end)
{
    for (int i = begin; i < end; ++i) {
        const Px s = in.get(i);
        out.put(i, T::scalar(s[0], s[1], s[2]), false);
    }
}

// One row: the block form over [0, spanEnd), then the tail form.
template <class K, class In, class Out>
inline void convertRow(const In& in, const Out& out, int width)
{
    const int end = K::spanEnd(width);
    blockSpan<typename K::Block>(in, out, 0, end);
    tailSpan<typename K::Tail>(in, out, end, width);
}

// Row makers for the serial drivers: each gives the layout of row y.
template <int Ch>
struct PackedRowsIn {
    const uint8_t* base;
    int step;
    PackedIn<Ch> operator()(int y) const { return {rowAt(base, step, y)}; }
};
struct PlaneRowsIn {
    const uint8_t* const* planes;
    int step;
    PlanesIn operator()(int y) const
    {
        return {{rowAt(planes[0], step, y), rowAt(planes[1], step, y), rowAt(planes[2], step, y)}};
    }
};
template <int Ch, bool Swap, Alpha A>
struct PackedRowsOut {
    uint8_t* base;
    int step;
    uint8_t alpha = 0;
    PackedOut<Ch, Swap, A> operator()(int y) const { return {rowAt(base, step, y), alpha}; }
};
struct PlaneRowsOut {
    uint8_t* const* planes;
    int step;
    PlanesOut operator()(int y) const
    {
        return {{rowAt(planes[0], step, y), rowAt(planes[1], step, y), rowAt(planes[2], step, y)}};
    }
};

// The serial driver of every member: one row after the other.
template <class K, class InRows, class OutRows>
inline void convertRows(const InRows& in, const OutRows& out, RoiSize roi)
{
    for (int y = 0; y < roi.height; ++y)
        convertRow<K>(in(y), out(y), roi.width);
}

}  // namespace px8
}  // namespace h9
