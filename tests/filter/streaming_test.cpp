// The filter in a graph: every offered output type,
// the per-sample rewriting of times and flags, and format changes carried
// by output samples.
#include <map>

#include "frames.h"
#include "test_graph.h"

namespace vantaro::testing {
namespace {

constexpr int32_t kWidth = 64;
constexpr int32_t kHeight = 128;

class Streaming : public ::testing::Test {
 protected:
  void SetUp() override { RegistryResetForTests(); }

  const std::vector<uint8_t>& Frame(uint32_t fourcc, uint32_t seed, int32_t w = kWidth,
                                    int32_t h = kHeight) {
    auto& slot = frames_[{fourcc, seed, w * 65536 + h}];
    if (slot.empty()) slot = CompressedFrame(fourcc, w, h, seed);
    return slot;
  }

  // The direct functions' picture for what `graph` delivered in `r`.
  std::vector<uint8_t> Expected(Graph& graph, const Received& r, const std::vector<uint8_t>& frame,
                                uint32_t fourcc, int32_t h = kHeight) {
    const CMediaType& type = graph.Out()->CurrentMediaType();
    return DirectDecode(frame, fourcc, *HeaderOf(type), kWidth, h,
                        graph.decoder->State().outputStride, r.data.size(), kFill);
  }

