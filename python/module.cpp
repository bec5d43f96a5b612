// The extension module _orvcc: a marshaller that turns Python arguments into
// the C arguments of any exported conversion, driven by the generated table
// (calltable.h), plus the library's version record and thread setting.
//
// Arrays stand in for pointer-and-step pairs: the pointer is the array's
// first element, the step its first stride in bytes (negative strides walk up
// through memory, as negative steps do). Elements within a row must be
// contiguous. The interpreter lock is released while the conversion runs.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cctype>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "orvcc.h"
#include "orvcore.h"
#include "calltable.h"

namespace py = pybind11;

namespace orvcall {
namespace {

py::dtype dtypeOf(const std::string& elem)
{
    if (elem == "u8")
        return py::dtype::of<uint8_t>();
    if (elem == "u16")
        return py::dtype::of<uint16_t>();
    if (elem == "s16")
        return py::dtype::of<int16_t>();
    if (elem == "u32")
        return py::dtype::of<uint32_t>();
    if (elem == "s32" || elem == "i32")
        return py::dtype::of<int32_t>();
    if (elem == "f32")
        return py::dtype::of<float>();
    return py::dtype::of<double>();
}

[[noreturn]] void typeError(const std::string& msg) { throw py::type_error(msg); }
[[noreturn]] void valueError(const std::string& msg) { throw py::value_error(msg); }

// The Python name of a C parameter: pSrcY -> src_y, roiSize -> roi_size.
std::string pyName(const char* c)
{
    std::string in = c;
    if (in.size() > 1 && in[0] == 'p' && std::isupper(static_cast<unsigned char>(in[1])))
        in = std::string(1, static_cast<char>(std::tolower(static_cast<unsigned char>(in[1])))) + in.substr(2);
    std::string out;
    for (char ch : in) {
        if (std::isupper(static_cast<unsigned char>(ch))) {
            out += '_';
            out += static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
        } else {
            out += ch;
        }
    }
    return out;
}

std::string where(const Entry& e, const Arg& a) { return std::string(e.name) + ": argument " + pyName(a.name); }

// An array's pointer and row step, after the checks every image argument
// gets: its element type, writability for outputs, contiguous rows.
struct Rows {
    void* data;
    int step;
};

Rows rowsOf(const Entry& e, const Arg& a, const py::handle& obj)
{
    if (!py::isinstance<py::array>(obj))
        typeError(where(e, a) + " must be a numpy array, not " + std::string(py::str(obj.get_type().attr("__name__"))));
    auto arr = py::reinterpret_borrow<py::array>(obj);
    const py::dtype want = dtypeOf(a.elem);
    if (!arr.dtype().is(want) && !arr.dtype().equal(want))
        typeError(where(e, a) + " must have dtype " + std::string(py::str(static_cast<py::handle>(want))) + ", not " +
                  std::string(py::str(static_cast<py::handle>(arr.dtype()))));
    if (!a.input && !arr.writeable())
        valueError(where(e, a) + " is written to but the array is read-only");
    const auto item = static_cast<py::ssize_t>(arr.itemsize());
    const int nd = static_cast<int>(arr.ndim());
    if (nd < 1 || nd > 3)
        valueError(where(e, a) + " must have 1, 2 or 3 dimensions (rows, columns, channels)");
    if (nd >= 2) {
        py::ssize_t inner = item;
        for (int d = nd - 1; d >= 1; --d) {
            if (arr.shape(d) > 1 && arr.strides(d) != inner)
                valueError(where(e, a) + " must have contiguous elements within each row");
            inner *= arr.shape(d);
        }
    } else if (arr.shape(0) > 1 && arr.strides(0) != item) {
        valueError(where(e, a) + " must be contiguous");
    }
    py::ssize_t step = nd >= 2 ? arr.strides(0) : arr.nbytes();
    if (nd >= 2 && arr.shape(0) == 1) {
        // One row: numpy may report any stride; the row's bytes are the step.
        step = arr.nbytes();
    }
    if (step > std::numeric_limits<int>::max() || step < std::numeric_limits<int>::min())
        valueError(where(e, a) + " has a row step that does not fit in 32 bits");
    return {const_cast<void*>(arr.data()), static_cast<int>(step)};
}

std::vector<py::handle> planesOf(const Entry& e, const Arg& a, const py::handle& obj)
{
    if (!py::isinstance<py::tuple>(obj) && !py::isinstance<py::list>(obj))
        typeError(where(e, a) + " must be a tuple of " + std::to_string(a.count) + " arrays");
    auto seq = py::reinterpret_borrow<py::sequence>(obj);
    if (static_cast<int>(py::len(seq)) != a.count)
        valueError(where(e, a) + " must hold " + std::to_string(a.count) + " planes, not " +
                   std::to_string(py::len(seq)));
    std::vector<py::handle> out;
    for (auto item : seq)
        out.push_back(item);
    return out;
}

long long intOf(const Entry& e, const Arg& a, const py::handle& obj, long long lo, long long hi)
{
    if (!py::isinstance<py::int_>(obj) && !py::hasattr(obj, "__index__"))
        typeError(where(e, a) + " must be an integer");
    const long long v = obj.cast<long long>();
    if (v < lo || v > hi)
        valueError(where(e, a) + " is out of range (" + std::to_string(v) + ")");
    return v;
}

// Fills the C arguments from the Python ones; `keep` holds temporaries (value
// arrays) alive until the call returns.
void marshal(const Entry& e, const py::args& args, std::vector<Slot>& slots, std::vector<py::object>& keep,
             int& outSlot)
{
    int given = 0;
    for (int k = 0; k < e.nargs; ++k)
        if (std::strcmp(e.args[k].kind, "outint") != 0)
            ++given;
    if (static_cast<int>(args.size()) != given)
        typeError(std::string(e.name) + " takes " + std::to_string(given) + " arguments (" +
                  std::to_string(args.size()) + " given)");
    int next = 0;
    for (int k = 0; k < e.nargs; ++k) {
        const Arg& a = e.args[k];
        const std::string kind = a.kind;
        Slot& s = slots[a.slot];
        if (kind == "outint") {
            outSlot = a.slot;
            s.p = &s.i;
            continue;
        }
        const py::handle obj = args[next++];
        if (kind == "img" || kind == "ptr") {
            if (obj.is_none()) {  // a null pointer, for the checks' sake
                s.p = nullptr;
                continue;
            }
            const Rows r = rowsOf(e, a, obj);
            s.p = r.data;
            if (a.step >= 0)
                slots[a.step].i = r.step;
        } else if (kind == "planes" || kind == "planes1" || kind == "tuple") {
            const auto planes = planesOf(e, a, obj);
            for (int i = 0; i < a.count; ++i) {
                if (planes[i].is_none()) {
                    s.planes[i] = nullptr;
                    continue;
                }
                const Rows r = rowsOf(e, a, planes[i]);
                s.planes[i] = r.data;
                if (kind == "planes")
                    slots[a.step].steps[i] = r.step;
                else if (kind == "planes1") {
                    if (i > 0 && slots[a.step].i != r.step && planes[0].ptr())
                        valueError(where(e, a) + ": the planes must share one row step (got " +
                                   std::to_string(slots[a.step].i) + " and " + std::to_string(r.step) + ")");
                    slots[a.step].i = r.step;
                }
            }
        } else if (kind == "roi" || kind == "rect") {
            auto seq = py::reinterpret_borrow<py::sequence>(obj);
            if (!py::isinstance<py::sequence>(obj) || static_cast<int>(py::len(seq)) != a.count)
                typeError(where(e, a) + (kind == "roi" ? " must be (width, height)" : " must be (x, y, width, height)"));
            int v[4] = {};
            for (int i = 0; i < a.count; ++i)
                v[i] = static_cast<int>(intOf(e, a, seq[i], std::numeric_limits<int>::min(),
                                              std::numeric_limits<int>::max()));
            if (kind == "roi")
                s.roi = RoiSize{v[0], v[1]};
            else
                s.rect = OrvRect{v[0], v[1], v[2], v[3]};
        } else if (kind == "scalar") {
            const std::string el = a.elem;
            if (el == "f32")
                s.f = obj.cast<float>();
            else if (el == "u8")
                s.i = static_cast<int>(intOf(e, a, obj, 0, 255));
            else if (el == "u16")
                s.i = static_cast<int>(intOf(e, a, obj, 0, 65535));
            else if (el == "s16")
                s.i = static_cast<int>(intOf(e, a, obj, -32768, 32767));
            else
                s.i = static_cast<int>(
                    intOf(e, a, obj, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
        } else if (kind == "vec") {
            if (obj.is_none()) {
                s.p = nullptr;
                continue;
            }
            auto v = py::module_::import("numpy")
                         .attr("ascontiguousarray")(obj, dtypeOf(a.elem))
                         .cast<py::array>();
            if (v.size() != a.count)
                valueError(where(e, a) + " must hold " + std::to_string(a.count) + " values");
            keep.push_back(v);
            s.p = const_cast<void*>(v.data());
        }
    }
}

py::tuple call(int index, const py::args& args)
{
    const Entry& e = kEntries[index];
    std::vector<Slot> slots(e.slots);
    std::vector<py::object> keep;
    int outSlot = -1;
    marshal(e, args, slots, keep, outSlot);
    OrvStatus st;
    {
        py::gil_scoped_release free;
        st = e.thunk(slots.data());
    }
    py::object out = py::none();
    if (outSlot >= 0)
        out = py::int_(slots[outSlot].i);
    return py::make_tuple(st, out);
}

py::list entries()
{
    py::list out;
    for (int i = 0; i < kEntryCount; ++i) {
        const Entry& e = kEntries[i];
        py::list args;
        for (int k = 0; k < e.nargs; ++k) {
            const Arg& a = e.args[k];
            args.append(py::make_tuple(a.kind, a.elem, a.count, a.input, a.name));
        }
        out.append(py::make_tuple(e.name, i, args));
    }
    return out;
}

}  // namespace
}  // namespace orvcall

PYBIND11_MODULE(_orvcc, m)
{
    m.doc() = "Low-level calls into liborvcch9; use the orvcc package.";
    m.def("call", &orvcall::call, "Calls table entry `index` with the Python arguments; returns (status, output).");
    m.def("entries", &orvcall::entries, "The exported conversions: (name, index, [(kind, elem, count, input, name)]).");
    m.def("version", [] {
        const OrvLibVersion* v = orvccGetLibVersion();
        py::dict d;
        d["major"] = v->versionMajor;
        d["minor"] = v->versionMinor;
        d["update"] = v->versionUpdate;
        d["build"] = v->versionBuild;
        d["target"] = std::string(v->targetTag, strnlen(v->targetTag, 4));
        d["name"] = v->libraryName ? v->libraryName : "";
        d["version"] = v->versionText ? v->versionText : "";
        d["date"] = v->buildDate ? v->buildDate : "";
        return d;
    });
    m.def("set_num_threads", [](int n) { orvSetNumThreads(n); });
    m.def("get_num_threads", [] { return ownGetNumThreads(); });
}
