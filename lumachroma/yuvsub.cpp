// YUV 4:2:2 and 4:2:0 to RGB: one (U, V) sample repeated over the pixel
// pair or 2 by 2 square it stands for, no interpolation. The conversions
// are the full-resolution YUV forms read through subsampled layouts: a
// layout gives pixel i with the chroma of its pair, so one row runner and
// the 32-pixel block machinery of pixels8u.h serve every member.
//
// Rows split the same way in every member: the block form over whole
// vectors of 32 pixels from the row start, the tail form over the pairs
// after them (at most 31 pixels), and a lone last pixel of an odd 4:2:2
// width by its own form. The 4:2:0 members convert width >> 1 pairs and
// height >> 1 row pairs, both luma rows of a pair with the same chroma row,
// and report a dropped odd column or row with orvStatusOddSize.
#include <immintrin.h>

#include <cstdint>

#include "frame/checks.h"
#include "frame/fronts.h"
#include "lumachroma/pixels8u.h"
#include "lumachroma/yuvforms.h"

namespace h9 {
namespace {

using namespace px8;
using namespace yuvforms;

// ---------------------------------------------------------------------------
// Forms besides those of the full-resolution family (u = U - 128, v = V - 128).

// 32-bit fixed point with 16 fraction bits, weights 74711, 25821, 38076,
// 133169: no rounding (the 4:2:0 planar form, and the tail of the planar
// 4:2:2 members), rounding 32768 in G and B (tail of the members with
// alpha), or in all three (tail of the packed member, FormU).
using FormNoRound = Inverse32<kYuvInv, 0, 0, 0>;
using FormRoundGB = Inverse32<kYuvInv, 0, 32768, 32768>;

// Block form of the members with alpha: luma times 16 plus the high halves
// of 128u and 128v times 9338, -4759, -3227, 16646, plus 8, shifted right
// by 4 and saturated. The sums stay far inside 16 bits.
struct FormSixteen {
    static Px scalar(int y, int cu, int cv)
    {
        const int u128 = (cu - 128) * 128, v128 = (cv - 128) * 128, y16 = 16 * y;
        return {satU8(addsS16(addsS16(y16, hiS(v128, 9338)), 8) >> 4),
                satU8(addsS16(addsS16(addsS16(y16, hiS(v128, -4759)), hiS(u128, -3227)), 8) >> 4),
                satU8(addsS16(addsS16(y16, hiS(u128, 16646)), 8) >> 4)};
    }
    static V3 lanes(const V3& x)
    {
        const V u128 = shl<7>(sub(x.b, 128)), v128 = shl<7>(sub(x.c, 128)), y16 = shl<4>(x.a);
        return {sra<4>(addsS(addsS(y16, hiS(v128, 9338)), 8)),
                sra<4>(addsS(addsS(addsS(y16, hiS(v128, -4759)), hiS(u128, -3227)), 8)),
                sra<4>(addsS(addsS(y16, hiS(u128, 16646)), 8))};
    }
};

// A lone last pixel of an odd 4:2:2 width in the planar members: 13
// fraction bits, no rounding.
struct FormLone {
    static Px scalar(int y, int cu, int cv)
    {
        const int u = cu - 128, v = cv - 128, yy = y << 13;
        return {chop((yy + 9338 * v) >> 13), chop((yy - 3227 * u - 4759 * v) >> 13), chop((yy + 16645 * u) >> 13)};
    }
};

// The BGR 4:2:0 member's block: the doubled scale of form R with the
// weights of form P.
using FormDoubledP = Doubled<9339, -3228, -4760, 16646>;

// ---------------------------------------------------------------------------
// Subsampled inputs. get(i) gives pixel i with the chroma of its pair,
// lone(i) the lone last pixel of an odd width, load32(i) 32 pixels from an
// even i (see pixels8u.h for the lane order).

// 16 chroma bytes, each repeated for the two pixels of its pair.
inline Wide repeatPairs(const uint8_t* c)
{
    const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(c));
    return widen(_mm256_set_m128i(_mm_unpackhi_epi8(x, x), _mm_unpacklo_epi8(x, x)));
}

// Y plane and chroma planes of half width.
struct HalfPlanesIn {
    const uint8_t* y;
    const uint8_t* u;
    const uint8_t* v;

