// YCoCg throughput, one thread, 1920x1080: every member as vector path and
// scalar form, beside a memcpy that moves as many bytes as the member reads
// and writes (half of them read, half written). No open library converts to
// YCoCg planes; the library's own RGBToYCbCr_8u_C3P3R (same layouts, a
// multiplying transform) is registered by the YUV benchmarks.
#include <cstring>
#include <type_traits>

#include "bench_util.h"

namespace {

using namespace orvbench;

// What an argument of type X is: a plane array (pointer to pointers) or
// interleaved pixels, and its element type.
template <class X>
constexpr bool kPlanar = std::is_pointer_v<std::remove_pointer_t<X>>;
template <class X>
using Elem = std::remove_cv_t<std::remove_pointer_t<std::remove_cv_t<std::remove_pointer_t<X>>>>;

// Bytes per pixel of a side with `samples` interleaved samples or three planes.
template <class X>
constexpr int pixelBytes(int samples)
{
    return (kPlanar<X> ? 3 : samples) * int(sizeof(Elem<X>));
}

// A frame buffer as the argument of type X: planes cut one after the other,
// each with a step of one element per pixel, or the interleaved pixels.
template <class X>
struct Arg {
    using E = Elem<X>;
    E* planes[3];
    uint8_t* base;
    int step;
    Arg(uint8_t* b, int interleavedStep, RoiSize r) : base(b), step(interleavedStep)
    {
        if constexpr (kPlanar<X>) {
            for (int k = 0; k < 3; ++k)
                planes[k] = reinterpret_cast<E*>(b + std::size_t(k) * r.width * r.height * sizeof(E));
            step = r.width * int(sizeof(E));
        }
    }
    X get()
    {
        if constexpr (kPlanar<X>)
            return planes;
        else
            return reinterpret_cast<X>(base);
    }
};

template <class S, class D, class... A>
void add(const char* name, OrvStatus (*f)(S, int, D, int, RoiSize, A...), int samples, A... alpha)
{
    const int sb = pixelBytes<S>(samples), db = pixelBytes<D>(samples);
    registerConversion(name, sb, db, [=](uint8_t* s, int ss, uint8_t* d, int ds, RoiSize r) {
        Arg<S> src(s, ss, r);
        Arg<D> dst(d, ds, r);
        return f(src.get(), src.step, dst.get(), dst.step, r, alpha...);
    });
    registerPeer(std::string(name) + "/memcpy", [=](benchmark::State& state) {
        const std::size_t bytes = std::size_t(kWidth) * kHeight * (sb + db) / 2;
        Buffer src(bytes, 1), dst(bytes, 2);
        for (auto _ : state) {
            std::memcpy(dst.data(), src.data(), bytes);
            benchmark::ClobberMemory();
        }
    });
}

void registerYCoCg()
{
    add("BGRToYCoCg_8u16s_C3P3R", orviBGRToYCoCg_8u16s_C3P3R, 3);
    add("BGRToYCoCg_8u16s_C4P3R", orviBGRToYCoCg_8u16s_C4P3R, 4);
    add("SBGRToYCoCg_16s_C3P3R", orviSBGRToYCoCg_16s_C3P3R, 3);
    add("SBGRToYCoCg_16s_C4P3R", orviSBGRToYCoCg_16s_C4P3R, 4);
    add("SBGRToYCoCg_16s32s_C3P3R", orviSBGRToYCoCg_16s32s_C3P3R, 3);
    add("SBGRToYCoCg_16s32s_C4P3R", orviSBGRToYCoCg_16s32s_C4P3R, 4);
    add("YCoCgToBGR_16s8u_P3C3R", orviYCoCgToBGR_16s8u_P3C3R, 3);
    add("YCoCgToBGR_16s8u_P3C4R", orviYCoCgToBGR_16s8u_P3C4R, 4, Orv8u(255));
    add("YCoCgToSBGR_16s_P3C3R", orviYCoCgToSBGR_16s_P3C3R, 3);
    add("YCoCgToSBGR_16s_P3C4R", orviYCoCgToSBGR_16s_P3C4R, 4, Orv16s(0));
    add("YCoCgToSBGR_32s16s_P3C3R", orviYCoCgToSBGR_32s16s_P3C3R, 3);
    add("YCoCgToSBGR_32s16s_P3C4R", orviYCoCgToSBGR_32s16s_P3C4R, 4, Orv16s(0));
    add("BGRToYCoCg_Rev_8u16s_C3P3R", orviBGRToYCoCg_Rev_8u16s_C3P3R, 3);
    add("BGRToYCoCg_Rev_8u16s_C4P3R", orviBGRToYCoCg_Rev_8u16s_C4P3R, 4);
    add("SBGRToYCoCg_Rev_16s_C3P3R", orviSBGRToYCoCg_Rev_16s_C3P3R, 3);
    add("SBGRToYCoCg_Rev_16s_C4P3R", orviSBGRToYCoCg_Rev_16s_C4P3R, 4);
    add("SBGRToYCoCg_Rev_16s32s_C3P3R", orviSBGRToYCoCg_Rev_16s32s_C3P3R, 3);
    add("SBGRToYCoCg_Rev_16s32s_C4P3R", orviSBGRToYCoCg_Rev_16s32s_C4P3R, 4);
    add("YCoCgToBGR_Rev_16s8u_P3C3R", orviYCoCgToBGR_Rev_16s8u_P3C3R, 3);
    add("YCoCgToBGR_Rev_16s8u_P3C4R", orviYCoCgToBGR_Rev_16s8u_P3C4R, 4, Orv8u(255));
    add("YCoCgToSBGR_Rev_16s_P3C3R", orviYCoCgToSBGR_Rev_16s_P3C3R, 3);
    add("YCoCgToSBGR_Rev_16s_P3C4R", orviYCoCgToSBGR_Rev_16s_P3C4R, 4, Orv16s(0));
    add("YCoCgToSBGR_Rev_32s16s_P3C3R", orviYCoCgToSBGR_Rev_32s16s_P3C3R, 3);
    add("YCoCgToSBGR_Rev_32s16s_P3C4R", orviYCoCgToSBGR_Rev_32s16s_P3C4R, 4, Orv16s(0));
    add("RGBToYCoCg_8u_C3P3R", orviRGBToYCoCg_8u_C3P3R, 3);
    add("YCoCgToRGB_8u_P3C3R", orviYCoCgToRGB_8u_P3C3R, 3);
}

const Registrar registrar(registerYCoCg);

}  // namespace
