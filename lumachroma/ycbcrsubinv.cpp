// Studio-range YCbCr with subsampled chroma to RGB or BGR: 4:2:2 from
// packed pairs or planes, 4:2:0 from planes or a luma plane and a plane of
// chroma pairs, 4:1:1 from planes; three or four channels, or planes.
//
// Each chroma sample is repeated over the pixels that share it (one member
// interpolates it horizontally), so a row is a full-resolution row read
// through a subsampled layout (ycbcrsub.h), converted by the forms of the
// full-resolution family: a block form over the leading pixels, a scalar
// form on the rest. The 4:2:0 members convert two luma rows per chroma row.
// All run on the caller's thread.
#include <immintrin.h>

#include <array>
#include <cstdint>

#include "frame/checks.h"
#include "frame/fronts.h"
#include "lumachroma/ycbcrsub.h"

namespace h9 {
namespace {

using namespace ycs;

// ---------------------------------------------------------------------------
// Forms of this family besides the full-resolution ones.

// Scalar form with the weights of the 4:1:1 members (Cb to G: -25625).
inline constexpr InverseWeights kInv3 = {76294, 16, 104595, 25625, 53281, 132186};
using FormI3 = Inverse32<kInv3, 32768, 32768, 32768>;

// Scalar form on the raw samples, the offsets of Y and chroma and the
// rounding folded into one constant a channel.
struct FormIT {
    static Px scalar(int y, int cb, int cr)
    {
        return {chop((76284 * y + 104595 * cr - 14608761) >> 16),
                chop((76284 * y - 53281 * cr - 25690 * cb + 8887730) >> 16),
                chop((76284 * y + 132186 * cb - 18140365) >> 16)};
    }
};

// Block form on the raw samples with 3 guard bits: luma (128 Y * 4769) >> 16
// and chroma (128 x * w) >> 16, the offsets and the rounding inside one
// constant a channel.
struct FormID {
    static constexpr int kShift = 3;
    static constexpr bool kAddG = false;
    static Px scalar(int y, int cb, int cr)
    {
        const int a = hiS(y * 128, 4769);
        auto t = [](int x, int w) { return int(hiS(x * 128, w)); };
        return {satU8(int16_t(a + t(cr, 6537) - 1779) >> 3),
                satU8(int16_t(a - (t(cb, 1605) + t(cr, 3330) - 1089)) >> 3),
                satU8(int16_t(a + t(cb, 8263) - 2211) >> 3)};
    }
    static V3 lanes(const V3& x)
    {
        const V a = hiS(shl<7>(x.a), 4769), cb = shl<7>(x.b), cr = shl<7>(x.c);
        const V g = _mm256_sub_epi16(_mm256_add_epi16(hiS(cb, 1605), hiS(cr, 3330)), k16(1089));
        return {sra<3>(sub(_mm256_add_epi16(a, hiS(cr, 6537)), 1779)), sra<3>(_mm256_sub_epi16(a, g)),
                sra<3>(sub(_mm256_add_epi16(a, hiS(cb, 8263)), 2211))};
    }
    // The same split into a luma term and chroma terms (see ycbcrsub.h).
    static V lumaTerm(V y) { return hiS(shl<7>(y), 4769); }
    static V3 chromaTerms(V cb, V cr)
    {
        const V cb7 = shl<7>(cb), cr7 = shl<7>(cr);
        return {sub(hiS(cr7, 6537), 1779), sub(_mm256_add_epi16(hiS(cb7, 1605), hiS(cr7, 3330)), 1089),
                sub(hiS(cb7, 8263), 2211)};
    }
};

// BT.709 block forms: 13 fraction bits and 4 guard bits on 128 Cb' and
// 128 Cr'; luma from 128 Y' (studio range) or as 16 Y (full-scale luma),
// with the rounding term Rnd in the luma term.
template <bool FullY, int Wy, int Wrv, int Wgu, int Wgv, int Wbu, int Rnd>
struct Form709 {
    static constexpr int kShift = 4;
    static constexpr bool kAddG = false;
    static constexpr SplitWeights kWeights = {FullY ? 0 : Wy, Wrv, Wgu, Wgv, Wbu, Rnd};
    static Px scalar(int y, int cb, int cr)
    {
        const int a = (FullY ? 16 * y : hiS((y - 16) * 128, Wy)) + Rnd;
        const int cb128 = (cb - 128) * 128, cr128 = (cr - 128) * 128;
        return {satU8(int16_t(a + hiS(cr128, Wrv)) >> 4), satU8(int16_t(a - hiS(cb128, Wgu) - hiS(cr128, Wgv)) >> 4),
                satU8(int16_t(a + hiS(cb128, Wbu)) >> 4)};
    }
    static V3 lanes(const V3& x)
    {
        const V a = add(FullY ? shl<4>(x.a) : hiS(shl<7>(sub(x.a, 16)), Wy), Rnd);
        const V cb128 = shl<7>(sub(x.b, 128)), cr128 = shl<7>(sub(x.c, 128));
        return {sra<4>(_mm256_add_epi16(a, hiS(cr128, Wrv))),
                sra<4>(_mm256_sub_epi16(_mm256_sub_epi16(a, hiS(cb128, Wgu)), hiS(cr128, Wgv))),
                sra<4>(_mm256_add_epi16(a, hiS(cb128, Wbu)))};
    }
    static V lumaTerm(V y) { return add(FullY ? shl<4>(y) : hiS(shl<7>(sub(y, 16)), Wy), Rnd); }
    static V3 chromaTerms(V cb, V cr)
    {
        const V cb128 = shl<7>(sub(cb, 128)), cr128 = shl<7>(sub(cr, 128));
        return {hiS(cr128, Wrv), _mm256_add_epi16(hiS(cb128, Wgu), hiS(cr128, Wgv)), hiS(cb128, Wbu)};
    }
};
template <int Rnd>
using Form709Studio = Form709<false, 9535, 14688, 1745, 4375, 17326, Rnd>;
using Form709Full = Form709<true, 0, 12616, 1499, 3760, 14877, 8>;

// Their scalar forms, 16 fraction bits, rounded.
inline constexpr InverseWeights kInv709Studio = {76284, 16, 117506, 13959, 34996, 138609};
inline constexpr InverseWeights kInv709Full = {65536, 0, 100925, 11993, 30081, 119013};
using Form709StudioScalar = Inverse32<kInv709Studio, 32768, 32768, 32768>;
using Form709FullScalar = Inverse32<kInv709Full, 32768, 32768, 32768>;

// ---------------------------------------------------------------------------
// Rows.

// 4:2:0, two luma rows on one chroma row: the block form IB on blocks of
// 32, then IB0 (no rounding term) on the next 16 pixels when the width has
// them, the scalar form after.
template <class In, class Out>
void row420(const std::array<In, 2>& in, const std::array<Out, 2>& out, int width)
{
    const int a = width & ~31, b = a + (width & 16);
    const int i = splitBlocks<SplitIB<4>>(in, out, a);
    for (int k = 0; k < 2; ++k) {
        blockSpan<FormIB>(in[k], out[k], i, a);
        blockSpan<FormIB0>(in[k], out[k], a, b);
        tailSpan<FormIQ>(in[k], out[k], b, width);
    }
}

// Two luma rows per chroma row (rows 2p and 2p + 1 on chroma row p); a last
// odd row or column stays unwritten.
template <class RowPair>
OrvStatus rowPairs(RoiSize roi, const RowPair& rowPair)
{
    for (int p = 0; p < roi.height / 2; ++p)
        rowPair(p);
    return ((roi.width | roi.height) & 1) ? orvStatusOddSize : orvStatusOk;
}

// What the lone last pixel of an odd width takes as chroma in a packed
// 4:2:2 row: its own chroma byte for both components (OwnForBoth), or its
// own byte and the other component of the pair before (when there is one).
template <Order422 O, bool OwnForBoth>
Px lonePixel(const uint8_t* row, int width)
{
    const uint8_t* q = row + 4 * (width >> 1);
    const int yAt = O.y0, ownAt = 1 - O.y0;
    const bool ownIsCb = O.cb == ownAt;
    const uint8_t own = q[ownAt];
    const uint8_t other = (OwnForBoth || width == 1) ? own : q[ownIsCb ? O.cr - 4 : O.cb - 4];
    return {q[yAt], ownIsCb ? own : other, ownIsCb ? other : own};
}

// Packed 4:2:2 rows: whole pairs by the kernel K, then the lone pixel by the
// scalar form T into `loneOut` (which decides its fourth byte).
template <class K, class T, Order422 O, bool OwnForBoth, class Out, class LoneOut>
void packedRows(const Orv8u* src, int srcStep, RoiSize roi, const Out& out, const LoneOut& loneOut)
{
    for (int y = 0; y < roi.height; ++y) {
        const uint8_t* s = rowAt(src, srcStep, y);
        convertSubRows<K>(std::array{PackedPairsIn<O>{s}}, std::array{out(y)}, roi.width & ~1);
        if (roi.width & 1) {
            const Px p = lonePixel<O, OwnForBoth>(s, roi.width);
            loneOut(y).put(roi.width - 1, T::scalar(p[0], p[1], p[2]), false);
        }
    }
}

template <int Ch, bool Swap, Alpha A>
struct PackedRowsAt {
    uint8_t* base;
    int step;
    uint8_t alpha = 0;
    PackedOut<Ch, Swap, A> operator()(int y) const { return {rowAt(base, step, y), alpha}; }
};

// ---------------------------------------------------------------------------
// Checks.

// Planar sources: source array, destination, width, height, the three
// source planes, the step array.
OrvStatus checkFromPlanes(const Orv8u* const* src, const int* srcStep, const void* dst, RoiSize roi, int minWidth = 1)
{
    if (OrvStatus st = checkRect(src, dst, roi, minWidth))
        return st;
    if (OrvStatus st = checkPlanes(src, 3))
        return st;
    return srcStep ? orvStatusOk : orvStatusNullPointer;
}

// Semi-planar sources: luma, chroma, destination, width, height; or the
// sizes first.
OrvStatus checkFromSemiPlanar(const void* y, const void* uv, const void* dst, RoiSize roi, bool sizesFirst)
{
    if (sizesFirst && (roi.width < 1 || roi.height < 1))
        return orvStatusBadSize;
    if (!y || !uv)
        return orvStatusNullPointer;
    return checkRect(y, dst, roi);
}

// ---------------------------------------------------------------------------
// Front bodies shared by the members of one shape.

using Kernel422 = Kernel<SplitIB<4>, FormIS, Blocks<16>>;

// Packed 4:2:2 to three channels.
template <Order422 O, bool Bgr>
OrvStatus pairsToC3(const Orv8u* src, int srcStep, Orv8u* dst, int dstStep, RoiSize roi, int minWidth = 1)
{
    if (OrvStatus st = checkRect(src, dst, roi, minWidth))
        return st;
    const PackedRowsAt<3, Bgr, Alpha::None> out{dst, dstStep};
    packedRows<Kernel422, FormIS, O, false>(src, srcStep, roi, out, out);
    return orvStatusOk;
}

// Packed 4:2:2 to four channels with `alpha`; the lone pixel's fourth byte
// stays untouched.
template <Order422 O, bool Bgr, bool OwnForBoth>
OrvStatus pairsToC4(const Orv8u* src, int srcStep, Orv8u* dst, int dstStep, RoiSize roi, Orv8u alpha)
{
    if (OrvStatus st = checkRect(src, dst, roi))
        return st;
    packedRows<Kernel422, FormIS, O, OwnForBoth>(src, srcStep, roi, PackedRowsAt<4, Bgr, Alpha::Value>{dst, dstStep, alpha},
                                                 PackedRowsAt<4, Bgr, Alpha::Keep>{dst, dstStep});
    return orvStatusOk;
}

// Packed 4:2:2 to three planes with one step.
template <Order422 O>
OrvStatus pairsToPlanes(const Orv8u* src, int srcStep, Orv8u* dst[3], int dstStep, RoiSize roi)
{
    if (OrvStatus st = checkRect(src, dst, roi))
        return st;
    if (OrvStatus st = checkPlanes(dst, 3))
        return st;
    const PlaneRowsOut out{dst, dstStep};
    packedRows<Kernel<FormIP, FormIT, Blocks<4>>, FormIT, O, false>(src, srcStep, roi, out, out);
    return orvStatusOk;
}

// Planar 4:2:2 to three channels; the lone last pixel of an odd width
// takes the chroma of the pair before it.
template <bool Bgr>
OrvStatus planes422ToC3(const Orv8u* const src[3], const int srcStep[3], Orv8u* dst, int dstStep, RoiSize roi)
{
    if (OrvStatus st = checkFromPlanes(src, srcStep, dst, roi, 2))
        return st;
    for (int y = 0; y < roi.height; ++y) {
        const PlanarSubIn<2> in{rowAt(src[0], srcStep[0], y), rowAt(src[1], srcStep[1], y), rowAt(src[2], srcStep[2], y),
                                roi.width / 2 - 1};
        convertSubRows<Kernel<SplitIB<4>, FormIT, Blocks<16>>>(
            std::array{in}, std::array{PackedOut<3, Bgr, Alpha::None>{rowAt(dst, dstStep, y)}}, roi.width);
    }
    return orvStatusOk;
}

// Planar 4:2:0 (Cr plane second when CrFirst) through the row form `Row`.
template <bool CrFirst, int Ch, bool Bgr, Alpha A, class Row>
OrvStatus planes420(const Orv8u* const src[3], const int srcStep[3], Orv8u* dst, int dstStep, RoiSize roi,
                    Orv8u alpha, const Row& row)
{
    const int cb = CrFirst ? 2 : 1, cr = CrFirst ? 1 : 2;
    return rowPairs(roi, [&](int p) {
        auto in = [&](int y) {
            return PlanarSubIn<2>{rowAt(src[0], srcStep[0], y), rowAt(src[cb], srcStep[cb], p),
                                  rowAt(src[cr], srcStep[cr], p), roi.width};
        };
        auto out = [&](int y) { return PackedOut<Ch, Bgr, A>{rowAt(dst, dstStep, y), alpha}; };
        row(std::array{in(2 * p), in(2 * p + 1)}, std::array{out(2 * p), out(2 * p + 1)}, roi.width & ~1);
    });
}

template <bool CbFirst, int Ch, bool Bgr, Alpha A>
OrvStatus semiPlanar420(const Orv8u* srcY, int srcYStep, const Orv8u* srcUV, int srcUVStep, Orv8u* dst, int dstStep,
                        RoiSize roi, Orv8u alpha = 0, bool sizesFirst = false)
{
    if (OrvStatus st = checkFromSemiPlanar(srcY, srcUV, dst, roi, sizesFirst))
        return st;
    return rowPairs(roi, [&](int p) {
        auto in = [&](int y) { return SemiPlanarIn<CbFirst>{rowAt(srcY, srcYStep, y), rowAt(srcUV, srcUVStep, p)}; };
        auto out = [&](int y) { return PackedOut<Ch, Bgr, A>{rowAt(dst, dstStep, y), alpha}; };
        row420(std::array{in(2 * p), in(2 * p + 1)}, std::array{out(2 * p), out(2 * p + 1)}, roi.width & ~1);
    });
}

// 4:1:1 planes; the pixels past the last whole group of four (one to
// three) take that group's chroma and the scalar form.
template <int Ch, Alpha A>
OrvStatus planes411(const Orv8u* const src[3], const int srcStep[3], Orv8u* dst, int dstStep, RoiSize roi, Orv8u alpha)
{
    if (OrvStatus st = checkFromPlanes(src, srcStep, dst, roi, 4))
        return st;
    for (int y = 0; y < roi.height; ++y) {
        const PlanarSubIn<4> in{rowAt(src[0], srcStep[0], y), rowAt(src[1], srcStep[1], y), rowAt(src[2], srcStep[2], y),
                                roi.width / 4 - 1};
        convertRow<Kernel<FormIB, FormI3, Blocks<4>>>(in, PackedOut<Ch, true, A>{rowAt(dst, dstStep, y), alpha}, roi.width);
    }
    return orvStatusOk;
}

// The filtered member: in each pair the even pixel takes the chroma sample,
// the odd pixel the rounded mean of it and the next one (the last pair of a
// row its own), then 12 fraction bits with no rounding term.
struct Filtered {
    static int mean(const uint8_t* c, int k, bool interpolate) { return interpolate ? (c[k] + c[k + 1] + 1) >> 1 : c[k]; }
    static void pixel(uint8_t* q, int y, int u, int v, uint8_t alpha)
    {
        const int l = 4769 * (y - 16);
        q[0] = chop((l + 8263 * u) >> 12);
        q[1] = chop((l - 1605 * u - 3330 * v) >> 12);
        q[2] = chop((l + 6537 * v) >> 12);
        q[3] = alpha;
    }

