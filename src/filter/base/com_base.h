// The root of the filter's object model: the server's two counters, the
// non-delegating unknown that makes aggregation work, and the helpers that
// hand out interfaces.
#pragma once

#include <atomic>
#include <cstdint>

#include "platform/com_interfaces.h"

namespace vantaro {

// The count of living objects (atomic) and the server's lock count (plain,
// as LockServer is a registering tool's or a host's single-thread matter).
int32_t LivingObjectCount();
int32_t ServerLockCount();
void ChangeServerLock(bool lock);

// Counts itself among the living objects for its whole life.
class CBaseObject {
 public:
  CBaseObject();
  virtual ~CBaseObject();
  CBaseObject(const CBaseObject&) = delete;
  CBaseObject& operator=(const CBaseObject&) = delete;
};

// The unknown that answers for the object itself even when it is aggregated;
// GetOwner() is where the public interfaces send their three methods.
struct INonDelegatingUnknown {
  virtual HRESULT NonDelegatingQueryInterface(const GUID& iid, void** object) = 0;
  virtual uint32_t NonDelegatingAddRef() = 0;
  virtual uint32_t NonDelegatingRelease() = 0;
};

class CUnknown : public INonDelegatingUnknown, public CBaseObject {
 public:
  explicit CUnknown(IUnknown* outer);
  ~CUnknown() override = default;

  HRESULT NonDelegatingQueryInterface(const GUID& iid, void** object) override;
  uint32_t NonDelegatingAddRef() override;
  uint32_t NonDelegatingRelease() override;

  IUnknown* GetOwner() const { return owner_; }
  // The object's own IUnknown: the identity handed out for IID_IUnknown.
  IUnknown* InnerUnknown() { return &inner_; }

 private:
  // Forwards IUnknown to the non-delegating methods, so that the object's
  // identity is a real IUnknown and no table is reinterpreted.
  class Inner final : public IUnknown {
   public:
    explicit Inner(CUnknown* self) : self_(self) {}
    HRESULT VTC_STDCALL QueryInterface(const GUID& iid, void** object) override {
      return self_->NonDelegatingQueryInterface(iid, object);
    }
    uint32_t VTC_STDCALL AddRef() override { return self_->NonDelegatingAddRef(); }
    uint32_t VTC_STDCALL Release() override { return self_->NonDelegatingRelease(); }

   private:
    CUnknown* self_;
  };

  Inner inner_;
  IUnknown* owner_;
  std::atomic<int32_t> references_{0};
};

// Hands out `unknown` with one reference.
HRESULT GetInterface(IUnknown* unknown, void** object);

}  // namespace vantaro

// The three IUnknown methods of a class derived from CUnknown, sent to its owner.
#define VTC_DECLARE_IUNKNOWN                                                              \
  HRESULT VTC_STDCALL QueryInterface(const ::vantaro::GUID& iid, void** object) override { \
    return GetOwner()->QueryInterface(iid, object);                                       \
  }                                                                                       \
  uint32_t VTC_STDCALL AddRef() override { return GetOwner()->AddRef(); }                 \
  uint32_t VTC_STDCALL Release() override { return GetOwner()->Release(); }
