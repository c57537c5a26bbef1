// The tool's AVI reader on any bytes, from a file of the process's own. An
// accepted file lists only frames that lie inside it, and each reads whole;
// every refusal is a UserError for the user.
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "avi/avi.h"
#include "fuzz_support.h"

using namespace vantaro::tool;

namespace {

// The reader opens files by name: one per process, in memory where the
// system offers a memory file system (ten times the inputs a second).
const std::string& InputPath() {
  static const std::string path = [] {
    std::error_code error;
    const bool shm = std::filesystem::is_directory("/dev/shm", error);
    const std::filesystem::path dir = shm ? "/dev/shm" : std::filesystem::temp_directory_path();
    return (dir / ("vantaro_avi_fuzzer_" + std::to_string(getpid()) + ".avi")).string();
  }();
  return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string& path = InputPath();
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
  std::remove(path.c_str());  // libFuzzer leaves by _Exit: no clean-up at exit
  return 0;
}
