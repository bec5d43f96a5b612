// Bayer mosaic to RGB by adaptive homogeneity: two full candidate images,
// green interpolated along the rows (H) and along the columns (V), and each
// pixel taken whole from the candidate that is more homogeneous around it in
// an integer luma-chroma space.
//
// Every stage is a function of position on a virtual mosaic that reflects
// the mosaic about its edge samples (keeping the colour pattern), so pixels
// near the edges need no special rules. The only state is the running choice
// along a row, which restarts at the first column of each work item; that is
// why the rectangle is cut into items the same way on every call.
//
// Rows stream through rings in the caller's work buffer: green 5 rows per
// candidate, red and blue 4 rows per candidate, the homogeneity map 4 rows,
// each row max(width, 6) + 8 elements of the call's type.
//
// The interior rectangle reads no mirrored sample, so its stages run on
// eight pixels a register: each stage of a row takes whole registers from
// the first column it computes and leaves the rest to the scalar form. The
// strips stay scalar.
#include <immintrin.h>

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "demosaic/mosaic.h"
#include "frame/driver.h"
#include "frame/fronts.h"

namespace h9 {
namespace {

inline int mirror(int i, int n)
{
    while (i < 0 || i > n)
        i = i < 0 ? -i : 2 * n - i;
    return i;
}

template <class T>
inline int32_t loadAt(const uint8_t* p)
{
    T v;
    std::memcpy(&v, p, sizeof(T));
    return int32_t(v);
}
template <class T>
inline void storeAt(uint8_t* p, int32_t v)
{
    const T x = static_cast<T>(v);
    std::memcpy(p, &x, sizeof(T));
}

// Luma and chroma in the 8-bit BT.601 integer matrix, no offsets, no clamp.
struct Ycc {
    int32_t y, cb, cr;
};
inline Ycc toYcc(int32_t r, int32_t g, int32_t b)
{
    return {(66 * r + 129 * g + 25 * b + 128) >> 8, (-38 * r - 74 * g + 112 * b + 128) >> 8,
            (112 * r - 94 * g - 18 * b + 128) >> 8};
}
inline int32_t absDiff(int32_t a, int32_t b) { return a > b ? a - b : b - a; }
// Sum of squared chroma differences, modulo 2^32 and read as signed: 16u
// chroma can reach 2^31 here, and the comparison is the signed one.
inline int32_t chromaDist(const Ycc& a, const Ycc& b)
{
    const uint32_t dcb = uint32_t(a.cb - b.cb), dcr = uint32_t(a.cr - b.cr);
    return int32_t(dcb * dcb + dcr * dcr);
}

// Eight pixels in 32-bit lanes, for the interior rectangle, which never
// reaches a mirrored sample. The arithmetic is that of the scalar stages,
// lane by lane; both site classes are computed and one picked per lane.
template <class T>
struct AhdLanes {
    // Eight elements of T, zero- or sign-extended.
    static __m256i load(const uint8_t* p)
    {
        if constexpr (sizeof(T) == 1)
            return _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)));
        else
            return _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
    }
    static __m256i loadSigned(const uint8_t* p)
    {
        if constexpr (sizeof(T) == 1)
            return _mm256_cvtepi8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)));
        else
            return _mm256_cvtepi16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
    }
    // Values already in the element's range (unsigned, or -4..4 for the map).
    static void store(uint8_t* p, __m256i v)
    {
        const __m128i w = _mm_packs_epi32(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
        if constexpr (sizeof(T) == 1)
            _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(w, w));
        else
            _mm_storeu_si128(reinterpret_cast<__m128i*>(p),
                             _mm_packus_epi32(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1)));
    }
    static void storeSigned(uint8_t* p, __m256i v)
    {
        const __m128i w = _mm_packs_epi32(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
        if constexpr (sizeof(T) == 1)
            _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packs_epi16(w, w));
        else
            _mm_storeu_si128(reinterpret_cast<__m128i*>(p), w);
    }
    static __m256i clamp(__m256i v, __m256i lo, __m256i hi) { return _mm256_max_epi32(lo, _mm256_min_epi32(v, hi)); }
    // Lanes [p7, a0 .. a6] and [a1 .. a7, n0]: a run of pixels moved by one.
    static __m256i fromLeft(__m256i p, __m256i a) { return _mm256_alignr_epi8(a, _mm256_permute2x128_si256(p, a, 0x21), 12); }
    static __m256i fromLeft2(__m256i p, __m256i a) { return _mm256_alignr_epi8(a, _mm256_permute2x128_si256(p, a, 0x21), 8); }
    static __m256i fromLeft4(__m256i p, __m256i a) { return _mm256_permute2x128_si256(p, a, 0x21); }

    struct Ycc {
        __m256i y, cb, cr;
    };
    static Ycc toYcc(__m256i r, __m256i g, __m256i b)
    {
        auto dot = [&](int kr, int kg, int kb) {
            const __m256i s = _mm256_add_epi32(_mm256_add_epi32(_mm256_mullo_epi32(r, _mm256_set1_epi32(kr)),
                                                                _mm256_mullo_epi32(g, _mm256_set1_epi32(kg))),
                                               _mm256_mullo_epi32(b, _mm256_set1_epi32(kb)));
            return _mm256_srai_epi32(_mm256_add_epi32(s, _mm256_set1_epi32(128)), 8);
        };
        return {dot(66, 129, 25), dot(-38, -74, 112), dot(112, -94, -18)};
    }
    // Sum of squared chroma differences, wrapping as the scalar form does.
    static __m256i chromaDist(const Ycc& a, const Ycc& b)
    {
        const __m256i dcb = _mm256_sub_epi32(a.cb, b.cb), dcr = _mm256_sub_epi32(a.cr, b.cr);
        return _mm256_add_epi32(_mm256_mullo_epi32(dcb, dcb), _mm256_mullo_epi32(dcr, dcr));
    }
};

