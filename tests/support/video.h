// Video frames of 8-bit luma and chroma for the tests, in guarded memory:
// planar (three planes), semi-planar (luma and a plane of chroma pairs) and
// packed 4:2:2, each sample reachable by its position, so that a test can
// state a conversion's rule sample by sample, independently of the library's
// own layout code.
#pragma once

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "support/image.h"

namespace orvtest {

enum class Lay { P3, P2, C2 };

// Sampling shifts, layout, and the chroma order as the function name writes
// it: "YCbCr", "YCrCb" (planes or pairs Cr first; packed Y0 Cr Y1 Cb) or
// "CbYCr" (packed Cb Y0 Cr Y1).
struct VideoFormat {
    int xs, ys;
    Lay lay;
    std::string order = "YCbCr";
};

class VideoFrame {
public:
    VideoFrame(const VideoFormat& f, int width, int height, int pad = 0, bool negative = false, int slack = 0)
        : f_(f), w_(width), h_(height)
    {
        const int cw = (width + (1 << f.xs) - 1) >> f.xs, ch = (height + (1 << f.ys) - 1) >> f.ys;
        auto add = [&](int bytes, int rows) {
            const int step = bytes + pad;
            img_.push_back(std::make_unique<GuardedImage>(bytes, rows, negative ? -step : step, slack));
        };
        if (f.lay == Lay::C2) {
            add(4 * ((width + 1) / 2), height);
        } else {
            add(width, height);
            if (f.lay == Lay::P3) {
                add(cw, ch);
                add(cw, ch);
            } else {
                add(2 * cw, ch);
            }
        }
        for (auto& i : img_) {
            ptr_.push_back(i->data());
            step_.push_back(i->step());
        }
    }

    // Arguments: plane arrays, or a plane and its step.
    Orv8u** planes() { return nullPlanes_ ? nullptr : ptr_.data(); }
    int* steps() { return nullSteps_ ? nullptr : step_.data(); }
    Orv8u* plane(int k) { return ptr_[k]; }
    int step(int k) const { return step_[k]; }

    uint8_t& y(int x, int r) const
    {
        if (f_.lay == Lay::C2)
            return img_[0]->row(r)[4 * (x / 2) + pos(x % 2 ? "Y1" : "Y0")];
        return img_[0]->row(r)[x];
    }
    // Chroma sample c of chroma row r; which = 0 for Cb, 1 for Cr.
    uint8_t& chroma(int which, int c, int r) const
    {
        const bool crFirst = f_.order == "YCrCb";
        switch (f_.lay) {
        case Lay::P3: return img_[1 + (which ^ crFirst)]->row(r)[c];
        case Lay::P2: return img_[1]->row(r)[2 * c + (which ^ crFirst)];
        default: return img_[0]->row(r)[4 * c + pos(which ? "Cr" : "Cb")];
        }
    }

    void fill(std::mt19937& rng)
    {
        for (auto& i : img_)
            i->fillBytes(rng);
    }
    void copyFrom(const VideoFrame& o)
    {
        for (std::size_t k = 0; k < img_.size(); ++k)
            img_[k]->copyFrom(*o.img_[k]);
    }
    std::vector<uint8_t> pixels() const
    {
        std::vector<uint8_t> v;
        for (auto& i : img_) {
            const auto p = i->pixels();
            v.insert(v.end(), p.begin(), p.end());
        }
        return v;
    }
    bool guardsIntact() const
    {
        for (auto& i : img_)
            if (!i->guardsIntact())
                return false;
        return true;
    }
    const VideoFormat& format() const { return f_; }
    int planeCount() const { return int(img_.size()); }

    // Faults for the argument checks: a null plane, a null plane or step array.
    void nullPlane(int k) { ptr_[k] = nullptr; }
    void nullArrays(bool planes, bool steps)
    {
        nullPlanes_ = planes;
        nullSteps_ = steps;
    }

private:
    // Byte of a packed group, from the order's spelling.
    int pos(const std::string& what) const
    {
        static const char* kYCbCr[] = {"Y0", "Cb", "Y1", "Cr"};
        static const char* kCbYCr[] = {"Cb", "Y0", "Cr", "Y1"};
        static const char* kYCrCb[] = {"Y0", "Cr", "Y1", "Cb"};
        const char** o = f_.order == "CbYCr" ? kCbYCr : f_.order == "YCrCb" ? kYCrCb : kYCbCr;
        for (int k = 0; k < 4; ++k)
            if (what == o[k])
                return k;
        return -1;
    }

    VideoFormat f_;
    int w_, h_;
    std::vector<std::unique_ptr<GuardedImage>> img_;
    std::vector<Orv8u*> ptr_;
    std::vector<int> step_;
    bool nullPlanes_ = false;
    bool nullSteps_ = false;
};

// The sides of a conversion by their arguments.
#define VIDEO_ARGS_P3(f) (f).planes(), (f).steps()
#define VIDEO_ARGS_P2(f) (f).plane(0), (f).step(0), (f).plane(1), (f).step(1)
#define VIDEO_ARGS_C2(f) (f).plane(0), (f).step(0)

}  // namespace orvtest
