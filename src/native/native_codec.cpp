// The native encoder and decoder handles over the one codec instance and
// field drivers the direct functions use. The walks read and write the
// caller's planes directly; the encoder owns a stream buffer of the frame
// bound, allocated once at create.
#include <algorithm>
#include <bit>
#include <cstring>
#include <new>

#include "codec/allocation.h"
#include "codec/field_flow.h"
#include "codec/quantiser.h"
#include "native/native_common.h"

using namespace vantaro;
using namespace vantaro::native;

namespace vantaro::native {

// What both handles hold: the instance at the coded size.
struct HandleState {
  CodecInstance* instance = nullptr;
  VariantFacts variant{};
  vantaro_options options{};
  int32_t width = 0, height = 0, codedWidth = 0, codedHeight = 0;
};

}  // namespace vantaro::native

struct vantaro_encoder : vantaro::native::HandleState {
  uint8_t* stream = nullptr;  // the frame bound plus the writer's spill room
  size_t streamCapacity = 0;
};

struct vantaro_decoder : vantaro::native::HandleState {};

namespace {

// The writer keeps four bytes of room behind what it has written.
constexpr size_t kSpillBytes = 4;
// A field's bytes must fit the header's 24-bit second-field offset and
// slice lengths.
constexpr size_t kFieldLimit = (size_t{1} << 24) - 1;

// The instance for a variant at the coded size; the layout is set per call.
CodecInstance* NewInstance(const VariantFacts& v, int32_t codedWidth, int32_t codedHeight) {
  CodecInstance* instance = CreateInstance();
  if (instance == nullptr) return nullptr;
  SetStreamFormat(instance, v.fourcc);
  instance->width = codedWidth;
  instance->height = codedHeight;
  return instance;
}

// What the field drivers take for one field of a picture: a plane set's
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

vantaro_status Prepare(HandleState* h, uint32_t fourcc, int32_t width, int32_t height,
                       const vantaro_options* options) {
  if (!VariantOf(fourcc, &h->variant)) return VANTARO_ERROR_UNKNOWN_FOURCC;
  if (const vantaro_status s = CheckSize(width, height); s != VANTARO_OK) return s;
  if (const vantaro_status s = ReadOptions(options, &h->options); s != VANTARO_OK) return s;
  h->width = width;
  h->height = height;
  (void)vantaro_coded_size(width, height, &h->codedWidth, &h->codedHeight);
  h->instance = NewInstance(h->variant, h->codedWidth, h->codedHeight);
  if (h->instance == nullptr) return VANTARO_ERROR_OUT_OF_MEMORY;
  return VANTARO_OK;
}

// Both fields into the handle's stream buffer, each held under the 24-bit
// limit by the capacity its writer is given.
vantaro_status EncodeFields(vantaro_encoder* e, const vantaro_picture& picture, size_t* length) {
  CodecInstance* instance = e->instance;
  const FieldSource<const uint8_t> source(picture);
  instance->colorSpace = FactsOf(picture.format).layout;
  instance->frameBase = picture.planes[0];
  int64_t size = 0;
  const size_t first = std::min(e->streamCapacity, kFieldLimit + kSpillBytes);
  Status s = CompressField(instance, e->stream, first, source.picture[0], source.chroma[0],
                           source.stride, 0, &size);
  if (s == Status::kOk) {
    const size_t offset = static_cast<size_t>(size) - kSpillBytes;
    const size_t second = std::min(e->streamCapacity, offset + kFieldLimit + kSpillBytes);
    s = CompressField(instance, e->stream, second, source.picture[1], source.chroma[1],
                      source.stride, 1, &size);
  }
  if (s == Status::kDoesNotFit) {
    // The stream buffer holds the frame bound: only the 24-bit limit stops a frame.
    return e->streamCapacity > kFieldLimit ? VANTARO_ERROR_FRAME_TOO_LARGE : VANTARO_ERROR_INTERNAL;
  }
  if (s != Status::kOk) return VANTARO_ERROR_INTERNAL;
  *length = static_cast<size_t>(size) - kSpillBytes;
  return VANTARO_OK;
}

}  // namespace

