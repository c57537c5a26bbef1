// YUV4MPEG2: a text header, then frames of planar 8-bit samples, each after a
// FRAME line. Read and written one frame at a time.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "io/file.h"

namespace vantaro::tool {

enum class Chroma { k420, k422, k444, k444Alpha };

struct Y4mFormat {
    int32_t width = 0;
    int32_t height = 0;
    uint32_t rate = 25;
    uint32_t scale = 1;
    Chroma chroma = Chroma::k420;
    bool interlaced = false;      // I tag t or b
    bool top_field_first = true;
    uint32_t aspect_num = 0, aspect_den = 0;  // 0:0 when unknown

    int32_t chroma_width() const { return chroma == Chroma::k420 || chroma == Chroma::k422 ? (width + 1) / 2 : width; }
    int32_t chroma_height() const { return chroma == Chroma::k420 ? (height + 1) / 2 : height; }
    size_t frame_bytes() const;
};

// Parses a header line (without its newline); throws UserError naming `name`.
Y4mFormat parse_y4m_header(const std::string& line, const std::string& name);
std::string y4m_header(const Y4mFormat& f);

class Y4mReader {
public:
    explicit Y4mReader(File& in);
    const Y4mFormat& format() const { return format_; }
    // Reads the next frame's planes back to back (Y, U, V, then alpha);
    // false at the end of the stream.
    bool read(std::vector<uint8_t>& frame);

private:
    std::string line(size_t limit);
    File& in_;
    Y4mFormat format_;
};

class Y4mWriter {
public:
    Y4mWriter(File& out, const Y4mFormat& f);
    void write(const uint8_t* frame);

private:
    File& out_;
    size_t bytes_;
};

}  // namespace vantaro::tool
