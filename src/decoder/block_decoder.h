// The macroblock's coefficient reader: a 64-bit window over the slice,
// refilled without a branch, and the 12-bit tables. A DecodeBlocks member
// is an order list of blocks; the five shapes differ in nothing else.
#pragma once

#include <cstddef>
#include <cstdint>

#include "codec/bit_stream.h"
#include "codec/block_orders.h"
#include "codec/kernels.h"
#include "codec/macroblock_scratch.h"
#include "decoder/block_decode_tables.h"

namespace vantaro::decoder {

// The readable stream as the decoders see it: `base` is the slice's first
// byte, `size` the bytes from it that may be read. Bits at or past `size`
// read as zero.
struct StreamView {
  const uint8_t* base;
  size_t size;

  VANTARO_FORCE_INLINE uint64_t Load64(uint64_t byte) const {
    if (byte + 8 <= size) [[likely]] return LoadLe64(base + byte);
    return LoadTail64(byte);
  }
  // The last few words of the slice: only the bytes before `size`.
  VANTARO_NOINLINE uint64_t LoadTail64(uint64_t byte) const {
    return byte < size ? LoadLeBounded(base + byte, base + size, 8) : 0;
  }
  uint64_t SizeInBits() const { return static_cast<uint64_t>(size) * 8; }
};

// The stream from the current position on, next bit in bit 0. A refill
// tops the window up to at least 56 good bits without a branch: it ORs in
// the eight bytes at `byte_` above the bits it holds and steps `byte_` over
// the whole bytes it took. Bits above the count are zero or already the
// stream's own, so ORing them again changes nothing. The count is kept
// modulo 64, as the shifts take it: a consume may hand over a table entry
// whole, its length in the low six bits, and spend no instruction on
// masking the rest off in the decoder's longest chain. With kInside the
// caller has made sure every load stays before the stream's end (see
// DecodeBlocks), and the loads skip the end test.
template <bool kInside = false>
class BitWindow {
 public:
  VANTARO_FORCE_INLINE BitWindow(const StreamView& stream, uint64_t bitPos)
      : stream_(stream), byte_(bitPos >> 3) {
    Refill();
    Consume(static_cast<uint32_t>(bitPos & 7));
  }

  VANTARO_FORCE_INLINE void Refill() {
    const uint64_t word = kInside ? LoadLe64(stream_.base + byte_) : stream_.Load64(byte_);
    window_ |= word << (count_ & 63);
    byte_ += (~count_ & 63) >> 3;
    count_ |= 56;
  }
  // Consumes `n` modulo 64 bits, at most the good ones: 56 after a refill,
  // minus what was consumed since.
  VANTARO_FORCE_INLINE void Consume(uint32_t n) {
    count_ -= n;
    window_ >>= n & 63;
  }
  uint64_t Bits() const { return window_; }
  uint64_t Position() const { return byte_ * 8 - (count_ & 63); }

