// Deterministic synthetic pictures and small stream helpers for the suites:
// frames of the direct layouts for the internal drivers, and pictures of any
// public format, with guard bytes, for the native door.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "codec/codec_instance.h"
#include "vantaro/vantaro.h"

namespace vantaro::test {

// The one codec instance wrapper of the suites, for direct use of the
// internal drivers: format fields set by hand, released on destruction.
class TestInstance {
 public:
  explicit TestInstance(uint32_t fourcc = 0, uint32_t colorSpace = kCsInvalid, int32_t width = 0, int32_t height = 0);
  ~TestInstance() { ReleaseInstance(&value_); }
  TestInstance(const TestInstance&) = delete;
  TestInstance& operator=(const TestInstance&) = delete;
  CodecInstance* get() { return &value_; }
  const CodecInstance* get() const { return &value_; }
  CodecInstance* operator->() { return &value_; }

 private:
  CodecInstance value_;
};

// The suites' one FourCC helper: from four characters or a four-letter string.
constexpr uint32_t FourCC(char a, char b, char c, char d) {
  return uint32_t(uint8_t(a)) | uint32_t(uint8_t(b)) << 8 | uint32_t(uint8_t(c)) << 16 | uint32_t(uint8_t(d)) << 24;
}
constexpr uint32_t FourCC(const char* s) { return FourCC(s[0], s[1], s[2], s[3]); }

// Bytes of a picture with smooth gradients, edges and a little noise, so
// that blocks carry DC, low and high frequencies; same seed, same bytes.
std::vector<uint8_t> PatternBytes(size_t count, uint32_t seed, int32_t lineBytes);

// A frame of a packed layout, its lines `stride` apart, with 40 lines of
// pattern below the picture.
struct Frame {
  std::vector<uint8_t> main;
  int32_t stride = 0;
};
Frame MakeFrame(uint32_t colorSpace, int32_t width, int32_t height, uint32_t seed);

uint64_t Fnv1a64(const uint8_t* data, size_t size);

// Compresses a frame as the direct functions do: the size CompressFrame
// reports, or 0 when it fails.
int64_t CompressFrameSize(CodecInstance* instance, uint8_t* stream, size_t capacity,
                          const uint8_t* picture, const uint8_t* chroma, int32_t stride);

// Compresses a frame; returns the stream cut to the reported size minus 4.
std::vector<uint8_t> CompressFrameBytes(CodecInstance* instance, const Frame& frame);

// ---- The native door ----

constexpr uint8_t kGuard = 0xA5;
constexpr uint32_t kVariantFourCCs[] = {VANTARO_FOURCC_VTQ0, VANTARO_FOURCC_VTQ1, VANTARO_FOURCC_VTQ2,
                                        VANTARO_FOURCC_VTQ3, VANTARO_FOURCC_VTQ4, VANTARO_FOURCC_VTQ5,
                                        VANTARO_FOURCC_VTQ7, VANTARO_FOURCC_VTQ9};
constexpr vantaro_format kPlaneSets[] = {VANTARO_FORMAT_YUV420P, VANTARO_FORMAT_YUVA420P, VANTARO_FORMAT_YUV422P,
                                         VANTARO_FORMAT_YUVA422P, VANTARO_FORMAT_YUV444P, VANTARO_FORMAT_YUVA444P};
// VTQ0, VTQ2 and VTQ4 carry no alpha.
inline bool StreamHasAlpha(uint32_t fourcc) {
  return fourcc != VANTARO_FOURCC_VTQ0 && fourcc != VANTARO_FOURCC_VTQ2 && fourcc != VANTARO_FOURCC_VTQ4;
}
inline std::string Name(uint32_t fourcc) { return std::string(reinterpret_cast<const char*>(&fourcc), 4); }

struct Extent {
  int32_t bytes, lines;  // a line's bytes (pixel-pair padding included) and the lines
};

// A picture in one buffer, planes as vantaro_picture_fill lays them out,
// between guard bytes.
struct Picture {
  static constexpr size_t kGuardBytes = 64;
  std::vector<uint8_t> bytes;
  vantaro_picture pic{};
  Picture(vantaro_format format, int32_t w, int32_t h);
  Extent Of(int p) const;
  uint8_t& At(int p, int32_t x, int32_t y) const { return pic.planes[p][ptrdiff_t(y) * pic.strides[p] + x]; }
  bool GuardsIntact() const;
};

// kSmooth: gradients that wrap; kRamp: no wrap up to 140 samples a side, so
// resampling loses little; kNoise: uniform noise.
enum class Content { kSmooth, kRamp, kNoise };
void Fill(Picture& p, Content content, uint32_t seed = 7);
// PSNR of plane `plane` over the bytes x % step == phase of each line.
double Psnr(const Picture& a, const Picture& b, int plane, int32_t step = 1, int32_t phase = 0);

// A fresh encoder or decoder for one call; the status, and the frame on success.
vantaro_status Encode(uint32_t fourcc, const vantaro_picture& p, int32_t quality, std::vector<uint8_t>& frame,
                      const vantaro_options* options = nullptr);
vantaro_status Decode(uint32_t fourcc, const std::vector<uint8_t>& frame, const vantaro_picture& p,
                      vantaro_decode_report* report = nullptr, const vantaro_options* options = nullptr);
vantaro_options WithThreads(int32_t threads);

}  // namespace vantaro::test
