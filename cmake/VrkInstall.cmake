# Installs both libraries with their headers, and what find_package(vrkvisual) needs.
include(CMakePackageConfigHelpers)

install(TARGETS vrkvisual vrkplatform EXPORT vrkTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    # <vrk/scene/Scene.h> beside the short form, which the headers themselves use
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vrk)
install(EXPORT vrkTargets NAMESPACE vrk:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vrkvisual)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/vrkvisualConfig.cmake.in
    ${PROJECT_BINARY_DIR}/vrkvisualConfig.cmake INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vrkvisual)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vrkvisualConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vrkvisualConfig.cmake ${PROJECT_BINARY_DIR}/vrkvisualConfigVersion.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vrkvisual)

# For builds that do not use CMake.
list(GET OpenCASCADE_INCLUDE_DIR 0 VRK_OCCT_INCLUDE)
# From where it lies, so that an installation can be moved.
file(RELATIVE_PATH VRK_UP_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(${PROJECT_SOURCE_DIR}/cmake/vrkvisual.pc.in ${PROJECT_BINARY_DIR}/vrkvisual.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vrkvisual.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR})
