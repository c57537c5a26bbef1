#include "output/png_writer.h"

#include <png.h>

#include <string>

namespace vantaro::tool {

namespace {

struct Writer {
    png_structp png = nullptr;
    png_infop info = nullptr;
    std::string error;
    std::vector<uint8_t>* out = nullptr;
    ~Writer() { png_destroy_write_struct(&png, &info); }
};

void failed(png_structp png, png_const_charp message) {
    static_cast<Writer*>(png_get_error_ptr(png))->error = message;
    png_longjmp(png, 1);
}

void append(png_structp png, png_bytep data, png_size_t n) {
    std::vector<uint8_t>& out = *static_cast<Writer*>(png_get_io_ptr(png))->out;
    out.insert(out.end(), data, data + n);
}

void no_flush(png_structp) {}

// libpng reports through longjmp: everything with a destructor belongs to the
// caller, so the jump skips only libpng's own C frames.
bool encode(Writer& w, const uint8_t* rgb, int32_t width, int32_t height, int channels) {
    if (setjmp(png_jmpbuf(w.png))) return false;
    png_set_write_fn(w.png, &w, append, no_flush);
    png_set_IHDR(w.png, w.info, png_uint_32(width), png_uint_32(height), 8,
                 channels == 4 ? PNG_COLOR_TYPE_RGBA : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(w.png, w.info);
    for (int32_t y = 0; y < height; ++y)
        png_write_row(w.png, rgb + size_t(y) * size_t(width) * size_t(channels));
    png_write_end(w.png, w.info);
    return true;
}

}  // namespace

std::vector<uint8_t> encode_png(const uint8_t* rgb, int32_t width, int32_t height, int channels) {
    std::vector<uint8_t> bytes;
    Writer w;
    w.out = &bytes;
    w.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &w, failed, nullptr);
    w.info = w.png ? png_create_info_struct(w.png) : nullptr;
    if (!w.info) throw UserError("out of memory writing PNG");
    if (!encode(w, rgb, width, height, channels)) throw UserError("cannot make a PNG: " + w.error);
    return bytes;
}

}  // namespace vantaro::tool
