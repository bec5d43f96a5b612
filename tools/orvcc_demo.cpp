// orvcc_demo: converts a generated 1920x1080 test card with each family the
// library has, and prints the throughput and a checksum of every output.
// The checksums are the same on every machine and for every thread count.
//
//   orvcc_demo [threads]
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

#include "orvcc.h"
#include "orvcore.h"

namespace {

constexpr int W = 1920, H = 1080;

// FNV-1a over the output bytes.
uint64_t checksum(const void* p, std::size_t n)
{
    uint64_t h = 1469598103934665603ull;
    const auto* b = static_cast<const uint8_t*>(p);
    for (std::size_t i = 0; i < n; ++i)
        h = (h ^ b[i]) * 1099511628211ull;
    return h;
}

// A test card: colour ramps, a gray wedge and a bright patch.
std::vector<uint8_t> makeCard()
{
    std::vector<uint8_t> rgb(std::size_t(W) * H * 3);
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) {
            uint8_t* p = &rgb[(std::size_t(y) * W + x) * 3];
            p[0] = uint8_t(x * 255 / (W - 1));
            p[1] = uint8_t(y * 255 / (H - 1));
            p[2] = uint8_t((x + y) % 256);
            if (y > H / 2 && x < W / 4)
                p[0] = p[1] = p[2] = uint8_t(x * 256 / (W / 4));
        }
    return rgb;
}

void run(const char* name, std::size_t outBytes, const std::function<OrvStatus()>& call, const void* out)
{
    const int reps = 20;
    OrvStatus st = call();
    const auto t0 = std::chrono::steady_clock::now();
    for (int i = 0; i < reps; ++i)
        st = call();
    const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count() / reps;
    std::printf("%-32s status %4d  %8.1f MP/s  checksum %016llx\n", name, st, W * double(H) / s / 1e6,
                (unsigned long long)checksum(out, outBytes));
    if (st < 0)
        std::exit(1);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc > 1)
        orvSetNumThreads(std::atoi(argv[1]));
    const OrvLibVersion* v = orvccGetLibVersion();
    std::printf("%s %s, %d thread(s)\n", v->libraryName, v->versionText, ownGetNumThreads());

    const std::vector<uint8_t> rgb = makeCard();
    const RoiSize roi{W, H};
    std::vector<uint8_t> gray(std::size_t(W) * H), back(std::size_t(W) * H * 4);
    std::vector<float> rgbf(std::size_t(W) * H * 3), grayf(std::size_t(W) * H);
    std::vector<double> rgbd(std::size_t(W) * H * 3), grayd(std::size_t(W) * H);
    for (std::size_t i = 0; i < rgb.size(); ++i) {
        rgbf[i] = rgb[i] / 255.0f;
        rgbd[i] = rgb[i] / 255.0;
    }
    const float bt709[3] = {0.2126f, 0.7152f, 0.0722f};

    run("RGBToGray_8u_C3C1R", gray.size(), [&] {
        return orviRGBToGray_8u_C3C1R(rgb.data(), W * 3, gray.data(), W, roi);
    }, gray.data());
    run("ColorToGray_8u_C3C1R (709)", gray.size(), [&] {
        return orviColorToGray_8u_C3C1R(rgb.data(), W * 3, gray.data(), W, roi, bt709);
    }, gray.data());
    run("GrayToRGB_8u_C1C4R", back.size(), [&] {
        return orviGrayToRGB_8u_C1C4R(gray.data(), W, back.data(), W * 4, roi, 255);
    }, back.data());
    run("RGBToGray_32f_C3C1R", grayf.size() * 4, [&] {
        return orviRGBToGray_32f_C3C1R(rgbf.data(), W * 12, grayf.data(), W * 4, roi);
    }, grayf.data());
    run("ColorToGray_64f_C3C1R", grayd.size() * 8, [&] {
        return orviColorToGray_64f_C3C1R(rgbd.data(), W * 24, grayd.data(), W * 8, roi, nullptr);
    }, grayd.data());

    std::vector<uint8_t> yuv(rgb.size()), back3(rgb.size());
    run("RGBToYUV_8u_C3R", yuv.size(), [&] {
        return orviRGBToYUV_8u_C3R(rgb.data(), W * 3, yuv.data(), W * 3, roi);
    }, yuv.data());
    run("YUVToRGB_8u_C3R", back3.size(), [&] {
        return orviYUVToRGB_8u_C3R(yuv.data(), W * 3, back3.data(), W * 3, roi);
    }, back3.data());
    run("RGBToYCbCr_8u_C3R", yuv.size(), [&] {
        return orviRGBToYCbCr_8u_C3R(rgb.data(), W * 3, yuv.data(), W * 3, roi);
    }, yuv.data());
    run("YCbCrToRGB_8u_C3R", back3.size(), [&] {
        return orviYCbCrToRGB_8u_C3R(yuv.data(), W * 3, back3.data(), W * 3, roi);
    }, back3.data());

    std::vector<uint8_t> xyz(rgb.size());
    std::vector<float> xyzf(rgbf.size()), gammaf(rgbf.size());
    run("RGBToXYZ_8u_C3R", xyz.size(), [&] {
        return orviRGBToXYZ_8u_C3R(rgb.data(), W * 3, xyz.data(), W * 3, roi);
    }, xyz.data());
    run("RGBToXYZ_32f_C3R", xyzf.size() * 4, [&] {
        return orviRGBToXYZ_32f_C3R(rgbf.data(), W * 12, xyzf.data(), W * 12, roi);
    }, xyzf.data());

    std::vector<uint8_t> gamma8(rgb.size()), twisted(rgb.size());
    run("GammaFwd_8u_C3R", gamma8.size(), [&] {
        return orviGammaFwd_8u_C3R(rgb.data(), W * 3, gamma8.data(), W * 3, roi);
    }, gamma8.data());
    run("GammaFwd_32f_C3R", gammaf.size() * 4, [&] {
        return orviGammaFwd_32f_C3R(rgbf.data(), W * 12, gammaf.data(), W * 12, roi, 0.0f, 1.0f);
    }, gammaf.data());
    // A warm colour grade: a little more red, a little less blue.
    const float grade[3][4] = {{1.10f, 0.05f, 0.00f, -4.0f}, {0.02f, 1.00f, 0.02f, 0.0f}, {0.00f, 0.05f, 0.90f, 2.0f}};
    run("ColorTwist32f_8u_C3R", twisted.size(), [&] {
        return orviColorTwist32f_8u_C3R(rgb.data(), W * 3, twisted.data(), W * 3, roi, grade);
    }, twisted.data());

    // High dynamic range: luminance scaled up to 40, mapped back to 8 bits.
    std::vector<float> hdr(grayf.size());
    for (std::size_t i = 0; i < hdr.size(); ++i)
        hdr[i] = grayf[i] * grayf[i] * 40.0f;
    run("ToneMapLinear_32f8u_C1R", gray.size(), [&] {
        return orviToneMapLinear_32f8u_C1R(hdr.data(), W * 4, gray.data(), W, roi);
    }, gray.data());
    return 0;
}
