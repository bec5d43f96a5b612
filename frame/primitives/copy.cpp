// Copies and fills of blocks and rectangles.
//
// Large blocks that would push the working set out of the cache are written
// with streaming stores; everything else with ordinary 32-byte stores. The
// thresholds (and the cache query that backs them) are part of how these
// functions behave, the bytes written are always those of a plain copy.
#include <immintrin.h>

#include <cstring>

#include "frame/driver.h"
#include "frame/primitives/primitives.h"

namespace h9 {
namespace {

using Byte = Orv8u;

inline __m256i load32(const Byte* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
inline void store32(Byte* p, __m256i v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
inline void store32a(Byte* p, __m256i v) { _mm256_store_si256(reinterpret_cast<__m256i*>(p), v); }
inline void stream32(Byte* p, __m256i v) { _mm256_stream_si256(reinterpret_cast<__m256i*>(p), v); }

inline uintptr_t addr(const void* p) { return reinterpret_cast<uintptr_t>(p); }

// Bytes from p up to the next multiple of `align` (0 when p is aligned).
inline std::size_t toAlign(const void* p, std::size_t align) { return (align - addr(p) % align) % align; }

// (dst & 0xFFF) - (src & 0xFFF) as a 32-bit unsigned number: below 160 the
// destination trails the source closely in the 4 KiB page and a forward
// copy would stall on false store-to-load aliasing.
inline uint32_t pageDistance(const void* src, const void* dst)
{
    return uint32_t(addr(dst) & 0xFFF) - uint32_t(addr(src) & 0xFFF);
}

// Cache size when the query succeeds with a positive size, else -1.
inline int64_t cacheBytes(CacheQuery cache)
{
    int32_t size = 0;
    if (cache(&size) != 0)
        return -1;
    return size;
}

inline int bitLength(uint32_t v)
{
    int n = 0;
    for (; v; v >>= 1)
        ++n;
    return n;
}

// Copy of one row of any length with unaligned stores.
inline void copyRow(const Byte* s, Byte* d, std::size_t n) { ownsCopy_8u_G9(s, d, n); }

// Copy of one row with streaming stores in the 32-byte aligned middle; the
// unaligned head and tail go by ordinary (overlapping) stores.
void copyRowStreamed(const Byte* s, Byte* d, std::size_t n)
{
    if (n < 64) {
        copyRow(s, d, n);
        return;
    }
    const std::size_t head = toAlign(d, 32);
    store32(d, load32(s));
    std::size_t i = head;
    for (; i + 32 <= n; i += 32)
        stream32(d + i, load32(s + i));
    if (i < n)
        store32(d + n - 32, load32(s + n - 32));
}

}  // namespace

// ---- blocks -------------------------------------------------------------------

void ownsCopy_8u_G9(const Byte* s, Byte* d, std::size_t n)
{
    if (n >= 32) {
        std::size_t i = 0;
        for (; i + 128 <= n; i += 128) {
            const __m256i a = load32(s + i), b = load32(s + i + 32), c = load32(s + i + 64), e = load32(s + i + 96);
            store32(d + i, a);
            store32(d + i + 32, b);
            store32(d + i + 64, c);
            store32(d + i + 96, e);
        }
        for (; i + 32 <= n; i += 32)
            store32(d + i, load32(s + i));
        if (i < n)  // the last 32 bytes again, overlapping what is done
            store32(d + n - 32, load32(s + n - 32));
        return;
    }
    if (n >= 16) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + n - 16));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d), a);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + n - 16), b);
    } else if (n >= 8) {
        uint64_t a, b;
        std::memcpy(&a, s, 8);
        std::memcpy(&b, s + n - 8, 8);
        std::memcpy(d, &a, 8);
        std::memcpy(d + n - 8, &b, 8);
    } else if (n >= 4) {
        uint32_t a, b;
        std::memcpy(&a, s, 4);
        std::memcpy(&b, s + n - 4, 4);
        std::memcpy(d, &a, 4);
        std::memcpy(d + n - 4, &b, 4);
    } else {
        for (std::size_t i = 0; i < n; ++i)
            d[i] = s[i];
    }
}

void ownsCopy_8u_repG9(const Byte* s, Byte* d, std::size_t n)
{
    asm volatile("rep movsb" : "+D"(d), "+S"(s), "+c"(n) : : "memory");
}

