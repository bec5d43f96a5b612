// RGB or BGR to studio-range YCbCr with subsampled chroma: 4:2:2 into
// planes or packed pairs, 4:2:0 into planes or a luma plane and a plane of
// chroma pairs, 4:1:1 into planes.
//
// Luma is that of the full-resolution forms. A chroma sample comes from the
// channel sums of the pixels that share it, weighted once (see ycbcrsub.h);
// two members filter chroma over three pixels instead, one of them after a
// gamma table. All run on the caller's thread.
#include <immintrin.h>

#include <array>
#include <cstdint>

#include "frame/checks.h"
#include "frame/fronts.h"
#include "lumachroma/ycbcrsub.h"
#include "tone/gammatables.h"

namespace h9 {
namespace {

using namespace ycs;

// Rounded high half of a 16x16-bit product, (x * c + 0x4000) >> 15
// (pmulhrsw).
inline int16_t mulhrs(int x, int c) { return int16_t((int16_t(x) * c + 0x4000) >> 15); }
inline V mulhrs(V x, int c) { return _mm256_mulhrs_epi16(x, k16(c)); }

// ---------------------------------------------------------------------------
// Forms of the semi-planar 4:2:0 members: 14-bit weights as rounded
// products r(x, c) = (x * c + 16384) >> 15 on R << 7 and on sums << 5.
struct FormsSemiPlanar : FormsQuad {
    static uint8_t yBlock(int r, int g, int b)
    {
        return satU8(wrap16(mulhrs(r << 7, 4211) + mulhrs(g << 7, 8258) + mulhrs(b << 7, 1606) + 1026) >> 6);
    }
    static V yBlock(V r, V g, V b) { return yBlock7(shl<7>(r), shl<7>(g), shl<7>(b)); }
    static V yBlock8(V r8, V g8, V b8) { return yBlock7(srl<1>(r8), srl<1>(g8), srl<1>(b8)); }
    static V yBlock7(V r7, V g7, V b7)
    {
        const V t = _mm256_add_epi16(_mm256_add_epi16(mulhrs(r7, 4211), mulhrs(g7, 8258)), mulhrs(b7, 1606));
        return srl<6>(add(t, 1026));
    }
    static C2 cBlock(int sr, int sg, int sb)
    {
        const int16_t cb = int16_t(mulhrs(sb << 5, 7193) - mulhrs(sr << 5, 2425) - mulhrs(sg << 5, 4768) + 8194);
        const int16_t cr = int16_t(mulhrs(sr << 5, 7193) - mulhrs(sb << 5, 1163) - mulhrs(sg << 5, 6029) + 8194);
        return {satU8(cb >> 6), satU8(cr >> 6)};
    }
    static void cBlock(V sr, V sg, V sb, V& cb, V& cr)
    {
        const V r = shl<5>(sr), g = shl<5>(sg), b = shl<5>(sb);
        auto diff3 = [](V a, V x, V y) { return _mm256_sub_epi16(_mm256_sub_epi16(a, x), y); };
        cb = sra<6>(add(diff3(mulhrs(b, 7193), mulhrs(r, 2425), mulhrs(g, 4768)), 8194));
        cr = sra<6>(add(diff3(mulhrs(r, 7193), mulhrs(b, 1163), mulhrs(g, 6029)), 8194));
    }
};

// Scalar pair form of the planar-source members: the first pixel's luma
// rounds (+ 0x108000), the second's does not (+ 0x100000); chroma rounds
// the pair's sums (+ 0x1010000, 128.5 at 17 fraction bits); all through
// the clamp table.
struct FormsPlanarPairs : FormsPair {
    static uint8_t yTail(int r, int g, int b, int pos)
    {
        return chop((kWY.r * r + kWY.g * g + kWY.b * b + (pos == 0 ? 0x108000 : 0x100000)) >> 16);
    }
    static uint8_t cPair(int sr, int sg, int sb, Weights3 w) { return chop((sr * w.r + sg * w.g + sb * w.b + 0x1010000) >> 17); }
    static C2 cTail(int sr, int sg, int sb) { return {cPair(sr, sg, sb, kWCb), cPair(sr, sg, sb, kWCr)}; }
};

// ---------------------------------------------------------------------------
// The lone last pixel of an odd width in a packed destination: two bytes of
// its pair (the other two would lie past the row), `d` points at them.

inline uint8_t lumaFS(const Px& p) { return FormFS::scalar(p[0], p[1], p[2])[0]; }
inline int weighted(const Px& p, Weights3 w) { return p[0] * w.r + p[1] * w.g + p[2] * w.b; }

// Luma, then its own Cb (offset -0x7FE000, kept to 8 bits).
inline void loneLumaCb(uint8_t* d, const Px& p)
{
    d[0] = lumaFS(p);
    d[1] = uint8_t((weighted(p, kWCb) - 0x7FE000) >> 16);
}
// Cb (offset -0x7F8000, kept to 8 bits), then luma.
inline void loneCbLuma(uint8_t* d, const Px& p)
{
    d[0] = uint8_t((weighted(p, kWCb) - 0x7F8000) >> 16);
    d[1] = lumaFS(p);
}

// ---------------------------------------------------------------------------
// Three-tap chroma: the odd pixel before a pair, the pair's even pixel and
// its odd pixel weigh 1/4, 1/2, 1/4 (the first pair of a row has no pixel
// before it and is weaker by that quarter). Products are rounded halves
// r(x, c) = (128 x c + 16384) >> 15 at 13 fraction bits.
struct ThreeTap {
    static int16_t r(int x, int c) { return mulhrs(x << 7, c); }
    static V r(V x, int c) { return mulhrs(shl<7>(x), c); }

