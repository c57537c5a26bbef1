// The capture of a decode that faulted: the first fault in a directory
// leaves "VTQ_Crash_Input" (the stream) and "VTQ_Crash_Output" (the picture).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace vantaro {

struct CodecInstance;

// Called once a decoding fault has ended a field. Sends "ExceptCatch: Called\n"
// to the debugger output, then creates each file only if it does not exist
// yet. The input file gets n * 5 + 1 bytes of the stream, n being the low 24
// bits of its first word (a generous over-estimate of the frame, kept); the
// output file 691200 bytes of the picture. Where that would read past what is
// known readable (`streamReadable`, `pictureReadable`), the file gets the
// fallback text instead, as a read fault would give. Returns 1.
int ExceptCatch(const CodecInstance* instance, const uint8_t* picture, size_t pictureReadable,
                const uint8_t* stream, size_t streamReadable, int32_t stride, uint32_t field);

// Where the two files go: "" (the default) is the current directory. For
// tests; process-wide and not synchronised.
void SetFaultCaptureDirectory(const std::string& directory);

}  // namespace vantaro
