// Tightly packed planar pictures: how many bytes one takes and where its
// planes start, for callers who allocate one buffer per picture.
#include "vantaro/vantaro.h"

namespace {

bool DimensionInRange(int32_t value) { return value >= 1 && value <= VANTARO_MAX_DIMENSION; }

// Chroma subsampling of the planar formats as (log2 x, log2 y); alpha flag.
struct PlanarShape {
    int32_t shift_x;
    int32_t shift_y;
    bool alpha;
};

bool PlanarShapeOf(vantaro_format format, PlanarShape* shape) {
    switch (format) {
        case VANTARO_FORMAT_YUV420P: *shape = {1, 1, false}; return true;
        case VANTARO_FORMAT_YUVA420P: *shape = {1, 1, true}; return true;
        case VANTARO_FORMAT_YUV422P: *shape = {1, 0, false}; return true;
        case VANTARO_FORMAT_YUVA422P: *shape = {1, 0, true}; return true;
        case VANTARO_FORMAT_YUV444P: *shape = {0, 0, false}; return true;
        case VANTARO_FORMAT_YUVA444P: *shape = {0, 0, true}; return true;
        default: return false;
    }
}

}  // namespace

extern "C" {

VTC_API size_t vantaro_picture_size(vantaro_format format, int32_t width, int32_t height) {
    PlanarShape shape{};
    if (!PlanarShapeOf(format, &shape) || !DimensionInRange(width) || !DimensionInRange(height)) {
        return 0;
    }
    const size_t luma = static_cast<size_t>(width) * static_cast<size_t>(height);
    const size_t chroma_w = static_cast<size_t>((width + (1 << shape.shift_x) - 1) >> shape.shift_x);
    const size_t chroma_h = static_cast<size_t>((height + (1 << shape.shift_y) - 1) >> shape.shift_y);
    return luma + 2 * chroma_w * chroma_h + (shape.alpha ? luma : 0);
}

VTC_API vantaro_status vantaro_picture_fill(vantaro_picture* picture, vantaro_format format,
                                            int32_t width, int32_t height, void* buffer,
                                            size_t size) {
    if (picture == nullptr || buffer == nullptr) {
        return VANTARO_ERROR_INVALID_ARGUMENT;
    }
    PlanarShape shape{};
    if (!PlanarShapeOf(format, &shape)) {
        return VANTARO_ERROR_UNSUPPORTED_FORMAT;
    }
    const size_t needed = vantaro_picture_size(format, width, height);
    if (needed == 0) {
        return VANTARO_ERROR_BAD_SIZE;
    }
    if (size < needed) {
        return VANTARO_ERROR_BUFFER_TOO_SMALL;
    }
    const int32_t chroma_w = (width + (1 << shape.shift_x) - 1) >> shape.shift_x;
    const int32_t chroma_h = (height + (1 << shape.shift_y) - 1) >> shape.shift_y;
    uint8_t* at = static_cast<uint8_t*>(buffer);
    *picture = vantaro_picture{};
    picture->format = format;
    picture->width = width;
    picture->height = height;
    picture->planes[0] = at;
    picture->strides[0] = width;
    at += static_cast<size_t>(width) * static_cast<size_t>(height);
    for (int plane = 1; plane <= 2; ++plane) {
        picture->planes[plane] = at;
        picture->strides[plane] = chroma_w;
        at += static_cast<size_t>(chroma_w) * static_cast<size_t>(chroma_h);
    }
    if (shape.alpha) {
        picture->planes[3] = at;
        picture->strides[3] = width;
    }
    return VANTARO_OK;
}

}  // extern "C"
