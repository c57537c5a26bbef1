/*
 * Vantaro: an intra-only video codec for 8-bit video.
 *
 * This is the native C interface: opaque encoder and decoder handles, planar
 * YUV(A) pictures in and out, a known worst-case frame size, and a status for
 * every call. It includes the thirteen direct VTC_* functions (direct.h),
 * which keep the behaviour of the original doors bit for bit; new programs
 * should use the vantaro_* functions below.
 *
 * Streams. A frame is two interleaved fields of four slices each and carries
 * no picture size and no variant tag: the decoder is told the FourCC and the
 * size out of band. Streams written here are the same format as the direct
 * functions': the same macroblock samples give the same bytes.
 *
 * Sizes. Any width and height from 1 to VANTARO_MAX_DIMENSION are accepted
 * for planar pictures and no pixel is lost. The stream's macroblock grid is
 * 16 pixels wide and covers lines in pairs, so the encoder codes the "coded
 * size" (width rounded up to a multiple of 16, height rounded up to a
 * multiple of 2) from a picture whose right column and bottom line are
 * repeated outward, and the decoder crops back. Such a stream is exactly what a decoder told the coded size
 * reads; vantaro_coded_size() gives it, for containers to record. The packed
 * and semi-planar layouts are served at any size too (see vantaro_encode()).
 *
 * Threads. The library's global tables are built once and read only; they
 * are all that instances share. A handle belongs to one thread at a time;
 * different handles may run on different threads at once. A handle created
 * with options.threads above 1 runs a frame's eight slices on worker
 * threads of its own (started at create, joined at destroy); the kernel
 * choice (options.kernels) is process-wide while a call runs.
 */
#ifndef VANTARO_VANTARO_H
#define VANTARO_VANTARO_H

#include <stddef.h>
#include <stdint.h>

#include "vantaro/direct.h"