    Px get(int i) const { return {y[i], u[i >> 1], v[i >> 1]}; }
    Px lone(int i) const { return get(i); }
    Wide3 load32(int i) const
    {
        return {widen(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(y + i))), repeatPairs(u + i / 2),
                repeatPairs(v + i / 2)};
    }
};

// Packed Y0 U Y1 V. The lone last pixel of an odd width has Y and U; its V
// is that of the previous pair.
struct YuyvIn {
    const uint8_t* p;

    Px get(int i) const { return {p[2 * i], p[4 * (i >> 1) + 1], p[4 * (i >> 1) + 3]}; }
    Px lone(int i) const { return {p[2 * i], p[2 * i + 1], p[2 * i - 1]}; }
    Wide3 load32(int i) const
    {
        // Each lane holds four pairs; pshufb picks, for every pixel's 16-bit
        // word, its Y, U or V byte. a: pixels 0-7 | 8-15, b: 16-23 | 24-31.
        const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 2 * i));
        const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 2 * i + 32));
        auto pick = [&](int first, int pairStep) {
            alignas(16) int8_t m[16];
            for (int k = 0; k < 8; ++k) {
                m[2 * k] = int8_t(first + (pairStep ? 4 * (k >> 1) : 2 * k));
                m[2 * k + 1] = -128;
            }
            const __m256i mask = _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(m)));
            const __m256i x = _mm256_shuffle_epi8(a, mask), z = _mm256_shuffle_epi8(b, mask);
            return Wide{_mm256_permute2x128_si256(x, z, 0x20), _mm256_permute2x128_si256(x, z, 0x31)};
        };
        return {pick(0, 0), pick(1, 1), pick(3, 1)};
    }
};

// ---------------------------------------------------------------------------
// One row of `width` pixels: Block over whole vectors of 32 from the start
// (or its scalar form under the test switch), Tail over the pairs after
// them, Lone on a last odd pixel.
template <class Block, class Tail, class Lone, class In, class Out>
void subsampledRow(const In& in, const Out& out, int width)
{
    const int end = width & ~31;
    int i = 0;
    if (g_scalarBlocks) {
        for (; i < end; ++i) {
            const Px s = in.get(i);
            out.put(i, Block::scalar(s[0], s[1], s[2]), true);
        }
    } else {
        for (; i < end; i += 32)
            blockOf32<Block>(in, out, i);
    }
    for (; i < (width & ~1); ++i) {
        const Px s = in.get(i);
        out.put(i, Tail::scalar(s[0], s[1], s[2]), false);
    }
    if (width & 1) {
        const Px s = in.lone(width - 1);
        out.put(width - 1, Lone::scalar(s[0], s[1], s[2]), false);
    }
}

// Output rows; `Out` is a pixels8u.h output layout.
template <class Out>
struct OutRows;
template <int Ch, bool Swap, Alpha A>
struct OutRows<PackedOut<Ch, Swap, A>> {
    uint8_t* base;
    int step;
    uint8_t alpha = 0;
    PackedOut<Ch, Swap, A> operator()(int y) const { return {rowAt(base, step, y), alpha}; }
};
template <>
struct OutRows<PlanesOut> {
    uint8_t* const* planes;
    int step;
    PlanesOut operator()(int y) const
    {
        return {{rowAt(planes[0], step, y), rowAt(planes[1], step, y), rowAt(planes[2], step, y)}};
    }
};

// YUV planes with one step each; `chromaRow` maps an image row to its
// chroma row (y for 4:2:2, y >> 1 for 4:2:0).
struct YuvPlaneRows {
    const uint8_t* const* planes;
    const int* steps;
    HalfPlanesIn operator()(int y, int chromaRow) const
    {
        return {rowAt(planes[0], steps[0], y), rowAt(planes[1], steps[1], chromaRow),
                rowAt(planes[2], steps[2], chromaRow)};
    }
};

template <class Block, class Tail, class Lone, class Out>
void rows422(const YuvPlaneRows& in, const OutRows<Out>& out, RoiSize roi)
{
    for (int y = 0; y < roi.height; ++y)
        subsampledRow<Block, Tail, Lone>(in(y, y), out(y), roi.width);
}

template <class Block, class Tail, class Out>
OrvStatus rows420(const YuvPlaneRows& in, const OutRows<Out>& out, RoiSize roi)
{
    for (int j = 0; j < roi.height >> 1; ++j)
        for (int y = 2 * j; y < 2 * j + 2; ++y)
            subsampledRow<Block, Tail, Tail>(in(y, j), out(y), roi.width & ~1);
    return ((roi.width | roi.height) & 1) ? orvStatusOddSize : orvStatusOk;
}

