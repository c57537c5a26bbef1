// The decoder filter in the system's media graph, found and started the way
// a player would: registered by regsvr32 and picked by the graph itself to
// join a compressed source to a sink that takes only uncompressed video. The
// frames are those direct_exports compressed through the DLL; the sink's
// pictures are written for the script to compare with the native build's.
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <windows.h>
#include <dshow.h>

#include "graph_endpoints.h"
#include "sample_frames.h"

namespace {

using namespace sample_frames;
using graph_test::Endpoint;

IBaseFilter* FilterOf(const Endpoint& e) { return static_cast<IBaseFilter*>(e.filter); }
IPin* PinOf(const Endpoint& e) { return static_cast<IPin*>(e.pin); }

// The decoder's class id is VTQ0's media subtype.
const CLSID kDecoderClass{0x30515456, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

// The frames direct_exports compressed through the same DLL.
std::vector<std::vector<uint8_t>> ReadFrames(const std::string& directory) {
  std::vector<std::vector<uint8_t>> frames;
  for (int f = 0; f < kFrames; ++f) {
    std::ifstream in(directory + "\\graph_" + std::to_string(f) + ".stream", std::ios::binary);
    frames.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    if (!EXPECT(frames.back().size() > 4)) return {};
  }
  return frames;
}

// Whether the filter at the other end of `pin` is the decoder.
bool DecoderBehind(IPin* pin) {
  IPin* peer = nullptr;
  PIN_INFO info{};
  CLSID id = GUID_NULL;
  if (SUCCEEDED(pin->ConnectedTo(&peer)) && SUCCEEDED(peer->QueryPinInfo(&info)) && info.pFilter != nullptr) {
    info.pFilter->GetClassID(&id);
    info.pFilter->Release();
  }
  if (peer != nullptr) peer->Release();
  return id == kDecoderClass;
}

// Runs the graph, pushes the frames and stops. Wine may
// leave filters it paused running when a start fails half-way, so the
// source is stopped here too.
void RunAndDeliver(IGraphBuilder* graph, const Endpoint& source, const std::vector<std::vector<uint8_t>>& frames) {
  IMediaControl* control = nullptr;
  if (!EXPECT(SUCCEEDED(graph->QueryInterface(IID_IMediaControl, reinterpret_cast<void**>(&control))))) return;
  // A renderer finishes its start only once its first sample is in, so the
  // graph may still be on the way (VFW_S_STATE_INTERMEDIATE) until delivery.
  OAFilterState state = State_Stopped;
  if (EXPECT(SUCCEEDED(control->Run())) &&
      EXPECT(SUCCEEDED(control->GetState(100, &state)) && state == State_Running)) {
    EXPECT(graph_test::Deliver(source, frames) == S_OK);
    EXPECT(control->GetState(5000, &state) == S_OK && state == State_Running);
  }
  control->Stop();
  FilterOf(source)->Stop();
  control->Release();
}

// Source and sink alone: the graph must bring the decoder in by itself
// (not a direct link, nor the system's decompressor over the codec's driver).
void IntelligentConnect(const std::vector<std::vector<uint8_t>>& frames, const std::string& directory) {
  IGraphBuilder* graph = nullptr;
  if (!EXPECT(SUCCEEDED(CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder,
                                         reinterpret_cast<void**>(&graph))))) {
    return;
  }
  const Endpoint source = graph_test::NewPushSource(kGraphFourCC, kWidth, kHeight);
  const Endpoint sink = graph_test::NewYuy2Sink();
  EXPECT(graph->AddFilter(FilterOf(source), L"Source") == S_OK && graph->AddFilter(FilterOf(sink), L"Sink") == S_OK);
  if (EXPECT(graph->Connect(PinOf(source), PinOf(sink)) == S_OK) &&
      EXPECT(DecoderBehind(PinOf(source)) && DecoderBehind(PinOf(sink)))) {
    RunAndDeliver(graph, source, frames);
    FilterOf(sink)->Stop();
    const auto pictures = graph_test::Received(sink);
    EXPECT(pictures.size() == frames.size());
    for (size_t f = 0; f < pictures.size(); ++f) {
      EXPECT(pictures[f].size() == FrameBytes(kYuy2));
      EXPECT(WriteResult(directory, "graph_" + std::to_string(f) + ".picture", pictures[f].data(), pictures[f].size()));
    }
  }
  graph->Release();
  FilterOf(source)->Release();
  FilterOf(sink)->Release();
}

}  // namespace

int main(int argc, char** argv) {
  if (!check::HasArguments(argc, argv)) return 2;
  if (!EXPECT(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)))) return check::ExitCode("dshow_graph");
  const auto frames = ReadFrames(argv[1]);
  if (EXPECT(frames.size() == size_t(kFrames))) {
    IntelligentConnect(frames, argv[1]);
  }
  CoUninitialize();
  return check::ExitCode("dshow_graph");
}
