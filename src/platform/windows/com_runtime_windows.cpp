// The component-object runtime of the system. The project's GUID record and
// interface tables are laid out as the system's, so pointers pass between
// them unchanged. The test hooks of the portable class table have no twin
// here: on Windows the classes are the system's registered ones.
#include "platform/com_runtime.h"
#include "platform/windows/com_system.h"
#include "platform/windows/module_handle.h"
#include "platform/windows/windows_headers.h"

namespace vantaro {

void* CoTaskMemAlloc(size_t size) { return system::TaskMemAlloc(size); }

void CoTaskMemFree(void* memory) { system::TaskMemFree(memory); }

HRESULT CoInitialize() { return system::ComInitialize(); }

void CoUninitialize() { system::ComUninitialize(); }

void CoFreeUnusedLibraries() { system::ComFreeUnusedLibraries(); }

HRESULT CoCreateInstance(const GUID& clsid, IUnknown* outer, uint32_t context, const GUID& iid,
                         void** object) {
  return system::ComCreateInstance(&clsid, outer, context, &iid, object);
}

int32_t ModuleFileName(std::string* path) {
  char buffer[MAX_PATH + 1];
  const DWORD length = GetModuleFileNameA(ThisModule(), buffer, sizeof buffer);
  // A full buffer means the name was cut short.
  if (length == 0 || length >= sizeof buffer) {
    const DWORD error = GetLastError();
    return error != 0 ? static_cast<int32_t>(error) : ERROR_INSUFFICIENT_BUFFER;
  }
  path->assign(buffer, length);
  return kErrorSuccess;
}

// The system's narrow text is in its ANSI code page.
int32_t WidenSystemText(const std::string& text, std::u16string* wide) {
  wide->clear();
  if (text.empty()) return kErrorSuccess;
  const int size = static_cast<int>(text.size());
  const int needed = MultiByteToWideChar(CP_ACP, 0, text.data(), size, nullptr, 0);
  if (needed <= 0) return static_cast<int32_t>(GetLastError());
  wide->resize(static_cast<size_t>(needed));
  if (MultiByteToWideChar(CP_ACP, 0, text.data(), size, reinterpret_cast<wchar_t*>(wide->data()),
                          needed) != needed) {
    return static_cast<int32_t>(GetLastError());
  }
  return kErrorSuccess;
}

}  // namespace vantaro
