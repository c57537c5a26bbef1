#!/usr/bin/env bash
# Runs tjbench (libjpeg-turbo, the yardstick) and our codec on the same
# 1080-line photograph in one run, single-threaded, and prints megapixels a
# second and the ratios against the targets: VTQ2 at quality 96 decodes at
# least 2.5 times and encodes at least 1.5 times as fast as tjbench
# decompresses and compresses 4:2:2 planar YUV at its quality 90. Then every
# variant's megapixels and megablocks a second, and the native door on two
# slice threads against one (target: 1.8 times).
#
# Both sides are timed on the wall clock, alternately, RUNS times; medians
# are printed. On a shared machine the ratios are steadier than the rates.
#
#   bench/compare_tjbench.sh [--build DIR] [--runs N] [--time SECONDS] [PHOTO...]
#
# PHOTO is a name under ../shared/media (forest-path, fallen-leaf; default both).
set -euo pipefail

here="$(cd "$(dirname "$0")" && pwd)"
root="$(dirname "$here")"
build="$root/build/bench"
runs=3
seconds=2
photos=()
while [ $# -gt 0 ]; do
  case "$1" in
    --build) build="$2"; shift 2 ;;
    --runs) runs="$2"; shift 2 ;;
    --time) seconds="$2"; shift 2 ;;
    -h|--help) sed -n '2,15p' "$0"; exit 0 ;;
    *) photos+=("$1"); shift ;;
  esac
