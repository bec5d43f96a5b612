/*
 * orvcc: colour conversion for still images and video frames.
 *
 * Every function converts one rectangle of a caller-owned buffer and returns
 * an OrvStatus. Steps are signed byte distances between row starts; sizes
 * count luma pixels. Nothing is allocated, no state is kept, and a failing
 * call (negative status) writes nothing.
 *
 * The header declares the whole interface of the h9 variant. Functions that a
 * given build does not implement yet are declared but not exported by
 * liborvcch9.so; see README.md for the current list.
 */
#ifndef ORVCC_H
#define ORVCC_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define ORVCC_API __attribute__((visibility("default")))
#else
#define ORVCC_API
#endif

/* ---- element types -------------------------------------------------- */
typedef uint8_t  Orv8u;
typedef uint16_t Orv16u;
typedef int16_t  Orv16s;
typedef uint32_t Orv32u;
typedef int32_t  Orv32s;
typedef float    Orv32f;
typedef double   Orv64f;

/* ---- status codes ----------------------------------------------------- */
typedef int32_t OrvStatus;
enum {
    orvStatusOk            = 0,    /* success */
    orvStatusNothingDone   = 1,    /* ran, wrote nothing (tone mapping) */
    orvStatusOddSize       = 35,   /* whole sampling blocks converted, rest untouched */
    orvStatusBadArgument   = -5,   /* an enumerated argument has no legal value */
    orvStatusBadSize       = -6,   /* a size is below the family's minimum */
    orvStatusNullPointer   = -8,   /* a required pointer is null */
    orvStatusBadContext    = -13,  /* a state block has the wrong id word */
    orvStatusBadStep       = -16,  /* a step is not positive */
    orvStatusBadChannels   = -47,  /* channel count not supported */
    orvStatusBadGammaRange = -49,  /* upper gamma limit not above the lower */
    orvStatusBadLevels     = -54,  /* dither level count out of range */
    orvStatusBadNoise      = -55,  /* noise percentage out of range */
    orvStatusBadDitherType = -224  /* dither type out of range */
};

/* ---- sizes and rectangles --------------------------------------------- */
typedef struct RoiSize {
    int32_t width;
    int32_t height;
} RoiSize;

/* A rectangle inside a Bayer mosaic, in pixels of the whole mosaic. */
typedef struct OrvRect {
    int32_t x;
    int32_t y;
    int32_t width;
    int32_t height;
} OrvRect;

/* Bayer grid codes: the 2x2 cell at the mosaic's origin, read row by row. */
typedef int32_t OrvBayerGrid;
enum {
    orvBayerBGGR = 0,
    orvBayerRGGB = 1,
    orvBayerGBRG = 2,
    orvBayerGRBG = 3
};

/* Dither methods of orviReduceBits_*. */
typedef int32_t OrvDitherType;
enum {
    orvDitherNone                 = 0,
    orvDitherFloydSteinberg       = 1,
    orvDitherJarvisJudiceNinke    = 2,
    orvDitherStucki               = 3,
    orvDitherBayer                = 4
};

/* ---- version ------------------------------------------------------------ */
typedef struct OrvLibVersion {
    int32_t     versionMajor;
    int32_t     versionMinor;
    int32_t     versionUpdate;
    int32_t     versionBuild;
    char        targetTag[4];   /* "h9\0\0" */
    const char* libraryName;
    const char* versionText;
    const char* buildDate;
} OrvLibVersion;

/* Pointer to a constant record; the same pointer on every call. */
ORVCC_API const OrvLibVersion* orvccGetLibVersion(void);

/* ---- conversions ---------------------------------------------------------
 * Grouped by family; the argument order is (source, steps, destination,
 * steps, size, parameters) throughout. */

/* ---- luma and chroma matrices ----------------------------------------- */

/* RGB to gray with the fixed luma weights 0.299, 0.587, 0.114. */
ORVCC_API OrvStatus orviRGBToGray_8u_C3C1R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToGray_8u_AC4C1R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToGray_16u_C3C1R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToGray_16u_AC4C1R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToGray_16s_C3C1R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToGray_16s_AC4C1R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToGray_32f_C3C1R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToGray_32f_AC4C1R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);

/* Colour to gray with the caller's three weights; null selects the fixed ones. */
ORVCC_API OrvStatus orviColorToGray_8u_C3C1R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, const Orv32f coeffs[3]);
ORVCC_API OrvStatus orviColorToGray_8u_AC4C1R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, const Orv32f coeffs[3]);
ORVCC_API OrvStatus orviColorToGray_16u_C3C1R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize, const Orv32f coeffs[3]);
ORVCC_API OrvStatus orviColorToGray_16u_AC4C1R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize, const Orv32f coeffs[3]);
ORVCC_API OrvStatus orviColorToGray_16s_C3C1R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize, const Orv32f coeffs[3]);
ORVCC_API OrvStatus orviColorToGray_16s_AC4C1R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize, const Orv32f coeffs[3]);
ORVCC_API OrvStatus orviColorToGray_32f_C3C1R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize, const Orv32f coeffs[3]);
ORVCC_API OrvStatus orviColorToGray_32f_AC4C1R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize, const Orv32f coeffs[3]);
ORVCC_API OrvStatus orviColorToGray_64f_C3C1R(const Orv64f* pSrc, int srcStep,
    Orv64f* pDst, int dstStep, RoiSize roiSize, const Orv64f coeffs[3]);
ORVCC_API OrvStatus orviColorToGray_64f_AC4C1R(const Orv64f* pSrc, int srcStep,
    Orv64f* pDst, int dstStep, RoiSize roiSize, const Orv64f coeffs[3]);

/* Gray spread over three channels, or four with a constant alpha. */
ORVCC_API OrvStatus orviGrayToRGB_8u_C1C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviGrayToRGB_8u_C1C4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, Orv8u alpha);
ORVCC_API OrvStatus orviGrayToRGB_16u_C1C3R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviGrayToRGB_16u_C1C4R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize, Orv16u alpha);
ORVCC_API OrvStatus orviGrayToRGB_32f_C1C3R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviGrayToRGB_32f_C1C4R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize, Orv32f alpha);

/* Luma samples of packed YCbCr 4:2:2. */
ORVCC_API OrvStatus orviYCbCr422ToGray_8u_C2C1R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);

/* RGB to YUV, one U and V per pixel. */
ORVCC_API OrvStatus orviRGBToYUV_8u_C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYUV_8u_AC4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYUV_8u_P3R(const Orv8u* const pSrc[3], int srcStep,
    Orv8u* pDst[3], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYUV_8u_C3P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYUV_8u_AC4P4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[4], int dstStep, RoiSize roiSize);

/* YUV, one U and V per pixel, to RGB. */
ORVCC_API OrvStatus orviYUVToRGB_8u_C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYUVToRGB_8u_AC4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYUVToRGB_8u_P3R(const Orv8u* const pSrc[3], int srcStep,
    Orv8u* pDst[3], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYUVToRGB_8u_C3C4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, Orv8u alpha);
ORVCC_API OrvStatus orviYUVToRGB_8u_P3C3R(const Orv8u* const pSrc[3], int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);

