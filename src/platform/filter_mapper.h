// The platform's filter mappers, which keep the filters a graph may choose
// from: the current one (IFilterMapper2) and the older one (IFilterMapper)
// that registration falls back to. The portable build has both over one
// in-process store, created through CoCreateInstance.
#pragma once

#include <string>
#include <vector>

#include "platform/com_interfaces.h"

namespace vantaro {

struct IMoniker : IUnknown {};     // passed through only
struct IEnumRegFilters : IUnknown {};  // passed through only
struct IEnumMoniker : IUnknown {};     // passed through only

struct IFilterMapper2 : IUnknown {
  VTC_METHOD CreateCategory(const GUID& category, uint32_t merit, const char16_t* description) = 0;
  VTC_METHOD UnregisterFilter(const GUID* category, const char16_t* instance,
                              const GUID& filter) = 0;
  VTC_METHOD RegisterFilter(const GUID& filter, const char16_t* name, IMoniker** moniker,
                            const GUID* category, const char16_t* instance,
                            const REGFILTER2* description) = 0;
  VTC_METHOD EnumMatchingFilters(IEnumMoniker** found, uint32_t flags, Bool32 exactMatch,
                                 uint32_t merit, Bool32 inputNeeded, uint32_t inputTypes,
                                 const GUID* inputTypeList, const void* inputMedium,
                                 const GUID* inputCategory, Bool32 render, Bool32 outputNeeded,
                                 uint32_t outputTypes, const GUID* outputTypeList,
                                 const void* outputMedium, const GUID* outputCategory) = 0;
};

// The older mapper passes class ids by value, as the platform declares it.
struct IFilterMapper : IUnknown {
  VTC_METHOD RegisterFilter(GUID filter, const char16_t* name, uint32_t merit) = 0;
  VTC_METHOD RegisterFilterInstance(GUID filter, const char16_t* name, GUID* instance) = 0;
  VTC_METHOD RegisterPin(GUID filter, const char16_t* name, Bool32 rendered, Bool32 output,
                         Bool32 zero, Bool32 many, GUID connectsToFilter,
                         const char16_t* connectsToPin) = 0;
  VTC_METHOD RegisterPinType(GUID filter, const char16_t* pin, GUID majorType,
                             GUID subType) = 0;
  VTC_METHOD UnregisterFilter(GUID filter) = 0;
  VTC_METHOD UnregisterFilterInstance(GUID instance) = 0;
  VTC_METHOD UnregisterPin(GUID filter, const char16_t* name) = 0;
  VTC_METHOD EnumMatchingFilters(IEnumRegFilters** found, uint32_t merit, Bool32 inputNeeded,
                                 GUID inputMajor, GUID inputSub, Bool32 render,
                                 Bool32 outputNeeded, GUID outputMajor, GUID outputSub) = 0;
};

constexpr GUID kClsidFilterMapper2{0xCDA42200, 0xBD88, 0x11D0,
                                   {0xBD, 0x4E, 0x00, 0xA0, 0xC9, 0x11, 0xCE, 0x86}};
constexpr GUID kIidIFilterMapper2{0xB79BB0B0, 0x33C1, 0x11D1,
                                  {0xAB, 0xE1, 0x00, 0xA0, 0xC9, 0x05, 0xF3, 0x75}};
constexpr GUID kClsidFilterMapper{0xE436EBB2, 0x524F, 0x11CE,
                                  {0x9F, 0x53, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
constexpr GUID kIidIFilterMapper{0x56A868A3, 0x0AD4, 0x11CE,
                                 {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};

// Creators for the class table of the portable runtime.
HRESULT CreatePortableFilterMapper2(IUnknown* outer, const GUID& iid, void** object);
HRESULT CreatePortableFilterMapper(IUnknown* outer, const GUID& iid, void** object);

// What the portable mappers hold, for tests.
struct MappedPin {
  std::u16string name;
  Bool32 rendered = 0, output = 0, zero = 0, many = 0;
  GUID connectsToFilter{};
  std::u16string connectsToPin;
  std::vector<std::pair<GUID, GUID>> types;  // major, sub
};
struct MappedFilter {
  GUID clsid{};
  std::u16string name;
  uint32_t merit = 0;
  std::vector<MappedPin> pins;
};
std::vector<MappedFilter> MappedFiltersForTests();
// One line per mapper call that changed or tried to change the store:
// "register NAME", "unregister {CLSID}", "register-pin NAME", ...
std::vector<std::string> MapperCallsForTests();
void MapperResetForTests();

}  // namespace vantaro
