// The module handle of the library itself, as its entry was given it.
#pragma once

#include "platform/windows/windows_headers.h"

namespace vantaro {

// Null before the entry has run (a program linking the objects statically);
// the system then answers for the program's own module.
HMODULE ThisModule();

}  // namespace vantaro
