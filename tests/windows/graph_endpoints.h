// The graph test's two endpoints (tests/support/graph_endpoints.h) behind a
// unit of their own, so that the system's media headers and the library's
// records never meet. Each is a COM object with one pin: its IBaseFilter (one
// reference owned by the caller) and IPin (not add-referenced).
#pragma once

#include <cstdint>
#include <vector>

namespace graph_test {

struct Endpoint {
  void* filter;
  void* pin;
};

// A source of the compressed stream of `fourcc`, and a sink that takes only
// YUY2 described by a VIDEOINFOHEADER.
Endpoint NewPushSource(uint32_t fourcc, int32_t width, int32_t height);
Endpoint NewYuy2Sink();
// Sends each frame as a sample 1/25 s long, then end of stream;
// answers the first failed delivery, or 0.
int32_t Deliver(const Endpoint& source, const std::vector<std::vector<uint8_t>>& frames);
// The bytes of each sample the sink received, empty unless the stream ended.
std::vector<std::vector<uint8_t>> Received(const Endpoint& sink);

}  // namespace graph_test