/* RGB to studio-range YCbCr at full resolution. */
ORVCC_API OrvStatus orviRGBToYCbCr_8u_C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYCbCr_8u_AC4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYCbCr_8u_P3R(const Orv8u* const pSrc[3], int srcStep,
    Orv8u* pDst[3], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYCbCr_8u_C3P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYCbCr_8u_AC4P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep, RoiSize roiSize);

/* Studio-range YCbCr at full resolution to RGB. */
ORVCC_API OrvStatus orviYCbCrToRGB_8u_C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCrToRGB_8u_AC4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCrToRGB_8u_P3R(const Orv8u* const pSrc[3], int srcStep,
    Orv8u* pDst[3], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCrToRGB_8u_P3C3R(const Orv8u* const pSrc[3], int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCrToRGB_8u_P3C4R(const Orv8u* const pSrc[3], int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, Orv8u alpha);

/* Studio-range YCbCr planes at full resolution to BGR. */
ORVCC_API OrvStatus orviYCbCrToBGR_8u_P3C3R(const Orv8u* const pSrc[3], int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCrToBGR_8u_P3C4R(const Orv8u* const pSrc[3], int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, Orv8u alpha);

/* RGB to YUV 4:2:2, planar or packed; names without R: tightly packed, no steps. */
ORVCC_API OrvStatus orviRGBToYUV422_8u_P3R(const Orv8u* const pSrc[3], int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYUV422_8u_P3(const Orv8u* const pSrc[3], Orv8u* pDst[3],
    RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYUV422_8u_C3P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYUV422_8u_C3P3(const Orv8u* pSrc, Orv8u* pDst[3],
    RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYUV422_8u_C3C2R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);

/* RGB to YUV 4:2:0 planes; names without R: tightly packed, no steps. */
ORVCC_API OrvStatus orviRGBToYUV420_8u_P3R(const Orv8u* const pSrc[3], int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYUV420_8u_P3(const Orv8u* const pSrc[3], Orv8u* pDst[3],
    RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYUV420_8u_C3P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYUV420_8u_C3P3(const Orv8u* pSrc, Orv8u* pDst[3],
    RoiSize roiSize);

/* BGR with alpha to YUV 4:2:0 planes. */
ORVCC_API OrvStatus orviBGRToYUV420_8u_AC4P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);

/* YUV 4:2:2 to RGB, chroma repeated per pair; names without R: no steps. */
ORVCC_API OrvStatus orviYUV422ToRGB_8u_P3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst[3], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYUV422ToRGB_8u_P3(const Orv8u* const pSrc[3], Orv8u* pDst[3],
    RoiSize roiSize);
ORVCC_API OrvStatus orviYUV422ToRGB_8u_P3C3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYUV422ToRGB_8u_P3C3(const Orv8u* const pSrc[3], Orv8u* pDst,
    RoiSize roiSize);
ORVCC_API OrvStatus orviYUV422ToRGB_8u_P3AC4R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYUV422ToRGB_8u_C2C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);

/* YUV 4:2:0 planes to RGB, chroma repeated per 2x2; names without R: no steps. */
ORVCC_API OrvStatus orviYUV420ToRGB_8u_P3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst[3], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYUV420ToRGB_8u_P3(const Orv8u* const pSrc[3], Orv8u* pDst[3],
    RoiSize roiSize);
ORVCC_API OrvStatus orviYUV420ToRGB_8u_P3C3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYUV420ToRGB_8u_P3C3(const Orv8u* const pSrc[3], Orv8u* pDst,
    RoiSize roiSize);
ORVCC_API OrvStatus orviYUV420ToRGB_8u_P3AC4R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst, int dstStep, RoiSize roiSize);

/* YUV 4:2:0 planes to BGR. */
ORVCC_API OrvStatus orviYUV420ToBGR_8u_P3C3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst, int dstStep, RoiSize roiSize);

/* RGB to YCbCr 4:2:2, planar or packed Y0 Cb Y1 Cr. */
ORVCC_API OrvStatus orviRGBToYCbCr422_8u_C3P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYCbCr422_8u_C3C2R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYCbCr422_8u_P3C2R(const Orv8u* const pSrc[3], int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);

/* BGR to YCbCr 4:2:2, planar or packed Y0 Cb Y1 Cr. */
ORVCC_API OrvStatus orviBGRToYCbCr422_8u_C3P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviBGRToYCbCr422_8u_AC4P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviBGRToYCbCr422_8u_C3C2R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviBGRToYCbCr422_8u_AC4C2R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);

/* RGB to packed YCrCb 4:2:2 (Y0 Cr Y1 Cb). */
ORVCC_API OrvStatus orviRGBToYCrCb422_8u_C3C2R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYCrCb422_8u_P3C2R(const Orv8u* const pSrc[3], int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);

/* RGB to packed CbYCr 4:2:2, chroma from a three-tap filter. */
ORVCC_API OrvStatus orviRGBToCbYCr422_8u_C3C2R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);

/* BGR with alpha to packed CbYCr 4:2:2. */
ORVCC_API OrvStatus orviBGRToCbYCr422_8u_AC4C2R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);

/* RGB through the forward gamma curve to packed CbYCr 4:2:2. */
ORVCC_API OrvStatus orviRGBToCbYCr422Gamma_8u_C3C2R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);

/* RGB to YCbCr 4:2:0, three planes or luma plus interleaved CbCr. */
ORVCC_API OrvStatus orviRGBToYCbCr420_8u_C3P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYCbCr420_8u_C3P2R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDstY, int dstYStep, Orv8u* pDstUV, int dstUVStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYCbCr420_8u_C4P2R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDstY, int dstYStep, Orv8u* pDstUV, int dstUVStep, RoiSize roiSize);

/* BGR to YCbCr 4:2:0, three planes or luma plus interleaved CbCr. */
ORVCC_API OrvStatus orviBGRToYCbCr420_8u_C3P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviBGRToYCbCr420_8u_AC4P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviBGRToYCbCr420_8u_C3P2R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDstY, int dstYStep, Orv8u* pDstUV, int dstUVStep, RoiSize roiSize);
ORVCC_API OrvStatus orviBGRToYCbCr420_8u_AC4P2R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDstY, int dstYStep, Orv8u* pDstUV, int dstUVStep, RoiSize roiSize);

/* RGB with alpha to YCrCb 4:2:0 planes. */
ORVCC_API OrvStatus orviRGBToYCrCb420_8u_AC4P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);

/* BGR to YCrCb 4:2:0 planes. */
ORVCC_API OrvStatus orviBGRToYCrCb420_8u_C3P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviBGRToYCrCb420_8u_AC4P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);

/* BGR to YCbCr 4:1:1 planes. */
ORVCC_API OrvStatus orviBGRToYCbCr411_8u_C3P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviBGRToYCbCr411_8u_AC4P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);

/* YCbCr 4:2:2 to RGB, chroma repeated over each pixel pair. */
ORVCC_API OrvStatus orviYCbCr422ToRGB_8u_P3C3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr422ToRGB_8u_C2C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr422ToRGB_8u_C2C4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, Orv8u alpha);
ORVCC_API OrvStatus orviYCbCr422ToRGB_8u_C2P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep, RoiSize roiSize);

/* YCbCr 4:2:2 to BGR. */
ORVCC_API OrvStatus orviYCbCr422ToBGR_8u_P3C3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr422ToBGR_8u_C2C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr422ToBGR_8u_C2C4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, Orv8u alpha);

