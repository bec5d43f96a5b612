// RGB and photo YCC throughput at 1920x1080 on one thread. No open library
// has this model, so each member runs beside this library's RGB to XYZ and
// XYZ to RGB of the same type and layout (a 3x3 matrix over the same bytes).
#include "bench_util.h"

namespace {

using namespace orvbench;

template <class T>
using Fn = OrvStatus (*)(const T*, int, T*, int, RoiSize);

template <class T>
Call wrap(Fn<T> f)
{
    return [f](uint8_t* s, int ss, uint8_t* d, int ds, RoiSize r) {
        return f(reinterpret_cast<const T*>(s), ss, reinterpret_cast<T*>(d), ds, r);
    };
}

// `name/vector` and `name/scalar` of the YCC member, `name/xyz` of the XYZ
// member beside it.
template <class T>
void registerPair(const std::string& name, int ch, Fn<T> ycc, Fn<T> xyz)
{
    const int bytes = ch * int(sizeof(T));
    const Fill fill = sizeof(T) == 4 ? Fill::Float01 : Fill::Bytes;
    registerConversion(name + "/1thread", bytes, bytes, wrap<T>(ycc), 1, fill);
    registerPeer(name + "/1thread/xyz", [=](benchmark::State& state) {
        Buffer src(std::size_t(kWidth) * kHeight * bytes, 1, fill), dst(std::size_t(kWidth) * kHeight * bytes, 2, fill);
        orvSetNumThreads(1);
        for (auto _ : state) {
            benchmark::DoNotOptimize(xyz(src.as<T>(), kWidth * bytes, dst.as<T>(), kWidth * bytes, {kWidth, kHeight}));
            benchmark::ClobberMemory();
        }
        orvSetNumThreads(0);
    });
}

void registerYcc()
{
    registerPair<Orv8u>("RGBToYCC_8u_C3R", 3, orviRGBToYCC_8u_C3R, orviRGBToXYZ_8u_C3R);
    registerPair<Orv8u>("RGBToYCC_8u_AC4R", 4, orviRGBToYCC_8u_AC4R, orviRGBToXYZ_8u_AC4R);
    registerPair<Orv16u>("RGBToYCC_16u_C3R", 3, orviRGBToYCC_16u_C3R, orviRGBToXYZ_16u_C3R);
    registerPair<Orv16u>("RGBToYCC_16u_AC4R", 4, orviRGBToYCC_16u_AC4R, orviRGBToXYZ_16u_AC4R);
    registerPair<Orv16s>("RGBToYCC_16s_C3R", 3, orviRGBToYCC_16s_C3R, orviRGBToXYZ_16s_C3R);
    registerPair<Orv16s>("RGBToYCC_16s_AC4R", 4, orviRGBToYCC_16s_AC4R, orviRGBToXYZ_16s_AC4R);
    registerPair<Orv32f>("RGBToYCC_32f_C3R", 3, orviRGBToYCC_32f_C3R, orviRGBToXYZ_32f_C3R);
    registerPair<Orv32f>("RGBToYCC_32f_AC4R", 4, orviRGBToYCC_32f_AC4R, orviRGBToXYZ_32f_AC4R);
    registerPair<Orv8u>("YCCToRGB_8u_C3R", 3, orviYCCToRGB_8u_C3R, orviXYZToRGB_8u_C3R);
    registerPair<Orv8u>("YCCToRGB_8u_AC4R", 4, orviYCCToRGB_8u_AC4R, orviXYZToRGB_8u_AC4R);
    registerPair<Orv16u>("YCCToRGB_16u_C3R", 3, orviYCCToRGB_16u_C3R, orviXYZToRGB_16u_C3R);
    registerPair<Orv16u>("YCCToRGB_16u_AC4R", 4, orviYCCToRGB_16u_AC4R, orviXYZToRGB_16u_AC4R);
    registerPair<Orv16s>("YCCToRGB_16s_C3R", 3, orviYCCToRGB_16s_C3R, orviXYZToRGB_16s_C3R);
    registerPair<Orv16s>("YCCToRGB_16s_AC4R", 4, orviYCCToRGB_16s_AC4R, orviXYZToRGB_16s_AC4R);
    registerPair<Orv32f>("YCCToRGB_32f_C3R", 3, orviYCCToRGB_32f_C3R, orviXYZToRGB_32f_C3R);
    registerPair<Orv32f>("YCCToRGB_32f_AC4R", 4, orviYCCToRGB_32f_AC4R, orviXYZToRGB_32f_AC4R);
}

const Registrar registrar(registerYcc);

}  // namespace
