// In-process filter mappers over one store of registered filters.
#include <atomic>
#include <mutex>

#include "platform/filter_mapper.h"

namespace vantaro {

namespace {

struct MapperStore {
  std::mutex lock;
  std::vector<MappedFilter> filters;
  std::vector<std::string> calls;
};

MapperStore& TheStore() {
  static MapperStore store;
  return store;
}

std::string Narrow(const std::u16string& text) { return std::string(text.begin(), text.end()); }
std::u16string Text(const char16_t* text) { return text == nullptr ? u"" : std::u16string(text); }

std::vector<MappedFilter>::iterator Find(MapperStore& s, const GUID& clsid) {
  for (auto it = s.filters.begin(); it != s.filters.end(); ++it) {
    if (it->clsid == clsid) return it;
  }
  return s.filters.end();
}

// The platform answers "file not found" for a filter it never had.
constexpr HRESULT kNotRegistered = HresultFromWin32(kErrorFileNotFound);

HRESULT Unregister(const GUID& clsid) {
  MapperStore& s = TheStore();
  std::lock_guard<std::mutex> guard(s.lock);
  s.calls.push_back("unregister " + Narrow(GuidToString(clsid)));
  const auto it = Find(s, clsid);
  if (it == s.filters.end()) return kNotRegistered;
  s.filters.erase(it);
  return kSOk;
}

void Store(MappedFilter filter) {
  MapperStore& s = TheStore();
  std::lock_guard<std::mutex> guard(s.lock);
  s.calls.push_back("register " + Narrow(filter.name));
  const auto it = Find(s, filter.clsid);
  if (it != s.filters.end()) {
    *it = std::move(filter);
  } else {
    s.filters.push_back(std::move(filter));
  }
}

MappedPin PinFrom(const AMOVIESETUP_PIN& pin) {
  MappedPin mapped;
  mapped.name = Text(pin.strName);
  mapped.rendered = pin.bRendered;
  mapped.output = pin.bOutput;
  mapped.zero = pin.bZero;
  mapped.many = pin.bMany;
  mapped.connectsToFilter = pin.clsConnectsToFilter ? *pin.clsConnectsToFilter : kGuidNull;
  mapped.connectsToPin = Text(pin.strConnectsToPin);
  for (uint32_t t = 0; t < pin.nMediaTypes; ++t) {
    const REGPINTYPES& type = pin.lpMediaType[t];
    mapped.types.emplace_back(type.clsMajorType ? *type.clsMajorType : kGuidNull,
                              type.clsMinorType ? *type.clsMinorType : kGuidNull);
  }
  return mapped;
}

// Reference counting shared by both mappers.
template <typename Interface>
class MapperObject : public Interface {
 public:
  HRESULT VTC_STDCALL QueryInterface(const GUID& iid, void** object) override {
    if (object == nullptr) return kEPointer;
    if (iid == kIidIUnknown || iid == InterfaceId()) {
      *object = static_cast<Interface*>(this);
      AddRef();
      return kSOk;
    }
    *object = nullptr;
    return kENoInterface;
  }
  uint32_t VTC_STDCALL AddRef() override { return ++references_; }
  uint32_t VTC_STDCALL Release() override {
    const uint32_t left = --references_;
    if (left == 0) delete this;
    return left;
  }

 protected:
  virtual ~MapperObject() = default;
  virtual const GUID& InterfaceId() const = 0;

 private:
  std::atomic<uint32_t> references_{1};
};

class PortableMapper2 final : public MapperObject<IFilterMapper2> {
 public:
  HRESULT VTC_STDCALL CreateCategory(const GUID&, uint32_t, const char16_t*) override {
    return kENotImpl;
  }
  HRESULT VTC_STDCALL UnregisterFilter(const GUID*, const char16_t*, const GUID& filter) override {
    return Unregister(filter);
  }
  HRESULT VTC_STDCALL RegisterFilter(const GUID& filter, const char16_t* name, IMoniker**,
                                     const GUID*, const char16_t*,
                                     const REGFILTER2* description) override {
    if (description == nullptr || description->dwVersion != 1) return kEInvalidArg;
    MappedFilter mapped;
    mapped.clsid = filter;
    mapped.name = Text(name);
    mapped.merit = description->dwMerit;
    for (uint32_t p = 0; p < description->cPins; ++p) {
      mapped.pins.push_back(PinFrom(description->rgPins[p]));
    }
    Store(std::move(mapped));
    return kSOk;
  }
  HRESULT VTC_STDCALL EnumMatchingFilters(IEnumMoniker**, uint32_t, Bool32, uint32_t, Bool32,
                                          uint32_t, const GUID*, const void*, const GUID*, Bool32,
                                          Bool32, uint32_t, const GUID*, const void*,
                                          const GUID*) override {
    return kENotImpl;
  }

