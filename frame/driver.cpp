#include "frame/driver.h"

namespace h9 {
bool g_scalarBlocks = false;
}
