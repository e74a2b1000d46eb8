# CPack runs this before it builds the packages: adds the files that every Debian package contains, and
# packs the manual pages.

string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
foreach(component ${CPACK_COMPONENTS_ALL})
    string(TOUPPER ${component} variable)
    set(tree ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share)
    set(documents ${tree}/doc/${CPACK_DEBIAN_${variable}_PACKAGE_NAME})
    file(COPY ${CMAKE_CURRENT_LIST_DIR}/copyright DESTINATION ${documents})
    file(COPY_FILE ${CMAKE_CURRENT_LIST_DIR}/../../CHANGELOG.md ${documents}/changelog)
    file(WRITE ${documents}/changelog.Debian
        "${CPACK_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; "
        "urgency=medium\n\n  * The file changelog beside this one lists the changes.\n\n"
        " -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
    file(GLOB pages ${tree}/man/*/*)
    execute_process(COMMAND gzip -9n ${documents}/changelog ${documents}/changelog.Debian ${pages}
        COMMAND_ERROR_IS_FATAL ANY)
endforeach()
