// The system's component-object calls with plain types. The system's COM
// header declares the server exports with its own GUID type, and the
// library's public header declares them with the library's; no file can see
// both, so the system calls live behind this seam.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vantaro::system {

void* TaskMemAlloc(size_t size);
void TaskMemFree(void* memory);
int32_t ComInitialize();
void ComUninitialize();
void ComFreeUnusedLibraries();
// `clsid` and `iid` point to 16-byte GUID records, `outer` to an unknown.
int32_t ComCreateInstance(const void* clsid, void* outer, uint32_t context, const void* iid,
                          void** object);

}  // namespace vantaro::system
