// Keeping the writer inside the caller's buffer. A macroblock is written
// straight into the stream while a worst-case macroblock still fits; near
// the end it goes through a small staging area first and is copied only if
// it fits. Both ways give the same bytes.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "codec/bit_stream.h"
#include "codec/slice_walks.h"
#include "encoder/macroblock_encoder.h"

namespace vantaro::encoder {

// Runs `encode(writer)`, which writes at most kWorstCaseMacroblockBytes.
// kDoesNotFit, with nothing stored past `writer.capacity`, when the result
// would not fit.
template <class Encode>
inline Status EncodeWithinCapacity(BitWriter& writer, Encode&& encode) {
  // The block coder's stores reach four bytes further than RoomFor allows for.
  if (RoomFor(writer, kWorstCaseMacroblockBytes + 4)) {
    encode(writer);
    return Status::kOk;
  }
  constexpr size_t kStagingBytes = kWorstCaseMacroblockBytes + 8;
  uint8_t staging[kStagingBytes];
  const size_t startByte = writer.bitPos >> 3;
  const size_t available = writer.capacity > startByte ? writer.capacity - startByte : 0;
  // The staging area starts as the stream's bytes, so that what is copied
  // back equals what direct stores would have left.
  std::memset(staging, 0, kStagingBytes);
  std::memcpy(staging, writer.buffer + startByte, available < kStagingBytes ? available : kStagingBytes);
  BitWriter staged{staging, writer.carry, writer.bitPos & 7u, kStagingBytes};
  encode(staged);
  // PutCode's store reaches four bytes from the final byte position, which
  // must fit; the block coder's may have zeroed up to eight, copied back as
  // far as the buffer goes so that both ways leave the same bytes.
  const size_t touched = (staged.bitPos >> 3) + 4;
  if (touched > available) return Status::kDoesNotFit;
  std::memcpy(writer.buffer + startByte, staging, std::min(touched + 4, available));
  writer.carry = staged.carry;
  writer.bitPos = (writer.bitPos & ~7u) + staged.bitPos;
  return Status::kOk;
}

}  // namespace vantaro::encoder
