#include "driver/driver_formats.h"

#include "diagnostics/codec_log.h"

namespace vantaro {

int32_t DriverLineBytes(uint32_t colorSpace, int32_t width) {
  return WrapMul(LayoutOf(colorSpace).driverStep, width);
}

int64_t DriverFrameBytes(uint32_t colorSpace, int32_t width, int32_t height) {
  const LayoutFacts& facts = LayoutOf(colorSpace);
  if (facts.pixelBytes == 0) return -1;
  if (facts.second != SecondPlane::kChroma) {
    return static_cast<int64_t>(width) * height * PackedFrameBytesPerPixel(facts);
  }
  const int64_t line = DriverLineBytes(colorSpace, width);
  // Every field has ceil(height / 32) macroblock rows. The second field's
  // plane starts one line in, and the main plane's last line may be read
  // one line long past its end by the two-byte layouts: one line more each.
  const int64_t rows = (static_cast<int64_t>(height) + 31) / 32;
  return line * (height + SecondLinesPerFieldRow(facts) * rows + 2);
}

bool CompressSourceSuits(uint32_t chromaFamily, uint32_t colorSpace) {
  if (colorSpace == kCsRGB24) return true;
  return LayoutOf(colorSpace).hasAlpha == ((chromaFamily & 1) != 0);
}

bool DecompressOutputSuits(uint32_t chromaFamily, uint32_t colorSpace) {
  if (colorSpace == kCsRGB32) return true;
  return LayoutOf(colorSpace).hasAlpha == ((chromaFamily & 1) != 0);
}

void LogAlphaRefusal(const char* label, uint32_t chromaFamily) {
  switch (chromaFamily) {
    case 0: CodecLog(label, "4:2:0 codec doesn't support alpha channel"); break;
    case 1: CodecLog(label, "4:2:0:4 codec requires alpha channel"); break;
    case 2: CodecLog(label, "4:2:2 codec doesn't support alpha channel"); break;
    case 3: CodecLog(label, "4:2:2:4 codec requires alpha channel"); break;
    case 4: CodecLog(label, "4:4:4 codec doesn't support alpha channel"); break;
    case 5: CodecLog(label, "4:4:4:4 codec requires alpha channel"); break;
    default: break;
  }
}

}  // namespace vantaro
