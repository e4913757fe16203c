# Installed: the library and its header, a relocatable CMake package and a pkg-config file. Components
# for `cmake --install --component`: Runtime (the shared library), Development, Tool.
include(CMakePackageConfigHelpers)

install(TARGETS ${LUMENFORGE_TARGETS} EXPORT LumenforgeMetaLibTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime NAMELINK_COMPONENT Development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development)
install(FILES include/LumenforgeMetaLib.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT Development)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/LumenforgeMetaLib)
install(EXPORT LumenforgeMetaLibTargets NAMESPACE LumenforgeMetaLib:: DESTINATION ${package_dir}
  COMPONENT Development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/LumenforgeMetaLibConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES cmake/LumenforgeMetaLibConfig.cmake
  ${PROJECT_BINARY_DIR}/LumenforgeMetaLibConfigVersion.cmake DESTINATION ${package_dir}
  COMPONENT Development)

# Found from where the file itself lies, so that the whole may be moved. The archive is a library of
# C++ behind functions of C: a program that links it needs that language's library.
file(RELATIVE_PATH LUMENFORGE_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
set(LUMENFORGE_PC_LIBS)
set(LUMENFORGE_PC_LIBS_PRIVATE " -lstdc++ -lm")
if(NOT BUILD_SHARED_LIBS)
  set(LUMENFORGE_PC_LIBS ${LUMENFORGE_PC_LIBS_PRIVATE})
endif()
configure_file(cmake/LumenforgeMetaLib.pc.in LumenforgeMetaLib.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/LumenforgeMetaLib.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT Development)
