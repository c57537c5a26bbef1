// What the Windows programs and the native reference writer share: the
// picture size, the cases each program runs, the source pictures (made, not
// read, so both sides start from the same bytes) and the file names of the
// results, which the script compares byte for byte.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace sample_frames {

// Two fields of 64 lines: each slice of a field gets one macroblock row.
constexpr int32_t kWidth = 80;
constexpr int32_t kHeight = 128;

constexpr uint32_t FourCC(const char (&text)[5]) {
  return static_cast<uint32_t>(static_cast<uint8_t>(text[0])) |
         (static_cast<uint32_t>(static_cast<uint8_t>(text[1])) << 8) |
         (static_cast<uint32_t>(static_cast<uint8_t>(text[2])) << 16) |
         (static_cast<uint32_t>(static_cast<uint8_t>(text[3])) << 24);
}

// One trip through the compressor and back: the stream variant, and the
// uncompressed layout on both sides (biCompression 0 is RGB, bottom-up).
struct Layout {
  uint32_t compression;
  uint16_t bitCount;
};
struct VfwCase {
  const char* name;
  uint32_t fourcc;
  Layout source;
  Layout output;
};

constexpr Layout kYuy2{FourCC("YUY2"), 16};
constexpr Layout kRgb24{0, 24};
constexpr Layout kRgb32{0, 32};

// Plain 4:2:2 from packed YUV, 4:2:0 from bottom-up RGB, and 4:4:4 with
// run/value alpha from RGB with alpha.
constexpr VfwCase kVfwCases[] = {
    {"vtq2_yuy2", FourCC("VTQ2"), kYuy2, kYuy2},
    {"vtq0_rgb24", FourCC("VTQ0"), kRgb24, kRgb24},
    {"vtq5_rgb32", FourCC("VTQ5"), kRgb32, kRgb32},
};

// The AVI: three frames of VTQ2 written from RGB24, read back as RGB24.
constexpr uint32_t kAviFourCC = FourCC("VTQ2");
constexpr int kAviFrames = 3;

// The graph: three frames of VTQ2, compressed from YUY2 by the direct
// functions into buffers of the room the driver asks for, decoded to YUY2.
constexpr uint32_t kGraphFourCC = FourCC("VTQ2");
constexpr int kGraphFrames = 3;
constexpr uint32_t kGraphFrameRoom = kWidth * kHeight * 6;

// The crash capture: a graph frame whose first slice is overwritten with
// `fill` after its length field, so that its first field's decode faults.
// The capture files land in this subdirectory of the results, where an
// output file from "an earlier fault" already lies: the first fault must
// create the input file only, and a second fault, with another fill, must
// leave both as they were.
constexpr const char* kCaptureDirectory = "capture";
constexpr char kEarlierCapture[] = "an earlier capture\n";
constexpr uint8_t kFirstFaultFill = 0xFF;
constexpr uint8_t kSecondFaultFill = 0xA5;

inline std::vector<uint8_t> DamagedFrame(std::vector<uint8_t> frame, uint8_t fill) {
  const size_t sliceStart = 4;  // behind the quality byte and the second-field offset
  const size_t length = frame[sliceStart] | (frame[sliceStart + 1] << 8) |
                        (static_cast<size_t>(frame[sliceStart + 2]) << 16);
  for (size_t i = sliceStart + 3; i < sliceStart + length && i < frame.size(); ++i) {
    frame[i] = fill;
  }
  return frame;
}

constexpr size_t FrameBytes(const Layout& layout) {
  return static_cast<size_t>(kWidth) * kHeight * layout.bitCount / 8;
}

// The picture description of `layout` at the test size, positive height (RGB
// bottom-up), for either side's bitmap header record.
template <typename BitmapHeader>
BitmapHeader PictureHeader(const Layout& layout) {
  BitmapHeader header{};
  header.biSize = sizeof header;
  header.biWidth = kWidth;
  header.biHeight = kHeight;
  header.biPlanes = 1;
  header.biBitCount = layout.bitCount;
  header.biCompression = layout.compression;
  header.biSizeImage = static_cast<uint32_t>(FrameBytes(layout));
  return header;
}

// A picture with structure at every scale (ramps, a product term, noise) so
// that every block codes coefficients; `frame` shifts it.
inline std::vector<uint8_t> SourcePicture(const Layout& layout, int frame) {
  std::vector<uint8_t> bytes(FrameBytes(layout));
  uint32_t noise = 0x9E3779B9u + static_cast<uint32_t>(frame) * 0x85EBCA6Bu;
  const size_t line = bytes.size() / kHeight;
  for (size_t y = 0; y < static_cast<size_t>(kHeight); ++y) {
    for (size_t i = 0; i < line; ++i) {
      noise = noise * 1664525u + 1013904223u;
      const size_t x = i + static_cast<size_t>(frame) * 7;
      bytes[y * line + i] =
          static_cast<uint8_t>(x * 3 + y * 5 + ((x * y) >> 4) + ((noise >> 24) & 15));
    }
  }
  return bytes;
}

inline std::string ResultPath(const std::string& directory, const std::string& name) {
  return directory + "/" + name;
}

inline bool WriteResult(const std::string& directory, const std::string& name, const void* data,
                        size_t size) {
  std::FILE* file = std::fopen(ResultPath(directory, name).c_str(), "wb");
  if (file == nullptr) return false;
  const bool written = std::fwrite(data, 1, size, file) == size;
  return std::fclose(file) == 0 && written;
}

}  // namespace sample_frames
