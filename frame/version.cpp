// The version record and its query.
#include "frame/fronts.h"

namespace h9 {
namespace {
const OrvLibVersion ver = {
    2018, 0, 3, 58644,
    {'h', '9', '\0', '\0'},
    "orvCC AVX2 (h9 threaded)",
    "2018.0.3 (r58644)",
    "Apr  7 2018",
};
}  // namespace
}  // namespace h9

extern "C" const OrvLibVersion* h9_orvccGetLibVersion(void) { return &h9::ver; }
