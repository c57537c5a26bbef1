// The compressor behind the AVI file library: frames written through a
// compressed stream that the library opens on the codec, the file read back
// raw (the codec's streams as stored) and through the library's frame
// decompressor (the codec's pictures). Both are written for the script to
// compare with the native build's.
#include <windows.h>
#include <vfw.h>

#include <cstdint>
#include <string>
#include <vector>

#include "check.h"
#include "sample_frames.h"

namespace {

using namespace sample_frames;

bool WriteFile(const std::string& path) {
  PAVIFILE file = nullptr;
  if (!EXPECT(AVIFileOpenA(&file, path.c_str(), OF_CREATE | OF_WRITE, nullptr) == AVIERR_OK)) {
    return false;
  }
  AVISTREAMINFOA info{};
  info.fccType = streamtypeVIDEO;
  // Named here because Wine's compressed stream leaves the file's handler 0,
  // and a reader would then decode with whichever compressor comes first.
  info.fccHandler = kAviFourCC;
  info.dwScale = 1;
  info.dwRate = 25;
  info.dwSuggestedBufferSize = static_cast<DWORD>(FrameBytes(kRgb24));
  SetRect(&info.rcFrame, 0, 0, kWidth, kHeight);
  PAVISTREAM raw = nullptr;
  PAVISTREAM compressed = nullptr;
  bool ok = EXPECT(AVIFileCreateStreamA(file, &raw, &info) == AVIERR_OK);
  AVICOMPRESSOPTIONS options{};
  options.fccType = streamtypeVIDEO;
  options.fccHandler = kAviFourCC;
  options.dwKeyFrameEvery = 1;
  options.dwQuality = ICQUALITY_DEFAULT;
  ok = ok && EXPECT(AVIMakeCompressedStream(&compressed, raw, &options, nullptr) == AVIERR_OK);
  BITMAPINFOHEADER source = PictureHeader<BITMAPINFOHEADER>(kRgb24);
  ok = ok && EXPECT(AVIStreamSetFormat(compressed, 0, &source, sizeof source) == AVIERR_OK);
  for (int f = 0; f < kAviFrames && ok; ++f) {
    std::vector<uint8_t> picture = SourcePicture(kRgb24, f);
    ok = EXPECT(AVIStreamWrite(compressed, f, 1, picture.data(), static_cast<LONG>(picture.size()),
                               AVIIF_KEYFRAME, nullptr, nullptr) == AVIERR_OK);
  }
  if (compressed != nullptr) AVIStreamRelease(compressed);
  if (raw != nullptr) AVIStreamRelease(raw);
  AVIFileRelease(file);
  return ok;
}

// The stored frames, as the codec wrote them.
void ReadStreams(PAVISTREAM stream, const std::string& directory) {
  for (int f = 0; f < kAviFrames; ++f) {
    LONG bytes = 0;
    if (!EXPECT(AVIStreamRead(stream, f, 1, nullptr, 0, &bytes, nullptr) == AVIERR_OK)) continue;
    std::vector<uint8_t> data(static_cast<size_t>(bytes));
    EXPECT(AVIStreamRead(stream, f, 1, data.data(), bytes, &bytes, nullptr) == AVIERR_OK);
    EXPECT(AVIStreamIsKeyFrame(stream, f));
    EXPECT(WriteResult(directory, "avi_" + std::to_string(f) + ".stream", data.data(),
                       data.size()));
  }
}

// The pictures, decompressed by the codec at the library's request.
void ReadPictures(PAVISTREAM stream, const std::string& directory) {
  BITMAPINFOHEADER wanted = PictureHeader<BITMAPINFOHEADER>(kRgb24);
  PGETFRAME frames = AVIStreamGetFrameOpen(stream, &wanted);
  if (!EXPECT(frames != nullptr)) return;
  for (int f = 0; f < kAviFrames; ++f) {
    const auto* dib = static_cast<const BITMAPINFOHEADER*>(AVIStreamGetFrame(frames, f));
    if (!EXPECT(dib != nullptr)) continue;
    EXPECT(dib->biWidth == kWidth && dib->biHeight == kHeight && dib->biBitCount == 24);
    // The pixels follow the header and its colour table, if any.
    const auto* bits = reinterpret_cast<const uint8_t*>(dib) + dib->biSize + dib->biClrUsed * 4;
    EXPECT(WriteResult(directory, "avi_" + std::to_string(f) + ".picture", bits,
                       FrameBytes(kRgb24)));
  }
  AVIStreamGetFrameClose(frames);
}

void ReadFile(const std::string& path, const std::string& directory) {
  PAVIFILE file = nullptr;
  if (!EXPECT(AVIFileOpenA(&file, path.c_str(), OF_READ, nullptr) == AVIERR_OK)) return;
  PAVISTREAM stream = nullptr;
  if (EXPECT(AVIFileGetStream(file, &stream, streamtypeVIDEO, 0) == AVIERR_OK)) {
    AVISTREAMINFOA info{};
    EXPECT(AVIStreamInfoA(stream, &info, sizeof info) == AVIERR_OK);
    EXPECT(info.fccType == streamtypeVIDEO);
    EXPECT(info.fccHandler == kAviFourCC);
    EXPECT(info.dwLength == static_cast<DWORD>(kAviFrames));
    BITMAPINFOHEADER format{};
    LONG size = sizeof format;
    EXPECT(AVIStreamReadFormat(stream, 0, &format, &size) == AVIERR_OK);
    EXPECT(format.biCompression == kAviFourCC);
    EXPECT(format.biWidth == kWidth && format.biHeight == kHeight);
    ReadStreams(stream, directory);
    ReadPictures(stream, directory);
    AVIStreamRelease(stream);
  }
  AVIFileRelease(file);
}

}  // namespace

int main(int argc, char** argv) {
  if (!check::HasArguments(argc, argv)) return 2;
  const std::string directory = argv[1];
  const std::string path = directory + "\\vantaro.avi";
  EXPECT(ICInstall(ICTYPE_VIDEO, kAviFourCC, reinterpret_cast<LPARAM>(argv[2]), nullptr,
                   ICINSTALL_DRIVER));
  AVIFileInit();
  DeleteFileA(path.c_str());
  if (WriteFile(path)) ReadFile(path, directory);
  AVIFileExit();
  return check::ExitCode("avifile_roundtrip");
}
