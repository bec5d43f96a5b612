// Writes a minimal DNG: one 16-bit RGGB mosaic with its CFA tags, so the
// tool's camera raw path can be tested on a file made here; and the same
// mosaic as bare little-endian samples in OUT.dng.raw.
//   make_dng OUT.dng WIDTH HEIGHT
#include <tiffio.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <cstdlib>
#include <vector>

int main(int argc, char** argv)
{
    if (argc != 4)
        return 2;
    const uint32_t w = uint32_t(std::atoi(argv[2])), h = uint32_t(std::atoi(argv[3]));
    TIFF* t = TIFFOpen(argv[1], "w");
    if (!t)
        return 1;
    const uint8_t version[4] = {1, 4, 0, 0};
    const uint16_t repeat[2] = {2, 2};
    const uint8_t pattern[4] = {0, 1, 1, 2};  // R G / G B
    const float matrix[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    const float neutral[3] = {1, 1, 1};
    TIFFSetField(t, TIFFTAG_SUBFILETYPE, 0);
    TIFFSetField(t, TIFFTAG_IMAGEWIDTH, w);
    TIFFSetField(t, TIFFTAG_IMAGELENGTH, h);
    TIFFSetField(t, TIFFTAG_BITSPERSAMPLE, 16);
    TIFFSetField(t, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(t, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    TIFFSetField(t, TIFFTAG_PHOTOMETRIC, 32803);  // colour filter array
    TIFFSetField(t, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(t, TIFFTAG_ROWSPERSTRIP, h);
    TIFFSetField(t, TIFFTAG_MAKE, "orvcc");
    TIFFSetField(t, TIFFTAG_MODEL, "test mosaic");
    TIFFSetField(t, TIFFTAG_CFAREPEATPATTERNDIM, repeat);
    TIFFSetField(t, TIFFTAG_CFAPATTERN, 4, pattern);
    TIFFSetField(t, TIFFTAG_DNGVERSION, version);
    TIFFSetField(t, TIFFTAG_DNGBACKWARDVERSION, version);
    TIFFSetField(t, TIFFTAG_UNIQUECAMERAMODEL, "orvcc test mosaic");
    TIFFSetField(t, TIFFTAG_COLORMATRIX1, 9, matrix);
    TIFFSetField(t, TIFFTAG_ASSHOTNEUTRAL, 3, neutral);
    FILE* bare = std::fopen((std::string(argv[1]) + ".raw").c_str(), "wb");
    if (!bare)
        return 1;
    std::vector<uint16_t> row(w);
    for (uint32_t y = 0; y < h; ++y) {
        for (uint32_t x = 0; x < w; ++x)
            row[x] = uint16_t((x * 997 + y * 131) % 4096 * 16);
        if (TIFFWriteScanline(t, row.data(), y, 0) < 0)
            return 1;
        std::fwrite(row.data(), 2, w, bare);
    }
    std::fclose(bare);
    TIFFClose(t);
    return 0;
}
