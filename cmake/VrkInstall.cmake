# Installs both libraries with their headers, and what find_package(vrkvisual) needs.
include(CMakePackageConfigHelpers)

install(TARGETS vrkvisual vrkplatform EXPORT vrkTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vrk)
install(EXPORT vrkTargets NAMESPACE vrk:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vrkvisual)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/vrkvisualConfig.cmake.in
    ${PROJECT_BINARY_DIR}/vrkvisualConfig.cmake INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vrkvisual)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vrkvisualConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vrkvisualConfig.cmake ${PROJECT_BINARY_DIR}/vrkvisualConfigVersion.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vrkvisual)
