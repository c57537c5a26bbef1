// The seam between the field drivers and the slice walks. The drivers pick a
// walk once per slice, by the instance's format; the walk holds the
// macroblock loop and has no format test left inside it.
#pragma once

#include <cstdint>

#include "codec/bit_stream.h"
#include "codec/codec_instance.h"
#include "codec/kernels.h"
#include "codec/status.h"

namespace vantaro {

// The six arms of the dispatch: chroma layout, and whether alpha travels as
// DCT blocks. 4:2:0 with DCT alpha is reachable by no FourCC.
enum class ChromaArm : uint8_t { k420, k420Dct, k422, k422Dct, k444, k444Dct, kNone };

constexpr ChromaArm ArmFor(uint32_t chromaFamily, uint8_t dctAlpha) {
  switch (chromaFamily) {
    case 0: case 1: return dctAlpha ? ChromaArm::k420Dct : ChromaArm::k420;
    case 2: case 3: return dctAlpha ? ChromaArm::k422Dct : ChromaArm::k422;
    case 4: case 5: return dctAlpha ? ChromaArm::k444Dct : ChromaArm::k444;
    default: return ChromaArm::kNone;
  }
}

// Encodes one slice's macroblock rows into `writer` with `kernels`. `picture` is the first
// line of the field, `chroma` the first line of its second plane (planar
// layouts only), `stride` the field's signed line distance. kDoesNotFit
// when the writer's capacity is reached, with nothing stored past it.
using EncodeSliceWalkFn = Status (*)(const CodecInstance& instance, const Kernels& kernels,
                                     BitWriter& writer,
                                   const uint8_t* picture, const uint8_t* chroma,
                                   int32_t stride, uint32_t slice);

// Null where the layout has no walk (Invalid, csYV12, an unreachable arm):
// the slice is then written empty.
EncodeSliceWalkFn FindEncodeSliceWalk(ChromaArm arm, uint32_t colorSpace, bool hasAlpha);

// Decodes one slice into the picture. `reader.bitPos` is 24, just past the
// slice's length field. A walk never reads at or past
// `reader.end` (it sees zero bits there) and answers kStreamFault as soon as the
// position it has consumed passes `end`, or a run leaves its block.
using DecodeSliceWalkFn = Status (*)(const CodecInstance& instance, const Kernels& kernels,
                                     uint8_t* picture,
                                           uint8_t* chroma, BitReader& reader, int32_t stride,
                                           uint32_t slice);

DecodeSliceWalkFn FindDecodeSliceWalk(ChromaArm arm, uint32_t colorSpace, bool hasAlpha);

}  // namespace vantaro
