# The ZIP for 64-bit Windows (scripts/build-windows package): everything that is installed, and what it
# loads.
foreach(library Qt5Core Qt5Network libgcc_s_seh-1 libglog libhidapi libhwy libspng libstdc++-6
        libwinpthread-1 zlib1)
    install(FILES ${KORVEX_WINDOWS_DEPENDENCIES}/bin/${library}.dll
        DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
endforeach()

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME korvex3sync)
set(CPACK_PACKAGE_VENDOR "The Korvex3Sync developers")
set(CPACK_PACKAGE_FILE_NAME korvex3sync-${PROJECT_VERSION}-windows-x86_64)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
include(CPack)
