// The native encoder: each slice written into a region of its own, side by
// side on the pool, then joined behind the frame header with one copy into
// the caller's buffer.
#include <algorithm>
#include <cstring>
#include <new>
#include <thread>

#include "codec/allocation.h"
#include "codec/quantiser.h"
#include "native/native_handles.h"

using namespace vantaro;
using namespace vantaro::native;

namespace vantaro::native {

CodecInstance* NewInstance(const VariantFacts& v, int32_t codedWidth, int32_t codedHeight) {
  CodecInstance* instance = CreateInstance();
  if (instance == nullptr) return nullptr;
  SetStreamFormat(instance, v.fourcc);
  instance->width = codedWidth;
  instance->height = codedHeight;
  return instance;
}

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
  uint32_t threads = static_cast<uint32_t>(h->options.threads);
  if (threads == 0) threads = std::max<uint32_t>(1, static_cast<uint32_t>(std::thread::hardware_concurrency()));
  if (!h->pool.Start(std::min(threads, kMaxThreads))) return VANTARO_ERROR_OUT_OF_MEMORY;
  return VANTARO_OK;
}

}  // namespace vantaro::native

namespace {

// Bytes slice `slice` of a field can take at worst: its rows' macroblocks at
// their longest codes, its length field, alignment and the writer's reach;
// held to what a field's 24-bit limit lets through.
size_t SliceCapacity(const vantaro_encoder& e, uint32_t slice) {
  const SliceRows rows = SliceRowsFor(e.codedHeight, slice);
  const uint64_t macroblocks =
      static_cast<uint64_t>(rows.fullRows + (rows.hasPartialRow ? 1 : 0)) * (e.codedWidth / 16);
  const uint64_t bytes = (macroblocks * MacroblockBoundBits(e.variant) + 7) / 8 + 4 + kSpillBytes;
  return static_cast<size_t>(std::min<uint64_t>(bytes, kFieldLimit + kSpillBytes));
}

void EncodeSliceTask(void* context, uint32_t task, uint32_t) {
  auto& e = *static_cast<vantaro_encoder*>(context);
  const uint32_t field = task / kSlicesPerField;
  BitWriter writer{e.regions + e.regionStart[task], 0, 0, e.regionCapacity[task]};
  e.sliceStatus[task] = EncodeSlice(*e.instance, *e.kernels, writer, e.source->picture[field],
                                    e.source->chroma[field], e.source->stride, task % kSlicesPerField);
  e.sliceBytes[task] = writer.bitPos >> 3;
}

void PutU24(uint8_t* p, size_t value) {
  p[0] = static_cast<uint8_t>(value);
  p[1] = static_cast<uint8_t>(value >> 8);
  p[2] = static_cast<uint8_t>(value >> 16);
}

// The frame: quality byte, the second field's offset, the eight slices.
// Each field must stay within the 24-bit offsets and lengths.
vantaro_status JoinFrame(const vantaro_encoder& e, uint8_t* dst, size_t capacity, size_t* written) {
  size_t fieldBytes[2] = {0, 0};
  for (uint32_t task = 0; task < kFrameSlices; ++task) {
    if (e.sliceStatus[task] == Status::kDoesNotFit) {
      return e.regionCapacity[task] == kFieldLimit + kSpillBytes ? VANTARO_ERROR_FRAME_TOO_LARGE
                                                                 : VANTARO_ERROR_INTERNAL;
    }
    if (e.sliceStatus[task] != Status::kOk) return VANTARO_ERROR_INTERNAL;
    fieldBytes[task / kSlicesPerField] += e.sliceBytes[task];
  }
  const size_t offset = 4 + fieldBytes[0];
  if (offset > kFieldLimit || fieldBytes[1] > kFieldLimit) return VANTARO_ERROR_FRAME_TOO_LARGE;
  *written = offset + fieldBytes[1];
  if (*written > capacity) return VANTARO_ERROR_BUFFER_TOO_SMALL;
  dst[0] = static_cast<uint8_t>(e.instance->quality);
  PutU24(dst + 1, offset);
  uint8_t* at = dst + 4;
  for (uint32_t task = 0; task < kFrameSlices; ++task) {
    std::memcpy(at, e.regions + e.regionStart[task], e.sliceBytes[task]);
    at += e.sliceBytes[task];
  }
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
    size_t total = 0;
    for (uint32_t task = 0; task < kFrameSlices; ++task) {
      e->regionStart[task] = total;
      e->regionCapacity[task] = SliceCapacity(*e, task % kSlicesPerField);
      total += e->regionCapacity[task];
    }
    e->regions = static_cast<uint8_t*>(AllocateAligned(total));
    if (e->regions == nullptr) s = VANTARO_ERROR_OUT_OF_MEMORY;
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
  const FieldSource<const uint8_t> source(*picture);
  encoder->instance->colorSpace = FactsOf(picture->format).layout;
  encoder->instance->frameBase = picture->planes[0];
  encoder->source = &source;
  encoder->kernels = &ActiveKernels();
  encoder->pool.Run(EncodeSliceTask, encoder, kFrameSlices);
  encoder->source = nullptr;
  return JoinFrame(*encoder, dst, capacity, written);
}

VTC_API void vantaro_encoder_destroy(vantaro_encoder* encoder) {
  if (encoder == nullptr) return;
  DestroyInstance(encoder->instance);
  FreeAligned(encoder->regions);
  delete encoder;
}

}  // extern "C"
