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

#include <array>
#include <cstdint>
#include <type_traits>

#include "frame/checks.h"
#include "frame/fronts.h"
#include "lumachroma/pixels8u.h"
#include "lumachroma/ycbcrsub.h"
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

    // The same in two steps, so that the chroma terms are computed once per
    // sample rather than once per pixel: 16y lies in 0 .. 4080 and the
    // chroma terms within -4200 .. 4200, so no sum comes near the 16-bit
    // limits, the saturating adds add exactly, and the terms may be grouped.
    static V3 chroma(V u, V v)
    {
        const V u128 = shl<7>(sub(u, 128)), v128 = shl<7>(sub(v, 128));
        return {add(hiS(v128, 9338), 8), add(_mm256_add_epi16(hiS(v128, -4759), hiS(u128, -3227)), 8),
                add(hiS(u128, 16646), 8)};
    }
    static V3 withLuma(V y, V cr, V cg, V cb)
    {
        const V y16 = shl<4>(y);
        return {sra<4>(_mm256_add_epi16(y16, cr)), sra<4>(_mm256_add_epi16(y16, cg)), sra<4>(_mm256_add_epi16(y16, cb))};
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
// them, Lone on a last odd pixel. `from`: pixels before it are done.
inline int blockEnd(int width) { return width & ~31; }

template <class Block, class Tail, class Lone, class In, class Out>
void subsampledRow(const In& in, const Out& out, int width, int from = 0)
{
    const int end = blockEnd(width);
    int i = from;
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

// Blocks of forms whose chroma terms separate from the luma (chroma,
// withLuma) into four-byte pixels with 0 in the fourth byte: the terms are
// computed once for the 16 samples and serve the K luma rows that share
// them. The lanes run in a "quad" order that makes the final interleave
// lane-local: of 32 pixels, 128-bit lane 0 holds pixels 0-3, 8-11, 16-19,
// 24-27 and lane 1 pixels 4-7, 12-15, 20-23, 28-31: 16 loaded bytes,
// in both lanes, widened to words by one byte shuffle per lane.
template <class Form, class Out>
constexpr bool kSplitBlocks = requires { Form::chroma; } && (std::is_same_v<Out, PackedOut<4, false, Alpha::Value>> ||
                                                              std::is_same_v<Out, PackedOut<4, false, Alpha::ZeroInBlocks>>);

// The 16 bytes at p in both lanes, eight of them widened to words in each
// lane as the mask picks them.
inline __m256i widenQuads(const uint8_t* p, const std::array<int8_t, 32>& mask)
{
    const __m256i m = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(mask.data()));
    return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))), m);
}
// pshufb mask: lane 0 widens bytes a[0..7], lane 1 bytes b[0..7].
constexpr std::array<int8_t, 32> quadMask(std::array<int, 8> a, std::array<int, 8> b)
{
    std::array<int8_t, 32> m{};
    for (int k = 0; k < 8; ++k) {
        m[2 * k] = int8_t(a[k]);
        m[16 + 2 * k] = int8_t(b[k]);
        m[2 * k + 1] = m[16 + 2 * k + 1] = -128;
    }
    return m;
}
// Luma: pixels 0-3, 8-11 | 4-7, 12-15 of 16. Chroma: the samples of pairs
// 0, 1, 4, 5, 8, 9, 12, 13 | 2, 3, 6, 7, 10, 11, 14, 15, each of which
// covers two pixels once repeated.
inline constexpr auto kLumaQuads = quadMask({0, 1, 2, 3, 8, 9, 10, 11}, {4, 5, 6, 7, 12, 13, 14, 15});
inline constexpr auto kChromaQuads = quadMask({0, 1, 4, 5, 8, 9, 12, 13}, {2, 3, 6, 7, 10, 11, 14, 15});

// Bytes of R, G and B of 32 pixels in quad order to 128 bytes R G B 0.
inline void storeQuads0(uint8_t* d, __m256i r, __m256i g, __m256i b)
{
    const __m256i z = _mm256_setzero_si256();
    const __m256i rgLo = _mm256_unpacklo_epi8(r, g), rgHi = _mm256_unpackhi_epi8(r, g);
    const __m256i b0Lo = _mm256_unpacklo_epi8(b, z), b0Hi = _mm256_unpackhi_epi8(b, z);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), _mm256_unpacklo_epi16(rgLo, b0Lo));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 32), _mm256_unpackhi_epi16(rgLo, b0Lo));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 64), _mm256_unpacklo_epi16(rgHi, b0Hi));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 96), _mm256_unpackhi_epi16(rgHi, b0Hi));
}

template <class Form, int K>
[[gnu::flatten]] inline void splitBlock32(const uint8_t* const (&y)[K], const uint8_t* u, const uint8_t* v,
                                          uint8_t* const (&d)[K], int i)
{
    const V3 c = Form::chroma(widenQuads(u + i / 2, kChromaQuads), widenQuads(v + i / 2, kChromaQuads));
    // Each term twice, once for each pixel of its pair.
    const Wide cr{_mm256_unpacklo_epi16(c.a, c.a), _mm256_unpackhi_epi16(c.a, c.a)};
    const Wide cg{_mm256_unpacklo_epi16(c.b, c.b), _mm256_unpackhi_epi16(c.b, c.b)};
    const Wide cb{_mm256_unpacklo_epi16(c.c, c.c), _mm256_unpackhi_epi16(c.c, c.c)};
    for (int k = 0; k < K; ++k) {
        const Wide yw{widenQuads(y[k] + i, kLumaQuads), widenQuads(y[k] + i + 16, kLumaQuads)};
        const V3 lo = Form::withLuma(yw.lo, cr.lo, cg.lo, cb.lo);
        const V3 hi = Form::withLuma(yw.hi, cr.hi, cg.hi, cb.hi);
        storeQuads0(d[k] + 4 * i, packBytes({lo.a, hi.a}), packBytes({lo.b, hi.b}), packBytes({lo.c, hi.c}));
    }
}

