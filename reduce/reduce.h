// Bit-depth reduction: what the quantisers, the dither methods and the front
// functions share.
//
// Every dither method works on a float value v in a domain set by the source
// element (bytes 0..255, 16-bit data 0..65535 with signed data offset by
// 32768, floats as they are). One level is `step` wide in that domain, and
// the core of every method is the step quantiser: n = trunc(v * invStep),
// q = n * step, and q moves up one step when the remainder v - q is strictly
// greater than a threshold t. The methods differ in where t comes from.
//
// The quantiser exists in two float forms whose results can differ, and the
// form of each element position is part of the output:
//   split  q0 = n * a; r = v - q0; q = q0 (+ a), each step rounded
//   fused  r = fma(-n, a, v);      q = fma(n, a, a or 0)
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "frame/scalar.h"
#include "orvcc.h"

namespace h9::reduce {

// Interleaved layouts: elements between pixels and channels processed.
enum class Layout { C1, C3, AC4, C4 };

constexpr int stride(Layout l) { return l == Layout::C1 ? 1 : l == Layout::C3 ? 3 : 4; }
constexpr int channels(Layout l) { return l == Layout::C1 ? 1 : l == Layout::C4 ? 4 : 3; }

// Unaligned element access: rows may start anywhere when steps are bytes.
template <class T>
inline T load(const T* p)
{
    T v;
    std::memcpy(&v, p, sizeof v);
    return v;
}
template <class T>
inline void store(T* p, T v)
{
    std::memcpy(p, &v, sizeof v);
}

// ---------------------------------------------------------------------------
// The dither domain of a source element type.

template <class S>
struct Domain;

template <>
struct Domain<uint8_t> {
    static constexpr float kTop = 255.0f;
    static float value(uint8_t s) { return float(s); }
    // The step is formed in 1/256 units and scaled back exactly.
    static float step(float L) { return (65280.0f / L) * 0.00390625f; }
    static float invStep(float L) { return L / 255.0f; }
};

template <>
struct Domain<uint16_t> {
    static constexpr float kTop = 65535.0f;
    static float value(uint16_t s) { return float(s); }
    static float step(float L) { return 65535.0f / L; }
    static float invStep(float L) { return L / 65535.0f; }
};

template <>
struct Domain<int16_t> {
    static constexpr float kTop = 65535.0f;
    static float value(int16_t s) { return float(int32_t(s) + 32768); }
    static float step(float L) { return 65535.0f / L; }
    static float invStep(float L) { return L / 65535.0f; }
};

template <>
struct Domain<float> {
    static constexpr float kTop = 1.0f;
    static float value(float s) { return s; }
    static float step(float L) { return 1.0f / L; }
    static float invStep(float L) { return L; }
};

// Eight source elements as domain values.
template <class S>
inline __m256 domain8(const S* p)
{
    if constexpr (std::is_same_v<S, uint8_t>)
        return _mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))));
    else if constexpr (std::is_same_v<S, uint16_t>)
        return _mm256_cvtepi32_ps(_mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))));
    else if constexpr (std::is_same_v<S, int16_t>)
        return _mm256_cvtepi32_ps(_mm256_add_epi32(
            _mm256_cvtepi16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))), _mm256_set1_epi32(32768)));
    else
        return _mm256_loadu_ps(p);
}

// ---------------------------------------------------------------------------
// Destination elements: range and saturation of an int32 result.

template <class D>
struct Dest;

template <>
struct Dest<uint8_t> {
    static constexpr int32_t kLow = 0, kHigh = 255;
    static uint8_t sat(int32_t v) { return satU8(v); }
};
template <>
struct Dest<uint16_t> {
    static constexpr int32_t kLow = 0, kHigh = 65535;
    static uint16_t sat(int32_t v) { return satU16(v); }
};
template <>
struct Dest<int16_t> {
    static constexpr int32_t kLow = -32768, kHigh = 32767;
    static int16_t sat(int32_t v) { return satS16(v); }
};

