// The power function x^y = 2^(y log2 x), computed as exp(y ln x):
//
//   ln x  = k ln2 - ln r + ln(1 + (m r - 1))   with x = m 2^k, r ~ 1/m from a
//           table, the last term by a short series in s = m r - 1;
//   y ln x carried as a head and a tail (zh, zl) through split products;
//   exp   = 2^n e^t with n = round(zh / ln2) by the shifter trick and e^t by a
//           polynomial of degree 5; 2^n is added to the exponent field.
//
// Lanes that this single-precision line cannot take (non-positive, subnormal,
// non-finite or huge arguments, non-finite exponents, results near or beyond
// the float range) are recomputed in double precision by powxRareLane.
#include "vecmath/powx.h"

#include <immintrin.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "frame/driver.h"
#include "frame/scalar.h"
#include "frame/simd.h"

namespace h9 {
namespace {

// Constants of the main line.
constexpr float kSplit = 4097.0f;             // 2^12 + 1: splits a float into 12 + 12 bits
constexpr float kLn2Hi = 0.693115234375f;     // ln 2 in 11 fraction bits ...
constexpr float kLn2Lo = 3.1946183e-05f;      // ... and the rest
constexpr float kThird = 0.33333334f;         // ln(1 + s) = s - s^2/2 + s^3/3 - s^4/4
constexpr float kQuarter = -0.25f;
constexpr float kHalf = -0.5f;
constexpr float kLog2e = 1.442695f;
constexpr float kShifter = 12582912.0f;       // 1.5 2^23: adding it rounds to an integer
constexpr float kLn2HiExp = 0.69314575f;
constexpr float kLn2LoExp = 1.4286068e-06f;
constexpr float kExp5 = 0.008291719f;         // e^t, highest power first
constexpr float kExp4 = 0.041873522f;
constexpr float kExp3 = 0.16667432f;
constexpr float kExp2 = 0.49999392f;
constexpr float kExp1 = 0.9999999f;
constexpr float kExp0 = 1.0f;
constexpr float kExpLimit = 64.810547f;       // |zh| above this leaves the main line
constexpr float kFiller = 0.75f;              // masked-out lanes: a value of the main line

// Arguments between these bit patterns (0.9921875 < x < 1.015625) lie so
// close to 1 that the small term v of the reduction must join the head of the
// logarithm, not its tail, to keep its bits.
constexpr int32_t kNearOneLow = 0x3f7e0000;   // exclusive
constexpr int32_t kNearOneHigh = 0x3f820000;  // exclusive (0x3f81ffff is the last inside)

// Positive normal floats below the largest finite one take the main line.
constexpr int32_t kSmallestNormal = 0x00800000;
constexpr int32_t kLastMainLine = 0x7f7ffffe;

inline int32_t bitsOf(float x) { return std::bit_cast<int32_t>(x); }
inline float floatOf(int32_t b) { return std::bit_cast<float>(b); }

// ---------------------------------------------------------------------------
// Floating-point modes for the length of a call: all x87 exceptions masked,
// and the vector unit in its default word 0x1f80 (all exceptions masked,
// round to nearest, no flush to zero, no denormals-are-zero). On exit the
// caller's words come back and no sticky exception flag is left.
constexpr uint16_t kX87Masks = 0x3f;
constexpr uint32_t kCsrFlags = 0x3f;
constexpr uint32_t kCsrDefault = 0x1f80;

inline uint16_t x87ControlWord()
{
    uint16_t cw;
    asm volatile("fnstcw %0" : "=m"(cw));
    return cw;
}
inline void x87LoadControlWord(uint16_t cw) { asm volatile("fldcw %0" : : "m"(cw)); }
inline void x87ClearExceptions() { asm volatile("fnclex" : : : "memory"); }

class PowxModes {
public:
    PowxModes()
    {
        x87Word_ = x87ControlWord();
        if ((x87Word_ & kX87Masks) != kX87Masks) {
            x87ClearExceptions();
            x87LoadControlWord(uint16_t(x87Word_ | kX87Masks));
            x87Changed_ = true;
        }
        csr_ = _mm_getcsr();
        if ((csr_ & ~kCsrFlags) != kCsrDefault) {
            _mm_setcsr((csr_ & kCsrFlags) | kCsrDefault);
            csrChanged_ = true;
        }
        asm volatile("" : : : "memory");
    }
    ~PowxModes()
    {
        asm volatile("" : : : "memory");
        x87ClearExceptions();
        if (x87Changed_)
            x87LoadControlWord(x87Word_);
        if (csrChanged_) {
            _mm_setcsr(csr_);
        } else {
            const uint32_t now = _mm_getcsr();
            if (now & kCsrFlags)
                _mm_setcsr(now & ~kCsrFlags);
        }
    }
    PowxModes(const PowxModes&) = delete;
    PowxModes& operator=(const PowxModes&) = delete;

private:
    uint16_t x87Word_ = 0;
    bool x87Changed_ = false;
    uint32_t csr_ = 0;
    bool csrChanged_ = false;
};

// Called for each lane whose double-precision path reported a singular case,
// after its result has been stored; what the hook leaves in dst[index] is the
// result. This library keeps the computed value.
inline void powxErrorHook(int /*code*/, int /*index*/, const float* /*src*/, float* /*dst*/) {}

// Whether an exponent of this value is a finite odd integer.
bool isOddInteger(double y)
{
    if (!std::isfinite(y) || y != std::trunc(y))
        return false;
    return std::fabs(y) < 9007199254740992.0 && std::fmod(y, 2.0) != 0.0;
}

// ---------------------------------------------------------------------------
// The vector form of powxMainLine, eight lanes.

// The log table in rows of four floats (the fourth unused), so that the
// vector path reads a whole row with one 16-byte load; eight rows are then
// transposed into the three fields. There are 128 rows, one for each value
// of the top seven mantissa bits: row i holds log row (i + 1) >> 1, which is
// j as the main line rounds it, so the byte offset of a lane's row is its
// bits shifted and masked, nothing more. The offsets are worked out by the
// integer unit from the arguments in memory, leaving the vector unit to the
// arithmetic. (Cheaper than gathers, or than permutes of rows held in
// registers.) The first field holds logHi - 1, exact: see mainLine.
constexpr auto makeRows128()
{
    std::array<std::array<float, 4>, 128> t{};
    for (int i = 0; i < 128; ++i) {
        const PowxLogRow& row = powxLogTable[(i + 1) >> 1];
        t[i] = {row.logHi - 1.0f, row.logLo, row.r, 0.0f};
    }
    return t;
}
alignas(16) constexpr std::array<std::array<float, 4>, 128> kLogRows128 = makeRows128();

// The rows of the eight arguments at xs.
inline void lookupRows(const float* xs, __m256& logHiM1, __m256& logLo, __m256& r)
{
    const float* base = kLogRows128[0].data();
    auto row = [&](int lane) {
        uint32_t b;
        std::memcpy(&b, xs + lane, 4);
        return _mm_load_ps(base + ((b >> 14) & 0x1fc));  // 4 floats a row, top seven mantissa bits
    };
    auto pair = [&](int lane) { return _mm256_insertf128_ps(_mm256_castps128_ps256(row(lane)), row(lane + 4), 1); };
    simd::deinterleave4x8(pair(0), pair(1), pair(2), pair(3), logHiM1, logLo, r);
}

struct PowxVec {
    __m256 yh, yl;
};

// The vector form of powxMainLine for N blocks of eight lanes whose rows
// have been read. It goes step by step across the blocks, so that their long
// chains of dependent operations overlap.
//
// Two steps are rearranged without changing a bit. u = mh r - 1 and v = r ml
// are exact, so s = u + v is m r - 1 rounded once: fused(m r - 1). And
// logHi + u is exact, so it is fused(mh r + (logHi - 1)), with logHi - 1
// (exact too) from the table.
template <int N>
inline void mainLine(const __m256* x, const __m256* logHiM1, const __m256* logLo, const __m256* r,
                     const PowxVec& y, __m256* result, __m256* zh)
{
    __m256 k[N], m[N], mh[N], v[N], s[N], H[N], T[N], p[N], Lh[N], Ll[N], zl[N], sh[N], t[N], e[N];
    for (int b = 0; b < N; ++b) {
        const __m256i xi = _mm256_castps_si256(x[b]);
        k[b] = _mm256_cvtepi32_ps(_mm256_sub_epi32(_mm256_srli_epi32(xi, 23), _mm256_set1_epi32(127)));
        m[b] = _mm256_castsi256_ps(
            _mm256_or_si256(_mm256_and_si256(xi, _mm256_set1_epi32(0x7fffff)), _mm256_set1_epi32(0x3f800000)));
        mh[b] = _mm256_castsi256_ps(_mm256_and_si256(_mm256_castps_si256(m[b]), _mm256_set1_epi32(~0x3fff)));
    }
    for (int b = 0; b < N; ++b) {
        v[b] = _mm256_mul_ps(r[b], _mm256_sub_ps(m[b], mh[b]));
        s[b] = _mm256_fmadd_ps(m[b], r[b], _mm256_set1_ps(-1.0f));
        H[b] = _mm256_fmadd_ps(mh[b], r[b], logHiM1[b]);
        T[b] = _mm256_fmadd_ps(k[b], _mm256_set1_ps(kLn2Lo), logLo[b]);
    }
    for (int b = 0; b < N; ++b) {
        H[b] = _mm256_fmadd_ps(k[b], _mm256_set1_ps(kLn2Hi), H[b]);
        p[b] = _mm256_fmadd_ps(s[b], _mm256_set1_ps(kQuarter), _mm256_set1_ps(kThird));
    }
    for (int b = 0; b < N; ++b)
        p[b] = _mm256_fmadd_ps(p[b], s[b], _mm256_set1_ps(kHalf));
    for (int b = 0; b < N; ++b)
        T[b] = _mm256_fmadd_ps(p[b], _mm256_mul_ps(s[b], s[b]), T[b]);

    // kNearOneLow < bits < kNearOneHigh is one unsigned comparison of
    // bits - kNearOneLow - 1, done signed with the sign bit flipped. v joins
    // the head in those lanes and the tail in the others by masking: on the
    // main line neither H nor T is ever -0, so adding +0 in place of v
    // leaves it as it is.
    const __m256i nearOffset = _mm256_set1_epi32(int32_t(0x80000000u - uint32_t(kNearOneLow + 1)));
    const __m256i nearBound = _mm256_set1_epi32(int32_t(0x80000000u + uint32_t(kNearOneHigh - kNearOneLow - 1)));
    for (int b = 0; b < N; ++b) {
        const __m256 nearOne = _mm256_castsi256_ps(
            _mm256_cmpgt_epi32(nearBound, _mm256_add_epi32(_mm256_castps_si256(x[b]), nearOffset)));
        H[b] = _mm256_add_ps(H[b], _mm256_and_ps(nearOne, v[b]));
        T[b] = _mm256_add_ps(_mm256_andnot_ps(nearOne, v[b]), T[b]);
    }

    for (int b = 0; b < N; ++b) {
        const __m256 S = _mm256_add_ps(H[b], T[b]);
        const __m256 w = _mm256_mul_ps(S, _mm256_set1_ps(kSplit));
        Lh[b] = _mm256_sub_ps(_mm256_add_ps(S, w), w);
    }
    for (int b = 0; b < N; ++b) {
        Ll[b] = _mm256_add_ps(T[b], _mm256_sub_ps(H[b], Lh[b]));
        zh[b] = _mm256_mul_ps(Lh[b], y.yh);
        sh[b] = _mm256_fmadd_ps(zh[b], _mm256_set1_ps(kLog2e), _mm256_set1_ps(kShifter));
    }
    for (int b = 0; b < N; ++b) {
        const __m256 q = _mm256_fmadd_ps(Lh[b], y.yl, _mm256_mul_ps(Ll[b], y.yl));
        zl[b] = _mm256_fmadd_ps(Ll[b], y.yh, q);
        const __m256 n = _mm256_sub_ps(sh[b], _mm256_set1_ps(kShifter));
        t[b] = _mm256_fnmadd_ps(n, _mm256_set1_ps(kLn2HiExp), zh[b]);
        t[b] = _mm256_fnmadd_ps(n, _mm256_set1_ps(kLn2LoExp), t[b]);
    }
    for (int b = 0; b < N; ++b) {
        t[b] = _mm256_add_ps(zl[b], t[b]);
        e[b] = _mm256_fmadd_ps(_mm256_set1_ps(kExp5), t[b], _mm256_set1_ps(kExp4));
    }
    for (int b = 0; b < N; ++b)
        e[b] = _mm256_fmadd_ps(e[b], t[b], _mm256_set1_ps(kExp3));
    for (int b = 0; b < N; ++b)
        e[b] = _mm256_fmadd_ps(e[b], t[b], _mm256_set1_ps(kExp2));
    for (int b = 0; b < N; ++b)
        e[b] = _mm256_fmadd_ps(e[b], t[b], _mm256_set1_ps(kExp1));
    for (int b = 0; b < N; ++b)
        e[b] = _mm256_fmadd_ps(e[b], t[b], _mm256_set1_ps(kExp0));
    for (int b = 0; b < N; ++b)
        result[b] = _mm256_castsi256_ps(
            _mm256_add_epi32(_mm256_castps_si256(e[b]), _mm256_slli_epi32(_mm256_castps_si256(sh[b]), 23)));
}

// Lanes of eight that leave the main line, as a bit mask.
inline int leavesMainLine8(__m256 x, __m256 zh, bool yFinite)
{
    if (!yFinite)
        return 0xff;
    const __m256i xi = _mm256_castps_si256(x);
    const __m256i badX = _mm256_or_si256(_mm256_cmpgt_epi32(_mm256_set1_epi32(kSmallestNormal), xi),
                                         _mm256_cmpgt_epi32(xi, _mm256_set1_epi32(kLastMainLine)));
    const __m256 absZh = _mm256_andnot_ps(_mm256_set1_ps(-0.0f), zh);
    const __m256 badZ = _mm256_cmp_ps(absZh, _mm256_set1_ps(kExpLimit), _CMP_GT_OQ);
    return _mm256_movemask_ps(_mm256_or_ps(_mm256_castsi256_ps(badX), badZ));
}

// Bits of x between which a lane surely stays on the main line for this
// exponent, so that it needs no test of its own: x a positive normal float
// below the largest one, with |ln x| at most 0.9 kExpLimit / |yh| - 0.05.
// Lh is ln x to within 2^-5 (a head of 12 bits of a value below 2^7), so
// |zh| = |Lh yh| stays below 0.9 kExpLimit. A non-finite y (or yh) leaves
// the range empty.
struct PowxSafeRange {
    int32_t low = std::numeric_limits<int32_t>::max();
    int32_t high = std::numeric_limits<int32_t>::min();
};

PowxSafeRange powxSafeRange(const PowxExponent& e)
{
    PowxSafeRange range;
    const double bound = 0.9 * kExpLimit / std::fabs(double(e.yh)) - 0.05;  // +inf for yh = 0
    if (!e.finite || !(bound > 0))
        return range;
    // One float step inwards at each end covers the rounding of the bounds.
    range.low = std::max(kSmallestNormal, bitsOf(float(std::exp(-bound))) + 1);
    range.high = std::min(kLastMainLine, bitsOf(std::min(float(std::exp(bound)), std::numeric_limits<float>::max())) - 1);
    return range;
}

// Blocks of eight lanes from src + i: lanes in `valid` (a bit mask) are read
// and stored, the others computed on the filler and dropped. Lanes that
// leave the main line are redone by the double-precision path.
struct PowxBlocks {
    const float* src;
    float* dst;
    float y;
    PowxVec yv;
    bool yFinite;
    PowxSafeRange safe;
    int code = 0;

