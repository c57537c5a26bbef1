// The native encoder and decoder handles over the one codec instance and
// field drivers the direct functions use. The walks read and write the
// caller's planes directly. A frame's eight slices (two fields of four) are
// independent tasks, run on the handle's slice pool; everything a frame
// needs is allocated at create.
#pragma once

#include <cstddef>
#include <cstdint>

#include "codec/field_flow.h"
#include "codec/slice_layout.h"
#include "native/native_common.h"
#include "native/slice_pool.h"

namespace vantaro::native {

constexpr uint32_t kFrameSlices = 2 * kSlicesPerField;
constexpr uint32_t kMaxThreads = 8;
// The writer keeps four bytes of room behind what it has written.
constexpr size_t kSpillBytes = 4;
// A field's bytes must fit the header's 24-bit second-field offset and
// slice lengths.
constexpr size_t kFieldLimit = (size_t{1} << 24) - 1;

// What both handles hold: the instance at the coded size, and the pool.
struct HandleState {
  CodecInstance* instance = nullptr;
  VariantFacts variant{};
  vantaro_options options{};
  int32_t width = 0, height = 0, codedWidth = 0, codedHeight = 0;
  SlicePool pool;
};

// Checks the arguments, makes the instance and starts the pool.
vantaro_status Prepare(HandleState* h, uint32_t fourcc, int32_t width, int32_t height,
                       const vantaro_options* options);
// The instance for a variant at the coded size; the layout is set per call.
CodecInstance* NewInstance(const VariantFacts& v, int32_t codedWidth, int32_t codedHeight);

// What the field drivers take for each field of a picture: a plane set's
// PlaneField in place of `picture`, or the direct layouts' own pointers.
template <class Byte>
struct FieldSource {
  PlaneField<Byte> planes[2];
  Byte* picture[2];
  Byte* chroma[2];
  int32_t stride;  // the field's line distance

  explicit FieldSource(const vantaro_picture& p) {
    const FormatFacts f = FactsOf(p.format);
    if (f.planeSet) {
      for (int32_t field = 0; field < 2; ++field) {
        planes[field] = FieldOf<Byte>(p, field);
        picture[field] = reinterpret_cast<Byte*>(&planes[field]);
        chroma[field] = nullptr;
      }
      stride = 0;
      return;
    }
    const int32_t s = p.strides[0];
    const bool second = IsPlanar(f.layout);
    picture[0] = p.planes[0];
    picture[1] = p.planes[0] + s;
    chroma[0] = second ? p.planes[1] : nullptr;
    chroma[1] = second ? p.planes[1] + SecondFieldOffset(LayoutOf(f.layout), s) : nullptr;
    stride = 2 * s;
  }
};

}  // namespace vantaro::native

struct vantaro_encoder : vantaro::native::HandleState {
  uint8_t* regions = nullptr;  // one region per slice, back to back
  size_t regionStart[vantaro::native::kFrameSlices] = {};
  size_t regionCapacity[vantaro::native::kFrameSlices] = {};
  // One frame's work, read by the slice tasks.
  const vantaro::native::FieldSource<const uint8_t>* source = nullptr;
  const vantaro::Kernels* kernels = nullptr;
  vantaro::Status sliceStatus[vantaro::native::kFrameSlices] = {};
  size_t sliceBytes[vantaro::native::kFrameSlices] = {};
};

struct vantaro_decoder : vantaro::native::HandleState {
  // Instance of each pool thread ([0] is `instance`): a field sets its
  // instance's quality tables from the frame.
  vantaro::CodecInstance* threadInstance[vantaro::native::kMaxThreads] = {};
  // One frame's work, read by the slice tasks.
  const vantaro::native::FieldSource<uint8_t>* target = nullptr;
  const uint8_t* frame = nullptr;
  size_t frameBytes = 0;
  uint32_t sliceDamage[vantaro::native::kFrameSlices] = {};
};
