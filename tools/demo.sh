#!/usr/bin/env bash
# Installs what is missing, builds the library and runs the demo.
#   tools/demo.sh [threads]
set -euo pipefail
cd "$(dirname "$0")/.."
tools/deps.sh
cmake -S . -B build >/dev/null
cmake --build build -j "$(nproc)" --target orvcc_demo
build/tools/orvcc_demo "$@"
