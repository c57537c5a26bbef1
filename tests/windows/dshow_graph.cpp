// The decoder filter in the system's media graph, found and started the way
// a player would: registered by regsvr32, picked by the graph itself to join
// a compressed source to a sink that takes only uncompressed video, and made
// by class id to feed the system's Null Renderer. The frames are compressed
// through the DLL's direct exports; the sink's pictures are written for the
// script to compare with the native build's.
#include <cstdio>
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
const CLSID kDecoderClass{0x30515456, 0x0000, 0x0010,
                          {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

struct DirectExports {
  void* (*compressBegin)(const BITMAPINFOHEADER*, uint32_t);
  int64_t (*compressFrame)(void*, uint8_t*, const uint8_t*, int32_t);
  int64_t (*compressEnd)(void*);
};

template <typename T>
bool Find(HMODULE module, const char* name, T* function) {
  *function = reinterpret_cast<T>(reinterpret_cast<void*>(GetProcAddress(module, name)));
  return EXPECT(*function != nullptr);
}

// The frames, compressed by the same DLL through its direct functions.
std::vector<std::vector<uint8_t>> CompressFrames(const char* dllPath,
                                                 const std::string& directory) {
  std::vector<std::vector<uint8_t>> streams;
  HMODULE module = LoadLibraryA(dllPath);
  DirectExports x{};
  if (!EXPECT(module != nullptr) || !Find(module, "VTC_CompressFieldBegin", &x.compressBegin) ||
      !Find(module, "VTC_CompressFrame", &x.compressFrame) ||
      !Find(module, "VTC_CompressFieldEnd", &x.compressEnd)) {
    return streams;
  }
  const auto header = PictureHeader<BITMAPINFOHEADER>(kYuy2);
  void* encoder = x.compressBegin(&header, kGraphFourCC);
  for (int f = 0; f < kGraphFrames && EXPECT(encoder != nullptr); ++f) {
    const std::vector<uint8_t> picture = SourcePicture(kYuy2, f);
    std::vector<uint8_t> stream(kGraphFrameRoom);
    const int64_t length = x.compressFrame(encoder, stream.data(), picture.data(), kWidth * 2);
    if (!EXPECT(length > 4 && length <= static_cast<int64_t>(stream.size()))) break;
    stream.resize(static_cast<size_t>(length));
    EXPECT(WriteResult(directory, "graph_" + std::to_string(f) + ".stream", stream.data(),
                       stream.size()));
    streams.push_back(stream);
  }
  x.compressEnd(encoder);
  FreeLibrary(module);
  return streams;
}

IPin* PinOf(IBaseFilter* filter, PIN_DIRECTION wanted) {
  IEnumPins* pins = nullptr;
  if (FAILED(filter->EnumPins(&pins))) return nullptr;
  IPin* pin = nullptr;
  while (pins->Next(1, &pin, nullptr) == S_OK) {
    PIN_DIRECTION direction;
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
  if (FAILED(pin->ConnectedTo(&peer))) return id;
  PIN_INFO info{};
  if (SUCCEEDED(peer->QueryPinInfo(&info)) && info.pFilter != nullptr) {
    info.pFilter->GetClassID(&id);
    info.pFilter->Release();
  }
  peer->Release();
  return id;
}

// Runs the graph, pushes the frames, and stops it. Wine may leave filters it
// paused running when a start fails half-way, so ours are stopped here too.
void RunAndDeliver(IGraphBuilder* graph, const Endpoint& source, IBaseFilter* sink,
                   const std::vector<std::vector<uint8_t>>& frames, bool waitForCompletion) {
  IMediaControl* control = nullptr;
  IMediaEvent* events = nullptr;
  if (!EXPECT(SUCCEEDED(graph->QueryInterface(IID_IMediaControl,
                                              reinterpret_cast<void**>(&control)))) ||
      !EXPECT(SUCCEEDED(graph->QueryInterface(IID_IMediaEvent,
                                              reinterpret_cast<void**>(&events))))) {
    return;
  }
  // A renderer finishes its start only once its first sample is in, so the
  // graph may still be on the way (VFW_S_STATE_INTERMEDIATE) until delivery.
  const HRESULT started = control->Run();
  OAFilterState state = State_Stopped;
  const HRESULT reached = control->GetState(100, &state);
  if (EXPECT(SUCCEEDED(started)) &&
      EXPECT((reached == S_OK || reached == VFW_S_STATE_INTERMEDIATE) &&
             state == State_Running)) {
    EXPECT(graph_test::Deliver(source, frames) == S_OK);
    EXPECT(control->GetState(5000, &state) == S_OK && state == State_Running);
    if (waitForCompletion) {
      LONG code = 0;
      EXPECT(events->WaitForCompletion(5000, &code) == S_OK && code == EC_COMPLETE);
    }
  }
  control->Stop();
  FilterOf(source)->Stop();
  if (sink != nullptr) sink->Stop();
  events->Release();
  control->Release();
}

IGraphBuilder* NewGraph() {
  IGraphBuilder* graph = nullptr;
  EXPECT(SUCCEEDED(CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER,
                                    IID_IGraphBuilder, reinterpret_cast<void**>(&graph))));
  return graph;
}

// Source and sink alone: the graph must bring the decoder in by itself.
void IntelligentConnect(const std::vector<std::vector<uint8_t>>& frames,
                        const std::string& directory) {
  IGraphBuilder* graph = NewGraph();
  if (graph == nullptr) return;
  const Endpoint source = graph_test::NewPushSource(kGraphFourCC, kWidth, kHeight);
  const Endpoint sink = graph_test::NewYuy2Sink();
  EXPECT(graph->AddFilter(FilterOf(source), L"Source") == S_OK);
  EXPECT(graph->AddFilter(FilterOf(sink), L"Sink") == S_OK);
  // Both ends must meet our decoder: not a direct link, and not the system's
  // own decompressor wrapping the codec's compression driver.
  if (EXPECT(graph->Connect(PinOf(source), PinOf(sink)) == S_OK) &&
      EXPECT(PeerClass(PinOf(source)) == kDecoderClass) &&
      EXPECT(PeerClass(PinOf(sink)) == kDecoderClass)) {
    RunAndDeliver(graph, source, FilterOf(sink), frames, false);
    EXPECT(graph_test::SawEndOfStream(sink));
    const auto pictures = graph_test::Received(sink);
    EXPECT(pictures.size() == frames.size());
    for (size_t f = 0; f < pictures.size(); ++f) {
      const std::vector<uint8_t>& picture = pictures[f];
      EXPECT(picture.size() == FrameBytes(kYuy2));
      EXPECT(WriteResult(directory, "graph_" + std::to_string(f) + ".picture", picture.data(),
                         picture.size()));
    }
  }
  graph->Release();
  FilterOf(source)->Release();
  FilterOf(sink)->Release();
}

// The decoder made by class id, through the registration, into the system's
// Null Renderer; the graph reports completion once the frames are through.
void NullRenderer(const std::vector<std::vector<uint8_t>>& frames) {
  IGraphBuilder* graph = NewGraph();
  if (graph == nullptr) return;
  IBaseFilter* decoder = nullptr;
  IBaseFilter* renderer = nullptr;
  const Endpoint source = graph_test::NewPushSource(kGraphFourCC, kWidth, kHeight);
  if (EXPECT(SUCCEEDED(CoCreateInstance(kDecoderClass, nullptr, CLSCTX_INPROC_SERVER,
                                        IID_IBaseFilter, reinterpret_cast<void**>(&decoder)))) &&
      EXPECT(SUCCEEDED(CoCreateInstance(CLSID_NullRenderer, nullptr, CLSCTX_INPROC_SERVER,
                                        IID_IBaseFilter, reinterpret_cast<void**>(&renderer))))) {
    EXPECT(graph->AddFilter(FilterOf(source), L"Source") == S_OK);
    EXPECT(graph->AddFilter(decoder, L"Decoder") == S_OK);
    EXPECT(graph->AddFilter(renderer, L"Null Renderer") == S_OK);
    IPin* decoderIn = PinOf(decoder, PINDIR_INPUT);
    IPin* decoderOut = PinOf(decoder, PINDIR_OUTPUT);
    IPin* rendererIn = PinOf(renderer, PINDIR_INPUT);
    if (EXPECT(decoderIn && decoderOut && rendererIn) &&
        EXPECT(graph->ConnectDirect(PinOf(source), decoderIn, nullptr) == S_OK) &&
        EXPECT(graph->ConnectDirect(decoderOut, rendererIn, nullptr) == S_OK)) {
      RunAndDeliver(graph, source, nullptr, frames, true);
    }
    for (IPin* pin : {decoderIn, decoderOut, rendererIn}) {
      if (pin != nullptr) pin->Release();
    }
  }
  graph->Release();
  if (renderer != nullptr) renderer->Release();
  if (decoder != nullptr) decoder->Release();
  FilterOf(source)->Release();
}

}  // namespace

int main(int argc, char** argv) {
  if (!check::HasArguments(argc, argv)) return 2;
  const std::string directory = argv[1];
  if (!EXPECT(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)))) {
    return check::ExitCode("dshow_graph");
  }
  const auto frames = CompressFrames(argv[2], directory);
  if (EXPECT(frames.size() == static_cast<size_t>(kGraphFrames))) {
    IntelligentConnect(frames, directory);
    NullRenderer(frames);
  }
  CoUninitialize();
  return check::ExitCode("dshow_graph");
}
