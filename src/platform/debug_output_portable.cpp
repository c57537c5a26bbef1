#include "platform/debug_output.h"

namespace vantaro {
namespace {
DebugOutputSink g_sink = nullptr;
}  // namespace

void DebugOutput(const char* text) {
  if (g_sink != nullptr) g_sink(text);
}

void SetDebugOutputSink(DebugOutputSink sink) { g_sink = sink; }

}  // namespace vantaro
