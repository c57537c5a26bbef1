// What the compress and decompress handlers share: the driver's picture
// layout (line length, frame extent, where the second plane lies) and the
// alpha rules of the chroma families.
#pragma once

#include <cstdint>

#include "codec/codec_instance.h"
#include "codec/wrapping.h"

namespace vantaro {

// Bytes of one line of the uncompressed side: the layout's driverStep times
// width.
int32_t DriverLineBytes(uint32_t colorSpace, int32_t width);

// The bytes a whole uncompressed frame spans in the driver's layout, which is
// also the least source the compressor accepts. Packed layouts: their natural
// size (the csUYVA alpha plane, one byte a pixel, included). Planar layouts:
// `height` lines of DriverLineBytes, then the second plane directly behind,
// as far as the walks reach into it for this height. -1 where the layout has
// no walks (Invalid, csYV12).
int64_t DriverFrameBytes(uint32_t colorSpace, int32_t width, int32_t height);

// The second plane of a planar frame at `picture`, null for the other
// layouts, which have none.
template <typename Byte>
Byte* DriverSecondPlane(uint32_t colorSpace, Byte* picture, int32_t width, int32_t height) {
  if (!IsPlanar(colorSpace)) return nullptr;
  const int64_t offset = static_cast<int64_t>(height) * DriverLineBytes(colorSpace, width);
  return offset > 0 ? picture + offset : nullptr;
}

// The two alpha rules. Compressing, csRGB24 suits every family (an alpha
// stream fed from it simply has no alpha); decompressing, csRGB32 does. The
// tables are mirror images on purpose.
bool CompressSourceSuits(uint32_t chromaFamily, uint32_t colorSpace);
bool DecompressOutputSuits(uint32_t chromaFamily, uint32_t colorSpace);

// Logs, under `label`, the line a refusal by the alpha rules gives for the
// family: "4:2:2 codec doesn't support alpha channel" and its kin.
void LogAlphaRefusal(const char* label, uint32_t chromaFamily);

}  // namespace vantaro
