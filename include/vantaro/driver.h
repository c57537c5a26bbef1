/*
 * Vantaro's installable video compressor: the message-driven front door.
 *
 * DriverProc answers the compression manager's driver messages (DRV_*) and
 * compression messages (ICM_*). The records it reads and writes are laid out
 * byte for byte as the platform publishes them for 64-bit Windows: 8-byte
 * pointers and results, 16-bit characters in ICINFO. Where the platform's own
 * definitions are already visible they are used instead; each constant is
 * defined only if it is not defined yet.
 */
#ifndef VANTARO_DRIVER_H
#define VANTARO_DRIVER_H

#include <stdint.h>

#include "vantaro/vantaro.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The platform's video-compression header guards its records with _INC_VFW. */
#if !defined(_INC_VFW) && !defined(VANTARO_NO_VFW_RECORDS)

#ifdef __cplusplus
typedef char16_t VtcWideChar;
#else
typedef uint16_t VtcWideChar; /* UTF-16 code unit, as the platform's WCHAR */
#endif

/* lParam2 of DRV_OPEN. fccType and fccHandler are read, dwError is set to 0. */
typedef struct {
    uint32_t dwSize;
    uint32_t fccType;    /* 'vidc' */
    uint32_t fccHandler; /* the stream FourCC, either case */
    uint32_t dwVersion;
    uint32_t dwFlags;
    int64_t  dwError;
    void*    pV1Reserved;
    void*    pV2Reserved;
    uint32_t dnDevNode;
} ICOPEN; /* 56 bytes */

/* lParam1 of ICM_GETINFO. szDriver is left as the caller gave it. */
typedef struct {
    uint32_t    dwSize;
    uint32_t    fccType;
    uint32_t    fccHandler;
    uint32_t    dwFlags;
    uint32_t    dwVersion;
    uint32_t    dwVersionICM;
    VtcWideChar szName[16];
    VtcWideChar szDescription[128];
    VtcWideChar szDriver[128];
} ICINFO; /* 568 bytes */

/* lParam1 of ICM_COMPRESS. */
typedef struct {
    uint32_t          dwFlags;
    BITMAPINFOHEADER* lpbiOutput; /* biSizeImage receives the frame's length */
    void*             lpOutput;
    BITMAPINFOHEADER* lpbiInput;
    void*             lpInput;
    uint32_t*         lpckid;
    uint32_t*         lpdwFlags; /* receives AVIIF_KEYFRAME */
    int32_t           lFrameNum;
    uint32_t          dwFrameSize;
    uint32_t          dwQuality;
    BITMAPINFOHEADER* lpbiPrev;
    void*             lpPrev;
} ICCOMPRESS; /* 88 bytes */

/* lParam1 of ICM_DECOMPRESS. */
typedef struct {
    uint32_t          dwFlags;
    BITMAPINFOHEADER* lpbiInput;
    void*             lpInput;
    BITMAPINFOHEADER* lpbiOutput;
    void*             lpOutput;
    uint32_t          ckid;
} ICDECOMPRESS; /* 48 bytes */

#endif /* records */

/* Driver messages. */
#ifndef DRV_LOAD
#define DRV_LOAD 0x0001
#endif
#ifndef DRV_ENABLE
#define DRV_ENABLE 0x0002
#endif
#ifndef DRV_OPEN
#define DRV_OPEN 0x0003
#endif
#ifndef DRV_CLOSE
#define DRV_CLOSE 0x0004
#endif
#ifndef DRV_DISABLE
#define DRV_DISABLE 0x0005
#endif
#ifndef DRV_FREE
#define DRV_FREE 0x0006
#endif
#ifndef DRV_CONFIGURE
#define DRV_CONFIGURE 0x0007
#endif
#ifndef DRV_QUERYCONFIGURE
#define DRV_QUERYCONFIGURE 0x0008
#endif
#ifndef DRV_INSTALL
#define DRV_INSTALL 0x0009
#endif
#ifndef DRV_REMOVE
#define DRV_REMOVE 0x000A
#endif