// Eight int32 results saturated to D: the pack instructions.
template <class D>
inline __m128i pack8(__m256i v)
{
    const __m128i lo = _mm256_castsi256_si128(v), hi = _mm256_extracti128_si256(v, 1);
    if constexpr (std::is_same_v<D, uint8_t>) {
        const __m128i w = _mm_packs_epi32(lo, hi);
        return _mm_packus_epi16(w, w);
    } else if constexpr (std::is_same_v<D, uint16_t>) {
        return _mm_packus_epi32(lo, hi);
    } else {
        return _mm_packs_epi32(lo, hi);
    }
}

template <class D>
inline void store8(D* p, __m256i v)
{
    if constexpr (std::is_same_v<D, uint8_t>)
        _mm_storel_epi64(reinterpret_cast<__m128i*>(p), pack8<D>(v));
    else
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p), pack8<D>(v));
}

// The same for two four-channel pixels whose fourth elements keep their old
// values.
template <class D>
inline void store8KeepAlpha(D* p, __m256i v)
{
    if constexpr (std::is_same_v<D, uint8_t>) {
        const __m128i old = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
        const __m128i keep = _mm_setr_epi8(0, 0, 0, -1, 0, 0, 0, -1, 0, 0, 0, 0, 0, 0, 0, 0);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_blendv_epi8(pack8<D>(v), old, keep));
    } else {
        const __m128i old = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_blend_epi16(pack8<D>(v), old, 0x88));
    }
}

// ---------------------------------------------------------------------------
// The step quantiser in its two forms, scalar and eight lanes.

inline float quantSplit(float v, float invStep, float a, float t)
{
    const float n = float(cvtTrunc(v * invStep));
    const float q0 = n * a;
    const float r = v - q0;
    // q0 plus a masked by the test: adding zero leaves q0 as it is, and no
    // branch waits for the comparison.
    const __m128 up = _mm_and_ps(_mm_cmpgt_ss(_mm_set_ss(r), _mm_set_ss(t)), _mm_set_ss(a));
    return _mm_cvtss_f32(_mm_add_ss(_mm_set_ss(q0), up));
}

inline float quantFused(float v, float invStep, float a, float t)
{
    const float n = float(cvtTrunc(v * invStep));
    const float r = fmaf32(-n, a, v);
    return fmaf32(n, a, r > t ? a : 0.0f);
}

inline __m256 quantFused8(__m256 v, __m256 invStep, __m256 a, __m256 t)
{
    const __m256 n = _mm256_cvtepi32_ps(_mm256_cvttps_epi32(_mm256_mul_ps(v, invStep)));
    const __m256 r = _mm256_fnmadd_ps(n, a, v);
    return _mm256_fmadd_ps(n, a, _mm256_and_ps(_mm256_cmp_ps(r, t, _CMP_GT_OQ), a));
}

// ---------------------------------------------------------------------------
// From a dithered level q (in the domain) to the destination element. Two
// rules exist: Exact truncates q as it stands (scaled by 255 or 65535 for
// float sources), Half adds one half first where the pair narrows 16-bit
// signed data to bytes or starts from floats.

enum class Out { Exact, Half };

template <class S, class D, Out O>
inline int32_t level(float q)
{
    if constexpr (std::is_same_v<S, float>) {
        constexpr float k = std::is_same_v<D, uint8_t> ? 255.0f : 65535.0f;
        const int32_t i = O == Out::Half ? cvtTrunc(fmaf32(k, q, 0.5f)) : cvtTrunc(k * q);
        return std::is_same_v<D, int16_t> ? int32_t(uint32_t(i) - 32768u) : i;
    } else if constexpr (sizeof(D) < sizeof(S)) {
        const bool half = O == Out::Half && std::is_same_v<S, int16_t>;
        return (half ? cvtTrunc(q + 0.5f) : cvtTrunc(q)) >> 8;
    } else if constexpr (std::is_same_v<D, int16_t>) {
        return int32_t(uint32_t(cvtTrunc(q)) - 32768u);
    } else {
        return cvtTrunc(q);
    }
}