// Whole images without steps: tight rows. A 4:2:2 image of even width and
// at least 256 pixels is one long row, since its planes then lie end to end.
struct Tight {
    int luma, chroma, rgb, rgbPlane;
    int rows;
    int width;
};
Tight tight422(RoiSize roi)
{
    if (roi.width % 2 == 0 && area32(roi.width, roi.height) >= 256) {
        const int n = roi.width * roi.height;
        return {n, n / 2, 3 * n, n, 1, n};
    }
    const int c = (roi.width + 1) >> 1;
    return {roi.width, c, 3 * roi.width, roi.width, roi.height, roi.width};
}

OrvStatus checkYuvToRgb(const void* src, const void* dst, RoiSize roi, const uint8_t* const* srcPlanes,
                        uint8_t* const* dstPlanes)
{
    if (OrvStatus st = checkRect(src, dst, roi))
        return st;
    if (OrvStatus st = checkPlanes(srcPlanes, 3))
        return st;
    if (dstPlanes)
        return checkPlanes(dstPlanes, 3);
    return orvStatusOk;
}

using PlanarRgb = PlanesOut;
using Rgb = PackedOut<3, false, Alpha::None>;
using Bgr = PackedOut<3, true, Alpha::None>;

}  // namespace
}  // namespace h9

using namespace h9;
using namespace h9::px8;

// ---- YUV 4:2:2 to RGB -------------------------------------------------------
// The planar members take form R in their blocks and no rounding in the
// tail pairs (the planar-to-interleaved member as the planar one); the member
// with alpha takes the 4:2:0 alpha member's block and tail, and writes 0 as
// alpha everywhere.
ORV_FRONT(orviYUV422ToRGB_8u_P3R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst[3], int dstStep,
                                  RoiSize roiSize)
{
    if (OrvStatus st = checkYuvToRgb(pSrc, pDst, roiSize, pSrc, pDst))
        return st;
    rows422<FormR, FormNoRound, FormLone>(YuvPlaneRows{pSrc, srcStep}, OutRows<PlanarRgb>{pDst, dstStep}, roiSize);
    return orvStatusOk;
}

ORV_FRONT(orviYUV422ToRGB_8u_P3)(const Orv8u* const pSrc[3], Orv8u* pDst[3], RoiSize roiSize)
{
    if (OrvStatus st = checkYuvToRgb(pSrc, pDst, roiSize, pSrc, pDst))
        return st;
    const Tight t = tight422(roiSize);
    const int steps[3] = {t.luma, t.chroma, t.chroma};
    rows422<FormR, FormNoRound, FormLone>(YuvPlaneRows{pSrc, steps}, OutRows<PlanarRgb>{pDst, t.rgbPlane},
                                          {t.width, t.rows});
    return orvStatusOk;
}

ORV_FRONT(orviYUV422ToRGB_8u_P3C3R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst, int dstStep,
                                    RoiSize roiSize)
{
    if (OrvStatus st = checkYuvToRgb(pSrc, pDst, roiSize, pSrc, nullptr))
        return st;
    rows422<FormR, FormNoRound, FormLone>(YuvPlaneRows{pSrc, srcStep}, OutRows<Rgb>{pDst, dstStep}, roiSize);
    return orvStatusOk;
}

ORV_FRONT(orviYUV422ToRGB_8u_P3C3)(const Orv8u* const pSrc[3], Orv8u* pDst, RoiSize roiSize)
{
    if (OrvStatus st = checkYuvToRgb(pSrc, pDst, roiSize, pSrc, nullptr))
        return st;
    const Tight t = tight422(roiSize);
    const int steps[3] = {t.luma, t.chroma, t.chroma};
    rows422<FormR, FormNoRound, FormLone>(YuvPlaneRows{pSrc, steps}, OutRows<Rgb>{pDst, t.rgb}, {t.width, t.rows});
    return orvStatusOk;
}

ORV_FRONT(orviYUV422ToRGB_8u_P3AC4R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst, int dstStep,
                                     RoiSize roiSize)
{
    if (OrvStatus st = checkYuvToRgb(pSrc, pDst, roiSize, pSrc, nullptr))
        return st;
    rows422<FormSixteen, FormRoundGB, FormLone>(YuvPlaneRows{pSrc, srcStep},
                                                OutRows<PackedOut<4, false, Alpha::Value>>{pDst, dstStep, 0}, roiSize);
    return orvStatusOk;
}

