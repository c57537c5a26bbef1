#include "platform/windows/com_system.h"
#include "platform/windows/windows_headers.h"

#include <objbase.h>

namespace vantaro::system {

void* TaskMemAlloc(size_t size) { return ::CoTaskMemAlloc(size); }

void TaskMemFree(void* memory) { ::CoTaskMemFree(memory); }

int32_t ComInitialize() { return ::CoInitialize(nullptr); }

void ComUninitialize() { ::CoUninitialize(); }

void ComFreeUnusedLibraries() { ::CoFreeUnusedLibraries(); }

int32_t ComCreateInstance(const void* clsid, void* outer, uint32_t context, const void* iid,
                          void** object) {
  return ::CoCreateInstance(*static_cast<const ::GUID*>(clsid), static_cast<::IUnknown*>(outer),
                            context, *static_cast<const ::GUID*>(iid), object);
}

}  // namespace vantaro::system
