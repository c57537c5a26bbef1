// Writes the fuzz targets' seed corpora: real frames of every variant, with
// the choice bytes each target reads in front, plus small AVI and Y4M files.
// Generated rather than committed, so the repository holds no binaries and
// the seeds follow the encoder. Usage: write_seeds <directory>; one
// subdirectory per target.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "avi/avi.h"
#include "fuzz_support.h"
#include "input/y4m.h"
#include "support/pictures.h"

using namespace vantaro::fuzz;
namespace fs = std::filesystem;

namespace {

using Bytes = std::vector<uint8_t>;

vantaro::tool::File Open(const fs::path& dir, const std::string& name) {
  fs::create_directories(dir);
  const std::string path = (dir / name).string();
  std::FILE* f = std::fopen(path.c_str(), "wb");
  FUZZ_CHECK(f != nullptr);
  return vantaro::tool::File(f, path, true);
}

void Save(const fs::path& dir, const std::string& name, const Bytes& bytes) {
  Open(dir, name).write(bytes.data(), bytes.size());
}

// A smooth picture whose gradients wrap into sharp edges: every kind of
// block, yet small frames.
Bytes Frame(uint32_t fourcc, int32_t width, int32_t height) {
  vantaro::test::Picture picture(VANTARO_FORMAT_YUVA444P, width, height);
  vantaro::test::Fill(picture, vantaro::test::Content::kSmooth);
  Bytes frame;
  FUZZ_CHECK(vantaro::test::Encode(fourcc, picture.pic, 90, frame) == VANTARO_OK);
  return frame;
}

Bytes Join(Bytes choices, const Bytes& payload) {
  choices.insert(choices.end(), payload.begin(), payload.end());
  return choices;
}

void WriteAvi(const fs::path& dir, uint32_t fourcc, const Bytes& frame) {
  vantaro::tool::File file = Open(dir, "seed_" + std::to_string(fourcc >> 24) + ".avi");
  vantaro::tool::AviVideo video;
  video.fourcc = fourcc;
  video.coded_width = video.display_width = 32, video.coded_height = video.display_height = 24;
  vantaro::tool::AviWriter writer(file, video);
  for (int i = 0; i < 2; ++i) writer.add_frame(frame.data(), static_cast<uint32_t>(frame.size()));
  writer.finish();
}

// A copy of `seed` whose picture header declares the most negative height,
// which has no magnitude in 32 bits: once a fault of the reader.
void WriteAviWithoutHeight(const fs::path& seed) {
  std::ifstream in(seed, std::ios::binary);
  Bytes bytes{std::istreambuf_iterator<char>(in), {}};
  FUZZ_CHECK(!bytes.empty());
  const std::string strf = "strf";
  const auto at = std::search(bytes.begin(), bytes.end(), strf.begin(), strf.end());
  FUZZ_CHECK(at + 20 <= bytes.end());
  const size_t height = static_cast<size_t>(at - bytes.begin()) + 8 + 8;  // chunk header, biSize, biWidth
  bytes[height] = bytes[height + 1] = bytes[height + 2] = 0;
  bytes[height + 3] = 0x80;
  Save(seed.parent_path(), "height_min.avi", bytes);
}

void WriteY4m(const fs::path& dir, vantaro::tool::Chroma chroma, int index) {
  vantaro::tool::File file = Open(dir, "seed_" + std::to_string(index) + ".y4m");
  vantaro::tool::Y4mFormat format;
  format.width = 7, format.height = 5, format.chroma = chroma;
  format.interlaced = index % 2 == 0;
  vantaro::tool::Y4mWriter writer(file, format);
  Bytes samples(format.frame_bytes());
  for (size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<uint8_t>(i * 37);
  for (int i = 0; i < 2; ++i) writer.write(samples.data());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: write_seeds <directory>\n");
    return 2;
  }
  const fs::path root = argv[1];
  for (uint8_t v = 0; v < 8; ++v) {
    const uint32_t fourcc = kVariants[v];
    const std::string name = "vtq" + std::to_string(v) + ".bin";
    // 37x23 for the native door: a partial macroblock column and an odd height.
    constexpr uint8_t kSuitingFormat[8] = {0, 1, 2, 3, 4, 5, 3, 5};  // YUV420P, YUVA420P...
    Save(root / "native_decode_fuzzer", name, Join({v, 36, 22, kSuitingFormat[v]}, Frame(fourcc, 37, 23)));
    // 32x24 for the direct functions and the driver (DirectWidth(1) is 32):
    // each variant into a layout that suits it, and into RGB.
    const Bytes frame = Frame(fourcc, 32, 24);
    constexpr uint8_t kSuitingLayout[8] = {0, 3, 1, 8, 2, 5, 4, 9};  // NV12, YA20, NV16, UYVA...
    const uint8_t layout = kSuitingLayout[v];
    Save(root / "direct_decode_fuzzer", name, Join({v, 1, 23, layout}, frame));
    Save(root / "direct_decode_fuzzer", "fields_" + name, Join({v, 1, 23, uint8_t(16 | 10)}, frame));
    Save(root / "driver_decode_fuzzer", name, Join({v, 1, 23, 11, 0}, frame));
    Save(root / "driver_decode_fuzzer", "layout_" + name, Join({v, 1, 23, layout, 0}, frame));
    // Quality 99 over noise, and a checkerboard at quality 90.
    Save(root / "round_trip_fuzzer", "noise_" + name, Join({v, 39, 33, 98, 5, 1}, {1, 2, 3}));
    Save(root / "round_trip_fuzzer", "board_" + name, Join({v, 20, 20, 89, 4, 6}, {}));
    if (v == 2 || v == 5) WriteAvi(root / "avi_reader_fuzzer", fourcc, frame);
  }
  WriteAviWithoutHeight(root / "avi_reader_fuzzer" / ("seed_" + std::to_string(kVariants[2] >> 24) + ".avi"));
  using vantaro::tool::Chroma;
  const Chroma chromas[] = {Chroma::k420, Chroma::k422, Chroma::k444, Chroma::k444Alpha};
  for (int i = 0; i < 4; ++i) WriteY4m(root / "y4m_reader_fuzzer", chromas[i], i);
  return 0;
}
