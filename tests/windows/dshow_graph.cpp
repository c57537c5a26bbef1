// The decoder filter in the system's media graph, found and started the way
// a player would: registered by regsvr32, picked by the graph itself to join
// a compressed source to a sink that takes only uncompressed video, and made
// by class id to feed the system's Null Renderer. The frames are compressed
// through the DLL's direct exports; the sink's pictures are written for the
// script to compare with the native build's.
#include <string>
#include <vector>

#include "check.h"
#include <windows.h>
#include <dshow.h>

#include "graph_endpoints.h"
#include "sample_frames.h"

// In libstrmiids.a, declared by no MinGW-w64 header.
extern "C" const CLSID CLSID_NullRenderer;

namespace {

using namespace sample_frames;
using graph_test::Endpoint;

IBaseFilter* FilterOf(const Endpoint& e) { return static_cast<IBaseFilter*>(e.filter); }
IPin* PinOf(const Endpoint& e) { return static_cast<IPin*>(e.pin); }

// The decoder's class id is VTQ0's media subtype.
const CLSID kDecoderClass{0x30515456, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

// The frames, compressed by the same DLL through its direct functions.
std::vector<std::vector<uint8_t>> CompressFrames(const char* dllPath, const std::string& directory) {
  std::vector<std::vector<uint8_t>> streams;
  HMODULE module = LoadLibraryA(dllPath);
  if (!EXPECT(module != nullptr)) return streams;
  const auto find = [module](const char* name) { return reinterpret_cast<void*>(GetProcAddress(module, name)); };
  const auto begin = reinterpret_cast<void* (*)(const BITMAPINFOHEADER*, uint32_t)>(find("VTC_CompressFieldBegin"));
  const auto frame = reinterpret_cast<int64_t (*)(void*, uint8_t*, const uint8_t*, int32_t)>(find("VTC_CompressFrame"));
  const auto end = reinterpret_cast<int64_t (*)(void*)>(find("VTC_CompressFieldEnd"));
  if (EXPECT(begin && frame && end)) {
    const auto header = PictureHeader<BITMAPINFOHEADER>(kYuy2);
    void* encoder = begin(&header, kGraphFourCC);
    for (int f = 0; f < kFrames && EXPECT(encoder != nullptr); ++f) {
      std::vector<uint8_t> stream(kGraphFrameRoom);
      const int64_t length = frame(encoder, stream.data(), SourcePicture(kYuy2, f).data(), kWidth * 2);
      if (!EXPECT(length > 4 && length <= int64_t(stream.size()))) break;
      stream.resize(size_t(length));
      EXPECT(WriteResult(directory, "graph_" + std::to_string(f) + ".stream", stream.data(), stream.size()));
      streams.push_back(stream);
    }
    end(encoder);
  }
  FreeLibrary(module);
  return streams;
}

IPin* PinOf(IBaseFilter* filter, PIN_DIRECTION wanted) {
  IEnumPins* pins = nullptr;
  IPin* pin = nullptr;
  if (FAILED(filter->EnumPins(&pins))) return nullptr;
  PIN_DIRECTION direction;
  while (pins->Next(1, &pin, nullptr) == S_OK) {
    if (SUCCEEDED(pin->QueryDirection(&direction)) && direction == wanted) break;
    pin->Release();
    pin = nullptr;
  }
  pins->Release();
  return pin;
}

// The class of the filter at the other end of `pin`; null if unconnected.
CLSID PeerClass(IPin* pin) {
  CLSID id = GUID_NULL;
  IPin* peer = nullptr;
  PIN_INFO info{};
  if (FAILED(pin->ConnectedTo(&peer))) return id;
  if (SUCCEEDED(peer->QueryPinInfo(&info)) && info.pFilter != nullptr) {
    info.pFilter->GetClassID(&id);
    info.pFilter->Release();
  }
  peer->Release();
  return id;
}

// Runs the graph, pushes the frames, waits for a renderer's completion
// (`complete`; the recording sink reports none) and stops. Wine may
// leave filters it paused running when a start fails half-way, so the
// source is stopped here too.
void RunAndDeliver(IGraphBuilder* graph, const Endpoint& source, const std::vector<std::vector<uint8_t>>& frames,
                   bool complete) {
  IMediaControl* control = nullptr;
  IMediaEvent* events = nullptr;
  if (!EXPECT(SUCCEEDED(graph->QueryInterface(IID_IMediaControl, reinterpret_cast<void**>(&control)))) ||
      !EXPECT(SUCCEEDED(graph->QueryInterface(IID_IMediaEvent, reinterpret_cast<void**>(&events))))) {
    return;
  }
  // A renderer finishes its start only once its first sample is in, so the
  // graph may still be on the way (VFW_S_STATE_INTERMEDIATE) until delivery.
  OAFilterState state = State_Stopped;
  LONG code = 0;
  if (EXPECT(SUCCEEDED(control->Run())) &&
      EXPECT(SUCCEEDED(control->GetState(100, &state)) && state == State_Running)) {
    EXPECT(graph_test::Deliver(source, frames) == S_OK);
    EXPECT(control->GetState(5000, &state) == S_OK && state == State_Running);
    if (complete) EXPECT(events->WaitForCompletion(5000, &code) == S_OK && code == EC_COMPLETE);
  }
  control->Stop();
  FilterOf(source)->Stop();
  events->Release();
  control->Release();
}

// Source and sink alone, then the decoder by class id into the Null
// Renderer: the graph must bring the decoder in by itself the first time
// (not a direct link, nor the system's decompressor over the codec's driver).
void Graphs(const std::vector<std::vector<uint8_t>>& frames, const std::string& directory, bool byClass) {
  IGraphBuilder* graph = nullptr;
  IBaseFilter* decoder = nullptr;
  IBaseFilter* sink = nullptr;
  const Endpoint source = graph_test::NewPushSource(kGraphFourCC, kWidth, kHeight);
  const Endpoint ours = graph_test::NewYuy2Sink();
  if (!EXPECT(SUCCEEDED(CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder,
                                         reinterpret_cast<void**>(&graph))))) {
    return;
  }
  EXPECT(graph->AddFilter(FilterOf(source), L"Source") == S_OK);
  if (!byClass) {
    EXPECT(graph->AddFilter(FilterOf(ours), L"Sink") == S_OK);
    if (EXPECT(graph->Connect(PinOf(source), PinOf(ours)) == S_OK) &&
        EXPECT(PeerClass(PinOf(source)) == kDecoderClass && PeerClass(PinOf(ours)) == kDecoderClass)) {
      RunAndDeliver(graph, source, frames, false);
      FilterOf(ours)->Stop();
      const auto pictures = graph_test::Received(ours);
      EXPECT(pictures.size() == frames.size());
      for (size_t f = 0; f < pictures.size(); ++f) {
        EXPECT(pictures[f].size() == FrameBytes(kYuy2));
        EXPECT(WriteResult(directory, "graph_" + std::to_string(f) + ".picture", pictures[f].data(),
                           pictures[f].size()));
      }
    }
  } else if (EXPECT(SUCCEEDED(CoCreateInstance(kDecoderClass, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter,
                                               reinterpret_cast<void**>(&decoder)))) &&
             EXPECT(SUCCEEDED(CoCreateInstance(CLSID_NullRenderer, nullptr, CLSCTX_INPROC_SERVER,
                                               IID_IBaseFilter, reinterpret_cast<void**>(&sink))))) {
    EXPECT(graph->AddFilter(decoder, L"Decoder") == S_OK && graph->AddFilter(sink, L"Null Renderer") == S_OK);
    IPin* pins[] = {PinOf(decoder, PINDIR_INPUT), PinOf(decoder, PINDIR_OUTPUT), PinOf(sink, PINDIR_INPUT)};
    if (EXPECT(pins[0] && pins[1] && pins[2]) &&
        EXPECT(graph->ConnectDirect(PinOf(source), pins[0], nullptr) == S_OK) &&
        EXPECT(graph->ConnectDirect(pins[1], pins[2], nullptr) == S_OK)) {
      RunAndDeliver(graph, source, frames, true);
    }
    for (IPin* pin : pins) {
      if (pin != nullptr) pin->Release();
    }
  }
  graph->Release();
  for (IBaseFilter* filter : {decoder, sink, FilterOf(source), FilterOf(ours)}) {
    if (filter != nullptr) filter->Release();
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (!check::HasArguments(argc, argv)) return 2;
  if (!EXPECT(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)))) return check::ExitCode("dshow_graph");
  const auto frames = CompressFrames(argv[2], argv[1]);
  if (EXPECT(frames.size() == size_t(kFrames))) {
    Graphs(frames, argv[1], false);
    Graphs(frames, argv[1], true);
  }
  CoUninitialize();
  return check::ExitCode("dshow_graph");
}
