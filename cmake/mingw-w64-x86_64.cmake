# Cross-build for 64-bit Windows with Debian's g++-mingw-w64-x86-64.
#   cmake -S . -B build/windows -G Ninja \
#     -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-x86_64.cmake
# The posix threads flavour: the filter's sample queue uses std::mutex and
# std::condition_variable, which the win32 flavour of GCC 12 lacks. Everything
# links statically, so the DLL and the test programs import system DLLs only.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(VANTARO_MINGW_PREFIX x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${VANTARO_MINGW_PREFIX}-gcc-posix)
set(CMAKE_CXX_COMPILER ${VANTARO_MINGW_PREFIX}-g++-posix)
set(CMAKE_RC_COMPILER ${VANTARO_MINGW_PREFIX}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${VANTARO_MINGW_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
