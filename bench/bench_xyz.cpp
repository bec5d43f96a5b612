// RGB and XYZ throughput at 1920x1080, one thread and all threads, against
// OpenCV's cvtColor where it has the same conversion.
#include "bench_util.h"

namespace {

using namespace orvbench;

void registerXyz()
{
    for (int threads : {1, 0}) {  // 0: the default, all processors
        const std::string t = threads == 1 ? "/1thread" : "/allthreads";
        registerConversion("RGBToXYZ_8u_C3R" + t, 3, 3, typedCall<Orv8u>(orviRGBToXYZ_8u_C3R), threads);
        registerConversion("RGBToXYZ_8u_AC4R" + t, 4, 4, typedCall<Orv8u>(orviRGBToXYZ_8u_AC4R), threads);
        registerConversion("RGBToXYZ_16u_C3R" + t, 6, 6, typedCall<Orv16u>(orviRGBToXYZ_16u_C3R), threads);
        registerConversion("RGBToXYZ_16s_AC4R" + t, 8, 8, typedCall<Orv16s>(orviRGBToXYZ_16s_AC4R), threads);
        registerConversion("RGBToXYZ_32f_C3R" + t, 12, 12, typedCall<Orv32f>(orviRGBToXYZ_32f_C3R), threads, Fill::Float01);
        registerConversion("RGBToXYZ_32f_AC4R" + t, 16, 16, typedCall<Orv32f>(orviRGBToXYZ_32f_AC4R), threads, Fill::Float01);
        registerConversion("XYZToRGB_8u_C3R" + t, 3, 3, typedCall<Orv8u>(orviXYZToRGB_8u_C3R), threads);
        registerConversion("XYZToRGB_16u_AC4R" + t, 8, 8, typedCall<Orv16u>(orviXYZToRGB_16u_AC4R), threads);
        registerConversion("XYZToRGB_32f_C3R" + t, 12, 12, typedCall<Orv32f>(orviXYZToRGB_32f_C3R), threads, Fill::Float01);
        if (threads == 1) {
            registerMemcpy("XYZ_32f_C3R/memcpy", 12);
            registerMemcpy("XYZ_32f_AC4R/memcpy", 16);
        }
#ifdef ORVCC_HAVE_OPENCV
        const int cvThreads = threads == 1 ? 1 : -1;
        registerCvtColor("RGBToXYZ_8u_C3R" + t + "/opencv", CV_8UC3, cv::COLOR_RGB2XYZ, cvThreads);
        registerCvtColor("RGBToXYZ_32f_C3R" + t + "/opencv", CV_32FC3, cv::COLOR_RGB2XYZ, cvThreads);
        registerCvtColor("XYZToRGB_8u_C3R" + t + "/opencv", CV_8UC3, cv::COLOR_XYZ2RGB, cvThreads);
        registerCvtColor("XYZToRGB_32f_C3R" + t + "/opencv", CV_32FC3, cv::COLOR_XYZ2RGB, cvThreads);
#endif
    }
#ifdef ORVCC_HAVE_OPENCV
    // The float members in turns with OpenCV and the memcpy of their bytes.
    registerTurnsWithCvtColor("RGBToXYZ_32f_C3R/turns", typedCall<Orv32f>(orviRGBToXYZ_32f_C3R), 12, 12, CV_32FC3,
                              CV_32FC3, cv::COLOR_RGB2XYZ);
    registerTurnsWithCvtColor("XYZToRGB_32f_C3R/turns", typedCall<Orv32f>(orviXYZToRGB_32f_C3R), 12, 12, CV_32FC3,
                              CV_32FC3, cv::COLOR_XYZ2RGB);
#endif
}

const Registrar registrar(registerXyz);

}  // namespace
