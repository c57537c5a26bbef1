// Helpers for driving DriverProc as a host would: open instances, send
// messages with pointer parameters, make headers and pictures, and stand in
// for the platform with a recording fake.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "codec/codec_instance.h"
#include "platform/driver_host.h"
#include "vantaro/driver.h"

namespace vantaro::test {

inline int64_t AsParam(const void* p) { return static_cast<int64_t>(reinterpret_cast<intptr_t>(p)); }

inline int64_t Send(uint64_t id, uint32_t message, const void* p1 = nullptr, const void* p2 = nullptr) {
  return DriverProc(id, nullptr, message, AsParam(p1), AsParam(p2));
}

inline uint32_t Fcc(const char (&s)[5]) { return VTC_FOURCC(s[0], s[1], s[2], s[3]); }

// One open driver instance, closed on destruction.
class DriverInstance {
 public:
  explicit DriverInstance(uint32_t handler) {
    ICOPEN open{};
    open.dwSize = sizeof open;
    open.fccType = ICTYPE_VIDEO;
    open.fccHandler = handler;
    id_ = static_cast<uint64_t>(test::Send(0, DRV_OPEN, nullptr, &open));
  }
  ~DriverInstance() {
    if (id_ != 0) test::Send(id_, DRV_CLOSE);
  }
  DriverInstance(const DriverInstance&) = delete;
  DriverInstance& operator=(const DriverInstance&) = delete;

  uint64_t id() const { return id_; }
  // The instance behind the handle, for the state hosts cannot see.
  CodecInstance& codec() const { return *reinterpret_cast<CodecInstance*>(id_); }
  int64_t Send(uint32_t message, const void* p1 = nullptr, const void* p2 = nullptr) const {
    return test::Send(id_, message, p1, p2);
  }

 private:
  uint64_t id_ = 0;
};

inline BITMAPINFOHEADER Header(int32_t width, int32_t height, uint32_t compression,
                               uint16_t bits, uint32_t sizeImage = 0) {
  BITMAPINFOHEADER h{};
  h.biSize = sizeof h;
  h.biWidth = width;
  h.biHeight = height;
  h.biPlanes = 1;
  h.biBitCount = bits;
  h.biCompression = compression;
  h.biSizeImage = sizeImage;
  return h;
}

// Deterministic bytes that differ from line to line and frame to frame.
inline std::vector<uint8_t> Picture(size_t size, uint32_t seed) {
  std::vector<uint8_t> bytes(size);
  uint32_t state = seed * 2654435761u + 1;
  for (uint8_t& b : bytes) {
    state = state * 1664525u + 1013904223u;
    b = static_cast<uint8_t>(state >> 24);
  }
  return bytes;
}

// The platform as a test sees it: answers chosen by the test, calls recorded.
class FakeDriverHost final : public DriverHost {
 public:
  struct DefCall {
    uint64_t driverId;
    void* driverHandle;
    uint32_t message;
    int64_t lParam1;
    int64_t lParam2;
  };
  struct Box {
    std::string text;
    std::string title;
    uint32_t style;
  };

  FakeDriverHost() { SetDriverHost(this); }
  ~FakeDriverHost() override { SetDriverHost(nullptr); }

  int64_t DefDriverProc(uint64_t driverId, void* driverHandle, uint32_t message, int64_t lParam1,
                        int64_t lParam2) override {
    defCalls.push_back({driverId, driverHandle, message, lParam1, lParam2});
    return defResult;
  }
  bool ProcessorHasSse2() override {
    ++processorTests;
    return hasSse2;
  }
  void ShowMessageBox(const char* text, const char* title, uint32_t style) override {
    boxes.push_back({text, title, style});
  }
  void DebugOutput(const char* text) override { debugText += text; }

  bool hasSse2 = true;
  int64_t defResult = 0x5A5A;
  int processorTests = 0;
  std::vector<DefCall> defCalls;
  std::vector<Box> boxes;
  std::string debugText;
};

}  // namespace vantaro::test
