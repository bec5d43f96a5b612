// Chroma format conversions at 1920x1080, one thread: vector path, scalar
// form, a memcpy moving as many bytes (half of what the conversion reads and
// writes, since a copy both reads and writes its bytes), and libyuv where it
// has the same conversion.
#include <cstring>

#include "bench_util.h"

#ifdef ORVCC_HAVE_LIBYUV
#include <libyuv.h>
#endif

namespace {

using namespace orvbench;

enum class Lay { P3, P2, C2 };
struct Fmt {
    int xs, ys;
    Lay lay;
};
constexpr Fmt k420P3{1, 1, Lay::P3}, k420P2{1, 1, Lay::P2}, k422P3{1, 0, Lay::P3}, k422C2{1, 0, Lay::C2},
    k411P3{2, 0, Lay::P3}, k411P2{2, 0, Lay::P2}, k1620P3{2, 2, Lay::P3};

// A tightly laid frame of random bytes.
struct Frame {
    Frame(Fmt f, uint32_t seed)
    {
        const int cw = kWidth >> f.xs, ch = kHeight >> f.ys;
        auto add = [&](int bytes, int rows) {
            buf.emplace_back(std::size_t(bytes) * rows, seed++);
            step.push_back(bytes);
        };
        if (f.lay == Lay::C2) {
            add(2 * kWidth, kHeight);
        } else {
            add(kWidth, kHeight);
            if (f.lay == Lay::P3) {
                add(cw, ch);
                add(cw, ch);
            } else {
                add(2 * cw, ch);
            }
        }
        for (auto& b : buf) {
            ptr.push_back(b.data());
            bytes += b.size;
        }
    }
    std::vector<orvbench::Buffer> buf;
    std::vector<uint8_t*> ptr;
    std::vector<int> step;
    std::size_t bytes = 0;
};

using Call = std::function<OrvStatus(Frame&, Frame&)>;

#define P3(f) (f).ptr.data(), (f).step.data()
#define P2(f) (f).ptr[0], (f).step[0], (f).ptr[1], (f).step[1]
#define C2(f) (f).ptr[0], (f).step[0]
#define CALL(fn, SK, DK) #fn, [](Frame& s, Frame& d) { return fn(SK(s), DK(d), {kWidth, kHeight}); }

struct Member {
    const char* name;
    Call call;
    Fmt src, dst;
    bool banded = false;  // also measured on all threads
};

// clang-format off
const Member kMembers[] = {
    {CALL(orviYCbCr420_8u_P2P3R, P2, P3), k420P2, k420P3},
    {CALL(orviYCbCr420_8u_P3P2R, P3, P2), k420P3, k420P2},
    {CALL(orviYCbCr420ToYCrCb420_8u_P2P3R, P2, P3), k420P2, k420P3},
    {CALL(orviYCrCb420ToYCbCr420_8u_P3P2R, P3, P2), k420P3, k420P2},
    {CALL(orviYCbCr411_8u_P2P3R, P2, P3), k411P2, k411P3},
    {CALL(orviYCbCr411_8u_P3P2R, P3, P2), k411P3, k411P2},
    {CALL(orviYCbCr422_8u_C2P3R, C2, P3), k422C2, k422P3},
    {CALL(orviYCbCr422_8u_P3C2R, P3, C2), k422P3, k422C2},
    {CALL(orviYCbCr422ToCbYCr422_8u_C2R, C2, C2), k422C2, k422C2},
    {CALL(orviYCbCr422ToCbYCr422_8u_P3C2R, P3, C2), k422P3, k422C2},
    {CALL(orviCbYCr422ToYCbCr422_8u_C2R, C2, C2), k422C2, k422C2},
    {CALL(orviCbYCr422ToYCbCr422_8u_C2P3R, C2, P3), k422C2, k422P3},
    {CALL(orviYCbCr422ToYCrCb422_8u_C2R, C2, C2), k422C2, k422C2},
    {CALL(orviYCbCr422ToYCrCb422_8u_P3C2R, P3, C2), k422P3, k422C2},
    {CALL(orviYCrCb422ToYCbCr422_8u_C2P3R, C2, P3), k422C2, k422P3},
    {CALL(orviYCbCr422ToYCbCr420_8u_P3R, P3, P3), k422P3, k420P3},
    {CALL(orviYCbCr422ToYCbCr420_8u_P3P2R, P3, P2), k422P3, k420P2},
    {CALL(orviYCbCr422ToYCbCr420_8u_C2P3R, C2, P3), k422C2, k420P3},
    {CALL(orviYCbCr422ToYCbCr420_8u_C2P2R, C2, P2), k422C2, k420P2},
    {CALL(orviCbYCr422ToYCbCr420_8u_C2P3R, C2, P3), k422C2, k420P3},
    {CALL(orviCbYCr422ToYCbCr420_8u_C2P2R, C2, P2), k422C2, k420P2},
    {CALL(orviCbYCr422ToYCrCb420_8u_C2P3R, C2, P3), k422C2, k420P3},
    {CALL(orviYCbCr422ToYCrCb420_8u_C2P3R, C2, P3), k422C2, k420P3},
    {CALL(orviYCbCr422ToYCrCb420_8u_C2P2R, C2, P2), k422C2, k420P2},
    {CALL(orviYCrCb422ToYCbCr420_8u_C2P3R, C2, P3), k422C2, k420P3},
    {CALL(orviYCbCr420ToYCbCr422_8u_P3R, P3, P3), k420P3, k422P3},
    {CALL(orviYCbCr420ToYCbCr422_8u_P2P3R, P2, P3), k420P2, k422P3},
    {CALL(orviYCbCr420ToYCbCr422_8u_P2C2R, P2, C2), k420P2, k422C2},
    {CALL(orviYCbCr420ToCbYCr422_8u_P2C2R, P2, C2), k420P2, k422C2},
    {CALL(orviYCrCb420ToYCbCr422_8u_P3R, P3, P3), k420P3, k422P3},
    {CALL(orviYCrCb420ToYCbCr422_8u_P3C2R, P3, C2), k420P3, k422C2},
    {CALL(orviYCrCb420ToCbYCr422_8u_P3C2R, P3, C2), k420P3, k422C2},
    {CALL(orviYCbCr422ToYCbCr411_8u_P3R, P3, P3), k422P3, k411P3},
    {CALL(orviYCbCr422ToYCbCr411_8u_P3P2R, P3, P2), k422P3, k411P2},
    {CALL(orviYCbCr422ToYCbCr411_8u_C2P3R, C2, P3), k422C2, k411P3},
    {CALL(orviYCbCr422ToYCbCr411_8u_C2P2R, C2, P2), k422C2, k411P2},
    {CALL(orviCbYCr422ToYCbCr411_8u_C2P3R, C2, P3), k422C2, k411P3},
    {CALL(orviYCrCb422ToYCbCr411_8u_C2P3R, C2, P3), k422C2, k411P3},
    {CALL(orviYCbCr411ToYCbCr422_8u_P3R, P3, P3), k411P3, k422P3},
    {CALL(orviYCbCr411ToYCbCr422_8u_P3C2R, P3, C2), k411P3, k422C2},
    {CALL(orviYCbCr411ToYCbCr422_8u_P2P3R, P2, P3), k411P2, k422P3},
    {CALL(orviYCbCr411ToYCbCr422_8u_P2C2R, P2, C2), k411P2, k422C2},
    {CALL(orviYCbCr411ToYCrCb422_8u_P3R, P3, P3), k411P3, k422P3},
    {CALL(orviYCbCr411ToYCrCb422_8u_P3C2R, P3, C2), k411P3, k422C2},
    {CALL(orviYCbCr411ToYCbCr420_8u_P3R, P3, P3), k411P3, k420P3},
    {CALL(orviYCbCr411ToYCbCr420_8u_P3P2R, P3, P2), k411P3, k420P2},
    {CALL(orviYCbCr411ToYCbCr420_8u_P2P3R, P2, P3), k411P2, k420P3},
    {CALL(orviYCbCr411ToYCrCb420_8u_P2P3R, P2, P3), k411P2, k420P3},
    {CALL(orviYCbCr420ToYCbCr411_8u_P2P3R, P2, P3), k420P2, k411P3},
    {CALL(orviYCbCr420ToYCbCr411_8u_P3P2R, P3, P2), k420P3, k411P2},
    {CALL(orviYCrCb420ToYCbCr411_8u_P3P2R, P3, P2), k420P3, k411P2},
    {CALL(orviYCbCr420To411_8u_P3R, P3, P3), k420P3, k411P3},
    {CALL(orviYCbCr411To420_8u_P3R, P3, P3), k411P3, k420P3},
    {CALL(orviYCbCr420To1620_8u_P3R, P3, P3), k420P3, k1620P3},
    {CALL(orviYCbCr1620To420_8u_P3R, P3, P3), k1620P3, k420P3},
    // filtered, interlaced and deinterlacing members
    {CALL(orviYCbCr420ToYCbCr422_Filter_8u_P3R, P3, P3), k420P3, k422P3},
    {CALL(orviYCrCb420ToYCbCr422_Filter_8u_P3R, P3, P3), k420P3, k422P3},
    {CALL(orviYCbCr420ToYCbCr422_Filter_8u_P2P3R, P2, P3), k420P2, k422P3},
    {CALL(orviYCbCr420To422_Interlace_8u_P3R, P3, P3), k420P3, k422P3, true},
    {CALL(orviYCbCr420ToCbYCr422_Interlace_8u_P3C2R, P3, C2), k420P3, k422C2, true},
    {CALL(orviYCbCr422To420_Interlace_8u_P3R, P3, P3), k422P3, k420P3, true},
    {CALL(orviCbYCr422ToYCbCr420_Interlace_8u_C2P3R, C2, P3), k422C2, k420P3, true},
    {"orviYCbCr420ToYCrCb420_Filter_8u_P2P3R",
     [](Frame& s, Frame& d) {
         return orviYCbCr420ToYCrCb420_Filter_8u_P2P3R(P2(s), P3(d), {kWidth, kHeight}, 21);
     },
     k420P2, k420P3},
    {"orviYCbCr420ToYCbCr422_Filter_8u_P2C2R",
     [](Frame& s, Frame& d) {
         return orviYCbCr420ToYCbCr422_Filter_8u_P2C2R(P2(s), C2(d), {kWidth, kHeight}, 21);
     },
     k420P2, k422C2},
};
// clang-format on

#ifdef ORVCC_HAVE_LIBYUV
using namespace libyuv;
using Peer = std::function<int(Frame&, Frame&)>;
constexpr int W = kWidth, H = kHeight;
// libyuv functions doing the same work as a member; planes in the member's order.
const std::pair<const char*, Peer> kPeers[] = {
    {"orviYCbCr420_8u_P3P2R", [](Frame& s, Frame& d) { return I420ToNV12(s.ptr[0], s.step[0], s.ptr[1], s.step[1], s.ptr[2], s.step[2], d.ptr[0], d.step[0], d.ptr[1], d.step[1], W, H); }},
    {"orviYCbCr420_8u_P2P3R", [](Frame& s, Frame& d) { return NV12ToI420(s.ptr[0], s.step[0], s.ptr[1], s.step[1], d.ptr[0], d.step[0], d.ptr[1], d.step[1], d.ptr[2], d.step[2], W, H); }},
    {"orviYCbCr422ToYCbCr420_8u_C2P3R", [](Frame& s, Frame& d) { return YUY2ToI420(s.ptr[0], s.step[0], d.ptr[0], d.step[0], d.ptr[1], d.step[1], d.ptr[2], d.step[2], W, H); }},
    {"orviCbYCr422ToYCbCr420_8u_C2P3R", [](Frame& s, Frame& d) { return UYVYToI420(s.ptr[0], s.step[0], d.ptr[0], d.step[0], d.ptr[1], d.step[1], d.ptr[2], d.step[2], W, H); }},
    {"orviYCbCr422ToYCbCr420_8u_C2P2R", [](Frame& s, Frame& d) { return YUY2ToNV12(s.ptr[0], s.step[0], d.ptr[0], d.step[0], d.ptr[1], d.step[1], W, H); }},
    {"orviCbYCr422ToYCbCr420_8u_C2P2R", [](Frame& s, Frame& d) { return UYVYToNV12(s.ptr[0], s.step[0], d.ptr[0], d.step[0], d.ptr[1], d.step[1], W, H); }},
    {"orviYCbCr422ToYCbCr420_8u_P3R", [](Frame& s, Frame& d) { return I422ToI420(s.ptr[0], s.step[0], s.ptr[1], s.step[1], s.ptr[2], s.step[2], d.ptr[0], d.step[0], d.ptr[1], d.step[1], d.ptr[2], d.step[2], W, H); }},
    {"orviYCbCr422ToYCbCr420_8u_P3P2R", [](Frame& s, Frame& d) { return I422ToNV21(s.ptr[0], s.step[0], s.ptr[2], s.step[2], s.ptr[1], s.step[1], d.ptr[0], d.step[0], d.ptr[1], d.step[1], W, H); }},
    {"orviYCrCb420ToYCbCr422_8u_P3C2R", [](Frame& s, Frame& d) { return I420ToYUY2(s.ptr[0], s.step[0], s.ptr[2], s.step[2], s.ptr[1], s.step[1], d.ptr[0], d.step[0], W, H); }},
    {"orviYCrCb420ToCbYCr422_8u_P3C2R", [](Frame& s, Frame& d) { return I420ToUYVY(s.ptr[0], s.step[0], s.ptr[2], s.step[2], s.ptr[1], s.step[1], d.ptr[0], d.step[0], W, H); }},
    {"orviYCbCr422_8u_P3C2R", [](Frame& s, Frame& d) { return I422ToYUY2(s.ptr[0], s.step[0], s.ptr[1], s.step[1], s.ptr[2], s.step[2], d.ptr[0], d.step[0], W, H); }},
    {"orviYCbCr422ToCbYCr422_8u_P3C2R", [](Frame& s, Frame& d) { return I422ToUYVY(s.ptr[0], s.step[0], s.ptr[1], s.step[1], s.ptr[2], s.step[2], d.ptr[0], d.step[0], W, H); }},
    {"orviYCbCr422_8u_C2P3R", [](Frame& s, Frame& d) { return YUY2ToI422(s.ptr[0], s.step[0], d.ptr[0], d.step[0], d.ptr[1], d.step[1], d.ptr[2], d.step[2], W, H); }},
    {"orviCbYCr422ToYCbCr422_8u_C2P3R", [](Frame& s, Frame& d) { return UYVYToI422(s.ptr[0], s.step[0], d.ptr[0], d.step[0], d.ptr[1], d.step[1], d.ptr[2], d.step[2], W, H); }},
};
#endif

void registerMember(const Member& m)
{
    const std::string base = std::string("chroma/") + m.name;
    for (int run = 0; run < (m.banded ? 3 : 2); ++run) {
        const bool scalar = run == 1;
        const char* kind[] = {"/vector", "/scalar", "/vector_all_threads"};
        registerPeer(base + kind[run], [m, scalar, run](benchmark::State& state) {
            Frame s(m.src, 1), d(m.dst, 11);
            orvSetNumThreads(run == 2 ? 0 : 1);
            h9::g_scalarBlocks = scalar;
            if (m.call(s, d) != orvStatusOk)
                state.SkipWithError("the call failed");
            for (auto _ : state) {
                benchmark::DoNotOptimize(m.call(s, d));
                benchmark::ClobberMemory();
            }
            h9::g_scalarBlocks = false;
            orvSetNumThreads(0);
        });
    }
    registerPeer(base + "/memcpy", [m](benchmark::State& state) {
        Frame s(m.src, 1), d(m.dst, 11);
        const std::size_t n = (s.bytes + d.bytes) / 2;
        orvbench::Buffer a(n, 3), b(n, 4);
        for (auto _ : state) {
            std::memcpy(b.data(), a.data(), n);
            benchmark::ClobberMemory();
        }
    });
#ifdef ORVCC_HAVE_LIBYUV
    for (const auto& [name, peer] : kPeers)
        if (std::string(name) == m.name)
            registerPeer(base + "/libyuv", [m, peer = peer](benchmark::State& state) {
                Frame s(m.src, 1), d(m.dst, 11);
                for (auto _ : state) {
                    benchmark::DoNotOptimize(peer(s, d));
                    benchmark::ClobberMemory();
                }
            });
#endif
}

const Registrar registrar([] {
    for (const Member& m : kMembers)
        registerMember(m);
});

}  // namespace
