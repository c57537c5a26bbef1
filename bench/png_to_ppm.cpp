// Writes a PNG photograph as a binary PPM (P6), the form tjbench reads, so
// that the yardstick and our benchmark code the very same pixels.
#include <cstdio>
#include <exception>

#include "bench_pictures.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: png_to_ppm INPUT.png OUTPUT.ppm\n");
    return 2;
  }
  try {
    const vantaro::bench::RgbPicture picture = vantaro::bench::LoadPng(argv[1]);
    std::FILE* out = std::fopen(argv[2], "wb");
    if (out == nullptr) {
      std::fprintf(stderr, "cannot write %s\n", argv[2]);
      return 1;
    }
    std::fprintf(out, "P6\n%d %d\n255\n", static_cast<int>(picture.width), static_cast<int>(picture.height));
    const size_t written = std::fwrite(picture.rgb.data(), 1, picture.rgb.size(), out);
    const bool ok = written == picture.rgb.size() && std::fclose(out) == 0;
    if (!ok) {
      std::fprintf(stderr, "short write to %s\n", argv[2]);
      return 1;
    }
  } catch (const std::exception& e) {
    std::fprintf(stderr, "%s\n", e.what());
    return 1;
  }
  return 0;
}
