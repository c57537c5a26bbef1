// The push source's output pin and the capture sink's input pin.
#include <cstdlib>
#include <cstring>

#include "graph_filters.h"

namespace graph_test {

namespace {

// The FourCC's media subtype: {xxxxxxxx-0000-0010-8000-00AA00389B71}.
GUID FourCCSubtype(uint32_t fourcc) {
  return GUID{fourcc, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
}

AM_MEDIA_TYPE CompressedType(uint32_t fourcc, int32_t width, int32_t height, uint32_t room) {
  AM_MEDIA_TYPE type{};
  type.majortype = MEDIATYPE_Video;
  type.subtype = FourCCSubtype(fourcc);
  type.bFixedSizeSamples = FALSE;
  type.bTemporalCompression = FALSE;
  type.lSampleSize = 0;
  type.formattype = FORMAT_VideoInfo;
  auto* info = static_cast<VIDEOINFOHEADER*>(CoTaskMemAlloc(sizeof(VIDEOINFOHEADER)));
  std::memset(info, 0, sizeof *info);
  info->AvgTimePerFrame = 400000;  // 25 frames a second
  info->bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
  info->bmiHeader.biWidth = width;
  info->bmiHeader.biHeight = height;
  info->bmiHeader.biPlanes = 1;
  info->bmiHeader.biBitCount = 16;
  info->bmiHeader.biCompression = fourcc;
  info->bmiHeader.biSizeImage = room;
  type.cbFormat = sizeof(VIDEOINFOHEADER);
  type.pbFormat = reinterpret_cast<BYTE*>(info);
  return type;
}

}  // namespace

// ---- source

class PushSource::OutputPin final : public PinBase {
 public:
  OutputPin(PushSource* filter, uint32_t fourcc, int32_t width, int32_t height, uint32_t room)
      : PinBase(filter, L"Output", PINDIR_OUTPUT),
        offered_(CompressedType(fourcc, width, height, room)),
        room_(room) {}
  ~OutputPin() override {
    ReleaseTransport();
    FreeFormat(&offered_);
  }

  HRESULT STDMETHODCALLTYPE Connect(IPin* receiver, const AM_MEDIA_TYPE* wanted) override {
    if (receiver == nullptr) return E_POINTER;
    if (connected_ != nullptr) return VFW_E_ALREADY_CONNECTED;
    // One type only: a caller asking for another gets a refusal.
    if (wanted != nullptr && wanted->majortype != GUID_NULL &&
        (wanted->majortype != offered_.majortype ||
         (wanted->subtype != GUID_NULL && wanted->subtype != offered_.subtype))) {
      return VFW_E_TYPE_NOT_ACCEPTED;
    }
    HRESULT hr = receiver->ReceiveConnection(this, &offered_);
    if (FAILED(hr)) return VFW_E_NO_ACCEPTABLE_TYPES;
    connected_ = receiver;
    connected_->AddRef();
    CopyMediaType(&type_, offered_);
    hr = NegotiateAllocator();
    if (FAILED(hr)) {
      receiver->Disconnect();
      Disconnect();
    }
    return hr;
  }
  HRESULT STDMETHODCALLTYPE ReceiveConnection(IPin*, const AM_MEDIA_TYPE*) override {
    return E_UNEXPECTED;  // an output pin
  }
  HRESULT STDMETHODCALLTYPE Disconnect() override {
    ReleaseTransport();
    return PinBase::Disconnect();
  }
  HRESULT STDMETHODCALLTYPE QueryAccept(const AM_MEDIA_TYPE* type) override {
    return type != nullptr && type->subtype == offered_.subtype ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE EnumMediaTypes(IEnumMediaTypes** types) override {
    return NewTypeEnumerator({offered_}, types);
  }
  HRESULT STDMETHODCALLTYPE EndOfStream() override { return E_UNEXPECTED; }
  HRESULT STDMETHODCALLTYPE BeginFlush() override { return E_UNEXPECTED; }
  HRESULT STDMETHODCALLTYPE EndFlush() override { return E_UNEXPECTED; }

  HRESULT Commit() { return allocator_ != nullptr ? allocator_->Commit() : VFW_E_NO_ALLOCATOR; }
  void Decommit() {
    if (allocator_ != nullptr) allocator_->Decommit();
  }

  HRESULT Deliver(const std::vector<std::vector<uint8_t>>& frames) {
    if (input_ == nullptr || allocator_ == nullptr) return VFW_E_NOT_CONNECTED;
    HRESULT result = S_OK;
    REFERENCE_TIME start = 0;
    for (const std::vector<uint8_t>& frame : frames) {
      IMediaSample* sample = nullptr;
      HRESULT hr = allocator_->GetBuffer(&sample, nullptr, nullptr, 0);
      if (FAILED(hr)) return hr;
      BYTE* data = nullptr;
      sample->GetPointer(&data);
      if (static_cast<size_t>(sample->GetSize()) < frame.size()) {
        sample->Release();
        return E_FAIL;
      }
      std::memcpy(data, frame.data(), frame.size());
      sample->SetActualDataLength(static_cast<LONG>(frame.size()));
      REFERENCE_TIME stop = start + 400000;
      sample->SetTime(&start, &stop);
      sample->SetSyncPoint(TRUE);
      hr = input_->Receive(sample);
      sample->Release();
      if (hr != S_OK && result == S_OK) result = hr;
      start = stop;
    }
    connected_->EndOfStream();
    return result;
  }

 private:
  // The receiver's allocator if it has one, else a system one; one buffer
  // with room for the largest frame.
  HRESULT NegotiateAllocator() {
    HRESULT hr = connected_->QueryInterface(IID_IMemInputPin, reinterpret_cast<void**>(&input_));
    if (FAILED(hr)) return hr;
    if (FAILED(input_->GetAllocator(&allocator_))) {
      hr = CoCreateInstance(CLSID_MemoryAllocator, nullptr, CLSCTX_INPROC_SERVER,
                            IID_IMemAllocator, reinterpret_cast<void**>(&allocator_));
      if (FAILED(hr)) return hr;
    }
    ALLOCATOR_PROPERTIES wanted{1, static_cast<LONG>(room_), 1, 0};
    ALLOCATOR_PROPERTIES actual{};
    hr = allocator_->SetProperties(&wanted, &actual);
    if (FAILED(hr)) return hr;
    return input_->NotifyAllocator(allocator_, FALSE);
  }
  void ReleaseTransport() {
    if (allocator_ != nullptr) allocator_->Release();
    if (input_ != nullptr) input_->Release();
    allocator_ = nullptr;
    input_ = nullptr;
  }

  AM_MEDIA_TYPE offered_;
  uint32_t room_;
  IMemInputPin* input_ = nullptr;
  IMemAllocator* allocator_ = nullptr;
};

PushSource::PushSource(uint32_t fourcc, int32_t width, int32_t height, uint32_t frameRoom)
    : FilterBase(L"Push source"), pin_(new OutputPin(this, fourcc, width, height, frameRoom)) {}

PushSource::~PushSource() { pin_->Release(); }

IPin* PushSource::ThePin() { return pin_; }

HRESULT PushSource::Deliver(const std::vector<std::vector<uint8_t>>& frames) {
  return pin_->Deliver(frames);
}

void PushSource::Activate() { pin_->Commit(); }

void PushSource::Inactivate() { pin_->Decommit(); }

// ---- sink

class CaptureSink::InputPin final : public PinBase, public IMemInputPin {
 public:
  InputPin(CaptureSink* filter, int32_t width, int32_t height)
      : PinBase(filter, L"Input", PINDIR_INPUT), width_(width), height_(height) {}

