// The conversions the tool offers on whole images, by plain words, each
// mapped to the library member that fits the image's depth and channels.
#pragma once

#include <string>
#include <vector>

#include "image.h"

namespace orvcli {

// Colour models by the words `--to` and `--from` take.
std::vector<std::string> modelWords();
// rgb -> model ("gray" gives one channel); 4 channels keep their fourth.
Image toModel(const Image& rgb, const std::string& model);
// model -> rgb.
Image fromModel(const Image& img, const std::string& model);

Image gamma(const Image& img, bool inverse);
Image twist(const Image& img, const float m[3][4]);
// Float to 8 bits by "linear" (maximum) or "mean" over all channels.
Image toneMap(const Image& img, const std::string& method);
// Dither words: none, bayer, fs, jjn, stucki.
std::vector<std::string> ditherWords();
Image reduceBits(const Image& img, const std::string& dither, int levels, int noise);

// Bayer grids by word (rggb, bggr, grbg, gbrg) and methods (bilinear, vng, ahd).
int gridOf(const std::string& word);
std::vector<std::string> demosaicWords();
Image demosaic(const Image& mosaic, int grid, const std::string& method);
// The mosaic a sensor with this grid would have seen of an RGB image.
Image mosaicOf(const Image& rgb, int grid);

// 16 bits to 8 (high byte) and 8 to 16 (times 257), for display and mixing.
Image to8(const Image& img);

}  // namespace orvcli
