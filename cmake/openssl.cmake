# openssl_crypto and openssl_ssl: the libraries of cryptography and TLS, DLLs that all modules of a process share, beside the
# programs. The recipe builds them once for all checkouts and prints where they are. openssl_headers: what a module needs that
# loads them while it runs.
execute_process(
  COMMAND ${CMAKE_SOURCE_DIR}/deps/openssl.sh
  OUTPUT_VARIABLE openssl_prefix
  OUTPUT_STRIP_TRAILING_WHITESPACE
  COMMAND_ERROR_IS_FATAL ANY)
add_library(openssl_headers INTERFACE)
target_include_directories(openssl_headers SYSTEM INTERFACE ${openssl_prefix}/include)
set(TARN_OPENSSL_DLLS)
foreach(library crypto ssl)
  set(dll lib${library}-3.dll)
  list(APPEND TARN_OPENSSL_DLLS ${dll})
  add_library(openssl_${library} SHARED IMPORTED)
  set_target_properties(
    openssl_${library}
    PROPERTIES IMPORTED_LOCATION ${openssl_prefix}/bin/${dll}
               IMPORTED_IMPLIB ${openssl_prefix}/lib/lib${library}.dll.a
               INTERFACE_INCLUDE_DIRECTORIES ${openssl_prefix}/include)
  tarn_place_dll(${openssl_prefix}/bin/${dll})
endforeach()
