// The message table, opening and closing, the identity record and quality.
#include <gtest/gtest.h>

#include <string>

#include "driver_session.h"

namespace vantaro::test {
namespace {

std::u16string Wide(const VtcWideChar* text) { return std::u16string(text); }

ICINFO GetInfo(uint64_t id) {
  ICINFO info;
  std::memset(&info, 0x5A, sizeof info);
  EXPECT_EQ(Send(id, ICM_GETINFO, &info, nullptr), 568);
  return info;
}

TEST(DriverEntry, MessageTableAnswersAsStated) {
  DriverInstance vtq2(Fcc("VTQ2"));
  FakeDriverHost host;
  struct Row {
    uint32_t message;
    int64_t result;
  };
  // Every table row without records to fill. The two configure probes
  // disagree on purpose: ICM_CONFIGURE says a dialog exists, the driver's
  // own message says none does.
  const Row rows[] = {
      {DRV_ENABLE, 1}, {DRV_DISABLE, 1}, {DRV_FREE, 1}, {DRV_CONFIGURE, 0},
      {DRV_QUERYCONFIGURE, 0}, {DRV_INSTALL, 1}, {DRV_REMOVE, 1},
      {ICM_COMPRESS_END, 0}, {ICM_DECOMPRESS_END, 0},
      {ICM_DECOMPRESS_SET_PALETTE, -1}, {ICM_DECOMPRESS_GET_PALETTE, -1},
      {ICM_GETBUFFERSWANTED, -1}, {ICM_GETDEFAULTKEYFRAMERATE, -1}, {ICM_GETDEFAULTQUALITY, -1},
      {ICM_DECOMPRESSEX_BEGIN, -1}, {ICM_DECOMPRESSEX_QUERY, -1}, {ICM_DECOMPRESSEX, -1},
      {ICM_DECOMPRESSEX_END, -1}, {ICM_COMPRESS_FRAMES_INFO, 0}, {ICM_GETSTATE, 0},
      {ICM_SETSTATE, 0}, {ICM_CONFIGURE, 0}, {ICM_ABOUT, 0}, {ICM_SET, 0}, {ICM_GET, 0},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(vtq2.Send(row.message), row.result) << std::hex << row.message;
  }
  // ICM_CONFIGURE's probe value changes nothing.
  EXPECT_EQ(DriverProc(vtq2.id(), nullptr, ICM_CONFIGURE, -1, 0), 0);
  EXPECT_EQ(DriverProc(vtq2.id(), nullptr, ICM_ABOUT, -1, 0), 0);
  EXPECT_TRUE(host.defCalls.empty());
}

TEST(DriverEntry, DefaultPathSplitsAtTheCompressionRange) {
  FakeDriverHost host;
  int marker = 0;
  EXPECT_EQ(DriverProc(77, &marker, 0x3FFF, -5, 9), host.defResult);
  ASSERT_EQ(host.defCalls.size(), 1u);
  const FakeDriverHost::DefCall& call = host.defCalls[0];
  EXPECT_EQ(call.driverId, 77u);
  EXPECT_EQ(call.driverHandle, &marker);
  EXPECT_EQ(call.message, 0x3FFFu);
  EXPECT_EQ(call.lParam1, -5);
  EXPECT_EQ(call.lParam2, 9);
  // Not in the table, yet compression messages: unsupported, never handed on.
  EXPECT_EQ(DriverProc(77, &marker, 0x4003, 0, 0), -1);
  EXPECT_EQ(DriverProc(77, &marker, 0x500C, 0, 0), -1);
  EXPECT_EQ(DriverProc(77, &marker, 0xFFFFFFFF, 0, 0), -1);
  EXPECT_EQ(host.defCalls.size(), 1u);
}

TEST(DriverEntry, LoadRefusesWithoutSse2AndSaysSo) {
  FakeDriverHost host;
  EXPECT_EQ(Send(0, DRV_LOAD), 1);
  EXPECT_TRUE(host.boxes.empty());
  host.hasSse2 = false;
  EXPECT_EQ(Send(0, DRV_LOAD), 0);
  ASSERT_EQ(host.boxes.size(), 1u);
  EXPECT_EQ(host.boxes[0].text, "This codec Requires SSE2.");
  EXPECT_EQ(host.boxes[0].title, "Error");
  EXPECT_EQ(host.boxes[0].style, 16u);
  // Only the load asks the processor.
  const int tests = host.processorTests;
  EXPECT_EQ(Send(0, DRV_FREE), 1);
  EXPECT_EQ(host.processorTests, tests);
  EXPECT_EQ(host.boxes.size(), 1u);
}

TEST(DriverEntry, OpenRefusesOtherTypesAndClearsTheLastHandler) {
  DriverInstance first(Fcc("VTQ0"));
  ICOPEN open{};
  open.fccType = Fcc("vids");
  open.fccHandler = Fcc("VTQ4");
  open.dwError = 1234;
  EXPECT_EQ(Send(0, DRV_OPEN, nullptr, &open), 0);
  EXPECT_EQ(open.dwError, 0);
  const ICINFO info = GetInfo(first.id());
  EXPECT_EQ(info.fccHandler, Fcc("VTQ2"));
  EXPECT_EQ(Wide(info.szDescription), u"Quorin Vantaro Video Codec");
}

TEST(DriverEntry, OpenWithoutRecordGivesAnInstanceOfNoKnownVariant) {
  { DriverInstance earlier(Fcc("VTQ5")); }
  const int64_t id = Send(0, DRV_OPEN);
  ASSERT_NE(id, 0);
  const ICINFO info = GetInfo(static_cast<uint64_t>(id));
  EXPECT_EQ(info.fccHandler, Fcc("VTQ2"));
  EXPECT_EQ(Wide(info.szDescription), u"Quorin Vantaro Video Codec");
  int32_t quality = 0;
  EXPECT_EQ(Send(static_cast<uint64_t>(id), ICM_GETQUALITY, &quality), 0);
  EXPECT_EQ(quality, 9200);
  EXPECT_EQ(Send(static_cast<uint64_t>(id), DRV_CLOSE), 1);
  EXPECT_EQ(Send(0, DRV_CLOSE), 1);
}

TEST(DriverEntry, UnknownHandlerStillOpens) {
  DriverInstance unknown(Fcc("VTQ6"));
  ASSERT_NE(unknown.id(), 0u);
  const ICINFO info = GetInfo(unknown.id());
  EXPECT_EQ(info.fccHandler, Fcc("VTQ2"));
  EXPECT_EQ(Wide(info.szDescription), u"Quorin Vantaro Video Codec");
}

TEST(DriverEntry, GetInfoDescribesTheLastOpenedVariant) {
  const struct {
    const char (&handler)[5];
    const char (&upper)[5];
    std::u16string description;
  } cases[] = {
      {"VTQ0", "VTQ0", u"Quorin Vantaro 4:2:0"},
      {"vtq1", "VTQ1", u"Quorin Vantaro 4:2:0:4 (Alpha)"},
      {"VTQ2", "VTQ2", u"Quorin Vantaro 4:2:2"},
      {"VTQ3", "VTQ3", u"Quorin Vantaro 4:2:2:4 (Alpha)"},
      {"vtq4", "VTQ4", u"Quorin Vantaro 4:4:4"},
      {"VTQ5", "VTQ5", u"Quorin Vantaro 4:4:4:4 (Alpha)"},
      {"VTQ7", "VTQ7", u"Quorin Vantaro 4:2:2:4 (DCT Alpha)"},
      {"vtq9", "VTQ9", u"Quorin Vantaro 4:4:4:4 (DCT Alpha)"},
  };
  for (const auto& c : cases) {
    DriverInstance instance(Fcc(c.handler));
    const ICINFO info = GetInfo(instance.id());
    EXPECT_EQ(info.dwSize, 568u);
    EXPECT_EQ(info.fccType, Fcc("vidc"));
    EXPECT_EQ(info.fccHandler, Fcc(c.upper)) << c.handler;
    EXPECT_EQ(info.dwFlags, 0xA9u);
    EXPECT_EQ(info.dwVersion, 0u);
    EXPECT_EQ(info.dwVersionICM, 0x104u);
    EXPECT_EQ(Wide(info.szName), u"QR CoDec");
    EXPECT_EQ(Wide(info.szDescription), c.description) << c.handler;
    // szDriver is the caller's.
    for (VtcWideChar ch : info.szDriver) ASSERT_EQ(ch, 0x5A5A);
    EXPECT_EQ(instance.codec().fourcc, Fcc(c.upper));
  }
}

TEST(DriverEntry, GetInfoOnAnyInstanceDescribesTheLastOpened) {
  DriverInstance first(Fcc("VTQ0"));
  DriverInstance second(Fcc("VTQ5"));
  EXPECT_EQ(GetInfo(first.id()).fccHandler, Fcc("VTQ5"));
  EXPECT_EQ(Wide(GetInfo(first.id()).szDescription), u"Quorin Vantaro 4:4:4:4 (Alpha)");
  // The first instance itself is still 4:2:0.
  EXPECT_EQ(first.codec().fourcc, Fcc("VTQ0"));
}

TEST(DriverEntry, QualityMessagesUseTheTenThousandScale) {
  DriverInstance instance(Fcc("VTQ2"));
  int32_t value = 0;
  EXPECT_EQ(instance.Send(ICM_GETQUALITY, &value), 0);
  EXPECT_EQ(value, 9200);
  EXPECT_EQ(instance.Send(ICM_GETDEFAULTQUALITY, &value), -1);

  int32_t request = 9999;
  EXPECT_EQ(instance.Send(ICM_SETQUALITY, &request), 0);
  EXPECT_EQ(instance.codec().quality, 99u);
  EXPECT_EQ(instance.Send(ICM_GETQUALITY, &value), 0);
  EXPECT_EQ(value, 9800);
  // The top of the scale maps to 100, which is ignored.
  request = 10000;
  EXPECT_EQ(instance.Send(ICM_SETQUALITY, &request), 0);
  EXPECT_EQ(instance.codec().quality, 99u);
  request = 0;
  EXPECT_EQ(instance.Send(ICM_SETQUALITY, &request), 0);
  EXPECT_EQ(instance.codec().quality, 50u);
  EXPECT_EQ(instance.Send(ICM_GETQUALITY, &value), 0);
  EXPECT_EQ(value, 0);
}

TEST(DriverEntry, MissingInstanceOrRecordIsRefusedNotRead) {
  BITMAPINFOHEADER header = Header(64, 48, Fcc("YUY2"), 16);
  int32_t value = 0;
  EXPECT_EQ(Send(0, ICM_GETQUALITY, &value), -2);
  EXPECT_EQ(Send(0, ICM_COMPRESS_QUERY, &header), -2);
  EXPECT_EQ(Send(0, ICM_COMPRESS), -2);
  EXPECT_EQ(Send(0, ICM_DECOMPRESS), -2);
  EXPECT_EQ(Send(0, ICM_GETINFO), 0);
  DriverInstance instance(Fcc("VTQ2"));
  EXPECT_EQ(instance.Send(ICM_COMPRESS_QUERY), -2);
  EXPECT_EQ(instance.Send(ICM_SETQUALITY), -2);
}

// The public records as a C host compiles them (see driver_header_test.c).
extern "C" int DriverHeaderSizes(uint32_t* sizes);
extern "C" int64_t DriverSessionFromC(void);

TEST(DriverRecords, LayoutsMatchThePlatform) {
  uint32_t sizes[5] = {};
  ASSERT_EQ(DriverHeaderSizes(sizes), 5);
  EXPECT_EQ(sizes[0], 56u);   // ICOPEN
  EXPECT_EQ(sizes[1], 568u);  // ICINFO
  EXPECT_EQ(sizes[2], 88u);   // ICCOMPRESS
  EXPECT_EQ(sizes[3], 48u);   // ICDECOMPRESS
  EXPECT_EQ(sizes[4], 40u);   // BITMAPINFOHEADER
  EXPECT_EQ(offsetof(ICOPEN, dwError), 24u);
  EXPECT_EQ(offsetof(ICINFO, szDescription), 56u);
  EXPECT_EQ(offsetof(ICINFO, szDriver), 312u);
  EXPECT_EQ(offsetof(ICCOMPRESS, lpdwFlags), 48u);
  EXPECT_EQ(offsetof(ICCOMPRESS, dwQuality), 64u);
  EXPECT_EQ(offsetof(ICCOMPRESS, lpbiPrev), 72u);
  EXPECT_EQ(offsetof(ICDECOMPRESS, lpOutput), 32u);
  EXPECT_EQ(offsetof(ICDECOMPRESS, ckid), 40u);
}

TEST(DriverRecords, ACHostCanOpenDescribeAndClose) { EXPECT_EQ(DriverSessionFromC(), 0); }

}  // namespace
}  // namespace vantaro::test
