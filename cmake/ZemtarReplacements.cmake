# Targets for a host core or a CAD SDK that stands elsewhere, in this build and in programs that use the installed
# package.

include_guard(GLOBAL)

# zemtar_find_host(ROOT): Zemtar::HostInterface, Zemtar::Core and Zemtar::Branding from the headers host/*.h under
# ROOT/include (or ROOT/include/zemtar) and the libraries ZemtarCore and ZemtarBranding under ROOT/lib (or ROOT).
function(zemtar_find_host root)
    find_path(ZEMTAR_HOST_INCLUDE_DIR host/CZemtarDocument.h
        PATHS "${root}/include" PATH_SUFFIXES zemtar NO_DEFAULT_PATH REQUIRED)
    add_library(Zemtar::HostInterface INTERFACE IMPORTED GLOBAL)
    target_include_directories(Zemtar::HostInterface INTERFACE "${ZEMTAR_HOST_INCLUDE_DIR}")
    foreach(library Core Branding)
        find_library(ZEMTAR_HOST_${library}_LIBRARY "Zemtar${library}"
            PATHS "${root}/lib" "${root}" NO_DEFAULT_PATH REQUIRED)
        add_library(Zemtar::${library} SHARED IMPORTED GLOBAL)
        set_target_properties(Zemtar::${library} PROPERTIES IMPORTED_LOCATION "${ZEMTAR_HOST_${library}_LIBRARY}")
        target_link_libraries(Zemtar::${library} INTERFACE Zemtar::HostInterface)
    endforeach()
endfunction()

# zemtar_find_cad_sdk(ROOT): cadex::interface and cadex::cadex from the headers cadex/*.hxx under ROOT/include and the
# library cadex under ROOT/lib.
function(zemtar_find_cad_sdk root)
    find_path(ZEMTAR_CAD_SDK_INCLUDE_DIR cadex/Base_Reader.hxx PATHS "${root}/include" NO_DEFAULT_PATH REQUIRED)
    find_library(ZEMTAR_CAD_SDK_LIBRARY cadex PATHS "${root}/lib" NO_DEFAULT_PATH REQUIRED)
    add_library(cadex::interface INTERFACE IMPORTED GLOBAL)
    target_include_directories(cadex::interface INTERFACE "${ZEMTAR_CAD_SDK_INCLUDE_DIR}")
    add_library(cadex::cadex SHARED IMPORTED GLOBAL)
    set_target_properties(cadex::cadex PROPERTIES IMPORTED_LOCATION "${ZEMTAR_CAD_SDK_LIBRARY}")
    target_link_libraries(cadex::cadex INTERFACE cadex::interface)
endfunction()
