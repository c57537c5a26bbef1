// Driving DriverProc as a host would: one instance per handler, and a fake
// host behind the default path, the processor test and the message box.
#pragma once

#include <cstring>
#include <string>
#include <vector>

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
  DriverInstance(const DriverInstance&) = delete;
  DriverInstance& operator=(const DriverInstance&) = delete;
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

}  // namespace vantaro::test
