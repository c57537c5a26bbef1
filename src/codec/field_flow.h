// The drivers between the front doors and the slice walks: a frame is two
// fields, a field is four slices, and each slice picks its walk once.
#pragma once

#include <cstddef>
#include <cstdint>

#include "codec/bit_stream.h"
#include "codec/codec_instance.h"
#include "codec/kernels.h"
#include "codec/status.h"

namespace vantaro {

constexpr size_t kUnknownSize = SIZE_MAX;

// Writes one slice at the writer's byte-aligned position: its 24-bit length,
// its macroblocks, then alignment to the next byte. Its bytes depend on
// nothing written before it, so slices may be written apart and joined.
// kDoesNotFit when the writer's capacity is reached.
Status EncodeSlice(const CodecInstance& instance, const Kernels& kernels, BitWriter& writer,
                   const uint8_t* picture, const uint8_t* chroma, int32_t stride, uint32_t slice);

// Writes one field. `stream` is the frame's start for both fields; field 0
// writes the header, any other value reads the second-field offset the first
// field left there. `capacity` is the writable size of `stream` (kUnknownSize
// when the caller gave none). On kOk, `size` gets the bytes in use up to
// here, plus 4. kDoesNotFit when the stream would not fit `capacity` (nothing
// is written past it), kNoSecondPlane when a planar layout has none.
Status CompressField(CodecInstance* instance, uint8_t* stream, size_t capacity,
                     const uint8_t* picture, const uint8_t* chroma, int32_t stride, uint32_t field,
                     int64_t* size);

// Writes both fields of the frame at `picture`, `stride` being the frame's
// line distance. Sets `frameBase`.
Status CompressFrame(CodecInstance* instance, uint8_t* stream, size_t capacity,
                     const uint8_t* picture, const uint8_t* chroma, int32_t stride, int64_t* size);

// What the decoder may read and what the fault capture may copy. A zero
// `streamSize` means the caller gave no length: the frame's own declared
// extent (second-field offset and slice lengths) bounds every read then.
struct DecodeExtent {
  size_t streamSize = 0;
  size_t pictureReadable = 0;  // bytes readable from the field's `picture`; 0 if unknown
  // Where set, a fault is not captured: the slice's bit (4 * field + slice)
  // is set here and the walk goes on with the next slice.
  uint32_t* damage = nullptr;
  // The field's slices to decode (bit s for slice s); the rest are skipped.
  uint32_t slices = 0xF;
};

// Reads one field from the frame at `stream`. Always answers 0. A decoding
// fault ends this field's work, is captured once (VTQ_Crash_Input/Output)
// and leaves what was already stored in the picture.
int64_t DecompressField(CodecInstance* instance, uint8_t* picture, uint8_t* chroma,
                        const uint8_t* stream, int32_t stride, uint32_t field,
                        const DecodeExtent& extent = {});

// Reads both fields; sets `frameBase`. Always answers 0.
int64_t DecompressFrame(CodecInstance* instance, uint8_t* picture, uint8_t* chroma,
                        const uint8_t* stream, int32_t stride, size_t streamSize = 0);

}  // namespace vantaro
