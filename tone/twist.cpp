// Colour twist: a caller's matrix applied to every pixel.
//
// The 3-by-4 members compute, for each result channel r from the source
// values a, b, c of channels 0, 1, 2,
//
//     s = (t[r][3] + a t[r][0]) + (c t[r][2] + b t[r][1])
//
// in single precision with every product and sum rounded by itself. Integer
// elements then clamp, min with the upper limit first (minps keeps the limit
// when s is NaN, so NaN gives the upper limit) and max with the lower one
// second, and convert to nearest, ties to even: those members set the
// rounding mode for the length of the call and give the caller's mode back.
// Floats are stored as they are. The 4-by-4 member has its own order:
// t = p1 w1, then p0 w0, p2 w2 and p3 w3 are added one by one, fused.
//
// Every pixel goes through the same arithmetic on every path. The scalar
// form (pixel()) states it; the vector path holds one pixel per lane and
// converts whole steps of eight in place and the few pixels at a row's edges
// through a one-step buffer, so where a row splits never shows in the output.
#include <immintrin.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "frame/driver.h"
#include "frame/fpmode.h"
#include "frame/fronts.h"
#include "frame/scalar.h"
#include "frame/primitives/primitives.h"
#include "frame/simd.h"

namespace h9 {
namespace {

// ---------------------------------------------------------------------------
// The matrix as four columns of four: column c holds the weights (or, for
// c = 3 of the 3-by-4 form, the constants) of all result channels, so that
// one vector product gives one term of every result.
struct Columns {
    alignas(16) float col[4][4];
};

Columns columnsOf(const Orv32f twist[3][4])
{
    Columns m{};
    for (int c = 0; c < 4; ++c) {
        for (int r = 0; r < 3; ++r)
            m.col[c][r] = twist[r][c];
        m.col[c][3] = 0.0f;
    }
    return m;
}

Columns columnsOf4x4(const Orv32f twist[4][4])
{
    Columns m{};
    for (int c = 0; c < 4; ++c)
        for (int r = 0; r < 4; ++r)
            m.col[c][r] = twist[r][c];
    return m;
}

// Clamp limits of the integer elements.
template <class T>
struct Limits;
template <>
struct Limits<uint8_t> {
    static constexpr float lower = 0.0f, upper = 255.0f;
};
template <>
struct Limits<uint16_t> {
    static constexpr float lower = 0.0f, upper = 65535.0f;
};
template <>
struct Limits<int16_t> {
    static constexpr float lower = -32768.0f, upper = 32767.0f;
};

template <class T>
constexpr bool kIsFloat = std::is_same_v<T, float>;

// ---------------------------------------------------------------------------
// Scalar form of the 3-by-4 twist, one result channel of one pixel.
inline float twistSum(const Columns& m, int r, float a, float b, float c)
{
    return (m.col[3][r] + a * m.col[0][r]) + (c * m.col[2][r] + b * m.col[1][r]);
}

// min and max as minss and maxss compute them: a < b ? a : b and
// a > b ? a : b, so the second operand when either is NaN.
inline float minss(float a, float b) { return _mm_cvtss_f32(_mm_min_ss(_mm_set_ss(a), _mm_set_ss(b))); }
inline float maxss(float a, float b) { return _mm_cvtss_f32(_mm_max_ss(_mm_set_ss(a), _mm_set_ss(b))); }

// The stored element: floats as they are; integers clamped (min first, so a
// NaN becomes the upper limit, then max) and converted to nearest.
template <class T>
inline T toElement(float s)
{
    if constexpr (kIsFloat<T>) {
        return s;
    } else {
        s = minss(s, Limits<T>::upper);
        s = maxss(s, Limits<T>::lower);
        return static_cast<T>(cvtNearest(s));
    }
}

// The same on eight pixels, one per lane.
struct Splat {
    __m256 w[4][3];
    explicit Splat(const Columns& m)
    {
        for (int c = 0; c < 4; ++c)
            for (int r = 0; r < 3; ++r)
                w[c][r] = _mm256_set1_ps(m.col[c][r]);
    }
};

inline __m256 twistSum(const Splat& k, int r, __m256 a, __m256 b, __m256 c)
{
    return _mm256_add_ps(_mm256_add_ps(k.w[3][r], _mm256_mul_ps(a, k.w[0][r])),
                         _mm256_add_ps(_mm256_mul_ps(c, k.w[2][r]), _mm256_mul_ps(b, k.w[1][r])));
}

// For integers the max with the lower limit is left to the saturating packs
// that narrow the result: after the min, rounding and then saturating gives
// what clamping and then rounding gives, for values below the int32 range
// too (they convert to INT32_MIN). The min stays, for NaN and values above
// the int32 range convert to INT32_MIN as well.
//
// Where no sum can be NaN or reach the int32 range (a finite matrix whose
// sums stay below 2^30 in magnitude for every input, `bounded`), the min
// changes nothing either: a sum above the upper limit rounds to an integer
// above it, which the packs saturate to the limit as they would the limit
// itself. Those matrices go without it.
template <class T, bool Bounded = false>
inline auto toElement(__m256 s)
{
    if constexpr (kIsFloat<T>)
        return s;
    else if constexpr (Bounded)
        return _mm256_cvtps_epi32(s);
    else
        return _mm256_cvtps_epi32(_mm256_min_ps(s, _mm256_set1_ps(Limits<T>::upper)));
}

// Whether every sum of the matrix stays below 2^30 in magnitude for inputs
// of magnitude at most `input`: a finite matrix with |t3| + input (|t0| + |t1|
// + |t2|) below 2^29, the margin covering the roundings on the way.
inline bool sumsBounded(const Columns& m, double input)
{
    for (int r = 0; r < 3; ++r) {
        double bound = std::fabs(double(m.col[3][r]));
        for (int c = 0; c < 3; ++c)
            bound += input * std::fabs(double(m.col[c][r]));
        if (!(bound < 0x1p29))  // NaN and infinite weights fail here too
            return false;
    }
    return true;
}

// The largest magnitude of an input element.
template <class T>
constexpr double inputMagnitude()
{
    if constexpr (std::is_same_v<T, int16_t>)
        return 32768.0;
    else if constexpr (kIsFloat<T>)
        return 0.0;  // unused: floats are stored as they are
    else
        return double(std::numeric_limits<T>::max());
}

// ---------------------------------------------------------------------------
// Where the three values of pixel i of a row lie.
enum class Layout { C3, AC4, P3 };

// Interleaved: channel ch of pixel i at p[i * Ch + ch].
template <class T, int Ch>
struct Packed {
    T* p;
    T* at(int i, int ch) const { return p + i * Ch + ch; }
    Packed row(int step, int y) const { return {rowAt(p, step, y)}; }
};

// Planar: channel ch of pixel i at p[ch][i].
template <class T>
struct Planar {
    T* p[3];
    T* at(int i, int ch) const { return p[ch] + i; }
    Planar row(int step, int y) const { return {{rowAt(p[0], step, y), rowAt(p[1], step, y), rowAt(p[2], step, y)}}; }
};

template <class T, Layout L>
using Access = std::conditional_t<L == Layout::P3, Planar<T>, Packed<T, L == Layout::C3 ? 3 : 4>>;

// ---------------------------------------------------------------------------
// Eight pixels in, one channel per register, as floats.

// Sixteen bytes per lane; lane 0 holds pixels 0-3 from byte `first`, lane 1
// pixels 4-7 from byte `second`. Each mask zero-extends one channel to 32
// bits.
constexpr std::array<int8_t, 32> bytesToDwordsC3(int ch, int first, int second)
{
    std::array<int8_t, 32> m{};
    for (int lane = 0; lane < 2; ++lane)
        for (int k = 0; k < 4; ++k)
            for (int b = 0; b < 4; ++b)
                m[16 * lane + 4 * k + b] = b == 0 ? int8_t((lane ? second : first) + 3 * k + ch) : int8_t(-128);
    return m;
}

// Pixels 0-3 from byte 0 and 4-7 from byte 4 (the lanes loaded apart), or
// from byte 4 and 0 (one load from four bytes before the pixels).
template <int Ch, bool Wide = false>
inline __m256i spreadC3()
{
    static constexpr auto m = bytesToDwordsC3(Ch, Wide ? 4 : 0, Wide ? 0 : 4);
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(m.data()));
}

// Eight 8u C3 pixels by one 32-byte load from four bytes before them to four
// after: no lane insert, for steps with a pixel on either side in the row.
inline void load8uC3Wide(const uint8_t* p, __m256& a, __m256& b, __m256& c)
{
    const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p - 4));
    a = _mm256_cvtepi32_ps(_mm256_shuffle_epi8(v, spreadC3<0, true>()));
    b = _mm256_cvtepi32_ps(_mm256_shuffle_epi8(v, spreadC3<1, true>()));
    c = _mm256_cvtepi32_ps(_mm256_shuffle_epi8(v, spreadC3<2, true>()));
}

