// Video frames of 8-bit luma and chroma for the tests, in guarded memory:
// planar (three planes), semi-planar (luma and a plane of chroma pairs) and
// packed 4:2:2, each sample reachable by its position, so that a test can
// state a conversion's rule sample by sample, independently of the library's
// own layout code.
#pragma once

#include <functional>
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

using VideoCall = std::function<OrvStatus(VideoFrame&, VideoFrame&, RoiSize)>;

// The vector run into dv and the scalar-block run into ds (both holding the
// same bytes before) return `want` and leave the bytes of `expected`;
// nothing is written outside the frames.
inline void expectConversion(const VideoCall& call, VideoFrame& src, VideoFrame& dv, VideoFrame& ds,
                             const VideoFrame& expected, RoiSize roi, OrvStatus want)
{
    ASSERT_EQ(call(src, dv, roi), want);
    {
        ScalarBlocks scalar;
        ASSERT_EQ(call(src, ds, roi), want);
    }
    ASSERT_TRUE(src.guardsIntact());
    ASSERT_TRUE(dv.guardsIntact());
    ASSERT_TRUE(ds.guardsIntact());
    ASSERT_EQ(dv.pixels(), expected.pixels());
    ASSERT_EQ(ds.pixels(), expected.pixels());
}

// A call on 8x8 frames of random bytes, after `fault` has spoilt an
// argument, returns `want` and writes nothing.
inline void expectFault(const VideoCall& call, const VideoFormat& sf, const VideoFormat& df,
                        const std::function<void(VideoFrame&, VideoFrame&)>& fault, RoiSize roi, OrvStatus want)
{
    std::mt19937 rng(roi.width * 31 + roi.height);
    VideoFrame s(sf, 8, 8), d(df, 8, 8);
    s.fill(rng);
    d.fill(rng);
    const auto before = d.pixels();
    fault(s, d);
    EXPECT_EQ(call(s, d, roi), want) << roi.width << "x" << roi.height;
    EXPECT_EQ(d.pixels(), before);
}

// Every plane pointer of both sides nulled in turn, and with `arrays` the
// plane and step arrays of planar sides: a null pointer wins over a bad `roi`.
inline void expectNullsBeforeSizes(const VideoCall& call, const VideoFormat& sf, const VideoFormat& df, RoiSize roi,
                                   bool arrays)
{
    for (int side = 0; side < 2; ++side) {
        const Lay lay = side ? df.lay : sf.lay;
        const int planes = lay == Lay::P3 ? 3 : lay == Lay::P2 ? 2 : 1;
        for (int k = 0; k < planes; ++k)
            expectFault(call, sf, df, [&](VideoFrame& s, VideoFrame& d) { (side ? d : s).nullPlane(k); }, roi,
                        orvStatusNullPointer);
        if (arrays && lay == Lay::P3)
            for (int a = 0; a < 2; ++a)
                expectFault(call, sf, df,
                            [&](VideoFrame& s, VideoFrame& d) { (side ? d : s).nullArrays(a == 0, a == 1); }, roi,
                            orvStatusNullPointer);
    }
}

}  // namespace orvtest