    static uint8_t luma(const Px& p) { return satU8(int16_t(r(p[0], 4211) + r(p[1], 8258) + r(p[2], 1606) + 1056) >> 6); }
    static V luma(V R, V G, V B) { return sra<6>(add(_mm256_add_epi16(_mm256_add_epi16(r(R, 4211), r(G, 8258)), r(B, 1606)), 1056)); }

    // Even pixel (weight 1/2) and odd pixel (1/4) terms of Cb and Cr.
    static int diff(int a, int x, int y) { return a - x - y; }
    static V diff(V a, V x, V y) { return _mm256_sub_epi16(_mm256_sub_epi16(a, x), y); }
    template <class T>
    static T evenCb(T R, T G, T B) { return diff(r(B, 7193), r(G, 4768), r(R, 2425)); }
    template <class T>
    static T evenCr(T R, T G, T B) { return diff(r(R, 7193), r(G, 6029), r(B, 1163)); }
    template <class T>
    static T oddCb(T R, T G, T B) { return diff(r(B, 3596), r(G, 2384), r(R, 1212)); }
    template <class T>
    static T oddCr(T R, T G, T B) { return diff(r(R, 3596), r(G, 3015), r(B, 582)); }

    static uint8_t chroma(int e, int o, int p) { return satU8(int16_t(e + o + p + 16448) >> 7); }
};

// The odd terms of the pair before, carried along the row.
struct Carry {
    int cb = 0, cr = 0;
};

// Lanes shifted up by one pair, the carried value entering lane 0.
inline V previousPairs(V t, int carry)
{
    return _mm256_alignr_epi8(t, _mm256_permute2x128_si256(_mm256_set1_epi16(int16_t(carry)), t, 0x21), 14);
}

// 32 pixels by the three-tap block form: luma bytes and chroma (Cb low,
// Cr high half); `carry` goes in and comes out as the odd terms of pair n-1
// of the vector.
[[gnu::flatten]] inline void threeTap32(const Wide3& x, int pairs, Carry& carry, __m256i& y, __m256i& c)
{
    y = packBytes({ThreeTap::luma(x.a.lo, x.b.lo, x.c.lo), ThreeTap::luma(x.a.hi, x.b.hi, x.c.hi)});
    const __m256i low = _mm256_set1_epi16(0xFF);
    const __m256i R = packBytes(x.a), G = packBytes(x.b), B = packBytes(x.c);
    // Even and odd pixels of the 16 pairs, in pair order.
    const V eR = _mm256_and_si256(R, low), eG = _mm256_and_si256(G, low), eB = _mm256_and_si256(B, low);
    const V oR = _mm256_srli_epi16(R, 8), oG = _mm256_srli_epi16(G, 8), oB = _mm256_srli_epi16(B, 8);
    const V ocb = ThreeTap::oddCb(oR, oG, oB), ocr = ThreeTap::oddCr(oR, oG, oB);
    auto sum = [](V e, V o, V p) {
        return sra<7>(add(_mm256_add_epi16(_mm256_add_epi16(e, o), p), 16448));
    };
    const V cb = sum(ThreeTap::evenCb(eR, eG, eB), ocb, previousPairs(ocb, carry.cb));
    const V cr = sum(ThreeTap::evenCr(eR, eG, eB), ocr, previousPairs(ocr, carry.cr));
    c = _mm256_permute4x64_epi64(_mm256_packus_epi16(cb, cr), 0xD8);
    alignas(32) int16_t t[2][16];
    _mm256_store_si256(reinterpret_cast<__m256i*>(t[0]), ocb);
    _mm256_store_si256(reinterpret_cast<__m256i*>(t[1]), ocr);
    carry = {t[0][pairs - 1], t[1][pairs - 1]};
}

// A row of the three-tap member, CbYCr order: block form on
// [0, width & ~15), scalar pairs after it, then a lone last pixel.
template <class In>
void threeTapRow(const In& in, uint8_t* d, int width)
{
    const int end = width & ~15, pairsEnd = width & ~1;
    using Out = PackedPairsOut<kOrderCbYCr>;
    const Out out{d};
    Carry carry;
    int i = 0;
    if (g_scalarBlocks) {
        for (; i < end; i += 2) {
            const Px p0 = in.get(i), p1 = in.get(i + 1);
            out.putY(0, i, ThreeTap::luma(p0));
            out.putY(0, i + 1, ThreeTap::luma(p1));
            const int ocb = ThreeTap::oddCb<int>(p1[0], p1[1], p1[2]), ocr = ThreeTap::oddCr<int>(p1[0], p1[1], p1[2]);
            out.putC(i / 2, {ThreeTap::chroma(ThreeTap::evenCb<int>(p0[0], p0[1], p0[2]), ocb, carry.cb),
                             ThreeTap::chroma(ThreeTap::evenCr<int>(p0[0], p0[1], p0[2]), ocr, carry.cr)});
            carry = {ocb, ocr};
        }
    } else {
        for (; i + 32 <= end; i += 32) {
            __m256i y, c;
            threeTap32(in.load32(i), 16, carry, y, c);
            Out::interleave(d + 2 * i, y, c);
        }
        if (i < end) {  // 16 pixels left: through a planar buffer
            alignas(32) uint8_t buf[3][32] = {};
            for (int j = 0; j < 16; ++j) {
                const Px p = in.get(i + j);
                buf[0][j] = p[0];
                buf[1][j] = p[1];
                buf[2][j] = p[2];
            }
            __m256i y, c;
            threeTap32(PlanesIn{{buf[0], buf[1], buf[2]}}.load32(0), 8, carry, y, c);
            alignas(32) uint8_t packed[64];
            Out::interleave(packed, y, c);
            std::copy(packed, packed + 32, d + 2 * i);
            i = end;
        }
    }
    // Scalar pairs: c(i) / 2 + c(i - 1) / 4 + c(i + 1) / 4 at 16 fraction
    // bits, the first pair after the block part taking the carried odd term
    // of the block form (scaled by 2^9), a row without block part none.
    int qcb = carry.cb * 512, qcr = carry.cr * 512;
    for (; i < pairsEnd; i += 2) {
        const Px p0 = in.get(i), p1 = in.get(i + 1);
        out.putY(0, i, lumaFS(p0));
        out.putY(0, i + 1, lumaFS(p1));
        const int cb1 = weighted(p1, kWCb), cr1 = weighted(p1, kWCr);
        out.putC(i / 2, {uint8_t(((weighted(p0, kWCb) >> 1) + qcb + (cb1 >> 2) - 0x7F8001) >> 16),
                         uint8_t(((weighted(p0, kWCr) >> 1) + qcr + (cr1 >> 2) - 0x7F8001) >> 16)});
        qcb = cb1 >> 2;
        qcr = cr1 >> 2;
    }
    if (width & 1)
        loneCbLuma(d + 2 * (width - 1), in.get(width - 1));
}

// The gamma member: channels through the forward 8-bit gamma table, then a
// three-tap filter at 15 fraction bits in plain 32-bit arithmetic, the same
// for every pair of the row. Per pair, a = the even pixel, b = the odd one:
//   Cb = (Cb(a) + Cb/2(b) + Cb/2(previous b) + 4210687) >> 15, Y = luma(a),
//   Cr likewise, Y = luma(b); each kept to 8 bits.
struct GammaThreeTap {
    static int evenCb(const Px& a) { return a[0] * -2426 + a[1] * -4769 + a[2] * 7193; }
    static int evenCr(const Px& a) { return a[0] * 7193 + a[1] * -6030 + a[2] * -1164; }
    static int oddCb(const Px& b) { return b[0] * -1213 + b[1] * -2385 + b[2] * 3596; }
    static int oddCr(const Px& b) { return b[0] * 3596 + b[1] * -3015 + b[2] * -582; }
    static uint8_t luma(const Px& a) { return uint8_t((a[0] * 8422 + a[1] * 16515 + a[2] * 3212 + 0x84000) >> 15); }
    static uint8_t chroma(int e, int o, int p) { return uint8_t((e + o + p + 4210687) >> 15); }