/* Packed YCrCb 4:2:2 to RGB. */
ORVCC_API OrvStatus orviYCrCb422ToRGB_8u_C2C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCrCb422ToRGB_8u_C2C4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, Orv8u alpha);
ORVCC_API OrvStatus orviYCrCb422ToRGB_8u_C2P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep, RoiSize roiSize);

/* Packed YCrCb 4:2:2 to BGR. */
ORVCC_API OrvStatus orviYCrCb422ToBGR_8u_C2C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCrCb422ToBGR_8u_C2C4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, Orv8u alpha);

/* Packed CbYCr 4:2:2 to RGB. */
ORVCC_API OrvStatus orviCbYCr422ToRGB_8u_C2C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);

/* Packed CbYCr 4:2:2 to BGR with a constant alpha. */
ORVCC_API OrvStatus orviCbYCr422ToBGR_8u_C2C4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, Orv8u alpha);

/* YCbCr 4:2:0, three planes or luma plus CbCr, to RGB. */
ORVCC_API OrvStatus orviYCbCr420ToRGB_8u_P3C3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr420ToRGB_8u_P2C3R(const Orv8u* pSrcY, int srcYStep,
    const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr420ToRGB_8u_P2C4R(const Orv8u* pSrcY, int srcYStep,
    const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst, int dstStep, RoiSize roiSize,
    Orv8u alpha);

/* YCbCr 4:2:0, three planes or luma plus CbCr, to BGR. */
ORVCC_API OrvStatus orviYCbCr420ToBGR_8u_P3C3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr420ToBGR_8u_P3C4R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst, int dstStep, RoiSize roiSize, Orv8u alpha);
ORVCC_API OrvStatus orviYCbCr420ToBGR_8u_P2C3R(const Orv8u* pSrcY, int srcYStep,
    const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr420ToBGR_8u_P2C4R(const Orv8u* pSrcY, int srcYStep,
    const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst, int dstStep, RoiSize roiSize,
    Orv8u alpha);

/* YCrCb 4:2:0, three planes or luma plus CrCb, to RGB. */
ORVCC_API OrvStatus orviYCrCb420ToRGB_8u_P3C4R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst, int dstStep, RoiSize roiSize, Orv8u alpha);
ORVCC_API OrvStatus orviYCrCb420ToRGB_8u_P2C3R(const Orv8u* pSrcY, int srcYStep,
    const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCrCb420ToRGB_8u_P2C4R(const Orv8u* pSrcY, int srcYStep,
    const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst, int dstStep, RoiSize roiSize,
    Orv8u alpha);

/* Luma plus interleaved CrCb 4:2:0 to BGR. */
ORVCC_API OrvStatus orviYCrCb420ToBGR_8u_P2C3R(const Orv8u* pSrcY, int srcYStep,
    const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCrCb420ToBGR_8u_P2C4R(const Orv8u* pSrcY, int srcYStep,
    const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst, int dstStep, RoiSize roiSize,
    Orv8u alpha);

/* YCrCb 4:2:0 planes to BGR with chroma interpolated along the row. */
ORVCC_API OrvStatus orviYCrCb420ToBGR_Filter_8u_P3C4R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst, int dstStep, RoiSize roiSize, Orv8u alpha);

/* YCbCr 4:1:1 planes to BGR. */
ORVCC_API OrvStatus orviYCbCr411ToBGR_8u_P3C3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr411ToBGR_8u_P3C4R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst, int dstStep, RoiSize roiSize, Orv8u alpha);

/* BGR to packed CbYCr 4:2:2, BT.709 weights, full-scale luma kept in 1..254. */
ORVCC_API OrvStatus orviBGRToCbYCr422_709HDTV_8u_C3C2R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviBGRToCbYCr422_709HDTV_8u_AC4C2R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);

/* BGR with alpha to YCbCr 4:2:0 planes, BT.709 weights, full-scale luma. */
ORVCC_API OrvStatus orviBGRToYCbCr420_709HDTV_8u_AC4P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);

/* BGR to studio-range BT.709 YCbCr 4:2:0, three planes or luma plus CbCr. */
ORVCC_API OrvStatus orviBGRToYCbCr420_709CSC_8u_C3P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviBGRToYCbCr420_709CSC_8u_AC4P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviBGRToYCbCr420_709CSC_8u_C3P2R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDstY, int dstYStep, Orv8u* pDstUV, int dstUVStep, RoiSize roiSize);
ORVCC_API OrvStatus orviBGRToYCbCr420_709CSC_8u_AC4P2R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDstY, int dstYStep, Orv8u* pDstUV, int dstUVStep, RoiSize roiSize);

/* BGR to studio-range BT.709 YCrCb 4:2:0 planes. */
ORVCC_API OrvStatus orviBGRToYCrCb420_709CSC_8u_C3P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviBGRToYCrCb420_709CSC_8u_AC4P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);

/* Packed CbYCr 4:2:2 with BT.709 weights and full-scale luma to BGR. */
ORVCC_API OrvStatus orviCbYCr422ToBGR_709HDTV_8u_C2C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviCbYCr422ToBGR_709HDTV_8u_C2C4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, Orv8u alpha);

/* YCbCr 4:2:0 planes with BT.709 weights and full-scale luma to BGR. */
ORVCC_API OrvStatus orviYCbCr420ToBGR_709HDTV_8u_P3C4R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst, int dstStep, RoiSize roiSize, Orv8u alpha);

/* Studio-range BT.709 YCbCr 4:2:0 planes to BGR. */
ORVCC_API OrvStatus orviYCbCr420ToBGR_709CSC_8u_P3C3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst, int dstStep, RoiSize roiSize);

/* Studio-range BT.709 YCbCr planes at full resolution to BGR. */
ORVCC_API OrvStatus orviYCbCrToBGR_709CSC_8u_P3C3R(const Orv8u* const pSrc[3],
    int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCrToBGR_709CSC_8u_P3C4R(const Orv8u* const pSrc[3],
    int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize, Orv8u alpha);

/* Ten-bit v210 4:2:2 words to 5-6-5 RGB words (R in the low bits). */
ORVCC_API OrvStatus orviYUV422v210ToRGB_709HDTV_32u16u_C3(const Orv32u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);

/* Ten-bit v210 4:2:2 words to 5-6-5 BGR words (B in the low bits). */
ORVCC_API OrvStatus orviYUV422v210ToBGR_709HDTV_32u16u_C3(const Orv32u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);

/* Ten-bit v210 4:2:2 words to their ten-bit luma samples. */
ORVCC_API OrvStatus orviYUV422v210ToGray_709HDTV_32u16u_C3C1(const Orv32u* pSrc,
    int srcStep, Orv16u* pDst, int dstStep, RoiSize roiSize);

/* RGB to YCoCg planes with chroma biased by 128; one step for all planes. */
ORVCC_API OrvStatus orviRGBToYCoCg_8u_C3P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep, RoiSize roiSize);

/* Biased YCoCg planes to RGB. */
ORVCC_API OrvStatus orviYCoCgToRGB_8u_P3C3R(const Orv8u* const pSrc[3], int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);

