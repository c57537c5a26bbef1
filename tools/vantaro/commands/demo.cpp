// vantaro demo: a synthetic 1080-line interlaced sequence through all eight
// variants, one table of size, quality and speed, demo.avi (VTQ2) and a
// contact sheet of one decoded frame per variant.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "avi/avi.h"
#include "avi/riff.h"
#include "commands/commands.h"
#include "commands/common.h"
#include "output/png_writer.h"

namespace vantaro::tool {

namespace {

constexpr int32_t kWidth = 1920, kHeight = 1080, kFrames = 4;

// One YUVA 4:4:4 frame. Each field is sampled at its own instant, so motion
// combs between lines as interlaced footage does.
std::vector<uint8_t> synthesise(int frame) {
    const size_t plane = size_t(kWidth) * kHeight;
    std::vector<uint8_t> px(4 * plane);
    uint8_t *Y = px.data(), *U = Y + plane, *V = U + plane, *A = V + plane;
    static const uint8_t bars[8][3] = {{235, 128, 128}, {210, 16, 146}, {170, 166, 16}, {145, 54, 34},
                                       {106, 202, 222}, {81, 90, 240},  {41, 240, 110}, {16, 128, 128}};
    for (int32_t y = 0; y < kHeight; ++y) {
        const double t = frame * 2 + (y & 1);  // field time
        for (int32_t x = 0; x < kWidth; ++x) {
            const size_t i = size_t(y) * kWidth + size_t(x);
            uint8_t l, u, v;
            if (y < kHeight / 4) {  // colour bars
                const uint8_t* b = bars[x * 8 / kWidth];
                l = b[0], u = b[1], v = b[2];
            } else if (x < kWidth / 2 && y < kHeight * 3 / 4) {  // zone plate
                const double dx = x - kWidth / 4.0, dy = y - kHeight / 2.0;
                l = uint8_t(126 + 90 * std::cos((dx * dx + dy * dy) * 0.0009 + t * 0.3));
                u = uint8_t(128 + 20 * std::sin(dx * 0.01));
                v = uint8_t(128 + 20 * std::cos(dy * 0.01));
            } else if (y < kHeight * 3 / 4) {  // fine text-like detail on a moving gradient
                const int32_t gx = (x + int32_t(t * 6)) % 12, gy = y % 16;
                const bool ink = gy > 3 && gy < 12 && (gx == 2 || ((x * 7 + y / 16 * 13) % 5 == 0 && gx < 8));
                l = ink ? 30 : uint8_t(120 + (x + int32_t(t * 8)) % 100);
                u = uint8_t(100 + y % 56);
                v = uint8_t(150 - x % 40);
            } else {  // moving gradients
                l = uint8_t(16 + ((x + int32_t(t * 12)) * 219 / kWidth) % 220);
                u = uint8_t(16 + (y * 224 / kHeight));
                v = uint8_t(240 - ((x + int32_t(t * 4)) * 224 / kWidth) % 225);
            }
            Y[i] = l, U[i] = u, V[i] = v;
            const double dx = x - kWidth * (0.5 + 0.02 * t), dy = y - kHeight / 2.0;
            const double r = std::sqrt(dx * dx + dy * dy) / 500.0;  // soft round matte
            A[i] = uint8_t(r < 0.6 ? 255 : r > 1.0 ? 0 : 255 * (1.0 - r) / 0.4);
        }
    }
    return px;
}

double psnr(const uint8_t* a, const uint8_t* b, size_t n) {
    double sum = 0;
    for (size_t i = 0; i < n; ++i) sum += double(int(a[i]) - int(b[i])) * (int(a[i]) - int(b[i]));
    if (sum == 0) return 99.99;
    return 10.0 * std::log10(255.0 * 255.0 * double(n) / sum);
}

double seconds_since(std::chrono::steady_clock::time_point t) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - t).count();
}

void check(vantaro_status s, const char* what) {
    if (s != VANTARO_OK) throw UserError(std::string("demo: ") + what + ": " + status_text(s));
}

}  // namespace