// The K rows' block parts by splitBlock32; returns where they end.
template <class Block, int K, class Out>
int splitBlocks(const HalfPlanesIn (&in)[K], const Out (&out)[K], int width)
{
    if (g_scalarBlocks || out[0].alpha != 0)
        return 0;
    const uint8_t* y[K];
    uint8_t* d[K];
    for (int k = 0; k < K; ++k) {
        y[k] = in[k].y;
        d[k] = out[k].p;
    }
    const int end = blockEnd(width);
    for (int i = 0; i < end; i += 32)
        splitBlock32<Block, K>(y, in[0].u, in[0].v, d, i);
    return end;
}

template <class Block, class Tail, class Lone, class Out>
void rows422(const YuvPlaneRows& in, const OutRows<Out>& out, RoiSize roi)
{
    for (int y = 0; y < roi.height; ++y) {
        int from = 0;
        if constexpr (kSplitBlocks<Block, Out>)
            from = splitBlocks<Block, 1>({in(y, y)}, {out(y)}, roi.width);
        subsampledRow<Block, Tail, Lone>(in(y, y), out(y), roi.width, from);
    }
}

template <class Block, class Tail, class Out>
OrvStatus rows420(const YuvPlaneRows& in, const OutRows<Out>& out, RoiSize roi)
{
    const int width = roi.width & ~1;
    for (int j = 0; j < roi.height >> 1; ++j) {
        int from = 0;
        if constexpr (kSplitBlocks<Block, Out>)
            from = splitBlocks<Block, 2>({in(2 * j, j), in(2 * j + 1, j)}, {out(2 * j), out(2 * j + 1)}, width);
        for (int y = 2 * j; y < 2 * j + 2; ++y)
            subsampledRow<Block, Tail, Tail>(in(y, j), out(y), width, from);
    }
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

// ---- RGB to YUV 4:2:2 and 4:2:0: the forward forms ---------------------------
namespace h9 {
namespace {

// ---------------------------------------------------------------------------
// Forward forms. A chroma sample is made from the pixels that share it (a
// pair, a 2 by 2 square, or a lone last pixel of an odd 4:2:2 width). Each
// form gives, per pixel, a luma term t and Y from it; per sample, U and V
// from the sum of the pixels' B or R terms (the bytes themselves, except in
// the planar 4:2:2 block) and the sum T of their t:
//   int t(r, g, b)   uint8_t y(t)   int x(c)   uint8_t u(sumX, T), v(sumX, T)
// Block forms also give the same on 16-bit lanes (V); they never leave
// 16 bits, and the final pack saturates to 0 .. 255 as their sat() does.

// 16 fraction bits: t = 19595 R + 38470 G + 7471 B, Y = (t + YRnd) >> 16;
// chroma from the difference of the B (or R) sum and the luma sum, rounded
// by CRnd before the first shift, scaled by 32244 (U, kept to its low byte;
// it cannot leave the range) or 57475 (V, clamped by the table), and
// divided by the group size in the last shift (17 for pairs, 18 for
// squares).
template <int Shift, int YRnd, int CRnd>
struct Tail16 {
    static int t(int r, int g, int b) { return 19595 * r + 38470 * g + 7471 * b; }
    static int x(int c) { return c; }
    static uint8_t y(int t) { return uint8_t((t + YRnd) >> 16); }
    static uint8_t u(int sumB, int sumT) { return uint8_t(((((sumB << 16) - sumT + CRnd) >> 16) * 32244 >> Shift) + 128); }
    static uint8_t v(int sumR, int sumT) { return chop(((((sumR << 16) - sumT + CRnd) >> 16) * 57475 >> Shift) + 128); }
};
// The planar square form, and the pair tails of the 4:2:2 members with
// planes out (no luma rounding, chroma by 65535) and packed out (32768).
using Square16 = Tail16<18, 0, 0x1FFFF>;
using PairPlanesTail = Tail16<17, 0, 65535>;
using PairPackedTail = Tail16<17, 32768, 32768>;

// A lone last pixel of an odd 4:2:2 width: 15 fraction bits, weights 9798,
// 19235, 3736 (sum 32769); U rounds with 16383, V with 32767.
struct LonePixel {
    static int t(int r, int g, int b) { return 9798 * r + 19235 * g + 3736 * b; }
    static int x(int c) { return c; }
    static uint8_t y(int t) { return uint8_t(t >> 15); }
    static uint8_t u(int b, int t) { return uint8_t(((((b << 15) - t + 16383) >> 15) * 16121 >> 15) + 128); }
    static uint8_t v(int r, int t) { return chop(((((r << 15) - t + 32767) >> 15) * 28737 >> 15) + 128); }
};

// 14 fraction bits, the squares after the blocks of the interleaved 4:2:0
// member: t = 4899 R + 9617 G + 1868 B (sum 16384), Y = (t + 2) >> 14,
// chroma scales 8061 and 14369 without rounding, V clamped.
struct Square14 {
    static int t(int r, int g, int b) { return 4899 * r + 9617 * g + 1868 * b; }
    static int x(int c) { return c; }
    static uint8_t y(int t) { return uint8_t((t + 2) >> 14); }
    static uint8_t u(int sumB, int sumT) { return uint8_t(((((sumB << 14) - sumT) >> 14) * 8061 >> 16) + 128); }
    static uint8_t v(int sumR, int sumT) { return satU8(((((sumR << 14) - sumT) >> 14) * 14369 >> 16) + 128); }
};

// Pair sums of 32 values in the unpack order of Wide, as 16 sums in order:
// one horizontal add of neighbouring words. The sums are never negative and
// stay below 65536 (the sum of a square's luma terms in the 14-bit block
// needs all 16 bits), so the wrapping add gives them exactly as unsigned
// words.
inline V pairSums(const Wide& w) { return _mm256_hadd_epi16(w.lo, w.hi); }

// The same pair sums by two multiply-adds by ones and an unsigned pack, for
// rows from planes: widening each plane already keeps the shuffle unit busy,
// and the multiply-adds move the pair sums to the multiplier (measured
// faster there, not for interleaved rows). The words of the planar 4:2:2
// block are below 32768, so the signed multiply-adds are exact.
inline V pairSumsByMadd(const Wide& w)
{
    const __m256i ones = _mm256_set1_epi16(1);
    return _mm256_packus_epi32(_mm256_madd_epi16(w.lo, ones), _mm256_madd_epi16(w.hi, ones));
}

// Block of the 4:2:2 members with interleaved source, on doubled scale:
// y2 = ((9798 R + 19235 G) >> 14) + ((3736 B) >> 14) (two truncations, not
// one of the whole sum), Y = sat((y2 + Rnd) >> 1); with d = (T + Rnd) >> 1,
// U = sat((((sumB - d) * 16121) >> 16) + 128), V with sumR and 28737. Rnd is
// 0 with planes out, 1 with packed pairs out.
template <int Rnd>
struct PairBlock {
    static int t(int r, int g, int b) { return ((9798 * r + 19235 * g) >> 14) + ((3736 * b) >> 14); }
    static int x(int c) { return c; }
    static uint8_t y(int t) { return satU8((t + Rnd) >> 1); }
    static uint8_t u(int sumB, int sumT) { return satU8((((sumB - ((sumT + Rnd) >> 1)) * 16121) >> 16) + 128); }
    static uint8_t v(int sumR, int sumT) { return satU8((((sumR - ((sumT + Rnd) >> 1)) * 28737) >> 16) + 128); }

    // R and G interleaved into 32-bit multiply-adds for the joint sum;
    // (3736 B) >> 14 is the high half of 4B times 3736.
    static V t(V r, V g, V b)
    {
        const __m256i w = _mm256_set1_epi32((19235 << 16) | 9798);
        const __m256i lo = _mm256_srai_epi32(_mm256_madd_epi16(_mm256_unpacklo_epi16(r, g), w), 14);
        const __m256i hi = _mm256_srai_epi32(_mm256_madd_epi16(_mm256_unpackhi_epi16(r, g), w), 14);
        return _mm256_add_epi16(_mm256_packs_epi32(lo, hi), hiS(shl<2>(b), 3736));
    }
    static V x(V c) { return c; }
    static V y(V t) { return sra<1>(add(t, Rnd)); }
    static V u(V sumB, V sumT) { return add(hiS(_mm256_sub_epi16(sumB, sra<1>(add(sumT, Rnd))), 16121), 128); }
    static V v(V sumR, V sumT) { return add(hiS(_mm256_sub_epi16(sumR, sra<1>(add(sumT, Rnd))), 28737), 128); }
};

// Block of the planar 4:2:2 member. Each byte is widened to
// X = (x * 257) >> 6 (the byte in both halves of a word, shifted by 6, not
// 4x); y2 = ((X_R * 9798) >> 16) + ((X_G * 19235) >> 16) + ((X_B * 3736) >> 16),
// Y = sat(y2 >> 1); U = sat((((((sumX_B >> 1) - T) * 16121) >> 16) >> 1) + 128),
// V with the R channel and 28737.
struct PlanarPairBlock {
    static int x(int c) { return (c * 257) >> 6; }
    static int t(int r, int g, int b) { return hiU(x(r), 9798) + hiU(x(g), 19235) + hiU(x(b), 3736); }
    static uint8_t y(int t) { return satU8(t >> 1); }
    static uint8_t u(int sumB, int sumT) { return satU8((((((sumB >> 1) - sumT) * 16121) >> 16) >> 1) + 128); }
    static uint8_t v(int sumR, int sumT) { return satU8((((((sumR >> 1) - sumT) * 28737) >> 16) >> 1) + 128); }

    static V x(V c) { return srl<6>(_mm256_mullo_epi16(c, k16(257))); }
    static V t(V r, V g, V b)
    {
        return _mm256_add_epi16(_mm256_add_epi16(hiU(x(r), 9798), hiU(x(g), 19235)), hiU(x(b), 3736));
    }
    static V y(V t) { return sra<1>(t); }
    static V u(V sumB, V sumT) { return add(sra<1>(hiS(_mm256_sub_epi16(sra<1>(sumB), sumT), 16121)), 128); }
    static V v(V sumR, V sumT) { return add(sra<1>(hiS(_mm256_sub_epi16(sra<1>(sumR), sumT), 28737)), 128); }
};

// 14-bit block with rounded products r(x, c) = (x * 128 * c + 16384) >> 15
// (pmulhrsw on 128x): t = r(R, 4899) + r(G, 9617) + r(B, 1868), Y = sat(t >> 6).
// The chroma difference d is 128 times (mean B - mean Y): sumB * 32 - (T >> 1)
// over a square, sumB * 64 - T over a pair; U = sat((((d * 8061 + 16384) >> 15)
// >> 6) + 128), V with sumR and 14369. Serves the interleaved 4:2:0 member
// and the 4:2:2 member with planes out when every pointer and step is a
// multiple of 16.
template <int N>
struct Rounded14Block {
    static int r(int x, int c) { return (x * 128 * c + 16384) >> 15; }
    static int t(int r_, int g, int b) { return r(r_, 4899) + r(g, 9617) + r(b, 1868); }
    static int x(int c) { return c; }
    static uint8_t y(int t) { return satU8(t >> 6); }
    static int d(int sum, int sumT) { return N == 4 ? sum * 32 - (sumT >> 1) : sum * 64 - sumT; }
    static uint8_t u(int sumB, int sumT) { return satU8((((d(sumB, sumT) * 8061 + 16384) >> 15) >> 6) + 128); }
    static uint8_t v(int sumR, int sumT) { return satU8((((d(sumR, sumT) * 14369 + 16384) >> 15) >> 6) + 128); }

    static V r(V x, int c) { return _mm256_mulhrs_epi16(shl<7>(x), k16(c)); }
    static V t(V r_, V g, V b) { return _mm256_add_epi16(_mm256_add_epi16(r(r_, 4899), r(g, 9617)), r(b, 1868)); }
    static V x(V c) { return c; }
    static V y(V t) { return sra<6>(t); }
    // A square's T reaches 65280: a logical shift reads it unsigned.
    static V d(V sum, V sumT) { return N == 4 ? _mm256_sub_epi16(shl<5>(sum), srl<1>(sumT)) : _mm256_sub_epi16(shl<6>(sum), sumT); }
    static V u(V sumB, V sumT) { return add(sra<6>(_mm256_mulhrs_epi16(d(sumB, sumT), k16(8061))), 128); }
    static V v(V sumR, V sumT) { return add(sra<6>(_mm256_mulhrs_epi16(d(sumR, sumT), k16(14369))), 128); }
};

// ---------------------------------------------------------------------------
// The forward row engine over K rows sharing one chroma row (1 for 4:2:2, 2
// for 4:2:0). Inputs are the pixels8u.h layouts (get, load32), outputs the
// subsampled layouts of the YCbCr family (putY, putC, store32), U and V in
// the places of Cb and Cr.

// The n pixels from i of each of the K rows by the scalar statements of F.
template <class F, int K, class In, class Out>
inline ycs::C2 fwdGroup(const std::array<In, K>& in, const Out& out, int i, int n)
{
    int sumT = 0, sumB = 0, sumR = 0;
    for (int k = 0; k < K; ++k)
        for (int h = 0; h < n; ++h) {
            const Px p = in[k].get(i + h);
            const int t = F::t(p[0], p[1], p[2]);
            out.putY(k, i + h, F::y(t));
            sumT += t;
            sumB += F::x(p[2]);
            sumR += F::x(p[0]);
        }
    return {F::u(sumB, sumT), F::v(sumR, sumT)};
}

// 32 pixels of each row by the lanes of F: 16 samples.
template <class F, int K, class In, class Out>
[[gnu::flatten]] inline void fwdBlock32(const std::array<In, K>& in, const Out& out, int i)
{
    __m256i ys[K];
    Wide sumT{}, sumB{}, sumR{};
    for (int k = 0; k < K; ++k) {
        const Wide3 x = in[k].load32(i);
        const Wide t{F::t(x.a.lo, x.b.lo, x.c.lo), F::t(x.a.hi, x.b.hi, x.c.hi)};
        ys[k] = packBytes({F::y(t.lo), F::y(t.hi)});
        const Wide b{F::x(x.c.lo), F::x(x.c.hi)}, r{F::x(x.a.lo), F::x(x.a.hi)};
        if (k == 0) {
            sumT = t;
            sumB = b;
            sumR = r;
        } else {
            auto acc = [](Wide& s, const Wide& a) {
                s.lo = _mm256_add_epi16(s.lo, a.lo);
                s.hi = _mm256_add_epi16(s.hi, a.hi);
            };
            acc(sumT, t);
            acc(sumB, b);
            acc(sumR, r);
        }
    }
    auto pairs = [](const Wide& w) { return std::is_same_v<In, PlanesIn> ? pairSumsByMadd(w) : pairSums(w); };
    const V T = pairs(sumT);
    const __m256i c = _mm256_packus_epi16(F::u(pairs(sumB), T), F::v(pairs(sumR), T));
    out.store32(i, ys, _mm256_permute4x64_epi64(c, 0xD8));  // U 0-15 | V 0-15
}

// A lone last pixel has its own sample; packed pairs have room for its U only.
template <int H, int K>
inline void putLone(const ycs::PlanarSubOut<H, K>& out, int j, ycs::C2 c)
{
    out.putC(j, c);
}
template <ycs::Order422 O>
inline void putLone(const ycs::PackedPairsOut<O>& out, int j, ycs::C2 c)
{
    out.p[4 * j + O.cb] = c.cb;
}

// One row (or row pair) of `width` pixels: Block over whole vectors of 32
// pixels from the start (its scalar statements under the test switch),
// Tail over the pairs after them (at most 15), Lone on a last odd pixel.
template <class Block, class Tail, class Lone, int K, class In, class Out>
void forwardRow(const std::array<In, K>& in, const Out& out, int width)
{
    const int end = width & ~31;
    int i = 0;
    if (g_scalarBlocks) {
        for (; i < end; i += 2)
            out.putC(i >> 1, fwdGroup<Block, K>(in, out, i, 2));
    } else {
        for (; i < end; i += 32)
            fwdBlock32<Block, K>(in, out, i);
    }
    for (; i + 2 <= width; i += 2)
        out.putC(i >> 1, fwdGroup<Tail, K>(in, out, i, 2));
    if (i < width)
        putLone(out, i >> 1, fwdGroup<Lone, K>(in, out, i, 1));
}

// Row makers for the outputs: Y, U and V planes with one step each, and
// packed Y0 U Y1 V rows.
struct YuvPlanesOut {
    uint8_t* const* planes;
    const int* steps;
    ycs::PlanarSubOut<2, 1> row(int y) const
    {
        return {{rowAt(planes[0], steps[0], y)}, rowAt(planes[1], steps[1], y), rowAt(planes[2], steps[2], y)};
    }
    ycs::PlanarSubOut<2, 2> rowPair(int j) const
    {
        return {{rowAt(planes[0], steps[0], 2 * j), rowAt(planes[0], steps[0], 2 * j + 1)},
                rowAt(planes[1], steps[1], j), rowAt(planes[2], steps[2], j)};
    }
};
struct YuyvRowsOut {
    uint8_t* base;
    int step;
    ycs::PackedPairsOut<ycs::kOrderYCbCr> row(int y) const { return {rowAt(base, step, y)}; }
};

template <class Block, class Tail, class InRows, class OutRows>
void forward422(const InRows& in, const OutRows& out, RoiSize roi)
{
    for (int y = 0; y < roi.height; ++y)
        forwardRow<Block, Tail, LonePixel, 1>(std::array{in(y)}, out.row(y), roi.width);
}

// 4:2:0: whole squares only; a last odd column or row stays unwritten.
template <class Block, class Tail, class InRows>
OrvStatus forward420(const InRows& in, const YuvPlanesOut& out, RoiSize roi)
{
    for (int j = 0; j < roi.height >> 1; ++j)
        forwardRow<Block, Tail, Tail, 2>(std::array{in(2 * j), in(2 * j + 1)}, out.rowPair(j), roi.width & ~1);
    return ((roi.width | roi.height) & 1) ? orvStatusOddSize : orvStatusOk;
}

// Whether every pointer and step of an interleaved-to-planes call is a
// multiple of 16.
inline bool aligned16(const void* src, int srcStep, uint8_t* const* dst, const int* dstStep)
{
    uintptr_t bits = uintptr_t(src) | uintptr_t(srcStep);
    for (int k = 0; k < 3; ++k)
        bits |= uintptr_t(dst[k]) | uintptr_t(dstStep[k]);
    return (bits & 15) == 0;
}

// RGB source rows: pixel i of a row as R, G, B (at), and for pixels i ..
// i + 15 in two vectors of eight 32-bit lanes (pixels 0-7, then 8-15) each
// pixel's s = 19595 R + 38470 G + 7471 B and the word pair B | R << 16
// (terms16).
struct RgbPlanesRows {
    static constexpr bool kBlocks = false;
    const uint8_t* const* planes;
    int step;
    Px at(int y, int i) const
    {
        return {rowAt(planes[0], step, y)[i], rowAt(planes[1], step, y)[i], rowAt(planes[2], step, y)[i]};
    }
    void terms16(int y, int i, __m256i (&s)[2], __m256i (&br)[2]) const
    {
        for (int h = 0; h < 2; ++h) {
            __m256i c[3];
            for (int k = 0; k < 3; ++k)
                c[k] = _mm256_cvtepu8_epi32(
                    _mm_loadl_epi64(reinterpret_cast<const __m128i*>(rowAt(planes[k], step, y) + i + 8 * h)));
            s[h] = _mm256_add_epi32(_mm256_add_epi32(_mm256_mullo_epi32(c[0], _mm256_set1_epi32(19595)),
                                                     _mm256_mullo_epi32(c[1], _mm256_set1_epi32(38470))),
                                    _mm256_mullo_epi32(c[2], _mm256_set1_epi32(7471)));
            br[h] = _mm256_or_si256(c[2], _mm256_slli_epi32(c[0], 16));
        }
    }
};
// Four-byte pixels B, G, R and a byte not read. The words of a pixel are
// B | R << 16 (a mask) and G | A << 16 (a shift of each word); two
// multiply-adds give 7471 B + 19595 R and 19235 G + 0 A, and 38470 G is
// twice the latter.
struct BgraRows {
    static constexpr bool kBlocks = true;
    const uint8_t* base;
    int step;
    const uint8_t* row(int y) const { return rowAt(base, step, y); }
    Px at(int y, int i) const
    {
        const uint8_t* p = rowAt(base, step, y) + 4 * i;
        return {p[2], p[1], p[0]};
    }
    void terms16(int y, int i, __m256i (&s)[2], __m256i (&br)[2]) const
    {
        const uint8_t* p = rowAt(base, step, y) + 4 * i;
        for (int h = 0; h < 2; ++h) {
            const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 32 * h));
            br[h] = _mm256_and_si256(v, _mm256_set1_epi32(0x00FF00FF));
            const __m256i ga = _mm256_srli_epi16(v, 8);
            s[h] = _mm256_add_epi32(_mm256_madd_epi16(br[h], _mm256_set1_epi32((19595 << 16) | 7471)),
                                    _mm256_slli_epi32(_mm256_madd_epi16(ga, _mm256_set1_epi32(19235)), 1));
        }
    }
};

// Eight squares (pixels 2k .. 2k + 15 of both rows of pair j) by the same
// sums on 32-bit lanes. The two rows are added first; a pixel pair's sum
// then lands in the even lane of each 64-bit half, and interleaving the
// even lanes of both vectors gives the squares in the order 0 4 1 5 | 2 6
// 3 7, which one permutation undoes. The B and R sums (at most 1020) add
// as words within a 32-bit lane without carrying into each other. U never
// leaves 17..239, so the saturating pack keeps its low byte; V is clamped
// by it.
template <class Src>
void squares8(const Src& src, int j, int k, uint8_t* y0, uint8_t* y1, uint8_t* u, uint8_t* v)
{
    __m256i sumS[2], sumBR[2], yw[2];
    for (int dy = 0; dy < 2; ++dy) {
        __m256i s[2], br[2];
        src.terms16(2 * j + dy, 2 * k, s, br);
        // Y = s >> 16 never exceeds 255; words of pixels 0-3, 8-11 | 4-7, 12-15.
        yw[dy] = _mm256_packus_epi32(_mm256_srli_epi32(s[0], 16), _mm256_srli_epi32(s[1], 16));
        for (int h = 0; h < 2; ++h) {
            sumS[h] = dy ? _mm256_add_epi32(sumS[h], s[h]) : s[h];
            sumBR[h] = dy ? _mm256_add_epi32(sumBR[h], br[h]) : br[h];
        }
    }
    const __m256i yb = _mm256_permutevar8x32_epi32(_mm256_packus_epi16(yw[0], yw[1]),
                                                   _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(y0 + 2 * k), _mm256_castsi256_si128(yb));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(y1 + 2 * k), _mm256_extracti128_si256(yb, 1));
    auto squares = [](const __m256i (&x)[2]) {
        auto pairs = [](__m256i a) { return _mm256_add_epi32(a, _mm256_srli_epi64(a, 32)); };
        return _mm256_blend_epi32(pairs(x[0]), _mm256_slli_epi64(pairs(x[1]), 32), 0xAA);
    };
    const __m256i S = squares(sumS), BR = squares(sumBR);
    const __m256i sumB = _mm256_and_si256(BR, _mm256_set1_epi32(0xFFFF)), sumR = _mm256_srli_epi32(BR, 16);
    auto chroma = [&](__m256i sum, int w) {
        const __m256i d = _mm256_srai_epi32(
            _mm256_add_epi32(_mm256_sub_epi32(_mm256_slli_epi32(sum, 16), S), _mm256_set1_epi32(0x1FFFF)), 16);
        const __m256i c = _mm256_add_epi32(_mm256_srai_epi32(_mm256_mullo_epi32(d, _mm256_set1_epi32(w)), 18),
                                           _mm256_set1_epi32(128));
        return _mm256_permutevar8x32_epi32(c, _mm256_setr_epi32(0, 2, 4, 6, 1, 3, 5, 7));
    };
    const __m256i w = _mm256_packs_epi32(chroma(sumB, 32244), chroma(sumR, 57475));  // u0-3 v0-3 | u4-7 v4-7
    const __m256i b = _mm256_packus_epi16(w, w);
    const __m128i uv = _mm256_castsi256_si128(_mm256_permutevar8x32_epi32(b, _mm256_setr_epi32(0, 4, 1, 5, 0, 0, 0, 0)));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(u + k), uv);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(v + k), _mm_srli_si128(uv, 8));
}

