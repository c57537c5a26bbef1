#include "graph_endpoints.h"

#include "support/graph_endpoints.h"

namespace graph_test {
namespace {

using namespace vantaro;
using namespace vantaro::testing;

template <typename Filter>
Endpoint Hand(Filter* filter, CBasePin* pin) {
  filter->NonDelegatingAddRef();
  return {static_cast<IBaseFilter*>(filter), static_cast<IPin*>(pin)};
}

template <typename Filter>
Filter* Of(const Endpoint& endpoint) {
  return static_cast<Filter*>(static_cast<IBaseFilter*>(endpoint.filter));
}

}  // namespace

Endpoint NewPushSource(uint32_t fourcc, int32_t width, int32_t height) {
  auto* source = new TestSource(StreamType(fourcc, width, height));
  return Hand(source, source->Pin());
}

Endpoint NewYuy2Sink() {
  auto* sink = new TestSink(kSinkClass);
  sink->wantedSubtype = FourCCSubtype(0x32595559);  // 'YUY2'
  sink->wantedFormat = kFormatVideoInfo;
  return Hand(sink, sink->Pin());
}

int32_t Deliver(const Endpoint& source, const std::vector<std::vector<uint8_t>>& frames) {
  TestSource* filter = Of<TestSource>(source);
  HRESULT result = kSOk;
  PushFlags flags;
  flags.timed = true;
  flags.sync = true;
  for (const std::vector<uint8_t>& frame : frames) {
    flags.stop = flags.start + 400000;
    const HRESULT hr = filter->Push(frame, flags);
    if (hr != kSOk && result == kSOk) result = hr;
    flags.start = flags.stop;
  }
  filter->Pin()->DeliverEndOfStream();
  return result;
}

std::vector<std::vector<uint8_t>> Received(const Endpoint& sink) {
  std::vector<std::vector<uint8_t>> pictures;
  for (const testing::Received& r : Of<TestSink>(sink)->received) {
    pictures.emplace_back(r.data.begin(), r.data.begin() + r.actual);
  }
  return pictures;
}

bool SawEndOfStream(const Endpoint& sink) { return Of<TestSink>(sink)->endOfStream; }

}  // namespace graph_test
