# What a desktop wants beside the programs, and the Debian package (`./dev package`).

set(packaging "${CMAKE_CURRENT_SOURCE_DIR}/packaging")
foreach(text zemtar-cad.1 zemtar-viewer.1 zemtar-thumbnailer.1 org.zemtar.Viewer.metainfo.xml)
    configure_file("${packaging}/${text}.in" "${CMAKE_CURRENT_BINARY_DIR}/packaging/${text}" @ONLY)
endforeach()
set(made "${CMAKE_CURRENT_BINARY_DIR}/packaging")
install(FILES "${made}/zemtar-cad.1" "${made}/zemtar-viewer.1" "${made}/zemtar-thumbnailer.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
install(FILES "${packaging}/zemtar-cad.bash" RENAME zemtar-cad
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
if(NOT APPLE)
    install(FILES "${packaging}/org.zemtar.Viewer.desktop" DESTINATION "${CMAKE_INSTALL_DATADIR}/applications")
    install(FILES "${packaging}/org.zemtar.Viewer.thumbnailer" DESTINATION "${CMAKE_INSTALL_DATADIR}/thumbnailers")
    install(FILES "${made}/org.zemtar.Viewer.metainfo.xml" DESTINATION "${CMAKE_INSTALL_DATADIR}/metainfo")
    install(FILES "${packaging}/org.zemtar.Viewer.mime.xml" RENAME org.zemtar.Viewer.xml
        DESTINATION "${CMAKE_INSTALL_DATADIR}/mime/packages")
    install(FILES apps/viewer/resources/window-icon.png RENAME org.zemtar.Viewer.png
        DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/256x256/apps")
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zemtar-cadexchange)
set(CPACK_PACKAGE_VENDOR "Zemtar")
set(CPACK_PACKAGE_CONTACT "Zemtar <info@zemtar.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Import, view and export mechanical CAD files")
set(CPACK_RESOURCE_FILE_LICENSE "${CMAKE_CURRENT_SOURCE_DIR}/LICENSE")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-image-formats-plugins, libgl1-mesa-dri, xvfb")
include(CPack)