// One call: the mosaic, the clipped rectangle and the ring rows.
template <class T>
struct Ahd {
    using Map = std::make_signed_t<T>;
    static constexpr int32_t kMax = (1 << (8 * sizeof(T))) - 1;
    // Ring slots in the work buffer.
    enum { kGreenH = 0, kGreenV = 5, kRedH = 10, kRedV = 14, kBlueH = 18, kBlueV = 22, kMap = 26 };

    const uint8_t* src;
    int srcStep;
    int W, H;
    Grid grid;
    uint8_t* dst;
    int dstStep;
    int x, y, xEnd, yEnd;  // the rectangle, in mosaic coordinates
    uint8_t* tmp;
    int tmpStep;
    int cx = 0;  // first column of the current item; ring element 0 is column cx - 4
    bool vec = false;  // the current item takes whole registers of pixels from its first column

    // A row of the virtual mosaic, read at any column.
    struct SrcRow {
        const uint8_t* p;
        int lastCol;
        int32_t operator[](int c) const { return loadAt<T>(p + std::ptrdiff_t(mirror(c, lastCol)) * sizeof(T)); }
    };
    SrcRow srcRow(int r) const { return {src + std::ptrdiff_t(mirror(r, H - 1)) * srcStep, W - 1}; }

    // A ring row, read and written at mosaic columns.
    template <class E>
    struct RingRow {
        uint8_t* p;
        int32_t operator[](int c) const { return loadAt<E>(p + std::ptrdiff_t(c) * sizeof(T)); }
        void set(int c, int32_t v) const { storeAt<E>(p + std::ptrdiff_t(c) * sizeof(T), v); }
    };
    RingRow<T> ring(int base, int size, int row) const
    {
        const int slot = base + ((row % size) + size) % size;
        // Element 0 of a ring row is column cx - 4.
        return {tmp + std::ptrdiff_t(slot) * tmpStep - std::ptrdiff_t(cx - 4) * std::ptrdiff_t(sizeof(T))};
    }
    RingRow<T> greenRing(int v, int r) const { return ring(v ? kGreenV : kGreenH, 5, r); }
    RingRow<T> redRing(int v, int r) const { return ring(v ? kRedV : kRedH, 4, r); }
    RingRow<T> blueRing(int v, int r) const { return ring(v ? kBlueV : kBlueH, 4, r); }
    RingRow<Map> mapRing(int r) const { return {ring(kMap, 4, r).p}; }

