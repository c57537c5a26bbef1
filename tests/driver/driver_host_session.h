// Driving DriverProc as a host would, and the direct functions' view of the
// same frames for comparison.
#pragma once

#include <cstring>
#include <string>
#include <vector>

#include "driver/driver_formats.h"
#include "platform/driver_host.h"
#include "support/pictures.h"
#include "vantaro/driver.h"

namespace vantaro::test {

inline int64_t Send(uint64_t id, uint32_t message, const void* p1 = nullptr, const void* p2 = nullptr) {
  return DriverProc(id, nullptr, message, reinterpret_cast<intptr_t>(p1), reinterpret_cast<intptr_t>(p2));
}

class DriverInstance {  // open for a handler, closed on destruction
 public:
  explicit DriverInstance(const char* handler) {
    ICOPEN open{};
    open.fccType = ICTYPE_VIDEO;
    open.fccHandler = FourCC(handler);
    id_ = static_cast<uint64_t>(test::Send(0, DRV_OPEN, nullptr, &open));
  }
  ~DriverInstance() { test::Send(id_, DRV_CLOSE); }
  uint64_t id() const { return id_; }
  CodecInstance& codec() const { return *reinterpret_cast<CodecInstance*>(id_); }
  int64_t Send(uint32_t message, const void* p1 = nullptr, const void* p2 = nullptr) const {
    return test::Send(id_, message, p1, p2);
  }

 private:
  uint64_t id_;
};

inline BITMAPINFOHEADER Header(int32_t w, int32_t h, uint32_t compression, uint16_t bits, uint32_t size = 0) {
  return BITMAPINFOHEADER{40, w, h, 1, bits, compression, size, 0, 0, 0, 0};
}


class FakeDriverHost final : public DriverHost {  // installed while it lives
 public:
  FakeDriverHost() { SetDriverHost(this); }
  ~FakeDriverHost() override { SetDriverHost(nullptr); }
  int64_t DefDriverProc(uint64_t id, void* handle, uint32_t message, int64_t p1, int64_t p2) override {
    defCalls.push_back({id, reinterpret_cast<uint64_t>(handle), message, static_cast<uint64_t>(p1),
                        static_cast<uint64_t>(p2)});
    return 0x5A5A;
  }
  bool ProcessorHasSse2() override { return ++processorTests, hasSse2; }
  void ShowMessageBox(const char* text, const char* title, uint32_t style) override {
    boxes.push_back(std::string(text) + "|" + title + "|" + std::to_string(style));
  }
  void DebugOutput(const char*) override {}

  bool hasSse2 = true;
  int processorTests = 0;
  std::vector<std::vector<uint64_t>> defCalls;
  std::vector<std::string> boxes;
};

struct Layout {
  const char* name;
  uint32_t compression;
  uint16_t bits;
};
inline const Layout kLayouts[] = {
    {"NV12", FourCC("NV12"), 12}, {"NV16", FourCC("NV16"), 16}, {"NV24", FourCC("NV24"), 24},
    {"YA20", FourCC("YA20"), 24}, {"YA22", FourCC("YA22"), 32}, {"YA44", FourCC("YA44"), 48},
    {"YUY2", FourCC("YUY2"), 16}, {"UYVY", FourCC("UYVY"), 16}, {"UYVY24", FourCC("UYVY"), 24},
    {"UYVA", FourCC("UYVA"), 24}, {"AYUV", FourCC("AYUV"), 32}, {"RGB24", 0, 24}, {"RGB32", 0, 32}};
inline const char* const kVariants[] = {"VTQ0", "VTQ1", "VTQ2", "VTQ3", "VTQ4", "VTQ5", "VTQ7", "VTQ9"};
inline bool AlphaVariant(const char* v) { return v[3] != '0' && v[3] != '2' && v[3] != '4'; }

// A driver frame's line, height, whole size and second-plane offset (0: none).
struct Geometry {
  int32_t line, height;
  size_t bytes, plane;
  bool bottomUpRgb;  // walked from its last line upward
};
inline Geometry GeometryOf(const BITMAPINFOHEADER& h, bool topDown) {
  const uint32_t cs = static_cast<uint32_t>(ColorSpaceFromHeader(&h));
  const int32_t height = WrapAbs(h.biHeight), line = DriverLineBytes(cs, h.biWidth);
  return {line, height, static_cast<size_t>(DriverFrameBytes(cs, h.biWidth, height)),
          IsPlanar(cs) ? static_cast<size_t>(height) * line : 0,
          !topDown && (cs == kCsRGB24 || cs == kCsRGB32)};
}

// The direct functions on the same picture: field calls with the second plane
// one line on for planar layouts, a frame call (upward for bottom-up RGB) else.
inline std::vector<uint8_t> DirectCompress(const char* variant, const BITMAPINFOHEADER& source,
                                           bool topDown, int32_t quality, const std::vector<uint8_t>& pic) {
  void* handle = VTC_CompressFieldBeginQuality(&source, FourCC(variant), quality);
  const Geometry g = GeometryOf(source, topDown);
  std::vector<uint8_t> stream(g.bytes * 4 + 4096);
  int64_t length;
  if (g.plane != 0) {
    VTC_CompressFieldEx(handle, stream.data(), pic.data(), pic.data() + g.plane, 2 * g.line, 0);
    length = VTC_CompressFieldEx(handle, stream.data(), pic.data() + g.line, pic.data() + g.plane + g.line,
                                 2 * g.line, 1);
  } else if (g.bottomUpRgb) {
    length = VTC_CompressFrame(handle, stream.data(), pic.data() + (g.height - 1) * g.line, -g.line);
  } else {
    length = VTC_CompressFrame(handle, stream.data(), pic.data(), g.line);
  }
  VTC_CompressFieldEnd(handle);
  stream.resize(static_cast<size_t>(length));
  return stream;
}

inline void DirectDecompress(const char* variant, const BITMAPINFOHEADER& output, bool topDown,
                             const std::vector<uint8_t>& stream, std::vector<uint8_t>& pic) {
  void* handle = VTC_DecompressFieldBegin(&output, FourCC(variant));
  const Geometry g = GeometryOf(output, topDown);
  if (g.plane != 0) {
    uint8_t* chroma = pic.data() + g.plane;
    VTC_DecompressFieldEx(handle, pic.data(), chroma, stream.data(), 2 * g.line, 0);
    VTC_DecompressFieldEx(handle, pic.data() + g.line, chroma + g.line, stream.data(), 2 * g.line, 1);
  } else if (g.bottomUpRgb) {
    VTC_DecompressFrame(handle, pic.data() + (g.height - 1) * g.line, stream.data(), -g.line);
  } else {
    VTC_DecompressFrame(handle, pic.data(), stream.data(), g.line);
  }
  VTC_DecompressFieldEnd(handle);
}

}  // namespace vantaro::test
