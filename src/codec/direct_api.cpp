// The thirteen direct functions: thin shells over the instance and the field
// drivers that own the instance's lifetime and turn statuses into the
// answers the interface has always given.
#include "codec/codec_instance.h"
#include "codec/field_flow.h"
#include "codec/quantiser.h"
#include "platform/debug_output.h"

using vantaro::CodecInstance;
using vantaro::Status;

namespace {

CodecInstance* NewInstance(uint32_t fourcc) {
  CodecInstance* instance = vantaro::CreateInstance();
  if (instance != nullptr) vantaro::SetStreamFormat(instance, fourcc);
  return instance;
}

CodecInstance* AsInstance(void* handle) { return static_cast<CodecInstance*>(handle); }

int64_t EndInstance(void* handle) {
  vantaro::DestroyInstance(AsInstance(handle));
  return 0;
}

// The compress calls answer 0 after a failure and tell a debugger which call
// it was, in the words they have always used.
int64_t CompressAnswer(Status status, int64_t size, const char* failureText) {
  if (status == Status::kOk) return size;
  vantaro::DebugOutput(failureText);
  return 0;
}

}  // namespace

extern "C" {

VTC_API void* VTC_CompressFieldBegin(const BITMAPINFOHEADER* header, uint32_t fourcc) {
  CodecInstance* instance = NewInstance(fourcc);
  // The format verdict is dropped: whether the layout suits is the caller's to know.
  if (instance != nullptr) (void)vantaro::BeginCompress(instance, header);
  return instance;
}

VTC_API void* VTC_CompressFieldBeginQuality(const BITMAPINFOHEADER* header, uint32_t fourcc,
                                            int32_t quality) {
  CodecInstance* instance = NewInstance(fourcc);
  if (instance == nullptr) return nullptr;
  // Through the driver's 0..10000 scale, so that 100 keeps the default 96.
  // Unsigned, so that any argument wraps instead of overflowing.
  const uint32_t icm = (static_cast<uint32_t>(quality) - 50u) * 200u;
  vantaro::SetQualityFromIcm(instance, static_cast<int32_t>(icm));
  (void)vantaro::BeginCompress(instance, header);
  return instance;
}

VTC_API void* VTC_DecompressFieldBegin(const BITMAPINFOHEADER* header, uint32_t fourcc) {
  CodecInstance* instance = NewInstance(fourcc);
  if (instance != nullptr) (void)vantaro::BeginDecompress(instance, header, header);
  return instance;
}

VTC_API int64_t VTC_CompressFieldEnd(void* instance) { return EndInstance(instance); }
VTC_API int64_t VTC_DecompressFieldEnd(void* instance) { return EndInstance(instance); }

VTC_API int64_t VTC_CompressField(void* instance, uint8_t* stream, const uint8_t* picture,
                                  int32_t stride, uint32_t field) {
  int64_t size = 0;
  const Status status = vantaro::CompressField(AsInstance(instance), stream, vantaro::kUnknownSize,
                                               picture, nullptr, stride, field, &size);
  return CompressAnswer(status, size, "VTC_CompressField: EXCEPTION!!!\n");
}

VTC_API int64_t VTC_CompressFieldEx(void* instance, uint8_t* stream, const uint8_t* picture,
                                    const uint8_t* chroma, int32_t stride, uint32_t field) {
  int64_t size = 0;
  const Status status = vantaro::CompressField(AsInstance(instance), stream, vantaro::kUnknownSize,
                                               picture, chroma, stride, field, &size);
  return CompressAnswer(status, size, "VTC_CompressFieldEx: EXCEPTION!!!\n");
}

VTC_API int64_t VTC_CompressFrame(void* instance, uint8_t* stream, const uint8_t* picture,
                                  int32_t stride) {
  int64_t size = 0;
  const Status status = vantaro::CompressFrame(AsInstance(instance), stream, vantaro::kUnknownSize,
                                               picture, nullptr, stride, &size);
  return CompressAnswer(status, size, "VTC_CompressFrame: EXCEPTION!!!\n");
}

VTC_API int64_t VTC_CompressFrameEx(void* instance, uint8_t* stream, const uint8_t* picture,
                                    const uint8_t* chroma, int32_t stride) {
  int64_t size = 0;
  const Status status = vantaro::CompressFrame(AsInstance(instance), stream, vantaro::kUnknownSize,
                                               picture, chroma, stride, &size);
  return CompressAnswer(status, size, "VTC_CompressFrameEx: EXCEPTION!!!\n");
}

VTC_API int64_t VTC_DecompressField(void* instance, uint8_t* picture, const uint8_t* stream,
                                    int32_t stride, uint32_t field) {
  return vantaro::DecompressField(AsInstance(instance), picture, nullptr, stream, stride, field);
}

VTC_API int64_t VTC_DecompressFieldEx(void* instance, uint8_t* picture, uint8_t* chroma,
                                      const uint8_t* stream, int32_t stride, uint32_t field) {
  return vantaro::DecompressField(AsInstance(instance), picture, chroma, stream, stride, field);
}

VTC_API int64_t VTC_DecompressFrame(void* instance, uint8_t* picture, const uint8_t* stream,
                                    int32_t stride) {
  return vantaro::DecompressFrame(AsInstance(instance), picture, nullptr, stream, stride);
}

VTC_API int64_t VTC_DecompressFrameEx(void* instance, uint8_t* picture, uint8_t* chroma,
                                      const uint8_t* stream, int32_t stride) {
  return vantaro::DecompressFrame(AsInstance(instance), picture, chroma, stream, stride);
}

}  // extern "C"
