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

    int32_t pm(int r, int c) const
    {
        return loadAt<T>(src + std::ptrdiff_t(mirror(r, H - 1)) * srcStep + std::ptrdiff_t(mirror(c, W - 1)) * sizeof(T));
    }
    uint8_t* ring(int base, int size, int row, int c) const
    {
        const int slot = base + ((row % size) + size) % size;
        return tmp + std::ptrdiff_t(slot) * tmpStep + std::ptrdiff_t(c - cx + 4) * sizeof(T);
    }
    int32_t green(int v, int r, int c) const { return loadAt<T>(ring(v ? kGreenV : kGreenH, 5, r, c)); }

    // Stage 1: green of both candidates at row r, columns [c0, c1].
    void greenRow(int r, int c0, int c1) const
    {
        for (int c = c0; c <= c1; ++c) {
            const int32_t s = pm(r, c);
            int32_t gh = s, gv = s;
            if (grid.colourSiteAt(r, c)) {
                // The mean of the two green neighbours on the axis, corrected
                // by the curvature of the site's own colour, kept between them.
                auto along = [&](int32_t a, int32_t b, int32_t l, int32_t e) {
                    const int32_t v = ((a + b) >> 1) + ((2 * s - l - e) >> 2);
                    return std::clamp(v, std::min(a, b), std::max(a, b));
                };
                gh = along(pm(r, c - 1), pm(r, c + 1), pm(r, c - 2), pm(r, c + 2));
                gv = along(pm(r - 1, c), pm(r + 1, c), pm(r - 2, c), pm(r + 2, c));
            }
            storeAt<T>(ring(kGreenH, 5, r, c), gh);
            storeAt<T>(ring(kGreenV, 5, r, c), gv);
        }
    }

    // Stage 2: red and blue of both candidates from their own green: colour
    // differences to green carried over from the neighbours that have them.
    void redBlueRow(int r, int c0, int c1) const
    {
        const bool redRow = grid.redRowAt(r);
        for (int c = c0; c <= c1; ++c) {
            for (int v = 0; v < 2; ++v) {
                const int32_t g = green(v, r, c);
                int32_t own, other;  // own: the colour of the row's red or blue sites
                if (!grid.colourSiteAt(r, c)) {
                    own = g + ((pm(r, c - 1) - green(v, r, c - 1) + pm(r, c + 1) - green(v, r, c + 1)) >> 1);
                    other = g + ((pm(r - 1, c) - green(v, r - 1, c) + pm(r + 1, c) - green(v, r + 1, c)) >> 1);
                } else {
                    own = pm(r, c);
                    const int32_t xs = pm(r - 1, c - 1) + pm(r - 1, c + 1) + pm(r + 1, c - 1) + pm(r + 1, c + 1);
                    const int32_t ys = green(v, r - 1, c - 1) + green(v, r - 1, c + 1) + green(v, r + 1, c - 1) +
                                       green(v, r + 1, c + 1);
                    other = g + ((xs - ys) >> 2);
                }
                own = std::clamp(own, 0, kMax);
                other = std::clamp(other, 0, kMax);
                storeAt<T>(ring(v ? kRedV : kRedH, 4, r, c), redRow ? own : other);
                storeAt<T>(ring(v ? kBlueV : kBlueH, 4, r, c), redRow ? other : own);
            }
        }
    }

    Ycc ycc(int v, int r, int c) const
    {
        return toYcc(loadAt<T>(ring(v ? kRedV : kRedH, 4, r, c)), green(v, r, c),
                     loadAt<T>(ring(v ? kBlueV : kBlueH, 4, r, c)));
    }

    // Stages 3 and 4: the homogeneity map, countH - countV.
    void mapRow(int r, int c0, int c1) const
    {
        for (int c = c0; c <= c1; ++c) {
            static constexpr int kDr[4] = {0, 0, -1, 1}, kDc[4] = {-1, 1, 0, 0};  // left, right, up, down
            int32_t dy[2][4], dc[2][4];
            for (int v = 0; v < 2; ++v) {
                const Ycc p = ycc(v, r, c);
                for (int k = 0; k < 4; ++k) {
                    const Ycc q = ycc(v, r + kDr[k], c + kDc[k]);
                    dy[v][k] = absDiff(p.y, q.y);
                    dc[v][k] = chromaDist(p, q);
                }
            }
            // Thresholds from H along the row and V along the column.
            const int32_t lumaEps = std::min(std::max(dy[0][0], dy[0][1]), std::max(dy[1][2], dy[1][3]));
            const int32_t chromaEps = std::min(std::max(dc[0][0], dc[0][1]), std::max(dc[1][2], dc[1][3]));
            int count[2] = {0, 0};
            for (int v = 0; v < 2; ++v)
                for (int k = 0; k < 4; ++k)
                    count[v] += (dy[v][k] <= lumaEps && dc[v][k] <= chromaEps) ? 1 : 0;
            storeAt<Map>(ring(kMap, 4, r, c), count[0] - count[1]);
        }
    }

    // Stage 5: the choice along the row, stored where the rectangle has it.
    void outputRow(int r, int c0, int c1) const
    {
        const bool inRows = r >= y && r < yEnd;
        int32_t t = 1;
        for (int c = c0; c <= c1; ++c) {
            int32_t s = 0;
            for (int i = -1; i <= 1; ++i)
                for (int j = -1; j <= 1; ++j)
                    s += loadAt<Map>(ring(kMap, 4, r + i, c + j));
            if (s != 0)
                t = s;
            if (!inRows || c < x || c >= xEnd)
                continue;
            const int v = t < 0 ? 1 : 0;
            uint8_t* d = dst + std::ptrdiff_t(r - y) * dstStep + std::ptrdiff_t(c - x) * 3 * sizeof(T);
            storeAt<T>(d, loadAt<T>(ring(v ? kRedV : kRedH, 4, r, c)));
            storeAt<T>(d + sizeof(T), green(v, r, c));
            storeAt<T>(d + 2 * sizeof(T), loadAt<T>(ring(v ? kBlueV : kBlueH, 4, r, c)));
        }
    }

    // One work item: rows stream through the rings, each stage a row behind
    // the one it reads.
    void item(int ix, int iy, int iw, int ih)
    {
        if (iw < 1 || ih < 1)
            return;
        cx = ix;
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
    a.item(rx, ry, rw, rh);
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
