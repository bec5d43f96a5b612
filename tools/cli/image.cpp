#include "image.h"

#include <png.h>
#include <tiffio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csetjmp>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "calls.h"

namespace orvcli {

int bytesOf(Depth d) { return d == Depth::U8 ? 1 : d == Depth::U16 ? 2 : 4; }
const char* tagOf(Depth d) { return d == Depth::U8 ? "8u" : d == Depth::U16 ? "16u" : "32f"; }

namespace {

std::string lower(std::string s)
{
    for (auto& ch : s)
        ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
    return s;
}

std::string ending(const std::string& path)
{
    const auto dot = path.rfind('.');
    return dot == std::string::npos ? "" : lower(path.substr(dot + 1));
}

// ---- PNG -------------------------------------------------------------------

struct MemReader {
    const std::vector<uint8_t>* data;
    size_t at;
};

void pngRead(png_structp png, png_bytep out, png_size_t n)
{
    auto* r = static_cast<MemReader*>(png_get_io_ptr(png));
    if (r->at + n > r->data->size())
        png_error(png, "the file ends early");
    std::memcpy(out, r->data->data() + r->at, n);
    r->at += n;
}

void pngError(png_structp png, png_const_charp msg)
{
    auto* text = static_cast<std::string*>(png_get_error_ptr(png));
    *text = msg;
    png_longjmp(png, 1);
}

void pngWarning(png_structp, png_const_charp) {}

Image readPng(const std::vector<uint8_t>& data, const std::string& path)
{
    std::string err;
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &err, pngError, pngWarning);
    png_infop info = png_create_info_struct(png);
    MemReader reader{&data, 0};
    Image img;
    std::vector<png_bytep> rows;
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_read_struct(&png, &info, nullptr);
        throw Failure(kExitInput, path + ": truncated or damaged PNG (" + err + ")");
    }
    png_set_read_fn(png, &reader, pngRead);
    png_read_info(png, info);
    const int type = png_get_color_type(png, info);
    const int bits = png_get_bit_depth(png, info);
    if (type == PNG_COLOR_TYPE_PALETTE)
        png_set_palette_to_rgb(png);
    if (type == PNG_COLOR_TYPE_GRAY && bits < 8)
        png_set_expand_gray_1_2_4_to_8(png);
    if (png_get_valid(png, info, PNG_INFO_tRNS))
        png_set_tRNS_to_alpha(png);
    if (type == PNG_COLOR_TYPE_GRAY_ALPHA)
        png_set_strip_alpha(png);
    if (bits == 16)
        png_set_swap(png);
    png_read_update_info(png, info);
    const int channels = png_get_channels(png, info);
    img = Image(int(png_get_image_width(png, info)), int(png_get_image_height(png, info)),
                channels == 2 ? 1 : channels, png_get_bit_depth(png, info) == 16 ? Depth::U16 : Depth::U8);
    rows.resize(img.height);
    for (int y = 0; y < img.height; ++y)
        rows[y] = img.row(y);
    png_read_image(png, rows.data());
    png_destroy_read_struct(&png, &info, nullptr);
    return img;
}

void writePng(const Image& src, FILE* f, const std::string& path)
{
    Image img = src;
    if (img.depth == Depth::F32)
        throw Failure(kExitOutput, path + ": PNG holds 8 or 16 bits; write float images as .tif");
    std::string err;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &err, pngError, pngWarning);
    png_infop info = png_create_info_struct(png);
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        throw Failure(kExitOutput, path + ": cannot write PNG (" + err + ")");
    }
    png_init_io(png, f);
    const int type = img.channels == 1 ? PNG_COLOR_TYPE_GRAY : img.channels == 3 ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_RGBA;
    png_set_IHDR(png, info, img.width, img.height, img.depth == Depth::U16 ? 16 : 8, type, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    if (img.depth == Depth::U16)
        png_set_swap(png);
    for (int y = 0; y < img.height; ++y)
        png_write_row(png, img.row(y));
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
}

// ---- PPM / PGM -------------------------------------------------------------

