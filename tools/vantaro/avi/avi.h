// RIFF AVI with one compressed video stream: a writer that keeps only the
// index in memory (eight bytes a frame) and a reader that finds every frame
// by walking the movi lists, so a missing or partial index costs nothing.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "io/file.h"

namespace vantaro::tool {

struct AviVideo {
    uint32_t fourcc = 0;           // as written in strh and biCompression
    int32_t coded_width = 0;       // biWidth, biHeight: what a decoder is told
    int32_t coded_height = 0;
    int32_t display_width = 0;     // rcFrame and vprp: the picture shown
    int32_t display_height = 0;
    uint32_t rate = 25;            // frames per second = rate / scale
    uint32_t scale = 1;
    bool interlaced = true;
    bool top_field_first = true;
    uint32_t size_image = 0;       // biSizeImage: the worst case a frame may take
    uint16_t bit_count = 24;       // 32 for the alpha variants
};

// Writes frames as they come. RIFF segments roll over at `riff_limit` bytes
// (1 GiB by default, the size readers without OpenDML support); the first
// segment carries idx1, every segment an ix00 listed by the indx super index.
class AviWriter {
public:
    AviWriter(File& out, const AviVideo& video, uint64_t riff_limit = uint64_t(1) << 30);
    void add_frame(const uint8_t* data, uint32_t size);
    // Writes the indexes and patches every size and count; the file is then
    // complete.
    void finish();
    uint64_t frames() const { return total_frames_; }

private:
    // Eight bytes a frame, and only for the current segment: a segment stays
    // under 4 GiB, so an offset from its start fits in 32 bits.
    struct Entry {
        uint32_t offset;  // of the chunk's data, from riff_start_
        uint32_t size;
    };
    void begin_segment();
    void end_segment();
    void write_headers();
    void patch32(uint64_t at, uint32_t value);

    File& out_;
    AviVideo video_;
    uint64_t riff_limit_;
    std::vector<Entry> segment_;                  // frames of the current segment
    std::vector<uint8_t> super_entries_;          // 16 bytes per ix00
    uint64_t riff_start_ = 0, movi_start_ = 0;
    uint64_t avih_frames_at_ = 0, strh_length_at_ = 0, strh_buffer_at_ = 0;
    uint64_t avih_buffer_at_ = 0, bi_size_at_ = 0, indx_at_ = 0, dmlh_at_ = 0;
    uint64_t total_frames_ = 0, first_frames_ = 0;
    uint32_t largest_ = 0;
    bool first_ = true;
};

struct AviFrame {
    uint64_t offset;  // of the data, past the chunk header
    uint32_t size;
};

class AviReader {
public:
    explicit AviReader(const std::string& path);
    const AviVideo& video() const { return video_; }
    const std::vector<AviFrame>& frames() const { return frames_; }
    // Set when the file ends inside a chunk or list it announced.
    bool truncated() const { return truncated_; }
    // Reads frame i into `data` (resized); false if it lies past the end.
    bool read_frame(size_t i, std::vector<uint8_t>& data);

private:
    void walk(uint64_t begin, uint64_t end, int depth);
    void header_chunk(uint32_t id, const std::vector<uint8_t>& body);

    File file_;
    uint64_t file_size_ = 0;
    AviVideo video_;
    std::vector<AviFrame> frames_;
    int video_stream_ = -1, stream_count_ = 0;
    bool in_video_strl_ = false, have_display_ = false, truncated_ = false;
};

}  // namespace vantaro::tool
