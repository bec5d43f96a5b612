// Gamma correction and the power function, one thread, 1920x1080.
#include <cmath>
#include <random>
#include <vector>

#include "bench_util.h"
#include "frame/primitives/primitives.h"
#include "vecmath/powx.h"

#ifdef ORVCC_HAVE_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

using namespace orvbench;

template <class T, class F>
Call wrap(F f)
{
    return [f](uint8_t* s, int ss, uint8_t* d, int ds, RoiSize r) {
        return f(reinterpret_cast<const T*>(s), ss, reinterpret_cast<T*>(d), ds, r);
    };
}

constexpr long long kValues = 3LL * kWidth * kHeight;

std::vector<float> unitValues(std::size_t n)
{
    std::mt19937 rng(3);
    std::vector<float> v(n);
    for (float& x : v)
        x = std::uniform_real_distribution<float>(0.0f, 1.0f)(rng);
    return v;
}

void reportValues(benchmark::State& state, long long valuesPerIteration)
{
    state.counters["Mvalues/s"] = benchmark::Counter(double(valuesPerIteration) * double(state.iterations()) / 1e6,
                                                     benchmark::Counter::kIsRate);
}

// A 32f member with `ch` values a pixel (3 or 4) on a frame of values in
// 0..1: vector and scalar forms.
template <class F>
void registerFloat(const std::string& name, F f, int ch = 3)
{
    for (bool scalar : {false, true}) {
        benchmark::RegisterBenchmark((name + (scalar ? "/scalar" : "/vector")).c_str(),
                                     [=](benchmark::State& state) {
                                         const std::vector<float> src = unitValues(std::size_t(ch) * kWidth * kHeight);
                                         std::vector<float> dst(src.size());
                                         h9::g_scalarBlocks = scalar;
                                         for (auto _ : state) {
                                             benchmark::DoNotOptimize(f(src.data(), kWidth * 4 * ch, dst.data(), kWidth * 4 * ch,
                                                                        RoiSize{kWidth, kHeight}, 0.0f, 1.0f));
                                             benchmark::ClobberMemory();
                                         }
                                         h9::g_scalarBlocks = false;
                                         reportPixels(state, 1LL * kWidth * kHeight);
                                         reportValues(state, kValues);
                                     })
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    }
}

// The power function alone over one frame's worth of values, against a loop
// of the C library's powf.
void registerPowx()
{
    for (int form = 0; form < 3; ++form) {
        static const char* const names[] = {"Powx_32f_A21/vector", "Powx_32f_A21/scalar", "Powx_32f_A21/libm_powf"};
        benchmark::RegisterBenchmark(names[form], [form](benchmark::State& state) {
            const std::vector<float> src = unitValues(kValues);
            std::vector<float> dst(kValues);
            h9::g_scalarBlocks = form == 1;
            for (auto _ : state) {
                if (form < 2) {
                    benchmark::DoNotOptimize(h9::orvsPowx_32f_A21(src.data(), 0.45f, dst.data(), int(kValues)));
                } else {
                    for (long long i = 0; i < kValues; ++i)
                        dst[i] = powf(src[i], 0.45f);
                }
                benchmark::ClobberMemory();
            }
            h9::g_scalarBlocks = false;
            reportValues(state, kValues);
        })->Unit(benchmark::kMillisecond)->UseRealTime();
    }
}

// The passes of the 32f rows that subtract vMin before the curve and add it
// back after, over one frame of C3 values, beside a memcpy of the same bytes.
void registerRangePasses()
{
    for (bool add : {false, true}) {
        for (bool scalar : {false, true}) {
            const std::string name = std::string(add ? "GammaPass_AddC_32f" : "GammaPass_SubC_32f") + (scalar ? "/scalar" : "/vector");
            benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
                const std::vector<float> src = unitValues(std::size_t(kValues));
                std::vector<float> dst(src.size());
                h9::g_scalarBlocks = scalar;
                for (auto _ : state) {
                    benchmark::DoNotOptimize(add ? h9::orvsAddC_32f(src.data(), 0.25f, dst.data(), int(kValues))
                                                 : h9::orvsSubC_32f(src.data(), 0.25f, dst.data(), int(kValues)));
                    benchmark::ClobberMemory();
                }
                h9::g_scalarBlocks = false;
                reportPixels(state, 1LL * kWidth * kHeight);
            })->Unit(benchmark::kMillisecond)->UseRealTime();
        }
    }
    registerMemcpy("GammaPass_32f/memcpy", 12);
    // Both passes and the memcpy of their bytes in turns.
    registerTurns("GammaPass_32f/turns", 12, 12, Fill::Float01, [](uint8_t* src, uint8_t* dst) {
        const float* s = reinterpret_cast<const float*>(src);
        float* d = reinterpret_cast<float*>(dst);
        return std::vector<Contender>{{"subtraction", [=] { h9::orvsSubC_32f(s, 0.25f, d, int(kValues)); }},
                                      {"addition", [=] { h9::orvsAddC_32f(s, 0.25f, d, int(kValues)); }},
                                      memcpyContender(src, dst, 12, 12)};
    });
}

