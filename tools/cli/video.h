// Raw video frames: the layouts a pipeline passes between a decoder, a filter
// and an encoder, and the library member that turns one into another.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "calls.h"

namespace orvcli {

struct VideoFormat {
    const char* word;   // i420, nv12, yuy2, ...
    const char* model;  // as the library's names spell it: YCbCr420, CbYCr422, RGB...
    const char* layout; // P3, P2, C2, C3
    int hsub, vsub;     // chroma subsampling; 0 for RGB
    const char* what;
};

const std::vector<VideoFormat>& videoFormats();
const VideoFormat* videoFormat(const std::string& word);

// Bytes of one frame; throws when the size does not fit the sampling.
size_t frameBytes(const VideoFormat& f, int w, int h);
// The planes of a frame stored at `base`, in the order the library takes them.
std::vector<Plane> framePlanes(const VideoFormat& f, int w, int h, uint8_t* base);

// The library member that converts frames of `from` into `to`, or "" with
// the names it looked for in *tried.
std::string frameConversion(const VideoFormat& from, const VideoFormat& to, std::string* tried);

}  // namespace orvcli
