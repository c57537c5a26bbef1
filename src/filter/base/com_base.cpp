#include "filter/base/com_base.h"

namespace vantaro {

namespace {

std::atomic<int32_t> g_livingObjects{0};
int32_t g_serverLocks = 0;

}  // namespace

int32_t LivingObjectCount() { return g_livingObjects.load(); }
int32_t ServerLockCount() { return g_serverLocks; }
void ChangeServerLock(bool lock) { g_serverLocks += lock ? 1 : -1; }

CBaseObject::CBaseObject() { ++g_livingObjects; }
CBaseObject::~CBaseObject() { --g_livingObjects; }

CUnknown::CUnknown(IUnknown* outer) : inner_(this), owner_(outer != nullptr ? outer : &inner_) {}

HRESULT CUnknown::NonDelegatingQueryInterface(const GUID& iid, void** object) {
  if (object == nullptr) return kEPointer;
  if (iid == kIidIUnknown) return GetInterface(&inner_, object);
  *object = nullptr;
  return kENoInterface;
}

uint32_t CUnknown::NonDelegatingAddRef() { return static_cast<uint32_t>(++references_); }

uint32_t CUnknown::NonDelegatingRelease() {
  const int32_t left = --references_;
  if (left == 0) {
    // Held at one while the destructor runs, so that a nested AddRef and
    // Release during destruction cannot delete twice.
    references_ = 1;
    delete this;
    return 0;
  }
  return static_cast<uint32_t>(left);
}

HRESULT GetInterface(IUnknown* unknown, void** object) {
  if (object == nullptr) return kEPointer;
  *object = unknown;
  unknown->AddRef();
  return kSOk;
}

}  // namespace vantaro
