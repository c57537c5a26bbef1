// What the video-compression driver needs from the platform: the default
// handler for driver messages it does not answer, the processor feature
// test, a message box and the debugger output. The driver reaches them only
// through this interface, so its message logic builds and runs anywhere.
#pragma once

#include <cstdint>

namespace vantaro {

class DriverHost {
 public:
  virtual ~DriverHost() = default;

  // The platform's default answer to a driver message, given all five
  // arguments unchanged.
  virtual int64_t DefDriverProc(uint64_t driverId, void* driverHandle, uint32_t message,
                                int64_t lParam1, int64_t lParam2) = 0;
  virtual bool ProcessorHasSse2() = 0;
  // A modal box with no owner window; `style` is the platform's style value.
  virtual void ShowMessageBox(const char* text, const char* title, uint32_t style) = 0;
  virtual void DebugOutput(const char* text) = 0;
};

// The host the driver talks to: the platform's own unless a test has
// installed another. Process-wide and not synchronised.
DriverHost& CurrentDriverHost();
// Installs `host` (not owned) for every later message; null restores the
// platform's own.
void SetDriverHost(DriverHost* host);

}  // namespace vantaro
