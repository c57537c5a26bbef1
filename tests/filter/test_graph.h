// A small graph for the decoder filter: the shared push source, the filter,
// and the shared recording sink, with the renderers the filter knows by class.
#pragma once

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "filter/vantaro_decoder.h"
#include "platform/registry.h"
#include "support/graph_endpoints.h"
#include "support/pictures.h"
#include "vantaro/vantaro.h"

namespace vantaro::testing {

using test::FourCC;

constexpr GUID kEnhancedVideoRenderer{0xFA10746C, 0x9B63, 0x4B6C, {0xBC, 0x49, 0xFC, 0x30, 0x0E, 0xA5, 0xF2, 0x56}};
constexpr GUID kOverlayMixer{0xCD8743A1, 0x3736, 0x11D0, {0x9E, 0x69, 0x00, 0xC0, 0x4F, 0xD7, 0xC1, 0x5B}};
constexpr GUID kVideoMixingRenderer7{0xB87BEB7B, 0x8D29, 0x423F, {0xAE, 0x4D, 0x65, 0x82, 0xC1, 0x01, 0x75, 0xAC}};
constexpr GUID kVideoRenderer{0x70E102B0, 0x5556, 0x11CE, {0x97, 0xC0, 0x00, 0xAA, 0x00, 0x55, 0x59, 0x5A}};
constexpr GUID kVideoMixingRenderer9{0x51B4ABF3, 0x748F, 0x4E3B, {0xA2, 0x76, 0xC8, 0x28, 0x33, 0x0E, 0x92, 0x6A}};

// Source, decoder and sink, each held by one reference.
struct Graph {
  TestSource* source;
  CVantaroDecoder* decoder = new CVantaroDecoder(nullptr);
  TestSink* sink;

  explicit Graph(const CMediaType& input, const GUID& sinkClass = kSinkClass)
      : source(new TestSource(input)), sink(new TestSink(sinkClass)) {
    source->NonDelegatingAddRef();
    decoder->NonDelegatingAddRef();
    sink->NonDelegatingAddRef();
  }
  ~Graph() {
    Stop();
    DisconnectOutput();
    source->Pin()->Disconnect();
    In()->Disconnect();
    source->NonDelegatingRelease();
    decoder->NonDelegatingRelease();
    sink->NonDelegatingRelease();
  }
  CBasePin* In() { return decoder->GetPin(0); }
  CBasePin* Out() { return decoder->GetPin(1); }
  HRESULT ConnectInput() { return source->Pin()->Connect(In(), nullptr); }
  // The sink takes the first offer of this subtype in this kind of block.
  HRESULT ConnectOutput(const GUID& subtype = kGuidNull, const GUID& format = kGuidNull) {
    std::tie(sink->wantedSubtype, sink->wantedFormat) = std::tie(subtype, format);
    return Out()->Connect(sink->Pin(), nullptr);
  }
  void DisconnectOutput() {
    Out()->Disconnect();
    sink->Pin()->Disconnect();
  }
  HRESULT Run() {
    HRESULT hr = sink->Run(0);
    if (hr == kSOk) hr = decoder->Run(0);
    return hr == kSOk ? source->Run(0) : hr;
  }
  void Stop() {
    source->Stop();
    decoder->Stop();
    sink->Stop();
  }
};

}  // namespace vantaro::testing
