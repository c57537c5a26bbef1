#!/usr/bin/env bash
# Cross-builds Codec.Vantaro.x64.dll and its test programs with MinGW-w64,
# runs them under Wine in a throwaway prefix (headless, every program under a
# timeout), and compares each stream and picture they write with the answers
# of the native build, byte for byte.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$(pwd)

need=()
command -v x86_64-w64-mingw32-g++-posix >/dev/null 2>&1 || need+=(g++-mingw-w64-x86-64)
[ -x /usr/lib/wine/wine64 ] || need+=(wine64)
if [ ${#need[@]} -gt 0 ]; then
  echo "Installing: ${need[*]}"
  SUDO=""
  [ "$(id -u)" -eq 0 ] || SUDO="sudo"
  $SUDO apt-get update -qq
  # Wine brings the GStreamer core and base libraries as its dependencies;
  # no plug-in package is wanted, nor anything recommended.
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "${need[@]}"
fi
scripts/bootstrap.sh
jobs=$(nproc)

echo "== native answers"
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release -DVANTARO_WERROR=ON >/dev/null
cmake --build build/release -j "$jobs" --target windows_reference
echo "== Windows DLL and programs"
cmake -S . -B build/windows -G Ninja -DCMAKE_BUILD_TYPE=Release -DVANTARO_WERROR=ON \
  -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64-x86_64.cmake" >/dev/null
cmake --build build/windows -j "$jobs"

failed=0
dll_file=build/windows/Codec.Vantaro.x64.dll
echo "== the DLL's imports and exports"
# Linked statically: system DLLs only, no MinGW runtime.
imports=$(x86_64-w64-mingw32-objdump -p "$dll_file" | sed -n 's/^\tDLL Name: //p' | tr 'A-Z' 'a-z' | sort)
echo "imports:" $imports
for name in $imports; do
  case "$name" in
    kernel32.dll | user32.dll | advapi32.dll | ole32.dll | winmm.dll | msvcrt.dll) ;;
    *) echo "FAILED: imports $name"; failed=1 ;;
  esac
