// What the Windows programs and the native reference writer share: the
// picture size, the cases, the source pictures (made, not read, so both
// sides start from the same bytes), the result files the script compares,
// and the programs' one assertion.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace sample_frames {

// Two fields of 64 lines: each slice of a field gets one macroblock row.
constexpr int32_t kWidth = 80, kHeight = 128;

constexpr uint32_t FourCC(const char (&t)[5]) {
  return uint32_t(uint8_t(t[0])) | uint32_t(uint8_t(t[1])) << 8 | uint32_t(uint8_t(t[2])) << 16 |
         uint32_t(uint8_t(t[3])) << 24;
}

// An uncompressed layout (biCompression 0 is RGB, bottom-up).
struct Layout {
  uint32_t compression;
  uint16_t bitCount;
};
constexpr Layout kYuy2{FourCC("YUY2"), 16}, kRgb24{0, 24}, kRgb32{0, 32};

// One frame through the compression manager each: 4:2:2 from packed YUV,
// 4:4:4 with run/value alpha from RGB with alpha. The AVI: three frames of
// 4:2:0 from bottom-up RGB. The graph: three frames of 4:2:2 made by the
// direct functions, decoded to YUY2.
struct VfwCase {
  const char* name;
  uint32_t fourcc;
  Layout layout;
};
constexpr VfwCase kVfwCases[] = {{"vfw_vtq2", FourCC("VTQ2"), kYuy2}, {"vfw_vtq5", FourCC("VTQ5"), kRgb32}};
constexpr uint32_t kAviFourCC = FourCC("VTQ0"), kGraphFourCC = FourCC("VTQ2");
constexpr int kFrames = 3;
constexpr uint32_t kStreamRoom = kWidth * kHeight * 6;  // room for any frame's stream

// The crash capture: the first graph frame with its first slice overwritten
// after its length field, so that its decode faults. In the capture
// directory an output file of "an earlier fault" already lies: the first
// fault creates the input file only, a second with another fill leaves both.
constexpr const char* kCaptureDirectory = "capture";
constexpr char kEarlierCapture[] = "an earlier capture\n";
constexpr uint8_t kFaultFills[] = {0xFF, 0xA5};

inline std::vector<uint8_t> DamagedFrame(std::vector<uint8_t> frame, uint8_t fill) {
  const size_t start = 4;  // behind the quality byte and the second-field offset
  const size_t length = frame[start] | frame[start + 1] << 8 | size_t(frame[start + 2]) << 16;
  for (size_t i = start + 3; i < start + length && i < frame.size(); ++i) frame[i] = fill;
  return frame;
}

constexpr size_t FrameBytes(const Layout& layout) { return size_t(kWidth) * kHeight * layout.bitCount / 8; }

// The description of `layout` at the test size, for either side's record.
template <typename BitmapHeader>
BitmapHeader PictureHeader(const Layout& layout) {
  return BitmapHeader{40, kWidth, kHeight, 1, layout.bitCount, layout.compression, uint32_t(FrameBytes(layout)), 0, 0,
                      0, 0};
}

// Ramps, a product term and noise, so that every block codes coefficients;
// `frame` shifts the picture.
inline std::vector<uint8_t> SourcePicture(const Layout& layout, int frame) {
  std::vector<uint8_t> bytes(FrameBytes(layout));
  uint32_t noise = 0x9E3779B9u + uint32_t(frame) * 0x85EBCA6Bu;
  const size_t line = bytes.size() / kHeight;
  for (size_t i = 0; i < bytes.size(); ++i) {
    noise = noise * 1664525u + 1013904223u;
    const size_t x = i % line + size_t(frame) * 7, y = i / line;
    bytes[i] = uint8_t(x * 3 + y * 5 + ((x * y) >> 4) + ((noise >> 24) & 15));
  }
  return bytes;
}

inline bool WriteResult(const std::string& directory, const std::string& name, const void* data, size_t size) {
  std::FILE* file = std::fopen((directory + "/" + name).c_str(), "wb");
  const bool written = file != nullptr && std::fwrite(data, 1, size, file) == size;
  return file != nullptr && std::fclose(file) == 0 && written;
}

}  // namespace sample_frames

// A failed expectation is reported with its line and the program goes on, so
// one run shows every difference; the exit code tells whether any failed.
namespace check {

inline int g_failures = 0;

inline bool Expect(bool holds, const char* what, int line) {
  if (!holds) std::fprintf(stderr, "line %d: expected %s\n", line, what);
  return g_failures += holds ? 0 : 1, holds;
}

// True when the program got OUTPUT_DIRECTORY and DLL_PATH.
inline bool HasArguments(int argc, char** argv) {
  if (argc != 3) std::fprintf(stderr, "usage: %s OUTPUT_DIRECTORY DLL_PATH\n", argv[0]);
  return argc == 3;
}

inline int ExitCode(const char* program) {
  std::printf("%s: %s\n", program, g_failures == 0 ? "passed" : "FAILED");
  return g_failures == 0 ? 0 : 1;
}

}  // namespace check

#define EXPECT(condition) ::check::Expect((condition), #condition, __LINE__)
