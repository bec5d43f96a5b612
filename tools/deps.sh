#!/usr/bin/env bash
# Installs the Debian packages that building and testing need (root or sudo),
# once: nothing is done when they are all present. ORVCC_PEERS=1 adds the
# benchmark peers OpenCV, libyuv and LibRaw, and the demosaicing quality
# check's python3-opencv and python3-skimage.
set -euo pipefail
pkgs="build-essential cmake pkg-config gcc-multilib g++-multilib googletest libgtest-dev libbenchmark-dev binutils qemu-user"
[ "${ORVCC_PEERS:-0}" = 1 ] && pkgs="$pkgs libopencv-dev libyuv-dev libraw-dev python3-opencv python3-skimage"
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