    // Chroma of 16 pixels less 128 in 16-bit lanes: samples k .. k + 7,
    // each followed by its mean with the next (a byte average rounds up
    // like the scalar mean).
    static V chroma16(const uint8_t* c)
    {
        const __m128i here = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(c));
        const __m128i next = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(c + 1));
        return sub(_mm256_cvtepu8_epi16(_mm_unpacklo_epi8(here, _mm_avg_epu8(here, next))), 128);
    }
    // 16 pixels: the sums as 32-bit multiply-adds of (Y - 16, u) and
    // (Y - 16, v), >> 12, narrowed with saturation (the clamp to 0 .. 255).
    static void block16(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint8_t* d, uint8_t alpha)
    {
        const V yy = sub(_mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(y))), 16);
        const V u = chroma16(cb), v = chroma16(cr);
        auto pair = [](int a, int b) { return _mm256_set1_epi32(int32_t(uint32_t(uint16_t(a)) | (uint32_t(uint16_t(b)) << 16))); };
        auto half = [&](V yu, V yv, __m256i (&bgr)[3]) {
            bgr[0] = _mm256_srai_epi32(_mm256_madd_epi16(yu, pair(4769, 8263)), 12);
            bgr[1] = _mm256_srai_epi32(
                _mm256_add_epi32(_mm256_madd_epi16(yu, pair(4769, -1605)), _mm256_madd_epi16(yv, pair(0, -3330))), 12);
            bgr[2] = _mm256_srai_epi32(_mm256_madd_epi16(yv, pair(4769, 6537)), 12);
        };
        // lo: pixels 0-3 | 8-11, hi: 4-7 | 12-15, as 32-bit lanes.
        __m256i lo[3], hi[3];
        half(_mm256_unpacklo_epi16(yy, u), _mm256_unpacklo_epi16(yy, v), lo);
        half(_mm256_unpackhi_epi16(yy, u), _mm256_unpackhi_epi16(yy, v), hi);
        const V b = _mm256_packs_epi32(lo[0], hi[0]), g = _mm256_packs_epi32(lo[1], hi[1]);
        const V r = _mm256_packs_epi32(lo[2], hi[2]);
        // Per lane: B 0-7, G 0-7 and R 0-7, alpha; then B G pairs and R A
        // pairs, and the four bytes of each pixel.
        static constexpr std::array<int8_t, 16> kPairUp = {0, 8, 1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15};
        const __m256i bg = _mm256_shuffle_epi8(_mm256_packus_epi16(b, g), mask256(kPairUp));
        const __m256i ra = _mm256_shuffle_epi8(_mm256_packus_epi16(r, k16(alpha)), mask256(kPairUp));
        const __m256i p0 = _mm256_unpacklo_epi16(bg, ra), p1 = _mm256_unpackhi_epi16(bg, ra);
        storeu32(d, _mm256_permute2x128_si256(p0, p1, 0x20));
        storeu32(d + 32, _mm256_permute2x128_si256(p0, p1, 0x31));
    }
};

