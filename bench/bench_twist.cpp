// Colour twist throughput, one thread, 1920x1080: every layout of every
// element type, OpenCV's cv::transform with a 3x4 matrix as the peer, and a
// memcpy of the 32f C3 image's bytes as the bound of the memory-bound case.
#include <cstring>

#include "bench_util.h"

#ifdef ORVCC_HAVE_OPENCV
#include <opencv2/core.hpp>
#endif

namespace {

using namespace orvbench;

const Orv32f kTwist[3][4] = {{0.9f, 0.3f, -0.2f, 12.25f}, {-0.4f, 1.2f, 0.35f, -20.5f}, {0.25f, -0.6f, 1.4f, 3.5f}};
const Orv32f kTwist4[4][4] = {{0.9f, 0.3f, -0.2f, 0.1f}, {-0.4f, 1.2f, 0.35f, 0.0f}, {0.25f, -0.6f, 1.4f, 0.0f},
                              {0.0f, 0.0f, 0.0f, 1.0f}};

template <class T>
void registerAny(const std::string& name, int srcBytes, int dstBytes, Call call)
{
    registerConversion(name, srcBytes, dstBytes, call, 1, std::is_same_v<T, float> ? Fill::Float01 : Fill::Bytes);
}

// All layouts of one element type. Planar frames are the buffer cut in
// three planes of one element per pixel.
template <class T, class C3, class C3I, class AC4, class AC4I, class P3, class IP3>
void registerType(const std::string& type, C3 c3, C3I c3i, AC4 ac4, AC4I ac4i, P3 p3, IP3 ip3)
{
    const int e = sizeof(T);
    const std::string base = std::string(std::is_same_v<T, float> ? "ColorTwist_" : "ColorTwist32f_") + type;
    registerAny<T>(base + "_C3R", 3 * e, 3 * e, [=](uint8_t* s, int ss, uint8_t* d, int ds, RoiSize r) {
        return c3(reinterpret_cast<const T*>(s), ss, reinterpret_cast<T*>(d), ds, r, kTwist);
    });
    registerAny<T>(base + "_C3IR", 3 * e, 3 * e, [=](uint8_t*, int, uint8_t* d, int ds, RoiSize r) {
        return c3i(reinterpret_cast<T*>(d), ds, r, kTwist);
    });
    registerAny<T>(base + "_AC4R", 4 * e, 4 * e, [=](uint8_t* s, int ss, uint8_t* d, int ds, RoiSize r) {
        return ac4(reinterpret_cast<const T*>(s), ss, reinterpret_cast<T*>(d), ds, r, kTwist);
    });
    registerAny<T>(base + "_AC4IR", 4 * e, 4 * e, [=](uint8_t*, int, uint8_t* d, int ds, RoiSize r) {
        return ac4i(reinterpret_cast<T*>(d), ds, r, kTwist);
    });
    auto planes = [e](uint8_t* p) {
        const std::size_t plane = std::size_t(kWidth) * kHeight * e;
        return std::array<T*, 3>{reinterpret_cast<T*>(p), reinterpret_cast<T*>(p + plane),
                                 reinterpret_cast<T*>(p + 2 * plane)};
    };
    registerAny<T>(base + "_P3R", 3 * e, 3 * e, [=](uint8_t* s, int, uint8_t* d, int, RoiSize r) {
        const auto sp = planes(s);
        auto dp = planes(d);
        const T* const cs[3] = {sp[0], sp[1], sp[2]};
        return p3(cs, kWidth * e, dp.data(), kWidth * e, r, kTwist);
    });
    registerAny<T>(base + "_IP3R", 3 * e, 3 * e, [=](uint8_t*, int, uint8_t* d, int, RoiSize r) {
        auto dp = planes(d);
        return ip3(dp.data(), kWidth * e, r, kTwist);
    });
}

void registerTwist()
{
    registerType<Orv8u>("8u", orviColorTwist32f_8u_C3R, orviColorTwist32f_8u_C3IR, orviColorTwist32f_8u_AC4R,
                        orviColorTwist32f_8u_AC4IR, orviColorTwist32f_8u_P3R, orviColorTwist32f_8u_IP3R);
    registerType<Orv16u>("16u", orviColorTwist32f_16u_C3R, orviColorTwist32f_16u_C3IR, orviColorTwist32f_16u_AC4R,
                         orviColorTwist32f_16u_AC4IR, orviColorTwist32f_16u_P3R, orviColorTwist32f_16u_IP3R);
    registerType<Orv16s>("16s", orviColorTwist32f_16s_C3R, orviColorTwist32f_16s_C3IR, orviColorTwist32f_16s_AC4R,
                         orviColorTwist32f_16s_AC4IR, orviColorTwist32f_16s_P3R, orviColorTwist32f_16s_IP3R);
    registerType<Orv32f>("32f", orviColorTwist_32f_C3R, orviColorTwist_32f_C3IR, orviColorTwist_32f_AC4R,
                         orviColorTwist_32f_AC4IR, orviColorTwist_32f_P3R, orviColorTwist_32f_IP3R);
    registerAny<float>("ColorTwist_32f_C4R", 16, 16, [](uint8_t* s, int ss, uint8_t* d, int ds, RoiSize r) {
        return orviColorTwist_32f_C4R(reinterpret_cast<const Orv32f*>(s), ss, reinterpret_cast<Orv32f*>(d), ds, r,
                                      kTwist4);
    });

    registerMemcpy("ColorTwist_32f_C3R/memcpy", 12);
    registerMemcpy("ColorTwist_32f_C4R/memcpy", 16);
#ifdef ORVCC_HAVE_OPENCV
    auto transform = [](int type, int elemBytes) {
        return [=](benchmark::State& state) {
            cv::setNumThreads(1);
            const Fill fill = elemBytes == 4 ? Fill::Float01 : Fill::Bytes;
            Buffer src(std::size_t(kWidth) * kHeight * 3 * elemBytes, 1, fill),
                dst(std::size_t(kWidth) * kHeight * 3 * elemBytes, 2, fill);
            cv::Mat s(kHeight, kWidth, type, src.data()), d(kHeight, kWidth, type, dst.data());
            const cv::Mat m(3, 4, CV_32F, const_cast<float*>(&kTwist[0][0]));
            for (auto _ : state) {
                cv::transform(s, d, m);
                benchmark::ClobberMemory();
            }
        };
    };
    registerPeer("ColorTwist32f_8u_C3R/opencv", transform(CV_8UC3, 1));
    registerPeer("ColorTwist_32f_C3R/opencv", transform(CV_32FC3, 4));
#endif

    // The float members in turns with their peers, and with each store
    // policy forced, on the same buffers.
    for (int ch : {3, 4}) {
        const std::string name = ch == 3 ? "ColorTwist_32f_C3R/turns" : "ColorTwist_32f_C4R/turns";
        registerTurns(name, 4 * ch, 4 * ch, Fill::Float01, [ch](uint8_t* src, uint8_t* dst) {
            const float* s = reinterpret_cast<const float*>(src);
            float* d = reinterpret_cast<float*>(dst);
            const int step = kWidth * ch * 4;
            auto ours = [=](int policy) {
                return [=] {
                    h9::g_streamStores = policy;
                    if (ch == 3)
                        orviColorTwist_32f_C3R(s, step, d, step, {kWidth, kHeight}, kTwist);
                    else
                        orviColorTwist_32f_C4R(s, step, d, step, {kWidth, kHeight}, kTwist4);
                    h9::g_streamStores = 0;
                };
            };
            std::vector<Contender> contenders = {{"ours", ours(0)}, {"ordinary", ours(-1)}, {"streaming", ours(1)},
                                                 memcpyContender(src, dst, 4 * ch, 4 * ch)};
#ifdef ORVCC_HAVE_OPENCV
            if (ch == 3) {
                const cv::Mat sm(kHeight, kWidth, CV_32FC3, src), m(3, 4, CV_32F, const_cast<float*>(&kTwist[0][0]));
                cv::Mat dm(kHeight, kWidth, CV_32FC3, dst);
                contenders.push_back({"opencv", [=]() mutable { cv::transform(sm, dm, m); }});
            }
#endif
            return contenders;
        });
    }
    registerTurns("ColorTwist_32f_AC4R/turns", 16, 16, Fill::Float01, [](uint8_t* src, uint8_t* dst) {
        const float* s = reinterpret_cast<const float*>(src);
        float* d = reinterpret_cast<float*>(dst);
        return std::vector<Contender>{
            {"ours", [=] { orviColorTwist_32f_AC4R(s, kWidth * 16, d, kWidth * 16, {kWidth, kHeight}, kTwist); }},
            memcpyContender(src, dst, 16, 16)};
    });
}

const Registrar registrar(registerTwist);

}  // namespace