    // The same on eight pairs in 32-bit lanes.
    using W = __m256i;
    static W dot(const W (&x)[3], int wr, int wg, int wb)
    {
        return _mm256_add_epi32(_mm256_add_epi32(mul32(x[0], wr), mul32(x[1], wg)), mul32(x[2], wb));
    }
    static W bits(W v, int shift) { return _mm256_slli_epi32(_mm256_and_si256(_mm256_srai_epi32(v, 15), k32(0xFF)), shift); }
};

// Lanes shifted up by one, the carried value entering lane 0.
inline __m256i previousWords(__m256i t, int carry)
{
    return _mm256_alignr_epi8(t, _mm256_permute2x128_si256(_mm256_set1_epi32(carry), t, 0x21), 12);
}

void gammaThreeTapRow(const uint8_t* s, uint8_t* d, int width)
{
    using G = GammaThreeTap;
    auto mapped = [&](int i) {
        return Px{tableFwd8u[s[3 * i]], tableFwd8u[s[3 * i + 1]], tableFwd8u[s[3 * i + 2]]};
    };
    int pcb = 0, pcr = 0, i = 0;
    if (!g_scalarBlocks) {
        // Eight pairs at a time: the table read byte by byte into 32-bit
        // lanes of even and odd pixels, the arithmetic on the lanes.
        for (; i + 16 <= width; i += 16) {
            alignas(32) int32_t ev[3][8], od[3][8];
            for (int j = 0; j < 8; ++j)
                for (int c = 0; c < 3; ++c) {
                    ev[c][j] = tableFwd8u[s[3 * (i + 2 * j) + c]];
                    od[c][j] = tableFwd8u[s[3 * (i + 2 * j + 1) + c]];
                }
            auto load = [](const int32_t* p) { return _mm256_load_si256(reinterpret_cast<const __m256i*>(p)); };
            const __m256i a[3] = {load(ev[0]), load(ev[1]), load(ev[2])}, b[3] = {load(od[0]), load(od[1]), load(od[2])};
            const __m256i ocb = G::dot(b, -1213, -2385, 3596), ocr = G::dot(b, 3596, -3015, -582);
            const __m256i rnd = k32(4210687);
            const __m256i cb = _mm256_add_epi32(_mm256_add_epi32(G::dot(a, -2426, -4769, 7193), ocb),
                                                _mm256_add_epi32(previousWords(ocb, pcb), rnd));
            const __m256i cr = _mm256_add_epi32(_mm256_add_epi32(G::dot(a, 7193, -6030, -1164), ocr),
                                                _mm256_add_epi32(previousWords(ocr, pcr), rnd));
            const __m256i yOff = k32(0x84000);
            const __m256i y0 = _mm256_add_epi32(G::dot(a, 8422, 16515, 3212), yOff);
            const __m256i y1 = _mm256_add_epi32(G::dot(b, 8422, 16515, 3212), yOff);
            const __m256i out = _mm256_or_si256(_mm256_or_si256(G::bits(cb, 0), G::bits(y0, 8)),
                                                _mm256_or_si256(G::bits(cr, 16), G::bits(y1, 24)));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 2 * i), out);
            pcb = _mm256_extract_epi32(ocb, 7);
            pcr = _mm256_extract_epi32(ocr, 7);
        }
    }
    for (; i + 1 < width; i += 2) {
        const Px a = mapped(i), b = mapped(i + 1);
        const int ocb = G::oddCb(b), ocr = G::oddCr(b);
        uint8_t* q = d + 2 * i;
        q[0] = G::chroma(G::evenCb(a), ocb, pcb);
        q[1] = G::luma(a);
        q[2] = G::chroma(G::evenCr(a), ocr, pcr);
        q[3] = G::luma(b);
        pcb = ocb;
        pcr = ocr;
    }
    if (width & 1)
        loneCbLuma(d + 2 * (width - 1), mapped(width - 1));
}

