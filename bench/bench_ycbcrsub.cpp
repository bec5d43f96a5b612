// Subsampled YCbCr throughput, one thread, 1920x1080: every member as vector
// path and scalar form, and libyuv and OpenCV where they offer the same
// conversion.
#include <cstring>

#include "bench_util.h"

#ifdef ORVCC_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif
#ifdef ORVCC_HAVE_LIBYUV
#include <libyuv.h>
#endif

namespace {

using namespace orvbench;

// Planes cut out of a frame buffer: luma of w by h, then the chroma planes
// of cw by ch each (or one plane of chroma pairs).
struct Planes {
    uint8_t* p[3];
    int step[3];
    Planes(uint8_t* base, RoiSize r, int cw, int ch)
    {
        p[0] = base;
        p[1] = base + std::size_t(r.width) * r.height;
        p[2] = p[1] + std::size_t(cw) * ch;
        step[0] = r.width;
        step[1] = step[2] = cw;
    }
};

using ToP3 = OrvStatus (*)(const Orv8u*, int, Orv8u* [3], int[3], RoiSize);
using ToP2 = OrvStatus (*)(const Orv8u*, int, Orv8u*, int, Orv8u*, int, RoiSize);
using Plain = OrvStatus (*)(const Orv8u*, int, Orv8u*, int, RoiSize);
using PlainA = OrvStatus (*)(const Orv8u*, int, Orv8u*, int, RoiSize, Orv8u);
using FromP3Step = OrvStatus (*)(const Orv8u* const[3], int, Orv8u*, int, RoiSize);
using FromP3 = OrvStatus (*)(const Orv8u* const[3], const int[3], Orv8u*, int, RoiSize);
using FromP3A = OrvStatus (*)(const Orv8u* const[3], const int[3], Orv8u*, int, RoiSize, Orv8u);
using FromP2 = OrvStatus (*)(const Orv8u*, int, const Orv8u*, int, Orv8u*, int, RoiSize);
using FromP2A = OrvStatus (*)(const Orv8u*, int, const Orv8u*, int, Orv8u*, int, RoiSize, Orv8u);
using C2ToP3 = OrvStatus (*)(const Orv8u*, int, Orv8u* [3], int, RoiSize);

// Chroma plane width and height of a sampling: H across, Vt down.
Call toP3(ToP3 f, int h, int v)
{
    return [=](uint8_t* s, int ss, uint8_t* d, int, RoiSize r) {
        Planes p(d, r, r.width / h, r.height / v);
        return f(s, ss, p.p, p.step, r);
    };
}
Call toP2(ToP2 f)
{
    return [=](uint8_t* s, int ss, uint8_t* d, int, RoiSize r) {
        return f(s, ss, d, r.width, d + std::size_t(r.width) * r.height, r.width, r);
    };
}
Call plain(Plain f) { return [=](uint8_t* s, int ss, uint8_t* d, int ds, RoiSize r) { return f(s, ss, d, ds, r); }; }
Call plainA(PlainA f) { return [=](uint8_t* s, int ss, uint8_t* d, int ds, RoiSize r) { return f(s, ss, d, ds, r, 255); }; }
Call fromP3Step(FromP3Step f)
{
    return [=](uint8_t* s, int, uint8_t* d, int ds, RoiSize r) {
        Planes p(s, r, r.width, r.height);
        return f(p.p, r.width, d, ds, r);
    };
}
Call fromP3(FromP3 f, int h, int v)
{
    return [=](uint8_t* s, int, uint8_t* d, int ds, RoiSize r) {
        Planes p(s, r, r.width / h, r.height / v);
        return f(p.p, p.step, d, ds, r);
    };
}
Call fromP3A(FromP3A f, int h, int v)
{
    return [=](uint8_t* s, int, uint8_t* d, int ds, RoiSize r) {
        Planes p(s, r, r.width / h, r.height / v);
        return f(p.p, p.step, d, ds, r, 255);
    };
}
Call fromP2(FromP2 f)
{
    return [=](uint8_t* s, int, uint8_t* d, int ds, RoiSize r) {
        return f(s, r.width, s + std::size_t(r.width) * r.height, r.width, d, ds, r);
    };
}
Call fromP2A(FromP2A f)
{
    return [=](uint8_t* s, int, uint8_t* d, int ds, RoiSize r) {
        return f(s, r.width, s + std::size_t(r.width) * r.height, r.width, d, ds, r, 255);
    };
}
Call c2ToP3(C2ToP3 f)
{
    return [=](uint8_t* s, int ss, uint8_t* d, int, RoiSize r) {
        Planes p(d, r, r.width, r.height);
        return f(s, ss, p.p, r.width, r);
    };
}

void registerYCbCrSub()
{
    // Bytes per pixel: enough for the largest side; planes are cut from it.
    registerConversion("RGBToYCbCr422_8u_C3P3R", 3, 2, toP3(orviRGBToYCbCr422_8u_C3P3R, 2, 1));
    registerConversion("BGRToYCbCr422_8u_C3P3R", 3, 2, toP3(orviBGRToYCbCr422_8u_C3P3R, 2, 1));
    registerConversion("BGRToYCbCr422_8u_AC4P3R", 4, 2, toP3(orviBGRToYCbCr422_8u_AC4P3R, 2, 1));
    registerConversion("RGBToYCbCr422_8u_C3C2R", 3, 2, plain(orviRGBToYCbCr422_8u_C3C2R));
    registerConversion("BGRToYCbCr422_8u_C3C2R", 3, 2, plain(orviBGRToYCbCr422_8u_C3C2R));
    registerConversion("BGRToYCbCr422_8u_AC4C2R", 4, 2, plain(orviBGRToYCbCr422_8u_AC4C2R));
    registerConversion("RGBToYCrCb422_8u_C3C2R", 3, 2, plain(orviRGBToYCrCb422_8u_C3C2R));
    registerConversion("BGRToCbYCr422_8u_AC4C2R", 4, 2, plain(orviBGRToCbYCr422_8u_AC4C2R));
    registerConversion("RGBToCbYCr422_8u_C3C2R", 3, 2, plain(orviRGBToCbYCr422_8u_C3C2R));
    registerConversion("RGBToCbYCr422Gamma_8u_C3C2R", 3, 2, plain(orviRGBToCbYCr422Gamma_8u_C3C2R));
    registerConversion("RGBToYCbCr422_8u_P3C2R", 3, 2, fromP3Step(orviRGBToYCbCr422_8u_P3C2R));
    registerConversion("RGBToYCrCb422_8u_P3C2R", 3, 2, fromP3Step(orviRGBToYCrCb422_8u_P3C2R));
    registerConversion("RGBToYCbCr420_8u_C3P3R", 3, 2, toP3(orviRGBToYCbCr420_8u_C3P3R, 2, 2));
    registerConversion("BGRToYCbCr420_8u_C3P3R", 3, 2, toP3(orviBGRToYCbCr420_8u_C3P3R, 2, 2));
    registerConversion("BGRToYCrCb420_8u_C3P3R", 3, 2, toP3(orviBGRToYCrCb420_8u_C3P3R, 2, 2));
    registerConversion("BGRToYCbCr420_8u_AC4P3R", 4, 2, toP3(orviBGRToYCbCr420_8u_AC4P3R, 2, 2));
    registerConversion("BGRToYCrCb420_8u_AC4P3R", 4, 2, toP3(orviBGRToYCrCb420_8u_AC4P3R, 2, 2));
    registerConversion("RGBToYCrCb420_8u_AC4P3R", 4, 2, toP3(orviRGBToYCrCb420_8u_AC4P3R, 2, 2));
    registerConversion("RGBToYCbCr420_8u_C3P2R", 3, 2, toP2(orviRGBToYCbCr420_8u_C3P2R));
    registerConversion("BGRToYCbCr420_8u_C3P2R", 3, 2, toP2(orviBGRToYCbCr420_8u_C3P2R));
    registerConversion("RGBToYCbCr420_8u_C4P2R", 4, 2, toP2(orviRGBToYCbCr420_8u_C4P2R));
    registerConversion("BGRToYCbCr420_8u_AC4P2R", 4, 2, toP2(orviBGRToYCbCr420_8u_AC4P2R));
    registerConversion("BGRToYCbCr411_8u_C3P3R", 3, 2, toP3(orviBGRToYCbCr411_8u_C3P3R, 4, 1));
    registerConversion("BGRToYCbCr411_8u_AC4P3R", 4, 2, toP3(orviBGRToYCbCr411_8u_AC4P3R, 4, 1));

    registerConversion("YCbCr422ToRGB_8u_C2C3R", 2, 3, plain(orviYCbCr422ToRGB_8u_C2C3R));
    registerConversion("YCbCr422ToBGR_8u_C2C3R", 2, 3, plain(orviYCbCr422ToBGR_8u_C2C3R));
    registerConversion("YCrCb422ToRGB_8u_C2C3R", 2, 3, plain(orviYCrCb422ToRGB_8u_C2C3R));
    registerConversion("YCrCb422ToBGR_8u_C2C3R", 2, 3, plain(orviYCrCb422ToBGR_8u_C2C3R));
    registerConversion("CbYCr422ToRGB_8u_C2C3R", 2, 3, plain(orviCbYCr422ToRGB_8u_C2C3R));
    registerConversion("YCbCr422ToRGB_8u_C2C4R", 2, 4, plainA(orviYCbCr422ToRGB_8u_C2C4R));
    registerConversion("YCbCr422ToBGR_8u_C2C4R", 2, 4, plainA(orviYCbCr422ToBGR_8u_C2C4R));
    registerConversion("YCrCb422ToRGB_8u_C2C4R", 2, 4, plainA(orviYCrCb422ToRGB_8u_C2C4R));
    registerConversion("YCrCb422ToBGR_8u_C2C4R", 2, 4, plainA(orviYCrCb422ToBGR_8u_C2C4R));
    registerConversion("CbYCr422ToBGR_8u_C2C4R", 2, 4, plainA(orviCbYCr422ToBGR_8u_C2C4R));
    registerConversion("YCbCr422ToRGB_8u_C2P3R", 2, 3, c2ToP3(orviYCbCr422ToRGB_8u_C2P3R));
    registerConversion("YCrCb422ToRGB_8u_C2P3R", 2, 3, c2ToP3(orviYCrCb422ToRGB_8u_C2P3R));
    registerConversion("YCbCr422ToRGB_8u_P3C3R", 2, 3, fromP3(orviYCbCr422ToRGB_8u_P3C3R, 2, 1));
    registerConversion("YCbCr422ToBGR_8u_P3C3R", 2, 3, fromP3(orviYCbCr422ToBGR_8u_P3C3R, 2, 1));
    registerConversion("YCbCr420ToRGB_8u_P3C3R", 2, 3, fromP3(orviYCbCr420ToRGB_8u_P3C3R, 2, 2));
    registerConversion("YCbCr420ToBGR_8u_P3C3R", 2, 3, fromP3(orviYCbCr420ToBGR_8u_P3C3R, 2, 2));
    registerConversion("YCbCr420ToBGR_8u_P3C4R", 2, 4, fromP3A(orviYCbCr420ToBGR_8u_P3C4R, 2, 2));
    registerConversion("YCrCb420ToRGB_8u_P3C4R", 2, 4, fromP3A(orviYCrCb420ToRGB_8u_P3C4R, 2, 2));
    registerConversion("YCrCb420ToBGR_Filter_8u_P3C4R", 2, 4, fromP3A(orviYCrCb420ToBGR_Filter_8u_P3C4R, 2, 2));
    registerConversion("YCbCr420ToRGB_8u_P2C3R", 2, 3, fromP2(orviYCbCr420ToRGB_8u_P2C3R));
    registerConversion("YCbCr420ToBGR_8u_P2C3R", 2, 3, fromP2(orviYCbCr420ToBGR_8u_P2C3R));
    registerConversion("YCrCb420ToRGB_8u_P2C3R", 2, 3, fromP2(orviYCrCb420ToRGB_8u_P2C3R));
    registerConversion("YCrCb420ToBGR_8u_P2C3R", 2, 3, fromP2(orviYCrCb420ToBGR_8u_P2C3R));
    registerConversion("YCbCr420ToRGB_8u_P2C4R", 2, 4, fromP2A(orviYCbCr420ToRGB_8u_P2C4R));
    registerConversion("YCbCr420ToBGR_8u_P2C4R", 2, 4, fromP2A(orviYCbCr420ToBGR_8u_P2C4R));
    registerConversion("YCrCb420ToRGB_8u_P2C4R", 2, 4, fromP2A(orviYCrCb420ToRGB_8u_P2C4R));
    registerConversion("YCrCb420ToBGR_8u_P2C4R", 2, 4, fromP2A(orviYCrCb420ToBGR_8u_P2C4R));
    registerConversion("YCbCr411ToBGR_8u_P3C3R", 2, 3, fromP3(orviYCbCr411ToBGR_8u_P3C3R, 4, 1));
    registerConversion("YCbCr411ToBGR_8u_P3C4R", 2, 4, fromP3A(orviYCbCr411ToBGR_8u_P3C4R, 4, 1));

    registerConversion("BGRToCbYCr422_709HDTV_8u_C3C2R", 3, 2, plain(orviBGRToCbYCr422_709HDTV_8u_C3C2R));
    registerConversion("BGRToCbYCr422_709HDTV_8u_AC4C2R", 4, 2, plain(orviBGRToCbYCr422_709HDTV_8u_AC4C2R));
    registerConversion("BGRToYCbCr420_709HDTV_8u_AC4P3R", 4, 2, toP3(orviBGRToYCbCr420_709HDTV_8u_AC4P3R, 2, 2));
    registerConversion("BGRToYCbCr420_709CSC_8u_C3P3R", 3, 2, toP3(orviBGRToYCbCr420_709CSC_8u_C3P3R, 2, 2));
    registerConversion("BGRToYCbCr420_709CSC_8u_AC4P3R", 4, 2, toP3(orviBGRToYCbCr420_709CSC_8u_AC4P3R, 2, 2));
    registerConversion("BGRToYCrCb420_709CSC_8u_C3P3R", 3, 2, toP3(orviBGRToYCrCb420_709CSC_8u_C3P3R, 2, 2));
    registerConversion("BGRToYCrCb420_709CSC_8u_AC4P3R", 4, 2, toP3(orviBGRToYCrCb420_709CSC_8u_AC4P3R, 2, 2));
    registerConversion("BGRToYCbCr420_709CSC_8u_C3P2R", 3, 2, toP2(orviBGRToYCbCr420_709CSC_8u_C3P2R));
    registerConversion("BGRToYCbCr420_709CSC_8u_AC4P2R", 4, 2, toP2(orviBGRToYCbCr420_709CSC_8u_AC4P2R));
    registerConversion("CbYCr422ToBGR_709HDTV_8u_C2C3R", 2, 3, plain(orviCbYCr422ToBGR_709HDTV_8u_C2C3R));
    registerConversion("CbYCr422ToBGR_709HDTV_8u_C2C4R", 2, 4, plainA(orviCbYCr422ToBGR_709HDTV_8u_C2C4R));
    registerConversion("YCbCr420ToBGR_709HDTV_8u_P3C4R", 2, 4, fromP3A(orviYCbCr420ToBGR_709HDTV_8u_P3C4R, 2, 2));
    registerConversion("YCbCr420ToBGR_709CSC_8u_P3C3R", 2, 3, fromP3(orviYCbCr420ToBGR_709CSC_8u_P3C3R, 2, 2));
    registerConversion("YCbCrToBGR_709CSC_8u_P3C3R", 3, 3, fromP3Step(orviYCbCrToBGR_709CSC_8u_P3C3R));
    registerConversion("YCbCrToBGR_709CSC_8u_P3C4R", 3, 4, [](uint8_t* s, int, uint8_t* d, int ds, RoiSize r) {
        Planes p(s, r, r.width, r.height);
        return orviYCbCrToBGR_709CSC_8u_P3C4R(p.p, r.width, d, ds, r, 255);
    });

    // v210: 16 bytes per 6 pixels in, 2 bytes per pixel out; beside a memcpy
    // of the source bytes.
    auto v210 = [](OrvStatus (*f)(const Orv32u*, int, Orv16u*, int, RoiSize)) {
        return [f](uint8_t* s, int, uint8_t* d, int, RoiSize r) {
            return f(reinterpret_cast<const Orv32u*>(s), r.width / 6 * 16, reinterpret_cast<Orv16u*>(d), 2 * r.width, r);
        };
    };
    registerConversion("YUV422v210ToGray_709HDTV_32u16u_C3C1", 3, 2, v210(orviYUV422v210ToGray_709HDTV_32u16u_C3C1));
    registerConversion("YUV422v210ToRGB_709HDTV_32u16u_C3", 3, 2, v210(orviYUV422v210ToRGB_709HDTV_32u16u_C3));
    registerConversion("YUV422v210ToBGR_709HDTV_32u16u_C3", 3, 2, v210(orviYUV422v210ToBGR_709HDTV_32u16u_C3));
    registerPeer("YUV422v210ToGray_709HDTV_32u16u_C3C1/memcpy", [](benchmark::State& state) {
        const std::size_t bytes = std::size_t(kWidth) / 6 * 16 * kHeight;
        Buffer src(bytes), dst(bytes);
        for (auto _ : state) {
            std::memcpy(dst.data(), src.data(), bytes);
            benchmark::ClobberMemory();
        }
    });

    const int w = kWidth, h = kHeight;
#ifdef ORVCC_HAVE_LIBYUV
    // libyuv's "RGB24" is B, G, R in memory; its I420 and NV12 readers take
    // the studio-range BT.601 matrix like these members.
    auto yuv = [](const char* name, std::function<void(uint8_t*, uint8_t*)> f, int srcBytes, int dstBytes) {
        registerPeer(name, [=](benchmark::State& state) {
            Buffer src(std::size_t(kWidth) * kHeight * srcBytes), dst(std::size_t(kWidth) * kHeight * dstBytes);
            for (auto _ : state) {
                f(src.data(), dst.data());
                benchmark::ClobberMemory();
            }
        });
    };
    const std::size_t area = std::size_t(w) * h;
    yuv("RGBToYCbCr420_8u_C3P3R/libyuv", [=](uint8_t* s, uint8_t* d) {
        libyuv::RGB24ToI420(s, 3 * w, d, w, d + area, w / 2, d + area + area / 4, w / 2, w, h);
    }, 3, 2);
    yuv("YCbCr420ToRGB_8u_P3C3R/libyuv", [=](uint8_t* s, uint8_t* d) {
        libyuv::I420ToRGB24(s, w, s + area, w / 2, s + area + area / 4, w / 2, d, 3 * w, w, h);
    }, 2, 3);
    yuv("YCbCr420ToRGB_8u_P2C3R/libyuv", [=](uint8_t* s, uint8_t* d) {
        libyuv::NV12ToRGB24(s, w, s + area, w, d, 3 * w, w, h);
    }, 2, 3);
    yuv("YCbCr422ToBGR_8u_C2C4R/libyuv", [=](uint8_t* s, uint8_t* d) { libyuv::YUY2ToARGB(s, 2 * w, d, 4 * w, w, h); }, 2, 4);
    yuv("CbYCr422ToBGR_8u_C2C4R/libyuv", [=](uint8_t* s, uint8_t* d) { libyuv::UYVYToARGB(s, 2 * w, d, 4 * w, w, h); }, 2, 4);
    yuv("YCbCr420ToBGR_709CSC_8u_P3C3R/libyuv", [=](uint8_t* s, uint8_t* d) {
        libyuv::H420ToRGB24(s, w, s + area, w / 2, s + area + area / 4, w / 2, d, 3 * w, w, h);
    }, 2, 3);
    yuv("YCbCr420ToBGR_709HDTV_8u_P3C4R/libyuv", [=](uint8_t* s, uint8_t* d) {
        libyuv::H420ToARGB(s, w, s + area, w / 2, s + area + area / 4, w / 2, d, 4 * w, w, h);
    }, 2, 4);
    yuv("YCbCr422ToRGB_8u_P3C3R/libyuv", [=](uint8_t* s, uint8_t* d) {
        libyuv::I422ToRGB24(s, w, s + area, w / 2, s + area + area / 2, w / 2, d, 3 * w, w, h);
    }, 2, 3);
#endif
#ifdef ORVCC_HAVE_OPENCV
    auto opencv = [=](const char* name, int code, int srcType, int srcRows, int dstType) {
        registerPeer(name, [=](benchmark::State& state) {
            cv::setNumThreads(1);
            Buffer src(std::size_t(kWidth) * kHeight * 4), dst(std::size_t(kWidth) * kHeight * 4);
            cv::Mat s(srcRows, w, srcType, src.data()), d(h, w, dstType, dst.data());
            if (code == cv::COLOR_RGB2YUV_I420)
                d = cv::Mat(h * 3 / 2, w, CV_8UC1, dst.data());
            for (auto _ : state) {
                cv::cvtColor(s, d, code);
                benchmark::ClobberMemory();
            }
        });
    };
    opencv("RGBToYCbCr420_8u_C3P3R/opencv", cv::COLOR_RGB2YUV_I420, CV_8UC3, h, CV_8UC1);
    opencv("YCbCr420ToRGB_8u_P3C3R/opencv", cv::COLOR_YUV2RGB_I420, CV_8UC1, h * 3 / 2, CV_8UC3);
    opencv("YCbCr420ToRGB_8u_P2C3R/opencv", cv::COLOR_YUV2RGB_NV12, CV_8UC1, h * 3 / 2, CV_8UC3);
    opencv("YCbCr422ToRGB_8u_C2C3R/opencv", cv::COLOR_YUV2RGB_YUY2, CV_8UC2, h, CV_8UC3);
    opencv("CbYCr422ToRGB_8u_C2C3R/opencv", cv::COLOR_YUV2RGB_UYVY, CV_8UC2, h, CV_8UC3);
    opencv("YCbCr422ToBGR_8u_C2C4R/opencv", cv::COLOR_YUV2BGRA_YUY2, CV_8UC2, h, CV_8UC4);
    opencv("CbYCr422ToBGR_8u_C2C4R/opencv", cv::COLOR_YUV2BGRA_UYVY, CV_8UC2, h, CV_8UC4);
#endif
}

const Registrar registrar(registerYCbCrSub);

}  // namespace
