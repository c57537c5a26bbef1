// vantaro bench as a user runs it: a line for each chosen variant, whose bits
// a pixel are the library's own for the same picture, and its refusals.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <vector>

#include "vantaro/vantaro.h"

#ifdef VANTARO_CLI_PATH
namespace {

namespace fs = std::filesystem;

std::pair<int, std::string> Bench(const fs::path& dir, const std::string& args) {
  const std::string out = (dir / "stdout.txt").string();
  const int status = std::system((std::string(VANTARO_CLI_PATH) + " bench " + args + " >" + out + " 2>&1").c_str());
  std::ifstream in(out);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1,
          std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>())};
}

TEST(BenchCommand, PrintsTheChosenVariantWithTheLibrarysBitsPerPixel) {
  constexpr int32_t kWidth = 64, kHeight = 48;
  const uint32_t fourcc = VTC_FOURCC('V', 'T', 'Q', '3');
  const fs::path d = fs::temp_directory_path() / "vantaro_bench_test";
  fs::create_directories(d);
  std::vector<uint8_t> picture(vantaro_picture_size(VANTARO_FORMAT_YUV422P, kWidth, kHeight));
  for (size_t i = 0; i < picture.size(); ++i) picture[i] = uint8_t((i * 7 + (i / kWidth) * 13) & 255);
  std::ofstream(d / "in.y4m", std::ios::binary) << "YUV4MPEG2 W64 H48 F25:1 Ip A1:1 C422\nFRAME\n"
                                                << std::string(picture.begin(), picture.end());
  const auto [code, out] = Bench(d, (d / "in.y4m").string() + " --fourcc vtq3");
  ASSERT_EQ(code, 0) << out;
  const size_t at = out.find("\nVTQ3 ");
  ASSERT_NE(at, std::string::npos) << out;
  EXPECT_EQ(out.find("VTQ0"), std::string::npos) << "only the chosen variant runs";
  std::istringstream line(out.substr(at + 1, out.find('\n', at + 1) - at - 1));
  std::string variant, chroma;
  double encodeRate = 0, encodeBlocks = 0, decodeRate = 0, decodeBlocks = 0, bits = 0;
  line >> variant >> chroma >> encodeRate >> encodeBlocks >> decodeRate >> decodeBlocks >> bits;
  EXPECT_TRUE(encodeRate > 0 && decodeBlocks > 0) << out;
  // The library's frame of the same picture.
  vantaro_picture p{};
  vantaro_encoder* encoder = nullptr;
  std::vector<uint8_t> frame(vantaro_frame_bound(fourcc, kWidth, kHeight));
  size_t written = 0;
  ASSERT_EQ(vantaro_picture_fill(&p, VANTARO_FORMAT_YUV422P, kWidth, kHeight, picture.data(), picture.size()), VANTARO_OK);
  ASSERT_EQ(vantaro_encoder_create(fourcc, kWidth, kHeight, 96, nullptr, &encoder), VANTARO_OK);
  EXPECT_EQ(vantaro_encode(encoder, &p, frame.data(), frame.size(), &written), VANTARO_OK);
  vantaro_encoder_destroy(encoder);
  EXPECT_NEAR(bits, double(written) * 8.0 / (kWidth * kHeight), 0.0005);

  for (const auto& [args, says] : {std::pair<std::string, const char*>{"--fourcc VTQ6 x.png", "not a Vantaro variant"},
                                   {(d / "in.y4m").string() + " --seconds 0", "--seconds"},
                                   {"--threads 0 x.png", "--threads"}, {(d / "missing.png").string(), "cannot open"}}) {
    const auto [refused, text] = Bench(d, args);
    EXPECT_TRUE(refused == 1 && text.find(says) != std::string::npos) << args << "\n" << text;
  }
}

}  // namespace
#endif