// ---------------------------------------------------------------------------
// Span rules: the leading pixels of a row that take the block forms.
int blocksOf16(int w) { return w & ~15; }
int blocksOf8(int w) { return w & ~7; }
int blocks16Then8Or4(int w) { return (w & ~15) + ((w & 8) ? 8 : (w & 4) ? 4 : 0); }
int allPairs(int w) { return w & ~1; }

template <int Ch, bool Bgr>
struct PackedRows {
    const uint8_t* base;
    int step;
    RgbIn<PackedIn<Ch>, Bgr> operator()(int y) const { return {{rowAt(base, step, y)}}; }
};
struct PlaneRows {
    const uint8_t* const* planes;
    int step;
    RgbIn<PlanesIn, false> operator()(int y) const
    {
        return {{{rowAt(planes[0], step, y), rowAt(planes[1], step, y), rowAt(planes[2], step, y)}}};
    }
};

// 4:2:2 into planes; a lone last pixel of an odd width is left untouched
// (its chroma would lie past the chroma planes' width >> 1 samples).
template <class Rows>
void toPlanes422(const Rows& rows, Orv8u* const dst[3], const int dstStep[3], RoiSize roi, int (*span)(int))
{
    for (int y = 0; y < roi.height; ++y) {
        const PlanarSubOut<2, 1> out{{rowAt(dst[0], dstStep[0], y)}, rowAt(dst[1], dstStep[1], y), rowAt(dst[2], dstStep[2], y)};
        forwardRow<FormsPair, 2, 1>(std::array{rows(y)}, out, span(roi.width) & ~1, roi.width & ~1);
    }
}

