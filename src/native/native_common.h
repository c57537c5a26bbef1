// Shared pieces of the native door: the staging layout each variant is fed
// through, the picture geometry of the public formats and the handles.
#pragma once

#include <cstddef>
#include <cstdint>

#include "codec/codec_instance.h"
#include "codec/kernels.h"
#include "vantaro/vantaro.h"

namespace vantaro::native {

// Chroma shifts and planes of a public format.
struct FormatFacts {
  bool known;
  bool planar;  // one of the six YUV(A) planar formats
  uint8_t sx, sy;
  bool alpha;
};
FormatFacts FactsOf(vantaro_format format);

// The stream variant behind a FourCC; false for an unknown one.
struct VariantFacts {
  uint32_t fourcc;  // upper case
  uint8_t sx, sy;   // the stream's chroma shifts
  bool alpha;
  uint32_t staging;  // ColorSpace the handle's staging picture is laid out in
};
bool VariantOf(uint32_t fourcc, VariantFacts* facts);

// Bytes of the staging picture (lines, then the alpha plane where the
// layout has one) and its line stride, for the coded size.
int32_t StagingStride(uint32_t colorSpace, int32_t codedWidth);
size_t StagingBytes(uint32_t colorSpace, int32_t codedWidth, int32_t codedHeight);

vantaro_status CheckSize(int32_t width, int32_t height);
vantaro_status ReadOptions(const vantaro_options* options, vantaro_options* out);
vantaro_status CheckPicture(const vantaro_picture* picture, int32_t width, int32_t height);

// Runs the handle's calls under its kernel choice, restoring the process's.
class KernelScope {
 public:
  explicit KernelScope(vantaro_kernels kernels);
  ~KernelScope();
  KernelScope(const KernelScope&) = delete;
  KernelScope& operator=(const KernelScope&) = delete;

 private:
  KernelOverride saved_;
  bool changed_;
};

// Picture <-> staging conversion (native_picture.cpp).
void PlanarToStaging(const vantaro_picture& picture, uint32_t colorSpace, uint8_t* staging,
                     int32_t codedWidth, int32_t codedHeight);
void StagingToPlanar(const uint8_t* staging, uint32_t colorSpace, int32_t codedWidth,
                     int32_t codedHeight, const vantaro_picture& picture);

}  // namespace vantaro::native
