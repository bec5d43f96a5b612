#!/usr/bin/env bash
# Installs a build into a scratch prefix and builds a host program against it
# twice, through the CMake package and through pkg-config, then runs both.
#   tools/check_install.sh [build-dir]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build" --prefix "$prefix" >/dev/null
libdir=$(dirname "$(find "$prefix" -name liborvcch9.so | head -n1)")

cmake -S tests/install -B "$prefix/consumer" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$prefix/consumer" >/dev/null
# No LD_LIBRARY_PATH: the consumer's run path names the prefix, and the
# library finds liborvcore.so beside itself.
env -u LD_LIBRARY_PATH "$prefix/consumer/consumer"

export PKG_CONFIG_PATH="$libdir/pkgconfig"
cc tests/install/consumer.c -o "$prefix/consumer-pc" $(pkg-config --cflags --libs orvcc) -Wl,-rpath,"$libdir"
env -u LD_LIBRARY_PATH "$prefix/consumer-pc"
if [ -x "$prefix/bin/orvcc" ]; then
  env -u LD_LIBRARY_PATH "$prefix/bin/orvcc" info >/dev/null
  echo "installed tool runs"
fi
echo "install check passed"