done
[ ${#photos[@]} -gt 0 ] || photos=(forest-path fallen-leaf)
media="$root/../shared/media"

if ! command -v tjbench >/dev/null 2>&1; then
  echo "Installing libjpeg-turbo-progs (tjbench)"
  SUDO=""
  [ "$(id -u)" -eq 0 ] || SUDO="sudo"
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq libjpeg-turbo-progs
fi

if [ ! -f "$build/CMakeCache.txt" ]; then
  "$root/scripts/bootstrap.sh" --bench
  cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVANTARO_BUILD_BENCH=ON >/dev/null
fi
cmake --build "$build" -j2 --target codec_bench png_to_ppm >/dev/null
bench="$build/bench/codec_bench"

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

echo "processor: $(grep -m1 'model name' /proc/cpuinfo | cut -d: -f2 | sed 's/^ *//'), $(nproc) cores"
echo "build:     $(grep -m1 '^CMAKE_BUILD_TYPE' "$build/CMakeCache.txt" | cut -d= -f2)"
echo "date:      $(date -u '+%Y-%m-%d %H:%M UTC'), load average $(cut -d' ' -f1-3 /proc/loadavg)"
echo "tjbench:   $(dpkg-query -W -f '${Version}' libjpeg-turbo-progs 2>/dev/null || echo '?'), quality 90, 4:2:2, -yuv"
echo

for photo in "${photos[@]}"; do
  png="$media/$photo-1920x1080.png"
  [ -f "$png" ] || { echo "no such photograph: $png" >&2; exit 1; }
  "$build/bench/png_to_ppm" "$png" "$work/$photo.ppm"
  : >"$work/$photo.tj"
  for run in $(seq "$runs"); do
    # Quiet output, one line: ... Width Height EncodePerf CompPerf Ratio DecompPerf DecodePerf.
    (cd "$work" && tjbench "$photo.ppm" 90 -yuv -subsamp 422 -benchtime "$seconds" \
      -warmup 1 -nowrite -quiet) | awk '$3 == "4:2:2" { print $8, $10 }' >>"$work/$photo.tj"
    "$bench" --benchmark_filter="^(Encode|Decode)/VTQ2/UYVY/$photo\$|^Native(Encode|Decode)/VTQ2/YUV422P/$photo(/threads:2)?/real_time\$" \
      --benchmark_min_time="$seconds" --benchmark_format=json --benchmark_out="$work/$photo.ours.$run.json" \
      --benchmark_out_format=json >/dev/null 2>&1
  done
  "$bench" --benchmark_filter="^(Encode|Decode)/VTQ[0-9]/[A-Z0-9]+/$photo\$" \
    --benchmark_min_time=0.5 --benchmark_repetitions="$runs" --benchmark_format=json \
    --benchmark_out="$work/$photo.all.json" --benchmark_out_format=json >/dev/null 2>&1

  python3 - "$work" "$photo" "$runs" <<'EOF'
import json, statistics, sys
work, photo, runs = sys.argv[1], sys.argv[2], int(sys.argv[3])
PIXELS = 1920 * 1080
SCALE = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}

def rates(doc):
    """Per benchmark name: (megapixels/s, megablocks/s, bits/pixel) on the wall clock."""
    out = {}
    for b in doc["benchmarks"]:
        if b.get("run_type") == "aggregate" or "error_occurred" in b:
            continue
        seconds = b["real_time"] * SCALE[b["time_unit"]]
        blocks_per_pixel = b["Mblock/s"] / b["Mpixel/s"] if b.get("Mpixel/s") else 0
        mp = PIXELS / seconds / 1e6
        # Benchmarks timed on the wall clock carry a /real_time suffix.
        name = b["name"].removesuffix("/real_time")
        out.setdefault(name, []).append((mp, mp * blocks_per_pixel, b.get("bits/pixel", 0)))
    return out

tj = [tuple(map(float, l.split())) for l in open(f"{work}/{photo}.tj") if l.strip()]
tj_comp = statistics.median(t[0] for t in tj)
tj_decomp = statistics.median(t[1] for t in tj)
ours = {}
for run in range(1, runs + 1):
    for name, values in rates(json.load(open(f"{work}/{photo}.ours.{run}.json"))).items():
        ours.setdefault(name, []).extend(values)
med = {name: statistics.median(v[0] for v in values) for name, values in ours.items()}

print(f"== {photo} (1920x1080), medians of {runs} runs, wall clock, one core")
print(f"  tjbench compress   {tj_comp:8.1f} Mpixel/s   (runs: {', '.join(f'{t[0]:.1f}' for t in tj)})")
print(f"  tjbench decompress {tj_decomp:8.1f} Mpixel/s   (runs: {', '.join(f'{t[1]:.1f}' for t in tj)})")
rows = [("VTQ2 encode, UYVY (direct)", f"Encode/VTQ2/UYVY/{photo}", tj_comp, 1.5),
        ("VTQ2 decode, UYVY (direct)", f"Decode/VTQ2/UYVY/{photo}", tj_decomp, 2.5),
        ("VTQ2 encode, YUV422P (native)", f"NativeEncode/VTQ2/YUV422P/{photo}", tj_comp, 1.5),
        ("VTQ2 decode, YUV422P (native)", f"NativeDecode/VTQ2/YUV422P/{photo}", tj_decomp, 2.5)]
for label, name, yardstick, target in rows:
    if name not in med:
        print(f"  {label:30s} missing")
        continue
    ratio = med[name] / yardstick
    verdict = "meets" if ratio >= target else "below"
    print(f"  {label:30s} {med[name]:8.1f} Mpixel/s  ratio {ratio:5.2f}  target {target:.1f}  {verdict}")

for label, name in (("encode", "NativeEncode"), ("decode", "NativeDecode")):
    one, two = f"{name}/VTQ2/YUV422P/{photo}", f"{name}/VTQ2/YUV422P/{photo}/threads:2"
    if one in med and two in med:
        scale = med[two] / med[one]
        verdict = "meets" if scale >= 1.8 else "below"
        print(f"  VTQ2 {label}, 2 slice threads   {med[two]:8.1f} Mpixel/s  x{scale:4.2f} one thread  "
              f"target 1.8  {verdict}")

print(f"  every variant (medians of {runs} repetitions):")
print(f"  {'benchmark':28s} {'Mpixel/s':>9s} {'Mblock/s':>9s} {'bits/pixel':>10s}")
everything = rates(json.load(open(f"{work}/{photo}.all.json")))
for name, values in everything.items():
    short = name.rsplit("/", 1)[0]
    print(f"  {short:28s} {statistics.median(v[0] for v in values):9.1f} "
          f"{statistics.median(v[1] for v in values):9.2f} {values[0][2]:10.3f}")
print()
EOF
done
