/*
 * Vantaro: an intra-only video codec for 8-bit video.
 *
 * This header is the direct C interface: thirteen functions that compress
 * and decompress whole frames or single fields. A frame is always coded as
 * two interleaved fields of four slices each. The stream carries no picture
 * size and no variant tag: the reader is told both out of band, through the
 * header and the FourCC given to the Begin function.
 *
 * Handles are opaque. No function throws; a bad format still yields a good
 * handle, and the compress functions answer 0 after an internal failure.
 */
#ifndef VANTARO_DIRECT_H
#define VANTARO_DIRECT_H

#include <stdint.h>

#if defined(_WIN32)
#  if defined(VANTARO_BUILDING_LIBRARY)
#    define VTC_API __declspec(dllexport)
#  else
#    define VTC_API __declspec(dllimport)
#  endif
#elif defined(__GNUC__)
#  define VTC_API __attribute__((visibility("default")))
#else
#  define VTC_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/*
 * The uncompressed picture description, laid out byte for byte as the
 * platform's bitmap info header (40 bytes, no padding). Only biWidth,
 * biHeight, biBitCount and biCompression are read by the direct functions.
 * Where the platform's own definition is already visible it is used instead.
 */
#if !defined(_WINGDI_) && !defined(VANTARO_NO_BITMAPINFOHEADER)
typedef struct tagBITMAPINFOHEADER {
    uint32_t biSize;
    int32_t  biWidth;
    int32_t  biHeight;  /* negative: top-down; the codec uses its magnitude */
    uint16_t biPlanes;
    uint16_t biBitCount;
    uint32_t biCompression; /* FourCC, first character in the low byte */
    uint32_t biSizeImage;
    int32_t  biXPelsPerMeter;
    int32_t  biYPelsPerMeter;
    uint32_t biClrUsed;
    uint32_t biClrImportant;
} BITMAPINFOHEADER;
#endif

/* A FourCC with its first character in the low byte: VTC_FOURCC('V','T','Q','2'). */
#define VTC_FOURCC(a, b, c, d)                                             \
    ((uint32_t)(uint8_t)(a) | ((uint32_t)(uint8_t)(b) << 8) |              \
     ((uint32_t)(uint8_t)(c) << 16) | ((uint32_t)(uint8_t)(d) << 24))

/*
 * Begin functions. `header` describes the uncompressed side and is read only
 * during the call; `fourcc` names the stream variant (VTQ0..VTQ5, VTQ7, VTQ9,
 * either case). The compress instance starts at quality 96; the Quality form
 * takes 50..99 (100 keeps 96, above 99 gives 99, below 50 gives 50).
 * Release the handle with the matching End function.
 */
VTC_API void* VTC_CompressFieldBegin(const BITMAPINFOHEADER* header, uint32_t fourcc);
VTC_API void* VTC_CompressFieldBeginQuality(const BITMAPINFOHEADER* header, uint32_t fourcc,
                                            int32_t quality);
VTC_API void* VTC_DecompressFieldBegin(const BITMAPINFOHEADER* header, uint32_t fourcc);

/* End functions: accept null, always answer 0. */
VTC_API int64_t VTC_CompressFieldEnd(void* instance);
VTC_API int64_t VTC_DecompressFieldEnd(void* instance);

/*
 * Compress. `stride` is the distance between two lines of the field (field
 * calls) or of the frame (frame calls), negative for bottom-up pictures.
 * `field` 0 writes the frame header and the first field; any other value
 * writes the second field behind a first field already in `stream`.
 * The result is the bytes in use plus 4; `stream` needs room for at least
 * 4 bytes past that. The Ex forms pass the second plane of the planar
 * layouts (NV12, NV16, NV24, YA20, YA22, YA44).
 */
VTC_API int64_t VTC_CompressField(void* instance, uint8_t* stream, const uint8_t* picture,
                                  int32_t stride, uint32_t field);
VTC_API int64_t VTC_CompressFieldEx(void* instance, uint8_t* stream, const uint8_t* picture,
                                    const uint8_t* chroma, int32_t stride, uint32_t field);
VTC_API int64_t VTC_CompressFrame(void* instance, uint8_t* stream, const uint8_t* picture,
                                  int32_t stride);
VTC_API int64_t VTC_CompressFrameEx(void* instance, uint8_t* stream, const uint8_t* picture,
                                    const uint8_t* chroma, int32_t stride);

/*
 * Decompress. Always answer 0. `stream` is the start of the frame in both
 * field calls. A damaged stream never makes the decoder read or write outside
 * the frame's declared extent or the picture; the damaged field is left
 * partly written.
 */
VTC_API int64_t VTC_DecompressField(void* instance, uint8_t* picture, const uint8_t* stream,
                                    int32_t stride, uint32_t field);
VTC_API int64_t VTC_DecompressFieldEx(void* instance, uint8_t* picture, uint8_t* chroma,
                                      const uint8_t* stream, int32_t stride, uint32_t field);
VTC_API int64_t VTC_DecompressFrame(void* instance, uint8_t* picture, const uint8_t* stream,
                                    int32_t stride);
VTC_API int64_t VTC_DecompressFrameEx(void* instance, uint8_t* picture, uint8_t* chroma,
                                      const uint8_t* stream, int32_t stride);

#ifdef __cplusplus
}
#endif

#endif /* VANTARO_DIRECT_H */
