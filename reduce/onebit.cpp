// orviReduceBits_8u1u_C1R: bytes to one bit per pixel, by a threshold or by
// Stucki error diffusion in fixed point. Serial.
//
// Pixels go to the destination most significant bit first, the first pixel
// of every row at bit 7 - (dstBitOffset mod 8) of the row's first byte.
// Destination bits outside the rectangle keep their values.
#include <algorithm>

#include "frame/checks.h"
#include "frame/driver.h"
#include "frame/fronts.h"
#include "reduce/reduce.h"

namespace h9::reduce {
namespace {

// Collects the bits of one row and writes whole bytes, merging the partial
// first and last bytes with what is there.
class BitWriter {
public:
    BitWriter(uint8_t* row, int offset) : p_(row), lo_(offset), bit_(offset) {}
    void put(bool one)
    {
        acc_ |= uint8_t(uint8_t(one) << (7 - bit_));
        if (++bit_ == 8)
            flush();
    }
    void finish()
    {
        if (bit_ > lo_)
            flush();
    }

private:
    // Bits lo_ to bit_ - 1 of the current byte belong to the rectangle.
    void flush()
    {
        const uint8_t mask = uint8_t((0xFF >> lo_) & (0xFF << (8 - bit_)));
        *p_ = uint8_t((*p_ & ~mask) | (acc_ & mask));
        ++p_;
        acc_ = 0;
        lo_ = 0;
        bit_ = 0;
    }

    uint8_t* p_;
    int lo_;
    int bit_;
    uint8_t acc_ = 0;
};

void threshold(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, int offset, RoiSize roi, uint8_t t)
{
    for (int y = 0; y < roi.height; ++y) {
        const uint8_t* s = rowAt(src, srcStep, y);
        BitWriter out(rowAt(dst, dstStep, y), offset);
        for (int x = 0; x < roi.width; ++x)
            out.put(s[x] > t);
        out.finish();
    }
}

// Stucki in fixed point: errors in eighths of a gray level, 13 fraction bits
// in the accumulator; 23/1024 of the weight sum 42 passes on a little less
// than the whole error. Three rows of width + 4 entries with two zero
// margins at each end.
void stucki(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, int offset, RoiSize roi, uint8_t t,
            int32_t* rows)
{
    const int w = roi.width, per = w + 4;
    std::fill(rows, rows + 3 * per, 0);
    int32_t* far = rows + 2;
    int32_t* near = rows + 2 + per;
    int32_t* cur = rows + 2 + 2 * per;
    const int32_t limit = int32_t(t) << 13;
    for (int y = 0; y < roi.height; ++y) {
        const uint8_t* s = rowAt(src, srcStep, y);
        BitWriter out(rowAt(dst, dstStep, y), offset);
        for (int x = 0; x < w; ++x) {
            const int32_t sum = far[x - 2] + far[x + 2] + 8 * (near[x] + cur[x - 1]) +
                                4 * (far[x] + near[x - 1] + near[x + 1] + cur[x - 2]) +
                                2 * (far[x - 1] + far[x + 1] + near[x - 2] + near[x + 2]);
            const int32_t acc = (int32_t(s[x]) << 13) + 23 * sum;
            int32_t e = acc >> 10;
            const bool one = acc > limit;
            if (one)
                e -= 2047;
            out.put(one);
            cur[x] = e;
        }
        out.finish();
        int32_t* oldFar = far;
        far = near;
        near = cur;
        cur = oldFar;
    }
}

}  // namespace
}  // namespace h9::reduce

using namespace h9;
using namespace h9::reduce;

ORV_FRONT(orviReduceBits_8u1u_C1R)(const Orv8u* pSrc, int srcStep, Orv8u* pDst, int dstStep, int dstBitOffset,
                                   RoiSize roiSize, int, int, OrvDitherType dtype, Orv8u threshold,
                                   Orv8u* pBuffer)
{
    if (OrvStatus st = checkRect(pSrc, pDst, roiSize))
        return st;
    if (dstBitOffset < 0)
        return orvStatusBadSize;
    const int offset = dstBitOffset & 7;
    if (dtype == orvDitherNone) {
        reduce::threshold(pSrc, srcStep, pDst, dstStep, offset, roiSize, threshold);
        return orvStatusOk;
    }
    if (dtype != orvDitherStucki)
        return orvStatusBadDitherType;
    if (!pBuffer)
        return orvStatusNullPointer;
    reduce::stucki(pSrc, srcStep, pDst, dstStep, offset, roiSize, threshold,
                   reinterpret_cast<int32_t*>(alignedStart(pBuffer)));
    return orvStatusOk;
}
