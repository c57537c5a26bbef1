#include "input/png_reader.h"

#include <png.h>

#include <filesystem>

#include "convert/colour.h"

namespace vantaro::tool {

namespace {

struct Reader {
    png_structp png = nullptr;
    png_infop info = nullptr;
    std::string error;
    ~Reader() { png_destroy_read_struct(&png, &info, nullptr); }
};

void failed(png_structp png, png_const_charp message) {
    static_cast<Reader*>(png_get_error_ptr(png))->error = message;
    png_longjmp(png, 1);
}

void ignore_warning(png_structp, png_const_charp) {}

// libpng reports through longjmp: everything with a destructor belongs to the
// caller, so the jump skips only libpng's own C frames.
bool decode(Reader& r, std::FILE* f, PngPicture& pic, std::vector<png_bytep>& rows) {
    if (setjmp(png_jmpbuf(r.png))) return false;
    png_init_io(r.png, f);
    png_set_sig_bytes(r.png, 8);
    png_read_info(r.png, r.info);
    const png_byte type = png_get_color_type(r.png, r.info);
    if (type == PNG_COLOR_TYPE_PALETTE) png_set_palette_to_rgb(r.png);
    if (type == PNG_COLOR_TYPE_GRAY && png_get_bit_depth(r.png, r.info) < 8) png_set_expand_gray_1_2_4_to_8(r.png);
    if (png_get_valid(r.png, r.info, PNG_INFO_tRNS)) png_set_tRNS_to_alpha(r.png);
    png_set_scale_16(r.png);  // rounds 16-bit samples to 8
    png_set_interlace_handling(r.png);
    png_read_update_info(r.png, r.info);
    pic.width = int32_t(png_get_image_width(r.png, r.info));
    pic.height = int32_t(png_get_image_height(r.png, r.info));
    pic.channels = png_get_channels(r.png, r.info);
    if (pic.width > 16384 || pic.height > 16384 || pic.width < 1 || pic.height < 1) {
        r.error = std::to_string(pic.width) + "x" + std::to_string(pic.height) + " is larger than 16384x16384";
        return false;
    }
    const size_t stride = size_t(pic.width) * size_t(pic.channels);
    pic.pixels.resize(stride * size_t(pic.height));
    rows.resize(size_t(pic.height));
    for (size_t y = 0; y < rows.size(); ++y) rows[y] = pic.pixels.data() + y * stride;
    png_read_image(r.png, rows.data());
    png_read_end(r.png, nullptr);
    return true;
}

}  // namespace

PngPicture read_png(const std::string& path) {
    File in = File::open_read(path);
    png_byte signature[8] = {};
    if (in.read_some(signature, 8) != 8 || png_sig_cmp(signature, 0, 8))
        throw UserError(path + ": not a PNG picture");
    Reader r;
    r.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &r, failed, ignore_warning);
    r.info = r.png ? png_create_info_struct(r.png) : nullptr;
    if (!r.info) throw UserError(path + ": out of memory reading PNG");
    PngPicture pic;
    std::vector<png_bytep> rows;
    if (!decode(r, in.get(), pic, rows)) throw UserError(path + ": damaged PNG: " + r.error);
    return pic;
}

PngSequence::PngSequence(const std::string& name) : name_(name), sequence_(NumberPattern::is_pattern(name)) {
    namespace fs = std::filesystem;
    if (sequence_) {
        pattern_ = NumberPattern(name);
        first_ = fs::exists(pattern_.name(0)) ? 0 : 1;
        if (!fs::exists(pattern_.name(first_)))
            throw UserError(name + ": no picture numbered 0 or 1 (looked for " + pattern_.name(0) + " and " +
                            pattern_.name(1) + ")");
        while (fs::exists(pattern_.name(first_ + count_))) ++count_;
    } else {
        count_ = 1;
    }
    head_ = read_png(path(0));
    format_.width = head_.width;
    format_.height = head_.height;
    format_.chroma = head_.channels % 2 == 0 ? Chroma::k444Alpha : Chroma::k444;
    format_.interlaced = false;
}

std::string PngSequence::path(uint64_t i) const { return sequence_ ? pattern_.name(first_ + i) : name_; }

bool PngSequence::read(std::vector<uint8_t>& frame) {
    if (next_ >= count_) return false;
    load(next_++, frame);
    return true;
}

void PngSequence::load(uint64_t i, std::vector<uint8_t>& frame) const {
    const std::string name = path(i);
    if (i == 0) convert(head_, name, frame);
    else convert(read_png(name), name, frame);
}

void PngSequence::convert(const PngPicture& p, const std::string& name, std::vector<uint8_t>& frame) const {
    if (p.width != format_.width || p.height != format_.height)
        throw UserError(name + ": " + std::to_string(p.width) + "x" + std::to_string(p.height) +
                        ", but the sequence began at " + std::to_string(format_.width) + "x" +
                        std::to_string(format_.height) + "; every picture must have one size");
    const bool alpha_in = p.channels % 2 == 0, alpha_out = format_.chroma == Chroma::k444Alpha;
    if (alpha_in && !alpha_out)
        throw UserError(name + ": has alpha, but the sequence's first picture has none; give every picture the same channels");
    const size_t n = size_t(p.width) * size_t(p.height), step = size_t(p.channels);
    frame.resize(format_.frame_bytes());
    uint8_t *Y = frame.data(), *U = Y + n, *V = U + n, *A = V + n;
    for (size_t i = 0; i < n; ++i) {
        const uint8_t* px = &p.pixels[i * step];
        const uint8_t grey[3] = {px[0], px[0], px[0]};
        rgb_to_yuv(step >= 3 ? px : grey, Y[i], U[i], V[i]);
        if (alpha_out) A[i] = alpha_in ? px[step - 1] : 255;
    }
}

}  // namespace vantaro::tool
