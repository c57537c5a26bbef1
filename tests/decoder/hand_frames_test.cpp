// A hand-built frame through the decode walks: the fault path and its
// capture (the first fault writes the stream and the picture it could read
// to files, later ones leave them). Damaged, cut and random streams at every
// door are the fuzz targets' work.
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
// first block (two escapes of run 40) and whose second field is flat grey;
// each slice is its 3-byte length, itself included, then its codes.
std::vector<uint8_t> FaultingFrame() {
  StreamWriter fields[2];
  fields[0].Block(0, true, {{40, 1}, {40, 1}});
  for (int b = 0; b < 8; ++b) fields[1].Block(0, b < 4);
  std::vector<uint8_t> frame = {96, 0, 0, 0};
  for (int field = 0; field < 2; ++field) {
    if (field == 1) frame[1] = static_cast<uint8_t>(frame.size());
    for (int slice = 0; slice < 4; ++slice) {
      const std::vector<uint8_t> codes = slice == 0 ? fields[field].Bytes() : std::vector<uint8_t>{};
      for (int i = 0; i < 3; ++i) frame.push_back(static_cast<uint8_t>((codes.size() + 3) >> (8 * i)));
      frame.insert(frame.end(), codes.begin(), codes.end());
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
  const std::string input = ReadFile("VTQ_Crash_Input"), output = ReadFile("VTQ_Crash_Output");
  EXPECT_EQ(input, "Could Not Read Input Memory.\n");
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

}  // namespace
}  // namespace vantaro::decoder
