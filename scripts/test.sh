#!/usr/bin/env bash
# Builds and runs every test: an optimised build with the best vector kernels,
# the same suite on the SSE2 and on the scalar kernels, a build under AddressSanitizer and
# UndefinedBehaviorSanitizer, the threaded tests under ThreadSanitizer, a
# short pass of every fuzz target on its corpus, then the Windows DLL under
# Wine (installed when missing).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/bootstrap.sh
jobs=$(nproc)

# The benchmarks are not part of the test run; they build with
# -DVANTARO_BUILD_BENCH=ON (see README).
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release -DVANTARO_WERROR=ON >/dev/null
cmake --build build/release -j "$jobs"
ctest --test-dir build/release --output-on-failure -j "$jobs"

# Every kernel level below the automatic choice gives the same results.
for level in sse2 scalar; do
  echo "== the same suite on the $level kernels"
  VANTARO_KERNELS=$level ctest --test-dir build/release --output-on-failure -j "$jobs"
done

echo "== under AddressSanitizer and UndefinedBehaviorSanitizer"
cmake -S . -B build/asan -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVANTARO_WERROR=ON \
  -DVANTARO_SANITIZE=ON >/dev/null
cmake --build build/asan -j "$jobs"
ctest --test-dir build/asan --output-on-failure -j "$jobs"

echo "== the threaded tests under ThreadSanitizer"
# Only the suites that hold threaded cases are built: every test named for threads.
cmake -S . -B build/tsan -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVANTARO_WERROR=ON \
  -DVANTARO_SANITIZE_THREAD=ON >/dev/null
cmake --build build/tsan -j "$jobs" --target threads_tests codec_tests
TSAN_OPTIONS=halt_on_error=1 ctest --test-dir build/tsan --output-on-failure -j "$jobs" -R '[Tt]hreads'

echo "== each fuzz target for ${FUZZ_SECONDS:=15} s on its corpus"
FUZZ_SECONDS=$FUZZ_SECONDS scripts/fuzz.sh

echo "== the Windows DLL under Wine, compared with the native build"
scripts/test-windows.sh
