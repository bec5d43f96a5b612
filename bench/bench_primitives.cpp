// The internal copy primitive against memcpy: whole blocks, a padded
// rectangle, and each block path by itself.
#include <cstring>

#include "bench_util.h"
#include "frame/primitives/primitives.h"

namespace {

using namespace orvbench;

// A copy of `bytes` bytes, reported in bytes per second, labelled with the
// block path the dispatcher takes for the two buffers.
void registerCopy(const std::string& name, std::size_t bytes, void (*copy)(const uint8_t*, uint8_t*, std::size_t))
{
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        Buffer src(bytes), dst(bytes);
        static const char* const kPath[] = {"stream", "rep", "backward"};
        state.SetLabel(kPath[int(h9::chooseBlockCopy(src.data(), dst.data(), bytes))]);
        for (auto _ : state) {
            copy(src.data(), dst.data(), bytes);
            benchmark::ClobberMemory();
        }
        state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes));
    })->UseRealTime();
}

void registerCopies()
{
    for (std::size_t mb : {1, 8, 64}) {
        const std::string size = "/" + std::to_string(mb) + "MiB";
        registerCopy("Copy_8u_block" + size, mb << 20, [](const uint8_t* s, uint8_t* d, std::size_t n) {
            h9::orvsCopy_8u(s, d, int(n));
        });
        registerCopy("Copy_8u_C1R_padded" + size, mb << 20, [](const uint8_t* s, uint8_t* d, std::size_t n) {
            // Rows of 4064 bytes in a step of 4096.
            h9::orviCopy_8u_C1R(s, 4096, d, 4096, {4064, int(n / 4096)});
        });
        // The block paths by themselves.
        registerCopy("Copy_8u_path_rep" + size, mb << 20, h9::ownsCopy_8u_repG9);
        registerCopy("Copy_8u_path_backward" + size, mb << 20, h9::blockCopyBackward);
        registerCopy("Copy_8u_path_streamed" + size, mb << 20, h9::blockCopyStreamed);
        registerCopy("Copy_8u_path_G9" + size, mb << 20, h9::ownsCopy_8u_G9);
        registerCopy("Copy_8u_block" + size + "/memcpy", mb << 20,
                     [](const uint8_t* s, uint8_t* d, std::size_t n) { std::memcpy(d, s, n); });
    }
}

const Registrar registrar(registerCopies);

}  // namespace