// Eight elements widened to 32-bit integers.
template <class T>
inline __m256i widen8(const T* p)
{
    if constexpr (std::is_same_v<T, uint8_t>)
        return _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)));
    else if constexpr (std::is_same_v<T, uint16_t>)
        return _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
    else
        return _mm256_cvtepi16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
}

template <class T>
inline __m256 widen8Float(const T* p)
{
    if constexpr (kIsFloat<T>)
        return _mm256_loadu_ps(p);
    else
        return _mm256_cvtepi32_ps(widen8(p));
}

// Pixel k (four elements of 16 bits) in the low lane, pixel k + 4 in the
// high lane, as floats.
template <class T>
inline __m256 pixelPair16(const T* p, int k)
{
    const __m128i lo = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + 4 * k));
    const __m128i hi = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + 4 * k + 16));
    const __m128i both = _mm_unpacklo_epi64(lo, hi);
    return _mm256_cvtepi32_ps(std::is_same_v<T, uint16_t> ? _mm256_cvtepu16_epi32(both) : _mm256_cvtepi16_epi32(both));
}

template <class T, Layout L>
inline void load8(Access<const T, L> s, int i, __m256& a, __m256& b, __m256& c)
{
    if constexpr (L == Layout::P3) {
        a = widen8Float(s.at(i, 0));
        b = widen8Float(s.at(i, 1));
        c = widen8Float(s.at(i, 2));
    } else if constexpr (L == Layout::C3) {
        const T* p = s.at(i, 0);
        if constexpr (std::is_same_v<T, uint8_t>) {
            const __m256i v = simd::load2x128(p, p + 8);  // exactly the 24 bytes
            a = _mm256_cvtepi32_ps(_mm256_shuffle_epi8(v, spreadC3<0>()));
            b = _mm256_cvtepi32_ps(_mm256_shuffle_epi8(v, spreadC3<1>()));
            c = _mm256_cvtepi32_ps(_mm256_shuffle_epi8(v, spreadC3<2>()));
        } else {
            __m256i x0, x1, x2;
            if constexpr (kIsFloat<T>)
                simd::deinterleave3x8Rotated(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)),
                              _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 8)),
                              _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 16)), x0, x1, x2);
            else
                simd::deinterleave3x8Rotated(widen8(p), widen8(p + 8), widen8(p + 16), x0, x1, x2);
            if constexpr (kIsFloat<T>) {
                a = _mm256_castsi256_ps(x0);
                b = _mm256_castsi256_ps(x1);
                c = _mm256_castsi256_ps(x2);
            } else {
                a = _mm256_cvtepi32_ps(x0);
                b = _mm256_cvtepi32_ps(x1);
                c = _mm256_cvtepi32_ps(x2);
            }
        }
    } else {  // AC4
        const T* p = s.at(i, 0);
        if constexpr (std::is_same_v<T, uint8_t>) {
            const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
            const __m256i byte = _mm256_set1_epi32(0xff);
            a = _mm256_cvtepi32_ps(_mm256_and_si256(v, byte));
            b = _mm256_cvtepi32_ps(_mm256_and_si256(_mm256_srli_epi32(v, 8), byte));
            c = _mm256_cvtepi32_ps(_mm256_and_si256(_mm256_srli_epi32(v, 16), byte));
        } else {
            simd::deinterleave4x8(pixelPair16(p, 0), pixelPair16(p, 1), pixelPair16(p, 2), pixelPair16(p, 3), a, b, c);
        }
    }
}

