// The generic filter and the two enumerators it and its pins hand out.
#include "filter/base/base_filter.h"

#include <algorithm>
#include <atomic>

#include "platform/com_runtime.h"

namespace vantaro {

namespace {

// Counts its references itself; enumerators are never aggregated.
template <typename Interface>
class Enumerator : public Interface, public CBaseObject {
 public:
  HRESULT VTC_STDCALL QueryInterface(const GUID& iid, void** object) override {
    if (object == nullptr) return kEPointer;
    if (iid == kIidIUnknown || iid == Id()) return GetInterface(this, object);
    *object = nullptr;
    return kENoInterface;
  }
  uint32_t VTC_STDCALL AddRef() override { return static_cast<uint32_t>(++references_); }
  uint32_t VTC_STDCALL Release() override {
    const int32_t left = --references_;
    if (left == 0) delete this;
    return static_cast<uint32_t>(left);
  }
  HRESULT VTC_STDCALL Skip(uint32_t count) override {
    position_ += static_cast<int32_t>(count);
    return position_ <= Count() ? kSOk : kSFalse;
  }
  HRESULT VTC_STDCALL Reset() override {
    position_ = 0;
    return kSOk;
  }

 protected:
  virtual const GUID& Id() const = 0;
  virtual int32_t Count() = 0;
  int32_t position_ = 0;

 private:
  std::atomic<int32_t> references_{0};
};

class CEnumPins final : public Enumerator<IEnumPins> {
 public:
  explicit CEnumPins(CBaseFilter* filter) : filter_(filter) { filter_->AddRef(); }
  ~CEnumPins() override { filter_->Release(); }
  HRESULT VTC_STDCALL Next(uint32_t count, IPin** pins, uint32_t* fetched) override {
    if (pins == nullptr) return kEPointer;
    uint32_t done = 0;
    while (done < count && position_ < Count()) {
      CBasePin* pin = filter_->GetPin(position_++);
      pins[done++] = pin;
      pin->AddRef();
    }
    if (fetched != nullptr) *fetched = done;
    return done == count ? kSOk : kSFalse;
  }
  HRESULT VTC_STDCALL Clone(IEnumPins** copy) override {
    if (copy == nullptr) return kEPointer;
    auto* clone = new CEnumPins(filter_);
    clone->position_ = position_;
    return GetInterface(clone, reinterpret_cast<void**>(copy));
  }

 private:
  const GUID& Id() const override { return kIidIEnumPins; }
  int32_t Count() override { return filter_->GetPinCount(); }
  CBaseFilter* filter_;
};

class CEnumMediaTypes final : public Enumerator<IEnumMediaTypes> {
 public:
  explicit CEnumMediaTypes(CBasePin* pin) : pin_(pin) { pin_->AddRef(); }
  ~CEnumMediaTypes() override { pin_->Release(); }
  HRESULT VTC_STDCALL Next(uint32_t count, AM_MEDIA_TYPE** types, uint32_t* fetched) override {
    if (types == nullptr) return kEPointer;
    uint32_t done = 0;
    while (done < count) {
      CMediaType type;
      if (pin_->GetMediaType(position_, &type) != kSOk) break;
      ++position_;
      types[done] = CreateMediaType(&type);
      if (types[done] == nullptr) break;
      ++done;
    }
    if (fetched != nullptr) *fetched = done;
    return done == count ? kSOk : kSFalse;
  }
  HRESULT VTC_STDCALL Clone(IEnumMediaTypes** copy) override {
    if (copy == nullptr) return kEPointer;
    auto* clone = new CEnumMediaTypes(pin_);
    clone->position_ = position_;
    return GetInterface(clone, reinterpret_cast<void**>(copy));
  }

