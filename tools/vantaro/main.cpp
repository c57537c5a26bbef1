// vantaro: encode, decode and inspect Vantaro video from the command line.
#include <cstdio>
#include <cstring>
#include <string>

#include "commands/commands.h"

namespace {

const char kHelp[] =
    "usage: vantaro COMMAND ...\n"
    "\n"
    "  vantaro encode INPUT -o OUTPUT.avi [--fourcc VTQ2] [--quality 96] [--threads N] [--rate N:D] [--quiet]\n"
    "      INPUT: a YUV4MPEG2 file, 4:2:0 (any siting), 4:2:2, 4:4:4 or 4:4:4 with alpha;\n"
    "      a PNG picture (grey or RGB, with or without alpha); a numbered PNG sequence\n"
    "      such as shot_%04d.png (from 0 or 1 to the first gap); or - for standard input\n"
    "      (YUV4MPEG2, or one PNG).\n"
    "      The default FourCC follows the input: VTQ0, VTQ2, VTQ4, VTQ5 for Y4M 4:2:0,\n"
    "      4:2:2, 4:4:4, 4:4:4 with alpha; VTQ4 for PNG, VTQ5 for PNG with alpha.\n"
    "      Quality 1..99 (default 96). --rate sets frames a second (PNG default 25).\n"
    "  vantaro decode INPUT.avi -o OUTPUT [--format F] [--frames FIRST:LAST] [--threads N] [--quiet]\n"
    "      OUTPUT: .y4m or - (standard output) for YUV4MPEG2; .png for one picture, or a\n"
    "      pattern such as frame_%04d.png for one a frame (numbered as in the stream);\n"
    "      any other name for raw frames.\n"
    "      F: yuv420p, yuv422p, yuv444p, yuva444p, uyvy, rgb24, rgba; default the stream's\n"
    "      own sampling (YUV4MPEG2 output of an alpha stream: yuva444p, C444alpha; PNG:\n"
    "      rgb24, or rgba for an alpha stream).\n"
    "  vantaro info INPUT.avi [--json]\n"
    "      Variant, sizes, rate, and each frame's size, quality, slice lengths and header check.\n"
    "  vantaro demo [--threads N]\n"
    "      Synthesises a 1080-line interlaced sequence, runs it through all eight variants,\n"
    "      prints size, PSNR and speed, and writes demo.avi and demo_sheet.png here.\n"
    "  vantaro bench [INPUT] [--fourcc VTQ2,...] [--threads N] [--quality 96] [--seconds 1] [--kernels auto|scalar|sse2|avx2]\n"
    "      Encode and decode speed and bits a pixel per variant on a PNG or Y4M picture\n"
    "      (default: the shared 1080-line photographs); one thread unless --threads.\n"
    "\n"
    "--threads N (default: the number of cores) keeps N frames in flight; the output is the\n"
    "same at every thread count. Exit codes: 0 done, 1 error, 2 bad command line,\n"
    "3 done but some frames damaged.\n";

}  // namespace

int main(int argc, char** argv) {
    using namespace vantaro::tool;
    if (argc < 2 || !std::strcmp(argv[1], "--help") || !std::strcmp(argv[1], "-h") || !std::strcmp(argv[1], "help")) {
        std::fputs(kHelp, argc < 2 ? stderr : stdout);
        return argc < 2 ? 2 : 0;
    }
    const std::string command = argv[1];
    try {
        for (int i = 2; i < argc; ++i)
            if (!std::strcmp(argv[i], "--help")) {
                std::fputs(kHelp, stdout);
                return 0;
            }
        if (command == "encode") return encode_command(argc - 2, argv + 2);
        if (command == "decode") return decode_command(argc - 2, argv + 2);
        if (command == "info") return info_command(argc - 2, argv + 2);
        if (command == "demo") return demo_command(argc - 2, argv + 2);
        if (command == "bench") return bench_command(argc - 2, argv + 2);
        std::fprintf(stderr, "vantaro: unknown command '%s'; use encode, decode, info or demo (see vantaro --help)\n",
                     command.c_str());
        return 2;
    } catch (const UsageError& e) {
        std::fprintf(stderr, "vantaro %s: %s\n", command.c_str(), e.what());
        return 2;
    } catch (const UserError& e) {
        std::fprintf(stderr, "vantaro: %s\n", e.what());
        return 1;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "vantaro: %s\n", e.what());
        return 1;
    }
}