// Packed Y0 U Y1 V: form R in the blocks, rounding 32768 in the tail; one
// pixel wide, its second byte stands for both U and V.
ORV_FRONT(orviYUV422ToRGB_8u_C2C3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    for (int y = 0; y < roiSize.height; ++y) {
        const uint8_t* s = rowAt(pSrc, srcStep, y);
        const Rgb out{rowAt(pDst, dstStep, y)};
        if (roiSize.width == 1)
            out.put(0, FormNoRound::scalar(s[0], s[1], s[1]), false);
        else
            subsampledRow<FormR, FormU, FormU>(YuyvIn{s}, out, roiSize.width);
    }
    return orvStatusOk;
}

// ---- YUV 4:2:0 to RGB -------------------------------------------------------
// The planar member is the scalar form throughout (its vector path computes
// the same sums); the interleaved member takes form R in its blocks and the
// planar member's form in the tail, the member with alpha the 16-times form
// and rounding in G and B, writing 0 as alpha in its blocks only.
ORV_FRONT(orviYUV420ToRGB_8u_P3R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst[3], int dstStep,
                                  RoiSize roiSize)
{
    if (OrvStatus st = checkYuvToRgb(pSrc, pDst, roiSize, pSrc, pDst))
        return st;
    return rows420<FormNoRound, FormNoRound>(YuvPlaneRows{pSrc, srcStep}, OutRows<PlanarRgb>{pDst, dstStep}, roiSize);
}

ORV_FRONT(orviYUV420ToRGB_8u_P3)(const Orv8u* const pSrc[3], Orv8u* pDst[3], RoiSize roiSize)
{
    if (OrvStatus st = checkYuvToRgb(pSrc, pDst, roiSize, pSrc, pDst))
        return st;
    const int steps[3] = {roiSize.width, roiSize.width >> 1, roiSize.width >> 1};
    return rows420<FormNoRound, FormNoRound>(YuvPlaneRows{pSrc, steps}, OutRows<PlanarRgb>{pDst, roiSize.width},
                                             roiSize);
}

ORV_FRONT(orviYUV420ToRGB_8u_P3C3R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst, int dstStep,
                                    RoiSize roiSize)
{
    if (OrvStatus st = checkYuvToRgb(pSrc, pDst, roiSize, pSrc, nullptr))
        return st;
    return rows420<FormR, FormNoRound>(YuvPlaneRows{pSrc, srcStep}, OutRows<Rgb>{pDst, dstStep}, roiSize);
}

ORV_FRONT(orviYUV420ToRGB_8u_P3C3)(const Orv8u* const pSrc[3], Orv8u* pDst, RoiSize roiSize)
{
    if (OrvStatus st = checkYuvToRgb(pSrc, pDst, roiSize, pSrc, nullptr))
        return st;
    const int steps[3] = {roiSize.width, roiSize.width >> 1, roiSize.width >> 1};
    return rows420<FormR, FormNoRound>(YuvPlaneRows{pSrc, steps}, OutRows<Rgb>{pDst, 3 * roiSize.width}, roiSize);
}

ORV_FRONT(orviYUV420ToRGB_8u_P3AC4R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst, int dstStep,
                                     RoiSize roiSize)
{
    if (OrvStatus st = checkYuvToRgb(pSrc, pDst, roiSize, pSrc, nullptr))
        return st;
    return rows420<FormSixteen, FormRoundGB>(YuvPlaneRows{pSrc, srcStep},
                                             OutRows<PackedOut<4, false, Alpha::ZeroInBlocks>>{pDst, dstStep}, roiSize);
}

// BGR: form P's weights on the doubled scale; at least one whole square.
ORV_FRONT(orviYUV420ToBGR_8u_P3C3R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst, int dstStep,
                                    RoiSize roiSize)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize, 2, 2))
        return st;
    if (OrvStatus st = checkPlanes(pSrc, 3))
        return st;
    return rows420<FormDoubledP, FormNoRound>(YuvPlaneRows{pSrc, srcStep}, OutRows<Bgr>{pDst, dstStep}, roiSize);
}

