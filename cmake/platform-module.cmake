# A DLL of platform/ and a static twin, for test programs that hold all sources themselves and make calls fail.
#
#   tarn_platform_module(NAME FILE_NAME LIBRARY...)     its header asks for the macro NAME_STATIC in the twin
function(tarn_platform_module name file_name)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  add_library(${name} SHARED ${sources})
  set_target_properties(${name} PROPERTIES PREFIX "" OUTPUT_NAME ${file_name} IMPORT_PREFIX "lib" ARCHIVE_OUTPUT_NAME ${name})
  tarn_describe(${name} "${file_name}.dll, a module of tarnlib")
  tarn_split_symbols(${name})
  add_library(${name}_static STATIC EXCLUDE_FROM_ALL ${sources})
  string(TOUPPER ${name} macro)
  target_compile_definitions(${name}_static PUBLIC ${macro}_STATIC TARN_TEST_SEAMS)
  foreach(library ${name} ${name}_static)
    target_include_directories(${library} PUBLIC $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}/platform>)
    target_link_libraries(${library} PRIVATE tarn_flags ${ARGN})
  endforeach()
endfunction()
