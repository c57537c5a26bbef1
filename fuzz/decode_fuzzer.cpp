// Decodes arbitrary bytes as a frame: the first two bytes pick the stream
// variant, the output layout and a small picture size, the rest is the
// stream, copied into a heap block of exactly its size so that AddressSanitizer
// catches any read past it. The picture buffers are sized exactly as the
// layout describes. The decoder must answer 0 and stay inside both.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <memory>
#include <vector>

#include "codec/codec_instance.h"
#include "codec/field_flow.h"
#include "codec/kernels.h"
#include "diagnostics/fault_capture.h"

namespace {

constexpr uint32_t kFourCCs[] = {0x30515456, 0x31515456, 0x32515456, 0x33515456,
                                 0x34515456, 0x35515456, 0x37515456, 0x39515456};  // VTQ0..VTQ9
constexpr uint32_t kLayouts[] = {1, 2, 3, 4, 5, 6, 8, 9, 10, 11, 12, 13};

// Bytes of the second plane a decoder may write for a frame call.
size_t ChromaBytes(uint32_t cs, int32_t stride, int32_t height) {
  const size_t lines = static_cast<size_t>(height) + 32;  // partial-row chroma lines included
  return cs == vantaro::kCsNV24 ? 2 * stride * lines : stride * lines;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool once = [] {
    const auto dir = std::filesystem::temp_directory_path() / "vantaro_decode_fuzzer";
    std::filesystem::create_directories(dir);
    vantaro::SetFaultCaptureDirectory(dir.string());
    return true;
  }();
  (void)once;
  // Three bytes of choices and a stream of at least one byte: a size of 0
  // would mean "unknown" to the field driver.
  if (size < 4) return 0;
  const uint32_t fourcc = kFourCCs[data[0] & 7];
  const uint32_t cs = kLayouts[(data[0] >> 3) % 12];
  const int32_t width = 16 * (1 + (data[1] & 3)) + ((data[1] >> 2) & 7);
  const int32_t height = 1 + (data[1] >> 5) * 13 + (data[2] & 31);
  vantaro::SetKernelOverride((data[2] & 32) == 0 ? vantaro::KernelOverride::kAutomatic
                                                  : vantaro::KernelOverride::kScalar);
  data += 3;
  size -= 3;

  vantaro::CodecInstance inst{};
  if (vantaro::InitInstance(&inst) != vantaro::Status::kOk) return 0;
  vantaro::SetStreamFormat(&inst, fourcc);
  inst.colorSpace = cs;
  inst.width = width;
  inst.height = height;

  const int32_t stride = width * vantaro::LayoutOf(cs).pixelBytes;
  const size_t mainBytes = static_cast<size_t>(stride) * height * (cs == vantaro::kCsUYVA ? 2 : 1);
  std::vector<uint8_t> picture(mainBytes + (cs == vantaro::kCsUYVA ? width : 0));
  std::vector<uint8_t> chroma(vantaro::IsPlanar(cs) ? ChromaBytes(cs, stride, height) : 0);
  std::unique_ptr<uint8_t[]> stream(new uint8_t[size]);
  std::memcpy(stream.get(), data, size);

  const int64_t result = vantaro::DecompressFrame(&inst, picture.data(),
                                                  chroma.empty() ? nullptr : chroma.data(),
                                                  stream.get(), stride, size);
  vantaro::ReleaseInstance(&inst);
  if (result != 0) __builtin_trap();
  return 0;
}