    // ---- the interior's vector path: whole registers of pixels from c0 on;
    // each returns the first column it left to the scalar form.
    using L = AhdLanes<T>;
    static constexpr int kLanes = 8;
    const uint8_t* plainRow(int r) const { return src + std::ptrdiff_t(r) * srcStep; }
    static const uint8_t* at(const uint8_t* row, int c) { return row + std::ptrdiff_t(c) * std::ptrdiff_t(sizeof(T)); }
    static uint8_t* at(uint8_t* row, int c) { return row + std::ptrdiff_t(c) * std::ptrdiff_t(sizeof(T)); }
    // All lanes of the colour sites of row r, for a run starting at column c0.
    __m256i colourLanes(int r, int c0) const
    {
        const __m256i odd = _mm256_setr_epi32(0, -1, 0, -1, 0, -1, 0, -1);
        return grid.colourSiteAt(r, c0) ? _mm256_xor_si256(odd, _mm256_set1_epi32(-1)) : odd;
    }

    int greenRowVec(int r, int c0, int c1) const
    {
        const uint8_t *up2 = plainRow(r - 2), *up = plainRow(r - 1), *mid = plainRow(r), *down = plainRow(r + 1),
                      *down2 = plainRow(r + 2);
        uint8_t *outH = greenRing(0, r).p, *outV = greenRing(1, r).p;
        const __m256i colour = colourLanes(r, c0);
        auto along = [](__m256i s, __m256i a, __m256i b, __m256i l, __m256i e) {
            const __m256i v = _mm256_add_epi32(_mm256_srai_epi32(_mm256_add_epi32(a, b), 1),
                                               _mm256_srai_epi32(_mm256_sub_epi32(_mm256_sub_epi32(_mm256_add_epi32(s, s), l), e), 2));
            return L::clamp(v, _mm256_min_epi32(a, b), _mm256_max_epi32(a, b));
        };
        int c = c0;
        for (; c + kLanes - 1 <= c1; c += kLanes) {
            const __m256i s = L::load(at(mid, c));
            const __m256i gh = along(s, L::load(at(mid, c - 1)), L::load(at(mid, c + 1)), L::load(at(mid, c - 2)),
                                     L::load(at(mid, c + 2)));
            const __m256i gv = along(s, L::load(at(up, c)), L::load(at(down, c)), L::load(at(up2, c)), L::load(at(down2, c)));
            L::store(at(outH, c), _mm256_blendv_epi8(s, gh, colour));
            L::store(at(outV, c), _mm256_blendv_epi8(s, gv, colour));
        }
        return c;
    }

    int redBlueRowVec(int r, int c0, int c1) const
    {
        const bool redRow = grid.redRowAt(r);
        const uint8_t *up = plainRow(r - 1), *mid = plainRow(r), *down = plainRow(r + 1);
        const __m256i colour = colourLanes(r, c0), zero = _mm256_setzero_si256(), hi = _mm256_set1_epi32(kMax);
        int c = c0;
        for (int v = 0; v < 2; ++v) {
            const uint8_t *gu = greenRing(v, r - 1).p, *gm = greenRing(v, r).p, *gd = greenRing(v, r + 1).p;
            uint8_t *red = redRing(v, r).p, *blue = blueRing(v, r).p;
            for (c = c0; c + kLanes - 1 <= c1; c += kLanes) {
                auto ld = [&](const uint8_t* row, int dc) { return L::load(at(row, c + dc)); };
                const __m256i g = ld(gm, 0), s = ld(mid, 0);
                // Green sites.
                const __m256i ownG = _mm256_add_epi32(
                    g, _mm256_srai_epi32(_mm256_add_epi32(_mm256_sub_epi32(ld(mid, -1), ld(gm, -1)),
                                                          _mm256_sub_epi32(ld(mid, 1), ld(gm, 1))),
                                         1));
                const __m256i otherG = _mm256_add_epi32(
                    g, _mm256_srai_epi32(_mm256_add_epi32(_mm256_sub_epi32(ld(up, 0), ld(gu, 0)),
                                                          _mm256_sub_epi32(ld(down, 0), ld(gd, 0))),
                                         1));
                // Red and blue sites.
                const __m256i xs = _mm256_add_epi32(_mm256_add_epi32(ld(up, -1), ld(up, 1)), _mm256_add_epi32(ld(down, -1), ld(down, 1)));
                const __m256i ys = _mm256_add_epi32(_mm256_add_epi32(ld(gu, -1), ld(gu, 1)), _mm256_add_epi32(ld(gd, -1), ld(gd, 1)));
                const __m256i otherC = _mm256_add_epi32(g, _mm256_srai_epi32(_mm256_sub_epi32(xs, ys), 2));
                const __m256i own = L::clamp(_mm256_blendv_epi8(ownG, s, colour), zero, hi);
                const __m256i other = L::clamp(_mm256_blendv_epi8(otherG, otherC, colour), zero, hi);
                L::store(at(red, c), redRow ? own : other);
                L::store(at(blue, c), redRow ? other : own);
            }
        }
        return c;
    }