// Block form of the BGR member with four-byte pixels: form E of the
// full-resolution family over 2 by 2 squares. Each pixel's S and Y are form
// E's. A square's U and V are form E's chroma from the sum of its four B (or
// R), which is four times their mean and so stands where form E has one
// pixel's channel times four, and from the mean of its four S rounded half
// up, (sum + 2) >> 2. Sums and means stay far inside 16 bits.
inline int meanOfFour(int sum) { return (sum + 2) >> 2; }

// Pixels B, G, R, A as 32-bit words are the 16-bit words B | G << 8 and
// R | A << 8. Form E's luma terms are exact high halves of the bytes with
// the factor four moved into the weight where it fits: (4B * 3736) >> 16
// is B times 14944 and (4R * 9798) >> 16 is R times 39192, one unsigned
// high-half multiply on the words B and R of eight pixels; (4G * 19235) >> 16
// is 2G times 38470, and the words 2G of 16 pixels (a multiply-add of the
// bytes by 0, 2 per pixel, packed from two registers) share one multiply.
// A horizontal add of the B and R terms of two registers packs to the same
// word order as the 2G words: pixels 0-3 8-11 | 4-7 12-15.
struct BgraTerms {
    __m256i mask = _mm256_set1_epi32(0x00FF00FF), wBR = _mm256_set1_epi32((4 * FormE::kR) << 16 | 4 * FormE::kB),
            twoG = _mm256_set1_epi32(0x0200), wG = _mm256_set1_epi16(int16_t(2 * FormE::kG));

