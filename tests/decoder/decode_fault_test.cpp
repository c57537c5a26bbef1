// Bad input: the fault path and its capture, and streams that are random,
// truncated or bit-flipped. Each stream lies in a buffer of exactly its size,
// so that AddressSanitizer sees any read past it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "codec/field_flow.h"
#include "diagnostics/fault_capture.h"
#include "platform/debug_output.h"
#include "stream_writer.h"
#include "support/pictures.h"

namespace vantaro::decoder {
namespace {

using test::StreamWriter;

std::vector<std::string> g_debugText;
void CollectDebugText(const char* text) { g_debugText.emplace_back(text); }

// The fault capture points at a fresh directory of each test's own, so that
// no test leaves VTQ_Crash_* files in the working directory.
class DecodeFault : public testing::Test {
 protected:
  void SetUp() override {
    dir_ = std::filesystem::temp_directory_path() /
           ("vantaro_fault_" + std::to_string(std::random_device{}()) + "_" +
            testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::create_directories(dir_);
    SetFaultCaptureDirectory(dir_.string());
    g_debugText.clear();
    SetDebugOutputSink(CollectDebugText);
  }
  void TearDown() override {
    SetDebugOutputSink(nullptr);
    SetFaultCaptureDirectory("");
    std::filesystem::remove_all(dir_);
  }
  std::string ReadFile(const char* name) const {
    std::ifstream in(dir_ / name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }
  std::filesystem::path dir_;
};

// A 16 x 32 VTQ2 frame whose first field's only macroblock runs past its
// first block (two escapes of run 40) and whose second field is flat grey.
std::vector<uint8_t> FaultingFrame() {
  StreamWriter bad, good;
  bad.Block(0, true, {{40, 1}, {40, 1}});
  for (int b = 0; b < 4; ++b) good.Block(0, true);
  for (int b = 0; b < 4; ++b) good.Block(0, false);
  std::vector<uint8_t> frame = {96, 0, 0, 0};
  for (int field = 0; field < 2; ++field) {
    if (field == 1) frame[1] = static_cast<uint8_t>(frame.size());
    for (int slice = 0; slice < 4; ++slice) {
      const std::vector<uint8_t> p = slice > 0 ? std::vector<uint8_t>{} : (field == 0 ? bad : good).Bytes();
      frame.push_back(static_cast<uint8_t>(p.size() + 3));
      frame.push_back(0);
      frame.push_back(0);
      frame.insert(frame.end(), p.begin(), p.end());
    }
  }
  return frame;
}

TEST_F(DecodeFault, FirstFaultIsCapturedOnceAndTheOtherFieldStillDecodes) {
  const std::vector<uint8_t> frame = FaultingFrame();
  test::TestInstance inst(test::FourCC("VTQ2"), kCsYUY2, 16, 32);
  std::vector<uint8_t> picture(32 * 32, 0xCD);
  EXPECT_EQ(DecompressFrame(inst.get(), picture.data(), nullptr, frame.data(), 32, frame.size()), 0);
  EXPECT_EQ(picture[0], 0xCD);  // field 0 ended at its fault
  EXPECT_EQ(picture[32], 129);  // field 1 decoded
  ASSERT_EQ(g_debugText.size(), 1u);
  EXPECT_EQ(g_debugText[0], "ExceptCatch: Called\n");

  // n * 5 + 1 bytes, n being bytes 0..2 of the frame, run past the stream,
  // and the picture is far below 691200 bytes: both fallback texts.
  const std::string input = ReadFile("VTQ_Crash_Input");
  const std::string output = ReadFile("VTQ_Crash_Output");
  EXPECT_EQ(input, "Could Not Read Input Memory.\n");
  EXPECT_EQ(input.size(), 29u);
  EXPECT_EQ(output, "Could Not Read Outputput Memory.\n");

  // A second fault leaves both files as they are.
  std::vector<uint8_t> big(720 * 480 * 2 + 64, 7);
  test::TestInstance other(test::FourCC("VTQ2"), kCsYUY2, 16, 32);
  EXPECT_EQ(DecompressField(other.get(), big.data(), nullptr, frame.data(), 64, 0, {frame.size(), big.size()}), 0);
  EXPECT_EQ(ReadFile("VTQ_Crash_Input"), input);
  EXPECT_EQ(ReadFile("VTQ_Crash_Output"), output);
  EXPECT_EQ(g_debugText.size(), 2u);
}

TEST_F(DecodeFault, ReadableMemoryIsCapturedInFull) {
  // A stream buffer that holds n * 5 + 1 bytes, and a picture of 691200.
  std::vector<uint8_t> frame = FaultingFrame();
  const uint32_t n = frame[0] | (frame[1] << 8) | (frame[2] << 16);
  const size_t captured = n * 5 + 1;
  frame.resize(std::max(frame.size(), captured), 0x5A);
  std::vector<uint8_t> picture(691200 + 64, 3);
  test::TestInstance inst(test::FourCC("VTQ2"), kCsYUY2, 16, 32);
  EXPECT_EQ(DecompressField(inst.get(), picture.data(), nullptr, frame.data(), 64, 0,
                            {frame.size(), picture.size()}),
            0);
  const std::string input = ReadFile("VTQ_Crash_Input");
  ASSERT_EQ(input.size(), captured);
  EXPECT_EQ(0, std::memcmp(input.data(), frame.data(), captured));
  EXPECT_EQ(ReadFile("VTQ_Crash_Output").size(), 691200u);
}

// A few hundred damaged streams through every arm: nothing may be read
// outside the stream or written outside the picture (ASan in CI), and every
// call answers 0. Faults only leave the capture files.
TEST_F(DecodeFault, DamagedStreamsStayInBounds) {
  const uint32_t variants[] = {test::FourCC("VTQ1"), test::FourCC("VTQ3"), test::FourCC("VTQ4"),
                               test::FourCC("VTQ7"), test::FourCC("VTQ9")};
  const uint32_t layouts[] = {kCsNV12, kCsYA20, kCsUYVA, kCsRGB32, kCsAYUV};
  std::mt19937 rng(2024);
  int cases = 0;
  for (uint32_t fourcc : variants) {
    for (uint32_t cs : layouts) {
      test::TestInstance enc(fourcc, cs, 48, 70);
      const test::Frame source = test::MakeFrame(cs, 48, 70, 9);
      const std::vector<uint8_t> valid = test::CompressFrameBytes(enc.get(), source);
      for (int trial = 0; trial < 12; ++trial, ++cases) {
        std::vector<uint8_t> stream = valid;
        switch (trial % 4) {
          case 0: stream.resize(4 + rng() % (stream.size() - 4)); break;  // truncated
          case 1:
            for (int f = 0; f < 1 + trial; ++f) stream[4 + rng() % (stream.size() - 4)] ^= 1 << (rng() % 8);
            break;
          case 2:  // random payload behind an intact header
            for (size_t i = 16; i < stream.size(); ++i) stream[i] = static_cast<uint8_t>(rng());
            break;
          default:  // random bytes throughout, lengths included
            stream.resize(1 + rng() % 400);
            for (uint8_t& b : stream) b = static_cast<uint8_t>(rng());
        }
        const std::vector<uint8_t> exact(stream);  // heap block of exactly this size
        test::Frame out = test::MakeFrame(cs, 48, 70, 1);
        test::TestInstance dec(fourcc, cs, 48, 70);
        ASSERT_EQ(DecompressFrame(dec.get(), out.main.data(), out.chroma.empty() ? nullptr : out.chroma.data(),
                                  exact.data(), out.stride, exact.size()),
                  0);
      }
    }
  }
  EXPECT_EQ(cases, 300);
}

}  // namespace
}  // namespace vantaro::decoder
