// Ordered dither: the step quantiser with a threshold from a 4 by 4 Bayer
// matrix that repeats over the rectangle, t = step * k / 15, shared by the
// channels of a pixel. With noise, each pixel's threshold moves by a table
// value chosen by its position: t = step * (k / 15 + u).
//
// Rows are independent, so they run on any number of threads with the same
// output: C1, C3 and AC4 above 9216 pixels, C4 always.
#include "frame/driver.h"
#include "reduce/bytemap.h"
#include "reduce/reduce.h"

namespace h9::reduce {
namespace {

// k / 15 rounded to float, k from the 4 by 4 Bayer index matrix.
constexpr float kBayer[4][4] = {{0 / 15.0f, 8 / 15.0f, 2 / 15.0f, 10 / 15.0f},
                                {12 / 15.0f, 4 / 15.0f, 14 / 15.0f, 6 / 15.0f},
                                {3 / 15.0f, 11 / 15.0f, 1 / 15.0f, 9 / 15.0f},
                                {15 / 15.0f, 7 / 15.0f, 13 / 15.0f, 5 / 15.0f}};

// Where a row splits between the fused form (the block) and the split form.
// `row` is the address of the row's first source element.
template <class S, class D, Layout Lay, bool Noise>
Span bayerSpan(int width, const S* row)
{
    if constexpr (Lay != Layout::C1) {
        return {0, width};
    } else if constexpr (!Noise) {
        const uintptr_t a = reinterpret_cast<uintptr_t>(row);
        if (std::is_same_v<S, float> && std::is_same_v<D, int16_t> && (a & 3))
            return {0, 0};
        return {0, std::is_same_v<S, uint8_t> ? width & ~7 : width & ~3};
    } else if constexpr (std::is_same_v<S, uint8_t>) {
        return {0, width & ~3};
    } else if constexpr (std::is_same_v<S, float> || (sizeof(D) < sizeof(S) && std::is_same_v<S, int16_t>)) {
        return {0, width};
    } else {
        // 16-bit sources with a 16-bit or 16u-to-8u destination: split up to
        // the first source element on a 16-byte boundary, then whole groups
        // of four fused.
        const uintptr_t a = reinterpret_cast<uintptr_t>(row);
        if (a & 1)
            return {0, 0};
        const int first = int((16 - a % 16) % 16) / 2;
        if (first >= width)
            return {0, 0};
        return {first, first + (width - first) / 4 * 4};
    }
}

template <class S, class D, Layout Lay, bool Noise>
struct BayerRow {
    using Src = S;
    using Dst = D;
    static constexpr int kSrcPix = stride(Lay);
    static constexpr int kDstPix = stride(Lay);
    static constexpr int kCh = channels(Lay);
    // The noise forms add one half before truncating, except in C4.
    static constexpr Out kOut = Noise && Lay != Layout::C4 ? Out::Half : Out::Exact;

    const S* row;     // first pixel of the row: x is counted from here
    int y;
    float step;
    float invStep;
    float rowT[12];   // plain: step * matrix row, columns 0..3 repeated
    float rowK[12];   // noise: the matrix row itself, repeated
    NoiseTables noise;
    // Plain bytes: the row's map, when the call found one.
    static constexpr int kPeriod = Lay == Layout::C3 ? 3 : 1;
    const ByteMap<kPeriod>* map = nullptr;

    BayerRow(const S* r, int y_, float step_, float invStep_, const NoiseTables& nt, const ByteMap<kPeriod>* m)
        : row(r), y(y_), step(step_), invStep(invStep_), noise(nt), map(m)
    {
        // The matrix row and its products, three times over: whole-row
        // copies rather than an indexed loop, which compilers turn into
        // gathers.
        const __m128 k4 = _mm_loadu_ps(kBayer[y & 3]), t4 = _mm_mul_ps(_mm_set1_ps(step), k4);
        for (int k = 0; k < 12; k += 4) {
            _mm_storeu_ps(rowK + k, k4);
            _mm_storeu_ps(rowT + k, t4);
        }
    }

    Span span(int width, const D*) const { return bayerSpan<S, D, Lay, Noise>(width, row); }

    float threshold(int x) const
    {
        if constexpr (Noise)
            return step * (rowK[x & 3] + noise.at(x, y));
        else
            return rowT[x & 3];
    }

    template <bool Fused>
    void pixel(const S* s, D* d) const
    {
        const float t = threshold(int((s - row) / kSrcPix));
        for (int c = 0; c < kCh; ++c) {
            const float v = Domain<S>::value(load(s + c));
            const float q = Fused ? quantFused(v, invStep, step, t) : quantSplit(v, invStep, step, t);
            store(d + c, Dest<D>::sat(level<S, D, kOut>(q)));
        }
    }
    void block(const S* s, D* d) const { pixel<true>(s, d); }
    void tail(const S* s, D* d) const { pixel<false>(s, d); }