    // Words B | R << 16 of eight pixels.
    __m256i br(__m256i px) const { return _mm256_and_si256(px, mask); }
    // The three-term sums a + b + c = S - 1 of 16 pixels, each at most 510.
    __m256i sums(__m256i pxA, __m256i pxB, __m256i brA, __m256i brB) const
    {
        const __m256i g2 = _mm256_packus_epi32(_mm256_maddubs_epi16(pxA, twoG), _mm256_maddubs_epi16(pxB, twoG));
        return _mm256_add_epi16(_mm256_hadd_epi16(_mm256_mulhi_epu16(brA, wBR), _mm256_mulhi_epu16(brB, wBR)),
                                _mm256_mulhi_epu16(g2, wG));
    }
};

// Squares of rows r0 and r1 by the block form, 16 (32 pixels) a step, worked
// on in two halves of 16 columns with both rows' pixels loaded together.
// Each row's sums S - 1 take the order above; Y = S >> 1 is a rounding
// average with 0, and one permutation puts the packed bytes back in pixel
// order. The rows' sums add and a multiply-add by ones sums each square
// (squares 0 1 4 5 | 2 3 6 7 of a half); with S = a + b + c + 1 per pixel
// the mean of four S is (sum of a + b + c + 6) >> 2. The words B and R of
// the two rows add, and a horizontal add of 32-bit words sums each square
// in the same order (B and R at most 1020, so no carry crosses); one byte
// shuffle and an unpack per half give the words sumB and sumR. Chroma:
// (sumB + 1) >> 1 is a rounding average with 0; the difference with the
// mean S (-511 .. 510) times 16121 or 28737 keeps its high half
// well inside the bytes' reach, so the saturating pack to signed bytes
// then a flip of the top bit is the saturation of that + 128. The bytes
// come out as U and V of squares 0 1 4 5 8 9 12 13 | 2 3 6 7 10 11 14 15,
// and one interleave of word pairs across the halves orders each plane.
// `n` squares from the row starts, n a multiple of 16.
[[gnu::flatten]] inline void bgraBlocks(const uint8_t* r0, const uint8_t* r1, uint8_t* y0, uint8_t* y1, uint8_t* u,
                                        uint8_t* v, int n)
{
    const BgraTerms terms;
    const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
    const __m256i ones = _mm256_set1_epi16(1), zero = _mm256_setzero_si256();
    // Each square's B | R << 16 to words B B B B R R R R per lane.
    const __m256i split = _mm256_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15, 0, 1, 4, 5, 8, 9, 12,
                                           13, 2, 3, 6, 7, 10, 11, 14, 15);
    for (int k = 0; k < n; k += 16) {
        __m256i sums[2][2], columns[2];
        for (int h = 0; h < 2; ++h) {
            __m256i px[2][2], br[2][2];
            for (int q = 0; q < 2; ++q)
                for (int r = 0; r < 2; ++r) {
                    px[r][q] = _mm256_loadu_si256(reinterpret_cast<const __m256i*>((r ? r1 : r0) + 8 * k + 64 * h + 32 * q));
                    br[r][q] = terms.br(px[r][q]);
                }
            for (int r = 0; r < 2; ++r)
                sums[r][h] = terms.sums(px[r][0], px[r][1], br[r][0], br[r][1]);
            columns[h] = _mm256_shuffle_epi8(
                _mm256_hadd_epi32(_mm256_add_epi16(br[0][0], br[1][0]), _mm256_add_epi16(br[0][1], br[1][1])), split);
        }
        for (int r = 0; r < 2; ++r) {
            const __m256i yb = _mm256_packus_epi16(_mm256_avg_epu16(sums[r][0], zero), _mm256_avg_epu16(sums[r][1], zero));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>((r ? y1 : y0) + 2 * k), _mm256_permutevar8x32_epi32(yb, order));
        }
        auto squares = [&](int h) { return _mm256_madd_epi16(_mm256_add_epi16(sums[0][h], sums[1][h]), ones); };
        const __m256i meanS = srl<2>(add(_mm256_packs_epi32(squares(0), squares(1)), 6));
        auto chroma = [&](__m256i sum, int w) {
            return _mm256_mulhi_epi16(_mm256_sub_epi16(_mm256_avg_epu16(sum, zero), meanS), k16(w));
        };
        const __m256i c = _mm256_xor_si256(
            _mm256_packs_epi16(chroma(_mm256_unpacklo_epi64(columns[0], columns[1]), FormE::kU),
                               chroma(_mm256_unpackhi_epi64(columns[0], columns[1]), FormE::kV)),
            _mm256_set1_epi8(char(0x80)));
        const __m128i lo = _mm256_castsi256_si128(c), hi = _mm256_extracti128_si256(c, 1);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(u + k), _mm_unpacklo_epi16(lo, hi));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(v + k), _mm_unpackhi_epi16(lo, hi));
    }
}

