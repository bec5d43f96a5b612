#include "ops.h"

#include <algorithm>
#include <cstring>
#include <map>

#include "calls.h"

namespace orvcli {
namespace {

const std::map<std::string, std::string> kModels = {
    {"gray", "Gray"}, {"xyz", "XYZ"}, {"yuv", "YUV"}, {"ycbcr", "YCbCr"}, {"luv", "LUV"},
    {"lab", "Lab"},   {"ycc", "YCC"}, {"hls", "HLS"}, {"hsv", "HSV"},
};

const std::map<std::string, int> kDither = {{"none", orvDitherNone}, {"fs", orvDitherFloydSteinberg},
                                            {"jjn", orvDitherJarvisJudiceNinke}, {"stucki", orvDitherStucki},
                                            {"bayer", orvDitherBayer}};

const std::map<std::string, int> kGrids = {
    {"bggr", orvBayerBGGR}, {"rggb", orvBayerRGGB}, {"gbrg", orvBayerGBRG}, {"grbg", orvBayerGRBG}};

std::string layoutOf(const Image& img)
{
    if (img.channels == 3)
        return "C3";
    if (img.channels == 4)
        return "AC4";
    throw Failure(kExitInput, "this conversion needs a 3- or 4-channel image, not " + std::to_string(img.channels));
}

Call plain(const Image& src, Image& dst)
{
    Call c;
    c.in.push_back({const_cast<uint8_t*>(src.pixels.data()), src.step()});
    c.out.push_back({dst.pixels.data(), dst.step()});
    c.roi = {src.width, src.height};
    return c;
}

std::string need(const std::vector<std::string>& names, const std::string& what)
{
    const std::string n = firstExported(names);
    if (n.empty())
        throw Failure(kExitFailed, "this build has no " + what + " (it would be " + names.front() + ")");
    return n;
}

}  // namespace

std::vector<std::string> modelWords()
{
    std::vector<std::string> w{"rgb", "bgr"};
    for (const auto& [k, v] : kModels)
        w.push_back(k);
    return w;
}

Image toModel(const Image& rgb, const std::string& model)
{
    if (model == "rgb")
        return rgb;
    if (model == "bgr") {
        Image out = rgb;
        const int b = bytesOf(rgb.depth);
        for (size_t i = 0; i < size_t(rgb.width) * rgb.height; ++i) {
            uint8_t* p = out.pixels.data() + i * rgb.channels * b;
            for (int k = 0; k < b; ++k)
                std::swap(p[k], p[2 * b + k]);
        }
        return out;
    }
    auto it = kModels.find(model);
    if (it == kModels.end())
        throw Failure(kExitUsage, "unknown colour model '" + model + "'");
    const std::string t = tagOf(rgb.depth), lay = layoutOf(rgb);
    if (model == "gray") {
        Image out(rgb.width, rgb.height, 1, rgb.depth);
        callChecked(need({"orviRGBToGray_" + t + "_" + lay + "C1R"}, "RGB to gray for " + t), plain(rgb, out));
        return out;
    }
    Image out = rgb;  // a fourth channel stays as it was
    callChecked(need({"orviRGBTo" + it->second + "_" + t + "_" + lay + "R"}, "RGB to " + model + " for " + t),
                plain(rgb, out));
    return out;
}

Image fromModel(const Image& img, const std::string& model)
{
    if (model == "rgb" || model == "bgr")
        return toModel(img, model);
    auto it = kModels.find(model);
    if (it == kModels.end())
        throw Failure(kExitUsage, "unknown colour model '" + model + "'");
    const std::string t = tagOf(img.depth);
    if (model == "gray") {
        if (img.channels != 1)
            throw Failure(kExitInput, "--from gray needs a one-channel image");
        Image out(img.width, img.height, 3, img.depth);
        callChecked(need({"orviGrayToRGB_" + t + "_C1C3R"}, "gray to RGB for " + t), plain(img, out));
        return out;
    }
    Image out = img;
    callChecked(need({"orvi" + it->second + "ToRGB_" + t + "_" + layoutOf(img) + "R"}, model + " to RGB for " + t),
                plain(img, out));
    return out;
}

Image gamma(const Image& img, bool inverse)
{
    const std::string t = tagOf(img.depth);
    Image out = img;
    Call c = plain(img, out);
    c.values["vMin"] = 0.0;
    c.values["vMax"] = 1.0;
    callChecked(need({std::string("orviGamma") + (inverse ? "Inv" : "Fwd") + "_" + t + "_" + layoutOf(img) + "R"},
                     "gamma for " + t),
                c);
    return out;
}

Image twist(const Image& img, const float m[3][4])
{
    const std::string t = tagOf(img.depth), lay = layoutOf(img);
    Image out = img;
    Call c = plain(img, out);
    c.arrays["twist"] = std::vector<double>(&m[0][0], &m[0][0] + 12);
    const std::string name = img.depth == Depth::F32 ? "orviColorTwist_32f_" + lay + "R"
                                                     : "orviColorTwist32f_" + t + "_" + lay + "R";
    callChecked(need({name}, "colour twist for " + t), c);
    return out;
}

Image toneMap(const Image& img, const std::string& method)
{
    if (img.depth != Depth::F32)
        throw Failure(kExitInput, "--tonemap needs a 32-bit float image (a float TIFF)");
    if (method != "linear" && method != "mean")
        throw Failure(kExitUsage, "--tonemap takes 'linear' or 'mean', not '" + method + "'");
    // All channels as one plane: one maximum (or mean) for the whole picture.
    Image flat = img;
    flat.width *= flat.channels;
    flat.channels = 1;
    Image out(flat.width, flat.height, 1, Depth::U8);
    const OrvStatus st = callChecked(method == "linear" ? "orviToneMapLinear_32f8u_C1R" : "orviToneMapMean_32f8u_C1R",
                                     plain(flat, out));
    (void)st;  // nothing done (all values negative) leaves the zeros
    out.width = img.width;
    out.channels = img.channels;
    return out;
}

std::vector<std::string> ditherWords()
{
    std::vector<std::string> w;
    for (const auto& [k, v] : kDither)
        w.push_back(k);
    return w;
}

Image reduceBits(const Image& img, const std::string& dither, int levels, int noise)
{
    auto it = kDither.find(dither);
    if (it == kDither.end())
        throw Failure(kExitUsage, "unknown dither '" + dither + "' (none, bayer, fs, jjn, stucki)");
    const std::string t = tagOf(img.depth);
    const std::string lay = img.channels == 1 ? "C1" : img.channels == 3 ? "C3" : "AC4";
    Call size;
    size.roi = {img.width, img.height};
    size.values["channels"] = img.channels == 4 ? 3 : img.channels;
    size.values["noise"] = noise;
    size.values["dtype"] = it->second;
    int bytes = 0;
    callChecked(need({"orviReduceBitsGetBufferSize"}, "bit-depth reduction"), size, &bytes);
    std::vector<uint8_t> buffer(size_t(std::max(bytes, 1)));
    Image out = img;
    Call c = plain(img, out);
    c.out.push_back({buffer.data(), 0});
    c.values["noise"] = noise;
    c.values["dtype"] = it->second;
    c.values["levels"] = levels;
    callChecked(need({"orviReduceBits_" + t + "_" + lay + "R"}, "bit-depth reduction for " + t), c);
    return out;
}

int gridOf(const std::string& word)
{
    auto it = kGrids.find(word);
    if (it == kGrids.end())
        throw Failure(kExitUsage, "unknown Bayer pattern '" + word + "' (rggb, bggr, grbg, gbrg)");
    return it->second;
}

std::vector<std::string> demosaicWords() { return {"bilinear", "vng", "ahd"}; }

Image demosaic(const Image& mosaic, int grid, const std::string& method)
{
    if (mosaic.channels != 1 || mosaic.depth == Depth::F32)
        throw Failure(kExitInput, "a Bayer mosaic has one channel of 8 or 16 bits");
    if (mosaic.width < 2 || mosaic.height < 2)
        throw Failure(kExitInput, "a Bayer mosaic must be at least 2 by 2 pixels, not " + std::to_string(mosaic.width) +
                                      " by " + std::to_string(mosaic.height));
    const std::string t = tagOf(mosaic.depth);
    Call c;
    c.in.push_back({const_cast<uint8_t*>(mosaic.pixels.data()), mosaic.step()});
    c.rect = {0, 0, mosaic.width, mosaic.height};
    c.roi = {mosaic.width, mosaic.height};
    c.values["grid"] = grid;
    Image out(mosaic.width, mosaic.height, 3, mosaic.depth);
    if (method == "bilinear") {
        c.out.push_back({out.pixels.data(), out.step()});
        callChecked(need({"orviCFAToRGB_" + t + "_C1C3R"}, "bilinear demosaicing for " + t), c);
    } else if (method == "vng") {
        Image bgra(mosaic.width, mosaic.height, 4, mosaic.depth);
        c.out.push_back({bgra.pixels.data(), bgra.step()});
        c.arrays["scale"] = {1.0, 1.0, 1.0};
        callChecked(need({"orviCFAToBGRA_VNG_" + t + "_C1C4R_L"}, "VNG demosaicing for " + t), c);
        const int b = bytesOf(mosaic.depth);
        for (size_t i = 0; i < size_t(mosaic.width) * mosaic.height; ++i)
            for (int k = 0; k < 3; ++k)
                std::memcpy(out.pixels.data() + (i * 3 + k) * b, bgra.pixels.data() + (i * 4 + 2 - k) * b, b);
    } else if (method == "ahd") {
        const int rowBytes = (std::max(mosaic.width, 6) + 8) * bytesOf(mosaic.depth);
        std::vector<uint8_t> tmp(size_t(rowBytes) * 30);
        c.out.push_back({out.pixels.data(), out.step()});
        c.out.push_back({tmp.data(), rowBytes});
        callChecked(need({"orviDemosaicAHD_" + t + "_C1C3R"}, "AHD demosaicing for " + t), c);
    } else {
        throw Failure(kExitUsage, "unknown demosaicing method '" + method + "' (bilinear, vng, ahd)");
    }
    return out;
}

Image mosaicOf(const Image& rgb, int grid)
{
    if (rgb.channels < 3)
        throw Failure(kExitInput, "--mosaic needs a colour image");
    // Colour of each cell of the 2x2 pattern, row by row: 0 red, 1 green, 2 blue.
    static const int kCells[4][4] = {{2, 1, 1, 0}, {0, 1, 1, 2}, {1, 2, 0, 1}, {1, 0, 2, 1}};
    Image m(rgb.width, rgb.height, 1, rgb.depth);
    const int b = bytesOf(rgb.depth);
    for (int y = 0; y < rgb.height; ++y)
        for (int x = 0; x < rgb.width; ++x) {
            const int ch = kCells[grid][(y & 1) * 2 + (x & 1)];
            std::memcpy(m.row(y) + size_t(x) * b, rgb.row(y) + (size_t(x) * rgb.channels + ch) * b, b);
        }
    return m;
}

Image to8(const Image& img)
{
    if (img.depth == Depth::U8)
        return img;
    Image out(img.width, img.height, img.channels, Depth::U8);
    const size_t n = size_t(img.width) * img.height * img.channels;
    for (size_t i = 0; i < n; ++i) {
        if (img.depth == Depth::U16)
            out.pixels[i] = uint8_t(reinterpret_cast<const uint16_t*>(img.pixels.data())[i] >> 8);
        else
            out.pixels[i] = uint8_t(std::clamp(reinterpret_cast<const float*>(img.pixels.data())[i], 0.0f, 1.0f) * 255.0f + 0.5f);
    }
    return out;
}

}  // namespace orvcli
