// orvcc: the library's conversions on files and pipes.
//
//   orvcc convert IN OUT [options]   images, raw video, Bayer mosaics, camera raw
//   orvcc info                       version, variant, processor, threads
//   orvcc list                       every conversion this build exports
//   orvcc bench NAME [--size WxH]    megapixels per second on a generated frame
//   orvcc gallery IN OUT.png         one contact sheet of a picture through the library
//
// Exit codes: 0 done, 1 the library refused or lacks a conversion, 2 bad
// command line, 3 bad input, 4 output cannot be written. A failure leaves no
// output file behind.
#include <CLI/CLI.hpp>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <random>
#include <sstream>

#include "calls.h"
#include "camera.h"
#include "gallery.h"
#include "image.h"
#include "ops.h"
#include "orvcore.h"
#include "video.h"

using namespace orvcli;

namespace {

struct Size {
    int w = 0, h = 0;
};

Size parseSize(const std::string& s)
{
    Size z;
    char x = 0;
    std::istringstream in(s);
    if (!(in >> z.w >> x >> z.h) || (x != 'x' && x != 'X') || z.w < 1 || z.h < 1 || !in.eof())
        throw Failure(kExitUsage, "--size takes WIDTHxHEIGHT, e.g. 1920x1080, not '" + s + "'");
    return z;
}

struct Options {
    std::string in, out, size, format, to, from = "rgb", bayer, demosaicMethod, gammaMode, twistFile, tonemap, dither,
        outFormat, mosaic;
    int depth = 8, levels = 0, noise = 0, threads = 0;
    bool gammaSet = false;
};

// A progress line on standard error, only when it is a terminal.
class Progress {
public:
    explicit Progress(long total) : total_(total), on_(isatty(2)) {}
    void frame(long n)
    {
        if (!on_)
            return;
        if (total_ > 0) {
            const int width = 30, done = int(width * n / total_);
            std::fprintf(stderr, "\r[%.*s%*s] frame %ld/%ld", done, "##############################", width - done, "",
                         n, total_);
        } else {
            std::fprintf(stderr, "\rframe %ld", n);
        }
        std::fflush(stderr);
    }
    ~Progress()
    {
        if (on_)
            std::fprintf(stderr, "\n");
    }

private:
    long total_;
    bool on_;
};

std::string lower(std::string s)
{
    for (auto& c : s)
        c = char(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

bool isImageName(const std::string& path)
{
    const auto dot = path.rfind('.');
    const std::string e = dot == std::string::npos ? "" : lower(path.substr(dot + 1));
    return e == "png" || e == "ppm" || e == "pgm" || e == "pnm" || e == "tif" || e == "tiff";
}

void readTwist(const std::string& file, float m[3][4])
{
    std::ifstream in(file);
    if (!in)
        throw Failure(kExitInput, file + ": cannot read the matrix file");
    for (int i = 0; i < 12; ++i)
        if (!(in >> m[i / 4][i % 4]))
            throw Failure(kExitInput, file + ": a colour twist is 12 numbers, 3 rows of 4");
}

// The image steps of `convert` after the input is an RGB (or model) image.
Image process(Image img, const Options& o)
{
    if (!o.tonemap.empty())
        img = toneMap(img, o.tonemap);
    if (o.from != "rgb")
        img = fromModel(img, o.from);
    if (o.gammaSet)
        img = gamma(img, o.gammaMode == "inv");
    if (!o.twistFile.empty()) {
        float m[3][4];
        readTwist(o.twistFile, m);
        img = twist(img, m);
    }
    if (!o.to.empty() && o.to != "rgb" && !videoFormat(o.to))
        img = toModel(img, o.to);
    if (!o.dither.empty() || o.levels) {
        if (o.levels < 2)
            throw Failure(kExitUsage, "--dither needs --levels N (2 or more)");
        img = reduceBits(img, o.dither.empty() ? "none" : o.dither, o.levels, o.noise);
    }
    return img;
}

// Raw video: frame by frame, constant memory.
int convertVideo(const Options& o)
{
    const VideoFormat* from = videoFormat(o.format);
    if (!from)
        throw Failure(kExitUsage, "unknown video format '" + o.format + "'; `orvcc list` shows the formats");
    if (o.size.empty())
        throw Failure(kExitUsage, "raw video needs --size WIDTHxHEIGHT");
    const Size z = parseSize(o.size);
    const bool toImage = isImageName(o.out);
    const VideoFormat* to = videoFormat(o.to.empty() ? (toImage ? "rgb24" : o.format) : o.to);
    if (!to)
        throw Failure(kExitUsage, "unknown video format '" + o.to + "' for --to");
    const size_t inBytes = frameBytes(*from, z.w, z.h), outBytes = frameBytes(*to, z.w, z.h);
    std::string tried;
    const std::string name = from == to ? "" : frameConversion(*from, *to, &tried);
    if (from != to && name.empty())
        throw Failure(kExitFailed, "this build has no conversion from " + std::string(from->word) + " to " + to->word +
                                       " (looked for " + tried + ")");
    FILE* in = o.in == "-" ? stdin : std::fopen(o.in.c_str(), "rb");
    if (!in)
        throw Failure(kExitInput, o.in + ": " + std::strerror(errno));
    long total = -1;
    if (in != stdin) {
        std::fseek(in, 0, SEEK_END);
        const long bytes = std::ftell(in);
        std::fseek(in, 0, SEEK_SET);
        if (bytes <= 0 || bytes % long(inBytes)) {
            std::fclose(in);
            throw Failure(kExitInput, o.in + ": " + std::to_string(bytes) + " bytes is not a whole number of " +
                                          o.format + " frames of " + o.size + " (" + std::to_string(inBytes) + " bytes each)");
        }
        total = bytes / long(inBytes);
    }
    std::vector<uint8_t> src(inBytes), dst(outBytes);
    std::unique_ptr<Output> out;
    if (!toImage)
        out = std::make_unique<Output>(o.out);
    Progress bar(total);
    long n = 0;
    for (;; ++n) {
        const size_t got = std::fread(src.data(), 1, inBytes, in);
        if (got == 0)
            break;
        if (got < inBytes) {
            if (in != stdin)
                std::fclose(in);
            throw Failure(kExitInput, o.in + ": the input ends inside frame " + std::to_string(n + 1) + " (" +
                                          std::to_string(got) + " of " + std::to_string(inBytes) + " bytes)");
        }
        if (name.empty()) {
            dst = src;
        } else {
            Call c;
            c.in = framePlanes(*from, z.w, z.h, src.data());
            c.out = framePlanes(*to, z.w, z.h, dst.data());
            c.roi = {z.w, z.h};
            callChecked(name, c);
        }
        if (toImage) {
            Image img(z.w, z.h, 3, Depth::U8);
            std::memcpy(img.pixels.data(), dst.data(), dst.size());
            if (std::string(to->word) == "bgr24")
                img = toModel(img, "bgr");
            std::string path = o.out;
            if (path.find('%') != std::string::npos) {
                char buf[4096];
                std::snprintf(buf, sizeof buf, o.out.c_str(), int(n));
                path = buf;
            } else if (n > 0) {
                throw Failure(kExitUsage, "more than one frame: give an output name with %d, e.g. frame%04d.png");
            }
            writeImage(process(img, o), path, o.outFormat);
        } else {
            out->write(dst.data(), dst.size());
        }
        bar.frame(n + 1);
    }
    if (in != stdin)
        std::fclose(in);
    if (n == 0)
        throw Failure(kExitInput, o.in + ": no frames");
    if (out)
        out->commit();
    return kExitOk;
}

int convert(Options o)
{
    if (o.threads > 0)
        orvSetNumThreads(o.threads);
    if (!o.format.empty())
        return convertVideo(o);
    Image img;
    int grid = -1;
    if (!o.bayer.empty() && o.size.empty()) {
        // a one-channel image file holds the mosaic
        grid = gridOf(o.bayer);
        img = readImage(o.in);
        if (img.channels != 1)
            throw Failure(kExitInput, o.in + ": a mosaic image has one channel, this one has " + std::to_string(img.channels));
    } else if (!o.bayer.empty()) {
        grid = gridOf(o.bayer);
        if (o.depth != 8 && o.depth != 16)
            throw Failure(kExitUsage, "--depth takes 8 or 16");
        const Size z = parseSize(o.size);
        const std::vector<uint8_t> data = readAll(o.in);
        img = Image(z.w, z.h, 1, o.depth == 8 ? Depth::U8 : Depth::U16);
        if (data.size() != img.pixels.size())
            throw Failure(kExitInput, o.in + ": " + std::to_string(data.size()) + " bytes, but a " + o.size + " mosaic of " +
                                          std::to_string(o.depth) + " bits has " + std::to_string(img.pixels.size()));
        std::memcpy(img.pixels.data(), data.data(), data.size());
    } else {
        const std::vector<uint8_t> head = readAll(o.in);
        if (isCameraRawName(o.in) && readCameraRaw(head, o.in, &img, &grid)) {
            // a camera raw file that starts like a TIFF
        } else if (looksLikeImage(head)) {
            // read again through the image reader (standard input is already consumed)
            if (o.in == "-") {
                char name[] = "/tmp/orvcc-in-XXXXXX";
                const int fd = mkstemp(name);
                FILE* f = fdopen(fd, "wb");
                std::fwrite(head.data(), 1, head.size(), f);
                std::fclose(f);
                try {
                    img = readImage(name);
                } catch (...) {
                    std::remove(name);
                    throw;
                }
                std::remove(name);
            } else {
                img = readImage(o.in);
            }
        } else if (!readCameraRaw(head, o.in, &img, &grid)) {
            throw Failure(kExitInput, o.in + ": unknown format (not PNG, PPM/PGM, TIFF or a camera raw file; raw "
                                             "video needs --format and --size, a raw mosaic --bayer and --size)");
        }
    }
    if (grid >= 0 || !o.demosaicMethod.empty()) {
        if (grid < 0)
            throw Failure(kExitUsage, "--demosaic needs a mosaic: --bayer PATTERN or a camera raw file");
        img = demosaic(img, grid, o.demosaicMethod.empty() ? "bilinear" : o.demosaicMethod);
    }
    img = process(img, o);
    if (!o.mosaic.empty())
        img = mosaicOf(img, gridOf(o.mosaic));
    if (const VideoFormat* to = videoFormat(o.to)) {
        // A picture to one raw frame of a video format (--to i420, ycbcr420...).
        if (img.depth != Depth::U8 || img.channels != 3)
            throw Failure(kExitInput, "--to " + o.to + " needs an 8-bit RGB picture");
        const VideoFormat& rgb = *videoFormat("rgb24");
        std::vector<uint8_t> frame(frameBytes(*to, img.width, img.height));
        std::string tried;
        const std::string name = frameConversion(rgb, *to, &tried);
        if (name.empty())
            throw Failure(kExitFailed, "this build has no conversion from RGB to " + o.to + " (looked for " + tried + ")");
        Call c;
        c.in = framePlanes(rgb, img.width, img.height, img.pixels.data());
        c.out = framePlanes(*to, img.width, img.height, frame.data());
        c.roi = {img.width, img.height};
        callChecked(name, c);
        Output out(o.out);
        out.write(frame.data(), frame.size());
        out.commit();
        return kExitOk;
    }
    writeImage(img, o.out, o.outFormat);
    return kExitOk;
}

int info()
{
    const OrvLibVersion* v = orvccGetLibVersion();
    std::printf("library     %s %s (built %s)\n", v->libraryName, v->versionText, v->buildDate);
    std::printf("version     %d.%d.%d.%d\n", v->versionMajor, v->versionMinor, v->versionUpdate, v->versionBuild);
    std::printf("variant     %.4s: AVX2 and FMA (Haswell level, no AVX-512), OpenMP threads, %s\n", v->targetTag,
                sizeof(void*) == 8 ? "x86-64" : "32-bit x86");
    __builtin_cpu_init();
    const bool avx2 = __builtin_cpu_supports("avx2"), fma = __builtin_cpu_supports("fma"),
               bmi2 = __builtin_cpu_supports("bmi2");
    std::printf("processor   avx2 %s, fma %s, bmi2 %s: %s\n", avx2 ? "yes" : "NO", fma ? "yes" : "NO", bmi2 ? "yes" : "NO",
                avx2 && fma && bmi2 ? "the library runs here" : "this processor cannot run this library");
    std::printf("threads     %d (change with --threads N, or orvSetNumThreads(n) in a program)\n", ownGetNumThreads());
    std::printf("exports     %d conversions (orvcc list)\n", orvcall::kEntryCount);
    return kExitOk;
}

int list(bool namesOnly)
{
    if (namesOnly) {
        for (int i = 0; i < orvcall::kEntryCount; ++i)
            std::printf("%s\n", orvcall::kEntries[i].name);
        return kExitOk;
    }
    std::map<std::string, std::vector<std::string>> families;
    for (int i = 0; i < orvcall::kEntryCount; ++i) {
        const std::string n = orvcall::kEntries[i].name;
        families[n.substr(0, n.find('_'))].push_back(n.substr(n.find('_') + 1));
    }
    for (const auto& [fam, members] : families) {
        std::printf("%s (%zu):", fam.c_str(), members.size());
        for (const auto& m : members)
            std::printf(" %s", m.c_str());
        std::printf("\n");
    }
    auto words = [](const char* what, const std::vector<std::string>& w) {
        std::printf("%s", what);
        for (const auto& x : w)
            std::printf(" %s", x.c_str());
        std::printf("\n");
    };
    std::printf("\nwords of `orvcc convert`:\n");
    words("  --to / --from (images):", modelWords());
    std::vector<std::string> vf;
    for (const auto& f : videoFormats())
        vf.push_back(f.word);
    words("  --format / --to (raw video):", vf);
    words("  --bayer:", {"rggb", "bggr", "grbg", "gbrg"});
    words("  --demosaic:", demosaicWords());
    words("  --dither (with --levels N):", ditherWords());
    words("  --tonemap:", {"linear", "mean"});
    words("  --gamma:", {"fwd", "inv"});
    std::printf("  --twist FILE: 12 numbers, a 3x4 matrix\n");
    return kExitOk;
}

// Times one exported conversion on a generated frame.
int bench(const std::string& name, const std::string& sizeText, int threads)
{
    const orvcall::Entry* e = find(name);
    if (!e)
        throw Failure(kExitFailed, "this build does not export " + name + " (see orvcc list)");
    const Size z = parseSize(sizeText);
    if (threads > 0)
        orvSetNumThreads(threads);
    // Every array gets rows wide enough for four channels of its element, and
    // random bytes (floats get values in [0, 1)).
    std::vector<std::vector<uint8_t>> buffers;
    Call c;
    std::mt19937 rng(1);
    for (int k = 0; k < e->nargs; ++k) {
        const orvcall::Arg& a = e->args[k];
        const std::string kind = a.kind;
        const int n = kind == "img" || kind == "ptr" ? 1 : kind == "planes" || kind == "planes1" || kind == "tuple" ? a.count : 0;
        const int elem = std::strcmp(a.elem, "f64") == 0 ? 8 : std::strcmp(a.elem, "u8") == 0 ? 1 : std::strcmp(a.elem, "u16") == 0 || std::strcmp(a.elem, "s16") == 0 ? 2 : 4;
        const int step = (z.w * 4 * elem + 63) / 64 * 64;
        for (int i = 0; i < n; ++i) {
            buffers.emplace_back(size_t(step) * (z.h + 32));
            auto& b = buffers.back();
            if (std::strcmp(a.elem, "f32") == 0)
                for (size_t j = 0; j + 4 <= b.size(); j += 4) {
                    const float f = float(rng() % 65536) / 65536.0f;
                    std::memcpy(&b[j], &f, 4);
                }
            else if (std::strcmp(a.elem, "f64") == 0)
                for (size_t j = 0; j + 8 <= b.size(); j += 8) {
                    const double f = double(rng() % 65536) / 65536.0;
                    std::memcpy(&b[j], &f, 8);
                }
            else
                for (auto& x : b)
                    x = uint8_t(rng());
            (a.input ? c.in : c.out).push_back({b.data(), step});
        }
    }
    c.roi = {z.w, z.h};
    c.rect = {0, 0, z.w, z.h};
    c.values = {{"vMin", 0.0}, {"vMax", 1.0}, {"levels", 4}, {"alpha", 255}, {"grid", orvBayerRGGB}, {"channels", 3}};
    c.arrays = {{"twist", {0.5, 0.3, 0.2, 1, 0.1, 0.8, 0.1, 2, 0.2, 0.2, 0.6, 3}},
                {"scale", {1, 1, 1}}};
    OrvStatus st = call(name, c);
    if (st < 0)
        throw Failure(kExitFailed, name + " on a generated " + sizeText + " frame: " + statusName(st));
    using clock = std::chrono::steady_clock;
    int runs = 0;
    const auto t0 = clock::now();
    double seconds = 0;
    while (seconds < 1.0 || runs < 3) {
        call(name, c);
        ++runs;
        seconds = std::chrono::duration<double>(clock::now() - t0).count();
    }
    std::printf("%s %dx%d, %d threads: %.1f megapixels per second (%d runs)\n", name.c_str(), z.w, z.h,
                ownGetNumThreads(), double(z.w) * z.h * runs / seconds / 1e6, runs);
    return kExitOk;
}

}  // namespace

int main(int argc, char** argv)
{
    CLI::App app{"orvcc: bit-exact colour conversion for images, raw video and camera raw files"};
    app.require_subcommand(1);
    Options o;
    auto* conv = app.add_subcommand("convert", "convert an image, a raw video stream, a Bayer mosaic or a camera raw file");
    conv->add_option("IN", o.in, "input file, - for standard input")->required();
    conv->add_option("OUT", o.out, "output file (.png .ppm .pgm .tif, or raw frames), - for standard output")->required();
    conv->add_option("--size", o.size, "WIDTHxHEIGHT of raw video or a raw mosaic");
    conv->add_option("--format", o.format, "raw video input: i420 yv12 nv12 nv21 i422 yuy2 uyvy i411 rgb24 bgr24");
    conv->add_option("--to", o.to, "colour model (gray xyz yuv ycbcr luv lab ycc hls hsv bgr) or, for raw video, a format");
    conv->add_option("--from", o.from, "colour model the input image holds (default rgb)");
    conv->add_option("--bayer", o.bayer, "Bayer mosaic input (raw with --size, or a one-channel image): rggb bggr grbg gbrg");
    conv->add_option("--mosaic", o.mosaic, "write the Bayer mosaic (rggb bggr grbg gbrg) a sensor would see");
    conv->add_option("--depth", o.depth, "bits per sample of a raw mosaic: 8 or 16");
    conv->add_option("--demosaic", o.demosaicMethod, "bilinear (default), vng or ahd");
    conv->add_option("--gamma", o.gammaMode, "BT.709 gamma: fwd (default) or inv")->expected(0, 1)->default_str("fwd");
    conv->add_option("--twist", o.twistFile, "colour twist: a file of 12 numbers (3x4 matrix)");
    conv->add_option("--tonemap", o.tonemap, "float image to 8 bits: linear or mean");
    conv->add_option("--dither", o.dither, "reduce to --levels: none bayer fs jjn stucki");
    conv->add_option("--levels", o.levels, "output levels of --dither (2 or more)");
    conv->add_option("--noise", o.noise, "noise percentage of --dither (0 to 100)");
    conv->add_option("--out-format", o.outFormat, "format of an image written to standard output: png ppm tif");
    conv->add_option("--threads", o.threads, "threads for the threaded conversions");

    auto* inf = app.add_subcommand("info", "version, variant, processor features and threads");
    auto* lst = app.add_subcommand("list", "every conversion this build exports, and the words convert takes");
    bool namesOnly = false;
    lst->add_flag("--names", namesOnly, "only the exported names, one a line");
    std::string benchName, benchSize = "1920x1080";
    int benchThreads = 0;
    auto* bn = app.add_subcommand("bench", "megapixels per second of one exported conversion on a generated frame");
    bn->add_option("NAME", benchName, "an exported name, e.g. orviRGBToGray_8u_C3C1R")->required();
    bn->add_option("--size", benchSize, "WIDTHxHEIGHT (default 1920x1080)");
    bn->add_option("--threads", benchThreads, "threads");
    std::string galIn, galOut;
    auto* gal = app.add_subcommand("gallery", "one contact sheet of a picture through the library");
    gal->add_option("IN", galIn, "a picture (PNG, PPM, TIFF) or camera raw file")->required();
    gal->add_option("OUT", galOut, "the sheet, a .png")->required();

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        std::fprintf(stderr, "orvcc: %s (see orvcc --help)\n", e.what());
        return kExitUsage;
    }
    try {
        if (conv->parsed()) {
            o.gammaSet = conv->count("--gamma") > 0;
            if (o.gammaSet && o.gammaMode.empty())
                o.gammaMode = "fwd";
            if (o.gammaSet && o.gammaMode != "fwd" && o.gammaMode != "inv")
                throw Failure(kExitUsage, "--gamma takes fwd or inv");
            return convert(o);
        }
        if (inf->parsed())
            return info();
        if (lst->parsed())
            return list(namesOnly);
        if (bn->parsed())
            return bench(benchName, benchSize, benchThreads);
        if (gal->parsed())
            return gallery(galIn, galOut);
    } catch (const Failure& f) {
        std::fprintf(stderr, "orvcc: %s\n", f.what());
        return f.code;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "orvcc: %s\n", e.what());
        return kExitFailed;
    }
    return kExitUsage;
}
