// CVantaroDecoder: the transform filter that decodes a compressed stream
// into an uncompressed layout negotiated with the downstream filter. It only
// decodes; one instance of the codec follows the output format.
#pragma once

#include "filter/base/transform_filter.h"

namespace vantaro {

// The filter's own interface: nothing beyond IUnknown, answered for by name.
struct IVantaroDecoder : IUnknown {};
constexpr GUID kIidIVantaroDecoder{0xDFE39B2A, 0x82F9, 0x46D3,
                                   {0x85, 0x77, 0x5D, 0x41, 0xFD, 0xFB, 0xED, 0xEB}};
// The class id is the media subtype of VTQ0 on purpose: the filter has no
// identity of its own.
constexpr GUID kClsidVantaroDecoder = VTC_CLSID_DECODER_INIT;

// One row of an output table: position in the table is the GetMediaType
// position; the flag picks VIDEOINFOHEADER2 over VIDEOINFOHEADER.
struct OutputFormat {
  GUID subtype;
  uint16_t bitCount;
  uint32_t compression;
  bool videoInfo2;
};
constexpr int32_t kOutputFormatsPlainCount = 10;
constexpr int32_t kOutputFormatsAlphaCount = 12;
extern const OutputFormat kOutputFormatsPlain[kOutputFormatsPlainCount];
extern const OutputFormat kOutputFormatsAlpha[kOutputFormatsAlphaCount];

// The value names and defaults of the per-user settings.
constexpr char16_t kSettingsKey[] = u"Software\\Quorin\\VTQ";
constexpr uint32_t kDefaultInterlaceFlags = 37;     // interlaced, field 1 first, both regular
constexpr uint32_t kDefaultTypeSpecificFlags = 4;   // field 1 first
// The field-1-first bit is 4 in both flag words, so the rules treat them alike.
constexpr uint32_t kFieldOneFirst = 4;

class CVantaroDecoder final : public CTransformFilter, public IVantaroDecoder {
 public:
  // The state that negotiation sets and streaming reads.
  struct Fields {
    void* instance = nullptr;  // opaque: the filter reads nothing through it
    uint32_t outputLayout = 0;  // the layout id the instance decodes into
    uint32_t inputFourcc = 0xFFFFFFFFu;
    uint32_t outputCompression = 0xFFFFFFFFu;  // 0 for RGB
    int32_t frameWidth = 0;
    int32_t frameHeight = 0;  // with its sign
    int32_t outputStride = 0;
    // Start at 0 so that a first connection holds defined values where the
    // aspect rules leave them unchanged.
    uint32_t aspectX = 0, aspectY = 0;
    uint32_t pixelAspectX = 0, pixelAspectY = 0;
    ReferenceTime avgTimePerFrame = 0;
    uint32_t interlaceFlags = kDefaultInterlaceFlags;
    uint32_t typeSpecificFlags = kDefaultTypeSpecificFlags;
    uint32_t configuredInterlaceFlags = kDefaultInterlaceFlags;
    uint32_t configuredTypeSpecificFlags = kDefaultTypeSpecificFlags;
    uint8_t alphaStream = 0;
    uint8_t enhancedRenderer = 0;
    uint8_t writeSampleFlags = 1;
    uint32_t outputBufferSize = 0;
    // Bytes a decode writes from the output pointer: outputBufferSize, or
    // more for the planar layouts whose second plane follows the lines.
    uint32_t outputFrameBytes = 0;
  };

  // The class table's creation function; E_OUTOFMEMORY in `result` on failure.
  static CUnknown* CreateInstance(IUnknown* outer, HRESULT* result);

  explicit CVantaroDecoder(IUnknown* outer);
  ~CVantaroDecoder() override;

  VTC_DECLARE_IUNKNOWN
  HRESULT NonDelegatingQueryInterface(const GUID& iid, void** object) override;

  HRESULT Transform(IMediaSample* in, IMediaSample* out) override;
  HRESULT CheckInputType(const CMediaType* mediaType) override;
  HRESULT CheckTransform(const CMediaType* in, const CMediaType* out) override;
  HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override;
  HRESULT GetMediaType(int32_t position, CMediaType* mediaType) override;
  HRESULT SetMediaType(PIN_DIRECTION direction, const CMediaType* mediaType) override;
  HRESULT CheckConnect(PIN_DIRECTION direction, IPin* pin) override;

  const Fields& State() const { return f_; }

 private:
  HRESULT SetInputFormat(const AM_MEDIA_TYPE& mediaType);
  void ApplyAspectRules(const BITMAPINFOHEADER& header);
  void ApplyFieldOrderCode(uint16_t planes);
  // 0 applied, 1 (S_FALSE) not applied. May zero dwInterlaceFlags in `mediaType`.
  HRESULT ApplyOutputFormat(AM_MEDIA_TYPE* mediaType);
  void ReplaceInstance(const BITMAPINFOHEADER& outputHeader, uint32_t compression);
  HRESULT DecodeInto(IMediaSample* in, IMediaSample* out);

  Fields f_;
};

}  // namespace vantaro
