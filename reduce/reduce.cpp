// orviReduceBits_*: the front functions, the work-buffer size query and the
// plain quantiser (no dither).
//
// The plain quantiser works on the normalised scale 0..1 rather than in the
// dither domain: x = c * v with c the float nearest 1/255 or 1/65535 (floats
// as they are), n = trunc(L * x), q0 = n / L by the reciprocal 1/L, and q
// moves up one level when the remainder is strictly above half a level. The
// output is trunc(255 q) or trunc(65535 q), saturated, with nothing added
// before the truncation. Rows are flat runs of elements (width times
// channels) whose leading whole groups take one float form and the rest the
// other; four-channel pixels with alpha go pixel by pixel, all fused.
#include <omp.h>

#include <algorithm>

#include "frame/checks.h"
#include "frame/driver.h"
#include "frame/fronts.h"
#include "frame/rands.h"
#include "orvcore.h"
#include "reduce/bytemap.h"
#include "reduce/reduce.h"

namespace h9::reduce {
namespace {

struct NoneParams {
    float L;
    float invL;     // one level
    float halfInv;  // half a level
};

// The float nearest 1/255 or 1/65535, by which integer sources are scaled
// onto 0..1.
template <class S>
constexpr float kUnit = sizeof(S) == 1 ? 0.003921569f : 1.5259022e-5f;

// Output of the plain quantiser: only the destination type matters.
template <class D>
inline int32_t scaled(float q)
{
    if constexpr (std::is_same_v<D, uint8_t>)
        return cvtTrunc(255.0f * q);
    else if constexpr (std::is_same_v<D, uint16_t>)
        return cvtTrunc(65535.0f * q);
    else
        return int32_t(uint32_t(cvtTrunc(65535.0f * q)) - 32768u);
}

template <class D>
inline __m256i scaled8(__m256 q)
{
    if constexpr (std::is_same_v<D, uint8_t>)
        return _mm256_cvttps_epi32(_mm256_mul_ps(_mm256_set1_ps(255.0f), q));
    else if constexpr (std::is_same_v<D, uint16_t>)
        return _mm256_cvttps_epi32(_mm256_mul_ps(_mm256_set1_ps(65535.0f), q));
    else
        return _mm256_sub_epi32(_mm256_cvttps_epi32(_mm256_mul_ps(_mm256_set1_ps(65535.0f), q)),
                                _mm256_set1_epi32(32768));
}

template <class S, class D, bool Fused>
inline D noneElem(S s, const NoneParams& p)
{
    const float v = Domain<S>::value(s);
    float n, q0, r;
    if constexpr (std::is_same_v<S, float>) {
        n = float(cvtTrunc(p.L * v));
        q0 = p.invL * n;
        r = Fused ? fmaf32(-n, p.invL, v) : v - q0;
    } else {
        const float x = kUnit<S> * v;
        n = float(cvtTrunc(p.L * x));
        q0 = p.invL * n;
        r = fmaf32(v, kUnit<S>, -q0);  // fused in both forms
    }
    const bool up = r > p.halfInv;
    const float q = Fused ? fmaf32(n, p.invL, up ? p.invL : 0.0f) : (up ? q0 + p.invL : q0);
    return Dest<D>::sat(scaled<D>(q));
}

// The level index of a byte in the fused form: n, plus one when the
// remainder is above half a level. The fused result depends on it alone.
inline int noneIndex(uint8_t s, const NoneParams& p)
{
    constexpr float c = kUnit<uint8_t>;
    const float v = float(s);
    const float n = float(cvtTrunc(p.L * (c * v)));
    const float r = fmaf32(v, c, -(p.invL * n));
    return int(n) + (r > p.halfInv ? 1 : 0);
}

template <class S, class D, bool Fused>
inline __m256i none8(const S* s, const NoneParams& p)
{
    const __m256 L = _mm256_set1_ps(p.L), invL = _mm256_set1_ps(p.invL);
    const __m256 v = domain8(s);
    __m256 n, q0, r;
    if constexpr (std::is_same_v<S, float>) {
        n = _mm256_cvtepi32_ps(_mm256_cvttps_epi32(_mm256_mul_ps(L, v)));
        q0 = _mm256_mul_ps(invL, n);
        r = Fused ? _mm256_fnmadd_ps(n, invL, v) : _mm256_sub_ps(v, q0);
    } else {
        const __m256 c = _mm256_set1_ps(kUnit<S>);
        n = _mm256_cvtepi32_ps(_mm256_cvttps_epi32(_mm256_mul_ps(L, _mm256_mul_ps(c, v))));
        q0 = _mm256_mul_ps(invL, n);
        r = _mm256_fmsub_ps(v, c, q0);
    }
    const __m256 up = _mm256_and_ps(_mm256_cmp_ps(r, _mm256_set1_ps(p.halfInv), _CMP_GT_OQ), invL);
    const __m256 q = Fused ? _mm256_fmadd_ps(n, invL, up) : _mm256_add_ps(q0, up);
    return scaled8<D>(q);
}

// Which elements of a flat row take which form: the leading whole groups of
// kGroup elements (the whole row when kGroup is 0) take the block form, the
// rest the split form.
template <class S, class D>
struct NoneForms;
template <> struct NoneForms<uint8_t, uint8_t>   { static constexpr bool kFused = true;  static constexpr int kGroup = 8; };
template <> struct NoneForms<uint16_t, uint16_t> { static constexpr bool kFused = false; static constexpr int kGroup = 0; };
template <> struct NoneForms<int16_t, int16_t>   { static constexpr bool kFused = true;  static constexpr int kGroup = 0; };
template <> struct NoneForms<uint16_t, uint8_t>  { static constexpr bool kFused = false; static constexpr int kGroup = 0; };
template <> struct NoneForms<int16_t, uint8_t>   { static constexpr bool kFused = true;  static constexpr int kGroup = 4; };
template <> struct NoneForms<float, uint8_t>     { static constexpr bool kFused = true;  static constexpr int kGroup = 4; };
template <> struct NoneForms<float, uint16_t>    { static constexpr bool kFused = false; static constexpr int kGroup = 0; };
template <> struct NoneForms<float, int16_t>     { static constexpr bool kFused = true;  static constexpr int kGroup = 4; };

// A byte-to-byte table of 256 entries applied to 32 bytes at a time: the
// low nibble picks an entry in each of the sixteen 16-entry parts, and the
// four high bits choose among the parts.
struct ByteTable {
    __m256i part[16];

