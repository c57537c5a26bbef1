// The compress-side messages: test a proposed source, describe the output
// and its worst-case size, compress one frame into the host's buffer.
#pragma once

#include <cstdint>

#include "codec/codec_instance.h"
#include "platform/vfw_records.h"

namespace vantaro {

// ICM_COMPRESS_QUERY: 0, or -2 for an unusable layout, a width that is not a
// multiple of 16, or a layout the stream's alpha rule refuses. Sets topDown
// from the sign of biHeight whatever the answer.
int64_t CompressQuery(CodecInstance* instance, const BITMAPINFOHEADER* source);

// ICM_COMPRESS_GET_FORMAT: 40 (the record's size) for a null `output`;
// otherwise fills it from the source, sets topDown and answers 0.
int64_t CompressGetFormat(CodecInstance* instance, const BITMAPINFOHEADER* source,
                          BITMAPINFOHEADER* output);

// ICM_COMPRESS_GET_SIZE: six bytes a pixel of the compressed header's size,
// wrapped to 32 bits. Also the least output buffer ICM_COMPRESS relies on.
int64_t CompressWorstCaseSize(const BITMAPINFOHEADER* compressed);

// ICM_COMPRESS: 0, or -2 for an unusable layout, a short source, a size other
// than Begin's, or any failure while compressing (an output that would pass
// the buffer the host was told to provide among them). Every frame is a key
// frame. The instance stays usable after a failure.
int64_t CompressMessage(CodecInstance* instance, const ICCOMPRESS& frame);

}  // namespace vantaro
