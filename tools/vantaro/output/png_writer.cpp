#include "output/png_writer.h"

#include <png.h>

#include <string>

namespace vantaro::tool {

namespace {
void png_failed(png_structp png, png_const_charp message) {
    *static_cast<std::string*>(png_get_error_ptr(png)) = message;
    png_longjmp(png, 1);
}
}  // namespace

void write_png(File& out, const uint8_t* rgb, int32_t width, int32_t height, int channels) {
    std::string error;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &error, png_failed, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info) {
        png_destroy_write_struct(&png, nullptr);
        throw UserError(out.name() + ": out of memory writing PNG");
    }
    // libpng reports through longjmp; nothing with a destructor lives below.
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        throw UserError(out.name() + ": cannot write PNG: " + error);
    }
    png_init_io(png, out.get());
    png_set_IHDR(png, info, png_uint_32(width), png_uint_32(height), 8,
                 channels == 4 ? PNG_COLOR_TYPE_RGBA : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    for (int32_t y = 0; y < height; ++y)
        png_write_row(png, rgb + size_t(y) * size_t(width) * size_t(channels));
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
}

}  // namespace vantaro::tool
