// The installable compressor under the Windows compression manager: installed
// by name, opened by FourCC, asked for its identity and its answers to the
// messages the manager itself never sends, then a compress and a decompress
// of each case. The streams and pictures are written for the script to
// compare with the native build's.
#include <windows.h>
#include <vfw.h>

#include <cstdint>
#include <cwchar>
#include <string>
#include <vector>

#include "check.h"
#include "sample_frames.h"

namespace {

using sample_frames::Layout;

// Result codes come back as DWORD; the driver's are signed 32-bit.
int32_t Code(DWORD result) { return static_cast<int32_t>(result); }
int32_t Code(LRESULT result) { return static_cast<int32_t>(result); }

struct Identity {
  uint32_t fourcc;
  const wchar_t* description;
};
constexpr Identity kIdentities[] = {
    {sample_frames::FourCC("VTQ0"), L"Quorin Vantaro 4:2:0"},
    {sample_frames::FourCC("VTQ2"), L"Quorin Vantaro 4:2:2"},
    {sample_frames::FourCC("VTQ5"), L"Quorin Vantaro 4:4:4:4 (Alpha)"},
};

void CheckIdentity(const Identity& identity) {
  HIC hic = ICOpen(ICTYPE_VIDEO, identity.fourcc, ICMODE_QUERY);
  if (!EXPECT(hic != nullptr)) return;
  ICINFO info{};
  info.dwSize = sizeof info;
  EXPECT(ICGetInfo(hic, &info, sizeof info) == sizeof info);
  EXPECT(info.fccType == ICTYPE_VIDEO);
  EXPECT(info.fccHandler == identity.fourcc);
  EXPECT(info.dwFlags == 0xA9u);
  EXPECT(info.dwVersionICM == ICVERSION);
  EXPECT(std::wcscmp(info.szName, L"QR CoDec") == 0);
  EXPECT(std::wcscmp(info.szDescription, identity.description) == 0);
  ICClose(hic);
}

// Messages only a host's own ICSendMessage delivers, on a fresh instance.
struct MessageAnswer {
  UINT message;
  int32_t answer;
};
constexpr MessageAnswer kMessageAnswers[] = {
    {ICM_GETDEFAULTQUALITY, ICERR_UNSUPPORTED}, {ICM_GETBUFFERSWANTED, ICERR_UNSUPPORTED},
    {ICM_GETDEFAULTKEYFRAMERATE, ICERR_UNSUPPORTED}, {ICM_DECOMPRESSEX_QUERY, ICERR_UNSUPPORTED},
    {ICM_COMPRESS_FRAMES_INFO, ICERR_OK}, {ICM_GETSTATE, ICERR_OK},
    {ICM_CONFIGURE, ICERR_OK}, {ICM_ABOUT, ICERR_OK},
    {ICM_USER + 0x100C, ICERR_UNSUPPORTED},  // 0x500C: past the table
};

void CheckMessages() {
  HIC hic = ICOpen(ICTYPE_VIDEO, sample_frames::FourCC("VTQ2"), ICMODE_COMPRESS);
  if (!EXPECT(hic != nullptr)) return;
  for (const MessageAnswer& m : kMessageAnswers) {
    if (!EXPECT(Code(ICSendMessage(hic, m.message, 0, 0)) == m.answer)) {
      std::fprintf(stderr, "  message 0x%X\n", m.message);
    }
  }
  // The quality: 96 on the 0..10000 scale, then 9999 gives 99 and 0 gives 50.
  struct QualityStep {
    int32_t set;
    int32_t read;
  };
  constexpr QualityStep kSteps[] = {{-1, 9200}, {9999, 9800}, {10000, 9800}, {0, 0}};
  for (const QualityStep& step : kSteps) {
    DWORD value = static_cast<DWORD>(step.set);
    if (step.set >= 0) {
      EXPECT(Code(ICSendMessage(hic, ICM_SETQUALITY, reinterpret_cast<DWORD_PTR>(&value), 0)) ==
             ICERR_OK);
    }
    value = 0xFFFFFFFFu;
    EXPECT(Code(ICSendMessage(hic, ICM_GETQUALITY, reinterpret_cast<DWORD_PTR>(&value), 0)) ==
           ICERR_OK);
    EXPECT(static_cast<int32_t>(value) == step.read);
  }
  ICClose(hic);
}

bool RoundTrip(const std::string& directory, const sample_frames::VfwCase& c) {
  const std::vector<uint8_t> source = sample_frames::SourcePicture(c.source, 0);
  BITMAPINFOHEADER input = sample_frames::PictureHeader<BITMAPINFOHEADER>(c.source);
  BITMAPINFOHEADER compressed{};

  HIC compressor = ICOpen(ICTYPE_VIDEO, c.fourcc, ICMODE_COMPRESS);
  if (!EXPECT(compressor != nullptr)) return false;
  EXPECT(Code(ICCompressQuery(compressor, &input, nullptr)) == ICERR_OK);
  EXPECT(Code(ICCompressGetFormat(compressor, &input, &compressed)) == ICERR_OK);
  EXPECT(compressed.biCompression == c.fourcc);
  const LRESULT room = ICCompressGetSize(compressor, &input, &compressed);
  EXPECT(room > 0);
  EXPECT(Code(ICCompressBegin(compressor, &input, &compressed)) == ICERR_OK);
  std::vector<uint8_t> stream(room > 0 ? static_cast<size_t>(room) : 0);
  BITMAPINFOHEADER output = compressed;
  DWORD chunk = 0;
  DWORD flags = 0;
  const int32_t compressedCode =
      Code(ICCompress(compressor, 0, &output, stream.data(), &input,
                      const_cast<uint8_t*>(source.data()), &chunk, &flags, 0, 0, 0, nullptr,
                      nullptr));
  EXPECT(compressedCode == ICERR_OK);
  EXPECT(flags == AVIIF_KEYFRAME);
  EXPECT(output.biSizeImage > 0 && output.biSizeImage <= stream.size());
  ICCompressEnd(compressor);
  ICClose(compressor);
  if (compressedCode != ICERR_OK) return false;
  stream.resize(output.biSizeImage);

  HIC decompressor = ICOpen(ICTYPE_VIDEO, c.fourcc, ICMODE_DECOMPRESS);
  if (!EXPECT(decompressor != nullptr)) return false;
  BITMAPINFOHEADER picture = sample_frames::PictureHeader<BITMAPINFOHEADER>(c.output);
  std::vector<uint8_t> pixels(sample_frames::FrameBytes(c.output));
  compressed.biSizeImage = static_cast<DWORD>(stream.size());
  EXPECT(Code(ICDecompressQuery(decompressor, &compressed, &picture)) == ICERR_OK);
  EXPECT(Code(ICDecompressBegin(decompressor, &compressed, &picture)) == ICERR_OK);
  EXPECT(Code(ICDecompress(decompressor, 0, &compressed, stream.data(), &picture,
                           pixels.data())) == ICERR_OK);
  ICDecompressEnd(decompressor);
  ICClose(decompressor);

  const std::string name = std::string("vfw_") + c.name + "_0";
  return EXPECT(sample_frames::WriteResult(directory, name + ".stream", stream.data(),
                                           stream.size())) &&
         EXPECT(sample_frames::WriteResult(directory, name + ".picture", pixels.data(),
                                           pixels.size()));
}

}  // namespace

int main(int argc, char** argv) {
  if (!check::HasArguments(argc, argv)) return 2;
  const std::string directory = argv[1];
  // The Drivers32 value "vidc.VTQn" names the DLL; the manager loads it from there.
  for (const Identity& identity : kIdentities) {
    EXPECT(ICInstall(ICTYPE_VIDEO, identity.fourcc, reinterpret_cast<LPARAM>(argv[2]), nullptr,
                     ICINSTALL_DRIVER));
  }
  for (const Identity& identity : kIdentities) CheckIdentity(identity);
  CheckMessages();
  for (const auto& c : sample_frames::kVfwCases) RoundTrip(directory, c);
  return check::ExitCode("vfw_roundtrip");
}
