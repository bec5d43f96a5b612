// Bayer mosaic to interleaved RGB: edge-directed green and bilinear red and
// blue in the interior, plain bilinear with one-sided neighbours on the two
// outermost rows and columns of the mosaic.
//
// Zones belong to the whole mosaic, not to the rectangle: a rectangle inside
// the mosaic reads up to two pixels around it and has no frame pixels. Each
// output pixel is a function of the source alone, so the interior may be cut
// into bands of rows for threads, and the vector path and the scalar form
// give the same bits wherever a row splits between them.
#include <immintrin.h>

#include <algorithm>
#include <array>

#include "demosaic/mosaic.h"
#include "frame/driver.h"
#include "frame/fronts.h"

namespace h9 {
namespace {

// Steps arrive in bytes; a 16u step becomes an element count by an
// arithmetic shift, which drops the low bit of an odd step.
template <class T>
std::ptrdiff_t elementStep(int bytes)
{
    return bytes >> (sizeof(T) - 1);
}

// ---------------------------------------------------------------------------
// The frame: every neighbour that lies outside the mosaic is left out, the
// missing side of an axis giving its weight to the side that exists.

template <class T>
void framePixel(const Mosaic<T>& m, int r, int c, T* d)
{
    const bool hasN = r > 0, hasS = r < m.height - 1, hasW = c > 0, hasE = c < m.width - 1;
    const bool fullV = hasN && hasS, fullH = hasW && hasE;
    auto v = [&](int dr, int dc) { return m.at(r + dr, c + dc); };
    // The nearer row (or column) on the side that exists.
    const int dn = hasN ? -1 : 1, dw = hasW ? -1 : 1;
    unsigned own, green, other;  // own: the colour of the row's red or blue sites
    if (!m.grid.colourSiteAt(r, c)) {
        green = v(0, 0);
        own = fullH ? mean2(v(0, -1), v(0, 1)) : v(0, dw);
        other = fullV ? mean2(v(-1, 0), v(1, 0)) : v(dn, 0);
    } else {
        own = v(0, 0);
        if (fullV && fullH) {
            green = mean4(v(-1, 0), v(0, -1), v(0, 1), v(1, 0));
            other = mean4(v(-1, -1), v(-1, 1), v(1, -1), v(1, 1));
        } else if (fullH) {
            green = (v(0, -1) + v(0, 1) + 2 * v(dn, 0) + 2) >> 2;
            other = mean2(v(dn, -1), v(dn, 1));
        } else if (fullV) {
            green = (v(-1, 0) + v(1, 0) + 2 * v(0, dw) + 2) >> 2;
            other = mean2(v(-1, dw), v(1, dw));
        } else {
            green = mean2(v(dn, 0), v(0, dw));
            other = v(dn, dw);
        }
    }
    const bool redRow = m.grid.redRowAt(r);
    d[0] = static_cast<T>(redRow ? own : other);
    d[1] = static_cast<T>(green);
    d[2] = static_cast<T>(redRow ? other : own);
}

// ---------------------------------------------------------------------------
// The interior: scalar form of one pixel. `p` is the site, `s` the step in
// elements. On a row of red sites `own` is red and `other` blue; on a row of
// blue sites the two swap.

inline unsigned absDiff(unsigned a, unsigned b) { return a > b ? a - b : b - a; }

template <class T>
inline void interiorPixel(const T* p, std::ptrdiff_t s, bool colourSite, bool redRow, T* d)
{
    const unsigned n = p[-s], so = p[s], w = p[-1], e = p[1];
    unsigned own, green, other;
    if (colourSite) {
        own = p[0];
        other = mean4(p[-s - 1], p[-s + 1], p[s - 1], p[s + 1]);
        // Green along the axis on which the site's own colour changes less.
        const unsigned dv = absDiff(p[-2 * s], p[2 * s]), dh = absDiff(p[-2], p[2]);
        green = dv < dh ? mean2(n, so) : dv > dh ? mean2(w, e) : mean4(n, w, e, so);
    } else {
        green = p[0];
        own = mean2(w, e);
        other = mean2(n, so);
    }
    d[0] = static_cast<T>(redRow ? own : other);
    d[1] = static_cast<T>(green);
    d[2] = static_cast<T>(redRow ? other : own);
}

// ---------------------------------------------------------------------------
// The interior, AVX2: one register of 32 (8u) or 16 (16u) pixels, every rule
// computed in every lane in the element's own width and the lanes of the two
// site classes merged by the alternating lane mask.

template <class T>
struct Lanes;

template <>
struct Lanes<uint8_t> {
    static __m256i avg(__m256i a, __m256i b) { return _mm256_avg_epu8(a, b); }
    static __m256i add(__m256i a, __m256i b) { return _mm256_add_epi8(a, b); }
    static __m256i sub(__m256i a, __m256i b) { return _mm256_sub_epi8(a, b); }
    static __m256i subs(__m256i a, __m256i b) { return _mm256_subs_epu8(a, b); }
    static __m256i min(__m256i a, __m256i b) { return _mm256_min_epu8(a, b); }
    static __m256i eq(__m256i a, __m256i b) { return _mm256_cmpeq_epi8(a, b); }
    static __m256i one() { return _mm256_set1_epi8(1); }
    static __m256i evenLanes() { return _mm256_set1_epi16(0x00ff); }
};

template <>
struct Lanes<uint16_t> {
    static __m256i avg(__m256i a, __m256i b) { return _mm256_avg_epu16(a, b); }
    static __m256i add(__m256i a, __m256i b) { return _mm256_add_epi16(a, b); }
    static __m256i sub(__m256i a, __m256i b) { return _mm256_sub_epi16(a, b); }
    static __m256i subs(__m256i a, __m256i b) { return _mm256_subs_epu16(a, b); }
    static __m256i min(__m256i a, __m256i b) { return _mm256_min_epu16(a, b); }
    static __m256i eq(__m256i a, __m256i b) { return _mm256_cmpeq_epi16(a, b); }
    static __m256i one() { return _mm256_set1_epi16(1); }
    static __m256i evenLanes() { return _mm256_set1_epi32(0x0000ffff); }
};

inline __m256i select(__m256i mask, __m256i a, __m256i b)
{
    return _mm256_or_si256(_mm256_and_si256(mask, a), _mm256_andnot_si256(mask, b));
}

// (a + b + c + d + 2) >> 2 without widening, from the rounded pair means
// ab = (a + b + 1) >> 1 and cd = (c + d + 1) >> 1: take the floored pair
// means p and q, round their mean up, and add the one unit that is lost when
// both pair sums were odd and p + q is even.
template <class L>
inline __m256i mean4(__m256i a, __m256i b, __m256i c, __m256i d, __m256i ab, __m256i cd)
{
    const __m256i one = L::one();
    const __m256i x = _mm256_xor_si256(a, b), y = _mm256_xor_si256(c, d);
    const __m256i p = L::sub(ab, _mm256_and_si256(x, one));
    const __m256i q = L::sub(cd, _mm256_and_si256(y, one));
    const __m256i carry = _mm256_and_si256(_mm256_andnot_si256(_mm256_xor_si256(p, q), _mm256_and_si256(x, y)), one);
    return L::add(L::avg(p, q), carry);
}

template <class L>
inline __m256i absDiff(__m256i a, __m256i b)
{
    return _mm256_or_si256(L::subs(a, b), L::subs(b, a));
}

// Interleaving three channel registers into pixels. Within a 128-bit lane of
// N elements, pixel k's element of channel ch belongs at element 3k + ch of
// the 3N-element output; 3 is invertible modulo N, so one byte shuffle per
// channel moves every element to its place modulo N, and each 16-byte output
// chunk then takes, element by element, the channel whose place it is.
template <int E>
constexpr std::array<int8_t, 16> placeMask(int ch)
{
    constexpr int n = 16 / E;
    std::array<int8_t, 16> m{};
    for (int k = 0; k < n; ++k)
        for (int b = 0; b < E; ++b)
            m[((3 * k + ch) % n) * E + b] = int8_t(k * E + b);
    return m;
}

template <int E>
constexpr std::array<int8_t, 16> chunkMask(int chunk, int ch)
{
    constexpr int n = 16 / E;
    std::array<int8_t, 16> m{};
    for (int q = 0; q < n; ++q)
        for (int b = 0; b < E; ++b)
            m[q * E + b] = (chunk * n + q) % 3 == ch ? int8_t(-1) : int8_t(0);
    return m;
}

inline __m256i broadcast(const std::array<int8_t, 16>& m)
{
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(m.data())));
}

