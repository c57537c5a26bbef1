/* The server's entries driven from C through the public header alone: the
 * tables must have the platform's layout for this to work at all. */
#include "vantaro/filter.h"

int VtcServerRoundTripFromC(void) {
  VtcGuid clsid = VTC_CLSID_DECODER_INIT;
  VtcGuid iidFactory = VTC_IID_ICLASSFACTORY_INIT;
  VtcGuid iidUnknown = VTC_IID_IUNKNOWN_INIT;
  VtcClassFactory* factory = 0;
  VtcUnknown* object = 0;
  VtcUnknown* again = 0;
  if (DllGetClassObject(&clsid, &iidFactory, (void**)&factory) != 0 || factory == 0) return 1;
  if (factory->lpVtbl->CreateInstance(factory, 0, &iidUnknown, (void**)&object) != 0) return 2;
  if (factory->lpVtbl->LockServer(factory, 1) != 0) return 3;
  factory->lpVtbl->LockServer(factory, 0);
  if (object->lpVtbl->QueryInterface(object, &iidUnknown, (void**)&again) != 0) return 4;
  if (again != object) return 5;
  if (again->lpVtbl->Release(again) != 1) return 6;
  if (DllCanUnloadNow() != 1) return 7;
  if (object->lpVtbl->Release(object) != 0) return 8;
  if (factory->lpVtbl->Release(factory) != 0) return 9;
  return DllCanUnloadNow() == 0 ? 0 : 10;
}
