// The one way the library builds its lookup tables: in static storage, on
// first use, exactly once even when threads race to it, and handed out only
// as a const reference afterwards.
#pragma once

namespace vantaro {

template <class T, void (*Build)(T&)>
const T& BuiltOnce() {
  static T storage;  // zero-initialised, no constructor to run
  static const bool built = (Build(storage), true);
  (void)built;
  return storage;
}

}  // namespace vantaro