void filteredRow(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint8_t* d, int width, uint8_t alpha)
{
    const int pairs = width / 2;
    int i = 0;
    // Vectors of 16 pixels while the next sample after them lies in the row.
    if (!g_scalarBlocks)
        for (; i + 18 <= 2 * pairs; i += 16)
            Filtered::block16(y + i, cb + i / 2, cr + i / 2, d + 4 * i, alpha);
    for (; i < 2 * pairs; ++i) {
        const int k = i / 2;
        const bool interpolate = (i & 1) && k + 1 < pairs;
        Filtered::pixel(d + 4 * i, y[i], Filtered::mean(cb, k, interpolate) - 128, Filtered::mean(cr, k, interpolate) - 128,
                        alpha);
    }
}

}  // namespace
}  // namespace h9

using namespace h9;

// ---- 4:2:2 packed ---------------------------------------------------------
ORV_FRONT(orviYCbCr422ToRGB_8u_C2C3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    return pairsToC3<kOrderYCbCr, false>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviYCbCr422ToBGR_8u_C2C3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    return pairsToC3<kOrderYCbCr, true>(pSrc, srcStep, pDst, dstStep, roiSize, 2);
}
ORV_FRONT(orviYCrCb422ToRGB_8u_C2C3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    return pairsToC3<kOrderYCrCb, false>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviYCrCb422ToBGR_8u_C2C3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    return pairsToC3<kOrderYCrCb, true>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviCbYCr422ToRGB_8u_C2C3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    return pairsToC3<kOrderCbYCr, false>(pSrc, srcStep, pDst, dstStep, roiSize);
}