 private:
  std::map<std::tuple<uint32_t, uint32_t, int32_t>, std::vector<uint8_t>> frames_;
};

struct VariantCase {
  const char* fourcc;
  const OutputFormat* table;
  int32_t rows;
};

TEST_F(Streaming, EveryOfferedTypeMatchesTheDirectFunctions) {
  // What the filter adds is geometry (line sizes, the planar second plane
  // behind the lines), the same for every variant of a table: one plain and
  // one alpha variant cover both tables; the codec's bytes are pinned by the
  // golden tests.
  const VariantCase variants[] = {{"vtq2", kOutputFormatsPlain, kOutputFormatsPlainCount},
                                  {"VTQ7", kOutputFormatsAlpha, kOutputFormatsAlphaCount}};
  for (const VariantCase& variant : variants) {
    const uint32_t fourcc = FourCC(variant.fourcc);
    for (int32_t position = 0; position < variant.rows; ++position) {
      SCOPED_TRACE(std::string(variant.fourcc) + " into position " + std::to_string(position));
      const OutputFormat& row = variant.table[position];
      Graph graph(StreamType(fourcc, kWidth, kHeight));
      ASSERT_EQ(graph.ConnectInput(), kSOk);
      ASSERT_EQ(graph.ConnectOutput(row.subtype,
                                    row.videoInfo2 ? kFormatVideoInfo2 : kFormatVideoInfo),
                kSOk);
      ASSERT_EQ(graph.decoder->State().outputCompression, row.compression);
      ASSERT_EQ(HeaderOf(graph.Out()->CurrentMediaType())->biBitCount, row.bitCount);
      ASSERT_EQ(graph.Run(), kSOk);
      for (uint32_t seed = 0; seed < 2; ++seed) ASSERT_EQ(graph.source->Push(Frame(fourcc, seed)), kSOk);
      ASSERT_EQ(graph.sink->received.size(), 2u);
      for (uint32_t seed = 0; seed < 2; ++seed) {
        const Received& r = graph.sink->received[seed];
        EXPECT_EQ(r.data, Expected(graph, r, Frame(fourcc, seed), fourcc));
        EXPECT_NE(std::count(r.data.begin(), r.data.end(), kFill),
                  static_cast<std::ptrdiff_t>(r.data.size()))
            << "nothing was decoded";
      }
    }
  }
}

TEST_F(Streaming, SampleTimesAndFlagsAreRewritten) {
  const uint32_t fourcc = FourCC("VTQ2");
  Graph graph(StreamType(fourcc, kWidth, kHeight));
  ASSERT_EQ(graph.ConnectInput(), kSOk);
  ASSERT_EQ(graph.ConnectOutput(FourCCSubtype(FourCC("YUY2")), kFormatVideoInfo2), kSOk);
  ASSERT_EQ(graph.Run(), kSOk);
  PushFlags plain;
  PushFlags marked;
  marked.timed = true;
  marked.start = 1000;
  marked.stop = 2000;
  marked.discontinuity = true;
  marked.preroll = true;
  ASSERT_EQ(graph.source->Push(Frame(fourcc, 0), plain), kSOk);
  ASSERT_EQ(graph.source->Push(Frame(fourcc, 1), marked), kSOk);
  ASSERT_EQ(graph.sink->received.size(), 2u);

  const Received& first = graph.sink->received[0];
  EXPECT_EQ(first.timeResult, kSOk);  // no times in: 0 and 0 out
  EXPECT_EQ(first.start, 0);
  EXPECT_EQ(first.stop, 0);
  EXPECT_EQ(first.mediaTimeResult, kSOk);
  EXPECT_EQ(first.mediaStart, 0);
  EXPECT_EQ(first.mediaStop, 0);
  EXPECT_TRUE(first.discontinuity);  // an ordinary frame leaves marked
  EXPECT_TRUE(first.sync);

  const Received& second = graph.sink->received[1];
  EXPECT_EQ(second.start, 1000);
  EXPECT_EQ(second.stop, 2000);
  EXPECT_FALSE(second.discontinuity);  // a discontinuity leaves unmarked
  EXPECT_FALSE(second.preroll);        // preroll cleared, and decoded all the same
  EXPECT_TRUE(second.sync);
  EXPECT_EQ(second.data, Expected(graph, second, Frame(fourcc, 1), fourcc));
  for (const Received& r : graph.sink->received) {
    EXPECT_EQ(static_cast<uint32_t>(r.actual), graph.decoder->State().outputBufferSize);
  }
}

TEST_F(Streaming, TypeSpecificFlagsFollowTheRenderer) {
  struct Case {
    const char* fourcc;
    int32_t width, height;
    GUID renderer;
    uint32_t expected;
  } cases[] = {
      {"VTQ0", 720, 480, kEnhancedVideoRenderer, 4},  // the registry default
      {"VTQ1", kWidth, kHeight, kEnhancedVideoRenderer, 0},  // alpha on the EVR: progressive
      {"VTQ0", kWidth, kHeight, kOverlayMixer, 0x5A},        // left as the input's
      {"VTQ0", kWidth, kHeight, kVideoRenderer, 0x5A},       // toggled off on the first connection
      {"VTQ0", kWidth, kHeight, kVideoMixingRenderer9, 4},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.fourcc);
    const uint32_t fourcc = FourCC(c.fourcc);
    Graph graph(StreamType(fourcc, c.width, c.height), c.renderer);
    ASSERT_EQ(graph.ConnectInput(), kSOk);
    ASSERT_EQ(graph.ConnectOutput(), kSOk);
    ASSERT_EQ(graph.Run(), kSOk);
    PushFlags flags;
    flags.typeSpecificFlags = 0x5A;
    ASSERT_EQ(graph.source->Push(Frame(fourcc, 0, c.width, c.height), flags), kSOk);
    ASSERT_EQ(graph.sink->received.size(), 1u);
    EXPECT_EQ(graph.sink->received[0].typeSpecificFlags, c.expected);
  }
}

TEST_F(Streaming, OutputFormatChangesCarriedBySamples) {
  const uint32_t fourcc = FourCC("VTQ2");
  Graph graph(StreamType(fourcc, kWidth, kHeight));
  graph.sink->Allocator()->minimum = kWidth * kHeight * 8;  // room for wider surfaces
  ASSERT_EQ(graph.ConnectInput(), kSOk);
  ASSERT_EQ(graph.ConnectOutput(FourCCSubtype(FourCC("YUY2")), kFormatVideoInfo), kSOk);
  ASSERT_EQ(graph.Run(), kSOk);
  auto& received = graph.sink->received;
  const void* firstInstance = graph.decoder->State().instance;
  const uint32_t oldSize = graph.decoder->State().outputBufferSize;

  // A wider surface: new stride from this sample on, same instance, and
  // this sample still carries the old length.
  CMediaType wider = graph.Out()->CurrentMediaType();
  HeaderOf(wider)->biWidth = 96;
  graph.sink->Allocator()->pending = wider;
  ASSERT_EQ(graph.source->Push(Frame(fourcc, 0)), kSOk);
  ASSERT_EQ(received.size(), 1u);
  EXPECT_EQ(graph.decoder->State().outputStride, 192);
  EXPECT_EQ(graph.decoder->State().instance, firstInstance);
  EXPECT_EQ(static_cast<uint32_t>(received[0].actual), oldSize);
  EXPECT_EQ(received[0].data, Expected(graph, received[0], Frame(fourcc, 0), fourcc));
  ASSERT_EQ(graph.source->Push(Frame(fourcc, 1)), kSOk);
  EXPECT_EQ(received[1].actual, 192 * kHeight);
  EXPECT_EQ(received[1].data, Expected(graph, received[1], Frame(fourcc, 1), fourcc));

  // A new layout: a new instance for it.
  CMediaType uyvy;
  ASSERT_EQ(graph.decoder->GetMediaType(6, &uyvy), kSOk);
  graph.sink->Allocator()->pending = uyvy;
  ASSERT_EQ(graph.source->Push(Frame(fourcc, 2)), kSOk);
  ASSERT_EQ(received.size(), 3u);
  EXPECT_EQ(graph.decoder->State().outputCompression, FourCC("UYVY"));
  EXPECT_EQ(HeaderOf(graph.Out()->CurrentMediaType())->biCompression, FourCC("UYVY"));
  EXPECT_EQ(received[2].data, Expected(graph, received[2], Frame(fourcc, 2), fourcc));

  // A layout outside the table: that sample is dropped, the stream goes on.
  CMediaType unknown = uyvy;
  unknown.subtype = FourCCSubtype(FourCC("ABCD"));
  graph.sink->Allocator()->pending = unknown;
  ASSERT_EQ(graph.source->Push(Frame(fourcc, 3)), kSOk);
  EXPECT_EQ(received.size(), 3u);
  ASSERT_EQ(graph.source->Push(Frame(fourcc, 0)), kSOk);
  ASSERT_EQ(received.size(), 4u);
  EXPECT_EQ(graph.decoder->State().outputCompression, FourCC("UYVY"));
  EXPECT_EQ(received[3].data, Expected(graph, received[3], Frame(fourcc, 0), fourcc));
}

TEST_F(Streaming, AnOutputTypeThatCannotBeAppliedDecodesNothing) {
  // The sink takes the type, the filter refuses it (not in its table): no instance,
  // and every sample is skipped rather than decoded with none.
  const uint32_t fourcc = FourCC("VTQ0");
  Graph graph(StreamType(fourcc, kWidth, kHeight));
  graph.sink->Allocator()->minimum = 4096;
  ASSERT_EQ(graph.ConnectInput(), kSOk);
  CMediaType narrow;
  ASSERT_EQ(graph.decoder->GetMediaType(0, &narrow), kSOk);
  narrow.subtype = FourCCSubtype(FourCC("ABCD"));
  graph.sink->wantedSubtype = narrow.subtype;
  ASSERT_EQ(graph.Out()->Connect(graph.sink->Pin(), &narrow), kSOk);
  EXPECT_EQ(graph.decoder->State().instance, nullptr);
  ASSERT_EQ(graph.Run(), kSOk);
  EXPECT_EQ(graph.source->Push(Frame(fourcc, 0)), kSOk);
  EXPECT_TRUE(graph.sink->received.empty());
}

}  // namespace
}  // namespace vantaro::testing
