#include "diagnostics/fault_capture.h"

#include <cstring>

#include "platform/debug_output.h"
#include "platform/files.h"

namespace vantaro {
namespace {

std::string g_directory;

std::string CapturePath(const char* name) {
  if (g_directory.empty()) return name;
  return g_directory + "/" + name;
}

void CaptureRegion(const char* name, const uint8_t* data, size_t readable, uint32_t size,
                   const char* fallback) {
  NewFile file(CapturePath(name));
  if (!file.IsOpen()) return;  // an earlier fault was captured here already
  if (data != nullptr && size <= readable) {
    file.Write(data, size);
  } else {
    file.Write(fallback, std::strlen(fallback));
  }
}

}  // namespace

int ExceptCatch(const CodecInstance* /*instance*/, const uint8_t* picture, size_t pictureReadable,
                const uint8_t* stream, size_t streamReadable, int32_t /*stride*/,
                uint32_t /*field*/) {
  DebugOutput("ExceptCatch: Called\n");
  // n covers the quality byte and the low two bytes of the second-field offset.
  uint32_t n = 0;
  if (stream != nullptr && streamReadable >= 3) {
    n = static_cast<uint32_t>(stream[0]) | (static_cast<uint32_t>(stream[1]) << 8) |
        (static_cast<uint32_t>(stream[2]) << 16);
  }
  const uint32_t inputSize = n * 5u + 1u;
  CaptureRegion("VTQ_Crash_Input", streamReadable >= 3 ? stream : nullptr, streamReadable,
                inputSize, "Could Not Read Input Memory.\n");
  // 720 x 480 at two bytes a pixel, whatever the picture's real size.
  CaptureRegion("VTQ_Crash_Output", picture, pictureReadable, 691200u,
                "Could Not Read Outputput Memory.\n");
  return 1;
}

void SetFaultCaptureDirectory(const std::string& directory) { g_directory = directory; }

}  // namespace vantaro
