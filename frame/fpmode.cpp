// Reads and writes of the MXCSR control word. These stay out of line so that
// the compiler cannot move floating-point work of a caller across them.
#include "frame/fpmode.h"

#include <immintrin.h>

namespace h9 {

uint32_t orv_set_rc_ssx(uint32_t mode)
{
    const uint32_t old = _mm_getcsr();
    if ((old & kRoundingMask) != mode)
        _mm_setcsr((old & ~kRoundingMask) | (mode & kRoundingMask));
    return old;
}

void orv_set_cw_ssx(uint32_t word) { _mm_setcsr(word); }

uint32_t orv_get_rc_ssx() { return _mm_getcsr() & kRoundingMask; }

}  // namespace h9
