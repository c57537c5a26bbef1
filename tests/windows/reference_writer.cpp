// The native build's answers for the Windows programs: every case compressed
// and decoded by the direct functions (RGB bottom-up, as the compression
// manager and the AVI hand it over), and the crash capture of two faulting
// decodes, written as files for the script to compare with what the DLL
// produced through the system's doors.
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "sample_frames.h"
#include "vantaro/vantaro.h"

namespace {

using namespace sample_frames;

bool Write(const std::string& directory, const std::string& name, const std::vector<uint8_t>& bytes) {
  return WriteResult(directory, name, bytes.data(), bytes.size()) ||
         (std::fprintf(stderr, "cannot write %s\n", name.c_str()), false);
}

// Two faulting decodes of the graph's first frame in the capture directory:
// the first leaves the files.
bool CaptureFaults(const std::string& directory, const std::vector<uint8_t>& frame) {
  namespace fs = std::filesystem;
  const fs::path home = fs::current_path(), capture = fs::path(directory) / kCaptureDirectory;
  std::error_code error;
  fs::create_directories(capture, error);
  const std::vector<uint8_t> earlier(kEarlierCapture, kEarlierCapture + sizeof kEarlierCapture - 1);
  if (!Write(capture.string(), "VTQ_Crash_Output", earlier)) return false;
  fs::current_path(capture, error);
  const BITMAPINFOHEADER header = PictureHeader<BITMAPINFOHEADER>(kYuy2);
  void* decoder = VTC_DecompressFieldBegin(&header, kGraphFourCC);
  std::vector<uint8_t> picture(FrameBytes(kYuy2));
  for (const uint8_t fill : kFaultFills) {
    VTC_DecompressFrame(decoder, picture.data(), DamagedFrame(frame, fill).data(), kWidth * 2);
  }
  VTC_DecompressFieldEnd(decoder);
  fs::current_path(home);
  return !error && fs::exists(capture / "VTQ_Crash_Input") && fs::exists(capture / "VTQ_Crash_Output");
}

// `count` frames of `layout` compressed to `fourcc` and decoded back into
// the same layout; answers the first stream, or nothing on failure.
std::vector<uint8_t> Trip(const std::string& directory, const std::string& prefix, uint32_t fourcc,
                          const Layout& layout, int count) {
  const BITMAPINFOHEADER header = PictureHeader<BITMAPINFOHEADER>(layout);
  void* encoder = VTC_CompressFieldBegin(&header, fourcc);
  void* decoder = VTC_DecompressFieldBegin(&header, fourcc);
  const int32_t line = int32_t(FrameBytes(layout) / kHeight);
  const size_t last = layout.compression == 0 ? size_t(kHeight - 1) * line : 0;  // RGB starts at the bottom
  const int32_t stride = layout.compression == 0 ? -line : line;
  bool ok = encoder != nullptr && decoder != nullptr;
  std::vector<uint8_t> first;
  for (int f = 0; f < count && ok; ++f) {
    const std::vector<uint8_t> source = SourcePicture(layout, f);
    std::vector<uint8_t> stream(kStreamRoom), picture(FrameBytes(layout));
    stream.resize(size_t(VTC_CompressFrame(encoder, stream.data(), source.data() + last, stride)));
    VTC_DecompressFrame(decoder, picture.data() + last, stream.data(), stride);
    const std::string name = prefix + "_" + std::to_string(f);
    ok = Write(directory, name + ".stream", stream) && Write(directory, name + ".picture", picture);
    if (f == 0) first = stream;
  }
  VTC_CompressFieldEnd(encoder);
  VTC_DecompressFieldEnd(decoder);
  return ok ? first : std::vector<uint8_t>();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s OUTPUT_DIRECTORY\n", argv[0]);
    return 2;
  }
  bool ok = true;
  for (const VfwCase& c : kVfwCases) ok = !Trip(argv[1], c.name, c.fourcc, c.layout, 1).empty() && ok;
  ok = !Trip(argv[1], "avi", kAviFourCC, kRgb24, kFrames).empty() && ok;
  const std::vector<uint8_t> graph = Trip(argv[1], "graph", kGraphFourCC, kYuy2, kFrames);
  return !graph.empty() && CaptureFaults(argv[1], graph) && ok ? 0 : 1;
}
