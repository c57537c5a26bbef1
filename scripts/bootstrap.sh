#!/usr/bin/env bash
# Installs whatever the build needs and this machine lacks (Debian 12): the
# compiler and build tools, GoogleTest, and libpng for the vantaro tool's PNG
# input and output; `--bench` adds Google Benchmark.
set -euo pipefail

need=()
command -v cmake >/dev/null 2>&1 || need+=(cmake)
command -v ninja >/dev/null 2>&1 || need+=(ninja-build)
command -v g++ >/dev/null 2>&1 || need+=(g++)
command -v clang++ >/dev/null 2>&1 || need+=(clang)  # the fuzz targets (libFuzzer)
[ -f /usr/include/gtest/gtest.h ] || need+=(libgtest-dev)
[ -f /usr/include/png.h ] || need+=(libpng-dev)
[ -f /usr/include/zlib.h ] || need+=(zlib1g-dev)
if [ "${1:-}" = "--bench" ]; then
  [ -f /usr/include/benchmark/benchmark.h ] || need+=(libbenchmark-dev)
fi

if [ ${#need[@]} -gt 0 ]; then
  echo "Installing: ${need[*]}"
  SUDO=""
  [ "$(id -u)" -eq 0 ] || SUDO="sudo"
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${need[@]}"
fi
