// The contact sheet: a picture through the library's families, labelled
// tiles in one PNG, because people look at pictures rather than numbers.
#pragma once

#include <string>

namespace orvcli {

int gallery(const std::string& in, const std::string& out);

}  // namespace orvcli
