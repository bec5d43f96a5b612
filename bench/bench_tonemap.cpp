// Tone mapping and the internal copy at 1920x1080. Tone mapping runs on the
// caller's thread only; the peer is OpenCV's minMaxLoc (or mean) followed
// by convertTo with the gain. The copy is measured against memcpy.
#include <cstring>

#include "bench_util.h"
#include "frame/primitives/primitives.h"

#ifdef ORVCC_HAVE_OPENCV
#include <opencv2/core.hpp>
#endif

namespace {

using namespace orvbench;

void registerToneMap(const std::string& name, OrvStatus (*f)(const Orv32f*, int, Orv8u*, int, RoiSize))
{
    for (bool scalar : {false, true}) {
        benchmark::RegisterBenchmark((name + (scalar ? "/scalar" : "/vector")).c_str(),
                                     [=](benchmark::State& state) {
                                         Buffer src(std::size_t(kWidth) * kHeight * 4), dst(std::size_t(kWidth) * kHeight);
                                         float* p = src.as<float>();
                                         for (int i = 0; i < kWidth * kHeight; ++i)
                                             p[i] = float((uint64_t(i) * 7919) % 100000) / 7.0f;
                                         h9::g_scalarBlocks = scalar;
                                         for (auto _ : state) {
                                             benchmark::DoNotOptimize(f(p, kWidth * 4, dst.data(), kWidth, {kWidth, kHeight}));
                                             benchmark::ClobberMemory();
                                         }
                                         h9::g_scalarBlocks = false;
                                         reportPixels(state, 1LL * kWidth * kHeight);
                                     })
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    }
}

// Bytes per second of a copy of `bytes`, reported as MB/s.
void registerCopy(const std::string& name, std::size_t bytes, void (*copy)(const uint8_t*, uint8_t*, std::size_t))
{
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        Buffer src(bytes), dst(bytes);
        // Which block path the dispatcher takes for these two buffers.
        static const char* const kPath[] = {"stream", "rep", "backward"};
        state.SetLabel(kPath[int(h9::chooseBlockCopy(src.data(), dst.data(), bytes))]);
        for (auto _ : state) {
            copy(src.data(), dst.data(), bytes);
            benchmark::ClobberMemory();
        }
        state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes));
    })->UseRealTime();
}

void registerAll()
{
    registerToneMap("ToneMapLinear_32f8u_C1R", orviToneMapLinear_32f8u_C1R);
    registerToneMap("ToneMapMean_32f8u_C1R", orviToneMapMean_32f8u_C1R);
#ifdef ORVCC_HAVE_OPENCV
    for (bool mean : {false, true}) {
        registerPeer(std::string(mean ? "ToneMapMean_32f8u_C1R" : "ToneMapLinear_32f8u_C1R") + "/opencv",
                     [mean](benchmark::State& state) {
                         cv::setNumThreads(1);
                         cv::Mat s(kHeight, kWidth, CV_32FC1), d(kHeight, kWidth, CV_8UC1);
                         cv::randu(s, 0.0, 10000.0);
                         for (auto _ : state) {
                             double lo = 0, hi = 0;
                             if (mean)
                                 hi = 2.0 * cv::mean(s)[0];
                             else
                                 cv::minMaxLoc(s, &lo, &hi);
                             s.convertTo(d, CV_8U, 255.0 / hi);
                             benchmark::ClobberMemory();
                         }
                         cv::setNumThreads(-1);
                     });
    }
#endif
    for (std::size_t mb : {1, 8, 64}) {
        const std::string size = "/" + std::to_string(mb) + "MiB";
        registerCopy("Copy_8u_block" + size, mb << 20, [](const uint8_t* s, uint8_t* d, std::size_t n) {
            h9::orvsCopy_8u(s, d, int(n));
        });
        registerCopy("Copy_8u_C1R_padded" + size, mb << 20, [](const uint8_t* s, uint8_t* d, std::size_t n) {
            // Rows of 4064 bytes in a step of 4096.
            h9::orviCopy_8u_C1R(s, 4096, d, 4096, {4064, int(n / 4096)});
        });
        // The block paths by themselves.
        registerCopy("Copy_8u_path_rep" + size, mb << 20, h9::ownsCopy_8u_repG9);
        registerCopy("Copy_8u_path_backward" + size, mb << 20, h9::blockCopyBackward);
        registerCopy("Copy_8u_path_streamed" + size, mb << 20, h9::blockCopyStreamed);
        registerCopy("Copy_8u_path_G9" + size, mb << 20, h9::ownsCopy_8u_G9);
        registerCopy("Copy_8u_block" + size + "/memcpy", mb << 20,
                     [](const uint8_t* s, uint8_t* d, std::size_t n) { std::memcpy(d, s, n); });
    }
}

const Registrar registrar(registerAll);

}  // namespace
