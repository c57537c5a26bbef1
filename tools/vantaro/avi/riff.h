// Little-endian field packing for RIFF structures.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace vantaro::tool {

constexpr uint32_t fourcc(const char (&s)[5]) {
    return uint32_t(uint8_t(s[0])) | uint32_t(uint8_t(s[1])) << 8 | uint32_t(uint8_t(s[2])) << 16 |
           uint32_t(uint8_t(s[3])) << 24;
}

inline std::string fourcc_text(uint32_t v) {
    std::string s(4, ' ');
    for (int i = 0; i < 4; ++i) {
        const char c = char((v >> (8 * i)) & 0xff);
        s[size_t(i)] = (c >= 32 && c < 127) ? c : '?';
    }
    return s;
}

// Upper-cases the letters of a FourCC, so "vtq2" and "VTQ2" compare equal.
inline uint32_t fourcc_upper(uint32_t v) {
    uint32_t out = 0;
    for (int i = 0; i < 4; ++i) {
        uint8_t c = uint8_t(v >> (8 * i));
        if (c >= 'a' && c <= 'z') c = uint8_t(c - 32);
        out |= uint32_t(c) << (8 * i);
    }
    return out;
}

inline uint16_t get16(const uint8_t* p) { return uint16_t(p[0] | p[1] << 8); }
inline uint32_t get32(const uint8_t* p) {
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}
inline uint64_t get64(const uint8_t* p) { return get32(p) | uint64_t(get32(p + 4)) << 32; }

// Appends little-endian fields to a byte buffer.
struct Packer {
    std::vector<uint8_t> bytes;
    void u8(uint32_t v) { bytes.push_back(uint8_t(v)); }
    void u16(uint32_t v) { u8(v); u8(v >> 8); }
    void u32(uint32_t v) { u16(v & 0xffff); u16(v >> 16); }
    void u64(uint64_t v) { u32(uint32_t(v)); u32(uint32_t(v >> 32)); }
    void zeros(size_t n) { bytes.insert(bytes.end(), n, 0); }
};

}  // namespace vantaro::tool
