// Shared pieces of the native door: the public formats' layouts and plane
// geometry, the argument checks and the handles' kernel scope.
#pragma once

#include <cstddef>
#include <cstdint>

#include "codec/codec_instance.h"
#include "codec/kernels.h"
#include "codec/layout_traits.h"
#include "vantaro/vantaro.h"

namespace vantaro::native {

// The layout behind a public format: a plane set or one of the colour
// spaces of the direct functions.
struct FormatFacts {
  bool known;
  bool planeSet;    // one of the six YUV(A) planar formats
  uint32_t layout;  // row of kLayouts
};
FormatFacts FactsOf(vantaro_format format);

// The stream variant behind a FourCC; false for an unknown one.
struct VariantFacts {
  uint32_t fourcc;  // upper case
  uint8_t sx, sy;   // the stream's chroma shifts
  bool alpha;
};
bool VariantOf(uint32_t fourcc, VariantFacts* facts);
// Bits one macroblock of the variant can take at most, from the longest codes.
uint64_t MacroblockBoundBits(const VariantFacts& v);

// One plane of a format at a size: bytes a line holds, the stride of a
// tightly packed picture, and its lines (0: the format has no such plane).
struct PlaneGeometry {
  int64_t lineBytes;
  int64_t stride;
  int64_t lines;
};
PlaneGeometry GeometryOf(vantaro_format format, int32_t width, int32_t height, int plane);

vantaro_status CheckSize(int32_t width, int32_t height);
vantaro_status ReadOptions(const vantaro_options* options, vantaro_options* out);
// Null pointers, the size, every used plane present with a stride that holds
// its line, and the direct layouts' own stride rules.
vantaro_status CheckPicture(const vantaro_picture* picture, int32_t width, int32_t height);
// Whether the picture's layout can feed the variant (encode) at this size.
vantaro_status CheckFeeds(const vantaro_picture& picture, const VariantFacts& variant);
// Whether a direct layout can take a frame of this size (decode).
vantaro_status CheckWholeMacroblocks(const vantaro_picture& picture);

// Field 0 or 1 of a plane-set picture as the plane-set walks take it.
template <class Byte>
PlaneField<Byte> FieldOf(const vantaro_picture& picture, int32_t field) {
  const LayoutFacts& f = LayoutOf(FactsOf(picture.format).layout);
  PlaneField<Byte> out{};
  for (int p = 0; p < 4; ++p) {
    out.planes[p] = picture.planes[p];
    out.strides[p] = picture.strides[p];
  }
  if (!f.hasAlpha) out.planes[3] = nullptr;
  out.width = picture.width;
  out.height = picture.height;
  out.chromaWidth = (picture.width + f.chromaShiftX) >> f.chromaShiftX;
  out.chromaHeight = (picture.height + f.chromaShiftY) >> f.chromaShiftY;
  out.field = field;
  return out;
}

// Every line of the slices named in `damage` (bit 4 * field + slice) to
// mid-grey, alpha included; for the plane sets.
void GreyDamagedSlices(const vantaro_picture& picture, int32_t codedHeight, uint32_t damage);

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

}  // namespace vantaro::native
