// vantaro info: what an AVI holds, frame by frame, from the headers alone.
#include <cstdio>

#include "avi/avi.h"
#include "avi/riff.h"
#include "commands/commands.h"
#include "commands/common.h"

namespace vantaro::tool {

namespace {

std::string json_string(const std::string& s) {
    std::string out = "\"";
    for (char c : s) {
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    return out + '"';
}

}  // namespace

int info_command(int argc, char** argv) {
    const Args a = parse_args(argc, argv, {"--json"}, {});
    if (a.positional.size() != 1) throw UsageError("usage: vantaro info INPUT.avi [--json]");
    const std::string input = a.positional[0];
    AviReader reader(input);
    const AviVideo& v = reader.video();
    const Variant* variant = find_variant(v.fourcc);
    const bool json = a.flag("--json");
    const std::string name = fourcc_text(v.fourcc);
    const double fps = v.scale ? double(v.rate) / v.scale : 0.0;
    std::printf(json ? "{\"file\": %s, \"fourcc\": \"%s\", \"chroma\": \"%s\", \"alpha\": %s, "
                       "\"width\": %d, \"height\": %d, \"coded_width\": %d, \"coded_height\": %d, "
                       "\"frames\": %zu, \"rate\": %u, \"scale\": %u, \"fps\": %.6g, \"interlaced\": %s, "
                       "\"top_field_first\": %s, \"truncated\": %s, \"frame_list\": ["
                     : "%s: %s (%s%s), %dx%d (coded %dx%d), %zu frames at %u/%u = %.6g fps, %s%s%s\n",
                json ? json_string(input).c_str() : input.c_str(), name.c_str(),
                variant ? variant->chroma : "unknown", json ? (variant && variant->alpha ? "true" : "false")
                                                          : (variant && variant->alpha ? " with alpha" : ""),
                v.display_width, v.display_height, v.coded_width, v.coded_height, reader.frames().size(), v.rate,
                v.scale, fps, json ? (v.interlaced ? "true" : "false") : (v.interlaced ? "interlaced" : "progressive"),
                json ? (v.top_field_first ? "true" : "false") : (v.interlaced ? (v.top_field_first ? ", top field first" : ", bottom field first") : ""),
                json ? (reader.truncated() ? "true" : "false") : (reader.truncated() ? ", file cut short" : ""));
    if (!json) std::printf("frame      bytes quality  slice lengths (field 1 | field 2)           header\n");
    std::vector<uint8_t> data;
    size_t bad = 0;
    for (size_t i = 0; i < reader.frames().size(); ++i) {
        vantaro_frame_info fi{};
        vantaro_status s = VANTARO_ERROR_TRUNCATED;
        if (reader.read_frame(i, data)) s = vantaro_frame_inspect(data.data(), data.size(), &fi);
        bad += s != VANTARO_OK;
        const std::string verdict = s == VANTARO_OK ? "consistent" : status_text(s);
        if (json) {
            std::printf("%s\n  {\"index\": %zu, \"bytes\": %zu, \"quality\": %u, \"second_field_offset\": %u, "
                        "\"slice_lengths\": [%u, %u, %u, %u, %u, %u, %u, %u], \"consistent\": %s}",
                        i ? "," : "", i, data.size(), fi.quality, fi.second_field_offset, fi.slice_lengths[0],
                        fi.slice_lengths[1], fi.slice_lengths[2], fi.slice_lengths[3], fi.slice_lengths[4],
                        fi.slice_lengths[5], fi.slice_lengths[6], fi.slice_lengths[7], s == VANTARO_OK ? "true" : "false");
        } else {
            std::printf("%5zu %10zu %7u  %u %u %u %u | %u %u %u %u  %s\n", i, data.size(), fi.quality,
                        fi.slice_lengths[0], fi.slice_lengths[1], fi.slice_lengths[2], fi.slice_lengths[3],
                        fi.slice_lengths[4], fi.slice_lengths[5], fi.slice_lengths[6], fi.slice_lengths[7], verdict.c_str());
        }
    }
    if (json) std::printf("\n], \"inconsistent_frames\": %zu}\n", bad);
    else std::printf("%zu of %zu frames inconsistent\n", bad, reader.frames().size());
    return bad || reader.truncated() ? 3 : 0;
}

}  // namespace vantaro::tool
