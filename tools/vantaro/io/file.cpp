#include "io/file.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <sys/types.h>
#include <unistd.h>

namespace vantaro::tool {

namespace {
std::string reason() { return std::strerror(errno); }

// Temporary outputs an interrupt must not leave behind. The handler may only
// read what is fully written: a slot's path is set before it is marked in use.
constexpr int kSlots = 8;
constexpr size_t kPathBytes = 4096;
char g_temp_paths[kSlots][kPathBytes];
volatile std::sig_atomic_t g_temp_used[kSlots];

extern "C" void remove_temps_and_die(int sig) {
    for (int i = 0; i < kSlots; ++i)
        if (g_temp_used[i]) unlink(g_temp_paths[i]);
    std::signal(sig, SIG_DFL);
    std::raise(sig);
}

int register_temp(const std::string& path) {
    static const bool installed = [] {
        for (int sig : {SIGINT, SIGTERM, SIGHUP}) std::signal(sig, remove_temps_and_die);
        return true;
    }();
    (void)installed;
    if (path.size() >= kPathBytes) return -1;
    for (int i = 0; i < kSlots; ++i)
        if (!g_temp_used[i]) {
            std::memcpy(g_temp_paths[i], path.c_str(), path.size() + 1);
            std::atomic_signal_fence(std::memory_order_release);
            g_temp_used[i] = 1;
            return i;
        }
    return -1;
}

void unregister_temp(int slot) {
    if (slot >= 0) g_temp_used[slot] = 0;
}

}  // namespace

File& File::operator=(File&& o) noexcept {
    if (this != &o) {
        if (owned_ && f_) std::fclose(f_);
        f_ = o.f_;
        name_ = std::move(o.name_);
        owned_ = o.owned_;
        o.f_ = nullptr;
        o.owned_ = false;
    }
    return *this;
}

File::~File() {
    if (owned_ && f_) std::fclose(f_);
}

File File::open_read(const std::string& path) {
    if (path == "-") return File(stdin, "standard input", false);
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (!f) throw UserError(path + ": cannot open: " + reason());
    return File(f, path, true);
}

bool File::read_exact(void* dst, size_t n) {
    const size_t got = read_some(dst, n);
    if (got == n) return true;
    if (got == 0) return false;
    throw UserError(name_ + ": file ends in the middle of a frame");
}

size_t File::read_some(void* dst, size_t n) {
    size_t total = 0;
    while (total < n) {
        const size_t got = std::fread(static_cast<uint8_t*>(dst) + total, 1, n - total, f_);
        if (got == 0) {
            if (std::ferror(f_)) throw UserError(name_ + ": read error: " + reason());
            break;
        }
        total += got;
    }
    return total;
}

void File::write(const void* src, size_t n) {
    if (n && std::fwrite(src, 1, n, f_) != n)
        throw UserError(name_ + ": cannot write: " + reason());
}

void File::seek(uint64_t offset) {
    if (fseeko(f_, off_t(offset), SEEK_SET) != 0)
        throw UserError(name_ + ": cannot seek: " + reason());
}

uint64_t File::tell() const {
    const off_t at = ftello(f_);
    return at < 0 ? 0 : uint64_t(at);
}

uint64_t File::size() const {
    const off_t here = ftello(f_);
    if (here < 0 || fseeko(f_, 0, SEEK_END) != 0) return 0;
    const off_t end = ftello(f_);
    fseeko(f_, here, SEEK_SET);
    return end < 0 ? 0 : uint64_t(end);
}

void File::close() {
    if (f_ && owned_) {
        const int rc = std::fclose(f_);
        f_ = nullptr;
        if (rc != 0) throw UserError(name_ + ": cannot write: " + reason());
    } else if (f_) {
        if (std::fflush(f_) != 0) throw UserError(name_ + ": cannot write: " + reason());
        f_ = nullptr;
    }
}

OutputFile::OutputFile(const std::string& path) : path_(path) {
    if (path == "-") {
        file_ = File(stdout, "standard output", false);
        return;
    }
    temp_ = path + ".part-" + std::to_string(getpid());
    std::FILE* f = std::fopen(temp_.c_str(), "wb");
    if (!f) throw UserError(path + ": cannot create: " + reason());
    signal_slot_ = register_temp(temp_);
    file_ = File(f, path, true);
}

OutputFile::~OutputFile() {
    if (!committed_ && !temp_.empty()) {
        try {
            file_.close();
        } catch (const UserError&) {
        }
        std::remove(temp_.c_str());
    }
    unregister_temp(signal_slot_);
}

void OutputFile::commit() {
    file_.close();
    if (!temp_.empty() && std::rename(temp_.c_str(), path_.c_str()) != 0) {
        const std::string why = reason();
        std::remove(temp_.c_str());
        throw UserError(path_ + ": cannot create: " + why);
    }
    // Only now: an interrupt before the rename still removes the temporary.
    unregister_temp(signal_slot_);
    signal_slot_ = -1;
    committed_ = true;
}

}  // namespace vantaro::tool
