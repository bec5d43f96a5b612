"""orvcc: bit-exact colour conversion for still images and video frames.

Two levels:

  orvcc.raw.<name>(...)     every function the library exports, with numpy
                            arrays in place of pointer-and-step pairs
  orvcc.convert(img, "rgb", "lab") and friends
                            choose the member by dtype and shape, allocate
                            the output and return it

Images are numpy arrays of shape (height, width) or (height, width,
channels); dtypes uint8, uint16, int16, float32 (and float64 for gray).
Planar results come back as tuples of planes. A failing status raises
orvcc.Error (subclasses per status); orvStatusOddSize is a warning. The
interpreter lock is released while the library runs, so several Python
threads can convert at once.
"""
import numpy as np

from . import _orvcc, raw
from .errors import (ArgumentError, Error, NothingDoneWarning, NullPointerError, OddSizeWarning,
                     OrvccWarning, SizeError, StepError)

__all__ = [
    "convert", "to_gray", "gamma", "twist", "tonemap", "reduce_bits", "demosaic",
    "version", "version_info", "set_num_threads", "get_num_threads", "exported", "raw",
    "Error", "NullPointerError", "SizeError", "StepError", "ArgumentError",
    "OrvccWarning", "OddSizeWarning", "NothingDoneWarning",
]

_TAG = {np.dtype(np.uint8): "8u", np.dtype(np.uint16): "16u", np.dtype(np.int16): "16s",
        np.dtype(np.float32): "32f", np.dtype(np.float64): "64f"}
_DTYPE = {v: k for k, v in _TAG.items()}

# Colour models as the function names spell them.
_MODELS = {
    "rgb": "RGB", "bgr": "BGR", "gray": "Gray", "grey": "Gray", "yuv": "YUV", "ycbcr": "YCbCr",
    "xyz": "XYZ", "luv": "LUV", "lab": "Lab", "ycc": "YCC", "hls": "HLS", "hsv": "HSV",
    "ycocg": "YCoCg",
}
# Subsampled models: name spelling and (horizontal, vertical) chroma factors.
_SAMPLED = {
    "yuv420": ("YUV420", 2, 2), "yuv422": ("YUV422", 2, 1),
    "ycbcr420": ("YCbCr420", 2, 2), "ycbcr422": ("YCbCr422", 2, 1), "ycbcr411": ("YCbCr411", 4, 1),
}


def version():
    """The library's name and version text."""
    v = _orvcc.version()
    return "%s %s" % (v["name"], v["version"])


def version_info():
    """The whole version record as a dict."""
    return _orvcc.version()


def set_num_threads(n):
    """Threads for the threaded conversions from the next call on; 0 restores the default."""
    if n < 0:
        raise ValueError("set_num_threads: n must be 0 (default) or positive, not %d" % n)
    _orvcc.set_num_threads(int(n))


def get_num_threads():
    return _orvcc.get_num_threads()


def exported():
    """Names of every conversion this build exports."""
    return raw.names


def _fn(name):
    f = getattr(raw, name, None)
    if f is None:
        raise NotImplementedError("this build of the library does not export %s" % name)
    return f


def _tag(img, allowed=("8u", "16u", "16s", "32f")):
    if not isinstance(img, np.ndarray):
        raise TypeError("expected a numpy array, not %s" % type(img).__name__)
    t = _TAG.get(img.dtype)
    if t not in allowed:
        raise TypeError("dtype %s is not supported here; use one of %s"
                        % (img.dtype, ", ".join(str(_DTYPE[a]) for a in allowed)))
    return t


def _rows(img):
    """The array with contiguous rows (a copy only when needed)."""
    if img.ndim >= 2 and img.strides[-1] == img.itemsize and (
            img.ndim == 2 or img.strides[-2] == img.shape[-1] * img.itemsize):
        return img
    return np.ascontiguousarray(img)


def _color(img, what="image"):
    """(height, width, channels) of a 3- or 4-channel interleaved image."""
    if img.ndim != 3 or img.shape[2] not in (3, 4):
        raise ValueError("%s must have shape (height, width, 3) or (height, width, 4), not %s"
                         % (what, img.shape))
    return img.shape


def _gray(img, what="image"):
    if img.ndim != 2:
        raise ValueError("%s must have shape (height, width), not %s" % (what, img.shape))
    return img.shape


def _layout(ch):
    return "C3" if ch == 3 else "AC4"


def _model(word):
    key = word.lower()
    if key in _MODELS:
        return _MODELS[key], None
    if key in _SAMPLED:
        return _SAMPLED[key][0], _SAMPLED[key][1:]
    raise ValueError("unknown colour model %r; known: %s"
                     % (word, ", ".join(sorted(list(_MODELS) + list(_SAMPLED)))))