// A 16u C3 member on a smooth frame: three gradients of different
// direction with a little noise, so that neighbouring values are close as in
// a photograph and the table reads mostly hit the first-level cache (random
// words, as in the rows above, make nearly every read miss it).
template <class F>
void registerSmooth16u(const std::string& name, F f)
{
    for (bool scalar : {false, true}) {
        benchmark::RegisterBenchmark((name + (scalar ? "/scalar" : "/vector")).c_str(), [=](benchmark::State& state) {
            std::mt19937 rng(5);
            std::vector<Orv16u> src(std::size_t(3) * kWidth * kHeight), dst(src.size());
            for (int y = 0; y < kHeight; ++y)
                for (int x = 0; x < kWidth; ++x) {
                    Orv16u* p = &src[(std::size_t(y) * kWidth + x) * 3];
                    p[0] = Orv16u(x * 30 + y * 5 + rng() % 64);
                    p[1] = Orv16u(y * 55 + x * 2 + rng() % 64);
                    p[2] = Orv16u(8000 + (x + y) * 15 + rng() % 64);
                }
            h9::g_scalarBlocks = scalar;
            for (auto _ : state) {
                benchmark::DoNotOptimize(f(src.data(), kWidth * 6, dst.data(), kWidth * 6, RoiSize{kWidth, kHeight}));
                benchmark::ClobberMemory();
            }
            h9::g_scalarBlocks = false;
            reportPixels(state, 1LL * kWidth * kHeight);
        })->Unit(benchmark::kMillisecond)->UseRealTime();
    }
}

void registerGamma()
{
    registerRangePasses();
    registerConversion("GammaFwd_8u_C3R", 3, 3, wrap<Orv8u>(orviGammaFwd_8u_C3R));
    registerConversion("GammaInv_8u_C3R", 3, 3, wrap<Orv8u>(orviGammaInv_8u_C3R));
    registerConversion("GammaFwd_8u_AC4R", 4, 4, wrap<Orv8u>(orviGammaFwd_8u_AC4R));
    registerConversion("GammaFwd_16u_C3R", 6, 6, wrap<Orv16u>(orviGammaFwd_16u_C3R));
    registerFloat("GammaFwd_32f_C3R", orviGammaFwd_32f_C3R);
    registerFloat("GammaInv_32f_C3R", orviGammaInv_32f_C3R);
    registerFloat("GammaFwd_32f_AC4R", orviGammaFwd_32f_AC4R, 4);
    registerFloat("GammaInv_32f_AC4R", orviGammaInv_32f_AC4R, 4);
    registerConversion("GammaInv_16u_C3R", 6, 6, wrap<Orv16u>(orviGammaInv_16u_C3R));
    registerConversion("GammaFwd_16u_AC4R", 8, 8, wrap<Orv16u>(orviGammaFwd_16u_AC4R));
    registerConversion("GammaInv_8u_AC4R", 4, 4, wrap<Orv8u>(orviGammaInv_8u_AC4R));
    registerSmooth16u("GammaFwd_16u_C3R_smooth", orviGammaFwd_16u_C3R);
    registerSmooth16u("GammaInv_16u_C3R_smooth", orviGammaInv_16u_C3R);
    registerPowx();

#ifdef ORVCC_HAVE_OPENCV
    registerPeer("GammaFwd_8u_C3R/opencv_LUT", [](benchmark::State& state) {
        cv::setNumThreads(1);
        Buffer src(size_t(kWidth) * kHeight * 3), dst(size_t(kWidth) * kHeight * 3);
        cv::Mat s(kHeight, kWidth, CV_8UC3, src.data()), d(kHeight, kWidth, CV_8UC3, dst.data());
        cv::Mat lut(1, 256, CV_8UC1);
        for (int i = 0; i < 256; ++i)
            lut.at<uint8_t>(i) = uint8_t(255 - i);
        for (auto _ : state) {
            cv::LUT(s, lut, d);
            benchmark::ClobberMemory();
        }
    });
    registerPeer("GammaFwd_32f_C3R/opencv_pow", [](benchmark::State& state) {
        cv::setNumThreads(1);
        std::vector<float> src = unitValues(kValues), dst(kValues);
        cv::Mat s(kHeight, kWidth, CV_32FC3, src.data()), d(kHeight, kWidth, CV_32FC3, dst.data());
        for (auto _ : state) {
            cv::pow(s, 0.45, d);
            benchmark::ClobberMemory();
        }
        reportValues(state, kValues);
    });
#endif
}

const Registrar registrar(registerGamma);

}  // namespace
