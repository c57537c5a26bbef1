// The DLL as a plain library, reached by name: it compresses the graph's
// frames (graph_N.stream, which dshow_graph then plays), and a decode that
// faults inside it leaves the crash capture in the current directory,
// created new, never over an existing file. The script compares both with
// the native build's (and the export list with the module-definition file).
#include <windows.h>

#include <string>
#include <vector>

#include "sample_frames.h"

namespace {

using namespace sample_frames;

template <typename T>
T Export(HMODULE module, const char* name) {
  const FARPROC function = GetProcAddress(module, name);
  EXPECT(function != nullptr);
  return reinterpret_cast<T>(reinterpret_cast<void*>(function));
}

}  // namespace

int main(int argc, char** argv) {
  if (!check::HasArguments(argc, argv)) return 2;
  HMODULE module = LoadLibraryA(argv[2]);
  if (!EXPECT(module != nullptr)) return check::ExitCode("direct_exports");
  using Begin = void* (*)(const BITMAPINFOHEADER*, uint32_t);
  using Frame = int64_t (*)(void*, uint8_t*, const uint8_t*, int32_t);
  using End = int64_t (*)(void*);
  const auto compressBegin = Export<Begin>(module, "VTC_CompressFieldBegin");
  const auto compressFrame = Export<Frame>(module, "VTC_CompressFrame");
  const auto compressEnd = Export<End>(module, "VTC_CompressFieldEnd");
  const auto decompressBegin = Export<Begin>(module, "VTC_DecompressFieldBegin");
  const auto decompressFrame = Export<Frame>(module, "VTC_DecompressFrame");
  const auto decompressEnd = Export<End>(module, "VTC_DecompressFieldEnd");
  if (check::g_failures != 0) return check::ExitCode("direct_exports");

  const auto header = PictureHeader<BITMAPINFOHEADER>(kYuy2);
  void* encoder = compressBegin(&header, kGraphFourCC);
  void* decoder = decompressBegin(&header, kGraphFourCC);
  std::vector<uint8_t> first, picture(FrameBytes(kYuy2));
  for (int f = 0; f < kFrames; ++f) {
    std::vector<uint8_t> stream(kStreamRoom);
    const int64_t length = compressFrame(encoder, stream.data(), SourcePicture(kYuy2, f).data(), kWidth * 2);
    if (!EXPECT(length > 4 && length <= int64_t(stream.size()))) break;
    stream.resize(size_t(length));
    EXPECT(WriteResult(argv[1], "graph_" + std::to_string(f) + ".stream", stream.data(), stream.size()));
    if (f == 0) first = stream;
  }
  const std::string capture = std::string(argv[1]) + "\\" + kCaptureDirectory;
  char home[MAX_PATH];
  GetCurrentDirectoryA(MAX_PATH, home);
  if (EXPECT(!first.empty()) && EXPECT(CreateDirectoryA(capture.c_str(), nullptr)) &&
      EXPECT(WriteResult(capture, "VTQ_Crash_Output", kEarlierCapture, sizeof kEarlierCapture - 1)) &&
      EXPECT(SetCurrentDirectoryA(capture.c_str()))) {
    for (const uint8_t fill : kFaultFills) {
      EXPECT(decompressFrame(decoder, picture.data(), DamagedFrame(first, fill).data(), kWidth * 2) == 0);
    }
    SetCurrentDirectoryA(home);
  }
  compressEnd(encoder);
  decompressEnd(decoder);
  FreeLibrary(module);
  return check::ExitCode("direct_exports");
}
