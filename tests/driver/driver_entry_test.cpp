// The message table, opening and closing, the identity record and quality.
#include <gtest/gtest.h>

#include <tuple>

#include "driver_host_session.h"

#include "codec/allocation.h"
#include "vantaro/vantaro.h"

namespace vantaro::test {
namespace {

ICINFO GetInfo(uint64_t id) {
  ICINFO info;
  std::memset(&info, 0x5A, sizeof info);
  EXPECT_EQ(Send(id, ICM_GETINFO, &info), 568);
  return info;
}

TEST(DriverEntry, MessagesTheCodecDoesNotHandleAndTheDefaultPath) {
  DriverInstance instance("VTQ2");
  FakeDriverHost host;
  // ICM_CONFIGURE claims a dialog that DRV_QUERYCONFIGURE denies, as hosts know it.
  const std::pair<uint32_t, int64_t> rows[] = {
      {DRV_QUERYCONFIGURE, 0}, {ICM_CONFIGURE, 0},  {DRV_INSTALL, 1},         {ICM_DECOMPRESS_GET_PALETTE, -1},
      {ICM_DECOMPRESSEX, -1},  {ICM_GETSTATE, 0},   {ICM_GETDEFAULTQUALITY, -1}, {0x4003, -1},
      {0x500C, -1},            {0xFFFFFFFF, -1}};
  for (const auto& [message, result] : rows) EXPECT_EQ(instance.Send(message), result) << std::hex << message;
  EXPECT_TRUE(host.defCalls.empty());
  // Below the compression range an unknown message goes on, unchanged.
  int handle = 0;
  EXPECT_EQ(DriverProc(77, &handle, 0x3FFF, -5, 9), 0x5A5A);
  const std::vector<uint64_t> call = {77, reinterpret_cast<uint64_t>(&handle), 0x3FFF, uint64_t(-5), 9};
  EXPECT_EQ(host.defCalls, std::vector<std::vector<uint64_t>>{call});
}

TEST(DriverEntry, LoadRefusesWithoutSse2AndFreeDoesNotAsk) {
  FakeDriverHost host;
  EXPECT_EQ(Send(0, DRV_LOAD), 1);
  host.hasSse2 = false;
  EXPECT_EQ(Send(0, DRV_LOAD), 0);
  EXPECT_EQ(host.boxes, std::vector<std::string>{"This codec Requires SSE2.|Error|16"});
  EXPECT_EQ(Send(0, DRV_FREE), 1);
  EXPECT_EQ(host.processorTests, 2);
}

TEST(DriverEntry, OpenAndTheLastOpenedHandler) {
  DriverInstance first("VTQ0");
  {
    DriverInstance second("vtq5");
    // Any instance describes the one opened last, its name in capitals.
    EXPECT_EQ(GetInfo(first.id()).fccHandler, FourCC("VTQ5"));
    EXPECT_EQ(first.codec().fourcc, FourCC("VTQ0"));
  }
  // A refused open still forgets the last handler, and says nothing of why.
  ICOPEN open{0, FourCC("vids"), FourCC("VTQ4"), 0, 0, 1234, nullptr, nullptr, 0};
  EXPECT_EQ(Send(0, DRV_OPEN, nullptr, &open), 0);
  EXPECT_EQ(open.dwError, 0);
  EXPECT_EQ(GetInfo(first.id()).fccHandler, FourCC("VTQ2"));
  // Unknown handlers and a missing record still open, as no known variant.
  DriverInstance unknown("VTQ6");
  const ICINFO info = GetInfo(unknown.id());
  EXPECT_EQ(std::u16string(info.szDescription), u"Quorin Vantaro Video Codec");
  EXPECT_EQ(std::u16string(info.szName), u"QR CoDec");
  EXPECT_EQ(info.szDriver[0], 0x5A5A);  // the caller's
  EXPECT_EQ(std::tie(info.dwFlags, info.dwVersionICM), std::make_tuple(0xA9u, 0x104u));
  const int64_t bare = Send(0, DRV_OPEN);
  ASSERT_NE(bare, 0);
  EXPECT_EQ(Send(bare, DRV_CLOSE), 1);
  EXPECT_EQ(Send(0, DRV_CLOSE), 1);
}

// An instance is three allocations (the record, the encoder and decoder
// tables); whichever fails, both doors that create instances answer with no
// instance and leave nothing allocated.
int64_t g_failAt = 0;

TEST(DriverEntry, AFailedAllocationOpensNothingAndLeaksNothing) {
  const BITMAPINFOHEADER header = Header(64, 64, FourCC("YUY2"), 16);
  ICOPEN open{};
  open.fccType = ICTYPE_VIDEO;
  open.fccHandler = FourCC("VTQ2");
  const int64_t live = LiveAllocations();
  for (g_failAt = 1; g_failAt <= 3; ++g_failAt) {
    SetAllocationFailureHook([](int64_t sequence, size_t) { return sequence == g_failAt; });
    EXPECT_EQ(VTC_CompressFieldBegin(&header, FourCC("VTQ2")), nullptr) << g_failAt;
    SetAllocationFailureHook([](int64_t sequence, size_t) { return sequence == g_failAt; });
    EXPECT_EQ(Send(0, DRV_OPEN, nullptr, &open), 0) << g_failAt;
    SetAllocationFailureHook(nullptr);
    EXPECT_EQ(LiveAllocations(), live) << g_failAt;
  }
  void* handle = VTC_DecompressFieldBegin(&header, FourCC("VTQ2"));
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(LiveAllocations(), live + 3);
  VTC_DecompressFieldEnd(handle);
  EXPECT_EQ(LiveAllocations(), live);
}

TEST(DriverEntry, QualityOnTheTenThousandScale) {
  DriverInstance instance("VTQ2");
  int32_t value = 0;
  const auto quality = [&] { return instance.Send(ICM_GETQUALITY, &value), value; };
  EXPECT_EQ(quality(), 9200);
  for (const auto& [request, expected] : {std::pair{9999, 9800}, {10000, 9800}, {0, 0}}) {
    EXPECT_EQ(instance.Send(ICM_SETQUALITY, &request), 0);
    EXPECT_EQ(quality(), expected) << request;  // 10000 maps to 100, which is ignored
  }
}

TEST(DriverEntry, MissingInstanceOrRecordIsRefusedNotRead) {
  BITMAPINFOHEADER header = Header(64, 48, FourCC("YUY2"), 16);
  for (const uint32_t message : {ICM_GETQUALITY, ICM_COMPRESS_QUERY, ICM_COMPRESS, ICM_DECOMPRESS})
    EXPECT_EQ(Send(0, message, &header), -2) << message;
  EXPECT_EQ(Send(0, ICM_GETINFO), 0);
  DriverInstance instance("VTQ2");
  EXPECT_EQ(instance.Send(ICM_COMPRESS_QUERY), -2);
}

extern "C" int64_t DriverSessionFromC(void);
TEST(DriverEntry, ACHostCanOpenDescribeAndClose) { EXPECT_EQ(DriverSessionFromC(), 0); }

}  // namespace
}  // namespace vantaro::test