// ---------------------------------------------------------------------------
// Eight pixels out.

// 32-bit values to 16-bit elements, saturated: 16 values from two
// registers, pixel order kept.
template <class T>
inline __m256i pack16(__m256i x, __m256i y)
{
    const __m256i p = std::is_same_v<T, uint16_t> ? _mm256_packus_epi32(x, y) : _mm256_packs_epi32(x, y);
    return _mm256_permute4x64_epi64(p, 0xD8);
}

template <class T>
inline void narrow8(T* p, __m256i v)
{
    const __m128i lo = _mm256_castsi256_si128(v), hi = _mm256_extracti128_si256(v, 1);
    if constexpr (std::is_same_v<T, uint8_t>) {
        const __m128i w = _mm_packs_epi32(lo, hi);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(w, w));
    } else if constexpr (std::is_same_v<T, uint16_t>) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_packus_epi32(lo, hi));
    } else {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_packs_epi32(lo, hi));
    }
}

// Eight pixels' r, g, b (32-bit lanes) saturated to bytes: per lane the
// four pixels' r, then g, then b, then b again.
inline __m256i packBytes(__m256i r, __m256i g, __m256i b)
{
    return _mm256_packus_epi16(_mm256_packs_epi32(r, g), _mm256_packs_epi32(b, b));
}

// pshufb mask that interleaves the output of packBytes into pixels of
// `Ch` bytes, per lane; a fourth byte, if any, and the bytes past the
// lane's pixels are zero.
template <int Ch>
constexpr std::array<int8_t, 32> interleaveBytesMask()
{
    std::array<int8_t, 32> m{};
    for (int lane = 0; lane < 2; ++lane)
        for (int b = 0; b < 16; ++b) {
            const int px = b / Ch, ch = b % Ch;
            m[16 * lane + b] = (px < 4 && ch < 3) ? int8_t(4 * ch + px) : int8_t(-128);
        }
    return m;
}

template <int Ch>
inline __m256i interleaveBytes(__m256i packed)
{
    static constexpr auto m = interleaveBytesMask<Ch>();
    return _mm256_shuffle_epi8(packed, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(m.data())));
}

// Sixteen-bit pixels of r, g, b (four in each lane, 32-bit values packed two
// channels to a register) with a placeholder fourth element: pixels 0-3 in
// `first`, 4-7 in `second`.
template <class T>
inline void interleave4x16(__m256i r, __m256i g, __m256i b, __m256i& first, __m256i& second)
{
    const __m256i rb = std::is_same_v<T, uint16_t> ? _mm256_packus_epi32(r, b) : _mm256_packs_epi32(r, b);
    const __m256i gg = std::is_same_v<T, uint16_t> ? _mm256_packus_epi32(g, g) : _mm256_packs_epi32(g, g);
    const __m256i lo = _mm256_unpacklo_epi16(rb, gg);  // r0 g0 r1 g1 r2 g2 r3 g3
    const __m256i hi = _mm256_unpackhi_epi16(rb, gg);  // b0 g0 b1 g1 b2 g2 b3 g3
    const __m256i x = _mm256_unpacklo_epi32(lo, hi);   // pixels 0, 1 | 4, 5
    const __m256i y = _mm256_unpackhi_epi32(lo, hi);   // pixels 2, 3 | 6, 7
    first = _mm256_permute2x128_si256(x, y, 0x20);
    second = _mm256_permute2x128_si256(x, y, 0x31);
}

// Integer results (32-bit lanes, saturated here) of eight pixels to memory. In
// AC4 the destination's fourth elements are read and written back unchanged
// (a blend is far cheaper than a masked store, and none exists below 32 bits).
//
// roomAfter: the four bytes after the step's 24 (8u C3) are the next step's,
// written again by it, so each lane's twelve bytes may go by a whole 16-byte
// store.
template <class T, Layout L>
inline void store8(Access<T, L> d, int i, __m256i r, __m256i g, __m256i b, bool roomAfter = false)
{
    if constexpr (L == Layout::P3) {
        narrow8(d.at(i, 0), r);
        narrow8(d.at(i, 1), g);
        narrow8(d.at(i, 2), b);
    } else if constexpr (L == Layout::C3) {
        T* p = d.at(i, 0);
        if constexpr (std::is_same_v<T, uint8_t>) {
            // Twelve bytes a lane.
            __m256i v = interleaveBytes<3>(packBytes(r, g, b));
            if (roomAfter) {
                _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(v));
                _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 12), _mm256_extracti128_si256(v, 1));
                return;
            }
            // The two lanes' dwords 0-2 side by side.
            v = _mm256_permutevar8x32_epi32(v, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(v));
            _mm_storel_epi64(reinterpret_cast<__m128i*>(p + 16), _mm256_extracti128_si256(v, 1));
        } else {
            __m256i x0, x1, x2;
            simd::interleave3x8Rotated(r, g, b, x0, x1, x2);
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), pack16<T>(x0, x1));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 16), _mm256_castsi256_si128(pack16<T>(x2, x2)));
        }
    } else {  // AC4
        T* p = d.at(i, 0);
        if constexpr (std::is_same_v<T, uint8_t>) {
            const __m256i v = interleaveBytes<4>(packBytes(r, g, b));
            const __m256i old = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(p),
                                _mm256_blendv_epi8(v, old, _mm256_set1_epi32(int32_t(0xff000000u))));
        } else {
            __m256i first, second;
            interleave4x16<T>(r, g, b, first, second);
            __m256i* q = reinterpret_cast<__m256i*>(p);
            _mm256_storeu_si256(q, _mm256_blend_epi16(first, _mm256_loadu_si256(q), 0x88));
            _mm256_storeu_si256(q + 1, _mm256_blend_epi16(second, _mm256_loadu_si256(q + 1), 0x88));
        }
    }
}

