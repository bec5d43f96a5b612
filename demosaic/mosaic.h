// The Bayer mosaic as every demosaicing family sees it: the whole sensor
// image with its grid code, the colour of any site, the rectangle clipped to
// the mosaic, and the two rounded means.
#pragma once

#include <cstddef>
#include <cstdint>

#include "orvcc.h"

namespace h9 {

enum Colour { kRed = 0, kGreen = 1, kBlue = 2 };

// Grid codes name the 2x2 cell at the mosaic's origin, read row by row:
// 0 BGGR, 1 RGGB, 2 GBRG, 3 GRBG. A cell holds one red site, one blue site
// on the other diagonal, and two green sites; the code fixes the parities of
// row and column of the red site.
struct Grid {
    int redRow;
    int redCol;

    static bool valid(int code) { return code >= 0 && code <= 3; }
    static Grid of(int code)
    {
        static constexpr Grid kGrids[4] = {{1, 1}, {0, 0}, {1, 0}, {0, 1}};
        return kGrids[code];
    }
    // Rows holding red sites (and green); the other rows hold blue and green.
    bool redRowAt(int r) const { return (r & 1) == redRow; }
    // Red and blue sites lie where row and column parities differ as the red
    // site's do.
    bool colourSiteAt(int r, int c) const { return ((r ^ c) & 1) == (redRow ^ redCol); }
    Colour at(int r, int c) const
    {
        if (!colourSiteAt(r, c))
            return kGreen;
        return redRowAt(r) ? kRed : kBlue;
    }
};

// The whole mosaic: its origin, the step between rows in elements, its size.
template <class T>
struct Mosaic {
    const T* src;
    std::ptrdiff_t step;
    int width;
    int height;
    Grid grid;

    const T* row(int r) const { return src + r * step; }
    unsigned at(int r, int c) const { return src[r * step + c]; }
};

// The rectangle clipped to the mosaic: columns [x, xEnd), rows [y, yEnd).
// Sizes are only reduced by the clip; an origin beyond the mosaic leaves an
// empty rectangle, and an empty rectangle is converted to nothing.
struct Clip {
    int x, y, xEnd, yEnd;

    static Clip of(OrvRect roi, RoiSize size)
    {
        int w = roi.width, h = roi.height;
        if (roi.x + w > size.width)
            w = size.width - roi.x;
        if (roi.y + h > size.height)
            h = size.height - roi.y;
        return {roi.x, roi.y, roi.x + w, roi.y + h};
    }
    bool empty() const { return xEnd <= x || yEnd <= y; }
};

// The two rounded means of the demosaicing rules; all sums are exact.
inline unsigned mean2(unsigned a, unsigned b) { return (a + b + 1) >> 1; }
inline unsigned mean4(unsigned a, unsigned b, unsigned c, unsigned d) { return (a + b + c + d + 2) >> 2; }

}  // namespace h9
