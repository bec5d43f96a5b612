// Shared pieces of the benchmarks: frames of random data and registration of
// a conversion as a vector run and a scalar-form run, reported in megapixels
// per second.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "frame/driver.h"
#include "orvcc.h"
#include "orvcore.h"

#ifdef ORVCC_HAVE_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace orvbench {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

// What a source buffer holds: random bytes, or floats / doubles in [0, 1)
// (random bytes as floats would be full of NaNs and denormals, which time
// the processor's slow paths rather than the conversion).
enum class Fill { Bytes, Float01, Double01 };

// A buffer of `bytes` bytes of random data, 64-byte aligned.
//
// Placement: a conversion that loads from one buffer while its stores to the
// other are still pending runs up to a third slower when the two addresses
// agree in their low 12 bits (the processor takes the load for a read of the
// pending store until the full address resolves). Fresh large allocations all
// start at the same offset in a 4 KiB page, so every source and destination
// pair would collide. Each buffer therefore starts at a fixed offset in its
// page chosen by how many buffers are alive when it is made: the first buffer
// of a benchmark at the page start, the second 33 cache lines (2112 bytes,
// about half a page) further, later ones between. Every row that makes its
// source and then its destination (our vector path, its scalar form, the
// peer, the memcpy) gets the same placement, run after run.
struct Buffer {
    explicit Buffer(std::size_t bytes, uint32_t seed = 1, Fill fill = Fill::Bytes) : raw(bytes + kPage + kPage), size(bytes)
    {
        static constexpr std::size_t kLines[] = {0, 33, 17, 49, 9, 41, 25, 57};
        const auto addr = reinterpret_cast<uintptr_t>(raw.data());
        offset = (kPage - addr % kPage) % kPage + kLines[live() % 8] * 64;
        ++live();
        std::mt19937 rng(seed);
        for (auto& b : raw)
            b = static_cast<uint8_t>(rng());
        std::uniform_real_distribution<double> unit(0.0, 1.0);
        if (fill == Fill::Float01)
            for (std::size_t i = 0; i + 4 <= bytes; i += 4)
                *reinterpret_cast<float*>(data() + i) = float(unit(rng));
        if (fill == Fill::Double01)
            for (std::size_t i = 0; i + 8 <= bytes; i += 8)
                *reinterpret_cast<double*>(data() + i) = unit(rng);
    }
    ~Buffer() { --live(); }
    Buffer(Buffer&& o) noexcept : raw(std::move(o.raw)), size(o.size), offset(o.offset) { ++live(); }
    Buffer& operator=(Buffer&&) = delete;
    uint8_t* data() { return raw.data() + offset; }
    template <class T>
    T* as() { return reinterpret_cast<T*>(data()); }
    static constexpr std::size_t kPage = 4096;
    static int& live()
    {
        static int n = 0;
        return n;
    }
    std::vector<uint8_t> raw;
    std::size_t size;
    std::size_t offset = 0;
};

inline void reportPixels(benchmark::State& state, long long pixelsPerIteration)
{
    // Shown as px/s with an SI prefix: 9.37G/s is 9370 megapixels per second.
    state.counters["px/s"] = benchmark::Counter(double(pixelsPerIteration) * double(state.iterations()),
                                                benchmark::Counter::kIsRate);
}

// Registers `name/vector` and `name/scalar` for a call over a 1920x1080 frame
// with `srcBytes` and `dstBytes` bytes per pixel, on `threads` threads; both
// buffers hold `fill` (in-place calls convert the destination buffer).
using Call = std::function<OrvStatus(uint8_t* src, int srcStep, uint8_t* dst, int dstStep, RoiSize roi)>;

