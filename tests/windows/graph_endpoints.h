// The graph test's two endpoints, built on the library's own filter base
// classes (tests/support/graph_endpoints.h) in a unit of their own, so that
// the system's media headers and the library's records never meet. Each
// endpoint is a COM object with one pin; the pointers are its IBaseFilter and
// IPin as the system declares them.
#pragma once

#include <cstdint>
#include <vector>

namespace graph_test {

struct Endpoint {
  void* filter;  // IBaseFilter*, one reference owned by the caller
  void* pin;     // IPin*, not add-referenced
};

// A source whose one type is the compressed stream of `fourcc`.
Endpoint NewPushSource(uint32_t fourcc, int32_t width, int32_t height);
// A sink that takes only YUY2 described by a VIDEOINFOHEADER.
Endpoint NewYuy2Sink();

// Sends each frame as a key-frame sample 1/25 s long, then end of stream.
// Answers the first failed delivery, or 0.
int32_t Deliver(const Endpoint& source, const std::vector<std::vector<uint8_t>>& frames);
// The bytes of each sample the sink received, and whether the stream ended.
std::vector<std::vector<uint8_t>> Received(const Endpoint& sink);
bool SawEndOfStream(const Endpoint& sink);

}  // namespace graph_test
