#include "driver/driver_formats.h"

#include "diagnostics/codec_log.h"

namespace vantaro {
namespace {

// How far the second plane of a planar layout reaches, in driver lines, per
// macroblock row of a field. The walks find a row's second-plane lines from
// the field stride: half of it for NV12 and YA22, a quarter for YA20, the
// whole for NV16 and YA44, twice for NV24, sixteen lines a row. With the
// driver's field stride of two lines that gives these counts.
int32_t SecondPlaneLinesPerRow(uint32_t colorSpace) {
  switch (colorSpace) {
    case kCsNV12: return 16;
    case kCsNV16: return 32;
    case kCsNV24: return 64;
    case kCsYA20: return 8;
    case kCsYA22: return 16;
    case kCsYA44: return 32;
    default: return 0;
  }
}

}  // namespace

int32_t DriverLineBytes(uint32_t colorSpace, int32_t width) {
  return Wrap32(ColorSpaceStep[colorSpace < kColorSpaceCount ? colorSpace : kCsInvalid], width);
}

int64_t DriverFrameBytes(uint32_t colorSpace, int32_t width, int32_t height) {
  const int64_t pixels = static_cast<int64_t>(width) * height;
  switch (colorSpace) {
    case kCsYUY2: case kCsUYVY: return pixels * 2;
    case kCsUYVA: case kCsRGB24: return pixels * 3;
    case kCsAYUV: case kCsRGB32: return pixels * 4;
    case kCsNV12: case kCsNV16: case kCsNV24: case kCsYA20: case kCsYA22: case kCsYA44: {
      const int64_t line = DriverLineBytes(colorSpace, width);
      // Every field has ceil(height / 32) macroblock rows. The second field's
      // plane starts one line in, and the main plane's last line may be read
      // one line long past its end by the two-byte layouts: one line more each.
      const int64_t rows = (static_cast<int64_t>(height) + 31) / 32;
      return line * (height + SecondPlaneLinesPerRow(colorSpace) * rows + 2);
    }
    default: return -1;
  }
}

bool CompressSourceSuits(uint32_t chromaFamily, uint32_t colorSpace) {
  if (colorSpace == kCsRGB24) return true;
  return ColorSpaceHasAlpha[colorSpace] == (chromaFamily & 1);
}

bool DecompressOutputSuits(uint32_t chromaFamily, uint32_t colorSpace) {
  if (colorSpace == kCsRGB32) return true;
  return ColorSpaceHasAlpha[colorSpace] == (chromaFamily & 1);
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
