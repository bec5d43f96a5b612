// Uniform random generators for the library's own use (not exported).
//
// A subtract-with-borrow generator (lags 2 and 3, modulus 2^32 - 18) is added
// to a congruential one (multiplier 69069, increment 1013904243); the 32-bit
// sum, read as signed, is scaled onto [low, high) in double precision. All
// state lives in a caller-owned block, so equal seeds and limits give equal
// sequences on any thread, and a sequence may be drawn in pieces.
#pragma once

#include <cstdint>

#include "orvcc.h"

namespace h9 {

// Opaque to callers: they ask for the size, provide that many bytes and
// initialise them.
struct RandUniformState16s;
struct RandUniformState32f;

OrvStatus orvsRandUniformGetSize_16s(int* size);  // 48
OrvStatus orvsRandUniformGetSize_32f(int* size);  // 52
OrvStatus orvsRandUniformInit_16s(RandUniformState16s* state, int16_t low, int16_t high, uint32_t seed);
OrvStatus orvsRandUniformInit_32f(RandUniformState32f* state, float low, float high, uint32_t seed);
OrvStatus orvsRandUniform_16s(int16_t* dst, int length, RandUniformState16s* state);
OrvStatus orvsRandUniform_32f(float* dst, int length, RandUniformState32f* state);

}  // namespace h9
