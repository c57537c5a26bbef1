// Hand-built streams for the decoder tests, written with the encoder's code
// tables (the DC, AC and alpha pair codes) through PutCode.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "codec/bit_stream.h"
#include "codec/global_tables.h"

namespace vantaro::test {

class StreamWriter {
 public:
  explicit StreamWriter(size_t capacity = 1 << 16) : bytes_(capacity + 8, 0) {
    writer_ = BitWriter{bytes_.data(), 0, 0, capacity};
  }

  // Bits given as text in transmission order, e.g. "100" "0110".
  StreamWriter& Bits(const char* text) {
    for (; *text != '\0'; ++text) {
      if (*text == '0' || *text == '1') Put(*text == '1', 1);
    }
    return *this;
  }
  StreamWriter& Dc(int32_t diff, bool luma) {
    const DcCodeTable& t = luma ? Tables().dcLuma : Tables().dcChroma;
    return Put(t.code[diff + 2048], t.length[diff + 2048]);
  }
  StreamWriter& Ac(int32_t run, int32_t level) {
    const uint32_t e = Tables().acCode[level + 2048][run];
    return Put(e >> 8, e & 0xFF);
  }
  StreamWriter& Eob() { return Bits("0110"); }
  // A block: DC difference, (run, level) pairs, end of block.
  StreamWriter& Block(int32_t dcDiff, bool luma, std::vector<std::pair<int32_t, int32_t>> ac = {}) {
    Dc(dcDiff, luma);
    for (const auto& [run, level] : ac) Ac(run, level);
    return Eob();
  }
  StreamWriter& AlphaPair(uint32_t value, uint32_t run) {
    return Put(Tables().alphaPairCode[value][run], Tables().alphaPairLength[value][run]);
  }
  StreamWriter& AlphaEnd() { return Put(kAlphaEndMarkerCode, kAlphaEndMarkerLength); }

  uint32_t BitPos() const { return writer_.bitPos; }
  // The bytes written, rounded up to a whole byte.
  std::vector<uint8_t> Bytes() const {
    return std::vector<uint8_t>(bytes_.begin(), bytes_.begin() + (writer_.bitPos + 7) / 8);
  }

 private:
  StreamWriter& Put(uint32_t code, uint32_t length) {
    PutCode(writer_, code, length);
    return *this;
  }
  std::vector<uint8_t> bytes_;
  BitWriter writer_;
};

}  // namespace vantaro::test
