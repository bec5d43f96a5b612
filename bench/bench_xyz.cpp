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

// Float frames hold values in 0..1, as the conversion expects (random bytes
// would be NaN, infinite or subnormal in places).
void registerUnitFloat(const std::string& name, int channels, OrvStatus (*f)(const Orv32f*, int, Orv32f*, int, RoiSize),
                       int threads)
{
    for (bool scalar : {false, true}) {
        benchmark::RegisterBenchmark((name + (scalar ? "/scalar" : "/vector")).c_str(),
                                     [=](benchmark::State& state) {
                                         const int perRow = kWidth * channels;
                                         Buffer src(std::size_t(perRow) * kHeight * 4), dst(std::size_t(perRow) * kHeight * 4);
                                         float* p = src.as<float>();
                                         for (int i = 0; i < perRow * kHeight; ++i)
                                             p[i] = float((uint64_t(i) * 7919) % 1000) / 1000.0f;
                                         orvSetNumThreads(threads);
                                         h9::g_scalarBlocks = scalar;
                                         for (auto _ : state) {
                                             benchmark::DoNotOptimize(
                                                 f(p, perRow * 4, dst.as<float>(), perRow * 4, {kWidth, kHeight}));
                                             benchmark::ClobberMemory();
                                         }
                                         h9::g_scalarBlocks = false;
                                         orvSetNumThreads(0);
                                         reportPixels(state, 1LL * kWidth * kHeight);
                                     })
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    }
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
    for (int threads : {1, 0}) {
        const std::string t = threads == 1 ? "/1thread" : "/allthreads";
        registerConversion("RGBToXYZ_8u_C3R" + t, 3, 3, wrap<Orv8u>(orviRGBToXYZ_8u_C3R), threads);
        registerConversion("RGBToXYZ_8u_AC4R" + t, 4, 4, wrap<Orv8u>(orviRGBToXYZ_8u_AC4R), threads);
        registerConversion("RGBToXYZ_16u_C3R" + t, 6, 6, wrap<Orv16u>(orviRGBToXYZ_16u_C3R), threads);
        registerConversion("RGBToXYZ_16s_AC4R" + t, 8, 8, wrap<Orv16s>(orviRGBToXYZ_16s_AC4R), threads);
        registerUnitFloat("RGBToXYZ_32f_C3R" + t, 3, orviRGBToXYZ_32f_C3R, threads);
        registerUnitFloat("RGBToXYZ_32f_AC4R" + t, 4, orviRGBToXYZ_32f_AC4R, threads);
        registerConversion("XYZToRGB_8u_C3R" + t, 3, 3, wrap<Orv8u>(orviXYZToRGB_8u_C3R), threads);
        registerConversion("XYZToRGB_16u_AC4R" + t, 8, 8, wrap<Orv16u>(orviXYZToRGB_16u_AC4R), threads);
        registerUnitFloat("XYZToRGB_32f_C3R" + t, 3, orviXYZToRGB_32f_C3R, threads);
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
