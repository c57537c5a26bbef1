#include "driver/decompress_handlers.h"

#include <cstring>

#include "codec/field_flow.h"
#include "diagnostics/codec_log.h"
#include "driver/driver_formats.h"

namespace vantaro {
namespace {

bool IsUpperStreamFourCC(uint32_t fourcc) { return StreamFourCCLabel(fourcc) != nullptr; }

// The checks that need an output format. The label is misspelt on these
// call sites and right on the later ones: both are what debuggers grep for.
int64_t QueryOutput(CodecInstance* instance, const BITMAPINFOHEADER* stream,
                    const BITMAPINFOHEADER* output, const char* streamName) {
  const uint32_t colorSpace = static_cast<uint32_t>(ColorSpaceFromHeader(output));
  CodecLog("DeompressQuery", "Input %s -> %s", streamName, LayoutOf(colorSpace).name);
  const int32_t height = WrapAbs(output->biHeight);
  if (stream->biWidth != output->biWidth || WrapAbs(stream->biHeight) != height) {
    CodecLog("DeompressQuery", "Bad Height / Width");
    return kIcErrBadFormat;
  }
  if (colorSpace == kCsInvalid) {
    CodecLog("DeompressQuery", "csInvalid %x", output->biCompression);
    return kIcErrBadFormat;
  }
  // Whole bytes a pixel: the 12-bit layouts get away with one byte a pixel.
  // The product is the 32-bit one and is compared unsigned, so a negative
  // width needs more than any buffer holds.
  const uint32_t need = static_cast<uint32_t>(
      WrapMul(WrapMul(LayoutOf(colorSpace).bitCount / 8, height), output->biWidth));
  if (output->biSizeImage < need) {
    CodecLog("DecompressQuery", "Buffer size too small.");
    return kIcErrBadSize;
  }
  // Unlike the compress side a zero height counts as top-down here, and the
  // flag stays set if the alpha rule refuses below.
  instance->topDown = output->biHeight <= 0 ? 1 : 0;
  if (!DecompressOutputSuits(instance->chromaFamily, colorSpace)) {
    LogAlphaRefusal("DecompressQuery", instance->chromaFamily);
    return kIcErrBadFormat;
  }
  return kIcErrOk;
}

// The output extent the frame will fill, when the host declared one.
bool OutputLargeEnough(const CodecInstance& instance, uint32_t colorSpace,
                       const BITMAPINFOHEADER* output) {
  if (output->biSizeImage == 0) return true;
  return DriverFrameBytes(colorSpace, instance.width, instance.height) <=
         static_cast<int64_t>(output->biSizeImage);
}

// Both fields, the mirror of the compress side: bottom-up RGB from the last
// line upward, everything else downward with the second plane directly
// behind the first.
void DecompressBothFields(CodecInstance* instance, const ICDECOMPRESS& frame, uint32_t colorSpace,
                          const DecodeExtent& extent) {
  const int32_t line = DriverLineBytes(colorSpace, instance->width);
  const bool rgb = colorSpace == kCsRGB24 || colorSpace == kCsRGB32;
  const auto* input = static_cast<const uint8_t*>(frame.lpInput);
  auto* output = static_cast<uint8_t*>(frame.lpOutput);
  if (instance->topDown == 0 && rgb) {
    uint8_t* top = output + (static_cast<int64_t>(instance->height) - 1) * line;
    DecompressField(instance, top, nullptr, input, -2 * line, 0, extent);
    DecompressField(instance, top - line, nullptr, input, -2 * line, 1, extent);
    return;
  }
  instance->frameBase = output;
  // The plane follows the picture's lines whatever the output's orientation,
  // so a top-down planar output keeps its second plane inside the buffer.
  uint8_t* chroma = DriverSecondPlane(colorSpace, output, instance->width, instance->height);
  DecompressField(instance, output, chroma, input, 2 * line, 0, extent);
  DecompressField(instance, output + line, chroma != nullptr ? chroma + line : nullptr, input,
                  2 * line, 1, extent);
}

}  // namespace

int64_t DecompressQuery(CodecInstance* instance, const BITMAPINFOHEADER* stream,
                        const BITMAPINFOHEADER* output) {
  const char* name = StreamFourCCLabel(stream->biCompression);
  if (output != nullptr) {
    const int64_t result = QueryOutput(instance, stream, output, name != nullptr ? name : "Unknown");
    if (result != kIcErrOk) return result;
  } else if (name != nullptr) {
    CodecLog("DeompressQuery", "Input %s", name);
  } else {
    CodecLog("DeompressQuery", "Input Unknown %x", stream->biCompression);
  }
  // Only the upper-case FourCCs name a stream here, though an open accepts
  // either case as its handler.
  return IsUpperStreamFourCC(stream->biCompression) ? kIcErrOk : kIcErrBadFormat;
}

int64_t DecompressGetFormat(const BITMAPINFOHEADER* stream, BITMAPINFOHEADER* output) {
  if (output == nullptr) return sizeof(BITMAPINFOHEADER);
  if (!IsUpperStreamFourCC(stream->biCompression)) return kIcErrBadFormat;
  // 32-bit bottom-up RGB: the one output every family accepts.
  const int32_t height = WrapAbs(stream->biHeight);
  std::memmove(output, stream, sizeof(BITMAPINFOHEADER));
  output->biSize = sizeof(BITMAPINFOHEADER);
  output->biSizeImage = static_cast<uint32_t>(WrapMul(WrapMul(height, stream->biWidth), 4));
  output->biWidth = stream->biWidth;
  output->biBitCount = 32;
  output->biPlanes = 1;
  output->biHeight = height;
  output->biClrUsed = 0;
  output->biClrImportant = 0;
  output->biCompression = kBiRgb;
  return kIcErrOk;
}

int64_t DecompressMessage(CodecInstance* instance, const ICDECOMPRESS& frame) {
  if (frame.lpbiInput == nullptr || frame.lpbiOutput == nullptr || frame.lpOutput == nullptr) {
    return kIcErrBadFormat;
  }
  const uint32_t colorSpace = static_cast<uint32_t>(ColorSpaceFromHeader(frame.lpbiOutput));
  const auto* input = static_cast<const uint8_t*>(frame.lpInput);
  const uint8_t first = input != nullptr ? input[0] : 0;
  // Size and layout follow every frame's headers and stay written even
  // when the frame is refused.
  instance->width = frame.lpbiInput->biWidth;
  instance->height = WrapAbs(frame.lpbiInput->biHeight);
  instance->colorSpace = colorSpace;
  // The quality byte is the only part of the stream judged before decoding.
  if (colorSpace == kCsInvalid || first < 1 || first > 99) return kIcErrBadFormat;
  if (!OutputLargeEnough(*instance, colorSpace, frame.lpbiOutput)) return kIcErrBadFormat;
  DecodeExtent extent;
  extent.streamSize = frame.lpbiInput->biSizeImage;
  DecompressBothFields(instance, frame, colorSpace, extent);
  return kIcErrOk;
}

}  // namespace vantaro