    explicit ByteTable(const uint8_t (&t)[256])
    {
        for (int h = 0; h < 16; ++h)
            part[h] = _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(t + 16 * h)));
    }

    __m256i operator()(__m256i x) const
    {
        const __m256i lo = _mm256_and_si256(x, _mm256_set1_epi8(0x0F));
        __m256i r[16];
        for (int h = 0; h < 16; ++h)
            r[h] = _mm256_shuffle_epi8(part[h], lo);
        // blendv looks at bit 7 of each byte: bring bits 4, 5, 6 there.
        for (int bit = 4, n = 8; bit < 8; ++bit, n /= 2) {
            const __m256i m = bit == 7 ? x : _mm256_slli_epi16(x, 7 - bit);
            for (int h = 0; h < n; ++h)
                r[h] = _mm256_blendv_epi8(r[2 * h], r[2 * h + 1], m);
        }
        return r[0];
    }
};

// C1, C3, C4: a row is width * channels elements. On bytes the block form
// is a table of its 256 results, built once per call.
template <class S, class D>
struct NoneFlat {
    using Src = S;
    using Dst = D;
    static constexpr int kSrcPix = 1;
    static constexpr int kDstPix = 1;
    static constexpr bool kFused = NoneForms<S, D>::kFused;
    static constexpr int kGroup = NoneForms<S, D>::kGroup;
    static constexpr bool kTable = std::is_same_v<S, uint8_t>;
    NoneParams p;
    const ByteTable* table = nullptr;
    const ByteMap<1>* map = nullptr;  // preferred to the table when it fits

