# What a client program needs: headers, import library, DLLs, a CMake package, the tool-chain file; and what its maker
# reads and debugs with. The modules that the library imports come as DLLs alone: they have no public headers, except
# that the numbers of algorithms are for clients too.
include(CMakePackageConfigHelpers)
set(package lib/cmake/tarnlib)
set(shared share/tarnlib)

install(TARGETS tarnlib RUNTIME DESTINATION bin ARCHIVE DESTINATION lib)
install(DIRECTORY export/iface/ ${TARN_GENERATED_IFACE}/ DESTINATION include FILES_MATCHING PATTERN "*.h")
install(FILES platform/kcm/kcmalg.h DESTINATION include/kcm)
if(TARGET tarn)
  install(TARGETS tarn RUNTIME DESTINATION bin)
endif()

set(needed_dlls ${TARN_RUNTIME_DLLS} ${TARN_OPENSSL_DLLS} ${TARN_LIBSSH2_DLLS})
list(TRANSFORM needed_dlls PREPEND ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/ OUTPUT_VARIABLE foreign_dlls)
install(FILES ${foreign_dlls} DESTINATION bin)
foreach(module jtc kcm mirelcrypto tracelog zqezlib)
  install(FILES $<TARGET_FILE:${module}> DESTINATION bin)
  get_target_property(name ${module} OUTPUT_NAME)
  list(APPEND needed_dlls ${name}.dll)
endforeach()

list(JOIN needed_dlls " " needed_dlls)
get_target_property(library_dll tarnlib OUTPUT_NAME)
string(APPEND library_dll .dll)
get_target_property(library_import tarnlib ARCHIVE_OUTPUT_NAME)
set(library_import lib${library_import}.dll.a)
configure_file(cmake/tarnlib-config.cmake.in tarnlib-config.cmake @ONLY)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/tarnlib-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/tarnlib-config.cmake ${CMAKE_BINARY_DIR}/tarnlib-config-version.cmake
              cmake/mingw-w64-i686.cmake DESTINATION ${package})

install(FILES README.md CHANGELOG.md KNOWN_LIMITS.md DESTINATION ${shared})
install(DIRECTORY docs DESTINATION ${shared})
install(FILES debug/tarnlib.natvis debug/gdb/tarnlib_printers.py DESTINATION ${shared}/debug)
install(DIRECTORY examples/ DESTINATION ${shared}/examples PATTERN texts EXCLUDE)

# Of what is inside the DLLs: the XML parser, OpenSSL, libssh2, zlib, the compiler's run-time and the Windows run-time.
install(FILES ${xerces_prefix}/LICENSE ${xerces_prefix}/NOTICE DESTINATION licenses/xerces-c)
install(FILES ${openssl_prefix}/LICENSE.txt DESTINATION licenses/openssl)
install(FILES ${libssh2_prefix}/COPYING DESTINATION licenses/libssh2)
foreach(part libz-mingw-w64-dev gcc-mingw-w64-i686-posix-runtime mingw-w64-i686-dev)
  install(FILES /usr/share/doc/${part}/copyright DESTINATION licenses/${part} OPTIONAL)
endforeach()
