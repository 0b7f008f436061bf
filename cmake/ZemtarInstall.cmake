# Installation: libraries, public headers under include/zemtar (and include/cadex), and the package
# ZemtarCADExchange with the targets Zemtar::CADExchange, Zemtar::Core, Zemtar::Branding and cadex::cadex.

include(CMakePackageConfigHelpers)
set(zemtar_includes "${CMAKE_INSTALL_INCLUDEDIR}/zemtar")
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/ZemtarCADExchange")

set_target_properties(ZemtarCADExchange PROPERTIES EXPORT_NAME CADExchange)
install(TARGETS ZemtarCADExchange EXPORT ZemtarTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
    FILE_SET HEADERS DESTINATION "${zemtar_includes}")
install(TARGETS zemtar-cad zemtar-viewer RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
if(NOT ZEMTAR_HOST_ROOT)
    set_target_properties(ZemtarCore PROPERTIES EXPORT_NAME Core)
    set_target_properties(ZemtarBranding PROPERTIES EXPORT_NAME Branding)
    install(TARGETS ZemtarCore ZemtarBranding zemtar_host_interface EXPORT ZemtarTargets
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
        FILE_SET HEADERS DESTINATION "${zemtar_includes}")
endif()
if(NOT ZEMTAR_CAD_SDK_ROOT)
    set_target_properties(cadex_interface PROPERTIES EXPORT_NAME interface)
    install(TARGETS cadex cadex_interface EXPORT cadexTargets
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
        FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
    install(EXPORT cadexTargets NAMESPACE cadex:: DESTINATION "${package_dir}")
endif()
install(EXPORT ZemtarTargets NAMESPACE Zemtar:: DESTINATION "${package_dir}")

configure_package_config_file(cmake/ZemtarCADExchangeConfig.cmake.in
    "${CMAKE_CURRENT_BINARY_DIR}/ZemtarCADExchangeConfig.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/ZemtarCADExchangeConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)
install(FILES
    "${CMAKE_CURRENT_BINARY_DIR}/ZemtarCADExchangeConfig.cmake"
    "${CMAKE_CURRENT_BINARY_DIR}/ZemtarCADExchangeConfigVersion.cmake"
    DESTINATION "${package_dir}")
