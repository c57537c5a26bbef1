#include "encoder/block_coder.h"

#include "codec/global_tables.h"
#include "encoder/block_codes.h"

namespace vantaro::encoder {
namespace {

constexpr uint8_t kIdentityOrder[64] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12,
                                        13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25,
                                        26, 27, 28, 29, 30, 31, 32, 33, 34, 35, 36, 37, 38,
                                        39, 40, 41, 42, 43, 44, 45, 46, 47, 48, 49, 50, 51,
                                        52, 53, 54, 55, 56, 57, 58, 59, 60, 61, 62, 63};

void EncodeScannedBlock(const DcCodeTable& dc, const int16_t* block, BitWriter& writer) {
  CodeWriter w = CodeWriter::From(writer);
  CodeBlock(Tables(), dc, block[0], block, kIdentityOrder, ~ZeroMask(block) & ~uint64_t{1}, w);
  w.To(writer);
}

}  // namespace

void ZigzagBlock(int16_t* destination, const int16_t* source) {
  for (int s = 0; s < 64; ++s) destination[s] = source[ZigzagScan[s]];
}

uint64_t ZeroMask(const int16_t* block) {
  uint64_t mask = 0;
  for (int s = 0; s < 64; ++s) mask |= static_cast<uint64_t>(block[s] == 0) << s;
  return mask;
}

uint64_t ScanOrderMask(uint64_t rasterMask) { return ScanOrderMask(Tables(), rasterMask); }

void EncodeLumaBlock(const CodecInstance&, const int16_t* block, BitWriter& writer) {
  EncodeScannedBlock(Tables().dcLuma, block, writer);
}

void EncodeChromaBlock(const CodecInstance&, const int16_t* block, BitWriter& writer) {
  EncodeScannedBlock(Tables().dcChroma, block, writer);
}

void EncodeRasterBlock(bool chroma, int16_t dcDifference, const int16_t* raster, uint64_t rasterNonZero,
                       BitWriter& writer) {
  const GlobalTables& t = Tables();
  CodeWriter w = CodeWriter::From(writer);
  CodeBlock(t, chroma ? t.dcChroma : t.dcLuma, dcDifference, raster, ZigzagScan,
            ScanOrderMask(t, rasterNonZero) & ~uint64_t{1}, w);
  w.To(writer);
}

}  // namespace vantaro::encoder
