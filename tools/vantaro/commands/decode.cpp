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
    ~Decoders() {
        for (auto* h : handles) vantaro_decoder_destroy(h);
    }
};

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

    const int32_t w = v.display_width, h = v.display_height;
    const size_t picture_bytes = vantaro_picture_size(fmt.format, w, h);
    if (!picture_bytes) throw UserError(input + ": " + std::to_string(w) + "x" + std::to_string(h) + " is not a size Vantaro decodes");
    Decoders dec;
    dec.handles.assign(threads, nullptr);
    vantaro_options options;
    vantaro_options_default(&options);
    for (auto*& handle : dec.handles) {
        const vantaro_status s = vantaro_decoder_create(variant->fourcc, w, h, &options, &handle);
        if (s != VANTARO_OK) throw UserError(input + ": cannot decode: " + status_text(s));
    }

    Y4mFormat picture;
    picture.width = w;
    picture.height = h;
    picture.rate = v.rate ? v.rate : 25;
    picture.scale = v.scale ? v.scale : 1;
    picture.interlaced = v.interlaced;
    picture.top_field_first = v.top_field_first;
    const std::unique_ptr<FrameSink> sink = make_sink(output, container, fmt, picture, last - first + 1);

    Progress progress(a.flag("--quiet"), last - first + 1);
    // One batch of `threads` frames in memory at a time, whatever the length.
    std::vector<std::vector<uint8_t>> coded(threads), pictures(threads, std::vector<uint8_t>(picture_bytes));
    std::vector<std::string> problems(threads);
    size_t damaged = 0;
    for (size_t base = first; base <= last; base += threads) {
        const size_t n = std::min(threads, last + 1 - base);
        for (size_t i = 0; i < n; ++i) {
            problems[i].clear();
            if (!reader.read_frame(base + i, coded[i])) problems[i] = "cut short";
        }
        run_batch(int32_t(threads), n, [&](size_t, size_t i) {
            vantaro_picture pic;
            vantaro_picture_fill(&pic, fmt.format, w, h, pictures[i].data(), pictures[i].size());
            vantaro_decode_report report{};
            const vantaro_status s = problems[i].empty()
                ? vantaro_decode(dec.handles[i], coded[i].data(), coded[i].size(), &pic, &report)
                : VANTARO_ERROR_TRUNCATED;
            if (s == VANTARO_ERROR_DAMAGED)
                problems[i] = std::to_string(report.damaged_count) + " of 8 slices damaged; the rest decoded";
            else if (s != VANTARO_OK) {
                // Nothing usable: a mid-grey frame keeps the timing.
                std::memset(pictures[i].data(), 128, pictures[i].size());
                problems[i] = status_text(s) + "; written as grey";
            }
        });
        for (size_t i = 0; i < n; ++i) {
            if (!problems[i].empty()) {
                ++damaged;
                std::fprintf(stderr, "vantaro: %s: frame %zu: %s\n", input.c_str(), base + i, problems[i].c_str());
            }
            sink->write(base + i, pictures[i]);
            progress.frame_done(coded[i].size());
        }
    }
    sink->commit();
    progress.finish("decoded", uint64_t(w) * uint64_t(h));
    if (reader.truncated()) std::fprintf(stderr, "vantaro: %s: the file is cut short; decoded the frames it holds\n", input.c_str());
    return damaged || reader.truncated() ? 3 : 0;
}

}  // namespace vantaro::tool
