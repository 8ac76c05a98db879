# xerces_c: the XML parser, static, inside the library. The recipe builds it once for all checkouts and prints where it is.
execute_process(
  COMMAND ${CMAKE_SOURCE_DIR}/deps/xerces.sh
  OUTPUT_VARIABLE xerces_prefix
  OUTPUT_STRIP_TRAILING_WHITESPACE
  COMMAND_ERROR_IS_FATAL ANY)
add_library(xerces_c STATIC IMPORTED)
set_target_properties(
  xerces_c
  PROPERTIES IMPORTED_LOCATION ${xerces_prefix}/lib/libxerces-c.a INTERFACE_INCLUDE_DIRECTORIES ${xerces_prefix}/include
             INTERFACE_LINK_OPTIONS "-Wl,--exclude-libs,libxerces-c.a;-Wl,--gc-sections")
