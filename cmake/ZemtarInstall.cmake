# Installation: libraries, public headers under include/zemtar (and include/cadex), and the package
# ZemtarCADExchange with the targets Zemtar::CADExchange, Zemtar::Core, Zemtar::Branding and cadex::cadex. Where the host
# core or the CAD SDK stands elsewhere, the package finds it there.

include(CMakePackageConfigHelpers)
set(zemtar_includes "${CMAKE_INSTALL_INCLUDEDIR}/zemtar")
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/ZemtarCADExchange")

# zemtar_install(EXPORT HEADERS TARGETS...): targets of an export set, their public headers under a folder.
function(zemtar_install export headers)
    install(TARGETS ${ARGN} EXPORT ${export}
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
        FILE_SET HEADERS DESTINATION "${headers}")
endfunction()

set_target_properties(ZemtarCADExchange PROPERTIES EXPORT_NAME CADExchange)
zemtar_install(ZemtarTargets "${zemtar_includes}" ZemtarCADExchange)
if(NOT ZEMTAR_HOST_ROOT)
    set_target_properties(zemtar_host_interface PROPERTIES EXPORT_NAME HostInterface)
    set_target_properties(ZemtarCore PROPERTIES EXPORT_NAME Core)
    set_target_properties(ZemtarBranding PROPERTIES EXPORT_NAME Branding)
    zemtar_install(ZemtarTargets "${zemtar_includes}" zemtar_host_interface ZemtarCore ZemtarBranding)
endif()
if(NOT ZEMTAR_CAD_SDK_ROOT)
    set_target_properties(cadex_interface PROPERTIES EXPORT_NAME interface)
    zemtar_install(cadexTargets "${CMAKE_INSTALL_INCLUDEDIR}" cadex_interface cadex)
    install(EXPORT cadexTargets NAMESPACE cadex:: DESTINATION "${package_dir}")
endif()
install(EXPORT ZemtarTargets NAMESPACE Zemtar:: DESTINATION "${package_dir}")
if(ZEMTAR_BUILD_APPS)
    install(TARGETS zemtar-cad zemtar-viewer zemtar-thumbnailer RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
    install(TARGETS zemtar_pictures LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}/zemtar")
    # The module's libraries are a folder above it.
    set_target_properties(zemtar_pictures PROPERTIES INSTALL_RPATH "$<IF:$<BOOL:${APPLE}>,@loader_path/..,$ORIGIN/..>")
endif()

configure_package_config_file(cmake/ZemtarCADExchangeConfig.cmake.in
    "${CMAKE_CURRENT_BINARY_DIR}/ZemtarCADExchangeConfig.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/ZemtarCADExchangeConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)
install(FILES
    "${CMAKE_CURRENT_BINARY_DIR}/ZemtarCADExchangeConfig.cmake"
    "${CMAKE_CURRENT_BINARY_DIR}/ZemtarCADExchangeConfigVersion.cmake"
    cmake/ZemtarReplacements.cmake
    DESTINATION "${package_dir}")

# What pkg-config says; the prefix is found from where the file lies.
file(RELATIVE_PATH ZEMTAR_PC_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
set(ZEMTAR_PC_CFLAGS "")
set(ZEMTAR_PC_LIBS "-lZemtarCore -lZemtarBranding -lcadex")
if(ZEMTAR_HOST_ROOT)
    string(APPEND ZEMTAR_PC_CFLAGS " -I${ZEMTAR_HOST_INCLUDE_DIR}")
    string(APPEND ZEMTAR_PC_LIBS " -L${ZEMTAR_HOST_ROOT}/lib")
endif()
if(ZEMTAR_CAD_SDK_ROOT)
    string(APPEND ZEMTAR_PC_CFLAGS " -I${ZEMTAR_CAD_SDK_INCLUDE_DIR}")
    string(APPEND ZEMTAR_PC_LIBS " -L${ZEMTAR_CAD_SDK_ROOT}/lib")
else()
    string(APPEND ZEMTAR_PC_CFLAGS " -I\${includedir}")
endif()
configure_file(cmake/ZemtarCADExchange.pc.in ZemtarCADExchange.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/ZemtarCADExchange.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
install(FILES LICENSE THIRD-PARTY-NOTICES.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")