/* BGR or BGRA bytes to 16-bit YCoCg planes. */
ORVCC_API OrvStatus orviBGRToYCoCg_8u16s_C3P3R(const Orv8u* pSrc, int srcStep,
    Orv16s* pDst[3], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviBGRToYCoCg_8u16s_C4P3R(const Orv8u* pSrc, int srcStep,
    Orv16s* pDst[3], int dstStep, RoiSize roiSize);

/* 16-bit YCoCg planes to BGR or BGRA bytes. */
ORVCC_API OrvStatus orviYCoCgToBGR_16s8u_P3C3R(const Orv16s* const pSrc[3], int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCoCgToBGR_16s8u_P3C4R(const Orv16s* const pSrc[3], int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, Orv8u alpha);

/* Signed 16-bit BGR or BGRA to YCoCg planes. */
ORVCC_API OrvStatus orviSBGRToYCoCg_16s_C3P3R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst[3], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviSBGRToYCoCg_16s_C4P3R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst[3], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviSBGRToYCoCg_16s32s_C3P3R(const Orv16s* pSrc, int srcStep,
    Orv32s* pDst[3], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviSBGRToYCoCg_16s32s_C4P3R(const Orv16s* pSrc, int srcStep,
    Orv32s* pDst[3], int dstStep, RoiSize roiSize);

/* YCoCg planes to signed 16-bit BGR or BGRA. */
ORVCC_API OrvStatus orviYCoCgToSBGR_16s_P3C3R(const Orv16s* const pSrc[3], int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCoCgToSBGR_16s_P3C4R(const Orv16s* const pSrc[3], int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize, Orv16s alpha);
ORVCC_API OrvStatus orviYCoCgToSBGR_32s16s_P3C3R(const Orv32s* const pSrc[3], int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCoCgToSBGR_32s16s_P3C4R(const Orv32s* const pSrc[3], int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize, Orv16s alpha);

/* BGR or BGRA bytes to reversible (lifting) YCoCg planes. */
ORVCC_API OrvStatus orviBGRToYCoCg_Rev_8u16s_C3P3R(const Orv8u* pSrc, int srcStep,
    Orv16s* pDst[3], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviBGRToYCoCg_Rev_8u16s_C4P3R(const Orv8u* pSrc, int srcStep,
    Orv16s* pDst[3], int dstStep, RoiSize roiSize);

/* Reversible YCoCg planes to BGR or BGRA bytes. */
ORVCC_API OrvStatus orviYCoCgToBGR_Rev_16s8u_P3C3R(const Orv16s* const pSrc[3],
    int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCoCgToBGR_Rev_16s8u_P3C4R(const Orv16s* const pSrc[3],
    int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize, Orv8u alpha);

/* Signed 16-bit BGR or BGRA to reversible YCoCg planes. */
ORVCC_API OrvStatus orviSBGRToYCoCg_Rev_16s_C3P3R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst[3], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviSBGRToYCoCg_Rev_16s_C4P3R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst[3], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviSBGRToYCoCg_Rev_16s32s_C3P3R(const Orv16s* pSrc, int srcStep,
    Orv32s* pDst[3], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviSBGRToYCoCg_Rev_16s32s_C4P3R(const Orv16s* pSrc, int srcStep,
    Orv32s* pDst[3], int dstStep, RoiSize roiSize);

/* Reversible YCoCg planes to signed 16-bit BGR or BGRA. */
ORVCC_API OrvStatus orviYCoCgToSBGR_Rev_16s_P3C3R(const Orv16s* const pSrc[3],
    int srcStep, Orv16s* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCoCgToSBGR_Rev_16s_P3C4R(const Orv16s* const pSrc[3],
    int srcStep, Orv16s* pDst, int dstStep, RoiSize roiSize, Orv16s alpha);
ORVCC_API OrvStatus orviYCoCgToSBGR_Rev_32s16s_P3C3R(const Orv32s* const pSrc[3],
    int srcStep, Orv16s* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCoCgToSBGR_Rev_32s16s_P3C4R(const Orv32s* const pSrc[3],
    int srcStep, Orv16s* pDst, int dstStep, RoiSize roiSize, Orv16s alpha);

/* ---- chroma formats and video layouts --------------------------------- */

/* YCbCr 4:2:0 between three planes and luma plus interleaved CbCr. */
ORVCC_API OrvStatus orviYCbCr420_8u_P2P3R(const Orv8u* pSrcY, int srcYStep,
    const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr420_8u_P3P2R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDstY, int dstYStep, Orv8u* pDstUV, int dstUVStep,
    RoiSize roiSize);

/* YCbCr 4:1:1 between three planes and luma plus interleaved CbCr. */
ORVCC_API OrvStatus orviYCbCr411_8u_P2P3R(const Orv8u* pSrcY, int srcYStep,
    const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr411_8u_P3P2R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDstY, int dstYStep, Orv8u* pDstUV, int dstUVStep,
    RoiSize roiSize);

/* YCbCr 4:2:2 between packed Y0 Cb Y1 Cr and three planes. */
ORVCC_API OrvStatus orviYCbCr422_8u_P3C2R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr422_8u_C2P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);

/* Luma plus interleaved chroma 4:2:0 to three planes, byte 0 of a pair to plane 1. */
ORVCC_API OrvStatus orviYCbCr420ToYCrCb420_8u_P2P3R(const Orv8u* pSrcY, int srcYStep,
    const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);

/* Three 4:2:0 planes to luma plus interleaved chroma, plane 2 first in a pair. */
ORVCC_API OrvStatus orviYCrCb420ToYCbCr420_8u_P3P2R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDstY, int dstYStep, Orv8u* pDstUV, int dstUVStep,
    RoiSize roiSize);

/* YCbCr 4:2:2, packed or planar, to packed Cb Y0 Cr Y1. */
ORVCC_API OrvStatus orviYCbCr422ToCbYCr422_8u_P3C2R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr422ToCbYCr422_8u_C2R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);

/* Packed Cb Y0 Cr Y1 to YCbCr 4:2:2, packed or planar. */
ORVCC_API OrvStatus orviCbYCr422ToYCbCr422_8u_C2R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviCbYCr422ToYCbCr422_8u_C2P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);

/* YCbCr 4:2:2, packed or planar, to packed Y0 Cr Y1 Cb. */
ORVCC_API OrvStatus orviYCbCr422ToYCrCb422_8u_P3C2R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr422ToYCrCb422_8u_C2R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);

/* Packed Y0 Cr Y1 Cb to YCbCr 4:2:2 planes. */
ORVCC_API OrvStatus orviYCrCb422ToYCbCr422_8u_C2P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);

/* YCbCr 4:2:2 to 4:2:0, odd chroma rows dropped. */
ORVCC_API OrvStatus orviYCbCr422ToYCbCr420_8u_P3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr422ToYCbCr420_8u_C2P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr422ToYCbCr420_8u_C2P2R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDstY, int dstYStep, Orv8u* pDstUV, int dstUVStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr422ToYCbCr420_8u_P3P2R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDstY, int dstYStep, Orv8u* pDstUV, int dstUVStep,
    RoiSize roiSize);

/* Packed CbYCr 4:2:2 to YCbCr 4:2:0, odd chroma rows dropped. */
ORVCC_API OrvStatus orviCbYCr422ToYCbCr420_8u_C2P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviCbYCr422ToYCbCr420_8u_C2P2R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDstY, int dstYStep, Orv8u* pDstUV, int dstUVStep, RoiSize roiSize);

/* Packed CbYCr 4:2:2 to YCrCb 4:2:0 planes. */
ORVCC_API OrvStatus orviCbYCr422ToYCrCb420_8u_C2P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);

/* Packed YCbCr 4:2:2 to YCrCb 4:2:0. */
ORVCC_API OrvStatus orviYCbCr422ToYCrCb420_8u_C2P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr422ToYCrCb420_8u_C2P2R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDstY, int dstYStep, Orv8u* pDstUV, int dstUVStep, RoiSize roiSize);

