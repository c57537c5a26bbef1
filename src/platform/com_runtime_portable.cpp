// Portable component-object runtime: heap task memory, a counted apartment,
// an in-process class table holding the filter mappers, and the module path
// from the dynamic loader.
#include <dlfcn.h>

#include <cstdlib>
#include <map>
#include <mutex>

#include "platform/com_runtime.h"
#include "platform/filter_mapper.h"

namespace vantaro {

namespace {

struct GuidLess {
  bool operator()(const GUID& a, const GUID& b) const {
    return GuidToString(a) < GuidToString(b);
  }
};

struct ClassTable {
  std::mutex lock;
  std::map<GUID, ClassCreator, GuidLess> creators{
      {kClsidFilterMapper2, &CreatePortableFilterMapper2},
      {kClsidFilterMapper, &CreatePortableFilterMapper},
  };
  int32_t apartmentDepth = 0;
};

ClassTable& TheTable() {
  static ClassTable table;
  return table;
}

}  // namespace

void* CoTaskMemAlloc(size_t size) { return std::malloc(size == 0 ? 1 : size); }

void CoTaskMemFree(void* memory) { std::free(memory); }

HRESULT CoInitialize() {
  ClassTable& t = TheTable();
  std::lock_guard<std::mutex> guard(t.lock);
  return ++t.apartmentDepth == 1 ? kSOk : kSFalse;
}

void CoUninitialize() {
  ClassTable& t = TheTable();
  std::lock_guard<std::mutex> guard(t.lock);
  if (t.apartmentDepth > 0) --t.apartmentDepth;
}

void CoFreeUnusedLibraries() {}

HRESULT CoCreateInstance(const GUID& clsid, IUnknown* outer, uint32_t context, const GUID& iid,
                         void** object) {
  if (object == nullptr) return kEPointer;
  *object = nullptr;
  ClassCreator creator = nullptr;
  {
    ClassTable& t = TheTable();
    std::lock_guard<std::mutex> guard(t.lock);
    const auto it = t.creators.find(clsid);
    if (it != t.creators.end()) creator = it->second;
  }
  if (creator == nullptr || (context & kClsCtxInprocServer) == 0) return kRegDbEClassNotReg;
  return creator(outer, iid, object);
}

int32_t ModuleFileName(std::string* path) {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&ModuleFileName), &info) == 0 || info.dli_fname == nullptr) {
    return kErrorFileNotFound;
  }
  char* full = realpath(info.dli_fname, nullptr);
  *path = full != nullptr ? full : info.dli_fname;
  std::free(full);
  return kErrorSuccess;
}

// The system's narrow text is UTF-8 here.
int32_t WidenSystemText(const std::string& text, std::u16string* wide) {
  wide->clear();
  for (size_t i = 0; i < text.size();) {
    const auto lead = static_cast<uint8_t>(text[i]);
    const int extra = lead < 0x80 ? 0 : lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : -1;
    if (extra < 0 || i + static_cast<size_t>(extra) >= text.size()) {
      return kErrorNoUnicodeTranslation;
    }
    uint32_t code = extra == 0 ? lead : (lead & (0x3Fu >> extra));
    for (int k = 1; k <= extra; ++k) {
      const auto next = static_cast<uint8_t>(text[i + static_cast<size_t>(k)]);
      if ((next & 0xC0) != 0x80) return kErrorNoUnicodeTranslation;
      code = (code << 6) | (next & 0x3Fu);
    }
    i += static_cast<size_t>(extra) + 1;
    if (code >= 0x10000) {
      code -= 0x10000;
      wide->push_back(static_cast<char16_t>(0xD800 + (code >> 10)));
      wide->push_back(static_cast<char16_t>(0xDC00 + (code & 0x3FF)));
    } else {
      wide->push_back(static_cast<char16_t>(code));
    }
  }
  return kErrorSuccess;
}

ClassCreator SetClassCreatorForTests(const GUID& clsid, ClassCreator creator) {
  ClassTable& t = TheTable();
  std::lock_guard<std::mutex> guard(t.lock);
  const auto it = t.creators.find(clsid);
  const ClassCreator old = it == t.creators.end() ? nullptr : it->second;
  if (creator == nullptr) {
    if (it != t.creators.end()) t.creators.erase(it);
  } else {
    t.creators[clsid] = creator;
  }
  return old;
}

int32_t ComApartmentDepthForTests() {
  ClassTable& t = TheTable();
  std::lock_guard<std::mutex> guard(t.lock);
  return t.apartmentDepth;
}

}  // namespace vantaro
