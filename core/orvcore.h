/*
 * liborvcore: the platform services that liborvcch9 calls.
 *
 *   ownGetNumThreads()      thread count the conversion library may use (>= 1)
 *   orvGetMaxCacheSizeB(p)  size in bytes of the largest processor cache
 *   orvSetNumThreads(n)     host setting: n >= 1 fixes the count, n <= 0
 *                           returns to the default (the processors this
 *                           process may run on)
 *
 * The thread count is read afresh by every threaded call, so a host may change
 * it at any time; calls already running keep the count they started with.
 */
#ifndef ORVCORE_H
#define ORVCORE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define ORVCORE_API __attribute__((visibility("default")))
#else
#define ORVCORE_API
#endif

ORVCORE_API int32_t ownGetNumThreads(void);
ORVCORE_API int32_t orvGetMaxCacheSizeB(int32_t* pSizeBytes);
ORVCORE_API void    orvSetNumThreads(int32_t numThreads);

#ifdef __cplusplus
}
#endif

#endif /* ORVCORE_H */