inline void registerConversion(const std::string& name, int srcBytes, int dstBytes, Call call, int threads = 1,
                               Fill fill = Fill::Bytes)
{
    for (bool scalar : {false, true}) {
        benchmark::RegisterBenchmark((name + (scalar ? "/scalar" : "/vector")).c_str(),
                                     [=](benchmark::State& state) {
                                         Buffer src(std::size_t(kWidth) * kHeight * srcBytes, 1, fill);
                                         Buffer dst(std::size_t(kWidth) * kHeight * dstBytes, 2, fill);
                                         orvSetNumThreads(threads);
                                         h9::g_scalarBlocks = scalar;
                                         for (auto _ : state) {
                                             benchmark::DoNotOptimize(call(src.data(), kWidth * srcBytes, dst.data(),
                                                                           kWidth * dstBytes, {kWidth, kHeight}));
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

// Registers a peer's implementation of the same conversion.
inline void registerPeer(const std::string& name, std::function<void(benchmark::State&)> body)
{
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        body(state);
        reportPixels(state, 1LL * kWidth * kHeight);
    })->Unit(benchmark::kMillisecond)->UseRealTime();
}

// A typed conversion f(src, srcStep, dst, dstStep, roi) as a Call.
template <class S, class D = S>
Call typedCall(OrvStatus (*f)(const S*, int, D*, int, RoiSize))
{
    return [f](uint8_t* s, int ss, uint8_t* d, int ds, RoiSize r) {
        return f(reinterpret_cast<const S*>(s), ss, reinterpret_cast<D*>(d), ds, r);
    };
}

#ifdef ORVCC_HAVE_OPENCV
// OpenCV's cvtColor with `code` on a frame of `type` (uniform in 0..255, or
// 0..1 for floats; `floatHi` widens that, e.g. to 100 for L), on `threads`
// threads (-1: OpenCV's default).
inline void registerCvtColor(const std::string& name, int type, int code, int threads, double floatHi = 1.0)
{
    registerPeer(name, [=](benchmark::State& state) {
        cv::setNumThreads(threads);
        // Source and destination in the benchmark buffers, placed as ours.
        Buffer src(std::size_t(kWidth) * kHeight * CV_ELEM_SIZE(type));
        cv::Mat s(kHeight, kWidth, type, src.data()), probe;
        cv::randu(s, 0, CV_MAT_DEPTH(type) == CV_32F ? floatHi : 255.0);
        cv::cvtColor(s(cv::Rect(0, 0, 2, 2)), probe, code);
        Buffer dst(std::size_t(kWidth) * kHeight * probe.elemSize());
        cv::Mat d(kHeight, kWidth, probe.type(), dst.data());
        for (auto _ : state) {
            cv::cvtColor(s, d, code);
            benchmark::ClobberMemory();
        }
        cv::setNumThreads(-1);
    });
}
#endif

// A memcpy of `pixelBytes` bytes a pixel over the frame: the time a
// conversion bound by its memory traffic can approach (read S and write D
// bytes a pixel: compare with a copy of (S + D) / 2).
inline void registerMemcpy(const std::string& name, int pixelBytes)
{
    registerPeer(name, [=](benchmark::State& state) {
        const std::size_t bytes = std::size_t(kWidth) * kHeight * pixelBytes;
        Buffer src(bytes, 1), dst(bytes, 2);
        for (auto _ : state) {
            std::memcpy(dst.data(), src.data(), bytes);
            benchmark::ClobberMemory();
        }
    });
}

// Several ways of doing one job timed in turns on the same buffers, for the
// comparisons too close for rows that run minutes apart on a shared machine.
// Each iteration gives every contender one turn, starting one further along
// the list each time: one call that brings the cache to the state the
// contender leaves it in (a streaming store policy keeps the source cached,
// say), then one timed call. Reported per contender: the median of its timed
// calls in milliseconds, as the counter "<label> ms".
struct Contender {
    std::string label;
    std::function<void()> run;
};

inline void runInTurns(benchmark::State& state, const std::vector<Contender>& contenders)
{
    const std::size_t n = contenders.size();
    std::vector<std::vector<double>> ms(n);
    std::size_t first = 0;
    for (auto _ : state) {
        for (std::size_t k = 0; k < n; ++k) {
            const Contender& c = contenders[(first + k) % n];
            c.run();
            benchmark::ClobberMemory();
            const auto t0 = std::chrono::steady_clock::now();
            c.run();
            benchmark::ClobberMemory();
            ms[(first + k) % n].push_back(
                std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0).count());
        }
        first = (first + 1) % n;
    }
    for (std::size_t j = 0; j < n; ++j) {
        std::vector<double>& v = ms[j];
        if (v.empty())
            continue;
        std::nth_element(v.begin(), v.begin() + v.size() / 2, v.end());
        state.counters[contenders[j].label + " ms"] = v[v.size() / 2];
    }
}

// Registers `name`: the contenders that `make` builds on one source and one
// destination frame (`srcBytes` and `dstBytes` a pixel, both holding `fill`;
// the destination has room for the memcpy contender's bytes too), timed in
// turns on one thread (OpenCV's too).
using MakeContenders = std::function<std::vector<Contender>(uint8_t* src, uint8_t* dst)>;

inline void registerTurns(const std::string& name, int srcBytes, int dstBytes, Fill fill, MakeContenders make)
{
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        Buffer src(std::size_t(kWidth) * kHeight * srcBytes, 1, fill);
        Buffer dst(std::size_t(kWidth) * kHeight * std::max(dstBytes, (srcBytes + dstBytes) / 2), 2, fill);
        orvSetNumThreads(1);
#ifdef ORVCC_HAVE_OPENCV
        cv::setNumThreads(1);
#endif
        runInTurns(state, make(src.data(), dst.data()));
#ifdef ORVCC_HAVE_OPENCV
        cv::setNumThreads(-1);
#endif
        orvSetNumThreads(0);
        reportPixels(state, 1LL * kWidth * kHeight);
    })->Unit(benchmark::kMillisecond)->UseRealTime();
}

// The memcpy contender of a conversion reading S and writing D bytes a
// pixel: a copy of (S + D) / 2 bytes a pixel between its buffers.
inline Contender memcpyContender(uint8_t* src, uint8_t* dst, int srcBytes, int dstBytes)
{
    const std::size_t bytes = std::size_t(kWidth) * kHeight * (srcBytes + dstBytes) / 2;
    return {"memcpy", [=] { std::memcpy(dst, src, bytes); }};
}

#ifdef ORVCC_HAVE_OPENCV
// Registers `name`: our conversion `call` (`srcBytes` and `dstBytes` a
// pixel, float frames), OpenCV's cvtColor with `code` between frames of
// types `cvSrc` and `cvDst`, and the memcpy of the bytes, timed in turns.
inline void registerTurnsWithCvtColor(const std::string& name, Call call, int srcBytes, int dstBytes, int cvSrc,
                                      int cvDst, int code)
{
    registerTurns(name, srcBytes, dstBytes, Fill::Float01, [=](uint8_t* src, uint8_t* dst) {
        const cv::Mat s(kHeight, kWidth, cvSrc, src);
        cv::Mat d(kHeight, kWidth, cvDst, dst);
        return std::vector<Contender>{
            {"ours", [=] { call(src, kWidth * srcBytes, dst, kWidth * dstBytes, {kWidth, kHeight}); }},
            {"opencv", [=]() mutable { cv::cvtColor(s, d, code); }},
            memcpyContender(src, dst, srcBytes, dstBytes)};
    });
}
#endif

// Families register themselves from static initialisers in their files.
struct Registrar {
    explicit Registrar(void (*f)()) { f(); }
};

}  // namespace orvbench
