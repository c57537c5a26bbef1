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
      if (*text == '0' || *text == '1') PutCode(writer_, static_cast<uint32_t>(*text == '1'), 1);
    }
    return *this;
  }
  StreamWriter& Dc(int32_t diff, bool luma) {
    const DcCodeTable& t = luma ? Tables().dcLuma : Tables().dcChroma;
    PutCode(writer_, t.code[diff + 2048], t.length[diff + 2048]);
    return *this;
  }
  StreamWriter& Ac(int32_t run, int32_t level) {
    const uint32_t e = Tables().acCode[run][level + 2048];
    PutCode(writer_, e >> 8, e & 0xFF);
    return *this;
  }
  StreamWriter& Eob() { return Bits("0110"); }
  // A block: DC difference, (run, level) pairs, end of block.
  StreamWriter& Block(int32_t dcDiff, bool luma, std::vector<std::pair<int32_t, int32_t>> ac = {}) {
    Dc(dcDiff, luma);
    for (const auto& [run, level] : ac) Ac(run, level);
    return Eob();
  }
  StreamWriter& AlphaPair(uint32_t value, uint32_t run) {
    PutCode(writer_, Tables().alphaPairCode[value][run], Tables().alphaPairLength[value][run]);
    return *this;
  }
  StreamWriter& AlphaEnd() {
    PutCode(writer_, kAlphaEndMarkerCode, kAlphaEndMarkerLength);
    return *this;
  }

  uint32_t BitPos() const { return writer_.bitPos; }
  // The bytes written, rounded up to a whole byte.
  std::vector<uint8_t> Bytes() const {
    return std::vector<uint8_t>(bytes_.begin(), bytes_.begin() + (writer_.bitPos + 7) / 8);
  }

 private:
  std::vector<uint8_t> bytes_;
  BitWriter writer_;
};

}  // namespace vantaro::test
