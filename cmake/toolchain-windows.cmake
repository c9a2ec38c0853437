# Windows x64 with MinGW-w64. The third-party libraries come from the folder that PAVO_WINDOWS_PREFIX
# names, in the environment or as a CMake variable; scripts/build-libs.sh makes it.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

# The POSIX thread model: the other one has neither std::thread nor std::mutex.
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

if(NOT PAVO_WINDOWS_PREFIX)
  set(PAVO_WINDOWS_PREFIX $ENV{PAVO_WINDOWS_PREFIX})
endif()
# Kept, because the environment is gone when a build runs CMake again, and in try_compile.
set(PAVO_WINDOWS_PREFIX "${PAVO_WINDOWS_PREFIX}" CACHE PATH "Third-party libraries for Windows")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES PAVO_WINDOWS_PREFIX)
if(NOT IS_DIRECTORY "${PAVO_WINDOWS_PREFIX}")
  message(FATAL_ERROR "PAVO_WINDOWS_PREFIX names no folder; ./pavo windows sets everything up")
endif()

set(CMAKE_FIND_ROOT_PATH ${PAVO_WINDOWS_PREFIX} /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

get_filename_component(CMAKE_CROSSCOMPILING_EMULATOR
  ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine-run ABSOLUTE)
