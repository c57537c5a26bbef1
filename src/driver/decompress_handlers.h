// The decompress-side messages: test a proposed pair of formats, offer the
// default output, decode one frame into the host's buffer. The instance's
// chroma family, not the stream header, decides which outputs are allowed.
#pragma once

#include <cstdint>

#include "codec/codec_instance.h"
#include "platform/vfw_records.h"

namespace vantaro {

// ICM_DECOMPRESS_QUERY: 0; -2 for a size mismatch, an unusable output, an
// output the family's alpha rule refuses or a stream FourCC that is not one of
// the eight upper-case ones; -7 for an output buffer below its bit count.
// With an output that passes the size checks, sets topDown (a zero height
// counts as top-down here) even if a later check refuses.
int64_t DecompressQuery(CodecInstance* instance, const BITMAPINFOHEADER* stream,
                        const BITMAPINFOHEADER* output);

// ICM_DECOMPRESS_GET_FORMAT: 40 for a null `output`; -2 for an unknown
// stream; otherwise 32-bit bottom-up RGB of the stream's size, and 0.
int64_t DecompressGetFormat(const BITMAPINFOHEADER* stream, BITMAPINFOHEADER* output);

// ICM_DECOMPRESS: 0, or -2 for an unusable output, an output buffer declared
// smaller than the frame, or a frame whose quality byte is outside 1..99.
// Takes size and layout from this call's headers.
int64_t DecompressMessage(CodecInstance* instance, const ICDECOMPRESS& frame);

}  // namespace vantaro