    void finish(int i, __m256 x, __m256 zh, int valid)
    {
        int bad = leavesMainLine8(x, zh, yFinite) & valid;
        if (!bad)
            return;
        alignas(32) float xs[8];
        _mm256_store_ps(xs, x);
        while (bad) {
            const int lane = __builtin_ctz(unsigned(bad));
            bad &= bad - 1;
            float result;
            const int c = powxRareLane(xs[lane], y, &result);
            dst[i + lane] = result;
            if (c) {
                code = c;
                powxErrorHook(c, i + lane, src, dst);
            }
        }
    }

    // Eight lanes, x being the eight floats at xs.
    __m256 one(const float* xs, __m256 x, __m256& zh) const
    {
        __m256 logHiM1, logLo, r, result;
        lookupRows(xs, logHiM1, logLo, r);
        mainLine<1>(&x, &logHiM1, &logLo, &r, yv, &result, &zh);
        return result;
    }

    void full(int i)
    {
        const __m256 x = _mm256_loadu_ps(src + i);
        __m256 zh;
        _mm256_storeu_ps(dst + i, one(src + i, x, zh));
        finish(i, x, zh, 0xff);
    }

    // 32 lanes. When all of them lie in the safe range, the four blocks go
    // together and with no test of their lanes; otherwise one by one, each
    // with its test.
    void group(int i)
    {
        const float* xs = src + i;
        __m256 x[4];
        for (int b = 0; b < 4; ++b)
            x[b] = _mm256_loadu_ps(xs + 8 * b);
        const __m256i lo = _mm256_min_epi32(_mm256_min_epi32(_mm256_castps_si256(x[0]), _mm256_castps_si256(x[1])),
                                            _mm256_min_epi32(_mm256_castps_si256(x[2]), _mm256_castps_si256(x[3])));
        const __m256i hi = _mm256_max_epi32(_mm256_max_epi32(_mm256_castps_si256(x[0]), _mm256_castps_si256(x[1])),
                                            _mm256_max_epi32(_mm256_castps_si256(x[2]), _mm256_castps_si256(x[3])));
        const __m256i out = _mm256_or_si256(_mm256_cmpgt_epi32(_mm256_set1_epi32(safe.low), lo),
                                            _mm256_cmpgt_epi32(hi, _mm256_set1_epi32(safe.high)));
        if (__builtin_expect(!_mm256_testz_si256(out, out), 0)) {
            for (int b = 0; b < 4; ++b)
                full(i + 8 * b);
            return;
        }
        __m256 logHiM1[4], logLo[4], r[4], result[4], zh[4];
        for (int b = 0; b < 4; ++b)
            lookupRows(xs + 8 * b, logHiM1[b], logLo[b], r[b]);
        mainLine<4>(x, logHiM1, logLo, r, yv, result, zh);
        for (int b = 0; b < 4; ++b)
            _mm256_storeu_ps(dst + i + 8 * b, result[b]);
    }

