// HLS and HSV throughput at 1920x1080 on one thread, against OpenCV's
// cvtColor with the same conversion (the _FULL codes keep 8-bit hue on
// 0..255 as this library does).
#include "bench_util.h"

#ifdef ORVCC_HAVE_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

using namespace orvbench;

template <class T>
Call wrap(OrvStatus (*f)(const T*, int, T*, int, RoiSize))
{
    return [f](uint8_t* s, int ss, uint8_t* d, int ds, RoiSize r) {
        return f(reinterpret_cast<const T*>(s), ss, reinterpret_cast<T*>(d), ds, r);
    };
}

// A planar side: plane k of the frame buffer starts at k frame areas, step
// one row of bytes.
struct PlanarSide {
    uint8_t* p[4];
    PlanarSide(uint8_t* base)
    {
        for (int k = 0; k < 4; ++k)
            p[k] = base + std::size_t(k) * kWidth * kHeight;
    }
};

template <class S, class D>
Call planar(OrvStatus (*f)(S, int, D, int, RoiSize), bool srcPlanar, bool dstPlanar)
{
    return [=](uint8_t* s, int ss, uint8_t* d, int ds, RoiSize r) {
        PlanarSide sp(s), dp(d);
        S src;
        D dst;
        if constexpr (std::is_pointer_v<std::remove_pointer_t<S>>)
            src = sp.p;
        else
            src = s;
        if constexpr (std::is_pointer_v<std::remove_pointer_t<D>>)
            dst = dp.p;
        else
            dst = d;
        return f(src, srcPlanar ? kWidth : ss, dst, dstPlanar ? kWidth : ds, r);
    };
}

#ifdef ORVCC_HAVE_OPENCV
void registerOpenCv(const std::string& name, int type, int code)
{
    registerPeer(name, [=](benchmark::State& state) {
        cv::setNumThreads(1);
        cv::Mat s(kHeight, kWidth, type), d(kHeight, kWidth, type);
        cv::randu(s, 0, CV_MAT_DEPTH(type) == CV_32F ? 1.0 : 255.0);
        for (auto _ : state) {
            cv::cvtColor(s, d, code);
            benchmark::ClobberMemory();
        }
        cv::setNumThreads(-1);
    });
}
#endif

void registerHue()
{
    const std::string t = "/1thread";
    registerConversion("RGBToHSV_8u_C3R" + t, 3, 3, wrap<Orv8u>(orviRGBToHSV_8u_C3R));
    registerConversion("HSVToRGB_8u_C3R" + t, 3, 3, wrap<Orv8u>(orviHSVToRGB_8u_C3R));
    registerConversion("RGBToHSV_8u_AC4R" + t, 4, 4, wrap<Orv8u>(orviRGBToHSV_8u_AC4R));
    registerConversion("HSVToRGB_16u_C3R" + t, 6, 6, wrap<Orv16u>(orviHSVToRGB_16u_C3R));
    registerConversion("RGBToHLS_8u_C3R" + t, 3, 3, wrap<Orv8u>(orviRGBToHLS_8u_C3R));
    registerConversion("HLSToRGB_8u_C3R" + t, 3, 3, wrap<Orv8u>(orviHLSToRGB_8u_C3R));
    registerConversion("RGBToHLS_8u_AC4R" + t, 4, 4, wrap<Orv8u>(orviRGBToHLS_8u_AC4R));
    registerConversion("RGBToHLS_16u_C3R" + t, 6, 6, wrap<Orv16u>(orviRGBToHLS_16u_C3R));
    registerConversion("HLSToRGB_16s_AC4R" + t, 8, 8, wrap<Orv16s>(orviHLSToRGB_16s_AC4R));
    registerConversion("RGBToHLS_32f_C3R" + t, 12, 12, wrap<Orv32f>(orviRGBToHLS_32f_C3R), 1, Fill::Float01);
    registerConversion("HLSToRGB_32f_C3R" + t, 12, 12, wrap<Orv32f>(orviHLSToRGB_32f_C3R), 1, Fill::Float01);
    registerConversion("BGRToHLS_8u_P3R" + t, 3, 3, planar(orviBGRToHLS_8u_P3R, true, true));
    registerConversion("BGRToHLS_8u_C3P3R" + t, 3, 3, planar(orviBGRToHLS_8u_C3P3R, false, true));
    registerConversion("BGRToHLS_8u_AP4C4R" + t, 4, 4, planar(orviBGRToHLS_8u_AP4C4R, true, false));
    registerConversion("HLSToBGR_8u_P3R" + t, 3, 3, planar(orviHLSToBGR_8u_P3R, true, true));
    registerConversion("HLSToBGR_8u_P3C3R" + t, 3, 3, planar(orviHLSToBGR_8u_P3C3R, true, false));
    registerConversion("HLSToBGR_8u_AC4P4R" + t, 4, 4, planar(orviHLSToBGR_8u_AC4P4R, false, true));
#ifdef ORVCC_HAVE_OPENCV
    registerOpenCv("RGBToHSV_8u_C3R" + t + "/opencv", CV_8UC3, cv::COLOR_RGB2HSV_FULL);
    registerOpenCv("HSVToRGB_8u_C3R" + t + "/opencv", CV_8UC3, cv::COLOR_HSV2RGB_FULL);
    registerOpenCv("RGBToHLS_8u_C3R" + t + "/opencv", CV_8UC3, cv::COLOR_RGB2HLS_FULL);
    registerOpenCv("HLSToRGB_8u_C3R" + t + "/opencv", CV_8UC3, cv::COLOR_HLS2RGB_FULL);
    registerOpenCv("RGBToHLS_32f_C3R" + t + "/opencv", CV_32FC3, cv::COLOR_RGB2HLS);
    registerOpenCv("HLSToRGB_32f_C3R" + t + "/opencv", CV_32FC3, cv::COLOR_HLS2RGB);
    // The planar members against OpenCV's interleaved BGR code.
    registerOpenCv("BGRToHLS_8u_P3R" + t + "/opencv", CV_8UC3, cv::COLOR_BGR2HLS_FULL);
    registerOpenCv("HLSToBGR_8u_P3R" + t + "/opencv", CV_8UC3, cv::COLOR_HLS2BGR_FULL);
#endif
}

const Registrar registrar(registerHue);

}  // namespace
