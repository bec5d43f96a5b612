// The call frame: exported surface, version record, platform services and
// the row drivers' thread handling.
#include <dlfcn.h>
#include <omp.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "frame/driver.h"
#include "support/image.h"

namespace {

std::set<std::string> implementedNames()
{
    static const char* const names[] = {
#define ORV_EXPORT(n) #n,
#include "frame/exports.inc"
#undef ORV_EXPORT
    };
    return std::set<std::string>(std::begin(names), std::end(names));
}

std::set<std::string> dynamicSymbols(const char* lib)
{
    std::set<std::string> out;
    const std::string cmd = std::string("nm -D --defined-only ") + lib;
    FILE* p = popen(cmd.c_str(), "r");
    if (!p)
        return out;
    char line[512];
    while (fgets(line, sizeof line, p)) {
        char addr[64], type[8], name[400];
        if (sscanf(line, "%63s %7s %399s", addr, type, name) == 3)
            out.insert(name);
    }
    pclose(p);
    return out;
}

TEST(Exports, SharedLibraryExportsExactlyTheImplementedNames)
{
    const auto expected = implementedNames();
    const auto actual = dynamicSymbols(ORVCC_SHARED_LIB);
    EXPECT_EQ(actual, expected);
    // Of the library's 433 names, this many are implemented so far.
    std::printf("[ exports  ] %zu of 433 names implemented\n", expected.size());
    EXPECT_LE(expected.size(), 433u);
    for (const auto& n : expected)
        EXPECT_TRUE(n.rfind("orvi", 0) == 0 || n == "orvccGetLibVersion") << n;
}

TEST(Exports, StubsReachTheFrontFunctionsThroughTheSharedLibrary)
{
    void* h = dlopen(ORVCC_SHARED_LIB, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(h, nullptr) << dlerror();
    using VersionFn = const OrvLibVersion* (*)();
    auto ver = reinterpret_cast<VersionFn>(dlsym(h, "orvccGetLibVersion"));
    ASSERT_NE(ver, nullptr);
    EXPECT_EQ(ver()->versionBuild, 58644);
    EXPECT_EQ(ver(), ver());
    // Stubs sit on a 32-byte grid.
    EXPECT_EQ(reinterpret_cast<uintptr_t>(reinterpret_cast<void*>(ver)) % 32, 0u);
    // Internal names are not reachable.
    EXPECT_EQ(dlsym(h, "h9_orvccGetLibVersion"), nullptr);
    using GrayFn = OrvStatus (*)(const Orv8u*, int, Orv8u*, int, RoiSize);
    auto gray = reinterpret_cast<GrayFn>(dlsym(h, "orviRGBToGray_8u_C3C1R"));
    ASSERT_NE(gray, nullptr);
    const Orv8u px[3] = {255, 255, 255};
    Orv8u out = 0;
    EXPECT_EQ(gray(px, 3, &out, 1, RoiSize{1, 1}), orvStatusOk);
    EXPECT_EQ(out, 255);
    EXPECT_EQ(gray(nullptr, 3, &out, 1, RoiSize{1, 1}), orvStatusNullPointer);
    dlclose(h);
}

TEST(Version, RecordAndTexts)
{
    const OrvLibVersion* v = orvccGetLibVersion();
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v, orvccGetLibVersion());
    EXPECT_EQ(v->versionMajor, 2018);
    EXPECT_EQ(v->versionMinor, 0);
    EXPECT_EQ(v->versionUpdate, 3);
    EXPECT_EQ(v->versionBuild, 58644);
    EXPECT_EQ(std::memcmp(v->targetTag, "h9\0\0", 4), 0);
    EXPECT_STREQ(v->libraryName, "orvCC AVX2 (h9 threaded)");
    EXPECT_STREQ(v->buildDate, "Apr  7 2018");
    char text[64];
    std::snprintf(text, sizeof text, "%d.%d.%d (r%d)", v->versionMajor, v->versionMinor, v->versionUpdate,
                  v->versionBuild);
    EXPECT_STREQ(v->versionText, text);
    if (sizeof(void*) == 4) {
        EXPECT_EQ(sizeof(OrvLibVersion), 32u);
    }
}

TEST(Platform, ThreadCountDefaultsToAvailableProcessorsAndFollowsTheHost)
{
    const int def = ownGetNumThreads();
    EXPECT_GE(def, 1);
    orvSetNumThreads(3);
    EXPECT_EQ(ownGetNumThreads(), 3);
    orvSetNumThreads(0);
    EXPECT_EQ(ownGetNumThreads(), def);
    orvSetNumThreads(-4);
    EXPECT_EQ(ownGetNumThreads(), def);
}

TEST(Platform, LargestCacheIsPlausible)
{
    int32_t size = 0;
    ASSERT_EQ(orvGetMaxCacheSizeB(&size), 0);
    EXPECT_GE(size, 32 * 1024);
    EXPECT_LE(size, 1 << 30);
}

// Pattern A: serial up to the threshold, one region above it.
TEST(Drivers, AreaTestedRowsGoParallelOnlyAboveTheThreshold)
{
    orvtest::ThreadCount threads(4);
    for (auto [w, h, parallel] : {std::tuple{64, 64, false}, std::tuple{4097, 1, true}, std::tuple{1, 4097, true},
                                  std::tuple{2048, 2, false}}) {
        std::vector<int> rowThread(h, -1);
        std::atomic<int> inParallel{0};
        h9::rowsAreaTested(w, h, 4096, [&](int y) {
            rowThread[y] = omp_get_thread_num();
            if (omp_in_parallel())
                inParallel = 1;
        });
        EXPECT_EQ(inParallel.load() == 1, parallel) << w << "x" << h;
        EXPECT_TRUE(std::none_of(rowThread.begin(), rowThread.end(), [](int t) { return t < 0; }));
    }
}

// Pattern C: contiguous bands, the last takes the remainder.
TEST(Drivers, BandsCoverEveryRowOnceWithTheRemainderLast)
{
    orvtest::ThreadCount threads(4);
    for (int h : {33, 4, 3, 100}) {
        std::vector<std::pair<int, int>> seen(8, {-1, -1});
        h9::bands(h, 4, h9::EvenBands{h}, [&](int first, int rows) { seen[omp_get_thread_num()] = {first, rows}; });
        std::vector<int> covered(h, 0);
        int bandsSeen = 0;
        for (auto [first, rows] : seen) {
            if (first < 0)
                continue;
            ++bandsSeen;
            for (int y = first; y < first + rows; ++y)
                covered[y]++;
        }
        EXPECT_TRUE(std::all_of(covered.begin(), covered.end(), [](int c) { return c == 1; })) << h;
        if (h == 33 && omp_get_max_threads() >= 1) {
            // 4 threads: 8, 8, 8 and 9 rows when the runtime grants all four.
            int n = 0;
            for (auto [first, rows] : seen)
                n += first >= 0;
            if (n == 4) {
                EXPECT_EQ(seen[3], std::make_pair(24, 9));
            }
        }
    }
}

}  // namespace
