# OpenCASCADE by library name. The distribution's own package file demands every component and libraries that
# are no dependency of ours, so the toolkits are looked up one by one.
#
# Targets: OCCT::Geometry (kernel, B-rep, mass properties), OCCT::Mesh, OCCT::Iges; for tests and benchmarks
# OCCT::Exchange (STEP and IGES with product structure). Each includes the ones before it.

find_path(OCCT_INCLUDE_DIR Standard_Version.hxx PATH_SUFFIXES opencascade)

set(_occt_geometry TKTopAlgo TKPrim TKGeomAlgo TKBRep TKGeomBase TKG3d TKG2d TKMath TKernel)
set(_occt_mesh TKMesh TKOffset TKFillet TKBool TKBO TKShHealing)
# The exchange toolkits have one name a format since 7.8.
find_library(OCCT_TKDESTEP_LIBRARY TKDESTEP)
mark_as_advanced(OCCT_TKDESTEP_LIBRARY)
if(OCCT_TKDESTEP_LIBRARY)
    set(_occt_iges TKDEIGES TKXSBase)
    set(_occt_exchange TKDESTEP TKXCAF TKCAF TKLCAF TKCDF)
else()
    set(_occt_iges TKIGES TKXSBase)
    set(_occt_exchange TKXDESTEP TKXDEIGES TKSTEP TKSTEPAttr TKSTEP209 TKSTEPBase TKXCAF TKCAF TKLCAF TKCDF)
endif()

set(_occt_missing "")
foreach(group geometry mesh iges exchange)
    foreach(toolkit ${_occt_${group}})
        find_library(OCCT_${toolkit}_LIBRARY ${toolkit})
        mark_as_advanced(OCCT_${toolkit}_LIBRARY)
        if(OCCT_${toolkit}_LIBRARY)
            list(APPEND _occt_${group}_libraries "${OCCT_${toolkit}_LIBRARY}")
        else()
            list(APPEND _occt_missing ${toolkit})
        endif()
    endforeach()
endforeach()

include(FindPackageHandleStandardArgs)
if(_occt_missing)
    message(STATUS "OpenCASCADE toolkits not found: ${_occt_missing}")
    set(OCCT_INCLUDE_DIR OCCT_INCLUDE_DIR-NOTFOUND)
endif()
find_package_handle_standard_args(OpenCASCADE_Toolkits REQUIRED_VARS OCCT_INCLUDE_DIR)

if(OpenCASCADE_Toolkits_FOUND AND NOT TARGET OCCT::Geometry)
    add_library(OCCT::Geometry INTERFACE IMPORTED)
    target_include_directories(OCCT::Geometry SYSTEM INTERFACE "${OCCT_INCLUDE_DIR}")
    target_link_libraries(OCCT::Geometry INTERFACE ${_occt_geometry_libraries})
    add_library(OCCT::Mesh INTERFACE IMPORTED)
    target_link_libraries(OCCT::Mesh INTERFACE ${_occt_mesh_libraries} OCCT::Geometry)
    add_library(OCCT::Iges INTERFACE IMPORTED)
    target_link_libraries(OCCT::Iges INTERFACE ${_occt_iges_libraries} OCCT::Mesh)
    add_library(OCCT::Exchange INTERFACE IMPORTED)
    target_link_libraries(OCCT::Exchange INTERFACE ${_occt_exchange_libraries} OCCT::Iges)
endif()
