# uchardet::uchardet from the header and the library: the distributions do not all ship its package file.
find_path(UCHARDET_INCLUDE_DIR uchardet.h PATH_SUFFIXES uchardet)
find_library(UCHARDET_LIBRARY uchardet)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(uchardet_Library REQUIRED_VARS UCHARDET_LIBRARY UCHARDET_INCLUDE_DIR)
if(uchardet_Library_FOUND AND NOT TARGET uchardet::uchardet)
    add_library(uchardet::uchardet UNKNOWN IMPORTED)
    set_target_properties(uchardet::uchardet PROPERTIES
        IMPORTED_LOCATION "${UCHARDET_LIBRARY}" INTERFACE_INCLUDE_DIRECTORIES "${UCHARDET_INCLUDE_DIR}")
endif()
