// The native build's answers for the Windows programs: the same cases through
// the same front doors (the driver entry for the compressor and the AVI, the
// direct functions the filter decodes with), written as files for the script
// to compare with what the DLL produced under the Windows host.
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "sample_frames.h"
#include "vantaro/driver.h"
#include "vantaro/vantaro.h"

namespace {

using sample_frames::Layout;

BITMAPINFOHEADER Header(const Layout& layout) {
  return sample_frames::PictureHeader<BITMAPINFOHEADER>(layout);
}

int64_t Address(const void* p) { return static_cast<int64_t>(reinterpret_cast<intptr_t>(p)); }

// One open of the driver, sent the messages a compression manager sends.
class Driver {
 public:
  explicit Driver(uint32_t fourcc) {
    DriverProc(0, nullptr, DRV_LOAD, 0, 0);
    DriverProc(0, nullptr, DRV_ENABLE, 0, 0);
    ICOPEN open{};
    open.dwSize = sizeof open;
    open.fccType = ICTYPE_VIDEO;
    open.fccHandler = fourcc;
    id_ = static_cast<uint64_t>(DriverProc(0, nullptr, DRV_OPEN, 0, Address(&open)));
  }
  ~Driver() {
    Send(DRV_CLOSE, 0, 0);
    DriverProc(0, nullptr, DRV_DISABLE, 0, 0);
    DriverProc(0, nullptr, DRV_FREE, 0, 0);
  }
  Driver(const Driver&) = delete;
  Driver& operator=(const Driver&) = delete;

  bool IsOpen() const { return id_ != 0; }
  int64_t Send(uint32_t message, int64_t p1, int64_t p2) {
    return DriverProc(id_, nullptr, message, p1, p2);
  }

