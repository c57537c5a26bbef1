// The DLL as a plain library: every name of its export list resolves, and a
// decode that faults inside it leaves the crash capture in the current
// directory, created new, never over an existing file. The capture files are
// compared by the script with those of the native build.
#include <windows.h>

#include <string>
#include <vector>

#include "check.h"
#include "sample_frames.h"

namespace {

using namespace sample_frames;

constexpr const char* kExports[] = {
    "VTC_CompressField",     "VTC_CompressFieldBegin",   "VTC_CompressFieldBeginQuality",
    "VTC_CompressFieldEnd",  "VTC_CompressFieldEx",      "VTC_CompressFrame",
    "VTC_CompressFrameEx",   "VTC_DecompressField",      "VTC_DecompressFieldBegin",
    "VTC_DecompressFieldEnd", "VTC_DecompressFieldEx",   "VTC_DecompressFrame",
    "VTC_DecompressFrameEx", "DriverProc",               "DllCanUnloadNow",
    "DllGetClassObject",     "DllRegisterServer",        "DllUnregisterServer",
};

using BeginFn = void* (*)(const BITMAPINFOHEADER*, uint32_t);
using FrameFn = int64_t (*)(void*, uint8_t*, const uint8_t*, int32_t);
using EndFn = int64_t (*)(void*);

template <typename T>
T Export(HMODULE module, const char* name) {
  return reinterpret_cast<T>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

void CaptureFaults(HMODULE module, const std::string& directory) {
  const auto compressBegin = Export<BeginFn>(module, "VTC_CompressFieldBegin");
  const auto compressFrame = Export<FrameFn>(module, "VTC_CompressFrame");
  const auto compressEnd = Export<EndFn>(module, "VTC_CompressFieldEnd");
  const auto decompressBegin = Export<BeginFn>(module, "VTC_DecompressFieldBegin");
  const auto decompressFrame = Export<FrameFn>(module, "VTC_DecompressFrame");
  const auto decompressEnd = Export<EndFn>(module, "VTC_DecompressFieldEnd");
  const auto header = PictureHeader<BITMAPINFOHEADER>(kYuy2);
  void* encoder = compressBegin(&header, kGraphFourCC);
  void* decoder = decompressBegin(&header, kGraphFourCC);
  std::vector<uint8_t> stream(kGraphFrameRoom);
  const std::vector<uint8_t> source = SourcePicture(kYuy2, 0);
  const int64_t length = compressFrame(encoder, stream.data(), source.data(), kWidth * 2);
  if (EXPECT(length > 4)) {
    stream.resize(static_cast<size_t>(length));
    const std::string capture = directory + "\\" + kCaptureDirectory;
    EXPECT(CreateDirectoryA(capture.c_str(), nullptr));
    EXPECT(WriteResult(capture, "VTQ_Crash_Output", kEarlierCapture,
                       sizeof kEarlierCapture - 1));
    char home[MAX_PATH];
    GetCurrentDirectoryA(MAX_PATH, home);
    EXPECT(SetCurrentDirectoryA(capture.c_str()));
    std::vector<uint8_t> picture(FrameBytes(kYuy2));
    for (const uint8_t fill : {kFirstFaultFill, kSecondFaultFill}) {
      const std::vector<uint8_t> damaged = DamagedFrame(stream, fill);
      EXPECT(decompressFrame(decoder, picture.data(), damaged.data(), kWidth * 2) == 0);
    }
    SetCurrentDirectoryA(home);
  }
  compressEnd(encoder);
  decompressEnd(decoder);
}

}  // namespace

int main(int argc, char** argv) {
  if (!check::HasArguments(argc, argv)) return 2;
  HMODULE module = LoadLibraryA(argv[2]);
  if (!EXPECT(module != nullptr)) return check::ExitCode("direct_exports");
  bool all = true;
  for (const char* name : kExports) {
    if (!EXPECT(GetProcAddress(module, name) != nullptr)) {
      std::fprintf(stderr, "  missing export %s\n", name);
      all = false;
    }
  }
  if (all) CaptureFaults(module, argv[1]);
  FreeLibrary(module);
  return check::ExitCode("direct_exports");
}
