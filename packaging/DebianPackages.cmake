# The Debian packages, one for each component. scripts/package builds and tries them.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME korvex3sync)
set(CPACK_PACKAGE_VENDOR "The Korvex3Sync developers")
set(CPACK_PACKAGE_CONTACT "${CPACK_PACKAGE_VENDOR} <korvex3sync@example.org>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development tools)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "The library, its platform libraries and the simulated head.
It comes with the udev rule that gives access to the synchronization
board of the head.")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "Headers, the CMake package and the pkg-config file of the library.")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
    "The command korvexctl, and the application directory of service mode:
the device service, its hub, their configuration and the scripts that
restart the USB hubs of the head.")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# The other packages follow from the libraries that the files load.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libkorvex3sync${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
# The platform libraries of another major version have the same file names.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_PROVIDES libkorvex3sync)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONFLICTS libkorvex3sync)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_REPLACES libkorvex3sync)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/debian/triggers)
foreach(script_and_step postinst:configure postrm:remove)
    string(REGEX REPLACE ":.*" "" script ${script_and_step})
    string(REGEX REPLACE ".*:" "" KORVEX_MAINTAINER_STEP ${script_and_step})
    configure_file(debian/udev.in ${PROJECT_BINARY_DIR}/debian/${script} @ONLY)
    list(APPEND CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/debian/${script})
endforeach()

# The tools use more of the libraries than the interface that stays compatible.
set(KORVEX_SAME_VERSION "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkorvex3sync-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS ${KORVEX_SAME_VERSION})
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME korvex3sync-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS ${KORVEX_SAME_VERSION})
set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS bash-completion)

set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/debian/AddDocuments.cmake)
include(CPack)
