// What the decoder filter decides at connection time.
#include "test_graph.h"

namespace vantaro::testing {
namespace {

class Negotiation : public ::testing::Test {
 protected:
  void SetUp() override { RegistryResetForTests(); }
};

// The input side connected for a stream, and the type offered at `position`.
struct Offer {
  Graph graph;
  CMediaType type;
  HRESULT result;
  Offer(const char* fourcc, int32_t w, int32_t h, int32_t position,
        const StreamOptions& options = {})
      : graph(StreamType(FourCC(fourcc), w, h, options)) {
    EXPECT_EQ(graph.ConnectInput(), kSOk);
    result = graph.decoder->GetMediaType(position, &type);
  }
  VIDEOINFOHEADER2& Info2() { return *reinterpret_cast<VIDEOINFOHEADER2*>(type.pbFormat); }
  BITMAPINFOHEADER& Header() { return *HeaderOf(type); }
};

void SetSetting(const char16_t* name, uint32_t value) {
  RegistryKey key = 0;
  ASSERT_EQ(RegistryCreateKey(kRegistryCurrentUser, kSettingsKey, &key), 0);
  ASSERT_EQ(RegistrySetDword(key, name, value), 0);
  RegistryCloseKey(key);
}

TEST_F(Negotiation, PositionsOfBothTables) {
  EXPECT_EQ(Offer("VTQ0", 64, 64, 10).result, kVfwSNoMoreItems);
  EXPECT_EQ(Offer("VTQ0", 64, 64, -1).result, kEInvalidArg);
  EXPECT_EQ(Offer("VTQ1", 64, 64, 11).type.formattype, kFormatVideoInfo);
  EXPECT_EQ(Offer("VTQ1", 64, 64, 12).result, kVfwSNoMoreItems);

  Graph lone(StreamType(FourCC("VTQ0"), 64, 64));  // nothing connected: nothing to offer
  CMediaType type;
  ALLOCATOR_PROPERTIES request{};
  EXPECT_EQ(lone.decoder->GetMediaType(0, &type), kEUnexpected);
  EXPECT_EQ(lone.decoder->DecideBufferSize(nullptr, &request), kEUnexpected);
}

// The first offer's picture description: size, aspect from the pixel
// density or the frame shape, field order from the size and the settings.
TEST_F(Negotiation, OffersCarryAspectAndFieldOrder) {
  const struct {
    const char* fourcc;
    int32_t w, h, xPels, yPels;
    uint32_t aspectX, aspectY, interlace;
    int32_t xPelsOut, yPelsOut;
  } cases[] = {
      {"VTQ2", 1920, 1080, 0, 0, 16, 9, 37, 0, 0},
      {"VTQ0", 1280, 720, 0, 0, 16, 9, 0, 0, 0},  // progressive, though the setting says 37
      {"VTQ0", 720, 486, 0, 0, 4, 3, 33, 10, 11},  // second field first
      {"VTQ0", 720, 576, 0, 0, 4, 3, 37, 59, 54},
      {"VTQ0", 720, 480, 40, 33, 28800, 15840, 37, 40, 33},  // 1.818...: left unreduced
      {"VTQ0", 720, 480, 8, 9, 4, 3, 37, 8, 9},
      {"VTQ0", 640, 480, 0, 0, 640, 480, 37, 1, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.w) + "x" + std::to_string(c.h) + " " + std::to_string(c.xPels));
    Offer offer(c.fourcc, c.w, c.h, 0, {.xPels = c.xPels, .yPels = c.yPels, .avgTimePerFrame = 333667});
    ASSERT_EQ(offer.result, kSOk);
    const VIDEOINFOHEADER2& info = offer.Info2();
    EXPECT_EQ(std::tie(info.dwPictAspectRatioX, info.dwPictAspectRatioY, info.dwInterlaceFlags),
              std::tie(c.aspectX, c.aspectY, c.interlace));
    EXPECT_EQ(offer.graph.decoder->State().typeSpecificFlags, c.interlace == 37 ? 4u : 0u);
    EXPECT_TRUE(c.xPelsOut == 0 || (offer.Header().biXPelsPerMeter == c.xPelsOut &&
                                    offer.Header().biYPelsPerMeter == c.yPelsOut));
    EXPECT_EQ(std::tie(info.AvgTimePerFrame, info.rcTarget.right, info.rcSource.bottom),
              std::make_tuple(ReferenceTime{333667}, c.w, c.h));
    EXPECT_EQ(std::tie(offer.type.lSampleSize, offer.type.bFixedSizeSamples), std::make_tuple(offer.Header().biSizeImage, 1));
  }
}

TEST_F(Negotiation, PlanesCarryTheFieldOrder) {
  SetSetting(u"InterlaceFlags", 33);
  SetSetting(u"TypeSpecificFlags", 0);
  const struct {
    uint16_t planes;
    uint32_t interlace, typeSpecific;
  } cases[] = {{3, 37, 4}, {5, 33, 0}, {7, 0, 0}, {9, 33, 0}};  // any other count: the settings
  for (const auto& c : cases) {
    Offer offer("VTQ0", 640, 480, 0, {.planes = c.planes});
    EXPECT_EQ(offer.Info2().dwInterlaceFlags, c.interlace) << "planes " << c.planes;
    EXPECT_EQ(offer.graph.decoder->State().typeSpecificFlags, c.typeSpecific) << "planes " << c.planes;
  }
  SetSetting(u"InterlaceFlags", 37);
  EXPECT_EQ(Offer("VTQ0", 640, 480, 0, {.planes = 5}).Info2().dwInterlaceFlags, 33u);
}

// The offer's image size and, once connected, the line and buffer sizes the
// filter decodes at: lines rounded to four bytes, RGB offered top-down.
TEST_F(Negotiation, OutputLineAndBufferSizes) {
  struct Case {
    const char* stream;
    int32_t w, h, position;
    int32_t stride;
    uint32_t size;
  } cases[] = {
      {"VTQ1", 720, 480, 1, 1800, 1800 * 480},      // YA20
      {"VTQ1", 720, 486, 0, 1440, 1049760},         // UYVA, 24 bits: 3 bytes a pixel a frame
      {"VTQ0", 720, 480, 0, 1440, 1440 * 480},      // YUY2
      {"VTQ0", 100, 64, 2, 152, 152 * 64},          // NV12
      {"VTQ2", 100, 64, 3, 152, 152 * 64},          // NV16 at 12 bits, as it has always been offered
      {"VTQ2", 100, 64, 8, 200, 200 * 64},          // NV16 at 16 bits
      {"VTQ3", 640, 480, 4, 2560, 2560 * 480},      // RGB32
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.stream) + " position " + std::to_string(c.position));
    Offer offer(c.stream, c.w, c.h, c.position);
    ASSERT_EQ(offer.result, kSOk);
    EXPECT_EQ(offer.Header().biSizeImage, c.size);
    EXPECT_EQ(offer.Header().biHeight, offer.type.subtype == kMediaSubtypeRgb32 ? -c.h : c.h);
    ASSERT_EQ(offer.graph.Out()->Connect(offer.graph.sink->Pin(), &offer.type), kSOk);
    EXPECT_EQ(offer.graph.decoder->State().outputStride, c.stride);
    EXPECT_EQ(offer.graph.decoder->State().outputBufferSize, c.size);
  }
}