// ---- RGB to YUV 4:2:0, the scalar form --------------------------------------
namespace h9 {
namespace {

// One 2 by 2 square, 16 fraction bits: each pixel's s = 19595 R + 38470 G
// + 7471 B gives Y = s >> 16; the chroma take the sums of the four B, R and
// s, rounded by 0x1FFFF before the first shift; U is kept to its low byte,
// V clamped through the table.
struct Square16 {
    static int s(int r, int g, int b) { return 19595 * r + 38470 * g + 7471 * b; }
    static uint8_t u(int sumB, int sumS) { return uint8_t(((((sumB << 16) - sumS + 0x1FFFF) >> 16) * 32244 >> 18) + 128); }
    static uint8_t v(int sumR, int sumS) { return chop(((((sumR << 16) - sumS + 0x1FFFF) >> 16) * 57475 >> 18) + 128); }
};

// RGB source rows: pixel i of a row as R, G, B; load16 gives pixels
// i .. i + 15 of each channel as 32-bit lanes (pixels 0-7, then 8-15).
struct RgbPlanesRows {
    const uint8_t* const* planes;
    int step;
    Px at(int y, int i) const
    {
        return {rowAt(planes[0], step, y)[i], rowAt(planes[1], step, y)[i], rowAt(planes[2], step, y)[i]};
    }
    void load16(int y, int i, __m256i (&c)[3][2]) const
    {
        for (int k = 0; k < 3; ++k) {
            const uint8_t* p = rowAt(planes[k], step, y) + i;
            c[k][0] = _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)));
            c[k][1] = _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + 8)));
        }
    }
};
// Four-byte pixels with R at byte 2 and B at byte 0.
struct BgraRows {
    const uint8_t* base;
    int step;
    Px at(int y, int i) const
    {
        const uint8_t* p = rowAt(base, step, y) + 4 * i;
        return {p[2], p[1], p[0]};
    }
    void load16(int y, int i, __m256i (&c)[3][2]) const
    {
        const uint8_t* p = rowAt(base, step, y) + 4 * i;
        const __m256i m = _mm256_set1_epi32(0xff);
        for (int h = 0; h < 2; ++h) {
            const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 32 * h));
            c[0][h] = _mm256_and_si256(_mm256_srli_epi32(v, 16), m);
            c[1][h] = _mm256_and_si256(_mm256_srli_epi32(v, 8), m);
            c[2][h] = _mm256_and_si256(v, m);
        }
    }
};

// Eight squares (pixels 2k .. 2k + 15 of both rows of pair j) by the same
// sums on 32-bit lanes. hadd leaves the pair sums in the order 0 1 4 5 2 3
// 6 7, which one permutation undoes before the packs. U never leaves
// 17..239, so the saturating pack keeps its low byte; V is clamped by it.
template <class Src>
void squares8(const Src& src, int j, int k, uint8_t* y0, uint8_t* y1, uint8_t* u, uint8_t* v)
{
    __m256i sumS = _mm256_setzero_si256(), sumB = sumS, sumR = sumS;
    for (int dy = 0; dy < 2; ++dy) {
        __m256i c[3][2];
        src.load16(2 * j + dy, 2 * k, c);
        __m256i s[2];
        for (int h = 0; h < 2; ++h)
            s[h] = _mm256_add_epi32(_mm256_add_epi32(_mm256_mullo_epi32(c[0][h], _mm256_set1_epi32(19595)),
                                                     _mm256_mullo_epi32(c[1][h], _mm256_set1_epi32(38470))),
                                    _mm256_mullo_epi32(c[2][h], _mm256_set1_epi32(7471)));
        const __m256i yw = _mm256_permute4x64_epi64(
            _mm256_packs_epi32(_mm256_srai_epi32(s[0], 16), _mm256_srai_epi32(s[1], 16)), 0xD8);
        const __m256i yb = _mm256_permute4x64_epi64(_mm256_packus_epi16(yw, yw), 0x08);
        _mm_storeu_si128(reinterpret_cast<__m128i*>((dy ? y1 : y0) + 2 * k), _mm256_castsi256_si128(yb));
        sumS = _mm256_add_epi32(sumS, _mm256_hadd_epi32(s[0], s[1]));
        sumB = _mm256_add_epi32(sumB, _mm256_hadd_epi32(c[2][0], c[2][1]));
        sumR = _mm256_add_epi32(sumR, _mm256_hadd_epi32(c[0][0], c[0][1]));
    }
    auto chroma = [&](__m256i sum, int w) {
        const __m256i d = _mm256_srai_epi32(
            _mm256_add_epi32(_mm256_sub_epi32(_mm256_slli_epi32(sum, 16), sumS), _mm256_set1_epi32(0x1FFFF)), 16);
        const __m256i c = _mm256_add_epi32(_mm256_srai_epi32(_mm256_mullo_epi32(d, _mm256_set1_epi32(w)), 18),
                                           _mm256_set1_epi32(128));
        return _mm256_permutevar8x32_epi32(c, _mm256_setr_epi32(0, 1, 4, 5, 2, 3, 6, 7));
    };
    const __m256i w = _mm256_packs_epi32(chroma(sumB, 32244), chroma(sumR, 57475));  // u0-3 v0-3 | u4-7 v4-7
    const __m256i b = _mm256_packus_epi16(w, w);
    const __m128i uv = _mm256_castsi256_si128(_mm256_permutevar8x32_epi32(b, _mm256_setr_epi32(0, 4, 1, 5, 0, 0, 0, 0)));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(u + k), uv);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(v + k), _mm_srli_si128(uv, 8));
}

