#!/usr/bin/env python3
"""Generates the call table through which the Python module and the
command-line tool call the library.

Reads the prototypes of orvcc.h and the list of names the build exports
(the ORV_EXPORT lines of frame/exports.inc and the files it includes), and
writes one C++ file with, for every exported conversion:

  - a thunk that unpacks an argument array into the C call, and
  - a descriptor: the Python-side arguments, one per pointer-and-step pair,
    plane tuple, size or scalar, each with its kind, element type and name.

The callers' marshallers read the descriptors, so a new family
needs no binding code: export it and rebuild.

usage: gen_calltable.py HEADER EXPORTS_INC OUT_CPP
"""
import os
import re
import sys

ELEM = {
    "Orv8u": "u8", "Orv16u": "u16", "Orv16s": "s16", "Orv32u": "u32",
    "Orv32s": "s32", "Orv32f": "f32", "Orv64f": "f64",
}
SCALAR = {
    "int": "i32", "Orv8u": "u8", "Orv16u": "u16", "Orv16s": "s16",
    "Orv32f": "f32", "OrvDitherType": "i32", "OrvBayerGrid": "i32",
}


class Param:
    def __init__(self, text):
        text = " ".join(text.split())
        m = re.match(r"^(.*?)(\w+)\s*((?:\[\d+\])*)$", text)
        if not m:
            raise ValueError("cannot read parameter: " + text)
        self.type = m.group(1).strip()
        self.name = m.group(2)
        self.dims = [int(d) for d in re.findall(r"\[(\d+)\]", m.group(3))]
        base = self.type.replace("const", "").replace("*", "").strip()
        self.base = base
        self.pointer = "*" in self.type
        self.const = self.type.startswith("const")

    def decayed(self):
        """The C type of the parameter after array decay."""
        if not self.dims:
            return self.type
        if len(self.dims) == 1:
            return self.type + "*"
        rest = "".join("[%d]" % d for d in self.dims[1:])
        return "%s (*)%s" % (self.type, rest)


def read_prototypes(header):
    text = open(header).read()
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.S)
    protos = {}
    for name, args in re.findall(r"ORVCC_API\s+OrvStatus\s+(\w+)\s*\((.*?)\);", text, flags=re.S):
        protos[name] = [Param(a) for a in args.split(",")]
    return protos


def read_exports(path, root):
    names = []
    for line in open(path):
        m = re.match(r'\s*#include\s+"([^"]+)"', line)
        if m:
            names += read_exports(os.path.join(root, m.group(1)), root)
            continue
        m = re.match(r"\s*ORV_EXPORT\((\w+)\)", line)
        if m:
            names.append(m.group(1))
    return names


def is_step(p):
    return p.base == "int" and not p.pointer and p.name.lower().endswith("step")


def step_of(params, i):
    """Index of the step that belongs to pointer parameter i, or None: pSrc
    takes srcStep, pSrcY srcYStep, pTmp tmpStep, wherever it stands."""
    p = params[i]
    if not p.name.startswith("p") or len(p.name) < 2:
        return None
    want = p.name[1].lower() + p.name[2:] + "Step"
    for k, q in enumerate(params):
        if q.name == want and is_step(q):
            return k
    return None


def describe(params):
    """Python-side arguments: (kind, elem, count, param, [C parameter slots]).

    kinds: img (pointer + step), planes (tuple + step array), planes1 (tuple +
    one shared step), ptr (pointer alone), tuple (planes alone), roi, rect,
    scalar, vec (fixed array of values, None allowed), outint (returned)."""
    out = []
    taken = set()
    for i, p in enumerate(params):
        if p.pointer and p.base in ELEM:
            k = step_of(params, i)
            if k is not None:
                taken.add(k)
            if not p.dims:
                kind = "img" if k is not None else "ptr"
                out.append((kind, ELEM[p.base], 1, p, [i] + ([k] if k is not None else [])))
            else:
                kind = "tuple" if k is None else ("planes" if params[k].dims else "planes1")
                out.append((kind, ELEM[p.base], p.dims[0], p, [i] + ([k] if k is not None else [])))
        elif i in taken:
            continue
        elif p.base == "int" and p.pointer:
            out.append(("outint", "i32", 1, p, [i]))
        elif p.base == "RoiSize":
            out.append(("roi", "i32", 2, p, [i]))
        elif p.base == "OrvRect":
            out.append(("rect", "i32", 4, p, [i]))
        elif p.dims and p.base in ELEM:
            count = 1
            for d in p.dims:
                count *= d
            out.append(("vec", ELEM[p.base], count, p, [i]))
        elif p.base in SCALAR and not p.pointer and not p.dims:
            out.append(("scalar", SCALAR[p.base], 1, p, [i]))
        else:
            raise ValueError("no Python form for parameter %s %s" % (p.type, p.name))
    # a step that stands before its pointer was skipped only if seen after it
    return [d for d in out if not (d[0] == "scalar" and d[4][0] in taken)]


def thunk_arg(p, slot):
    """How the thunk reads C parameter p from argument slot `slot`."""
    if p.dims and p.pointer:
        return "reinterpret_cast<%s>(a[%d].planes)" % (p.decayed(), slot)
    if p.dims and p.base == "int":
        return "a[%d].steps" % slot
    if p.dims:
        return "reinterpret_cast<%s>(a[%d].p)" % (p.decayed(), slot)
    if p.pointer:
        return "static_cast<%s>(a[%d].p)" % (p.type, slot)
    if p.base == "RoiSize":
        return "a[%d].roi" % slot
    if p.base == "OrvRect":
        return "a[%d].rect" % slot
    if p.base == "Orv32f":
        return "a[%d].f" % slot
    return "static_cast<%s>(a[%d].i)" % (p.type, slot)


def main():
    header, exports, out = sys.argv[1:4]
    root = os.path.dirname(os.path.dirname(os.path.abspath(exports)))
    protos = read_prototypes(header)
    names = [n for n in read_exports(exports, root) if n in protos]
    lines = [
        "// Generated from orvcc.h and the export list; do not edit.",
        '#include "calltable.h"',
        "",
        "namespace orvcall {",
        "namespace {",
    ]
    for n in names:
        args = ", ".join(thunk_arg(p, k) for k, p in enumerate(protos[n]))
        lines.append("OrvStatus t_%s(Slot* a) { return %s(%s); }" % (n, n, args))
    lines += ["", "}  // namespace", "", "const Entry kEntries[] = {"]
    for n in names:
        desc = describe(protos[n])
        parts = []
        for kind, elem, count, p, slots in desc:
            parts.append('{"%s", "%s", %d, %s, "%s", %d, %d}' % (
                kind, elem, count, "true" if p.const or not p.pointer else "false",
                p.name, slots[0], slots[1] if len(slots) > 1 else -1))
        lines.append('    {"%s", t_%s, %d, %d, {%s}},' % (
            n, n, len(protos[n]), len(desc), ", ".join(parts)))
    lines += ["};", "const int kEntryCount = %d;" % len(names), "", "}  // namespace orvcall", ""]
    text = "\n".join(lines)
    if not os.path.exists(out) or open(out).read() != text:
        with open(out, "w") as f:
            f.write(text)


if __name__ == "__main__":
    main()
