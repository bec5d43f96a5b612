// Uniform random generators: state blocks, seeding and the combined step.
#include "frame/rands.h"

#include <immintrin.h>

#include <cmath>
#include <cstring>

namespace h9 {

namespace {

constexpr int32_t kId16s = 36;
constexpr int32_t kId32f = 37;

// The two records hold the same items; only the width of the limits
// differs. Packed: the 16s record is 48 bytes, the 32f record 52.
#pragma pack(push, 4)
template <class Limit>
struct Record {
    int32_t id;
    uint32_t seed;
    Limit low;
    Limit high;
    double mean;
    double scale;
    uint32_t x;        // congruential part
    uint32_t a, b, c;  // last three subtract-with-borrow values, newest first
    uint32_t carry;    // 0 or 0xFFFFFFFF
};
#pragma pack(pop)
static_assert(sizeof(Record<int16_t>) == 48);
static_assert(sizeof(Record<float>) == 52);

constexpr uint32_t kMul = 69069u;
constexpr uint32_t kInc = 1013904243u;

template <class Limit>
void seed(Record<Limit>& r, int32_t id, Limit low, Limit high, uint32_t s, double sum, double width)
{
    r.id = id;
    r.seed = s;
    r.low = low;
    r.high = high;
    r.mean = sum * 0.5;
    r.scale = width * 2.3283064365386963e-10;  // 2^-32
    r.x = 1131199209u;
    r.a = s;
    r.b = r.a * kMul + kInc;
    r.c = r.b * kMul + kInc;
    r.carry = 0xFFFFFFFFu;
}

// One step: the next value scaled onto [low, high) in double precision.
template <class Limit>
inline double step(Record<Limit>& r)
{
    const uint32_t t = r.b - r.c + r.carry;
    uint32_t z;
    if (t & 0x80000000u) {
        z = t - 18u;
        r.carry = 0xFFFFFFFFu;
    } else {
        z = t;
        r.carry = 0;
    }
    r.c = r.b;
    r.b = r.a;
    r.a = z;
    r.x = r.x * kMul + kInc;
    const int32_t v = static_cast<int32_t>(z + r.x);
    return std::fma(r.scale, double(v), r.mean);
}

// The checks common to both generators, then `length` steps on a copy of the
// record that is written back at the end.
template <class Limit, class Out, class Conv>
OrvStatus draw(Out* dst, int length, void* state, int32_t id, Conv conv)
{
    if (!dst || !state)
        return orvStatusNullPointer;
    if (length < 1)
        return orvStatusBadSize;
    // The id word first: a record of the other kind may be shorter.
    int32_t word;
    std::memcpy(&word, state, sizeof word);
    if (word != id)
        return orvStatusBadContext;
    Record<Limit> r;
    std::memcpy(&r, state, sizeof r);
    for (int i = 0; i < length; ++i)
        dst[i] = conv(step(r));
    std::memcpy(state, &r, sizeof r);
    return orvStatusOk;
}

}  // namespace

OrvStatus orvsRandUniformGetSize_16s(int* size)
{
    if (!size)
        return orvStatusNullPointer;
    *size = int(sizeof(Record<int16_t>));
    return orvStatusOk;
}

OrvStatus orvsRandUniformGetSize_32f(int* size)
{
    if (!size)
        return orvStatusNullPointer;
    *size = int(sizeof(Record<float>));
    return orvStatusOk;
}

OrvStatus orvsRandUniformInit_16s(RandUniformState16s* state, int16_t low, int16_t high, uint32_t s)
{
    if (!state)
        return orvStatusNullPointer;
    Record<int16_t> r;
    seed(r, kId16s, low, high, s, double(int32_t(low) + int32_t(high)), double(int32_t(high) - int32_t(low)));
    std::memcpy(state, &r, sizeof r);
    return orvStatusOk;
}

OrvStatus orvsRandUniformInit_32f(RandUniformState32f* state, float low, float high, uint32_t s)
{
    if (!state)
        return orvStatusNullPointer;
    Record<float> r;
    const float sum = low + high;
    const float width = high - low;
    seed(r, kId32f, low, high, s, double(sum), double(width));
    std::memcpy(state, &r, sizeof r);
    return orvStatusOk;
}

OrvStatus orvsRandUniform_16s(int16_t* dst, int length, RandUniformState16s* state)
{
    // Nearest integer in the thread's rounding mode, low 16 bits kept.
    return draw<int16_t>(dst, length, state, kId16s,
                         [](double d) { return int16_t(_mm_cvtsd_si32(_mm_set_sd(d))); });
}

OrvStatus orvsRandUniform_32f(float* dst, int length, RandUniformState32f* state)
{
    return draw<float>(dst, length, state, kId32f, [](double d) { return float(d); });
}

}  // namespace h9