void ownsCopy_8u_inv(const Byte* s, Byte* d, std::size_t n)
{
    std::size_t i = n;
    for (; i >= 128; i -= 128) {
        const __m256i a = load32(s + i - 32), b = load32(s + i - 64), c = load32(s + i - 96), e = load32(s + i - 128);
        store32a(d + i - 32, a);
        store32a(d + i - 64, b);
        store32a(d + i - 96, c);
        store32a(d + i - 128, e);
    }
    if (i >= 64) {
        const __m256i a = load32(s + i - 32), b = load32(s + i - 64);
        store32a(d + i - 32, a);
        store32a(d + i - 64, b);
    }
}

void ownsCopy_8u_nt(const Byte* s, Byte* d, std::size_t n)
{
    for (std::size_t i = 0; i < n; i += 64) {
        const __m256i a = load32(s + i), b = load32(s + i + 32);
        stream32(d + i, a);
        stream32(d + i + 32, b);
    }
}

void blockCopyStreamed(const Byte* s, Byte* d, std::size_t n)
{
    std::size_t head = toAlign(d, 64);
    if (head > n)
        head = n;
    ownsCopy_8u_G9(s, d, head);
    const std::size_t middle = (n - head) & ~std::size_t(63);
    ownsCopy_8u_nt(s + head, d + head, middle);
    ownsCopy_8u_G9(s + head + middle, d + head + middle, n - head - middle);
    _mm_sfence();
}

void blockCopyBackward(const Byte* s, Byte* d, std::size_t n)
{
    std::size_t head = toAlign(d, 64);
    if (head > n)
        head = n;
    const std::size_t middle = (n - head) & ~std::size_t(63);
    ownsCopy_8u_G9(s + head + middle, d + head + middle, n - head - middle);
    ownsCopy_8u_inv(s + head, d + head, middle);
    ownsCopy_8u_G9(s, d, head);
}

BlockCopyPath chooseBlockCopy(const Byte* src, const Byte* dst, std::size_t n, CacheQuery cache)
{
    if (n > 0x400000) {
        const int64_t c = cacheBytes(cache);
        if (c >= 0 && uint64_t(n) >= uint64_t(c) / 2)
            return BlockCopyPath::Stream;
    }
    if (pageDistance(src, dst) >= 160)
        return BlockCopyPath::Rep;
    return BlockCopyPath::Inverse;
}

void ownsCopy_8u(const Byte* src, Byte* dst, std::size_t n, CacheQuery cache)
{
    switch (chooseBlockCopy(src, dst, n, cache)) {
    case BlockCopyPath::Stream: blockCopyStreamed(src, dst, n); break;
    case BlockCopyPath::Rep: ownsCopy_8u_repG9(src, dst, n); break;
    case BlockCopyPath::Inverse: blockCopyBackward(src, dst, n); break;
    }
}

// ---- rectangles ---------------------------------------------------------------

RectCopyPath chooseRectCopy(const Byte* src, int srcStep, const Byte* dst, int dstStep, int width, int height,
                            CacheQuery cache)
{
    const uint64_t area = uint64_t(uint32_t(width)) * uint32_t(height);
    if (area < (uint64_t(1) << 31) && srcStep == width && dstStep == width)
        return RectCopyPath::Block;
    if (width < 512)
        return RectCopyPath::Thin;
    bool stream = area > (uint64_t(1) << 31);
    if (!stream && area > 0x300000) {
        const int64_t c = cacheBytes(cache);
        stream = c >= 0 && area >= uint64_t(c) / 2;
    }
    if (stream) {
        if (addr(dst) % 64 == 0 && dstStep % 64 == 0 && width % 32 == 0)
            return RectCopyPath::Stream;
        return RectCopyPath::StreamFull;
    }
    if (addr(dst) % 32 == 0 && dstStep % 32 == 0 && width % 32 == 0) {
        if (srcStep == dstStep && pageDistance(src, dst) < 160)
            return RectCopyPath::Inverse;
        return RectCopyPath::Forward;
    }
    return RectCopyPath::ForwardFull;
}