// Float results of eight pixels to memory (AC4 floats go by pairs, see
// Twist3::pairs). `stream` (C3 only) stores with
// non-temporal stores, of 32 bytes where the destination is aligned to 32 and
// of 16 where it is aligned to 16 only; it needs that much.
template <class T, Layout L>
inline void store8(Access<T, L> d, int i, __m256 r, __m256 g, __m256 b, bool stream)
{
    if constexpr (L == Layout::P3) {
        _mm256_storeu_ps(d.at(i, 0), r);
        _mm256_storeu_ps(d.at(i, 1), g);
        _mm256_storeu_ps(d.at(i, 2), b);
    } else if constexpr (L == Layout::C3) {
        __m256i x[3];
        simd::interleave3x8Rotated(_mm256_castps_si256(r), _mm256_castps_si256(g), _mm256_castps_si256(b), x[0], x[1], x[2]);
        float* p = d.at(i, 0);
        for (int k = 0; k < 3; ++k) {
            const __m256 v = _mm256_castsi256_ps(x[k]);
            if (stream && reinterpret_cast<uintptr_t>(p) % 32 == 0) {
                _mm256_stream_ps(p + 8 * k, v);
            } else if (stream) {
                _mm_stream_ps(p + 8 * k, _mm256_castps256_ps128(v));
                _mm_stream_ps(p + 8 * k + 4, _mm256_extractf128_ps(v, 1));
            } else {
                _mm256_storeu_ps(p + 8 * k, v);
            }
        }
    }
}

// ---------------------------------------------------------------------------
// The 3-by-4 kernel over one row (or one contiguous run) of n pixels.
//
// alignHead: the vector steps start where the destination is aligned to 16
// bytes, the pixels before go apart (the 32f C3 kernels, whose streaming
// stores need it); stream: streaming stores in the vector steps.
template <class T, Layout L>
struct Twist3 {
    using Elem = T;
    using In = Access<const T, L>;
    using Out = Access<T, L>;
    static constexpr int kStep = 8;     // pixels a vector step
    static constexpr int kResults = 3;  // channels read and written
    Columns m;
    bool alignHead = false;
    bool stream = false;
    bool bounded = false;  // integers: the min before the conversion may go (see toElement)

    void pairs(In s, Out d, int begin, int end) const;  // floats in AC4 only

    Span span(int n, Out d) const
    {
        int head = 0;
        if (alignHead) {
            const uintptr_t addr = reinterpret_cast<uintptr_t>(d.at(0, 0));
            if (addr % 4 != 0)
                return {n, n};
            while (head < n && (addr + uintptr_t(head) * sizeof(T) * 3) % 16 != 0)
                ++head;
        }
        return {head, head + ((n - head) & ~7)};
    }

    // One vector step of pixels in `buf` (32 elements), laid like a row.
    static Out buffer(T* buf)
    {
        if constexpr (L == Layout::P3)
            return {{buf, buf + kStep, buf + 2 * kStep}};
        else
            return {buf};
    }
    static In readOnly(Out o)
    {
        if constexpr (L == Layout::P3)
            return {{o.p[0], o.p[1], o.p[2]}};
        else
            return {o.p};
    }

    // Scalar form: all three results of the pixel before any is stored, so
    // that in place works.
    void pixel(In s, Out d, int i) const
    {
        const float a = float(*s.at(i, 0)), b = float(*s.at(i, 1)), c = float(*s.at(i, 2));
        const T r0 = toElement<T>(twistSum(m, 0, a, b, c));
        const T r1 = toElement<T>(twistSum(m, 1, a, b, c));
        const T r2 = toElement<T>(twistSum(m, 2, a, b, c));
        *d.at(i, 0) = r0;
        *d.at(i, 1) = r1;
        *d.at(i, 2) = r2;
    }

    // Pixels [begin, end), a multiple of 8 of them.
    void vector(In s, Out d, int begin, int end) const
    {
        if (bounded)
            steps<true>(s, d, begin, end);
        else
            steps<false>(s, d, begin, end);
    }

    // 8u C3: as below (next step loaded before this step's sums), with the
    // steps that have pixels of the row on both sides loaded by one 32-byte
    // load instead of two halves, and every step but the last storing each
    // lane's twelve bytes by one 16-byte store. That is 32 vector operations
    // a step instead of 34, 8 of them lane shuffles; in the cache 1.31 ->
    // 1.17 cycles a pixel, against 1.0 for the operations spread evenly over
    // the four pipes. The first and last steps are peeled so that the loop
    // carries no test.
    template <bool Bounded>
    static void steps8uC3(const Splat& k, In s, Out d, int begin, int end)
    {
        if (begin >= end)
            return;
        auto sums = [&](__m256 a, __m256 b, __m256 c, __m256i& r0, __m256i& r1, __m256i& r2) {
            r0 = toElement<T, Bounded>(twistSum(k, 0, a, b, c));
            r1 = toElement<T, Bounded>(twistSum(k, 1, a, b, c));
            r2 = toElement<T, Bounded>(twistSum(k, 2, a, b, c));
        };
        __m256 a, b, c;
        __m256i r0, r1, r2;
        load8<T, L>(s, begin, a, b, c);
        int i = begin;
        for (; i + 16 < end; i += 8) {
            __m256 na, nb, nc;
            load8uC3Wide(s.at(i + 8, 0), na, nb, nc);
            sums(a, b, c, r0, r1, r2);
            store8<T, L>(d, i, r0, r1, r2, true);
            a = na, b = nb, c = nc;
        }
        if (i + 8 < end) {
            __m256 na, nb, nc;
            load8<T, L>(s, i + 8, na, nb, nc);
            sums(a, b, c, r0, r1, r2);
            store8<T, L>(d, i, r0, r1, r2, true);
            a = na, b = nb, c = nc;
            i += 8;
        }
        sums(a, b, c, r0, r1, r2);
        store8<T, L>(d, i, r0, r1, r2, false);
    }

