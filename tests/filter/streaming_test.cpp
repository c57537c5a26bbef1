// The filter in a graph: its own output geometry (line sizes, the planar
// second plane behind the lines) against the direct functions, the
// per-sample rewriting of times and flags, and format changes carried by
// output samples.
#include "test_graph.h"

namespace vantaro::testing {
namespace {

constexpr int32_t kWidth = 64;
constexpr int32_t kHeight = 128;

class Streaming : public ::testing::Test {
 protected:
  void SetUp() override { RegistryResetForTests(); }

  // A frame of `fourcc` made by the direct functions from a YUY2 picture
  // (AYUV for the alpha variants).
  static std::vector<uint8_t> Frame(uint32_t fourcc, uint32_t seed) {
    const int32_t w = kWidth, h = kHeight;
    const bool alpha = ((fourcc >> 24) & 1) != 0;
    const int32_t bytes = alpha ? 4 : 2;
    BITMAPINFOHEADER source{40, w, h, 1, uint16_t(bytes * 8), FourCC(alpha ? "AYUV" : "YUY2"), 0, 0, 0, 0, 0};
    const std::vector<uint8_t> picture = test::PatternBytes(size_t(w) * h * bytes, seed, w * bytes);
    void* instance = VTC_CompressFieldBegin(&source, fourcc);
    std::vector<uint8_t> stream(size_t(w) * h * 8 + 4096);
    stream.resize(size_t(VTC_CompressFrame(instance, stream.data(), picture.data(), w * bytes)));
    VTC_CompressFieldEnd(instance);
    return stream;
  }

  // What the direct functions decode from `frame` into the graph's output
  // type, lines at the filter's stride, a planar second plane behind them.
  static std::vector<uint8_t> Expected(Graph& graph, const Received& r, uint32_t fourcc, uint32_t seed) {
    BITMAPINFOHEADER header = *HeaderOf(graph.Out()->CurrentMediaType());
    header.biWidth = kWidth;
    header.biHeight = kHeight;
    const int32_t stride = graph.decoder->State().outputStride;
    std::vector<uint8_t> picture(r.data.size(), kFill);
    void* instance = VTC_DecompressFieldBegin(&header, fourcc);
    if (IsPlanar(static_cast<uint32_t>(ColorSpaceFromHeader(&header)))) {
      VTC_DecompressFrameEx(instance, picture.data(), picture.data() + kHeight * stride,
                            Frame(fourcc, seed).data(), stride);
    } else {
      VTC_DecompressFrame(instance, picture.data(), Frame(fourcc, seed).data(), stride);
    }
    VTC_DecompressFieldEnd(instance);
    return picture;
  }
};

// Each sample is decoded whole into the downstream buffer at the filter's
// stride, the planar second plane behind the lines; its times and flags are
// rewritten on the way.
TEST_F(Streaming, SamplesMatchTheDirectFunctionsWithTimesAndFlagsRewritten) {
  // One packed and one planar row of each table: the codec's bytes in every
  // layout are pinned by the golden suite.
  const struct {
    const char* fourcc;
    const OutputFormat& row;
  } cases[] = {{"vtq2", kOutputFormatsPlain[2]}, {"vtq2", kOutputFormatsPlain[6]},
               {"VTQ7", kOutputFormatsAlpha[1]}, {"VTQ7", kOutputFormatsAlpha[4]}};
  const PushFlags marked{.timed = true, .start = 1000, .stop = 2000, .discontinuity = true, .preroll = true};
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.fourcc) + " into " + std::to_string(c.row.compression));
    const uint32_t fourcc = FourCC(c.fourcc);
    Graph graph(StreamType(fourcc, kWidth, kHeight));
    ASSERT_EQ(graph.ConnectInput(), kSOk);
    ASSERT_EQ(graph.ConnectOutput(c.row.subtype, c.row.videoInfo2 ? kFormatVideoInfo2 : kFormatVideoInfo), kSOk);
    ASSERT_EQ(graph.decoder->State().outputCompression, c.row.compression);
    ASSERT_EQ(graph.Run(), kSOk);
    ASSERT_EQ(graph.source->Push(Frame(fourcc, 0)), kSOk);
    ASSERT_EQ(graph.source->Push(Frame(fourcc, 1), marked), kSOk);
    ASSERT_EQ(graph.sink->received.size(), 2u);
    const Received& first = graph.sink->received[0];
    const Received& second = graph.sink->received[1];
    EXPECT_EQ(first.data, Expected(graph, first, fourcc, 0));
    EXPECT_NE(std::count(first.data.begin(), first.data.end(), kFill), std::ptrdiff_t(first.data.size())) << "nothing decoded";
    // No times in: 0 and 0 out. An ordinary frame leaves marked a
    // discontinuity and a discontinuity unmarked; preroll is cleared, and
    // the frame decoded all the same.
    EXPECT_EQ(std::tie(first.timeResult, first.start, first.stop), std::make_tuple(kSOk, 0, 0));
    EXPECT_EQ(std::tie(second.start, second.stop), std::make_tuple(1000, 2000));
    EXPECT_EQ(std::tie(first.discontinuity, first.sync, second.discontinuity, second.preroll, second.sync),
              std::make_tuple(true, true, false, false, true));
    EXPECT_EQ(second.data, Expected(graph, second, fourcc, 1));
  }
}

