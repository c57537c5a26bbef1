// The installable compressor's entry: the message table, opening and closing
// an instance, the identity record and the quality messages. The frame work
// is in the compress and decompress handlers.
#include <cstddef>

#include "codec/codec_instance.h"
#include "codec/quantiser.h"
#include "diagnostics/codec_log.h"
#include "driver/compress_handlers.h"
#include "driver/decompress_handlers.h"
#include "platform/driver_host.h"
#include "platform/vfw_records.h"

namespace vantaro {

namespace {

// The FourCC of the instance opened last in the process, upper case, or 0.
// Process-wide on purpose: ICM_GETINFO on any instance describes this one.
uint32_t g_lastOpenedFourCC = 0;

template <typename T>
T* Param(int64_t value) {
  return reinterpret_cast<T*>(static_cast<intptr_t>(value));
}

// The log lines print an address as eight hex digits: its low 32 bits.
uint32_t LogAddress(const void* address) {
  return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(address));
}

int64_t OnLoad() {
  CodecLog("DriverProc", "DRV_LOAD");
  DriverHost& host = CurrentDriverHost();
  if (host.ProcessorHasSse2()) return 1;
  host.ShowMessageBox("This codec Requires SSE2.", "Error", kMbIconError);
  return 0;
}

int64_t OnOpen(ICOPEN* open) {
  g_lastOpenedFourCC = 0;
  if (open != nullptr) {
    open->dwError = 0;
    // Only video compressors are served; the refusal gives the manager no reason.
    if (open->fccType != ICTYPE_VIDEO) {
      CodecLog("DriverProc", "DRV_OPEN 0x%8.8x", 0u);
      return 0;
    }
  }
  CodecInstance* instance = CreateInstance();
  if (instance == nullptr || open == nullptr) return reinterpret_cast<intptr_t>(instance);
  uint32_t upper = 0;
  if (IsStreamFourCC(open->fccHandler, &upper)) g_lastOpenedFourCC = upper;
  // An unknown handler still opens: the instance then has an empty format.
  SetStreamFormat(instance, open->fccHandler);
  CodecLog("DriverProc", "DRV_OPEN 0x%8.8x", LogAddress(instance));
  return reinterpret_cast<intptr_t>(instance);
}

int64_t OnClose(CodecInstance* instance) {
  CodecLog("DriverProc", "DRV_CLOSE 0x%8.8x", LogAddress(instance));
  DestroyInstance(instance);
  return 1;
}

// Copies `text` into `field`, cut to fit and always terminated.
template <size_t N>
void CopyWide(char16_t (&field)[N], const char16_t* text) {
  size_t i = 0;
  for (; i + 1 < N && text[i] != u'\0'; ++i) field[i] = text[i];
  field[i] = u'\0';
}

const char16_t* DescriptionOf(uint32_t fourcc) {
  switch (fourcc) {
    case MakeFourCC('V', 'T', 'Q', '0'): return u"Quorin Vantaro 4:2:0";
    case MakeFourCC('V', 'T', 'Q', '1'): return u"Quorin Vantaro 4:2:0:4 (Alpha)";
    case MakeFourCC('V', 'T', 'Q', '2'): return u"Quorin Vantaro 4:2:2";
    case MakeFourCC('V', 'T', 'Q', '3'): return u"Quorin Vantaro 4:2:2:4 (Alpha)";
    case MakeFourCC('V', 'T', 'Q', '4'): return u"Quorin Vantaro 4:4:4";
    case MakeFourCC('V', 'T', 'Q', '5'): return u"Quorin Vantaro 4:4:4:4 (Alpha)";
    case MakeFourCC('V', 'T', 'Q', '7'): return u"Quorin Vantaro 4:2:2:4 (DCT Alpha)";
    case MakeFourCC('V', 'T', 'Q', '9'): return u"Quorin Vantaro 4:4:4:4 (DCT Alpha)";
    default: return u"Quorin Vantaro Video Codec";
  }
}

// Describes the last instance opened, not necessarily the one asked. With
// none known it claims VTQ2 with the generic description.
int64_t OnGetInfo(ICINFO* info) {
  CodecLog("DriverProc", "ICM_GETINFO");
  info->dwSize = sizeof(ICINFO);
  info->fccType = ICTYPE_VIDEO;
  info->fccHandler = g_lastOpenedFourCC != 0 ? g_lastOpenedFourCC : MakeFourCC('V', 'T', 'Q', '2');
  info->dwFlags = VIDCF_QUALITY | VIDCF_COMPRESSFRAMES | VIDCF_FASTTEMPORALC | VIDCF_FASTTEMPORALD;
  info->dwVersion = 0;
  info->dwVersionICM = ICVERSION;
  CopyWide(info->szName, u"QR CoDec");
  CopyWide(info->szDescription, DescriptionOf(g_lastOpenedFourCC));
  return sizeof(ICINFO);
}

int64_t OnDefault(uint64_t driverId, void* driverHandle, uint32_t message, int64_t lParam1,
                  int64_t lParam2) {
  CodecLog("DriverProc", "default: uMsg = 0x%x", message);
  if (message < ICM_USER) {
    return CurrentDriverHost().DefDriverProc(driverId, driverHandle, message, lParam1, lParam2);
  }
  return kIcErrUnsupported;
}

int64_t DriverMessage(uint64_t driverId, void* driverHandle, uint32_t message, int64_t lParam1,
                      int64_t lParam2) {
  switch (message) {
    case DRV_LOAD: return OnLoad();
    case DRV_ENABLE: CodecLog("DriverProc", "DRV_ENABLE"); return 1;
    case DRV_OPEN: return OnOpen(Param<ICOPEN>(lParam2));
    case DRV_CLOSE: return OnClose(reinterpret_cast<CodecInstance*>(driverId));
    case DRV_DISABLE: CodecLog("DriverProc", "DRV_DISABLE"); return 1;
    case DRV_FREE: CodecLog("DriverProc", "DRV_FREE"); return 1;
    // No configuration exists; asked the driver's way, the answer is no.
    case DRV_CONFIGURE: CodecLog("DriverProc", "DRV_CONFIGURE"); return 0;
    case DRV_QUERYCONFIGURE: CodecLog("DriverProc", "DRV_QUERYCONFIGURE"); return 0;
    case DRV_INSTALL: CodecLog("DriverProc", "DRV_INSTALL"); return 1;
    case DRV_REMOVE: CodecLog("DriverProc", "DRV_REMOVE"); return 1;
    default: return OnDefault(driverId, driverHandle, message, lParam1, lParam2);
  }
}

// The messages that need nothing of the instance, or nothing at all.
bool ConstantMessage(uint32_t message, int64_t* result) {
  switch (message) {
    case ICM_DECOMPRESS_END: CodecLog("DriverProc", "ICM_DECOMPRESS_END"); *result = 0; return true;
    case ICM_DECOMPRESS_SET_PALETTE: case ICM_DECOMPRESS_GET_PALETTE: case ICM_DECOMPRESSEX_BEGIN:
    case ICM_DECOMPRESSEX_QUERY: case ICM_DECOMPRESSEX: case ICM_DECOMPRESSEX_END:
      CodecLog("DriverProc", "uMsg = 0x%x", message);
      *result = kIcErrUnsupported;
      return true;
    case ICM_GETBUFFERSWANTED: case ICM_GETDEFAULTKEYFRAMERATE: case ICM_GETDEFAULTQUALITY:
      CodecLog("DriverProc", "ICM_GETDEFAULTQUALITY/ICM_GETBUFFERSWANTED/ICM_GETDEFAULTKEYFRAMERATE");
      *result = kIcErrUnsupported;
      return true;
    // Frame count, rate and quality of the sequence are of no use to an
    // intra-only coder.
    case ICM_COMPRESS_FRAMES_INFO: CodecLog("DriverProc", "ICM_COMPRESS_FRAMES_INFO"); *result = 0; return true;
    case ICM_GETSTATE: CodecLog("DriverProc", "ICM_GETSTATE"); *result = 0; return true;
    case ICM_SETSTATE: CodecLog("DriverProc", "ICM_SETSTATE"); *result = 0; return true;
    // There is no dialog, yet the probe for one is answered "yes" (0), while
    // DRV_QUERYCONFIGURE says no. Hosts have always seen both answers.
    case ICM_CONFIGURE: CodecLog("DriverProc", "ICM_CONFIGURE"); *result = 0; return true;
    case ICM_ABOUT: CodecLog("DriverProc", "ICM_ABOUT"); *result = 0; return true;
    case ICM_SET: CodecLog("DriverProc", "ICM_SET"); *result = 0; return true;
    case ICM_GET: CodecLog("DriverProc", "ICM_GET"); *result = 0; return true;
    default: return false;
  }
}

// The messages that work on the instance or on the records they carry. A
// missing instance or record is refused as a bad format rather than read.
int64_t InstanceMessage(CodecInstance* instance, uint32_t message, int64_t lParam1,
                        int64_t lParam2) {
  auto* header1 = Param<BITMAPINFOHEADER>(lParam1);
  auto* header2 = Param<BITMAPINFOHEADER>(lParam2);
  switch (message) {
    case ICM_COMPRESS_GET_FORMAT:
      if (header2 == nullptr) return sizeof(BITMAPINFOHEADER);
      if (instance == nullptr || header1 == nullptr) return kIcErrBadFormat;
      return CompressGetFormat(instance, header1, header2);
    case ICM_COMPRESS_GET_SIZE:
      CodecLog("DriverProc", "ICM_COMPRESS_GET_SIZE");
      return header2 != nullptr ? CompressWorstCaseSize(header2) : kIcErrBadFormat;
    case ICM_COMPRESS_QUERY:
      if (instance == nullptr || header1 == nullptr) return kIcErrBadFormat;
      return CompressQuery(instance, header1);
    case ICM_COMPRESS_BEGIN:
      CodecLog("DriverProc", "ICM_COMPRESS_BEGIN 0x%8.8x", LogAddress(instance));
      if (instance == nullptr || header1 == nullptr) return kIcErrBadFormat;
      return BeginCompress(instance, header1);
    case ICM_COMPRESS: {
      const ICCOMPRESS* frame = Param<ICCOMPRESS>(lParam1);
      if (instance == nullptr || frame == nullptr) return kIcErrBadFormat;
      return CompressMessage(instance, *frame);
    }
    case ICM_COMPRESS_END:
      CodecLog("DriverProc", "ICM_COMPRESS_END 0x%8.8x", LogAddress(instance));
      return 0;
    case ICM_DECOMPRESS_GET_FORMAT:
      CodecLog("DriverProc", "ICM_DECOMPRESS_GET_FORMAT");
      if (header2 != nullptr && header1 == nullptr) return kIcErrBadFormat;
      return DecompressGetFormat(header1, header2);
    case ICM_DECOMPRESS_QUERY:
      CodecLog("DriverProc", "ICM_DECOMPRESS_QUERY");
      if (instance == nullptr || header1 == nullptr) return kIcErrBadFormat;
      return DecompressQuery(instance, header1, header2);
    case ICM_DECOMPRESS_BEGIN:
      CodecLog("DriverProc", "ICM_DECOMPRESS_BEGIN");
      if (instance == nullptr || header1 == nullptr || header2 == nullptr) return kIcErrBadFormat;
      return BeginDecompress(instance, header1, header2);
    case ICM_DECOMPRESS: {
      const ICDECOMPRESS* frame = Param<ICDECOMPRESS>(lParam1);
      if (instance == nullptr || frame == nullptr) return kIcErrBadFormat;
      return DecompressMessage(instance, *frame);
    }
    case ICM_GETINFO: {
      auto* info = Param<ICINFO>(lParam1);
      return info != nullptr ? OnGetInfo(info) : 0;
    }
    case ICM_GETQUALITY: {
      auto* value = Param<int32_t>(lParam1);
      if (instance == nullptr || value == nullptr) return kIcErrBadFormat;
      *value = QualityToIcm(instance);
      return 0;
    }
    case ICM_SETQUALITY: {
      // The only quality a compressing host can set: ICCOMPRESS's own
      // quality field is never read.
      const auto* value = Param<const int32_t>(lParam1);
      if (instance == nullptr || value == nullptr) return kIcErrBadFormat;
      SetQualityFromIcm(instance, *value);
      return 0;
    }
    default: return kIcErrUnsupported;
  }
}

bool IsInstanceMessage(uint32_t message) {
  switch (message) {
    case ICM_COMPRESS_GET_FORMAT: case ICM_COMPRESS_GET_SIZE: case ICM_COMPRESS_QUERY:
    case ICM_COMPRESS_BEGIN: case ICM_COMPRESS: case ICM_COMPRESS_END:
    case ICM_DECOMPRESS_GET_FORMAT: case ICM_DECOMPRESS_QUERY: case ICM_DECOMPRESS_BEGIN:
    case ICM_DECOMPRESS: case ICM_GETINFO: case ICM_GETQUALITY: case ICM_SETQUALITY:
      return true;
    default: return false;
  }
}

}  // namespace
}  // namespace vantaro

extern "C" VTC_API int64_t DriverProc(uint64_t driverId, void* driverHandle, uint32_t message,
                                      int64_t lParam1, int64_t lParam2) {
  using namespace vantaro;
  if (message < ICM_USER) return DriverMessage(driverId, driverHandle, message, lParam1, lParam2);
  auto* instance = reinterpret_cast<CodecInstance*>(driverId);
  if (IsInstanceMessage(message)) return InstanceMessage(instance, message, lParam1, lParam2);
  int64_t result = 0;
  if (ConstantMessage(message, &result)) return result;
  return OnDefault(driverId, driverHandle, message, lParam1, lParam2);
}