ORV_FRONT(orviYCbCr422ToRGB_8u_C2C4R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize,
                                      Orv8u alpha)
{
    return pairsToC4<kOrderYCbCr, false, true>(pSrc, srcStep, pDst, dstStep, roiSize, alpha);
}
ORV_FRONT(orviYCbCr422ToBGR_8u_C2C4R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize,
                                      Orv8u alpha)
{
    return pairsToC4<kOrderYCbCr, true, true>(pSrc, srcStep, pDst, dstStep, roiSize, alpha);
}
ORV_FRONT(orviYCrCb422ToRGB_8u_C2C4R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize,
                                      Orv8u alpha)
{
    return pairsToC4<kOrderYCrCb, false, false>(pSrc, srcStep, pDst, dstStep, roiSize, alpha);
}
ORV_FRONT(orviYCrCb422ToBGR_8u_C2C4R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize,
                                      Orv8u alpha)
{
    return pairsToC4<kOrderYCrCb, true, false>(pSrc, srcStep, pDst, dstStep, roiSize, alpha);
}
ORV_FRONT(orviCbYCr422ToBGR_8u_C2C4R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize,
                                      Orv8u alpha)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    // This member writes `alpha` into the lone pixel's fourth byte too.
    const PackedRowsAt<4, true, Alpha::Value> out{pDst, dstStep, alpha};
    packedRows<Kernel<SplitIC, FormIS, Blocks<8>>, FormIS, kOrderCbYCr, false>(pSrc, srcStep, roiSize, out, out);
    return orvStatusOk;
}

