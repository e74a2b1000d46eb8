# Build flavours. All targets of this project link korvex_options.

option(KORVEX_CHECKS "Check rules of use at run time (development and test builds)" OFF)
option(KORVEX_THREAD_SAFETY "Treat clang's thread-safety findings as errors" OFF)
option(KORVEX_FUZZ "Build the fuzz targets (clang only)" OFF)
option(KORVEX_COVERAGE "Count the lines that run (g++)" OFF)
option(KORVEX_STATIC_TESTS "Build the tests that only read files" ON)
set(KORVEX_SANITIZE "" CACHE STRING "Sanitizers, as for -fsanitize= (for example address,undefined)")

# Uses a compiler cache if the machine has one. The cache is outside the checkout, and build flavours
# with the same flags share its objects.
find_program(KORVEX_CCACHE ccache)
if(KORVEX_CCACHE AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}
        CCACHE_NOHASHDIR=1 CCACHE_SLOPPINESS=pch_defines,time_macros ${KORVEX_CCACHE})
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
if(WIN32)
    # The files that applications link and load have the same names whichever compiler built them.
    set(CMAKE_SHARED_LIBRARY_PREFIX "")
    add_compile_definitions(_WIN32_WINNT=0x0A00)
endif()
if(MINGW)
    # Test programs made of many files have more sections than an object file usually can.
    add_compile_options(-Wa,-mbig-obj)
    # For Windows, g++ relies on the registers that an inline function leaves alone, although the linker
    # may take the copy of another object file.
    add_compile_options(-fno-ipa-ra)
    # Imported data needs no mark in its declaration.
    add_link_options(-Wl,--enable-auto-import)
    enable_language(RC)
endif()
# Programs find the libraries in the build tree and in the installed tree.
set(CMAKE_INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}:$ORIGIN")

# Where the programs are installed, with the files that they look for beside them. Libraries lie
# beside the programs on Windows, and some of the names are no names for a folder of commands.
if(WIN32)
    set(KORVEX_APPLICATION_DIR ${CMAKE_INSTALL_BINDIR})
else()
    set(KORVEX_APPLICATION_DIR ${CMAKE_INSTALL_LIBEXECDIR}/korvex3sync)
endif()

# korvex_utf8_program(TARGET): gives a program its arguments, and narrow file names, in UTF-8.
function(korvex_utf8_program target)
    if(MINGW)
        target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/windows/program.rc)
        target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/windows)
    endif()
endfunction()

# What is installed belongs to a component: runtime, development or tools. Each is a package.

# korvex_install_program(TARGET): installs a program into the application directory.
function(korvex_install_program target)
    file(RELATIVE_PATH libraries /${KORVEX_APPLICATION_DIR} /${CMAKE_INSTALL_LIBDIR})
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/${libraries}")
    install(TARGETS ${target} RUNTIME DESTINATION ${KORVEX_APPLICATION_DIR} COMPONENT tools)
endfunction()

# korvex_install_library(TARGET): installs a shared library, and what links it where that is a file of
# its own.
function(korvex_install_library target)
    install(TARGETS ${target}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
            COMPONENT runtime NAMELINK_COMPONENT development
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
endfunction()

add_library(korvex_options INTERFACE)
target_compile_options(korvex_options INTERFACE -Wall -Wextra -Wpedantic -Werror -Wshadow
    -Wnon-virtual-dtor -Woverloaded-virtual)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # With optimisation, g++ 12 reports "text" + std::string(...) as an overlapping copy.
    target_compile_options(korvex_options INTERFACE -Wno-restrict)
endif()
target_include_directories(korvex_options INTERFACE ${PROJECT_SOURCE_DIR}/src
    ${PROJECT_SOURCE_DIR}/include)
if(KORVEX_THREAD_SAFETY)
    target_compile_options(korvex_options INTERFACE -Wthread-safety -Werror=thread-safety)
endif()
if(KORVEX_SANITIZE)
    target_compile_options(korvex_options INTERFACE -fsanitize=${KORVEX_SANITIZE}
        -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(korvex_options INTERFACE -fsanitize=${KORVEX_SANITIZE})
endif()
if(KORVEX_FUZZ)
    # All code that a fuzz target reaches needs coverage feedback.
    target_compile_options(korvex_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
# korvex_count_lines(TARGET): counts the lines of a library that tests run.
function(korvex_count_lines target)
    if(KORVEX_COVERAGE)
        target_compile_options(${target} PRIVATE --coverage -fprofile-update=atomic)
        target_link_options(${target} PUBLIC --coverage)
    endif()
endfunction()