// 4:2:2 into packed pairs of order O: whole pairs by the forms F, then the
// lone last pixel of an odd width by `lone`.
template <class F, Order422 O, class Rows>
void toPairs422(const Rows& rows, Orv8u* dst, int dstStep, RoiSize roi, int (*span)(int),
                void (*lone)(uint8_t*, const Px&))
{
    for (int y = 0; y < roi.height; ++y) {
        uint8_t* d = rowAt(dst, dstStep, y);
        const auto in = rows(y);
        forwardRow<F, 2, 1>(std::array{in}, PackedPairsOut<O>{d}, span(roi.width) & ~1, roi.width & ~1);
        if (roi.width & 1)
            lone(d + 2 * (roi.width - 1), in.get(roi.width - 1));
    }
}

// 4:2:0 into planes, by pairs of rows; an odd last row or column stays
// unwritten.
template <class F, class Rows>
OrvStatus toPlanes420(const Rows& rows, Orv8u* const dst[3], const int dstStep[3], RoiSize roi, int (*span)(int))
{
    for (int p = 0; p < roi.height / 2; ++p) {
        const PlanarSubOut<2, 2> out{{rowAt(dst[0], dstStep[0], 2 * p), rowAt(dst[0], dstStep[0], 2 * p + 1)},
                                     rowAt(dst[1], dstStep[1], p), rowAt(dst[2], dstStep[2], p)};
        forwardRow<F, 2, 2>(std::array{rows(2 * p), rows(2 * p + 1)}, out, span(roi.width), roi.width & ~1);
    }
    return ((roi.width | roi.height) & 1) ? orvStatusOddSize : orvStatusOk;
}

template <class F, class Rows>
OrvStatus toSemiPlanar420(const Rows& rows, Orv8u* dstY, int dstYStep, Orv8u* dstUV, int dstUVStep, RoiSize roi,
                          int (*span)(int))
{
    for (int p = 0; p < roi.height / 2; ++p) {
        const SemiPlanarOut out{{rowAt(dstY, dstYStep, 2 * p), rowAt(dstY, dstYStep, 2 * p + 1)}, rowAt(dstUV, dstUVStep, p)};
        forwardRow<F, 2, 2>(std::array{rows(2 * p), rows(2 * p + 1)}, out, span(roi.width), roi.width & ~1);
    }
    return ((roi.width | roi.height) & 1) ? orvStatusOddSize : orvStatusOk;
}

// 4:1:1 into planes; the pixels past the last whole group of four are left
// out.
template <class Rows>
OrvStatus toPlanes411(const Rows& rows, Orv8u* const dst[3], const int dstStep[3], RoiSize roi)
{
    for (int y = 0; y < roi.height; ++y) {
        const PlanarSubOut<4, 1> out{{rowAt(dst[0], dstStep[0], y)}, rowAt(dst[1], dstStep[1], y), rowAt(dst[2], dstStep[2], y)};
        forwardRow<FormsQuad, 4, 1>(std::array{rows(y)}, out, roi.width & ~15, roi.width & ~3);
    }
    return (roi.width & 3) ? orvStatusOddSize : orvStatusOk;
}

// ---------------------------------------------------------------------------
// Checks.

// Source, destination array, width, height, the three planes, the step array.
OrvStatus checkToPlanes(const void* src, Orv8u* const* dst, const int* dstStep, RoiSize roi, int minWidth = 1)
{
    if (OrvStatus st = checkRect(src, dst, roi, minWidth))
        return st;
    if (OrvStatus st = checkPlanes(dst, 3))
        return st;
    return dstStep ? orvStatusOk : orvStatusNullPointer;
}

