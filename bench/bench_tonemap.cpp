// Tone mapping at 1920x1080 on the caller's thread; the peer is OpenCV's
// minMaxLoc (or mean) followed by convertTo with the gain.
#include "bench_util.h"

#ifdef ORVCC_HAVE_OPENCV
#include <opencv2/core.hpp>
#endif

namespace {

using namespace orvbench;

// The frame every row maps: a scrambled ramp over 0..14285.
void fillRamp(float* p)
{
    for (int i = 0; i < kWidth * kHeight; ++i)
        p[i] = float((uint64_t(i) * 7919) % 100000) / 7.0f;
}

#ifdef ORVCC_HAVE_OPENCV
// The peer: the largest value (or twice the mean) as the white point, then
// convertTo with the gain.
void cvToneMap(const cv::Mat& s, cv::Mat& d, bool mean)
{
    double lo = 0, hi = 0;
    if (mean)
        hi = 2.0 * cv::mean(s)[0];
    else
        cv::minMaxLoc(s, &lo, &hi);
    s.convertTo(d, CV_8U, 255.0 / hi);
}
#endif

void registerToneMap(const std::string& name, OrvStatus (*f)(const Orv32f*, int, Orv8u*, int, RoiSize))
{
    for (bool scalar : {false, true}) {
        benchmark::RegisterBenchmark((name + (scalar ? "/scalar" : "/vector")).c_str(),
                                     [=](benchmark::State& state) {
                                         Buffer src(std::size_t(kWidth) * kHeight * 4), dst(std::size_t(kWidth) * kHeight);
                                         float* p = src.as<float>();
                                         fillRamp(p);
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

void registerToneMaps()
{
    registerToneMap("ToneMapLinear_32f8u_C1R", orviToneMapLinear_32f8u_C1R);
    registerToneMap("ToneMapMean_32f8u_C1R", orviToneMapMean_32f8u_C1R);
#ifdef ORVCC_HAVE_OPENCV
    for (bool mean : {false, true}) {
        registerPeer(std::string(mean ? "ToneMapMean_32f8u_C1R" : "ToneMapLinear_32f8u_C1R") + "/opencv",
                     [mean](benchmark::State& state) {
                         cv::setNumThreads(1);
                         Buffer src(std::size_t(kWidth) * kHeight * 4), dst(std::size_t(kWidth) * kHeight);
                         cv::Mat s(kHeight, kWidth, CV_32FC1, src.data()), d(kHeight, kWidth, CV_8UC1, dst.data());
                         fillRamp(src.as<float>());
                         for (auto _ : state) {
                             cvToneMap(s, d, mean);
                             benchmark::ClobberMemory();
                         }
                         cv::setNumThreads(-1);
                     });
    }
#endif
    // The mean map in turns with its peer.
    registerTurns("ToneMapMean_32f8u_C1R/turns", 4, 1, Fill::Bytes, [](uint8_t* src, uint8_t* dst) {
        float* p = reinterpret_cast<float*>(src);
        fillRamp(p);
        std::vector<Contender> contenders = {
            {"ours", [=] { orviToneMapMean_32f8u_C1R(p, kWidth * 4, dst, kWidth, {kWidth, kHeight}); }}};
#ifdef ORVCC_HAVE_OPENCV
        const cv::Mat s(kHeight, kWidth, CV_32FC1, p);
        cv::Mat d(kHeight, kWidth, CV_8UC1, dst);
        contenders.push_back({"opencv", [=]() mutable { cvToneMap(s, d, true); }});
#endif
        return contenders;
    });
}

const Registrar registrar(registerToneMaps);

}  // namespace