// Every square of the image (width >> 1 by height >> 1) by the scalar form,
// eight squares at a time by its vector path, which gives the same bytes.
template <class Src>
OrvStatus squares420(const Src& src, uint8_t* const dst[3], const int dstStep[3], RoiSize roi)
{
    for (int j = 0; j < roi.height >> 1; ++j) {
        uint8_t* y0 = rowAt(dst[0], dstStep[0], 2 * j);
        uint8_t* y1 = rowAt(dst[0], dstStep[0], 2 * j + 1);
        uint8_t* u = rowAt(dst[1], dstStep[1], j);
        uint8_t* v = rowAt(dst[2], dstStep[2], j);
        int k = 0;
        if (!g_scalarBlocks)
            for (; k + 8 <= roi.width >> 1; k += 8)
                squares8(src, j, k, y0, y1, u, v);
        for (; k < roi.width >> 1; ++k) {
            int sumS = 0, sumB = 0, sumR = 0;
            for (int dy = 0; dy < 2; ++dy)
                for (int dx = 0; dx < 2; ++dx) {
                    const Px p = src.at(2 * j + dy, 2 * k + dx);
                    const int s = Square16::s(p[0], p[1], p[2]);
                    (dy ? y1 : y0)[2 * k + dx] = uint8_t(s >> 16);
                    sumS += s;
                    sumB += p[2];
                    sumR += p[0];
                }
            u[k] = Square16::u(sumB, sumS);
            v[k] = Square16::v(sumR, sumS);
        }
    }
    return ((roi.width | roi.height) & 1) ? orvStatusOddSize : orvStatusOk;
}

OrvStatus checkToYuv(const void* src, const void* dst, RoiSize roi, const uint8_t* const* srcPlanes,
                     uint8_t* const* dstPlanes)
{
    if (OrvStatus st = checkRect(src, dst, roi))
        return st;
    if (srcPlanes)
        if (OrvStatus st = checkPlanes(srcPlanes, 3))
            return st;
    return checkPlanes(dstPlanes, 3);
}

}  // namespace
}  // namespace h9

ORV_FRONT(orviRGBToYUV420_8u_P3R)(const Orv8u* const pSrc[3], int srcStep, Orv8u* pDst[3], int dstStep[3],
                                  RoiSize roiSize)
{
    if (OrvStatus st = checkToYuv(pSrc, pDst, roiSize, pSrc, pDst))
        return st;
    return squares420(RgbPlanesRows{pSrc, srcStep}, pDst, dstStep, roiSize);
}

ORV_FRONT(orviRGBToYUV420_8u_P3)(const Orv8u* const pSrc[3], Orv8u* pDst[3], RoiSize roiSize)
{
    if (OrvStatus st = checkToYuv(pSrc, pDst, roiSize, pSrc, pDst))
        return st;
    const int steps[3] = {roiSize.width, roiSize.width >> 1, roiSize.width >> 1};
    return squares420(RgbPlanesRows{pSrc, roiSize.width}, pDst, steps, roiSize);
}

// Blue, green, red and a fourth byte that is not read; the scalar form with
// the pixels' channels in that order.
ORV_FRONT(orviBGRToYUV420_8u_AC4P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize)
{
    if (OrvStatus st = checkToYuv(pSrc, pDst, roiSize, nullptr, pDst))
        return st;
    return squares420(BgraRows{pSrc, srcStep}, pDst, dstStep, roiSize);
}
