// The tool's AVI reader on any bytes, from a file of the process's own. An
// accepted file lists only frames that lie inside it, and each reads whole;
// every refusal is a UserError for the user.
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "avi/avi.h"
#include "fuzz_support.h"

using namespace vantaro::tool;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::string path = "/tmp/vantaro_avi_fuzzer_" + std::to_string(getpid()) + ".avi";
  std::FILE* f = std::fopen(path.c_str(), "wb");
  if (f == nullptr) return 0;
  const bool whole = std::fwrite(data, 1, size, f) == size;
  std::fclose(f);
  if (!whole) return 0;
  try {
    AviReader reader(path);
    std::vector<uint8_t> frame;
    for (size_t i = 0; i < reader.frames().size(); ++i) {
      const AviFrame& at = reader.frames()[i];
      FUZZ_CHECK(at.offset + at.size <= size);
      FUZZ_CHECK(reader.read_frame(i, frame));
    }
  } catch (const UserError&) {
  }
  return 0;
}
