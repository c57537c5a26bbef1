// Compressed frames made with the direct functions, and the pictures the
// direct functions decode from them, to hold the filter's output against.
#pragma once

#include <cstdlib>
#include <vector>

#include "codec/codec_instance.h"
#include "filter/base/media_type.h"
#include "support/pictures.h"
#include "vantaro/vantaro.h"

namespace vantaro::testing {

// A frame of `fourcc` from a test pattern; alpha variants are fed an alpha
// source.
inline std::vector<uint8_t> CompressedFrame(uint32_t fourcc, int32_t width, int32_t height,
                                            uint32_t seed) {
  const bool alpha = ((fourcc >> 24) & 1) != 0;
  const int32_t bytes = alpha ? 4 : 2;
  BITMAPINFOHEADER source{};
  source.biSize = 40;
  source.biWidth = width;
  source.biHeight = height;
  source.biBitCount = static_cast<uint16_t>(bytes * 8);
  source.biCompression = alpha ? MakeFourCC('A', 'Y', 'U', 'V') : MakeFourCC('Y', 'U', 'Y', '2');
  const std::vector<uint8_t> picture =
      test::PatternBytes(static_cast<size_t>(width * height * bytes), seed, width * bytes);
  void* instance = VTC_CompressFieldBegin(&source, fourcc);
  std::vector<uint8_t> stream(static_cast<size_t>(width * height * 8 + 4096));
  const int64_t used = VTC_CompressFrame(instance, stream.data(), picture.data(), width * bytes);
  VTC_CompressFieldEnd(instance);
  stream.resize(static_cast<size_t>(used));
  return stream;
}

// The frame decoded by the direct functions into a buffer of `size` bytes
// filled with `fill`, lines `stride` apart, for the output type's layout;
// the planar layouts get their second plane behind the frame's lines.
inline std::vector<uint8_t> DirectDecode(const std::vector<uint8_t>& stream, uint32_t fourcc,
                                         const BITMAPINFOHEADER& output, int32_t width,
                                         int32_t height, int32_t stride, size_t size,
                                         uint8_t fill) {
  BITMAPINFOHEADER header = output;
  header.biWidth = width;
  header.biHeight = height;
  std::vector<uint8_t> picture(size, fill);
  void* instance = VTC_DecompressFieldBegin(&header, fourcc);
  if (IsPlanar(static_cast<uint32_t>(ColorSpaceFromHeader(&header)))) {
    uint8_t* chroma = picture.data() + static_cast<size_t>(std::abs(height) * stride);
    VTC_DecompressFrameEx(instance, picture.data(), chroma, stream.data(), stride);
  } else {
    VTC_DecompressFrame(instance, picture.data(), stream.data(), stride);
  }
  VTC_DecompressFieldEnd(instance);
  return picture;
}

}  // namespace vantaro::testing