// One square by the scalar statements of the block form (form E) or of the
// 16-bit square form.
template <class Src>
void scalarSquare(const Src& src, int j, int k, bool block, uint8_t* y0, uint8_t* y1, uint8_t* u, uint8_t* v)
{
    int sumS = 0, sumB = 0, sumR = 0;
    for (int dy = 0; dy < 2; ++dy)
        for (int dx = 0; dx < 2; ++dx) {
            const Px p = src.at(2 * j + dy, 2 * k + dx);
            const int s = block ? FormE::sum(p[0] << 2, p[1] << 2, p[2] << 2) : Square16::t(p[0], p[1], p[2]);
            (dy ? y1 : y0)[2 * k + dx] = block ? FormE::y(s) : Square16::y(s);
            sumS += s;
            sumB += p[2];
            sumR += p[0];
        }
    if (block) {
        u[k] = FormE::chroma(sumB, meanOfFour(sumS), FormE::kU);
        v[k] = FormE::chroma(sumR, meanOfFour(sumS), FormE::kV);
    } else {
        u[k] = Square16::u(sumB, sumS);
        v[k] = Square16::v(sumR, sumS);
    }
}

// Every square of the image (width >> 1 by height >> 1). Sources with a
// block part take the block form over the squares of whole steps of 32
// columns from the row start, 16 squares a step; the squares after them
// (at most 15), and every square of the other sources, take the 16-bit
// square form, eight squares at a time by its vector path, which gives the
// same bytes.
template <class Src>
OrvStatus squares420(const Src& src, uint8_t* const dst[3], const int dstStep[3], RoiSize roi)
{
    const int squares = roi.width >> 1, blockEnd = Src::kBlocks ? (roi.width & ~31) >> 1 : 0;
    for (int j = 0; j < roi.height >> 1; ++j) {
        uint8_t* y0 = rowAt(dst[0], dstStep[0], 2 * j);
        uint8_t* y1 = rowAt(dst[0], dstStep[0], 2 * j + 1);
        uint8_t* u = rowAt(dst[1], dstStep[1], j);
        uint8_t* v = rowAt(dst[2], dstStep[2], j);
        int k = 0;
        if (g_scalarBlocks) {
            for (; k < blockEnd; ++k)
                scalarSquare(src, j, k, true, y0, y1, u, v);
        } else {
            if constexpr (Src::kBlocks) {
                bgraBlocks(src.row(2 * j), src.row(2 * j + 1), y0, y1, u, v, blockEnd);
                k = blockEnd;
            }
            for (; k + 8 <= squares; k += 8)
                squares8(src, j, k, y0, y1, u, v);
        }
        for (; k < squares; ++k)
            scalarSquare(src, j, k, false, y0, y1, u, v);
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

// Blue, green, red and a fourth byte that is not read: form E over the
// squares of whole steps of 32 columns, the 16-bit square form after them.
ORV_FRONT(orviBGRToYUV420_8u_AC4P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize)
{
    if (OrvStatus st = checkToYuv(pSrc, pDst, roiSize, nullptr, pDst))
        return st;
    return squares420(BgraRows{pSrc, srcStep}, pDst, dstStep, roiSize);
}

// ---- RGB to YUV 4:2:2 -------------------------------------------------------
// Pairs in blocks of 32 pixels, the pairs after them by 16 fraction bits, a
// lone last pixel of an odd width by its own form. Planes out take the
// 14-bit block when every pointer and step is a multiple of 16, else the
// two-truncation block; the tight whole image of even width and 256 pixels
// or more is one long row.
namespace h9 {
namespace {
void rgbTo422Planes(const Orv8u* pSrc, int srcStep, Orv8u* const pDst[3], const int dstStep[3], RoiSize roi)
{
    const PackedRowsIn<3> in{pSrc, srcStep};
    const YuvPlanesOut out{pDst, dstStep};
    if (aligned16(pSrc, srcStep, pDst, dstStep))
        forward422<Rounded14Block<2>, PairPlanesTail>(in, out, roi);
    else
        forward422<PairBlock<0>, PairPlanesTail>(in, out, roi);
}
}  // namespace
}  // namespace h9

ORV_FRONT(orviRGBToYUV422_8u_C3P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize)
{
    if (OrvStatus st = checkToYuv(pSrc, pDst, roiSize, nullptr, pDst))
        return st;
    rgbTo422Planes(pSrc, srcStep, pDst, dstStep, roiSize);
    return orvStatusOk;
}

ORV_FRONT(orviRGBToYUV422_8u_C3P3)(const Orv8u* pSrc, Orv8u* pDst[3], RoiSize roiSize)
{
    if (OrvStatus st = checkToYuv(pSrc, pDst, roiSize, nullptr, pDst))
        return st;
    const Tight t = tight422(roiSize);
    const int steps[3] = {t.luma, t.chroma, t.chroma};
    rgbTo422Planes(pSrc, t.rgb, pDst, steps, {t.width, t.rows});
    return orvStatusOk;
}

ORV_FRONT(orviRGBToYUV422_8u_P3R)(const Orv8u* const pSrc[3], int srcStep, Orv8u* pDst[3], int dstStep[3],
                                  RoiSize roiSize)
{
    if (OrvStatus st = checkToYuv(pSrc, pDst, roiSize, pSrc, pDst))
        return st;
    forward422<PlanarPairBlock, PairPlanesTail>(PlaneRowsIn{pSrc, srcStep}, YuvPlanesOut{pDst, dstStep}, roiSize);
    return orvStatusOk;
}

ORV_FRONT(orviRGBToYUV422_8u_P3)(const Orv8u* const pSrc[3], Orv8u* pDst[3], RoiSize roiSize)
{
    if (OrvStatus st = checkToYuv(pSrc, pDst, roiSize, pSrc, pDst))
        return st;
    const Tight t = tight422(roiSize);
    const int steps[3] = {t.luma, t.chroma, t.chroma};
    forward422<PlanarPairBlock, PairPlanesTail>(PlaneRowsIn{pSrc, t.rgbPlane}, YuvPlanesOut{pDst, steps},
                                                {t.width, t.rows});
    return orvStatusOk;
}

// Packed Y0 U Y1 V: the block rounds luma and the pair's mean luma by one
// half, the tail by 32768 throughout; a lone last pixel writes its Y and U.
ORV_FRONT(orviRGBToYUV422_8u_C3C2R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    forward422<PairBlock<1>, PairPackedTail>(PackedRowsIn<3>{pSrc, srcStep}, YuyvRowsOut{pDst, dstStep}, roiSize);
    return orvStatusOk;
}

// ---- RGB to YUV 4:2:0, interleaved source -------------------------------------
// Squares in blocks of 32 columns by the 14-bit rounded products, the
// squares after them by 14 fraction bits. The same forms serve aligned and
// unaligned arguments, so the output does not depend on alignment.
ORV_FRONT(orviRGBToYUV420_8u_C3P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize)
{
    if (OrvStatus st = checkToYuv(pSrc, pDst, roiSize, nullptr, pDst))
        return st;
    return forward420<Rounded14Block<4>, Square14>(PackedRowsIn<3>{pSrc, srcStep}, YuvPlanesOut{pDst, dstStep},
                                                   roiSize);
}

ORV_FRONT(orviRGBToYUV420_8u_C3P3)(const Orv8u* pSrc, Orv8u* pDst[3], RoiSize roiSize)
{
    if (OrvStatus st = checkToYuv(pSrc, pDst, roiSize, nullptr, pDst))
        return st;
    const int steps[3] = {roiSize.width, roiSize.width >> 1, roiSize.width >> 1};
    return forward420<Rounded14Block<4>, Square14>(PackedRowsIn<3>{pSrc, 3 * roiSize.width},
                                                   YuvPlanesOut{pDst, steps}, roiSize);
}
