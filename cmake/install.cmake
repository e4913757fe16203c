# Installed: the library, its header, a relocatable CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS LumenforgeMetaLib EXPORT LumenforgeMetaLibTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES include/LumenforgeMetaLib.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/LumenforgeMetaLib)
install(EXPORT LumenforgeMetaLibTargets NAMESPACE LumenforgeMetaLib::
  FILE LumenforgeMetaLibConfig.cmake DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/LumenforgeMetaLibConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/LumenforgeMetaLibConfigVersion.cmake DESTINATION ${package_dir})

# Found from where the file itself lies, so that the whole may be moved.
file(RELATIVE_PATH LUMENFORGE_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/LumenforgeMetaLib.pc.in LumenforgeMetaLib.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/LumenforgeMetaLib.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