ORV_FRONT(orviYCbCr422ToRGB_8u_C2P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep, RoiSize roiSize)
{
    return pairsToPlanes<kOrderYCbCr>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviYCrCb422ToRGB_8u_C2P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep, RoiSize roiSize)
{
    return pairsToPlanes<kOrderYCrCb>(pSrc, srcStep, pDst, dstStep, roiSize);
}

// ---- 4:2:2 planar ---------------------------------------------------------
ORV_FRONT(orviYCbCr422ToRGB_8u_P3C3R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst, int dstStep,
                                      RoiSize roiSize)
{
    return planes422ToC3<false>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviYCbCr422ToBGR_8u_P3C3R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst, int dstStep,
                                      RoiSize roiSize)
{
    return planes422ToC3<true>(pSrc, srcStep, pDst, dstStep, roiSize);
}

// ---- 4:2:0 planar ---------------------------------------------------------
namespace {
constexpr auto kRow420 = [](const auto& in, const auto& out, int width) { h9::row420(in, out, width); };
template <class K>
constexpr auto kRowOf = [](const auto& in, const auto& out, int width) { h9::ycs::convertSubRows<K>(in, out, width); };
}  // namespace

ORV_FRONT(orviYCbCr420ToRGB_8u_P3C3R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst, int dstStep,
                                      RoiSize roiSize)
{
    if (OrvStatus st = checkFromPlanes(pSrc, srcStep, pDst, roiSize))
        return st;
    return planes420<false, 3, false, Alpha::None>(pSrc, srcStep, pDst, dstStep, roiSize, 0, kRow420);
}
ORV_FRONT(orviYCbCr420ToBGR_8u_P3C3R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst, int dstStep,
                                      RoiSize roiSize)
{
    if (OrvStatus st = checkFromPlanes(pSrc, srcStep, pDst, roiSize))
        return st;
    return planes420<false, 3, true, Alpha::None>(pSrc, srcStep, pDst, dstStep, roiSize, 0, kRow420);
}
ORV_FRONT(orviYCrCb420ToRGB_8u_P3C4R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst, int dstStep,
                                      RoiSize roiSize, Orv8u alpha)
{
    if (OrvStatus st = checkFromPlanes(pSrc, srcStep, pDst, roiSize))
        return st;
    return planes420<true, 4, false, Alpha::Value>(pSrc, srcStep, pDst, dstStep, roiSize, alpha,
                                                   kRowOf<Kernel<SplitIC, FormIQ, Blocks<8>>>);
}
ORV_FRONT(orviYCbCr420ToBGR_8u_P3C4R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst, int dstStep,
                                      RoiSize roiSize, Orv8u alpha)
{
    if (OrvStatus st = checkFromPlanes(pSrc, srcStep, pDst, roiSize))
        return st;
    return planes420<false, 4, true, Alpha::Value>(pSrc, srcStep, pDst, dstStep, roiSize, alpha,
                                                   kRowOf<Kernel<FormID, FormID, WholeRow>>);
}
ORV_FRONT(orviYCrCb420ToBGR_Filter_8u_P3C4R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst, int dstStep,
                                             RoiSize roiSize, Orv8u alpha)
{
    if (OrvStatus st = checkFromPlanes(pSrc, srcStep, pDst, roiSize))
        return st;
    return rowPairs(roiSize, [&](int p) {
        for (int y = 2 * p; y < 2 * p + 2; ++y)
            filteredRow(rowAt(pSrc[0], srcStep[0], y), rowAt(pSrc[2], srcStep[2], p), rowAt(pSrc[1], srcStep[1], p),
                        rowAt(pDst, dstStep, y), roiSize.width, alpha);
    });
}

