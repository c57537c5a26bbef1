// The stream's bit order: bit p of a stream is bit p % 8 of byte p / 8, and
// a code's first transmitted bit is its lowest. Everything here assumes a
// little-endian host, as the codec's unaligned 32- and 64-bit words do.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

// For the few hot helpers whose state must stay in registers across calls.
// And for their rare paths, kept out of the hot loop's registers.
#if defined(__GNUC__)
#define VANTARO_FORCE_INLINE [[gnu::always_inline]] inline
#define VANTARO_NOINLINE [[gnu::noinline]]
#elif defined(_MSC_VER)
#define VANTARO_FORCE_INLINE __forceinline
#define VANTARO_NOINLINE __declspec(noinline)
#else
#define VANTARO_FORCE_INLINE inline
#define VANTARO_NOINLINE
#endif

namespace vantaro {

static_assert(std::endian::native == std::endian::little,
              "the stream's words are little-endian machine words");

inline uint32_t LoadLe32(const uint8_t* p) {
  uint32_t v;
  std::memcpy(&v, p, 4);
  return v;
}
inline uint64_t LoadLe64(const uint8_t* p) {
  uint64_t v;
  std::memcpy(&v, p, 8);
  return v;
}
inline void StoreLe32(uint8_t* p, uint32_t v) { std::memcpy(p, &v, 4); }

// Writer state. `capacity` bounds every store: bytes from `buffer` that may be
// written (SIZE_MAX when the caller gave no size). PutCode itself does not
// check it; walks check room once per macroblock (see RoomFor).
struct BitWriter {
  uint8_t* buffer;  // bit position 0: frame start, or the second field's start
  uint32_t carry;   // bits of the unfinished byte, in the low bits
  uint32_t bitPos;  // bits written from `buffer`
  size_t capacity;
};

// Appends `length` (<= 24) bits; `code` has no bits above `length`. One
// unaligned 32-bit store that may reach three bytes past the last bit; those
// bytes are zero or are overwritten by the next store, so no flush exists.
// (The block coder's own stores reach eight bytes; see block_codes.h.)
inline void PutCode(BitWriter& w, uint32_t code, uint32_t length) {
  const uint32_t offset = w.bitPos & 7;
  const uint32_t word = w.carry | (code << offset);
  StoreLe32(w.buffer + (w.bitPos >> 3), word);
  w.carry = word >> ((offset + length) & ~7u);
  w.bitPos += length;
}

inline void SkipToByte(BitWriter& w) {
  w.carry = 0;
  w.bitPos = (w.bitPos + 7) & ~7u;
}

// True if `bytes` more bytes of stream (plus the 4-byte reach of the last
// store) still fit in the writer's buffer.
inline bool RoomFor(const BitWriter& w, size_t bytes) {
  const size_t used = w.bitPos >> 3;
  return used <= w.capacity && w.capacity - used >= bytes + 4;
}

// Reader state, one per slice. `end` is one past the last byte that may be
// read (the readable extent of the stream); loads that would cross it see
// zero bits instead, and a consumed position past it is a decoding fault.
struct BitReader {
  uint64_t bitPos;  // inside the slice, from `base`; the slice length is bits 0..23
  const uint8_t* base;  // the slice's first byte
  const uint8_t* end;
};

// Loads up to `count` (<= 8) bytes at `p` as a little-endian value, reading
// nothing at or past `end`: missing bytes read as zero.
inline uint64_t LoadLeBounded(const uint8_t* p, const uint8_t* end, size_t count) {
  if (p >= end) return 0;
  const size_t avail = static_cast<size_t>(end - p);
  uint64_t v = 0;
  std::memcpy(&v, p, avail < count ? avail : count);
  if (count < 8) v &= (uint64_t{1} << (8 * count)) - 1;
  return v;
}

}  // namespace vantaro
