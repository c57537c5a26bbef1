// The compressor behind the AVI file library: frames written through a
// compressed stream the library opens on the codec, then read back raw (the
// codec's streams as stored) and through the library's frame decompressor
// (the codec's pictures), both written for the script to compare.
#include <windows.h>
#include <vfw.h>

#include <string>
#include <vector>

#include "sample_frames.h"

namespace {

using namespace sample_frames;

bool WriteFile(const std::string& path) {
  PAVIFILE file = nullptr;
  if (!EXPECT(AVIFileOpenA(&file, path.c_str(), OF_CREATE | OF_WRITE, nullptr) == AVIERR_OK)) return false;
  AVISTREAMINFOA info{};
  info.fccType = streamtypeVIDEO;
  // Named here because Wine's compressed stream leaves the file's handler 0,
  // and a reader would then decode with whichever compressor comes first.
  info.fccHandler = kAviFourCC;
  info.dwScale = 1;
  info.dwRate = 25;
  info.dwSuggestedBufferSize = static_cast<DWORD>(FrameBytes(kRgb24));
  SetRect(&info.rcFrame, 0, 0, kWidth, kHeight);
  PAVISTREAM raw = nullptr, compressed = nullptr;
  AVICOMPRESSOPTIONS options{};
  options.fccType = streamtypeVIDEO;
  options.fccHandler = kAviFourCC;
  options.dwKeyFrameEvery = 1;
  options.dwQuality = ICQUALITY_DEFAULT;
  BITMAPINFOHEADER source = PictureHeader<BITMAPINFOHEADER>(kRgb24);
  bool ok = EXPECT(AVIFileCreateStreamA(file, &raw, &info) == AVIERR_OK) &&
            EXPECT(AVIMakeCompressedStream(&compressed, raw, &options, nullptr) == AVIERR_OK) &&
            EXPECT(AVIStreamSetFormat(compressed, 0, &source, sizeof source) == AVIERR_OK);
  for (int f = 0; f < kFrames && ok; ++f) {
    std::vector<uint8_t> picture = SourcePicture(kRgb24, f);
    ok = EXPECT(AVIStreamWrite(compressed, f, 1, picture.data(), LONG(picture.size()), AVIIF_KEYFRAME,
                               nullptr, nullptr) == AVIERR_OK);
  }
  if (compressed != nullptr) AVIStreamRelease(compressed);
  if (raw != nullptr) AVIStreamRelease(raw);
  AVIFileRelease(file);
  return ok;
}

void ReadFile(const std::string& path, const std::string& directory) {
  PAVIFILE file = nullptr;
  PAVISTREAM stream = nullptr;
  if (!EXPECT(AVIFileOpenA(&file, path.c_str(), OF_READ, nullptr) == AVIERR_OK)) return;
  if (EXPECT(AVIFileGetStream(file, &stream, streamtypeVIDEO, 0) == AVIERR_OK)) {
    BITMAPINFOHEADER format{};
    LONG size = sizeof format;
    EXPECT(AVIStreamReadFormat(stream, 0, &format, &size) == AVIERR_OK);
    EXPECT(format.biCompression == kAviFourCC && format.biWidth == kWidth && format.biHeight == kHeight);
    EXPECT(AVIStreamLength(stream) == kFrames);
    BITMAPINFOHEADER wanted = PictureHeader<BITMAPINFOHEADER>(kRgb24);
    PGETFRAME frames = AVIStreamGetFrameOpen(stream, &wanted);
    EXPECT(frames != nullptr);
    for (int f = 0; f < kFrames; ++f) {
      const std::string name = "avi_" + std::to_string(f);
      LONG bytes = 0;
      EXPECT(AVIStreamRead(stream, f, 1, nullptr, 0, &bytes, nullptr) == AVIERR_OK);
      std::vector<uint8_t> data(static_cast<size_t>(bytes));
      EXPECT(AVIStreamRead(stream, f, 1, data.data(), bytes, &bytes, nullptr) == AVIERR_OK);
      EXPECT(WriteResult(directory, name + ".stream", data.data(), data.size()));
      const auto* dib = frames ? static_cast<const BITMAPINFOHEADER*>(AVIStreamGetFrame(frames, f)) : nullptr;
      if (!EXPECT(dib != nullptr && dib->biBitCount == 24)) continue;
      // The pixels follow the header and its colour table, if any.
      const auto* bits = reinterpret_cast<const uint8_t*>(dib) + dib->biSize + dib->biClrUsed * 4;
      EXPECT(WriteResult(directory, name + ".picture", bits, FrameBytes(kRgb24)));
    }
    if (frames != nullptr) AVIStreamGetFrameClose(frames);
    AVIStreamRelease(stream);
  }
  AVIFileRelease(file);
}

}  // namespace

int main(int argc, char** argv) {
  if (!check::HasArguments(argc, argv)) return 2;
  const std::string path = std::string(argv[1]) + "\\vantaro.avi";
  EXPECT(ICInstall(ICTYPE_VIDEO, kAviFourCC, reinterpret_cast<LPARAM>(argv[2]), nullptr, ICINSTALL_DRIVER));
  AVIFileInit();
  DeleteFileA(path.c_str());
  if (WriteFile(path)) ReadFile(path, argv[1]);
  AVIFileExit();
  return check::ExitCode("avifile_roundtrip");
}
