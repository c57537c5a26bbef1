// Media types: the platform's record with its format block in task memory,
// and the owning wrapper the pins and the filter keep.
#pragma once

#include "platform/com_interfaces.h"

namespace vantaro {

// Frees the format block and the unknown that `type` holds, leaving it empty.
void FreeMediaType(AM_MEDIA_TYPE& type);
// Deep copy into `target`, which must hold nothing. E_OUTOFMEMORY on failure.
HRESULT CopyMediaType(AM_MEDIA_TYPE* target, const AM_MEDIA_TYPE* source);
// A copy in task memory, for handing out; free it with DeleteMediaType.
AM_MEDIA_TYPE* CreateMediaType(const AM_MEDIA_TYPE* source);
void DeleteMediaType(AM_MEDIA_TYPE* type);

class CMediaType : public AM_MEDIA_TYPE {
 public:
  CMediaType();
  CMediaType(const AM_MEDIA_TYPE& type);  // NOLINT: copies, as the platform's does
  CMediaType(const CMediaType& type);
  CMediaType& operator=(const AM_MEDIA_TYPE& type);
  CMediaType& operator=(const CMediaType& type);
  ~CMediaType();

  // A zeroed format block of `size` bytes replacing any old one; null on failure.
  uint8_t* AllocFormatBuffer(uint32_t size);
  void ResetFormatBuffer();
  bool IsValid() const { return !(majortype == kGuidNull); }
  // True when every part this type names (a GUID_NULL major or subtype names
  // nothing) equals the same part of `other`.
  bool MatchesPartial(const AM_MEDIA_TYPE& other) const;
  bool IsPartiallySpecified() const;
};

}  // namespace vantaro
