/*
 * A thin header-only C++20 wrapper over vantaro.h: handles that free
 * themselves, std::span for buffers, statuses returned (nothing throws).
 */
#ifndef VANTARO_VANTARO_HPP
#define VANTARO_VANTARO_HPP

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "vantaro/vantaro.h"

namespace vantaro {

using Status = vantaro_status;
using Picture = vantaro_picture;
using Options = vantaro_options;
using DecodeReport = vantaro_decode_report;

inline const char* StatusString(Status status) { return vantaro_status_string(status); }

inline std::size_t FrameBound(std::uint32_t fourcc, std::int32_t width, std::int32_t height) {
    return vantaro_frame_bound(fourcc, width, height);
}

namespace detail {
struct EncoderDeleter {
    void operator()(vantaro_encoder* e) const noexcept { vantaro_encoder_destroy(e); }
};
struct DecoderDeleter {
    void operator()(vantaro_decoder* d) const noexcept { vantaro_decoder_destroy(d); }
};
}  // namespace detail

// Move-only; an empty Encoder (default or failed Create) answers
// VANTARO_ERROR_INVALID_ARGUMENT.
class Encoder {
public:
    Encoder() = default;
    static Status Create(std::uint32_t fourcc, std::int32_t width, std::int32_t height,
                         std::int32_t quality, const Options* options, Encoder& out) noexcept {
        vantaro_encoder* e = nullptr;
        const Status s = vantaro_encoder_create(fourcc, width, height, quality, options, &e);
        out.handle_.reset(e);
        return s;
    }
    // `written` gets the frame's length, also when it does not fit `dst`.
    Status Encode(const Picture& picture, std::span<std::uint8_t> dst,
                  std::size_t& written) noexcept {
        return vantaro_encode(handle_.get(), &picture, dst.data(), dst.size(), &written);
    }
    explicit operator bool() const noexcept { return handle_ != nullptr; }
    vantaro_encoder* get() const noexcept { return handle_.get(); }

private:
    std::unique_ptr<vantaro_encoder, detail::EncoderDeleter> handle_;
};

class Decoder {
public:
    Decoder() = default;
    static Status Create(std::uint32_t fourcc, std::int32_t width, std::int32_t height,
                         const Options* options, Decoder& out) noexcept {
        vantaro_decoder* d = nullptr;
        const Status s = vantaro_decoder_create(fourcc, width, height, options, &d);
        out.handle_.reset(d);
        return s;
    }
    Status Decode(std::span<const std::uint8_t> frame, const Picture& picture,
                  DecodeReport* report = nullptr) noexcept {
        return vantaro_decode(handle_.get(), frame.data(), frame.size(), &picture, report);
    }
    explicit operator bool() const noexcept { return handle_ != nullptr; }
    vantaro_decoder* get() const noexcept { return handle_.get(); }

private:
    std::unique_ptr<vantaro_decoder, detail::DecoderDeleter> handle_;
};

}  // namespace vantaro

#endif /* VANTARO_VANTARO_HPP */