def convert(img, src, dst, *, alpha=0):
    """Converts between colour models: convert(rgb, "rgb", "lab").

    Interleaved images of 3 channels (or 4, the fourth left alone) convert
    to the same shape; "gray" gives or takes (height, width). Subsampled
    targets ("ycbcr420", "yuv422"...) come back as a tuple (Y, Cb, Cr) of
    planes, and take one as source."""
    s, ssub = _model(src)
    d, dsub = _model(dst)
    if isinstance(img, (tuple, list)):
        return _from_planes(tuple(_rows(p) for p in img), s, ssub, d, alpha)
    t = _tag(img, ("8u", "16u", "16s", "32f", "64f"))
    img = _rows(img)
    if d == "Gray":
        h, w, ch = _color(img)
        out = np.empty((h, w), img.dtype)
        _fn("orvi%sToGray_%s_%sC1R" % (s, t, _layout(ch)))(img, out, (w, h))
        return out
    if s == "Gray":
        h, w = _gray(img)
        out = np.empty((h, w, 3), img.dtype)
        _fn("orviGrayToRGB_%s_C1C3R" % t)(img, out, (w, h))
        return out
    h, w, ch = _color(img)
    if dsub:
        return _to_planes(img, t, s, d, dsub, ch)
    for name in ("orvi%sTo%s_%s_%sR" % (s, d, t, _layout(ch)),):
        if hasattr(raw, name):
            out = np.empty_like(img)
            if ch == 4:
                out[..., 3] = img[..., 3]
            _fn(name)(img, out, (w, h))
            return out
    # Families that write planes at full resolution (YCoCg).
    planar = [n for n in raw.names if n.startswith("orvi%sTo%s_%s" % (s, d, t)) and n.endswith("P3R")]
    if planar:
        f = _fn(planar[0])
        otag = planar[0].split("_")[1][len(t):] or t
        planes = tuple(np.empty((h, w), _DTYPE[otag]) for _ in range(3))
        f(img, planes, (w, h))
        return planes
    raise NotImplementedError("this build has no conversion from %s to %s for %s %s images"
                              % (src, dst, img.dtype, _layout(ch)))


