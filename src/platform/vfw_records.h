// The video-compression manager's records and codes as the driver reads them.
// They are defined once, in the public header a host compiles against; here
// they are held to the platform's published 64-bit layout (8-byte pointers and
// results, 16-bit characters, natural alignment), field by field.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/platform_types.h"
#include "vantaro/driver.h"

namespace vantaro {

static_assert(sizeof(void*) == 8, "the driver records are the 64-bit platform's");
static_assert(sizeof(VtcWideChar) == 2);

// Each record's size and the offset of every field after the first.
static_assert(sizeof(ICOPEN) == 56 && offsetof(ICOPEN, fccType) == 4 &&
              offsetof(ICOPEN, fccHandler) == 8 && offsetof(ICOPEN, dwVersion) == 12 &&
              offsetof(ICOPEN, dwFlags) == 16 && offsetof(ICOPEN, dwError) == 24 &&
              offsetof(ICOPEN, pV1Reserved) == 32 && offsetof(ICOPEN, pV2Reserved) == 40 &&
              offsetof(ICOPEN, dnDevNode) == 48);
static_assert(sizeof(ICINFO) == 568 && offsetof(ICINFO, fccType) == 4 &&
              offsetof(ICINFO, fccHandler) == 8 && offsetof(ICINFO, dwFlags) == 12 &&
              offsetof(ICINFO, dwVersion) == 16 && offsetof(ICINFO, dwVersionICM) == 20 &&
              offsetof(ICINFO, szName) == 24 && offsetof(ICINFO, szDescription) == 56 &&
              offsetof(ICINFO, szDriver) == 312);
static_assert(sizeof(ICCOMPRESS) == 88 && offsetof(ICCOMPRESS, lpbiOutput) == 8 &&
              offsetof(ICCOMPRESS, lpOutput) == 16 && offsetof(ICCOMPRESS, lpbiInput) == 24 &&
              offsetof(ICCOMPRESS, lpInput) == 32 && offsetof(ICCOMPRESS, lpckid) == 40 &&
              offsetof(ICCOMPRESS, lpdwFlags) == 48 && offsetof(ICCOMPRESS, lFrameNum) == 56 &&
              offsetof(ICCOMPRESS, dwFrameSize) == 60 && offsetof(ICCOMPRESS, dwQuality) == 64 &&
              offsetof(ICCOMPRESS, lpbiPrev) == 72 && offsetof(ICCOMPRESS, lpPrev) == 80);
static_assert(sizeof(ICDECOMPRESS) == 48 && offsetof(ICDECOMPRESS, lpbiInput) == 8 &&
              offsetof(ICDECOMPRESS, lpInput) == 16 && offsetof(ICDECOMPRESS, lpbiOutput) == 24 &&
              offsetof(ICDECOMPRESS, lpOutput) == 32 && offsetof(ICDECOMPRESS, ckid) == 40);

// The message box style of an error notice.
constexpr uint32_t kMbIconError = 0x00000010;

}  // namespace vantaro
