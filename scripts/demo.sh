#!/usr/bin/env bash
# Builds the library and runs the main job: a frame through the codec and back.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/bootstrap.sh
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build/release
build/release/examples/roundtrip
