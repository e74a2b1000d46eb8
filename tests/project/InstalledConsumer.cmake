# Installs into a folder of its own, then builds and runs the first program against what lies there,
# found through the CMake package (WAY=cmake) or through pkg-config (WAY=pkg-config).

cmake_minimum_required(VERSION 3.25)

function(fail text)
    file(REMOVE_RECURSE ${WORK_DIR})
    message(FATAL_ERROR "${text}")
endfunction()

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        fail("failed (${result}): ${ARGN}")
    endif()
endfunction()

# Another run of the suite over the same build may be at it too, so each has a folder of its own.
string(RANDOM LENGTH 12 unique)
set(WORK_DIR ${WORK_DIR}-${unique})
set(prefix ${WORK_DIR}/installed)
# Away from the project's own tree, so that nothing of it is found by accident.
file(COPY ${EXAMPLES_DIR}/ DESTINATION ${WORK_DIR}/source)

# Installing leaves a list of the files in the build folder; here it stays with what was installed.
file(READ ${BUILD_DIR}/cmake_install.cmake install)
string(REPLACE "\"${BUILD_DIR}/\${CMAKE_INSTALL_MANIFEST}\"" "\"${WORK_DIR}/manifest.txt\"" install
    "${install}")
file(WRITE ${WORK_DIR}/install.cmake "${install}")
run(${CMAKE_COMMAND} -DCMAKE_INSTALL_PREFIX=${prefix} -P ${WORK_DIR}/install.cmake)
if(NOT EXISTS ${WORK_DIR}/manifest.txt)
    fail("the list of the installed files went somewhere else")
endif()

if(CMAKE_HOST_SYSTEM_NAME STREQUAL "Linux"
        AND NOT EXISTS ${prefix}/lib/udev/rules.d/70-korvex3sync.rules)
    fail("the udev rule was not installed")
endif()

foreach(file bin/korvexctl ${APPLICATION_DIR}/korvexctl ${APPLICATION_DIR}/hub.exe
        ${APPLICATION_DIR}/ZrSyncService.exe
        ${APPLICATION_DIR}/restart_VID0219_PID0813_REV0221.bat
        ${APPLICATION_DIR}/restart_VID05E3_PID0620_REV2307.bat
        ${APPLICATION_DIR}/res/DeviceServiceConfig.ini share/man/man1/korvexctl.1
        share/bash-completion/completions/korvexctl)
    if(NOT EXISTS ${prefix}/${file})
        fail("${file} was not installed")
    endif()
endforeach()

# In a process namespace of its own, because service mode ends hubs and services by their names, and
# with a /dev/shm of its own, where the names of the shared memory are the same for all of a user. The
# sockets lie there too, because the path of a socket has to be short.
execute_process(
    COMMAND ${CMAKE_COMMAND} -E env XDG_RUNTIME_DIR=/dev/shm/run XDG_STATE_HOME=${WORK_DIR}/state
        unshare --user --map-root-user --mount --pid --fork --mount-proc --kill-child
        sh -c "mount -t tmpfs tmpfs /dev/shm && mkdir -m 700 /dev/shm/run && exec \"$@\"" sh
        ${prefix}/bin/korvexctl --virtual --service list
    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors TIMEOUT 120)
message("${output}${errors}")
if(NOT result EQUAL 0 OR NOT output MATCHES "camera KV00")
    file(GLOB logs ${WORK_DIR}/state/korvex3sync/*)
    foreach(log ${logs})
        file(READ ${log} text)
        message("${log}:\n${text}")
    endforeach()
    fail("service mode in the installed tree ended with ${result}")
endif()

if(WAY STREQUAL "cmake")
    run(${CMAKE_COMMAND} -S ${WORK_DIR}/source -B ${WORK_DIR}/build -G ${GENERATOR}
        -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_CXX_FLAGS=${FLAGS} -DCMAKE_PREFIX_PATH=${prefix}
        -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF)
    run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
    set(program ${WORK_DIR}/build/first_scan)
    set(environment)
else()
    set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIB_DIR}/pkgconfig)
    execute_process(COMMAND pkg-config --cflags --libs korvex3sync OUTPUT_VARIABLE options
        OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(options UNIX_COMMAND "${options}")
    separate_arguments(flags UNIX_COMMAND "${FLAGS}")
    file(MAKE_DIRECTORY ${WORK_DIR}/build)
    set(program ${WORK_DIR}/build/first_scan)
    run(${CXX} -std=c++20 ${flags} ${WORK_DIR}/source/first_scan.cpp ${options} -o ${program})
    set(environment LD_LIBRARY_PATH=${prefix}/${LIB_DIR})
endif()

execute_process(
    COMMAND ${CMAKE_COMMAND} -E env KORVEX_VIRTUAL_HEAD=default ${environment} ${program}
    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors TIMEOUT 120)
message("${output}${errors}")
if(NOT result EQUAL 0 OR NOT output MATCHES "20 image sets")
    fail("the first program ended with ${result}")
endif()
file(REMOVE_RECURSE ${WORK_DIR})
