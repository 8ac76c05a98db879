# The SSH library: its header for the sources that load it, and the DLL beside the programs. The recipe builds it once for
# all checkouts and prints where it is.
execute_process(
  COMMAND ${CMAKE_SOURCE_DIR}/deps/libssh2.sh
  OUTPUT_VARIABLE libssh2_prefix
  OUTPUT_STRIP_TRAILING_WHITESPACE
  COMMAND_ERROR_IS_FATAL ANY)
set(TARN_LIBSSH2_DLLS libssh2.dll)
add_library(libssh2_header INTERFACE)
target_include_directories(libssh2_header SYSTEM INTERFACE ${libssh2_prefix}/include)
tarn_place_dll(${libssh2_prefix}/bin/libssh2.dll)