/* Packed YCrCb 4:2:2 to YCbCr 4:2:0 planes. */
ORVCC_API OrvStatus orviYCrCb422ToYCbCr420_8u_C2P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);

/* YCbCr 4:2:0 to 4:2:2, chroma rows repeated. */
ORVCC_API OrvStatus orviYCbCr420ToYCbCr422_8u_P3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr420ToYCbCr422_8u_P2P3R(const Orv8u* pSrcY, int srcYStep,
    const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr420ToYCbCr422_8u_P2C2R(const Orv8u* pSrcY, int srcYStep,
    const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst, int dstStep, RoiSize roiSize);

/* Luma plus interleaved CbCr 4:2:0 to packed CbYCr 4:2:2. */
ORVCC_API OrvStatus orviYCbCr420ToCbYCr422_8u_P2C2R(const Orv8u* pSrcY, int srcYStep,
    const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst, int dstStep, RoiSize roiSize);

/* YCrCb 4:2:0 planes to YCbCr 4:2:2, chroma rows repeated. */
ORVCC_API OrvStatus orviYCrCb420ToYCbCr422_8u_P3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviYCrCb420ToYCbCr422_8u_P3C2R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst, int dstStep, RoiSize roiSize);

/* YCrCb 4:2:0 planes to packed CbYCr 4:2:2. */
ORVCC_API OrvStatus orviYCrCb420ToCbYCr422_8u_P3C2R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst, int dstStep, RoiSize roiSize);

/* YCbCr 4:2:2 to 4:1:1, odd chroma columns dropped. */
ORVCC_API OrvStatus orviYCbCr422ToYCbCr411_8u_P3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr422ToYCbCr411_8u_C2P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr422ToYCbCr411_8u_C2P2R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDstY, int dstYStep, Orv8u* pDstUV, int dstUVStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr422ToYCbCr411_8u_P3P2R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDstY, int dstYStep, Orv8u* pDstUV, int dstUVStep,
    RoiSize roiSize);

/* Packed CbYCr 4:2:2 to YCbCr 4:1:1 planes. */
ORVCC_API OrvStatus orviCbYCr422ToYCbCr411_8u_C2P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);

/* Packed YCrCb 4:2:2 to YCbCr 4:1:1 planes. */
ORVCC_API OrvStatus orviYCrCb422ToYCbCr411_8u_C2P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);

/* YCbCr 4:1:1 to 4:2:2, chroma samples repeated. */
ORVCC_API OrvStatus orviYCbCr411ToYCbCr422_8u_P3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr411ToYCbCr422_8u_P3C2R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr411ToYCbCr422_8u_P2P3R(const Orv8u* pSrcY, int srcYStep,
    const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr411ToYCbCr422_8u_P2C2R(const Orv8u* pSrcY, int srcYStep,
    const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst, int dstStep, RoiSize roiSize);

/* YCbCr 4:1:1 planes to YCrCb 4:2:2, planar or packed. */
ORVCC_API OrvStatus orviYCbCr411ToYCrCb422_8u_P3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr411ToYCrCb422_8u_P3C2R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst, int dstStep, RoiSize roiSize);

/* YCbCr 4:1:1 to 4:2:0, chroma rows folded into columns without loss. */
ORVCC_API OrvStatus orviYCbCr411ToYCbCr420_8u_P3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr411ToYCbCr420_8u_P2P3R(const Orv8u* pSrcY, int srcYStep,
    const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr411ToYCbCr420_8u_P3P2R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDstY, int dstYStep, Orv8u* pDstUV, int dstUVStep,
    RoiSize roiSize);

/* Luma plus interleaved CbCr 4:1:1 to YCrCb 4:2:0 planes. */
ORVCC_API OrvStatus orviYCbCr411ToYCrCb420_8u_P2P3R(const Orv8u* pSrcY, int srcYStep,
    const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);

/* YCbCr 4:2:0 to 4:1:1, the exact inverse of the fold above. */
ORVCC_API OrvStatus orviYCbCr420ToYCbCr411_8u_P2P3R(const Orv8u* pSrcY, int srcYStep,
    const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr420ToYCbCr411_8u_P3P2R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDstY, int dstYStep, Orv8u* pDstUV, int dstUVStep,
    RoiSize roiSize);

/* YCrCb 4:2:0 planes to luma plus interleaved CbCr 4:1:1. */
ORVCC_API OrvStatus orviYCrCb420ToYCbCr411_8u_P3P2R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDstY, int dstYStep, Orv8u* pDstUV, int dstUVStep,
    RoiSize roiSize);

/* YCbCr 4:2:0 planes to 4:1:1 planes, new chroma rows averaged. */
ORVCC_API OrvStatus orviYCbCr420To411_8u_P3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);

/* YCbCr 4:1:1 planes to 4:2:0 planes, new chroma columns averaged. */
ORVCC_API OrvStatus orviYCbCr411To420_8u_P3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);

/* YCbCr 4:2:0 planes to one chroma sample per 4x4 block. */
ORVCC_API OrvStatus orviYCbCr420To1620_8u_P3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);

/* One chroma sample per 4x4 block to 4:2:0 planes, bilinear. */
ORVCC_API OrvStatus orviYCbCr1620To420_8u_P3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);

/* YCbCr 4:2:0 to 4:2:2 planes, odd chroma rows from a four-tap filter. */
ORVCC_API OrvStatus orviYCbCr420ToYCbCr422_Filter_8u_P3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);
ORVCC_API OrvStatus orviYCbCr420ToYCbCr422_Filter_8u_P2P3R(const Orv8u* pSrcY,
    int srcYStep, const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst[3], int dstStep[3],
    RoiSize roiSize);

/* YCrCb 4:2:0 planes to YCbCr 4:2:2 planes with the four-tap filter. */
ORVCC_API OrvStatus orviYCrCb420ToYCbCr422_Filter_8u_P3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);

/* Interlaced YCbCr 4:2:0 to 4:2:2 planes, each field by itself. */
ORVCC_API OrvStatus orviYCbCr420To422_Interlace_8u_P3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);

/* Interlaced YCbCr 4:2:0 planes to packed CbYCr 4:2:2. */
ORVCC_API OrvStatus orviYCbCr420ToCbYCr422_Interlace_8u_P3C2R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst, int dstStep, RoiSize roiSize);

/* Interlaced YCbCr 4:2:2 to 4:2:0 planes, each field by itself. */
ORVCC_API OrvStatus orviYCbCr422To420_Interlace_8u_P3R(const Orv8u* const pSrc[3],
    const int srcStep[3], Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);

/* Interlaced packed CbYCr 4:2:2 to YCbCr 4:2:0 planes. */
ORVCC_API OrvStatus orviCbYCr422ToYCbCr420_Interlace_8u_C2P3R(const Orv8u* pSrc,
    int srcStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize);