template <class S, class D, Out O>
inline __m256i level8(__m256 q)
{
    if constexpr (std::is_same_v<S, float>) {
        const __m256 k = _mm256_set1_ps(std::is_same_v<D, uint8_t> ? 255.0f : 65535.0f);
        const __m256i i = O == Out::Half ? _mm256_cvttps_epi32(_mm256_fmadd_ps(k, q, _mm256_set1_ps(0.5f)))
                                         : _mm256_cvttps_epi32(_mm256_mul_ps(k, q));
        return std::is_same_v<D, int16_t> ? _mm256_sub_epi32(i, _mm256_set1_epi32(32768)) : i;
    } else if constexpr (sizeof(D) < sizeof(S)) {
        const bool half = O == Out::Half && std::is_same_v<S, int16_t>;
        return _mm256_srai_epi32(_mm256_cvttps_epi32(half ? _mm256_add_ps(q, _mm256_set1_ps(0.5f)) : q), 8);
    } else if constexpr (std::is_same_v<D, int16_t>) {
        return _mm256_sub_epi32(_mm256_cvttps_epi32(q), _mm256_set1_epi32(32768));
    } else {
        return _mm256_cvttps_epi32(q);
    }
}

// ---------------------------------------------------------------------------
// The work buffer. Drivers start at the first multiple of 64 at or after the
// caller's pointer. The noise forms put their tables and generator states
// first; error rows follow them (or start at the aligned start).

inline uint8_t* alignedStart(uint8_t* buffer)
{
    const uintptr_t p = reinterpret_cast<uintptr_t>(buffer);
    return buffer + ((64 - p % 64) % 64);
}

constexpr int kNoiseTableBytes = 1024 * 4;
constexpr int kIndexTableBytes = 1024 * 2;
constexpr int kState16sOffset = kNoiseTableBytes + kIndexTableBytes;  // 6144

// The noise tables of one call, drawn on the calling thread.
struct NoiseTables {
    const float* noise;     // 1024 thresholds or threshold offsets
    const int16_t* index;   // 1024 column offsets, 0..1024
    float* errorRows;       // where the error rows of the sections begin

    // The table entry of pixel (x, y): it depends only on the position.
    float at(int x, int y) const
    {
        const uint32_t i = (uint32_t(uint16_t(index[x & 1023])) + 2u * uint32_t(y) + uint32_t(x)) & 1023u;
        return noise[i];
    }
};

// Draws both tables into the aligned buffer: column offsets over 0..1024
// first, then 1024 floats over [low, high), both with seed 0.
NoiseTables drawNoise(uint8_t* buffer, float low, float high);

// ---------------------------------------------------------------------------
// The drivers behind the front functions. Steps are bytes here; each driver
// turns them into the units it works in.

struct Call {
    int srcStep;
    int dstStep;
    RoiSize roi;
    Layout layout;
    float L;          // levels - 1
    uint32_t noise;   // 0..100
    uint8_t* buffer;  // may be null
};

template <class S, class D>
OrvStatus reduceNone(const S* src, D* dst, const Call& c);

template <class S, class D>
OrvStatus reduceBayer(const S* src, D* dst, const Call& c);

// code: 1 Floyd-Steinberg, 2 Jarvis-Judice-Ninke, 3 Stucki.
template <class S, class D>
OrvStatus reduceDiffusion(const S* src, D* dst, const Call& c, int code);

// The thread count that a region opened with ownGetNumThreads() threads
// really gets.
int regionThreads();

// Element steps of the element-step drivers: the byte step shifted right
// arithmetically by the element size, so that the sign stays and a
// remainder is dropped, then back to bytes.
template <class T>
inline int wholeElements(int byteStep)
{
    constexpr int shift = sizeof(T) == 1 ? 0 : sizeof(T) == 2 ? 1 : 2;
    return (byteStep >> shift) * int(sizeof(T));
}

// The eight (source, destination) element pairs of the family.
#define ORV_REDUCE_PAIRS(X) \
    X(uint8_t, uint8_t)     \
    X(uint16_t, uint16_t)   \
    X(int16_t, int16_t)     \
    X(uint16_t, uint8_t)    \
    X(int16_t, uint8_t)     \
    X(float, uint8_t)       \
    X(float, uint16_t)      \
    X(float, int16_t)

}  // namespace h9::reduce
