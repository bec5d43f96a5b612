// RGB and CIE LUV, RGB and CIE Lab: throughput at 1920x1080, one thread and
// all threads, beside OpenCV's cvtColor. These conversions take linear RGB,
// so OpenCV's linear-RGB codes do the same work and are the peer; its sRGB
// codes (which add the transfer curve, by tables in 8u) are shown beside.
#include "bench_util.h"

namespace {

using namespace orvbench;

void registerLuvLab()
{
    for (int threads : {1, 0}) {  // 0: the default, all processors
        const std::string t = threads == 1 ? "/1thread" : "/allthreads";
        registerConversion("RGBToLUV_8u_C3R" + t, 3, 3, typedCall<Orv8u>(orviRGBToLUV_8u_C3R), threads);
        registerConversion("LUVToRGB_8u_C3R" + t, 3, 3, typedCall<Orv8u>(orviLUVToRGB_8u_C3R), threads);
        registerConversion("RGBToLUV_32f_C3R" + t, 12, 12, typedCall<Orv32f>(orviRGBToLUV_32f_C3R), threads, Fill::Float01);
        registerConversion("LUVToRGB_32f_C3R" + t, 12, 12, typedCall<Orv32f>(orviLUVToRGB_32f_C3R), threads, Fill::Float01);
        registerConversion("RGBToLUV_16u_C3R" + t, 6, 6, typedCall<Orv16u>(orviRGBToLUV_16u_C3R), threads);
        registerConversion("LUVToRGB_16s_AC4R" + t, 8, 8, typedCall<Orv16s>(orviLUVToRGB_16s_AC4R), threads);
        registerConversion("RGBToLab_8u_C3R" + t, 3, 3, typedCall<Orv8u>(orviRGBToLab_8u_C3R), threads);
        registerConversion("LabToRGB_8u_C3R" + t, 3, 3, typedCall<Orv8u>(orviLabToRGB_8u_C3R), threads);
        registerConversion("RGBToLab_32f_C3R" + t, 12, 12, typedCall<Orv32f>(orviRGBToLab_32f_C3R), threads, Fill::Float01);
        registerConversion("LabToRGB_32f_C3R" + t, 12, 12, typedCall<Orv32f>(orviLabToRGB_32f_C3R), threads, Fill::Float01);
        registerConversion("BGRToLab_8u16u_C3R" + t, 3, 6, typedCall<Orv8u, Orv16u>(orviBGRToLab_8u16u_C3R), threads);
#ifdef ORVCC_HAVE_OPENCV
        const int cv = threads == 1 ? 1 : -1;
        struct Peer {
            const char* name;
            int depth;
            int linear, srgb;
        };
        const Peer peers[] = {
            {"RGBToLUV_8u_C3R", CV_8U, cv::COLOR_LRGB2Luv, cv::COLOR_RGB2Luv},
            {"LUVToRGB_8u_C3R", CV_8U, cv::COLOR_Luv2LRGB, cv::COLOR_Luv2RGB},
            {"RGBToLUV_32f_C3R", CV_32F, cv::COLOR_LRGB2Luv, cv::COLOR_RGB2Luv},
            {"LUVToRGB_32f_C3R", CV_32F, cv::COLOR_Luv2LRGB, cv::COLOR_Luv2RGB},
            {"RGBToLab_8u_C3R", CV_8U, cv::COLOR_LRGB2Lab, cv::COLOR_RGB2Lab},
            {"LabToRGB_8u_C3R", CV_8U, cv::COLOR_Lab2LRGB, cv::COLOR_Lab2RGB},
            {"RGBToLab_32f_C3R", CV_32F, cv::COLOR_LRGB2Lab, cv::COLOR_RGB2Lab},
            {"LabToRGB_32f_C3R", CV_32F, cv::COLOR_Lab2LRGB, cv::COLOR_Lab2RGB},
        };
        for (const Peer& p : peers) {
            // Float LUV and Lab sources get L over 0..100 like the others' 0..1.
            const double hi = std::string(p.name).rfind("RGBTo", 0) == 0 ? 1.0 : 100.0;
            registerCvtColor(p.name + t + "/opencv_linear", CV_MAKETYPE(p.depth, 3), p.linear, cv, hi);
            registerCvtColor(p.name + t + "/opencv_srgb", CV_MAKETYPE(p.depth, 3), p.srgb, cv, hi);
        }
#endif
    }
}

const Registrar registrar(registerLuvLab);

}  // namespace