/* Interlaced luma plus CbCr 4:2:0 to progressive planes, in one call or slices. */
ORVCC_API OrvStatus orviYCbCr420ToYCrCb420_Filter_8u_P2P3R(const Orv8u* pSrcY,
    int srcYStep, const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst[3], int dstStep[3],
    RoiSize roiSize, int sliceFlag);

/* Interlaced luma plus CbCr 4:2:0 to progressive packed 4:2:2, one call or slices. */
ORVCC_API OrvStatus orviYCbCr420ToYCbCr422_Filter_8u_P2C2R(const Orv8u* pSrcY,
    int srcYStep, const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst, int dstStep,
    RoiSize roiSize, int sliceFlag);

/* ---- device-independent and perceptual models ------------------------- */

/* Linear RGB to CIE XYZ (D65). */
ORVCC_API OrvStatus orviRGBToXYZ_8u_C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToXYZ_8u_AC4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToXYZ_16u_C3R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToXYZ_16u_AC4R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToXYZ_16s_C3R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToXYZ_16s_AC4R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToXYZ_32f_C3R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToXYZ_32f_AC4R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);

/* CIE XYZ to linear RGB. */
ORVCC_API OrvStatus orviXYZToRGB_8u_C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviXYZToRGB_8u_AC4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviXYZToRGB_16u_C3R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviXYZToRGB_16u_AC4R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviXYZToRGB_16s_C3R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviXYZToRGB_16s_AC4R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviXYZToRGB_32f_C3R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviXYZToRGB_32f_AC4R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);

/* RGB to CIE L*u*v*. */
ORVCC_API OrvStatus orviRGBToLUV_8u_C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToLUV_8u_AC4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToLUV_16u_C3R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToLUV_16u_AC4R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToLUV_16s_C3R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToLUV_16s_AC4R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToLUV_32f_C3R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToLUV_32f_AC4R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);

/* BGR to CIE L*u*v*. */
ORVCC_API OrvStatus orviBGRToLUV_8u_C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviBGRToLUV_32f_C3R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);

/* CIE L*u*v* to RGB. */
ORVCC_API OrvStatus orviLUVToRGB_8u_C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviLUVToRGB_8u_AC4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviLUVToRGB_16u_C3R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviLUVToRGB_16u_AC4R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviLUVToRGB_16s_C3R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviLUVToRGB_16s_AC4R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviLUVToRGB_32f_C3R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviLUVToRGB_32f_AC4R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);

/* CIE L*u*v* to BGR. */
ORVCC_API OrvStatus orviLUVToBGR_8u_C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviLUVToBGR_32f_C3R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);

/* RGB to CIE L*a*b*. */
ORVCC_API OrvStatus orviRGBToLab_8u_C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToLab_32f_C3R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);

/* BGR to CIE L*a*b*; 8u16u writes 16-bit Lab. */
ORVCC_API OrvStatus orviBGRToLab_8u_C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviBGRToLab_8u16u_C3R(const Orv8u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviBGRToLab_32f_C3R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);

/* CIE L*a*b* to RGB. */
ORVCC_API OrvStatus orviLabToRGB_8u_C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviLabToRGB_32f_C3R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);

/* CIE L*a*b* to BGR; 16u8u reads 16-bit Lab. */
ORVCC_API OrvStatus orviLabToBGR_8u_C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviLabToBGR_16u8u_C3R(const Orv16u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviLabToBGR_32f_C3R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);

/* RGB to photo YCC. */
ORVCC_API OrvStatus orviRGBToYCC_8u_C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYCC_8u_AC4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYCC_16u_C3R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYCC_16u_AC4R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYCC_16s_C3R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYCC_16s_AC4R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYCC_32f_C3R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToYCC_32f_AC4R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);

/* Photo YCC to RGB. */
ORVCC_API OrvStatus orviYCCToRGB_8u_C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCCToRGB_8u_AC4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCCToRGB_16u_C3R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCCToRGB_16u_AC4R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCCToRGB_16s_C3R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCCToRGB_16s_AC4R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCCToRGB_32f_C3R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviYCCToRGB_32f_AC4R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);

/* RGB to hue, lightness, saturation. */
ORVCC_API OrvStatus orviRGBToHLS_8u_C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToHLS_8u_AC4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToHLS_16u_C3R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToHLS_16u_AC4R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToHLS_16s_C3R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToHLS_16s_AC4R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToHLS_32f_C3R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToHLS_32f_AC4R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);

/* Hue, lightness, saturation to RGB. */
ORVCC_API OrvStatus orviHLSToRGB_8u_C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviHLSToRGB_8u_AC4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviHLSToRGB_16u_C3R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviHLSToRGB_16u_AC4R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviHLSToRGB_16s_C3R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviHLSToRGB_16s_AC4R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviHLSToRGB_32f_C3R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviHLSToRGB_32f_AC4R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize);

