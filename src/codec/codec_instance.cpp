#include "codec/codec_instance.h"

#include "codec/allocation.h"
#include "codec/quantiser.h"
#include "codec/wrapping.h"
#include "diagnostics/codec_log.h"

namespace vantaro {

namespace {

struct StreamVariant {
  char digit;
  uint32_t chromaFamily;
  uint8_t hasAlpha;
  uint8_t dctAlpha;
  const char* label;
};

constexpr StreamVariant kVariants[] = {
    {'0', 0, 0, 0, "VTQ0 (4:2:0)"},   {'1', 1, 1, 0, "VTQ1 (4:2:0:4)"},
    {'2', 2, 0, 0, "VTQ2 (4:2:2)"},   {'3', 3, 1, 0, "VTQ3 (4:2:2:4)"},
    {'4', 4, 0, 0, "VTQ4 (4:4:4)"},   {'5', 5, 1, 0, "VTQ5 (4:4:4:4)"},
    {'7', 3, 1, 1, "VTQ7 (4:2:2:4)"}, {'9', 5, 1, 1, "VTQ9 (4:4:4:4)"},
};

const StreamVariant* FindVariant(uint32_t fourcc) {
  for (const StreamVariant& v : kVariants) {
    if (fourcc == MakeFourCC('V', 'T', 'Q', v.digit) || fourcc == MakeFourCC('v', 't', 'q', v.digit)) {
      return &v;
    }
  }
  return nullptr;
}

}  // namespace

bool IsStreamFourCC(uint32_t fourcc, uint32_t* upper) {
  const StreamVariant* v = FindVariant(fourcc);
  if (v != nullptr && upper != nullptr) *upper = MakeFourCC('V', 'T', 'Q', v->digit);
  return v != nullptr;
}

const char* StreamFourCCLabel(uint32_t upperFourcc) {
  for (const StreamVariant& v : kVariants) {
    if (upperFourcc == MakeFourCC('V', 'T', 'Q', v.digit)) return v.label;
  }
  return nullptr;
}

Status InitInstance(CodecInstance* instance) {
  instance->frameBase = nullptr;
  instance->quality = 0;
  instance->reciprocalTable = static_cast<float*>(AllocateAligned(64 * sizeof(float)));
  instance->multiplierTable = static_cast<uint16_t*>(AllocateAligned(64 * sizeof(uint16_t)));
  if (instance->reciprocalTable == nullptr || instance->multiplierTable == nullptr) {
    ReleaseInstance(instance);
    return Status::kOutOfMemory;
  }
  SetQuality(instance, 96);
  instance->topDown = 0;
  // Defined values for an instance whose FourCC turns out unknown.
  instance->width = 0;
  instance->height = 0;
  instance->fourcc = 0;
  instance->chromaFamily = 0;
  instance->hasAlpha = 0;
  instance->dctAlpha = 0;
  instance->colorSpace = kCsInvalid;
  return Status::kOk;
}

void ReleaseInstance(CodecInstance* instance) {
  FreeAligned(instance->multiplierTable);
  instance->multiplierTable = nullptr;
  FreeAligned(instance->reciprocalTable);
  instance->reciprocalTable = nullptr;
}

CodecInstance* CreateInstance() {
  auto* instance = static_cast<CodecInstance*>(AllocateAligned(sizeof(CodecInstance)));
  if (instance == nullptr) return nullptr;
  if (InitInstance(instance) != Status::kOk) {
    FreeAligned(instance);
    return nullptr;
  }
  return instance;
}

void DestroyInstance(CodecInstance* instance) {
  if (instance == nullptr) return;
  ReleaseInstance(instance);
  FreeAligned(instance);
}

void SetStreamFormat(CodecInstance* instance, uint32_t fourcc) {
  const StreamVariant* v = FindVariant(fourcc);
  if (v == nullptr) return;
  instance->fourcc = MakeFourCC('V', 'T', 'Q', v->digit);
  instance->chromaFamily = v->chromaFamily;
  instance->hasAlpha = v->hasAlpha;
  instance->dctAlpha = v->dctAlpha;
}

int32_t ColorSpaceFromHeader(const BITMAPINFOHEADER* header) {
  const uint32_t compression = header->biCompression;
  const uint16_t bits = header->biBitCount;
  if (compression == MakeFourCC('Y', 'U', 'Y', '2')) return kCsYUY2;
  // VYUY lands on YUY2 with no byte swap of any kind: kept as the codec has it.
  if (compression == MakeFourCC('V', 'Y', 'U', 'Y')) return kCsYUY2;
  if (compression == MakeFourCC('N', 'V', '1', '2')) return kCsNV12;
  if (compression == MakeFourCC('N', 'V', '1', '6')) return kCsNV16;
  if (compression == MakeFourCC('N', 'V', '2', '4')) return kCsNV24;
  if (compression == MakeFourCC('Y', 'A', '2', '0')) return kCsYA20;
  if (compression == MakeFourCC('Y', 'A', '2', '2')) return kCsYA22;
  if (compression == MakeFourCC('Y', 'A', '4', '4')) return kCsYA44;
  // A UYVY header of 24 bits or more declares the alpha plane behind the lines.
  if (compression == MakeFourCC('U', 'Y', 'V', 'Y')) return bits < 24 ? kCsUYVY : kCsUYVA;
  if (compression == MakeFourCC('U', 'Y', 'V', 'A')) return kCsUYVA;
  if (compression == MakeFourCC('A', 'Y', 'U', 'V')) return kCsAYUV;
  if (compression == kBiRgb || compression == kBiBitfields ||
      compression == MakeFourCC('D', 'I', 'B', ' ')) {
    if (bits == 24) return kCsRGB24;
    if (bits == 32) return kCsRGB32;
  }
  return kCsInvalid;
}

int64_t BeginCompress(CodecInstance* instance, const BITMAPINFOHEADER* inputHeader) {
  instance->width = inputHeader->biWidth;
  instance->height = WrapAbs(inputHeader->biHeight);
  instance->colorSpace = static_cast<uint32_t>(ColorSpaceFromHeader(inputHeader));
  CodecLog("CompressBegin", "Resolution = %dx%d (%s)", instance->width, instance->height,
           LayoutOf(instance->colorSpace).name);
  const uint8_t a = instance->hasAlpha;
  const uint8_t c = LayoutOf(instance->colorSpace).hasAlpha;
  if (instance->colorSpace == kCsInvalid) return kIcErrBadFormat;
  if (a == 0 && c == 1) return kIcErrBadFormat;
  // An RGB24 source may feed an alpha stream; its alpha is simply absent.
  if (a == 1 && c == 0 && instance->colorSpace != kCsRGB24) return kIcErrBadFormat;
  return kIcErrOk;
}

int64_t BeginDecompress(CodecInstance* instance, const BITMAPINFOHEADER* inputHeader,
                        const BITMAPINFOHEADER* outputHeader) {
  if (inputHeader->biWidth != outputHeader->biWidth ||
      WrapAbs(inputHeader->biHeight) != WrapAbs(outputHeader->biHeight)) {
    return kIcErrBadFormat;
  }
  instance->width = inputHeader->biWidth;
  instance->height = WrapAbs(inputHeader->biHeight);
  instance->colorSpace = static_cast<uint32_t>(ColorSpaceFromHeader(outputHeader));
  CodecLog("DecompressBegin", "ColorSpace = %s", LayoutOf(instance->colorSpace).name);
  return kIcErrOk;
}

}  // namespace vantaro
