// vantaro decode: an AVI in, YUV4MPEG2 or raw frames out. Damaged frames are
// reported by index and the rest of the file still comes out.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

#include "avi/avi.h"
#include "avi/riff.h"
#include "commands/commands.h"
#include "commands/common.h"
#include "input/y4m.h"

namespace vantaro::tool {

namespace {

// The packed outputs are made here from the library's planar output (the
// native door takes planar pictures only): UYVY from 4:2:2, RGB from 4:4:4.
enum class Packing { kNone, kUyvy, kRgb24, kRgba };

struct OutFormat {
    const char* name;
    vantaro_format format;  // what the library decodes into
    bool y4m;               // has a YUV4MPEG2 form
    Chroma chroma;
    Packing packing;
};

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

// Bytes of one packed frame; 0 for the planar formats.
size_t packed_bytes(Packing p, int32_t w, int32_t h) {
    const size_t pixels = size_t(w) * size_t(h);
    switch (p) {
        case Packing::kUyvy: return size_t((w + 1) / 2) * 4 * size_t(h);
        case Packing::kRgb24: return pixels * 3;
        case Packing::kRgba: return pixels * 4;
        case Packing::kNone: break;
    }
    return 0;
}

// Planar (tightly packed, as vantaro_picture_fill lays it out) to packed.
void pack(Packing p, const std::vector<uint8_t>& planar, int32_t w, int32_t h, std::vector<uint8_t>& out) {
    const size_t W = size_t(w), H = size_t(h), n = W * H;
    out.resize(packed_bytes(p, w, h));
    if (p == Packing::kUyvy) {
        const size_t cw = (W + 1) / 2;
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
    for (size_t i = 0; i < n; ++i) {
        yuv_to_rgb(planar[i], planar[n + i], planar[2 * n + i], &out[i * step]);
        if (step == 4) out[i * 4 + 3] = planar[3 * n + i];
    }
}

const OutFormat& pick_format(const std::string& asked, const Variant& v, bool y4m) {
    if (!asked.empty()) {
        for (const OutFormat& f : kFormats)
            if (asked == f.name) {
                if (y4m && !f.y4m)
                    throw UserError("--format " + asked + " has no YUV4MPEG2 form; write a raw file instead");
                return f;
            }
        throw UserError("--format " + asked + ": use yuv420p, yuv422p, yuv444p, yuva444p, uyvy, rgb24 or rgba");
    }
    // YUV4MPEG2 carries alpha only at 4:4:4, so alpha streams go out that way.
    if (y4m && v.alpha) return kFormats[3];
    for (const OutFormat& f : kFormats)
        if (f.format == v.own) return f;
    return kFormats[0];
}

bool ends_with(const std::string& s, const std::string& tail) {
    return s.size() >= tail.size() && s.compare(s.size() - tail.size(), tail.size(), tail) == 0;
}

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
    const int32_t threads = a.number("--threads", default_threads(), 1, 64);
    if (input == "-") throw UsageError("AVI input must be a file: its index and segments are read out of order");
    AviReader reader(input);
    const AviVideo& v = reader.video();
    const Variant* variant = find_variant(v.fourcc);
    if (!variant) throw UserError(input + ": holds " + fourcc_text(v.fourcc) + " video, not one of the Vantaro variants");
    const bool y4m = output == "-" || ends_with(output, ".y4m");
    if (ends_with(output, ".png")) throw UserError(output + ": PNG output is not available yet; write .y4m or raw");
    const OutFormat& fmt = pick_format(a.value("--format"), *variant, y4m);
    size_t first = 0, last = 0;
    if (reader.frames().empty()) throw UserError(input + ": holds no frames");
    parse_range(a.value("--frames"), reader.frames().size(), first, last);

    const int32_t w = v.display_width, h = v.display_height;
    const size_t picture_bytes = vantaro_picture_size(fmt.format, w, h);
    if (!picture_bytes) throw UserError(input + ": " + std::to_string(w) + "x" + std::to_string(h) + " is not a size Vantaro decodes");
    Decoders dec;
    dec.handles.assign(static_cast<size_t>(threads), nullptr);
    vantaro_options options;
    vantaro_options_default(&options);
    for (auto*& handle : dec.handles) {
        const vantaro_status s = vantaro_decoder_create(variant->fourcc, w, h, &options, &handle);
        if (s != VANTARO_OK) throw UserError(input + ": cannot decode: " + status_text(s));
    }

    OutputFile out(output);
    Y4mFormat yf;
    yf.width = w;
    yf.height = h;
    yf.rate = v.rate ? v.rate : 25;
    yf.scale = v.scale ? v.scale : 1;
    yf.interlaced = v.interlaced;
    yf.top_field_first = v.top_field_first;
    yf.chroma = fmt.chroma;
    std::unique_ptr<Y4mWriter> y4m_writer;
    if (y4m) y4m_writer = std::make_unique<Y4mWriter>(out.file(), yf);

    Progress progress(a.flag("--quiet"), last - first + 1);
    std::vector<std::vector<uint8_t>> coded(static_cast<size_t>(threads)), pictures(static_cast<size_t>(threads), std::vector<uint8_t>(picture_bytes));
    std::vector<std::string> problems(static_cast<size_t>(threads));
    std::vector<uint8_t> packed;
    size_t damaged = 0;
    for (size_t base = first; base <= last; base += size_t(threads)) {
        const size_t n = std::min(static_cast<size_t>(threads), last + 1 - base);
        for (size_t i = 0; i < n; ++i) {
            problems[i].clear();
            if (!reader.read_frame(base + i, coded[i])) problems[i] = "cut short";
        }
        run_batch(threads, n, [&](size_t, size_t i) {
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
            if (y4m_writer) y4m_writer->write(pictures[i].data());
            else if (fmt.packing != Packing::kNone) {
                pack(fmt.packing, pictures[i], w, h, packed);
                out.file().write(packed.data(), packed.size());
            } else out.file().write(pictures[i].data(), pictures[i].size());
            progress.frame_done(coded[i].size());
        }
    }
    out.commit();
    progress.finish("decoded", uint64_t(w) * uint64_t(h));
    if (reader.truncated()) std::fprintf(stderr, "vantaro: %s: the file is cut short; decoded the frames it holds\n", input.c_str());
    return damaged || reader.truncated() ? 3 : 0;
}

}  // namespace vantaro::tool