/* BGR to HLS, interleaved or planar; planar sides share one step. */
ORVCC_API OrvStatus orviBGRToHLS_8u_AC4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviBGRToHLS_8u_P3R(const Orv8u* const pSrc[3], int srcStep,
    Orv8u* pDst[3], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviBGRToHLS_8u_AP4R(const Orv8u* const pSrc[4], int srcStep,
    Orv8u* pDst[4], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviBGRToHLS_8u_C3P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviBGRToHLS_8u_AC4P4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[4], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviBGRToHLS_8u_P3C3R(const Orv8u* const pSrc[3], int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviBGRToHLS_8u_AP4C4R(const Orv8u* const pSrc[4], int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);

/* HLS to BGR, planar or mixed; planar sides share one step. */
ORVCC_API OrvStatus orviHLSToBGR_8u_P3R(const Orv8u* const pSrc[3], int srcStep,
    Orv8u* pDst[3], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviHLSToBGR_8u_AP4R(const Orv8u* const pSrc[4], int srcStep,
    Orv8u* pDst[4], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviHLSToBGR_8u_C3P3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[3], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviHLSToBGR_8u_AC4P4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst[4], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviHLSToBGR_8u_P3C3R(const Orv8u* const pSrc[3], int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviHLSToBGR_8u_AP4C4R(const Orv8u* const pSrc[4], int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);

/* RGB to hue, saturation, value. */
ORVCC_API OrvStatus orviRGBToHSV_8u_C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToHSV_8u_AC4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToHSV_16u_C3R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviRGBToHSV_16u_AC4R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);

/* Hue, saturation, value to RGB. */
ORVCC_API OrvStatus orviHSVToRGB_8u_C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviHSVToRGB_8u_AC4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviHSVToRGB_16u_C3R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviHSVToRGB_16u_AC4R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);

/* ---- tone and colour correction --------------------------------------- */

/* Linear to gamma-corrected values, BT.709 curve; 32f over [vMin, vMax]. */
ORVCC_API OrvStatus orviGammaFwd_8u_C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviGammaFwd_8u_C3IR(Orv8u* pSrcDst, int srcDstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviGammaFwd_8u_AC4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviGammaFwd_8u_AC4IR(Orv8u* pSrcDst, int srcDstStep,
    RoiSize roiSize);
ORVCC_API OrvStatus orviGammaFwd_8u_P3R(const Orv8u* const pSrc[3], int srcStep,
    Orv8u* pDst[3], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviGammaFwd_8u_IP3R(Orv8u* pSrcDst[3], int srcDstStep,
    RoiSize roiSize);
ORVCC_API OrvStatus orviGammaFwd_16u_C3R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviGammaFwd_16u_C3IR(Orv16u* pSrcDst, int srcDstStep,
    RoiSize roiSize);
ORVCC_API OrvStatus orviGammaFwd_16u_AC4R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviGammaFwd_16u_AC4IR(Orv16u* pSrcDst, int srcDstStep,
    RoiSize roiSize);
ORVCC_API OrvStatus orviGammaFwd_16u_P3R(const Orv16u* const pSrc[3], int srcStep,
    Orv16u* pDst[3], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviGammaFwd_16u_IP3R(Orv16u* pSrcDst[3], int srcDstStep,
    RoiSize roiSize);
ORVCC_API OrvStatus orviGammaFwd_32f_C3R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize, Orv32f vMin, Orv32f vMax);
ORVCC_API OrvStatus orviGammaFwd_32f_C3IR(Orv32f* pSrcDst, int srcDstStep,
    RoiSize roiSize, Orv32f vMin, Orv32f vMax);
ORVCC_API OrvStatus orviGammaFwd_32f_AC4R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize, Orv32f vMin, Orv32f vMax);
ORVCC_API OrvStatus orviGammaFwd_32f_AC4IR(Orv32f* pSrcDst, int srcDstStep,
    RoiSize roiSize, Orv32f vMin, Orv32f vMax);
ORVCC_API OrvStatus orviGammaFwd_32f_P3R(const Orv32f* const pSrc[3], int srcStep,
    Orv32f* pDst[3], int dstStep, RoiSize roiSize, Orv32f vMin, Orv32f vMax);
ORVCC_API OrvStatus orviGammaFwd_32f_IP3R(Orv32f* pSrcDst[3], int srcDstStep,
    RoiSize roiSize, Orv32f vMin, Orv32f vMax);

/* Gamma-corrected to linear values, BT.709 curve; 32f over [vMin, vMax]. */
ORVCC_API OrvStatus orviGammaInv_8u_C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviGammaInv_8u_C3IR(Orv8u* pSrcDst, int srcDstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviGammaInv_8u_AC4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviGammaInv_8u_AC4IR(Orv8u* pSrcDst, int srcDstStep,
    RoiSize roiSize);
ORVCC_API OrvStatus orviGammaInv_8u_P3R(const Orv8u* const pSrc[3], int srcStep,
    Orv8u* pDst[3], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviGammaInv_8u_IP3R(Orv8u* pSrcDst[3], int srcDstStep,
    RoiSize roiSize);
ORVCC_API OrvStatus orviGammaInv_16u_C3R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviGammaInv_16u_C3IR(Orv16u* pSrcDst, int srcDstStep,
    RoiSize roiSize);
ORVCC_API OrvStatus orviGammaInv_16u_AC4R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviGammaInv_16u_AC4IR(Orv16u* pSrcDst, int srcDstStep,
    RoiSize roiSize);
ORVCC_API OrvStatus orviGammaInv_16u_P3R(const Orv16u* const pSrc[3], int srcStep,
    Orv16u* pDst[3], int dstStep, RoiSize roiSize);
ORVCC_API OrvStatus orviGammaInv_16u_IP3R(Orv16u* pSrcDst[3], int srcDstStep,
    RoiSize roiSize);
ORVCC_API OrvStatus orviGammaInv_32f_C3R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize, Orv32f vMin, Orv32f vMax);
ORVCC_API OrvStatus orviGammaInv_32f_C3IR(Orv32f* pSrcDst, int srcDstStep,
    RoiSize roiSize, Orv32f vMin, Orv32f vMax);
ORVCC_API OrvStatus orviGammaInv_32f_AC4R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize, Orv32f vMin, Orv32f vMax);
ORVCC_API OrvStatus orviGammaInv_32f_AC4IR(Orv32f* pSrcDst, int srcDstStep,
    RoiSize roiSize, Orv32f vMin, Orv32f vMax);
ORVCC_API OrvStatus orviGammaInv_32f_P3R(const Orv32f* const pSrc[3], int srcStep,
    Orv32f* pDst[3], int dstStep, RoiSize roiSize, Orv32f vMin, Orv32f vMax);
ORVCC_API OrvStatus orviGammaInv_32f_IP3R(Orv32f* pSrcDst[3], int srcDstStep,
    RoiSize roiSize, Orv32f vMin, Orv32f vMax);

/* Integer pixels times a 3x4 float matrix (weights and offset), clamped. */
ORVCC_API OrvStatus orviColorTwist32f_8u_C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, const Orv32f twist[3][4]);
ORVCC_API OrvStatus orviColorTwist32f_8u_C3IR(Orv8u* pSrcDst, int srcDstStep,
    RoiSize roiSize, const Orv32f twist[3][4]);
ORVCC_API OrvStatus orviColorTwist32f_8u_AC4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, const Orv32f twist[3][4]);
ORVCC_API OrvStatus orviColorTwist32f_8u_AC4IR(Orv8u* pSrcDst, int srcDstStep,
    RoiSize roiSize, const Orv32f twist[3][4]);
ORVCC_API OrvStatus orviColorTwist32f_8u_P3R(const Orv8u* const pSrc[3], int srcStep,
    Orv8u* pDst[3], int dstStep, RoiSize roiSize, const Orv32f twist[3][4]);
ORVCC_API OrvStatus orviColorTwist32f_8u_IP3R(Orv8u* pSrcDst[3], int srcDstStep,
    RoiSize roiSize, const Orv32f twist[3][4]);
ORVCC_API OrvStatus orviColorTwist32f_16u_C3R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize, const Orv32f twist[3][4]);
ORVCC_API OrvStatus orviColorTwist32f_16u_C3IR(Orv16u* pSrcDst, int srcDstStep,
    RoiSize roiSize, const Orv32f twist[3][4]);
ORVCC_API OrvStatus orviColorTwist32f_16u_AC4R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize, const Orv32f twist[3][4]);
ORVCC_API OrvStatus orviColorTwist32f_16u_AC4IR(Orv16u* pSrcDst, int srcDstStep,
    RoiSize roiSize, const Orv32f twist[3][4]);
ORVCC_API OrvStatus orviColorTwist32f_16u_P3R(const Orv16u* const pSrc[3], int srcStep,
    Orv16u* pDst[3], int dstStep, RoiSize roiSize, const Orv32f twist[3][4]);
ORVCC_API OrvStatus orviColorTwist32f_16u_IP3R(Orv16u* pSrcDst[3], int srcDstStep,
    RoiSize roiSize, const Orv32f twist[3][4]);
ORVCC_API OrvStatus orviColorTwist32f_16s_C3R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize, const Orv32f twist[3][4]);
ORVCC_API OrvStatus orviColorTwist32f_16s_C3IR(Orv16s* pSrcDst, int srcDstStep,
    RoiSize roiSize, const Orv32f twist[3][4]);
ORVCC_API OrvStatus orviColorTwist32f_16s_AC4R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize, const Orv32f twist[3][4]);
ORVCC_API OrvStatus orviColorTwist32f_16s_AC4IR(Orv16s* pSrcDst, int srcDstStep,
    RoiSize roiSize, const Orv32f twist[3][4]);
ORVCC_API OrvStatus orviColorTwist32f_16s_P3R(const Orv16s* const pSrc[3], int srcStep,
    Orv16s* pDst[3], int dstStep, RoiSize roiSize, const Orv32f twist[3][4]);