 private:
  const GUID& Id() const override { return kIidIEnumMediaTypes; }
  int32_t Count() override { return INT32_MAX; }
  CBasePin* pin_;
};

void CopyName(const std::u16string& name, char16_t* target, size_t capacity) {
  const size_t length = std::min(name.size(), capacity - 1);
  std::copy_n(name.data(), length, target);
  target[length] = 0;
}

}  // namespace

HRESULT NewPinEnumerator(CBaseFilter* filter, IEnumPins** pins) {
  return GetInterface(new CEnumPins(filter), reinterpret_cast<void**>(pins));
}

HRESULT NewMediaTypeEnumerator(CBasePin* pin, IEnumMediaTypes** types) {
  return GetInterface(new CEnumMediaTypes(pin), reinterpret_cast<void**>(types));
}

CBaseFilter::CBaseFilter(const char16_t* name, IUnknown* outer, std::recursive_mutex* lock,
                         const GUID& clsid)
    : CUnknown(outer), filterLock_(lock), name_(name != nullptr ? name : u""), clsid_(clsid) {}

CBaseFilter::~CBaseFilter() {
  if (clock_ != nullptr) clock_->Release();
}

HRESULT CBaseFilter::NonDelegatingQueryInterface(const GUID& iid, void** object) {
  if (iid == kIidIBaseFilter || iid == kIidIMediaFilter || iid == kIidIPersist) {
    return GetInterface(static_cast<IBaseFilter*>(this), object);
  }
  if (iid == kIidIAMovieSetup) return GetInterface(static_cast<IAMovieSetup*>(this), object);
  return CUnknown::NonDelegatingQueryInterface(iid, object);
}

HRESULT CBaseFilter::StreamTime(ReferenceTime* time) {
  if (clock_ == nullptr) return static_cast<HRESULT>(0x80040213u);  // no clock
  *time = 0;
  return kSOk;
}

HRESULT CBaseFilter::GetClassID(GUID* clsid) {
  if (clsid == nullptr) return kEPointer;
  *clsid = clsid_;
  return kSOk;
}

HRESULT CBaseFilter::Stop() {
  std::lock_guard<std::recursive_mutex> guard(*filterLock_);
  HRESULT result = kSOk;
  if (state_ != State_Stopped) {
    for (int32_t i = 0; i < GetPinCount(); ++i) {
      CBasePin* pin = GetPin(i);
      if (pin->IsConnected()) {
        const HRESULT hr = pin->Inactive();
        if (Failed(hr) && Succeeded(result)) result = hr;
      }
    }
  }
  state_ = State_Stopped;
  return result;
}

HRESULT CBaseFilter::Pause() {
  std::lock_guard<std::recursive_mutex> guard(*filterLock_);
  if (state_ == State_Stopped) {
    for (int32_t i = 0; i < GetPinCount(); ++i) {
      CBasePin* pin = GetPin(i);
      if (pin->IsConnected()) {
        const HRESULT hr = pin->Active();
        if (Failed(hr)) return hr;
      }
    }
  }
  state_ = State_Paused;
  return kSOk;
}

HRESULT CBaseFilter::Run(ReferenceTime) {
  std::lock_guard<std::recursive_mutex> guard(*filterLock_);
  if (state_ == State_Stopped) {
    const HRESULT hr = Pause();
    if (Failed(hr)) return hr;
  }
  state_ = State_Running;
  return kSOk;
}

HRESULT CBaseFilter::GetState(uint32_t, FILTER_STATE* state) {
  if (state == nullptr) return kEPointer;
  *state = state_;
  return kSOk;
}

HRESULT CBaseFilter::SetSyncSource(IReferenceClock* clock) {
  std::lock_guard<std::recursive_mutex> guard(*filterLock_);
  if (clock != nullptr) clock->AddRef();
  if (clock_ != nullptr) clock_->Release();
  clock_ = clock;
  return kSOk;
}

HRESULT CBaseFilter::GetSyncSource(IReferenceClock** clock) {
  if (clock == nullptr) return kEPointer;
  *clock = clock_;
  if (clock_ != nullptr) clock_->AddRef();
  return kSOk;
}

HRESULT CBaseFilter::EnumPins(IEnumPins** pins) {
  if (pins == nullptr) return kEPointer;
  return NewPinEnumerator(this, pins);
}

HRESULT CBaseFilter::FindPin(const char16_t* id, IPin** pin) {
  if (id == nullptr || pin == nullptr) return kEPointer;
  std::lock_guard<std::recursive_mutex> guard(*filterLock_);
  for (int32_t i = 0; i < GetPinCount(); ++i) {
    CBasePin* candidate = GetPin(i);
    char16_t* candidateId = nullptr;
    if (Failed(candidate->QueryId(&candidateId))) continue;
    const bool same = std::u16string(candidateId) == id;
    CoTaskMemFree(candidateId);
    if (same) return GetInterface(static_cast<IPin*>(candidate), reinterpret_cast<void**>(pin));
  }
  *pin = nullptr;
  return kVfwENotFound;
}

HRESULT CBaseFilter::QueryFilterInfo(FILTER_INFO* info) {
  if (info == nullptr) return kEPointer;
  CopyName(name_, info->achName, kMaxFilterName);
  info->pGraph = graph_;
  if (graph_ != nullptr) graph_->AddRef();
  return kSOk;
}

HRESULT CBaseFilter::JoinFilterGraph(IFilterGraph* graph, const char16_t* name) {
  std::lock_guard<std::recursive_mutex> guard(*filterLock_);
  graph_ = graph;
  if (name != nullptr) name_ = name;
  return kSOk;
}

HRESULT CBaseFilter::QueryVendorInfo(char16_t** vendorInfo) {
  if (vendorInfo != nullptr) *vendorInfo = nullptr;
  return kENotImpl;
}

// Self-registration goes through the server's entry points; a filter with
// no setup data has nothing to add here.
HRESULT CBaseFilter::Register() { return GetSetupData() == nullptr ? kSFalse : kENotImpl; }
HRESULT CBaseFilter::Unregister() { return GetSetupData() == nullptr ? kSFalse : kENotImpl; }

HRESULT CBaseFilter::NotifyEvent(int32_t code, intptr_t param1, intptr_t param2) {
  if (graph_ == nullptr) return kEUnexpected;
  IMediaEventSink* sink = nullptr;
  if (Failed(graph_->QueryInterface(kIidIMediaEventSink, reinterpret_cast<void**>(&sink))) ||
      sink == nullptr) {
    return kENotImpl;
  }
  const HRESULT hr = sink->Notify(code, param1, param2);
  sink->Release();
  return hr;
}

}  // namespace vantaro