  // IUnknown, for both interfaces.
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (iid == IID_IMemInputPin) {
      *object = static_cast<IMemInputPin*>(this);
      AddRef();
      return S_OK;
    }
    return PinBase::QueryInterface(iid, object);
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return PinBase::AddRef(); }
  ULONG STDMETHODCALLTYPE Release() override { return PinBase::Release(); }

  // IPin.
  HRESULT STDMETHODCALLTYPE Connect(IPin*, const AM_MEDIA_TYPE*) override { return E_UNEXPECTED; }
  HRESULT STDMETHODCALLTYPE ReceiveConnection(IPin* connector,
                                              const AM_MEDIA_TYPE* type) override {
    if (connector == nullptr || type == nullptr) return E_POINTER;
    if (connected_ != nullptr) return VFW_E_ALREADY_CONNECTED;
    if (QueryAccept(type) != S_OK) return VFW_E_TYPE_NOT_ACCEPTED;
    connected_ = connector;
    connected_->AddRef();
    return CopyMediaType(&type_, *type);
  }
  HRESULT STDMETHODCALLTYPE QueryAccept(const AM_MEDIA_TYPE* type) override {
    if (type->majortype != MEDIATYPE_Video || type->subtype != MEDIASUBTYPE_YUY2 ||
        type->formattype != FORMAT_VideoInfo || type->cbFormat < sizeof(VIDEOINFOHEADER)) {
      return S_FALSE;
    }
    const auto* info = reinterpret_cast<const VIDEOINFOHEADER*>(type->pbFormat);
    const BITMAPINFOHEADER& header = info->bmiHeader;
    return header.biWidth == width_ && std::abs(header.biHeight) == height_ ? S_OK : S_FALSE;
  }
  // Nothing to propose: the upstream pin offers its own.
  HRESULT STDMETHODCALLTYPE EnumMediaTypes(IEnumMediaTypes** types) override {
    return NewTypeEnumerator({}, types);
  }
  HRESULT STDMETHODCALLTYPE EndOfStream() override {
    endOfStream_ = true;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE BeginFlush() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE EndFlush() override { return S_OK; }

  // IMemInputPin: the upstream allocator is used.
  HRESULT STDMETHODCALLTYPE GetAllocator(IMemAllocator**) override { return VFW_E_NO_ALLOCATOR; }
  HRESULT STDMETHODCALLTYPE NotifyAllocator(IMemAllocator*, BOOL) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetAllocatorRequirements(ALLOCATOR_PROPERTIES*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Receive(IMediaSample* sample) override {
    if (filter_->State() == State_Stopped) return VFW_E_WRONG_STATE;
    BYTE* data = nullptr;
    if (FAILED(sample->GetPointer(&data))) return E_FAIL;
    samples_.emplace_back(data, data + sample->GetActualDataLength());
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE ReceiveMultiple(IMediaSample** samples, LONG count,
                                            LONG* processed) override {
    LONG done = 0;
    HRESULT hr = S_OK;
    while (done < count && (hr = Receive(samples[done])) == S_OK) ++done;
    *processed = done;
    return hr;
  }
  HRESULT STDMETHODCALLTYPE ReceiveCanBlock() override { return S_FALSE; }

  std::vector<std::vector<uint8_t>> samples_;
  bool endOfStream_ = false;

 private:
  int32_t width_;
  int32_t height_;
};

CaptureSink::CaptureSink(int32_t width, int32_t height)
    : FilterBase(L"Capture sink"), pin_(new InputPin(this, width, height)) {}

CaptureSink::~CaptureSink() { pin_->Release(); }

IPin* CaptureSink::ThePin() { return pin_; }

const std::vector<std::vector<uint8_t>>& CaptureSink::Samples() const { return pin_->samples_; }

bool CaptureSink::SawEndOfStream() const { return pin_->endOfStream_; }

}  // namespace graph_test
