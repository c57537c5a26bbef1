// The direct decoding functions, which take no length: they trust the
// extent the frame's header declares. Choice bytes pick the variant, the
// output layout, the size, frame or field calls, the line order of packed
// layouts and the kernels; the rest is a frame whose offsets and lengths are
// first fitted inside it, held in a heap block of exactly its size. The
// picture is sized as the decode tests size it: the chroma plane with room
// for the macroblock rows a partial last row reaches.
#include <vector>

#include "codec/kernels.h"
#include "fuzz_support.h"

using namespace vantaro;
using namespace vantaro::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CaptureFaultsAside("vantaro_direct_decode_fuzzer");
  Choices in(data, size);
  const uint32_t fourcc = kVariants[in.Byte() & 7];
  const int32_t width = DirectWidth(in.Byte()), height = DirectHeight(in.Byte());
  const uint8_t flags = in.Byte();
  const uint32_t cs = DirectLayout(flags & 15);
  const bool fieldCalls = (flags & 16) != 0;
  SetKernelOverride((flags & 64) != 0 ? KernelOverride::kScalar : KernelOverride::kAutomatic);
  const size_t length = in.RestSize();
  const auto frame = Exact(in.Rest(), length);
  if (!FitFrameHeader(frame.get(), length)) return 0;

  const BITMAPINFOHEADER header = LayoutHeader(cs, width, height);
  void* instance = VTC_DecompressFieldBegin(&header, fourcc);
  FUZZ_CHECK(instance != nullptr);
  const bool planar = IsPlanar(cs), uyva = cs == kCsUYVA;
  const int32_t stride = width * LayoutOf(cs).pixelBytes;
  const size_t mainBytes = static_cast<size_t>(stride) * height * (uyva ? 2 : 1) + (uyva ? width : 0);
  const auto picture = std::make_unique<uint8_t[]>(mainBytes);
  const size_t chromaLines = static_cast<size_t>(height) + 32;  // partial-row chroma lines included
  std::vector<uint8_t> chroma(planar ? stride * chromaLines * (cs == kCsNV24 ? 2 : 1) : 0);
  // Bottom-up lines: the picture pointer is the top line, the stride negative.
  const bool flip = (flags & 32) != 0 && !planar && !uyva;
  uint8_t* top = picture.get() + (flip ? static_cast<size_t>(stride) * (height - 1) : 0);
  const int32_t lineStep = flip ? -stride : stride;
  uint8_t* second = planar ? chroma.data() : nullptr;
  if (fieldCalls) {
    // Both field calls take the frame's start; the second field's lines
    // begin one line down, its second plane where the layout puts it.
    const int32_t offset = SecondFieldOffset(LayoutOf(cs), lineStep);
    VTC_DecompressFieldEx(instance, top, second, frame.get(), 2 * lineStep, 0);
    VTC_DecompressFieldEx(instance, top + lineStep, planar ? second + offset : nullptr, frame.get(),
                          2 * lineStep, 1);
  } else if (planar) {
    VTC_DecompressFrameEx(instance, top, second, frame.get(), lineStep);
  } else {
    VTC_DecompressFrame(instance, top, frame.get(), lineStep);
  }
  VTC_DecompressFieldEnd(instance);
  return 0;
}
