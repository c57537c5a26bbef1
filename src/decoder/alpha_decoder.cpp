#include "decoder/alpha_decoder.h"

#include <cstring>

#include "codec/built_once.h"
#include "codec/global_tables.h"

namespace vantaro::decoder {
namespace {

constexpr uint32_t kHalfBytes = 128;

// The walked table, one entry per 12-bit index, derived from the run and
// value code tables: up to two whole (run, value) pairs, or an end marker
// after the first. Bits 0..7: the bits the entry consumes; 8..15: twelve,
// so that the entry is the bit-field-extract control for the next index
// (see IndexStep); 16..23, 24..31: the first pair's run and value; 32..39,
// 40..47: the second's; 48..51: flags. A pair that does not fit in the
// index (a long run code with a long value code) is read through the code
// tables instead.
constexpr uint64_t kAlphaEnd = uint64_t{1} << 48;      // the index opens with the end marker
constexpr uint64_t kAlphaSlow = uint64_t{2} << 48;     // the first pair is longer than the index
constexpr uint64_t kAlphaSecond = uint64_t{4} << 48;   // a second pair follows the first
constexpr uint64_t kAlphaThenEnd = uint64_t{8} << 48;  // the end marker follows the first pair

struct AlphaPairTable {
  uint64_t entry[4096];
};

struct Pair {
  uint32_t length, run, value;
  bool end;
};

// The pair (or end marker) at the start of `bits`, as the code tables read it.
Pair ReadPair(const GlobalTables& g, uint32_t bits) {
  const uint16_t r = g.alphaRunDecode[bits & 0x3FF];
  const uint32_t runLength = r >> 8;
  if (static_cast<int8_t>(r & 0xFF) < 0) return {runLength, 0, 0, true};
  const uint16_t v = g.alphaValueDecode[(bits >> runLength) & 0x3FF];
  return {runLength + (v >> 8), r & 0xFFu, v & 0xFFu, false};
}

void Build(AlphaPairTable& t) {
  const GlobalTables& g = Tables();
  for (uint32_t i = 0; i < 4096; ++i) {
    // Codes form prefix trees, so the index's zero fill above the bits left
    // cannot change a code that fits in them.
    const Pair first = ReadPair(g, i);
    if (first.end) {
      t.entry[i] = kAlphaEnd | kExtractIndexBits | first.length;
      continue;
    }
    if (first.length > 12) {
      t.entry[i] = kAlphaSlow;
      continue;
    }
    uint64_t e = kExtractIndexBits | first.length | (uint64_t{first.run} << 16) | (uint64_t{first.value} << 24);
    const Pair second = ReadPair(g, i >> first.length);
    if (second.length <= 12 - first.length) {
      e += second.length;
      e |= second.end ? kAlphaThenEnd : kAlphaSecond | (uint64_t{second.run} << 32) | (uint64_t{second.value} << 40);
    }
    t.entry[i] = e;
  }
}

// Puts `value` `run` bytes after `dest`; false when it would leave the half.
VANTARO_FORCE_INLINE bool Put(uint8_t* half, uint32_t& dest, uint32_t run, uint32_t value) {
  dest += run;
  if (dest >= kHalfBytes) return false;
  half[dest++] = static_cast<uint8_t>(value);
  return true;
}

// Reads one half's differences into `half`. A half that opens with the end
// code has no differences: every line repeats the predictor.
template <IndexStep S>
bool ReadHalf(const AlphaPairTable& t, const GlobalTables& g, uint8_t* half, const uint8_t* pred,
              BitWindow<>& win) {
  win.Refill();
  uint64_t e = t.entry[win.Bits() & 0xFFF];
  if (e & kAlphaEnd) {
    win.Consume(static_cast<uint32_t>(e & 0xFF));
    for (int line = 0; line < 8; ++line) std::memcpy(half + 16 * line, pred, 16);
    return true;
  }
  std::memset(half, 0, kHalfBytes);
  uint32_t dest = 0;
  uint32_t index = 0;
  // One entry: kMore, kEnd, or kFault when a run would leave the half. An
  // entry takes 20 bits at most, so a refill serves two entries and the
  // lookup after them; the refill's load stays off every other step. Each
  // entry leaves the next index in `index`; with kExtract it is taken from
  // the window as it stood before the entry.
  const auto step = [&](uint64_t entry) {
    if (entry & kAlphaSlow) [[unlikely]] {
      const Pair p = ReadPair(g, static_cast<uint32_t>(win.Bits()));
      win.Consume(p.length);
      index = static_cast<uint32_t>(win.Bits()) & 0xFFF;
      return Put(half, dest, p.run, p.value) ? Entry::kMore : Entry::kFault;
    }
    if constexpr (S == IndexStep::kExtract) index = ExtractIndex(win.Bits(), static_cast<uint32_t>(entry));
    win.Consume(static_cast<uint32_t>(entry & 0xFF));
    if constexpr (S == IndexStep::kShiftMask) index = static_cast<uint32_t>(win.Bits()) & 0xFFF;
    if (entry & kAlphaEnd) return Entry::kEnd;
    if (!Put(half, dest, (entry >> 16) & 0xFF, (entry >> 24) & 0xFF)) return Entry::kFault;
    if ((entry & kAlphaSecond) && !Put(half, dest, (entry >> 32) & 0xFF, (entry >> 40) & 0xFF)) {
      return Entry::kFault;
    }
    return entry & kAlphaThenEnd ? Entry::kEnd : Entry::kMore;
  };
  for (;;) {
    Entry r = step(e);
    if (r == Entry::kMore) r = step(t.entry[index]);
    if (r == Entry::kFault) return false;
    if (r == Entry::kEnd) break;
    win.Refill();
    e = t.entry[index];
  }
  // Undo the differencing, line after line: previous minus current. Through
  // a local line, so that the byte loop need not fear overlap and vectorises.
  uint8_t above[16];
  std::memcpy(above, pred, 16);
  for (int line = 0; line < 8; ++line) {
    uint8_t difference[16];
    std::memcpy(difference, half + 16 * line, 16);
    for (int c = 0; c < 16; ++c) above[c] = static_cast<uint8_t>(above[c] - difference[c]);
    std::memcpy(half + 16 * line, above, 16);
  }
  return true;
}

}  // namespace

template <IndexStep S>
bool ReadAlphaPlane(MacroblockScratch& scratch, const StreamView& stream, uint64_t& bitPos) {
  const AlphaPairTable& t = BuiltOnce<AlphaPairTable, Build>();
  const GlobalTables& g = Tables();
  uint8_t* plane = scratch.Alpha();
  BitWindow win(stream, bitPos);
  if (!ReadHalf<S>(t, g, plane, scratch.alphaRowPredictor, win)) return false;
  if (!ReadHalf<S>(t, g, plane + kHalfBytes, plane + kHalfBytes - 16, win)) return false;
  std::memcpy(scratch.alphaRowPredictor, plane + 240, 16);
  bitPos = win.Position();
  return true;
}

template bool ReadAlphaPlane<IndexStep::kShiftMask>(MacroblockScratch&, const StreamView&, uint64_t&);
template bool ReadAlphaPlane<IndexStep::kExtract>(MacroblockScratch&, const StreamView&, uint64_t&);

}  // namespace vantaro::decoder
