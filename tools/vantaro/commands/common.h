// What the subcommands share: the variant table, option parsing, a batch of
// frames worked on side by side, and the progress and summary lines.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "convert/colour.h"
#include "io/pipeline.h"
#include "vantaro/vantaro.h"

namespace vantaro::tool {

struct Variant {
    const char* name;
    uint32_t fourcc;
    const char* chroma;        // "4:2:0" and so on
    bool alpha;
    vantaro_format own;        // the planar format of the stream's own sampling
};

// Null for a FourCC outside the eight variants (either case).
const Variant* find_variant(uint32_t fourcc);
const std::vector<Variant>& variants();
uint32_t parse_fourcc(const std::string& text);  // throws UserError

// Options after the subcommand: positional arguments and --name value pairs.
struct Args {
    std::vector<std::string> positional;
    std::vector<std::pair<std::string, std::string>> options;
    bool flag(const std::string& name) const;
    std::string value(const std::string& name, const std::string& fallback = "") const;
    int32_t number(const std::string& name, int32_t fallback, int32_t low, int32_t high) const;
};
// `flags` take no value; every other --option takes the next argument, or
// the text after "=" (--quality=90).
Args parse_args(int argc, char** argv, const std::vector<std::string>& flags,
                const std::vector<std::string>& valued);

int32_t default_threads();

// Runs work(slot, i) for i in [0, count) with at most `threads` at a time,
// slot < threads naming the worker's own handles.
void run_batch(int32_t threads, size_t count, const std::function<void(size_t, size_t)>& work);

// Progress on a terminal once a job has run a second, then a summary line;
// `total_frames` is 0 when unknown, and may be an estimate.
class Progress {
public:
    Progress(bool quiet, uint64_t total_frames);
    void frame_done(uint64_t bytes);
    void finish(const std::string& verb, uint64_t pixels_per_frame);

private:
    bool show_;
    bool shown_ = false;
    bool quiet_ = false;
    uint64_t total_, frames_ = 0, bytes_ = 0;
    std::chrono::steady_clock::time_point start_, last_;
};

std::string status_text(vantaro_status s);

// `tail` in lower case: ".png" matches "shot.PNG".
bool ends_with_nocase(const std::string& s, const std::string& tail);

}  // namespace vantaro::tool
