#!/usr/bin/env python3
"""Demosaicing quality on a real photograph.

Samples an 8-bit RGB photograph through an RGGB Bayer grid, reconstructs it
with the library's bilinear, VNG and AHD conversions and with OpenCV's
bilinear, VNG and edge-aware ones, and prints the PSNR of each against the
original (all three channels, the outer 4 pixels of every edge left out,
since the methods treat the borders differently).

The photograph is scikit-image's "astronaut" (Eileen Collins, NASA; public
domain), read from the installed python3-skimage package, not bundled.

usage: tools/demosaic_quality.py [build-dir]
"""
import ctypes
import os
import sys

import cv2
import numpy as np
from skimage import data


class Rect(ctypes.Structure):
    _fields_ = [("x", ctypes.c_int32), ("y", ctypes.c_int32), ("width", ctypes.c_int32), ("height", ctypes.c_int32)]


class Size(ctypes.Structure):
    _fields_ = [("width", ctypes.c_int32), ("height", ctypes.c_int32)]


RGGB = 1
BORDER = 4


def psnr(a, b):
    a = a[BORDER:-BORDER, BORDER:-BORDER].astype(np.float64)
    b = b[BORDER:-BORDER, BORDER:-BORDER].astype(np.float64)
    mse = np.mean((a - b) ** 2)
    return 10 * np.log10(255.0 ** 2 / mse)


def main():
    build = sys.argv[1] if len(sys.argv) > 1 else "build"
    lib = ctypes.CDLL(os.path.join(build, "liborvcch9.so"))
    rgb = np.ascontiguousarray(data.astronaut())
    h, w, _ = rgb.shape

    # RGGB: red at even rows and columns, blue at odd ones, green between.
    mosaic = np.empty((h, w), np.uint8)
    mosaic[0::2, 0::2] = rgb[0::2, 0::2, 0]
    mosaic[0::2, 1::2] = rgb[0::2, 1::2, 1]
    mosaic[1::2, 0::2] = rgb[1::2, 0::2, 1]
    mosaic[1::2, 1::2] = rgb[1::2, 1::2, 2]

    src = mosaic.ctypes.data_as(ctypes.c_void_p)
    roi, size = Rect(0, 0, w, h), Size(w, h)
    results = {}

    out = np.zeros((h, w, 3), np.uint8)
    assert lib.orviCFAToRGB_8u_C1C3R(src, roi, size, w, out.ctypes.data_as(ctypes.c_void_p), 3 * w, RGGB) == 0
    results["bilinear"] = psnr(out, rgb)

    bgra = np.zeros((h, w, 4), np.uint8)
    assert lib.orviCFAToBGRA_VNG_8u_C1C4R_L(src, roi, size, w, None, bgra.ctypes.data_as(ctypes.c_void_p),
                                            4 * w, RGGB) == 0
    results["VNG"] = psnr(bgra[:, :, 2::-1], rgb)

    tmp = np.zeros(30 * (w + 8), np.uint8)
    out = np.zeros((h, w, 3), np.uint8)
    assert lib.orviDemosaicAHD_8u_C1C3R(src, roi, size, w, out.ctypes.data_as(ctypes.c_void_p), 3 * w, RGGB,
                                        tmp.ctypes.data_as(ctypes.c_void_p), w + 8) == 0
    results["AHD"] = psnr(out, rgb)

    # OpenCV names a Bayer pattern by the second row's second and third
    # samples: an RGGB mosaic is its "BayerBG".
    peer = {
        "bilinear": cv2.COLOR_BayerBG2RGB,
        "VNG": cv2.COLOR_BayerBG2RGB_VNG,
        "edge-aware": cv2.COLOR_BayerBG2RGB_EA,
    }
    print("| method | orvcc PSNR (dB) | OpenCV PSNR (dB) |")
    print("|---|---|---|")
    for name in ["bilinear", "VNG", "AHD", "edge-aware"]:
        ours = "%.2f" % results[name] if name in results else "-"
        theirs = "%.2f" % psnr(cv2.cvtColor(mosaic, peer[name]), rgb) if name in peer else "-"
        print("| %s | %s | %s |" % (name, ours, theirs))


if __name__ == "__main__":
    main()