 private:
  const GUID& InterfaceId() const override { return kIidIFilterMapper2; }
};

class PortableMapper final : public MapperObject<IFilterMapper> {
 public:
  HRESULT VTC_STDCALL RegisterFilter(GUID filter, const char16_t* name, uint32_t merit) override {
    MappedFilter mapped;
    mapped.clsid = filter;
    mapped.name = Text(name);
    mapped.merit = merit;
    Store(std::move(mapped));
    return kSOk;
  }
  HRESULT VTC_STDCALL RegisterFilterInstance(GUID, const char16_t*, GUID*) override {
    return kENotImpl;
  }
  HRESULT VTC_STDCALL RegisterPin(GUID filter, const char16_t* name, Bool32 rendered,
                                  Bool32 output, Bool32 zero, Bool32 many, GUID connectsToFilter,
                                  const char16_t* connectsToPin) override {
    MapperStore& s = TheStore();
    std::lock_guard<std::mutex> guard(s.lock);
    s.calls.push_back("register-pin " + Narrow(Text(name)));
    const auto it = Find(s, filter);
    if (it == s.filters.end()) return kNotRegistered;
    MappedPin pin;
    pin.name = Text(name);
    pin.rendered = rendered;
    pin.output = output;
    pin.zero = zero;
    pin.many = many;
    pin.connectsToFilter = connectsToFilter;
    pin.connectsToPin = Text(connectsToPin);
    it->pins.push_back(std::move(pin));
    return kSOk;
  }
  HRESULT VTC_STDCALL RegisterPinType(GUID filter, const char16_t* pin, GUID majorType,
                                      GUID subType) override {
    MapperStore& s = TheStore();
    std::lock_guard<std::mutex> guard(s.lock);
    const auto it = Find(s, filter);
    if (it == s.filters.end()) return kNotRegistered;
    for (MappedPin& mapped : it->pins) {
      if (mapped.name == Text(pin)) {
        mapped.types.emplace_back(majorType, subType);
        return kSOk;
      }
    }
    return kNotRegistered;
  }
  HRESULT VTC_STDCALL UnregisterFilter(GUID filter) override { return Unregister(filter); }
  HRESULT VTC_STDCALL UnregisterFilterInstance(GUID) override { return kENotImpl; }
  HRESULT VTC_STDCALL UnregisterPin(GUID, const char16_t*) override { return kENotImpl; }
  HRESULT VTC_STDCALL EnumMatchingFilters(IEnumRegFilters**, uint32_t, Bool32, GUID, GUID, Bool32,
                                          Bool32, GUID, GUID) override {
    return kENotImpl;
  }

 private:
  const GUID& InterfaceId() const override { return kIidIFilterMapper; }
};

template <typename Mapper>
HRESULT CreateMapper(IUnknown* outer, const GUID& iid, void** object) {
  if (object == nullptr) return kEPointer;
  *object = nullptr;
  if (outer != nullptr) return kClassENoAggregation;
  auto* mapper = new Mapper;
  const HRESULT hr = mapper->QueryInterface(iid, object);
  mapper->Release();
  return hr;
}

}  // namespace

HRESULT CreatePortableFilterMapper2(IUnknown* outer, const GUID& iid, void** object) {
  return CreateMapper<PortableMapper2>(outer, iid, object);
}

HRESULT CreatePortableFilterMapper(IUnknown* outer, const GUID& iid, void** object) {
  return CreateMapper<PortableMapper>(outer, iid, object);
}

std::vector<MappedFilter> MappedFiltersForTests() {
  MapperStore& s = TheStore();
  std::lock_guard<std::mutex> guard(s.lock);
  return s.filters;
}

std::vector<std::string> MapperCallsForTests() {
  MapperStore& s = TheStore();
  std::lock_guard<std::mutex> guard(s.lock);
  return s.calls;
}

void MapperResetForTests() {
  MapperStore& s = TheStore();
  std::lock_guard<std::mutex> guard(s.lock);
  s.filters.clear();
  s.calls.clear();
}

}  // namespace vantaro
