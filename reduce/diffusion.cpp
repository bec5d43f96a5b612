// Error diffusion: Floyd-Steinberg, Jarvis-Judice-Ninke and Stucki, with or
// without noise.
//
// Each pixel gathers the quantisation errors that already visited pixels
// give away (the row above, or the two rows above, and the pixels to its
// left), adds them to its domain value, and is quantised with the step
// quantiser in the split form; the new error v - q goes to the current error
// row. A value at or above the top of the domain, or below `low`, saturates
// and passes on no error at all.
//
// Every pixel depends on its left neighbour and on the rows above, so rows
// cannot run apart. Channels can: they are grouped into sections, a section
// runs on one thread with its own block of error rows, and the channels of a
// section run one after the other without clearing the block. The section
// plan follows the thread count, and with it the output of images with more
// than one channel.
#include <algorithm>
#include <cstring>

#include "frame/driver.h"
#include "reduce/reduce.h"

namespace h9::reduce {
namespace {

enum class Method { FloydSteinberg = 1, JarvisJudiceNinke = 2, Stucki = 3 };

// Error rows of one section: Floyd-Steinberg keeps two rows of width + 2
// floats (one margin float at each end), the wider kernels three rows of
// width + 4 (two margin floats). The margins are cleared and never written,
// so errors carried past the edges are lost.
constexpr int rowCount(Method m) { return m == Method::FloydSteinberg ? 2 : 3; }
constexpr int margin(Method m) { return m == Method::FloydSteinberg ? 1 : 2; }
inline std::size_t blockFloats(Method m, int width)
{
    return std::size_t(rowCount(m)) * (std::size_t(width) + 2 * margin(m));
}

// Weights of the two wider kernels, from x-2 to x+2 in the row above
// (`near`) and two rows above (`far`), and at x-2, x-1 in the current row.
struct WideWeights {
    float near[5];
    float far[5];
    float cur[2];
    float scale;
};
constexpr WideWeights kJarvis = {{3, 5, 7, 5, 3}, {1, 3, 5, 3, 1}, {5, 7}, 1.0f / 48.0f};
constexpr WideWeights kStucki = {{2, 4, 8, 4, 2}, {1, 2, 4, 2, 1}, {4, 8}, 1.0f / 42.0f};

template <class S, class D, Method M, bool Noise>
struct Diffuser {
    static constexpr bool kFs = M == Method::FloydSteinberg;
    // Floyd-Steinberg on 16s-to-8u and float sources gathers with fused
    // steps, and its output adds one half before truncating.
    static constexpr bool kFusedGather = std::is_same_v<S, float> || (std::is_same_v<S, int16_t> && sizeof(D) == 1);
    static constexpr Out kOut = kFs ? Out::Half : Out::Exact;
    // Floyd-Steinberg on float sources treats values below 2^-23 as zero.
    static constexpr float kLow = kFs && std::is_same_v<S, float> ? 1.1920929e-7f : 0.0f;

    float step;
    float invStep;
    float half;  // the plain threshold, half a step
    NoiseTables noise;
    int pixStride;  // elements between pixels

    // The gathered value of pixel x. `up` is the row above (Floyd-Steinberg)
    // or {near, far}; entries at negative indexes are margins.
    float gather(float s, const float* prev, const float* far, const float* cur, int x) const
    {
        if constexpr (kFs) {
            if constexpr (kFusedGather) {
                float a = 5.0f * prev[x];
                a = fmaf32(3.0f, prev[x + 1], a);
                a = a + prev[x - 1];
                a = fmaf32(7.0f, cur[x - 1], a);
                return fmaf32(0.0625f, a, s);
            } else {
                float a = 3.0f * prev[x + 1] + prev[x - 1];
                a = a + 5.0f * prev[x];
                a = a + 7.0f * cur[x - 1];
                return s + 0.0625f * a;
            }
        } else {
            constexpr const WideWeights& w = M == Method::JarvisJudiceNinke ? kJarvis : kStucki;
            const float* near = prev;
            float p[4];
            for (int k = 0; k < 4; ++k) {
                p[k] = w.near[k] * near[x - 2 + k];
                p[k] = fmaf32(w.far[k], far[x - 2 + k], p[k]);
                if (k < 2)
                    p[k] = fmaf32(w.cur[k], cur[x - 2 + k], p[k]);
            }
            float b = (p[0] + p[2]) + (p[1] + p[3]);
            b = b + far[x + 2];
            b = b + w.near[4] * near[x + 2];
            return s + w.scale * b;
        }
    }