void owniCopy_8u_thin(const Byte* s, int srcStep, Byte* d, int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y, s += srcStep, d += dstStep)
        copyRow(s, d, std::size_t(width));
}

void owniCopy_8u_strm(const Byte* s, int srcStep, Byte* d, int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y, s += srcStep, d += dstStep)
        for (int i = 0; i < width; i += 32)
            stream32(d + i, load32(s + i));
    _mm_sfence();
}

void owniCopy_8u_strmfull(const Byte* s, int srcStep, Byte* d, int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y, s += srcStep, d += dstStep)
        copyRowStreamed(s, d, std::size_t(width));
    _mm_sfence();
}

void owniCopy_8u_inv(const Byte* s, int srcStep, Byte* d, int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y, s += srcStep, d += dstStep)
        for (int i = width - 32; i >= 0; i -= 32)
            store32a(d + i, load32(s + i));
}

void owniCopy_8u_fwd(const Byte* s, int srcStep, Byte* d, int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y, s += srcStep, d += dstStep)
        for (int i = 0; i < width; i += 32)
            store32a(d + i, load32(s + i));
}

void owniCopy_8u_fwdfull(const Byte* s, int srcStep, Byte* d, int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y, s += srcStep, d += dstStep)
        copyRow(s, d, std::size_t(width));
}

void owniCopy8uas(const Byte* src, int srcStep, Byte* dst, int dstStep, int width, int height, CacheQuery cache)
{
    switch (chooseRectCopy(src, srcStep, dst, dstStep, width, height, cache)) {
    case RectCopyPath::Block: {
        const std::size_t n = std::size_t(width) * std::size_t(height);
        if (n >= 32768)
            ownsCopy_8u(src, dst, n, cache);
        else
            ownsCopy_8u_G9(src, dst, n);
        break;
    }
    case RectCopyPath::Thin: owniCopy_8u_thin(src, srcStep, dst, dstStep, width, height); break;
    case RectCopyPath::Stream: owniCopy_8u_strm(src, srcStep, dst, dstStep, width, height); break;
    case RectCopyPath::StreamFull: owniCopy_8u_strmfull(src, srcStep, dst, dstStep, width, height); break;
    case RectCopyPath::Inverse: owniCopy_8u_inv(src, srcStep, dst, dstStep, width, height); break;
    case RectCopyPath::Forward: owniCopy_8u_fwd(src, srcStep, dst, dstStep, width, height); break;
    case RectCopyPath::ForwardFull: owniCopy_8u_fwdfull(src, srcStep, dst, dstStep, width, height); break;
    }
}

OrvStatus orviCopy_8u_C1R(const Orv8u* src, int srcStep, Orv8u* dst, int dstStep, RoiSize roi)
{
    if (!src || !dst)
        return orvStatusNullPointer;
    if (roi.width < 1 || roi.height < 1)
        return orvStatusBadSize;
    owniCopy8uas(src, srcStep, dst, dstStep, roi.width, roi.height);
    return orvStatusOk;
}

OrvStatus orviCopy_8u_C1R_L(const Orv8u* src, int srcStep, Orv8u* dst, int dstStep, RoiSize roi)
{
    if (!src || !dst)
        return orvStatusNullPointer;
    if (roi.width < 1 || roi.height < 1)
        return orvStatusBadSize;
    constexpr int kPiece = 1 << 30;
    OrvStatus st = orvStatusOk;
    for (int y = 0; y < roi.height; ++y) {
        const Orv8u* s = src + std::ptrdiff_t(y) * srcStep;
        Orv8u* d = dst + std::ptrdiff_t(y) * dstStep;
        for (int done = 0; done < roi.width;) {
            const int n = roi.width - done > kPiece ? kPiece : roi.width - done;
            st = orvsCopy_8u(s + done, d + done, n);
            done += n;
        }
    }
    return st;
}

// ---- signal copies ------------------------------------------------------------

OrvStatus orvsCopy_8u(const Orv8u* src, Orv8u* dst, int length)
{
    if (!src || !dst)
        return orvStatusNullPointer;
    if (length < 1)
        return orvStatusBadSize;
    if (length >= 32768)
        ownsCopy_8u(src, dst, std::size_t(length));
    else
        ownsCopy_8u_G9(src, dst, std::size_t(length));
    return orvStatusOk;
}

