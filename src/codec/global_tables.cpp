#include "codec/global_tables.h"

#include <iterator>

#include "codec/code_rows.h"

namespace vantaro {

namespace {

int16_t Lane(int32_t coefficient, int32_t x, int32_t offset = 0) {
  return static_cast<int16_t>(((coefficient * x) >> 8) + offset);
}

// Coefficients are BT.601 studio-range matrix entries times 8192; the >> 8
// leaves five fractional bits.
void BuildColorLuts(GlobalTables& t) {
  for (int32_t x = 0; x < 256; ++x) {
    const RgbToYuvCoefficients& c = kRgbToYuv;
    t.lutBlue[x] = {{Lane(c.blue[0], x), Lane(c.blue[1], x), Lane(c.blue[2], x), 0}};
    t.lutGreen[x] = {{Lane(c.green[0], x), Lane(c.green[1], x), Lane(c.green[2], x), 0}};
    t.lutRed[x] = {{Lane(c.red[0], x, c.offset[0]), Lane(c.red[1], x, c.offset[1]), Lane(c.red[2], x, c.offset[2]), 0}};
    const YuvToRgbCoefficients& k = kYuvToRgb;
    const int16_t y = Lane(k.luma, x - 16, 16);
    t.lutLuma[x] = {{y, y, y, 0}};
    t.lutCb[x] = {{Lane(k.cbBlue, x - 128), Lane(k.cbGreen, x - 128), 0, 0}};
    t.lutCr[x] = {{0, Lane(k.crGreen, x - 128), Lane(k.crRed, x - 128), 0}};
  }
}

uint32_t BitLength(uint32_t magnitude) {
  uint32_t size = 0;
  while (size < 32 && (magnitude >> size) != 0) ++size;
  return size;
}

// Differences -2047..2047: sizes 0..11, one code row each. -2048 (entry 0)
// would need size 12, past the rows; reading DcSizeCode[12] for it was the
// undefined behaviour that once made the optimiser drop this builder's calls.
void BuildDcTable(DcCodeTable& t, bool luma) {
  for (int32_t d = -2047; d < 2048; ++d) {
    const int32_t i = d + 2048;
    const uint32_t size = BitLength(static_cast<uint32_t>(d < 0 ? -d : d));
    const uint32_t extra = d >= 0 ? static_cast<uint32_t>(d)
                                  : static_cast<uint32_t>((1 << size) + d - 1);
    const CanonicalCode c = ParseCode(luma ? DcSizeCode[size].luma : DcSizeCode[size].chroma);
    t.code[i] = (extra << c.length) | StreamOrder(c);
    t.length[i] = static_cast<uint8_t>(c.length + size);
  }
}
static_assert(std::size(DcSizeCode) == 12, "sizes 0..11: every difference but -2048");

// The escape in stream order: the prefix, run in 6 bits and level + 2048 in
// 12 bits, both least significant bit first; 24 bits in all.
constexpr CanonicalCode kEscape = ParseCode(kEscapePrefix);
constexpr uint32_t EscapeEntry(int32_t level, int32_t run) {
  const uint32_t code = StreamOrder(kEscape) | (static_cast<uint32_t>(run) << kEscape.length) |
                        (static_cast<uint32_t>(level + 2048) << (kEscape.length + 6));
  return (code << 8) | (kEscape.length + 18u);
}
static_assert(EscapeEntry(0, 0) == ((2048u * 64) << 14 | 8192u | 24u));

void BuildDcAcTables(GlobalTables& t) {
  BuildDcTable(t.dcLuma, true);
  BuildDcTable(t.dcChroma, false);

  // Row codes by (run, magnitude) for the runs and magnitudes the rows cover.
  CanonicalCode rows[32][41] = {};
  for (const AcRow& row : AcBaseTable) rows[row.run][row.level] = ParseCode(row.code);

  for (int32_t run = 0; run < 64; ++run) {
    for (int32_t level = -2048; level < 2048; ++level) {
      const uint16_t m1 = static_cast<uint16_t>((level < 0 ? -level : level) - 1);
      const CanonicalCode* row = nullptr;
      if (run < 3 && m1 < 40) {
        row = &rows[run][m1 + 1];
      } else if (run < 32 && m1 < 5) {
        row = &rows[run][m1 + 1];
      }
      uint32_t& entry = t.acCode[level + 2048][run];
      if (row != nullptr && row->length != 0) {
        const uint32_t v = row->bits * 2 + (level < 0 ? 1u : 0u);
        entry = (ReverseBits(v, row->length + 1u) << 8) | (row->length + 1u);
      } else {
        entry = EscapeEntry(level, run);
      }
    }
  }
}

struct AlphaCode {
  uint8_t length;
  uint32_t code;
};

AlphaCode AlphaValueCode(int32_t value) {
  switch (value) {
    case 1: return {2, 1};
    case 2: return {5, 2};
    case 3: return {5, 10};
    case 4: return {5, 18};
    case 5: return {5, 26};
    case 251: return {5, 30};
    case 252: return {5, 22};
    case 253: return {5, 14};
    case 254: return {5, 6};
    case 255: return {2, 3};
    default: return {10, static_cast<uint32_t>(value) * 4};
  }
}

AlphaCode AlphaRunCode(int32_t run) {
  if (run == 0) return {1, 0};
  if (run <= 4) return {4, static_cast<uint32_t>(run - 1) * 4 + 1};
  return {10, static_cast<uint32_t>(run) * 8 + 7};
}

uint16_t DecodeEntry(uint32_t result, uint32_t length) {
  return static_cast<uint16_t>((length << 8) | (result & 0xFF));
}

void BuildAlphaTables(GlobalTables& t) {
  for (int32_t value = 0; value < 256; ++value) {
    const AlphaCode v = AlphaValueCode(value);
    for (int32_t run = 0; run < 128; ++run) {
      const AlphaCode r = AlphaRunCode(run);
      t.alphaPairLength[value][run] = static_cast<uint8_t>(r.length + v.length);
      t.alphaPairCode[value][run] = (v.code << r.length) | r.code;
    }
  }
  for (uint32_t b = 0; b < 1024; ++b) {
    if ((b & 1) == 0) {
      t.alphaRunDecode[b] = DecodeEntry(0, 1);
    } else if ((b & 2) == 0) {
      t.alphaRunDecode[b] = DecodeEntry(((b >> 2) & 3) + 1, 4);
    } else if ((b & 7) == kAlphaEndMarkerCode) {
      t.alphaRunDecode[b] = DecodeEntry(255, kAlphaEndMarkerLength);
    } else {
      t.alphaRunDecode[b] = DecodeEntry((b >> 3) & 127, 10);
    }

    if ((b & 3) == 1) {
      t.alphaValueDecode[b] = DecodeEntry(1, 2);
    } else if ((b & 3) == 3) {
      t.alphaValueDecode[b] = DecodeEntry(255, 2);
    } else if ((b & 7) == 2) {
      t.alphaValueDecode[b] = DecodeEntry(((b >> 3) & 3) + 2, 5);
    } else if ((b & 7) == 6) {
      t.alphaValueDecode[b] = DecodeEntry(254 - ((b >> 3) & 3), 5);
    } else {
      t.alphaValueDecode[b] = DecodeEntry(b >> 2, 10);
    }
  }
}

void BuildByteTables(GlobalTables& t) {
  uint32_t scanPosition[64];
  for (uint32_t s = 0; s < 64; ++s) scanPosition[ZigzagScan[s]] = s;
  for (uint32_t k = 0; k < 8; ++k) {
    for (uint32_t b = 0; b < 256; ++b) {
      uint64_t m = 0;
      for (uint32_t i = 0; i < 8; ++i) {
        if ((b >> i) & 1) m |= uint64_t{1} << scanPosition[8 * k + i];
      }
      t.scanMask[k][b] = m;
    }
  }
}

}  // namespace

void BuildGlobalTables(GlobalTables& tables) {
  BuildColorLuts(tables);
  BuildDcAcTables(tables);
  BuildAlphaTables(tables);
  BuildByteTables(tables);
}

}  // namespace vantaro
