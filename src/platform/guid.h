// The platform's GUID record, its textual form and the result codes of the
// component-object platform, shared by the filter and its platform pieces.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "vantaro/filter.h"

// Equality of the record, found by argument lookup for the C type.
constexpr bool operator==(const VtcGuid& a, const VtcGuid& b) {
  if (a.Data1 != b.Data1 || a.Data2 != b.Data2 || a.Data3 != b.Data3) return false;
  for (int i = 0; i < 8; ++i) {
    if (a.Data4[i] != b.Data4[i]) return false;
  }
  return true;
}

namespace vantaro {

using GUID = VtcGuid;
using HRESULT = int32_t;

static_assert(sizeof(GUID) == 16);
static_assert(offsetof(GUID, Data2) == 4);
static_assert(offsetof(GUID, Data3) == 6);
static_assert(offsetof(GUID, Data4) == 8);

constexpr GUID kGuidNull{0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};

// The media subtype of a FourCC: {xxxxxxxx-0000-0010-8000-00AA00389B71}.
constexpr GUID FourCCSubtype(uint32_t fourcc) {
  return GUID{fourcc, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
}

// "{30515456-0000-0010-8000-00AA00389B71}": upper-case hex in braces, 38
// characters, as the platform spells class ids in registry keys.
std::u16string GuidToString(const GUID& guid);

// Result codes.
constexpr HRESULT kSOk = 0;
constexpr HRESULT kSFalse = 1;
constexpr HRESULT kENotImpl = static_cast<HRESULT>(0x80004001u);
constexpr HRESULT kENoInterface = static_cast<HRESULT>(0x80004002u);
constexpr HRESULT kEPointer = static_cast<HRESULT>(0x80004003u);
constexpr HRESULT kEFail = static_cast<HRESULT>(0x80004005u);
constexpr HRESULT kEUnexpected = static_cast<HRESULT>(0x8000FFFFu);
constexpr HRESULT kEOutOfMemory = static_cast<HRESULT>(0x8007000Eu);
constexpr HRESULT kEInvalidArg = static_cast<HRESULT>(0x80070057u);
constexpr HRESULT kClassENotAvailable = static_cast<HRESULT>(0x80040111u);
constexpr HRESULT kClassENoAggregation = static_cast<HRESULT>(0x80040110u);
constexpr HRESULT kRegDbEClassNotReg = static_cast<HRESULT>(0x80040154u);
constexpr HRESULT kVfwSNoMoreItems = 0x00040103;
constexpr HRESULT kVfwSNoStopTime = 0x00040270;
constexpr HRESULT kVfwEAlreadyConnected = static_cast<HRESULT>(0x80040204u);
constexpr HRESULT kVfwENotConnected = static_cast<HRESULT>(0x80040209u);
constexpr HRESULT kVfwENoAllocator = static_cast<HRESULT>(0x8004020Au);
constexpr HRESULT kVfwENotCommitted = static_cast<HRESULT>(0x80040211u);
constexpr HRESULT kVfwESizeNotSet = static_cast<HRESULT>(0x80040212u);
constexpr HRESULT kVfwEAlreadyCommitted = static_cast<HRESULT>(0x8004020Du);
constexpr HRESULT kVfwEBuffersOutstanding = static_cast<HRESULT>(0x8004020Eu);
constexpr HRESULT kVfwENotFound = static_cast<HRESULT>(0x80040216u);
constexpr HRESULT kVfwEWrongState = static_cast<HRESULT>(0x80040227u);
constexpr HRESULT kVfwETypeNotAccepted = static_cast<HRESULT>(0x8004022Au);
constexpr HRESULT kVfwENotStopped = static_cast<HRESULT>(0x80040224u);
constexpr HRESULT kVfwENoAcceptableTypes = static_cast<HRESULT>(0x80040207u);
constexpr HRESULT kVfwESampleTimeNotSet = static_cast<HRESULT>(0x80040249u);
constexpr HRESULT kVfwEMediaTimeNotSet = static_cast<HRESULT>(0x80040251u);

constexpr bool Succeeded(HRESULT hr) { return hr >= 0; }
constexpr bool Failed(HRESULT hr) { return hr < 0; }

// A platform error number (0 success) as a result code in the Windows range.
constexpr HRESULT HresultFromWin32(int32_t error) {
  return error <= 0 ? error
                    : static_cast<HRESULT>((static_cast<uint32_t>(error) & 0xFFFFu) | 0x80070000u);
}

// Platform error numbers that the registry stand-in answers.
constexpr int32_t kErrorSuccess = 0;
constexpr int32_t kErrorFileNotFound = 2;
constexpr int32_t kErrorAccessDenied = 5;
constexpr int32_t kErrorInvalidParameter = 87;
constexpr int32_t kErrorNoMoreItems = 259;
constexpr int32_t kErrorNoUnicodeTranslation = 1113;

}  // namespace vantaro