Image readPnm(const std::vector<uint8_t>& data, const std::string& path)
{
    size_t at = 2;
    auto number = [&]() {
        for (;;) {
            while (at < data.size() && std::isspace(data[at]))
                ++at;
            if (at < data.size() && data[at] == '#') {
                while (at < data.size() && data[at] != '\n')
                    ++at;
                continue;
            }
            break;
        }
        long v = 0;
        bool any = false;
        while (at < data.size() && std::isdigit(data[at])) {
            v = v * 10 + (data[at++] - '0');
            any = true;
            if (v > 1 << 24)
                break;
        }
        if (!any)
            throw Failure(kExitInput, path + ": damaged PPM/PGM header");
        return v;
    };
    const int channels = data[1] == '6' ? 3 : 1;
    const long w = number(), h = number(), maxval = number();
    ++at;  // the single white space after the header
    if (w < 1 || h < 1 || maxval < 1 || maxval > 65535)
        throw Failure(kExitInput, path + ": damaged PPM/PGM header");
    Image img(int(w), int(h), channels, maxval > 255 ? Depth::U16 : Depth::U8);
    if (data.size() < at + img.pixels.size())
        throw Failure(kExitInput, path + ": the file ends early (" + std::to_string(data.size() - at) + " of " +
                                      std::to_string(img.pixels.size()) + " pixel bytes)");
    std::memcpy(img.pixels.data(), data.data() + at, img.pixels.size());
    if (img.depth == Depth::U16)  // big-endian in the file
        for (size_t i = 0; i + 1 < img.pixels.size(); i += 2)
            std::swap(img.pixels[i], img.pixels[i + 1]);
    return img;
}

void writePnm(const Image& img, Output& out, const std::string& path)
{
    if (img.depth == Depth::F32 || img.channels == 4)
        throw Failure(kExitOutput, path + ": PPM/PGM holds 1 or 3 channels of 8 or 16 bits");
    const std::string head = std::string(img.channels == 3 ? "P6" : "P5") + "\n" + std::to_string(img.width) + " " +
                             std::to_string(img.height) + "\n" + (img.depth == Depth::U16 ? "65535" : "255") + "\n";
    out.write(head.data(), head.size());
    if (img.depth == Depth::U16) {
        std::vector<uint8_t> be(img.pixels);
        for (size_t i = 0; i + 1 < be.size(); i += 2)
            std::swap(be[i], be[i + 1]);
        out.write(be.data(), be.size());
    } else {
        out.write(img.pixels.data(), img.pixels.size());
    }
}

// ---- TIFF ------------------------------------------------------------------

void tiffQuiet(const char*, const char*, va_list) {}

Image readTiff(const std::string& file, const std::string& path)
{
    TIFFSetWarningHandler(tiffQuiet);
    TIFFSetErrorHandler(tiffQuiet);
    std::unique_ptr<TIFF, void (*)(TIFF*)> t(TIFFOpen(file.c_str(), "r"), TIFFClose);
    if (!t)
        throw Failure(kExitInput, path + ": cannot read TIFF");
    uint32_t w = 0, h = 0;
    uint16_t spp = 1, bps = 8, fmt = SAMPLEFORMAT_UINT, planar = PLANARCONFIG_CONTIG;
    TIFFGetField(t.get(), TIFFTAG_IMAGEWIDTH, &w);
    TIFFGetField(t.get(), TIFFTAG_IMAGELENGTH, &h);
    TIFFGetFieldDefaulted(t.get(), TIFFTAG_SAMPLESPERPIXEL, &spp);
    TIFFGetFieldDefaulted(t.get(), TIFFTAG_BITSPERSAMPLE, &bps);
    TIFFGetFieldDefaulted(t.get(), TIFFTAG_SAMPLEFORMAT, &fmt);
    TIFFGetFieldDefaulted(t.get(), TIFFTAG_PLANARCONFIG, &planar);
    Depth d;
    if (bps == 8 && fmt == SAMPLEFORMAT_UINT)
        d = Depth::U8;
    else if (bps == 16 && fmt == SAMPLEFORMAT_UINT)
        d = Depth::U16;
    else if (bps == 32 && fmt == SAMPLEFORMAT_IEEEFP)
        d = Depth::F32;
    else
        throw Failure(kExitInput, path + ": TIFF with " + std::to_string(bps) + "-bit samples of format " +
                                      std::to_string(fmt) + " is not supported (8u, 16u, 32f are)");
    if ((spp != 1 && spp != 3 && spp != 4) || planar != PLANARCONFIG_CONTIG || w < 1 || h < 1)
        throw Failure(kExitInput, path + ": TIFF must hold 1, 3 or 4 interleaved channels");
    Image img(int(w), int(h), spp, d);
    for (uint32_t y = 0; y < h; ++y)
        if (TIFFReadScanline(t.get(), img.row(int(y)), y, 0) < 0)
            throw Failure(kExitInput, path + ": truncated or damaged TIFF (row " + std::to_string(y) + ")");
    return img;
}

