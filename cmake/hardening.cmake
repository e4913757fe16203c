# What the library and the tool are built with, that a fault in them is stopped before it is used: stack
# protectors, checked calls of the C library, landing pads, relocations that are read-only before main
# runs. An optimized build names no folder of the machine that it was made on.
option(LUMENFORGE_HARDENING "Build with stack protectors, checked calls and read-only relocations" ON)

add_library(lumenforge_hardening INTERFACE)
set(optimized $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
target_compile_options(lumenforge_hardening INTERFACE
  $<${optimized}:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>
  $<${optimized}:-ffile-prefix-map=${PROJECT_BINARY_DIR}=build>)
if(LUMENFORGE_HARDENING)
  target_compile_options(lumenforge_hardening INTERFACE
    -fstack-protector-strong -fstack-clash-protection -fcf-protection)
  target_link_options(lumenforge_hardening INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)
  if(NOT "${CMAKE_C_FLAGS} ${CMAKE_CXX_FLAGS}" MATCHES "_FORTIFY_SOURCE" AND NOT LUMENFORGE_SANITIZE)
    target_compile_options(lumenforge_hardening INTERFACE
      $<${optimized}:-U_FORTIFY_SOURCE> $<${optimized}:-D_FORTIFY_SOURCE=2>)
  endif()
endif()
