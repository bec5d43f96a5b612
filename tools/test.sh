#!/usr/bin/env bash
# Installs what is missing, configures, builds and runs the test suite.
#   tools/test.sh [build-dir] [cmake options...]
set -euo pipefail
cd "$(dirname "$0")/.."
tools/deps.sh
dir=${1:-build}
shift || true
cmake -S . -B "$dir" -DORVCC_BUILD_TESTS=ON "$@" >/dev/null
cmake --build "$dir" -j "$(nproc)"
ctest --test-dir "$dir" --output-on-failure -j "$(nproc)"
# Outside CI, make this build's Python module importable by python3.
[ "${CI:-}" = true ] || tools/python-dev.sh "$dir"
