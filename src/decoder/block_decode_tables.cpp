#include "decoder/block_decode_tables.h"

#include <cstring>

#include "codec/built_once.h"
#include "codec/code_rows.h"

namespace vantaro::decoder {
namespace {

// A canonical code in stream order: first transmitted bit in bit 0.
struct StreamCode {
  uint32_t bits;
  uint32_t length;
};

constexpr StreamCode InStreamOrder(const char* text) {
  return {StreamOrder(ParseCode(text)), ParseCode(text).length};
}
constexpr StreamCode kEscape = InStreamOrder(kEscapePrefix);
constexpr StreamCode kEndOfBlock = InStreamOrder(kEndOfBlockCode);

bool Matches(uint32_t x, const StreamCode& c) {
  return (x & ((1u << c.length) - 1)) == c.bits;
}

void BuildDc(DcDecodeTables& t, bool luma) {
  for (uint32_t i = 0; i < 1024; ++i) {
    for (uint32_t size = 0; size < 12; ++size) {
      const StreamCode c = InStreamOrder(luma ? DcSizeCode[size].luma : DcSizeCode[size].chroma);
      if (Matches(i, c)) t.entry[i] = static_cast<uint16_t>((c.length + size) | size << 8 | c.length << 12);
    }
  }
  for (uint32_t i = 0; i < 256; ++i) t.head[i] = DcSizeCodeLength(t.entry[i]) <= 8 ? t.entry[i] : 0;
}

void BuildAc(BlockDecodeTables& t) {
  std::memset(t.acLength, 0, sizeof t.acLength);
  std::memset(t.acRun, 0, sizeof t.acRun);
  std::memset(t.acLevel, 0, sizeof t.acLevel);
  std::memset(t.acLongRun, 0, sizeof t.acLongRun);
  std::memset(t.acLongLevel, 0, sizeof t.acLongLevel);
  // 1, 2: every row with both signs; short codes fill the first level, codes
  // opening with seven zeros the second, indexed from bit 7 on.
  for (const AcRow& row : AcBaseTable) {
    const CanonicalCode base = ParseCode(row.code);
    for (uint32_t sign = 0; sign < 2; ++sign) {
      const uint32_t len = base.length + 1u;
      const uint32_t code = ReverseBits((base.bits << 1) | sign, len);
      const int8_t level = static_cast<int8_t>(sign ? -row.level : row.level);
      if (len <= 12) {
        for (uint32_t i = 0; i < 4096; ++i) {
          if (!Matches(i, {code, len})) continue;
          t.acLength[i] = static_cast<uint8_t>(len);
          t.acRun[i] = row.run;
          t.acLevel[i] = level;
        }
      }
      if ((code & 127) == 0) {
        const StreamCode tail{code >> 7, len - 7};
        for (uint32_t k = 0; k < 1024; ++k) {
          if (!Matches(k, tail)) continue;
          t.acLongRun[k] = row.run;
          t.acLongLevel[k] = level;
        }
      }
    }
  }
  for (uint32_t i = 0; i < 4096; ++i) {
    // 3: seven leading zeros; the length follows from the first one bit, and
    // twelve zeros (no code of the format) cost 17 bits.
    if ((i & 127) == 0) {
      t.acRun[i] = kAcUnfinished;
      t.acLength[i] = (i & 0x080) ? 13 : (i & 0x100) ? 14 : (i & 0x200) ? 15 : (i & 0x400) ? 16 : 17;
    }
    // 4: the escape prefix; its run field is bits 6..11 of the index.
    if (Matches(i, kEscape)) {
      t.acLength[i] = 24;
      t.acRun[i] = static_cast<uint8_t>(kAcUnfinished | (i >> 6));
    }
    // 5: end of block.
    if (Matches(i, kEndOfBlock)) {
      t.acLength[i] = static_cast<uint8_t>(kAcEndOfBlock | kEndOfBlock.length);
      t.acRun[i] = 0;
    }
  }
  std::memset(t.scanOrder, 0, sizeof t.scanOrder);
  std::memcpy(t.scanOrder, ZigzagScan, 64);
  // 6: the walked table. A code is whole inside the index when its length
  // fits the bits left; codes form a prefix tree, so the index's zero fill
  // above those bits cannot change which code it is.
  struct Single {
    uint32_t length, step;
    int32_t level;
    bool end, unfinished;
  };
  const auto single = [&t](uint32_t i) {
    return Single{t.acLength[i] & 0x7Fu, (t.acRun[i] & 0x3Fu) + 1u, t.acLevel[i],
                  (t.acLength[i] & kAcEndOfBlock) != 0, (t.acRun[i] & kAcUnfinished) != 0};
  };
  const auto level = [](int32_t v, uint32_t at) { return (static_cast<uint32_t>(v) & 31u) << at; };
  for (uint32_t i = 0; i < 4096; ++i) {
    const Single first = single(i);
    uint32_t e = first.length;
    if (first.end) {
      e |= kAcPairThenEnd | (kEndStep << 8);
    } else if (first.unfinished) {
      e |= kAcPairSlow | (first.length == 24 ? first.step << 8 : kAcPairLong);
    } else {
      e |= (first.step << 8) | level(first.level, 22);
      const Single second = single(i >> first.length);
      if (second.length <= 12 - first.length) {
        if (second.end) {
          e += second.length;
          e |= kAcPairThenEnd;
        } else if (!second.unfinished) {
          e += second.length;
          e |= (second.step << 16) | level(second.level, 27);
          // A pair the block's end follows inside the index ends the block too.
          const uint32_t used = first.length + second.length;
          const Single third = single(i >> used);
          if (third.end && third.length <= 12 - used) {
            e += third.length;
            e |= kAcPairThenEnd;
          }
        }
      }
    }
    t.acPair[i] = e;
    t.acNext[i] = static_cast<uint16_t>((e & 63u) | kExtractIndexBits);
  }
}

void Build(BlockDecodeTables& tables) {
  BuildDc(tables.dcLuma, true);
  BuildDc(tables.dcChroma, false);
  BuildAc(tables);
}

}  // namespace

const BlockDecodeTables& BlockDecodeTablesInstance() { return BuiltOnce<BlockDecodeTables, Build>(); }

}  // namespace vantaro::decoder
