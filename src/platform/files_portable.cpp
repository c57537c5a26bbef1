#include <cstdio>

#include "platform/files.h"

namespace vantaro {

// "x" makes fopen fail when the file exists, the create-new disposition.
NewFile::NewFile(const std::string& path) : handle_(std::fopen(path.c_str(), "wbx")) {}

NewFile::~NewFile() {
  if (handle_ != nullptr) std::fclose(static_cast<std::FILE*>(handle_));
}

void NewFile::Write(const void* data, size_t size) {
  if (handle_ != nullptr && size > 0) std::fwrite(data, 1, size, static_cast<std::FILE*>(handle_));
}

}  // namespace vantaro