    // Thresholds of the eight pixels from column x.
    __m256 threshold8(int x) const
    {
        if constexpr (Noise) {
            // The table lookups by position, one pixel at a time; the
            // thresholds are formed eight at a time.
            alignas(32) float u[8];
            for (int k = 0; k < 8; ++k)
                u[k] = noise.at(x + k, y);
            return _mm256_mul_ps(_mm256_set1_ps(step), _mm256_add_ps(_mm256_loadu_ps(rowK + (x & 3)), _mm256_load_ps(u)));
        } else {
            return _mm256_loadu_ps(rowT + (x & 3));
        }
    }

    // Eight elements with their thresholds, fused.
    template <bool KeepAlpha>
    void elements8(const S* s, D* d, __m256 t) const
    {
        const __m256 q = quantFused8(domain8(s), _mm256_set1_ps(invStep), _mm256_set1_ps(step), t);
        if constexpr (KeepAlpha)
            store8KeepAlpha(d, level8<S, D, kOut>(q));
        else
            store8(d, level8<S, D, kOut>(q));
    }

    // 32 bytes a round through the map; returns the pixels done. The row's
    // vector part starts at its first pixel, where the pattern starts.
    template <int kChunks>
    int mapped(const S* s, D* d, int n) const
    {
        constexpr int kPix = 32 * kPeriod / kSrcPix;  // pixels per pattern
        const __m256i alpha = _mm256_set1_epi32(int32_t(0xFF000000u));
        const ByteMap<kPeriod> m = *map;  // a local copy stays in registers: byte stores alias everything
        int i = 0;
        for (; i + kPix <= n; i += kPix) {
            for (int p = 0; p < kPeriod; ++p) {
                const S* sp = s + i * kSrcPix + 32 * p;
                D* dp = d + i * kDstPix + 32 * p;
                __m256i r = m.template apply<kChunks>(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(sp)), p);
                if constexpr (Lay == Layout::AC4)
                    r = _mm256_or_si256(_mm256_andnot_si256(alpha, r),
                                        _mm256_and_si256(alpha, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(dp))));
                _mm256_storeu_si256(reinterpret_cast<__m256i*>(dp), r);
            }
        }
        return i;
    }

    // Eight pixels a round: their thresholds, expanded to channel order.
    void vector(const S* s, D* d, int n) const
    {
        const int x0 = int((s - row) / kSrcPix);
        int i = 0;
        if constexpr (std::is_same_v<S, uint8_t> && !Noise) {
            if (map && x0 == 0) {
                switch (map->chunks) {
                case 1: i = mapped<1>(s, d, n); break;
                case 2: i = mapped<2>(s, d, n); break;
                case 3: i = mapped<3>(s, d, n); break;
                default: i = mapped<4>(s, d, n); break;
                }
            }
        }
        for (; i + 8 <= n; i += 8) {
            const __m256 t = threshold8(x0 + i);
            const S* sp = s + i * kSrcPix;
            D* dp = d + i * kDstPix;
            if constexpr (Lay == Layout::C1) {
                elements8<false>(sp, dp, t);
            } else if constexpr (Lay == Layout::C3) {
                elements8<false>(sp, dp, _mm256_permutevar8x32_ps(t, _mm256_setr_epi32(0, 0, 0, 1, 1, 1, 2, 2)));
                elements8<false>(sp + 8, dp + 8, _mm256_permutevar8x32_ps(t, _mm256_setr_epi32(2, 3, 3, 3, 4, 4, 4, 5)));
                elements8<false>(sp + 16, dp + 16, _mm256_permutevar8x32_ps(t, _mm256_setr_epi32(5, 5, 6, 6, 6, 7, 7, 7)));
            } else {
                for (int k = 0; k < 4; ++k) {
                    const __m256i sel = _mm256_setr_epi32(2 * k, 2 * k, 2 * k, 2 * k, 2 * k + 1, 2 * k + 1, 2 * k + 1, 2 * k + 1);
                    elements8<Lay == Layout::AC4>(sp + 8 * k, dp + 8 * k, _mm256_permutevar8x32_ps(t, sel));
                }
            }
        }
        for (; i < n; ++i)
            block(s + i * kSrcPix, d + i * kDstPix);
    }
};