// Whether the filter writes its type-specific flags into the samples
// depends on the renderer, and toggles on each new connection for the old
// renderers; where it writes them they are the settings' field order (4),
// or 0 for a progressive alpha stream.
TEST_F(Streaming, RendererKindsDecideTheSampleFlags) {
  const struct {
    GUID renderer;
    const char* fourcc;
    uint8_t afterFirst, afterSecond, enhanced;
  } cases[] = {
      {kVideoRenderer, "VTQ0", 0, 1, 0},         {kVideoMixingRenderer7, "VTQ0", 0, 1, 0},
      {kOverlayMixer, "VTQ0", 0, 0, 0},          {kVideoMixingRenderer9, "VTQ0", 1, 1, 0},
      {kEnhancedVideoRenderer, "VTQ0", 1, 1, 1}, {kEnhancedVideoRenderer, "VTQ1", 1, 1, 1},
      {kSinkClass, "VTQ0", 1, 1, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.fourcc + std::string(" to ") + std::to_string(c.renderer.Data1));
    const uint32_t fourcc = FourCC(c.fourcc);
    Graph graph(StreamType(fourcc, kWidth, kHeight), c.renderer);
    ASSERT_EQ(graph.ConnectInput(), kSOk);
    for (const uint8_t writes : {c.afterFirst, c.afterSecond}) {
      ASSERT_EQ(graph.ConnectOutput(), kSOk);
      EXPECT_EQ(graph.decoder->State().writeSampleFlags, writes);
      EXPECT_EQ(graph.decoder->State().enhancedRenderer, c.enhanced);
      ASSERT_EQ(graph.Run(), kSOk);
      ASSERT_EQ(graph.source->Push(Frame(fourcc, 0), {.typeSpecificFlags = 0x5A}), kSOk);
      ASSERT_EQ(graph.sink->received.size(), 1u);
      EXPECT_EQ(graph.sink->received[0].typeSpecificFlags, writes == 0 ? 0x5Au : fourcc == FourCC("VTQ1") ? 0u : 4u);
      graph.Stop();
      graph.DisconnectOutput();
      graph.sink->received.clear();
    }
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
  EXPECT_EQ(received[0].data, Expected(graph, received[0], fourcc, 0));

  // A new layout: a new instance for it.
  CMediaType uyvy;
  ASSERT_EQ(graph.decoder->GetMediaType(6, &uyvy), kSOk);
  graph.sink->Allocator()->pending = uyvy;
  ASSERT_EQ(graph.source->Push(Frame(fourcc, 1)), kSOk);
  ASSERT_EQ(received.size(), 2u);
  EXPECT_EQ(received[1].actual, 192 * kHeight);  // the wider surface's length, told one sample late
  EXPECT_EQ(graph.decoder->State().outputCompression, FourCC("UYVY"));
  EXPECT_EQ(received[1].data, Expected(graph, received[1], fourcc, 1));

  // A layout outside the table: that sample is dropped, the stream goes on.
  CMediaType unknown = uyvy;
  unknown.subtype = FourCCSubtype(FourCC("ABCD"));
  graph.sink->Allocator()->pending = unknown;
  ASSERT_EQ(graph.source->Push(Frame(fourcc, 2)), kSOk);
  EXPECT_EQ(received.size(), 2u);
  ASSERT_EQ(graph.source->Push(Frame(fourcc, 0)), kSOk);
  ASSERT_EQ(received.size(), 3u);
  EXPECT_EQ(graph.decoder->State().outputCompression, FourCC("UYVY"));
}

TEST_F(Streaming, AnOutputTypeThatCannotBeAppliedDecodesNothing) {
  // The sink takes the type, the filter refuses it (not in its table): no
  // instance, and every sample is skipped rather than decoded with none.
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
