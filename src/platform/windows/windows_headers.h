// The system headers of the Windows platform layer, with the parts that would
// collide with the project's own records left out: the codec declares its
// bitmap header itself, so GDI stays away, and min/max stay functions.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#define NOGDI

#include <windows.h>
