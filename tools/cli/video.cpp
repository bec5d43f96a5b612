#include "video.h"

#include <cstring>

namespace orvcli {

const std::vector<VideoFormat>& videoFormats()
{
    static const std::vector<VideoFormat> k = {
        {"i420", "YCbCr420", "P3", 2, 2, "planar 4:2:0, Y U V"},
        {"yv12", "YCrCb420", "P3", 2, 2, "planar 4:2:0, Y V U"},
        {"nv12", "YCbCr420", "P2", 2, 2, "semi-planar 4:2:0, Y then UV pairs"},
        {"nv21", "YCrCb420", "P2", 2, 2, "semi-planar 4:2:0, Y then VU pairs"},
        {"i422", "YCbCr422", "P3", 2, 1, "planar 4:2:2, Y U V"},
        {"yuy2", "YCbCr422", "C2", 2, 1, "packed 4:2:2, Y0 U Y1 V"},
        {"uyvy", "CbYCr422", "C2", 2, 1, "packed 4:2:2, U Y0 V Y1"},
        {"i411", "YCbCr411", "P3", 4, 1, "planar 4:1:1, Y U V"},
        {"ycbcr420", "YCbCr420", "P3", 2, 2, "the same as i420"},
        {"ycbcr422", "YCbCr422", "P3", 2, 1, "the same as i422"},
        {"ycbcr411", "YCbCr411", "P3", 4, 1, "the same as i411"},
        {"yuv420", "YUV420", "P3", 2, 2, "planar 4:2:0 of the analogue YUV matrix"},
        {"yuv422", "YUV422", "P3", 2, 1, "planar 4:2:2 of the analogue YUV matrix"},
        {"rgb24", "RGB", "C3", 0, 0, "packed R G B"},
        {"bgr24", "BGR", "C3", 0, 0, "packed B G R"},
    };
    return k;
}

const VideoFormat* videoFormat(const std::string& word)
{
    for (const auto& f : videoFormats())
        if (word == f.word)
            return &f;
    return nullptr;
}

size_t frameBytes(const VideoFormat& f, int w, int h)
{
    if (w < 1 || h < 1)
        throw Failure(kExitUsage, "--size must be at least 1x1");
    if (f.hsub == 0)
        return size_t(w) * h * 3;
    if (w % f.hsub)
        throw Failure(kExitInput, std::string(f.word) + " needs a width that is a multiple of " + std::to_string(f.hsub) +
                                      ", not " + std::to_string(w));
    if (h % f.vsub)
        throw Failure(kExitInput, std::string(f.word) + " needs an even height, not " + std::to_string(h));
    return size_t(w) * h + 2 * size_t(w / f.hsub) * (h / f.vsub);
}

std::vector<Plane> framePlanes(const VideoFormat& f, int w, int h, uint8_t* base)
{
    const std::string lay = f.layout;
    if (lay == "C3")
        return {{base, w * 3}};
    if (lay == "C2")
        return {{base, w * 2}};
    const size_t luma = size_t(w) * h;
    const int cw = w / f.hsub, ch = h / f.vsub;
    if (lay == "P2")
        return {{base, w}, {base + luma, 2 * cw}};
    return {{base, w}, {base + luma, cw}, {base + luma + size_t(cw) * ch, cw}};
}

std::string frameConversion(const VideoFormat& from, const VideoFormat& to, std::string* tried)
{
    const std::string a = from.model, b = to.model, la = from.layout, lb = to.layout;
    std::vector<std::string> names;
    if (a == b) {
        names.push_back("orvi" + a + "_8u_" + la + lb + "R");
    } else {
        names.push_back("orvi" + a + "To" + b + "_8u_" + (la == lb ? la : la + lb) + "R");
        if (la == lb && std::strncmp(a.c_str(), b.c_str(), 5) == 0)  // same model, other sampling
            names.push_back("orvi" + a + "To" + b.substr(5) + "_8u_" + la + "R");
    }
    const std::string hit = firstExported(names);
    if (hit.empty() && tried) {
        for (const auto& n : names)
            *tried += (tried->empty() ? "" : ", ") + n;
    }
    return hit;
}

}  // namespace orvcli
