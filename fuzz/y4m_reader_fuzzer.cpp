// The tool's YUV4MPEG2 reader on any bytes, read from memory. A header it
// accepts names a size inside 1..16384 and every frame it answers has the
// header's frame size; every refusal is a UserError for the user.
#include <cstdio>
#include <vector>

#include "fuzz_support.h"
#include "input/y4m.h"

using namespace vantaro::tool;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  std::FILE* f = fmemopen(const_cast<uint8_t*>(data), size, "rb");
  if (f == nullptr) return 0;
  File file(f, "fuzz.y4m", true);
  try {
    Y4mReader reader(file);
    const Y4mFormat& format = reader.format();
    FUZZ_CHECK(format.width >= 1 && format.width <= 16384);
    FUZZ_CHECK(format.height >= 1 && format.height <= 16384);
    std::vector<uint8_t> frame;
    while (reader.read(frame)) FUZZ_CHECK(frame.size() == format.frame_bytes());
  } catch (const UserError&) {
  }
  return 0;
}
