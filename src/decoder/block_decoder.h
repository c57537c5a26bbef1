// The macroblock's coefficient reader: a 64-bit window over the slice, one
// refill test before every code, and the 12-bit tables. A DecodeBlocks member
// is an order list of blocks; the five shapes differ in nothing else.
#pragma once

#include <cstddef>
#include <cstdint>

#include "codec/bit_stream.h"
#include "codec/block_orders.h"
#include "codec/macroblock_scratch.h"
#include "decoder/block_decode_tables.h"

namespace vantaro::decoder {

// The readable stream as the decoders see it: `base` is the slice's first
// byte, `size` the bytes from it that may be read. Bits at or past `size`
// read as zero.
struct StreamView {
  const uint8_t* base;
  size_t size;

  uint64_t Load64(uint64_t byte) const {
    if (byte + 8 <= size) return LoadLe64(base + byte);
    return byte < size ? LoadLeBounded(base + byte, base + size, 8) : 0;
  }
  uint32_t Load32(uint64_t byte) const {
    if (byte + 4 <= size) return LoadLe32(base + byte);
    return byte < size ? static_cast<uint32_t>(LoadLeBounded(base + byte, base + size, 4)) : 0;
  }
  uint64_t SizeInBits() const { return static_cast<uint64_t>(size) * 8; }
};

// The stream from the current position on, next bit in bit 0. `offset` is
// the bits consumed since the 32-bit word at which the window was loaded.
class BitWindow {
 public:
  BitWindow(const StreamView& stream, uint64_t bitPos)
      : stream_(stream), wordIndex_(bitPos >> 5), offset_(static_cast<uint32_t>(bitPos & 31)) {
    window_ = stream_.Load64(wordIndex_ * 4) >> offset_;
  }

  // With `offset` at most 40 the window holds 24 good bits, the longest code.
  // `offset` never exceeds 64 here, so one step back by a word is enough.
  VANTARO_FORCE_INLINE void Refill() {
    if (offset_ > 40) {
      ++wordIndex_;
      offset_ -= 32;
      window_ = stream_.Load64(wordIndex_ * 4) >> offset_;
    }
  }
  VANTARO_FORCE_INLINE void Consume(uint32_t n) {
    offset_ += n;
    window_ >>= n;
  }
  uint64_t Bits() const { return window_; }
  uint64_t Position() const { return wordIndex_ * 32 + offset_; }

 private:
  StreamView stream_;
  uint64_t wordIndex_;
  uint32_t offset_;
  uint64_t window_;
};

// Reads one block's DC difference, AC codes and end of block into `block`,
// which is already cleared. False when a run would carry the scan past 63:
// the block memory would be left. Forced inline so that the window stays in
// registers across a macroblock's blocks.
VANTARO_FORCE_INLINE bool DecodeBlock(const BlockDecodeTables& t, const DcDecodeTables& dc,
                                      BitWindow& win, int16_t* block) {
  win.Refill();
  uint32_t w = static_cast<uint32_t>(win.Bits());
  uint32_t index = w & 0xFFF;
  const uint32_t dcLength = dc.length[index];
  win.Consume(dcLength);
  if (dcLength < 12) {
    block[0] = dc.shortDiff[index];
  } else if (dcLength <= 17) {
    block[0] = dc.midDiff[(w >> 5) & 0xFFF];
  } else {
    block[0] = dc.longDiff[(w >> 8) & 0x1FFF];
  }

  win.Refill();
  w = static_cast<uint32_t>(win.Bits());
  uint64_t e = t.acPair[w & 0xFFF];
  if (e & kAcPairEnd) {
    block[1] = kNoAcMark;  // end of block straight after the DC: the transform's shortcut
    win.Consume(static_cast<uint32_t>(e & kAcPairLength));
    return true;
  }
  // scanPos is the last position written, the DC's 0 at first; a code moves
  // it by its run + 1.
  uint32_t scanPos = 0;
  for (;;) {
    if (e & kAcPairSlow) [[unlikely]] {
      const uint32_t bits = static_cast<uint32_t>(win.Bits());
      win.Consume(static_cast<uint32_t>(e & kAcPairLength));
      if (e & kAcPairEnd) return true;
      uint32_t step;
      int32_t level;
      if (e & kAcPairLong) {
        const uint32_t k = (bits >> 7) & 0xFFF;
        step = t.acLongRun[k] + 1u;
        level = t.acLongLevel[k];
      } else {
        step = static_cast<uint32_t>(e >> 8) & 0xFF;
        level = t.escapeLevel[(bits >> 12) & 0xFFF];
      }
      scanPos += step;
      if (scanPos > 63) return false;
      block[t.scanOrder[scanPos]] = static_cast<int16_t>(level);
    } else {
      win.Consume(static_cast<uint32_t>(e & kAcPairLength));
      // Second code first: without one its step is 0 and the first's level
      // lands on the same place after it.
      const uint32_t first = scanPos + (static_cast<uint32_t>(e >> 8) & 0xFF);
      scanPos = first + (static_cast<uint32_t>(e) >> 24);
      if (scanPos > 63) return false;
      block[t.scanOrder[scanPos]] = static_cast<int16_t>(e >> 48);
      block[t.scanOrder[first]] = static_cast<int16_t>(e >> 32);
      if (e & kAcPairThenEnd) return true;
    }
    win.Refill();
    e = t.acPair[win.Bits() & 0xFFF];
  }
}

// Decodes the blocks of `Order` in stream order; `bitPos` moves past them.
// Blocks must be cleared by the caller. False on a run past the block.
template <const BlockStep* Order, size_t Count>
bool DecodeBlocks(const BlockDecodeTables& t, const StreamView& stream, uint64_t& bitPos,
                  int16_t (*blocks)[64]) {
  BitWindow win(stream, bitPos);
  for (size_t i = 0; i < Count; ++i) {
    const DcDecodeTables& dc = IsChromaPlane(Order[i].plane) ? t.dcChroma : t.dcLuma;
    if (!DecodeBlock(t, dc, win, blocks[Order[i].block])) return false;
  }
  bitPos = win.Position();
  return true;
}

// DC reconstruction: the stream carries predictor minus current, so along a
// plane's chain p = p - diff, 16-bit wrap-around, and the block's DC is p. A
// plane's chain is its blocks in stream order (Y 0, 2, 1, 3; U 4, 5, 8, 9;
// V 6, 7, 10, 11; alpha 12, 14, 13, 15), so one walk over the order serves
// all four chains.
inline void ReconstructDc(int16_t (*blocks)[64], uint16_t (&predictors)[4], const BlockStep* order,
                          size_t count) {
  for (size_t i = 0; i < count; ++i) {
    int16_t& dc = blocks[order[i].block][0];
    uint16_t& p = predictors[order[i].plane];
    p = static_cast<uint16_t>(p - static_cast<uint16_t>(dc));
    dc = static_cast<int16_t>(p);
  }
}

}  // namespace vantaro::decoder