extern "C" {

VTC_API vantaro_status vantaro_encoder_create(uint32_t fourcc, int32_t width, int32_t height,
                                              int32_t quality, const vantaro_options* options,
                                              vantaro_encoder** encoder) {
  if (encoder == nullptr) return VANTARO_ERROR_INVALID_ARGUMENT;
  *encoder = nullptr;
  auto* e = new (std::nothrow) vantaro_encoder;
  if (e == nullptr) return VANTARO_ERROR_OUT_OF_MEMORY;
  vantaro_status s = Prepare(e, fourcc, width, height, options);
  if (s == VANTARO_OK && (quality < 1 || quality > 99)) s = VANTARO_ERROR_BAD_QUALITY;
  if (s == VANTARO_OK) {
    e->streamCapacity = vantaro_frame_bound(fourcc, width, height) + kSpillBytes;
    e->stream = static_cast<uint8_t*>(AllocateAligned(e->streamCapacity));
    if (e->stream == nullptr) s = VANTARO_ERROR_OUT_OF_MEMORY;
  }
  if (s != VANTARO_OK) {
    vantaro_encoder_destroy(e);
    return s;
  }
  SetQuality(e->instance, quality);
  *encoder = e;
  return VANTARO_OK;
}

VTC_API vantaro_status vantaro_encode(vantaro_encoder* encoder, const vantaro_picture* picture,
                                      uint8_t* dst, size_t capacity, size_t* written) {
  if (encoder == nullptr || dst == nullptr || written == nullptr) return VANTARO_ERROR_INVALID_ARGUMENT;
  *written = 0;
  if (const vantaro_status s = CheckPicture(picture, encoder->width, encoder->height);
      s != VANTARO_OK) {
    return s;
  }
  if (const vantaro_status s = CheckFeeds(*picture, encoder->variant); s != VANTARO_OK) return s;
  const KernelScope kernels(encoder->options.kernels);
  size_t length = 0;
  if (const vantaro_status s = EncodeFields(encoder, *picture, &length); s != VANTARO_OK) return s;
  *written = length;
  if (length > capacity) return VANTARO_ERROR_BUFFER_TOO_SMALL;
  std::memcpy(dst, encoder->stream, length);
  return VANTARO_OK;
}

VTC_API void vantaro_encoder_destroy(vantaro_encoder* encoder) {
  if (encoder == nullptr) return;
  DestroyInstance(encoder->instance);
  FreeAligned(encoder->stream);
  delete encoder;
}

VTC_API vantaro_status vantaro_decoder_create(uint32_t fourcc, int32_t width, int32_t height,
                                              const vantaro_options* options,
                                              vantaro_decoder** decoder) {
  if (decoder == nullptr) return VANTARO_ERROR_INVALID_ARGUMENT;
  *decoder = nullptr;
  auto* d = new (std::nothrow) vantaro_decoder;
  if (d == nullptr) return VANTARO_ERROR_OUT_OF_MEMORY;
  if (const vantaro_status s = Prepare(d, fourcc, width, height, options); s != VANTARO_OK) {
    vantaro_decoder_destroy(d);
    return s;
  }
  *decoder = d;
  return VANTARO_OK;
}

VTC_API vantaro_status vantaro_decode(vantaro_decoder* decoder, const uint8_t* frame,
                                      size_t length, const vantaro_picture* picture,
                                      vantaro_decode_report* report) {
  if (decoder == nullptr || frame == nullptr) return VANTARO_ERROR_INVALID_ARGUMENT;
  if (report != nullptr) std::memset(report, 0, sizeof *report);
  if (const vantaro_status s = CheckPicture(picture, decoder->width, decoder->height);
      s != VANTARO_OK) {
    return s;
  }
  vantaro_frame_info info;
  if (const vantaro_status s = vantaro_frame_inspect(frame, length, &info); s != VANTARO_OK) {
    return s;
  }
  if (const vantaro_status s = CheckWholeMacroblocks(*picture); s != VANTARO_OK) return s;
  const KernelScope kernels(decoder->options.kernels);
  CodecInstance* instance = decoder->instance;
  const FieldSource<uint8_t> target(*picture);
  instance->colorSpace = FactsOf(picture->format).layout;
  instance->frameBase = picture->planes[0];
  uint32_t damage = 0;
  const DecodeExtent extent{info.frame_bytes, 0, &damage};
  for (uint32_t field = 0; field < 2; ++field) {
    (void)DecompressField(instance, target.picture[field], target.chroma[field], frame,
                          target.stride, field, extent);
  }
  if (damage != 0 && FactsOf(picture->format).planeSet) {
    GreyDamagedSlices(*picture, decoder->codedHeight, damage);
  }
  if (report != nullptr) {
    report->damaged_slices = damage;
    report->damaged_count = static_cast<uint32_t>(std::popcount(damage));
    report->quality = info.quality;
    report->frame_bytes = info.frame_bytes;
  }
  return damage != 0 ? VANTARO_ERROR_DAMAGED : VANTARO_OK;
}

VTC_API void vantaro_decoder_destroy(vantaro_decoder* decoder) {
  if (decoder == nullptr) return;
  DestroyInstance(decoder->instance);
  delete decoder;
}

}  // extern "C"