ORVCC_API OrvStatus orviColorTwist32f_16s_IP3R(Orv16s* pSrcDst[3], int srcDstStep,
    RoiSize roiSize, const Orv32f twist[3][4]);

/* Float pixels times a 3x4 matrix, or a 4x4 matrix for C4, unclamped. */
ORVCC_API OrvStatus orviColorTwist_32f_C3R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize, const Orv32f twist[3][4]);
ORVCC_API OrvStatus orviColorTwist_32f_C3IR(Orv32f* pSrcDst, int srcDstStep,
    RoiSize roiSize, const Orv32f twist[3][4]);
ORVCC_API OrvStatus orviColorTwist_32f_AC4R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize, const Orv32f twist[3][4]);
ORVCC_API OrvStatus orviColorTwist_32f_AC4IR(Orv32f* pSrcDst, int srcDstStep,
    RoiSize roiSize, const Orv32f twist[3][4]);
ORVCC_API OrvStatus orviColorTwist_32f_C4R(const Orv32f* pSrc, int srcStep,
    Orv32f* pDst, int dstStep, RoiSize roiSize, const Orv32f twist[4][4]);
ORVCC_API OrvStatus orviColorTwist_32f_P3R(const Orv32f* const pSrc[3], int srcStep,
    Orv32f* pDst[3], int dstStep, RoiSize roiSize, const Orv32f twist[3][4]);
ORVCC_API OrvStatus orviColorTwist_32f_IP3R(Orv32f* pSrcDst[3], int srcDstStep,
    RoiSize roiSize, const Orv32f twist[3][4]);

/* Float to 8 bits with the largest value mapped to 255. */
ORVCC_API OrvStatus orviToneMapLinear_32f8u_C1R(const Orv32f* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);

/* Float to 8 bits with twice the mean mapped to 255. */
ORVCC_API OrvStatus orviToneMapMean_32f8u_C1R(const Orv32f* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize);

/* ---- bit-depth reduction ---------------------------------------------- */

/* Bytes of work buffer that orviReduceBits_* needs for a row width. */
ORVCC_API OrvStatus orviReduceBitsGetBufferSize(int channels, RoiSize roiSize, int noise,
    OrvDitherType dtype, int* pBufferSize);

/* Fewer output levels, optionally dithered, optionally to a narrower type. */
ORVCC_API OrvStatus orviReduceBits_8u_C1R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype, int levels,
    Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_8u_C3R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype, int levels,
    Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_8u_AC4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype, int levels,
    Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_8u_C4R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype, int levels,
    Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_16u_C1R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype,
    int levels, Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_16u_C3R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype,
    int levels, Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_16u_AC4R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype,
    int levels, Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_16u_C4R(const Orv16u* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype,
    int levels, Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_16u8u_C1R(const Orv16u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype, int levels,
    Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_16u8u_C3R(const Orv16u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype, int levels,
    Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_16u8u_AC4R(const Orv16u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype, int levels,
    Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_16u8u_C4R(const Orv16u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype, int levels,
    Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_16s_C1R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype,
    int levels, Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_16s_C3R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype,
    int levels, Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_16s_AC4R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype,
    int levels, Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_16s_C4R(const Orv16s* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype,
    int levels, Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_16s8u_C1R(const Orv16s* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype, int levels,
    Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_16s8u_C3R(const Orv16s* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype, int levels,
    Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_16s8u_AC4R(const Orv16s* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype, int levels,
    Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_16s8u_C4R(const Orv16s* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype, int levels,
    Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_32f8u_C1R(const Orv32f* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype, int levels,
    Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_32f8u_C3R(const Orv32f* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype, int levels,
    Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_32f8u_AC4R(const Orv32f* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype, int levels,
    Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_32f8u_C4R(const Orv32f* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype, int levels,
    Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_32f16u_C1R(const Orv32f* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype,
    int levels, Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_32f16u_C3R(const Orv32f* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype,
    int levels, Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_32f16u_AC4R(const Orv32f* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype,
    int levels, Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_32f16u_C4R(const Orv32f* pSrc, int srcStep,
    Orv16u* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype,
    int levels, Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_32f16s_C1R(const Orv32f* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype,
    int levels, Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_32f16s_C3R(const Orv32f* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype,
    int levels, Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_32f16s_AC4R(const Orv32f* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype,
    int levels, Orv8u* pBuffer);
ORVCC_API OrvStatus orviReduceBits_32f16s_C4R(const Orv32f* pSrc, int srcStep,
    Orv16s* pDst, int dstStep, RoiSize roiSize, int noise, OrvDitherType dtype,
    int levels, Orv8u* pBuffer);

/* Bytes to one bit per pixel from bit 7 - dstBitOffset % 8; reserved1/2 unused. */
ORVCC_API OrvStatus orviReduceBits_8u1u_C1R(const Orv8u* pSrc, int srcStep,
    Orv8u* pDst, int dstStep, int dstBitOffset, RoiSize roiSize, int reserved1,
    int reserved2, OrvDitherType dtype, Orv8u threshold, Orv8u* pBuffer);

/* ---- demosaicing ------------------------------------------------------ */

/* Sources: origin of the whole mosaic, rectangle in it, mosaic size, step. */

/* Bayer mosaic to RGB, edge-directed bilinear. */
ORVCC_API OrvStatus orviCFAToRGB_8u_C1C3R(const Orv8u* pSrc, OrvRect srcRoi,
    RoiSize srcSize, int srcStep, Orv8u* pDst, int dstStep, OrvBayerGrid grid);
ORVCC_API OrvStatus orviCFAToRGB_16u_C1C3R(const Orv16u* pSrc, OrvRect srcRoi,
    RoiSize srcSize, int srcStep, Orv16u* pDst, int dstStep, OrvBayerGrid grid);

/* Bayer mosaic to BGRA by variable number of gradients; optional B, G, R gains. */
ORVCC_API OrvStatus orviCFAToBGRA_VNG_8u_C1C4R_L(const Orv8u* pSrc, OrvRect srcRoi,
    RoiSize srcSize, int srcStep, const Orv32f scale[3], Orv8u* pDst, int dstStep,
    OrvBayerGrid grid);
ORVCC_API OrvStatus orviCFAToBGRA_VNG_16u_C1C4R_L(const Orv16u* pSrc, OrvRect srcRoi,
    RoiSize srcSize, int srcStep, const Orv32f scale[3], Orv16u* pDst, int dstStep,
    OrvBayerGrid grid);

/* Bayer mosaic to RGB by adaptive homogeneity; pTmp holds 30 rows of tmpStep. */
ORVCC_API OrvStatus orviDemosaicAHD_8u_C1C3R(const Orv8u* pSrc, OrvRect srcRoi,
    RoiSize srcSize, int srcStep, Orv8u* pDst, int dstStep, OrvBayerGrid grid,
    Orv8u* pTmp, int tmpStep);
ORVCC_API OrvStatus orviDemosaicAHD_16u_C1C3R(const Orv16u* pSrc, OrvRect srcRoi,
    RoiSize srcSize, int srcStep, Orv16u* pDst, int dstStep, OrvBayerGrid grid,
    Orv8u* pTmp, int tmpStep);

#ifdef __cplusplus
}
#endif

#endif /* ORVCC_H */
