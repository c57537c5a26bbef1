// vantaro encode: YUV4MPEG2 frames or PNG pictures in, an AVI of one variant
// out, several frames in flight, written in order so every thread count gives
// one file.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "avi/avi.h"
#include "avi/riff.h"
#include "commands/commands.h"
#include "commands/common.h"
#include "input/png_reader.h"
#include "input/y4m.h"

namespace vantaro::tool {

namespace {

uint32_t default_fourcc(Chroma c) {
    switch (c) {
        case Chroma::k420: return fourcc("VTQ0");
        case Chroma::k422: return fourcc("VTQ2");
        case Chroma::k444: return fourcc("VTQ4");
        case Chroma::k444Alpha: return fourcc("VTQ5");
    }
    return fourcc("VTQ0");
}

vantaro_format planar(Chroma c) {
    switch (c) {
        case Chroma::k420: return VANTARO_FORMAT_YUV420P;
        case Chroma::k422: return VANTARO_FORMAT_YUV422P;
        case Chroma::k444: return VANTARO_FORMAT_YUV444P;
        case Chroma::k444Alpha: return VANTARO_FORMAT_YUVA444P;
    }
    return VANTARO_FORMAT_YUV420P;
}

// PNG by a number field or the name's ending, else by the signature of a
// plain file; standard input is peeked at without taking the byte, and pipes
// (<(command), FIFOs) are never read ahead: they are YUV4MPEG2.
bool png_input(const std::string& name) {
    static const uint8_t kSignature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    if (name == "-") {
        const int c = std::fgetc(stdin);
        return c != EOF && std::ungetc(c, stdin) == kSignature[0];
    }
    if (NumberPattern::is_pattern(name) || ends_with_nocase(name, ".png")) return true;
    std::error_code ec;
    if (ends_with_nocase(name, ".y4m") || !std::filesystem::is_regular_file(name, ec)) return false;
    uint8_t head[8] = {};
    File f = File::open_read(name);
    return f.read_some(head, 8) == 8 && std::equal(head, head + 8, kSignature);
}

// Frames in planar Y'CbCr from either kind of input; `total` is 0 when the
// count is unknown (a pipe), an estimate for a Y4M file. read(frame, i) runs
// in order and takes what must come in order (Y4M bytes); prepare(frame, i)
// runs side by side and does the rest (PNG decoding and colour conversion).
struct Source {
    Y4mFormat format;
    uint64_t total = 0;
    std::function<bool(std::vector<uint8_t>&, uint64_t)> read;
    std::function<void(std::vector<uint8_t>&, uint64_t)> prepare;
    std::unique_ptr<PngSequence> png;
    std::unique_ptr<File> file;
    std::unique_ptr<Y4mReader> y4m;
};

void open_source(const std::string& input, Source& s) {
    if (png_input(input)) {
        s.png = std::make_unique<PngSequence>(input);
        s.format = s.png->format();
        s.total = s.png->count();
        s.read = [n = s.total](std::vector<uint8_t>&, uint64_t i) { return i < n; };
        s.prepare = [p = s.png.get()](std::vector<uint8_t>& f, uint64_t i) { p->load(i, f); };
        return;
    }
    s.file = std::make_unique<File>(File::open_read(input));
    s.y4m = std::make_unique<Y4mReader>(*s.file);
    s.format = s.y4m->format();
    const uint64_t size = s.file->size(), at = s.file->tell();
    if (size > at) s.total = (size - at) / (s.format.frame_bytes() + 6);  // "FRAME\n" and the samples
    s.read = [r = s.y4m.get()](std::vector<uint8_t>& f, uint64_t) { return r->read(f); };
    s.prepare = [](std::vector<uint8_t>&, uint64_t) {};
}

// --rate 30000:1001 or --rate 25
void apply_rate(const std::string& text, Y4mFormat& f) {
    if (text.empty()) return;
    char* end = nullptr;
    const unsigned long long n = std::strtoull(text.c_str(), &end, 10);
    unsigned long long d = 1;
    if (*end == ':') d = std::strtoull(end + 1, &end, 10);
    if (*end || !n || !d || n > 0xffffffffull || d > 0xffffffffull)
        throw UserError("--rate " + text + ": expected frames a second as N or N:D, such as 25 or 30000:1001");
    f.rate = uint32_t(n);
    f.scale = uint32_t(d);
}

AviVideo avi_video(const Y4mFormat& f, const Variant& variant, const std::string& input) {
    AviVideo video;
    video.fourcc = variant.fourcc;
    if (vantaro_coded_size(f.width, f.height, &video.coded_width, &video.coded_height) != VANTARO_OK)
        throw UserError(input + ": the picture size is not supported");
    video.display_width = f.width;
    video.display_height = f.height;
    video.rate = f.rate;
    video.scale = f.scale;
    // The codec always codes two fields; progressive input says so in vprp.
    video.interlaced = f.interlaced;
    video.top_field_first = f.top_field_first;
    video.bit_count = variant.alpha ? 32 : 24;
    video.size_image = uint32_t(vantaro_frame_bound(variant.fourcc, f.width, f.height));
    return video;
}

// One encoder a worker; frames run side by side, not slices within one.
struct Encoders {
    std::vector<vantaro_encoder*> handles;
    Encoders(const Variant& variant, const Y4mFormat& f, int32_t quality, size_t count, const std::string& input)
        : handles(count, nullptr) {
        vantaro_options options;
        vantaro_options_default(&options);
        options.threads = 1;
        for (auto*& h : handles) {
            const vantaro_status s = vantaro_encoder_create(variant.fourcc, f.width, f.height, quality, &options, &h);
            if (s != VANTARO_OK) throw UserError(input + ": cannot encode as " + variant.name + ": " + status_text(s));
        }
    }
    ~Encoders() {
        for (auto* h : handles) vantaro_encoder_destroy(h);
    }
};

}  // namespace

int encode_command(int argc, char** argv) {
    const Args a = parse_args(argc, argv, {"--quiet"}, {"-o", "--fourcc", "--quality", "--threads", "--rate"});
    if (a.positional.size() != 1 || a.value("-o").empty())
        throw UsageError("usage: vantaro encode INPUT -o OUTPUT.avi [--fourcc VTQ2] [--quality 96] [--threads N]");
    const std::string input = a.positional[0];
    if (a.value("-o") == "-")
        throw UsageError("AVI output must be a file: its sizes and indexes are written once the frames are in");
    const int32_t quality = a.number("--quality", 96, 1, 99);
    const size_t threads = size_t(a.number("--threads", default_threads(), 1, 64));

    Source src;
    open_source(input, src);
    Y4mFormat& f = src.format;
    apply_rate(a.value("--rate"), f);
    const uint32_t code = a.value("--fourcc").empty() ? default_fourcc(f.chroma) : parse_fourcc(a.value("--fourcc"));
    const Variant& variant = *find_variant(code);
    const AviVideo video = avi_video(f, variant, input);

    Encoders enc(variant, f, quality, threads, input);

    OutputFile out(a.value("-o"));
    AviWriter writer(out.file(), video);
    Progress progress(a.flag("--quiet"), src.total);
    // Each worker holds one frame and its coded form: memory stays at
    // `threads` frames whatever the length.
    std::vector<std::vector<uint8_t>> frames(threads), coded(threads, std::vector<uint8_t>(video.size_image));
    std::vector<size_t> lengths(threads);
    std::vector<vantaro_status> statuses(threads);
    uint64_t index = 0;
    run_pipeline(
        threads, [&](size_t slot, uint64_t i) { return src.read(frames[slot], i); },
        [&](size_t slot, uint64_t i) {
            src.prepare(frames[slot], i);
            vantaro_picture pic;
            statuses[slot] = vantaro_picture_fill(&pic, planar(f.chroma), f.width, f.height, frames[slot].data(),
                                                  frames[slot].size());
            if (statuses[slot] == VANTARO_OK)
                statuses[slot] = vantaro_encode(enc.handles[slot], &pic, coded[slot].data(), coded[slot].size(),
                                                &lengths[slot]);
        },
        [&](size_t slot, uint64_t i) {
            if (statuses[slot] != VANTARO_OK)
                throw UserError(input + ": frame " + std::to_string(i) + ": " + status_text(statuses[slot]));
            writer.add_frame(coded[slot].data(), uint32_t(lengths[slot]));
            progress.frame_done(lengths[slot]);
            index = i + 1;
        });
    if (index == 0) throw UserError(input + ": holds no frames");
    writer.finish();
    out.commit();
    progress.finish("encoded", uint64_t(f.width) * uint64_t(f.height));
    return 0;
}

}  // namespace vantaro::tool
