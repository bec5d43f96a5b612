// Subsampled YUV throughput, one thread, 1920x1080: every member as vector
// path and scalar form, beside libyuv (I420 and I422 to RGB bytes, YUY2 to
// ARGB, ARGB and RAW to I420) and OpenCV's cvtColor (I420 and YUY2 to RGB,
// RGB to I420).
#include "bench_util.h"

#ifdef ORVCC_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif
#ifdef ORVCC_HAVE_LIBYUV
#include <libyuv.h>
#endif

namespace {

using namespace orvbench;

// The source buffer as Y, U, V planes (chroma of `chromaRows` rows of half
// width) or packed pairs; the destination as RGB planes or interleaved.
struct Yuv {
    const uint8_t* planes[3];
    int steps[3];
    Yuv(const uint8_t* s, RoiSize r, bool is420)
    {
        const int cw = r.width / 2, ch = is420 ? r.height / 2 : r.height;
        planes[0] = s;
        planes[1] = s + std::size_t(r.width) * r.height;
        planes[2] = planes[1] + std::size_t(cw) * ch;
        steps[0] = r.width;
        steps[1] = steps[2] = cw;
    }
};
struct RgbPlanes {
    uint8_t* p[3];
    RgbPlanes(uint8_t* d, RoiSize r)
    {
        for (int k = 0; k < 3; ++k)
            p[k] = d + std::size_t(k) * r.width * r.height;
    }
};

template <class D>
Call planar(OrvStatus (*f)(const Orv8u* const*, const int*, D, int, RoiSize), bool is420)
{
    return [=](uint8_t* s, int, uint8_t* d, int ds, RoiSize r) {
        const Yuv y(s, r, is420);
        if constexpr (std::is_same_v<D, Orv8u**>)
            return f(y.planes, y.steps, RgbPlanes(d, r).p, r.width, r);
        else
            return f(y.planes, y.steps, d, ds, r);
    };
}

template <class D>
Call whole(OrvStatus (*f)(const Orv8u* const*, D, RoiSize), bool is420)
{
    return [=](uint8_t* s, int, uint8_t* d, int, RoiSize r) {
        const Yuv y(s, r, is420);
        if constexpr (std::is_same_v<D, Orv8u**>)
            return f(y.planes, RgbPlanes(d, r).p, r);
        else
            return f(y.planes, d, r);
    };
}

void registerYuvSub()
{
    // Bytes per pixel: 2 for 4:2:2 sources, 2 (of which 1.5 used) for 4:2:0.
    registerConversion("YUV422ToRGB_8u_P3R", 2, 3, planar(orviYUV422ToRGB_8u_P3R, false));
    registerConversion("YUV422ToRGB_8u_P3", 2, 3, whole(orviYUV422ToRGB_8u_P3, false));
    registerConversion("YUV422ToRGB_8u_P3C3R", 2, 3, planar(orviYUV422ToRGB_8u_P3C3R, false));
    registerConversion("YUV422ToRGB_8u_P3C3", 2, 3, whole(orviYUV422ToRGB_8u_P3C3, false));
    registerConversion("YUV422ToRGB_8u_P3AC4R", 2, 4, planar(orviYUV422ToRGB_8u_P3AC4R, false));
    registerConversion("YUV422ToRGB_8u_C2C3R", 2, 3, [](uint8_t* s, int ss, uint8_t* d, int ds, RoiSize r) {
        return orviYUV422ToRGB_8u_C2C3R(s, ss, d, ds, r);
    });
    registerConversion("YUV420ToRGB_8u_P3R", 2, 3, planar(orviYUV420ToRGB_8u_P3R, true));
    registerConversion("YUV420ToRGB_8u_P3", 2, 3, whole(orviYUV420ToRGB_8u_P3, true));
    registerConversion("YUV420ToRGB_8u_P3C3R", 2, 3, planar(orviYUV420ToRGB_8u_P3C3R, true));
    registerConversion("YUV420ToRGB_8u_P3C3", 2, 3, whole(orviYUV420ToRGB_8u_P3C3, true));
    registerConversion("YUV420ToRGB_8u_P3AC4R", 2, 4, planar(orviYUV420ToRGB_8u_P3AC4R, true));
    registerConversion("YUV420ToBGR_8u_P3C3R", 2, 3, planar(orviYUV420ToBGR_8u_P3C3R, true));

    // RGB to 4:2:0 by the scalar square form.
    auto toYuv = [](uint8_t* d, RoiSize r, uint8_t* planes[3], int steps[3]) {
        const Yuv y(d, r, true);
        for (int k = 0; k < 3; ++k) {
            planes[k] = const_cast<uint8_t*>(y.planes[k]);
            steps[k] = y.steps[k];
        }
    };
    registerConversion("RGBToYUV420_8u_P3R", 3, 2, [=](uint8_t* s, int, uint8_t* d, int, RoiSize r) {
        uint8_t* p[3];
        int st[3];
        toYuv(d, r, p, st);
        return orviRGBToYUV420_8u_P3R(RgbPlanes(s, r).p, r.width, p, st, r);
    });
    registerConversion("RGBToYUV420_8u_P3", 3, 2, [=](uint8_t* s, int, uint8_t* d, int, RoiSize r) {
        uint8_t* p[3];
        int st[3];
        toYuv(d, r, p, st);
        return orviRGBToYUV420_8u_P3(RgbPlanes(s, r).p, p, r);
    });
    registerConversion("BGRToYUV420_8u_AC4P3R", 4, 2, [=](uint8_t* s, int ss, uint8_t* d, int, RoiSize r) {
        uint8_t* p[3];
        int st[3];
        toYuv(d, r, p, st);
        return orviBGRToYUV420_8u_AC4P3R(s, ss, p, st, r);
    });

    // RGB to 4:2:2 and 4:2:0. The buffers are aligned, so the interleaved
    // 4:2:2 member takes its kernel for aligned arguments; one byte off the
    // destination start gives the other.
    auto to422 = [](uint8_t* d, RoiSize r, uint8_t* planes[3], int steps[3], int offset) {
        const Yuv y(d, r, false);
        for (int k = 0; k < 3; ++k) {
            planes[k] = const_cast<uint8_t*>(y.planes[k]) + offset;
            steps[k] = y.steps[k];
        }
    };
    registerConversion("RGBToYUV422_8u_P3R", 3, 2, [=](uint8_t* s, int, uint8_t* d, int, RoiSize r) {
        uint8_t* p[3];
        int st[3];
        to422(d, r, p, st, 0);
        return orviRGBToYUV422_8u_P3R(RgbPlanes(s, r).p, r.width, p, st, r);
    });
    registerConversion("RGBToYUV422_8u_P3", 3, 2, [=](uint8_t* s, int, uint8_t* d, int, RoiSize r) {
        uint8_t* p[3];
        int st[3];
        to422(d, r, p, st, 0);
        return orviRGBToYUV422_8u_P3(RgbPlanes(s, r).p, p, r);
    });
    for (int offset : {0, 1})
        registerConversion(offset ? "RGBToYUV422_8u_C3P3R(unaligned)" : "RGBToYUV422_8u_C3P3R", 3, 2,
                           [=](uint8_t* s, int ss, uint8_t* d, int, RoiSize r) {
                               uint8_t* p[3];
                               int st[3];
                               to422(d, r, p, st, offset);
                               return orviRGBToYUV422_8u_C3P3R(s, ss, p, st, r);
                           });
    registerConversion("RGBToYUV422_8u_C3P3", 3, 2, [=](uint8_t* s, int, uint8_t* d, int, RoiSize r) {
        uint8_t* p[3];
        int st[3];
        to422(d, r, p, st, 0);
        return orviRGBToYUV422_8u_C3P3(s, p, r);
    });
    registerConversion("RGBToYUV422_8u_C3C2R", 3, 2, [](uint8_t* s, int ss, uint8_t* d, int ds, RoiSize r) {
        return orviRGBToYUV422_8u_C3C2R(s, ss, d, ds, r);
    });
    registerConversion("RGBToYUV420_8u_C3P3R", 3, 2, [=](uint8_t* s, int ss, uint8_t* d, int, RoiSize r) {
        uint8_t* p[3];
        int st[3];
        toYuv(d, r, p, st);
        return orviRGBToYUV420_8u_C3P3R(s, ss, p, st, r);
    });
    registerConversion("RGBToYUV420_8u_C3P3", 3, 2, [=](uint8_t* s, int, uint8_t* d, int, RoiSize r) {
        uint8_t* p[3];
        int st[3];
        toYuv(d, r, p, st);
        return orviRGBToYUV420_8u_C3P3(s, p, r);
    });

    const RoiSize frame{kWidth, kHeight};
#ifdef ORVCC_HAVE_LIBYUV
    auto yuv = [frame](const char* name, bool is420, int dstBytes, auto f) {
        registerPeer(name, [=](benchmark::State& state) {
            Buffer src(std::size_t(kWidth) * kHeight * 2), dst(std::size_t(kWidth) * kHeight * dstBytes);
            const Yuv y(src.data(), frame, is420);
            for (auto _ : state) {
                f(y.planes[0], y.steps[0], y.planes[1], y.steps[1], y.planes[2], y.steps[2], dst.data(),
                  kWidth * dstBytes, kWidth, kHeight);
                benchmark::ClobberMemory();
            }
        });
    };
    yuv("YUV420ToRGB_8u_P3C3R/libyuv", true, 3, libyuv::I420ToRAW);
    yuv("YUV420ToBGR_8u_P3C3R/libyuv", true, 3, libyuv::I420ToRGB24);
    yuv("YUV422ToRGB_8u_P3C3R/libyuv", false, 3, libyuv::I422ToRAW);
    yuv("YUV420ToRGB_8u_P3AC4R/libyuv", true, 4, libyuv::I420ToABGR);
    yuv("YUV422ToRGB_8u_P3AC4R/libyuv", false, 4, libyuv::I422ToARGB);
    registerPeer("BGRToYUV420_8u_AC4P3R/libyuv", [frame](benchmark::State& state) {
        Buffer src(std::size_t(kWidth) * kHeight * 4), dst(std::size_t(kWidth) * kHeight * 2);
        const Yuv y(dst.data(), frame, true);
        for (auto _ : state) {
            libyuv::ARGBToI420(src.data(), kWidth * 4, const_cast<uint8_t*>(y.planes[0]), y.steps[0],
                               const_cast<uint8_t*>(y.planes[1]), y.steps[1], const_cast<uint8_t*>(y.planes[2]),
                               y.steps[2], kWidth, kHeight);
            benchmark::ClobberMemory();
        }
    });
    registerPeer("RGBToYUV420_8u_C3P3R/libyuv", [frame](benchmark::State& state) {
        Buffer src(std::size_t(kWidth) * kHeight * 3), dst(std::size_t(kWidth) * kHeight * 2);
        const Yuv y(dst.data(), frame, true);
        for (auto _ : state) {
            libyuv::RAWToI420(src.data(), kWidth * 3, const_cast<uint8_t*>(y.planes[0]), y.steps[0],
                              const_cast<uint8_t*>(y.planes[1]), y.steps[1], const_cast<uint8_t*>(y.planes[2]),
                              y.steps[2], kWidth, kHeight);
            benchmark::ClobberMemory();
        }
    });
    registerPeer("YUV422ToRGB_8u_C2C3R/libyuv(ARGB)", [](benchmark::State& state) {
        Buffer src(std::size_t(kWidth) * kHeight * 2), dst(std::size_t(kWidth) * kHeight * 4);
        for (auto _ : state) {
            libyuv::YUY2ToARGB(src.data(), kWidth * 2, dst.data(), kWidth * 4, kWidth, kHeight);
            benchmark::ClobberMemory();
        }
    });
#endif
#ifdef ORVCC_HAVE_OPENCV
    auto cv = [](const char* name, int rows, int type, int code) {
        registerPeer(name, [=](benchmark::State& state) {
            cv::setNumThreads(1);
            Buffer src(std::size_t(kWidth) * kHeight * 2), dst(std::size_t(kWidth) * kHeight * 3);
            cv::Mat s(rows, kWidth, type, src.data()), d(kHeight, kWidth, CV_8UC3, dst.data());
            for (auto _ : state) {
                cv::cvtColor(s, d, code);
                benchmark::ClobberMemory();
            }
        });
    };
    cv("YUV420ToRGB_8u_P3C3R/opencv", kHeight * 3 / 2, CV_8UC1, cv::COLOR_YUV2RGB_I420);
    cv("YUV422ToRGB_8u_C2C3R/opencv", kHeight, CV_8UC2, cv::COLOR_YUV2RGB_YUY2);
    registerPeer("RGBToYUV420_8u_C3P3R/opencv", [](benchmark::State& state) {
        cv::setNumThreads(1);
        Buffer src(std::size_t(kWidth) * kHeight * 3), dst(std::size_t(kWidth) * kHeight * 2);
        cv::Mat s(kHeight, kWidth, CV_8UC3, src.data()), d(kHeight * 3 / 2, kWidth, CV_8UC1, dst.data());
        for (auto _ : state) {
            cv::cvtColor(s, d, cv::COLOR_RGB2YUV_I420);
            benchmark::ClobberMemory();
        }
    });
#endif
    (void)frame;
}

const Registrar registrar(registerYuvSub);

}  // namespace