    // 32f C3: the same look-ahead, two steps an iteration whose loads
    // alternate between two sets of registers (no copies from one to the
    // other), with the store kind fixed for the whole loop. In the cache
    // (128x128, old and new builds in one process) 0.388-0.397 -> 0.376-0.377
    // ns a pixel.
    template <bool Stream>
    static void steps32fC3(const Splat& k, In s, Out d, int begin, int end)
    {
        auto step = [&](int i, __m256 a, __m256 b, __m256 c) {
            store8<T, L>(d, i, twistSum(k, 0, a, b, c), twistSum(k, 1, a, b, c), twistSum(k, 2, a, b, c), Stream);
        };
        __m256 a, b, c, e, f, g;
        load8<T, L>(s, begin, a, b, c);
        int i = begin;
        for (; i + 16 < end; i += 16) {
            load8<T, L>(s, i + 8, e, f, g);
            step(i, a, b, c);
            load8<T, L>(s, i + 16, a, b, c);
            step(i + 8, e, f, g);
        }
        if (i + 8 < end) {
            load8<T, L>(s, i + 8, e, f, g);
            step(i, a, b, c);
            step(i + 8, e, f, g);
        } else {
            step(i, a, b, c);
        }
    }

    template <bool Bounded>
    void steps(In s, Out d, int begin, int end) const
    {
        if constexpr (kIsFloat<T> && L == Layout::AC4) {
            pairs(s, d, begin, end);
        } else if constexpr (kIsFloat<T> && L == Layout::C3) {
            if (begin >= end)
                return;
            if (stream)
                steps32fC3<true>(Splat(m), s, d, begin, end);
            else
                steps32fC3<false>(Splat(m), s, d, begin, end);
        } else {
            // The next step's pixels are loaded (and shuffled and converted)
            // before this step's sums, so that each step's long chain of
            // dependent operations starts one step early: in the cache,
            // 1.52 -> 1.31 cycles a pixel for 8u C3, 0.64 -> 0.52 ns a pixel
            // for 16u C3, 0.42 -> 0.35 for 32f C3 (which has its own loop,
            // above). Planar floats, which only load and store around the
            // sums, measured slower that way.
            constexpr bool kAhead = !(kIsFloat<T> && L == Layout::P3);
            const Splat k(m);
            if constexpr (std::is_same_v<T, uint8_t> && L == Layout::C3) {
                steps8uC3<Bounded>(k, s, d, begin, end);
                return;
            }
            __m256 na, nb, nc;
            if (kAhead && begin < end)
                load8<T, L>(s, begin, na, nb, nc);
            for (int i = begin; i < end; i += 8) {
                __m256 a, b, c;
                if constexpr (kAhead) {
                    a = na, b = nb, c = nc;
                    if (i + 8 < end)
                        load8<T, L>(s, i + 8, na, nb, nc);
                } else {
                    load8<T, L>(s, i, a, b, c);
                }
                const auto r0 = toElement<T, Bounded>(twistSum(k, 0, a, b, c));
                const auto r1 = toElement<T, Bounded>(twistSum(k, 1, a, b, c));
                const auto r2 = toElement<T, Bounded>(twistSum(k, 2, a, b, c));
                if constexpr (kIsFloat<T>)
                    store8<T, L>(d, i, r0, r1, r2, stream);
                else
                    store8<T, L>(d, i, r0, r1, r2);
            }
        }
    }
};

// Floats in AC4, two pixels a register as they lie in memory: each source
// value is spread over its pixel's four lanes and multiplies a whole column,
// so lane r of a pixel computes result r in the order of twistSum (lane 3,
// with zero weights, gives way to the destination's fourth float). That is
// twelve in-lane shuffles per eight pixels, where transposing to one channel
// a register and back takes nineteen shuffles and four lane crossings.
template <>
void Twist3<float, Layout::AC4>::pairs(In s, Out d, int begin, int end) const
{
    auto column = [&](int c) { return _mm256_broadcast_ps(reinterpret_cast<const __m128*>(m.col[c])); };
    const __m256 w0 = column(0), w1 = column(1), w2 = column(2), w3 = column(3);
    for (int i = begin; i < end; i += 2) {
        const __m256 p = _mm256_loadu_ps(s.at(i, 0));
        const __m256 a = _mm256_permute_ps(p, 0x00), b = _mm256_permute_ps(p, 0x55), c = _mm256_permute_ps(p, 0xAA);
        const __m256 t = _mm256_add_ps(_mm256_add_ps(w3, _mm256_mul_ps(a, w0)),
                                       _mm256_add_ps(_mm256_mul_ps(c, w2), _mm256_mul_ps(b, w1)));
        float* q = d.at(i, 0);
        _mm256_storeu_ps(q, _mm256_blend_ps(t, _mm256_loadu_ps(q), 0x88));
    }
}

// The 4-by-4 kernel: for each result r with w the row r of the matrix,
// t = p1 w1, then t = p0 w0 + t, p2 w2 + t, p3 w3 + t, each fused.
// stream: streaming stores, for source and destination aligned to 16.
struct Twist4 {
    using Elem = float;
    using In = Packed<const float, 4>;
    using Out = Packed<float, 4>;
    static constexpr int kStep = 2;
    static constexpr int kResults = 4;
    Columns m;
    bool stream = false;

    Span span(int n, Out) const { return {0, n & ~1}; }
    static Out buffer(float* buf) { return {buf}; }
    static In readOnly(Out o) { return {o.p}; }