// The semi-planar members test their destination planes before the source
// (dstFirst) or after it, then the size.
OrvStatus checkToSemiPlanar(const void* src, const void* dstY, const void* dstUV, RoiSize roi, bool dstFirst)
{
    if (!dstFirst && !src)
        return orvStatusNullPointer;
    if (!dstY || !dstUV)
        return orvStatusNullPointer;
    return checkRect(src, dstY, roi);
}

// Front bodies shared by the members of one shape.
template <int Ch, bool Bgr>
OrvStatus planes422(const Orv8u* src, int srcStep, Orv8u* dst[3], int dstStep[3], RoiSize roi, int (*span)(int))
{
    if (OrvStatus st = checkToPlanes(src, dst, dstStep, roi, 2))
        return st;
    toPlanes422(PackedRows<Ch, Bgr>{src, srcStep}, dst, dstStep, roi, span);
    return orvStatusOk;
}

template <int Ch, bool Bgr, Order422 O, class F = FormsPair>
OrvStatus pairs422(const Orv8u* src, int srcStep, Orv8u* dst, int dstStep, RoiSize roi, int minWidth,
                   void (*lone)(uint8_t*, const Px&))
{
    if (OrvStatus st = checkRect(src, dst, roi, minWidth))
        return st;
    toPairs422<F, O>(PackedRows<Ch, Bgr>{src, srcStep}, dst, dstStep, roi, allPairs, lone);
    return orvStatusOk;
}

// The full-scale BT.709 pairs: the lone last pixel's Cb and luma from the
// pixel alone, both kept in 1 .. 254.
void loneCbLuma709Full(uint8_t* d, const Px& p)
{
    using F = FormsOf<k709Full, 6>;
    d[0] = F::range((weighted(p, k709Full.cb) + 0x808000) >> 16);
    d[1] = F::yTail(p[0], p[1], p[2], 0);
}

// The planar-source members: the lone last pixel takes the first pixel's
// luma and, in the byte after it, the chroma that the layout puts there,
// from the pixel alone.
template <Order422 O>
void lonePlanarPair(uint8_t* d, const Px& p)
{
    d[0] = FormsPlanarPairs::yTail(p[0], p[1], p[2], 0);
    d[1] = chop((weighted(p, O.cb < O.cr ? kWCb : kWCr) + 0x808000) >> 16);
}

template <Order422 O>
OrvStatus planarToPairs422(const Orv8u* const src[3], int srcStep, Orv8u* dst, int dstStep, RoiSize roi)
{
    if (OrvStatus st = checkRect(src, dst, roi))
        return st;
    if (OrvStatus st = checkPlanes(src, 3))
        return st;
    toPairs422<FormsPlanarPairs, O>(PlaneRows{src, srcStep}, dst, dstStep, roi, blocks16Then8Or4, lonePlanarPair<O>);
    return orvStatusOk;
}

template <int Ch, bool Bgr, class F = FormsQuad>
OrvStatus planes420(const Orv8u* src, int srcStep, Orv8u* dst[3], int dstStep[3], RoiSize roi, bool swapChroma)
{
    if (OrvStatus st = checkToPlanes(src, dst, dstStep, roi))
        return st;
    // The Cr-first names write the same planes in the other order.
    Orv8u* planes[3] = {dst[0], dst[swapChroma ? 2 : 1], dst[swapChroma ? 1 : 2]};
    const int steps[3] = {dstStep[0], dstStep[swapChroma ? 2 : 1], dstStep[swapChroma ? 1 : 2]};
    return toPlanes420<F>(PackedRows<Ch, Bgr>{src, srcStep}, planes, steps, roi, blocksOf16);
}

template <int Ch, bool Bgr, class F = FormsSemiPlanar>
OrvStatus semiPlanar420(const Orv8u* src, int srcStep, Orv8u* dstY, int dstYStep, Orv8u* dstUV, int dstUVStep,
                        RoiSize roi, int (*span)(int), bool dstFirst = true)
{
    if (OrvStatus st = checkToSemiPlanar(src, dstY, dstUV, roi, dstFirst))
        return st;
    return toSemiPlanar420<F>(PackedRows<Ch, Bgr>{src, srcStep}, dstY, dstYStep, dstUV, dstUVStep, roi, span);
}

template <int Ch>
OrvStatus planes411(const Orv8u* src, int srcStep, Orv8u* dst[3], int dstStep[3], RoiSize roi)
{
    if (OrvStatus st = checkToPlanes(src, dst, dstStep, roi, 4))
        return st;
    return toPlanes411(PackedRows<Ch, true>{src, srcStep}, dst, dstStep, roi);
}

}  // namespace
}  // namespace h9

