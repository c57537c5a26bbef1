// Files with 64-bit offsets and errors phrased for the user, and an output
// written beside its final name and renamed into place only when complete.
#pragma once

#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>

namespace vantaro::tool {

// Every failure the tool reports to the user; the text is the whole message.
struct UserError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class File {
public:
    File() = default;
    File(std::FILE* f, std::string name, bool owned) : f_(f), name_(std::move(name)), owned_(owned) {}
    File(File&& o) noexcept { *this = std::move(o); }
    File& operator=(File&& o) noexcept;
    ~File();

    static File open_read(const std::string& path);  // "-" is standard input
    std::FILE* get() const { return f_; }
    const std::string& name() const { return name_; }

    // Reads exactly n bytes; false at a clean end of file before any byte.
    bool read_exact(void* dst, size_t n);
    // Reads up to n bytes, answering how many came.
    size_t read_some(void* dst, size_t n);
    void write(const void* src, size_t n);
    void seek(uint64_t offset);
    uint64_t tell() const;
    uint64_t size() const;  // 0 for pipes
    void close();

private:
    std::FILE* f_ = nullptr;
    std::string name_;
    bool owned_ = false;
};

// The output under construction: a temporary file beside `path` (or standard
// output for "-"), renamed over `path` by commit(); dropped otherwise, and
// also when the program is interrupted (SIGINT, SIGTERM, SIGHUP).
class OutputFile {
public:
    explicit OutputFile(const std::string& path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    File& file() { return file_; }
    void commit();

private:
    std::string path_;
    std::string temp_;
    File file_;
    bool committed_ = false;
    int signal_slot_ = -1;
};

}  // namespace vantaro::tool