    int mapRowVec(int r, int c0, int c1) const
    {
        using Y = typename L::Ycc;
        struct Rows {
            const uint8_t *red, *green, *blue;
            Y at(int c) const { return L::toYcc(L::load(Ahd::at(red, c)), L::load(Ahd::at(green, c)), L::load(Ahd::at(blue, c))); }
        };
        if (c0 + kLanes - 1 > c1)
            return c0;
        Rows up[2], mid[2], down[2];
        Y prev[2];  // the previous run of pixels; only its last lane is read
        const __m256i lane0 = _mm256_setzero_si256();
        for (int v = 0; v < 2; ++v) {
            up[v] = {redRing(v, r - 1).p, greenRing(v, r - 1).p, blueRing(v, r - 1).p};
            mid[v] = {redRing(v, r).p, greenRing(v, r).p, blueRing(v, r).p};
            down[v] = {redRing(v, r + 1).p, greenRing(v, r + 1).p, blueRing(v, r + 1).p};
            // Column c0 - 1 (lane 0 of a run from there) in every lane.
            const Y l = mid[v].at(c0 - 1);
            prev[v] = {_mm256_permutevar8x32_epi32(l.y, lane0), _mm256_permutevar8x32_epi32(l.cb, lane0),
                       _mm256_permutevar8x32_epi32(l.cr, lane0)};
        }
        uint8_t* out = mapRing(r).p;
        int c = c0;
        for (; c + kLanes - 1 <= c1; c += kLanes) {
            __m256i dy[2][4], dc[2][4];
            for (int v = 0; v < 2; ++v) {
                const Y p = mid[v].at(c), right = mid[v].at(c + 1);
                const Y left = {L::fromLeft(prev[v].y, p.y), L::fromLeft(prev[v].cb, p.cb), L::fromLeft(prev[v].cr, p.cr)};
                const Y q[4] = {left, right, up[v].at(c), down[v].at(c)};
                for (int k = 0; k < 4; ++k) {
                    dy[v][k] = _mm256_abs_epi32(_mm256_sub_epi32(p.y, q[k].y));
                    dc[v][k] = L::chromaDist(p, q[k]);
                }
                prev[v] = p;
            }
            const __m256i lumaEps = _mm256_min_epi32(_mm256_max_epi32(dy[0][0], dy[0][1]), _mm256_max_epi32(dy[1][2], dy[1][3]));
            const __m256i chromaEps = _mm256_min_epi32(_mm256_max_epi32(dc[0][0], dc[0][1]), _mm256_max_epi32(dc[1][2], dc[1][3]));
            // -1 per neighbour outside either threshold; the map countH - countV
            // is the V misses less the H misses.
            __m256i bad[2];
            for (int v = 0; v < 2; ++v) {
                bad[v] = _mm256_setzero_si256();
                for (int k = 0; k < 4; ++k)
                    bad[v] = _mm256_add_epi32(bad[v], _mm256_or_si256(_mm256_cmpgt_epi32(dy[v][k], lumaEps),
                                                                      _mm256_cmpgt_epi32(dc[v][k], chromaEps)));
            }
            L::storeSigned(at(out, c), _mm256_sub_epi32(bad[0], bad[1]));
        }
        return c;
    }

