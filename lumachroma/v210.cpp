// Ten-bit 4:2:2 v210 words to sixteen-bit pixels: the luma samples as they
// are, or a 5-6-5 colour word.
//
// Twelve pixels take eight little-endian 32-bit words of three 10-bit
// samples each (bits 0-9, 10-19, 20-29; the top two bits are ignored), six
// pixels to four words:
//   word 0: Cb0 Y0 Cr0   word 1: Y1 Cb2 Y2   word 2: Cr2 Y3 Cb4   word 3: Y4 Cr4 Y5
// Pixels 2k and 2k + 1 share Cb2k and Cr2k.
//
// Colour, in single precision with u = Cb - 512, v = Cr - 512 and Y as it is:
//   R = fma(1.540, v, Y), G = fma(-0.183, u, fma(-0.459, v, Y)), B = fma(1.816, u, Y)
// rounded to nearest, ties to even (whatever the caller's rounding mode),
// clamped to 0 .. 31, 0 .. 63, 0 .. 31 (no scaling from ten bits: bright
// channels saturate) and packed five, six, five bits from the low end.
//
// A row runs in groups of twelve pixels (the vector path: eight words to
// twelve pixels by word permutes and variable shifts), then the remaining
// pixels one by one, each reading only the words that hold its samples.
#include <immintrin.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "frame/driver.h"
#include "frame/fronts.h"
#include "frame/scalar.h"

namespace h9 {
namespace {

// Where the samples of pixel j (0 .. 11) of a group lie: word and slot.
struct Place {
    int word, slot;
};
constexpr Place yPlace(int j)
{
    constexpr Place half[6] = {{0, 1}, {1, 0}, {1, 2}, {2, 1}, {3, 0}, {3, 2}};
    return {half[j % 6].word + 4 * (j / 6), half[j % 6].slot};
}
constexpr Place cbPlace(int j)
{
    constexpr Place half[3] = {{0, 0}, {1, 1}, {2, 2}};
    const int k = (j / 2) % 3;
    return {half[k].word + 4 * (j / 6), half[k].slot};
}
constexpr Place crPlace(int j)
{
    constexpr Place half[3] = {{0, 2}, {2, 0}, {3, 1}};
    const int k = (j / 2) % 3;
    return {half[k].word + 4 * (j / 6), half[k].slot};
}

inline int sample(const uint8_t* group, Place p)
{
    uint32_t w;
    std::memcpy(&w, group + 4 * p.word, 4);
    return int(w >> (10 * p.slot)) & 0x3FF;
}

constexpr float kRv = 1.540f, kGu = -0.183f, kGv = -0.459f, kBu = 1.816f;

inline int nearestEven(float x) { return _mm_cvtss_si32(_mm_round_ss(_mm_setzero_ps(), _mm_set_ss(x), _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC)); }

// One colour word; Bgr puts B in the low bits.
template <bool Bgr>
inline uint16_t colour(int y, int cb, int cr)
{
    const float fy = float(y), u = float(cb - 512), v = float(cr - 512);
    const int r = std::clamp(nearestEven(fmaf32(kRv, v, fy)), 0, 31);
    const int g = std::clamp(nearestEven(fmaf32(kGu, u, fmaf32(kGv, v, fy))), 0, 63);
    const int b = std::clamp(nearestEven(fmaf32(kBu, u, fy)), 0, 31);
    return uint16_t((Bgr ? b : r) | (g << 5) | ((Bgr ? r : b) << 11));
}

template <int Mode>  // 0 gray, 1 RGB, 2 BGR
inline uint16_t pixel(const uint8_t* group, int j)
{
    const int y = sample(group, yPlace(j));
    if constexpr (Mode == 0)
        return uint16_t(y);
    else
        return colour<Mode == 2>(y, sample(group, cbPlace(j)), sample(group, crPlace(j)));
}

// Lane tables of the vector path: for pixels first .. first + 7 of a group
// (lanes past pixel 11 repeat it), the word of a sample and its shift.
struct Lanes {
    int32_t word[8], shift[8];
};
constexpr Lanes lanesOf(Place (*place)(int), int first)
{
    Lanes l{};
    for (int k = 0; k < 8; ++k) {
        const Place p = place(std::min(first + k, 11));
        l.word[k] = p.word;
        l.shift[k] = 10 * p.slot;
    }
    return l;
}

inline __m256i gather(__m256i words, const Lanes& l)
{
    const __m256i idx = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(l.word));
    const __m256i sh = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(l.shift));
    return _mm256_and_si256(_mm256_srlv_epi32(_mm256_permutevar8x32_epi32(words, idx), sh), _mm256_set1_epi32(0x3FF));
}

