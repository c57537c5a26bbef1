// The system registry. Keys are handles of the system; the two roots keep
// the portable numbering and are mapped to the system's predefined keys,
// which are those numbers sign-extended on 64-bit Windows. Text is UTF-16 on
// both sides. The test hooks of the in-memory registry have no twin here.
#include "platform/registry.h"
#include "platform/windows/windows_headers.h"

namespace vantaro {
namespace {

HKEY ToHkey(RegistryKey key) {
  if (key == kRegistryClassesRoot) return HKEY_CLASSES_ROOT;
  if (key == kRegistryCurrentUser) return HKEY_CURRENT_USER;
  return reinterpret_cast<HKEY>(key);
}

const wchar_t* Wide(const std::u16string& text) {
  return reinterpret_cast<const wchar_t*>(text.c_str());
}

}  // namespace

int32_t RegistryCreateKey(RegistryKey parent, const std::u16string& path, RegistryKey* key) {
  HKEY opened = nullptr;
  const LONG error = RegCreateKeyW(ToHkey(parent), Wide(path), &opened);
  if (error == ERROR_SUCCESS) *key = reinterpret_cast<RegistryKey>(opened);
  return error;
}

int32_t RegistryOpenKey(RegistryKey parent, const std::u16string& path, RegistryKey* key) {
  HKEY opened = nullptr;
  const LONG error = RegOpenKeyExW(ToHkey(parent), Wide(path), 0, MAXIMUM_ALLOWED, &opened);
  if (error == ERROR_SUCCESS) *key = reinterpret_cast<RegistryKey>(opened);
  return error;
}

int32_t RegistryCloseKey(RegistryKey key) {
  if (key == kRegistryClassesRoot || key == kRegistryCurrentUser) return ERROR_SUCCESS;
  return RegCloseKey(ToHkey(key));
}

int32_t RegistrySetString(RegistryKey key, const std::u16string& name,
                          const std::u16string& value) {
  // The size counts the terminating zero, in bytes.
  const auto bytes = static_cast<DWORD>((value.size() + 1) * sizeof(char16_t));
  return RegSetValueExW(ToHkey(key), name.empty() ? nullptr : Wide(name), 0, REG_SZ,
                        reinterpret_cast<const BYTE*>(value.c_str()), bytes);
}

int32_t RegistryQueryDword(RegistryKey key, const std::u16string& name, uint32_t* value) {
  DWORD data = 0;
  DWORD size = sizeof data;
  const LONG error = RegQueryValueExW(ToHkey(key), Wide(name), nullptr, nullptr,
                                      reinterpret_cast<BYTE*>(&data), &size);
  if (error != ERROR_SUCCESS) return error;
  if (size != sizeof data) return ERROR_MORE_DATA;  // a value of another size
  *value = data;
  return ERROR_SUCCESS;
}

int32_t RegistrySetDword(RegistryKey key, const std::u16string& name, uint32_t value) {
  const DWORD data = value;
  return RegSetValueExW(ToHkey(key), Wide(name), 0, REG_DWORD,
                        reinterpret_cast<const BYTE*>(&data), sizeof data);
}

int32_t RegistryEnumSubKey(RegistryKey key, uint32_t index, std::u16string* name) {
  wchar_t buffer[256];  // the system's longest key name is 255 characters
  DWORD length = 256;
  const LONG error =
      RegEnumKeyExW(ToHkey(key), index, buffer, &length, nullptr, nullptr, nullptr, nullptr);
  if (error == ERROR_SUCCESS) name->assign(reinterpret_cast<const char16_t*>(buffer), length);
  return error;
}

int32_t RegistryDeleteKey(RegistryKey key, const std::u16string& subKey) {
  return RegDeleteKeyW(ToHkey(key), Wide(subKey));
}

}  // namespace vantaro
