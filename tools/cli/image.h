// Images in memory and on disk: PNG (8 and 16 bits), PPM/PGM, TIFF (8, 16
// bits and 32-bit float), with "-" for standard input and output. Outputs
// go to a temporary name beside the target and are renamed only on success.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace orvcli {

enum class Depth { U8, U16, F32 };

int bytesOf(Depth d);
const char* tagOf(Depth d);  // "8u", "16u", "32f"

// Interleaved pixels, rows packed.
struct Image {
    int width = 0;
    int height = 0;
    int channels = 0;  // 1, 3 or 4
    Depth depth = Depth::U8;
    std::vector<uint8_t> pixels;

    Image() = default;
    Image(int w, int h, int c, Depth d) : width(w), height(h), channels(c), depth(d), pixels(size_t(w) * h * c * bytesOf(d)) {}
    int step() const { return width * channels * bytesOf(depth); }
    uint8_t* row(int y) { return pixels.data() + size_t(y) * step(); }
    const uint8_t* row(int y) const { return pixels.data() + size_t(y) * step(); }
    template <class T>
    T* at(int x, int y) { return reinterpret_cast<T*>(row(y)) + size_t(x) * channels; }
};

// All of a file, or of standard input for "-".
std::vector<uint8_t> readAll(const std::string& path);

// Reads a PNG, PPM/PGM or TIFF image, told apart by its first bytes.
Image readImage(const std::string& path);
bool looksLikeImage(const std::vector<uint8_t>& head);

// Writes by the file name's ending (.png, .ppm, .pgm, .pnm, .tif, .tiff); for
// "-" the format is `format` (png when empty).
void writeImage(const Image& img, const std::string& path, const std::string& format = "");

// An output file that appears under its name only when commit() is called:
// written to a temporary name in the same folder, renamed at commit, removed
// if the object dies first. "-" writes to standard output.
class Output {
public:
    explicit Output(const std::string& path);
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    FILE* file() { return f_; }
    const std::string& tempPath() const { return temp_; }
    void write(const void* p, size_t n);
    void close();  // for writers that reopen tempPath() themselves
    void commit();

private:
    std::string path_, temp_;
    FILE* f_ = nullptr;
    bool stdout_ = false;
};

}  // namespace orvcli
