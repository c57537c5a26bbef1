#include "graph_endpoints.h"

#include "support/graph_endpoints.h"

namespace graph_test {

using namespace vantaro;
using namespace vantaro::testing;

template <typename Filter>
static Endpoint Hand(Filter* filter) {
  filter->NonDelegatingAddRef();
  return {static_cast<IBaseFilter*>(filter), static_cast<IPin*>(filter->Pin())};
}

template <typename Filter>
static Filter* Of(const Endpoint& endpoint) {
  return static_cast<Filter*>(static_cast<IBaseFilter*>(endpoint.filter));
}

Endpoint NewPushSource(uint32_t fourcc, int32_t width, int32_t height) {
  return Hand(new TestSource(StreamType(fourcc, width, height)));
}

Endpoint NewYuy2Sink() {
  auto* sink = new TestSink(kSinkClass);
  sink->wantedSubtype = FourCCSubtype(0x32595559);  // 'YUY2'
  sink->wantedFormat = kFormatVideoInfo;
  return Hand(sink);
}

int32_t Deliver(const Endpoint& source, const std::vector<std::vector<uint8_t>>& frames) {
  HRESULT result = kSOk;
  PushFlags flags;
  flags.timed = true;
  for (const std::vector<uint8_t>& frame : frames) {
    flags.stop = flags.start + 400000;
    const HRESULT hr = Of<TestSource>(source)->Push(frame, flags);
    if (result == kSOk) result = hr;
    flags.start = flags.stop;
  }
  Of<TestSource>(source)->Pin()->DeliverEndOfStream();
  return result;
}

std::vector<std::vector<uint8_t>> Received(const Endpoint& sink) {
  std::vector<std::vector<uint8_t>> pictures;
  if (!Of<TestSink>(sink)->endOfStream) return pictures;
  for (const testing::Received& r : Of<TestSink>(sink)->received) {
    pictures.emplace_back(r.data.begin(), r.data.begin() + r.actual);
  }
  return pictures;
}

}  // namespace graph_test