// Eight pixels from `first` of the group held in `words`, as 32-bit lanes.
template <int Mode>
inline __m256i eight(__m256i words, int first)
{
    static constexpr Lanes kY[2] = {lanesOf(yPlace, 0), lanesOf(yPlace, 8)};
    static constexpr Lanes kCb[2] = {lanesOf(cbPlace, 0), lanesOf(cbPlace, 8)};
    static constexpr Lanes kCr[2] = {lanesOf(crPlace, 0), lanesOf(crPlace, 8)};
    const int h = first / 8;
    const __m256i y = gather(words, kY[h]);
    if constexpr (Mode == 0) {
        return y;
    } else {
        const __m256 fy = _mm256_cvtepi32_ps(y);
        const __m256 u = _mm256_cvtepi32_ps(_mm256_sub_epi32(gather(words, kCb[h]), _mm256_set1_epi32(512)));
        const __m256 v = _mm256_cvtepi32_ps(_mm256_sub_epi32(gather(words, kCr[h]), _mm256_set1_epi32(512)));
        auto channel = [](__m256 x, int top) {
            const __m256i i = _mm256_cvtps_epi32(_mm256_round_ps(x, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC));
            return _mm256_min_epi32(_mm256_max_epi32(i, _mm256_setzero_si256()), _mm256_set1_epi32(top));
        };
        const __m256i r = channel(_mm256_fmadd_ps(_mm256_set1_ps(kRv), v, fy), 31);
        const __m256i g = channel(_mm256_fmadd_ps(_mm256_set1_ps(kGu), u, _mm256_fmadd_ps(_mm256_set1_ps(kGv), v, fy)), 63);
        const __m256i b = channel(_mm256_fmadd_ps(_mm256_set1_ps(kBu), u, fy), 31);
        const __m256i lowField = Mode == 2 ? b : r, highField = Mode == 2 ? r : b;
        return _mm256_or_si256(_mm256_or_si256(lowField, _mm256_slli_epi32(g, 5)), _mm256_slli_epi32(highField, 11));
    }
}

// 32-bit lanes to 16-bit words in order, in the low half.
inline __m128i narrow(__m256i x)
{
    return _mm256_castsi256_si128(_mm256_permute4x64_epi64(_mm256_packus_epi32(x, x), 0x08));
}

template <int Mode>
void row(const uint8_t* src, uint16_t* dst, int width)
{
    const int groups = width / 12;
    int g = 0;
    if (!g_scalarBlocks) {
        for (; g < groups; ++g) {
            const __m256i words = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + 32 * g));
            uint16_t* d = dst + 12 * g;
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d), narrow(eight<Mode>(words, 0)));
            _mm_storel_epi64(reinterpret_cast<__m128i*>(d + 8), narrow(eight<Mode>(words, 8)));
        }
    }
    for (int i = 12 * g; i < width; ++i) {
        const uint16_t v = pixel<Mode>(src + 32 * (i / 12), i % 12);
        std::memcpy(dst + i, &v, 2);  // rows may start at any byte
    }
}

template <int Mode>
OrvStatus convert(const Orv32u* src, int srcStep, Orv16u* dst, int dstStep, RoiSize roi)
{
    if (!src || !dst)
        return orvStatusNullPointer;
    if (roi.width < 1 || roi.height < 1 || srcStep < 1 || dstStep < 1)
        return orvStatusBadSize;
    for (int y = 0; y < roi.height; ++y)
        row<Mode>(rowAt(reinterpret_cast<const uint8_t*>(src), srcStep, y), rowAt(dst, dstStep, y), roi.width);
    return orvStatusOk;
}

}  // namespace
}  // namespace h9

using namespace h9;

ORV_FRONT(orviYUV422v210ToGray_709HDTV_32u16u_C3C1)(const Orv32u* pSrc, int srcStep, Orv16u* pDst, int dstStep,
                                                   RoiSize roiSize)
{
    return convert<0>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviYUV422v210ToRGB_709HDTV_32u16u_C3)(const Orv32u* pSrc, int srcStep, Orv16u* pDst, int dstStep,
                                                RoiSize roiSize)
{
    return convert<1>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviYUV422v210ToBGR_709HDTV_32u16u_C3)(const Orv32u* pSrc, int srcStep, Orv16u* pDst, int dstStep,
                                                RoiSize roiSize)
{
    return convert<2>(pSrc, srcStep, pDst, dstStep, roiSize);
}
