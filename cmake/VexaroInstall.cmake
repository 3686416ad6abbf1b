include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
install(TARGETS vexaro EXPORT vexaroTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${PROJECT_SOURCE_DIR}/include/Vexaro.h ${PROJECT_SOURCE_DIR}/include/VexaroParameters.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT vexaroTargets NAMESPACE vexaro:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vexaro)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/vexaroConfig.cmake.in
  ${PROJECT_BINARY_DIR}/vexaroConfig.cmake INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vexaro)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vexaroConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vexaroConfig.cmake ${PROJECT_BINARY_DIR}/vexaroConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vexaro)
