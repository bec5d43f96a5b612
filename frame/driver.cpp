#include "frame/driver.h"

namespace h9 {
bool g_scalarBlocks = false;
int g_streamStores = 0;
}
