// The 16-bit gamma tables, evaluated by the compiler from the rule in
// gammatables.h, in quarters (one constant evaluation each).
#include "tone/gammatables.h"

namespace h9 {
namespace {

constexpr int kQuarter = 16384;

template <int Q>
constexpr auto fwdQuarter = gammaEntries<uint16_t, kQuarter>(gammaFwdCurve, 65535, Q * kQuarter);
template <int Q>
constexpr auto invQuarter = gammaEntries<uint16_t, kQuarter>(gammaInvCurve, 65535, Q * kQuarter);

constexpr std::array<uint16_t, 65536> join(const std::array<uint16_t, kQuarter>& a, const std::array<uint16_t, kQuarter>& b,
                                           const std::array<uint16_t, kQuarter>& c, const std::array<uint16_t, kQuarter>& d)
{
    std::array<uint16_t, 65536> t{};
    for (int i = 0; i < kQuarter; ++i) {
        t[i] = a[i];
        t[i + kQuarter] = b[i];
        t[i + 2 * kQuarter] = c[i];
        t[i + 3 * kQuarter] = d[i];
    }
    return t;
}

}  // namespace

constinit const std::array<uint16_t, 65536> tableFwd16u = join(fwdQuarter<0>, fwdQuarter<1>, fwdQuarter<2>, fwdQuarter<3>);
constinit const std::array<uint16_t, 65536> tableInv16u = join(invQuarter<0>, invQuarter<1>, invQuarter<2>, invQuarter<3>);

}  // namespace h9
