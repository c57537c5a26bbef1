// The native door's self-contained calls: version, status text, options,
// coded size and the frame header check. Nothing here touches a codec
// instance.
#include "vantaro/vantaro.h"

namespace {

constexpr uint32_t kSliceCount = 4;
constexpr uint32_t kSliceHeaderBytes = 3;  // a slice's own 24-bit length
constexpr uint32_t kFrameHeaderBytes = 4;  // quality byte + second-field offset

uint32_t ReadU24(const uint8_t* p) {
    return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
           static_cast<uint32_t>(p[2]) << 16;
}

bool DimensionInRange(int32_t value) { return value >= 1 && value <= VANTARO_MAX_DIMENSION; }

// Walks one field's four slice lengths from `pos`; answers the end or a status.
vantaro_status WalkField(const uint8_t* frame, size_t length, size_t pos, uint32_t* lengths,
                         size_t* end) {
    for (uint32_t slice = 0; slice < kSliceCount; ++slice) {
        if (pos > length || length - pos < kSliceHeaderBytes) {
            return VANTARO_ERROR_TRUNCATED;
        }
        const uint32_t slice_length = ReadU24(frame + pos);
        lengths[slice] = slice_length;
        // A slice counts its own length bytes, so anything shorter is a lie.
        if (slice_length < kSliceHeaderBytes) {
            return VANTARO_ERROR_BAD_HEADER;
        }
        pos += slice_length;
    }
    *end = pos;
    return pos > length ? VANTARO_ERROR_TRUNCATED : VANTARO_OK;
}

}  // namespace

extern "C" {

VTC_API uint32_t vantaro_version(void) { return VANTARO_VERSION; }

VTC_API const char* vantaro_version_string(void) {
#define VANTARO_STR2(x) #x
#define VANTARO_STR(x) VANTARO_STR2(x)
    return VANTARO_STR(VANTARO_VERSION_MAJOR) "." VANTARO_STR(VANTARO_VERSION_MINOR) "." VANTARO_STR(
        VANTARO_VERSION_PATCH);
#undef VANTARO_STR
#undef VANTARO_STR2
}

VTC_API const char* vantaro_status_string(vantaro_status status) {
    switch (status) {
        case VANTARO_OK: return "success";
        case VANTARO_ERROR_INVALID_ARGUMENT: return "invalid argument (null handle, pointer or plane)";
        case VANTARO_ERROR_UNKNOWN_FOURCC: return "unknown FourCC";
        case VANTARO_ERROR_BAD_SIZE: return "width or height out of range or not the handle's";
        case VANTARO_ERROR_BAD_QUALITY: return "quality outside 1..99";
        case VANTARO_ERROR_UNSUPPORTED_FORMAT: return "picture format cannot feed or receive this variant";
        case VANTARO_ERROR_BAD_OPTIONS: return "options of an unknown size or with a value out of range";
        case VANTARO_ERROR_BUFFER_TOO_SMALL: return "frame does not fit the buffer";
        case VANTARO_ERROR_FRAME_TOO_LARGE: return "field too large for the frame header's 24-bit fields";
        case VANTARO_ERROR_TRUNCATED: return "frame shorter than its header says";
        case VANTARO_ERROR_BAD_HEADER: return "frame header offsets and lengths disagree";
        case VANTARO_ERROR_DAMAGED: return "some slices could not be decoded whole";
        case VANTARO_ERROR_OUT_OF_MEMORY: return "out of memory";
        case VANTARO_ERROR_INTERNAL: return "internal error";
        case VANTARO_ERROR_BAD_STRIDE: return "a stride too short for its plane, or planes placed otherwise than the layout needs";
        case VANTARO_ERROR_NOT_WHOLE_MACROBLOCKS: return "packed and semi-planar layouts need a width that is a multiple of 16 and an even height";
        case VANTARO_ERROR_ALPHA_MISMATCH: return "the layout's alpha and the variant's disagree";
        case VANTARO_ERROR_CANNOT_FEED: return "semi-planar layouts cannot feed the encoder";
    }
    return "unknown status";
}

VTC_API void vantaro_options_default(vantaro_options* options) {
    if (options == nullptr) {
        return;
    }
    options->size = sizeof(vantaro_options);
    options->threads = 1;
    options->kernels = VANTARO_KERNELS_AUTO;
}

VTC_API vantaro_status vantaro_coded_size(int32_t width, int32_t height, int32_t* coded_width,
                                          int32_t* coded_height) {
    if (coded_width == nullptr || coded_height == nullptr) {
        return VANTARO_ERROR_INVALID_ARGUMENT;
    }
    if (!DimensionInRange(width) || !DimensionInRange(height)) {
        return VANTARO_ERROR_BAD_SIZE;
    }
    // Macroblocks are 16 pixels wide and a frame line pair feeds both fields.
    *coded_width = (width + 15) & ~15;
    *coded_height = (height + 1) & ~1;
    return VANTARO_OK;
}

VTC_API vantaro_status vantaro_frame_inspect(const uint8_t* frame, size_t length,
                                             vantaro_frame_info* info) {
    if (frame == nullptr || info == nullptr) {
        return VANTARO_ERROR_INVALID_ARGUMENT;
    }
    *info = vantaro_frame_info{};
    if (length < kFrameHeaderBytes) {
        return VANTARO_ERROR_TRUNCATED;
    }
    info->quality = frame[0];
    info->second_field_offset = ReadU24(frame + 1);
    size_t first_end = 0;
    vantaro_status status = WalkField(frame, length, kFrameHeaderBytes, info->slice_lengths, &first_end);
    if (status != VANTARO_OK) {
        return status;
    }
    // The offset is redundant with the first field's lengths: both must agree.
    if (first_end != info->second_field_offset) {
        return VANTARO_ERROR_BAD_HEADER;
    }
    size_t second_end = 0;
    status = WalkField(frame, length, first_end, info->slice_lengths + kSliceCount, &second_end);
    if (status != VANTARO_OK) {
        return status;
    }
    info->frame_bytes = second_end;
    return VANTARO_OK;
}

}  // extern "C"
