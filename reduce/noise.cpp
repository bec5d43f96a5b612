// The noise tables of the noise forms: drawn once per call, always from seed
// 0, so that equal calls give equal output on any number of threads.
#include "frame/rands.h"
#include "reduce/reduce.h"

namespace h9::reduce {

NoiseTables drawNoise(uint8_t* buffer, float low, float high)
{
    uint8_t* base = alignedStart(buffer);
    auto* noise = reinterpret_cast<float*>(base);
    auto* index = reinterpret_cast<int16_t*>(base + kNoiseTableBytes);
    int size16 = 0, size32 = 0;
    orvsRandUniformGetSize_16s(&size16);
    orvsRandUniformGetSize_32f(&size32);
    auto* state16 = reinterpret_cast<RandUniformState16s*>(base + kState16sOffset);
    auto* state32 = reinterpret_cast<RandUniformState32f*>(base + kState16sOffset + size16);
    orvsRandUniformInit_16s(state16, 0, 1024, 0);
    orvsRandUniform_16s(index, 1024, state16);
    orvsRandUniformInit_32f(state32, low, high, 0);
    orvsRandUniform_32f(noise, 1024, state32);
    // The error rows follow the second state directly.
    return {noise, index, reinterpret_cast<float*>(base + kState16sOffset + size16 + size32)};
}

}  // namespace h9::reduce