done
# Exactly the names of the module-definition file, undecorated.
exports=$(x86_64-w64-mingw32-objdump -p "$dll_file" |
  sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/s/^\t\[ *[0-9]*\] //p' | sort)
listed=$(sed -n '/^EXPORTS/,$p' src/platform/windows/Codec.Vantaro.x64.def |
  sed -e 's/;.*//' -e 's/PRIVATE//' | tr -d ' \t' | grep -v '^EXPORTS$' | grep . | sort)
if [ "$exports" != "$listed" ]; then
  echo "FAILED: the exports differ from the module-definition file:"
  diff <(echo "$listed") <(echo "$exports") || true
  failed=1
else
  echo "exports: $(echo "$exports" | wc -l) names, as listed"
fi

results="$root/build/windows-results"
rm -rf "$results"
mkdir -p "$results/native" "$results/windows"
build/release/tests/windows/windows_reference "$results/native"

prefix=$(mktemp -d "${TMPDIR:-/tmp}/vantaro-wine.XXXXXX")
export WINEPREFIX="$prefix" WINEDEBUG=-all WINEARCH=win64
export WINEDLLOVERRIDES="mscoree,mshtml=;winealsa.drv,winepulse.drv="
unset DISPLAY WAYLAND_DISPLAY
wine=/usr/lib/wine/wine64
wineserver=/usr/lib/wine/wineserver
finish() {
  "$wineserver" -k >/dev/null 2>&1 || true
  rm -rf "$prefix"
}
trap finish EXIT

winpath() { local p="Z:$1"; echo "${p//\//\\}"; }
dll=$(winpath "$root/build/windows/Codec.Vantaro.x64.dll")
out=$(winpath "$results/windows")
programs="$root/build/windows/tests/windows"

echo "== Wine prefix"
timeout 180 "$wine" wineboot -i >/dev/null 2>&1
timeout 120 "$wineserver" -w

run() {
  echo "== $*"
  timeout 120 "$wine" "$@" || { echo "FAILED (exit $?): $*"; failed=1; }
}
run "$programs/vfw_roundtrip.exe" "$out" "$dll"
run "$programs/avifile_roundtrip.exe" "$out" "$dll"
run "$programs/direct_exports.exe" "$out" "$dll"
run regsvr32 /s "$dll"
run "$programs/dshow_graph.exe" "$out" "$dll"
run regsvr32 /s /u "$dll"
clsid='HKCR\CLSID\{30515456-0000-0010-8000-00AA00389B71}'
reg() { timeout 60 "$wine" reg "$@" 2>/dev/null; }
if reg query "$clsid" >/dev/null; then
  echo "FAILED: the class key outlived regsvr32 /u"; failed=1
fi
# Each filter the graphs made read its two settings, writing the defaults
# where they were missing.
settings=$(reg query 'HKCU\Software\Quorin\VTQ' | tr -d '\r' || true)
if ! grep -Eq 'InterlaceFlags +REG_DWORD +0x25$' <<<"$settings" ||
   ! grep -Eq 'TypeSpecificFlags +REG_DWORD +0x4$' <<<"$settings"; then
  echo "FAILED: the filter's settings are not the defaults 37 and 4:"; echo "$settings"
  failed=1
fi

# Registration through the older filter mapper, which it falls back to when
# the current one can't be made: hide the current one's server, register,
# and read what the older mapper recorded (merit, pins, the twelve input
# types), then unregister and bring the current one back.
echo "== registration through the older filter mapper"
mapper2='HKCR\CLSID\{CDA42200-BD88-11D0-BD4E-00A0C911CE86}\InprocServer32'
quartz=$(reg query "$mapper2" /ve | sed -n 's/.*REG_SZ *//p' | tr -d '\r' || true)
[ -n "$quartz" ] || { echo "FAILED: no server of the current filter mapper"; failed=1; }
reg delete "$mapper2" /f >/dev/null || true
run regsvr32 /s "$dll"
types=$(reg query "$clsid\Pins" /s | grep -c 'Input\\Types\\{73646976-0000-0010-8000-00AA00389B71}\\{' || true)
if ! reg query "$clsid" /v Merit | grep -q 0x800000 || [ "$types" != 12 ]; then
  echo "FAILED: the older mapper holds merit and $types input types, not 0x800000 and 12"
  failed=1
fi
run regsvr32 /s /u "$dll"
if reg query "$clsid" >/dev/null || reg query 'HKCR\Filter\{30515456-0000-0010-8000-00AA00389B71}' >/dev/null; then
  echo "FAILED: the older mapper's entries outlived regsvr32 /u"; failed=1
fi
reg add "$mapper2" /ve /d "$quartz" /f >/dev/null || true
reg add "$mapper2" /v ThreadingModel /d Both /f >/dev/null || true
timeout 120 "$wineserver" -w

echo "== byte comparison with the native build"
# A stream's length counts four bytes of slack behind the frame that the
# codec need not write, so they hold whatever the host's buffer held: the
# lengths must agree, and every byte before the slack.
compared=0
while IFS= read -r name; do
  reference="$results/native/$name"
  produced="$results/windows/$name"
  if [ ! -f "$produced" ]; then
    echo "missing: $name"; failed=1; continue
  fi
  size=$(stat -c %s "$reference")
  if [[ "$name" == *.stream ]]; then
    if [ "$size" != "$(stat -c %s "$produced")" ] ||
       ! cmp -s -n $((size - 4)) "$reference" "$produced"; then
      echo "differs: $name"; failed=1; continue
    fi
  elif ! cmp -s "$reference" "$produced"; then
    echo "differs: $name"; failed=1; continue
  fi
  compared=$((compared + 1))
done < <(cd "$results/native" && find . -type f | sed 's|^\./||' | sort)
echo "$compared results identical to the native build's"
[ "$compared" -gt 0 ] || failed=1
exit "$failed"