using namespace h9;

// ---- 4:2:2 ----------------------------------------------------------------
ORV_FRONT(orviRGBToYCbCr422_8u_C3P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize)
{
    return planes422<3, false>(pSrc, srcStep, pDst, dstStep, roiSize, blocks16Then8Or4);
}
ORV_FRONT(orviBGRToYCbCr422_8u_C3P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize)
{
    return planes422<3, true>(pSrc, srcStep, pDst, dstStep, roiSize, blocks16Then8Or4);
}
ORV_FRONT(orviBGRToYCbCr422_8u_AC4P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize)
{
    return planes422<4, true>(pSrc, srcStep, pDst, dstStep, roiSize, blocksOf16);
}

ORV_FRONT(orviRGBToYCbCr422_8u_C3C2R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    return pairs422<3, false, kOrderYCbCr>(pSrc, srcStep, pDst, dstStep, roiSize, 1, loneLumaCb);
}
ORV_FRONT(orviBGRToYCbCr422_8u_C3C2R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    return pairs422<3, true, kOrderYCbCr>(pSrc, srcStep, pDst, dstStep, roiSize, 2, loneLumaCb);
}
ORV_FRONT(orviBGRToYCbCr422_8u_AC4C2R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    return pairs422<4, true, kOrderYCbCr>(pSrc, srcStep, pDst, dstStep, roiSize, 2, loneLumaCb);
}
ORV_FRONT(orviRGBToYCrCb422_8u_C3C2R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    return pairs422<3, false, kOrderYCrCb>(pSrc, srcStep, pDst, dstStep, roiSize, 1, loneLumaCb);
}
ORV_FRONT(orviBGRToCbYCr422_8u_AC4C2R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    return pairs422<4, true, kOrderCbYCr>(pSrc, srcStep, pDst, dstStep, roiSize, 1, loneCbLuma);
}

ORV_FRONT(orviRGBToYCbCr422_8u_P3C2R)(const Orv8u* const pSrc[3], int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    return planarToPairs422<kOrderYCbCr>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviRGBToYCrCb422_8u_P3C2R)(const Orv8u* const pSrc[3], int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    return planarToPairs422<kOrderYCrCb>(pSrc, srcStep, pDst, dstStep, roiSize);
}

ORV_FRONT(orviRGBToCbYCr422_8u_C3C2R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    for (int y = 0; y < roiSize.height; ++y)
        threeTapRow(RgbIn<PackedIn<3>, false>{{rowAt(pSrc, srcStep, y)}}, rowAt(pDst, dstStep, y), roiSize.width);
    return orvStatusOk;
}

ORV_FRONT(orviRGBToCbYCr422Gamma_8u_C3C2R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    for (int y = 0; y < roiSize.height; ++y)
        gammaThreeTapRow(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), roiSize.width);
    return orvStatusOk;
}

// ---- 4:2:0 ----------------------------------------------------------------
ORV_FRONT(orviRGBToYCbCr420_8u_C3P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize)
{
    return planes420<3, false>(pSrc, srcStep, pDst, dstStep, roiSize, false);
}
ORV_FRONT(orviBGRToYCbCr420_8u_C3P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize)
{
    return planes420<3, true>(pSrc, srcStep, pDst, dstStep, roiSize, false);
}
ORV_FRONT(orviBGRToYCrCb420_8u_C3P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize)
{
    return planes420<3, true>(pSrc, srcStep, pDst, dstStep, roiSize, true);
}
ORV_FRONT(orviBGRToYCbCr420_8u_AC4P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize)
{
    return planes420<4, true>(pSrc, srcStep, pDst, dstStep, roiSize, false);
}
ORV_FRONT(orviBGRToYCrCb420_8u_AC4P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize)
{
    return planes420<4, true>(pSrc, srcStep, pDst, dstStep, roiSize, true);
}
ORV_FRONT(orviRGBToYCrCb420_8u_AC4P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize)
{
    return planes420<4, false>(pSrc, srcStep, pDst, dstStep, roiSize, true);
}