// ---- 4:2:0 semi-planar ----------------------------------------------------
ORV_FRONT(orviYCbCr420ToRGB_8u_P2C3R)(const Orv8u* pSrcY, int srcYStep, const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst,
                                      int dstStep, RoiSize roiSize)
{
    return semiPlanar420<true, 3, false, Alpha::None>(pSrcY, srcYStep, pSrcUV, srcUVStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviYCbCr420ToBGR_8u_P2C3R)(const Orv8u* pSrcY, int srcYStep, const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst,
                                      int dstStep, RoiSize roiSize)
{
    return semiPlanar420<true, 3, true, Alpha::None>(pSrcY, srcYStep, pSrcUV, srcUVStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviYCrCb420ToRGB_8u_P2C3R)(const Orv8u* pSrcY, int srcYStep, const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst,
                                      int dstStep, RoiSize roiSize)
{
    return semiPlanar420<false, 3, false, Alpha::None>(pSrcY, srcYStep, pSrcUV, srcUVStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviYCrCb420ToBGR_8u_P2C3R)(const Orv8u* pSrcY, int srcYStep, const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst,
                                      int dstStep, RoiSize roiSize)
{
    return semiPlanar420<false, 3, true, Alpha::None>(pSrcY, srcYStep, pSrcUV, srcUVStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviYCbCr420ToRGB_8u_P2C4R)(const Orv8u* pSrcY, int srcYStep, const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst,
                                      int dstStep, RoiSize roiSize, Orv8u alpha)
{
    return semiPlanar420<true, 4, false, Alpha::Value>(pSrcY, srcYStep, pSrcUV, srcUVStep, pDst, dstStep, roiSize, alpha);
}
ORV_FRONT(orviYCbCr420ToBGR_8u_P2C4R)(const Orv8u* pSrcY, int srcYStep, const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst,
                                      int dstStep, RoiSize roiSize, Orv8u alpha)
{
    return semiPlanar420<true, 4, true, Alpha::Value>(pSrcY, srcYStep, pSrcUV, srcUVStep, pDst, dstStep, roiSize, alpha);
}
ORV_FRONT(orviYCrCb420ToRGB_8u_P2C4R)(const Orv8u* pSrcY, int srcYStep, const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst,
                                      int dstStep, RoiSize roiSize, Orv8u alpha)
{
    return semiPlanar420<false, 4, false, Alpha::Value>(pSrcY, srcYStep, pSrcUV, srcUVStep, pDst, dstStep, roiSize, alpha,
                                                        true);
}
ORV_FRONT(orviYCrCb420ToBGR_8u_P2C4R)(const Orv8u* pSrcY, int srcYStep, const Orv8u* pSrcUV, int srcUVStep, Orv8u* pDst,
                                      int dstStep, RoiSize roiSize, Orv8u alpha)
{
    return semiPlanar420<false, 4, true, Alpha::Value>(pSrcY, srcYStep, pSrcUV, srcUVStep, pDst, dstStep, roiSize, alpha,
                                                       true);
}

// ---- 4:1:1 ----------------------------------------------------------------
ORV_FRONT(orviYCbCr411ToBGR_8u_P3C3R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst, int dstStep,
                                      RoiSize roiSize)
{
    return planes411<3, Alpha::None>(pSrc, srcStep, pDst, dstStep, roiSize, 0);
}
ORV_FRONT(orviYCbCr411ToBGR_8u_P3C4R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst, int dstStep,
                                      RoiSize roiSize, Orv8u alpha)
{
    return planes411<4, Alpha::Value>(pSrc, srcStep, pDst, dstStep, roiSize, alpha);
}

// ---- BT.709 ---------------------------------------------------------------
ORV_FRONT(orviCbYCr422ToBGR_709HDTV_8u_C2C3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    const PackedRowsAt<3, true, Alpha::None> out{pDst, dstStep};
    packedRows<Kernel<Form709Full, Form709FullScalar, Blocks<16>>, Form709FullScalar, kOrderCbYCr, false>(
        pSrc, srcStep, roiSize, out, out);
    return orvStatusOk;
}
ORV_FRONT(orviCbYCr422ToBGR_709HDTV_8u_C2C4R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize,
                                             Orv8u alpha)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    const PackedRowsAt<4, true, Alpha::Value> out{pDst, dstStep, alpha};
    packedRows<Kernel<Form709Full, Form709FullScalar, Blocks<16>>, Form709FullScalar, kOrderCbYCr, false>(
        pSrc, srcStep, roiSize, out, out);
    return orvStatusOk;
}
ORV_FRONT(orviYCbCr420ToBGR_709HDTV_8u_P3C4R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst, int dstStep,
                                             RoiSize roiSize, Orv8u alpha)
{
    if (OrvStatus st = checkFromPlanes(pSrc, srcStep, pDst, roiSize))
        return st;
    return planes420<false, 4, true, Alpha::Value>(pSrc, srcStep, pDst, dstStep, roiSize, alpha,
                                                   kRowOf<Kernel<Form709Full, Form709FullScalar, Blocks<16>>>);
}
ORV_FRONT(orviYCbCr420ToBGR_709CSC_8u_P3C3R)(const Orv8u* const pSrc[3], const int srcStep[3], Orv8u* pDst, int dstStep,
                                            RoiSize roiSize)
{
    if (OrvStatus st = checkFromPlanes(pSrc, srcStep, pDst, roiSize))
        return st;
    return planes420<false, 3, true, Alpha::None>(pSrc, srcStep, pDst, dstStep, roiSize, 0,
                                                  kRowOf<Kernel<Form709Studio<0>, Form709StudioScalar, Blocks<16>>>);
}

namespace {
using Kernel709Studio = Kernel<Form709Studio<4>, Form709StudioScalar, Blocks<16>>;
}  // namespace

ORV_FRONT(orviYCbCrToBGR_709CSC_8u_P3C3R)(const Orv8u* const pSrc[3], int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    if (OrvStatus st = checkPlanesFirst(pSrc, pDst, roiSize))
        return st;
    convertRows<Kernel709Studio>(PlaneRowsIn{pSrc, srcStep}, PackedRowsOut<3, true, Alpha::None>{pDst, dstStep}, roiSize);
    return orvStatusOk;
}
ORV_FRONT(orviYCbCrToBGR_709CSC_8u_P3C4R)(const Orv8u* const pSrc[3], int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize,
                                         Orv8u alpha)
{
    if (OrvStatus st = checkPlanesFirst(pSrc, pDst, roiSize))
        return st;
    convertRows<Kernel709Studio>(PlaneRowsIn{pSrc, srcStep}, PackedRowsOut<4, true, Alpha::Value>{pDst, dstStep, alpha},
                                 roiSize);
    return orvStatusOk;
}
