"""Every exported conversion, as orvcc.raw.<name>.

The functions are made at import from the library's own call table, so a
family the build exports is here without binding code. Each takes its C
arguments in order, with these replacements:

  pointer and its step    a numpy array: its first element and its first
                          stride (negative strides allowed); rows must be
                          contiguous
  array of planes         a tuple of arrays (a shared step must be shared)
  RoiSize / OrvRect       (width, height) / (x, y, width, height)
  fixed value arrays      any array-like of the right length, or None
  int* result             returned instead of passed

The caller promises that the arrays hold the rectangle the call converts:
this level checks types, writability and row layout, not extents (the
functions of the orvcc package allocate and check for you). A failing status
raises orvcc.Error; orvStatusOddSize and orvStatusNothingDone are warnings.
"""
import inspect
import warnings

from . import _orvcc
from .errors import error_class, warning_class

_KIND_TEXT = {
    "img": "{dtype} array",
    "ptr": "{dtype} array (no step: contiguous)",
    "planes": "tuple of {count} {dtype} arrays",
    "planes1": "tuple of {count} {dtype} arrays sharing one row step",
    "tuple": "tuple of {count} {dtype} arrays",
    "roi": "(width, height)",
    "rect": "(x, y, width, height)",
    "scalar": "{elem}",
    "vec": "{count} values or None",
}
_DTYPES = {"u8": "uint8", "u16": "uint16", "s16": "int16", "u32": "uint32", "s32": "int32",
           "f32": "float32", "f64": "float64", "i32": "int"}


def _pyname(cname):
    """pSrc -> src, pSrcY -> src_y, roiSize -> roi_size."""
    if cname.startswith("p") and len(cname) > 1 and cname[1].isupper():
        cname = cname[1].lower() + cname[2:]
    out = ""
    for ch in cname:
        out += ("_" + ch.lower()) if ch.isupper() else ch
    return out


def _blame(args, status, given):
    """The argument a failing status points at."""
    def names(kinds):
        return ", ".join(_pyname(a[4]) for a in args if a[0] in kinds)
    if status == -8:
        nulls = [_pyname(a[4]) for a, v in given if v is None or
                 (isinstance(v, (tuple, list)) and any(x is None for x in v))]
        return ", ".join(nulls) or names(("img", "ptr", "planes", "planes1", "tuple"))
    if status == -6:
        return names(("roi", "rect"))
    if status == -16:
        return "the row steps of " + names(("img", "planes", "planes1"))
    wanted = {-49: ("vMin", "vMax"), -54: ("levels",), -55: ("noise",), -224: ("dtype",),
              -47: ("channels",)}.get(status)
    if wanted:
        return ", ".join(_pyname(w) for w in wanted)
    scalars = [_pyname(a[4]) for a in args if a[0] == "scalar"]
    return ", ".join(scalars) or None


def _make(name, index, args):
    inputs = [a for a in args if a[0] != "outint"]
    params = [inspect.Parameter(_pyname(a[4]), inspect.Parameter.POSITIONAL_OR_KEYWORD) for a in inputs]
    sig = inspect.Signature(params)
    returns = any(a[0] == "outint" for a in args)

    def fn(*pargs, **kwargs):
        bound = sig.bind(*pargs, **kwargs)
        values = [bound.arguments[p.name] for p in params]
        status, out = _orvcc.call(index, *values)
        if status < 0:
            raise error_class(status)(name, status, _blame(args, status, list(zip(inputs, values))))
        if status > 0:
            warnings.warn("%s: %s" % (name, error_class(0)(name, status).status_name),
                          warning_class(status), stacklevel=2)
        return out if returns else status

    lines = []
    for a in inputs:
        kind, elem, count, is_input, cname = a
        text = _KIND_TEXT[kind].format(count=count, elem=_DTYPES.get(elem, elem), dtype=_DTYPES[elem])
        if kind in ("img", "ptr", "planes", "planes1", "tuple") and not is_input:
            text += ", written"
        lines.append("    %s: %s" % (_pyname(cname), text))
    fn.__name__ = fn.__qualname__ = name
    fn.__signature__ = sig
    fn.__doc__ = "%s%s\n\n%s\n\nReturns %s." % (
        name, sig, "\n".join(lines), "the size the library reports" if returns else "the status (0 or a warning status)")
    return fn


names = []
for _name, _index, _args in _orvcc.entries():
    globals()[_name] = _make(_name, _index, _args)
    names.append(_name)
names = tuple(sorted(names))
del _name, _index, _args
