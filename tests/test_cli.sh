#!/usr/bin/env bash
# The command-line tool on files and pipes: round trips, raw video, mosaics,
# and every bad input with its exit code and no output file left behind.
#   tests/test_cli.sh path/to/orvcc path/to/sample-folder path/to/make_dng
set -uo pipefail
tool=$(realpath "$1")
sample=$(realpath "$2")/chelsea.png
make_dng=$(realpath "$3")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
passed=0 failed=0 skipped=0

ok() { passed=$((passed + 1)); }
bad() { failed=$((failed + 1)); echo "FAIL: $*"; }
has() { "$tool" list --names | grep -qx "$1"; }

# expect CODE OUTFILE -- command...: exit code CODE and OUTFILE absent (with
# no temporary left beside it) unless CODE is 0.
expect() {
  local code=$1 out=$2; shift 3
  "$@" >stdout.txt 2>stderr.txt
  local got=$?
  if [ "$got" != "$code" ]; then bad "$* exited $got, not $code: $(cat stderr.txt)"; return; fi
  if [ "$code" != 0 ]; then
    if [ -e "$out" ] || ls "$out".part-* >/dev/null 2>&1; then bad "$* left $out behind"; return; fi
    if [ "$(wc -l <stderr.txt)" != 1 ]; then bad "$* did not say one line: $(cat stderr.txt)"; return; fi
  fi
  ok
}

# --- files: PNG to PPM and back, 16-bit TIFF, float TIFF ---------------------
expect 0 a.ppm -- "$tool" convert "$sample" a.ppm
expect 0 b.png -- "$tool" convert a.ppm b.png
expect 0 c.ppm -- "$tool" convert b.png c.ppm
cmp -s a.ppm c.ppm && ok || bad "PNG -> PPM -> PNG -> PPM changed the pixels"

{ printf 'P6\n37 11\n65535\n'; head -c $((37 * 11 * 6)) /dev/urandom; } > deep.ppm
expect 0 deep.tif -- "$tool" convert deep.ppm deep.tif
expect 0 deep2.ppm -- "$tool" convert deep.tif deep2.ppm
cmp -s deep.ppm deep2.ppm && ok || bad "16-bit PPM -> TIFF -> PPM changed the pixels"
expect 0 deep.png -- "$tool" convert deep.ppm deep.png
expect 0 deep3.ppm -- "$tool" convert deep.png deep3.ppm
cmp -s deep.ppm deep3.ppm && ok || bad "16-bit PPM -> PNG -> PPM changed the pixels"

expect 0 xyz.tif -- "$tool" convert "$sample" xyz.tif --to xyz
expect 0 back.ppm -- "$tool" convert xyz.tif back.ppm --from xyz
expect 0 gray.pgm -- "$tool" convert "$sample" gray.pgm --to gray
[ "$(head -c 2 gray.pgm)" = P5 ] && ok || bad "--to gray did not give a one-channel image"

# --- pipes ------------------------------------------------------------------
cat a.ppm | "$tool" convert - - --out-format ppm > piped.ppm && cmp -s piped.ppm a.ppm && ok ||
  bad "a PPM through standard input and output changed"

# --- raw video ---------------------------------------------------------------
w=64 h=48 frames=5
head -c $((w * h * 3 * frames)) /dev/urandom > clip.rgb
expect 0 "frame%d.png" -- "$tool" convert clip.rgb "frame%d.png" --format rgb24 --size ${w}x${h}
[ "$(ls frame*.png | wc -l)" = $frames ] && ok || bad "rgb24 video to PNG frames did not give $frames files"
if has orviYCbCr420_8u_P3P2R && has orviYCbCr420_8u_P2P3R; then
  head -c $((w * h * 3 / 2 * frames)) /dev/urandom > clip.i420
  cat clip.i420 | "$tool" convert - - --format i420 --size ${w}x${h} --to nv12 |
    "$tool" convert - back.i420 --format nv12 --size ${w}x${h} --to i420
  [ "$(stat -c %s back.i420)" = $((w * h * 3 / 2 * frames)) ] && ok || bad "i420 -> nv12 -> i420 lost frames"
  cmp -s clip.i420 back.i420 && ok || bad "i420 -> nv12 -> i420 in a pipe changed the frames"