// Plain bytes: the index and the output of every byte value at each of the
// 16 thresholds, by the same eight-lane arithmetic as the float path, fitted
// as one map per row of the matrix. False when there is no fit.
template <int kPeriod, class Pos>
bool bayerMaps(float step, float invStep, int L, Pos pos, ByteMap<kPeriod> (&maps)[4])
{
    int index[16][256];
    uint8_t out[16][256];
    const __m256 a = _mm256_set1_ps(step), inv = _mm256_set1_ps(invStep);
    for (int j = 0; j < 16; ++j) {
        const __m256 t = _mm256_set1_ps(step * kBayer[j / 4][j % 4]);
        for (int v = 0; v < 256; v += 8) {
            const __m256 x = _mm256_cvtepi32_ps(_mm256_add_epi32(_mm256_set1_epi32(v), _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7)));
            const __m256i ni = _mm256_cvttps_epi32(_mm256_mul_ps(x, inv));
            const __m256 r = _mm256_fnmadd_ps(_mm256_cvtepi32_ps(ni), a, x);
            const __m256i up = _mm256_castps_si256(_mm256_cmp_ps(r, t, _CMP_GT_OQ));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(&index[j][v]), _mm256_sub_epi32(ni, up));
            store8(&out[j][v], level8<uint8_t, uint8_t, Out::Exact>(quantFused8(x, inv, a, t)));
        }
    }
    IndexFit fits[16];
    uint8_t levels[64];
    int used;
    if (!fitPositions(index, out, 16, L, fits, levels, used))
        return false;
    for (int ry = 0; ry < 4; ++ry)
        maps[ry].lay(fits + 4 * ry, levels, used, pos);
    return true;
}

// Images smaller than this keep the float path: finding the maps costs
// about as much as a few thousand elements.
constexpr int64_t kMapElements = 8192;

template <class S, class D, Layout Lay, bool Noise>
void bayerRows(const S* src, int srcStep, D* dst, int dstStep, RoiSize roi, float step, float invStep,
               const NoiseTables& nt, float L)
{
    using Row = BayerRow<S, D, Lay, Noise>;
    constexpr int kPeriod = Row::kPeriod;
    ByteMap<kPeriod> maps[4];
    bool haveMaps = false;
    if constexpr (std::is_same_v<S, uint8_t> && !Noise) {
        if (int64_t(roi.width) * roi.height * channels(Lay) >= kMapElements)
            haveMaps = bayerMaps<kPeriod>(step, invStep, int(L), [](int b) { return (b / stride(Lay)) & 3; }, maps);
    }
    auto body = [&](int y) {
        const S* s = rowAt(src, srcStep, y);
        runRow(Row(s, y, step, invStep, nt, haveMaps ? &maps[y & 3] : nullptr), s, rowAt(dst, dstStep, y),
               roi.width);
    };
    if constexpr (Lay == Layout::C4)
        rowsParallel(roi.height, body);
    else
        rowsAreaTested(roi.width, roi.height, 9216, body);
}

template <class S, class D, bool Noise>
void bayerLayout(const S* src, D* dst, const Call& c, float step, float invStep, const NoiseTables& nt)
{
    // C4 takes the byte steps as they are; the others whole elements.
    const int ss = wholeElements<S>(c.srcStep), ds = wholeElements<D>(c.dstStep);
    switch (c.layout) {
    case Layout::C1:
        return bayerRows<S, D, Layout::C1, Noise>(src, ss, dst, ds, c.roi, step, invStep, nt, c.L);
    case Layout::C3:
        return bayerRows<S, D, Layout::C3, Noise>(src, ss, dst, ds, c.roi, step, invStep, nt, c.L);
    case Layout::AC4:
        return bayerRows<S, D, Layout::AC4, Noise>(src, ss, dst, ds, c.roi, step, invStep, nt, c.L);
    case Layout::C4:
        return bayerRows<S, D, Layout::C4, Noise>(src, c.srcStep, dst, c.dstStep, c.roi, step, invStep, nt, c.L);
    }
}

}  // namespace

template <class S, class D>
OrvStatus reduceBayer(const S* src, D* dst, const Call& c)
{
    const float step = Domain<S>::step(c.L), invStep = Domain<S>::invStep(c.L);
    if (c.noise == 0) {
        bayerLayout<S, D, false>(src, dst, c, step, invStep, NoiseTables{});
        return orvStatusOk;
    }
    if (!c.buffer)
        return orvStatusNullPointer;
    // Threshold offsets in fractions of a step, within +-noise percent.
    const float n = float(int32_t(c.noise));
    const NoiseTables nt = drawNoise(c.buffer, -n / 100.0f, n / 100.0f);
    bayerLayout<S, D, true>(src, dst, c, step, invStep, nt);
    return orvStatusOk;
}

#define X(S, D) template OrvStatus reduceBayer<S, D>(const S*, D*, const Call&);
ORV_REDUCE_PAIRS(X)
#undef X

}  // namespace h9::reduce