TEST_F(Negotiation, InputAndTransformChecks) {
  Graph graph(StreamType(FourCC("VTQ0"), 1920, 1080));
  CVantaroDecoder& decoder = *graph.decoder;
  CMediaType lower = StreamType(FourCC("vtq7"), 8, 8), unknown = StreamType(FourCC("VTQ6"), 8, 8);
  CMediaType audio = StreamType(FourCC("VTQ0"), 8, 8), noBlock = audio;
  lower.subtype = kGuidNull;  // the subtype is not looked at
  audio.majortype = FourCCSubtype(FourCC("auds"));
  noBlock.formattype = kGuidNull;
  const CMediaType info2 = StreamType(FourCC("VTQ9"), 8, 8, {.videoInfo2 = true});
  for (const auto& [type, result] : {std::pair<const CMediaType*, HRESULT>{&lower, kSOk}, {&info2, kSOk}, {&unknown, kVfwETypeNotAccepted},
                                     {&audio, kVfwETypeNotAccepted}, {&noBlock, kVfwETypeNotAccepted}}) {
    EXPECT_EQ(decoder.CheckInputType(type), result) << HeaderOf(*type)->biCompression;
  }
  // The output may be wider, never narrower, and as high either way up.
  ASSERT_EQ(graph.ConnectInput(), kSOk);
  const CMediaType& in = graph.In()->CurrentMediaType();
  CMediaType out;
  ASSERT_EQ(decoder.GetMediaType(5, &out), kSOk);
  for (const auto& [w, h, result] : {std::tuple{2048, 1080, kSOk}, {1900, 1080, kVfwETypeNotAccepted},
                                     {1920, -1080, kSOk}, {1920, 1078, kVfwETypeNotAccepted}}) {
    std::tie(HeaderOf(out)->biWidth, HeaderOf(out)->biHeight) = std::tie(w, h);
    EXPECT_EQ(decoder.CheckTransform(&in, &out), result) << w << "x" << h;
  }
  out.majortype = kGuidNull;  // not video: passes unexamined
  EXPECT_EQ(decoder.CheckTransform(&in, &out), kSOk);
}

// The defaults written where they were missing are checked under Windows
// (scripts/test-windows.sh); a stored value wins, an unreadable store gives
// the defaults.
TEST_F(Negotiation, SettingsAreReadOnceWithTheirDefaults) {
  SetSetting(u"TypeSpecificFlags", 0);
  for (const uint32_t expected : {0u, 4u}) {  // stored, then denied
    Graph graph(StreamType(FourCC("VTQ0"), 64, 64));
    EXPECT_EQ(std::tie(graph.decoder->State().configuredInterlaceFlags, graph.decoder->State().configuredTypeSpecificFlags),
              std::make_tuple(37u, expected));
    EXPECT_EQ(RegistryOpenHandlesForTests(), 0u);
    RegistryResetForTests();
    RegistrySetDeniedForTests(kRegistryCurrentUser, expected == 0);
  }
}

// Pins are found by their short names and answer their long ones (saved
// graphs name them so).
TEST_F(Negotiation, PinNames) {
  Graph graph(StreamType(FourCC("VTQ0"), 64, 64));
  IPin* pin = nullptr;
  PIN_INFO info{};
  ASSERT_EQ(graph.decoder->FindPin(u"Out", &pin), kSOk);
  ASSERT_EQ(pin->QueryPinInfo(&info), kSOk);
  EXPECT_EQ(std::u16string(info.achName), u"XForm Out");
  info.pFilter->Release(), pin->Release();
  EXPECT_EQ(graph.decoder->FindPin(u"XForm In", &pin), kVfwENotFound);
}

}  // namespace
}  // namespace vantaro::testing
