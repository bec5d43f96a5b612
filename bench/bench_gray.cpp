// Gray family throughput, one thread, 1920x1080.
#include "bench_util.h"

#ifdef ORVCC_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif
#ifdef ORVCC_HAVE_LIBYUV
#include <libyuv.h>
#endif

namespace {

using namespace orvbench;

template <class S, class D, class F>
Call wrap(F f)
{
    return [f](uint8_t* s, int ss, uint8_t* d, int ds, RoiSize r) {
        return f(reinterpret_cast<const S*>(s), ss, reinterpret_cast<D*>(d), ds, r);
    };
}

template <class S, class D, class F, class... A>
Call wrapWith(F f, A... a)
{
    return [f, a...](uint8_t* s, int ss, uint8_t* d, int ds, RoiSize r) {
        return f(reinterpret_cast<const S*>(s), ss, reinterpret_cast<D*>(d), ds, r, a...);
    };
}

const float kCoeffs[3] = {0.2126f, 0.7152f, 0.0722f};
const double kCoeffs64[3] = {0.2126, 0.7152, 0.0722};

void registerGray()
{
    registerConversion("RGBToGray_8u_C3C1R", 3, 1, wrap<Orv8u, Orv8u>(orviRGBToGray_8u_C3C1R));
    registerConversion("RGBToGray_8u_AC4C1R", 4, 1, wrap<Orv8u, Orv8u>(orviRGBToGray_8u_AC4C1R));
    registerConversion("RGBToGray_16u_C3C1R", 6, 2, wrap<Orv16u, Orv16u>(orviRGBToGray_16u_C3C1R));
    registerConversion("RGBToGray_16u_AC4C1R", 8, 2, wrap<Orv16u, Orv16u>(orviRGBToGray_16u_AC4C1R));
    registerConversion("RGBToGray_16s_C3C1R", 6, 2, wrap<Orv16s, Orv16s>(orviRGBToGray_16s_C3C1R));
    registerConversion("RGBToGray_16s_AC4C1R", 8, 2, wrap<Orv16s, Orv16s>(orviRGBToGray_16s_AC4C1R));
    registerConversion("RGBToGray_32f_C3C1R", 12, 4, wrap<Orv32f, Orv32f>(orviRGBToGray_32f_C3C1R), 1, Fill::Float01);
    registerConversion("RGBToGray_32f_AC4C1R", 16, 4, wrap<Orv32f, Orv32f>(orviRGBToGray_32f_AC4C1R), 1, Fill::Float01);
    registerConversion("ColorToGray_8u_C3C1R", 3, 1, wrapWith<Orv8u, Orv8u>(orviColorToGray_8u_C3C1R, kCoeffs));
    registerConversion("ColorToGray_8u_AC4C1R", 4, 1, wrapWith<Orv8u, Orv8u>(orviColorToGray_8u_AC4C1R, kCoeffs));
    registerConversion("ColorToGray_16u_C3C1R", 6, 2, wrapWith<Orv16u, Orv16u>(orviColorToGray_16u_C3C1R, kCoeffs));
    registerConversion("ColorToGray_16u_AC4C1R", 8, 2, wrapWith<Orv16u, Orv16u>(orviColorToGray_16u_AC4C1R, kCoeffs));
    registerConversion("ColorToGray_16s_C3C1R", 6, 2, wrapWith<Orv16s, Orv16s>(orviColorToGray_16s_C3C1R, kCoeffs));
    registerConversion("ColorToGray_16s_AC4C1R", 8, 2, wrapWith<Orv16s, Orv16s>(orviColorToGray_16s_AC4C1R, kCoeffs));
    registerConversion("ColorToGray_32f_C3C1R", 12, 4, wrapWith<Orv32f, Orv32f>(orviColorToGray_32f_C3C1R, kCoeffs), 1, Fill::Float01);
    registerConversion("ColorToGray_32f_AC4C1R", 16, 4, wrapWith<Orv32f, Orv32f>(orviColorToGray_32f_AC4C1R, kCoeffs), 1, Fill::Float01);
    registerConversion("ColorToGray_64f_C3C1R", 24, 8, wrapWith<Orv64f, Orv64f>(orviColorToGray_64f_C3C1R, kCoeffs64), 1, Fill::Double01);
    registerConversion("ColorToGray_64f_AC4C1R", 32, 8, wrapWith<Orv64f, Orv64f>(orviColorToGray_64f_AC4C1R, kCoeffs64), 1, Fill::Double01);
    registerConversion("GrayToRGB_8u_C1C3R", 1, 3, wrap<Orv8u, Orv8u>(orviGrayToRGB_8u_C1C3R));
    registerConversion("GrayToRGB_16u_C1C3R", 2, 6, wrap<Orv16u, Orv16u>(orviGrayToRGB_16u_C1C3R));
    registerConversion("GrayToRGB_32f_C1C3R", 4, 12, wrap<Orv32f, Orv32f>(orviGrayToRGB_32f_C1C3R), 1, Fill::Float01);
    registerConversion("GrayToRGB_8u_C1C4R", 1, 4, wrapWith<Orv8u, Orv8u>(orviGrayToRGB_8u_C1C4R, Orv8u(255)));
    registerConversion("GrayToRGB_16u_C1C4R", 2, 8, wrapWith<Orv16u, Orv16u>(orviGrayToRGB_16u_C1C4R, Orv16u(65535)));
    registerConversion("GrayToRGB_32f_C1C4R", 4, 16, wrapWith<Orv32f, Orv32f>(orviGrayToRGB_32f_C1C4R, 1.0f), 1, Fill::Float01);
    registerConversion("YCbCr422ToGray_8u_C2C1R", 2, 1, wrap<Orv8u, Orv8u>(orviYCbCr422ToGray_8u_C2C1R));

#ifdef ORVCC_HAVE_OPENCV
    registerPeer("RGBToGray_8u_C3C1R/opencv", [](benchmark::State& state) {
        cv::setNumThreads(1);
        Buffer src(size_t(kWidth) * kHeight * 3), dst(size_t(kWidth) * kHeight);
        cv::Mat s(kHeight, kWidth, CV_8UC3, src.data()), d(kHeight, kWidth, CV_8UC1, dst.data());
        for (auto _ : state) {
            cv::cvtColor(s, d, cv::COLOR_RGB2GRAY);
            benchmark::ClobberMemory();
        }
    });
    registerPeer("RGBToGray_32f_C3C1R/opencv", [](benchmark::State& state) {
        cv::setNumThreads(1);
        Buffer src(size_t(kWidth) * kHeight * 12), dst(size_t(kWidth) * kHeight * 4);
        cv::Mat s(kHeight, kWidth, CV_32FC3, src.data()), d(kHeight, kWidth, CV_32FC1, dst.data());
        s.setTo(cv::Scalar(0.5, 0.25, 0.75));
        for (auto _ : state) {
            cv::cvtColor(s, d, cv::COLOR_RGB2GRAY);
            benchmark::ClobberMemory();
        }
    });
    registerPeer("RGBToGray_8u_AC4C1R/opencv", [](benchmark::State& state) {
        cv::setNumThreads(1);
        Buffer src(size_t(kWidth) * kHeight * 4), dst(size_t(kWidth) * kHeight);
        cv::Mat s(kHeight, kWidth, CV_8UC4, src.data()), d(kHeight, kWidth, CV_8UC1, dst.data());
        for (auto _ : state) {
            cv::cvtColor(s, d, cv::COLOR_RGBA2GRAY);
            benchmark::ClobberMemory();
        }
    });
#endif
#ifdef ORVCC_HAVE_OPENCV
    // Float gray in turns with OpenCV and the memcpy of its bytes.
    registerTurnsWithCvtColor("RGBToGray_32f_C3C1R/turns", wrap<Orv32f, Orv32f>(orviRGBToGray_32f_C3C1R), 12, 4,
                              CV_32FC3, CV_32FC1, cv::COLOR_RGB2GRAY);
#endif
#ifdef ORVCC_HAVE_LIBYUV
    // RAW is R, G, B bytes in memory; J400 is full-range luma.
    registerPeer("RGBToGray_8u_C3C1R/libyuv", [](benchmark::State& state) {
        Buffer src(size_t(kWidth) * kHeight * 3), dst(size_t(kWidth) * kHeight);
        for (auto _ : state) {
            libyuv::RAWToJ400(src.data(), kWidth * 3, dst.data(), kWidth, kWidth, kHeight);
            benchmark::ClobberMemory();
        }
    });
#endif
}

const Registrar registrar(registerGray);

}  // namespace
