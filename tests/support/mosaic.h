// Bayer mosaics for the demosaicing tests: elements read and written
// bytewise (byte steps may be odd for 16u), and scenes sampled through a
// grid code.
#pragma once

#include <cstring>

#include "support/image.h"

namespace orvtest {

enum { BGGR = 0, RGGB = 1, GBRG = 2, GRBG = 3 };
inline const char* const kGridNames[4] = {"BGGR", "RGGB", "GBRG", "GRBG"};

template <class T>
T get(const GuardedImage& img, int r, int i)
{
    T v;
    std::memcpy(&v, img.row(r) + i * sizeof(T), sizeof(T));
    return v;
}
template <class T>
void put(GuardedImage& img, int r, int i, T v)
{
    std::memcpy(img.row(r) + i * sizeof(T), &v, sizeof(T));
}

// Channel 0 red, 1 green, 2 blue of the site (r, c) under `grid`.
inline int gridChannel(int grid, int r, int c)
{
    const char n = kGridNames[grid][(r & 1) * 2 + (c & 1)];
    return n == 'R' ? 0 : n == 'G' ? 1 : 2;
}

// The mosaic of a scene given as scene(row, column, channel).
template <class T, class Scene>
void sample(GuardedImage& src, int W, int H, int grid, Scene scene)
{
    for (int r = 0; r < H; ++r)
        for (int c = 0; c < W; ++c)
            put<T>(src, r, c, T(scene(r, c, gridChannel(grid, r, c))));
}

}  // namespace orvtest
