#include "camera.h"

#include <libraw/libraw.h>

#include <algorithm>
#include <memory>

#include "calls.h"

namespace orvcli {

bool isCameraRawName(const std::string& path)
{
    static const char* kEndings[] = {"dng", "cr2", "cr3", "crw", "nef", "nrw", "arw", "srf", "sr2", "raf", "orf",
                                     "rw2", "pef", "srw", "3fr", "erf", "kdc", "dcr", "mrw", "x3f", "iiq", "raw"};
    const auto dot = path.rfind('.');
    if (dot == std::string::npos)
        return false;
    std::string e = path.substr(dot + 1);
    for (auto& c : e)
        c = char(std::tolower(static_cast<unsigned char>(c)));
    return std::find(std::begin(kEndings), std::end(kEndings), e) != std::end(kEndings);
}

bool readCameraRaw(const std::vector<uint8_t>& data, const std::string& path, Image* mosaic, int* grid)
{
    auto raw = std::make_unique<LibRaw>();
    if (raw->open_buffer(const_cast<uint8_t*>(data.data()), data.size()) != LIBRAW_SUCCESS)
        return false;
    if (raw->unpack() != LIBRAW_SUCCESS || !raw->imgdata.rawdata.raw_image)
        throw Failure(kExitInput, path + ": a camera raw file, but not one with a single Bayer mosaic this tool can read");
    const auto& s = raw->imgdata.sizes;
    const int w = s.width, h = s.height;
    if (w < 2 || h < 2)
        throw Failure(kExitInput, path + ": the mosaic is smaller than 2 by 2");
    // The colour of the visible area's first 2x2 cell gives the grid.
    int cell[4];
    for (int k = 0; k < 4; ++k) {
        int c = raw->COLOR(k >> 1, k & 1);
        cell[k] = c == 3 ? 1 : c;  // a second green is green
    }
    struct G { int code, c[4]; };
    const G grids[] = {{orvBayerBGGR, {2, 1, 1, 0}}, {orvBayerRGGB, {0, 1, 1, 2}},
                       {orvBayerGBRG, {1, 2, 0, 1}}, {orvBayerGRBG, {1, 0, 2, 1}}};
    *grid = -1;
    for (const auto& g : grids)
        if (std::equal(g.c, g.c + 4, cell))
            *grid = g.code;
    if (*grid < 0)
        throw Failure(kExitInput, path + ": the sensor does not have a Bayer pattern");
    // Black level off and the white level scaled to 16 bits, so that the
    // mosaic uses the whole range; the demosaicing itself is linear.
    const unsigned black = raw->imgdata.color.black;
    const unsigned white = std::max(raw->imgdata.color.maximum, black + 1);
    *mosaic = Image(w, h, 1, Depth::U16);
    for (int y = 0; y < h; ++y) {
        const uint16_t* src = raw->imgdata.rawdata.raw_image + size_t(y + s.top_margin) * s.raw_pitch / 2 + s.left_margin;
        uint16_t* dst = reinterpret_cast<uint16_t*>(mosaic->row(y));
        for (int x = 0; x < w; ++x) {
            const unsigned v = src[x] > black ? src[x] - black : 0;
            dst[x] = uint16_t(std::min(65535u, unsigned(uint64_t(v) * 65535 / (white - black))));
        }
    }
    return true;
}

}  // namespace orvcli
