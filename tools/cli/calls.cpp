#include "calls.h"

#include <cstring>

namespace orvcli {

const orvcall::Entry* find(const std::string& name)
{
    for (int i = 0; i < orvcall::kEntryCount; ++i)
        if (name == orvcall::kEntries[i].name)
            return &orvcall::kEntries[i];
    return nullptr;
}

std::string firstExported(const std::vector<std::string>& names)
{
    for (const auto& n : names)
        if (find(n))
            return n;
    return "";
}

const char* statusName(OrvStatus st)
{
    switch (st) {
    case orvStatusOk: return "orvStatusOk";
    case orvStatusNothingDone: return "orvStatusNothingDone";
    case orvStatusOddSize: return "orvStatusOddSize";
    case orvStatusBadArgument: return "orvStatusBadArgument";
    case orvStatusBadSize: return "orvStatusBadSize";
    case orvStatusNullPointer: return "orvStatusNullPointer";
    case orvStatusBadContext: return "orvStatusBadContext";
    case orvStatusBadStep: return "orvStatusBadStep";
    case orvStatusBadChannels: return "orvStatusBadChannels";
    case orvStatusBadGammaRange: return "orvStatusBadGammaRange";
    case orvStatusBadLevels: return "orvStatusBadLevels";
    case orvStatusBadNoise: return "orvStatusBadNoise";
    case orvStatusBadDitherType: return "orvStatusBadDitherType";
    default: return "unknown status";
    }
}

OrvStatus call(const std::string& name, const Call& c, int* out)
{
    const orvcall::Entry* e = find(name);
    if (!e)
        throw Failure(kExitFailed, "this build of the library does not export " + name);
    std::vector<orvcall::Slot> slots(e->slots);
    std::vector<std::vector<float>> f32;  // fixed arrays converted to their element type
    std::vector<std::vector<double>> f64;
    f32.reserve(e->nargs);
    f64.reserve(e->nargs);
    size_t nin = 0, nout = 0;
    auto next = [&](bool input) -> const Plane& {
        const auto& list = input ? c.in : c.out;
        size_t& k = input ? nin : nout;
        if (k >= list.size())
            throw Failure(kExitFailed, name + ": internal error, too few " + (input ? "inputs" : "outputs"));
        return list[k++];
    };
    for (int k = 0; k < e->nargs; ++k) {
        const orvcall::Arg& a = e->args[k];
        orvcall::Slot& s = slots[a.slot];
        const std::string kind = a.kind;
        if (kind == "img" || kind == "ptr") {
            const Plane& p = next(a.input);
            s.p = p.data;
            if (a.step >= 0)
                slots[a.step].i = p.step;
        } else if (kind == "planes" || kind == "planes1" || kind == "tuple") {
            for (int i = 0; i < a.count; ++i) {
                const Plane& p = next(a.input);
                s.planes[i] = p.data;
                if (kind == "planes")
                    slots[a.step].steps[i] = p.step;
                else if (kind == "planes1")
                    slots[a.step].i = p.step;
            }
        } else if (kind == "roi") {
            s.roi = c.roi;
        } else if (kind == "rect") {
            s.rect = c.rect;
        } else if (kind == "scalar") {
            auto it = c.values.find(a.name);
            const double v = it == c.values.end() ? 0.0 : it->second;
            if (std::strcmp(a.elem, "f32") == 0)
                s.f = static_cast<float>(v);
            else
                s.i = static_cast<int>(v);
        } else if (kind == "vec") {
            auto it = c.arrays.find(a.name);
            if (it == c.arrays.end()) {
                s.p = nullptr;
            } else if (std::strcmp(a.elem, "f64") == 0) {
                f64.emplace_back(it->second);
                f64.back().resize(a.count);
                s.p = f64.back().data();
            } else {
                f32.emplace_back(it->second.begin(), it->second.end());
                f32.back().resize(a.count);
                s.p = f32.back().data();
            }
        } else if (kind == "outint") {
            s.p = &s.i;
        }
    }
    const OrvStatus st = e->thunk(slots.data());
    if (out)
        for (int k = 0; k < e->nargs; ++k)
            if (std::strcmp(e->args[k].kind, "outint") == 0)
                *out = slots[e->args[k].slot].i;
    return st;
}

OrvStatus callChecked(const std::string& name, const Call& c, int* out)
{
    const OrvStatus st = call(name, c, out);
    if (st < 0)
        throw Failure(kExitFailed, name + " failed: " + statusName(st));
    return st;
}

}  // namespace orvcli
