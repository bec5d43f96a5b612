// Small AVX2 building blocks shared by the vector paths.
#pragma once

#include <immintrin.h>

#include <array>
#include <cstdint>

namespace h9::simd {

// pshufb mask that gathers channel `ch` of consecutive pixels (elements of
// `elemBytes` bytes, `channels` per pixel) out of the 16-byte chunk `chunk`
// of a run of 16-byte loads, placing the k-th pixel's element at element
// position k of the result. Bytes that belong to other chunks are zeroed, so
// the gathers of all chunks can be ORed together.
constexpr std::array<int8_t, 16> gatherMask(int channels, int ch, int chunk, int elemBytes)
{
    std::array<int8_t, 16> m{};
    const int perReg = 16 / elemBytes;
    for (int k = 0; k < perReg; ++k) {
        const int byte = (k * channels + ch) * elemBytes;
        for (int b = 0; b < elemBytes; ++b) {
            const int src = byte + b - 16 * chunk;
            m[k * elemBytes + b] = (src >= 0 && src < 16) ? int8_t(src) : int8_t(-128);
        }
    }
    return m;
}

template <int Channels, int Ch, int Chunk, int ElemBytes>
inline __m128i gatherMask128()
{
    static constexpr auto m = gatherMask(Channels, Ch, Chunk, ElemBytes);
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(m.data()));
}

template <int Channels, int Ch, int Chunk, int ElemBytes>
inline __m256i gatherMask256()
{
    return _mm256_broadcastsi128_si256(gatherMask128<Channels, Ch, Chunk, ElemBytes>());
}

// The reverse of gatherMask: pshufb mask that spreads a register of channel
// `ch` (the k-th pixel's element at element position k) over chunk `chunk`
// of an interleaved run of `channels` elements of `elemBytes` bytes per
// pixel. Bytes of other channels are zeroed, so the spreads of all channels
// can be ORed into one chunk.
constexpr std::array<int8_t, 16> scatterMask(int channels, int ch, int chunk, int elemBytes)
{
    std::array<int8_t, 16> m{};
    for (int k = 0; k < 16; ++k) {
        const int elem = (16 * chunk + k) / elemBytes;
        const int src = (elem / channels) * elemBytes + (16 * chunk + k) % elemBytes;
        m[k] = (elem % channels == ch) ? int8_t(src) : int8_t(-128);
    }
    return m;
}

template <int Channels, int Ch, int Chunk, int ElemBytes>
inline __m128i scatterMask128()
{
    static constexpr auto m = scatterMask(Channels, Ch, Chunk, ElemBytes);
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(m.data()));
}

template <int Channels, int Ch, int Chunk, int ElemBytes>
inline __m256i scatterMask256()
{
    return _mm256_broadcastsi128_si256(scatterMask128<Channels, Ch, Chunk, ElemBytes>());
}

// Two unaligned 16-byte loads into the low and high lane.
inline __m256i load2x128(const void* lo, const void* hi)
{
    return _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(static_cast<const __m128i*>(lo))),
                                   _mm_loadu_si128(static_cast<const __m128i*>(hi)), 1);
}

// Deinterleaves 8 pixels of three 32-bit channels held in a (elements 0-7),
// b (8-15), c (16-23) into one register per channel, pixel order kept.
inline void deinterleave3x8(__m256i a, __m256i b, __m256i c, __m256i& x0, __m256i& x1, __m256i& x2)
{
    const __m256i u0 = _mm256_blend_epi32(_mm256_blend_epi32(a, b, 0x92), c, 0x24);
    const __m256i u1 = _mm256_blend_epi32(_mm256_blend_epi32(a, b, 0x24), c, 0x49);
    const __m256i u2 = _mm256_blend_epi32(_mm256_blend_epi32(a, b, 0x49), c, 0x92);
    x0 = _mm256_permutevar8x32_epi32(u0, _mm256_setr_epi32(0, 3, 6, 1, 4, 7, 2, 5));
    x1 = _mm256_permutevar8x32_epi32(u1, _mm256_setr_epi32(1, 4, 7, 2, 5, 0, 3, 6));
    x2 = _mm256_permutevar8x32_epi32(u2, _mm256_setr_epi32(2, 5, 0, 3, 6, 1, 4, 7));
}

// Three-channel 32-bit elements of eight pixels, a (values 0-7), b (8-15),
// c (16-23), to one register per channel. Unlike deinterleave3x8 the
// pixels are not put back in order, which saves a permutation per register:
// the blends leave lane j of x0 with channel 0 of pixel (0 3 6 1 4 7 2 5)[j],
// and rotating the other two registers by one and two lanes brings channels
// 1 and 2 of the same pixels there. Pixels never meet in the arithmetic, and
// interleave3x8Rotated undoes exactly this order. For conversions whose
// pixels are independent from load to store.
inline void deinterleave3x8Rotated(__m256i a, __m256i b, __m256i c, __m256i& x0, __m256i& x1, __m256i& x2)
{
    x0 = _mm256_blend_epi32(_mm256_blend_epi32(a, b, 0x92), c, 0x24);
    x1 = _mm256_permutevar8x32_epi32(_mm256_blend_epi32(_mm256_blend_epi32(a, b, 0x24), c, 0x49),
                                     _mm256_setr_epi32(1, 2, 3, 4, 5, 6, 7, 0));
    x2 = _mm256_permutevar8x32_epi32(_mm256_blend_epi32(_mm256_blend_epi32(a, b, 0x49), c, 0x92),
                                     _mm256_setr_epi32(2, 3, 4, 5, 6, 7, 0, 1));
}

inline void interleave3x8Rotated(__m256i x0, __m256i x1, __m256i x2, __m256i& a, __m256i& b, __m256i& c)
{
    const __m256i u1 = _mm256_permutevar8x32_epi32(x1, _mm256_setr_epi32(7, 0, 1, 2, 3, 4, 5, 6));
    const __m256i u2 = _mm256_permutevar8x32_epi32(x2, _mm256_setr_epi32(6, 7, 0, 1, 2, 3, 4, 5));
    a = _mm256_blend_epi32(_mm256_blend_epi32(x0, u1, 0x92), u2, 0x24);
    b = _mm256_blend_epi32(_mm256_blend_epi32(x0, u1, 0x24), u2, 0x49);
    c = _mm256_blend_epi32(_mm256_blend_epi32(x0, u1, 0x49), u2, 0x92);
}

// Deinterleaves 8 pixels of four 32-bit channels given as v0 = [p0|p4],
// v1 = [p1|p5], v2 = [p2|p6], v3 = [p3|p7] (one pixel per 128-bit lane) into
// the first three channels, pixel order kept.
inline void deinterleave4x8(__m256 v0, __m256 v1, __m256 v2, __m256 v3, __m256& x0, __m256& x1, __m256& x2)
{
    const __m256 t0 = _mm256_unpacklo_ps(v0, v1);  // c0 p0 p1, c1 p0 p1
    const __m256 t1 = _mm256_unpackhi_ps(v0, v1);  // c2 p0 p1, c3 p0 p1
    const __m256 t2 = _mm256_unpacklo_ps(v2, v3);
    const __m256 t3 = _mm256_unpackhi_ps(v2, v3);
    x0 = _mm256_shuffle_ps(t0, t2, 0x44);
    x1 = _mm256_shuffle_ps(t0, t2, 0xEE);
    x2 = _mm256_shuffle_ps(t1, t3, 0x44);
}

}  // namespace h9::simd
