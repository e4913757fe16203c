# LumenforgeMetaLib::LumenforgeMetaLib, shared or an archive as BUILD_SHARED_LIBS says, and, beside a
# shared one, the archive LumenforgeMetaLib::Static where LUMENFORGE_BUILD_STATIC asks for it.
set(LUMENFORGE_EXPORTS ${PROJECT_SOURCE_DIR}/src/LumenforgeMetaLib.map)

if(BUILD_SHARED_LIBS)
  add_library(LumenforgeMetaLib SHARED)
  target_link_libraries(LumenforgeMetaLib
    PRIVATE $<BUILD_INTERFACE:lumenforge_objects> $<BUILD_INTERFACE:lumenforge_hardening>)
  target_link_options(LumenforgeMetaLib PRIVATE
    -Wl,--version-script=${LUMENFORGE_EXPORTS} -Wl,-Bsymbolic-functions)
  if(NOT LUMENFORGE_SANITIZE)  # a sanitized library finds the sanitizer's symbols in its program
    target_link_options(LumenforgeMetaLib PRIVATE -Wl,--no-undefined)
  endif()
  set_target_properties(LumenforgeMetaLib PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
    LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/tools/${CMAKE_INSTALL_LIBDIR}
    LINKER_LANGUAGE CXX LINK_DEPENDS ${LUMENFORGE_EXPORTS})
  set(LUMENFORGE_TARGETS LumenforgeMetaLib)
  set(archive LumenforgeMetaLibStatic)
else()
  set(archive LumenforgeMetaLib)
endif()

# The archive holds one object, linked from all, in which nothing is global but what is exported.
if(NOT BUILD_SHARED_LIBS OR LUMENFORGE_BUILD_STATIC)
  file(STRINGS ${LUMENFORGE_EXPORTS} exports REGEX "^    [A-Za-z0-9_]+;$")
  list(TRANSFORM exports REPLACE "^    (.*);$" "\\1")
  list(JOIN exports "\n" exports)
  file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/exports CONTENT "@exports@\n" @ONLY)
  set(whole ${PROJECT_BINARY_DIR}/LumenforgeMetaLib.o)
  add_custom_command(OUTPUT ${whole}
    COMMAND ${CMAKE_CXX_COMPILER} -r -nostdlib -Wl,--force-group-allocation -o ${whole}
      $<TARGET_OBJECTS:lumenforge_objects>
    COMMAND ${CMAKE_OBJCOPY} --keep-global-symbols=${PROJECT_BINARY_DIR}/exports ${whole}
    DEPENDS lumenforge_objects $<TARGET_OBJECTS:lumenforge_objects> ${PROJECT_BINARY_DIR}/exports
    COMMAND_EXPAND_LISTS VERBATIM)
  add_library(${archive} STATIC ${whole})
  set_source_files_properties(${whole} PROPERTIES EXTERNAL_OBJECT ON GENERATED ON)
  set_target_properties(${archive} PROPERTIES OUTPUT_NAME LumenforgeMetaLib LINKER_LANGUAGE C)
  target_link_libraries(${archive} INTERFACE stdc++ m)  # for programs in C, too
  list(APPEND LUMENFORGE_TARGETS ${archive})
  if(BUILD_SHARED_LIBS)
    set_target_properties(${archive} PROPERTIES EXPORT_NAME Static)
    add_library(LumenforgeMetaLib::Static ALIAS ${archive})
  endif()
endif()

add_library(LumenforgeMetaLib::LumenforgeMetaLib ALIAS LumenforgeMetaLib)
foreach(target ${LUMENFORGE_TARGETS})
  target_include_directories(${target} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
endforeach()
