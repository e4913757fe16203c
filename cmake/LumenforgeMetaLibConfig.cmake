# find_package(LumenforgeMetaLib 1.0 [COMPONENTS Static]): LumenforgeMetaLib::LumenforgeMetaLib, and
# LumenforgeMetaLib::Static where the archive is installed beside the shared library.
include(${CMAKE_CURRENT_LIST_DIR}/LumenforgeMetaLibTargets.cmake)

foreach(component ${LumenforgeMetaLib_FIND_COMPONENTS})
  set(LumenforgeMetaLib_${component}_FOUND FALSE)
  if(component STREQUAL "Static" AND TARGET LumenforgeMetaLib::Static)
    set(LumenforgeMetaLib_${component}_FOUND TRUE)
  elseif(LumenforgeMetaLib_FIND_REQUIRED_${component})
    set(LumenforgeMetaLib_FOUND FALSE)
    set(LumenforgeMetaLib_NOT_FOUND_MESSAGE "There is no component ${component} here.")
  endif()
endforeach()