#ifdef __cplusplus
extern "C" {
#endif

#define VANTARO_VERSION_MAJOR 1
#define VANTARO_VERSION_MINOR 0
#define VANTARO_VERSION_PATCH 0
/* The version as one number: major << 16 | minor << 8 | patch. */
#define VANTARO_VERSION \
    ((VANTARO_VERSION_MAJOR << 16) | (VANTARO_VERSION_MINOR << 8) | VANTARO_VERSION_PATCH)

/* The library's version as VANTARO_VERSION encodes it; may differ from the
 * header's when a newer library of the same major version is loaded. */
VTC_API uint32_t vantaro_version(void);
/* The same as text, "1.0.0". Static storage. */
VTC_API const char* vantaro_version_string(void);

/* Every vantaro_* call answers one of these. The values are frozen. */
typedef enum vantaro_status {
    VANTARO_OK = 0,
    VANTARO_ERROR_INVALID_ARGUMENT = 1,  /* a null handle, pointer or plane */
    VANTARO_ERROR_UNKNOWN_FOURCC = 2,    /* not one of the eight stream variants */
    VANTARO_ERROR_BAD_SIZE = 3,          /* width or height below 1 or above the limit,
                                            or a picture whose size differs from the handle's */
    VANTARO_ERROR_BAD_QUALITY = 4,       /* quality outside 1..99 */
    VANTARO_ERROR_UNSUPPORTED_FORMAT = 5,/* unknown format, or one that cannot feed or
                                            receive this variant */
    VANTARO_ERROR_BAD_OPTIONS = 6,       /* options of an unknown size, or a value out of range */
    VANTARO_ERROR_BUFFER_TOO_SMALL = 7,  /* the frame does not fit `capacity`; nothing past
                                            the capacity was written */
    VANTARO_ERROR_FRAME_TOO_LARGE = 8,   /* a field would outgrow the 24-bit offsets and
                                            lengths of the frame header */
    VANTARO_ERROR_TRUNCATED = 9,         /* the frame is shorter than its header says */
    VANTARO_ERROR_BAD_HEADER = 10,       /* the frame's offsets and lengths disagree with
                                            each other or with its length; nothing decoded */
    VANTARO_ERROR_DAMAGED = 11,          /* some slices could not be decoded whole; every
                                            other slice was; the report says which */
    VANTARO_ERROR_OUT_OF_MEMORY = 12,
    VANTARO_ERROR_INTERNAL = 13,
    VANTARO_ERROR_BAD_STRIDE = 14,       /* a stride shorter than its plane's line */
    VANTARO_ERROR_ALPHA_MISMATCH = 15    /* a packed layout with alpha into a variant
                                            without, or the reverse */
} vantaro_status;

/* A short English description of a status, never null. Static storage. */
VTC_API const char* vantaro_status_string(vantaro_status status);

/*
 * Picture formats. The planar ones hold 8-bit planes: Y, U (Cb), V (Cr), and
 * for the YUVA ones an alpha plane at full resolution. The rest are the
 * twelve packed and semi-planar layouts of the direct functions, with the
 * same sample arithmetic: NV12/NV16/NV24 (Y plane, then interleaved U, V),
 * YA20/YA22/YA44 (interleaved Y and alpha, then interleaved U, V), YUY2, UYVY,
 * UYVA (UYVY lines, then an alpha plane), AYUV, RGB24 and RGB32 (blue first,
 * as bitmaps store them). The values are frozen.
 */
typedef enum vantaro_format {
    VANTARO_FORMAT_YUV420P = 1,
    VANTARO_FORMAT_YUVA420P = 2,
    VANTARO_FORMAT_YUV422P = 3,
    VANTARO_FORMAT_YUVA422P = 4,
    VANTARO_FORMAT_YUV444P = 5,
    VANTARO_FORMAT_YUVA444P = 6,
    VANTARO_FORMAT_NV12 = 11,
    VANTARO_FORMAT_NV16 = 12,
    VANTARO_FORMAT_NV24 = 13,
    VANTARO_FORMAT_YA20 = 14,
    VANTARO_FORMAT_YA22 = 15,
    VANTARO_FORMAT_YA44 = 16,
    VANTARO_FORMAT_YUY2 = 18,
    VANTARO_FORMAT_UYVY = 19,
    VANTARO_FORMAT_UYVA = 20,
    VANTARO_FORMAT_AYUV = 21,
    VANTARO_FORMAT_RGB24 = 22,
    VANTARO_FORMAT_RGB32 = 23
} vantaro_format;

/*
 * A picture: its format, its size in pixels, and up to four planes with
 * signed strides in bytes (negative for a bottom-up picture: the plane
 * pointer is then the top line). Plane use by format:
 *   planar:       planes[0] Y, [1] U, [2] V, [3] alpha (YUVA only)
 *   NV*, YA*:     planes[0] main plane, [1] interleaved U, V
 *   UYVA:         planes[0] UYVY lines, [3] alpha plane
 *   other packed: planes[0]
 * Unused planes are ignored. The encoder only reads through `planes`.
 */
typedef struct vantaro_picture {
    vantaro_format format;
    int32_t width;
    int32_t height;
    uint8_t* planes[4];
    int32_t strides[4];
} vantaro_picture;

/* The largest width and height accepted. */
#define VANTARO_MAX_DIMENSION 16384

/* Bytes a tightly packed picture of this format and size takes (planes back
 * to back in the order of `planes`, strides equal to line lengths); 0 for an
 * unknown format or size. Every format is covered. Lines holding U, V pairs
 * round the width up to even; NV* and YA* second planes take the stride
 * their walks derive from the main plane's, and UYVA's alpha plane follows
 * its lines: a filled picture passes the door's stride checks. */
VTC_API size_t vantaro_picture_size(vantaro_format format, int32_t width, int32_t height);
/* Points `picture` at `buffer` laid out as vantaro_picture_size() counts it. */
VTC_API vantaro_status vantaro_picture_fill(vantaro_picture* picture, vantaro_format format,
                                            int32_t width, int32_t height, void* buffer,
                                            size_t size);

/* The size the stream codes for a picture of width x height (see Sizes). */
VTC_API vantaro_status vantaro_coded_size(int32_t width, int32_t height, int32_t* coded_width,
                                          int32_t* coded_height);

/*
 * A true upper bound on the bytes of one frame of this variant and size,
 * from the longest codes the syntax can write for every block: an encoder
 * given this capacity never answers VANTARO_ERROR_BUFFER_TOO_SMALL. 0 for an
 * unknown FourCC or a size out of range.
 */
VTC_API size_t vantaro_frame_bound(uint32_t fourcc, int32_t width, int32_t height);

/*
 * Which kernels the codec runs. Every choice gives the same bytes. A vector
 * level the processor lacks falls back to the best one below it.
 */
typedef enum vantaro_kernels {
    VANTARO_KERNELS_AUTO = 0,      /* the fastest the processor offers */
    VANTARO_KERNELS_SCALAR = 1,    /* the plain reference code */
    VANTARO_KERNELS_X86_SSE2 = 2,  /* 128-bit vectors, every x86-64 processor */
    VANTARO_KERNELS_X86_AVX2 = 3   /* 256-bit vectors where the processor has them */
} vantaro_kernels;

/*
 * Options for creating an encoder or a decoder. Fill with
 * vantaro_options_default() and change what you need; `size` lets later
 * versions grow the record. A null options pointer means the defaults.
 */
typedef struct vantaro_options {
    uint32_t size;           /* sizeof(vantaro_options) */
    int32_t threads;         /* slices coded side by side: 1 (default) uses the calling
                                thread only, 0 one per processor core, at most 8.
                                The handle starts its threads at create and joins
                                them at destroy; every count gives the same bytes */
    vantaro_kernels kernels; /* default VANTARO_KERNELS_AUTO */
} vantaro_options;

VTC_API void vantaro_options_default(vantaro_options* options);

typedef struct vantaro_encoder vantaro_encoder;
typedef struct vantaro_decoder vantaro_decoder;

/*
 * Quality runs from 1 to 99, higher being better and larger; it is 100 minus
 * the quantiser scale and is the byte each frame starts with. A value snaps
 * upward to the scale ladder: 93..99 stand as given, from 92 down to 38 the
 * even numbers stand and an odd one becomes the next even number up, and
 * below 38 the steps grow coarser (37 becomes 44, 1 becomes 4). 96 is the
 * house default. 0, 100 and above, and negative values answer
 * VANTARO_ERROR_BAD_QUALITY.
 */
VTC_API vantaro_status vantaro_encoder_create(uint32_t fourcc, int32_t width, int32_t height,
                                              int32_t quality, const vantaro_options* options,
                                              vantaro_encoder** encoder);

/*
 * Encodes one frame. The picture must have the encoder's width and height.
 *
 * Planar formats are read in place, any size, any signed strides. Chroma of
 * the variant's family is taken as it stands: 4:2:2 planes into VTQ2 give
 * the bytes UYVY lines of the same samples give through the direct
 * functions. Another family is converted inside each macroblock:
 *   4:4:4 -> 4:2:2: column pairs averaged, (a + b + 1) >> 1;
 *   4:2:2 -> 4:2:0: pairs of a field's lines averaged, (a + b + 1) >> 1;
 *   4:4:4 -> 4:2:0: the 2x2 box of both, (a + b + c + d + 2) >> 2;
 *   4:2:0 -> 4:2:2 -> 4:4:4: each sample repeated.
 * Frames are coded as two fields, so 4:2:0 planes are taken with interlaced
 * siting: chroma line k belongs to field k & 1 (lines 0, 2, 4... to the
 * even frame lines). Alpha comes from the alpha plane; variants without
 * alpha ignore it, and a picture without one is opaque. The coded size's
 * extra columns and line repeat the picture's last ones; nothing outside the
 * planes is read.
 *
 * The packed layouts (YUY2, UYVY, UYVA, AYUV, RGB24, RGB32) go through the
 * direct functions' loaders, with their sample arithmetic (AYUV takes luma
 * and alpha from its first byte), and need alpha exactly when the variant
 * has it (else VANTARO_ERROR_ALPHA_MISMATCH). Their walks move in whole
 * macroblocks and find lines and planes by their own rules (strides of whole
 * 8-byte units, UYVA's alpha plane right behind lines of 2 * width bytes); a
 * picture of another size or placement is first copied, edges repeated, to
 * the coded size in the handle's staging buffer (allocated on first need and
 * kept), so the stream is the one its coded-size picture gives.
 * The semi-planar layouts (NV*, YA*) are deinterleaved into the plane set of
 * their family (NV12 into YUV420P, YA22 into YUVA422P...) and coded as that:
 * their direct loaders repeat two lines down each macroblock and skip every
 * other 16 columns, which no new program wants.
 *
 * Writes at most `capacity` bytes to `dst` and the frame's true length to
 * `*written`. On VANTARO_ERROR_BUFFER_TOO_SMALL nothing past `capacity` is
 * touched; vantaro_frame_bound() gives a capacity that always suffices.
 */
VTC_API vantaro_status vantaro_encode(vantaro_encoder* encoder, const vantaro_picture* picture,
                                      uint8_t* dst, size_t capacity, size_t* written);

/* Accepts null. */
VTC_API void vantaro_encoder_destroy(vantaro_encoder* encoder);

/* What a decode found. */
typedef struct vantaro_decode_report {
    uint32_t damaged_slices; /* bit (4 * field + slice) set for each slice not decoded whole */
    uint32_t damaged_count;  /* how many bits of damaged_slices are set */
    uint32_t quality;        /* the frame's quality byte */
    size_t frame_bytes;      /* bytes of `frame` the header accounts for */
} vantaro_decode_report;

VTC_API vantaro_status vantaro_decoder_create(uint32_t fourcc, int32_t width, int32_t height,
                                              const vantaro_options* options,
                                              vantaro_decoder** decoder);

/*
 * Decodes one frame of `length` bytes into `picture`, which must have the
 * decoder's width and height. Planar formats receive the stream's chroma as
 * it stands when the families match, else converted by the filters listed
 * at vantaro_encode() (downward by the same averages, upward by
 * repetition); every sample is clamped to 0..255, alpha is 255 where the
 * stream has none, and the coded size's extra columns and line are cropped.
 * All twelve packed and semi-planar layouts receive frames through the
 * direct functions' stores and keep their sample arithmetic (chroma pairs
 * unclamped, YA luma unclamped beside run/value alpha). A picture the walks
 * cannot fill where it lies (a size that is not whole macroblocks, NV* or
 * YA* chroma at another stride than the walks derive from the main plane's,
 * a UYVA alpha plane elsewhere than right behind the lines) is decoded at
 * the coded size into the staging buffer and cropped into it.
 * Never reads past `length`, never writes outside the picture. On
 * VANTARO_ERROR_DAMAGED every slice but those named in `report` (which may
 * be null) was decoded; in planar pictures the lines of damaged slices come
 * out mid-grey (128 in every plane), in the other layouts they hold what
 * the slice's decodable part left over the previous content.
 */
VTC_API vantaro_status vantaro_decode(vantaro_decoder* decoder, const uint8_t* frame,
                                      size_t length, const vantaro_picture* picture,
                                      vantaro_decode_report* report);

/* Accepts null. */
VTC_API void vantaro_decoder_destroy(vantaro_decoder* decoder);

/*
 * Reads a frame's header without decoding it: the quality byte, the second
 * field's offset and the eight slice lengths (field-major), checked against
 * `length`. Answers VANTARO_OK, VANTARO_ERROR_TRUNCATED or
 * VANTARO_ERROR_BAD_HEADER; the fields are filled as far as they could be read.
 */
typedef struct vantaro_frame_info {
    uint32_t quality;
    uint32_t second_field_offset;
    uint32_t slice_lengths[8];
    size_t frame_bytes; /* 4 + both fields' slices, when readable */
} vantaro_frame_info;

VTC_API vantaro_status vantaro_frame_inspect(const uint8_t* frame, size_t length,
                                             vantaro_frame_info* info);

/* The eight stream FourCCs, VTC_FOURCC('V','T','Q','0') and so on. */
#define VANTARO_FOURCC_VTQ0 VTC_FOURCC('V', 'T', 'Q', '0')
#define VANTARO_FOURCC_VTQ1 VTC_FOURCC('V', 'T', 'Q', '1')
#define VANTARO_FOURCC_VTQ2 VTC_FOURCC('V', 'T', 'Q', '2')
#define VANTARO_FOURCC_VTQ3 VTC_FOURCC('V', 'T', 'Q', '3')
#define VANTARO_FOURCC_VTQ4 VTC_FOURCC('V', 'T', 'Q', '4')
#define VANTARO_FOURCC_VTQ5 VTC_FOURCC('V', 'T', 'Q', '5')
#define VANTARO_FOURCC_VTQ7 VTC_FOURCC('V', 'T', 'Q', '7')
#define VANTARO_FOURCC_VTQ9 VTC_FOURCC('V', 'T', 'Q', '9')

#ifdef __cplusplus
}
#endif

#endif /* VANTARO_VANTARO_H */
