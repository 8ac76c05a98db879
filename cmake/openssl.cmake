# openssl_crypto: the library of cryptography, a DLL that all modules of a process share, beside the programs. The recipe
# builds it once for all checkouts and prints where it is.
execute_process(
  COMMAND ${CMAKE_SOURCE_DIR}/deps/openssl.sh
  OUTPUT_VARIABLE openssl_prefix
  OUTPUT_STRIP_TRAILING_WHITESPACE
  COMMAND_ERROR_IS_FATAL ANY)
set(TARN_OPENSSL_DLLS libcrypto-3.dll)
add_library(openssl_crypto SHARED IMPORTED)
set_target_properties(
  openssl_crypto
  PROPERTIES IMPORTED_LOCATION ${openssl_prefix}/bin/libcrypto-3.dll
             IMPORTED_IMPLIB ${openssl_prefix}/lib/libcrypto.dll.a
             INTERFACE_INCLUDE_DIRECTORIES ${openssl_prefix}/include)
foreach(dll IN LISTS TARN_OPENSSL_DLLS)
  file(COPY_FILE ${openssl_prefix}/bin/${dll} ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${dll} ONLY_IF_DIFFERENT)
endforeach()
