// vantaro decode: an AVI in; YUV4MPEG2, raw frames or PNG pictures out.
// Damaged frames are reported by index and the rest of the file still comes
// out.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

#include "avi/avi.h"
#include "avi/riff.h"
#include "commands/commands.h"
#include "commands/common.h"
#include "commands/decode_output.h"
#include "input/y4m.h"

namespace vantaro::tool {

namespace {

void parse_range(const std::string& text, size_t count, size_t& first, size_t& last) {
    first = 0;
    last = count ? count - 1 : 0;
    if (text.empty()) return;
    const size_t colon = text.find(':');
    char* end = nullptr;
    bool ok = colon != std::string::npos;
    if (ok && colon > 0) first = std::strtoull(text.substr(0, colon).c_str(), &end, 10), ok = !*end;
    if (ok && colon + 1 < text.size()) last = std::strtoull(text.substr(colon + 1).c_str(), &end, 10), ok = !*end;
    if (!ok || first > last || first >= count)
        throw UserError("--frames " + text + ": expected FIRST:LAST within 0:" + std::to_string(count ? count - 1 : 0));
    if (last >= count) last = count - 1;
}

struct Decoders {
    std::vector<vantaro_decoder*> handles;
    Decoders(const Variant& variant, int32_t w, int32_t h, size_t count, const std::string& input)
        : handles(count, nullptr) {
        vantaro_options options;
        vantaro_options_default(&options);
        for (auto*& handle : handles) {
            const vantaro_status s = vantaro_decoder_create(variant.fourcc, w, h, &options, &handle);
            if (s != VANTARO_OK) throw UserError(input + ": cannot decode: " + status_text(s));
        }
    }
    ~Decoders() {
        for (auto* h : handles) vantaro_decoder_destroy(h);
    }
};

Y4mFormat picture_of(const AviVideo& v) {
    Y4mFormat picture;
    picture.width = v.display_width;
    picture.height = v.display_height;
    picture.rate = v.rate ? v.rate : 25;
    picture.scale = v.scale ? v.scale : 1;
    picture.interlaced = v.interlaced;
    picture.top_field_first = v.top_field_first;
    return picture;
}

// One worker's frame: coded, decoded, made ready for the sink; `problem` is
// what to report about it (empty: nothing).
struct Slot {
    std::vector<uint8_t> coded, picture, scratch;
    const std::vector<uint8_t>* prepared = nullptr;
    std::string problem;
};

void decode_slot(vantaro_decoder* dec, const OutFormat& fmt, const Y4mFormat& f, const FrameSink& sink, Slot& s) {
    vantaro_picture pic;
    vantaro_picture_fill(&pic, fmt.format, f.width, f.height, s.picture.data(), s.picture.size());
    vantaro_decode_report report{};
    const vantaro_status st =
        s.problem.empty() ? vantaro_decode(dec, s.coded.data(), s.coded.size(), &pic, &report) : VANTARO_ERROR_TRUNCATED;
    if (st == VANTARO_ERROR_DAMAGED) {
        s.problem = std::to_string(report.damaged_count) + " of 8 slices damaged; the rest decoded";
    } else if (st != VANTARO_OK) {
        // Nothing usable: a mid-grey frame keeps the timing.
        std::memset(s.picture.data(), 128, s.picture.size());
        s.problem = status_text(st) + "; written as grey";
    }
    s.prepared = &sink.prepare(s.picture, s.scratch);
}

}  // namespace

int decode_command(int argc, char** argv) {
    const Args a = parse_args(argc, argv, {"--quiet"}, {"-o", "--format", "--frames", "--threads"});
    if (a.positional.size() != 1 || a.value("-o").empty())
        throw UsageError("usage: vantaro decode INPUT.avi -o OUTPUT [--format FORMAT] [--frames FIRST:LAST]");
    const std::string input = a.positional[0], output = a.value("-o");
    const size_t threads = size_t(a.number("--threads", default_threads(), 1, 64));
    if (input == "-") throw UsageError("AVI input must be a file: its index and segments are read out of order");
    AviReader reader(input);
    const AviVideo& v = reader.video();
    const Variant* variant = find_variant(v.fourcc);
    if (!variant) throw UserError(input + ": holds " + fourcc_text(v.fourcc) + " video, not one of the Vantaro variants");
    const Container container = container_of(output);
    const OutFormat& fmt = pick_format(a.value("--format"), *variant, container);
    size_t first = 0, last = 0;
    if (reader.frames().empty()) throw UserError(input + ": holds no frames");
    parse_range(a.value("--frames"), reader.frames().size(), first, last);

    const Y4mFormat picture = picture_of(v);
    const size_t picture_bytes = vantaro_picture_size(fmt.format, picture.width, picture.height);
    if (!picture_bytes)
        throw UserError(input + ": " + std::to_string(picture.width) + "x" + std::to_string(picture.height) +
                        " is not a size Vantaro decodes");
    Decoders dec(*variant, picture.width, picture.height, threads, input);
    const std::unique_ptr<FrameSink> sink = make_sink(output, container, fmt, picture, last - first + 1);

    Progress progress(a.flag("--quiet"), last - first + 1);
    // Each worker holds one frame, coded and decoded: memory stays at
    // `threads` frames whatever the length.
    std::vector<Slot> slots(threads);
    for (Slot& s : slots) s.picture.resize(picture_bytes);
    size_t damaged = 0;
    run_pipeline(
        threads,
        [&](size_t slot, uint64_t i) {
            if (first + i > last) return false;
            slots[slot].problem = reader.read_frame(first + i, slots[slot].coded) ? "" : "cut short";
            return true;
        },
        [&](size_t slot, uint64_t) { decode_slot(dec.handles[slot], fmt, picture, *sink, slots[slot]); },
        [&](size_t slot, uint64_t i) {
            const Slot& s = slots[slot];
            if (!s.problem.empty()) {
                ++damaged;
                std::fprintf(stderr, "vantaro: %s: frame %llu: %s\n", input.c_str(), (unsigned long long)(first + i),
                             s.problem.c_str());
            }
            sink->write(first + i, *s.prepared);
            progress.frame_done(s.coded.size());
        });
    sink->commit();
    progress.finish("decoded", uint64_t(picture.width) * uint64_t(picture.height));
    if (reader.truncated()) std::fprintf(stderr, "vantaro: %s: the file is cut short; decoded the frames it holds\n", input.c_str());
    return damaged || reader.truncated() ? 3 : 0;
}

}  // namespace vantaro::tool