else
  skipped=$((skipped + 1)); echo "skip: this build has no I420/NV12 layout conversions"
fi
if has orviYCbCr422ToYCbCr420_8u_C2P3R; then
  head -c $((w * h * 2 * 3)) /dev/urandom > clip.yuy2
  expect 0 out.i420 -- "$tool" convert clip.yuy2 out.i420 --format yuy2 --size ${w}x${h} --to i420
  [ "$(stat -c %s out.i420)" = $((w * h * 3 / 2 * 3)) ] && ok || bad "yuy2 -> i420 frame count"
else
  skipped=$((skipped + 1)); echo "skip: this build has no YUY2 to I420 conversion"
fi

# --- Bayer mosaics -------------------------------------------------------------
if has orviCFAToRGB_8u_C1C3R; then
  head -c $((32 * 16)) /dev/urandom > m.raw
  expect 0 m.png -- "$tool" convert m.raw m.png --bayer rggb --size 32x16 --depth 8
  head -c $((32 * 16 * 2)) /dev/urandom > m16.raw
  expect 0 m16.tif -- "$tool" convert m16.raw m16.tif --bayer gbrg --size 32x16 --depth 16
else
  skipped=$((skipped + 1)); echo "skip: this build has no bilinear demosaicing"
fi

# --- bad input: exit codes, one-line messages, no output ----------------------
head -c 1000 /dev/urandom > noise.bin
expect 3 o1.png -- "$tool" convert noise.bin o1.png
head -c $((w * h * 3 + 7)) /dev/urandom > ragged.rgb
expect 3 o2.rgb -- "$tool" convert ragged.rgb o2.rgb --format rgb24 --size ${w}x${h}
head -c $((63 * 48 * 2)) /dev/urandom > odd.yuy2
expect 3 o3.i420 -- "$tool" convert odd.yuy2 o3.i420 --format yuy2 --size 63x48 --to i420
head -c 20000 "$sample" > cut.png
expect 3 o4.ppm -- "$tool" convert cut.png o4.ppm
head -c 1 /dev/urandom > tiny.raw
expect 3 o5.png -- "$tool" convert tiny.raw o5.png --bayer rggb --size 1x1 --depth 8
expect 2 o6.png -- "$tool" convert a.ppm o6.png --to nonsense
expect 2 o7.png -- "$tool" convert a.ppm o7.png --no-such-option
expect 3 o8.png -- "$tool" convert missing-file.png o8.png
expect 4 no-such-folder/o9.png -- "$tool" convert a.ppm no-such-folder/o9.png

# --- the other commands ------------------------------------------------------
expect 0 none -- "$tool" info
grep -q "avx2" stdout.txt && ok || bad "info does not name the processor features"
expect 0 none -- "$tool" list
expect 0 none -- "$tool" bench orviRGBToGray_8u_C3C1R --size 64x32
expect 0 sheet.png -- "$tool" gallery "$sample" sheet.png

# --- a camera raw file written here ------------------------------------------
# A minimal DNG holds an RGGB mosaic; read through LibRaw it must demosaic to
# exactly what the same samples give as a bare mosaic.
if has orviCFAToRGB_16u_C1C3R; then
  "$make_dng" cam.dng 64 48
  expect 0 cam.png -- "$tool" convert cam.dng cam.png
  expect 0 bare.png -- "$tool" convert cam.dng.raw bare.png --bayer rggb --size 64x48 --depth 16
  cmp -s cam.png bare.png && ok || bad "the DNG did not give the mosaic it holds"
else
  skipped=$((skipped + 1)); echo "skip: this build has no 16-bit bilinear demosaicing for camera raw files"
fi

echo "$passed passed, $failed failed, $skipped skipped"
[ "$failed" = 0 ]
