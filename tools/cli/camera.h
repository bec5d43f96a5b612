// Camera raw files (DNG, CR2, NEF and the others LibRaw reads), taken as
// their undemosaiced Bayer mosaic.
#pragma once

#include <string>
#include <vector>

#include "image.h"

namespace orvcli {

// False when the data is not a camera raw file; throws when it is one the
// tool cannot use. On success the mosaic is 16 bits with the black level
// taken off and the white level at 65535, and *grid its Bayer grid code.
// Whether a file name ends like a camera raw file (.dng, .cr2, .nef, ...):
// many of them start like a TIFF and are taken as camera raw by their name.
bool isCameraRawName(const std::string& path);

bool readCameraRaw(const std::vector<uint8_t>& data, const std::string& path, Image* mosaic, int* grid);

}  // namespace orvcli
