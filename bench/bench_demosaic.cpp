// Bayer demosaicing throughput at 1920x1080 and 4096x3072, one thread and
// all threads, against OpenCV's bilinear and edge-aware Bayer conversions.
#include "bench_util.h"

#ifdef ORVCC_HAVE_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

using namespace orvbench;

struct Frame {
    int width;
    int height;
    std::string name() const { return std::to_string(width) + "x" + std::to_string(height); }
};
constexpr Frame kFrames[] = {{1920, 1080}, {4096, 3072}};

void registerBilinear(const std::string& name, Frame f, int elemBytes, int threads)
{
    for (bool scalar : {false, true}) {
        benchmark::RegisterBenchmark(
            (name + (scalar ? "/scalar" : "/vector")).c_str(),
            [=](benchmark::State& state) {
                Buffer src(std::size_t(f.width) * f.height * elemBytes, 1);
                Buffer dst(std::size_t(f.width) * f.height * elemBytes * 3, 2);
                orvSetNumThreads(threads);
                h9::g_scalarBlocks = scalar;
                const OrvRect roi{0, 0, f.width, f.height};
                for (auto _ : state) {
                    if (elemBytes == 1)
                        benchmark::DoNotOptimize(orviCFAToRGB_8u_C1C3R(src.as<Orv8u>(), roi, {f.width, f.height},
                                                                       f.width, dst.as<Orv8u>(), 3 * f.width, 0));
                    else
                        benchmark::DoNotOptimize(orviCFAToRGB_16u_C1C3R(src.as<Orv16u>(), roi, {f.width, f.height},
                                                                        2 * f.width, dst.as<Orv16u>(), 6 * f.width, 0));
                    benchmark::ClobberMemory();
                }
                h9::g_scalarBlocks = false;
                orvSetNumThreads(0);
                reportPixels(state, 1LL * f.width * f.height);
            })
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    }
}

#ifdef ORVCC_HAVE_OPENCV
void registerOpenCv(const std::string& name, Frame f, int depth, int code, int threads)
{
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        cv::setNumThreads(threads);
        cv::Mat s(f.height, f.width, CV_MAKETYPE(depth, 1)), d;
        cv::randu(s, 0, depth == CV_8U ? 255.0 : 65535.0);
        for (auto _ : state) {
            cv::cvtColor(s, d, code);
            benchmark::ClobberMemory();
        }
        cv::setNumThreads(-1);
        reportPixels(state, 1LL * f.width * f.height);
    })->Unit(benchmark::kMillisecond)->UseRealTime();
}
#endif

void registerBayer()
{
    for (const Frame& f : kFrames) {
        for (int threads : {1, 0}) {  // 0: the default, all processors
            const std::string t = "/" + f.name() + (threads == 1 ? "/1thread" : "/allthreads");
            registerBilinear("CFAToRGB_8u_C1C3R" + t, f, 1, threads);
            registerBilinear("CFAToRGB_16u_C1C3R" + t, f, 2, threads);
#ifdef ORVCC_HAVE_OPENCV
            const int cvThreads = threads == 1 ? 1 : -1;
            registerOpenCv("CFAToRGB_8u_C1C3R" + t + "/opencv", f, CV_8U, cv::COLOR_BayerBG2RGB, cvThreads);
            registerOpenCv("CFAToRGB_8u_C1C3R" + t + "/opencv_EA", f, CV_8U, cv::COLOR_BayerBG2RGB_EA, cvThreads);
            registerOpenCv("CFAToRGB_16u_C1C3R" + t + "/opencv", f, CV_16U, cv::COLOR_BayerBG2RGB, cvThreads);
            registerOpenCv("CFAToRGB_16u_C1C3R" + t + "/opencv_EA", f, CV_16U, cv::COLOR_BayerBG2RGB_EA, cvThreads);
#endif
        }
    }
}

const Registrar kRegistrar(registerBayer);

}  // namespace
