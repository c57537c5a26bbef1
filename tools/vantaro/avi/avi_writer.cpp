#include <numeric>

#include "avi/avi.h"
#include "avi/riff.h"

namespace vantaro::tool {

namespace {
constexpr uint32_t kKeyFrame = 0x10;        // AVIIF_KEYFRAME in idx1
constexpr uint32_t kHasIndex = 0x10;        // AVIF_HASINDEX
constexpr uint32_t kSuperEntries = 256;     // ix00 slots: 256 GiB at 1 GiB a segment
const uint32_t kFrameId = fourcc("00dc");
constexpr uint64_t kMaxSegment = uint64_t(0xffffffffu) - (uint64_t(1) << 24);  // RIFF sizes are 32-bit

// Field geometry of the OpenDML video properties chunk: a frame of two
// fields holds half its lines in each, the second starting a line lower when
// the top field comes first.
void pack_vprp(Packer& p, const AviVideo& v) {
    const uint32_t fields = v.interlaced ? 2 : 1;
    const uint32_t g = std::gcd(uint32_t(v.display_width), uint32_t(v.display_height));
    p.u32(fourcc("vprp"));
    p.u32(36 + 32 * fields);
    p.u32(0);  // format token: unknown
    p.u32(0);  // standard: unknown
    p.u32(v.scale ? (v.rate + v.scale / 2) / v.scale : 0);
    p.u32(uint32_t(v.display_width));
    p.u32(uint32_t(v.display_height));
    p.u32((uint32_t(v.display_width) / g) << 16 | (uint32_t(v.display_height) / g));
    p.u32(uint32_t(v.display_width));
    p.u32(uint32_t(v.display_height));
    p.u32(fields);
    for (uint32_t f = 0; f < fields; ++f) {
        p.u32(uint32_t(v.coded_height) / fields);
        p.u32(uint32_t(v.coded_width));
        p.u32(uint32_t(v.display_height) / fields);
        p.u32(uint32_t(v.display_width));
        p.u32(0);
        p.u32(0);
        p.u32(0);
        p.u32(fields == 1 ? 0 : (v.top_field_first ? f : 1 - f));
    }
}
}  // namespace

AviWriter::AviWriter(File& out, const AviVideo& video, uint64_t riff_limit)
    : out_(out), video_(video), riff_limit_(riff_limit < kMaxSegment ? riff_limit : kMaxSegment) {
    video_.fourcc = fourcc_upper(video_.fourcc);
    write_headers();
}

void AviWriter::patch32(uint64_t at, uint32_t value) {
    const uint64_t here = out_.tell();
    Packer p;
    p.u32(value);
    out_.seek(at);
    out_.write(p.bytes.data(), 4);
    out_.seek(here);
}

void AviWriter::write_headers() {
    const AviVideo& v = video_;
    Packer p;
    p.u32(fourcc("RIFF"));
    p.u32(0);
    p.u32(fourcc("AVI "));
    p.u32(fourcc("LIST"));
    const size_t hdrl_size_at = p.bytes.size();
    p.u32(0);
    p.u32(fourcc("hdrl"));

    p.u32(fourcc("avih"));
    p.u32(56);
    p.u32(v.rate ? uint32_t(uint64_t(1000000) * v.scale / v.rate) : 0);
    p.u32(0);
    p.u32(0);
    p.u32(kHasIndex);
    avih_frames_at_ = p.bytes.size();
    p.u32(0);
    p.u32(0);
    p.u32(1);
    avih_buffer_at_ = p.bytes.size();
    p.u32(v.size_image);
    p.u32(uint32_t(v.display_width));
    p.u32(uint32_t(v.display_height));
    p.zeros(16);

    p.u32(fourcc("LIST"));
    const size_t strl_size_at = p.bytes.size();
    p.u32(0);
    p.u32(fourcc("strl"));
    p.u32(fourcc("strh"));
    p.u32(56);
    p.u32(fourcc("vids"));
    p.u32(v.fourcc);
    p.u32(0);
    p.u32(0);
    p.u32(0);
    p.u32(v.scale);
    p.u32(v.rate);
    p.u32(0);
    strh_length_at_ = p.bytes.size();
    p.u32(0);
    strh_buffer_at_ = p.bytes.size();
    p.u32(v.size_image);
    p.u32(0xffffffffu);
    p.u32(0);
    p.u16(0);
    p.u16(0);
    p.u16(uint32_t(v.display_width));
    p.u16(uint32_t(v.display_height));

    p.u32(fourcc("strf"));
    p.u32(40);
    p.u32(40);
    p.u32(uint32_t(v.coded_width));
    p.u32(uint32_t(v.coded_height));
    p.u16(1);
    p.u16(v.bit_count);
    p.u32(v.fourcc);
    bi_size_at_ = p.bytes.size();
    p.u32(v.size_image);
    p.zeros(16);

    indx_at_ = p.bytes.size();
    p.u32(fourcc("indx"));
    p.u32(24 + 16 * kSuperEntries);
    p.u16(4);  // longs per entry
    p.u8(0);   // sub type
    p.u8(0);   // AVI_INDEX_OF_INDEXES
    p.u32(0);  // entries in use, patched
    p.u32(kFrameId);
    p.zeros(12 + 16 * kSuperEntries);
    pack_vprp(p, v);
    const uint32_t strl_size = uint32_t(p.bytes.size() - strl_size_at - 4);

    p.u32(fourcc("LIST"));
    p.u32(4 + 8 + 248);
    p.u32(fourcc("odml"));
    p.u32(fourcc("dmlh"));
    p.u32(248);
    dmlh_at_ = p.bytes.size();
    p.zeros(248);
    const uint32_t hdrl_size = uint32_t(p.bytes.size() - hdrl_size_at - 4);

    // Keep the patch positions as file offsets.
    for (uint64_t* at : {&avih_frames_at_, &avih_buffer_at_, &strh_length_at_, &strh_buffer_at_,
                         &bi_size_at_, &indx_at_, &dmlh_at_})
        *at += out_.tell();
    const uint64_t base = out_.tell();
    out_.write(p.bytes.data(), p.bytes.size());
    patch32(base + hdrl_size_at, hdrl_size);
    patch32(base + strl_size_at, strl_size);
    riff_start_ = base;
    first_ = true;

    Packer movi;
    movi.u32(fourcc("LIST"));
    movi.u32(0);
    movi.u32(fourcc("movi"));
    movi_start_ = out_.tell();
    out_.write(movi.bytes.data(), movi.bytes.size());
}

void AviWriter::begin_segment() {
    riff_start_ = out_.tell();
    Packer p;
    p.u32(fourcc("RIFF"));
    p.u32(0);
    p.u32(fourcc("AVIX"));
    p.u32(fourcc("LIST"));
    p.u32(0);
    p.u32(fourcc("movi"));
    out_.write(p.bytes.data(), p.bytes.size());
    movi_start_ = riff_start_ + 12;
    first_ = false;
}

void AviWriter::add_frame(const uint8_t* data, uint32_t size) {
    const uint64_t padded = 8 + uint64_t(size) + (size & 1);
    // Room for this frame and the segment's ix00 (and idx1 in the first).
    const uint64_t index = 32 + 8 * (segment_.size() + 1) + (first_ ? 16 * (segment_.size() + 1) : 0);
    if (!segment_.empty() && out_.tell() + padded + index - riff_start_ > riff_limit_) {
        end_segment();
        begin_segment();
    }
    Packer h;
    h.u32(kFrameId);
    h.u32(size);
    out_.write(h.bytes.data(), 8);
    segment_.push_back({uint32_t(out_.tell() - riff_start_), size});
    out_.write(data, size);
    if (size & 1) out_.write("", 1);
    ++total_frames_;
    if (size > largest_) largest_ = size;
}

void AviWriter::end_segment() {
    if (super_entries_.size() / 16 >= kSuperEntries)
        throw UserError(out_.name() + ": too many frames for one AVI file");
    // ix00: offsets are relative to a base just before the segment, so each
    // fits in 32 bits.
    const uint64_t base = riff_start_;
    const uint64_t ix_at = out_.tell();
    Packer ix;
    ix.u32(fourcc("ix00"));
    ix.u32(uint32_t(24 + 8 * segment_.size()));
    ix.u16(2);
    ix.u8(0);
    ix.u8(1);  // AVI_INDEX_OF_CHUNKS
    ix.u32(uint32_t(segment_.size()));
    ix.u32(kFrameId);
    ix.u64(base);
    ix.u32(0);
    for (const Entry& e : segment_) {
        ix.u32(e.offset);
        ix.u32(e.size);  // bit 31 clear: a key frame
    }
    out_.write(ix.bytes.data(), ix.bytes.size());
    Packer se;
    se.u64(ix_at);
    se.u32(uint32_t(ix.bytes.size()));
    se.u32(uint32_t(segment_.size()));
    super_entries_.insert(super_entries_.end(), se.bytes.begin(), se.bytes.end());

    patch32(movi_start_ + 4, uint32_t(out_.tell() - movi_start_ - 8));
    if (first_) {
        Packer idx;
        idx.u32(fourcc("idx1"));
        idx.u32(uint32_t(16 * segment_.size()));
        for (const Entry& e : segment_) {
            idx.u32(kFrameId);
            idx.u32(kKeyFrame);
            idx.u32(uint32_t(riff_start_ + e.offset - 8 - (movi_start_ + 8)));
            idx.u32(e.size);
        }
        out_.write(idx.bytes.data(), idx.bytes.size());
        first_frames_ = segment_.size();
    }
    patch32(riff_start_ + 4, uint32_t(out_.tell() - riff_start_ - 8));
    segment_.clear();
}

void AviWriter::finish() {
    end_segment();
    const uint64_t end = out_.tell();
    const uint32_t buffer = video_.size_image > largest_ ? video_.size_image : largest_;
    patch32(avih_frames_at_, uint32_t(first_frames_));
    patch32(avih_buffer_at_, buffer);
    patch32(strh_length_at_, uint32_t(total_frames_));
    patch32(strh_buffer_at_, buffer);
    patch32(bi_size_at_, buffer);
    patch32(dmlh_at_, uint32_t(total_frames_));
    patch32(indx_at_ + 12, uint32_t(super_entries_.size() / 16));
    out_.seek(indx_at_ + 32);
    out_.write(super_entries_.data(), super_entries_.size());
    out_.seek(end);
}

}  // namespace vantaro::tool
