# 64-bit Windows with MinGW-w64, on Debian. KORVEX_WINDOWS_DEPENDENCIES names the folder of the
# cross-built libraries (scripts/build-windows prints it).

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(host x86_64-w64-mingw32)
# The -posix compilers have std::thread and std::mutex.
set(CMAKE_C_COMPILER ${host}-gcc-posix)
set(CMAKE_CXX_COMPILER ${host}-g++-posix)
set(CMAKE_RC_COMPILER ${host}-windres)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../../scripts/lib/under-wine)

set(KORVEX_WINDOWS_DEPENDENCIES "" CACHE PATH "The folder of the cross-built libraries")
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES KORVEX_WINDOWS_DEPENDENCIES)
set(CMAKE_FIND_ROOT_PATH ${KORVEX_WINDOWS_DEPENDENCIES} /usr/${host})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR}
    ${KORVEX_WINDOWS_DEPENDENCIES}/lib/pkgconfig:/usr/${host}/lib/pkgconfig)