template <class T>
inline void storeRgb(T* d, __m256i r, __m256i g, __m256i b)
{
    constexpr int E = sizeof(T);
    static constexpr std::array<int8_t, 16> kPlace[3] = {placeMask<E>(0), placeMask<E>(1), placeMask<E>(2)};
    static constexpr std::array<int8_t, 16> kChunk[3][3] = {
        {chunkMask<E>(0, 0), chunkMask<E>(0, 1), chunkMask<E>(0, 2)},
        {chunkMask<E>(1, 0), chunkMask<E>(1, 1), chunkMask<E>(1, 2)},
        {chunkMask<E>(2, 0), chunkMask<E>(2, 1), chunkMask<E>(2, 2)}};
    const __m256i rs = _mm256_shuffle_epi8(r, broadcast(kPlace[0]));
    const __m256i gs = _mm256_shuffle_epi8(g, broadcast(kPlace[1]));
    const __m256i bs = _mm256_shuffle_epi8(b, broadcast(kPlace[2]));
    auto* out = reinterpret_cast<__m128i*>(d);
    for (int j = 0; j < 3; ++j) {
        const __m256i o = _mm256_or_si256(
            _mm256_or_si256(_mm256_and_si256(rs, broadcast(kChunk[j][0])), _mm256_and_si256(gs, broadcast(kChunk[j][1]))),
            _mm256_and_si256(bs, broadcast(kChunk[j][2])));
        // The low lane holds the first half of the pixels, the high lane the second.
        _mm_storeu_si128(out + j, _mm256_castsi256_si128(o));
        _mm_storeu_si128(out + 3 + j, _mm256_extracti128_si256(o, 1));
    }
}

