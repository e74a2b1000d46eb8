# The headers alone: Debian's package of toml++ leads to a shared library for Linux.
if(NOT TARGET tomlplusplus::tomlplusplus)
    add_library(tomlplusplus::tomlplusplus INTERFACE IMPORTED)
    set_target_properties(tomlplusplus::tomlplusplus PROPERTIES
        INTERFACE_INCLUDE_DIRECTORIES "${CMAKE_CURRENT_LIST_DIR}/../../../include"
        INTERFACE_COMPILE_FEATURES cxx_std_17)
endif()