 private:
  uint64_t id_ = 0;
};

// Query, format, size, begin, the frames, end: as the Windows program asks.
std::vector<std::vector<uint8_t>> Compress(uint32_t fourcc, const Layout& source,
                                           const std::vector<std::vector<uint8_t>>& frames,
                                           BITMAPINFOHEADER* compressed) {
  Driver driver(fourcc);
  BITMAPINFOHEADER input = Header(source);
  std::vector<std::vector<uint8_t>> streams;
  if (!driver.IsOpen() || driver.Send(ICM_COMPRESS_QUERY, Address(&input), 0) != ICERR_OK ||
      driver.Send(ICM_COMPRESS_GET_FORMAT, Address(&input), Address(compressed)) != ICERR_OK) {
    return streams;
  }
  const int64_t room = driver.Send(ICM_COMPRESS_GET_SIZE, Address(&input), Address(compressed));
  if (driver.Send(ICM_COMPRESS_BEGIN, Address(&input), Address(compressed)) != ICERR_OK) {
    return streams;
  }
  for (const std::vector<uint8_t>& frame : frames) {
    std::vector<uint8_t> stream(static_cast<size_t>(room));
    BITMAPINFOHEADER output = *compressed;
    uint32_t flags = 0;
    uint32_t chunk = 0;
    ICCOMPRESS work{};
    work.lpbiOutput = &output;
    work.lpOutput = stream.data();
    work.lpbiInput = &input;
    work.lpInput = const_cast<uint8_t*>(frame.data());
    work.lpckid = &chunk;
    work.lpdwFlags = &flags;
    if (driver.Send(ICM_COMPRESS, Address(&work), sizeof work) != ICERR_OK) return {};
    stream.resize(output.biSizeImage);
    streams.push_back(stream);
  }
  driver.Send(ICM_COMPRESS_END, 0, 0);
  return streams;
}

std::vector<std::vector<uint8_t>> Decompress(uint32_t fourcc, BITMAPINFOHEADER compressed,
                                             const Layout& layout,
                                             const std::vector<std::vector<uint8_t>>& streams) {
  Driver driver(fourcc);
  BITMAPINFOHEADER output = Header(layout);
  std::vector<std::vector<uint8_t>> pictures;
  if (!driver.IsOpen() ||
      driver.Send(ICM_DECOMPRESS_QUERY, Address(&compressed), Address(&output)) != ICERR_OK ||
      driver.Send(ICM_DECOMPRESS_BEGIN, Address(&compressed), Address(&output)) != ICERR_OK) {
    return pictures;
  }
  for (const std::vector<uint8_t>& stream : streams) {
    std::vector<uint8_t> picture(sample_frames::FrameBytes(layout));
    compressed.biSizeImage = static_cast<uint32_t>(stream.size());
    ICDECOMPRESS work{};
    work.lpbiInput = &compressed;
    work.lpInput = const_cast<uint8_t*>(stream.data());
    work.lpbiOutput = &output;
    work.lpOutput = picture.data();
    if (driver.Send(ICM_DECOMPRESS, Address(&work), sizeof work) != ICERR_OK) return {};
    pictures.push_back(picture);
  }
  driver.Send(ICM_DECOMPRESS_END, 0, 0);
  return pictures;
}

bool Write(const std::string& directory, const std::string& name,
           const std::vector<uint8_t>& bytes) {
  if (sample_frames::WriteResult(directory, name, bytes.data(), bytes.size())) return true;
  std::fprintf(stderr, "cannot write %s\n", name.c_str());
  return false;
}

// Compress `count` source frames, decompress them, and write both sides.
bool DriverTrip(const std::string& directory, const std::string& prefix, uint32_t fourcc,
                const Layout& source, const Layout& output, int count) {
  std::vector<std::vector<uint8_t>> frames;
  for (int f = 0; f < count; ++f) frames.push_back(sample_frames::SourcePicture(source, f));
  BITMAPINFOHEADER compressed{};
  const auto streams = Compress(fourcc, source, frames, &compressed);
  const auto pictures = Decompress(fourcc, compressed, output, streams);
  if (streams.size() != frames.size() || pictures.size() != frames.size()) {
    std::fprintf(stderr, "%s: the driver refused the trip\n", prefix.c_str());
    return false;
  }
  for (int f = 0; f < count; ++f) {
    const std::string name = prefix + "_" + std::to_string(f);
    if (!Write(directory, name + ".stream", streams[f]) ||
        !Write(directory, name + ".picture", pictures[f])) {
      return false;
    }
  }
  return true;
}

// Two faulting decodes in the capture directory: the first leaves the files.
bool CaptureFaults(const std::string& directory, void* decoder, const std::vector<uint8_t>& frame) {
  namespace fs = std::filesystem;
  const fs::path home = fs::current_path();
  const fs::path capture = fs::path(directory) / sample_frames::kCaptureDirectory;
  std::error_code error;
  fs::create_directories(capture, error);
  if (!Write(capture.string(), "VTQ_Crash_Output",
             std::vector<uint8_t>(sample_frames::kEarlierCapture,
                                  sample_frames::kEarlierCapture +
                                      sizeof sample_frames::kEarlierCapture - 1))) {
    return false;
  }
  fs::current_path(capture, error);
  if (error) return false;
  std::vector<uint8_t> picture(sample_frames::FrameBytes(sample_frames::kYuy2));
  for (const uint8_t fill : {sample_frames::kFirstFaultFill, sample_frames::kSecondFaultFill}) {
    const std::vector<uint8_t> damaged = sample_frames::DamagedFrame(frame, fill);
    VTC_DecompressFrame(decoder, picture.data(), damaged.data(), sample_frames::kWidth * 2);
  }
  fs::current_path(home);
  return fs::exists(capture / "VTQ_Crash_Input") && fs::exists(capture / "VTQ_Crash_Output");
}

// The frames are compressed and, as the filter does, decoded whole at the
// output line length, top-down, both by the direct functions.
bool GraphFrames(const std::string& directory) {
  using namespace sample_frames;
  BITMAPINFOHEADER header = Header(kYuy2);
  void* encoder = VTC_CompressFieldBegin(&header, kGraphFourCC);
  void* decoder = VTC_DecompressFieldBegin(&header, kGraphFourCC);
  bool written = encoder != nullptr && decoder != nullptr;
  for (int f = 0; f < kGraphFrames && written; ++f) {
    const std::vector<uint8_t> source = SourcePicture(kYuy2, f);
    std::vector<uint8_t> stream(kGraphFrameRoom);
    const int64_t length = VTC_CompressFrame(encoder, stream.data(), source.data(), kWidth * 2);
    stream.resize(static_cast<size_t>(length));
    std::vector<uint8_t> picture(FrameBytes(kYuy2));
    VTC_DecompressFrame(decoder, picture.data(), stream.data(), kWidth * 2);
    const std::string name = "graph_" + std::to_string(f);
    written = Write(directory, name + ".stream", stream) &&
              Write(directory, name + ".picture", picture);
    if (f == 0 && written) written = CaptureFaults(directory, decoder, stream);
  }
  VTC_CompressFieldEnd(encoder);
  VTC_DecompressFieldEnd(decoder);
  return written;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s OUTPUT_DIRECTORY\n", argv[0]);
    return 2;
  }
  const std::string directory = argv[1];
  bool ok = true;
  for (const auto& c : sample_frames::kVfwCases) {
    ok = DriverTrip(directory, std::string("vfw_") + c.name, c.fourcc, c.source, c.output, 1) && ok;
  }
  ok = DriverTrip(directory, "avi", sample_frames::kAviFourCC, sample_frames::kRgb24,
                  sample_frames::kRgb24, sample_frames::kAviFrames) && ok;
  ok = GraphFrames(directory) && ok;
  return ok ? 0 : 1;
}