template <class T>
void interiorVector(const T* p, std::ptrdiff_t s, T* d, int n, bool firstIsColour, bool redRow)
{
    using L = Lanes<T>;
    constexpr int kLanes = 32 / sizeof(T);
    const __m256i even = L::evenLanes();
    const __m256i colourLanes = firstIsColour ? even : _mm256_xor_si256(even, _mm256_set1_epi8(-1));
    for (int i = 0; i < n; i += kLanes, p += kLanes, d += 3 * kLanes) {
        auto at = [p](std::ptrdiff_t off) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + off)); };
        const __m256i c = at(0), w = at(-1), e = at(1), nn = at(-s), ss = at(s);
        const __m256i mh = L::avg(w, e), mv = L::avg(nn, ss);
        const __m256i m4 = mean4<L>(nn, ss, w, e, mv, mh);
        const __m256i nw = at(-s - 1), ne = at(-s + 1), sw = at(s - 1), se = at(s + 1);
        const __m256i md = mean4<L>(nw, ne, sw, se, L::avg(nw, ne), L::avg(sw, se));
        const __m256i dv = absDiff<L>(at(-2 * s), at(2 * s)), dh = absDiff<L>(at(-2), at(2));
        const __m256i notAbove = L::eq(L::min(dv, dh), dv), tie = L::eq(dv, dh);
        const __m256i gc = select(tie, m4, select(notAbove, mv, mh));
        const __m256i own = select(colourLanes, c, mh);
        const __m256i green = select(colourLanes, gc, c);
        const __m256i other = select(colourLanes, md, mv);
        if (redRow)
            storeRgb(d, own, green, other);
        else
            storeRgb(d, other, green, own);
    }
}

// Rows [r0, r0 + rows) of the interior, columns [x0, x0 + width); `d` is the
// output of (r0, x0). The vector path takes whole registers from x0 on and
// the scalar form the rest of the row.
template <class T>
void interiorRows(const Mosaic<T>& m, int r0, int rows, int x0, int width, T* d, std::ptrdiff_t dstep)
{
    constexpr int kLanes = 32 / sizeof(T);
    const int nv = g_scalarBlocks ? 0 : width / kLanes * kLanes;
    for (int r = r0; r < r0 + rows; ++r, d += dstep) {
        const T* p = m.row(r) + x0;
        const bool redRow = m.grid.redRowAt(r);
        const bool firstIsColour = m.grid.colourSiteAt(r, x0);
        if (nv > 0)
            interiorVector(p, m.step, d, nv, firstIsColour, redRow);
        for (int i = nv; i < width; ++i)
            interiorPixel(p + i, m.step, firstIsColour == ((i & 1) == 0), redRow, d + 3 * i);
    }
}

