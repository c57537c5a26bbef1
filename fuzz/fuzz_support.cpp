#include "fuzz_support.h"

#include <filesystem>

#include "diagnostics/fault_capture.h"

namespace vantaro::fuzz {

void CaptureFaultsAside(const char* folder) {
  static const bool once = [folder] {
    const auto dir = std::filesystem::temp_directory_path() / folder;
    std::filesystem::create_directories(dir);
    SetFaultCaptureDirectory(dir.string());
    return true;
  }();
  (void)once;
}

namespace {

uint32_t ReadU24(const uint8_t* p) { return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16; }

void WriteU24(uint8_t* p, uint32_t v) {
  for (int i = 0; i < 3; ++i) p[i] = static_cast<uint8_t>(v >> (8 * i));
}

}  // namespace

bool FitFrameHeader(uint8_t* frame, size_t size) {
  constexpr size_t kSliceHeader = 3;
  if (size < 4 + 8 * kSliceHeader) return false;
  size_t pos = 4;
  for (int slice = 0; slice < 8; ++slice) {
    if (slice == 4) WriteU24(frame + 1, static_cast<uint32_t>(pos));
    // Room for this slice while leaving three bytes for each one after it.
    const size_t room = size - pos - (7 - slice) * kSliceHeader;
    if (room < kSliceHeader) return false;
    uint32_t length = ReadU24(frame + pos);
    if (length < kSliceHeader || length > room) {
      length = static_cast<uint32_t>(kSliceHeader + length % (room - kSliceHeader + 1));
      WriteU24(frame + pos, length);
    }
    pos += length;
  }
  return true;
}

}  // namespace vantaro::fuzz