    // One pixel of one channel; `src` and `dst` point at the row's first
    // element of the channel.
    void pixel(const S* src, D* dst, int x, int y, const float* prev, const float* far, float* cur) const
    {
        const float v = gather(Domain<S>::value(load(src + x * pixStride)), prev, far, cur, x);
        D out;
        float e;
        if (v >= Domain<S>::kTop) {
            out = D(Dest<D>::kHigh);
            e = 0.0f;
        } else if (v < kLow) {
            out = D(Dest<D>::kLow);
            e = 0.0f;
        } else {
            const float t = Noise ? noise.at(x, y) : half;
            const float q = quantSplit(v, invStep, step, t);
            e = v - q;
            out = Dest<D>::sat(level<S, D, kOut>(q));
        }
        cur[x] = e;
        store(dst + x * pixStride, out);
    }

    // The error rows of the k-th row from now, with r in the roles of the
    // current row: Floyd-Steinberg swaps two rows, the others rotate three.
    struct Roles {
        const float* prev;  // row above (near)
        const float* far;   // two rows above
        float* cur;
    };
    static Roles roles(float* const r[3], int k)
    {
        if constexpr (kFs)
            return {r[k & 1], nullptr, r[(k + 1) & 1]};
        else
            return {r[(k + 1) % 3], r[k % 3], r[(k + 2) % 3]};
    }
    static void advance(float* r[3], int rows)
    {
        const Roles a = roles(r, rows);
        if constexpr (kFs) {
            r[0] = const_cast<float*>(a.prev);
            r[1] = a.cur;
        } else {
            r[0] = const_cast<float*>(a.far);
            r[1] = const_cast<float*>(a.prev);
            r[2] = a.cur;
        }
    }

    // Rows one after the other: the plain form of the loop.
    void rowsPlain(const S* src, int srcStep, D* dst, int dstStep, int width, int y0, int rows, float* r[3]) const
    {
        for (int k = 0; k < rows; ++k) {
            const Roles a = roles(r, k);
            const S* s = rowAt(src, srcStep, y0 + k);
            D* d = rowAt(dst, dstStep, y0 + k);
            for (int x = 0; x < width; ++x)
                pixel(s, d, x, y0 + k, a.prev, a.far, a.cur);
        }
        advance(r, rows);
    }

    // kWave rows as a wavefront, the rows of a step visited top to bottom.
    // Each row runs kLag pixels behind the one above, one more than its
    // gather reaches to the right, so that it needs nothing the row above
    // computes in the same step and the dependency chains of the rows
    // overlap. A row overwrites entries of the row two (three) above only
    // behind the pixels that the row between still has to gather, so every
    // pixel sees exactly the values of the plain loop.
    static constexpr int kLag = kFs ? 2 : 3;
    static constexpr int kWave = 8;
    void rowsWave(const S* src, int srcStep, D* dst, int dstStep, int width, int y0, float* r[3]) const
    {
        Roles a[kWave];
        const S* s[kWave];
        D* d[kWave];
        for (int k = 0; k < kWave; ++k) {
            a[k] = roles(r, k);
            s[k] = rowAt(src, srcStep, y0 + k);
            d[k] = rowAt(dst, dstStep, y0 + k);
        }
        auto step = [&](int j) {
            for (int k = 0; k < kWave; ++k) {
                const int x = j - k * kLag;
                if (x >= 0 && x < width)
                    pixel(s[k], d[k], x, y0 + k, a[k].prev, a[k].far, a[k].cur);
            }
        };
        // Filling, all rows under way, draining.
        const int full = (kWave - 1) * kLag;
        int j = 0;
        for (; j < std::min(full, width); ++j)
            step(j);
        for (; j < width; ++j)
            for (int k = 0; k < kWave; ++k)
                pixel(s[k], d[k], j - k * kLag, y0 + k, a[k].prev, a[k].far, a[k].cur);
        for (; j < width + full; ++j)
            step(j);
        advance(r, kWave);
    }

