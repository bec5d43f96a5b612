#include "gallery.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>

#include "calls.h"
#include "camera.h"
#include "image.h"
#include "ops.h"

namespace orvcli {
namespace {

// A 5x7 font for the labels: each glyph is 7 rows of 5 bits, high bit left.
struct Glyph {
    char c;
    uint8_t rows[7];
};
const Glyph kFont[] = {
    {'A', {14, 17, 17, 31, 17, 17, 17}}, {'B', {30, 17, 17, 30, 17, 17, 30}}, {'C', {14, 17, 16, 16, 16, 17, 14}},
    {'D', {30, 17, 17, 17, 17, 17, 30}}, {'E', {31, 16, 16, 30, 16, 16, 31}}, {'F', {31, 16, 16, 30, 16, 16, 16}},
    {'G', {14, 17, 16, 23, 17, 17, 15}}, {'H', {17, 17, 17, 31, 17, 17, 17}}, {'I', {14, 4, 4, 4, 4, 4, 14}},
    {'J', {7, 2, 2, 2, 2, 18, 12}},      {'K', {17, 18, 20, 24, 20, 18, 17}}, {'L', {16, 16, 16, 16, 16, 16, 31}},
    {'M', {17, 27, 21, 21, 17, 17, 17}}, {'N', {17, 17, 25, 21, 19, 17, 17}}, {'O', {14, 17, 17, 17, 17, 17, 14}},
    {'P', {30, 17, 17, 30, 16, 16, 16}}, {'Q', {14, 17, 17, 17, 21, 18, 13}}, {'R', {30, 17, 17, 30, 20, 18, 17}},
    {'S', {15, 16, 16, 14, 1, 1, 30}},   {'T', {31, 4, 4, 4, 4, 4, 4}},       {'U', {17, 17, 17, 17, 17, 17, 14}},
    {'V', {17, 17, 17, 17, 17, 10, 4}},  {'W', {17, 17, 17, 21, 21, 21, 10}}, {'X', {17, 17, 10, 4, 10, 17, 17}},
    {'Y', {17, 17, 10, 4, 4, 4, 4}},     {'Z', {31, 1, 2, 4, 8, 16, 31}},     {'0', {14, 17, 19, 21, 25, 17, 14}},
    {'1', {4, 12, 4, 4, 4, 4, 14}},      {'2', {14, 17, 1, 2, 4, 8, 31}},     {'3', {31, 2, 4, 2, 1, 17, 14}},
    {'4', {2, 6, 10, 18, 31, 2, 2}},     {'5', {31, 16, 30, 1, 1, 17, 14}},   {'6', {6, 8, 16, 30, 17, 17, 14}},
    {'7', {31, 1, 2, 4, 8, 8, 8}},       {'8', {14, 17, 17, 14, 17, 17, 14}}, {'9', {14, 17, 17, 15, 1, 2, 12}},
    {'-', {0, 0, 0, 31, 0, 0, 0}},       {'.', {0, 0, 0, 0, 0, 12, 12}},      {':', {0, 12, 12, 0, 12, 12, 0}},
    {'(', {2, 4, 8, 8, 8, 4, 2}},        {')', {8, 4, 2, 2, 2, 4, 8}},        {'/', {1, 1, 2, 4, 8, 16, 16}},
    {'+', {0, 4, 4, 31, 4, 4, 0}},
};

void text(Image& sheet, int x0, int y0, const std::string& s)
{
    int x = x0;
    for (char ch : s) {
        ch = char(std::toupper(static_cast<unsigned char>(ch)));
        for (const auto& g : kFont)
            if (g.c == ch)
                for (int r = 0; r < 7; ++r)
                    for (int c = 0; c < 5; ++c)
                        if ((g.rows[r] >> (4 - c)) & 1 && x + c < sheet.width && y0 + r < sheet.height)
                            std::memset(sheet.at<uint8_t>(x + c, y0 + r), 255, 3);
        x += 6;
    }
}

// 8-bit, three channels.
Image rgb8(const Image& img)
{
    Image a = to8(img);
    if (a.channels == 3)
        return a;
    Image out(a.width, a.height, 3, Depth::U8);
    for (int y = 0; y < a.height; ++y)
        for (int x = 0; x < a.width; ++x)
            for (int k = 0; k < 3; ++k)
                out.at<uint8_t>(x, y)[k] = a.at<uint8_t>(x, y)[a.channels == 1 ? 0 : k];
    return out;
}

// Box average by a whole factor, so a large picture makes a sheet of sane size.
Image shrink(const Image& img, int f)
{
    if (f <= 1)
        return img;
    Image out(img.width / f, img.height / f, 3, Depth::U8);
    for (int y = 0; y < out.height; ++y)
        for (int x = 0; x < out.width; ++x)
            for (int k = 0; k < 3; ++k) {
                int s = 0;
                for (int j = 0; j < f; ++j)
                    for (int i = 0; i < f; ++i)
                        s += const_cast<Image&>(img).at<uint8_t>(x * f + i, y * f + j)[k];
                out.at<uint8_t>(x, y)[k] = uint8_t(s / (f * f));
            }
    return out;
}

// A quarter of the picture around its centre, twice enlarged, to show edges.
Image crop2x(const Image& img)
{
    Image out(img.width, img.height, 3, Depth::U8);
    const int x0 = img.width / 4, y0 = img.height / 4;
    for (int y = 0; y < out.height; ++y)
        for (int x = 0; x < out.width; ++x)
            std::memcpy(out.at<uint8_t>(x, y), const_cast<Image&>(img).at<uint8_t>(x0 + x / 2, y0 + y / 2), 3);
    return out;
}

}  // namespace

int gallery(const std::string& in, const std::string& outPath)
{
    const std::vector<uint8_t> data = readAll(in);
    Image pic;
    Image mosaic;
    int grid = orvBayerRGGB;
    bool fromCamera = false;
    if (isCameraRawName(in) && readCameraRaw(data, in, &mosaic, &grid)) {
        fromCamera = true;
        pic = rgb8(gamma(demosaic(mosaic, grid, "bilinear"), false));
    } else if (looksLikeImage(data)) {
        pic = rgb8(readImage(in));
    } else if (readCameraRaw(data, in, &mosaic, &grid)) {
        fromCamera = true;
        pic = rgb8(gamma(demosaic(mosaic, grid, "bilinear"), false));
    } else {
        throw Failure(kExitInput, in + ": unknown format");
    }
    pic = shrink(pic, (pic.width + 479) / 480);
    if (!fromCamera)
        mosaic = mosaicOf(pic, grid);

    struct Tile {
        std::string label;
        Image img;
    };
    std::vector<Tile> tiles;
    auto add = [&](const std::string& label, const std::function<Image()>& make) {
        try {
            tiles.push_back({label, rgb8(make())});
        } catch (const Failure&) {
            // a family this build does not export: no tile
        }
    };
    add("original", [&] { return pic; });
    add("gray", [&] { return toModel(pic, "gray"); });
    add("gamma fwd", [&] { return gamma(pic, false); });
    add("gamma inv", [&] { return gamma(pic, true); });
    for (const char* m : {"yuv", "ycbcr", "xyz", "lab", "luv", "ycc", "hls", "hsv"})
        add(std::string(m) + " channels", [&] { return toModel(pic, m); });
    add("2 levels", [&] { return reduceBits(pic, "none", 2, 0); });
    add("2 levels bayer", [&] { return reduceBits(pic, "bayer", 2, 0); });
    add("2 levels fs", [&] { return reduceBits(pic, "fs", 2, 0); });
    add("4 levels stucki", [&] { return reduceBits(pic, "stucki", 4, 0); });
    const float sepia[3][4] = {{0.393f, 0.769f, 0.189f, 0}, {0.349f, 0.686f, 0.168f, 0}, {0.272f, 0.534f, 0.131f, 0}};
    add("twist sepia", [&] { return twist(pic, sepia); });
    for (const char* m : {"bilinear", "vng", "ahd"}) {
        add(std::string(m), [&] { return demosaic(mosaic, grid, m); });
        add(std::string(m) + " crop 2x", [&] { return crop2x(rgb8(demosaic(mosaic, grid, m))); });
    }

    const int tw = pic.width, th = pic.height, pad = 6, band = 12, cols = 4;
    const int rows = int(tiles.size() + cols - 1) / cols;
    Image sheet(cols * (tw + pad) + pad, rows * (th + band + pad) + pad, 3, Depth::U8);
    std::fill(sheet.pixels.begin(), sheet.pixels.end(), uint8_t(32));
    for (size_t i = 0; i < tiles.size(); ++i) {
        const int x0 = pad + int(i % cols) * (tw + pad), y0 = pad + int(i / cols) * (th + band + pad);
        text(sheet, x0, y0, tiles[i].label);
        const Image& t = tiles[i].img;
        for (int y = 0; y < std::min(th, t.height); ++y)
            std::memcpy(sheet.at<uint8_t>(x0, y0 + band + y), t.row(y), size_t(std::min(tw, t.width)) * 3);
    }
    writeImage(sheet, outPath);
    std::printf("%s: %zu tiles (%s)\n", outPath.c_str(), tiles.size(),
                fromCamera ? "camera raw, demosaiced" : "mosaic made from the picture with an RGGB grid");
    return kExitOk;
}

}  // namespace orvcli