// The interior is split into threads only when it is at least this many
// pixels wide and high.
constexpr int kBandLimit = 192;

template <class T>
OrvStatus ownCFAToRGB(const T* src, OrvRect roi, RoiSize size, int srcStep, T* dst, int dstStep, int grid)
{
    if (!src)
        return orvStatusNullPointer;
    if (!dst)
        return orvStatusNullPointer;
    if (size.width < 2 || size.height < 2)
        return orvStatusBadSize;
    if (!Grid::valid(grid))
        return orvStatusBadArgument;
    const Clip k = Clip::of(roi, size);
    if (k.empty())
        return orvStatusOk;
    const Mosaic<T> m{src, elementStep<T>(srcStep), size.width, size.height, Grid::of(grid)};
    const std::ptrdiff_t ds = elementStep<T>(dstStep);
    const int W = size.width, H = size.height;
    auto out = [&](int r, int c) { return dst + (r - k.y) * ds + 3 * (c - k.x); };

    // Every pixel depends on the source alone, so the frame is written with
    // the rows it belongs to: the columns 0, 1, W-2, W-1 in the same pass as
    // their row's interior, rows 0 and 1 by the first band and rows H-2 and
    // H-1 by the last, which leaves no serial part around the bands.
    auto frameCols = [&](int r, int from, int to) {
        for (int c = from; c < to; ++c)
            framePixel(m, r, c, out(r, c));
    };
    auto sideCols = [&](int r) {
        frameCols(r, k.x, std::min(k.xEnd, 2));
        frameCols(r, std::max(k.x, std::max(2, W - 2)), k.xEnd);
    };
    auto frameRows = [&](int from, int to) {
        for (int r = std::max(from, k.y); r < std::min(to, k.yEnd); ++r)
            frameCols(r, k.x, k.xEnd);
    };

    const int x0 = std::max(k.x, 2), y0 = std::max(k.y, 2);
    const int iw = std::min(k.xEnd - 1, W - 3) - x0 + 1, ih = std::min(k.yEnd - 1, H - 3) - y0 + 1;
    if (iw <= 0 || ih <= 0) {
        frameRows(0, 2);
        for (int r = std::max(k.y, 2); r < std::min(k.yEnd, H - 2); ++r)
            sideCols(r);
        frameRows(std::max(2, H - 2), H);
        return orvStatusOk;
    }
    auto worker = [&](int first, int rows) {
        if (first == 0)
            frameRows(0, 2);
        for (int r = y0 + first; r < y0 + first + rows; ++r) {
            sideCols(r);
            interiorRows(m, r, 1, x0, iw, out(r, x0), ds);
        }
        if (first + rows == ih)
            frameRows(std::max(2, H - 2), H);
    };
    const int n = ownGetNumThreads();
    if (n <= 1 || iw < kBandLimit || ih < kBandLimit)
        worker(0, ih);
    else
        bands(ih, n, EvenBands{ih}, worker);
    return orvStatusOk;
}

}  // namespace
}  // namespace h9

using namespace h9;

ORV_FRONT(orviCFAToRGB_8u_C1C3R)(const Orv8u* pSrc, OrvRect srcRoi, RoiSize srcSize, int srcStep, Orv8u* pDst,
                                 int dstStep, OrvBayerGrid grid)
{
    return ownCFAToRGB(pSrc, srcRoi, srcSize, srcStep, pDst, dstStep, grid);
}

ORV_FRONT(orviCFAToRGB_16u_C1C3R)(const Orv16u* pSrc, OrvRect srcRoi, RoiSize srcSize, int srcStep, Orv16u* pDst,
                                  int dstStep, OrvBayerGrid grid)
{
    return ownCFAToRGB(pSrc, srcRoi, srcSize, srcStep, pDst, dstStep, grid);
}
