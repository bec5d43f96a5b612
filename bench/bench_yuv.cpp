// Full-resolution YUV and YCbCr throughput, one thread, 1920x1080: every
// member as vector path and scalar form, and OpenCV's cvtColor for the same
// interleaved conversions.
#include <type_traits>

#include "bench_util.h"

#ifdef ORVCC_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

using namespace orvbench;

// A side of `planes` planes is cut out of the frame buffer, plane after
// plane, each with a step of one byte per pixel; an interleaved side is
// passed as it is.
struct PlaneArgs {
    uint8_t* p[4];
    PlaneArgs(uint8_t* base, int planes, RoiSize r)
    {
        for (int k = 0; k < 4; ++k)
            p[k] = base + std::size_t(k < planes ? k : 0) * r.width * r.height;
    }
};

template <class S, class D>
Call wrap(OrvStatus (*f)(S, int, D, int, RoiSize), int srcPlanes, int dstPlanes)
{
    return [=](uint8_t* s, int ss, uint8_t* d, int ds, RoiSize r) {
        PlaneArgs sp(s, srcPlanes, r), dp(d, dstPlanes, r);
        S src;
        D dst;
        if constexpr (std::is_pointer_v<std::remove_pointer_t<S>>)
            src = sp.p, ss = r.width;
        else
            src = s;
        if constexpr (std::is_pointer_v<std::remove_pointer_t<D>>)
            dst = dp.p, ds = r.width;
        else
            dst = d;
        return f(src, ss, dst, ds, r);
    };
}

template <class S, class D>
Call wrapAlpha(OrvStatus (*f)(S, int, D, int, RoiSize, Orv8u), int srcPlanes)
{
    return [=](uint8_t* s, int ss, uint8_t* d, int ds, RoiSize r) {
        PlaneArgs sp(s, srcPlanes, r);
        if constexpr (std::is_pointer_v<std::remove_pointer_t<S>>)
            return f(sp.p, r.width, d, ds, r, 255);
        else
            return f(s, ss, d, ds, r, 255);
    };
}

void registerYuv()
{
    registerConversion("RGBToYUV_8u_C3R", 3, 3, wrap(orviRGBToYUV_8u_C3R, 1, 1));
    registerConversion("RGBToYUV_8u_C3P3R", 3, 3, wrap(orviRGBToYUV_8u_C3P3R, 1, 3));
    registerConversion("RGBToYUV_8u_P3R", 3, 3, wrap(orviRGBToYUV_8u_P3R, 3, 3));
    registerConversion("RGBToYUV_8u_AC4R", 4, 4, wrap(orviRGBToYUV_8u_AC4R, 1, 1));
    registerConversion("RGBToYUV_8u_AC4P4R", 4, 4, wrap(orviRGBToYUV_8u_AC4P4R, 1, 4));
    registerConversion("YUVToRGB_8u_C3R", 3, 3, wrap(orviYUVToRGB_8u_C3R, 1, 1));
    registerConversion("YUVToRGB_8u_P3C3R", 3, 3, wrap(orviYUVToRGB_8u_P3C3R, 3, 1));
    registerConversion("YUVToRGB_8u_P3R", 3, 3, wrap(orviYUVToRGB_8u_P3R, 3, 3));
    registerConversion("YUVToRGB_8u_AC4R", 4, 4, wrap(orviYUVToRGB_8u_AC4R, 1, 1));
    registerConversion("YUVToRGB_8u_C3C4R", 3, 4, wrapAlpha(orviYUVToRGB_8u_C3C4R, 1));

    registerConversion("RGBToYCbCr_8u_C3R", 3, 3, wrap(orviRGBToYCbCr_8u_C3R, 1, 1));
    registerConversion("RGBToYCbCr_8u_AC4R", 4, 4, wrap(orviRGBToYCbCr_8u_AC4R, 1, 1));
    registerConversion("RGBToYCbCr_8u_C3P3R", 3, 3, wrap(orviRGBToYCbCr_8u_C3P3R, 1, 3));
    registerConversion("RGBToYCbCr_8u_AC4P3R", 4, 3, wrap(orviRGBToYCbCr_8u_AC4P3R, 1, 3));
    registerConversion("RGBToYCbCr_8u_P3R", 3, 3, wrap(orviRGBToYCbCr_8u_P3R, 3, 3));
    registerConversion("YCbCrToRGB_8u_C3R", 3, 3, wrap(orviYCbCrToRGB_8u_C3R, 1, 1));
    registerConversion("YCbCrToRGB_8u_P3C3R", 3, 3, wrap(orviYCbCrToRGB_8u_P3C3R, 3, 1));
    registerConversion("YCbCrToBGR_8u_P3C3R", 3, 3, wrap(orviYCbCrToBGR_8u_P3C3R, 3, 1));
    registerConversion("YCbCrToRGB_8u_P3R", 3, 3, wrap(orviYCbCrToRGB_8u_P3R, 3, 3));
    registerConversion("YCbCrToRGB_8u_AC4R", 4, 4, wrap(orviYCbCrToRGB_8u_AC4R, 1, 1));
    registerConversion("YCbCrToRGB_8u_P3C4R", 3, 4, wrapAlpha(orviYCbCrToRGB_8u_P3C4R, 3));
    registerConversion("YCbCrToBGR_8u_P3C4R", 3, 4, wrapAlpha(orviYCbCrToBGR_8u_P3C4R, 3));

#ifdef ORVCC_HAVE_OPENCV
    auto peer = [](const char* name, int code) {
        registerPeer(name, [code](benchmark::State& state) {
            cv::setNumThreads(1);
            Buffer src(size_t(kWidth) * kHeight * 3), dst(size_t(kWidth) * kHeight * 3);
            cv::Mat s(kHeight, kWidth, CV_8UC3, src.data()), d(kHeight, kWidth, CV_8UC3, dst.data());
            for (auto _ : state) {
                cv::cvtColor(s, d, code);
                benchmark::ClobberMemory();
            }
        });
    };
    peer("RGBToYUV_8u_C3R/opencv", cv::COLOR_RGB2YUV);
    peer("YUVToRGB_8u_C3R/opencv", cv::COLOR_YUV2RGB);
    peer("RGBToYCbCr_8u_C3R/opencv", cv::COLOR_RGB2YCrCb);
    peer("YCbCrToRGB_8u_C3R/opencv", cv::COLOR_YCrCb2RGB);
#endif
}

const Registrar registrar(registerYuv);

}  // namespace
