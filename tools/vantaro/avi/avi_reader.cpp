#include <algorithm>
#include <cstdint>

#include "avi/avi.h"
#include "avi/riff.h"

namespace vantaro::tool {

namespace {
constexpr uint64_t kMaxHeaderChunk = 1 << 20;  // header chunks are small; more is damage
}  // namespace

AviReader::AviReader(const std::string& path) : file_(File::open_read(path)) {
    file_size_ = file_.size();
    uint8_t head[12];
    if (file_.read_some(head, 12) != 12 || get32(head) != fourcc("RIFF") ||
        get32(head + 8) != fourcc("AVI "))
        throw UserError(path + ": not an AVI file");
    // Segments follow one another: RIFF AVI, then any number of RIFF AVIX.
    uint64_t at = 0;
    while (at + 12 <= file_size_) {
        file_.seek(at);
        if (file_.read_some(head, 12) != 12 || get32(head) != fourcc("RIFF")) break;
        const uint64_t end = at + 8 + get32(head + 4);
        if (end > file_size_) truncated_ = true;
        walk(at + 12, end < file_size_ ? end : file_size_, 0);
        at = end + (end & 1);
    }
    if (video_stream_ < 0) throw UserError(path + ": no video stream in this AVI file");
    if (!have_display_) {
        video_.display_width = video_.coded_width;
        video_.display_height = video_.coded_height;
    }
}

// Walks the chunks of [begin, end): lists are entered, header chunks parsed,
// and the video stream's data chunks recorded wherever they sit (movi, LIST
// rec, later segments).
void AviReader::walk(uint64_t begin, uint64_t end, int depth) {
    uint64_t at = begin;
    uint8_t head[12];
    while (at + 8 <= end) {
        file_.seek(at);
        if (file_.read_some(head, 8) != 8) break;
        const uint32_t id = get32(head);
        const uint64_t size = get32(head + 4);
        const uint64_t body = at + 8;
        if (body + size > file_size_) truncated_ = true;
        if (id == fourcc("LIST") && size >= 4 && depth < 4) {
            file_.read_some(head + 8, 4);
            const uint32_t type = get32(head + 8);
            if (type == fourcc("strl")) {
                in_video_strl_ = false;
                ++stream_count_;
            }
            walk(body + 4, std::min(body + size, end), depth + 1);
        } else if (id == fourcc("JUNK") || id == fourcc("idx1") || (id & 0xffff) == (fourcc("ix00") & 0xffff)) {
            // Padding and indexes: the walk itself finds every frame.
        } else if (size <= kMaxHeaderChunk && (id == fourcc("strh") || id == fourcc("strf") ||
                                               id == fourcc("vprp"))) {
            std::vector<uint8_t> bytes(size);
            if (file_.read_some(bytes.data(), bytes.size()) == bytes.size()) header_chunk(id, bytes);
        } else if (video_stream_ >= 0) {
            const char digits[3] = {char('0' + video_stream_ / 10), char('0' + video_stream_ % 10), 0};
            const bool ours = char(id & 0xff) == digits[0] && char((id >> 8) & 0xff) == digits[1];
            const uint32_t kind = id >> 16;
            if (ours && (kind == ('d' | 'c' << 8) || kind == ('d' | 'b' << 8))) {
                if (body + size <= file_size_)
                    frames_.push_back({body, uint32_t(size)});
            }
        }
        at = body + size + (size & 1);
    }
}

void AviReader::header_chunk(uint32_t id, const std::vector<uint8_t>& b) {
    if (id == fourcc("strh") && b.size() >= 48) {
        in_video_strl_ = get32(b.data()) == fourcc("vids") && video_stream_ < 0;
        if (!in_video_strl_) return;
        video_stream_ = stream_count_ - 1;
        if (get32(b.data() + 4)) video_.fourcc = get32(b.data() + 4);
        video_.scale = get32(b.data() + 20);
        video_.rate = get32(b.data() + 24);
        if (b.size() >= 56) {
            const int32_t w = int16_t(get16(b.data() + 52)) - int16_t(get16(b.data() + 48));
            const int32_t h = int16_t(get16(b.data() + 54)) - int16_t(get16(b.data() + 50));
            if (w > 0 && h > 0) {
                video_.display_width = w;
                video_.display_height = h;
                have_display_ = true;
            }
        }
    } else if (id == fourcc("strf") && in_video_strl_ && b.size() >= 40) {
        video_.coded_width = int32_t(get32(b.data() + 4));
        const int32_t h = int32_t(get32(b.data() + 8));
        // Negative: a top-down picture. The most negative value has no
        // magnitude in 32 bits; 0 says "no valid size" and is refused later.
        video_.coded_height = h == INT32_MIN ? 0 : h < 0 ? -h : h;
        video_.bit_count = get16(b.data() + 14);
        // The handler may be blank or differ in case; the compression field
        // is what decoders go by.
        video_.fourcc = get32(b.data() + 16);
        video_.size_image = get32(b.data() + 20);
    } else if (id == fourcc("vprp") && in_video_strl_ && b.size() >= 36) {
        const uint32_t fields = get32(b.data() + 32);
        const int32_t w = int32_t(get32(b.data() + 24)), h = int32_t(get32(b.data() + 28));
        if (w > 0 && h > 0) {
            video_.display_width = w;
            video_.display_height = h;
            have_display_ = true;
        }
        video_.interlaced = fields == 2;
        if (fields == 2 && b.size() >= 36 + 64)
            video_.top_field_first = get32(b.data() + 36 + 28) <= get32(b.data() + 36 + 32 + 28);
    }
}

bool AviReader::read_frame(size_t i, std::vector<uint8_t>& data) {
    const AviFrame& f = frames_.at(i);
    data.resize(f.size);
    file_.seek(f.offset);
    return file_.read_some(data.data(), f.size) == f.size;
}

}  // namespace vantaro::tool
