#include "commands/common.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <unistd.h>

#include "avi/riff.h"
#include "io/file.h"

namespace vantaro::tool {

const std::vector<Variant>& variants() {
    static const std::vector<Variant> table = {
        {"VTQ0", fourcc("VTQ0"), "4:2:0", false, VANTARO_FORMAT_YUV420P},
        {"VTQ1", fourcc("VTQ1"), "4:2:0", true, VANTARO_FORMAT_YUVA420P},
        {"VTQ2", fourcc("VTQ2"), "4:2:2", false, VANTARO_FORMAT_YUV422P},
        {"VTQ3", fourcc("VTQ3"), "4:2:2", true, VANTARO_FORMAT_YUVA422P},
        {"VTQ4", fourcc("VTQ4"), "4:4:4", false, VANTARO_FORMAT_YUV444P},
        {"VTQ5", fourcc("VTQ5"), "4:4:4", true, VANTARO_FORMAT_YUVA444P},
        {"VTQ7", fourcc("VTQ7"), "4:2:2", true, VANTARO_FORMAT_YUVA422P},
        {"VTQ9", fourcc("VTQ9"), "4:4:4", true, VANTARO_FORMAT_YUVA444P},
    };
    return table;
}

const Variant* find_variant(uint32_t code) {
    for (const Variant& v : variants())
        if (v.fourcc == fourcc_upper(code)) return &v;
    return nullptr;
}

uint32_t parse_fourcc(const std::string& text) {
    if (text.size() == 4) {
        const uint32_t code = fourcc_upper(uint32_t(uint8_t(text[0])) | uint32_t(uint8_t(text[1])) << 8 |
                                           uint32_t(uint8_t(text[2])) << 16 | uint32_t(uint8_t(text[3])) << 24);
        if (find_variant(code)) return code;
    }
    throw UserError("--fourcc " + text + ": not a Vantaro variant; use VTQ0, VTQ1, VTQ2, VTQ3, VTQ4, VTQ5, VTQ7 or VTQ9");
}

bool Args::flag(const std::string& name) const {
    for (const auto& o : options)
        if (o.first == name) return true;
    return false;
}

std::string Args::value(const std::string& name, const std::string& fallback) const {
    for (const auto& o : options)
        if (o.first == name) return o.second;
    return fallback;
}

int32_t Args::number(const std::string& name, int32_t fallback, int32_t low, int32_t high) const {
    const std::string v = value(name);
    if (v.empty()) return fallback;
    char* end = nullptr;
    const long n = std::strtol(v.c_str(), &end, 10);
    if (*end || n < low || n > high)
        throw UserError(name + " " + v + ": expected a whole number from " + std::to_string(low) + " to " +
                        std::to_string(high));
    return int32_t(n);
}

Args parse_args(int argc, char** argv, const std::vector<std::string>& flags,
                const std::vector<std::string>& valued) {
    Args a;
    auto listed = [](const std::vector<std::string>& list, const std::string& s) {
        for (const auto& x : list)
            if (x == s) return true;
        return false;
    };
    for (int i = 0; i < argc; ++i) {
        std::string s = argv[i];
        const size_t equals = s.find('=');
        if (s.size() > 2 && s[0] == '-' && s[1] == '-' && equals != std::string::npos &&
            listed(valued, s.substr(0, equals))) {
            a.options.emplace_back(s.substr(0, equals), s.substr(equals + 1));  // --quality=90
        } else if (s.size() > 1 && s[0] == '-') {
            if (listed(flags, s)) {
                a.options.emplace_back(s, "");
            } else if (listed(valued, s)) {
                if (i + 1 >= argc) throw UserError(s + " needs a value");
                a.options.emplace_back(s, argv[++i]);
            } else {
                throw UserError("unknown option " + s + " (see --help)");
            }
        } else {
            a.positional.push_back(s);
        }
    }
    return a;
}

int32_t default_threads() {
    // The cores, within what --threads accepts: each worker holds a frame.
    const unsigned n = std::thread::hardware_concurrency();
    return n ? int32_t(std::min(n, 64u)) : 1;
}

void run_batch(int32_t threads, size_t count, const std::function<void(size_t, size_t)>& work) {
    if (threads <= 1 || count <= 1) {
        for (size_t i = 0; i < count; ++i) work(0, i);
        return;
    }
    std::vector<std::thread> pool;
    const size_t n = std::min(size_t(threads), count);
    for (size_t slot = 0; slot < n; ++slot)
        pool.emplace_back([&, slot] {
            for (size_t i = slot; i < count; i += n) work(slot, i);
        });
    for (auto& t : pool) t.join();
}

Progress::Progress(bool quiet, uint64_t total)
    : show_(!quiet && isatty(2)), total_(total), start_(std::chrono::steady_clock::now()), last_(start_) {
    quiet_ = quiet;
}

void Progress::frame_done(uint64_t bytes) {
    ++frames_;
    bytes_ += bytes;
    if (!show_) return;
    const auto now = std::chrono::steady_clock::now();
    const double run = std::chrono::duration<double>(now - start_).count();
    if (run < 1.0 || now - last_ < std::chrono::milliseconds(250)) return;
    last_ = now;
    shown_ = true;
    const double fps = frames_ / run;
    // A Y4M file's total is an estimate (FRAME lines may carry parameters):
    // past it, the count goes on alone.
    const bool known = total_ >= frames_;
    std::fprintf(stderr, "\r%llu", (unsigned long long)frames_);
    if (known && total_) std::fprintf(stderr, "/%llu", (unsigned long long)total_);
    std::fprintf(stderr, " frames, %.1f fps", fps);
    if (known && total_ && fps > 0) std::fprintf(stderr, ", ETA %.0f s", double(total_ - frames_) / fps);
    std::fprintf(stderr, "   ");
}

void Progress::finish(const std::string& verb, uint64_t pixels) {
    if (shown_) std::fprintf(stderr, "\n");
    if (quiet_) return;
    const double run = std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    const double bpp = frames_ && pixels ? 8.0 * double(bytes_) / double(frames_ * pixels) : 0.0;
    std::fprintf(stderr, "%s %llu frames, %llu bytes, %.2f bits/pixel, %.1f fps\n", verb.c_str(),
                 (unsigned long long)frames_, (unsigned long long)bytes_, bpp, run > 0 ? frames_ / run : 0.0);
}

bool ends_with_nocase(const std::string& s, const std::string& tail) {
    if (s.size() < tail.size()) return false;
    for (size_t i = 0; i < tail.size(); ++i)
        if (std::tolower(uint8_t(s[s.size() - tail.size() + i])) != tail[i]) return false;
    return true;
}

std::string status_text(vantaro_status s) { return vantaro_status_string(s); }

}  // namespace vantaro::tool
