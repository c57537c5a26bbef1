// The Windows programs' one assertion: report a failed expectation with its
// line and keep going, so one run shows every difference.
#pragma once

#include <cstdio>

namespace check {

inline int g_failures = 0;

inline bool Expect(bool holds, const char* what, int line) {
  if (!holds) std::fprintf(stderr, "line %d: expected %s\n", line, what);
  g_failures += holds ? 0 : 1;
  return holds;
}

// True when the program got OUTPUT_DIRECTORY and DLL_PATH.
inline bool HasArguments(int argc, char** argv) {
  if (argc != 3) std::fprintf(stderr, "usage: %s OUTPUT_DIRECTORY DLL_PATH\n", argv[0]);
  return argc == 3;
}

// Prints the verdict; 1 if anything failed.
inline int ExitCode(const char* program) {
  std::printf("%s: %s\n", program, g_failures == 0 ? "passed" : "FAILED");
  return g_failures == 0 ? 0 : 1;
}

}  // namespace check

#define EXPECT(condition) ::check::Expect((condition), #condition, __LINE__)
