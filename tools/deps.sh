#!/usr/bin/env bash
# Installs the Debian packages that building and testing need (root or sudo),
# once: nothing is done when they are all present. ORVCC_PEERS=1 adds the
# benchmark peers OpenCV and libyuv (LibRaw is there for the tool), and the
# demosaicing quality check's python3-opencv and python3-skimage.
set -euo pipefail
pkgs="build-essential cmake pkg-config gcc-multilib g++-multilib googletest libgtest-dev libbenchmark-dev binutils qemu-user python3-dev python3-numpy python3-pytest pybind11-dev libpng-dev libtiff-dev libraw-dev libcli11-dev"
[ "${ORVCC_PEERS:-0}" = 1 ] && pkgs="$pkgs libopencv-dev libyuv-dev python3-opencv python3-skimage"
missing=""
for p in $pkgs; do
  dpkg -s "$p" >/dev/null 2>&1 || missing="$missing $p"
done
[ -z "$missing" ] && exit 0
sudo=""
[ "$(id -u)" = 0 ] || sudo=sudo
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends $missing >/dev/null
