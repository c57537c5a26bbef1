// vantaro bench: encode and decode speed and bits a pixel, per variant, on
// the shared 1080-line photographs or the user's own PNG or Y4M picture,
// through the library's own planar door. The source is put in each
// variant's own sampling before timing, so only the codec is measured.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "commands/commands.h"
#include "commands/common.h"
#include "convert/colour.h"
#include "input/png_reader.h"
#include "input/y4m.h"

namespace vantaro::tool {

namespace {

// A picture as planar 4:4:4 with alpha: the one form every variant's own
// sampling is made from.
struct Source {
    std::string name;
    int32_t width = 0, height = 0;
    std::vector<uint8_t> y, u, v, a;
};

// Through the tool's PNG reader and its one colour matrix, as encode reads PNG.
Source read_png_source(const std::string& path) {
    const PngPicture png = read_png(path);
    Source s;
    s.name = path;
    s.width = png.width;
    s.height = png.height;
    const size_t n = size_t(png.width) * size_t(png.height);
    s.y.resize(n), s.u.resize(n), s.v.resize(n), s.a.assign(n, 255);
    const size_t ch = size_t(png.channels);
    for (size_t i = 0; i < n; ++i) {
        const uint8_t* px = &png.pixels[i * ch];
        const uint8_t rgb[3] = {px[0], ch >= 3 ? px[1] : px[0], ch >= 3 ? px[2] : px[0]};
        rgb_to_yuv(rgb, s.y[i], s.u[i], s.v[i]);
        if (ch == 2 || ch == 4) s.a[i] = px[ch - 1];
    }
    return s;
}

// The first frame of a YUV4MPEG2 file, its chroma repeated up to 4:4:4.
Source read_y4m_source(const std::string& path) {
    File in = File::open_read(path);
    Y4mReader reader(in);
    std::vector<uint8_t> frame;
    if (!reader.read(frame)) throw UserError(path + ": no frame");
    const Y4mFormat& f = reader.format();
    Source s;
    s.name = path;
    s.width = f.width;
    s.height = f.height;
    const size_t n = size_t(f.width) * size_t(f.height);
    const int32_t cw = f.chroma_width(), ch = f.chroma_height();
    const uint8_t* u = frame.data() + n;
    const uint8_t* v = u + size_t(cw) * size_t(ch);
    s.y.assign(frame.data(), frame.data() + n);
    s.u.resize(n), s.v.resize(n), s.a.assign(n, 255);
    for (int32_t row = 0; row < f.height; ++row)
        for (int32_t x = 0; x < f.width; ++x) {
            const size_t from = size_t(row * ch / f.height) * size_t(cw) + size_t(x * cw / f.width);
            s.u[size_t(row) * size_t(f.width) + size_t(x)] = u[from];
            s.v[size_t(row) * size_t(f.width) + size_t(x)] = v[from];
        }
    if (f.chroma == Chroma::k444Alpha) std::copy_n(v + n, n, s.a.begin());
    return s;
}

// The shared photographs, looked for where a checkout keeps them.
std::vector<std::string> default_inputs() {
    std::vector<std::string> dirs;
    if (const char* env = std::getenv("VANTARO_MEDIA_DIR")) dirs.emplace_back(env);
    for (const char* d : {"media", "../shared/media", "../../shared/media", "../../../shared/media"}) dirs.emplace_back(d);
    for (const std::string& d : dirs) {
        std::vector<std::string> found;
        for (const char* name : {"forest-path-1920x1080.png", "fallen-leaf-1920x1080.png"}) {
            const std::string path = d + "/" + name;
            if (std::FILE* f = std::fopen(path.c_str(), "rb")) {
                std::fclose(f);
                found.push_back(path);
            }
        }
        if (!found.empty()) return found;
    }
    throw UserError("no input given and the shared photographs were not found; name a PNG or Y4M file, "
                    "or set VANTARO_MEDIA_DIR");
}

// The source in `format`'s sampling: chroma averaged down by pairs.
struct Planar {
    std::vector<uint8_t> bytes;
    vantaro_picture picture{};
};

Planar make_planar(const Source& s, vantaro_format format) {
    Planar p;
    p.bytes.resize(vantaro_picture_size(format, s.width, s.height));
    if (vantaro_picture_fill(&p.picture, format, s.width, s.height, p.bytes.data(), p.bytes.size()) != VANTARO_OK)
        throw UserError("cannot lay out a picture of " + std::to_string(s.width) + "x" + std::to_string(s.height));
    const bool half_width = format != VANTARO_FORMAT_YUV444P && format != VANTARO_FORMAT_YUVA444P;
    const bool half_height = format == VANTARO_FORMAT_YUV420P || format == VANTARO_FORMAT_YUVA420P;
    const int32_t cw = half_width ? (s.width + 1) / 2 : s.width, ch = half_height ? (s.height + 1) / 2 : s.height;
    auto at = [&](const std::vector<uint8_t>& plane, int32_t x, int32_t y) {
        return plane[size_t(std::min(y, s.height - 1)) * size_t(s.width) + size_t(std::min(x, s.width - 1))];
    };
    for (int32_t y = 0; y < s.height; ++y) {
        std::copy_n(&s.y[size_t(y) * size_t(s.width)], s.width, p.picture.planes[0] + ptrdiff_t(y) * p.picture.strides[0]);
        if (p.picture.planes[3] != nullptr)
            std::copy_n(&s.a[size_t(y) * size_t(s.width)], s.width, p.picture.planes[3] + ptrdiff_t(y) * p.picture.strides[3]);
    }
    const int32_t sx = half_width ? 2 : 1, sy = half_height ? 2 : 1;
    for (int32_t y = 0; y < ch; ++y)
        for (int32_t x = 0; x < cw; ++x)
            for (int plane = 1; plane <= 2; ++plane) {
                const std::vector<uint8_t>& from = plane == 1 ? s.u : s.v;
                int32_t sum = 0;
                for (int32_t dy = 0; dy < sy; ++dy)
                    for (int32_t dx = 0; dx < sx; ++dx) sum += at(from, x * sx + dx, y * sy + dy);
                const int32_t count = sx * sy;
                p.picture.planes[plane][ptrdiff_t(y) * p.picture.strides[plane] + x] = uint8_t((sum + count / 2) / count);
            }
    return p;
}

std::string processor_name() {
    std::string name = "unknown processor";
    if (std::FILE* f = std::fopen("/proc/cpuinfo", "r")) {
        char line[512];
        while (std::fgets(line, sizeof line, f)) {
            const std::string s = line;
            if (s.rfind("model name", 0) == 0 && s.find(':') != std::string::npos) {
                name = s.substr(s.find(':') + 2);
                if (!name.empty() && name.back() == '\n') name.pop_back();
                break;
            }
        }
        std::fclose(f);
    }
    return name;
}

// Runs `work` until `seconds` have passed (at least 3 times); seconds per run.
template <class Work>
double time_runs(double seconds, Work&& work) {
    using clock = std::chrono::steady_clock;
    work();  // warm: tables built, caches filled
    int runs = 0;
    const auto start = clock::now();
    double elapsed = 0;
    do {
        work();
        ++runs;
        elapsed = std::chrono::duration<double>(clock::now() - start).count();
    } while (runs < 3 || elapsed < seconds);
    return elapsed / runs;
}

// Transform blocks in a 16x16 macroblock: luma, the variant's chroma, and
// transform-coded alpha (VTQ7, VTQ9).
int32_t blocks_per_macroblock(const Variant& v) {
    const int32_t chroma = v.chroma[2] == '0' ? 2 : v.chroma[2] == '2' ? 4 : 8;
    const bool dct_alpha = v.name[3] == '7' || v.name[3] == '9';
    return 4 + chroma + (dct_alpha ? 4 : 0);
}

void bench_variant(const Source& s, const Variant& v, const vantaro_options& options, int32_t quality, double seconds) {
    const Planar in = make_planar(s, v.own);
    Planar out = make_planar(s, v.own);
    vantaro_encoder* enc = nullptr;
    vantaro_decoder* dec = nullptr;
    vantaro_status st = vantaro_encoder_create(v.fourcc, s.width, s.height, quality, &options, &enc);
    if (st == VANTARO_OK) st = vantaro_decoder_create(v.fourcc, s.width, s.height, &options, &dec);
    std::vector<uint8_t> frame(vantaro_frame_bound(v.fourcc, s.width, s.height));
    size_t written = 0;
    auto encode = [&] {
        if (st == VANTARO_OK) st = vantaro_encode(enc, &in.picture, frame.data(), frame.size(), &written);
    };
    auto decode = [&] {
        if (st == VANTARO_OK) st = vantaro_decode(dec, frame.data(), written, &out.picture, nullptr);
    };
    const double encode_seconds = st == VANTARO_OK ? time_runs(seconds, encode) : 0;
    const double decode_seconds = st == VANTARO_OK ? time_runs(seconds, decode) : 0;
    vantaro_encoder_destroy(enc);
    vantaro_decoder_destroy(dec);
    if (st != VANTARO_OK) throw UserError(std::string(v.name) + ": " + status_text(st));
    const double pixels = double(s.width) * double(s.height);
    const double blocks = double((s.width + 15) / 16) * double((s.height + 15) / 16) * blocks_per_macroblock(v);
    std::printf("%-5s %-7s %9.1f %9.2f %9.1f %9.2f %10.3f\n", v.name, v.chroma, pixels / encode_seconds / 1e6,
                blocks / encode_seconds / 1e6, pixels / decode_seconds / 1e6, blocks / decode_seconds / 1e6,
                double(written) * 8.0 / pixels);
}

}  // namespace

int bench_command(int argc, char** argv) {
    const Args a = parse_args(argc, argv, {}, {"--fourcc", "--threads", "--quality", "--seconds", "--kernels"});
    if (a.positional.size() > 1) throw UsageError("bench takes at most one INPUT");
    std::vector<const Variant*> chosen;
    for (const auto& [name, value] : a.options) {
        if (name != "--fourcc") continue;
        for (size_t start = 0; start <= value.size();) {
            const size_t comma = std::min(value.find(',', start), value.size());
            chosen.push_back(find_variant(parse_fourcc(value.substr(start, comma - start))));
            start = comma + 1;
        }
    }
    if (chosen.empty())
        for (const Variant& v : variants()) chosen.push_back(&v);
    vantaro_options options;
    vantaro_options_default(&options);
    options.threads = a.number("--threads", 1, 1, 8);
    static constexpr const char* kKernelNames[] = {"auto", "scalar", "sse2", "avx2"};
    const std::string kernels = a.value("--kernels", "auto");
    const auto named = std::find(std::begin(kKernelNames), std::end(kKernelNames), kernels);
    if (named == std::end(kKernelNames)) throw UsageError("--kernels takes auto, scalar, sse2 or avx2");
    options.kernels = static_cast<vantaro_kernels>(named - std::begin(kKernelNames));
    const int32_t quality = a.number("--quality", 96, 1, 99);
    const double seconds = a.number("--seconds", 1, 1, 600);

    std::vector<Source> sources;
    for (const std::string& path : a.positional.empty() ? default_inputs() : a.positional) {
        const bool y4m = path.size() > 4 && path.compare(path.size() - 4, 4, ".y4m") == 0;
        sources.push_back(y4m ? read_y4m_source(path) : read_png_source(path));
    }
#if defined(NDEBUG)
    const char* build = "release (optimised)";
#else
    const char* build = "debug (unoptimised: figures not representative)";
#endif
    std::printf("processor: %s\nbuild:     %s\nkernels:   %s, threads %d, quality %d\n", processor_name().c_str(),
                build, kernels.c_str(), options.threads,
                quality);
    for (const Source& s : sources) {
        std::printf("\n%s (%dx%d)\n", s.name.c_str(), s.width, s.height);
        std::printf("%-5s %-7s %9s %9s %9s %9s %10s\n", "", "", "encode", "", "decode", "", "");
        std::printf("%-5s %-7s %9s %9s %9s %9s %10s\n", "", "", "Mpixel/s", "Mblock/s", "Mpixel/s", "Mblock/s",
                    "bits/pixel");
        for (const Variant* v : chosen) bench_variant(s, *v, options, quality, seconds);
    }
    return 0;
}

}  // namespace vantaro::tool