ORV_FRONT(orviRGBToYCbCr420_8u_C3P2R)(const Orv8u* pSrc, int srcStep, Orv8u* pDstY, int dstYStep, Orv8u* pDstUV,
                                      int dstUVStep, RoiSize roiSize)
{
    return semiPlanar420<3, false>(pSrc, srcStep, pDstY, dstYStep, pDstUV, dstUVStep, roiSize, blocksOf16);
}
ORV_FRONT(orviBGRToYCbCr420_8u_C3P2R)(const Orv8u* pSrc, int srcStep, Orv8u* pDstY, int dstYStep, Orv8u* pDstUV,
                                      int dstUVStep, RoiSize roiSize)
{
    return semiPlanar420<3, true>(pSrc, srcStep, pDstY, dstYStep, pDstUV, dstUVStep, roiSize, blocksOf16);
}
ORV_FRONT(orviRGBToYCbCr420_8u_C4P2R)(const Orv8u* pSrc, int srcStep, Orv8u* pDstY, int dstYStep, Orv8u* pDstUV,
                                      int dstUVStep, RoiSize roiSize)
{
    return semiPlanar420<4, false>(pSrc, srcStep, pDstY, dstYStep, pDstUV, dstUVStep, roiSize, blocksOf8);
}
ORV_FRONT(orviBGRToYCbCr420_8u_AC4P2R)(const Orv8u* pSrc, int srcStep, Orv8u* pDstY, int dstYStep, Orv8u* pDstUV,
                                       int dstUVStep, RoiSize roiSize)
{
    return semiPlanar420<4, true>(pSrc, srcStep, pDstY, dstYStep, pDstUV, dstUVStep, roiSize, blocksOf8);
}

// ---- 4:1:1 ----------------------------------------------------------------
ORV_FRONT(orviBGRToYCbCr411_8u_C3P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize)
{
    return planes411<3>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ORV_FRONT(orviBGRToYCbCr411_8u_AC4P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize)
{
    return planes411<4>(pSrc, srcStep, pDst, dstStep, roiSize);
}

// ---- BT.709 ---------------------------------------------------------------
using Forms709Studio = FormsOf<k709Studio, 5>;

ORV_FRONT(orviBGRToCbYCr422_709HDTV_8u_C3C2R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    return pairs422<3, true, kOrderCbYCr, FormsOf<k709Full, 6>>(pSrc, srcStep, pDst, dstStep, roiSize, 1, loneCbLuma709Full);
}
ORV_FRONT(orviBGRToCbYCr422_709HDTV_8u_AC4C2R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize)
{
    return pairs422<4, true, kOrderCbYCr, FormsOf<k709Full, 6>>(pSrc, srcStep, pDst, dstStep, roiSize, 1, loneCbLuma709Full);
}
ORV_FRONT(orviBGRToYCbCr420_709HDTV_8u_AC4P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep[3],
                                              RoiSize roiSize)
{
    return planes420<4, true, FormsOf<k709Full, 5>>(pSrc, srcStep, pDst, dstStep, roiSize, false);
}
ORV_FRONT(orviBGRToYCbCr420_709CSC_8u_C3P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize)
{
    return planes420<3, true, Forms709Studio>(pSrc, srcStep, pDst, dstStep, roiSize, false);
}
ORV_FRONT(orviBGRToYCbCr420_709CSC_8u_AC4P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep[3],
                                             RoiSize roiSize)
{
    return planes420<4, true, Forms709Studio>(pSrc, srcStep, pDst, dstStep, roiSize, false);
}
ORV_FRONT(orviBGRToYCrCb420_709CSC_8u_C3P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep[3], RoiSize roiSize)
{
    return planes420<3, true, Forms709Studio>(pSrc, srcStep, pDst, dstStep, roiSize, true);
}
ORV_FRONT(orviBGRToYCrCb420_709CSC_8u_AC4P3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst[3], int dstStep[3],
                                             RoiSize roiSize)
{
    return planes420<4, true, Forms709Studio>(pSrc, srcStep, pDst, dstStep, roiSize, true);
}
ORV_FRONT(orviBGRToYCbCr420_709CSC_8u_C3P2R)(const Orv8u* pSrc, int srcStep, Orv8u* pDstY, int dstYStep, Orv8u* pDstUV,
                                            int dstUVStep, RoiSize roiSize)
{
    return semiPlanar420<3, true, Forms709Studio>(pSrc, srcStep, pDstY, dstYStep, pDstUV, dstUVStep, roiSize, blocksOf16,
                                                  false);
}
ORV_FRONT(orviBGRToYCbCr420_709CSC_8u_AC4P2R)(const Orv8u* pSrc, int srcStep, Orv8u* pDstY, int dstYStep, Orv8u* pDstUV,
                                             int dstUVStep, RoiSize roiSize)
{
    return semiPlanar420<4, true, Forms709Studio>(pSrc, srcStep, pDstY, dstYStep, pDstUV, dstUVStep, roiSize, blocksOf16,
                                                  false);
}
