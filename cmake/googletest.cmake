# GoogleTest from the distribution's source package, built with our compiler and ABI flags.
set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(BUILD_SHARED_LIBS OFF)
add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
foreach(library gtest gtest_main)
  target_link_libraries(${library} PRIVATE tarn_abi)
endforeach()