    // Returns the first column left to the scalar form; `t` carries the
    // running value.
    int outputRowVec(int r, int c0, int c1, int32_t& t) const
    {
        const uint8_t *mu = mapRing(r - 1).p, *mm = mapRing(r).p, *md = mapRing(r + 1).p;
        const uint8_t* red[2] = {redRing(0, r).p, redRing(1, r).p};
        const uint8_t* green[2] = {greenRing(0, r).p, greenRing(1, r).p};
        const uint8_t* blue[2] = {blueRing(0, r).p, blueRing(1, r).p};
        uint8_t* d = dst + std::ptrdiff_t(r - y) * dstStep;
        __m256i run = _mm256_set1_epi32(t);
        const __m256i zero = _mm256_setzero_si256();
        int c = c0;
        for (; c + kLanes - 1 <= c1; c += kLanes) {
            __m256i s = zero;
            for (const uint8_t* m : {mu, mm, md})
                for (int j = -1; j <= 1; ++j)
                    s = _mm256_add_epi32(s, L::loadSigned(at(m, c + j)));
            // Each lane takes the last non-zero S at or left of it, else the
            // running value: a scan in three steps of 1, 2 and 4 lanes.
            auto keepNonZero = [&](__m256i own, __m256i left) {
                return _mm256_blendv_epi8(own, left, _mm256_cmpeq_epi32(own, zero));
            };
            s = keepNonZero(s, L::fromLeft(run, s));
            s = keepNonZero(s, L::fromLeft2(run, s));
            s = keepNonZero(s, L::fromLeft4(run, s));
            run = _mm256_permutevar8x32_epi32(s, _mm256_set1_epi32(7));
            const __m256i useV = _mm256_cmpgt_epi32(zero, s);
            alignas(32) int32_t px[3][kLanes];
            _mm256_store_si256(reinterpret_cast<__m256i*>(px[0]),
                               _mm256_blendv_epi8(L::load(at(red[0], c)), L::load(at(red[1], c)), useV));
            _mm256_store_si256(reinterpret_cast<__m256i*>(px[1]),
                               _mm256_blendv_epi8(L::load(at(green[0], c)), L::load(at(green[1], c)), useV));
            _mm256_store_si256(reinterpret_cast<__m256i*>(px[2]),
                               _mm256_blendv_epi8(L::load(at(blue[0], c)), L::load(at(blue[1], c)), useV));
            uint8_t* q = d + std::ptrdiff_t(c - x) * 3 * sizeof(T);
            for (int i = 0; i < kLanes; ++i)
                for (int ch = 0; ch < 3; ++ch)
                    storeAt<T>(q + (3 * i + ch) * sizeof(T), px[ch][i]);
        }
        t = _mm256_cvtsi256_si32(run);
        return c;
    }

    // Stage 1: green of both candidates at row r, columns [c0, c1].
    void greenRow(int r, int c0, int c1) const
    {
        const SrcRow up2 = srcRow(r - 2), up = srcRow(r - 1), mid = srcRow(r), down = srcRow(r + 1), down2 = srcRow(r + 2);
        const RingRow<T> outH = greenRing(0, r), outV = greenRing(1, r);
        for (int c = vec ? greenRowVec(r, c0, c1) : c0; c <= c1; ++c) {
            const int32_t s = mid[c];
            int32_t gh = s, gv = s;
            if (grid.colourSiteAt(r, c)) {
                // The mean of the two green neighbours on the axis, corrected
                // by the curvature of the site's own colour, kept between them.
                auto along = [&](int32_t a, int32_t b, int32_t l, int32_t e) {
                    const int32_t v = ((a + b) >> 1) + ((2 * s - l - e) >> 2);
                    return std::clamp(v, std::min(a, b), std::max(a, b));
                };
                gh = along(mid[c - 1], mid[c + 1], mid[c - 2], mid[c + 2]);
                gv = along(up[c], down[c], up2[c], down2[c]);
            }
            outH.set(c, gh);
            outV.set(c, gv);
        }
    }

