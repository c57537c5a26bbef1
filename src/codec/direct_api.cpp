// The thirteen direct functions: thin shells over the instance and the field
// drivers that own the instance's lifetime and keep every exception inside.
#include <new>

#include "codec/codec_instance.h"
#include "codec/field_flow.h"
#include "codec/quantiser.h"
#include "platform/debug_output.h"

using vantaro::CodecInstance;

namespace {

CodecInstance* NewInstance(uint32_t fourcc) {
  auto* instance = new (std::nothrow) CodecInstance;
  if (instance == nullptr) return nullptr;
  vantaro::InitInstance(instance);
  vantaro::SetStreamFormat(instance, fourcc);
  return instance;
}

CodecInstance* AsInstance(void* handle) { return static_cast<CodecInstance*>(handle); }

int64_t EndInstance(void* handle) {
  if (handle == nullptr) return 0;
  try {
    vantaro::ReleaseInstance(AsInstance(handle));
    delete AsInstance(handle);
  } catch (...) {
  }
  return 0;
}

// The compress calls answer 0 after a failure and tell a debugger which call it was.
template <typename Call>
int64_t GuardCompress(const char* failureText, Call call) {
  try {
    return call();
  } catch (...) {
    vantaro::DebugOutput(failureText);
    return 0;
  }
}

template <typename Call>
int64_t GuardDecompress(Call call) {
  try {
    call();
  } catch (...) {
  }
  return 0;
}

}  // namespace

extern "C" {

VTC_API void* VTC_CompressFieldBegin(const BITMAPINFOHEADER* header, uint32_t fourcc) {
  try {
    CodecInstance* instance = NewInstance(fourcc);
    // The format verdict is dropped: whether the layout suits is the caller's to know.
    if (instance != nullptr) (void)vantaro::BeginCompress(instance, header);
    return instance;
  } catch (...) {
    return nullptr;
  }
}

VTC_API void* VTC_CompressFieldBeginQuality(const BITMAPINFOHEADER* header, uint32_t fourcc,
                                            int32_t quality) {
  try {
    CodecInstance* instance = NewInstance(fourcc);
    if (instance == nullptr) return nullptr;
    // Through the driver's 0..10000 scale, so that 100 keeps the default 96.
    // Unsigned, so that any argument wraps instead of overflowing.
    const uint32_t icm = (static_cast<uint32_t>(quality) - 50u) * 200u;
    vantaro::SetQualityFromIcm(instance, static_cast<int32_t>(icm));
    (void)vantaro::BeginCompress(instance, header);
    return instance;
  } catch (...) {
    return nullptr;
  }
}

VTC_API void* VTC_DecompressFieldBegin(const BITMAPINFOHEADER* header, uint32_t fourcc) {
  try {
    CodecInstance* instance = NewInstance(fourcc);
    if (instance != nullptr) (void)vantaro::BeginDecompress(instance, header, header);
    return instance;
  } catch (...) {
    return nullptr;
  }
}

VTC_API int64_t VTC_CompressFieldEnd(void* instance) { return EndInstance(instance); }
VTC_API int64_t VTC_DecompressFieldEnd(void* instance) { return EndInstance(instance); }

VTC_API int64_t VTC_CompressField(void* instance, uint8_t* stream, const uint8_t* picture,
                                  int32_t stride, uint32_t field) {
  return GuardCompress("VTC_CompressField: EXCEPTION!!!\n", [&] {
    return vantaro::CompressField(AsInstance(instance), stream, vantaro::kUnknownSize, picture,
                                  nullptr, stride, field);
  });
}

VTC_API int64_t VTC_CompressFieldEx(void* instance, uint8_t* stream, const uint8_t* picture,
                                    const uint8_t* chroma, int32_t stride, uint32_t field) {
  return GuardCompress("VTC_CompressFieldEx: EXCEPTION!!!\n", [&] {
    return vantaro::CompressField(AsInstance(instance), stream, vantaro::kUnknownSize, picture,
                                  chroma, stride, field);
  });
}

VTC_API int64_t VTC_CompressFrame(void* instance, uint8_t* stream, const uint8_t* picture,
                                  int32_t stride) {
  return GuardCompress("VTC_CompressFrame: EXCEPTION!!!\n", [&] {
    return vantaro::CompressFrame(AsInstance(instance), stream, vantaro::kUnknownSize, picture,
                                  nullptr, stride);
  });
}

VTC_API int64_t VTC_CompressFrameEx(void* instance, uint8_t* stream, const uint8_t* picture,
                                    const uint8_t* chroma, int32_t stride) {
  return GuardCompress("VTC_CompressFrameEx: EXCEPTION!!!\n", [&] {
    return vantaro::CompressFrame(AsInstance(instance), stream, vantaro::kUnknownSize, picture,
                                  chroma, stride);
  });
}

VTC_API int64_t VTC_DecompressField(void* instance, uint8_t* picture, const uint8_t* stream,
                                    int32_t stride, uint32_t field) {
  return GuardDecompress([&] {
    vantaro::DecompressField(AsInstance(instance), picture, nullptr, stream, stride, field);
  });
}

VTC_API int64_t VTC_DecompressFieldEx(void* instance, uint8_t* picture, uint8_t* chroma,
                                      const uint8_t* stream, int32_t stride, uint32_t field) {
  return GuardDecompress([&] {
    vantaro::DecompressField(AsInstance(instance), picture, chroma, stream, stride, field);
  });
}

VTC_API int64_t VTC_DecompressFrame(void* instance, uint8_t* picture, const uint8_t* stream,
                                    int32_t stride) {
  return GuardDecompress([&] {
    vantaro::DecompressFrame(AsInstance(instance), picture, nullptr, stream, stride);
  });
}

VTC_API int64_t VTC_DecompressFrameEx(void* instance, uint8_t* picture, uint8_t* chroma,
                                      const uint8_t* stream, int32_t stride) {
  return GuardDecompress([&] {
    vantaro::DecompressFrame(AsInstance(instance), picture, chroma, stream, stride);
  });
}

}  // extern "C"