    // Plain forms: 8 * kVec rows at once, one row per vector lane. Row k
    // runs kVLag pixels behind row k - 1, so at step j lane k holds pixel
    // x = j - kVLag k. What it gathers from the row above (x - 2 to x + 2)
    // was computed some steps earlier one lane down, from two rows above two
    // lanes down, or, for the band's first rows, lies in the error rows
    // above the band; its left neighbours are its own lane one and two steps
    // back. The lag keeps every term from the rows above at least two steps
    // back, off the chain from one pixel to the next. A lane before the
    // start or past the end of its row leaves error 0, which is what the
    // margins hold, so every pixel sees exactly the values of the plain loop
    // and each lane runs the scalar statements in the same order. Sources go
    // in and outputs come out through small buffers of kChunk steps,
    // transposed to lanes. The band's last rows write their errors to the
    // rows where the plain loop would leave them.
    static constexpr int kVec = 4;
    static constexpr int kVRows = 8 * kVec;
    static constexpr int kVLag = kFs ? 3 : 4;
    static constexpr int kChunk = 64;

    // The lanes' quantiser: outputs to `out`, returns the new errors.
    __m256 quantLanes(__m256 val, __m256i act, D* out) const
    {
        const __m256 vStep = _mm256_set1_ps(step);
        const __m256 hi = _mm256_cmp_ps(val, _mm256_set1_ps(Domain<S>::kTop), _CMP_GE_OQ);
        const __m256 lo = _mm256_cmp_ps(val, _mm256_set1_ps(kLow), _CMP_LT_OQ);
        const __m256 n = _mm256_cvtepi32_ps(_mm256_cvttps_epi32(_mm256_mul_ps(val, _mm256_set1_ps(invStep))));
        const __m256 q0 = _mm256_mul_ps(n, vStep);
        const __m256 rem = _mm256_sub_ps(val, q0);
        const __m256 q = _mm256_add_ps(q0, _mm256_and_ps(_mm256_cmp_ps(rem, _mm256_set1_ps(half), _CMP_GT_OQ), vStep));
        const __m256 keep = _mm256_andnot_ps(_mm256_or_ps(hi, lo), _mm256_castsi256_ps(act));
        __m256i o = level8<S, D, kOut>(q);
        o = _mm256_blendv_epi8(o, _mm256_set1_epi32(Dest<D>::kHigh), _mm256_castps_si256(hi));
        o = _mm256_blendv_epi8(o, _mm256_set1_epi32(Dest<D>::kLow), _mm256_castps_si256(lo));
        store8(out, o);
        return _mm256_and_ps(_mm256_sub_ps(val, q), keep);
    }

    // Lanes holding a pixel of their row at step j, for vector v.
    static __m256i active(int j, int v, int width)
    {
        const __m256i lanes = _mm256_setr_epi32(0, kVLag, 2 * kVLag, 3 * kVLag, 4 * kVLag, 5 * kVLag, 6 * kVLag,
                                                7 * kVLag);
        const __m256i x = _mm256_sub_epi32(_mm256_set1_epi32(j - 8 * kVLag * v), lanes);
        return _mm256_and_si256(_mm256_cmpgt_epi32(_mm256_set1_epi32(width), x),
                                _mm256_cmpgt_epi32(x, _mm256_set1_epi32(-1)));
    }

    // The rows of a band and their transposed chunks.
    struct Band {
        const S* s[kVRows];
        D* d[kVRows];
        alignas(32) float srcT[kChunk][kVRows];
        alignas(32) D outT[kChunk][kVRows];
        alignas(32) float lastT[kChunk][8];  // errors of the last vector's lanes
    };

    void bandIn(Band& b, int j0, int j1, int width) const
    {
        if (j0 < (kVRows - 1) * kVLag || j1 > width)
            std::memset(b.srcT, 0, sizeof b.srcT);
        for (int k = 0; k < kVRows; ++k) {
            const int xa = std::max(0, j0 - kVLag * k), xb = std::min(width, j1 - kVLag * k);
            for (int x = xa; x < xb; ++x)
                b.srcT[x + kVLag * k - j0][k] = Domain<S>::value(load(b.s[k] + x * pixStride));
        }
    }

    // Outputs of the chunk to the rows; errors of row kVRows - 8 + lane to
    // `rows[lane]` where it is not null.
    void bandOut(const Band& b, int j0, int j1, int width, float* const (&rows)[8]) const
    {
        for (int k = 0; k < kVRows; ++k) {
            const int xa = std::max(0, j0 - kVLag * k), xb = std::min(width, j1 - kVLag * k);
            for (int x = xa; x < xb; ++x)
                store(b.d[k] + x * pixStride, b.outT[x + kVLag * k - j0][k]);
        }
        for (int l = 0; l < 8; ++l) {
            if (!rows[l])
                continue;
            const int lag = kVLag * (kVRows - 8 + l);
            for (int x = std::max(0, j0 - lag); x < std::min(width, j1 - lag); ++x)
                rows[l][x] = b.lastT[x + lag - j0][l];
        }
    }

