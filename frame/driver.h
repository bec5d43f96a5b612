// Row drivers shared by every family.
//
// A family's kernel converts one row; the drivers here know nothing about
// colour. They walk the rows (signed byte steps, a negative step walks up
// through memory), split each row between the block form and the tail form,
// and spread rows over threads in one of three patterns:
//
//   rowsAreaTested   pattern A: serial up to an area threshold, else one
//                    parallel region, static schedule over rows
//   rowsParallel     pattern B: always a parallel region
//   bands            pattern C: one contiguous band of rows per thread
//
// Rows never communicate, so the output does not depend on the thread count.
#pragma once

#include <omp.h>

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "frame/fpmode.h"
#include "orvcore.h"

namespace h9 {

// Test switch, never set by the library itself: when true, runRow computes
// the block part of a row with the kernel's scalar block form instead of its
// vector path, so tests can compare the two bit for bit through the public
// functions.
extern bool g_scalarBlocks;

// Test and benchmark switch, never set by the library itself: where a call
// chooses between streaming and ordinary stores, 1 makes it stream, -1 makes
// it store as usual, 0 leaves the choice to its rule. Either gives the same
// bytes, so tests run both paths and benchmarks compare them.
extern int g_streamStores;

// A call's choice of streaming stores: its rule's, unless the switch says.
inline bool streamStores(bool byRule)
{
    return g_streamStores != 0 ? g_streamStores > 0 : byRule;
}

// Row `row` of an image at `base` with a signed byte step.
template <class T>
inline T* rowAt(T* base, int step, int row)
{
    using Byte = std::conditional_t<std::is_const_v<T>, const char, char>;
    return reinterpret_cast<T*>(reinterpret_cast<Byte*>(base) + static_cast<std::ptrdiff_t>(row) * step);
}

// width * height as a 32-bit signed product that wraps like the machine's.
inline int32_t area32(int width, int height)
{
    return static_cast<int32_t>(static_cast<uint32_t>(width) * static_cast<uint32_t>(height));
}

// The pixels [begin, end) of a row take the block form; the others the tail
// form. Most families start blocks at 0.
struct Span {
    int begin;
    int end;
};

// One row through a kernel K:
//   K::Src, K::Dst             element types
//   K::kSrcPix, K::kDstPix     elements per pixel (or per unit of work)
//   Span K::span(int width, const Dst* d) const
//                              where the row splits between forms
//   void K::tail(const Src*, Dst*) const
//                              scalar tail form, one pixel
//   void K::block(const Src*, Dst*) const   or  block(const Src*, Dst*, int j)
//                              scalar block form, one pixel (j: index in span)
//   void K::vector(const Src*, Dst*, int n) const     (optional)
//                              vector path over n pixels of the span
template <class K>
inline void runRow(const K& k, const typename K::Src* s, typename K::Dst* d, int width)
{
    constexpr int sp = K::kSrcPix;
    constexpr int dp = K::kDstPix;
    const Span b = k.span(width, d);
    for (int i = 0; i < b.begin; ++i)
        k.tail(s + i * sp, d + i * dp);
    if (b.end > b.begin) {
        bool done = false;
        if constexpr (requires { k.vector(s, d, 0); }) {
            if (!g_scalarBlocks) {
                k.vector(s + b.begin * sp, d + b.begin * dp, b.end - b.begin);
                done = true;
            }
        }
        for (int i = b.begin; !done && i < b.end; ++i) {
            if constexpr (requires { k.block(s, d, 0); })
                k.block(s + i * sp, d + i * dp, i - b.begin);
            else
                k.block(s + i * sp, d + i * dp);
        }
    }
    for (int i = b.end; i < width; ++i)
        k.tail(s + i * sp, d + i * dp);
}

// Serial loop over the rows of a rectangle with a row kernel.
template <class K>
inline void rowsSerial(const K& k, const typename K::Src* src, int srcStep,
                       typename K::Dst* dst, int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y)
        runRow(k, rowAt(src, srcStep, y), rowAt(dst, dstStep, y), width);
}

// Pattern A: up to `threshold` pixels on the caller's thread, above it one
// parallel region with ownGetNumThreads() threads, rows by static schedule.
template <class Body>
inline void rowsAreaTested(int width, int height, int32_t threshold, Body&& body)
{
    if (area32(width, height) <= threshold) {
        for (int y = 0; y < height; ++y)
            body(y);
        return;
    }
    const int n = ownGetNumThreads();
#pragma omp parallel for schedule(static) num_threads(n)
    for (int y = 0; y < height; ++y)
        body(y);
}

// Pattern B for conversions that round to nearest in the caller's rounding
// mode: each thread of the region takes the caller's mode for the length of
// the call and gets its own back, so the output does not depend on which
// thread converts a row.
template <class Body>
inline void rowsParallelInCallersRounding(int height, Body&& body)
{
    const uint32_t mode = orv_get_rc_ssx();
    const int n = ownGetNumThreads();
#pragma omp parallel num_threads(n)
    {
        const RoundingAs callers(mode);
#pragma omp for schedule(static)
        for (int y = 0; y < height; ++y)
            body(y);
    }
}

// Pattern A with the caller's rounding mode carried into the region.
template <class Body>
inline void rowsAreaTestedInCallersRounding(int width, int height, int32_t threshold, Body&& body)
{
    if (area32(width, height) <= threshold)
        return rowsAreaTested(width, height, threshold, body);
    rowsParallelInCallersRounding(height, body);
}

// Pattern A over the rows of a rectangle with a row kernel.
template <class K>
inline void rowsAreaTested(const K& k, const typename K::Src* src, int srcStep, typename K::Dst* dst, int dstStep,
                           int width, int height, int32_t threshold)
{
    rowsAreaTested(width, height, threshold,
                   [&](int y) { runRow(k, rowAt(src, srcStep, y), rowAt(dst, dstStep, y), width); });
}

// Pattern B: always a parallel region, also for one row.
template <class Body>
inline void rowsParallel(int height, Body&& body)
{
    const int n = ownGetNumThreads();
#pragma omp parallel for schedule(static) num_threads(n)
    for (int y = 0; y < height; ++y)
        body(y);
}

// Pattern C: bands. `requested` threads are asked for; the master thread cuts
// the rows into one band per thread that the region really has, of
// bandRows(threadsInRegion) rows each, the last band taking the remainder,
// and each thread calls worker(firstRow, rowCount) on its band. A caller that
// decides to stay serial calls its worker itself.
template <class BandRows, class Worker>
inline void bands(int height, int requested, BandRows&& bandRows, Worker&& worker)
{
    int q = 0;
    int threads = 1;
#pragma omp parallel num_threads(requested)
    {
#pragma omp master
        {
            threads = omp_get_num_threads();
            q = bandRows(threads);
        }
#pragma omp barrier
        const int t = omp_get_thread_num();
        const int first = t * q;
        const int rows = (t == threads - 1) ? height - first : q;
        if (rows > 0)
            worker(first, rows);
    }
}

// The plain band height: height / threads, rounded down.
struct EvenBands {
    int height;
    int operator()(int threads) const { return height / threads; }
};

}  // namespace h9
