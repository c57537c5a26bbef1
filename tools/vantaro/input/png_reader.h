// PNG pictures in: one file at a time, or a numbered sequence of them turned
// into planar 4:4:4 Y'CbCr (with alpha when the first picture has it).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "input/y4m.h"
#include "io/number_pattern.h"

namespace vantaro::tool {

// 8-bit samples, `channels` interleaved: 1 grey, 2 grey and alpha, 3 RGB,
// 4 RGBA. Palettes, transparency chunks, fewer bits and 16 bits are
// converted to these on reading.
struct PngPicture {
    int32_t width = 0;
    int32_t height = 0;
    int32_t channels = 0;
    std::vector<uint8_t> pixels;
};

PngPicture read_png(const std::string& path);  // "-": standard input; throws UserError

// `name` is one PNG file ("-" for standard input) or a pattern such as
// shot_%04d.png. A sequence
// starts at 0 or 1, whichever exists, and ends before the first missing
// number. Every picture must have the first one's size.
class PngSequence {
public:
    explicit PngSequence(const std::string& name);
    // Chroma k444, or k444Alpha when the first picture has alpha;
    // progressive at 25 frames a second.
    const Y4mFormat& format() const { return format_; }
    uint64_t count() const { return count_; }
    // The next picture as planar Y, Cb, Cr (then alpha) samples, laid out as
    // format().frame_bytes() counts them; false after the last.
    bool read(std::vector<uint8_t>& frame);
    // Picture i < count() as read() gives it; safe from several threads.
    void load(uint64_t i, std::vector<uint8_t>& frame) const;

private:
    std::string path(uint64_t i) const;
    void convert(const PngPicture& p, const std::string& name, std::vector<uint8_t>& frame) const;

    std::string name_;
    bool sequence_ = false;
    NumberPattern pattern_{"%d"};
    uint64_t first_ = 0, count_ = 0, next_ = 0;
    PngPicture head_;  // the first picture, read once for the format
    Y4mFormat format_;
};

}  // namespace vantaro::tool
