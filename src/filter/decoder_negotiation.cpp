// What the decoder filter decides at connection time: the types it takes
// and offers, the picture's aspect and interlace description, the output
// line size, and the codec instance that follows the output format.
#include <cstdlib>
#include <new>

#include "codec/codec_instance.h"
#include "codec/layout_facts.h"
#include "codec/wrapping.h"
#include "filter/vantaro_decoder.h"
#include "platform/registry.h"

namespace vantaro {

namespace {

constexpr uint32_t kYUY2 = MakeFourCC('Y', 'U', 'Y', '2');
constexpr uint32_t kUYVY = MakeFourCC('U', 'Y', 'V', 'Y');
constexpr uint32_t kNV12 = MakeFourCC('N', 'V', '1', '2');
constexpr uint32_t kNV16 = MakeFourCC('N', 'V', '1', '6');
constexpr uint32_t kNV24 = MakeFourCC('N', 'V', '2', '4');
constexpr uint32_t kUYVA = MakeFourCC('U', 'Y', 'V', 'A');
constexpr uint32_t kYA20 = MakeFourCC('Y', 'A', '2', '0');
constexpr uint32_t kYA22 = MakeFourCC('Y', 'A', '2', '2');
constexpr uint32_t kYA44 = MakeFourCC('Y', 'A', '4', '4');

constexpr OutputFormat Row(uint32_t fourcc, uint16_t bits, bool videoInfo2) {
  return {FourCCSubtype(fourcc), bits, fourcc, videoInfo2};
}
constexpr OutputFormat RgbRow(bool videoInfo2) {
  return {kMediaSubtypeRgb32, 32, kBiRgb, videoInfo2};
}

// The format block of a video type, by format type. Only a block as large
// as its kind counts as present.
struct FormatBlock {
  BITMAPINFOHEADER* header = nullptr;
  VIDEOINFOHEADER2* info2 = nullptr;
  ReferenceTime avgTimePerFrame = 0;
};

bool FindFormatBlock(const AM_MEDIA_TYPE& type, FormatBlock* block) {
  if (type.pbFormat == nullptr) return false;
  if (type.formattype == kFormatVideoInfo && type.cbFormat >= sizeof(VIDEOINFOHEADER)) {
    auto* info = reinterpret_cast<VIDEOINFOHEADER*>(type.pbFormat);
    *block = {&info->bmiHeader, nullptr, info->AvgTimePerFrame};
    return true;
  }
  if (type.formattype == kFormatVideoInfo2 && type.cbFormat >= sizeof(VIDEOINFOHEADER2)) {
    auto* info = reinterpret_cast<VIDEOINFOHEADER2*>(type.pbFormat);
    *block = {&info->bmiHeader, info, info->AvgTimePerFrame};
    return true;
  }
  return false;
}

// "Read, or create with the default": a failed read writes the default back.
uint32_t QueryRegistryDword(RegistryKey key, const char16_t* name, uint32_t fallback) {
  uint32_t value = 0;
  if (RegistryQueryDword(key, name, &value) != kErrorSuccess) {
    value = fallback;
    (void)RegistrySetDword(key, name, value);
  }
  return value;
}

// Bytes a planar decode reaches from the output pointer: the main plane,
// then the second plane whose lines, field by field, sit `pitch` apart.
uint32_t PlanarFrameBytes(uint32_t colorSpace, int32_t width, int32_t height, int32_t stride) {
  const LayoutFacts& facts = LayoutOf(colorSpace);
  if (facts.second != SecondPlane::kChroma) return 0;
  // Per 16 field lines: 8 or 16 second-plane lines, the stores' line
  // distance for a field stride of two lines apart (the stride is a multiple
  // of four, so the shift is exact), each SecondStep bytes per 16 pixels.
  const int64_t linesPerRow = HalfHeightChroma(facts) ? 8 : 16;
  const int64_t pitch = int64_t{(2 * facts.lineMul) >> facts.lineShift} * stride;
  const int64_t rows = ((height + 1) / 2 + 15) / 16;  // whole macroblock rows of a field
  const int64_t lines = rows * linesPerRow;
  const int64_t bytes = int64_t{height} * stride + SecondFieldOffset(facts, stride) +
                        (lines - 1) * pitch + int64_t{SecondStep(facts) / 16} * width;
  return bytes > 0 && bytes <= UINT32_MAX ? static_cast<uint32_t>(bytes) : UINT32_MAX;
}

struct RendererKind {
  GUID clsid;
  enum Effect { kEnhanced, kNoFlags, kToggle, kFlags } effect;
};

// Downstream classes that change how samples are flagged, in match order.
constexpr RendererKind kRendererKinds[] = {
    {{0xFA10746C, 0x9B63, 0x4B6C, {0xBC, 0x49, 0xFC, 0x30, 0x0E, 0xA5, 0xF2, 0x56}},
     RendererKind::kEnhanced},  // Enhanced Video Renderer
    {{0xCD8743A1, 0x3736, 0x11D0, {0x9E, 0x69, 0x00, 0xC0, 0x4F, 0xD7, 0xC1, 0x5B}},
     RendererKind::kNoFlags},  // Overlay Mixer
    {{0xB87BEB7B, 0x8D29, 0x423F, {0xAE, 0x4D, 0x65, 0x82, 0xC1, 0x01, 0x75, 0xAC}},
     RendererKind::kToggle},  // Video Mixing Renderer 7
    {{0x70E102B0, 0x5556, 0x11CE, {0x97, 0xC0, 0x00, 0xAA, 0x00, 0x55, 0x59, 0x5A}},
     RendererKind::kToggle},  // Video Renderer
    {{0x51B4ABF3, 0x748F, 0x4E3B, {0xA2, 0x76, 0xC8, 0x28, 0x33, 0x0E, 0x92, 0x6A}},
     RendererKind::kFlags},  // Video Mixing Renderer 9
};

}  // namespace

const OutputFormat kOutputFormatsPlain[kOutputFormatsPlainCount] = {
    Row(kYUY2, 16, true),  Row(kUYVY, 16, true),  Row(kNV12, 12, true),
    Row(kNV16, 12, true),  // 12, not 16: the bit count of this row has always been so
    Row(kNV24, 24, true),  Row(kYUY2, 16, false), Row(kUYVY, 16, false),
    Row(kNV12, 12, false), Row(kNV16, 16, false), Row(kNV24, 24, false),
};

// Only alpha streams offer RGB, and YUY2 after it.
const OutputFormat kOutputFormatsAlpha[kOutputFormatsAlphaCount] = {
    Row(kUYVA, 24, true),  Row(kYA20, 20, true),  Row(kYA22, 24, true),  Row(kYA44, 32, true),
    RgbRow(true),          Row(kYUY2, 16, true),  Row(kUYVA, 24, false), Row(kYA20, 20, false),
    Row(kYA22, 24, false), Row(kYA44, 32, false), RgbRow(false),         Row(kYUY2, 16, false),
};

CUnknown* CVantaroDecoder::CreateInstance(IUnknown* outer, HRESULT* result) {
  auto* decoder = new (std::nothrow) CVantaroDecoder(outer);
  if (decoder == nullptr && result != nullptr) *result = kEOutOfMemory;
  return decoder;
}

// The settings are read once per filter; an unreadable store leaves the
// defaults, silently.
CVantaroDecoder::CVantaroDecoder(IUnknown* outer)
    : CTransformFilter(nullptr, outer, kClsidVantaroDecoder) {
  RegistryKey key = 0;
  if (RegistryCreateKey(kRegistryCurrentUser, kSettingsKey, &key) == kErrorSuccess) {
    f_.configuredInterlaceFlags = QueryRegistryDword(key, u"InterlaceFlags", kDefaultInterlaceFlags);
    f_.configuredTypeSpecificFlags =
        QueryRegistryDword(key, u"TypeSpecificFlags", kDefaultTypeSpecificFlags);
    RegistryCloseKey(key);
  }
  f_.interlaceFlags = f_.configuredInterlaceFlags;
  f_.typeSpecificFlags = f_.configuredTypeSpecificFlags;
}

CVantaroDecoder::~CVantaroDecoder() {
  if (f_.instance != nullptr) VTC_DecompressFieldEnd(f_.instance);
}

HRESULT CVantaroDecoder::NonDelegatingQueryInterface(const GUID& iid, void** object) {
  if (object == nullptr) return kEPointer;
  if (iid == kIidIVantaroDecoder) return GetInterface(static_cast<IVantaroDecoder*>(this), object);
  return CTransformFilter::NonDelegatingQueryInterface(iid, object);
}

// Any of the sixteen stream FourCCs in a video block; subtype and size are
// not looked at.
HRESULT CVantaroDecoder::CheckInputType(const CMediaType* mediaType) {
  FormatBlock block;
  if (!(mediaType->majortype == kMediaTypeVideo) || !FindFormatBlock(*mediaType, &block) ||
      !IsStreamFourCC(block.header->biCompression)) {
    return kVfwETypeNotAccepted;
  }
  return kSOk;
}

// A larger output than the picture passes (a renderer's wider surface); an
// output that isn't video passes unexamined, as it always has.
HRESULT CVantaroDecoder::CheckTransform(const CMediaType* in, const CMediaType* out) {
  const HRESULT hr = CheckInputType(in);
  if (hr != kSOk) return hr;
  if (!(out->majortype == kMediaTypeVideo)) return kSOk;
  FormatBlock block;
  if (!FindFormatBlock(*out, &block)) return kVfwETypeNotAccepted;
  if (WrapAbs(block.header->biHeight) < f_.frameHeight || block.header->biWidth < f_.frameWidth) {
    return kVfwETypeNotAccepted;
  }
  return kSOk;
}

HRESULT CVantaroDecoder::GetMediaType(int32_t position, CMediaType* mediaType) {
  if (!m_pInput->IsConnected()) return kEUnexpected;
  const OutputFormat* table = f_.alphaStream ? kOutputFormatsAlpha : kOutputFormatsPlain;
  const int32_t count = f_.alphaStream ? kOutputFormatsAlphaCount : kOutputFormatsPlainCount;
  if (position < 0) return kEInvalidArg;
  if (position >= count) return kVfwSNoMoreItems;
  const OutputFormat& row = table[position];

  const uint32_t size = row.videoInfo2 ? sizeof(VIDEOINFOHEADER2) : sizeof(VIDEOINFOHEADER);
  uint8_t* block = mediaType->AllocFormatBuffer(size);
  if (block == nullptr) return kEOutOfMemory;
  mediaType->formattype = row.videoInfo2 ? kFormatVideoInfo2 : kFormatVideoInfo;
  RECT* rects = reinterpret_cast<RECT*>(block);  // rcSource, rcTarget lead both kinds
  BITMAPINFOHEADER* header = nullptr;
  if (row.videoInfo2) {
    auto* info = reinterpret_cast<VIDEOINFOHEADER2*>(block);
    info->dwPictAspectRatioX = f_.aspectX;
    info->dwPictAspectRatioY = f_.aspectY;
    info->dwInterlaceFlags = f_.interlaceFlags;
    info->AvgTimePerFrame = f_.avgTimePerFrame;
    header = &info->bmiHeader;
  } else {
    auto* info = reinterpret_cast<VIDEOINFOHEADER*>(block);
    info->AvgTimePerFrame = f_.avgTimePerFrame;
    header = &info->bmiHeader;
  }
  rects[0] = rects[1] = RECT{0, 0, f_.frameWidth, f_.frameHeight};

  header->biSize = sizeof(BITMAPINFOHEADER);
  header->biWidth = f_.frameWidth;
  header->biPlanes = 1;
  // The pixel aspect ratio travels in the pels-per-meter fields by design.
  header->biXPelsPerMeter = static_cast<int32_t>(f_.pixelAspectX);
  header->biYPelsPerMeter = static_cast<int32_t>(f_.pixelAspectY);
  header->biCompression = row.compression;
  header->biBitCount = row.bitCount;
  // RGB is always delivered top-down.
  header->biHeight = row.compression == kBiRgb ? WrapMul(f_.frameHeight, -1) : f_.frameHeight;
  const int32_t line = WrapAdd(WrapMul(row.bitCount, header->biWidth), 31) >> 3 & 0x1FFFFFFC;
  header->biSizeImage = static_cast<uint32_t>(WrapMul(line, WrapAbs(header->biHeight)));

  mediaType->majortype = kMediaTypeVideo;
  mediaType->subtype = row.subtype;
  mediaType->bTemporalCompression = 0;
  mediaType->bFixedSizeSamples = header->biSizeImage != 0 ? 1 : 0;
  if (header->biSizeImage != 0) mediaType->lSampleSize = header->biSizeImage;
  return kSOk;
}

HRESULT CVantaroDecoder::SetMediaType(PIN_DIRECTION direction, const CMediaType* mediaType) {
  if (direction == PINDIR_INPUT) return SetInputFormat(*mediaType);
  // A private copy: the interlace zeroing must not reach the caller's type.
  CMediaType copy(*mediaType);
  return ApplyOutputFormat(&copy);
}

HRESULT CVantaroDecoder::SetInputFormat(const AM_MEDIA_TYPE& mediaType) {
  FormatBlock block;
  if (!FindFormatBlock(mediaType, &block)) return kSOk;
  const BITMAPINFOHEADER& header = *block.header;
  f_.avgTimePerFrame = block.avgTimePerFrame;
  f_.inputFourcc = header.biCompression;
  f_.frameWidth = header.biWidth;
  f_.frameHeight = header.biHeight;
  f_.interlaceFlags = f_.configuredInterlaceFlags;
  f_.typeSpecificFlags = f_.configuredTypeSpecificFlags;
  // The odd digits 1, 3, 5, 7 and 9 are the alpha variants.
  f_.alphaStream = static_cast<uint8_t>((f_.inputFourcc >> 24) & 1);
  ApplyAspectRules(header);
  ApplyFieldOrderCode(header.biPlanes);
  return kSOk;
}

void CVantaroDecoder::ApplyAspectRules(const BITMAPINFOHEADER& header) {
  const int32_t w = f_.frameWidth;
  const int32_t h = f_.frameHeight;
  auto set = [this](uint32_t ax, uint32_t ay, uint32_t px, uint32_t py) {
    f_.aspectX = ax;
    f_.aspectY = ay;
    f_.pixelAspectX = px;
    f_.pixelAspectY = py;
  };
  const auto x = static_cast<uint32_t>(header.biXPelsPerMeter);
  const auto y = static_cast<uint32_t>(header.biYPelsPerMeter);
  if (w == 1440 && h == 1080) {
    set(16, 9, 4, 3);
  } else if (w == 720 && x != 0 && y != 0) {
    // A pixel aspect carried in the pels-per-meter fields; the picture
    // aspect snaps to 16:9 or 4:3 when it lies close, else stays unreduced.
    set(x * 720u, static_cast<uint32_t>(h) * y, x, y);
    if (f_.aspectX != 0 && f_.aspectY != 0) {
      const double r = static_cast<double>(f_.aspectX) / static_cast<double>(f_.aspectY);
      if (r > 1.75 && r < 1.78) {
        f_.aspectX = 16, f_.aspectY = 9;
      } else if (r > 1.3 && r < 1.35) {
        f_.aspectX = 4, f_.aspectY = 3;
      }
    }
  } else if (w == 720 && (h == 480 || h == 486)) {
    set(4, 3, 10, 11);
    if (h == 486) {  // NTSC at 486 lines leads with the second field
      f_.interlaceFlags &= ~kFieldOneFirst;
      f_.typeSpecificFlags &= ~kFieldOneFirst;
    }
  } else if (w == 720 && h == 576) {
    set(4, 3, 59, 54);
  } else if (w == 720) {
    set(4, 3, f_.pixelAspectX, f_.pixelAspectY);
  } else if (w == WrapMul(h, 16) / 9) {
    set(16, 9, 1, 1);
    if (w == 1280) f_.interlaceFlags = f_.typeSpecificFlags = 0;  // 720p is progressive
  } else {
    set(static_cast<uint32_t>(w), static_cast<uint32_t>(h), 1, 1);
  }
}

// biPlanes, meaningless for video, carries the field order: bits 1 and 2.
void CVantaroDecoder::ApplyFieldOrderCode(uint16_t planes) {
  if (planes == 1) return;
  switch ((planes >> 1) & 3) {
    case 1:
      f_.interlaceFlags |= kFieldOneFirst;
      f_.typeSpecificFlags |= kFieldOneFirst;
      break;
    case 2:
      f_.interlaceFlags &= ~kFieldOneFirst;
      f_.typeSpecificFlags &= ~kFieldOneFirst;
      break;
    case 3:
      f_.interlaceFlags = f_.typeSpecificFlags = 0;
      break;
    default:
      break;
  }
}

HRESULT CVantaroDecoder::ApplyOutputFormat(AM_MEDIA_TYPE* mediaType) {
  FormatBlock block;
  if (!FindFormatBlock(*mediaType, &block)) return kSFalse;
  // An alpha stream on the Enhanced Video Renderer is always progressive.
  if (block.info2 != nullptr && f_.alphaStream && f_.enhancedRenderer) {
    block.info2->dwInterlaceFlags = 0;
  }
  const OutputFormat* table = f_.alphaStream ? kOutputFormatsAlpha : kOutputFormatsPlain;
  const int32_t count = f_.alphaStream ? kOutputFormatsAlphaCount : kOutputFormatsPlainCount;
  const OutputFormat* row = nullptr;
  for (int32_t i = 0; i < count && row == nullptr; ++i) {
    if (table[i].subtype == mediaType->subtype) row = &table[i];
  }
  if (row == nullptr) return kSFalse;
  const BITMAPINFOHEADER& header = *block.header;
  if (header.biWidth < f_.frameWidth || WrapAbs(header.biHeight) < f_.frameHeight) return kSFalse;

  const int32_t bits = header.biBitCount;
  const int32_t w = header.biWidth;
  const int32_t h = WrapAbs(header.biHeight);
  if (bits == 24 && (row->compression == kUYVA || row->compression == kUYVY)) {
    // Packed UYVY lines with the alpha plane behind them: two bytes a pixel
    // for the line, three for the frame.
    f_.outputStride = WrapAdd(WrapMul(w, 16), 31) >> 3 & ~3;
    f_.outputBufferSize = static_cast<uint32_t>(WrapMul(WrapMul(h, w), 3));
  } else {
    f_.outputStride = WrapAdd(WrapMul(bits, w), 31) >> 3 & ~3;
    f_.outputBufferSize = static_cast<uint32_t>(WrapMul(f_.outputStride, h));
  }
  // A mere change of stride keeps the instance; a new layout needs a new one.
  if (row->compression != f_.outputCompression) ReplaceInstance(header, row->compression);
  const uint32_t planar =
      f_.instance == nullptr ? 0
                             : PlanarFrameBytes(f_.outputLayout, f_.frameWidth,
                                                WrapAbs(f_.frameHeight), f_.outputStride);
  f_.outputFrameBytes = planar > f_.outputBufferSize ? planar : f_.outputBufferSize;
  return kSOk;
}

void CVantaroDecoder::ReplaceInstance(const BITMAPINFOHEADER& outputHeader, uint32_t compression) {
  if (f_.instance != nullptr) VTC_DecompressFieldEnd(f_.instance);
  BITMAPINFOHEADER copy = outputHeader;
  copy.biWidth = f_.frameWidth;
  copy.biHeight = f_.frameHeight;
  f_.instance = VTC_DecompressFieldBegin(&copy, f_.inputFourcc);
  f_.outputLayout = static_cast<uint32_t>(ColorSpaceFromHeader(&copy));
  f_.outputCompression = compression;
}

// The buffer holds a whole decoded frame, planar second plane included.
HRESULT CVantaroDecoder::DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) {
  if (!m_pInput->IsConnected()) return kEUnexpected;
  if (request->cBuffers < 1) request->cBuffers = 1;
  request->cbBuffer = static_cast<int32_t>(f_.outputFrameBytes);
  request->cbPrefix = 0;
  if (request->cbAlign < 1) request->cbAlign = 1;
  ALLOCATOR_PROPERTIES actual{};
  const HRESULT hr = allocator->SetProperties(request, &actual);
  if (Failed(hr)) return hr;
  return actual.cbBuffer < request->cbBuffer ? kEFail : kSOk;
}

HRESULT CVantaroDecoder::CheckConnect(PIN_DIRECTION direction, IPin* pin) {
  if (direction != PINDIR_OUTPUT) return kSOk;
  PIN_INFO info{};
  if (Failed(pin->QueryPinInfo(&info)) || info.pFilter == nullptr) return kSOk;
  GUID clsid{};
  if (Succeeded(info.pFilter->GetClassID(&clsid))) {
    for (const RendererKind& kind : kRendererKinds) {
      if (!(kind.clsid == clsid)) continue;
      switch (kind.effect) {
        case RendererKind::kEnhanced:
          f_.enhancedRenderer = 1;
          f_.writeSampleFlags = 1;
          break;
        case RendererKind::kNoFlags:
          f_.writeSampleFlags = 0;
          break;
        case RendererKind::kToggle:  // toggled, not cleared: a second attempt restores it
          f_.writeSampleFlags ^= 1;
          break;
        case RendererKind::kFlags:
          f_.writeSampleFlags = 1;
          break;
      }
      break;
    }
  }
  info.pFilter->Release();
  return kSOk;
}

}  // namespace vantaro
