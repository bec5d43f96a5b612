#!/usr/bin/env python3
"""orvcc.convert against OpenCV's cv2.cvtColor and scikit-image on the same
arrays, one 1920x1080 frame, megapixels per second (best of several runs).

usage: PYTHONPATH=build/python python3 bench/bench_python.py [--threads N]
"""
import argparse
import time

import numpy as np

import orvcc

try:
    import cv2
except ImportError:
    cv2 = None
try:
    import skimage.color as skc
except ImportError:
    skc = None


def best(fn, repeat=15):
    fn()
    times = []
    for _ in range(repeat):
        t0 = time.perf_counter()
        fn()
        times.append(time.perf_counter() - t0)
    return min(times)


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--threads", type=int, default=1)
    args = ap.parse_args()
    orvcc.set_num_threads(args.threads)
    if cv2 is not None:
        cv2.setNumThreads(args.threads)
    h, w = 1080, 1920
    rng = np.random.default_rng(1)
    u8 = rng.integers(0, 256, (h, w, 3), dtype=np.uint8)
    f32 = rng.random((h, w, 3), dtype=np.float32)
    cases = [
        ("rgb->gray 8u", lambda: orvcc.to_gray(u8),
         cv2 and (lambda: cv2.cvtColor(u8, cv2.COLOR_RGB2GRAY)), skc and (lambda: skc.rgb2gray(u8))),
        ("rgb->gray 32f", lambda: orvcc.to_gray(f32),
         cv2 and (lambda: cv2.cvtColor(f32, cv2.COLOR_RGB2GRAY)), skc and (lambda: skc.rgb2gray(f32))),
        ("rgb->xyz 8u", lambda: orvcc.convert(u8, "rgb", "xyz"),
         cv2 and (lambda: cv2.cvtColor(u8, cv2.COLOR_RGB2XYZ)), skc and (lambda: skc.rgb2xyz(u8))),
        ("rgb->xyz 32f", lambda: orvcc.convert(f32, "rgb", "xyz"),
         cv2 and (lambda: cv2.cvtColor(f32, cv2.COLOR_RGB2XYZ)), skc and (lambda: skc.rgb2xyz(f32))),
        ("rgb->yuv 8u", lambda: orvcc.convert(u8, "rgb", "yuv"),
         cv2 and (lambda: cv2.cvtColor(u8, cv2.COLOR_RGB2YUV)), skc and (lambda: skc.rgb2yuv(u8))),
        ("rgb->ycbcr 8u", lambda: orvcc.convert(u8, "rgb", "ycbcr"),
         cv2 and (lambda: cv2.cvtColor(u8, cv2.COLOR_RGB2YCrCb)), skc and (lambda: skc.rgb2ycbcr(u8))),
        ("rgb->hsv 8u", lambda: orvcc.convert(u8, "rgb", "hsv"),
         cv2 and (lambda: cv2.cvtColor(u8, cv2.COLOR_RGB2HSV)), skc and (lambda: skc.rgb2hsv(u8))),
        ("rgb->hls 8u", lambda: orvcc.convert(u8, "rgb", "hls"),
         cv2 and (lambda: cv2.cvtColor(u8, cv2.COLOR_RGB2HLS)), None),
        ("rgb->lab 8u", lambda: orvcc.convert(u8, "rgb", "lab"),
         cv2 and (lambda: cv2.cvtColor(u8, cv2.COLOR_LRGB2Lab)), skc and (lambda: skc.rgb2lab(u8))),
        ("rgb->lab 32f", lambda: orvcc.convert(f32, "rgb", "lab"),
         cv2 and (lambda: cv2.cvtColor(f32, cv2.COLOR_LRGB2Lab)), skc and (lambda: skc.rgb2lab(f32))),
        ("rgb->luv 8u", lambda: orvcc.convert(u8, "rgb", "luv"),
         cv2 and (lambda: cv2.cvtColor(u8, cv2.COLOR_LRGB2Luv)), skc and (lambda: skc.rgb2luv(u8))),
        ("gamma 8u", lambda: orvcc.gamma(u8), None, None),
    ]
    mp = h * w / 1e6
    print("%-16s %10s %10s %10s %8s" % ("conversion", "orvcc", "OpenCV", "skimage", "x OpenCV"))
    for name, ours, cv, sk in cases:
        try:
            t = best(ours)
        except NotImplementedError:
            print("%-16s %10s" % (name, "not built"))
            continue
        tc = best(cv) if cv else None
        ts = best(sk, 3) if sk else None
        fmt = lambda x: "%10.0f" % (mp / x) if x else "%10s" % "-"
        print("%-16s %s %s %s %8s" % (name, fmt(t), fmt(tc), fmt(ts), "%.2f" % (tc / t) if tc else "-"))


if __name__ == "__main__":
    main()
