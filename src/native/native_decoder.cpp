// The native decoder: the frame header checked whole first, then the eight
// slices decoded side by side on the pool, each pool thread with an
// instance of its own, each slice reporting its own damage.
#include <bit>
#include <cstring>
#include <new>

#include "native/native_handles.h"

using namespace vantaro;
using namespace vantaro::native;

namespace {

void DecodeSliceTask(void* context, uint32_t task, uint32_t thread) {
  auto& d = *static_cast<vantaro_decoder*>(context);
  const uint32_t field = task / kSlicesPerField;
  d.sliceDamage[task] = 0;
  DecodeExtent extent{d.frameBytes, 0, &d.sliceDamage[task]};
  extent.slices = 1u << (task % kSlicesPerField);
  (void)DecompressField(d.threadInstance[thread], d.target->picture[field], d.target->chroma[field],
                        d.frame, d.target->stride, field, extent);
}

}  // namespace

extern "C" {

VTC_API vantaro_status vantaro_decoder_create(uint32_t fourcc, int32_t width, int32_t height,
                                              const vantaro_options* options,
                                              vantaro_decoder** decoder) {
  if (decoder == nullptr) return VANTARO_ERROR_INVALID_ARGUMENT;
  *decoder = nullptr;
  auto* d = new (std::nothrow) vantaro_decoder;
  if (d == nullptr) return VANTARO_ERROR_OUT_OF_MEMORY;
  vantaro_status s = Prepare(d, fourcc, width, height, options);
  if (s == VANTARO_OK) {
    d->threadInstance[0] = d->instance;
    for (uint32_t t = 1; t < d->pool.Threads(); ++t) {
      d->threadInstance[t] = NewInstance(d->variant, d->codedWidth, d->codedHeight);
      if (d->threadInstance[t] == nullptr) s = VANTARO_ERROR_OUT_OF_MEMORY;
    }
  }
  if (s != VANTARO_OK) {
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
  const FieldSource<uint8_t> target(*picture);
  for (uint32_t t = 0; t < decoder->pool.Threads(); ++t) {
    decoder->threadInstance[t]->colorSpace = FactsOf(picture->format).layout;
    decoder->threadInstance[t]->frameBase = picture->planes[0];
  }
  decoder->target = &target;
  decoder->frame = frame;
  decoder->frameBytes = info.frame_bytes;
  decoder->pool.Run(DecodeSliceTask, decoder, kFrameSlices);
  decoder->target = nullptr;
  uint32_t damage = 0;
  for (const uint32_t d : decoder->sliceDamage) damage |= d;
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
  for (uint32_t t = 1; t < vantaro::native::kMaxThreads; ++t) DestroyInstance(decoder->threadInstance[t]);
  DestroyInstance(decoder->instance);
  delete decoder;
}

}  // extern "C"