int demo_command(int argc, char** argv) {
    const Args a = parse_args(argc, argv, {"--quiet"}, {"--threads"});
    const int32_t threads = a.number("--threads", default_threads(), 1, 64);
    std::vector<std::vector<uint8_t>> source(kFrames);
    run_batch(threads, kFrames, [&](size_t, size_t i) { source[i] = synthesise(int(i)); });

    const size_t plane = size_t(kWidth) * kHeight, sheet_w = kWidth, sheet_h = kHeight / 2;
    std::vector<uint8_t> sheet(sheet_w * sheet_h * 3);
    std::printf("%d frames of %dx%d interlaced, quality 96, %d threads; PSNR against the 4:4:4 source\n", kFrames,
                kWidth, kHeight, threads);
    std::printf("variant  bytes/frame  bits/pixel  PSNR Y   U      V      A       enc fps  dec fps\n");
    OutputFile avi_out("demo.avi");
    for (size_t vi = 0; vi < variants().size(); ++vi) {
        const Variant& v = variants()[vi];
        const size_t bound = vantaro_frame_bound(v.fourcc, kWidth, kHeight);
        std::vector<std::vector<uint8_t>> coded(kFrames, std::vector<uint8_t>(bound));
        std::vector<size_t> lengths(kFrames);
        std::vector<std::vector<uint8_t>> decoded(kFrames, std::vector<uint8_t>(4 * plane));
        std::vector<vantaro_status> st(kFrames, VANTARO_OK);
        auto start = std::chrono::steady_clock::now();
        run_batch(threads, kFrames, [&](size_t, size_t i) {
            vantaro_encoder* enc = nullptr;
            vantaro_picture pic;
            st[i] = vantaro_encoder_create(v.fourcc, kWidth, kHeight, 96, nullptr, &enc);
            if (st[i] == VANTARO_OK) st[i] = vantaro_picture_fill(&pic, VANTARO_FORMAT_YUVA444P, kWidth, kHeight, source[i].data(), source[i].size());
            if (st[i] == VANTARO_OK) st[i] = vantaro_encode(enc, &pic, coded[i].data(), bound, &lengths[i]);
            vantaro_encoder_destroy(enc);
        });
        const double enc_s = seconds_since(start);
        for (auto s : st) check(s, "encode");
        start = std::chrono::steady_clock::now();
        run_batch(threads, kFrames, [&](size_t, size_t i) {
            vantaro_decoder* dec = nullptr;
            vantaro_picture pic;
            st[i] = vantaro_decoder_create(v.fourcc, kWidth, kHeight, nullptr, &dec);
            if (st[i] == VANTARO_OK) st[i] = vantaro_picture_fill(&pic, VANTARO_FORMAT_YUVA444P, kWidth, kHeight, decoded[i].data(), decoded[i].size());
            if (st[i] == VANTARO_OK) st[i] = vantaro_decode(dec, coded[i].data(), lengths[i], &pic, nullptr);
            vantaro_decoder_destroy(dec);
        });
        const double dec_s = seconds_since(start);
        for (auto s : st) check(s, "decode");

        double bytes = 0, p[4] = {0, 0, 0, 0};
        for (int i = 0; i < kFrames; ++i) {
            bytes += double(lengths[size_t(i)]);
            for (int c = 0; c < 4; ++c) p[c] += psnr(source[size_t(i)].data() + size_t(c) * plane, decoded[size_t(i)].data() + size_t(c) * plane, plane) / kFrames;
        }
        bytes /= kFrames;
        char alpha[16] = "  -   ";
        if (v.alpha) std::snprintf(alpha, sizeof alpha, "%6.2f", p[3]);
        std::printf("%-7s  %11.0f  %10.2f  %6.2f %6.2f %6.2f %s  %7.1f  %7.1f\n", v.name, bytes, 8 * bytes / double(plane),
                    p[0], p[1], p[2], alpha, kFrames / enc_s, kFrames / dec_s);

        if (v.fourcc == fourcc("VTQ2")) {
            AviVideo video;
            video.fourcc = v.fourcc;
            vantaro_coded_size(kWidth, kHeight, &video.coded_width, &video.coded_height);
            video.display_width = kWidth;
            video.display_height = kHeight;
            video.rate = 25;
            video.size_image = uint32_t(bound);
            AviWriter writer(avi_out.file(), video);
            for (int i = 0; i < kFrames; ++i) writer.add_frame(coded[size_t(i)].data(), uint32_t(lengths[size_t(i)]));
            writer.finish();
        }
        // Contact sheet: frame 0 at a quarter size, four variants a row.
        const uint8_t* yuv = decoded[0].data();
        const size_t ox = (vi % 4) * (kWidth / 4), oy = (vi / 4) * (kHeight / 4);
        for (size_t y = 0; y < size_t(kHeight) / 4; ++y)
            for (size_t x = 0; x < size_t(kWidth) / 4; ++x) {
                double m[3] = {0, 0, 0};
                for (size_t dy = 0; dy < 4; ++dy)
                    for (size_t dx = 0; dx < 4; ++dx)
                        for (int c = 0; c < 3; ++c) m[c] += yuv[size_t(c) * plane + (y * 4 + dy) * kWidth + x * 4 + dx] / 16.0;
                yuv_to_rgb(uint8_t(m[0] + 0.5), uint8_t(m[1] + 0.5), uint8_t(m[2] + 0.5),
                           &sheet[((oy + y) * sheet_w + ox + x) * 3]);
            }
    }
    avi_out.commit();
    OutputFile png_out("demo_sheet.png");
    write_png(png_out.file(), sheet.data(), int32_t(sheet_w), int32_t(sheet_h), 3);
    png_out.commit();
    std::printf("wrote demo.avi (VTQ2) and demo_sheet.png (frame 0 of each variant, VTQ0..VTQ9 left to right, top to bottom)\n");
    return 0;
}

}  // namespace vantaro::tool
