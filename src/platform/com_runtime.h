// The component-object runtime the filter and its server use: task memory,
// apartment start and stop, creation of classes by id, and the module's own
// file name. The portable build keeps an in-process class table that holds
// the filter mappers; tests may add or withdraw classes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/com_interfaces.h"

namespace vantaro {

void* CoTaskMemAlloc(size_t size);
void CoTaskMemFree(void* memory);

HRESULT CoInitialize();
void CoUninitialize();
void CoFreeUnusedLibraries();

constexpr uint32_t kClsCtxInprocServer = 1;
HRESULT CoCreateInstance(const GUID& clsid, IUnknown* outer, uint32_t context, const GUID& iid,
                         void** object);

// The full path of the module holding the library, in the system's narrow
// encoding. Answers a platform error number, 0 on success.
int32_t ModuleFileName(std::string* path);
// Widens narrow text as the system's code page says. Error number, 0 on success.
int32_t WidenSystemText(const std::string& text, std::u16string* wide);

// Test hooks of the portable class table.
using ClassCreator = HRESULT (*)(IUnknown* outer, const GUID& iid, void** object);
// Installs `creator` for `clsid`; null withdraws the class. Returns the old one.
ClassCreator SetClassCreatorForTests(const GUID& clsid, ClassCreator creator);
// CoInitialize calls not yet matched by CoUninitialize.
int32_t ComApartmentDepthForTests();

}  // namespace vantaro
