// The two filters of the graph test, written against the system's own
// DirectShow headers: a push source with one output pin that offers a
// compressed video type and delivers frames from the test's thread, and a
// sink with one input pin that takes only uncompressed YUY2 and keeps every
// sample it receives. Neither connects to the other: the graph has to find a
// decoder between them.
#pragma once

#include <windows.h>
#include <dshow.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

namespace graph_test {

// A plain, unaggregatable COM object: counts references, deletes itself.
template <typename... Interfaces>
class Counted : public Interfaces... {
 public:
  virtual ~Counted() = default;
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

 private:
  std::atomic<ULONG> references_{1};
};

// The state and graph bookkeeping both filters share.
class FilterBase : public Counted<IBaseFilter> {
 public:
  explicit FilterBase(const wchar_t* name) : name_(name) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  HRESULT STDMETHODCALLTYPE GetClassID(CLSID* clsid) override;
  HRESULT STDMETHODCALLTYPE Stop() override;
  HRESULT STDMETHODCALLTYPE Pause() override;
  HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME start) override;
  HRESULT STDMETHODCALLTYPE GetState(DWORD timeout, FILTER_STATE* state) override;
  HRESULT STDMETHODCALLTYPE SetSyncSource(IReferenceClock* clock) override;
  HRESULT STDMETHODCALLTYPE GetSyncSource(IReferenceClock** clock) override;
  HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins** pins) override;
  HRESULT STDMETHODCALLTYPE FindPin(LPCWSTR id, IPin** pin) override;
  HRESULT STDMETHODCALLTYPE QueryFilterInfo(FILTER_INFO* info) override;
  HRESULT STDMETHODCALLTYPE JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) override;
  HRESULT STDMETHODCALLTYPE QueryVendorInfo(LPWSTR* info) override;

  FILTER_STATE State() const { return state_; }
  virtual IPin* ThePin() = 0;  // not add-referenced

 protected:
  // Called on the way into Paused from Stopped, and into Stopped.
  virtual void Activate() {}
  virtual void Inactivate() {}

 private:
  std::wstring name_;
  IFilterGraph* graph_ = nullptr;  // not add-referenced: the graph owns the filter
  IReferenceClock* clock_ = nullptr;
  FILTER_STATE state_ = State_Stopped;
};

// One pin's part that does not depend on its direction.
class PinBase : public Counted<IPin> {
 public:
  PinBase(FilterBase* filter, const wchar_t* name, PIN_DIRECTION direction)
      : filter_(filter), name_(name), direction_(direction) {}
  ~PinBase() override;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  HRESULT STDMETHODCALLTYPE Disconnect() override;
  HRESULT STDMETHODCALLTYPE ConnectedTo(IPin** pin) override;
  HRESULT STDMETHODCALLTYPE ConnectionMediaType(AM_MEDIA_TYPE* type) override;
  HRESULT STDMETHODCALLTYPE QueryPinInfo(PIN_INFO* info) override;
  HRESULT STDMETHODCALLTYPE QueryDirection(PIN_DIRECTION* direction) override;
  HRESULT STDMETHODCALLTYPE QueryId(LPWSTR* id) override;
  HRESULT STDMETHODCALLTYPE QueryInternalConnections(IPin** pins, ULONG* count) override;
  HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME, REFERENCE_TIME, double) override;

 protected:
  FilterBase* filter_;
  std::wstring name_;
  PIN_DIRECTION direction_;
  IPin* connected_ = nullptr;
  AM_MEDIA_TYPE type_{};  // owns its format block while connected
};

// The source: its one type is the compressed stream of `fourcc`.
class PushSource final : public FilterBase {
 public:
  PushSource(uint32_t fourcc, int32_t width, int32_t height, uint32_t frameRoom);
  ~PushSource() override;
  IPin* ThePin() override;

  // Sends each frame as a key-frame sample 1/25 s long, then end of stream.
  // Answers the first failed Receive, or S_OK.
  HRESULT Deliver(const std::vector<std::vector<uint8_t>>& frames);

 protected:
  void Activate() override;
  void Inactivate() override;

 private:
  class OutputPin;
  OutputPin* pin_;
};

// The sink: takes YUY2 of the given size with a VIDEOINFOHEADER only.
class CaptureSink final : public FilterBase {
 public:
  CaptureSink(int32_t width, int32_t height);
  ~CaptureSink() override;
  IPin* ThePin() override;

  const std::vector<std::vector<uint8_t>>& Samples() const;
  bool SawEndOfStream() const;

 private:
  class InputPin;
  InputPin* pin_;
};

// A media-type enumerator over a copy of the given types.
HRESULT NewTypeEnumerator(const std::vector<AM_MEDIA_TYPE>& types, IEnumMediaTypes** result);

// Frees the format block of a media type (not the type itself).
void FreeFormat(AM_MEDIA_TYPE* type);
// Copies `source` into `target`, format block included.
HRESULT CopyMediaType(AM_MEDIA_TYPE* target, const AM_MEDIA_TYPE& source);

}  // namespace graph_test
