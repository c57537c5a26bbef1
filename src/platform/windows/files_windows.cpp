// The crash capture's files: CREATE_NEW refuses an existing file, and no
// sharing keeps two faulting threads from writing the same one.
#include "platform/files.h"
#include "platform/windows/windows_headers.h"

namespace vantaro {

NewFile::NewFile(const std::string& path) {
  HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                            FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file != INVALID_HANDLE_VALUE) handle_ = file;
}

NewFile::~NewFile() {
  if (handle_ != nullptr) CloseHandle(static_cast<HANDLE>(handle_));
}

// The written count is not looked at: a short capture is still a capture.
void NewFile::Write(const void* data, size_t size) {
  if (handle_ == nullptr || size == 0) return;
  DWORD written = 0;
  WriteFile(static_cast<HANDLE>(handle_), data, static_cast<DWORD>(size), &written, nullptr);
}

}  // namespace vantaro
