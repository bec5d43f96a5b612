"""The Python module against independent NumPy arithmetic and the library's
own known values: every exported name reachable, argument checks before the
library is called, statuses as exceptions and warnings, strides, threads."""
import os
import re
import threading
import warnings

import numpy as np
import pytest

import orvcc

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
rng = np.random.default_rng(5)


def exported_names():
    names = []

    def read(path):
        for line in open(path):
            m = re.match(r'\s*#include\s+"([^"]+)"', line)
            if m:
                read(os.path.join(ROOT, m.group(1)))
            m = re.match(r"\s*ORV_EXPORT\((orvi\w+)\)", line)
            if m:
                names.append(m.group(1))
    read(os.path.join(ROOT, "frame", "exports.inc"))
    return names


def needs(*names):
    missing = [n for n in names if not hasattr(orvcc.raw, n)]
    return pytest.mark.skipif(bool(missing), reason="not exported by this build: " + ", ".join(missing))


def rgb(h, w, dtype=np.uint8, ch=3):
    if np.dtype(dtype).kind == "f":
        return rng.random((h, w, ch), dtype=np.float32).astype(dtype)
    info = np.iinfo(dtype)
    return rng.integers(info.min, info.max, (h, w, ch), endpoint=True).astype(dtype)


def test_every_exported_name_is_reachable():
    assert sorted(exported_names()) == sorted(orvcc.raw.names)
    for name in orvcc.raw.names:
        assert callable(getattr(orvcc.raw, name))
    assert "orvcc" in orvcc.version().lower()


class TestGray:
    def test_weights_as_numpy_computes_them(self):
        img = rgb(9, 70)
        want = img.astype(np.float64) @ np.array([0.299, 0.587, 0.114])
        got = orvcc.to_gray(img).astype(np.float64)
        assert np.all(np.abs(got - want) <= 1.0)
        f = rgb(9, 70, np.float32)
        want32 = f @ np.array([0.299, 0.587, 0.114], np.float32)
        np.testing.assert_allclose(orvcc.to_gray(f), want32, rtol=1e-6, atol=1e-6)

    def test_block_and_tail_forms_known_values(self):
        # 16 pixels take the block form, a 17th the tail form: (0, 5, 5) is
        # 3 in a block and 4 in the tail.
        img = np.zeros((1, 17, 3), np.uint8)
        img[..., 1:] = 5
        g = orvcc.to_gray(img)
        assert g[0, 0] == 3 and g[0, 16] == 4

    def test_callers_weights(self):
        img = rgb(4, 33)
        w = (0.5, 0.25, 0.25)
        want = np.rint(img.astype(np.float64) @ np.array(w))
        assert np.all(np.abs(orvcc.to_gray(img, w) - want) <= 1)


def test_negative_and_padded_strides_give_the_same_rows():
    img = rgb(23, 41)
    base = orvcc.convert(img, "rgb", "ycbcr")
    np.testing.assert_array_equal(orvcc.convert(img[::-1], "rgb", "ycbcr"), base[::-1])
    padded = np.zeros((23, 50, 3), np.uint8)
    padded[:, :41] = img
    np.testing.assert_array_equal(orvcc.convert(padded[:, :41], "rgb", "ycbcr"), base)
    # raw level: a negative-stride destination is written bottom-up
    out = np.zeros((23, 41, 3), np.uint8)
    orvcc.raw.orviRGBToYCbCr_8u_C3R(img, out[::-1], (41, 23))
    np.testing.assert_array_equal(out[::-1], base)


def test_alpha_channel_is_left_alone():
    img = rgb(5, 19, ch=4)
    out = orvcc.convert(img, "rgb", "xyz")
    np.testing.assert_array_equal(out[..., 3], img[..., 3])
    np.testing.assert_array_equal(out[..., :3], orvcc.convert(np.ascontiguousarray(img[..., :3]), "rgb", "xyz"))


class TestErrors:
    def test_checks_before_the_library(self):
        img = rgb(4, 8)
        out = np.zeros((4, 8), np.uint8)
        with pytest.raises(TypeError, match="dtype uint8"):
            orvcc.raw.orviRGBToGray_8u_C3C1R(img.astype(np.uint16), out, (8, 4))
        with pytest.raises(ValueError, match="contiguous"):
            orvcc.raw.orviRGBToGray_8u_C3C1R(img[:, ::2], out, (4, 4))
        out.flags.writeable = False
        with pytest.raises(ValueError, match="read-only"):
            orvcc.raw.orviRGBToGray_8u_C3C1R(img, out, (8, 4))
        with pytest.raises(TypeError, match="missing a required argument"):
            orvcc.raw.orviRGBToGray_8u_C3C1R(img, out)
        with pytest.raises(ValueError, match="3 planes"):
            orvcc.raw.orviRGBToYCbCr_8u_C3P3R(img, (out, out), (8, 4))
        with pytest.raises(ValueError, match="shape"):
            orvcc.convert(np.zeros((4, 8, 2), np.uint8), "rgb", "xyz")
        with pytest.raises(TypeError, match="dtype"):
            orvcc.gamma(np.zeros((4, 8, 3), np.int16))
        with pytest.raises(ValueError, match="unknown colour model"):
            orvcc.convert(img, "rgb", "cmyk")

    def test_statuses_name_the_argument_and_write_nothing(self):
        img = rgb(4, 8)
        out = np.full((4, 8), 7, np.uint8)
        with pytest.raises(orvcc.SizeError, match="orvStatusBadSize.*roi_size") as e:
            orvcc.raw.orviRGBToGray_8u_C3C1R(img, out, (0, 4))
        assert e.value.status == -6 and isinstance(e.value, ValueError)
        with pytest.raises(orvcc.NullPointerError, match="dst"):
            orvcc.raw.orviRGBToGray_8u_C3C1R(img, None, (8, 4))
        with pytest.raises(orvcc.ArgumentError, match="v_min, v_max"):
            orvcc.gamma(rgb(2, 2, np.float32), vmin=1.0, vmax=1.0)
        assert np.all(out == 7)

    def test_warning_statuses_become_warnings(self):
        with pytest.warns(orvcc.NothingDoneWarning):
            out = orvcc.tonemap(np.full((3, 5), -1.0, np.float32))
        assert np.all(out == 0)