void writeTiff(const Image& img, const std::string& file, const std::string& path)
{
    TIFFSetWarningHandler(tiffQuiet);
    TIFFSetErrorHandler(tiffQuiet);
    std::unique_ptr<TIFF, void (*)(TIFF*)> t(TIFFOpen(file.c_str(), "w"), TIFFClose);
    if (!t)
        throw Failure(kExitOutput, path + ": cannot write TIFF");
    TIFFSetField(t.get(), TIFFTAG_IMAGEWIDTH, uint32_t(img.width));
    TIFFSetField(t.get(), TIFFTAG_IMAGELENGTH, uint32_t(img.height));
    TIFFSetField(t.get(), TIFFTAG_SAMPLESPERPIXEL, uint16_t(img.channels));
    TIFFSetField(t.get(), TIFFTAG_BITSPERSAMPLE, uint16_t(bytesOf(img.depth) * 8));
    TIFFSetField(t.get(), TIFFTAG_SAMPLEFORMAT, uint16_t(img.depth == Depth::F32 ? SAMPLEFORMAT_IEEEFP : SAMPLEFORMAT_UINT));
    TIFFSetField(t.get(), TIFFTAG_PLANARCONFIG, uint16_t(PLANARCONFIG_CONTIG));
    TIFFSetField(t.get(), TIFFTAG_PHOTOMETRIC, uint16_t(img.channels == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB));
    if (img.channels == 4) {
        const uint16_t extra = EXTRASAMPLE_UNASSALPHA;
        TIFFSetField(t.get(), TIFFTAG_EXTRASAMPLES, 1, &extra);
    }
    TIFFSetField(t.get(), TIFFTAG_COMPRESSION, uint16_t(COMPRESSION_NONE));
    TIFFSetField(t.get(), TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(t.get(), 0));
    for (int y = 0; y < img.height; ++y)
        if (TIFFWriteScanline(t.get(), const_cast<uint8_t*>(img.row(y)), uint32_t(y), 0) < 0)
            throw Failure(kExitOutput, path + ": cannot write TIFF row");
}

// A temporary copy of in-memory data, for readers that want a file.
struct TempFile {
    explicit TempFile(const std::vector<uint8_t>& data)
    {
        char name[] = "/tmp/orvcc-XXXXXX";
        const int fd = mkstemp(name);
        if (fd < 0)
            throw Failure(kExitInput, "cannot make a temporary file");
        path = name;
        FILE* f = fdopen(fd, "wb");
        fwrite(data.data(), 1, data.size(), f);
        fclose(f);
    }
    ~TempFile() { std::remove(path.c_str()); }
    std::string path;
};

}  // namespace

std::vector<uint8_t> readAll(const std::string& path)
{
    FILE* f = path == "-" ? stdin : std::fopen(path.c_str(), "rb");
    if (!f)
        throw Failure(kExitInput, path + ": " + std::strerror(errno));
    std::vector<uint8_t> data;
    uint8_t buf[1 << 16];
    size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, f)) > 0)
        data.insert(data.end(), buf, buf + n);
    if (f != stdin)
        std::fclose(f);
    return data;
}