    void masked(int i, int count)
    {
        const __m256i lanes = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
        const __m256i mask = _mm256_cmpgt_epi32(_mm256_set1_epi32(count), lanes);
        const __m256 x = _mm256_blendv_ps(_mm256_set1_ps(kFiller), _mm256_maskload_ps(src + i, mask),
                                          _mm256_castsi256_ps(mask));
        alignas(32) float xs[8];
        _mm256_store_ps(xs, x);
        __m256 zh;
        _mm256_maskstore_ps(dst + i, mask, one(xs, x, zh));
        finish(i, x, zh, (1 << count) - 1);
    }
};

// The vector path: a masked part up to the next 32-byte boundary of the
// source, 32 lanes per step, then 8, then a masked end.
__attribute__((noinline)) int powxVector(const float* src, float y, float* dst, int n)
{
    const PowxExponent e = powxSplit(y);
    PowxBlocks b{src, dst, y, {_mm256_set1_ps(e.yh), _mm256_set1_ps(e.yl)}, e.finite, powxSafeRange(e)};
    const uintptr_t misalign = reinterpret_cast<uintptr_t>(src) & 31;
    int head = (misalign % 4 == 0) ? int((32 - misalign) & 31) / 4 : 0;
    if (head > n)
        head = n;
    if (head)
        b.masked(0, head);
    int i = head;
    for (; i + 32 <= n; i += 32)
        b.group(i);
    for (; i + 8 <= n; i += 8)
        b.full(i);
    if (i < n)
        b.masked(i, n - i);
    return b.code;
}

// The scalar form of the whole call, lane by lane.
__attribute__((noinline)) int powxScalar(const float* src, float y, float* dst, int n)
{
    const PowxExponent e = powxSplit(y);
    int code = 0;
    for (int i = 0; i < n; ++i) {
        const float x = src[i];
        float zh;
        const float r = powxMainLine(x, e, zh);
        if (!powxLeavesMainLine(x, e, zh)) {
            dst[i] = r;
            continue;
        }
        const int c = powxRareLane(x, y, &dst[i]);
        if (c) {
            code = c;
            powxErrorHook(c, i, src, dst);
        }
    }
    return code;
}

// The kernel of the 21-bit accuracy class. The table holds the kernels of
// the accuracy classes; only this one is built and selected.
int powxLowAccuracy(const float* src, float y, float* dst, int n)
{
    PowxModes modes;
    return g_scalarBlocks ? powxScalar(src, y, dst, n) : powxVector(src, y, dst, n);
}

using PowxKernel = int (*)(const float*, float, float*, int);
constexpr PowxKernel kPowxKernels[] = {powxLowAccuracy};

}  // namespace

PowxExponent powxSplit(float y)
{
    const float c = y * kSplit;
    const float yh = c - (c - y);
    const float yl = y - yh;
    return {y, yh, yl, std::isfinite(y)};
}

float powxMainLine(float x, const PowxExponent& y, float& zhOut)
{
    const int32_t bits = bitsOf(x);
    const float k = float(int32_t(uint32_t(bits) >> 23) - 127);
    const int j = int(((uint32_t(bits) & 0x7f0000u) + 0x10000u) >> 17);
    const float m = floatOf((bits & 0x7fffff) | 0x3f800000);
    const float mh = floatOf(bitsOf(m) & ~0x3fff);
    const float ml = m - mh;

    const PowxLogRow& row = powxLogTable[j];
    const float u = fmaf32(mh, row.r, -1.0f);  // exact
    const float v = row.r * ml;
    const float s = u + v;
    float H = row.logHi + u;
    H = fmaf32(k, kLn2Hi, H);
    float T = fmaf32(k, kLn2Lo, row.logLo);
    float p = fmaf32(s, kQuarter, kThird);
    p = fmaf32(p, s, kHalf);
    T = fmaf32(p, s * s, T);
    if (bits > kNearOneLow && bits < kNearOneHigh)
        H = H + v;
    else
        T = v + T;

    // Renormalise to a head of 12 bits and a tail.
    const float S = H + T;
    const float w = S * kSplit;
    const float Lh = (S + w) - w;
    const float Ll = T + (H - Lh);

    // z = y ln x as zh + zl.
    const float zh = Lh * y.yh;
    float q = Ll * y.yl;
    q = fmaf32(Lh, y.yl, q);
    const float zl = fmaf32(Ll, y.yh, q);

    // e^z = 2^n e^t.
    const float sh = fmaf32(zh, kLog2e, kShifter);
    const float n = sh - kShifter;
    float t = fmaf32(-n, kLn2HiExp, zh);
    t = fmaf32(-n, kLn2LoExp, t);
    t = zl + t;
    float e = kExp5;
    e = fmaf32(e, t, kExp4);
    e = fmaf32(e, t, kExp3);
    e = fmaf32(e, t, kExp2);
    e = fmaf32(e, t, kExp1);
    e = fmaf32(e, t, kExp0);

    zhOut = zh;
    return floatOf(int32_t(uint32_t(bitsOf(e)) + (uint32_t(bitsOf(sh)) << 23)));
}

bool powxLeavesMainLine(float x, const PowxExponent& y, float zh)
{
    const int32_t bits = bitsOf(x);
    return bits < kSmallestNormal || bits > kLastMainLine || !y.finite || std::fabs(zh) > kExpLimit;
}

int powxRareLane(float x, float y, float* result)
{
    const double dx = x, dy = y;
    const bool odd = isOddInteger(dy);
    const bool integer = std::isfinite(dy) && dy == std::trunc(dy);
    const double inf = std::numeric_limits<double>::infinity();
    double r;
    int code = 0;
    if (dy == 0.0 || dx == 1.0) {
        r = 1.0;
    } else if (std::isnan(dx) || std::isnan(dy)) {
        r = dx + dy;
    } else if (dx == 0.0) {
        const bool negative = std::signbit(dx) && odd;
        if (dy > 0) {
            r = negative ? -0.0 : 0.0;
        } else {
            r = negative ? -inf : inf;
            code = kPowxSingular;
        }
    } else if (dx == -1.0 && (integer || std::isinf(dy))) {
        r = odd ? -1.0 : 1.0;
    } else if (dx < 0 && std::isfinite(dx) && std::isfinite(dy) && !integer) {
        r = -std::numeric_limits<double>::quiet_NaN();  // the processor's default NaN
        code = kPowxSingular;
    } else if (std::isfinite(dx) && std::isfinite(dy)) {
        // |x|^y in double precision: subnormal floats are normal doubles, and
        // results beyond the float range round to infinity or zero below.
        r = std::pow(std::fabs(dx), dy);
        if (dx < 0 && odd)
            r = -r;
    } else if (std::fabs(dx) > 1.0) {  // infinite x, or |x| > 1 with infinite y
        r = dy > 0 ? inf : 0.0;
        if (dx == -inf && odd)
            r = -r;
    } else {  // |x| < 1 with infinite y
        r = dy > 0 ? 0.0 : inf;
    }
    *result = float(r);
    return code;
}

OrvStatus orvsPowx_32f_A21(const float* src, float y, float* dst, int length)
{
    if (length < 1)
        return orvStatusBadSize;
    if (!src || !dst)
        return orvStatusNullPointer;
    return kPowxKernels[0](src, y, dst, length);
}

}  // namespace h9
