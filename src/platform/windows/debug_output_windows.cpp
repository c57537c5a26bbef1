// Text for an attached debugger goes to the system's debugger channel, unless
// a test has installed a sink.
#include "platform/debug_output.h"
#include "platform/windows/windows_headers.h"

namespace vantaro {
namespace {
DebugOutputSink g_sink = nullptr;
}  // namespace

void DebugOutput(const char* text) {
  if (g_sink != nullptr) {
    g_sink(text);
  } else {
    OutputDebugStringA(text);
  }
}

void SetDebugOutputSink(DebugOutputSink sink) { g_sink = sink; }

}  // namespace vantaro
