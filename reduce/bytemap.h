// Byte sources through a fixed per-call map, 32 bytes at a time in 16-bit
// integer arithmetic instead of floats.
//
// On 8-bit sources the plain and the ordered quantisers give, for each
// element position, an output that depends only on the byte value. Both
// first find a level index m (n, plus one when the remainder passes the
// threshold) that grows by at most one per unit of the byte, and the output
// byte then depends on m alone. So:
//
//   m   = (hi16((v << 8) + c, M) + B) >> 8     per position constants c, M, B
//   out = table[m]                              up to 64 entries, four shuffles
//
// The constants are fitted at the start of a call to the indexes that the
// float quantiser itself gives for all 256 byte values, and the table is
// filled from its outputs, checking that equal indexes give equal outputs.
// A call whose indexes admit no such constants, or whose outputs are no
// function of the index, or that needs more than 64 entries, keeps the float
// path. The results are therefore those of the float quantiser by
// construction, value by value.
#pragma once

#include <immintrin.h>

#include <algorithm>
#include <cstdint>

namespace h9::reduce {

// The constants of one element position.
struct IndexFit {
    uint16_t c;  // low byte joined to the value: x = 256 v + c
    uint16_t M;  // multiplier, about 257 L
    uint16_t B;  // bias added to the high half of x * M, modulo 2^16
};

inline int fittedIndex(const IndexFit& f, int v)
{
    const uint32_t x = uint32_t(v) * 256u + f.c;
    const uint16_t y = uint16_t(((x * f.M) >> 16) + f.B);
    return y >> 8;
}

// Finds constants that reproduce index[0..255]. M starts at 257 L, close to
// 65536 L / 255, and c runs up from 0; B is then the lowest bias that keeps
// every value within its index, if there is one, and every sum must stay
// within 16 bits.
inline bool fitIndex(const int (&index)[256], int L, IndexFit& out)
{
    for (int dM : {0, -1, 1}) {
        const int M = 257 * L + dM;
        if (M < 1 || M > 65535)
            continue;
        for (int c = 0; c < 256; ++c) {
            int32_t lo = -65536, hi = 65536;
            int32_t ymin = 65536, ymax = -1;
            for (int v = 0; v < 256 && lo <= hi; ++v) {
                const int32_t y = int32_t(((uint32_t(v) * 256u + uint32_t(c)) * uint32_t(M)) >> 16);
                lo = std::max(lo, 256 * index[v] - y);
                hi = std::min(hi, 256 * index[v] + 255 - y);
                ymin = std::min(ymin, y);
                ymax = std::max(ymax, y);
            }
            if (lo > hi || ymin + lo < 0 || ymax + lo > 65535)
                continue;
            out = {uint16_t(c), uint16_t(M), uint16_t(lo)};
            return true;
        }
    }
    return false;
}

// Per-position constants laid out for the vector loop. A pattern of
// positions repeats every kPeriod vectors of 32 bytes (one vector, or three
// for three-channel pixels); `pos(b)` gives the position of byte b of the
// pattern.
template <int kPeriod>
struct ByteMap {
    __m256i c[kPeriod];
    __m256i mLo[kPeriod], mHi[kPeriod];  // 16-bit lanes of the low and high unpack
    __m256i bLo[kPeriod], bHi[kPeriod];
    __m256i table[4];
    int chunks = 0;  // 16-entry parts of the table in use; 0: no fit

    // fits[j] for position j, outputs in table order.
    template <class Pos>
    void lay(const IndexFit* fits, const uint8_t (&levels)[64], int used, Pos pos)
    {
        alignas(32) uint8_t cb[32];
        alignas(32) uint16_t ml[16], mh[16], bl[16], bh[16];
        for (int p = 0; p < kPeriod; ++p) {
            for (int b = 0; b < 32; ++b)
                cb[b] = uint8_t(fits[pos(32 * p + b)].c);
            for (int l = 0; l < 16; ++l) {
                // unpacklo takes bytes 0-7 and 16-23, unpackhi 8-15 and 24-31.
                const int lo = (l < 8 ? l : l + 8), hi = lo + 8;
                ml[l] = fits[pos(32 * p + lo)].M;
                bl[l] = fits[pos(32 * p + lo)].B;
                mh[l] = fits[pos(32 * p + hi)].M;
                bh[l] = fits[pos(32 * p + hi)].B;
            }
            c[p] = _mm256_load_si256(reinterpret_cast<const __m256i*>(cb));
            mLo[p] = _mm256_load_si256(reinterpret_cast<const __m256i*>(ml));
            mHi[p] = _mm256_load_si256(reinterpret_cast<const __m256i*>(mh));
            bLo[p] = _mm256_load_si256(reinterpret_cast<const __m256i*>(bl));
            bHi[p] = _mm256_load_si256(reinterpret_cast<const __m256i*>(bh));
        }
        chunks = (used + 15) / 16;
        for (int k = 0; k < 4; ++k)
            table[k] = _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(levels + 16 * k)));
    }

    // 32 bytes of pattern vector p.
    template <int kChunks>
    __m256i apply(__m256i v, int p) const
    {
        const __m256i x0 = _mm256_unpacklo_epi8(c[p], v), x1 = _mm256_unpackhi_epi8(c[p], v);
        const __m256i y0 = _mm256_add_epi16(_mm256_mulhi_epu16(x0, mLo[p]), bLo[p]);
        const __m256i y1 = _mm256_add_epi16(_mm256_mulhi_epu16(x1, mHi[p]), bHi[p]);
        const __m256i m = _mm256_packus_epi16(_mm256_srli_epi16(y0, 8), _mm256_srli_epi16(y1, 8));
        if constexpr (kChunks == 1) {
            return _mm256_shuffle_epi8(table[0], m);
        } else {
            // Part k answers where the high bits of m equal k: the xor
            // clears them there, and the saturating add sets bit 7 (a zero
            // from the shuffle) everywhere else.
            __m256i r = _mm256_shuffle_epi8(table[0], _mm256_adds_epu8(m, _mm256_set1_epi8(0x70)));
            for (int k = 1; k < kChunks; ++k) {
                const __m256i i = _mm256_adds_epu8(_mm256_xor_si256(m, _mm256_set1_epi8(char(16 * k))),
                                                   _mm256_set1_epi8(0x70));
                r = _mm256_or_si256(r, _mm256_shuffle_epi8(table[k], i));
            }
            return r;
        }
    }
};

// Fits every position and fills the table from the outputs; index[j] and
// out[j] are the float quantiser's results for position j. False when any
// position has no fit or the outputs need more than 64 entries.
inline bool fitPositions(const int (*index)[256], const uint8_t (*out)[256], int positions, int L, IndexFit* fits,
                         uint8_t (&levels)[64], int& used)
{
    bool seen[64] = {};
    used = 0;
    for (int j = 0; j < positions; ++j) {
        if (index[j][255] >= 64 || !fitIndex(index[j], L, fits[j]))
            return false;
        for (int v = 0; v < 256; ++v) {
            const int m = fittedIndex(fits[j], v);
            if (m >= 64)
                return false;
            if (!seen[m]) {
                seen[m] = true;
                levels[m] = out[j][v];
            } else if (levels[m] != out[j][v]) {
                return false;
            }
            used = std::max(used, m + 1);
        }
    }
    for (int m = 0; m < 64; ++m)
        if (!seen[m])
            levels[m] = 0;
    return true;
}

}  // namespace h9::reduce