    Span span(int count, const D*) const { return {0, kGroup ? count / kGroup * kGroup : count}; }
    void block(const S* s, D* d) const { store(d, noneElem<S, D, kFused>(load(s), p)); }
    void tail(const S* s, D* d) const { store(d, noneElem<S, D, false>(load(s), p)); }
    void vector(const S* s, D* d, int n) const
    {
        int i = 0;
        if constexpr (kTable) {
            if (map) {
                switch (map->chunks) {
                case 1: i = mapped<1>(s, d, n); break;
                case 2: i = mapped<2>(s, d, n); break;
                case 3: i = mapped<3>(s, d, n); break;
                default: i = mapped<4>(s, d, n); break;
                }
            } else {
                for (; i + 32 <= n; i += 32)
                    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + i),
                                        (*table)(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i))));
            }
        }
        for (; i + 8 <= n; i += 8)
            store8(d + i, none8<S, D, kFused>(s + i, p));
        for (; i < n; ++i)
            block(s + i, d + i);
    }
    template <int kChunks>
    int mapped(const S* s, D* d, int n) const
    {
        const ByteMap<1> m = *map;  // a local copy stays in registers: byte stores alias everything
        int i = 0;
        for (; i + 32 <= n; i += 32)
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + i),
                                m.template apply<kChunks>(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i)), 0));
        return i;
    }
};

// AC4: pixel by pixel, three channels, all fused; alpha is never written.
template <class S, class D>
struct NoneAlpha {
    using Src = S;
    using Dst = D;
    static constexpr int kSrcPix = 4;
    static constexpr int kDstPix = 4;
    NoneParams p;

    Span span(int width, const D*) const { return {0, width}; }
    void block(const S* s, D* d) const
    {
        for (int c = 0; c < 3; ++c)
            store(d + c, noneElem<S, D, true>(load(s + c), p));
    }
    void tail(const S* s, D* d) const { block(s, d); }
    void vector(const S* s, D* d, int n) const
    {
        int i = 0;
        for (; i + 2 <= n; i += 2)
            store8KeepAlpha(d + 4 * i, none8<S, D, true>(s + 4 * i, p));
        for (; i < n; ++i)
            block(s + 4 * i, d + 4 * i);
    }
};

}  // namespace

template <class S, class D>
OrvStatus reduceNone(const S* src, D* dst, const Call& c)
{
    const NoneParams p{c.L, 1.0f / c.L, 0.5f / c.L};
    // Byte steps as given; one serial loop over the rows.
    if (c.layout == Layout::AC4) {
        rowsSerial(NoneAlpha<S, D>{p}, src, c.srcStep, dst, c.dstStep, c.roi.width, c.roi.height);
        return orvStatusOk;
    }
    NoneFlat<S, D> k{p};
    if constexpr (NoneFlat<S, D>::kTable) {
        static_assert(std::is_same_v<D, uint8_t> && NoneFlat<S, D>::kFused);
        uint8_t results[1][256];
        int index[1][256];
        for (int v = 0; v < 256; ++v) {
            results[0][v] = noneElem<S, D, true>(S(v), p);
            index[0][v] = noneIndex(S(v), p);
        }
        // Few levels: the index by 16-bit arithmetic and a short lookup;
        // else a lookup of all 256 results.
        IndexFit fit;
        uint8_t levels[64];
        int used;
        ByteMap<1> map;
        if (fitPositions(index, results, 1, int(c.L), &fit, levels, used)) {
            map.lay(&fit, levels, used, [](int) { return 0; });
            k.map = &map;
        }
        const ByteTable table(results[0]);
        k.table = &table;
        rowsSerial(k, src, c.srcStep, dst, c.dstStep, c.roi.width * channels(c.layout), c.roi.height);
    } else {
        rowsSerial(k, src, c.srcStep, dst, c.dstStep, c.roi.width * channels(c.layout), c.roi.height);
    }
    return orvStatusOk;
}

#define X(S, D) template OrvStatus reduceNone<S, D>(const S*, D*, const Call&);
ORV_REDUCE_PAIRS(X)
#undef X

int regionThreads()
{
    int t = 1;
#pragma omp parallel num_threads(ownGetNumThreads())
    {
#pragma omp master
        t = omp_get_num_threads();
    }
    return t;
}