def test_tonemap_scales_by_the_maximum():
    hdr = rng.random((7, 31), dtype=np.float32) * 40
    got = orvcc.tonemap(hdr).astype(np.int32)
    want = hdr.astype(np.float64) * 255 / hdr.max()
    assert np.all(np.abs(got - want) <= 1)


def test_gamma_follows_the_curve_and_inverts():
    x = np.arange(256, dtype=np.uint8).reshape(1, 256, 1).repeat(3, 2)
    fwd = orvcc.gamma(x).astype(np.float64)
    v = np.arange(256) / 255.0
    curve = np.where(v < 0.018, 4.5 * v, 1.099 * v ** 0.45 - 0.099) * 255
    assert np.all(np.abs(fwd[0, :, 0] - curve) <= 1)
    f = rng.random((3, 40, 3), dtype=np.float32)
    back = orvcc.gamma(orvcc.gamma(f), inverse=True)
    np.testing.assert_allclose(back, f, atol=2e-5)


def test_twist_is_the_matrix_product():
    img = rgb(6, 37)
    m = np.array([[0.5, 0.25, 0.1, 3], [0.2, 0.6, 0.1, -2], [0.1, 0.1, 0.7, 0]], np.float32)
    want = np.clip(np.rint(img.astype(np.float64) @ m[:, :3].T + m[:, 3]), 0, 255)
    assert np.all(np.abs(orvcc.twist(img, m) - want) <= 1)
    ident = np.hstack([np.eye(3), np.zeros((3, 1))])
    np.testing.assert_array_equal(orvcc.twist(img, ident), img)


def test_threads_give_the_same_output():
    img = rgb(130, 200)  # above the threaded families' area threshold
    orvcc.set_num_threads(1)
    one = orvcc.convert(img, "rgb", "xyz")
    orvcc.set_num_threads(2)
    two = orvcc.convert(img, "rgb", "xyz")
    orvcc.set_num_threads(0)
    np.testing.assert_array_equal(one, two)
    with pytest.raises(ValueError):
        orvcc.set_num_threads(-1)


def test_many_python_threads_at_once():
    imgs = [rgb(64, 96 + i) for i in range(8)]
    want = [orvcc.convert(i, "rgb", "ycbcr") for i in imgs]
    got = [None] * len(imgs)
    errors = []

    def work(k):
        try:
            for _ in range(20):
                got[k] = orvcc.convert(imgs[k], "rgb", "ycbcr")
        except Exception as e:  # pragma: no cover - reported below
            errors.append(e)

    threads = [threading.Thread(target=work, args=(k,)) for k in range(len(imgs))]
    for t in threads:
        t.start()
    for t in threads:
        t.join()
    assert not errors
    for g, w in zip(got, want):
        np.testing.assert_array_equal(g, w)


@needs("orviRGBToYCoCg_8u_C3P3R", "orviYCoCgToRGB_8u_P3C3R")
def test_ycocg_round_trips():
    img = rgb(17, 45)
    # the plain byte transform halves its differences: back within one step
    back = orvcc.convert(orvcc.convert(img, "rgb", "ycocg"), "ycocg", "rgb")
    assert np.abs(back.astype(np.int32) - img).max() <= 1
    # the reversible lifting transform into 16-bit planes gives every byte back
    planes = tuple(np.empty((17, 45), np.int16) for _ in range(3))
    orvcc.raw.orviBGRToYCoCg_Rev_8u16s_C3P3R(img, planes, (45, 17))
    exact = np.empty_like(img)
    orvcc.raw.orviYCoCgToBGR_Rev_16s8u_P3C3R(planes, exact, (45, 17))
    np.testing.assert_array_equal(exact, img)
    # Y is the rounded mean of R, 2G and B in both
    b, g, r = (img[..., k].astype(np.int32) for k in range(3))
    assert np.abs(planes[0] - (r + 2 * g + b) / 4).max() <= 0.75


@needs("orviRGBToYCbCr420_8u_C3P3R")
def test_subsampled_planes_have_the_sampled_shapes():
    y, cb, cr = orvcc.convert(rgb(10, 16), "rgb", "ycbcr420")
    assert y.shape == (10, 16) and cb.shape == (5, 8) and cr.shape == (5, 8)


@needs("orviReduceBits_8u_C1R", "orviReduceBitsGetBufferSize")
def test_reduce_bits_to_two_levels():
    img = rng.integers(0, 256, (9, 33), dtype=np.uint8)
    out = orvcc.reduce_bits(img, 2)
    assert set(np.unique(out)) <= {0, 255}
    dithered = orvcc.reduce_bits(img, 2, dither="fs")
    assert set(np.unique(dithered)) <= {0, 255}


@needs("orviCFAToRGB_8u_C1C3R")
def test_demosaic_keeps_the_sampled_values():
    mosaic = rng.integers(0, 256, (12, 16), dtype=np.uint8)
    out = orvcc.demosaic(mosaic, "rggb")
    assert out.shape == (12, 16, 3)
    np.testing.assert_array_equal(out[2:-2:2, 2:-2:2, 0], mosaic[2:-2:2, 2:-2:2])
