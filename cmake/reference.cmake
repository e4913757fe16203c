# The reference, made from the public header with Doxygen: HTML pages, and pages for man 3. The target
# "reference" is there when Doxygen is, and is built with all else when LUMENFORGE_BUILD_REFERENCE is ON.
if(LUMENFORGE_BUILD_REFERENCE)
  find_package(Doxygen REQUIRED)
else()
  find_package(Doxygen QUIET)
endif()
find_package(Python3 QUIET COMPONENTS Interpreter)
if(NOT DOXYGEN_FOUND OR NOT Python3_FOUND)
  return()
endif()

set(LUMENFORGE_REFERENCE ${PROJECT_BINARY_DIR}/reference)
configure_file(docs/reference/Doxyfile.in ${LUMENFORGE_REFERENCE}/Doxyfile @ONLY)
add_custom_command(OUTPUT ${LUMENFORGE_REFERENCE}/html/index.html
  COMMAND ${CMAKE_COMMAND} -E rm -rf html man
  COMMAND Doxygen::doxygen Doxyfile
  WORKING_DIRECTORY ${LUMENFORGE_REFERENCE}
  DEPENDS include/LumenforgeMetaLib.h docs/reference/filter.py ${LUMENFORGE_REFERENCE}/Doxyfile
  VERBATIM)
set(all)
if(LUMENFORGE_BUILD_REFERENCE)
  set(all ALL)
endif()
add_custom_target(reference ${all} DEPENDS ${LUMENFORGE_REFERENCE}/html/index.html)

# What was built is installed: a page for each section, for each record and by each function's name.
file(READ ${LUMENFORGE_EXPORTS} exports)
string(REGEX MATCHALL "[A-Za-z0-9_]+;" exports "${exports}")
string(REGEX REPLACE ";+" "|" exports "${exports}")
install(DIRECTORY ${LUMENFORGE_REFERENCE}/html DESTINATION ${CMAKE_INSTALL_DOCDIR} OPTIONAL)
install(DIRECTORY ${LUMENFORGE_REFERENCE}/man/man3 DESTINATION ${CMAKE_INSTALL_MANDIR} OPTIONAL
  FILES_MATCHING REGEX "/(${exports}lumenforge_[a-z_]+|[A-Z][a-z]+[A-Z][A-Za-z]+)\\.3$")
