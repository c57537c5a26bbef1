// The video-compression manager's records and message codes as the driver
// sees them, mirrored from the platform's published 64-bit layouts: 8-byte
// pointers and results, 16-bit characters. Only fixed-width types, so that the
// layouts hold where long is 32 bits and wchar_t 16 as well as here.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/platform_types.h"

namespace vantaro {

struct IcOpen {
  uint32_t dwSize;
  uint32_t fccType;
  uint32_t fccHandler;
  uint32_t dwVersion;
  uint32_t dwFlags;
  int64_t dwError;
  void* pV1Reserved;
  void* pV2Reserved;
  uint32_t dnDevNode;
};

struct IcInfo {
  uint32_t dwSize;
  uint32_t fccType;
  uint32_t fccHandler;
  uint32_t dwFlags;
  uint32_t dwVersion;
  uint32_t dwVersionICM;
  char16_t szName[16];
  char16_t szDescription[128];
  char16_t szDriver[128];
};

struct IcCompress {
  uint32_t dwFlags;
  BITMAPINFOHEADER* lpbiOutput;
  uint8_t* lpOutput;
  BITMAPINFOHEADER* lpbiInput;
  const uint8_t* lpInput;
  uint32_t* lpckid;
  uint32_t* lpdwFlags;
  int32_t lFrameNum;
  uint32_t dwFrameSize;
  uint32_t dwQuality;
  BITMAPINFOHEADER* lpbiPrev;
  void* lpPrev;
};

struct IcDecompress {
  uint32_t dwFlags;
  BITMAPINFOHEADER* lpbiInput;
  const uint8_t* lpInput;
  BITMAPINFOHEADER* lpbiOutput;
  uint8_t* lpOutput;
  uint32_t ckid;
};

static_assert(sizeof(void*) == 8, "the driver records are the 64-bit platform's");

static_assert(sizeof(IcOpen) == 56);
static_assert(offsetof(IcOpen, fccType) == 4);
static_assert(offsetof(IcOpen, fccHandler) == 8);
static_assert(offsetof(IcOpen, dwFlags) == 16);
static_assert(offsetof(IcOpen, dwError) == 24);
static_assert(offsetof(IcOpen, pV1Reserved) == 32);
static_assert(offsetof(IcOpen, pV2Reserved) == 40);
static_assert(offsetof(IcOpen, dnDevNode) == 48);

static_assert(sizeof(char16_t) == 2);
static_assert(sizeof(IcInfo) == 568);
static_assert(offsetof(IcInfo, dwFlags) == 12);
static_assert(offsetof(IcInfo, dwVersionICM) == 20);
static_assert(offsetof(IcInfo, szName) == 24);
static_assert(offsetof(IcInfo, szDescription) == 56);
static_assert(offsetof(IcInfo, szDriver) == 312);

static_assert(sizeof(IcCompress) == 88);
static_assert(offsetof(IcCompress, lpbiOutput) == 8);
static_assert(offsetof(IcCompress, lpOutput) == 16);
static_assert(offsetof(IcCompress, lpbiInput) == 24);
static_assert(offsetof(IcCompress, lpInput) == 32);
static_assert(offsetof(IcCompress, lpckid) == 40);
static_assert(offsetof(IcCompress, lpdwFlags) == 48);
static_assert(offsetof(IcCompress, lFrameNum) == 56);
static_assert(offsetof(IcCompress, dwFrameSize) == 60);
static_assert(offsetof(IcCompress, dwQuality) == 64);
static_assert(offsetof(IcCompress, lpbiPrev) == 72);
static_assert(offsetof(IcCompress, lpPrev) == 80);

static_assert(sizeof(IcDecompress) == 48);
static_assert(offsetof(IcDecompress, lpbiInput) == 8);
static_assert(offsetof(IcDecompress, lpInput) == 16);
static_assert(offsetof(IcDecompress, lpbiOutput) == 24);
static_assert(offsetof(IcDecompress, lpOutput) == 32);
static_assert(offsetof(IcDecompress, ckid) == 40);

// Driver messages.
constexpr uint32_t kDrvLoad = 0x0001;
constexpr uint32_t kDrvEnable = 0x0002;
constexpr uint32_t kDrvOpen = 0x0003;
constexpr uint32_t kDrvClose = 0x0004;
constexpr uint32_t kDrvDisable = 0x0005;
constexpr uint32_t kDrvFree = 0x0006;
constexpr uint32_t kDrvConfigure = 0x0007;
constexpr uint32_t kDrvQueryConfigure = 0x0008;
constexpr uint32_t kDrvInstall = 0x0009;
constexpr uint32_t kDrvRemove = 0x000A;

// Compression messages; below kIcmUser a message belongs to the driver layer.
constexpr uint32_t kIcmUser = 0x4000;
constexpr uint32_t kIcmCompressGetFormat = 0x4004;
constexpr uint32_t kIcmCompressGetSize = 0x4005;
constexpr uint32_t kIcmCompressQuery = 0x4006;
constexpr uint32_t kIcmCompressBegin = 0x4007;
constexpr uint32_t kIcmCompress = 0x4008;
constexpr uint32_t kIcmCompressEnd = 0x4009;
constexpr uint32_t kIcmDecompressGetFormat = 0x400A;
constexpr uint32_t kIcmDecompressQuery = 0x400B;
constexpr uint32_t kIcmDecompressBegin = 0x400C;
constexpr uint32_t kIcmDecompress = 0x400D;
constexpr uint32_t kIcmDecompressEnd = 0x400E;
constexpr uint32_t kIcmDecompressSetPalette = 0x401D;
constexpr uint32_t kIcmDecompressGetPalette = 0x401E;
constexpr uint32_t kIcmGetBuffersWanted = 0x4029;
constexpr uint32_t kIcmGetDefaultKeyFrameRate = 0x402A;
constexpr uint32_t kIcmDecompressExBegin = 0x403C;
constexpr uint32_t kIcmDecompressExQuery = 0x403D;
constexpr uint32_t kIcmDecompressEx = 0x403E;
constexpr uint32_t kIcmDecompressExEnd = 0x403F;
constexpr uint32_t kIcmCompressFramesInfo = 0x4046;
constexpr uint32_t kIcmGetState = 0x5000;
constexpr uint32_t kIcmSetState = 0x5001;
constexpr uint32_t kIcmGetInfo = 0x5002;
constexpr uint32_t kIcmConfigure = 0x500A;
constexpr uint32_t kIcmAbout = 0x500B;
constexpr uint32_t kIcmGetDefaultQuality = 0x501E;
constexpr uint32_t kIcmGetQuality = 0x501F;
constexpr uint32_t kIcmSetQuality = 0x5020;
constexpr uint32_t kIcmSet = 0x5028;
constexpr uint32_t kIcmGet = 0x5029;

constexpr uint32_t kIcTypeVideo = MakeFourCC('v', 'i', 'd', 'c');
constexpr uint32_t kVidcfQuality = 0x0001;
constexpr uint32_t kVidcfCompressFrames = 0x0008;
constexpr uint32_t kVidcfFastTemporalC = 0x0020;
constexpr uint32_t kVidcfFastTemporalD = 0x0080;
constexpr uint32_t kIcVersion = 0x0104;
constexpr uint32_t kAviifKeyFrame = 0x00000010;

// The message box style of an error notice.
constexpr uint32_t kMbIconError = 0x00000010;

}  // namespace vantaro
