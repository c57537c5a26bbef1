// Text for an attached debugger. On the platform this is the debugger output
// channel; the portable build writes nowhere unless a sink is installed.
#pragma once

namespace vantaro {

void DebugOutput(const char* text);

// Tests install a sink to see what the library tells a debugger. Null
// restores the default. The sink is process-wide and not synchronised.
using DebugOutputSink = void (*)(const char* text);
void SetDebugOutputSink(DebugOutputSink sink);

}  // namespace vantaro
