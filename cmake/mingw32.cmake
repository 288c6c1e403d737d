# Cross build for 32-bit Windows with MinGW-w64 (posix thread model: GoogleTest needs std::mutex).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(KX_TRIPLE i686-w64-mingw32)

set(CMAKE_C_COMPILER   ${KX_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${KX_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER  ${KX_TRIPLE}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${KX_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Test executables run under Wine; the wrapper sets up nothing itself, the test driver
# (tests/wine-ctest.sh, with cmake/wine-env.sh) provides the prefix, the wineserver and the
# display.
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine-run.sh)