/* Compression messages. */
#ifndef ICM_USER
#define ICM_USER 0x4000
#endif
#ifndef ICM_RESERVED
#define ICM_RESERVED 0x5000
#endif
#ifndef ICM_COMPRESS_GET_FORMAT
#define ICM_COMPRESS_GET_FORMAT 0x4004
#endif
#ifndef ICM_COMPRESS_GET_SIZE
#define ICM_COMPRESS_GET_SIZE 0x4005
#endif
#ifndef ICM_COMPRESS_QUERY
#define ICM_COMPRESS_QUERY 0x4006
#endif
#ifndef ICM_COMPRESS_BEGIN
#define ICM_COMPRESS_BEGIN 0x4007
#endif
#ifndef ICM_COMPRESS
#define ICM_COMPRESS 0x4008
#endif
#ifndef ICM_COMPRESS_END
#define ICM_COMPRESS_END 0x4009
#endif
#ifndef ICM_DECOMPRESS_GET_FORMAT
#define ICM_DECOMPRESS_GET_FORMAT 0x400A
#endif
#ifndef ICM_DECOMPRESS_QUERY
#define ICM_DECOMPRESS_QUERY 0x400B
#endif
#ifndef ICM_DECOMPRESS_BEGIN
#define ICM_DECOMPRESS_BEGIN 0x400C
#endif
#ifndef ICM_DECOMPRESS
#define ICM_DECOMPRESS 0x400D
#endif
#ifndef ICM_DECOMPRESS_END
#define ICM_DECOMPRESS_END 0x400E
#endif
#ifndef ICM_DECOMPRESS_SET_PALETTE
#define ICM_DECOMPRESS_SET_PALETTE 0x401D
#endif
#ifndef ICM_DECOMPRESS_GET_PALETTE
#define ICM_DECOMPRESS_GET_PALETTE 0x401E
#endif
#ifndef ICM_GETBUFFERSWANTED
#define ICM_GETBUFFERSWANTED 0x4029
#endif
#ifndef ICM_GETDEFAULTKEYFRAMERATE
#define ICM_GETDEFAULTKEYFRAMERATE 0x402A
#endif
#ifndef ICM_DECOMPRESSEX_BEGIN
#define ICM_DECOMPRESSEX_BEGIN 0x403C
#endif
#ifndef ICM_DECOMPRESSEX_QUERY
#define ICM_DECOMPRESSEX_QUERY 0x403D
#endif
#ifndef ICM_DECOMPRESSEX
#define ICM_DECOMPRESSEX 0x403E
#endif
#ifndef ICM_DECOMPRESSEX_END
#define ICM_DECOMPRESSEX_END 0x403F
#endif
#ifndef ICM_COMPRESS_FRAMES_INFO
#define ICM_COMPRESS_FRAMES_INFO 0x4046
#endif
#ifndef ICM_GETSTATE
#define ICM_GETSTATE 0x5000
#endif
#ifndef ICM_SETSTATE
#define ICM_SETSTATE 0x5001
#endif
#ifndef ICM_GETINFO
#define ICM_GETINFO 0x5002
#endif
#ifndef ICM_CONFIGURE
#define ICM_CONFIGURE 0x500A
#endif
#ifndef ICM_ABOUT
#define ICM_ABOUT 0x500B
#endif
#ifndef ICM_GETDEFAULTQUALITY
#define ICM_GETDEFAULTQUALITY 0x501E
#endif
#ifndef ICM_GETQUALITY
#define ICM_GETQUALITY 0x501F
#endif
#ifndef ICM_SETQUALITY
#define ICM_SETQUALITY 0x5020
#endif
#ifndef ICM_SET
#define ICM_SET 0x5028
#endif
#ifndef ICM_GET
#define ICM_GET 0x5029
#endif

/* Results. */
#ifndef ICERR_OK
#define ICERR_OK 0
#endif
#ifndef ICERR_UNSUPPORTED
#define ICERR_UNSUPPORTED (-1)
#endif
#ifndef ICERR_BADFORMAT
#define ICERR_BADFORMAT (-2)
#endif
#ifndef ICERR_BADSIZE
#define ICERR_BADSIZE (-7)
#endif

/* Identity and flags. */
#ifndef ICTYPE_VIDEO
#define ICTYPE_VIDEO VTC_FOURCC('v', 'i', 'd', 'c')
#endif
#ifndef VIDCF_QUALITY
#define VIDCF_QUALITY 0x0001
#endif
#ifndef VIDCF_COMPRESSFRAMES
#define VIDCF_COMPRESSFRAMES 0x0008
#endif
#ifndef VIDCF_FASTTEMPORALC
#define VIDCF_FASTTEMPORALC 0x0020
#endif
#ifndef VIDCF_FASTTEMPORALD
#define VIDCF_FASTTEMPORALD 0x0080
#endif
#ifndef ICVERSION
#define ICVERSION 0x0104
#endif
#ifndef AVIIF_KEYFRAME
#define AVIIF_KEYFRAME 0x00000010
#endif

/*
 * The driver's one entry. `driverId` is the handle DRV_OPEN returned (the
 * instance), 0 before an open; `driverHandle` is passed on, unread, to the
 * platform's default handler for unknown driver messages. The result is the
 * message's answer: ICERR_* codes for compression messages, 1 or 0 for the
 * driver messages, the handle for DRV_OPEN. No exception leaves it.
 */
VTC_API int64_t DriverProc(uint64_t driverId, void* driverHandle, uint32_t message,
                           int64_t lParam1, int64_t lParam2);

#ifdef __cplusplus
}
#endif

#endif /* VANTARO_DRIVER_H */
