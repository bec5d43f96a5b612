// Bit-depth reduction at 1920x1080 beside a memcpy of the same source bytes:
// no dither and ordered dither (vector and scalar forms), error diffusion on
// one thread and all threads.
#include <cstring>
#include <memory>

#include "bench_util.h"

namespace {

using namespace orvbench;

template <class S, class D>
using ReduceFn = OrvStatus (*)(const S*, int, D*, int, RoiSize, int, OrvDitherType, int, Orv8u*);

// A work buffer large enough for every thread count and method.
uint8_t* workBuffer()
{
    static std::vector<uint8_t> buf(std::size_t(12 * kWidth + 48) * 4 + 6256 + 64);
    return buf.data();
}

template <class S, class D>
Call reduce(ReduceFn<S, D> f, int dtype, int levels)
{
    return [=](uint8_t* s, int ss, uint8_t* d, int ds, RoiSize r) {
        return f(reinterpret_cast<const S*>(s), ss, reinterpret_cast<D*>(d), ds, r, 0, dtype, levels, workBuffer());
    };
}

void registerMemcpy(const std::string& name, int bytes)
{
    registerPeer(name, [=](benchmark::State& state) {
        Buffer src(std::size_t(kWidth) * kHeight * bytes, 1), dst(std::size_t(kWidth) * kHeight * bytes, 2);
        for (auto _ : state) {
            std::memcpy(dst.data(), src.data(), std::size_t(kWidth) * kHeight * bytes);
            benchmark::ClobberMemory();
        }
    });
}

void registerReduce()
{
    registerMemcpy("ReduceBits/memcpy_3B", 3);
    registerMemcpy("ReduceBits/memcpy_6B", 6);
    registerMemcpy("ReduceBits/memcpy_12B", 12);
    registerMemcpy("ReduceBits/memcpy_1B", 1);
    for (int dtype : {orvDitherNone, orvDitherBayer}) {
        const std::string m = dtype == orvDitherNone ? "None" : "Bayer";
        registerConversion("ReduceBits_8u_C3R/" + m, 3, 3, reduce(orviReduceBits_8u_C3R, dtype, 7));
        registerConversion("ReduceBits_16u8u_C3R/" + m, 6, 3, reduce(orviReduceBits_16u8u_C3R, dtype, 7));
        registerConversion("ReduceBits_32f8u_C3R/" + m, 12, 3, reduce(orviReduceBits_32f8u_C3R, dtype, 7), 1,
                           Fill::Float01);
    }
    for (int threads : {1, 0}) {
        const std::string t = threads == 1 ? "/1thread" : "/allthreads";
        for (int dtype : {orvDitherFloydSteinberg, orvDitherStucki}) {
            const std::string m = dtype == orvDitherFloydSteinberg ? "FloydSteinberg" : "Stucki";
            registerConversion("ReduceBits_8u_C1R/" + m + t, 1, 1, reduce(orviReduceBits_8u_C1R, dtype, 4), threads);
            registerConversion("ReduceBits_8u_C3R/" + m + t, 3, 3, reduce(orviReduceBits_8u_C3R, dtype, 4), threads);
        }
    }
}

const Registrar registrar(registerReduce);

}  // namespace
