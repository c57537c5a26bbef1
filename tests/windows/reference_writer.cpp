// The native build's answers for the Windows programs: the same cases through
// the same front doors (the driver for the compression manager and the AVI,
// the direct functions for the graph's frames and the crash capture),
// written as files for the script to compare with what the DLL produced.
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "sample_frames.h"
#include "vantaro/driver.h"
#include "vantaro/vantaro.h"

namespace {

using namespace sample_frames;

int64_t Send(uint64_t id, uint32_t message, const void* p1, const void* p2 = nullptr) {
  return DriverProc(id, nullptr, message, reinterpret_cast<intptr_t>(p1), reinterpret_cast<intptr_t>(p2));
}

bool Write(const std::string& directory, const std::string& name, const std::vector<uint8_t>& bytes) {
  return WriteResult(directory, name, bytes.data(), bytes.size()) || (std::fprintf(stderr, "cannot write %s\n", name.c_str()), false);
}

uint64_t Open(uint32_t fourcc) {
  ICOPEN open{0, ICTYPE_VIDEO, fourcc, 0, 0, 0, nullptr, nullptr, 0};
  return static_cast<uint64_t>(Send(0, DRV_OPEN, nullptr, &open));
}

// The messages a compression manager sends, on one open for compressing
// each frame and another for decompressing each stream into the same layout.
bool DriverTrip(const std::string& directory, const std::string& prefix, uint32_t fourcc, const Layout& layout,
                int count) {
  const uint64_t encoder = Open(fourcc), decoder = Open(fourcc);
  BITMAPINFOHEADER input = PictureHeader<BITMAPINFOHEADER>(layout), compressed{};
  bool ok = Send(encoder, ICM_COMPRESS_QUERY, &input) == ICERR_OK &&
            Send(encoder, ICM_COMPRESS_GET_FORMAT, &input, &compressed) == ICERR_OK;
  const int64_t room = ok ? Send(encoder, ICM_COMPRESS_GET_SIZE, &input, &compressed) : 0;
  ok = ok && Send(encoder, ICM_COMPRESS_BEGIN, &input, &compressed) == ICERR_OK &&
       Send(decoder, ICM_DECOMPRESS_QUERY, &compressed, &input) == ICERR_OK &&
       Send(decoder, ICM_DECOMPRESS_BEGIN, &compressed, &input) == ICERR_OK;
  for (int f = 0; f < count && ok; ++f) {
    std::vector<uint8_t> source = SourcePicture(layout, f), picture(FrameBytes(layout));
    std::vector<uint8_t> stream(static_cast<size_t>(room));
    BITMAPINFOHEADER output = compressed;
    uint32_t flags = 0, chunk = 0;
    ICCOMPRESS work{0, &output, stream.data(), &input, source.data(), &chunk, &flags, 0, 0, 0, nullptr, nullptr};
    ok = Send(encoder, ICM_COMPRESS, &work, reinterpret_cast<void*>(sizeof work)) == ICERR_OK;
    stream.resize(output.biSizeImage);
    ICDECOMPRESS back{0, &output, stream.data(), &input, picture.data(), 0};
    ok = ok && Send(decoder, ICM_DECOMPRESS, &back, reinterpret_cast<void*>(sizeof back)) == ICERR_OK;
    const std::string name = prefix + "_" + std::to_string(f);
    ok = ok && Write(directory, name + ".stream", stream) && Write(directory, name + ".picture", picture);
  }
  Send(encoder, DRV_CLOSE, nullptr);
  Send(decoder, DRV_CLOSE, nullptr);
  if (!ok) std::fprintf(stderr, "%s: the driver refused the trip\n", prefix.c_str());
  return ok;
}

// Two faulting decodes in the capture directory: the first leaves the files.
bool CaptureFaults(const std::string& directory, void* decoder, const std::vector<uint8_t>& frame) {
  namespace fs = std::filesystem;
  const fs::path home = fs::current_path(), capture = fs::path(directory) / kCaptureDirectory;
  std::error_code error;
  fs::create_directories(capture, error);
  const std::vector<uint8_t> earlier(kEarlierCapture, kEarlierCapture + sizeof kEarlierCapture - 1);
  if (!Write(capture.string(), "VTQ_Crash_Output", earlier)) return false;
  fs::current_path(capture, error);
  std::vector<uint8_t> picture(FrameBytes(kYuy2));
  for (const uint8_t fill : kFaultFills) {
    VTC_DecompressFrame(decoder, picture.data(), DamagedFrame(frame, fill).data(), kWidth * 2);
  }
  fs::current_path(home);
  return !error && fs::exists(capture / "VTQ_Crash_Input") && fs::exists(capture / "VTQ_Crash_Output");
}

// The graph's frames: compressed and, as the filter does, decoded whole at
// the output line length, top-down, both by the direct functions.
bool GraphFrames(const std::string& directory) {
  const BITMAPINFOHEADER header = PictureHeader<BITMAPINFOHEADER>(kYuy2);
  void* encoder = VTC_CompressFieldBegin(&header, kGraphFourCC);
  void* decoder = VTC_DecompressFieldBegin(&header, kGraphFourCC);
  bool ok = encoder != nullptr && decoder != nullptr;
  for (int f = 0; f < kFrames && ok; ++f) {
    std::vector<uint8_t> stream(kGraphFrameRoom), picture(FrameBytes(kYuy2));
    stream.resize(size_t(VTC_CompressFrame(encoder, stream.data(), SourcePicture(kYuy2, f).data(), kWidth * 2)));
    VTC_DecompressFrame(decoder, picture.data(), stream.data(), kWidth * 2);
    const std::string name = "graph_" + std::to_string(f);
    ok = Write(directory, name + ".stream", stream) && Write(directory, name + ".picture", picture) &&
         (f != 0 || CaptureFaults(directory, decoder, stream));
  }
  VTC_CompressFieldEnd(encoder);
  VTC_DecompressFieldEnd(decoder);
  return ok;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s OUTPUT_DIRECTORY\n", argv[0]);
    return 2;
  }
  bool ok = true;
  for (const VfwCase& c : kVfwCases) ok = DriverTrip(argv[1], c.name, c.fourcc, c.layout, 1) && ok;
  ok = DriverTrip(argv[1], "avi", kAviFourCC, kRgb24, kFrames) && ok;
  return GraphFrames(argv[1]) && ok ? 0 : 1;
}
