// The registry as the filter uses it: a per-user store of named 32-bit
// values for its settings, and the tree of class keys that registration
// writes and removes. Error numbers are the platform's (0 success, 2 not
// found, 5 access denied, 259 no more items). The portable build keeps both
// trees in memory for the life of the process; names compare without regard
// to ASCII case, as on the platform.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vantaro {

using RegistryKey = uintptr_t;
constexpr RegistryKey kRegistryClassesRoot = 0x80000000u;
constexpr RegistryKey kRegistryCurrentUser = 0x80000001u;

// Opens `path` under `parent`, creating the missing keys.
int32_t RegistryCreateKey(RegistryKey parent, const std::u16string& path, RegistryKey* key);
// Opens an existing key only.
int32_t RegistryOpenKey(RegistryKey parent, const std::u16string& path, RegistryKey* key);
int32_t RegistryCloseKey(RegistryKey key);

// A string value; an empty `name` is the key's default value.
int32_t RegistrySetString(RegistryKey key, const std::u16string& name,
                          const std::u16string& value);
// Reads exactly four bytes of a value, whatever its type. Fails for a
// missing value or one of another size.
int32_t RegistryQueryDword(RegistryKey key, const std::u16string& name, uint32_t* value);
int32_t RegistrySetDword(RegistryKey key, const std::u16string& name, uint32_t value);

// The name of the `index`-th subkey, 259 past the last.
int32_t RegistryEnumSubKey(RegistryKey key, uint32_t index, std::u16string* name);
// Deletes a subkey that has no subkeys of its own (5 if it has).
int32_t RegistryDeleteKey(RegistryKey key, const std::u16string& subKey);

// Test hooks. Forget every key and value, and close every handle.
void RegistryResetForTests();
// While set, every operation under `root` answers 5 (access denied).
void RegistrySetDeniedForTests(RegistryKey root, bool denied);
// The tree under `path` of `root`, one line per key ("key NAME", its path
// relative to `path`) and per value ("value KEY|NAME=DATA"), sorted; empty if
// `path` is missing. Dword data print in decimal.
std::vector<std::string> RegistryDumpForTests(RegistryKey root, const std::u16string& path);
// Handles now open.
size_t RegistryOpenHandlesForTests();

}  // namespace vantaro
