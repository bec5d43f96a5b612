// RGB and XYZ throughput at 1920x1080, one thread and all threads, against
// OpenCV's cvtColor where it has the same conversion.
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

#ifdef ORVCC_HAVE_OPENCV
void registerOpenCv(const std::string& name, int type, int code, int threads)
{
    registerPeer(name, [=](benchmark::State& state) {
        cv::setNumThreads(threads);
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

void registerXyz()
{
    for (int threads : {1, 0}) {  // 0: the default, all processors
        const std::string t = threads == 1 ? "/1thread" : "/allthreads";
        registerConversion("RGBToXYZ_8u_C3R" + t, 3, 3, wrap<Orv8u>(orviRGBToXYZ_8u_C3R), threads);
        registerConversion("RGBToXYZ_8u_AC4R" + t, 4, 4, wrap<Orv8u>(orviRGBToXYZ_8u_AC4R), threads);
        registerConversion("RGBToXYZ_16u_C3R" + t, 6, 6, wrap<Orv16u>(orviRGBToXYZ_16u_C3R), threads);
        registerConversion("RGBToXYZ_16s_AC4R" + t, 8, 8, wrap<Orv16s>(orviRGBToXYZ_16s_AC4R), threads);
        registerConversion("RGBToXYZ_32f_C3R" + t, 12, 12, wrap<Orv32f>(orviRGBToXYZ_32f_C3R), threads, Fill::Float01);
        registerConversion("RGBToXYZ_32f_AC4R" + t, 16, 16, wrap<Orv32f>(orviRGBToXYZ_32f_AC4R), threads, Fill::Float01);
        registerConversion("XYZToRGB_8u_C3R" + t, 3, 3, wrap<Orv8u>(orviXYZToRGB_8u_C3R), threads);
        registerConversion("XYZToRGB_16u_AC4R" + t, 8, 8, wrap<Orv16u>(orviXYZToRGB_16u_AC4R), threads);
        registerConversion("XYZToRGB_32f_C3R" + t, 12, 12, wrap<Orv32f>(orviXYZToRGB_32f_C3R), threads, Fill::Float01);
        if (threads == 1) {
            registerMemcpy("XYZ_32f_C3R/memcpy", 12);
            registerMemcpy("XYZ_32f_AC4R/memcpy", 16);
        }
#ifdef ORVCC_HAVE_OPENCV
        const int cvThreads = threads == 1 ? 1 : -1;
        registerOpenCv("RGBToXYZ_8u_C3R" + t + "/opencv", CV_8UC3, cv::COLOR_RGB2XYZ, cvThreads);
        registerOpenCv("RGBToXYZ_32f_C3R" + t + "/opencv", CV_32FC3, cv::COLOR_RGB2XYZ, cvThreads);
        registerOpenCv("XYZToRGB_8u_C3R" + t + "/opencv", CV_8UC3, cv::COLOR_XYZ2RGB, cvThreads);
        registerOpenCv("XYZToRGB_32f_C3R" + t + "/opencv", CV_32FC3, cv::COLOR_XYZ2RGB, cvThreads);
#endif
    }
}

const Registrar registrar(registerXyz);

}  // namespace
