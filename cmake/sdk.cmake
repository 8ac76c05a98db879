# What a client program needs: headers, import library, DLLs, a CMake package.
include(CMakePackageConfigHelpers)
install(
  TARGETS tarnlib jtc tracelog
  EXPORT tarnlib
  RUNTIME DESTINATION bin
  ARCHIVE DESTINATION lib)
install(DIRECTORY export/iface/ DESTINATION include)
install(FILES ${xerces_prefix}/LICENSE ${xerces_prefix}/NOTICE DESTINATION licenses/xerces-c) # it is inside the DLL
foreach(dll IN LISTS TARN_RUNTIME_DLLS)
  install(FILES ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${dll} DESTINATION bin)
endforeach()
if(TARGET tarn)
  install(TARGETS tarn RUNTIME DESTINATION bin)
endif()
install(EXPORT tarnlib FILE tarnlib-config.cmake DESTINATION lib/cmake/tarnlib)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/tarnlib-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/tarnlib-config-version.cmake DESTINATION lib/cmake/tarnlib)
