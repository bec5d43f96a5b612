// Test images in guarded memory, and the sweep that compares a function's
// vector path with its scalar form.
//
// GuardedImage lays `height` rows of `rowBytes` used bytes with a signed step
// between row starts. The bytes between the rows (padding) and a slack area
// before and after the rows hold a guard pattern, and the rows are placed so
// that the highest byte of the image lies directly below a PROT_NONE page:
// reading or writing one byte past the end faults, and a stray write into the
// padding shows up in guardsIntact().
#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "frame/driver.h"
#include "orvcc.h"

namespace orvtest {

constexpr uint8_t kGuard = 0xA5;

class GuardedImage {
public:
    // rowBytes: bytes of one row; step: bytes between row starts, may be
    // negative; |step| must be at least rowBytes. endSlack: guard bytes
    // between the image's last byte and the protected page (moves alignment).
    GuardedImage(int rowBytes, int height, int step, int endSlack = 0)
        : rowBytes_(rowBytes), height_(height), step_(step)
    {
        endSlack += emulatorSlack();
        const long page = sysconf(_SC_PAGESIZE);
        const std::ptrdiff_t absStep = step < 0 ? -std::ptrdiff_t(step) : step;
        span_ = height > 0 ? (height - 1) * absStep + rowBytes : 0;
        const std::size_t front = 64;
        const std::size_t need = front + span_ + endSlack;
        const std::size_t body = (need + page - 1) / page * page;
        mapBytes_ = body + 2 * page;
        void* m = mmap(nullptr, mapBytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        EXPECT_NE(m, MAP_FAILED);
        map_ = static_cast<uint8_t*>(m);
        mprotect(map_, page, PROT_NONE);
        mprotect(map_ + page + body, page, PROT_NONE);
        areaBegin_ = map_ + page;
        areaEnd_ = map_ + page + body;
        std::memset(areaBegin_, kGuard, body);
        uint8_t* lowest = areaEnd_ - endSlack - span_;
        origin_ = step < 0 ? lowest + (height - 1) * absStep : lowest;
    }
    GuardedImage(const GuardedImage&) = delete;
    GuardedImage& operator=(const GuardedImage&) = delete;
    ~GuardedImage() { munmap(map_, mapBytes_); }

    template <class T = uint8_t>
    T* data() const { return reinterpret_cast<T*>(origin_); }
    template <class T = uint8_t>
    T* row(int y) const { return reinterpret_cast<T*>(origin_ + std::ptrdiff_t(y) * step_); }
    int step() const { return step_; }
    int rowBytes() const { return rowBytes_; }
    int height() const { return height_; }

    // Random bytes in every row.
    void fillBytes(std::mt19937& rng)
    {
        for (int y = 0; y < height_; ++y)
            for (int x = 0; x < rowBytes_; ++x)
                row(y)[x] = static_cast<uint8_t>(rng());
    }
    // Random elements of T, uniform in [lo, hi], in every row.
    template <class T>
    void fill(std::mt19937& rng, double lo, double hi)
    {
        const int n = rowBytes_ / int(sizeof(T));
        for (int y = 0; y < height_; ++y) {
            for (int x = 0; x < n; ++x) {
                T v;
                if constexpr (std::is_floating_point_v<T>)
                    v = static_cast<T>(std::uniform_real_distribution<double>(lo, hi)(rng));
                else
                    v = static_cast<T>(std::uniform_int_distribution<long long>((long long)lo, (long long)hi)(rng));
                std::memcpy(row(y) + x * sizeof(T), &v, sizeof(T));
            }
        }
    }
    // Same value in every element of every row.
    template <class T>
    void fillValue(T v)
    {
        const int n = rowBytes_ / int(sizeof(T));
        for (int y = 0; y < height_; ++y)
            for (int x = 0; x < n; ++x)
                std::memcpy(row(y) + x * sizeof(T), &v, sizeof(T));
    }
    // Copies the rows of another image of the same row size and height.
    void copyFrom(const GuardedImage& o)
    {
        for (int y = 0; y < height_; ++y)
            std::memcpy(row(y), o.row(y), rowBytes_);
    }

    // The rows' bytes, top row first.
    std::vector<uint8_t> pixels() const
    {
        std::vector<uint8_t> v;
        v.reserve(std::size_t(rowBytes_) * height_);
        for (int y = 0; y < height_; ++y)
            v.insert(v.end(), row(y), row(y) + rowBytes_);
        return v;
    }

    // True when every byte outside the rows still holds the guard pattern.
    bool guardsIntact() const
    {
        std::vector<uint8_t> inside(areaEnd_ - areaBegin_, 0);
        for (int y = 0; y < height_; ++y)
            std::memset(inside.data() + (row(y) - areaBegin_), 1, rowBytes_);
        for (std::ptrdiff_t i = 0; i < areaEnd_ - areaBegin_; ++i)
            if (!inside[i] && areaBegin_[i] != kGuard)
                return false;
        return true;
    }

private:
    static int emulatorSlack()
    {
        static const int slack = std::getenv("ORVCC_TEST_EMULATED") ? 32 : 0;
        return slack;
    }

    int rowBytes_;
    int height_;
    int step_;
    std::ptrdiff_t span_ = 0;
    std::size_t mapBytes_ = 0;
    uint8_t* map_ = nullptr;
    uint8_t* areaBegin_ = nullptr;
    uint8_t* areaEnd_ = nullptr;
    uint8_t* origin_ = nullptr;
};

// Random pixels of T over the range a conversion meets: all bytes and all
// 16-bit values, floats slightly beyond 0..1 so that clamps take part.
template <class T>
void fillTypical(GuardedImage& img, std::mt19937& rng)
{
    if constexpr (std::is_floating_point_v<T>)
        img.fill<T>(rng, -0.25, 1.25);
    else if constexpr (std::is_same_v<T, int16_t>)
        img.fill<T>(rng, -32768, 32767);
    else if constexpr (std::is_same_v<T, uint16_t>)
        img.fill<T>(rng, 0, 65535);
    else
        img.fillBytes(rng);
}

// Runs the drivers' block parts with the scalar block form while alive.
class ScalarBlocks {
public:
    ScalarBlocks() { h9::g_scalarBlocks = true; }
    ~ScalarBlocks() { h9::g_scalarBlocks = false; }
};

// Makes every call that chooses between streaming and ordinary stores take
// streaming (true) or ordinary (false) ones while alive.
class StreamStores {
public:
    explicit StreamStores(bool on) { h9::g_streamStores = on ? 1 : -1; }
    ~StreamStores() { h9::g_streamStores = 0; }
};

// Sets the library's thread count while alive.
class ThreadCount {
public:
    explicit ThreadCount(int n) { orvSetNumThreads(n); }
    ~ThreadCount() { orvSetNumThreads(0); }
};

// One geometry of a sweep: the rectangle and how its rows lie in memory.
struct Geometry {
    int width;
    int height;
    int srcPad;       // bytes added to the tight source step
    int dstPad;       // bytes added to the tight destination step
    bool negative;    // both steps negative (rows walk upward)
    int endSlack;     // bytes between the last row and the protected page
    std::string str() const
    {
        return std::to_string(width) + "x" + std::to_string(height) + " pad " + std::to_string(srcPad) + "/" +
               std::to_string(dstPad) + (negative ? " neg" : "") + " slack " + std::to_string(endSlack);
    }
};

// Widths 1..72 and some large ones, several heights, tight, padded and
// negative steps, shifted alignments. `padUnit` is the granule of the
// paddings (1 allows odd steps; element-size for wider types).
inline std::vector<Geometry> standardSweep(int padUnit = 1)
{
    std::vector<Geometry> g;
    const int heights[] = {1, 2, 3, 5};
    for (int w = 1; w <= 72; ++w) {
        const int h = heights[w % 4];
        g.push_back({w, h, 0, 0, false, 0});
        g.push_back({w, h, 3 * padUnit, 5 * padUnit, (w % 3) == 0, (w % 5) * padUnit});
    }
    for (int w : {127, 128, 129, 255, 256, 257, 1000, 1920, 4099})
        g.push_back({w, (w > 1000 ? 2 : 3), 7 * padUnit, padUnit, w % 2 == 0, (w % 7) * padUnit});
    return g;
}

// Image with `width` pixels of `pixBytes` bytes per row, laid per geometry.
inline GuardedImage makeImage(int width, int height, int pixBytes, int pad, bool negative, int slack)
{
    const int rowBytes = width * pixBytes;
    const int step = rowBytes + pad;
    return GuardedImage(rowBytes, height, negative ? -step : step, slack);
}

// For a function of shape f(src, srcStep, dst, dstStep, roi): over the
// standard sweep, the vector run and the scalar-block run give the same
// status and the same bytes, and neither writes outside the rectangle.
// `fillSrc` fills the source; `srcPix`/`dstPix` are bytes per pixel.
template <class Call, class Fill>
void expectVectorMatchesScalar(int srcPix, int dstPix, int padUnit, Fill fillSrc, Call call)
{
    std::mt19937 rng(12345);
    for (const Geometry& g : standardSweep(padUnit)) {
        SCOPED_TRACE(g.str());
        GuardedImage src = makeImage(g.width, g.height, srcPix, g.srcPad, g.negative, g.endSlack);
        GuardedImage dv = makeImage(g.width, g.height, dstPix, g.dstPad, g.negative, g.endSlack);
        GuardedImage ds = makeImage(g.width, g.height, dstPix, g.dstPad, g.negative, g.endSlack);
        fillSrc(src, rng);
        const RoiSize roi{g.width, g.height};
        const OrvStatus sv = call(src, dv, roi);
        OrvStatus ss;
        {
            ScalarBlocks scalar;
            ss = call(src, ds, roi);
        }
        ASSERT_EQ(sv, ss);
        ASSERT_TRUE(dv.guardsIntact());
        ASSERT_TRUE(ds.guardsIntact());
        ASSERT_TRUE(src.guardsIntact());
        ASSERT_EQ(dv.pixels(), ds.pixels());
    }
}

}  // namespace orvtest
