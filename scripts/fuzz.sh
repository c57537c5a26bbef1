#!/usr/bin/env bash
# Builds the libFuzzer targets (clang, AddressSanitizer and
# UndefinedBehaviorSanitizer) in build/fuzz, writes their seed corpora and
# runs each for a while on its corpus, one process at a time. Any finding
# stops the run; the input that caused it lands in build/fuzz/artifacts.
#   scripts/fuzz.sh                  every target for FUZZ_SECONDS (default 15) each
#   FUZZ_SECONDS=3600 scripts/fuzz.sh native_decode_fuzzer    one target, an hour
#   FUZZ_RUNS=1000000 scripts/fuzz.sh                          a number of inputs instead
set -euo pipefail
cd "$(dirname "$0")/.."
build=build/fuzz
targets=(native_decode_fuzzer direct_decode_fuzzer driver_decode_fuzzer round_trip_fuzzer
         avi_reader_fuzzer y4m_reader_fuzzer)
[ $# -gt 0 ] && targets=("$@")

CC=clang CXX=clang++ cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DVANTARO_BUILD_FUZZ=ON -DVANTARO_BUILD_TESTS=OFF >/dev/null
cmake --build "$build" -j "$(nproc)" --target write_seeds "${targets[@]}"

# Seeds are rewritten every run; what the runs add to the corpora stays.
"$build/fuzz/write_seeds" "$build/corpus"
mkdir -p "$build/artifacts"
limit=(-max_total_time="${FUZZ_SECONDS:-15}")
[ -n "${FUZZ_RUNS:-}" ] && limit=(-runs="$FUZZ_RUNS")
for target in "${targets[@]}"; do
  mkdir -p "$build/corpus/$target"
  log="$build/artifacts/$target.log"
  # Run from the artifacts folder, where libFuzzer drops a failing input.
  if ! (cd "$build/artifacts" && "../fuzz/$target" "${limit[@]}" -timeout=10 -rss_limit_mb=2048 \
          -print_final_stats=1 "../corpus/$target" >"$target.log" 2>&1); then
    tail -n 40 "$log"
    echo "$target found a fault; the input is in $build/artifacts"
    exit 1
  fi
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  echo "$target: $runs inputs, no fault"
done
