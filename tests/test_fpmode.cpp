// The rounding-control calls on the vector unit's control word.
#include <gtest/gtest.h>
#include <immintrin.h>

#include "frame/fpmode.h"

namespace {

class SavedCsr {
public:
    SavedCsr() : word_(_mm_getcsr()) {}
    ~SavedCsr() { _mm_setcsr(word_); }

private:
    uint32_t word_;
};

TEST(FpMode, SetRoundingReturnsTheWholeOldWordAndReplacesOnlyTheField)
{
    SavedCsr saved;
    // Flush-to-zero (bit 15) and a raised inexact flag (bit 5) must survive.
    const uint32_t others = (_mm_getcsr() & ~h9::kRoundingMask) | 0x8000 | 0x20;
    for (uint32_t from : {h9::kRoundNearest, h9::kRoundDown, h9::kRoundUp, h9::kRoundTowardZero}) {
        for (uint32_t to : {h9::kRoundNearest, h9::kRoundTowardZero, h9::kRoundUp}) {
            _mm_setcsr(others | from);
            EXPECT_EQ(h9::orv_set_rc_ssx(to), others | from);
            EXPECT_EQ(_mm_getcsr(), others | to);
        }
    }
}

TEST(FpMode, SetControlWordLoadsTheWholeWordAndRoundingFollowsIt)
{
    SavedCsr saved;
    const uint32_t word = (_mm_getcsr() & ~h9::kRoundingMask) | h9::kRoundTowardZero;
    h9::orv_set_cw_ssx(word);
    EXPECT_EQ(_mm_getcsr(), word);
    volatile float x = 2.75f;
    EXPECT_EQ(_mm_cvtss_si32(_mm_set_ss(x)), 2);
    h9::orv_set_rc_ssx(h9::kRoundNearest);
    EXPECT_EQ(_mm_cvtss_si32(_mm_set_ss(x)), 3);
}

}  // namespace
