// The few file operations the codec needs: creating a file that must not
// exist yet, and writing bytes to it.
#pragma once

#include <cstddef>
#include <string>

namespace vantaro {

class NewFile {
 public:
  // Creates `path` for writing, failing if it exists already (create-new).
  explicit NewFile(const std::string& path);
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  bool IsOpen() const { return handle_ != nullptr; }
  void Write(const void* data, size_t size);

 private:
  void* handle_ = nullptr;
};

}  // namespace vantaro