namespace {
// 32-bit elements as bytes; lengths whose byte count would not fit an int
// go in pieces of 0x1FFFFFF8 elements.
OrvStatus copyWords(const void* src, void* dst, int length)
{
    if (!src || !dst)
        return orvStatusNullPointer;
    if (length < 1)
        return orvStatusBadSize;
    const Orv8u* s = static_cast<const Orv8u*>(src);
    Orv8u* d = static_cast<Orv8u*>(dst);
    if (length <= 0x1FFFFFFF)
        return orvsCopy_8u(s, d, length * 4);
    constexpr int kPiece = 0x1FFFFFF8;
    OrvStatus st = orvStatusOk;
    for (int done = 0; done < length;) {
        const int n = length - done > kPiece ? kPiece : length - done;
        st = orvsCopy_8u(s + std::size_t(done) * 4, d + std::size_t(done) * 4, n * 4);
        done += n;
    }
    return st;
}
}  // namespace

OrvStatus orvsCopy_32s(const Orv32s* src, Orv32s* dst, int length) { return copyWords(src, dst, length); }
OrvStatus orvsCopy_32f(const Orv32f* src, Orv32f* dst, int length) { return copyWords(src, dst, length); }

// ---- fills --------------------------------------------------------------------

void ownsSet_32s_G9(int32_t value, int32_t* dst, std::size_t n)
{
    const __m256i v = _mm256_set1_epi32(value);
    std::size_t i = 0;
    for (; i + 8 <= n; i += 8)
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + i), v);
    for (; i < n; ++i)
        std::memcpy(dst + i, &value, 4);
}

void setWordsStreamed(int32_t value, int32_t* dst, std::size_t n)
{
    std::size_t i = 0;
    while (i < n && addr(dst + i) % 64 != 0)
        dst[i++] = value;
    const __m256i v = _mm256_set1_epi32(value);
    for (; i + 32 <= n; i += 32) {  // 128 bytes a step
        Byte* p = reinterpret_cast<Byte*>(dst + i);
        stream32(p, v);
        stream32(p + 32, v);
        stream32(p + 64, v);
        stream32(p + 96, v);
    }
    for (; i < n; ++i)
        dst[i] = value;
    _mm_sfence();
}

SetWordsPath chooseSetWords(const void* dst, std::size_t words, CacheQuery cache)
{
    const uint64_t bytes = uint64_t(words) * 4;
    if (bytes > 0x200000 && addr(dst) % 4 == 0) {
        const int64_t c = cacheBytes(cache);
        if (c > 0 && uint64_t(c) < bytes)
            return SetWordsPath::Stream;
    }
    return SetWordsPath::Plain;
}

void ownsSet_32s(int32_t value, int32_t* dst, std::size_t n, CacheQuery cache)
{
    if (chooseSetWords(dst, n, cache) == SetWordsPath::Stream)
        setWordsStreamed(value, dst, n);
    else
        ownsSet_32s_G9(value, dst, n);
}

OrvStatus orvsSet_32f(Orv32f value, Orv32f* dst, int length)
{
    if (!dst)
        return orvStatusNullPointer;
    if (length < 1)
        return orvStatusBadSize;
    int32_t bits;
    std::memcpy(&bits, &value, 4);
    int32_t* d = reinterpret_cast<int32_t*>(dst);
    if (uint64_t(length) * 4 > 0x200000)
        ownsSet_32s(bits, d, std::size_t(length));
    else
        ownsSet_32s_G9(bits, d, std::size_t(length));
    return orvStatusOk;
}

void setRowsStreamed(Orv8u value, Orv8u* dst, std::ptrdiff_t dstStep, std::size_t rowBytes, int height)
{
    const __m256i v = _mm256_set1_epi8(char(value));
    for (int y = 0; y < height; ++y, dst += dstStep) {
        if (rowBytes < 64) {
            std::memset(dst, value, rowBytes);
            continue;
        }
        store32(dst, v);
        std::size_t i = toAlign(dst, 32);
        for (; i + 32 <= rowBytes; i += 32)
            stream32(dst + i, v);
        if (i < rowBytes)
            store32(dst + rowBytes - 32, v);
    }
    _mm_sfence();
}

