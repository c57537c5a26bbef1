// The per-stream state that every codec function takes first, and the stream
// variants. The uncompressed layouts are described in codec/layout_facts.h.
#pragma once

#include <cstdint>

#include "codec/layout_facts.h"
#include "codec/status.h"
#include "platform/platform_types.h"

namespace vantaro {

struct CodecInstance {
  float* reciprocalTable;     // 64 encoder reciprocals, 16-byte aligned, owned
  uint16_t* multiplierTable;  // 64 decoder multipliers, 16-byte aligned, owned
  int32_t width;              // biWidth as given
  int32_t height;             // |biHeight|: frame lines, both fields
  uint32_t fourcc;            // upper-case stream FourCC
  uint32_t chromaFamily;      // 0,1: 4:2:0; 2,3: 4:2:2; 4,5: 4:4:4; odd has alpha
  uint8_t hasAlpha;
  uint8_t dctAlpha;           // alpha coded as four more luma-like blocks
  uint8_t topDown;            // driver only: uncompressed side is top-down
  uint32_t colorSpace;        // ColorSpace of the uncompressed side
  const uint8_t* frameBase;   // first line of the frame being coded; csUYVA alpha
  uint32_t quality;           // 100 minus the quantiser scale
};

// Constructs in place: null frameBase, tables allocated, quality 96, format
// fields zeroed (an unknown FourCC then leaves a defined, empty instance).
// kOutOfMemory leaves no table allocated.
Status InitInstance(CodecInstance* instance);
// Frees both tables; each step skipped if already null.
void ReleaseInstance(CodecInstance* instance);

// A heap instance, initialised; null when any of its allocations fails, with
// nothing left allocated. DestroyInstance takes null.
CodecInstance* CreateInstance();
void DestroyInstance(CodecInstance* instance);

// Accepts the eight stream FourCCs in either case; anything else is ignored.
void SetStreamFormat(CodecInstance* instance, uint32_t fourcc);
// True for VTQ0..VTQ5, VTQ7, VTQ9 in either case; `upper` gets the upper form.
bool IsStreamFourCC(uint32_t fourcc, uint32_t* upper = nullptr);
// The log label of an upper-case stream FourCC ("VTQ2 (4:2:2)"), or null.
const char* StreamFourCCLabel(uint32_t upperFourcc);

int32_t ColorSpaceFromHeader(const BITMAPINFOHEADER* header);

// 0, or -2 for an unusable layout or an alpha mismatch. Fields stay written.
int64_t BeginCompress(CodecInstance* instance, const BITMAPINFOHEADER* inputHeader);
// 0, or -2 if the two sizes differ (instance then unchanged).
int64_t BeginDecompress(CodecInstance* instance, const BITMAPINFOHEADER* inputHeader,
                        const BITMAPINFOHEADER* outputHeader);

}  // namespace vantaro
