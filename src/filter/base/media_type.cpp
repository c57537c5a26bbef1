#include "filter/base/media_type.h"

#include <cstring>

#include "platform/com_runtime.h"

namespace vantaro {

void FreeMediaType(AM_MEDIA_TYPE& type) {
  if (type.cbFormat != 0 || type.pbFormat != nullptr) CoTaskMemFree(type.pbFormat);
  type.cbFormat = 0;
  type.pbFormat = nullptr;
  if (type.pUnk != nullptr) {
    type.pUnk->Release();
    type.pUnk = nullptr;
  }
}

HRESULT CopyMediaType(AM_MEDIA_TYPE* target, const AM_MEDIA_TYPE* source) {
  *target = *source;
  if (source->cbFormat != 0 && source->pbFormat != nullptr) {
    target->pbFormat = static_cast<uint8_t*>(CoTaskMemAlloc(source->cbFormat));
    if (target->pbFormat == nullptr) {
      target->cbFormat = 0;
      target->pUnk = nullptr;
      return kEOutOfMemory;
    }
    std::memcpy(target->pbFormat, source->pbFormat, source->cbFormat);
  } else {
    target->cbFormat = 0;
    target->pbFormat = nullptr;
  }
  if (target->pUnk != nullptr) target->pUnk->AddRef();
  return kSOk;
}

AM_MEDIA_TYPE* CreateMediaType(const AM_MEDIA_TYPE* source) {
  auto* type = static_cast<AM_MEDIA_TYPE*>(CoTaskMemAlloc(sizeof(AM_MEDIA_TYPE)));
  if (type == nullptr) return nullptr;
  if (Failed(CopyMediaType(type, source))) {
    CoTaskMemFree(type);
    return nullptr;
  }
  return type;
}

void DeleteMediaType(AM_MEDIA_TYPE* type) {
  if (type == nullptr) return;
  FreeMediaType(*type);
  CoTaskMemFree(type);
}

CMediaType::CMediaType() : AM_MEDIA_TYPE{} {}

CMediaType::CMediaType(const AM_MEDIA_TYPE& type) : AM_MEDIA_TYPE{} {
  if (Failed(CopyMediaType(this, &type))) static_cast<AM_MEDIA_TYPE&>(*this) = AM_MEDIA_TYPE{};
}

CMediaType::CMediaType(const CMediaType& type) : CMediaType(static_cast<const AM_MEDIA_TYPE&>(type)) {}

CMediaType& CMediaType::operator=(const AM_MEDIA_TYPE& type) {
  if (&type == this) return *this;
  FreeMediaType(*this);
  if (Failed(CopyMediaType(this, &type))) static_cast<AM_MEDIA_TYPE&>(*this) = AM_MEDIA_TYPE{};
  return *this;
}

CMediaType& CMediaType::operator=(const CMediaType& type) {
  return *this = static_cast<const AM_MEDIA_TYPE&>(type);
}

CMediaType::~CMediaType() { FreeMediaType(*this); }

uint8_t* CMediaType::AllocFormatBuffer(uint32_t size) {
  ResetFormatBuffer();
  pbFormat = static_cast<uint8_t*>(CoTaskMemAlloc(size));
  if (pbFormat == nullptr) return nullptr;
  std::memset(pbFormat, 0, size);
  cbFormat = size;
  return pbFormat;
}

void CMediaType::ResetFormatBuffer() {
  CoTaskMemFree(pbFormat);
  pbFormat = nullptr;
  cbFormat = 0;
}

bool CMediaType::MatchesPartial(const AM_MEDIA_TYPE& other) const {
  if (!(majortype == kGuidNull) && !(majortype == other.majortype)) return false;
  if (!(subtype == kGuidNull) && !(subtype == other.subtype)) return false;
  if (!(formattype == kGuidNull)) {
    if (!(formattype == other.formattype) || cbFormat != other.cbFormat) return false;
    if (cbFormat != 0 && std::memcmp(pbFormat, other.pbFormat, cbFormat) != 0) return false;
  }
  return true;
}

bool CMediaType::IsPartiallySpecified() const {
  return majortype == kGuidNull || formattype == kGuidNull;
}

}  // namespace vantaro
