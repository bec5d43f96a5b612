#!/usr/bin/env bash
# Installs what is missing, builds the library and the command-line tool, and
# runs the tool on the bundled photograph: colour models, gamma, dithering, a
# Bayer mosaic made from the picture and demosaiced three ways, and a contact
# sheet of everything. Then the test-card throughput demo.
#   tools/demo.sh [threads]
set -euo pipefail
cd "$(dirname "$0")/.."
tools/deps.sh
cmake -S . -B build >/dev/null
cmake --build build -j "$(nproc)" --target orvcc_cli orvcc_demo
orvcc=build/tools/orvcc
in=tools/sample/chelsea.png
out=out/sample
mkdir -p "$out"
threads=()
[ $# -gt 0 ] && threads=(--threads "$1")

run() {  # a conversion this build lacks is reported, not fatal
  echo "\$ orvcc $*"
  "$orvcc" "$@" "${threads[@]}" || echo "  (skipped: not in this build)"
}
"$orvcc" info
run convert "$in" "$out/gray.png" --to gray
run convert "$in" "$out/lab.tif" --to lab
run convert "$in" "$out/hsv.png" --to hsv
run convert "$in" "$out/gamma.png" --gamma
run convert "$in" "$out/stucki4.png" --dither stucki --levels 4
run convert "$in" "$out/chelsea_rggb.pgm" --mosaic rggb
for m in bilinear vng ahd; do
  run convert "$out/chelsea_rggb.pgm" "$out/demosaic_$m.png" --bayer rggb --demosaic "$m"
done
echo "\$ orvcc gallery $in $out/gallery.png"
"$orvcc" gallery "$in" "$out/gallery.png"
echo
echo "outputs in $(pwd)/$out:"
ls -1 "$out"
echo
build/tools/orvcc_demo "$@"