    void pixel(In s, Out d, int i) const
    {
        const float* p = s.at(i, 0);
        float out[4];
        for (int r = 0; r < 4; ++r) {
            float t = p[1] * m.col[1][r];
            t = fmaf32(p[0], m.col[0][r], t);
            t = fmaf32(p[2], m.col[2][r], t);
            t = fmaf32(p[3], m.col[3][r], t);
            out[r] = t;
        }
        for (int r = 0; r < 4; ++r)
            *d.at(i, r) = out[r];
    }

    // Two pixels a step, one per lane: each source value is spread over its
    // lane and multiplies a whole column.
    void vector(In s, Out d, int begin, int end) const
    {
        auto column = [&](int c) { return _mm256_broadcast_ps(reinterpret_cast<const __m128*>(m.col[c])); };
        const __m256 w0 = column(0), w1 = column(1), w2 = column(2), w3 = column(3);
        for (int i = begin; i < end; i += 2) {
            const __m256 p = _mm256_loadu_ps(s.at(i, 0));
            __m256 t = _mm256_mul_ps(_mm256_permute_ps(p, 0x55), w1);
            t = _mm256_fmadd_ps(_mm256_permute_ps(p, 0x00), w0, t);
            t = _mm256_fmadd_ps(_mm256_permute_ps(p, 0xAA), w2, t);
            t = _mm256_fmadd_ps(_mm256_permute_ps(p, 0xFF), w3, t);
            float* q = d.at(i, 0);
            if (stream) {
                _mm_stream_ps(q, _mm256_castps256_ps128(t));
                _mm_stream_ps(q + 4, _mm256_extractf128_ps(t, 1));
            } else {
                _mm256_storeu_ps(q, t);
            }
        }
    }
};

// Fewer pixels than one vector step, [begin, end): copied into a zeroed
// buffer of one step, converted there by the vector path (in place, with
// ordinary stores), and the results copied out. The arithmetic per pixel is
// the same, so this only spares the row's edges the slower scalar code.
template <class K>
void viaBuffer(const K& k, typename K::In s, typename K::Out d, int begin, int end)
{
    using T = typename K::Elem;
    alignas(32) T buf[4 * K::kStep] = {};
    const typename K::Out b = K::buffer(buf);
    const int count = end - begin < K::kStep ? end - begin : K::kStep;
    for (int j = 0; j < count; ++j)
        for (int ch = 0; ch < K::kResults; ++ch)
            *b.at(j, ch) = *s.at(begin + j, ch);
    K plain = k;
    plain.stream = false;
    plain.vector(K::readOnly(b), b, 0, K::kStep);
    for (int j = 0; j < count; ++j)
        for (int ch = 0; ch < K::kResults; ++ch)
            *d.at(begin + j, ch) = *b.at(j, ch);
}

// One row or run. The span's whole vector steps are converted in place, the
// pixels before and after it through the buffer; when the tests ask for the
// scalar form, every pixel takes it.
template <class K>
void twistRow(const K& k, typename K::In s, typename K::Out d, int n)
{
    if (g_scalarBlocks) {
        for (int i = 0; i < n; ++i)
            k.pixel(s, d, i);
        return;
    }
    const Span b = k.span(n, d);
    for (int i = 0; i < b.begin; i += K::kStep)
        viaBuffer(k, s, d, i, i + K::kStep < b.begin ? i + K::kStep : b.begin);
    if (b.end > b.begin)
        k.vector(s, d, b.begin, b.end);
    if (b.end < n)
        viaBuffer(k, s, d, b.end, n);
}

template <class K>
void twistRows(const K& k, typename K::In s, int srcStep, typename K::Out d, int dstStep, RoiSize roi)
{
    for (int y = 0; y < roi.height; ++y)
        twistRow(k, s.row(srcStep, y), d.row(dstStep, y), roi.width);
}

// ---------------------------------------------------------------------------
// Checks shared by all members, after the pointers: size, then steps.
OrvStatus checkSizeAndSteps(RoiSize roi, int srcStep, int dstStep)
{
    if (roi.width < 1 || roi.height < 1)
        return orvStatusBadSize;
    if (srcStep < 1 || dstStep < 1)
        return orvStatusBadStep;
    return orvStatusOk;
}

// Runs `body` with the rounding the member needs: integer members round to
// nearest whatever the caller's mode; floats never touch the mode.
template <class T, class Body>
void withRounding(Body&& body)
{
    if constexpr (kIsFloat<T>) {
        body();
    } else {
        const NearestRounding nearest;
        body();
    }
}

// Driver of the interleaved 3-by-4 members, in place when src == dst.
template <class T, Layout L>
OrvStatus myColorTwist(const T* src, int srcStep, T* dst, int dstStep, RoiSize roi, const Orv32f twist[3][4])
{
    if (!src || !dst || !twist)
        return orvStatusNullPointer;
    if (OrvStatus st = checkSizeAndSteps(roi, srcStep, dstStep))
        return st;
    Twist3<T, L> k{columnsOf(twist)};
    k.bounded = !kIsFloat<T> && sumsBounded(k.m, inputMagnitude<T>());
    withRounding<T>([&] { twistRows(k, {src}, srcStep, {dst}, dstStep, roi); });
    return orvStatusOk;
}

// Driver of the planar 3-by-4 members: the array pointers, each plane, the
// matrix, then size and steps.
template <class T>
OrvStatus myColorTwistP3(const T* const* src, int srcStep, T* const* dst, int dstStep, RoiSize roi,
                         const Orv32f twist[3][4])
{
    if (!src || !src[0] || !src[1] || !src[2])
        return orvStatusNullPointer;
    if (!dst || !dst[0] || !dst[1] || !dst[2])
        return orvStatusNullPointer;
    if (!twist)
        return orvStatusNullPointer;
    if (OrvStatus st = checkSizeAndSteps(roi, srcStep, dstStep))
        return st;
    Twist3<T, Layout::P3> k{columnsOf(twist)};
    k.bounded = !kIsFloat<T> && sumsBounded(k.m, inputMagnitude<T>());
    const Planar<const T> s{{src[0], src[1], src[2]}};
    const Planar<T> d{{dst[0], dst[1], dst[2]}};
    withRounding<T>([&] { twistRows(k, s, srcStep, d, dstStep, roi); });
    return orvStatusOk;
}

