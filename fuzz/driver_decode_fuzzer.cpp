// DriverProc decompression as a host drives it: open, query, begin,
// decompress, end, close, with headers drawn from the input. Choice bytes
// pick the variant (either case), the output layout, the size (a negative
// width now and then), the orientation and how much smaller than the frame
// the host's output buffer may be; the rest is the stream, whose length the
// input header declares and which sits in a heap block of exactly that
// size. The output buffer is exactly the output header's biSizeImage: the
// driver must refuse what does not fit rather than write past it.
#include "driver/driver_formats.h"
#include "driver/driver_host_session.h"
#include "fuzz_support.h"

using namespace vantaro;
using namespace vantaro::fuzz;
using test::Send;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CaptureFaultsAside("vantaro_driver_decode_fuzzer");
  Choices in(data, size);
  const uint8_t variant = in.Byte();
  int32_t width = DirectWidth(in.Byte());
  const int32_t height = DirectHeight(in.Byte());
  const uint8_t flags = in.Byte(), shrink = in.Byte();
  if ((flags & 32) != 0 && (shrink & 3) == 0) width = -width;
  uint32_t fourcc = kVariants[variant & 7];
  if ((variant & 8) != 0) fourcc |= 0x20202020;  // lower case: opens, but queries refuse
  const size_t length = in.RestSize();
  if (length == 0) return 0;  // a zero biSizeImage means "unknown": the header is trusted
  const auto stream = Exact(in.Rest(), length);

  BITMAPINFOHEADER input = LayoutHeader(kCsRGB24, width, height);
  input.biCompression = fourcc & ~0x20202020u;
  input.biSizeImage = static_cast<uint32_t>(length);
  const uint32_t cs = DirectLayout(flags & 15);
  BITMAPINFOHEADER output = LayoutHeader(cs, width, (flags & 16) != 0 ? -height : height);
  // The frame's extent in this layout, less what the host holds back; a
  // zero size would again mean "unknown", so at least one byte.
  const int64_t room = DriverFrameBytes(cs, width < 0 ? -width : width, height) - ((flags & 64) != 0 ? shrink : 0);
  output.biSizeImage = static_cast<uint32_t>(room < 1 ? 1 : room);
  const auto picture = std::make_unique<uint8_t[]>(output.biSizeImage);

  ICOPEN open{};
  open.dwSize = sizeof open;
  open.fccType = ICTYPE_VIDEO;
  open.fccHandler = fourcc;
  const uint64_t id = static_cast<uint64_t>(Send(0, DRV_OPEN, nullptr, &open));
  FUZZ_CHECK(id != 0);
  (void)Send(id, ICM_DECOMPRESS_QUERY, &input, &output);
  (void)Send(id, ICM_DECOMPRESS_BEGIN, &input, &output);
  ICDECOMPRESS frame{0, &input, stream.get(), &output, picture.get(), 0};
  const int64_t result = Send(id, ICM_DECOMPRESS, &frame);
  FUZZ_CHECK(result == ICERR_OK || result == ICERR_BADFORMAT);
  (void)Send(id, ICM_DECOMPRESS_END);
  FUZZ_CHECK(Send(id, DRV_CLOSE) == 1);
  return 0;
}
