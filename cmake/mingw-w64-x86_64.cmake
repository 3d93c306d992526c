# Cross-compiling for 64-bit Windows with Debian's MinGW-w64 (posix threads variant).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

# Tests and tools run under Wine; its binary is not on PATH in Debian's package.
find_program(OZDK_WINE64 NAMES wine64 PATHS /usr/lib/wine NO_DEFAULT_PATH)
if(NOT OZDK_WINE64)
  find_program(OZDK_WINE64 NAMES wine64 wine)
endif()
set(CMAKE_CROSSCOMPILING_EMULATOR ${OZDK_WINE64})