    // The steps of a band chunk by chunk: sources in, step(j, j - chunk
    // start) for each step, outputs and the last rows' errors out.
    template <class Step>
    void runBand(Band& b, int width, int steps, float* const (&rows)[8], Step&& oneStep) const
    {
        for (int j0 = 0; j0 < steps; j0 += kChunk) {
            const int j1 = std::min(steps, j0 + kChunk);
            bandIn(b, j0, j1, width);
            for (int j = j0; j < j1; ++j)
                oneStep(j, j - j0);
            bandOut(b, j0, j1, width, rows);
        }
    }

    void rowsVector(const S* src, int srcStep, D* dst, int dstStep, int width, int y0, float* r[3]) const
    {
        static_assert(kVRows % 6 == 2);  // the roles after a band are those after two rows
        Band b;
        for (int k = 0; k < kVRows; ++k) {
            b.s[k] = rowAt(src, srcStep, y0 + k);
            b.d[k] = rowAt(dst, dstStep, y0 + k);
        }
        const int steps = width + (kVRows - 1) * kVLag;
        if constexpr (kFs)
            floydBand(b, width, steps, r);
        else
            wideBand(b, width, steps, r);
        advance(r, kVRows);
    }

    void floydBand(Band& b, int width, int steps, float* r[3]) const
    {
        float* edge = r[0];  // the row above the band, then the band's last row
        const __m256i down = _mm256_setr_epi32(0, 0, 1, 2, 3, 4, 5, 6), last = _mm256_set1_epi32(7);
        // From the errors of a step to what the next row gathers from it:
        // one lane down, the first lane from `first`.
        auto lower = [&](__m256 e, __m256 first) {
            return _mm256_blend_ps(_mm256_permutevar8x32_ps(e, down), first, 1);
        };
        auto above = [&](int j) { return _mm256_broadcast_ss(edge + std::min(j + kVLag, width)); };

        // up<i>: what the rows gather from step j - i.
        __m256 e1[kVec], up1[kVec], up2[kVec], up3[kVec], up4[kVec];
        for (int v = 0; v < kVec; ++v)
            e1[v] = up1[v] = up2[v] = up3[v] = up4[v] = _mm256_setzero_ps();
        up1[0] = lower(e1[0], above(-1));
        up2[0] = lower(e1[0], above(-2));
        up3[0] = lower(e1[0], above(-3));
        up4[0] = lower(e1[0], above(-4));

        float* const rows[8] = {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, edge};
        runBand(b, width, steps, rows, [&](int j, int i) {
            __m256 e[kVec];
            for (int v = 0; v < kVec; ++v) {
                const __m256 sv = _mm256_load_ps(&b.srcT[i][8 * v]);
                __m256 a, val;
                if constexpr (kFusedGather) {
                    a = _mm256_mul_ps(_mm256_set1_ps(5.0f), up3[v]);
                    a = _mm256_fmadd_ps(_mm256_set1_ps(3.0f), up2[v], a);
                    a = _mm256_add_ps(a, up4[v]);
                    a = _mm256_fmadd_ps(_mm256_set1_ps(7.0f), e1[v], a);
                    val = _mm256_fmadd_ps(_mm256_set1_ps(0.0625f), a, sv);
                } else {
                    a = _mm256_add_ps(_mm256_mul_ps(_mm256_set1_ps(3.0f), up2[v]), up4[v]);
                    a = _mm256_add_ps(a, _mm256_mul_ps(_mm256_set1_ps(5.0f), up3[v]));
                    a = _mm256_add_ps(a, _mm256_mul_ps(_mm256_set1_ps(7.0f), e1[v]));
                    val = _mm256_add_ps(sv, _mm256_mul_ps(_mm256_set1_ps(0.0625f), a));
                }
                e[v] = quantLanes(val, active(j, v, width), &b.outT[i][8 * v]);
            }
            _mm256_store_ps(b.lastT[i], e[kVec - 1]);
            for (int v = kVec - 1; v >= 0; --v) {
                up4[v] = up3[v];
                up3[v] = up2[v];
                up2[v] = up1[v];
                up1[v] = lower(e[v], v == 0 ? above(j) : _mm256_permutevar8x32_ps(e[v - 1], last));
                e1[v] = e[v];
            }
        });
    }

