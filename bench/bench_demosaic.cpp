// Bayer demosaicing throughput at 1920x1080 and 4096x3072: bilinear on one
// thread and all threads against OpenCV's bilinear and edge-aware
// conversions; VNG against OpenCV's VNG; AHD against LibRaw's AHD, timed
// around its interpolation step alone (the raw-to-image copy, colour scaling
// and pre-interpolation it needs run with the clock paused).
#include <omp.h>

#include <cstring>
#include <memory>

#include "bench_util.h"

#ifdef ORVCC_HAVE_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif
#ifdef ORVCC_HAVE_LIBRAW
#include <libraw/libraw.h>
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

// The memory bound of the bilinear conversion: a copy of a buffer of the
// destination's size into the destination, cut into the same number of
// bands, reported in pixels of the frame. It moves at least the bytes the
// conversion moves (it reads three times as much), so its scaling from one
// to all threads bounds the conversion's where both are limited by memory.
void registerMemcpy(const std::string& name, Frame f, int elemBytes, int threads)
{
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        const std::size_t row = std::size_t(f.width) * elemBytes * 3;
        Buffer src(row * f.height, 1);
        Buffer dst(row * f.height, 2);
        const int n = threads == 1 ? 1 : omp_get_num_procs();
        for (auto _ : state) {
#pragma omp parallel num_threads(n)
            {
                const int k = omp_get_num_threads(), t = omp_get_thread_num();
                const int first = t * (f.height / k), rows = t == k - 1 ? f.height - first : f.height / k;
                std::memcpy(dst.data() + first * row, src.data() + first * row, rows * row);
            }
            benchmark::ClobberMemory();
        }
        reportPixels(state, 1LL * f.width * f.height);
    })->Unit(benchmark::kMillisecond)->UseRealTime();
}

// VNG and AHD, one thread (neither opens a parallel region).
void registerQuality(const std::string& name, Frame f, int elemBytes, bool ahd)
{
    for (bool scalar : {false, true}) {
        benchmark::RegisterBenchmark(
            (name + (scalar ? "/scalar" : "/vector")).c_str(),
            [=](benchmark::State& state) {
                const int ch = ahd ? 3 : 4;
                Buffer src(std::size_t(f.width) * f.height * elemBytes, 1);
                Buffer dst(std::size_t(f.width) * f.height * elemBytes * ch, 2);
                const int tmpStep = (f.width + 8) * elemBytes;
                Buffer tmp(std::size_t(tmpStep) * 30, 3);
                h9::g_scalarBlocks = scalar;
                const OrvRect roi{0, 0, f.width, f.height};
                const RoiSize size{f.width, f.height};
                const int ss = f.width * elemBytes, ds = f.width * elemBytes * ch;
                for (auto _ : state) {
                    if (ahd && elemBytes == 1)
                        benchmark::DoNotOptimize(orviDemosaicAHD_8u_C1C3R(src.as<Orv8u>(), roi, size, ss, dst.as<Orv8u>(),
                                                                          ds, 0, tmp.data(), tmpStep));
                    else if (ahd)
                        benchmark::DoNotOptimize(orviDemosaicAHD_16u_C1C3R(src.as<Orv16u>(), roi, size, ss,
                                                                           dst.as<Orv16u>(), ds, 0, tmp.data(), tmpStep));
                    else if (elemBytes == 1)
                        benchmark::DoNotOptimize(orviCFAToBGRA_VNG_8u_C1C4R_L(src.as<Orv8u>(), roi, size, ss, nullptr,
                                                                              dst.as<Orv8u>(), ds, 0));
                    else
                        benchmark::DoNotOptimize(orviCFAToBGRA_VNG_16u_C1C4R_L(src.as<Orv16u>(), roi, size, ss, nullptr,
                                                                               dst.as<Orv16u>(), ds, 0));
                    benchmark::ClobberMemory();
                }
                h9::g_scalarBlocks = false;
                reportPixels(state, 1LL * f.width * f.height);
            })
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    }
}

#ifdef ORVCC_HAVE_LIBRAW
// LibRaw's steps before and at the interpolation are protected members.
class LibRawSteps : public LibRaw {
public:
    void prepare()
    {
        raw2image_ex(0);
        scale_colors();
        pre_interpolate();
    }
    void ahd() { ahd_interpolate(); }
};

void registerLibRaw(const std::string& name, Frame f, int bits)
{
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        std::vector<uint16_t> mosaic(std::size_t(f.width) * f.height);
        std::mt19937 rng(1);
        for (auto& v : mosaic)
            v = uint16_t(rng() >> (32 - bits));
        auto raw = std::make_unique<LibRawSteps>();
        raw->imgdata.params.user_qual = 3;
        raw->open_bayer(reinterpret_cast<unsigned char*>(mosaic.data()), unsigned(mosaic.size() * 2),
                        uint16_t(f.width), uint16_t(f.height), 0, 0, 0, 0, 0, LIBRAW_OPENBAYER_BGGR, 16 - bits, 0, 0);
        raw->unpack();
        const int threads = omp_get_max_threads();
        omp_set_num_threads(1);
        for (auto _ : state) {
            state.PauseTiming();
            raw->prepare();
            state.ResumeTiming();
            raw->ahd();
            benchmark::ClobberMemory();
        }
        omp_set_num_threads(threads);
        reportPixels(state, 1LL * f.width * f.height);
    })->Unit(benchmark::kMillisecond)->UseRealTime();
}
#endif

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
            registerMemcpy("CFAToRGB_8u_C1C3R" + t + "/memcpy", f, 1, threads);
#ifdef ORVCC_HAVE_OPENCV
            const int cvThreads = threads == 1 ? 1 : -1;
            registerOpenCv("CFAToRGB_8u_C1C3R" + t + "/opencv", f, CV_8U, cv::COLOR_BayerBG2RGB, cvThreads);
            registerOpenCv("CFAToRGB_8u_C1C3R" + t + "/opencv_EA", f, CV_8U, cv::COLOR_BayerBG2RGB_EA, cvThreads);
            registerOpenCv("CFAToRGB_16u_C1C3R" + t + "/opencv", f, CV_16U, cv::COLOR_BayerBG2RGB, cvThreads);
            registerOpenCv("CFAToRGB_16u_C1C3R" + t + "/opencv_EA", f, CV_16U, cv::COLOR_BayerBG2RGB_EA, cvThreads);
#endif
        }
        const std::string t = "/" + f.name() + "/1thread";
        registerQuality("CFAToBGRA_VNG_8u_C1C4R_L" + t, f, 1, false);
        registerQuality("CFAToBGRA_VNG_16u_C1C4R_L" + t, f, 2, false);
#ifdef ORVCC_HAVE_OPENCV
        registerOpenCv("CFAToBGRA_VNG_8u_C1C4R_L" + t + "/opencv", f, CV_8U, cv::COLOR_BayerBG2BGR_VNG, 1);
#endif
        registerQuality("DemosaicAHD_8u_C1C3R" + t, f, 1, true);
        registerQuality("DemosaicAHD_16u_C1C3R" + t, f, 2, true);
#ifdef ORVCC_HAVE_LIBRAW
        registerLibRaw("DemosaicAHD_8u_C1C3R" + t + "/libraw", f, 8);
        registerLibRaw("DemosaicAHD_16u_C1C3R" + t + "/libraw", f, 16);
#endif
    }
}

const Registrar kRegistrar(registerBayer);

}  // namespace
