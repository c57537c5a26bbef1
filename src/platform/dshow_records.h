// The media-graph platform's records, laid out as it publishes them for
// 64-bit code (BOOL and ULONG are 32 bits, WCHAR 16), with size checks.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/guid.h"
#include "platform/platform_types.h"

namespace vantaro {

struct IUnknown;
struct IPin;
struct IBaseFilter;
struct IFilterGraph;

using ReferenceTime = int64_t;  // 100 ns units
using Bool32 = int32_t;

struct AM_MEDIA_TYPE {
  GUID majortype;
  GUID subtype;
  Bool32 bFixedSizeSamples;
  Bool32 bTemporalCompression;
  uint32_t lSampleSize;
  GUID formattype;
  IUnknown* pUnk;
  uint32_t cbFormat;
  uint8_t* pbFormat;
};

struct RECT {
  int32_t left, top, right, bottom;
};

struct VIDEOINFOHEADER {
  RECT rcSource;
  RECT rcTarget;
  uint32_t dwBitRate;
  uint32_t dwBitErrorRate;
  ReferenceTime AvgTimePerFrame;
  BITMAPINFOHEADER bmiHeader;
};

struct VIDEOINFOHEADER2 {
  RECT rcSource;
  RECT rcTarget;
  uint32_t dwBitRate;
  uint32_t dwBitErrorRate;
  ReferenceTime AvgTimePerFrame;
  uint32_t dwInterlaceFlags;
  uint32_t dwCopyProtectFlags;
  uint32_t dwPictAspectRatioX;
  uint32_t dwPictAspectRatioY;
  uint32_t dwControlFlags;  // a union with dwReserved1 on the platform
  uint32_t dwReserved2;
  BITMAPINFOHEADER bmiHeader;
};

struct ALLOCATOR_PROPERTIES {
  int32_t cBuffers;
  int32_t cbBuffer;
  int32_t cbAlign;
  int32_t cbPrefix;
};

struct AM_SAMPLE2_PROPERTIES {
  uint32_t cbData;
  uint32_t dwTypeSpecificFlags;
  uint32_t dwSampleFlags;
  int32_t lActual;
  ReferenceTime tStart;
  ReferenceTime tStop;
  uint32_t dwStreamId;
  AM_MEDIA_TYPE* pMediaType;
  uint8_t* pbBuffer;
  int32_t cbBuffer;
};

// dwSampleFlags bits.
constexpr uint32_t kSampleSplicePoint = 0x1;
constexpr uint32_t kSamplePreroll = 0x2;
constexpr uint32_t kSampleDataDiscontinuity = 0x4;
constexpr uint32_t kSampleTypeChanged = 0x8;
constexpr uint32_t kSampleTimeValid = 0x10;
constexpr uint32_t kSampleStopValid = 0x100;
constexpr uint32_t kStreamMedia = 0;  // dwStreamId of media samples

enum PIN_DIRECTION : int32_t { PINDIR_INPUT = 0, PINDIR_OUTPUT = 1 };
enum FILTER_STATE : int32_t { State_Stopped = 0, State_Paused = 1, State_Running = 2 };

constexpr size_t kMaxPinName = 128;
constexpr size_t kMaxFilterName = 128;

struct PIN_INFO {
  IBaseFilter* pFilter;
  PIN_DIRECTION dir;
  char16_t achName[kMaxPinName];
};

struct FILTER_INFO {
  char16_t achName[kMaxFilterName];
  IFilterGraph* pGraph;
};

// Registration records (REGPINTYPES, AMOVIESETUP_PIN = REGFILTERPINS,
// AMOVIESETUP_FILTER, REGFILTER2 of version 1).
struct REGPINTYPES {
  const GUID* clsMajorType;
  const GUID* clsMinorType;
};

struct AMOVIESETUP_PIN {
  const char16_t* strName;
  Bool32 bRendered;
  Bool32 bOutput;
  Bool32 bZero;
  Bool32 bMany;
  const GUID* clsConnectsToFilter;
  const char16_t* strConnectsToPin;
  uint32_t nMediaTypes;
  const REGPINTYPES* lpMediaType;
};

struct AMOVIESETUP_FILTER {
  const GUID* clsID;
  const char16_t* strName;
  uint32_t dwMerit;
  uint32_t nPins;
  const AMOVIESETUP_PIN* lpPin;
};

struct REGFILTER2 {
  uint32_t dwVersion;
  uint32_t dwMerit;
  uint32_t cPins;  // with rgPins, the version-1 arm of the platform's union
  const AMOVIESETUP_PIN* rgPins;
};

static_assert(sizeof(AM_MEDIA_TYPE) == 88);
static_assert(offsetof(AM_MEDIA_TYPE, lSampleSize) == 40);
static_assert(offsetof(AM_MEDIA_TYPE, formattype) == 44);
static_assert(offsetof(AM_MEDIA_TYPE, pUnk) == 64);
static_assert(offsetof(AM_MEDIA_TYPE, cbFormat) == 72);
static_assert(offsetof(AM_MEDIA_TYPE, pbFormat) == 80);
static_assert(sizeof(RECT) == 16);
static_assert(sizeof(VIDEOINFOHEADER) == 88);
static_assert(offsetof(VIDEOINFOHEADER, AvgTimePerFrame) == 40);
static_assert(offsetof(VIDEOINFOHEADER, bmiHeader) == 48);
static_assert(sizeof(VIDEOINFOHEADER2) == 112);
static_assert(offsetof(VIDEOINFOHEADER2, AvgTimePerFrame) == 40);
static_assert(offsetof(VIDEOINFOHEADER2, dwInterlaceFlags) == 48);
static_assert(offsetof(VIDEOINFOHEADER2, dwPictAspectRatioX) == 56);
static_assert(offsetof(VIDEOINFOHEADER2, bmiHeader) == 72);
static_assert(sizeof(ALLOCATOR_PROPERTIES) == 16);
static_assert(sizeof(AM_SAMPLE2_PROPERTIES) == 64);
static_assert(offsetof(AM_SAMPLE2_PROPERTIES, tStart) == 16);
static_assert(offsetof(AM_SAMPLE2_PROPERTIES, dwStreamId) == 32);
static_assert(offsetof(AM_SAMPLE2_PROPERTIES, pMediaType) == 40);
static_assert(offsetof(AM_SAMPLE2_PROPERTIES, cbBuffer) == 56);
static_assert(sizeof(PIN_INFO) == 272);
static_assert(offsetof(PIN_INFO, achName) == 12);
static_assert(sizeof(FILTER_INFO) == 264);
static_assert(sizeof(REGPINTYPES) == 16);
static_assert(sizeof(AMOVIESETUP_PIN) == 56);
static_assert(offsetof(AMOVIESETUP_PIN, clsConnectsToFilter) == 24);
static_assert(offsetof(AMOVIESETUP_PIN, nMediaTypes) == 40);
static_assert(offsetof(AMOVIESETUP_PIN, lpMediaType) == 48);
static_assert(sizeof(AMOVIESETUP_FILTER) == 32);
static_assert(offsetof(AMOVIESETUP_FILTER, lpPin) == 24);
static_assert(sizeof(REGFILTER2) == 24);
static_assert(offsetof(REGFILTER2, rgPins) == 16);

// Media type identifiers.
constexpr GUID kMediaTypeVideo = FourCCSubtype(0x73646976);  // 'vids'
constexpr GUID kFormatVideoInfo{0x05589F80, 0xC356, 0x11CE,
                                {0xBF, 0x01, 0x00, 0xAA, 0x00, 0x55, 0x59, 0x5A}};
constexpr GUID kFormatVideoInfo2{0xF72A76A0, 0xEB0A, 0x11D0,
                                 {0xAC, 0xE4, 0x00, 0x00, 0xC0, 0xCC, 0x16, 0xBA}};
constexpr GUID kMediaSubtypeRgb32{0xE436EB7E, 0x524F, 0x11CE,
                                  {0x9F, 0x53, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};

}  // namespace vantaro