bool looksLikeImage(const std::vector<uint8_t>& h)
{
    if (h.size() >= 8 && std::memcmp(h.data(), "\x89PNG\r\n\x1a\n", 8) == 0)
        return true;
    if (h.size() >= 2 && h[0] == 'P' && (h[1] == '5' || h[1] == '6'))
        return true;
    return h.size() >= 4 && (std::memcmp(h.data(), "II*\0", 4) == 0 || std::memcmp(h.data(), "MM\0*", 4) == 0);
}

Image readImage(const std::string& path)
{
    const std::vector<uint8_t> data = readAll(path);
    if (data.size() >= 8 && std::memcmp(data.data(), "\x89PNG\r\n\x1a\n", 8) == 0)
        return readPng(data, path);
    if (data.size() >= 2 && data[0] == 'P' && (data[1] == '5' || data[1] == '6'))
        return readPnm(data, path);
    if (data.size() >= 4 && (std::memcmp(data.data(), "II*\0", 4) == 0 || std::memcmp(data.data(), "MM\0*", 4) == 0)) {
        if (path != "-")
            return readTiff(path, path);
        TempFile tmp(data);
        return readTiff(tmp.path, path);
    }
    throw Failure(kExitInput, path + ": unknown format (not PNG, PPM/PGM or TIFF; raw data needs --size and --format or --bayer)");
}

void writeImage(const Image& img, const std::string& path, const std::string& format)
{
    const std::string kind = path == "-" ? (format.empty() ? "png" : lower(format)) : ending(path);
    Output out(path);
    if (kind == "png") {
        writePng(img, out.file(), path);
    } else if (kind == "ppm" || kind == "pgm" || kind == "pnm") {
        writePnm(img, out, path);
    } else if (kind == "tif" || kind == "tiff") {
        if (path == "-") {
            TempFile tmp({});
            writeTiff(img, tmp.path, path);
            const auto bytes = readAll(tmp.path);
            out.write(bytes.data(), bytes.size());
        } else {
            out.close();
            writeTiff(img, out.tempPath(), path);
            out.commit();
            return;
        }
    } else {
        throw Failure(kExitUsage, path + ": unknown output format '" + kind + "' (png, ppm, pgm, tif)");
    }
    out.commit();
}

Output::Output(const std::string& path) : path_(path)
{
    if (path == "-") {
        f_ = stdout;
        stdout_ = true;
        return;
    }
    temp_ = path + ".part-XXXXXX";
    std::vector<char> name(temp_.begin(), temp_.end());
    name.push_back('\0');
    const int fd = mkstemp(name.data());
    if (fd < 0)
        throw Failure(kExitOutput, path + ": " + std::strerror(errno));
    temp_ = name.data();
    const mode_t mask = umask(0);  // mkstemp makes 0600; give the file the usual mode
    umask(mask);
    fchmod(fd, 0666 & ~mask);
    f_ = fdopen(fd, "wb");
}

Output::~Output()
{
    if (stdout_ || temp_.empty())
        return;
    if (f_)
        std::fclose(f_);
    std::remove(temp_.c_str());
}

void Output::write(const void* p, size_t n)
{
    if (std::fwrite(p, 1, n, f_) != n)
        throw Failure(kExitOutput, (stdout_ ? std::string("standard output") : path_) + ": write failed: " + std::strerror(errno));
}

void Output::close()
{
    if (f_ && !stdout_)
        std::fclose(f_);
    f_ = nullptr;
}

void Output::commit()
{
    if (stdout_) {
        std::fflush(f_);
        return;
    }
    if (f_ && std::fclose(f_) != 0) {
        f_ = nullptr;
        throw Failure(kExitOutput, path_ + ": write failed");
    }
    f_ = nullptr;
    if (std::rename(temp_.c_str(), path_.c_str()) != 0)
        throw Failure(kExitOutput, path_ + ": " + std::strerror(errno));
    temp_.clear();
}

}  // namespace orvcli
