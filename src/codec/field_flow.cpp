#include "codec/field_flow.h"

#include <algorithm>

#include "codec/bit_stream.h"
#include "codec/quantiser.h"
#include "codec/slice_layout.h"
#include "codec/slice_walks.h"
#include "diagnostics/fault_capture.h"

namespace vantaro {
namespace {

uint32_t Load24(const uint8_t* p) { return LoadLe32(p) & 0xFFFFFF; }

// The decoder reads the three bytes alone: a length field may end its buffer.
uint32_t Read24(const uint8_t* p) {
  return static_cast<uint32_t>(p[0]) | (static_cast<uint32_t>(p[1]) << 8) |
         (static_cast<uint32_t>(p[2]) << 16);
}

// ORs `value` (below 2^24) into the 24-bit field at `p`; the fourth byte of
// the 32-bit word is left as it is.
void PatchLength(uint8_t* p, uint32_t value) { StoreLe32(p, LoadLe32(p) | value); }

bool SliceHasMacroblocks(const CodecInstance& instance, uint32_t slice) {
  const SliceRows rows = SliceRowsFor(instance.height, slice);
  return instance.width / 16 > 0 && (rows.fullRows > 0 || rows.partialLines > 0);
}

}  // namespace

// The slice steps: length placeholder, the walk, the length, byte alignment.
Status EncodeSlice(const CodecInstance& instance, const Kernels& kernels, BitWriter& writer,
                   const uint8_t* picture, const uint8_t* chroma, int32_t stride, uint32_t slice) {
  const ChromaArm arm = ArmFor(instance.chromaFamily, instance.dctAlpha);
  if (arm == ChromaArm::kNone) return Status::kOk;
  if (!RoomFor(writer, 3)) return Status::kDoesNotFit;
  const uint32_t start = writer.bitPos;
  PutCode(writer, 0, 24);
  const EncodeSliceWalkFn walk =
      FindEncodeSliceWalk(arm, instance.colorSpace, instance.hasAlpha != 0);
  if (walk != nullptr) {
    if (IsPlanar(instance.colorSpace) && chroma == nullptr && SliceHasMacroblocks(instance, slice)) {
      return Status::kNoSecondPlane;
    }
    VANTARO_RETURN_IF_ERROR(walk(instance, kernels, writer, picture, chroma, stride, slice));
  }
  const uint32_t startByte = (start + 7) >> 3;
  PatchLength(writer.buffer + startByte, ((writer.bitPos + 7) >> 3) - startByte);
  SkipToByte(writer);
  return Status::kOk;
}

Status CompressField(CodecInstance* instance, uint8_t* stream, size_t capacity,
                     const uint8_t* picture, const uint8_t* chroma, int32_t stride, uint32_t field,
                     int64_t* size) {
  BitWriter writer{stream, 0, 0, capacity};
  uint32_t offset = 0;
  if (field == 0) {
    if (!RoomFor(writer, 4)) return Status::kDoesNotFit;
    // A whole 32-bit store of the quality word; the 24-bit placeholder then
    // overwrites its high bytes.
    PutCode(writer, instance->quality, 8);
    PutCode(writer, 0, 24);
  } else {
    if (capacity < 4) return Status::kDoesNotFit;
    offset = Load24(stream + 1);
    if (offset > capacity) return Status::kDoesNotFit;  // the offset lies outside the buffer
    writer.buffer = stream + offset;
    writer.capacity = capacity == kUnknownSize ? kUnknownSize : capacity - offset;
  }
  const Kernels& kernels = ActiveKernels();
  for (uint32_t slice = 0; slice < kSlicesPerField; ++slice) {
    VANTARO_RETURN_IF_ERROR(EncodeSlice(*instance, kernels, writer, picture, chroma, stride, slice));
  }
  const uint32_t bytes = (writer.bitPos + 7) >> 3;
  if (field == 0) {
    PatchLength(stream + 1, bytes);
    *size = static_cast<int64_t>(bytes) + 4;
  } else {
    *size = static_cast<int64_t>(static_cast<int32_t>(bytes + offset + 4));
  }
  return Status::kOk;
}

Status CompressFrame(CodecInstance* instance, uint8_t* stream, size_t capacity,
                     const uint8_t* picture, const uint8_t* chroma, int32_t stride,
                     int64_t* size) {
  instance->frameBase = picture;
  VANTARO_RETURN_IF_ERROR(
      CompressField(instance, stream, capacity, picture, chroma, 2 * stride, 0, size));
  const int32_t offset = SecondFieldOffset(LayoutOf(instance->colorSpace), stride);
  return CompressField(instance, stream, capacity, picture + stride,
                       chroma != nullptr ? chroma + offset : nullptr, 2 * stride, 1, size);
}

namespace {

struct FieldPlan {
  size_t sliceStart[kSlicesPerField];  // byte offsets from the frame's start
  const uint8_t* end;                  // readable extent
  int faultAtSlice;                    // first slice whose length field lies outside; 4 if none
};

// Where the four slices of a field start, and how far the decoder may read.
// With a known stream size every length field must lie inside it; without
// one, the field's declared extent is the limit (for the first field also the
// second-field offset, so that a damaged slice reads on as far as the frame
// says it goes).
FieldPlan PlanField(const uint8_t* stream, uint32_t field, size_t streamSize) {
  FieldPlan plan{};
  plan.faultAtSlice = kSlicesPerField;
  const size_t secondField = Read24(stream + 1);
  size_t pos = field == 0 ? 4 : secondField;
  size_t extent = field == 0 ? secondField : 0;
  for (int s = 0; s < kSlicesPerField; ++s) {
    plan.sliceStart[s] = pos;
    if (streamSize != 0 && (pos > streamSize || streamSize - pos < 3)) {
      plan.faultAtSlice = std::min(plan.faultAtSlice, s);
      break;
    }
    const size_t length = Read24(stream + pos);
    extent = std::max(extent, pos + std::max<size_t>(length, 3));
    pos += length;
  }
  plan.end = stream + (streamSize != 0 ? streamSize : extent);
  return plan;
}

void CaptureFault(CodecInstance* instance, uint8_t* picture, const uint8_t* stream, int32_t stride,
                  uint32_t field, const FieldPlan& plan, const DecodeExtent& extent) {
  ExceptCatch(instance, picture, extent.pictureReadable, stream,
              static_cast<size_t>(plan.end - stream), stride, field);
}

// Bytes from the field's first line to the end of its last line, for a
// top-down field of `lines` lines.
size_t FieldReadable(const CodecInstance& instance, int32_t fieldStride, int32_t lines) {
  const int32_t bpp = LayoutOf(instance.colorSpace).pixelBytes;
  if (fieldStride <= 0 || lines <= 0 || bpp == 0 || instance.width <= 0) return 0;
  return static_cast<size_t>(lines - 1) * static_cast<size_t>(fieldStride) +
         static_cast<size_t>(instance.width) * static_cast<size_t>(bpp);
}

}  // namespace

int64_t DecompressField(CodecInstance* instance, uint8_t* picture, uint8_t* chroma,
                        const uint8_t* stream, int32_t stride, uint32_t field,
                        const DecodeExtent& extentIn) {
  DecodeExtent extent = extentIn;
  if (extent.pictureReadable == 0) {
    const int32_t lines = field == 0 ? (instance->height + 1) / 2 : instance->height / 2;
    extent.pictureReadable = FieldReadable(*instance, stride, lines);
  }
  if (stream == nullptr || (extent.streamSize != 0 && extent.streamSize < 4)) {
    const FieldPlan none{{}, stream == nullptr ? nullptr : stream + extent.streamSize, 0};
    CaptureFault(instance, picture, stream, stride, field, none, extent);
    return 0;
  }
  const uint8_t q = stream[0];
  if (q >= 1 && q <= 99) SetQuality(instance, q);

  const FieldPlan plan = PlanField(stream, field, extent.streamSize);
  const ChromaArm arm = ArmFor(instance->chromaFamily, instance->dctAlpha);
  if (arm == ChromaArm::kNone) return 0;
  const Kernels& kernels = ActiveKernels();
  for (uint32_t slice = 0; slice < kSlicesPerField; ++slice) {
    if ((extent.slices >> slice & 1u) == 0) continue;
    if (static_cast<int>(slice) >= plan.faultAtSlice) {
      if (extent.damage != nullptr) {
        *extent.damage |= (0xFu << (4 * (field & 1))) & ~((1u << (4 * (field & 1) + slice)) - 1u);
        return 0;
      }
      CaptureFault(instance, picture, stream, stride, field, plan, extent);
      return 0;
    }
    const DecodeSliceWalkFn walk =
        FindDecodeSliceWalk(arm, instance->colorSpace, instance->hasAlpha != 0);
    if (walk == nullptr) continue;
    if (IsPlanar(instance->colorSpace) && chroma == nullptr &&
        SliceHasMacroblocks(*instance, slice)) {
      CaptureFault(instance, picture, stream, stride, field, plan, extent);
      return 0;
    }
    BitReader reader{24, stream + plan.sliceStart[slice], plan.end};
    if (walk(*instance, kernels, picture, chroma, reader, stride, slice) != Status::kOk) {
      if (extent.damage != nullptr) {
        *extent.damage |= 1u << (4 * (field & 1) + slice);
        continue;
      }
      CaptureFault(instance, picture, stream, stride, field, plan, extent);
      return 0;
    }
  }
  return 0;
}

int64_t DecompressFrame(CodecInstance* instance, uint8_t* picture, uint8_t* chroma,
                        const uint8_t* stream, int32_t stride, size_t streamSize) {
  instance->frameBase = picture;
  DecodeExtent extent{streamSize, FieldReadable(*instance, stride, instance->height)};
  DecompressField(instance, picture, chroma, stream, 2 * stride, 0, extent);
  const int32_t offset = SecondFieldOffset(LayoutOf(instance->colorSpace), stride);
  extent.pictureReadable = FieldReadable(*instance, stride, instance->height - 1);
  DecompressField(instance, picture + stride, chroma != nullptr ? chroma + offset : nullptr, stream,
                  2 * stride, 1, extent);
  return 0;
}

}  // namespace vantaro
