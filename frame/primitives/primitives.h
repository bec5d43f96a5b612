// Internal image and signal primitives: copies, fills, statistics, the
// constant add/subtract of float signals and the 4:2:2 join/split helpers.
// None of these is exported; families call them directly.
//
// Copies and fills choose between ordinary and streaming (non-temporal)
// stores by the size of the block and the size of the largest cache. The
// choice never changes the bytes written, only how they reach memory; every
// streaming path ends with a store fence so the data is visible on return.
//
// Statuses follow the exported functions: null pointers first, then sizes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "orvcc.h"
#include "orvcore.h"

namespace h9 {

// ---- rectangles -------------------------------------------------------------
// Copy of a width x height rectangle of bytes.
OrvStatus orviCopy_8u_C1R(const Orv8u* src, int srcStep, Orv8u* dst, int dstStep, RoiSize roi);
// The same, each row through orvsCopy_8u (rows longer than 2^30 bytes in
// pieces of at most 2^30); returns the status of the last row copy.
OrvStatus orviCopy_8u_C1R_L(const Orv8u* src, int srcStep, Orv8u* dst, int dstStep, RoiSize roi);
// Fill of a rectangle of bytes with `value`.
OrvStatus orviSet_8u_C1R(Orv8u value, Orv8u* dst, int dstStep, RoiSize roi);

// Largest element, running from the first element; a NaN never replaces the
// running value (v > m ? v : m), so a NaN first element stays the result.
OrvStatus orviMax_32f_C1R(const Orv32f* src, int srcStep, RoiSize roi, Orv32f* max);
// Sum in double. Rows of 17 elements or more add element x into running sum
// x % 4; narrower rows add their elements one by one into the first sum; the
// result is (s0 + s1) + (s2 + s3). hint 2 adds everything into one running
// sum in scan order instead.
OrvStatus orviSum_32f_C1R(const Orv32f* src, int srcStep, RoiSize roi, Orv64f* sum, int hint);
// Sum / (width * height) in double.
OrvStatus orviMean_32f_C1R(const Orv32f* src, int srcStep, RoiSize roi, Orv64f* mean, int hint);

// ---- signals ----------------------------------------------------------------
OrvStatus orvsCopy_8u(const Orv8u* src, Orv8u* dst, int length);
OrvStatus orvsCopy_32s(const Orv32s* src, Orv32s* dst, int length);
OrvStatus orvsCopy_32f(const Orv32f* src, Orv32f* dst, int length);
OrvStatus orvsSet_32f(Orv32f value, Orv32f* dst, int length);
// dst[i] = value + src[i]; a value of 0 copies the bit patterns.
OrvStatus orvsAddC_32f(const Orv32f* src, Orv32f value, Orv32f* dst, int length);
// dst[i] = src[i] - value; a value of 0 copies the bit patterns.
OrvStatus orvsSubC_32f(const Orv32f* src, Orv32f value, Orv32f* dst, int length);

// ---- store policy -------------------------------------------------------------
// Whether a conversion that writes `bytes` should use streaming stores. They
// spare the read of each destination line but send it to memory at once,
// which pays only where the destination would not stay in cache anyway: so
// stream a destination larger than the largest cache the platform reports,
// and where it reports none, follow `otherwise` (the family's own size rule).
// Measured at 1920x1080 on one thread, a colour twist 32f C3R (24.9 MB
// written) ran streamed between 0.93 and 1.12 times its time with ordinary
// stores, from run to run (the twist's own rule has the figures); the
// chroma format members that streamed their luma rows ran at 3.5 to 4.6
// times a memcpy of their bytes, the others at about one. The choice never
// changes a byte.
bool streamingPays(long long bytes, bool otherwise);

// ---- helpers of the chroma format conversions ------------------------------
// Row copy; `stream` asks for streaming stores on rows of 64 bytes or more.
void ownccCopy_8u_C1_W7(const Orv8u* src, Orv8u* dst, int length, int stream);
// Planar Y, Cb, Cr (chroma at half width) to packed Y0 Cb Y1 Cr and back,
// width / 2 pixel pairs per row (an odd last column is left alone).
void Join422_8u_W7(const Orv8u* const src[3], const int srcStep[3], Orv8u* dst, int dstStep, int width, int height);
void Split422_8u_W7(const Orv8u* src, int srcStep, Orv8u* const dst[3], const int dstStep[3], int width, int height);

// ---- the paths behind the copies and fills, for the tests -------------------
// The cache-size query; tests pass their own to reach every branch.
using CacheQuery = int32_t (*)(int32_t*);

enum class RectCopyPath { Block, Thin, Stream, StreamFull, Inverse, Forward, ForwardFull };
enum class BlockCopyPath { Stream, Rep, Inverse };
enum class SetWordsPath { Stream, Plain };
enum class SetRectPath { Stream, Aligned };

RectCopyPath chooseRectCopy(const Orv8u* src, int srcStep, const Orv8u* dst, int dstStep, int width, int height,
                            CacheQuery cache = orvGetMaxCacheSizeB);
// For blocks of at least 32768 bytes.
BlockCopyPath chooseBlockCopy(const Orv8u* src, const Orv8u* dst, std::size_t n, CacheQuery cache = orvGetMaxCacheSizeB);
SetWordsPath chooseSetWords(const void* dst, std::size_t words, CacheQuery cache = orvGetMaxCacheSizeB);
SetRectPath chooseSetRect(int width, int height, int dstStep, CacheQuery cache = orvGetMaxCacheSizeB);

// Rectangle copy, dispatching as chooseRectCopy says.
void owniCopy8uas(const Orv8u* src, int srcStep, Orv8u* dst, int dstStep, int width, int height,
                  CacheQuery cache = orvGetMaxCacheSizeB);
void owniCopy_8u_thin(const Orv8u* src, int srcStep, Orv8u* dst, int dstStep, int width, int height);
// dst, dstStep multiples of 64 and width of 32.
void owniCopy_8u_strm(const Orv8u* src, int srcStep, Orv8u* dst, int dstStep, int width, int height);
void owniCopy_8u_strmfull(const Orv8u* src, int srcStep, Orv8u* dst, int dstStep, int width, int height);
// dst, dstStep and width multiples of 32.
void owniCopy_8u_inv(const Orv8u* src, int srcStep, Orv8u* dst, int dstStep, int width, int height);
void owniCopy_8u_fwd(const Orv8u* src, int srcStep, Orv8u* dst, int dstStep, int width, int height);
void owniCopy_8u_fwdfull(const Orv8u* src, int srcStep, Orv8u* dst, int dstStep, int width, int height);

// Block copy of n bytes, dispatching as chooseBlockCopy says.
void ownsCopy_8u(const Orv8u* src, Orv8u* dst, std::size_t n, CacheQuery cache = orvGetMaxCacheSizeB);
void ownsCopy_8u_G9(const Orv8u* src, Orv8u* dst, std::size_t n);
void ownsCopy_8u_repG9(const Orv8u* src, Orv8u* dst, std::size_t n);
// dst 64-byte aligned, n a multiple of 64; copies from the end backward.
void ownsCopy_8u_inv(const Orv8u* src, Orv8u* dst, std::size_t n);
// dst 64-byte aligned, n a multiple of 64; streaming stores, no fence.
void ownsCopy_8u_nt(const Orv8u* src, Orv8u* dst, std::size_t n);
// The two finishing orders of a large block copy (each fenced if streamed).
void blockCopyStreamed(const Orv8u* src, Orv8u* dst, std::size_t n);
void blockCopyBackward(const Orv8u* src, Orv8u* dst, std::size_t n);

// Fill of n 32-bit words.
void ownsSet_32s(int32_t value, int32_t* dst, std::size_t n, CacheQuery cache = orvGetMaxCacheSizeB);
void ownsSet_32s_G9(int32_t value, int32_t* dst, std::size_t n);
void setWordsStreamed(int32_t value, int32_t* dst, std::size_t n);  // dst 4-byte aligned

// Fill of a rectangle.
void owniSet_8u_C1R(Orv8u value, Orv8u* dst, int dstStep, int width, int height, CacheQuery cache = orvGetMaxCacheSizeB);
void setRowsStreamed(Orv8u value, Orv8u* dst, std::ptrdiff_t dstStep, std::size_t rowBytes, int height);
void setRowsAligned(Orv8u value, Orv8u* dst, std::ptrdiff_t dstStep, std::size_t rowBytes, int height);

}  // namespace h9