void setRowsAligned(Orv8u value, Orv8u* dst, std::ptrdiff_t dstStep, std::size_t rowBytes, int height)
{
    const __m256i v = _mm256_set1_epi8(char(value));
    for (int y = 0; y < height; ++y, dst += dstStep) {
        if (rowBytes < 64) {
            std::memset(dst, value, rowBytes);
            continue;
        }
        store32(dst, v);  // head up to the next 64-byte boundary
        store32(dst + 32, v);
        std::size_t i = toAlign(dst, 64);
        for (; i + 64 <= rowBytes; i += 64) {
            store32a(dst + i, v);
            store32a(dst + i + 32, v);
        }
        if (i < rowBytes) {
            store32(dst + rowBytes - 64, v);
            store32(dst + rowBytes - 32, v);
        }
    }
}

SetRectPath chooseSetRect(int width, int height, int dstStep, CacheQuery cache)
{
    if (bitLength(uint32_t(width)) + bitLength(uint32_t(height)) >= 32)
        return SetRectPath::Stream;
    const uint64_t area = uint64_t(uint32_t(width)) * uint32_t(height);
    if (area > 0x600000) {
        const int64_t c = cacheBytes(cache);
        if (c >= 0 && area >= uint64_t(c))
            return SetRectPath::Stream;
    }
    return SetRectPath::Aligned;
}

void owniSet_8u_C1R(Orv8u value, Orv8u* dst, int dstStep, int width, int height, CacheQuery cache)
{
    // A rectangle without padding is one row of width * height bytes.
    std::size_t rowBytes = std::size_t(width);
    int rows = height;
    if (dstStep == width) {
        rowBytes = std::size_t(width) * std::size_t(height);
        rows = 1;
    }
    if (chooseSetRect(width, height, dstStep, cache) == SetRectPath::Stream)
        setRowsStreamed(value, dst, dstStep, rowBytes, rows);
    else
        setRowsAligned(value, dst, dstStep, rowBytes, rows);
}

OrvStatus orviSet_8u_C1R(Orv8u value, Orv8u* dst, int dstStep, RoiSize roi)
{
    if (!dst)
        return orvStatusNullPointer;
    if (roi.width < 1 || roi.height < 1)
        return orvStatusBadSize;
    owniSet_8u_C1R(value, dst, dstStep, roi.width, roi.height);
    return orvStatusOk;
}

// ---- row copy of the chroma conversions -----------------------------------------

void ownccCopy_8u_C1_W7(const Orv8u* s, Orv8u* d, int length, int stream)
{
    if (length < 64) {
        copyRow(s, d, std::size_t(length > 0 ? length : 0));
        return;
    }
    const std::size_t n = std::size_t(length);
    if (!stream) {
        // Rows that stay in the cache: 32-byte stores, 128 bytes a step.
        ownsCopy_8u_G9(s, d, n);
        return;
    }
    // One unaligned 16-byte copy, then on from the first 16-byte boundary.
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm_loadu_si128(reinterpret_cast<const __m128i*>(s)));
    std::size_t i = 16 - addr(d) % 16;
    const uint32_t near = uint32_t(addr(s) - addr(d)) & 0xFFFF;
    const bool nt = stream && !(near >= 65216 && near <= 65520 && near != 0);
    for (; i + 64 <= n; i += 64) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i + 16));
        const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i + 32));
        const __m128i e = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i + 48));
        __m128i* p = reinterpret_cast<__m128i*>(d + i);
        if (nt) {
            _mm_stream_si128(p, a);
            _mm_stream_si128(p + 1, b);
            _mm_stream_si128(p + 2, c);
            _mm_stream_si128(p + 3, e);
        } else {
            _mm_store_si128(p, a);
            _mm_store_si128(p + 1, b);
            _mm_store_si128(p + 2, c);
            _mm_store_si128(p + 3, e);
        }
    }
    if (i < n)  // fewer than 64 bytes left: the last 64 bytes again
        copyRow(s + n - 64, d + n - 64, 64);
    if (nt)
        _mm_sfence();
}

bool streamingPays(long long bytes, bool otherwise)
{
    int32_t cache = 0;
    if (orvGetMaxCacheSizeB(&cache) != 0)
        return streamStores(otherwise);
    return streamStores(bytes > cache);
}

}  // namespace h9