    // Jarvis-Judice-Ninke and Stucki. With a lag of 4, the row above gives
    // x - 2 .. x + 2 from steps j - 6 .. j - 2 and the row two above from
    // steps j - 10 .. j - 6, kept in rings of 16 steps, one and two lanes
    // down.
    void wideBand(Band& b, int width, int steps, float* r[3]) const
    {
        constexpr const WideWeights& w = M == Method::JarvisJudiceNinke ? kJarvis : kStucki;
        const Roles first = roles(r, 0);
        const float* nearRow = first.prev;  // the row above the band
        const float* farRow = first.far;    // two rows above
        // Errors of the band's last two rows, where the plain loop leaves them.
        float* const rows[8] = {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, roles(r, kVRows - 2).cur,
                                roles(r, kVRows - 1).cur};
        const __m256i down1 = _mm256_setr_epi32(0, 0, 1, 2, 3, 4, 5, 6), down2 = _mm256_setr_epi32(0, 0, 0, 1, 2, 3, 4, 5);
        const __m256i lane6 = _mm256_set1_epi32(6), lane7 = _mm256_set1_epi32(7);
        auto at = [&](const float* row, int x) { return _mm256_broadcast_ss(row + std::clamp(x, -2, width + 1)); };

        alignas(32) __m256 E[16][kVec], N1[16][kVec], N2[16][kVec];
        // Step j' (also before the first) into the rings.
        auto push = [&](int jp, const __m256* e) {
            const int i = jp & 15;
            for (int v = 0; v < kVec; ++v) {
                E[i][v] = e[v];
                const __m256 s1 = _mm256_permutevar8x32_ps(e[v], down1), s2 = _mm256_permutevar8x32_ps(e[v], down2);
                if (v == 0) {
                    N1[i][v] = _mm256_blend_ps(s1, at(nearRow, jp + kVLag), 1);
                    N2[i][v] = _mm256_blend_ps(_mm256_blend_ps(s2, at(farRow, jp + 2 * kVLag), 1),
                                               at(nearRow, jp + kVLag), 2);
                } else {
                    const __m256 p7 = _mm256_permutevar8x32_ps(e[v - 1], lane7);
                    N1[i][v] = _mm256_blend_ps(s1, p7, 1);
                    N2[i][v] = _mm256_blend_ps(_mm256_blend_ps(s2, _mm256_permutevar8x32_ps(e[v - 1], lane6), 1), p7, 2);
                }
            }
        };
        __m256 zero[kVec];
        for (int v = 0; v < kVec; ++v)
            zero[v] = _mm256_setzero_ps();
        for (int jp = -16; jp < 0; ++jp)
            push(jp, zero);

        runBand(b, width, steps, rows, [&](int j, int i) {
            __m256 e[kVec];
            for (int v = 0; v < kVec; ++v) {
                __m256 p[4];
                for (int k = 0; k < 4; ++k) {
                    p[k] = _mm256_mul_ps(_mm256_set1_ps(w.near[k]), N1[(j - 6 + k) & 15][v]);
                    p[k] = _mm256_fmadd_ps(_mm256_set1_ps(w.far[k]), N2[(j - 10 + k) & 15][v], p[k]);
                    if (k < 2)
                        p[k] = _mm256_fmadd_ps(_mm256_set1_ps(w.cur[k]), E[(j - 2 + k) & 15][v], p[k]);
                }
                __m256 s = _mm256_add_ps(_mm256_add_ps(p[0], p[2]), _mm256_add_ps(p[1], p[3]));
                s = _mm256_add_ps(s, N2[(j - 6) & 15][v]);
                s = _mm256_add_ps(s, _mm256_mul_ps(_mm256_set1_ps(w.near[4]), N1[(j - 2) & 15][v]));
                const __m256 val =
                    _mm256_add_ps(_mm256_load_ps(&b.srcT[i][8 * v]), _mm256_mul_ps(_mm256_set1_ps(w.scale), s));
                e[v] = quantLanes(val, active(j, v, width), &b.outT[i][8 * v]);
            }
            _mm256_store_ps(b.lastT[i], e[kVec - 1]);
            push(j, e);
        });
    }

