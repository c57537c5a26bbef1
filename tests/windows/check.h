// The Windows programs' one assertion: report a failed expectation with its
// line and keep going, so one run shows every difference; main answers 1 if
// any failed.
#pragma once

#include <cstdio>

namespace check {

inline int g_failures = 0;

inline bool Expect(bool holds, const char* what, const char* file, int line) {
  if (!holds) {
    ++g_failures;
    std::fprintf(stderr, "%s:%d: expected %s\n", file, line, what);
  }
  return holds;
}

// True when the program got OUTPUT_DIRECTORY and DLL_PATH; prints the usage otherwise.
inline bool HasArguments(int argc, char** argv) {
  if (argc == 3) return true;
  std::fprintf(stderr, "usage: %s OUTPUT_DIRECTORY DLL_PATH\n", argv[0]);
  return false;
}

inline int ExitCode(const char* program) {
  std::printf("%s: %s\n", program, g_failures == 0 ? "passed" : "FAILED");
  return g_failures == 0 ? 0 : 1;
}

}  // namespace check

#define EXPECT(condition) ::check::Expect((condition), #condition, __FILE__, __LINE__)
