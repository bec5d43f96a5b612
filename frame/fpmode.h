// The rounding control of the vector unit's control and status word (MXCSR).
//
// The control word belongs to the calling thread. A conversion that needs
// round-to-nearest whatever the caller chose sets it for the length of its
// call with setRoundingSsx and puts the caller's word back with setControlSsx.
#pragma once

#include <cstdint>

namespace h9 {

// Rounding-control field of the control word, bits 13 and 14.
constexpr uint32_t kRoundingMask = 0x6000;
constexpr uint32_t kRoundNearest = 0x0000;
constexpr uint32_t kRoundDown = 0x2000;
constexpr uint32_t kRoundUp = 0x4000;
constexpr uint32_t kRoundTowardZero = 0x6000;

// Returns the whole control word as it was. If its rounding field differs
// from `mode` (given in place, e.g. 0 for nearest), stores the word with the
// field replaced; otherwise stores nothing.
uint32_t orv_set_rc_ssx(uint32_t mode);

// Loads `word` as the whole control word.
void orv_set_cw_ssx(uint32_t word);

// The rounding field of the calling thread's control word.
uint32_t orv_get_rc_ssx();

// Rounding mode `mode` (a value of the rounding field) for the lifetime of
// the object: set on construction if the thread's word differs, and the
// thread's old word restored on destruction only then.
class RoundingAs {
public:
    explicit RoundingAs(uint32_t mode) : mode_(mode), saved_(orv_set_rc_ssx(mode)) {}
    ~RoundingAs()
    {
        if ((saved_ & kRoundingMask) != mode_)
            orv_set_cw_ssx(saved_);
    }
    RoundingAs(const RoundingAs&) = delete;
    RoundingAs& operator=(const RoundingAs&) = delete;

private:
    uint32_t mode_;
    uint32_t saved_;
};

// Round-to-nearest for the lifetime of the object, as the integer colour
// twist needs it.
class NearestRounding : public RoundingAs {
public:
    NearestRounding() : RoundingAs(kRoundNearest) {}
};

}  // namespace h9