    // Stage 2: red and blue of both candidates from their own green: colour
    // differences to green carried over from the neighbours that have them.
    void redBlueRow(int r, int c0, int c1) const
    {
        if (vec)
            c0 = redBlueRowVec(r, c0, c1);
        const bool redRow = grid.redRowAt(r);
        const SrcRow up = srcRow(r - 1), mid = srcRow(r), down = srcRow(r + 1);
        for (int v = 0; v < 2; ++v) {
            const RingRow<T> gu = greenRing(v, r - 1), gm = greenRing(v, r), gd = greenRing(v, r + 1);
            const RingRow<T> red = redRing(v, r), blue = blueRing(v, r);
            for (int c = c0; c <= c1; ++c) {
                const int32_t g = gm[c];
                int32_t own, other;  // own: the colour of the row's red or blue sites
                if (!grid.colourSiteAt(r, c)) {
                    own = g + ((mid[c - 1] - gm[c - 1] + mid[c + 1] - gm[c + 1]) >> 1);
                    other = g + ((up[c] - gu[c] + down[c] - gd[c]) >> 1);
                } else {
                    own = mid[c];
                    const int32_t xs = up[c - 1] + up[c + 1] + down[c - 1] + down[c + 1];
                    const int32_t ys = gu[c - 1] + gu[c + 1] + gd[c - 1] + gd[c + 1];
                    other = g + ((xs - ys) >> 2);
                }
                own = std::clamp(own, 0, kMax);
                other = std::clamp(other, 0, kMax);
                red.set(c, redRow ? own : other);
                blue.set(c, redRow ? other : own);
            }
        }
    }

    // Stages 3 and 4: the homogeneity map, countH - countV.
    void mapRow(int r, int c0, int c1) const
    {
        if (vec)
            c0 = mapRowVec(r, c0, c1);
        struct Rows {
            RingRow<T> red, green, blue;
            Ycc at(int c) const { return toYcc(red[c], green[c], blue[c]); }
        };
        Rows up[2], mid[2], down[2];
        Ycc left[2], centre[2];
        for (int v = 0; v < 2; ++v) {
            up[v] = {redRing(v, r - 1), greenRing(v, r - 1), blueRing(v, r - 1)};
            mid[v] = {redRing(v, r), greenRing(v, r), blueRing(v, r)};
            down[v] = {redRing(v, r + 1), greenRing(v, r + 1), blueRing(v, r + 1)};
            left[v] = mid[v].at(c0 - 1);
            centre[v] = mid[v].at(c0);
        }
        const RingRow<Map> out = mapRing(r);
        for (int c = c0; c <= c1; ++c) {
            int32_t dy[2][4], dc[2][4];  // left, right, up, down
            for (int v = 0; v < 2; ++v) {
                const Ycc p = centre[v], right = mid[v].at(c + 1);
                const Ycc q[4] = {left[v], right, up[v].at(c), down[v].at(c)};
                for (int k = 0; k < 4; ++k) {
                    dy[v][k] = absDiff(p.y, q[k].y);
                    dc[v][k] = chromaDist(p, q[k]);
                }
                left[v] = p;
                centre[v] = right;
            }
            // Thresholds from H along the row and V along the column.
            const int32_t lumaEps = std::min(std::max(dy[0][0], dy[0][1]), std::max(dy[1][2], dy[1][3]));
            const int32_t chromaEps = std::min(std::max(dc[0][0], dc[0][1]), std::max(dc[1][2], dc[1][3]));
            int count[2] = {0, 0};
            for (int v = 0; v < 2; ++v)
                for (int k = 0; k < 4; ++k)
                    count[v] += (dy[v][k] <= lumaEps && dc[v][k] <= chromaEps) ? 1 : 0;
            out.set(c, count[0] - count[1]);
        }
    }

    // Stage 5: the choice along the row, stored where the rectangle has it.
    void outputRow(int r, int c0, int c1) const
    {
        if (r < y || r >= yEnd)
            return;  // the running value only matters for stored pixels
        const RingRow<Map> mu = mapRing(r - 1), mm = mapRing(r), md = mapRing(r + 1);
        const RingRow<T> red[2] = {redRing(0, r), redRing(1, r)}, green[2] = {greenRing(0, r), greenRing(1, r)},
                         blue[2] = {blueRing(0, r), blueRing(1, r)};
        uint8_t* d = dst + std::ptrdiff_t(r - y) * dstStep;
        int32_t t = 1;
        if (vec)
            c0 = outputRowVec(r, c0, c1, t);
        for (int c = c0; c <= c1; ++c) {
            int32_t s = 0;
            for (int j = -1; j <= 1; ++j)
                s += mu[c + j] + mm[c + j] + md[c + j];
            if (s != 0)
                t = s;
            if (c < x || c >= xEnd)
                continue;
            const int v = t < 0 ? 1 : 0;
            uint8_t* px = d + std::ptrdiff_t(c - x) * 3 * sizeof(T);
            storeAt<T>(px, red[v][c]);
            storeAt<T>(px + sizeof(T), green[v][c]);
            storeAt<T>(px + 2 * sizeof(T), blue[v][c]);
        }
    }

