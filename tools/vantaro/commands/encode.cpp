// vantaro encode: YUV4MPEG2 frames in, an AVI of one variant out, several
// frames in flight, written in order so every thread count gives one file.
#include <memory>

#include "avi/avi.h"
#include "avi/riff.h"
#include "commands/commands.h"
#include "commands/common.h"
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

struct Encoders {
    std::vector<vantaro_encoder*> handles;
    ~Encoders() {
        for (auto* h : handles) vantaro_encoder_destroy(h);
    }
};

}  // namespace

int encode_command(int argc, char** argv) {
    const Args a = parse_args(argc, argv, {"--quiet"}, {"-o", "--fourcc", "--quality", "--threads"});
    if (a.positional.size() != 1 || a.value("-o").empty())
        throw UsageError("usage: vantaro encode INPUT -o OUTPUT.avi [--fourcc VTQ2] [--quality 96] [--threads N]");
    const std::string input = a.positional[0];
    const int32_t quality = a.number("--quality", 96, 1, 99);
    const int32_t threads = a.number("--threads", default_threads(), 1, 64);

    File in = File::open_read(input);
    Y4mReader reader(in);
    const Y4mFormat& f = reader.format();
    const uint32_t code = a.value("--fourcc").empty() ? default_fourcc(f.chroma) : parse_fourcc(a.value("--fourcc"));
    const Variant& variant = *find_variant(code);

    AviVideo video;
    video.fourcc = code;
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
    const size_t bound = vantaro_frame_bound(code, f.width, f.height);
    video.size_image = uint32_t(bound);

    Encoders enc;
    vantaro_options options;
    vantaro_options_default(&options);
    options.threads = 1;  // parallel across frames, not within one
    enc.handles.assign(static_cast<size_t>(threads), nullptr);
    for (auto*& h : enc.handles) {
        const vantaro_status s = vantaro_encoder_create(code, f.width, f.height, quality, &options, &h);
        if (s != VANTARO_OK) throw UserError(input + ": cannot encode as " + variant.name + ": " + status_text(s));
    }

    OutputFile out(a.value("-o"));
    AviWriter writer(out.file(), video);
    Progress progress(a.flag("--quiet"), 0);
    std::vector<std::vector<uint8_t>> frames(static_cast<size_t>(threads)), coded(static_cast<size_t>(threads), std::vector<uint8_t>(bound));
    std::vector<size_t> lengths(static_cast<size_t>(threads));
    std::vector<vantaro_status> statuses(static_cast<size_t>(threads));
    uint64_t index = 0;
    for (;;) {
        size_t n = 0;
        while (n < frames.size() && reader.read(frames[n])) ++n;
        if (n == 0) break;
        run_batch(threads, n, [&](size_t slot, size_t i) {
            (void)slot;
            vantaro_picture pic;
            statuses[i] = vantaro_picture_fill(&pic, planar(f.chroma), f.width, f.height, frames[i].data(),
                                               frames[i].size());
            if (statuses[i] == VANTARO_OK)
                statuses[i] = vantaro_encode(enc.handles[i], &pic, coded[i].data(), coded[i].size(), &lengths[i]);
        });
        for (size_t i = 0; i < n; ++i, ++index) {
            if (statuses[i] != VANTARO_OK)
                throw UserError(input + ": frame " + std::to_string(index) + ": " + status_text(statuses[i]));
            writer.add_frame(coded[i].data(), uint32_t(lengths[i]));
            progress.frame_done(lengths[i]);
        }
    }
    writer.finish();
    out.commit();
    progress.finish("encoded", uint64_t(f.width) * uint64_t(f.height));
    return 0;
}

}  // namespace vantaro::tool