    // A section: its block cleared, then its channels in order, each from
    // row 0, the error rows changing roles after every row.
    void section(const S* src, int srcStep, D* dst, int dstStep, RoiSize roi, float* block, int first,
                 int count) const
    {
        const int w = roi.width;
        std::fill(block, block + blockFloats(M, w), 0.0f);
        const int per = w + 2 * margin(M);
        float* r[3] = {block + margin(M), block + margin(M) + per, block + margin(M) + 2 * per};
        for (int c = first; c < first + count; ++c) {
            int y = 0;
            if constexpr (!Noise)
                if (!g_scalarBlocks)
                    for (; y + kVRows <= roi.height; y += kVRows)
                        rowsVector(src + c, srcStep, dst + c, dstStep, w, y, r);
            if (!g_scalarBlocks)
                for (; y + kWave <= roi.height; y += kWave)
                    rowsWave(src + c, srcStep, dst + c, dstStep, w, y, r);
            rowsPlain(src + c, srcStep, dst + c, dstStep, w, y, roi.height - y, r);
        }
    }
};

// Sections of a three- or four-channel image for a thread count: first
// channel and channel count of each.
struct Plan {
    int count;
    int first[4];
    int channels[4];
};

Plan sectionPlan(int ch, int threads)
{
    if (threads <= 1)
        return {1, {0}, {ch}};
    if (ch == 3)
        return threads == 2 ? Plan{2, {0, 2}, {2, 1}} : Plan{3, {0, 1, 2}, {1, 1, 1}};
    if (threads == 2)
        return {2, {0, 2}, {2, 2}};
    if (threads == 3)
        return {3, {0, 2, 3}, {2, 1, 1}};
    return {4, {0, 1, 2, 3}, {1, 1, 1, 1}};
}

template <class S, class D, Method M, bool Noise>
void diffuse(const S* src, D* dst, const Call& c, const NoiseTables& nt, float* blocks)
{
    const Diffuser<S, D, M, Noise> k{Domain<S>::step(c.L), Domain<S>::invStep(c.L), Domain<S>::step(c.L) * 0.5f, nt,
                                     stride(c.layout)};
    const int ss = wholeElements<S>(c.srcStep), ds = wholeElements<D>(c.dstStep);
    const int ch = channels(c.layout);
    const std::size_t perBlock = blockFloats(M, c.roi.width);
    if (ch == 1) {
        k.section(src, ss, dst, ds, c.roi, blocks, 0, 1);
        return;
    }
    int threads = regionThreads();
    if (ch == 3 && threads >= 4)
        threads -= 1;
    const Plan plan = sectionPlan(ch, threads);
    if (plan.count == 1) {
        k.section(src, ss, dst, ds, c.roi, blocks, 0, ch);
        return;
    }
#pragma omp parallel for schedule(static) num_threads(plan.count)
    for (int i = 0; i < plan.count; ++i)
        k.section(src, ss, dst, ds, c.roi, blocks + i * perBlock, plan.first[i], plan.channels[i]);
}

template <class S, class D, bool Noise>
void byMethod(const S* src, D* dst, const Call& c, int code, const NoiseTables& nt, float* blocks)
{
    if (code == 1)
        diffuse<S, D, Method::FloydSteinberg, Noise>(src, dst, c, nt, blocks);
    else if (code == 2)
        diffuse<S, D, Method::JarvisJudiceNinke, Noise>(src, dst, c, nt, blocks);
    else
        diffuse<S, D, Method::Stucki, Noise>(src, dst, c, nt, blocks);
}

}  // namespace

template <class S, class D>
OrvStatus reduceDiffusion(const S* src, D* dst, const Call& c, int code)
{
    if (!c.buffer)
        return orvStatusNullPointer;
    if (c.noise == 0) {
        byMethod<S, D, false>(src, dst, c, code, NoiseTables{}, reinterpret_cast<float*>(alignedStart(c.buffer)));
        return orvStatusOk;
    }
    // Thresholds in the domain, from (50 - noise) to (50 + noise) percent of
    // a step above the level below.
    const float step = Domain<S>::step(c.L);
    const float n = float(int32_t(c.noise));
    const NoiseTables nt = drawNoise(c.buffer, (50.0f - n) * step / 100.0f, (50.0f + n) * step / 100.0f);
    byMethod<S, D, true>(src, dst, c, code, nt, nt.errorRows);
    return orvStatusOk;
}

#define X(S, D) template OrvStatus reduceDiffusion<S, D>(const S*, D*, const Call&, int);
ORV_REDUCE_PAIRS(X)
#undef X

}  // namespace h9::reduce
