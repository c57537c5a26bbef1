// The installable compressor under the Windows compression manager:
// installed by name, opened by FourCC, its identity read back, then a
// compress and a decompress of each case through the manager's calls. The
// streams and pictures are written for the script to compare with the
// native build's.
#include <windows.h>
#include <vfw.h>

#include <cwchar>
#include <string>
#include <vector>

#include "sample_frames.h"

namespace {

using namespace sample_frames;

// Result codes come back as DWORD or LRESULT; the driver's are signed 32-bit.
template <typename Result>
int32_t Code(Result result) {
  return static_cast<int32_t>(result);
}

void RoundTrip(const std::string& directory, const VfwCase& c) {
  const std::vector<uint8_t> source = SourcePicture(c.layout, 0);
  BITMAPINFOHEADER input = PictureHeader<BITMAPINFOHEADER>(c.layout);
  BITMAPINFOHEADER compressed{};
  HIC compressor = ICOpen(ICTYPE_VIDEO, c.fourcc, ICMODE_COMPRESS);
  if (!EXPECT(compressor != nullptr)) return;
  ICINFO info{};
  EXPECT(ICGetInfo(compressor, &info, sizeof info) == sizeof info);
  EXPECT(info.fccHandler == c.fourcc && std::wcscmp(info.szName, L"QR CoDec") == 0);
  EXPECT(Code(ICCompressQuery(compressor, &input, nullptr)) == ICERR_OK);
  EXPECT(Code(ICCompressGetFormat(compressor, &input, &compressed)) == ICERR_OK);
  std::vector<uint8_t> stream(size_t(ICCompressGetSize(compressor, &input, &compressed)));
  EXPECT(Code(ICCompressBegin(compressor, &input, &compressed)) == ICERR_OK);
  BITMAPINFOHEADER output = compressed;
  DWORD chunk = 0, flags = 0;
  const bool done = EXPECT(Code(ICCompress(compressor, 0, &output, stream.data(), &input,
                                           const_cast<uint8_t*>(source.data()), &chunk, &flags, 0, 0,
                                           0, nullptr, nullptr)) == ICERR_OK) &&
                    EXPECT(flags == AVIIF_KEYFRAME && output.biSizeImage <= stream.size());
  ICCompressEnd(compressor);
  ICClose(compressor);
  if (!done) return;
  stream.resize(output.biSizeImage);

  HIC decompressor = ICOpen(ICTYPE_VIDEO, c.fourcc, ICMODE_DECOMPRESS);
  if (!EXPECT(decompressor != nullptr)) return;
  std::vector<uint8_t> pixels(FrameBytes(c.layout));
  compressed.biSizeImage = static_cast<DWORD>(stream.size());
  EXPECT(Code(ICDecompressQuery(decompressor, &compressed, &input)) == ICERR_OK);
  EXPECT(Code(ICDecompressBegin(decompressor, &compressed, &input)) == ICERR_OK);
  EXPECT(Code(ICDecompress(decompressor, 0, &compressed, stream.data(), &input, pixels.data())) == ICERR_OK);
  ICDecompressEnd(decompressor);
  ICClose(decompressor);
  const std::string name = std::string(c.name) + "_0";
  EXPECT(WriteResult(directory, name + ".stream", stream.data(), stream.size()));
  EXPECT(WriteResult(directory, name + ".picture", pixels.data(), pixels.size()));
}

}  // namespace

int main(int argc, char** argv) {
  if (!check::HasArguments(argc, argv)) return 2;
  for (const VfwCase& c : kVfwCases) {
    // The Drivers32 value "vidc.VTQn" names the DLL; the manager loads it from there.
    EXPECT(ICInstall(ICTYPE_VIDEO, c.fourcc, reinterpret_cast<LPARAM>(argv[2]), nullptr, ICINSTALL_DRIVER));
    RoundTrip(argv[1], c);
  }
  return check::ExitCode("vfw_roundtrip");
}
