#include "commands/decode_output.h"

#include <algorithm>

#include "io/number_pattern.h"
#include "output/png_writer.h"

namespace vantaro::tool {

namespace {

const OutFormat kFormats[] = {
    {"yuv420p", VANTARO_FORMAT_YUV420P, true, Chroma::k420, Packing::kNone},
    {"yuv422p", VANTARO_FORMAT_YUV422P, true, Chroma::k422, Packing::kNone},
    {"yuv444p", VANTARO_FORMAT_YUV444P, true, Chroma::k444, Packing::kNone},
    {"yuva444p", VANTARO_FORMAT_YUVA444P, true, Chroma::k444Alpha, Packing::kNone},
    {"uyvy", VANTARO_FORMAT_YUV422P, false, Chroma::k422, Packing::kUyvy},
    {"rgb24", VANTARO_FORMAT_YUV444P, false, Chroma::k444, Packing::kRgb24},
    {"rgba", VANTARO_FORMAT_YUVA444P, false, Chroma::k444Alpha, Packing::kRgba},
    // The alpha variants' own samplings, for raw output.
    {"yuva420p", VANTARO_FORMAT_YUVA420P, false, Chroma::k420, Packing::kNone},
    {"yuva422p", VANTARO_FORMAT_YUVA422P, false, Chroma::k422, Packing::kNone},
};
constexpr size_t kYuva444 = 3, kRgb24 = 5, kRgba = 6;

// Planar (tightly packed, as vantaro_picture_fill lays it out) to packed.
void pack(Packing p, const std::vector<uint8_t>& planar, int32_t w, int32_t h, std::vector<uint8_t>& out) {
    const size_t W = size_t(w), H = size_t(h), n = W * H;
    if (p == Packing::kUyvy) {
        const size_t cw = (W + 1) / 2;
        out.resize(cw * 4 * H);
        const uint8_t *Y = planar.data(), *U = Y + n, *V = U + cw * H;
        uint8_t* o = out.data();
        for (size_t y = 0; y < H; ++y)
            for (size_t x = 0; x < W; x += 2) {
                *o++ = U[y * cw + x / 2];
                *o++ = Y[y * W + x];
                *o++ = V[y * cw + x / 2];
                *o++ = Y[y * W + std::min(x + 1, W - 1)];
            }
        return;
    }
    const size_t step = p == Packing::kRgba ? 4 : 3;
    out.resize(n * step);
    const uint8_t* Y = planar.data();
    yuv_to_rgb_run(Y, Y + n, Y + 2 * n, step == 4 ? Y + 3 * n : nullptr, n, step, out.data());
}

// One file: YUV4MPEG2, or raw frames back to back.
class StreamSink : public FrameSink {
public:
    StreamSink(const std::string& output, Container c, const OutFormat& fmt, const Y4mFormat& picture)
        : out_(output), fmt_(fmt), picture_(picture) {
        if (c == Container::kY4m) {
            Y4mFormat f = picture;
            f.chroma = fmt.chroma;
            y4m_ = std::make_unique<Y4mWriter>(out_.file(), f);
        }
    }
    const std::vector<uint8_t>& prepare(const std::vector<uint8_t>& planar,
                                        std::vector<uint8_t>& scratch) const override {
        if (fmt_.packing == Packing::kNone) return planar;
        pack(fmt_.packing, planar, picture_.width, picture_.height, scratch);
        return scratch;
    }
    void write(uint64_t, const std::vector<uint8_t>& prepared) override {
        if (y4m_) y4m_->write(prepared.data());
        else out_.file().write(prepared.data(), prepared.size());
    }
    void commit() override { out_.commit(); }

private:
    OutputFile out_;
    const OutFormat& fmt_;
    Y4mFormat picture_;
    std::unique_ptr<Y4mWriter> y4m_;
};

// PNG pictures, each complete under its name before the next begins; the
// compression happens in prepare(), side by side.
class PngSink : public FrameSink {
public:
    PngSink(const std::string& output, const OutFormat& fmt, const Y4mFormat& picture, uint64_t frames)
        : output_(output), fmt_(fmt), picture_(picture) {
        if (NumberPattern::is_pattern(output)) {
            pattern_ = std::make_unique<NumberPattern>(output);
        } else if (frames != 1) {
            throw UserError(output + ": a PNG holds one picture, but " + std::to_string(frames) +
                            " frames were asked for; pick one with --frames N:N or name a sequence such as "
                            "frame_%04d.png");
        }
    }
    const std::vector<uint8_t>& prepare(const std::vector<uint8_t>& planar,
                                        std::vector<uint8_t>& scratch) const override {
        std::vector<uint8_t> rgb;
        pack(fmt_.packing, planar, picture_.width, picture_.height, rgb);
        scratch = encode_png(rgb.data(), picture_.width, picture_.height, fmt_.packing == Packing::kRgba ? 4 : 3);
        return scratch;
    }
    void write(uint64_t index, const std::vector<uint8_t>& prepared) override {
        OutputFile out(pattern_ ? pattern_->name(index) : output_);
        out.file().write(prepared.data(), prepared.size());
        out.commit();
    }
    void commit() override {}

private:
    std::string output_;
    const OutFormat& fmt_;
    Y4mFormat picture_;
    std::unique_ptr<NumberPattern> pattern_;
};

}  // namespace

Container container_of(const std::string& output) {
    if (ends_with_nocase(output, ".png")) return Container::kPng;
    return output == "-" || ends_with_nocase(output, ".y4m") ? Container::kY4m : Container::kRaw;
}

const OutFormat& pick_format(const std::string& asked, const Variant& v, Container c) {
    if (asked.empty()) {
        if (c == Container::kPng) return kFormats[v.alpha ? kRgba : kRgb24];
        // YUV4MPEG2 carries alpha only at 4:4:4, so alpha streams go out that way.
        if (c == Container::kY4m && v.alpha) return kFormats[kYuva444];
        for (const OutFormat& f : kFormats)
            if (f.format == v.own) return f;
        return kFormats[0];
    }
    for (const OutFormat& f : kFormats) {
        if (asked != f.name) continue;
        if (c == Container::kY4m && !f.y4m)
            throw UserError("--format " + asked + " has no YUV4MPEG2 form; write a raw file instead");
        if (c == Container::kPng && f.packing != Packing::kRgb24 && f.packing != Packing::kRgba)
            throw UserError("--format " + asked + ": PNG holds RGB or RGBA; use --format rgb24 or rgba");
        return f;
    }
    throw UserError("--format " + asked + ": use yuv420p, yuv422p, yuv444p, yuva444p, uyvy, rgb24 or rgba");
}

std::unique_ptr<FrameSink> make_sink(const std::string& output, Container c, const OutFormat& fmt,
                                     const Y4mFormat& picture, uint64_t frames) {
    if (c == Container::kPng) return std::make_unique<PngSink>(output, fmt, picture, frames);
    return std::make_unique<StreamSink>(output, c, fmt, picture);
}

}  // namespace vantaro::tool