namespace {

template <class S, class D>
OrvStatus front(const S* src, int srcStep, D* dst, int dstStep, RoiSize roi, int noise, int dtype, int levels,
                uint8_t* buffer, Layout layout)
{
    if (OrvStatus st = checkRect(src, dst, roi))
        return st;
    if (uint32_t(noise) > 100u)
        return orvStatusBadNoise;
    if (levels < 2 || levels > (sizeof(D) == 1 ? 256 : 65536))
        return orvStatusBadLevels;
    const Call c{srcStep, dstStep, roi, layout, float(levels - 1), uint32_t(noise), buffer};
    switch (dtype) {
    case orvDitherNone:
        return reduceNone(src, dst, c);
    case orvDitherBayer:
        return reduceBayer(src, dst, c);
    case orvDitherFloydSteinberg:
    case orvDitherJarvisJudiceNinke:
    case orvDitherStucki:
        return reduceDiffusion(src, dst, c, dtype);
    default:
        return orvStatusBadDitherType;
    }
}

}  // namespace
}  // namespace h9::reduce

using namespace h9;
using namespace h9::reduce;

ORV_FRONT(orviReduceBitsGetBufferSize)(int channels, RoiSize roiSize, int noise, OrvDitherType dtype, int* pBufferSize)
{
    if (!pBufferSize)
        return orvStatusNullPointer;
    if (roiSize.width < 1)
        return orvStatusBadSize;
    if (channels != 1 && channels != 3 && channels != 4 && channels != 9)
        return orvStatusBadChannels;
    if (uint32_t(noise) > 100u)
        return orvStatusBadNoise;
    // One block of error rows per section, at most four sections; the
    // channel count does not enter, since a section holds one channel at a
    // time.
    const uint32_t t = uint32_t(std::min(regionThreads(), 4));
    const uint32_t w = uint32_t(roiSize.width);
    uint32_t base;
    switch (dtype) {
    case orvDitherNone:
        *pBufferSize = 0;
        return orvStatusOk;
    case orvDitherBayer:
        base = 0;
        break;
    case orvDitherFloydSteinberg:
        base = (8u * w + 16u) * t;
        break;
    case orvDitherJarvisJudiceNinke:
    case orvDitherStucki:
        base = (12u * w + 48u) * t;
        break;
    default:
        return orvStatusBadDitherType;
    }
    if (noise != 0) {
        int s16 = 0, s32 = 0;
        orvsRandUniformGetSize_16s(&s16);
        orvsRandUniformGetSize_32f(&s32);
        base += uint32_t(kState16sOffset) + (uint32_t(s16) + 15u) / 16u * 16u + (uint32_t(s32) + 15u) / 16u * 16u;
    }
    // 64 bytes pay for moving the start to a multiple of 64.
    *pBufferSize = base ? int32_t(base + 64u) : 0;
    return orvStatusOk;
}

#define REDUCE_FRONT(name, S, D, layout)                                                                     \
    ORV_FRONT(name)(const S* pSrc, int srcStep, D* pDst, int dstStep, RoiSize roiSize, int noise,            \
                    OrvDitherType dtype, int levels, Orv8u* pBuffer)                                         \
    {                                                                                                        \
        return front(pSrc, srcStep, pDst, dstStep, roiSize, noise, dtype, levels, pBuffer, Layout::layout); \
    }
#define REDUCE_FRONTS(pair, S, D)                                     \
    REDUCE_FRONT(orviReduceBits_##pair##_C1R, S, D, C1)             \
    REDUCE_FRONT(orviReduceBits_##pair##_C3R, S, D, C3)             \
    REDUCE_FRONT(orviReduceBits_##pair##_AC4R, S, D, AC4)           \
    REDUCE_FRONT(orviReduceBits_##pair##_C4R, S, D, C4)

REDUCE_FRONTS(8u, Orv8u, Orv8u)
REDUCE_FRONTS(16u, Orv16u, Orv16u)
REDUCE_FRONTS(16s, Orv16s, Orv16s)
REDUCE_FRONTS(16u8u, Orv16u, Orv8u)
REDUCE_FRONTS(16s8u, Orv16s, Orv8u)
REDUCE_FRONTS(32f8u, Orv32f, Orv8u)
REDUCE_FRONTS(32f16u, Orv32f, Orv16u)
REDUCE_FRONTS(32f16s, Orv32f, Orv16s)