 private:
  StreamView stream_;
  uint64_t byte_;  // the first byte not yet wholly in the window
  uint32_t count_ = 0;
  uint64_t window_ = 0;
};

enum class Entry { kMore, kEnd, kFault };

// How the walk finds the AC table's next index, the one step of each code's
// chain of dependent work besides the table load. kShiftMask masks it off
// the window once the entry's bits are shifted out. kExtract takes it with
// one bit-field extract (BMI1) from the window as it stood before that
// shift, by the control beside the entry, and saves a cycle a lookup. Both
// read the same bits and fault at the same places.
enum class IndexStep : uint8_t { kShiftMask, kExtract };

VANTARO_FORCE_INLINE uint32_t ExtractIndex(uint64_t window, uint32_t control) {
#if defined(VANTARO_KERNELS_AVX2) && defined(__x86_64__)
  uint64_t index;
  asm("bextr %2, %1, %0" : "=r"(index) : "r"(window), "r"(uint64_t{control}));
  return static_cast<uint32_t>(index);
#else
  return static_cast<uint32_t>(window >> (control & 63)) & 0xFFF;
#endif
}

// Reads one entry of the walked table: a long code or escape, or one or two
// short codes, either perhaps followed by the end of block, or the end
// alone. kFault when a run would carry the scan past 63: the block memory
// would be left. The end test looks at the loaded entry alone, so that a
// mispredicted end is found as early as possible. With kExtract, `index`
// comes in as the entry's and leaves as the next one's; a fast entry takes
// at most 12 bits, so the window before it holds the next index whole.
template <IndexStep S, class Window>
VANTARO_FORCE_INLINE Entry ReadEntry(const BlockDecodeTables& t, Window& win, uint32_t& index,
                                     int16_t* block, uint32_t& scanPos) {
  const uint64_t window = win.Bits();
  const auto bits = static_cast<uint32_t>(window);
  if constexpr (S == IndexStep::kShiftMask) index = bits & 0xFFF;
  const uint32_t e = t.acPair[index];
  if (e & kAcPairSlow) [[unlikely]] {
    win.Consume(e);
    uint32_t step;
    int32_t level;
    if (e & kAcPairLong) {
      const uint32_t k = (bits >> 7) & 0x3FF;
      step = t.acLongRun[k] + 1u;
      level = t.acLongLevel[k];
    } else {
      step = AcPairStep1(e);
      level = static_cast<int32_t>((bits >> 12) & 0xFFF) - 2048;
    }
    if constexpr (S == IndexStep::kExtract) {
      // Up to 24 bits gone: top up before taking the next index.
      win.Refill();
      index = static_cast<uint32_t>(win.Bits()) & 0xFFF;
    }
    scanPos += step;
    if (scanPos > 63) return Entry::kFault;
    block[t.scanOrder[scanPos]] = static_cast<int16_t>(level);
    return Entry::kMore;
  }
  if constexpr (S == IndexStep::kExtract) {
    const uint32_t control = t.acNext[index];
    index = ExtractIndex(window, control);
    win.Consume(control);
  } else {
    win.Consume(e);
  }
  // Second code first: without one its step is 0 and the first's level
  // lands on the same place after it.
  const uint32_t first = scanPos + AcPairStep1(e);
  scanPos = first + AcPairStep2(e);
  block[t.scanOrder[scanPos]] = static_cast<int16_t>(AcPairLevel2(e));
  block[t.scanOrder[first]] = static_cast<int16_t>(AcPairLevel1(e));
  if (e & kAcPairThenEnd) return Entry::kEnd;
  return scanPos > 63 ? Entry::kFault : Entry::kMore;
}

// Reads one block's DC difference, AC codes and end of block into `block`,
// which is already cleared. False when a run would carry the scan past 63:
// the block memory would be left. Forced inline so that the window stays in
// registers across a macroblock's blocks.
//
// The walk has one exit test a lookup: the end of block rides in the entry
// (after a code, or alone with a step of kEndStep, past where any run can
// reach). Such a position, and the out-of-range ones a bad run reaches
// before it is caught, scan to raster 0, whose DC is stored last. `index`
// holds the next twelve bits on entry and on leaving (see IndexStep).
template <IndexStep S, class Window>
VANTARO_FORCE_INLINE bool DecodeBlock(const BlockDecodeTables& t, const DcDecodeTables& dc, Window& win,
                                      uint32_t& index, int16_t* block) {
  // One refill covers the DC (21 bits at most) and the first AC lookup (24).
  // Extra bits below half their range stand for the negative differences.
  win.Refill();
  const uint64_t w = win.Bits();
  const uint64_t dcBits = S == IndexStep::kExtract ? index : w;
  uint32_t e = dc.head[dcBits & 0xFF];
  if (e == 0) [[unlikely]] e = dc.entry[dcBits & 0x3FF];
  win.Consume(e);
  const uint32_t range = 1u << DcSize(e);
  const uint32_t extra = static_cast<uint32_t>(w >> DcSizeCodeLength(e)) & (range - 1);
  const auto dcDiff = static_cast<int16_t>(extra - (extra < range / 2 ? range - 1 : 0));

  // scanPos is the last position written, the DC's 0 at first; a code moves
  // it by its run + 1. A refill leaves 56 good bits and an entry takes 24 at
  // most, so the window is topped up every second entry; the first entry
  // rides on the DC's refill.
  uint32_t scanPos = 0;
  index = static_cast<uint32_t>(win.Bits()) & 0xFFF;
  Entry r = ReadEntry<S>(t, win, index, block, scanPos);
  while (r == Entry::kMore) {
    win.Refill();
    r = ReadEntry<S>(t, win, index, block, scanPos);
    if (r != Entry::kMore) break;
    r = ReadEntry<S>(t, win, index, block, scanPos);
  }
  if (r == Entry::kFault) return false;
  // Ended well: at most 63 after a code, or kEndStep on from there after a
  // lone end; kEndStep itself means no AC code at all, which the transform's
  // shortcut reads from the mark at raster 1.
  if (scanPos - 64u < kEndStep - 64u) return false;
  block[0] = dcDiff;
  block[1] = static_cast<int16_t>(block[1] | (scanPos == kEndStep ? kNoAcMark : 0));
  return true;
}

// The most bits one block can take before it ends or faults: the DC, then
// at most 64 entries (every entry but the last moves the scan on), each of
// 24 bits at most.
constexpr uint64_t kMostBlockBits = 21 + 64 * 24;

template <const BlockStep* Order, size_t Count, IndexStep S, bool kInside>
bool DecodeBlocksFrom(const BlockDecodeTables& t, const StreamView& stream, uint64_t& bitPos,
                      int16_t (*blocks)[64]) {
  BitWindow<kInside> win(stream, bitPos);
  uint32_t index = static_cast<uint32_t>(win.Bits()) & 0xFFF;
  for (size_t i = 0; i < Count; ++i) {
    const DcDecodeTables& dc = IsChromaPlane(Order[i].plane) ? t.dcChroma : t.dcLuma;
    if (!DecodeBlock<S>(t, dc, win, index, blocks[Order[i].block])) return false;
  }
  bitPos = win.Position();
  return true;
}

// Decodes the blocks of `Order` in stream order; `bitPos` moves past them.
// Blocks must be cleared by the caller. False on a run past the block. Away
// from the slice's end, where no load of the macroblock can reach it, the
// window loads without testing for the end.
template <const BlockStep* Order, size_t Count, IndexStep S>
bool DecodeBlocks(const BlockDecodeTables& t, const StreamView& stream, uint64_t& bitPos,
                  int16_t (*blocks)[64]) {
  // A load reaches at most 16 bytes past the position's byte.
  constexpr uint64_t kReach = (Count * kMostBlockBits + 7) / 8 + 16;
  if (stream.size >= kReach && bitPos / 8 <= stream.size - kReach) {
    return DecodeBlocksFrom<Order, Count, S, true>(t, stream, bitPos, blocks);
  }
  return DecodeBlocksFrom<Order, Count, S, false>(t, stream, bitPos, blocks);
}
using DecodeBlocksFn = bool (*)(const BlockDecodeTables& t, const StreamView& stream, uint64_t& bitPos,
                                int16_t (*blocks)[64]);

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