    // One work item: rows stream through the rings, each stage a row behind
    // the one it reads.
    void item(int ix, int iy, int iw, int ih, bool interior = false)
    {
        if (iw < 1 || ih < 1)
            return;
        cx = ix;
        vec = interior && !g_scalarBlocks;
        const int last = ix + iw - 1;
        for (int k = iy - 3; k <= iy + ih + 2; ++k) {
            greenRow(k, ix - 3, last + 3);
            if (k - 1 >= iy - 2)
                redBlueRow(k - 1, ix - 2, last + 2);
            if (k - 2 >= iy - 1)
                mapRow(k - 2, ix - 1, last + 1);
            if (k - 3 >= iy)
                outputRow(k - 3, ix, last);
        }
    }
};

template <class T>
OrvStatus ownDemosaicAHD(const T* src, OrvRect roi, RoiSize size, int srcStep, T* dst, int dstStep, int grid,
                         uint8_t* tmp, int tmpStep)
{
    if (!src || !dst)
        return orvStatusNullPointer;
    if (size.width < 5 || size.height < 5)
        return orvStatusBadSize;
    if (!Grid::valid(grid))
        return orvStatusBadArgument;
    const int W = size.width, H = size.height;
    const int x = std::max(roi.x, 0), y = std::max(roi.y, 0);
    const int w = roi.width + std::min(W - x - roi.width, 0), h = roi.height + std::min(H - y - roi.height, 0);
    if (w < 1 || h < 1)
        return orvStatusOk;

    // The interior: five pixels from every edge, a red site at its first
    // pixel, even sizes (rounded toward minus infinity).
    const Grid g = Grid::of(grid);
    int rx = std::max(x, 5), ry = std::max(y, 5);
    int rw = std::min(W - 5, x + w) - rx, rh = std::min(H - 5, y + h) - ry;
    if ((rx & 1) != g.redCol) {
        ++rx;
        --rw;
    }
    rw &= ~1;
    if ((ry & 1) != g.redRow) {
        ++ry;
        --rh;
    }
    rh &= ~1;

    Ahd<T> a{reinterpret_cast<const uint8_t*>(src), srcStep, W, H, g, reinterpret_cast<uint8_t*>(dst), dstStep,
             x, y, x + w, y + h, tmp, tmpStep};
    a.item(rx, ry, rw, rh, true);
    a.item(x, y, w, ry - y);
    a.item(x, ry + rh, w, y + h - (ry + rh));
    a.item(x, ry, rx - x, rh);
    a.item(rx + rw, ry, x + w - (rx + rw), rh);
    return orvStatusOk;
}

}  // namespace
}  // namespace h9

using namespace h9;

ORV_FRONT(orviDemosaicAHD_8u_C1C3R)(const Orv8u* pSrc, OrvRect srcRoi, RoiSize srcSize, int srcStep, Orv8u* pDst,
                                    int dstStep, OrvBayerGrid grid, Orv8u* pTmp, int tmpStep)
{
    return ownDemosaicAHD(pSrc, srcRoi, srcSize, srcStep, pDst, dstStep, grid, pTmp, tmpStep);
}

ORV_FRONT(orviDemosaicAHD_16u_C1C3R)(const Orv16u* pSrc, OrvRect srcRoi, RoiSize srcSize, int srcStep, Orv16u* pDst,
                                     int dstStep, OrvBayerGrid grid, Orv8u* pTmp, int tmpStep)
{
    return ownDemosaicAHD(pSrc, srcRoi, srcSize, srcStep, pDst, dstStep, grid, pTmp, tmpStep);
}
