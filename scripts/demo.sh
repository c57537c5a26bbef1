#!/usr/bin/env bash
# Builds the library and the vantaro tool, then runs the main job: a synthetic
# interlaced sequence through all eight variants (table, demo.avi, contact sheet).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/bootstrap.sh
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build/release
mkdir -p build/demo
cd build/demo
../release/tools/vantaro demo
