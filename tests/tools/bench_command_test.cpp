// vantaro bench as a user runs it: one line per chosen variant whose bits a
// pixel are the library's own for the same picture, and its refusals.
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

TEST(BenchCommand, PrintsEachChosenVariantWithTheLibrarysBitsPerPixel) {
  constexpr int32_t kWidth = 64, kHeight = 48;
  const fs::path d = fs::temp_directory_path() / "vantaro_bench_test";
  fs::create_directories(d);
  std::vector<uint8_t> picture(vantaro_picture_size(VANTARO_FORMAT_YUV422P, kWidth, kHeight));
  for (size_t i = 0; i < picture.size(); ++i) picture[i] = uint8_t((i * 7 + (i / kWidth) * 13) & 255);
  {
    std::ofstream y4m(d / "in.y4m", std::ios::binary);
    y4m << "YUV4MPEG2 W64 H48 F25:1 Ip A1:1 C422\nFRAME\n";
    y4m.write(reinterpret_cast<const char*>(picture.data()), std::streamsize(picture.size()));
  }
  const auto [code, out] = Bench(d, (d / "in.y4m").string() + " --fourcc VTQ2 --fourcc vtq3");
  ASSERT_EQ(code, 0) << out;
  for (const char* name : {"VTQ2", "VTQ3"}) {
    const size_t at = out.find(std::string("\n") + name + " ");
    ASSERT_NE(at, std::string::npos) << name << " missing from\n" << out;
    std::istringstream line(out.substr(at + 1, out.find('\n', at + 1) - at - 1));
    std::string variant, chroma;
    double encodeRate = 0, encodeBlocks = 0, decodeRate = 0, decodeBlocks = 0, bits = 0;
    line >> variant >> chroma >> encodeRate >> encodeBlocks >> decodeRate >> decodeBlocks >> bits;
    EXPECT_GT(encodeRate, 0.0) << name;
    EXPECT_GT(decodeBlocks, 0.0) << name;
    // The library's frame of the same picture.
    const uint32_t fourcc = VTC_FOURCC(name[0], name[1], name[2], name[3]);
    vantaro_picture p{};
    ASSERT_EQ(vantaro_picture_fill(&p, VANTARO_FORMAT_YUV422P, kWidth, kHeight, picture.data(), picture.size()),
              VANTARO_OK);
    vantaro_encoder* encoder = nullptr;
    ASSERT_EQ(vantaro_encoder_create(fourcc, kWidth, kHeight, 96, nullptr, &encoder), VANTARO_OK);
    std::vector<uint8_t> frame(vantaro_frame_bound(fourcc, kWidth, kHeight));
    size_t written = 0;
    EXPECT_EQ(vantaro_encode(encoder, &p, frame.data(), frame.size(), &written), VANTARO_OK);
    vantaro_encoder_destroy(encoder);
    EXPECT_NEAR(bits, double(written) * 8.0 / (kWidth * kHeight), 0.0005) << name;
  }
  EXPECT_EQ(out.find("VTQ0"), std::string::npos) << "only the chosen variants run";

  const std::pair<std::string, const char*> refusals[] = {
      {"--fourcc VTQ6 x.png", "not a Vantaro variant"}, {"a.png b.png", "at most one INPUT"},
      {(d / "missing.png").string(), "cannot open"},     {(d / "in.y4m").string() + " --seconds 0", "--seconds"},
      {"--threads 0 x.png", "--threads"}};
  for (const auto& [args, says] : refusals) {
    const auto [refused, text] = Bench(d, args);
    EXPECT_EQ(refused, args == "a.png b.png" ? 2 : 1) << args << "\n" << text;  // 2: a usage error
    EXPECT_NE(text.find(says), std::string::npos) << args << "\n" << text;
  }
}

}  // namespace
#endif