// Image of width * height pixels with equal steps of exactly `pixelBytes`
// per pixel: one run, if its pixel count fits a row count.
bool contiguous(int srcStep, int dstStep, RoiSize roi, int pixelBytes)
{
    const long long rowBytes = (long long)roi.width * pixelBytes;
    return srcStep == dstStep && srcStep == rowBytes && (long long)roi.width * roi.height <= INT32_MAX;
}

// Whether a 32f image of `values` floats is written with streaming stores:
// where the destination outgrows the cache, else above 34992 values. Below
// the cache size no size has been found where streaming wins reliably. At
// 1920x1080 (C3 25 MB, C4 33 MB each way, one thread, both kinds timed in
// turns on the same buffers) the streamed time over the ordinary one was,
// for C3, 1.04, 0.93, 0.94, 0.96, 1.10, 0.98 in one set of runs and 1.00 to
// 1.12 in another; for C4 0.91 to 0.93 in three runs, then 1.09 in a sweep
// from 640x480 to 3840x2160 where C3 streamed was 1.04 to 1.15 times slower
// at every size and C4 between 0.93 and 1.18.
bool streamFloats(long long values)
{
    return streamingPays(values * (long long)sizeof(float), values > 34992);
}

// orviColorTwist_32f_C3R: a contiguous image as one run, otherwise row by
// row; streaming stores for an image larger than the cache. Every path gives
// the same values.
OrvStatus myColorTwist32fC3R(const float* src, int srcStep, float* dst, int dstStep, RoiSize roi,
                             const Orv32f twist[3][4])
{
    if (!src || !dst || !twist)
        return orvStatusNullPointer;
    if (OrvStatus st = checkSizeAndSteps(roi, srcStep, dstStep))
        return st;
    Twist3<float, Layout::C3> k{columnsOf(twist)};
    k.alignHead = true;
    k.stream = streamFloats((long long)roi.width * 3 * roi.height);
    if (contiguous(srcStep, dstStep, roi, 12))
        twistRow(k, {src}, {dst}, roi.width * roi.height);
    else
        twistRows(k, {src}, srcStep, {dst}, dstStep, roi);
    if (k.stream)
        _mm_sfence();
    return orvStatusOk;
}

// orviColorTwist_32f_C4R: a contiguous image as one run, otherwise row by
// row; in an image larger than the cache, a run whose source and destination
// are both aligned to 16 bytes is written with streaming stores. Every path gives the same values.
OrvStatus myColorTwist32fC4R(const float* src, int srcStep, float* dst, int dstStep, RoiSize roi,
                             const Orv32f twist[4][4])
{
    if (!src || !dst || !twist)
        return orvStatusNullPointer;
    if (OrvStatus st = checkSizeAndSteps(roi, srcStep, dstStep))
        return st;
    const Columns m = columnsOf4x4(twist);
    const bool large = streamFloats((long long)roi.width * 4 * roi.height);
    bool streamed = false;
    auto run = [&](const float* s, float* d, int n) {
        const bool stream = large && reinterpret_cast<uintptr_t>(s) % 16 == 0 && reinterpret_cast<uintptr_t>(d) % 16 == 0;
        streamed |= stream;
        twistRow(Twist4{m, stream}, {s}, {d}, n);
    };
    if (contiguous(srcStep, dstStep, roi, 16)) {
        run(src, dst, roi.width * roi.height);
    } else {
        for (int y = 0; y < roi.height; ++y)
            run(rowAt(src, srcStep, y), rowAt(dst, dstStep, y), roi.width);
    }
    if (streamed)
        _mm_sfence();
    return orvStatusOk;
}

}  // namespace
}  // namespace h9

using namespace h9;

// ---- integer members: 3-by-4 matrix, clamped, rounded to nearest ----------
ORV_FRONT(orviColorTwist32f_8u_C3R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize,
                                    const Orv32f twist[3][4])
{
    return myColorTwist<Orv8u, Layout::C3>(pSrc, srcStep, pDst, dstStep, roiSize, twist);
}
ORV_FRONT(orviColorTwist32f_8u_C3IR)(Orv8u* pSrcDst, int srcDstStep, RoiSize roiSize, const Orv32f twist[3][4])
{
    return myColorTwist<Orv8u, Layout::C3>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, twist);
}
ORV_FRONT(orviColorTwist32f_8u_AC4R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, RoiSize roiSize,
                                     const Orv32f twist[3][4])
{
    return myColorTwist<Orv8u, Layout::AC4>(pSrc, srcStep, pDst, dstStep, roiSize, twist);
}
ORV_FRONT(orviColorTwist32f_8u_AC4IR)(Orv8u* pSrcDst, int srcDstStep, RoiSize roiSize, const Orv32f twist[3][4])
{
    return myColorTwist<Orv8u, Layout::AC4>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, twist);
}
ORV_FRONT(orviColorTwist32f_8u_P3R)(const Orv8u* const pSrc[3], int srcStep, Orv8u* pDst[3], int dstStep,
                                    RoiSize roiSize, const Orv32f twist[3][4])
{
    return myColorTwistP3<Orv8u>(pSrc, srcStep, pDst, dstStep, roiSize, twist);
}
ORV_FRONT(orviColorTwist32f_8u_IP3R)(Orv8u* pSrcDst[3], int srcDstStep, RoiSize roiSize, const Orv32f twist[3][4])
{
    return myColorTwistP3<Orv8u>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, twist);
}

