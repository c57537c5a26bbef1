#include "input/y4m.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace vantaro::tool {

size_t Y4mFormat::frame_bytes() const {
    const size_t luma = size_t(width) * size_t(height);
    const size_t chroma_plane = size_t(chroma_width()) * size_t(chroma_height());
    return luma + 2 * chroma_plane + (chroma == Chroma::k444Alpha ? luma : 0);
}

namespace {

bool parse_ratio(const std::string& v, uint32_t& num, uint32_t& den) {
    char* end = nullptr;
    const unsigned long n = std::strtoul(v.c_str(), &end, 10);
    if (*end != ':') return false;
    char* end2 = nullptr;
    const unsigned long d = std::strtoul(end + 1, &end2, 10);
    if (*end2 || n > 0xffffffffu || d > 0xffffffffu) return false;
    num = uint32_t(n);
    den = uint32_t(d);
    return true;
}

void parse_chroma(const std::string& v, Y4mFormat& f, const std::string& name) {
    // 4:2:0 comes with several sitings; the codec's averaging treats them alike.
    if (v == "420" || v == "420jpeg" || v == "420mpeg2" || v == "420paldv")
        f.chroma = Chroma::k420;
    else if (v == "422")
        f.chroma = Chroma::k422;
    else if (v == "444")
        f.chroma = Chroma::k444;
    else if (v == "444alpha")
        f.chroma = Chroma::k444Alpha;
    else {
        std::string shown = v;
        if (v.size() == 3 && v[0] >= '0' && v[0] <= '9')
            shown = std::string() + v[0] + ':' + v[1] + ':' + v[2];
        else if (v == "mono")
            shown = "greyscale (mono)";
        throw UserError(name + ": " + shown + " chroma is not supported; use 4:2:0, 4:2:2 or 4:4:4");
    }
}

}  // namespace

Y4mFormat parse_y4m_header(const std::string& line, const std::string& name) {
    std::istringstream in(line);
    std::string token;
    in >> token;
    if (token != "YUV4MPEG2") throw UserError(name + ": not a YUV4MPEG2 stream (the header must begin with YUV4MPEG2)");
    Y4mFormat f;
    bool have_w = false, have_h = false;
    while (in >> token) {
        const char tag = token[0];
        const std::string v = token.substr(1);
        char* end = nullptr;
        switch (tag) {
            case 'W':
                f.width = int32_t(std::strtol(v.c_str(), &end, 10));
                have_w = *end == 0 && f.width > 0;
                break;
            case 'H':
                f.height = int32_t(std::strtol(v.c_str(), &end, 10));
                have_h = *end == 0 && f.height > 0;
                break;
            case 'F':
                if (!parse_ratio(v, f.rate, f.scale) || !f.rate || !f.scale)
                    throw UserError(name + ": frame rate '" + v + "' is not a ratio like 25:1");
                break;
            case 'A':
                parse_ratio(v, f.aspect_num, f.aspect_den);
                break;
            case 'I':
                if (v == "m") throw UserError(name + ": mixed field order is not supported");
                f.interlaced = v == "t" || v == "b";
                f.top_field_first = v != "b";
                break;
            case 'C':
                parse_chroma(v, f, name);
                break;
            default:
                break;  // X comments and tags of later versions
        }
    }
    if (!have_w || !have_h) throw UserError(name + ": the YUV4MPEG2 header lacks a valid width (W) or height (H)");
    if (f.width > 16384 || f.height > 16384)
        throw UserError(name + ": " + std::to_string(f.width) + "x" + std::to_string(f.height) +
                        " is larger than 16384x16384");
    return f;
}

std::string y4m_header(const Y4mFormat& f) {
    static const char* const kChroma[] = {"420jpeg", "422", "444", "444alpha"};
    std::ostringstream s;
    s << "YUV4MPEG2 W" << f.width << " H" << f.height << " F" << f.rate << ':' << f.scale << " I"
      << (f.interlaced ? (f.top_field_first ? 't' : 'b') : 'p') << " A"
      << (f.aspect_num ? f.aspect_num : 1) << ':' << (f.aspect_den ? f.aspect_den : 1) << " C"
      << kChroma[int(f.chroma)] << '\n';
    return s.str();
}

Y4mReader::Y4mReader(File& in) : in_(in) {
    format_ = parse_y4m_header(line(4096), in_.name());
}

// One line without its newline; a longer one than `limit` is damage.
std::string Y4mReader::line(size_t limit) {
    std::string s;
    for (;;) {
        const int c = std::fgetc(in_.get());
        if (c == EOF) {
            if (s.empty()) return s;
            throw UserError(in_.name() + ": the stream ends inside a header line");
        }
        if (c == '\n') return s;
        s.push_back(char(c));
        if (s.size() > limit) throw UserError(in_.name() + ": header line too long; not a YUV4MPEG2 stream?");
    }
}

bool Y4mReader::read(std::vector<uint8_t>& frame) {
    const std::string head = line(1024);
    if (head.empty()) return false;
    if (head.compare(0, 5, "FRAME") != 0)
        throw UserError(in_.name() + ": expected a FRAME line between frames");
    // The buffer grows with the bytes that arrive: a header may promise a
    // gigabyte a frame that a short or hostile stream never delivers.
    constexpr size_t kStep = size_t(1) << 22;
    const size_t total = format_.frame_bytes();
    frame.clear();
    while (frame.size() < total) {
        const size_t at = frame.size();
        frame.resize(at + std::min(kStep, total - at));
        const size_t got = in_.read_some(frame.data() + at, frame.size() - at);
        if (got != frame.size() - at)
            throw UserError(in_.name() + (at + got == 0 ? ": the stream ends after a FRAME line"
                                                        : ": file ends in the middle of a frame"));
    }
    return true;
}

Y4mWriter::Y4mWriter(File& out, const Y4mFormat& f) : out_(out), bytes_(f.frame_bytes()) {
    const std::string h = y4m_header(f);
    out_.write(h.data(), h.size());
}

void Y4mWriter::write(const uint8_t* frame) {
    out_.write("FRAME\n", 6);
    out_.write(frame, bytes_);
}

}  // namespace vantaro::tool