def _to_planes(img, t, s, d, sub, ch):
    h, w = img.shape[:2]
    hs, vs = sub
    name = "orvi%sTo%s_%s_%sP3R" % (s, d, t, _layout(ch) if ch == 3 else "AC4")
    f = _fn(name)
    planes = (np.empty((h, w), img.dtype),
              np.empty((-(-h // vs), -(-w // hs)), img.dtype),
              np.empty((-(-h // vs), -(-w // hs)), img.dtype))
    f(img, planes, (w, h))
    return planes


def _from_planes(planes, s, ssub, d, alpha):
    if len(planes) != 3:
        raise ValueError("a planar source is a tuple of three planes (Y, Cb, Cr)")
    y = planes[0]
    t = _tag(y, ("8u",))
    h, w = _gray(y, "the luma plane")
    for p in planes[1:]:
        if p.dtype != y.dtype:
            raise TypeError("all planes must have dtype %s" % y.dtype)
    if ssub:
        hs, vs = ssub
        want = (-(-h // vs), -(-w // hs))
        for p in planes[1:]:
            if p.shape[0] < want[0] or p.shape[1] < want[1]:
                raise ValueError("chroma planes must be at least %s for a %dx%d luma plane, not %s"
                                 % (want, w, h, p.shape))
    out = np.empty((h, w, 3), y.dtype)
    _fn("orvi%sTo%s_%s_P3C3R" % (s, d, t))(planes, out, (w, h))
    return out


def to_gray(img, weights=None):
    """Luma of an RGB image: fixed weights (0.299, 0.587, 0.114) or yours."""
    t = _tag(img, ("8u", "16u", "16s", "32f", "64f"))
    img = _rows(img)
    h, w, ch = _color(img)
    out = np.empty((h, w), img.dtype)
    if weights is None and t != "64f":
        _fn("orviRGBToGray_%s_%sC1R" % (t, _layout(ch)))(img, out, (w, h))
    else:
        _fn("orviColorToGray_%s_%sC1R" % (t, _layout(ch)))(img, out, (w, h), weights)
    return out


def gamma(img, inverse=False, vmin=0.0, vmax=1.0):
    """BT.709 gamma (or its inverse) of a 3- or 4-channel image; float
    images are taken over [vmin, vmax]."""
    t = _tag(img, ("8u", "16u", "32f"))
    img = _rows(img)
    h, w, ch = _color(img)
    name = "orviGamma%s_%s_%sR" % ("Inv" if inverse else "Fwd", t, _layout(ch))
    out = np.empty_like(img)
    if ch == 4:
        out[..., 3] = img[..., 3]
    if t == "32f":
        _fn(name)(img, out, (w, h), vmin, vmax)
    else:
        _fn(name)(img, out, (w, h))
    return out


def twist(img, matrix):
    """Applies a 3x4 colour matrix (last column added) to a 3- or 4-channel
    image; a float 4-channel image may take a 4x4 matrix for all four."""
    t = _tag(img)
    img = _rows(img)
    h, w, ch = _color(img)
    m = np.asarray(matrix, np.float32)
    out = np.empty_like(img)
    if ch == 4:
        out[..., 3] = img[..., 3]
    if t == "32f" and m.shape == (4, 4) and ch == 4:
        _fn("orviColorTwist_32f_C4R")(img, out, (w, h), m)
        return out
    if m.shape != (3, 4):
        raise ValueError("the matrix must be 3x4 (or 4x4 for a float 4-channel image), not %s" % (m.shape,))
    name = ("orviColorTwist_32f_%sR" if t == "32f" else "orviColorTwist32f_" + t + "_%sR") % _layout(ch)
    _fn(name)(img, out, (w, h), m)
    return out


def tonemap(img, method="linear"):
    """Float HDR gray image to 8 bits, scaled by its maximum ("linear") or its mean ("mean")."""
    _tag(img, ("32f",))
    img = _rows(img)
    h, w = _gray(img)
    names = {"linear": "orviToneMapLinear_32f8u_C1R", "mean": "orviToneMapMean_32f8u_C1R"}
    if method not in names:
        raise ValueError("method must be 'linear' or 'mean', not %r" % (method,))
    out = np.zeros((h, w), np.uint8)
    _fn(names[method])(img, out, (w, h))
    return out


_DITHER = {"none": 0, "fs": 1, "floyd-steinberg": 1, "jjn": 2, "jarvis-judice-ninke": 2,
           "stucki": 3, "bayer": 4, "ordered": 4}


def reduce_bits(img, levels, dither="none", noise=0, dtype=None, alpha_untouched=False):
    """Reduces an image to `levels` evenly spaced levels, optionally dithered
    ("none", "bayer", "fs", "jjn", "stucki") with `noise` percent of noise,
    and optionally to a narrower dtype (e.g. numpy.uint8). A 4-channel image
    is reduced in all four channels, or in three with alpha_untouched (the
    fourth channel of the result is then zero)."""
    t = _tag(img)
    img = _rows(img)
    if img.ndim == 2:
        h, w = img.shape
        ch = 1
    else:
        h, w, ch = _color(img)
    lay = "AC4" if alpha_untouched and ch == 4 else "C%d" % ch
    if dither not in _DITHER:
        raise ValueError("dither must be one of %s, not %r" % (", ".join(_DITHER), dither))
    od = np.dtype(dtype) if dtype is not None else img.dtype
    ot = _TAG.get(od)
    if ot is None:
        raise TypeError("dtype %s is not supported here" % od)
    pair = t if ot == t else t + ot
    f = _fn("orviReduceBits_%s_%sR" % (pair, lay))
    size = _fn("orviReduceBitsGetBufferSize")(ch, (w, h), noise, _DITHER[dither])
    buf = np.empty(max(int(size), 1), np.uint8)
    out = np.empty(img.shape, od)
    if lay == "AC4":
        out[..., 3] = 0
    f(img, out, (w, h), noise, _DITHER[dither], levels, buf)
    return out


_GRIDS = {"bggr": 0, "rggb": 1, "gbrg": 2, "grbg": 3}


def demosaic(mosaic, pattern="rggb", method="bilinear", gains=(1.0, 1.0, 1.0)):
    """A Bayer mosaic (uint8 or uint16, (height, width)) to RGB: "bilinear",
    "vng" (with per-channel gains) or "ahd"."""
    t = _tag(mosaic, ("8u", "16u"))
    mosaic = _rows(mosaic)
    h, w = _gray(mosaic, "the mosaic")
    if pattern.lower() not in _GRIDS:
        raise ValueError("pattern must be one of %s, not %r" % (", ".join(_GRIDS), pattern))
    grid = _GRIDS[pattern.lower()]
    rect = (0, 0, w, h)
    if method == "bilinear":
        out = np.empty((h, w, 3), mosaic.dtype)
        _fn("orviCFAToRGB_%s_C1C3R" % t)(mosaic, rect, (w, h), out, grid)
        return out
    if method == "vng":
        bgra = np.zeros((h, w, 4), mosaic.dtype)
        _fn("orviCFAToBGRA_VNG_%s_C1C4R_L" % t)(mosaic, rect, (w, h), gains, bgra, grid)
        return np.ascontiguousarray(bgra[..., 2::-1])
    if method == "ahd":
        out = np.empty((h, w, 3), mosaic.dtype)
        tmp = np.empty((30, max(w, 6) + 8), mosaic.dtype)
        _fn("orviDemosaicAHD_%s_C1C3R" % t)(mosaic, rect, (w, h), out, grid, tmp)
        return out
    raise ValueError("method must be 'bilinear', 'vng' or 'ahd', not %r" % (method,))