ORV_FRONT(orviColorTwist32f_16u_C3R)(const Orv16u* pSrc, int srcStep, Orv16u* pDst, int dstStep, RoiSize roiSize,
                                     const Orv32f twist[3][4])
{
    return myColorTwist<Orv16u, Layout::C3>(pSrc, srcStep, pDst, dstStep, roiSize, twist);
}
ORV_FRONT(orviColorTwist32f_16u_C3IR)(Orv16u* pSrcDst, int srcDstStep, RoiSize roiSize, const Orv32f twist[3][4])
{
    return myColorTwist<Orv16u, Layout::C3>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, twist);
}
ORV_FRONT(orviColorTwist32f_16u_AC4R)(const Orv16u* pSrc, int srcStep, Orv16u* pDst, int dstStep, RoiSize roiSize,
                                      const Orv32f twist[3][4])
{
    return myColorTwist<Orv16u, Layout::AC4>(pSrc, srcStep, pDst, dstStep, roiSize, twist);
}
ORV_FRONT(orviColorTwist32f_16u_AC4IR)(Orv16u* pSrcDst, int srcDstStep, RoiSize roiSize, const Orv32f twist[3][4])
{
    return myColorTwist<Orv16u, Layout::AC4>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, twist);
}
ORV_FRONT(orviColorTwist32f_16u_P3R)(const Orv16u* const pSrc[3], int srcStep, Orv16u* pDst[3], int dstStep,
                                     RoiSize roiSize, const Orv32f twist[3][4])
{
    return myColorTwistP3<Orv16u>(pSrc, srcStep, pDst, dstStep, roiSize, twist);
}
ORV_FRONT(orviColorTwist32f_16u_IP3R)(Orv16u* pSrcDst[3], int srcDstStep, RoiSize roiSize, const Orv32f twist[3][4])
{
    return myColorTwistP3<Orv16u>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, twist);
}

ORV_FRONT(orviColorTwist32f_16s_C3R)(const Orv16s* pSrc, int srcStep, Orv16s* pDst, int dstStep, RoiSize roiSize,
                                     const Orv32f twist[3][4])
{
    return myColorTwist<Orv16s, Layout::C3>(pSrc, srcStep, pDst, dstStep, roiSize, twist);
}
ORV_FRONT(orviColorTwist32f_16s_C3IR)(Orv16s* pSrcDst, int srcDstStep, RoiSize roiSize, const Orv32f twist[3][4])
{
    return myColorTwist<Orv16s, Layout::C3>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, twist);
}
ORV_FRONT(orviColorTwist32f_16s_AC4R)(const Orv16s* pSrc, int srcStep, Orv16s* pDst, int dstStep, RoiSize roiSize,
                                      const Orv32f twist[3][4])
{
    return myColorTwist<Orv16s, Layout::AC4>(pSrc, srcStep, pDst, dstStep, roiSize, twist);
}
ORV_FRONT(orviColorTwist32f_16s_AC4IR)(Orv16s* pSrcDst, int srcDstStep, RoiSize roiSize, const Orv32f twist[3][4])
{
    return myColorTwist<Orv16s, Layout::AC4>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, twist);
}
ORV_FRONT(orviColorTwist32f_16s_P3R)(const Orv16s* const pSrc[3], int srcStep, Orv16s* pDst[3], int dstStep,
                                     RoiSize roiSize, const Orv32f twist[3][4])
{
    return myColorTwistP3<Orv16s>(pSrc, srcStep, pDst, dstStep, roiSize, twist);
}
ORV_FRONT(orviColorTwist32f_16s_IP3R)(Orv16s* pSrcDst[3], int srcDstStep, RoiSize roiSize, const Orv32f twist[3][4])
{
    return myColorTwistP3<Orv16s>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, twist);
}

// ---- float members: no clamp, the caller's rounding mode -----------------
ORV_FRONT(orviColorTwist_32f_C3R)(const Orv32f* pSrc, int srcStep, Orv32f* pDst, int dstStep, RoiSize roiSize,
                                  const Orv32f twist[3][4])
{
    return myColorTwist32fC3R(pSrc, srcStep, pDst, dstStep, roiSize, twist);
}
ORV_FRONT(orviColorTwist_32f_C3IR)(Orv32f* pSrcDst, int srcDstStep, RoiSize roiSize, const Orv32f twist[3][4])
{
    return myColorTwist<Orv32f, Layout::C3>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, twist);
}
ORV_FRONT(orviColorTwist_32f_AC4R)(const Orv32f* pSrc, int srcStep, Orv32f* pDst, int dstStep, RoiSize roiSize,
                                   const Orv32f twist[3][4])
{
    return myColorTwist<Orv32f, Layout::AC4>(pSrc, srcStep, pDst, dstStep, roiSize, twist);
}
ORV_FRONT(orviColorTwist_32f_AC4IR)(Orv32f* pSrcDst, int srcDstStep, RoiSize roiSize, const Orv32f twist[3][4])
{
    return myColorTwist<Orv32f, Layout::AC4>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, twist);
}
ORV_FRONT(orviColorTwist_32f_P3R)(const Orv32f* const pSrc[3], int srcStep, Orv32f* pDst[3], int dstStep,
                                  RoiSize roiSize, const Orv32f twist[3][4])
{
    return myColorTwistP3<Orv32f>(pSrc, srcStep, pDst, dstStep, roiSize, twist);
}
ORV_FRONT(orviColorTwist_32f_IP3R)(Orv32f* pSrcDst[3], int srcDstStep, RoiSize roiSize, const Orv32f twist[3][4])
{
    return myColorTwistP3<Orv32f>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, twist);
}
ORV_FRONT(orviColorTwist_32f_C4R)(const Orv32f* pSrc, int srcStep, Orv32f* pDst, int dstStep, RoiSize roiSize,
                                  const Orv32f twist[4][4])
{
    return myColorTwist32fC4R(pSrc, srcStep, pDst, dstStep, roiSize, twist);
}
