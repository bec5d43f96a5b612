/* Platform services: thread count and cache size. */
#define _GNU_SOURCE
#include "orvcore.h"

#include <sched.h>
#include <unistd.h>
#include <cpuid.h>

/* 0 means "not set by the host": use the processors we may run on. */
static volatile int32_t g_hostThreads = 0;

static int32_t processorsAvailable(void)
{
    cpu_set_t set;
    if (sched_getaffinity(0, sizeof set, &set) == 0) {
        int n = CPU_COUNT(&set);
        if (n > 0)
            return n;
    }
    long n = sysconf(_SC_NPROCESSORS_ONLN);
    return n > 0 ? (int32_t)n : 1;
}

int32_t ownGetNumThreads(void)
{
    int32_t n = __atomic_load_n(&g_hostThreads, __ATOMIC_RELAXED);
    return n >= 1 ? n : processorsAvailable();
}

void orvSetNumThreads(int32_t numThreads)
{
    __atomic_store_n(&g_hostThreads, numThreads >= 1 ? numThreads : 0, __ATOMIC_RELAXED);
}

/* Largest cache from the deterministic cache parameters leaf (CPUID 4):
 * ways * partitions * line size * sets for each level, keeping the largest. */
static int64_t cpuidLargestCache(void)
{
    unsigned a, b, c, d;
    if (__get_cpuid_max(0, 0) < 4)
        return 0;
    int64_t best = 0;
    for (unsigned i = 0; i < 16; ++i) {
        __cpuid_count(4, i, a, b, c, d);
        if ((a & 0x1f) == 0)
            break;
        int64_t ways = ((b >> 22) & 0x3ff) + 1;
        int64_t parts = ((b >> 12) & 0x3ff) + 1;
        int64_t line = (b & 0xfff) + 1;
        int64_t sets = (int64_t)c + 1;
        int64_t size = ways * parts * line * sets;
        if (size > best)
            best = size;
    }
    return best;
}

/* The largest cache in bytes, at most INT32_MAX, or -1 where the platform
 * reports none; 0 until first asked. The query traps to the hypervisor on
 * virtual machines, tens of microseconds a call, and its answer does not
 * change while the process runs: it is asked once. Threads that ask at the
 * same time store the same value. */
static volatile int32_t g_cacheBytes = 0;

static int32_t largestCache(void)
{
    int64_t best = cpuidLargestCache();
#ifdef _SC_LEVEL3_CACHE_SIZE
    if (best <= 0) {
        long l3 = sysconf(_SC_LEVEL3_CACHE_SIZE);
        long l2 = sysconf(_SC_LEVEL2_CACHE_SIZE);
        best = l3 > l2 ? l3 : l2;
    }
#endif
    if (best <= 0)
        return -1;
    return best > INT32_MAX ? INT32_MAX : (int32_t)best;
}

int32_t orvGetMaxCacheSizeB(int32_t* pSizeBytes)
{
    if (!pSizeBytes)
        return -8;
    int32_t best = __atomic_load_n(&g_cacheBytes, __ATOMIC_RELAXED);
    if (best == 0) {
        best = largestCache();
        __atomic_store_n(&g_cacheBytes, best, __ATOMIC_RELAXED);
    }
    if (best < 0)
        return -1;
    *pSizeBytes = best;
    return 0;
}
