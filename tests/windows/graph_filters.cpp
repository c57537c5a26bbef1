#include "graph_filters.h"

#include <algorithm>
#include <cstring>

namespace graph_test {

// ---- media types and enumerators

void FreeFormat(AM_MEDIA_TYPE* type) {
  if (type->pbFormat != nullptr) CoTaskMemFree(type->pbFormat);
  type->pbFormat = nullptr;
  type->cbFormat = 0;
  if (type->pUnk != nullptr) type->pUnk->Release();
  type->pUnk = nullptr;
}

HRESULT CopyMediaType(AM_MEDIA_TYPE* target, const AM_MEDIA_TYPE& source) {
  *target = source;
  if (source.cbFormat != 0) {
    target->pbFormat = static_cast<BYTE*>(CoTaskMemAlloc(source.cbFormat));
    if (target->pbFormat == nullptr) return E_OUTOFMEMORY;
    std::memcpy(target->pbFormat, source.pbFormat, source.cbFormat);
  }
  if (target->pUnk != nullptr) target->pUnk->AddRef();
  return S_OK;
}

namespace {

class TypeEnumerator final : public Counted<IEnumMediaTypes> {
 public:
  explicit TypeEnumerator(const std::vector<AM_MEDIA_TYPE>& types) : types_(types.size()) {
    for (size_t i = 0; i < types.size(); ++i) CopyMediaType(&types_[i], types[i]);
  }
  ~TypeEnumerator() override {
    for (AM_MEDIA_TYPE& type : types_) FreeFormat(&type);
  }
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (iid != IID_IUnknown && iid != IID_IEnumMediaTypes) {
      *object = nullptr;
      return E_NOINTERFACE;
    }
    *object = static_cast<IEnumMediaTypes*>(this);
    AddRef();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Next(ULONG count, AM_MEDIA_TYPE** types, ULONG* fetched) override {
    ULONG given = 0;
    for (; given < count && next_ < types_.size(); ++given, ++next_) {
      auto* type = static_cast<AM_MEDIA_TYPE*>(CoTaskMemAlloc(sizeof(AM_MEDIA_TYPE)));
      if (type == nullptr || FAILED(CopyMediaType(type, types_[next_]))) return E_OUTOFMEMORY;
      types[given] = type;
    }
    if (fetched != nullptr) *fetched = given;
    return given == count ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
    next_ = std::min(types_.size(), next_ + count);
    return next_ < types_.size() ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Reset() override {
    next_ = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Clone(IEnumMediaTypes** copy) override {
    auto* clone = new TypeEnumerator(types_);
    clone->next_ = next_;
    *copy = clone;
    return S_OK;
  }

 private:
  std::vector<AM_MEDIA_TYPE> types_;
  size_t next_ = 0;
};

class PinEnumerator final : public Counted<IEnumPins> {
 public:
  explicit PinEnumerator(IPin* pin) : pin_(pin) { pin_->AddRef(); }
  ~PinEnumerator() override { pin_->Release(); }
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (iid != IID_IUnknown && iid != IID_IEnumPins) {
      *object = nullptr;
      return E_NOINTERFACE;
    }
    *object = static_cast<IEnumPins*>(this);
    AddRef();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Next(ULONG count, IPin** pins, ULONG* fetched) override {
    ULONG given = 0;
    if (count > 0 && !done_) {
      pins[0] = pin_;
      pin_->AddRef();
      done_ = true;
      given = 1;
    }
    if (fetched != nullptr) *fetched = given;
    return given == count ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
    if (count == 0) return S_OK;
    const bool skipped = !done_ && count == 1;
    done_ = true;
    return skipped ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Reset() override {
    done_ = false;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Clone(IEnumPins** copy) override {
    auto* clone = new PinEnumerator(pin_);
    clone->done_ = done_;
    *copy = clone;
    return S_OK;
  }

 private:
  IPin* pin_;
  bool done_ = false;
};

}  // namespace

HRESULT NewTypeEnumerator(const std::vector<AM_MEDIA_TYPE>& types, IEnumMediaTypes** result) {
  *result = new TypeEnumerator(types);
  return S_OK;
}

// ---- filter

HRESULT FilterBase::QueryInterface(REFIID iid, void** object) {
  if (iid == IID_IUnknown || iid == IID_IPersist || iid == IID_IMediaFilter ||
      iid == IID_IBaseFilter) {
    *object = static_cast<IBaseFilter*>(this);
    AddRef();
    return S_OK;
  }
  *object = nullptr;
  return E_NOINTERFACE;
}

HRESULT FilterBase::GetClassID(CLSID* clsid) {
  *clsid = GUID_NULL;  // not a registered class
  return S_OK;
}

HRESULT FilterBase::Stop() {
  if (state_ != State_Stopped) Inactivate();
  state_ = State_Stopped;
  return S_OK;
}

HRESULT FilterBase::Pause() {
  if (state_ == State_Stopped) Activate();
  state_ = State_Paused;
  return S_OK;
}

HRESULT FilterBase::Run(REFERENCE_TIME) {
  if (state_ == State_Stopped) Activate();
  state_ = State_Running;
  return S_OK;
}

HRESULT FilterBase::GetState(DWORD, FILTER_STATE* state) {
  if (state == nullptr) return E_POINTER;
  *state = state_;
  return S_OK;
}

HRESULT FilterBase::SetSyncSource(IReferenceClock* clock) {
  if (clock != nullptr) clock->AddRef();
  if (clock_ != nullptr) clock_->Release();
  clock_ = clock;
  return S_OK;
}

HRESULT FilterBase::GetSyncSource(IReferenceClock** clock) {
  if (clock == nullptr) return E_POINTER;
  *clock = clock_;
  if (clock_ != nullptr) clock_->AddRef();
  return S_OK;
}

HRESULT FilterBase::EnumPins(IEnumPins** pins) {
  if (pins == nullptr) return E_POINTER;
  *pins = new PinEnumerator(ThePin());
  return S_OK;
}

HRESULT FilterBase::FindPin(LPCWSTR id, IPin** pin) {
  LPWSTR name = nullptr;
  ThePin()->QueryId(&name);
  const bool match = name != nullptr && std::wcscmp(name, id) == 0;
  CoTaskMemFree(name);
  *pin = match ? ThePin() : nullptr;
  if (!match) return VFW_E_NOT_FOUND;
  (*pin)->AddRef();
  return S_OK;
}

HRESULT FilterBase::QueryFilterInfo(FILTER_INFO* info) {
  if (info == nullptr) return E_POINTER;
  std::wcsncpy(info->achName, name_.c_str(), MAX_FILTER_NAME - 1);
  info->achName[MAX_FILTER_NAME - 1] = 0;
  info->pGraph = graph_;
  if (graph_ != nullptr) graph_->AddRef();
  return S_OK;
}

HRESULT FilterBase::JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) {
  graph_ = graph;
  if (name != nullptr) name_ = name;
  return S_OK;
}

HRESULT FilterBase::QueryVendorInfo(LPWSTR*) { return E_NOTIMPL; }

// ---- pin

PinBase::~PinBase() { FreeFormat(&type_); }

HRESULT PinBase::QueryInterface(REFIID iid, void** object) {
  if (iid == IID_IUnknown || iid == IID_IPin) {
    *object = static_cast<IPin*>(this);
    AddRef();
    return S_OK;
  }
  *object = nullptr;
  return E_NOINTERFACE;
}

HRESULT PinBase::Disconnect() {
  if (connected_ == nullptr) return S_FALSE;
  connected_->Release();
  connected_ = nullptr;
  FreeFormat(&type_);
  return S_OK;
}

HRESULT PinBase::ConnectedTo(IPin** pin) {
  if (pin == nullptr) return E_POINTER;
  *pin = connected_;
  if (connected_ == nullptr) return VFW_E_NOT_CONNECTED;
  connected_->AddRef();
  return S_OK;
}

HRESULT PinBase::ConnectionMediaType(AM_MEDIA_TYPE* type) {
  if (type == nullptr) return E_POINTER;
  if (connected_ == nullptr) {
    std::memset(type, 0, sizeof *type);
    return VFW_E_NOT_CONNECTED;
  }
  return CopyMediaType(type, type_);
}

HRESULT PinBase::QueryPinInfo(PIN_INFO* info) {
  if (info == nullptr) return E_POINTER;
  info->pFilter = filter_;
  filter_->AddRef();
  info->dir = direction_;
  std::wcsncpy(info->achName, name_.c_str(), MAX_PIN_NAME - 1);
  info->achName[MAX_PIN_NAME - 1] = 0;
  return S_OK;
}

HRESULT PinBase::QueryDirection(PIN_DIRECTION* direction) {
  if (direction == nullptr) return E_POINTER;
  *direction = direction_;
  return S_OK;
}

HRESULT PinBase::QueryId(LPWSTR* id) {
  if (id == nullptr) return E_POINTER;
  const size_t bytes = (name_.size() + 1) * sizeof(wchar_t);
  *id = static_cast<LPWSTR>(CoTaskMemAlloc(bytes));
  if (*id == nullptr) return E_OUTOFMEMORY;
  std::memcpy(*id, name_.c_str(), bytes);
  return S_OK;
}

HRESULT PinBase::QueryInternalConnections(IPin**, ULONG*) { return E_NOTIMPL; }

HRESULT PinBase::NewSegment(REFERENCE_TIME, REFERENCE_TIME, double) { return S_OK; }

}  // namespace graph_test
